// The primitives of a tracer.
#include <algorithm>
#include <cmath>

#include "host/database/internal/flatten.h"
#include "host/database/tracer.h"
#include "host/lettering/line.h"

namespace {

/// Larger coordinates are damage, and their differences no longer fit into doubles.
constexpr double kFarthest = 1e100;

bool isDrawable(const KvGePoint3d& p) {
  return std::fabs(p.x) < kFarthest && std::fabs(p.y) < kFarthest && std::fabs(p.z) < kFarthest;
}
bool areDrawable(const KvGePoint3d* points, std::size_t count) {
  return std::all_of(points, points + count, isDrawable);
}

/// The circle through three points; false when they stand in a row.
bool circleThrough(const KvGePoint3d& a, const KvGePoint3d& b, const KvGePoint3d& c, KvGePoint3d& center,
                   KvGeVector3d& normal) {
  const KvGeVector3d ab = b - a, ac = c - a;
  normal = ab.crossProduct(ac);
  const double square = normal.lengthSqrd();
  // Relative to the sides: below this the centre is noise.
  if (!(square > 1e-24 * ab.lengthSqrd() * ac.lengthSqrd())) return false;
  const KvGeVector3d toCenter =
      (normal.crossProduct(ab) * ac.lengthSqrd() + ac.crossProduct(normal) * ab.lengthSqrd()) / (2 * square);
  center = a + toCenter;
  normal = normal / std::sqrt(square);
  return true;
}

}  // namespace

void KvGiTracer::strokeModel(const KvGePoint3d* points, int count) {
  if (isIdentity_) {
    if (areDrawable(points, static_cast<std::size_t>(count))) strokeWorld(points, count);
    return;
  }
  scratch_.clear();
  for (int i = 0; i < count; ++i) scratch_.push_back(transforms_.back() * points[i]);
  if (areDrawable(scratch_.data(), scratch_.size())) strokeWorld(scratch_.data(), count);
}

void KvGiTracer::conic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                       double sweep, KvGiArcType type) {
  if (!isShown()) return;
  const KvGePoint3d middle = toWorld(center);
  const KvGeVector3d a = isIdentity_ ? u : transforms_.back() * u;
  const KvGeVector3d b = isIdentity_ ? v : transforms_.back() * v;
  if (!isDrawable(middle) || !isDrawable(middle + a) || !isDrawable(middle + b)) return;
  if (!std::isfinite(start) || !std::isfinite(sweep)) return;
  sweep = std::clamp(sweep, -kvge::kTwoPi, kvge::kTwoPi);
  const bool isWhole = std::fabs(sweep) >= kvge::kTwoPi;
  const bool isFilled = traits_.fillType == kKvGiFillAlways && (isWhole || type != kKvGiArcSimple);
  if (!isFilled && (isWhole || type == kKvGiArcSimple) && !isCut() && strokeConic(middle, a, b, start, sweep))
    return;
  scratch_.clear();
  kvdb::flattenConic(middle, a, b, start, sweep, deviation_, true, scratch_);
  if (isWhole) {
    scratch_.back() = scratch_.front();
  } else if (type != kKvGiArcSimple) {
    if (type == kKvGiArcSector) scratch_.push_back(middle);
    scratch_.push_back(KvGePoint3d(scratch_.front()));
  }
  if (!isFilled) {
    strokeWorld(scratch_.data(), static_cast<int>(scratch_.size()));
    return;
  }
  scratch_.pop_back();
  outlineCounts_.assign(1, static_cast<int>(scratch_.size()));
  fillWorld(scratch_, outlineCounts_);
}

bool KvGiTracer::circle(const KvGePoint3d& center, double radius, const KvGeVector3d& normal) {
  const KvGeVector3d x = normal.perpVector() * radius;
  conic(center, x, normal.normal().crossProduct(x), 0, kvge::kTwoPi, kKvGiArcSimple);
  return isStopped_;
}

bool KvGiTracer::circle(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third) {
  KvGePoint3d center;
  KvGeVector3d normal;
  if (circleThrough(first, second, third, center, normal))
    return circle(center, center.distanceTo(first), normal);
  return isStopped_;
}

bool KvGiTracer::circularArc(const KvGePoint3d& center, double radius, const KvGeVector3d& normal,
                             const KvGeVector3d& startVector, double sweepAngle, KvGiArcType type) {
  const double length = startVector.length();
  if (!(length > 0)) return isStopped_;
  const KvGeVector3d x = startVector * (radius / length);
  conic(center, x, normal.normal().crossProduct(x), 0, sweepAngle, type);
  return isStopped_;
}

