#include "platform/text/format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr int kLargestWidth = 10'000;

struct Spec {
  bool left = false, plus = false, blank = false, alternate = false, zero = false;
  int width = 0;
  int precision = -1;
  int bytes = 8;  // size that a length letter asks for
  bool narrowAsked = false, wideAsked = false;
  char conversion = 0;
};

std::string digitsOf(std::uint64_t value, int base, bool upper) {
  char buffer[72];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value, base);
  std::string text(buffer, error == std::errc() ? end : buffer);
  if (upper)
    for (char& c : text)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 0x20);
  return text;
}

/// Sign or base prefix, then zeros or blanks up to the width.
std::string padNumber(const Spec& spec, const std::string& prefix, std::string digits, bool zerosAllowed) {
  const auto width = static_cast<std::size_t>(spec.width);
  const std::size_t length = prefix.size() + digits.size();
  if (length >= width) return prefix + digits;
  if (spec.left) return prefix + digits + std::string(width - length, ' ');
  if (spec.zero && zerosAllowed) return prefix + std::string(width - length, '0') + digits;
  return std::string(width - length, ' ') + prefix + digits;
}

std::string signPrefix(const Spec& spec, bool negative) {
  return negative ? "-" : spec.plus ? "+" : spec.blank ? " " : "";
}

std::string integerText(const Spec& spec, const FormatArg& arg) {
  std::string prefix, digits;
  const bool isDecimal = spec.conversion == 'd' || spec.conversion == 'i';
  const auto bits = arg.bits(spec.bytes);
  if (isDecimal) {
    // A conversion with a size letter shows the value cut to that size, sign included.
    const int shift = 64 - 8 * std::min(spec.bytes, 8);
    const auto value = static_cast<std::int64_t>(static_cast<std::uint64_t>(arg.integer()) << shift) >> shift;
    const auto magnitude =
        value < 0 ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
    digits = digitsOf(magnitude, 10, false);
    prefix = signPrefix(spec, value < 0);
  } else {
    const int base = spec.conversion == 'o' ? 8 : spec.conversion == 'u' ? 10 : 16;
    digits = digitsOf(bits, base, spec.conversion == 'X');
    if (spec.alternate && bits != 0 && base == 16) prefix = spec.conversion == 'X' ? "0X" : "0x";
    if (spec.alternate && base == 8 && digits.front() != '0') digits.insert(0, "0");
  }
  if (spec.precision == 0 && digits == "0") digits.clear();
  if (spec.precision > static_cast<int>(digits.size()))
    digits.insert(0, static_cast<std::size_t>(spec.precision) - digits.size(), '0');
  return padNumber(spec, prefix, digits, spec.precision < 0);
}

/// `%#g` keeps trailing zeros, the other conversions a point without decimals.
void applyAlternateForm(std::string& text, char conversion, int precision) {
  const auto exponent = text.find_first_of("ep");
  const std::string tail = exponent == std::string::npos ? "" : text.substr(exponent);
  std::string mantissa = text.substr(0, exponent);
  if (mantissa.find('.') == std::string::npos) mantissa += '.';
  if (conversion == 'g' || conversion == 'G') {
    const auto significant =
        static_cast<int>(std::count_if(mantissa.begin(), mantissa.end(), [](char c) { return c != '.'; }));
    if (significant < precision) mantissa.append(static_cast<std::size_t>(precision - significant), '0');
  }
  text = mantissa + tail;
}

std::string realText(const Spec& spec, double value) {
  const char lower = static_cast<char>(spec.conversion | 0x20);
  const std::string prefix = signPrefix(spec, std::signbit(value) && !std::isnan(value));
  std::string text;
  const bool finite = std::isfinite(value);
  if (!finite) {
    text = std::isnan(value) ? "nan" : "inf";
  } else {
    const double magnitude = std::fabs(value);
    int precision = spec.precision < 0 ? 6 : spec.precision;
    if (lower == 'g' && precision == 0) precision = 1;
    const auto form = lower == 'f'   ? std::chars_format::fixed
                      : lower == 'e' ? std::chars_format::scientific
                      : lower == 'a' ? std::chars_format::hex
                                     : std::chars_format::general;
    text.resize(static_cast<std::size_t>(precision) + 350);
    const auto result =
        lower == 'a' && spec.precision < 0
            ? std::to_chars(text.data(), text.data() + text.size(), magnitude, form)
            : std::to_chars(text.data(), text.data() + text.size(), magnitude, form, precision);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    if (spec.alternate) applyAlternateForm(text, spec.conversion, precision);
    if (lower == 'a') text.insert(0, "0x");
  }
  if (lower != spec.conversion)
    for (char& c : text)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 0x20);
  return padNumber(spec, prefix, text, finite);
}

