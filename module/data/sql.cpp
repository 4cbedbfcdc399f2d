// The SQL subset. There is no tokeniser, on purpose: clauses are cut at the first occurrence of a keyword,
// also inside words, and queries have been written against exactly that.
#include <algorithm>

#include "module/data/connection.h"

namespace {

constexpr const wchar_t* kSelect = L"select";
constexpr const wchar_t* kWhere = L"where";
constexpr const wchar_t* kGroupBy = L"group by";
constexpr const wchar_t* kAs = L" as";

struct Clause {
  CString tagSQL::*member;
  const wchar_t* start;
  const wchar_t* ends;
};

struct Aggregate {
  const wchar_t* word;
  int type;
};
constexpr Aggregate kAggregates[] = {{L"max", 0}, {L"min", 1}, {L"count", 2}};
constexpr int kNoAggregate = -1;

/// Sub-selects inside one another; deeper ones stay unexpanded.
constexpr int kMaximumSubSelects = 32;

int length(const wchar_t* word) {
  return static_cast<int>(std::wstring_view(word).size());
}

CString trimBrackets(CString text, wchar_t open, wchar_t close) {
  text.Trim();
  text.TrimLeft(open);
  text.TrimRight(close);
  return text.Trim();
}

/// The position of the parenthesis that closes the one before `from`; -1 when there is none.
int closingParenthesis(const CString& text, int from) {
  int depth = 1;
  for (int i = from; i < text.GetLength(); ++i) {
    if (text[i] == L'(') ++depth;
    if (text[i] == L')' && --depth == 0) return i;
  }
  return -1;
}

}  // namespace

CString _Connection::TrimXiaoKH(CString text) {
  return trimBrackets(std::move(text), L'(', L')');
}
CString _Connection::TrimZhongKH(CString text) {
  return trimBrackets(std::move(text), L'[', L']');
}

int _Connection::FindKeyword(const CString& text, const wchar_t* word) {
  CString lower = text;
  return lower.MakeLower().Find(word);
}

CString _Connection::ExtractClause(CString& sql, const wchar_t* start, const wchar_t* ends) {
  const int at = FindKeyword(sql, start);
  if (at < 0) return {};
  sql = sql.Mid(at + length(start));
  int end = -1, position = 0;
  const CString words(ends);
  while (position >= 0) {
    const CString word = words.Tokenize(L",", position);
    const int found = word.IsEmpty() ? -1 : FindKeyword(sql, word);
    if (found >= 0 && (end < 0 || found < end)) end = found;
  }
  CString clause = end < 0 ? sql : sql.Left(end);
  if (end >= 0) sql = sql.Mid(end);
  return clause.Trim();
}

int _Connection::AnalyzeSql(CString text, tagSQL* sql) {
  if (!sql) return 0;
  const CString selectList = ExtractClause(text, kSelect, L"from");
  const CString table = ExtractClause(text, L"from", L"where,group by,order by");
  // A condition behind the group is passed over; the steps below would take it and lose the group.
  const int group = FindKeyword(text, kGroupBy);
  const bool isBehindGroup = group >= 0 && group < FindKeyword(text, kWhere);
  CString where = isBehindGroup ? CString() : ExtractClause(text, kWhere, L"group by,order by");
  const CString groupBy = ExtractClause(text, kGroupBy, isBehindGroup ? L"order by,where" : L"order by");
  const CString orderBy = ExtractClause(text, L"order by", L"group by");
  if (selectList.IsEmpty() || table.IsEmpty()) return 0;
  if (!AnalyzeSqlSelectField(selectList, sql->selectField)) return 0;
  currentTable_ = TrimZhongKH(table);
  sql->table = currentTable_;
  // What remains is looked at, not the where text: with a clause behind it a sub-select stays as it is.
  if (FindKeyword(text, kSelect) >= 0) {
    const CString saved = currentTable_;
    where = AnalyzeSubSql(where);
    currentTable_ = saved;
  }
  sql->where = where;
  sql->groupBy = groupBy;
  sql->orderBy = orderBy;
  return 1;
}

