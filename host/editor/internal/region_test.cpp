#include "host/editor/internal/region_test.h"

#include <algorithm>
#include <cmath>

namespace kved {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kParameterSlack = 1e-12;

double cross(const KvGePoint2d& o, const KvGePoint2d& a, const KvGePoint2d& b) {
  return (a - o).crossProduct(b - o);
}

bool isOnSegment(const KvGePoint2d& p, const KvGePoint2d& a, const KvGePoint2d& b, double epsilon) {
  return distanceTo(p, a, b) <= epsilon;
}

bool segmentsMeet(const KvGePoint2d& a, const KvGePoint2d& b, const KvGePoint2d& c, const KvGePoint2d& d,
                  double epsilon) {
  if (std::max(a.x, b.x) + epsilon < std::min(c.x, d.x) ||
      std::max(c.x, d.x) + epsilon < std::min(a.x, b.x) ||
      std::max(a.y, b.y) + epsilon < std::min(c.y, d.y) || std::max(c.y, d.y) + epsilon < std::min(a.y, b.y))
    return false;
  const double c1 = cross(a, b, c), c2 = cross(a, b, d), d1 = cross(c, d, a), d2 = cross(c, d, b);
  if (((c1 > 0 && c2 < 0) || (c1 < 0 && c2 > 0)) && ((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0))) return true;
  return isOnSegment(c, a, b, epsilon) || isOnSegment(d, a, b, epsilon) || isOnSegment(a, c, d, epsilon) ||
         isOnSegment(b, c, d, epsilon);
}

/// Even-odd rule by a ray to the right; edges count half open, so that corners count once.
bool isInside(const KvGePoint2d& p, const std::vector<KvGePoint2d>& outline) {
  bool isIn = false;
  for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
    const KvGePoint2d &a = outline[i], &b = outline[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) isIn = !isIn;
  }
  return isIn;
}

/// The parameter brought into the sweep, if it lies there: from 0 to |sweep|, counted from the start.
bool intoSweep(const FlatConic& conic, double t, double& along) {
  along = conic.sweep >= 0 ? t - conic.start : conic.start - t;
  along = std::fmod(along, 2 * kPi);
  if (along < 0) along += 2 * kPi;
  const double length = std::fabs(conic.sweep);
  if (along <= length + kParameterSlack) return true;
  if (along >= 2 * kPi - kParameterSlack) {
    along = 0;
    return true;
  }
  return false;
}

}  // namespace

double distanceTo(const KvGePoint2d& p, const KvGePoint2d& a, const KvGePoint2d& b) {
  const KvGeVector2d along = b - a;
  const double length = along.lengthSqrd();
  const double t = length > 0 ? std::clamp((p - a).dotProduct(along) / length, 0.0, 1.0) : 0;
  return p.distanceTo(a + along * t);
}

double distanceTo(const KvGePoint2d& p, const FlatConic& conic) {
  const double a = conic.u.length(), b = conic.v.length();
  if (std::fabs(a - b) <= 1e-9 * a && std::fabs(conic.u.dotProduct(conic.v)) <= 1e-9 * a * b) {
    const KvGeVector2d out = p - conic.c;
    const double t = std::atan2(out.dotProduct(conic.v), out.dotProduct(conic.u));
    double along = 0;
    if (intoSweep(conic, t, along)) return std::fabs(out.length() - a);
    return std::min(p.distanceTo(conic.at(0)), p.distanceTo(conic.at(std::fabs(conic.sweep))));
  }
  constexpr int kChords = 128;
  double least = HUGE_VAL;
  for (int i = 0; i < kChords; ++i)
    least = std::min(least, distanceTo(p, conic.at(std::fabs(conic.sweep) * i / kChords),
                                       conic.at(std::fabs(conic.sweep) * (i + 1) / kChords)));
  return least;
}

bool isInArea(const KvGePoint2d& p, const std::vector<std::vector<KvGePoint2d>>& outlines) {
  bool isIn = false;
  for (const auto& outline : outlines)
    if (outline.size() > 2) isIn ^= isInside(p, outline);
  return isIn;
}

/// By the length along the sweep.
KvGePoint2d FlatConic::at(double along) const {
  const double t = start + (sweep >= 0 ? along : -along);
  return c + u * std::cos(t) + v * std::sin(t);
}

RegionTest::RegionTest(const PickRegion& region)
    : region_(region), isClosed_(region.kind != PickRegion::Kind::Fence) {
  double largest = 0;
  for (const KvGePoint2d& p : region.points) largest = std::max({largest, std::fabs(p.x), std::fabs(p.y)});
  epsilon_ = largest * 1e-14;
}

