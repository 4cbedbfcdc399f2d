#pragma once
// Values of results as texts and numbers.
#include <string_view>

#include "module/data/ado_fields.h"
#include "platform/text/cstring.h"

namespace mek {

/// Numbers that differ by less are equal when rows are sorted.
inline constexpr double kRealTolerance = 1e-10;

/// Which types of fields are numbers. Sorting and aggregates have different lists, and that is meant.
bool sortsAsNumber(const CString& type);
bool aggregatesAsNumber(const CString& type);

/// The text of an item's value, shared with it when it is one; empty for null items and for empty and null
/// values.
_bstr_t textOf(const _adoFields* item);

/// A text as a decimal number: what stands behind the number is ignored, no number is 0.
double decimalNumber(std::wstring_view text);

}  // namespace mek
