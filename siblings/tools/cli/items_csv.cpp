#include "siblings/tools/cli/items_csv.h"

#include <array>
#include <charconv>
#include <cmath>

#include "platform/text/cstring.h"

namespace korvane {
namespace {

enum Column { kWidth, kHeight, kCount, kName, kColumns };
constexpr std::array<const char*, kColumns> kColumnNames = {"width", "height", "count", "name"};
constexpr int kNoColumn = -1;
using Layout = std::array<int, kColumns>;
constexpr std::size_t kShown = 40;

std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

bool parse(std::string_view text, auto& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
}

/// Rows of fields. A quoted field may hold separators, doubled quotes and line ends.
class RowReader {
 public:
  explicit RowReader(std::string_view text) : text_(text) {
    if (text_.starts_with("\xef\xbb\xbf")) text_.remove_prefix(3);
    separator_ = separatorOf(text_);
  }

  bool next(std::vector<std::string>& fields, int& line, std::string& error) {
    fields.clear();
    if (at_ >= text_.size()) return false;
    line = line_;
    do {
      if (!readField(fields, error)) return false;
    } while (at_ < text_.size() && text_[at_++] == separator_);
    ++line_;
    return true;
  }

 private:
  static char separatorOf(std::string_view text) {
    bool quoted = false;
    for (const char c : text) {
      if (c == '"') quoted = !quoted;
      if (!quoted && c == ';') return ';';
      if (!quoted && c == '\n') break;
    }
    return ',';
  }

  bool readField(std::vector<std::string>& fields, std::string& error) {
    std::size_t start = at_;
    while (start < text_.size() && (text_[start] == ' ' || text_[start] == '\t')) ++start;
    if (start < text_.size() && text_[start] == '"') return readQuoted(start + 1, fields, error);
    const std::size_t first = at_;
    while (at_ < text_.size() && text_[at_] != separator_ && text_[at_] != '\n') ++at_;
    fields.emplace_back(trimmed(text_.substr(first, at_ - first)));
    return true;
  }

  bool readQuoted(std::size_t start, std::vector<std::string>& fields, std::string& error) {
    const int opened = line_;
    std::string value;
    for (at_ = start; at_ < text_.size(); ++at_) {
      if (text_[at_] == '\n') ++line_;
      if (text_[at_] != '"') {
        value += text_[at_];
      } else if (at_ + 1 < text_.size() && text_[at_ + 1] == '"') {
        value += text_[at_++];
      } else {
        break;
      }
    }
    if (at_ >= text_.size()) {
      error = "line " + std::to_string(opened) + ": expected a closing quote, found the end of the file";
      return false;
    }
    const std::size_t after = ++at_;
    while (at_ < text_.size() && text_[at_] != separator_ && text_[at_] != '\n') ++at_;
    if (!trimmed(text_.substr(after, at_ - after)).empty()) {
      error = "line " + std::to_string(line_) + ": expected a separator behind the closing quote, found \"" +
              std::string(trimmed(text_.substr(after, at_ - after)).substr(0, kShown)) + "\"";
      return false;
    }
    fields.push_back(std::move(value));
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
  char separator_ = ',';
};

bool namesColumns(const std::vector<std::string>& fields) {
  double ignored = 0;
  for (const std::string& field : fields)
    if (parse(trimmed(field), ignored)) return false;
  for (const std::string& field : fields)
    if (platform::equalNoCase(std::string_view(field), kColumnNames[kWidth])) return true;
  return false;
}

bool layoutFromNames(const std::vector<std::string>& fields, int line, Layout& layout, std::string& error) {
  layout.fill(kNoColumn);
  for (std::size_t i = 0; i < fields.size(); ++i)
    for (std::size_t column = 0; column < kColumns; ++column)
      if (layout[column] == kNoColumn &&
          platform::equalNoCase(std::string_view(fields[i]), kColumnNames[column]))
        layout[column] = static_cast<int>(i);
  if (layout[kHeight] != kNoColumn) return true;
  error = "line " + std::to_string(line) + ": expected a column named height";
  return false;
}

Layout layoutFromFirstRow(const std::vector<std::string>& fields) {
  double ignored = 0;
  return parse(trimmed(fields.front()), ignored) ? Layout{0, 1, 2, 3} : Layout{1, 2, 3, 0};
}

class ItemReader {
 public:
  ItemReader(const Layout& layout, std::vector<CsvItem>& items) : layout_(layout), items_(items) {}

  bool read(const std::vector<std::string>& fields, int line, std::string& error) {
    CsvItem item;
    item.line = line;
    item.name = field(fields, kName);
    int count = 1;
    if (!size(fields, kWidth, line, item.width, error) || !size(fields, kHeight, line, item.height, error))
      return false;
    const std::string_view countText = trimmed(field(fields, kCount));
    if (!countText.empty() && (!parse(countText, count) || count < 1))
      return fail(line, "a whole count of at least 1", countText, error);
    if (count > kMostCsvItems - static_cast<int>(items_.size()))
      return fail(line, "at most " + std::to_string(kMostCsvItems) + " items in all", countText, error);
    items_.insert(items_.end(), static_cast<std::size_t>(count), item);
    return true;
  }

 private:
  std::string_view field(const std::vector<std::string>& fields, Column column) const {
    const int index = layout_[column];
    return index >= 0 && static_cast<std::size_t>(index) < fields.size()
               ? fields[static_cast<std::size_t>(index)]
               : std::string_view();
  }

  bool size(const std::vector<std::string>& fields, Column column, int line, double& value,
            std::string& error) {
    const std::string_view text = trimmed(field(fields, column));
    if (parse(text, value) && std::isfinite(value) && value > 0) return true;
    return fail(line, std::string("a ") + kColumnNames[column] + " above 0", text, error);
  }

  static bool fail(int line, const std::string& expected, std::string_view found, std::string& error) {
    error = "line " + std::to_string(line) + ": expected " + expected + ", found ";
    error += found.empty() ? "nothing" : "\"" + std::string(found.substr(0, kShown)) + "\"";
    return false;
  }

  Layout layout_;
  std::vector<CsvItem>& items_;
};

bool isRemark(const std::vector<std::string>& fields) {
  return fields.front().starts_with('#') || (fields.size() == 1 && trimmed(fields.front()).empty());
}

}  // namespace

bool readItemsCsv(std::string_view text, std::vector<CsvItem>& items, std::string& error) {
  RowReader rows(text);
  std::vector<CsvItem> read;
  std::vector<std::string> fields;
  Layout layout{};
  bool first = true;
  int line = 0;
  error.clear();
  while (rows.next(fields, line, error)) {
    if (isRemark(fields)) continue;
    const bool header = first && namesColumns(fields);
    if (header && !layoutFromNames(fields, line, layout, error)) return false;
    if (first && !header) layout = layoutFromFirstRow(fields);
    first = false;
    if (!header && !ItemReader(layout, read).read(fields, line, error)) return false;
  }
  if (!error.empty()) return false;
  items = std::move(read);
  return true;
}

}  // namespace korvane
