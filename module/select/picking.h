#pragma once
// Selecting at a point, on the screen and before a command; showing what is meant. Points are in world
// coordinates; sets that come back belong to the caller. Results are 1 and 0 unless it says otherwise.
#include "host/base/resbuf.h"
#include "host/database/entity.h"
#include "module/core/export.h"

/// What lies in or across the pick box about the point; groups bring nothing along.
MEK_API int IM_GetSelectSetAtPoint(double point[3], long long set[2]);
MEK_API int IM_GetSelectSetAtPoint(KvGePoint3d point, KvArray<KvDbObjectId>& ids);
/// One entity there; of several the user chooses, each being shown in turn. Null when there is none, and with
/// `cancelled` 1 when the user wants none.
MEK_API KvDbObjectId IM_SelectEntityAtPoint(KvGePoint3d point, int& cancelled);
/// What can be seen in the current viewport, as far as a filter takes it (null: everything).
MEK_API int IM_GetSelectSetOnScreen(KvArray<KvDbObjectId>& ids, const resbuf* filter);

/// The first entity that was selected before the command; null for none.
MEK_API KvDbObjectId IM_GetPickFirstEntity();
/// 1 when there is at least one.
MEK_API int IM_GetPickFirstSelection(KvArray<KvDbObjectId>& ids);
/// 0, and nothing is selected any more, for no ids.
MEK_API int IM_SetPickFirstSelection(const KvArray<KvDbObjectId>& ids);

/// Takes out what can't be opened and viewports that are cut to an outline. Always 1.
MEK_API int IM_ValidateSelectEntityFilter(KvArray<KvDbObjectId>& ids);

/// Has entities, or parts of them, shown as highlighted for its lifetime.
class MEK_API CEntityHighlighter {
 public:
  CEntityHighlighter() = default;
  /// Highlights at once.
  explicit CEntityHighlighter(KvDbObjectId id);
  explicit CEntityHighlighter(const KvArray<KvDbObjectId>& ids);
  ~CEntityHighlighter();
  CEntityHighlighter(const CEntityHighlighter&) = delete;
  CEntityHighlighter& operator=(const CEntityHighlighter&) = delete;

  /// Highlights it. One that can't be opened is left out.
  void AddEntity(KvDbObjectId id, const KvDbFullSubentPath& path);
  /// Ends it for one entity; an unknown one is stepped over.
  void RemoveEntity(KvDbObjectId id);
  /// All at once; a second call has no further effect.
  void Highlight();
  void Unhighlight();
  void GetObjectIds(KvArray<KvDbObjectId>& ids) const { ids = m_aryIds; }

 private:
  void ShowAll(bool isShown);

  KvArray<KvDbObjectId> m_aryIds;
  KvArray<KvDbFullSubentPath> m_aryPaths;
  KvArray<char> m_aryShown;
};
