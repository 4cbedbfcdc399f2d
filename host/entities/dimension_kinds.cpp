// What each kind of dimension measures and how it is drawn.
#include <algorithm>
#include <cmath>

#include "host/entities/internal/dimlayout.h"

namespace {

using V = KvDbDimVar;

KvGeVector2d direction(double angle) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return {cosine, sine};
}

/// A straight dimension: between the feet of both points on the line through `on` along `angle`.
bool layOutLinear(KvDbDimLayout& layout, KvGePoint2d first, KvGePoint2d second, KvGePoint2d on, double angle,
                  double oblique) {
  KvGeVector2d along = direction(angle);
  const KvGeVector2d across = along.perpVector();
  // Extension lines stand upright on the line, or lean.
  const KvGeVector2d lean = oblique != 0 ? direction(oblique) : across;
  const double rise = lean.dotProduct(across);
  if (std::fabs(rise) < 1e-9) return false;
  const auto footOf = [&](KvGePoint2d p) { return p + lean * ((on - p).dotProduct(across) / rise); };
  const KvGePoint2d feet[] = {footOf(first), footOf(second)};
  double length = (feet[1] - feet[0]).dotProduct(along);
  if (length < 0) along = -along, length = -length;
  if (!(length > 1e-12) || !std::isfinite(length)) return false;
  layout.extension(first, feet[0], 1);
  layout.extension(second, feet[1], 2);
  KvDbDimLayout::Track track;
  track.length = length;
  const KvGePoint2d start = feet[0];
  track.at = [=](double place) { return start + along * place; };
  track.tangent = [=](double) { return along; };
  track.draw = [&](double from, double to) {
    if (to - from > 1e-9) layout.line(track.at(from), track.at(to));
  };
  track.placeOf = [=](KvGePoint2d p) {
    return std::pair((p - start).dotProduct(along), along.crossProduct(p - start));
  };
  // Away from what is measured; a point on the line leaves the side open.
  const double side = (feet[0] - first).dotProduct(lean) + (feet[1] - second).dotProduct(lean);
  const KvGeVector2d away = side < 0 ? -lean : lean;
  track.rise = [=](int) { return away; };
  layout.measureLine(track);
  for (const KvGePoint2d& p : {first, second, feet[1]}) layout.definitionPoint(p);
  return true;
}

/// A round one about a centre, counter-clockwise from one bearing to another.
bool layOutAngle(KvDbDimLayout& layout, KvGePoint2d center, double radius, double start, double sweep,
                 KvGePoint2d first, KvGePoint2d second) {
  if (!(radius > 1e-12) || !(sweep > 1e-12) || !std::isfinite(radius)) return false;
  const auto on = [=](double bearing) { return center + direction(bearing) * radius; };
  // Lines run from what is measured; a point beyond the arc needs none.
  const auto extend = [&](KvGePoint2d from, double bearing, int which) {
    if ((from - center).length() < radius) layout.extension(from, on(bearing), which);
  };
  extend(first, start, 1);
  extend(second, start + sweep, 2);
  KvDbDimLayout::Track track;
  track.length = sweep * radius;
  const double whole = track.length;
  // Beyond the ends the track goes straight on, so that what stands there doesn't wander round.
  track.at = [=](double place) {
    const double inside = std::clamp(place, 0.0, whole);
    const double bearing = start + inside / radius;
    return on(bearing) + direction(bearing).perpVector() * (place - inside);
  };
  track.tangent = [=](double place) {
    return direction(start + std::clamp(place, 0.0, whole) / radius).perpVector();
  };
  track.draw = [&](double from, double to) {
    if (to - from > 1e-9) layout.arc(center, radius, start + from / radius, (to - from) / radius);
  };
  track.placeOf = [=](KvGePoint2d p) {
    // Measured from the middle, so that both ends have a beyond.
    const double bearing = kvge::normalizedAngle((p - center).angle() - start - sweep / 2 + kvge::kPi);
    return std::pair((bearing - kvge::kPi + sweep / 2) * radius, radius - (p - center).length());
  };
  track.rise = [=](int which) { return direction(which == 1 ? start : start + sweep); };
  layout.measureLine(track);
  for (const KvGePoint2d& p : {first, second}) layout.definitionPoint(p);
  return true;
}

