// Hatches: boundaries, patterns cut at them, areas, files.
#include "host/entities/hatch.h"

#include <random>

#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "tests/entities/support.h"

namespace {

KvGePoint2dArray outline(std::initializer_list<KvGePoint2d> all) {
  KvGePoint2dArray array;
  for (const KvGePoint2d& p : all) array.append(p);
  return array;
}
KvArray<double> numbers(std::initializer_list<double> all) {
  KvArray<double> array;
  for (double n : all) array.append(n);
  return array;
}

struct Drawn {
  explicit Drawn(const KvDbHatch& hatch) {
    complete = hatch.patternStretches([this](KvGePoint2d from, KvGePoint2d to) {
      length += from.distanceTo(to);
      stretches.emplace_back(from, to);
    });
  }
  double length = 0;
  bool complete = false;
  std::vector<std::pair<KvGePoint2d, KvGePoint2d>> stretches;
};

std::unique_ptr<KvDbHatch> userHatch(double angle, double space) {
  auto hatch = std::make_unique<KvDbHatch>();
  hatch->setPattern(KvDbHatch::kUserDefined, L"_USER");
  hatch->setPatternSpace(space);
  hatch->setPatternAngle(angle);
  return hatch;
}

double areaOf(const KvDbHatch& hatch) {
  double area = -1;
  EXPECT_EQ(hatch.getArea(area), Kvad::eOk);
  return area;
}

TEST(Hatch, LengthOfTheLinesTimesTheirDistanceIsTheArea) {
  std::mt19937 random(17);
  std::uniform_real_distribution<double> angle(0, kvge::kPi);
  for (int round = 0; round < 40; ++round) {
    const double space = 0.002;
    auto hatch = userHatch(angle(random), space);
    ASSERT_EQ(hatch->appendLoop(1, outline({{0, 0}, {10, 0}, {10, 6}, {0, 6}}), numbers({0.4, 0, -0.7, 0})),
              Kvad::eOk);
    ASSERT_EQ(hatch->appendLoop(0, outline({{3, 2}, {5, 2}}), numbers({1, 1})), Kvad::eOk);
    const double area = areaOf(*hatch);
    const Drawn drawn(*hatch);
    EXPECT_TRUE(drawn.complete);
    EXPECT_NEAR(drawn.length * space, area, 2e-3 * area) << round;
  }
}

// One outline by its edges, arcs of both senses among them, in any order of a file: the same area as its
// region.
TEST(Hatch, AreaOfEdgesIsThatOfTheRegion) {
  const auto turn = [](double degrees) { return degrees * kvge::kPi / 180; };
  for (const bool isBroken : {false, true}) {
    // A plate with a rounded corner, and a bay that is cut out clockwise.
    KvArray<void*> edges;
    KvArray<int> kinds;
    const auto add = [&](KvGeCurve2d* curve, int kind) {
      edges.append(curve);
      kinds.append(kind);
    };
    add(new KvGeLineSeg2d({0, 0}, {9, 0}), KvDbHatch::kLine);
    add(new KvGeCircArc2d({9, 1}, 1, turn(270), turn(360)), KvDbHatch::kCirArc);
    add(new KvGeLineSeg2d({10, 1}, {10, 6}), KvDbHatch::kLine);
    add(new KvGeLineSeg2d({10, 6}, {7, 6}), KvDbHatch::kLine);
    // From 7,6 below the side to 3,6: clockwise about 5,6.
    add(new KvGeCircArc2d({5, 6}, 2, turn(0), turn(180), KvGeVector2d::kXAxis, true), KvDbHatch::kCirArc);
    add(new KvGeLineSeg2d({3, 6}, {0, 6}), KvDbHatch::kLine);
    add(new KvGeLineSeg2d({0, 6}, isBroken ? KvGePoint2d(0, 1e-7) : KvGePoint2d(0, 0)), KvDbHatch::kLine);
    KvDbHatch hatch;
    EXPECT_EQ(hatch.appendLoop(KvDbHatch::kExternal, edges, kinds), Kvad::eOk);
    for (void* edge : edges) delete static_cast<KvGeCurve2d*>(edge);
    const std::unique_ptr<KvDbRegion> region(hatch.getRegionArea());
    ASSERT_TRUE(region);
    EXPECT_NEAR(areaOf(hatch), 60 - 1 + kvge::kPi / 4 - 2 * kvge::kPi, 1e-6);
    EXPECT_NEAR(areaOf(hatch), region->shape().area(), 1e-12 * 60);
  }
}

TEST(Hatch, EveryStretchEndsOnTheBoundaryAndLiesInside) {
  auto hatch = userHatch(0.3, 0.37);
  hatch->appendLoop(1, outline({{0, 0}, {10, 0}, {10, 6}, {0, 6}}), numbers({0.4, 0, -0.7, 0}));
  hatch->appendLoop(0, outline({{3, 2}, {5, 2}}), numbers({1, 1}));
  std::vector<std::unique_ptr<KvGeCurve3d>> loops;
  hatch->getGeCurves(loops);
  const std::unique_ptr<KvDbRegion> region(hatch->getRegionArea());
  ASSERT_TRUE(region);
  const Drawn drawn(*hatch);
  EXPECT_GT(drawn.stretches.size(), 15u);
  for (const auto& [from, to] : drawn.stretches) {
    for (KvGePoint2d end : {from, to}) {
      double nearest = 1;
      for (const auto& loop : loops) nearest = std::min(nearest, loop->distanceTo(kvge::spatial(end)));
      EXPECT_LT(nearest, 1e-11);
    }
    const KvGePoint3d middle = kvge::midpoint(kvge::spatial(from), kvge::spatial(to));
    EXPECT_NE(region->shape().contains(middle), KvGe::kOutside);
  }
}

TEST(Hatch, LinesThroughVerticesAreNeitherLostNorDoubled) {
  // Lines at whole heights pass through every corner of these.
  const struct {
    KvGePoint2dArray loop;
    double length;
  } cases[] = {
      {outline({{0, 0}, {2, 2}, {0, 4}, {-2, 2}}), 2 + 4 + 2},             // a rhombus: 1, 2, 3
      {outline({{0, 0}, {4, 0}, {4, 2}, {2, 1}, {0, 2}}), 4 + 4},          // a notch that touches line 1
      {outline({{0, 0}, {4, 0}, {4, 1}, {3, 1}, {3, 2}, {0, 2}}), 4 + 3},  // an edge along line 1
  };
  for (const auto& c : cases) {
    auto hatch = userHatch(0, 1);
    ASSERT_EQ(hatch->appendLoop(1, c.loop), Kvad::eOk);
    EXPECT_NEAR(Drawn(*hatch).length, c.length, 1e-12);
  }
}

TEST(Hatch, StylesTellWhichIslandsCount) {
  const struct {
    KvDbHatch::HatchStyle style;
    double area;
  } cases[] = {{KvDbHatch::kNormal, 100 - 36 + 4}, {KvDbHatch::kOuter, 100 - 36}, {KvDbHatch::kIgnore, 100}};
  for (const auto& c : cases) {
    auto hatch = userHatch(0.2, 0.003);
    hatch->appendLoop(1, outline({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
    hatch->appendLoop(0, outline({{2, 2}, {8, 2}, {8, 8}, {2, 8}}));
    hatch->appendLoop(0, outline({{4, 4}, {6, 4}, {6, 6}, {4, 6}}));
    hatch->setHatchStyle(c.style);
    EXPECT_NEAR(areaOf(*hatch), c.area, 1e-9);
    EXPECT_NEAR(Drawn(*hatch).length * 0.003, c.area, 0.2);
  }
}

TEST(Hatch, DashesKeepTheirPlaceFromLineToLine) {
  auto hatch = std::make_unique<KvDbHatch>();
  ASSERT_EQ(hatch->setPattern(KvDbHatch::kPreDefined, L"dots"), Kvad::eOk);
  hatch->appendLoop(1, outline({{0, 0}, {100, 0}, {100, 100}, {0, 100}}));
  const Drawn dots(*hatch);
  EXPECT_EQ(dots.length, 0);
  EXPECT_EQ(dots.stretches.size(), 63u * 63u);  // each 1.5875 apart
  // Half of a dashed line is drawn, whatever the boundary.
  ASSERT_EQ(hatch->setPattern(KvDbHatch::kPreDefined, L"SQUARE"), Kvad::eOk);
  ASSERT_EQ(hatch->setPatternScale(0.1), Kvad::eOk);
  const double spacing = 0.125 * 25.4 * 0.1;
  EXPECT_NEAR(Drawn(*hatch).length, 2 * 100 * 100 / spacing / 2, 2 * 100 * 100 / spacing / 2 * 0.01);
  for (std::wstring_view name : kvdbHatchPatternNames()) {
    std::vector<KvDbPatternLine> lines;
    EXPECT_TRUE(kvdbHatchPattern(name, false, lines));
    for (const KvDbPatternLine& line : lines) EXPECT_GT(line.dy, 0);
  }
  EXPECT_EQ(hatch->setPattern(KvDbHatch::kPreDefined, L"NOSUCH"), Kvad::eKeyNotFound);
  EXPECT_EQ(hatch->patternName(), L"SQUARE");
}

TEST(Hatch, TooManyLinesLeaveTheOutline) {
  auto hatch = userHatch(0, 1e-7);
  hatch->appendLoop(1, outline({{0, 0}, {10, 0}, {10, 10}}));
  const Drawn drawn(*hatch);
  EXPECT_FALSE(drawn.complete);
  EXPECT_TRUE(drawn.stretches.empty());
  EXPECT_EQ(TestSink(*hatch).curves.size(), 1u);
}

TEST(Hatch, LoopsOfEveryKindOfEdge) {
  KvDbHatch hatch;
  const KvGeLineSeg2d bottom({0, 0}, {4, 0}), right({4, 0}, {4, 2});
  const KvGeEllipArc2d top({2, 2}, KvGeVector2d::kXAxis, KvGeVector2d::kYAxis, 2, 1, 0, kvge::kPi);
  const KvGeCircArc2d left({0, 1}, 1, 0, kvge::kPi, {0, 1}, true);  // clockwise, bulging inwards
  KvArray<void*> edges;
  KvArray<int> types;
  for (const KvGeCurve2d* edge : std::initializer_list<const KvGeCurve2d*>{&bottom, &right, &top, &left})
    edges.append(const_cast<KvGeCurve2d*>(edge));
  ASSERT_EQ(hatch.appendLoop(1, edges, types), Kvad::eOk);
  EXPECT_NEAR(areaOf(hatch), 8 + kvge::kPi - kvge::kPi / 2, 1e-9);
  std::int32_t type = 0;
  KvArray<void*> back;
  KvArray<int> kinds;
  ASSERT_EQ(hatch.getLoopAt(0, type, back, kinds), Kvad::eOk);
  ASSERT_EQ(back.length(), 4);
  for (int i = 0; i < 4; ++i) {
    const std::unique_ptr<KvGeCurve2d> edge(static_cast<KvGeCurve2d*>(back[i]));
    const auto* given = static_cast<const KvGeCurve2d*>(edges[i]);
    EXPECT_LT(edge->startPoint().distanceTo(given->startPoint()), 1e-12) << i;
    EXPECT_LT(edge->endPoint().distanceTo(given->endPoint()), 1e-12) << i;
  }
  edges.removeAt(3);
  EXPECT_EQ(hatch.appendLoop(1, edges, types), Kvad::eInvalidLoop);
  EXPECT_EQ(hatch.appendLoop(1, outline({{0, 0}, {1, 0}})), Kvad::eInvalidInput);
  EXPECT_EQ(hatch.appendLoop(1, outline({{0, 0}, {1, std::nan("")}, {1, 1}})), Kvad::eInvalidInput);
  EXPECT_EQ(hatch.appendLoop(1, outline({{0, 0}, {1, 0}, {1, 1}}), numbers({0})), Kvad::eInvalidInput);
  EXPECT_EQ(hatch.numLoops(), 1);
  EXPECT_EQ(hatch.removeLoopAt(1), Kvad::eInvalidIndex);
  EXPECT_EQ(hatch.removeLoopAt(0), Kvad::eOk);
  EXPECT_EQ(hatch.getRegionArea(), nullptr);
  EXPECT_EQ(hatch.evaluateHatch(), Kvad::eNoContent);
}

TEST(Hatch, AssociativeOnesFollowTheirBoundary) {
  TestDrawing drawing;
  const KvDbLine* sides[] = {drawing.add(new KvDbLine({0, 0, 0}, {4, 0, 0})),
                             drawing.add(new KvDbLine({4, 3, 0}, {4, 0, 0})),  // the wrong way round
                             drawing.add(new KvDbLine({0, 0, 0}, {4, 3, 0}))};
  auto* hatch = drawing.add(new KvDbHatch);
  KvDbHatch* open = nullptr;
  ASSERT_EQ(kvdbOpenObject(open, hatch->objectId(), KvDb::kForWrite), Kvad::eOk);
  open->setAssociative(true);
  KvDbObjectIdArray ids;
  for (const KvDbLine* side : sides) ids.append(side->objectId());
  ASSERT_EQ(open->appendLoop(1, ids), Kvad::eOk);
  EXPECT_NEAR(areaOf(*open), 6, 1e-12);
  EXPECT_TRUE(sides[0]->persistentReactors().contains(hatch->objectId()));
  for (const KvDbLine* side : sides) {
    KvDbLine* line = nullptr;
    kvdbOpenObject(line, side->objectId(), KvDb::kForWrite);
    line->transformBy(KvGeMatrix3d::scaling(2));
    line->close();
  }
  EXPECT_NEAR(areaOf(*open), 6, 1e-12);
  ASSERT_EQ(open->evaluateHatch(false), Kvad::eOk);
  EXPECT_NEAR(areaOf(*open), 24, 1e-12);
  ids.removeAt(1);
  EXPECT_EQ(open->appendLoop(1, ids), Kvad::eInvalidLoop);
  open->close();
  EXPECT_EQ(drawing.database().openCount(), 0);
  drawing.throughFile();
}

TEST(Hatch, MapsMoveBoundaryAndPatternTogether) {
  std::mt19937 random(23);
  std::uniform_real_distribution<double> number(-3, 3);
  for (int round = 0; round < 60; ++round) {
    auto hatch = userHatch(0.4, 0.05);
    hatch->appendLoop(1, outline({{0, 0}, {10, 0}, {10, 6}}), numbers({0.4, 0, -0.7}));
    KvArray<void*> edges;
    KvGeCircArc2d arc({3, 1}, 0.5);
    edges.append(static_cast<KvGeCurve2d*>(&arc));
    ASSERT_EQ(hatch->appendLoop(0, edges, KvArray<int>()), Kvad::eOk);
    const double area = areaOf(*hatch);
    const Drawn before(*hatch);
    KvGeMatrix3d map = KvGeMatrix3d::rotation(number(random), {number(random), 1, 1}) *
                       KvGeMatrix3d::scaling(2) * KvGeMatrix3d::translation({number(random), 1, 2});
    if (round % 2) map = map * KvGeMatrix3d().setToMirroring(KvGePlane({1, 0, 0}, {number(random), 1, 0}));
    ASSERT_EQ(hatch->transformBy(map), Kvad::eOk);
    EXPECT_NEAR(areaOf(*hatch), 4 * area, 1e-9 * area);
    const Drawn after(*hatch);
    EXPECT_NEAR(after.length, 2 * before.length, 1e-6 * before.length) << round;
  }
  KvDbHatch hatch;
  KvGeMatrix3d uneven;
  uneven.entry[0][0] = 2;
  EXPECT_EQ(hatch.transformBy(uneven), Kvad::eCannotScaleNonUniformly);
}

TEST(Hatch, SolidOnesAreFilledBySeveralOutlines) {
  KvDbHatch hatch;
  hatch.appendLoop(1, outline({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
  hatch.appendLoop(0, outline({{2, 2}, {8, 2}, {8, 8}, {2, 8}}));
  class Fill : public TestSink {
   public:
    using TestSink::TestSink;
    bool isOutlineOnly() const override { return false; }
  };
  KvDbLine nothing;
  Fill sink(nothing);
  sink.draw(&hatch);
  EXPECT_EQ(sink.filledOutlines, 2);
  KvDbVoidPtrArray parts;
  ASSERT_EQ(hatch.explode(parts), Kvad::eOk);
  ASSERT_EQ(parts.length(), 1);
  const std::unique_ptr<KvDbRegion> region(KvDbRegion::cast(static_cast<KvDbEntity*>(parts[0])));
  double area = 0;
  region->getArea(area);
  EXPECT_NEAR(area, 64, 1e-12);
}

TEST(Hatch, ThoseOfRealDrawingsHaveAnAreaAndDraw) {
  int seen = 0;
  for (const char* name :
       {"allkinds_r2004_ascii", "hatch_circles_r2018", "hatches_islands_r2018", "ae_r2000_ascii"}) {
    TestDrawing drawing;
    drawing.read((std::string(KORVANE_EXAMPLES "/drawings/") + name + ".dxf").c_str());
    for (const KvDbEntity* entity : drawing.entities()) {
      const auto* hatch = KvDbHatch::cast(entity);
      if (!hatch) continue;
      ++seen;
      EXPECT_GT(areaOf(*hatch), 0) << name;
      KvDbExtents extents;
      EXPECT_EQ(hatch->getGeomExtents(extents), Kvad::eOk);
      const Drawn drawn(*hatch);
      EXPECT_TRUE(hatch->isSolidFill() || !drawn.complete || drawn.stretches.size() > 2) << name;
    }
  }
  EXPECT_GT(seen, 15);
}

// --- Regions
// -------------------------------------------------------------------------------------------------------------------

TEST(Region, MadeJoinedCutExplodedAndKept) {
  KvDbCircle circle({0, 0, 0}, KvGeVector3d::kZAxis, 2), other({2, 0, 0}, KvGeVector3d::kZAxis, 2);
  KvDbVoidPtrArray curves, regions;
  curves.append(static_cast<KvDbEntity*>(&circle));
  curves.append(static_cast<KvDbEntity*>(&other));
  ASSERT_EQ(KvDbRegion::createFromCurves(curves, regions), Kvad::eOk);
  ASSERT_EQ(regions.length(), 2);
  std::unique_ptr<KvDbRegion> a(KvDbRegion::cast(static_cast<KvDbEntity*>(regions[0])));
  std::unique_ptr<KvDbRegion> b(KvDbRegion::cast(static_cast<KvDbEntity*>(regions[1])));
  double whole = 0, common = 0;
  a->getArea(whole);
  ASSERT_EQ(a->booleanOper(KvDbRegion::kBoolIntersect, b.get()), Kvad::eOk);
  EXPECT_TRUE(b->isNull());
  a->getArea(common);
  // Two circles of radius r, their centres r apart: r^2 (2 pi / 3 - sqrt(3) / 2).
  EXPECT_NEAR(common, 4 * (2 * kvge::kPi / 3 - std::sqrt(3.0) / 2), 1e-10);
  KvDbVoidPtrArray parts;
  ASSERT_EQ(a->explode(parts), Kvad::eOk);
  EXPECT_EQ(parts.length(), 2);
  for (void* part : parts) {
    const std::unique_ptr<KvDbEntity> own(static_cast<KvDbEntity*>(part));
    EXPECT_TRUE(own->isKindOf(KvDbArc::desc()));
  }
  EXPECT_EQ(a->booleanOper(KvDbRegion::kBoolUnite, nullptr), Kvad::eNullEntityPointer);
  TestDrawing drawing;
  drawing.add(a.release());
  drawing.throughFile();
  const auto* again = KvDbRegion::cast(drawing.entities().at(0));
  ASSERT_TRUE(again);
  double kept = 0;
  ASSERT_EQ(again->getArea(kept), Kvad::eOk);
  EXPECT_NEAR(kept, common, 1e-12);
}

TEST(Region, WhatDoesNotCloseIsToldSo) {
  KvDbLine line({0, 0, 0}, {1, 0, 0});
  KvDbVoidPtrArray curves, regions;
  EXPECT_EQ(KvDbRegion::createFromCurves(curves, regions), Kvad::eInvalidInput);
  curves.append(static_cast<KvDbEntity*>(&line));
  EXPECT_NE(KvDbRegion::createFromCurves(curves, regions), Kvad::eOk);
  curves.append(nullptr);
  EXPECT_EQ(KvDbRegion::createFromCurves(curves, regions), Kvad::eInvalidInput);
  EXPECT_EQ(regions.length(), 0);
  double area = 0;
  EXPECT_EQ(KvDbRegion().getArea(area), Kvad::eNoContent);
  EXPECT_EQ(KvDbRegion().explode(regions), Kvad::eCannotExplodeEntity);
}

}  // namespace
