// Reading and writing a drawing file, from memory and from a file: KORVANE_BENCH_DRAWING names the file
// (bench/gen/drawing.py makes it).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "host/io/drawing_file.h"

namespace {

std::string inputPath() {
  const char* path = std::getenv("KORVANE_BENCH_DRAWING");
  return path ? path : "";
}

const std::string& inputBytes() {
  static const std::string bytes = [] {
    std::ifstream file(inputPath(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return bytes;
}

std::size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void readFromMemory(benchmark::State& state) {
  const std::string& bytes = inputBytes();
  for (auto _ : state) {
    const std::size_t before = heapInUse();
    KvIoReport report;
    auto database = std::make_unique<KvDbDatabase>(false, true);
    if (kvdbParseDrawing(*database, bytes, report) != Kvad::eOk)
      return state.SkipWithError("KORVANE_BENCH_DRAWING can't be read");
    state.PauseTiming();
    state.counters["bytes/object"] =
        static_cast<double>(heapInUse() - before) / static_cast<double>(database->objectCount());
    database.reset();
    state.ResumeTiming();
  }
}

void readFromFile(benchmark::State& state) {
  for (auto _ : state) {
    KvIoReport report;
    auto database = std::make_unique<KvDbDatabase>(false, true);
    if (kvdbReadDrawing(*database, inputPath(), report) != Kvad::eOk)
      return state.SkipWithError("KORVANE_BENCH_DRAWING can't be read");
    state.PauseTiming();
    database.reset();
    state.ResumeTiming();
  }
}

void write(benchmark::State& state, bool toFile) {
  KvDbDatabase database(false, true);
  KvIoReport report;
  if (kvdbParseDrawing(database, inputBytes(), report) != Kvad::eOk)
    return state.SkipWithError("KORVANE_BENCH_DRAWING can't be read");
  const std::string path = inputPath() + ".written";
  for (auto _ : state) {
    if (!toFile)
      benchmark::DoNotOptimize(kvdbFormatDrawing(database));
    else if (kvdbSaveDrawing(database, path, report) != Kvad::eOk)
      return state.SkipWithError("the drawing can't be written beside the input");
  }
}

BENCHMARK(readFromMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(readFromFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(write, toMemory, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(write, toFile, true)->Unit(benchmark::kMillisecond);

}  // namespace
