#include "host/entities/oldpolyline.h"

#include <algorithm>
#include <cmath>

#include "host/geometry/polyline.h"

KVRX_DEFINE_ABSTRACT(KvDbVertex, KvDbEntity)
KVRX_DEFINE(KvDb2dVertex, KvDbVertex, L"VERTEX")
KVRX_DEFINE(KvDb3dPolylineVertex, KvDbVertex, L"VERTEX")
KVRX_DEFINE(KvDb2dPolyline, KvDbCurve, L"POLYLINE")
KVRX_DEFINE(KvDb3dPolyline, KvDbCurve, L"POLYLINE")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;

constexpr int kMarkerCode = 100, kFlagsCode = 70;

int flagsOf(std::span<const KvDxfGroup> groups) {
  for (const KvDxfGroup& group : groups)
    if (group.code == kFlagsCode) return group.asInt();
  return 0;
}

bool hasMarkers(std::span<const KvDxfGroup> groups) {
  return std::any_of(groups.begin(), groups.end(),
                     [](const KvDxfGroup& g) { return g.code == kMarkerCode && g.text != L"AcDbEntity"; });
}
bool hasMarker(std::span<const KvDxfGroup> groups, std::wstring_view marker) {
  return std::any_of(groups.begin(), groups.end(),
                     [&](const KvDxfGroup& g) { return g.code == kMarkerCode && g.text == marker; });
}

/// Meshes of the old kind have no class of their own.
const KvRxClass* polylineClass(std::span<const KvDxfGroup> groups) {
  constexpr int kSpace = 8, kMesh = 16 | 64;
  const int flags = flagsOf(groups);
  if (hasMarkers(groups)) {
    if (hasMarker(groups, L"AcDb2dPolyline")) return KvDb2dPolyline::desc();
    return hasMarker(groups, L"AcDb3dPolyline") ? KvDb3dPolyline::desc() : nullptr;
  }
  return flags & kMesh ? nullptr : flags & kSpace ? KvDb3dPolyline::desc() : KvDb2dPolyline::desc();
}

const KvRxClass* vertexClass(std::span<const KvDxfGroup> groups) {
  constexpr int kSpace = 32, kMesh = 64 | 128;
  const int flags = flagsOf(groups);
  if (hasMarkers(groups)) {
    if (hasMarker(groups, L"AcDb2dVertex")) return KvDb2dVertex::desc();
    return hasMarker(groups, L"AcDb3dPolylineVertex") ? KvDb3dPolylineVertex::desc() : nullptr;
  }
  return flags & kMesh ? nullptr : flags & kSpace ? KvDb3dPolylineVertex::desc() : KvDb2dVertex::desc();
}

[[maybe_unused]] const bool kRegistered =
    kvdbRegisterKinds(L"POLYLINE", polylineClass) && kvdbRegisterKinds(L"VERTEX", vertexClass);

template <class V>
std::vector<const V*> drawnVertices(const KvDbSequence& row) {
  std::vector<const V*> found;
  for (const KvDbEntity* member : row.members())
    if (const V* vertex = V::cast(member); vertex && !vertex->isControl()) found.push_back(vertex);
  return found;
}

/// Applies a change to each vertex that can be opened.
template <class Change>
void changeVertices(KvDbSequence& row, Change change) {
  row.changeMembers([&](KvDbEntity& member) {
    if (KvDbVertex* vertex = KvDbVertex::cast(&member)) change(*vertex);
  });
}

}  // namespace

// --- Vertices
// ------------------------------------------------------------------------------------------------------------------

const KvDbField KvDb2dVertex::kFields[] = {
    kvdbMarker(L"AcDbVertex"),
    kvdbMarker(L"AcDb2dVertex"),
    kvdbField<&KvDb2dVertex::position_, KvDb2dVertex>(Type::Point, 10),
    kvdbField<&KvDb2dVertex::startWidth_>(Type::Real, 40, kUnlessDefault, -1),
    kvdbField<&KvDb2dVertex::endWidth_>(Type::Real, 41, kUnlessDefault, -1),
    kvdbField<&KvDb2dVertex::bulge_>(Type::Real, 42, kUnlessDefault),
    kvdbField<&KvDb2dVertex::id_>(Type::Int32, 91, kUnlessDefault),
    kvdbField<&KvDb2dVertex::flags_, KvDb2dVertex>(Type::Int16, 70, kAlways),
    kvdbField<&KvDb2dVertex::tangent_>(Type::Angle, 50, kUnlessDefault),
};
KVDB_FIELDS_DEFINE(KvDb2dVertex, KvDbVertex)

