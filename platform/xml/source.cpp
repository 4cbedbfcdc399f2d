#include "platform/xml/source.h"

#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/text/cstring.h"

namespace platform {
namespace {

/// Declared names, lower case, and the converter's names for them. GB2312 stands for its superset, as files
/// made on Chinese systems declare the one and hold the other.
struct Charset {
  std::string_view declared;
  const char* converter;
};
constexpr const char* kUtf8 = "UTF-8";
constexpr Charset kCharsets[] = {
    {"utf-8", kUtf8},
    {"utf8", kUtf8},
    {"us-ascii", kUtf8},
    {"ascii", kUtf8},
    {"gb2312", "GBK"},
    {"gbk", "GBK"},
    {"gb_2312-80", "GBK"},
    {"cp936", "GBK"},
    {"windows-936", "GBK"},
    {"x-gbk", "GBK"},
    {"gb18030", "GB18030"},
    {"big5", "CP950"},
    {"big5-hkscs", "BIG5-HKSCS"},
    {"cp950", "CP950"},
    {"windows-950", "CP950"},
    {"shift_jis", "CP932"},
    {"shift-jis", "CP932"},
    {"sjis", "CP932"},
    {"x-sjis", "CP932"},
    {"windows-31j", "CP932"},
    {"cp932", "CP932"},
    {"euc-jp", "EUC-JP"},
    {"euc-kr", "CP949"},
    {"ks_c_5601-1987", "CP949"},
    {"cp949", "CP949"},
    {"windows-949", "CP949"},
    {"koi8-r", "KOI8-R"},
    {"windows-874", "CP874"},
    {"windows-1250", "CP1250"},
    {"windows-1251", "CP1251"},
    {"windows-1252", "CP1252"},
    {"windows-1253", "CP1253"},
    {"windows-1254", "CP1254"},
    {"windows-1255", "CP1255"},
    {"windows-1256", "CP1256"},
    {"windows-1257", "CP1257"},
    {"windows-1258", "CP1258"},
    {"iso-8859-1", "ISO-8859-1"},
    {"latin1", "ISO-8859-1"},
    {"iso-8859-2", "ISO-8859-2"},
    {"iso-8859-3", "ISO-8859-3"},
    {"iso-8859-4", "ISO-8859-4"},
    {"iso-8859-5", "ISO-8859-5"},
    {"iso-8859-6", "ISO-8859-6"},
    {"iso-8859-7", "ISO-8859-7"},
    {"iso-8859-8", "ISO-8859-8"},
    {"iso-8859-9", "ISO-8859-9"},
    {"iso-8859-10", "ISO-8859-10"},
    {"iso-8859-11", "ISO-8859-11"},
    {"iso-8859-13", "ISO-8859-13"},
    {"iso-8859-14", "ISO-8859-14"},
    {"iso-8859-15", "ISO-8859-15"},
    {"iso-8859-16", "ISO-8859-16"},
    // An 8-bit declaration that reads as UTF-16 can't be meant: the file was converted and kept its first
    // line.
    {"utf-16", kUtf8},
    {"utf-16le", kUtf8},
    {"utf-16be", kUtf8},
    {"unicode", kUtf8},
};

constexpr std::size_t kDeclarationLength = 512;

const char* converterFor(std::string_view declared) {
  for (const Charset& row : kCharsets)
    if (equalNoCase(row.declared, declared)) return row.converter;
  return nullptr;
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

struct IconvCloser {
  void operator()(void* handle) const { iconv_close(handle); }
};

bool convert(std::string_view bytes, const char* from, std::string& out, XmlError& error) {
  iconv_t opened = iconv_open(kUtf8, from);
  if (opened == reinterpret_cast<iconv_t>(-1)) {
    error.what = std::string("the converter for ") + from + " is missing on this system";
    return false;
  }
  const std::unique_ptr<void, IconvCloser> handle(opened);
  std::array<char, 65536> block;
  char* in = const_cast<char*>(bytes.data());  // iconv's signature; it reads only
  std::size_t left = bytes.size();
  while (left > 0) {
    char* to = block.data();
    std::size_t room = block.size();
    const std::size_t result = iconv(handle.get(), &in, &left, &to, &room);
    out.append(block.data(), block.size() - room);
    if (result == static_cast<std::size_t>(-1) && errno != E2BIG) {
      error.offset = bytes.size() - left;
      error.what = std::string("bytes that aren't valid ") + from;
      return false;
    }
  }
  return true;
}

/// UTF-16 is told by its mark or by the zero byte beside the first `<`.
const char* utf16Form(std::string_view bytes, std::size_t& skip) {
  skip = 0;
  if (bytes.size() < 2) return nullptr;
  const auto first = static_cast<std::uint8_t>(bytes[0]), second = static_cast<std::uint8_t>(bytes[1]);
  if (first == '<' && second == 0) return "UTF-16LE";
  if (first == 0 && second == '<') return "UTF-16BE";
  skip = 2;
  if (first == 0xFF && second == 0xFE) return "UTF-16LE";
  if (first == 0xFE && second == 0xFF) return "UTF-16BE";
  return nullptr;
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

namespace {

/// The converter for the bytes, and the length of their mark. Null when the declared encoding isn't known.
const char* encodingOf(std::string_view bytes, std::size_t& skip, XmlError& error) {
  if (const char* wide = utf16Form(bytes, skip)) return wide;
  skip = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  const std::string_view declared = declaredEncoding(bytes.substr(skip));
  if (skip > 0 || declared.empty()) return kUtf8;
  const char* from = converterFor(declared);
  if (from) return from;
  error.what = "unknown encoding \"" + std::string(declared) + "\"";
  error.line = 1;
  return nullptr;
}

std::size_t lineOf(std::string_view bytes, std::size_t offset) {
  const std::string_view before = bytes.substr(0, offset);
  return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

/// Puts the converted text in the place of `source`, whose bytes are not UTF-8.
bool convertSource(std::string_view bytes, std::size_t skip, const char* from, XmlSource& source,
                   XmlError& error) {
  std::string text;
  if (!convert(bytes.substr(skip), from, text, error)) {
    error.offset += skip;
    error.line = lineOf(bytes, error.offset);
    return false;
  }
  source.buffer = XmlBuffer(text.size());
  std::memcpy(source.buffer.data(), text.data(), text.size());
  source.skip = 0;
  source.converted = true;
  return true;
}

class FileHandle {
 public:
  explicit FileHandle(const std::filesystem::path& path)
      : handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~FileHandle() {
    if (handle_ >= 0) ::close(handle_);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  operator int() const { return handle_; }

 private:
  int handle_;
};

/// False with `error` set when the file can't be read or is larger than `limit`.
bool readFile(const std::filesystem::path& path, std::size_t limit, XmlBuffer& buffer, XmlError& error) {
  const FileHandle file(path);
  struct stat status;
  if (file < 0 || ::fstat(file, &status) != 0) {
    error.what = std::strerror(errno);
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    error.what = "not a file";
    return false;
  }
  if (static_cast<std::uintmax_t>(status.st_size) > limit) {
    error.what = "the file is larger than " + std::to_string(limit) + " bytes";
    return false;
  }
  buffer = XmlBuffer(static_cast<std::size_t>(status.st_size));
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ::ssize_t count = ::read(file, buffer.data() + done, buffer.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      error.what = count < 0 ? std::strerror(errno) : "the file became shorter while it was read";
      return false;
    }
    done += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

bool decodeXmlSource(std::string_view bytes, XmlSource& source, XmlError& error) {
  std::size_t skip = 0;
  const char* from = encodingOf(bytes, skip, error);
  if (!from) return false;
  if (from != kUtf8) return convertSource(bytes, skip, from, source, error);
  source.buffer = XmlBuffer(bytes.size());
  std::memcpy(source.buffer.data(), bytes.data(), bytes.size());
  source.skip = skip;
  return true;
}

bool readXmlSource(const std::filesystem::path& path, const XmlLimits& limits, XmlSource& source,
                   XmlError& error) {
  error = {};
  XmlBuffer buffer;
  std::size_t skip = 0;
  bool good = readFile(path, limits.bytes, buffer, error);
  const char* from = good ? encodingOf(buffer.view(), skip, error) : nullptr;
  if (from == kUtf8) {
    source.buffer = std::move(buffer);
    source.skip = skip;
  } else if (from) {
    good = convertSource(buffer.view(), skip, from, source, error);
  }
  if (good && from) return true;
  error.path = path;
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
