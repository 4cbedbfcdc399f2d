#include "module/select/picking.h"

#include <array>
#include <cmath>

#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "host/entities/viewport.h"
#include "module/select/sets.h"
#include "module/toolkit/geometry.h"
#include "module/toolkit/guards.h"

namespace {

/// Directions of the pick box's corners.
constexpr double kCornerAngles[] = {0.7853981633974483, 2.356194490192345, 3.9269908169872414,
                                    5.497787143782138};
constexpr int kReplyLength = 100;
constexpr const wchar_t* kNextWord = L"Next";
constexpr const wchar_t* kAcceptWord = L"Accept";

enum class Reply { Next, Accept, Cancel };

Reply askForNext() {
  wchar_t word[kReplyLength] = L"";
  kvedInitGet(0, L"Next Accept");
  const int status = IM_EdGetKword(L"\n输入选项 [下一个(N)/接受(A)] <接受(A)>: ", word,
                                   static_cast<std::size_t>(kReplyLength));
  if (status == RTNONE) return Reply::Accept;
  if (status != RTNORM) return Reply::Cancel;
  const CString reply(word);
  if (reply.CompareNoCase(kNextWord) == 0) return Reply::Next;
  return reply.CompareNoCase(kAcceptWord) == 0 ? Reply::Accept : Reply::Cancel;
}

/// The chain with the set that was selected before the command; null when there is none.
class PickFirst {
 public:
  PickFirst() { kvedSSGetFirst(nullptr, &chain_); }
  ~PickFirst() {
    if (chain_) kvedSSFree(chain_->resval.rlname);
    kvutRelRb(chain_);
  }
  PickFirst(const PickFirst&) = delete;
  PickFirst& operator=(const PickFirst&) = delete;
  const long long* set() const { return chain_ ? chain_->resval.rlname : nullptr; }

 private:
  resbuf* chain_ = nullptr;
};

bool isSelectable(KvDbObjectId id) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return false;
  const KvDbViewport* viewport = KvDbViewport::cast(entity);
  const bool isCut = viewport && viewport->isNonRectClipOn();
  entity->close();
  return !isCut;
}

}  // namespace

int IM_GetSelectSetAtPoint(double point[3], long long set[2]) {
  if (!point || !set) return 0;
  const ImSetSysVar withoutGroups(L"PICKSTYLE", 0, 1);
  const double radius = IM_GetPickBoxSize() * std::sqrt(2.0);
  std::array<kvds_point, std::size(kCornerAngles)> corners;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    kvutPolar(point, kCornerAngles[i], radius, corners[i]);
    IM_WcsToUcs(corners[i]);
    corners[i][2] = 0;
  }
  const double *first = corners[0], *second = corners[1], *third = corners[2], *fourth = corners[3];
  resbuf* polygon = kvutBuildList(RTPOINT, first, RTPOINT, second, RTPOINT, third, RTPOINT, fourth, 0);
  const int status = kvedSSGet(L"CP", polygon, nullptr, nullptr, set);
  kvutRelRb(polygon);
  return status == RTNORM;
}

int IM_GetSelectSetAtPoint(KvGePoint3d point, KvArray<KvDbObjectId>& ids) {
  ids.removeAll();
  kvds_point at = {point.x, point.y, point.z};
  kvds_name set = {0, 0};
  if (!IM_GetSelectSetAtPoint(at, set)) return 0;
  IM_AdsSetToObjectIdArray(set, ids);
  kvedSSFree(set);
  return 1;
}

KvDbObjectId IM_SelectEntityAtPoint(KvGePoint3d point, int& cancelled) {
  cancelled = 0;
  KvArray<KvDbObjectId> ids;
  if (!IM_GetSelectSetAtPoint(point, ids)) return KvDbObjectId();
  IM_ValidateSelectEntityFilter(ids);
  if (ids.isEmpty()) return KvDbObjectId();
  if (ids.length() == 1) return ids.first();
  for (int n = 0;; n = (n + 1) % ids.length()) {
    const CEntityHighlighter shown(ids[n]);
    const Reply reply = askForNext();
    if (reply == Reply::Accept) return ids[n];
    if (reply == Reply::Next) continue;
    cancelled = 1;
    return KvDbObjectId();
  }
}

KvDbObjectId IM_GetPickFirstEntity() {
  KvArray<KvDbObjectId> ids;
  return IM_GetPickFirstSelection(ids) ? ids.first() : KvDbObjectId();
}

int IM_GetPickFirstSelection(KvArray<KvDbObjectId>& ids) {
  const PickFirst selected;
  return IM_AdsSetToObjectIdArray(selected.set(), ids) > 0;
}

int IM_SetPickFirstSelection(const KvArray<KvDbObjectId>& ids) {
  kvds_name set = {0, 0};
  if (IM_ObjectIdArrayToAdsSet(ids, set) < 1) {
    kvedSSSetFirst(nullptr, nullptr);
    return 0;
  }
  kvedSSSetFirst(set, set);
  kvedSSFree(set);
  return 1;
}

int IM_ValidateSelectEntityFilter(KvArray<KvDbObjectId>& ids) {
  for (int i = ids.length() - 1; i >= 0; --i)
    if (!isSelectable(ids[i])) ids.removeAt(i);
  return 1;
}

// --- Highlighting

CEntityHighlighter::CEntityHighlighter(KvDbObjectId id) {
  AddEntity(id, KvDbFullSubentPath(id, KvDb::kNullSubentType));
}

CEntityHighlighter::CEntityHighlighter(const KvArray<KvDbObjectId>& ids) {
  for (KvDbObjectId id : ids) AddEntity(id, KvDbFullSubentPath(id, KvDb::kNullSubentType));
}

CEntityHighlighter::~CEntityHighlighter() {
  Unhighlight();
}

void CEntityHighlighter::AddEntity(KvDbObjectId id, const KvDbFullSubentPath& path) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return;
  entity->highlight(path);
  entity->close();
  m_aryIds.append(id);
  m_aryPaths.append(path);
  m_aryShown.append(1);
}

void CEntityHighlighter::RemoveEntity(KvDbObjectId id) {
  const int index = m_aryIds.find(id);
  if (index < 0) return;
  KvDbEntity* entity = nullptr;
  if (m_aryShown[index] && kvdbOpenObject(entity, id, KvDb::kForRead, true) == Kvad::eOk) {
    entity->unhighlight(m_aryPaths[index]);
    entity->close();
  }
  m_aryIds.removeAt(index);
  m_aryPaths.removeAt(index);
  m_aryShown.removeAt(index);
}

void CEntityHighlighter::Highlight() {
  ShowAll(true);
}
void CEntityHighlighter::Unhighlight() {
  ShowAll(false);
}

void CEntityHighlighter::ShowAll(bool isShown) {
  for (int i = 0; i < m_aryIds.length(); ++i) {
    KvDbEntity* entity = nullptr;
    // The host counts the calls: each entity is shown once. Erased ones must not stay lit.
    if ((m_aryShown[i] != 0) == isShown ||
        kvdbOpenObject(entity, m_aryIds[i], KvDb::kForRead, !isShown) != Kvad::eOk)
      continue;
    if (isShown)
      entity->highlight(m_aryPaths[i]);
    else
      entity->unhighlight(m_aryPaths[i]);
    entity->close();
    m_aryShown[i] = isShown ? 1 : 0;
  }
}
