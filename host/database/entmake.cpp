#include "host/database/entmake.h"

#include <algorithm>

#include "host/database/chainreader.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/tables.h"

namespace {

struct Demand {
  const wchar_t* type;
  std::initializer_list<int> codes;     ///< groups without which there is no entity
  std::initializer_list<int> positive;  ///< numbers that must be above 0
  bool isClosed;                        ///< groups of no meaning for the type are not kept
};

const Demand kDemands[] = {
    {L"LINE", {10, 11}, {}, true},
    {L"POINT", {10}, {}, true},
    {L"CIRCLE", {10, 40}, {40}, true},
    {L"ARC", {10, 40, 50, 51}, {40}, true},
    {L"SOLID", {10, 11, 12}, {}, true},
    {L"TRACE", {10, 11, 12}, {}, true},
    {L"3DFACE", {10, 11, 12}, {}, false},
    {L"TEXT", {1, 10, 40}, {40}, false},
    {L"ATTRIB", {2, 10, 40}, {40}, false},
    {L"ATTDEF", {2, 10, 40}, {40}, false},
    {L"MTEXT", {1, 10}, {}, false},
    {L"INSERT", {2, 10}, {}, false},
    {L"VERTEX", {10}, {}, false},
    {L"LWPOLYLINE", {10}, {}, false},
    {L"ELLIPSE", {10, 11, 40}, {40}, false},
    {L"RAY", {10, 11}, {}, false},
    {L"XLINE", {10, 11}, {}, false},
    {L"HATCH", {91}, {}, false},
};

const Demand* demandOf(std::wstring_view type) {
  const auto* found =
      std::find_if(std::begin(kDemands), std::end(kDemands), [&](const Demand& d) { return type == d.type; });
  return found == std::end(kDemands) ? nullptr : found;
}

bool meets(const KvDbChainReader& record, const Demand& demand) {
  const auto has = [&](int code) { return record.has(code); };
  const auto isPositive = [&](int code) { return record.find(code)->real() > 0; };
  return std::all_of(demand.codes.begin(), demand.codes.end(), has) &&
         std::all_of(demand.positive.begin(), demand.positive.end(), isPositive);
}

bool isSequence(const KvDbChainReader& record) {
  if (record.type() == L"POLYLINE") return true;
  const KvDxfGroup* follow = record.find(66);
  return record.type() == L"INSERT" && follow && follow->integer != 0;
}

/// Reads the record into a fresh entity; null when it can't be made.
std::unique_ptr<KvDbEntity> makeFrom(KvDbChainReader& record, KvDbDatabase& database) {
  const std::wstring_view type = record.type();
  const Demand* demand = demandOf(type);
  if (demand && !meets(record, *demand)) return nullptr;
  const auto groups = record.content();
  const KvRxClass* known = KvRxClass::findByDxfName(type);
  const bool isModelled = known && known->isDerivedFrom(KvDbEntity::desc());
  if (!demand && !isModelled && type != L"POLYLINE" && type != L"DIMENSION") return nullptr;
  std::unique_ptr<KvDbEntity> entity = kvdbMakeEntity(KvDbSharedText(type), known, groups);
  entity->setDatabaseDefaults(&database);
  entity->dxfIn(groups, record);
  if (record.hasMissingName()) return nullptr;
  if (demand && demand->isClosed) entity->forgetUnknown();
  return entity;
}

/// The reader's groups name what an entity is; the first two parts of a name tell the table for others.
struct RecordType {
  const wchar_t* type;
  KvDbTable table;
};
constexpr RecordType kRecordTypes[] = {
    {L"LAYER", KvDbTable::Layer},  {L"LTYPE", KvDbTable::Linetype},    {L"STYLE", KvDbTable::TextStyle},
    {L"APPID", KvDbTable::RegApp}, {L"DIMSTYLE", KvDbTable::DimStyle}, {L"VIEW", KvDbTable::View},
    {L"UCS", KvDbTable::UCS},
};

int makeRecord(KvDbChainReader& record, KvDbDatabase& database, KvDbTable kind) {
  const KvDxfGroup* name = record.find(2);
  KvDbSymbolTable* table = nullptr;
  if (!name || kvdbOpenObject(table, database.tableId(kind), KvDb::kForWrite) != Kvad::eOk) return RTERROR;
  std::unique_ptr<KvDbSymbolTableRecord> fresh(
      static_cast<KvDbSymbolTableRecord*>(table->recordClass()->create()));
  fresh->dxfIn(record.content(), record);
  auto status = record.hasMissingName() ? Kvad::eKeyNotFound : table->add(fresh.get());
  if (status == Kvad::eOk) status = fresh.release()->close();
  table->close();
  return status == Kvad::eOk ? RTNORM : RTERROR;
}

class Maker {
 public:
  explicit Maker(KvDbDatabase& database) : database_(database), record_(database) {
    if (!database.pendingEntities())
      database.setPendingEntities(std::make_unique<KvDbPendingEntities>(database));
    pending_ = database.pendingEntities();
  }

