#include "host/database/dbobject.h"

#include <algorithm>
#include <cassert>

#include "host/database/database.h"
#include "host/database/embedded.h"
#include "host/database/symboltable.h"

KVRX_DEFINE_ABSTRACT(KvDbObject, KvRxObject)
KVRX_DEFINE_ABSTRACT(KvDbProxyObject, KvDbObject)

struct KvDbObject::Extra {
  KvDbObjectId extensionDictionary;
  KvDbObjectIdArray reactors;
  std::vector<KvDbUnknownSection> appGroups;  // `{NAME ... }` blocks other than the two that are known
  std::vector<KvDbStoredGroup> xData;         // groups from 1001 on, application by application
};

namespace {

constexpr int kApplicationCode = 1001;
constexpr int kMarkerCode = 100;
constexpr int kAppGroupCode = 102;
constexpr int kHandleCode = 5;
constexpr int kDimStyleHandleCode = 105;
constexpr int kOwnerCode = 330;

/// Extended data begin with the name of their application; records of free groups may hold such codes without
/// it.
bool beginsXData(const KvDxfGroup& group) {
  return group.code == kApplicationCode;
}
bool isXDataCode(int code) {
  return code >= 1000;
}

void writeSections(KvDbDwgFiler& filer, const std::vector<KvDbUnknownSection>& sections,
                   const KvDbObject& owner) {
  filer.writeUInt32(static_cast<std::uint32_t>(sections.size()));
  for (const auto& section : sections) {
    filer.writeString(CString(section.marker.view()));
    kvdbWriteGroups(filer, section.groups, owner);
  }
}

std::vector<KvDbUnknownSection> readSections(KvDbDwgFiler& filer) {
  std::vector<KvDbUnknownSection> sections(filer.readUInt32());
  for (auto& section : sections) {
    section.marker = KvDbSharedText(filer.readString().view());
    section.groups = kvdbReadGroupList(filer);
  }
  return sections;
}

bool isApplicationName(const KvDbStoredGroup& group) {
  return group.code == 1001;
}

using XData = std::vector<KvDbStoredGroup>;

/// The range of an application's groups, its 1001 included; both ends equal when it has none.
std::pair<XData::iterator, XData::iterator> rangeOf(XData& data, const CString& application) {
  auto first = std::find_if(data.begin(), data.end(), [&](const KvDbStoredGroup& group) {
    return isApplicationName(group) && group.text.CompareNoCase(application) == 0;
  });
  if (first == data.end()) return {first, first};
  return {first, std::find_if(first + 1, data.end(), isApplicationName)};
}

}  // namespace

KvDbObject::KvDbObject() = default;
KvDbObject::~KvDbObject() = default;

KvDbObject::Extra& KvDbObject::extra() {
  if (!extra_) extra_ = std::make_unique<Extra>();
  return *extra_;
}

std::wstring_view KvDbObject::fileTypeView() const {
  return isA()->dxfName();
}

