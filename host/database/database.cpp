#include "host/database/database.h"

#include <algorithm>
#include <unordered_set>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/chainwriter.h"
#include "host/database/dictionary.h"
#include "host/database/entmake.h"
#include "host/database/header.h"
#include "host/database/layout.h"
#include "host/database/tables.h"
#include "host/database/transaction.h"

namespace {

std::uint32_t nextSerial() {
  static std::uint32_t last = 0;
  return ++last;
}

/// The drawings of the process, whatever host they belong to.
std::map<std::uint32_t, KvDbDatabase*>& livingDrawings() {
  static std::map<std::uint32_t, KvDbDatabase*> drawings;
  return drawings;
}

struct TableRow {
  KvDbTable table;
  const wchar_t* recordType;
  KvDbSymbolTable* (*make)();
};

template <class T>
KvDbSymbolTable* make() {
  return new T;
}

constexpr TableRow kTables[] = {
    {KvDbTable::Viewport, L"VPORT", make<KvDbViewportTable>},
    {KvDbTable::Linetype, L"LTYPE", make<KvDbLinetypeTable>},
    {KvDbTable::Layer, L"LAYER", make<KvDbLayerTable>},
    {KvDbTable::TextStyle, L"STYLE", make<KvDbTextStyleTable>},
    {KvDbTable::View, L"VIEW", make<KvDbViewTable>},
    {KvDbTable::UCS, L"UCS", make<KvDbUCSTable>},
    {KvDbTable::RegApp, L"APPID", make<KvDbRegAppTable>},
    {KvDbTable::DimStyle, L"DIMSTYLE", make<KvDbDimStyleTable>},
    {KvDbTable::Block, L"BLOCK", make<KvDbBlockTable>},
};

KvDbSymbolTable* symbolTable(const KvDbDatabase& database, KvDbTable table) {
  KvDbStub* stub = database.tableId(table).stub();
  return stub ? KvDbSymbolTable::cast(stub->object) : nullptr;
}

}  // namespace

KvDbFileExtras::Variable* KvDbFileExtras::find(const wchar_t* name) {
  auto found = std::find_if(header.begin(), header.end(),
                            [&](const Variable& v) { return v.name.CompareNoCase(name) == 0; });
  return found == header.end() ? nullptr : &*found;
}

// --- Objects by handle
// ---------------------------------------------------------------------------------------------------------

KvDbStub* KvDbDatabase::HandleMap::find(std::uint64_t handle) const {
  auto page = pages_.find(handle >> kPageBits);
  return page == pages_.end() ? nullptr : page->second[handle & ((1u << kPageBits) - 1)];
}

void KvDbDatabase::HandleMap::put(std::uint64_t handle, KvDbStub* stub) {
  Page& page = pages_[handle >> kPageBits];
  if (page.empty()) page.resize(std::size_t{1} << kPageBits);
  page[handle & ((1u << kPageBits) - 1)] = stub;
}

KvDbDatabase* KvDbDatabase::ofSerial(std::uint32_t serial) {
  const auto found = livingDrawings().find(serial);
  return found == livingDrawings().end() ? nullptr : found->second;
}

KvDbDatabase::KvDbDatabase(bool buildDefault, bool)
    : header_(std::make_unique<KvDbHeader>(*this)), serial_(nextSerial()) {
  livingDrawings()[serial_] = this;
  if (buildDefault) completeAfterReading();
  modifiedWord_ = 0;
}

KvDbDatabase::~KvDbDatabase() {
  livingDrawings().erase(serial_);
  pending_.reset();
  auto* services = KvHostContext::current().services;
  if (services && services->workingDatabase() == this) services->setWorkingDatabase(nullptr);
  for (KvDbStub* stub : placed_) delete stub->object;
}

KvDbStub& KvDbDatabase::newStub(std::uint64_t handle) {
  KvDbStub& stub = stubs_.emplace_back();
  stub.database = this;
  stub.handle = handle;
  byHandle_.put(handle, &stub);
  raiseHandleSeed(handle == UINT64_MAX ? handle : handle + 1);
  return stub;
}

KvDbStub& KvDbDatabase::newFreeStub() {
  if (!isReading_) return newStub(nextHandle_);
  KvDbStub& stub = stubs_.emplace_back();
  stub.database = this;
  unnumbered_.push_back(&stub);
  return stub;
}

void KvDbDatabase::numberTheUnnumbered() {
  isReading_ = false;
  for (KvDbStub* stub : unnumbered_) {
    stub->handle = nextHandle_++;
    byHandle_.put(stub->handle, stub);
  }
  unnumbered_.clear();
}

void KvDbDatabase::place(KvDbStub& stub, KvDbObject* object) {
  stub.object = object;
  object->stub_ = &stub;
  placed_.push_back(&stub);
}

