#pragma once
// Values of host variables, read with the type the caller expects.
#include "platform/text/cstring.h"

namespace mek {

/// False when the host doesn't answer with a text.
bool readTextVariable(const wchar_t* name, CString& value);

}  // namespace mek
