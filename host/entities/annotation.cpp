#include "host/entities/annotation.h"

#include <cmath>
#include <memory>

#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/names.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/entities/dimension.h"
#include "host/entities/hatch.h"
#include "host/entities/leader.h"
#include "host/entities/mtext.h"

namespace {

constexpr const wchar_t *kApplication = L"AcadAnnotative", *kData = L"AnnotativeData",
                        *kScaleList = L"ACAD_SCALELIST", *kScaleType = L"SCALE", *kScaleMarker = L"AcDbScale",
                        *kManager = L"AcDbContextDataManager", *kOwnRecord = L"KORVANE_ANNOTATION_SCALES";
constexpr int kTextData = 1000, kBraceData = 1002, kIntData = 1070, kReference = 340, kNameCode = 300,
              kPaperCode = 140, kDrawingCode = 141, kUnitCode = 290, kFlagsCode = 70, kDataVersion = 1;

struct ChainCloser {
  void operator()(resbuf* chain) const { kvutRelRb(chain); }
};
using Chain = std::unique_ptr<resbuf, ChainCloser>;

template <class... Classes>
bool isOneOf(const KvDbObject& object) {
  return (object.isKindOf(Classes::desc()) || ...);
}

bool isAnnotativeEntity(const KvDbObject& object) {
  return isOneOf<KvDbText, KvDbMText, KvDbDimension, KvDbLeader, KvDbHatch, KvDbBlockReference>(object);
}

bool isAnnotativeRecord(const KvDbObject& object) {
  return isOneOf<KvDbBlockTableRecord, KvDbTextStyleTableRecord, KvDbDimStyleTableRecord>(object);
}

Kvad::ErrorStatus checkChange(const KvDbObject* object) {
  if (!object) return Kvad::eNullObjectPointer;
  if (!object->database()) return Kvad::eNotInDatabase;
  return object->isWriteEnabled() ? Kvad::eOk : Kvad::eNotOpenForWrite;
}

bool ensureApplication(KvDbDatabase& database) {
  if (database.isApplicationKnown(kApplication)) return true;
  KvDbRegAppTable* table = nullptr;
  if (kvdbOpenObject(table, database.regAppTableId(), KvDb::kForWrite) != Kvad::eOk) return false;
  auto record = std::make_unique<KvDbRegAppTableRecord>();
  record->setName(kApplication);
  const bool isAdded = table->add(record.get()) == Kvad::eOk;
  if (isAdded) record.release()->close();
  table->close();
  return isAdded;
}

const KvDbDictionary* dictionaryOf(KvDbObjectId id) {
  return id.isValid() ? KvDbDictionary::cast(id.stub()->object) : nullptr;
}

KvDbObjectId entryOf(KvDbObjectId dictionary, const wchar_t* name) {
  const KvDbDictionary* entries = dictionaryOf(dictionary);
  KvDbObjectId id;
  return entries && entries->getAt(name, id) == Kvad::eOk && id.isValid() ? id : KvDbObjectId();
}

/// Adds the dictionary or record to a dictionary; closed, or null.
template <class T>
KvDbObjectId addEntry(KvDbObjectId dictionary, const wchar_t* name, std::unique_ptr<T> object) {
  KvDbDictionary* entries = nullptr;
  KvDbObjectId id;
  if (kvdbOpenObject(entries, dictionary, KvDb::kForWrite) != Kvad::eOk) return id;
  if (entries->setAt(name, object.get(), id) == Kvad::eOk)
    object.release()->close();
  else
    id.setNull();
  entries->close();
  return id;
}

KvDbObjectId ensureExtension(KvDbObject& object) {
  if (object.extensionDictionary().isValid()) return object.extensionDictionary();
  auto* made = new KvDbDictionary;
  const KvDbObjectId id = object.database()->addObject(made, object.objectId());
  made->close();
  object.setExtensionDictionary(id);
  return id;
}

/// The scales that this host has attached.
KvDbObjectIdArray ownContexts(const KvDbObject& object) {
  KvDbObjectIdArray scales;
  const KvDbObjectId id = entryOf(object.extensionDictionary(), kOwnRecord);
  const auto* record = id.isNull() ? nullptr : KvDbXrecord::cast(id.stub()->object);
  resbuf* head = nullptr;
  if (!record || record->rbChain(&head) != Kvad::eOk) return scales;
  const Chain chain(head);
  for (const resbuf* node = head; node; node = node->rbnext) {
    KvDbObjectId scale;
    if (node->restype == kReference && kvdbGetObjectId(scale, node->resval.rlname) == Kvad::eOk &&
        scale.isValid() && !scales.contains(scale))
      scales.append(scale);
  }
  return scales;
}

Kvad::ErrorStatus setOwnContexts(KvDbObject& object, const KvDbObjectIdArray& scales) {
  const KvDbObjectId extension = ensureExtension(object);
  KvDbObjectId id = entryOf(extension, kOwnRecord);
  if (id.isNull()) id = addEntry(extension, kOwnRecord, std::make_unique<KvDbXrecord>());
  KvDbXrecord* record = nullptr;
  if (const auto status = kvdbOpenObject(record, id, KvDb::kForWrite); status != Kvad::eOk) return status;
  // The count in front keeps the chain from being empty.
  const Chain chain(kvutBuildList(kFlagsCode, scales.length(), 0));
  resbuf* tail = chain.get();
  for (KvDbObjectId scale : scales) {
    long long name[2] = {};
    if (kvdbGetKvdsName(name, scale) != Kvad::eOk) continue;
    tail->rbnext = kvutBuildList(kReference, static_cast<const long long*>(name), 0);
    if (tail->rbnext) tail = tail->rbnext;
  }
  const Kvad::ErrorStatus status = record->setFromRbChain(*chain);
  record->close();
  return status;
}

/// What other programs have attached: one object for each scale, which names it.
void appendForeignContexts(const KvDbObject& object, KvDbObjectIdArray& scales) {
  const KvDbObjectId manager = entryOf(object.extensionDictionary(), kManager);
  const KvDbDictionary* data = dictionaryOf(entryOf(manager, kvdbAnnotationScaleCollectionName));
  if (!data) return;
  for (const KvDbDictionary::Entry& entry : data->entries())
    for (const KvDbUnknownSection& section : entry.id.stub()->object->unknownSections())
      for (const KvDxfGroup& group : section.groups) {
        if (group.code != kReference) continue;
        const KvDbObjectId id =
            object.database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(group.integer)));
        if (kvdbAnnotationScaleOf(id) && !scales.contains(id)) scales.append(id);
      }
}

