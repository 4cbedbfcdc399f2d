// ZOOM, PAN, VIEW, VPOINT, PLAN: what of the drawing is seen.
#include <algorithm>

#include "host/base/wcmatch.h"
#include "host/commands/internal/records.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

/// Views that ZOOM came from, in each drawing.
class ViewHistory : public KvDbAttachment {
 public:
  std::vector<KvEdView> views;
};

void show(const KvEdView& view) {
  constexpr std::size_t kMostViews = 10;
  const KvEdView before = kvedViewOf(*drawing());
  if (kvedSetViewOf(*drawing(), view) != Kvad::eOk) return fail(L"There is no such view.");
  auto& views = drawing()->attachment<ViewHistory>().views;
  views.push_back(before);
  if (views.size() > kMostViews) views.erase(views.begin());
  kvedUpdateDisplay();
}

/// The view with all of a box (world coordinates) in it.
void showBox(KvEdView view, const KvDbExtents& box) {
  const auto& size = editor()->screen().size;
  const double screenRatio = static_cast<double>(size.width) / size.height;
  const KvGeMatrix3d toView = view.worldToView();
  KvGePoint2d low(INFINITY, INFINITY), high(-INFINITY, -INFINITY);
  const KvGePoint3d ends[2] = {box.minPoint(), box.maxPoint()};
  for (int i = 0; i < 8; ++i) {
    const KvGePoint3d at = toView * KvGePoint3d(ends[i & 1].x, ends[i >> 1 & 1].y, ends[i >> 2].z);
    low = {std::min(low.x, at.x), std::min(low.y, at.y)};
    high = {std::max(high.x, at.x), std::max(high.y, at.y)};
  }
  constexpr double kRoom = 1.05;
  const double height = std::max(high.y - low.y, (high.x - low.x) / screenRatio) * kRoom;
  if (height > 0) view.height = height;
  view.center = {(low.x + high.x) / 2, (low.y + high.y) / 2};
  show(view);
}

std::optional<KvDbExtents> extentsOfSpace() {
  KvDbExtents all;
  if (const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId()))
    for (KvDbObjectId id : space->entities()) {
      KvDbExtents own;
      const auto* entity = look<KvDbEntity>(id);
      if (entity && entity->getGeomExtents(own) == Kvad::eOk) all.addExt(own);
    }
  return all.isEmpty() ? std::nullopt : std::optional(all);
}

void zoomExtents(bool withLimits) {
  KvDbExtents box;
  if (const auto all = extentsOfSpace()) box = *all;
  if (withLimits || box.isEmpty()) {
    const auto low = variable(L"LIMMIN", KvEdVarPoint{}),
               high = variable(L"LIMMAX", KvEdVarPoint{420, 297, 0});
    box.addPoint({low.x, low.y, 0});
    box.addPoint({high.x, high.y, 0});
  }
  showBox(kvedViewOf(*drawing()), box);
}

void zoomPrevious() {
  auto& views = drawing()->attachment<ViewHistory>().views;
  if (views.empty()) return say(L"There is no previous view.");
  kvedSetViewOf(*drawing(), views.back());
  views.pop_back();
  kvedUpdateDisplay();
}

void zoomCenter() {
  KvEdView view = kvedViewOf(*drawing());
  KvGePoint3d center;
  if (Ask(L"\nSpecify center point: ").point(center) != Got::Value) return;
  CString reply;
  if (Ask(L"\nEnter magnification or height <" + numberText(view.height) + L">: ").text(reply) ==
      Got::Cancelled)
    return;
  double value = view.height;
  const bool isFactor = reply.GetLength() > 1 && (reply.Right(1) == L"x" || reply.Right(1) == L"X");
  if (!reply.IsEmpty() &&
      !platform::parseWhole((isFactor ? reply.Left(reply.GetLength() - 1) : reply).view(), value))
    return fail(L"\"" + reply + L"\" is no height.");
  if (!(value > 0)) return fail(L"A height above 0 expected.");
  const KvGePoint3d at = view.worldToView() * toWorld(center);
  view.center = {at.x, at.y};
  view.height = isFactor ? view.height / value : value;
  show(view);
}

