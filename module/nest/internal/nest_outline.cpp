#include "module/nest/internal/nest_outline.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/text/format.h"

namespace mek::nest {
namespace {

constexpr std::size_t kPlainOutline = 4;
constexpr std::uint32_t kHpglColour = 0xff00ff;

bool near(double a, double b) {
  return std::abs(a - b) <= kTolerance;
}

double dot(const OutlinePoint& corner, const OutlinePoint& a, const OutlinePoint& b) {
  return (a.x - corner.x) * (b.x - corner.x) + (a.y - corner.y) * (b.y - corner.y);
}

double cross(const OutlinePoint& corner, const OutlinePoint& a, const OutlinePoint& b) {
  return (a.x - corner.x) * (b.y - corner.y) - (a.y - corner.y) * (b.x - corner.x);
}

/// The middle of three points on a line. Between two edges that meet at an angle a small cross product isn't
/// enough: the corners of tiny parts have one too.
bool isNeedless(const OutlinePoint& before, const OutlinePoint& point, const OutlinePoint& after) {
  if (std::abs(cross(point, before, after)) > kTolerance) return false;
  const bool alongX = near(before.y, point.y) && near(point.y, after.y);
  const bool alongY = near(before.x, point.x) && near(point.x, after.x);
  return alongX || alongY;
}

}  // namespace

NestOutline::NestOutline(double height, double length, const OutlineSpacing& spacing)
    : height_(height), length_(length), spacing_(spacing) {
  openSheet();
}

double NestOutline::sheetStart() const {
  return (length_ + spacing_.sheet) * (sheets_ - 1);
}

void NestOutline::openSheet() {
  ++sheets_;
  const double start = sheetStart(), end = start + length_;
  first_ = points_.size();
  points_.insert(points_.end(), {{end, 0}, {start, 0}, {start, height_}, {end, height_}});
}

bool NestOutline::isCorner(std::size_t i) const {
  const OutlinePoint &before = points_[i - 1], &point = points_[i], &after = points_[i + 1];
  return near(before.y, point.y) && std::abs(dot(point, before, after)) < kRightAngle &&
         cross(point, before, after) > 0 && after.y > point.y;
}

std::vector<NestGap> NestOutline::gaps() const {
  std::vector<NestGap> gaps;
  for (std::size_t i = first_ + 1; i + 1 < points_.size(); ++i) {
    if (!isCorner(i)) continue;
    const OutlinePoint& corner = points_[i];
    // The line upwards from the corner first meets the edges at the next point. Rows are free from the front
    // to the sheet's end, since no part is higher than the edge it stands at.
    NestGap gap{corner.x, corner.y, 0, points_[first_].x - corner.x, points_[i + 1].y - corner.y, i};
    const bool open = first_ == 0 && i <= kLastOpenCorner;
    gap.width = open ? points_.front().x - corner.x : points_[i - 1].x - corner.x + spacing_.edge / 2;
    const bool reachesEnd = near(points_[i - 1].x, points_[first_].x);
    if (near(gap.height, spacing_.part) && !reachesEnd) continue;
    gaps.push_back(gap);
  }
  for (std::size_t i = 0; i < gaps.size(); ++i)
    for (std::size_t j = i + 1; j < gaps.size(); ++j)
      if (gaps[j].x < gaps[i].x) std::swap(gaps[i], gaps[j]);
  return gaps;
}

void NestOutline::levelFront(const std::vector<NestGap>& gaps) {
  if (points_.size() != kPlainOutline) return;
  const bool low = std::any_of(gaps.begin(), gaps.end(),
                               [&](const NestGap& gap) { return gap.y < height_ - spacing_.edge / 2; });
  if (!low) return;
  OutlinePoint &a = points_[1], &b = points_[2];
  a.x = b.x = std::max(a.x, b.x);
  const bool turned = a.y > b.y;
  a.y = turned ? height_ : 0;
  b.y = turned ? 0 : height_;
}

double NestOutline::offsetX(const NestGap& gap) const {
  return gap.x - sheetStart() > kTolerance ? spacing_.part : 0;
}

double NestOutline::offsetY(const NestGap& gap) const {
  return gap.y > kTolerance ? spacing_.part : 0;
}

void NestOutline::place(const NestGap& gap, double width, double height) {
  const std::size_t i = gap.index;
  const OutlinePoint corner = points_[i];
  const double right = corner.x + offsetX(gap) + width, top = corner.y + offsetY(gap) + height;
  points_[i] = {right, corner.y};
  const auto next = points_.begin() + static_cast<std::ptrdiff_t>(i) + 1;
  if (near(top, next->y))
    *next = {right, next->y};
  else
    points_.insert(next, {{right, top}, {corner.x, top}});
  simplify(i);
}

/// Drops needless points near one, stepping back after each. The ends of the sheet's chain stay.
void NestOutline::simplify(std::size_t around) {
  std::size_t i = std::max(first_ + 1, around > 2 ? around - 2 : 0);
  std::size_t end = std::min(points_.size() - 1, around + 5);
  while (i < end) {
    if (!isNeedless(points_[i - 1], points_[i], points_[i + 1])) {
      ++i;
      continue;
    }
    points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(i));
    --end;
    if (i > first_ + 1) --i;
  }
}

bool NestOutline::fillNarrowestNotch() {
  if (points_.size() - first_ <= kPlainOutline) return false;
  std::size_t narrowest = 0;
  double width = height_;
  for (std::size_t i = first_ + 1; i + 2 < points_.size(); ++i) {
    const bool notch =
        isCorner(i) && near(points_[i + 1].y, points_[i + 2].y) && points_[i + 2].x > points_[i + 1].x;
    if (!notch || points_[i + 1].y - points_[i].y >= width) continue;
    narrowest = i;
    width = points_[i + 1].y - points_[i].y;
  }
  if (narrowest == 0) return false;
  OutlinePoint &corner = points_[narrowest], &next = points_[narrowest + 1];
  const double left = points_[narrowest - 1].x, right = points_[narrowest + 2].x;
  corner.x = next.x = std::min(left, right);
  const std::size_t before = points_.size();
  simplify(narrowest);
  return points_.size() < before;
}

std::string hpglRectangle(double x0, double y0, double x1, double y1) {
  const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e9, 1e9)); };
  const int left = whole(x0), low = whole(y0), right = whole(x1), high = whole(y1);
  const int red = kHpglColour & 0xff, green = kHpglColour >> 8 & 0xff, blue = kHpglColour >> 16 & 0xff;
  return platform::formatText<char>(
      "PC%d,%d,%d;PU%d,%d,PD%d,%d,%d,%d,%d,%d,%d,%d;",
      {red, green, blue, left, low, right, low, right, high, left, high, left, low});
}

}  // namespace mek::nest
