#include "module/spring/coils.h"

namespace mek {
namespace {

/// A ground wire is cut at half its radius from its centre: half the cut is this share of the radius.
const double kGroundHalf = std::sqrt(3.0) / 2;
/// Coils nearer than this beyond their wire count as touching: nothing can be seen between them.
constexpr double kTouching = 1e-6;

Segment moved(const KvGePoint2d& from, const KvGePoint2d& to, double bearing, double distance) {
  return {polar(from, bearing, distance), polar(to, bearing, distance)};
}

/// Where a segment meets the plane across the axis at `x`; `otherwise` when it doesn't.
KvGePoint2d cutAt(const Segment& segment, double x, const KvGePoint2d& otherwise) {
  const double whole = segment.to.x - segment.from.x, part = x - segment.from.x;
  if (whole == 0 || part / whole < 0 || part / whole > 1) return otherwise;
  return {x, segment.from.y + part / whole * (segment.to.y - segment.from.y)};
}

}  // namespace

double CoilRow::slant(int coil) const {
  return std::atan2(lower(coil).x - upper(coil).x, 2 * row_);
}
double CoilRow::rearSlant(int coil) const {
  return std::atan2(upper(coil).x - lower(coil - 1).x, 2 * row_);
}

Segment CoilRow::leftFlank(int coil) const {
  return moved(upper(coil), lower(coil), kPi + slant(coil), radius_);
}
Segment CoilRow::rightFlank(int coil) const {
  return moved(upper(coil), lower(coil), slant(coil), radius_);
}
Segment CoilRow::rearLeft(int coil) const {
  return moved(lower(coil - 1), upper(coil), kPi - rearSlant(coil), radius_);
}
Segment CoilRow::rearRight(int coil) const {
  return moved(lower(coil - 1), upper(coil), -rearSlant(coil), radius_);
}

void CoilRow::line(const Segment& segment) {
  frame_.line(shown(segment.from), shown(segment.to));
}

void CoilRow::arc(const KvGePoint2d& start, const KvGePoint2d& end) {
  // A mirror turns the sense of the run.
  if (isMirrored_)
    frame_.arc(shown(end), shown(start), radius_);
  else
    frame_.arc(start, end, radius_);
}

/// The wire's outline beyond both rows.
void CoilRow::drawCaps(int coil) {
  const Segment left = leftFlank(coil), right = rightFlank(coil);
  const double half = radius_ * kGroundHalf;
  const bool isFirst = coil == 0, isLast = coil == count() - 1;
  const double cut = upper(coil).x + radius_ / 2;
  const double lowerCut = lower(coil).x - radius_ / 2;
  if (isFirst && first_ == CoilEnd::Ground) {
    arc(right.from, {cut, row_ + half});
    arc({lowerCut, -row_ - half}, right.to);
  } else if (isLast && last_ == CoilEnd::Ground) {
    arc({cut, row_ + half}, left.from);
    arc(left.to, {lowerCut, -row_ - half});
  } else {
    if (!(isFirst && first_ == CoilEnd::Arm)) {
      if (isFirst && first_ == CoilEnd::Cut)
        line({right.from, left.from});
      else
        arc(right.from, left.from);
    }
    if (!(isLast && last_ == CoilEnd::Arm)) {
      if (isLast && last_ == CoilEnd::Cut)
        line({left.to, right.to});
      else
        arc(left.to, right.to);
    }
  }
}

/// What can be seen of the rear strand between this coil and the one before.
void CoilRow::drawGap(int coil) {
  const double apartAbove = upper(coil).x - upper(coil - 1).x, apartBelow = lower(coil).x - lower(coil - 1).x;
  const double touching = 2 * radius_ * (1 + kTouching);
  if (apartAbove > touching) {
    const Segment edge = rearLeft(coil);
    if (const auto end = crossing(edge, rightFlank(coil - 1))) line({edge.to, *end});
  }
  if (apartBelow > touching) {
    const Segment edge = rearRight(coil);
    if (const auto end = crossing(edge, leftFlank(coil))) line({edge.from, *end});
  }
}

void CoilRow::drawFull() {
  for (int coil = 0; coil < count(); ++coil) drawCaps(coil);
  for (int coil = 1; coil < count(); ++coil) drawGap(coil);
  const double half = radius_ * kGroundHalf;
  for (int coil = 0; coil < count(); ++coil) {
    Segment left = leftFlank(coil), right = rightFlank(coil);
    if (coil == 0 && first_ == CoilEnd::Ground)
      left = {{upper(coil).x + radius_ / 2, row_ + half}, {lower(coil).x - radius_ / 2, -row_ - half}};
    if (coil == count() - 1 && last_ == CoilEnd::Ground)
      right = {{upper(coil).x + radius_ / 2, row_ + half}, {lower(coil).x - radius_ / 2, -row_ - half}};
    if (coil == 0 && first_ == CoilEnd::Arm) {
      // Both edges go on along the strand, up to the arm's end.
      const double along = kPi / 2 + slant(coil);
      left.from = polar(left.from, along, arm_);
      right.from = polar(right.from, along, arm_);
      line({left.from, right.from});
    }
    if (coil == count() - 1 && last_ == CoilEnd::Arm) {
      const double along = -kPi / 2 + slant(coil);
      left.to = polar(left.to, along, arm_);
      right.to = polar(right.to, along, arm_);
      line({left.to, right.to});
    }
    line(left);
    line(right);
  }
}

/// The part of a ground wire's section on the spring's side of the cut, closed by the cut.
void CoilRow::drawGroundSection(bool isUpper, int coil) {
  const bool isFirst = coil == 0;
  const KvGePoint2d center = isUpper ? upper(coil) : lower(coil);
  const double cut = isUpper ? center.x + radius_ / 2 : center.x - radius_ / 2;
  const double half = radius_ * kGroundHalf;
  const KvGePoint2d below(cut, center.y - half), above(cut, center.y + half);
  // More than half of the section is left where the centre lies on the spring's side.
  const bool isMore = isFirst ? center.x > cut : center.x < cut;
  const KvGePoint2d start = isFirst ? below : above, end = isFirst ? above : below;
  const KvGePoint2d middle(center.x + (isFirst ? radius_ : -radius_), center.y);
  if (isMore) {
    arc(start, middle);
    arc(middle, end);
  } else {
    arc(start, end);
  }
  line({below, above});
}

void CoilRow::drawSections(bool isUpper) {
  for (int coil = 0; coil < count(); ++coil) {
    if (isGround(coil))
      drawGroundSection(isUpper, coil);
    else
      frame_.circle(shown(isUpper ? upper(coil) : lower(coil)), radius_);
  }
}

void CoilRow::drawRear() {
  for (int coil = 1; coil < count(); ++coil) {
    Segment left = rearLeft(coil), right = rearRight(coil);
    // The end planes cut the outermost strands too.
    if (coil == 1 && first_ == CoilEnd::Ground) left.from = cutAt(left, lower(0).x - radius_ / 2, left.from);
    if (coil == count() - 1 && last_ == CoilEnd::Ground)
      right.to = cutAt(right, upper(coil).x + radius_ / 2, right.to);
    line(left);
    line(right);
  }
}

}  // namespace mek