/// A factor: of the limits' view when it stands alone, of the present one behind an x.
void zoomBy(CString text) {
  KvEdView view = kvedViewOf(*drawing());
  double factor = 0;
  const bool isOfView = text.GetLength() > 1 && (text.Right(1) == L"x" || text.Right(1) == L"X");
  if (isOfView) text = text.Left(text.GetLength() - 1);
  if (!platform::parseWhole(text.view(), factor) || !(factor > 0))
    return fail(L"A scale factor (nX of the present view) or an option expected.");
  if (!isOfView) {
    const auto low = variable(L"LIMMIN", KvEdVarPoint{}),
               high = variable(L"LIMMAX", KvEdVarPoint{420, 297, 0});
    if (high.y > low.y) view.height = high.y - low.y;
  }
  view.height /= factor;
  show(view);
}

void zoomWindow(const KvGePoint3d& first, const KvGePoint3d& second) {
  if (flatDistance(first, second) == 0) return fail(L"Two different corners expected.");
  KvDbExtents box;
  box.addPoint(toWorld(first));
  box.addPoint(toWorld({second.x, second.y, first.z}));
  showBox(kvedViewOf(*drawing()), box);
}

void runZoom() {
  if (!drawing()) return;
  KvGePoint3d first, second;
  Ask ask(
      L"\nSpecify corner of window, enter a scale factor (nX), or [All/Center/Extents/Previous/Scale/Window] "
      L"<Extents>: ");
  ask.keywords(L"All Center Extents Previous Scale Window").flags(KVED_ARBITRARY);
  Got got = ask.point(first);
  if (got == Got::Value) {
    if (Ask(L"\nSpecify opposite corner: ").corner(first, second) == Got::Value) zoomWindow(first, second);
    return;
  }
  if (got == Got::Cancelled) return;
  if (got == Got::Nothing || ask.keyword == L"Extents") return zoomExtents(false);
  if (ask.keyword == L"All") return zoomExtents(true);
  if (ask.keyword == L"Previous") return zoomPrevious();
  if (ask.keyword == L"Center") return zoomCenter();
  if (ask.keyword == L"Window") {
    if (Ask(L"\nSpecify first corner: ").point(first) != Got::Value) return;
    if (Ask(L"\nSpecify opposite corner: ").corner(first, second) == Got::Value) zoomWindow(first, second);
    return;
  }
  CString factor = ask.keyword;
  if (factor == L"Scale" && Ask(L"\nEnter a scale factor (nX): ").text(factor) != Got::Value) return;
  zoomBy(factor);
}

void runPan() {
  if (!drawing()) return;
  KvGePoint3d from, to;
  if (Ask(L"\nSpecify base point or displacement: ").point(from) != Got::Value) return;
  const Got got = Ask(L"\nSpecify second point: ").base(from).point(to);
  if (got == Got::Cancelled) return;
  KvEdView view = kvedViewOf(*drawing());
  const KvGeVector3d user = got == Got::Value ? to - from : from.asVector();
  const KvGeVector3d by = view.worldToView() * (userToWorld() * user);
  view.center = {view.center.x - by.x, view.center.y - by.y};
  show(view);
}

// Groups of a named view's record.
enum ViewCode {
  kCenter = 10,
  kDirection = 11,
  kTarget = 12,
  kHeight = 40,
  kWidth = 41,
  kLens = 42,
  kFront = 43,
  kBack = 44,
  kTwist = 50,
  kMode = 71
};

