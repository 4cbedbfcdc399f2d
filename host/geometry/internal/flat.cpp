#include "host/geometry/internal/flat.h"

#include <array>

namespace kvge {

namespace {

/// Below this share of the radius two crossings can't be told from a touch.
constexpr double kTouch = 1e-12;
/// Directions closer than this may run along one another.
constexpr double kNearlyParallel = 1e-8;

KvGePoint2d flat(const KvGePoint3d& p) {
  return {p.x, p.y};
}
KvGeVector2d flat(const KvGeVector3d& v) {
  return {v.x, v.y};
}
KvGePoint3d raised(KvGePoint2d p) {
  return {p.x, p.y, 0};
}

/// How far a parameter may lie beyond an end for the point to be within the tolerance of it.
double slackOf(const Span& s, double tol) {
  if (s.kind == SpanKind::kLine) return tol;
  if (s.radius > 0) return tol / s.radius;
  if (s.kind == SpanKind::kConic) {
    const double u = s.u.length(), v = s.v.length(), least = std::min(u, v), most = std::max(u, v);
    return tol / (least > 1e-6 * most ? least : most);
  }
  return 1e-9 * (s.knotHigh - s.knotLow);
}

using Hits = std::vector<FlatHit>;

/// True when the two parameters are the two sides of a whole conic's seam, or one.
bool isSameParam(const Span& s, double a, double b, double slack) {
  const double d = std::fabs(a - b);
  return d <= slack || (s.isWhole() && d >= kTwoPi - slack);
}

void addHit(const Span& a, const Span& b, double tol, const FlatHit& hit, Hits& hits, size_t first) {
  for (size_t i = first; i < hits.size(); ++i)
    if (hits[i].point.distanceTo(hit.point) <= tol &&
        isSameParam(a, hits[i].ta, hit.ta, 4 * slackOf(a, tol)) &&
        isSameParam(b, hits[i].tb, hit.tb, 4 * slackOf(b, tol)))
      return;
  hits.push_back(hit);
}

/// The ends of either span that lie on the other.
void addCommonEnds(const Span& a, const Span& b, double tol, Hits& hits) {
  const size_t first = hits.size();
  const auto offer = [&](const Span& s, const Span& other, double t, bool isSwapped) {
    if (!std::isfinite(t)) return;
    const KvGePoint3d p = pointAt(s, t);
    const double on = nearestOn(other, p);
    if (pointAt(other, on).distanceTo(p) > tol) return;
    addHit(a, b, tol, isSwapped ? FlatHit{on, t, flat(p)} : FlatHit{t, on, flat(p)}, hits, first);
  };
  const bool bothWhole = a.isWhole() && b.isWhole();
  if (!a.isWhole() || bothWhole) offer(a, b, a.low, false);
  if (!a.isWhole()) offer(a, b, a.high, false);
  if (!b.isWhole()) offer(b, a, b.low, true);
  if (!b.isWhole()) offer(b, a, b.high, true);
}

void addPoint(const Span& point, const Span& other, double tol, bool isSwapped, Hits& hits) {
  const double t = nearestOn(other, point.origin);
  if (pointAt(other, t).distanceTo(point.origin) > tol) return;
  hits.push_back(isSwapped ? FlatHit{t, point.low, flat(point.origin)}
                           : FlatHit{point.low, t, flat(point.origin)});
}

/// The common stretch of two lines that lie within the tolerance of one another all along it.
bool addAlong(const Span& a, const Span& b, double tol, Hits& hits) {
  const KvGeVector2d ua = flat(a.u);
  const double same = ua.dotProduct(flat(b.u)) > 0 ? 1 : -1,
               shift = (flat(b.origin) - flat(a.origin)).dotProduct(ua);
  const double b0 = same > 0 ? b.low : -b.high, b1 = same > 0 ? b.high : -b.low;
  const double low = std::max(a.low, shift + b0), high = std::min(a.high, shift + b1);
  if (low > high + tol) return false;
  const auto gap = [&](double t) {
    const KvGePoint2d p = flat(a.origin) + ua * t;
    return std::fabs((p - flat(b.origin)).crossProduct(flat(b.u)));
  };
  const double finiteLow = std::isfinite(low) ? low : std::isfinite(high) ? high : 0;
  const double finiteHigh = std::isfinite(high) ? high : finiteLow;
  if (gap(finiteLow) > tol || gap(finiteHigh) > tol) return false;
  const auto add = [&](double t) {
    const double on = std::clamp(t, a.low, a.high);
    const double tb = std::clamp(same * (on - shift), b.low, b.high);
    hits.push_back({on, tb, flat(a.origin) + ua * on});
  };
  if (std::isfinite(low)) add(low);
  if (std::isfinite(high) && !(high - low <= tol)) add(high);
  return true;
}

void lineLine(const Span& a, const Span& b, double tol, Hits& hits) {
  const KvGeVector2d ua = flat(a.u), ub = flat(b.u), between = flat(b.origin) - flat(a.origin);
  const double across = ua.crossProduct(ub);
  if (std::fabs(across) < kNearlyParallel && addAlong(a, b, tol, hits)) return;
  if (std::fabs(across) < 1e-14) return;
  double ta = between.crossProduct(ub) / across, tb = between.crossProduct(ua) / across;
  if (!intoRange(a, tol, ta) || !intoRange(b, tol, tb)) return;
  // The point of the line that starts nearer carries less rounding.
  const KvGePoint2d p = std::fabs(ta) <= std::fabs(tb) ? flat(a.origin) + ua * ta : flat(b.origin) + ub * tb;
  hits.push_back({ta, tb, p});
}

void addOnCircle(const Span& line, const Span& circle, double tol, bool isSwapped, double t, Hits& hits) {
  KvGePoint2d p = flat(line.origin) + flat(line.u) * t;
  double angle = angleOn(circle, raised(p));
  if (!intoRange(line, tol, t) || !intoRange(circle, slackOf(circle, tol), angle)) return;
  hits.push_back(isSwapped ? FlatHit{angle, t, p} : FlatHit{t, angle, p});
}

void lineCircle(const Span& line, const Span& circle, double tol, bool isSwapped, Hits& hits) {
  const double r = circle.radius;
  const KvGeVector2d u = flat(line.u), d = flat(circle.origin) - flat(line.origin);
  const double foot = d.dotProduct(u), beside = std::fabs(d.crossProduct(u));
  if (beside > r + tol) return;
  if (beside >= r - kTouch * std::max(1.0, r)) {
    addOnCircle(line, circle, tol, isSwapped, foot, hits);
    return;
  }
  const double half = std::sqrt((r - beside) * (r + beside));
  addOnCircle(line, circle, tol, isSwapped, foot - half, hits);
  addOnCircle(line, circle, tol, isSwapped, foot + half, hits);
}

void circleCircle(const Span& a, const Span& b, double tol, Hits& hits) {
  const double ra = a.radius, rb = b.radius;
  const KvGeVector2d between = flat(b.origin) - flat(a.origin);
  const double d = between.length();
  if (d <= tol && std::fabs(ra - rb) <= tol) return addCommonEnds(a, b, tol, hits);
  if (ra > rb) {
    // Seen from the smaller circle the crossing keeps its digits, however large the other one is.
    const size_t first = hits.size();
    circleCircle(b, a, tol, hits);
    for (size_t i = first; i < hits.size(); ++i) std::swap(hits[i].ta, hits[i].tb);
    return;
  }
  if (d == 0 || d > ra + rb + tol || d < std::fabs(ra - rb) - tol) return;
  const KvGeVector2d u = between / d;
  const auto add = [&](KvGePoint2d p) {
    double ta = angleOn(a, raised(p)), tb = angleOn(b, raised(p));
    if (intoRange(a, slackOf(a, tol), ta) && intoRange(b, slackOf(b, tol), tb)) hits.push_back({ta, tb, p});
  };
  const double touch = kTouch * std::max({1.0, ra, rb});
  if (d >= ra + rb - touch || d <= std::fabs(ra - rb) + touch) {
    const double side = d >= ra + rb - touch || ra >= rb ? ra : -ra;
    return add(flat(a.origin) + u * side);
  }
  // Both factors without squares of large numbers.
  const double along = (d + (ra - rb) * ((ra + rb) / d)) / 2,
               half = std::sqrt(std::max(0.0, (ra - along) * (ra + along)));
  add(flat(a.origin) + u * along + u.perpVector() * half);
  add(flat(a.origin) + u * along - u.perpVector() * half);
}

/// Brings a pair of parameters together; true when the points then lie within the tolerance.
bool refine(const Span& a, const Span& b, double tol, FlatHit& hit) {
  double damping = 0, gap = KvGeBox3d::kFar;
  double ta = hit.ta, tb = hit.tb;
  for (int i = 0; i < 40; ++i) {
    const Jet ja = jetAt(a, ta), jb = jetAt(b, tb);
    const KvGeVector2d miss = flat(jb.point) - flat(ja.point), da = flat(ja.first), db = -flat(jb.first);
    const double now = miss.length();
    if (now < gap) {
      gap = now;
      hit = {ta, tb, flat(ja.point) + miss * 0.5};
      damping /= 8;
    } else if (i > 0) {
      if (gap <= 1e-15 || i > 30) break;
      damping = std::max(damping * 4, 1e-12);
      ta = hit.ta, tb = hit.tb;
    }
    if (gap == 0) break;
    // Damped least squares: also moves along a touch, where the plain equations have no single answer.
    const double aa = da.lengthSqrd(), bb = db.lengthSqrd(), ab = da.dotProduct(db), ga = da.dotProduct(miss),
                 gb = db.dotProduct(miss);
    const double lift = (damping + 1e-15) * (aa + bb), det = (aa + lift) * (bb + lift) - ab * ab;
    if (!(det > 0)) break;
    ta = std::clamp(ta + (ga * (bb + lift) - gb * ab) / det, a.low, a.high);
    tb = std::clamp(tb + (gb * (aa + lift) - ga * ab) / det, b.low, b.high);
  }
  return gap <= tol;
}

/// A candidate on `a` at `ta`: its mate on `b` is looked for, both are refined.
void addRefined(const Span& a, const Span& b, double tol, double ta, bool isSwapped, Hits& hits,
                size_t first) {
  ta = std::clamp(ta, a.low, a.high);
  FlatHit hit{ta, nearestOn(b, pointAt(a, ta)), {}};
  if (!refine(a, b, tol, hit)) return;
  if (isSwapped) {
    std::swap(hit.ta, hit.tb);
    addHit(b, a, tol, hit, hits, first);
  } else {
    addHit(a, b, tol, hit, hits, first);
  }
}

void lineEllipse(const Span& line, const Span& conic, double tol, bool isSwapped, Hits& hits) {
  std::vector<double> params;
  const KvGeVector2d across = flat(line.u).perpVector();
  cutByPlane(conic, raised(flat(line.origin)), {across.x, across.y, 0}, tol, params);
  const size_t first = hits.size();
  for (const double t : params) addRefined(conic, line, tol, t, !isSwapped, hits, first);
}

/// The unit circle's equation along a curve in the coordinates of a conic's radii.
Bernstein onConic(const Span& bezier, const Span& conic) {
  const KvGeVector2d u = flat(conic.u), v = flat(conic.v);
  const double det = u.crossProduct(v), ox = conic.origin.x, oy = conic.origin.y;
  const KvGeVector3d rowX(v.y / det, -v.x / det, 0), rowY(-u.y / det, u.x / det, 0);
  const Bernstein x = linearForm(bezier, rowX, -(rowX.x * ox + rowX.y * oy));
  const Bernstein y = linearForm(bezier, rowY, -(rowY.x * ox + rowY.y * oy));
  const Bernstein w = linearForm(bezier, {}, 1);
  return sumOf(sumOf(productOf(x, x), productOf(y, y), 1), productOf(w, w), -1);
}

double smallestRadius(const Span& conic) {
  const double most = std::max(flat(conic.u).length(), flat(conic.v).length());
  return most > 0 ? std::fabs(flat(conic.u).crossProduct(flat(conic.v))) / most : 0;
}

double largestWeight(const Span& s) {
  double most = 0;
  for (int i = 0; i <= s.degree; ++i) most = std::max(most, s.poles[4 * i + 3]);
  return most;
}

/// All poles well within the circle: so is the curve.
bool isWithinCircle(const Span& bezier, const Span& circle, double tol) {
  const double reach = circle.radius - 2 * tol;
  for (int i = 0; i <= bezier.degree; ++i) {
    const double* p = bezier.poles + 4 * i;
    const double x = p[0] / p[3] - circle.origin.x, y = p[1] / p[3] - circle.origin.y;
    if (reach <= 0 || x * x + y * y >= reach * reach) return false;
  }
  return true;
}

void bezierConic(const Span& bezier, const Span& conic, double tol, bool isSwapped, Hits& hits) {
  const double w = largestWeight(bezier);
  if (conic.radius > 0 && isWithinCircle(bezier, conic, tol)) return;
  std::vector<double> zeros;
  if (zerosOf(onConic(bezier, conic), 3 * tol / smallestRadius(conic) * w * w, zeros)) {
    const size_t before = hits.size();
    isSwapped ? addCommonEnds(conic, bezier, tol, hits) : addCommonEnds(bezier, conic, tol, hits);
    if (hits.size() > before) return;
  }
  const size_t first = hits.size();
  for (const double z : zeros)
    addRefined(bezier, conic, tol, bezier.knotLow + z * (bezier.knotHigh - bezier.knotLow), isSwapped, hits,
               first);
}

void bezierLine(const Span& bezier, const Span& line, double tol, bool isSwapped, Hits& hits) {
  std::vector<double> params;
  const KvGeVector2d across = flat(line.u).perpVector();
  if (cutByPlane(bezier, raised(flat(line.origin)), {across.x, across.y, 0}, tol, params))
    return isSwapped ? addCommonEnds(line, bezier, tol, hits) : addCommonEnds(bezier, line, tol, hits);
  const size_t first = hits.size();
  for (const double t : params) addRefined(bezier, line, tol, t, isSwapped, hits, first);
}

using FlatPoles = std::array<std::array<double, 3>, kMaxDegree + 1>;

struct Part {
  FlatPoles w;
  int degree = 0;
  double low = 0, high = 0;
  double x0 = 0, x1 = 0, y0 = 0, y1 = 0;
  double turn =
      0;  ///< largest angle between a leg of the polygon and the chord; above pi when it has no direction
  KvGeVector2d chord;
};

void measure(Part& p) {
  const auto pole = [&](int i) {
    const auto& w = p.w[static_cast<size_t>(i)];
    return KvGePoint2d(w[0] / w[2], w[1] / w[2]);
  };
  KvGeBox3d box;
  for (int i = 0; i <= p.degree; ++i) box.add(raised(pole(i)));
  p.x0 = box.low.x, p.x1 = box.high.x, p.y0 = box.low.y, p.y1 = box.high.y;
  p.chord = pole(p.degree) - pole(0);
  p.turn = p.chord.lengthSqrd() == 0 ? 4 : 0;
  for (int i = 0; i < p.degree; ++i)
    if (const KvGeVector2d leg = pole(i + 1) - pole(i); leg.lengthSqrd() > 0)
      p.turn = std::max(p.turn, leg.angleTo(p.chord));
}

void halve(const Part& p, Part& left, Part& right) {
  left.degree = right.degree = p.degree;
  FlatPoles w = p.w;
  const size_t n = static_cast<size_t>(p.degree);
  for (size_t level = 0; level <= n; ++level) {
    left.w[level] = w[0];
    right.w[n - level] = w[n - level];
    for (size_t i = 0; i < n - level; ++i)
      for (size_t k = 0; k < 3; ++k) w[i][k] = (w[i][k] + w[i + 1][k]) / 2;
  }
  left.low = p.low;
  right.high = p.high;
  left.high = right.low = (p.low + p.high) / 2;
  measure(left);
  measure(right);
}

Part partOf(const Span& s) {
  Part p;
  p.degree = s.degree;
  for (int i = 0; i <= s.degree; ++i)
    p.w[static_cast<size_t>(i)] = {s.poles[4 * i], s.poles[4 * i + 1], s.poles[4 * i + 3]};
  p.low = s.knotLow;
  p.high = s.knotHigh;
  measure(p);
  return p;
}

struct BezierSearch {
  const Span &a, &b;
  double tol;
  Hits& hits;
  size_t first;
  int budget = 100000;  ///< pairs looked at; more are only needed where the curves run along one another

