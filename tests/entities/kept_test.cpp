// Viewports, leaders, and what is seen of entities that aren't modelled.
#include "host/entities/viewport.h"

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
  EXPECT_EQ(TestSink(*leader).curves.size(), 2u);
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
  EXPECT_EQ(TestSink(*again).curves.size(), 1u);
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
