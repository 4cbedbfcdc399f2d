#include <dirent.h>

#include <algorithm>
#include <memory>

#include "platform/files/files.h"
#include "platform/text/casemap.h"

namespace platform {
namespace {

bool sortsBefore(const FoundFile& a, const FoundFile& b) {
  if (a.isDots != b.isDots) return a.isDots;
  const int order = compareNoCase(a.name.view(), b.name.view());
  return order != 0 ? order < 0 : a.name < b.name;
}

bool entryIsFolder(const dirent& entry, const std::filesystem::path& path) {
  // A link, or a file system that doesn't tell, has to be asked.
  return entry.d_type == DT_DIR || ((entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN) && isFolder(path));
}

bool hasWildcard(std::wstring_view text) {
  return text.find_first_of(L"*?") != std::wstring_view::npos;
}

/// A path cut behind its last separator.
std::size_t nameStart(std::wstring_view path) {
  const std::size_t last = path.find_last_of(L"\\/");
  if (last != std::wstring_view::npos) return last + 1;
  return path.size() >= 2 && path[1] == L':' ? 2 : 0;
}

}  // namespace

bool matchesPattern(std::wstring_view name, std::wstring_view pattern) {
  if (pattern == L"*.*") return true;
  std::size_t at = 0, in = 0, star = std::wstring_view::npos, resume = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == L'*') {
      star = in++;
      resume = at;
    } else if (in < pattern.size() && (pattern[in] == L'?' || foldCase(pattern[in]) == foldCase(name[at]))) {
      ++in;
      ++at;
    } else if (star != std::wstring_view::npos) {
      in = star + 1;
      at = ++resume;
    } else {
      return false;
    }
  }
  while (in < pattern.size() && pattern[in] == L'*') ++in;
  return in == pattern.size();
}

std::vector<FoundFile> findFiles(const AnyPath& folder, std::wstring_view pattern, Dots dots) {
  std::vector<FoundFile> found;
  const std::filesystem::path& native = folder.native();
  const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(native.empty() ? "." : native.c_str()),
                                                 ::closedir);
  if (!open) return found;
  while (const dirent* entry = ::readdir(open.get())) {
    const std::string_view name = entry->d_name;
    FoundFile file;
    file.isDots = name == "." || name == "..";
    if (file.isDots && dots == Dots::Skip) continue;
    file.name = nameFromNative(name);
    if (!matchesPattern(file.name.view(), pattern)) continue;
    file.path = native / name;
    file.isFolder = entryIsFolder(*entry, file.path);
    found.push_back(std::move(file));
  }
  std::sort(found.begin(), found.end(), sortsBefore);
  return found;
}

std::vector<FoundFile> findFiles(const CString& pathPattern, Dots dots) {
  const std::wstring_view text = pathPattern.view();
  const std::size_t cut = nameStart(text);
  const std::wstring_view name = text.substr(cut);
  if (hasWildcard(name)) return findFiles(CString(text.substr(0, cut)), name, dots);
  // As in the world that the product comes from, a path that ends in a separator names nothing to be found.
  const std::filesystem::path native = toNative(pathPattern);
  if (name.empty() || !exists(native)) return {};
  FoundFile file;
  file.isDots = name == L"." || name == L"..";
  if (file.isDots && dots == Dots::Skip) return {};
  file.name = file.isDots ? CString(name) : nameFromNative(native.filename().string());
  file.path = native;
  file.isFolder = isFolder(native);
  return {file};
}

bool findsAny(const CString& pathPattern) {
  return !findFiles(pathPattern, Dots::Include).empty();
}

}  // namespace platform
