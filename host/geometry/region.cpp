#include "host/geometry/region.h"

#include "host/geometry/arc.h"
#include "host/geometry/internal/overlay.h"
#include "host/geometry/nurb.h"

using kvge::Edge;
using kvge::Frame;
using kvge::Loop;
using kvge::Loops;
using kvge::Span;
using kvge::SpanKind;

namespace kvge {

using Poles = std::shared_ptr<const std::vector<double>>;

struct RegionData {
  Frame frame;
  double height = 0;  ///< of the region above the frame
  Loops loops;
  std::vector<Poles> poles;  ///< what spline edges point into
};

}  // namespace kvge

namespace {

using kvge::Poles;
using kvge::RegionData;

/// One curve, or several chained ones, in the plane.
struct Chain {
  Loop edges;
  bool isClosed = false;

  KvGePoint2d start() const { return kvge::planar(edges.front().start()); }
  KvGePoint2d end() const { return kvge::planar(edges.back().end()); }
  void reverse() {
    std::reverse(edges.begin(), edges.end());
    for (Edge& e : edges) e.isReversed = !e.isReversed;
  }
};

double largestCoordinate(const Loops& loops) {
  double most = 0;
  for (const Loop& loop : loops.rows)
    for (const Edge& e : loop)
      for (const KvGePoint3d& p : {e.start(), e.end()})
        most = std::max({most, std::fabs(p.x), std::fabs(p.y)});
  return most;
}

double vertexTolerance(double largest) {
  return std::max(KvGeRegion::kVertexTolerance, 1e-13 * largest);
}

/// The plane that holds all the curves.
bool findFrame(const KvGeRegion::Curves& curves, Frame& frame, double& height) {
  KvGePlane plane;
  std::vector<KvGePoint3d> points;
  bool hasPlane = false;
  for (const KvGeCurve3d* c : curves) {
    KvGePlane own;
    const auto kind = c->planarity(own, KvGeTol(KvGeRegion::kChainTolerance, 1e-10));
    if (kind == KvGeCurve3d::kNotPlanar) return false;
    if (kind == KvGeCurve3d::kPlanar && !hasPlane) plane = own, hasPlane = true;
    for (int i = 0, n = c->spanCount(); i < n; ++i)
      for (const KvGePoint3d& p : {kvge::startOf(c->span(i)), kvge::endOf(c->span(i))}) points.push_back(p);
  }
  if (points.empty()) return false;
  const KvGePoint3d first = points[0];
  if (!hasPlane) {
    KvGeVector3d along, widest;
    for (const KvGePoint3d& p : points)
      if ((p - first).lengthSqrd() > along.lengthSqrd()) along = p - first;
    for (const KvGePoint3d& p : points)
      if (const KvGeVector3d n = along.crossProduct(p - first); n.lengthSqrd() > widest.lengthSqrd())
        widest = n;
    if (widest.length() <= KvGeRegion::kChainTolerance * along.length()) return false;
    plane = KvGePlane(first, widest / widest.length());
  }
  KvGeVector3d normal = plane.normal();
  constexpr double kUpright = 1e-12;
  if (std::hypot(normal.x, normal.y) < kUpright) normal = KvGeVector3d::kZAxis;
  for (const KvGePoint3d& p : points)
    if (std::fabs((p - first).dotProduct(normal)) > KvGeRegion::kChainTolerance) return false;
  frame = Frame::of(first, normal);
  height = frame.heightOf(first);
  return true;
}

Chain chainOf(const KvGeCurve3d& c, const Frame& frame, std::vector<Poles>& poles) {
  Chain chain;
  for (int i = 0, n = c.spanCount(); i < n; ++i) {
    auto store = std::make_shared<std::vector<double>>();
    Edge e;
    e.span = kvge::flattened(c.span(i), frame, *store);
    e.span.base = 0;
    e.span.scale = 1;
    if (e.span.isPoint() || !(e.span.low < e.span.high)) continue;
    if (!store->empty()) poles.push_back(std::move(store));
    chain.edges.push_back(e);
  }
  chain.isClosed = c.isClosed(KvGeTol(KvGeRegion::kChainTolerance, 1e-10));
  return chain;
}

/// A line where two ends are farther apart than one vertex.
void bridge(Loop& loop, KvGePoint2d from, KvGePoint2d to) {
  if (from.distanceTo(to) <= KvGeRegion::kVertexTolerance) return;
  loop.push_back({kvge::lineSpan(kvge::spatial(from), kvge::spatial(to)), false});
}

/// Closed loops from the chains; what doesn't close is left out, and the answer is false.
bool closeChains(std::vector<Chain> chains, std::vector<Loop>& loops) {
  constexpr double kReach = KvGeRegion::kChainTolerance;
  bool allClosed = true;
  std::vector<bool> isUsed(chains.size());
  for (size_t i = 0; i < chains.size(); ++i) {
    if (isUsed[i] || chains[i].edges.empty()) continue;
    isUsed[i] = true;
    Chain path = std::move(chains[i]);
    while (!path.isClosed) {
      if (path.end().distanceTo(path.start()) <= kReach && path.edges.size() > 1) break;
      size_t next = chains.size();
      for (size_t k = i + 1; k < chains.size() && next == chains.size(); ++k) {
        if (isUsed[k] || chains[k].isClosed || chains[k].edges.empty()) continue;
        if (path.end().distanceTo(chains[k].end()) <= kReach &&
            path.end().distanceTo(chains[k].start()) > kReach)
          chains[k].reverse();
        if (path.end().distanceTo(chains[k].start()) <= kReach) next = k;
      }
      if (next == chains.size()) break;
      isUsed[next] = true;
      bridge(path.edges, path.end(), chains[next].start());
      path.edges.insert(path.edges.end(), chains[next].edges.begin(), chains[next].edges.end());
    }
    const bool isLoop =
        path.isClosed || (path.edges.size() > 1 && path.end().distanceTo(path.start()) <= kReach);
    if (!isLoop) {
      allClosed = false;
      continue;
    }
    bridge(path.edges, path.end(), path.start());
    loops.push_back(std::move(path.edges));
  }
  return allClosed;
}

/// An overlay at growing tolerances.
bool resolve(kvge::OverlayInput& input, const std::function<bool(int, int)>& keep, Loops& result) {
  for (int i = 0; i < 3; ++i, input.tolerance *= 10)
    if (kvge::overlay(input, keep, result)) return true;
  return false;
}

/// The map between the coordinates of two frames.
KvGeMatrix3d between(const Frame& from, const Frame& to) {
  KvGeMatrix3d a, b;
  a.setCoordSystem(from.origin, from.x, from.y, from.normal);
  b.setCoordSystem(to.origin, to.x, to.y, to.normal);
  return b.inverse() * a;
}

bool isSameFrame(const Frame& a, const Frame& b) {
  return (a.isWorld && b.isWorld) || (a.origin == b.origin && a.x == b.x && a.y == b.y);
}

/// Loops moved within their plane; spline poles go to a new store of their own.
void moveLoops(Loops& loops, const KvGeMatrix3d& m, std::vector<Poles>& poles) {
  poles.clear();
  for (Loop& loop : loops.rows)
    for (Edge& e : loop) {
      auto store = std::make_shared<std::vector<double>>();
      e.span = kvge::transformed(e.span, m, *store);
      e.span.base = 0;
      e.span.scale = 1;
      e.span.origin.z = e.span.u.z = e.span.v.z = 0;
      if (!store->empty()) {
        for (size_t i = 2; i < store->size(); i += 4) (*store)[i] = 0;
        poles.push_back(std::move(store));
      }
    }
}

KvGeCurve3d::Ptr curveOf(const Edge& e, const Frame& frame, double height) {
  const Span& s = e.span;
  const auto toWorld = [&](const KvGePoint3d& p) { return frame.toWorld(kvge::planar(p), height); };
  const auto turned = [&](const KvGeVector3d& v) { return frame.x * v.x + frame.y * v.y; };
  if (s.kind == SpanKind::kLine) return std::make_unique<KvGeLineSeg3d>(toWorld(e.start()), toWorld(e.end()));
  if (s.kind == SpanKind::kConic) {
    const double side = s.u.crossProduct(s.v).z;
    KvGeCurve3d::Ptr c;
    if (s.radius > 0)
      c = std::make_unique<KvGeCircArc3d>(toWorld(s.origin), frame.normal * (side > 0 ? 1 : -1), turned(s.u),
                                          s.radius, s.low, s.high);
    else
      c = std::make_unique<KvGeEllipArc3d>(
          KvGeEllipArc3d::fromConjugate(toWorld(s.origin), turned(s.u), turned(s.v), s.low, s.high));
    return side > 0 ? std::move(c) : c->reversed();
  }
  const size_t p = static_cast<size_t>(s.degree);
  std::vector<double> knots(p + 1, s.knotLow), weights;
  knots.insert(knots.end(), p + 1, s.knotHigh);
  std::vector<KvGePoint3d> row;
  for (size_t i = 0; i <= p; ++i) {
    const double* q = s.poles + 4 * i;
    row.push_back(toWorld({q[0] / q[3], q[1] / q[3], 0}));
    weights.push_back(q[3]);
  }
  const auto whole = KvGeNurbCurve3d::create(s.degree, std::move(knots), std::move(row), std::move(weights));
  if (!whole) return nullptr;
  KvGeCurve3d::Ptr part = whole->piece(s.low, s.high);
  return e.isReversed && part ? part->reversed() : std::move(part);
}

/// Integrals of x and y over the area that an edge cuts off, seen from the origin.
KvGeVector2d momentOf(const Edge& e, KvGePoint2d origin) {
  constexpr double kNodes[4] = {0.1834346424956498, 0.5255324099163290, 0.7966664774136267,
                                0.9602898564975363};
  constexpr double kWeights[4] = {0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                                  0.1012285362903763};
  const Span& s = e.span;
  const int stretches = s.kind == SpanKind::kLine ? 1 : 24;
  KvGeVector2d sum;
  for (int i = 0; i < stretches; ++i) {
    const double half = (s.high - s.low) / stretches / 2, middle = s.low + half * (2 * i + 1);
    for (int k = 0; k < 8; ++k) {
      const kvge::Jet j = kvge::jetAt(s, middle + (k < 4 ? -1 : 1) * half * kNodes[k % 4]);
      const double x = j.point.x - origin.x, y = j.point.y - origin.y, weight = kWeights[k % 4] * half / 2;
      sum = sum + KvGeVector2d(x * x * j.first.y, -y * y * j.first.x) * weight;
    }
  }
  return e.isReversed ? -sum : sum;
}

void appendPoles(std::vector<Poles>& to, const std::vector<Poles>& from) {
  to.insert(to.end(), from.begin(), from.end());
}

}  // namespace

