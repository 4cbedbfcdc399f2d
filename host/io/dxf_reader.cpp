#include "host/io/internal/dxf_reader.h"

#include <algorithm>

#include "host/database/dictionary.h"
#include "host/io/internal/repair.h"
#include "platform/text/codepage.h"

namespace kvio {
namespace {

constexpr std::size_t kMostRepairsListed = 1000;

struct TableName {
  std::string_view name;
  KvDbTable table;
};

constexpr TableName kTableNames[] = {
    {"VPORT", KvDbTable::Viewport},  {"LTYPE", KvDbTable::Linetype},    {"LAYER", KvDbTable::Layer},
    {"STYLE", KvDbTable::TextStyle}, {"VIEW", KvDbTable::View},         {"UCS", KvDbTable::UCS},
    {"APPID", KvDbTable::RegApp},    {"DIMSTYLE", KvDbTable::DimStyle}, {"BLOCK_RECORD", KvDbTable::Block},
};

const TableName* tableNamed(std::string_view name) {
  const auto* found = std::find_if(std::begin(kTableNames), std::end(kTableNames),
                                   [&](const TableName& t) { return t.name == name; });
  return found == std::end(kTableNames) ? nullptr : found;
}

bool belongsToSequence(std::wstring_view type) {
  return type == L"VERTEX" || type == L"ATTRIB";
}

std::unique_ptr<KvDbObject> makeObject(const NamedClass& type) {
  const KvRxClass* known = type.known;
  const bool isPlain = known && !known->isDerivedFrom(KvDbEntity::desc()) &&
                       !known->isDerivedFrom(KvDbSymbolTableRecord::desc());
  if (isPlain)
    if (auto* object = KvDbObject::cast(known->create())) return std::unique_ptr<KvDbObject>(object);
  return std::make_unique<KvDbProxyObject>(type.name);
}

CString wide(std::string_view bytes) {
  return CString(std::wstring(bytes.begin(), bytes.end()));
}

}  // namespace

const KvDxfGroup* DxfReader::Record::find(int code) const {
  for (const KvDxfGroup& group : groups) {
    if (group.code == 1001) break;
    if (group.code == code) return &group;
  }
  return nullptr;
}

std::wstring_view DxfReader::Record::text(int code) const {
  const KvDxfGroup* group = find(code);
  return group ? group->text : std::wstring_view();
}

KvDbHandle DxfReader::Record::handle() const {
  for (const KvDxfGroup& group : groups) {
    if (group.code == 100 || group.code == 1001) break;
    if ((group.code == 5 && type != L"DIMSTYLE") || group.code == 105)
      return KvDbHandle(static_cast<std::uint64_t>(group.integer));
  }
  return {};
}

std::int64_t DxfReader::Record::owner() const {
  bool isInAppGroup = false;
  for (const KvDxfGroup& group : groups) {
    if (group.code == 100 || group.code == 1001) break;
    if (group.code == 102) isInAppGroup = group.text.starts_with(L'{');
    if (group.code == 330 && !isInAppGroup) return group.integer;
  }
  return 0;
}

DxfReader::DxfReader(KvDbDatabase& database, std::string_view bytes, KvIoReport& report, KvIoMode mode)
    : database_(database), tokens_(bytes), report_(report), mode_(mode) {
  findEncoding(bytes);
  database_.beginReading();
  if (mode_ == KvIoMode::Recover) tokens_.tolerate();
}

/// The version and code page stand in the header, which has texts of its own.
void DxfReader::findEncoding(std::string_view bytes) {
  DxfTokens tokens(bytes);
  tokens.tolerate();
  RawGroup group;
  std::string_view variable;
  KvDbFileExtras& extras = database_.extras();
  extras.version = KvDbFileVersion::R12;  // files without a header are of the oldest kind
  extras.codePage = L"ANSI_1252";
  while (tokens.next(group)) {
    if (group.code == 0 && group.bytes == "ENDSEC") break;
    if (group.code == 9) variable = group.bytes;
    if (variable == "$ACADVER" && group.code == 1)
      extras.version = kvdbVersionFromCode(wide(group.bytes).view());
    if (variable == "$DWGCODEPAGE" && group.code == 3) extras.codePage = wide(group.bytes);
  }
  encoding_.isUtf8 = extras.version >= KvDbFileVersion::R2007;
  encoding_.codePage = platform::codePageFromDrawingName(platform::utf8From(extras.codePage)).value_or(1252);
}

Kvad::ErrorStatus DxfReader::read() {
  if (database_.extras().version == KvDbFileVersion::Unknown) {
    fail(tokens_.here(), L"the header names a version that is not known");
    return Kvad::eUnsupportedFileVersion;
  }
  advance();
  while (hasCurrent_ && !failed_) {
    if (is(0, "EOF")) break;
    if (current_.code == 999) {
      database_.extras().comments.emplace_back(decodeText(current_.bytes, encoding_));
      advance();
    } else if (is(0, "SECTION")) {
      if (!readSection()) break;
    } else {
      if (!mend(tokens_.here(), L"the beginning of a section expected")) break;
      while (hasCurrent_ && !is(0, "SECTION") && !is(0, "EOF")) advance();
    }
  }
  if (!failed_ && tokens_.hasFailed()) {
    report_.error = tokens_.error();
    failed_ = true;
  }
  if (!failed_ && !is(0, "EOF")) mend(tokens_.here(), L"the end-of-file mark is missing", KvDbFault::FileCut);
  if (failed_) return Kvad::eFileInternalErr;
  finish();
  return Kvad::eOk;
}

bool DxfReader::advance() {
  hasCurrent_ = tokens_.next(current_);
  KvIoMessage message;
  if (tokens_.takeMended(message)) mend(message, message.text, KvDbFault::FileValue);
  return hasCurrent_;
}

std::wstring_view DxfReader::keep(std::wstring_view text) {
  if (text.empty()) return {};
  auto* place = static_cast<wchar_t*>(texts_.allocate(text.size() * sizeof(wchar_t), alignof(wchar_t)));
  std::copy(text.begin(), text.end(), place);
  return {place, text.size()};
}

std::wstring_view DxfReader::keepText(std::string_view bytes) {
  if (bytes.empty()) return {};
  if (!isPlainText(bytes)) return keep(decodeText(bytes, encoding_));
  auto* place = static_cast<wchar_t*>(texts_.allocate(bytes.size() * sizeof(wchar_t), alignof(wchar_t)));
  std::copy(bytes.begin(), bytes.end(), place);
  return {place, bytes.size()};
}

KvDxfGroup DxfReader::takeGroup() {
  KvDxfGroup group;
  group.code = static_cast<std::int16_t>(current_.code);
  group.kind = current_.kind;
  switch (current_.kind) {
    case KvDxfKind::Text:
      group.text = keepText(current_.bytes);
      break;
    case KvDxfKind::Binary: {
      std::wstring bytes;
      if (tokens_.isBinary()) {
        for (char c : current_.bytes) bytes += static_cast<wchar_t>(static_cast<unsigned char>(c));
      } else {
        const auto digit = [](char c) { return c >= 'a' ? c - 'a' + 10 : c >= 'A' ? c - 'A' + 10 : c - '0'; };
        for (std::size_t i = 0; i + 1 < current_.bytes.size(); i += 2)
          bytes +=
              static_cast<wchar_t>((digit(current_.bytes[i]) << 4 | digit(current_.bytes[i + 1])) & 0xFF);
      }
      group.text = keep(bytes);
      break;
    }
    case KvDxfKind::Point: {
      // A coordinate that the second one doesn't follow is a number of its own.
      const int code = current_.code;
      group.point.x = current_.real;
      advance();
      if (!hasCurrent_ || current_.code != code + 10) {
        group.kind = KvDxfKind::Real;
        return group;
      }
      group.point.y = current_.real;
      group.dimensions = 2;
      advance();
      if (!hasCurrent_ || current_.code != code + 20) return group;
      group.point.z = current_.real;
      group.dimensions = 3;
      break;
    }
    case KvDxfKind::Real:
      group.point.x = current_.real;
      break;
    default:
      group.integer = current_.integer;
      break;
  }
  advance();
  return group;
}

DxfReader::Record* DxfReader::takeRecord() {
  texts_.release();
  Record& record = record_;
  record.groups.clear();
  record.place = tokens_.here();
  record.type = keepText(current_.bytes);
  advance();
  while (hasCurrent_ && current_.code != 0) {
    if (current_.code == 999) {
      advance();
      continue;
    }
    if (current_.code == 5 && record.type == L"DIMSTYLE") current_.kind = KvDxfKind::Text;
    record.groups.push_back(takeGroup());
  }
  return tokens_.hasFailed() ? nullptr : &record;
}

bool DxfReader::fail(const KvIoMessage& place, const CString& text) {
  report_.error = place;
  report_.error.text = text;
  failed_ = true;
  return false;
}

bool DxfReader::mend(const KvIoMessage& place, const CString& text, KvDbFault fault) {
  if (mode_ == KvIoMode::Strict) return fail(place, text);
  if (report_.repairs.size() >= kMostRepairsListed) {
    ++report_.repairsLeftOut;
  } else {
    report_.repairs.push_back(place);
    report_.repairs.back().text = text;
    report_.repairs.back().fault = fault;
  }
  return true;
}

namespace {

/// The linetypes that the oldest files name without having records of them.
bool isImplied(KvDbTable table, const CString& name) {
  if (table != KvDbTable::Linetype) return false;
  return name.CompareNoCase(L"BYBLOCK") == 0 || name.CompareNoCase(L"BYLAYER") == 0;
}

KvDbFault faultOfMissing(KvDbTable table) {
  switch (table) {
    case KvDbTable::Layer:
      return KvDbFault::UnknownLayer;
    case KvDbTable::Linetype:
      return KvDbFault::UnknownLinetype;
    case KvDbTable::TextStyle:
      return KvDbFault::UnknownTextStyle;
    case KvDbTable::DimStyle:
      return KvDbFault::UnknownDimStyle;
    default:
      return KvDbFault::UnknownRecord;
  }
}

}  // namespace

bool DxfReader::readSection() {
  advance();
  if (!hasCurrent_ || current_.code != 2) return mend(tokens_.here(), L"the section's name expected");
  const CString name(decodeText(current_.bytes, encoding_));
  advance();
  bool isRead = true;
  if (name == L"HEADER")
    isRead = readHeader();
  else if (name == L"CLASSES")
    keepGroupsUntilSectionEnd(database_.extras().classes);
  else if (name == L"TABLES")
    isRead = readTables();
  else if (name == L"BLOCKS")
    isRead = readBlocks();
  else if (name == L"ENTITIES")
    isRead = readEntities();
  else if (name == L"OBJECTS")
    isRead = readObjects();
  else
    isRead = readOther(name);
  if (!isRead || tokens_.hasFailed()) return false;
  if (is(0, "ENDSEC")) return advance() || true;
  return mend(tokens_.here(), L"the end of section " + name + L" expected");
}

void DxfReader::keepGroupsUntilSectionEnd(std::vector<KvDbStoredGroup>& groups) {
  while (!isSectionEnd()) {
    texts_.release();
    groups.emplace_back(takeGroup());
  }
}

bool DxfReader::readOther(const CString& name) {
  auto& section = database_.extras().otherSections.emplace_back();
  section.name = name;
  keepGroupsUntilSectionEnd(section.groups);
  return true;
}

bool DxfReader::readHeader() {
  auto& header = database_.extras().header;
  while (!isSectionEnd()) {
    texts_.release();
    if (current_.code == 9) {
      header.push_back({CString(decodeText(current_.bytes, encoding_)), {}});
      advance();
    } else if (header.empty()) {
      if (!mend(tokens_.here(), L"the name of a variable expected")) return false;
      advance();
    } else {
      header.back().groups.emplace_back(takeGroup());
    }
  }
  if (const auto* seed = database_.extras().find(L"$HANDSEED"); seed && !seed->groups.empty())
    database_.setSeedAsRead(static_cast<std::uint64_t>(seed->groups.front().integer));
  return true;
}

template <class T>
T* DxfReader::place(std::unique_ptr<T> object, const Record& record, KvDbObjectId owner) {
  bool isReplaced = false;
  T* raw = object.release();
  const KvDbHandle handle = record.handle();
  database_.addAsRead(raw, handle, &isReplaced);
  if (isReplaced &&
      !mend(record.place, L"handle " + handle.toText() + L" is used twice", KvDbFault::DuplicateHandle))
    return nullptr;
  raw->setOwnerId(owner);
  raw->dxfIn(record.groups, *this);
  return failed_ ? nullptr : raw;
}

bool DxfReader::readTables() {
  while (!isSectionEnd()) {
    if (is(0, "TABLE")) {
      if (!readTable()) return false;
    } else {
      if (!mend(tokens_.here(), L"a table expected")) return false;
      advance();
    }
  }
  return true;
}

bool DxfReader::readTable() {
  const Record* head = takeRecord();
  if (!head) return false;
  const CString name(head->text(2));
  const TableName* known = tableNamed(platform::utf8From(name));
  if (!known) {
    if (!mend(head->place, L"table \"" + name + L"\" is not known")) return false;
    while (!isSectionEnd() && !is(0, "ENDTAB")) advance();
    if (is(0, "ENDTAB")) advance();
    return true;
  }
  auto* table = KvDbSymbolTable::cast(
      database_.tableId(known->table).stub() ? database_.tableId(known->table).stub()->object : nullptr);
  if (!table) {
    table = database_.makeTable(known->table).release();
    bool isReplaced = false;
    database_.setTableId(known->table, database_.addAsRead(table, head->handle(), &isReplaced));
    if (isReplaced && !mend(head->place, L"the table's handle is used twice", KvDbFault::DuplicateHandle))
      return false;
    table->dxfIn(head->groups, *this);
  } else if (!table->records().isEmpty() &&
             !mend(head->place, L"table \"" + name + L"\" stands twice", KvDbFault::DuplicatePart)) {
    return false;
  }
  while (!isSectionEnd() && !is(0, "ENDTAB") && !is(0, "TABLE")) {
    Record* record = takeRecord();
    if (!record) return false;
    if (record->type != name.view()) {
      if (!mend(record->place, L"a record of table \"" + name + L"\" expected")) return false;
      continue;
    }
    std::unique_ptr<KvDbSymbolTableRecord> fresh(
        static_cast<KvDbSymbolTableRecord*>(table->recordClass()->create()));
    KvDbSymbolTableRecord* placed = place(std::move(fresh), *record, table->objectId());
    if (!placed) return false;
    table->addAsRead(*placed);
  }
  if (is(0, "ENDTAB")) return advance() || true;
  return mend(tokens_.here(), L"the end of table \"" + name + L"\" expected");
}

KvDbBlockTableRecord* DxfReader::blockRecord(const Record& begin, const CString& name) {
  if (KvDbStub* owner = object(begin.owner()).stub(); owner && owner->object)
    if (auto* record = KvDbBlockTableRecord::cast(owner->object)) return record;
  if (name.IsEmpty()) {
    if (!mend(begin.place, L"the block has no name")) return nullptr;
  } else if (KvDbObjectId id = block(name.view()); !id.isNull()) {
    return KvDbBlockTableRecord::cast(id.stub()->object);
  }
  CString given = name;
  for (int number = 1;
       given.IsEmpty() || (name.IsEmpty() && !database_.recordId(KvDbTable::Block, given).isNull()); ++number)
    given.Format(L"NONAME%d", number);
  const KvDbObjectId id = makeRecord(KvDbTable::Block, given);
  return KvDbBlockTableRecord::cast(id.stub()->object);
}

bool DxfReader::readBlocks() {
  while (!isSectionEnd()) {
    Record* record = takeRecord();
    if (!record) return false;
    if (record->type == L"BLOCK") {
      if (!readBlock(*record)) return false;
    } else if (!mend(record->place, L"a block expected")) {
      return false;
    }
  }
  return true;
}

bool DxfReader::readBlock(const Record& beginRecord) {
  CString name(beginRecord.text(2));
  // The oldest files write the two spaces with a sign of their own.
  if (name.CompareNoCase(L"$MODEL_SPACE") == 0) name = L"*Model_Space";
  if (name.CompareNoCase(L"$PAPER_SPACE") == 0) name = L"*Paper_Space";
  KvDbBlockTableRecord* block = blockRecord(beginRecord, name);
  if (!block) return false;
  if (!block->beginId().isNull() &&
      !mend(beginRecord.place, L"block \"" + name + L"\" stands twice", KvDbFault::DuplicatePart))
    return false;
  const KvDbBlockBegin* begin = place(std::make_unique<KvDbBlockBegin>(), beginRecord, block->objectId());
  if (!begin) return false;
  block->setMarks(begin->objectId(), block->endId());
  openSequence_ = nullptr;
  while (!isSectionEnd() && !is(0, "BLOCK")) {
    Record* record = takeRecord();
    if (!record) return false;
    if (record->type == L"ENDBLK") {
      const KvDbBlockEnd* end = place(std::make_unique<KvDbBlockEnd>(), *record, block->objectId());
      if (end) block->setMarks(block->beginId(), end->objectId());
      return end != nullptr;
    }
    if (!addEntity(*record, block)) return false;
  }
  return mend(tokens_.here(), L"the end of block \"" + name + L"\" expected");
}

KvDbBlockTableRecord* DxfReader::blockOf(const Record& record) {
  const std::int64_t owner = record.owner();
  const KvDxfGroup* paper = record.find(67);
  const bool isPaper = paper && paper->integer != 0;
  if (lastBlock_ && owner == lastOwner_ && isPaper == lastWasPaper_) return lastBlock_;
  lastOwner_ = owner;
  lastWasPaper_ = isPaper;
  lastBlock_ = nullptr;
  if (KvDbStub* stub = object(owner).stub(); stub && stub->object)
    lastBlock_ = KvDbBlockTableRecord::cast(stub->object);
  if (!lastBlock_) {
    const wchar_t* name = isPaper ? L"*Paper_Space" : L"*Model_Space";
    KvDbObjectId id = database_.recordId(KvDbTable::Block, name);
    if (id.isNull()) id = makeRecord(KvDbTable::Block, name);
    lastBlock_ = KvDbBlockTableRecord::cast(id.stub()->object);
  }
  return lastBlock_;
}

bool DxfReader::readEntities() {
  openSequence_ = nullptr;
  while (!isSectionEnd()) {
    Record* record = takeRecord();
    if (!record) return false;
    KvDbBlockTableRecord* block =
        openSequence_ && belongsToSequence(record->type) ? nullptr : blockOf(*record);
    if (!addEntity(*record, block)) return false;
  }
  return true;
}

std::unique_ptr<KvDbEntity> DxfReader::makeEntity(const Record& record) {
  const NamedClass& type = named(record.type);
  return kvdbMakeEntity(type.name, type.known, record.groups);
}

bool DxfReader::addEntity(Record& record, KvDbBlockTableRecord* block) {
  const bool isEnd = record.type == L"SEQEND";
  if (openSequence_ && (isEnd || belongsToSequence(record.type))) {
    auto sub = isEnd ? std::unique_ptr<KvDbEntity>(std::make_unique<KvDbSequenceEnd>()) : makeEntity(record);
    // Some files name the block as owner, not the entity; what they say is kept.
    const KvDbObjectId owner = record.owner() != 0 ? object(record.owner()) : openOwner_;
    const KvDbEntity* placed = place(std::move(sub), record, owner);
    if (!placed) return false;
    if (isEnd) {
      openSequence_->setEndMarkAsRead(placed->objectId());
      openSequence_ = nullptr;
    } else {
      openSequence_->addAsRead(placed->objectId());
    }
    return true;
  }
  openSequence_ = nullptr;
  if (isEnd) return mend(record.place, L"an end mark without a beginning");
  KvDbEntity* placed = place(makeEntity(record), record, block->objectId());
  if (!placed) return false;
  block->addAsRead(placed->objectId());
  const KvDxfGroup* follows = record.find(66);
  const bool hasFollowers = record.type == L"POLYLINE" || (follows && follows->integer != 0);
  if (hasFollowers && (openSequence_ = placed->sequence())) openOwner_ = placed->objectId();
  return true;
}

bool DxfReader::readObjects() {
  while (!isSectionEnd()) {
    Record* record = takeRecord();
    if (!record) return false;
    const KvDbObject* placed = place(makeObject(named(record->type)), *record, object(record->owner()));
    if (!placed) return false;
    if (database_.namedObjectsDictionaryId().isNull() && placed->isKindOf(KvDbDictionary::desc()))
      database_.setNamedObjectsDictionaryId(placed->objectId());
  }
  return true;
}

KvDbObjectId DxfReader::object(std::int64_t handle) {
  return database_.referenceTo(KvDbHandle(static_cast<std::uint64_t>(handle)));
}

KvDbObjectId DxfReader::record(KvDbTable table, std::wstring_view name) {
  NameCache& cache = cache_[static_cast<std::size_t>(table)];
  for (const NameCache::Entry& entry : cache.entries)
    if (!entry.id.isNull() && entry.name == name) return entry.id;
  const CString wanted(name);
  KvDbObjectId id = database_.recordId(table, wanted);
  if (id.isNull() && !wanted.IsEmpty() && table != KvDbTable::Block) {
    // A name that no table has: the record comes into being, so that nothing hangs in the air.
    if (mode_ == KvIoMode::Recover && !isImplied(table, wanted))
      mend(tokens_.here(), L"\"" + wanted + L"\" stands in no table", faultOfMissing(table));
    id = makeRecord(table, wanted);
  }
  cache.entries[cache.next] = {std::wstring(name), id};
  cache.next = (cache.next + 1) % cache.entries.size();
  return id;
}

const NamedClass& DxfReader::named(std::wstring_view name) {
  constexpr std::size_t kFactor = 31;
  const std::size_t mark = name.empty()
                               ? 0
                               : (name.size() * kFactor + static_cast<std::size_t>(name.front())) * kFactor +
                                     static_cast<std::size_t>(name.back());
  NamedClass& place = named_[mark % std::size(named_)];
  if (place.name.view() != name) place = {KvDbSharedText(name), KvRxClass::findByDxfName(name)};
  return place;
}

KvDbObjectId DxfReader::makeRecord(KvDbTable table, const CString& name) {
  return database_.makeRecordAsRead(table, name);
}

void DxfReader::finish() {
  database_.completeAfterReading();
  if (mode_ == KvIoMode::Recover)
    repairReferences(database_,
                     [this](const CString& text, KvDbFault fault) { mend(KvIoMessage(), text, fault); });
}

}  // namespace kvio
