#pragma once
// Pictures that lie in a drawing, and wipeouts: areas that cover what was drawn before them. Their groups are
// kept as files have them.
#include <vector>

#include "host/entities/viewport.h"

/// Whether frames of a kind are drawn: the variables of pictures and of wipeouts in the root dictionary.
enum class KvDbFrameMode { Never, Always, ScreenOnly };

/// A picture, placed by its lower left corner and the vectors of one pixel. The boundary that is clipped out
/// of it is a rectangle or a polygon.
class KvDbRasterImage : public KvDbKeptEntity {
  KVRX_DECLARE(KvDbRasterImage)
 public:
  KvDbRasterImage() : KvDbRasterImage(L"IMAGE", L"AcDbRasterImage") {}

  // In world coordinates.
  KvGePoint3d origin() const { return point(10); }
  /// Along the lower and the left edge, whole.
  KvGeVector3d width() const { return point(11, {1, 0, 0}).asVector() * imageSize().x; }
  KvGeVector3d height() const { return point(12, {0, 1, 0}).asVector() * imageSize().y; }
  /// The number of pixels stays. eInvalidInput for vectors of no length or not finite.
  Kvad::ErrorStatus setOrientation(const KvGePoint3d& origin, const KvGeVector3d& width,
                                   const KvGeVector3d& height);
  /// In pixels; 1 by 1 where a file tells none.
  KvGePoint2d imageSize() const;
  /// The record that names the file; null for wipeouts.
  KvDbObjectId imageDefId() const;
  /// As the drawing names it; empty where it doesn't.
  CString sourceFile() const;
  bool isShown() const { return (whole(70, kShown) & kShown) != 0; }
  bool isClipped() const { return (whole(70, kUsesClip) & kUsesClip) != 0 && whole(280) != 0; }
  /// What lies inside the boundary is left out.
  bool isClipInverted() const { return whole(290) != 0; }
  /// Corners of what shows (inverted: of what doesn't), the whole picture where nothing is clipped; in world
  /// coordinates, not closed.
  std::vector<KvGePoint3d> boundary() const;
  virtual KvDbFrameMode frameMode() const;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 protected:
  using KvDbKeptEntity::KvDbKeptEntity;
  /// What the variables' record says; frames are drawn where there is none.
  KvDbFrameMode frameModeOf(const wchar_t* dictionaryName) const;
  void drawFrame(KvGiWorldDraw& draw, const std::vector<KvGePoint3d>& corners) const;
  /// Draws inside (inverted: outside) the corners.
  void drawClipped(KvGiGeometry& geometry, const std::vector<KvGePoint3d>& corners,
                   const std::function<void()>& content) const;

 private:
  static constexpr int kShown = 1, kUsesClip = 4;
};

class KvDbWipeout : public KvDbRasterImage {
  KVRX_DECLARE(KvDbWipeout)
 public:
  KvDbWipeout() : KvDbRasterImage(L"WIPEOUT", L"AcDbWipeout") {}
  /// Covers a polygon of three or more corners in one plane, world coordinates, not closed. Null when they
  /// enclose no area.
  static std::unique_ptr<KvDbWipeout> make(const std::vector<KvGePoint3d>& corners);
  KvDbFrameMode frameMode() const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;
};

/// Sets whether the frames of a drawing's wipeouts are drawn.
Kvad::ErrorStatus kvdbSetWipeoutFrames(KvDbDatabase& database, KvDbFrameMode mode);
