#include "host/graphics/plot.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/database/block.h"
#include "host/database/header.h"
#include "host/graphics/internal/plot_tracer.h"
#include "host/graphics/internal/records.h"

namespace {

using kvgr::LayoutRecord;
using kvgr::ViewLook;
using kvgr::ViewportRecord;

constexpr double kLeastPaper = 1, kGreatestPaper = 20000;  // mm

struct PaperName {
  std::string_view name;
  double width, height;
};
// ISO 216 and ANSI/ASME Y14.1, upright.
constexpr PaperName kPapers[] = {
    {"a0", 841, 1189},        {"a1", 594, 841},         {"a2", 420, 594},          {"a3", 297, 420},
    {"a4", 210, 297},         {"a5", 148, 210},         {"ansi_a", 215.9, 279.4},  {"ansi_b", 279.4, 431.8},
    {"ansi_c", 431.8, 558.8}, {"ansi_d", 558.8, 863.6}, {"ansi_e", 863.6, 1117.6}, {"letter", 215.9, 279.4},
    {"legal", 215.9, 355.6},
};

std::optional<double> numberOf(std::string_view text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size() ||
      !std::isfinite(value))
    return std::nullopt;
  return value;
}

/// One page being made.
class Plot {
 public:
  Plot(KvDbDatabase& database, const KvPlotOptions& options, KvGrCanvas& canvas)
      : database_(database), options_(options), canvas_(canvas), pictures_(database.folder()) {}

  KvPlotResult run() {
    block_ = database_.modelSpaceId();
    if (!options_.layout.IsEmpty() && !findLayout()) return result_;
    if (!choosePage() || !chooseView()) return result_;
    draw();
    result_.isPlotted = true;
    result_.warnings = pictures_.takeWarnings();
    return result_;
  }

 private:
  bool fail(std::string message) {
    result_.error = std::move(message);
    return false;
  }

  bool findLayout() {
    const std::vector<LayoutRecord> layouts = kvgr::layoutsOf(database_);
    const auto found = std::find_if(layouts.begin(), layouts.end(), [&](const LayoutRecord& layout) {
      if (options_.layout == L"*") return !layout.isModel;
      return platform::equalNoCase(layout.name.view(), options_.layout.view());
    });
    if (found == layouts.end()) {
      if (platform::equalNoCase(options_.layout.view(), L"Model")) return true;
      std::string names;
      for (const LayoutRecord& layout : layouts)
        names += (names.empty() ? "" : ", ") + platform::utf8From(layout.name);
      return fail("there is no layout \"" + platform::utf8From(options_.layout) + "\"; there are: " + names);
    }
    if (found->isModel) return true;
    layout_ = *found;
    isSheet_ = true;
    block_ = found->block;
    return true;
  }

  bool choosePage() {
    paper_ = options_.paper.value_or(KvPlotPaper());
    const bool hasOwn = isSheet_ && layout_.paperWidth >= kLeastPaper && layout_.paperHeight >= kLeastPaper &&
                        layout_.paperWidth <= kGreatestPaper && layout_.paperHeight <= kGreatestPaper;
    isOwnPage_ = hasOwn && !options_.paper && !options_.window && options_.scale == 0;
    if (!isOwnPage_) return true;
    paper_ = {layout_.paperWidth, layout_.paperHeight};
    if (layout_.rotation % 2 == 1) std::swap(paper_.width, paper_.height);
    return true;
  }

  bool chooseView() {
    if (isOwnPage_) {
      // The sheet's origin is the corner of what the printer reaches.
      const bool isTurned = layout_.rotation % 2 == 1;
      const double left = isTurned ? layout_.marginBottom : layout_.marginLeft;
      const double bottom = isTurned ? layout_.marginRight : layout_.marginBottom;
      scale_ = layout_.scale;
      origin_ = {left + layout_.originX, bottom + layout_.originY};
      visible_.add({0, 0, 0});
      visible_.add({paper_.width, paper_.height, 0});
      return true;
    }
    KvGePoint2d low, high;
    if (!chooseArea(low, high)) return false;
    const double width = high.x - low.x, height = high.y - low.y;
    const bool isWide = options_.turn == KvPlotOptions::Turn::Landscape ||
                        (options_.turn == KvPlotOptions::Turn::Auto && width > height);
    if (isWide != (paper_.width > paper_.height)) std::swap(paper_.width, paper_.height);
    const double roomX = paper_.width - 2 * options_.margin, roomY = paper_.height - 2 * options_.margin;
    if (!(roomX > 0 && roomY > 0)) return fail("the margins leave nothing of the sheet");
    scale_ = options_.scale;
    if (scale_ == 0) {
      const double byWidth = width > 0 ? roomX / width : 0, byHeight = height > 0 ? roomY / height : 0;
      scale_ = byWidth > 0 && byHeight > 0 ? std::min(byWidth, byHeight) : std::max(byWidth, byHeight);
      if (scale_ == 0) scale_ = 1;
    }
    const KvGePoint2d middle{(low.x + high.x) / 2, (low.y + high.y) / 2};
    origin_ = {paper_.width / 2 - middle.x * scale_, paper_.height / 2 - middle.y * scale_};
    if (!std::isfinite(scale_) || !std::isfinite(origin_.x) || !std::isfinite(origin_.y))
      return fail("the drawing is too far from its origin, or too large, to be plotted");
    visible_.add({options_.margin, options_.margin, 0});
    visible_.add({paper_.width - options_.margin, paper_.height - options_.margin, 0});
    isClipped_ = options_.window.has_value() || options_.scale != 0;
    return true;
  }

