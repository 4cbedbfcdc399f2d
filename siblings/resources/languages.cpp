// The languages of the product, and which one it speaks.
#include <cstdlib>
#include <string_view>

#include "siblings/resources/internal/tree.h"
#include "siblings/resources/mekres.h"

namespace {

struct Language {
  const wchar_t* code;  // in `.mld` files and the start-up configuration
  const wchar_t* key;   // in language files
  std::string_view locale;
};

constexpr Language kLanguages[] = {
    {L"CHS", L"zh-cn", "zh"}, {L"CHT", L"zh-tw", "zh_TW"}, {L"ENU", L"en-us", "en"}, {L"JPN", L"ja-jp", "ja"},
    {L"DEU", L"de-de", "de"}, {L"KOR", L"ko-kr", "ko"},    {L"PLK", L"pl-pl", "pl"}, {L"CSY", L"cs-cz", "cs"},
};
constexpr int kCount = static_cast<int>(std::size(kLanguages));
constexpr int kTraditionalChinese = 2;
constexpr int kEnglish = 3;

int configuredLanguage() {
  const auto document = platform::loadXml(mekres::installedRoot() / "StartupConfig.xml");
  if (!document) return 0;
  return IM_ResLanguageNumber(
      document->selectSingleNode(L"StartupInfor//Config//LANGUAGE").text().Trim().MakeUpper());
}

int localeLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value && *value) return IM_ResLanguageOfLocale(value);
  }
  return 0;
}

}  // namespace

int mekres::chosenLanguage() {
  if (const int number = configuredLanguage()) return number;
  if (const int number = localeLanguage()) return number;
  return kEnglish;
}

int IM_ResLanguageNumber(const CString& code) {
  for (int i = 0; i < kCount; ++i)
    if (code == kLanguages[i].code) return i + 1;
  return 0;
}

const wchar_t* IM_ResLanguageKey(int number) {
  return number >= 1 && number <= kCount ? kLanguages[number - 1].key : L"";
}

int IM_ResLanguageOfLocale(std::string_view locale) {
  // Traditional characters are written under three territories; every other Chinese locale uses the
  // simplified ones.
  for (std::string_view territory : {"zh_TW", "zh_HK", "zh_MO"})
    if (locale.starts_with(territory)) return kTraditionalChinese;
  for (int i = 0; i < kCount; ++i) {
    const auto name = kLanguages[i].locale;
    const bool endsThere =
        locale.size() == name.size() ||
        (locale.size() > name.size() && (locale[name.size()] == '_' || locale[name.size()] == '.'));
    if (locale.starts_with(name) && endsThere) return i + 1;
  }
  return 0;
}
