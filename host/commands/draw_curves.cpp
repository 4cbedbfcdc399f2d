// POINT, XLINE, RAY, SPLINE, ELLIPSE.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/curves.h"
#include "host/entities/spline.h"

namespace kvcmd {
namespace {

void runPoint() {
  KvGePoint3d at;
  if (!drawing() || Ask(L"\nSpecify a point: ").point(at) != Got::Value) return;
  auto point = std::make_unique<KvDbPoint>(at);
  if (const double thickness = drawing()->thickness(); thickness != 0) point->setThickness(thickness);
  addFromUser(std::move(point));
}

template <class T>
void addEndless(const KvGePoint3d& base, const KvGeVector3d& direction) {
  auto line = std::make_unique<T>();
  if (line->setUnitDir(direction) != Kvad::eOk) return say(L"Two different points expected.");
  line->setBasePoint(base);
  addFromUser(std::move(line));
}

/// Lines through points, all in one direction.
void parallels(const KvGeVector3d& direction) {
  KvGePoint3d through;
  while (Ask(L"\nSpecify through point: ").point(through) == Got::Value)
    addEndless<KvDbXline>(through, direction);
}

KvGeVector3d directionOf(double angle) {
  return {std::cos(angle), std::sin(angle), 0};
}

void bisect() {
  KvGePoint3d vertex, from, to;
  if (Ask(L"\nSpecify angle vertex point: ").point(vertex) != Got::Value) return;
  if (Ask(L"\nSpecify angle start point: ").base(vertex).point(from) != Got::Value) return;
  while (Ask(L"\nSpecify angle end point: ").base(vertex).point(to) == Got::Value) {
    const KvGeVector3d sum = (from - vertex).normal() + (to - vertex).normal();
    // Straight on: the bisector stands upright on the line.
    const KvGeVector3d along = (to - vertex).normal();
    addEndless<KvDbXline>(vertex, sum.length() > kSmallestTurn ? sum : KvGeVector3d(-along.y, along.x, 0));
  }
}

void runXline() {
  if (!drawing()) return;
  KvGePoint3d base, through;
  Ask ask(L"\nSpecify a point or [Hor/Ver/Ang/Bisect]: ");
  const Got got = ask.keywords(L"Hor Ver Ang Bisect").point(base);
  if (got == Got::Keyword) {
    double angle = 0;
    if (ask.keyword == L"Bisect") return bisect();
    if (ask.keyword == L"Ver") angle = kvge::kPi / 2;
    if (ask.keyword == L"Ang" && Ask(L"\nEnter angle of xline (0): ").angle(angle) == Got::Cancelled) return;
    return parallels(ask.keyword == L"Ver" ? KvGeVector3d::kYAxis : directionOf(angle));
  }
  if (got != Got::Value) return;
  while (Ask(L"\nSpecify through point: ").base(base).point(through) == Got::Value)
    addEndless<KvDbXline>(base, through - base);
}

void runRay() {
  KvGePoint3d base, through;
  if (!drawing() || Ask(L"\nSpecify start point: ").point(base) != Got::Value) return;
  while (Ask(L"\nSpecify through point: ").base(base).point(through) == Got::Value)
    addEndless<KvDbRay>(base, through - base);
}

/// A tangent by a point; none for an empty reply, nothing at all after a cancel.
std::optional<KvGeVector3d> askTangent(const wchar_t* prompt, const KvGePoint3d& at, bool isStart) {
  KvGePoint3d point;
  const Got got = Ask(prompt).base(at).point(point);
  if (got == Got::Cancelled) return std::nullopt;
  if (got != Got::Value) return KvGeVector3d();
  return isStart ? at - point : point - at;
}

void runSpline() {
  if (!drawing()) return;
  std::vector<KvGePoint3d> points(1);
  if (Ask(L"\nSpecify first point: ").point(points[0]) != Got::Value) return;
  double tolerance = 0;
  bool isClosed = false;
  for (bool goesOn = true; goesOn;) {
    const bool mayClose = points.size() > 2;
    KvGePoint3d point;
    Ask ask(mayClose ? L"\nSpecify next point or [Close/Fit tolerance/Undo] <start tangent>: "
                     : L"\nSpecify next point or [Fit tolerance/Undo]: ");
    ask.keywords(mayClose ? L"Close Fit Undo" : L"Fit Undo").base(points.back());
    switch (ask.point(point)) {
      case Got::Value:
        points.push_back(point);
        break;
      case Got::Keyword:
        if (ask.keyword == L"Close") {
          isClosed = true;
          goesOn = false;
        } else if (ask.keyword == L"Undo") {
          if (points.size() > 1) points.pop_back();
        } else if (Ask(L"\nSpecify fit tolerance <0>: ").flags(KVED_NONEG).distance(tolerance) ==
                   Got::Cancelled) {
          return;
        }
        break;
      case Got::Nothing:
        goesOn = false;
        break;
      default:
        return;
    }
  }
  std::optional<KvGeVector3d> start, end;
  if (isClosed) {
    points.push_back(points.front());
    // One tangent serves both ends: along the chord of the neighbours.
    start = end = (points[1] - points[points.size() - 2]).normal();
    KvGePoint3d towards;
    const Got got = Ask(L"\nSpecify tangent: ").base(points[0]).point(towards);
    if (got == Got::Cancelled) return;
    if (got == Got::Value) start = end = towards - points[0];
  } else {
    if (points.size() < 2) return;
    start = askTangent(L"\nSpecify start tangent: ", points.front(), true);
    if (!start) return;
    end = askTangent(L"\nSpecify end tangent: ", points.back(), false);
    if (!end) return;
  }
  KvGePoint3dArray fit;
  for (const KvGePoint3d& point : points) fit.append(point);
  auto spline = std::make_unique<KvDbSpline>(fit, *start, *end, tolerance);
  if (!spline->geCurve()) return fail(L"Two different points expected.");
  addFromUser(std::move(spline));
}

/// An ellipse by its centre, the end of one axis and the length of half the other; user coordinates.
struct EllipseShape {
  KvGePoint3d center;
  KvGeVector3d axis;
  double other = 0;
};

/// The half-length of the second axis; by a turn of a circle about the first one with Rotation.
bool askOther(EllipseShape& shape) {
  Ask ask(L"\nSpecify distance to other axis or [Rotation]: ");
  const Got got =
      ask.keywords(L"Rotation").flags(KVED_NOZERO | KVED_NONEG).base(shape.center).distance(shape.other);
  if (got == Got::Value) return true;
  if (got != Got::Keyword) return false;
  double turn = 0;
  if (Ask(L"\nSpecify rotation around major axis: ").angle(turn) != Got::Value) return false;
  shape.other = shape.axis.length() * std::fabs(std::cos(turn));
  constexpr double kThinnest = 1e-6;
  if (shape.other >= kThinnest * shape.axis.length()) return true;
  fail(L"Seen that way the circle is a line.");
  return false;
}

/// The part of an ellipse, by angles from its major axis or by parameters.
bool askPart(KvDbEllipse& ellipse) {
  bool isParameter = false;
  double start = 0, end = 0;
  Ask first(L"\nSpecify start angle or [Parameter]: ");
  Got got = first.keywords(L"Parameter").angle(start);
  if (got == Got::Keyword) {
    isParameter = true;
    got = Ask(L"\nSpecify start parameter: ").angle(start);
  }
  if (got != Got::Value) return false;
  Ask second(isParameter ? L"\nSpecify end parameter or [Included angle]: "
                         : L"\nSpecify end angle or [Included angle]: ");
  got = second.keywords(L"Included").angle(end);
  if (got == Got::Keyword) {
    got = Ask(L"\nSpecify included angle for arc <180>: ").angle(end);
    if (got == Got::Nothing) end = kvge::kPi;
    if (got == Got::Cancelled) return false;
    end += start;
  } else if (got != Got::Value) {
    return false;
  }
  if (isParameter) {
    ellipse.setStartParam(start);
    ellipse.setEndParam(end);
  } else {
    ellipse.setStartAngle(start);
    ellipse.setEndAngle(end);
  }
  return true;
}

void runEllipse() {
  if (!drawing()) return;
  EllipseShape shape;
  KvGePoint3d end;
  bool isArc = false;
  Ask ask(L"\nSpecify axis endpoint of ellipse or [Arc/Center]: ");
  Got got = ask.keywords(L"Arc Center").point(shape.center);
  if (got == Got::Keyword && ask.keyword == L"Arc") {
    isArc = true;
    ask = Ask(L"\nSpecify axis endpoint of elliptical arc or [Center]: ");
    got = ask.keywords(L"Center").point(shape.center);
  }
  if (got == Got::Keyword) {
    if (Ask(L"\nSpecify center of ellipse: ").point(shape.center) != Got::Value) return;
    if (Ask(L"\nSpecify endpoint of axis: ").base(shape.center).point(end) != Got::Value) return;
  } else {
    if (got != Got::Value) return;
    if (Ask(L"\nSpecify other endpoint of axis: ").base(shape.center).point(end) != Got::Value) return;
    shape.center = kvge::midpoint(shape.center, end);
  }
  end.z = shape.center.z;
  shape.axis = end - shape.center;
  if (shape.axis.length() == 0) return fail(L"Two different points expected.");
  if (!askOther(shape)) return;
  double ratio = shape.other / shape.axis.length();
  if (ratio > 1) {
    // The other axis is the major one.
    shape.axis = KvGeVector3d(-shape.axis.y, shape.axis.x, 0) * ratio;
    ratio = 1 / ratio;
  }
  auto ellipse = std::make_unique<KvDbEllipse>();
  if (ellipse->set(shape.center, KvGeVector3d::kZAxis, shape.axis, ratio) != Kvad::eOk)
    return fail(L"There is no such ellipse.");
  if (isArc && !askPart(*ellipse)) return;
  if (addFromUser(std::move(ellipse)).isNull()) fail(L"There is no such ellipse.");
}

constexpr KvCommandRow kRows[] = {
    {L"ELLIPSE", L"EL", KVRX_CMD_MODAL, runEllipse, L"Draws an ellipse or an arc of one.",
     L"Specify axis endpoint of ellipse or [Arc/Center]:\nSpecify other endpoint of axis:\nSpecify distance "
     L"to other axis or [Rotation]:\nSpecify start angle or [Parameter]: (of an arc)\nSpecify end angle or "
     L"[Included angle]: (of an arc)"},
    {L"POINT", L"PO", KVRX_CMD_MODAL, runPoint, L"Draws a point.", L"Specify a point:"},
    {L"RAY", L"", KVRX_CMD_MODAL, runRay, L"Draws lines that have a start and no end.",
     L"Specify start point:\nSpecify through point: (empty: ends)"},
    {L"SPLINE", L"SPL", KVRX_CMD_MODAL, runSpline, L"Draws a smooth curve through points.",
     L"Specify first point:\nSpecify next point or [Close/Fit tolerance/Undo] <start tangent>: (empty: "
     L"ends)\nSpecify start tangent: (empty: free)\nSpecify end tangent: (empty: free)"},
    {L"XLINE", L"XL", KVRX_CMD_MODAL, runXline, L"Draws lines without ends.",
     L"Specify a point or [Hor/Ver/Ang/Bisect]:\nSpecify through point: (empty: ends)"},
};

}  // namespace

std::span<const KvCommandRow> curveRows() {
  return kRows;
}

}  // namespace kvcmd
