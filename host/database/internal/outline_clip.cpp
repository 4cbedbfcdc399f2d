#include "host/database/internal/outline_clip.h"

#include <algorithm>
#include <cmath>

namespace kvdb {
namespace {

double cross(KvGePoint2d a, KvGePoint2d b, KvGePoint2d c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

double areaOf(const std::vector<KvGePoint2d>& points) {
  double sum = 0;
  for (std::size_t i = 0, j = points.size() - 1; i < points.size(); j = i++)
    sum += points[j].x * points[i].y - points[i].x * points[j].y;
  return sum / 2;
}

bool isConvex(const std::vector<KvGePoint2d>& points) {
  const std::size_t n = points.size();
  for (std::size_t i = 0; i < n; ++i)
    if (cross(points[i], points[(i + 1) % n], points[(i + 2) % n]) < 0) return false;
  return true;
}

bool isEar(const std::vector<KvGePoint2d>& rest, std::size_t at) {
  const std::size_t n = rest.size();
  const KvGePoint2d a = rest[(at + n - 1) % n], b = rest[at], c = rest[(at + 1) % n];
  if (cross(a, b, c) <= 0) return false;
  return std::none_of(rest.begin(), rest.end(), [&](KvGePoint2d p) {
    if (p == a || p == b || p == c) return false;
    return cross(a, b, p) >= 0 && cross(b, c, p) >= 0 && cross(c, a, p) >= 0;
  });
}

/// One outline cut at the left side of a line (Sutherland and Hodgman).
void cutAtEdge(const std::vector<KvGePoint3d>& from, KvGePoint2d a, KvGePoint2d b,
               std::vector<KvGePoint3d>& to) {
  to.clear();
  const auto side = [&](const KvGePoint3d& p) { return cross(a, b, {p.x, p.y}); };
  for (std::size_t i = 0, j = from.size() - 1; i < from.size(); j = i++) {
    const double before = side(from[j]), here = side(from[i]);
    if ((before >= 0) != (here >= 0))
      to.push_back(from[j] + (from[i] - from[j]) * (before / (before - here)));
    if (here >= 0) to.push_back(from[i]);
  }
}

}  // namespace

OutlineClip::OutlineClip(std::vector<KvGePoint2d> points, bool isInverted)
    : points_(std::move(points)), isInverted_(isInverted) {
  points_.erase(std::unique(points_.begin(), points_.end()), points_.end());
  while (points_.size() > 1 && points_.front() == points_.back()) points_.pop_back();
  for (KvGePoint2d p : points_) box_.add({p.x, p.y, 0});
  if (points_.size() >= 3 && areaOf(points_) < 0) std::reverse(points_.begin(), points_.end());
  triangulate();
}

bool OutlineClip::contains(KvGePoint2d p) const {
  if (points_.size() < 3 || p.x < box_.low.x || p.x > box_.high.x || p.y < box_.low.y || p.y > box_.high.y)
    return false;
  bool isInside = false;
  for (std::size_t i = 0, j = points_.size() - 1; i < points_.size(); j = i++) {
    const KvGePoint2d a = points_[i], b = points_[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y))
      isInside = !isInside;
  }
  return isInside;
}

void OutlineClip::triangulate() {
  if (points_.size() < 3) return;
  if (isConvex(points_)) {
    convexParts_.push_back(points_);
    return;
  }
  std::vector<KvGePoint2d> rest = points_;
  while (rest.size() > 3) {
    std::size_t ear = 0;
    while (ear < rest.size() && !isEar(rest, ear)) ++ear;
    // An outline that crosses itself may have no ear; its corners go one by one.
    if (ear == rest.size()) ear = 0;
    const std::size_t n = rest.size();
    const KvGePoint2d a = rest[(ear + n - 1) % n], b = rest[ear], c = rest[(ear + 1) % n];
    if (cross(a, b, c) > 0) convexParts_.push_back({a, b, c});
    rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(ear));
  }
  if (cross(rest[0], rest[1], rest[2]) > 0) convexParts_.push_back(rest);
}

void OutlineClip::cut(const KvGePoint3d* points, int count, std::vector<KvGePoint3d>& kept,
                      std::vector<int>& starts) const {
  if (count == 1) {
    if (keeps({points[0].x, points[0].y})) {
      starts.push_back(0);
      kept.push_back(points[0]);
    }
    return;
  }
  std::vector<double> cuts;
  bool isOpen = false;
  for (int i = 0; i + 1 < count; ++i) {
    const KvGePoint3d &a = points[i], &b = points[i + 1];
    cuts.assign({0, 1});
    const bool isNear = std::max(a.x, b.x) >= box_.low.x && std::min(a.x, b.x) <= box_.high.x &&
                        std::max(a.y, b.y) >= box_.low.y && std::min(a.y, b.y) <= box_.high.y;
    for (std::size_t k = 0, j = points_.size() - 1; isNear && k < points_.size(); j = k++) {
      const KvGePoint2d from{a.x, a.y}, to{b.x, b.y};
      const double before = cross(points_[j], points_[k], from), here = cross(points_[j], points_[k], to);
      if ((before > 0) == (here > 0)) continue;
      const double t = before / (before - here);
      const double first = cross(from, to, points_[j]), second = cross(from, to, points_[k]);
      if ((first > 0) != (second > 0) && t > 0 && t < 1) cuts.push_back(t);
    }
    std::sort(cuts.begin(), cuts.end());
    for (std::size_t k = 0; k + 1 < cuts.size(); ++k) {
      const KvGePoint3d from = cuts[k] == 0 ? a : a + (b - a) * cuts[k];
      const KvGePoint3d to = cuts[k + 1] == 1 ? b : a + (b - a) * cuts[k + 1];
      if (!keeps(kvge::planar(kvge::midpoint(from, to)))) {
        isOpen = false;
        continue;
      }
      if (!isOpen) {
        starts.push_back(static_cast<int>(kept.size()));
        kept.push_back(from);
      }
      kept.push_back(to);
      isOpen = true;
    }
  }
}

void OutlineClip::clipArea(std::vector<KvGePoint3d>& points, std::vector<int>& counts) const {
  std::vector<KvGePoint3d> kept, outline, next;
  std::vector<int> keptCounts;
  // What lies outside is the area without its inside part: by the even-odd rule both together.
  if (isInverted_) {
    kept = points;
    keptCounts = counts;
  }
  for (const auto& part : convexParts_) {
    std::size_t at = 0;
    for (int count : counts) {
      outline.assign(points.begin() + static_cast<std::ptrdiff_t>(at),
                     points.begin() + static_cast<std::ptrdiff_t>(at) + count);
      at += static_cast<std::size_t>(count);
      for (std::size_t i = 0, j = part.size() - 1; i < part.size() && !outline.empty(); j = i++) {
        cutAtEdge(outline, part[j], part[i], next);
        outline.swap(next);
      }
      if (outline.size() < 3) continue;
      kept.insert(kept.end(), outline.begin(), outline.end());
      keptCounts.push_back(static_cast<int>(outline.size()));
    }
  }
  points = std::move(kept);
  counts = std::move(keptCounts);
}

}  // namespace kvdb
