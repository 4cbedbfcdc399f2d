#include "host/geometry/curve.h"

#include "host/geometry/line.h"

using kvge::Span;
using kvge::SpanKind;

KvGePoint3d KvGeCurve3d::startPoint() const {
  return pointAtParam(startParam());
}
KvGePoint3d KvGeCurve3d::endPoint() const {
  return pointAtParam(endParam());
}

bool KvGeCurve3d::isClosed(const KvGeTol& tol) const {
  if (std::isinf(startParam()) || std::isinf(endParam())) return false;
  return startPoint().isEqualTo(endPoint(), tol) && length() > tol.equalPoint();
}

int KvGeCurve3d::spanIndexAt(double param) const {
  const int count = spanCount();
  int low = 0, high = count - 1;
  while (low < high) {
    const int mid = (low + high + 1) / 2;
    const Span s = span(mid);
    (s.toCurve(s.low) <= param ? low : high) = s.toCurve(s.low) <= param ? mid : mid - 1;
  }
  return std::max(low, 0);
}

Span KvGeCurve3d::extendedSpan(int index) const {
  Span s = span(index);
  const bool atStart = index == 0, atEnd = index == spanCount() - 1;
  constexpr double kFar = std::numeric_limits<double>::infinity();
  if (s.isPoint() || (!atStart && !atEnd)) return s;
  if (s.kind == SpanKind::kLine) {
    if (atStart) s.low = -kFar;
    if (atEnd) s.high = kFar;
  } else if (s.kind == SpanKind::kConic) {
    if (atEnd)
      s.high = s.low + kvge::kTwoPi;
    else
      s.low = s.high - kvge::kTwoPi;
  }
  return s;
}

KvGePoint3d KvGeCurve3d::pointAtParam(double param) const {
  if (spanCount() == 0) return {};
  const Span s = span(spanIndexAt(param));
  const double own = s.toOwn(param);
  return kvge::pointAt(s, s.kind == SpanKind::kBezier ? std::clamp(own, s.low, s.high) : own);
}

KvGeVector3d KvGeCurve3d::firstDerivAtParam(double param) const {
  if (spanCount() == 0) return {};
  const Span s = span(spanIndexAt(param));
  const double own = s.toOwn(param);
  return kvge::jetAt(s, s.kind == SpanKind::kBezier ? std::clamp(own, s.low, s.high) : own).first / s.scale;
}

KvGeVector3d KvGeCurve3d::secondDerivAtParam(double param) const {
  if (spanCount() == 0) return {};
  const Span s = span(spanIndexAt(param));
  const double own = s.toOwn(param);
  return kvge::jetAt(s, s.kind == SpanKind::kBezier ? std::clamp(own, s.low, s.high) : own).second /
         (s.scale * s.scale);
}

double KvGeCurve3d::closestParamTo(const KvGePoint3d& point, bool extend) const {
  const int count = spanCount();
  double best = startParam(), least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < count; ++i) {
    const Span s = extend ? extendedSpan(i) : span(i);
    if (count > 1 && s.kind == SpanKind::kBezier) {
      // The hull is cheap to look at and tells most far spans off.
      KvGeBox3d hull;
      for (int k = 0; k <= s.degree; ++k) {
        const double* p = s.poles + 4 * k;
        hull.add(KvGePoint3d(p[0] / p[3], p[1] / p[3], p[2] / p[3]));
      }
      if (std::isfinite(least) && !hull.grown(least).contains(point)) continue;
    }
    const double t = kvge::nearestOn(s, point), d = kvge::pointAt(s, t).distanceTo(point);
    if (d < least) least = d, best = s.toCurve(t);
  }
  return best;
}

KvGePoint3d KvGeCurve3d::closestPointTo(const KvGePoint3d& point, bool extend) const {
  return pointAtParam(closestParamTo(point, extend));
}

double KvGeCurve3d::endSnapped(double param, const KvGePoint3d& point, const KvGeTol& tol) const {
  const double start = startParam(), end = endParam();
  if (std::isfinite(start) && startPoint().isEqualTo(point, tol)) return start;
  if (std::isfinite(end) && endPoint().isEqualTo(point, tol)) return end;
  return param;
}

bool KvGeCurve3d::paramAtPoint(const KvGePoint3d& point, double& param, const KvGeTol& tol) const {
  const double nearest = closestParamTo(point);
  if (!(pointAtParam(nearest).distanceTo(point) <= tol.equalPoint())) return false;
  param = endSnapped(nearest, point, tol);
  return true;
}

double KvGeCurve3d::length(double from, double to) const {
  if (spanCount() == 0) return 0;
  if (from > to) std::swap(from, to);
  double sum = 0;
  for (int i = spanIndexAt(from), last = spanIndexAt(to); i <= last; ++i) {
    const Span s = span(i);
    const double a = i == spanIndexAt(from) ? s.toOwn(from) : s.low, b = i == last ? s.toOwn(to) : s.high;
    sum += kvge::lengthOf(s, a, b);
  }
  return sum;
}

