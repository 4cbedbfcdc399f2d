#include "platform/text/utf.h"

#include <cstdint>

namespace platform {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

constexpr bool isSurrogate(std::uint32_t c) {
  return c >= 0xD800 && c < 0xE000;
}

/// Length of the valid sequence at the start of `bytes`, 0 when there is none; `code` gets its value.
std::size_t decodeOne(std::string_view bytes, std::uint32_t& code) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
  const std::uint8_t lead = byteAt(0);
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  std::size_t length = 0;
  std::uint32_t smallest = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, smallest = 0x80, code = lead & 0x1Fu;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, smallest = 0x800, code = lead & 0x0Fu;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, smallest = 0x10000, code = lead & 0x07u;
  } else {
    return 0;
  }
  if (bytes.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byteAt(i) & 0x3Fu);
  }
  return code < smallest || code > 0x10FFFF || isSurrogate(code) ? 0 : length;
}

}  // namespace

std::string toUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (wchar_t wide : text) {
    auto c = static_cast<std::uint32_t>(wide);
    if (c > 0x10FFFF || isSurrogate(c)) c = kReplacement;
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::wstring fromUtf8(std::string_view bytes) {
  std::wstring out;
  out.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    std::uint32_t code = 0;
    const std::size_t length = decodeOne(bytes.substr(at), code);
    out += length == 0 ? kReplacement : static_cast<wchar_t>(code);
    at += length == 0 ? 1 : length;
  }
  return out;
}

bool isUtf8(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    std::uint32_t code = 0;
    const std::size_t length = decodeOne(bytes.substr(at), code);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::u16string toUtf16(std::wstring_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (wchar_t wide : text) {
    auto c = static_cast<std::uint32_t>(wide);
    if (c > 0x10FFFF) c = kReplacement;
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return out;
}

std::wstring fromUtf16(std::u16string_view units) {
  std::wstring out;
  out.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    const std::uint32_t unit = units[i];
    const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
    const std::uint32_t next = i + 1 < units.size() ? units[i + 1] : 0;
    if (isHigh && next >= 0xDC00 && next < 0xE000) {
      out += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
      ++i;
    } else {
      out += static_cast<wchar_t>(unit);
    }
  }
  return out;
}

std::string toUtf16Bytes(std::wstring_view text) {
  std::string out;
  for (char16_t unit : toUtf16(text)) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8);
  }
  return out;
}

std::wstring fromUtf16Bytes(std::string_view bytes, bool bigEndian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<std::uint8_t>(bytes[bigEndian ? i + 1 : i]);
    const auto high = static_cast<std::uint8_t>(bytes[bigEndian ? i : i + 1]);
    units += static_cast<char16_t>(low | (high << 8));
  }
  return fromUtf16(units);
}

}  // namespace platform
