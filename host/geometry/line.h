#pragma once
// Planes and endless lines in space.
#include "host/geometry/curve.h"

/// A plane: a point and a unit normal.
class KvGePlane {
 public:
  /// The world's XY plane.
  KvGePlane() = default;
  KvGePlane(const KvGePoint3d& point, const KvGeVector3d& normal) : point_(point), normal_(normal.normal()) {}
  /// Through three points; points in one line give a normal of length 0.
  KvGePlane(const KvGePoint3d& a, const KvGePoint3d& b, const KvGePoint3d& c)
      : point_(a), normal_((b - a).crossProduct(c - a).normal()) {}

  const KvGePoint3d& pointOnPlane() const { return point_; }
  const KvGeVector3d& normal() const { return normal_; }
  /// Positive on the normal's side.
  double signedDistanceTo(const KvGePoint3d& p) const { return (p - point_).dotProduct(normal_); }
  bool isOn(const KvGePoint3d& p, const KvGeTol& tol = KvGeContext::gTol) const {
    return std::fabs(signedDistanceTo(p)) <= tol.equalPoint();
  }
  KvGePoint3d closestPointTo(const KvGePoint3d& p) const { return p - normal_ * signedDistanceTo(p); }
  static const KvGePlane kXYPlane;

 private:
  KvGePoint3d point_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

inline const KvGePlane KvGePlane::kXYPlane{};

/// An endless line: a point and a direction of length 1. Its parameter is the distance from the point.
class KvGeLine3d : public KvGeCurve3d {
 public:
  /// The X axis.
  KvGeLine3d() = default;
  KvGeLine3d(const KvGePoint3d& point, const KvGeVector3d& direction)
      : point_(point), direction_(direction.normal()) {}
  KvGeLine3d(const KvGePoint3d& a, const KvGePoint3d& b) : point_(a), direction_((b - a).normal()) {}

  const KvGePoint3d& pointOnLine() const { return point_; }
  const KvGeVector3d& direction() const { return direction_; }
  KvGePoint3d closestPointTo(const KvGePoint3d& p) const {
    return point_ + direction_ * (p - point_).dotProduct(direction_);
  }
  double distanceTo(const KvGePoint3d& p) const { return closestPointTo(p).distanceTo(p); }
  bool isOn(const KvGePoint3d& p, const KvGeTol& tol = KvGeContext::gTol) const {
    return distanceTo(p) <= tol.equalPoint();
  }
  bool isParallelTo(const KvGeLine3d& other, const KvGeTol& tol = KvGeContext::gTol) const {
    return direction_.isParallelTo(other.direction_, tol);
  }
  /// False for parallel lines and for lines that pass one another farther than the tolerance.
  bool intersectWith(const KvGeLine3d& other, KvGePoint3d& point,
                     const KvGeTol& tol = KvGeContext::gTol) const;

  Kind kind() const override { return kLine; }
  Ptr clone() const override { return std::make_unique<KvGeLine3d>(*this); }
  double startParam() const override { return -KvGeBox3d::kFar; }
  double endParam() const override { return KvGeBox3d::kFar; }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override { return std::make_unique<KvGeLine3d>(point_, -direction_); }
  Ptr transformed(const KvGeMatrix3d& m) const override {
    return std::make_unique<KvGeLine3d>(m * point_, m * direction_);
  }
  int spanCount() const override { return 1; }
  kvge::Span span(int) const override;
  int spanIndexAt(double) const override { return 0; }

 private:
  KvGePoint3d point_;
  KvGeVector3d direction_ = KvGeVector3d::kXAxis;
};

namespace KvGe {
/// Where a point lies to a closed outline.
enum PointContainment { kInside = 0, kOutside = 1, kOnBoundary = 2 };
}  // namespace KvGe

/// Bearing from one point to another in the XY plane, 0 to 2 pi; 0 for equal points.
double kvutAngle(const double* from, const double* to);
/// The point at a bearing and distance in the XY plane; Z is kept.
void kvutPolar(const double* point, double angle, double distance, double* result);
/// Distance in space.
double kvutDistance(const double* from, const double* to);
/// Crossing of the lines through p1, p2 and p3, p4, in the plane of their X and Y, Z from the first line.
/// With `limited` non-zero it has to lie on both segments. RTNORM, or RTERROR (-5001) for parallel lines or a
/// miss.
int kvdbInters(const double* p1, const double* p2, const double* p3, const double* p4, int limited,
               double* result);
