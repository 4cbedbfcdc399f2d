// RECTANG, POLYGON, DONUT, SOLID.
#include "host/commands/internal/polybuild.h"
#include "host/commands/internal/rows.h"
#include "host/entities/curves.h"

namespace kvcmd {
namespace {

/// What the corners of a rectangle are like.
struct RectangleLook {
  double chamferFirst = 0, chamferSecond = 0, fillet = 0, width = 0;
};

bool askLook(const CString& keyword, RectangleLook& look) {
  const auto ask = [](const wchar_t* prompt, double& value) {
    return Ask(prompt).flags(KVED_NONEG).distance(value) != Got::Cancelled;
  };
  if (keyword == L"Chamfer") {
    look.fillet = 0;
    return ask(L"\nSpecify first chamfer distance for rectangles <0>: ", look.chamferFirst) &&
           ask(L"\nSpecify second chamfer distance for rectangles <0>: ", look.chamferSecond);
  }
  if (keyword == L"Fillet") {
    look.chamferFirst = look.chamferSecond = 0;
    return ask(L"\nSpecify fillet radius for rectangles <0>: ", look.fillet);
  }
  return ask(L"\nSpecify line width for rectangles <0>: ", look.width);
}

/// The outline through four corners in order, with the corners cut or rounded; plain where the sides are too
/// short for that.
std::vector<PolyVertex> outlineOf(const KvGePoint3d (&corners)[4], const RectangleLook& look) {
  std::vector<PolyVertex> outline;
  double first = look.fillet > 0 ? look.fillet : look.chamferFirst;
  double second = look.fillet > 0 ? look.fillet : look.chamferSecond;
  const double shorter = std::min(corners[0].distanceTo(corners[1]), corners[1].distanceTo(corners[2]));
  if (first + second > shorter) first = second = 0;
  const double turn = (corners[1].x - corners[0].x) * (corners[2].y - corners[1].y) -
                      (corners[1].y - corners[0].y) * (corners[2].x - corners[1].x);
  for (int i = 0; i < 4; ++i) {
    const KvGePoint3d& at = corners[i];
    const KvGePoint3d& before = corners[(i + 3) % 4];
    const KvGePoint3d& behind = corners[(i + 1) % 4];
    if (first + second == 0) {
      outline.push_back({at, 0, look.width, look.width});
      continue;
    }
    const KvGeVector3d back = (before - at).normal(), forth = (behind - at).normal();
    const double quarter = std::tan(kvge::kPi / 8);
    outline.push_back(
        {at + back * first, look.fillet > 0 ? (turn > 0 ? quarter : -quarter) : 0, look.width, look.width});
    outline.push_back({at + forth * second, 0, look.width, look.width});
  }
  return outline;
}

void runRectangle() {
  if (!drawing()) return;
  RectangleLook look;
  KvGePoint3d first, opposite;
  for (;;) {
    Ask ask(L"\nSpecify first corner point or [Chamfer/Fillet/Width]: ");
    const Got got = ask.keywords(L"Chamfer Fillet Width").point(first);
    if (got == Got::Value) break;
    if (got != Got::Keyword || !askLook(ask.keyword, look)) return;
  }
  double rotation = 0;
  for (;;) {
    Ask ask(L"\nSpecify other corner point or [Area/Dimensions/Rotation]: ");
    const Got got = ask.keywords(L"Area Dimensions Rotation").corner(first, opposite);
    if (got == Got::Value) break;
    if (got != Got::Keyword) return;
    double length = 0, other = 0;
    if (ask.keyword == L"Rotation") {
      if (Ask(L"\nSpecify rotation angle <0>: ").base(first).angle(rotation) == Got::Cancelled) return;
      continue;
    }
    const bool byArea = ask.keyword == L"Area";
    if (byArea &&
        Ask(L"\nEnter area of rectangle in current units: ").flags(KVED_NOZERO | KVED_NONEG).real(other) !=
            Got::Value)
      return;
    if (Ask(L"\nSpecify length for rectangles: ").flags(KVED_NOZERO | KVED_NONEG).distance(length) !=
        Got::Value)
      return;
    if (byArea)
      other /= length;
    else if (Ask(L"\nSpecify width for rectangles: ").flags(KVED_NOZERO | KVED_NONEG).distance(other) !=
             Got::Value)
      return;
    opposite = first + KvGeVector3d(length * std::cos(rotation) - other * std::sin(rotation),
                                    length * std::sin(rotation) + other * std::cos(rotation), 0);
    break;
  }
  const KvGeVector3d x(std::cos(rotation), std::sin(rotation), 0), y(-x.y, x.x, 0);
  const KvGeVector3d across(opposite.x - first.x, opposite.y - first.y, 0);
  const double length = across.dotProduct(x), height = across.dotProduct(y);
  if (length == 0 || height == 0) return fail(L"A rectangle with a length and a width expected.");
  const KvGePoint3d corners[4] = {first, first + x * length, first + x * length + y * height,
                                  first + y * height};
  if (addPolyline(outlineOf(corners, look), true).isNull()) fail(L"There is no such rectangle.");
}

void addPolygon(const KvGePoint3d& center, const KvGePoint3d& vertex, int sides) {
  std::vector<PolyVertex> outline;
  const double radius = flatDistance(center, vertex), from = bearing(center, vertex);
  if (!(radius > 0) || !std::isfinite(radius)) return fail(L"A radius above 0 expected.");
  for (int i = 0; i < sides; ++i) {
    const double angle = from + kvge::kTwoPi * i / sides;
    outline.push_back({{center.x + radius * std::cos(angle), center.y + radius * std::sin(angle), center.z}});
  }
  addPolyline(outline, true);
}

void runPolygon() {
  if (!drawing()) return;
  constexpr int kFewest = 3, kMost = 1024;
  int sides = variable(L"POLYSIDES", 4);
  CString prompt;
  prompt.Format(L"\nEnter number of sides <%d>: ", sides);
  do {
    if (Ask(prompt).flags(KVED_NOZERO | KVED_NONEG).whole(sides) == Got::Cancelled) return;
    if (sides < kFewest || sides > kMost) say(L"A number from 3 to 1024 expected.");
  } while (sides < kFewest || sides > kMost);
  setVariable(L"POLYSIDES", sides);
  KvGePoint3d center, second;
  Ask ask(L"\nSpecify center of polygon or [Edge]: ");
  const Got got = ask.keywords(L"Edge").point(center);
  if (got == Got::Keyword) {
    if (Ask(L"\nSpecify first endpoint of edge: ").point(center) != Got::Value) return;
    if (Ask(L"\nSpecify second endpoint of edge: ").base(center).point(second) != Got::Value) return;
    const KvGeVector3d edge = second - center;
    const double height = 0.5 / std::tan(kvge::kPi / sides);
    const KvGePoint3d middle = center + edge * 0.5 + KvGeVector3d(-edge.y, edge.x, 0) * height;
    return addPolygon({middle.x, middle.y, center.z}, center, sides);
  }
  if (got != Got::Value) return;
  Ask kind(L"\nEnter an option [Inscribed in circle/Circumscribed about circle] <I>: ");
  const Got which = kind.keywords(L"Inscribed Circumscribed").word();
  if (which == Got::Cancelled) return;
  const bool isAbout = which == Got::Keyword && kind.keyword == L"Circumscribed";
  // A typed radius puts the lowest side along the X axis; a point turns the polygon towards it.
  double radius = 0;
  const KvGePoint3d before = editor()->lastPoint;
  if (Ask(L"\nSpecify radius of circle: ").flags(KVED_NOZERO | KVED_NONEG).base(center).distance(radius) !=
      Got::Value)
    return;
  const KvGePoint3d now = editor()->lastPoint;
  const bool isPointed = !(now == before) && std::fabs(flatDistance(center, now) - radius) <= 1e-9 * radius;
  double towards = isPointed ? bearing(center, now) : -kvge::kPi / 2;
  if (!isPointed || isAbout) {
    // The direction is that of a side's middle.
    if (isAbout) radius /= std::cos(kvge::kPi / sides);
    towards -= kvge::kPi / sides;
  }
  addPolygon(center, {center.x + radius * std::cos(towards), center.y + radius * std::sin(towards), center.z},
             sides);
}

void runDonut() {
  if (!drawing()) return;
  double inner = 0.5, outer = 1;
  if (Ask(L"\nSpecify inside diameter of donut <0.5>: ").flags(KVED_NONEG).distance(inner) == Got::Cancelled)
    return;
  if (Ask(L"\nSpecify outside diameter of donut <1>: ").flags(KVED_NONEG | KVED_NOZERO).distance(outer) ==
      Got::Cancelled)
    return;
  if (inner > outer) std::swap(inner, outer);
  const double radius = (inner + outer) / 4, width = (outer - inner) / 2;
  KvGePoint3d at;
  while (Ask(L"\nSpecify center of donut or <exit>: ").point(at) == Got::Value)
    addPolyline(
        {{{at.x - radius, at.y, at.z}, 1, width, width}, {{at.x + radius, at.y, at.z}, 1, width, width}},
        true);
}

void runSolid() {
  if (!drawing()) return;
  KvGePoint3d corners[4];
  if (Ask(L"\nSpecify first point: ").point(corners[0]) != Got::Value) return;
  if (Ask(L"\nSpecify second point: ").base(corners[0]).point(corners[1]) != Got::Value) return;
  // Each further pair goes on from the one before.
  for (;;) {
    if (Ask(L"\nSpecify third point: ").base(corners[1]).point(corners[2]) != Got::Value) return;
    const Got got = Ask(L"\nSpecify fourth point or <exit>: ").base(corners[2]).point(corners[3]);
    if (got == Got::Cancelled) return;
    const bool isTriangle = got != Got::Value;
    if (isTriangle) corners[3] = corners[2];
    auto solid = std::make_unique<KvDbSolid>();
    for (int i = 0; i < 4; ++i) solid->setPointAt(i, {corners[i].x, corners[i].y, corners[0].z});
    if (const double thickness = drawing()->thickness(); thickness != 0) solid->setThickness(thickness);
    if (addFromUser(std::move(solid)).isNull()) fail(L"The solid could not be made.");
    corners[0] = corners[2];
    corners[1] = corners[3];
    if (isTriangle) return;
  }
}

constexpr KvCommandRow kRows[] = {
    {L"DONUT", L"DO DOUGHNUT", KVRX_CMD_MODAL, runDonut, L"Draws filled rings and discs.",
     L"Specify inside diameter of donut <0.5>:\nSpecify outside diameter of donut <1>:\nSpecify center of "
     L"donut or <exit>: (empty: ends)"},
    {L"POLYGON", L"POL", KVRX_CMD_MODAL, runPolygon, L"Draws a polygon of equal sides.",
     L"Enter number of sides <4>:\nSpecify center of polygon or [Edge]:\nEnter an option [Inscribed in "
     L"circle/Circumscribed about circle] <I>:\nSpecify radius of circle:"},
    {L"RECTANG", L"REC RECTANGLE", KVRX_CMD_MODAL, runRectangle, L"Draws a rectangle as one polyline.",
     L"Specify first corner point or [Chamfer/Fillet/Width]:\nSpecify other corner point or "
     L"[Area/Dimensions/Rotation]:"},
    {L"SOLID", L"SO", KVRX_CMD_MODAL, runSolid, L"Draws filled triangles and quadrangles.",
     L"Specify first point:\nSpecify second point:\nSpecify third point: (over the first)\nSpecify fourth "
     L"point or <exit>: (over the second; the next piece goes on from there)"},
};

}  // namespace

std::span<const KvCommandRow> shapeRows() {
  return kRows;
}

}  // namespace kvcmd
