#pragma once
// Polylines of the old kind: entities that own their vertices. Meshes of that kind are kept as they are.
#include "host/entities/curve.h"

/// A vertex; owned by its polyline.
class KvDbVertex : public KvDbEntity {
  KVRX_DECLARE(KvDbVertex)
 public:
  KvGePoint3d position() const { return position_; }
  Kvad::ErrorStatus setPosition(const KvGePoint3d& position);
  /// A control point of a fitted curve: it isn't drawn.
  bool isControl() const { return (flags_ & kControlFlag) != 0; }

 protected:
  static constexpr int kControlFlag = 16;
  KvGePoint3d position_;
  std::int16_t flags_ = 0;
};

/// In the coordinates of the polyline's plane.
class KvDb2dVertex : public KvDbVertex {
  KVRX_DECLARE(KvDb2dVertex)
  KVDB_FIELDS_DECLARE
 public:
  KvDb2dVertex() = default;
  explicit KvDb2dVertex(const KvGePoint3d& position, double bulge = 0);
  double bulge() const { return bulge_; }
  Kvad::ErrorStatus setBulge(double bulge);
  /// Below 0: that of the polyline.
  double startWidth() const { return startWidth_; }
  double endWidth() const { return endWidth_; }
  Kvad::ErrorStatus setWidths(double start, double end);
  bool isUsed() const { return true; }

 private:
  friend class KvDb2dPolyline;
  double bulge_ = 0, startWidth_ = -1, endWidth_ = -1;
  KvDbAngle tangent_;
  std::int32_t id_ = 0;
};

/// In world coordinates.
class KvDb3dPolylineVertex : public KvDbVertex {
  KVRX_DECLARE(KvDb3dPolylineVertex)
  KVDB_FIELDS_DECLARE
 public:
  KvDb3dPolylineVertex() { flags_ = kOwnFlag; }
  explicit KvDb3dPolylineVertex(const KvGePoint3d& position) : KvDb3dPolylineVertex() {
    position_ = position;
  }

 private:
  static constexpr int kOwnFlag = 32;
};

class KvDb2dPolyline : public KvDbCurve, public KvDbSequence {
  KVRX_DECLARE(KvDb2dPolyline)
  KVDB_FIELDS_DECLARE
 public:
  enum Poly2dType { kSimplePoly = 0, kFitCurvePoly, kQuadSplinePoly, kCubicSplinePoly };
  Poly2dType polyType() const;
  bool isClosed() const override { return (flags_ & kClosedFlag) != 0; }
  Kvad::ErrorStatus setClosed(bool closed);
  double elevation() const { return elevation_.z; }
  Kvad::ErrorStatus setElevation(double elevation);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  double defaultStartWidth() const { return startWidth_; }
  double defaultEndWidth() const { return endWidth_; }
  KvGeVector3d normal() const { return normal_; }
  bool isLinetypeGenerationOn() const { return (flags_ & kPlinegenFlag) != 0; }
  /// Takes the vertex over. Outside a drawing it waits for the polyline to be put into one.
  Kvad::ErrorStatus appendVertex(KvDb2dVertex* vertex);
  Kvad::ErrorStatus appendVertex(KvDbObjectId& id, KvDb2dVertex* vertex);
  /// Those that the curve runs through, in order.
  std::vector<const KvDb2dVertex*> vertices() const;

  KvDbSequence* sequence() override { return this; }
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  /// eCannotScaleNonUniformly. The vertices must not be open elsewhere.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 protected:
  KvDbEntity& sequenceOwner() override { return *this; }

 private:
  static constexpr int kClosedFlag = 1, kFitFlag = 2, kSplineFlag = 4, kPlinegenFlag = 128;
  std::int16_t follows_ = 1, flags_ = 0, smooth_ = 0;
  KvGePoint3d elevation_;
  double thickness_ = 0, startWidth_ = 0, endWidth_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};

class KvDb3dPolyline : public KvDbCurve, public KvDbSequence {
  KVRX_DECLARE(KvDb3dPolyline)
  KVDB_FIELDS_DECLARE
 public:
  KvDb3dPolyline() = default;
  KvDb3dPolyline(const std::vector<KvGePoint3d>& points, bool isClosed);
  bool isClosed() const override { return (flags_ & kClosedFlag) != 0; }
  Kvad::ErrorStatus setClosed(bool closed);
  Kvad::ErrorStatus appendVertex(KvDb3dPolylineVertex* vertex);
  Kvad::ErrorStatus appendVertex(KvDbObjectId& id, KvDb3dPolylineVertex* vertex);
  std::vector<const KvDb3dPolylineVertex*> vertices() const;

  KvDbSequence* sequence() override { return this; }
  std::unique_ptr<KvGeCurve3d> geCurve() const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 protected:
  KvDbEntity& sequenceOwner() override { return *this; }

 private:
  static constexpr int kClosedFlag = 1, kOwnFlag = 8;
  std::int16_t follows_ = 1, flags_ = kOwnFlag, smooth_ = 0;
  KvGePoint3d elevation_;
};
