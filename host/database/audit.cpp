#include "host/database/audit.h"

#include <cmath>
#include <unordered_map>

#include "host/database/block.h"
#include "host/database/dictionary.h"

namespace {

struct FaultRow {
  KvDbFault fault;
  const char* name;
};

constexpr FaultRow kFaults[] = {
    {KvDbFault::FileStructure, "file-structure"},
    {KvDbFault::FileValue, "file-value"},
    {KvDbFault::FileCut, "file-cut"},
    {KvDbFault::DuplicateHandle, "duplicate-handle"},
    {KvDbFault::DuplicatePart, "duplicate-part"},
    {KvDbFault::UnknownLayer, "unknown-layer"},
    {KvDbFault::UnknownLinetype, "unknown-linetype"},
    {KvDbFault::UnknownTextStyle, "unknown-text-style"},
    {KvDbFault::UnknownDimStyle, "unknown-dim-style"},
    {KvDbFault::UnknownRecord, "unknown-record"},
    {KvDbFault::DanglingEntry, "dangling-entry"},
    {KvDbFault::DanglingMember, "dangling-member"},
    {KvDbFault::DanglingReference, "dangling-reference"},
    {KvDbFault::DanglingOwner, "dangling-owner"},
    {KvDbFault::DanglingReactor, "dangling-reactor"},
    {KvDbFault::DanglingBlock, "dangling-block"},
    {KvDbFault::LayoutBlock, "layout-block"},
    {KvDbFault::NoLayer, "no-layer"},
    {KvDbFault::WrongLinetype, "wrong-linetype"},
    {KvDbFault::BadNumber, "bad-number"},
    {KvDbFault::BadName, "bad-name"},
    {KvDbFault::DuplicateName, "duplicate-name"},
    {KvDbFault::RecursiveBlock, "recursive-block"},
};

std::unordered_multimap<const KvRxClass*, KvDbAuditor>& auditors() {
  static std::unordered_multimap<const KvRxClass*, KvDbAuditor> all;
  return all;
}

bool isThere(KvDbObjectId id) {
  return !id.isNull() && id.stub()->object;
}

/// Of a group that names what its object needs or owns.
bool isDangling(const KvDbDatabase& database, int code, std::uint64_t handle) {
  constexpr int kFirstHardPointer = 340, kLastOwnership = 369;
  return code >= kFirstHardPointer && code <= kLastOwnership && handle != 0 &&
         !isThere(database.idFromHandle(KvDbHandle(handle)));
}

/// Looks at the numbers and references that an object would write.
class ContentProbe : public KvDxfWriter {
 public:
  explicit ContentProbe(const KvDbDatabase& database) : database_(database) {}
  void text(int, std::wstring_view) override {}
  void integer(int, std::int64_t) override {}
  void binary(int, std::span<const std::uint8_t>) override {}
  void real(int code, double value) override { look(code, value); }
  void point(int code, const KvGePoint3d& value) override {
    for (double number : {value.x, value.y, value.z}) look(code, number);
  }
  void point2d(int code, const KvGePoint2d& value) override {
    for (double number : {value.x, value.y}) look(code, number);
  }
  void handleValue(int code, std::uint64_t handle) override {
    if (isDangling(database_, code, handle)) dangling.push_back(handle);
  }

  int badCode = -1;  ///< of the first bad number
  std::vector<std::uint64_t> dangling;

