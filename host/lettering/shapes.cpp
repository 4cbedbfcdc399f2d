#include "host/lettering/shapes.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>
#include <utility>

#include "host/lettering/internal/shape_source.h"
#include "host/lettering/internal/shape_strokes.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace {

namespace fs = std::filesystem;

/// A compiled file begins with a line that ends in these and names its form shortly before.
constexpr std::string_view kLineEnd("\r\n\x1A", 3);
constexpr std::size_t kLongestLine = 64;
constexpr std::size_t kBigFontEntry = 8;

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}

void putWord(std::string& out, std::size_t value) {
  out += static_cast<char>(value & 255);
  out += static_cast<char>(value >> 8 & 255);
}

std::string& pendingWarning() {
  static std::string text;
  return text;
}

}  // namespace

std::string KvLtShapeError::describe() const {
  return line > 0 ? "line " + std::to_string(line) + ": " + text
                  : "offset " + std::to_string(offset) + ": " + text;
}

/// Reads the compiled forms.
class KvLtShapeReader {
 public:
  KvLtShapeReader(std::string_view bytes, KvLtShapeError& error)
      : bytes_(bytes), error_(error), file_(std::make_unique<KvLtShapeFile>()) {}

  std::unique_ptr<KvLtShapeFile> read(std::string_view form, std::size_t from) {
    at_ = from;
    const bool isRead = form == "unifont" ? unicode() : form == "bigfont" ? bigFont() : plain();
    if (!isRead) return nullptr;
    error_ = {};
    return std::move(file_);
  }

 private:
  bool fail(const std::string& text) {
    error_.offset = at_;
    error_.text = text;
    return false;
  }
  std::size_t left() const { return bytes_.size() - at_; }
  std::size_t word() {
    if (left() < 2) {
      at_ = bytes_.size();
      return 0;
    }
    const auto low = static_cast<unsigned char>(bytes_[at_]),
               high = static_cast<unsigned char>(bytes_[at_ + 1]);
    at_ += 2;
    return low + 256u * high;
  }

  /// A name, a zero, the bytes.
  bool take(std::size_t number, std::size_t at, std::size_t length) {
    if (at > bytes_.size() || length > bytes_.size() - at) {
      at_ = std::min(at, bytes_.size());
      return fail("shape " + std::to_string(number) + " reaches beyond the end of the file");
    }
    const std::string_view whole = bytes_.substr(at, length);
    const std::size_t nameEnd = std::min(whole.find('\0'), whole.size());
    KvLtShape shape{static_cast<int>(number), std::string(whole.substr(0, nameEnd)), {}};
    const std::string_view code = whole.substr(std::min(nameEnd + 1, whole.size()));
    shape.code.assign(code.begin(), code.end());
    if (number == 0) {
      takeFont(shape);
      return true;
    }
    file_->shapes_[shape.number] = std::move(shape);
    return true;
  }
  void takeFont(const KvLtShape& shape) {
    if (shape.code.size() < 3) return;
    file_->name_ = shape.name;
    file_->above_ = shape.code[0];
    file_->below_ = shape.code[1];
    file_->modes_ = shape.code[2];
    if (file_->kind_ == KvLtShapeFile::Kind::BigFont && shape.code.size() > 4)
      file_->cellWidth_ = shape.code[3];
  }

  bool plain() {
    file_->kind_ = KvLtShapeFile::Kind::Shapes;
    if (left() < 6) return fail("the table of shapes is cut off");
    at_ += 4;  // the least and the greatest number
    const std::size_t count = word();
    if (count > left() / 4) return fail("the table of shapes is cut off");
    std::vector<std::pair<std::size_t, std::size_t>> table(count);
    for (auto& [number, length] : table) {
      number = word();
      length = word();
    }
    for (const auto& [number, length] : table) {
      if (!take(number, at_, length)) return false;
      at_ += length;
    }
    return true;
  }

