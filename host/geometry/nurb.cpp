#include "host/geometry/nurb.h"

#include <array>
#include <cstring>

namespace {

using Pole = std::array<double, 4>;

bool areFinite(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool isSpline(int degree, const std::vector<double>& knots, const std::vector<KvGePoint3d>& poles,
              const std::vector<double>& weights) {
  if (degree < 1 || degree > kvge::kMaxDegree) return false;
  const size_t p = static_cast<size_t>(degree), n = poles.size();
  if (n < p + 1 || knots.size() != n + p + 1 || !areFinite(knots) || !areFinite(weights)) return false;
  if (!std::is_sorted(knots.begin(), knots.end()) || !(knots[p] < knots[n])) return false;
  if (!weights.empty() && weights.size() != n) return false;
  if (std::any_of(weights.begin(), weights.end(), [](double w) { return w <= 0; })) return false;
  for (const KvGePoint3d& q : poles)
    if (!std::isfinite(q.x + q.y + q.z)) return false;
  for (size_t i = p + 1; i + p < n; ++i)
    if (knots[i + p] == knots[i] && knots[i] > knots[p] && knots[i] < knots[n]) return false;
  return true;
}

}  // namespace

KvGeNurbCurve3d::KvGeNurbCurve3d() : knots_{0, 0, 1, 1}, poles_{{0, 0, 0}, {1, 0, 0}} {
  setUp();
}

std::unique_ptr<KvGeNurbCurve3d> KvGeNurbCurve3d::create(int degree, std::vector<double> knots,
                                                         std::vector<KvGePoint3d> poles,
                                                         std::vector<double> weights) {
  if (!isSpline(degree, knots, poles, weights)) return nullptr;
  auto curve = std::make_unique<KvGeNurbCurve3d>();
  curve->degree_ = degree;
  curve->knots_ = std::move(knots);
  curve->poles_ = std::move(poles);
  const bool isPlain = std::all_of(weights.begin(), weights.end(), [&](double w) { return w == weights[0]; });
  if (!isPlain) curve->weights_ = std::move(weights);
  curve->setUp();
  return curve;
}

std::unique_ptr<KvGeNurbCurve3d> KvGeNurbCurve3d::createPeriodic(int degree,
                                                                 const std::vector<KvGePoint3d>& poles) {
  if (degree < 1 || degree > kvge::kMaxDegree || poles.size() < 2) return nullptr;
  std::vector<KvGePoint3d> row = poles;
  for (size_t i = 0; i < static_cast<size_t>(degree); ++i) row.push_back(poles[i % poles.size()]);
  std::vector<double> knots;
  for (size_t i = 0; i < row.size() + static_cast<size_t>(degree) + 1; ++i)
    knots.push_back(static_cast<double>(i) - degree);
  return create(degree, std::move(knots), std::move(row));
}

std::unique_ptr<KvGeNurbCurve3d> KvGeNurbCurve3d::interpolate(const std::vector<KvGePoint3d>& given,
                                                              const KvGeVector3d& startTangent,
                                                              const KvGeVector3d& endTangent) {
  std::vector<KvGePoint3d> q;
  std::vector<double> t;
  for (const KvGePoint3d& p : given) {
    const double step = q.empty() ? 0 : q.back().distanceTo(p);
    if (!std::isfinite(step)) return nullptr;
    if (!q.empty() && step <= KvGeContext::gTol.equalPoint()) continue;
    t.push_back(q.empty() ? 0 : t.back() + step);
    q.push_back(p);
  }
  const size_t n = q.size();
  if (n < 2) return nullptr;
  // Slopes at the points from the tridiagonal equations of continuous curvature.
  std::vector<double> below(n), middle(n), above(n);
  std::vector<KvGeVector3d> right(n);
  const auto chord = [&](size_t i) { return (q[i + 1] - q[i]) / (t[i + 1] - t[i]); };
  const auto setEnd = [&](size_t i, const KvGeVector3d& tangent, size_t segment, double& beside) {
    const bool isGiven = tangent.length() > 0;
    middle[i] = isGiven ? 1 : 2;
    beside = isGiven ? 0 : 1;
    right[i] = isGiven ? tangent / tangent.length() : chord(segment) * 3;
  };
  setEnd(0, startTangent, 0, above[0]);
  setEnd(n - 1, endTangent, n - 2, below[n - 1]);
  for (size_t i = 1; i + 1 < n; ++i) {
    const double before = t[i] - t[i - 1], after = t[i + 1] - t[i];
    below[i] = after;
    middle[i] = 2 * (before + after);
    above[i] = before;
    right[i] = (chord(i - 1) * after + chord(i) * before) * 3;
  }
  for (size_t i = 1; i < n; ++i) {
    const double f = below[i] / middle[i - 1];
    middle[i] -= f * above[i - 1];
    right[i] = right[i] - right[i - 1] * f;
  }
  std::vector<KvGeVector3d> slope(n);
  for (size_t i = n; i-- > 0;)
    slope[i] = (right[i] - (i + 1 < n ? slope[i + 1] * above[i] : KvGeVector3d())) / middle[i];
  // Poles of the B-spline with single inner knots: the polar form of a segment that each one belongs to.
  std::vector<double> knots(4, t.front());
  knots.insert(knots.end(), t.begin() + 1, t.end() - 1);
  knots.insert(knots.end(), 4, t.back());
  std::vector<KvGePoint3d> poles;
  for (size_t i = 0; i < n + 2; ++i) {
    const size_t s = std::min(i < 2 ? 0 : i - 2, n - 2);
    const double h = t[s + 1] - t[s];
    KvGePoint3d b[4] = {q[s], q[s] + slope[s] * (h / 3), q[s + 1] - slope[s + 1] * (h / 3), q[s + 1]};
    for (size_t level = 3; level > 0; --level) {
      const double x = (knots[i + 4 - level] - t[s]) / h;
      for (size_t k = 0; k < level; ++k) b[k] = b[k] + (b[k + 1] - b[k]) * x;
    }
    poles.push_back(b[0]);
  }
  return create(3, std::move(knots), std::move(poles));
}

void KvGeNurbCurve3d::blossom(size_t interval, const double* arguments, double* result) const {
  const size_t p = static_cast<size_t>(degree_);
  std::array<Pole, kvge::kMaxDegree + 1> w;
  for (size_t i = 0; i <= p; ++i) {
    const size_t at = interval - p + i;
    const double weight = weights_.empty() ? 1 : weights_[at];
    w[i] = {poles_[at].x * weight, poles_[at].y * weight, poles_[at].z * weight, weight};
  }
  for (size_t level = 1; level <= p; ++level)
    for (size_t i = p; i >= level; --i) {
      const double a = knots_[interval - p + i], b = knots_[interval + 1 + i - level];
      const double x = (arguments[level - 1] - a) / (b - a);
      for (size_t k = 0; k < 4; ++k) w[i][k] = w[i - 1][k] + x * (w[i][k] - w[i - 1][k]);
    }
  std::copy(w[p].begin(), w[p].end(), result);
}

void KvGeNurbCurve3d::setUp() {
  const size_t p = static_cast<size_t>(degree_), n = poles_.size();
  breaks_.assign(1, knots_[p]);
  bezier_.clear();
  for (size_t i = p; i < n; ++i) {
    const double a = knots_[i], b = knots_[i + 1];
    if (!(a < b)) continue;
    breaks_.push_back(b);
    std::array<double, kvge::kMaxDegree> arguments;
    for (size_t k = 0; k <= p; ++k) {
      for (size_t j = 0; j < p; ++j) arguments[j] = j < p - k ? a : b;
      const size_t at = bezier_.size();
      bezier_.resize(at + 4);
      blossom(i, arguments.data(), bezier_.data() + at);
    }
  }
}

kvge::Span KvGeNurbCurve3d::span(int index) const {
  kvge::Span s;
  const size_t i = static_cast<size_t>(index);
  s.kind = kvge::SpanKind::kBezier;
  s.degree = degree_;
  s.poles = bezier_.data() + 4 * (static_cast<size_t>(degree_) + 1) * i;
  s.low = s.knotLow = breaks_[i];
  s.high = s.knotHigh = breaks_[i + 1];
  return s;
}

int KvGeNurbCurve3d::spanIndexAt(double param) const {
  const auto after = std::upper_bound(breaks_.begin(), breaks_.end(), param);
  return std::clamp(static_cast<int>(after - breaks_.begin()) - 1, 0, spanCount() - 1);
}

KvGeCurve3d::Ptr KvGeNurbCurve3d::piece(double from, double to) const {
  from = std::max(from, startParam());
  to = std::min(to, endParam());
  if (!(from < to)) return nullptr;
  const size_t p = static_cast<size_t>(degree_);
  std::vector<double> knots(p + 1, from);
  for (size_t i = p + 1; i < poles_.size(); ++i)
    if (knots_[i] > from && knots_[i] < to) knots.push_back(knots_[i]);
  knots.insert(knots.end(), p + 1, to);
  const size_t count = knots.size() - p - 1;
  std::vector<KvGePoint3d> poles;
  std::vector<double> weights;
  for (size_t i = 0; i < count; ++i) {
    // Any piece of the old curve under the new pole's support gives the same pole; take the first that isn't
    // empty.
    size_t at = i;
    while (!(knots[at] < knots[at + 1])) ++at;
    const double middle = (knots[at] + knots[at + 1]) / 2;
    const size_t interval =
        static_cast<size_t>(std::upper_bound(knots_.begin() + degree_,
                                             knots_.begin() + static_cast<long>(poles_.size()), middle) -
                            knots_.begin()) -
        1;
    Pole w;
    blossom(interval, knots.data() + i + 1, w.data());
    poles.emplace_back(w[0] / w[3], w[1] / w[3], w[2] / w[3]);
    weights.push_back(w[3]);
  }
  if (!isRational()) weights.clear();
  return create(degree_, std::move(knots), std::move(poles), std::move(weights));
}

KvGeCurve3d::Ptr KvGeNurbCurve3d::reversed() const {
  auto one = std::make_unique<KvGeNurbCurve3d>(*this);
  const double sum = startParam() + endParam();
  std::reverse(one->knots_.begin(), one->knots_.end());
  for (double& k : one->knots_) k = sum - k;
  std::reverse(one->poles_.begin(), one->poles_.end());
  std::reverse(one->weights_.begin(), one->weights_.end());
  one->setUp();
  return one;
}

KvGeCurve3d::Ptr KvGeNurbCurve3d::transformed(const KvGeMatrix3d& m) const {
  auto one = std::make_unique<KvGeNurbCurve3d>(*this);
  for (KvGePoint3d& p : one->poles_) p = m * p;
  one->setUp();
  return one;
}
