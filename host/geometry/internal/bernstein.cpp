#include "host/geometry/bernstein.h"

#include <algorithm>
#include <cmath>

namespace kvge {

namespace {

/// A stretch this long on which the equation vanishes is an overlap, a shorter one a touch.
constexpr double kOverlapWidth = 1.0 / 64;
/// Zeros closer than this are one: two zeros nearer than the root of the rounding error can't be told apart.
constexpr double kSameZero = 1e-7;
constexpr double kSmallestWidth = 1e-10;

using Binomials = std::array<std::array<double, kMaxEquationDegree + 1>, kMaxEquationDegree + 1>;

const Binomials& binomials() {
  static const Binomials table = [] {
    Binomials b{};
    for (size_t n = 0; n < b.size(); ++n) {
      b[n][0] = b[n][n] = 1;
      for (size_t k = 1; k < n; ++k) b[n][k] = b[n - 1][k - 1] + b[n - 1][k];
    }
    return b;
  }();
  return table;
}

size_t at(int index) {
  return static_cast<size_t>(index);
}

/// Halves of f in place: `f` becomes the left one, `right` the other.
void halve(Bernstein& f, Bernstein& right) {
  right.degree = f.degree;
  for (int level = 0; level <= f.degree; ++level) {
    right.c[at(f.degree - level)] = f.c[at(f.degree)];
    for (int i = f.degree; i > level; --i) f.c[at(i)] = (f.c[at(i - 1)] + f.c[at(i)]) / 2;
  }
}

/// The zero of a polynomial with opposite signs at 0 and 1.
double bracketedZero(const Bernstein& f) {
  const Bernstein slope = derivativeOf(f);
  double low = 0, high = 1, t = f.c[0] / (f.c[0] - f.c[at(f.degree)]);
  const bool isRising = f.c[0] < 0;
  constexpr int kMostSteps = 80;
  for (int i = 0; i < kMostSteps; ++i) {
    const double value = valueOf(f, t);
    if (value == 0) return t;
    ((value < 0) == isRising ? low : high) = t;
    const double d = valueOf(slope, t), next = t - value / d;
    const double before = t;
    t = d != 0 && next > low && next < high ? next : (low + high) / 2;
    if (std::fabs(t - before) < 1e-16) break;
  }
  return t;
}

struct Search {
  const Bernstein& f;
  double flat;
  std::vector<double> crossings, touches;
  bool isOverlap = false;

  void visit(Bernstein part, double t0, double t1) {
    const auto [least, most] = std::minmax_element(part.c.begin(), part.c.begin() + part.degree + 1);
    if (*least > flat || *most < -flat) return;
    const double width = t1 - t0, first = part.c[0], last = part.c[at(part.degree)];
    if (std::max(std::fabs(*least), std::fabs(*most)) <= flat) {
      if (width >= kOverlapWidth)
        isOverlap = true;
      else
        touches.push_back((t0 + t1) / 2);
      return;
    }
    const auto end = part.c.begin() + part.degree + 1;
    const bool isMonotone =
        std::is_sorted(part.c.begin(), end) || std::is_sorted(part.c.begin(), end, std::greater<>());
    if (isMonotone && (first < 0) != (last < 0)) {
      crossings.push_back(t0 + width * bracketedZero(part));
      return;
    }
    if (isMonotone) {
      touches.push_back(std::fabs(first) < std::fabs(last) ? t0 : t1);
      return;
    }
    if (width < kSmallestWidth) {
      touches.push_back((t0 + t1) / 2);
      return;
    }
    Bernstein right;
    halve(part, right);
    visit(part, t0, (t0 + t1) / 2);
    visit(right, (t0 + t1) / 2, t1);
  }
};

}  // namespace

double valueOf(const Bernstein& f, double t) {
  std::array<double, kMaxEquationDegree + 1> w;
  std::copy_n(f.c.begin(), f.degree + 1, w.begin());
  for (int level = f.degree; level > 0; --level)
    for (int i = 0; i < level; ++i) w[at(i)] += t * (w[at(i + 1)] - w[at(i)]);
  return w[0];
}

Bernstein derivativeOf(const Bernstein& f) {
  Bernstein d;
  d.degree = std::max(0, f.degree - 1);
  for (int i = 0; i < f.degree; ++i) d.c[at(i)] = f.degree * (f.c[at(i + 1)] - f.c[at(i)]);
  return d;
}

Bernstein productOf(const Bernstein& a, const Bernstein& b) {
  const Binomials& choose = binomials();
  Bernstein p;
  p.degree = a.degree + b.degree;
  for (int i = 0; i <= a.degree; ++i)
    for (int j = 0; j <= b.degree; ++j)
      p.c[at(i + j)] += choose[at(a.degree)][at(i)] * choose[at(b.degree)][at(j)] * a.c[at(i)] * b.c[at(j)];
  for (int k = 0; k <= p.degree; ++k) p.c[at(k)] /= choose[at(p.degree)][at(k)];
  return p;
}

Bernstein sumOf(const Bernstein& a, const Bernstein& b, double factor) {
  Bernstein sum = a;
  for (int i = 0; i <= a.degree; ++i) sum.c[at(i)] += factor * b.c[at(i)];
  return sum;
}

bool zerosOf(const Bernstein& f, double flat, std::vector<double>& zeros) {
  Search search{f, flat, {}, {}};
  search.visit(f, 0, 1);
  const size_t before = zeros.size();
  const auto addNew = [&](double t) {
    for (size_t i = before; i < zeros.size(); ++i)
      if (std::fabs(zeros[i] - t) < kSameZero) return;
    zeros.push_back(t);
  };
  for (const double t : search.crossings) addNew(t);
  const Bernstein slope = derivativeOf(f), bend = derivativeOf(slope);
  for (double t : search.touches) {
    // The smallest value lies where the slope vanishes; at a simple zero of a noisy stretch the step is too
    // long and is left out.
    for (int i = 0; i < 8; ++i) {
      const double b = valueOf(bend, t), step = b == 0 ? 0 : valueOf(slope, t) / b;
      if (!(std::fabs(step) < 1e-3)) break;
      t = std::clamp(t - step, 0.0, 1.0);
    }
    if (std::fabs(valueOf(f, t)) <= 2 * flat) addNew(t);
  }
  return search.isOverlap;
}

}  // namespace kvge