// --- The open protocol
// ---------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbObject::close() {
  if (!stub_) return Kvad::eNotInDatabase;
  if (stub_->isOpenForWrite) {
    stub_->isOpenForWrite = false;
  } else if (stub_->readers > 0) {
    --stub_->readers;
  } else {
    return Kvad::eNotOpenForRead;
  }
  stub_->database->noteClosed();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::upgradeOpen() {
  if (!stub_ || stub_->isOpenForWrite) return Kvad::eOk;
  if (stub_->isErased) return Kvad::eWasErased;
  if (stub_->readers == 0) return Kvad::eNotOpenForRead;
  if (stub_->readers > 1) return Kvad::eHasOpenReaders;
  stub_->readers = 0;
  stub_->isOpenForWrite = true;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::downgradeOpen() {
  if (!stub_) return Kvad::eOk;
  if (!stub_->isOpenForWrite) return Kvad::eWasNotOpenForWrite;
  stub_->isOpenForWrite = false;
  stub_->readers = 1;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::erase(bool erasing) {
  if (!stub_) return Kvad::eNotInDatabase;
  if (!stub_->isOpenForWrite) return Kvad::eNotOpenForWrite;
  if (stub_->isErased == erasing) return erasing ? Kvad::eWasErased : Kvad::eWasNotErased;
  if (auto status = subErase(erasing); status != Kvad::eOk) return status;
  assertWriteEnabled();
  stub_->isErased = erasing;
  return Kvad::eOk;
}

void KvDbObject::assertWriteEnabled() {
  assert(isWriteEnabled());
  if (stub_) stub_->database->noteChange(*stub_);
}

Kvad::ErrorStatus KvDbObject::subErase(bool) {
  return Kvad::eOk;
}

// --- Filing
// --------------------------------------------------------------------------------------------------------------------

void KvDbObject::dwgOutFields(KvDbDwgFiler& filer) const {
  filer.writeId(owner_, KvDbReference::SoftPointer);
  filer.writeBool(unknown_ != nullptr);
  if (unknown_) writeSections(filer, *unknown_, *this);
  filer.writeBool(extra_ != nullptr);
  if (!extra_) return;
  filer.writeId(extra_->extensionDictionary, KvDbReference::HardOwnership);
  filer.writeUInt32(static_cast<std::uint32_t>(extra_->reactors.length()));
  for (KvDbObjectId id : extra_->reactors) filer.writeId(id, KvDbReference::SoftPointer);
  writeSections(filer, extra_->appGroups, *this);
  kvdbWriteGroups(filer, extra_->xData, *this);
}

void KvDbObject::dwgInFields(KvDbDwgFiler& filer) {
  owner_ = filer.readId(KvDbReference::SoftPointer);
  extra_.reset();
  unknown_.reset();
  if (filer.readBool()) editUnknownSections() = readSections(filer);
  if (!filer.readBool()) return;
  Extra& own = extra();
  own.extensionDictionary = filer.readId(KvDbReference::HardOwnership);
  const std::uint32_t reactors = filer.readUInt32();
  for (std::uint32_t i = 0; i < reactors; ++i)
    if (const KvDbObjectId id = filer.readId(KvDbReference::SoftPointer); !id.isNull())
      own.reactors.append(id);
  own.appGroups = readSections(filer);
  own.xData = kvdbReadGroups(filer);
}

// --- Copies
// -------------------------------------------------------------------------------------------------------------------

std::unique_ptr<KvDbObject> KvDbObject::makeSame() const {
  KvRxObject* fresh = isA()->create();
  KvDbObject* object = cast(fresh);
  if (fresh && !object) delete fresh;
  return std::unique_ptr<KvDbObject>(object);
}

void KvDbObject::takeState(const KvDbObject& other) {
  KvDbMemoryFiler filer(KvDbDwgFiler::Purpose::Copy);
  other.dwgOutFields(filer);
  const KvDbObjectId owner = owner_, dictionary = extensionDictionary();
  const KvDbObjectIdArray reactors = persistentReactors();
  filer.rewind();
  dwgInFields(filer);
  owner_ = owner;
  if (!extra_ && dictionary.isNull() && reactors.isEmpty()) return;
  extra().extensionDictionary = dictionary;
  extra().reactors = reactors;
}

KvDbObject* KvDbObject::clone() const {
  std::unique_ptr<KvDbObject> copy = makeSame();
  if (!copy) return nullptr;
  copy->takeState(*this);
  copy->copyOwnedOf(*this);
  return copy.release();
}

Kvad::ErrorStatus KvDbObject::copyFrom(const KvRxObject* other) {
  const KvDbObject* object = cast(other);
  if (!object) return Kvad::eNullObjectPointer;
  if (!object->isKindOf(isA())) return Kvad::eNotThatKindOfClass;
  if (object == this) return Kvad::eOk;
  assertWriteEnabled();
  takeState(*object);
  copyOwnedOf(*object);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbObject::replaceContent(std::span<const KvDxfGroup> groups, KvDxfResolver& resolver) {
  const std::unique_ptr<KvDbObject> fresh = makeSame();
  if (!fresh) return Kvad::eInvalidInput;
  fresh->keepOwnedOf(*this);
  fresh->dxfIn(groups, resolver);
  if (resolver.hasMissingName()) return Kvad::eKeyNotFound;
  assertWriteEnabled();
  std::unique_ptr<Extra> own = std::move(extra_);
  takeState(*fresh);
  extra_ = std::move(own);
  return Kvad::eOk;
}

void KvDbObject::dxfOutFields(KvDxfWriter&) const {}

bool KvDbObject::knowsMarker(std::wstring_view) const {
  return false;
}

bool KvDbObject::dxfInGroup(const KvDxfGroup&, std::wstring_view, KvDxfResolver&) {
  return false;
}

void KvDbObject::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                              KvDxfResolver& resolver) {
  bool isEmbedded = false;
  for (const KvDxfGroup& group : groups) {
    isEmbedded = isEmbedded || group.code == kvdxfEmbedded;
    if (isEmbedded || !dxfInGroup(group, marker, resolver)) keepUnknown(marker, group);
  }
}

void KvDbObject::dxfInEnd(KvDxfResolver&) {}

void KvDbObject::dxfOut(KvDxfWriter& writer) const {
  writer.beginObject();
  writer.text(0, fileTypeView());
  dxfOutIdentity(writer);
  dxfOutFields(writer);
  dxfOutRest(writer);
}

void KvDbObject::dxfOutIdentity(KvDxfWriter& writer) const {
  const bool isDimStyle = fileTypeView() == L"DIMSTYLE";
  if (!handle().isNull()) writer.handle(isDimStyle ? kDimStyleHandleCode : kHandleCode, objectId());
  if (!writer.hasMarkers()) return;
  writeAppGroups(writer);
  writer.handle(kOwnerCode, owner_);
  writeUnknown(writer, L"");
}

void KvDbObject::dxfOutRest(KvDxfWriter& writer) const {
  // Sections of which the class knows nothing, and what no field table wrote of the last one.
  for (const KvDbUnknownSection& section : unknownSections()) {
    const std::wstring_view marker = section.marker.view();
    if (writer.isFlushed(marker)) continue;
    if (!marker.empty() && (marker != writer.lastMarker() || !knowsMarker(marker))) writer.marker(marker);
    for (const KvDxfGroup& group : section.groups) writer.group(group);
  }
  if (!extra_) return;
  for (const KvDbStoredGroup& group : extra_->xData) writer.group(group.view());
}

void KvDbObject::writeAppGroups(KvDxfWriter& writer) const {
  if (!extra_) return;
  for (const auto& block : extra_->appGroups) {
    writer.text(kAppGroupCode, (L"{" + CString(block.marker.view())).view());
    for (const KvDxfGroup& group : block.groups) writer.group(group);
    writer.text(kAppGroupCode, L"}");
  }
  // An object that was erased since is told of nothing any more; one that was never there stays, as the file
  // has it.
  KvDbObjectIdArray reactors;
  for (KvDbObjectId id : extra_->reactors)
    if (!id.isErased()) reactors.append(id);
  if (!reactors.isEmpty()) {
    writer.text(kAppGroupCode, L"{ACAD_REACTORS");
    for (KvDbObjectId id : reactors) writer.handle(330, id);
    writer.text(kAppGroupCode, L"}");
  }
  if (!extra_->extensionDictionary.isNull()) {
    writer.text(kAppGroupCode, L"{ACAD_XDICTIONARY");
    writer.handle(360, extra_->extensionDictionary);
    writer.text(kAppGroupCode, L"}");
  }
}

std::size_t KvDbObject::readAppGroup(std::span<const KvDxfGroup> groups, std::size_t at,
                                     KvDxfResolver& resolver) {
  const std::wstring_view name = groups[at].text.substr(1);
  std::size_t end = at + 1;
  while (end < groups.size() && !(groups[end].code == kAppGroupCode && groups[end].text == L"}")) ++end;
  const auto inside = groups.subspan(at + 1, end - at - 1);
  if (name == L"ACAD_REACTORS") {
    for (const KvDxfGroup& group : inside) extra().reactors.append(resolver.object(group.integer));
  } else if (name == L"ACAD_XDICTIONARY") {
    if (!inside.empty()) extra().extensionDictionary = resolver.object(inside.front().integer);
  } else {
    extra().appGroups.push_back({resolver.shared(name), KvDbGroupList(inside)});
  }
  return std::min(end + 1, groups.size());
}

void KvDbObject::dxfIn(std::span<const KvDxfGroup> groups, KvDxfResolver& resolver) {
  std::size_t at = 0;
  // Before the first marker stand handle, owner and the applications' blocks; old files and some small
  // objects have no marker.
  bool ownerIsRead = false;
  std::vector<KvDxfGroup> loose;
  while (at < groups.size() && groups[at].code != kMarkerCode && !beginsXData(groups[at])) {
    const KvDxfGroup& group = groups[at];
    if (group.code == kAppGroupCode && group.text.starts_with(L'{')) {
      at = readAppGroup(groups, at, resolver);
      continue;
    }
    const bool isOwner = group.code == kOwnerCode && !ownerIsRead;
    ownerIsRead = ownerIsRead || isOwner;
    const bool isOwn = group.code == kHandleCode || group.code == kDimStyleHandleCode || isOwner;
    if (!isOwn || (group.code == kHandleCode && group.kind != KvDxfKind::Handle)) loose.push_back(group);
    ++at;
  }
  if (!loose.empty()) dxfInSection(L"", loose, resolver);
  while (at < groups.size() && !beginsXData(groups[at])) {
    const std::wstring_view marker = groups[at].text;
    std::size_t end = at + 1;
    while (end < groups.size() && groups[end].code != kMarkerCode && !beginsXData(groups[end])) ++end;
    // A section of which the class knows nothing is kept even when it is empty.
    if (!knowsMarker(marker)) editUnknownSections().push_back({resolver.shared(marker), {}});
    dxfInSection(marker, groups.subspan(at + 1, end - at - 1), resolver);
    at = end;
  }
  if (at < groups.size()) extra().xData.reserve(groups.size() - at);
  for (; at < groups.size(); ++at) extra_->xData.emplace_back(groups[at]);
  dxfInEnd(resolver);
}

void KvDbObject::keepUnknown(std::wstring_view marker, const KvDxfGroup& group) {
  auto& sections = editUnknownSections();
  if (sections.empty() || sections.back().marker.view() != marker)
    sections.push_back({KvDbSharedText(marker), {}});
  sections.back().groups.append(group);
}

void KvDbObject::writeUnknown(KvDxfWriter& writer, std::wstring_view marker) const {
  writer.noteFlushed(marker);
  for (const KvDbUnknownSection& section : unknownSections())
    if (section.marker.view() == marker)
      for (const KvDxfGroup& group : section.groups) writer.group(group);
}

std::vector<KvDbUnknownSection>& KvDbObject::editUnknownSections() {
  if (!unknown_) unknown_ = std::make_unique<std::vector<KvDbUnknownSection>>();
  return *unknown_;
}

const std::vector<KvDbUnknownSection>& KvDbObject::unknownSections() const {
  static const std::vector<KvDbUnknownSection> none;
  return unknown_ ? *unknown_ : none;
}

// --- Extended data, reactors, extension dictionary
// -----------------------------------------------------------------------------

resbuf* KvDbObject::xData(const wchar_t* application) const {
  if (!extra_) return nullptr;
  XData& data = extra_->xData;
  auto [first, last] = application ? rangeOf(data, application) : std::pair(data.begin(), data.end());
  return kvdbChainOf({first, last}, database());
}

Kvad::ErrorStatus KvDbObject::setXData(const resbuf* chain) {
  XData fresh;
  for (const resbuf* node = chain; node; node = node->rbnext) {
    if (node->restype == -3) continue;
    KvDbStoredGroup group;
    if (!isXDataCode(node->restype) || !kvdbStoredGroupOf(*node, group)) return Kvad::eInvalidInput;
    if (fresh.empty() && !isApplicationName(group)) return Kvad::eInvalidInput;
    if (isApplicationName(group) && database() && !database()->isApplicationKnown(group.text))
      return Kvad::eRegappNotFound;
    fresh.push_back(std::move(group));
  }
  if (fresh.empty()) return Kvad::eOk;
  assertWriteEnabled();
  XData& data = extra().xData;
  for (auto part = fresh.begin(); part != fresh.end();) {
    const auto end = std::find_if(part + 1, fresh.end(), isApplicationName);
    auto [first, last] = rangeOf(data, part->text);
    auto place = data.erase(first, last);
    if (end - part > 1) data.insert(place, part, end);
    part = end;
  }
  return Kvad::eOk;
}

KvDbObjectId KvDbObject::extensionDictionary() const {
  return extra_ ? extra_->extensionDictionary : KvDbObjectId();
}

void KvDbObject::setExtensionDictionary(KvDbObjectId id) {
  assertWriteEnabled();
  extra().extensionDictionary = id;
}

KvDbObjectIdArray KvDbObject::persistentReactors() const {
  return extra_ ? extra_->reactors : KvDbObjectIdArray();
}

void KvDbObject::addPersistentReactor(KvDbObjectId id) {
  if (id.isNull() || (extra_ && extra_->reactors.contains(id))) return;
  assertWriteEnabled();
  extra().reactors.append(id);
}

void KvDbObject::removePersistentReactor(KvDbObjectId id) {
  if (!extra_ || !extra_->reactors.contains(id)) return;
  assertWriteEnabled();
  extra_->reactors.remove(id);
}

// --- Objects that the host doesn't model
// ---------------------------------------------------------------------------------------

std::unique_ptr<KvDbObject> KvDbProxyObject::makeSame() const {
  if (isA() != desc())
    if (auto known = KvDbObject::makeSame()) return known;
  return std::make_unique<KvDbProxyObject>(type_);
}

void KvDbProxyObject::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbObject::dwgOutFields(filer);
  filer.writeString(CString(type_.view()));
}

void KvDbProxyObject::dwgInFields(KvDbDwgFiler& filer) {
  KvDbObject::dwgInFields(filer);
  type_ = KvDbSharedText(filer.readString().view());
}

void KvDbProxyObject::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                                   KvDxfResolver& resolver) {
  if (marker.empty() || knowsMarker(marker))
    KvDbObject::dxfInSection(marker, groups, resolver);
  else
    keepSection(groups);
}

