#include "host/database/dictionary.h"

#include <algorithm>

#include "host/database/database.h"

KVRX_DEFINE(KvDbDictionary, KvDbObject, L"DICTIONARY")
KVRX_DEFINE(KvDbXrecord, KvDbObject, L"XRECORD")
KVRX_DEFINE(KvDbGroup, KvDbObject, L"GROUP")

// --- Dictionaries
// --------------------------------------------------------------------------------------------------------------

std::vector<KvDbDictionary::Entry>::iterator KvDbDictionary::find(const wchar_t* name) {
  return std::find_if(entries_.begin(), entries_.end(),
                      [&](const Entry& entry) { return entry.name.CompareNoCase(name) == 0; });
}

Kvad::ErrorStatus KvDbDictionary::getAt(const wchar_t* name, KvDbObjectId& id) const {
  id.setNull();
  for (const Entry& entry : entries_) {
    if (entry.name.CompareNoCase(name) != 0 || !entry.id.isValid()) continue;
    id = entry.id;
    return Kvad::eOk;
  }
  return Kvad::eKeyNotFound;
}

bool KvDbDictionary::has(const wchar_t* name) const {
  KvDbObjectId id;
  return getAt(name, id) == Kvad::eOk;
}

Kvad::ErrorStatus KvDbDictionary::setAt(const wchar_t* name, KvDbObject* object, KvDbObjectId& id) {
  id.setNull();
  if (!object) return Kvad::eNullObjectPointer;
  if (!name || !*name) return Kvad::eInvalidName;
  if (!database()) return Kvad::eNotInDatabase;
  assertWriteEnabled();
  id = database()->addObject(object, objectId());
  object->addPersistentReactor(objectId());
  if (auto old = find(name); old != entries_.end()) {
    KvDbObject* replaced = nullptr;
    if (kvdbOpenAny(replaced, old->id, KvDb::kForWrite) == Kvad::eOk) {
      replaced->erase();
      replaced->close();
    }
    old->id = id;
  } else {
    entries_.push_back({CString(name), id, isHardOwner_});
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDictionary::remove(const wchar_t* name) {
  const auto found = find(name);
  if (found == entries_.end()) return Kvad::eKeyNotFound;
  assertWriteEnabled();
  entries_.erase(found);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDictionary::remove(KvDbObjectId id) {
  return remove(nameAt(id));
}

CString KvDbDictionary::nameAt(KvDbObjectId id) const {
  for (const Entry& entry : entries_)
    if (entry.id == id) return entry.name;
  return CString();
}

void KvDbDictionary::addCopied(const CString& name, KvDbObjectId id) {
  KvDbObject* opened = nullptr;
  if (!isWriteEnabled() && kvdbOpenAny(opened, objectId(), KvDb::kForWrite) != Kvad::eOk) opened = nullptr;
  assertWriteEnabled();
  entries_.push_back({name, id, isHardOwner_});
  if (opened) opened->close();
}

int KvDbDictionary::numEntries() const {
  return static_cast<int>(entries().size());
}

std::vector<KvDbDictionary::Entry> KvDbDictionary::entries() const {
  std::vector<Entry> list;
  std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(list),
               [](const Entry& entry) { return entry.id.isValid(); });
  return list;
}

std::vector<CString> KvDbDictionary::dropDangling() {
  std::vector<CString> dropped;
  std::erase_if(entries_, [&](const Entry& entry) {
    const bool isDangling = !entry.id.stub() || !entry.id.stub()->object;
    if (isDangling) dropped.push_back(entry.name);
    return isDangling;
  });
  return dropped;
}

std::unique_ptr<KvDbDictionaryIterator> KvDbDictionary::newIterator() const {
  return std::make_unique<KvDbDictionaryIterator>(entries());
}

void KvDbDictionary::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbObject::dwgOutFields(filer);
  filer.writeBool(isHardOwner_);
  filer.writeInt16(mergeStyle_);
  filer.writeUInt32(static_cast<std::uint32_t>(entries_.size()));
  for (const Entry& entry : entries_) {
    filer.writeString(entry.name);
    filer.writeBool(entry.isHard);
    filer.writeId(entry.id,
                  entry.isHard || isHardOwner_ ? KvDbReference::HardOwnership : KvDbReference::SoftOwnership);
  }
}

void KvDbDictionary::dwgInFields(KvDbDwgFiler& filer) {
  KvDbObject::dwgInFields(filer);
  isHardOwner_ = filer.readBool();
  mergeStyle_ = filer.readInt16();
  entries_.assign(filer.readUInt32(), {});
  for (Entry& entry : entries_) {
    entry.name = filer.readString();
    entry.isHard = filer.readBool();
    entry.id = filer.readId(entry.isHard || isHardOwner_ ? KvDbReference::HardOwnership
                                                         : KvDbReference::SoftOwnership);
  }
}

bool KvDbDictionary::knowsMarker(std::wstring_view marker) const {
  return marker == L"AcDbDictionary";
}

void KvDbDictionary::dxfOutFields(KvDxfWriter& writer) const {
  KvDbObject::dxfOutFields(writer);
  writer.marker(L"AcDbDictionary");
  if (isHardOwner_) writer.integer(280, 1);
  writer.integer(281, mergeStyle_);
  for (const Entry& entry : entries_) {
    if (entry.id.isErased()) continue;
    writer.text(3, entry.name.view());
    writer.handle(entry.isHard ? 360 : 350, entry.id);
  }
  writeUnknown(writer, L"AcDbDictionary");
}

bool KvDbDictionary::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (!marker.empty() && marker != L"AcDbDictionary") return false;
  switch (group.code) {
    case 280:
      isHardOwner_ = group.integer != 0;
      return true;
    case 281:
      mergeStyle_ = static_cast<std::int16_t>(group.integer);
      return true;
    case 3:
      pendingName_ = CString(group.text);
      return true;
    case 350:
    case 360:
    case 330:
    case 340:
      entries_.push_back({pendingName_, resolver.object(group.integer), group.code == 360});
      pendingName_.Empty();
      return true;
    default:
      return false;
  }
}