void keepView(const CString& name, const KvEdView& view) {
  const KvDbObjectId present = drawing()->recordId(KvDbTable::View, name);
  const KvDbObjectId id = present.isNull() ? makeRecord<KvDbViewTableRecord>(KvDbTable::View, name) : present;
  const auto& size = editor()->screen().size;
  constexpr double kStandardLens = 50;
  change<KvDbViewTableRecord>(id, [&](KvDbViewTableRecord& record) {
    record.setIsOfLayout(!drawing()->tilemode());
    record.setStoredReal(kHeight, view.height);
    record.setStoredPoint(kCenter, {view.center.x, view.center.y, 0}, 2);
    record.setStoredReal(kWidth, view.height * size.width / size.height);
    record.setStoredPoint(kDirection, {view.direction.x, view.direction.y, view.direction.z}, 3);
    record.setStoredPoint(kTarget, view.target, 3);
    record.setStoredReal(kLens, record.storedReal(kLens, kStandardLens));
    record.setStoredReal(kFront, record.storedReal(kFront, 0));
    record.setStoredReal(kBack, record.storedReal(kBack, 0));
    record.setStoredReal(kTwist, view.twist * 180 / kvge::kPi);
    record.setStoredWhole(kMode, record.storedWhole(kMode, 0));
  });
}

void restoreView(const CString& name) {
  const auto* record = look<KvDbViewTableRecord>(drawing()->recordId(KvDbTable::View, name));
  if (!record) return fail(L"There is no view \"" + name + L"\".");
  KvEdView view = kvedViewOf(*drawing());
  const KvGePoint3d center = record->storedPoint(kCenter, {});
  view.center = {center.x, center.y};
  view.height = record->storedReal(kHeight, view.height);
  view.direction = record->storedPoint(kDirection, {0, 0, 1}).asVector();
  view.target = record->storedPoint(kTarget, {});
  view.twist = record->storedReal(kTwist, 0) * kvge::kPi / 180;
  show(view);
}

void listViews() {
  CString pattern = L"*";
  if (Ask(L"\nEnter view name(s) to list <*>: ").text(pattern) == Got::Cancelled) return;
  for (KvDbObjectId id : recordsMatching(KvDbTable::View, pattern))
    say(kvdbRecordName(id) + (look<KvDbViewTableRecord>(id)->isOfLayout() ? L"  P" : L"  M"));
}

void windowView(const CString& name) {
  KvGePoint3d first, second;
  if (Ask(L"\nSpecify first corner: ").point(first) != Got::Value) return;
  if (Ask(L"\nSpecify opposite corner: ").corner(first, second) != Got::Value) return;
  KvEdView view = kvedViewOf(*drawing());
  const KvGePoint3d a = view.worldToView() * toWorld(first), b = view.worldToView() * toWorld(second);
  const auto& size = editor()->screen().size;
  const double height = std::max(std::fabs(b.y - a.y), std::fabs(b.x - a.x) * size.height / size.width);
  if (!(height > 0)) return fail(L"Two different corners expected.");
  view.center = {(a.x + b.x) / 2, (a.y + b.y) / 2};
  view.height = height;
  keepView(name, view);
}

void runView() {
  if (!drawing()) return;
  Ask ask(L"\nEnter an option [?/Delete/Restore/Save/Window]: ");
  if (ask.keywords(L"? Delete Restore Save Window").word() != Got::Keyword) return;
  if (ask.keyword == L"?") return listViews();
  CString name;
  const bool isMade = ask.keyword == L"Save" || ask.keyword == L"Window";
  if (Ask(ask.keyword == L"Delete"    ? L"\nEnter view name(s) to delete: "
          : ask.keyword == L"Restore" ? L"\nEnter view name to restore: "
                                      : L"\nEnter view name to save: ")
          .text(name) != Got::Value)
    return;
  if (ask.keyword == L"Restore") return restoreView(name);
  if (isMade && !kvdbIsSymbolName(name.view())) return fail(L"\"" + name + L"\" is no name for a view.");
  if (isMade) return ask.keyword == L"Save" ? keepView(name, kvedViewOf(*drawing())) : windowView(name);
  const KvDbObjectIdArray ids = recordsMatching(KvDbTable::View, name);
  if (ids.isEmpty()) return fail(L"There is no view \"" + name + L"\".");
  for (KvDbObjectId id : ids) change<KvDbObject>(id, [](KvDbObject& record) { record.erase(); });
}

/// The present view from another side, with all of the drawing in it.
void lookFrom(const KvGeVector3d& direction, double twist) {
  KvEdView view = kvedViewOf(*drawing());
  view.direction = direction;
  view.twist = twist;
  if (const auto all = extentsOfSpace()) return showBox(view, *all);
  show(view);
}

