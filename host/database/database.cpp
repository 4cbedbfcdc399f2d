#include "host/database/database.h"

#include "host/base/context.h"
#include "host/base/resbuf.h"
#include "host/database/symboltable.h"

namespace {

std::uint32_t nextSerial() {
  static std::uint32_t last = 0;
  return ++last;
}

}  // namespace

KvDbDatabase::KvDbDatabase(bool buildDefault, bool) : serial_(nextSerial()) {
  if (buildDefault) buildDefaultDrawing();
}

KvDbDatabase::~KvDbDatabase() {
  auto* services = KvHostContext::current().services;
  if (services && services->workingDatabase() == this) services->setWorkingDatabase(nullptr);
}

void KvDbDatabase::buildDefaultDrawing() {
  auto* table = new KvDbRegAppTable;
  regAppTable_ = addObject(table, KvDbObjectId::kNull);
  // Every drawing knows the application under which the host itself keeps data.
  auto* record = new KvDbRegAppTableRecord;
  record->setName(L"ACAD");
  table->add(record);
  record->close();
  table->close();
  modifiedWord_ = 0;
}

KvDbObjectId KvDbDatabase::addObject(KvDbObject* object, KvDbObjectId owner) {
  objects_.emplace_back(object);
  KvDbStub& stub = stubs_.emplace_back();
  stub.object = object;
  stub.database = this;
  stub.handle = nextHandle_++;
  stub.isOpenForWrite = true;
  byHandle_[stub.handle] = &stub;
  object->stub_ = &stub;
  object->setOwnerId(owner);
  noteOpened();
  noteModified();
  return KvDbObjectId(&stub);
}

KvDbObjectId KvDbDatabase::idFromHandle(KvDbHandle handle) const {
  auto found = byHandle_.find(handle.value());
  return found == byHandle_.end() ? KvDbObjectId() : KvDbObjectId(found->second);
}

Kvad::ErrorStatus KvDbDatabase::getRegAppTable(KvDbRegAppTable*& table, KvDb::OpenMode mode) const {
  return kvdbOpenObject(table, regAppTable_, mode);
}

int KvDbDatabase::setModifiedWord(int value) {
  const int old = modifiedWord_;
  modifiedWord_ = value;
  return old;
}

KvDbHostApplicationServices* kvdbHostApplicationServices() {
  static KvDbHostApplicationServices none;
  auto* services = KvHostContext::current().services;
  return services ? services : &none;
}

KvDbDatabase* kvdbDatabaseOrWorking(KvDbDatabase* database) {
  return database ? database : kvdbHostApplicationServices()->workingDatabase();
}

int kvdbSetDbmod(KvDbDatabase* database, int value) { return database ? database->setModifiedWord(value) : 0; }

resbuf* kvdbTblSearch(const wchar_t* table, const wchar_t* name, int) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !table || !name) return nullptr;
  if (!platform::equalNoCase(std::wstring_view(table), L"APPID")) return nullptr;
  KvDbRegAppTable* records = nullptr;
  if (database->getRegAppTable(records, KvDb::kForRead) != Kvad::eOk) return nullptr;
  KvDbObjectId id;
  const bool found = records->getAt(name, id) == Kvad::eOk;
  records->close();
  KvDbRegAppTableRecord* record = nullptr;
  if (!found || kvdbOpenObject(record, id) != Kvad::eOk) return nullptr;
  resbuf* chain = kvutBuildList(RTDXF0, record->isA()->dxfName(), 2, record->getName(), 70, 0, 0);
  record->close();
  return chain;
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
