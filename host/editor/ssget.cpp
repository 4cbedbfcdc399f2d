#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/names.h"
#include "host/editor/editor.h"
#include "host/editor/internal/asking.h"
#include "host/editor/internal/selecting.h"
#include "host/editor/internal/space.h"
#include "host/editor/internal/spatial_index.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "host/editor/ss_filter.h"
#include "platform/text/casemap.h"

namespace {

using kved::PickHit;
using kved::PickRegion;
using Kind = KvEdToken::Kind;

enum class Method {
  User,
  Pick,
  All,
  Everything,
  Last,
  Previous,
  Implied,
  Window,
  Crossing,
  WindowPolygon,
  CrossingPolygon,
  Fence
};

struct MethodName {
  const wchar_t* text;
  Method method;
};
constexpr MethodName kMethods[] = {
    {L"", Method::User},
    {L"+.", Method::Pick},
    {L"+", Method::Pick},
    {L".", Method::Pick},
    {L"A", Method::All},
    {L"X", Method::Everything},
    {L"L", Method::Last},
    {L"P", Method::Previous},
    {L"I", Method::Implied},
    {L"W", Method::Window},
    {L"C", Method::Crossing},
    {L"WP", Method::WindowPolygon},
    {L"CP", Method::CrossingPolygon},
    {L"F", Method::Fence},
};

struct Mode {
  Method method = Method::User;
  bool isSingle = false, isNested = false, takesAllInBox = false, allowsTwice = false, refusesLocked = false,
       hasPrompts = false;
};

bool parseMode(const wchar_t* text, Mode& mode) {
  CString rest = CString(text).MakeUpper();
  if (!rest.IsEmpty() && rest.GetAt(0) == L'_') rest = rest.Mid(1);
  const int colon = rest.Find(L':');
  const CString method = colon < 0 ? rest : rest.Left(colon);
  const auto* found = std::find_if(std::begin(kMethods), std::end(kMethods),
                                   [&](const MethodName& row) { return method == row.text; });
  if (found == std::end(kMethods)) return false;
  mode.method = found->method;
  for (int i = colon; i >= 0 && i < rest.GetLength(); ++i) {
    switch (rest.GetAt(i)) {
      case L':':
        if (i + 1 == rest.GetLength()) return false;
        break;
      case L'S':
        mode.isSingle = true;
        break;
      case L'N':
        mode.isNested = true;
        break;
      case L'E':
        mode.takesAllInBox = true;
        break;
      case L'D':
        mode.allowsTwice = true;
        break;
      case L'L':
        mode.refusesLocked = true;
        break;
      case L'$':
        mode.hasPrompts = true;
        break;
      default:
        return false;
    }
  }
  return true;
}

/// On what occasion a filter is asked, by the bits of its mask.
enum Occasion { kOfImplied = 1, kOfPick = 2, kOfWindow = 4, kOfList = 8 };

std::optional<KvGePoint3d> pointFrom(const void* given) {
  const auto* p = static_cast<const double*>(given);
  if (!p || !std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) return std::nullopt;
  return kved::userToWorld({p[0], p[1], p[2]});
}

/// The points of a chain, in world coordinates; none when something else stands there.
std::vector<KvGePoint3d> pointsFrom(const resbuf* chain) {
  std::vector<KvGePoint3d> points;
  for (; chain; chain = chain->rbnext) {
    const double* p = chain->resval.rpoint;
    const bool isFlat = chain->restype == RTPOINT;
    if (!isFlat && chain->restype != RT3DPOINT) return {};
    if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !(isFlat || std::isfinite(p[2]))) return {};
    points.push_back(kved::userToWorld({p[0], p[1], isFlat ? 0 : p[2]}));
  }
  return points;
}

class Selecting {
 public:
  Selecting(KvEdEditor& editor, KvDbDatabase& database, const Mode& mode, KvEdEntityFilter& filter)
      : editor_(editor), database_(database), mode_(mode), filter_(filter), picker_(database) {}

