#include "host/geometry/span.h"

#include <array>

namespace kvge {

namespace {

using Pole = std::array<double, 4>;

Pole poleOf(const Span& s, int i) {
  const double* p = s.poles + 4 * i;
  return {p[0], p[1], p[2], p[3]};
}

Pole mixed(const Pole& a, const Pole& b, double t) {
  Pole m;
  for (size_t k = 0; k < 4; ++k) m[k] = a[k] + t * (b[k] - a[k]);
  return m;
}

KvGeVector3d spatialPart(const Pole& p) {
  return {p[0], p[1], p[2]};
}

Jet bezierJet(const Span& s, double t) {
  const double width = s.knotHigh - s.knotLow, x = (t - s.knotLow) / width;
  std::array<Pole, kMaxDegree + 1> w;
  const int n = s.degree;
  for (int i = 0; i <= n; ++i) w[static_cast<size_t>(i)] = poleOf(s, i);
  Pole first{}, second{};
  for (int level = n; level > 0; --level) {
    if (level == 2 || (level == 1 && n == 1))
      for (size_t k = 0; k < 4; ++k) {
        if (level == 2) second[k] = n * (n - 1) * (w[2][k] - 2 * w[1][k] + w[0][k]);
      }
    if (level == 1)
      for (size_t k = 0; k < 4; ++k) first[k] = n * (w[1][k] - w[0][k]);
    for (size_t i = 0; i < static_cast<size_t>(level); ++i) w[i] = mixed(w[i], w[i + 1], x);
  }
  const double h = w[0][3];
  Jet jet;
  jet.point = KvGePoint3d::kOrigin + spatialPart(w[0]) / h;
  const KvGeVector3d at = jet.point.asVector();
  jet.first = (spatialPart(first) - at * first[3]) / h;
  jet.second = (spatialPart(second) - jet.first * (2 * first[3]) - at * second[3]) / h;
  jet.first = jet.first / width;
  jet.second = jet.second / (width * width);
  return jet;
}

constexpr double kGaussNodes[5] = {0.1488743389816312, 0.4333953941292472, 0.6794095682990244,
                                   0.8650633666889845, 0.9739065285171717};
constexpr double kGaussWeights[5] = {0.2955242247147529, 0.2692667193099964, 0.2190863625159820,
                                     0.1494513491505806, 0.0666713443086881};

double gaussLength(const Span& s, double from, double to) {
  const double mid = (from + to) / 2, half = (to - from) / 2;
  double sum = 0;
  for (int i = 0; i < 5; ++i)
    sum += kGaussWeights[i] * (jetAt(s, mid - half * kGaussNodes[i]).first.length() +
                               jetAt(s, mid + half * kGaussNodes[i]).first.length());
  return sum * half;
}

double adaptiveLength(const Span& s, double from, double to, double whole, int depth) {
  const double mid = (from + to) / 2, left = gaussLength(s, from, mid), right = gaussLength(s, mid, to);
  constexpr int kDeepest = 24;
  if (depth >= kDeepest || std::fabs(left + right - whole) <= 1e-14 * std::fabs(left + right))
    return left + right;
  return adaptiveLength(s, from, mid, left, depth + 1) + adaptiveLength(s, mid, to, right, depth + 1);
}

/// The zero of (curve - p) . tangent between two parameters with opposite signs.
double stationary(const Span& s, const KvGePoint3d& p, double low, double high) {
  double t = (low + high) / 2;
  for (int i = 0; i < 60; ++i) {
    const Jet j = jetAt(s, t);
    const KvGeVector3d d = j.point - p;
    const double g = d.dotProduct(j.first), slope = j.first.lengthSqrd() + d.dotProduct(j.second);
    (g < 0 ? low : high) = t;
    const double next = t - g / slope, before = t;
    t = slope > 0 && next > low && next < high ? next : (low + high) / 2;
    if (std::fabs(t - before) <= 1e-16 * std::fmax(1.0, std::fabs(t))) break;
  }
  return t;
}

double nearestOnEllipse(const Span& s, const KvGePoint3d& p) {
  constexpr int kSteps = 24;
  double best = s.low, least = pointAt(s, s.low).distanceTo(p);
  const auto offer = [&](double t) {
    const double d = pointAt(s, t).distanceTo(p);
    if (d < least) least = d, best = t;
  };
  offer(s.high);
  double before = s.low, gBefore = 0;
  for (int i = 0; i <= kSteps; ++i) {
    const double t = s.low + (s.high - s.low) * i / kSteps;
    const Jet j = jetAt(s, t);
    const double g = (j.point - p).dotProduct(j.first);
    // A pair of extremes between two samples leaves the slope's sign as it is, and a lower place lies beside
    // it.
    if (i > 0 && gBefore < 0 && g >= 0) offer(stationary(s, p, before, t));
    before = t;
    gBefore = g;
  }
  return best;
}

/// A Bezier's stretch with poles of its own, for subdivision.
struct Stretch {
  std::array<Pole, kMaxDegree + 1> w;
  double low, high;
};

/// All legs of the polygon point nearly along its chord: no loop, no cusp, no turn to speak of.
bool isNearlyStraight(const Stretch& part, int degree) {
  const auto pole = [&](int i) {
    const Pole& w = part.w[static_cast<size_t>(i)];
    return KvGePoint3d(w[0] / w[3], w[1] / w[3], w[2] / w[3]);
  };
  constexpr double kTurn = 0.05;
  const KvGeVector3d chord = pole(degree) - pole(0);
  for (int i = 0; i < degree; ++i) {
    const KvGeVector3d leg = pole(i + 1) - pole(i);
    if (leg.crossProduct(chord).length() > kTurn * leg.dotProduct(chord)) return false;
  }
  return true;
}

double leastDistance(const Stretch& part, int degree, const KvGePoint3d& p) {
  KvGeBox3d box;
  for (int i = 0; i <= degree; ++i) {
    const Pole& w = part.w[static_cast<size_t>(i)];
    box.add(KvGePoint3d(w[0] / w[3], w[1] / w[3], w[2] / w[3]));
  }
  const auto gap = [](double low, double high, double x) { return std::max({low - x, 0.0, x - high}); };
  return std::hypot(gap(box.low.x, box.high.x, p.x), gap(box.low.y, box.high.y, p.y),
                    gap(box.low.z, box.high.z, p.z));
}

struct NearestSearch {
  const Span& s;
  const KvGePoint3d& p;
  double best, least;

