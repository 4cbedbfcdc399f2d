#include "module/core/encoding.h"

#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace {

constexpr int kEscapeLength = 7;  // \U+XXXX
constexpr wchar_t kLastByte = 0xFF;

int hexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<int>(c - L'0');
  if (c >= L'A' && c <= L'F') return static_cast<int>(c - L'A') + 10;
  if (c >= L'a' && c <= L'f') return static_cast<int>(c - L'a') + 10;
  return -1;
}

/// The character of an escape that begins at `at`; -1 when none does.
int escapedCharacter(std::wstring_view text, std::size_t at) {
  if (text.size() - at < kEscapeLength || text.substr(at, 3) != L"\\U+") return -1;
  int value = 0;
  for (std::size_t i = at + 3; i < at + kEscapeLength; ++i) {
    const int digit = hexDigit(text[i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

/// The text with every run of byte-sized characters decoded by the code page.
std::wstring decodeByteRuns(std::wstring_view text, unsigned int codePage) {
  std::wstring out;
  for (std::size_t at = 0; at < text.size();) {
    std::string bytes;
    for (; at < text.size() && text[at] <= kLastByte; ++at) bytes += static_cast<char>(text[at]);
    out += platform::fromCodePage(bytes, codePage);
    for (; at < text.size() && text[at] > kLastByte; ++at) out += text[at];
  }
  return out;
}

}  // namespace

CString IM_CStringA2W(CStringA text, unsigned int codePage) {
  return platform::fromCodePage(text.view(), codePage);
}

CStringA IM_CStringW2A(CString text, unsigned int codePage) {
  return platform::toCodePage(text.view(), codePage);
}

CString IM_ReadString(CString const& text, unsigned int codePage, unsigned int holdsBytes) {
  const std::wstring stored = holdsBytes ? decodeByteRuns(text.view(), codePage) : text.str();
  // Halves of a pair meet as UTF-16 units; everything else passes through unchanged.
  std::u16string units;
  for (std::size_t at = 0; at < stored.size();) {
    const int character = escapedCharacter(stored, at);
    units += character >= 0 ? std::u16string(1, static_cast<char16_t>(character))
                            : platform::toUtf16(std::wstring_view(&stored[at], 1));
    at += character >= 0 ? kEscapeLength : 1;
  }
  return platform::fromUtf16(units);
}

CString IM_WriteString(CString const& text, unsigned int codePage) {
  CString out;
  for (wchar_t c : text.view()) {
    bool lossy = false;
    platform::toCodePage(std::wstring_view(&c, 1), codePage, &lossy);
    if (!lossy) {
      out += c;
      continue;
    }
    for (char16_t unit : platform::toUtf16(std::wstring_view(&c, 1)))
      out.AppendFormat(L"\\U+%04X", static_cast<unsigned>(unit));
  }
  return out;
}
