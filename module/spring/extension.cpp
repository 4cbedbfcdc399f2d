// Extension springs with half hooks.
//
// A hook is a half turn of wire about a centre on the axis, its free end at a bearing of 110 degrees. At -70
// degrees a smaller arc goes on inside it, touching it there, and turns the wire towards the middle of the
// body's end, where the first coil begins behind the axis. The right hook is the left one turned by half a
// turn about the spring's middle.
#include "module/spring/coils.h"
#include "module/spring/springs.h"

namespace mek {
namespace {

constexpr int kFewestCoils = 3;
/// Where the hook's half turn begins and ends: -70 and 110 degrees.
constexpr double kHookOut = -1.2217304763960306, kHookEnd = 1.9198621771937625;
/// Of half the coil's diameter: the radius of the arc that leaves the hook. Its centre lies by the rest, 0.625, from
/// the hook's, so that the two arcs touch.
constexpr double kLeaving = 0.375;

bool isDrawable(const double* point, double d, double D, double H0, double n) {
  return point && areSizesFinite({point[0], point[1], point[2], d, D, H0, n}) && n >= kFewestCoils &&
         n <= kMostCoils;
}

/// The sizes that all three views share.
struct Body {
  Body(double wire, double diameter, double length, double n)
      : d(wire),
        D(diameter),
        H0(length),
        pitch((length - 2 * diameter + wire) / n),
        whole(static_cast<int>(n)) {}
  double d, D, H0, pitch;
  int whole;
  /// The first wire centre on the lower row.
  double start() const { return D - d + d / 2 + pitch / 4; }
  /// Where the wire of the end coil crosses the axis, behind it.
  KvGePoint2d middle() const { return {D - d + d / 2, 0}; }
  KvGePoint2d hookCenter() const { return {(D - d) / 2, 0}; }
  std::vector<Coil> coils() const {
    std::vector<Coil> all;
    // Front strands lead from the lower row up: for the row's own sense the rows are exchanged.
    for (int i = 0; i < whole; ++i) all.push_back({start() + i * pitch, start() + i * pitch + pitch / 2});
    return all;
  }
};

/// One line of a hook: its outer or inner outline, or the wire's middle.
struct HookLine {
  double hookRadius, leavingRadius;
  KvGePoint2d leavingCenter;
  KvGePoint2d leavesHook, leavesArc;  ///< where the smaller arc begins and ends
  Segment straight;                   ///< from there towards the body
};

/// The point at which the way along the smaller arc has the body's middle straight ahead.
double bearingOfLeaving(const KvGePoint2d& center, double radius, const KvGePoint2d& target) {
  const double dx = target.x - center.x, dy = target.y - center.y, distance = std::hypot(dx, dy);
  // Seen from the centre, the touching point lies before the target by the angle of the tangent's triangle.
  const double ahead = distance > radius ? std::acos(radius / distance) : 0;
  return std::atan2(dy, dx) - ahead;
}

/// `offset` is 0 for the wire's middle, plus or minus half the wire for its outlines.
HookLine hookLine(const Body& body, double hookRadius, double offset) {
  const double leaving = std::min(kLeaving * body.D / 2, hookRadius);
  HookLine line;
  line.leavingCenter = polar(body.hookCenter(), kHookOut, hookRadius - leaving);
  const double bearing = bearingOfLeaving(line.leavingCenter, leaving, body.middle());
  line.hookRadius = hookRadius + offset;
  // A wire thicker than the arc is wide has no inner outline there.
  line.leavingRadius = std::max(leaving + offset, 0.0);
  line.leavesHook = polar(body.hookCenter(), kHookOut, line.hookRadius);
  line.leavesArc = polar(line.leavingCenter, bearing, line.leavingRadius);
  const KvGePoint2d touch = polar(line.leavingCenter, bearing, leaving);
  const double dx = body.middle().x - touch.x, dy = body.middle().y - touch.y;
  line.straight = {line.leavesArc, {line.leavesArc.x + dx, line.leavesArc.y + dy}};
  return line;
}

void drawArcs(SpringFrame& frame, const Body& body, const HookLine& hook) {
  frame.arcAbout(body.hookCenter(), polar(body.hookCenter(), kHookEnd, hook.hookRadius), hook.leavesHook);
  if (hook.leavingRadius > 0)
    frame.arcAbout(hook.leavingCenter, polar(hook.leavingCenter, kHookOut, hook.leavingRadius),
                   hook.leavesArc);
}

Segment mirrored(Segment segment) {
  segment.from.y = -segment.from.y;
  segment.to.y = -segment.to.y;
  return segment;
}

/// A hook with both outlines, up to what hides the wire: the edge of a front strand, or of the rear quarter
/// turn by which the first coil begins.
void drawHook(SpringFrame& frame, const Body& body, const Segment& nearEdge, const Segment& farEdge) {
  const double radius = (body.D - body.d) / 2;
  const HookLine outer = hookLine(body, radius, body.d / 2), inner = hookLine(body, radius, -body.d / 2);
  drawArcs(frame, body, outer);
  drawArcs(frame, body, inner);
  frame.line(polar(body.hookCenter(), kHookEnd, outer.hookRadius),
             polar(body.hookCenter(), kHookEnd, inner.hookRadius));
  for (const auto& [line, edge] : {std::pair(&outer, &nearEdge), std::pair(&inner, &farEdge)}) {
    const auto end = lineCrossing(line->straight, *edge);
    frame.line(line->straight.from, end ? *end : line->straight.to);
  }
}

/// The rear quarter turn from the body's middle to the first wire centre: its edges, from the coil to the
/// middle.
struct Quarter {
  Segment left, right;
};

Quarter quarterOf(const Body& body) {
  const KvGePoint2d coil(body.start(), -body.D / 2), middle = body.middle();
  const double slant = std::atan2(coil.x - middle.x, body.D / 2), radius = body.d / 2;
  return {{polar(coil, kPi + slant, radius), polar(middle, kPi + slant, radius)},
          {polar(coil, slant, radius), polar(middle, slant, radius)}};
}

int drawFull(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  const Body body(d, D, H0, n);
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, body.coils(), true);
  coils.drawFull();
  for (const bool isRight : {false, true}) {
    if (isRight) frame.turnAbout(H0 / 2);
    // Seen from its own end, the front strand hides both outlines; the quarter turn stands out below.
    const int coil = isRight ? coils.count() - 1 : 0;
    Segment edge = isRight ? coils.rightFlank(coil) : coils.leftFlank(coil);
    edge = mirrored(edge);
    if (isRight) {
      for (KvGePoint2d* end : {&edge.from, &edge.to}) *end = {H0 - end->x, -end->y};
      // With a part of a coil the last strand stands before its place at the end.
    }
    drawHook(frame, body, edge, edge);
    const Quarter quarter = quarterOf(body);
    const HookLine outer = hookLine(body, (D - d) / 2, d / 2);
    if (const auto end = crossing(quarter.left, outer.straight)) frame.line(quarter.left.from, *end);
  }
  frame.turnBack();
  frame.centerLines(H0, D / 2);
  return kDone;
}

int drawSection(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  const Body body(d, D, H0, n);
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, body.coils(), true);
  coils.drawRear();
  for (const bool isRight : {false, true}) {
    if (isRight) frame.turnAbout(H0 / 2);
    const Quarter quarter = quarterOf(body);
    const HookLine outer = hookLine(body, (D - d) / 2, d / 2), inner = hookLine(body, (D - d) / 2, -d / 2);
    drawHook(frame, body, quarter.left, quarter.right);
    for (const auto& [edge, line] : {std::pair(&quarter.left, &outer), std::pair(&quarter.right, &inner)}) {
      const auto end = lineCrossing(*edge, line->straight);
      frame.line(edge->from, end ? *end : edge->to);
    }
  }
  frame.turnBack();
  frame.collect();
  coils.drawSections(true);
  coils.drawSections(false);
  const EntitySet sections = frame.collected();
  if (frame.hasFailed()) return kRefused;
  frame.centerLines(H0, D / 2);
  frame.hatchLayer();
  frame.hatch(sections);
  frame.thick();
  return kDone;
}

