#pragma once
// The texts of drawing files: bytes in the file's encoding, with escapes for characters that it lacks.
#include <cstdint>
#include <string>
#include <string_view>

namespace kvio {

/// How a file's texts are stored.
struct TextEncoding {
  bool isUtf8 = true;
  std::uint32_t codePage = 1252;  // where it isn't UTF-8, and for texts that turn out not to be
};

/// Wide text: bytes decoded, `\U+XXXX` and `\M+NXXXX` resolved. Bytes that don't fit the file's encoding but
/// do fit the other one are taken as that; what fits neither becomes U+FFFD.
std::wstring decodeText(std::string_view bytes, const TextEncoding& encoding);
/// Whether the bytes mean the same in every encoding and hold no escape.
bool isPlainText(std::string_view bytes);
/// Bytes for a file: characters that the encoding lacks, control characters and line ends as `\U+XXXX`.
std::string encodeText(std::wstring_view text, const TextEncoding& encoding);
/// The same behind what `out` holds.
void appendEncoded(std::string& out, std::wstring_view text, const TextEncoding& encoding);

}  // namespace kvio
