#pragma once
// What the layers above share: typed input into buffers of a known size, and the order of object ids.
#include "host/database/objectid.h"
#include "module/core/export.h"
#include "platform/system/windows_names.h"

// The host's prompts of the same names. `size` counts characters, the terminator among them.
MEK_API int IM_EdGetInput(wchar_t* buffer, std::size_t size);
MEK_API int IM_EdGetKword(LPCWSTR prompt, wchar_t* buffer, std::size_t size);
MEK_API int IM_EdGetString(int allowBlanks, LPCWSTR prompt, wchar_t* buffer, std::size_t size);

/// Whether the first stands before the second: by handle as a number, and so in the order of their making.
MEK_API bool IM_pfnCompareObjectId(KvDbObjectId a, KvDbObjectId b);
