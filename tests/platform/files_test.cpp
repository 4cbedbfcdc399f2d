#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "tests/platform/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using platform::fromNative;
using platform::toNative;

TEST(Paths, BothWays) {
  TemporaryFolder folder;
  const fs::path drives = folder.environment().drivesRoot;
  struct Case {
    const wchar_t* product;
    fs::path native;
    const wchar_t* back;
  };
  const Case cases[] = {
      {LR"(C:\jobs\shaft.dwg)", drives / "C/jobs/shaft.dwg", LR"(C:\jobs\shaft.dwg)"},
      {LR"(c:/jobs\x\)", drives / "C/jobs/x", LR"(C:\jobs\x)"},
      {LR"(D:)", drives / "D", LR"(D:\)"},
      {LR"(D:\)", drives / "D", LR"(D:\)"},
      {LR"(D:a\b)", drives / "D/a/b", LR"(D:\a\b)"},
      {LR"(\home\x\图.dwg)", "/home/x/图.dwg", LR"(\home\x\图.dwg)"},
      {LR"(\)", "/", LR"(\)"},
      {LR"(work\a.dwg)", "work/a.dwg", LR"(work\a.dwg)"},
      {LR"(.\a)", "a", LR"(a)"},
      {LR"(.)", ".", LR"(.)"},
      {LR"(\\srv\share\a.dwg)", drives / "UNC/srv/share/a.dwg", LR"(\\srv\share\a.dwg)"},
      {LR"(\\?\C:\a)", drives / "C/a", LR"(C:\a)"},
      {LR"(\\?\UNC\srv\share\a)", drives / "UNC/srv/share/a", LR"(\\srv\share\a)"},
      {LR"(C:\..\..\etc\passwd)", drives / "C/etc/passwd", LR"(C:\etc\passwd)"},
      {LR"(C:\a\.\b\..\c)", drives / "C/a/c", LR"(C:\a\c)"},
      {LR"(\\srv\share\..\..\other)", drives / "UNC/srv/share/other", LR"(\\srv\share\other)"},
      {LR"(\..\x)", "/x", LR"(\x)"},
      {LR"(..\..\x)", "../../x", LR"(..\..\x)"},
      {LR"(a\..\..\x)", "../x", LR"(..\x)"},
      {LR"()", "", LR"()"},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(toNative(test.product), test.native) << test.native;
    EXPECT_EQ(fromNative(test.native), CString(test.back)) << test.native;
  }
  EXPECT_EQ(toNative(CString(std::wstring(L"C:\\a\0.png", 9))), drives / "C/a") << "cut at a null character";
  EXPECT_EQ(fromNative(drives / "notes/x"),
            CString((L"\\" + fromNative(drives / "notes/x").str().substr(1)).c_str()))
      << "not a drive: stays a native root";
}

TEST(Paths, NativeNamesThatAreNoTextComeBack) {
  TemporaryFolder folder;
  for (const char* name : {"gbk-\xCD\xBC.dwg", "back\\slash", "half\xE5\x9B", "a:b"}) {
    const fs::path path = folder / name;
    ASSERT_TRUE(platform::writeFile(path, "x"));
    EXPECT_EQ(toNative(fromNative(path)), path) << name;
  }
}

TEST(Paths, PartsAreFoundWithoutRegardToCase) {
  TemporaryFolder folder;
  const fs::path c = folder.environment().drivesRoot / "C";
  fs::create_directories(c / "Work/Ärger");
  fs::create_directories(c / "work");
  ASSERT_TRUE(platform::writeFile(c / "Work/Ärger/Shaft.DWG", "1"));
  EXPECT_EQ(toNative(LR"(C:\WORK\äRGER\shaft.dwg)"), c / "Work/Ärger/Shaft.DWG")
      << "capital letters sort first";
  EXPECT_EQ(toNative(LR"(C:\work\ärger\x)"), c / "work/ärger/x")
      << "an exact part is taken even where it leads nowhere";
  EXPECT_EQ(toNative(LR"(c:\WORK\new\Deep)"), c / "Work/new/Deep");

  fs::create_directories(folder.environment().drivesRoot / "e/bk");
  EXPECT_EQ(toNative(LR"(E:\BK)"), folder.environment().drivesRoot / "e/bk");
}

