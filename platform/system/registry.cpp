#include "platform/system/registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <unordered_set>

#include "platform/env/environment.h"
#include "platform/system/internal/registry_format.h"
#include "platform/text/casemap.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr std::wstring_view kUserBranch = L"HKEY_CURRENT_USER";
constexpr std::wstring_view kMachineBranch = L"HKEY_LOCAL_MACHINE";

/// Without doubled separators and those at the ends.
std::wstring tidied(std::wstring_view path) {
  std::wstring result;
  for (const wchar_t c : path)
    if (c != L'\\' || (!result.empty() && result.back() != L'\\')) result.push_back(c);
  if (!result.empty() && result.back() == L'\\') result.pop_back();
  return result;
}

/// "" when `root` is no branch.
std::wstring fullPath(HKEY root, std::wstring_view key) {
  const std::wstring_view branch = root == HKEY_CURRENT_USER    ? kUserBranch
                                   : root == HKEY_LOCAL_MACHINE ? kMachineBranch
                                                                : std::wstring_view();
  if (branch.empty()) return {};
  const std::wstring path = tidied(key);
  return std::wstring(branch) + (path.empty() ? L"" : L"\\") + path;
}

bool isBelow(std::wstring_view key, std::wstring_view parent) {
  return key.size() > parent.size() && key[parent.size()] == L'\\' && startsWithNoCase(key, parent);
}

bool hasControl(std::wstring_view text) {
  return std::any_of(text.begin(), text.end(), [](wchar_t c) { return c >= 0 && c < 0x20; });
}

/// 0, or what is wrong with the place of a change.
DWORD checked(const std::wstring& path) {
  if (path.empty()) return kErrorInvalidHandle;
  return hasControl(path) ? kErrorInvalidParameter : kErrorSuccess;
}

bool sameText(std::wstring_view a, std::wstring_view b) {
  return equalNoCase(a, b);
}

}  // namespace

RegistryValue RegistryValue::ofText(std::wstring_view text, bool terminated) {
  return {kRegistryText, toUtf16Bytes(text) + (terminated ? std::string(2, '\0') : std::string())};
}

RegistryValue RegistryValue::ofNumber(std::uint32_t number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift & 0xFF));
  return {kRegistryNumber, bytes};
}

RegistryValue RegistryValue::ofTexts(const std::vector<CString>& texts) {
  std::string bytes;
  for (const CString& text : texts) bytes += toUtf16Bytes(text.view()) + std::string(2, '\0');
  return {kRegistryTexts, bytes + std::string(2, '\0')};
}

CString RegistryValue::text() const {
  if (type != kRegistryText && type != kRegistryExpandText) return {};
  const std::wstring wide = fromUtf16Bytes(std::string_view(bytes).substr(0, bytes.size() & ~std::size_t{1}));
  return CString(std::wstring_view(wide).substr(0, wide.find(L'\0')));
}

std::uint32_t RegistryValue::number() const {
  if (type != kRegistryNumber || bytes.size() != 4) return 0;
  std::uint32_t result = 0;
  for (std::size_t at = 4; at-- > 0;) result = result << 8 | static_cast<unsigned char>(bytes[at]);
  return result;
}

