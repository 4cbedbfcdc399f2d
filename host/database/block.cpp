#include "host/database/block.h"

#include <algorithm>

#include "host/database/database.h"

KVRX_DEFINE(KvDbBlockBegin, KvDbEntity, L"BLOCK")
KVRX_DEFINE(KvDbBlockEnd, KvDbEntity, L"ENDBLK")
KVRX_DEFINE(KvDbSequenceEnd, KvDbEntity, L"SEQEND")
KVRX_DEFINE(KvDbBlockTableRecord, KvDbSymbolTableRecord, L"BLOCK_RECORD")
KVRX_DEFINE(KvDbBlockTable, KvDbSymbolTable, L"")

namespace {

constexpr const wchar_t* kBeginMarker = L"AcDbBlockBegin";
constexpr int kXref = 4, kXrefOverlay = 8;

}  // namespace

// --- The marks
// -----------------------------------------------------------------------------------------------------------------

void KvDbBlockBegin::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writeString(name_);
  filer.writeString(xrefPath_);
  filer.writeString(description_);
  filer.writeInt16(flags_);
  filer.writePoint3d(origin_);
}

void KvDbBlockBegin::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  name_ = filer.readString();
  xrefPath_ = filer.readString();
  description_ = filer.readString();
  flags_ = filer.readInt16();
  origin_ = filer.readPoint3d();
}

bool KvDbBlockBegin::knowsMarker(std::wstring_view marker) const {
  return marker == kBeginMarker || KvDbEntity::knowsMarker(marker);
}

void KvDbBlockBegin::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  const CString recordName = kvdbRecordName(ownerId());
  const CString& name = recordName.IsEmpty() ? name_ : recordName;
  writer.marker(kBeginMarker);
  writer.text(2, name.view());
  writer.integer(70, flags_);
  writer.point(10, origin_);
  writer.text(3, name.view());
  writer.text(1, xrefPath_.view());
  if (!description_.IsEmpty()) writer.text(4, description_.view());
  writeUnknown(writer, kBeginMarker);
}

bool KvDbBlockBegin::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (marker.empty() || marker == kBeginMarker) {
    switch (group.code) {
      case 2:
        name_ = CString(group.text);
        return true;
      case 70:
        flags_ = static_cast<std::int16_t>(group.integer);
        return true;
      case 10:
        origin_ = group.point;
        return true;
      case 3:
        return true;
      case 1:
        xrefPath_ = CString(group.text);
        return true;
      case 4:
        description_ = CString(group.text);
        return true;
      default:
        break;
    }
  }
  return KvDbEntity::dxfInGroup(group, marker, resolver);
}

bool KvDbBlockEnd::knowsMarker(std::wstring_view marker) const {
  return marker == L"AcDbBlockEnd" || KvDbEntity::knowsMarker(marker);
}

void KvDbBlockEnd::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  writer.marker(L"AcDbBlockEnd");
}

bool KvDbBlockTable::acceptsName(KvDbSymbolTableRecord& record) const {
  const CString& name = record.getName();
  constexpr int kShortestAnonymous = 2;
  if (name.GetAt(0) != L'*' || name.GetLength() < kShortestAnonymous)
    return KvDbSymbolTable::acceptsName(record);
  if (has(name) || name.GetLength() == kShortestAnonymous)
    record.setNameAsMade(kvdbFreeAnonymousName(*this, name.GetAt(1)));
  return true;
}

void KvDbBlockTable::recordAdded(KvDbSymbolTableRecord& record) {
  static_cast<KvDbBlockTableRecord&>(record).ensureMarks();
}

// --- The record
// ----------------------------------------------------------------------------------------------------------------

KvDbBlockBegin* KvDbBlockTableRecord::begin() const {
  return begin_.stub() ? KvDbBlockBegin::cast(begin_.stub()->object) : nullptr;
}

KvGePoint3d KvDbBlockTableRecord::origin() const {
  return begin() ? begin()->origin_ : KvGePoint3d::kOrigin;
}

Kvad::ErrorStatus KvDbBlockTableRecord::setOrigin(const KvGePoint3d& origin) {
  KvDbBlockBegin* mark = nullptr;
  if (auto status = kvdbOpenObject(mark, begin_, KvDb::kForWrite); status != Kvad::eOk) return status;
  mark->assertWriteEnabled();
  mark->origin_ = origin;
  return mark->close();
}

void KvDbBlockTableRecord::setLayoutId(KvDbObjectId id) {
  assertWriteEnabled();
  layout_ = id;
}

bool KvDbBlockTableRecord::takesName(std::wstring_view name) const {
  const bool isUnnumbered =
      name.size() == 2 && name[0] == L'*' && platform::equalNoCase(name.substr(1), L"U");
  return isUnnumbered || KvDbSymbolTableRecord::takesName(name);
}

bool KvDbBlockTableRecord::isSpace() const {
  constexpr std::wstring_view kModel = L"*MODEL_SPACE", kPaper = L"*PAPER_SPACE";
  const std::wstring_view name = getName().view();
  return platform::equalNoCase(name, kModel) || platform::equalNoCase(name.substr(0, kPaper.size()), kPaper);
}

KvDbObjectId KvDbBlockTableRecord::entityBehind(KvDbObjectId id) const {
  std::size_t at = 0;
  if (!id.isNull()) {
    const bool isHint = lastFound_ < entities_.size() && entities_[lastFound_] == id;
    at =
        isHint
            ? lastFound_
            : static_cast<std::size_t>(std::find(entities_.begin(), entities_.end(), id) - entities_.begin());
    if (at == entities_.size()) return {};
    ++at;
  }
  while (at < entities_.size() && !entities_[at].isValid()) ++at;
  lastFound_ = at;
  return at < entities_.size() ? entities_[at] : KvDbObjectId();
}

