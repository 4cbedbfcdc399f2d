#pragma once
// What OOPS brings back.
#include "host/commands/internal/support.h"

namespace kvcmd {

/// Erases entities and keeps in mind which, for OOPS. An empty array changes nothing.
void eraseForOops(const KvDbObjectIdArray& ids);

}  // namespace kvcmd
