#include "host/geometry/intersect.h"

#include <gtest/gtest.h>

#include "tests/geometry/shapes.h"

using test::Curve;
using test::Dice;
using Hits = std::vector<KvGeCurveHit>;

namespace {

Hits meet(const KvGeCurve3d& a, const KvGeCurve3d& b, KvGe::Extension e = KvGe::kOnBothOperands) {
  Hits hits;
  kvge::intersect(a, b, hits, e);
  return hits;
}

KvGeLineSeg3d seg(double x0, double y0, double x1, double y1, double z0 = 0, double z1 = 0) {
  return {{x0, y0, z0}, {x1, y1, z1}};
}
KvGeCircArc3d circle(double x, double y, double r) {
  return {{x, y, 0}, KvGeVector3d::kZAxis, r};
}
KvGeCircArc3d arc(double x, double y, double r, double from, double to) {
  return {{x, y, 0}, KvGeVector3d::kZAxis, r, from * kvge::kPi / 180, to * kvge::kPi / 180};
}

/// Crossings of two curves found by brute force: chords of both, and Newton's method is left out; only
/// counted.
size_t crossingsOfChords(const KvGeCurve3d& a, const KvGeCurve3d& b, int steps) {
  std::vector<KvGePoint2d> pa, pb;
  for (int i = 0; i <= steps; ++i) {
    pa.push_back(kvge::planar(a.pointAtParam(a.startParam() + (a.endParam() - a.startParam()) * i / steps)));
    pb.push_back(kvge::planar(b.pointAtParam(b.startParam() + (b.endParam() - b.startParam()) * i / steps)));
  }
  size_t count = 0;
  for (int i = 0; i < steps; ++i)
    for (int k = 0; k < steps; ++k) {
      const auto at = [](const auto& row, int index) { return row[static_cast<size_t>(index)]; };
      const KvGePoint2d p = at(pa, i), q = at(pa, i + 1), r = at(pb, k), s = at(pb, k + 1);
      const double d0 = (q - p).crossProduct(r - p), d1 = (q - p).crossProduct(s - p);
      const double e0 = (s - r).crossProduct(p - r), e1 = (s - r).crossProduct(q - r);
      count += (d0 < 0) != (d1 < 0) && (e0 < 0) != (e1 < 0);
    }
  return count;
}

TEST(Intersect, NamedCases) {
  struct Row {
    const char* name;
    Curve a, b;
    size_t count;
  };
  const auto own = [](const KvGeCurve3d& c) { return c.clone(); };
  const Row rows[] = {
      {"cross", own(seg(0, 0, 10, 10)), own(seg(0, 10, 10, 0)), 1},
      {"end to end", own(seg(0, 0, 5, 0)), own(seg(5, 0, 9, 3)), 1},
      {"T", own(seg(0, 0, 10, 0)), own(seg(5, 0, 5, 4)), 1},
      {"short of it", own(seg(0, 0, 10, 0)), own(seg(5, 1e-9, 5, 4)), 0},
      {"parallel", own(seg(0, 0, 10, 0)), own(seg(0, 1, 10, 1)), 0},
      {"common stretch", own(seg(0, 0, 10, 0)), own(seg(4, 0, 20, 0)), 2},
      {"collinear, end to end", own(seg(0, 0, 10, 0)), own(seg(20, 0, 10, 0)), 1},
      {"collinear apart", own(seg(0, 0, 10, 0)), own(seg(11, 0, 20, 0)), 0},
      {"within", own(seg(0, 0, 10, 0)), own(seg(2, 0, 3, 0)), 2},
      {"secant", own(seg(-9, 1, 9, 1)), own(circle(0, 0, 5)), 2},
      {"tangent", own(seg(-9, 5, 9, 5)), own(circle(0, 0, 5)), 1},
      {"tangent, slanted", own(seg(-4, 12, 12, 0)), own(circle(1, 2, 5)), 1},
      {"past", own(seg(-9, 5.0001, 9, 5.0001)), own(circle(0, 0, 5)), 0},
      {"inside", own(seg(-1, 0, 1, 0)), own(circle(0, 0, 5)), 0},
      {"arc's end", own(seg(0, 5, 9, 5)), own(arc(0, 0, 5, 90, 180)), 1},
      {"arc's gap", own(seg(-9, 3, 9, 3)), own(arc(0, 0, 5, -30, 30)), 0},
      {"circles", own(circle(0, 0, 5)), own(circle(6, 0, 5)), 2},
      {"circles touch outside", own(circle(0, 0, 2)), own(circle(5, 0, 3)), 1},
      {"circles touch inside", own(circle(0, 0, 5)), own(circle(2, 0, 3)), 1},
      {"circles touch inside, the other way", own(circle(2, 0, 3)), own(circle(0, 0, 5)), 1},
      {"concentric", own(circle(0, 0, 5)), own(circle(0, 0, 4)), 0},
      {"equal circles", own(circle(0, 0, 5)), own(circle(0, 0, 5)), 1},
      {"arc on circle", own(arc(0, 0, 5, 20, 70)), own(circle(0, 0, 5)), 2},
      {"arcs share a stretch", own(arc(0, 0, 5, 20, 70)), own(arc(0, 0, 5, 50, 100)), 2},
      {"arcs share both ends' stretches", own(arc(0, 0, 5, 0, 200)), own(arc(0, 0, 5, 180, 380)), 4},
      {"arcs meet at one end", own(arc(0, 0, 5, 20, 70)), own(arc(0, 0, 5, 70, 100)), 1},
      {"line through a vertex", own(seg(0, -5, 0, 5)), own(KvGePolyline3d({{{-3, 0}}, {{0, 0}}, {{3, 1}}})),
       1},
      {"circle's seam", own(seg(0, 0, 9, 0)), own(circle(0, 0, 5)), 1},
      {"closed polyline's seam", own(seg(-1, -0.2, 6, 1.2)),
       own(KvGePolyline3d({{{0, 0}}, {{5, -2}}, {{5, 2}}}, true)), 2},
      {"skew", own(seg(0, 0, 10, 10)), own(seg(0, 10, 10, 0, 1, 1)), 0},
      {"meet in space", own(seg(0, 0, 10, 10, 0, 10)), own(seg(0, 10, 10, 0, 5, 5)), 1},
      {"upright line through circle", own(seg(5, 0, 5, 0, -3, 3)), own(circle(0, 0, 5)), 1},
      {"upright line through the hole", own(seg(4, 0, 4, 0, -3, 3)), own(circle(0, 0, 5)), 0},
      {"linked rings that touch twice", own(circle(0, 0, 5)), own(KvGeCircArc3d({0, 0, 0}, {1, 0, 0}, 5)), 2},
      {"point on circle", own(seg(5, 0, 5, 0)), own(circle(0, 0, 5)), 1},
      {"ellipse and its director circle", own(circle(0, 0, 5)),
       own(KvGeEllipArc3d({0, 0, 0}, {8, 0, 0}, {0, 3, 0})), 4},
      {"ellipse touched from within", own(circle(0, 0, 3)),
       own(KvGeEllipArc3d({0, 0, 0}, {8, 0, 0}, {0, 3, 0})), 2},
      {"ellipses", own(KvGeEllipArc3d({0, 0, 0}, {8, 0, 0}, {0, 3, 0})),
       own(KvGeEllipArc3d({0, 0, 0}, {3, 0, 0}, {0, 8, 0})), 4},
      {"ellipse on itself", own(KvGeEllipArc3d({0, 0, 0}, {8, 0, 0}, {0, 3, 0}, 1, 2)),
       own(KvGeEllipArc3d({0, 0, 0}, {8, 0, 0}, {0, 3, 0}, 1.5, 3)), 2},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(meet(*row.a, *row.b).size(), row.count) << row.name;
    EXPECT_EQ(meet(*row.b, *row.a).size(), row.count) << row.name << ", other way";
    for (const KvGeCurveHit& hit : meet(*row.a, *row.b)) {
      EXPECT_LE(row.a->distanceTo(hit.point), 1e-11) << row.name;
      EXPECT_LE(row.b->distanceTo(hit.otherPoint), 1e-11) << row.name;
      EXPECT_LE(row.a->pointAtParam(hit.param).distanceTo(hit.point), 1e-10) << row.name;
      EXPECT_LE(row.b->pointAtParam(hit.otherParam).distanceTo(hit.otherPoint), 1e-10) << row.name;
    }
  }
}

TEST(Intersect, ExtensionByOperand) {
  const KvGeLineSeg3d a = seg(0, 0, 1, 0), b = seg(5, 1, 5, 2);
  EXPECT_EQ(meet(a, b).size(), 0u);
  EXPECT_EQ(meet(a, b, KvGe::kExtendThis).size(), 0u);
  EXPECT_EQ(meet(a, b, KvGe::kExtendArg).size(), 0u);
  const Hits both = meet(a, b, KvGe::kExtendBoth);
  ASSERT_EQ(both.size(), 1u);
  EXPECT_NEAR(both[0].param, 5, 1e-14);
  EXPECT_NEAR(both[0].otherParam, -1, 1e-14);
  EXPECT_EQ(meet(arc(0, 0, 5, 0, 90), seg(-9, -3, 9, -3), KvGe::kExtendThis).size(), 2u);
  EXPECT_EQ(
      meet(KvGePolyline3d({{{0, 0}}, {{1, 0}}, {{1, 1}}}), seg(-4, -3, -4, 3), KvGe::kExtendThis).size(), 1u);
}

TEST(Intersect, ProjectedPointsLieOnBothCurvesOneOverTheOther) {
  Hits hits;
  kvge::intersectProjected(seg(0, 0, 10, 10, 1, 3), seg(0, 10, 10, 0, 7, 7), KvGePlane::kXYPlane, hits);
  ASSERT_EQ(hits.size(), 1u);
  EXPECT_LE(hits[0].point.distanceTo({5, 5, 2}), 1e-13);
  EXPECT_LE(hits[0].otherPoint.distanceTo({5, 5, 7}), 1e-13);
  // A circle seen at an angle is an ellipse of half axes 5 and 3.
  const KvGeCircArc3d tilted({0, 0, 50}, {0, 0.8, 0.6}, 5);
  kvge::intersectProjected(seg(0, -9, 0, 9), tilted, KvGePlane::kXYPlane, hits);
  ASSERT_EQ(hits.size(), 2u);
  EXPECT_NEAR(std::fabs(hits[0].point.y), 3, 1e-12);
  EXPECT_LE(tilted.distanceTo(hits[0].otherPoint), 1e-10);
  // Seen edge-on it is a stretch that is run through twice.
  kvge::intersectProjected(seg(1, -9, 1, 9), KvGeCircArc3d({0, 0, 0}, {0, 1, 0}, 5), KvGePlane::kXYPlane,
                           hits);
  EXPECT_EQ(hits.size(), 2u);
}

/// Every pair of kinds: hits lie on both curves, come out the same the other way round, and are as many as
/// sampling finds.
class Pairs : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Kinds, Pairs, testing::Range(0, 64));

