#pragma once
// Points, lines, circles, arcs, ellipses, filled quadrangles.
//
// Points that calls give and take are in world coordinates unless it says otherwise; circles, arcs and filled
// quadrangles are kept in the coordinates of their plane, as in files. Angles are in radians,
// counter-clockwise about the normal, from the X axis of the plane (arbitrary-axis rule of drawing files).
#include "host/entities/curve.h"

class KvDbPoint : public KvDbEntity {
  KVRX_DECLARE(KvDbPoint)
  KVDB_FIELDS_DECLARE
 public:
  KvDbPoint() = default;
  explicit KvDbPoint(const KvGePoint3d& position) : position_(position) {}
  KvGePoint3d position() const { return position_; }
  Kvad::ErrorStatus setPosition(const KvGePoint3d& position);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  KvGeVector3d normal() const { return normal_; }
  /// eInvalidInput for a vector of no length, here and in the other classes.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  KvGePoint3d position_;
  double thickness_ = 0;
  KvDbAngle rotation_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

class KvDbLine : public KvDbCurve {
  KVRX_DECLARE(KvDbLine)
  KVDB_FIELDS_DECLARE
 public:
  KvDbLine() = default;
  KvDbLine(const KvGePoint3d& start, const KvGePoint3d& end) : start_(start), end_(end) {}
  KvGePoint3d startPoint() const { return start_; }
  KvGePoint3d endPoint() const { return end_; }
  Kvad::ErrorStatus setStartPoint(const KvGePoint3d& point);
  Kvad::ErrorStatus setEndPoint(const KvGePoint3d& point);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  KvGeVector3d normal() const { return normal_; }
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  Kvad::ErrorStatus reverseCurve() override;
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  KvGePoint3d start_, end_;
  double thickness_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

class KvDbCircle : public KvDbCurve {
  KVRX_DECLARE(KvDbCircle)
  KVDB_FIELDS_DECLARE
 public:
  KvDbCircle() = default;
  KvDbCircle(const KvGePoint3d& center, const KvGeVector3d& normal, double radius);
  KvGePoint3d center() const;
  Kvad::ErrorStatus setCenter(const KvGePoint3d& center);
  double radius() const { return radius_; }
  /// eInvalidInput for a radius that isn't above 0.
  Kvad::ErrorStatus setRadius(double radius);
  KvGeVector3d normal() const { return normal_; }
  /// The centre stays where it is in the world.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  Kvad::ErrorStatus getArea(double& area) const override;
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 private:
  double thickness_ = 0;
  KvGePoint3d center_;  // in the plane's coordinates
  double radius_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

class KvDbArc : public KvDbCurve {
  KVRX_DECLARE(KvDbArc)
  KVDB_FIELDS_DECLARE
 public:
  KvDbArc() = default;
  KvDbArc(const KvGePoint3d& center, const KvGeVector3d& normal, double radius, double startAngle,
          double endAngle);
  KvGePoint3d center() const;
  Kvad::ErrorStatus setCenter(const KvGePoint3d& center);
  double radius() const { return radius_; }
  /// eInvalidInput for a radius that isn't above 0.
  Kvad::ErrorStatus setRadius(double radius);
  Kvad::ErrorStatus setStartAngle(double angle);
  Kvad::ErrorStatus setEndAngle(double angle);
  /// The centre stays where it is in the world.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  Kvad::ErrorStatus setThickness(double thickness);
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  double startAngle() const { return startAngle_.radians(); }
  double endAngle() const { return endAngle_.radians(); }
  /// Above 0, at most 2 pi.
  double totalAngle() const;
  KvGeVector3d normal() const { return normal_; }
  double thickness() const { return thickness_; }
  KvGePoint3d pointAtAngle(double angle) const;
  KvGePoint3d startPoint() const { return pointAtAngle(startAngle()); }
  KvGePoint3d endPoint() const { return pointAtAngle(endAngle()); }
  double length() const { return radius_ * totalAngle(); }
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 private:
  double thickness_ = 0;
  KvGePoint3d center_;  // in the plane's coordinates
  double radius_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
  KvDbAngle startAngle_, endAngle_;
};

/// What lines without end share.
class KvDbEndlessLine : public KvDbCurve {
  KVRX_DECLARE(KvDbEndlessLine)
 public:
  KvGePoint3d basePoint() const { return base_; }
  KvGeVector3d unitDir() const { return direction_; }
  Kvad::ErrorStatus setBasePoint(const KvGePoint3d& point);
  /// eInvalidInput for a vector of no length.
  Kvad::ErrorStatus setUnitDir(const KvGeVector3d& direction);
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  KvGePoint3d base_;
  KvGeVector3d direction_ = KvGeVector3d::kXAxis;
};

/// A line without end in one direction.
class KvDbRay : public KvDbEndlessLine {
  KVRX_DECLARE(KvDbRay)
  KVDB_FIELDS_DECLARE
 public:
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
};

/// A line without end in both directions.
class KvDbXline : public KvDbEndlessLine {
  KVRX_DECLARE(KvDbXline)
  KVDB_FIELDS_DECLARE
 public:
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
};

/// An ellipse or an arc of one. Parameters run from the major axis, 0 to 2 pi.
class KvDbEllipse : public KvDbCurve {
  KVRX_DECLARE(KvDbEllipse)
  KVDB_FIELDS_DECLARE
 public:
  KvGePoint3d center() const { return center_; }
  Kvad::ErrorStatus setCenter(const KvGePoint3d& center);
  KvGeVector3d majorAxis() const { return major_; }
  KvGeVector3d minorAxis() const { return normal_.crossProduct(major_) * ratio_; }
  KvGeVector3d normal() const { return normal_; }
  double radiusRatio() const { return ratio_; }
  double startParam() const { return start_; }
  double endParam() const { return end_; }
  KvDbEllipse() = default;
  KvDbEllipse(const KvGePoint3d& center, const KvGeVector3d& normal, const KvGeVector3d& majorAxis,
              double ratio, double start = 0, double end = kvge::kTwoPi);
  /// `ratio` above 0, at most 1; the major axis at right angles to the normal. eInvalidInput.
  Kvad::ErrorStatus set(const KvGePoint3d& center, const KvGeVector3d& normal, const KvGeVector3d& majorAxis,
                        double ratio, double start = 0, double end = kvge::kTwoPi);
  /// Parameters at the ends.
  Kvad::ErrorStatus setStartParam(double start);
  Kvad::ErrorStatus setEndParam(double end);
  /// Bearings of the ends from the centre, measured from the major axis.
  double startAngle() const;
  double endAngle() const;
  Kvad::ErrorStatus setStartAngle(double angle);
  Kvad::ErrorStatus setEndAngle(double angle);
  KvGePoint3d pointAtParam(double parameter) const;
  /// Any affine map that isn't singular; eInvalidInput.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;

