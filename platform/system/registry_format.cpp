#include "platform/system/internal/registry_format.h"

#include <charconv>

#include "platform/text/utf.h"

namespace platform {
namespace {

constexpr std::string_view kBlank = " \t\r\v\f";

struct Escape {
  char letter;
  char character;
};
constexpr Escape kEscapes[] = {{'\\', '\\'}, {'"', '"'}, {'n', '\n'}, {'r', '\r'}, {'0', '\0'}};

/// Takes a quoted text from the front of `line`; false when none stands there.
bool takeQuoted(std::string_view& line, std::string& text) {
  if (!line.starts_with('"')) return false;
  text.clear();
  for (std::size_t at = 1; at < line.size(); ++at) {
    char c = line[at];
    if (c == '"') {
      line.remove_prefix(at + 1);
      return true;
    }
    if (c == '\\') {
      const char letter = ++at < line.size() ? line[at] : ' ';
      const Escape* found = nullptr;
      for (const Escape& escape : kEscapes)
        if (escape.letter == letter) found = &escape;
      if (!found) return false;
      c = found->character;
    }
    text.push_back(c);
  }
  return false;
}

std::string inQuotes(std::wstring_view text) {
  std::string result = "\"";
  for (const char c : toUtf8(text)) {
    const Escape* found = nullptr;
    for (const Escape& escape : kEscapes)
      if (escape.character == c) found = &escape;
    if (found)
      result += {'\\', found->letter};
    else
      result.push_back(c);
  }
  return result + "\"";
}

bool take(std::string_view& line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return false;
  line.remove_prefix(prefix.size());
  return true;
}

template <class Number>
bool takeHex(std::string_view& line, std::size_t most, Number& number) {
  const std::string_view digits = line.substr(0, most);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (error != std::errc()) return false;
  line.remove_prefix(static_cast<std::size_t>(end - digits.data()));
  return true;
}

const char* parseTexts(std::string_view line, std::string& bytes) {
  std::string text;
  while (!line.empty()) {
    if (!takeQuoted(line, text)) return "expected texts in quotes, separated by commas";
    bytes += toUtf16Bytes(fromUtf8(text)) + std::string(2, '\0');
    if (line.empty()) break;
    if (!take(line, ",") || line.empty()) return "expected a comma and a further text";
  }
  bytes.append(2, '\0');
  return nullptr;
}

const char* parseHex(std::string_view line, RegistryValue& value) {
  std::uint32_t type = 0;
  if (!takeHex(line, 8, type) || !take(line, "):")) return "expected hex(type):";
  value.type = type;
  while (!line.empty()) {
    unsigned byte = 0;
    if (!takeHex(line, 2, byte)) return "expected bytes of two hexadecimal digits, separated by commas";
    value.bytes.push_back(static_cast<char>(byte));
    if (line.empty()) break;
    if (!take(line, ",") || line.empty()) return "expected a comma and a further byte";
  }
  return nullptr;
}

const char* parseValue(std::string_view line, RegistryValue& value) {
  std::string text;
  const bool expand = take(line, "expand:");
  if (expand || line.starts_with('"')) {
    if (!takeQuoted(line, text) || !line.empty()) return "expected one text in quotes";
    value = {expand ? kRegistryExpandText : kRegistryText, toUtf16Bytes(fromUtf8(text))};
    return nullptr;
  }
  if (take(line, "dword:")) {
    std::uint32_t number = 0;
    if (!takeHex(line, 8, number) || !line.empty()) return "expected up to eight hexadecimal digits";
    value = RegistryValue::ofNumber(number);
    return nullptr;
  }
  if (take(line, "multi:")) {
    value.type = kRegistryTexts;
    return parseTexts(line, value.bytes);
  }
  if (take(line, "hex(")) return parseHex(line, value);
  return "expected \"...\", expand:, dword:, multi: or hex(...):";
}

std::string hexForm(const RegistryValue& value) {
  constexpr char kDigits[] = "0123456789abcdef";
  char type[9] = {};
  std::to_chars(type, type + 8, static_cast<std::uint32_t>(value.type), 16);
  std::string result = std::string("hex(") + type + "):";
  for (const char c : value.bytes) {
    if (result.back() != ':') result.push_back(',');
    result.push_back(kDigits[static_cast<unsigned char>(c) >> 4]);
    result.push_back(kDigits[static_cast<unsigned char>(c) & 15]);
  }
  return result;
}

/// The readable form of a value, or "" for a type that has none.
std::string readableForm(const RegistryValue& value) {
  const std::wstring text =
      fromUtf16Bytes(std::string_view(value.bytes).substr(0, value.bytes.size() & ~std::size_t{1}));
  switch (value.type) {
    case kRegistryText:
      return inQuotes(text);
    case kRegistryExpandText:
      return "expand:" + inQuotes(text);
    case kRegistryNumber: {
      char digits[9];
      char* end = std::to_chars(digits, digits + 8, value.number(), 16).ptr;
      const std::string number(digits, end);
      return "dword:" + std::string(8 - number.size(), '0') + number;
    }
    case kRegistryTexts: {
      std::string result = "multi:";
      for (const CString& part : value.texts())
        result += (result.back() == ':' ? "" : ",") + inQuotes(part.view());
      return result;
    }
    default:
      return {};
  }
}

}  // namespace

std::string_view registryTrimmed(std::string_view line) {
  const std::size_t first = line.find_first_not_of(kBlank);
  if (first == line.npos) return {};
  return line.substr(first, line.find_last_not_of(kBlank) - first + 1);
}

const char* parseRegistryLine(std::string_view line, std::wstring& name, RegistryValue& value) {
  std::string text;
  if (!take(line, "@") && !takeQuoted(line, text)) return "expected a name in quotes, or @";
  name = fromUtf8(text);
  line = registryTrimmed(line);
  if (!take(line, "=")) return "expected = behind the name";
  return parseValue(registryTrimmed(line), value);
}

std::string formatRegistryLine(std::wstring_view name, const RegistryValue& value) {
  const std::string left = (name.empty() ? "@" : inQuotes(name)) + "=";
  const std::string readable = readableForm(value);
  // Bytes that the readable form can't carry (odd lengths, lone surrogates, a missing end) are kept as bytes.
  RegistryValue back;
  const bool same = !readable.empty() && !parseValue(readable, back) && back == value;
  return left + (same ? readable : hexForm(value));
}

}  // namespace platform