KvDxfGroup groupOf(int code) {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(code);
  group.kind = kvdxfKind(code);
  return group;
}

/// A scale is an object that the host doesn't model: it is made of its groups.
class ScaleObject : public KvDbProxyObject {
 public:
  explicit ScaleObject(const KvDbAnnotationScale& scale) : KvDbProxyObject(CString(kScaleType)) {
    KvDxfGroup name = groupOf(kNameCode), paper = groupOf(kPaperCode), drawing = groupOf(kDrawingCode),
               unit = groupOf(kUnitCode);
    name.text = scale.name.view();
    paper.point.x = scale.paperUnits;
    drawing.point.x = scale.drawingUnits;
    unit.integer = scale.paperUnits == scale.drawingUnits;
    const std::vector<KvDxfGroup> groups = {groupOf(kFlagsCode), name, paper, drawing, unit};
    editUnknownSections().push_back({KvDbSharedText(kScaleMarker), KvDbGroupList(groups)});
  }
};

}  // namespace

const KvDbAnnotativeObjectPE* kvdbAnnotativeObjectPE(const KvDbObject* object) {
  static constexpr KvDbAnnotativeObjectPE kService;
  return object && (isAnnotativeEntity(*object) || isAnnotativeRecord(*object)) ? &kService : nullptr;
}

const KvDbObjectContextInterface* kvdbObjectContextInterface(const KvDbObject* object) {
  static constexpr KvDbObjectContextInterface kService;
  return object && isAnnotativeEntity(*object) ? &kService : nullptr;
}

bool KvDbAnnotativeObjectPE::annotative(const KvDbObject* object) const {
  if (!object) return false;
  const Chain chain(object->xData(kApplication));
  // "AnnotativeData" { version flag }
  int numbers = 0;
  for (const resbuf* node = chain.get(); node; node = node->rbnext)
    if (node->restype == kIntData && ++numbers == 2) return node->resval.rint != 0;
  return false;
}

Kvad::ErrorStatus KvDbAnnotativeObjectPE::setAnnotative(KvDbObject* object, bool isAnnotative) const {
  if (const auto status = checkChange(object); status != Kvad::eOk) return status;
  if (!ensureApplication(*object->database())) return Kvad::eRegappNotFound;
  const Chain chain(kvutBuildList(1001, kApplication, kTextData, kData, kBraceData, L"{", kIntData,
                                  kDataVersion, kIntData, isAnnotative ? 1 : 0, kBraceData, L"}", 0));
  return object->setXData(chain.get());
}

