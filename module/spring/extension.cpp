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
/// Of half the coil's diameter: the radius of the arc that leaves the hook. Its centre lies by the rest,
/// 0.625, from the hook's, so that the two arcs touch.
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
  /// The wire centre next to a hook, as that hook sees it.
  double outermost(bool isRight) const {
    return isRight ? H0 - (start() + pitch / 2 + (whole - 1) * pitch) : start();
  }
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

/// The rear quarter turn from the body's middle to the outermost wire centre: its edges, from the coil to the
/// middle.
struct Quarter {
  Segment left, right;
};

/// `coil` is the outermost wire centre's place along the axis: with a part of a coil the last one stands
/// farther from its hook than the first.
Quarter quarterTo(const Body& body, double coil) {
  const KvGePoint2d center(coil, -body.D / 2), middle = body.middle();
  const double slant = std::atan2(center.x - middle.x, body.D / 2), radius = body.d / 2;
  return {{polar(center, kPi + slant, radius), polar(middle, kPi + slant, radius)},
          {polar(center, slant, radius), polar(middle, slant, radius)}};
}

/// An outline of the wire from where it leaves the hook's arcs: to the bend at the body's middle, and on to
/// the coil.
struct Bend {
  Bend(const HookLine& hook, const Segment& quarter) : from(hook.straight.from), to(quarter.from) {
    const auto meeting = lineCrossing(hook.straight, quarter);
    corner = meeting ? *meeting : hook.straight.to;
  }
  KvGePoint2d from, corner, to;
};

/// A hook's two outlines and its free end; the outer one's bend comes first.
std::pair<Bend, Bend> drawHook(SpringFrame& frame, const Body& body, const Quarter& quarter) {
  const double radius = (body.D - body.d) / 2;
  const HookLine outer = hookLine(body, radius, body.d / 2), inner = hookLine(body, radius, -body.d / 2);
  drawArcs(frame, body, outer);
  drawArcs(frame, body, inner);
  frame.line(polar(body.hookCenter(), kHookEnd, outer.hookRadius),
             polar(body.hookCenter(), kHookEnd, inner.hookRadius));
  return {Bend(outer, quarter.left), Bend(inner, quarter.right)};
}

/// What shows of a bend beside a front strand: each crossing of the strand's edge hides what follows, or
/// brings it out again.
void drawBeside(SpringFrame& frame, const Bend& bend, const Segment& edge) {
  bool isHidden = false;
  for (const Segment& part : {Segment{bend.from, bend.corner}, Segment{bend.corner, bend.to}}) {
    KvGePoint2d from = part.from;
    if (const auto cut = crossing(part, edge)) {
      if (!isHidden) frame.line(from, *cut);
      from = *cut;
      isHidden = !isHidden;
    }
    if (!isHidden) frame.line(from, part.to);
  }
}

/// The edge of the end coil's front strand on the hook's side, in the frame's own sense there.
Segment outerEdge(const CoilRow& coils, const Body& body, bool isRight) {
  Segment edge = isRight ? coils.rightFlank(coils.count() - 1) : coils.leftFlank(0);
  for (KvGePoint2d* end : {&edge.from, &edge.to}) {
    end->y = -end->y;  // the row is mirrored
    if (isRight) *end = {body.H0 - end->x, -end->y};
  }
  return edge;
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
    const auto [outer, inner] = drawHook(frame, body, quarterTo(body, body.outermost(isRight)));
    const Segment edge = outerEdge(coils, body, isRight);
    drawBeside(frame, outer, edge);
    drawBeside(frame, inner, edge);
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
    const auto [outer, inner] = drawHook(frame, body, quarterTo(body, body.outermost(isRight)));
    for (const Bend& bend : {outer, inner}) {
      frame.line(bend.from, bend.corner);
      frame.line(bend.corner, bend.to);
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
  for (const bool isRight : {false, true}) {
    if (isRight) frame.turnAbout(H0 / 2);
    const HookLine hook = hookLine(body, D / 2, 0);
    drawArcs(frame, body, hook);
    frame.line(hook.straight);
    // From the middle of the body's end to the outermost point of the zigzag.
    frame.line(body.middle(), {body.outermost(isRight), -D / 2});
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
