#pragma once
// Two heuristics: boxes in layers (the first incumbent of a run), and bin by bin with the robot test as
// filler.
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// For each of the three turns: fills layers of the bin's face in shelves, assigns the layers to bins, and
/// stores the result when it improves on `a.z`. The working array is used for sorting; its bins and corners
/// end undefined. Never needs more than n bins. Every result is a robot packing.
void packLayers(AllInfo3D& a);

/// For each of the three turns: fills bin after bin with the robot test under a node limit, storing
/// improvements. Not part of PackBoxes3D.
void packBinByBin(AllInfo3D& a);

}  // namespace mek::pack
