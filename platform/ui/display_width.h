#pragma once
// How many columns of a terminal a text takes, the same under every locale. Wide: the East Asian wide and
// full-width blocks and the pictographs of Unicode 14; none: combining marks, joiners, variation selectors.
#include <string>
#include <string_view>
#include <vector>

namespace platform {

int displayWidth(wchar_t c);  ///< 0, 1 or 2
int displayWidth(std::wstring_view text);

/// The text as it may safely be printed: control characters and changes of direction become blanks.
std::wstring printable(std::wstring_view text);

/// Filled up with blanks to `width` columns; a longer text stays.
std::wstring padded(std::wstring_view text, int width);

/// Lines of at most `width` columns: cut at line ends, then at blanks, then where a wide character allows it.
std::vector<std::wstring> wrapped(std::wstring_view text, int width);

}  // namespace platform
