#pragma once
// The reference to a block: where, how large and how turned its entities appear; its attributes.
#include "host/database/entity.h"

/// Factors along three axes.
struct KvGeScale3d {
  double sx = 1, sy = 1, sz = 1;
  friend bool operator==(const KvGeScale3d&, const KvGeScale3d&) = default;
};

/// Walks owned entities. The caller deletes it.
class KvDbObjectIterator {
 public:
  explicit KvDbObjectIterator(KvDbObjectIdArray ids) : ids_(std::move(ids)) {}
  void start() { at_ = 0; }
  bool done() const { return at_ >= ids_.length(); }
  void step() { ++at_; }
  /// Null at the end.
  KvDbObjectId objectId() const { return done() ? KvDbObjectId() : ids_[at_]; }
  /// As it can be read, not opened; null at the end.
  KvDbEntity* entity() const;

 private:
  KvDbObjectIdArray ids_;
  int at_ = 0;
};

/// Positions are in world coordinates, angles in radians about the normal. A reference may stand in rows and
/// columns; their spacing runs along its own turned axes, unscaled.
class KvDbBlockReference : public KvDbEntity, public KvDbSequence {
  KVRX_DECLARE(KvDbBlockReference)
 public:
  KvDbBlockReference() = default;
  KvDbBlockReference(const KvGePoint3d& position, KvDbObjectId block);

  /// Null when there is no such block.
  KvDbObjectId blockTableRecord() const;
  /// The block's name; of a block that isn't there, as the file has it.
  CString blockName() const;
  /// eNullObjectId, eWrongObjectType.
  Kvad::ErrorStatus setBlockTableRecord(KvDbObjectId block);
  KvGePoint3d position() const;
  Kvad::ErrorStatus setPosition(const KvGePoint3d& position);
  double rotation() const { return rotation_.radians(); }
  Kvad::ErrorStatus setRotation(double angle);
  KvGeScale3d scaleFactors() const { return {scaleX_, scaleY_, scaleZ_}; }
  /// eInvalidInput for a factor of 0.
  Kvad::ErrorStatus setScaleFactors(const KvGeScale3d& scale);
  KvGeVector3d normal() const { return normal_; }
  Kvad::ErrorStatus setNormal(const KvGeVector3d& normal);
  /// From the block's coordinates to the world; of the first row and column.
  KvGeMatrix3d blockTransform() const;
  /// Any map under which the block's axes stay at right angles; eCannotScaleNonUniformly.
  Kvad::ErrorStatus setBlockTransform(const KvGeMatrix3d& transform);

  int rows() const { return rows_; }
  int columns() const { return columns_; }
  double rowSpacing() const { return rowSpacing_; }
  double columnSpacing() const { return columnSpacing_; }
  /// eInvalidInput for fewer than one row or column.
  Kvad::ErrorStatus setArray(int rows, int columns, double rowSpacing, double columnSpacing);

  /// Takes an attribute over; it is open for write afterwards when the reference is in a drawing, and waits
  /// otherwise. eWrongObjectType, eNullEntityPointer.
  Kvad::ErrorStatus appendAttribute(KvDbObjectId& id, KvDbEntity* attribute);
  Kvad::ErrorStatus appendAttribute(KvDbEntity* attribute);
  /// The caller deletes it.
  KvDbObjectIterator* attributeIterator() const;

  KvDbSequence* sequence() override { return this; }
  /// Of what is seen. eInvalidExtents for a block without entities.
  Kvad::ErrorStatus getGeomExtents(KvDbExtents& extents) const override;
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;
  /// Copies of the block's entities in their places, with their own properties; attributes are left out.
  /// Curves become others where the scale wants it (circles ellipses). eCannotExplodeEntity.
  Kvad::ErrorStatus explode(KvDbVoidPtrArray& parts) const override;
  bool subWorldDraw(KvGiWorldDraw* draw) override;

  void dwgOutFields(KvDbDwgFiler& filer) const override;
  void dwgInFields(KvDbDwgFiler& filer) override;
  void dxfOutFields(KvDxfWriter& writer) const override;
  bool knowsMarker(std::wstring_view marker) const override;
  bool dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) override;

 protected:
  KvDbEntity& sequenceOwner() override { return *this; }

 private:
  KvGeMatrix3d cellTransform(int row, int column) const;
  /// Calls with the transform of each row and column that has to be looked at.
  void forCells(bool onlyCorners, const std::function<void(const KvGeMatrix3d&)>& visit) const;

  mutable KvDbObjectId block_;
  CString name_;          // as the file has it, while no block of that name is known
  KvGePoint3d position_;  // in the plane's coordinates
  double scaleX_ = 1, scaleY_ = 1, scaleZ_ = 1, rowSpacing_ = 0, columnSpacing_ = 0;
  KvDbAngle rotation_;
  KvGeVector3d normal_ = KvGeVector3d::kZAxis;
  std::int16_t rows_ = 1, columns_ = 1;
  bool isArrayed_ = false, saysFollows_ = false;  // as the file had it
};

/// A copy outside any drawing, owned entities with it, without links to others; null for what cannot be
/// copied.
std::unique_ptr<KvDbEntity> kvdbCopyOf(const KvDbEntity& entity);
/// Appends the entity moved by any affine map, as other entities where its class doesn't bear it. The entity
/// is used up.
void kvdbAppendTransformed(std::unique_ptr<KvDbEntity> entity, const KvGeMatrix3d& matrix,
                           KvDbVoidPtrArray& parts);
