// What TRIM and EXTEND ask alike.
#include "host/commands/internal/trimming.h"
#include "host/database/block.h"
#include "host/database/undo.h"

namespace kvcmd {

KvDb::Intersect edgeType(bool extendsCurve) {
  const bool extendsEdge = variable(L"EDGEMODE", 0) != 0;
  if (extendsCurve) return extendsEdge ? KvDb::kExtendBoth : KvDb::kExtendThis;
  return extendsEdge ? KvDb::kExtendArg : KvDb::kOnBothOperands;
}

std::optional<KvDbObjectIdArray> askEdges(const wchar_t* title) {
  say(title);
  bool isCancelled = false;
  KvDbObjectIdArray edges = select(nullptr, true, &isCancelled);
  if (isCancelled) return std::nullopt;
  if (edges.isEmpty())
    if (const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId()))
      edges = space->entities();
  return edges;
}

namespace {

using Cut = std::function<bool(KvDbObjectId, const KvGePoint3d&)>;

/// Places in the command's own step to which its work can be taken back one by one.
class Steps {
 public:
  ~Steps() {
    while (count_-- > 0) recorder().releaseSavePoint();
  }
  void begin() {
    recorder().setSavePoint();
    ++count_;
  }
  bool takeBack() {
    if (count_ == 0) return false;
    recorder().rollBack();
    --count_;
    return true;
  }

 private:
  static KvDbUndoRecorder& recorder() { return drawing()->undoRecorder(); }
  int count_ = 0;
};

void cutOne(KvDbObjectId id, const KvGePoint3d& at, const wchar_t* refusal, const Cut& cut) {
  if (isLocked(id))
    say(L"The object is on a locked layer.");
  else if (!cut(id, at))
    say(refusal);
}

/// What the selection in a way (fence, crossing) caught, each at the point where it was caught.
void cutSelected(bool isFence, const wchar_t* refusal, const Cut& cut) {
  std::vector<KvGePoint3d> points;
  KvGePoint3d next;
  while (Ask(points.empty() ? L"\nSpecify first point: "
             : isFence      ? L"\nSpecify next fence point: "
                            : L"\nSpecify opposite corner: ")
             .point(next) == Got::Value) {
    points.push_back(next);
    if (!isFence && points.size() == 2) break;
  }
  if (points.size() < 2) return;
  if (!isFence) {
    const KvGePoint3d a = points[0], c = points[1];
    points = {a, {c.x, a.y, a.z}, c, {a.x, c.y, a.z}, a};
  }
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    resbuf* chain = kvutBuildList(RT3DPOINT, &points[i].x, RT3DPOINT, &points[i + 1].x, 0);
    kvds_name set;
    KvDbObjectIdArray ids;
    if (kvedSSGet(L"F", chain, nullptr, nullptr, set) == RTNORM) {
      for (const KvEdPick& pick : *editor()->selections().find(set)) ids.append(pick.id);
      kvedSSFree(set);
    }
    kvutRelRb(chain);
    const auto stretch = kvdbCurveOf(KvGeLineSeg3d(toWorld(points[i]), toWorld(points[i + 1])));
    const KvGePlane plane(KvGePoint3d::kOrigin, userNormal());
    for (KvDbObjectId id : ids) {
      KvGePoint3dArray meetings;
      const auto* entity = look<KvDbEntity>(id);
      if (!entity || !stretch) continue;
      entity->intersectWith(stretch.get(), KvDb::kOnBothOperands, plane, meetings);
      for (const KvGePoint3d& at : meetings)
        if (!id.isErased()) cutOne(id, at, refusal, cut);
    }
  }
}

void askEdgeMode() {
  const bool extends = variable(L"EDGEMODE", 0) != 0;
  Ask ask(L"\nEnter an implied edge extension mode [Extend/No extend] <" +
          CString(extends ? L"Extend" : L"No extend") + L">: ");
  if (ask.keywords(L"Extend No").word() == Got::Keyword)
    setVariable(L"EDGEMODE", ask.keyword == L"Extend" ? 1 : 0);
}

}  // namespace

void cutRepeatedly(const wchar_t* verb, const wchar_t* refusal, const Cut& cut) {
  Steps steps;
  const CString prompt = L"\nSelect object to " + CString(verb) + L" or [Fence/Crossing/Edge/eRase/Undo]: ";
  for (;;) {
    KvDbObjectId id;
    KvGePoint3d at;
    Ask ask(prompt);
    const Got got = ask.keywords(L"Fence Crossing Edge eRase Undo").entity(id, &at);
    if (got == Got::Value) {
      steps.begin();
      cutOne(id, toWorld(at), refusal, cut);
    } else if (got != Got::Keyword) {
      return;
    } else if (ask.keyword == L"Undo") {
      if (!steps.takeBack()) say(L"Nothing to undo.");
    } else if (ask.keyword == L"Edge") {
      askEdgeMode();
    } else if (ask.keyword == L"eRase") {
      const KvDbObjectIdArray ids = select(L"\nSelect objects to erase: ");
      steps.begin();
      erase(ids);
    } else {
      steps.begin();
      cutSelected(ask.keyword == L"Fence", refusal, cut);
    }
  }
}

}  // namespace kvcmd
