// A picture of points, by Cairo's image surface.
#include <cairo.h>

#include <algorithm>

#include "host/graphics/canvas.h"
#include "host/graphics/internal/microns.h"

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr int kLargest = 32767;  // points along one side, Cairo's limit
constexpr double kThinnest = 1;  // points
constexpr double kRoundFrom = 2;

struct CairoEnd {
  void operator()(cairo_t* c) const { cairo_destroy(c); }
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};

class PngCanvas : public KvGrCanvas {
 public:
  explicit PngCanvas(double resolution) : scale_(resolution / kMillimetresPerInch) {}

  void beginPage(double width, double height, std::uint32_t background) override {
    const double w = std::ceil(width * scale_ - 1e-6), h = std::ceil(height * scale_ - 1e-6);
    if (!(w >= 1 && h >= 1 && w <= kLargest && h <= kLargest)) {
      error_ = "a picture may have 1 to " + std::to_string(kLargest) +
               " points along each side; this one would have more, or none";
      return;
    }
    height_ = h;
    surface_.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(w), static_cast<int>(h)));
    if (cairo_surface_status(surface_.get()) != CAIRO_STATUS_SUCCESS) {
      error_ = "there is not enough memory for the picture";
      surface_.reset();
      return;
    }
    cairo_.reset(cairo_create(surface_.get()));
    setColor(background);
    cairo_paint(cairo_.get());
    cairo_set_fill_rule(cairo_.get(), CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_tolerance(cairo_.get(), 0.2);
    cairo_set_antialias(cairo_.get(), CAIRO_ANTIALIAS_FAST);
  }
  void endPage() override {
    if (surface_) cairo_surface_flush(surface_.get());
  }

  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    if (!cairo_) return;
    moveTo(points[0]);
    if (count == 1) lineTo(points[0]);
    for (int i = 1; i < count; ++i) lineTo(points[i]);
    paint(pen, count == 1);
  }
  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool isClosed) override {
    if (!cairo_) return;
    moveTo(*poles++);
    for (int i = 0; i < count; poles += degrees[i], ++i) {
      if (degrees[i] == 1)
        lineTo(poles[0]);
      else
        cairo_curve_to(cairo_.get(), x(poles[0]), y(poles[0]), x(poles[1]), y(poles[1]), x(poles[2]),
                       y(poles[2]));
    }
    if (isClosed) cairo_close_path(cairo_.get());
    paint(pen);
  }
  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t rgb) override {
    if (!cairo_) return;
    outline(points, counts, outlines);
    setColor(rgb);
    cairo_fill(cairo_.get());
  }
  void picture(const std::shared_ptr<const KvGrPicture>& picture, const KvGrMatrix& m) override {
    if (!cairo_) return;
    const double w = picture->width, h = picture->height;
    const KvGePoint2d corner(m.e + m.c, m.f + m.d);
    cairo_matrix_t place{scale_ * m.a / w, -scale_ * m.b / w, -scale_ * m.c / h,
                         scale_ * m.d / h, x(corner),         y(corner)};
    // A matrix that can't be inverted would end all further drawing; so would one that Cairo's numbers can't
    // hold.
    constexpr double kLeast = 1e-4, kMost = 1e4;
    const double area = std::fabs(place.xx * place.yy - place.xy * place.yx);
    if (!(area > kLeast * kLeast && area < kMost * kMost)) return;
    cairo_surface_t* source = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(picture->pixels.data())),
        CAIRO_FORMAT_ARGB32, picture->width, picture->height, picture->width * 4);
    cairo_save(cairo_.get());
    cairo_transform(cairo_.get(), &place);
    cairo_rectangle(cairo_.get(), 0, 0, w, h);
    cairo_set_source_surface(cairo_.get(), source, 0, 0);
    cairo_pattern_set_extend(cairo_get_source(cairo_.get()), CAIRO_EXTEND_PAD);
    cairo_fill(cairo_.get());
    cairo_restore(cairo_.get());
    cairo_surface_destroy(source);
  }
  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t rgb, double bold) override {
    if (!cairo_) return;
    const auto place = [&](KvGePoint2d p) {
      const KvGePoint2d page(m.a * p.x + m.c * p.y + m.e, m.b * p.x + m.d * p.y + m.f);
      return KvGePoint2d(x(page), y(page));
    };
    KvGePoint2d at;
    for (const KvLtSegment& s : glyph.outline) {
      if (s.kind == KvLtSegment::kMove) {
        const KvGePoint2d p = place(s.points[0]);
        cairo_move_to(cairo_.get(), p.x, p.y);
      } else if (s.kind == KvLtSegment::kLine) {
        const KvGePoint2d p = place(s.points[0]);
        cairo_line_to(cairo_.get(), p.x, p.y);
      } else {
        const bool isCubic = s.kind == KvLtSegment::kCubic;
        const KvGePoint2d end = s.end();
        const KvGePoint2d a = place(isCubic ? s.points[0] : at + (s.points[0] - at) * (2.0 / 3));
        const KvGePoint2d b = place(isCubic ? s.points[1] : end + (s.points[0] - end) * (2.0 / 3));
        const KvGePoint2d c = place(end);
        cairo_curve_to(cairo_.get(), a.x, a.y, b.x, b.y, c.x, c.y);
      }
      at = s.end();
    }
    setColor(rgb);
    cairo_set_fill_rule(cairo_.get(), CAIRO_FILL_RULE_WINDING);
    if (bold > 0) {
      cairo_set_line_width(cairo_.get(), bold * scale_ * std::sqrt(std::fabs(m.a * m.d - m.b * m.c)));
      cairo_set_line_join(cairo_.get(), CAIRO_LINE_JOIN_ROUND);
      cairo_stroke_preserve(cairo_.get());
    }
    cairo_fill(cairo_.get());
    cairo_set_fill_rule(cairo_.get(), CAIRO_FILL_RULE_EVEN_ODD);
  }
  void pushClip(const std::vector<KvGePoint2d>& points, bool isInverted) override {
    if (!cairo_) return;
    cairo_save(cairo_.get());
    ++clips_;
    if (isInverted) cairo_rectangle(cairo_.get(), -kLargest, -kLargest, 4.0 * kLargest, 4.0 * kLargest);
    const int count = static_cast<int>(points.size());
    if (count > 0) outline(points.data(), &count, 1);
    cairo_clip(cairo_.get());
  }
  void popClip() override {
    if (!cairo_ || clips_ == 0) return;
    cairo_restore(cairo_.get());
    --clips_;
  }

  std::string finish(std::string& error) override {
    std::string bytes;
    if (!surface_) {
      error = error_.empty() ? "nothing was plotted" : error_;
      return bytes;
    }
    const auto write = [](void* to, const unsigned char* data, unsigned int length) {
      static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(data), length);
      return CAIRO_STATUS_SUCCESS;
    };
    if (cairo_surface_write_to_png_stream(surface_.get(), write, &bytes) == CAIRO_STATUS_SUCCESS)
      return bytes;
    error = "the picture could not be packed";
    return {};
  }

 private:
  double clamped(double v) const { return std::clamp(v, -8.0 * kLargest, 8.0 * kLargest); }
  double x(KvGePoint2d p) const { return clamped(p.x * scale_); }
  double y(KvGePoint2d p) const { return clamped(height_ - p.y * scale_); }
  void moveTo(KvGePoint2d p) { cairo_move_to(cairo_.get(), x(p), y(p)); }
  void lineTo(KvGePoint2d p) { cairo_line_to(cairo_.get(), x(p), y(p)); }
  void outline(const KvGePoint2d* points, const int* counts, int outlines) {
    for (int i = 0; i < outlines; ++i) {
      for (int k = 0; k < counts[i]; ++k, ++points) k == 0 ? moveTo(*points) : lineTo(*points);
      cairo_close_path(cairo_.get());
    }
  }
  void setColor(std::uint32_t rgb) {
    cairo_set_source_rgb(cairo_.get(), ((rgb >> 16) & 0xFFu) / 255.0, ((rgb >> 8) & 0xFFu) / 255.0,
                         (rgb & 0xFFu) / 255.0);
  }
  void paint(const KvGrPen& pen, bool isDot = false) {
    const double width = std::max(pen.width * scale_, kThinnest);
    setColor(pen.rgb);
    cairo_set_line_width(cairo_.get(), width);
    // Nobody sees the ends of thin lines, and square ones are drawn several times as fast.
    const bool isRound = isDot || width > kRoundFrom;
    cairo_set_line_cap(cairo_.get(), isRound ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    cairo_set_line_join(cairo_.get(), isRound ? CAIRO_LINE_JOIN_ROUND : CAIRO_LINE_JOIN_BEVEL);
    cairo_stroke(cairo_.get());
  }

  double scale_, height_ = 0;
  std::string error_;
  int clips_ = 0;
  std::unique_ptr<cairo_surface_t, CairoEnd> surface_;
  std::unique_ptr<cairo_t, CairoEnd> cairo_;
};

}  // namespace

std::unique_ptr<KvGrCanvas> kvgrPngCanvas(double resolution) {
  return std::make_unique<PngCanvas>(resolution);
}
