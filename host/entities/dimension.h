#pragma once
// Dimensions. One type of drawing files, a class for each kind; what is seen stands in a block of their own.
//
// Points are in world coordinates, angles in radians, counter-clockwise about the normal.
#include "host/entities/dimvars.h"

class KvDbDimension : public KvDbEntity {
  KVRX_DECLARE(KvDbDimension)
 public:
  /// As it was when the block was made; not above 0: not yet computed. Lengths are not scaled by DIMLFAC;
  /// angles in radians.
  double measurement() const { return measurement_; }
  /// Computes it anew and stores nothing. eDegenerateGeometry.
  Kvad::ErrorStatus getMeasurement(double& value) const;
  /// Makes the block (without `force` only where there is none) and the measurement. The dimension must be
  /// open for write and in a drawing: eNotInDatabase, eDegenerateGeometry.
  Kvad::ErrorStatus recomputeDimBlock(bool force = true);
  KvDbObjectId dimBlockId() const;

  /// Empty or "<>": the measured value; "<>" in it stands for that, "[]" for the value in alternate units;
  /// "\X" parts what stands above from what stands below the line; a blank: no text.
  const CString& dimensionText() const { return text_; }
  Kvad::ErrorStatus setDimensionText(const wchar_t* text);
  /// The value as the variables want it, in the codes of paragraph text.
  CString formattedMeasurement() const;
  KvDbObjectId dimensionStyle() const { return style_; }
  Kvad::ErrorStatus setDimensionStyle(KvDbObjectId style);
  /// The style's variables with this dimension's overrides.
  KvDbDimVars dimVars() const { return KvDbDimVars::ofEntity(*this, style_); }
  /// Writes what differs from the style as overrides.
  Kvad::ErrorStatus setDimVars(const KvDbDimVars& vars);
  // Single variables, for callers that need just these.
  int dimdec() const { return dimVars().whole(KvDbDimVar::Dec); }
  int dimadec() const { return dimVars().whole(KvDbDimVar::Adec); }
  double dimlfac() const { return dimVars().real(KvDbDimVar::Lfac); }
  double dimscale() const { return dimVars().real(KvDbDimVar::Scale); }
  Kvad::ErrorStatus setDimdec(int decimals) { return setVariable(KvDbDimVar::Dec, decimals); }
  Kvad::ErrorStatus setDimadec(int decimals) { return setVariable(KvDbDimVar::Adec, decimals); }
  Kvad::ErrorStatus setDimlfac(double factor) { return setVariable(KvDbDimVar::Lfac, factor); }
  Kvad::ErrorStatus setVariable(KvDbDimVar variable, double value);

  /// The middle of the text. Setting it takes the text out of its own place.
  KvGePoint3d textPosition() const;
  Kvad::ErrorStatus setTextPosition(const KvGePoint3d& position);
  bool isUsingDefaultTextPosition() const { return (type_ & kUserPlace) == 0; }
  Kvad::ErrorStatus useDefaultTextPosition();
  double textRotation() const { return textRotation_.radians(); }
  Kvad::ErrorStatus setTextRotation(double angle);
  /// Which way counts as level: the angle of that direction in the plane, against which texts are turned and
  /// ordinates measured. Files hold it with the other sign (group 51).
  double horizontalRotation() const { return -horizontal_.radians(); }
  Kvad::ErrorStatus setHorizontalRotation(double angle);
  KvGeVector3d normal() const { return normal_; }
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  double elevation() const { return textMiddle_.z; }

  /// Angles are measured, not lengths.
  virtual bool isAngular() const { return false; }
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  /// What stands in the block.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;
  bool knowsMarker(std::wstring_view marker) const override;

 protected:
  explicit KvDbDimension(std::int16_t type) : type_(static_cast<std::int16_t>(type | kOwnBlock)) {}
  friend class KvDbDimLayout;
  /// A text with the measured value in its places.
  CString contentsOf(const CString& text) const;
  virtual KvDbFields ownFields() const = 0;
  /// Points that go with the dimension, world coordinates.
  virtual std::vector<KvGePoint3d*> points() = 0;
  virtual void turnBy(double) {}
  virtual bool measure(double& value) const = 0;
  /// Draws the parts of the block; false for points from which nothing can be drawn.
  virtual bool layOut(class KvDbDimLayout& layout) const = 0;
  template <class T>
  Kvad::ErrorStatus setPoint(T& place, const T& value) {
    assertWriteEnabled();
    place = value;
    return Kvad::eOk;
  }

