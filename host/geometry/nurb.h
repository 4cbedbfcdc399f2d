#pragma once
// Splines: non-uniform rational B-splines of degree 1 to 25, and cubic interpolation of points.
#include "host/geometry/curve.h"

class KvGeNurbCurve3d : public KvGeCurve3d {
 public:
  /// A straight spline of degree 1 from (0,0,0) to (1,0,0).
  KvGeNurbCurve3d();
  /// Null for input that is no spline: degree out of range, knots that descend or aren't poles + degree + 1,
  /// an empty range, a knot more often than degree times inside, weights that aren't positive or not as many
  /// as poles, numbers that aren't finite. No weights: all 1. The curve runs over knots[degree] to
  /// knots[poles]; clamped, open and periodic knots are all taken.
  static std::unique_ptr<KvGeNurbCurve3d> create(int degree, std::vector<double> knots,
                                                 std::vector<KvGePoint3d> poles,
                                                 std::vector<double> weights = {});
  /// From a row of single poles given once, closing on itself smoothly: uniform periodic knots.
  static std::unique_ptr<KvGeNurbCurve3d> createPeriodic(int degree, const std::vector<KvGePoint3d>& poles);
  /// The cubic with continuous curvature through the points, with chord lengths as parameter; a zero tangent
  /// leaves that end natural (without curvature). Repeated points count once. Null for fewer than two
  /// different points.
  static std::unique_ptr<KvGeNurbCurve3d> interpolate(const std::vector<KvGePoint3d>& points,
                                                      const KvGeVector3d& startTangent = {},
                                                      const KvGeVector3d& endTangent = {});

  int degree() const { return degree_; }
  const std::vector<double>& knots() const { return knots_; }
  const std::vector<KvGePoint3d>& poles() const { return poles_; }
  /// Empty when all are 1.
  const std::vector<double>& weights() const { return weights_; }
  bool isRational() const { return !weights_.empty(); }

  Kind kind() const override { return kNurb; }
  Ptr clone() const override { return std::make_unique<KvGeNurbCurve3d>(*this); }
  double startParam() const override { return knots_[static_cast<size_t>(degree_)]; }
  double endParam() const override { return knots_[poles_.size()]; }
  Ptr piece(double from, double to) const override;
  Ptr reversed() const override;
  Ptr transformed(const KvGeMatrix3d& m) const override;
  int spanCount() const override { return static_cast<int>(breaks_.size()) - 1; }
  kvge::Span span(int index) const override;
  int spanIndexAt(double param) const override;

 private:
  void setUp();
  /// The polar form of the polynomial piece on knot interval `interval`, at `degree_` arguments; homogeneous.
  void blossom(size_t interval, const double* arguments, double* result) const;

  int degree_ = 1;
  std::vector<double> knots_;
  std::vector<KvGePoint3d> poles_;
  std::vector<double> weights_;
  std::vector<double> breaks_;  ///< the different knots within the range
  std::vector<double> bezier_;  ///< poles of the spans, homogeneous
};
