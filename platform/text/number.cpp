#include "platform/text/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace platform {
namespace {

constexpr bool isBlank(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

template <class View>
std::size_t skipBlanks(View text) {
  std::size_t at = 0;
  while (at < text.size() && isBlank(static_cast<wchar_t>(text[at]))) ++at;
  return at;
}

template <class Int>
Int parseInteger(std::wstring_view text, std::size_t* used) {
  std::size_t at = skipBlanks(text);
  bool negative = false;
  if (at < text.size() && (text[at] == L'-' || text[at] == L'+')) negative = text[at++] == L'-';
  const std::size_t firstDigit = at;
  Int value = 0;
  bool overflow = false;
  for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at) {
    const Int digit = static_cast<Int>(text[at] - L'0');
    overflow = overflow || __builtin_mul_overflow(value, Int{10}, &value) ||
               (negative ? __builtin_sub_overflow(value, digit, &value)
                         : __builtin_add_overflow(value, digit, &value));
  }
  if (used) *used = at == firstDigit ? 0 : at;
  if (overflow) return negative ? std::numeric_limits<Int>::min() : std::numeric_limits<Int>::max();
  return value;
}

/// Copies the part of `text` that has the shape of a number into `narrow`, with the exponent letter made `e`.
template <class View>
std::size_t numberShape(View text, std::string& narrow) {
  std::size_t at = skipBlanks(text);
  auto charAt = [&](std::size_t i) { return i < text.size() ? static_cast<wchar_t>(text[i]) : wchar_t{0}; };
  auto isDigit = [&](std::size_t i) { return charAt(i) >= L'0' && charAt(i) <= L'9'; };
  auto takeDigits = [&] {
    bool any = false;
    for (; isDigit(at); ++at, any = true) narrow += static_cast<char>(charAt(at));
    return any;
  };
  if (charAt(at) == L'-' || charAt(at) == L'+') {
    if (charAt(at) == L'-') narrow += '-';
    ++at;
  }
  bool digits = takeDigits();
  if (charAt(at) == L'.') {
    narrow += '.';
    ++at;
    digits = takeDigits() || digits;
  }
  if (!digits) return 0;
  const wchar_t exponent = charAt(at);
  if (exponent == L'e' || exponent == L'E' || exponent == L'd' || exponent == L'D') {
    const bool isSigned = charAt(at + 1) == L'-' || charAt(at + 1) == L'+';
    if (isDigit(at + (isSigned ? 2 : 1))) {
      narrow += 'e';
      if (isSigned) narrow += static_cast<char>(charAt(at + 1));
      at += isSigned ? 2 : 1;
      takeDigits();
    }
  }
  return at;
}

/// Which way a number left the range of a double: true when its first digit that counts stands behind the
/// point.
bool isBelowOne(const std::string& narrow) {
  const std::string_view all(narrow);
  const std::string_view mantissa = all.substr(0, all.find('e'));
  const std::size_t first = mantissa.find_first_of("123456789");
  if (first == std::string_view::npos) return true;
  std::int64_t exponent = 0;
  if (mantissa.size() < all.size()) {
    std::string_view digits = all.substr(mantissa.size() + 1);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    const auto status = std::from_chars(digits.data(), digits.data() + digits.size(), exponent).ec;
    if (status == std::errc::result_out_of_range) return digits.starts_with('-');
  }
  const auto lead = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size())) -
                    static_cast<std::int64_t>(first);
  return exponent < -lead;
}

double readShape(const std::string& narrow) {
  double value = 0;
  auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
  if (error == std::errc::result_out_of_range) {
    // from_chars leaves the value alone.
    const double limit = isBelowOne(narrow) ? 0.0 : std::numeric_limits<double>::infinity();
    return narrow.front() == '-' ? -limit : limit;
  }
  return error == std::errc() ? value : 0.0;
}

template <class View>
double parseReal(View text, std::size_t* used) {
  std::string narrow;
  const std::size_t length = numberShape(text, narrow);
  if (used) *used = length;
  return length == 0 ? 0.0 : readShape(narrow);
}

bool onlyBlanksFrom(std::wstring_view text, std::size_t at) {
  for (; at < text.size(); ++at)
    if (!isBlank(text[at])) return false;
  return true;
}

}  // namespace

int parseInt(std::wstring_view text) {
  return parseInteger<int>(text, nullptr);
}
std::int64_t parseInt64(std::wstring_view text) {
  return parseInteger<std::int64_t>(text, nullptr);
}
double parseDouble(std::wstring_view text) {
  return parseReal(text, nullptr);
}
double parseDouble(std::string_view text) {
  return parseReal(text, nullptr);
}

bool parseWhole(std::wstring_view text, double& value) {
  std::size_t used = 0;
  const double number = parseReal(text, &used);
  if (used == 0 || !onlyBlanksFrom(text, used)) return false;
  value = number;
  return true;
}

bool parseWhole(std::wstring_view text, int& value) {
  std::size_t used = 0;
  const std::int64_t number = parseInteger<std::int64_t>(text, &used);
  if (used == 0 || !onlyBlanksFrom(text, used)) return false;
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) return false;
  value = static_cast<int>(number);
  return true;
}

std::string shortest(double value) {
  char buffer[40];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return error == std::errc() ? std::string(buffer, end) : std::string();
}

}  // namespace platform

int _wtoi(const wchar_t* text) {
  return text ? platform::parseInt(text) : 0;
}
double _wtof(const wchar_t* text) {
  return text ? platform::parseDouble(std::wstring_view(text)) : 0.0;
}
