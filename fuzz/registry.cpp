// Registry files of any bytes: nothing is lost, and what is written is read back.
#include "platform/system/registry.h"

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  platform::RegistryText text(content);
  std::string whole(content);
  if (!whole.empty() && whole.back() != '\n') whole += '\n';
  require(text.content() == whole);

  // The bytes themselves as a value of each type.
  const HKEY root = HKEY_CURRENT_USER;
  const std::string part(content.substr(0, 64));
  for (const DWORD type : {0u, 1u, 2u, 3u, 4u, 7u, 11u}) {
    const platform::RegistryValue value{type, part};
    require(text.set(root, L"Fuzz\\Key", L"v" + std::to_wstring(type), value) == 0);
    const platform::RegistryText again(text.content());
    const platform::RegistryValue* found = again.find(root, L"fuzz\\KEY", L"V" + std::to_wstring(type));
    require(found && *found == value);
    found->text();
    found->texts();
    found->number();
  }
  for (const CString& key : text.subKeys(root, L"")) text.valueNames(root, key.view());
  text.removeKey(root, L"Fuzz");
  require(text.find(root, L"Fuzz\\Key", L"v1") == nullptr);
  return 0;
}
