#include "host/database/deepclone.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/symboltable.h"

namespace {

constexpr std::size_t kDeepestDictionary = 16;

KvDbObject* objectOf(KvDbObjectId id) {
  return id.isValid() ? id.stub()->object : nullptr;
}

bool owns(KvDbReference reference) {
  return reference == KvDbReference::HardOwnership || reference == KvDbReference::SoftOwnership;
}

constexpr int kApplicationName = 1001;

KvDbTable tableOf(const KvDbDatabase& database, KvDbObjectId table) {
  for (int i = 0; i < kKvDbTableCount; ++i)
    if (database.tableId(static_cast<KvDbTable>(i)) == table) return static_cast<KvDbTable>(i);
  return KvDbTable::Block;
}

}  // namespace

KvDbObjectId KvDbIdMapping::lookup(KvDbObjectId old) const {
  const auto found = map_.find(old);
  return found == map_.end() ? KvDbObjectId() : found->second;
}

/// One act of copying: gathers, makes empty copies, then fills them through the map.
class KvDbCloner {
 public:
  KvDbCloner(KvDbDatabase& source, KvDbDatabase& target, KvDbIdMapping& mapping,
             KvDb::DuplicateRecordCloning cloning)
      : source_(source), target_(target), mapping_(mapping), cloning_(cloning) {}

  Kvad::ErrorStatus run(const KvDbObjectIdArray& ids, KvDbObjectId owner) {
    for (KvDbObjectId id : ids) mapping_.primaries_.append(addPrimary(id, owner));
    while (!pending_.empty()) {
      const KvDbObjectId id = pending_.front();
      pending_.pop_front();
      follow(*objectOf(id));
    }
    for (const Copy& copy : copies_) fill(copy);
    for (const Copy& copy : copies_) finish(copy);
    return Kvad::eOk;
  }

 private:
  struct Copy {
    KvDbObject *from, *to;
    KvDbObjectId owner;  // null: the copy of the original's owner
    bool isNew;
  };
  bool crosses() const { return &source_ != &target_; }

  KvDbObjectId addPrimary(KvDbObjectId id, KvDbObjectId owner) {
    const KvDbObject* object = objectOf(id);
    if (!object) return {};
    if (const KvDbObjectId known = mapping_.lookup(id); !known.isNull()) return known;
    const auto* record = KvDbSymbolTableRecord::cast(object);
    if (record) return addRecord(*record, KvDbSymbolTable::cast(objectOf(owner)));
    return add(*object, owner);
  }

  /// An empty copy under the owner; its content comes later.
  KvDbObjectId add(const KvDbObject& object, KvDbObjectId owner) {
    std::unique_ptr<KvDbObject> fresh = object.makeSame();
    if (!fresh) return {};
    KvDbObject* copy = fresh.release();
    const KvDbObjectId id = target_.addObject(copy, owner);
    mapping_.map_[object.objectId()] = id;
    copies_.push_back({object.objectId().stub()->object, copy, owner, true});
    pending_.push_back(object.objectId());
    return id;
  }

  /// A record of a table: the target's own of that name, or a copy.
  KvDbObjectId addRecord(const KvDbSymbolTableRecord& record, const KvDbSymbolTable* table) {
    if (!table || !record.isKindOf(table->recordClass())) return {};
    const auto* block = KvDbBlockTableRecord::cast(&record);
    const bool isSpace = block && block->isSpace();
    KvDbObjectId present;
    const bool needsNewName = block && block->isAnonymous() && !isSpace;
    if (needsNewName || table->getAt(record.getName(), present) != Kvad::eOk)
      return add(record, table->objectId());
    mapping_.map_[record.objectId()] = present;
    if (cloning_ == KvDb::kDrcReplace && !isSpace) replace(record, present);
    return present;
  }

  /// The present record takes over the content of the one that comes.
  void replace(const KvDbSymbolTableRecord& record, KvDbObjectId present) {
    KvDbObject* object = nullptr;
    if (kvdbOpenAny(object, present, KvDb::kForWrite) != Kvad::eOk) return;
    if (auto* block = KvDbBlockTableRecord::cast(object)) block->eraseContent();
    object->assertWriteEnabled();
    copies_.push_back({record.objectId().stub()->object, object, object->ownerId(), false});
    pending_.push_back(record.objectId());
  }

  /// What the object owns, and across drawings what it needs.
  void follow(const KvDbObject& object) {
    KvDbReferenceFiler references;
    object.dwgOutFields(references);
    for (const auto& found : references.found()) {
      if (mapping_.map_.contains(found.id)) continue;
      const KvDbObject* other = objectOf(found.id);
      if (!other || found.id == object.ownerId()) continue;
      if (owns(found.reference)) {
        add(*other, {});
      } else if (crosses() && found.reference == KvDbReference::HardPointer) {
        bring(*other, 0);
      }
    }
    if (crosses()) bringApplications(object);
  }

  /// The names under which extended data stand.
  void bringApplications(const KvDbObject& object) {
    resbuf* data = object.xData();
    for (const resbuf* node = data; node; node = node->rbnext)
      if (node->restype == kApplicationName)
        if (const KvDbObject* record =
                objectOf(source_.recordId(KvDbTable::RegApp, CString(node->resval.rstring))))
          bring(*record, 0);
    kvutRelRb(data);
  }

