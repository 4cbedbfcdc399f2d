#pragma once
// What a plot is drawn on: pages of SVG, PDF, or a picture of points (PNG).
//
// Coordinates are millimetres from the lower left corner of the page, y upwards. Colours are 0xRRGGBB.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/geometry/point.h"
#include "host/graphics/picture.h"
#include "host/lettering/font.h"

struct KvGrPen {
  std::uint32_t rgb = 0;
  double width = 0.25;  ///< millimetres; the canvas shows the thinnest line it can for less
  friend bool operator==(const KvGrPen&, const KvGrPen&) = default;
};

/// A place for a glyph or a picture: x' = a x + c y + e, y' = b x + d y + f.
struct KvGrMatrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
};

class KvGrCanvas {
 public:
  virtual ~KvGrCanvas() = default;

  /// Whether a second page may be begun.
  virtual bool hasPages() const { return false; }
  /// The document's title (UTF-8); for forms that have one, before the end.
  virtual void setTitle(const std::string&) {}
  /// What follows stands on a layer; for forms whose viewers can switch them. Without `isVisible` it isn't
  /// seen until somebody does.
  virtual void setLayer(const CString&, bool isVisible) { static_cast<void>(isVisible); }
  /// Whether layers that are off are of use to the form.
  virtual bool hasLayers() const { return false; }
  virtual void beginPage(double width, double height, std::uint32_t background) = 0;
  virtual void endPage() = 0;

  /// One point is a dot of the pen's width.
  virtual void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) = 0;
  /// A row of lines and cubic curves: a start, then one point or three for each by its degree (1 or 3).
  virtual void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count,
                            const KvGrPen& pen, bool isClosed) = 0;
  /// Outlines by the even-odd rule.
  virtual void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t rgb) = 0;
  /// A picture in the place of the unit square: its lower left corner at 0, 0, its upper right one at 1, 1.
  virtual void picture(const std::shared_ptr<const KvGrPicture>& picture, const KvGrMatrix& place) = 0;
  /// `bold`: width of a stroke along the outline, in the glyph's own unit; 0: none.
  virtual void glyph(const KvLtGlyph& glyph, const KvGrMatrix& place, std::uint32_t rgb, double bold = 0) = 0;
  /// What follows shows only inside the outline (or, inverted, outside) until popClip. They nest.
  virtual void pushClip(const std::vector<KvGePoint2d>& outline, bool isInverted) = 0;
  virtual void popClip() = 0;

  /// The finished file; empty when it couldn't be made (a picture too large), with `error` telling why.
  virtual std::string finish(std::string& error) = 0;
};

std::unique_ptr<KvGrCanvas> kvgrSvgCanvas();
std::unique_ptr<KvGrCanvas> kvgrPdfCanvas();
/// `resolution` in points per inch.
std::unique_ptr<KvGrCanvas> kvgrPngCanvas(double resolution);
