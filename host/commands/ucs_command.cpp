// UCS: where points are counted from.
#include "host/commands/internal/records.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/header.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"

namespace kvcmd {
namespace {

// Groups of a coordinate system's record.
enum UcsCode { kOrigin = 10, kXAxis = 11, kYAxis = 12 };

const wchar_t* nameVariable() {
  return drawing()->tilemode() ? L"$UCSNAME" : L"$PUCSNAME";
}

}  // namespace

std::optional<KvGeMatrix3d> namedSystem(const CString& name) {
  const auto* record = look<KvDbUCSTableRecord>(drawing()->recordId(KvDbTable::UCS, name));
  if (!record) return std::nullopt;
  const KvGeVector3d x = record->storedPoint(kXAxis, {1, 0, 0}).asVector(),
                     y = record->storedPoint(kYAxis, {0, 1, 0}).asVector();
  const KvGeVector3d z = x.crossProduct(y);
  constexpr double kSquare = 1e-6;
  if (std::fabs(x.length() - 1) > kSquare || std::fabs(y.length() - 1) > kSquare ||
      std::fabs(x.dotProduct(y)) > kSquare)
    return std::nullopt;
  KvGeMatrix3d system;
  system.setCoordSystem(record->storedPoint(kOrigin, {}), x, y, z);
  return system;
}

namespace {

/// The systems that UCS came from, in each drawing.
class SystemHistory : public KvDbAttachment {
 public:
  std::vector<KvGeMatrix3d> systems;
};

void use(const KvGeMatrix3d& system) {
  constexpr std::size_t kMostSystems = 10;
  const KvGeMatrix3d before = userToWorld();
  if (kvedSetCurrentUCS(system) != Kvad::eOk) return fail(L"That is no coordinate system.");
  auto& systems = drawing()->attachment<SystemHistory>().systems;
  systems.push_back(before);
  if (systems.size() > kMostSystems) systems.erase(systems.begin());
}

/// From an origin, the direction of X and any direction on Y's side, world coordinates; false when they lie
/// on one line.
bool useAxes(const KvGePoint3d& origin, const KvGeVector3d& along, const KvGeVector3d& aside) {
  const KvGeVector3d x = along.normal(), z = x.crossProduct(aside.normal());
  if (along.length() == 0 || z.length() < kSmallestTurn) {
    fail(L"The points lie on one line.");
    return false;
  }
  KvGeMatrix3d system;
  system.setCoordSystem(origin, x, z.normal().crossProduct(x), z.normal());
  use(system);
  return true;
}

/// Origin, then the X axis and the XY plane, each left as it is by an empty reply.
void byPoints(const KvGePoint3d& userOrigin) {
  const KvGeMatrix3d now = userToWorld();
  const KvGePoint3d origin = now * userOrigin;
  KvGePoint3d onX, onY;
  Got got = Ask(L"\nSpecify point on X-axis or <accept>: ").base(userOrigin).point(onX);
  if (got == Got::Cancelled) return;
  if (got == Got::Nothing) {
    KvGeMatrix3d moved = now;
    moved.setTranslation(origin.asVector());
    return use(moved);
  }
  const KvGeVector3d x = now * onX - origin;
  got = Ask(L"\nSpecify point on the XY plane or <accept>: ").base(userOrigin).point(onY);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) {
    useAxes(origin, x, now * onY - origin);
    return;
  }
  // Y keeps its side: as far as X lets it.
  const KvGeVector3d z = now.column(2), y = z.crossProduct(x);
  useAxes(origin, x, y.length() > kSmallestTurn * x.length() ? y : now.column(0));
}

void turnAbout(int axis) {
  constexpr const wchar_t* kPrompts[] = {L"\nSpecify rotation angle about X axis <90>: ",
                                         L"\nSpecify rotation angle about Y axis <90>: ",
                                         L"\nSpecify rotation angle about Z axis <90>: "};
  constexpr KvGeVector3d kAxes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  double angle = kvge::kPi / 2;
  if (Ask(kPrompts[axis]).angle(angle) == Got::Cancelled) return;
  use(userToWorld() * KvGeMatrix3d::rotation(angle, kAxes[axis]));
}

void byZAxis() {
  KvGePoint3d origin, onZ(0, 0, 1);
  if (Ask(L"\nSpecify new origin point <0,0,0>: ").point(origin) == Got::Cancelled) return;
  onZ = origin + KvGeVector3d::kZAxis;
  if (Ask(L"\nSpecify point on positive portion of Z-axis <>: ").base(origin).point(onZ) == Got::Cancelled)
    return;
  const KvGeMatrix3d now = userToWorld();
  const KvGeVector3d z = now * (onZ - origin);
  if (z.length() == 0) return fail(L"Two different points expected.");
  const KvGeVector3d x = z.normal().perpVector();
  useAxes(now * origin, x, z.normal().crossProduct(x));
}

void byObject() {
  KvDbObjectId id;
  KvGePoint3d pick;
  if (Ask(L"\nSelect object to align UCS: ").entity(id, &pick) != Got::Value) return;
  const KvGePoint3d world = toWorld(pick);
  const auto inPlane = [](const KvGePoint3d& origin, const KvGeVector3d& normal, const KvGeVector3d& x) {
    useAxes(origin, x, normal.crossProduct(x));
  };
  if (const auto* line = look<KvDbLine>(id)) {
    const bool fromEnd = line->endPoint().distanceTo(world) < line->startPoint().distanceTo(world);
    const KvGePoint3d &origin = fromEnd ? line->endPoint() : line->startPoint(),
                      other = fromEnd ? line->startPoint() : line->endPoint();
    return inPlane(origin, line->normal(), other - origin);
  }
  if (const auto* circle = look<KvDbCircle>(id)) {
    KvGePoint3d on;
    circle->getClosestPointTo(world, on);
    return inPlane(circle->center(), circle->normal(), on - circle->center());
  }
  if (const auto* arc = look<KvDbArc>(id)) {
    const bool fromEnd = arc->endPoint().distanceTo(world) < arc->startPoint().distanceTo(world);
    return inPlane(arc->center(), arc->normal(),
                   (fromEnd ? arc->endPoint() : arc->startPoint()) - arc->center());
  }
  if (const auto* polyline = look<KvDbPolyline>(id)) {
    KvGePoint3d first, second;
    if (polyline->getPointAt(0, first) == Kvad::eOk && polyline->getPointAt(1, second) == Kvad::eOk)
      return inPlane(first, polyline->normal(), second - first);
  }
  if (const auto* reference = look<KvDbBlockReference>(id)) {
    const KvGeMatrix3d turn = KvGeMatrix3d::rotation(reference->rotation(), reference->normal()) *
                              KvGeMatrix3d::planeToWorld(reference->normal());
    return inPlane(reference->position(), reference->normal(), turn.column(0));
  }
  if (const auto* text = look<KvDbText>(id)) {
    const KvGeMatrix3d turn =
        KvGeMatrix3d::rotation(text->rotation(), text->normal()) * KvGeMatrix3d::planeToWorld(text->normal());
    return inPlane(text->position(), text->normal(), turn.column(0));
  }
  fail(L"The object gives no coordinate system.");
}

void previousSystem() {
  auto& systems = drawing()->attachment<SystemHistory>().systems;
  if (systems.empty()) return say(L"There is no previous coordinate system.");
  kvedSetCurrentUCS(systems.back());
  systems.pop_back();
}

void restoreSystem() {
  CString name;
  if (Ask(L"\nEnter name of UCS to restore: ").text(name) != Got::Value) return;
  const KvDbObjectId id = drawing()->recordId(KvDbTable::UCS, name);
  const auto system = namedSystem(name);
  if (!system) return fail(L"There is no coordinate system \"" + name + L"\".");
  use(*system);
  drawing()->header().setText(nameVariable(), kvdbRecordName(id));
}

void saveSystem() {
  CString name;
  if (Ask(L"\nEnter name to save current UCS: ").text(name) != Got::Value) return;
  if (!kvdbIsSymbolName(name.view())) return fail(L"\"" + name + L"\" is no name for a coordinate system.");
  KvDbObjectId id = drawing()->recordId(KvDbTable::UCS, name);
  if (!id.isNull() && !askYes(L"\nUCS \"" + name + L"\" already exists. Replace it?", false).value_or(false))
    return;
  if (id.isNull()) id = makeRecord<KvDbUCSTableRecord>(KvDbTable::UCS, name);
  const KvGeMatrix3d now = userToWorld();
  change<KvDbUCSTableRecord>(id, [&](KvDbUCSTableRecord& record) {
    record.setStoredPoint(kOrigin, now * KvGePoint3d::kOrigin, 3);
    record.setStoredPoint(kXAxis, KvGePoint3d::kOrigin + now.column(0), 3);
    record.setStoredPoint(kYAxis, KvGePoint3d::kOrigin + now.column(1), 3);
  });
  drawing()->header().setText(nameVariable(), kvdbRecordName(id));
}

void deleteSystems() {
  CString names;
  if (Ask(L"\nEnter UCS name(s) to delete: ").text(names) != Got::Value) return;
  const KvDbObjectIdArray ids = recordsMatching(KvDbTable::UCS, names);
  if (ids.isEmpty()) return fail(L"There is no coordinate system \"" + names + L"\".");
  for (KvDbObjectId id : ids) {
    for (const wchar_t* variable : {L"$UCSNAME", L"$PUCSNAME"})
      if (drawing()->header().text(variable).CompareNoCase(kvdbRecordName(id)) == 0)
        drawing()->header().setText(variable, L"");
    change<KvDbObject>(id, [](KvDbObject& record) { record.erase(); });
  }
  say(countOf(ids.length(), L"deleted"));
}

void listSystems() {
  CString pattern = L"*";
  if (Ask(L"\nEnter UCS name(s) to list <*>: ").text(pattern) == Got::Cancelled) return;
  const CString current = drawing()->header().text(nameVariable());
  const auto tell = [](const CString& name, const KvGeMatrix3d& system) {
    // As seen from the present one.
    const KvGeMatrix3d seen = userToWorld().inverse() * system;
    say(name);
    say(L"    origin " + pointText(seen * KvGePoint3d::kOrigin) + L"  X axis " +
        pointText(KvGePoint3d::kOrigin + seen.column(0)));
    say(L"    Y axis " + pointText(KvGePoint3d::kOrigin + seen.column(1)) + L"  Z axis " +
        pointText(KvGePoint3d::kOrigin + seen.column(2)));
  };
  say(L"Current UCS: " + (current.IsEmpty() ? CString(L"*NO NAME*") : current) +
      L" (axes and origins are told in it)");
  for (KvDbObjectId id : recordsMatching(KvDbTable::UCS, pattern)) {
    const CString name = kvdbRecordName(id);
    if (const auto system = namedSystem(name))
      tell(name, *system);
    else
      say(name + L"  can't be used: its axes make no system");
  }
}

/// The same axes about another origin, or farther up.
void moveOrigin() {
  KvGePoint3d origin;
  Ask ask(L"\nSpecify new origin point or [Zdepth] <0,0,0>: ");
  const Got got = ask.keywords(L"Zdepth").point(origin);
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword) {
    double depth = 0;
    if (Ask(L"\nSpecify Zdepth <0>: ").distance(depth) == Got::Cancelled) return;
    origin = {0, 0, depth};
  }
  use(userToWorld() * KvGeMatrix3d::translation(origin.asVector()));
}

