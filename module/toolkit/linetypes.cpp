// Linetypes: by name, loaded where they are missing.
#include <vector>

#include "host/database/entity.h"
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

/// Entities and layers with that linetype: those of model space, as of old, and all that would else be left
/// with an erased one.
std::vector<KvDbObjectId> usersOf(const KvDbDatabase& database, KvDbObjectId linetype) {
  std::vector<KvDbObjectId> users;
  for (KvDbObjectId id : database.allObjects()) {
    KvDbObject* object = nullptr;
    if (kvdbOpenAny(object, id, KvDb::kForRead) != Kvad::eOk) continue;
    const auto* entity = KvDbEntity::cast(object);
    const auto* layer = KvDbLayerTableRecord::cast(object);
    if ((entity && entity->linetypeId() == linetype) || (layer && layer->linetypeObjectId() == linetype))
      users.push_back(id);
    object->close();
  }
  return users;
}

bool setErased(KvDbObjectId id, bool isErased) {
  KvDbLinetypeTableRecord* record = nullptr;
  if (kvdbOpenObject(record, id, KvDb::kForWrite, true) != Kvad::eOk) return false;
  const bool isDone = record->erase(isErased) == Kvad::eOk;
  record->close();
  return isDone;
}

void giveLinetype(const std::vector<KvDbObjectId>& users, KvDbObjectId linetype) {
  for (KvDbObjectId id : users) {
    KvDbObject* object = nullptr;
    if (kvdbOpenAny(object, id, KvDb::kForWrite) != Kvad::eOk) continue;
    if (auto* entity = KvDbEntity::cast(object)) entity->setLinetype(linetype);
    if (auto* layer = KvDbLayerTableRecord::cast(object)) layer->setLinetypeObjectId(linetype);
    object->close();
  }
}

CString reload(const CString& name, KvDbDatabase& database) {
  const KvDbObjectId old = database.recordId(KvDbTable::Linetype, name);
  const std::vector<KvDbObjectId> users = usersOf(database, old);
  const bool isCurrent = database.celtype() == old;
  if (!setErased(old, true)) return kByLayer;
  if (kvdbLoadLineTypeFile(name, linetypeFile(), &database) != Kvad::eOk) {
    // A file that doesn't have it must not cost the drawing the one it had.
    setErased(old, false);
    return kByLayer;
  }
  KvDbObjectId fresh = database.recordId(KvDbTable::Linetype, name);
  if (fresh.isNull()) fresh = database.recordId(KvDbTable::Linetype, kByLayer);
  if (fresh.isNull()) return kByLayer;
  giveLinetype(users, fresh);
  if (isCurrent) database.setCeltype(fresh);
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