  int run(const void* first, const void* second);
  KvEdPicks take() { return std::move(picks_); }

 private:
  // Methods. Each gives the number of entities that were found.
  int takeList(const std::vector<KvDbObjectId>& ids, Occasion occasion = kOfList);
  int takePicks(KvEdPicks picks, Occasion occasion);
  int takeAll(bool alsoLocked);
  int takeEverything();
  int takeAt(const KvGePoint3d& world);
  int takeRegion(PickRegion::Kind kind, const std::vector<KvGePoint3d>& world);
  int takeRectangle(PickRegion::Kind kind, const KvGePoint3d& a, const KvGePoint3d& b);
  int takeGroup(const CString& name);

  // The dialogue with the user.
  int ask(const wchar_t* const* prompts);
  int answer(const KvEdToken& token, int& found, bool& isDone);
  int option(const CString& keyword, int& found);
  int askRectangle(std::optional<PickRegion::Kind> kind, std::optional<KvGePoint3d> firstCorner, int& found);
  int askPolygon(PickRegion::Kind kind, int& found);
  int askPoint(const wchar_t* prompt, KvGePoint3d& world, bool mayEnd);
  int takeNamed(const KvEdToken& token, int& found);
  int takePicked(int& found);
  void tell(int found);

  bool isAccepted(KvDbObjectId id) const {
    return id.isValid() && filter_.takes(id) &&
           !(mode_.refusesLocked && kved::layerStateOf(id) == kved::LayerState::Locked);
  }
  void askFilters(KvEdPicks& picks, Occasion occasion);

  KvEdEditor& editor_;
  KvDbDatabase& database_;
  const Mode& mode_;
  KvEdEntityFilter& filter_;
  std::optional<kved::Picker> picker_;
  KvEdPicks picks_;
  std::vector<KvEdPicks> history_;
  bool isRemoving_ = false, isSingle_ = false;
  bool isEmptyPlace_ = true;  // nothing at all lay under the last pick, whatever the filters say
};

void Selecting::askFilters(KvEdPicks& picks, Occasion occasion) {
  auto& selections = editor_.selections();
  const KvApDocument* current = selections.currentDocument ? selections.currentDocument() : nullptr;
  const auto filters = selections.filters;
  for (const auto& row : filters) {
    if ((row.document && row.document != current) || !(row.mask & occasion) || picks.empty()) continue;
    KvEdSelectionSetService service(picks);
    row.filter->ssgetAddFilter(service);
  }
}

int Selecting::takePicks(KvEdPicks picks, Occasion occasion) {
  constexpr int kGroups = 1;
  const bool isByHand = occasion == kOfPick || occasion == kOfWindow;
  if (isByHand && (kved::shortVariable(editor_, L"PICKSTYLE", 1) & kGroups)) kved::widenByGroups(picks);
  std::erase_if(picks, [&](const KvEdPick& pick) {
    if (isAccepted(pick.id)) return false;
    // A nested pick is as good as its containers.
    return !pick.isNested || std::none_of(pick.containers.begin(), pick.containers.end(),
                                          [&](KvDbObjectId id) { return isAccepted(id); });
  });
  askFilters(picks, occasion);
  const int found = static_cast<int>(picks.size());
  std::unordered_set<KvDbObjectId> ids;
  if (isRemoving_) {
    for (const KvEdPick& pick : picks) ids.insert(pick.id);
    std::erase_if(picks_, [&](const KvEdPick& pick) { return ids.count(pick.id) > 0; });
    return found;
  }
  if (!mode_.allowsTwice)
    for (const KvEdPick& pick : picks_) ids.insert(pick.id);
  for (KvEdPick& pick : picks)
    if (mode_.allowsTwice || ids.insert(pick.id).second) picks_.push_back(std::move(pick));
  return found;
}

int Selecting::takeList(const std::vector<KvDbObjectId>& ids, Occasion occasion) {
  KvEdPicks picks;
  for (const KvDbObjectId id : ids) picks.push_back(KvEdPick::of(id));
  return takePicks(std::move(picks), occasion);
}

