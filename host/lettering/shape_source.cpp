// Shape files as text: `*number,bytes,name`, then the bytes, separated by commas; parentheses only group. A
// number with a leading 0 is hexadecimal; a `-` may stand before it. `;` begins a comment.
#include <algorithm>

#include "host/lettering/internal/shape_source.h"

namespace {

constexpr int kGreatestNumber = 65535;
constexpr std::size_t kMostBytes = 65535;  // of one shape, by the compiled form
constexpr int kShapeOrder = 7;

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool isSameNoCase(std::string_view a, std::string_view b) {
  const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return upper(x) == upper(y); });
}

/// A number of at most seven digits.
bool readNumber(std::string_view text, int& value) {
  constexpr std::size_t kMostDigits = 7;
  text = trimmed(text);
  const bool isNegative = !text.empty() && text.front() == '-';
  if (isNegative) text = trimmed(text.substr(1));
  const int base = text.size() > 1 && text.front() == '0' ? 16 : 10;
  if (text.empty() || text.size() > kMostDigits) return false;
  value = 0;
  for (char c : text) {
    const int digit = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                             : base;
    if (digit >= base) return false;
    value = value * base + digit;
  }
  if (isNegative) value = -value;
  return true;
}

}  // namespace

class KvLtShapeSource {
 public:
  explicit KvLtShapeSource(KvLtShapeError& error) : error_(error), file_(std::make_unique<KvLtShapeFile>()) {}

