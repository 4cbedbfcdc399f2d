#pragma once
// Leaders: a line with an arrow that leads to a note.
#include "host/entities/dimvars.h"
#include "host/entities/keptentity.h"

/// Points are in world coordinates. The look follows a dimension style and overrides, as with dimensions.
class KvDbLeader : public KvDbPartsEntity {
  KVRX_DECLARE(KvDbLeader)
 public:
  KvDbLeader() : KvDbPartsEntity(L"LEADER", L"AcDbLeader") {}
  int numVertices() const { return static_cast<int>(all(10).size()); }
  /// eInvalidIndex.
  Kvad::ErrorStatus getVertexAt(int index, KvGePoint3d& vertex) const;
  Kvad::ErrorStatus setVertexAt(int index, const KvGePoint3d& vertex);
  Kvad::ErrorStatus appendVertex(const KvGePoint3d& vertex);
  bool hasArrowHead() const { return whole(71, 1) != 0; }
  Kvad::ErrorStatus setHasArrowHead(bool has) { return putWhole(71, has); }
  /// A smooth curve through the vertices, which leaves the first and reaches the last along the straight
  /// segments there.
  bool isSplined() const { return whole(72) != 0; }
  Kvad::ErrorStatus setSplined(bool isSplined) { return putWhole(72, isSplined); }
  /// The last segment is the level piece in front of the text.
  bool hasHookLine() const { return whole(75) != 0; }
  /// The text, tolerance or block that it leads to; null for none.
  KvDbObjectId annotationId() const;
  KvDbObjectId dimensionStyle() const;
  /// eInvalidInput for an id that is no dimension style's.
  Kvad::ErrorStatus setDimensionStyle(KvDbObjectId style);
  KvDbDimVars dimVars() const { return KvDbDimVars::ofEntity(*this, dimensionStyle()); }
  /// eCannotScaleNonUniformly.
  Kvad::ErrorStatus transformBy(const KvGeMatrix3d& matrix) override;

 protected:
  Parts makeParts() const override;

 private:
  std::vector<KvGePoint3d> path(const KvDbDimVars& vars, double scale) const;
};
