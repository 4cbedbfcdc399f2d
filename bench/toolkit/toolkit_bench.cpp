// Chain reads, point containment, and layers through the symbol module: each call loads and frees the
// library, which is what callers pay when they don't keep what they were told.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>

#include "host/app/hostapp.h"
#include "host/entities/polyline.h"
#include "module/toolkit/geometry.h"
#include "module/toolkit/layers.h"
#include "module/toolkit/rbchains.h"
#include "platform/system/dynamic_library.h"

namespace {

constexpr int kNodes = 1000;

/// Pairs of a marker (1000) and a number (1040); the head is a 1001 node.
resbuf* chainOfPairs() {
  resbuf* head = kvutBuildList(1001, L"BENCH", 0);
  resbuf* tail = head;
  for (int i = 0; i < (kNodes - 1) / 2; ++i) {
    CString marker;
    marker.Format(L"KEY%d", i);
    tail->rbnext = kvutBuildList(1000, marker, 1040, static_cast<double>(i), 0);
    tail = tail->rbnext->rbnext;
  }
  return head;
}

void ReadByOccurrence(benchmark::State& state) {
  resbuf* chain = chainOfPairs();
  double value = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(IM_GetRbValueOf(chain, value, 1040, static_cast<int>(state.range(0))));
  if (value == 0) state.SkipWithError("nothing was read");
  kvutRelRb(chain);
}
BENCHMARK(ReadByOccurrence)->Arg(2)->Arg(250)->Arg(499);

void ReadByMarker(benchmark::State& state) {
  resbuf* chain = chainOfPairs();
  CString marker;
  marker.Format(L"KEY%d", static_cast<int>(state.range(0)));
  double value = 0;
  for (auto _ : state) benchmark::DoNotOptimize(IM_GetNextValueOf(chain, 1000, marker, 1040, value));
  if (value != static_cast<double>(state.range(0))) state.SkipWithError("nothing was read");
  kvutRelRb(chain);
}
BENCHMARK(ReadByMarker)->Arg(1)->Arg(250)->Arg(498);

void Tail(benchmark::State& state) {
  resbuf* chain = chainOfPairs();
  for (auto _ : state) benchmark::DoNotOptimize(GetLinkTail(chain));
  kvutRelRb(chain);
}
BENCHMARK(Tail);

/// A wheel of teeth; every other segment is an arc where `bulge` isn't 0.
void PointInPolyline(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const double bulge = state.range(1) ? 0.2 : 0;
  constexpr double kTurn = 6.283185307179586;
  KvDbPolyline outline;
  for (int i = 0; i < count; ++i) {
    const double radius = i % 2 ? 90 : 100, angle = kTurn * i / count;
    outline.addVertexAt(i, {radius * std::cos(angle), radius * std::sin(angle)}, i % 2 ? bulge : 0);
  }
  outline.setClosed(true);
  int inside = 0, at = 0;
  for (auto _ : state) {
    const double angle = 0.1 * ++at, radius = at % 2 ? 50 : 120;
    inside += IM_IsPointInsideCurve(&outline, {radius * std::cos(angle), radius * std::sin(angle), 0}) == 0;
  }
  if (state.iterations() > 2 && inside == 0) state.SkipWithError("no point lies inside");
}
BENCHMARK(PointInPolyline)->Args({100, 0})->Args({10000, 0})->Args({10000, 1})->Unit(benchmark::kMicrosecond);

/// A host with one drawing, and the symbol module where the toolkit looks for it.
struct Session {
  Session() : app(options()) { app.newDocument(); }
  static KvHostOptions options() {
    namespace fs = std::filesystem;
    const fs::path to = fs::path(KORVANE_BENCH_TREE) / "Professional" / "KVX8x64" / "KmSymbb.kvx";
    fs::copy_file(fs::path(KORVANE_TREE_DIR) / "Professional" / "KVX8x64" / "KmSymbb.kvx", to,
                  fs::copy_options::overwrite_existing);
    file = platform::fromNative(to);
    KvHostOptions made;
    made.root = KORVANE_TREE_DIR;
    return made;
  }
  inline static CString file;
  KvHostApp app;
};

enum Way : int { Loading, Resident, ByName };

void LayerId(benchmark::State& state) {
  Session session;
  constexpr int kOutline = 45;
  const auto way = static_cast<Way>(state.range(0));
  const KvDbObjectId expected = IM_GetLayerId(kOutline, nullptr, 0);
  const CString name = IM_GetLayerName(kOutline, 0);
  const HMODULE held = way == Resident ? LoadLibraryW(Session::file) : nullptr;
  KvDbObjectId id;
  for (auto _ : state) {
    id = way == ByName ? IM_GetLayerId(name, nullptr) : IM_GetLayerId(kOutline, nullptr, 0);
    benchmark::DoNotOptimize(id);
  }
  if (id.isNull() || id != expected) state.SkipWithError("the layer was not found");
  if (held) FreeLibrary(held);
  state.SetLabel(way == Loading    ? "library loaded and freed"
                 : way == Resident ? "library stays loaded"
                                   : "look-up by name");
}
BENCHMARK(LayerId)->Arg(Loading)->Arg(Resident)->Arg(ByName)->Unit(benchmark::kMicrosecond);

}  // namespace
