#pragma once
// Random and named curves for the geometry tests.
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "host/geometry/arc.h"
#include "host/geometry/line.h"
#include "host/geometry/nurb.h"
#include "host/geometry/polyline.h"

namespace test {

using Curve = std::unique_ptr<KvGeCurve3d>;

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  double real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
  int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
  /// On a grid of halves when `onGrid`, so that coincidences and touches come up.
  double coordinate(bool onGrid, double reach = 10) {
    return onGrid ? whole(static_cast<int>(-2 * reach), static_cast<int>(2 * reach)) / 2.0
                  : real(-reach, reach);
  }

 private:
  std::mt19937 engine_;
};

inline KvGePoint3d randomPoint(Dice& d, bool onGrid, bool isFlat) {
  return {d.coordinate(onGrid), d.coordinate(onGrid), isFlat ? 0 : d.coordinate(onGrid)};
}

inline KvGeVector3d randomNormal(Dice& d, bool isFlat) {
  if (isFlat) return {0, 0, d.whole(0, 1) ? 1.0 : -1.0};
  return KvGeVector3d(d.real(-1, 1), d.real(-1, 1), d.real(-1, 1)).normal();
}

/// Kinds 0 to 7: segment, arc, circle, ellipse arc, spline, rational spline, polyline with bulges, straight
/// polyline.
inline Curve randomCurve(Dice& d, int kind, bool onGrid = false, bool isFlat = true) {
  const auto point = [&] { return randomPoint(d, onGrid, isFlat); };
  const double radius = onGrid ? d.whole(1, 10) / 2.0 : d.real(0.5, 6);
  const double start = onGrid ? d.whole(0, 7) * kvge::kPi / 4 : d.real(0, 6.2),
               sweep = onGrid ? d.whole(1, 7) * kvge::kPi / 4 : d.real(0.1, 6.2);
  const KvGeVector3d normal = randomNormal(d, isFlat);
  switch (kind) {
    case 0:
      return std::make_unique<KvGeLineSeg3d>(point(), point());
    case 1:
      return std::make_unique<KvGeCircArc3d>(point(), normal, radius, start, start + sweep);
    case 2:
      return std::make_unique<KvGeCircArc3d>(point(), normal, radius);
    case 3: {
      const KvGeVector3d major = normal.perpVector() * (radius + d.real(0.1, 3));
      return std::make_unique<KvGeEllipArc3d>(point(), major, normal.crossProduct(major).normal() * radius,
                                              start, start + sweep);
    }
    case 4:
    case 5: {
      const int degree = d.whole(2, 4), poles = degree + d.whole(1, 5);
      std::vector<double> knots(static_cast<size_t>(degree) + 1, 0.0), weights;
      for (int i = 1; i < poles - degree; ++i) knots.push_back(i);
      knots.insert(knots.end(), static_cast<size_t>(degree) + 1, poles - degree);
      std::vector<KvGePoint3d> row;
      for (int i = 0; i < poles; ++i) row.push_back(point());
      if (kind == 5)
        for (int i = 0; i < poles; ++i) weights.push_back(d.real(0.3, 3));
      return KvGeNurbCurve3d::create(degree, knots, row, weights);
    }
    case 6: {
      std::vector<KvGePolyline3d::Vertex> row;
      for (int i = d.whole(3, 8); i > 0; --i)
        row.push_back({{d.coordinate(onGrid), d.coordinate(onGrid)},
                       d.whole(0, 1) ? (onGrid ? d.whole(-1, 1) : d.real(-1.5, 1.5)) : 0});
      return std::make_unique<KvGePolyline3d>(row, d.whole(0, 1) == 1, isFlat ? 0 : d.real(-3, 3),
                                              isFlat ? KvGeVector3d::kZAxis : normal);
    }
    default: {
      std::vector<KvGePoint3d> row;
      for (int i = d.whole(3, 8); i > 0; --i) row.push_back(point());
      return std::make_unique<KvGeSpacePolyline3d>(row, d.whole(0, 1) == 1);
    }
  }
}

}  // namespace test
