#pragma once
// Rows read straight from the text of an export.
#include <deque>
#include <string>
#include <string_view>

#include "module/data/internal/row_set.h"

namespace mek {

/// Reads `text` when it has the plain form: an XML declaration or none, `dataroot` with or without
/// attributes, under it rows without attributes, in them fields without attributes that hold one run of text
/// or nothing. Values with references or carriage returns are written resolved to `decoded`; their offsets
/// start at the end of `text`. False, with the other arguments in no defined state, for every other form,
/// well formed or not.
bool readTableText(std::string_view text, std::size_t maximumItems, std::deque<RowSet>& sets,
                   std::string& decoded);

}  // namespace mek
