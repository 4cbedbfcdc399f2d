// The Windows-style calls over platform::Profile.
#include <algorithm>
#include <charconv>

#include "platform/env/environment.h"
#include "platform/files/profile.h"

namespace platform {
namespace {

/// The characters of a text up to its first null: what fits a buffer of terminated texts.
std::wstring_view untilNull(std::wstring_view text) {
  return text.substr(0, text.find(L'\0'));
}

void copyTo(LPWSTR buffer, std::wstring_view text) {
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = L'\0';
}

DWORD fillText(std::wstring_view text, LPWSTR buffer, DWORD size) {
  const std::wstring_view part = text.substr(0, size - 1);
  copyTo(buffer, part);
  if (part.size() < text.size()) SetLastError(kErrorMoreData);
  return part.size();
}

/// Texts with a null behind each and one more behind the last.
DWORD fillList(const std::vector<CString>& texts, LPWSTR buffer, DWORD size) {
  std::wstring all;
  for (const CString& text : texts) {
    // An empty text would end the list for whoever walks it.
    if (untilNull(text.view()).empty()) continue;
    all += untilNull(text.view());
    all.push_back(L'\0');
  }
  if (all.empty()) all.push_back(L'\0');
  if (size < 2) {
    buffer[0] = L'\0';
    SetLastError(kErrorMoreData);
    return 0;
  }
  if (all.size() < size) {
    copyTo(buffer, all);
    return all.size() == 1 ? 0 : all.size();
  }
  copyTo(buffer, std::wstring_view(all).substr(0, size - 2));
  buffer[size - 1] = L'\0';
  SetLastError(kErrorMoreData);
  return size - 2;
}

bool loadFor(Profile& profile, LPCWSTR file) {
  const FileStatus status = file ? profile.load(profilePath(file)) : FileStatus{FileStep::Open, ENOENT, {}};
  SetLastError(windowsError(status));
  return static_cast<bool>(status);
}

std::wstring_view viewOf(LPCWSTR text) {
  return text ? std::wstring_view(text) : std::wstring_view();
}

std::wstring withoutBlanksBehind(LPCWSTR text) {
  const std::wstring_view view = viewOf(text);
  const std::size_t last = view.find_last_not_of(L' ');
  return last == view.npos ? std::wstring() : std::wstring(view.substr(0, last + 1));
}

}  // namespace

std::filesystem::path profilePath(LPCWSTR file) {
  const std::wstring_view name = viewOf(file);
  if (!name.empty() && name.find_first_of(L"\\/:") == name.npos)
    return Environment::current().settingsRoot / toNative(CString(name));
  return toNative(CString(name));
}

}  // namespace platform

using platform::Profile;

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer, DWORD size,
                               LPCWSTR file) {
  if (!buffer || size == 0) return 0;
  Profile profile;
  platform::loadFor(profile, file);
  if (GetLastError() == 0) {
    if (!section) return platform::fillList(profile.sections(), buffer, size);
    if (!key && profile.hasSection(section)) return platform::fillList(profile.keys(section), buffer, size);
    if (const auto found = key ? profile.value(section, key) : std::nullopt)
      return platform::fillText(platform::untilNull(found->view()), buffer, size);
    SetLastError(platform::kErrorFileNotFound);
  }
  if (!section || !key)
    return platform::fillList({CString(platform::withoutBlanksBehind(defaultValue))}, buffer, size);
  const DWORD error = GetLastError();
  const DWORD count = platform::fillText(platform::withoutBlanksBehind(defaultValue), buffer, size);
  if (GetLastError() != platform::kErrorMoreData) SetLastError(error);
  return count;
}

DWORD GetPrivateProfileSectionW(LPCWSTR section, LPWSTR buffer, DWORD size, LPCWSTR file) {
  if (!buffer || size == 0) return 0;
  Profile profile;
  const bool loaded = platform::loadFor(profile, file);
  if (loaded && section && profile.hasSection(section))
    return platform::fillList(profile.entries(section), buffer, size);
  buffer[0] = L'\0';
  if (size > 1) buffer[1] = L'\0';
  if (loaded) SetLastError(platform::kErrorFileNotFound);
  return 0;
}

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue, LPCWSTR file) {
  Profile profile;
  if (!platform::loadFor(profile, file) || !section || !key) return static_cast<UINT>(defaultValue);
  const auto found = profile.value(section, key);
  if (!found) {
    SetLastError(platform::kErrorFileNotFound);
    return static_cast<UINT>(defaultValue);
  }
  std::string digits;
  for (const wchar_t c : found->view()) {
    if (c <= 0 || c >= 0x80) break;
    digits.push_back(static_cast<char>(c));
  }
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) digits.erase(0, 1);
  const bool hex = digits.starts_with("0x") || digits.starts_with("0X");
  if (hex) digits.erase(0, 2);
  UINT number = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), number, hex ? 16 : 10).ec ==
      std::errc::result_out_of_range)
    number = ~0u;
  return negative ? 0u - number : number;
}

BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  if (!section || !file || !*file) {
    SetLastError(platform::kErrorInvalidParameter);
    return 0;
  }
  Profile profile;
  const std::filesystem::path path = platform::profilePath(file);
  const platform::FileStatus loaded = profile.load(path);
  const bool missing = loaded.step == platform::FileStep::Open && loaded.systemError == ENOENT;
  if (!loaded && (!missing || !key || !value)) {
    SetLastError(platform::windowsError(loaded));
    return 0;
  }
  const std::string before = profile.bytes();
  const DWORD error = !key     ? profile.removeSection(section)
                      : !value ? profile.removeKey(section, key)
                               : profile.set(section, key, value);
  platform::FileStatus written;
  if (error == 0 && (missing || profile.bytes() != before))
    written = platform::writeFile(path, profile.bytes());
  SetLastError(error != 0 ? error : platform::windowsError(written));
  return GetLastError() == 0 ? 1 : 0;
}
