#include "platform/system/registry.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/text/utf.h"
#include "tests/platform/temporary_folder.h"

namespace {

using platform::Registry;
using platform::RegistryText;
using platform::RegistryValue;

const HKEY kUser = HKEY_CURRENT_USER;
const HKEY kMachine = HKEY_LOCAL_MACHINE;

TEST(Registry, SizesAreThoseOfUtf16) {
  EXPECT_EQ(RegistryValue::ofText(L"图ab").bytes.size(), 6u) << "no terminator is stored";
  EXPECT_EQ(RegistryValue::ofText(L"图ab", true).bytes.size(), 8u);
  EXPECT_EQ(RegistryValue::ofText(L"📐").bytes.size(), 4u);
  EXPECT_EQ(RegistryValue::ofTexts({L"a", L"b"}).bytes.size(), 10u);
  EXPECT_EQ(RegistryValue::ofNumber(0x01020304).bytes, "\x04\x03\x02\x01");
  EXPECT_EQ(RegistryValue::ofText(L"ab", true).text(), CString(L"ab"));
  EXPECT_EQ(RegistryValue::ofNumber(7).text(), CString(L""));
  EXPECT_EQ((RegistryValue{4, "abc"}).number(), 0u);
  EXPECT_EQ((RegistryValue{7, platform::toUtf16Bytes(L"no end")}).texts(), (std::vector<CString>{L"no end"}));
}

TEST(Registry, EveryValueReturnsFromTheFile) {
  const std::vector<RegistryValue> values = {
      RegistryValue::ofText(L""),
      RegistryValue::ofText(L"a \"quoted\" \\ text\r\nline"),
      RegistryValue::ofText(L"图📐", true),
      {1, "odd"},
      {1, std::string("\x00\xD8", 2)},
      {2, platform::toUtf16Bytes(L"%HOME%\\x")},
      RegistryValue::ofNumber(0),
      RegistryValue::ofNumber(0xFFFFFFFF),
      {4, "12"},
      RegistryValue::ofTexts({}),
      RegistryValue::ofTexts({L"a,b", L"\"", L"c"}),
      {7, platform::toUtf16Bytes(L"no end")},
      {7, std::string(6, '\0')},
      {3, std::string("\0\xFF\n", 3)},
      {3, ""},
      {0, ""},
      {11, "12345678"},
  };
  RegistryText text;
  for (std::size_t i = 0; i < values.size(); ++i)
    ASSERT_EQ(text.set(kUser, L"Software\\K]x [y", std::to_wstring(i) + L"\" = \n", values[i]), 0u);
  ASSERT_EQ(text.set(kUser, L"Software\\K]x [y", L"", RegistryValue::ofText(L"default")), 0u);
  const RegistryText again(text.content());
  EXPECT_TRUE(again.problems().empty());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const RegistryValue* found = again.find(kUser, L"SOFTWARE\\k]X [Y", std::to_wstring(i) + L"\" = \n");
    ASSERT_NE(found, nullptr) << i;
    EXPECT_EQ(*found, values[i]) << i << "\n" << text.content();
  }
  EXPECT_EQ(again.content(), text.content());
}