int Selecting::takeAll(bool alsoLocked) {
  std::vector<KvDbObjectId> ids = kved::indexOf(database_, kved::currentSpace(database_)).all();
  std::erase_if(ids, [&](KvDbObjectId id) {
    const kved::LayerState state = kved::layerStateOf(id);
    return state == kved::LayerState::Frozen || (!alsoLocked && state == kved::LayerState::Locked);
  });
  return takeList(ids);
}

int Selecting::takeEverything() {
  std::vector<KvDbObjectId> ids;
  KvDbBlockTable* table = nullptr;
  if (kvdbOpenObject(table, database_.blockTableId()) != Kvad::eOk) return 0;
  for (const KvDbObjectId block : table->records()) {
    const auto* record = KvDbBlockTableRecord::cast(block.stub()->object);
    const bool isSpace = record && (record->isLayout() || block == database_.modelSpaceId() ||
                                    block == database_.paperSpaceId());
    if (!isSpace) continue;
    for (const KvDbObjectId id : record->entities()) ids.push_back(id);
  }
  table->close();
  return takeList(ids);
}

int Selecting::takeAt(const KvGePoint3d& world) {
  KvEdPicks picks;
  const auto hits = picker_->allAt(world);
  isEmptyPlace_ = hits.empty();
  for (const PickHit& hit : hits) {
    KvEdPick pick = kved::pickOf(hit, world, mode_.isNested);
    const bool isGood = isAccepted(pick.id) || (pick.isNested && isAccepted(hit.id));
    if (!isGood) continue;
    picks.push_back(std::move(pick));
    // A single pick takes one even where all under the box were asked for.
    if (!mode_.takesAllInBox || isSingle_) break;
  }
  return takePicks(std::move(picks), kOfPick);
}

int Selecting::takeRegion(PickRegion::Kind kind, const std::vector<KvGePoint3d>& world) {
  PickRegion region{kind, {}};
  for (const KvGePoint3d& p : world) region.points.push_back(picker_->toView(p));
  const auto window = std::make_shared<const KvEdPickWindow>(world);
  KvEdPicks picks;
  for (const PickHit& hit : picker_->in(region, [&](KvDbObjectId id) { return isAccepted(id); })) {
    KvEdPick pick;
    pick.id = hit.id;
    if (kind == PickRegion::Kind::Fence) {
      pick.method = KvEdPickMethod::Fence;
      pick.points = world;
    } else {
      pick.method = kind == PickRegion::Kind::Window ? KvEdPickMethod::Window : KvEdPickMethod::Crossing;
      pick.window = window;
    }
    picks.push_back(std::move(pick));
  }
  return takePicks(std::move(picks), kOfWindow);
}

int Selecting::takeRectangle(PickRegion::Kind kind, const KvGePoint3d& a, const KvGePoint3d& b) {
  const PickRegion flat = PickRegion::rectangle(kind, picker_->toView(a), picker_->toView(b));
  const KvGeMatrix3d toWorld = picker_->view().viewToWorld();
  std::vector<KvGePoint3d> corners;
  for (const KvGePoint2d& p : flat.points) corners.push_back(toWorld * KvGePoint3d(p.x, p.y, 0));
  return takeRegion(kind, corners);
}

int Selecting::takeGroup(const CString& name) {
  KvDbDictionary* root = nullptr;
  KvDbDictionary* groups = nullptr;
  KvDbObjectId id, group;
  if (database_.getNamedObjectsDictionary(root, KvDb::kForRead) != Kvad::eOk) return 0;
  root->getAt(L"ACAD_GROUP", id);
  root->close();
  if (kvdbOpenObject(groups, id) != Kvad::eOk) return 0;
  groups->getAt(name, group);
  groups->close();
  const auto* members = group.isValid() ? KvDbGroup::cast(group.stub()->object) : nullptr;
  if (!members) {
    editor_.printLine(L"There is no group of that name.");
    return 0;
  }
  std::vector<KvDbObjectId> ids;
  for (const KvDbObjectId member : members->allEntityIds()) ids.push_back(member);
  return takeList(ids);
}

