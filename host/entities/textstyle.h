#pragma once
// Text styles by value: how a style's record makes letters look, and the size of a text in a style.
#include "host/database/tables.h"
#include "host/lettering/textlook.h"

class KvDbDatabase;

/// The look of a style's record: fonts, width factor, slope, fixed height (1 where the record has none). A
/// null id, or one of another class, gives the standard lettering.
KvGiTextLook kvdbLookOfStyle(KvDbObjectId style);

/// A text style as drawing and measuring take it. Lengths are in drawing units, angles in radians.
class KvGiTextStyle {
 public:
  KvGiTextStyle() = default;
  explicit KvGiTextStyle(const KvGiTextLook& look) : look_(look) {}

  /// Takes name and id of the record; its values come with loadStyleRec. eNullObjectId, eNotThatKindOfClass.
  Kvad::ErrorStatus fromKvDbTextStyle(KvDbObjectId id);
  /// The same by name, in a drawing (null: the working one). eKeyNotFound.
  Kvad::ErrorStatus fromKvDbTextStyle(const wchar_t* name, KvDbDatabase* database = nullptr);
  /// Loads the record's values. eNullObjectId when none was taken.
  Kvad::ErrorStatus loadStyleRec(KvDbDatabase* database = nullptr);

  const CString& styleName() const { return name_; }
  KvDbObjectId styleId() const { return id_; }
  const KvGiTextLook& look() const { return look_; }
  double textSize() const { return look_.height; }
  void setTextSize(double size) { look_.height = size; }
  double xScale() const { return look_.widthFactor; }
  void setXScale(double factor) { look_.widthFactor = factor; }
  double obliquingAngle() const { return look_.oblique; }
  void setObliquingAngle(double angle) { look_.oblique = angle; }
  double trackingPercent() const { return look_.trackingFactor; }
  void setTrackingPercent(double factor) { look_.trackingFactor = factor; }
  const CString& fileName() const { return look_.fontFile; }
  void setFileName(const wchar_t* file) { look_.fontFile = file; }
  const CString& bigFontFileName() const { return look_.bigFontFile; }
  void setBigFontFileName(const wchar_t* file) { look_.bigFontFile = file; }

  /// The box of a text whose base line begins at (0, 0): from the start (or what reaches farther left) to the
  /// last letter's edge, in height what the letters cover. `length` characters are looked at, all for -1;
  /// with `raw` codes are letters. An empty text has a box of no size.
  void extentsBox(const wchar_t* text, bool raw, int length, KvGePoint2d& low, KvGePoint2d& high) const;

 private:
  CString name_;
  KvDbObjectId id_;
  KvGiTextLook look_;
};