  bool unicode() {
    file_->kind_ = KvLtShapeFile::Kind::Unicode;
    const std::size_t count = word();
    for (std::size_t i = 0; i < count; ++i) {
      // The first record is the font's own and has no number.
      const std::size_t number = i == 0 ? 0 : word();
      if (left() < 2) return fail("the font ends after " + std::to_string(i) + " of its shapes");
      const std::size_t length = word();
      if (!take(number, at_, length)) return false;
      at_ += length;
    }
    return true;
  }

  bool bigFont() {
    file_->kind_ = KvLtShapeFile::Kind::BigFont;
    if (left() < 6) return fail("the font's table is cut off");
    word();  // an entry's length
    const std::size_t count = word(), ranges = word();
    if (ranges > left() / 4) return fail("the font's ranges are cut off");
    for (std::size_t i = 0; i < ranges; ++i) {
      const int first = static_cast<int>(word()), last = static_cast<int>(word());
      file_->leadBytes_.emplace_back(first, last);
    }
    if (count > left() / kBigFontEntry) return fail("the font's table is cut off");
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t number = word(), length = word(), low = word(), offset = low + 65536 * word();
      // Unused entries are all zeros.
      if (length == 0) continue;
      if (!take(number, offset, length)) return false;
    }
    return true;
  }

  std::string_view bytes_;
  KvLtShapeError& error_;
  std::unique_ptr<KvLtShapeFile> file_;
  std::size_t at_ = 0;
};

const KvLtShape* KvLtShapeFile::find(int number) const {
  const auto found = shapes_.find(number);
  return found == shapes_.end() ? nullptr : &found->second;
}

const KvLtShape* KvLtShapeFile::find(std::string_view name) const {
  for (const auto& [number, shape] : shapes_)
    if (std::equal(shape.name.begin(), shape.name.end(), name.begin(), name.end(),
                   [](char a, char b) { return upper(a) == upper(b); }))
      return &shape;
  return nullptr;
}

const KvLtGlyph& KvLtShapeFile::glyph(int number) const {
  auto& place = glyphs_[find(number) ? number : 0];
  if (!place) {
    place = std::make_unique<KvLtGlyph>();
    if (find(number)) kvltTraceShape(*this, number, *place);
  }
  return *place;
}

std::unique_ptr<KvLtShapeFile> kvltParseShapes(std::string_view bytes, KvLtShapeError& error) {
  const std::size_t end = bytes.substr(0, kLongestLine).find(kLineEnd);
  if (end == bytes.npos) return kvltParseShapeSource(bytes, error);
  error = {};
  const std::string_view line = bytes.substr(0, end);
  for (const std::string_view form : {"unifont", "bigfont", "shapes"})
    if (line.find(form) != line.npos) return KvLtShapeReader(bytes, error).read(form, end + kLineEnd.size());
  error.text = "the file's first line names no form of shapes that is known";
  return nullptr;
}

std::string kvltCompileShapes(const KvLtShapeFile& file) {
  if (file.kind() == KvLtShapeFile::Kind::BigFont) return {};
  const bool isUnicode = file.kind() == KvLtShapeFile::Kind::Unicode;
  std::string out = isUnicode ? "Korvane unifont 1.0" : "Korvane shapes 1.0";
  out += kLineEnd;
  std::vector<std::pair<int, std::string>> records;
  // A font by Unicode begins with its own record, whatever stands in it.
  if (file.isFont() || isUnicode) {
    std::string own = file.name();
    own += '\0';
    for (double v : {file.above_, file.below_, static_cast<double>(file.modes_), 0.0})
      own += static_cast<char>(v);
    // A font by Unicode tells its encoding and whether it may be embedded too.
    if (isUnicode) own += std::string(2, '\0');
    records.emplace_back(0, own);
  }
  for (const auto& [number, shape] : file.shapes()) {
    std::string body = isUnicode ? std::string() : shape.name;
    body += '\0';
    body.append(shape.code.begin(), shape.code.end());
    records.emplace_back(number, std::move(body));
  }
  constexpr std::size_t kMost = 65535;
  if (records.size() > kMost ||
      std::any_of(records.begin(), records.end(), [](const auto& r) { return r.second.size() > kMost; }))
    return {};
  if (isUnicode) {
    putWord(out, records.size());
    for (const auto& [number, body] : records) {
      if (number != 0) putWord(out, static_cast<std::size_t>(number));
      putWord(out, body.size());
      out += body;
    }
    return out;
  }
  putWord(out, static_cast<std::size_t>(records.empty() ? 0 : records.front().first));
  putWord(out, static_cast<std::size_t>(records.empty() ? 0 : records.back().first));
  putWord(out, records.size());
  for (const auto& [number, body] : records) {
    putWord(out, static_cast<std::size_t>(number));
    putWord(out, body.size());
  }
  for (const auto& [number, body] : records) out += body;
  return out;
}

