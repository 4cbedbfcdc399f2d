// References to blocks: transforms, arrays, attributes, clipping, explosion, blocks inside themselves.
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "tests/entities/support.h"

namespace {

KvDbBlockReference* reference(KvDbObjectId block, const KvGePoint3d& at, double turn = 0, double size = 1) {
  auto* made = new KvDbBlockReference(at, block);
  made->setRotation(turn);
  made->setScaleFactors({size, size, size});
  return made;
}

TEST(BlockReference, ThreeDeepTheTransformsMultiply) {
  TestDrawing drawing;
  const KvDbObjectId inner = drawing.addBlock(L"inner"), middle = drawing.addBlock(L"middle"),
                     outer = drawing.addBlock(L"outer");
  KvDbBlockTableRecord* record = nullptr;
  kvdbOpenObject(record, inner, KvDb::kForWrite);
  record->setOrigin({1, 0, 0});
  record->close();
  drawing.add(new KvDbLine({1, 0, 0}, {2, 0, 0}), inner);
  const auto* a = drawing.add(reference(inner, {10, 0, 0}, kvge::kPi / 2, 2), middle);
  const auto* b = drawing.add(reference(middle, {0, 5, 0}, kvge::kPi / 2, 3), outer);
  auto* c = reference(outer, {100, 0, 7}, 0, 1);
  c->setNormal({1, 0, 0});
  c->setPosition({100, 0, 7});
  drawing.add(c);
  const KvGeMatrix3d whole = c->blockTransform() * b->blockTransform() * a->blockTransform();
  const TestSink sink(*c);
  ASSERT_EQ(sink.curves.size(), 1u);
  EXPECT_LT(sink.curves[0]->startPoint().distanceTo(whole * KvGePoint3d(1, 0, 0)), 1e-12);
  EXPECT_LT(sink.curves[0]->endPoint().distanceTo(whole * KvGePoint3d(2, 0, 0)), 1e-12);
  EXPECT_NEAR(sink.length, 6, 1e-12);
  KvDbExtents extents;
  ASSERT_EQ(c->getGeomExtents(extents), Kvad::eOk);
  EXPECT_NEAR(extents.maxPoint().distanceTo(extents.minPoint()), 6, 1e-12);
}

TEST(BlockReference, ABlockInsideItselfEnds) {
  TestDrawing drawing;
  const KvDbObjectId one = drawing.addBlock(L"one"), two = drawing.addBlock(L"two");
  drawing.add(new KvDbLine({0, 0, 0}, {1, 0, 0}), one);
  drawing.add(reference(two, {1, 0, 0}), one);
  drawing.add(reference(one, {1, 0, 0}), two);
  auto* top = drawing.add(reference(one, {0, 0, 0}));
  EXPECT_EQ(TestSink(*top).curves.size(), 1u);
  KvDbExtents extents;
  EXPECT_EQ(top->getGeomExtents(extents), Kvad::eOk);
}

TEST(BlockReference, MapsThatKeepRightAnglesAreTakenOthersRefused) {
  TestDrawing drawing;
  const KvDbObjectId block = drawing.addBlock(L"b");
  drawing.add(new KvDbLine({1, 2, 0}, {4, 3, 1}), block);
  auto* made = new KvDbBlockReference({3, 4, 5}, block);
  made->setScaleFactors({2, -3, 1.5});
  made->setRotation(0.4);
  made->setNormal({1, 1, 3});
  drawing.add(made);
  const KvGeMatrix3d maps[] = {
      KvGeMatrix3d::rotation(1.1, {1, 2, 3}, {4, 0, 0}) * KvGeMatrix3d::scaling(2.5),
      KvGeMatrix3d().setToMirroring(KvGePlane({1, 0, 0}, {1, 1, 0})),
      KvGeMatrix3d().setToMirroring(KvGePoint3d(2, 2, 2)),
  };
  for (const KvGeMatrix3d& map : maps) {
    const KvGeMatrix3d expected = map * made->blockTransform();
    KvDbBlockReference* open = nullptr;
    ASSERT_EQ(kvdbOpenObject(open, made->objectId(), KvDb::kForWrite), Kvad::eOk);
    ASSERT_EQ(open->transformBy(map), Kvad::eOk);
    EXPECT_TRUE(open->blockTransform().isEqualTo(expected, KvGeTol(1e-9, 1e-9)));
    KvGeMatrix3d sheared;
    sheared.entry[0][1] = 0.5;
    EXPECT_EQ(open->transformBy(sheared), Kvad::eCannotScaleNonUniformly);
    EXPECT_TRUE(open->blockTransform().isEqualTo(expected, KvGeTol(1e-9, 1e-9)));
    open->close();
  }
}

TEST(BlockReference, ExplosionShowsTheSamePlaces) {
  TestDrawing drawing;
  const KvDbObjectId inner = drawing.addBlock(L"inner"), block = drawing.addBlock(L"b");
  drawing.add(new KvDbCircle({1, 0, 0}, KvGeVector3d::kZAxis, 2), inner);
  drawing.add(new KvDbLine({0, 0, 0}, {4, 0, 0}), block);
  drawing.add(new KvDbArc({0, 0, 0}, KvGeVector3d::kZAxis, 2, 0, 1), block);
  auto* bent = new KvDbPolyline;
  bent->addVertexAt(0, {0, 0}, 0.5);
  bent->addVertexAt(1, {3, 0});
  bent->addVertexAt(2, {3, 3});
  drawing.add(bent, block);
  drawing.add(reference(inner, {7, 7, 0}, 0.3), block);
  for (const KvGeScale3d scale : {KvGeScale3d{2, 2, 2}, KvGeScale3d{2, 0.5, 1}}) {
    auto* made = new KvDbBlockReference({10, 20, 0}, block);
    made->setScaleFactors(scale);
    made->setRotation(0.5);
    drawing.add(made);
    KvDbVoidPtrArray parts;
    ASSERT_EQ(made->explode(parts), Kvad::eOk);
    EXPECT_EQ(parts.length(), scale.sx == scale.sy ? 4 : 5);  // uneven: the polyline comes in segments
    double sum = 0;
    for (void* part : parts) {
      const std::unique_ptr<KvDbEntity> own(static_cast<KvDbEntity*>(part));
      EXPECT_EQ(own->database(), nullptr);
      EXPECT_TRUE(own->ownerId().isNull());
      sum += TestSink(*own).length;
    }
    EXPECT_NEAR(sum, TestSink(*made).length, 1e-8 * sum);
  }
}

TEST(BlockReference, RowsAndColumnsRunAlongTheTurnedAxes) {
  TestDrawing drawing;
  const KvDbObjectId block = drawing.addBlock(L"b");
  drawing.add(new KvDbPoint({0, 0, 0}), block);
  auto* made = reference(block, {100, 0, 0}, kvge::kPi / 2, 5);
  EXPECT_EQ(made->setArray(0, 3, 1, 1), Kvad::eInvalidInput);
  ASSERT_EQ(made->setArray(2, 3, 10, 20), Kvad::eOk);
  drawing.add(made);
  EXPECT_EQ(TestSink(*made).dots.size(), 6u);
  KvDbExtents extents;
  ASSERT_EQ(made->getGeomExtents(extents), Kvad::eOk);
  EXPECT_LT(extents.minPoint().distanceTo({90, 0, 0}), 1e-12);
  EXPECT_LT(extents.maxPoint().distanceTo({100, 40, 0}), 1e-12);
}

TEST(BlockReference, AttributesWaitAndFollow) {
  TestDrawing drawing;
  const KvDbObjectId block = drawing.addBlock(L"b");
  auto* made = reference(block, {1, 2, 3});
  KvDbObjectId id;
  EXPECT_EQ(made->appendAttribute(id, nullptr), Kvad::eNullEntityPointer);
  KvDbLine line;
  EXPECT_EQ(made->appendAttribute(id, &line), Kvad::eWrongObjectType);
  ASSERT_EQ(made->appendAttribute(
                kvdbMakeEntity(KvDbSharedText(L"ATTRIB"), KvRxClass::findByDxfName(L"ATTRIB"), {}).release()),
            Kvad::eOk);
  drawing.add(made);
  EXPECT_EQ(made->subEntities().length(), 1);
  const std::unique_ptr<KvDbObjectIterator> iterator(made->attributeIterator());
  ASSERT_FALSE(iterator->done());
  EXPECT_EQ(iterator->entity()->ownerId(), made->objectId());
  EXPECT_FALSE(iterator->entity()->isWriteEnabled());
  iterator->step();
  EXPECT_TRUE(iterator->done());
  EXPECT_TRUE(iterator->objectId().isNull());
  drawing.throughFile();
  const auto* again = KvDbBlockReference::cast(drawing.entities().at(0));
  ASSERT_TRUE(again);
  EXPECT_EQ(again->subEntities().length(), 1);
  EXPECT_EQ(again->position(), KvGePoint3d(1, 2, 3));
  EXPECT_EQ(kvdbRecordName(again->blockTableRecord()), L"b");
  EXPECT_EQ(drawing.database().openCount(), 0);
}

TEST(BlockReference, BadInputIsRefused) {
  KvDbBlockReference made;
  EXPECT_EQ(made.setBlockTableRecord({}), Kvad::eNullObjectId);
  EXPECT_EQ(made.setScaleFactors({1, 0, 1}), Kvad::eInvalidInput);
  EXPECT_EQ(made.setScaleFactors({1, std::nan(""), 1}), Kvad::eInvalidInput);
  EXPECT_EQ(made.setNormal({0, 0, 0}), Kvad::eInvalidInput);
  KvDbVoidPtrArray parts;
  EXPECT_EQ(made.explode(parts), Kvad::eCannotExplodeEntity);
  KvDbExtents extents;
  EXPECT_EQ(made.getGeomExtents(extents), Kvad::eInvalidExtents);
}

TEST(BlockReference, ClipBoundariesLieWhereTheBlockIs) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/xclip_r2013.dxf");
  int clipped = 0;
  for (const KvDbEntity* entity : drawing.entities()) {
    const auto* made = KvDbBlockReference::cast(entity);
    if (!made) continue;
    const TestSink sink(*made);
    clipped += static_cast<int>(sink.clips.size());
    // Most were clipped where they stand: world and boundary are one, up to the reference's transform.
    if (made->handle() == KvDbHandle(0xB9) && !sink.clips.empty()) {
      EXPECT_TRUE((sink.clips[0] * made->blockTransform().inverse()).isEqualTo(KvGeMatrix3d::kIdentity));
    }
  }
  EXPECT_EQ(clipped, 8);  // nine, of which one is switched off
}

}  // namespace