bool KvGeCurve3d::paramAtLength(double from, double distance, double& param) const {
  const double end = distance >= 0 ? endParam() : startParam();
  double left = std::fabs(distance);
  const double slack = 1e-12 * std::max(1.0, left);
  const int step = distance >= 0 ? 1 : -1;
  for (int i = spanIndexAt(from), count = spanCount(); i >= 0 && i < count; i += step) {
    const Span s = span(i);
    const double a =
        i == spanIndexAt(from) ? std::clamp(s.toOwn(from), s.low, s.high) : (step > 0 ? s.low : s.high);
    const double b = step > 0 ? s.high : s.low, whole = kvge::lengthOf(s, a, b);
    if (whole < left) {
      left -= whole;
      continue;
    }
    if (s.kind == SpanKind::kLine || s.radius > 0) {
      param = s.toCurve(a + step * (s.isPoint() ? 0 : s.radius > 0 ? left / s.radius : left));
      return true;
    }
    double low = std::min(a, b), high = std::max(a, b), t = whole > 0 ? a + (b - a) * left / whole : a;
    for (int n = 0; n < 60; ++n) {
      const double over = kvge::lengthOf(s, a, t) - left, speed = kvge::jetAt(s, t).first.length();
      if (std::fabs(over) <= 1e-14 * std::max(1.0, whole)) break;
      ((over > 0) == (step > 0) ? high : low) = t;
      const double next = t - step * over / speed;
      t = next > low && next < high ? next : (low + high) / 2;
    }
    param = s.toCurve(t);
    return true;
  }
  if (left > slack) return false;
  param = end;
  return true;
}

KvGeBox3d KvGeCurve3d::boundBox() const {
  KvGeBox3d box;
  for (int i = 0, count = spanCount(); i < count; ++i) box.add(kvge::boxOf(span(i)));
  return box;
}

namespace {

/// The points that a span's plane has to hold: its poles, ends, or centre and radii.
template <class Visit>
void visitFrame(const Span& s, const Visit& visit) {
  if (s.kind == SpanKind::kBezier) {
    for (int i = 0; i <= s.degree; ++i) {
      const double* p = s.poles + 4 * i;
      visit(KvGePoint3d(p[0] / p[3], p[1] / p[3], p[2] / p[3]));
    }
  } else if (s.kind == SpanKind::kConic) {
    for (const KvGePoint3d& p : {s.origin, s.origin + s.u, s.origin + s.v}) visit(p);
  } else {
    visit(s.origin + s.u * (std::isfinite(s.low) ? s.low : 0));
    visit(s.origin + s.u * (std::isfinite(s.high) ? s.high : (std::isfinite(s.low) ? s.low : 0) + 1));
  }
}

}  // namespace

KvGeCurve3d::Planarity KvGeCurve3d::planarity(KvGePlane& plane, const KvGeTol& tol) const {
  const int count = spanCount();
  if (count == 0) return kNotPlanar;
  if (const Span s = span(0); count == 1 && s.kind == SpanKind::kConic) {
    plane = KvGePlane(s.origin, s.u.crossProduct(s.v).normal(KvGeTol(0, 0)));
    return kPlanar;
  }
  KvGePoint3d first, farthest;
  bool hasFirst = false;
  double most = 0;
  const auto forAll = [&](const auto& visit) {
    for (int i = 0; i < count; ++i) visitFrame(span(i), visit);
  };
  forAll([&](const KvGePoint3d& p) {
    if (!hasFirst) first = farthest = p, hasFirst = true;
    if (const double d = first.distanceTo(p); d > most) most = d, farthest = p;
  });
  const KvGeVector3d along = most > 0 ? (farthest - first) / most : KvGeVector3d::kXAxis;
  KvGeVector3d normal;
  double widest = 0;
  forAll([&](const KvGePoint3d& p) {
    const KvGeVector3d across = along.crossProduct(p - first);
    if (across.length() > widest) widest = across.length(), normal = across;
  });
  if (widest <= tol.equalPoint()) {
    plane = KvGePlane(first, along.perpVector());
    return kLinear;
  }
  plane = KvGePlane(first, normal / widest);
  bool isFlat = true;
  // A computed point carries the rounding of its distance from the origin.
  const double allowed = tol.equalPoint() + 1e-14 * (most + first.asVector().length());
  forAll([&](const KvGePoint3d& p) { isFlat = isFlat && std::fabs(plane.signedDistanceTo(p)) <= allowed; });
  return isFlat ? kPlanar : kNotPlanar;
}

bool KvGeCurve3d::splitAtParams(std::vector<double> params, std::vector<Ptr>& pieces,
                                const KvGeTol& tol) const {
  const double start = startParam(), end = endParam();
  const auto isSame = [&](double a, double b) {
    return a == b || (std::isfinite(a) && std::isfinite(b) && length(a, b) <= tol.equalPoint());
  };
  std::erase_if(params, [&](double t) { return !(t >= start && t <= end) || !std::isfinite(t); });
  if (isPeriodic())
    for (double& t : params)
      if (isSame(t, end)) t = start;
  std::sort(params.begin(), params.end());
  std::vector<double> cuts;
  for (const double t : params)
    if ((cuts.empty() || !isSame(cuts.back(), t)) && (isPeriodic() || (!isSame(t, start) && !isSame(t, end))))
      cuts.push_back(t);
  if (cuts.empty()) return false;
  if (isPeriodic()) {
    cuts.push_back(cuts.front() + (end - start));
  } else {
    cuts.insert(cuts.begin(), start);
    cuts.push_back(end);
  }
  for (size_t i = 0; i + 1 < cuts.size(); ++i)
    if (Ptr one = piece(cuts[i], cuts[i + 1])) pieces.push_back(std::move(one));
  return true;
}

bool KvGeCurve3d::splitAtPoints(const std::vector<KvGePoint3d>& points, std::vector<Ptr>& pieces,
                                const KvGeTol& tol) const {
  std::vector<double> params;
  for (const KvGePoint3d& p : points)
    if (double t; paramAtPoint(p, t, tol)) params.push_back(t);
  return splitAtParams(std::move(params), pieces, tol);
}
