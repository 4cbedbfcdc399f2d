#pragma once
// Curves as chords.
#include <algorithm>
#include <cmath>
#include <vector>

#include "host/database/worlddraw.h"
#include "host/geometry/matrix.h"

namespace kvdb {

inline constexpr int kMostChords = 1 << 16;

/// The number of chords for a sweep of radius `radius`, none farther than `deviation` from the arc; at least
/// one for each `kWidestChord` radians.
inline int chordCount(double radius, double sweep, double deviation) {
  constexpr double kWidestChord = 0.8;
  double step = kWidestChord;
  if (deviation > 0 && radius > deviation) step = std::min(step, 2 * std::acos(1 - deviation / radius));
  const double count = std::ceil(std::fabs(sweep) / step - 1e-9);
  return count >= 1 ? static_cast<int>(std::min<double>(count, kMostChords)) : 1;
}

/// Adds the points of center + u cos t + v sin t behind the first one, which is left out unless `withFirst`.
void flattenConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                  double sweep, double deviation, bool withFirst, std::vector<KvGePoint3d>& points);

/// Adds the points of lines and cubic curves (see KvGiGeometry::segments), the first one included.
void flattenSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count, double deviation,
                     std::vector<KvGePoint3d>& points);

/// An arc of a bulged segment.
struct BulgeArc {
  KvGePoint2d center;
  double radius = 0, start = 0, sweep = 0;  // sweep is negative clockwise
};
/// False for a straight segment, or one of no length.
bool bulgeArc(KvGePoint2d from, KvGePoint2d to, double bulge, BulgeArc& arc);

/// The middle line of a path, in the plane's coordinates. A closed path ends where it begins.
void flattenPath(const KvGiPath& path, double deviation, std::vector<KvGePoint2d>& points);

/// The middle line as lines and cubic curves of at most an eighth of a turn (within 4e-6 of the radius): a
/// start, then one or three points for each degree.
void segmentsOfPath(const KvGiPath& path, std::vector<KvGePoint2d>& poles,
                    std::vector<unsigned char>& degrees);

/// The areas that the widths of a path cover: outlines in the plane's coordinates, each closed. Corners of
/// straight segments are mitred as long as the mitre stays short.
void widenPath(const KvGiPath& path, double deviation, std::vector<std::vector<KvGePoint2d>>& outlines);

}  // namespace kvdb
