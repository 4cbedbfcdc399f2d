#include <algorithm>

#include "host/geometry/line.h"
#include "host/geometry/matrix.h"
#include "host/geometry/point.h"

namespace {

/// Below this in X and Y a normal counts as upright: the rule of drawing files for the axes of a plane.
constexpr double kArbitraryAxisLimit = 1.0 / 64;

}  // namespace

bool KvGeVector3d::isParallelTo(const KvGeVector3d& v, const KvGeTol& tol) const {
  const KvGeVector3d a = normal(tol), b = v.normal(tol);
  if (isZeroLength(tol) || v.isZeroLength(tol)) return false;
  return a.crossProduct(b).length() <= tol.equalVector();
}

bool KvGeVector3d::isCodirectionalTo(const KvGeVector3d& v, const KvGeTol& tol) const {
  return dotProduct(v) > 0 && isParallelTo(v, tol);
}

bool KvGeVector3d::isPerpendicularTo(const KvGeVector3d& v, const KvGeTol& tol) const {
  if (isZeroLength(tol) || v.isZeroLength(tol)) return false;
  return std::fabs(normal(tol).dotProduct(v.normal(tol))) <= tol.equalVector();
}

KvGeVector3d KvGeVector3d::normal(const KvGeTol& tol) const {
  const double l = length();
  return l <= tol.equalVector() ? *this : KvGeVector3d(x / l, y / l, z / l);
}

KvGeVector3d KvGeVector3d::perpVector() const {
  const bool isUpright = std::fabs(x) < kArbitraryAxisLimit && std::fabs(y) < kArbitraryAxisLimit;
  return (isUpright ? kYAxis : kZAxis).crossProduct(*this).normal();
}

KvGeVector3d& KvGeVector3d::rotateBy(double angle, const KvGeVector3d& axis) {
  return *this = KvGeMatrix3d::rotation(angle, axis) * *this;
}

KvGeVector3d& KvGeVector3d::transformBy(const KvGeMatrix3d& matrix) {
  return *this = matrix * *this;
}

double KvGeVector3d::angleTo(const KvGeVector3d& v) const {
  return std::atan2(crossProduct(v).length(), dotProduct(v));
}

double KvGeVector3d::angleTo(const KvGeVector3d& v, const KvGeVector3d& reference) const {
  const double angle = angleTo(v);
  return crossProduct(v).dotProduct(reference) < 0 ? kvge::normalizedAngle(kvge::kTwoPi - angle) : angle;
}

KvGePoint3d& KvGePoint3d::transformBy(const KvGeMatrix3d& matrix) {
  return *this = matrix * *this;
}

KvGePoint3d& KvGePoint3d::rotateBy(double angle, const KvGeVector3d& axis, const KvGePoint3d& center) {
  return transformBy(KvGeMatrix3d::rotation(angle, axis, center));
}

bool KvGeLine3d::intersectWith(const KvGeLine3d& other, KvGePoint3d& point, const KvGeTol& tol) const {
  const KvGeVector3d across = direction_.crossProduct(other.direction_);
  if (across.length() <= tol.equalVector()) return false;
  const double t =
      (other.point_ - point_).crossProduct(other.direction_).dotProduct(across) / across.lengthSqrd();
  point = point_ + direction_ * t;
  return other.isOn(point, tol);
}

double kvutAngle(const double* from, const double* to) {
  return KvGeVector2d(to[0] - from[0], to[1] - from[1]).angle();
}

void kvutPolar(const double* point, double angle, double distance, double* result) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  const double z = point[2];
  result[0] = point[0] + distance * cosine;
  result[1] = point[1] + distance * sine;
  result[2] = z;
}

double kvutDistance(const double* from, const double* to) {
  return std::hypot(to[0] - from[0], to[1] - from[1], to[2] - from[2]);
}

int kvdbInters(const double* p1, const double* p2, const double* p3, const double* p4, int limited,
               double* result) {
  constexpr int kNormal = 5100, kError = -5001;
  const KvGeVector2d a(p2[0] - p1[0], p2[1] - p1[1]), b(p4[0] - p3[0], p4[1] - p3[1]),
      between(p3[0] - p1[0], p3[1] - p1[1]);
  const double across = a.crossProduct(b);
  if (std::fabs(across) <= KvGeContext::gTol.equalVector() * a.length() * b.length()) return kError;
  const double s = between.crossProduct(b) / across, t = between.crossProduct(a) / across;
  const double slackA = KvGeContext::gTol.equalPoint() / a.length(),
               slackB = KvGeContext::gTol.equalPoint() / b.length();
  if (limited && (s < -slackA || s > 1 + slackA || t < -slackB || t > 1 + slackB)) return kError;
  result[0] = p1[0] + a.x * s;
  result[1] = p1[1] + a.y * s;
  result[2] = p1[2] + (p2[2] - p1[2]) * s;
  return kNormal;
}