  std::unique_ptr<KvLtShapeFile> read(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      std::string_view line = text.substr(0, end);
      text.remove_prefix(std::min(end + 1, text.size()));
      ++error_.line;
      line = trimmed(line.substr(0, line.find(';')));
      if (line.empty()) continue;
      if (!(line.front() == '*' ? header(line.substr(1)) : bytes(line))) return nullptr;
    }
    if (!finishShape()) return nullptr;
    if (file_->shapes_.empty()) {
      fail("no shape begins here: a line `*number,bytes,name` expected");
      return nullptr;
    }
    error_ = {};
    return std::move(file_);
  }

 private:
  bool fail(const std::string& text) {
    error_.text = text;
    return false;
  }

  static std::vector<std::string_view> split(std::string_view line, std::size_t most) {
    std::vector<std::string_view> parts;
    while (parts.size() + 1 < most) {
      const std::size_t comma = line.find(',');
      if (comma == line.npos) break;
      parts.push_back(trimmed(line.substr(0, comma)));
      line.remove_prefix(comma + 1);
    }
    parts.push_back(trimmed(line));
    return parts;
  }

  bool header(std::string_view line) {
    if (!finishShape()) return false;
    const std::size_t wordEnd = std::min(line.find_first_of(", \t"), line.size());
    if (isSameNoCase(line.substr(0, wordEnd), "BIGFONT")) return bigFont(line.substr(wordEnd));
    const auto parts = split(line, 3);
    if (parts.size() != 3) return fail("`*number,bytes,name` expected");
    if (isSameNoCase(parts[0], "UNIFONT")) {
      file_->kind_ = KvLtShapeFile::Kind::Unicode;
      shape_ = {0, std::string(parts[2]), {}};
    } else {
      int number = 0;
      if (!readNumber(parts[0], number) || number < 0 || number > kGreatestNumber)
        return fail("\"" + std::string(parts[0]) + "\" is no number of a shape");
      shape_ = {number, std::string(parts[2]), {}};
    }
    isOpen_ = true;
    return true;
  }

  bool bigFont(std::string_view line) {
    file_->kind_ = KvLtShapeFile::Kind::BigFont;
    std::vector<int> numbers;
    for (std::string_view part : split(line, 512)) {
      int number = 0;
      // The word and the first number are separated by a blank.
      if (part.empty()) continue;
      if (!readNumber(part, number)) return fail("\"" + std::string(part) + "\" is no number");
      numbers.push_back(number);
    }
    if (numbers.size() < 4 || numbers.size() % 2 != 0)
      return fail("`*BIGFONT count,ranges,first,last` expected");
    for (std::size_t i = 2; i + 1 < numbers.size(); i += 2)
      file_->leadBytes_.emplace_back(numbers[i], numbers[i + 1]);
    return true;
  }

  bool bytes(std::string_view line) {
    if (!isOpen_) return fail("a line `*number,bytes,name` expected first");
    std::string plain(line);
    for (char& c : plain)
      if (c == '(' || c == ')') c = ' ';
    std::string_view rest = plain;
    while (!rest.empty()) {
      const std::size_t comma = std::min(rest.find(','), rest.size());
      const std::string_view part = trimmed(rest.substr(0, comma));
      rest.remove_prefix(std::min(comma + 1, rest.size()));
      if (part.empty()) continue;
      int value = 0;
      if (!readNumber(part, value)) return fail("\"" + std::string(part) + "\" is no number");
      if (!put(value)) return false;
    }
    return true;
  }

  /// Another shape's number takes two bytes in the fonts that have such numbers.
  bool put(int value) {
    std::vector<std::uint8_t>& code = shape_.code;
    if (code.size() + 2 > kMostBytes) return fail("a shape of more than 65,535 bytes");
    const bool isUnicode = file_->kind_ == KvLtShapeFile::Kind::Unicode && shape_.number != 0;
    const bool isPart = file_->kind_ == KvLtShapeFile::Kind::BigFont;
    const bool isNumber = (isUnicode && endsInOrder(1)) || (isPart && value > 255 && endsInOrder(2));
    if (isNumber && value >= 0 && value <= kGreatestNumber) {
      code.push_back(static_cast<std::uint8_t>(value >> 8));
      code.push_back(static_cast<std::uint8_t>(value & 255));
      return true;
    }
    if (value < -128 || value > 255) return fail(std::to_string(value) + " doesn't fit into a byte");
    code.push_back(static_cast<std::uint8_t>(value & 255));
    return true;
  }

  /// Whether the bytes so far end in the order for another shape (`width` 2: and a 0), and not in the bytes
  /// of another order.
  bool endsInOrder(std::size_t width) const {
    const std::vector<std::uint8_t>& code = shape_.code;
    std::size_t at = 0;
    const auto skipPairs = [&](std::size_t size) {
      while (at + 1 < code.size() && (code[at] != 0 || code[at + 1] != 0)) at += size;
      at += 2;
    };
    while (at < code.size()) {
      const std::uint8_t order = code[at++];
      if (order == kShapeOrder) {
        if (at == code.size()) return width == 1;
        if (width == 2 && at + 1 == code.size()) return code[at] == 0;
        const bool isPart = file_->kind_ == KvLtShapeFile::Kind::BigFont && code[at] == 0;
        at += file_->kind_ == KvLtShapeFile::Kind::Unicode ? 2u : isPart ? 7u : 1u;
        continue;
      }
      if (order == 3 || order == 4) at += 1;
      if (order == 8 || order == 10) at += 2;
      if (order == 11) at += 5;
      if (order == 12) at += 3;
      if (order == 9) skipPairs(2);
      if (order == 13) skipPairs(3);
    }
    return false;
  }

  bool finishShape() {
    if (!isOpen_) return true;
    isOpen_ = false;
    if (shape_.number != 0) {
      file_->shapes_[shape_.number] = std::move(shape_);
      return true;
    }
    // A font's own record: above, below, modes; of big fonts of parts then the cell's width.
    const std::vector<std::uint8_t>& code = shape_.code;
    if (code.size() < 3 || code[0] == 0)
      return fail("a font's record begins with its height, depth and modes");
    file_->name_ = shape_.name;
    file_->above_ = code[0];
    file_->below_ = code[1];
    file_->modes_ = code[2];
    if (file_->kind_ == KvLtShapeFile::Kind::BigFont && code.size() > 4) file_->cellWidth_ = code[3];
    return true;
  }

  KvLtShapeError& error_;
  std::unique_ptr<KvLtShapeFile> file_;
  KvLtShape shape_;
  bool isOpen_ = false;
};

std::unique_ptr<KvLtShapeFile> kvltParseShapeSource(std::string_view text, KvLtShapeError& error) {
  error = {};
  return KvLtShapeSource(error).read(text);
}
