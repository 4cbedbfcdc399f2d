#pragma once
// The general test: every two boxes of a bin get one of six relations, and a choice fits when the longest
// chains of boxes along each axis do.
#include "module/nest/internal/pack_state.h"

namespace mek::pack {

/// True when all `boxes` (at least 2) fit one bin; their corners are set then. The packing is the first one
/// in the order pairs row by row, relations 0 to 5. `nodeLimit` 0 means none. False also when a limit of the
/// run strikes or the undo stack is filled ("stack filled\n"), both of which set `a.stopped`.
bool generalTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit);

}  // namespace mek::pack
