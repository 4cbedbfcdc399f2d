// Places, settings stores, files and translations, in a tree of the test's own: the executable lies where the
// module would.
#include "module/core/settings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>

#include "host/app/hostapp.h"
#include "module/core/files.h"
#include "module/core/names.h"
#include "module/core/paths.h"
#include "module/core/translate.h"
#include "platform/files/files.h"
#include "platform/system/registry.h"
#include "siblings/resources/mekres.h"
#include "tests/support/print.h"
#include "tests/support/temporary_tree.h"

namespace {

class SettingsTest : public testing::Test {
 protected:
  SettingsTest() : app(options(folder)) { IM_GetSysPath(root); }
  ~SettingsTest() override { platform::deleteFile(IM_GetSystemSettingXML()); }

  static KvHostOptions options(const test::TemporaryFolder& folder) {
    KvHostOptions result;
    result.environment = test::environmentIn(folder.path());
    return result;
  }
  void startupFile(const char* content) {
    ASSERT_TRUE(platform::writeFile(IM_GetSystemSettingXML(), content));
  }
  CString place(const wchar_t* name) { return platform::fromNative(folder.path()) + L"\\" + name; }

  test::TemporaryFolder folder;
  KvHostApp app;
  CString root;
};

TEST_F(SettingsTest, Places) {
  EXPECT_EQ(mek::rootOfModuleFile(L"C:\\p\\Professional\\KVX8x64\\MekCore.kvx"), L"C:\\p");
  EXPECT_EQ(mek::rootOfModuleFile(L"C:\\a\\b.kvx"), L"");
  EXPECT_FALSE(root.IsEmpty());
  EXPECT_EQ(IM_GetSysSettingPath(), root + L"\\MCADSetting");
  EXPECT_EQ(IM_GetSystemSettingXML(), root + L"\\StartupConfig.xml");
  const CString settings = platform::fromNative(app.environment().settingsRoot);
  EXPECT_EQ(IM_GetLocalSettingPath(), settings + L"\\Korvm\\MCADSetting");
  EXPECT_EQ(mek::IM_GetProSettingPath(), settings + L"\\Korvm\\MCADSetting\\pro\\");

  // Only one separator at the end of the variable goes.
  KvEdVariable doubled;
  doubled.name = L"ROAMABLEROOTPREFIX";
  doubled.type = RTSTR;
  doubled.value = CString(L"C:\\u\\\\");
  app.editor().variables().define(doubled);
  EXPECT_EQ(IM_GetLocalSettingPath(), L"C:\\u\\\\Korvm\\MCADSetting");
  doubled.type = RTSHORT;
  doubled.value = 1;
  app.editor().variables().define(doubled);
  EXPECT_EQ(IM_GetLocalSettingPath(), L"D:\\Korvane\\Korvm\\MCADSetting");
}

TEST_F(SettingsTest, StartupFile) {
  EXPECT_EQ(IM_GetSystemSettingString(L"About", L"Title", L"none"), L"none");
  startupFile(
      "<StartupInfor><About><Title>标题</Title><Empty/></About><Config><PRODUCT>P</PRODUCT><LANGUAGE>CHS</"
      "LANGUAGE></Config>"
      "<System><A><DETAILTEXT>1</DETAILTEXT></A></System></StartupInfor>");
  EXPECT_EQ(IM_GetSystemSettingString(L"About", L"Title", L"none"), L"标题");
  EXPECT_EQ(IM_GetSystemSettingString(L"About", L"Empty", L"none"), L"");
  EXPECT_EQ(IM_GetSystemSettingInt(L"About", L"Title", 7), 0);
  EXPECT_EQ(IM_GetSystemSettingInt(L"About", L"Empty", 7), 7);
  EXPECT_EQ(IM_GetSystemSettingInt(L"System", L"DETAILTEXT", 0), 1);  // whatever elements stand between
  EXPECT_EQ(IM_GetRegSysPath(), L"SOFTWARE\\Korvasoft\\P\\\\CHS");
  startupFile("<StartupInfor><About>");
  EXPECT_EQ(IM_GetSystemSettingString(L"About", L"Title", L"none"), L"none");
  startupFile("<StartupInfor><About><Version>2.5</Version></About></StartupInfor>");
  EXPECT_EQ(IM_GetPublicDocumentPath(), place(L"shared") + L"\\Korvane\\Korvane Mechanical 2.5\\KORVM");
  g_eProductType = static_cast<IM_PDTID>(6);
  EXPECT_EQ(IM_GetPublicDocumentPath(), L"");
  g_eProductType = IM_PDT_KORVANE;
}

TEST_F(SettingsTest, ProfileFiles) {
  const CString file = place(L"a.ini");
  EXPECT_EQ(IM_SetConfigFileValue(file, L"S", L"k", L"v"), 0);
  EXPECT_EQ(IM_IsFileExist(file), 0);
  EXPECT_EQ(IM_GetConfigFileValue(file, L"S", L"k", L"d", 50), L"d");
  EXPECT_NE(IM_WritePrivateProfileString(L"S", L"k", L"值 𝄞", file), 0);
  std::string bytes;
  ASSERT_TRUE(platform::readFile(file, bytes));
  EXPECT_TRUE(bytes.starts_with("\xFF\xFE"));
  EXPECT_EQ(IM_GetPrivateProfileString(L"S", L"k", L"d", file, 256), L"值 𝄞");
  EXPECT_EQ(IM_GetPrivateProfileString(L"S", L"k", L"d", file, 2), L"值");
  EXPECT_EQ(IM_GetPrivateProfileString(L"S", L"k", L"d", file, std::numeric_limits<unsigned long>::max()),
            L"值 𝄞");
  EXPECT_EQ(IM_GetPrivateProfileString(L"", L"k", L"d", file, 256), L"");
  EXPECT_EQ(IM_GetPrivateProfileString(L"S", nullptr, L"d", file, 256), L"");
  EXPECT_EQ(IM_GetPrivateProfileString(L"S", L"none", L"d", file, 256), L"d");
  EXPECT_NE(IM_SetConfigFileValue(file, L"S", L"k", L"new"), 0);
  EXPECT_EQ(IM_GetConfigFileValue(file, L"S", L"k", L"d", 50), L"new");
  EXPECT_EQ(IM_GetConfigFileValue(file, L"S", L"k", L"d", 3),
            L"d");  // a value that was cut counts as a failed read
  EXPECT_EQ(IM_GetConfigFileValue(file, L"S", L"none", L"d", 50), L"d");
  EXPECT_NE(IM_WritePrivateProfileInt(L"S", L"n", -3, file), 0);
  EXPECT_EQ(IM_GetConfigFileValue(file, L"S", L"n", L"", 50), L"-3");
}

TEST_F(SettingsTest, WholeSections) {
  const CString file = place(L"b.ini");
  ASSERT_TRUE(platform::writeFile(file, "[S]\r\n=x\r\na = b \r\na=c\r\nalone\r\n d=1=2\r\n[T]\r\nz=1\r\n"));
  std::map<CString, CString> pairs{{L"z", L"old"}};
  IM_GetPrivateProfileSectionMap(L"S", file, pairs);
  const std::map<CString, CString> expected{{L"a", L"b"}, {L"d", L"1=2"}, {L"z", L"old"}};
  EXPECT_EQ(pairs, expected);

  std::string large = "[S]\r\n";
  for (int i = 0; i < 400; ++i) large += "key" + std::to_string(i) + "=0123456789\r\n";
  ASSERT_TRUE(platform::writeFile(file, large));
  pairs.clear();
  IM_GetPrivateProfileSectionMap(L"S", file, pairs);
  EXPECT_GT(pairs.size(), 100u);
  EXPECT_LT(pairs.size(), 130u);  // cut at 2000 characters
}

TEST_F(SettingsTest, UserOverridesProductByPresence) {
  startupFile("<StartupInfor><S><K>1</K></S></StartupInfor>");
  EXPECT_EQ(mek::IM_GetProSettingInt(L"S", L"K", 9), 1);
  EXPECT_EQ(mek::IM_GetProSettingInt(L"S", L"Other", 9), 9);
  mek::prepareUserFolder();
  IM_WritePrivateProfileString(L"S", L"K", L"0", mek::IM_GetProSettingPath() + L"impro.ini");
  EXPECT_EQ(mek::IM_GetProSettingInt(L"S", L"K", 9), 0);
}

TEST_F(SettingsTest, UserFolderIsFilledOnce) {
  const CString templates = IM_GetSysSettingPath() + L"\\pro";
  ASSERT_EQ(IM_CreateAllDirectory(templates), 1);
  ASSERT_TRUE(platform::writeFile(templates + L"\\PublicSymbol.ini", "template"));
  mek::prepareUserFolder();
  const CString own = mek::IM_GetProSettingPath() + L"PublicSymbol.ini";
  CString content;
  ASSERT_EQ(IM_ReadCFile(own, content), 1);
  EXPECT_EQ(content, L"template");
  ASSERT_EQ(IM_WriteCFile(own, L"mine"), 1);
  mek::prepareUserFolder();
  IM_ReadCFile(own, content);
  EXPECT_EQ(content, L"mine");
  platform::deleteFile(own);
  mek::prepareUserFolder();
  EXPECT_EQ(IM_IsFileExist(own), 1);
  platform::deleteTree(IM_GetSysSettingPath());
}

TEST_F(SettingsTest, Registry) {
  using platform::RegistryValue;
  platform::Registry registry;
  const auto set = [&](HKEY branch, const wchar_t* name, const RegistryValue& value) {
    EXPECT_EQ(registry.set(branch, L"K", name, value), 0u);
  };
  set(HKEY_CURRENT_USER, L"number", RegistryValue::ofNumber(0xFFFFFFFFu));
  set(HKEY_CURRENT_USER, L"several", RegistryValue::ofTexts({L"a", L"b"}));
  set(HKEY_LOCAL_MACHINE, L"machine", RegistryValue::ofText(L"m"));
  set(HKEY_CURRENT_USER, L"empty", RegistryValue::ofText(L""));
  set(HKEY_CURRENT_USER, L"fits", RegistryValue::ofText(std::wstring(2499, L'x')));
  set(HKEY_CURRENT_USER, L"large", RegistryValue::ofText(std::wstring(2500, L'x')));
  set(HKEY_CURRENT_USER, L"odd", RegistryValue{3, "ab"});
  unsigned long type = 0;
  EXPECT_EQ(IM_GetRegeditValue(HKEY_CURRENT_USER, L"K", L"number", &type), L"-1");
  EXPECT_EQ(type, 4u);
  EXPECT_EQ(IM_GetRegeditValue(HKEY_CURRENT_USER, L"K", L"several", nullptr), L"\na\nb");
  EXPECT_EQ(IM_GetRegeditValue(HKEY_CURRENT_USER, L"K", L"fits", nullptr).GetLength(), 2499);
  EXPECT_EQ(IM_GetRegeditValue(HKEY_CURRENT_USER, L"K", L"large", nullptr), L"");
  EXPECT_EQ(IM_GetRegeditValue(HKEY_CURRENT_USER, L"K", L"odd", &type), L"");
  EXPECT_EQ(type, 3u);
  EXPECT_EQ(IM_GetRegeditValue(L"K", L"machine", L"d", nullptr), L"m");
  EXPECT_EQ(IM_GetRegeditValue(L"K", L"empty", L"d", nullptr), L"d");
  EXPECT_EQ(IM_GetRegeditValue(L"", L"machine", L"d", nullptr), L"d");
  EXPECT_EQ(IM_GetRegeditValue(L"K", L"none", nullptr, nullptr), L"");

  EXPECT_EQ(IM_SetRegeditValue(L"New\\Key", L"v", L"中a"), 1);
  RegistryValue stored;
  ASSERT_EQ(registry.query(HKEY_CURRENT_USER, L"New\\Key", L"v", stored), 0u);
  EXPECT_EQ(stored.type, 1u);
  EXPECT_EQ(stored.bytes.size(), 4u);  // no terminator
}

TEST_F(SettingsTest, Files) {
  EXPECT_EQ(IM_CreateAllDirectory(place(L"x\\y\\z\\")), 1);
  EXPECT_EQ(IM_CreateAllDirectory(place(L"x")), 1);
  EXPECT_EQ(IM_EnsureFileDirectory(place(L"n\\m\\f.txt")), 1);
  EXPECT_EQ(IM_EnsureFileDirectory(L"f.txt"), 0);
  CString endless = place(L"deep");
  for (int level = 0; level < 2500; ++level) endless += L"\\a";
  EXPECT_EQ(IM_CreateAllDirectory(endless), 0);
  EXPECT_EQ(IM_IsFileExist(place(L"deep")), 0);
  EXPECT_EQ(IM_WriteUnicodeFile(place(L"x\\u.txt"), L"中𝄞\r\n"), 1);
  EXPECT_EQ(IM_WriteCFile(place(L"x\\B.TXT"), L"中"), 1);
  CString text = L"untouched";
  EXPECT_EQ(IM_ReadUnicodeFile(place(L"x\\B.TXT"), text), 0);
  EXPECT_EQ(text, L"untouched");
  EXPECT_EQ(IM_ReadFile(place(L"x\\b.txt"), text), 1);
  EXPECT_EQ(text, L"中");
  EXPECT_EQ(IM_ReadFile(place(L"x\\u.txt"), text), 1);
  EXPECT_EQ(text, L"中𝄞\r\n");
  std::vector<CString> found;
  EXPECT_EQ(IM_FindFile(place(L"x\\"), L"*.txt", found, 0), 1);
  EXPECT_EQ(found, (std::vector<CString>{L"B.TXT", L"u.txt"}));
  found.clear();
  EXPECT_EQ(IM_FindFile(place(L"x\\u*"), found, 1), 1);
  EXPECT_EQ(found, std::vector<CString>{place(L"x\\u.txt")});
  found.clear();
  EXPECT_EQ(IM_FindFile(place(L"x"), L"y", found, 0), 0);  // a folder
  EXPECT_EQ(IM_IsFileExist(place(L"x\\y")), 1);
}

TEST_F(SettingsTest, Translations) {
  const CString english =
      L"/lg ENU XXX DEU\r\n 12 \"one {0.5}\" \"u\" \"eins\"\r\n13 \"only one\"\r\n14 \"a (GENMSG f 12) b\" "
      L"\"\" \"\"\r\n"
      L"15 \"(GENMSG F 15)\" \"\" \"\"\r\n";
  const int language = g_eSoftLanguage;
  g_eSoftLanguage = 3;
  mek::releaseTranslations();
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG F 12)", nullptr), L"(GENMSG F 12)");
  mek::addTranslations(L"f", english);
  double value = 0;
  EXPECT_EQ(IM_TranslateGenMsg(L"x{2.5}", &value), L"x");
  EXPECT_EQ(value, 2.5);
  EXPECT_EQ(IM_TranslateGenMsg(L"x", &value), L"x");
  EXPECT_EQ(value, -1.0);
  EXPECT_EQ(IM_TranslateGenMsg(L"{1}", &value), L"{1}");  // nothing stands before the brace
  EXPECT_EQ(IM_TranslateGenMsg(L"<(genmsg \"F\" 12)>", &value), L"<one {0.5}>");
  EXPECT_EQ(value, -1.0);
  EXPECT_EQ(IM_TranslateGenMsg(L"(GEFMSG \"f\"12)", &value),
            L"one ");  // the new text's own brace is cut, its value dropped
  EXPECT_EQ(value, -1.0);
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG f 13)", nullptr), L"(GENMSG f 13)");
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG f 12", nullptr), L"(GENMSG f 12");
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG f 14)/(GENMSG f 12)", nullptr), L"a one {0.5} b/one ");
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG f 15)", nullptr), L"(GENMSG F 15)");  // names itself: ends
  g_eSoftLanguage = 5;
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG f 12)", nullptr), L"eins");
  g_eSoftLanguage = language;

  mek::addTranslations(L"g", L"/lg\r\n1 \"\"\r\n");
  mek::addTranslations(L"g", L"/xx ENU\r\n1 \"a\"\r\n");
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG g 1)", nullptr), L"(GENMSG g 1)");
  mek::releaseTranslations();
}