int Selecting::run(const void* first, const void* second) {
  using Region = PickRegion::Kind;
  isSingle_ = mode_.isSingle;
  const auto outcome = [](int found) { return found > 0 ? RTNORM : RTERROR; };
  switch (mode_.method) {
    case Method::User:
    case Method::Pick:
      if (first && !mode_.hasPrompts) {
        const auto point = pointFrom(first);
        if (!point) return RTERROR;
        const int found = takeAt(*point);
        if (found == 0) kved::setErrno(editor_, kKvedErrnoMiss);
        return outcome(found);
      }
      return ask(mode_.hasPrompts ? static_cast<const wchar_t* const*>(first) : nullptr);
    case Method::All:
      return outcome(takeAll(true));
    case Method::Everything:
      return outcome(takeEverything());
    case Method::Last: {
      const KvDbObjectId last = kved::lastSeen(database_);
      return outcome(last.isNull() ? 0 : takeList({last}));
    }
    case Method::Previous:
      return outcome(takePicks(editor_.selections().previous(database_.serial()), kOfList));
    case Method::Implied:
      return outcome(takePicks(editor_.selections().implied(database_.serial()), kOfImplied));
    case Method::Window:
    case Method::Crossing: {
      const auto a = pointFrom(first), b = pointFrom(second);
      if (!a || !b) return RTERROR;
      return outcome(
          takeRectangle(mode_.method == Method::Window ? Region::Window : Region::Crossing, *a, *b));
    }
    default: {
      const auto points = pointsFrom(static_cast<const resbuf*>(first));
      const bool isFence = mode_.method == Method::Fence;
      if (points.size() < (isFence ? 2u : 3u)) return RTERROR;
      return outcome(takeRegion(isFence                                 ? Region::Fence
                                : mode_.method == Method::WindowPolygon ? Region::Window
                                                                        : Region::Crossing,
                                points));
    }
  }
}

void Selecting::tell(int found) {
  if (editor_.isQuiet()) return;
  CString text;
  if (picks_.size() == static_cast<std::size_t>(found) && !isRemoving_)
    text.Format(L"%d found", found);
  else
    text.Format(L"%d %s, %d total", found, isRemoving_ ? L"removed" : L"found",
                static_cast<int>(picks_.size()));
  editor_.printLine(text);
}

int Selecting::ask(const wchar_t* const* prompts) {
  const auto options = editor_.takeGetOptions();
  const CString adding(prompts && prompts[0] ? prompts[0] : L"\nSelect objects: ");
  const CString removing(prompts && prompts[1] && prompts[1][0] ? prompts[1] : L"\nRemove objects: ");
  constexpr int kMostMisses = 100;
  const bool takesImplied = (editor_.runningFlags() & KVRX_CMD_USEPICKSET) != 0 && !mode_.isSingle &&
                            kved::shortVariable(editor_, L"PICKFIRST", 1) != 0;
  if (takesImplied) {
    KvEdPicks implied = std::exchange(editor_.selections().implied(database_.serial()), {});
    if (takePicks(std::move(implied), kOfImplied) > 0) return RTNORM;
  }
  for (int misses = 0; misses < kMostMisses;) {
    const KvEdToken token = editor_.readToken(KvEdReadMode::Word, isRemoving_ ? removing : adding);
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
    if (token.kind == Kind::Text && token.text.IsEmpty()) {
      if (!picks_.empty()) return RTNORM;
      kved::setErrno(editor_, kKvedErrnoEmpty);
      return RTERROR;
    }
    if (token.kind == Kind::Text && !options.keywords.IsEmpty()) {
      editor_.lastInput = kvedMatchKeyword(options.keywords, token.text);
      if (!editor_.lastInput.IsEmpty()) return RTKWORD;
    }
    if (token.kind == Kind::Text && editor_.runTransparent(token.text)) {
      picker_.emplace(database_);  // the view may be another one
      continue;
    }
    KvEdPicks before = picks_;
    int found = -1;
    bool isDone = false;
    const int status = answer(token, found, isDone);
    if (status == RTCAN) return RTCAN;
    if (found >= 0) {
      tell(found);
      if (found > 0) history_.push_back(std::move(before));
    }
    misses = found > 0 ? 0 : misses + 1;
    if (isSingle_ && found > 0) return RTNORM;
    if (mode_.isSingle && found == 0) {
      kved::setErrno(editor_, kKvedErrnoMiss);
      return RTERROR;
    }
    if (isDone) return RTNORM;
  }
  return RTCAN;
}

