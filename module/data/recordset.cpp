#include "module/data/recordset.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <numeric>
#include <unordered_set>

#include "module/data/connection.h"
#include "module/data/internal/values.h"

namespace {

constexpr std::wstring_view kDescending = L" desc";

struct SortKey {
  CString name;
  bool isNumber = false;
};

/// What one row holds for one key. The text is the row's own, or one kept beside.
struct SortValue {
  bool isPresent = false;
  double number = 0;
  std::wstring_view text;
};

SortValue sortValue(const _adoFields& row, const SortKey& key, std::deque<_bstr_t>& kept) {
  SortValue out;
  const _adoFields* item = row.find(key.name.view());
  if (!item) return out;
  out.isPresent = true;
  out.text = item->value.isText() ? item->value.bstr().view() : kept.emplace_back(mek::textOf(item)).view();
  if (key.isNumber) out.number = mek::decimalNumber(out.text);
  return out;
}

int compareValues(const SortValue& a, const SortValue& b, bool isNumber) {
  if (!a.isPresent || !b.isPresent) return static_cast<int>(a.isPresent) - static_cast<int>(b.isPresent);
  if (!isNumber) return a.text.compare(b.text);
  if (a.number == b.number || std::fabs(a.number - b.number) < mek::kRealTolerance) return 0;
  return b.number > a.number ? -1 : 1;
}

}  // namespace

_Recordset::_Recordset(_Connection* connection, CString table)
    : table_(std::move(table)), connection_(connection) {}

long _Recordset::MoveFirst() {
  current_ = 0;
  endOfFile_ = rows_.empty() ? VARIANT_TRUE : VARIANT_FALSE;
  return 0;
}

long _Recordset::MoveNext() {
  current_ = std::min(current_ + 1, rows_.size());
  endOfFile_ = current_ == rows_.size() ? VARIANT_TRUE : VARIANT_FALSE;
  return 0;
}

long _Recordset::MoveLast() {
  current_ = rows_.size();
  endOfFile_ = VARIANT_TRUE;
  return 0;
}

short _Recordset::GetadoEOF() const {
  return endOfFile_;
}

long _Recordset::GetRecordCount() {
  return static_cast<long>(rows_.size());
}

const _adoFields* _Recordset::CurrentRow() const {
  return endOfFile_ != VARIANT_FALSE || current_ >= rows_.size() ? nullptr : &rows_[current_];
}

_variant_t _Recordset::GetCollect(const _variant_t& index) {
  const _adoFields* current = CurrentRow();
  if (!current) return {};
  const _adoFields& row = *current;
  if (index.vt == VT_I2 || index.vt == VT_I4 || index.vt == VT_INT) {
    const std::int64_t position = index.integer();
    const bool isInside = position >= 0 && position < static_cast<std::int64_t>(row.readable());
    return isInside ? row.children[static_cast<std::size_t>(position)].value : _variant_t();
  }
  if (index.vt != VT_BSTR) return {};
  const _adoFields* item = row.find(index.bstr().view());
  return item ? item->value : _variant_t();
}

void _Recordset::PutSort(_bstr_t sortText) {
  CString text = sortText.text().MakeLower();
  if (text.view().size() > kDescending.size() && text.view().ends_with(kDescending))
    text = text.Left(text.GetLength() - static_cast<int>(kDescending.size()));
  if (text.IsEmpty()) return;
  std::vector<SortKey> keys;
  for (std::size_t from = 0; from != std::wstring_view::npos;) {
    const std::size_t comma = text.view().find(L',', from);
    CString part(text.view().substr(from, comma - from));
    part.Trim();
    const bool isNumber = connection_ && mek::sortsAsNumber(connection_->FieldType(part, table_));
    keys.push_back({part, isNumber});
    from = comma == std::wstring_view::npos ? comma : comma + 1;
  }

  std::vector<SortValue> values;
  std::deque<_bstr_t> kept;
  values.reserve(rows_.size() * keys.size());
  for (const _adoFields& row : rows_)
    for (const SortKey& key : keys) values.push_back(sortValue(row, key, kept));
  std::vector<std::uint32_t> order(rows_.size());
  std::iota(order.begin(), order.end(), 0u);
  // A merge: with the tolerance, "equal" isn't transitive, which other sorts may answer with wild accesses.
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const int result =
          compareValues(values[a * keys.size() + k], values[b * keys.size() + k], keys[k].isNumber);
      if (result != 0) return result < 0;
    }
    return false;
  });
  std::vector<_adoFields> sorted;
  sorted.reserve(rows_.size());
  for (std::uint32_t row : order) sorted.push_back(std::move(rows_[row]));
  rows_ = std::move(sorted);
}

void _Recordset::PushBack(_adoFields row) {
  rows_.push_back(std::move(row));
}

void _Recordset::Erase() {
  if (endOfFile_ != VARIANT_FALSE || current_ >= rows_.size()) return;
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(current_));
}

void _Recordset::EraseAll() {
  rows_.clear();
  current_ = 0;
  endOfFile_ = VARIANT_TRUE;
}

void _Recordset::GetadoFields(std::vector<_adoFields>& out) {
  std::unordered_set<std::wstring_view> seen;
  for (const _adoFields& row : rows_) {
    const std::size_t size = row.readable();
    for (std::size_t i = 0; i < size; ++i) {
      if (!seen.insert(row.children[i].name.view()).second) continue;
      _adoFields field;
      field.name = row.children[i].name;
      out.push_back(std::move(field));
    }
  }
}

std::vector<_adoFields> _Recordset::takeRows() {
  std::vector<_adoFields> out = std::move(rows_);
  EraseAll();
  return out;
}
