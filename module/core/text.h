#pragma once
// Splitting, searching and trimming of text. Positions count characters. Nothing here reports: an answer of 0
// or -1, or the text as it was given, is the failure.
#include <vector>

#include "module/core/export.h"
#include "platform/text/containers.h"

/// Cuts at each occurrence of the separator; the last part is what follows the last one, even when empty. The
/// next search starts one character after the last hit, so overlapping separators are found twice and give an
/// empty part. `out` is emptied first. The number of parts; 0 when text or separator is empty.
MEK_API int IM_SplitString(CString text, CString separator, CStringArray& out);
MEK_API int IM_SplitString(CString text, CString separator, std::vector<CString>& out);
/// Words: tabs become blanks, runs of blanks one, then the cut is at the blank.
MEK_API int IM_SplitString(CString text, CStringArray& out);

MEK_API int IM_SplitStringA(CStringA text, CStringA separator, CStringArrayA& out);
MEK_API int IM_SplitStringA(CStringA text, CStringA separator, std::vector<CStringA>& out);
MEK_API int IM_SplitStringA(CStringA text, CStringArrayA& out);
MEK_API int IM_SplitStringA(CStringA text, char separator, CStringArrayA& out);

/// As IM_SplitString, but a separator at index 0 or directly behind a backslash doesn't cut; only the one
/// character before it counts, whatever stands further left. Backslashes stay in the pieces. After any
/// occurrence the next search starts one character further. `out` is emptied first.
MEK_API int IM_SplitStringESC(CString text, CString separator, CStringArray& out);

/// 1 when an odd number of backslashes stands directly before `index`.
MEK_API int IM_IsStringEscapedAt(CString const& text, int index);
/// The first occurrence from `start` (below 0 counts as 0) that isn't escaped; one at index 0 is accepted
/// untested. -1 if none. With `ignoreCase` both are upper-cased first.
MEK_API int IM_FindString(CString text, CString what, int start, int ignoreCase);
/// The last unescaped occurrence that ends at or before `end`; a negative `end` means the text's length. -1
/// if none.
MEK_API int IM_ReverseFindString(CString text, CString what, int end, int ignoreCase);

/// Removes the given text once, if it stands at that end. A shorter text stays.
MEK_API CString IM_TrimRight(CString text, CString suffix, int ignoreCase);
MEK_API CString IM_TrimLeft(CString text, CString prefix, int ignoreCase);
