// PDF 1.5: one packed stream for each page, each glyph once as a form.
#include <zlib.h>

#include <map>

#include <algorithm>

#include "host/graphics/canvas.h"
#include "host/graphics/internal/microns.h"
#include "platform/text/utf.h"

namespace {

using kvgr::microns;
using kvgr::put;

constexpr double kPointsPerMillimetre = 72 / 25.4;
constexpr double kThinnest = 0.05;
constexpr double kGlyphUnits = 1000;
constexpr int kPacking = 1;  // zlib's fastest level: a drawing packs nearly as well as with the best

std::string packed(const std::string& bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::string out(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                static_cast<uLong>(bytes.size()), kPacking) != Z_OK)
    return {};
  out.resize(size);
  return out;
}

class PdfCanvas : public KvGrCanvas {
 public:
  bool hasPages() const override { return true; }
  bool hasLayers() const override { return true; }
  void setTitle(const std::string& title) override { title_ = title; }

  void setLayer(const CString& name, bool isVisible) override {
    const auto [place, isNew] = layers_.try_emplace(std::wstring(name.view()), layers_.size());
    if (isNew) layerOrder_.push_back({name, isVisible});
    wantedLayer_ = static_cast<int>(place->second);
  }

  void beginPage(double width, double height, std::uint32_t background) override {
    width_ = width;
    height_ = height;
    page_.clear();
    // Whole microns from here on.
    put(page_, kPointsPerMillimetre / 1000, 12);
    page_ += " 0 0 ";
    put(page_, kPointsPerMillimetre / 1000, 12);
    page_ += " 0 0 cm 1 J 1 j\n";
    forgetState();
    if (background == 0xFFFFFF) return;
    const KvGePoint2d corners[] = {{0, 0}, {width, 0}, {width, height}, {0, height}};
    const int count = 4;
    fill(corners, &count, 1, background);
  }

