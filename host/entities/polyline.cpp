#include "host/entities/polyline.h"

#include <algorithm>
#include <cmath>

KVRX_DEFINE(KvDbPolyline, KvDbCurve, L"LWPOLYLINE")

namespace {

constexpr const wchar_t* kMarker = L"AcDbPolyline";
constexpr std::size_t kMostReserved = 1 << 16;  // a count in a file isn't believed further than this

/// Adds the points of an arc segment that reach farthest along the plane's axes.
void addArcTops(KvDbExtents& extents, const KvGePoint2d& from, const KvGePoint2d& to, double bulge,
                double z) {
  const KvGeVector2d chord = to - from;
  // The centre stands on the chord's middle perpendicular.
  const double offset = (1 - bulge * bulge) / (4 * bulge);
  const KvGePoint2d center(from.x + chord.x / 2 - chord.y * offset, from.y + chord.y / 2 + chord.x * offset);
  const double radius = center.distanceTo(from);
  const double sweep = 4 * std::atan(std::fabs(bulge));
  const double start = (bulge > 0 ? from - center : to - center).angle();
  for (int quarter = 0; quarter < 4; ++quarter) {
    const double angle = quarter * kvge::kPi / 2;
    if (kvge::normalizedAngle(angle - start) > sweep) continue;
    const auto [sine, cosine] = kvge::sinCos(angle);
    extents.addPoint({center.x + radius * cosine, center.y + radius * sine, z});
  }
}

}  // namespace

Kvad::ErrorStatus KvDbPolyline::addVertexAt(int index, const KvGePoint2d& point, double bulge,
                                            double startWidth, double endWidth) {
  if (index < 0 || index > numVerts()) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  Vertex vertex{point, bulge, std::max(startWidth, 0.0), std::max(endWidth, 0.0), 0};
  vertices_.insert(vertices_.begin() + index, vertex);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::removeVertexAt(int index) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  vertices_.erase(vertices_.begin() + index);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getPointAt(int index, KvGePoint3d& point) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  point = KvGeMatrix3d::planeToWorld(normal_) * kvge::spatial(vertex(index).point, elevation_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getPointAt(int index, KvGePoint2d& point) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  point = vertex(index).point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setPointAt(int index, const KvGePoint2d& point) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  vertices_[static_cast<std::size_t>(index)].point = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getBulgeAt(int index, double& bulge) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  bulge = vertex(index).bulge;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setBulgeAt(int index, double bulge) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  vertices_[static_cast<std::size_t>(index)].bulge = bulge;
  return Kvad::eOk;
}

KvDbPolyline::SegType KvDbPolyline::segType(int index) const {
  if (!has(index)) return kEmpty;
  if (numVerts() == 1) return kPoint;
  if (index == numVerts() - 1 && !isClosed()) return kEmpty;
  const Vertex& next = vertex((index + 1) % numVerts());
  if (vertex(index).point.isEqualTo(next.point)) return kCoincident;
  return vertex(index).bulge == 0 ? kLine : kArc;
}

void KvDbPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(closed ? flags_ | kClosedFlag : flags_ & ~kClosedFlag);
}

