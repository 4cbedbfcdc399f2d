// Signs of shape files, as entities and in linetypes.
#include "host/entities/shape.h"

#include "host/io/linetype_file.h"
#include "tests/entities/support.h"

namespace {

void addShapeFile(KvDbDatabase& drawing, const wchar_t* file) {
  KvDbTextStyleTable* table = nullptr;
  ASSERT_EQ(kvdbOpenObject(table, drawing.textStyleTableId(), KvDb::kForWrite), Kvad::eOk);
  auto* record = new KvDbTextStyleTableRecord;
  record->setIsShapeFile(true);
  record->setFileName(file);
  KvDbObjectId id;
  EXPECT_EQ(table->add(id, record), Kvad::eOk);
  record->close();
  EXPECT_EQ(table->shapeFileRecord(file), id);
  table->close();
}

TEST(Shape, StandsInItsPlaceAndComesBackFromAFile) {
  TestDrawing drawing;
  addShapeFile(drawing.database(), L"nowhere.shx");
  addShapeFile(drawing.database(), L"korvane.shx");
  auto* made = new KvDbShape({10, 20, 0}, 3, L"box", kvge::kPi / 2, 0.5);
  EXPECT_EQ(made->setSize(0), Kvad::eInvalidInput);
  EXPECT_EQ(made->setOblique(2), Kvad::eInvalidInput);
  EXPECT_EQ(made->setThickness(7), Kvad::eOk);
  drawing.add(made);
  drawing.throughFile();
  const auto* shape = KvDbShape::cast(drawing.entities().at(0));
  ASSERT_TRUE(shape);
  EXPECT_EQ(shape->thickness(), 7);
  EXPECT_EQ(shape->shapeNumber(), 132);
  EXPECT_FALSE(shape->styleId().isNull());
  // The square begins in the middle of its left side; turned, it lies above its place.
  KvDbExtents extents;
  ASSERT_EQ(shape->getGeomExtents(extents), Kvad::eOk);
  EXPECT_TRUE(extents.minPoint().isEqualTo({7, 20, 0}));
  EXPECT_TRUE(extents.maxPoint().isEqualTo({13, 23, 0}));
}

TEST(Shape, NamesByNumberAndUnknownOnesDrawNothing) {
  TestDrawing drawing;
  addShapeFile(drawing.database(), L"korvane.shx");
  auto* shape = drawing.add(new KvDbShape({}, 1, L"NONE"));
  EXPECT_TRUE(shape->styleId().isNull());
  EXPECT_TRUE(TestSink(*shape).curves.empty());
  KvDbExtents extents;
  EXPECT_EQ(shape->getGeomExtents(extents), Kvad::eInvalidExtents);
  KvDbShape fresh;
  const auto* table = KvDbTextStyleTable::cast(drawing.database().textStyleTableId().stub()->object);
  const KvDbObjectId style = table->shapeFileRecord(L"KORVANE");
  EXPECT_EQ(fresh.setShape(style, 133), Kvad::eOk);
  EXPECT_EQ(fresh.name(), L"CIRC1");
  EXPECT_EQ(fresh.setShape(style, 1), Kvad::eKeyNotFound);
  EXPECT_EQ(fresh.setShape({}, 133), Kvad::eInvalidInput);
}

TEST(Shape, TransformsGoWithWhatItDraws) {
  TestDrawing drawing;
  addShapeFile(drawing.database(), L"korvane.shx");
  const std::pair<const char*, KvGeMatrix3d> cases[] = {
      {"moved and turned",
       KvGeMatrix3d::translation({5, 6, 7}) * KvGeMatrix3d::rotation(0.7, KvGeVector3d::kZAxis)},
      {"larger", KvGeMatrix3d::scaling(2.5, {1, 1, 0})},
      {"wider", KvGeMatrix3d().setCoordSystem({}, {3, 0, 0}, {0, 1, 0}, {0, 0, 1})},
      {"mirrored", KvGeMatrix3d().setCoordSystem({}, {-1, 0, 0}, {0, 1, 0}, {0, 0, 1})},
      {"out of its plane", KvGeMatrix3d::rotation(1, {1, 1, 0})},
  };
  for (const auto& [what, matrix] : cases) {
    auto* shape = drawing.add(new KvDbShape({4, -3, 0}, 2, L"TRIANGLE", 0, 1.5));
    const TestSink before(*shape);
    KvDbObject* open = nullptr;
    ASSERT_EQ(kvdbOpenAny(open, shape->objectId(), KvDb::kForWrite), Kvad::eOk);
    EXPECT_EQ(shape->transformBy(matrix), Kvad::eOk) << what;
    EXPECT_EQ(shape->transformBy(KvGeMatrix3d::scaling(0)), Kvad::eDegenerateGeometry);
    open->close();
    const TestSink after(*shape);
    ASSERT_EQ(before.curves.size(), after.curves.size());
    for (std::size_t i = 0; i < before.curves.size(); ++i) {
      EXPECT_TRUE(after.curves[i]->startPoint().isEqualTo(matrix * before.curves[i]->startPoint())) << what;
      EXPECT_TRUE(after.curves[i]->endPoint().isEqualTo(matrix * before.curves[i]->endPoint())) << what;
      EXPECT_NEAR(after.curves[i]->length(), before.curves[i]->transformed(matrix)->length(), 1e-9) << what;
    }
  }
}

TEST(Shape, LinetypesBringTheirFileAlong) {
  TestDrawing drawing;
  const std::string file = KORVANE_TREE_DIR "/share/korvane/linetypes/kvad.lin";
  const CString path = platform::wideFromUtf8(file);
  ASSERT_EQ(kvdbLoadLineTypeFile(L"FENCELINE2", path, &drawing.database()), Kvad::eOk);
  ASSERT_EQ(kvdbLoadLineTypeFile(L"BATTING", path, &drawing.database()), Kvad::eOk);
  drawing.throughFile();
  const auto* table = KvDbTextStyleTable::cast(drawing.database().textStyleTableId().stub()->object);
  const KvDbObjectId style = table->shapeFileRecord(L"korvane");
  ASSERT_FALSE(style.isNull());
  const auto* fence = KvDbLinetypeTableRecord::cast(
      drawing.database().recordId(KvDbTable::Linetype, L"FENCELINE2").stub()->object);
  EXPECT_EQ(fence->dashes().at(1).shapeNumber, 132);
  EXPECT_EQ(fence->dashes().at(1).flags & 4, 4);
  EXPECT_EQ(fence->dashes().at(1).style, style);
}

}  // namespace
