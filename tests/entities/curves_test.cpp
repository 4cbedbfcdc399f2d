// Simple entities: extents, affine maps, and angles that files keep to the last digit.
#include "host/entities/curves.h"

#include "host/entities/polyline.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr double kClose = 1e-12;

void expectBox(const KvDbEntity& entity, const KvGePoint3d& least, const KvGePoint3d& greatest) {
  KvDbExtents extents;
  ASSERT_EQ(entity.getGeomExtents(extents), Kvad::eOk);
  EXPECT_LT(extents.minPoint().distanceTo(least), kClose)
      << extents.minPoint().x << " " << extents.minPoint().y;
  EXPECT_LT(extents.maxPoint().distanceTo(greatest), kClose)
      << extents.maxPoint().x << " " << extents.maxPoint().y;
}

TEST(Curves, ExtentsAreTight) {
  const double root = std::sqrt(0.5);
  expectBox(KvDbArc({0, 0, 0}, KvGeVector3d::kZAxis, 1, kvge::kPi / 4, 3 * kvge::kPi / 4), {-root, root, 0},
            {root, 1, 0});
  expectBox(KvDbArc({0, 0, 0}, KvGeVector3d::kZAxis, 1, 7 * kvge::kPi / 4, kvge::kPi / 4), {root, -root, 0},
            {1, root, 0});
  expectBox(KvDbArc({5, 5, 0}, KvGeVector3d::kZAxis, 2, 1, 1), {3, 3, 0},
            {7, 7, 0});  // equal ends: the whole turn
  expectBox(KvDbCircle({1, 2, 3}, {0, 1, 0}, 2), {-1, 2, 1}, {3, 2, 5});
  expectBox(KvDbLine({1, 5, 0}, {-2, 3, 4}), {-2, 3, 0}, {1, 5, 4});
}

TEST(Curves, MapsMoveEveryPointOfAnArc) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> number(-5, 5), angle(0, kvge::kTwoPi), size(0.1, 3);
  for (int round = 0; round < 2000; ++round) {
    const KvGeVector3d normal = KvGeVector3d(number(random), number(random), number(random)).normal();
    KvDbArc arc({number(random), number(random), number(random)}, normal, size(random), angle(random),
                angle(random));
    KvGeMatrix3d map = KvGeMatrix3d::rotation(angle(random), {number(random), number(random), 1}) *
                       KvGeMatrix3d::scaling(size(random)) *
                       KvGeMatrix3d::translation({number(random), 0, number(random)});
    if (round % 2)
      map = map * KvGeMatrix3d().setToMirroring(KvGePlane({1, 0, 0}, {number(random), 1, number(random)}));
    const KvGePoint3d ends[] = {map * arc.startPoint(), map * arc.endPoint()};
    const KvGePoint3d middle = map * arc.pointAtAngle(arc.startAngle() + arc.totalAngle() / 2);
    ASSERT_EQ(arc.transformBy(map), Kvad::eOk);
    const bool isMirrored = map.det() < 0;
    const double allowed = 1e-9;
    // A mirrored arc may run from what was its end; the middle tells that it is the same piece of the circle.
    const bool same =
        arc.startPoint().distanceTo(ends[0]) < allowed && arc.endPoint().distanceTo(ends[1]) < allowed;
    const bool turned =
        arc.startPoint().distanceTo(ends[1]) < allowed && arc.endPoint().distanceTo(ends[0]) < allowed;
    EXPECT_TRUE(same || (isMirrored && turned)) << round;
    EXPECT_LT(arc.pointAtAngle(arc.startAngle() + arc.totalAngle() / 2).distanceTo(middle), allowed)
        << round << (isMirrored ? " mirrored" : "");
  }
}

