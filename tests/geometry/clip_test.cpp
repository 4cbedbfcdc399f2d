#include "host/geometry/clip.h"

#include <gtest/gtest.h>

#include "host/geometry/curve2d.h"
#include "host/geometry/intersect.h"
#include "tests/geometry/shapes.h"

using test::Curve;
using test::Dice;
using Ranges = std::vector<KvGeParamRange>;

namespace {

KvGePolyline3d star(int points, double outer, double inner, bool isRound) {
  std::vector<KvGePolyline3d::Vertex> row;
  for (int i = 0; i < 2 * points; ++i) {
    const double a = kvge::kPi * i / points, r = i % 2 ? inner : outer;
    row.push_back({{r * std::cos(a), r * std::sin(a)}, isRound && i % 3 == 0 ? 0.3 : 0});
  }
  return KvGePolyline3d(row, true);
}

double lengthOf(const KvGeCurve3d& c, const Ranges& ranges) {
  double sum = 0;
  for (const KvGeParamRange& r : ranges) sum += c.length(r.from, r.to);
  return sum;
}

TEST(Clip, NamedCases) {
  const KvGeCircArc3d circle({0, 0, 0}, KvGeVector3d::kZAxis, 5);
  const KvGePolyline3d box({{{0, 0}}, {{10, 0}}, {{10, 10}}, {{0, 10}}}, true);
  struct Row {
    const char* name;
    const KvGeCurve3d* outline;
    Curve curve;
    Ranges inside, outside;
  };
  const auto seg = [](double x0, double y0, double x1, double y1) {
    return std::make_unique<KvGeLineSeg3d>(KvGePoint3d(x0, y0, 7), KvGePoint3d(x1, y1, 7));
  };
  const Row rows[] = {
      {"through a circle", &circle, seg(-10, 0, 10, 0), {{5, 15}}, {{0, 5}, {15, 20}}},
      {"tangent", &circle, seg(-10, 5, 10, 5), {}, {{0, 20}}},
      {"within", &circle, seg(-1, 0, 1, 0), {{0, 2}}, {}},
      {"beside", &circle, seg(20, 0, 30, 0), {}, {{0, 10}}},
      {"from the rim inwards", &circle, seg(5, 0, 0, 0), {{0, 5}}, {}},
      {"corner to corner", &box, seg(-5, 5, 15, 5), {{5, 15}}, {{0, 5}, {15, 20}}},
      {"along a side", &box, seg(-5, 0, 15, 0), {}, {{0, 5}, {15, 20}}},
      {"touching a corner", &box, seg(-5, 5, 5, -5), {}, {{0, std::sqrt(200.0)}}},
      {"within the box, at its side", &box, seg(0, 5, 5, 5), {{0, 5}}, {}},
      {"polyline in and out",
       &box,
       std::make_unique<KvGePolyline3d>(
           std::vector<KvGePolyline3d::Vertex>{{{5, 5}}, {{5, 15}}, {{7, 15}}, {{7, 5}}}),
       {{0, 0.5}, {2.5, 3}},
       {{0.5, 2.5}}},
      {"polyline all inside is one stretch",
       &box,
       std::make_unique<KvGePolyline3d>(
           std::vector<KvGePolyline3d::Vertex>{{{5, 5}, 0.2}, {{6, 5}}, {{7, 8}}}),
       {{0, 2}},
       {}},
  };
  for (const Row& row : rows) {
    const auto clipper = KvGeClipper::create({row.outline});
    ASSERT_TRUE(clipper) << row.name;
    Ranges inside, outside;
    clipper->clip(*row.curve, inside, outside);
    const auto expectSame = [&](const Ranges& found, const Ranges& wanted) {
      ASSERT_EQ(found.size(), wanted.size()) << row.name;
      for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(found[i].from, wanted[i].from, 1e-9) << row.name;
        EXPECT_NEAR(found[i].to, wanted[i].to, 1e-9) << row.name;
      }
    };
    expectSame(inside, row.inside);
    expectSame(outside, row.outside);
  }
}

TEST(Clip, BadOutlinesAreRefused) {
  const KvGeLineSeg3d open({0, 0, 0}, {1, 0, 0});
  const KvGePolyline3d flat({{{0, 0}}, {{1, 0}}, {{2, 0}}}, true);
  EXPECT_FALSE(KvGeClipper::create({&open}));
  EXPECT_FALSE(KvGeClipper::create({&flat}));
  EXPECT_FALSE(KvGeClipper::create({}));
  EXPECT_FALSE(KvGeClipper::create({nullptr}));
}

TEST(Clip, EndlessCurvesAndHoles) {
  const KvGeCircArc3d outer({0, 0, 0}, KvGeVector3d::kZAxis, 5), inner({0, 0, 0}, KvGeVector3d::kZAxis, 2);
  const auto ring = KvGeClipper::create({&outer, &inner});
  ASSERT_TRUE(ring);
  EXPECT_EQ(ring->contains({3, 0}), KvGe::kInside);
  EXPECT_EQ(ring->contains({1, 0}), KvGe::kOutside);
  EXPECT_EQ(ring->contains({0, 2}), KvGe::kOnBoundary);
  Ranges inside, outside;
  ring->clip(KvGeLine3d({0, 0, 0}, KvGeVector3d::kXAxis), inside, outside);
  ASSERT_EQ(inside.size(), 2u);
  EXPECT_NEAR(inside[0].from, -5, 1e-12);
  ASSERT_EQ(outside.size(), 3u);
  EXPECT_TRUE(std::isinf(outside[0].from) && std::isinf(outside[2].to));
}