bool KvGiTracer::circularArc(const KvGePoint3d& start, const KvGePoint3d& point, const KvGePoint3d& end,
                             KvGiArcType type) {
  KvGePoint3d center;
  KvGeVector3d normal;
  if (!circleThrough(start, point, end, center, normal)) {
    const KvGePoint3d points[] = {start, point, end};
    return polyline(3, points, nullptr, -1);
  }
  const KvGeVector3d x = start - center;
  // About the normal of the three points the arc runs through the second one.
  conic(center, x, normal.crossProduct(x), 0, x.angleTo(end - center, normal), type);
  return isStopped_;
}

bool KvGiTracer::ellipticalArc(const KvGePoint3d& center, const KvGeVector3d& normal, double majorLength,
                               double minorLength, double startAngle, double endAngle, double tilt,
                               KvGiArcType type) {
  KvGeVector3d x = normal.perpVector();
  x.rotateBy(tilt, normal);
  const KvGeVector3d y = normal.normal().crossProduct(x);
  double sweep = endAngle - startAngle;
  if (!std::isfinite(sweep)) return isStopped_;
  if (std::fabs(sweep) < kvge::kTwoPi) sweep = kvge::normalizedAngle(sweep);
  if (sweep == 0) sweep = kvge::kTwoPi;
  conic(center, x * majorLength, y * minorLength, startAngle, sweep, type);
  return isStopped_;
}

bool KvGiTracer::polyline(int count, const KvGePoint3d* points, const KvGeVector3d*, long marker) {
  if (count <= 0 || !points || !isShown()) return isStopped_;
  const long before = marker_;
  if (marker >= 0) marker_ = marker;
  strokeModel(points, count);
  marker_ = before;
  return isStopped_;
}

bool KvGiTracer::polygon(int count, const KvGePoint3d* points) {
  if (count <= 0 || !points || !isShown()) return isStopped_;
  if (traits_.fillType == kKvGiFillAlways) return polyPolygon(1, &count, points);
  std::vector<KvGePoint3d> closed(points, points + count);
  closed.push_back(points[0]);
  strokeModel(closed.data(), count + 1);
  return isStopped_;
}

bool KvGiTracer::polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) {
  if (outlines <= 0 || !counts || !points || !isShown()) return isStopped_;
  scratch_.clear();
  outlineCounts_.clear();
  for (int i = 0; i < outlines; ++i) {
    if (counts[i] < 0) return isStopped_;
    for (int k = 0; k < counts[i]; ++k) scratch_.push_back(toWorld(*points++));
    outlineCounts_.push_back(counts[i]);
  }
  if (areDrawable(scratch_.data(), scratch_.size())) fillWorld(scratch_, outlineCounts_);
  return isStopped_;
}

bool KvGiTracer::strokeExactly(const KvGiPath& path, const KvGeMatrix3d& toModel) {
  if (std::none_of(path.vertices, path.vertices + path.count, [](const auto& v) { return v.bulge != 0; }))
    return false;
  kvdb::segmentsOfPath(path, flat_, degrees_);
  const KvGeMatrix3d map = isIdentity_ ? toModel : transforms_.back() * toModel;
  outline_.clear();
  for (KvGePoint2d p : flat_) outline_.push_back(map * KvGePoint3d(p.x, p.y, path.elevation));
  return areDrawable(outline_.data(), outline_.size()) &&
         strokeSegments(outline_.data(), degrees_.data(), static_cast<int>(degrees_.size()));
}

bool KvGiTracer::path(const KvGiPath& path) {
  if (path.count <= 0 || !path.vertices || !isShown()) return isStopped_;
  const KvGeMatrix3d toModel = KvGeMatrix3d::planeToWorld(path.normal);
  const bool isWide = std::any_of(path.vertices, path.vertices + path.count, [](const KvGiPathVertex& v) {
    return v.startWidth != 0 || v.endWidth != 0;
  });
  const double step = deviation({});
  const auto add = [&](KvGePoint2d p) {
    outline_.push_back(toModel * KvGePoint3d(p.x, p.y, path.elevation));
  };
  if (isWide) {
    std::vector<std::vector<KvGePoint2d>> outlines;
    kvdb::widenPath(path, step, outlines);
    for (const auto& outline : outlines) {
      outline_.clear();
      for (KvGePoint2d p : outline) add(p);
      const int count = static_cast<int>(outline.size());
      if (polyPolygon(1, &count, outline_.data())) return true;
    }
    return isStopped_;
  }
  isLinetypeContinuous_ = path.isLinetypeContinuous;
  if (!isCut() && strokeExactly(path, toModel)) {
    isLinetypeContinuous_ = false;
    return isStopped_;
  }
  kvdb::flattenPath(path, step, flat_);
  outline_.clear();
  for (KvGePoint2d p : flat_) add(p);
  strokeModel(outline_.data(), static_cast<int>(outline_.size()));
  isLinetypeContinuous_ = false;
  return isStopped_;
}

