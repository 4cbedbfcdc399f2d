// Tolerances and asymmetries of points and angles, user systems, containment.
#include "module/toolkit/geometry.h"

#include <cmath>

#include "host/editor/sysvars.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "module/toolkit/guards.h"
#include "tests/toolkit/support.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

class GeometryTest : public test::ToolkitTest {
 protected:
  void setViewHeight(double height) {
    KvEdView view = kvedViewOf(drawing());
    view.height = height;
    ASSERT_EQ(kvedSetViewOf(drawing(), view), Kvad::eOk);
  }
};

TEST_F(GeometryTest, NumbersAndAngles) {
  EXPECT_FALSE(IM_RealEqual(0, 1e-10));  // strictly below
  EXPECT_TRUE(IM_RealEqual(0, 0.99e-10));
  EXPECT_EQ(IM_AngleEqual(1, 2, 0), 1);  // as callers have it
  EXPECT_EQ(IM_AngleEqual(1, 2, 1), 0);
  EXPECT_EQ(IM_AngleEqual(0.5, 0.5 + 2 * kPi, 1), 1);
  EXPECT_EQ(IM_AngleEqual(0.5 + 2 * kPi, 0.5, 1), 1);
  EXPECT_EQ(IM_AngleEqual(0.5, 0.5 + 4 * kPi, 1), 0);
}

TEST_F(GeometryTest, PointsAreEqualByTheView) {
  setViewHeight(50);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0.006, 0, 0), 0), 0);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0.0049, 0, 0), 0), 1);
  setViewHeight(1000);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0.006, 0, 0), 0), 1);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0.011, 0, 0), 0), 0);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0, 0, 1), 0), 0);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0, 0, 1), 1), 1);
  EXPECT_EQ(IM_PointEqual(nullptr, nullptr, 1), 0);
}

TEST_F(GeometryTest, ExtentsAndRectangles) {
  const KvDbExtents box({0, 0, 0}, {10, 5, 0});
  EXPECT_EQ(IM_ExtentContains(box, KvGePoint3d(10, 5, 99), 1), 1);
  EXPECT_EQ(IM_ExtentContains(box, KvGePoint3d(10, 4, 0), 0), 0);
  EXPECT_EQ(IM_ExtentContains(box, KvDbExtents({1, 1, 0}, {9, 5, 0}), 0), 0);
  EXPECT_EQ(IM_ExtentContains(box, KvDbExtents({1, 1, 0}, {9, 5, 0}), 1), 1);
  const KvGePoint3d a(0, 0, 0), b(4, 0, 0), c(4, 3, 0), d(0, 3, 0);
  EXPECT_EQ(IM_IsPointsBeRect(a, b, c, d), 1);
  EXPECT_EQ(IM_IsPointsBeRect(a, c, b, d), 0);
  EXPECT_EQ(IM_IsPointsBeRect({0, 0, 0}, {1, 1, 0}, {0, 2, 0}, {-1, 1, 0}), 0);  // turned by 45 degrees
  EXPECT_EQ(IM_IsPointsBeRect(a, b, {4.0001, 3, 0}, d), 0);
}

TEST_F(GeometryTest, UserSystemsThereAndBack) {
  const struct {
    KvGePoint3d origin;
    KvGeVector3d x, y;
  } systems[] = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                 {{5, -3, 2}, {0, 1, 0}, {-1, 0, 0}},
                 {{1, 1, 0}, {std::cos(0.6), std::sin(0.6), 0}, {-std::sin(0.6), std::cos(0.6), 0}}};
  for (const auto& system : systems) {
    KvGeMatrix3d matrix;
    matrix.setCoordSystem(system.origin, system.x, system.y, system.x.crossProduct(system.y));
    ASSERT_EQ(kvedSetCurrentUCS(matrix), Kvad::eOk);
    KvGePoint3d point(7, 8, 9);
    IM_UcsToWcs(point);
    EXPECT_TRUE(point.isEqualTo(matrix * KvGePoint3d(7, 8, 9)));
    IM_WcsToUcs(point);
    EXPECT_TRUE(point.isEqualTo({7, 8, 9}));
    KvGeVector3d vector(1, 0, 0);
    IM_UcsToWcs(vector);  // displacements know no origin
    EXPECT_TRUE(vector.isEqualTo(system.x));
    EXPECT_NEAR(IM_GetUcsAngle(), kvge::normalizedAngle(std::atan2(system.x.y, system.x.x)), 1e-9);
    for (double angle : {0.0, 1.0, 4.0}) {
      const KvGeVector3d direction = IM_WcsAngleToVector(angle);
      EXPECT_TRUE(direction.isEqualTo({std::cos(angle), std::sin(angle), 0})) << angle;
      EXPECT_NEAR(std::remainder(IM_WcsVectorToAngle(direction) - angle, 2 * kPi), 0, 1e-9);
    }
  }
  KvGePoint3d untouched(1, 2, 3);
  IM_UcsToWcs(static_cast<double*>(nullptr));
  host->documents().close(host->documents().curDocument());
  IM_UcsToWcs(untouched);  // without a drawing the input comes back
  EXPECT_EQ(untouched, KvGePoint3d(1, 2, 3));
  host->newDocument();
}