/// From the rim (and, for diameters, from the other side) along the radius; `from` is the line's beginning
/// inside.
bool layOutRadius(KvDbDimLayout& layout, KvGePoint2d center, KvGePoint2d rim, bool isDiameter,
                  double leader) {
  const KvGeVector2d out = rim - center;
  const double radius = out.length();
  if (!(radius > 1e-12) || !std::isfinite(radius)) return false;
  const KvGeVector2d along = out / radius;
  const KvDbDimVars& vars = layout.vars();
  const double arrowSize = layout.arrowLength(), gap = std::fabs(layout.size(V::Gap));
  const KvGePoint2d inner = isDiameter ? center - out : center;
  const double room = (rim - inner).length();
  const double needed = layout.textWidth() + 2 * gap + (isDiameter ? 2 : 1) * arrowSize;
  const bool isOutside = layout.isUserPlaced() ? (layout.userPlace() - center).length() > radius
                                               : leader > 0 || (room < needed && !vars.on(V::Tix));
  const bool isLevel = vars.on(isOutside ? V::Toh : V::Tih);
  const double angle = isLevel ? layout.level() : layout.readable(along.angle());
  const KvGeVector2d up = layout.above(angle);
  const bool isAbove = vars.whole(V::Tad) != 0;
  const double lift = isAbove ? layout.textHeight() / 2 + gap : 0;
  if (!isOutside) {
    KvGePoint2d middle = inner + (rim - inner) * 0.5;
    if (layout.isUserPlaced()) middle = layout.userPlace();
    const bool isBroken = layout.hasText() && (!isAbove || isLevel) && !layout.isUserPlaced();
    const KvGePoint2d end = rim - along * arrowSize, begin = isDiameter ? inner + along * arrowSize : inner;
    if (isBroken) {
      const double half = layout.textWidth() / 2 + gap;
      layout.line(begin, middle - along * half);
      layout.line(middle + along * half, end);
    } else {
      layout.line(begin, end);
    }
    layout.arrow(rim, along, 1);
    if (isDiameter) layout.arrow(inner, -along, 2);
    layout.text(isBroken || layout.isUserPlaced() ? middle : middle + up * lift, angle);
  } else {
    const double reach = std::max(leader, 2 * arrowSize);
    KvGePoint2d elbow = rim + along * reach;
    if (layout.isUserPlaced())
      elbow = center + along * std::max(radius + reach, (layout.userPlace() - center).dotProduct(along));
    layout.arrow(rim, -along, 1);
    layout.line(rim + along * arrowSize, elbow);
    if (vars.on(V::Tofl)) {
      layout.line(inner, rim);
      if (isDiameter) layout.arrow(inner, along, 2);
    }
    layout.centerMark(center, radius);
    // A level text hangs on a short level line.
    const KvGeVector2d flat = direction(layout.level());
    const KvGeVector2d way = !isLevel ? along : along.dotProduct(flat) < 0 ? -flat : flat;
    KvGePoint2d hook = elbow;
    if (isLevel) {
      hook = elbow + way * arrowSize;
      layout.line(elbow, hook);
    }
    KvGePoint2d middle = hook + way * (gap + layout.textWidth() / 2);
    if (isAbove && !isLevel) layout.line(elbow, elbow + along * (layout.textWidth() + 2 * gap));
    if (isAbove && !isLevel) middle = middle + up * lift;
    if (layout.isUserPlaced()) middle = layout.userPlace();
    layout.text(middle, angle);
  }
  layout.definitionPoint(rim);
  layout.definitionPoint(inner);
  return true;
}

struct Sector {
  KvGePoint2d center;
  double start = 0, sweep = 0, radius = 0;
  KvGePoint2d first, second;  ///< where the extension lines begin
};

