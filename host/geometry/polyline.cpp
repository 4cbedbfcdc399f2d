#include "host/geometry/polyline.h"

#include "host/geometry/nurb.h"

namespace {

/// The own range 0 to 1 of a polyline's segment on a span.
void setSegmentRange(kvge::Span& s, int index) {
  const double range = s.high - s.low;
  s.scale = range > 0 ? 1 / range : 1;
  s.base = index - s.low * s.scale;
}

/// Beside the chord's middle by (1 - b^2) / (4 b) chords, to the left for a positive bulge below 1.
KvGePoint2d centerOfBulge(KvGePoint2d from, KvGeVector2d chord, double bulge) {
  return from + chord * 0.5 + chord.perpVector() * ((1 - bulge * bulge) / (4 * bulge));
}

/// A number that is a whole one but for rounding: so cutting at a vertex doesn't leave a segment without
/// length.
double wholeNear(double t) {
  return std::fabs(t - std::round(t)) <= 1e-13 * std::max(1.0, std::fabs(t)) ? std::round(t) : t;
}

}  // namespace

kvge::BulgeArc kvge::arcOfBulge(KvGePoint2d from, KvGePoint2d to, double bulge) {
  BulgeArc arc;
  const KvGeVector2d chord = to - from;
  if (bulge == 0 || chord.lengthSqrd() == 0) return arc;
  arc.center = centerOfBulge(from, chord, bulge);
  arc.radius = chord.length() * (1 + bulge * bulge) / (4 * std::fabs(bulge));
  arc.startAngle = (from - arc.center).angle();
  arc.sweep = 4 * std::atan(bulge);
  return arc;
}

KvGePolyline3d::KvGePolyline3d(std::vector<Vertex> vertices, bool isClosed, double elevation,
                               const KvGeVector3d& normal)
    : vertices_(std::move(vertices)), isClosed_(isClosed), elevation_(elevation), normal_(normal.normal()) {
  if (normal_.length() < 0.5) normal_ = KvGeVector3d::kZAxis;
  x_ = normal_.perpVector();
  y_ = normal_.crossProduct(x_).normal();
}

bool KvGePolyline3d::hasBulges() const {
  return std::any_of(vertices_.begin(), vertices_.end(), [](const Vertex& v) { return v.bulge != 0; });
}

int KvGePolyline3d::spanCount() const {
  const int n = static_cast<int>(vertices_.size());
  return n < 2 ? 0 : isClosed_ ? n : n - 1;
}

kvge::Span KvGePolyline3d::span(int index) const {
  const size_t i = static_cast<size_t>(index), next = i + 1 < vertices_.size() ? i + 1 : 0;
  const KvGePoint2d from = vertices_[i].point, to = vertices_[next].point;
  const double bulge = vertices_[i].bulge;
  kvge::Span s;
  if (bulge == 0 || from == to) {
    s = kvge::lineSpan(inSpace(from), inSpace(to));
  } else {
    // The radius to the start is the first axis, so that both ends come out exactly.
    const KvGePoint2d center = centerOfBulge(from, to - from, bulge);
    const KvGeVector2d out = from - center, across = bulge > 0 ? out.perpVector() : -out.perpVector();
    s.kind = kvge::SpanKind::kConic;
    s.origin = inSpace(center);
    s.u = x_ * out.x + y_ * out.y;
    s.v = x_ * across.x + y_ * across.y;
    s.radius = std::sqrt(out.lengthSqrd());
    s.high = 4 * std::atan(std::fabs(bulge));
  }
  setSegmentRange(s, index);
  return s;
}

KvGeCurve3d::Ptr KvGePolyline3d::piece(double from, double to) const {
  from = wholeNear(std::max(from, 0.0));
  to = wholeNear(std::min(to, endParam()));
  if (!(from < to)) return nullptr;
  std::vector<Vertex> row;
  const int first = spanIndexAt(from), last = static_cast<int>(std::ceil(to)) - 1;
  const auto planar = [&](double t) {
    const KvGeVector3d p = pointAtParam(t).asVector();
    return KvGePoint2d(p.dotProduct(x_), p.dotProduct(y_));
  };
  const auto vertexAt = [&](int i) { return vertices_[static_cast<size_t>(i) % vertices_.size()]; };
  for (int i = first; i <= last; ++i) {
    const double a = std::max(from, static_cast<double>(i)), b = std::min(to, i + 1.0);
    Vertex v = vertexAt(i);
    if (a > i) v.point = planar(a);
    if (v.bulge != 0 && b - a < 1) v.bulge = kvge::bulgeOfSweep(4 * std::atan(v.bulge) * (b - a));
    row.push_back(v);
  }
  row.push_back({to == last + 1 ? vertexAt(last + 1).point : planar(to), 0});
  auto one = std::make_unique<KvGePolyline3d>(*this);
  one->vertices_ = std::move(row);
  one->isClosed_ = false;
  return one;
}

