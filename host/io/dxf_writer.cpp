#include "host/io/internal/dxf_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/tables.h"

namespace kvio {
namespace {

constexpr std::string_view kBinaryMark("AutoCAD Binary DXF\r\n\x1a\0", 22);
constexpr std::size_t kLongestChunk = 127;  // bytes of binary data in one group
constexpr std::size_t kCodeLine = 16;       // room for a code and its line end

struct TableName {
  KvDbTable table;
  const wchar_t* name;
};

constexpr TableName kTableNames[] = {
    {KvDbTable::Viewport, L"VPORT"},  {KvDbTable::Linetype, L"LTYPE"},    {KvDbTable::Layer, L"LAYER"},
    {KvDbTable::TextStyle, L"STYLE"}, {KvDbTable::View, L"VIEW"},         {KvDbTable::UCS, L"UCS"},
    {KvDbTable::RegApp, L"APPID"},    {KvDbTable::DimStyle, L"DIMSTYLE"}, {KvDbTable::Block, L"BLOCK_RECORD"},
};

template <class T>
const T* peek(KvDbObjectId id) {
  return id.stub() && id.stub()->object ? T::cast(const_cast<const KvDbObject*>(id.stub()->object)) : nullptr;
}

bool isSpaceOfEntities(const CString& name) {
  return name.CompareNoCase(L"*Model_Space") == 0 || name.CompareNoCase(L"*Paper_Space") == 0;
}

/// A number of at most six places and 15 digits in plain decimals, where that is the shortest form; null
/// where it may not be. Such a number has no second form of so few digits, so that the digits are the same
/// that std::to_chars finds.
char* formatShortReal(char* out, double value) {
  constexpr double kScale = 1e6, kLimit = 1e9;
  constexpr int kPlaces = 6;
  const double size = std::fabs(value);
  // Numbers below a tenth and long whole ones may be shorter with an exponent.
  if (!(size >= 0.1 && size < kLimit)) return nullptr;
  const auto scaled = static_cast<std::int64_t>(size * kScale + 0.5);
  if (static_cast<double>(scaled) / kScale != size) return nullptr;
  constexpr std::int64_t kWhole = 1'000'000;
  const std::int64_t whole = scaled / kWhole;
  auto part = static_cast<std::int32_t>(scaled % kWhole);
  if (part == 0 && whole % 100 == 0) return nullptr;
  if (value < 0) *out++ = '-';
  out = std::to_chars(out, out + 20, whole).ptr;
  if (part == 0) return out;
  *out++ = '.';
  char places[kPlaces];
  for (int i = kPlaces; i-- > 0; part /= 10) places[i] = static_cast<char>('0' + part % 10);
  int count = kPlaces;
  while (places[count - 1] == '0') --count;
  return std::copy_n(places, count, out);
}

/// The line of a code: three places, as is the habit of these files.
char* formatCode(char* out, int code) {
  if (code < 0 || code > 999) {
    if (code < 0) out = std::copy_n("  ", 2, out);
    out = std::to_chars(out, out + 8, code).ptr;
  } else {
    *out++ = code < 100 ? ' ' : static_cast<char>('0' + code / 100);
    *out++ = code < 10 ? ' ' : static_cast<char>('0' + code / 10 % 10);
    *out++ = static_cast<char>('0' + code % 10);
  }
  return std::copy_n("\r\n", 2, out);
}

char* formatReal(char* out, char* end, double value) {
  if (value == 0 && !std::signbit(value)) {
    *out = '0';
    return out + 1;
  }
  char* shortEnd = formatShortReal(out, value);
  return shortEnd ? shortEnd : std::to_chars(out, end, value).ptr;
}

}  // namespace

// --- Bytes
// ---------------------------------------------------------------------------------------------------------------------

DxfByteWriter::DxfByteWriter(KvIoForm form, TextEncoding encoding, KvDbFileVersion version)
    : form_(form), encoding_(encoding), version_(version) {
  if (form_ == KvIoForm::Binary) bytes_ = kBinaryMark;
}

void DxfByteWriter::putCode(int code) {
  if (form_ == KvIoForm::Binary) {
    put(static_cast<std::int16_t>(code));
    return;
  }
  char line[kCodeLine];
  bytes_.append(line, formatCode(line, code));
}

void DxfByteWriter::putLine(std::string_view value) {
  bytes_.append(value);
  if (form_ == KvIoForm::Binary)
    bytes_ += '\0';
  else
    bytes_ += "\r\n";
}

void DxfByteWriter::text(int code, std::wstring_view value) {
  constexpr std::size_t kShort = 64;
  if (form_ == KvIoForm::Text && value.size() <= kShort) {
    char line[kCodeLine + kShort + 2];
    char* end = formatCode(line, code);
    bool isPlain = true;
    for (wchar_t c : value) {
      isPlain = isPlain && c >= 0x20 && c < 0x7F;
      *end++ = static_cast<char>(c);
    }
    if (isPlain) {
      bytes_.append(line, std::copy_n("\r\n", 2, end));
      return;
    }
  }
  putCode(code);
  appendEncoded(bytes_, value, encoding_);
  putLine({});
}

void DxfByteWriter::real(int code, double value) {
  if (!std::isfinite(value)) value = 0;
  if (form_ == KvIoForm::Binary) {
    putCode(code);
    put(value);
    return;
  }
  char line[kCodeLine + 44];
  char* const digits = formatCode(line, code);
  char* end = formatReal(digits, line + sizeof line - 4, value);
  // Readers tell real numbers by their point.
  if (std::find_if(digits, end, [](char c) { return c == '.' || c == 'e'; }) == end)
    end = std::copy_n(".0", 2, end);
  bytes_.append(line, std::copy_n("\r\n", 2, end));
}

void DxfByteWriter::integer(int code, std::int64_t value) {
  putCode(code);
  if (form_ == KvIoForm::Binary) {
    switch (kvdxfKind(code)) {
      case KvDxfKind::Int32:
        put(static_cast<std::int32_t>(value));
        return;
      case KvDxfKind::Int64:
        put(value);
        return;
      case KvDxfKind::Bool:
        put(static_cast<std::uint8_t>(value));
        return;
      default:
        put(static_cast<std::int16_t>(value));
        return;
    }
  }
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  const std::string_view number(digits, static_cast<std::size_t>(end - digits));
  constexpr std::size_t kPlaces = 6, kWidePlaces = 9;
  const std::size_t places = kvdxfKind(code) == KvDxfKind::Int32 ? kWidePlaces : kPlaces;
  if (number.size() < places) bytes_.append(places - number.size(), ' ');
  putLine(number);
}

void DxfByteWriter::handleValue(int code, std::uint64_t handle) {
  putCode(code);
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, handle, 16).ptr;
  for (char* at = digits; at != end; ++at)
    if (*at >= 'a') *at = static_cast<char>(*at - 0x20);
  putLine({digits, static_cast<std::size_t>(end - digits)});
}

