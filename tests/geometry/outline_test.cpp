#include "host/geometry/outline.h"

#include <gtest/gtest.h>

#include <random>

#include "host/geometry/region.h"

namespace {

using Vertices = std::vector<KvGePolyline3d::Vertex>;

double regionArea(const Vertices& vertices) {
  const KvGePolyline3d outline(vertices, true);
  KvGeRegion region;
  return KvGeRegion::createFromLoops({&outline}, region) == KvGeRegion::kOk ? region.area() : -1;
}

TEST(PlainOutline, AreasOfNamedShapes) {
  constexpr double kPi = kvge::kPi;
  const double quarter = std::tan(kPi / 8);
  const struct {
    const char* name;
    Vertices vertices;
    double area;  ///< 0 where the region's word alone counts
  } cases[] = {
      {"square", {{{0, 0}}, {{4, 0}}, {{4, 4}}, {{0, 4}}}, 16},
      {"the same clockwise", {{{0, 0}}, {{0, 4}}, {{4, 4}}, {{4, 0}}}, 16},
      {"circle of two arcs", {{{-3, 0}, 1}, {{3, 0}, 1}}, 9 * kPi},
      {"half circle", {{{-3, 0}, 0}, {{3, 0}, 1}}, 4.5 * kPi},
      {"lens", {{{0, 0}, quarter}, {{2, 0}, quarter}}, kPi - 2},
      {"moon", {{{-3, 0}, 1}, {{3, 0}, -0.5}}, 0},
      {"slot with tangent joints", {{{0, 0}}, {{10, 0}, 1}, {{10, 4}}, {{0, 4}, 1}}, 40 + 4 * kPi},
      {"rounded square",
       {{{1, 0}},
        {{9, 0}, quarter},
        {{10, 1}},
        {{10, 9}, quarter},
        {{9, 10}},
        {{1, 10}, quarter},
        {{0, 9}},
        {{0, 1}, quarter}},
       100 - 4 + kPi},
      {"circle of four arcs",
       {{{5, 0}, quarter}, {{0, 5}, quarter}, {{-5, 0}, quarter}, {{0, -5}, quarter}},
       25 * kPi},
      {"arcs that bend inwards",
       {{{5, 0}, -quarter}, {{0, 5}, -quarter}, {{-5, 0}, -quarter}, {{0, -5}, -quarter}},
       100 - 25 * kPi},
      {"far from the origin",
       {{{1e6, 1e6}, 0.01}, {{1e6 + 1, 1e6}, 0.01}, {{1e6 + 1, 1e6 + 1}, 0.01}, {{1e6, 1e6 + 1}, 0.01}},
       -1},
  };
  for (const auto& one : cases) {
    const auto area = kvge::areaOfPlainOutline(one.vertices);
    ASSERT_TRUE(area) << one.name;
    const double expected = regionArea(one.vertices);
    EXPECT_NEAR(*area, expected, 1e-9 * std::max(1.0, expected)) << one.name;
    if (one.area > 0) {
      EXPECT_NEAR(*area, one.area, 1e-12 * one.area) << one.name;
    }
  }
}

TEST(PlainOutline, LeavesWhatMeetsItselfToTheRegion) {
  const double quarter = std::tan(kvge::kPi / 8);
  const Vertices cases[] = {
      {{{0, 0}}, {{4, 4}}, {{4, 0}}, {{0, 4}}},                      // bow
      {{{0, 0}}, {{4, 0}}, {{4, 4}}, {{2, 0}}, {{0, 4}}},            // a corner on an edge
      {{{0, 0}}, {{2, 2}}, {{4, 0}}, {{4, 4}}, {{2, 2}}, {{0, 4}}},  // two corners in one place
      {{{0, 0}}, {{4, 0}}, {{1, 0}}, {{1, 3}}},                      // folds back
      {{{0, 0}}, {{4, 0}, -1}, {{4, 2}}, {{3.2, 1}}, {{0, 2}}},      // an arc through a side
      {{{0, 0}}, {{10, 0}, 1}, {{10, 4}}, {{0, 4}, -2}},             // an arc through the far end
      {{{0, 0}, 1}, {{4, 0}, -1}},                                   // out and back on one arc
      {{{0, 0}, 2}, {{4, 0}, 2}, {{8, 0}, 0}},                       // loops of neighbours
      {{{0, 0}}, {{0, 0}}, {{4, 0}}, {{4, 4}}},                      // no length
      {{{0, 0}}, {{6, 0}}, {{6, 2}}, {{4, 2}, -quarter * 2}, {{2, 2}, 0}, {{0, 2}}, {{3, -1e-10}}},
      {{{0, 0}, NAN}, {{4, 0}}, {{4, 4}}},
      {{{0, 0}}, {{INFINITY, 0}}, {{4, 4}}},
      {{{0, 0}}},
      {},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_FALSE(kvge::areaOfPlainOutline(cases[i])) << i;
}

// Whatever is called plain has the area that the region finds by looking for every crossing.
TEST(PlainOutline, AgreesWithRegionsOnRandomOutlines) {
  std::mt19937 random(7);
  const auto draw = [&](double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random);
  };
  int plain = 0, others = 0;
  for (int i = 0; i < 20000; ++i) {
    const int n = 2 + i % 9;
    // Every fourth on a grid, where ends meet edges, and arcs touch.
    const bool onGrid = i % 4 == 0, isRound = i % 3 == 0;
    Vertices vertices;
    for (int k = 0; k < n; ++k) {
      const double turn = kvge::kTwoPi * k / n, reach = draw(4, 10);
      KvGePoint2d point = isRound ? KvGePoint2d(reach * std::cos(turn), reach * std::sin(turn))
                                  : KvGePoint2d(draw(-9, 9), draw(-9, 9));
      if (onGrid) point = {std::round(point.x), std::round(point.y)};
      constexpr double kBulges[] = {0, 0, 1, -1, 0.41421356237309503, -0.41421356237309503};
      vertices.push_back({point, onGrid ? kBulges[random() % 6] : draw(-0.6, 0.6)});
    }
    const auto area = kvge::areaOfPlainOutline(vertices);
    if (!area) {
      ++others;
      continue;
    }
    ++plain;
    ASSERT_NEAR(*area, regionArea(vertices), 1e-9 * 400) << "outline " << i;
  }
  EXPECT_GT(plain, 3000);
  EXPECT_GT(others, 3000);
}

}  // namespace
