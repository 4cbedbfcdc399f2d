#pragma once
// The general test: every two boxes of a bin get one of six relations, and a choice fits when the longest
// chains of boxes along each axis do.
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// Do all `boxes` (at least 2) fit one bin? Their corners are set on Yes: the first packing in the order
/// pairs row by row, relations 0 to 5. Cut after `nodeLimit` nodes (0 means none), when a limit of the run
/// strikes, or when the undo stack is filled ("stack filled\n"); the latter two set `a.stopped`.
Answer generalTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit);

}  // namespace mek::pack