TEST_F(GeometryTest, BulgesThereAndBack) {
  double start[3] = {10, 0, 0}, end[3] = {0, 10, 0}, center[3], radius = 0;
  for (double bulge : {std::tan(kPi / 8), -std::tan(kPi / 8), 1.0, 2.5}) {
    ASSERT_EQ(IM_GetAngleFromTd(start, bulge, end, center, radius), 1);
    EXPECT_EQ(std::signbit(radius), bulge < 0);
    EXPECT_NEAR(std::hypot(start[0] - center[0], start[1] - center[1]), std::fabs(radius), 1e-7);
    double back = 0;
    const bool isForward = bulge > 0;
    ASSERT_EQ(IM_GetTdFromAngle(isForward ? start : end, center, isForward ? end : start, back), 1);
    EXPECT_NEAR(back, std::fabs(bulge), 1e-7);
  }
  EXPECT_EQ(IM_GetAngleFromTd(start, 0, end, center, radius), 0);
  EXPECT_EQ(IM_GetAngleFromTd(nullptr, 1, end, center, radius), 0);
  double bulge = 0;
  ASSERT_EQ(IM_GetTdFromAngle({1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, bulge), 1);
  EXPECT_NEAR(bulge, 1, 1e-12);
  ASSERT_EQ(IM_GetTdFromAngle({-1, 0, 0}, {0, 1, 0}, {1, 0, 0}, bulge), 1);
  EXPECT_NEAR(bulge, -1, 1e-12);
  EXPECT_EQ(IM_GetTdFromAngle({0, 0, 0}, {1, 0, 0}, {2, 0, 0}, bulge), 0);
}

TEST_F(GeometryTest, CircleByTangentAndPoint) {
  KvGePoint3d center;
  ASSERT_EQ(IM_GetCenterFromTangentAndPoint({1, 0, 0}, {0, 0, 0}, {5, 5, 0}, center), 1);
  EXPECT_TRUE(center.isEqualTo({0, 5, 0}));
  ASSERT_EQ(IM_GetCenterFromTangentAndPoint({1, 0, 0}, {0, 0, 0}, {3, -9, 0}, center), 1);
  EXPECT_TRUE(center.isEqualTo({0, -5, 0}));
  EXPECT_EQ(IM_GetCenterFromTangentAndPoint({1, 0, 0}, {0, 0, 0}, {5, 0.00001, 0}, center), 0);
  // Seen from above: what a tangent climbs doesn't count, and one that only climbs has no direction.
  ASSERT_EQ(IM_GetCenterFromTangentAndPoint({1, 0, 7}, {0, 0, 2}, {5, 5, 9}, center), 1);
  EXPECT_TRUE(center.isEqualTo({0, 5, 2}));
  EXPECT_EQ(IM_GetCenterFromTangentAndPoint({0, 0, 1}, {0, 0, 0}, {5, 5, 0}, center), 0);
  EXPECT_EQ(IM_GetCenterFromTangentAndPoint({0, 0, 0}, {0, 0, 0}, {5, 5, 0}, center), 0);
  EXPECT_EQ(IM_GetCenterFromTangentAndPoint({std::nan(""), 0, 0}, {0, 0, 0}, {5, 5, 0}, center), 0);
}

TEST_F(GeometryTest, InsideClosedCurves) {
  KvDbPolyline star;  // arms whose tips lie on the rays of the first tries
  for (int i = 0; i < 10; ++i) {
    const double angle = i * kPi / 5, radius = i % 2 ? 4 : 10;
    star.addVertexAt(i, {radius * std::cos(angle), radius * std::sin(angle)});
  }
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {0, 0, 0}), 1);  // open
  star.setClosed(true);
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {0, 0, 0}), 0);  // the first ray meets a tip
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {9.9, 0, 0}), 0);
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {-9.9, 0, 0}), 1);
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {10, 0, 0}), 2);
  EXPECT_EQ(IM_IsPointInsideCurve(&star, {20, 0, 0}), 1);
  const KvDbCircle circle({0, 0, 0}, KvGeVector3d::kZAxis, 5);
  EXPECT_EQ(IM_IsPointInsideCurve(&circle, {3, 3, 0}), 0);
  EXPECT_EQ(IM_IsPointInsideCurve(&circle, {3, 4, 0}), 2);
  EXPECT_EQ(IM_IsPointInsideCurve(&circle, {4, 4, 0}), 1);
  EXPECT_EQ(IM_IsPointInsideCurve(nullptr, {0, 0, 0}), 1);
  std::vector<KvGePoint3d> vertices;
  EXPECT_EQ(IM_GetVertexPoints(&circle, vertices), 1);
  EXPECT_TRUE(vertices.empty());
  EXPECT_EQ(IM_GetVertexPoints(&star, vertices), 1);
  EXPECT_EQ(vertices.size(), 10u);
  KvDbXline endless;
  EXPECT_EQ(IM_GetVertexPoints(&endless, vertices), 0);
}

