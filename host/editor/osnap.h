#pragma once
// Object snaps as sets of bits, those of the variable OSMODE: 1 end, 2 middle, 4 centre, 8 node, 16 quadrant,
// 32 intersection, 64 insertion, 128 perpendicular, 256 tangent, 512 nearest. The bit 16384 of OSMODE
// suspends them.
#include <optional>
#include <string_view>

#include "platform/text/cstring.h"

inline constexpr int kKvedSnapSuspended = 16384;
/// All that this editor knows.
inline constexpr int kKvedAllSnaps = 1023;

/// The set that a list of words with commas names: each by its first three letters or more (`end`,
/// `endpoint`); `non`, `none` and `off` name nothing; a leading `_` of a word changes nothing. None for
/// anything else.
std::optional<int> kvedSnapsOf(std::wstring_view list);
/// The words of a set, with commas; empty for the empty one.
CString kvedSnapNames(int snaps);
