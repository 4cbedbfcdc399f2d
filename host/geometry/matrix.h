#pragma once
// Affine maps of space: points are columns, the translation stands in the fourth column.
#include "host/geometry/point.h"

class KvGePlane;
class KvGeLine3d;

class KvGeMatrix3d {
 public:
  double entry[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

  static const KvGeMatrix3d kIdentity;

  KvGeMatrix3d& setToIdentity() { return *this = KvGeMatrix3d(); }
  /// First the right one, then the left one.
  friend KvGeMatrix3d operator*(const KvGeMatrix3d& a, const KvGeMatrix3d& b);
  KvGeMatrix3d& operator*=(const KvGeMatrix3d& b) { return *this = *this * b; }
  KvGeMatrix3d& preMultBy(const KvGeMatrix3d& left) { return *this = left * *this; }
  KvGeMatrix3d& postMultBy(const KvGeMatrix3d& right) { return *this = *this * right; }

  bool isSingular(const KvGeTol& tol = KvGeContext::gTol) const;
  /// The identity for a singular matrix.
  KvGeMatrix3d inverse(const KvGeTol& tol = KvGeContext::gTol) const;
  KvGeMatrix3d& invert() { return *this = inverse(); }
  double det() const;
  bool isEqualTo(const KvGeMatrix3d& other, const KvGeTol& tol = KvGeContext::gTol) const;

  KvGeVector3d translation() const { return {entry[0][3], entry[1][3], entry[2][3]}; }
  KvGeMatrix3d& setTranslation(const KvGeVector3d& v);
  KvGeVector3d column(int index) const { return {entry[0][index], entry[1][index], entry[2][index]}; }

  /// Columns: the images of the axes and of the origin.
  KvGeMatrix3d& setCoordSystem(const KvGePoint3d& origin, const KvGeVector3d& x, const KvGeVector3d& y,
                               const KvGeVector3d& z);
  void getCoordSystem(KvGePoint3d& origin, KvGeVector3d& x, KvGeVector3d& y, KvGeVector3d& z) const;

  KvGeMatrix3d& setToTranslation(const KvGeVector3d& v);
  KvGeMatrix3d& setToRotation(double angle, const KvGeVector3d& axis,
                              const KvGePoint3d& center = KvGePoint3d::kOrigin);
  KvGeMatrix3d& setToScaling(double factor, const KvGePoint3d& center = KvGePoint3d::kOrigin);
  KvGeMatrix3d& setToMirroring(const KvGePoint3d& point);
  KvGeMatrix3d& setToMirroring(const KvGeLine3d& line);
  KvGeMatrix3d& setToMirroring(const KvGePlane& plane);
  /// From world coordinates into those of the plane with this normal (arbitrary-axis rule of drawing files),
  /// and back.
  KvGeMatrix3d& setToWorldToPlane(const KvGeVector3d& normal);
  KvGeMatrix3d& setToPlaneToWorld(const KvGeVector3d& normal);
  /// Along `direction` onto the plane.
  KvGeMatrix3d& setToProjection(const KvGePlane& plane, const KvGeVector3d& direction);

  static KvGeMatrix3d translation(const KvGeVector3d& v) { return KvGeMatrix3d().setToTranslation(v); }
  static KvGeMatrix3d rotation(double angle, const KvGeVector3d& axis,
                               const KvGePoint3d& center = KvGePoint3d::kOrigin) {
    return KvGeMatrix3d().setToRotation(angle, axis, center);
  }
  static KvGeMatrix3d scaling(double factor, const KvGePoint3d& center = KvGePoint3d::kOrigin) {
    return KvGeMatrix3d().setToScaling(factor, center);
  }
  static KvGeMatrix3d worldToPlane(const KvGeVector3d& normal) {
    return KvGeMatrix3d().setToWorldToPlane(normal);
  }
  static KvGeMatrix3d planeToWorld(const KvGeVector3d& normal) {
    return KvGeMatrix3d().setToPlaneToWorld(normal);
  }

  /// The largest of the lengths that the axes' images have.
  double scale() const;
  /// The axes' images have one length and stand at right angles.
  bool isUniScaledOrtho(const KvGeTol& tol = KvGeContext::gTol) const;
};

inline const KvGeMatrix3d KvGeMatrix3d::kIdentity{};