int _Connection::AnalyzeSqlSelectField(CString text, tagSELECTFIELD& field) {
  if (text.IsEmpty()) return 0;
  text = TrimZhongKH(text);
  if (text == L"*") {
    field.field = text;
    return 1;
  }
  const int as = FindKeyword(text, kAs);
  if (as >= 0) {
    field.alias = TrimZhongKH(TrimXiaoKH(text.Mid(as + length(kAs))));
    text = text.Left(as);
  }
  for (const Aggregate& aggregate : kAggregates) {
    const int at = FindKeyword(text, aggregate.word);
    if (at < 0) continue;
    field.type = aggregate.type;
    text = text.Mid(at + length(aggregate.word));
    break;
  }
  text = TrimZhongKH(TrimXiaoKH(text));
  if (text.IsEmpty()) return 0;
  field.field = text;
  return 1;
}

CString _Connection::AnalyzeSubSql(CString where) {
  const int select = FindKeyword(where, kSelect);
  const int open = where.Find(L'(');
  if (select < 0 || open < 0 || open > select || subSelectDepth_ >= kMaximumSubSelects) return where;
  const int close = closingParenthesis(where, open + 1);
  if (close < 0) return where;
  CString left = where.Left(open), inner = where.Mid(open + 1, close - open - 1),
          right = where.Mid(close + 1);
  left.TrimRight();
  right.TrimLeft();
  ++subSelectDepth_;
  const auto answer = Execute(_bstr_t(inner.Trim()), nullptr, 0);
  --subSelectDepth_;
  if (!answer) return where;
  answer->MoveFirst();
  const _adoFields* row = answer->CurrentRow();
  if (!row || row->readable() == 0) return where;
  return left + L" " + row->children.front().value.text() + L" " + right;
}

std::shared_ptr<_Recordset> _Connection::Execute(_bstr_t text, tagVARIANT*, long) {
  tagSQL sql;
  if (!AnalyzeSql(text.text(), &sql)) return nullptr;
  return Execute(&sql);
}

std::shared_ptr<_Recordset> _Connection::Execute(tagSQL* sql) {
  if (!sql) return nullptr;
  const _Tables* known = FindTable(sql->table);
  if (!known) return nullptr;
  auto recordset = std::make_shared<_Recordset>(this, currentTable_);
  _Tables table = *known;
  // Fields that neither the answer nor a pass over it looks at are not made.
  const tagSELECTFIELD& item = sql->selectField;
  if (item.field != L"*" || item.type != kNoAggregate) {
    const auto isNeeded = [&](const TableFieldInfo& field) {
      if (item.field != L"*") return field.name.CompareNoCase(item.field) == 0;
      return field.name.CompareNoCase(sql->groupBy) == 0 || field.name.CompareNoCase(item.alias) == 0 ||
             field.name == L"*";
    };
    std::erase_if(table.fields, [&](const TableFieldInfo& field) { return !isNeeded(field); });
  }
  ReadTableData(DataPath(currentTable_), table, MakeRowFilter(*sql, currentTable_));
  recordset->rows_.reserve(table.children.size());
  for (_adoFields& row : table.children) GetData(row, sql, recordset);
  GroupByRecordset(recordset, sql);
  MaxOrMinRecordset(recordset, sql);
  OderByRecordset(recordset, sql);
  recordset->MoveFirst();
  return recordset;
}

void _Connection::GetData(_adoFields& row, tagSQL* sql, std::shared_ptr<_Recordset>& recordset) {
  if (sql->selectField.field == L"*")
    return recordset->PushBack(std::move(row));  // the rows are the statement's own
  const _adoFields* found = row.find(sql->selectField.field.view());
  if (!found) return;
  // Usually the one item that was read.
  if (row.children.size() > 1) {
    _adoFields single;
    single.append(*found);
    row = std::move(single);
  }
  if (!sql->selectField.alias.IsEmpty()) row.children.front().name = sql->selectField.alias;
  recordset->PushBack(std::move(row));
}
