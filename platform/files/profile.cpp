#include "platform/files/profile.h"

#include <algorithm>

#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr std::wstring_view kBlank = L" \t\v\f";

bool isBlank(wchar_t c) {
  return c == L' ' || c == L'\t' || c == L'\v' || c == L'\f';
}

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kUtf16BeMark = "\xFE\xFF";

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isLineEnd(wchar_t c) {
  return c == L'\n' || c == L'\r';
}

/// The name of a section heading, or none.
std::optional<std::wstring_view> headingOf(std::wstring_view line) {
  std::wstring_view text = line;
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  if (!text.starts_with(L'[')) return std::nullopt;
  const std::size_t close = text.find(L']');
  if (close == std::wstring_view::npos) return std::nullopt;
  return trimmed(text.substr(1, close - 1));
}

bool isComment(std::wstring_view line) {
  return trimmed(line).starts_with(L';');
}

std::wstring_view keyOf(std::wstring_view line) {
  return trimmed(line.substr(0, line.find(L'=')));
}

/// Where the value begins in a line that has one; npos otherwise.
std::size_t valueStart(std::wstring_view line) {
  const std::size_t equals = line.find(L'=');
  if (equals == std::wstring_view::npos) return equals;
  const std::size_t start = line.find_first_not_of(kBlank, equals + 1);
  return start == std::wstring_view::npos ? line.size() : start;
}

bool isEntryOf(std::wstring_view line, std::wstring_view key) {
  return !isComment(line) && line.find(L'=') != std::wstring_view::npos && equalNoCase(keyOf(line), key);
}

std::wstring_view unquoted(std::wstring_view value) {
  const bool quoted =
      value.size() >= 2 && value.front() == value.back() && (value[0] == L'"' || value[0] == L'\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

bool oneLine(std::wstring_view text) {
  return text.find_first_of(std::wstring_view(L"\r\n\0", 3)) == text.npos;
}

bool isSectionName(std::wstring_view name) {
  return !name.empty() && oneLine(name) && name.find(L']') == name.npos;
}

bool isKeyName(std::wstring_view key) {
  return !key.empty() && oneLine(key) && key.find(L'=') == key.npos && key[0] != L'[' && key[0] != L';';
}

void swapUnits(std::string& bytes) {
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) std::swap(bytes[at], bytes[at + 1]);
}

}  // namespace

Profile::Profile(std::string bytes) : bytes_(std::move(bytes)) {
  decode();
}

FileStatus Profile::load(const AnyPath& path) {
  const FileStatus status = readFile(path, bytes_, kProfileLimit);
  decode();
  return status;
}

std::size_t Profile::markLength() const {
  if (encoding_ == Encoding::CodePage) return 0;
  return encoding_ == Encoding::Utf8 ? kUtf8Mark.size() : kUtf16LeMark.size();
}

void Profile::decode() {
  const std::string_view all = bytes_;
  encoding_ = all.starts_with(kUtf16LeMark)   ? Encoding::Utf16Le
              : all.starts_with(kUtf16BeMark) ? Encoding::Utf16Be
              : all.starts_with(kUtf8Mark)    ? Encoding::Utf8
                                              : Encoding::CodePage;
  const std::string_view rest = all.substr(markLength());
  damaged_ = false;
  switch (encoding_) {
    case Encoding::CodePage:
      text_ = fromCodePage(rest, kSystemCodePage, &damaged_);
      break;
    case Encoding::Utf8:
      text_ = fromUtf8(rest);
      break;
    case Encoding::Utf16Le:
    case Encoding::Utf16Be:
      // Half a character at the end belongs to no text, and would put everything behind it out of step.
      if (rest.size() % 2 != 0) {
        bytes_.pop_back();
        return decode();
      }
      text_ = fromUtf16Bytes(rest, encoding_ == Encoding::Utf16Be);
      break;
  }
}