TEST(Files, AtomicWriteKeepsModeFollowsLinksAndLeavesNothingBehind) {
  TemporaryFolder folder;
  const fs::path target = folder / "a.txt";
  ASSERT_TRUE(platform::writeFile(target, "old"));
  fs::permissions(target, fs::perms(0640));
  fs::create_symlink("a.txt", folder / "link");
  ASSERT_TRUE(platform::writeFile(folder / "link", "new"));
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));
  std::string content;
  ASSERT_TRUE(platform::readFile(target, content));
  EXPECT_EQ(content, "new");

  {
    platform::AtomicFile file;
    ASSERT_TRUE(file.open(target));
    ASSERT_TRUE(file.write(std::string(1 << 20, 'x')));
  }
  ASSERT_TRUE(platform::readFile(target, content));
  EXPECT_EQ(content, "new") << "without commit the target stays";
  const auto found = platform::findFiles(folder.root(), L"*.tmp");
  EXPECT_TRUE(found.empty());

  fs::create_symlink("later.txt", folder / "dangling");
  ASSERT_TRUE(platform::writeFile(folder / "dangling", "x"));
  EXPECT_TRUE(fs::is_regular_file(folder / "later.txt"));
}

TEST(Files, FullDiskLeavesTheOldFileWhole) {
  TemporaryFolder folder;
  const fs::path target = folder / "a.txt";
  ASSERT_TRUE(platform::writeFile(target, "old"));
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  rlimit small = before;
  small.rlim_cur = 64 * 1024;
  std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  const auto whole = platform::writeFile(target, std::string(1 << 20, 'x'));
  platform::AtomicFile streamed;
  auto status = streamed.open(target);
  for (int i = 0; i < 100 && status; ++i) status = streamed.write(std::string(10000, 'y'));
  const auto committed = streamed.commit();
  ::setrlimit(RLIMIT_FSIZE, &before);

  for (const auto& failed : {whole, status, committed}) {
    EXPECT_EQ(failed.step, platform::FileStep::Write);
    EXPECT_EQ(failed.systemError, EFBIG);
  }
  EXPECT_NE(whole.message().find("cannot write " + target.string() + ": "), std::string::npos)
      << whole.message();
  std::string content;
  ASSERT_TRUE(platform::readFile(target, content));
  EXPECT_EQ(content, "old");
  EXPECT_EQ(platform::findFiles(folder.root(), L"*").size(), 5u)
      << "a.txt and four places, no temporary file";
}

TEST(Files, FailuresSayWhatAndWhere) {
  TemporaryFolder folder;
  std::string content = "left over";
  EXPECT_EQ(platform::readFile(folder / "missing", content).systemError, ENOENT);
  EXPECT_EQ(content, "");
  EXPECT_EQ(platform::readFile(folder.root(), content).systemError, EISDIR);
  EXPECT_EQ(platform::writeFile(folder.root(), "x").systemError, EISDIR);
  EXPECT_EQ(platform::writeFile(folder / "no/such/x", "x").step, platform::FileStep::Create);
  ASSERT_TRUE(platform::writeFile(folder / "a", "12345"));
  EXPECT_EQ(platform::readFile(folder / "a", content, 4).step, platform::FileStep::TooLarge);
  EXPECT_TRUE(platform::readFile(folder / "a", content, 5));
  EXPECT_EQ(platform::createFolder(folder / "x/y").systemError, ENOENT) << "one level only";
  EXPECT_TRUE(platform::createFolder(folder / "x"));
  EXPECT_EQ(platform::createFolder(folder / "x").systemError, EEXIST);
  EXPECT_TRUE(platform::createFolders(folder / "x/y/z"));
  EXPECT_TRUE(platform::createFolders(folder / "x/y/z"));
  EXPECT_FALSE(platform::createFolders(folder / "a/b")) << "a file stands in the way";
  EXPECT_FALSE(platform::createFolders(folder / "a"));
  EXPECT_FALSE(platform::deleteFile(folder / "x"));
  EXPECT_EQ(platform::deleteTree("/").systemError, EPERM);
  EXPECT_EQ(platform::deleteTree(L"\\..\\").systemError, EPERM);
  platform::AtomicFile unopened;
  EXPECT_FALSE(unopened.write("x"));
  EXPECT_FALSE(unopened.commit());
  EXPECT_EQ(platform::FileStatus{}.message(), "");
}

