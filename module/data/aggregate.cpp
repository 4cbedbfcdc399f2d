// Passes over the rows of an answer: groups, one aggregate, order.
#include <unordered_map>

#include "module/data/connection.h"
#include "module/data/internal/field_type.h"
#include "platform/text/number.h"

namespace {

enum AggregateType : int { kMaximum = 0, kMinimum = 1, kCount = 2 };

CString textOf(const _adoFields* item) {
  return item ? item->value.text() : CString();
}

_adoFields singleItemRow(const CString& name, const CString& value) {
  _adoFields item;
  item.name = name;
  item.value = value;
  _adoFields row;
  row.children.push_back(std::move(item));
  row.count = 1;
  return row;
}

}  // namespace

void _Connection::GroupByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql) {
  if (!recordset || !sql || sql->groupBy.IsEmpty()) return;
  const bool hasAggregate = sql->selectField.type >= 0;
  std::vector<_adoFields> rows = recordset->takeRows();
  std::vector<_adoFields> groups;
  std::unordered_map<CString, std::size_t> indexByKey;
  const _bstr_t groupName(sql->groupBy);
  for (_adoFields& row : rows) {
    const CString key = textOf(row.find(sql->groupBy.view()));
    if (key.IsEmpty()) continue;
    const auto [known, isNew] = indexByKey.emplace(key, groups.size());
    if (isNew) {
      // Without an aggregate a group is its first row; with one, a row whose children are the group's rows.
      _adoFields& group = groups.emplace_back();
      if (hasAggregate) {
        group.children.push_back(std::move(row));
        group.count = 1;
      } else {
        group = std::move(row);
      }
      group.name = groupName;
      group.value = key;
    } else if (hasAggregate) {
      _adoFields& group = groups[known->second];
      group.children.push_back(std::move(row));
      ++group.count;
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
  if (type == kCount) {
    CString count;
    count.Format(L"%d", static_cast<int>(rows.size()));
    return singleItemRow(target, count);
  }
  const bool isNumber = mek::aggregatesAsNumber(FieldType(sql->selectField.field, currentTable_));
  CString best;
  double bestNumber = 0;
  bool isFirst = true;
  for (const _adoFields& row : rows) {
    const CString text = textOf(row.find(target.view()));
    if (text.IsEmpty()) continue;
    const double number = isNumber ? platform::parseDouble(text.view()) : 0;
    const bool isGreater = isNumber ? number > bestNumber : text.Compare(best) > 0;
    const bool isSmaller = isNumber ? number < bestNumber : text.Compare(best) < 0;
    if (!isFirst && !(type == kMaximum ? isGreater : isSmaller)) continue;
    best = text;
    bestNumber = number;
    isFirst = false;
  }
  return singleItemRow(target, best);
}

void _Connection::OderByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql) {
  if (recordset && sql && !sql->orderBy.IsEmpty()) recordset->PutSort(sql->orderBy);
}