KvDbObjectId KvDbDatabase::addObject(KvDbObject* object, KvDbObjectId owner) {
  KvDbStub& stub = newFreeStub();
  place(stub, object);
  stub.isOpenForWrite = true;
  object->setOwnerId(owner);
  noteOpened();
  if (isUndoRecording_ || undo_.hasSavePoint()) undo_.noteCreation(stub);
  noteModified();
  tellObservers(stub);
  object->addedToDatabase();
  return KvDbObjectId(&stub);
}

KvDbObjectId KvDbDatabase::addAsRead(KvDbObject* object, KvDbHandle handle, bool* isReplaced) {
  KvDbStub* stub = handle.isNull() ? nullptr : byHandle_.find(handle.value());
  const bool isTaken = stub && stub->object;
  if (isReplaced) *isReplaced = isTaken;
  if (isTaken || handle.isNull())
    stub = &newFreeStub();
  else if (!stub)
    stub = &newStub(handle.value());
  place(*stub, object);
  return KvDbObjectId(stub);
}

KvDbTransactionManager& KvDbDatabase::transactionManager() {
  if (!transactions_) transactions_ = std::make_unique<KvDbTransactionManager>(*this);
  return *transactions_;
}

KvDbLayoutManager& KvDbDatabase::layoutManager() {
  if (!layouts_) layouts_ = std::make_unique<KvDbLayoutManager>(*this);
  return *layouts_;
}

void KvDbDatabase::setPendingEntities(std::unique_ptr<KvDbPendingEntities> pending) {
  pending_ = std::move(pending);
}

bool KvDbDatabase::isBeingMade(KvDbObjectId id) const {
  return pending_ && pending_->sequenceId() == id;
}

KvDbObjectId KvDbDatabase::idFromHandle(KvDbHandle handle) const {
  KvDbStub* stub = byHandle_.find(handle.value());
  return stub && stub->object ? KvDbObjectId(stub) : KvDbObjectId();
}

KvDbObjectId KvDbDatabase::referenceTo(KvDbHandle handle) {
  if (handle.isNull()) return {};
  KvDbStub* stub = byHandle_.find(handle.value());
  return KvDbObjectId(stub ? stub : &newStub(handle.value()));
}

bool KvDbDatabase::isReferenced(KvDbObjectId id) const {
  KvDbObjectIdArray ids;
  ids.append(id);
  purge(ids);
  return ids.isEmpty();
}

void KvDbDatabase::purge(KvDbObjectIdArray& ids) const {
  std::unordered_set<KvDbObjectId> unneeded(ids.begin(), ids.end());
  for (const KvDbStub* stub : placed_) {
    if (unneeded.empty()) break;
    if (stub->isErased) continue;
    KvDbReferenceFiler references;
    stub->object->dwgOutFields(references);
    for (const auto& found : references.found())
      if (found.reference == KvDbReference::HardPointer && found.id.stub() != stub) unneeded.erase(found.id);
  }
  KvDbObjectIdArray left;
  for (KvDbObjectId id : ids)
    if (unneeded.contains(id)) left.append(id);
  ids = left;
}

std::uint64_t KvDbDatabase::savedHandleSeed() const {
  std::uint64_t seed = seedAsRead_;
  for (const KvDbStub* stub : placed_)
    if (!stub->isErased && stub->handle >= seed) seed = stub->handle + 1;
  return seed;
}

std::vector<KvDbObjectId> KvDbDatabase::allObjects() const {
  std::vector<KvDbObjectId> ids;
  ids.reserve(placed_.size());
  for (KvDbStub* stub : placed_) ids.emplace_back(stub);
  return ids;
}

// --- What every drawing has
// ----------------------------------------------------------------------------------------------------

std::unique_ptr<KvDbSymbolTable> KvDbDatabase::makeTable(KvDbTable table) {
  const auto* row = std::find_if(std::begin(kTables), std::end(kTables),
                                 [&](const TableRow& r) { return r.table == table; });
  return std::unique_ptr<KvDbSymbolTable>(row->make());
}

void KvDbDatabase::ensureTable(KvDbTable kind) {
  if (!tableId(kind).isNull()) return;
  KvDbSymbolTable* table = makeTable(kind).release();
  setTableId(kind, addObject(table, {}));
  table->close();
}

KvDbObjectId KvDbDatabase::makeRecordAsRead(KvDbTable table, const wchar_t* name) {
  ensureTable(table);
  ensureRecord(table, name);
  return recordId(table, name);
}

void KvDbDatabase::ensureRecord(KvDbTable table, const wchar_t* name) {
  if (!recordId(table, name).isNull()) return;
  KvDbSymbolTable* records = nullptr;
  if (kvdbOpenObject(records, tableId(table), KvDb::kForWrite) != Kvad::eOk) return;
  auto* record = static_cast<KvDbSymbolTableRecord*>(records->recordClass()->create());
  record->setNameAsMade(name);
  addObject(record, records->objectId());
  records->addAsRead(*record);
  record->close();
  records->close();
}