KvGeRegion::Status KvGeRegion::createFromCurves(const Curves& curves, std::vector<KvGeRegion>& regions) {
  for (const KvGeCurve3d* c : curves)
    if (std::isinf(c->startParam()) || std::isinf(c->endParam())) return kUnbounded;
  Frame frame;
  double height = 0;
  if (!findFrame(curves, frame, height)) return kNotPlanar;
  std::vector<Poles> poles;
  std::vector<Chain> chains;
  for (const KvGeCurve3d* c : curves) chains.push_back(chainOf(*c, frame, poles));
  std::vector<Loop> loops;
  const bool allClosed = closeChains(std::move(chains), loops);
  for (const Loop& loop : loops) {
    auto data = std::make_shared<RegionData>();
    data->frame = frame;
    data->height = height;
    data->poles = poles;
    kvge::OverlayInput input;
    input.loops[0].push_back(&loop);
    input.tolerance = vertexTolerance(largestCoordinate({{loop}, {-1}}));
    if (!resolve(
            input, [](int a, int) { return a != 0; }, data->loops))
      return kUnresolved;
    if (data->loops.rows.empty()) continue;
    KvGeRegion one;
    one.data_ = std::move(data);
    regions.push_back(std::move(one));
  }
  return allClosed && !loops.empty() ? kOk : kNoLoop;
}

