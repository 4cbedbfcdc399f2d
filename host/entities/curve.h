#pragma once
// What all curves answer: parameters, lengths, nearest points, splitting. World coordinates, drawing units.
//
// Parameters: lines the distance from the start; arcs, circles and ellipses their angle; polylines the number
// of the vertex and the share of the way to the next; splines their knots; rays and construction lines the
// distance from the base point.
#include "host/database/entity.h"
#include "host/geometry/curve.h"

class KvDbCurve : public KvDbEntity {
  KVRX_DECLARE(KvDbCurve)
 public:
  /// The curve itself; null when the entity has no extent that could be one (a polyline without vertices).
  virtual std::unique_ptr<KvGeCurve3d> geCurve() const = 0;

  // Calls with a status answer eDegenerateGeometry where there is no curve, and leave their results as they
  // were.
  virtual bool isClosed() const;
  virtual bool isPeriodic() const;
  /// eNotApplicable at the open end of a ray or construction line.
  Kvad::ErrorStatus getStartParam(double& param) const;
  Kvad::ErrorStatus getEndParam(double& param) const;
  Kvad::ErrorStatus getStartPoint(KvGePoint3d& point) const;
  Kvad::ErrorStatus getEndPoint(KvGePoint3d& point) const;
  /// eOutOfRange for a parameter that isn't on the curve.
  Kvad::ErrorStatus getPointAtParam(double param, KvGePoint3d& point) const;
  /// eNotOnCurve for a point farther than kOnCurve.
  Kvad::ErrorStatus getParamAtPoint(const KvGePoint3d& point, double& param) const;
  /// Length from the start.
  Kvad::ErrorStatus getDistAtParam(double param, double& distance) const;
  Kvad::ErrorStatus getParamAtDist(double distance, double& param) const;
  Kvad::ErrorStatus getDistAtPoint(const KvGePoint3d& point, double& distance) const;
  Kvad::ErrorStatus getPointAtDist(double distance, KvGePoint3d& point) const;
  Kvad::ErrorStatus getFirstDeriv(double param, KvGeVector3d& derivative) const;
  Kvad::ErrorStatus getFirstDeriv(const KvGePoint3d& point, KvGeVector3d& derivative) const;
  Kvad::ErrorStatus getSecondDeriv(double param, KvGeVector3d& derivative) const;
  /// With `extend` lines and arcs are continued beyond their ends.
  Kvad::ErrorStatus getClosestPointTo(const KvGePoint3d& point, KvGePoint3d& closest,
                                      bool extend = false) const;
  /// The point of the curve that is nearest to `point` when both are seen along `normal`.
  Kvad::ErrorStatus getClosestPointTo(const KvGePoint3d& point, const KvGeVector3d& normal,
                                      KvGePoint3d& closest, bool extend = false) const;
  /// The pieces between the points as new curves (KvDbCurve*) outside any drawing, in the curve's order, with
  /// this entity's layer, colour and the like; appended, owned by the caller. A closed curve without a seam
  /// cut once is one piece. eInvalidInput when nothing is cut; points off the curve are left out.
  Kvad::ErrorStatus getSplitCurves(const KvGePoint3dArray& points, KvDbVoidPtrArray& pieces) const;
  Kvad::ErrorStatus getSplitCurves(const KvArray<double>& params, KvDbVoidPtrArray& pieces) const;
  /// The area that the curve, closed by a line where it is open, encloses. eNotApplicable, eNonPlanarEntity.
  virtual Kvad::ErrorStatus getArea(double& area) const;
  /// eNotApplicable where the class cannot run backwards (arcs, circles, rays).
  virtual Kvad::ErrorStatus reverseCurve();
  virtual bool isPlanar() const;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  void getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const override;
  /// Polylines explode into segments; a single segment doesn't.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;

  /// How far a point may lie from the curve and still count as on it: what people type and programs round.
  static constexpr double kOnCurve = 1e-6;

 protected:
  /// A piece of this curve as an entity; by default of the class that fits the piece best.
  virtual std::unique_ptr<KvDbCurve> pieceEntity(std::unique_ptr<KvGeCurve3d> piece, double from,
                                                 double to) const;
};

/// An entity for a curve: line, ray, construction line, circle or arc, ellipse, spline, light or space
/// polyline. Null when the curve has no extent. `wholeAsArc` makes an arc of a whole turn.
std::unique_ptr<KvDbCurve> kvdbCurveOf(const KvGeCurve3d& curve, bool wholeAsArc = false);
/// Appends points of a curve so that chords lie within the sink's deviation; the ends are among them.
void kvdbFlatten(const KvGeCurve3d& curve, const KvGiWorldDraw& draw, std::vector<KvGePoint3d>& points);
/// Draws a curve that isn't one primitive, by chords within the sink's deviation.
void kvdbDrawCurve(const KvGeCurve3d& curve, KvGiWorldDraw& draw);
