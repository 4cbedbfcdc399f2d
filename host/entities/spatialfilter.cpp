#include "host/entities/internal/spatialfilter.h"

#include <algorithm>

#include "host/base/resbuf.h"
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

/// An inverted boundary is filed as an outline that no longer tells what was left out of it, beside a record
/// with the boundary itself (a list of corners; two of them span a rectangle) and the outline that was made
/// of it. Where that is still the filter's outline, the boundary holds.
std::vector<KvGePoint2d> invertedBoundary(const KvDbObject& filter, const std::vector<KvGePoint2d>& outline) {
  constexpr double kSame = 1e-6;
  const KvDbObjectId extension = filter.extensionDictionary();
  if (!extension.isValid()) return {};
  const auto* record = KvDbXrecord::cast(entryOf(extension.stub()->object, L"ACAD_XREC_ROUNDTRIP"));
  resbuf* chain = nullptr;
  if (!record || record->rbChain(&chain) != Kvad::eOk || !chain) return {};
  std::vector<KvGePoint2d> boundary, made, *into = nullptr;
  for (const resbuf* node = chain; node; node = node->rbnext) {
    if (node->restype == 102 && node->resval.rstring) {
      const std::wstring_view name = node->resval.rstring;
      into = name == L"ACAD_INVERTEDCLIP_ROUNDTRIP"           ? &boundary
             : name == L"ACAD_INVERTEDCLIP_ROUNDTRIP_COMPARE" ? &made
                                                              : nullptr;
    }
    if (node->restype == 10 && into) into->emplace_back(node->resval.rpoint[0], node->resval.rpoint[1]);
  }
  kvutRelRb(chain);
  const bool isSame = made.size() == outline.size() &&
                      std::equal(made.begin(), made.end(), outline.begin(),
                                 [](KvGePoint2d a, KvGePoint2d b) { return a.distanceTo(b) < kSame; });
  return isSame ? boundary : std::vector<KvGePoint2d>();
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
  if (auto boundary = invertedBoundary(*object, filter.points_); boundary.size() >= 2) {
    filter.points_ = std::move(boundary);
    filter.isInverted_ = true;
  }
  return filter;
}
