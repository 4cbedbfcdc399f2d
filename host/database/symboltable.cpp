#include "host/database/symboltable.h"

#include "host/database/database.h"
#include "host/database/header.h"
#include "platform/text/casemap.h"
#include "platform/text/number.h"

KVRX_DEFINE_ABSTRACT(KvDbSymbolTableRecord, KvDbObject)
KVRX_DEFINE_ABSTRACT(KvDbSymbolTable, KvDbObject)
KVRX_DEFINE(KvDbRegAppTableRecord, KvDbSymbolTableRecord, L"APPID")
KVRX_DEFINE(KvDbRegAppTable, KvDbSymbolTable, L"")

bool kvdbIsSymbolName(std::wstring_view name, bool allowAnonymous) {
  constexpr std::size_t kLongestName = 255;
  if (name.empty() || name.size() > kLongestName) return false;
  if (name.front() == L' ' || name.back() == L' ') return false;
  if (allowAnonymous && name.front() == L'*') name.remove_prefix(1);
  for (wchar_t c : name)
    if (c < 0x20 || std::wstring_view(L"<>/\\\":;?*|,=`").find(c) != std::wstring_view::npos) return false;
  return !name.empty();
}

void KvDbSymbolTableRecord::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbObject::dwgOutFields(filer);
  filer.writeString(name_);
  filer.writeInt16(flags_);
}

void KvDbSymbolTableRecord::dwgInFields(KvDbDwgFiler& filer) {
  KvDbObject::dwgInFields(filer);
  const CString old = name_;
  name_ = filer.readString();
  flags_ = filer.readInt16();
  if (old == name_ || ownerId().isNull()) return;
  if (auto* table = KvDbSymbolTable::cast(ownerId().stub()->object)) table->forgetIndex();
}

bool KvDbSymbolTableRecord::knowsMarker(std::wstring_view marker) const {
  return marker == L"AcDbSymbolTableRecord" || marker == fileMarker();
}

void KvDbSymbolTableRecord::dxfOutFields(KvDxfWriter& writer) const {
  KvDbObject::dxfOutFields(writer);
  writer.marker(L"AcDbSymbolTableRecord");
  writeUnknown(writer, L"AcDbSymbolTableRecord");
  writer.marker(fileMarker());
  writer.text(2, name_.view());
  writer.integer(70, flags_);
}

bool KvDbSymbolTableRecord::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver&) {
  if (!marker.empty() && marker != fileMarker() && marker != L"AcDbSymbolTableRecord") return false;
  if (group.code == 2) name_ = CString(group.text);
  if (group.code == 70) flags_ = static_cast<std::int16_t>(group.integer);
  return group.code == 2 || group.code == 70;
}

bool KvDbSymbolTableRecord::takesName(std::wstring_view name) const {
  return kvdbIsSymbolName(name);
}

Kvad::ErrorStatus KvDbSymbolTableRecord::setName(const wchar_t* name) {
  const CString wanted(name);
  if (ownerId().isNull() ? !takesName(wanted.view()) : !kvdbIsSymbolName(wanted.view()))
    return Kvad::eInvalidName;
  if (wanted == name_) return Kvad::eOk;
  assertWriteEnabled();
  if (!ownerId().isNull()) {
    auto* table = KvDbSymbolTable::cast(ownerId().stub()->object);
    if (auto status = table->rename(*this, wanted); status != Kvad::eOk) return status;
  }
  name_ = wanted;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbSymbolTable::add(KvDbObjectId& id, KvDbSymbolTableRecord* record) {
  id.setNull();
  if (!record) return Kvad::eNullObjectPointer;
  if (!database()) return Kvad::eNotInDatabase;
  if (!isWriteEnabled()) return Kvad::eNotOpenForWrite;
  if (!record->isKindOf(recordClass())) return Kvad::eNotThatKindOfClass;
  if (!acceptsName(*record)) return Kvad::eInvalidName;
  if (!record->getName().IsEmpty() && has(record->getName())) return Kvad::eDuplicateRecordName;
  assertWriteEnabled();
  id = database()->addObject(record, objectId());
  addAsRead(*record);
  recordAdded(*record);
  return Kvad::eOk;
}

bool KvDbSymbolTable::acceptsName(KvDbSymbolTableRecord& record) const {
  return kvdbIsSymbolName(record.getName().view());
}

void KvDbSymbolTable::dxfOutHead(KvDxfWriter& writer) const {
  dxfOutIdentity(writer);
  writer.marker(L"AcDbSymbolTable");
  writer.integer(70, records().length());
  dxfOutRest(writer);
}

bool KvDbSymbolTable::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver&) {
  if (marker.empty()) return group.code == 2 || group.code == 70;
  return marker == L"AcDbSymbolTable" && group.code == 70;
}

