#include "siblings/tools/cli/query_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

#include "platform/files/paths.h"
#include "siblings/tools/cli/query_output.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

struct QueryOptions {
  std::string folder, sql;
  bool csv = false, json = false, table = false, schema = false;
};

/// The connection with a voice: it runs the same steps and says why there is no answer.
class TellingConnection : public _Connection {
 public:
  explicit TellingConnection(std::ostream& err) : err_(err) {}

  bool open(const std::string& folder) {
    std::error_code status;
    if (!std::filesystem::is_directory(folder, status)) return tell(folder + ": no such folder");
    folder_ = platform::fromNative(std::filesystem::absolute(folder));
    if (Open(_bstr_t(folder_), L"", L"", 0) == 0) return true;
    tell(folder + ": no table here (a table is a file .xsd that describes an .xml beside it)");
    for (const CString& path : schemaPaths()) tellBadSchema(path);
    return false;
  }

  /// Null when there is none; the reason has been told then.
  std::shared_ptr<_Recordset> ask(const std::string& text) {
    tagSQL sql;
    const CString wide = platform::wideFromUtf8(text);
    if (!AnalyzeSql(wide, &sql))
      return refuse(
          "the statement needs the form: select ITEM from TABLE [where ...] [group by FIELD] [order by "
          "FIELDS]");
    const _Tables* table = FindTable(sql.table);
    if (!table)
      return refuse("no table is called \"" + platform::utf8From(sql.table) +
                    "\"; there are: " + tableNames());
    if (!canRead(*table, sql)) return nullptr;
    tellOddities(*table, sql);
    return Execute(&sql);
  }

  std::vector<_Tables> schema() {
    std::vector<_Tables> tables;
    for (const CString& path : schemaPaths()) {
      _Tables table;
      if (ReadTableInfo(path, table))
        tables.push_back(std::move(table));
      else
        tellBadSchema(path);
    }
    return tables;
  }

 private:
  bool tell(const std::string& message) {
    err_ << "korvane query: " << message << '\n';
    return false;
  }

  std::shared_ptr<_Recordset> refuse(const std::string& message) {
    tell(message);
    return nullptr;
  }

  CStringArray schemaPaths() {
    CStringArray paths;
    GetAllXsdFile(folder_, paths);
    return paths;
  }

  void tellBadSchema(const CString& path) {
    platform::XmlError error;
    if (platform::loadXml(platform::toNative(path), &error))
      tell(platform::toNative(path).string() + ": no element with the file's name and a list of fields");
    else
      tell(error.message());
  }

  std::string tableNames() {
    std::string names;
    for (const _Tables& table : schema())
      names += (names.empty() ? "" : ", ") + platform::utf8From(table.name.text());
    return names;
  }

  /// Reads without fields, so only the file and the condition are tried.
  bool canRead(const _Tables& table, const tagSQL& sql) {
    _Tables bare;
    tagSQL everything;
    const CString path = DataPath(sql.table);
    if (!ReadTableData(path, bare, MakeRowFilter(everything, sql.table))) return tellUnreadable(path);
    if (ReadTableData(path, bare, MakeRowFilter(sql, sql.table))) return true;
    return tell("the condition isn't understood: " + platform::utf8From(sql.where) + "\n  fields of " +
                platform::utf8From(table.name.text()) + ": " + fieldNames(table));
  }

  bool tellUnreadable(const CString& path) {
    const std::filesystem::path file = platform::toNative(path);
    platform::XmlError error;
    const auto document = platform::loadXml(file, &error);
    if (!document) return tell(error.message());
    if (document->documentElement().tagName() != L"dataroot")
      return tell(file.string() + ": its element isn't dataroot");
    return tell(file.string() + ": no row can bear the table's name, which isn't one that XML allows");
  }

  static std::string fieldNames(const _Tables& table) {
    std::string names;
    for (const TableFieldInfo& field : table.fields)
      names += (names.empty() ? "" : ", ") + platform::utf8From(field.name);
    return names;
  }

  /// What gives an answer that is right by the rules and surprises people.
  void tellOddities(const _Tables& table, const tagSQL& sql) {
    const CString& field = sql.selectField.field;
    if (field != L"*" && !hasField(table, field))
      tell("note: " + platform::utf8From(sql.table) + " has no field \"" + platform::utf8From(field) +
           "\"; it has: " + fieldNames(table));
    if (sql.table != table.name.text())
      tell("note: the table is written \"" + platform::utf8From(table.name.text()) +
           "\"; rows are looked up by that spelling");
  }

  static bool hasField(const _Tables& table, const CString& name) {
    for (const TableFieldInfo& field : table.fields)
      if (field.name.CompareNoCase(name) == 0) return true;
    return false;
  }

  std::ostream& err_;
  CString folder_;
};

tools::Grid schemaGrid(const std::vector<_Tables>& tables) {
  tools::Grid grid;
  for (const wchar_t* name : {L"table", L"field", L"sqlType", L"jetType", L"minOccurs"})
    grid.columns.push_back({name, false});
  for (const _Tables& table : tables)
    for (const TableFieldInfo& field : table.fields)
      grid.rows.push_back({table.name, field.name, field.sqlType, field.jetType, field.minOccurs});
  return grid;
}

void write(const tools::Grid& grid, const QueryOptions& options, std::ostream& out) {
  const bool isTerminal = &out == &std::cout && ::isatty(STDOUT_FILENO);
  if (options.json)
    tools::writeJson(out, grid);
  else if (options.table || (isTerminal && !options.csv))
    out << platform::utf8From(tools::tableOf(grid));
  else
    tools::writeCsv(out, grid);
}

int runQuery(const QueryOptions& options, std::ostream& out, std::ostream& err) {
  TellingConnection connection(err);
  if (!connection.open(options.folder)) return kFailed;
  if (options.schema) {
    write(schemaGrid(connection.schema()), options, out);
  } else {
    const std::shared_ptr<_Recordset> answer = connection.ask(options.sql);
    if (!answer) return kFailed;
    write(tools::gridOf(answer), options, out);
  }
  out.flush();
  return out ? 0 : kFailed;
}

}  // namespace

CString formatAsTable(const std::shared_ptr<_Recordset>& answer) {
  return answer ? tools::tableOf(tools::gridOf(answer)) : CString(L"no answer\n");
}

int runQueryCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  CLI::App app("Asks a folder of exported tables (pairs of .xsd and .xml files) with SQL text.",
               "korvane query");
  QueryOptions options;
  app.add_option("FOLDER", options.folder, "The folder with the tables")->required()->type_name("");
  CLI::Option* sql = app.add_option("SQL", options.sql,
                                    "select ITEM from TABLE [where ...] [group by FIELD] [order by FIELDS]")
                         ->type_name("");
  app.add_flag("--table", options.table, "Columns for people (the default at a terminal)");
  app.add_flag("--csv", options.csv, "Comma-separated values (the default elsewhere)");
  app.add_flag("--json", options.json, "An array of objects");
  CLI::Option* schema = app.add_flag("--schema", options.schema, "List tables and fields instead of asking");
  sql->excludes(schema);
  app.footer(
      "Names with blanks stand in brackets: select * from [GB 70] where d=8 order by L\n"
      "Exit code: 0 an answer, 1 none (the reason is told), 2 wrong use.");
  try {
    app.parse(argc, argv);
    if (!options.schema && options.sql.empty()) throw CLI::RequiredError("SQL");
    if (options.table + options.csv + options.json > 1) throw CLI::ExcludesError("--table", "--csv, --json");
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? 0 : kWrongUse;
  }
  return runQuery(options, out, err);
}
