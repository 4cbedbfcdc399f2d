// UCS and LAYOUT: where points are counted from, and which sheet is drawn on.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/layout.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"

namespace kvcmd {
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

void runUcs() {
  if (!drawing()) return;
  KvGePoint3d origin;
  Ask ask(L"\nSpecify origin of UCS or [3point/OBject/Previous/View/World/X/Y/Z/ZAxis] <World>: ");
  const Got got = ask.keywords(L"3point OBject Previous View World X Y Z ZAxis New").point(origin);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) return byPoints(origin);
  const CString& word = ask.keyword;
  if (got == Got::Nothing || word == L"World") return use(KvGeMatrix3d());
  if (word == L"3point" || word == L"New") {
    if (Ask(L"\nSpecify new origin point <0,0,0>: ").point(origin) != Got::Cancelled) byPoints(origin);
  } else if (word == L"OBject") {
    byObject();
  } else if (word == L"Previous") {
    previousSystem();
  } else if (word == L"ZAxis") {
    byZAxis();
  } else if (word == L"View") {
    const KvGeMatrix3d view = kvedViewOf(*drawing()).viewToWorld();
    const KvGePoint3d stays = userToWorld() * KvGePoint3d::kOrigin;
    KvGeMatrix3d turned = view;
    turned.setTranslation(stays.asVector());
    use(turned);
  } else {
    turnAbout(word == L"X" ? 0 : word == L"Y" ? 1 : 2);
  }
}

void listLayouts(const KvDbLayoutManager& manager) {
  for (KvDbObjectId id : manager.layouts())
    if (const auto* layout = look<KvDbLayout>(id))
      say(layout->getLayoutName() + (id == manager.currentLayoutId() ? L"  current" : L""));
}

void runLayout() {
  if (!drawing()) return;
  KvDbLayoutManager& manager = drawing()->layoutManager();
  Ask ask(L"\nEnter layout option [Delete/New/Rename/Set/?] <Set>: ");
  const Got got = ask.keywords(L"Delete New Rename Set ?").word();
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword && ask.keyword == L"?") return listLayouts(manager);
  CString name = manager.currentLayoutName(), other;
  auto status = Kvad::eOk;
  if (got == Got::Nothing || ask.keyword == L"Set") {
    if (Ask(L"\nEnter layout to make current <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    status = manager.setCurrentLayout(name);
  } else if (ask.keyword == L"New") {
    KvDbObjectId id;
    if (Ask(L"\nEnter new Layout name: ").text(name, true) != Got::Value) return;
    status = manager.createLayout(name, id);
  } else if (ask.keyword == L"Delete") {
    if (Ask(L"\nEnter name of layout to delete <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    status = manager.deleteLayout(name);
  } else {
    if (Ask(L"\nEnter layout to rename <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    if (Ask(L"\nEnter new layout name: ").text(other, true) != Got::Value) return;
    status = manager.renameLayout(name, other);
  }
  switch (status) {
    case Kvad::eOk:
      return;
    case Kvad::eKeyNotFound:
      return fail(L"There is no layout \"" + name + L"\".");
    case Kvad::eDuplicateKey:
      return fail(L"There is a layout of that name already.");
    case Kvad::eNotApplicable:
      return fail(L"Model, and the last layout, stay as they are.");
    default:
      return fail(L"That is no name for a layout.");
  }
}

constexpr KvCommandRow kRows[] = {
    {L"LAYOUT", L"LO -LAYOUT", KVRX_CMD_MODAL, runLayout,
     L"Makes and changes sheets, and goes from one to another.",
     L"Enter layout option [Delete/New/Rename/Set/?] <Set>:\nEnter layout to make current <>: (Model: model "
     L"space)\nEnter new Layout name: (after New)"},
    {L"UCS", L"", KVRX_CMD_MODAL, runUcs, L"Sets the user coordinate system, in which points are given.",
     L"Specify origin of UCS or [3point/OBject/Previous/View/World/X/Y/Z/ZAxis] <World>:\nSpecify point on "
     L"X-axis "
     L"or <accept>:\nSpecify point on the XY plane or <accept>:\nSpecify rotation angle about X axis <90>: "
     L"(after "
     L"X, Y, Z)"},
};

}  // namespace

std::span<const KvCommandRow> spaceRows() {
  return kRows;
}

}  // namespace kvcmd
