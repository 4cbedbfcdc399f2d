#include "module/select/sets.h"

#include <algorithm>

#include "host/app/longtransaction.h"
#include "host/database/database.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/editor/selection.h"
#include "module/core/host_values.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr bool kCountErased = false;

bool isNone(const long long* set) {
  return !set || kvds_isNull(set);
}

void freeSet(long long* set) {
  kvedSSFree(set);
  kvds_setNull(set);
}

bool isErased(const long long* name) {
  KvDbObjectId id;
  return kvdbGetObjectId(id, name) == Kvad::eOk && id.isErased();
}

void copyCorners(const KvDbExtents& extents, double* min, double* max) {
  const KvGePoint3d least = extents.minPoint(), greatest = extents.maxPoint();
  min[0] = least.x, min[1] = least.y, min[2] = least.z;
  max[0] = greatest.x, max[1] = greatest.y, max[2] = greatest.z;
}

}  // namespace

int IM_ADS_SSADD(const long long name[2], const long long set[2], long long result[2]) {
  if (!name && !set) return RTNORM;
  kvds_name fresh = {0, 0};
  if (result && kvds_isNull(result) && kvedSSAdd(nullptr, nullptr, result) == RTNORM)
    kvds_copy(result, fresh);
  const int status = kvedSSAdd(name, set, result);
  // Without a set to add to the host made another one: nobody could free the first any more.
  if (!kvds_isNull(fresh) && !kvds_equal(fresh, result)) kvedSSFree(fresh);
  return status;
}

int IM_EdSSLength(const long long set[2], long* length) {
  if (length) *length = 0;
  return kvedSSLength(set, length);
}

int IM_ssLength(const long long set[2]) {
  long length = 0;
  if (isNone(set) || IM_EdSSLength(set, &length) != RTNORM) return 0;
  return static_cast<int>(length);
}

int IM_ssAdd(long long source[2], long long target[2]) {
  if (!source || !target) return 0;
  if (kvds_isNull(source) || kvds_equal(source, target)) return 1;
  kvds_name name;
  for (long i = 0; kvedSSName(source, i, name) == RTNORM; ++i)
    if (kvedSSMemb(name, target) != RTNORM) kvedSSAdd(name, target, target);
  freeSet(source);
  return 1;
}

int IM_ssDeleteEntity(long long set[2]) {
  if (!set) return 0;
  if (kvds_isNull(set)) return 1;
  bool areAllErased = true;
  kvds_name name;
  for (long i = 0; kvedSSName(set, i, name) == RTNORM; ++i) {
    // A second deletion would bring it back.
    if (isErased(name)) continue;
    if (kvdbEntDel(name) != RTNORM) areAllErased = false;
  }
  freeSet(set);
  return areAllErased;
}

int IM_ssDeleteEntity(const KvArray<KvDbObjectId>& ids) {
  for (KvDbObjectId id : ids) IM_entDel(id);
  return 1;
}

int IM_entDel(KvDbObjectId id) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) return RTNONE;
  const Kvad::ErrorStatus status = entity->erase(true);
  entity->close();
  return status == Kvad::eOk ? RTNORM : RTERROR;
}

int IM_entmakex(const resbuf* list, long long name[2]) {
  if (!list || !name) return RTERROR;
  kvds_setNull(name);
  kvds_name before = {0, 0}, after = {0, 0};
  kvdbEntLast(before);
  const int status = kvdbEntMake(list);
  [[maybe_unused]] int errorNumber = 0;
  mek::readIntVariable(L"ERRNO", errorNumber);
  if (status != RTNORM) return status;
  kvdbEntLast(after);
  if (kvds_equal(before, after)) return RTERROR;
  kvds_copy(after, name);
  return RTNORM;
}

KvDbObjectId IM_handent(KvDbDatabase* database, CString handle) {
  KvDbObjectId id;
  database = kvdbDatabaseOrWorking(database);
  if (database) id = database->idFromHandle(KvDbHandle(handle));
  return id;
}

