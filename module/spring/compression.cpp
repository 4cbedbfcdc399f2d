// Compression springs with closed, ground ends.
#include "module/spring/coils.h"
#include "module/spring/springs.h"

namespace mek {
namespace {

constexpr int kFewestCoils = 3;

bool isDrawable(const double* point, double d, double D, double H0, double n) {
  return point && areSizesFinite({point[0], point[1], point[2], d, D, H0, n}) && n >= kFewestCoils &&
         n <= kMostCoils;
}

double pitchOf(double d, double H0, double n) {
  return (H0 - 1.5 * d) / (n + 0.5);
}

/// The coils from end to end: the outer ones lie wire on wire against their neighbours and are cut by the end
/// planes at a quarter of the wire's diameter from their centres.
std::vector<Coil> coilsOf(double d, double pitch, int whole) {
  std::vector<Coil> coils = {{-d / 4, d / 4}};
  double upper = 0.75 * d, lower = d / 4 + (pitch + d) / 2;
  for (int i = 0; i <= whole; ++i, upper += pitch, lower += pitch) coils.push_back({upper, lower});
  upper -= pitch, lower -= pitch;
  coils.push_back({upper + 0.5 * pitch + 0.5 * d, lower + d});
  return coils;
}

int drawFull(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, coilsOf(d, pitchOf(d, H0, n), static_cast<int>(n)));
  coils.setEnds(CoilEnd::Ground, CoilEnd::Ground);
  coils.drawFull();
  frame.centerLines(H0, D / 2);
  return kDone;
}

int drawSection(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, coilsOf(d, pitchOf(d, H0, n), static_cast<int>(n)));
  coils.setEnds(CoilEnd::Ground, CoilEnd::Ground);
  coils.drawRear();
  EntitySet sections[2];
  for (const bool isUpper : {true, false}) {
    frame.collect();
    coils.drawSections(isUpper);
    sections[isUpper ? 0 : 1] = frame.collected();
    if (frame.hasFailed()) return kRefused;
  }
  frame.centerLines(H0, D / 2);
  frame.hatchLayer();
  for (const EntitySet& set : sections) frame.hatch(set);
  frame.thick();
  // The end planes between the two rows' cuts.
  const double inner = D / 2 - std::sqrt(3.0) / 2 * d / 2;
  const int end = coils.count() - 1;
  frame.line({coils.upper(0).x + d / 4, inner}, {coils.lower(0).x - d / 4, -inner});
  frame.line({coils.upper(end).x + d / 4, inner}, {coils.lower(end).x - d / 4, -inner});
  return kDone;
}

int drawSimplified(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  const double pitch = pitchOf(d, H0, n), half = std::sqrt(3.0) / 2 * d / 2;
  const int whole = static_cast<int>(n);
  // Upper points stand on the wire's outer edge; lower ones everywhere where the ends are cut.
  std::vector<KvGePoint2d> upper, lower;
  upper.push_back({0, D / 2 + half});
  KvGePoint2d at(0.75 * d, D / 2);
  upper.push_back({at.x, at.y + d / 2});
  for (int i = 0; i < whole; ++i) {
    at.x += pitch;
    upper.push_back({at.x, at.y + d / 2});
  }
  at.x += 0.5 * pitch + 0.5 * d;
  upper.push_back({at.x + d / 4, at.y + half});
  lower.push_back({0, -D / 2 - half});
  at = {d / 4 + (pitch + d) / 2, -D / 2};
  lower.push_back({at.x, at.y - half});
  for (int i = 0; i < whole; ++i) {
    at.x += pitch;
    lower.push_back({at.x, at.y - half});
  }
  at.x += d;
  lower.push_back({at.x - d / 4, at.y - half});
  SpringFrame frame(point);
  frame.thick();
  for (std::size_t i = 0; i < upper.size(); ++i) {
    frame.line(upper[i], lower[i]);
    if (i + 1 < upper.size()) frame.line(lower[i], upper[i + 1]);
  }
  frame.centerLines(H0, D / 2);
  return kDone;
}

}  // namespace
}  // namespace mek

int DrawCompSpring1(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n);
}
int DrawCompSpring2(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n);
}
int DrawCompSpring3(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n);
}
int DrawCompSpring4(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n);
}
int DrawCompSpring5(double* const point, double d, double D, double H0, double n) {
  return mek::drawSimplified(point, d, D, H0, n);
}
