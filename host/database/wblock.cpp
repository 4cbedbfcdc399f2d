// Whole drawings and parts of them from one database into another.
#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/database/entmake.h"
#include "host/database/header.h"
#include "host/database/layout.h"
#include "host/database/transaction.h"

namespace {

KvDbBlockTableRecord* blockOf(KvDbObjectId id) {
  return id.stub() ? KvDbBlockTableRecord::cast(id.stub()->object) : nullptr;
}

void transformAll(const KvDbObjectIdArray& ids, const KvGeMatrix3d& matrix) {
  for (KvDbObjectId id : ids) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) continue;
    entity->transformBy(matrix);
    entity->close();
  }
}

}  // namespace

Kvad::ErrorStatus KvDbDatabase::wblockCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                                   KvDbIdMapping& mapping,
                                                   KvDb::DuplicateRecordCloning cloning) {
  return kvdbWblockCloneObjects(ids, owner, mapping, cloning);
}

Kvad::ErrorStatus KvDbDatabase::deepCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                                 KvDbIdMapping& mapping) {
  return kvdbDeepCloneObjects(ids, owner, mapping);
}

void KvDbDatabase::empty() {
  pending_.reset();
  transactions_.reset();
  layouts_.reset();
  undo_.clear();
  for (KvDbStub* stub : placed_) delete stub->object;
  placed_.clear();
  unnumbered_.clear();
  byHandle_ = HandleMap();
  stubs_.clear();
  for (KvDbObjectId& table : tables_) table.setNull();
  namedObjects_.setNull();
  currentSpace_.setNull();
  nextHandle_ = 1;
  seedAsRead_ = 0;
  openCount_ = 0;
}

Kvad::ErrorStatus KvDbDatabase::wblock(KvDbDatabase& into) const {
  if (&into == this) return Kvad::eWrongDatabase;
  for (const wchar_t* space : {L"*Model_Space", L"*Paper_Space"})
    if (const auto* block = blockOf(into.recordId(KvDbTable::Block, space));
        block && block->entityCount() > 0)
      return Kvad::eNotApplicable;
  into.empty();
  // Every stub first, the ones that only something refers to as well, so that each id has its counterpart.
  KvDbIdMap map;
  map.reserve(stubs_.size());
  for (const KvDbStub& stub : stubs_) {
    KvDbStub& copy = into.newStub(stub.handle);
    map[KvDbObjectId(const_cast<KvDbStub*>(&stub))] = KvDbObjectId(&copy);
  }
  for (const KvDbStub* stub : placed_) {
    if (stub->isErased) continue;
    std::unique_ptr<KvDbObject> fresh = stub->object->makeSame();
    if (fresh) into.place(*map[KvDbObjectId(const_cast<KvDbStub*>(stub))].stub(), fresh.release());
  }
  for (const KvDbStub* stub : placed_) {
    KvDbObject* copy = map[KvDbObjectId(const_cast<KvDbStub*>(stub))].stub()->object;
    if (!copy) continue;
    KvDbTranslatingFiler filer(map, &into);
    stub->object->dwgOutFields(filer);
    filer.rewind();
    copy->dwgInFields(filer);
  }
  for (std::size_t i = 0; i < std::size(tables_); ++i) {
    const auto* table = tables_[i].stub() ? KvDbSymbolTable::cast(tables_[i].stub()->object) : nullptr;
    if (!table) continue;
    into.tables_[i] = map[tables_[i]];
    auto* copy = KvDbSymbolTable::cast(into.tables_[i].stub()->object);
    for (KvDbObjectId id : table->records())
      copy->addAsRead(*static_cast<KvDbSymbolTableRecord*>(map[id].stub()->object));
  }
  into.namedObjects_ = map[namedObjects_];
  if (currentSpace_.isValid()) into.currentSpace_ = map[currentSpace_];
  into.extras_ = extras_;
  into.header_ = std::make_unique<KvDbHeader>(into);
  into.nextHandle_ = nextHandle_;
  into.seedAsRead_ = seedAsRead_;
  into.completeAfterReading();
  into.modifiedWord_ = 0;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDatabase::wblock(KvDbDatabase*& output, const KvDbObjectIdArray& ids,
                                       const KvGePoint3d& base) {
  output = nullptr;
  for (KvDbObjectId id : ids)
    if (id.isNull() || id.database() != this) return id.isNull() ? Kvad::eNullObjectId : Kvad::eWrongDatabase;
  auto fresh = std::make_unique<KvDbDatabase>();
  fresh->extras_.version = extras_.version;
  fresh->extras_.codePage = extras_.codePage;
  for (const wchar_t* name : {L"$MEASUREMENT", L"$INSUNITS", L"$LUNITS", L"$LUPREC"})
    fresh->header().setWhole(name, header().whole(name));
  fresh->header().setReal(L"$LTSCALE", header().real(L"$LTSCALE"));
  KvDbIdMapping mapping;
  if (auto status = fresh->wblockCloneObjects(ids, fresh->modelSpaceId(), mapping, KvDb::kDrcIgnore);
      status != Kvad::eOk)
    return status;
  if (base != KvGePoint3d::kOrigin)
    transformAll(mapping.primaries(), KvGeMatrix3d::translation(KvGePoint3d::kOrigin - base));
  output = fresh.release();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDatabase::wblock(KvDbDatabase*& output, KvDbObjectId id) {
  output = nullptr;
  const KvDbBlockTableRecord* block = blockOf(id);
  if (!block) return Kvad::eNullObjectId;
  return wblock(output, block->entities(), block->origin());
}

Kvad::ErrorStatus KvDbDatabase::insert(KvDbObjectId& id, const wchar_t* name, KvDbDatabase* source, bool) {
  id.setNull();
  if (!source || source == this) return Kvad::eWrongDatabase;
  if (!kvdbIsSymbolName(name ? name : L"")) return Kvad::eInvalidName;
  const auto* content = blockOf(source->modelSpaceId());
  KvDbBlockTable* table = nullptr;
  if (auto status = kvdbOpenObject(table, blockTableId(), KvDb::kForWrite); status != Kvad::eOk)
    return status;
  KvDbBlockTableRecord* block = nullptr;
  auto status = Kvad::eOk;
  if (table->getAt(name, id) == Kvad::eOk) {
    status = kvdbOpenObject(block, id, KvDb::kForWrite);
    if (status == Kvad::eOk) block->eraseContent();
  } else {
    auto fresh = std::make_unique<KvDbBlockTableRecord>();
    fresh->setName(name);
    status = table->add(id, fresh.get());
    if (status == Kvad::eOk) {
      block = fresh.release();
      block->ensureMarks();
    }
  }
  table->close();
  if (status != Kvad::eOk) return status;
  block->setOrigin(source->header().point(L"$INSBASE"));
  block->close();
  KvDbIdMapping mapping;
  return wblockCloneObjects(content ? content->entities() : KvDbObjectIdArray(), id, mapping,
                            KvDb::kDrcIgnore);
}

Kvad::ErrorStatus KvDbDatabase::insert(const KvGeMatrix3d& transform, KvDbDatabase* source, bool) {
  if (!source || source == this) return Kvad::eWrongDatabase;
  const auto* content = blockOf(source->modelSpaceId());
  if (!content) return Kvad::eOk;
  KvDbIdMapping mapping;
  const auto status = wblockCloneObjects(content->entities(), modelSpaceId(), mapping, KvDb::kDrcIgnore);
  if (status == Kvad::eOk) transformAll(mapping.primaries(), transform);
  return status;
}
