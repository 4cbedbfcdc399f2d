#pragma once
// Lengths in files: whole thousandths of a millimetre, written fast.
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace kvgr {

/// Coordinates beyond this lie outside every page; they are brought here so that numbers stay whole.
inline constexpr double kFarthest = 1e6;  // mm

inline std::int64_t microns(double millimetres) {
  const double clamped = millimetres > kFarthest    ? kFarthest
                         : millimetres < -kFarthest ? -kFarthest
                                                    : millimetres;
  return std::llround(clamped * 1000);
}

inline void put(std::string& out, std::int64_t value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, end);
}

/// A number with at most `places` decimals, without trailing zeros.
inline void put(std::string& out, double value, int places) {
  char digits[64];
  if (!std::isfinite(value)) value = 0;
  const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, places);
  char* end = result.ptr;
  if (result.ec != std::errc()) {
    out += '0';
    return;
  }
  if (places > 0) {
    while (end[-1] == '0') --end;
    if (end[-1] == '.') --end;
  }
  if (end - digits == 2 && digits[0] == '-' && digits[1] == '0')
    out += '0';
  else
    out.append(digits, end);
}

}  // namespace kvgr
