#pragma once
// Closed outlines among entities: each closed curve by itself, and open curves that meet at their ends.
#include <vector>

#include "host/database/objectid.h"

/// The entities of each outline. Curves that belong to none, and what is no curve, go to `left` (may be
/// null). Ends meet within `tolerance` (drawing units); an end at which more than two curves meet is passed
/// by the one that was given first.
std::vector<KvDbObjectIdArray> kvcmdClosedOutlines(const KvDbObjectIdArray& ids, double tolerance,
                                                   KvDbObjectIdArray* left = nullptr);
