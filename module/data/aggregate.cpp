// Passes over the rows of an answer: groups, one aggregate, order.
#include <unordered_map>

#include "module/data/connection.h"
#include "module/data/internal/values.h"

namespace {

enum AggregateType : int { kMaximum = 0, kMinimum = 1, kCount = 2 };

_adoFields singleItemRow(const CString& name, const _bstr_t& value) {
  _adoFields row;
  row.append(_adoFields(name, value));
  return row;
}

}  // namespace

void _Connection::GroupByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql) {
  if (!recordset || !sql || sql->groupBy.IsEmpty()) return;
  const bool hasAggregate = sql->selectField.type >= 0;
  std::vector<_adoFields> rows = recordset->takeRows();
  std::vector<_adoFields> groups;
  std::unordered_map<std::wstring_view, std::size_t> indexByKey;  // views of the groups' own values
  const _bstr_t groupName(sql->groupBy);
  for (_adoFields& row : rows) {
    const _bstr_t key = mek::textOf(row.find(sql->groupBy.view()));
    if (key.length() == 0) continue;
    const auto [known, isNew] = indexByKey.emplace(key.view(), groups.size());
    if (isNew) {
      // Without an aggregate a group is its first row; with one, a row whose children are the group's rows.
      _adoFields& group = groups.emplace_back();
      if (hasAggregate)
        group.append(std::move(row));
      else
        group = std::move(row);
      group.name = groupName;
      group.value = key;
    } else if (hasAggregate) {
      groups[known->second].append(std::move(row));
    }
  }
  recordset->EraseAll();
  for (_adoFields& group : groups) recordset->PushBack(std::move(group));
}

void _Connection::MaxOrMinRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql) {
  if (!recordset || !sql || sql->selectField.type < kMaximum || sql->selectField.type > kCount) return;
  const CString target = sql->selectField.alias.IsEmpty() ? sql->selectField.field : sql->selectField.alias;
  if (target.IsEmpty()) return;
  std::vector<_adoFields> rows = recordset->takeRows();
  if (sql->groupBy.IsEmpty()) {
    recordset->PushBack(MaxOrMinMakeRow(rows, sql, target));
    return;
  }
  for (_adoFields& group : rows) recordset->PushBack(MaxOrMinMakeRow(group.children, sql, target));
}

_adoFields _Connection::MaxOrMinMakeRow(std::vector<_adoFields>& rows, tagSQL* sql, CString target) {
  const int type = sql->selectField.type;
  if (type == kCount) return singleItemRow(target, _variant_t(static_cast<int>(rows.size())).text());
  const bool isNumber = mek::aggregatesAsNumber(FieldType(sql->selectField.field, currentTable_));
  _bstr_t best;
  double bestNumber = 0;
  bool isFirst = true;
  for (const _adoFields& row : rows) {
    const _bstr_t text = mek::textOf(row.find(target.view()));
    if (text.length() == 0) continue;
    const double number = isNumber ? mek::decimalNumber(text.view()) : 0;
    const auto order = isNumber ? number <=> bestNumber : std::partial_ordering(text.view() <=> best.view());
    if (!isFirst && (type == kMaximum ? order <= 0 : order >= 0)) continue;
    best = text;
    bestNumber = number;
    isFirst = false;
  }
  return singleItemRow(target, best);
}

void _Connection::OderByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql) {
  if (recordset && sql && !sql->orderBy.IsEmpty()) recordset->PutSort(sql->orderBy);
}