  /// Looks for the one meeting of two parts; false when the search doesn't come to one.
  bool find(const Part& p, const Part& q) {
    Span pa = a, qb = b;
    pa.low = std::max(p.low, a.low), pa.high = std::min(p.high, a.high);
    qb.low = std::max(q.low, b.low), qb.high = std::min(q.high, b.high);
    FlatHit hit{(pa.low + pa.high) / 2, (qb.low + qb.high) / 2, {}};
    if (!refine(pa, qb, tol, hit)) return false;
    add(hit);
    return true;
  }
  void add(const FlatHit& hit) {
    for (size_t i = first; i < hits.size(); ++i) {
      const FlatHit& other = hits[i];
      if (std::fabs(other.ta - hit.ta) > 1e-3 * (a.high - a.low) ||
          std::fabs(other.tb - hit.tb) > 1e-3 * (b.high - b.low))
        continue;
      // Two finds of one touch: what lies between them is as near.
      const KvGePoint3d between = pointAt(a, (other.ta + hit.ta) / 2);
      if (pointAt(b, (other.tb + hit.tb) / 2).distanceTo(between) <= 2 * tol) return;
    }
    addHit(a, b, tol, hit, hits, first);
  }
  void visit(const Part& p, const Part& q, int depth) {
    if (p.high < a.low || p.low > a.high || q.high < b.low || q.low > b.high) return;
    if (p.x0 > q.x1 + tol || q.x0 > p.x1 + tol || p.y0 > q.y1 + tol || q.y0 > p.y1 + tol || --budget < 0)
      return;
    double angle = p.chord.angleTo(q.chord);
    angle = std::min(angle, kPi - angle);
    constexpr int kDeepest = 40;
    // When the directions within one don't reach those within the other, they meet once at most.
    if (p.turn + q.turn < angle / 2 || depth >= kDeepest) {
      const bool isNearlyStraight = std::max(p.turn, q.turn) < 0.02;
      if (find(p, q) || isNearlyStraight || depth >= kDeepest) return;
    }
    Part p0, p1, q0, q1;
    // The more bent one is halved; of two nearly straight ones the longer.
    const bool areStraight = std::max(p.turn, q.turn) < 0.1;
    if (areStraight ? p.chord.lengthSqrd() >= q.chord.lengthSqrd() : p.turn >= q.turn) {
      halve(p, p0, p1);
      visit(p0, q, depth + 1);
      visit(p1, q, depth + 1);
    } else {
      halve(q, q0, q1);
      visit(p, q0, depth + 1);
      visit(p, q1, depth + 1);
    }
  }
};

/// True when the curves run along one another between two common ends; these are then added.
bool addOverlap(const Span& a, const Span& b, double tol, Hits& hits) {
  Hits ends;
  addCommonEnds(a, b, tol, ends);
  if (ends.size() < 2) return false;
  const auto [low, high] = std::minmax_element(
      ends.begin(), ends.end(), [](const FlatHit& x, const FlatHit& y) { return x.ta < y.ta; });
  for (const double share : {0.21, 0.5, 0.83}) {
    const KvGePoint3d p = pointAt(a, low->ta + (high->ta - low->ta) * share);
    if (pointAt(b, nearestOn(b, p)).distanceTo(p) > tol) return false;
  }
  hits.insert(hits.end(), ends.begin(), ends.end());
  return true;
}

void bezierBezier(const Span& a, const Span& b, double tol, Hits& hits) {
  if (addOverlap(a, b, tol, hits)) return;
  BezierSearch search{a, b, tol, hits, hits.size()};
  search.visit(partOf(a), partOf(b), 0);
}

/// The angle that a parameter of one of a conic's rational parts stands for; holds for edge-on conics too.
double angleOfPart(const Span& conic, int count, int index, double x) {
  const double step = (conic.high - conic.low) / count, from = conic.low + step * index;
  const double first = (1 - x) * (1 - x), second = 2 * x * (1 - x), third = x * x;
  // Measured from the part's middle, where the sine of the middle pole is 0.
  const double sine = (third - first) * std::sin(step / 2),
               cosine = (first + third) * std::cos(step / 2) + second;
  return from + step / 2 + std::atan2(sine, cosine);
}

/// An edge-on or very thin conic, or two ellipses: the first one's quarters against the other.
void quartersAgainst(const Span& conic, const Span& other, double tol, bool isSwapped, Hits& hits) {
  Span parts[4];
  double store[48];
  const int count = conicAsBeziers(conic, parts, store);
  const size_t first = hits.size();
  for (int i = 0; i < count; ++i) {
    Hits found;
    crossFlat(parts[i], other, tol, found);
    for (const FlatHit& one : found) {
      const double t = angleOfPart(conic, count, i, one.ta);
      addRefined(conic, other, tol, t, isSwapped, hits, first);
    }
  }
}

bool isThin(const Span& conic) {
  return smallestRadius(conic) <= 1e-9 * std::max(1.0, flat(conic.u).length());
}

}  // namespace

Frame Frame::of(const KvGePoint3d& on, const KvGeVector3d& normal) {
  Frame f;
  if (normal.x == 0 && normal.y == 0) return f;
  f.isWorld = false;
  f.origin = on;
  f.normal = normal.normal();
  f.x = f.normal.perpVector();
  f.y = f.normal.crossProduct(f.x);
  return f;
}

KvGePoint3d Frame::toWorld(KvGePoint2d p, double height) const {
  if (isWorld) return {p.x, p.y, height};
  return origin + (x * p.x + y * p.y + normal * height);
}

Span flattened(const Span& s, const Frame& f, std::vector<double>& store) {
  const auto drop = [&](const KvGeVector3d& v) {
    return f.isWorld ? KvGeVector3d(v.x, v.y, 0) : KvGeVector3d(v.dotProduct(f.x), v.dotProduct(f.y), 0);
  };
  Span t = s;
  if (s.kind == SpanKind::kBezier) {
    store.clear();
    for (int i = 0; i <= s.degree; ++i) {
      const double* p = s.poles + 4 * i;
      const KvGeVector3d moved = drop(KvGeVector3d(p[0], p[1], p[2]) - f.origin.asVector() * p[3]);
      for (const double value : {moved.x, moved.y, 0.0, p[3]}) store.push_back(value);
    }
    t.poles = store.data();
    return t;
  }
  t.origin = KvGePoint3d::kOrigin + drop(s.origin - f.origin);
  t.u = drop(s.u);
  if (s.kind == SpanKind::kConic) {
    const bool staysRound = f.isWorld && s.u.z == 0 && s.v.z == 0;
    if (staysRound) return t;
    Span c = conicSpan(t.origin, t.u, drop(s.v), s.low, s.high);
    // Rounding of the frame's axes doesn't make a circle an ellipse.
    if (s.radius > 0 && std::fabs(c.u.length() - s.radius) <= 1e-14 * s.radius &&
        std::fabs(c.v.length() - s.radius) <= 1e-14 * s.radius)
      c.radius = s.radius;
    c.base = s.base;
    c.scale = s.scale;
    return c;
  }
  if (f.isWorld && s.u.z == 0) return t;
  const double size = t.u.length();
  constexpr double kUpright = 1e-14;
  if (size <= kUpright) {
    t.u = {};
    t.base = s.toCurve(std::isfinite(s.low) ? s.low : 0);
    t.low = t.high = 0;
    return t;
  }
  t.u = t.u / size;
  t.low = s.low * size;
  t.high = s.high * size;
  t.scale = s.scale / size;
  return t;
}

void crossFlat(const Span& a, const Span& b, double tol, std::vector<FlatHit>& hits) {
  if (a.isPoint()) return addPoint(a, b, tol, false, hits);
  if (b.isPoint()) return addPoint(b, a, tol, true, hits);
  if (a.kind == SpanKind::kLine && b.kind == SpanKind::kLine) return lineLine(a, b, tol, hits);
  if (a.kind == SpanKind::kLine && b.radius > 0) return lineCircle(a, b, tol, false, hits);
  if (b.kind == SpanKind::kLine && a.radius > 0) return lineCircle(b, a, tol, true, hits);
  if (a.radius > 0 && b.radius > 0) return circleCircle(a, b, tol, hits);
  if (a.kind == SpanKind::kConic && isThin(a)) return quartersAgainst(a, b, tol, false, hits);
  if (b.kind == SpanKind::kConic && isThin(b)) return quartersAgainst(b, a, tol, true, hits);
  if (a.kind == SpanKind::kConic && b.kind == SpanKind::kConic) {
    if (addOverlap(a, b, tol, hits)) return;
    return quartersAgainst(a, b, tol, false, hits);
  }
  if (a.kind == SpanKind::kLine && b.kind == SpanKind::kConic) return lineEllipse(a, b, tol, false, hits);
  if (b.kind == SpanKind::kLine && a.kind == SpanKind::kConic) return lineEllipse(b, a, tol, true, hits);
  if (a.kind == SpanKind::kBezier && b.kind == SpanKind::kConic) return bezierConic(a, b, tol, false, hits);
  if (b.kind == SpanKind::kBezier && a.kind == SpanKind::kConic) return bezierConic(b, a, tol, true, hits);
  if (a.kind == SpanKind::kBezier && b.kind == SpanKind::kLine) return bezierLine(a, b, tol, false, hits);
  if (b.kind == SpanKind::kBezier && a.kind == SpanKind::kLine) return bezierLine(b, a, tol, true, hits);
  bezierBezier(a, b, tol, hits);
}

}  // namespace kvge