void DxfByteWriter::point(int code, const KvGePoint3d& value) {
  real(code, value.x);
  real(code + 10, value.y);
  real(code + 20, value.z);
}

void DxfByteWriter::point2d(int code, const KvGePoint2d& value) {
  real(code, value.x);
  real(code + 10, value.y);
}

void DxfByteWriter::binary(int code, std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::size_t at = 0;
  do {
    const auto chunk = bytes.subspan(at, std::min(kLongestChunk, bytes.size() - at));
    at += chunk.size();
    putCode(code);
    if (form_ == KvIoForm::Binary) {
      put(static_cast<std::uint8_t>(chunk.size()));
      bytes_.append(reinterpret_cast<const char*>(chunk.data()), chunk.size());
      continue;
    }
    for (std::uint8_t byte : chunk) {
      bytes_ += kDigits[byte >> 4];
      bytes_ += kDigits[byte & 0xF];
    }
    bytes_ += "\r\n";
  } while (at < bytes.size());
}

// --- Sections
// ------------------------------------------------------------------------------------------------------------------

/// Types that other programs know by their entry among the classes only, and that are made here.
struct ClassRow {
  std::wstring_view type, className, application;
  int flags;
  bool isEntity;
};
constexpr ClassRow kClassRows[] = {
    {L"SORTENTSTABLE", L"AcDbSortentsTable", L"ObjectDBX Classes", 0, false},
    {L"WIPEOUT", L"AcDbWipeout", L"WipeOut", 127, true},
    {L"WIPEOUTVARIABLES", L"AcDbWipeoutVariables", L"WipeOut", 0, false},
};

void DxfFileWriter::writeMissingClasses() {
  if (version_ < KvDbFileVersion::R2000) return;
  int counts[std::size(kClassRows)] = {};
  for (KvDbObjectId id : database_.allObjects())
    if (!id.isErased()) {
      const std::wstring_view type = id.stub()->object->fileTypeView();
      for (std::size_t i = 0; i < std::size(kClassRows); ++i)
        if (type == kClassRows[i].type) ++counts[i];
    }
  for (std::size_t i = 0; i < std::size(kClassRows); ++i) {
    const ClassRow& row = kClassRows[i];
    const bool isThere = std::any_of(
        database_.extras().classes.begin(), database_.extras().classes.end(),
        [&](const KvDbStoredGroup& group) { return group.code == 1 && group.text.view() == row.type; });
    if (counts[i] == 0 || isThere) continue;
    writer_.text(0, L"CLASS");
    writer_.text(1, row.type);
    writer_.text(2, row.className);
    writer_.text(3, row.application);
    writer_.integer(90, row.flags);
    if (version_ >= KvDbFileVersion::R2004) writer_.integer(91, counts[i]);
    writer_.integer(280, 0);
    writer_.integer(281, row.isEntity);
  }
}