  bool chooseArea(KvGePoint2d& low, KvGePoint2d& high) {
    if (options_.window) {
      low = {std::min(options_.window->low.x, options_.window->high.x),
             std::min(options_.window->low.y, options_.window->high.y)};
      high = {std::max(options_.window->low.x, options_.window->high.x),
              std::max(options_.window->low.y, options_.window->high.y)};
      if (high.x > low.x && high.y > low.y) return true;
      return fail("the window has no extent");
    }
    kvgr::BoxTracer tracer(database_, options_);
    tracer.traceBlock(block_);
    KvGeBox3d box = tracer.box();
    if (isSheet_)
      for (const ViewportRecord& viewport : viewports()) {
        box.add(viewport.center + KvGeVector3d(viewport.width, viewport.height, 0) / 2);
        box.add(viewport.center - KvGeVector3d(viewport.width, viewport.height, 0) / 2);
      }
    if (box.isEmpty()) return fail("there is nothing to plot");
    low = kvge::planar(box.low);
    high = kvge::planar(box.high);
    return true;
  }

  std::vector<ViewportRecord> viewports() const {
    std::vector<ViewportRecord> found;
    const auto* record = KvDbBlockTableRecord::cast(block_.stub() ? block_.stub()->object : nullptr);
    if (!record) return found;
    bool isFirst = true;
    for (KvDbObjectId id : record->entities()) {
      ViewportRecord viewport;
      if (!id.stub() || !id.stub()->object || !kvgr::readViewport(*id.stub()->object, viewport)) continue;
      // The first one of a sheet is the view of the sheet itself.
      const bool isOfSheet = viewport.number == 1 || (isFirst && viewport.number <= 0);
      isFirst = false;
      const bool isSound = viewport.width > 0 && viewport.height > 0 && viewport.viewHeight > 0;
      if (!isOfSheet && viewport.isOn && isSound) found.push_back(std::move(viewport));
    }
    return found;
  }

  KvGeMatrix3d sheetToPage() const {
    return KvGeMatrix3d::translation({origin_.x, origin_.y, 0}) * KvGeMatrix3d::scaling(scale_);
  }

  void draw() {
    result_.width = paper_.width;
    result_.height = paper_.height;
    result_.scale = scale_;
    result_.origin = origin_;
    if (!options_.title.IsEmpty()) canvas_.setTitle(platform::utf8From(options_.title));
    canvas_.beginPage(paper_.width, paper_.height, options_.background);
    if (isClipped_) pushRectangle(visible_.low, visible_.high);
    const double linetypeScale = positiveReal(L"$LTSCALE");
    if (isSheet_)
      for (const ViewportRecord& viewport : viewports()) drawViewport(viewport, linetypeScale);
    ViewLook look;
    look.pictures = &pictures_;
    look.toPage = sheetToPage();
    look.dashScale = scale_ * linetypeScale;
    look.visible = visible_;
    kvgr::PlotTracer tracer(database_, options_, look, canvas_);
    tracer.traceBlock(block_);
    if (isClipped_) canvas_.popClip();
    canvas_.endPage();
  }

  double positiveReal(const wchar_t* name) const {
    const double value = database_.header().real(name);
    return value > 0 && std::isfinite(value) ? value : 1;
  }
  void pushRectangle(const KvGePoint3d& low, const KvGePoint3d& high) {
    canvas_.pushClip({{low.x, low.y}, {high.x, low.y}, {high.x, high.y}, {low.x, high.y}}, false);
  }