bool KvGiTracer::segments(const KvGePoint3d* poles, const unsigned char* degrees, int count) {
  if (!poles || !degrees || count <= 0 || !isShown()) return isStopped_;
  std::size_t total = 1;
  for (int i = 0; i < count; ++i) total += degrees[i];
  outline_.clear();
  for (std::size_t i = 0; i < total; ++i) outline_.push_back(toWorld(poles[i]));
  if (!areDrawable(outline_.data(), total)) return isStopped_;
  if (!isCut() && strokeSegments(outline_.data(), degrees, count)) return isStopped_;
  scratch_.clear();
  kvdb::flattenSegments(outline_.data(), degrees, count, deviation_, scratch_);
  // A curve has no corners for its dashes to begin at.
  isLinetypeContinuous_ = true;
  strokeWorld(scratch_.data(), static_cast<int>(scratch_.size()));
  isLinetypeContinuous_ = false;
  return isStopped_;
}

bool KvGiTracer::pline(const KvDbPolyline& polyline, int from, int count) {
  KvGiPath whole;
  const std::vector<KvGiPathVertex> vertices = kvgiVerticesOf(polyline, from, count, whole);
  whole.vertices = vertices.data();
  whole.count = static_cast<int>(vertices.size());
  return path(whole);
}

bool KvGiTracer::polypoint(int count, const KvGePoint3d* points) {
  if (!points || !isShown()) return isStopped_;
  for (int i = 0; i < count && !isStopped_; ++i) strokeModel(points + i, 1);
  return isStopped_;
}

bool KvGiTracer::shell(int points, const KvGePoint3d* vertices, int faceListSize, const std::int32_t* faces) {
  if (!vertices || !faces || !isShown()) return isStopped_;
  std::vector<KvGePoint3d> outline;
  for (int at = 0; at < faceListSize && !isStopped_;) {
    // A count below 0 tells a hole in the face before.
    const std::int64_t corners = std::abs(static_cast<std::int64_t>(faces[at++]));
    outline.clear();
    for (std::int64_t i = 0; i < corners && at < faceListSize; ++i, ++at)
      if (faces[at] >= 0 && faces[at] < points) outline.push_back(vertices[faces[at]]);
    if (outline.size() < 2) continue;
    outline.push_back(KvGePoint3d(outline.front()));
    strokeModel(outline.data(), static_cast<int>(outline.size()));
  }
  return isStopped_;
}

bool KvGiTracer::mesh(int rows, int columns, const KvGePoint3d* vertices) {
  if (rows <= 0 || columns <= 0 || !vertices || !isShown()) return isStopped_;
  for (int row = 0; row < rows && !isStopped_; ++row)
    strokeModel(vertices + static_cast<std::ptrdiff_t>(row) * columns, columns);
  std::vector<KvGePoint3d> line(static_cast<std::size_t>(rows));
  for (int column = 0; column < columns && !isStopped_; ++column) {
    for (int row = 0; row < rows; ++row)
      line[static_cast<std::size_t>(row)] = vertices[static_cast<std::ptrdiff_t>(row) * columns + column];
    strokeModel(line.data(), rows);
  }
  return isStopped_;
}

bool KvGiTracer::mask(int count, const KvGePoint3d* points) {
  if (count < 3 || !points || !isShown()) return isStopped_;
  scratch_.clear();
  for (int i = 0; i < count; ++i) scratch_.push_back(toWorld(points[i]));
  if (!areDrawable(scratch_.data(), scratch_.size())) return isStopped_;
  outlineCounts_.assign(1, count);
  cutArea(scratch_, outlineCounts_);
  if (!outlineCounts_.empty())
    cover({scratch_.data(), outlineCounts_.data(), static_cast<int>(outlineCounts_.size())});
  return isStopped_;
}

bool KvGiTracer::image(const KvGiImage& image) {
  if (!isShown()) return isStopped_;
  const auto turned = [&](const KvGeVector3d& v) { return isIdentity_ ? v : transforms_.back() * v; };
  const KvGiImage placed{toWorld(image.origin), turned(image.width), turned(image.height), image.file};
  if (isDrawable(placed.origin) && isDrawable(placed.origin + placed.width) &&
      isDrawable(placed.origin + placed.height))
    takeImage(placed);
  return isStopped_;
}

