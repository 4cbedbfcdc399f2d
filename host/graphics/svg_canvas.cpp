// SVG: neighbouring strokes of one pen make one path; each glyph stands once and is used by reference.
#include <map>

#include <algorithm>

#include "host/graphics/canvas.h"
#include "host/graphics/internal/microns.h"

namespace {

using kvgr::microns;
using kvgr::put;

constexpr double kThinnest = 0.05;    // mm
constexpr double kGlyphUnits = 1000;  // for one capital's height
/// A path grows no longer than this, so that readers needn't hold it whole.
constexpr std::size_t kLongestPath = 1 << 16;

/// RFC 4648.
void putBase64(std::string& out, const std::string& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
    for (std::size_t k = 0; k < 4; ++k) out += k <= count ? kDigits[(group >> (18 - 6 * k)) & 63u] : '=';
  }
}

class SvgCanvas : public KvGrCanvas {
 public:
  void setTitle(const std::string& title) override { title_ = title; }
  void beginPage(double width, double height, std::uint32_t background) override {
    height_ = height;
    out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"";
    put(out_, width, 3);
    out_ += "mm\" height=\"";
    put(out_, height, 3);
    out_ += "mm\" viewBox=\"0 0 ";
    put(out_, microns(width));
    out_ += ' ';
    put(out_, microns(height));
    out_ += "\">\n";
    if (!title_.empty()) {
      out_ += "<title>";
      for (char c : title_) {
        if (c == '<' || c == '&')
          out_ += c == '<' ? "&lt;" : "&amp;";
        else if (static_cast<unsigned char>(c) >= ' ')
          out_ += c;
      }
      out_ += "</title>\n";
    }
    out_ += "<rect width=\"100%\" height=\"100%\" fill=\"";
    color(background);
    out_ +=
        "\"/>\n<g fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\" fill-rule=\"evenodd\">\n";
  }

