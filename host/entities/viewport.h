#pragma once
// Viewports of layouts.
#include "host/entities/keptentity.h"

/// A window of a layout onto model space.
class KvDbViewport : public KvDbKeptEntity {
  KVRX_DECLARE(KvDbViewport)
 public:
  KvDbViewport() : KvDbKeptEntity(L"VIEWPORT", L"AcDbViewport") {}
  /// Showing model space from above at scale 1.
  KvDbViewport(const KvGePoint3d& center, double width, double height);

  // On the sheet.
  KvGePoint3d centerPoint() const { return point(10); }
  Kvad::ErrorStatus setCenterPoint(const KvGePoint3d& center) { return putPoint(10, center); }
  double width() const { return real(40); }
  double height() const { return real(41); }
  /// eInvalidInput for a size that isn't above 0.
  Kvad::ErrorStatus setWidth(double width) { return width > 0 ? putReal(40, width) : Kvad::eInvalidInput; }
  Kvad::ErrorStatus setHeight(double height) {
    return height > 0 ? putReal(41, height) : Kvad::eInvalidInput;
  }
  /// 1 is the sheet itself.
  int number() const { return static_cast<int>(whole(69)); }
  bool isOn() const { return (whole(90) & kOffFlag) == 0 && whole(68) != 0; }
  Kvad::ErrorStatus setOn(bool on);
  // Of what is seen: the centre in the view's own plane, the height in model units.
  KvGePoint2d viewCenter() const { return kvge::planar(point(12)); }
  Kvad::ErrorStatus setViewCenter(const KvGePoint2d& center) {
    return putPoint(12, kvge::spatial(center), 2);
  }
  double viewHeight() const { return real(45); }
  Kvad::ErrorStatus setViewHeight(double height) {
    return height > 0 ? putReal(45, height) : Kvad::eInvalidInput;
  }
  KvGePoint3d viewTarget() const { return point(17); }
  KvGeVector3d viewDirection() const { return point(16, {0, 0, 1}).asVector(); }
  /// Radians.
  double twistAngle() const { return kvdxfRadians(real(51)); }
  Kvad::ErrorStatus setTwistAngle(double angle) { return putReal(51, kvdxfDegrees(angle)); }
  /// Sheet units for one model unit.
  double customScale() const { return viewHeight() > 0 ? height() / viewHeight() : 1; }
  /// Layers that are frozen in this window alone.
  KvDbObjectIdArray frozenLayers() const;
  bool isNonRectClipOn() const { return (whole(90) & kClipFlag) != 0 && !nonRectClipEntityId().isNull(); }
  KvDbObjectId nonRectClipEntityId() const;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  static constexpr int kClipFlag = 0x10000, kOffFlag = 0x20000;
};
