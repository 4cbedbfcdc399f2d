#include "module/core/settings.h"

#include <algorithm>
#include <cwchar>
#include <vector>

#include "module/core/files.h"
#include "module/core/paths.h"
#include "platform/files/files.h"
#include "platform/files/profile.h"
#include "platform/system/registry.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr unsigned long kSectionBuffer = 2000;
constexpr unsigned long kProSettingSize = 256;
constexpr unsigned long kLargestRegistryValue = 5000;
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

bool isEmpty(LPCWSTR text) {
  return !text || !*text;
}

/// A profile value of at most `size` characters, terminator included; `count` gets its length.
CString readProfile(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPCWSTR file, unsigned long size,
                    unsigned long& count) {
  count = 0;
  if (size == 0) return CString();
  // No value is longer than its file or the default, however much room the caller offers.
  const std::size_t longest = platform::kProfileLimit + (defaultValue ? std::wcslen(defaultValue) : 0);
  size = std::min<unsigned long>(size, longest + 1);
  std::vector<wchar_t> buffer(size);
  count = GetPrivateProfileStringW(section, key, defaultValue, buffer.data(),
                                   static_cast<std::uint32_t>(size), file);
  return CString(buffer.data(), static_cast<int>(count));
}

/// Several strings, each behind a line feed.
CString joinedStrings(const std::vector<CString>& strings) {
  CString out;
  for (const CString& one : strings) out += L"\n" + one;
  return out;
}

}  // namespace

CString IM_GetSystemSettingString(CString section, CString key, CString defaultValue) {
  const CString file = IM_GetSystemSettingXML();
  if (!IM_IsFileExist(file)) return defaultValue;
  const auto document = IM_LoadXmlFromFile(file);
  if (!document) return defaultValue;
  const auto node = document->selectSingleNode(L"StartupInfor//" + section + L"//" + key);
  return node ? node.text() : defaultValue;
}

int IM_GetSystemSettingInt(CString section, CString key, int defaultValue) {
  const CString text = IM_GetSystemSettingString(section, key, L"");
  return text.IsEmpty() ? defaultValue : _wtoi(text);
}

CString IM_GetPrivateProfileString(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPCWSTR file,
                                   unsigned long size) {
  if (isEmpty(section) || isEmpty(key)) return CString();
  unsigned long count = 0;
  return readProfile(section, key, defaultValue, file, size, count);
}

int IM_WritePrivateProfileString(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  if (!isEmpty(file) && !IM_IsFileExist(file)) platform::writeFile(CString(file), kUtf16Mark);
  return WritePrivateProfileStringW(section, key, value, file);
}

int IM_WritePrivateProfileInt(LPCWSTR section, LPCWSTR key, int value, LPCWSTR file) {
  CString text;
  text.Format(L"%d", value);
  return IM_WritePrivateProfileString(section, key, text, file);
}

void IM_GetPrivateProfileSectionMap(CString section, CString file, std::map<CString, CString>& out) {
  std::vector<wchar_t> buffer(kSectionBuffer);
  GetPrivateProfileSectionW(section, buffer.data(), static_cast<std::uint32_t>(kSectionBuffer), file);
  for (const wchar_t* entry = buffer.data(); entry < buffer.data() + kSectionBuffer && *entry;) {
    const CString text(entry);
    entry += text.GetLength() + 1;
    const int equals = text.Find(L'=');
    if (equals < 1) continue;
    out.emplace(text.Left(equals).Trim(), text.Mid(equals + 1).Trim());
  }
}

CString IM_GetConfigFileValue(CString file, CString section, CString key, CString defaultValue,
                              unsigned long size) {
  if (!IM_IsFileExist(file)) return defaultValue;
  unsigned long count = 0;
  const CString value = readProfile(section, key, L"", file, size, count);
  return count > 0 && GetLastError() == 0 ? value : defaultValue;
}

int IM_SetConfigFileValue(CString file, CString section, CString key, CString value) {
  return IM_IsFileExist(file) ? IM_WritePrivateProfileString(section, key, value, file) : 0;
}

CString IM_GetRegeditValue(HKEY root, LPCWSTR subKey, LPCWSTR valueName, unsigned long* type) {
  platform::RegistryValue value;
  if (platform::Registry().query(root, subKey ? subKey : L"", valueName ? valueName : L"", value) != 0)
    return CString();
  if (type) *type = value.type;
  if (value.bytes.empty() || value.bytes.size() >= kLargestRegistryValue) return CString();
  switch (value.type) {
    case platform::kRegistryText:
    case platform::kRegistryExpandText:
      return value.text();
    case platform::kRegistryNumber: {
      CString text;
      text.Format(L"%d", static_cast<int>(value.number()));
      return text;
    }
    case platform::kRegistryTexts:
      return joinedStrings(value.texts());
    default:
      return CString();
  }
}

CString IM_GetRegeditValue(LPCWSTR subKey, LPCWSTR valueName, LPCWSTR defaultValue, unsigned long* type) {
  if (!isEmpty(subKey) && valueName) {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
      const CString value = IM_GetRegeditValue(root, subKey, valueName, type);
      if (!value.IsEmpty()) return value;
    }
  }
  return CString(defaultValue);
}

int IM_SetRegeditValue(LPCWSTR subKey, LPCWSTR valueName, LPCWSTR value) {
  if (isEmpty(subKey) || !valueName) return 0;
  const auto text = platform::RegistryValue::ofText(CString(value).view());
  for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    if (platform::Registry().set(root, subKey, valueName, text) == 0) return 1;
  return 0;
}

CString mek::IM_GetProSettingString(const CString& section, const CString& key, const CString& defaultValue) {
  return IM_GetPrivateProfileString(section, key, defaultValue, IM_GetProSettingPath() + L"impro.ini",
                                    kProSettingSize);
}

int mek::IM_GetProSettingInt(const CString& section, const CString& key, int defaultValue) {
  const CString text = IM_GetProSettingString(section, key, L"");
  return text.IsEmpty() ? IM_GetSystemSettingInt(section, key, defaultValue) : _wtoi(text);
}

int mek::IM_LanguageCodeToId(CString code) {
  return IM_ResLanguageNumber(code.MakeUpper());
}