template <class Visit>
bool RegionTest::anyEdge(Visit&& visit) const {
  const auto& p = region_.points;
  for (std::size_t i = 0; i + 1 < p.size(); ++i)
    if (visit(p[i], p[i + 1])) return true;
  if (p.size() == 1) return visit(p[0], p[0]);
  return isClosed_ && p.size() > 2 && visit(p.back(), p.front());
}

bool RegionTest::contains(const KvGePoint2d& p) const {
  if (!isClosed_ || region_.points.empty()) return false;
  return isInside(p, region_.points) ||
         anyEdge([&](const KvGePoint2d& a, const KvGePoint2d& b) { return isOnSegment(p, a, b, epsilon_); });
}

bool RegionTest::meets(const KvGePoint2d& a, const KvGePoint2d& b) const {
  return contains(a) || anyEdge([&](const KvGePoint2d& c, const KvGePoint2d& d) {
           return segmentsMeet(a, b, c, d, epsilon_);
         });
}

std::vector<double> RegionTest::crossings(const FlatConic& conic) const {
  std::vector<double> found;
  anyEdge([&](const KvGePoint2d& p, const KvGePoint2d& q) {
    const KvGeVector2d edge = q - p, n(-edge.y, edge.x);
    const double a = n.dotProduct(conic.u), b = n.dotProduct(conic.v), d = -n.dotProduct(conic.c - p);
    const double size = std::hypot(a, b);
    if (!(size > 0) || std::fabs(d) > size * (1 + kParameterSlack)) return false;
    const double middle = std::atan2(b, a), spread = std::acos(std::clamp(d / size, -1.0, 1.0));
    for (const double t : {middle - spread, middle + spread}) {
      double along = 0;
      if (!intoSweep(conic, t, along)) continue;
      const KvGeVector2d at = conic.at(along) - p;
      const double share = at.dotProduct(edge), whole = edge.lengthSqrd();
      if (share >= -kParameterSlack * whole && share <= (1 + kParameterSlack) * whole) found.push_back(along);
    }
    return false;
  });
  return found;
}

bool RegionTest::meets(const FlatConic& conic) const {
  return contains(conic.at(0)) || !crossings(conic).empty();
}

bool RegionTest::meetsArea(const std::vector<std::vector<KvGePoint2d>>& outlines) const {
  for (const auto& outline : outlines)
    for (std::size_t i = 0; i < outline.size(); ++i)
      if (meets(outline[i], outline[(i + 1) % outline.size()])) return true;
  return std::any_of(region_.points.begin(), region_.points.end(),
                     [&](const KvGePoint2d& p) { return isInArea(p, outlines); });
}

std::vector<double> RegionTest::crossings(const KvGePoint2d& a, const KvGePoint2d& b) const {
  std::vector<double> found;
  const KvGeVector2d along = b - a;
  anyEdge([&](const KvGePoint2d& p, const KvGePoint2d& q) {
    const double under = along.crossProduct(q - p);
    if (under == 0) return false;
    const double t = (p - a).crossProduct(q - p) / under;
    if (t > 0 && t < 1) found.push_back(t);
    return false;
  });
  return found;
}

bool RegionTest::encloses(const KvGePoint2d& a, const KvGePoint2d& b) const {
  if (!contains(a) || !contains(b)) return false;
  // Between two crossings a stroke is in or out as a whole.
  std::vector<double> at = crossings(a, b);
  at.insert(at.end(), {0, 1});
  std::sort(at.begin(), at.end());
  for (std::size_t i = 0; i + 1 < at.size(); ++i)
    if (!contains(a + (b - a) * ((at[i] + at[i + 1]) / 2))) return false;
  return true;
}

bool RegionTest::encloses(const FlatConic& conic) const {
  const double length = std::fabs(conic.sweep);
  if (!contains(conic.at(0)) || !contains(conic.at(length))) return false;
  std::vector<double> at = crossings(conic);
  at.insert(at.end(), {0, length});
  std::sort(at.begin(), at.end());
  constexpr double kNoStretch = 1e-7;  // two crossings of a tangent lie as close as rounding puts them
  for (std::size_t i = 0; i + 1 < at.size(); ++i)
    if (at[i + 1] - at[i] > kNoStretch && !contains(conic.at((at[i] + at[i + 1]) / 2))) return false;
  return true;
}

}  // namespace kved