/// `found` stays below 0 where an answer selects nothing by its nature.
int Selecting::answer(const KvEdToken& token, int& found, bool& isDone) {
  static const CString kOptions(
      L"Window Last Crossing BOX ALL Fence WPolygon CPolygon Group Add Remove Multiple Previous Undo AUto "
      L"SIngle");
  if (token.kind == Kind::Name || token.kind == Kind::PickSet) return takeNamed(token, found);
  if (token.kind == Kind::ListBegin) return takePicked(found);
  if (token.kind == Kind::Text && mode_.method == Method::User) {
    const CString keyword = kvedMatchKeyword(kOptions, token.text);
    if (!keyword.IsEmpty()) return option(keyword, found);
  }
  const auto point = kved::pointOf(token);
  if (!point) {
    editor_.printLine(L"A point or one of the options is needed: " + kOptions + L".");
    return RTNORM;
  }
  kved::notePoint(editor_, *point, *point, false);
  const KvGePoint3d world = kved::userToWorld(*point);
  found = takeAt(world);
  isDone = false;
  const bool mayBeWindow = mode_.method == Method::User && !mode_.takesAllInBox && !mode_.isSingle &&
                           kved::shortVariable(editor_, L"PICKAUTO", 1) != 0;
  if (!isEmptyPlace_ || !mayBeWindow) return RTNORM;
  return askRectangle(std::nullopt, world, found);
}

int Selecting::option(const CString& keyword, int& found) {
  using Region = PickRegion::Kind;
  if (keyword == L"Window") return askRectangle(Region::Window, std::nullopt, found);
  if (keyword == L"Crossing") return askRectangle(Region::Crossing, std::nullopt, found);
  if (keyword == L"BOX") return askRectangle(std::nullopt, std::nullopt, found);
  if (keyword == L"WPolygon") return askPolygon(Region::Window, found);
  if (keyword == L"CPolygon") return askPolygon(Region::Crossing, found);
  if (keyword == L"Fence") return askPolygon(Region::Fence, found);
  if (keyword == L"ALL") {
    found = takeAll(false);
  } else if (keyword == L"Last") {
    const KvDbObjectId last = kved::lastSeen(database_);
    found = last.isNull() ? 0 : takeList({last});
  } else if (keyword == L"Previous") {
    found = takePicks(editor_.selections().previous(database_.serial()), kOfList);
  } else if (keyword == L"Group") {
    CString name;
    const KvEdToken token = editor_.readToken(KvEdReadMode::Word, L"Enter group name: ");
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
    found = takeGroup(token.text);
  } else if (keyword == L"Add" || keyword == L"Remove") {
    isRemoving_ = keyword == L"Remove";
  } else if (keyword == L"Undo") {
    if (history_.empty()) {
      editor_.printLine(L"Nothing has been selected yet.");
    } else {
      picks_ = std::move(history_.back());
      history_.pop_back();
    }
  } else if (keyword == L"SIngle") {
    isSingle_ = true;
  }
  return RTNORM;
}

int Selecting::askPoint(const wchar_t* prompt, KvGePoint3d& world, bool mayEnd) {
  KvGePoint3d point;
  const int status =
      kved::ask(editor_, CString(prompt), {mayEnd ? 0 : KVED_NONULL, {}}, [&](const KvEdToken& token) {
        kved::PointWish wish;
        wish.isPick = true;
        return kved::judgePoint(editor_, token, CString(prompt), point, wish);
      });
  if (status == RTNORM) world = kved::userToWorld(point);
  return status;
}

