#include "host/entities/curve.h"

#include <algorithm>
#include <cmath>

#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"
#include "host/geometry/polyline.h"
#include "host/geometry/region.h"

KVRX_DEFINE_ABSTRACT(KvDbCurve, KvDbEntity)

namespace {

bool isFinite(const KvGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Whether the parameter lies on the curve, within rounding; it is brought onto it. Whole circles and
/// ellipses take any angle.
bool takeParam(const KvGeCurve3d& curve, double& param) {
  if (!std::isfinite(param)) return false;
  const double start = curve.startParam(), end = curve.endParam();
  if (curve.isPeriodic()) {
    param = start + kvge::normalizedAngle(param - start);
    return true;
  }
  const double size =
      std::max({1.0, std::isfinite(start) ? std::fabs(start) : 0, std::isfinite(end) ? std::fabs(end) : 0});
  const double slack = KvGeContext::gTol.equalPoint() * size;
  if (param < start - slack || param > end + slack) return false;
  param = std::clamp(param, start, end);
  return true;
}

/// The length from the start; endless curves count from their base point.
double lengthTo(const KvGeCurve3d& curve, double param) {
  const double start = curve.startParam();
  if (std::isinf(start)) return param;
  return curve.length(start, param);
}

}  // namespace

bool KvDbCurve::isClosed() const {
  const auto curve = geCurve();
  return curve && curve->isClosed();
}

bool KvDbCurve::isPeriodic() const {
  const auto curve = geCurve();
  return curve && curve->isPeriodic();
}

bool KvDbCurve::isPlanar() const {
  const auto curve = geCurve();
  KvGePlane plane;
  return curve && curve->planarity(plane) != KvGeCurve3d::kNotPlanar;
}

Kvad::ErrorStatus KvDbCurve::getStartParam(double& param) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (std::isinf(curve->startParam())) return Kvad::eNotApplicable;
  param = curve->startParam();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getEndParam(double& param) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (std::isinf(curve->endParam())) return Kvad::eNotApplicable;
  param = curve->endParam();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getStartPoint(KvGePoint3d& point) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (std::isinf(curve->startParam())) return Kvad::eNotApplicable;
  point = curve->startPoint();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getEndPoint(KvGePoint3d& point) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (std::isinf(curve->endParam())) return Kvad::eNotApplicable;
  point = curve->endPoint();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getPointAtParam(double param, KvGePoint3d& point) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!takeParam(*curve, param)) return Kvad::eOutOfRange;
  point = param == curve->endParam() ? curve->endPoint() : curve->pointAtParam(param);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getParamAtPoint(const KvGePoint3d& point, double& param) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!isFinite(point)) return Kvad::eInvalidInput;
  // First as near as can be told, so that the ends don't draw in what lies beside them.
  if (curve->paramAtPoint(point, param)) return Kvad::eOk;
  const double nearest = curve->closestParamTo(point);
  if (!(curve->pointAtParam(nearest).distanceTo(point) <= kOnCurve)) return Kvad::eNotOnCurve;
  param = nearest;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getDistAtParam(double param, double& distance) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  // The end of a closed curve is its whole length, not nothing.
  if (param != curve->endParam() && !takeParam(*curve, param)) return Kvad::eOutOfRange;
  if (!std::isfinite(param)) return Kvad::eOutOfRange;
  distance = lengthTo(*curve, param);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getParamAtDist(double distance, double& param) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!std::isfinite(distance)) return Kvad::eInvalidInput;
  if (std::isinf(curve->startParam())) {
    param = distance;
    return Kvad::eOk;
  }
  const double slack = KvGeContext::gTol.equalPoint();
  if (distance < -slack) return Kvad::eOutOfRange;
  double found = 0;
  if (distance <= 0) {
    found = curve->startParam();
  } else if (!curve->paramAtLength(curve->startParam(), distance, found)) {
    if (!(distance <= curve->length() + slack)) return Kvad::eOutOfRange;
    found = curve->endParam();
  }
  param = found;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getDistAtPoint(const KvGePoint3d& point, double& distance) const {
  double param = 0;
  if (auto status = getParamAtPoint(point, param); status != Kvad::eOk) return status;
  return getDistAtParam(param, distance);
}

Kvad::ErrorStatus KvDbCurve::getPointAtDist(double distance, KvGePoint3d& point) const {
  double param = 0;
  if (auto status = getParamAtDist(distance, param); status != Kvad::eOk) return status;
  return getPointAtParam(param, point);
}