  int make(const resbuf* chain) {
    if (!record_.read(chain) || record_.type().empty()) return RTERROR;
    const int status = dispatch();
    if (status == RTERROR) pending_->drop();
    return status;
  }

  int makeLoose(const resbuf* chain, kvds_name name) {
    if (!record_.read(chain)) return RTERROR;
    std::unique_ptr<KvDbEntity> entity = makeFrom(record_, database_);
    if (!entity) return RTERROR;
    KvDbEntity* made = entity.release();
    const KvDbObjectId id = database_.addObject(made, database_.currentSpaceId());
    return finish(*made, id) && kvdbGetKvdsName(name, id) == Kvad::eOk ? RTNORM : RTERROR;
  }

 private:
  int dispatch() {
    const std::wstring_view type = record_.type();
    if (!pending_->sequenceId().isNull()) return addToSequence(type);
    if (type == L"BLOCK") return beginBlock();
    if (type == L"ENDBLK") return endBlock();
    for (const RecordType& row : kRecordTypes)
      if (type == row.type) return makeRecord(record_, database_, row.table);
    if (type == L"SEQEND" || type == L"VERTEX" || type == L"ATTRIB") return RTERROR;
    return addEntity();
  }

  int beginBlock() {
    const KvDxfGroup* name = record_.find(2);
    const KvDxfGroup* origin = record_.find(10);
    if (!name || pending_->hasBlock()) return RTERROR;
    const auto status = pending_->beginBlock(CString(name->text), origin ? origin->point : KvGePoint3d());
    return status == Kvad::eOk ? RTNORM : RTERROR;
  }

  int endBlock() {
    if (!pending_->hasBlock()) return RTERROR;
    kvdbHostApplicationServices()->setLastInput(pending_->endBlock());
    return RTKWORD;
  }

  KvDbObjectId target() const {
    if (pending_->hasBlock()) return pending_->blockId();
    const KvDxfGroup* paper = record_.find(67);
    return paper && paper->integer != 0 ? database_.paperSpaceId() : database_.currentSpaceId();
  }

  int addEntity() {
    std::unique_ptr<KvDbEntity> entity = makeFrom(record_, database_);
    KvDbBlockTableRecord* block = nullptr;
    if (!entity || kvdbOpenObject(block, target(), KvDb::kForWrite) != Kvad::eOk) return RTERROR;
    KvDbEntity* made = entity.release();
    KvDbObjectId id;
    block->appendKvDbEntity(id, made);
    block->close();
    if (!finish(*made, id)) return RTERROR;
    if (isSequence(record_) && made->sequence()) pending_->beginSequence(id);
    return RTNORM;
  }

  bool finish(KvDbEntity& made, KvDbObjectId) {
    const bool hasData = !record_.xData() || made.setXData(record_.xData()) == Kvad::eOk;
    if (!hasData) made.erase();
    made.close();
    return hasData;
  }

