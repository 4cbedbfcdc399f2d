#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <set>
#include <thread>

#include "platform/system/debug_output.h"
#include "platform/system/dynamic_library.h"
#include "platform/system/folders.h"
#include "platform/system/guid.h"
#include "platform/system/services.h"
#include "platform/system/shell.h"
#include "platform/system/timers.h"
#include "tests/platform/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using platform::DynamicLibrary;
using platform::ShellRequest;
using platform::TimerQueue;

void ownFunction() {}

class Libraries : public ::testing::Test {
 protected:
  Libraries() {
    fs::create_directories(first_);
    fs::create_directories(second_);
    folder_.environment().modulePath = {first_, second_};
  }
  TemporaryFolder folder_;
  const fs::path plugin_ = KORVANE_TEST_PLUGIN;
  const fs::path first_ = folder_ / "modules", second_ = folder_ / "more";
};

TEST_F(Libraries, BareNamesAreFoundInTheModuleFoldersOnly) {
  const fs::path before = fs::current_path();
  fs::current_path(plugin_.parent_path());
  std::string error;
  EXPECT_FALSE(DynamicLibrary::load(L"QX_TestPlugin.kvx", &error)) << "it stands in the current folder";
  EXPECT_EQ(GetLastError(), 126u);
  EXPECT_NE(error.find("QX_TestPlugin.kvx"), std::string::npos);
  EXPECT_FALSE(platform::findLibrary(L".\\QX_TestPlugin.kvx"));
  EXPECT_FALSE(platform::findLibrary(L"..\\plugin\\QX_TestPlugin.kvx"));
  fs::current_path(before);
  EXPECT_FALSE(platform::findLibrary(L""));
  EXPECT_FALSE(platform::findLibrary(L".."));

  fs::copy_file(plugin_, second_ / "QX_TestPlugin.kvx");
  EXPECT_EQ(platform::findLibrary(L"qx_testplugin.KVX"), second_ / "QX_TestPlugin.kvx");
  fs::copy_file(plugin_, first_ / "QX_TestPlugin.kvx");
  EXPECT_EQ(platform::findLibrary(L"QX_TestPlugin.kvx"), first_ / "QX_TestPlugin.kvx")
      << "folders count in order";
  EXPECT_EQ(platform::findLibrary(platform::fromNative(plugin_)), plugin_);
  folder_.environment().modulePath = {"relative"};
  EXPECT_FALSE(platform::findLibrary(L"QX_TestPlugin.kvx"));
}

TEST_F(Libraries, LoadCallAndLetGo) {
  fs::copy_file(plugin_, first_ / "a.kvx");
  DynamicLibrary library = DynamicLibrary::load(L"a.kvx");
  ASSERT_TRUE(library);
  const auto answer = library.function<int(int)>("pluginAnswer");
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(41), 42);
  EXPECT_EQ(library.symbol("none"), nullptr);
  EXPECT_EQ(library.path(), first_ / "a.kvx");
  const auto* address = reinterpret_cast<const void*>(answer);
  EXPECT_EQ(platform::moduleFileOf(address), platform::fromNative(first_ / "a.kvx"));

  DynamicLibrary again = DynamicLibrary::load(L"A.KVX");
  library = DynamicLibrary();
  EXPECT_EQ(answer(1), 2) << "the second holder keeps it in memory";
  again = DynamicLibrary();
  EXPECT_EQ(platform::moduleFileOf(address), CString()) << "now it is gone";
}

TEST_F(Libraries, BrokenFilesSayWhy) {
  std::ofstream(first_ / "broken.kvx") << "not a library";
  fs::create_directories(first_ / "folder.kvx");
  std::string error;
  EXPECT_FALSE(DynamicLibrary::load(L"broken.kvx", &error));
  EXPECT_EQ(GetLastError(), 193u);
  EXPECT_NE(error.find((first_ / "broken.kvx").string() + ": "), std::string::npos) << error;
  EXPECT_FALSE(DynamicLibrary::load(L"folder.kvx", &error));
  EXPECT_EQ(GetLastError(), 126u);
}

