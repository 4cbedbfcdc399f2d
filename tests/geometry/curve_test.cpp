#include <gtest/gtest.h>

#include "tests/geometry/shapes.h"

using test::Curve;
using test::Dice;
using test::randomCurve;

namespace {

constexpr double kPi = kvge::kPi;

void expectNear(const KvGePoint3d& a, const KvGePoint3d& b, double tol) {
  EXPECT_LE(a.distanceTo(b), tol) << a.x << "," << a.y << "," << a.z << " against " << b.x << "," << b.y
                                  << "," << b.z;
}

class EveryKind : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind, testing::Range(0, 8));

TEST_P(EveryKind, ParameterAndPointAgree) {
  Dice d(1);
  for (int run = 0; run < 60; ++run) {
    const Curve c = randomCurve(d, GetParam(), run % 2, run % 3 > 0);
    const double a = c->startParam(), b = c->endParam();
    for (int i = 0; i <= 12; ++i) {
      const double t = a + (b - a) * i / 12;
      const KvGePoint3d p = c->pointAtParam(t);
      double back = -1;
      ASSERT_TRUE(c->paramAtPoint(p, back)) << run;
      expectNear(c->pointAtParam(back), p, 2e-10);
    }
    double missed;
    EXPECT_FALSE(c->paramAtPoint({100, 100, 100}, missed));
  }
}

TEST_P(EveryKind, DerivativesAreSlopes) {
  Dice d(2);
  for (int run = 0; run < 30; ++run) {
    const Curve c = randomCurve(d, GetParam(), false, false);
    const double a = c->startParam(), b = c->endParam(), t = a + (b - a) * 0.437, h = 1e-6 * (b - a);
    const KvGeVector3d slope = (c->pointAtParam(t + h) - c->pointAtParam(t - h)) / (2 * h);
    EXPECT_LE((slope - c->firstDerivAtParam(t)).length(), 1e-4 * (1 + slope.length()));
    const KvGeVector3d bend = (c->firstDerivAtParam(t + h) - c->firstDerivAtParam(t - h)) / (2 * h);
    EXPECT_LE((bend - c->secondDerivAtParam(t)).length(), 1e-3 * (1 + bend.length()));
  }
}

TEST_P(EveryKind, NearestPointIsNotBeatenBySampling) {
  Dice d(3);
  for (int run = 0; run < 60; ++run) {
    const Curve c = randomCurve(d, GetParam(), run % 2, run % 3 > 0);
    const KvGePoint3d p = test::randomPoint(d, run % 2, false);
    const double found = c->distanceTo(p), a = c->startParam(), b = c->endParam();
    for (int i = 0; i <= 400; ++i)
      EXPECT_LE(found, c->pointAtParam(a + (b - a) * i / 400).distanceTo(p) + 1e-10) << run;
  }
}

TEST_P(EveryKind, BoxIsTight) {
  Dice d(4);
  for (int run = 0; run < 40; ++run) {
    const Curve c = randomCurve(d, GetParam(), run % 2, run % 3 > 0);
    const KvGeBox3d box = c->boundBox(), slightlyLarger = box.grown(1e-9);
    KvGeBox3d sampled;
    const double a = c->startParam(), b = c->endParam();
    for (int i = 0; i <= 4000; ++i) {
      const KvGePoint3d p = c->pointAtParam(a + (b - a) * i / 4000);
      ASSERT_TRUE(slightlyLarger.contains(p));
      sampled.add(p);
    }
    EXPECT_LE(std::max(sampled.low.distanceTo(box.low), sampled.high.distanceTo(box.high)), 0.05);
  }
}

