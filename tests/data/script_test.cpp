// Runs the script files of the folder `sql`. A script makes tables and asks for rows:
//
//   table GB 70 = GB_x0020_70: d:real L:int Name      a table (element name optional) and its fields
//   row 8 | 20 | bolt                                 one row; `-` leaves the field out, nothing makes it
//   empty query select * from [GB 70] where d=8             a statement, then the expected rows up to a blank
//   line: 8|20|bolt                                           values, `NULL`, '' for a lone empty one;
//   `empty` for no rows, `null` for no answer named select max(d) as m from [GB 70]             the same for
//   one row, with `name=` before each value where d=8 and L>10                                a condition;
//   the expected line holds the ids (first field) of 1 4 7                                               the
//   last table's rows, `none`, or `fails` when it is refused
//
// A condition is run over the text, over the tree, and by the XPath engine as well.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "module/data/internal/table_store.h"
#include "tests/data/table_files.h"

namespace {

constexpr int kFewestCases = 300;

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, separator);) out.push_back(trimmed(part));
  if (!text.empty() && text.back() == separator) out.emplace_back();
  return out;
}

struct Table {
  std::string stem, element;
  std::vector<std::string> fields;
  std::string content;
};

class Script {
 public:
  explicit Script(const std::filesystem::path& path) : name_(path.filename().string()), in_(path) {}

  int run() {
    for (std::string line; next(line);) {
      if (line.empty() || line[0] == '#') continue;
      const std::size_t blank = std::min(line.find(' '), line.size());
      const std::string word = line.substr(0, blank), rest = trimmed(line.substr(blank));
      if (word == "table")
        table(rest);
      else if (word == "row")
        row(rest);
      else if (word == "query" || word == "named")
        query(rest, word == "named");
      else if (word == "where")
        where(rest);
      else
        ADD_FAILURE() << name_ << ":" << number_ << ": unknown word " << word;
    }
    return cases_;
  }

 private:
  bool next(std::string& line) {
    ++number_;
    return static_cast<bool>(std::getline(in_, line));
  }

  void table(const std::string& text) {
    Table table;
    const std::size_t colon = text.find(": ");
    const std::vector<std::string> names = split(text.substr(0, colon), '=');
    table.stem = names[0];
    table.element = names.back();
    for (const std::string& field : split(text.substr(colon + 2), ' ')) table.fields.push_back(field);
    tables_.push_back(table);
    opened_ = false;
  }

  void row(const std::string& text) {
    Table& table = tables_.back();
    const std::vector<std::string> values = split(text, '|');
    table.content += "<" + table.element + ">";
    for (std::size_t i = 0; i < table.fields.size() && i < values.size(); ++i) {
      if (values[i] == "-") continue;
      const std::string field = table.fields[i].substr(0, table.fields[i].find(':'));
      table.content += "<" + field + ">" + values[i] + "</" + field + ">";
    }
    table.content += "</" + table.element + ">\n";
    opened_ = false;
  }

  void open() {
    if (opened_) return;
    for (const Table& table : tables_) {
      folder_.schema(table.stem, table.element, table.fields);
      folder_.rows(table.stem, table.content);
    }
    connection_ = OpenConnection();
    ASSERT_EQ(connection_.Open(folder_.text(), L"", L"", 0), 0) << name_;
    opened_ = true;
  }

  std::string expected() {
    std::string out;
    for (std::string line; next(line) && !line.empty();) out += line + "\n";
    return out;
  }

  void query(const std::string& sql, bool named) {
    open();
    ++cases_;
    const int line = number_;
    const std::string wanted = expected();
    EXPECT_EQ(printed(connection_.run(platform::wideFromUtf8(sql)), named), wanted)
        << name_ << ":" << line << ": " << sql;
  }

  void where(const std::string& condition) {
    open();
    ++cases_;
    const std::string place = name_ + ":" + std::to_string(number_) + ": " + condition;
    const std::string wanted = trimmed(expected());
    const Table& table = tables_.back();
    const auto filter = mek::RowFilter::parse(table.element + "[" + condition + "]");
    EXPECT_EQ(filter.has_value(), wanted != "fails\n") << place;
    const std::string id = table.fields.front().substr(0, table.fields.front().find(':'));
    const auto answer = connection_.run(
        platform::wideFromUtf8("select " + id + " from [" + table.stem + "] where " + condition));
    EXPECT_EQ(ids(answer), wanted == "fails\n" ? "none\n" : wanted) << place;
    if (!filter) return;
    for (const bool throughTree : {false, true}) {
      const auto store =
          mek::TableStore::parse("<dataroot>" + table.content + "</dataroot>", nullptr, throughTree);
      ASSERT_TRUE(store) << place;
      mek::RowSet* rows = store->rows(table.element);
      std::string found;
      for (std::uint32_t row : rows->select(&*filter->predicate, store->base()))
        found += " " + platform::utf8From(
                           mek::RowSet::FieldReader(*rows, _bstr_t(platform::wideFromUtf8(id)), store->base())
                               .value(row)
                               .text());
      EXPECT_EQ(found.empty() ? "none\n" : found.substr(1) + "\n", wanted)
          << place << (throughTree ? " (tree)" : " (text)");
    }
    const auto document = platform::parseXml("<dataroot>" + table.content + "</dataroot>");
    const auto nodes = document->selectNodes(
        platform::wideFromUtf8("dataroot/" + table.element + "[" + condition + "]/" + id));
    ASSERT_TRUE(nodes) << place;
    std::string found;
    for (int i = 0; i < nodes.length(); ++i) found += " " + platform::utf8From(nodes.item(i).text());
    EXPECT_EQ(found.empty() ? "none\n" : found.substr(1) + "\n", wanted) << place << " (XPath engine)";
  }

  static std::string ids(const std::shared_ptr<_Recordset>& answer) {
    std::string out;
    if (!answer) return "null\n";
    for (; answer->GetadoEOF() == 0; answer->MoveNext())
      out += " " + platform::utf8From(answer->GetCollect(0).text());
    return out.empty() ? "none\n" : out.substr(1) + "\n";
  }

  std::string name_;
  std::ifstream in_;
  int number_ = 0, cases_ = 0;
  bool opened_ = false;
  std::vector<Table> tables_;
  TableFolder folder_;
  OpenConnection connection_;
};

TEST(SqlScripts, AnswerAsExpected) {
  int cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KORVANE_TEST_DATA "/sql"))
    if (entry.path().extension() == ".txt") cases += Script(entry.path()).run();
  EXPECT_GE(cases, kFewestCases);
}

}  // namespace
