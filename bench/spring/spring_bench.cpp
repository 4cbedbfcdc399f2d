// Springs by host commands: each form, and how the time grows with the number of coils.
#include <benchmark/benchmark.h>

#include "host/app/hostapp.h"
#include "module/spring/springs.h"

namespace {

using View = int (*)(double*, double, double, double, double);

/// A drawing that is made anew before it grows large, so that the figures are those of drawing alone.
struct Sheet {
  Sheet() : app(KvHostOptions{}) { fresh(); }
  void fresh() {
    KvApDocument* old = app.documents().curDocument();
    app.newDocument();
    app.documents().curDocument()->database()->disableUndoRecording(true);
    if (old) app.documents().close(old);
  }
  KvHostApp app;
};

void drawView(benchmark::State& state, View view, double length) {
  Sheet sheet;
  const double coils = static_cast<double>(state.range(0));
  constexpr int kPerSheet = 100;
  int drawn = 0;
  for (auto _ : state) {
    if (++drawn % kPerSheet == 0) {
      state.PauseTiming();
      sheet.fresh();
      state.ResumeTiming();
    }
    double point[3] = {0, drawn * 40.0, 0};
    benchmark::DoNotOptimize(view(point, 2, 20, length * coils, coils));
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(drawView, compressionFull, DrawCompSpring1, 8.0)->Arg(5)->Arg(50);
BENCHMARK_CAPTURE(drawView, compressionSection, DrawCompSpring3, 8.0)->Arg(5)->Arg(50);
BENCHMARK_CAPTURE(drawView, compressionSimple, DrawCompSpring5, 8.0)->Arg(5)->Arg(50)->Arg(500);
BENCHMARK_CAPTURE(drawView, extensionFull, DrawExteSpring1, 12.0)->Arg(5)->Arg(50);
BENCHMARK_CAPTURE(drawView, torsionFull, DrawTorSpring1, 3.0)->Arg(5)->Arg(50);

}  // namespace
