#include "host/graphics/internal/plot_tracer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/base/wcmatch.h"
#include "host/database/database.h"
#include "host/database/header.h"
#include "host/entities/textstyle.h"
#include "host/graphics/colors.h"
#include "host/lettering/line.h"
#include "host/lettering/shapes.h"

namespace kvgr {
namespace {

/// Chords on paper: far below what a line's width shows.
constexpr double kDeviation = 0.01;  // mm
/// Letters lower than this are no letters on paper.
constexpr double kLowestText = 0.02;  // mm
/// What stands in a linetype's element.
constexpr int kTextFlag = 2, kShapeFlag = 4;

bool isPlotted(KvDbObjectId layer, const KvPlotOptions& options) {
  if (options.layers.empty()) return true;
  const CString name = kvdbRecordName(layer);
  return std::any_of(options.layers.begin(), options.layers.end(), [&](const CString& pattern) {
    return kvutWcMatch(CString(name).MakeUpper(), CString(pattern).MakeUpper()) == RTNORM;
  });
}

const KvDbLayerTableRecord* recordOfLayer(KvDbObjectId layer) {
  return layer.stub() ? KvDbLayerTableRecord::cast(layer.stub()->object) : nullptr;
}

bool isPlottable(KvDbObjectId layer) {
  const KvDbLayerTableRecord* record = recordOfLayer(layer);
  return !record || record->isPlottable();
}

}  // namespace

PlotTracer::PlotTracer(KvDbDatabase& database, const KvPlotOptions& options, const ViewLook& look,
                       KvGrCanvas& canvas)
    : KvGiTracer(&database), options_(options), look_(look), canvas_(canvas) {
  setBaseTransform(look.toPage);
  setDeviation(kDeviation);
  setEndlessBox(look.visible);
}

void PlotTracer::adjustLayer(KvDbObjectId layer, KvGiLayerLook& look) const {
  if (look_.frozenLayers.contains(layer)) look.isFrozen = true;
  if (options_.withHiddenLayers && canvas_.hasLayers()) look.isHidden = false;
  if (!isPlottable(layer) || !isPlotted(layer, options_)) look.isHidden = true;
}

void PlotTracer::noteLayer() {
  const KvDbObjectId layer = style().layer;
  if (isLayerNoted_ && layer == notedLayer_) return;
  isLayerNoted_ = true;
  notedLayer_ = layer;
  const KvDbLayerTableRecord* record = recordOfLayer(layer);
  canvas_.setLayer(record ? record->getName() : CString(L"0"), !record || !record->isOff());
}

std::uint32_t PlotTracer::inkColor() {
  noteLayer();
  return kvgrPaperColor(style().color, options_.background, options_.isMonochrome);
}

KvGrPen PlotTracer::pen() {
  const int weight = style().lineWeight;
  return {inkColor(), weight < 0 ? options_.defaultLineWeight : weight / 100.0};
}

const PlotTracer::Pattern* PlotTracer::patternOf(KvDbObjectId linetype, double scale) {
  const auto [place, isNew] = patterns_.try_emplace(linetype);
  Pattern& pattern = place->second;
  if (isNew) {
    pattern.record = linetype.stub() ? KvDbLinetypeTableRecord::cast(linetype.stub()->object) : nullptr;
    if (pattern.record)
      for (const KvDbLinetypeDash& dash : pattern.record->dashes()) pattern.hasSigns |= (dash.flags & 6) != 0;
  }
  if (!pattern.record) return nullptr;
  pattern.dashes.lengths.clear();
  for (const KvDbLinetypeDash& dash : pattern.record->dashes())
    pattern.dashes.lengths.push_back(dash.length * scale);
  return pattern.dashes.isSound(pattern.hasSigns) ? &pattern : nullptr;
}

void PlotTracer::strokeFlat(std::span<const KvGePoint2d> points, bool isCurve) {
  const KvGiStyle& now = style();
  const KvGrPen with = pen();
  const double scale = look_.dashScale * now.linetypeScale;
  const Pattern* pattern = now.linetype.isNull() ? nullptr : patternOf(now.linetype, scale);
  if (!pattern) {
    canvas_.stroke(points.data(), static_cast<int>(points.size()), with);
    return;
  }
  const auto stroke = [&](const KvGePoint2d* dash, int count) { canvas_.stroke(dash, count, with); };
  const bool isContinuous = isCurve || isLinetypeContinuous() || points.size() == 2;
  if (!pattern->hasSigns) {
    kvgrDash(points, pattern->dashes, isContinuous, stroke);
    return;
  }
  const KvDbLinetypeTableRecord* record = pattern->record;
  kvgrDash(points, pattern->dashes, isContinuous, stroke, [&](const KvGrDashPlace& place) {
    // A sign stands where its element ends.
    const auto& dashes = record->dashes();
    const std::size_t count = dashes.size();
    const KvDbLinetypeDash& dash = dashes[(static_cast<std::size_t>(place.element) + count - 1) % count];
    if ((dash.flags & (kTextFlag | kShapeFlag)) != 0) drawSign(dash, place, scale);
  });
}

void PlotTracer::drawSign(const KvDbLinetypeDash& dash, const KvGrDashPlace& place, double scale) {
  constexpr int kAbsolute = 1;
  KvGiTextLook look = kvdbLookOfStyle(dash.style);
  const double along = std::atan2(place.direction.y, place.direction.x);
  const double angle = dash.rotation + ((dash.flags & kAbsolute) != 0 ? 0 : along);
  const KvGeVector2d x = place.direction, y = x.perpVector();
  const KvGePoint2d at = place.at + x * (dash.offset.x * scale) + y * (dash.offset.y * scale);
  const KvGeVector3d direction(std::cos(angle), std::sin(angle), 0);
  const KvGeMatrix3d toPage = KvGeMatrix3d().setCoordSystem(
      {at.x, at.y, 0}, direction, KvGeVector3d(-direction.y, direction.x, 0), KvGeVector3d::kZAxis);
  if ((dash.flags & kTextFlag) != 0) {
    look.height *= dash.scale * scale;
    takeText(toPage, look, dash.text);
    return;
  }
  const KvLtShapeFile* shapes = kvltFindShapes(look.fontFile.view(), look.fontFolder.get());
  if (!shapes || !shapes->find(dash.shapeNumber)) return;
  const double size = dash.scale * scale;
  strokeGlyph({&shapes->glyph(dash.shapeNumber), {}, size, size, 0}, toPage);
}

void PlotTracer::stroke(const KvGePoint3d* points, int count) {
  flat_.clear();
  for (int i = 0; i < count; ++i) flat_.push_back(kvge::planar(points[i]));
  strokeFlat(flat_, false);
}

void PlotTracer::fill(const KvGiArea& area) {
  fillFlat(area, inkColor());
}

void PlotTracer::cover(const KvGiArea& area) {
  noteLayer();
  fillFlat(area, options_.background);
}

void PlotTracer::fillFlat(const KvGiArea& area, std::uint32_t rgb) {
  flat_.clear();
  std::size_t total = 0;
  for (int i = 0; i < area.outlines; ++i) total += static_cast<std::size_t>(area.counts[i]);
  for (std::size_t i = 0; i < total; ++i) flat_.push_back(kvge::planar(area.points[i]));
  canvas_.fill(flat_.data(), area.counts, area.outlines, rgb);
}

void PlotTracer::takeImage(const KvGiImage& image) {
  noteLayer();
  const auto picture = look_.pictures ? look_.pictures->find(image.file) : nullptr;
  if (!picture) {
    drawImageFrame(image);
    return;
  }
  canvas_.picture(picture, {image.width.x, image.width.y, image.height.x, image.height.y, image.origin.x,
                            image.origin.y});
}

void PlotTracer::drawImageFrame(const KvGiImage& image) {
  constexpr double kShare = 0.9, kHighest = 1.0 / 6;  // of the frame's width and height
  const KvGePoint3d corners[] = {image.origin, image.origin + image.width,
                                 image.origin + image.width + image.height, image.origin + image.height,
                                 image.origin};
  stroke(corners, 5);
  const double width = image.width.length(), height = image.height.length();
  KvGiTextLook look;
  const KvLtLine line = kvltMeasureLine(look, image.file.view());
  if (!(line.width() > 0) || !(width > 0) || !(height > 0)) return;
  look.height = std::min(width * kShare / line.width(), height * kHighest);
  look.isRaw = true;
  const KvGeVector3d along = image.width / width, up = KvGeVector3d(-along.y, along.x, 0);
  const KvGePoint3d middle = image.origin + (image.width + image.height) / 2;
  const KvGePoint3d start = middle - along * (line.width() * look.height / 2) - up * (look.height / 2);
  takeText(KvGeMatrix3d().setCoordSystem(start, along, up, KvGeVector3d::kZAxis), look, image.file);
}

bool PlotTracer::strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v,
                             double start, double sweep) {
  if (!style().linetype.isNull()) {
    // Dashes run along the arc.
    const double radius = std::sqrt(std::max(u.lengthSqrd(), v.lengthSqrd()));
    const double step = radius > kDeviation ? 2 * std::acos(1 - kDeviation / radius) : 1;
    const int chords = static_cast<int>(std::clamp(std::ceil(std::fabs(sweep) / step), 4.0, 65536.0));
    flat_.clear();
    for (int i = 0; i <= chords; ++i) {
      const double t = start + sweep * i / chords;
      flat_.push_back(kvge::planar(center + u * std::cos(t) + v * std::sin(t)));
    }
    strokeFlat(flat_, true);
    return true;
  }
  // Cubic curves of an eighth of a turn lie within 4e-6 of the radius.
  const int parts = std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) / (kvge::kPi / 4) - 1e-9)));
  const double step = sweep / parts, handle = 4.0 / 3 * std::tan(step / 4);
  flat_.clear();
  double c = std::cos(start), s = std::sin(start);
  const auto at = [&](double x, double y) { return kvge::planar(center + u * x + v * y); };
  flat_.push_back(at(c, s));
  for (int i = 1; i <= parts; ++i) {
    const double nextC = std::cos(start + step * i), nextS = std::sin(start + step * i);
    flat_.push_back(at(c - handle * s, s + handle * c));
    flat_.push_back(at(nextC + handle * nextS, nextS - handle * nextC));
    flat_.push_back(at(nextC, nextS));
    c = nextC;
    s = nextS;
  }
  degrees_.assign(static_cast<std::size_t>(parts), 3);
  canvas_.strokeCurves(flat_.data(), degrees_.data(), parts, pen(), std::fabs(sweep) >= kvge::kTwoPi);
  return true;
}

