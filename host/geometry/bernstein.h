#pragma once
// Polynomials on [0, 1] in Bernstein form: the form in which every zero of a curve equation can be bounded.
#include <array>
#include <vector>

namespace kvge {

/// Largest degree of a curve, and of an equation that a curve is put into.
inline constexpr int kMaxDegree = 25;
inline constexpr int kMaxEquationDegree = 2 * kMaxDegree;

struct Bernstein {
  int degree = 0;
  std::array<double, kMaxEquationDegree + 1> c{};
};

double valueOf(const Bernstein& f, double t);
Bernstein derivativeOf(const Bernstein& f);
/// The sum of both degrees must not exceed kMaxEquationDegree.
Bernstein productOf(const Bernstein& a, const Bernstein& b);
/// a + factor * b, both of one degree.
Bernstein sumOf(const Bernstein& a, const Bernstein& b, double factor);

/// Adds every zero in [0, 1]. Where |f| only comes down to `flat` or less without a change of sign, the place
/// of its smallest value counts as a zero. True when f stays within `flat` over a stretch (an overlap), which
/// adds nothing.
bool zerosOf(const Bernstein& f, double flat, std::vector<double>& zeros);

}  // namespace kvge
