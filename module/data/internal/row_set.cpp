#include "module/data/internal/row_set.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/text/utf.h"

namespace mek {
namespace {

using platform::XmlNodeType;
using platform::XmlNodeView;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

_bstr_t wideOf(std::string_view text) {
  const bool isAscii =
      std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (!isAscii) return _bstr_t(std::wstring_view(platform::fromUtf8(text)));
  return _bstr_t::filled(text.size(), [&](wchar_t* to) { std::copy(text.begin(), text.end(), to); });
}

/// What one side of a comparison holds for one row: the texts of all children of the name, or the one
/// literal.
std::vector<std::string> sideValues(XmlNodeView row, const Operand& operand) {
  if (operand.kind != Operand::Kind::Child) return {operand.text};
  std::vector<std::string> out;
  for (XmlNodeView child = row.firstChild(); child; child = child.nextSibling())
    if (child.type() == XmlNodeType::Element && operand.text == child.name())
      out.push_back(stringValue(child));
  return out;
}

double sideNumber(const Operand& operand, const std::string& text) {
  return operand.kind == Operand::Kind::Number ? operand.number : xpathNumber(text);
}

bool comparisonHolds(XmlNodeView row, const PredicateStep& step) {
  const bool numeric = isOrdering(step.comparison) || step.left.kind == Operand::Kind::Number ||
                       step.right.kind == Operand::Kind::Number;
  const std::vector<std::string> right = sideValues(row, step.right);
  for (const std::string& a : sideValues(row, step.left)) {
    for (const std::string& b : right) {
      const bool holds =
          numeric ? compareNumbers(step.comparison, sideNumber(step.left, a), sideNumber(step.right, b))
                  : compareTexts(step.comparison, a, b, false);
      if (holds) return true;
    }
  }
  return false;
}

/// What a result carries for a child element: the value of its first node.
_variant_t firstNodeValue(XmlNodeView child) {
  const XmlNodeView first = child.firstChild();
  if (!first || first.type() == XmlNodeType::Element) return _variant_t::null();
  return _variant_t(wideOf(first.value()));
}

constexpr std::size_t kRecentTexts = 256;
constexpr std::size_t kMaximumColumns = 1024;
/// Cells that columns may hold for each child that there is, beyond the first kFreeCells.
constexpr std::size_t kCellsPerChild = 32;
constexpr std::size_t kFreeCells = std::size_t{1} << 20;

}  // namespace

std::string stringValue(XmlNodeView node) {
  // Depth is bounded by the reader's limit.
  std::string out;
  if (node.type() == XmlNodeType::Text || node.type() == XmlNodeType::CData) return node.value();
  for (XmlNodeView child = node.firstChild(); child; child = child.nextSibling()) out += stringValue(child);
  return out;
}

std::uint64_t keyOf(std::string_view text) {
  std::uint64_t key = 0;
  if (!text.empty()) std::memcpy(&key, text.data(), std::min(text.size(), sizeof key));
  return key;
}

Column::Column(std::string_view columnName) : name(columnName), wideName(platform::fromUtf8(columnName)) {}

const std::vector<double>& Column::numbers(const char* base) {
  if (!numbers_.empty()) return numbers_;
  numbers_.reserve(cells.size());
  for (const Cell& cell : cells)
    numbers_.push_back(cell.isMissing() ? kNotANumber : xpathNumber(text(cell, base)));
  return numbers_;
}

const std::vector<std::uint64_t>& Column::keys(const char* base) {
  if (!keys_.empty()) return keys_;
  keys_.reserve(cells.size());
  for (const Cell& cell : cells) keys_.push_back(cell.isMissing() ? 0 : keyOf(text(cell, base)));
  return keys_;
}

_bstr_t Column::wide(const Cell& cell, const char* base) {
  if (recent_.empty()) recent_.resize(kRecentTexts);
  const std::string_view value = text(cell, base);
  auto& [known, wideText] = recent_[std::hash<std::string_view>()(value) % kRecentTexts];
  if (known == value && wideText.length() > 0) return wideText;
  known = value;
  return wideText = wideOf(value);
}

Column* RowSet::find(std::string_view columnName) {
  for (Column& column : columns)
    if (column.name == columnName) return &column;
  return nullptr;
}

bool RowSet::mayHold(std::size_t cells) const {
  return cells <= kFreeCells + childCount_ * kCellsPerChild;
}

RowSet::Put RowSet::put(Column& column, Cell cell) {
  if (column.cells.size() >= rowCount) return Put::Twice;
  const std::size_t gap = rowCount - 1 - column.cells.size();
  ++childCount_;
  cellCount_ += gap + 1;
  if (gap > 0) {
    if (!mayHold(cellCount_)) return Put::TooSparse;
    column.cells.resize(rowCount - 1);
  }
  column.cells.push_back(cell);
  return Put::Done;
}

Column* RowSet::obtain(std::string_view columnName) {
  if (Column* known = find(columnName)) return known;
  if (columns.size() >= kMaximumColumns) return nullptr;
  return &columns.emplace_back(columnName);
}

bool RowSet::complete() {
  if (!mayHold(columns.size() * rowCount)) return false;
  for (Column& column : columns) column.cells.resize(rowCount);
  return true;
}

_variant_t RowSet::value(std::size_t column, std::uint32_t row, const char* base) {
  if (wide_.empty()) wide_.resize(columns.size() * rowCount);
  _bstr_t& wide = wide_[row * columns.size() + column];
  if (wide.length() > 0) return _variant_t(wide);
  const Cell& cell = columns[column].cells[row];
  if (cell.isNull()) return _variant_t::null();
  if (cell.isMissing() || cell.length == 0) return _variant_t(_bstr_t());
  wide = columns[column].wide(cell, base);
  return _variant_t(wide);
}

RowSet::FieldReader::FieldReader(RowSet& rows, const _bstr_t& field, const char* base)
    : rows_(rows), field_(field.view()), base_(base) {
  for (std::size_t i = 0; i < rows.columns.size(); ++i) {
    if (!platform::equalNoCase(rows.columns[i].wideName, field_)) continue;
    column_ = i;
    ++columns_;
  }
}

_variant_t RowSet::FieldReader::value(std::uint32_t row) const {
  if (columns_ == 1) return rows_.value(column_, row, base_);
  if (columns_ == 0 && !rows_.sparse) return _variant_t(_bstr_t());
  // Several names that differ in case, or no columns: the row's first fitting child decides.
  for (XmlNodeView child = rows_.nodes[row].firstChild(); child; child = child.nextSibling())
    if (child.type() == XmlNodeType::Element &&
        platform::equalNoCase(platform::fromUtf8(child.name()), field_))
      return firstNodeValue(child);
  return _variant_t(_bstr_t());
}

std::vector<std::uint32_t> RowSet::select(const Predicate* predicate, const char* base) {
  std::vector<std::uint32_t> selected;
  if (!predicate) {
    selected.resize(rowCount);
    for (std::uint32_t row = 0; row < rowCount; ++row) selected[row] = row;
    return selected;
  }
  if (!sparse) selected = scanColumns(*this, *predicate, base);
  if (irregular.empty()) return selected;
  std::vector<std::uint32_t> simple, wanted;
  std::set_difference(selected.begin(), selected.end(), irregular.begin(), irregular.end(),
                      std::back_inserter(simple));
  for (std::uint32_t row : irregular)
    if (holdsFor(nodes[row], *predicate)) wanted.push_back(row);
  selected.clear();
  std::merge(simple.begin(), simple.end(), wanted.begin(), wanted.end(), std::back_inserter(selected));
  return selected;
}

bool holdsFor(XmlNodeView row, const Predicate& predicate) {
  std::vector<char> truths;
  for (const PredicateStep& step : predicate.steps()) {
    if (step.kind == PredicateStep::Kind::Compare) {
      truths.push_back(comparisonHolds(row, step));
      continue;
    }
    const bool last = truths.back() != 0;
    truths.pop_back();
    truths.back() = step.kind == PredicateStep::Kind::And ? (truths.back() && last) : (truths.back() || last);
  }
  return truths.back() != 0;
}

}  // namespace mek