TEST_F(GeometryTest, InsideCurvesFarFromTheOrigin) {
  // The first rays of every point meet a vertex, wherever the drawing lies.
  for (const double offset : {0.0, 1234.5678, 1e6 + 0.1, 4.5e8 + 0.3}) {
    const auto at = [&](double x, double y) { return KvGePoint3d(x + offset, y - offset / 3, 0); };
    KvDbPolyline comb;
    constexpr double kTeeth[][2] = {{0, 0},   {10, 0},   {10, 1.1}, {4, 2.3}, {9.7, 3.3},
                                    {4, 4.7}, {10, 5.9}, {10, 8},   {0, 8}};
    unsigned int index = 0;
    for (const auto& tooth : kTeeth) {
      const KvGePoint3d p = at(tooth[0], tooth[1]);
      comb.addVertexAt(static_cast<int>(index++), {p.x, p.y});
    }
    comb.setClosed(true);
    for (const auto& tooth : kTeeth) {
      SCOPED_TRACE(testing::Message() << offset << ", level with " << tooth[0] << " " << tooth[1]);
      if (tooth[1] > 0 && tooth[1] < 8) {
        EXPECT_EQ(IM_IsPointInsideCurve(&comb, at(1.3, tooth[1])), 0);
        EXPECT_EQ(IM_IsPointInsideCurve(&comb, at(-1.3, tooth[1])), 1);
      }
    }
    EXPECT_EQ(IM_IsPointInsideCurve(&comb, at(8, 2.3)), 1);
    EXPECT_EQ(IM_IsPointInsideCurve(&comb, at(8, 4.7)), 1);
  }
}

TEST_F(GeometryTest, PickBoxIsMeasuredInTheView) {
  setViewHeight(1080);  // of a screen of 1080 pixels
  const ImSetSysVar box(L"PICKBOX", 5, 1);
  EXPECT_NEAR(IM_GetPickBoxSize(), 5, 1e-9);
  EXPECT_NEAR(IM_GetPickBoxDist(), 5 * 1.414, 1e-9);
  EXPECT_NEAR(IM_GetPickBoxTol().equalPoint(), 5 * 1.414, 1e-9);
  const ImSetSysVar none(L"PICKBOX", 0, 1);
  EXPECT_EQ(IM_GetPickBoxSize(), 1);
}

}  // namespace
