// The calls that all curves answer: known values, round trips, splitting, crossings.
#include "host/entities/curve.h"

#include <gtest/gtest.h>

#include <random>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"
#include "host/io/drawing_file.h"

namespace {

using CurvePtr = std::unique_ptr<KvDbCurve>;

std::unique_ptr<KvDbPolyline> polyline(std::initializer_list<KvDbPolyline::Vertex> vertices, bool closed) {
  auto made = std::make_unique<KvDbPolyline>();
  for (const auto& v : vertices)
    made->addVertexAt(made->numVerts(), v.point, v.bulge, v.startWidth, v.endWidth);
  made->setClosed(closed);
  return made;
}

KvGePoint3dArray points(std::initializer_list<KvGePoint3d> all) {
  KvGePoint3dArray array;
  for (const KvGePoint3d& p : all) array.append(p);
  return array;
}

/// One of each class with ends, in general position.
std::vector<CurvePtr> samples() {
  const KvGeVector3d tilted = KvGeVector3d(1, 2, 3).normal();
  std::vector<CurvePtr> all;
  all.push_back(std::make_unique<KvDbLine>(KvGePoint3d(1, 2, 3), KvGePoint3d(7, -4, 2)));
  all.push_back(std::make_unique<KvDbCircle>(KvGePoint3d(3, 1, -2), tilted, 5));
  all.push_back(std::make_unique<KvDbArc>(KvGePoint3d(3, 1, -2), tilted, 5, 5.5, 1.25));
  all.push_back(
      std::make_unique<KvDbEllipse>(KvGePoint3d(1, 1, 0), KvGeVector3d::kZAxis, KvGeVector3d(6, 2, 0), 0.4));
  all.push_back(std::make_unique<KvDbEllipse>(KvGePoint3d(1, 1, 0), KvGeVector3d::kZAxis,
                                              KvGeVector3d(6, 2, 0), 0.4, 1, 4));
  all.push_back(polyline({{{0, 0}, 0.5}, {{10, 0}}, {{10, 8}, -0.3}, {{2, 9}}}, true));
  all.back()->transformBy(KvGeMatrix3d::rotation(0.7, {1, 1, 0}));
  all.push_back(polyline({{{0, 0}}, {{10, 0}, 1.5}, {{10, 8}}}, false));
  all.push_back(std::make_unique<KvDbSpline>(points({{0, 0, 0}, {3, 5, 1}, {8, 2, 2}, {9, 9, 0}})));
  all.push_back(std::make_unique<KvDb3dPolyline>(
      std::vector<KvGePoint3d>{{0, 0, 0}, {4, 0, 3}, {4, 4, 3}, {0, 0, 8}}, false));
  return all;
}

double lengthOf(const KvDbCurve& curve) {
  double start = 0, end = 0, from = 0, to = 0;
  EXPECT_EQ(curve.getStartParam(start), Kvad::eOk);
  EXPECT_EQ(curve.getEndParam(end), Kvad::eOk);
  EXPECT_EQ(curve.getDistAtParam(start, from), Kvad::eOk);
  EXPECT_EQ(curve.getDistAtParam(end, to), Kvad::eOk);
  EXPECT_NEAR(from, 0, 1e-12);
  return to;
}

TEST(Curve, ParametersAreThoseThatUsersKnow) {
  double value = 0;
  const KvDbLine line({0, 0, 0}, {3, 4, 0});
  ASSERT_EQ(line.getEndParam(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 5);
  const KvDbArc arc({0, 0, 0}, KvGeVector3d::kZAxis, 2, kvge::kPi / 2, kvge::kPi);
  ASSERT_EQ(arc.getStartParam(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, kvge::kPi / 2);
  const auto bent = polyline({{{0, 0}, 1}, {{2, 0}}, {{2, 4}}}, false);
  KvGePoint3d at;
  ASSERT_EQ(bent->getPointAtParam(0.5, at), Kvad::eOk);  // a half circle below the chord
  EXPECT_LT(at.distanceTo({1, -1, 0}), 1e-12);
  ASSERT_EQ(bent->getDistAtParam(1.25, value), Kvad::eOk);
  EXPECT_NEAR(value, kvge::kPi + 1, 1e-12);
  ASSERT_EQ(bent->getParamAtDist(kvge::kPi + 3, value), Kvad::eOk);
  EXPECT_NEAR(value, 1.75, 1e-12);
}

TEST(Curve, WhatIsNotOnTheCurveIsAStatus) {
  const KvDbLine line({0, 0, 0}, {10, 0, 0});
  double value = -7;
  KvGePoint3d at(5, 5, 5);
  EXPECT_EQ(line.getParamAtPoint({5, 1e-5, 0}, value), Kvad::eNotOnCurve);
  EXPECT_EQ(line.getPointAtParam(10.1, at), Kvad::eOutOfRange);
  EXPECT_EQ(line.getPointAtParam(std::nan(""), at), Kvad::eOutOfRange);
  EXPECT_EQ(line.getParamAtDist(11, value), Kvad::eOutOfRange);
  EXPECT_EQ(line.getParamAtDist(-1, value), Kvad::eOutOfRange);
  EXPECT_EQ(line.getClosestPointTo({std::nan(""), 0, 0}, at), Kvad::eInvalidInput);
  EXPECT_EQ(value, -7);  // results stay as they were
  EXPECT_EQ(at, KvGePoint3d(5, 5, 5));
  EXPECT_EQ(KvDbPolyline().getEndPoint(at), Kvad::eDegenerateGeometry);
  EXPECT_EQ(KvDbXline().getStartPoint(at), Kvad::eNotApplicable);
  EXPECT_EQ(KvDbRay().getEndPoint(at), Kvad::eNotApplicable);
  EXPECT_EQ(KvDbRay().getStartPoint(at), Kvad::eOk);
}

TEST(Curve, ParameterPointAndLengthAgreeOnEveryClass) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> share(0.001, 0.999);
  for (const CurvePtr& curve : samples()) {
    double start = 0, end = 0;
    curve->getStartParam(start);
    curve->getEndParam(end);
    const double whole = lengthOf(*curve);
    for (int round = 0; round < 60; ++round) {
      const double param = start + (end - start) * share(random);
      KvGePoint3d at, byLength;
      double back = 0, distance = 0;
      ASSERT_EQ(curve->getPointAtParam(param, at), Kvad::eOk);
      ASSERT_EQ(curve->getParamAtPoint(at, back), Kvad::eOk);
      EXPECT_NEAR(back, param, 1e-8 * (1 + std::fabs(param)));
      ASSERT_EQ(curve->getDistAtParam(param, distance), Kvad::eOk);
      EXPECT_GT(distance, 0);
      EXPECT_LT(distance, whole);
      ASSERT_EQ(curve->getPointAtDist(distance, byLength), Kvad::eOk);
      EXPECT_LT(byLength.distanceTo(at), 1e-9);
      // The slope tells how fast the length grows.
      KvGeVector3d slope;
      double further = 0;
      const double step = 1e-6 * (end - start);
      ASSERT_EQ(curve->getFirstDeriv(param, slope), Kvad::eOk);
      const bool isSameSpan = std::floor(param + step) == std::floor(param);
      if (curve->getDistAtParam(param + step, further) == Kvad::eOk && isSameSpan) {
        EXPECT_NEAR((further - distance) / step, slope.length(), 1e-3 * slope.length());
      }
    }
  }
}

TEST(Curve, SplittingKeepsTheLengthAndTheOrder) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> share(0.02, 0.98);
  for (const CurvePtr& curve : samples()) {
    curve->setColorIndex(3);
    double start = 0, end = 0;
    curve->getStartParam(start);
    curve->getEndParam(end);
    KvGePoint3dArray cuts;
    for (int i = 0; i < 4; ++i) {
      KvGePoint3d at;
      curve->getPointAtParam(start + (end - start) * share(random), at);
      cuts.append(at);
    }
    cuts.append(KvGePoint3d(1000, 0, 0));  // not on the curve
    KvDbVoidPtrArray pieces;
    ASSERT_EQ(curve->getSplitCurves(cuts, pieces), Kvad::eOk);
    EXPECT_EQ(pieces.length(), curve->isPeriodic() ? 4 : 5);
    double sum = 0;
    KvGePoint3d before;
    for (int i = 0; i < pieces.length(); ++i) {
      const CurvePtr piece(KvDbCurve::cast(static_cast<KvDbEntity*>(pieces[i])));
      ASSERT_TRUE(piece);
      sum += lengthOf(*piece);
      EXPECT_EQ(piece->colorIndex(), 3);
      EXPECT_EQ(piece->database(), nullptr);
      KvGePoint3d first, last;
      piece->getStartPoint(first);
      piece->getEndPoint(last);
      EXPECT_TRUE(i == 0 || first.distanceTo(before) < 1e-10);
      before = last;
    }
    EXPECT_NEAR(sum, lengthOf(*curve), 1e-9);
  }
}

TEST(Curve, ACutThatCutsNothingIsToldSo) {
  KvDbVoidPtrArray pieces;
  const KvDbLine line({0, 0, 0}, {10, 0, 0});
  EXPECT_EQ(line.getSplitCurves(points({}), pieces), Kvad::eInvalidInput);
  EXPECT_EQ(line.getSplitCurves(points({{0, 0, 0}, {10, 0, 0}}), pieces), Kvad::eInvalidInput);
  EXPECT_EQ(pieces.length(), 0);
  // A circle cut once is one arc of a whole turn.
  const KvDbCircle circle({0, 0, 0}, KvGeVector3d::kZAxis, 3);
  ASSERT_EQ(circle.getSplitCurves(points({{0, 3, 0}}), pieces), Kvad::eOk);
  ASSERT_EQ(pieces.length(), 1);
  const std::unique_ptr<KvDbArc> arc(KvDbArc::cast(static_cast<KvDbEntity*>(pieces[0])));
  ASSERT_TRUE(arc);
  EXPECT_NEAR(arc->totalAngle(), kvge::kTwoPi, 1e-12);
  EXPECT_LT(arc->startPoint().distanceTo({0, 3, 0}), 1e-12);
}

TEST(Curve, PiecesOfAWidePolylineTaperAsTheWholeDid) {
  const auto wide = polyline({{{0, 0}, 0, 0, 4}, {{10, 0}, 0, 4, 4}, {{20, 0}, 0, 0, 0}}, false);
  KvDbVoidPtrArray pieces;
  ASSERT_EQ(wide->getSplitCurves(points({{5, 0, 0}, {15, 0, 0}}), pieces), Kvad::eOk);
  ASSERT_EQ(pieces.length(), 3);
  const double expected[3][4] = {{0, 2, 0, 0}, {2, 4, 4, 4}, {4, 4, 0, 0}};
  for (int i = 0; i < 3; ++i) {
    const std::unique_ptr<KvDbPolyline> piece(KvDbPolyline::cast(static_cast<KvDbEntity*>(pieces[i])));
    double start = 0, end = 0;
    for (int k = 0; k < piece->numVerts() - 1; ++k) {
      piece->getWidthsAt(k, start, end);
      EXPECT_DOUBLE_EQ(start, expected[i][2 * k]) << i;
      EXPECT_DOUBLE_EQ(end, expected[i][2 * k + 1]) << i;
    }
  }
}

TEST(Curve, NearestPointsAlongADirectionAndWithContinuation) {
  KvGePoint3d at;
  const KvDbLine line({0, 0, 0}, {10, 0, 0});
  ASSERT_EQ(line.getClosestPointTo({12, 3, 0}, at), Kvad::eOk);
  EXPECT_LT(at.distanceTo({10, 0, 0}), 1e-12);
  ASSERT_EQ(line.getClosestPointTo({12, 3, 0}, at, true), Kvad::eOk);
  EXPECT_LT(at.distanceTo({12, 0, 0}), 1e-12);
  // A circle at a height, seen from above: the height doesn't count.
  const KvDbCircle circle({0, 0, 50}, KvGeVector3d::kZAxis, 5);
  ASSERT_EQ(circle.getClosestPointTo({3, 4, 0}, KvGeVector3d::kZAxis, at), Kvad::eOk);
  EXPECT_LT(at.distanceTo({3, 4, 50}), 1e-11);
  // A slanting line seen from above.
  const KvDbLine slanting({0, 0, 0}, {10, 0, 10});
  ASSERT_EQ(slanting.getClosestPointTo({4, 1, 0}, KvGeVector3d::kZAxis, at), Kvad::eOk);
  EXPECT_LT(at.distanceTo({4, 0, 4}), 1e-11);
  EXPECT_EQ(slanting.getClosestPointTo({4, 1, 0}, KvGeVector3d(0, 0, 0), at), Kvad::eInvalidInput);
}

// Widths come to few polylines, and late: they stay with their vertices whatever is put in, taken out or
// turned.
TEST(Polyline, WidthsStayWithTheirVertices) {
  const auto widthsOf = [](const KvDbPolyline& line) {
    std::vector<double> widths;
    for (int i = 0; i < line.numVerts(); ++i) {
      double start = -1, end = -1;
      EXPECT_EQ(line.getWidthsAt(i, start, end), Kvad::eOk);
      widths.insert(widths.end(), {start, end});
    }
    return widths;
  };
  using Widths = std::vector<double>;
  KvDbPolyline line;
  for (int i = 0; i < 3; ++i) line.addVertexAt(i, {1.0 * i, 0});
  EXPECT_FALSE(line.hasWidth());
  line.setConstantWidth(7);
  EXPECT_EQ(widthsOf(line), Widths({7, 7, 7, 7, 7, 7}));
  line.setWidthsAt(1, 2, 3);  // from now on each has its own
  EXPECT_EQ(widthsOf(line), Widths({7, 7, 2, 3, 7, 7}));
  line.addVertexAt(0, {-1, 0}, 0.5);
  line.addVertexAt(4, {9, 0}, 0, 4, 5);
  EXPECT_EQ(widthsOf(line), Widths({0, 0, 7, 7, 2, 3, 7, 7, 4, 5}));
  line.removeVertexAt(1);
  EXPECT_EQ(widthsOf(line), Widths({0, 0, 2, 3, 7, 7, 4, 5}));
  line.transformBy(KvGeMatrix3d::scaling(2));
  EXPECT_EQ(widthsOf(line), Widths({0, 0, 4, 6, 14, 14, 8, 10}));
  line.reverseCurve();
  EXPECT_EQ(widthsOf(line), Widths({14, 14, 6, 4, 0, 0, 10, 8}));
  const std::unique_ptr<KvDbObject> copy(line.clone());
  EXPECT_EQ(widthsOf(*KvDbPolyline::cast(copy.get())), widthsOf(line));
  line.setConstantWidth(1);
  EXPECT_EQ(widthsOf(line), Widths(8, 1));
}

TEST(Curve, AreasAreExact) {
  double area = 0;
  ASSERT_EQ(KvDbCircle({9, 9, 9}, {1, 1, 1}, 2).getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 4 * kvge::kPi, 1e-12);
  ASSERT_EQ(polyline({{{0, 0}, 1}, {{2, 0}, 1}}, true)->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, kvge::kPi, 1e-12);
  ASSERT_EQ(polyline({{{0, 0}, -1}, {{4, 0}}, {{4, 4}}, {{0, 4}}}, true)->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 16 - 2 * kvge::kPi, 1e-12);
  ASSERT_EQ(KvDbEllipse({0, 0, 0}, KvGeVector3d::kZAxis, {3, 0, 0}, 0.5).getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 4.5 * kvge::kPi, 1e-10);
  ASSERT_EQ(KvDbArc({0, 0, 0}, KvGeVector3d::kZAxis, 2, 0, kvge::kPi).getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 2 * kvge::kPi, 1e-10);
  EXPECT_EQ(KvDb3dPolyline({{0, 0, 0}, {1, 0, 0}, {0, 1, 1}, {0, 0, 5}}, true).getArea(area),
            Kvad::eNonPlanarEntity);
}

TEST(Curve, ReversedCurvesRunTheSameWayBack) {
  for (const CurvePtr& curve : samples()) {
    const double whole = lengthOf(*curve);
    KvGePoint3d before, after;
    curve->getPointAtDist(whole * 0.3, before);
    if (curve->reverseCurve() != Kvad::eOk) continue;
    curve->getPointAtDist(whole * 0.7, after);
    // A closed polyline keeps its outline; its seam may move by one vertex.
    EXPECT_TRUE(curve->isClosed() || before.distanceTo(after) < 1e-9);
    EXPECT_NEAR(lengthOf(*curve), whole, 1e-9);
  }
}

TEST(Curve, CrossingsLieOnBothCurves) {
  const auto all = samples();
  int found = 0;
  for (const CurvePtr& a : all)
    for (const CurvePtr& b : all) {
      if (a == b) continue;
      KvGePoint3dArray hits;
      ASSERT_EQ(a->intersectWith(b.get(), KvDb::kOnBothOperands, KvGePlane::kXYPlane, hits), Kvad::eOk);
      for (const KvGePoint3d& hit : hits) {
        KvGePoint3d own, other;
        a->getClosestPointTo(hit, own);
        b->getClosestPointTo(hit, KvGeVector3d::kZAxis, other);
        EXPECT_LT(own.distanceTo(hit), 1e-9);
        EXPECT_LT(std::hypot(other.x - hit.x, other.y - hit.y), 1e-8);
        ++found;
      }
    }
  EXPECT_GT(found, 20);
}

TEST(Curve, CrossingsByExtension) {
  const KvDbLine a({0, 0, 0}, {1, 0, 0}), b({5, -2, 0}, {5, -1, 0});
  const struct {
    KvDb::Intersect type;
    int count;
  } cases[] = {
      {KvDb::kOnBothOperands, 0}, {KvDb::kExtendThis, 0}, {KvDb::kExtendArg, 0}, {KvDb::kExtendBoth, 1}};
  for (const auto& c : cases) {
    KvGePoint3dArray hits;
    EXPECT_EQ(a.intersectWith(&b, c.type, hits), Kvad::eOk);
    EXPECT_EQ(hits.length(), c.count);
  }
  KvGePoint3dArray hits;
  EXPECT_EQ(a.intersectWith(nullptr, KvDb::kOnBothOperands, hits), Kvad::eNullEntityPointer);
  // A vertex where two segments meet the other curve is one crossing.
  const auto corner = polyline({{{0, 0}}, {{5, 5}}, {{10, 0}}}, false);
  const KvDbLine through({5, 0, 0}, {5, 10, 0});
  through.intersectWith(corner.get(), KvDb::kOnBothOperands, hits);
  EXPECT_EQ(hits.length(), 1);
}

TEST(Curve, PolylinesExplodeToTheirSegments) {
  const auto whole = polyline({{{0, 0}, 0.5}, {{10, 0}}, {{10, 0}}, {{10, 8}}}, true);
  KvDbVoidPtrArray parts;
  ASSERT_EQ(whole->explode(parts), Kvad::eOk);
  ASSERT_EQ(parts.length(), 3);  // the segment without length is left out
  double sum = 0;
  for (int i = 0; i < 3; ++i) {
    const CurvePtr part(KvDbCurve::cast(static_cast<KvDbEntity*>(parts[i])));
    EXPECT_EQ(part->isKindOf(KvDbArc::desc()), i == 0);
    sum += lengthOf(*part);
  }
  EXPECT_NEAR(sum, lengthOf(*whole), 1e-10);
  parts.removeAll();
  EXPECT_NE(KvDbLine().explode(parts), Kvad::eOk);
}

TEST(Curve, EllipsesUnderAnyMapKeepTheirPoints) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> number(-3, 3);
  for (int round = 0; round < 300; ++round) {
    KvDbEllipse ellipse({number(random), 1, 2}, KvGeVector3d::kZAxis, {4, 1, 0}, 0.3, 0.5, 3.5);
    KvGeMatrix3d map = KvGeMatrix3d::rotation(number(random), {number(random), 1, 2});
    map.entry[0][1] += number(random);
    map.entry[1][1] *= 0.2;
    if (std::fabs(map.det()) < 1e-3) continue;
    std::vector<KvGePoint3d> moved;
    for (double t = 0.5; t <= 3.5; t += 0.25) moved.push_back(map * ellipse.pointAtParam(t));
    ASSERT_EQ(ellipse.transformBy(map), Kvad::eOk);
    for (const KvGePoint3d& at : moved) {
      KvGePoint3d nearest;
      ellipse.getClosestPointTo(at, nearest);
      EXPECT_LT(nearest.distanceTo(at), 1e-8) << round;
    }
  }
}

