#pragma once
// Light polylines that commands make in the plane of the user system.
#include <vector>

#include "host/commands/internal/support.h"
#include "host/entities/polyline.h"

namespace kvcmd {

/// A vertex in user coordinates, with what the segment behind it is like.
struct PolyVertex {
  KvGePoint3d point;
  double bulge = 0, startWidth = 0, endWidth = 0;
};

/// A polyline in user coordinates, at the height of the first vertex, with the drawing's thickness.
std::unique_ptr<KvDbPolyline> makePolyline(const std::vector<PolyVertex>& vertices, bool isClosed);
/// Puts it into the current space; null for fewer than two vertices.
KvDbObjectId addPolyline(const std::vector<PolyVertex>& vertices, bool isClosed);

}  // namespace kvcmd