void newOrigin() {
  KvGePoint3d origin;
  if (Ask(L"\nSpecify new origin point <0,0,0>: ").point(origin) != Got::Cancelled) byPoints(origin);
}

void byView() {
  KvGeMatrix3d turned = kvedViewOf(*drawing()).viewToWorld();
  turned.setTranslation((userToWorld() * KvGePoint3d::kOrigin).asVector());
  use(turned);
}

void named();

struct Option {
  const wchar_t* keyword;
  void (*run)();
};
constexpr Option kOptions[] = {
    {L"World", [] { use(KvGeMatrix3d()); }},
    {L"3point", newOrigin},
    {L"New", newOrigin},
    {L"Move", moveOrigin},
    {L"OBject", byObject},
    {L"Entity", byObject},
    {L"Previous", previousSystem},
    {L"View", byView},
    {L"ZAxis", byZAxis},
    {L"X", [] { turnAbout(0); }},
    {L"Y", [] { turnAbout(1); }},
    {L"Z", [] { turnAbout(2); }},
    {L"NAmed", named},
    {L"Restore", restoreSystem},
    {L"Save", saveSystem},
    {L"Delete", deleteSystems},
    {L"?", listSystems},
};

void runOption(const CString& keyword) {
  for (const Option& option : kOptions)
    if (keyword == option.keyword) return option.run();
}

