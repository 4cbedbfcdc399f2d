#include "host/geometry/intersect.h"

#include <numeric>

#include "host/geometry/internal/flat.h"

namespace kvge {

namespace {

using Hits = std::vector<KvGeCurveHit>;

/// What one call needs again and again, so that a pair of polylines doesn't allocate for each pair of spans.
struct Work {
  double tol;
  std::vector<FlatHit> flat;
  std::vector<double> storeA, storeB, params;
  Hits& hits;
};

enum class Shape { kStraight, kFlat, kTwisted };

/// The plane that a span lies in, if there is one and no other.
Shape shapeOf(const Span& s, double tol, KvGePoint3d& on, KvGeVector3d& normal) {
  on = s.kind == SpanKind::kBezier ? startOf(s) : s.origin;
  if (s.kind == SpanKind::kLine) return Shape::kStraight;
  if (s.kind == SpanKind::kConic) {
    normal = s.u.crossProduct(s.v);
    const double size = normal.length();
    if (size == 0) return Shape::kStraight;
    normal = normal / size;
    if (std::fabs(normal.x) < 1e-15 && std::fabs(normal.y) < 1e-15)
      normal = {0, 0, normal.z > 0 ? 1.0 : -1.0};
    return Shape::kFlat;
  }
  const auto pole = [&](int i) {
    const double* p = s.poles + 4 * i;
    return KvGePoint3d(p[0] / p[3], p[1] / p[3], p[2] / p[3]);
  };
  KvGeVector3d along, widest;
  for (int i = 1; i <= s.degree; ++i)
    if (const KvGeVector3d d = pole(i) - on; d.lengthSqrd() > along.lengthSqrd()) along = d;
  if (along.length() == 0) return Shape::kStraight;
  for (int i = 1; i <= s.degree; ++i)
    if (const KvGeVector3d n = along.crossProduct(pole(i) - on); n.lengthSqrd() > widest.lengthSqrd())
      widest = n;
  if (widest.length() <= tol * along.length()) return Shape::kStraight;
  normal = widest / widest.length();
  for (int i = 1; i <= s.degree; ++i)
    if (std::fabs((pole(i) - on).dotProduct(normal)) > tol) return Shape::kTwisted;
  return Shape::kFlat;
}

bool liesIn(const Span& s, const KvGePoint3d& on, const KvGeVector3d& normal, double tol) {
  const auto isNear = [&](const KvGePoint3d& p) { return std::fabs((p - on).dotProduct(normal)) <= tol; };
  if (s.kind == SpanKind::kBezier) {
    for (int i = 0; i <= s.degree; ++i) {
      const double* p = s.poles + 4 * i;
      if (!isNear(KvGePoint3d(p[0] / p[3], p[1] / p[3], p[2] / p[3]))) return false;
    }
    return true;
  }
  if (s.kind == SpanKind::kConic) return isNear(s.origin) && isNear(s.origin + s.u) && isNear(s.origin + s.v);
  const double far = std::isinf(s.low) || std::isinf(s.high) ? 1e6 : 0;
  return isNear(s.origin + s.u * (std::isfinite(s.low) ? s.low : -far)) &&
         isNear(s.origin + s.u * (std::isfinite(s.high) ? s.high : far));
}

void crossInFrame(const Span& a, const Span& b, const Frame& frame, bool isProjected, Work& w) {
  const Span fa = flattened(a, frame, w.storeA), fb = flattened(b, frame, w.storeB);
  w.flat.clear();
  crossFlat(fa, fb, w.tol, w.flat);
  for (const FlatHit& hit : w.flat) {
    KvGeCurveHit one;
    one.param = fa.toCurve(hit.ta);
    one.otherParam = fb.toCurve(hit.tb);
    const double ha = frame.heightOf(pointAt(a, a.toOwn(one.param))),
                 hb = frame.heightOf(pointAt(b, b.toOwn(one.otherParam)));
    if (!isProjected && std::fabs(ha - hb) > w.tol) continue;
    one.point = frame.toWorld(hit.point, ha);
    one.otherPoint = frame.toWorld(hit.point, hb);
    w.hits.push_back(one);
  }
}

/// Meetings of `cutter`'s plane curve with a span that isn't in its plane. `isSwapped`: `s` is the call's
/// first curve.
void crossThrough(const Span& plane, const KvGePoint3d& on, const KvGeVector3d& normal, const Span& s,
                  bool isSwapped, Work& w) {
  w.params.clear();
  cutByPlane(s, on, normal, w.tol, w.params);
  for (const double t : w.params) {
    const KvGePoint3d p = pointAt(s, t);
    const double mate = nearestOn(plane, p);
    const KvGePoint3d q = pointAt(plane, mate);
    if (q.distanceTo(p) > w.tol) continue;
    KvGeCurveHit one{q, p, plane.toCurve(mate), s.toCurve(t)};
    if (isSwapped) one = {p, q, s.toCurve(t), plane.toCurve(mate)};
    w.hits.push_back(one);
  }
}

void crossStraight(const Span& a, const Span& b, Work& w) {
  const KvGeVector3d between = b.origin - a.origin;
  KvGeVector3d normal = a.u.crossProduct(b.u);
  if (normal.length() <= 1e-10) normal = a.u.crossProduct(between);
  if (normal.length() <= 1e-14 * std::max(1.0, between.length()))
    normal = (a.isPoint() ? b.u : a.u).perpVector();
  if (normal.length() == 0) normal = KvGeVector3d::kZAxis;
  crossInFrame(a, b, Frame::of(a.origin, normal / normal.length()), false, w);
}

bool isLevel(const Span& s) {
  return s.kind != SpanKind::kBezier && s.u.z == 0 && s.v.z == 0;
}

void crossInSpace(const Span& a, const Span& b, Work& w) {
  if (isLevel(a) && isLevel(b)) {
    if (std::fabs(a.origin.z - b.origin.z) <= w.tol) crossInFrame(a, b, Frame(), false, w);
    return;
  }
  KvGePoint3d onA, onB;
  KvGeVector3d na, nb;
  const Shape sa = shapeOf(a, w.tol, onA, na), sb = shapeOf(b, w.tol, onB, nb);
  if (sa == Shape::kFlat)
    return liesIn(b, onA, na, w.tol) ? crossInFrame(a, b, Frame::of(onA, na), false, w)
                                     : crossThrough(a, onA, na, b, false, w);
  if (sb == Shape::kFlat)
    return liesIn(a, onB, nb, w.tol) ? crossInFrame(a, b, Frame::of(onB, nb), false, w)
                                     : crossThrough(b, onB, nb, a, true, w);
  if (a.kind == SpanKind::kLine && b.kind == SpanKind::kLine) return crossStraight(a, b, w);
  const KvGeVector3d u = a.kind == SpanKind::kLine ? a.u : b.u;
  if (sa == Shape::kTwisted && b.kind == SpanKind::kLine)
    return crossThrough(b, b.origin, u.perpVector(), a, true, w);
  if (sb == Shape::kTwisted && a.kind == SpanKind::kLine)
    return crossThrough(a, a.origin, u.perpVector(), b, false, w);
  // Seen from a direction that no drawing has: what meets in space meets there too, and is told from what
  // only seems to.
  const KvGeVector3d oblique(0.36787944117144233, 0.5671432904097838, 0.7365);
  crossInFrame(a, b, Frame::of(onA, oblique.normal()), false, w);
}

struct Row {
  std::vector<Span> spans;
  std::vector<KvGeBox3d> boxes;
  std::vector<int> order;
};

Row rowOf(const KvGeCurve3d& c, bool isExtended, const Frame* frame) {
  Row row;
  std::vector<double> store;
  const int count = c.spanCount();
  for (int i = 0; i < count; ++i) {
    row.spans.push_back(isExtended && !c.isClosed() ? c.extendedSpan(i) : c.span(i));
    row.boxes.push_back(boxOf(frame ? flattened(row.spans.back(), *frame, store) : row.spans.back()));
  }
  row.order.resize(static_cast<size_t>(count));
  std::iota(row.order.begin(), row.order.end(), 0);
  const auto left = [&](int i) { return row.boxes[static_cast<size_t>(i)].low.x; };
  std::sort(row.order.begin(), row.order.end(), [&](int i, int k) { return left(i) < left(k); });
  return row;
}

/// Every pair of spans whose boxes meet, by a sweep along X.
template <class Visit>
void visitPairs(const Row& a, const Row& b, double tol, const Visit& visit) {
  std::vector<int> openA, openB;
  size_t ia = 0, ib = 0;
  const auto boxOfA = [&](int i) -> const KvGeBox3d& { return a.boxes[static_cast<size_t>(i)]; };
  const auto boxOfB = [&](int i) -> const KvGeBox3d& { return b.boxes[static_cast<size_t>(i)]; };
  while (ia < a.order.size() || ib < b.order.size()) {
    const bool takesA = ib >= b.order.size() ||
                        (ia < a.order.size() && boxOfA(a.order[ia]).low.x <= boxOfB(b.order[ib]).low.x);
    const int now = takesA ? a.order[ia++] : b.order[ib++];
    const KvGeBox3d box = (takesA ? boxOfA(now) : boxOfB(now)).grown(tol);
    auto& open = takesA ? openB : openA;
    std::erase_if(open, [&](int i) { return (takesA ? boxOfB(i) : boxOfA(i)).high.x < box.low.x; });
    for (const int i : open)
      if (box.meets(takesA ? boxOfB(i) : boxOfA(i))) takesA ? visit(now, i) : visit(i, now);
    (takesA ? openA : openB).push_back(now);
  }
}

/// Orders the hits and drops what is one: a joint of two spans, the seam of a closed curve.
void tidy(const KvGeCurve3d& a, const KvGeCurve3d& b, double tol, Hits& hits) {
  std::sort(hits.begin(), hits.end(), [](const KvGeCurveHit& x, const KvGeCurveHit& y) {
    return x.param != y.param ? x.param < y.param : x.otherParam < y.otherParam;
  });
  if (a.spanCount() + b.spanCount() <= 2) return;
  const auto isNear = [&](const KvGeCurve3d& c, double s, double t) {
    const double period = c.endParam() - c.startParam(), d = std::fabs(s - t),
                 slack = 1e-6 * std::max(1.0, std::fabs(s));
    return d <= slack || (std::isfinite(period) && d >= period - slack && c.isClosed());
  };
  std::vector<KvGeCurveHit> kept;
  for (const KvGeCurveHit& hit : hits) {
    const bool isKnown = std::any_of(kept.begin(), kept.end(), [&](const KvGeCurveHit& other) {
      return other.point.distanceTo(hit.point) <= 2 * tol && isNear(a, other.param, hit.param) &&
             isNear(b, other.otherParam, hit.otherParam);
    });
    if (!isKnown) kept.push_back(hit);
  }
  hits = std::move(kept);
}

/// `frame` is null for meetings in space.
void intersectAll(const KvGeCurve3d& a, const KvGeCurve3d& b, const Frame* frame, Hits& hits,
                  KvGe::Extension extension, double tol) {
  hits.clear();
  Work w{tol, {}, {}, {}, {}, hits};
  const bool extendsA = extension & KvGe::kExtendThis, extendsB = extension & KvGe::kExtendArg;
  const auto cross = [&](const Span& sa, const Span& sb) {
    frame ? crossInFrame(sa, sb, *frame, true, w) : crossInSpace(sa, sb, w);
  };
  if (a.spanCount() == 1 && b.spanCount() == 1) {
    cross(extendsA && !a.isClosed() ? a.extendedSpan(0) : a.span(0),
          extendsB && !b.isClosed() ? b.extendedSpan(0) : b.span(0));
  } else {
    const Row ra = rowOf(a, extendsA, frame), rb = rowOf(b, extendsB, frame);
    visitPairs(ra, rb, tol, [&](int i, int k) {
      cross(ra.spans[static_cast<size_t>(i)], rb.spans[static_cast<size_t>(k)]);
    });
  }
  tidy(a, b, tol, hits);
}

}  // namespace

void intersect(const KvGeCurve3d& a, const KvGeCurve3d& b, std::vector<KvGeCurveHit>& hits,
               KvGe::Extension extension, const KvGeTol& tol) {
  intersectAll(a, b, nullptr, hits, extension, tol.equalPoint());
}

void intersectProjected(const KvGeCurve3d& a, const KvGeCurve3d& b, const KvGePlane& plane,
                        std::vector<KvGeCurveHit>& hits, KvGe::Extension extension, const KvGeTol& tol) {
  const Frame frame = Frame::of(plane.pointOnPlane(), plane.normal());
  intersectAll(a, b, &frame, hits, extension, tol.equalPoint());
}

}  // namespace kvge
