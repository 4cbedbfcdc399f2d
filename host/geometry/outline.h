#pragma once
// Closed outlines of segments and arcs whose edges plainly keep apart: what can be said of them without
// looking for crossings.
#include <optional>
#include <span>

#include "host/geometry/polyline.h"

namespace kvge {

/// The area enclosed by a closed outline (the last vertex leads to the first), whatever its sense: exact to
/// rounding, in the unit of the vertices squared. None unless it is plain that no two edges meet but
/// neighbours in their common vertex: with fewer than two vertices, with equal neighbouring vertices, numbers
/// that aren't finite, or edges that meet, overlap or come nearer than 1e-9 of the outline's size (and at
/// least KvGeRegion::kVertexTolerance). KvGeRegion judges those. Time grows with n log n and the number of
/// pairs of edges whose boxes overlap.
std::optional<double> areaOfPlainOutline(std::span<const KvGePolyline3d::Vertex> vertices);

}  // namespace kvge