  int addToSequence(std::wstring_view type) {
    KvDbEntity* owner = nullptr;
    if (kvdbOpenObject(owner, pending_->sequenceId(), KvDb::kForWrite) != Kvad::eOk) return RTERROR;
    KvDbSequence* sequence = owner->sequence();
    const bool isInsert = owner->fileTypeView() == L"INSERT";
    const bool isEnd = type == L"SEQEND";
    std::unique_ptr<KvDbEntity> entity;
    if (isEnd)
      entity = std::make_unique<KvDbSequenceEnd>();
    else if (type == (isInsert ? L"ATTRIB" : L"VERTEX"))
      entity = makeFrom(record_, database_);
    if (!entity) {
      owner->close();
      return RTERROR;
    }
    if (isEnd || !record_.has(8)) entity->setLayer(owner->layerId());
    KvDbEntity* made = entity.release();
    const KvDbObjectId id = database_.addObject(made, owner->objectId());
    const bool isMade = finish(*made, id);
    if (isEnd) {
      sequence->setEndMark(id);
      pending_->endSequence();
    } else if (isMade) {
      sequence->appendSubEntity(id);
    }
    owner->close();
    return isMade ? RTNORM : RTERROR;
  }

  KvDbDatabase& database_;
  KvDbChainReader record_;
  KvDbPendingEntities* pending_;
};

void eraseById(KvDbObjectId id) {
  KvDbObject* object = nullptr;
  if (kvdbOpenAny(object, id, KvDb::kForWrite) != Kvad::eOk) return;
  object->erase();
  object->close();
}

}  // namespace

Kvad::ErrorStatus KvDbPendingEntities::beginBlock(const CString& name, const KvGePoint3d& origin) {
  const bool isAnonymous = name.GetAt(0) == L'*' && name.GetLength() > 1;
  if (!isAnonymous && !kvdbIsSymbolName(name.view())) return Kvad::eInvalidName;
  auto* record = new KvDbBlockTableRecord;
  record->setNameAsMade(name);
  block_ = database_.addObject(record, database_.blockTableId());
  record->ensureMarks();
  record->setOrigin(origin);
  record->close();
  name_ = name;
  return Kvad::eOk;
}

CString KvDbPendingEntities::endBlock() {
  KvDbBlockTable* table = nullptr;
  KvDbBlockTableRecord *record = nullptr, *present = nullptr;
  const KvDbObjectId made = block_;
  block_.setNull();
  if (kvdbOpenObject(record, made, KvDb::kForWrite) != Kvad::eOk) return {};
  if (kvdbOpenObject(table, database_.blockTableId(), KvDb::kForWrite) != Kvad::eOk) {
    record->close();
    return {};
  }
  KvDbObjectId presentId;
  if (name_.GetAt(0) == L'*') name_ = kvdbFreeAnonymousName(*table, name_.GetAt(1));
  const bool isNew = table->getAt(name_, presentId) != Kvad::eOk;
  if (isNew) {
    record->setNameAsMade(name_);
    table->addCopied(*record);
  } else if (kvdbOpenObject(present, presentId, KvDb::kForWrite) == Kvad::eOk) {
    present->eraseContent();
    present->setOrigin(record->origin());
    present->takeEntitiesOf(*record);
    present->close();
    record->erase();
  }
  table->close();
  record->close();
  return name_;
}

void KvDbPendingEntities::drop() {
  if (!sequence_.isNull()) eraseById(sequence_);
  if (KvDbBlockTableRecord* block = nullptr;
      !block_.isNull() && kvdbOpenObject(block, block_, KvDb::kForWrite) == Kvad::eOk) {
    block->eraseContent();
    block->erase();
    block->close();
  }
  sequence_.setNull();
  block_.setNull();
}

int kvdbEntMake(const resbuf* record) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  return database && record ? Maker(*database).make(record) : RTERROR;
}

int kvdbEntMakeX(const resbuf* record, kvds_name name) {
  kvds_setNull(name);
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  return database && record ? Maker(*database).makeLoose(record, name) : RTERROR;
}
