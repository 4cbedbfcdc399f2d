#pragma once
// Reading and writing numbers in the invariant locale, whatever the user's locale is.
#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Leading white space, a sign, decimal digits; what follows is ignored. No digits: 0. Out of range: the
/// nearest limit of the type.
int parseInt(std::wstring_view text);
std::int64_t parseInt64(std::wstring_view text);

/// Leading white space, a sign, digits with a point, an exponent (`e`, `E`, `d` or `D`); what follows is
/// ignored. Nothing readable: 0. Too large: infinity; too small: 0. Names such as "inf" aren't read.
double parseDouble(std::wstring_view text);
double parseDouble(std::string_view text);

/// Reads the whole of `text` (blanks around it allowed) as one number. False when anything else stands there.
bool parseWhole(std::wstring_view text, double& value);
bool parseWhole(std::wstring_view text, int& value);

/// Shortest text that reads back as the same number ("0.1", "1e+300").
std::string shortest(double value);

}  // namespace platform

/// The names by which the product calls the readers above; null reads as empty.
int _wtoi(const wchar_t* text);
double _wtof(const wchar_t* text);