TEST_P(EveryKind, SplittingKeepsLengthAndEnds) {
  Dice d(5);
  for (int run = 0; run < 60; ++run) {
    const Curve c = randomCurve(d, GetParam(), false, run % 2);
    const double a = c->startParam(), b = c->endParam();
    std::vector<double> cuts;
    for (int i = 0; i < 4; ++i) cuts.push_back(d.real(a, b));
    cuts.push_back(cuts[0]);  // twice the same counts once
    std::vector<Curve> pieces;
    ASSERT_TRUE(c->splitAtParams(cuts, pieces));
    ASSERT_EQ(pieces.size(), c->isPeriodic() ? 4u : 5u);
    double sum = 0;
    for (size_t i = 0; i < pieces.size(); ++i) {
      sum += pieces[i]->length();
      if (i > 0) expectNear(pieces[i]->startPoint(), pieces[i - 1]->endPoint(), 1e-11);
      const KvGePoint3d inside =
          pieces[i]->pointAtParam((pieces[i]->startParam() + pieces[i]->endParam()) / 2);
      EXPECT_LE(c->distanceTo(inside), 1e-10);
    }
    EXPECT_NEAR(sum, c->length(), 1e-9);
  }
}

TEST_P(EveryKind, LengthAndItsInverse) {
  Dice d(6);
  for (int run = 0; run < 30; ++run) {
    const Curve c = randomCurve(d, GetParam(), false, run % 2);
    const double whole = c->length();
    double chords = 0;
    const double a = c->startParam(), b = c->endParam();
    for (int i = 0; i < 2000; ++i)
      chords +=
          c->pointAtParam(a + (b - a) * i / 2000).distanceTo(c->pointAtParam(a + (b - a) * (i + 1) / 2000));
    EXPECT_NEAR(chords, whole, 1e-2 * (1 + whole));
    for (const double share : {0.0, 0.3, 0.77, 1.0}) {
      double t = -1, back = -1;
      ASSERT_TRUE(c->paramAtLength(a, whole * share, t));
      EXPECT_NEAR(c->length(a, t), whole * share, 1e-9);
      ASSERT_TRUE(c->paramAtLength(b, -whole * share, back));
      EXPECT_NEAR(c->length(back, b), whole * share, 1e-9);
    }
    double beyond;
    EXPECT_FALSE(c->paramAtLength(a, whole * 1.001 + 1e-6, beyond));
  }
}

TEST_P(EveryKind, ReversedRunsBackwards) {
  Dice d(7);
  for (int run = 0; run < 30; ++run) {
    const Curve c = randomCurve(d, GetParam(), run % 2, run % 3 > 0), r = c->reversed();
    const double a = c->startParam(), b = c->endParam(), ra = r->startParam(), rb = r->endParam();
    for (const double share : {0.0, 0.25, 0.6, 1.0})
      expectNear(c->pointAtParam(a + (b - a) * share), r->pointAtParam(rb + (ra - rb) * share), 1e-10);
  }
}

TEST_P(EveryKind, TransformedPointsAreOnTheTransformedCurve) {
  Dice d(8);
  for (int run = 0; run < 60; ++run) {
    const Curve c = randomCurve(d, GetParam(), false, run % 2);
    KvGeMatrix3d m = KvGeMatrix3d::translation({d.real(-9, 9), 2, d.real(-9, 9)}) *
                     KvGeMatrix3d::rotation(d.real(0, 6), test::randomNormal(d, false));
    if (run % 3 == 1)
      m = m * KvGeMatrix3d().setToMirroring(KvGePlane({1, 2, 3}, test::randomNormal(d, false)));
    if (run % 3 == 2)
      m.entry[0][0] *= 2, m.entry[1][1] += 0.4, m.entry[2][0] -= 0.7;  // stretched and sheared
    const Curve moved = c->transformed(m);
    const double a = c->startParam(), b = c->endParam();
    expectNear(moved->startPoint(), m * c->startPoint(), 1e-10);
    expectNear(moved->endPoint(), m * c->endPoint(), 1e-10);
    for (int i = 0; i <= 16; ++i)
      EXPECT_LE(moved->distanceTo(m * c->pointAtParam(a + (b - a) * i / 16)), 1e-9) << run;
  }
}

