#include "module/data/internal/table_text.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/text/utf.h"
#include "platform/xml/source.h"

namespace mek {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr std::uint64_t everyByte(std::uint8_t byte) {
  return 0x0101010101010101u * byte;
}

/// The high bit of each byte of `block` that ends or marks a value: `<`, `&`, below 0x20, beyond ASCII. Exact
/// for the lowest bit that is set.
std::uint64_t specialBytes(std::uint64_t block) {
  const auto zeroes = [](std::uint64_t x) { return (x - everyByte(0x01)) & ~x; };
  const std::uint64_t control = (block - everyByte(0x20)) & ~block;
  return (zeroes(block ^ everyByte('<')) | zeroes(block ^ everyByte('&')) | control | block) &
         everyByte(0x80);
}

class TableTextReader {
 public:
  TableTextReader(std::string_view text, std::size_t maximumItems, std::deque<RowSet>& sets,
                  std::string& decoded)
      : begin_(text.data()),
        at_(text.data()),
        end_(text.data() + text.size()),
        itemsLeft_(maximumItems),
        sets_(sets),
        decoded_(decoded) {}

  bool read() {
    bool empty = false;
    if (!prolog() || !rootTag(empty)) return false;
    // The rows are checked as they are read; this is all that stands before them.
    if (platform::findBadXmlText({begin_, static_cast<std::size_t>(at_ - begin_)}) != std::string_view::npos)
      return false;
    while (!empty) {
      skipBlanks();
      if (take("</")) {
        if (!take("dataroot")) return false;
        skipBlanks();
        if (!take(">")) return false;
        break;
      }
      if (!row()) return false;
    }
    skipBlanks();
    return at_ == end_ && std::all_of(sets_.begin(), sets_.end(), [](RowSet& set) { return set.complete(); });
  }

 private:
  std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

  bool take(std::string_view word) {
    if (left() < word.size() || std::memcmp(at_, word.data(), word.size()) != 0) return false;
    at_ += word.size();
    return true;
  }

  void skipBlanks() {
    while (at_ != end_ && isBlank(*at_)) ++at_;
  }

  bool prolog() {
    bool empty = false;
    if (take("<?xml") && !attributes("?>", "?>", empty)) return false;
    skipBlanks();
    return true;
  }

  bool rootTag(bool& empty) { return take("<dataroot") && attributes(">", "/>", empty); }

  /// Attributes up to one of two ends; `isSecond` tells which.
  bool attributes(std::string_view end, std::string_view secondEnd, bool& isSecond) {
    std::vector<std::string_view> names;
    while (true) {
      const char* before = at_;
      skipBlanks();
      if (take(end)) return true;
      isSecond = take(secondEnd);
      if (isSecond) return true;
      if (at_ == before || !attribute(names)) return false;
    }
  }

  bool attribute(std::vector<std::string_view>& names) {
    const std::string_view name = nextName();
    if (name.empty() || std::find(names.begin(), names.end(), name) != names.end()) return false;
    names.push_back(name);
    at_ += name.size();
    if (!take("=") || at_ == end_ || (*at_ != '"' && *at_ != '\'')) return false;
    const std::string_view rest(at_ + 1, left() - 1);
    const std::size_t close = rest.find(*at_);
    if (close == std::string_view::npos ||
        rest.substr(0, close).find_first_of("<>&?") != std::string_view::npos)
      return false;
    at_ += close + 2;
    return true;
  }

  std::string_view nextName() const {
    const char* to = at_;
    if (to == end_ || !platform::isXmlNameByte(*to, true)) return {};
    while (to != end_ && platform::isXmlNameByte(*to, false)) ++to;
    return {at_, static_cast<std::size_t>(to - at_)};
  }

  /// Takes `name` when it and `>` or `/>` stand here.
  bool takeTag(std::string_view name, bool& empty) {
    if (left() <= name.size() + 1 || std::memcmp(at_, name.data(), name.size()) != 0) return false;
    const char* behind = at_ + name.size();
    empty = *behind == '/' && behind[1] == '>';
    if (*behind != '>' && !empty) return false;
    at_ = behind + (empty ? 2 : 1);
    return true;
  }

  bool row() {
    if (!take("<")) return false;
    bool empty = false;
    if (!set_ || !takeTag(set_->name, empty)) {
      const std::string_view name = nextName();
      if (!chooseSet(name) || !takeTag(name, empty)) return false;
    }
    if (itemsLeft_-- == 0) return false;
    set_->beginRow();
    std::size_t expected = 0;
    while (!empty) {
      skipBlanks();
      if (take("</")) return closeTag(set_->name);
      if (!take("<") || !field(expected)) return false;
    }
    return true;
  }