// --- Records of free groups
// ----------------------------------------------------------------------------------------------------

namespace {

constexpr const wchar_t* kXrecordMarker = L"AcDbXrecord";
constexpr int kMergeStyleCode = 280;

}  // namespace

Kvad::ErrorStatus KvDbXrecord::rbChain(resbuf** chain) const {
  if (!chain) return Kvad::eInvalidInput;
  *chain = kvdbChainOf(groups_, database());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbXrecord::setFromRbChain(const resbuf& chain) {
  std::vector<KvDbStoredGroup> fresh;
  for (const resbuf* node = &chain; node; node = node->rbnext) {
    KvDbStoredGroup group;
    if (!kvdbStoredGroupOf(*node, group)) return Kvad::eInvalidInput;
    fresh.push_back(std::move(group));
  }
  assertWriteEnabled();
  groups_ = std::move(fresh);
  return Kvad::eOk;
}

void KvDbXrecord::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbObject::dwgOutFields(filer);
  filer.writeInt16(mergeStyle_);
  kvdbWriteGroups(filer, groups_, *this);
}

void KvDbXrecord::dwgInFields(KvDbDwgFiler& filer) {
  KvDbObject::dwgInFields(filer);
  mergeStyle_ = filer.readInt16();
  groups_ = kvdbReadGroups(filer);
}

bool KvDbXrecord::knowsMarker(std::wstring_view marker) const {
  return marker == kXrecordMarker;
}

void KvDbXrecord::dxfOutFields(KvDxfWriter& writer) const {
  KvDbObject::dxfOutFields(writer);
  writer.marker(kXrecordMarker);
  writer.integer(kMergeStyleCode, mergeStyle_);
  for (const KvDbStoredGroup& group : groups_) writer.group(group.view());
}

bool KvDbXrecord::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver&) {
  if (marker != kXrecordMarker) return false;
  // The first of this code is the record's own, any further one belongs to its content.
  if (group.code == kMergeStyleCode && groups_.empty() && !mergeStyleIsRead_) {
    mergeStyle_ = static_cast<std::int16_t>(group.integer);
    mergeStyleIsRead_ = true;
  } else {
    groups_.emplace_back(group);
  }
  return true;
}

// --- Groups of entities
// --------------------------------------------------------------------------------------------------------

