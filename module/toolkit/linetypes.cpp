// Linetypes: by name, loaded where they are missing.
#include "host/database/block.h"
#include "host/database/tables.h"
#include "host/io/linetype_file.h"
#include "module/core/host_values.h"
#include "module/toolkit/styles.h"

namespace {

constexpr const wchar_t* kByLayer = L"ByLayer";
constexpr unsigned int kReload = 16;

CString linetypeFile() {
  int measurement = 0;
  mek::readIntVariable(L"MEASUREMENT", measurement);
  return measurement == 1 ? L"kvadiso.lin" : L"kvad.lin";
}

/// Entities of model space with that linetype.
KvDbObjectIdArray usersOf(const KvDbDatabase& database, KvDbObjectId linetype) {
  KvDbObjectIdArray users;
  KvDbBlockTableRecord* space = nullptr;
  if (kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForRead) != Kvad::eOk) return users;
  for (KvDbObjectId id : space->entities()) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) continue;
    if (entity->linetypeId() == linetype) users.append(id);
    entity->close();
  }
  space->close();
  return users;
}

bool eraseRecord(KvDbObjectId id) {
  KvDbLinetypeTableRecord* record = nullptr;
  if (kvdbOpenObject(record, id, KvDb::kForWrite) != Kvad::eOk) return false;
  const bool isErased = record->erase() == Kvad::eOk;
  record->close();
  return isErased;
}

void giveLinetype(const KvDbObjectIdArray& entities, KvDbObjectId linetype) {
  for (KvDbObjectId id : entities) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) continue;
    entity->setLinetype(linetype);
    entity->close();
  }
}

/// What can't be loaded anew stays as it was.
void restoreRecord(KvDbObjectId id) {
  KvDbLinetypeTableRecord* record = nullptr;
  if (kvdbOpenObject(record, id, KvDb::kForWrite, true) != Kvad::eOk) return;
  record->erase(false);
  record->close();
}

CString reload(const CString& name, KvDbDatabase& database) {
  const KvDbObjectId old = database.recordId(KvDbTable::Linetype, name);
  const KvDbObjectIdArray users = usersOf(database, old);
  if (!eraseRecord(old)) return kByLayer;
  if (kvdbLoadLineTypeFile(name, linetypeFile(), &database) != Kvad::eOk) {
    restoreRecord(old);
    return kByLayer;
  }
  KvDbObjectId fresh = database.recordId(KvDbTable::Linetype, name);
  if (fresh.isNull()) fresh = database.recordId(KvDbTable::Linetype, kByLayer);
  if (fresh.isNull()) return kByLayer;
  giveLinetype(users, fresh);
  return name;
}

}  // namespace

CString IM_EnsureLineTypeExist(CString name, unsigned int flags) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !database->linetypeTableId().isValid()) return kByLayer;
  const bool isPresent = !database->recordId(KvDbTable::Linetype, name).isNull();
  if (isPresent && !(flags & kReload)) return name;
  const auto status = kvdbLoadLineTypeFile(name, linetypeFile(), database);
  if (status == Kvad::eLinetypeAlreadyPresent && (flags & kReload)) return reload(name, *database);
  return status == Kvad::eOk ? name : CString(kByLayer);
}

CString IM_GetLineTypeName(IM_LINETYPE type, unsigned int) {
  switch (type) {
    case 1:
      return L"ByBlock";
    case 2:
      return L"Continuous";
    default:
      return kByLayer;
  }
}

KvDbObjectId IM_GetLineTypeId(CString name, KvDbDatabase* database, int flag) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return {};
  const KvDbObjectId id = database->recordId(KvDbTable::Linetype, name);
  return id.isNull() && flag == 0 ? database->recordId(KvDbTable::Linetype, L"CONTINUOUS") : id;
}

KvDbObjectId IM_GetLineTypeId(IM_LINETYPE type, unsigned int flags) {
  return IM_GetLineTypeId(IM_GetLineTypeName(type, flags), nullptr, 0);
}
