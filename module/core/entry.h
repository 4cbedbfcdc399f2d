#pragma once
// What the host calls: the entry function and the library's load and unload.
#include <cstdint>

#include "module/core/export.h"

extern "C" {

/// Messages: 1 start, 2 stop, 3 a drawing was loaded (it is the working one); all others do nothing.
/// `applicationHandle` is only used with message 1. Always 0, also after something inside failed.
MEK_API std::int64_t kvrxEntryPoint(unsigned int message, void* applicationHandle);

/// Forwards to the function of the same name in the host's library.
MEK_API int kvrxGetApiVersion();

/// Library attached (1) or detached (0). Always 1.
MEK_API int MekCoreLibraryMain(void* instance, unsigned int reason);
}
