#pragma once
// One line of text.
#include "host/database/entity.h"
#include "host/lettering/textlook.h"

namespace KvDb {
enum TextHorzMode {
  kTextLeft = 0,
  kTextCenter = 1,
  kTextRight = 2,
  kTextAlign = 3,
  kTextMid = 4,
  kTextFit = 5
};
enum TextVertMode { kTextBase = 0, kTextBottom = 1, kTextVertMid = 2, kTextTop = 3 };
}  // namespace KvDb

/// Whether mirroring turns texts into mirror writing: the variable `MIRRTEXT` of a drawing (null: the working
/// one); false without one.
bool kvdbMirrText(const KvDbDatabase* database);

/// Points are in world coordinates; the text lies in the plane of its normal. Angles are in radians: the
/// rotation counter-clockwise about the normal from the plane's X axis, the oblique angle clockwise from
/// upright.
class KvDbText : public KvDbEntity {
  KVRX_DECLARE(KvDbText)
 public:
  KvDbText() = default;
  /// A null style is the drawing's standard one.
  KvDbText(const KvGePoint3d& position, const wchar_t* text, KvDbObjectId style = {}, double height = 0.2,
           double rotation = 0);

  /// The base line's start. For justified texts it follows from the alignment point (adjustAlignment).
  KvGePoint3d position() const;
  Kvad::ErrorStatus setPosition(const KvGePoint3d& position);
  /// What justified texts are placed by; aligned and fitted ones run from the position to it.
  KvGePoint3d alignmentPoint() const;
  Kvad::ErrorStatus setAlignmentPoint(const KvGePoint3d& point);
  bool isDefaultAlignment() const {
    return horizontalMode_ == KvDb::kTextLeft && verticalMode_ == KvDb::kTextBase;
  }
  /// Brings the position (of fitted texts the width factor, of aligned ones the height too) to what the
  /// alignment point says. `database` null: the text's own. eInvalidInput for a text left-justified on its
  /// base line, which has nothing to adjust.
  Kvad::ErrorStatus adjustAlignment(const KvDbDatabase* database = nullptr);

  const CString& textString() const { return text_; }
  Kvad::ErrorStatus setTextString(const wchar_t* text);
  KvDbObjectId textStyle() const { return style_; }
  Kvad::ErrorStatus setTextStyle(KvDbObjectId style);
  double height() const { return height_; }
  /// eInvalidInput unless above 0 and finite.
  Kvad::ErrorStatus setHeight(double height);
  double widthFactor() const { return widthFactor_; }
  Kvad::ErrorStatus setWidthFactor(double factor);
  double oblique() const { return oblique_.radians(); }
  /// eInvalidInput beyond 85 degrees.
  Kvad::ErrorStatus setOblique(double angle);
  double rotation() const { return rotation_.radians(); }
  Kvad::ErrorStatus setRotation(double angle);
  KvDb::TextHorzMode horizontalMode() const { return static_cast<KvDb::TextHorzMode>(horizontalMode_); }
  Kvad::ErrorStatus setHorizontalMode(KvDb::TextHorzMode mode);
  KvDb::TextVertMode verticalMode() const { return static_cast<KvDb::TextVertMode>(verticalMode_); }
  Kvad::ErrorStatus setVerticalMode(KvDb::TextVertMode mode);
  /// Written backwards, from the position to the left.
  bool isMirroredInX() const { return (generation_ & kBackward) != 0; }
  Kvad::ErrorStatus mirrorInX(bool mirrored);
  /// Written upside down, below the position.
  bool isMirroredInY() const { return (generation_ & kUpsideDown) != 0; }
  Kvad::ErrorStatus mirrorInY(bool mirrored);
  KvGeVector3d normal() const { return normal_; }
  /// The position stays where it is. eInvalidInput for a vector of no length.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);

  /// The style's look with the text's own height, factor, slope.
  KvGiTextLook look() const;
  /// From the start to the last letter's edge.
  double textWidth() const;

  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// Mirroring keeps the text readable in the mirrored box unless kvdbMirrText. eDegenerateGeometry.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 protected:
  /// What is drawn; attribute definitions show their tag.
  virtual const CString& shownText() const { return text_; }
  /// Attributes have their vertical mode in a section of their own.
  virtual bool hasOwnVerticalMode() const { return true; }

  std::int16_t verticalMode_ = 0;

 private:
  /// Where and how the text really stands, with the metrics of this host.
  struct Placing {
    KvGePoint3d start;  // in the plane's coordinates
    double angle = 0;
    KvGiTextLook look;
  };
  Placing placing() const;
  void moveTo(const KvGePoint3d& start, const KvGePoint3d& alignment, const KvGeVector3d& normal);

  static constexpr int kBackward = 2, kUpsideDown = 4;
  static const KvDbField kFields[], kFieldsWithMode[];

  double thickness_ = 0;
  KvGePoint3d position_, alignment_;  // in the plane's coordinates
  double height_ = 0.2;
  CString text_;
  KvDbAngle rotation_, oblique_;
  double widthFactor_ = 1;
  KvDbObjectId style_;
  std::int16_t generation_ = 0, horizontalMode_ = 0;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};