  bool chooseSet(std::string_view name) {
    if (name.empty()) return false;
    for (RowSet& set : sets_) {
      if (set.name != name) continue;
      set_ = &set;
      return true;
    }
    constexpr std::size_t kMostNames = 64;
    if (sets_.size() >= kMostNames || platform::findBadXmlText(name) != std::string_view::npos) return false;
    set_ = &sets_.emplace_back(name);
    return true;
  }

  bool closeTag(std::string_view name) {
    if (!take(name)) return false;
    if (at_ != end_ && *at_ == '>') {
      ++at_;
      return true;
    }
    skipBlanks();
    return take(">");
  }

  /// One field of the row; `expected` is the column that follows the last one, usually the right one.
  bool field(std::size_t& expected) {
    if (itemsLeft_-- == 0) return false;
    bool empty = false;
    std::size_t index = expected;
    if (index >= set_->columns.size() || !takeTag(set_->columns[index].name, empty)) {
      if (!chooseColumn(index) || !takeTag(set_->columns[index].name, empty)) return false;
    }
    expected = index + 1;
    Column& column = set_->columns[index];
    Cell cell{0, Cell::kNull};
    if (!empty && !value(column, cell)) return false;
    return set_->put(column, cell) == RowSet::Put::Done;
  }

  bool chooseColumn(std::size_t& index) {
    const std::string_view name = nextName();
    if (name.empty()) return false;
    const Column* known = set_->find(name);
    if (!known) {
      if (platform::findBadXmlText(name) != std::string_view::npos) return false;
      const std::wstring wide = platform::fromUtf8(name);
      for (const Column& column : set_->columns)
        if (platform::equalNoCase(column.wideName, wide)) return false;
      known = set_->obtain(name);
    }
    if (!known) return false;
    index = static_cast<std::size_t>(known - set_->columns.data());
    return true;
  }

  /// The text up to the closing tag, which it takes too.
  bool value(const Column& column, Cell& cell) {
    const char* from = at_;
    bool isAscii = true, isPlain = true;
    while (findSpecial()) {
      const char c = *at_;
      if (c == '<') break;
      if (static_cast<unsigned char>(c) >= 0x80)
        isAscii = false;
      else if (c == '&' || c == '\r')
        isPlain = false;
      else if (c != '\n' && c != '\t')
        return false;
      ++at_;
    }
    if (at_ == end_) return false;
    const std::string_view text(from, static_cast<std::size_t>(at_ - from));
    if (!isAscii && platform::findBadXmlText(text) != std::string_view::npos) return false;
    if (!take("</") || !closeTag(column.name)) return false;
    if (std::all_of(text.begin(), text.end(), isBlank)) return true;
    if (!isPlain) return decode(text, cell);
    cell = {static_cast<std::uint32_t>(from - begin_), static_cast<std::uint32_t>(text.size())};
    return true;
  }

  /// Moves to the next byte that ends or marks a value; false at the end of the text.
  bool findSpecial() {
    if constexpr (std::endian::native == std::endian::little) {
      while (left() >= 8) {
        std::uint64_t block;
        std::memcpy(&block, at_, sizeof block);
        const std::uint64_t special = specialBytes(block);
        if (special != 0) {
          at_ += std::countr_zero(special) / 8;
          return true;
        }
        at_ += 8;
      }
    }
    while (at_ != end_) {
      const auto c = static_cast<unsigned char>(*at_);
      if (c == '<' || c == '&' || c < 0x20 || c >= 0x80) return true;
      ++at_;
    }
    return false;
  }

  bool decode(std::string_view text, Cell& cell) {
    const std::size_t first = decoded_.size();
    while (!text.empty()) {
      const std::size_t plain = std::min(text.find_first_of("&\r"), text.size());
      decoded_.append(text.substr(0, plain));
      text.remove_prefix(plain);
      if (text.empty()) break;
      if (text.front() == '\r') {
        decoded_ += '\n';
        text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
        continue;
      }
      unsigned long code = 0;
      const std::size_t length = platform::readXmlReference(text, code);
      if (length == 0) return false;
      const auto wide = static_cast<wchar_t>(code);
      decoded_ += platform::toUtf8({&wide, 1});
      text.remove_prefix(length);
    }
    cell = {static_cast<std::uint32_t>(static_cast<std::size_t>(end_ - begin_) + first),
            static_cast<std::uint32_t>(decoded_.size() - first)};
    return true;
  }

  const char* begin_;
  const char* at_;
  const char* end_;
  std::size_t itemsLeft_;
  std::deque<RowSet>& sets_;
  RowSet* set_ = nullptr;
  std::string& decoded_;
};

}  // namespace

bool readTableText(std::string_view text, std::size_t maximumItems, std::deque<RowSet>& sets,
                   std::string& decoded) {
  return TableTextReader(text, maximumItems, sets, decoded).read();
}

}  // namespace mek
