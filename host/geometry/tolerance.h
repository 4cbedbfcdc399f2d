#pragma once
// Tolerances of the host's geometry, with their reasons. Lengths in drawing units, angles in radians.
#include <cmath>
#include <numbers>

/// When two points or two directions count as equal.
class KvGeTol {
 public:
  constexpr KvGeTol() = default;
  constexpr KvGeTol(double equalPoint, double equalVector)
      : equalPoint_(equalPoint), equalVector_(equalVector) {}
  constexpr double equalPoint() const { return equalPoint_; }
  constexpr double equalVector() const { return equalVector_; }
  constexpr void setEqualPoint(double value) { equalPoint_ = value; }
  constexpr void setEqualVector(double value) { equalVector_ = value; }

 private:
  double equalPoint_ = 1e-10;  ///< the closed forms keep points on their curves to 1e-11 at drafting sizes
  double equalVector_ = 1e-10;
};

/// The tolerance that calls take when none is given. A contract of the interface; nothing in the host changes
/// it.
struct KvGeContext {
  static KvGeTol gTol;
};

namespace kvge {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2 * std::numbers::pi;

/// Sine and cosine, exact at whole multiples of 90 degrees as far as the angle itself is (within 1e-15 of
/// one).
struct SinCos {
  double sine, cosine;
};
SinCos sinCos(double angle);

/// Brought into [0, 2 pi).
double normalizedAngle(double angle);

}  // namespace kvge
