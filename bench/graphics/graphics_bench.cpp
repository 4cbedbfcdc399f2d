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
  void picture(const std::shared_ptr<const KvGrPicture>&, const KvGrMatrix&) override {}
  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t, double) override {
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
/// Keeps what a plot draws, and draws it again with nothing of ours between: what the picture costs Cairo.
class Recording : public KvGrCanvas {
 public:
  struct Mark {
    std::uint32_t rgb;
    double width;  // negative: filled
    cairo_path_t* path;
  };
  ~Recording() override {
    for (const Mark& mark : marks_) cairo_path_destroy(mark.path);
  }
  void beginPage(double, double height, std::uint32_t) override {
    height_ = height;
    surface_ = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kPoints, kPoints);
    cairo_ = cairo_create(surface_);
  }
  void endPage() override {}
  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    for (int i = 0; i < count; ++i) cairo_line_to(cairo_, x(points[i]), y(points[i]));
    keep(pen.rgb, pen.width);
  }
  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool) override {
    cairo_move_to(cairo_, x(*poles), y(*poles));
    ++poles;
    for (int i = 0; i < count; poles += degrees[i], ++i) {
      if (degrees[i] == 1)
        cairo_line_to(cairo_, x(poles[0]), y(poles[0]));
      else
        cairo_curve_to(cairo_, x(poles[0]), y(poles[0]), x(poles[1]), y(poles[1]), x(poles[2]), y(poles[2]));
    }
    keep(pen.rgb, pen.width);
  }
  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t rgb) override {
    for (int i = 0; i < outlines; ++i) {
      for (int k = 0; k < counts[i]; ++k, ++points)
        k == 0 ? cairo_move_to(cairo_, x(*points), y(*points))
               : cairo_line_to(cairo_, x(*points), y(*points));
      cairo_close_path(cairo_);
    }
    keep(rgb, -1);
  }
  void picture(const std::shared_ptr<const KvGrPicture>&, const KvGrMatrix&) override {}
  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t rgb, double) override {
    const auto at = [&](KvGePoint2d p) {
      return KvGePoint2d(m.a * p.x + m.c * p.y + m.e, m.b * p.x + m.d * p.y + m.f);
    };
    KvGePoint2d from;
    for (const KvLtSegment& s : glyph.outline) {
      const KvGePoint2d end = at(s.end());
      if (s.kind == KvLtSegment::kMove) {
        cairo_move_to(cairo_, x(end), y(end));
      } else if (s.kind == KvLtSegment::kLine) {
        cairo_line_to(cairo_, x(end), y(end));
      } else {
        const bool isCubic = s.kind == KvLtSegment::kCubic;
        const KvGePoint2d p = at(s.points[0]);
        const KvGePoint2d a = isCubic ? p : from + (p - from) * (2.0 / 3);
        const KvGePoint2d b = isCubic ? at(s.points[1]) : end + (p - end) * (2.0 / 3);
        cairo_curve_to(cairo_, x(a), y(a), x(b), y(b), x(end), y(end));
      }
      from = end;
    }
    keep(rgb, -1);
  }
  void pushClip(const std::vector<KvGePoint2d>&, bool) override {}
  void popClip() override {}
  std::string finish(std::string&) override { return {}; }

  void drawAgain() {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kPoints, kPoints);
    cairo_t* cairo = cairo_create(surface);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    cairo_set_tolerance(cairo, 0.2);
    cairo_set_antialias(cairo, CAIRO_ANTIALIAS_FAST);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_BUTT);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_BEVEL);
    for (const Mark& mark : marks_) {
      cairo_append_path(cairo, mark.path);
      cairo_set_source_rgb(cairo, ((mark.rgb >> 16) & 255) / 255.0, ((mark.rgb >> 8) & 255) / 255.0,
                           (mark.rgb & 255) / 255.0);
      cairo_set_line_width(cairo, std::max(mark.width * scale(), 1.0));
      mark.width < 0 ? cairo_fill(cairo) : cairo_stroke(cairo);
    }
    benchmark::DoNotOptimize(cairo_image_surface_get_data(surface));
    cairo_destroy(cairo);
    cairo_surface_destroy(surface);
  }
  static constexpr int kPoints = 2000;

 private:
  double scale() const { return kPoints / height_; }
  double x(KvGePoint2d p) const { return p.x * scale(); }
  double y(KvGePoint2d p) const { return (height_ - p.y) * scale(); }
  void keep(std::uint32_t rgb, double width) {
    marks_.push_back({rgb, width, cairo_copy_path(cairo_)});
    cairo_new_path(cairo_);
  }
  std::vector<Mark> marks_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cairo_ = nullptr;
  double height_ = 1;
};

KvPlotOptions square() {
  KvPlotOptions options;
  options.paper = KvPlotPaper{200, 200};
  return options;
}
constexpr double kSquareResolution = 25.4 * Recording::kPoints / 200;

/// A picture of 2,000 by 2,000 points, packed; and without the packing.
void Png(benchmark::State& state) {
  if (!drawing()) return state.SkipWithError("KORVANE_BENCH_DRAWING names no drawing");
  for (auto _ : state) {
    const auto canvas = kvgrPngCanvas(kSquareResolution);
    std::string error;
    kvgrPlot(*drawing(), square(), *canvas);
    if (state.range(0) != 0) benchmark::DoNotOptimize(canvas->finish(error).size());
  }
}
void PngCairo(benchmark::State& state) {
  if (!drawing()) return state.SkipWithError("KORVANE_BENCH_DRAWING names no drawing");
  Recording recording;
  kvgrPlot(*drawing(), square(), recording);
  for (auto _ : state) recording.drawAgain();
}
BENCHMARK(Png)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PngCairo)->Unit(benchmark::kMillisecond);

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
