#include "platform/xml/source.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "platform/files/files.h"
#include "platform/text/codepage.h"
#include "platform/text/cstring.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr std::uint32_t kUtf16Little = 1200;
constexpr std::uint32_t kUtf16Big = 1201;

/// Declared names and their code pages. GB2312 stands for its superset, as files made on Chinese systems
/// declare the one and hold the other; the same goes for the other East Asian sets.
struct Charset {
  std::string_view declared;
  std::uint32_t codePage;
};
constexpr Charset kCharsets[] = {
    {"utf-8", kUtf8CodePage},
    {"utf8", kUtf8CodePage},
    {"us-ascii", kUtf8CodePage},
    {"ascii", kUtf8CodePage},
    {"gb2312", 936},
    {"gbk", 936},
    {"gb_2312-80", 936},
    {"cp936", 936},
    {"windows-936", 936},
    {"x-gbk", 936},
    {"gb18030", kGb18030CodePage},
    {"big5", 950},
    {"cp950", 950},
    {"windows-950", 950},
    {"shift_jis", 932},
    {"shift-jis", 932},
    {"sjis", 932},
    {"x-sjis", 932},
    {"windows-31j", 932},
    {"cp932", 932},
    {"euc-jp", 51932},
    {"euc-kr", 949},
    {"ks_c_5601-1987", 949},
    {"cp949", 949},
    {"windows-949", 949},
    {"koi8-r", 20866},
    {"koi8-u", 21866},
    {"latin1", 28591},
    // An 8-bit declaration that says UTF-16 can't be meant: the file was converted and kept its first line.
    {"utf-16", kUtf8CodePage},
    {"utf-16le", kUtf8CodePage},
    {"utf-16be", kUtf8CodePage},
    {"unicode", kUtf8CodePage},
};

/// Sets whose names end in the number of their code page, or in what is added to the first one's.
struct Family {
  std::string_view prefix;
  std::uint32_t first;
};
constexpr Family kFamilies[] = {{"iso-8859-", 28590}, {"windows-", 0}, {"cp", 0}};

constexpr std::size_t kDeclarationLength = 512;

/// 0 when the name isn't known.
std::uint32_t codePageFor(std::string_view declared) {
  for (const Charset& row : kCharsets)
    if (equalNoCase(row.declared, declared)) return row.codePage;
  for (const Family& family : kFamilies) {
    if (!equalNoCase(declared.substr(0, family.prefix.size()), family.prefix)) continue;
    const std::string_view digits = declared.substr(family.prefix.size());
    std::uint32_t number = 0;
    const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (status == std::errc() && end == digits.data() + digits.size() && isCodePage(family.first + number))
      return family.first + number;
  }
  return 0;
}

/// The value of `encoding` in the declaration, empty when there is no declaration or no such word in it.
std::string_view declaredEncoding(std::string_view bytes) {
  bytes = bytes.substr(0, kDeclarationLength);
  if (!bytes.starts_with("<?xml")) return {};
  bytes = bytes.substr(0, bytes.find("?>"));
  constexpr std::string_view kWord = "encoding";
  std::size_t at = bytes.find(kWord);
  if (at == std::string_view::npos) return {};
  at = bytes.find_first_of("\"'", at + kWord.size());
  if (at == std::string_view::npos) return {};
  const std::size_t end = bytes.find(bytes[at], at + 1);
  return end == std::string_view::npos ? std::string_view() : bytes.substr(at + 1, end - at - 1);
}

/// UTF-16 is told by its mark or by the zero byte beside the first `<`; 0 when it isn't.
std::uint32_t utf16Form(std::string_view bytes, std::size_t& skip) {
  skip = 0;
  if (bytes.size() < 2) return 0;
  const auto first = static_cast<std::uint8_t>(bytes[0]), second = static_cast<std::uint8_t>(bytes[1]);
  if (first == '<' && second == 0) return kUtf16Little;
  if (first == 0 && second == '<') return kUtf16Big;
  skip = 2;
  if (first == 0xFF && second == 0xFE) return kUtf16Little;
  if (first == 0xFE && second == 0xFF) return kUtf16Big;
  return 0;
}

/// The code page of the bytes, and the length of their mark. 0 when the declared encoding isn't known.
std::uint32_t encodingOf(std::string_view bytes, std::size_t& skip, XmlError& error) {
  if (const std::uint32_t wide = utf16Form(bytes, skip)) return wide;
  skip = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  const std::string_view declared = declaredEncoding(bytes.substr(skip));
  if (skip > 0 || declared.empty()) return kUtf8CodePage;
  const std::uint32_t codePage = codePageFor(declared);
  if (codePage != 0) return codePage;
  error.what = "unknown encoding \"" + std::string(declared) + "\"";
  error.line = 1;
  return 0;
}