TEST_F(Libraries, WindowsNames) {
  fs::copy_file(plugin_, first_ / "w.kvx");
  HMODULE module = LoadLibraryW(L"w.kvx");
  ASSERT_NE(module, nullptr);
  EXPECT_NE(GetProcAddress(module, "pluginAnswer"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "other"), nullptr);
  EXPECT_EQ(GetLastError(), 127u);
  const CString expected = platform::fromNative(first_ / "w.kvx");
  wchar_t buffer[260];
  ASSERT_EQ(GetModuleFileNameW(module, buffer, 260), static_cast<DWORD>(expected.GetLength()));
  EXPECT_EQ(CString(buffer), expected);
  EXPECT_EQ(GetModuleFileNameW(module, buffer, 5), 5u);
  EXPECT_EQ(GetLastError(), 122u);
  EXPECT_EQ(CString(buffer), expected.Left(4));
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_FALSE(FreeLibrary(nullptr));
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
  EXPECT_GT(GetModuleFileNameW(nullptr, buffer, 260), 0u);
  EXPECT_EQ(platform::moduleFileOf(reinterpret_cast<const void*>(&ownFunction)), CString(buffer));
}

TEST(Timers, FireInOrderAndOncePerPass) {
  TimerQueue::Time now = 0ms;
  TimerQueue queue([&] { return now; });
  std::vector<TimerQueue::Id> fired;
  const auto note = [&](TimerQueue::Id id) { fired.push_back(id); };
  EXPECT_FALSE(queue.nextDue());
  EXPECT_EQ(queue.set(7, 100ms, note), 7u);
  EXPECT_EQ(queue.set(3, 100ms, note), 3u);
  const auto own = queue.set(50ms, note);
  EXPECT_GE(own, TimerQueue::kFirstFree);
  EXPECT_EQ(queue.nextDue(), 50ms);
  now = 49ms;
  EXPECT_EQ(queue.runDue(), 0);
  now = 100ms;
  EXPECT_EQ(queue.runDue(), 3);
  EXPECT_EQ(fired, (std::vector<TimerQueue::Id>{own, 3, 7}));
  now = 1000ms;
  EXPECT_EQ(queue.runDue(), 3) << "missed periods fire once";
  EXPECT_EQ(queue.nextDue(), 1050ms);
  EXPECT_TRUE(queue.kill(own));
  EXPECT_FALSE(queue.kill(own));
  EXPECT_EQ(queue.set(3, 500ms, note), 3u) << "replaced";
  EXPECT_EQ(queue.nextDue(), 1100ms);
  now = 1100ms;
  EXPECT_EQ(queue.runDue(), 1);
}

TEST(Timers, CallbacksMayKillSetAndRunTheQueue) {
  TimerQueue::Time now = 0ms;
  TimerQueue queue([&] { return now; });
  std::string log;
  queue.set(1, 10ms, [&](TimerQueue::Id id) {
    log += 'a';
    queue.kill(id);
    queue.kill(2);
    queue.set(4, 10ms, [&](TimerQueue::Id) { log += 'd'; });
  });
  queue.set(2, 10ms, [&](TimerQueue::Id) { log += 'b'; });
  queue.set(3, 10ms, [&](TimerQueue::Id) {
    log += '(';
    now += 100ms;
    queue.runDue();
    log += ')';
  });
  now = 10ms;
  EXPECT_EQ(queue.runDue(), 2);
  EXPECT_EQ(log, "a(d)") << "inside its own callback a timer doesn't fire again";
  // Replaced by itself while it runs: the new timer isn't the running one.
  TimerQueue second([&] { return now; });
  int count = 0;
  second.set(1, 10ms, [&](TimerQueue::Id id) { second.set(id, 20ms, [&](TimerQueue::Id) { ++count; }); });
  now += 10ms;
  EXPECT_EQ(second.runDue(), 1);
  now += 20ms;
  EXPECT_EQ(second.runDue(), 1);
  EXPECT_EQ(count, 1);
}

TEST(Timers, PeriodsAreHeldToTheRange) {
  TimerQueue queue([] { return 0ms; });
  queue.set(1, 0ms, {});
  EXPECT_EQ(queue.nextDue(), TimerQueue::kShortest);
  EXPECT_EQ(queue.runDue(10ms), 1) << "a timer without a callback";
  queue.kill(1);
  queue.set(1, std::chrono::hours(24 * 365), {});
  EXPECT_EQ(queue.nextDue(), TimerQueue::kLongest);
}

TEST(Clock, UniversalTime) {
  struct Case {
    std::int64_t seconds;
    platform::UtcTime time;
  };
  for (const Case& test :
       {Case{0, {1970, 1, 1, 4, 0, 0, 0, 250}}, Case{951827696, {2000, 2, 29, 2, 12, 34, 56, 250}},
        Case{1794591005, {2026, 11, 13, 5, 17, 30, 5, 250}}, Case{-1, {1969, 12, 31, 3, 23, 59, 59, 250}}})
    EXPECT_EQ(platform::utcFromUnix(std::chrono::seconds(test.seconds) + 250ms), test.time) << test.seconds;
}

