#include "platform/text/codepage.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/env/environment.h"
#include "platform/text/codepage_list.h"
#include "platform/text/utf.h"

namespace platform {
namespace {

/// An open iconv conversion; `open()` is false when a name is unknown.
class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  ~Converter() {
    if (open()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  bool open() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  void reset() { iconv(handle_, nullptr, nullptr, nullptr, nullptr); }
  /// Moves the four arguments; 0 when all went through, otherwise errno.
  int run(const char*& in, std::size_t& inLeft, char*& out, std::size_t& outLeft) {
    // iconv's signature lacks a const; it doesn't write to its input.
    char* source = const_cast<char*>(in);
    const std::size_t result = iconv(handle_, &source, &inLeft, &out, &outLeft);
    in = source;
    return result == static_cast<std::size_t>(-1) ? errno : 0;
  }
  void flush(char*& out, std::size_t& outLeft) { iconv(handle_, nullptr, nullptr, &out, &outLeft); }

 private:
  iconv_t handle_;
};

/// The one character that `unit` stands for; 0 when it stands for none or for several.
wchar_t decodeUnit(Converter& converter, std::string_view unit) {
  std::array<wchar_t, 4> result{};
  const char* in = unit.data();
  std::size_t inLeft = unit.size();
  char* out = reinterpret_cast<char*>(result.data());
  std::size_t outLeft = sizeof result;
  converter.reset();
  const int error = converter.run(in, inLeft, out, outLeft);
  if (error != 0 || inLeft != 0) return 0;
  converter.flush(out, outLeft);
  return sizeof result - outLeft == sizeof(wchar_t) ? result[0] : L'\0';
}

/// Both directions of one page of one or two bytes a character. 0 stands for "none".
struct Tables {
  std::vector<char16_t> wide;  ///< by byte, or by lead byte * 256 + trail byte
  std::array<bool, 256> leads{};
  std::array<std::unique_ptr<std::array<std::uint16_t, 256>>, 256> narrow;