TEST(Curve, SettersRefuseWhatIsNoFigure) {
  KvDbCircle circle({1, 2, 3}, KvGeVector3d::kZAxis, 5);
  EXPECT_EQ(circle.setRadius(0), Kvad::eInvalidInput);
  EXPECT_EQ(circle.setRadius(std::nan("")), Kvad::eInvalidInput);
  EXPECT_EQ(circle.setNormal({0, 0, 0}), Kvad::eInvalidInput);
  EXPECT_EQ(circle.setNormal({1, 0, 0}), Kvad::eOk);
  EXPECT_LT(circle.center().distanceTo({1, 2, 3}), 1e-12);  // the centre stays in the world
  KvDbEllipse ellipse;
  EXPECT_EQ(ellipse.set({0, 0, 0}, KvGeVector3d::kZAxis, {0, 0, 1}, 0.5), Kvad::eInvalidInput);
  EXPECT_EQ(ellipse.set({0, 0, 0}, KvGeVector3d::kZAxis, {1, 0, 0}, 1.5), Kvad::eInvalidInput);
  KvDbSpline spline;
  KvArray<double> knots;
  EXPECT_EQ(spline.setNurbsData(3, points({{0, 0, 0}, {1, 1, 1}}), knots), Kvad::eInvalidInput);
}

