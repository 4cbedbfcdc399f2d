#include "host/geometry/outline.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/geometry/region.h"

namespace kvge {
namespace {

constexpr double kShareOfSize = 1e-9;
/// Below this bulge the segment's area comes from its series: the closed form loses digits.
constexpr double kFlatBulge = 0.05;
/// Radius by chord beyond which crossings of circles are too uncertain to tell anything.
constexpr double kFlattest = 1e4;

/// One edge: a segment, or an arc of at most a whole turn.
struct Edge {
  KvGePoint2d from, to, center;
  KvGeVector2d chord;
  double length, bulge, radius;  ///< of the chord; radius 0 for a segment
  double minX, minY, maxX, maxY;

  bool isArc() const { return radius > 0; }
  /// Signed distance of a point from the chord, positive on the side to which an arc bulges; of a segment to
  /// its right.
  double beyondChord(KvGePoint2d p) const {
    const double off = (p - from).crossProduct(chord) / length;
    return bulge < 0 ? -off : off;
  }
  void include(double x, double y) {
    minX = std::min(minX, x), maxX = std::max(maxX, x);
    minY = std::min(minY, y), maxY = std::max(maxY, y);
  }
  /// Whether a point of the carrier (line or circle) lies on the edge or nearly so.
  bool mayHold(KvGePoint2d p, double near) const {
    if (isArc()) return beyondChord(p) >= -near;
    const double along = (p - from).dotProduct(chord) / length;
    return along >= -near && along <= length + near;
  }
};

bool makeEdge(const KvGePolyline3d::Vertex& vertex, KvGePoint2d to, Edge& edge) {
  edge.from = vertex.point;
  edge.to = to;
  edge.bulge = vertex.bulge;
  edge.chord = to - edge.from;
  edge.length = edge.chord.length();
  if (!(edge.length > KvGeRegion::kVertexTolerance) || !std::isfinite(edge.length) ||
      !std::isfinite(edge.bulge))
    return false;
  edge.minX = std::min(edge.from.x, to.x), edge.maxX = std::max(edge.from.x, to.x);
  edge.minY = std::min(edge.from.y, to.y), edge.maxY = std::max(edge.from.y, to.y);
  edge.radius = 0;
  if (edge.bulge == 0) return true;
  const double b = edge.bulge;
  edge.radius = edge.length * (1 + b * b) / (4 * std::fabs(b));
  const KvGeVector2d left(-edge.chord.y, edge.chord.x);
  edge.center = edge.from + edge.chord / 2 + left * ((1 - b * b) / (4 * b));
  if (!std::isfinite(edge.radius) || edge.radius > kFlattest * edge.length) return false;
  const double r = edge.radius;
  for (const KvGePoint2d& extreme :
       {KvGePoint2d(edge.center.x + r, edge.center.y), KvGePoint2d(edge.center.x - r, edge.center.y),
        KvGePoint2d(edge.center.x, edge.center.y + r), KvGePoint2d(edge.center.x, edge.center.y - r)})
    if (edge.beyondChord(extreme) >= 0) edge.include(extreme.x, extreme.y);
  return true;
}

/// Between chord and arc, positive for a bulge to the right of the chord: c^2 ((1 + b^2)^2 atan b - b (1 -
/// b^2)) / (8 b^2).
double areaBeyondChord(const Edge& edge) {
  const double b = edge.bulge, square = b * b;
  double share;
  if (std::fabs(b) < kFlatBulge)
    share = b * (1.0 / 3 + square * (1.0 / 15 + square * (-1.0 / 105 + square * (1.0 / 315 - square / 693))));
  else
    share = ((1 + square) * (1 + square) * std::atan(b) - b * (1 - square)) / (8 * square);
  return share * edge.length * edge.length;
}

class Outline {
 public:
  explicit Outline(std::vector<Edge> edges) : edges_(std::move(edges)), count_(edges_.size()) {
    double size = 0;
    for (const Edge& edge : edges_)
      size = std::max(
          {size, std::fabs(edge.minX), std::fabs(edge.maxX), std::fabs(edge.minY), std::fabs(edge.maxY)});
    near_ = std::max(KvGeRegion::kVertexTolerance, kShareOfSize * size);
  }

  /// In the order of their left ends each edge is compared with those whose boxes reach into its own.
  bool isPlain() const {
    std::vector<std::size_t> order(count_);
    for (std::size_t i = 0; i < count_; ++i) order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return edges_[a].minX < edges_[b].minX; });
    for (std::size_t i = 0; i < count_; ++i) {
      const Edge& edge = edges_[order[i]];
      for (std::size_t k = i + 1; k < count_ && edges_[order[k]].minX <= edge.maxX + near_; ++k) {
        const Edge& other = edges_[order[k]];
        if (other.minY > edge.maxY + near_ || other.maxY < edge.minY - near_) continue;
        if (mayMeet(order[i], order[k])) return false;
      }
    }
    return true;
  }

  double area() const {
    // About the first vertex, so that far-off outlines keep their digits.
    const KvGePoint2d origin = edges_.front().from;
    double twice = 0, beyond = 0;
    for (const Edge& edge : edges_) {
      twice += (edge.from - origin).crossProduct(edge.to - origin);
      beyond += areaBeyondChord(edge);
    }
    return std::fabs(twice / 2 + beyond);
  }

