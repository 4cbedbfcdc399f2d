// Records and dictionaries below the named objects dictionary.
#include <algorithm>

#include "host/database/database.h"
#include "host/database/names.h"
#include "module/core/text.h"
#include "module/entity/xdata.h"
#include "module/toolkit/inputs.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr const wchar_t* kSeparator = L"\\";

/// An entry of that class, open for `mode`; made when it is missing and `create` says so. Null when there is
/// none, or another object bears the name. The dictionary is open for write.
template <class Entry>
KvDbObject* openEntry(KvDbDictionary& dictionary, const CString& name, bool create) {
  KvDbObjectId id;
  if (dictionary.getAt(name, id) == Kvad::eOk) {
    Entry* entry = nullptr;
    return kvdbOpenObject(entry, id, KvDb::kForRead) == Kvad::eOk ? entry : nullptr;
  }
  if (!create || name.IsEmpty()) return nullptr;
  auto fresh = std::make_unique<Entry>();
  if (dictionary.setAt(name, fresh.get(), id) != Kvad::eOk) return nullptr;
  return fresh.release();
}

/// The dictionary that owns what the path's last part names, open for write; null when there is none.
KvDbDictionary* openOwner(KvDbDatabase& database, const CStringArray& parts, bool create) {
  KvDbDictionary* current = nullptr;
  if (database.getNamedObjectsDictionary(current, KvDb::kForWrite) != Kvad::eOk) return nullptr;
  for (int i = 0; i < parts.GetUpperBound(); ++i) {
    KvDbObject* child = openEntry<KvDbDictionary>(*current, parts[i], create);
    const KvDbObjectId id = child ? child->objectId() : KvDbObjectId();
    if (child) child->close();
    current->close();
    if (!child || kvdbOpenObject(current, id, KvDb::kForWrite) != Kvad::eOk) return nullptr;
  }
  return current;
}

}  // namespace

int IM_GetDictEntFromName(CString path, long long name[2], int create, long long owner[2], KvDbDatabase* db,
                          int isXrecord) {
  if (owner) kvds_setNull(owner);
  if (!name) return 0;
  kvds_setNull(name);
  path.TrimRight(kSeparator);
  CStringArray parts;
  if (IM_SplitString(path, kSeparator, parts) < 1) return 0;
  KvDbDatabase* database = kvdbDatabaseOrWorking(db);
  KvDbDictionary* current = database ? openOwner(*database, parts, create != 0) : nullptr;
  if (!current) return 0;
  const CString& last = parts[parts.GetUpperBound()];
  KvDbObject* object = isXrecord ? openEntry<KvDbXrecord>(*current, last, create != 0)
                                 : openEntry<KvDbDictionary>(*current, last, create != 0);
  if (object) {
    kvdbGetKvdsName(name, object->objectId());
    if (owner) kvdbGetKvdsName(owner, current->objectId());
    object->close();
  }
  current->close();
  return object != nullptr;
}

int IM_DictIteratorCollected(KvDbDictionaryIterator* it, KvArray<KvDbObjectId>& ids) {
  ids.removeAll();
  if (!it) return 0;
  for (; !it->done(); it->next()) ids.append(it->objectId());
  std::stable_sort(ids.begin(), ids.end(), IM_pfnCompareObjectId);
  return 1;
}

ImXRecord::ImXRecord(CString path, int create, KvDbDatabase* db)
    : ImEntityXData(nullptr, 0, IM_XDATA_READWRITE) {
  CStringArray parts;
  if (IM_SplitString(path, kSeparator, parts) < 1) return;
  m_key = parts[parts.GetUpperBound()];
  kvds_name name = {0, 0};
  if (!IM_GetDictEntFromName(path, name, create, m_ownerName, db, 1) || kvds_isNull(name)) return;
  KvDbXrecord* record = nullptr;
  if (kvdbGetObjectId(m_objectId, name) != Kvad::eOk ||
      kvdbOpenObject(record, m_objectId, KvDb::kForRead) != Kvad::eOk)
    return;
  resbuf* chain = nullptr;
  record->rbChain(&chain);
  record->close();
  SetChain(chain);
  m_valid = 1;
}

int ImXRecord::Modify() {
  if (!CheckWriteable() || !m_head) return 0;
  KvDbXrecord* record = nullptr;
  if (kvdbOpenObject(record, m_objectId, KvDb::kForWrite) != Kvad::eOk) return 0;
  const Kvad::ErrorStatus status = record->setFromRbChain(*m_head);
  record->close();
  return status == Kvad::eOk;
}

int ImXRecord::Delete() {
  if (!CheckWriteable()) return 0;
  ReleaseChain();
  KvDbXrecord* record = nullptr;
  if (kvdbOpenObject(record, m_objectId, KvDb::kForWrite) != Kvad::eOk) return 0;
  const Kvad::ErrorStatus status = record->erase(true);
  record->close();
  return status == Kvad::eOk;
}
