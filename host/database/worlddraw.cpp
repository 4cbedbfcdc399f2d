#include "host/database/worlddraw.h"

#include "host/database/internal/flatten.h"

namespace {

/// For sinks that don't tell how fine they want it: about a hundred chords for a full turn of radius 100.
constexpr double kPlainDeviation = 0.05;

}  // namespace

bool KvGiDrawable::worldDraw(KvGiWorldDraw*) {
  return false;
}

bool KvGiGeometry::path(const KvGiPath& path) {
  std::vector<KvGePoint2d> flat;
  kvdb::flattenPath(path, kPlainDeviation, flat);
  const KvGeMatrix3d toModel = KvGeMatrix3d::planeToWorld(path.normal);
  std::vector<KvGePoint3d> points;
  points.reserve(flat.size());
  for (KvGePoint2d p : flat) points.push_back(toModel * KvGePoint3d(p.x, p.y, path.elevation));
  return polyline(static_cast<int>(points.size()), points.data(), &path.normal);
}

bool KvGiGeometry::mask(int, const KvGePoint3d*) {
  return false;
}
bool KvGiGeometry::image(const KvGiImage&) {
  return false;
}

bool KvGiGeometry::segments(const KvGePoint3d* poles, const unsigned char* degrees, int count) {
  if (!poles || !degrees || count <= 0) return false;
  std::vector<KvGePoint3d> points;
  kvdb::flattenSegments(poles, degrees, count, kPlainDeviation, points);
  return polyline(static_cast<int>(points.size()), points.data());
}
