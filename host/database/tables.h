#pragma once
// The symbol tables of a drawing and their records, but for blocks (block.h).
#include "host/database/symboltable.h"

namespace KvDb {
/// Line weights in hundredths of a millimetre; below 0 the special ones.
enum LineWeight : std::int16_t {
  kLnWtByLayer = -1,
  kLnWtByBlock = -2,
  kLnWtByLwDefault = -3,
  kLnWt000 = 0,
  kLnWt025 = 25
};
}  // namespace KvDb

/// Colour numbers with a meaning.
inline constexpr int kKvColorByBlock = 0;
inline constexpr int kKvColorByLayer = 256;

class KvDbLayerTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbLayerTableRecord)
  KVDB_FIELDS_DECLARE
 public:
  KvDbLayerTableRecord() = default;
  /// Colour number 1 to 255.
  int colorIndex() const { return color_ < 0 ? -color_ : color_; }
  Kvad::ErrorStatus setColorIndex(int color);
  KvDbObjectId linetypeObjectId() const { return linetype_; }
  void setLinetypeObjectId(KvDbObjectId id);
  KvDb::LineWeight lineWeight() const { return static_cast<KvDb::LineWeight>(lineWeight_); }
  void setLineWeight(KvDb::LineWeight weight);

  bool isOff() const { return color_ < 0; }
  bool isFrozen() const { return (flags_ & kFrozen) != 0; }
  bool isLocked() const { return (flags_ & kLocked) != 0; }
  bool isPlottable() const { return isPlottable_; }
  void setIsOff(bool off);
  void setIsFrozen(bool frozen) { setFlag(kFrozen, frozen); }
  void setIsLocked(bool locked) { setFlag(kLocked, locked); }
  void setIsPlottable(bool plottable);

 protected:
  /// eCannotBeErased for layer 0 and for one that an entity is on.
  Kvad::ErrorStatus subErase(bool erasing) override;
  const wchar_t* fileMarker() const override { return L"AcDbLayerTableRecord"; }

 private:
  static constexpr int kFrozen = 1, kLocked = 4;
  void setFlag(int flag, bool on);

  std::int16_t color_ = 7;  // negative: off
  KvDbObjectId linetype_;
  bool isPlottable_ = true;
  std::int16_t lineWeight_ = KvDb::kLnWtByLwDefault;
  KvDbObjectId plotStyle_, material_;
};

class KvDbLayerTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbLayerTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbLayerTableRecord::desc(); }
};

/// One element of a linetype: a dash (above 0), a gap (below 0) or a dot, with a text or shape where it has
/// one.
struct KvDbLinetypeDash {
  double length = 0;
  std::int16_t flags = 0;  ///< 1 absolute rotation, 2 text, 4 shape
  std::int16_t shapeNumber = 0;
  KvDbObjectId style;
  double scale = 1, rotation = 0;  ///< radians
  KvGeVector2d offset;
  CString text;
};

class KvDbLinetypeTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbLinetypeTableRecord)
 public:
  const CString& asciiDescription() const { return description_; }
  void setAsciiDescription(const CString& text);
  double patternLength() const { return patternLength_; }
  const std::vector<KvDbLinetypeDash>& dashes() const { return dashes_; }
  /// The pattern's length follows from the dashes.
  void setDashes(std::vector<KvDbLinetypeDash> dashes);

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 protected:
  const wchar_t* fileMarker() const override { return L"AcDbLinetypeTableRecord"; }

 private:
  CString description_;
  double patternLength_ = 0;
  std::vector<KvDbLinetypeDash> dashes_;
};

class KvDbLinetypeTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbLinetypeTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbLinetypeTableRecord::desc(); }
};

class KvDbTextStyleTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbTextStyleTableRecord)
  KVDB_FIELDS_DECLARE
 public:
  /// Fixed height in drawing units; 0: each text has its own.
  double textSize() const { return height_; }
  void setTextSize(double height);
  double xScale() const { return widthFactor_; }
  void setXScale(double factor);
  double obliquingAngle() const { return oblique_.radians(); }  ///< radians
  void setObliquingAngle(double angle);
  void setIsBackward(bool backward) { setGeneration(2, backward); }
  void setIsUpsideDown(bool upsideDown) { setGeneration(4, upsideDown); }
  double priorSize() const { return lastHeight_; }
  const CString& fileName() const { return fontFile_; }
  void setFileName(const CString& file);
  const CString& bigFontFileName() const { return bigFontFile_; }
  void setBigFontFileName(const CString& file);
  bool isBackward() const { return (generation_ & 2) != 0; }
  bool isUpsideDown() const { return (generation_ & 4) != 0; }
  /// The record names a file of shapes, not of letters; such records have no name.
  bool isShapeFile() const { return (standardFlags() & kShapeFile) != 0; }
  void setIsShapeFile(bool isShapeFile);

 protected:
  const wchar_t* fileMarker() const override { return L"AcDbTextStyleTableRecord"; }

 private:
  void setGeneration(int flag, bool on);
  static constexpr int kShapeFile = 1;

  double height_ = 0, widthFactor_ = 1, lastHeight_ = 2.5;
  KvDbAngle oblique_;
  std::int16_t generation_ = 0;
  CString fontFile_ = L"txt", bigFontFile_;
};

class KvDbTextStyleTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbTextStyleTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbTextStyleTableRecord::desc(); }
  /// The record of a shape file (names compared without ending and case); null when there is none.
  KvDbObjectId shapeFileRecord(const CString& file) const;

 protected:
  bool acceptsName(KvDbSymbolTableRecord& record) const override;
};

/// A dimension style. Its variables are kept group by group.
class KvDbDimStyleTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbDimStyleTableRecord)
 public:
  /// Replaces the variables' groups.
  void setVariables(const std::vector<KvDbStoredGroup>& groups);
  /// One variable has the group code of the record's flags: in files it stands behind them.
  void dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                    KvDxfResolver& resolver) override;

 protected:
  const wchar_t* fileMarker() const override { return L"AcDbDimStyleTableRecord"; }
};

class KvDbDimStyleTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbDimStyleTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbDimStyleTableRecord::desc(); }
};

/// A record whose groups are kept one by one and read by their codes, of which each stands for one value.
class KvDbStoredTableRecord : public KvDbSymbolTableRecord {
  KVRX_DECLARE(KvDbStoredTableRecord)
 public:
  /// The default where the record lacks the group. Angles in degrees, as in files.
  KvGePoint3d storedPoint(int code, const KvGePoint3d& standard) const;
  double storedReal(int code, double standard) const;
  int storedWhole(int code, int standard) const;
  /// Replaces the group, or puts it behind the others; the record must be open for write.
  void setStoredPoint(int code, const KvGePoint3d& point, int dimensions);
  void setStoredReal(int code, double value);
  void setStoredWhole(int code, int value);

 private:
  void store(const KvDxfGroup& group);
};

/// A named view: 10 centre and 40, 41 height and width in view coordinates, 11 direction to the eye, 12
/// target, 42 lens length, 43, 44 clipping planes, 50 twist in degrees, 71 view mode; flag 1: of a layout.
class KvDbViewTableRecord : public KvDbStoredTableRecord {
  KVRX_DECLARE(KvDbViewTableRecord)
 public:
  bool isOfLayout() const { return (flags_ & 1) != 0; }
  void setIsOfLayout(bool is);

 protected:
  const wchar_t* fileMarker() const override { return L"AcDbViewTableRecord"; }
};

class KvDbViewTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbViewTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbViewTableRecord::desc(); }
};

/// A named coordinate system: 10 origin, 11 and 12 the directions of X and Y, world coordinates.
class KvDbUCSTableRecord : public KvDbStoredTableRecord {
  KVRX_DECLARE(KvDbUCSTableRecord)
 protected:
  const wchar_t* fileMarker() const override { return L"AcDbUCSTableRecord"; }
};

class KvDbUCSTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbUCSTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbUCSTableRecord::desc(); }
};

/// A tiled viewport. Several may bear one name. 12 centre in view coordinates, 16 direction to the eye, 17
/// target, 40 height, 51 twist in degrees, and more.
class KvDbViewportTableRecord : public KvDbStoredTableRecord {
  KVRX_DECLARE(KvDbViewportTableRecord)
 protected:
  const wchar_t* fileMarker() const override { return L"AcDbViewportTableRecord"; }
};

class KvDbViewportTable : public KvDbSymbolTable {
  KVRX_DECLARE(KvDbViewportTable)
 public:
  const KvRxClass* recordClass() const override { return KvDbViewportTableRecord::desc(); }
};
