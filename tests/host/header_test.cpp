// Header variables of a drawing, and objects by name.
#include <gtest/gtest.h>

#include <limits>

#include "host/database/header.h"
#include "host/database/names.h"
#include "host/entities/curves.h"

namespace {

KvDbObjectId addLayer(KvDbDatabase& database, const wchar_t* name) {
  return database.makeRecordAsRead(KvDbTable::Layer, name);
}

TEST(Header, MissingVariablesHaveTheValuesOfANewDrawing) {
  const KvDbDatabase database;
  EXPECT_TRUE(database.extras().header.empty());
  EXPECT_EQ(database.header().real(L"$LTSCALE"), 1);
  EXPECT_EQ(database.header().whole(L"$MEASUREMENT"), 1);
  EXPECT_EQ(database.header().text(L"$TEXTSTYLE"), L"Standard");
  EXPECT_EQ(database.header().point(L"$UCSYDIR"), KvGePoint3d(0, 1, 0));
  EXPECT_EQ(database.header().whole(L"$NOSUCH"), 0);
  EXPECT_EQ(database.clayer(), database.layerZero());
  EXPECT_EQ(database.celtype(), database.byLayerLinetype());
}

TEST(Header, SettingRefusesWhatTheVariableCannotHold) {
  KvDbDatabase database;
  KvDbHeader& header = database.header();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(header.setReal(L"$NOSUCH", 1), Kvad::eKeyNotFound);
  EXPECT_EQ(header.setReal(L"$LTSCALE", kNan), Kvad::eInvalidInput);
  EXPECT_EQ(header.setWhole(L"$LTSCALE", 2), Kvad::eInvalidInput);
  EXPECT_EQ(header.setText(L"$LTSCALE", L"2"), Kvad::eInvalidInput);
  EXPECT_EQ(header.setPoint(L"$UCSORG", {0, kNan, 0}), Kvad::eInvalidInput);
  EXPECT_EQ(database.setLtscale(0), Kvad::eInvalidInput);
  EXPECT_TRUE(database.extras().header.empty());
  EXPECT_EQ(database.modifiedWord(), 0);

  ASSERT_EQ(header.setAngle(L"$ANGBASE", 0.5235987755982988), Kvad::eOk);
  EXPECT_EQ(database.extras().header.front().groups.front().point.x, 30);  // degrees in files
  EXPECT_EQ(database.modifiedWord(), KvDbDatabase::kVariablesChanged);
}

TEST(Header, ReadValuesOfTheWrongKindOrSizeCountAsMissing) {
  KvDbDatabase database;
  KvDbStoredGroup group;
  group.code = 40;
  group.kind = KvDxfKind::Real;
  group.point.x = std::numeric_limits<double>::infinity();
  database.extras().header.push_back({L"$ltscale", {group}});
  database.extras().header.push_back({L"$CLAYER", {}});
  EXPECT_EQ(database.ltscale(), 1);
  EXPECT_EQ(database.clayer(), database.layerZero());
  ASSERT_EQ(database.setLtscale(3), Kvad::eOk);
  ASSERT_EQ(database.setClayer(addLayer(database, L"A")), Kvad::eOk);
  EXPECT_EQ(database.extras().header.size(), 2u);  // neither stands twice
  EXPECT_EQ(database.ltscale(), 3);
  EXPECT_EQ(kvdbRecordName(database.clayer()), L"A");
}

TEST(Header, RecordsAreCheckedAndFollowTheirNames) {
  KvDbDatabase database, other;
  const KvDbObjectId layer = addLayer(database, L"Outline");
  EXPECT_EQ(database.setClayer({}), Kvad::eNullObjectId);
  EXPECT_EQ(database.setClayer(other.layerZero()), Kvad::eWrongDatabase);
  EXPECT_EQ(database.setClayer(database.byLayerLinetype()), Kvad::eWrongObjectType);
  ASSERT_EQ(database.setClayer(layer), Kvad::eOk);

  KvDbLayerTableRecord* record = nullptr;
  ASSERT_EQ(kvdbOpenObject(record, layer, KvDb::kForWrite), Kvad::eOk);
  ASSERT_EQ(record->setName(L"Contour"), Kvad::eOk);
  record->close();
  EXPECT_EQ(database.clayer(), layer);
  EXPECT_EQ(database.header().text(L"$CLAYER"), L"Contour");

  ASSERT_EQ(kvdbOpenObject(record, layer, KvDb::kForWrite), Kvad::eOk);
  record->erase();
  record->close();
  EXPECT_EQ(database.clayer(), database.layerZero());
  EXPECT_EQ(database.setClayer(layer), Kvad::eWasErased);
}

TEST(Header, UndoTakesBackEachStepAndRedoBringsItAgain) {
  KvDbDatabase database;
  const auto step = [&](double scale) {
    database.undoRecorder().beginGroup();
    database.setLtscale(scale + 100);
    database.setLtscale(scale);
    database.undoRecorder().endGroup();
  };
  step(2);
  step(3);
  ASSERT_TRUE(database.undoRecorder().undo());
  EXPECT_EQ(database.ltscale(), 2);
  ASSERT_TRUE(database.undoRecorder().undo());
  EXPECT_EQ(database.ltscale(), 1);
  EXPECT_TRUE(database.extras().header.empty());
  ASSERT_TRUE(database.undoRecorder().redo());
  ASSERT_TRUE(database.undoRecorder().redo());
  EXPECT_EQ(database.ltscale(), 3);
}

TEST(Header, NewEntitiesTakeTheCurrentProperties) {
  KvDbDatabase database;
  const KvDbObjectId layer = addLayer(database, L"A");
  const KvDbObjectId dashed = database.makeRecordAsRead(KvDbTable::Linetype, L"DASHED");
  database.setClayer(layer);
  database.setCeltype(dashed);
  database.setCecolor(KvCmEntityColor::ofIndex(3));
  database.setCeltscale(0.5);
  EXPECT_EQ(database.setCecolor(KvCmEntityColor::ofRgb(0x123456)), Kvad::eNotApplicable);
  KvDbLine line;
  line.setDatabaseDefaults(&database);
  EXPECT_EQ(line.layerId(), layer);
  EXPECT_EQ(line.linetypeId(), dashed);
  EXPECT_EQ(line.colorIndex(), 3);
  EXPECT_EQ(line.linetypeScale(), 0.5);
}

TEST(Names, TellTheDrawingAndOutliveErasure) {
  kvds_name name, stale;
  KvDbObjectId id;
  KvDbDatabase first;
  {
    KvDbDatabase second;
    ASSERT_EQ(kvdbGetKvdsName(stale, second.layerZero()), Kvad::eOk);
    ASSERT_EQ(kvdbGetKvdsName(name, first.layerZero()), Kvad::eOk);
    EXPECT_FALSE(kvds_equal(name, stale));
    ASSERT_EQ(kvdbGetObjectId(id, stale), Kvad::eOk);
    EXPECT_EQ(id, second.layerZero());
  }
  EXPECT_EQ(kvdbGetObjectId(id, stale), Kvad::eUnknownHandle);  // its drawing is closed
  EXPECT_TRUE(id.isNull());
  EXPECT_EQ(kvdbGetObjectId(id, nullptr), Kvad::eInvalidInput);
  kvds_setNull(stale);
  EXPECT_EQ(kvdbGetObjectId(id, stale), Kvad::eInvalidInput);
  EXPECT_EQ(kvdbGetKvdsName(name, {}), Kvad::eNullObjectId);
  EXPECT_TRUE(kvds_isNull(name));
  EXPECT_EQ(kvdbHandEnt(L"20", name), RTERROR);  // no working drawing
}

}  // namespace
