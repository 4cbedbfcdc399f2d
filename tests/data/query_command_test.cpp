#include "siblings/tools/cli/query_command.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/data/table_files.h"

namespace {

struct Answer {
  int code;
  std::string out, err;
};

Answer query(std::vector<const char*> args) {
  args.insert(args.begin(), "query");
  std::ostringstream out, err;
  const int code = runQueryCommand(static_cast<int>(args.size()), args.data(), out, err);
  return {code, out.str(), err.str()};
}

TEST(Query, StandardTablesAnswer) {
  const Answer answer = query({KORVANE_TABLES, "select * from [GB 70] where d=8 order by L", "--csv"});
  EXPECT_EQ(answer.code, 0) << answer.err;
  EXPECT_EQ(answer.out.substr(0, answer.out.find('\n')), "名称,规格,d,L,P,b,dk,k,s,t");
  const char* const lengths[] = {"12", "16", "20", "25", "30", "35", "40",
                                 "45", "50", "55", "60", "65", "70", "80"};
  std::string wanted = "名称,规格,d,L,P,b,dk,k,s,t\n";
  for (const char* length : lengths)
    wanted += std::string("内六角圆柱头螺钉,M8×") + length + ",8," + length + ",1.25,28,13,8,6,4\n";
  EXPECT_EQ(answer.out, wanted);
}

TEST(Query, EveryStandardTableIsWhole) {
  const Answer schema = query({KORVANE_TABLES, "--schema", "--csv"});
  EXPECT_EQ(schema.code, 0);
  struct Case {
    const char* sql;
    const char* out;
  };
  const Case cases[] = {
      {"select count(*) as n from GB 70", "n\n203\n"},
      {"select s from GB 5782 where d=16", "s\n24\n"},
      {"select m from GB 6170 where d=36", "m\n31\n"},
      {"select d2 from GB 97.1 where d=10", "d2\n20\n"},
      {"select b from GB 1096 where above<38 and upto>=38", "b\n10\n"},
      {"select OD from GB 276 where Part_x0020_No='6205'", "OD\n52\n"},
      {"select max(d1) from GB 3452.1 where d2=3.55", "d1\n100\n"},
      {"select 系列 from GB 276 group by 系列", "系列\n60\n62\n63\n"},
  };
  for (const Case& item : cases) {
    const Answer answer = query({KORVANE_TABLES, item.sql});
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_EQ(answer.out, item.out) << item.sql;
  }
}

class QueryForms : public ::testing::Test {
 protected:
  QueryForms() {
    folder_.schema("T", "T", {"n:int", "名:nvarchar", "v:real"});
    folder_.rows("T",
                 "<T><n>1</n><名>螺栓, \"M8\"</名><v>0.50</v></T><T><n>22</n><名/><v>-3</v></T>"
                 "<T><n>3</n><名> a&#10;b</名></T>");
    folder_.schema("NoData", "NoData", {"a"});
    folder_.schema("Bad", "Bad", {"a"});
    folder_.write("Bad.xml", "<dataroot>\n<Bad></dataroot>");
    path_ = folder_.path().string();
  }
  Answer ask(const char* sql, const char* form) { return query({path_.c_str(), sql, form}); }
  TableFolder folder_;
  std::string path_;
};

TEST_F(QueryForms, CsvJsonAndTable) {
  EXPECT_EQ(ask("select * from T", "--csv").out,
            "n,名,v\n1,\"螺栓, \"\"M8\"\"\",0.50\n22,,-3\n3,\" a\nb\",\"\"\n");
  EXPECT_EQ(
      ask("select * from T", "--json").out,
      "[\n  {\"n\": 1, \"名\": \"螺栓, \\\"M8\\\"\", \"v\": 0.50},\n  {\"n\": 22, \"名\": null, \"v\": -3},\n"
      "  {\"n\": 3, \"名\": \" a\\u000ab\", \"v\": \"\"}\n]\n");
  EXPECT_EQ(ask("select * from T", "--table").out,
            " n  名             v\n--  ----------  ----\n 1  螺栓, \"M8\"  0.50\n22  ·             -3\n 3   "
            "a b\n(3 rows)\n");
  EXPECT_EQ(ask("select n from T where n=9", "--json").out, "[]\n");
  EXPECT_EQ(ask("select n from T where n=9", "--table").out, "(0 rows)\n");
  EXPECT_EQ(ask("select n from T where n=9", "--csv").out, "");
  EXPECT_EQ(ask("select n from T where n=1", "--table").out, "n\n-\n1\n(1 row)\n");
  EXPECT_EQ(query({path_.c_str(), "--schema", "--table"}).out,
            "table   field  sqlType   jetType  minOccurs\n------  -----  --------  -------  ---------\n"
            "Bad     a                         0\nNoData  a                         0\n"
            "T       n      int       j        0\nT       名     nvarchar  j        0\nT       v      real   "
            "   j        0\n(5 rows)\n");
  EXPECT_EQ(formatAsTable(nullptr), CString(L"no answer\n"));
}

TEST_F(QueryForms, ReasonsAndExitCodes) {
  struct Case {
    std::vector<const char*> args;
    int code;
    const char* part;
  };
  const char* folder = path_.c_str();
  const Case cases[] = {
      {{folder, "selec n from T"}, 1, "needs the form"},
      {{folder, "select max() from T"}, 1, "needs the form"},
      {{folder, "select n from X"}, 1, "no table is called \"X\"; there are: Bad, NoData, T"},
      {{folder, "select a from NoData"}, 1, "NoData.xml"},
      {{folder, "select a from Bad"}, 1, "Bad.xml:2"},
      {{folder, "select n from T where n<>1"}, 1, "isn't understood: n<>1"},
      {{folder, "select q from T"}, 0, "no field \"q\"; it has: n, 名, v"},
      {{folder, "select n from t"}, 0, "written \"T\""},
      {{"/nonexistent", "select n from T"}, 1, "no such folder"},
      {{KORVANE_TEST_DATA "/sql", "select n from T"}, 1, "no table here"},
      {{folder}, 2, "SQL"},
      {{}, 2, "FOLDER"},
      {{folder, "select n from T", "--csv", "--json"}, 2, "exclude"},
      {{folder, "select n from T", "--schema"}, 2, "exclude"},
      {{folder, "select n from T", "--xml"}, 2, "--xml"},
  };
  for (const Case& item : cases) {
    const Answer answer = query(item.args);
    EXPECT_EQ(answer.code, item.code) << item.part << ": " << answer.err;
    EXPECT_NE(answer.err.find(item.part), std::string::npos) << answer.err;
    if (item.code != 0) {
      EXPECT_EQ(answer.out, "");
    }
  }
  folder_.schema("7 Up", "7_x0020_Up", {"a"});
  folder_.rows("7 Up", "");
  EXPECT_NE(query({folder, "select a from 7 Up"}).err.find("isn't one that XML allows"), std::string::npos);
  EXPECT_EQ(query({"--help"}).code, 0);
  EXPECT_NE(query({"--help"}).out.find("GB 70"), std::string::npos);
}

}  // namespace