/// The sector between two lines in which a point lies.
bool sectorOf(KvGePoint2d a, KvGePoint2d b, KvGePoint2d c, KvGePoint2d d, KvGePoint2d inside,
              Sector& sector) {
  const KvGeVector2d one = b - a, two = d - c;
  const double across = one.crossProduct(two);
  if (std::fabs(across) <= 1e-12 * one.length() * two.length() || one.length() == 0 || two.length() == 0)
    return false;
  sector.center = a + one * ((c - a).crossProduct(two) / across);
  sector.radius = (inside - sector.center).length();
  const double bearing = (inside - sector.center).angle();
  double best = kvge::kTwoPi;
  const auto turned = [](double from, double to) { return kvge::normalizedAngle(to - from); };
  for (const double i : {1.0, -1.0})
    for (const double k : {1.0, -1.0}) {
      const double first = (one * i).angle(), second = (two * k).angle();
      for (const bool isSwapped : {false, true}) {
        const double start = isSwapped ? second : first, sweep = turned(start, isSwapped ? first : second);
        if (sweep >= kvge::kPi || turned(start, bearing) > sweep || sweep >= best) continue;
        best = sweep;
        sector.start = start;
        sector.sweep = sweep;
        // The end that lies on the sector's side, as far out as it goes.
        const auto outer = [&](KvGePoint2d p, KvGePoint2d q, KvGeVector2d way) {
          return (p - sector.center).dotProduct(way) > (q - sector.center).dotProduct(way) ? p : q;
        };
        const KvGePoint2d onOne = outer(a, b, one * i), onTwo = outer(c, d, two * k);
        sector.first = isSwapped ? onTwo : onOne;
        sector.second = isSwapped ? onOne : onTwo;
      }
    }
  return best < kvge::kTwoPi;
}

bool sectorOf(KvGePoint2d center, KvGePoint2d a, KvGePoint2d b, KvGePoint2d on, Sector& sector) {
  sector.center = center;
  sector.radius = (on - center).length();
  if (!((a - center).length() > 0) || !((b - center).length() > 0) || !(sector.radius > 0)) return false;
  const double first = (a - center).angle(), second = (b - center).angle(), bearing = (on - center).angle();
  const double sweep = kvge::normalizedAngle(second - first);
  const bool isWithin = kvge::normalizedAngle(bearing - first) <= sweep;
  sector.start = isWithin ? first : second;
  sector.sweep = isWithin ? sweep : kvge::kTwoPi - sweep;
  sector.first = isWithin ? a : b;
  sector.second = isWithin ? b : a;
  return true;
}

}  // namespace

// --- Lengths
// -------------------------------------------------------------------------------------------------------------------

bool KvDbAlignedDimension::measure(double& value) const {
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal());
  value = kvge::planar(toPlane * third_).distanceTo(kvge::planar(toPlane * fourth_));
  return true;
}
bool KvDbAlignedDimension::layOut(KvDbDimLayout& layout) const {
  const KvGePoint2d first = layout.inPlane(third_), second = layout.inPlane(fourth_);
  return layOutLinear(layout, first, second, layout.inPlane(definition_), (second - first).angle(),
                      oblique());
}

bool KvDbRotatedDimension::measure(double& value) const {
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal());
  const KvGeVector2d between = kvge::planar(toPlane * fourth_) - kvge::planar(toPlane * third_);
  value = std::fabs(between.dotProduct(direction(rotation())));
  return true;
}
bool KvDbRotatedDimension::layOut(KvDbDimLayout& layout) const {
  return layOutLinear(layout, layout.inPlane(third_), layout.inPlane(fourth_), layout.inPlane(definition_),
                      rotation(), oblique());
}

// --- Angles
// --------------------------------------------------------------------------------------------------------------------

bool KvDb2LineAngularDimension::measure(double& value) const {
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal());
  const auto flat = [&](const KvGePoint3d& p) { return kvge::planar(toPlane * p); };
  Sector sector;
  if (!sectorOf(flat(third_), flat(fourth_), flat(fifth_), flat(definition_), kvge::planar(sixth_), sector))
    return false;
  value = sector.sweep;
  return true;
}
bool KvDb2LineAngularDimension::layOut(KvDbDimLayout& layout) const {
  Sector s;
  return sectorOf(layout.inPlane(third_), layout.inPlane(fourth_), layout.inPlane(fifth_),
                  layout.inPlane(definition_), kvge::planar(sixth_), s) &&
         layOutAngle(layout, s.center, s.radius, s.start, s.sweep, s.first, s.second);
}