KvGeRegion::Status KvGeRegion::createFromLoops(const Curves& curves, KvGeRegion& region, FillRule rule) {
  for (const KvGeCurve3d* c : curves)
    if (std::isinf(c->startParam()) || std::isinf(c->endParam())) return kUnbounded;
  auto data = std::make_shared<RegionData>();
  if (!findFrame(curves, data->frame, data->height)) return kNotPlanar;
  std::vector<Chain> chains;
  for (const KvGeCurve3d* c : curves) chains.push_back(chainOf(*c, data->frame, data->poles));
  Loops given;
  if (!closeChains(std::move(chains), given.rows)) return kNoLoop;
  kvge::OverlayInput input;
  for (const Loop& loop : given.rows) input.loops[0].push_back(&loop);
  input.tolerance = vertexTolerance(largestCoordinate(given));
  const auto keep = [rule](int a, int) { return rule == kEvenOdd ? a % 2 != 0 : a != 0; };
  if (!resolve(input, keep, data->loops)) return kUnresolved;
  region.data_ = data->loops.rows.empty() ? nullptr : std::move(data);
  return kOk;
}

KvGePlane KvGeRegion::plane() const {
  return data_ ? KvGePlane(data_->frame.toWorld({}, data_->height), data_->frame.normal) : KvGePlane();
}