TEST(Polylines, ExtentsReachTheTopsOfArcs) {
  KvDbPolyline polyline;
  polyline.addVertexAt(0, {0, 0}, 1);  // a half circle below the X axis
  polyline.addVertexAt(1, {2, 0});
  polyline.addVertexAt(2, {2, 3}, -1);  // and one above, turned the other way
  polyline.addVertexAt(3, {4, 3});
  expectBox(polyline, {0, -1, 0}, {4, 4, 0});
  EXPECT_EQ(polyline.segType(0), KvDbPolyline::kArc);
  EXPECT_EQ(polyline.segType(1), KvDbPolyline::kLine);
  EXPECT_EQ(polyline.segType(3), KvDbPolyline::kEmpty);
  polyline.setClosed(true);
  EXPECT_EQ(polyline.segType(3), KvDbPolyline::kLine);
  EXPECT_EQ(polyline.addVertexAt(9, {}), Kvad::eInvalidIndex);
  EXPECT_EQ(polyline.removeVertexAt(-1), Kvad::eInvalidIndex);
}

TEST(Polylines, MapsCarryVerticesBulgesAndWidths) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> number(-5, 5), angle(0, kvge::kTwoPi), size(0.1, 3);
  for (int round = 0; round < 500; ++round) {
    KvDbPolyline polyline;
    for (int i = 0; i < 4; ++i) polyline.addVertexAt(i, {number(random), number(random)}, number(random) / 5);
    polyline.setElevation(number(random));
    polyline.setConstantWidth(0.5);
    KvGeMatrix3d map =
        KvGeMatrix3d::rotation(angle(random), {number(random), number(random), 1}) * KvGeMatrix3d::scaling(2);
    if (round % 2)
      map = map * KvGeMatrix3d().setToMirroring(KvGePlane({1, 0, 0}, {number(random), 1, number(random)}));
    // The top of an arc segment: the middle of the chord, moved by half the bulge of its length.
    const auto top = [](const KvDbPolyline& p, int i) {
      KvGePoint3d from, to;
      double bulge = 0;
      p.getPointAt(i, from);
      p.getPointAt(i + 1, to);
      p.getBulgeAt(i, bulge);
      const KvGeVector3d chord = to - from;
      return kvge::midpoint(from, to) - p.normal().crossProduct(chord) * (bulge / 2);
    };
    const KvGePoint3d before = map * top(polyline, 1);
    KvGePoint3d corner;
    polyline.getPointAt(3, corner);
    ASSERT_EQ(polyline.transformBy(map), Kvad::eOk);
    EXPECT_LT(top(polyline, 1).distanceTo(before), 1e-9) << round;
    KvGePoint3d moved;
    polyline.getPointAt(3, moved);
    EXPECT_LT(moved.distanceTo(map * corner), 1e-9) << round;
    double width = 0;
    EXPECT_EQ(polyline.getConstantWidth(width), Kvad::eOk);
    EXPECT_NEAR(width, 1.0, 1e-12);
  }
}

TEST(Curves, UnevenScalesAreRefused) {
  KvGeMatrix3d uneven;
  uneven.entry[0][0] = 2;
  KvDbCircle circle({1, 1, 0}, KvGeVector3d::kZAxis, 2);
  EXPECT_EQ(circle.transformBy(uneven), Kvad::eCannotScaleNonUniformly);
  EXPECT_EQ(circle.center(), KvGePoint3d(1, 1, 0));
  EXPECT_EQ(circle.setRadius(0), Kvad::eInvalidInput);
  EXPECT_EQ(circle.setRadius(std::nan("")), Kvad::eInvalidInput);
  KvDbLine line({1, 1, 0}, {2, 2, 0});
  EXPECT_EQ(line.transformBy(uneven), Kvad::eOk);
  EXPECT_EQ(line.endPoint(), KvGePoint3d(4, 2, 0));
  KvDbRay ray;
  EXPECT_EQ(ray.setUnitDir({0, 0, 0}), Kvad::eInvalidInput);
  KvDbSolid solid;
  EXPECT_EQ(solid.setPointAt(4, {}), Kvad::eInvalidIndex);
}

TEST(Curves, DegreesGoThereAndBack) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> angle(-10, 10);
  for (int round = 0; round < 20000; ++round) {
    const double radians = angle(random);
    ASSERT_DOUBLE_EQ(kvdxfRadians(kvdxfDegrees(radians)), radians);
  }
  EXPECT_EQ(kvdxfDegrees(kvge::kPi / 2), 90);
  EXPECT_EQ(kvdxfDegrees(kvge::kPi / 6), 30);
}

}  // namespace
