#include "platform/files/last_error.h"

#include <cerrno>

namespace {
thread_local DWORD lastError = 0;
}  // namespace

DWORD GetLastError() {
  return lastError;
}

void SetLastError(DWORD error) {
  lastError = error;
}

namespace platform {

DWORD windowsError(const FileStatus& status) {
  if (status) return kErrorSuccess;
  if (status.step == FileStep::TooLarge) return kErrorFileTooLarge;
  static constexpr struct {
    int systemError;
    DWORD number;
  } kNumbers[] = {{ENOTDIR, kErrorPathNotFound}, {EACCES, kErrorAccessDenied},
                  {EPERM, kErrorAccessDenied},   {EROFS, kErrorAccessDenied},
                  {EISDIR, kErrorAccessDenied},  {EEXIST, kErrorAlreadyExists},
                  {ENOSPC, kErrorDiskFull},      {EDQUOT, kErrorDiskFull},
                  {EFBIG, kErrorFileTooLarge},   {EINVAL, kErrorInvalidParameter}};
  for (const auto& entry : kNumbers)
    if (entry.systemError == status.systemError) return entry.number;
  const bool making = status.step == FileStep::Create;
  // What can't be made because something is missing lacks its folder, not itself.
  if (status.systemError == ENOENT) return making ? kErrorPathNotFound : kErrorFileNotFound;
  return making || status.step == FileStep::Write || status.step == FileStep::Flush ? kErrorWriteFault
                                                                                    : kErrorReadFault;
}

}  // namespace platform