  void add(unsigned code, wchar_t character, bool keepNarrow) {
    if (character <= 0 || character > 0xFFFF) return;
    wide[code] = static_cast<char16_t>(character);
    auto& row = narrow[static_cast<std::size_t>(character) >> 8];
    if (!row) row = std::make_unique<std::array<std::uint16_t, 256>>();
    auto& place = (*row)[static_cast<std::size_t>(character) & 0xFF];
    if (place == 0 || !keepNarrow) place = static_cast<std::uint16_t>(code);
  }
  unsigned codeOf(wchar_t character) const {
    if (character < 0 || character > 0xFFFF) return 0;
    const auto& row = narrow[static_cast<std::size_t>(character) >> 8];
    return row ? (*row)[static_cast<std::size_t>(character) & 0xFF] : 0;
  }
};

bool inLeadRange(unsigned byte, const CodePage& page) {
  for (const ByteRange& range : page.lead)
    if (byte >= range.first && byte <= range.last && range.first != 0) return true;
  return false;
}

std::string bytesOf(unsigned code) {
  if (code < 0x100) return std::string(1, static_cast<char>(code));
  return {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
}

/// Where two codes stand for one character, the one that iconv writes is the page's own choice.
void settleDuplicate(Tables& tables, Converter& encoder, wchar_t character, unsigned second) {
  std::array<char, 8> bytes{};
  const char* in = reinterpret_cast<const char*>(&character);
  std::size_t inLeft = sizeof character;
  char* out = bytes.data();
  std::size_t outLeft = bytes.size();
  encoder.reset();
  if (encoder.run(in, inLeft, out, outLeft) != 0) return;
  if (bytesOf(second) == std::string_view(bytes.data(), bytes.size() - outLeft))
    tables.add(second, character, false);
}

void addFromIconv(Tables& tables, const CodePage& page) {
  Converter decoder("WCHAR_T", page.charset);
  Converter encoder(page.charset, "WCHAR_T");
  if (!decoder.open() || !encoder.open()) return;
  const auto take = [&](unsigned code) {
    const wchar_t character = decodeUnit(decoder, bytesOf(code));
    if (character < 0x80) return;
    const bool second = tables.codeOf(character) != 0;
    tables.add(code, character, true);
    if (second) settleDuplicate(tables, encoder, character, code);
  };
  for (unsigned byte = 0x80; byte < 0x100; ++byte) {
    if (!inLeadRange(byte, page)) {
      take(byte);
      continue;
    }
    for (unsigned trail = 0x31; trail < 0xFF; ++trail) take(byte << 8 | trail);
  }
}

/// User-defined characters run through the private use area in the order of their codes.
void addUserDefined(Tables& tables, std::uint32_t number) {
  for (const UserArea& area : kUserAreas) {
    if (area.codePage != number) continue;
    wchar_t character = static_cast<wchar_t>(area.start);
    for (unsigned lead = area.firstLead; lead <= area.lastLead; ++lead)
      for (const ByteRange& range : area.trail)
        for (unsigned trail = range.first; trail <= range.last && trail != 0; ++trail, ++character) {
          const unsigned code = lead << 8 | trail;
          if (tables.wide[code] == 0) tables.add(code, character, true);
        }
  }
}

void addSingles(Tables& tables, const CodePage& page) {
  for (const PrivateByte& entry : kPrivateBytes)
    if (entry.codePage == page.number) tables.add(entry.byte, static_cast<wchar_t>(entry.character), true);
  for (unsigned byte = 0x80; byte < 0xA0; ++byte)
    if (tables.wide[byte] == 0 && !inLeadRange(byte, page))
      tables.add(byte, static_cast<wchar_t>(byte), true);
}

const Tables& tablesOf(const CodePage& page) {
  static std::array<std::once_flag, std::size(kCodePages)> built;
  static std::array<std::unique_ptr<Tables>, std::size(kCodePages)> cache;
  const auto index = static_cast<std::size_t>(&page - kCodePages);
  std::call_once(built[index], [&] {
    auto tables = std::make_unique<Tables>();
    tables->wide.resize(page.lead[0].first != 0 ? 0x10000 : 0x100);
    for (unsigned byte = 0; byte < 0x100; ++byte) tables->leads[byte] = inLeadRange(byte, page);
    addFromIconv(*tables, page);
    addUserDefined(*tables, page.number);
    if (page.number != 20127) addSingles(*tables, page);
    cache[index] = std::move(tables);
  });
  return *cache[index];
}

const CodePage* findPage(std::uint32_t number) {
  for (const CodePage& page : kCodePages)
    if (page.number == number) return &page;
  return nullptr;
}

std::uint32_t resolved(std::uint32_t codePage) {
  return codePage <= 3 ? Environment::current().systemCodePage : codePage;
}

bool isAscii(std::string_view bytes) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t block = 0;
  for (; bytes.size() >= sizeof block; bytes.remove_prefix(sizeof block)) {
    std::memcpy(&block, bytes.data(), sizeof block);
    if (block & kHighBits) return false;
  }
  for (const char c : bytes)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

std::wstring widened(std::string_view bytes) {
  std::wstring result(bytes.size(), L'\0');
  std::size_t at = 0;
  // In blocks of a known size, which the compiler turns into one instruction.
  for (; at + 8 <= bytes.size(); at += 8)
    for (std::size_t i = 0; i < 8; ++i) result[at + i] = static_cast<unsigned char>(bytes[at + i]);
  for (; at < bytes.size(); ++at) result[at] = static_cast<unsigned char>(bytes[at]);
  return result;
}

std::wstring decodeByTable(std::string_view bytes, const CodePage& page, bool& lossy) {
  const Tables& tables = tablesOf(page);
  const char16_t* const wide = tables.wide.data();
  const auto& leads = tables.leads;
  std::wstring result(bytes.size(), L'\0');  // a character takes at least a byte
  wchar_t* out = result.data();
  const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* const end = in + bytes.size();
  while (in != end) {
    const unsigned byte = *in++;
    if (byte < 0x80) {
      *out++ = static_cast<wchar_t>(byte);
      continue;
    }
    char16_t character = 0;
    if (!leads[byte]) {
      character = wide[byte];
    } else if (in != end) {
      const unsigned trail = *in;
      character = wide[byte << 8 | trail];
      if (character != 0 || trail >= 0x80) ++in;
    }
    if (character == 0) {
      lossy = true;
      character = kReplacement;
    }
    *out++ = static_cast<wchar_t>(character);
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
  return result;
}

std::string encodeByTable(std::wstring_view text, const CodePage& page, bool& lossy) {
  const Tables& tables = tablesOf(page);
  std::string result(text.size() * 2, '\0');
  char* out = result.data();
  for (const wchar_t character : text) {
    if (character >= 0 && character < 0x80) {
      *out++ = static_cast<char>(character);
      continue;
    }
    const unsigned code = tables.codeOf(character);
    lossy = lossy || code == 0;
    if (code >= 0x100) *out++ = static_cast<char>(code >> 8);
    *out++ = code == 0 ? '?' : static_cast<char>(code & 0xFF);
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
  return result;
}

/// Walks through what iconv refuses: `onBad` handles the unit at `in` and says how many bytes of it are done.
template <class Sink, class OnBad>
void convertStream(Converter& converter, std::string_view bytes, Sink&& sink, OnBad&& onBad) {
  std::array<char, 4096> buffer;
  const char* in = bytes.data();
  std::size_t inLeft = bytes.size();
  while (inLeft > 0) {
    char* out = buffer.data();
    std::size_t outLeft = buffer.size();
    const int error = converter.run(in, inLeft, out, outLeft);
    sink(std::string_view(buffer.data(), buffer.size() - outLeft));
    if (error == EILSEQ || error == EINVAL) {
      converter.reset();
      const std::size_t done = std::min(onBad(in), inLeft);
      in += done;
      inLeft -= done;
    } else if (error != 0 && error != E2BIG) {
      break;
    }
  }
  char* out = buffer.data();
  std::size_t outLeft = buffer.size();
  converter.flush(out, outLeft);
  sink(std::string_view(buffer.data(), buffer.size() - outLeft));
}

std::wstring decodeStream(Converter& converter, std::string_view bytes, bool& lossy) {
  std::wstring result;
  convertStream(
      converter, bytes,
      [&](std::string_view part) {
        const std::size_t before = result.size();
        result.resize(before + part.size() / sizeof(wchar_t));
        part.copy(reinterpret_cast<char*>(result.data() + before), part.size());
      },
      [&](const char*) {
        lossy = true;
        result.push_back(kReplacement);
        return std::size_t{1};
      });
  return result;
}

std::string encodeStream(Converter& converter, std::wstring_view text, bool& lossy) {
  std::string result;
  const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
  convertStream(
      converter, bytes, [&](std::string_view part) { result += part; },
      [&](const char*) {
        lossy = true;
        result.push_back('?');
        return sizeof(wchar_t);
      });
  return result;
}

bool hasLoneSurrogate(std::wstring_view text) {
  for (const wchar_t c : text)
    if (c < 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return true;
  return false;
}

}  // namespace

bool isCodePage(std::uint32_t codePage) {
  const std::uint32_t number = resolved(codePage);
  return number == kUtf8CodePage || findPage(number) != nullptr;
}

std::string toCodePage(std::wstring_view text, std::uint32_t codePage, bool* lossy) {
  bool lost = false;
  std::string result;
  const std::uint32_t number = resolved(codePage);
  if (number == kUtf8CodePage) {
    result = toUtf8(text);
    lost = hasLoneSurrogate(text);
  } else if (const CodePage* page = findPage(number); page && page->stream) {
    Converter converter(page->charset, "WCHAR_T");
    if (converter.open()) result = encodeStream(converter, text, lost);
  } else {
    result = encodeByTable(text, page ? *page : *findPage(20127), lost);
  }
  if (lossy) *lossy = lost;
  return result;
}

std::wstring fromCodePage(std::string_view bytes, std::uint32_t codePage, bool* lossy) {
  bool lost = false;
  std::wstring result;
  const std::uint32_t number = resolved(codePage);
  if (isAscii(bytes)) {
    // Every page here agrees with ASCII, and no table need be built for it.
    result = widened(bytes);
  } else if (number == kUtf8CodePage) {
    result = fromUtf8(bytes);
    lost = !isUtf8(bytes);
  } else if (const CodePage* page = findPage(number); page && page->stream) {
    Converter converter("WCHAR_T", page->charset);
    if (converter.open()) result = decodeStream(converter, bytes, lost);
  } else {
    result = decodeByTable(bytes, page ? *page : *findPage(20127), lost);
  }
  if (lossy) *lossy = lost;
  return result;
}

std::optional<std::wstring> fromCharset(std::string_view bytes, const char* charset, bool* lossy) {
  Converter converter("WCHAR_T", charset);
  if (!converter.open()) return std::nullopt;
  bool lost = false;
  std::wstring result = decodeStream(converter, bytes, lost);
  if (lossy) *lossy = lost;
  return result;
}

bool isLeadByte(unsigned char byte, std::uint32_t codePage) {
  const CodePage* page = findPage(resolved(codePage));
  return page && !page->stream && inLeadRange(byte, *page);
}

std::optional<std::uint32_t> codePageFromDrawingName(std::string_view name) {
  for (const DrawingName& entry : kDrawingNames)
    if (equalNoCase(name, entry.name)) return entry.codePage;
  for (const std::string_view prefix : {"ANSI_", "DOS", "ISO8859-", "ISO_8859-"}) {
    if (name.size() <= prefix.size() || !equalNoCase(name.substr(0, prefix.size()), prefix)) continue;
    const std::string_view digits = name.substr(prefix.size());
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    if (prefix.front() == 'I') number += kIsoBase;
    if (number > 3 && isCodePage(number)) return number;
  }
  return std::nullopt;
}

std::string drawingNameOfCodePage(std::uint32_t codePage) {
  const std::uint32_t number = resolved(codePage);
  for (const DrawingName& entry : kDrawingNames)
    if (entry.written && entry.codePage == number) return entry.name;
  const CodePage* page = findPage(number);
  if (!page || page->drawing == DrawingFamily::None) return "ANSI_1252";
  if (page->drawing == DrawingFamily::Iso) return "ISO8859-" + std::to_string(number - kIsoBase);
  return (page->drawing == DrawingFamily::Dos ? "DOS" : "ANSI_") + std::to_string(number);
}

}  // namespace platform

BOOL IsDBCSLeadByte(unsigned char byte) {
  return platform::isLeadByte(byte, platform::kSystemCodePage) ? 1 : 0;
}