  void drawViewport(const ViewportRecord& viewport, double linetypeScale) {
    const double zoom = viewport.height / viewport.viewHeight;
    const KvGeVector3d direction =
        viewport.direction.isZeroLength() ? KvGeVector3d::kZAxis : viewport.direction.normal();
    const KvGeMatrix3d toView = KvGeMatrix3d::rotation(viewport.twist, KvGeVector3d::kZAxis) *
                                KvGeMatrix3d::worldToPlane(direction) *
                                KvGeMatrix3d::translation(KvGePoint3d::kOrigin - viewport.target);
    const KvGeMatrix3d toSheet =
        KvGeMatrix3d::translation({viewport.center.x, viewport.center.y, 0}) * KvGeMatrix3d::scaling(zoom) *
        KvGeMatrix3d::translation({-viewport.viewCenter.x, -viewport.viewCenter.y, 0}) * toView;
    ViewLook look;
    look.pictures = &pictures_;
    look.toPage = sheetToPage() * toSheet;
    look.frozenLayers = viewport.frozenLayers;
    // With PSLTSCALE dashes are as long in every viewport as on the sheet.
    const bool isBySheet = database_.header().whole(L"$PSLTSCALE") != 0;
    look.dashScale = scale_ * linetypeScale * (isBySheet ? 1 : zoom);
    const KvGeVector3d half(viewport.width / 2, viewport.height / 2, 0);
    const KvGePoint3d low = sheetToPage() * (viewport.center - half),
                      high = sheetToPage() * (viewport.center + half);
    look.visible.add(low);
    look.visible.add(high);
    const std::vector<KvGePoint2d> outline = clipOutline(viewport.clip);
    if (outline.size() >= 3)
      canvas_.pushClip(outline, false);
    else
      pushRectangle(low, high);
    kvgr::PlotTracer tracer(database_, options_, look, canvas_);
    tracer.traceBlock(database_.modelSpaceId());
    canvas_.popClip();
  }

  /// The strokes of the entity that bounds a viewport, joined, on the page.
  std::vector<KvGePoint2d> clipOutline(KvDbObjectId id) {
    class Outline : public KvGiTracer {
     public:
      using KvGiTracer::KvGiTracer;
      std::vector<KvGePoint2d> points;

     protected:
      void stroke(const KvGePoint3d* at, int count) override {
        for (int i = 0; i < count; ++i) points.push_back(kvge::planar(at[i]));
      }
      void fill(const KvGiArea&) override {}
      void adjustLayer(KvDbObjectId, KvGiLayerLook& look) const override {
        // An outline bounds whether or not it shows.
        look.isHidden = look.isFrozen = false;
      }
    };
    Outline outline(&database_);
    outline.setBaseTransform(sheetToPage());
    if (id.stub() && id.stub()->object) outline.trace(id.stub()->object);
    return std::move(outline.points);
  }

  KvDbDatabase& database_;
  const KvPlotOptions& options_;
  KvGrCanvas& canvas_;
  kvgr::Pictures pictures_;
  KvPlotResult result_;
  LayoutRecord layout_;
  KvDbObjectId block_;
  bool isSheet_ = false, isOwnPage_ = false, isClipped_ = false;
  KvPlotPaper paper_;
  double scale_ = 1;
  KvGePoint2d origin_;
  KvGeBox3d visible_;
};

}  // namespace

std::optional<KvPlotPaper> kvgrPaperNamed(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c == ' ' || c == '-' ? '_' : c;
  for (const PaperName& paper : kPapers)
    if (paper.name == lower) return KvPlotPaper{paper.width, paper.height};
  const std::size_t cross = lower.find('x');
  if (cross == lower.npos) return std::nullopt;
  const auto width = numberOf(std::string_view(lower).substr(0, cross));
  const auto height = numberOf(std::string_view(lower).substr(cross + 1));
  const auto isSound = [](std::optional<double> v) { return v && *v >= kLeastPaper && *v <= kGreatestPaper; };
  if (!isSound(width) || !isSound(height)) return std::nullopt;
  return KvPlotPaper{*width, *height};
}

std::optional<double> kvgrScaleNamed(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto first = numberOf(text.substr(0, colon));
  const auto second = colon == text.npos ? std::optional<double>(1) : numberOf(text.substr(colon + 1));
  if (!first || !second || !(*first > 0) || !(*second > 0)) return std::nullopt;
  const double scale = *first / *second;
  if (!(scale > 0) || !std::isfinite(scale)) return std::nullopt;
  return scale;
}

KvPlotResult kvgrPlot(KvDbDatabase& database, const KvPlotOptions& options, KvGrCanvas& canvas) {
  return Plot(database, options, canvas).run();
}

std::vector<CString> kvgrLayoutNames(const KvDbDatabase& database) {
  std::vector<CString> names;
  for (const LayoutRecord& layout : kvgr::layoutsOf(database))
    if (!layout.isModel) names.push_back(layout.name);
  return names;
}