void KvDbBlockTableRecord::addCopied(KvDbObjectId id) {
  database()->noteModified();
  entities_.push_back(id);
}

void KvDbBlockTableRecord::takeEntitiesOf(KvDbBlockTableRecord& other) {
  for (KvDbObjectId id : other.entities()) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) continue;
    entity->assertWriteEnabled();
    entity->setOwnerId(objectId());
    entity->close();
    addCopied(id);
  }
  other.entities_.clear();
}

void KvDbBlockTableRecord::eraseContent() {
  for (KvDbObjectId id : entities()) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) continue;
    entity->erase();
    entity->close();
  }
}

bool KvDbBlockTableRecord::isFromExternalReference() const {
  return begin() && (begin()->flags_ & (kXref | kXrefOverlay)) != 0;
}
CString KvDbBlockTableRecord::comments() const {
  return begin() ? begin()->description_ : CString();
}

Kvad::ErrorStatus KvDbBlockTableRecord::appendKvDbEntity(KvDbObjectId& id, KvDbEntity* entity) {
  id.setNull();
  if (!entity) return Kvad::eNullEntityPointer;
  if (!database()) return Kvad::eNotInDatabase;
  assertWriteEnabled();
  id = database()->addObject(entity, objectId());
  entities_.push_back(id);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockTableRecord::appendKvDbEntity(KvDbEntity* entity) {
  KvDbObjectId id;
  return appendKvDbEntity(id, entity);
}

KvDbObjectIdArray KvDbBlockTableRecord::entities(bool withErased) const {
  KvDbObjectIdArray ids(static_cast<int>(entities_.size()));
  for (KvDbObjectId id : entities_)
    if (withErased || id.isValid()) ids.append(id);
  return ids;
}

int KvDbBlockTableRecord::entityCount() const {
  return static_cast<int>(
      std::count_if(entities_.begin(), entities_.end(), [](KvDbObjectId id) { return id.isValid(); }));
}

void KvDbBlockTableRecord::setMarks(KvDbObjectId begin, KvDbObjectId end) {
  begin_ = begin;
  end_ = end;
}

void KvDbBlockTableRecord::ensureMarks() {
  const auto make = [&](KvDbEntity* mark) {
    mark->setDatabaseDefaults(database());
    const KvDbObjectId id = database()->addObject(mark, objectId());
    mark->setLayer(database()->layerZero());
    mark->close();
    return id;
  };
  if (begin_.isNull()) begin_ = make(new KvDbBlockBegin);
  if (end_.isNull()) end_ = make(new KvDbBlockEnd);
}

void KvDbBlockTableRecord::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbSymbolTableRecord::dwgOutFields(filer);
  filer.writeId(layout_, KvDbReference::HardPointer);
  filer.writeInt16(units_);
  filer.writeUInt8(scaling_);
  filer.writeBool(explodable_);
  filer.writeId(begin_, KvDbReference::HardOwnership);
  filer.writeId(end_, KvDbReference::HardOwnership);
  // Entities come and go by erasing, which is undone on its own: a snapshot of the row would cost its whole
  // length at each change.
  if (filer.purpose() == KvDbDwgFiler::Purpose::Undo) return;
  const KvDbObjectIdArray ids = entities();
  filer.writeUInt32(static_cast<std::uint32_t>(ids.length()));
  for (KvDbObjectId id : ids) filer.writeId(id, KvDbReference::HardOwnership);
}

void KvDbBlockTableRecord::dwgInFields(KvDbDwgFiler& filer) {
  KvDbSymbolTableRecord::dwgInFields(filer);
  layout_ = filer.readId(KvDbReference::HardPointer);
  units_ = filer.readInt16();
  scaling_ = filer.readUInt8();
  explodable_ = filer.readBool();
  begin_ = filer.readId(KvDbReference::HardOwnership);
  end_ = filer.readId(KvDbReference::HardOwnership);
  if (filer.purpose() == KvDbDwgFiler::Purpose::Undo) return;
  entities_.assign(filer.readUInt32(), {});
  for (KvDbObjectId& id : entities_) id = filer.readId(KvDbReference::HardOwnership);
}

void KvDbBlockTableRecord::dxfOutFields(KvDxfWriter& writer) const {
  KvDbObject::dxfOutFields(writer);
  writer.marker(L"AcDbSymbolTableRecord");
  writer.marker(fileMarker());
  writer.text(2, getName().view());
  writer.handle(340, layout_);
  writer.integer(70, units_);
  writer.integer(280, explodable_);
  writer.integer(281, scaling_);
}

bool KvDbBlockTableRecord::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker,
                                      KvDxfResolver& resolver) {
  if (marker != fileMarker() && !marker.empty())
    return KvDbSymbolTableRecord::dxfInGroup(group, marker, resolver);
  switch (group.code) {
    case 340:
      layout_ = resolver.object(group.integer);
      return true;
    case 70:
      units_ = static_cast<std::int16_t>(group.integer);
      return true;
    case 280:
      explodable_ = group.integer != 0;
      return true;
    case 281:
      scaling_ = static_cast<std::uint8_t>(group.integer);
      return true;
    default:
      return KvDbSymbolTableRecord::dxfInGroup(group, marker, resolver);
  }
}
