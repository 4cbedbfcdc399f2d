#pragma once
// From what entities draw to a page.
#include <unordered_map>
#include <unordered_set>

#include "host/database/tracer.h"
#include "host/graphics/canvas.h"
#include "host/graphics/dashes.h"
#include "host/graphics/internal/pictures.h"
#include "host/graphics/plot.h"
#include "host/lettering/line.h"

namespace kvgr {

/// How dashes and layers of one view are taken.
struct ViewLook {
  KvGeMatrix3d toPage;   ///< from the world to millimetres on the page
  double dashScale = 1;  ///< millimetres for a linetype's unit
  KvGeBox3d visible;     ///< on the page
  std::unordered_set<KvDbObjectId> frozenLayers;
  Pictures* pictures = nullptr;
};

class PlotTracer : public KvGiTracer {
 public:
  PlotTracer(KvDbDatabase& database, const KvPlotOptions& options, const ViewLook& look, KvGrCanvas& canvas);

 protected:
  void stroke(const KvGePoint3d* points, int count) override;
  void fill(const KvGiArea& area) override;
  bool isForPaper() const override { return true; }
  void cover(const KvGiArea& area) override;
  void takeImage(const KvGiImage& image) override;
  bool strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                   double sweep) override;
  bool strokeSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count) override;
  bool takeText(const KvGeMatrix3d& toWorld, const KvGiTextLook& look, const CString& text) override;
  bool beginClip(const std::vector<KvGePoint2d>& outline, bool isInverted) override;
  void endClip() override;
  void adjustLayer(KvDbObjectId layer, KvGiLayerLook& look) const override;

 private:
  struct Pattern {
    KvGrDashes dashes;
    const KvDbLinetypeTableRecord* record = nullptr;
    bool hasSigns = false;
  };
  const Pattern* patternOf(KvDbObjectId linetype, double scale);
  void fillFlat(const KvGiArea& area, std::uint32_t rgb);
  /// In place of a picture that can't be shown: its outline and its name.
  void drawImageFrame(const KvGiImage& image);
  void strokeFlat(std::span<const KvGePoint2d> points, bool isCurve);
  void drawSign(const KvDbLinetypeDash& dash, const KvGrDashPlace& place, double scale);
  /// A glyph of strokes, by the pen of what is being drawn.
  void strokeGlyph(const KvLtPlacedGlyph& placed, const KvGeMatrix3d& toPage);
  /// Tells the canvas of the layer that the next marks stand on.
  void noteLayer();
  KvGrPen pen();
  std::uint32_t inkColor();

  const KvPlotOptions& options_;
  const ViewLook& look_;
  KvGrCanvas& canvas_;
  std::vector<KvGePoint2d> flat_;
  std::vector<unsigned char> degrees_;
  std::unordered_map<KvDbObjectId, Pattern> patterns_;
  KvDbObjectId notedLayer_;
  bool isLayerNoted_ = false;
};

/// The box of what shows, by a transform.
class BoxTracer : public KvGiTracer {
 public:
  BoxTracer(KvDbDatabase& database, const KvPlotOptions& options);
  const KvGeBox3d& box() const { return box_; }
  bool isOutlineOnly() const override { return true; }

 protected:
  void stroke(const KvGePoint3d* points, int count) override;
  void fill(const KvGiArea& area) override;
  bool isForPaper() const override { return true; }
  void cover(const KvGiArea& area) override { fill(area); }
  void takeImage(const KvGiImage& image) override;
  bool strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                   double sweep) override;
  bool strokeSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count) override;
  void adjustLayer(KvDbObjectId layer, KvGiLayerLook& look) const override;

 private:
  const KvPlotOptions& options_;
  KvGeBox3d box_;
};

}  // namespace kvgr
