#pragma once
// The branch and bound over bins: boxes in descending volume, each into every open bin and then into a new
// one.
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// Searches for packings with fewer than `a.z` bins, storing each one found, until none is possible, `a.lb`
/// is reached or a limit strikes. `a.boxes` must be sorted, free and in the bin.
void searchPacking(AllInfo3D& a);

}  // namespace mek::pack
