#pragma once
// Values of host variables, read with the type the caller expects.
#include "platform/text/cstring.h"

namespace mek {

// False, with the value untouched, when the host has no variable of that name and type.
bool readTextVariable(const wchar_t* name, CString& value);
bool readIntVariable(const wchar_t* name, int& value);  ///< 16 or 32 bits
bool readRealVariable(const wchar_t* name, double& value);
/// Two coordinates leave the third at 0.
bool readPointVariable(const wchar_t* name, double value[3]);

}  // namespace mek