  /// An object that something in the other drawing needs.
  KvDbObjectId bring(const KvDbObject& object, std::size_t depth) {
    if (const KvDbObjectId known = mapping_.lookup(object.objectId()); !known.isNull()) return known;
    if (const auto* record = KvDbSymbolTableRecord::cast(&object)) {
      const KvDbTable kind = tableOf(source_, record->ownerId());
      return addRecord(*record, KvDbSymbolTable::cast(objectOf(target_.tableId(kind))));
    }
    const auto* dictionary = KvDbDictionary::cast(const_cast<const KvDbObject*>(objectOf(object.ownerId())));
    if (!dictionary || depth > kDeepestDictionary) return {};
    auto* home = KvDbDictionary::cast(objectOf(bringDictionary(*dictionary, depth + 1)));
    if (!home) return {};
    const CString name = dictionary->nameAt(object.objectId());
    KvDbObjectId present;
    if (home->getAt(name, present) == Kvad::eOk) {
      mapping_.map_[object.objectId()] = present;
      return present;
    }
    return add(object, home->objectId());
  }

  KvDbObjectId bringDictionary(const KvDbDictionary& dictionary, std::size_t depth) {
    if (dictionary.objectId() == source_.namedObjectsDictionaryId())
      return target_.namedObjectsDictionaryId();
    if (dictionary.ownerId().isNull()) return {};
    return bring(dictionary, depth);
  }

  void fill(const Copy& copy) {
    KvDbTranslatingFiler filer(mapping_.map_, &target_);
    copy.from->dwgOutFields(filer);
    filer.rewind();
    copy.to->dwgInFields(filer);
    copy.to->setOwnerId(copy.owner.isNull() ? mapping_.lookup(copy.from->ownerId()) : copy.owner);
    // Who was told of the original's changes has nothing to do with the copy.
    for (KvDbObjectId id : copy.to->persistentReactors())
      if (!isCopy(id)) copy.to->removePersistentReactor(id);
  }

  bool isCopy(KvDbObjectId id) {
    if (copyIds_.empty())
      for (const Copy& copy : copies_) copyIds_.insert(copy.to->objectId());
    return copyIds_.contains(id);
  }

  /// Puts the copy into its owner's row and closes it.
  void finish(const Copy& copy) {
    const KvDbObjectId id = copy.to->objectId();
    KvDbObject* owner = objectOf(copy.to->ownerId());
    const bool isPrimary = !copy.owner.isNull();
    if (auto* record = KvDbSymbolTableRecord::cast(copy.to)) {
      if (auto* table = KvDbSymbolTable::cast(owner); table && copy.isNew) enter(*table, *record);
    } else if (auto* block = KvDbBlockTableRecord::cast(owner); block && isPrimary) {
      block->addCopied(id);
    } else if (auto* home = KvDbDictionary::cast(owner); home && isPrimary) {
      home->addCopied(entryName(*copy.from, *home), id);
    }
    copy.to->close();
  }

  static CString entryName(const KvDbObject& original, const KvDbDictionary& home) {
    const auto* from = KvDbDictionary::cast(static_cast<const KvDbObject*>(objectOf(original.ownerId())));
    const CString wanted = from ? from->nameAt(original.objectId()) : CString(L"*A");
    CString name = wanted;
    for (int number = 1; home.has(name) || name.IsEmpty(); ++number) name.Format(L"%s_%d", wanted, number);
    return name;
  }

  void enter(KvDbSymbolTable& table, KvDbSymbolTableRecord& record) {
    if (table.has(record.getName()))
      record.setNameAsMade(kvdbFreeAnonymousName(table, record.getName().GetAt(1)));
    table.addCopied(record);
  }

  KvDbDatabase &source_, &target_;
  KvDbIdMapping& mapping_;
  KvDb::DuplicateRecordCloning cloning_;
  std::deque<KvDbObjectId> pending_;
  std::vector<Copy> copies_;
  std::unordered_set<KvDbObjectId> copyIds_;
};

namespace {

Kvad::ErrorStatus cloneInto(const KvDbObjectIdArray& ids, KvDbObjectId owner, KvDbIdMapping& mapping,
                            KvDb::DuplicateRecordCloning cloning, bool mayCross) {
  if (!objectOf(owner)) return Kvad::eNullObjectId;
  KvDbDatabase* source = nullptr;
  for (KvDbObjectId id : ids) {
    if (!id.database()) continue;
    if (source && source != id.database()) return Kvad::eWrongDatabase;
    source = id.database();
  }
  if (!source) return Kvad::eOk;
  if (!mayCross && source != owner.database()) return Kvad::eWrongDatabase;
  return KvDbCloner(*source, *owner.database(), mapping, cloning).run(ids, owner);
}

}  // namespace

Kvad::ErrorStatus kvdbDeepCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                       KvDbIdMapping& mapping) {
  return cloneInto(ids, owner, mapping, KvDb::kDrcIgnore, false);
}

Kvad::ErrorStatus kvdbWblockCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                         KvDbIdMapping& mapping, KvDb::DuplicateRecordCloning cloning) {
  return cloneInto(ids, owner, mapping, cloning, true);
}
