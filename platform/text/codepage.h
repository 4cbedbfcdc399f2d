#pragma once
// Wide text to and from 8-bit text of a numbered code page.
//
// Mappings are those of the system that the numbers come from: they are built once from the C library's
// iconv tables, then completed by what that system maps besides (C1 controls, user-defined areas, single
// bytes in the private use area), so that a byte that means something goes there and back. No character is
// replaced by a look-alike. Tables are built at the first non-ASCII text of a page and kept; every function
// here may be called from any thread.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text/cstring.h"

namespace platform {

inline constexpr std::uint32_t kSystemCodePage =
    0;  ///< Environment::systemCodePage; 1, 2 and 3 mean the same
inline constexpr std::uint32_t kGb18030CodePage = 54936;
inline constexpr std::uint32_t kUtf8CodePage = 65001;
/// What stands for a byte that has no meaning in its page.
inline constexpr wchar_t kReplacement = L'\uFFFD';

/// Known: 437, 720-775, 850-869 (DOS), 874, 932, 936, 949, 950, 1250-1258, 1361, 10000, 20127, 20866, 21866,
/// 28591-28606, 51932, 51936, 51949, 54936, 65001, and the system's page.
bool isCodePage(std::uint32_t codePage);

/// Bytes of `text`. A character that the page lacks becomes `?` and sets `lossy` (which is cleared
/// otherwise). With an unknown page only ASCII has an equivalent.
std::string toCodePage(std::wstring_view text, std::uint32_t codePage, bool* lossy = nullptr);

/// Text of `bytes`. A byte or pair without meaning becomes U+FFFD and sets `lossy` (which is cleared
/// otherwise). An ASCII byte behind a lead byte that it makes no pair with stays, so that damage never
/// swallows a quote or a line end.
std::wstring fromCodePage(std::string_view bytes, std::uint32_t codePage, bool* lossy = nullptr);

/// Text of `bytes` in a character set that iconv knows by name. None for an unknown name; invalid bytes as
/// above.
std::optional<std::wstring> fromCharset(std::string_view bytes, const char* charset, bool* lossy = nullptr);

/// True when `byte` begins a pair in the page. Only 932, 936, 949, 950 and 1361 have lead bytes.
bool isLeadByte(unsigned char byte, std::uint32_t codePage);

/// The number behind a drawing file's name of a page ("ANSI_936", "dos850", "ISO8859-1", "BIG5"); no regard
/// to case.
std::optional<std::uint32_t> codePageFromDrawingName(std::string_view name);
/// "ANSI_936" for 936, "DOS437" for 437; "ANSI_1252" where drawing files have no name for the page.
std::string drawingNameOfCodePage(std::uint32_t codePage);

}  // namespace platform

/// Non-zero when `byte` begins a pair in the system's code page.
BOOL IsDBCSLeadByte(unsigned char byte);