TEST(Curves, CircleUnderStretchBecomesAnEllipse) {
  KvGeMatrix3d m;
  m.entry[0][0] = 3;
  const KvGeCircArc3d circle({1, 0, 0}, KvGeVector3d::kZAxis, 2);
  const Curve e = circle.transformed(m);
  ASSERT_EQ(e->kind(), KvGeCurve3d::kEllipArc);
  const auto& ellipse = static_cast<const KvGeEllipArc3d&>(*e);
  EXPECT_NEAR(ellipse.majorAxis().length(), 6, 1e-14);
  EXPECT_NEAR(ellipse.minorAxis().length(), 2, 1e-14);
  EXPECT_TRUE(e->isPeriodic());
  // Perimeter of half axes 6 and 2 by the complete elliptic integral, 24 E(sqrt(8)/3).
  EXPECT_NEAR(e->length(), 4 * 6 * std::comp_ellint_2(std::sqrt(8.0) / 3), 1e-11);
  EXPECT_EQ(circle.transformed(KvGeMatrix3d::scaling(2))->kind(), KvGeCurve3d::kCircArc);
}

TEST(Curves, ExtensionGoesOnOnlyWhenAsked) {
  const KvGeLineSeg3d s({0, 0, 0}, {10, 0, 0});
  expectNear(s.closestPointTo({14, 3, 0}), {10, 0, 0}, 0);
  expectNear(s.closestPointTo({14, 3, 0}, true), {14, 0, 0}, 1e-14);
  const KvGeCircArc3d arc({0, 0, 0}, KvGeVector3d::kZAxis, 5, 0, kPi / 2);
  expectNear(arc.closestPointTo({-9, -0.1, 0}), {0, 5, 0}, 1e-14);
  expectNear(arc.closestPointTo({-9, 0, 0}, true), {-5, 0, 0}, 1e-14);
  const KvGeRay3d ray({1, 1, 0}, {0, 2, 0});
  expectNear(ray.closestPointTo({5, -5, 0}), {1, 1, 0}, 0);
  expectNear(ray.closestPointTo({5, -5, 0}, true), {1, -5, 0}, 1e-14);
}

TEST(Curves, CircleAndLineWithoutEndAreCutWithoutASeam) {
  std::vector<Curve> pieces;
  const KvGeCircArc3d circle({0, 0, 0}, KvGeVector3d::kZAxis, 1);
  ASSERT_TRUE(circle.splitAtPoints({{1, 0, 0}, {0, 1, 0}, {5, 5, 5}}, pieces));
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_NEAR(pieces[0]->length(), kPi / 2, 1e-14);
  EXPECT_NEAR(pieces[1]->length(), 3 * kPi / 2, 1e-14);
  pieces.clear();
  ASSERT_TRUE(KvGeLine3d({0, 0, 0}, KvGeVector3d::kXAxis).splitAtParams({2, -1}, pieces));
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_EQ(pieces[0]->kind(), KvGeCurve3d::kRay);
  expectNear(pieces[0]->startPoint(), {-1, 0, 0}, 0);
  EXPECT_EQ(pieces[1]->kind(), KvGeCurve3d::kLineSeg);
  EXPECT_EQ(pieces[2]->kind(), KvGeCurve3d::kRay);
  pieces.clear();
  EXPECT_FALSE(KvGeLineSeg3d({0, 0, 0}, {1, 0, 0}).splitAtParams({0, 1, 1 + 1e-12, 7, std::nan("")}, pieces));
  EXPECT_TRUE(pieces.empty());
}

TEST(Curves, PlanesAreTold) {
  KvGePlane plane;
  EXPECT_EQ(KvGeLineSeg3d({0, 0, 0}, {1, 2, 3}).planarity(plane), KvGeCurve3d::kLinear);
  EXPECT_EQ(KvGeCircArc3d({0, 0, 4}, {0, 0, 1}, 1).planarity(plane), KvGeCurve3d::kPlanar);
  EXPECT_NEAR(plane.signedDistanceTo({7, 7, 4}), 0, 1e-14);
  EXPECT_EQ(KvGeSpacePolyline3d({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1e-6}}).planarity(plane),
            KvGeCurve3d::kNotPlanar);
  EXPECT_EQ(KvGeSpacePolyline3d({{0, 0, 0}, {1, 0, 1}, {1, 1, 1}, {0, 1, 0}}).planarity(plane),
            KvGeCurve3d::kPlanar);
}

