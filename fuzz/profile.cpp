// Profile files of any bytes: a change must be read back and leave everything else as it was.
#include "platform/files/profile.h"

#include <cstdint>
#include <cstdlib>

namespace {

using platform::Profile;

struct Entry {
  CString section, key, value;
};

std::vector<Entry> entriesOf(const Profile& profile) {
  std::vector<Entry> all;
  for (const CString& section : profile.sections())
    for (const CString& key : profile.keys(section.view()))
      all.push_back({section, key, profile.value(section.view(), key.view()).value_or(CString())});
  return all;
}

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Profile before(std::string(reinterpret_cast<const char*>(data), size));
  // Reading every value walks the file each time.
  if (before.sections().size() > 50) return 0;
  const auto entries = entriesOf(before);
  if (entries.size() > 200) return 0;
  for (const CString& section : before.sections()) before.entries(section.view());

  Profile after = before;
  const std::wstring_view section =
      entries.empty() ? std::wstring_view(L"New") : entries.front().section.view();
  if (after.set(section, L"fuzz key", L"图=1") != 0) return 0;
  require(after.value(section, L"fuzz key") == CString(L"图=1"));
  require(Profile(after.bytes()).value(section, L"fuzz key") == CString(L"图=1"));
  for (const Entry& entry : entries)
    if (entry.key.CompareNoCase(L"fuzz key") != 0)
      require(after.value(entry.section.view(), entry.key.view()) == entry.value);
  require(after.removeKey(section, L"fuzz key") == 0);
  require(!after.value(section, L"fuzz key"));
  require(after.removeSection(section) == 0);
  return 0;
}
