#pragma once
// Do these boxes fit one bin?
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// True when the boxes of `bin` and `box` fit one bin together; their corners are set then. The test is
/// exact; false also when a limit of the run strikes. Reports "no boxes in onebin_decision".
bool onebin_decision(AllInfo3D& a, Box3D& box, int bin);

/// The same answer without touching any corner, and without a new test where this set was tested before.
bool couldJoin(AllInfo3D& a, Box3D& box, int bin);

/// The same for the boxes listed, within 1000 nodes: false may mean that the search was cut short.
bool onebin_heuristic(AllInfo3D& a, std::span<Box3D* const> boxes);

/// The two tests behind them for copies of boxes, closed forms for two and three.
bool pairTest(int W, int H, int D, Box3D& first, Box3D& second);
bool tripleTest(const AllInfo3D& a, Box3D& first, Box3D& second, Box3D& third);

}  // namespace mek::pack
