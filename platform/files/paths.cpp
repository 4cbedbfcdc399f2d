#include "platform/files/paths.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/env/environment.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr wchar_t kEscapedBackslash = 0xF05C;  // private use: a `\` inside a native name
constexpr wchar_t kEscapedByte = 0xDC00;       // lone surrogates DC80 to DCFF: bytes that are no UTF-8
constexpr const char* kShareFolder = "UNC";

std::string nativeName(std::wstring_view name) {
  std::string result;
  std::size_t from = 0;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const wchar_t c = name[at];
    const bool byte = c >= kEscapedByte + 0x80 && c <= kEscapedByte + 0xFF;
    if (!byte && c != kEscapedBackslash) continue;
    result += toUtf8(name.substr(from, at - from));
    result.push_back(byte ? static_cast<char>(c - kEscapedByte) : '\\');
    from = at + 1;
  }
  return result + toUtf8(name.substr(from));
}

/// Length of the valid UTF-8 sequence that `bytes` begins with; 0 when there is none.
std::size_t sequenceLength(std::string_view bytes) {
  for (std::size_t length = 1; length <= std::min<std::size_t>(4, bytes.size()); ++length)
    if (isUtf8(bytes.substr(0, length))) return length;
  return 0;
}

std::wstring productName(std::string_view name) {
  std::wstring result;
  if (isUtf8(name)) {
    result = fromUtf8(name);
  } else {
    while (!name.empty()) {
      const std::size_t length = sequenceLength(name);
      if (length == 0)
        result.push_back(static_cast<wchar_t>(kEscapedByte + static_cast<unsigned char>(name.front())));
      else
        result += fromUtf8(name.substr(0, length));
      name.remove_prefix(std::max<std::size_t>(length, 1));
    }
  }
  std::replace(result.begin(), result.end(), L'\\', kEscapedBackslash);
  return result;
}

bool isSeparator(wchar_t c) {
  return c == L'\\' || c == L'/';
}

bool isDriveLetter(wchar_t c) {
  return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

std::vector<std::wstring_view> partsOf(std::wstring_view text) {
  std::vector<std::wstring_view> parts;
  while (!text.empty()) {
    std::size_t length = 0;
    while (length < text.size() && !isSeparator(text[length])) ++length;
    if (length > 0) parts.push_back(text.substr(0, length));
    text.remove_prefix(std::min(text.size(), length + 1));
  }
  return parts;
}

/// A product path taken apart: what it hangs on, and its parts below that.
struct Split {
  std::filesystem::path root;  ///< empty for a relative path
  std::vector<std::string> parts;
  std::size_t fixed = 0;  ///< parts that `..` never removes (the share behind a server)
};

Split split(std::wstring_view text) {
  const std::wstring_view longForm = LR"(\\?\)";
  bool share = false;
  if (text.starts_with(longForm)) {
    text.remove_prefix(longForm.size());
    share = startsWithNoCase(text, LR"(UNC\)");
    if (share) text.remove_prefix(4);
  } else if (text.size() > 2 && isSeparator(text[0]) && isSeparator(text[1]) && !isSeparator(text[2])) {
    share = true;
  }
  Split result;
  if (share) {
    result.root = Environment::current().drivesRoot / kShareFolder;
    result.fixed = 2;
  } else if (text.size() >= 2 && text[1] == L':' && isDriveLetter(text[0])) {
    const char letter = static_cast<char>(text[0] & ~0x20);
    result.root = Environment::current().drivesRoot / std::string(1, letter);
    text.remove_prefix(2);
  } else if (!text.empty() && isSeparator(text[0])) {
    result.root = "/";
  }
  for (const std::wstring_view part : partsOf(text)) {
    const bool up = part == L"..";
    if (part == L".") continue;
    if (up && (!result.root.empty() || (!result.parts.empty() && result.parts.back() != ".."))) {
      if (result.parts.size() > result.fixed) result.parts.pop_back();
      continue;
    }
    result.parts.push_back(nativeName(part));
  }
  return result;
}

bool existsNatively(const std::filesystem::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

/// The first name in sorted order that equals `name` without regard to case; empty when there is none.
std::string findNoCase(const std::filesystem::path& folder, const std::string& name) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.empty() ? "." : folder.c_str()),
                                                 ::closedir);
  if (!open) return {};
  const std::wstring wanted = productName(name);
  std::string best;
  while (const dirent* entry = ::readdir(open.get())) {
    const std::string_view found = entry->d_name;
    if (!best.empty() && found >= best) continue;
    if (equalNoCase(productName(found), wanted)) best = found;
  }
  return best;
}

std::filesystem::path join(const std::filesystem::path& root, const std::vector<std::string>& parts) {
  std::filesystem::path result = root;
  for (const std::string& part : parts) result /= part;
  return result;
}

}  // namespace

std::filesystem::path toNative(const CString& path) {
  std::wstring_view text = path.view();
  text = text.substr(0, text.find(L'\0'));
  if (text.empty()) return {};
  const Split parted = split(text);
  std::filesystem::path whole = join(parted.root, parted.parts);
  if (whole.empty()) return ".";
  if (existsNatively(whole)) return whole;

  std::filesystem::path result = parted.root;
  if (parted.root != "/" && !parted.root.empty() && !existsNatively(result)) {
    const std::string found = findNoCase(result.parent_path(), result.filename().string());
    if (found.empty()) return whole;
    result.replace_filename(found);
  }
  bool known = true;
  for (const std::string& part : parted.parts) {
    std::filesystem::path next = result / part;
    if (known && !existsNatively(next)) {
      const std::string found = findNoCase(result, part);
      known = !found.empty();
      if (known) next = result / found;
    }
    result = std::move(next);
  }
  return result;
}

CString nameFromNative(std::string_view name) {
  return CString(productName(name));
}

CString fromNative(const std::filesystem::path& path) {
  if (path.empty()) return {};
  const std::filesystem::path normal = path.lexically_normal();
  std::vector<std::string> parts;
  for (const auto& part : normal)
    if (!part.empty() && part != "/") parts.push_back(part.string());
  std::wstring result;
  std::size_t first = 0;

  const std::filesystem::path drives = Environment::current().drivesRoot.lexically_normal();
  const std::filesystem::path below = normal.lexically_relative(drives);
  if (normal.is_absolute() && !drives.empty() && !below.empty() && *below.begin() != ".." && below != ".") {
    const std::string top = below.begin()->string();
    const auto depth =
        parts.size() - static_cast<std::size_t>(std::count_if(
                           below.begin(), below.end(), [](const auto& part) { return !part.empty(); }));
    const bool drive = top.size() == 1 && isDriveLetter(static_cast<wchar_t>(top[0]));
    const bool share = top == kShareFolder && parts.size() > depth + 1;
    if (drive) result = {static_cast<wchar_t>(top[0] & ~0x20), L':'};
    if (share) result = L"\\";
    if (drive || share) first = depth + 1;
  }
  const bool rooted = normal.is_absolute();
  for (std::size_t at = first; at < parts.size(); ++at) {
    if (rooted || at > first) result.push_back(L'\\');
    result += productName(parts[at]);
  }
  if (rooted && (result.empty() || (result.size() == 2 && result[1] == L':'))) result.push_back(L'\\');
  return CString(std::move(result));
}

}  // namespace platform
