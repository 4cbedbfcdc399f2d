// Viewports, leaders, and what is seen of entities that aren't modelled.
#include "host/entities/viewport.h"

#include "host/entities/curves.h"
#include "host/entities/leader.h"
#include "host/entities/mtext.h"
#include "tests/entities/support.h"

namespace {

template <class Visit>
void forAll(TestDrawing& drawing, Visit visit) {
  for (KvDbObjectId id : drawing.database().allObjects())
    if (const KvDbEntity* entity = KvDbEntity::cast(id.stub()->object)) visit(*entity);
}

TEST(Viewport, ThoseOfADrawingTellWhatTheyShow) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/viewport_frozen_layers_r2013.dxf");
  int seen = 0;
  forAll(drawing, [&](const KvDbEntity& entity) {
    const auto* viewport = KvDbViewport::cast(&entity);
    if (!viewport || viewport->handle() != KvDbHandle(0xB8)) return;
    ++seen;
    EXPECT_DOUBLE_EQ(viewport->width(), 69.292528880866);
    EXPECT_EQ(viewport->number(), 4);
    EXPECT_TRUE(viewport->isOn());
    EXPECT_FALSE(viewport->isNonRectClipOn());
    EXPECT_EQ(viewport->frozenLayers().length(), 1);
    EXPECT_NEAR(viewport->customScale(), 45.723742960289 / 486.294310488872, 1e-12);
  });
  EXPECT_EQ(seen, 1);
}

TEST(Viewport, MadeOnesKeepWhatIsSet) {
  TestDrawing drawing;
  auto* made = new KvDbViewport({10, 20, 0}, 30, 40);
  EXPECT_EQ(made->setWidth(0), Kvad::eInvalidInput);
  EXPECT_EQ(made->setTwistAngle(std::nan("")), Kvad::eInvalidInput);
  EXPECT_EQ(made->setTwistAngle(kvge::kPi / 2), Kvad::eOk);
  made->setOn(false);
  drawing.add(made, drawing.database().paperSpaceId());
  drawing.throughFile();
  const auto* again = KvDbViewport::cast(drawing.entities(drawing.database().paperSpaceId()).back());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->centerPoint(), KvGePoint3d(10, 20, 0));
  EXPECT_NEAR(again->twistAngle(), kvge::kPi / 2, 1e-15);
  EXPECT_FALSE(again->isOn());
  KvDbExtents extents;
  ASSERT_EQ(again->getGeomExtents(extents), Kvad::eOk);
  EXPECT_EQ(extents.maxPoint(), KvGePoint3d(25, 40, 0));
}

TEST(Leader, VerticesAndArrow) {
  TestDrawing drawing;
  auto* leader = new KvDbLeader;
  for (const KvGePoint3d& p : {KvGePoint3d(0, 0, 0), KvGePoint3d(10, 10, 0), KvGePoint3d(20, 10, 0)})
    EXPECT_EQ(leader->appendVertex(p), Kvad::eOk);
  EXPECT_EQ(leader->setVertexAt(3, {}), Kvad::eInvalidIndex);
  EXPECT_EQ(leader->setVertexAt(2, {30, 10, 0}), Kvad::eOk);
  EXPECT_EQ(TestSink(*leader).curves.size(), 3u);
  leader->setHasArrowHead(false);
  leader->transformBy(KvGeMatrix3d::translation({1, 2, 3}));
  drawing.add(leader);
  drawing.throughFile();
  const auto* again = KvDbLeader::cast(drawing.entities().at(0));
  ASSERT_TRUE(again);
  ASSERT_EQ(again->numVertices(), 3);
  KvGePoint3d last;
  EXPECT_EQ(again->getVertexAt(2, last), Kvad::eOk);
  EXPECT_EQ(last, KvGePoint3d(31, 12, 3));
  EXPECT_EQ(TestSink(*again).curves.size(), 2u);
}

TEST(Leader, SmoothOnesReachEveryVertexAlongTheirEnds) {
  KvDbLeader leader;
  const KvGePoint3d points[] = {{0, 0, 0}, {10, 10, 0}, {30, 0, 0}, {40, 0, 0}};
  for (const KvGePoint3d& p : points) leader.appendVertex(p);
  leader.setSplined(true);
  const TestSink sink(leader);
  // The curve, and the arrow along its beginning.
  const auto spline = std::find_if(sink.curves.begin(), sink.curves.end(),
                                   [](const auto& curve) { return curve->length() > 30; });
  ASSERT_NE(spline, sink.curves.end());
  for (int i = 1; i < 4; ++i) EXPECT_LT((*spline)->distanceTo(points[i]), 1e-3) << i;
  EXPECT_GT((*spline)->length(), 14.2 + 22.4 + 10 - 2.5 + 0.5);
  const KvGeVector3d end = (*spline)->firstDerivAtParam((*spline)->endParam());
  EXPECT_NEAR(end.y / end.length(), 0, 0.05);
  KvDbVoidPtrArray parts;
  ASSERT_EQ(leader.explode(parts), Kvad::eOk);
  EXPECT_EQ(parts.length(), 2);
  const auto* arrow = KvDbSolid::cast(static_cast<KvDbEntity*>(parts[1]));
  ASSERT_TRUE(arrow);
  KvGePoint3d tip, left, right;
  arrow->getPointAt(2, tip);
  arrow->getPointAt(0, left);
  arrow->getPointAt(1, right);
  EXPECT_EQ(tip, points[0]);
  const KvGeVector3d back = KvGeVector3d(1, 1, 0).normal() * 2.5;
  EXPECT_LT((left + (right - left) * 0.5).distanceTo(tip + back), 1e-9);
  // The spline begins where the arrow ends.
  EXPECT_NEAR((*spline)->startPoint().distanceTo(tip), 2.5, 0.05);
  for (void* part : parts) delete static_cast<KvDbEntity*>(part);
  // Too short a beginning has no room for the arrow.
  leader.setVertexAt(1, {3, 3, 0});
  EXPECT_EQ(TestSink(leader).filledOutlines + static_cast<int>(TestSink(leader).curves.size()), 1);
}

TEST(Leader, TheLineRunsOnBelowATextThatStandsAboveIt) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  int seen = 0;
  forAll(drawing, [&](const KvDbEntity& entity) {
    const auto* leader = KvDbLeader::cast(&entity);
    if (!leader) return;
    ++seen;
    EXPECT_TRUE(leader->hasHookLine());
    EXPECT_TRUE(KvDbEntity::cast(leader->annotationId().stub()->object)->isKindOf(KvDbMText::desc()));
    KvDbExtents extents;
    ASSERT_EQ(leader->getGeomExtents(extents), Kvad::eOk);
    EXPECT_NEAR(extents.maxPoint().x, 740.3987500252849 + 16.37400410337938 + 0.625, 1e-6);
  });
  EXPECT_EQ(seen, 1);
}

TEST(Unmodelled, TablesShowTheirBlockAndImagesTheirFrame) {
  int tables = 0, frames = 0;
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/table_entity_r2013.dxf");
  forAll(drawing, [&](const KvDbEntity& entity) {
    if (entity.fileTypeView() == L"ACAD_TABLE") tables += TestSink(entity).curves.size() > 4;
  });
  EXPECT_GT(tables, 0);
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  forAll(drawing, [&](const KvDbEntity& entity) {
    if (entity.fileTypeView() == L"WIPEOUT") frames += TestSink(entity).curves.size() == 1;
  });
  EXPECT_GT(frames, 0);
}

}  // namespace
