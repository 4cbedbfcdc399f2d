// ARC and CIRCLE. All is reckoned in the XY plane of the user system, at the height of the first point.
#include <cmath>

#include "host/commands/internal/flatcurve.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/curves.h"
#include "host/geometry/span.h"

namespace kvcmd {
namespace {

/// Counter-clockwise from start to end, about a centre of the user system.
void addArc(const KvGePoint3d& center, double radius, double start, double end) {
  if (!(radius > 0) || !std::isfinite(radius) ||
      std::fabs(std::remainder(end - start, kvge::kTwoPi)) < kSmallestTurn) {
    fail(L"There is no arc of that size.");
    return;
  }
  auto arc = std::make_unique<KvDbArc>(center, KvGeVector3d::kZAxis, radius, start, end);
  arc->transformBy(userToWorld());
  add(std::move(arc));
}

/// The centre of the circle through three points; none when they lie on one line.
std::optional<KvGePoint3d> centerOf(const KvGePoint3d& a, const KvGePoint3d& b, const KvGePoint3d& c) {
  const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
  const double turn = 2 * (bx * cy - by * cx), size = std::hypot(bx, by) * std::hypot(cx, cy);
  if (!(std::fabs(turn) > size * kSmallestTurn)) return std::nullopt;
  const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
  return KvGePoint3d(a.x + (cy * b2 - by * c2) / turn, a.y + (bx * c2 - cx * b2) / turn, a.z);
}

void arcThrough(const KvGePoint3d& start, const KvGePoint3d& middle, const KvGePoint3d& end) {
  const auto center = centerOf(start, middle, end);
  if (!center) {
    fail(L"The three points lie on one line.");
    return;
  }
  const double from = bearing(*center, start), to = bearing(*center, end), via = bearing(*center, middle);
  const bool isForward = kvge::normalizedAngle(via - from) < kvge::normalizedAngle(to - from);
  addArc(*center, flatDistance(*center, start), isForward ? from : to, isForward ? to : from);
}

/// The end of an arc whose start and centre are known.
void arcByCenter(const KvGePoint3d& start, const KvGePoint3d& center) {
  KvGePoint3d end;
  Ask ask(L"\nSpecify end point of arc or [Angle/chord Length]: ");
  const double radius = flatDistance(center, start), from = bearing(center, start);
  double value = 0;
  switch (ask.keywords(L"Angle Length").base(center).point(end)) {
    case Got::Value:
      addArc(center, radius, from, bearing(center, end));
      return;
    case Got::Keyword:
      break;
    default:
      return;
  }
  if (ask.keyword == L"Angle") {
    if (Ask(L"\nSpecify included angle: ").flags(KVED_NOZERO).angle(value) != Got::Value) return;
    addArc(center, radius, from, from + value);
    return;
  }
  if (Ask(L"\nSpecify length of chord: ").flags(KVED_NOZERO).base(start).distance(value) != Got::Value)
    return;
  if (std::fabs(value) > 2 * radius) {
    fail(L"The chord is longer than the circle is wide.");
    return;
  }
  // A negative chord gives the greater arc.
  const double sweep = 2 * std::asin(std::fabs(value) / (2 * radius));
  addArc(center, radius, from, from + (value > 0 ? sweep : kvge::kTwoPi - sweep));
}

/// Start, end and one thing more.
void arcByEnd(const KvGePoint3d& start, const KvGePoint3d& end) {
  Ask ask(L"\nSpecify center point of arc or [Angle/Direction/Radius]: ");
  KvGePoint3d center;
  const Got got = ask.keywords(L"Angle Direction Radius").base(end).point(center);
  if (got == Got::Value) {
    addArc(center, flatDistance(center, start), bearing(center, start), bearing(center, end));
    return;
  }
  if (got != Got::Keyword) return;
  const double chord = flatDistance(start, end), along = bearing(start, end);
  const KvGePoint3d middle((start.x + end.x) / 2, (start.y + end.y) / 2, start.z);
  double value = 0;
  if (ask.keyword == L"Radius") {
    if (Ask(L"\nSpecify radius of arc: ").flags(KVED_NOZERO).base(end).distance(value) != Got::Value) return;
    const double radius = std::fabs(value), half = chord / 2;
    // What rounding takes from a half circle is given back.
    if (radius < half * (1 - kSmallestTurn) || chord == 0) {
      fail(L"The radius is smaller than half the distance of the points.");
      return;
    }
    // Near a half circle the root would make much of the last digit: it counts as one.
    constexpr double kLastDigits = 1e-14;
    const bool isHalf = radius - half <= radius * kLastDigits;
    const double height = isHalf ? 0 : std::sqrt(radius * radius - half * half) * (value > 0 ? 1 : -1);
    const KvGePoint3d at(middle.x - height * std::sin(along), middle.y + height * std::cos(along), start.z);
    addArc(at, flatDistance(at, start), bearing(at, start), bearing(at, end));
    return;
  }
  if (ask.keyword == L"Angle") {
    if (Ask(L"\nSpecify included angle: ").flags(KVED_NOZERO).angle(value) != Got::Value) return;
    value = kvge::normalizedAngle(value);
    const double height = chord / 2 / std::tan(value / 2);
    const KvGePoint3d at(middle.x - height * std::sin(along), middle.y + height * std::cos(along), start.z);
    addArc(at, flatDistance(at, start), bearing(at, start), bearing(at, end));
    return;
  }
  if (Ask(L"\nSpecify tangent direction for the start point of arc: ").base(start).angle(value) != Got::Value)
    return;
  // The centre lies on the normal of the tangent and on the chord's perpendicular bisector.
  const double turn = std::sin(along - value);
  if (std::fabs(turn) < kSmallestTurn) {
    fail(L"The direction leads straight to the end point.");
    return;
  }
  const double radius = chord / (2 * turn);
  const KvGePoint3d at(start.x - radius * std::sin(value), start.y + radius * std::cos(value), start.z);
  const double from = bearing(at, start), to = bearing(at, end);
  addArc(at, std::fabs(radius), radius > 0 ? from : to, radius > 0 ? to : from);
}

void runArc() {
  KvGePoint3d start, second, end;
  Ask first(L"\nSpecify start point of arc or [Center]: ");
  switch (first.keywords(L"Center").point(start)) {
    case Got::Keyword:
      if (Ask(L"\nSpecify center point of arc: ").point(second) != Got::Value) return;
      if (Ask(L"\nSpecify start point of arc: ").base(second).point(start) != Got::Value) return;
      arcByCenter(start, second);
      return;
    case Got::Nothing:
      start = editor()->lastPoint;
      break;
    case Got::Cancelled:
      return;
    default:
      break;
  }
  Ask next(L"\nSpecify second point of arc or [Center/End]: ");
  const Got got = next.keywords(L"Center End").base(start).point(second);
  if (got == Got::Value) {
    if (Ask(L"\nSpecify end point of arc: ").base(second).point(end) == Got::Value)
      arcThrough(start, second, end);
  } else if (got == Got::Keyword && next.keyword == L"Center") {
    if (Ask(L"\nSpecify center point of arc: ").base(start).point(second) == Got::Value)
      arcByCenter(start, second);
  } else if (got == Got::Keyword) {
    if (Ask(L"\nSpecify end point of arc: ").base(start).point(end) == Got::Value) arcByEnd(start, end);
  }
}

void addCircle(const KvGePoint3d& center, double radius) {
  if (!(radius > 0) || !std::isfinite(radius)) {
    fail(L"A radius above 0 expected.");
    return;
  }
  auto circle = std::make_unique<KvDbCircle>(center, KvGeVector3d::kZAxis, radius);
  circle->transformBy(userToWorld());
  if (const double thickness = drawing()->thickness(); thickness != 0) circle->setThickness(thickness);
  add(std::move(circle));
}

void circleByPoints(bool isThree) {
  KvGePoint3d a, b, c;
  if (Ask(L"\nSpecify first point on circle: ").point(a) != Got::Value) return;
  if (Ask(L"\nSpecify second point on circle: ").base(a).point(b) != Got::Value) return;
  if (!isThree) {
    addCircle({(a.x + b.x) / 2, (a.y + b.y) / 2, a.z}, flatDistance(a, b) / 2);
    return;
  }
  if (Ask(L"\nSpecify third point on circle: ").base(b).point(c) != Got::Value) return;
  if (const auto center = centerOf(a, b, c))
    addCircle(*center, flatDistance(*center, a));
  else
    fail(L"The three points lie on one line.");
}

/// One of the two objects that a circle is to touch; false when the command ends.
bool askTouched(const wchar_t* prompt, FlatCurve& curve, KvGePoint2d& pick) {
  KvDbObjectId id;
  KvGePoint3d at;
  const auto isFlat = [](KvDbObjectId one) { return flatCurveOf(one).has_value(); };
  if (Ask(prompt).prefer(isFlat).entity(id, &at) != Got::Value) return false;
  const auto found = flatCurveOf(id);
  if (!found) return fail(L"A line, an arc or a circle in the user system's plane expected."), false;
  curve = *found;
  pick = kvge::planar(at);
  return true;
}

void circleByTangents() {
  FlatCurve first, second;
  KvGePoint2d firstPick, secondPick;
  double radius = 0;
  if (!askTouched(L"\nSpecify point on object for first tangent of circle: ", first, firstPick) ||
      !askTouched(L"\nSpecify point on object for second tangent of circle: ", second, secondPick) ||
      Ask(L"\nSpecify radius of circle: ").flags(KVED_NOZERO | KVED_NONEG).distance(radius) != Got::Value)
    return;
  const auto round = touchingBoth(first, firstPick, second, secondPick, radius);
  if (!round) return fail(L"Circle does not exist.");
  addCircle({round->center.x, round->center.y, first.height}, radius);
}

void runCircle() {
  KvGePoint3d center;
  Ask ask(L"\nSpecify center point for circle or [3P/2P/Ttr (tan tan radius)]: ");
  const Got got = ask.keywords(L"3P 2P Ttr").point(center);
  if (got == Got::Keyword && ask.keyword == L"Ttr") return drawing() ? circleByTangents() : void();
  if (got == Got::Keyword) {
    circleByPoints(ask.keyword == L"3P");
    return;
  }
  if (got != Got::Value || !drawing()) return;
  double radius = 0;
  Ask size(L"\nSpecify radius of circle or [Diameter]: ");
  switch (size.keywords(L"Diameter").flags(KVED_NOZERO | KVED_NONEG).base(center).distance(radius)) {
    case Got::Value:
      addCircle(center, radius);
      return;
    case Got::Keyword:
      if (Ask(L"\nSpecify diameter of circle: ")
              .flags(KVED_NOZERO | KVED_NONEG)
              .base(center)
              .distance(radius) == Got::Value)
        addCircle(center, radius / 2);
      return;
    default:
      return;
  }
}

constexpr KvCommandRow kRows[] = {
    {L"ARC", L"A", KVRX_CMD_MODAL, runArc,
     L"Draws an arc, counter-clockwise from its start to its end, through three points or by its start with "
     L"centre, "
     L"end, angle, chord, direction or radius.",
     L"Specify start point of arc or [Center]:\nSpecify second point of arc or [Center/End]:\nSpecify end "
     L"point of arc "
     L"or [Angle/chord Length]: (after a centre)\nSpecify center point of arc or [Angle/Direction/Radius]: "
     L"(after an "
     L"end; a negative radius gives the greater arc)"},
    {L"CIRCLE", L"C", KVRX_CMD_MODAL, runCircle,
     L"Draws a circle by centre and radius or diameter, through two or three points, or touching two "
     L"objects.",
     L"Specify center point for circle or [3P/2P/Ttr (tan tan radius)]:\nSpecify point on object for first "
     L"tangent of circle: (after Ttr)\nSpecify radius of circle or [Diameter]:"},
};

}  // namespace

std::span<const KvCommandRow> arcRows() {
  return kRows;
}

}  // namespace kvcmd
