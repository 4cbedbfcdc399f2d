#pragma once
// The plain types in which function-style calls pass points, names and numbers, and what they mean.

/// Three coordinates; of the world or of the current user system, as the call says.
using kvds_point = double[3];
/// An object's or a selection set's name: two words, both 0 for none.
using kvds_name = long long[2];
using kvds_real = double;
/// A map of space: rows of four, points are columns, the translation stands in the fourth column.
using kvds_matrix = double[4][4];

inline bool kvds_isNull(const kvds_name name) {
  return name[0] == 0 && name[1] == 0;
}
inline void kvds_setNull(kvds_name name) {
  name[0] = name[1] = 0;
}
inline bool kvds_equal(const kvds_name a, const kvds_name b) {
  return a[0] == b[0] && a[1] == b[1];
}
inline void kvds_copy(const kvds_name from, kvds_name to) {
  to[0] = from[0];
  to[1] = from[1];
}