int Selecting::askRectangle(std::optional<PickRegion::Kind> kind, std::optional<KvGePoint3d> corner,
                            int& found) {
  KvGePoint3d a, b;
  if (corner) a = *corner;
  if (!corner)
    if (const int status = askPoint(L"Specify first corner: ", a, false); status != RTNORM) return status;
  // A pick that missed may have been meant as one: an empty answer gives the window up.
  const int status = askPoint(L"Specify opposite corner: ", b, corner.has_value());
  if (status == RTNONE) found = 0;
  if (status != RTNORM) return status == RTNONE ? RTNORM : status;
  // From left to right what lies inside, from right to left also what is crossed.
  const bool isRightward = picker_->toView(b).x >= picker_->toView(a).x;
  found =
      takeRectangle(kind.value_or(isRightward ? PickRegion::Kind::Window : PickRegion::Kind::Crossing), a, b);
  return RTNORM;
}

int Selecting::askPolygon(PickRegion::Kind kind, int& found) {
  std::vector<KvGePoint3d> points;
  for (;;) {
    KvGePoint3d point;
    const wchar_t* prompt = points.empty() ? L"First point: " : L"Specify endpoint of line: ";
    const int status = askPoint(prompt, point, !points.empty());
    if (status == RTCAN) return RTCAN;
    if (status == RTNONE) break;
    points.push_back(point);
  }
  const std::size_t least = kind == PickRegion::Kind::Fence ? 2 : 3;
  if (points.size() < least)
    editor_.printLine(L"More points are needed.");
  else
    found = takeRegion(kind, points);
  return RTNORM;
}

int Selecting::takeNamed(const KvEdToken& token, int& found) {
  if (token.kind == Kind::PickSet) {
    const KvEdPicks* set = editor_.selections().find(token.name);
    if (set)
      found = takePicks(*set, kOfList);
    else
      editor_.printLine(L"There is no such selection set.");
    return RTNORM;
  }
  KvDbObjectId id;
  kvdbGetObjectId(id, token.name);
  found = id.isValid() && KvDbEntity::cast(id.stub()->object) ? takeList({id}) : 0;
  return RTNORM;
}

/// A list of a name and the point by which it was picked.
int Selecting::takePicked(int& found) {
  KvEdPick pick;
  for (;;) {
    const KvEdToken token = editor_.readToken(KvEdReadMode::Word, CString());
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
    if (token.kind == Kind::ListEnd) break;
    if (token.kind == Kind::Name) kvdbGetObjectId(pick.id, token.name);
    if (const auto point = kved::pointOf(token)) {
      pick.method = KvEdPickMethod::Point;
      pick.points = {kved::userToWorld(*point)};
    }
  }
  found = pick.id.isValid() ? takePicks({pick}, kOfList) : 0;
  return RTNORM;
}

}  // namespace

int kvedSSGet(const wchar_t* modeText, const void* first, const void* second, const resbuf* chain,
              long long* set) {
  KvEdEditor* editor = KvHostContext::current().editor;
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!set) return RTERROR;
  kvds_setNull(set);
  Mode mode;
  KvEdEntityFilter filter;
  if (!editor || !database || !parseMode(modeText, mode) || !filter.set(chain)) return RTERROR;
  kved::setErrno(*editor, 0);
  Selecting selecting(*editor, *database, mode, filter);
  const int status = selecting.run(first, second);
  if (status != RTNORM) return status;
  KvEdPicks picks = selecting.take();
  // Everything may have been taken out again.
  if (picks.empty()) return RTERROR;
  const bool isNew =
      mode.method != Method::Previous && mode.method != Method::Implied && mode.method != Method::Everything;
  if (isNew) editor->selections().previous(database->serial()) = picks;
  editor->selections().add(std::move(picks), set);
  return RTNORM;
}