Kvad::ErrorStatus KvDbCurve::getFirstDeriv(double param, KvGeVector3d& derivative) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!takeParam(*curve, param)) return Kvad::eOutOfRange;
  derivative = curve->firstDerivAtParam(param);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getFirstDeriv(const KvGePoint3d& point, KvGeVector3d& derivative) const {
  double param = 0;
  if (auto status = getParamAtPoint(point, param); status != Kvad::eOk) return status;
  return getFirstDeriv(param, derivative);
}

Kvad::ErrorStatus KvDbCurve::getSecondDeriv(double param, KvGeVector3d& derivative) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!takeParam(*curve, param)) return Kvad::eOutOfRange;
  derivative = curve->secondDerivAtParam(param);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getClosestPointTo(const KvGePoint3d& point, KvGePoint3d& closest,
                                               bool extend) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!isFinite(point)) return Kvad::eInvalidInput;
  closest = curve->closestPointTo(point, extend);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getClosestPointTo(const KvGePoint3d& point, const KvGeVector3d& normal,
                                               KvGePoint3d& closest, bool extend) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!isFinite(point) || normal.isZeroLength()) return Kvad::eInvalidInput;
  const KvGeMatrix3d flatten = KvGeMatrix3d().setToProjection(KvGePlane(point, normal), normal);
  double least = std::numeric_limits<double>::infinity(), best = curve->startParam();
  std::vector<double> poles;
  for (int i = 0; i < curve->spanCount(); ++i) {
    const kvge::Span own = extend ? curve->extendedSpan(i) : curve->span(i);
    poles.clear();
    poles.reserve(4 * (static_cast<std::size_t>(own.degree) + 1));
    const kvge::Span seen = kvge::transformed(own, flatten, poles);
    // A line that is seen as a point keeps no direction: its start stands for it.
    const double t = seen.isPoint() ? (std::isfinite(seen.low) ? seen.low : 0) : kvge::nearestOn(seen, point);
    const double distance = kvge::pointAt(seen, t).distanceTo(point);
    if (distance < least) least = distance, best = seen.toCurve(t);
  }
  closest = curve->pointAtParam(best);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::getSplitCurves(const KvGePoint3dArray& points, KvDbVoidPtrArray& pieces) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  KvArray<double> params;
  for (const KvGePoint3d& point : points) {
    double param = 0;
    if (isFinite(point) && getParamAtPoint(point, param) == Kvad::eOk) params.append(param);
  }
  return getSplitCurves(params, pieces);
}

Kvad::ErrorStatus KvDbCurve::getSplitCurves(const KvArray<double>& params, KvDbVoidPtrArray& pieces) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  std::vector<double> cuts;
  for (double param : params)
    if (takeParam(*curve, param)) cuts.push_back(param);
  std::vector<KvGeCurve3d::Ptr> parts;
  if (cuts.empty() || !curve->splitAtParams(cuts, parts)) return Kvad::eInvalidInput;
  // The cuts that were made, for pieces that carry more than their shape.
  std::vector<double> ends{curve->startParam()};
  std::sort(cuts.begin(), cuts.end());
  for (double cut : cuts)
    if (curve->length(ends.back(), cut) > KvGeContext::gTol.equalPoint()) ends.push_back(cut);
  if (ends.size() > parts.size()) ends.resize(parts.size());
  ends.push_back(curve->endParam());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const double from = ends[std::min(i, ends.size() - 2)], to = ends[std::min(i + 1, ends.size() - 1)];
    auto entity = pieceEntity(std::move(parts[i]), from, to);
    if (!entity) continue;
    entity->setPropertiesFrom(this);
    pieces.append(static_cast<KvDbEntity*>(entity.release()));
  }
  return Kvad::eOk;
}

std::unique_ptr<KvDbCurve> KvDbCurve::pieceEntity(std::unique_ptr<KvGeCurve3d> piece, double, double) const {
  return kvdbCurveOf(*piece, true);
}

