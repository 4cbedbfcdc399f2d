#pragma once
// A folder of exported tables with the shape of a database connection, and the SQL subset that queries it.
//
// A table is a pair of files: `<table>.xsd`, which lists its fields, and `<table>.xml`, which holds its rows.
// Nothing here shows a message: failure is the return value, a null pointer or an empty result. Main thread
// only; two queries can't run at once on one connection. A copy shares the documents that are loaded already.
#include <memory>
#include <vector>

#include "module/core/export.h"
#include "module/data/ado_fields.h"
#include "module/data/recordset.h"
#include "platform/text/containers.h"
#include "platform/text/variant.h"
#include "platform/xml/dom.h"

namespace mek {
class TableStore;
}

/// Attributes of a field in a schema file; empty when absent.
struct TableFieldInfo {
  CString name;
  CString minOccurs;
  CString jetType;
  CString sqlType;
};

/// A table: its name with blanks, its fields, and as children its rows once they are read.
class MEK_API _Tables : public _adoFields {
 public:
  std::vector<TableFieldInfo> fields;
};

/// A data file that was asked for once. It is kept, and not tried again, also when it couldn't be read.
struct XmlDocCacheEntry {
  CString path;
  std::shared_ptr<IXMLDOMDocument> document;  ///< made when GetXmlDoc asks for it
  std::shared_ptr<mek::TableStore> store;     ///< null when the file couldn't be read
};

/// The item behind `select`.
struct tagSELECTFIELD {
  int type = -1;  ///< -1 none; 0 max; 1 min; 2 count
  CString field;  ///< a name, or `*`
  CString alias;
};

/// A statement cut into its clauses.
struct tagSQL {
  tagSELECTFIELD selectField;
  CString table;
  CString groupBy;
  CString orderBy;
  CString where;
};

/// What a schema query asks for. Every kind has the same answer here.
enum SchemaEnum : int { adSchemaTables = 20 };

class MEK_API _Connection {
 public:
  _Connection() = default;
  _Connection(const _Connection& other);
  _Connection& operator=(const _Connection& other);
  ~_Connection();

  /// Reads all schema files of a folder, sorted by name; those of a wrong shape are passed over. 0 when at
  /// least one table was read, else 1. Documents that were loaded before stay. User, password and options are
  /// ignored.
  long Open(_bstr_t folder, _bstr_t user, _bstr_t password, long options);
  /// Does nothing; always 1.
  long Close();
  /// Runs a statement; see docs/tables.md for the language. Null when it can't be parsed or names an unknown
  /// table. A missing data file or a condition that isn't understood gives no rows. The last two arguments
  /// are ignored.
  std::shared_ptr<_Recordset> Execute(_bstr_t sql, tagVARIANT* recordsAffected, long options);
  /// One row for each table, whose name is the table's; see _adoFields::GetTableProperty. The arguments are
  /// ignored.
  std::shared_ptr<_Recordset> OpenSchema(SchemaEnum schema, const _variant_t& restrictions,
                                         const _variant_t& schemaId);
  /// The SQL type of a field; both names without regard to case. Empty when either is unknown.
  CString FieldType(CString field, CString table);

 protected:
  /// Appends the full path of each schema file.
  void GetAllXsdFile(CString folder, CStringArray& paths);
  /// 1 when `path` holds a schema for a table of the file's name.
  int ReadTableInfo(CString path, _Tables& table);
  /// Puts the rows that `rowFilter` ("name" or "name[condition]") selects into `table`, one item for each
  /// named field: its value, null for an element without content, the empty text for a missing one. 0 on
  /// failure.
  int ReadTableData(CString path, _Tables& table, CString rowFilter);
  /// The document of a data file; null when it couldn't be read. The same for as long as the connection
  /// lives.
  std::shared_ptr<IXMLDOMDocument>& GetXmlDoc(CString path);

  std::shared_ptr<_Recordset> Execute(tagSQL* sql);
  /// Cuts a statement into its clauses; 1 when it has a select item and a table. Also sets the current table.
  int AnalyzeSql(CString text, tagSQL* sql);
  int AnalyzeSqlSelectField(CString text, tagSELECTFIELD& field);
  /// Puts the first value of a sub-select in its place; the text as it is when there is none or it has no
  /// value.
  CString AnalyzeSubSql(CString where);
  void GroupByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql);
  void MaxOrMinRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql);
  _adoFields MaxOrMinMakeRow(std::vector<_adoFields>& rows, tagSQL* sql, CString target);
  void OderByRecordset(std::shared_ptr<_Recordset>& recordset, tagSQL* sql);

  /// The table of that name, without regard to case; null when there is none.
  const _Tables* FindTable(const CString& name) const;
  /// The path of a table's data file, as the product spells it.
  CString DataPath(const CString& table) const;
  /// "name" or "name[condition]" from the current table and a condition's text.
  static CString MakeRowFilter(const tagSQL& sql, CString table);

 private:
  static CString TrimXiaoKH(CString text);
  static CString TrimZhongKH(CString text);
  /// The position of `word`, given in lower case, in any case and also inside words; -1 when there is none.
  static int FindKeyword(const CString& text, const wchar_t* word);
  /// Takes the text between `start` and the nearest of `ends` (a comma list) out of `sql`, which then begins
  /// at that word.
  static CString ExtractClause(CString& sql, const wchar_t* start, const wchar_t* ends);
  void GetData(_adoFields& row, tagSQL* sql, std::shared_ptr<_Recordset>& recordset);
  XmlDocCacheEntry& CacheEntry(const CString& path);

  std::vector<_Tables> tables_;
  std::vector<std::unique_ptr<XmlDocCacheEntry>> documents_;
  CString path_;
  CString currentTable_;
  int subSelectDepth_ = 0;
};