TEST_P(Pairs, HitsAreOnBothAndNoneIsMissed) {
  const int first = GetParam() / 8, second = GetParam() % 8;
  Dice d(100 + static_cast<unsigned>(GetParam()));
  int differing = 0;
  for (int run = 0; run < 12; ++run) {
    const Curve a = test::randomCurve(d, first), b = test::randomCurve(d, second);
    const Hits hits = meet(*a, *b), back = meet(*b, *a);
    EXPECT_EQ(hits.size(), back.size()) << run;
    for (const KvGeCurveHit& hit : hits) {
      EXPECT_LE(a->distanceTo(hit.point), 1e-10);
      EXPECT_LE(b->distanceTo(hit.otherPoint), 1e-10);
    }
    // Chords miss what lies within their height of a touch; most runs have none.
    differing += hits.size() != crossingsOfChords(*a, *b, 700);
  }
  EXPECT_LE(differing, 1);
}

TEST_P(Pairs, GridPairsAgreeAfterATurn) {
  const int first = GetParam() / 8, second = GetParam() % 8;
  Dice d(900 + static_cast<unsigned>(GetParam()));
  const KvGeMatrix3d turn = KvGeMatrix3d::rotation(0.7, {1, 2, 3}, {4, 5, 6});
  for (int run = 0; run < 12; ++run) {
    const Curve a = test::randomCurve(d, first, true), b = test::randomCurve(d, second, true);
    const Hits hits = meet(*a, *b), turned = meet(*a->transformed(turn), *b->transformed(turn));
    for (const KvGeCurveHit& hit : hits) {
      const KvGePoint3d p = turn * hit.point;
      const bool isFound = std::any_of(turned.begin(), turned.end(),
                                       [&](const KvGeCurveHit& o) { return o.point.distanceTo(p) < 1e-5; });
      EXPECT_TRUE(isFound) << run << ": " << hit.point.x << "," << hit.point.y << " of " << hits.size()
                           << " and " << turned.size();
    }
  }
}

