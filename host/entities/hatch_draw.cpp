// How hatches are drawn: which loops count, fills, and the pattern's lines cut at the boundaries.
#include <algorithm>
#include <array>
#include <cmath>

#include "host/entities/curve.h"
#include "host/entities/hatch.h"
#include "host/entities/internal/hatchsweep.h"
#include "host/geometry/polyline.h"

namespace {

using Outline = std::vector<std::unique_ptr<KvGeCurve3d>>;

/// Chords of an outline, coarse: enough to tell what lies in what.
std::vector<KvGePoint2d> corners(const Outline& outline) {
  constexpr int kSteps = 8;
  std::vector<KvGePoint2d> points;
  for (const auto& curve : outline)
    for (int i = 0; i < curve->spanCount(); ++i) {
      const kvge::Span span = curve->span(i);
      const int steps = span.kind == kvge::SpanKind::kLine ? 1 : kSteps;
      for (int k = 0; k < steps; ++k)
        points.push_back(kvge::planar(kvge::pointAt(span, span.low + (span.high - span.low) * k / steps)));
    }
  return points;
}

bool isInside(KvGePoint2d p, const std::vector<KvGePoint2d>& outline) {
  bool inside = false;
  for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
    const KvGePoint2d &a = outline[i], &b = outline[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

}  // namespace

std::vector<const KvDbHatch::Loop*> KvDbHatch::filledLoops() const {
  std::vector<const Loop*> all;
  for (const Loop& loop : loops_) all.push_back(&loop);
  if (style_ == kNormal || all.size() < 2) return all;
  // How many outlines lie around each: the outer ones count by all but the normal style, the next ones cut
  // holes by the outer style.
  std::vector<std::vector<KvGePoint2d>> outlines;
  for (const Loop* loop : all) outlines.push_back(corners(curvesOf(*loop)));
  std::vector<const Loop*> kept;
  const int deepest = style_ == kOuter ? 1 : 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    int depth = 0;
    for (std::size_t k = 0; k < all.size(); ++k)
      if (k != i && !outlines[i].empty() && !outlines[k].empty() &&
          isInside(outlines[i].front(), outlines[k]))
        ++depth;
    if (depth <= deepest) kept.push_back(all[i]);
  }
  return kept;
}

bool KvDbHatch::patternStretches(const std::function<void(KvGePoint2d, KvGePoint2d)>& take) const {
  std::vector<Outline> outlines;
  for (const Loop* loop : filledLoops()) outlines.push_back(curvesOf(*loop));
  struct Family {
    KvDbHatchSweep sweep;
    const PatternLine* line;
    KvGeVector2d direction, across;
    double spacing, shift, period;
  };
  std::vector<Family> families;
  double count = 0;
  for (const PatternLine& line : lines_) {
    const auto [sine, cosine] = kvge::sinCos(kvdxfRadians(line.angle));
    const KvGeVector2d direction(cosine, sine), across = direction.perpVector();
    const double spacing = line.offset.dotProduct(across);
    if (!(std::fabs(spacing) > 0) || !std::isfinite(spacing)) continue;
    double period = 0;
    for (double dash : line.dashes) period += std::fabs(dash);
    if (!std::isfinite(period)) continue;
    Family family{KvDbHatchSweep(line.base, direction, spacing),
                  &line,
                  direction,
                  across,
                  spacing,
                  line.offset.dotProduct(direction),
                  period};
    for (const Outline& outline : outlines) family.sweep.addOutline(outline);
    count += family.sweep.lineCount();
    families.push_back(std::move(family));
  }
  if (!(count <= kMostLines)) return false;
  // Dashes count too; what they come to is known before the first one is given out.
  std::vector<std::pair<const Family*, std::vector<std::array<double, 3>>>> rows;
  for (const Family& family : families) {
    auto& row = rows.emplace_back(&family, std::vector<std::array<double, 3>>()).second;
    family.sweep.forStretches([&](long number, double from, double to) {
      row.push_back({static_cast<double>(number), from, to});
      count += family.period > 0
                   ? (to - from) / family.period * static_cast<double>(family.line->dashes.size())
                   : 1;
    });
  }
  if (!(count <= 2.0 * kMostLines)) return false;
  for (const auto& entry : rows) {
    const Family* family = entry.first;
    for (const auto& [number, from, to] : entry.second) {
      const KvGePoint2d foot = family->line->base + family->across * (family->spacing * number);
      const auto at = [&](double place) { return foot + family->direction * place; };
      if (family->period == 0) {
        take(at(from), at(to));
        continue;
      }
      // The dashes begin at the line's own point, which wanders along from line to line.
      const double origin = family->shift * number;
      double place = origin + std::floor((from - origin) / family->period) * family->period;
      while (place < to) {
        for (double dash : family->line->dashes) {
          const double end = place + std::fabs(dash);
          if (dash > 0 && end > from && place < to) take(at(std::max(place, from)), at(std::min(end, to)));
          if (dash == 0 && place >= from && place <= to) take(at(place), at(place));
          place = end;
        }
      }
    }
  }
  return true;
}

Kvad::ErrorStatus KvDbHatch::getGeomExtents(KvDbExtents& extents) const {
  KvDbExtents box;
  std::vector<std::unique_ptr<KvGeCurve3d>> curves;
  getGeCurves(curves);
  for (const auto& curve : curves) {
    const KvGeBox3d one = curve->boundBox();
    if (one.isEmpty() || !std::isfinite(one.low.x + one.low.y + one.high.x + one.high.y)) continue;
    box.addPoint(one.low);
    box.addPoint(one.high);
  }
  if (box.isEmpty()) return Kvad::eInvalidExtents;
  extents = box;
  return Kvad::eOk;
}

void KvDbHatch::getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const {
  const KvGeMatrix3d toWorld = planeToWorld();
  for (const Loop& loop : loops_)
    for (const auto& curve : curvesOf(loop))
      if (auto moved = curve->transformed(toWorld)) curves.push_back(std::move(moved));
}

bool KvDbHatch::subWorldDraw(KvGiWorldDraw* draw) {
  if (loops_.empty()) return false;
  KvGiGeometry& geometry = draw->geometry();
  const KvGeMatrix3d toWorld = planeToWorld();
  const auto drawOutlines = [&] {
    std::vector<std::unique_ptr<KvGeCurve3d>> curves;
    getGeCurves(curves);
    for (const auto& curve : curves) kvdbDrawCurve(*curve, *draw);
  };
  if (draw->isOutlineOnly()) {
    drawOutlines();
    return true;
  }
  if (isSolidFill() || isGradient()) {
    std::vector<KvGePoint3d> points;
    std::vector<int> counts;
    for (const Loop* loop : filledLoops()) {
      const std::size_t before = points.size();
      for (const auto& curve : curvesOf(*loop)) {
        const auto moved = curve->transformed(toWorld);
        if (moved) kvdbFlatten(*moved, *draw, points);
      }
      if (points.size() > before) counts.push_back(static_cast<int>(points.size() - before));
    }
    draw->subEntityTraits().setFillType(kKvGiFillAlways);
    if (!counts.empty()) geometry.polyPolygon(static_cast<int>(counts.size()), counts.data(), points.data());
    return true;
  }
  const bool isDrawn = patternStretches([&](KvGePoint2d from, KvGePoint2d to) {
    const KvGePoint3d ends[] = {toWorld * kvge::spatial(from), toWorld * kvge::spatial(to)};
    if (from == to)
      geometry.polypoint(1, ends);
    else
      geometry.polyline(2, ends, &normal_);
  });
  if (!isDrawn) drawOutlines();
  return true;
}
