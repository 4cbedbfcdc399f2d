#include "host/io/linetype_file.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/lettering/shapes.h"
#include "platform/files/files.h"
#include "platform/text/codepage.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"

namespace {

constexpr std::size_t kMostDashes = 100;
constexpr double kLongestDash = 1e9;

std::wstring wideFrom(std::string_view bytes) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF", kUtf16Mark = "\xFF\xFE";
  if (bytes.starts_with(kUtf16Mark)) return platform::fromUtf16Bytes(bytes.substr(kUtf16Mark.size()));
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  if (platform::isUtf8(bytes)) return platform::fromUtf8(bytes);
  return platform::fromCodePage(bytes, 0);
}

std::wstring_view trimmed(std::wstring_view text) {
  constexpr std::wstring_view kBlanks = L" \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The parts between the commas that stand outside brackets and quotes.
std::vector<std::wstring_view> split(std::wstring_view line) {
  std::vector<std::wstring_view> parts;
  std::size_t from = 0;
  bool isInBrackets = false, isInQuotes = false;
  for (std::size_t i = 0; i <= line.size(); ++i) {
    const wchar_t c = i < line.size() ? line[i] : L',';
    if (c == L'"') isInQuotes = !isInQuotes;
    if (!isInQuotes && c == L'[') isInBrackets = true;
    if (!isInQuotes && c == L']') isInBrackets = false;
    if (i < line.size() && (c != L',' || isInBrackets || isInQuotes)) continue;
    parts.push_back(trimmed(line.substr(from, i - from)));
    from = i + 1;
  }
  return parts;
}

bool readNumber(std::wstring_view text, double& value) {
  if (text.empty() || !platform::parseWhole(text, value)) return false;
  return std::isfinite(value) && std::fabs(value) <= kLongestDash;
}

class Parser {
 public:
  Parser(std::vector<KvIoLinetype>& linetypes, KvIoMessage& error) : linetypes_(linetypes), error_(error) {}

  bool read(std::wstring_view text) {
    while (!text.empty()) {
      const std::size_t end = text.find(L'\n');
      ++line_;
      if (!takeLine(trimmed(text.substr(0, end)))) return false;
      text = end == std::wstring_view::npos ? std::wstring_view() : text.substr(end + 1);
    }
    return !isOpen_ || fail(L"the elements of linetype \"" + linetypes_.back().name + L"\" expected");
  }

 private:
  bool fail(const CString& text) {
    error_.line = static_cast<std::uint64_t>(line_);
    error_.text = text;
    if (isOpen_) linetypes_.pop_back();
    return false;
  }

  bool takeLine(std::wstring_view line) {
    if (line.empty() || line.front() == L';') return true;
    if (line.front() == L'*') return begin(line.substr(1));
    if (!isOpen_) return linetypes_.empty() || fail(L"a line that begins with `*` expected");
    return takeElements(line);
  }

  bool begin(std::wstring_view line) {
    if (isOpen_) return fail(L"the elements of linetype \"" + linetypes_.back().name + L"\" expected");
    const std::size_t comma = line.find(L',');
    KvIoLinetype linetype;
    linetype.name = CString(trimmed(line.substr(0, comma)));
    if (comma != std::wstring_view::npos) linetype.description = CString(trimmed(line.substr(comma + 1)));
    linetype.line = line_;
    if (!kvdbIsSymbolName(linetype.name.view()))
      return fail(L"\"" + linetype.name + L"\" is no name for a linetype");
    linetypes_.push_back(std::move(linetype));
    isOpen_ = true;
    return true;
  }

  bool takeElements(std::wstring_view line) {
    const auto parts = split(line);
    KvIoLinetype& linetype = linetypes_.back();
    if (parts.front() != L"A" && parts.front() != L"a") return fail(L"`A,` and the elements expected");
    for (std::size_t i = 1; i < parts.size(); ++i) {
      if (parts[i].empty()) continue;
      if (parts[i].front() == L'[') {
        if (!takeBrackets(parts[i])) return false;
        continue;
      }
      KvDbLinetypeDash dash;
      if (!readNumber(parts[i], dash.length)) return fail(L"\"" + CString(parts[i]) + L"\" is no length");
      if (linetype.dashes.size() == kMostDashes) return fail(L"more than 100 elements");
      linetype.dashes.push_back(dash);
      linetype.textStyles.emplace_back();
      linetype.shapeNames.emplace_back();
    }
    double length = 0;
    for (const KvDbLinetypeDash& dash : linetype.dashes) length += std::fabs(dash.length);
    if (linetype.dashes.size() < 2 || !(length > 0))
      return fail(L"at least one dash or dot and one gap expected");
    isOpen_ = false;
    return true;
  }

  /// A text or a shape belongs to the element before it.
  bool takeBrackets(std::wstring_view element) {
    constexpr std::int16_t kAbsolute = 1, kText = 2, kShape = 4;
    KvIoLinetype& linetype = linetypes_.back();
    if (linetype.dashes.empty()) return fail(L"a length before the brackets expected");
    if (element.size() < 2 || element.back() != L']') return fail(L"`]` expected");
    const auto parts = split(element.substr(1, element.size() - 2));
    KvDbLinetypeDash& dash = linetype.dashes.back();
    if (parts.size() < 2) return fail(L"a text or shape and its style or file expected");
    if (parts[0].size() >= 2 && parts[0].front() == L'"' && parts[0].back() == L'"') {
      dash.flags = kText;
      dash.text = CString(parts[0].substr(1, parts[0].size() - 2));
      linetype.textStyles.back() = CString(parts[1]);
    } else {
      double number = 0;
      dash.flags = kShape;
      linetype.textStyles.back() = CString(parts[1]);
      if (platform::parseWhole(parts[0], number) && number >= 0 && number <= INT16_MAX)
        dash.shapeNumber = static_cast<std::int16_t>(number);
      else
        linetype.shapeNames.back() = CString(parts[0]);
    }
    for (std::size_t i = 2; i < parts.size(); ++i) {
      const std::size_t equals = parts[i].find(L'=');
      double value = 0;
      const wchar_t key = parts[i].empty() ? L' ' : parts[i].front() & ~0x20;
      if (equals != 1 || !readValue(trimmed(parts[i].substr(2)), value))
        return fail(L"\"" + CString(parts[i]) + L"\" is no value of a text");
      if (key == L'S') dash.scale = value;
      if (key == L'R' || key == L'A' || key == L'U') dash.rotation = kvdxfRadians(value);
      if (key == L'A') dash.flags = static_cast<std::int16_t>(dash.flags | kAbsolute);
      if (key == L'X') dash.offset.x = value;
      if (key == L'Y') dash.offset.y = value;
    }
    return true;
  }

  /// Turns may carry their unit: `D` degrees, `R` radians, `G` grads.
  static bool readValue(std::wstring_view text, double& value) {
    if (text.empty()) return false;
    double factor = 1;
    constexpr double kGrad = 0.9;
    switch (text.back()) {
      case L'd':
      case L'D':
        text.remove_suffix(1);
        break;
      case L'r':
      case L'R':
        text.remove_suffix(1);
        factor = kvdxfDegrees(1);
        break;
      case L'g':
      case L'G':
        text.remove_suffix(1);
        factor = kGrad;
        break;
      default:
        break;
    }
    if (!readNumber(text, value)) return false;
    value *= factor;
    return true;
  }

  std::vector<KvIoLinetype>& linetypes_;
  KvIoMessage& error_;
  int line_ = 0;
  bool isOpen_ = false;
};

/// The record of a shape file, made where it is missing.
KvDbObjectId shapeStyle(KvDbDatabase& database, const CString& file) {
  KvDbTextStyleTable* table = nullptr;
  if (kvdbOpenObject(table, database.textStyleTableId(), KvDb::kForWrite) != Kvad::eOk) return {};
  KvDbObjectId id = table->shapeFileRecord(file);
  if (id.isNull()) {
    auto record = std::make_unique<KvDbTextStyleTableRecord>();
    record->setIsShapeFile(true);
    record->setFileName(file);
    if (table->add(id, record.get()) == Kvad::eOk) record.release()->close();
  }
  table->close();
  return id;
}

/// Style and number of a shape by its name.
void resolveShape(KvDbDatabase& database, const CString& file, const CString& name, KvDbLinetypeDash& dash) {
  if (!name.IsEmpty()) {
    const KvLtShapeFile* shapes = kvltFindShapes(file.view(), &database.folder());
    const KvLtShape* shape = shapes ? shapes->find(platform::utf8From(name)) : nullptr;
    if (!shape || shape->number > INT16_MAX) {
      // Its place stays as a gap.
      dash.flags = 0;
      return;
    }
    dash.shapeNumber = static_cast<std::int16_t>(shape->number);
  }
  dash.style = shapeStyle(database, file);
}

void enter(KvDbDatabase& database, KvDbLinetypeTable& table, const KvIoLinetype& linetype) {
  auto record = std::make_unique<KvDbLinetypeTableRecord>();
  record->setName(linetype.name);
  record->setAsciiDescription(linetype.description);
  auto dashes = linetype.dashes;
  for (std::size_t i = 0; i < dashes.size(); ++i) {
    constexpr int kShape = 4;
    if (linetype.textStyles[i].IsEmpty()) continue;
    if ((dashes[i].flags & kShape) != 0) {
      resolveShape(database, linetype.textStyles[i], linetype.shapeNames[i], dashes[i]);
      continue;
    }
    dashes[i].style = database.recordId(KvDbTable::TextStyle, linetype.textStyles[i]);
    if (dashes[i].style.isNull()) dashes[i].style = database.recordId(KvDbTable::TextStyle, L"Standard");
  }
  record->setDashes(std::move(dashes));
  if (table.add(record.get()) == Kvad::eOk) record.release()->close();
}

}  // namespace