void DxfFileWriter::write() {
  const KvDbFileExtras& extras = database_.extras();
  for (const CString& comment : extras.comments) writer_.text(999, comment.view());
  writeHeader();
  beginSection(L"CLASSES");
  for (const KvDbStoredGroup& group : extras.classes) writer_.group(group.view());
  writeMissingClasses();
  endSection();
  writeTables();
  writeBlocks();
  writeEntities();
  writeObjects();
  for (const auto& section : extras.otherSections) {
    beginSection(section.name);
    for (const KvDbStoredGroup& group : section.groups) writer_.group(group.view());
    endSection();
  }
  writer_.text(0, L"EOF");
}

void DxfFileWriter::beginSection(const wchar_t* name) {
  writer_.text(0, L"SECTION");
  writer_.text(2, name);
}

void DxfFileWriter::writeVariable(const wchar_t* name, const std::vector<KvDbStoredGroup>& groups) {
  writer_.text(9, name);
  for (const KvDbStoredGroup& group : groups) writer_.group(group.view());
}

void DxfFileWriter::writeHeader() {
  const KvDbFileExtras& extras = database_.extras();
  beginSection(L"HEADER");
  writer_.text(9, L"$ACADVER");
  writer_.text(1, platform::wideFromUtf8(kvdbVersionCode(version_)).view());
  writer_.text(9, L"$DWGCODEPAGE");
  writer_.text(3, extras.codePage.view());
  for (const auto& variable : extras.header) {
    // The three that follow from the file itself.
    if (variable.name == L"$ACADVER" || variable.name == L"$DWGCODEPAGE" || variable.name == L"$HANDSEED")
      continue;
    writeVariable(variable.name, variable.groups);
  }
  writer_.text(9, L"$HANDSEED");
  writer_.handleValue(5, database_.savedHandleSeed());
  endSection();
}

void DxfFileWriter::writeTables() {
  beginSection(L"TABLES");
  for (const TableName& row : kTableNames) {
    const auto* table = peek<KvDbSymbolTable>(database_.tableId(row.table));
    if (!table) continue;
    writer_.beginObject();
    writer_.text(0, L"TABLE");
    writer_.text(2, row.name);
    table->dxfOutHead(writer_);
    for (KvDbObjectId id : table->records()) peek<KvDbSymbolTableRecord>(id)->dxfOut(writer_);
    writer_.text(0, L"ENDTAB");
  }
  endSection();
}

void DxfFileWriter::writeEntity(KvDbObjectId id) {
  const auto* entity = peek<KvDbEntity>(id);
  if (!entity) return;
  entity->dxfOut(writer_);
  const KvDbSequence* sequence = entity->sequence();
  if (!sequence) return;
  for (KvDbObjectId sub : sequence->subEntities()) peek<KvDbEntity>(sub)->dxfOut(writer_);
  if (sequence->endMark().isValid()) peek<KvDbEntity>(sequence->endMark())->dxfOut(writer_);
}

void DxfFileWriter::writeRow(KvDbObjectId blockId) {
  const auto* block = peek<KvDbBlockTableRecord>(blockId);
  if (!block) return;
  for (KvDbObjectId id : block->entities()) writeEntity(id);
}

void DxfFileWriter::writeBlocks() {
  beginSection(L"BLOCKS");
  const auto* table = peek<KvDbBlockTable>(database_.blockTableId());
  for (KvDbObjectId id : table ? table->records() : KvDbObjectIdArray()) {
    const auto* block = peek<KvDbBlockTableRecord>(id);
    if (const auto* begin = peek<KvDbEntity>(block->beginId())) begin->dxfOut(writer_);
    if (!isSpaceOfEntities(block->getName())) writeRow(id);
    if (const auto* end = peek<KvDbEntity>(block->endId())) end->dxfOut(writer_);
  }
  endSection();
}

void DxfFileWriter::writeEntities() {
  beginSection(L"ENTITIES");
  writeRow(database_.modelSpaceId());
  writeRow(database_.paperSpaceId());
  endSection();
}

void DxfFileWriter::writeObjects() {
  beginSection(L"OBJECTS");
  // The root comes first; the others in the order in which they came.
  if (const auto* root = peek<KvDbObject>(database_.namedObjectsDictionaryId())) root->dxfOut(writer_);
  for (KvDbObjectId id : database_.allObjects()) {
    const KvDbObject* object = id.stub()->object;
    if (id.isErased() || id == database_.namedObjectsDictionaryId()) continue;
    if (object->isKindOf(KvDbEntity::desc()) || object->isKindOf(KvDbSymbolTable::desc()) ||
        object->isKindOf(KvDbSymbolTableRecord::desc()))
      continue;
    object->dxfOut(writer_);
  }
  endSection();
}

}  // namespace kvio
