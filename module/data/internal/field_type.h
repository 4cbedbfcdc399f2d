#pragma once
// Which types of fields are numbers. Sorting and aggregates have different lists, and that is meant.
#include "platform/text/cstring.h"

namespace mek {

/// Numbers that differ by less are equal when rows are sorted.
inline constexpr double kRealTolerance = 1e-10;

inline bool isType(const CString& type, const wchar_t* name) {
  return type.CompareNoCase(name) == 0;
}
inline bool sortsAsNumber(const CString& type) {
  return isType(type, L"int") || isType(type, L"long") || isType(type, L"real");
}
inline bool aggregatesAsNumber(const CString& type) {
  return isType(type, L"real") || isType(type, L"int");
}

}  // namespace mek