int IM_AdsSetToObjectIdArray(const long long set[2], KvArray<KvDbObjectId>& ids) {
  ids.removeAll();
  if (isNone(set)) return 0;
  kvds_name name;
  for (long i = 0; kvedSSName(set, i, name) == RTNORM; ++i) {
    KvDbObjectId id;
    if (kvdbGetObjectId(id, name) == Kvad::eOk && !id.isNull()) ids.append(id);
  }
  return ids.length();
}

int IM_ObjectIdArrayToAdsSet(const KvArray<KvDbObjectId>& ids, long long set[2]) {
  if (!set) return 0;
  if (!kvds_isNull(set)) freeSet(set);
  for (KvDbObjectId id : ids) {
    kvds_name name = {0, 0};
    kvdbGetKdsName(name, id);
    if (!kvds_isNull(name)) kvedSSAdd(name, set, set);
  }
  return IM_ssLength(set);
}

int IM_IsEntityInWorkSet(long long name[2]) {
  KvDbObjectId id, edit;
  if (!name || kvdbGetObjectId(id, name) != Kvad::eOk) return 0;
  KvApLongTransactionManager* manager = kvapLongTransactionManagerPtr();
  if (!manager) return 1;
  KvApDocManager* documents = kvDocManagerPtr();
  manager->currentLongTransactionFor(documents ? documents->curDocument() : nullptr, edit);
  KvDbLongTransaction* transaction = nullptr;
  if (kvdbOpenObject(transaction, edit, KvDb::kForRead) != Kvad::eOk) return 1;
  const bool isInside = transaction->workSetHas(id, kCountErased);
  transaction->close();
  return isInside;
}

// --- Extents

int IM_GetSelectSetExtents(const KvArray<KvDbObjectId>& ids, KvDbExtents& extents) {
  KvDbExtents sum;
  bool isAnyOpen = false;
  for (KvDbObjectId id : ids) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) continue;
    KvDbExtents own;
    // Without extents it stays empty and adds nothing.
    entity->getGeomExtents(own);
    entity->close();
    sum.addExt(own);
    isAnyOpen = true;
  }
  if (sum.isEmpty())
    extents.set(KvGePoint3d(), KvGePoint3d());
  else
    extents = sum;
  return isAnyOpen;
}

int IM_GetSelectSetExtents(const long long set[2], double min[3], double max[3]) {
  if (!min || !max) return 0;
  KvArray<KvDbObjectId> ids;
  KvDbExtents extents;
  IM_AdsSetToObjectIdArray(set, ids);
  IM_GetSelectSetExtents(ids, extents);
  copyCorners(extents, min, max);
  return 1;
}

int IM_EntExtent(long long name[2], double min[3], double max[3]) {
  KvDbObjectId id;
  KvDbEntity* entity = nullptr;
  if (!name || !min || !max || kvdbGetObjectId(id, name) != Kvad::eOk ||
      kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk)
    return RTERROR;
  KvDbExtents extents;
  const Kvad::ErrorStatus status = entity->getGeomExtents(extents);
  entity->close();
  if (status != Kvad::eOk) return RTERROR;
  copyCorners(extents, min, max);
  return RTNORM;
}

int IM_EntExtent(resbuf* list, double min[3], double max[3]) {
  return IM_getRbextentWCS(list, min, max);
}

int IM_SSExtent(long long set[2], double min[3], double max[3]) {
  if (!min || !max) return RTERROR;
  const int length = IM_ssLength(set);
  if (length < 1) return RTNONE;
  for (int i = 0; i < length; ++i) {
    kvds_name name;
    if (kvedSSName(set, i, name) != RTNORM) return RTERROR;
    kvds_point least, greatest;
    if (const int status = IM_EntExtent(name, least, greatest); status != RTNORM) return status;
    for (int axis = 0; axis < (i == 0 ? 3 : 2); ++axis) {
      min[axis] = i == 0 ? least[axis] : std::min(min[axis], least[axis]);
      max[axis] = i == 0 ? greatest[axis] : std::max(max[axis], greatest[axis]);
    }
  }
  return RTNORM;
}
