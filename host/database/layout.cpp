#include "host/database/layout.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"

KVRX_DEFINE(KvDbLayout, KvDbProxyObject, L"LAYOUT")

namespace {

constexpr const wchar_t* kModel = L"Model";
constexpr const wchar_t* kDictionary = L"ACAD_LAYOUT";
constexpr const wchar_t* kActiveSheet = L"*Paper_Space";

KvDbStoredGroup groupOf(int code) {
  KvDbStoredGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = kvdxfKind(code);
  return group;
}

KvDbStoredGroup realGroup(int code, double value) {
  KvDbStoredGroup group = groupOf(code);
  group.kind = KvDxfKind::Real;
  group.point.x = value;
  return group;
}

KvDbStoredGroup wholeGroup(int code, std::int64_t value) {
  KvDbStoredGroup group = groupOf(code);
  group.integer = value;
  return group;
}

KvDbStoredGroup textGroup(int code, const CString& value) {
  KvDbStoredGroup group = groupOf(code);
  group.text = value;
  return group;
}

KvDbStoredGroup pointGroup(int code, int dimensions, double x, double y, double z = 0) {
  KvDbStoredGroup group = groupOf(code);
  group.point = {x, y, z};
  group.dimensions = static_cast<std::uint8_t>(dimensions);
  return group;
}

KvDbGroupList listOf(const std::vector<KvDbStoredGroup>& groups) {
  KvDbGroupList list;
  for (const KvDbStoredGroup& group : groups) list.append(group.view());
  return list;
}

/// The sheet that new layouts begin with: A3 landscape.
constexpr double kSheetWidth = 420, kSheetHeight = 297, kMargin = 10;

std::vector<KvDbStoredGroup> freshPlotSettings() {
  constexpr int kFlags = 688;  // lineweights plotted, styles shown, scaled
  return {textGroup(1, L""),
          textGroup(2, L"none_device"),
          textGroup(4, L"ISO_A3_(420.00_x_297.00_MM)"),
          textGroup(6, L""),
          realGroup(40, kMargin),
          realGroup(41, kMargin),
          realGroup(42, kMargin),
          realGroup(43, kMargin),
          realGroup(44, kSheetWidth),
          realGroup(45, kSheetHeight),
          realGroup(46, 0),
          realGroup(47, 0),
          realGroup(48, 0),
          realGroup(49, 0),
          realGroup(140, 0),
          realGroup(141, 0),
          realGroup(142, 1),
          realGroup(143, 1),
          wholeGroup(70, kFlags),
          wholeGroup(72, KvDbLayout::kMillimeters),
          wholeGroup(73, 0),
          wholeGroup(74, KvDbLayout::kLayout),
          textGroup(7, L""),
          wholeGroup(75, 16),
          realGroup(147, 1),
          realGroup(148, 0),
          realGroup(149, 0)};
}

std::vector<KvDbStoredGroup> freshLayout(const CString& name, int tabOrder) {
  constexpr double kEmpty = 1e20;
  return {textGroup(1, name),
          wholeGroup(70, 1),
          wholeGroup(71, tabOrder),
          pointGroup(10, 2, 0, 0),
          pointGroup(11, 2, kSheetWidth, kSheetHeight),
          pointGroup(12, 3, 0, 0),
          pointGroup(14, 3, kEmpty, kEmpty, kEmpty),
          pointGroup(15, 3, -kEmpty, -kEmpty, -kEmpty),
          realGroup(146, 0),
          pointGroup(13, 3, 0, 0),
          pointGroup(16, 3, 1, 0),
          pointGroup(17, 3, 0, 1),
          wholeGroup(76, 0),
          wholeGroup(330, 0)};
}

/// The names of all sheets' blocks begin alike.
CString freeSheetName(const KvDbDatabase& database) {
  CString name = kActiveSheet;
  for (int number = 0; !database.recordId(KvDbTable::Block, name).isNull(); ++number)
    name.Format(L"%s%d", kActiveSheet, number);
  return name;
}

}  // namespace

std::unique_ptr<KvDbLayout> KvDbLayout::make(const CString& name, int tabOrder) {
  auto layout = std::make_unique<KvDbLayout>();
  auto& sections = layout->editUnknownSections();
  sections.push_back({KvDbSharedText(kPlotMarker), listOf(freshPlotSettings())});
  sections.push_back({KvDbSharedText(kLayoutMarker), listOf(freshLayout(name, tabOrder))});
  return layout;
}