/// Against the slow way: cut at every meeting, ask for the side of each middle.
TEST(Clip, AgreesWithRegionsAndKeepsLength) {
  Dice d(77);
  const KvGePolyline3d sharp = star(40, 9, 4, false), round = star(12, 9, 5, true),
                       box({{{-5, -5}}, {{5, -5}}, {{5, 5}}, {{-5, 5}}}, true);
  const KvGeEllipArc3d ellipse({1, 0, 0}, {7, 2, 0}, {-1, 3.5, 0});
  const std::vector<const KvGeCurve3d*> outlines{&sharp, &round, &box, &ellipse};
  for (const KvGeCurve3d* outline : outlines) {
    const auto clipper = KvGeClipper::create({outline});
    KvGeRegion region;
    ASSERT_EQ(KvGeRegion::createFromLoops({outline}, region), KvGeRegion::kOk);
    for (int run = 0; run < 400; ++run) {
      const Curve c = test::randomCurve(d, run % 8, run % 16 >= 8);
      Ranges inside, outside;
      clipper->clip(*c, inside, outside);
      for (const auto& [ranges, side] :
           {std::pair(&inside, KvGe::kInside), std::pair(&outside, KvGe::kOutside)})
        for (const KvGeParamRange& r : *ranges) {
          if (c->length(r.from, r.to) < 1e-6) continue;
          for (const double share : {0.1, 0.5, 0.87}) {
            const KvGe::PointContainment found =
                region.contains(c->pointAtParam(r.from + (r.to - r.from) * share), KvGeTol(1e-8, 1e-10));
            EXPECT_TRUE(found == side || found == KvGe::kOnBoundary) << run;
          }
        }
      std::vector<KvGeCurveHit> hits;
      kvge::intersect(*c, *outline, hits);
      const bool mayRunAlong = run % 16 >= 8 && outline == &box;
      if (!mayRunAlong) {
        EXPECT_NEAR(lengthOf(*c, inside) + lengthOf(*c, outside), c->length(), 1e-6) << run;
      }
      EXPECT_LE(inside.size() + outside.size(), hits.size() + 1) << run;
    }
  }
}

TEST(Curve2d, EndsOfHatchEdges) {
  struct Row {
    std::unique_ptr<KvGeCurve2d> edge;
    KvGePoint2d start, end;
  };
  const double half = kvge::kPi / 2;
  const Row rows[] = {
      {std::make_unique<KvGeLineSeg2d>(KvGePoint2d(1, 2), KvGePoint2d(3, 4)), {1, 2}, {3, 4}},
      {std::make_unique<KvGeCircArc2d>(KvGePoint2d(0, 0), 5, 0, half), {5, 0}, {0, 5}},
      {std::make_unique<KvGeCircArc2d>(KvGePoint2d(0, 0), 5, 0, half, KvGeVector2d::kXAxis, true),
       {5, 0},
       {0, -5}},
      {std::make_unique<KvGeCircArc2d>(KvGePoint2d(0, 0), 5, 0, half, KvGeVector2d::kYAxis), {0, 5}, {-5, 0}},
      {std::make_unique<KvGeCircArc2d>(KvGePoint2d(0, 0), KvGePoint2d(2, 0), 1.0), {0, 0}, {2, 0}},
      {std::make_unique<KvGeCircArc2d>(KvGePoint2d(0, 0), KvGePoint2d(2, 0), -0.4), {0, 0}, {2, 0}},
      {std::make_unique<KvGeEllipArc2d>(KvGePoint2d(1, 1), KvGeVector2d(0, 9), KvGeVector2d(-9, 0), 4, 2, 0,
                                        half),
       {1, 5},
       {-1, 1}},
      {KvGeNurbCurve2d::create(2, {0, 0, 0, 1, 1, 1}, {{0, 0}, {1, 2}, {2, 0}}), {0, 0}, {2, 0}},
  };
  for (const Row& row : rows) {
    EXPECT_LE(row.edge->startPoint().distanceTo(row.start), 1e-14);
    EXPECT_LE(row.edge->endPoint().distanceTo(row.end), 1e-14);
    const auto copy = row.edge->clone();
    const KvGeCurve3d::Ptr raised = copy->spatial(3);
    EXPECT_LE(raised->startPoint().distanceTo(kvge::spatial(row.start, 3)), 1e-14);
    EXPECT_LE(raised->endPoint().distanceTo(kvge::spatial(row.end, 3)), 1e-14);
    const double t = (copy->startParam() + copy->endParam()) / 2;
    EXPECT_LE(raised->distanceTo(kvge::spatial(copy->evalPoint(t), 3)), 1e-12);
  }
  EXPECT_FALSE(KvGeNurbCurve2d::create(2, {0, 0, 0, 1, 1}, {{0, 0}, {1, 2}, {2, 0}}));
}

}  // namespace
