#pragma once
// Wide and 8-bit text, and the stored form in which characters that a code page lacks are escaped.
// Code page 0 is the system's (936 unless the host says otherwise).
#include "module/core/export.h"
#include "platform/text/cstring.h"

/// Bytes without a meaning become U+FFFD.
MEK_API CString IM_CStringA2W(CStringA text, unsigned int codePage);
/// Characters that the page lacks become `?`.
MEK_API CStringA IM_CStringW2A(CString text, unsigned int codePage);

/// Turns a stored text back: every `\U+XXXX` (four hexadecimal digits) becomes that character, two that make
/// a surrogate pair become one. With `holdsBytes` the characters up to U+00FF are bytes of the code page and
/// are decoded first; without it the text is wide already and they stay.
MEK_API CString IM_ReadString(CString const& text, unsigned int codePage, unsigned int holdsBytes = 0);
/// The reverse: characters that the code page lacks are written as `\U+%04X`, those beyond the basic plane as
/// the two halves of their surrogate pair.
MEK_API CString IM_WriteString(CString const& text, unsigned int codePage = 0);