  static constexpr int kOwnBlock = 32, kOrdinateX = 64, kUserPlace = 128;
  std::int16_t type_;
  KvGePoint3d definition_, third_, fourth_, fifth_, sixth_;  // groups 10, 13, 14, 15, 16
  double leader_ = 0;

 private:
  static const KvDbField kFields[];
  mutable KvDbObjectId block_;
  CString blockName_;       // as the file has it, while no such block is known
  KvGePoint3d textMiddle_;  // in the plane's coordinates
  CString text_;
  std::int16_t attachment_ = 5, spacingStyle_ = 1;
  double spacing_ = 1, measurement_ = 0;
  KvDbAngle textRotation_, horizontal_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
  KvDbObjectId style_;
};

#define KVDB_DIMENSION_DECLARE(type)                 \
  KVRX_DECLARE(type)                                 \
 protected:                                          \
  KvDbFields ownFields() const override;             \
  std::vector<KvGePoint3d*> points() override;       \
  bool measure(double& value) const override;        \
  bool layOut(KvDbDimLayout& layout) const override; \
                                                     \
 private:                                            \
  static const KvDbField kOwnFields[];

/// Between two points, along the line through them.
class KvDbAlignedDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDbAlignedDimension)
 public:
  KvDbAlignedDimension() : KvDbDimension(1) {}
  KvDbAlignedDimension(const KvGePoint3d& xLine1, const KvGePoint3d& xLine2, const KvGePoint3d& dimLine,
                       const wchar_t* text = nullptr, KvDbObjectId style = {});
  KvGePoint3d xLine1Point() const { return third_; }
  KvGePoint3d xLine2Point() const { return fourth_; }
  KvGePoint3d dimLinePoint() const { return definition_; }
  Kvad::ErrorStatus setXLine1Point(const KvGePoint3d& point) { return setPoint(third_, point); }
  Kvad::ErrorStatus setXLine2Point(const KvGePoint3d& point) { return setPoint(fourth_, point); }
  Kvad::ErrorStatus setDimLinePoint(const KvGePoint3d& point) { return setPoint(definition_, point); }
  /// Slope of the extension lines; 0: upright on the dimension line.
  double oblique() const { return oblique_.radians(); }
  Kvad::ErrorStatus setOblique(double angle) { return setPoint(oblique_, KvDbAngle::ofRadians(angle)); }

 private:
  KvDbAngle oblique_;
};

/// Between two points, along a given direction.
class KvDbRotatedDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDbRotatedDimension)
 public:
  KvDbRotatedDimension() : KvDbDimension(0) {}
  KvDbRotatedDimension(double rotation, const KvGePoint3d& xLine1, const KvGePoint3d& xLine2,
                       const KvGePoint3d& dimLine, const wchar_t* text = nullptr, KvDbObjectId style = {});
  KvGePoint3d xLine1Point() const { return third_; }
  KvGePoint3d xLine2Point() const { return fourth_; }
  KvGePoint3d dimLinePoint() const { return definition_; }
  Kvad::ErrorStatus setXLine1Point(const KvGePoint3d& point) { return setPoint(third_, point); }
  Kvad::ErrorStatus setXLine2Point(const KvGePoint3d& point) { return setPoint(fourth_, point); }
  Kvad::ErrorStatus setDimLinePoint(const KvGePoint3d& point) { return setPoint(definition_, point); }
  double rotation() const { return rotation_.radians(); }
  Kvad::ErrorStatus setRotation(double angle) { return setPoint(rotation_, KvDbAngle::ofRadians(angle)); }
  double oblique() const { return oblique_.radians(); }
  Kvad::ErrorStatus setOblique(double angle) { return setPoint(oblique_, KvDbAngle::ofRadians(angle)); }

 protected:
  void turnBy(double angle) override { rotation_ = KvDbAngle::ofRadians(rotation() + angle); }

 private:
  KvDbAngle rotation_, oblique_;
};

