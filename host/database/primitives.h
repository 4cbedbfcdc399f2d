#pragma once
// What an entity draws, gathered as curves: the way to extents and crossings of entities without a closed
// form.
#include <functional>
#include <memory>
#include <vector>

#include "host/database/entity.h"
#include "host/geometry/curve.h"

/// A sink that hands every primitive on as a curve in world coordinates. Owned drawables and model transforms
/// are followed; hidden entities, and one inside itself, are left out.
class KvDbCurveSink : public KvGiWorldDraw, public KvGiGeometry, public KvGiSubEntityTraits {
 public:
  using Curve = std::unique_ptr<KvGeCurve3d>;

  // What a derived sink takes.
  virtual void takeCurve(Curve curve) = 0;
  virtual void takePoint(const KvGePoint3d&) {}
  /// A text's box in world coordinates: four corners.
  virtual void takeTextBox(const KvGePoint3d (&corners)[4]) = 0;

  KvGiGeometry& geometry() override { return *this; }
  KvGiSubEntityTraits& subEntityTraits() override { return *this; }
  double deviation(const KvGePoint3d&) const override { return kDeviation; }
  bool isOutlineOnly() const override { return true; }

  bool circle(const KvGePoint3d& center, double radius, const KvGeVector3d& normal) override;
  bool circle(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third) override;
  bool circularArc(const KvGePoint3d& center, double radius, const KvGeVector3d& normal,
                   const KvGeVector3d& startVector, double sweepAngle, KvGiArcType type) override;
  bool circularArc(const KvGePoint3d& start, const KvGePoint3d& point, const KvGePoint3d& end,
                   KvGiArcType type) override;
  bool ellipticalArc(const KvGePoint3d& center, const KvGeVector3d& normal, double majorLength,
                     double minorLength, double startAngle, double endAngle, double tilt,
                     KvGiArcType type) override;
  bool polyline(int count, const KvGePoint3d* points, const KvGeVector3d* normal, long marker) override;
  bool polygon(int count, const KvGePoint3d* points) override;
  bool polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) override;
  bool text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
            const KvGiTextLook& look, const CString& text) override;
  bool pline(const KvDbPolyline& polyline, int from, int count) override;
  bool path(const KvGiPath& path) override;
  bool polypoint(int count, const KvGePoint3d* points) override;
  bool shell(int points, const KvGePoint3d* vertices, int faceListSize, const std::int32_t* faces) override;
  bool mesh(int rows, int columns, const KvGePoint3d* vertices) override;
  bool ray(const KvGePoint3d& base, const KvGePoint3d& through) override;
  bool xline(const KvGePoint3d& first, const KvGePoint3d& second) override;
  bool draw(KvGiDrawable* drawable) override;
  void pushModelTransform(const KvGeMatrix3d& transform) override;
  void popModelTransform() override;
  bool pushClipBoundary(const KvGiClipBoundary&) override { return true; }
  bool popClipBoundary() override { return true; }

  void setColor(std::uint16_t color) override { color_ = KvCmEntityColor::ofIndex(color); }
  void setTrueColor(const KvCmEntityColor& color) override { color_ = color; }
  void setLayer(KvDbObjectId layer) override { layer_ = layer; }
  void setLineType(KvDbObjectId linetype) override { linetype_ = linetype; }
  void setSelectionMarker(long) override {}
  void setFillType(KvGiFillType type) override { fill_ = type; }
  void setLineWeight(int weight) override { weight_ = weight; }
  void setLineTypeScale(double scale) override { linetypeScale_ = scale; }
  void setThickness(double thickness) override { thickness_ = thickness; }
  std::uint16_t color() const override { return static_cast<std::uint16_t>(color_.colorIndex()); }
  KvCmEntityColor trueColor() const override { return color_; }
  KvDbObjectId layerId() const override { return layer_; }
  KvDbObjectId lineTypeId() const override { return linetype_; }
  KvGiFillType fillType() const override { return fill_; }
  int lineWeight() const override { return weight_; }
  double lineTypeScale() const override { return linetypeScale_; }
  double thickness() const override { return thickness_; }

 protected:
  static constexpr double kDeviation = 1e-4;
  void put(Curve curve);

 private:
  KvGeMatrix3d map_;
  std::vector<KvGeMatrix3d> outer_;
  std::vector<const KvGiDrawable*> open_;
  bool hasMap_ = false;
  KvCmEntityColor color_;
  KvDbObjectId layer_, linetype_;
  KvGiFillType fill_ = kKvGiFillNever;
  int weight_ = KvDb::kLnWtByLayer;
  double linetypeScale_ = 1, thickness_ = 0;
};

/// The box of what the entity draws; eInvalidExtents when that is nothing, or endless.
Kvad::ErrorStatus kvdbDrawnExtents(const KvDbEntity& entity, KvDbExtents& extents);
/// The curves that the entity draws, appended; texts leave none.
void kvdbDrawnCurves(const KvDbEntity& entity, std::vector<std::unique_ptr<KvGeCurve3d>>& curves);