bool PlotTracer::strokeSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count) {
  if (!style().linetype.isNull()) return false;
  flat_.clear();
  std::size_t total = 1;
  for (int i = 0; i < count; ++i) total += degrees[i];
  for (std::size_t i = 0; i < total; ++i) flat_.push_back(kvge::planar(poles[i]));
  canvas_.strokeCurves(flat_.data(), degrees, count, pen(), false);
  return true;
}

void PlotTracer::strokeGlyph(const KvLtPlacedGlyph& placed, const KvGeMatrix3d& toPage) {
  const KvGrPen with = pen();
  const auto place = [&](KvGePoint2d p) {
    const KvGePoint2d at = placed.map(p);
    return kvge::planar(toPage * KvGePoint3d(at.x, at.y, 0));
  };
  const auto flush = [&] {
    if (!degrees_.empty())
      canvas_.strokeCurves(flat_.data(), degrees_.data(), static_cast<int>(degrees_.size()), with, false);
    flat_.clear();
    degrees_.clear();
  };
  flat_.clear();
  degrees_.clear();
  for (const KvLtSegment& segment : placed.glyph->outline) {
    if (segment.kind == KvLtSegment::kMove) flush();
    const int count = segment.kind == KvLtSegment::kCubic ? 3 : 1;
    for (int i = 0; i < count; ++i) flat_.push_back(place(segment.points[i]));
    if (segment.kind != KvLtSegment::kMove) degrees_.push_back(static_cast<unsigned char>(count));
  }
  flush();
}

