#include "host/entities/keptentity.h"

#include <algorithm>
#include <cmath>

KVRX_DEFINE_ABSTRACT(KvDbKeptEntity, KvDbProxyEntity)
KVRX_DEFINE_ABSTRACT(KvDbPartsEntity, KvDbKeptEntity)

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
  forgetStoredGraphics();
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

void KvDbKeptEntity::forgetStoredGraphics() {
  constexpr int kBytes = 310, kCount = 92, kLongCount = 160;
  for (KvDbUnknownSection& section : editUnknownSections()) {
    if (section.marker.view() != L"AcDbEntity") continue;
    std::vector<KvDxfGroup> kept;
    bool hasGraphics = false;
    for (const KvDxfGroup& group : section.groups) {
      const bool isGraphics = group.code == kBytes || group.code == kCount || group.code == kLongCount;
      hasGraphics = hasGraphics || isGraphics;
      if (!isGraphics) kept.push_back(group);
    }
    if (hasGraphics) section.groups = KvDbGroupList(kept);
  }
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

Kvad::ErrorStatus KvDbKeptEntity::putText(int code, std::wstring_view value) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.text = value;
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

Kvad::ErrorStatus KvDbPartsEntity::explode(KvDbVoidPtrArray& parts) const {
  Parts made = makeParts();
  for (auto& part : made) parts.append(part.release());
  return made.empty() ? Kvad::eCannotExplodeEntity : Kvad::eOk;
}

bool KvDbPartsEntity::subWorldDraw(KvGiWorldDraw* draw) {
  const Parts parts = makeParts();
  for (const auto& part : parts)
    if (draw->geometry().draw(part.get())) break;
  return !parts.empty();
}

Kvad::ErrorStatus KvDbPartsEntity::getGeomExtents(KvDbExtents& extents) const {
  KvDbExtents all;
  for (const auto& part : makeParts())
    if (KvDbExtents own; part->getGeomExtents(own) == Kvad::eOk) all.addExt(own);
  if (all.isEmpty()) return Kvad::eInvalidExtents;
  extents = all;
  return Kvad::eOk;
}
