#include "host/geometry/matrix.h"

#include <algorithm>

#include "host/geometry/line.h"

KvGeMatrix3d operator*(const KvGeMatrix3d& a, const KvGeMatrix3d& b) {
  KvGeMatrix3d product;
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column) {
      double sum = 0;
      for (int k = 0; k < 4; ++k) sum += a.entry[row][k] * b.entry[k][column];
      product.entry[row][column] = sum;
    }
  return product;
}

KvGePoint3d operator*(const KvGeMatrix3d& m, const KvGePoint3d& p) {
  const auto& e = m.entry;
  return {e[0][0] * p.x + e[0][1] * p.y + e[0][2] * p.z + e[0][3],
          e[1][0] * p.x + e[1][1] * p.y + e[1][2] * p.z + e[1][3],
          e[2][0] * p.x + e[2][1] * p.y + e[2][2] * p.z + e[2][3]};
}

KvGeVector3d operator*(const KvGeMatrix3d& m, const KvGeVector3d& v) {
  const auto& e = m.entry;
  return {e[0][0] * v.x + e[0][1] * v.y + e[0][2] * v.z, e[1][0] * v.x + e[1][1] * v.y + e[1][2] * v.z,
          e[2][0] * v.x + e[2][1] * v.y + e[2][2] * v.z};
}

double KvGeMatrix3d::det() const {
  return column(0).crossProduct(column(1)).dotProduct(column(2));
}

bool KvGeMatrix3d::isSingular(const KvGeTol& tol) const {
  // Measured against the axes' images, so that a small drawing scale isn't taken for a flat map.
  const double size = column(0).length() * column(1).length() * column(2).length();
  return size == 0 || std::fabs(det()) <= tol.equalVector() * size;
}

KvGeMatrix3d KvGeMatrix3d::inverse(const KvGeTol& tol) const {
  if (isSingular(tol)) return KvGeMatrix3d();
  const double scaleOfAll = 1 / det();
  const KvGeVector3d x = column(0), y = column(1), z = column(2);
  const KvGeVector3d rows[3] = {y.crossProduct(z) * scaleOfAll, z.crossProduct(x) * scaleOfAll,
                                x.crossProduct(y) * scaleOfAll};
  const KvGeVector3d shift = translation();
  KvGeMatrix3d result;
  for (int i = 0; i < 3; ++i) {
    result.entry[i][0] = rows[i].x;
    result.entry[i][1] = rows[i].y;
    result.entry[i][2] = rows[i].z;
    result.entry[i][3] = -rows[i].dotProduct(shift);
  }
  return result;
}

bool KvGeMatrix3d::isEqualTo(const KvGeMatrix3d& other, const KvGeTol& tol) const {
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col)
      if (std::fabs(entry[row][col] - other.entry[row][col]) > tol.equalVector()) return false;
  return true;
}

KvGeMatrix3d& KvGeMatrix3d::setTranslation(const KvGeVector3d& v) {
  entry[0][3] = v.x;
  entry[1][3] = v.y;
  entry[2][3] = v.z;
  return *this;
}

KvGeMatrix3d& KvGeMatrix3d::setCoordSystem(const KvGePoint3d& origin, const KvGeVector3d& x,
                                           const KvGeVector3d& y, const KvGeVector3d& z) {
  const KvGeVector3d columns[4] = {x, y, z, origin.asVector()};
  for (int i = 0; i < 4; ++i) {
    entry[0][i] = columns[i].x;
    entry[1][i] = columns[i].y;
    entry[2][i] = columns[i].z;
    entry[3][i] = i == 3 ? 1 : 0;
  }
  return *this;
}

void KvGeMatrix3d::getCoordSystem(KvGePoint3d& origin, KvGeVector3d& x, KvGeVector3d& y,
                                  KvGeVector3d& z) const {
  origin = KvGePoint3d::kOrigin + translation();
  x = column(0);
  y = column(1);
  z = column(2);
}

KvGeMatrix3d& KvGeMatrix3d::setToTranslation(const KvGeVector3d& v) {
  setToIdentity();
  return setTranslation(v);
}