TEST(Intersect, FarFromTheOriginKeepsItsDigits) {
  const double far = 500000;
  const KvGeCircArc3d c({far, far, 0}, KvGeVector3d::kZAxis, 25);
  const Hits hits = meet(KvGeLineSeg3d({far - 40, far + 7, 0}, {far + 40, far + 7, 0}), c);
  ASSERT_EQ(hits.size(), 2u);
  for (const KvGeCurveHit& hit : hits)
    EXPECT_LE(std::fabs(c.distanceTo(hit.otherPoint)), 3e-10);  // three units in the last place
}

TEST(Intersect, SplinesInSpace) {
  const auto c = KvGeNurbCurve3d::interpolate({{0, 0, 0}, {3, 4, 1}, {6, -2, 5}, {9, 3, 2}});
  const KvGePoint3d on = c->pointAtParam(c->endParam() * 0.6);
  EXPECT_EQ(meet(*c, KvGeLineSeg3d(on - KvGeVector3d(1, 2, 3), on + KvGeVector3d(1, 2, 3))).size(), 1u);
  EXPECT_EQ(meet(*c, KvGeLineSeg3d(on - KvGeVector3d(1, 2, 3), on + KvGeVector3d(1, 2, 3.001))).size(),
            1u - 1u);
  const auto other = KvGeNurbCurve3d::interpolate({{0, 5, 9}, on, {8, -8, 1}, {2, 2, 2}});
  EXPECT_EQ(meet(*c, *other).size(), 1u);
}

}  // namespace
