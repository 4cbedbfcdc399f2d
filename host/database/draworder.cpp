#include "host/database/draworder.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "host/database/dictionary.h"

namespace {

const KvDbObject* sortTableOf(const KvDbBlockTableRecord& block) {
  const KvDbObjectId extension = block.extensionDictionary();
  if (!extension.isValid()) return nullptr;
  const KvDbDictionary* dictionary = KvDbDictionary::cast(extension.stub()->object);
  KvDbObjectId id;
  if (!dictionary || dictionary->getAt(L"ACAD_SORTENTS", id) != Kvad::eOk || !id.isValid()) return nullptr;
  return id.stub()->object;
}

/// By the handle of an entity the one to sort it by.
std::unordered_map<std::uint64_t, std::uint64_t> sortHandles(const KvDbObject& table) {
  std::unordered_map<std::uint64_t, std::uint64_t> handles;
  std::uint64_t entity = 0;
  for (const KvDbUnknownSection& section : table.unknownSections()) {
    if (section.marker.view() != L"AcDbSortentsTable") continue;
    for (const KvDxfGroup& group : section.groups) {
      if (group.code == 331) entity = static_cast<std::uint64_t>(group.integer);
      if (group.code == 5 && entity != 0)
        handles[std::exchange(entity, 0)] = static_cast<std::uint64_t>(group.integer);
    }
  }
  return handles;
}

}  // namespace

KvDbObjectIdArray kvdbDrawOrder(const KvDbBlockTableRecord& block) {
  KvDbObjectIdArray entities = block.entities();
  const KvDbObject* table = sortTableOf(block);
  if (!table) return entities;
  const auto handles = sortHandles(*table);
  if (handles.empty()) return entities;
  std::vector<std::pair<std::uint64_t, KvDbObjectId>> keyed;
  keyed.reserve(static_cast<std::size_t>(entities.length()));
  for (KvDbObjectId id : entities) {
    const std::uint64_t own = id.handle().value();
    const auto found = handles.find(own);
    keyed.emplace_back(found == handles.end() ? own : found->second, id);
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  KvDbObjectIdArray sorted;
  for (const auto& [handle, id] : keyed) sorted.append(id);
  return sorted;
}
