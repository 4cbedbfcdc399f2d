#pragma once
// A sign of a shape file.
#include "host/database/entity.h"

/// Points are in world coordinates; the sign lies in the plane of its normal. Angles are in radians: the
/// rotation counter-clockwise about the normal from the plane's X axis, the oblique angle clockwise from
/// upright. Drawing files name the shape only; which file it is of follows from the drawing's records of
/// shape files.
class KvDbShape : public KvDbEntity {
  KVRX_DECLARE(KvDbShape)
  KVDB_FIELDS_DECLARE
 public:
  KvDbShape() = default;
  /// `size`: drawing units for one unit of the shape.
  KvDbShape(const KvGePoint3d& position, double size, const wchar_t* name, double rotation = 0,
            double widthFactor = 1);

  KvGePoint3d position() const { return position_; }
  Kvad::ErrorStatus setPosition(const KvGePoint3d& position);
  double size() const { return size_; }
  /// eInvalidInput unless above 0 and finite, here and for the width factor.
  Kvad::ErrorStatus setSize(double size);
  const CString& name() const { return name_; }
  Kvad::ErrorStatus setName(const wchar_t* name);
  double rotation() const { return rotation_.radians(); }
  Kvad::ErrorStatus setRotation(double angle);
  double widthFactor() const { return widthFactor_; }
  Kvad::ErrorStatus setWidthFactor(double factor);
  double oblique() const { return oblique_.radians(); }
  /// eInvalidInput beyond 85 degrees.
  Kvad::ErrorStatus setOblique(double angle);
  double thickness() const { return thickness_; }
  Kvad::ErrorStatus setThickness(double thickness);
  KvGeVector3d normal() const { return normal_; }
  /// eInvalidInput for a vector of no length.
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);

  /// The record of the shape file that has a shape of the name: the first of the drawing's whose file is
  /// found. Null when none has it.
  KvDbObjectId styleId() const;
  /// The number in that file; 0 without one.
  int shapeNumber() const;
  /// Names the shape of a number in a record's file. eInvalidInput for a record of no shape file,
  /// eKeyNotFound when the file isn't found or has no such shape.
  Kvad::ErrorStatus setShape(KvDbObjectId style, int number);

  /// eInvalidExtents when the shape isn't found.
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  /// eDegenerateGeometry; a transform that leaves no sign of this kind (a skew across it) is taken as near as
  /// one does.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

 private:
  KvGeMatrix3d toWorld() const;

  double thickness_ = 0;
  KvGePoint3d position_;
  double size_ = 1;
  CString name_;
  KvDbAngle rotation_, oblique_;
  double widthFactor_ = 1;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
};