 private:
  void look(int code, double value) {
    if (badCode < 0 && !(std::fabs(value) <= kKvDbLargestNumber)) badCode = code;
  }
  const KvDbDatabase& database_;
};

/// Hands references to what isn't there out as null.
class NullingFiler : public KvDbMemoryFiler {
 public:
  NullingFiler() : KvDbMemoryFiler(Purpose::Undo) {}
  KvDbObjectId readId(KvDbReference reference) override {
    const KvDbObjectId id = KvDbMemoryFiler::readId(reference);
    return isThere(id) ? id : KvDbObjectId();
  }
};

bool dropDanglingReferences(KvDbObject& object) {
  object.assertWriteEnabled();
  NullingFiler filer;
  object.dwgOutFields(filer);
  filer.rewind();
  object.dwgInFields(filer);
  // The object is open for write, so what it keeps may change as well.
  for (auto& section : const_cast<std::vector<KvDbUnknownSection>&>(object.unknownSections())) {
    KvDbGroupList kept;
    for (KvDxfGroup group : section.groups) {
      const auto handle = static_cast<std::uint64_t>(group.integer);
      if (group.kind == KvDxfKind::Handle && isDangling(*object.database(), group.code, handle))
        group.integer = 0;
      kept.append(group);
    }
    section.groups = std::move(kept);
  }
  ContentProbe probe(*object.database());
  object.dxfOut(probe);
  return probe.dangling.empty();
}

bool isMark(const KvDbObject& object) {
  return object.isKindOf(KvDbBlockBegin::desc()) || object.isKindOf(KvDbBlockEnd::desc()) ||
         object.isKindOf(KvDbSequenceEnd::desc());
}

void auditContent(KvDbObject& object, KvDbAudit& audit) {
  ContentProbe probe(audit.database());
  object.dxfOut(probe);
  for (std::uint64_t handle : probe.dangling) {
    const CString text = L"needs object " + KvDbHandle(handle).toText() + L", which isn't there";
    // The first repair mends all of the object's.
    audit.found(KvDbFault::DanglingReference, object, text, dropDanglingReferences);
  }
  if (probe.badCode < 0 || !KvDbEntity::cast(&object)) return;
  CString text;
  text.Format(L"the number of group %d is out of all bounds", probe.badCode);
  const KvDbAudit::Fix leaveOut = [](KvDbObject& bad) { return bad.erase() == Kvad::eOk; };
  audit.found(KvDbFault::BadNumber, object, text, isMark(object) ? KvDbAudit::Fix() : leaveOut);
}

void auditLinks(KvDbObject& object, KvDbAudit& audit) {
  const KvDbObjectId root = audit.database().namedObjectsDictionaryId();
  if (!object.ownerId().isNull() && !isThere(object.ownerId()))
    audit.found(KvDbFault::DanglingOwner, object, L"its owner isn't there", [root](KvDbObject& orphan) {
      if (root.isNull() || KvDbEntity::cast(&orphan)) return false;
      orphan.assertWriteEnabled();
      orphan.setOwnerId(root);
      return true;
    });
  for (KvDbObjectId id : object.persistentReactors())
    if (!isThere(id))
      audit.found(KvDbFault::DanglingReactor, object, L"tells an object that isn't there",
                  [id](KvDbObject& teller) {
                    teller.removePersistentReactor(id);
                    return true;
                  });
}

void auditObject(KvDbObject& object, KvDbAudit& audit) {
  auditLinks(object, audit);
  auditContent(object, audit);
}

void auditEntity(KvDbObject& object, KvDbAudit& audit) {
  auto& entity = static_cast<KvDbEntity&>(object);
  const auto isOf = [](KvDbObjectId id, const KvRxClass* wanted) {
    return id.isValid() && id.stub()->object && id.stub()->object->isKindOf(wanted);
  };
  const KvDbObjectId zero = audit.database().layerZero();
  // A vertex or an attribute without a layer of its own stands on its owner's.
  const bool isOwned = entity.layerId().isNull() && isOf(entity.ownerId(), KvDbEntity::desc());
  if (!isOwned && !isOf(entity.layerId(), KvDbLayerTableRecord::desc()))
    audit.found(KvDbFault::NoLayer, object, L"is on no layer", [zero](KvDbObject& homeless) {
      return static_cast<KvDbEntity&>(homeless).setLayer(zero, false) == Kvad::eOk;
    });
  const KvDbObjectId byLayer = audit.database().byLayerLinetype();
  if (!entity.linetypeId().isNull() && !isOf(entity.linetypeId(), KvDbLinetypeTableRecord::desc()))
    audit.found(KvDbFault::WrongLinetype, object, L"has a linetype that is none", [byLayer](KvDbObject& bad) {
      return static_cast<KvDbEntity&>(bad).setLinetype(byLayer, false) == Kvad::eOk;
    });
}

[[maybe_unused]] const bool kRegistered = kvdbRegisterAuditor(KvDbObject::desc(), auditObject) &&
                                          kvdbRegisterAuditor(KvDbEntity::desc(), auditEntity);

}  // namespace

const char* kvdbFaultName(KvDbFault fault) {
  for (const FaultRow& row : kFaults)
    if (row.fault == fault) return row.name;
  return "";
}

bool kvdbRegisterAuditor(const KvRxClass* ofClass, KvDbAuditor auditor) {
  auditors().emplace(ofClass, auditor);
  return true;
}

void KvDbAudit::found(KvDbFault fault, KvDbObject& object, const CString& text, const Fix& fix) {
  bool isFixed = false;
  KvDbObject* opened = nullptr;
  const CString where = object.fileType() + L" " + object.handle().toText() + L": ";
  if (fixes_ && fix && kvdbOpenAny(opened, object.objectId(), KvDb::kForWrite) == Kvad::eOk) {
    isFixed = fix(*opened);
    opened->close();
  }
  add(fault, where + text, isFixed);
}

void KvDbAudit::add(KvDbFault fault, const CString& text, bool isFixed) {
  ++(isFixed ? fixed_ : errors_);
  if (findings_.size() < kMostListed) findings_.push_back({fault, text, isFixed});
}

void KvDbAudit::run() {
  for (KvDbObjectId id : database_.allObjects()) {
    KvDbObject* object = id.stub()->object;
    for (const KvRxClass* at = object->isA(); at; at = at->myParent()) {
      const auto [first, last] = auditors().equal_range(at);
      for (auto auditor = first; auditor != last && !id.isErased(); ++auditor)
        auditor->second(*object, *this);
    }
  }
}
