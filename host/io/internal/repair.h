#pragma once
// What the recovering reader mends once everything is read.
#include <functional>

#include "host/database/audit.h"

namespace kvio {

/// Entries of dictionaries that lead to nothing are dropped; layouts without a block of theirs get it back,
/// or go. `report` is told of each.
void repairReferences(KvDbDatabase& database, const std::function<void(const CString&, KvDbFault)>& report);

}  // namespace kvio