  void endPage() override {
    endPath();
    endLayer();
    wantedLayer_ = -1;
    while (depth_ > 0) popClip();
    const int content = stream(page_, "");
    std::string page = "<</Type/Page/Parent 2 0 R/MediaBox[0 0 ";
    put(page, width_ * kPointsPerMillimetre, 4);
    page += ' ';
    put(page, height_ * kPointsPerMillimetre, 4);
    page += "]/Contents ";
    put(page, static_cast<std::int64_t>(content));
    page += " 0 R/Resources 3 0 R>>";
    pages_.push_back(object(page));
  }

  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    beginLayer();
    setPen(pen);
    point(points[0], "m\n");
    if (count == 1) point(points[0], "l\n");
    for (int i = 1; i < count; ++i) point(points[i], "l\n");
  }

  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool isClosed) override {
    beginLayer();
    setPen(pen);
    point(*poles++, "m\n");
    for (int i = 0; i < count; ++i) {
      for (int k = 1; k < degrees[i]; ++k) point(*poles++, "");
      point(*poles++, degrees[i] == 1 ? "l\n" : "c\n");
    }
    if (isClosed) page_ += "h\n";
  }

  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t rgb) override {
    endPath();
    beginLayer();
    setFill(rgb);
    for (int i = 0; i < outlines; ++i) {
      for (int k = 0; k < counts[i]; ++k) point(*points++, k == 0 ? "m\n" : "l\n");
      page_ += "h\n";
    }
    page_ += "f*\n";
  }

  void picture(const std::shared_ptr<const KvGrPicture>& picture, const KvGrMatrix& m) override {
    endPath();
    beginLayer();
    const auto known = std::find(pictures_.begin(), pictures_.end(), picture);
    const auto index = known - pictures_.begin();
    if (known == pictures_.end()) pictures_.push_back(picture);
    page_ += "q ";
    for (double v : {m.a, m.b, m.c, m.d, m.e, m.f}) {
      put(page_, microns(v));
      page_ += ' ';
    }
    page_ += "cm/i";
    put(page_, static_cast<std::int64_t>(index));
    page_ += " Do Q\n";
  }

  void glyph(const KvLtGlyph& glyph, const KvGrMatrix& m, std::uint32_t rgb, double bold) override {
    endPath();
    beginLayer();
    setFill(rgb);
    const std::int64_t pen = bold > 0 ? std::llround(bold * kGlyphUnits) : 0;
    glyphs_.emplace(std::pair(glyph.serial, pen), &glyph);
    page_ += "q ";
    if (pen > 0) color(rgb, "RG ");
    for (double v : {m.a, m.b, m.c, m.d}) {
      put(page_, v * 1000 / kGlyphUnits, 5);
      page_ += ' ';
    }
    put(page_, microns(m.e));
    page_ += ' ';
    put(page_, microns(m.f));
    page_ += " cm";
    glyphName(page_, glyph.serial, pen);
    page_ += " Do Q\n";
  }

  void pushClip(const std::vector<KvGePoint2d>& outline, bool isInverted) override {
    endPath();
    endLayer();
    page_ += "q ";
    if (isInverted) page_ += "-1000000 -1000000 10000000 10000000 re ";
    for (std::size_t i = 0; i < outline.size(); ++i) point(outline[i], i == 0 ? "m " : "l ");
    if (outline.empty() && !isInverted) page_ += "0 0 0 0 re ";
    page_ += "h W* n\n";
    ++depth_;
  }
  void popClip() override {
    if (depth_ == 0) return;
    endPath();
    endLayer();
    page_ += "Q\n";
    --depth_;
    forgetState();
  }

  std::string finish(std::string& error) override {
    if (pages_.empty()) {
      error = "nothing was plotted";
      return {};
    }
    std::string resources = "<</XObject<<";
    for (const auto& [key, glyph] : glyphs_) {
      glyphName(resources, key.first, key.second);
      resources += ' ';
      put(resources, static_cast<std::int64_t>(glyphForm(*glyph, key.second)));
      resources += " 0 R";
    }
    for (std::size_t i = 0; i < pictures_.size(); ++i) {
      resources += "/i";
      put(resources, static_cast<std::int64_t>(i));
      resources += ' ';
      put(resources, static_cast<std::int64_t>(pictureObject(*pictures_[i])));
      resources += " 0 R";
    }
    resources += ">>";
    const std::string layers = layerObjects(resources);
    resources += ">>";
    std::string tree = "<</Type/Pages/Count ";
    put(tree, static_cast<std::int64_t>(pages_.size()));
    tree += "/Kids[";
    for (int page : pages_) {
      put(tree, static_cast<std::int64_t>(page));
      tree += " 0 R ";
    }
    tree += "]>>";
    objects_[0] = "<</Type/Catalog/Pages 2 0 R" + layers +
                  (title_.empty() ? "" : "/ViewerPreferences<</DisplayDocTitle true>>") + ">>";
    info_ = object("<<" + (title_.empty() ? std::string() : "/Title" + textString(title_)) +
                   "/Producer(Korvane Mechanical)>>");
    objects_[1] = std::move(tree);
    objects_[2] = std::move(resources);
    return assembled();
  }

 private:
  /// Layers as marked content: it never reaches across a clip's border.
  void beginLayer() {
    if (wantedLayer_ == openLayer_) return;
    endPath();
    endLayer();
    openLayer_ = wantedLayer_;
    if (openLayer_ < 0) return;
    page_ += "/OC/L";
    put(page_, static_cast<std::int64_t>(openLayer_));
    page_ += " BDC\n";
  }
  void endLayer() {
    if (openLayer_ < 0) return;
    endPath();
    page_ += "EMC\n";
    openLayer_ = -1;
  }
  /// The layers' objects: their names for the pages go to `resources`, what the catalogue says comes back.
  std::string layerObjects(std::string& resources) {
    if (layerOrder_.empty()) return {};
    std::string all, hidden;
    resources += "/Properties<<";
    for (std::size_t i = 0; i < layerOrder_.size(); ++i) {
      std::string reference;
      put(reference, static_cast<std::int64_t>(object(
                         "<</Type/OCG/Name" + textString(platform::utf8From(layerOrder_[i].name)) + ">>")));
      reference += " 0 R ";
      resources += "/L";
      put(resources, static_cast<std::int64_t>(i));
      resources += ' ' + reference;
      all += reference;
      if (!layerOrder_[i].isVisible) hidden += reference;
    }
    resources += ">>";
    return "/OCProperties<</OCGs[" + all + "]/D<</Order[" + all + "]/OFF[" + hidden + "]>>>>";
  }
  /// UTF-16 with its mark, as hexadecimal digits.
  static std::string textString(const std::string& utf8) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out = "<FEFF";
    for (char16_t unit : platform::toUtf16(platform::fromUtf8(utf8)))
      for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[(unit >> shift) & 15];
    return out + ">";
  }
  static void glyphName(std::string& out, std::uint32_t serial, std::int64_t pen) {
    out += pen > 0 ? "/b" : "/g";
    put(out, static_cast<std::int64_t>(serial));
  }

  int object(std::string body) {
    objects_.push_back(std::move(body));
    return static_cast<int>(objects_.size());
  }
  int stream(const std::string& content, const std::string& entries) {
    const std::string bytes = packed(content);
    std::string body = "<<" + entries + "/Filter/FlateDecode/Length ";
    put(body, static_cast<std::int64_t>(bytes.size()));
    body += ">>stream\n";
    body += bytes;
    body += "\nendstream";
    return object(std::move(body));
  }
  int pictureObject(const KvGrPicture& picture) {
    std::string entries = "/Type/XObject/Subtype/Image/BitsPerComponent 8/Width ";
    put(entries, static_cast<std::int64_t>(picture.width));
    entries += "/Height ";
    put(entries, static_cast<std::int64_t>(picture.height));
    if (picture.isJpeg && picture.components != 4) {
      entries += picture.components == 1 ? "/ColorSpace/DeviceGray" : "/ColorSpace/DeviceRGB";
      std::string body = "<<" + entries + "/Filter/DCTDecode/Length ";
      put(body, static_cast<std::int64_t>(picture.file.size()));
      return object(body + ">>stream\n" + picture.file + "\nendstream");
    }
    std::string colors, opacity;
    for (const std::uint32_t pixel : picture.pixels) {
      const std::uint32_t alpha = pixel >> 24;
      for (int shift : {16, 8, 0}) {
        const std::uint32_t v = (pixel >> shift) & 0xFFu;
        colors += static_cast<char>(alpha == 0 ? 255 : std::min(255u, (v * 255 + alpha / 2) / alpha));
      }
      if (!picture.isOpaque) opacity += static_cast<char>(alpha);
    }
    if (!picture.isOpaque) {
      const int mask = stream(opacity, entries + "/ColorSpace/DeviceGray");
      entries += "/SMask ";
      put(entries, static_cast<std::int64_t>(mask));
      entries += " 0 R";
    }
    return stream(colors, entries + "/ColorSpace/DeviceRGB");
  }
  int glyphForm(const KvLtGlyph& glyph, std::int64_t pen) {
    std::string path;
    if (pen > 0) {
      put(path, pen);
      path += " w 1 j\n";
    }
    KvGePoint2d at;
    const auto add = [&](KvGePoint2d p) {
      put(path, std::llround(p.x * kGlyphUnits));
      path += ' ';
      put(path, std::llround(p.y * kGlyphUnits));
      path += ' ';
    };
    for (const KvLtSegment& s : glyph.outline) {
      if (s.kind == KvLtSegment::kQuadratic) {
        // A quadratic curve as a cubic one.
        add(at + (s.points[0] - at) * (2.0 / 3));
        add(s.points[1] + (s.points[0] - s.points[1]) * (2.0 / 3));
        add(s.points[1]);
        path += "c\n";
      } else {
        const int count = s.kind == KvLtSegment::kCubic ? 3 : 1;
        for (int i = 0; i < count; ++i) add(s.points[i]);
        path += s.kind == KvLtSegment::kMove ? "m\n" : s.kind == KvLtSegment::kLine ? "l\n" : "c\n";
      }
      at = s.end();
    }
    path += pen > 0 ? "h B\n" : "f\n";
    std::string entries = "/Type/XObject/Subtype/Form/BBox[";
    const auto edge = [&](double v, std::int64_t outwards) {
      put(entries, static_cast<std::int64_t>(std::llround(v * kGlyphUnits)) + outwards);
      entries += ' ';
    };
    edge(glyph.low.x, -pen);
    edge(glyph.low.y, -pen);
    edge(glyph.high.x, pen);
    edge(glyph.high.y, pen);
    return stream(path, entries + "]");
  }
  std::string assembled() {
    std::string out = "%PDF-1.5\n%\xE2\xE3\xCF\xD3\n";
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      offsets.push_back(out.size());
      put(out, static_cast<std::int64_t>(i + 1));
      out += " 0 obj\n";
      out += objects_[i];
      out += "\nendobj\n";
    }
    const std::size_t table = out.size();
    out += "xref\n0 ";
    put(out, static_cast<std::int64_t>(offsets.size() + 1));
    out += "\n0000000000 65535 f \n";
    for (std::size_t offset : offsets) {
      std::string digits = std::to_string(offset);
      out.append(10 - std::min<std::size_t>(digits.size(), 10), '0');
      out += digits + " 00000 n \n";
    }
    out += "trailer\n<</Size ";
    put(out, static_cast<std::int64_t>(offsets.size() + 1));
    out += "/Root 1 0 R/Info ";
    put(out, static_cast<std::int64_t>(info_));
    out += " 0 R>>\nstartxref\n";
    put(out, static_cast<std::int64_t>(table));
    out += "\n%%EOF\n";
    return out;
  }

  void forgetState() {
    hasPen_ = hasFill_ = false;
    pathPoints_ = 0;
  }
  void setPen(const KvGrPen& pen) {
    // Some readers grow slow over very long paths.
    constexpr int kLongestPath = 5000;
    if (hasPen_ && pen == pen_ && pathPoints_ < kLongestPath) return;
    endPath();
    if (!hasPen_ || pen.rgb != pen_.rgb) color(pen.rgb, "RG\n");
    if (!hasPen_ || pen.width != pen_.width) {
      put(page_, microns(std::max(pen.width, kThinnest)));
      page_ += " w\n";
    }
    pen_ = pen;
    hasPen_ = true;
  }
  void setFill(std::uint32_t rgb) {
    if (hasFill_ && fill_ == rgb) return;
    color(rgb, "rg\n");
    fill_ = rgb;
    hasFill_ = true;
  }
  void color(std::uint32_t rgb, const char* setting) {
    for (int shift : {16, 8, 0}) {
      put(page_, static_cast<double>((rgb >> shift) & 0xFFu) / 255, 4);
      page_ += ' ';
    }
    page_ += setting;
  }
  /// Strokes what waits.
  void endPath() {
    if (pathPoints_ > 0 && isStroking_) page_ += "S\n";
    pathPoints_ = 0;
    isStroking_ = false;
  }
  void point(KvGePoint2d p, const char* what) {
    put(page_, microns(p.x));
    page_ += ' ';
    put(page_, microns(p.y));
    page_ += ' ';
    page_ += what;
    ++pathPoints_;
    isStroking_ = true;
  }

  std::vector<std::string> objects_{3};  // catalogue, pages, resources
  std::vector<int> pages_;
  std::string page_;
  double width_ = 0, height_ = 0;
  KvGrPen pen_;
  std::uint32_t fill_ = 0;
  bool hasPen_ = false, hasFill_ = false, isStroking_ = false;
  int depth_ = 0, pathPoints_ = 0;
  struct Layer {
    CString name;
    bool isVisible;
  };
  std::map<std::wstring, std::size_t> layers_;
  std::vector<Layer> layerOrder_;
  int wantedLayer_ = -1, openLayer_ = -1, info_ = 0;
  std::string title_;
  std::map<std::pair<std::uint32_t, std::int64_t>, const KvLtGlyph*> glyphs_;  // by serial and pen
  std::vector<std::shared_ptr<const KvGrPicture>> pictures_;
};

}  // namespace

std::unique_ptr<KvGrCanvas> kvgrPdfCanvas() {
  return std::make_unique<PdfCanvas>();
}
