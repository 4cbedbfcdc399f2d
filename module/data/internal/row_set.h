#pragma once
// The rows of one name in one document, held by columns.
//
// A column is all children of one name: for each row the place of its value in the store's text. Numbers and
// keys of a column are made when a condition first needs them, wide texts when a row is first given out.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "module/data/internal/predicate.h"
#include "platform/text/variant.h"
#include "platform/xml/dom.h"

namespace mek {

/// Where a value stands in the text. Two lengths are none: a row without the child, and a child without a
/// value.
struct Cell {
  static constexpr std::uint32_t kMissing = 0xFFFFFFFF;
  static constexpr std::uint32_t kNull = 0xFFFFFFFE;
  std::uint32_t offset = 0;
  std::uint32_t length = kMissing;
  bool isMissing() const { return length == kMissing; }
  bool isNull() const { return length == kNull; }
};

class Column {
 public:
  explicit Column(std::string_view columnName);
  std::string name;
  std::wstring wideName;
  std::vector<Cell> cells;  ///< one a row once the rows are complete

  /// What XPath takes the value for; the empty text for a child without a value. Not for missing ones.
  static std::string_view text(const Cell& cell, const char* base) {
    return cell.isNull() ? std::string_view() : std::string_view(base + cell.offset, cell.length);
  }
  /// Of every row; not a number for rows without the child.
  const std::vector<double>& numbers(const char* base);
  /// The first eight bytes of the text, zeros behind a shorter one; tells texts below eight bytes apart
  /// entirely.
  const std::vector<std::uint64_t>& keys(const char* base);
  /// The value as a result carries it. Values that repeat share one text.
  _bstr_t wide(const Cell& cell, const char* base);

 private:
  std::vector<double> numbers_;
  std::vector<std::uint64_t> keys_;
  /// Texts given out lately, by their hash; standard parts repeat the same few values.
  std::vector<std::pair<std::string_view, _bstr_t>> recent_;
};

/// The first eight bytes of `text`, as Column::keys packs them.
std::uint64_t keyOf(std::string_view text);

class RowSet {
 public:
  explicit RowSet(std::string_view rowName) : name(rowName) {}
  std::string name;
  std::uint32_t rowCount = 0;
  std::vector<Column> columns;  ///< in order of first appearance
  /// Of every row; empty when the rows were read from text, which is done for simple rows only: no name twice
  /// in a row (in any case), no child but with one text or nothing in it.
  std::vector<platform::XmlNodeView> nodes;
  std::vector<std::uint32_t> irregular;  ///< rows that aren't simple, ascending
  /// So many names that columns would mostly stand empty: there are none, all rows are irregular.
  bool sparse = false;

  /// Null when no row has such a child. Case counts.
  Column* find(std::string_view columnName);
  /// Starts the next row; the columns that it doesn't mention stay short until complete().
  void beginRow() { ++rowCount; }
  enum class Put { Done, Twice, TooSparse };
  /// Puts a cell into the row begun last; does nothing when the row has one of that column already, or when
  /// columns would mostly stand empty.
  Put put(Column& column, Cell cell);
  /// The column, made when it is new. Null when there would be too many.
  Column* obtain(std::string_view columnName);
  /// Brings all columns to the number of rows. False when they would mostly stand empty.
  bool complete();
  /// The values that a result carries for a schema field: the first child whose name is the field's without
  /// regard to case, the empty text when there is none.
  class FieldReader;

  /// The value of a cell as a result carries it: text, null, or the empty text when the child is missing.
  _variant_t value(std::size_t column, std::uint32_t row, const char* base);

  /// The rows for which `predicate` holds (all rows without one), ascending.
  std::vector<std::uint32_t> select(const Predicate* predicate, const char* base);

 private:
  bool mayHold(std::size_t cells) const;
  std::size_t childCount_ = 0;
  std::size_t cellCount_ = 0;
  std::vector<_bstr_t>
      wide_;  ///< row by row, so that a row's texts are neighbours; filled as rows are given out
};

class RowSet::FieldReader {
 public:
  FieldReader(RowSet& rows, const _bstr_t& field, const char* base);
  _variant_t value(std::uint32_t row) const;

 private:
  RowSet& rows_;
  std::wstring_view field_;
  const char* base_;
  std::size_t column_ = 0;
  std::size_t columns_ = 0;  ///< how many fit the field
};

/// The rows of `rows` for which the condition holds, by loops over its columns; irregular rows are not looked
/// at rightly.
std::vector<std::uint32_t> scanColumns(RowSet& rows, const Predicate& predicate, const char* base);

/// The condition for one row element, by its tree.
bool holdsFor(platform::XmlNodeView row, const Predicate& predicate);

/// Text and CDATA at and below a node.
std::string stringValue(platform::XmlNodeView node);

}  // namespace mek
