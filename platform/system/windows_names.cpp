#include "platform/system/windows_names.h"

#include <algorithm>
#include <cerrno>

#include "platform/env/environment.h"
#include "platform/system/clock.h"
#include "platform/system/debug_output.h"
#include "platform/system/folders.h"
#include "platform/system/timers.h"

namespace {

BOOL answer(const platform::FileStatus& status) {
  SetLastError(platform::windowsError(status));
  return status ? 1 : 0;
}

}  // namespace

void GetSystemTime(SYSTEMTIME* time) {
  const platform::UtcTime now = platform::utcNow();
  const auto word = [](int value) { return static_cast<std::uint16_t>(value); };
  *time = {word(now.year), word(now.month),  word(now.dayOfWeek), word(now.day),
           word(now.hour), word(now.minute), word(now.second),    word(now.millisecond)};
}

std::uint32_t GetTickCount() {
  return platform::tickMilliseconds();
}

BOOL QueryPerformanceCounter(std::int64_t* count) {
  *count = platform::highResolutionCounter();
  return 1;
}

BOOL QueryPerformanceFrequency(std::int64_t* countsPerSecond) {
  *countsPerSecond = platform::highResolutionFrequency();
  return 1;
}

long CoCreateGuid(GUID* guid) {
  *guid = platform::newGuid();
  return 0;
}

DWORD GetTempPathW(DWORD size, LPWSTR buffer) {
  CString folder = platform::temporaryFolder();
  if (!folder.view().ends_with(L'\\')) folder.AppendChar(L'\\');
  const auto length = static_cast<DWORD>(folder.GetLength());
  if (!buffer || size <= length) return length + 1;
  std::copy_n(folder.GetString(), length + 1, buffer);
  return length;
}

BOOL SHGetSpecialFolderPathW(HWND, LPWSTR path, int folder, BOOL create) {
  CString found;
  if (folder == CSIDL_COMMON_DOCUMENTS) found = platform::sharedDocuments();
  if (folder == CSIDL_APPDATA) found = platform::userSettingsFolder();
  if (static_cast<DWORD>(found.GetLength()) >= kPathLength) found.Empty();
  std::copy_n(found.GetString(), found.GetLength() + 1, path);
  if (found.IsEmpty()) return 0;
  return create ? answer(platform::createFolders(found)) : 1;
}

BOOL CreateDirectoryW(LPCWSTR path, void*) {
  return answer(platform::createFolder(path));
}

BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  const platform::FileStatus status = platform::copyFile(from, to, failIfExists == 0);
  answer(status);
  if (status.systemError == EEXIST) SetLastError(platform::kErrorFileExists);
  return status ? 1 : 0;
}

BOOL DeleteFileW(LPCWSTR path) {
  return answer(platform::deleteFile(path));
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC callback) {
  platform::TimerQueue* timers = platform::Environment::current().timers;
  if (!timers) return 0;
  return timers->set(window ? id : 0, std::chrono::milliseconds(milliseconds),
                     [window, callback](UINT_PTR timer) {
                       if (callback) callback(window, WM_TIMER, timer, GetTickCount());
                     });
}

BOOL KillTimer(HWND, UINT_PTR id) {
  platform::TimerQueue* timers = platform::Environment::current().timers;
  return timers && timers->kill(id) ? 1 : 0;
}

HWND FindWindowW(LPCWSTR, LPCWSTR) {
  return nullptr;
}

void OutputDebugStringW(LPCWSTR text) {
  platform::debugOutput(text ? text : L"");
}
