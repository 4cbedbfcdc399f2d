#include "platform/files/profile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/text/codepage.h"
#include "platform/text/utf.h"
#include "tests/platform/temporary_folder.h"

namespace {

using platform::Profile;
namespace fs = std::filesystem;

std::string utf16(std::wstring_view text) {
  return "\xFF\xFE" + platform::toUtf16Bytes(text);
}

CString read(LPCWSTR section, LPCWSTR key, LPCWSTR file, DWORD size = 256, LPCWSTR defaultValue = L"-") {
  std::vector<wchar_t> buffer(size + 2, L'#');
  const DWORD count = GetPrivateProfileStringW(section, key, defaultValue, buffer.data(), size, file);
  EXPECT_EQ(buffer[size], L'#') << "written beyond the buffer";
  EXPECT_EQ(buffer[count], L'\0');
  return CString(std::wstring_view(buffer.data(), count));
}

std::string contentOf(const fs::path& path) {
  std::string content;
  EXPECT_TRUE(platform::readFile(path, content));
  return content;
}

constexpr const char* kSample =
    "; first\r\n"
    "stray=0\r\n"
    "[Start Timer]\r\n"
    "SavePath = C:\\backup \r\n"
    "\tMinute=30\r\n"
    ";Minute=99\r\n"
    "Quoted=\" a b \"\r\n"
    "Single='x'\r\n"
    "Half=\"x\r\n"
    "Empty=\r\n"
    "Minute=31\r\n"
    "Equation=a=b\r\n"
    "word\r\n"
    "[ other ]\r\n"
    "k=1\r\n"
    "[start timer]\r\n"
    "Late=1\r\n";

TEST(Profile, Reading) {
  const Profile profile{std::string(kSample)};
  struct Case {
    const wchar_t *section, *key;
    const wchar_t* value;  // null: none
  };
  for (const Case& test :
       {Case{L"START TIMER", L"savepath", L"C:\\backup"}, Case{L"Start Timer", L"Minute", L"30"},
        Case{L" Start Timer ", L" Minute ", L"30"}, Case{L"Start Timer", L";Minute", nullptr},
        Case{L"Start Timer", L"Quoted", L" a b "}, Case{L"Start Timer", L"Single", L"x"},
        Case{L"Start Timer", L"Half", L"\"x"}, Case{L"Start Timer", L"Empty", L""},
        Case{L"Start Timer", L"Equation", L"a=b"}, Case{L"Start Timer", L"word", nullptr},
        Case{L"Start Timer", L"Late", nullptr}, Case{L"Start Timer", L"stray", nullptr},
        Case{L"other", L"k", L"1"}, Case{L"none", L"k", nullptr}}) {
    const auto value = profile.value(test.section, test.key);
    EXPECT_EQ(value.has_value(), test.value != nullptr) << platform::utf8From(test.key);
    if (value && test.value) {
      EXPECT_EQ(*value, CString(test.value)) << platform::utf8From(test.key);
    }
  }
  EXPECT_EQ(profile.entries(L"Start Timer").size(), 9u) << "all but blank lines and comments";
  EXPECT_EQ(profile.entries(L"Start Timer")[2], CString(L"Quoted=\" a b \""));
}

TEST(Profile, EncodingsAndLineEnds) {
  const std::wstring text = L"[节]\n键=值📐\r\n\r[b]\rk=2";
  const std::string gbk = platform::toCodePage(L"[节]\n键=誠值\r\n\r[b]\rk=2", 936);
  std::string big = "\xFE\xFF";
  for (const char16_t unit : platform::toUtf16(text))
    big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
  for (const std::string& bytes : {gbk, utf16(text), "\xEF\xBB\xBF" + platform::toUtf8(text), big}) {
    Profile profile{bytes};
    EXPECT_EQ(profile.value(L"节", L"键"), CString(bytes == gbk ? L"誠值" : L"值📐"));
    EXPECT_EQ(profile.value(L"B", L"K"), CString(L"2"));
    EXPECT_EQ(profile.set(L"节", L"新", L"图"), 0u);
    EXPECT_EQ(profile.set(L"b", L"k", L"3"), 0u);
    const Profile again{profile.bytes()};
    EXPECT_EQ(again.value(L"节", L"新"), CString(L"图"));
    EXPECT_EQ(again.value(L"b", L"k"), CString(L"3"));
  }
}

TEST(Profile, AChangeTouchesItsLinesOnly) {
  struct Case {
    const char* before;
    const wchar_t *section, *key, *value;
    const char* after;
  };
  for (const Case& test : {
           Case{"", L"s", L"k", L"v", "[s]\r\nk=v\r\n"},
           Case{"; c", L"s", L"k", L"v", "; c\r\n[s]\r\nk=v\r\n"},
           Case{"[s]\na=1\n\n\n[t]\nb=2", L"s", L"k", L"v", "[s]\na=1\nk=v\n\n\n[t]\nb=2"},
           Case{"[s]\na=1\n\n\n[t]\nb=2", L"t", L"k", L"v", "[s]\na=1\n\n\n[t]\nb=2\nk=v\n"},
           Case{"[s]", L"S", L"k", L"v", "[s]\r\nk=v\r\n"},
           Case{"[s]\n  Key = old ; x\nKEY=2\n", L"s", L"kEy", L"new", "[s]\n  Key = new\nKEY=2\n"},
           Case{"[s]\rk=\r", L"s", L"k", L"v", "[s]\rk=v\r"},
           Case{"[s]\nk=1\nx\nK=2\n[t]\n", L"s", L"k", nullptr, "[s]\nx\n[t]\n"},
           Case{"[s]\nk=1\n; c\n[t]\nx=\xD0\n[s]\nz=1", L"s", nullptr, nullptr, "[t]\nx=\xD0\n[s]\nz=1"},
           Case{"[s]\nk=1\n", L"none", nullptr, nullptr, "[s]\nk=1\n"},
           Case{"[s]\nk=1\n", L"s", L"none", nullptr, "[s]\nk=1\n"},
           Case{"[s]\nbad=\xFF\xCD\nk=1\n", L"s", L"k", L"图", "[s]\nbad=\xFF\xCD\nk=\xCD\xBC\n"},
       }) {
    Profile profile{std::string(test.before)};
    const DWORD error = !test.key     ? profile.removeSection(test.section)
                        : !test.value ? profile.removeKey(test.section, test.key)
                                      : profile.set(test.section, test.key, test.value);
    EXPECT_EQ(error, 0u) << test.before;
    EXPECT_EQ(profile.bytes(), test.after) << test.before;
  }
}

TEST(Profile, RefusedChangesChangeNothing) {
  Profile profile{std::string("[s]\nk=1\n")};
  struct Case {
    const wchar_t *section, *key, *value;
  };
  for (const Case& test : {Case{L"", L"k", L"v"}, Case{L"a]b", L"k", L"v"}, Case{L"s", L"", L"v"},
                           Case{L"s", L"a=b", L"v"}, Case{L"s", L"[a", L"v"}, Case{L"s", L";a", L"v"},
                           Case{L"s", L"k", L"v\n[t]"}, Case{L"s\n", L"k", L"v"}}) {
    EXPECT_EQ(profile.set(test.section, test.key, test.value), platform::kErrorInvalidParameter);
  }
  EXPECT_EQ(profile.bytes(), "[s]\nk=1\n");
}

TEST(Profile, WhatThePageCantHoldTurnsTheFileIntoUtf16) {
  Profile profile{std::string("[s]\r\nk=\xCD\xBC\r\n")};
  EXPECT_EQ(profile.set(L"s", L"k2", L"한📐"), 0u);
  EXPECT_EQ(profile.bytes(), utf16(L"[s]\r\nk=图\r\nk2=한📐\r\n"));
  Profile damaged{std::string("[s]\nk=\xCD\n")};
  EXPECT_EQ(damaged.set(L"s", L"k2", L"한"), platform::kErrorNoUnicodeTranslation);
  EXPECT_EQ(damaged.bytes(), "[s]\nk=\xCD\n");
}

TEST(ProfileCalls, StringsDefaultsAndLastError) {
  TemporaryFolder folder;
  const CString file = platform::fromNative(folder / "a.ini");
  EXPECT_EQ(read(L"s", L"k", file, 256, L"none  "), CString(L"none"))
      << "blanks behind a default don't count";
  EXPECT_EQ(GetLastError(), 2u);
  ASSERT_TRUE(platform::writeFile(folder / "a.ini", kSample));
  EXPECT_EQ(read(L"Start Timer", L"SavePath", file), CString(L"C:\\backup"));
  EXPECT_EQ(GetLastError(), 0u);
  EXPECT_EQ(read(L"Start Timer", L"Missing", file), CString(L"-"));
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(read(L"Start Timer", L"SavePath", file, 9), CString(L"C:\\backu"));
  EXPECT_EQ(GetLastError(), 234u);
  EXPECT_EQ(read(L"Start Timer", L"SavePath", file, 1), CString(L""));
  EXPECT_EQ(read(nullptr, nullptr, file), CString(std::wstring(L"Start Timer\0other\0start timer\0", 30)));
  EXPECT_EQ(read(L"other", nullptr, file), CString(std::wstring(L"k\0", 2)));
  EXPECT_EQ(read(nullptr, nullptr, file, 8), CString(L"Start "));
  EXPECT_EQ(GetLastError(), 234u);
  EXPECT_EQ(GetPrivateProfileStringW(L"s", L"k", L"", nullptr, 5, file), 0u);
}

TEST(ProfileCalls, SectionIsCutWithTwoNulls) {
  TemporaryFolder folder;
  const CString file = platform::fromNative(folder / "a.ini");
  wchar_t buffer[2001];
  buffer[2000] = L'#';
  ASSERT_TRUE(platform::writeFile(folder / "a.ini", "[s]\r\na = b\r\n=x\r\n; c\r\na=c\r\n"));
  ASSERT_EQ(GetPrivateProfileSectionW(L"S", buffer, 2000, file), 11u);
  EXPECT_EQ(std::wstring(buffer, 12), std::wstring(L"a=b\0=x\0a=c\0\0", 12));
  EXPECT_EQ(GetLastError(), 0u);

  for (const std::size_t length : {1995u, 1996u, 1997u, 5000u}) {
    // "k=" and the value and two nulls: 1996 characters of value are the most that 2000 can take.
    ASSERT_TRUE(platform::writeFile(folder / "a.ini", "[s]\nk=" + std::string(length, 'v') + "\n"));
    const DWORD count = GetPrivateProfileSectionW(L"s", buffer, 2000, file);
    const bool cut = length > 1996;
    EXPECT_EQ(count, cut ? 1998u : length + 3) << length;
    EXPECT_EQ(GetLastError(), cut ? 234u : 0u) << length;
    EXPECT_EQ(buffer[count], L'\0');
    EXPECT_EQ(buffer[cut ? count + 1 : count - 1], L'\0');
    EXPECT_EQ(buffer[2000], L'#');
  }
  EXPECT_EQ(GetPrivateProfileSectionW(L"t", buffer, 2000, file), 0u);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(buffer[1], L'\0');
  EXPECT_EQ(GetPrivateProfileSectionW(L"s", buffer, 1, file), 0u);
}

TEST(ProfileCalls, Numbers) {
  TemporaryFolder folder;
  const CString file = platform::fromNative(folder / "n.ini");
  ASSERT_TRUE(platform::writeFile(folder / "n.ini", "[s]\na=42x\nb=-5\nc=0x1F\nd=text\ne=99999999999\nf=\n"));
  for (const auto& [key, number] : std::initializer_list<std::pair<const wchar_t*, UINT>>{
           {L"a", 42}, {L"b", ~0u - 4}, {L"c", 31}, {L"d", 0}, {L"e", ~0u}, {L"f", 0}, {L"none", ~0u - 6}})
    EXPECT_EQ(GetPrivateProfileIntW(L"s", key, -7, file), number) << platform::utf8From(key);
}

TEST(ProfileCalls, WritingMakesKeepsAndReports) {
  TemporaryFolder folder;
  const fs::path path = folder / "w.ini";
  const CString file = platform::fromNative(path);
  EXPECT_FALSE(WritePrivateProfileStringW(L"s", L"k", nullptr, file)) << "nothing is made for a removal";
  EXPECT_FALSE(platform::exists(path));
  EXPECT_TRUE(WritePrivateProfileStringW(L"s", L"k", L"图", file));
  EXPECT_EQ(contentOf(path), "[s]\r\nk=\xCD\xBC\r\n");
  ASSERT_TRUE(platform::writeFile(path, utf16(L"")));
  EXPECT_TRUE(WritePrivateProfileStringW(L"s", L"k", L"v", file));
  EXPECT_EQ(contentOf(path), utf16(L"[s]\r\nk=v\r\n"));
  EXPECT_TRUE(WritePrivateProfileStringW(L"s", L"k", nullptr, file));
  EXPECT_TRUE(WritePrivateProfileStringW(L"s", nullptr, nullptr, file));
  EXPECT_EQ(contentOf(path), utf16(L""));
  EXPECT_FALSE(WritePrivateProfileStringW(L"s", L"k", L"v", (file + L"x\\none.ini").GetString()));
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_FALSE(WritePrivateProfileStringW(nullptr, nullptr, nullptr, file));
  EXPECT_FALSE(WritePrivateProfileStringW(L"s", L"k", L"v", platform::fromNative(folder.root())));

  EXPECT_TRUE(WritePrivateProfileStringW(L"s", L"k", L"v", L"bare.ini"));
  EXPECT_TRUE(platform::exists(folder.environment().settingsRoot / "bare.ini"));
  EXPECT_EQ(read(L"s", L"k", L"bare.ini"), CString(L"v"));
}

}  // namespace
