#pragma once
// Points and vectors in the plane and in space.
#include <cmath>

#include "host/geometry/tolerance.h"

class KvGeMatrix3d;

class KvGeVector2d {
 public:
  double x = 0, y = 0;
  constexpr KvGeVector2d() = default;
  constexpr KvGeVector2d(double xx, double yy) : x(xx), y(yy) {}
  static const KvGeVector2d kIdentity, kXAxis, kYAxis;

  constexpr double dotProduct(KvGeVector2d v) const { return x * v.x + y * v.y; }
  constexpr double crossProduct(KvGeVector2d v) const { return x * v.y - y * v.x; }
  double length() const { return std::hypot(x, y); }
  constexpr double lengthSqrd() const { return x * x + y * y; }
  /// Direction from the X axis, 0 to 2 pi; 0 for the zero vector.
  double angle() const { return x == 0 && y == 0 ? 0 : kvge::normalizedAngle(std::atan2(y, x)); }
  /// 0 to pi.
  double angleTo(KvGeVector2d v) const { return std::fabs(std::atan2(crossProduct(v), dotProduct(v))); }
  /// Length 1; a vector not longer than the tolerance stays as it is.
  KvGeVector2d normal(const KvGeTol& tol = KvGeContext::gTol) const {
    const double l = length();
    return l <= tol.equalVector() ? *this : KvGeVector2d(x / l, y / l);
  }
  /// Turned by 90 degrees, counter-clockwise.
  constexpr KvGeVector2d perpVector() const { return {-y, x}; }

  friend constexpr KvGeVector2d operator+(KvGeVector2d a, KvGeVector2d b) { return {a.x + b.x, a.y + b.y}; }
  friend constexpr KvGeVector2d operator-(KvGeVector2d a, KvGeVector2d b) { return {a.x - b.x, a.y - b.y}; }
  friend constexpr KvGeVector2d operator-(KvGeVector2d a) { return {-a.x, -a.y}; }
  friend constexpr KvGeVector2d operator*(KvGeVector2d a, double s) { return {a.x * s, a.y * s}; }
  friend constexpr KvGeVector2d operator*(double s, KvGeVector2d a) { return {a.x * s, a.y * s}; }
  friend constexpr KvGeVector2d operator/(KvGeVector2d a, double s) { return {a.x / s, a.y / s}; }
  friend constexpr bool operator==(const KvGeVector2d&, const KvGeVector2d&) = default;
};

inline constexpr KvGeVector2d KvGeVector2d::kIdentity{0, 0};
inline constexpr KvGeVector2d KvGeVector2d::kXAxis{1, 0};
inline constexpr KvGeVector2d KvGeVector2d::kYAxis{0, 1};

class KvGePoint2d {
 public:
  double x = 0, y = 0;
  constexpr KvGePoint2d() = default;
  constexpr KvGePoint2d(double xx, double yy) : x(xx), y(yy) {}
  static const KvGePoint2d kOrigin;

  constexpr KvGeVector2d asVector() const { return {x, y}; }
  double distanceTo(KvGePoint2d p) const { return std::hypot(p.x - x, p.y - y); }
  bool isEqualTo(KvGePoint2d p, const KvGeTol& tol = KvGeContext::gTol) const {
    return distanceTo(p) <= tol.equalPoint();
  }

  friend constexpr KvGePoint2d operator+(KvGePoint2d p, KvGeVector2d v) { return {p.x + v.x, p.y + v.y}; }
  friend constexpr KvGePoint2d operator-(KvGePoint2d p, KvGeVector2d v) { return {p.x - v.x, p.y - v.y}; }
  friend constexpr KvGeVector2d operator-(KvGePoint2d a, KvGePoint2d b) { return {a.x - b.x, a.y - b.y}; }
  friend constexpr bool operator==(const KvGePoint2d&, const KvGePoint2d&) = default;
};

inline constexpr KvGePoint2d KvGePoint2d::kOrigin{0, 0};

class KvGeVector3d {
 public:
  double x = 0, y = 0, z = 0;
  constexpr KvGeVector3d() = default;
  constexpr KvGeVector3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
  static const KvGeVector3d kIdentity, kXAxis, kYAxis, kZAxis;

  constexpr double dotProduct(const KvGeVector3d& v) const { return x * v.x + y * v.y + z * v.z; }
  constexpr KvGeVector3d crossProduct(const KvGeVector3d& v) const {
    return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
  }
  double length() const { return std::hypot(x, y, z); }
  constexpr double lengthSqrd() const { return x * x + y * y + z * z; }
  bool isZeroLength(const KvGeTol& tol = KvGeContext::gTol) const { return length() <= tol.equalVector(); }
  bool isUnitLength(const KvGeTol& tol = KvGeContext::gTol) const {
    return std::fabs(length() - 1) <= tol.equalVector();
  }
  bool isEqualTo(const KvGeVector3d& v, const KvGeTol& tol = KvGeContext::gTol) const {
    return KvGeVector3d(x - v.x, y - v.y, z - v.z).length() <= tol.equalVector();
  }
  /// Along one line, whichever way. The zero vector is parallel to nothing.
  bool isParallelTo(const KvGeVector3d& v, const KvGeTol& tol = KvGeContext::gTol) const;
  /// Along one line and the same way.
  bool isCodirectionalTo(const KvGeVector3d& v, const KvGeTol& tol = KvGeContext::gTol) const;
  bool isPerpendicularTo(const KvGeVector3d& v, const KvGeTol& tol = KvGeContext::gTol) const;

