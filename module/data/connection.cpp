// The connection: schema files, data files, and what is kept of both.
#include "module/data/connection.h"

#include <algorithm>

#include "module/data/internal/table_store.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr const wchar_t* kEscapedBlank = L"_x0020_";
constexpr const wchar_t* kSchemaSteps[] = {L"complexType", L"sequence"};
/// Items of one answer, so that no file makes an answer of many gigabytes.
constexpr std::size_t kMaximumItems = std::size_t{32} << 20;

CString stemOf(const CString& path) {
  const CString name = path.Mid(path.ReverseFind(L'\\') + 1);
  const int point = name.ReverseFind(L'.');
  return point < 0 ? name : name.Left(point);
}

CString escapeBlanks(CString name) {
  name.Replace(L" ", kEscapedBlank);
  return name;
}

IXMLDOMNode childByBaseName(const IXMLDOMNode& parent, const wchar_t* baseName) {
  for (IXMLDOMNode child = parent.firstChild(); child; child = child.nextSibling())
    if (child.isElement() && child.baseName() == baseName) return child;
  return {};
}

/// The element that describes a table, by its attribute `name`.
IXMLDOMNode tableElement(const IXMLDOMNode& schema, const CString& name) {
  for (IXMLDOMNode child = schema.firstChild(); child; child = child.nextSibling()) {
    const auto attribute = child.getAttribute(L"name");
    if (attribute && attribute->CompareNoCase(name) == 0) return child;
  }
  return {};
}

TableFieldInfo fieldInfo(const IXMLDOMNode& element) {
  return {element.getAttribute(L"name").value_or(CString()),
          element.getAttribute(L"minOccurs").value_or(CString()),
          element.getAttribute(L"od:jetType").value_or(CString()),
          element.getAttribute(L"od:sqlSType").value_or(CString())};
}

/// A schema field with the column that its values come from.
struct OutputField {
  _bstr_t name;
  mek::RowSet::FieldReader reader;
};

void fillRow(_adoFields& row, const std::vector<OutputField>& fields, std::uint32_t number) {
  row.children.reserve(fields.size());
  for (const OutputField& field : fields) row.children.emplace_back(field.name, field.reader.value(number));
  row.count = static_cast<int>(fields.size());
}

}  // namespace

_Connection::_Connection(const _Connection& other) {
  *this = other;
}

_Connection& _Connection::operator=(const _Connection& other) {
  if (this == &other) return *this;
  tables_ = other.tables_;
  documents_.clear();
  for (const auto& entry : other.documents_) documents_.push_back(std::make_unique<XmlDocCacheEntry>(*entry));
  path_ = other.path_;
  currentTable_ = other.currentTable_;
  return *this;
}

_Connection::~_Connection() = default;

long _Connection::Open(_bstr_t folder, _bstr_t, _bstr_t, long) {
  path_ = folder.text();
  CStringArray paths;
  GetAllXsdFile(path_, paths);
  tables_.clear();
  for (const CString& path : paths) {
    _Tables table;
    if (ReadTableInfo(path, table)) tables_.push_back(std::move(table));
  }
  return tables_.empty() ? 1 : 0;
}

long _Connection::Close() {
  return 1;
}

void _Connection::GetAllXsdFile(CString folder, CStringArray& paths) {
  for (const platform::FoundFile& found : platform::findFiles(folder + L"\\*.xsd"))
    if (!found.isFolder) paths.Add(folder + L"\\" + found.name);
}

int _Connection::ReadTableInfo(CString path, _Tables& table) {
  const auto document = IM_LoadXmlFromFile(path);
  if (!document) return 0;
  const CString stem = stemOf(path);
  table.name = stem;
  const IXMLDOMNode element = tableElement(document->documentElement(), escapeBlanks(stem));
  IXMLDOMNode at = element;
  for (const wchar_t* step : kSchemaSteps) at = childByBaseName(at, step);
  if (!at.firstChild()) return 0;
  for (IXMLDOMNode field = at.firstChild(); field; field = field.nextSibling())
    if (field.isElement()) table.fields.push_back(fieldInfo(field));
  return 1;
}

XmlDocCacheEntry& _Connection::CacheEntry(const CString& path) {
  for (const auto& entry : documents_)
    if (entry->path.CompareNoCase(path) == 0) return *entry;
  auto entry = std::make_unique<XmlDocCacheEntry>();
  entry->path = path;
  entry->store = mek::TableStore::load(platform::toNative(path));
  return *documents_.emplace_back(std::move(entry));
}

std::shared_ptr<IXMLDOMDocument>& _Connection::GetXmlDoc(CString path) {
  XmlDocCacheEntry& entry = CacheEntry(path);
  if (!entry.document && entry.store) entry.document = entry.store->document();
  return entry.document;
}

int _Connection::ReadTableData(CString path, _Tables& table, CString rowFilter) {
  mek::TableStore* store = CacheEntry(path).store.get();
  if (!store) return 0;
  table.name = stemOf(path);
  if (!store->hasDataRoot()) return 0;
  const auto filter = mek::RowFilter::parse(platform::utf8From(rowFilter));
  if (!filter) return 0;
  table.count = 0;
  table.children.clear();
  mek::RowSet* rows = store->rows(filter->name);
  if (!rows) return 1;

  std::vector<OutputField> fields;
  for (const TableFieldInfo& field : table.fields) {
    if (field.name.IsEmpty()) continue;
    const _bstr_t name(field.name);
    fields.push_back({name, mek::RowSet::FieldReader(*rows, name, store->base())});
  }
  const auto selected = rows->select(filter->predicate ? &*filter->predicate : nullptr, store->base());
  if (selected.size() * (fields.size() + 1) > kMaximumItems) return 0;
  table.children.resize(selected.size());
  for (std::size_t i = 0; i < selected.size(); ++i) fillRow(table.children[i], fields, selected[i]);
  table.count = static_cast<int>(selected.size());
  return 1;
}

const _Tables* _Connection::FindTable(const CString& name) const {
  for (const _Tables& table : tables_)
    if (platform::equalNoCase(table.name.view(), name.view())) return &table;
  return nullptr;
}

CString _Connection::FieldType(CString field, CString table) {
  const _Tables* found = FindTable(table);
  if (!found) return {};
  for (const TableFieldInfo& info : found->fields)
    if (info.name.CompareNoCase(field) == 0) return info.sqlType;
  return {};
}

CString _Connection::DataPath(const CString& table) const {
  return path_ + L"\\" + table + L".xml";
}

CString _Connection::MakeRowFilter(const tagSQL& sql, CString table) {
  CString filter = escapeBlanks(std::move(table));
  if (sql.where.IsEmpty()) return filter;
  CString where = sql.where;
  where.Remove(L'[');
  where.Remove(L']');
  for (const wchar_t* word : {L" AND ", L" And "}) where.Replace(word, L" and ");
  for (const wchar_t* word : {L" OR ", L" Or "}) where.Replace(word, L" or ");
  return filter + L"[" + where + L"]";
}

std::shared_ptr<_Recordset> _Connection::OpenSchema(SchemaEnum, const _variant_t&, const _variant_t&) {
  auto recordset = std::make_shared<_Recordset>(this, currentTable_);
  for (const _Tables& table : tables_) recordset->PushBack(table);
  recordset->MoveFirst();
  return recordset;
}