bool kvioParseLinetypes(std::string_view bytes, std::vector<KvIoLinetype>& linetypes, KvIoMessage& error) {
  return Parser(linetypes, error).read(wideFrom(bytes));
}

Kvad::ErrorStatus kvdbLoadLineTypeFile(const wchar_t* name, const wchar_t* file, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return Kvad::eNoDatabase;
  if (!name || !*name || !file || !*file) return Kvad::eInvalidInput;
  const bool wantsAll = std::wstring_view(name) == L"*";
  if (!wantsAll && !database->recordId(KvDbTable::Linetype, name).isNull())
    return Kvad::eLinetypeAlreadyPresent;
  const CString path = kvdbHostApplicationServices()->findFile(file);
  std::string bytes;
  if (path.IsEmpty() || !platform::isFile(path)) return Kvad::eFileNotFound;
  if (!platform::readFile(path, bytes)) return Kvad::eFileAccessErr;
  std::vector<KvIoLinetype> linetypes;
  KvIoMessage error;
  const bool isWhole = kvioParseLinetypes(bytes, linetypes, error);
  KvDbLinetypeTable* table = nullptr;
  if (auto status = kvdbOpenObject(table, database->linetypeTableId(), KvDb::kForWrite); status != Kvad::eOk)
    return status;
  bool isFound = false;
  for (const KvIoLinetype& linetype : linetypes) {
    if (!wantsAll && linetype.name.CompareNoCase(name) != 0) continue;
    if (!table->has(linetype.name)) enter(*database, *table, linetype);
    isFound = true;
  }
  table->close();
  if (isFound) return Kvad::eOk;
  if (isWhole) return Kvad::eUndefinedLineType;
  kvdbHostApplicationServices()->reportFailure(CString(file) + L", " + error.describe());
  return Kvad::eBadLinetypeDefinition;
}
