#pragma once
// The block in which a person works now.
#include "host/database/database.h"

namespace kved {

/// Model space, or the layout that is shown; null only in a drawing without them.
inline KvDbObjectId currentSpace(const KvDbDatabase& database) {
  return database.tilemode() ? database.modelSpaceId() : database.paperSpaceId();
}

}  // namespace kved