TEST(Registry, MalformedLinesAreKeptAndReported) {
  const std::string content =
      "# mine\n"
      "\"early\"=\"x\"\n"
      "[HKEY_CURRENT_USER\\A]\n"
      "\"ok\"=dword:1f\r\n"
      "\"OK\"=dword:2\n"
      "\"bad\"=dword:xyz\n"
      "\"open\"=\"never ends\n"
      "\"escape\"=\"\\q\"\n"
      "\"hex\"=hex(3):1,\n"
      "\"multi\"=multi:\"a\"\"b\"\n"
      "nonsense\n"
      "\"utf\"=\"\xFF\"\n"
      "[HKEY_ELSEWHERE\\B]\n"
      "\"lost\"=dword:1\n"
      "[HKEY_CURRENT_USER\\A\\C\n"
      "[HKEY_CURRENT_USER]\n"
      "@=\"top\"\n";
  RegistryText text(content);
  std::vector<int> lines;
  for (const auto& problem : text.problems()) lines.push_back(problem.line);
  EXPECT_EQ(lines, (std::vector<int>{2, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
  EXPECT_EQ(text.content(), content);
  ASSERT_NE(text.find(kUser, L"a", L"OK"), nullptr);
  EXPECT_EQ(text.find(kUser, L"a", L"OK")->number(), 31u) << "the first counts";
  EXPECT_EQ(text.find(kUser, L"A", L"lost"), nullptr);
  EXPECT_NE(text.find(kUser, L"", L""), nullptr);
  ASSERT_EQ(text.set(kUser, L"A", L"ok", RegistryValue::ofNumber(5)), 0u);
  ASSERT_EQ(text.set(kUser, L"A", L"new", RegistryValue::ofNumber(6)), 0u);
  std::string expected = content;
  expected.replace(expected.find("\"ok\"=dword:1f\r"), 14, "\"ok\"=dword:00000005");
  expected.insert(expected.find("[HKEY_ELSEWHERE"), "\"new\"=dword:00000006\n");
  EXPECT_EQ(text.content(), expected);
}

TEST(Registry, KeysAndTheirPaths) {
  RegistryText text;
  ASSERT_EQ(text.set(kMachine, L"\\SOFTWARE\\\\Korvasoft\\\\", L"v", RegistryValue::ofNumber(1)), 0u);
  EXPECT_NE(text.find(kMachine, L"software\\korvasoft", L"V"), nullptr) << "empty parts don't count";
  EXPECT_EQ(text.find(kUser, L"software\\korvasoft", L"V"), nullptr) << "the branches are apart";
  EXPECT_TRUE(text.hasKey(kMachine, L"Software"));
  EXPECT_FALSE(text.hasKey(kMachine, L"Soft"));
  EXPECT_TRUE(text.hasKey(kUser, L""));
  ASSERT_EQ(text.createKey(kMachine, L"software\\Other\\Deep"), 0u);
  EXPECT_EQ(text.subKeys(kMachine, L"SOFTWARE"), (std::vector<CString>{L"Korvasoft", L"Other"}));
  EXPECT_EQ(text.valueNames(kMachine, L"SOFTWARE\\Korvasoft"), (std::vector<CString>{L"v"}));
  EXPECT_EQ(text.removeKey(kMachine, L"software"), 0u);
  EXPECT_EQ(text.find(kMachine, L"software\\korvasoft", L"V"), nullptr);
  EXPECT_EQ(text.removeKey(kMachine, L"software"), 2u);
  EXPECT_EQ(text.removeKey(kMachine, L""), platform::kErrorAccessDenied);
  EXPECT_EQ(text.set(nullptr, L"a", L"b", {}), platform::kErrorInvalidHandle);
  EXPECT_EQ(text.set(kUser, L"a\nb", L"b", {}), platform::kErrorInvalidParameter);
}

TEST(Registry, FileIsReadAnewAndWrittenWhole) {
  TemporaryFolder folder;
  RegistryValue value;
  EXPECT_EQ(Registry().query(kUser, L"A", L"v", value), 2u);
  EXPECT_FALSE(platform::exists(folder.environment().settingsRoot / "registry.txt"))
      << "reading makes no file";
  EXPECT_EQ(Registry().removeValue(kUser, L"A", L"v"), 2u);
  ASSERT_EQ(Registry().set(kUser, L"A", L"v", RegistryValue::ofText(L"图")), 0u);
  ASSERT_EQ(Registry().query(kUser, L"a", L"V", value), 0u);
  EXPECT_EQ(value.text(), CString(L"图"));
  ASSERT_EQ(Registry().removeValue(kUser, L"A", L"v"), 0u);
  EXPECT_EQ(Registry().query(kUser, L"A", L"v", value), 2u);

  std::filesystem::create_directory(folder / "taken");
  EXPECT_NE(Registry(folder / "taken").set(kUser, L"A", L"v", {}), 0u)
      << "a folder stands where the file should";
  EXPECT_NE(Registry(folder / "taken").query(kUser, L"A", L"v", value), 2u);
}

TEST(Registry, SeveralProcessesLoseNothing) {
  TemporaryFolder folder;
  constexpr int kProcesses = 4, kValues = 10;
  for (int process = 0; process < kProcesses; ++process) {
    if (::fork() != 0) continue;
    bool good = true;
    for (int i = 0; i < kValues; ++i)
      good = good && Registry().set(kUser, L"A", std::to_wstring(process * kValues + i),
                                    RegistryValue::ofNumber(1)) == 0;
    ::_exit(good ? 0 : 1);
  }
  for (int process = 0; process < kProcesses; ++process) {
    int status = 0;
    ::wait(&status);
    EXPECT_EQ(status, 0);
  }
  RegistryText text;
  ASSERT_TRUE(Registry().load(text));
  EXPECT_EQ(text.valueNames(kUser, L"A").size(), std::size_t{kProcesses * kValues});
}

}  // namespace
