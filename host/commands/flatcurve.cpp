#include "host/commands/internal/flatcurve.h"

#include "host/entities/curves.h"

namespace kvcmd {

KvGePoint2d FlatCurve::project(KvGePoint2d point) const {
  if (!isRound()) return start + direction() * (point - start).dotProduct(direction());
  const KvGeVector2d out = (point - center).normal();
  return center + (out.length() > 0 ? out : KvGeVector2d::kXAxis) * radius;
}

std::optional<FlatCurve> flatCurveOf(KvDbObjectId id) {
  constexpr double kLevel = 1e-9;
  FlatCurve curve;
  if (const auto* line = look<KvDbLine>(id)) {
    const KvGePoint3d from = toUser(line->startPoint()), to = toUser(line->endPoint());
    if (std::fabs(to.z - from.z) > kLevel * (1 + std::fabs(from.z)) || flatDistance(from, to) == 0)
      return std::nullopt;
    curve.start = kvge::planar(from);
    curve.end = kvge::planar(to);
    curve.height = from.z;
    return curve;
  }
  const auto takeRound = [&](const KvGeVector3d& normal, const KvGePoint3d& center, double radius) {
    const KvGePoint3d at = toUser(center);
    curve.center = kvge::planar(at);
    curve.radius = radius;
    curve.height = at.z;
    return std::fabs(std::fabs(normal.dotProduct(userNormal())) - 1) <= kLevel && radius > 0;
  };
  if (const auto* circle = look<KvDbCircle>(id)) {
    curve.kind = FlatCurve::Kind::Circle;
    if (takeRound(circle->normal(), circle->center(), circle->radius())) return curve;
  }
  if (const auto* arc = look<KvDbArc>(id)) {
    curve.kind = FlatCurve::Kind::Arc;
    curve.start = kvge::planar(toUser(arc->startPoint()));
    curve.end = kvge::planar(toUser(arc->endPoint()));
    if (arc->normal().dotProduct(userNormal()) < 0) std::swap(curve.start, curve.end);
    if (takeRound(arc->normal(), arc->center(), arc->radius())) return curve;
  }
  return std::nullopt;
}

FlatBase baseOf(const FlatCurve& curve) {
  if (curve.isRound()) return {true, curve.center, {}, curve.radius};
  return {false, curve.start, curve.direction(), 0};
}

std::optional<FlatBase> offsetBase(const FlatBase& base, double distance) {
  FlatBase moved = base;
  if (!base.isRound) {
    moved.point = base.point + base.direction.perpVector() * distance;
    return moved;
  }
  moved.radius += distance;
  if (!(moved.radius > 0)) return std::nullopt;
  return moved;
}

namespace {

std::vector<KvGePoint2d> lineWithCircle(const FlatBase& line, const FlatBase& circle) {
  const double along = (circle.point - line.point).dotProduct(line.direction);
  const KvGePoint2d foot = line.point + line.direction * along;
  const double gap = foot.distanceTo(circle.point);
  // A touch that rounding takes apart is one still.
  if (gap > circle.radius * (1 + kSmallestTurn)) return {};
  const double half = std::sqrt(std::max(0.0, circle.radius * circle.radius - gap * gap));
  return {foot - line.direction * half, foot + line.direction * half};
}

}  // namespace

std::vector<KvGePoint2d> meetings(const FlatBase& a, const FlatBase& b) {
  if (a.isRound != b.isRound) return a.isRound ? lineWithCircle(b, a) : lineWithCircle(a, b);
  if (!a.isRound) {
    const double turn = a.direction.crossProduct(b.direction);
    if (std::fabs(turn) < kSmallestTurn) return {};
    return {a.point + a.direction * ((b.point - a.point).crossProduct(b.direction) / turn)};
  }
  const KvGeVector2d between = b.point - a.point;
  const double distance = between.length();
  if (distance <= kSmallestTurn * (a.radius + b.radius)) return {};
  const double along = (distance * distance + a.radius * a.radius - b.radius * b.radius) / (2 * distance);
  const double square = a.radius * a.radius - along * along;
  if (square < -kSmallestTurn * a.radius * a.radius) return {};
  const double half = std::sqrt(std::max(0.0, square));
  const KvGeVector2d unit = between / distance;
  const KvGePoint2d foot = a.point + unit * along;
  return {foot + unit.perpVector() * half, foot - unit.perpVector() * half};
}

namespace {

double turnFrom(const FlatCurve& arc, KvGePoint2d from, KvGePoint2d to) {
  return kvge::normalizedAngle((to - arc.center).angle() - (from - arc.center).angle());
}

}  // namespace

void cutBack(KvDbObjectId id, const FlatCurve& curve, KvGePoint2d corner, KvGePoint2d keep) {
  const KvGePoint3d world = toWorld(kvge::spatial(corner, curve.height));
  if (curve.kind == FlatCurve::Kind::Line) {
    const KvGeVector2d towards = curve.project(keep) - corner;
    const bool keepsEnd = towards.dotProduct(curve.direction()) > 0;
    change<KvDbLine>(id,
                     [&](KvDbLine& line) { keepsEnd ? line.setStartPoint(world) : line.setEndPoint(world); });
    return;
  }
  if (curve.kind != FlatCurve::Kind::Arc) return;
  // What stays runs from the corner through the kept point to an end, without passing the corner again.
  const KvGePoint2d kept = curve.project(keep);
  const double toEnd = turnFrom(curve, curve.start, curve.end), toKept = turnFrom(curve, curve.start, kept);
  const double toCorner = turnFrom(curve, curve.start, corner);
  bool keepsStart = toKept < toCorner;
  if (toCorner > toEnd) {
    // Beyond the arc: the end that is nearer to the corner is drawn out.
    keepsStart = toCorner - toEnd < kvge::kTwoPi - toCorner;
  }
  change<KvDbArc>(id, [&](KvDbArc& arc) {
    const KvGeVector3d out = KvGeMatrix3d::worldToPlane(arc.normal()) * (world - arc.center());
    const double angle = KvGeVector2d(out.x, out.y).angle();
    const bool isTurned = arc.normal().dotProduct(userNormal()) < 0;
    keepsStart != isTurned ? arc.setEndAngle(angle) : arc.setStartAngle(angle);
  });
}

std::optional<Rounding> touchingBoth(const FlatCurve& a, KvGePoint2d pickA, const FlatCurve& b,
                                     KvGePoint2d pickB, double radius) {
  std::optional<Rounding> best;
  double least = INFINITY;
  for (double sideA : {radius, -radius})
    for (double sideB : {radius, -radius}) {
      const auto baseA = offsetBase(baseOf(a), sideA), baseB = offsetBase(baseOf(b), sideB);
      if (!baseA || !baseB) continue;
      for (KvGePoint2d center : meetings(*baseA, *baseB)) {
        const Rounding one{center, a.project(center), b.project(center)};
        const double away = one.first.distanceTo(pickA) + one.second.distanceTo(pickB);
        if (away >= least) continue;
        least = away;
        best = one;
      }
    }
  return best;
}

}  // namespace kvcmd
