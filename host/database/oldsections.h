#pragma once
// The oldest files put an entity's groups in one row; later ones divide them by subclass markers. This is the
// division.
#include <string_view>
#include <vector>

#include "host/database/dbobject.h"

/// The groups of an entity of `type`, divided as later files have them. A type that no table row knows comes
/// back as one section without a marker.
std::vector<KvDbUnknownSection> kvdbDivideOldGroups(std::wstring_view type, const KvDbGroupList& groups);