TEST(Clock, ServicesReplaceTheMachine) {
  platform::SystemServices services;
  services.utcNow = [] { return platform::UtcTime{2026, 11, 13, 5, 17, 30, 5, 0}; };
  services.steadyNow = [] { return std::chrono::milliseconds((std::int64_t{1} << 32) + 5); };
  services.counter = [] { return std::int64_t{99}; };
  std::wstring seen;
  services.debugOutput = [&](std::wstring_view text) { seen = text; };
  {
    const platform::ScopedSystemServices scope(services);
    EXPECT_EQ(platform::utcNow().hour, 17);
    EXPECT_EQ(platform::tickMilliseconds(), 5u);
    EXPECT_EQ(platform::highResolutionCounter(), 99);
    platform::debugOutput(L"图");
    EXPECT_EQ(seen, L"图");
  }
  EXPECT_NE(platform::utcNow().year, 1970);
  const auto first = platform::highResolutionCounter();
  std::this_thread::sleep_for(2ms);
  EXPECT_GE(platform::highResolutionCounter() - first, platform::highResolutionFrequency() / 1000);
}

TEST(Dates, Pictures) {
  struct Case {
    const wchar_t *format, *picture;
  };
  for (const Case& test :
       {Case{L"%Y年%m月%d日", L"yyyy年MM月dd日"}, Case{L"%d.%m.%Y", L"dd.MM.yyyy"},
        Case{L"%-d/%-m-%y", L"d/M-yy"}, Case{L"%e. %B %Y, %A", L"d. MMMM yyyy, dddd"},
        Case{L"%a %b %Ey%Od", L"ddd MMM yydd"}, Case{L"%D|%F|%%|%Q|%", L"MM/dd/yy|yyyy-MM-dd|%||"}})
    EXPECT_EQ(platform::datePicture(test.format), CString(test.picture));
}

TEST(Dates, NamesOfTheUser) {
  for (const char* locale : {"C", "C.UTF-8", "xx_NONE.UTF-8"}) {
    const platform::DateNames names = platform::dateNamesOfLocale(locale);
    EXPECT_EQ(names.shortFormat, CString(L"yyyy-M-d")) << locale;
    EXPECT_EQ(names.longDays[0], CString(L"Sunday"));
    EXPECT_EQ(names.shortDays[6], CString(L"Sat"));
    EXPECT_EQ(names.longMonths[11], CString(L"December"));
    EXPECT_EQ(names.shortMonths[0], CString(L"Jan"));
  }
  platform::SystemServices services;
  services.dates = platform::DateNames{L"d.M.yy", {}, {}, {}, {}};
  const platform::ScopedSystemServices scope(services);
  EXPECT_EQ(platform::userDateNames().shortFormat, CString(L"d.M.yy"));
}

TEST(Guid, TextAndUniqueness) {
  const auto guid = platform::guidFromText(L"C791997C-dcae-4d74-896A-DD68E361E2B2");
  ASSERT_TRUE(guid);
  EXPECT_EQ(guid->data1, 0xC791997Cu);
  EXPECT_EQ(platform::guidText(*guid), CString(L"{C791997C-DCAE-4D74-896A-DD68E361E2B2}"));
  EXPECT_EQ(platform::guidFromText(platform::guidText(*guid).view()), guid);
  for (const wchar_t* text :
       {L"", L"{}", L"{C791997C-dcae-4d74-896A-DD68E361E2B2", L"C791997Cxdcae-4d74-896A-DD68E361E2B2",
        L"C791997C-dcae-4d74-896A-DD68E361E2BG"})
    EXPECT_FALSE(platform::guidFromText(text));
  std::set<platform::Guid> seen;
  for (int i = 0; i < 1000; ++i) {
    const auto fresh = platform::newGuid();
    EXPECT_EQ(fresh.data3 >> 12, 4);
    EXPECT_EQ(fresh.data4[0] >> 6, 2);
    seen.insert(fresh);
  }
  EXPECT_EQ(seen.size(), 1000u);
}

TEST(Folders, AsTheProductSpellsThem) {
  TemporaryFolder folder;
  folder.environment().drivesRoot = "/drives";
  folder.environment().temporaryFolder = "/drives/C/tmp/";
  EXPECT_EQ(platform::temporaryFolder(), CString(L"C:\\tmp"));
  EXPECT_EQ(platform::sharedDocuments(), platform::userDataFolder());
  folder.environment().sharedDocuments = "/srv/docs";
  EXPECT_EQ(platform::sharedDocuments(), CString(L"\\srv\\docs"));
}

