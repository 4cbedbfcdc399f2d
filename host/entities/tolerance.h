#pragma once
// Frames of geometric tolerances.
#include "host/entities/dimvars.h"
#include "host/entities/keptentity.h"

/// Rows of framed cells. Height, gap, colours and lettering follow a dimension style and overrides. The
/// location is the middle of the first row's left edge, in world coordinates.
class KvDbFcf : public KvDbPartsEntity {
  KVRX_DECLARE(KvDbFcf)
 public:
  KvDbFcf() : KvDbPartsEntity(L"TOLERANCE", L"AcDbFcf") {}
  /// Rows are parted by "^J", cells by "%%v"; "{\Fgdt;j}" is a symbol by its letter.
  KvDbFcf(const wchar_t* text, const KvGePoint3d& location, const KvGeVector3d& normal = KvGeVector3d::kZAxis,
          const KvGeVector3d& direction = KvGeVector3d::kXAxis);
  CString text() const;
  Kvad::ErrorStatus setText(const wchar_t* text);
  KvGePoint3d location() const { return point(10); }
  KvGeVector3d normal() const { return point(210, {0, 0, 1}).asVector(); }
  KvGeVector3d direction() const { return point(11, {1, 0, 0}).asVector(); }
  KvDbObjectId dimensionStyle() const;
  /// eInvalidInput for an id that is no dimension style's.
  Kvad::ErrorStatus setDimensionStyle(KvDbObjectId style);
  KvDbDimVars dimVars() const { return KvDbDimVars::ofEntity(*this, dimensionStyle()); }
  /// The cells of each row that show something, in the codes of paragraph text.
  std::vector<std::vector<CString>> cells() const;
  /// Letters keep their size. eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  Parts makeParts() const override;
};
