#pragma once
// The text of an XML file as UTF-8, before anything looks at its tags. For readers that need no tree.
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/xml/error.h"

namespace platform {

struct XmlSource {
  std::string buffer;
  std::size_t skip = 0;    ///< bytes of the mark before the text
  bool converted = false;  ///< the file was in another encoding than UTF-8
  std::string_view text() const { return std::string_view(buffer).substr(skip); }
};

/// Reads and decodes. The bytes aren't checked to be UTF-8 when that is what they were declared to be
/// (findBadXmlText does). False on failure; `error` then says what and where.
bool readXmlSource(const std::filesystem::path& path, const XmlLimits& limits, XmlSource& source,
                   XmlError& error);
bool decodeXmlSource(std::string bytes, XmlSource& source, XmlError& error);

/// Position of the first byte that starts no valid UTF-8 sequence or is a control character that XML forbids;
/// npos when there is none.
std::size_t findBadXmlText(std::string_view text);

/// True for the characters that XML 1.0 allows (its production Char).
constexpr bool isXmlChar(unsigned long c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE) ||
         (c >= 0x10000 && c <= 0x10FFFF);
}

/// True for a byte that a name may hold or, with `first`, begin with; all bytes beyond ASCII count as
/// letters.
constexpr bool isXmlNameByte(char c, bool first) {
  if (static_cast<unsigned char>(c) >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
      c == ':')
    return true;
  return !first && ((c >= '0' && c <= '9') || c == '-' || c == '.');
}

/// True when `name` can name an element or an attribute.
bool isXmlName(std::string_view name);

/// The reference at the start of `text`: one of the five predefined entities or a character by number. Gives
/// its length and in `code` the character; 0 when it is none of these.
std::size_t readXmlReference(std::string_view text, unsigned long& code);

}  // namespace platform
