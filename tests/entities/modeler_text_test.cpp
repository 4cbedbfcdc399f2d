// Regions and solids as text of a modeller.
#include "host/database/modelertext.h"

#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/entities/region.h"
#include "host/entities/spline.h"
#include "host/geometry/arc.h"
#include "tests/entities/support.h"

namespace {

std::wstring joined(const std::vector<std::wstring>& lines) {
  std::wstring text;
  for (const std::wstring& line : lines) text += line + L"\n";
  return text;
}

/// A region of curves, all its loops together.
KvGeRegion regionOf(const std::vector<const KvDbCurve*>& curves) {
  std::vector<std::unique_ptr<KvGeCurve3d>> own;
  KvGeRegion::Curves shapes;
  for (const KvDbCurve* curve : curves) {
    own.push_back(curve->geCurve());
    shapes.push_back(own.back().get());
  }
  KvGeRegion region;
  EXPECT_EQ(KvGeRegion::createFromLoops(shapes, region), KvGeRegion::kOk);
  return region;
}

struct Slot : KvDbPolyline {
  explicit Slot(double x) {
    addVertexAt(0, {x, 0});
    addVertexAt(1, {x + 10, 0}, 1);
    addVertexAt(2, {x + 10, 4});
    addVertexAt(3, {x, 4}, 1);
    setClosed(true);
  }
};

TEST(ModelerText, LettersAreExchangedBothWays) {
  EXPECT_EQ(kvdbModelerDecoded(L"=0;& {rn |"), L"body $-1 #");
  EXPECT_EQ(kvdbModelerEncoded(L"body $-1 #"), L"=0;& {rn |");
  EXPECT_EQ(kvdbModelerEncoded(L"ACIS A"), L"^ \\VL ^ ");
  for (const wchar_t* line : {L"", L"ACIS 32.0 NT", L"a@7 unknown # AA ~ !"})
    EXPECT_EQ(kvdbModelerDecoded(kvdbModelerEncoded(line)), line);
}

TEST(ModelerText, WhatIsWrittenIsReadAgain) {
  const Slot one(0), two(30);
  const KvDbCircle hole({5, 2, 0}, KvGeVector3d::kZAxis, 1), alone({50, 50, 3}, KvGeVector3d::kZAxis, 7);
  const KvDbEllipse ellipse({0, 0, 0}, {1, 0, 1}, {0, 6, 0}, 0.5);
  KvDbEllipse half({0, 0, 0}, KvGeVector3d::kZAxis, {6, 0, 0}, 0.5, 0, kvge::kPi);
  const KvDbLine chord({-6, 0, 0}, {6, 0, 0});
  const struct {
    std::vector<const KvDbCurve*> curves;
    std::size_t edges;
  } cases[] = {{{&one}, 4},   {{&one, &hole}, 5}, {{&one, &two, &hole}, 9},
               {{&alone}, 1}, {{&ellipse}, 1},    {{&half, &chord}, 2}};
  for (const auto& c : cases) {
    const KvGeRegion region = regionOf(c.curves);
    const auto lines = kvdbWriteModelerText(region);
    ASSERT_FALSE(lines.empty());
    const auto model = kvdbReadModelerText(joined(lines));
    ASSERT_TRUE(model);
    EXPECT_TRUE(model->isComplete && model->isFlat);
    EXPECT_EQ(model->edges.size(), c.edges);
    KvGeRegion::Curves edges;
    for (const auto& edge : model->edges) edges.push_back(edge.get());
    KvGeRegion again;
    ASSERT_EQ(KvGeRegion::createFromLoops(edges, again), KvGeRegion::kOk);
    EXPECT_NEAR(again.area(), region.area(), 1e-9);
    EXPECT_NEAR(again.perimeter(), region.perimeter(), 1e-9);
    EXPECT_EQ(again.loopCount(), region.loopCount());
    EXPECT_LT(again.centroid().distanceTo(region.centroid()), 1e-9);
  }
}

TEST(ModelerText, LoopsHaveTheAreaOnTheirLeft) {
  // Of a slot with a hole: the outer loop runs forward through its arcs, the circle of the hole backward.
  const Slot path(0);
  const KvDbCircle hole({5, 2, 0}, KvGeVector3d::kZAxis, 1);
  int forward = 0, reversed = 0;
  for (const std::wstring& line : kvdbWriteModelerText(regionOf({&path, &hole}))) {
    if (!line.starts_with(L"coedge")) continue;
    forward += line.find(L"forward") != std::wstring::npos;
    reversed += line.find(L"reversed") != std::wstring::npos;
  }
  EXPECT_EQ(forward, 4);
  EXPECT_EQ(reversed, 1);
  // A spline can't be told.
  KvGePoint3dArray fit;
  for (const KvGePoint3d& p : {KvGePoint3d(0, 0, 0), KvGePoint3d(5, 5, 0), KvGePoint3d(10, 0, 0)})
    fit.append(p);
  const KvDbSpline spline(fit);
  const KvDbLine chord({0, 0, 0}, {10, 0, 0});
  EXPECT_TRUE(kvdbWriteModelerText(regionOf({&spline, &chord})).empty());
}

TEST(ModelerText, OldVersionsTransformsAndEdgesThatRunBackward) {
  // A half disc, made by hand as version 4.0 has it: no number behind the first reference, edges without
  // bounds.
  const std::wstring old =
      L"400 0 1 0\n7 Someone 4 here 5 today\n1 9.9999999999999995e-007 1e-010\n"
      L"body $-1 $1 $-1 $13 #\nlump $-1 $-1 $2 $0 #\nshell $-1 $-1 $-1 $3 $-1 $1 #\n"
      L"face $-1 $-1 $4 $2 $-1 $12 forward single #\nloop $-1 $-1 $5 $3 #\n"
      L"coedge $-1 $6 $6 $-1 $7 reversed $4 $-1 #\ncoedge $-1 $5 $5 $-1 $8 forward $4 $-1 #\n"
      L"edge $-1 $9 $10 $5 $11 reversed #\nedge $-1 $9 $10 $6 $14 forward #\n"
      L"vertex $-1 $7 $15 #\nvertex $-1 $7 $16 #\n"
      L"ellipse-curve $-1 0 0 0 0 0 1 2 0 0 1 I I #\n"
      L"plane-surface $-1 0 0 0 0 0 1 1 0 0 forward_v I I I I #\n"
      L"transform $-1 0 1 0 -1 0 0 0 0 1 10 0 0 3 rotate no_reflect no_shear #\n"
      L"straight-curve $-1 -2 0 0 1 0 0 I I #\npoint $-1 -2 0 0 #\npoint $-1 2 0 0 #\nEnd-of-ACIS-data\n";
  const auto model = kvdbReadModelerText(old);
  ASSERT_TRUE(model);
  ASSERT_EQ(model->edges.size(), 2u);
  EXPECT_TRUE(model->isComplete && model->isFlat);
  // Turned by a quarter, three times as large, moved by ten.
  const auto& arc = *model->edges[0];
  ASSERT_EQ(arc.kind(), KvGeCurve3d::kCircArc);
  EXPECT_NEAR(arc.length(), 6 * kvge::kPi, 1e-9);
  const double middle = (arc.startParam() + arc.endParam()) / 2;
  EXPECT_LT(arc.pointAtParam(middle).distanceTo({10 - 6, 0, 0}), 1e-9);
  EXPECT_LT(model->edges[1]->startPoint().distanceTo({10, -6, 0}), 1e-9);
}

TEST(ModelerText, NonsenseIsNoModel) {
  for (const wchar_t* text :
       {L"", L"700 0 1 0", L"a\nb\nc\n", L"a\nb\nc\n# # # $1 @99999 x", L"a\nb\nc\nlump $-1 #"})
    EXPECT_FALSE(kvdbReadModelerText(text));
  // References to nowhere, to themselves, of the wrong kind; numbers that are none.
  const auto model = kvdbReadModelerText(
      L"a\nb\nc\nbody $0 $99 $-5 #\nedge $1 $1 $7 #\nedge $3 $3 $4 #\nvertex $5 #\nellipse-curve $-1 1 2 3 "
      L"#\n"
      L"point $-1 1e300 nan 0 #\nface $0 $1 #");
  ASSERT_TRUE(model);
  EXPECT_TRUE(model->edges.empty());
  EXPECT_FALSE(model->isComplete);
  EXPECT_FALSE(model->isFlat);
}

TEST(ModelerText, RegionsOfOtherProgramsKnowTheirShape) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  int seen = 0, solids = 0;
  for (const KvDbEntity* entity : drawing.entities()) {
    if (entity->fileTypeView() == L"3DSOLID") solids += TestSink(*entity).curves.size() > 4;
    const auto* region = KvDbRegion::cast(entity);
    if (!region) continue;
    ++seen;
    double area = 0, perimeter = 0;
    ASSERT_EQ(region->getArea(area), Kvad::eOk);
    ASSERT_EQ(region->getPerimeter(perimeter), Kvad::eOk);
    // The sides as the file tells them.
    EXPECT_NEAR(perimeter,
                3.907787419987343469 + 3.430007711688748628 + 1.988624389196273157 + 4.349912713704284783 +
                    3.284766718011345787 + 2.801041304824904987 + 3.363466891258232838,
                1e-6);
    KvDbExtents box;
    ASSERT_EQ(region->getGeomExtents(box), Kvad::eOk);
    EXPECT_NEAR(box.minPoint().x, 6.495344356571393973 + 15.27672546982375934, 1e-9);
    // A copy knows it too; a moved one has a model of its own.
    const std::unique_ptr<KvDbRegion> copy(KvDbRegion::cast(region->clone()));
    double same = 0;
    ASSERT_EQ(copy->getArea(same), Kvad::eOk);
    EXPECT_EQ(same, area);
    EXPECT_EQ(copy->transformBy(KvGeMatrix3d::scaling(2)), Kvad::eOk);
    EXPECT_TRUE(kvdbModelerTextOf(*copy).empty());
    copy->getArea(same);
    EXPECT_NEAR(same, 4 * area, 1e-6);
  }
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(solids, 2);
}

