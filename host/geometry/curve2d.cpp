#include "host/geometry/curve2d.h"

#include "host/geometry/polyline.h"

namespace {

KvGeVector2d along(KvGeVector2d direction, double length) {
  const double size = direction.length();
  return size > 0 ? direction * (length / size) : KvGeVector2d();
}

KvGeVector3d raised(KvGeVector2d v) {
  return {v.x, v.y, 0};
}

}  // namespace

KvGeEllipArc2d::KvGeEllipArc2d(KvGePoint2d center, KvGeVector2d majorAxis, KvGeVector2d minorAxis,
                               double majorRadius, double minorRadius, double startAngle, double endAngle)
    : center_(center),
      major_(along(majorAxis, majorRadius)),
      minor_(along(minorAxis, minorRadius)),
      start_(startAngle),
      end_(kvge::endAfter(startAngle, endAngle)) {}

KvGePoint2d KvGeEllipArc2d::evalPoint(double t) const {
  const auto [sine, cosine] = kvge::sinCos(t);
  return center_ + (major_ * cosine + minor_ * sine);
}

KvGeCurve3d::Ptr KvGeEllipArc2d::spatial(double z) const {
  return std::make_unique<KvGeEllipArc3d>(kvge::spatial(center_, z), raised(major_), raised(minor_), start_,
                                          end_);
}

KvGeCircArc2d::KvGeCircArc2d(KvGePoint2d start, KvGePoint2d end, double bulge) {
  const kvge::BulgeArc arc = kvge::arcOfBulge(start, end, bulge);
  const bool isArc = arc.radius > 0;
  center_ = isArc ? arc.center : start;
  major_ = isArc ? start - arc.center : KvGeVector2d();
  minor_ = arc.sweep < 0 ? -major_.perpVector() : major_.perpVector();
  end_ = std::fabs(arc.sweep);
}

KvGeCurve3d::Ptr KvGeCircArc2d::spatial(double z) const {
  const KvGeVector3d normal = isClockWise() ? -KvGeVector3d::kZAxis : KvGeVector3d::kZAxis;
  return std::make_unique<KvGeCircArc3d>(kvge::spatial(center_, z), normal, raised(major_), radius(), start_,
                                         end_);
}

std::unique_ptr<KvGeNurbCurve2d> KvGeNurbCurve2d::create(int degree, std::vector<double> knots,
                                                         const std::vector<KvGePoint2d>& poles,
                                                         std::vector<double> weights) {
  std::vector<KvGePoint3d> row;
  for (const KvGePoint2d p : poles) row.push_back(kvge::spatial(p));
  const auto made = KvGeNurbCurve3d::create(degree, std::move(knots), std::move(row), std::move(weights));
  if (!made) return nullptr;
  auto curve = std::make_unique<KvGeNurbCurve2d>();
  curve->curve_ = *made;
  return curve;
}
