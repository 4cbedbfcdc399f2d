#include "host/entities/curves.h"

KVRX_DEFINE(KvDbTrace, KvDbEntity, L"TRACE")
KVRX_DEFINE(KvDbSolid, KvDbTrace, L"SOLID")
KVRX_DEFINE(KvDbFace, KvDbEntity, L"3DFACE")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;

KvGePoint3d toWorld(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::planeToWorld(normal) * point;
}
KvGePoint3d toPlane(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::worldToPlane(normal) * point;
}

}  // namespace

// --- Filled quadrangles
// --------------------------------------------------------------------------------------------------------

const KvDbField KvDbTrace::kFields[] = {
    kvdbMarker(L"AcDbTrace"),
    kvdbField<&KvDbTrace::first_>(Type::Point, 10),
    kvdbField<&KvDbTrace::second_>(Type::Point, 11),
    kvdbField<&KvDbTrace::third_>(Type::Point, 12),
    kvdbField<&KvDbTrace::fourth_>(Type::Point, 13),
    kvdbField<&KvDbTrace::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbTrace::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};
KVDB_FIELDS_DEFINE(KvDbTrace, KvDbEntity)

const KvGePoint3d* KvDbTrace::corner(int index) const {
  switch (index) {
    case 0:
      return &first_;
    case 1:
      return &second_;
    case 2:
      return &third_;
    case 3:
      return &fourth_;
    default:
      return nullptr;
  }
}

Kvad::ErrorStatus KvDbTrace::getPointAt(int index, KvGePoint3d& point) const {
  const KvGePoint3d* own = corner(index);
  if (!own) return Kvad::eInvalidIndex;
  point = toWorld(*own, normal_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTrace::setPointAt(int index, const KvGePoint3d& point) {
  const KvGePoint3d* own = corner(index);
  if (!own) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  *const_cast<KvGePoint3d*>(own) = toPlane(point, normal_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTrace::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  for (int index = 0; index < 4; ++index) {
    const KvGePoint3d point = toWorld(*corner(index), normal_);
    extents.addPoint(point);
    extents.addPoint(point + normal_ * thickness_);
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTrace::setThickness(double thickness) {
  if (!std::isfinite(thickness)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTrace::setNormal(const KvGeVector3d& normal) {
  if (normal.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  for (KvGePoint3d* point : {&first_, &second_, &third_, &fourth_})
    *point = toPlane(toWorld(*point, normal_), normal.normal());
  normal_ = normal.normal();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTrace::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeMatrix3d plane = matrix * KvGeMatrix3d::planeToWorld(normal_);
  const KvGeVector3d up = plane.column(0).crossProduct(plane.column(1));
  if (up.length() == 0) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const bool isMirrored = matrix.det() < 0;
  KvGeVector3d normal = up / up.length();
  // A mirrored figure keeps the side to which its thickness grows.
  if (isMirrored) normal = -normal;
  const KvGeMatrix3d map = KvGeMatrix3d::worldToPlane(normal) * plane;
  for (KvGePoint3d* point : {&first_, &second_, &third_, &fourth_}) *point = map * *point;
  thickness_ *= (matrix * normal_).length();
  normal_ = normal;
  return Kvad::eOk;
}

bool KvDbTrace::subWorldDraw(KvGiWorldDraw* draw) {
  KvGePoint3d corners[4];
  const int order[] = {0, 1, 3, 2};
  for (int i = 0; i < 4; ++i) corners[i] = toWorld(*corner(order[i]), normal_);
  draw->subEntityTraits().setFillType(kKvGiFillAlways);
  draw->geometry().polygon(corners[2] == corners[3] ? 3 : 4, corners);
  return true;
}

// --- Faces
// ---------------------------------------------------------------------------------------------------------------------

const KvDbField KvDbFace::kFields[] = {
    kvdbMarker(L"AcDbFace"),
    kvdbField<&KvDbFace::first_>(Type::Point, 10),
    kvdbField<&KvDbFace::second_>(Type::Point, 11),
    kvdbField<&KvDbFace::third_>(Type::Point, 12),
    kvdbField<&KvDbFace::fourth_>(Type::Point, 13),
    kvdbField<&KvDbFace::hiddenEdges_>(Type::Int16, 70, kUnlessDefault),
};
KVDB_FIELDS_DEFINE(KvDbFace, KvDbEntity)

KvDbFace::KvDbFace(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third,
                   const KvGePoint3d& fourth)
    : first_(first), second_(second), third_(third), fourth_(fourth) {}

KvGePoint3d KvDbFace::*KvDbFace::corner(int index) {
  constexpr KvGePoint3d KvDbFace::*kCorners[] = {&KvDbFace::first_, &KvDbFace::second_, &KvDbFace::third_,
                                                 &KvDbFace::fourth_};
  return index >= 0 && index < 4 ? kCorners[index] : nullptr;
}

Kvad::ErrorStatus KvDbFace::getVertexAt(int index, KvGePoint3d& point) const {
  if (!corner(index)) return Kvad::eInvalidIndex;
  point = this->*corner(index);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbFace::setVertexAt(int index, const KvGePoint3d& point) {
  if (!corner(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  this->*corner(index) = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbFace::isEdgeVisibleAt(int index, bool& isVisible) const {
  if (!corner(index)) return Kvad::eInvalidIndex;
  isVisible = (hiddenEdges_ & 1 << index) == 0;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbFace::setEdgeVisibleAt(int index, bool isVisible) {
  if (!corner(index)) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  hiddenEdges_ =
      static_cast<std::int16_t>(isVisible ? hiddenEdges_ & ~(1 << index) : hiddenEdges_ | 1 << index);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbFace::transformBy(const KvGeMatrix3d& matrix) {
  assertWriteEnabled();
  for (KvGePoint3d* point : {&first_, &second_, &third_, &fourth_}) *point = matrix * *point;
  return Kvad::eOk;
}

bool KvDbFace::subWorldDraw(KvGiWorldDraw* draw) {
  for (int i = 0; i < 4; ++i) {
    const KvGePoint3d edge[] = {this->*corner(i), this->*corner((i + 1) % 4)};
    if ((hiddenEdges_ & 1 << i) == 0 && !(edge[0] == edge[1])) draw->geometry().polyline(2, edge);
  }
  return true;
}
