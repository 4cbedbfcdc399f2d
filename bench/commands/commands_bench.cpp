// Commands per second, and what a command costs beside its own work.
#include <benchmark/benchmark.h>

#include "host/app/hostapp.h"
#include "host/database/block.h"
#include "host/entities/curves.h"

namespace {

struct Host {
  Host() : app(options()) { app.newDocument(); }
  static KvHostOptions options() {
    KvHostOptions made;
    made.output = [](const CString& text) { benchmark::DoNotOptimize(text.GetLength()); };
    return made;
  }
  KvHostApp app;
};

void nothing() {}

/// A command without any work: looking it up, its step of undo, its prompt for the name.
void BM_EmptyCommand(benchmark::State& state) {
  Host host;
  host.app.editor().commands().addCommand(L"BENCH", L"NOTHING", L"NOTHING", 0, nothing);
  for (auto _ : state) host.app.editor().runCommand(L"NOTHING");
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EmptyCommand);

void runScripts(benchmark::State& state, const wchar_t* script) {
  constexpr int kTimes = 1000;
  CString text;
  for (int i = 0; i < kTimes; ++i) text += script;
  for (auto _ : state) {
    state.PauseTiming();
    auto host = std::make_unique<Host>();
    host->app.editor().pushSource(std::make_unique<KvEdScriptSource>(text));
    state.ResumeTiming();
    host->app.run();
    state.PauseTiming();
    host.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kTimes);
}

void BM_ScriptLine(benchmark::State& state) {
  runScripts(state, L"LINE 0,0 10,5\n\n");
}
BENCHMARK(BM_ScriptLine)->Unit(benchmark::kMillisecond);

void BM_ScriptPolyline(benchmark::State& state) {
  runScripts(state, L"PLINE 0,0 10,0 A 10,10 L 0,10 C\n");
}
BENCHMARK(BM_ScriptPolyline)->Unit(benchmark::kMillisecond);

void BM_ScriptMoveLast(benchmark::State& state) {
  runScripts(state, L"CIRCLE 0,0 5\nMOVE L\n\n0,0 1,1\n");
}
BENCHMARK(BM_ScriptMoveLast)->Unit(benchmark::kMillisecond);

/// As programs call it.
void BM_CommandList(benchmark::State& state) {
  Host host;
  const double from[3] = {0, 0, 0}, to[3] = {10, 5, 0};
  for (auto _ : state) kvedCommandS(RTSTR, L"LINE", RTPOINT, from, RTPOINT, to, RTSTR, L"", RTNONE);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CommandList);

/// Beside them: the same line put into the drawing without a command.
void BM_LineAlone(benchmark::State& state) {
  Host host;
  KvDbDatabase& database = *host.app.documents().curDocument()->database();
  for (auto _ : state) {
    KvDbBlockTableRecord* space = nullptr;
    kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForWrite);
    auto* line = new KvDbLine({0, 0, 0}, {10, 5, 0});
    line->setDatabaseDefaults(&database);
    space->appendKvDbEntity(line);
    line->close();
    space->close();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LineAlone);

}  // namespace
