// Plots of a generated drawing by our own writers, and by Cairo's PDF and SVG surfaces from the same strokes;
// layout of paragraph text. KORVANE_BENCH_DRAWING names a drawing made by bench/gen/drawing.py.
#include <benchmark/benchmark.h>
#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cstdlib>

#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "host/lettering/paragraph.h"

namespace {

/// The same page by a general vector library; glyphs as paths.
class CairoCanvas : public KvGrCanvas {
 public:
  explicit CairoCanvas(bool isPdf) : isPdf_(isPdf) {}
  void beginPage(double width, double height, std::uint32_t) override {
    constexpr double kPoints = 72 / 25.4;
    const auto write = [](void* to, const unsigned char* data, unsigned int length) {
      static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(data), length);
      return CAIRO_STATUS_SUCCESS;
    };
    surface_ = isPdf_
                   ? cairo_pdf_surface_create_for_stream(write, &bytes_, width * kPoints, height * kPoints)
                   : cairo_svg_surface_create_for_stream(write, &bytes_, width * kPoints, height * kPoints);
    cairo_ = cairo_create(surface_);
    cairo_scale(cairo_, kPoints, kPoints);
  }
  void endPage() override {
    cairo_destroy(cairo_);
    cairo_surface_finish(surface_);
    cairo_surface_destroy(surface_);
  }
  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    for (int i = 0; i < count; ++i) cairo_line_to(cairo_, points[i].x, points[i].y);
    paint(pen);
  }
  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool) override {
    cairo_move_to(cairo_, poles->x, poles->y);
    ++poles;
    for (int i = 0; i < count; poles += degrees[i], ++i) {
      if (degrees[i] == 1)
        cairo_line_to(cairo_, poles[0].x, poles[0].y);
      else
        cairo_curve_to(cairo_, poles[0].x, poles[0].y, poles[1].x, poles[1].y, poles[2].x, poles[2].y);
    }
    paint(pen);
  }
  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t) override {
    for (int i = 0; i < outlines; ++i) {
      for (int k = 0; k < counts[i]; ++k, ++points)
        k == 0 ? cairo_move_to(cairo_, points->x, points->y) : cairo_line_to(cairo_, points->x, points->y);
      cairo_close_path(cairo_);
    }
    cairo_fill(cairo_);
  }
  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t) override {
    const auto to = [&](KvGePoint2d p, auto call) {
      call(cairo_, m.a * p.x + m.c * p.y + m.e, m.b * p.x + m.d * p.y + m.f);
    };
    for (const KvLtSegment& s : glyph.outline)
      to(s.end(), s.kind == KvLtSegment::kMove ? cairo_move_to : cairo_line_to);
    cairo_fill(cairo_);
  }
  void pushClip(const std::vector<KvGePoint2d>&, bool) override { cairo_save(cairo_); }
  void popClip() override { cairo_restore(cairo_); }
  std::string finish(std::string&) override { return std::move(bytes_); }

 private:
  void paint(const KvGrPen& pen) {
    cairo_set_source_rgb(cairo_, ((pen.rgb >> 16) & 255) / 255.0, ((pen.rgb >> 8) & 255) / 255.0,
                         (pen.rgb & 255) / 255.0);
    cairo_set_line_width(cairo_, pen.width);
    cairo_stroke(cairo_);
  }
  bool isPdf_;
  std::string bytes_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cairo_ = nullptr;
};

KvDbDatabase* drawing() {
  static KvDbDatabase database(false);
  static const bool isRead = [] {
    KvIoReport report;
    const char* file = std::getenv("KORVANE_BENCH_DRAWING");
    return file && kvdbReadDrawing(database, file, report, KvIoMode::Recover) == Kvad::eOk;
  }();
  return isRead ? &database : nullptr;
}

template <class Make>
void plot(benchmark::State& state, Make make) {
  if (!drawing()) {
    state.SkipWithError("KORVANE_BENCH_DRAWING names no drawing");
    return;
  }
  std::size_t size = 0;
  for (auto _ : state) {
    const std::unique_ptr<KvGrCanvas> canvas = make();
    std::string error;
    if (!kvgrPlot(*drawing(), {}, *canvas).isPlotted) state.SkipWithError("not plotted");
    size = canvas->finish(error).size();
    benchmark::DoNotOptimize(size);
  }
  state.counters["bytes"] = static_cast<double>(size);
}

void Svg(benchmark::State& state) {
  plot(state, kvgrSvgCanvas);
}
void SvgCairo(benchmark::State& state) {
  plot(state, [] { return std::make_unique<CairoCanvas>(false); });
}
void Pdf(benchmark::State& state) {
  plot(state, kvgrPdfCanvas);
}
void PdfCairo(benchmark::State& state) {
  plot(state, [] { return std::make_unique<CairoCanvas>(true); });
}
BENCHMARK(Svg)->Unit(benchmark::kMillisecond);
BENCHMARK(SvgCairo)->Unit(benchmark::kMillisecond);
BENCHMARK(Pdf)->Unit(benchmark::kMillisecond);
BENCHMARK(PdfCairo)->Unit(benchmark::kMillisecond);

/// Words of eight letters, with a code in each tenth.
void Paragraphs(benchmark::State& state) {
  std::wstring contents;
  for (int i = 0; static_cast<std::int64_t>(contents.size()) < state.range(0); ++i)
    contents += i % 10 == 0 ? L"{\\H1.5x;lettered} " : L"lettered ";
  KvLtParagraphLook look;
  look.width = 100;
  for (auto _ : state) benchmark::DoNotOptimize(kvltLayParagraphs(look, contents).actualHeight);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(contents.size()));
}
BENCHMARK(Paragraphs)->Arg(100)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

}  // namespace