int drawSimplified(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  const Body body(d, D, H0, n);
  SpringFrame frame(point);
  frame.thick();
  const auto lower = [&](int i) { return KvGePoint2d(body.start() + i * body.pitch, -D / 2); };
  const auto upper = [&](int i) {
    return KvGePoint2d(body.start() + body.pitch / 2 + i * body.pitch, D / 2);
  };
  for (int i = 0; i < body.whole; ++i) {
    frame.line(lower(i), upper(i));
    if (i + 1 < body.whole) frame.line(upper(i), lower(i + 1));
  }
  const KvGePoint2d last = upper(body.whole - 1);
  for (const bool isRight : {false, true}) {
    if (isRight) frame.turnAbout(H0 / 2);
    const HookLine hook = hookLine(body, D / 2, 0);
    drawArcs(frame, body, hook);
    frame.line(hook.straight);
    // From the middle of the body's end to the outermost point of the zigzag.
    frame.line(body.middle(), isRight ? KvGePoint2d(H0 - last.x, -last.y) : lower(0));
  }
  frame.turnBack();
  frame.centerLines(H0, std::nullopt);
  return kDone;
}

}  // namespace
}  // namespace mek

int DrawExteSpring1(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n);
}
int DrawExteSpring2(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n);
}
int DrawExteSpring3(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n);
}
int DrawExteSpring4(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n);
}
int DrawExteSpring5(double* const point, double d, double D, double H0, double n) {
  return mek::drawSimplified(point, d, D, H0, n);
}
