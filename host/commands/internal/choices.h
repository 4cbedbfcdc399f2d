#pragma once
// Answers that several commands read alike.
#include <optional>

#include "platform/text/cstring.h"
#include "platform/text/number.h"

namespace kvcmd {

/// A colour by number or by one of the seven names; with `withLogical` BYLAYER (256) and BYBLOCK (0) too.
/// None for anything else.
std::optional<int> colorNamed(CString text, bool withLogical);

}  // namespace kvcmd