  /// Length 1; a vector not longer than the tolerance stays as it is.
  KvGeVector3d normal(const KvGeTol& tol = KvGeContext::gTol) const;
  KvGeVector3d& normalize(const KvGeTol& tol = KvGeContext::gTol) { return *this = normal(tol); }
  KvGeVector3d& negate() { return *this = {-x, -y, -z}; }
  /// Any unit vector at right angles: the X axis of the plane with this normal by the arbitrary-axis rule of
  /// drawing files.
  KvGeVector3d perpVector() const;
  /// Turned about an axis, right-handed.
  KvGeVector3d& rotateBy(double angle, const KvGeVector3d& axis);
  KvGeVector3d& transformBy(const KvGeMatrix3d& matrix);
  /// 0 to pi.
  double angleTo(const KvGeVector3d& v) const;
  /// 0 to 2 pi, counter-clockwise as seen against `reference`.
  double angleTo(const KvGeVector3d& v, const KvGeVector3d& reference) const;

  friend constexpr KvGeVector3d operator+(const KvGeVector3d& a, const KvGeVector3d& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend constexpr KvGeVector3d operator-(const KvGeVector3d& a, const KvGeVector3d& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend constexpr KvGeVector3d operator-(const KvGeVector3d& a) { return {-a.x, -a.y, -a.z}; }
  friend constexpr KvGeVector3d operator*(const KvGeVector3d& a, double s) {
    return {a.x * s, a.y * s, a.z * s};
  }
  friend constexpr KvGeVector3d operator*(double s, const KvGeVector3d& a) { return a * s; }
  friend constexpr KvGeVector3d operator/(const KvGeVector3d& a, double s) {
    return {a.x / s, a.y / s, a.z / s};
  }
  friend KvGeVector3d operator*(const KvGeMatrix3d& m, const KvGeVector3d& v);
  friend constexpr bool operator==(const KvGeVector3d&, const KvGeVector3d&) = default;
};

inline constexpr KvGeVector3d KvGeVector3d::kIdentity{0, 0, 0};
inline constexpr KvGeVector3d KvGeVector3d::kXAxis{1, 0, 0};
inline constexpr KvGeVector3d KvGeVector3d::kYAxis{0, 1, 0};
inline constexpr KvGeVector3d KvGeVector3d::kZAxis{0, 0, 1};

class KvGePoint3d {
 public:
  double x = 0, y = 0, z = 0;
  constexpr KvGePoint3d() = default;
  constexpr KvGePoint3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
  static const KvGePoint3d kOrigin;

  constexpr KvGeVector3d asVector() const { return {x, y, z}; }
  double distanceTo(const KvGePoint3d& p) const { return std::hypot(p.x - x, p.y - y, p.z - z); }
  bool isEqualTo(const KvGePoint3d& p, const KvGeTol& tol = KvGeContext::gTol) const {
    return distanceTo(p) <= tol.equalPoint();
  }
  KvGePoint3d& transformBy(const KvGeMatrix3d& matrix);
  KvGePoint3d& rotateBy(double angle, const KvGeVector3d& axis,
                        const KvGePoint3d& center = KvGePoint3d::kOrigin);

  friend constexpr KvGePoint3d operator+(const KvGePoint3d& p, const KvGeVector3d& v) {
    return {p.x + v.x, p.y + v.y, p.z + v.z};
  }
  friend constexpr KvGePoint3d operator-(const KvGePoint3d& p, const KvGeVector3d& v) {
    return {p.x - v.x, p.y - v.y, p.z - v.z};
  }
  friend constexpr KvGeVector3d operator-(const KvGePoint3d& a, const KvGePoint3d& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend KvGePoint3d operator*(const KvGeMatrix3d& m, const KvGePoint3d& p);
  KvGePoint3d& operator+=(const KvGeVector3d& v) { return *this = *this + v; }
  KvGePoint3d& operator-=(const KvGeVector3d& v) { return *this = *this - v; }
  friend constexpr bool operator==(const KvGePoint3d&, const KvGePoint3d&) = default;
};

inline constexpr KvGePoint3d KvGePoint3d::kOrigin{0, 0, 0};

namespace kvge {

/// Half-way between two points.
constexpr KvGePoint3d midpoint(const KvGePoint3d& a, const KvGePoint3d& b) {
  return {a.x + (b.x - a.x) / 2, a.y + (b.y - a.y) / 2, a.z + (b.z - a.z) / 2};
}
constexpr KvGePoint2d planar(const KvGePoint3d& p) {
  return {p.x, p.y};
}
constexpr KvGePoint3d spatial(KvGePoint2d p, double z = 0) {
  return {p.x, p.y, z};
}

}  // namespace kvge