std::optional<KvDbStoredGroup> KvDbLayout::find(std::wstring_view marker, int code) const {
  for (const KvDbUnknownSection& section : unknownSections())
    if (section.marker.view() == marker)
      for (const KvDxfGroup& group : section.groups)
        if (group.code == code) return KvDbStoredGroup(group);
  return std::nullopt;
}

void KvDbLayout::put(std::wstring_view marker, const KvDbStoredGroup& fresh) {
  assertWriteEnabled();
  for (KvDbUnknownSection& section : editUnknownSections()) {
    if (section.marker.view() != marker) continue;
    KvDbGroupList groups;
    bool isPut = false;
    for (const KvDxfGroup& group : section.groups) {
      const bool isThis = group.code == fresh.code && !isPut;
      groups.append(isThis ? fresh.view() : group);
      isPut = isPut || isThis;
    }
    if (!isPut) groups.append(fresh.view());
    section.groups = std::move(groups);
    return;
  }
}

double KvDbLayout::real(std::wstring_view marker, int code) const {
  const auto group = find(marker, code);
  return group && std::isfinite(group->point.x) ? group->point.x : 0;
}

int KvDbLayout::whole(std::wstring_view marker, int code) const {
  const auto group = find(marker, code);
  return group ? static_cast<int>(group->integer) : 0;
}

CString KvDbLayout::text(std::wstring_view marker, int code) const {
  const auto group = find(marker, code);
  return group ? group->text : CString();
}

void KvDbLayout::setReal(std::wstring_view marker, int code, double value) {
  put(marker, realGroup(code, value));
}
void KvDbLayout::setWhole(std::wstring_view marker, int code, int value) {
  put(marker, wholeGroup(code, value));
}
void KvDbLayout::setText(std::wstring_view marker, int code, const CString& value) {
  put(marker, textGroup(code, value));
}

KvDbObjectId KvDbLayout::blockTableRecordId() const {
  const auto handle = handleBehind(kLayoutMarker, 330);
  return handle && database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(*handle)))
                              : KvDbObjectId();
}

void KvDbLayout::setBlockTableRecordId(KvDbObjectId id) {
  KvDbStoredGroup group = groupOf(330);
  group.integer = static_cast<std::int64_t>(id.handle().value());
  put(kLayoutMarker, group);
}

double KvDbLayout::scale() const {
  // Below 16 the standard scales; 0 means fit.
  constexpr int kUsesStandardScale = 16;
  if ((whole(kPlotMarker, 70) & kUsesStandardScale) != 0 && whole(kPlotMarker, 75) == 0) return 0;
  const double paper = real(kPlotMarker, 142), drawing = real(kPlotMarker, 143);
  return paper > 0 && drawing > 0 ? paper / drawing : 1;
}

// --- The manager
// --------------------------------------------------------------------------------------------------------------------

KvDbObjectId KvDbLayoutManager::dictionaryId() const {
  KvDbObjectId id;
  KvDbDictionary* root = nullptr;
  if (database_.getNamedObjectsDictionary(root, KvDb::kForRead) != Kvad::eOk) return id;
  root->getAt(kDictionary, id);
  root->close();
  return id;
}

KvDbBlockTableRecord* KvDbLayoutManager::blockOf(KvDbObjectId id) const {
  const auto* layout = id.isValid() ? KvDbLayout::cast(id.stub()->object) : nullptr;
  const KvDbObjectId block = layout ? layout->blockTableRecordId() : KvDbObjectId();
  return block.isValid() ? KvDbBlockTableRecord::cast(block.stub()->object) : nullptr;
}

std::vector<KvDbObjectId> KvDbLayoutManager::layouts() const {
  std::vector<KvDbObjectId> ids;
  KvDbDictionary* dictionary = nullptr;
  if (kvdbOpenObject(dictionary, dictionaryId()) != Kvad::eOk) return ids;
  for (const auto& entry : dictionary->entries())
    if (entry.id.isValid() && KvDbLayout::cast(entry.id.stub()->object)) ids.push_back(entry.id);
  dictionary->close();
  const auto place = [](KvDbObjectId id) {
    const auto* layout = static_cast<const KvDbLayout*>(id.stub()->object);
    return layout->isModelLayout() ? -1 : layout->tabOrder();
  };
  std::stable_sort(ids.begin(), ids.end(),
                   [&](KvDbObjectId a, KvDbObjectId b) { return place(a) < place(b); });
  return ids;
}

