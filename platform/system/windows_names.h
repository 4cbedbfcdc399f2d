#pragma once
// Calls by the names that the product uses, thin over the rest of the platform. Answers and last errors are
// as Windows gives them.
#include <cstdint>

#include "platform/files/last_error.h"
#include "platform/system/guid.h"
#include "platform/text/wintypes.h"

/// A window that owns a dialog or a timer. Without a desktop all of them are null.
using HWND = struct HWND__*;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using TIMERPROC = void (*)(HWND window, UINT message, UINT_PTR timer, DWORD tick);

struct SYSTEMTIME {
  std::uint16_t wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

using GUID = platform::Guid;

inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr int CSIDL_APPDATA = 26;
inline constexpr int CSIDL_COMMON_DOCUMENTS = 46;
inline constexpr DWORD kPathLength = 260;  ///< characters of a path buffer, terminator included

/// Universal time.
void GetSystemTime(SYSTEMTIME* time);
/// Milliseconds since some moment, wrapping after 49.7 days.
std::uint32_t GetTickCount();
BOOL QueryPerformanceCounter(std::int64_t* count);
BOOL QueryPerformanceFrequency(std::int64_t* countsPerSecond);

/// 0 always.
long CoCreateGuid(GUID* guid);

/// The temporary folder with a `\` at its end. Answers its length; where `size` is too small, the size that
/// it takes.
DWORD GetTempPathW(DWORD size, LPWSTR buffer);
/// Folder 46 (documents of all users) or 26 (the user's settings) into a buffer of 260 characters; 0 and an
/// empty text for other numbers and paths that don't fit. With `create`, a missing folder is made.
BOOL SHGetSpecialFolderPathW(HWND owner, LPWSTR path, int folder, BOOL create);

/// One level. `security` is ignored.
BOOL CreateDirectoryW(LPCWSTR path, void* security);
/// With `failIfExists`, an existing target gives 0 and error 80.
BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists);
BOOL DeleteFileW(LPCWSTR path);

/// A main-thread timer of the current environment. Without a window the id is ignored and a new one made, as
/// for a thread's own timer. 0 when there are no timers.
UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC callback);
BOOL KillTimer(HWND window, UINT_PTR id);
/// Null: no window of ours has a title that could be looked for.
HWND FindWindowW(LPCWSTR className, LPCWSTR title);

void OutputDebugStringW(LPCWSTR text);
