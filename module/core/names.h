#pragma once
// Item labels, free names, and the parts of file names (in the product's path form, with `\`).
#include <vector>

#include "module/core/export.h"
#include "platform/text/cstring.h"

/// Item labels A, B, ..., Z, AA, AB, ... with the letters of `excluded` (either case) left out. A number of 0
/// or less gives an empty text, and so do fewer than two letters to count with. With `upperCase` 0 the label
/// is in lower case.
MEK_API CString IM_FormatNumberToAlphabet(int number, CString excluded, int upperCase);

/// The next item code: digits, lower and upper letters each run in a ring of their own and carry to the left
/// (`A9` gives `B0`, `Z` gives `AA`). A character of another kind ends the work with the code as it stands at
/// that moment. `steps` is how many codes to go on; below 1 gives the code itself.
MEK_API CString IM_GetNextCode(CString code, int steps = 1);

/// The first name of the form prefix + number, counting from `first`, whose number isn't used: used are the
/// decimal numbers behind the prefix (no regard to case) of the existing names.
MEK_API CString IM_GetNewItemName(std::vector<CString> const& existing, CString prefix, int first);

/// The parts of a path.
class MEK_API ImFileName {
 public:
  /// Behind the last `\`; empty if the path ends there, the whole path if it has none.
  static CString GetFileName(CString path);
  /// That name up to its last point; empty if the point is at index 0, the whole name with no point.
  static CString GetFileNameWithoutExt(CString path);
  /// Behind the name's last point; empty if none or nothing follows.
  static CString GetFileExtName(CString path);
  /// Before the last `\`, with it if `keepSeparator`. A `\` at index 0, or none, gives an empty text.
  static CString GetFilePath(CString path, int keepSeparator);
};

/// 1 if a `:` stands after index 0, or the text is longer than 2 and begins with `\\`.
MEK_API int IM_IsFilePathNameAbsolute(CString path);

/// `date` is the whole number yyyymmdd. Tokens: `dddd` `ddd` `dd` `d`, `MMMM` `MMM` `MM` `M`, `yyyy` `yy`
/// `y`; of each kind only the longest that occurs is replaced, everywhere. An empty format is the user's
/// short date format. Names are those of the user's locale.
MEK_API CString IM_GetSystemDateFormat(int date, CString format);
