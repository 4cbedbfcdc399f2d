#pragma once
// Names of the platform's own types as the exported signatures spell them.
#include <cstdint>

using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;
using LPCSTR = const char*;
using BOOL = int;
using UINT = unsigned int;

struct tagRECT;
/// A registry branch. Only the two constants below name one.
using HKEY = struct HKEY__*;