KvDbObjectId KvDbLayoutManager::layoutId(const wchar_t* name) const {
  for (KvDbObjectId id : layouts())
    if (static_cast<const KvDbLayout*>(id.stub()->object)->getLayoutName().CompareNoCase(name ? name : L"") ==
        0)
      return id;
  return {};
}

KvDbObjectId KvDbLayoutManager::modelLayoutId() const {
  const auto all = layouts();
  const auto found = std::find_if(all.begin(), all.end(), [](KvDbObjectId id) {
    return static_cast<const KvDbLayout*>(id.stub()->object)->isModelLayout();
  });
  return found == all.end() ? layoutId(kModel) : *found;
}

KvDbObjectId KvDbLayoutManager::currentLayoutId() const {
  const KvDbObjectId current = database_.currentSpaceId();
  if (current == database_.modelSpaceId()) return modelLayoutId();
  for (KvDbObjectId id : layouts())
    if (const auto* block = blockOf(id); block && block->objectId() == current) return id;
  return {};
}

CString KvDbLayoutManager::currentLayoutName() const {
  const KvDbObjectId id = currentLayoutId();
  if (database_.currentSpaceId() == database_.modelSpaceId()) return kModel;
  return id.isNull() ? CString() : static_cast<const KvDbLayout*>(id.stub()->object)->getLayoutName();
}

KvDbObjectId KvDbLayoutManager::makeFor(const wchar_t* name, int tabOrder, KvDbObjectId blockId) {
  KvDbObjectId id;
  KvDbDictionary *root = nullptr, *dictionary = nullptr;
  KvDbObjectId dictionaryOfLayouts = dictionaryId();
  if (dictionaryOfLayouts.isNull() &&
      database_.getNamedObjectsDictionary(root, KvDb::kForWrite) == Kvad::eOk) {
    auto* fresh = new KvDbDictionary;
    if (root->setAt(kDictionary, fresh, dictionaryOfLayouts) == Kvad::eOk) fresh->close();
    root->close();
  }
  if (kvdbOpenObject(dictionary, dictionaryOfLayouts, KvDb::kForWrite) != Kvad::eOk) return id;
  KvDbLayout* layout = KvDbLayout::make(name, tabOrder).release();
  if (dictionary->setAt(name, layout, id) == Kvad::eOk) {
    layout->setBlockTableRecordId(blockId);
    if (blockId == database_.modelSpaceId()) {
      constexpr int kModelFlags = 1712;
      layout->setWhole(KvDbLayout::kPlotMarker, 70, kModelFlags);
      layout->setWhole(KvDbLayout::kPlotMarker, 74, KvDbLayout::kExtents);
    }
    layout->close();
    KvDbBlockTableRecord* block = nullptr;
    if (kvdbOpenObject(block, blockId, KvDb::kForWrite) == Kvad::eOk) {
      block->setLayoutId(id);
      block->close();
    }
  } else {
    delete layout;
  }
  dictionary->close();
  return id;
}

Kvad::ErrorStatus KvDbLayoutManager::createLayout(const wchar_t* name, KvDbObjectId& layout) {
  layout.setNull();
  if (!kvdbIsSymbolName(name ? name : L"")) return Kvad::eInvalidName;
  if (!layoutId(name).isNull()) return Kvad::eDuplicateKey;
  KvDbBlockTable* table = nullptr;
  if (auto status = kvdbOpenObject(table, database_.blockTableId(), KvDb::kForWrite); status != Kvad::eOk)
    return status;
  auto* block = new KvDbBlockTableRecord;
  block->setNameAsMade(freeSheetName(database_));
  const KvDbObjectId blockId = database_.addObject(block, table->objectId());
  block->ensureMarks();
  table->addCopied(*block);
  block->close();
  table->close();
  layout = makeFor(name, static_cast<int>(layouts().size()), blockId);
  return layout.isNull() ? Kvad::eInvalidName : Kvad::eOk;
}

Kvad::ErrorStatus KvDbLayoutManager::setCurrentLayout(const wchar_t* name) {
  if (name && std::wstring_view(name) == kModel && modelLayoutId().isNull()) {
    database_.setCurrentSpace(database_.modelSpaceId());
    return database_.setTilemode(true);
  }
  return setCurrentLayoutId(layoutId(name));
}