  void offer(double t) {
    const double d = pointAt(s, t).distanceTo(p);
    if (d < least) least = d, best = t;
  }
  void visit(const Stretch& part, int depth) {
    if (part.high <= s.low || part.low >= s.high || leastDistance(part, s.degree, p) >= least) return;
    const double low = std::max(part.low, s.low), high = std::min(part.high, s.high),
                 mid = (part.low + part.high) / 2;
    const Jet a = jetAt(s, low), b = jetAt(s, high);
    const double ga = (a.point - p).dotProduct(a.first), gb = (b.point - p).dotProduct(b.first);
    offer(low), offer(high);
    if (ga <= 0 && gb >= 0) offer(stationary(s, p, low, high));
    constexpr int kDeepest = 40;
    if (depth >= kDeepest) return;
    // A stretch that turns this little has no second nearest place in it that differs by more than rounding.
    if (depth >= 3 && isNearlyStraight(part, s.degree)) return;
    Stretch left = part, right = part;
    left.high = right.low = mid;
    const size_t n = static_cast<size_t>(s.degree);
    std::array<Pole, kMaxDegree + 1> w = part.w;
    for (size_t level = 0; level <= n; ++level) {
      left.w[level] = w[0];
      right.w[n - level] = w[n - level];
      for (size_t i = 0; i < n - level; ++i) w[i] = mixed(w[i], w[i + 1], 0.5);
    }
    visit(left, depth + 1);
    visit(right, depth + 1);
  }
};

double nearestOnBezier(const Span& s, const KvGePoint3d& p) {
  NearestSearch search{s, p, s.low, pointAt(s, s.low).distanceTo(p)};
  search.offer(s.high);
  for (int i = 1; i < 8; ++i) search.offer(s.low + (s.high - s.low) * i / 8);
  Stretch whole;
  for (int i = 0; i <= s.degree; ++i) whole.w[static_cast<size_t>(i)] = poleOf(s, i);
  whole.low = s.knotLow;
  whole.high = s.knotHigh;
  search.visit(whole, 0);
  return search.best;
}

}  // namespace

Span lineSpan(const KvGePoint3d& from, const KvGePoint3d& to) {
  Span s;
  s.origin = from;
  const KvGeVector3d along = to - from;
  // Plain squares where they neither overflow nor vanish: several times faster than the careful length.
  const double squared = along.lengthSqrd();
  s.high = squared > 1e-200 && squared < 1e200 ? std::sqrt(squared) : along.length();
  if (s.high > 0) s.u = along / s.high;
  return s;
}

Span conicSpan(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double low,
               double high) {
  Span s;
  s.kind = SpanKind::kConic;
  s.origin = center;
  s.u = u;
  s.v = v;
  s.low = low;
  s.high = high;
  constexpr double kRound = 1e-14;
  const double a = u.lengthSqrd(), b = v.lengthSqrd();
  if (std::fabs(a - b) <= kRound * a && std::fabs(u.dotProduct(v)) <= kRound * a) s.radius = std::sqrt(a);
  return s;
}

KvGePoint3d pointAt(const Span& s, double t) {
  switch (s.kind) {
    case SpanKind::kLine:
      return s.origin + s.u * t;
    case SpanKind::kConic: {
      const auto [sine, cosine] = sinCos(t);
      return s.origin + (s.u * cosine + s.v * sine);
    }
    default:
      return bezierJet(s, t).point;
  }
}

Jet jetAt(const Span& s, double t) {
  switch (s.kind) {
    case SpanKind::kLine:
      return {s.origin + s.u * t, s.u, {}};
    case SpanKind::kConic: {
      const auto [sine, cosine] = sinCos(t);
      const KvGeVector3d out = s.u * cosine + s.v * sine;
      return {s.origin + out, s.v * cosine - s.u * sine, -out};
    }
    default:
      return bezierJet(s, t);
  }
}

double angleOn(const Span& s, const KvGePoint3d& p) {
  const KvGeVector3d d = p - s.origin;
  double t;
  if (s.radius > 0) {
    t = std::atan2(d.dotProduct(s.v), d.dotProduct(s.u));
  } else {
    // Conjugate radii: the two factors follow from the normal equations.
    const double uu = s.u.lengthSqrd(), vv = s.v.lengthSqrd(), uv = s.u.dotProduct(s.v),
                 du = d.dotProduct(s.u), dv = d.dotProduct(s.v);
    t = std::atan2(dv * uu - du * uv, du * vv - dv * uv);
  }
  return s.low + normalizedAngle(t - s.low);
}

bool intoRange(const Span& s, double slack, double& t) {
  if (s.kind != SpanKind::kConic) {
    if (t < s.low - slack || t > s.high + slack) return false;
    t = std::clamp(t, s.low, s.high);
    return true;
  }
  t = s.low + normalizedAngle(t - s.low);
  if (t <= s.high) return true;
  if (t <= s.high + slack) {
    t = s.high;
    return true;
  }
  if (t >= s.low + kTwoPi - slack) {
    t = s.low;
    return true;
  }
  return false;
}

double nearestOn(const Span& s, const KvGePoint3d& p) {
  if (s.kind == SpanKind::kLine) return std::clamp((p - s.origin).dotProduct(s.u), s.low, s.high);
  if (s.kind == SpanKind::kBezier) return nearestOnBezier(s, p);
  if (s.radius == 0) return nearestOnEllipse(s, p);
  const double t = angleOn(s, p);
  if (t <= s.high) return t;
  // Beyond the arc the nearer end in angle is the nearer point.
  return t - s.high <= s.low + kTwoPi - t ? s.high : s.low;
}

double lengthOf(const Span& s, double from, double to) {
  if (s.kind == SpanKind::kLine) return s.isPoint() ? 0 : std::fabs(to - from);
  if (s.radius > 0) return s.radius * std::fabs(to - from);
  return std::fabs(adaptiveLength(s, from, to, gaussLength(s, from, to), 0));
}

void extremesOf(const Span& s, const KvGeVector3d& axis, std::vector<double>& params) {
  if (s.kind == SpanKind::kLine) return;
  if (s.kind == SpanKind::kConic) {
    const double a = s.u.dotProduct(axis), b = s.v.dotProduct(axis);
    if (a == 0 && b == 0) return;
    if (s.high - s.low < kPi / 2) {
      // Without a change of the slope's sign there is none on so short an arc; that needs no inverse tangent.
      const auto [s0, c0] = sinCos(s.low);
      const auto [s1, c1] = sinCos(s.high);
      if ((b * c0 - a * s0) * (b * c1 - a * s1) > 0) return;
    }
    const double first = std::atan2(b, a);
    double t = s.low + normalizedAngle(first - s.low);
    if (t - s.low >= kPi) t -= kPi;
    for (; t < s.high; t += kPi)
      if (t > s.low) params.push_back(t);
    return;
  }
  Bernstein x = linearForm(s, axis, 0), w = linearForm(s, {}, 1), numerator;
  const bool isPolynomial =
      std::all_of(w.c.begin(), w.c.begin() + w.degree + 1, [&](double c) { return c == w.c[0]; });
  if (isPolynomial) {
    numerator = derivativeOf(x);
  } else {
    numerator = productOf(derivativeOf(x), w);
    numerator = sumOf(numerator, productOf(x, derivativeOf(w)), -1);
  }
  double size = 0;
  for (int i = 0; i <= numerator.degree; ++i)
    size = std::max(size, std::fabs(numerator.c[static_cast<size_t>(i)]));
  if (size == 0) return;
  std::vector<double> zeros;
  zerosOf(numerator, size * 1e-15, zeros);
  for (const double z : zeros) {
    const double t = s.knotLow + z * (s.knotHigh - s.knotLow);
    if (t > s.low && t < s.high) params.push_back(t);
  }
}

KvGeBox3d boxOf(const Span& s) {
  KvGeBox3d box;
  if (s.kind == SpanKind::kLine) {
    const auto reach = [](double o, double d, double t) {
      return d == 0 ? o : o + d * t;
    };  // no 0 times infinity
    for (const double t : {s.low, s.high})
      box.add({reach(s.origin.x, s.u.x, t), reach(s.origin.y, s.u.y, t), reach(s.origin.z, s.u.z, t)});
    return box;
  }
  box.add(startOf(s));
  box.add(endOf(s));
  if (s.kind == SpanKind::kConic) {
    const auto stretch = [&](double o, double a, double b, double& low, double& high) {
      if (a == 0 && b == 0) return;
      const double reach = std::hypot(a, b), top = normalizedAngle(std::atan2(b, a) - s.low);
      const double bottom = normalizedAngle(top + kPi), range = s.high - s.low;
      if (top <= range) high = std::max(high, o + reach);
      if (bottom <= range) low = std::min(low, o - reach);
    };
    stretch(s.origin.x, s.u.x, s.v.x, box.low.x, box.high.x);
    stretch(s.origin.y, s.u.y, s.v.y, box.low.y, box.high.y);
    stretch(s.origin.z, s.u.z, s.v.z, box.low.z, box.high.z);
    return box;
  }
  std::vector<double> params;
  for (const KvGeVector3d& axis : {KvGeVector3d::kXAxis, KvGeVector3d::kYAxis, KvGeVector3d::kZAxis})
    extremesOf(s, axis, params);
  for (const double t : params) box.add(pointAt(s, t));
  return box;
}

Bernstein linearForm(const Span& s, const KvGeVector3d& abc, double d) {
  Bernstein f;
  f.degree = s.degree;
  for (int i = 0; i <= s.degree; ++i) {
    const double* p = s.poles + 4 * i;
    f.c[static_cast<size_t>(i)] = abc.x * p[0] + abc.y * p[1] + abc.z * p[2] + d * p[3];
  }
  return f;
}

bool cutByPlane(const Span& s, const KvGePoint3d& on, const KvGeVector3d& normal, double tolerance,
                std::vector<double>& params) {
  if (s.kind == SpanKind::kBezier) {
    // Taken from the plane's point first, so that far drawings keep their digits.
    Bernstein f;
    f.degree = s.degree;
    double most = 0;
    for (int i = 0; i <= s.degree; ++i) {
      const double* p = s.poles + 4 * i;
      f.c[static_cast<size_t>(i)] =
          KvGeVector3d(p[0] - on.x * p[3], p[1] - on.y * p[3], p[2] - on.z * p[3]).dotProduct(normal);
      most = std::max(most, p[3]);
    }
    std::vector<double> zeros;
    const bool isWithin = zerosOf(f, tolerance * most, zeros);
    for (const double z : zeros) {
      double t = s.knotLow + z * (s.knotHigh - s.knotLow);
      if (intoRange(s, 1e-9 * (s.knotHigh - s.knotLow), t)) params.push_back(t);
    }
    return isWithin;
  }
  const double c = (s.origin - on).dotProduct(normal), a = s.u.dotProduct(normal);
  if (s.kind == SpanKind::kLine) {
    if (std::fabs(a) < 1e-14) return std::fabs(c) <= tolerance;
    double t = -c / a;
    if (intoRange(s, tolerance / std::fabs(a), t)) params.push_back(t);
    return false;
  }
  const double b = s.v.dotProduct(normal), reach = std::hypot(a, b);
  if (reach <= tolerance) return std::fabs(c) <= tolerance;
  if (std::fabs(c) > reach + tolerance) return false;
  const double middle = std::atan2(b, a), touch = 1e-12 * std::max(1.0, reach);
  const double slack = tolerance / reach;
  if (std::fabs(c) >= reach - touch) {
    double t = c > 0 ? middle + kPi : middle;
    if (intoRange(s, slack, t)) params.push_back(t);
    return false;
  }
  const double turn = std::acos(-c / reach);
  for (double t : {middle - turn, middle + turn})
    if (intoRange(s, slack, t)) params.push_back(t);
  return false;
}

int conicAsBeziers(const Span& s, Span (&parts)[4], double (&store)[48]) {
  const int count = std::clamp(static_cast<int>(std::ceil((s.high - s.low) / (kPi / 2) - 1e-12)), 1, 4);
  const double step = (s.high - s.low) / count, weight = std::cos(step / 2);
  for (int i = 0; i < count; ++i) {
    const double a = s.low + step * i, b = i + 1 == count ? s.high : a + step, middle = (a + b) / 2;
    const KvGePoint3d p = pointAt(s, a), q = pointAt(s, b);
    // The middle pole times its weight: the arms' crossing lies at 1 / weight along the middle radius.
    const KvGeVector3d m = s.origin.asVector() * weight + (pointAt(s, middle) - s.origin);
    double* poles = store + 12 * i;
    const double values[12] = {p.x, p.y, p.z, 1, m.x, m.y, m.z, weight, q.x, q.y, q.z, 1};
    std::copy_n(values, 12, poles);
    Span part;
    part.kind = SpanKind::kBezier;
    part.degree = 2;
    part.poles = poles;
    part.low = part.knotLow = 0;
    part.high = part.knotHigh = 1;
    parts[i] = part;
  }
  return count;
}

Span transformed(const Span& s, const KvGeMatrix3d& m, std::vector<double>& store) {
  Span t = s;
  if (s.kind == SpanKind::kConic) {
    t = conicSpan(m * s.origin, m * s.u, m * s.v, s.low, s.high);
  } else if (s.kind == SpanKind::kLine) {
    t.origin = m * s.origin;
    t.u = m * s.u;
    const double size = t.u.length();
    if (size > 0) {
      t.u = t.u / size;
      t.low *= size;
      t.high *= size;
    }
    t.scale = size > 0 ? s.scale / size : s.scale;
    t.base = s.base;
    return t;
  } else {
    const size_t at = store.size();
    for (int i = 0; i <= s.degree; ++i) {
      const double* p = s.poles + 4 * i;
      const KvGeVector3d moved = m * KvGeVector3d(p[0], p[1], p[2]) + m.translation() * p[3];
      for (const double value : {moved.x, moved.y, moved.z, p[3]}) store.push_back(value);
    }
    t.poles = store.data() + at;
  }
  t.base = s.base;
  t.scale = s.scale;
  return t;
}

}  // namespace kvge