TEST(Curves, ArcThroughThreePointsAndBulges) {
  const KvGeCircArc3d arc({1, 0, 0}, {0, 1, 0}, {-1, 0, 0});
  expectNear(arc.center(), {0, 0, 0}, 1e-15);
  EXPECT_NEAR(arc.length(), kPi, 1e-14);
  EXPECT_EQ(KvGeCircArc3d({0, 0, 0}, {1, 1, 0}, {2, 2, 0}).radius(), 0);
  struct Row {
    double bulge, sweep, midX, midY;
  };
  for (const Row& row :
       {Row{1, kPi, 1, -1}, {-1, -kPi, 1, 1}, {std::tan(kPi / 8), kPi / 2, 1, -std::tan(kPi / 8)}}) {
    const KvGePolyline3d one({{{0, 0}, row.bulge}, {{2, 0}, 0}});
    EXPECT_NEAR(kvge::arcOfBulge({0, 0}, {2, 0}, row.bulge).sweep, row.sweep, 1e-14);
    expectNear(one.pointAtParam(0.5), {row.midX, row.midY, 0}, 1e-14);
  }
}

TEST(Splines, BadInputIsRefused) {
  const std::vector<KvGePoint3d> three{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}};
  EXPECT_TRUE(KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(0, {0, 0, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(26, {0, 0, 0, 1, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {0, 0, 1, 0, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {1, 1, 1, 1, 1, 1}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1, 1}, three, {1, 0, 1}));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1, 1}, three, {1, 1}));
  EXPECT_FALSE(KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1, std::nan("")}, three));
  EXPECT_FALSE(KvGeNurbCurve3d::interpolate({{1, 1, 1}, {1, 1, 1}}));
}

TEST(Splines, QuarterCircleIsExact) {
  const double w = std::sqrt(0.5);
  const auto arc =
      KvGeNurbCurve3d::create(2, {0, 0, 0, 1, 1, 1}, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {1, w, 1});
  ASSERT_TRUE(arc);
  EXPECT_NEAR(arc->length(), kPi / 2, 1e-13);
  for (int i = 0; i <= 10; ++i) EXPECT_NEAR(arc->pointAtParam(i / 10.0).asVector().length(), 1, 1e-15);
}

TEST(Splines, InterpolationPassesThroughWithContinuousCurvature) {
  const std::vector<KvGePoint3d> points{{0, 0, 0}, {2, 3, 1}, {2, 3, 1}, {5, 1, 0}, {7, 4, -2}, {9, 0, 0}};
  const auto c = KvGeNurbCurve3d::interpolate(points, {0, 1, 0});
  ASSERT_TRUE(c);
  for (const KvGePoint3d& p : points) EXPECT_LE(c->distanceTo(p), 1e-10);
  EXPECT_NEAR(c->firstDerivAtParam(0).angleTo({0, 1, 0}), 0, 1e-12);
  EXPECT_LE(c->secondDerivAtParam(c->endParam()).length(), 1e-10);  // natural where no tangent is given
  for (int i = 1; i < c->spanCount(); ++i) {
    const double t = c->span(i).low;
    EXPECT_LE((c->secondDerivAtParam(t - 1e-9) - c->secondDerivAtParam(t)).length(), 1e-6);
  }
}

TEST(Splines, PeriodicPolesCloseSmoothly) {
  const auto c = KvGeNurbCurve3d::createPeriodic(3, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
  ASSERT_TRUE(c);
  EXPECT_TRUE(c->isClosed());
  EXPECT_NEAR(c->firstDerivAtParam(c->startParam()).angleTo(c->firstDerivAtParam(c->endParam())), 0, 1e-12);
}

}  // namespace
