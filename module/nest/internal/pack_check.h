#pragma once
// The solver's own check of a packing, and the store of the best one. What is wrong is reported.
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// How many boxes can't be taken out of their bins in a robot's order, without a report.
int barredBoxes(std::span<const Box3D> boxes);

/// Tests every two boxes of a bin: "duplicated box %d\n", "overlap box %d,%d: [%d,%d,%d] [%d,%d,%d]" (the
/// numbers, then the corners). Robot packings are emptied bin by bin: a box goes when every box left in the
/// bin lies left of, under or behind it (smaller x, y, z); "not robot packable" for each box that can't go
/// so. False when anything was reported.
bool checkPacking(const AllInfo3D& a, std::span<const Box3D> boxes);

/// Stores `solution` with `bins` bins as the best one. Reports "not improved", "illegal bin %d, box %d",
/// "not correct amount of boxes", and what checkPacking finds. Only a result that doesn't improve is refused.
void storeSolution(AllInfo3D& a, std::span<const Box3D> solution, int bins);

}  // namespace mek::pack
