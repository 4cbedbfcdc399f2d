#pragma once
// Polylines: flat ones with bulges, and straight ones in space.
#include "host/geometry/curve.h"

namespace kvge {

/// The circle of a bulge (tangent of a quarter of the sweep; positive counter-clockwise).
struct BulgeArc {
  KvGePoint2d center;
  double radius = 0;      ///< positive
  double startAngle = 0;  ///< bearing of the start from the centre
  double sweep = 0;       ///< 4 atan(bulge), signed
};
/// A bulge of 0 or equal points give radius 0.
BulgeArc arcOfBulge(KvGePoint2d from, KvGePoint2d to, double bulge);
/// The bulge of an arc that sweeps this far.
inline double bulgeOfSweep(double sweep) {
  return std::tan(sweep / 4);
}

}  // namespace kvge

/// A flat polyline: vertices in the coordinates of its plane (arbitrary-axis rule of its normal), at an
/// elevation along the normal. A bulge belongs to the segment that leaves its vertex. A closed one has a
/// segment from the last vertex to the first.
class KvGePolyline3d : public KvGeCurve3d {
 public:
  struct Vertex {
    KvGePoint2d point;
    double bulge = 0;
  };
  KvGePolyline3d() = default;
  explicit KvGePolyline3d(std::vector<Vertex> vertices, bool isClosed = false, double elevation = 0,
                          const KvGeVector3d& normal = KvGeVector3d::kZAxis);

  const std::vector<Vertex>& vertices() const { return vertices_; }
  double elevation() const { return elevation_; }
  const KvGeVector3d& normal() const { return normal_; }
  bool hasBulges() const;

  Kind kind() const override { return kPolyline; }
  Ptr clone() const override { return std::make_unique<KvGePolyline3d>(*this); }
  double startParam() const override { return 0; }
  double endParam() const override { return spanCount(); }
  /// By its flag, or by equal ends.
  bool isClosed(const KvGeTol& tol = KvGeContext::gTol) const override {
    return isClosed_ || KvGeCurve3d::isClosed(tol);
  }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override;
  Ptr transformed(const KvGeMatrix3d& m) const override;
  int spanCount() const override;
  kvge::Span span(int index) const override;
  int spanIndexAt(double param) const override {
    return std::clamp(static_cast<int>(std::floor(param)), 0, std::max(0, spanCount() - 1));
  }

 private:
  KvGePoint3d inSpace(KvGePoint2d p) const {
    return KvGePoint3d::kOrigin + x_ * p.x + y_ * p.y + normal_ * elevation_;
  }
  Ptr asSpline(const KvGeMatrix3d& m) const;

  std::vector<Vertex> vertices_;
  bool isClosed_ = false;
  double elevation_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis, x_ = KvGeVector3d::kXAxis, y_ = KvGeVector3d::kYAxis;
};

/// Straight segments between points in space.
class KvGeSpacePolyline3d : public KvGeCurve3d {
 public:
  KvGeSpacePolyline3d() = default;
  explicit KvGeSpacePolyline3d(std::vector<KvGePoint3d> points, bool isClosed = false)
      : points_(std::move(points)), isClosed_(isClosed) {}
  const std::vector<KvGePoint3d>& points() const { return points_; }

  Kind kind() const override { return kSpacePolyline; }
  Ptr clone() const override { return std::make_unique<KvGeSpacePolyline3d>(*this); }
  double startParam() const override { return 0; }
  double endParam() const override { return spanCount(); }
  bool isClosed(const KvGeTol& tol = KvGeContext::gTol) const override {
    return isClosed_ || KvGeCurve3d::isClosed(tol);
  }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override;
  Ptr transformed(const KvGeMatrix3d& m) const override;
  int spanCount() const override;
  kvge::Span span(int index) const override;
  int spanIndexAt(double param) const override {
    return std::clamp(static_cast<int>(std::floor(param)), 0, std::max(0, spanCount() - 1));
  }

 private:
  std::vector<KvGePoint3d> points_;
  bool isClosed_ = false;
};