KvGeMatrix3d& KvGeMatrix3d::setToRotation(double angle, const KvGeVector3d& axis, const KvGePoint3d& center) {
  const KvGeVector3d u = axis.normal();
  const auto [s, c] = kvge::sinCos(angle);
  const double k = 1 - c;
  const KvGeVector3d x(c + u.x * u.x * k, u.y * u.x * k + u.z * s, u.z * u.x * k - u.y * s);
  const KvGeVector3d y(u.x * u.y * k - u.z * s, c + u.y * u.y * k, u.z * u.y * k + u.x * s);
  const KvGeVector3d z(u.x * u.z * k + u.y * s, u.y * u.z * k - u.x * s, c + u.z * u.z * k);
  setCoordSystem(KvGePoint3d::kOrigin, x, y, z);
  return setTranslation(center.asVector() - *this * center.asVector());
}

KvGeMatrix3d& KvGeMatrix3d::setToScaling(double factor, const KvGePoint3d& center) {
  setCoordSystem(KvGePoint3d::kOrigin + center.asVector() * (1 - factor), {factor, 0, 0}, {0, factor, 0},
                 {0, 0, factor});
  return *this;
}

KvGeMatrix3d& KvGeMatrix3d::setToMirroring(const KvGePoint3d& point) {
  return setToScaling(-1, point);
}

KvGeMatrix3d& KvGeMatrix3d::setToMirroring(const KvGeLine3d& line) {
  return setToRotation(kvge::kPi, line.direction(), line.pointOnLine());
}

KvGeMatrix3d& KvGeMatrix3d::setToMirroring(const KvGePlane& plane) {
  const KvGeVector3d n = plane.normal();
  const auto mirrored = [&](const KvGeVector3d& v) { return v - n * (2 * v.dotProduct(n)); };
  const KvGeVector3d foot = n * plane.pointOnPlane().asVector().dotProduct(n);
  return setCoordSystem(KvGePoint3d::kOrigin + foot * 2, mirrored(KvGeVector3d::kXAxis),
                        mirrored(KvGeVector3d::kYAxis), mirrored(KvGeVector3d::kZAxis));
}

KvGeMatrix3d& KvGeMatrix3d::setToPlaneToWorld(const KvGeVector3d& normal) {
  const KvGeVector3d z = normal.normal(), x = z.perpVector(), y = z.crossProduct(x).normal();
  return setCoordSystem(KvGePoint3d::kOrigin, x, y, z);
}

KvGeMatrix3d& KvGeMatrix3d::setToWorldToPlane(const KvGeVector3d& normal) {
  setToPlaneToWorld(normal);
  for (int row = 0; row < 3; ++row)
    for (int col = 0; col < row; ++col) std::swap(entry[row][col], entry[col][row]);
  return *this;
}

KvGeMatrix3d& KvGeMatrix3d::setToProjection(const KvGePlane& plane, const KvGeVector3d& direction) {
  const KvGeVector3d n = plane.normal();
  const double along = direction.dotProduct(n);
  if (std::fabs(along) <= KvGeContext::gTol.equalVector() * direction.length()) return setToIdentity();
  const KvGeVector3d step = direction / along;
  const auto projected = [&](const KvGeVector3d& v) { return v - step * v.dotProduct(n); };
  const KvGeVector3d origin = step * plane.pointOnPlane().asVector().dotProduct(n);
  return setCoordSystem(KvGePoint3d::kOrigin + origin, projected(KvGeVector3d::kXAxis),
                        projected(KvGeVector3d::kYAxis), projected(KvGeVector3d::kZAxis));
}

double KvGeMatrix3d::scale() const {
  return std::max({column(0).length(), column(1).length(), column(2).length()});
}

bool KvGeMatrix3d::isUniScaledOrtho(const KvGeTol& tol) const {
  const double a = column(0).length(), b = column(1).length(), c = column(2).length();
  const double largest = std::max({a, b, c}), allowed = tol.equalVector() * largest;
  if (largest == 0 || std::fabs(a - b) > allowed || std::fabs(a - c) > allowed) return false;
  return column(0).isPerpendicularTo(column(1), tol) && column(0).isPerpendicularTo(column(2), tol) &&
         column(1).isPerpendicularTo(column(2), tol);
}
