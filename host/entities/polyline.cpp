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
  insertVertex(index, {point, bulge, std::max(startWidth, 0.0), std::max(endWidth, 0.0), 0});
  return Kvad::eOk;
}

KvDbPolyline::Vertex KvDbPolyline::vertex(int index) const {
  const Corner& own = corner(index);
  const Extra more = extra(index);
  return {own.point, own.bulge, more.startWidth, more.endWidth, more.id};
}

void KvDbPolyline::setVertex(int index, const Vertex& vertex) {
  const auto place = static_cast<std::size_t>(index);
  corners_[place] = {vertex.point, vertex.bulge};
  const bool isBare = vertex.startWidth == 0 && vertex.endWidth == 0 && vertex.id == 0;
  if (isBare && extras_.empty()) return;
  extras_.resize(corners_.size());
  extras_[place] = {vertex.startWidth, vertex.endWidth, vertex.id};
}

void KvDbPolyline::insertVertex(int index, const Vertex& vertex) {
  corners_.insert(corners_.begin() + index, Corner());
  if (!extras_.empty()) extras_.insert(extras_.begin() + index, Extra());
  setVertex(index, vertex);
}

void KvDbPolyline::clearWidths() {
  for (Extra& extra : extras_) extra.startWidth = extra.endWidth = 0;
}

Kvad::ErrorStatus KvDbPolyline::removeVertexAt(int index) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  corners_.erase(corners_.begin() + index);
  if (!extras_.empty()) extras_.erase(extras_.begin() + index);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getPointAt(int index, KvGePoint3d& point) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  point = KvGeMatrix3d::planeToWorld(normal_) * kvge::spatial(corner(index).point, elevation_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getPointAt(int index, KvGePoint2d& point) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  point = corner(index).point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setPointAt(int index, const KvGePoint2d& point) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  corners_[static_cast<std::size_t>(index)].point = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getBulgeAt(int index, double& bulge) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  bulge = corner(index).bulge;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setBulgeAt(int index, double bulge) {
  if (!has(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  corners_[static_cast<std::size_t>(index)].bulge = bulge;
  return Kvad::eOk;
}

KvDbPolyline::SegType KvDbPolyline::segType(int index) const {
  if (!has(index)) return kEmpty;
  if (numVerts() == 1) return kPoint;
  if (index == numVerts() - 1 && !isClosed()) return kEmpty;
  const Corner& next = corner((index + 1) % numVerts());
  if (corner(index).point.isEqualTo(next.point)) return kCoincident;
  return corner(index).bulge == 0 ? kLine : kArc;
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
  return std::any_of(extras_.begin(), extras_.end(),
                     [](const Extra& e) { return e.startWidth != 0 || e.endWidth != 0; });
}

Kvad::ErrorStatus KvDbPolyline::getConstantWidth(double& width) const {
  if (!hasOwnWidths()) {
    width = constantWidth_;
    return Kvad::eOk;
  }
  const double first = extras_.front().startWidth;
  const bool same = std::all_of(extras_.begin(), extras_.end(),
                                [&](const Extra& e) { return e.startWidth == first && e.endWidth == first; });
  if (!same) return Kvad::eInvalidInput;
  width = first;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setConstantWidth(double width) {
  if (!(width >= 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  constantWidth_ = width;
  hasConstantWidth_ = true;
  clearWidths();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  if (corners_.empty()) return Kvad::eInvalidExtents;
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
  for (Corner& own : corners_) {
    own.point = kvge::planar(map * kvge::spatial(own.point, oldElevation));
    if (isTurned) own.bulge = -own.bulge;
  }
  for (Extra& more : extras_) {
    more.startWidth *= scale;
    more.endWidth *= scale;
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
  filer.writeUInt32(static_cast<std::uint32_t>(corners_.size()));
  for (const Corner& own : corners_) {
    filer.writePoint2d(own.point);
    filer.writeDouble(own.bulge);
  }
  filer.writeBool(!extras_.empty());
  for (const Extra& more : extras_) {
    filer.writeDouble(more.startWidth);
    filer.writeDouble(more.endWidth);
    filer.writeInt32(more.id);
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
  corners_.assign(filer.readUInt32(), {});
  for (Corner& own : corners_) {
    own.point = filer.readPoint2d();
    own.bulge = filer.readDouble();
  }
  extras_.assign(filer.readBool() ? corners_.size() : 0, {});
  for (Extra& more : extras_) {
    more.startWidth = filer.readDouble();
    more.endWidth = filer.readDouble();
    more.id = filer.readInt32();
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
  for (int i = 0; i < numVerts(); ++i) {
    const Vertex own = vertex(i);
    writer.point2d(10, own.point);
    if (ownWidths) {
      writer.real(40, own.startWidth);
      writer.real(41, own.endWidth);
    }
    if (own.bulge != 0) writer.real(42, own.bulge);
    if (own.id != 0) writer.integer(91, own.id);
  }
  if (!(normal_ == KvGeVector3d::kZAxis)) writer.vector(210, normal_);
  writeUnknown(writer, kMarker);
}

bool KvDbPolyline::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (!marker.empty() && marker != kMarker) return KvDbEntity::dxfInGroup(group, marker, resolver);
  switch (group.code) {
    case 90:
      corners_.reserve(
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
      corners_.push_back({kvge::planar(group.point), 0});
      if (!extras_.empty()) extras_.emplace_back();
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
  if (corners_.empty()) return false;
  const int index = numVerts() - 1;
  Vertex last = vertex(index);
  if (group.code == 40) last.startWidth = group.real();
  if (group.code == 41) last.endWidth = group.real();
  if (group.code == 42) last.bulge = group.real();
  if (group.code == 91) last.id = static_cast<std::int32_t>(group.integer);
  setVertex(index, last);
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
    const KvDbPolyline::Vertex v = polyline.vertex((from + i) % own);
    const double start = ownWidths ? v.startWidth : polyline.constantWidth_;
    vertices.push_back({v.point, v.bulge, start, ownWidths ? v.endWidth : start});
  }
  path.isClosed = isWhole && isClosed;
  path.elevation = polyline.elevation_;
  path.normal = polyline.normal_;
  path.isLinetypeContinuous = (polyline.flags_ & KvDbPolyline::kPlinegenFlag) != 0;
  return vertices;
}