/// The text as UTF-8. A byte without meaning is an error; its place is that in the text.
bool convert(std::string_view bytes, std::uint32_t codePage, std::string& out, XmlError& error) {
  const bool isWide = codePage == kUtf16Little || codePage == kUtf16Big;
  bool lossy = isWide && bytes.size() % 2 != 0;
  const std::wstring text =
      isWide ? fromUtf16Bytes(bytes, codePage == kUtf16Big) : fromCodePage(bytes, codePage, &lossy);
  const auto isBad = [&](wchar_t c) {
    return !isXmlChar(static_cast<unsigned long>(c)) || (lossy && c == kReplacement);
  };
  const auto bad = std::find_if(text.begin(), text.end(), isBad);
  if (bad == text.end() && !lossy) {
    out = toUtf8(text);
    return true;
  }
  const std::wstring_view before(text.data(), static_cast<std::size_t>(bad - text.begin()));
  error.decoded = true;
  error.offset = toUtf8(before).size();
  error.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), L'\n'));
  error.what = isWide ? "bytes that aren't valid UTF-16 text of an XML file"
                      : "bytes that have no meaning in code page " + std::to_string(codePage);
  return false;
}

constexpr std::uint64_t kHighBits = 0x8080808080808080u;

/// Length of the valid sequence of a character beyond ASCII at `at`, 0 when there is none.
std::size_t sequenceLength(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint8_t>(at + i < text.size() ? text[at + i] : 0);
  };
  const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
  const std::uint8_t lead = byte(0);
  if (lead >= 0xC2 && lead < 0xE0) return follows(1) ? 2 : 0;
  if (lead >= 0xE0 && lead < 0xF0) {
    if (!follows(1) || !follows(2)) return 0;
    const unsigned code = (lead & 0x0Fu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
    return code >= 0x800 && isXmlChar(code) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead < 0xF5) {
    if (!follows(1) || !follows(2) || !follows(3)) return 0;
    const unsigned code =
        (lead & 0x07u) << 18 | (byte(1) & 0x3Fu) << 12 | (byte(2) & 0x3Fu) << 6 | (byte(3) & 0x3Fu);
    return code >= 0x10000 && isXmlChar(code) ? 4 : 0;
  }
  return 0;
}

/// True when the eight bytes hold a byte below 0x20 or above 0x7F (line ends included, to be looked at one by
/// one).
bool needsLook(std::uint64_t block) {
  return ((block | (block - 0x2020202020202020u)) & kHighBits) != 0;
}

}  // namespace

std::size_t findBadXmlText(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (at + 8 <= text.size()) {
      std::uint64_t block;
      std::memcpy(&block, text.data() + at, sizeof block);
      if (!needsLook(block)) {
        at += 8;
        continue;
      }
    }
    const auto byte = static_cast<std::uint8_t>(text[at]);
    if (byte >= 0x80) {
      const std::size_t length = sequenceLength(text, at);
      if (length == 0) return at;
      at += length;
    } else if (!isXmlChar(byte)) {
      return at;
    } else {
      ++at;
    }
  }
  return std::string_view::npos;
}

bool decodeXmlSource(std::string bytes, XmlSource& source, XmlError& error) {
  std::size_t skip = 0;
  const std::uint32_t codePage = encodingOf(bytes, skip, error);
  if (codePage == 0) return false;
  source.converted = codePage != kUtf8CodePage;
  source.skip = source.converted ? 0 : skip;
  if (source.converted) return convert(std::string_view(bytes).substr(skip), codePage, source.buffer, error);
  source.buffer = std::move(bytes);
  return true;
}

bool readXmlSource(const std::filesystem::path& path, const XmlLimits& limits, XmlSource& source,
                   XmlError& error) {
  error = {};
  std::string bytes;
  const FileStatus status = readFile(path, bytes, limits.bytes);
  if (status && decodeXmlSource(std::move(bytes), source, error)) return true;
  error.path = path;
  if (!status) error.what = status.message();
  return false;
}

bool isXmlName(std::string_view name) {
  if (name.empty() || !isXmlNameByte(name.front(), true)) return false;
  return std::all_of(name.begin(), name.end(), [](char c) { return isXmlNameByte(c, false); });
}

std::size_t readXmlReference(std::string_view text, unsigned long& code) {
  struct Entity {
    std::string_view text;
    char character;
  };
  static constexpr Entity kEntities[] = {
      {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  for (const Entity& entity : kEntities) {
    if (!text.starts_with(entity.text)) continue;
    code = static_cast<unsigned char>(entity.character);
    return entity.text.size();
  }
  if (!text.starts_with("&#")) return 0;
  const bool isHex = text.size() > 2 && text[2] == 'x';
  const std::size_t firstDigit = isHex ? 3 : 2;
  code = 0;
  std::size_t i = firstDigit;
  for (; i < text.size() && text[i] != ';'; ++i) {
    const char c = text[i];
    const bool isDigit = c >= '0' && c <= '9';
    const bool isLetter = isHex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'));
    if (!isDigit && !isLetter) return 0;
    code = code * (isHex ? 16 : 10) + static_cast<unsigned long>(isDigit ? c - '0' : (c | 0x20) - 'a' + 10);
    if (code > 0x10FFFF) return 0;
  }
  return i < text.size() && i > firstDigit && isXmlChar(code) ? i + 1 : 0;
}

}  // namespace platform