bool PlotTracer::takeText(const KvGeMatrix3d& toWorld, const KvGiTextLook& look, const CString& text) {
  if (look.height * toWorld.scale() < kLowestText) return true;
  const KvLtLine line = kvltLayLine(look, text.view());
  const std::uint32_t rgb = inkColor();
  const auto& m = toWorld.entry;
  for (const KvLtPlacedGlyph& g : line.glyphs) {
    if (g.glyph->isStroked) {
      strokeGlyph(g, toWorld);
      continue;
    }
    const KvGePoint2d ends[] = {g.at, {g.xScale, 0}, {g.yScale * g.slant, g.yScale}};
    KvGrMatrix place;
    place.e = m[0][0] * ends[0].x + m[0][1] * ends[0].y + m[0][3];
    place.f = m[1][0] * ends[0].x + m[1][1] * ends[0].y + m[1][3];
    place.a = m[0][0] * ends[1].x;
    place.b = m[1][0] * ends[1].x;
    place.c = m[0][0] * ends[2].x + m[0][1] * ends[2].y;
    place.d = m[1][0] * ends[2].x + m[1][1] * ends[2].y;
    canvas_.glyph(*g.glyph, place, rgb, g.bold);
  }
  for (const KvLtBar& bar : line.bars) {
    const KvGePoint3d a = toWorld * kvge::spatial(bar.from), b = toWorld * kvge::spatial(bar.to);
    const KvGePoint2d ends[] = {kvge::planar(a), kvge::planar(b)};
    canvas_.stroke(ends, 2, {rgb, bar.thickness * toWorld.scale()});
  }
  return true;
}

