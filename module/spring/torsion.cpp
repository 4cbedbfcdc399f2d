// Torsion springs.
//
// The rows stand d/2 and d along the axis, so a front strand leans by atan((d/2)/D) and a rear one by
// atan((t - d/2)/D). Outlines follow these leans, not the mean atan(t/(2 D)): with it they would miss the
// wire centres on the other row.
#include "module/spring/coils.h"
#include "module/spring/springs.h"

namespace mek {
namespace {

constexpr int kFewestCoils = 2, kFewestCoilsOfTheFourth = 3;
/// Between turns, whatever the spring's size; drawing units.
constexpr double kGap = 0.5;

bool isDrawable(const double* point, double d, double D, double H0, double n, int fewest = kFewestCoils) {
  return point && areSizesFinite({point[0], point[1], point[2], d, D, H0, n}) && n >= fewest &&
         n <= kMostCoils;
}

std::vector<Coil> coilsOf(double d, double n) {
  std::vector<Coil> coils;
  for (int i = 0; i < static_cast<int>(n); ++i) coils.push_back({d / 2 + i * (d + kGap), d + i * (d + kGap)});
  return coils;
}

/// The arms go on along the outer front strands, one up, one down, by half the coil's diameter beyond their
/// rows.
int drawFull(const double* point, double d, double D, double H0, double n, bool withSections) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, coilsOf(d, n));
  const double arm = D / 2;
  coils.setEnds(CoilEnd::Arm, CoilEnd::Arm, arm);
  coils.drawFull();
  EntitySet sections;
  if (withSections) {
    // The wire's section, turned into the view, a wire's width beyond each arm's end.
    const double slant = std::atan2(d / 2, D);
    const int end = coils.count() - 1;
    frame.collect();
    frame.circle(polar(coils.upper(0), kPi / 2 + slant, arm + 1.5 * d), d / 2);
    frame.circle(polar(coils.lower(end), -kPi / 2 + slant, arm + 1.5 * d), d / 2);
    sections = frame.collected();
    if (frame.hasFailed()) return kRefused;
  }
  frame.centerLines(H0, D / 2);
  if (!withSections) return kDone;
  frame.hatchLayer();
  frame.hatch(sections);
  frame.thick();
  return kDone;
}

int drawSection(const double* point, double d, double D, double H0, double n, int fewest) {
  if (!isDrawable(point, d, D, H0, n, fewest)) return kRefused;
  SpringFrame frame(point);
  frame.thick();
  CoilRow coils(frame, D / 2, d, coilsOf(d, n));
  coils.drawRear();
  frame.collect();
  coils.drawSections(true);
  coils.drawSections(false);
  const EntitySet sections = frame.collected();
  if (frame.hasFailed()) return kRefused;
  frame.centerLines(H0, D / 2);
  frame.hatchLayer();
  frame.hatch(sections);
  frame.thick();
  // The body's outline at both ends, where the arms' coils were cut away.
  frame.line(coils.leftFlank(0).from, coils.leftFlank(0).to);
  const Segment right = coils.rightFlank(coils.count() - 1);
  frame.line(right.from, right.to);
  return kDone;
}

int drawSimplified(const double* point, double d, double D, double H0, double n) {
  if (!isDrawable(point, d, D, H0, n)) return kRefused;
  SpringFrame frame(point);
  frame.thick();
  const CoilRow coils(frame, D / 2, d, coilsOf(d, n));
  for (int i = 0; i < coils.count(); ++i) {
    frame.line(coils.upper(i), coils.lower(i));
    if (i + 1 < coils.count()) frame.line(coils.lower(i), coils.upper(i + 1));
  }
  frame.centerLines(H0, std::nullopt);
  return kDone;
}

}  // namespace
}  // namespace mek

int DrawTorSpring1(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n, false);
}
int DrawTorSpring2(double* const point, double d, double D, double H0, double n) {
  return mek::drawFull(point, d, D, H0, n, true);
}
int DrawTorSpring3(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n, mek::kFewestCoils);
}
int DrawTorSpring4(double* const point, double d, double D, double H0, double n) {
  return mek::drawSection(point, d, D, H0, n, mek::kFewestCoilsOfTheFourth);
}
int DrawTorSpring5(double* const point, double d, double D, double H0, double n) {
  return mek::drawSimplified(point, d, D, H0, n);
}

int DrawLeftTorSpring(double* const point, double Dm, double d, double a, double L1, double L2) {
  using mek::kPi, mek::polar;
  if (!point) return mek::kDone;
  const double inner = (Dm - d) / 2, outer = (Dm + d) / 2;
  // Where an arm's inner edge, a tangent of the inner circle, comes out of the outer one.
  const double width = std::sqrt((Dm + d) * (Dm + d) - (Dm - d) * (Dm - d)) / 2;
  const KvGePoint2d center(0, 0);
  mek::SpringFrame frame(point);
  frame.thick();
  frame.circle(center, inner);
  const KvGePoint2d a1 = polar(center, -kPi / 2, outer), a2 = polar(a1, kPi, L1), a3 = polar(a2, kPi / 2, d),
                    a4 = polar(a3, 0, L1 - width);
  frame.line(a2, a1);
  frame.line(a2, a3);
  frame.line(a3, a4);
  const KvGePoint2d b1 = polar(center, kPi / 2 - a, outer), b2 = polar(center, kPi / 2 - a, inner),
                    b3 = polar(b2, kPi - a, width), b4 = polar(b2, kPi - a, L2), b5 = polar(b1, kPi - a, L2);
  frame.arcAbout(center, a1, b1);
  frame.line(b5, b1);
  frame.line(b5, b4);
  frame.line(b4, b3);
  frame.center();
  constexpr double kReach = 1.2;
  frame.line({-kReach * outer, 0}, {kReach * outer, 0});
  frame.line({0, -kReach * outer}, {0, kReach * outer});
  frame.thick();
  return mek::kDone;
}