std::vector<CString> RegistryValue::texts() const {
  std::vector<CString> result;
  if (type != kRegistryTexts) return result;
  const std::wstring all = fromUtf16Bytes(std::string_view(bytes).substr(0, bytes.size() & ~std::size_t{1}));
  for (std::wstring_view rest = all; !rest.empty() && rest.front() != L'\0';) {
    const std::size_t end = std::min(rest.find(L'\0'), rest.size());
    result.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return result;
}

/// What reading carries from line to line.
struct RegistryText::Reader {
  std::wstring key;                          ///< the heading in force; empty behind a broken one
  std::unordered_set<std::wstring> present;  ///< keys and names so far, folded

  bool isFirst(std::wstring_view name) {
    std::wstring id = key + L'\0' + std::wstring(name);
    for (wchar_t& c : id) c = foldCase(c);
    return present.insert(std::move(id)).second;
  }
};

RegistryText::RegistryText(std::string_view content) {
  Reader reader;
  while (!content.empty()) {
    const std::size_t end = std::min(content.find('\n'), content.size());
    readLine(content.substr(0, end), reader);
    content.remove_prefix(std::min(end + 1, content.size()));
  }
}

void RegistryText::readLine(std::string_view raw, Reader& reader) {
  std::wstring& key = reader.key;
  Line line;
  line.raw = raw;
  const char* problem = nullptr;
  const std::string_view text = registryTrimmed(raw);
  if (text.empty() || text[0] == '#' || text[0] == ';') {
    // A comment.
  } else if (!isUtf8(text)) {
    problem = "not valid UTF-8";
  } else if (text[0] == '[') {
    // What follows a broken heading must not land in the key above it.
    key.clear();
    const std::wstring path =
        text.back() == ']' ? tidied(fromUtf8(text.substr(1, text.size() - 2))) : std::wstring();
    for (const std::wstring_view branch : {kUserBranch, kMachineBranch})
      if (sameText(path, branch) || isBelow(path, branch)) key = path;
    line.key = key;
    line.kind = key.empty() ? Kind::Other : Kind::Key;
    if (key.empty()) problem = "expected [HKEY_CURRENT_USER\\...] or [HKEY_LOCAL_MACHINE\\...]";
  } else if (key.empty()) {
    problem = "a value outside any key";
  } else {
    problem = parseRegistryLine(text, line.name, line.value);
    if (!problem && !reader.isFirst(line.name)) problem = "the value stands here for the second time";
    if (!problem) {
      line.key = key;
      line.kind = Kind::Value;
    }
  }
  lines_.push_back(std::move(line));
  if (problem) problems_.push_back({static_cast<int>(lines_.size()), problem});
}

std::string RegistryText::content() const {
  std::string result;
  for (const Line& line : lines_) result += line.raw + "\n";
  return result;
}

std::vector<RegistryText::Line>::iterator RegistryText::findValue(const std::wstring& key,
                                                                  std::wstring_view name) {
  return std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) {
    return line.kind == Kind::Value && sameText(line.name, name) && sameText(line.key, key);
  });
}

/// Behind the last line of the key that isn't blank; the end when the key has no heading.
std::vector<RegistryText::Line>::iterator RegistryText::endOfKey(const std::wstring& key) {
  const auto heading = std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) {
    return line.kind == Kind::Key && sameText(line.key, key);
  });
  if (heading == lines_.end()) return heading;
  auto last = heading;
  for (auto at = heading + 1; at != lines_.end() && !registryTrimmed(at->raw).starts_with('['); ++at)
    if (!registryTrimmed(at->raw).empty()) last = at;
  return last + 1;
}

bool RegistryText::hasKey(HKEY root, std::wstring_view key) const {
  const std::wstring path = fullPath(root, key);
  if (path.empty()) return false;
  if (path.find(L'\\') == path.npos) return true;
  return std::any_of(lines_.begin(), lines_.end(), [&](const Line& line) {
    return line.kind == Kind::Key && (sameText(line.key, path) || isBelow(line.key, path));
  });
}

const RegistryValue* RegistryText::find(HKEY root, std::wstring_view key, std::wstring_view name) const {
  const std::wstring path = fullPath(root, key);
  for (const Line& line : lines_)
    if (line.kind == Kind::Value && sameText(line.name, name) && sameText(line.key, path)) return &line.value;
  return nullptr;
}

std::vector<CString> RegistryText::valueNames(HKEY root, std::wstring_view key) const {
  std::vector<CString> result;
  const std::wstring path = fullPath(root, key);
  for (const Line& line : lines_)
    if (line.kind == Kind::Value && sameText(line.key, path)) result.emplace_back(line.name);
  return result;
}

std::vector<CString> RegistryText::subKeys(HKEY root, std::wstring_view key) const {
  std::vector<CString> result;
  const std::wstring path = fullPath(root, key);
  for (const Line& line : lines_) {
    if (path.empty() || line.kind != Kind::Key || !isBelow(line.key, path)) continue;
    const std::wstring_view rest = std::wstring_view(line.key).substr(path.size() + 1);
    const std::wstring_view name = rest.substr(0, rest.find(L'\\'));
    if (std::none_of(result.begin(), result.end(),
                     [&](const CString& known) { return sameText(known.view(), name); }))
      result.emplace_back(name);
  }
  return result;
}