bool KvDb3PointAngularDimension::measure(double& value) const {
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal());
  const auto flat = [&](const KvGePoint3d& p) { return kvge::planar(toPlane * p); };
  Sector sector;
  if (!sectorOf(flat(fifth_), flat(third_), flat(fourth_), flat(definition_), sector)) return false;
  value = sector.sweep;
  return true;
}
bool KvDb3PointAngularDimension::layOut(KvDbDimLayout& layout) const {
  Sector s;
  return sectorOf(layout.inPlane(fifth_), layout.inPlane(third_), layout.inPlane(fourth_),
                  layout.inPlane(definition_), s) &&
         layOutAngle(layout, s.center, s.radius, s.start, s.sweep, s.first, s.second);
}

// --- Circles
// -------------------------------------------------------------------------------------------------------------------

bool KvDbDiametricDimension::measure(double& value) const {
  value = fifth_.distanceTo(definition_);
  return true;
}
bool KvDbDiametricDimension::layOut(KvDbDimLayout& layout) const {
  const KvGePoint2d rim = layout.inPlane(fifth_), other = layout.inPlane(definition_);
  return layOutRadius(layout, rim + (other - rim) * 0.5, rim, true, leader_);
}

bool KvDbRadialDimension::measure(double& value) const {
  value = fifth_.distanceTo(definition_);
  return true;
}
bool KvDbRadialDimension::layOut(KvDbDimLayout& layout) const {
  return layOutRadius(layout, layout.inPlane(definition_), layout.inPlane(fifth_), false, leader_);
}

// --- Ordinates
// -----------------------------------------------------------------------------------------------------------------

bool KvDbOrdinateDimension::measure(double& value) const {
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal());
  const KvGeVector2d between = kvge::planar(toPlane * third_) - kvge::planar(toPlane * definition_);
  // Seen with the horizontal direction level.
  const KvGeVector2d level = direction(horizontalRotation());
  value = std::fabs(between.dotProduct(isUsingXAxis() ? level : level.perpVector()));
  return true;
}

bool KvDbOrdinateDimension::layOut(KvDbDimLayout& layout) const {
  const KvGePoint2d from = layout.inPlane(third_), to = layout.inPlane(fourth_);
  const KvGeVector2d level = direction(horizontalRotation());
  const KvGeVector2d main = isUsingXAxis() ? level.perpVector() : level, side = main.perpVector();
  const KvGeVector2d way = to - from;
  if (!std::isfinite(way.length())) return false;
  const double ahead = way.dotProduct(main), aside = way.dotProduct(side);
  const double sign = ahead < 0 ? -1 : 1;
  const KvGePoint2d begin = from + main * (sign * std::min(layout.size(V::Exo), std::fabs(ahead)));
  if (std::fabs(aside) < 1e-9) {
    layout.line(begin, to, true, 1);
  } else {
    // Two knees: the middle piece crosses over, the last one is as long as two arrows.
    const double last = std::min(2 * layout.arrowLength(), std::fabs(ahead) / 2);
    const KvGePoint2d second = to - main * (sign * last);
    const KvGePoint2d first = second - side * aside - main * (sign * std::min(last, std::fabs(ahead) / 4));
    layout.line(begin, first, true, 1);
    layout.line(first, second, true, 1);
    layout.line(second, to, true, 1);
  }
  const double gap = std::fabs(layout.size(V::Gap));
  KvGePoint2d middle = to + main * (sign * (gap + layout.textWidth() / 2));
  if (layout.isUserPlaced()) middle = layout.userPlace();
  layout.text(middle, main.angle());
  for (const KvGePoint2d& p : {from, to}) layout.definitionPoint(p);
  return true;
}