std::optional<std::int64_t> KvDbProxyObject::handleBehind(std::wstring_view marker, int code) const {
  for (const KvDbUnknownSection& section : unknownSections())
    if (section.marker.view() == marker)
      for (const KvDxfGroup& group : section.groups)
        if (group.code == code) return group.integer;
  return std::nullopt;
}

void KvDbProxyObject::setHandleBehind(std::wstring_view marker, int code, std::int64_t handle) {
  for (KvDbUnknownSection& section : editUnknownSections())
    if (section.marker.view() == marker && section.groups.setInteger(code, handle)) return;
}

// --- Opening by id
// -------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus kvdbOpenAny(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode, bool openErased) {
  object = nullptr;
  KvDbStub* stub = id.stub();
  if (!stub) return Kvad::eNullObjectId;
  if (!stub->object) return Kvad::eUnknownHandle;
  if (stub->isErased && !openErased) return Kvad::eWasErased;
  if (stub->isOpenForWrite) return Kvad::eWasOpenForWrite;
  if (mode == KvDb::kForWrite) {
    if (stub->readers > 0) return Kvad::eWasOpenForRead;
    stub->isOpenForWrite = true;
  } else {
    if (stub->readers == UINT16_MAX) return Kvad::eHasOpenReaders;
    ++stub->readers;
  }
  stub->database->noteOpened();
  object = stub->object;
  return Kvad::eOk;
}

CString kvdbRecordName(KvDbObjectId id) {
  return CString(kvdbRecordNameView(id));
}

std::wstring_view kvdbRecordNameView(KvDbObjectId id) {
  const auto* record = id.stub() ? KvDbSymbolTableRecord::cast(id.stub()->object) : nullptr;
  return record ? record->getName().view() : std::wstring_view();
}
