#pragma once
// Splines: by control points, weights and knots, by points to be passed through, or by both.
#include "host/entities/curve.h"
#include "host/geometry/nurb.h"

/// World coordinates. A spline that a file gives by fit points alone is interpolated when it is asked for.
class KvDbSpline : public KvDbCurve {
  KVRX_DECLARE(KvDbSpline)
 public:
  KvDbSpline() = default;
  /// Through the points; a zero tangent leaves its end free.
  explicit KvDbSpline(const KvGePoint3dArray& fitPoints, const KvGeVector3d& startTangent = {},
                      const KvGeVector3d& endTangent = {}, double fitTolerance = 0);

  /// Replaces everything.
  Kvad::ErrorStatus setNurb(const KvGeNurbCurve3d& curve);
  /// eInvalidInput for numbers that form no spline (see KvGeNurbCurve3d::create); nothing is changed then.
  Kvad::ErrorStatus setNurbsData(int degree, const KvGePoint3dArray& controlPoints,
                                 const KvArray<double>& knots,
                                 const KvArray<double>& weights = KvArray<double>(), bool isPeriodic = false);
  int degree() const { return degree_; }
  int numControlPoints() const { return static_cast<int>(poles_.size()); }
  int numFitPoints() const { return static_cast<int>(fitPoints_.size()); }
  bool isRational() const { return !weights_.empty(); }
  bool hasFitData() const { return !fitPoints_.empty(); }
  /// eInvalidIndex.
  Kvad::ErrorStatus getControlPointAt(int index, KvGePoint3d& point) const;
  Kvad::ErrorStatus getFitPointAt(int index, KvGePoint3d& point) const;
  const std::vector<double>& knots() const { return knots_; }
  const std::vector<double>& weights() const { return weights_; }

  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool isClosed() const override;
  Kvad::ErrorStatus reverseCurve() override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 private:
  static constexpr int kClosed = 1, kPeriodic = 2, kRational = 4, kPlanar = 8;
  void noteShape();

  std::int16_t flags_ = 0, degree_ = 3;
  std::vector<double> knots_, weights_;
  std::vector<KvGePoint3d> poles_, fitPoints_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis, startTangent_, endTangent_;
  double knotTolerance_ = 1e-9, poleTolerance_ = 1e-10, fitTolerance_ = 1e-10;
};