 private:
  KvGePoint3d center_;
  KvGeVector3d major_ = KvGeVector3d::kXAxis, normal_ = KvGeVector3d::kZAxis;
  double ratio_ = 1, start_ = 0, end_ = kvge::kTwoPi;
};

/// A filled quadrangle or triangle; corners as in files, the third and fourth crosswise. In world coordinates
/// on this side.
class KvDbTrace : public KvDbEntity {
  KVRX_DECLARE(KvDbTrace)
  KVDB_FIELDS_DECLARE
 public:
  /// eInvalidIndex outside 0 to 3.
  Kvad::ErrorStatus getPointAt(int index, KvGePoint3d& point) const;
  Kvad::ErrorStatus setPointAt(int index, const KvGePoint3d& point);
  KvGeVector3d normal() const { return normal_; }
  /// The corners stay where they are, as far as the new plane lets them.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  const KvGePoint3d* corner(int index) const;

  KvGePoint3d first_, second_, third_, fourth_;  // in the plane's coordinates
  double thickness_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

class KvDbSolid : public KvDbTrace {
  KVRX_DECLARE(KvDbSolid)
};

/// A plane quadrangle or triangle in space, drawn by its edges.
class KvDbFace : public KvDbEntity {
  KVRX_DECLARE(KvDbFace)
  KVDB_FIELDS_DECLARE
 public:
  KvDbFace() = default;
  KvDbFace(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third,
           const KvGePoint3d& fourth);
  /// Corners in order. eInvalidIndex outside 0 to 3.
  Kvad::ErrorStatus getVertexAt(int index, KvGePoint3d& point) const;
  Kvad::ErrorStatus setVertexAt(int index, const KvGePoint3d& point);
  Kvad::ErrorStatus isEdgeVisibleAt(int index, bool& isVisible) const;
  Kvad::ErrorStatus setEdgeVisibleAt(int index, bool isVisible);
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  static KvGePoint3d KvDbFace::*corner(int index);
  KvGePoint3d first_, second_, third_, fourth_;
  std::int16_t hiddenEdges_ = 0;  // one bit for each edge
};