void runVpoint() {
  if (!drawing()) return;
  if (!drawing()->tilemode()) return fail(L"Sheets are seen from above.");
  KvGePoint3d eye;
  const KvGeVector3d now = userToWorld().inverse() * kvedViewOf(*drawing()).direction;
  Ask ask(L"\nSpecify a view point or [Rotate] <" + pointText(KvGePoint3d::kOrigin + now) + L">: ");
  const Got got = ask.keywords(L"Rotate").point(eye);
  if (got == Got::Cancelled || got == Got::Nothing) return;
  if (got == Got::Keyword) {
    double flat = 0, up = kvge::kPi / 2;
    if (Ask(L"\nEnter angle in XY plane from X axis <270>: ").angle(flat) == Got::Nothing)
      flat = 3 * kvge::kPi / 2;
    if (Ask(L"\nEnter angle from XY plane <90>: ").angle(up) == Got::Cancelled) return;
    eye = {std::cos(flat) * std::cos(up), std::sin(flat) * std::cos(up), std::sin(up)};
  }
  const KvGeVector3d direction = userToWorld() * eye.asVector();
  if (direction.length() < kSmallestTurn) return fail(L"A point beside the origin expected.");
  lookFrom(direction, 0);
}

void runPlan() {
  if (!drawing()) return;
  Ask ask(L"\nEnter an option [Current ucs/Ucs/World] <Current>: ");
  const Got got = ask.keywords(L"Current Ucs World").word();
  if (got == Got::Cancelled) return;
  if (!drawing()->tilemode()) return fail(L"Sheets are seen from above.");
  KvGeMatrix3d system = userToWorld();
  if (got == Got::Keyword && ask.keyword == L"World") system = KvGeMatrix3d();
  if (got == Got::Keyword && ask.keyword == L"Ucs") {
    CString name;
    if (Ask(L"\nEnter name of UCS: ").text(name) != Got::Value) return;
    const auto named = namedSystem(name);
    if (!named) return fail(L"There is no coordinate system \"" + name + L"\".");
    system = *named;
  }
  const KvGeVector3d z = system.column(2);
  // The twist turns the system's X axis to the right.
  const KvGeVector3d x = KvGeMatrix3d::worldToPlane(z) * system.column(0);
  lookFrom(z, -std::atan2(x.y, x.x));
}

constexpr KvCommandRow kRows[] = {
    {L"PAN", L"P -PAN", KVRX_CMD_TRANSPARENT, runPan, L"Moves the view over the drawing.",
     L"Specify base point or displacement:\nSpecify second point: (empty: the first is the displacement)"},
    {L"PLAN", L"", KVRX_CMD_MODAL, runPlan, L"Looks from above onto a coordinate system.",
     L"Enter an option [Current ucs/Ucs/World] <Current>:\nEnter name of UCS: (after Ucs)"},
    {L"VIEW", L"V -VIEW", KVRX_CMD_MODAL, runView, L"Keeps views under names and shows them again.",
     L"Enter an option [?/Delete/Restore/Save/Window]:\nEnter view name to save:"},
    {L"VPOINT", L"-VP VP -VPOINT", KVRX_CMD_MODAL, runVpoint,
     L"Sets the direction from which the drawing is seen.",
     L"Specify a view point or [Rotate] <0,0,1>:\nEnter angle in XY plane from X axis <270>: (after "
     L"Rotate)\nEnter angle from XY plane <90>:"},
    {L"ZOOM", L"Z", KVRX_CMD_TRANSPARENT, runZoom, L"Shows more or less of the drawing.",
     L"Specify corner of window, enter a scale factor (nX), or [All/Center/Extents/Previous/Scale/Window] "
     L"<Extents>:\nSpecify opposite corner:\nSpecify center point: (after Center)\nEnter magnification or "
     L"height <>: (after Center)"},
};

}  // namespace

std::span<const KvCommandRow> viewRows() {
  return kRows;
}

}  // namespace kvcmd