// --- Old polylines and owned entities
// --------------------------------------------------------------------------------------------

TEST(OldPolyline, VerticesWaitForTheDrawing) {
  KvDbDatabase drawing;
  KvDbBlockTableRecord* space = nullptr;
  ASSERT_EQ(kvdbOpenObject(space, drawing.modelSpaceId(), KvDb::kForWrite), Kvad::eOk);
  auto* old = new KvDb2dPolyline;
  old->setDatabaseDefaults(&drawing);
  old->setElevation(2);
  for (double x : {0.0, 4.0, 8.0}) old->appendVertex(new KvDb2dVertex({x, 0, 0}, x == 4 ? 1 : 0));
  const double length = lengthOf(*old);
  EXPECT_NEAR(length, 4 + 2 * kvge::kPi, 1e-12);
  KvDbObjectId id;
  ASSERT_EQ(space->appendKvDbEntity(id, old), Kvad::eOk);
  space->close();
  EXPECT_EQ(old->subEntities().length(), 3);
  EXPECT_FALSE(old->endMark().isNull());
  EXPECT_NEAR(lengthOf(*old), length, 1e-12);
  // Owned entities follow, unless they shall not.
  old->setColorIndex(5);
  for (const KvDb2dVertex* vertex : old->vertices()) EXPECT_EQ(vertex->colorIndex(), 5);
  old->setColorIndex(6, false);
  EXPECT_EQ(old->vertices()[0]->colorIndex(), 5);
  // The light one takes its place.
  auto* light = new KvDbPolyline;
  KvDbEntity* entity = old;
  ASSERT_EQ(light->convertFrom(entity), Kvad::eOk);
  EXPECT_EQ(entity, light);
  EXPECT_TRUE(old->isErased());
  EXPECT_NEAR(lengthOf(*light), length, 1e-12);
  EXPECT_EQ(light->elevation(), 2);
  EXPECT_EQ(light->colorIndex(), 6);
  light->close();
  EXPECT_EQ(drawing.openCount(), 0);
}

