#pragma once
// Plain decimal numbers, read fast and exactly.
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mek {

/// The value of digits with at most one point and nothing else. False when other characters stand there, when
/// there is no digit, or when there are more than fifteen.
template <class Ch>
bool exactDecimal(std::basic_string_view<Ch> text, double& value) {
  // Up to fifteen digits make an integer that a double holds exactly, as it does these powers of ten: the
  // quotient is then the nearest double to the decimal number.
  constexpr std::size_t kExactDigits = 15;
  constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  if (text.size() > kExactDigits + 1) return false;
  std::int64_t mantissa = 0;
  std::size_t digits = 0, decimals = 0;
  bool point = false;
  for (const Ch c : text) {
    if (c == Ch('.') && !point) {
      point = true;
      continue;
    }
    if (c < Ch('0') || c > Ch('9')) return false;
    mantissa = mantissa * 10 + (c - Ch('0'));
    ++digits;
    decimals += point;
  }
  if (digits == 0 || digits > kExactDigits) return false;
  value = static_cast<double>(mantissa) / kPowersOfTen[decimals];
  return true;
}

}  // namespace mek
