#pragma once
// Lower bounds on the number of bins, by volume and by the boxes that can't lie beside each other
// (S. Martello, D. Pisinger, D. Vigo: The three-dimensional bin packing problem, Operations Research 48,
// 2000).
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// Turns the axes once: w, h, d become h, d, w, in the bin and in the boxes, and the coordinates follow.
/// Three turns restore everything.
void turnBin(AllInfo3D& a);
void turnBoxes(std::span<Box3D> boxes);

/// The bin's volume is taken from `a`; `boxes` may be any set. 0 for none.
int boundByVolume(const AllInfo3D& a, std::span<const Box3D> boxes);
/// The largest over the three turns. `boxes` and the bin are as they were on return.
int boundBySides(AllInfo3D& a, std::span<Box3D> boxes);
int boundByBoth(AllInfo3D& a, std::span<Box3D> boxes);

}  // namespace mek::pack
