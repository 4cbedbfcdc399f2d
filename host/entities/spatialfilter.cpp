#include "host/entities/internal/spatialfilter.h"

#include "host/database/dictionary.h"

namespace {

const KvDbObject* entryOf(const KvDbObject* dictionary, const wchar_t* name) {
  const KvDbDictionary* known = KvDbDictionary::cast(dictionary);
  KvDbObjectId id;
  if (!known || known->getAt(name, id) != Kvad::eOk || !id.isValid()) return nullptr;
  return id.stub()->object;
}

/// Twelve numbers, row by row.
KvGeMatrix3d matrixOf(const std::vector<double>& numbers, std::size_t first) {
  KvGeMatrix3d matrix;
  for (std::size_t i = 0; i < 12; ++i) matrix.entry[i / 4][i % 4] = numbers[first + i];
  return matrix;
}

}  // namespace

KvDbSpatialFilter kvdbSpatialFilterOf(const KvDbEntity& reference) {
  constexpr std::size_t kMatrix = 12;
  KvDbSpatialFilter filter;
  const KvDbObjectId extension = reference.extensionDictionary();
  if (!extension.isValid()) return filter;
  const KvDbObject* object = entryOf(entryOf(extension.stub()->object, L"ACAD_FILTER"), L"SPATIAL");
  if (!object) return filter;
  // Groups: 10 the corners, 71 on or off, 72 and 73 front and back planes with their distances in 40, then
  // the inverse of the reference's transform when it was clipped, then the map into the boundary's plane.
  std::vector<double> numbers;
  for (const KvDbUnknownSection& section : object->unknownSections()) {
    if (section.marker.view() != L"AcDbSpatialFilter") continue;
    for (const KvDxfGroup& group : section.groups) {
      if (group.code == 10) filter.points_.push_back(kvge::planar(group.point));
      if (group.code == 71) filter.isOn_ = group.integer != 0;
      if (group.code == 40) numbers.push_back(group.real());
    }
  }
  if (numbers.size() < 2 * kMatrix) return KvDbSpatialFilter();
  const std::size_t first = numbers.size() - 2 * kMatrix;
  const KvGeMatrix3d fromWorld = matrixOf(numbers, first), toPlane = matrixOf(numbers, first + kMatrix);
  filter.toPlane_ = toPlane * fromWorld.inverse();
  return filter;
}