template <class Ch>
std::basic_string<Ch> widened(const std::string& ascii) {
  return std::basic_string<Ch>(ascii.begin(), ascii.end());
}

template <class Ch>
std::basic_string<Ch> textOf(const FormatArg& arg) {
  if constexpr (sizeof(Ch) == 1)
    return arg.kind() == FormatArg::Kind::Narrow ? std::string(arg.narrow()) : toUtf8(arg.wide());
  else
    return arg.kind() == FormatArg::Kind::Wide ? std::wstring(arg.wide()) : fromUtf8(arg.narrow());
}

template <class Ch>
std::basic_string<Ch> padText(const Spec& spec, std::basic_string<Ch> text) {
  if (spec.precision >= 0 && text.size() > static_cast<std::size_t>(spec.precision))
    text.resize(static_cast<std::size_t>(spec.precision));
  const auto width = static_cast<std::size_t>(spec.width);
  if (text.size() >= width) return text;
  if (spec.left) return text.append(width - text.size(), Ch{' '});
  return std::basic_string<Ch>(width - text.size(), Ch{' '}) + text;
}

template <class Ch>
std::basic_string<Ch> characterText(const Spec& spec, const FormatArg& arg) {
  Spec plain = spec;
  plain.precision = -1;
  if (arg.isText()) return padText<Ch>(plain, textOf<Ch>(arg).substr(0, 1));
  const auto code = static_cast<std::uint32_t>(arg.integer());
  if constexpr (sizeof(Ch) == 1)
    return padText<Ch>(plain, std::basic_string<Ch>(1, static_cast<Ch>(code & 0xFF)));
  else
    return padText<Ch>(plain, std::basic_string<Ch>(1, static_cast<Ch>(code > 0x10FFFF ? 0xFFFD : code)));
}

template <class Ch>
std::basic_string<Ch> convert(Spec spec, const FormatArg& arg) {
  const char asked = spec.conversion;
  if (asked == 'c' || asked == 'C') return characterText<Ch>(spec, arg);
  if (arg.isText()) {
    if (asked != 's' && asked != 'S') spec.precision = -1;
    return padText<Ch>(spec, textOf<Ch>(arg));
  }
  if (asked == 's' || asked == 'S') {
    // A number where text was wanted shows itself plainly.
    spec.precision = -1;
    spec.conversion = arg.kind() == FormatArg::Kind::Real     ? 'g'
                      : arg.kind() == FormatArg::Kind::Signed ? 'd'
                                                              : 'u';
  }
  if (arg.kind() == FormatArg::Kind::Pointer || spec.conversion == 'p') {
    spec.conversion = 'X';
    spec.precision = 16;
    return widened<Ch>(integerText(spec, arg));
  }
  switch (spec.conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      return widened<Ch>(integerText(spec, arg));
    default:
      return widened<Ch>(realText(spec, arg.real()));
  }
}

/// Reads one format from behind its `%`. Moves `at`; false when no conversion letter stands at its end.
template <class Ch>
class SpecReader {
 public:
  SpecReader(std::basic_string_view<Ch> format, std::initializer_list<FormatArg> args)
      : format_(format), args_(args) {}

  bool read(std::size_t& at, const FormatArg*& next, Spec& spec) {
    readFlags(at, spec);
    spec.width = readCount(at, next, 0);
    if (spec.width < 0) {
      spec.left = true;
      spec.width = -spec.width;
    }
    if (peek(at) == '.') {
      ++at;
      spec.precision = readCount(at, next, 0);
    }
    readLength(at, spec);
    const Ch letter = peek(at);
    if (letter == 0 || letter > 'z' ||
        std::string_view("diouxXcCsSeEfFgGaAp").find(static_cast<char>(letter)) == std::string_view::npos)
      return false;
    spec.conversion = static_cast<char>(letter);
    ++at;
    return true;
  }

