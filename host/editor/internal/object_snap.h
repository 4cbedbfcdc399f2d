#pragma once
// Object snaps: the exact point of an entity near a point that was given roughly.
#include <optional>

#include "host/geometry/point.h"

namespace kved {

/// The point nearest to `near` of all that the snaps (osnap.h) offer among the entities under the pick box
/// there; nearest points count only where there is no other. Nothing when there is none. `from`: where
/// perpendiculars and tangents come from. User coordinates.
std::optional<KvGePoint3d> snapTo(int snaps, const KvGePoint3d& near, const KvGePoint3d& from);

}  // namespace kved
