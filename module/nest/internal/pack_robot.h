#pragma once
// The robot test: boxes are placed one by one at the corner points of the envelope of those that stand
// already. A corner point is a place outside the envelope from which a box can be pushed no further towards
// the bin's origin, so every robot packing is reached (E. den Boef, J. Korst, S. Martello, D. Pisinger, D.
// Vigo: Erratum to "The three-dimensional bin packing problem", Operations Research 53, 2005).
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// The corner points of the boxes listed in `order` (by descending far y, ties by descending far x), without
/// those where a box of at least the size `least` can't stand. `room` becomes the volume not covered by the
/// envelope or out of such a box's reach. Gives the count, at most `corners.size()`; -1 when there are more.
int cornerPoints(const AllInfo3D& a, std::span<const Box3D> boxes, std::span<const std::int16_t> order,
                 const Corner3D& least, std::span<Corner3D> corners, std::int64_t& room);

/// Do all `boxes` fit one bin as a robot packing? Their corners are set on Yes. Cut after `nodeLimit` nodes
/// (0 means none), or when a limit of the run strikes, which sets `a.stopped`.
Answer robotTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit);

/// Fills one bin with as much volume of `boxes` (copies with `ref` set) as `a.fillLimit` and
/// `a.fillNodeLimit` allow. The real boxes of the best filling get `bin` and their corners. Gives their
/// count, at least 1.
int fillBin(AllInfo3D& a, std::span<Box3D> boxes, int bin);

}  // namespace mek::pack
