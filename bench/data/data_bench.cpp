// Tables: loading, the first and the repeated query, groups and order, beside peers that do the same work on
// the same rows. Give --csv FILE first to write the rows for bench/data/duckdb.mjs, which measures that
// engine in its own process.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>

#include "bench/gen/part_table.h"
#include "module/data/connection.h"
#include "module/data/internal/table_store.h"
#include "platform/files/paths.h"

#ifdef KORVANE_BENCH_LIBXML2
#include <libxml/parser.h>
#include <libxml/xpath.h>
#endif
#ifdef KORVANE_BENCH_SQLITE
#include <sqlite3.h>
#endif

namespace {

constexpr int kRows = 100000;
constexpr int kExpected = 6667;
constexpr const char* kFilter = "T[d=8 and L>20]";
constexpr const char* kExpression = "dataroot/T[d=8 and L>20]";
constexpr const char* kSelect = "select * from T where d=8 and L>20";

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void check(benchmark::State& state, long found, long wanted = kExpected) {
  if (found != wanted) state.SkipWithError("wrong number of rows");
}

/// The files, written once and removed at the end.
class Folder {
 public:
  Folder() : path_(std::filesystem::temp_directory_path() / ("korvane-bench-" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(path_);
    std::ofstream(path_ / "T.xml") << bench::partsXml(bench::makeParts(kRows));
    std::ofstream(path_ / "T.xsd") << bench::partsXsd();
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  static const Folder& get() {
    static const Folder folder;
    return folder;
  }
  std::filesystem::path xml() const { return path_ / "T.xml"; }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

_Connection& connection() {
  static _Connection opened;
  static const long status = opened.Open(_bstr_t(platform::fromNative(Folder::get().path())), L"", L"", 0);
  if (status != 0) std::abort();
  return opened;
}

void execute(benchmark::State& state, const char* sql, long wanted) {
  const CString text = platform::wideFromUtf8(sql);
  for (auto _ : state)
    check(state, connection().Execute(_bstr_t(text), nullptr, 0)->GetRecordCount(), wanted);
}

void Load_Korvane(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(mek::TableStore::load(Folder::get().xml()));
}
void Load_KorvaneTree(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(platform::loadXml(Folder::get().xml()));
}
void Load_Pugixml(benchmark::State& state) {
  for (auto _ : state) {
    pugi::xml_document document;
    if (!document.load_file(Folder::get().xml().c_str())) state.SkipWithError("load");
  }
}

void FirstSelect_Korvane(benchmark::State& state) {
  const auto filter = mek::RowFilter::parse(kFilter);
  for (auto _ : state) {
    const auto store = mek::TableStore::load(Folder::get().xml());
    const auto start = Clock::now();
    check(state, static_cast<long>(store->rows("T")->select(&*filter->predicate, store->base()).size()));
    state.SetIterationTime(secondsSince(start));
  }
}
void FirstQuery_Korvane(benchmark::State& state) {
  for (auto _ : state) {
    _Connection fresh;
    fresh.Open(_bstr_t(platform::fromNative(Folder::get().path())), L"", L"", 0);
    fresh.Execute(L"select count(*) from T where 1=2", nullptr, 0);  // reads the file, indexes nothing
    const auto start = Clock::now();
    const auto answer = fresh.Execute(_bstr_t(platform::wideFromUtf8(kSelect)), nullptr, 0);
    state.SetIterationTime(secondsSince(start));
    check(state, answer->GetRecordCount());
  }
}

void Select_Korvane(benchmark::State& state) {
  const auto store = mek::TableStore::load(Folder::get().xml());
  for (auto _ : state) {
    const auto filter = mek::RowFilter::parse(kFilter);
    check(state, static_cast<long>(store->rows("T")->select(&*filter->predicate, store->base()).size()));
  }
}
void Select_Pugixml(benchmark::State& state) {
  pugi::xml_document document;
  document.load_file(Folder::get().xml().c_str());
  for (auto _ : state) {
    const pugi::xpath_query query(kExpression);
    check(state, static_cast<long>(query.evaluate_node_set(document).size()));
  }
}

void Query_Korvane(benchmark::State& state) {
  execute(state, kSelect, kExpected);
}
void Query_Pugixml(benchmark::State& state) {
  pugi::xml_document document;
  document.load_file(Folder::get().xml().c_str());
  for (auto _ : state) {
    const pugi::xpath_query query(kExpression);
    std::vector<std::vector<std::string>> rows;
    for (const pugi::xpath_node& node : query.evaluate_node_set(document)) {
      auto& row = rows.emplace_back();
      for (pugi::xml_node field : node.node()) row.emplace_back(field.child_value());
    }
    check(state, static_cast<long>(rows.size()));
  }
}

void Group_Korvane(benchmark::State& state) {
  execute(state, "select count(*) from T group by d", 15);
}
void SortNumber_Korvane(benchmark::State& state) {
  execute(state, "select * from T order by P", kRows);
}
void SortText_Korvane(benchmark::State& state) {
  execute(state, "select * from T order by Name", kRows);
}

BENCHMARK(Load_Korvane)->Unit(benchmark::kMillisecond);
BENCHMARK(Load_KorvaneTree)->Unit(benchmark::kMillisecond);
BENCHMARK(Load_Pugixml)->Unit(benchmark::kMillisecond);
BENCHMARK(FirstSelect_Korvane)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FirstQuery_Korvane)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Select_Korvane)->Unit(benchmark::kMillisecond);
BENCHMARK(Select_Pugixml)->Unit(benchmark::kMillisecond);
BENCHMARK(Query_Korvane)->Unit(benchmark::kMillisecond);
BENCHMARK(Query_Pugixml)->Unit(benchmark::kMillisecond);
BENCHMARK(Group_Korvane)->Unit(benchmark::kMillisecond);
BENCHMARK(SortNumber_Korvane)->Unit(benchmark::kMillisecond);
BENCHMARK(SortText_Korvane)->Unit(benchmark::kMillisecond);

#ifdef KORVANE_BENCH_LIBXML2
void Select_Libxml2(benchmark::State& state) {
  xmlDocPtr document = xmlReadFile(Folder::get().xml().c_str(), nullptr, 0);
  xmlXPathContextPtr context = xmlXPathNewContext(document);
  context->node = reinterpret_cast<xmlNodePtr>(document);
  for (auto _ : state) {
    xmlXPathObjectPtr found = xmlXPathEval(reinterpret_cast<const xmlChar*>(kExpression), context);
    check(state, found->nodesetval->nodeNr);
    xmlXPathFreeObject(found);
  }
  xmlXPathFreeContext(context);
  xmlFreeDoc(document);
}
BENCHMARK(Select_Libxml2)->Unit(benchmark::kMillisecond);
#endif

#ifdef KORVANE_BENCH_SQLITE
/// The rows in memory, numbers as numbers, without an index.
sqlite3* database() {
  static sqlite3* const opened = [] {
    sqlite3* made = nullptr;
    sqlite3_open(":memory:", &made);
    sqlite3_exec(made,
                 "create table T(ID integer,d real,L real,P real,S real,Grade text,Name text,Std text);begin",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(made, "insert into T values(?,?,?,?,?,?,?,?)", -1, &insert, nullptr);
    for (const bench::Part& part : bench::makeParts(kRows)) {
      sqlite3_bind_int(insert, 1, part.id);
      sqlite3_bind_double(insert, 2, part.d);
      sqlite3_bind_double(insert, 3, part.length);
      int column = 4;
      for (const std::string* text : {&part.pitch, &part.width, &part.grade, &part.name, &part.standard})
        sqlite3_bind_text(insert, column++, text->c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(made, "commit", nullptr, nullptr, nullptr);
    return made;
  }();
  return opened;
}

/// Every value of every row is fetched as text, as a result holds it.
void askSqlite(benchmark::State& state, const char* sql, long wanted) {
  sqlite3* const opened = database();
  for (auto _ : state) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(opened, sql, -1, &statement, nullptr);
    std::vector<std::vector<std::string>> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      auto& row = rows.emplace_back();
      row.reserve(static_cast<std::size_t>(sqlite3_column_count(statement)));
      for (int i = 0; i < sqlite3_column_count(statement); ++i)
        row.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, i)));
    }
    sqlite3_finalize(statement);
    check(state, static_cast<long>(rows.size()), wanted);
  }
}

void Select_Sqlite(benchmark::State& state) {
  askSqlite(state, "select rowid from T where d=8 and L>20", kExpected);
}
void Query_Sqlite(benchmark::State& state) {
  askSqlite(state, kSelect, kExpected);
}
void Group_Sqlite(benchmark::State& state) {
  askSqlite(state, "select count(*) from T group by d", 15);
}
void SortNumber_Sqlite(benchmark::State& state) {
  askSqlite(state, "select * from T order by P", kRows);
}
void SortText_Sqlite(benchmark::State& state) {
  askSqlite(state, "select * from T order by Name", kRows);
}
BENCHMARK(Select_Sqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(Query_Sqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(Group_Sqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(SortNumber_Sqlite)->Unit(benchmark::kMillisecond);
BENCHMARK(SortText_Sqlite)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "--csv") {
    std::ofstream(argv[2]) << bench::partsCsv(bench::makeParts(kRows));
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
}
