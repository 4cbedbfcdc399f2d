#pragma once
// Object snaps: the exact point of an entity near a point that was given roughly.
#include <optional>
#include <string_view>

#include "host/geometry/point.h"
#include "platform/text/cstring.h"

namespace kved {

enum class SnapMode {
  None,
  End,
  Middle,
  Center,
  Node,
  Quadrant,
  Intersection,
  Insertion,
  Perpendicular,
  Tangent,
  Nearest
};

/// By the first three letters of its word, or more of them (`end`, `endpoint`); `non` and `off` take the
/// point as it is; a leading `_` changes nothing.
std::optional<SnapMode> snapModeOf(std::wstring_view word);
CString snapPrompt(SnapMode mode);
/// The snap's point nearest to `near` among the entities under the pick box there; nothing when there is
/// none. `from`: where perpendiculars and tangents come from. User coordinates.
std::optional<KvGePoint3d> snapTo(SnapMode mode, const KvGePoint3d& near, const KvGePoint3d& from);

}  // namespace kved
