#pragma once
// Polylines as rows of vertices, for the commands that take them apart and put them together.
#include <vector>

#include "host/commands/internal/support.h"
#include "host/entities/polyline.h"

namespace kvcmd {

using PolyChainVertex = KvDbPolyline::Vertex;

/// In the coordinates of the polyline's plane.
std::vector<PolyChainVertex> verticesOf(const KvDbPolyline& polyline);
void setVertices(KvDbPolyline& polyline, const std::vector<PolyChainVertex>& vertices);

/// An open line, arc or polyline as vertices in the user system's plane; the last one ends it. Empty for what
/// can't be part of a polyline there.
std::vector<PolyChainVertex> chainOf(KvDbObjectId id);
/// The same way the other way round.
void reverseChain(std::vector<PolyChainVertex>& chain);
/// Puts `more` to an end of the chain that it touches within the tolerance; false when it touches none.
bool attach(std::vector<PolyChainVertex>& chain, std::vector<PolyChainVertex> more, double tolerance = 1e-6);

}  // namespace kvcmd
