#pragma once
// Bytes of an XML file to UTF-8, by byte-order mark or declared encoding.
#include <string>
#include <string_view>

#include "platform/xml/error.h"

namespace platform {

/// Where the text starts when the bytes are UTF-8 already and need no copy; else the text is in `converted`.
struct XmlText {
  std::size_t skip = 0;
  bool isConverted = false;
  std::string converted;
};

/// False when the encoding isn't known or the bytes aren't valid in it; `error` then says what and at which
/// byte.
bool decodeXml(std::string_view bytes, XmlText& text, XmlError& error);

/// Position of the first byte that starts no valid UTF-8 sequence or is a control character that XML forbids;
/// npos when there is none.
std::size_t findBadUtf8(std::string_view text);

/// True for the characters that XML 1.0 allows (its production Char).
constexpr bool isXmlChar(unsigned long c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE) ||
         (c >= 0x10000 && c <= 0x10FFFF);
}

/// True when `name` can name an element or an attribute (characters beyond ASCII are taken as letters).
bool isXmlName(std::string_view name);

}  // namespace platform