 private:
  bool mayMeet(std::size_t first, std::size_t second) const {
    const Edge &a = edges_[first], &b = edges_[second];
    const bool follows = (first + 1) % count_ == second, leads = (second + 1) % count_ == first;
    if (follows && leads) return !isLens(a, b);
    if (follows) return meetAgain(a, b, a.to);
    if (leads) return meetAgain(b, a, a.from);
    if (!a.isArc() && !b.isArc()) return !(onOneSide(a, b) || onOneSide(b, a));
    if (a.isArc() && b.isArc()) return circlesMeet(a, b);
    return a.isArc() ? lineMeetsCircle(b, a) : lineMeetsCircle(a, b);
  }

  /// Two edges that have both vertices in common: carriers that differ meet nowhere else.
  bool isLens(const Edge& a, const Edge& b) const {
    // The arc of a goes from one end to the other beyond the chord, that of b comes back: what they are
    // beyond the chord tells them apart. Equal bulges of one sign are the two parts of one circle, or not.
    return std::fabs(a.bulge + b.bulge) > 1e-6;
  }

  /// Neighbours: `b` leaves the vertex to which `a` comes. True when they may have more than it in common.
  bool meetAgain(const Edge& a, const Edge& b, KvGePoint2d vertex) const {
    if (!a.isArc() && !b.isArc()) {
      // Only folding back brings two segments together.
      const double back = a.chord.dotProduct(b.chord), across = a.chord.crossProduct(b.chord);
      return back < 0 && std::fabs(across) <= near_ * std::max(a.length, b.length);
    }
    KvGePoint2d again;
    if (a.isArc() && b.isArc()) {
      const KvGeVector2d centers = b.center - a.center;
      const double apart = centers.length();
      if (apart <= near_ * 10) return !continues(a, b);
      const KvGeVector2d along = centers / apart;
      const KvGeVector2d arm = vertex - a.center;
      again = a.center + along * (2 * arm.dotProduct(along)) - arm;
    } else {
      const Edge &line = a.isArc() ? b : a, &arc = a.isArc() ? a : b;
      const KvGeVector2d along = line.chord / line.length;
      again = vertex + along * (2 * (arc.center - vertex).dotProduct(along));
    }
    if (again.distanceTo(vertex) <= near_) return false;  // they touch there
    return a.mayHold(again, near_) && b.mayHold(again, near_);
  }

  /// Arcs of one circle, one behind the other, that don't run into each other.
  static bool continues(const Edge& a, const Edge& b) {
    constexpr double kWholeTurn = 6.283185307179586;
    return (a.bulge > 0) == (b.bulge > 0) &&
           4 * std::fabs(std::atan(a.bulge) + std::atan(b.bulge)) < kWholeTurn - 1e-6;
  }

  /// Both ends of `b` lie plainly on the same side of the line through `a`.
  bool onOneSide(const Edge& a, const Edge& b) const {
    const double from = (b.from - a.from).crossProduct(a.chord) / a.length,
                 to = (b.to - a.from).crossProduct(a.chord) / a.length;
    return (from > near_ && to > near_) || (from < -near_ && to < -near_);
  }

  bool lineMeetsCircle(const Edge& line, const Edge& arc) const {
    const KvGeVector2d along = line.chord / line.length;
    const KvGeVector2d arm = arc.center - line.from;
    const double foot = arm.dotProduct(along), off = std::fabs(arm.crossProduct(along));
    if (off > arc.radius + near_) return false;
    const double half = std::sqrt(std::max(0.0, (arc.radius - off) * (arc.radius + off)));
    // Near a touching point the places are uncertain by as much as they lie apart.
    const double slack = near_ + (half < 1e3 * near_ ? 1e3 * near_ + std::sqrt(2 * arc.radius * near_) : 0);
    for (const double at : {foot - half, foot + half}) {
      const KvGePoint2d p = line.from + along * at;
      if (line.mayHold(p, slack) && arc.mayHold(p, slack)) return true;
    }
    return false;
  }

  bool circlesMeet(const Edge& a, const Edge& b) const {
    const KvGeVector2d centers = b.center - a.center;
    const double apart = centers.length();
    if (apart > a.radius + b.radius + near_ || apart < std::fabs(a.radius - b.radius) - near_) return false;
    if (apart <= near_ * 10)  // one circle, or nearly: arcs that have no part of it in common keep apart
      return a.mayHold(b.from, near_) || a.mayHold(b.to, near_) || b.mayHold(a.from, near_) ||
             b.mayHold(a.to, near_);
    const KvGeVector2d along = centers / apart;
    const double foot = (apart * apart + (a.radius - b.radius) * (a.radius + b.radius)) / (2 * apart);
    const double half = std::sqrt(std::max(0.0, (a.radius - foot) * (a.radius + foot)));
    const double slack =
        near_ + (half < 1e3 * near_ ? 1e3 * near_ + std::sqrt(2 * std::max(a.radius, b.radius) * near_) : 0);
    const KvGeVector2d across(-along.y, along.x);
    for (const double side : {half, -half}) {
      const KvGePoint2d p = a.center + along * foot + across * side;
      if (a.mayHold(p, slack) && b.mayHold(p, slack)) return true;
    }
    return false;
  }

  std::vector<Edge> edges_;
  std::size_t count_;
  double near_;
};

}  // namespace

std::optional<double> areaOfPlainOutline(std::span<const KvGePolyline3d::Vertex> vertices) {
  if (vertices.size() < 2) return std::nullopt;
  std::vector<Edge> edges(vertices.size());
  for (std::size_t i = 0; i < vertices.size(); ++i)
    if (!makeEdge(vertices[i], vertices[(i + 1) % vertices.size()].point, edges[i])) return std::nullopt;
  const Outline outline(std::move(edges));
  if (!outline.isPlain()) return std::nullopt;
  return outline.area();
}

}  // namespace kvge