Kvad::ErrorStatus KvDbPolyline::setElevation(double elevation) {
  if (!std::isfinite(elevation)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  elevation_ = elevation;
  return Kvad::eOk;
}

bool KvDbPolyline::hasOwnWidths() const {
  return std::any_of(vertices_.begin(), vertices_.end(),
                     [](const Vertex& v) { return v.startWidth != 0 || v.endWidth != 0; });
}

Kvad::ErrorStatus KvDbPolyline::getConstantWidth(double& width) const {
  if (!hasOwnWidths()) {
    width = constantWidth_;
    return Kvad::eOk;
  }
  const double first = vertices_.front().startWidth;
  const bool same = std::all_of(vertices_.begin(), vertices_.end(), [&](const Vertex& v) {
    return v.startWidth == first && v.endWidth == first;
  });
  if (!same) return Kvad::eInvalidInput;
  width = first;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setConstantWidth(double width) {
  if (!(width >= 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  constantWidth_ = width;
  hasConstantWidth_ = true;
  for (Vertex& vertex : vertices_) vertex.startWidth = vertex.endWidth = 0;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  if (vertices_.empty()) return Kvad::eInvalidExtents;
  KvDbExtents local;
  for (int i = 0; i < numVerts(); ++i) {
    local.addPoint(kvge::spatial(vertex(i).point, elevation_));
    if (segType(i) == kArc)
      addArcTops(local, vertex(i).point, vertex((i + 1) % numVerts()).point, vertex(i).bulge, elevation_);
  }
  // Tight in the world's own plane; elsewhere the box of the plane's box.
  const KvGeMatrix3d toWorld = KvGeMatrix3d::planeToWorld(normal_);
  for (int corner = 0; corner < 8; ++corner)
    extents.addPoint(toWorld * KvGePoint3d(corner & 1 ? local.maxPoint().x : local.minPoint().x,
                                           corner & 2 ? local.maxPoint().y : local.minPoint().y,
                                           corner & 4 ? elevation_ + thickness_ : elevation_));
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  assertWriteEnabled();
  const KvGeVector3d normal = KvGeVector3d(matrix * normal_).normal();
  const KvGeMatrix3d map = KvGeMatrix3d::worldToPlane(normal) * matrix * KvGeMatrix3d::planeToWorld(normal_);
  // Within the plane a mirrored polyline turns the other way.
  const bool isTurned = KvGeVector3d(map.column(0)).crossProduct(map.column(1)).z < 0;
  const double scale = matrix.scale();
  const double oldElevation = elevation_;
  elevation_ = (map * KvGePoint3d(0, 0, oldElevation)).z;
  for (Vertex& vertex : vertices_) {
    vertex.point = kvge::planar(map * kvge::spatial(vertex.point, oldElevation));
    if (isTurned) vertex.bulge = -vertex.bulge;
    vertex.startWidth *= scale;
    vertex.endWidth *= scale;
  }
  constantWidth_ *= scale;
  thickness_ *= scale;
  normal_ = normal;
  return Kvad::eOk;
}

void KvDbPolyline::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writeInt16(flags_);
  filer.writeBool(hasConstantWidth_);
  filer.writeDouble(constantWidth_);
  filer.writeDouble(elevation_);
  filer.writeDouble(thickness_);
  filer.writeVector3d(normal_);
  filer.writeUInt32(static_cast<std::uint32_t>(vertices_.size()));
  for (const Vertex& vertex : vertices_) {
    filer.writePoint2d(vertex.point);
    filer.writeDouble(vertex.bulge);
    filer.writeDouble(vertex.startWidth);
    filer.writeDouble(vertex.endWidth);
    filer.writeInt32(vertex.id);
  }
}

void KvDbPolyline::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  flags_ = filer.readInt16();
  hasConstantWidth_ = filer.readBool();
  constantWidth_ = filer.readDouble();
  elevation_ = filer.readDouble();
  thickness_ = filer.readDouble();
  normal_ = filer.readVector3d();
  vertices_.assign(filer.readUInt32(), {});
  for (Vertex& vertex : vertices_) {
    vertex.point = filer.readPoint2d();
    vertex.bulge = filer.readDouble();
    vertex.startWidth = filer.readDouble();
    vertex.endWidth = filer.readDouble();
    vertex.id = filer.readInt32();
  }
}

bool KvDbPolyline::knowsMarker(std::wstring_view marker) const {
  return marker == kMarker || KvDbEntity::knowsMarker(marker);
}

void KvDbPolyline::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  writer.marker(kMarker);
  writer.integer(90, numVerts());
  writer.integer(70, flags_);
  const bool ownWidths = hasOwnWidths();
  if (!ownWidths && (hasConstantWidth_ || constantWidth_ != 0)) writer.real(43, constantWidth_);
  if (elevation_ != 0) writer.real(38, elevation_);
  if (thickness_ != 0) writer.real(39, thickness_);
  for (const Vertex& vertex : vertices_) {
    writer.point2d(10, vertex.point);
    if (ownWidths) {
      writer.real(40, vertex.startWidth);
      writer.real(41, vertex.endWidth);
    }
    if (vertex.bulge != 0) writer.real(42, vertex.bulge);
    if (vertex.id != 0) writer.integer(91, vertex.id);
  }
  if (!(normal_ == KvGeVector3d::kZAxis)) writer.vector(210, normal_);
  writeUnknown(writer, kMarker);
}

bool KvDbPolyline::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (!marker.empty() && marker != kMarker) return KvDbEntity::dxfInGroup(group, marker, resolver);
  Vertex* last = vertices_.empty() ? nullptr : &vertices_.back();
  switch (group.code) {
    case 90:
      vertices_.reserve(
          std::min(static_cast<std::size_t>(std::max<std::int64_t>(group.integer, 0)), kMostReserved));
      return true;
    case 70:
      flags_ = static_cast<std::int16_t>(group.integer);
      return true;
    case 43:
      constantWidth_ = group.real();
      hasConstantWidth_ = true;
      return true;
    case 38:
      elevation_ = group.real();
      return true;
    case 39:
      thickness_ = group.real();
      return true;
    case 10:
      vertices_.push_back({kvge::planar(group.point), 0, 0, 0, 0});
      return true;
    case 210:
      normal_ = group.point.asVector();
      return true;
    case 40:
    case 41:
    case 42:
    case 91:
      break;
    default:
      return KvDbEntity::dxfInGroup(group, marker, resolver);
  }
  if (!last) return false;
  if (group.code == 40) last->startWidth = group.real();
  if (group.code == 41) last->endWidth = group.real();
  if (group.code == 42) last->bulge = group.real();
  if (group.code == 91) last->id = static_cast<std::int32_t>(group.integer);
  return true;
}

std::vector<KvGiPathVertex> kvgiVerticesOf(const KvDbPolyline& polyline, int from, int count,
                                           KvGiPath& path) {
  std::vector<KvGiPathVertex> vertices;
  const int own = polyline.numVerts();
  from = std::clamp(from, 0, own);
  const bool isWhole = from == 0 && (count <= 0 || count >= own);
  // A stretch of a closed polyline may run on over its beginning.
  const int segments = count > 0 ? std::min(count, own) : own;
  const bool isClosed = polyline.isClosed();
  const int wanted = isWhole ? own : isClosed ? segments + 1 : std::min(segments + 1, own - from);
  const bool ownWidths = polyline.hasOwnWidths();
  for (int i = 0; i < wanted; ++i) {
    const KvDbPolyline::Vertex& v = polyline.vertex((from + i) % own);
    const double start = ownWidths ? v.startWidth : polyline.constantWidth_;
    vertices.push_back({v.point, v.bulge, start, ownWidths ? v.endWidth : start});
  }
  path.isClosed = isWhole && isClosed;
  path.elevation = polyline.elevation_;
  path.normal = polyline.normal_;
  path.isLinetypeContinuous = (polyline.flags_ & KvDbPolyline::kPlinegenFlag) != 0;
  return vertices;
}