void KvDbDatabase::ensureSpaces() {
  for (const wchar_t* name : {L"*Model_Space", L"*Paper_Space"}) ensureRecord(KvDbTable::Block, name);
  for (KvDbObjectId id : symbolTable(*this, KvDbTable::Block)->records()) {
    KvDbBlockTableRecord* block = nullptr;
    if (kvdbOpenObject(block, id, KvDb::kForWrite) != Kvad::eOk) continue;
    block->ensureMarks();
    block->close();
  }
}

void KvDbDatabase::completeAfterReading() {
  numberTheUnnumbered();
  for (const TableRow& row : kTables) ensureTable(row.table);
  for (const wchar_t* name : {L"ByBlock", L"ByLayer", L"Continuous"}) ensureRecord(KvDbTable::Linetype, name);
  ensureRecord(KvDbTable::Layer, L"0");
  ensureRecord(KvDbTable::TextStyle, L"Standard");
  ensureRecord(KvDbTable::DimStyle, L"Standard");
  ensureRecord(KvDbTable::RegApp, L"ACAD");
  if (recordId(KvDbTable::Viewport, L"*Active").isNull()) ensureRecord(KvDbTable::Viewport, L"*Active");
  KvDbLayerTableRecord* zero = nullptr;
  if (kvdbOpenObject(zero, layerZero(), KvDb::kForWrite) == Kvad::eOk) {
    if (zero->linetypeObjectId().isNull())
      zero->setLinetypeObjectId(recordId(KvDbTable::Linetype, L"Continuous"));
    zero->close();
  }
  ensureSpaces();
  const bool isFresh = namedObjects_.isNull();
  if (isFresh) {
    auto* root = new KvDbDictionary;
    namedObjects_ = addObject(root, {});
    KvDbObjectId groups;
    auto* groupDictionary = new KvDbDictionary;
    root->setAt(L"ACAD_GROUP", groupDictionary, groups);
    groupDictionary->close();
    root->close();
  }
  // Before 2000 files had no layouts; later ones need them.
  if (isFresh || extras_.version < KvDbFileVersion::R2000) layoutManager().ensureLayouts();
}

Kvad::ErrorStatus KvDbDatabase::getRegAppTable(KvDbRegAppTable*& table, KvDb::OpenMode mode) const {
  return kvdbOpenObject(table, regAppTableId(), mode);
}

Kvad::ErrorStatus KvDbDatabase::getBlockTable(KvDbBlockTable*& table, KvDb::OpenMode mode) const {
  return kvdbOpenObject(table, blockTableId(), mode);
}

Kvad::ErrorStatus KvDbDatabase::getNamedObjectsDictionary(KvDbDictionary*& dictionary,
                                                          KvDb::OpenMode mode) const {
  return kvdbOpenObject(dictionary, namedObjects_, mode);
}

KvDbObjectId KvDbDatabase::recordId(KvDbTable table, const wchar_t* name) const {
  const KvDbSymbolTable* records = symbolTable(*this, table);
  KvDbObjectId id;
  if (records) records->getAt(name, id);
  return id;
}

int KvDbDatabase::setModifiedWord(int value) {
  const int old = modifiedWord_;
  modifiedWord_ = value;
  return old;
}

// --- Function-style calls
// ------------------------------------------------------------------------------------------------------

KvDbHostApplicationServices* kvdbHostApplicationServices() {
  static KvDbHostApplicationServices none;
  auto* services = KvHostContext::current().services;
  return services ? services : &none;
}

KvDbDatabase* kvdbDatabaseOrWorking(KvDbDatabase* database) {
  return database ? database : kvdbHostApplicationServices()->workingDatabase();
}

int kvdbSetDbmod(KvDbDatabase* database, int value) {
  return database ? database->setModifiedWord(value) : 0;
}

resbuf* kvdbTblSearch(const wchar_t* table, const wchar_t* name, int) {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !table || !name) return nullptr;
  for (const TableRow& row : kTables) {
    if (!platform::equalNoCase(std::wstring_view(table), row.recordType)) continue;
    KvDbSymbolTableRecord* record = nullptr;
    if (kvdbOpenObject(record, database->recordId(row.table, name)) != Kvad::eOk) return nullptr;
    KvDbChainWriter writer(*database);
    writer.text(0, row.recordType);
    record->dxfOutFields(writer);
    record->close();
    return writer.takeChain();
  }
  return nullptr;
}

int kvdbRegApp(const wchar_t* name) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !name || !kvdbIsSymbolName(name)) return RTERROR;
  KvDbRegAppTable* table = nullptr;
  if (database->getRegAppTable(table, KvDb::kForRead) != Kvad::eOk) return RTERROR;
  if (table->has(name)) {
    table->close();
    return RTNORM;
  }
  if (table->upgradeOpen() != Kvad::eOk) {
    table->close();
    return RTERROR;
  }
  auto record = std::make_unique<KvDbRegAppTableRecord>();
  record->setName(name);
  KvDbObjectId id;
  const auto status = table->add(id, record.get());
  if (status == Kvad::eOk) record.release()->close();
  table->close();
  return status == Kvad::eOk ? RTNORM : RTERROR;
}