TEST(Shell, WhatACallMeans) {
  struct Case {
    const wchar_t *verb, *file, *parameters;
    ShellRequest::Kind kind;
    const wchar_t* target;
  };
  using Kind = ShellRequest::Kind;
  for (const Case& test : {
           Case{L"open", L"rundll32.exe", L"url.dll,FileProtocolHandler https://a.example/", Kind::Address,
                L"https://a.example/"},
           Case{L"open", L"notepad.exe", L"C:\\tmp\\cr.txt", Kind::File, L"C:\\tmp\\cr.txt"},
           Case{nullptr, L"NOTEPAD.EXE", L" \"C:\\a b\\cr.txt\" ", Kind::File, L"C:\\a b\\cr.txt"},
           Case{L"OPEN", L"http://x/", nullptr, Kind::Address, L"http://x/"},
           Case{L"open", L"a.pdf", nullptr, Kind::File, L"a.pdf"},
           Case{L"print", L"a.pdf", nullptr, Kind::None, L""},
           Case{L"open", L"rundll32.exe", L"shell32.dll,Control_RunDLL", Kind::None, L""},
           Case{L"open", nullptr, nullptr, Kind::None, L""},
       }) {
    const ShellRequest request = platform::shellRequest(test.verb, test.file, test.parameters);
    EXPECT_EQ(request.kind, test.kind);
    EXPECT_EQ(request.target, CString(test.target));
  }
}

class Desktop : public ::testing::Test {
 protected:
  Desktop() {
    const char* before = std::getenv("DISPLAY");
    if (before) display_ = before;
    ::setenv("DISPLAY", ":99", 1);
    std::ofstream(opener_) << "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > '" << result_.string()
                           << ".part'\nmv '" << result_.string() << ".part' '" << result_.string() << "'\n";
    fs::permissions(opener_, fs::perms(0755));
  }
  ~Desktop() override {
    if (display_.empty())
      ::unsetenv("DISPLAY");
    else
      ::setenv("DISPLAY", display_.c_str(), 1);
  }
  std::string opened() {
    std::string content;
    for (int i = 0; i < 500 && !platform::exists(result_); ++i) std::this_thread::sleep_for(10ms);
    platform::readFile(result_, content);
    fs::remove(result_);
    return content;
  }
  TemporaryFolder folder_;
  const fs::path opener_ = folder_ / "opener", result_ = folder_ / "result";
  std::string display_;
};

TEST_F(Desktop, TheTargetIsOneArgumentAndNeverAShellsText) {
  const CString address(L"https://a.example/?q=$(touch x);`y`&z=图 'q'");
  EXPECT_EQ(platform::openOnDesktop({ShellRequest::Kind::Address, address}, opener_), platform::kShellDone);
  EXPECT_EQ(opened(), "1|" + platform::utf8From(address));
  const fs::path file = folder_ / "-a b;.txt";
  ASSERT_TRUE(platform::writeFile(file, ""));
  EXPECT_EQ(platform::openOnDesktop({ShellRequest::Kind::File, platform::fromNative(file)}, opener_),
            platform::kShellDone);
  EXPECT_EQ(opened(), "1|" + file.string());
}

TEST_F(Desktop, Failures) {
  const ShellRequest address{ShellRequest::Kind::Address, L"https://a.example/"};
  EXPECT_EQ(platform::openOnDesktop(address, folder_ / "none"), platform::kShellNoProgram);
  EXPECT_EQ(platform::openOnDesktop(address, folder_.root()), platform::kShellFailed);
  EXPECT_EQ(platform::openOnDesktop({ShellRequest::Kind::File, L"C:\\none"}, opener_),
            platform::kShellNotFound);
  EXPECT_EQ(platform::openOnDesktop({}, opener_), platform::kShellNotFound);
  for (const wchar_t* bad : {L"file:///etc/passwd", L"javascript:x", L"--help", L"https://"})
    EXPECT_EQ(platform::openOnDesktop({ShellRequest::Kind::Address, bad}, opener_),
              platform::kShellNoProgram);
  ::unsetenv("DISPLAY");
  EXPECT_EQ(platform::openOnDesktop(address, opener_), platform::kShellNoProgram) << "no desktop";
  EXPECT_FALSE(platform::exists(result_));
}

}  // namespace
