#pragma once
// Tables for tests: a folder of their own, written from a few lines and removed at the end.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "module/data/connection.h"
#include "platform/files/paths.h"
#include "tests/support/temporary_tree.h"

/// Opens what _Connection keeps for classes derived from it.
class OpenConnection : public _Connection {
 public:
  using _Connection::AnalyzeSql;
  using _Connection::AnalyzeSqlSelectField;
  using _Connection::AnalyzeSubSql;
  using _Connection::Execute;
  using _Connection::GetAllXsdFile;
  using _Connection::GetXmlDoc;
  using _Connection::MakeRowFilter;
  using _Connection::ReadTableData;
  using _Connection::ReadTableInfo;

  std::shared_ptr<_Recordset> run(const CString& sql) { return Execute(_bstr_t(sql), nullptr, 0); }
};

class TableFolder {
 public:
  const std::filesystem::path& path() const { return folder_.path(); }
  CString text() const { return platform::fromNative(path()); }

  void write(const std::string& name, const std::string& content) const {
    std::ofstream(path() / name, std::ios::binary) << content;
  }
  /// A schema as the database exports it; each field is "name" or "name:sqlType". `element` is the escaped
  /// name.
  void schema(const std::string& stem, const std::string& element,
              const std::vector<std::string>& fields) const {
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xsd:schema "
        "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
        "xmlns:od=\"urn:schemas-microsoft-com:officedata\">\n<xsd:element name=\"dataroot\"/>\n<xsd:element "
        "name=\"" +
        element + "\"><xsd:annotation/><xsd:complexType>\n<xsd:sequence>\n";
    for (const std::string& field : fields) {
      const std::size_t colon = field.find(':');
      out += "<xsd:element name=\"" + field.substr(0, colon) + "\" minOccurs=\"0\"";
      if (colon != std::string::npos)
        out += " od:jetType=\"j\" od:sqlSType=\"" + field.substr(colon + 1) + "\"";
      out += "/>\n";
    }
    write(stem + ".xsd", out + "</xsd:sequence></xsd:complexType></xsd:element></xsd:schema>\n");
  }
  void rows(const std::string& stem, const std::string& content) const {
    write(stem + ".xml",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<dataroot>\n" + content + "</dataroot>\n");
  }

 private:
  test::TemporaryFolder folder_;
};

/// All rows, one line each: values with `|` between, NULL for null, '' for one
/// empty value alone; with `named`, each behind its name and `=`.
inline std::string printed(const std::shared_ptr<_Recordset>& recordset, bool named = false) {
  if (!recordset) return "null\n";
  std::string out;
  std::vector<_adoFields> names;
  for (recordset->MoveFirst(); recordset->GetadoEOF() == 0; recordset->MoveNext()) {
    std::string line;
    for (int i = 0;; ++i) {
      const _variant_t value = recordset->GetCollect(i);
      if (value.vt == VT_EMPTY) break;
      if (i > 0) line += "|";
      if (named && recordset->GetRecordCount() == 1) {
        names.clear();
        recordset->GetadoFields(names);
        line += platform::utf8From(names[static_cast<std::size_t>(i)].name.text()) + "=";
      }
      line += value.vt == VT_NULL ? "NULL" : platform::utf8From(value.text());
    }
    out += (line.empty() ? "''" : line) + "\n";
  }
  return out.empty() ? "empty\n" : out;
}
