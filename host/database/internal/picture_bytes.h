#pragma once
// Numbers and texts in the bytes and bits of stored pictures. Little endian; whatever is wrong with the input
// (too few bytes, a number that isn't finite) makes the reader bad, and all it gives from then on is 0.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/geometry/point.h"
#include "platform/text/utf.h"

namespace kvdb {

inline constexpr std::size_t kAlignment = 4, kPointBytes = 24;
inline constexpr double kFarthest = 1e100;  // coordinates beyond are no place in a drawing

/// Reads on; once something is missing, everything is.
class Bytes {
 public:
  explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  bool isGood() const { return isGood_; }
  std::size_t left() const { return bytes_.size() - at_; }
  std::span<const std::uint8_t> rest() const { return bytes_.subspan(at_); }

  std::uint32_t whole() {
    const auto taken = take(4);
    std::uint32_t value = 0;
    for (std::size_t i = taken.size(); i-- > 0;) value = value << 8 | taken[i];
    return value;
  }
  std::int32_t number() { return static_cast<std::int32_t>(whole()); }
  double real() {
    const auto taken = take(8);
    std::uint64_t bits = 0;
    for (std::size_t i = taken.size(); i-- > 0;) bits = bits << 8 | taken[i];
    const double value = std::bit_cast<double>(bits);
    if (!(std::fabs(value) < kFarthest)) isGood_ = false;
    return isGood_ ? value : 0;
  }
  KvGePoint3d point() {
    const double x = real(), y = real(), z = real();
    return {x, y, z};
  }
  KvGeVector3d vector() { return point().asVector(); }
  std::vector<KvGePoint3d> points(std::size_t count) {
    std::vector<KvGePoint3d> all;
    if (count > left() / kPointBytes) isGood_ = false;
    if (isGood_) all.reserve(count);
    for (std::size_t i = 0; isGood_ && i < count; ++i) all.push_back(point());
    return all;
  }
  /// Up to a zero byte, filled up to a multiple of four.
  std::string text() {
    const auto end = std::find(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), bytes_.end(), 0);
    std::string found(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), end);
    skipText(end == bytes_.end(), found.size() + 1);
    return found;
  }
  /// The same of pairs of bytes.
  std::wstring wideText() {
    std::u16string found;
    std::size_t at = at_;
    for (; at + 1 < bytes_.size(); at += 2) {
      const auto unit = static_cast<char16_t>(bytes_[at] | bytes_[at + 1] << 8);
      if (unit == 0) break;
      found += unit;
    }
    skipText(at + 1 >= bytes_.size(), found.size() * 2 + 2);
    return platform::fromUtf16(found);
  }

 private:
  std::span<const std::uint8_t> take(std::size_t count) {
    if (left() < count) isGood_ = false;
    if (!isGood_) return {};
    const auto taken = bytes_.subspan(at_, count);
    at_ += count;
    return taken;
  }
  void skipText(bool isOpen, std::size_t size) {
    if (isOpen) isGood_ = false;
    at_ = std::min(bytes_.size(), (at_ + size + kAlignment - 1) / kAlignment * kAlignment);
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  bool isGood_ = true;
};

/// Bits, first the highest of each byte, in the packed numbers of the drawing format.
class Bits {
 public:
  explicit Bits(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  bool isGood() const { return isGood_; }
  std::size_t left() const { return bytes_.size() * 8 - at_; }
  std::uint32_t bits(int count) {
    std::uint32_t value = 0;
    for (; count > 0; --count) {
      if (left() == 0) isGood_ = false;
      if (!isGood_) return 0;
      value = value << 1 | (bytes_[at_ / 8] >> (7 - at_ % 8) & 1u);
      ++at_;
    }
    return value;
  }
  double rawReal() {
    std::uint64_t value = 0;
    for (int i = 0; i < 8; ++i) value |= std::uint64_t{bits(8)} << (8 * i);
    return checked(std::bit_cast<double>(value));
  }
  /// Two bits tell how it is packed.
  double real() {
    switch (bits(2)) {
      case 0:
        return rawReal();
      case 1:
        return 1;
      default:
        return 0;
    }
  }
  /// A change of another number: nothing, the lowest four or six bytes, or all.
  double realLike(double other) {
    const std::uint32_t how = bits(2);
    if (how == 0) return other;
    if (how == 3) return rawReal();
    auto value = std::bit_cast<std::uint64_t>(other);
    const auto replace = [&](int byte) {
      value = (value & ~(std::uint64_t{0xFF} << (8 * byte))) | std::uint64_t{bits(8)} << (8 * byte);
    };
    if (how == 2)
      for (const int byte : {4, 5}) replace(byte);
    for (const int byte : {0, 1, 2, 3}) replace(byte);
    return checked(std::bit_cast<double>(value));
  }
  std::uint32_t little(int bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) value |= bits(8) << (8 * i);
    return value;
  }
  std::uint32_t shortNumber() {
    constexpr std::uint32_t kFull = 256;
    const std::uint32_t how = bits(2);
    return how == 0 ? little(2) : how == 1 ? little(1) : how == 2 ? 0 : kFull;
  }
  std::uint32_t longNumber() {
    const std::uint32_t how = bits(2);
    return how == 0 ? little(4) : how == 1 ? little(1) : 0;
  }

 private:
  double checked(double value) {
    if (!(std::fabs(value) < kFarthest)) isGood_ = false;
    return isGood_ ? value : 0;
  }
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  bool isGood_ = true;
};

}  // namespace kvdb