bool PlotTracer::beginClip(const std::vector<KvGePoint2d>& outline, bool isInverted) {
  canvas_.pushClip(outline, isInverted);
  return true;
}
void PlotTracer::endClip() {
  canvas_.popClip();
}

BoxTracer::BoxTracer(KvDbDatabase& database, const KvPlotOptions& options)
    : KvGiTracer(&database), options_(options) {
  // What the drawing says of its size is good enough to tell how fine its curves have to be.
  constexpr double kShare = 1e-4, kGreatest = 1e10;
  const KvGePoint3d low = database.header().point(L"$EXTMIN"), high = database.header().point(L"$EXTMAX");
  const double size = std::hypot(high.x - low.x, high.y - low.y);
  const bool isSound = high.x > low.x && high.y > low.y && size < kGreatest;
  setDeviation(isSound ? size * kShare : kDeviation);
}

void BoxTracer::stroke(const KvGePoint3d* points, int count) {
  for (int i = 0; i < count; ++i) box_.add(points[i]);
}
void BoxTracer::fill(const KvGiArea& area) {
  const KvGePoint3d* at = area.points;
  for (int i = 0; i < area.outlines; ++i)
    for (int k = 0; k < area.counts[i]; ++k) box_.add(*at++);
}
void BoxTracer::takeImage(const KvGiImage& image) {
  for (const KvGePoint3d& corner : {image.origin, image.origin + image.width, image.origin + image.height,
                                    image.origin + image.width + image.height})
    box_.add(corner);
}
bool BoxTracer::strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v,
                            double start, double sweep) {
  const auto add = [&](double t) { box_.add(center + u * std::cos(t) + v * std::sin(t)); };
  add(start);
  add(start + sweep);
  if (sweep < 0) start += std::exchange(sweep, -sweep);
  for (double top : {std::atan2(v.x, u.x), std::atan2(v.y, u.y)})
    for (double t : {top, top + kvge::kPi})
      if (kvge::normalizedAngle(t - start) <= sweep) add(t);
  return true;
}

bool BoxTracer::strokeSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count) {
  constexpr int kParts = 16;  // within a thousandth of what the curve bends
  for (int i = 0; i < count; ++i) {
    box_.add(poles[0]);
    for (int k = 1; degrees[i] == 3 && k < kParts; ++k) {
      const double t = static_cast<double>(k) / kParts, s = 1 - t;
      const KvGeVector3d sum = poles[0].asVector() * (s * s * s) + poles[1].asVector() * (3 * s * s * t) +
                               poles[2].asVector() * (3 * s * t * t) + poles[3].asVector() * (t * t * t);
      box_.add(KvGePoint3d::kOrigin + sum);
    }
    poles += degrees[i];
  }
  box_.add(*poles);
  return true;
}

void BoxTracer::adjustLayer(KvDbObjectId layer, KvGiLayerLook& look) const {
  if (!isPlottable(layer) || !isPlotted(layer, options_)) look.isHidden = true;
}

}  // namespace kvgr
