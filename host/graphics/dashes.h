#pragma once
// Polylines cut by the dashes of a linetype.
#include <functional>
#include <span>
#include <vector>

#include "host/geometry/point.h"

/// An element of a pattern: a dash (above 0), a gap (below 0), a dot (0).
struct KvGrDashes {
  std::vector<double> lengths;
  double total() const;
  /// A pattern that can be drawn: some length, nothing that isn't a number, and a gap unless signs stand in
  /// it.
  bool isSound(bool hasSigns = false) const;
};

/// Where an element of the pattern begins: for texts and signs in linetypes.
struct KvGrDashPlace {
  int element = 0;
  KvGePoint2d at;
  KvGeVector2d direction;
};

/// Cuts a polyline; `stroke` gets each dash, one point for a dot. The pattern begins with half its first dash
/// and is shifted so that it ends in the same way: an open polyline begins and ends in a dash. One that is
/// too short for a whole pattern is drawn through. With `isContinuous` the pattern runs on over the corners,
/// else each segment has its own; of curves, whose chords are no segments, only the former makes sense.
/// `place` may be empty.
void kvgrDash(std::span<const KvGePoint2d> points, const KvGrDashes& dashes, bool isContinuous,
              const std::function<void(const KvGePoint2d*, int)>& stroke,
              const std::function<void(const KvGrDashPlace&)>& place = {});
