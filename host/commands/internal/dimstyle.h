#pragma once
// How new dimensions look.
#include "host/entities/dimvars.h"

namespace kvcmd {

/// The current style with what the drawing's own DIM variables say otherwise.
KvDbDimVars presentDimVars();

}  // namespace kvcmd