std::optional<std::string> Profile::encode(std::wstring_view text) const {
  if (encoding_ == Encoding::Utf8) return toUtf8(text);
  if (encoding_ == Encoding::CodePage) {
    bool lossy = false;
    std::string bytes = toCodePage(text, kSystemCodePage, &lossy);
    if (lossy) return std::nullopt;
    return bytes;
  }
  std::string bytes = toUtf16Bytes(text);
  if (encoding_ == Encoding::Utf16Be) swapUnits(bytes);
  return bytes;
}

bool Profile::becomeUtf16() {
  if (damaged_) return false;
  bytes_ = std::string(kUtf16LeMark) + toUtf16Bytes(text_);
  decode();
  return true;
}

std::vector<Profile::Line> Profile::lines() const {
  constexpr std::size_t kUsualLength = 24;
  std::vector<Line> result;
  const std::size_t size = text_.size();
  result.reserve(size / kUsualLength + 1);
  for (std::size_t begin = 0; begin < size;) {
    std::size_t end = begin;
    while (end < size && !isLineEnd(text_[end])) ++end;
    std::size_t next = std::min(end + 1, size);
    if (next < size && text_[end] == L'\r' && text_[next] == L'\n') ++next;
    result.push_back({begin, end, next});
    begin = next;
  }
  return result;
}

/// Where each line begins in bytes_, and behind them the size: no encoding here hides a line end in another
/// character.
std::vector<std::size_t> Profile::byteStarts() const {
  std::vector<std::size_t> starts;
  const bool wide = encoding_ == Encoding::Utf16Le || encoding_ == Encoding::Utf16Be;
  const std::size_t step = wide ? 2 : 1;
  const auto unit = [&](std::size_t at) -> unsigned {
    const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(bytes_[at + offset]); };
    if (!wide) return byte(0);
    return encoding_ == Encoding::Utf16Le ? byte(1) * 256u + byte(0) : byte(0) * 256u + byte(1);
  };
  for (std::size_t at = markLength(); at < bytes_.size();) {
    starts.push_back(at);
    while (at < bytes_.size() && unit(at) != L'\n' && unit(at) != L'\r') at += step;
    if (at >= bytes_.size()) break;
    const bool pair = unit(at) == L'\r' && at + step < bytes_.size() && unit(at + step) == L'\n';
    at += pair ? 2 * step : step;
  }
  starts.push_back(bytes_.size());
  return starts;
}

std::optional<Profile::Range> Profile::find(const std::vector<Line>& lines, std::wstring_view section) const {
  const std::wstring_view wanted = trimmed(section);
  std::optional<Range> range;
  for (std::size_t at = 0; at < lines.size(); ++at) {
    const auto heading = headingOf(lines[at].in(text_));
    if (!heading) continue;
    if (range) {
      range->last = at;
      return range;
    }
    if (equalNoCase(*heading, wanted)) range = Range{at + 1, lines.size()};
  }
  return range;
}

bool Profile::hasSection(std::wstring_view section) const {
  return find(lines(), section).has_value();
}

std::vector<CString> Profile::sections() const {
  std::vector<CString> result;
  for (const Line& line : lines())
    if (const auto heading = headingOf(line.in(text_))) result.emplace_back(*heading);
  return result;
}

std::vector<CString> Profile::keys(std::wstring_view section) const {
  std::vector<CString> result;
  const auto all = lines();
  if (const auto range = find(all, section))
    for (std::size_t at = range->first; at < range->last; ++at) {
      const std::wstring_view line = all[at].in(text_);
      if (!isComment(line) && line.find(L'=') != line.npos) result.emplace_back(keyOf(line));
    }
  return result;
}

std::vector<CString> Profile::entries(std::wstring_view section) const {
  std::vector<CString> result;
  const auto all = lines();
  if (const auto range = find(all, section))
    for (std::size_t at = range->first; at < range->last; ++at) {
      const std::wstring_view line = all[at].in(text_);
      if (trimmed(line).empty() || isComment(line)) continue;
      const std::size_t start = valueStart(line);
      CString entry{keyOf(line)};
      if (start != line.npos) entry += CString(L"=") + CString(trimmed(line.substr(start)));
      result.push_back(std::move(entry));
    }
  return result;
}

