#include "host/database/internal/flatten.h"

#include "host/geometry/tolerance.h"

namespace kvdb {
namespace {

/// Longest mitre, in half widths.
constexpr double kMitreLimit = 4;

KvGePoint2d onArc(const BulgeArc& arc, double radius, double angle) {
  return {arc.center.x + radius * std::cos(angle), arc.center.y + radius * std::sin(angle)};
}

struct Segment {
  KvGePoint2d from, to;
  double startHalf = 0, endHalf = 0;
  bool isArc = false;
  BulgeArc arc;
  KvGeVector2d startDirection, endDirection;
};

KvGeVector2d turnedLeft(KvGeVector2d v) {
  return {-v.y, v.x};
}

bool segmentOf(const KvGiPath& path, int index, Segment& s) {
  const KvGiPathVertex& a = path.vertices[index];
  const KvGiPathVertex& b = path.vertices[(index + 1) % path.count];
  s.from = a.point;
  s.to = b.point;
  s.startHalf = std::fabs(a.startWidth) / 2;
  s.endHalf = std::fabs(a.endWidth) / 2;
  const KvGeVector2d chord = s.to - s.from;
  if (!(chord.length() > 0)) return false;
  s.isArc = bulgeArc(s.from, s.to, a.bulge, s.arc);
  if (!s.isArc) {
    s.startDirection = s.endDirection = chord / chord.length();
    return true;
  }
  const double way = s.arc.sweep > 0 ? 1 : -1, end = s.arc.start + s.arc.sweep;
  s.startDirection = {-std::sin(s.arc.start) * way, std::cos(s.arc.start) * way};
  s.endDirection = {-std::sin(end) * way, std::cos(end) * way};
  return true;
}

/// Offset of the left side at a corner between two directions; the right side lies opposite.
KvGeVector2d mitre(KvGeVector2d in, KvGeVector2d out, double half) {
  const KvGeVector2d a = turnedLeft(in), b = turnedLeft(out);
  const double share = 1 + a.x * b.x + a.y * b.y;
  if (share < 2 / (kMitreLimit * kMitreLimit)) return a * half;
  return (a + b) * (half / share);
}

/// One side of a segment, from its start to its end.
void addSide(const Segment& s, double side, KvGeVector2d startOffset, KvGeVector2d endOffset,
             double deviation, std::vector<KvGePoint2d>& points) {
  points.push_back(s.from + startOffset * side);
  if (s.isArc) {
    const double inwards = s.arc.sweep > 0 ? -1 : 1;
    const int chords = chordCount(s.arc.radius + std::max(s.startHalf, s.endHalf), s.arc.sweep, deviation);
    for (int i = 1; i < chords; ++i) {
      const double t = static_cast<double>(i) / chords;
      const double half = s.startHalf + (s.endHalf - s.startHalf) * t;
      points.push_back(onArc(s.arc, s.arc.radius + inwards * side * half, s.arc.start + s.arc.sweep * t));
    }
  }
  points.push_back(s.to + endOffset * side);
}

}  // namespace

void flattenConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                  double sweep, double deviation, bool withFirst, std::vector<KvGePoint3d>& points) {
  const int chords = chordCount(std::sqrt(std::max(u.lengthSqrd(), v.lengthSqrd())), sweep, deviation);
  // Turning by one step again and again is fast; the drift over some thousand steps is below 1e-12.
  const double step = sweep / chords, stepCos = std::cos(step), stepSin = std::sin(step);
  double c = std::cos(start), s = std::sin(start);
  if (withFirst) points.push_back(center + u * c + v * s);
  for (int i = 1; i <= chords; ++i) {
    const double next = c * stepCos - s * stepSin;
    s = s * stepCos + c * stepSin;
    c = next;
    points.push_back(center + u * c + v * s);
  }
}

void flattenSegments(const KvGePoint3d* poles, const unsigned char* degrees, int count, double deviation,
                     std::vector<KvGePoint3d>& points) {
  points.push_back(poles[0]);
  for (int i = 0; i < count; poles += degrees[i], ++i) {
    if (degrees[i] == 1) {
      points.push_back(poles[1]);
      continue;
    }
    // Second differences bound how far the curve leaves n chords: 6 |d| / 8 / n^2.
    const KvGeVector3d first = (poles[2] - poles[1]) - (poles[1] - poles[0]);
    const KvGeVector3d second = (poles[3] - poles[2]) - (poles[2] - poles[1]);
    const double bend = std::sqrt(std::max(first.lengthSqrd(), second.lengthSqrd()));
    const double wanted = std::sqrt(0.75 * bend / std::max(deviation, 1e-300));
    const int chords = static_cast<int>(std::clamp(std::ceil(wanted), 1.0, static_cast<double>(kMostChords)));
    for (int k = 1; k < chords; ++k) {
      const double t = static_cast<double>(k) / chords, s = 1 - t;
      const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
      points.push_back({a * poles[0].x + b * poles[1].x + c * poles[2].x + d * poles[3].x,
                        a * poles[0].y + b * poles[1].y + c * poles[2].y + d * poles[3].y,
                        a * poles[0].z + b * poles[1].z + c * poles[2].z + d * poles[3].z});
    }
    points.push_back(poles[3]);
  }
}

