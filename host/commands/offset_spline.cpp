#include <algorithm>
#include <cmath>

#include "host/commands/internal/offsetting.h"
#include "host/commands/internal/support.h"
#include "host/geometry/nurb.h"

namespace kvcmd {
namespace {

/// Exact points beside a curve.
struct Beside {
  std::vector<double> params;
  std::vector<KvGePoint3d> points;
  KvGeVector3d startTangent, endTangent;
};

/// Nothing where the curve has no direction, leaves the plane, or where the points run against it.
std::optional<Beside> pointsBeside(const KvDbCurve& curve, double leftwards,
                                   const std::vector<double>& params) {
  constexpr double kInPlane = 1e-9;
  const KvGeVector3d normal = userNormal();
  Beside made;
  made.params = params;
  KvGeVector3d before;
  for (double param : params) {
    KvGePoint3d point;
    KvGeVector3d tangent;
    if (curve.getPointAtParam(param, point) != Kvad::eOk ||
        curve.getFirstDeriv(param, tangent) != Kvad::eOk || tangent.isZeroLength())
      return std::nullopt;
    tangent = tangent.normal();
    if (std::fabs(tangent.dotProduct(normal)) > kInPlane) return std::nullopt;
    const KvGePoint3d aside = point + normal.crossProduct(tangent) * leftwards;
    if (!made.points.empty()) {
      const KvGeVector3d step = aside - made.points.back();
      if (!(step.dotProduct(tangent) > 0) || !(step.dotProduct(before) > 0)) return std::nullopt;
    } else {
      made.startTangent = tangent;
    }
    made.points.push_back(aside);
    made.endTangent = before = tangent;
  }
  return made;
}

/// The largest deviation from the distance in the middles between the points.
double deviation(const KvDbCurve& curve, const KvGeNurbCurve3d& spline, const Beside& beside,
                 double distance) {
  double worst = 0, along = spline.startParam();
  for (std::size_t i = 1; i < beside.points.size(); ++i) {
    // Chord lengths are the spline's parameter.
    const double chord = beside.points[i].distanceTo(beside.points[i - 1]);
    const KvGePoint3d middle = spline.pointAtParam(along + chord / 2);
    along += chord;
    KvGePoint3d nearest;
    if (curve.getClosestPointTo(middle, nearest) != Kvad::eOk) return INFINITY;
    worst = std::max(worst, std::fabs(nearest.distanceTo(middle) - distance));
  }
  return worst;
}

}  // namespace

std::unique_ptr<KvDbSpline> offsetAsSpline(const KvDbCurve& curve, double leftwards, double& tolerance) {
  double from = 0, to = 0;
  if (curve.getStartParam(from) != Kvad::eOk || curve.getEndParam(to) != Kvad::eOk || !(to > from))
    return nullptr;
  constexpr int kFewest = 32, kMost = 1024;
  for (int pieces = kFewest; pieces <= kMost; pieces *= 2) {
    std::vector<double> params;
    for (int i = 0; i <= pieces; ++i) params.push_back(i == pieces ? to : from + (to - from) * i / pieces);
    const auto beside = pointsBeside(curve, leftwards, params);
    if (!beside) return nullptr;
    const auto spline =
        KvGeNurbCurve3d::interpolate(beside->points, beside->startTangent, beside->endTangent);
    if (!spline) return nullptr;
    const double found = deviation(curve, *spline, *beside, std::fabs(leftwards));
    if (found > tolerance) continue;
    auto made = std::make_unique<KvDbSpline>();
    if (made->setNurb(*spline) != Kvad::eOk) return nullptr;
    tolerance = found;
    return made;
  }
  return nullptr;
}

}  // namespace kvcmd