KvGeRegion::Status KvGeRegion::booleanOper(Operation operation, const KvGeRegion& other) {
  if (!data_ || !other.data_) {
    if (operation == kUnite && !data_) data_ = other.data_;
    if (operation == kIntersect) data_ = nullptr;
    return kOk;
  }
  const RegionData &a = *data_, &b = *other.data_;
  const KvGePlane pa = plane(), pb = other.plane();
  if (std::fabs(pa.signedDistanceTo(pb.pointOnPlane())) > kChainTolerance ||
      pa.normal().crossProduct(pb.normal()).length() > 1e-9)
    return kNotPlanar;
  auto data = std::make_shared<RegionData>();
  data->frame = a.frame;
  data->height = a.height;
  data->poles = a.poles;
  Loops moved;
  const Loops* second = &b.loops;
  if (isSameFrame(a.frame, b.frame)) {
    appendPoles(data->poles, b.poles);
  } else {
    moved = b.loops;
    std::vector<Poles> poles;
    moveLoops(moved, between(b.frame, a.frame), poles);
    appendPoles(data->poles, poles);
    second = &moved;
  }
  kvge::OverlayInput input;
  for (const Loop& loop : a.loops.rows) input.loops[0].push_back(&loop);
  for (const Loop& loop : second->rows) input.loops[1].push_back(&loop);
  input.isClean[0] = input.isClean[1] = true;
  input.tolerance = vertexTolerance(std::max(largestCoordinate(a.loops), largestCoordinate(*second)));
  const auto keep = [operation](int x, int y) {
    if (operation == kUnite) return x != 0 || y != 0;
    return x != 0 && (operation == kIntersect) == (y != 0);
  };
  if (!resolve(input, keep, data->loops)) return kUnresolved;
  data_ = data->loops.rows.empty() ? nullptr : std::move(data);
  return kOk;
}

double KvGeRegion::area() const {
  double sum = 0;
  if (data_)
    for (const Loop& loop : data_->loops.rows) sum += kvge::areaOf(loop);
  return sum;
}

double KvGeRegion::perimeter() const {
  double sum = 0;
  if (data_)
    for (const Loop& loop : data_->loops.rows)
      for (const Edge& e : loop) sum += kvge::lengthOf(e.span, e.span.low, e.span.high);
  return sum;
}

KvGePoint3d KvGeRegion::centroid() const {
  if (!data_) return {};
  const KvGePoint2d origin = kvge::planar(data_->loops.rows[0][0].start());
  KvGeVector2d moment;
  double twice = 0;
  for (const Loop& loop : data_->loops.rows)
    for (const Edge& e : loop) {
      moment = moment + momentOf(e, origin);
      twice += kvge::doubleAreaOf(e, origin);
    }
  return data_->frame.toWorld(origin + moment * (2 / twice), data_->height);
}