bool bulgeArc(KvGePoint2d from, KvGePoint2d to, double bulge, BulgeArc& arc) {
  // Flatter than this the arc's height is lost in the chord's last digits.
  constexpr double kFlat = 1e-12;
  const KvGeVector2d chord = to - from;
  if (!(std::fabs(bulge) > kFlat) || !(chord.length() > 0) || !std::isfinite(bulge)) return false;
  const double shift = (1 - bulge * bulge) / (4 * bulge);
  arc.center = from + chord * 0.5 + turnedLeft(chord) * shift;
  arc.radius = chord.length() * (1 + bulge * bulge) / (4 * std::fabs(bulge));
  arc.start = std::atan2(from.y - arc.center.y, from.x - arc.center.x);
  arc.sweep = 4 * std::atan(bulge);
  return true;
}

void flattenPath(const KvGiPath& path, double deviation, std::vector<KvGePoint2d>& points) {
  points.clear();
  if (path.count <= 0) return;
  points.push_back(path.vertices[0].point);
  const int segments = path.isClosed ? path.count : path.count - 1;
  for (int i = 0; i < segments; ++i) {
    const KvGePoint2d from = path.vertices[i].point, to = path.vertices[(i + 1) % path.count].point;
    BulgeArc arc;
    if (path.vertices[i].bulge != 0 && bulgeArc(from, to, path.vertices[i].bulge, arc)) {
      const int chords = chordCount(arc.radius, arc.sweep, deviation);
      for (int k = 1; k < chords; ++k)
        points.push_back(onArc(arc, arc.radius, arc.start + arc.sweep * k / chords));
    }
    points.push_back(to);
  }
}

void segmentsOfPath(const KvGiPath& path, std::vector<KvGePoint2d>& poles,
                    std::vector<unsigned char>& degrees) {
  poles.clear();
  degrees.clear();
  if (path.count <= 0) return;
  poles.push_back(path.vertices[0].point);
  const int segments = path.isClosed ? path.count : path.count - 1;
  for (int i = 0; i < segments; ++i) {
    const KvGePoint2d to = path.vertices[(i + 1) % path.count].point;
    BulgeArc arc;
    if (path.vertices[i].bulge == 0 || !bulgeArc(path.vertices[i].point, to, path.vertices[i].bulge, arc)) {
      poles.push_back(to);
      degrees.push_back(1);
      continue;
    }
    const int parts = std::max(1, static_cast<int>(std::ceil(std::fabs(arc.sweep) / (kvge::kPi / 4) - 1e-9)));
    const double step = arc.sweep / parts, handle = 4.0 / 3 * std::tan(step / 4) * arc.radius;
    for (int k = 1; k <= parts; ++k) {
      const double a = arc.start + step * (k - 1), b = a + step;
      const KvGePoint2d end = k == parts ? to : onArc(arc, arc.radius, b);
      poles.push_back(poles.back() + KvGeVector2d(-std::sin(a), std::cos(a)) * handle);
      poles.push_back(end + KvGeVector2d(std::sin(b), -std::cos(b)) * handle);
      poles.push_back(end);
      degrees.push_back(3);
    }
  }
}

void widenPath(const KvGiPath& path, double deviation, std::vector<std::vector<KvGePoint2d>>& outlines) {
  std::vector<Segment> segments;
  const int count = path.isClosed ? path.count : path.count - 1;
  for (int i = 0; i < count; ++i) {
    Segment s;
    if (segmentOf(path, i, s)) segments.push_back(s);
  }
  const std::size_t last = segments.size();
  for (std::size_t i = 0; i < last; ++i) {
    const Segment& s = segments[i];
    if (s.startHalf == 0 && s.endHalf == 0) continue;
    const bool hasBefore = i > 0 || path.isClosed, hasAfter = i + 1 < last || path.isClosed;
    const Segment& before = segments[(i + last - 1) % last];
    const Segment& after = segments[(i + 1) % last];
    // Corners at arcs and between different widths are cut straight.
    const bool joinsBefore = hasBefore && !s.isArc && !before.isArc && before.endHalf == s.startHalf;
    const bool joinsAfter = hasAfter && !s.isArc && !after.isArc && after.startHalf == s.endHalf;
    const KvGeVector2d first = joinsBefore ? mitre(before.endDirection, s.startDirection, s.startHalf)
                                           : turnedLeft(s.startDirection) * s.startHalf;
    const KvGeVector2d second = joinsAfter ? mitre(s.endDirection, after.startDirection, s.endHalf)
                                           : turnedLeft(s.endDirection) * s.endHalf;
    std::vector<KvGePoint2d> left, right;
    addSide(s, 1, first, second, deviation, left);
    addSide(s, -1, first, second, deviation, right);
    left.insert(left.end(), right.rbegin(), right.rend());
    outlines.push_back(std::move(left));
  }
}

}  // namespace kvdb
