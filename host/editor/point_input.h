#pragma once
// How people write points, distances and angles.
//
//   x,y  x,y,z     in user coordinates; without z at the elevation
//   d<a  d<a,z     polar; d<a<b spherical
//   @...           from the last point; @ alone is the last point
//   *...           in world coordinates (also @*...)
//   a  ad  ag  ar  an angle by AUNITS, in degrees (also 45d30'15"), grads, radians; N45dE by the compass
//   2.5  1/2  2-1/2  numbers; 5'  5'6  5'-6-1/2"  6.5"  feet and inches, in inches
#include <optional>
#include <string_view>

#include "host/geometry/matrix.h"

/// Nothing is drawn farther out; a coordinate beyond is taken for a slip.
inline constexpr double kKvedFarthest = 1e100;

struct KvEdPointContext {
  KvGePoint3d lastPoint;  ///< user coordinates
  double elevation = 0;
  KvGeMatrix3d userToWorld;
  int angleUnits = 0;    ///< 0 degrees, 1 degrees and minutes, 2 grads, 3 radians, 4 compass
  double angleBase = 0;  ///< radians
  bool isClockwise = false;
};

/// The context of the working drawing; plain values without one.
KvEdPointContext kvedPointContext();

/// All of these take the whole text or nothing, and give finite numbers not beyond kKvedFarthest.
std::optional<double> kvedParseNumber(std::wstring_view text);
/// As written: radians, without regard to base and direction.
std::optional<double> kvedParseAngle(std::wstring_view text, int angleUnits);
/// In user coordinates.
std::optional<KvGePoint3d> kvedParsePoint(std::wstring_view text, const KvEdPointContext& context);
