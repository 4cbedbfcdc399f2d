#include "host/geometry/tolerance.h"

KvGeTol KvGeContext::gTol;

namespace kvge {

SinCos sinCos(double angle) {
  constexpr double kQuarterSlack = 1e-15;
  const double quarters = angle / (kPi / 2);
  const double nearest = std::nearbyint(quarters);
  if (std::fabs(nearest) < 1e9 &&
      std::fabs(quarters - nearest) <= kQuarterSlack * std::fmax(1.0, std::fabs(nearest))) {
    switch (static_cast<long long>(nearest) & 3) {
      case 0:
        return {0, 1};
      case 1:
        return {1, 0};
      case 2:
        return {0, -1};
      default:
        return {-1, 0};
    }
  }
  return {std::sin(angle), std::cos(angle)};
}

double normalizedAngle(double angle) {
  if (angle >= 0 && angle < kTwoPi) return angle;
  double turned = std::fmod(angle, kTwoPi);
  if (turned < 0) turned += kTwoPi;
  return turned >= kTwoPi ? 0 : turned;
}

}  // namespace kvge