namespace {

/// The files read so far, by path, and what names stand for.
struct Known {
  std::string fontPath;
  std::unordered_map<std::string, std::unique_ptr<KvLtShapeFile>> files;
  std::unordered_map<std::wstring, const KvLtShapeFile*> names;
};

const KvLtShapeFile* fileAt(Known& known, const fs::path& path) {
  const auto [place, isNew] = known.files.try_emplace(path.string());
  if (!isNew) return place->second.get();
  std::string bytes;
  KvLtShapeError error;
  if (const auto status = platform::readFile(path, bytes); !status)
    error.text = status.message();
  else
    place->second = kvltParseShapes(bytes, error);
  if (!place->second)
    pendingWarning() += (pendingWarning().empty() ? "the shape file " : "\nthe shape file ") +
                        path.filename().string() + " can't be read: " + error.describe();
  return place->second.get();
}

/// The marks of linetypes by the names under which drawings know them.
std::wstring_view standIn(std::wstring_view base) {
  return platform::equalNoCase(base, L"ltypeshp") ? L"korvane" : std::wstring_view();
}

const KvLtShapeFile* search(Known& known, std::wstring_view name, const fs::path* folder) {
  if (const std::size_t slash = name.find_last_of(L"\\/"); slash != name.npos) name.remove_prefix(slash + 1);
  std::wstring_view base = name;
  for (const wchar_t* ending : {L".shx", L".shp"})
    if (base.size() > 4 && platform::equalNoCase(base.substr(base.size() - 4), ending)) base.remove_suffix(4);
  // An outline font of another ending has no strokes.
  const std::size_t dot = base.rfind(L'.');
  if (base.empty() || (dot != base.npos && base.size() - dot == 4 && base.size() == name.size()))
    return nullptr;
  std::vector<fs::path> folders;
  if (folder && !folder->empty()) folders.push_back(*folder);
  for (const std::string& one : kvltOwnFontFolders()) folders.emplace_back(one);
  for (const std::wstring_view wanted : {base, standIn(base)}) {
    if (wanted.empty()) continue;
    for (const fs::path& place : folders)
      for (const wchar_t* ending : {L".shx", L".shp"}) {
        const fs::path path = platform::toNative(platform::fromNative(place) + CString(L"\\") +
                                                 CString(wanted) + CString(ending));
        std::error_code ignored;
        if (!fs::is_regular_file(path, ignored)) continue;
        if (const KvLtShapeFile* file = fileAt(known, path)) return file;
      }
  }
  return nullptr;
}

}  // namespace

const KvLtShapeFile* kvltFindShapes(std::wstring_view name, const fs::path* folder) {
  static Known known;
  if (name.empty()) return nullptr;
  const char* path = std::getenv("KORVANE_FONT_PATH");
  if (known.fontPath != (path ? path : "")) {
    known.fontPath = path ? path : "";
    known.names.clear();
  }
  std::wstring key(name);
  if (folder) {
    const std::string& native = folder->native();
    (key += L'|').append(native.begin(), native.end());
  }
  const auto [place, isNew] = known.names.try_emplace(std::move(key), nullptr);
  if (isNew) place->second = search(known, name, folder);
  return place->second;
}

std::string kvltTakeShapeWarning() {
  return std::exchange(pendingWarning(), {});
}
