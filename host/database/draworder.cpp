#include "host/database/draworder.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/database/database.h"
#include "host/database/dictionary.h"

namespace {

constexpr const wchar_t *kEntry = L"ACAD_SORTENTS", *kMarker = L"AcDbSortentsTable";

const KvDbObject* sortTableOf(const KvDbBlockTableRecord& block) {
  const KvDbObjectId extension = block.extensionDictionary();
  if (!extension.isValid()) return nullptr;
  const KvDbDictionary* dictionary = KvDbDictionary::cast(extension.stub()->object);
  KvDbObjectId id;
  if (!dictionary || dictionary->getAt(kEntry, id) != Kvad::eOk || !id.isValid()) return nullptr;
  return id.stub()->object;
}

/// By the handle of an entity the one to sort it by.
std::unordered_map<std::uint64_t, std::uint64_t> sortHandles(const KvDbObject& table) {
  std::unordered_map<std::uint64_t, std::uint64_t> handles;
  std::uint64_t entity = 0;
  for (const KvDbUnknownSection& section : table.unknownSections()) {
    if (section.marker.view() != kMarker) continue;
    for (const KvDxfGroup& group : section.groups) {
      if (group.code == 331) entity = static_cast<std::uint64_t>(group.integer);
      if (group.code == 5 && entity != 0)
        handles[std::exchange(entity, 0)] = static_cast<std::uint64_t>(group.integer);
    }
  }
  return handles;
}

KvDxfGroup handleGroup(int code, std::uint64_t handle) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = KvDxfKind::Handle;
  group.integer = static_cast<std::int64_t>(handle);
  return group;
}

/// A table that gives the handles of a block's entities out anew, so that they rise in the order.
class SortTable : public KvDbProxyObject {
 public:
  SortTable(KvDbObjectId block, const std::vector<KvDbObjectId>& order)
      : KvDbProxyObject(CString(L"SORTENTSTABLE")) {
    std::vector<std::uint64_t> handles;
    handles.reserve(order.size());
    for (KvDbObjectId id : order) handles.push_back(id.handle().value());
    std::sort(handles.begin(), handles.end());
    std::vector<KvDxfGroup> groups = {handleGroup(330, block.handle().value())};
    for (std::size_t i = 0; i < order.size(); ++i) {
      const std::uint64_t own = order[i].handle().value();
      if (own == handles[i]) continue;
      groups.push_back(handleGroup(331, own));
      groups.push_back(handleGroup(5, handles[i]));
    }
    editUnknownSections().push_back({KvDbSharedText(kMarker), KvDbGroupList(groups)});
  }
};

/// The extension dictionary of a block, made when missing.
KvDbObjectId extensionOf(KvDbBlockTableRecord& block) {
  if (block.extensionDictionary().isValid()) return block.extensionDictionary();
  auto* made = new KvDbDictionary;
  const KvDbObjectId id = block.database()->addObject(made, block.objectId());
  made->close();
  block.setExtensionDictionary(id);
  return id;
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

Kvad::ErrorStatus kvdbSetDrawOrder(KvDbObjectId blockId, const KvDbObjectIdArray& order) {
  KvDbBlockTableRecord* block = nullptr;
  if (auto status = kvdbOpenObject(block, blockId, KvDb::kForWrite); status != Kvad::eOk) return status;
  std::vector<KvDbObjectId> all(order.begin(), order.end());
  std::unordered_set<std::uint64_t> isGiven;
  for (KvDbObjectId id : all) isGiven.insert(id.handle().value());
  for (KvDbObjectId id : kvdbDrawOrder(*block))
    if (!isGiven.contains(id.handle().value())) all.push_back(id);
  KvDbDictionary* dictionary = nullptr;
  auto status = kvdbOpenObject(dictionary, extensionOf(*block), KvDb::kForWrite);
  if (status == Kvad::eOk) {
    // Whoever shows the block must learn of it.
    block->assertWriteEnabled();
    auto table = std::make_unique<SortTable>(blockId, all);
    KvDbObjectId id;
    status = dictionary->setAt(kEntry, table.get(), id);
    if (status == Kvad::eOk) table.release()->close();
    dictionary->close();
  }
  block->close();
  return status;
}

Kvad::ErrorStatus kvdbMoveInDrawOrder(KvDbObjectId blockId, const KvDbObjectIdArray& moved,
                                      KvDbDrawPlace place, const KvDbObjectIdArray& others) {
  const auto* block = blockId.isValid() ? KvDbBlockTableRecord::cast(blockId.stub()->object) : nullptr;
  if (!block) return Kvad::eInvalidInput;
  const auto handlesOf = [](const KvDbObjectIdArray& ids) {
    std::unordered_set<std::uint64_t> handles;
    for (KvDbObjectId id : ids) handles.insert(id.handle().value());
    return handles;
  };
  const auto isMoved = handlesOf(moved), isOther = handlesOf(others);
  std::vector<KvDbObjectId> order, going;
  std::size_t lowest = SIZE_MAX, uppermost = SIZE_MAX;
  for (KvDbObjectId id : kvdbDrawOrder(*block)) {
    if (isMoved.contains(id.handle().value())) {
      going.push_back(id);
      continue;
    }
    if (isOther.contains(id.handle().value())) {
      if (lowest == SIZE_MAX) lowest = order.size();
      uppermost = order.size();
    }
    order.push_back(id);
  }
  const bool isRelative = place == KvDbDrawPlace::Above || place == KvDbDrawPlace::Under;
  if (going.empty() || (isRelative && lowest == SIZE_MAX)) return Kvad::eInvalidInput;
  const std::size_t at = place == KvDbDrawPlace::Front   ? order.size()
                         : place == KvDbDrawPlace::Back  ? 0
                         : place == KvDbDrawPlace::Above ? uppermost + 1
                                                         : lowest;
  order.insert(order.begin() + static_cast<std::ptrdiff_t>(at), going.begin(), going.end());
  KvDbObjectIdArray all;
  for (KvDbObjectId id : order) all.append(id);
  return kvdbSetDrawOrder(blockId, all);
}