void KvGiTracer::endless(const KvGePoint3d& base, const KvGeVector3d& direction, bool isBothWays) {
  if (endlessBox_.isEmpty() || !isShown()) return;
  const KvGePoint3d p = toWorld(base);
  const KvGeVector3d d = isIdentity_ ? direction : transforms_.back() * direction;
  if (!isDrawable(p) || !isDrawable(p + d)) return;
  double from = isBothWays ? -kFarthest : 0, to = kFarthest;
  const double at[] = {p.x, p.y}, way[] = {d.x, d.y};
  const double low[] = {endlessBox_.low.x, endlessBox_.low.y},
               high[] = {endlessBox_.high.x, endlessBox_.high.y};
  for (int i = 0; i < 2; ++i) {
    if (way[i] == 0) {
      if (at[i] < low[i] || at[i] > high[i]) return;
      continue;
    }
    const double a = (low[i] - at[i]) / way[i], b = (high[i] - at[i]) / way[i];
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
  }
  if (!(from < to) || to >= kFarthest) return;
  const KvGePoint3d ends[] = {p + d * from, p + d * to};
  strokeWorld(ends, 2);
}

bool KvGiTracer::ray(const KvGePoint3d& base, const KvGePoint3d& through) {
  endless(base, through - base, false);
  return isStopped_;
}

bool KvGiTracer::xline(const KvGePoint3d& first, const KvGePoint3d& second) {
  endless(first, second - first, true);
  return isStopped_;
}

bool KvGiTracer::text(const KvGePoint3d& position, const KvGeVector3d& normal, const KvGeVector3d& direction,
                      const KvGiTextLook& look, const CString& text) {
  if (text.IsEmpty() || !isShown()) return isStopped_;
  const KvGeVector3d x = direction.normal(), y = normal.normal().crossProduct(x);
  const KvGeMatrix3d placed = KvGeMatrix3d().setCoordSystem(position, x, y, normal.normal());
  const KvGeMatrix3d toWorld = isIdentity_ ? placed : transforms_.back() * placed;
  if (!isDrawable(KvGePoint3d() + toWorld.translation())) return isStopped_;
  if (!takeText(toWorld, look, text)) drawGlyphs(toWorld, look, text);
  return isStopped_;
}

void KvGiTracer::drawGlyphs(const KvGeMatrix3d& toWorld, const KvGiTextLook& look, const CString& text) {
  const KvLtLine line = isOutlineOnly() ? kvltMeasureLine(look, text.view()) : kvltLayLine(look, text.view());
  const double scale = toWorld.scale();
  if (!(scale > 0)) return;
  if (isOutlineOnly()) {
    if (line.box.isEmpty()) return;
    const KvGePoint3d &low = line.box.low, &high = line.box.high;
    scratch_ = {low, {high.x, low.y, 0}, high, {low.x, high.y, 0}};
    for (KvGePoint3d& p : scratch_) p = toWorld * p;
    outlineCounts_.assign(1, 4);
    if (areDrawable(scratch_.data(), scratch_.size())) fillWorld(scratch_, outlineCounts_);
    return;
  }
  const auto fillFlat = [&] {
    scratch_.clear();
    for (KvGePoint2d p : flat_) scratch_.push_back(toWorld * KvGePoint3d(p.x, p.y, 0));
    if (areDrawable(scratch_.data(), scratch_.size())) fillWorld(scratch_, outlineCounts_);
  };
  for (const KvLtPlacedGlyph& glyph : line.glyphs) {
    if (isStopped_) return;
    flat_.clear();
    outlineCounts_.clear();
    kvltFlatten(glyph, deviation_ / scale, flat_, outlineCounts_);
    if (!glyph.glyph->isStroked) {
      fillFlat();
      continue;
    }
    outline_.clear();
    for (KvGePoint2d p : flat_) outline_.push_back(toWorld * KvGePoint3d(p.x, p.y, 0));
    if (!areDrawable(outline_.data(), outline_.size())) continue;
    const KvGePoint3d* at = outline_.data();
    for (int count : std::vector<int>(outlineCounts_)) {
      strokeWorld(at, count);
      at += count;
    }
  }
  for (const KvLtBar& bar : line.bars) {
    const double half = bar.thickness / 2;
    flat_ = {{bar.from.x, bar.from.y - half},
             {bar.to.x, bar.to.y - half},
             {bar.to.x, bar.to.y + half},
             {bar.from.x, bar.from.y + half}};
    outlineCounts_.assign(1, 4);
    fillFlat();
  }
}