TEST(Files, CopyAppendDelete) {
  TemporaryFolder folder;
  ASSERT_TRUE(platform::appendFile(folder / "a", "1"));
  ASSERT_TRUE(platform::appendFile(folder / "a", "2"));
  EXPECT_EQ(platform::fileSize(folder / "a"), 2u);
  EXPECT_FALSE(platform::fileSize(folder.root()));
  fs::permissions(folder / "a", fs::perms(0755));
  ASSERT_TRUE(platform::copyFile(folder / "a", folder / "b", false));
  EXPECT_EQ(fs::status(folder / "b").permissions(), fs::perms(0755));
  ASSERT_TRUE(platform::writeFile(folder / "a", "3"));
  EXPECT_EQ(platform::copyFile(folder / "a", folder / "b", false).systemError, EEXIST);
  std::string content;
  ASSERT_TRUE(platform::readFile(folder / "b", content));
  EXPECT_EQ(content, "12");
  EXPECT_TRUE(platform::copyFile(folder / "a", folder / "b", true));
  EXPECT_TRUE(platform::copyFile(folder / "b", folder / "b", true)) << "onto itself";
  ASSERT_TRUE(platform::readFile(folder / "b", content));
  EXPECT_EQ(content, "3");
  EXPECT_EQ(platform::copyFile(folder / "missing", folder / "c", true).systemError, ENOENT);
  EXPECT_FALSE(platform::exists(folder / "c"));

  fs::create_directories(folder / "tree/sub/deep");
  fs::create_directory_symlink(folder / "data", folder / "tree/link");
  ASSERT_TRUE(platform::writeFile(folder / "data/kept", "x"));
  ASSERT_TRUE(platform::writeFile(folder / "tree/sub/f", "x"));
  EXPECT_TRUE(platform::deleteTree(folder / "tree"));
  EXPECT_FALSE(platform::exists(folder / "tree"));
  EXPECT_TRUE(platform::exists(folder / "data/kept")) << "links are not followed";
  EXPECT_FALSE(platform::deleteTree(folder / "tree"));
  EXPECT_TRUE(platform::deleteTree(folder / "a"));
}

TEST(Files, Patterns) {
  struct Case {
    const wchar_t* pattern;
    const wchar_t* name;
    bool fits;
  };
  for (const Case& test :
       {Case{L"*", L"", true}, Case{L"*.*", L"noext", true}, Case{L"*.dwg", L"A.DWG", true},
        Case{L"*.dwg", L"a.dwgx", false}, Case{L"?.dwg", L"ab.dwg", false}, Case{L"?.dwg", L"图.dwg", true},
        Case{L"a*b*c", L"aXbXbXc", true}, Case{L"a*b*c", L"aXbXcX", false}, Case{L"ärger?", L"ÄRGER1", true},
        Case{L"", L"", true}, Case{L"", L"a", false}, Case{L"**a", L"bca", true}, Case{L"a?", L"a", false}}) {
    EXPECT_EQ(platform::matchesPattern(test.name, test.pattern), test.fits)
        << CString(test.pattern).GetLength() << platform::utf8From(test.pattern) << " "
        << platform::utf8From(test.name);
  }
  EXPECT_FALSE(platform::matchesPattern(std::wstring(2000, L'a'), L"*a*a*a*a*a*a*a*a*a*b"))
      << "no exponential search";
}

std::wstring namesOf(const std::vector<platform::FoundFile>& found) {
  std::wstring text;
  for (const auto& file : found) text += file.name.str() + (file.isFolder ? L"/ " : L" ");
  return text;
}

TEST(Files, FindIsSortedAndKnowsFolders) {
  TemporaryFolder folder;
  const fs::path bk = folder.environment().drivesRoot / "D/bk";
  fs::create_directories(bk / "sub.dwg");
  for (const char* name : {"b.dwg", "A.dwg", "a.DWG", "c.txt", "图.dwg"})
    ASSERT_TRUE(platform::writeFile(bk / name, ""));
  EXPECT_EQ(namesOf(platform::findFiles(LR"(D:\bk\*.dwg)")), L"A.dwg a.DWG b.dwg sub.dwg/ 图.dwg ");
  EXPECT_EQ(namesOf(platform::findFiles(bk, L"*", platform::Dots::Include)),
            L"./ ../ A.dwg a.DWG b.dwg c.txt sub.dwg/ 图.dwg ");
  EXPECT_EQ(namesOf(platform::findFiles(LR"(d:\BK\B.DWG)")), L"b.dwg ")
      << "named without a pattern, in its own spelling";
  EXPECT_EQ(namesOf(platform::findFiles(LR"(D:\bk\none)")), L"");
  EXPECT_EQ(namesOf(platform::findFiles(LR"(D:\bk)")), L"bk/ ");
  EXPECT_TRUE(platform::findFiles(LR"(D:\bk\)").empty());
  fs::create_directories(bk / "empty");
  EXPECT_TRUE(platform::findsAny(LR"(D:\bk\empty\*)")) << "an empty folder is there";
  EXPECT_FALSE(platform::findsAny(LR"(D:\bk\empty\*.dwg)"));
  EXPECT_FALSE(platform::findsAny(LR"(D:\nowhere\*)"));
  EXPECT_FALSE(platform::findsAny(LR"(D:\bk\b.dwg\*)"));
}

}  // namespace
