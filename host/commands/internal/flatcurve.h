#pragma once
// Lines, arcs and circles in the plane of the user system, for the commands that cut corners and offset.
#include <array>
#include <vector>

#include "host/commands/internal/support.h"

namespace kvcmd {

/// A straight or round curve, user coordinates; the whole line or circle behind it counts in constructions.
struct FlatCurve {
  enum class Kind { Line, Arc, Circle };
  Kind kind = Kind::Line;
  KvGePoint2d start, end;  ///< of arcs counter-clockwise
  KvGePoint2d center;
  double radius = 0, height = 0;

  bool isRound() const { return kind != Kind::Line; }
  /// Of length 1, from the start of a line.
  KvGeVector2d direction() const { return (end - start).normal(); }
  /// The nearest point of the whole line or circle.
  KvGePoint2d project(KvGePoint2d point) const;
};

/// None for other classes, and for curves that don't lie parallel to the user system's plane.
std::optional<FlatCurve> flatCurveOf(KvDbObjectId id);

/// A whole line or circle.
struct FlatBase {
  bool isRound = false;
  KvGePoint2d point;  ///< on the line, or the centre
  KvGeVector2d direction;
  double radius = 0;
};
FlatBase baseOf(const FlatCurve& curve);
/// At a distance: on the left of a line, outside a circle, when positive. None where nothing is left.
std::optional<FlatBase> offsetBase(const FlatBase& base, double distance);
/// Where they meet; none where they don't or run along one another.
std::vector<KvGePoint2d> meetings(const FlatBase& a, const FlatBase& b);

/// A circle that touches two curves, or the whole lines and circles behind them.
struct Rounding {
  KvGePoint2d center, first, second;  ///< where it touches the first and the second one
};
/// Of all circles of that radius that touch both, the one whose touching points are nearest to the picks.
std::optional<Rounding> touchingBoth(const FlatCurve& a, KvGePoint2d pickA, const FlatCurve& b,
                                     KvGePoint2d pickB, double radius);

/// Moves the end of a line or arc that lies on the other side of `corner` than `keep` to the corner; user
/// coordinates. Circles stay whole.
void cutBack(KvDbObjectId id, const FlatCurve& curve, KvGePoint2d corner, KvGePoint2d keep);

}  // namespace kvcmd