KvGeBox3d KvGeRegion::boundBox() const {
  std::vector<KvGeCurve3d::Ptr> edges;
  explode(edges);
  KvGeBox3d box;
  for (const auto& e : edges) box.add(e->boundBox());
  return box;
}

KvGe::PointContainment KvGeRegion::contains(const KvGePoint3d& point, const KvGeTol& tol) const {
  if (!data_) return KvGe::kOutside;
  const Frame& f = data_->frame;
  const KvGeVector3d d = point - f.origin;
  const KvGePoint2d p = f.isWorld ? kvge::planar(point) : KvGePoint2d(d.dotProduct(f.x), d.dotProduct(f.y));
  int winding = 0;
  for (const Loop& loop : data_->loops.rows) {
    for (const Edge& e : loop)
      if (kvge::pointAt(e.span, kvge::nearestOn(e.span, kvge::spatial(p))).distanceTo(kvge::spatial(p)) <=
          tol.equalPoint())
        return KvGe::kOnBoundary;
    winding += kvge::windingOf(loop, p);
  }
  return winding != 0 ? KvGe::kInside : KvGe::kOutside;
}

int KvGeRegion::loopCount() const {
  return data_ ? static_cast<int>(data_->loops.rows.size()) : 0;
}

int KvGeRegion::outerLoopOf(int loop) const {
  return data_->loops.outerOf[static_cast<size_t>(loop)];
}

void KvGeRegion::explodeLoop(int loop, std::vector<KvGeCurve3d::Ptr>& edges) const {
  if (loop < 0 || loop >= loopCount()) return;
  for (const Edge& e : data_->loops.rows[static_cast<size_t>(loop)])
    if (auto c = curveOf(e, data_->frame, data_->height)) edges.push_back(std::move(c));
}

void KvGeRegion::explode(std::vector<KvGeCurve3d::Ptr>& edges) const {
  for (int i = 0; i < loopCount(); ++i) explodeLoop(i, edges);
}

void KvGeRegion::separate(std::vector<KvGeRegion>& parts) const {
  for (int i = 0; i < loopCount(); ++i) {
    if (outerLoopOf(i) >= 0) continue;
    auto data = std::make_shared<RegionData>();
    data->frame = data_->frame;
    data->height = data_->height;
    data->poles = data_->poles;
    for (int k = i; k < loopCount(); ++k)
      if (k == i || outerLoopOf(k) == i) {
        data->loops.rows.push_back(data_->loops.rows[static_cast<size_t>(k)]);
        data->loops.outerOf.push_back(k == i ? -1 : 0);
      }
    KvGeRegion part;
    part.data_ = std::move(data);
    parts.push_back(std::move(part));
  }
}

KvGeRegion::Status KvGeRegion::transformBy(const KvGeMatrix3d& m) {
  if (m.isSingular()) return kNotPlanar;
  if (!data_) return kOk;
  const RegionData& old = *data_;
  auto data = std::make_shared<RegionData>();
  const KvGePoint3d on = m * old.frame.toWorld({}, old.height);
  KvGeVector3d normal = (m * old.frame.x).crossProduct(m * old.frame.y);
  normal = normal / normal.length();
  constexpr double kUpright = 1e-12;
  if (std::hypot(normal.x, normal.y) < kUpright) normal = KvGeVector3d::kZAxis;
  data->frame = Frame::of(on, normal);
  data->height = data->frame.heightOf(on);
  KvGeMatrix3d from, to;
  from.setCoordSystem(old.frame.toWorld({}, old.height), old.frame.x, old.frame.y, old.frame.normal);
  to.setCoordSystem(data->frame.origin, data->frame.x, data->frame.y, data->frame.normal);
  data->loops = old.loops;
  moveLoops(data->loops, to.inverse() * m * from, data->poles);
  // A plane turned over is seen from its other side: the loops run the other way round.
  if (kvge::areaOf(data->loops.rows[0]) < 0)
    for (Loop& loop : data->loops.rows) {
      std::reverse(loop.begin(), loop.end());
      for (Edge& e : loop) e.isReversed = !e.isReversed;
    }
  data_ = std::move(data);
  return kOk;
}