void named() {
  Ask ask(L"\nEnter an option [Restore/Save/Delete/?]: ");
  if (ask.keywords(L"Restore Save Delete ?").word() == Got::Keyword) runOption(ask.keyword);
}

void runUcs() {
  if (!drawing()) return;
  KvGePoint3d origin;
  Ask ask(
      L"\nSpecify origin of UCS or "
      L"[3point/Move/NAmed/OBject/Previous/Restore/Save/Delete/View/World/X/Y/Z/ZAxis/?] <World>: ");
  const Got got = ask.keywords(
                         L"3point Move NAmed OBject Entity Previous Restore Save Delete View World X Y Z "
                         L"ZAxis New ?")
                      .point(origin);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) return byPoints(origin);
  runOption(got == Got::Nothing ? CString(L"World") : ask.keyword);
}

constexpr KvCommandRow kRows[] = {
    {L"UCS", L"", KVRX_CMD_MODAL, runUcs, L"Sets the user coordinate system, in which points are given.",
     L"Specify origin of UCS or "
     L"[3point/Move/NAmed/OBject/Previous/Restore/Save/Delete/View/World/X/Y/Z/ZAxis/?] <World>:\nSpecify "
     L"point on X-axis or <accept>:\nSpecify point on the XY plane or <accept>:\nSpecify rotation angle "
     L"about X axis <90>: (after X, Y, Z)\nSpecify new origin point or [Zdepth] <0,0,0>: (after "
     L"Move)\nEnter an option [Restore/Save/Delete/?]: (after NAmed)\nEnter name to save current UCS: "
     L"(after Save)"},
};

}  // namespace

std::span<const KvCommandRow> ucsRows() {
  return kRows;
}

}  // namespace kvcmd
