#pragma once
// Answers that several commands read alike.
#include <optional>

#include "host/database/tables.h"
#include "platform/text/cstring.h"
#include "platform/text/number.h"

namespace kvcmd {

/// A colour by number or by one of the seven names; with `withLogical` BYLAYER (256) and BYBLOCK (0) too.
/// None for anything else.
std::optional<int> colorNamed(CString text, bool withLogical);

/// The nearest of the widths that drawing files know.
KvDb::LineWeight lineWeightOf(double millimetres);
/// "0.25 mm", "ByLayer" and the like.
CString lineWeightText(int weight);
/// A width in millimetres or ByLayer, ByBlock, DEFAULT; `standard` for an empty reply, none after a cancel.
std::optional<KvDb::LineWeight> askLineWeight(const CString& prompt, KvDb::LineWeight standard);

}  // namespace kvcmd
