#include "host/entities/viewport.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/entities/dimvars.h"

KVRX_DEFINE_ABSTRACT(KvDbKeptEntity, KvDbProxyEntity)
KVRX_DEFINE(KvDbViewport, KvDbKeptEntity, L"VIEWPORT")
KVRX_DEFINE(KvDbLeader, KvDbKeptEntity, L"LEADER")

const KvDbGroupList* KvDbKeptEntity::section() const {
  for (const KvDbUnknownSection& section : unknownSections())
    if (section.marker.view() == marker_) return &section.groups;
  return nullptr;
}

std::vector<KvDxfGroup> KvDbKeptEntity::all(int code) const {
  std::vector<KvDxfGroup> found;
  if (const KvDbGroupList* groups = section())
    for (const KvDxfGroup& group : *groups)
      if (group.code == code) found.push_back(group);
  return found;
}

double KvDbKeptEntity::real(int code, double standard) const {
  const auto found = all(code);
  return found.empty() ? standard : found.front().real();
}
std::int64_t KvDbKeptEntity::whole(int code, std::int64_t standard) const {
  const auto found = all(code);
  return found.empty() ? standard : found.front().integer;
}
KvGePoint3d KvDbKeptEntity::point(int code, const KvGePoint3d& standard) const {
  const auto found = all(code);
  return found.empty() ? standard : found.front().point;
}

void KvDbKeptEntity::rewrite(const std::function<bool(KvDxfGroup&)>& change,
                             const std::vector<KvDxfGroup>& behind) {
  assertWriteEnabled();
  std::vector<KvDxfGroup> groups;
  if (const KvDbGroupList* old = section())
    for (KvDxfGroup group : *old)
      if (change(group)) groups.push_back(group);
  groups.insert(groups.end(), behind.begin(), behind.end());
  KvDbGroupList fresh(groups);
  auto& sections = editUnknownSections();
  const auto own = std::find_if(sections.begin(), sections.end(),
                                [&](const KvDbUnknownSection& s) { return s.marker.view() == marker_; });
  if (own == sections.end())
    sections.push_back({KvDbSharedText(marker_), std::move(fresh)});
  else
    own->groups = std::move(fresh);
}

Kvad::ErrorStatus KvDbKeptEntity::put(const KvDxfGroup& value) {
  bool isPlaced = false;
  const bool isNew = all(value.code).empty();
  rewrite(
      [&](KvDxfGroup& group) {
        if (group.code == value.code && !isPlaced) group = value, isPlaced = true;
        return true;
      },
      isNew ? std::vector<KvDxfGroup>{value} : std::vector<KvDxfGroup>());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbKeptEntity::putReal(int code, double value) {
  if (!std::isfinite(value)) return Kvad::eInvalidInput;
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = KvDxfKind::Real;
  group.point.x = value;
  return put(group);
}

Kvad::ErrorStatus KvDbKeptEntity::putWhole(int code, std::int64_t value) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = kvdxfKind(code);
  group.integer = value;
  return put(group);
}

Kvad::ErrorStatus KvDbKeptEntity::putPoint(int code, const KvGePoint3d& value, int dimensions) {
  if (!std::isfinite(value.x + value.y + value.z)) return Kvad::eInvalidInput;
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = KvDxfKind::Point;
  group.dimensions = static_cast<std::uint8_t>(dimensions);
  group.point = value;
  return put(group);
}

// --- Viewport
// ------------------------------------------------------------------------------------------------------------------

KvDbViewport::KvDbViewport(const KvGePoint3d& center, double width, double height) : KvDbViewport() {
  constexpr int kFirstFree = 2;
  setCenterPoint(center);
  setWidth(width);
  setHeight(height);
  putWhole(68, 1);
  putWhole(69, kFirstFree);
  setViewCenter({});
  putPoint(16, {0, 0, 1});
  putPoint(17, {});
  setViewHeight(height);
  putReal(51, 0);
  putWhole(90, 0);
}

Kvad::ErrorStatus KvDbViewport::setOn(bool on) {
  if (on && whole(68) == 0) putWhole(68, 1);
  return putWhole(90, on ? whole(90) & ~kOffFlag : whole(90) | kOffFlag);
}