Kvad::ErrorStatus KvDbLayoutManager::setCurrentLayoutId(KvDbObjectId id) {
  KvDbBlockTableRecord* block = blockOf(id);
  if (!block) return Kvad::eKeyNotFound;
  const bool isModel = block->objectId() == database_.modelSpaceId();
  // Files tell the sheet that is shown by its block's name.
  const KvDbObjectId shown = database_.recordId(KvDbTable::Block, kActiveSheet);
  if (!isModel && shown != block->objectId() && !shown.isNull()) {
    KvDbSymbolTable* table = nullptr;
    KvDbBlockTableRecord *other = nullptr, *own = nullptr;
    if (kvdbOpenObject(table, database_.blockTableId(), KvDb::kForWrite) == Kvad::eOk) {
      if (kvdbOpenObject(other, shown, KvDb::kForWrite) == Kvad::eOk) {
        if (kvdbOpenObject(own, block->objectId(), KvDb::kForWrite) == Kvad::eOk) {
          const CString name = own->getName();
          own->assertWriteEnabled();
          other->assertWriteEnabled();
          own->setNameAsMade(kActiveSheet);
          other->setNameAsMade(name);
          own->close();
        }
        other->close();
      }
      table->forgetIndex();
      table->close();
    }
  }
  database_.setCurrentSpace(block->objectId());
  return database_.setTilemode(isModel);
}

Kvad::ErrorStatus KvDbLayoutManager::renameLayout(const wchar_t* oldName, const wchar_t* newName) {
  const KvDbObjectId id = layoutId(oldName);
  if (id.isNull()) return Kvad::eKeyNotFound;
  if (id == modelLayoutId()) return Kvad::eNotApplicable;
  if (!kvdbIsSymbolName(newName ? newName : L"")) return Kvad::eInvalidName;
  if (const KvDbObjectId holder = layoutId(newName); !holder.isNull() && holder != id)
    return Kvad::eDuplicateKey;
  KvDbDictionary* dictionary = nullptr;
  KvDbLayout* layout = nullptr;
  if (auto status = kvdbOpenObject(dictionary, dictionaryId(), KvDb::kForWrite); status != Kvad::eOk)
    return status;
  auto status = kvdbOpenObject(layout, id, KvDb::kForWrite);
  if (status == Kvad::eOk) {
    dictionary->remove(id);
    dictionary->addCopied(newName, id);
    layout->setLayoutName(newName);
    layout->close();
  }
  dictionary->close();
  return status;
}

Kvad::ErrorStatus KvDbLayoutManager::deleteLayout(const wchar_t* name) {
  const KvDbObjectId id = layoutId(name);
  if (id.isNull()) return Kvad::eKeyNotFound;
  constexpr std::size_t kModelAndOneSheet = 2;
  if (id == modelLayoutId() || layouts().size() <= kModelAndOneSheet) return Kvad::eNotApplicable;
  if (currentLayoutId() == id) setCurrentLayoutId(modelLayoutId());
  const KvDbObjectId blockId = blockOf(id) ? blockOf(id)->objectId() : KvDbObjectId();
  if (blockId == database_.recordId(KvDbTable::Block, kActiveSheet)) {
    // Another sheet takes the name that every drawing needs.
    for (KvDbObjectId other : layouts())
      if (other != id && other != modelLayoutId()) {
        const KvDbObjectId before = currentLayoutId();
        setCurrentLayoutId(other);
        setCurrentLayoutId(before);
        break;
      }
  }
  KvDbBlockTableRecord* block = nullptr;
  if (kvdbOpenObject(block, blockId, KvDb::kForWrite) == Kvad::eOk) {
    block->eraseContent();
    block->setLayoutId({});
    block->erase();
    block->close();
  }
  KvDbDictionary* dictionary = nullptr;
  if (kvdbOpenObject(dictionary, dictionaryId(), KvDb::kForWrite) == Kvad::eOk) {
    dictionary->remove(id);
    dictionary->close();
  }
  KvDbLayout* layout = nullptr;
  auto status = kvdbOpenObject(layout, id, KvDb::kForWrite);
  if (status == Kvad::eOk) {
    status = layout->erase();
    layout->close();
  }
  return status;
}

void KvDbLayoutManager::ensureLayouts() {
  if (layouts().empty()) {
    makeFor(kModel, 0, database_.modelSpaceId());
    makeFor(L"Layout1", 1, database_.recordId(KvDbTable::Block, kActiveSheet));
  }
}

KvDbLayoutManager* kvdbLayoutManagerPtr() {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  return database ? &database->layoutManager() : nullptr;
}
