#include "host/io/internal/dxf_text.h"

#include "platform/text/codepage.h"
#include "platform/text/utf.h"

namespace kvio {
namespace {

/// Code pages behind the digit of `\M+`, from 1.
constexpr std::uint32_t kMultibytePages[] = {932, 950, 949, 1361, 936};

int hexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<int>(c - L'0');
  if (c >= L'A' && c <= L'F') return static_cast<int>(c - L'A') + 10;
  if (c >= L'a' && c <= L'f') return static_cast<int>(c - L'a') + 10;
  return -1;
}

/// Four hexadecimal digits from `at` on; -1 when they aren't there.
int fourDigits(std::wstring_view text, std::size_t at) {
  if (text.size() < at + 4) return -1;
  int value = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    const int digit = hexDigit(text[i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

std::wstring resolveEscapes(std::wstring_view text) {
  std::u16string units;
  std::size_t at = 0;
  const auto keep = [&](std::size_t count) {
    units += platform::toUtf16(text.substr(at, count));
    at += count;
  };
  while (at < text.size()) {
    const auto backslash = text.find(L'\\', at);
    if (backslash != at) {
      keep((backslash == std::wstring_view::npos ? text.size() : backslash) - at);
      continue;
    }
    const auto head = text.substr(at, 3);
    const int unit = head == L"\\U+" ? fourDigits(text, at + 3) : -1;
    if (unit >= 0) {
      units += static_cast<char16_t>(unit);
      at += 7;
      continue;
    }
    const int page = head == L"\\M+" && at + 3 < text.size() ? static_cast<int>(text[at + 3]) - L'0' : 0;
    const int pair = page >= 1 && page <= 5 ? fourDigits(text, at + 4) : -1;
    if (pair >= 0) {
      const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)};
      units += platform::toUtf16(platform::fromCodePage({bytes, 2}, kMultibytePages[page - 1]));
      at += 8;
      continue;
    }
    keep(1);
  }
  return platform::fromUtf16(units);
}

std::wstring decodeBytes(std::string_view bytes, const TextEncoding& encoding) {
  const bool fitsUtf8 = platform::isUtf8(bytes);
  if (encoding.isUtf8 && fitsUtf8) return platform::fromUtf8(bytes);
  bool lossy = false;
  std::wstring text = platform::fromCodePage(bytes, encoding.codePage, &lossy);
  return lossy && fitsUtf8 ? platform::fromUtf8(bytes) : text;
}

}  // namespace

bool isPlainText(std::string_view bytes) {
  for (char c : bytes)
    if (static_cast<unsigned char>(c) >= 0x80 || c == '\\') return false;
  return true;
}

std::wstring decodeText(std::string_view bytes, const TextEncoding& encoding) {
  if (isPlainText(bytes)) return std::wstring(bytes.begin(), bytes.end());
  std::wstring text = decodeBytes(bytes, encoding);
  return text.find(L"\\U+") == std::wstring::npos && text.find(L"\\M+") == std::wstring::npos
             ? text
             : resolveEscapes(text);
}

std::string encodeText(std::wstring_view text, const TextEncoding& encoding) {
  std::string out;
  appendEncoded(out, text, encoding);
  return out;
}

void appendEncoded(std::string& out, std::wstring_view text, const TextEncoding& encoding) {
  const auto escape = [&](std::wstring_view one) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (char16_t unit : platform::toUtf16(one)) {
      out += "\\U+";
      for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[(unit >> shift) & 0xF];
    }
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t c = text[i];
    const auto one = text.substr(i, 1);
    if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else if (c == L'\t') {
      out += '\t';
    } else if (c < 0x20 || c == 0x7F || c == 0xFFFE || c == 0xFFFF || (c >= 0xD800 && c < 0xE000)) {
      escape(one);
    } else if (encoding.isUtf8) {
      out += platform::toUtf8(one);
    } else {
      bool lossy = false;
      const std::string bytes = platform::toCodePage(one, encoding.codePage, &lossy);
      if (lossy)
        escape(one);
      else
        out += bytes;
    }
  }
}

}  // namespace kvio
