#pragma once
// Paragraph text. Its inline codes are told in host/lettering/paragraph.h.
#include <functional>

#include "host/base/kvarray.h"
#include "host/database/entity.h"
#include "host/lettering/paragraph.h"

/// A stretch of one look in one line, as explodeFragments hands it out. World coordinates.
struct KvDbMTextFragment {
  KvGePoint3d location;  ///< the base line's start
  KvGeVector3d normal, direction;
  CString text;
  KvGiTextLook look;
  double width = 0;
  int colorIndex = -1;    ///< -1: the text's own
  std::int64_t rgb = -1;  ///< 0xRRGGBB, before the index
};

/// May be used outside any drawing. Points are in world coordinates, the direction is that of the lines.
class KvDbMText : public KvDbEntity {
  KVRX_DECLARE(KvDbMText)
 public:
  enum AttachmentPoint {
    kTopLeft = 1,
    kTopCenter,
    kTopRight,
    kMiddleLeft,
    kMiddleCenter,
    kMiddleRight,
    kBottomLeft,
    kBottomCenter,
    kBottomRight
  };
  enum LineSpacingStyle { kAtLeast = 1, kExactly = 2 };

  const CString& contents() const { return contents_; }
  Kvad::ErrorStatus setContents(const wchar_t* contents);
  /// The contents without their codes, paragraphs ended by line feeds.
  CString plainText() const;
  KvGePoint3d location() const { return location_; }
  Kvad::ErrorStatus setLocation(const KvGePoint3d& location);
  KvGeVector3d normal() const { return normal_; }
  /// eInvalidInput for a vector of no length, here and below. The direction is brought into the plane.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  KvGeVector3d direction() const;
  Kvad::ErrorStatus setDirection(const KvGeVector3d& direction);
  /// Radians about the normal, from the X axis of the plane (arbitrary-axis rule of drawing files).
  double rotation() const;
  Kvad::ErrorStatus setRotation(double angle);
  /// Where lines are broken; 0: nowhere. eInvalidInput below 0.
  double width() const { return width_; }
  Kvad::ErrorStatus setWidth(double width);
  double textHeight() const { return height_; }
  Kvad::ErrorStatus setTextHeight(double height);
  AttachmentPoint attachment() const { return static_cast<AttachmentPoint>(attachment_); }
  Kvad::ErrorStatus setAttachment(AttachmentPoint attachment);
  KvDbObjectId textStyle() const { return style_; }
  Kvad::ErrorStatus setTextStyle(KvDbObjectId style);
  LineSpacingStyle lineSpacingStyle() const { return static_cast<LineSpacingStyle>(spacingStyle_); }
  Kvad::ErrorStatus setLineSpacingStyle(LineSpacingStyle style);
  double lineSpacingFactor() const { return spacing_; }
  /// eInvalidInput outside 0.25 to 4.
  Kvad::ErrorStatus setLineSpacingFactor(double factor);
  /// The fill behind the text: 0 none, 1 a colour, 2 the background's.
  bool hasBackgroundFill() const { return (fill_ & 3) != 0; }
  /// A fill of a colour (by block and by layer mean the text's) or of the background's, `border` times the
  /// text height large round each line: 1 to 5. eInvalidInput.
  Kvad::ErrorStatus setBackgroundFill(const KvCmEntityColor& color, double border);
  Kvad::ErrorStatus setBackgroundFillAsGround(double border);

  /// Columns, as drawing files since 2018 tell them; off for most texts. (In older files each column is a
  /// text of its own.)
  KvLtColumns columns() const;

  /// The longest line; from the top of the first line's capitals to the last base line.
  double actualWidth() const { return layout().actualWidth; }
  double actualHeight() const { return layout().actualHeight; }
  KvLtParagraphs layout() const;

  /// Calls `take` for each fragment in reading order until it answers false.
  void explodeFragments(const std::function<bool(const KvDbMTextFragment&)>& take) const;
  /// A text for each fragment, a solid for each bar of a fraction; entries are KvDbEntity*, the caller owns
  /// them. eNoContent for an empty text.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& entities) const override;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// Mirroring keeps the text readable. eDegenerateGeometry.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;
  void dxfInEnd(KvDxfResolver& resolver) override;

 private:
  KvGiTextLook look() const;
  /// Lengths of the columns' record, along and across the lines.
  void scaleColumns(double along, double across);
  void drawBackground(KvGiWorldDraw& draw, const KvLtParagraphs& laid) const;
  KvGePoint3d toWorld(KvGePoint2d p) const;

  KvGePoint3d location_;
  double height_ = 0.2, width_ = 0;
  std::int16_t attachment_ = kTopLeft, drawingDirection_ = 1;
  CString contents_;
  KvDbObjectId style_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis, direction_ = KvGeVector3d::kXAxis;
  std::int16_t spacingStyle_ = kAtLeast;
  double spacing_ = 1;
  // The fill behind it: kept as the file has it.
  std::int32_t fill_ = 0;
  std::int32_t fillColor_ = -1, fillRgb_ = -1;
  double fillScale_ = 0;
  // As the file had it.
  double rotationAsRead_ = 0;
  bool hasRotationAsRead_ = false, hasSpacingAsRead_ = false, hasDirectionAsRead_ = false;
};