std::optional<CString> Profile::value(std::wstring_view section, std::wstring_view key) const {
  const auto all = lines();
  const auto range = find(all, section);
  if (!range) return std::nullopt;
  for (std::size_t at = range->first; at < range->last; ++at) {
    const std::wstring_view line = all[at].in(text_);
    if (isEntryOf(line, trimmed(key))) return CString(unquoted(trimmed(line.substr(valueStart(line)))));
  }
  return std::nullopt;
}

std::wstring Profile::lineEnd() const {
  const std::size_t first = text_.find_first_of(L"\r\n");
  if (first == text_.npos) return L"\r\n";
  const bool pair = text_[first] == L'\r' && first + 1 < text_.size() && text_[first + 1] == L'\n';
  return pair ? L"\r\n" : std::wstring(1, text_[first]);
}

/// Leaves the lines `removed` (ascending) out and puts `inserted` in front of line `before`.
DWORD Profile::splice(const std::vector<std::size_t>& removed, std::size_t before,
                      const std::wstring& inserted) {
  const auto encoded = encode(inserted);
  if (!encoded) return becomeUtf16() ? splice(removed, before, inserted) : kErrorNoUnicodeTranslation;
  const auto starts = byteStarts();
  std::string result = bytes_.substr(0, markLength());
  auto skip = removed.begin();
  for (std::size_t at = 0; at < starts.size(); ++at) {
    if (at == before) result += *encoded;
    if (at + 1 == starts.size()) break;
    if (skip != removed.end() && *skip == at)
      ++skip;
    else
      result.append(bytes_, starts[at], starts[at + 1] - starts[at]);
  }
  bytes_ = std::move(result);
  decode();
  return kErrorSuccess;
}

DWORD Profile::set(std::wstring_view section, std::wstring_view key, std::wstring_view value) {
  const std::wstring_view name = trimmed(key);
  if (!isSectionName(trimmed(section)) || !isKeyName(name) || !oneLine(value)) return kErrorInvalidParameter;
  const auto all = lines();
  const auto range = find(all, section);
  const std::wstring ending = lineEnd();
  const auto entry = [&] { return std::wstring(name) + L"=" + std::wstring(value); };
  // A last line without an end gets one before anything goes behind it.
  const auto endOf = [&](std::size_t line) {
    return all[line].next > all[line].end ? std::wstring() : ending;
  };
  if (!range) {
    const std::wstring gap = all.empty() ? std::wstring() : endOf(all.size() - 1);
    return splice({}, all.size(),
                  gap + L"[" + std::wstring(trimmed(section)) + L"]" + ending + entry() + ending);
  }
  for (std::size_t at = range->first; at < range->last; ++at) {
    const std::wstring_view line = all[at].in(text_);
    if (!isEntryOf(line, name)) continue;
    const std::wstring tail = text_.substr(all[at].end, all[at].next - all[at].end);
    return splice({at}, at, std::wstring(line.substr(0, valueStart(line))) + std::wstring(value) + tail);
  }
  std::size_t behind = range->last;
  while (behind > range->first && trimmed(all[behind - 1].in(text_)).empty()) --behind;
  return splice({}, behind, endOf(behind - 1) + entry() + ending);
}

DWORD Profile::removeKey(std::wstring_view section, std::wstring_view key) {
  const auto all = lines();
  const auto range = find(all, section);
  if (!range) return kErrorSuccess;
  std::vector<std::size_t> removed;
  for (std::size_t at = range->first; at < range->last; ++at)
    if (isEntryOf(all[at].in(text_), trimmed(key))) removed.push_back(at);
  return splice(removed, 0, {});
}

DWORD Profile::removeSection(std::wstring_view section) {
  const auto range = find(lines(), section);
  if (!range) return kErrorSuccess;
  std::vector<std::size_t> removed;
  for (std::size_t at = range->first - 1; at < range->last; ++at) removed.push_back(at);
  return splice(removed, 0, {});
}

}  // namespace platform