TEST(OldPolyline, ControlPointsOfAFittedOneAreNotPartOfTheCurve) {
  const char* file =
      "0\nSECTION\n2\nENTITIES\n0\nPOLYLINE\n66\n1\n70\n4\n75\n6\n"
      "0\nVERTEX\n10\n0\n20\n9\n70\n16\n0\nVERTEX\n10\n0\n20\n0\n70\n8\n0\nVERTEX\n10\n5\n20\n0\n70\n8\n"
      "0\nSEQEND\n0\nPOLYLINE\n66\n1\n70\n64\n71\n1\n72\n0\n0\nVERTEX\n10\n0\n20\n9\n70\n192\n0\nSEQEND\n"
      "0\nENDSEC\n0\nEOF\n";
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(drawing, file, report), Kvad::eOk);
  KvDbBlockTableRecord* space = nullptr;
  ASSERT_EQ(kvdbOpenObject(space, drawing.modelSpaceId()), Kvad::eOk);
  space->close();
  ASSERT_EQ(space->entityCount(), 2);
  KvDb2dPolyline* old = nullptr;
  ASSERT_EQ(kvdbOpenObject(old, space->entities()[0], KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(old->polyType(), KvDb2dPolyline::kCubicSplinePoly);
  EXPECT_EQ(old->subEntities().length(), 3);
  EXPECT_NEAR(lengthOf(*old), 5, 1e-12);
  KvDbPolyline light;
  KvDbEntity* entity = old;
  EXPECT_EQ(light.convertFrom(entity), Kvad::eInvalidInput);
  EXPECT_EQ(entity, old);
  old->close();
  // A mesh stays what it is.
  KvDbEntity* mesh = nullptr;
  ASSERT_EQ(kvdbOpenObject(mesh, space->entities()[1]), Kvad::eOk);
  EXPECT_FALSE(mesh->isKindOf(KvDbCurve::desc()));
  EXPECT_TRUE(mesh->sequence());
  mesh->close();
}

TEST(Entity, TrueColoursStandBesideTheIndex) {
  KvDbLine line;
  ASSERT_EQ(line.setColor(KvCmEntityColor::ofRgb(0x123456)), Kvad::eOk);
  EXPECT_EQ(line.color().rgb(), 0x123456u);
  ASSERT_EQ(line.setColorIndex(4), Kvad::eOk);
  EXPECT_EQ(line.color(), KvCmEntityColor::ofIndex(4));
  EXPECT_EQ(line.setColorIndex(300), Kvad::eInvalidInput);
  EXPECT_EQ(line.setPropertiesFrom(nullptr), Kvad::eNullEntityPointer);
}

}  // namespace
