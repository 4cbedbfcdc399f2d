#pragma once
// Selection sets by name, arrays of ids, and passing from one to the other. The name (0,0) stands for no set.
// Results are 1 and 0 unless it says otherwise; nothing tells the user.
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "host/database/entity.h"
#include "module/core/export.h"
#include "module/toolkit/inputs.h"

/// Adds an entity as kvedSSAdd does, after making a new set where `result` names none. Without name and set
/// nothing is done: RTNORM, and (0,0) stays. The host's status.
MEK_API int IM_ADS_SSADD(const long long name[2], const long long set[2], long long result[2]);
/// The host's status; a length that can't be told is 0.
MEK_API int IM_EdSSLength(const long long set[2], long* length);
/// The length; 0 for null, (0,0) and an unknown set.
MEK_API int IM_ssLength(const long long set[2]);
/// Moves the members of one set into another; the first is freed and its name cleared. 0 for null. A set
/// that is to go into itself is left alone.
MEK_API int IM_ssAdd(long long source[2], long long target[2]);
/// Erases the members and frees the set. 0 for null, or when a member couldn't be erased; those that were
/// erased before don't count.
MEK_API int IM_ssDeleteEntity(long long set[2]);
/// Always 1.
MEK_API int IM_ssDeleteEntity(const KvArray<KvDbObjectId>& ids);
/// RTNORM, RTNONE when it can't be opened, RTERROR when it can't be erased.
MEK_API int IM_entDel(KvDbObjectId id);
/// Makes an entity and tells its name. RTERROR, and (0,0), for null and where the record only began or
/// continued a sequence; else the host's status.
MEK_API int IM_entmakex(const resbuf* list, long long name[2]);
/// The id of a handle in hexadecimal digits (null: of the working drawing); null for an unknown one.
MEK_API KvDbObjectId IM_handent(KvDbDatabase* database, CString handle);

/// Fills `ids` in the order of the set, which stays. The number of ids.
MEK_API int IM_AdsSetToObjectIdArray(const long long set[2], KvArray<KvDbObjectId>& ids);
/// Frees the set that `set` names and makes a new one, the caller's; (0,0) for no ids. The number of members.
MEK_API int IM_ObjectIdArrayToAdsSet(const KvArray<KvDbObjectId>& ids, long long set[2]);
/// Whether an entity may be edited now: during an edit in place, when it belongs to the work set; 1
/// otherwise, 0 for a name that no entity has.
MEK_API int IM_IsEntityInWorkSet(long long name[2]);

// --- Extents, world coordinates

/// The box around the entities that can be opened; without one that has extents (0,0,0) twice. 0 when none
/// could be opened.
MEK_API int IM_GetSelectSetExtents(const KvArray<KvDbObjectId>& ids, KvDbExtents& extents);
/// 0 for a null output alone.
MEK_API int IM_GetSelectSetExtents(const long long set[2], double min[3], double max[3]);
/// RTNORM; RTERROR, with the outputs untouched, for null and for what can't be opened or has no extents.
MEK_API int IM_EntExtent(long long name[2], double min[3], double max[3]);
/// Of an entity that a record tells of, whether it exists or not; Z is 0. RTNORM or RTERROR.
MEK_API int IM_EntExtent(resbuf* list, double min[3], double max[3]);
/// X and Y around all members, Z of the first. RTNONE for an empty set, RTERROR for null and for a member
/// that can't be measured, where it ends.
MEK_API int IM_SSExtent(long long set[2], double min[3], double max[3]);
