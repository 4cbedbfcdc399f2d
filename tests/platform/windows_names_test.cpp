#include "platform/system/windows_names.h"

#include <gtest/gtest.h>

#include "platform/system/services.h"
#include "platform/system/timers.h"
#include "tests/platform/temporary_folder.h"

namespace {

using namespace std::chrono_literals;

TEST(WindowsNames, TimeAndCounters) {
  platform::SystemServices services;
  services.utcNow = [] { return platform::UtcTime{2026, 11, 13, 5, 17, 30, 5, 7}; };
  services.steadyNow = [] { return std::chrono::milliseconds((std::int64_t{1} << 32) + 9); };
  const platform::ScopedSystemServices scope(services);
  SYSTEMTIME time{};
  GetSystemTime(&time);
  EXPECT_EQ(time.wYear, 2026);
  EXPECT_EQ(time.wDayOfWeek, 5);
  EXPECT_EQ(time.wHour, 17);
  EXPECT_EQ(time.wMilliseconds, 7);
  EXPECT_EQ(GetTickCount(), 9u);
  GUID guid{};
  EXPECT_EQ(CoCreateGuid(&guid), 0);
  EXPECT_NE(guid, GUID{});
}

TEST(WindowsNames, FoldersIntoBuffers) {
  TemporaryFolder folder;
  folder.environment().drivesRoot = folder.root();
  folder.environment().temporaryFolder = folder / "T/tmp";
  folder.environment().sharedDocuments = folder / "P/docs";
  wchar_t buffer[kPathLength] = L"#";
  EXPECT_EQ(GetTempPathW(7, buffer), 8u) << "the size that it takes";
  EXPECT_EQ(GetTempPathW(8, buffer), 7u);
  EXPECT_EQ(CString(buffer), CString(L"T:\\tmp\\"));
  EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, buffer, CSIDL_COMMON_DOCUMENTS, 0));
  EXPECT_EQ(CString(buffer), CString(L"P:\\docs"));
  EXPECT_FALSE(platform::exists(folder / "P/docs"));
  EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, buffer, CSIDL_COMMON_DOCUMENTS, 1));
  EXPECT_TRUE(platform::isFolder(folder / "P/docs"));
  EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, buffer, 5, 0));
  EXPECT_EQ(CString(buffer), CString(L""));
  folder.environment().sharedDocuments = folder / "P" / std::string(250, 'x') / "yyyyyyy";
  EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, buffer, CSIDL_COMMON_DOCUMENTS, 0))
      << "longer than its buffer";
}

TEST(WindowsNames, FilesAndLastError) {
  TemporaryFolder folder;
  const CString root = platform::fromNative(folder.root());
  EXPECT_TRUE(CreateDirectoryW(root + L"\\a", nullptr));
  EXPECT_FALSE(CreateDirectoryW(root + L"\\A", nullptr));
  EXPECT_EQ(GetLastError(), 183u);
  EXPECT_FALSE(CreateDirectoryW(root + L"\\x\\y", nullptr));
  EXPECT_EQ(GetLastError(), 3u);
  ASSERT_TRUE(platform::writeFile(folder / "f", "1"));
  EXPECT_TRUE(CopyFileW(root + L"\\f", root + L"\\g", 1));
  EXPECT_FALSE(CopyFileW(root + L"\\f", root + L"\\g", 1));
  EXPECT_EQ(GetLastError(), 80u);
  EXPECT_TRUE(CopyFileW(root + L"\\f", root + L"\\g", 0));
  EXPECT_EQ(GetLastError(), 0u);
  EXPECT_FALSE(CopyFileW(root + L"\\none", root + L"\\g", 0));
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_TRUE(DeleteFileW(root + L"\\G"));
  EXPECT_FALSE(DeleteFileW(root + L"\\G"));
}

struct Fired {
  HWND window;
  UINT message;
  UINT_PTR timer;
};
std::vector<Fired>& fired() {
  static std::vector<Fired> list;
  return list;
}

TEST(WindowsNames, Timers) {
  TemporaryFolder folder;
  const TIMERPROC callback = [](HWND window, UINT message, UINT_PTR timer, DWORD) {
    fired().push_back({window, message, timer});
  };
  EXPECT_EQ(SetTimer(nullptr, 10001, 60000, callback), 0u) << "no queue";
  std::chrono::milliseconds now = 0ms;
  platform::TimerQueue queue([&] { return now; });
  folder.environment().timers = &queue;
  const UINT_PTR own = SetTimer(FindWindowW(nullptr, L"Acad.exe"), 10001, 30 * 60000, callback);
  EXPECT_NE(own, 0u);
  EXPECT_NE(own, 10001u) << "a thread's timer gets an id of its own";
  now = 30min - 1ms;
  EXPECT_EQ(queue.runDue(), 0);
  now = 30min;
  EXPECT_EQ(queue.runDue(), 1);
  ASSERT_EQ(fired().size(), 1u);
  EXPECT_EQ(fired()[0].message, WM_TIMER);
  EXPECT_EQ(fired()[0].timer, own);
  EXPECT_TRUE(KillTimer(nullptr, own));
  EXPECT_FALSE(KillTimer(nullptr, own));
}

}  // namespace
