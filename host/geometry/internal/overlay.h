#pragma once
// Flat areas bounded by spans: the arrangement of their edges, what each piece of it separates, and the loops
// of the answer.
#include <functional>

#include "host/geometry/internal/flat.h"

namespace kvge {

/// One edge of an area's outline, with Z 0. Run backwards when `isReversed`.
struct Edge {
  Span span;
  bool isReversed = false;

  KvGePoint3d start() const { return isReversed ? endOf(span) : startOf(span); }
  KvGePoint3d end() const { return isReversed ? startOf(span) : endOf(span); }
};

using Loop = std::vector<Edge>;

/// Loops of clean areas: the area on the left, outer loops counter-clockwise, holes clockwise behind their
/// outer loop.
struct Loops {
  std::vector<Loop> rows;
  std::vector<int> outerOf;  ///< -1 for an outer loop, else the index of the loop that it is a hole in
};

/// What an overlay works on: up to two operands, each with a winding number at every place.
struct OverlayInput {
  std::vector<const Loop*> loops[2];
  bool isClean[2] = {false, false};  ///< loops that an overlay made: they don't cross themselves
  double tolerance = 1e-9;           ///< points nearer than this are one
};

/// Outlines of the places whose winding numbers `keep` accepts. False when the edges don't form closed
/// outlines at this tolerance.
bool overlay(const OverlayInput& input, const std::function<bool(int, int)>& keep, Loops& result);

/// Where a stretch that only rises or only falls has the height `y`. `middle` is its point at the middle of
/// its parameters.
double xAt(const Span& s, double t0, double t1, KvGePoint2d from, KvGePoint2d to, KvGePoint2d middle,
           double y);
/// Twice the signed area between an edge and `origin`.
double doubleAreaOf(const Edge& edge, KvGePoint2d origin);
double areaOf(const Loop& loop);
/// How often a loop's edges wind about a point, by a ray to the right. `gap` gets the least distance to an
/// edge where it is asked for.
int windingOf(const Loop& loop, KvGePoint2d p);

}  // namespace kvge
