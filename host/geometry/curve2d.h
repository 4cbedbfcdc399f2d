#pragma once
// Curves in the plane: the edges of hatch loops. They carry their data and ends; for all other work `spatial`
// gives the curve in space.
#include "host/geometry/arc.h"
#include "host/geometry/nurb.h"

class KvGeCurve2d {
 public:
  enum Kind { kLineSeg, kCircArc, kEllipArc, kNurb };
  virtual ~KvGeCurve2d() = default;
  virtual Kind kind() const = 0;
  virtual std::unique_ptr<KvGeCurve2d> clone() const = 0;
  virtual double startParam() const { return 0; }
  virtual double endParam() const = 0;
  virtual KvGePoint2d evalPoint(double param) const = 0;
  KvGePoint2d startPoint() const { return evalPoint(startParam()); }
  KvGePoint2d endPoint() const { return evalPoint(endParam()); }
  /// As in the old interface of hatch edges: true, with both ends.
  bool hasStartPoint(KvGePoint2d& p) const { return p = startPoint(), true; }
  bool hasEndPoint(KvGePoint2d& p) const { return p = endPoint(), true; }
  /// The same curve at a height in the world's XY plane; null for a spline that wasn't made by its `create`.
  virtual KvGeCurve3d::Ptr spatial(double z = 0) const = 0;
};

/// Parameter 0 to 1.
class KvGeLineSeg2d : public KvGeCurve2d {
 public:
  KvGeLineSeg2d() = default;
  KvGeLineSeg2d(KvGePoint2d start, KvGePoint2d end) : start_(start), end_(end) {}
  Kind kind() const override { return kLineSeg; }
  std::unique_ptr<KvGeCurve2d> clone() const override { return std::make_unique<KvGeLineSeg2d>(*this); }
  double endParam() const override { return 1; }
  KvGePoint2d evalPoint(double t) const override { return t == 1 ? end_ : start_ + (end_ - start_) * t; }
  /// Length 1.
  KvGeVector2d direction() const { return (end_ - start_).normal(); }
  double length() const { return start_.distanceTo(end_); }
  KvGeCurve3d::Ptr spatial(double z = 0) const override {
    return std::make_unique<KvGeLineSeg3d>(kvge::spatial(start_, z), kvge::spatial(end_, z));
  }

 private:
  KvGePoint2d start_, end_;
};

/// Elliptical arc. Angles are eccentric ones from the major axis, counter-clockwise or, where the minor axis
/// is turned over, clockwise.
class KvGeEllipArc2d : public KvGeCurve2d {
 public:
  KvGeEllipArc2d() = default;
  /// The axes' directions (of any length) and the radii along them; the end angle is brought into (start,
  /// start + 2 pi].
  KvGeEllipArc2d(KvGePoint2d center, KvGeVector2d majorAxis, KvGeVector2d minorAxis, double majorRadius,
                 double minorRadius, double startAngle = 0, double endAngle = kvge::kTwoPi);
  Kind kind() const override { return kEllipArc; }
  std::unique_ptr<KvGeCurve2d> clone() const override { return std::make_unique<KvGeEllipArc2d>(*this); }
  KvGePoint2d center() const { return center_; }
  KvGeVector2d majorAxis() const { return major_.normal(); }
  KvGeVector2d minorAxis() const { return minor_.normal(); }
  double majorRadius() const { return major_.length(); }
  double minorRadius() const { return minor_.length(); }
  double startAng() const { return start_; }
  double endAng() const { return end_; }
  bool isClockWise() const { return major_.crossProduct(minor_) < 0; }
  double startParam() const override { return start_; }
  double endParam() const override { return end_; }
  KvGePoint2d evalPoint(double t) const override;
  KvGeCurve3d::Ptr spatial(double z = 0) const override;

 protected:
  KvGePoint2d center_;
  KvGeVector2d major_ = KvGeVector2d::kXAxis, minor_ = KvGeVector2d::kYAxis;  ///< directions times radii
  double start_ = 0, end_ = kvge::kTwoPi;
};

class KvGeCircArc2d : public KvGeEllipArc2d {
 public:
  KvGeCircArc2d() = default;
  /// A whole circle.
  KvGeCircArc2d(KvGePoint2d center, double radius) : KvGeCircArc2d(center, radius, 0, kvge::kTwoPi) {}
  /// Angles from the reference vector, in the direction of the arc's run.
  KvGeCircArc2d(KvGePoint2d center, double radius, double startAngle, double endAngle,
                KvGeVector2d refVec = KvGeVector2d::kXAxis, bool isClockWise = false)
      : KvGeEllipArc2d(center, refVec, isClockWise ? -refVec.perpVector() : refVec.perpVector(), radius,
                       radius, startAngle, endAngle) {}
  /// From two points and the bulge between them; a bulge of 0 gives radius 0 at the start.
  KvGeCircArc2d(KvGePoint2d start, KvGePoint2d end, double bulge);
  Kind kind() const override { return kCircArc; }
  std::unique_ptr<KvGeCurve2d> clone() const override { return std::make_unique<KvGeCircArc2d>(*this); }
  double radius() const { return majorRadius(); }
  KvGeCurve3d::Ptr spatial(double z = 0) const override;
};

class KvGeNurbCurve2d : public KvGeCurve2d {
 public:
  /// Null for what KvGeNurbCurve3d::create refuses.
  static std::unique_ptr<KvGeNurbCurve2d> create(int degree, std::vector<double> knots,
                                                 const std::vector<KvGePoint2d>& poles,
                                                 std::vector<double> weights = {});
  Kind kind() const override { return kNurb; }
  std::unique_ptr<KvGeCurve2d> clone() const override { return std::make_unique<KvGeNurbCurve2d>(*this); }
  double startParam() const override { return curve_.startParam(); }
  double endParam() const override { return curve_.endParam(); }
  KvGePoint2d evalPoint(double t) const override { return kvge::planar(curve_.pointAtParam(t)); }
  /// Degree, knots, poles (with Z 0) and weights.
  const KvGeNurbCurve3d& data() const { return curve_; }
  KvGeCurve3d::Ptr spatial(double z = 0) const override {
    return curve_.transformed(KvGeMatrix3d::translation({0, 0, z}));
  }

 private:
  KvGeNurbCurve3d curve_;
};
