#include "host/database/tables.h"

namespace {

const KvDxfGroup* findGroup(const std::vector<KvDbUnknownSection>& sections, int code, KvDxfGroup& found) {
  for (const KvDbUnknownSection& section : sections)
    for (const KvDxfGroup& group : section.groups)
      if (group.code == code) return &(found = group);
  return nullptr;
}

}  // namespace

KvGePoint3d KvDbStoredTableRecord::storedPoint(int code, const KvGePoint3d& standard) const {
  KvDxfGroup found;
  const KvDxfGroup* group = findGroup(unknownSections(), code, found);
  return group && group->kind == KvDxfKind::Point ? group->point : standard;
}

double KvDbStoredTableRecord::storedReal(int code, double standard) const {
  KvDxfGroup found;
  const KvDxfGroup* group = findGroup(unknownSections(), code, found);
  return group && group->kind == KvDxfKind::Real ? group->point.x : standard;
}

int KvDbStoredTableRecord::storedWhole(int code, int standard) const {
  KvDxfGroup found;
  const KvDxfGroup* group = findGroup(unknownSections(), code, found);
  return group && group->kind == kvdxfKind(code) && group->kind != KvDxfKind::Text
             ? static_cast<int>(group->integer)
             : standard;
}

void KvDbStoredTableRecord::setStoredPoint(int code, const KvGePoint3d& point, int dimensions) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = KvDxfKind::Point;
  group.dimensions = static_cast<std::uint8_t>(dimensions);
  group.point = point;
  store(group);
}

void KvDbStoredTableRecord::setStoredReal(int code, double value) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = KvDxfKind::Real;
  group.point.x = value;
  store(group);
}

void KvDbStoredTableRecord::setStoredWhole(int code, int value) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = kvdxfKind(code);
  group.integer = value;
  store(group);
}

void KvDbStoredTableRecord::store(const KvDxfGroup& group) {
  assertWriteEnabled();
  auto& sections = editUnknownSections();
  for (KvDbUnknownSection& section : sections) {
    KvDbGroupList changed;
    bool isFound = false;
    for (const KvDxfGroup& old : section.groups) {
      const bool isWanted = !isFound && old.code == group.code;
      changed.append(isWanted ? group : old);
      isFound = isFound || isWanted;
    }
    if (!isFound) continue;
    section.groups = std::move(changed);
    return;
  }
  for (KvDbUnknownSection& section : sections)
    if (section.marker.isEmpty() || section.marker.view() == fileMarker()) {
      section.groups.append(group);
      return;
    }
  KvDbUnknownSection& section = sections.emplace_back();
  section.marker = KvDbSharedText(fileMarker());
  section.groups.append(group);
}

void KvDbViewTableRecord::setIsOfLayout(bool is) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(is ? flags_ | 1 : flags_ & ~1);
}