KvDbObjectIdArray KvDbViewport::frozenLayers() const {
  KvDbObjectIdArray ids;
  if (!database()) return ids;
  for (const int code : {331, 341})
    for (const KvDxfGroup& group : all(code))
      if (const KvDbObjectId id =
              database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(group.integer)));
          !id.isNull())
        ids.append(id);
  return ids;
}

KvDbObjectId KvDbViewport::nonRectClipEntityId() const {
  return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(whole(340))))
                    : KvDbObjectId();
}

Kvad::ErrorStatus KvDbViewport::getGeomExtents(KvDbExtents& extents) const {
  if (!(width() > 0) || !(height() > 0)) return Kvad::eInvalidExtents;
  const KvGeVector3d half(width() / 2, height() / 2, 0);
  extents = KvDbExtents(centerPoint() - half, centerPoint() + half);
  return Kvad::eOk;
}

bool KvDbViewport::subWorldDraw(KvGiWorldDraw* draw) {
  KvDbExtents box;
  // The sheet's own has no frame; that of a clipped one is its outline, an entity of its own.
  if (number() == 1 || isNonRectClipOn() || getGeomExtents(box) != Kvad::eOk) return false;
  const KvGePoint3d a = box.minPoint(), b = box.maxPoint();
  const KvGePoint3d frame[] = {a, {b.x, a.y, a.z}, b, {a.x, b.y, b.z}, a};
  draw->geometry().polyline(5, frame);
  return true;
}

// --- Leader
// --------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbLeader::getVertexAt(int index, KvGePoint3d& vertex) const {
  const auto found = all(10);
  if (index < 0 || index >= static_cast<int>(found.size())) return Kvad::eInvalidIndex;
  vertex = found[static_cast<std::size_t>(index)].point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::setVertexAt(int index, const KvGePoint3d& vertex) {
  if (index < 0 || index >= numVertices()) return Kvad::eInvalidIndex;
  int at = 0;
  rewrite([&](KvDxfGroup& group) {
    if (group.code == 10 && at++ == index) group.point = vertex;
    return true;
  });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::appendVertex(const KvGePoint3d& vertex) {
  if (!std::isfinite(vertex.x + vertex.y + vertex.z)) return Kvad::eInvalidInput;
  if (numVertices() == 0) {
    // What files want in front of the first one.
    putWhole(71, whole(71, 1));
    putWhole(72, whole(72, 0));
    putWhole(73, whole(73, 3));
    putWhole(74, whole(74, 0));
    putWhole(75, whole(75, 0));
    putReal(40, real(40, 0));
    putReal(41, real(41, 0));
  }
  putWhole(76, numVertices() + 1);
  KvDxfGroup group;
  group.code = 10;
  group.kind = KvDxfKind::Point;
  group.point = vertex;
  rewrite([](KvDxfGroup&) { return true; }, {group});
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::transformBy(const KvGeMatrix3d& matrix) {
  rewrite([&](KvDxfGroup& group) {
    if (group.code == 10) group.point = matrix * group.point;
    if (group.code == 211 || group.code == 212 || group.code == 213 || group.code == 210) {
      const KvGeVector3d moved = matrix * group.point.asVector();
      group.point = {moved.x, moved.y, moved.z};
    }
    return true;
  });
  return Kvad::eOk;
}

bool KvDbLeader::subWorldDraw(KvGiWorldDraw* draw) {
  std::vector<KvGePoint3d> points;
  for (const KvDxfGroup& group : all(10)) points.push_back(group.point);
  if (points.size() < 2) return false;
  draw->geometry().polyline(static_cast<int>(points.size()), points.data());
  if (!hasArrowHead()) return true;
  KvDbObjectId style;
  if (const auto name = all(3); !name.empty() && database())
    style = database()->recordId(KvDbTable::DimStyle, CString(name.front().text));
  const KvDbDimVars vars = KvDbDimVars::ofEntity(*this, style);
  const double scale = vars.real(KvDbDimVar::Scale) > 0 ? vars.real(KvDbDimVar::Scale) : 1;
  const KvGeVector3d back = (points[1] - points[0]).normal() * (vars.real(KvDbDimVar::Asz) * scale);
  const KvGeVector3d side = point(210, {0, 0, 1}).asVector().crossProduct(back) / 6;
  const KvGePoint3d arrow[] = {points[0], points[0] + back + side, points[0] + back - side};
  draw->subEntityTraits().setFillType(kKvGiFillAlways);
  draw->geometry().polygon(3, arrow);
  return true;
}