  void endPage() override {
    flush();
    while (clips_ > 0) popClip();
    out_ += "</g>\n";
    if (glyphs_.empty()) return;
    out_ += "<defs>\n";
    for (const auto& [serial, glyph] : glyphs_) define(serial, *glyph);
    out_ += "</defs>\n";
  }

  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    begin(pen);
    moveTo(points[0]);
    if (count == 1) {
      path_ += "h0";
      return;
    }
    path_ += 'l';
    for (int i = 1; i < count; ++i) step(points[i], i > 1);
  }

  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool isClosed) override {
    begin(pen);
    moveTo(*poles++);
    for (int i = 0; i < count; ++i) {
      const bool isNew = i == 0 || degrees[i] != degrees[i - 1];
      if (isNew) path_ += degrees[i] == 1 ? 'l' : 'c';
      const std::int64_t fromX = x_, fromY = y_;
      for (int k = 0; k < degrees[i]; ++k) {
        x_ = fromX;
        y_ = fromY;
        step(*poles++, !isNew || k > 0);
      }
    }
    if (isClosed) path_ += 'z';
  }

  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t rgb) override {
    flush();
    out_ += "<path fill=\"";
    color(rgb);
    out_ += "\" d=\"";
    for (int i = 0; i < outlines; ++i) {
      moveTo(points[0]);
      path_ += 'l';
      for (int k = 1; k < counts[i]; ++k) step(points[k], k > 1);
      if (counts[i] < 2) path_ += "0 0";
      path_ += 'z';
      points += counts[i];
    }
    out_ += path_;
    out_ += "\"/>\n";
    path_.clear();
  }

  void picture(const std::shared_ptr<const KvGrPicture>& picture, const KvGrMatrix& m) override {
    flush();
    out_ += "<image width=\"1\" height=\"1\" preserveAspectRatio=\"none\" transform=\"matrix(";
    // Rows of points run downwards, as the page does.
    for (double v : {m.a, -m.b, -m.c, m.d}) {
      put(out_, microns(v));
      out_ += ' ';
    }
    put(out_, microns(m.c + m.e));
    out_ += ' ';
    put(out_, microns(height_ - m.d - m.f));
    out_ += picture->isJpeg ? ")\" href=\"data:image/jpeg;base64," : ")\" href=\"data:image/png;base64,";
    putBase64(out_, picture->file);
    out_ += "\"/>\n";
  }

  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t rgb, double bold) override {
    flush();
    glyphs_.emplace(glyph.serial, &glyph);
    out_ += "<use href=\"#g";
    put(out_, static_cast<std::int64_t>(glyph.serial));
    out_ += "\" fill=\"";
    color(rgb);
    if (bold > 0) {
      out_ += "\" stroke=\"";
      color(rgb);
      out_ += "\" stroke-width=\"";
      put(out_, std::llround(bold * kGlyphUnits));
    }
    out_ += "\" transform=\"matrix(";
    // The page's y runs downwards; the glyph's own is turned where it is defined.
    for (double v : {m.a, -m.b, -m.c, m.d}) {
      put(out_, v * 1000 / kGlyphUnits, 5);
      out_ += ' ';
    }
    put(out_, microns(m.e));
    out_ += ' ';
    put(out_, microns(height_ - m.f));
    out_ += ")\"/>\n";
  }

  void pushClip(const std::vector<KvGePoint2d>& outline, bool isInverted) override {
    flush();
    out_ += "<clipPath id=\"c";
    put(out_, ++clipCount_);
    out_ += "\"><path clip-rule=\"evenodd\" d=\"";
    if (isInverted) path_ += "M-1000000-1000000H9000000V9000000H-1000000z";
    if (!outline.empty()) {
      moveTo(outline[0]);
      for (std::size_t i = 1; i < outline.size(); ++i) {
        path_ += 'l';
        step(outline[i], false);
      }
      path_ += 'z';
    }
    out_ += path_;
    path_.clear();
    out_ += "\"/></clipPath>\n<g clip-path=\"url(#c";
    put(out_, clipCount_);
    out_ += ")\">\n";
    ++clips_;
  }
  void popClip() override {
    if (clips_ == 0) return;
    flush();
    out_ += "</g>\n";
    --clips_;
  }

  std::string finish(std::string& error) override {
    if (out_.empty()) {
      error = "nothing was plotted";
      return {};
    }
    out_ += "</svg>\n";
    return std::move(out_);
  }

 private:
  void begin(const KvGrPen& pen) {
    if (!path_.empty() && (!(pen == pen_) || path_.size() > kLongestPath)) flush();
    pen_ = pen;
  }
  void flush() {
    if (path_.empty()) return;
    out_ += "<path stroke=\"";
    color(pen_.rgb);
    out_ += "\" stroke-width=\"";
    put(out_, microns(std::max(pen_.width, kThinnest)));
    out_ += "\" d=\"";
    out_ += path_;
    out_ += "\"/>\n";
    path_.clear();
  }
  void color(std::uint32_t rgb) {
    constexpr char kDigits[] = "0123456789abcdef";
    out_ += '#';
    for (int shift = 20; shift >= 0; shift -= 4) out_ += kDigits[(rgb >> shift) & 15u];
  }
  void moveTo(KvGePoint2d p) {
    x_ = microns(p.x);
    y_ = microns(height_ - p.y);
    path_ += 'M';
    put(path_, x_);
    if (y_ >= 0) path_ += ' ';
    put(path_, y_);
  }
  void step(KvGePoint2d p, bool needsGap) {
    const std::int64_t x = microns(p.x), y = microns(height_ - p.y);
    if (needsGap && x >= x_) path_ += ' ';
    put(path_, x - x_);
    if (y >= y_) path_ += ' ';
    put(path_, y - y_);
    x_ = x;
    y_ = y;
  }
  void define(std::uint32_t serial, const KvLtGlyph& glyph) {
    out_ += "<path id=\"g";
    put(out_, static_cast<std::int64_t>(serial));
    out_ += "\" fill-rule=\"nonzero\" d=\"";
    bool isOpen = false;
    for (const KvLtSegment& s : glyph.outline) {
      constexpr char kLetters[] = {'M', 'L', 'Q', 'C'};
      constexpr int kCounts[] = {1, 1, 2, 3};
      if (s.kind == KvLtSegment::kMove && isOpen) out_ += 'z';
      isOpen = true;
      out_ += kLetters[s.kind];
      for (int i = 0; i < kCounts[s.kind]; ++i) {
        if (i > 0) out_ += ' ';
        put(out_, std::llround(s.points[i].x * kGlyphUnits));
        out_ += ' ';
        put(out_, std::llround(-s.points[i].y * kGlyphUnits));
      }
    }
    out_ += "z\"/>\n";
  }

  std::string out_, path_, title_;
  KvGrPen pen_;
  double height_ = 0;
  std::int64_t x_ = 0, y_ = 0, clipCount_ = 0;
  int clips_ = 0;
  std::map<std::uint32_t, const KvLtGlyph*> glyphs_;
};

}  // namespace

std::unique_ptr<KvGrCanvas> kvgrSvgCanvas() {
  return std::make_unique<SvgCanvas>();
}
