#pragma once
// Unicode's simple case mappings, the same on every machine and under every locale.
// Table: derived from Unicode 14 character data (one code point to one code point only).

namespace platform {

wchar_t toUpper(wchar_t c);
wchar_t toLower(wchar_t c);
/// The form under which two characters that differ only in case are equal.
wchar_t foldCase(wchar_t c);

}  // namespace platform