TEST_F(SettingsTest, TranslatorFolderIsReadAtTheStart) {
  IM_CreateAllDirectory(mek::IM_GetTranslatorPath());
  IM_WriteUnicodeFile(mek::IM_GetTranslatorPath() + L"Part.MLD", L"/lg ENU CHS\r\n5 \"bolt\" \"螺栓\"");
  IM_WriteCFile(mek::IM_GetTranslatorPath() + L"plain.mld", L"/lg ENU\r\n5 \"no\"");
  const int language = g_eSoftLanguage;
  g_eSoftLanguage = 1;
  IM_TranslateGenMsg();
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG part 5)", nullptr), L"螺栓");
  EXPECT_EQ(IM_TranslateGenMsg(L"(GENMSG plain 5)", nullptr), L"(GENMSG plain 5)");
  g_eSoftLanguage = language;
  platform::deleteTree(mek::IM_GetTranslatorPath());
}

TEST_F(SettingsTest, Dates) {
  EXPECT_EQ(IM_GetSystemDateFormat(20261121, L"yyyy-MM-dd"), L"2026-11-21");
  EXPECT_EQ(IM_GetSystemDateFormat(20260305, L"d/M/yy"), L"5/3/26");
  EXPECT_EQ(IM_GetSystemDateFormat(20090305, L"y|yyyy"), L"y|2009");  // the longest token only
  EXPECT_FALSE(IM_GetSystemDateFormat(20260305, L"").IsEmpty());
}

TEST(Languages, CodesAndLocales) {
  EXPECT_EQ(mek::IM_LanguageCodeToId(L"deu"), 5);
  EXPECT_EQ(mek::IM_LanguageCodeToId(L"DEUX"), 0);
  EXPECT_EQ(IM_ResLanguageOfLocale("zh_CN.UTF-8"), 1);
  EXPECT_EQ(IM_ResLanguageOfLocale("zh_TW.Big5"), 2);
  EXPECT_EQ(IM_ResLanguageOfLocale("de"), 5);
  EXPECT_EQ(IM_ResLanguageOfLocale("C.UTF-8"), 0);
  for (unsigned id : {1000u, 1031u, 1176u, 1246u, 1270u, 1290u})
    for (int language = 1; language <= 8; ++language) {
      g_eSoftLanguage = language;
      EXPECT_FALSE(IM_GetStringFromRc(id, 256).IsEmpty()) << id << " " << language;
    }
  g_eSoftLanguage = 3;
  EXPECT_EQ(IM_GetStringFromRc(1256, 4), L"suc");
  EXPECT_EQ(IM_GetStringFromRc(4711, 256), L"");
}

}  // namespace