const KvDbField KvDb3dPolylineVertex::kFields[] = {
    kvdbMarker(L"AcDbVertex"),
    kvdbMarker(L"AcDb3dPolylineVertex"),
    kvdbField<&KvDb3dPolylineVertex::position_, KvDb3dPolylineVertex>(Type::Point, 10),
    kvdbField<&KvDb3dPolylineVertex::flags_, KvDb3dPolylineVertex>(Type::Int16, 70, kAlways),
};
KVDB_FIELDS_DEFINE(KvDb3dPolylineVertex, KvDbVertex)

Kvad::ErrorStatus KvDbVertex::setPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  position_ = position;
  return Kvad::eOk;
}

KvDb2dVertex::KvDb2dVertex(const KvGePoint3d& position, double bulge) : bulge_(bulge) {
  position_ = position;
}

Kvad::ErrorStatus KvDb2dVertex::setBulge(double bulge) {
  if (!std::isfinite(bulge)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  bulge_ = bulge;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDb2dVertex::setWidths(double start, double end) {
  if (!std::isfinite(start) || !std::isfinite(end)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  startWidth_ = start;
  endWidth_ = end;
  return Kvad::eOk;
}

// --- In a plane
// ----------------------------------------------------------------------------------------------------------------

const KvDbField KvDb2dPolyline::kFields[] = {
    kvdbMarker(L"AcDb2dPolyline"),
    kvdbField<&KvDb2dPolyline::follows_>(Type::Int16, 66, kAlways, 1),
    kvdbField<&KvDb2dPolyline::elevation_>(Type::Point, 10),
    kvdbField<&KvDb2dPolyline::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDb2dPolyline::flags_>(Type::Int16, 70, kAlways),
    kvdbField<&KvDb2dPolyline::startWidth_>(Type::Real, 40, kUnlessDefault),
    kvdbField<&KvDb2dPolyline::endWidth_>(Type::Real, 41, kUnlessDefault),
    kvdbField<&KvDb2dPolyline::smooth_>(Type::Int16, 75, kUnlessDefault),
    kvdbField<&KvDb2dPolyline::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};

void KvDb2dPolyline::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbCurve::dwgOutFields(filer);
  kvdbDwgOut(*this, kFields, filer);
  sequenceOut(filer);
}
void KvDb2dPolyline::dwgInFields(KvDbDwgFiler& filer) {
  KvDbCurve::dwgInFields(filer);
  kvdbDwgIn(*this, kFields, filer);
  sequenceIn(filer);
}
void KvDb2dPolyline::dxfOutFields(KvDxfWriter& writer) const {
  KvDbCurve::dxfOutFields(writer);
  kvdbDxfOut(*this, kFields, writer);
}
bool KvDb2dPolyline::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  return kvdbDxfIn(*this, kFields, group, marker, resolver) || KvDbCurve::dxfInGroup(group, marker, resolver);
}
bool KvDb2dPolyline::knowsMarker(std::wstring_view marker) const {
  return kvdbHasMarker(kFields, marker) || KvDbCurve::knowsMarker(marker);
}

KvDb2dPolyline::Poly2dType KvDb2dPolyline::polyType() const {
  constexpr int kQuadratic = 5;
  if (flags_ & kSplineFlag) return smooth_ == kQuadratic ? kQuadSplinePoly : kCubicSplinePoly;
  return flags_ & kFitFlag ? kFitCurvePoly : kSimplePoly;
}

Kvad::ErrorStatus KvDb2dPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(closed ? flags_ | kClosedFlag : flags_ & ~kClosedFlag);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDb2dPolyline::setElevation(double elevation) {
  if (!std::isfinite(elevation)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  elevation_.z = elevation;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDb2dPolyline::setThickness(double thickness) {
  if (!std::isfinite(thickness)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDb2dPolyline::appendVertex(KvDb2dVertex* vertex) {
  KvDbObjectId id;
  return takeSubEntity(vertex, id);
}
Kvad::ErrorStatus KvDb2dPolyline::appendVertex(KvDbObjectId& id, KvDb2dVertex* vertex) {
  return takeSubEntity(vertex, id);
}

std::vector<const KvDb2dVertex*> KvDb2dPolyline::vertices() const {
  return drawnVertices<KvDb2dVertex>(*this);
}

std::unique_ptr<KvGeCurve3d> KvDb2dPolyline::geCurve() const {
  std::vector<KvGePolyline3d::Vertex> row;
  for (const KvDb2dVertex* vertex : vertices())
    row.push_back({kvge::planar(vertex->position()), vertex->bulge()});
  if (row.empty()) return nullptr;
  return std::make_unique<KvGePolyline3d>(std::move(row), isClosed(), elevation_.z, normal_);
}

Kvad::ErrorStatus KvDb2dPolyline::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  assertWriteEnabled();
  const KvGeVector3d normal = KvGeVector3d(matrix * normal_).normal();
  const KvGeMatrix3d map = KvGeMatrix3d::worldToPlane(normal) * matrix * KvGeMatrix3d::planeToWorld(normal_);
  const bool isTurned = KvGeVector3d(map.column(0)).crossProduct(map.column(1)).z < 0;
  const double scale = matrix.scale(), oldElevation = elevation_.z;
  elevation_.z = (map * KvGePoint3d(0, 0, oldElevation)).z;
  thickness_ *= scale;
  startWidth_ *= scale;
  endWidth_ *= scale;
  normal_ = normal;
  changeVertices(*this, [&](KvDbVertex& any) {
    KvDb2dVertex* vertex = KvDb2dVertex::cast(&any);
    if (!vertex) return;
    const KvGePoint3d at = vertex->position();
    vertex->setPosition(map * KvGePoint3d(at.x, at.y, oldElevation));
    if (isTurned) vertex->setBulge(-vertex->bulge());
    const auto scaled = [&](double width) { return width < 0 ? width : width * scale; };
    vertex->setWidths(scaled(vertex->startWidth()), scaled(vertex->endWidth()));
  });
  return Kvad::eOk;
}

// --- In space
// ------------------------------------------------------------------------------------------------------------------

const KvDbField KvDb3dPolyline::kFields[] = {
    kvdbMarker(L"AcDb3dPolyline"),
    kvdbField<&KvDb3dPolyline::follows_>(Type::Int16, 66, kAlways, 1),
    kvdbField<&KvDb3dPolyline::elevation_>(Type::Point, 10),
    kvdbField<&KvDb3dPolyline::flags_>(Type::Int16, 70, kAlways),
    kvdbField<&KvDb3dPolyline::smooth_>(Type::Int16, 75, kUnlessDefault),
};

void KvDb3dPolyline::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbCurve::dwgOutFields(filer);
  kvdbDwgOut(*this, kFields, filer);
  sequenceOut(filer);
}
void KvDb3dPolyline::dwgInFields(KvDbDwgFiler& filer) {
  KvDbCurve::dwgInFields(filer);
  kvdbDwgIn(*this, kFields, filer);
  sequenceIn(filer);
}
void KvDb3dPolyline::dxfOutFields(KvDxfWriter& writer) const {
  KvDbCurve::dxfOutFields(writer);
  kvdbDxfOut(*this, kFields, writer);
}
bool KvDb3dPolyline::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  return kvdbDxfIn(*this, kFields, group, marker, resolver) || KvDbCurve::dxfInGroup(group, marker, resolver);
}
bool KvDb3dPolyline::knowsMarker(std::wstring_view marker) const {
  return kvdbHasMarker(kFields, marker) || KvDbCurve::knowsMarker(marker);
}

KvDb3dPolyline::KvDb3dPolyline(const std::vector<KvGePoint3d>& points, bool isClosed) {
  setClosed(isClosed);
  for (const KvGePoint3d& point : points) appendVertex(new KvDb3dPolylineVertex(point));
}

Kvad::ErrorStatus KvDb3dPolyline::setClosed(bool closed) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(closed ? flags_ | kClosedFlag : flags_ & ~kClosedFlag);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDb3dPolyline::appendVertex(KvDb3dPolylineVertex* vertex) {
  KvDbObjectId id;
  return takeSubEntity(vertex, id);
}
Kvad::ErrorStatus KvDb3dPolyline::appendVertex(KvDbObjectId& id, KvDb3dPolylineVertex* vertex) {
  return takeSubEntity(vertex, id);
}

std::vector<const KvDb3dPolylineVertex*> KvDb3dPolyline::vertices() const {
  return drawnVertices<KvDb3dPolylineVertex>(*this);
}

std::unique_ptr<KvGeCurve3d> KvDb3dPolyline::geCurve() const {
  std::vector<KvGePoint3d> points;
  for (const KvDb3dPolylineVertex* vertex : vertices()) points.push_back(vertex->position());
  if (points.empty()) return nullptr;
  return std::make_unique<KvGeSpacePolyline3d>(std::move(points), isClosed());
}

Kvad::ErrorStatus KvDb3dPolyline::transformBy(const KvGeMatrix3d& matrix) {
  assertWriteEnabled();
  changeVertices(*this, [&](KvDbVertex& vertex) { vertex.setPosition(matrix * vertex.position()); });
  return Kvad::eOk;
}

bool KvDb3dPolyline::subWorldDraw(KvGiWorldDraw* draw) {
  const auto curve = geCurve();
  if (!curve) return false;
  std::vector<KvGePoint3d> points = static_cast<const KvGeSpacePolyline3d&>(*curve).points();
  if (isClosed()) points.push_back(points.front());
  draw->geometry().polyline(static_cast<int>(points.size()), points.data());
  return true;
}