CString KvDbGroup::getName() const {
  const auto* dictionary = ownerId().stub() ? KvDbDictionary::cast(ownerId().stub()->object) : nullptr;
  return dictionary ? dictionary->nameAt(objectId()) : CString();
}

KvDbObjectIdArray KvDbGroup::allEntityIds() const {
  KvDbObjectIdArray ids;
  for (KvDbObjectId id : members_)
    if (id.isValid()) ids.append(id);
  return ids;
}

Kvad::ErrorStatus KvDbGroup::append(KvDbObjectId id) {
  KvDbObject* member = nullptr;
  if (auto status = kvdbOpenAny(member, id, KvDb::kForWrite); status != Kvad::eOk) return status;
  assertWriteEnabled();
  members_.append(id);
  member->addPersistentReactor(objectId());
  member->close();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbGroup::remove(KvDbObjectId id) {
  if (!members_.contains(id)) return Kvad::eKeyNotFound;
  assertWriteEnabled();
  members_.remove(id);
  KvDbObject* member = nullptr;
  if (kvdbOpenAny(member, id, KvDb::kForWrite, true) == Kvad::eOk) {
    member->removePersistentReactor(objectId());
    member->close();
  }
  return Kvad::eOk;
}

void KvDbGroup::clear() {
  const KvDbObjectIdArray all = members_;
  for (KvDbObjectId id : all) remove(id);
}

void KvDbGroup::setSelectable(bool isSelectable) {
  assertWriteEnabled();
  isSelectable_ = isSelectable;
}

void KvDbGroup::setDescription(const CString& text) {
  assertWriteEnabled();
  description_ = text;
}

Kvad::ErrorStatus KvDbGroup::move(int from, int to, int count) {
  const KvDbObjectIdArray all = allEntityIds();
  std::vector<KvDbObjectId> row(all.begin(), all.end());
  const int size = all.length();
  if (from < 0 || to < 0 || count < 1 || from > size - count || to > size - count) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  const auto first = row.begin() + from;
  if (to < from)
    std::rotate(row.begin() + to, first, first + count);
  else
    std::rotate(first, first + count, row.begin() + to + count);
  members_.removeAll();
  for (KvDbObjectId id : row) members_.append(id);
  return Kvad::eOk;
}

void KvDbGroup::reverse() {
  assertWriteEnabled();
  const KvDbObjectIdArray all = members_;
  members_.removeAll();
  for (int i = all.length() - 1; i >= 0; --i) members_.append(all[i]);
}

void KvDbGroup::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbObject::dwgOutFields(filer);
  filer.writeString(description_);
  filer.writeBool(isUnnamed_);
  filer.writeBool(isSelectable_);
  filer.writeUInt32(static_cast<std::uint32_t>(members_.length()));
  for (KvDbObjectId id : members_) filer.writeId(id, KvDbReference::HardPointer);
}

void KvDbGroup::dwgInFields(KvDbDwgFiler& filer) {
  KvDbObject::dwgInFields(filer);
  description_ = filer.readString();
  isUnnamed_ = filer.readBool();
  isSelectable_ = filer.readBool();
  const std::uint32_t count = filer.readUInt32();
  members_.removeAll();
  for (std::uint32_t i = 0; i < count; ++i) members_.append(filer.readId(KvDbReference::HardPointer));
}

bool KvDbGroup::knowsMarker(std::wstring_view marker) const {
  return marker == L"AcDbGroup";
}

void KvDbGroup::dxfOutFields(KvDxfWriter& writer) const {
  KvDbObject::dxfOutFields(writer);
  writer.marker(L"AcDbGroup");
  writer.text(300, description_.view());
  writer.integer(70, isUnnamed_);
  writer.integer(71, isSelectable_);
  for (KvDbObjectId id : members_)
    if (!id.isErased()) writer.handle(340, id);
  writeUnknown(writer, L"AcDbGroup");
}

bool KvDbGroup::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (!marker.empty() && marker != L"AcDbGroup") return false;
  switch (group.code) {
    case 300:
      description_ = CString(group.text);
      return true;
    case 70:
      isUnnamed_ = group.integer != 0;
      return true;
    case 71:
      isSelectable_ = group.integer != 0;
      return true;
    case 340:
      members_.append(resolver.object(group.integer));
      return true;
    default:
      return false;
  }
}
