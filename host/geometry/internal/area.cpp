#include "host/geometry/internal/overlay.h"

namespace kvge {

double xAt(const Span& s, double t0, double t1, KvGePoint2d from, KvGePoint2d to, KvGePoint2d middle,
           double y) {
  if (s.kind == SpanKind::kLine) return from.x + (to.x - from.x) * ((y - from.y) / (to.y - from.y));
  if (s.radius > 0) {
    const double dy = y - s.origin.y, half = std::sqrt(std::max(0.0, (s.radius - dy) * (s.radius + dy)));
    return middle.x >= s.origin.x ? s.origin.x + half : s.origin.x - half;
  }
  double low = t0, high = t1;
  const bool isRising = pointAt(s, t0).y < pointAt(s, t1).y;
  for (int i = 0; i < 60 && high - low > 1e-15 * (t1 - t0); ++i) {
    const double mid = (low + high) / 2;
    ((pointAt(s, mid).y < y) == isRising ? low : high) = mid;
  }
  return pointAt(s, (low + high) / 2).x;
}

double doubleAreaOf(const Edge& edge, KvGePoint2d origin) {
  const Span& s = edge.span;
  const double sign = edge.isReversed ? -1 : 1;
  const KvGeVector2d a = planar(startOf(s)) - origin, b = planar(endOf(s)) - origin;
  if (s.kind == SpanKind::kLine) return sign * a.crossProduct(b);
  if (s.kind == SpanKind::kConic) {
    const KvGeVector2d c = planar(s.origin) - origin;
    const double sector = s.u.x * s.v.y - s.u.y * s.v.x;
    return sign * (sector * (s.high - s.low) + c.crossProduct(b - a));
  }
  // x dy - y dx by Gauss's rule on stretches; exact for polynomials up to degree 10.
  constexpr double kNodes[5] = {0.1488743389816312, 0.4333953941292472, 0.6794095682990244,
                                0.8650633666889845, 0.9739065285171717};
  constexpr double kWeights[5] = {0.2955242247147529, 0.2692667193099964, 0.2190863625159820,
                                  0.1494513491505806, 0.0666713443086881};
  constexpr int kStretches = 16;
  double sum = 0;
  for (int i = 0; i < kStretches; ++i) {
    const double half = (s.high - s.low) / kStretches / 2, middle = s.low + half * (2 * i + 1);
    for (int k = 0; k < 10; ++k) {
      const Jet j = jetAt(s, middle + (k < 5 ? -1 : 1) * half * kNodes[k % 5]);
      sum += kWeights[k % 5] * half * (planar(j.point) - origin).crossProduct({j.first.x, j.first.y});
    }
  }
  return sign * sum;
}

double areaOf(const Loop& loop) {
  if (loop.empty()) return 0;
  const KvGePoint2d origin = planar(loop[0].start());
  double sum = 0;
  for (const Edge& e : loop) sum += doubleAreaOf(e, origin);
  return sum / 2;
}

int windingOf(const Loop& loop, KvGePoint2d p) {
  int winding = 0;
  std::vector<double> cuts;
  for (const Edge& e : loop) {
    const Span& s = e.span;
    if (s.kind == SpanKind::kLine) {
      const KvGePoint2d a(s.origin.x + s.u.x * s.low, s.origin.y + s.u.y * s.low),
          b(s.origin.x + s.u.x * s.high, s.origin.y + s.u.y * s.high);
      if ((a.y <= p.y) != (b.y <= p.y) && a.x + (b.x - a.x) * ((p.y - a.y) / (b.y - a.y)) > p.x)
        winding += (a.y < b.y) != e.isReversed ? 1 : -1;
      continue;
    }
    cuts.assign(1, s.low);
    extremesOf(s, KvGeVector3d::kYAxis, cuts);
    cuts.push_back(s.high);
    std::sort(cuts.begin(), cuts.end());
    for (size_t i = 0; i + 1 < cuts.size(); ++i) {
      const KvGePoint2d a = planar(pointAt(s, cuts[i])), b = planar(pointAt(s, cuts[i + 1]));
      if ((a.y <= p.y) == (b.y <= p.y)) continue;
      if (xAt(s, cuts[i], cuts[i + 1], a, b, planar(pointAt(s, (cuts[i] + cuts[i + 1]) / 2)), p.y) > p.x)
        winding += (a.y < b.y) != e.isReversed ? 1 : -1;
    }
  }
  return winding;
}

}  // namespace kvge