KvGeCurve3d::Ptr KvGePolyline3d::reversed() const {
  auto one = std::make_unique<KvGePolyline3d>(*this);
  const size_t n = vertices_.size();
  // A closed one keeps its first vertex, so that the range runs backwards from the same seam.
  for (size_t i = 0; i < n; ++i) {
    const size_t from = isClosed_ ? (n - i) % n : n - 1 - i;
    const size_t before = from > 0 ? from - 1 : n - 1;
    one->vertices_[i] = {vertices_[from].point, isClosed_ || from > 0 ? -vertices_[before].bulge : 0};
  }
  return one;
}

KvGeCurve3d::Ptr KvGePolyline3d::asSpline(const KvGeMatrix3d& m) const {
  std::vector<KvGePoint3d> poles;
  std::vector<double> weights, knots;
  for (int i = 0, count = spanCount(); i < count; ++i) {
    const kvge::Span s = span(i);
    kvge::Span parts[4];
    double store[48];
    int made = 1;
    if (s.kind == kvge::SpanKind::kConic) {
      made = kvge::conicAsBeziers(s, parts, store);
    } else {
      const KvGePoint3d a = kvge::startOf(s), b = kvge::endOf(s), middle = kvge::midpoint(a, b);
      const double values[12] = {a.x, a.y, a.z, 1, middle.x, middle.y, middle.z, 1, b.x, b.y, b.z, 1};
      std::copy_n(values, 12, store);
    }
    for (int k = 0; k < made; ++k) {
      for (int j = poles.empty() ? 0 : 1; j < 3; ++j) {
        const double* p = store + 12 * k + 4 * j;
        poles.push_back(m * KvGePoint3d(p[0] / p[3], p[1] / p[3], p[2] / p[3]));
        weights.push_back(p[3]);
      }
      const double knot = i + static_cast<double>(k) / made;
      knots.insert(knots.end(), knots.empty() ? 3 : 2, knot);
    }
  }
  knots.insert(knots.end(), 3, spanCount());
  return KvGeNurbCurve3d::create(2, std::move(knots), std::move(poles), std::move(weights));
}

KvGeCurve3d::Ptr KvGePolyline3d::transformed(const KvGeMatrix3d& m) const {
  const KvGeVector3d u = m * x_, v = m * y_;
  const double a = u.length(), b = v.length();
  const bool keepsCircles = std::fabs(a - b) <= 1e-12 * a && std::fabs(u.dotProduct(v)) <= 1e-12 * a * b;
  if (hasBulges() && !keepsCircles && spanCount() > 0) return asSpline(m);
  const KvGeVector3d across = u.crossProduct(v);
  if (across.length() == 0) {
    // Seen edge-on: nothing but its points is left.
    std::vector<KvGePoint3d> points;
    for (const Vertex& vertex : vertices_) points.push_back(m * inSpace(vertex.point));
    return std::make_unique<KvGeSpacePolyline3d>(std::move(points), isClosed_);
  }
  auto one = std::make_unique<KvGePolyline3d>(std::vector<Vertex>(), isClosed_, 0, across / across.length());
  const KvGeVector3d origin = (m * inSpace({})).asVector();
  one->elevation_ = origin.dotProduct(one->normal_);
  for (const Vertex& vertex : vertices_) {
    const KvGeVector3d p = (m * inSpace(vertex.point)).asVector();
    one->vertices_.push_back({{p.dotProduct(one->x_), p.dotProduct(one->y_)}, vertex.bulge});
  }
  return one;
}

int KvGeSpacePolyline3d::spanCount() const {
  const int n = static_cast<int>(points_.size());
  return n < 2 ? 0 : isClosed_ ? n : n - 1;
}

kvge::Span KvGeSpacePolyline3d::span(int index) const {
  const size_t i = static_cast<size_t>(index);
  kvge::Span s = kvge::lineSpan(points_[i], points_[i + 1 < points_.size() ? i + 1 : 0]);
  setSegmentRange(s, index);
  return s;
}

KvGeCurve3d::Ptr KvGeSpacePolyline3d::piece(double from, double to) const {
  from = wholeNear(std::max(from, 0.0));
  to = wholeNear(std::min(to, endParam()));
  if (!(from < to)) return nullptr;
  std::vector<KvGePoint3d> row{pointAtParam(from)};
  for (int i = static_cast<int>(std::floor(from)) + 1; i < to; ++i)
    row.push_back(points_[static_cast<size_t>(i) % points_.size()]);
  row.push_back(pointAtParam(to));
  return std::make_unique<KvGeSpacePolyline3d>(std::move(row));
}

KvGeCurve3d::Ptr KvGeSpacePolyline3d::reversed() const {
  std::vector<KvGePoint3d> row(points_.rbegin(), points_.rend());
  if (isClosed_ && !row.empty()) std::rotate(row.begin(), row.end() - 1, row.end());
  return std::make_unique<KvGeSpacePolyline3d>(std::move(row), isClosed_);
}

KvGeCurve3d::Ptr KvGeSpacePolyline3d::transformed(const KvGeMatrix3d& m) const {
  std::vector<KvGePoint3d> row;
  for (const KvGePoint3d& p : points_) row.push_back(m * p);
  return std::make_unique<KvGeSpacePolyline3d>(std::move(row), isClosed_);
}
