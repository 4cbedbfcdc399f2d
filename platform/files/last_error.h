#pragma once
// The number of the last failure, one for each thread, as the Windows-style calls leave it for their caller.
#include "platform/files/files.h"
#include "platform/text/wintypes.h"

using DWORD = unsigned long;

DWORD GetLastError();
void SetLastError(DWORD error);

namespace platform {

// Numbers as Windows gives them.
inline constexpr DWORD kErrorSuccess = 0;
inline constexpr DWORD kErrorFileNotFound = 2;
inline constexpr DWORD kErrorPathNotFound = 3;
inline constexpr DWORD kErrorAccessDenied = 5;
inline constexpr DWORD kErrorInvalidHandle = 6;
inline constexpr DWORD kErrorWriteFault = 29;
inline constexpr DWORD kErrorReadFault = 30;
inline constexpr DWORD kErrorFileExists = 80;
inline constexpr DWORD kErrorInvalidParameter = 87;
inline constexpr DWORD kErrorDiskFull = 112;
inline constexpr DWORD kErrorModuleNotFound = 126;
inline constexpr DWORD kErrorProcedureNotFound = 127;
inline constexpr DWORD kErrorAlreadyExists = 183;
inline constexpr DWORD kErrorFileTooLarge = 223;
inline constexpr DWORD kErrorMoreData = 234;
inline constexpr DWORD kErrorNoUnicodeTranslation = 1113;

/// The number that stands for a file call's outcome; 0 for success.
DWORD windowsError(const FileStatus& status);

}  // namespace platform