DWORD RegistryText::createKey(HKEY root, std::wstring_view key) {
  const std::wstring path = fullPath(root, key);
  if (const DWORD error = checked(path)) return error;
  if (!hasKey(root, key)) addHeading(path);
  return kErrorSuccess;
}

void RegistryText::addHeading(const std::wstring& key) {
  if (!lines_.empty() && !registryTrimmed(lines_.back().raw).empty()) lines_.push_back({});
  lines_.push_back({"[" + toUtf8(key) + "]", Kind::Key, key, {}, {}});
}

DWORD RegistryText::set(HKEY root, std::wstring_view key, std::wstring_view name,
                        const RegistryValue& value) {
  const std::wstring path = fullPath(root, key);
  if (const DWORD error = checked(path)) return error;
  Line line{formatRegistryLine(name, value), Kind::Value, path, std::wstring(name), value};
  if (const auto found = findValue(path, name); found != lines_.end()) {
    line.name = found->name;
    line.raw = formatRegistryLine(line.name, value);
    *found = std::move(line);
    return kErrorSuccess;
  }
  const auto isHeading = [&](const Line& other) {
    return other.kind == Kind::Key && sameText(other.key, path);
  };
  if (std::none_of(lines_.begin(), lines_.end(), isHeading)) addHeading(path);
  lines_.insert(endOfKey(path), std::move(line));
  return kErrorSuccess;
}

DWORD RegistryText::removeValue(HKEY root, std::wstring_view key, std::wstring_view name) {
  const std::wstring path = fullPath(root, key);
  if (path.empty()) return kErrorInvalidHandle;
  const auto found = findValue(path, name);
  if (found == lines_.end()) return kErrorFileNotFound;
  lines_.erase(found);
  return kErrorSuccess;
}

DWORD RegistryText::removeKey(HKEY root, std::wstring_view key) {
  const std::wstring path = fullPath(root, key);
  if (path.empty()) return kErrorInvalidHandle;
  if (path.find(L'\\') == path.npos) return kErrorAccessDenied;
  if (!hasKey(root, key)) return kErrorFileNotFound;
  std::erase_if(lines_, [&](const Line& line) {
    return line.kind != Kind::Other && (sameText(line.key, path) || isBelow(line.key, path));
  });
  return kErrorSuccess;
}

Registry::Registry() : file_(Environment::current().settingsRoot / "registry.txt") {}

Registry::Registry(const AnyPath& file) : file_(file.native()) {}

FileStatus Registry::load(RegistryText& text) const {
  std::string content;
  FileStatus status = readFile(file_, content, kRegistryLimit);
  if (status.step == FileStep::Open && status.systemError == ENOENT) status = {};
  text = RegistryText(content);
  return status;
}

DWORD Registry::query(HKEY root, std::wstring_view key, std::wstring_view name, RegistryValue& value) const {
  RegistryText text;
  if (const DWORD error = windowsError(load(text))) return error;
  const RegistryValue* found = text.find(root, key, name);
  if (!found) return kErrorFileNotFound;
  value = *found;
  return kErrorSuccess;
}

template <class Change>
DWORD Registry::change(Change&& change) {
  if (const auto made = createFolders(file_.parent_path()); !made) return windowsError(made);
  const std::filesystem::path lockPath = file_.string() + ".lock";
  const int lock = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock < 0) return windowsError({FileStep::Create, errno, lockPath});
  ::flock(lock, LOCK_EX);
  RegistryText text;
  DWORD error = windowsError(load(text));
  if (error == 0) {
    const std::string before = text.content();
    error = change(text);
    const std::string after = text.content();
    if (error == 0 && after != before) error = windowsError(writeFile(file_, after));
  }
  ::close(lock);
  return error;
}

DWORD Registry::set(HKEY root, std::wstring_view key, std::wstring_view name, const RegistryValue& value) {
  return change([&](RegistryText& text) { return text.set(root, key, name, value); });
}

DWORD Registry::createKey(HKEY root, std::wstring_view key) {
  return change([&](RegistryText& text) { return text.createKey(root, key); });
}

DWORD Registry::removeValue(HKEY root, std::wstring_view key, std::wstring_view name) {
  return change([&](RegistryText& text) { return text.removeValue(root, key, name); });
}

DWORD Registry::removeKey(HKEY root, std::wstring_view key) {
  return change([&](RegistryText& text) { return text.removeKey(root, key); });
}

}  // namespace platform