 private:
  Ch peek(std::size_t at) const { return at < format_.size() ? format_[at] : Ch{}; }

  void readFlags(std::size_t& at, Spec& spec) const {
    for (;; ++at) {
      switch (peek(at)) {
        case '-':
          spec.left = true;
          break;
        case '+':
          spec.plus = true;
          break;
        case ' ':
          spec.blank = true;
          break;
        case '#':
          spec.alternate = true;
          break;
        case '0':
          spec.zero = true;
          break;
        default:
          return;
      }
    }
  }

  int readCount(std::size_t& at, const FormatArg*& next, int absent) const {
    if (peek(at) == '*') {
      ++at;
      if (next == args_.end()) return absent;
      const auto value = (next++)->integer();
      return static_cast<int>(std::clamp<std::int64_t>(value, -kLargestWidth, kLargestWidth));
    }
    int value = absent;
    for (; peek(at) >= '0' && peek(at) <= '9'; ++at)
      value = std::min(kLargestWidth, value * 10 + static_cast<int>(peek(at) - '0'));
    return value;
  }

  void readLength(std::size_t& at, Spec& spec) const {
    for (;; ++at) {
      const Ch letter = peek(at);
      if (letter == 'h') {
        spec.bytes = spec.bytes == 2 ? 1 : 2;
        spec.narrowAsked = true;
      } else if (letter == 'l' || letter == 'w') {
        spec.wideAsked = true;
      } else if (letter == 'I' && peek(at + 1) == '6' && peek(at + 2) == '4') {
        at += 2;
      } else if (letter == 'I' && peek(at + 1) == '3' && peek(at + 2) == '2') {
        at += 2;
        spec.bytes = 4;
      } else if (letter != 'z' && letter != 'j' && letter != 't' && letter != 'L' && letter != 'q') {
        return;
      }
    }
  }

  std::basic_string_view<Ch> format_;
  std::initializer_list<FormatArg> args_;
};

}  // namespace

std::int64_t FormatArg::integer() const {
  if (kind_ != Kind::Real) return integer_;
  if (std::isnan(real_)) return 0;
  if (real_ >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
  if (real_ <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(real_);
}

std::uint64_t FormatArg::bits(int bytes) const {
  const int own = kind_ == Kind::Real ? 8 : size_;
  const int kept = std::min(bytes, own);
  const auto value = static_cast<std::uint64_t>(integer());
  return kept >= 8 ? value : value & ((std::uint64_t{1} << (8 * kept)) - 1);
}

double FormatArg::real() const {
  if (kind_ == Kind::Real) return real_;
  return kind_ == Kind::Unsigned ? static_cast<double>(static_cast<std::uint64_t>(integer_))
                                 : static_cast<double>(integer_);
}

template <class Ch>
std::basic_string<Ch> formatText(const Ch* format, std::initializer_list<FormatArg> args) {
  std::basic_string<Ch> out;
  if (!format) return out;
  const std::basic_string_view<Ch> text(format);
  const FormatArg* next = args.begin();
  SpecReader<Ch> reader(text, args);
  for (std::size_t at = 0; at < text.size();) {
    const auto percent = std::min(text.find(Ch{'%'}, at), text.size());
    out.append(text, at, percent - at);
    at = percent;
    if (at == text.size()) break;
    if (at + 1 < text.size() && text[at + 1] == '%') {
      out += Ch{'%'};
      at += 2;
      continue;
    }
    const std::size_t start = at++;
    Spec spec;
    if (!reader.read(at, next, spec)) {
      out.append(text, start, at - start);
      continue;
    }
    if (next != args.end()) out += convert<Ch>(spec, *next++);
  }
  return out;
}

template std::wstring formatText<wchar_t>(const wchar_t*, std::initializer_list<FormatArg>);
template std::string formatText<char>(const char*, std::initializer_list<FormatArg>);

}  // namespace platform
