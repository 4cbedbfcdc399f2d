#pragma once
// Line segments, rays, circular and elliptical arcs in space. Nothing here allocates except clone and piece.
#include "host/geometry/curve.h"

class KvGeLineSeg3d : public KvGeCurve3d {
 public:
  KvGeLineSeg3d() = default;
  KvGeLineSeg3d(const KvGePoint3d& start, const KvGePoint3d& end) : start_(start), end_(end) {}
  /// Length 1; zero for a segment of equal ends.
  KvGeVector3d direction() const { return kvge::lineSpan(start_, end_).u; }

  Kind kind() const override { return kLineSeg; }
  Ptr clone() const override { return std::make_unique<KvGeLineSeg3d>(*this); }
  double startParam() const override { return 0; }
  double endParam() const override { return start_.distanceTo(end_); }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override { return std::make_unique<KvGeLineSeg3d>(end_, start_); }
  Ptr transformed(const KvGeMatrix3d& m) const override {
    return std::make_unique<KvGeLineSeg3d>(m * start_, m * end_);
  }
  int spanCount() const override { return 1; }
  kvge::Span span(int) const override { return kvge::lineSpan(start_, end_); }
  int spanIndexAt(double) const override { return 0; }

 private:
  KvGePoint3d start_, end_;
};

/// Endless to one side.
class KvGeRay3d : public KvGeCurve3d {
 public:
  KvGeRay3d() = default;
  KvGeRay3d(const KvGePoint3d& start, const KvGeVector3d& direction)
      : start_(start), direction_(direction.normal()) {}
  const KvGePoint3d& basePoint() const { return start_; }
  const KvGeVector3d& direction() const { return direction_; }

  Kind kind() const override { return kRay; }
  Ptr clone() const override { return std::make_unique<KvGeRay3d>(*this); }
  double startParam() const override { return 0; }
  double endParam() const override { return KvGeBox3d::kFar; }
  Ptr piece(double from, double to) const override;
  /// A ray can't begin at infinity: the answer is the same ray.
  Ptr reversed() const override { return clone(); }
  Ptr transformed(const KvGeMatrix3d& m) const override {
    return std::make_unique<KvGeRay3d>(m * start_, m * direction_);
  }
  int spanCount() const override { return 1; }
  kvge::Span span(int) const override;
  int spanIndexAt(double) const override { return 0; }

 private:
  KvGePoint3d start_;
  KvGeVector3d direction_ = KvGeVector3d::kXAxis;
};

/// Counter-clockwise about the normal, from the start angle to the end angle, both measured from the
/// reference vector.
class KvGeCircArc3d : public KvGeCurve3d {
 public:
  KvGeCircArc3d() = default;
  /// A whole circle, angles from the X axis of the plane by the arbitrary-axis rule.
  KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal, double radius);
  /// The end angle is brought into (start, start + 2 pi]; equal angles give a whole circle.
  KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal, double radius, double startAngle,
                double endAngle);
  KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal, const KvGeVector3d& refVec,
                double radius, double startAngle, double endAngle);
  /// Through three points; points in one line give an arc of radius 0.
  KvGeCircArc3d(const KvGePoint3d& start, const KvGePoint3d& through, const KvGePoint3d& end);

  const KvGePoint3d& center() const { return center_; }
  KvGeVector3d normal() const;
  double radius() const { return radius_; }
  const KvGeVector3d& refVec() const { return x_; }
  double startAngle() const { return start_; }
  double endAngle() const { return end_; }

  Kind kind() const override { return kCircArc; }
  Ptr clone() const override { return std::make_unique<KvGeCircArc3d>(*this); }
  double startParam() const override { return start_; }
  double endParam() const override { return end_; }
  bool isPeriodic() const override { return end_ - start_ >= kvge::kTwoPi * (1 - 1e-15); }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override;
  Ptr transformed(const KvGeMatrix3d& m) const override;
  int spanCount() const override { return 1; }
  kvge::Span span(int) const override;
  int spanIndexAt(double) const override { return 0; }

 private:
  KvGePoint3d center_;
  KvGeVector3d x_ = KvGeVector3d::kXAxis, y_ = KvGeVector3d::kYAxis;  ///< unit, at right angles
  double radius_ = 1, start_ = 0, end_ = kvge::kTwoPi;
};

/// center + major * cos t + minor * sin t.
class KvGeEllipArc3d : public KvGeCurve3d {
 public:
  KvGeEllipArc3d() = default;
  /// The axes are half the diameters, as vectors. The end is brought into (start, start + 2 pi] as with arcs.
  KvGeEllipArc3d(const KvGePoint3d& center, const KvGeVector3d& major, const KvGeVector3d& minor,
                 double start = 0, double end = kvge::kTwoPi);
  /// From two conjugate radii, such as a circle's axes under an affine map; the start keeps its point.
  static KvGeEllipArc3d fromConjugate(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v,
                                      double start, double end);

  const KvGePoint3d& center() const { return center_; }
  const KvGeVector3d& majorAxis() const { return major_; }
  const KvGeVector3d& minorAxis() const { return minor_; }
  KvGeVector3d normal() const;

  Kind kind() const override { return kEllipArc; }
  Ptr clone() const override { return std::make_unique<KvGeEllipArc3d>(*this); }
  double startParam() const override { return start_; }
  double endParam() const override { return end_; }
  bool isPeriodic() const override { return end_ - start_ >= kvge::kTwoPi * (1 - 1e-15); }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override;
  Ptr transformed(const KvGeMatrix3d& m) const override;
  int spanCount() const override { return 1; }
  kvge::Span span(int) const override { return kvge::conicSpan(center_, major_, minor_, start_, end_); }
  int spanIndexAt(double) const override { return 0; }

 private:
  KvGePoint3d center_;
  KvGeVector3d major_ = KvGeVector3d::kXAxis, minor_ = KvGeVector3d::kYAxis;
  double start_ = 0, end_ = kvge::kTwoPi;
};

namespace kvge {
/// `end` brought into (start, start + 2 pi]; equal angles, and those within rounding of a whole turn, give
/// the whole turn.
double endAfter(double start, double end);
}  // namespace kvge
