#include "module/data/ado_fields.h"

#include <algorithm>
#include <string>

#include "platform/env/environment.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace {

constexpr unsigned kHexBase = 16;
constexpr const wchar_t* kBlanks = L" \t";

int hexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  const wchar_t lower = static_cast<wchar_t>(c | 0x20);
  return lower >= L'a' && lower <= L'f' ? lower - L'a' + 10 : -1;
}

/// The low eight bits of a number to base 16; what stands behind its digits is ignored.
char hexByte(std::wstring_view part) {
  if (part.starts_with(L"0x") || part.starts_with(L"0X")) part.remove_prefix(2);
  unsigned value = 0;
  for (wchar_t c : part) {
    const int digit = hexDigit(c);
    if (digit < 0) break;
    value = (value * kHexBase + static_cast<unsigned>(digit)) & 0xFF;
  }
  return static_cast<char>(value);
}

std::string hexBytes(std::wstring_view text) {
  std::string bytes;
  for (std::size_t at = text.find_first_not_of(kBlanks); at != std::wstring_view::npos;) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
    bytes += hexByte(text.substr(at, end - at));
    at = text.find_first_not_of(kBlanks, end);
  }
  return bytes;
}

bool isPlainName(const CString& name) {
  return !name.IsEmpty() && name.FindOneOf(L"\\/:") < 0 && name != L"." && name != L"..";
}

}  // namespace

std::size_t _adoFields::readable() const {
  return std::min(children.size(), static_cast<std::size_t>(std::max(count, 0)));
}

const _adoFields* _adoFields::find(std::wstring_view childName) const {
  const std::size_t size = readable();
  for (std::size_t i = 0; i < size; ++i)
    if (platform::equalNoCase(children[i].name.view(), childName)) return &children[i];
  return nullptr;
}

std::shared_ptr<_adoFields> _adoFields::GetItem(CString itemName) const {
  const _adoFields* child = find(itemName.view());
  if (!child) return nullptr;
  auto item = std::make_shared<_adoFields>();
  item->value = child->value;
  item->name = child->name;
  return item;
}

std::shared_ptr<_adoFields> _adoFields::GetTableProperty(CString key) const {
  auto property = std::make_shared<_adoFields>();
  if (key.CompareNoCase(L"TABLE_NAME") == 0) property->value = name;
  if (key.CompareNoCase(L"TABLE_TYPE") == 0 && name.length() > 0) property->value = L"TABLE";
  return property;
}

CString GetImageFromADO(CString fileName, std::shared_ptr<_adoFields> field, int (*transform)(char**, long)) {
  if (!field || !isPlainName(fileName)) return {};
  const std::filesystem::path folder = platform::Environment::current().temporaryFolder;
  const CString path = platform::fromNative(folder) + L"\\" + fileName;
  const std::filesystem::path target = platform::toNative(path);
  if (platform::isFile(target)) platform::deleteFile(target);
  std::string bytes = hexBytes(field->value.text().view());
  if (bytes.empty()) return {};
  char* data = bytes.data();
  if (transform) transform(&data, static_cast<long>(bytes.size()));
  if (!data || !platform::writeFile(target, {data, bytes.size()})) return {};
  return path;
}

int PutImageInADO(CString, std::shared_ptr<_adoFields>) {
  return 0;
}