TEST(ModelerText, RegionsGoThroughFilesOfEveryVersion) {
  for (const KvDbFileVersion version :
       {KvDbFileVersion::R2000, KvDbFileVersion::R2010, KvDbFileVersion::R2018}) {
    TestDrawing drawing;
    const Slot path(0);
    const KvDbCircle hole({5, 2, 0}, KvGeVector3d::kZAxis, 1);
    const KvGeRegion shape = regionOf({&path, &hole});
    drawing.add(new KvDbRegion(shape));
    drawing.throughFile(version);
    const auto* region = KvDbRegion::cast(drawing.entities().at(0));
    ASSERT_TRUE(region);
    EXPECT_EQ(kvdbModelerTextOf(*region).empty(), version == KvDbFileVersion::R2018);
    double area = 0;
    ASSERT_EQ(region->getArea(area), Kvad::eOk);
    EXPECT_NEAR(area, shape.area(), 1e-9);
    // Cut down, it has a new model in the file.
    KvDbRegion* open = nullptr;
    ASSERT_EQ(kvdbOpenObject(open, region->objectId(), KvDb::kForWrite), Kvad::eOk);
    const KvDbCircle cut({0, 2, 0}, KvGeVector3d::kZAxis, 3);
    KvDbRegion other(regionOf({&cut}));
    EXPECT_EQ(open->booleanOper(KvDbRegion::kBoolSubtract, &other), Kvad::eOk);
    open->close();
    region->getArea(area);
    drawing.throughFile(version);
    double again = 0;
    ASSERT_EQ(KvDbRegion::cast(drawing.entities().at(0))->getArea(again), Kvad::eOk);
    EXPECT_NEAR(again, area, 1e-9);
    EXPECT_LT(again, shape.area() - 5);
  }
}

}  // namespace