/// The angle between two lines.
class KvDb2LineAngularDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDb2LineAngularDimension)
 public:
  KvDb2LineAngularDimension() : KvDbDimension(2) {}
  KvGePoint3d xLine1Start() const { return third_; }
  KvGePoint3d xLine1End() const { return fourth_; }
  KvGePoint3d xLine2Start() const { return fifth_; }
  KvGePoint3d xLine2End() const { return definition_; }
  KvGePoint3d arcPoint() const;
  Kvad::ErrorStatus setXLine1Start(const KvGePoint3d& point) { return setPoint(third_, point); }
  Kvad::ErrorStatus setXLine1End(const KvGePoint3d& point) { return setPoint(fourth_, point); }
  Kvad::ErrorStatus setXLine2Start(const KvGePoint3d& point) { return setPoint(fifth_, point); }
  Kvad::ErrorStatus setXLine2End(const KvGePoint3d& point) { return setPoint(definition_, point); }
  Kvad::ErrorStatus setArcPoint(const KvGePoint3d& point);
  bool isAngular() const override { return true; }
};

/// The angle at a centre between two points.
class KvDb3PointAngularDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDb3PointAngularDimension)
 public:
  KvDb3PointAngularDimension() : KvDbDimension(5) {}
  KvGePoint3d xLine1Point() const { return third_; }
  KvGePoint3d xLine2Point() const { return fourth_; }
  KvGePoint3d centerPoint() const { return fifth_; }
  KvGePoint3d arcPoint() const { return definition_; }
  Kvad::ErrorStatus setXLine1Point(const KvGePoint3d& point) { return setPoint(third_, point); }
  Kvad::ErrorStatus setXLine2Point(const KvGePoint3d& point) { return setPoint(fourth_, point); }
  Kvad::ErrorStatus setCenterPoint(const KvGePoint3d& point) { return setPoint(fifth_, point); }
  Kvad::ErrorStatus setArcPoint(const KvGePoint3d& point) { return setPoint(definition_, point); }
  bool isAngular() const override { return true; }
};

class KvDbDiametricDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDbDiametricDimension)
 public:
  KvDbDiametricDimension() : KvDbDimension(3) {}
  KvDbDiametricDimension(const KvGePoint3d& chord, const KvGePoint3d& farChord, double leaderLength,
                         const wchar_t* text = nullptr, KvDbObjectId style = {});
  KvGePoint3d chordPoint() const { return fifth_; }
  KvGePoint3d farChordPoint() const { return definition_; }
  double leaderLength() const { return leader_; }
  Kvad::ErrorStatus setChordPoint(const KvGePoint3d& point) { return setPoint(fifth_, point); }
  Kvad::ErrorStatus setFarChordPoint(const KvGePoint3d& point) { return setPoint(definition_, point); }
  Kvad::ErrorStatus setLeaderLength(double length) { return setPoint(leader_, length); }
};

class KvDbRadialDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDbRadialDimension)
 public:
  KvDbRadialDimension() : KvDbDimension(4) {}
  KvDbRadialDimension(const KvGePoint3d& center, const KvGePoint3d& chord, double leaderLength,
                      const wchar_t* text = nullptr, KvDbObjectId style = {});
  KvGePoint3d center() const { return definition_; }
  KvGePoint3d chordPoint() const { return fifth_; }
  double leaderLength() const { return leader_; }
  Kvad::ErrorStatus setCenter(const KvGePoint3d& point) { return setPoint(definition_, point); }
  Kvad::ErrorStatus setChordPoint(const KvGePoint3d& point) { return setPoint(fifth_, point); }
  Kvad::ErrorStatus setLeaderLength(double length) { return setPoint(leader_, length); }
};

/// The X or Y distance of a point from an origin.
class KvDbOrdinateDimension : public KvDbDimension {
  KVDB_DIMENSION_DECLARE(KvDbOrdinateDimension)
 public:
  KvDbOrdinateDimension() : KvDbDimension(6) {}
  KvDbOrdinateDimension(bool usesXAxis, const KvGePoint3d& definingPoint, const KvGePoint3d& leaderEndPoint,
                        const wchar_t* text = nullptr, KvDbObjectId style = {});
  KvGePoint3d origin() const { return definition_; }
  KvGePoint3d definingPoint() const { return third_; }
  KvGePoint3d leaderEndPoint() const { return fourth_; }
  Kvad::ErrorStatus setOrigin(const KvGePoint3d& point) { return setPoint(definition_, point); }
  Kvad::ErrorStatus setDefiningPoint(const KvGePoint3d& point) { return setPoint(third_, point); }
  Kvad::ErrorStatus setLeaderEndPoint(const KvGePoint3d& point) { return setPoint(fourth_, point); }
  bool isUsingXAxis() const { return (type_ & kOrdinateX) != 0; }
  Kvad::ErrorStatus useXAxis(bool on);

 protected:
  void turnBy(double angle) override { setHorizontalRotation(horizontalRotation() + angle); }
};
