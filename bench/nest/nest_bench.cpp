// The nester on public rectangle classes and the packing solver on its classes of boxes.
// `bench/nest/compare.sh` sets the same instances before their peers.
#include <benchmark/benchmark.h>

#include "bench/nest/instances.h"
#include "module/nest/nester_frame.h"

namespace {

/// All 500 instances of the ten classes; `bins` is the number of sheets they take.
void NestRectangleClasses(benchmark::State& state) {
  std::vector<nestbench::RectangleSet> sets;
  for (int setClass = 1; setClass <= 10; ++setClass)
    for (int n = 20; n <= 100; n += 20)
      for (int number = 0; number < 10; ++number)
        sets.push_back(nestbench::rectangleSet(setClass, n, number));
  int bins = 0;
  std::vector<NestItem> items;
  for (auto _ : state) {
    bins = 0;
    for (const nestbench::RectangleSet& set : sets) {
      items.clear();
      for (const auto& [w, h] : set.sizes)
        items.push_back({0, 0, static_cast<double>(w), static_cast<double>(h), 0, 0, nullptr});
      const double side = set.side;
      const NestParams params = {side, side, 0, 0, 0, 0};
      int sheets = 0;
      NesterFrame(items.data(), static_cast<int>(items.size()), &params, &sheets);
      bins += sheets;
    }
  }
  state.counters["bins"] = bins;
}
BENCHMARK(NestRectangleClasses)->Unit(benchmark::kMillisecond);

void NestManyFrames(benchmark::State& state) {
  mek::PackRandom random(1);
  std::vector<NestItem> given;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    const double width = random.draw(50, 600);
    given.push_back({0, 0, width, static_cast<double>(random.draw(50, 600)), 0, 0, nullptr});
  }
  const NestParams params = {1500, 3000, 0, 5, 5, 100};
  for (auto _ : state) {
    std::vector<NestItem> items = given;
    int sheets = 0;
    NesterFrame(items.data(), static_cast<int>(items.size()), &params, &sheets);
    benchmark::DoNotOptimize(sheets);
  }
}
BENCHMARK(NestManyFrames)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// Ten instances of a class within 20,000 iterations each: the same work on every machine.
void PackClass(benchmark::State& state) {
  std::vector<mek::PackInstance> sets;
  for (int number = 0; number < 10; ++number)
    sets.push_back(
        nestbench::boxSet(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), number));
  int solved = 0;
  for (auto _ : state) {
    solved = 0;
    for (const mek::PackInstance& set : sets) {
      const mek::PackResult result =
          mek::solvePackInstance(set, {0, 20, 0}, static_cast<int>(state.range(2)));
      solved += result.lb == result.ub;
    }
  }
  state.counters["solved"] = solved;
}
BENCHMARK(PackClass)
    ->ArgsProduct({{1, 4, 5, 7, 9}, {20, 50}, {0, 1}})
    ->ArgNames({"class", "n", "robot"})
    ->Unit(benchmark::kMillisecond);

}  // namespace