Kvad::ErrorStatus KvDbCurve::getArea(double& area) const {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  if (!std::isfinite(curve->startParam()) || !std::isfinite(curve->endParam())) return Kvad::eNotApplicable;
  KvGePlane plane;
  const auto planarity = curve->planarity(plane);
  if (planarity == KvGeCurve3d::kNotPlanar) return Kvad::eNonPlanarEntity;
  if (planarity == KvGeCurve3d::kLinear) {
    area = 0;
    return Kvad::eOk;
  }
  KvGeRegion::Curves curves{curve.get()};
  const KvGeLineSeg3d closing(curve->endPoint(), curve->startPoint());
  if (!curve->isClosed()) curves.push_back(&closing);
  KvGeRegion region;
  if (KvGeRegion::createFromLoops(curves, region) != KvGeRegion::kOk) return Kvad::eSelfIntersecting;
  area = region.area();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCurve::reverseCurve() {
  return Kvad::eNotApplicable;
}

Kvad::ErrorStatus KvDbCurve::getGeomExtents(KvDbExtents& extents) const {
  const auto curve = geCurve();
  if (!curve || curve->spanCount() == 0) return Kvad::eInvalidExtents;
  const KvGeBox3d box = curve->boundBox();
  if (box.isEmpty() || !isFinite(box.low) || !isFinite(box.high)) return Kvad::eInvalidExtents;
  extents = KvDbExtents(box.low, box.high);
  return Kvad::eOk;
}

void KvDbCurve::getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const {
  if (auto curve = geCurve()) curves.push_back(std::move(curve));
}

Kvad::ErrorStatus KvDbCurve::explode(KvDbVoidPtrArray& parts) const {
  const auto curve = geCurve();
  if (!curve || (curve->kind() != KvGeCurve3d::kPolyline && curve->kind() != KvGeCurve3d::kSpacePolyline))
    return Kvad::eCannotExplodeEntity;
  const int before = parts.length();
  for (int i = 0; i < curve->spanCount(); ++i) {
    const kvge::Span span = curve->span(i);
    if (span.isPoint()) continue;
    std::unique_ptr<KvDbCurve> part;
    if (span.kind == kvge::SpanKind::kLine) {
      // The next vertex itself where there is one: an end that is computed is off by its rounding.
      const bool hasNext = i + 1 < curve->spanCount() || curve->isClosed();
      part = std::make_unique<KvDbLine>(
          kvge::startOf(span),
          hasNext ? kvge::startOf(curve->span((i + 1) % curve->spanCount())) : kvge::endOf(span));
    } else {
      const KvGeVector3d normal = span.u.crossProduct(span.v).normal();
      part = kvdbCurveOf(
          KvGeCircArc3d(span.origin, normal, span.u.normal(), span.radius, span.low, span.high), true);
    }
    part->setPropertiesFrom(this);
    parts.append(static_cast<KvDbEntity*>(part.release()));
  }
  return parts.length() > before ? Kvad::eOk : Kvad::eCannotExplodeEntity;
}

// --- Entities of curves
// --------------------------------------------------------------------------------------------------------

namespace {

std::unique_ptr<KvDbCurve> arcEntity(const KvGeCircArc3d& arc, bool wholeAsArc) {
  if (arc.isPeriodic() && !wholeAsArc)
    return std::make_unique<KvDbCircle>(arc.center(), arc.normal(), arc.radius());
  const KvGeVector3d normal = arc.normal();
  const double turn = normal.perpVector().angleTo(arc.refVec(), normal);
  return std::make_unique<KvDbArc>(arc.center(), normal, arc.radius(),
                                   kvge::normalizedAngle(turn + arc.startAngle()),
                                   kvge::normalizedAngle(turn + arc.endAngle()));
}

std::unique_ptr<KvDbCurve> polylineEntity(const KvGePolyline3d& curve) {
  auto polyline = std::make_unique<KvDbPolyline>();
  int index = 0;
  const auto& vertices = curve.vertices();
  const int spans = curve.spanCount();
  for (const auto& vertex : vertices) polyline->addVertexAt(index++, vertex.point, vertex.bulge);
  if (spans == index && index > 0) polyline->setClosed(true);
  polyline->setNormal(curve.normal());
  polyline->setElevation(curve.elevation());
  return polyline;
}

}  // namespace

std::unique_ptr<KvDbCurve> kvdbCurveOf(const KvGeCurve3d& curve, bool wholeAsArc) {
  if (curve.spanCount() == 0) return nullptr;
  switch (curve.kind()) {
    case KvGeCurve3d::kLineSeg:
      return std::make_unique<KvDbLine>(curve.startPoint(), curve.endPoint());
    case KvGeCurve3d::kRay: {
      auto ray = std::make_unique<KvDbRay>();
      ray->setBasePoint(static_cast<const KvGeRay3d&>(curve).basePoint());
      ray->setUnitDir(static_cast<const KvGeRay3d&>(curve).direction());
      return ray;
    }
    case KvGeCurve3d::kLine: {
      auto line = std::make_unique<KvDbXline>();
      line->setBasePoint(static_cast<const KvGeLine3d&>(curve).pointOnLine());
      line->setUnitDir(static_cast<const KvGeLine3d&>(curve).direction());
      return line;
    }
    case KvGeCurve3d::kCircArc:
      return arcEntity(static_cast<const KvGeCircArc3d&>(curve), wholeAsArc);
    case KvGeCurve3d::kEllipArc: {
      const auto& arc = static_cast<const KvGeEllipArc3d&>(curve);
      auto ellipse = std::make_unique<KvDbEllipse>();
      const double ratio = arc.minorAxis().length() / arc.majorAxis().length();
      if (ellipse->set(arc.center(), arc.normal(), arc.majorAxis(), ratio, arc.startParam(),
                       arc.endParam()) != Kvad::eOk)
        return nullptr;
      return ellipse;
    }
    case KvGeCurve3d::kNurb: {
      auto spline = std::make_unique<KvDbSpline>();
      spline->setNurb(static_cast<const KvGeNurbCurve3d&>(curve));
      return spline;
    }
    case KvGeCurve3d::kPolyline:
      return polylineEntity(static_cast<const KvGePolyline3d&>(curve));
    case KvGeCurve3d::kSpacePolyline: {
      const auto& points = static_cast<const KvGeSpacePolyline3d&>(curve).points();
      return std::make_unique<KvDb3dPolyline>(points, curve.spanCount() == static_cast<int>(points.size()));
    }
  }
  return nullptr;
}

void kvdbFlatten(const KvGeCurve3d& curve, const KvGiWorldDraw& draw, std::vector<KvGePoint3d>& points) {
  for (int i = 0; i < curve.spanCount(); ++i) {
    const kvge::Span span = curve.span(i);
    if (i == 0) points.push_back(kvge::startOf(span));
    if (span.kind == kvge::SpanKind::kLine) {
      points.push_back(kvge::endOf(span));
      continue;
    }
    // A chord over a step h lies h^2 |c''| / 8 from its curve: halve the step until that is small enough.
    constexpr int kLeast = 4, kMost = 2048;
    const double allowed = std::max(draw.deviation(kvge::startOf(span)), 1e-9);
    double bend = 0;
    for (int k = 0; k <= 8; ++k)
      bend = std::max(bend, kvge::jetAt(span, span.low + (span.high - span.low) * k / 8).second.length());
    const double width = span.high - span.low;
    const double wanted = std::ceil(width * std::sqrt(bend / (8 * allowed)));
    const int steps =
        std::isfinite(wanted) ? static_cast<int>(std::clamp<double>(wanted, kLeast, kMost)) : kMost;
    for (int k = 1; k <= steps; ++k) points.push_back(kvge::pointAt(span, span.low + width * k / steps));
  }
}

namespace {

/// A spline of whole cubic pieces, as lines and cubic curves; false when it isn't one.
bool cubicsOf(const KvGeCurve3d& curve, std::vector<KvGePoint3d>& poles,
              std::vector<unsigned char>& degrees) {
  if (curve.kind() != KvGeCurve3d::kNurb) return false;
  for (int i = 0; i < curve.spanCount(); ++i) {
    const kvge::Span span = curve.span(i);
    const bool isWhole = span.low == span.knotLow && span.high == span.knotHigh;
    if (span.kind != kvge::SpanKind::kBezier || (span.degree != 3 && span.degree != 1) || !isWhole)
      return false;
    for (int k = 0; k <= span.degree; ++k) {
      const double* pole = span.poles + 4 * k;
      if (std::fabs(pole[3] - 1) > 1e-12) return false;
      if (k > 0 || i == 0) poles.push_back({pole[0], pole[1], pole[2]});
    }
    degrees.push_back(static_cast<unsigned char>(span.degree));
  }
  return !degrees.empty();
}

}  // namespace

void kvdbDrawCurve(const KvGeCurve3d& curve, KvGiWorldDraw& draw) {
  std::vector<KvGePoint3d> points;
  std::vector<unsigned char> degrees;
  if (cubicsOf(curve, points, degrees)) {
    draw.geometry().segments(points.data(), degrees.data(), static_cast<int>(degrees.size()));
    return;
  }
  points.clear();
  kvdbFlatten(curve, draw, points);
  if (!points.empty()) draw.geometry().polyline(static_cast<int>(points.size()), points.data());
}