KvDbObjectIdArray KvDbObjectContextInterface::contexts(const KvDbObject* object) const {
  if (!object || !object->database()) return KvDbObjectIdArray();
  KvDbObjectIdArray scales = ownContexts(*object);
  appendForeignContexts(*object, scales);
  return scales;
}

bool KvDbObjectContextInterface::hasContext(const KvDbObject* object, KvDbObjectId scale) const {
  return contexts(object).contains(scale);
}

Kvad::ErrorStatus KvDbObjectContextInterface::addContext(KvDbObject* object, KvDbObjectId scale) const {
  if (const auto status = checkChange(object); status != Kvad::eOk) return status;
  if (!kvdbAnnotationScaleOf(scale)) return Kvad::eWrongObjectType;
  if (scale.database() != object->database()) return Kvad::eWrongDatabase;
  if (hasContext(object, scale)) return Kvad::eOk;
  KvDbObjectIdArray scales = ownContexts(*object);
  scales.append(scale);
  return setOwnContexts(*object, scales);
}

Kvad::ErrorStatus KvDbObjectContextInterface::removeContext(KvDbObject* object, KvDbObjectId scale) const {
  if (const auto status = checkChange(object); status != Kvad::eOk) return status;
  KvDbObjectIdArray scales = ownContexts(*object);
  return scales.remove(scale) ? setOwnContexts(*object, scales) : Kvad::eKeyNotFound;
}

std::optional<KvDbAnnotationScale> kvdbAnnotationScaleOf(KvDbObjectId id) {
  const auto* object = id.isValid() ? KvDbProxyObject::cast(id.stub()->object) : nullptr;
  if (!object || object->fileTypeView() != kScaleType) return std::nullopt;
  KvDbAnnotationScale scale;
  for (const KvDbUnknownSection& section : object->unknownSections())
    for (const KvDxfGroup& group : section.groups) {
      const bool isUnit = std::isfinite(group.real()) && group.real() > 0;
      if (group.code == kNameCode) scale.name = CString(group.text);
      if (group.code == kPaperCode && isUnit) scale.paperUnits = group.real();
      if (group.code == kDrawingCode && isUnit) scale.drawingUnits = group.real();
    }
  return scale;
}

KvDbObjectIdArray KvDbObjectContextCollection::contexts() const {
  KvDbObjectIdArray scales;
  if (const auto* list = dictionaryOf(entryOf(database_->namedObjectsDictionaryId(), kScaleList)))
    for (const KvDbDictionary::Entry& entry : list->entries())
      if (kvdbAnnotationScaleOf(entry.id)) scales.append(entry.id);
  return scales;
}

KvDbObjectId KvDbObjectContextCollection::getContext(const CString& name) const {
  for (KvDbObjectId id : contexts())
    if (kvdbAnnotationScaleOf(id)->name.CompareNoCase(name) == 0) return id;
  return {};
}

Kvad::ErrorStatus KvDbObjectContextCollection::addContext(const KvDbAnnotationScale& scale,
                                                          KvDbObjectId& id) {
  if (scale.name.IsEmpty()) return Kvad::eInvalidName;
  for (double units : {scale.paperUnits, scale.drawingUnits})
    if (!std::isfinite(units) || units <= 0) return Kvad::eInvalidInput;
  if (!getContext(scale.name).isNull()) return Kvad::eDuplicateKey;
  const KvDbObjectId root = database_->namedObjectsDictionaryId();
  KvDbObjectId list = entryOf(root, kScaleList);
  if (list.isNull()) list = addEntry(root, kScaleList, std::make_unique<KvDbDictionary>());
  const KvDbDictionary* entries = dictionaryOf(list);
  if (!entries) return Kvad::eNotThatKindOfClass;
  // Entries are named A0, A1, ...
  CString key;
  for (int number = entries->numEntries(); key.IsEmpty() || entries->has(key); ++number)
    key.Format(L"A%d", number);
  id = addEntry(list, key, std::make_unique<ScaleObject>(scale));
  return id.isNull() ? Kvad::eInvalidKey : Kvad::eOk;
}

KvDbObjectContextCollection* KvDbObjectContextManager::contextCollection(const CString& name) {
  return name == kvdbAnnotationScaleCollectionName ? &collection_ : nullptr;
}
