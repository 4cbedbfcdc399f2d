#pragma once
// Wide text (one code point each) to and from UTF-8 and UTF-16.
#include <string>
#include <string_view>

namespace platform {

/// Lone surrogates and values beyond U+10FFFF are written as U+FFFD.
std::string toUtf8(std::wstring_view text);

/// Each byte that starts no valid sequence becomes U+FFFD; overlong forms and surrogates count as invalid.
std::wstring fromUtf8(std::string_view bytes);

/// True when every sequence is valid.
bool isUtf8(std::string_view bytes);

/// Code points beyond the basic plane become surrogate pairs.
std::u16string toUtf16(std::wstring_view text);

/// Pairs are joined; a lone surrogate stays as it is, so that nothing is lost on the way back.
std::wstring fromUtf16(std::u16string_view units);

/// Bytes, little-endian, without a mark.
std::string toUtf16Bytes(std::wstring_view text);
std::wstring fromUtf16Bytes(std::string_view bytes, bool bigEndian = false);

}  // namespace platform