bool KvDbSymbolTable::knowsMarker(std::wstring_view marker) const {
  return marker == L"AcDbSymbolTable";
}

void KvDbSymbolTable::addAsRead(KvDbSymbolTableRecord& record) {
  inOrder_.push_back(record.objectId());
  KvDbObjectId& place = byName_[record.getName().str()];
  if (place.isNull() || place.isErased()) place = record.objectId();
}

void KvDbSymbolTable::addCopied(KvDbSymbolTableRecord& record) {
  // The row itself needs no kept state: a record that is undone is erased.
  if (database()) database()->noteModified();
  addAsRead(record);
}

CString kvdbFreeAnonymousName(const KvDbSymbolTable& table, wchar_t letter) {
  CString name;
  int number = 1;
  for (KvDbObjectId id : table.records()) {
    const std::wstring_view taken = kvdbRecordNameView(id);
    constexpr std::size_t kDigitsFrom = 2;
    if (taken.size() <= kDigitsFrom || taken[0] != L'*' ||
        platform::foldCase(taken[1]) != platform::foldCase(letter))
      continue;
    int value = 0;
    if (platform::parseWhole(taken.substr(kDigitsFrom), value) && value >= number && value < INT32_MAX)
      number = value + 1;
  }
  name.Format(L"*%c%d", letter, number);
  return name;
}

void KvDbSymbolTable::buildIndex() const {
  if (indexIsValid_) return;
  indexIsValid_ = true;
  byName_.clear();
  for (KvDbObjectId id : inOrder_)
    if (!id.isErased()) byName_.try_emplace(kvdbRecordName(id).str(), id);
}

Kvad::ErrorStatus KvDbSymbolTable::add(KvDbSymbolTableRecord* record) {
  KvDbObjectId id;
  return add(id, record);
}

Kvad::ErrorStatus KvDbSymbolTable::getAt(const wchar_t* name, KvDbObjectId& id) const {
  buildIndex();
  auto found = byName_.find(std::wstring_view(name ? name : L""));
  const bool present = found != byName_.end() && !found->second.isErased();
  id = present ? found->second : KvDbObjectId();
  return present ? Kvad::eOk : Kvad::eKeyNotFound;
}

bool KvDbSymbolTable::has(const wchar_t* name) const {
  KvDbObjectId id;
  return getAt(name, id) == Kvad::eOk;
}

KvDbObjectIdArray KvDbSymbolTable::records() const {
  KvDbObjectIdArray ids(static_cast<int>(inOrder_.size()));
  for (KvDbObjectId id : inOrder_)
    if (!id.isErased()) ids.append(id);
  return ids;
}

Kvad::ErrorStatus KvDbSymbolTable::rename(KvDbSymbolTableRecord& record, const CString& name) {
  KvDbObjectId holder;
  if (getAt(name, holder) == Kvad::eOk && holder != record.objectId()) return Kvad::eDuplicateRecordName;
  buildIndex();
  auto old = byName_.find(record.getName().str());
  if (old != byName_.end() && old->second == record.objectId()) byName_.erase(old);
  byName_[name.str()] = record.objectId();
  if (database()) database()->header().followRename(objectId(), record.getName(), name);
  return Kvad::eOk;
}
