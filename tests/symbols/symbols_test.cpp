// Layers, styles and records in drawings.
#include <cmath>
#include <limits>

#include "host/base/context.h"
#include "host/database/dictionary.h"
#include "host/database/header.h"
#include "host/entities/blockreference.h"
#include "host/entities/hatch.h"
#include "host/entities/leader.h"
#include "host/io/drawing_file.h"
#include "siblings/symbols/exports.h"
#include "siblings/symbols/layer_table.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/styles.h"
#include "siblings/symbols/template.h"
#include "tests/toolkit/support.h"

using namespace kmsymb;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CString taken(wchar_t* buffer) {
  CString text(buffer);
  delete[] buffer;
  return text;
}

class Symbols : public test::ToolkitTest {};

TEST_F(Symbols, LayersOfEveryKindAreMadeOnceWithTheirLooks) {
  for (Standard standard : kStandards) {
    ASSERT_TRUE(setStandard(drawing(), standard));
    for (const KindRow& kind : kindRows()) {
      const KvDbObjectId id = kvmExGetLayerId(kind.kind, nullptr, 0);
      ASSERT_FALSE(id.isNull()) << kind.kind;
      EXPECT_EQ(kvmExGetLayerId(kind.kind, &drawing(), 1), id);
      EXPECT_EQ(taken(kvmExGetLayerName(kind.kind, 1)), layer(id).getName());
      const LayerLook look = builtInLook(standard, kind.layer.row);
      EXPECT_EQ(layer(id).colorIndex(), look.color);
      EXPECT_EQ(layer(id).lineWeight(), look.lineWeight);
      EXPECT_EQ(layer(id).isPlottable(), look.isPlotted);
      EXPECT_EQ(kvdbRecordName(layer(id).linetypeObjectId()).CompareNoCase(look.linetype), 0)
          << platform::utf8From(look.linetype);
    }
  }
  EXPECT_EQ(kvmExGetLayerName(6, 0), nullptr);
  EXPECT_TRUE(kvmExGetLayerId(0, nullptr, 0).isNull());
}

TEST_F(Symbols, ALayerThatIsThereKeepsItsLookAndMakingOneIsNoStepOfItsOwn) {
  const KvDbObjectId own = addLayer(layerNameOf(45));
  const int steps = drawing().undoRecorder().undoCount();
  EXPECT_EQ(kvmExGetLayerId(45, nullptr, 0), own);
  EXPECT_EQ(layer(own).lineWeight(), KvDb::kLnWtByLwDefault);
  ASSERT_FALSE(kvmExGetLayerId(49, nullptr, 0).isNull());
  EXPECT_EQ(drawing().undoRecorder().undoCount(), steps);
  drawing().undoRecorder().beginGroup();
  const KvDbObjectId made = kvmExGetLayerId(59, nullptr, 0);
  drawing().undoRecorder().endGroup();
  EXPECT_EQ(drawing().undoRecorder().undoCount(), steps + 1);
  ASSERT_TRUE(drawing().undoRecorder().undo());
  EXPECT_TRUE(made.isErased());
  EXPECT_TRUE(kvmExGetLayerId(59, nullptr, 0).isValid());
}

TEST_F(Symbols, EntitiesTakeTheirKind) {
  const KvDbObjectId id = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  auto* line = open<KvDbLine>(id);
  EXPECT_EQ(setPropertyFromConfig(line, 45), 0);
  line->close();
  line = open<KvDbLine>(id, KvDb::kForWrite);
  line->setColorIndex(3);
  EXPECT_EQ(setPropertyFromConfig(line, 6), 0);
  EXPECT_EQ(setPropertyFromConfig(line, 49), 1);
  EXPECT_EQ(line->layer(), layerNameOf(49));
  EXPECT_EQ(line->colorIndex(), kKvColorByLayer);
  EXPECT_EQ(line->linetypeId(), drawing().byLayerLinetype());
  line->close();
  EXPECT_EQ(setPropertyFromConfig(nullptr, 49), 0);
}

TEST_F(Symbols, NamesFollowTheStandardOfTheDrawing) {
  struct Row {
    Standard standard;
    const wchar_t *name, *text, *dimension, *file;
  };
  constexpr Row kRows[] = {{Standard::Gb, L"GB", L"ACGBTS", L"AM_GB", L"korvane_gb.dxf"},
                           {Standard::Ansi, L"ANSI", L"ACANSTS", L"AM_ANSI", L"korvane_ansi.dxf"},
                           {Standard::Csn, L"CSN", L"ACISOTS", L"AM_CSN", L"korvane_csn.dxf"}};
  for (const Row& row : kRows) {
    ASSERT_TRUE(setStandard(drawing(), row.standard));
    EXPECT_EQ(taken(getStandardName()), row.name);
    EXPECT_EQ(taken(getCurrentTextStyleName()), row.text);
    EXPECT_EQ(taken(getCurrentDimStyleName()), row.dimension);
    EXPECT_GE(templatePlace(row.standard).Find(row.file), 0);
  }
}

TEST_F(Symbols, DimensionStylesSayWhatTheStandardSays) {
  ASSERT_TRUE(setStandard(drawing(), Standard::Din));
  resbuf value{};
  const int modified = drawing().setModifiedWord(0);
  EXPECT_EQ(getDimensionStyleVariable(L"dimtxsty", &value, nullptr, nullptr), 1);
  EXPECT_EQ(CString(value.resval.rstring), L"ACDINTS");
  std::free(value.resval.rstring);
  EXPECT_EQ(drawing().setModifiedWord(modified), 0) << "asking changed the drawing";
  const KvDbObjectId style = getDimensionStyle(nullptr, nullptr);
  ASSERT_FALSE(style.isNull());
  EXPECT_EQ(getDimensionStyle(const_cast<KvRxClass*>(KvDbLeader::desc()), &drawing()), style);
  EXPECT_TRUE(getDimensionStyle(const_cast<KvRxClass*>(KvDbLine::desc()), nullptr).isNull());
  EXPECT_EQ(getDimensionStyleVariable(L"DIMTXT", &value, nullptr, nullptr), 1);
  EXPECT_EQ(value.restype, RTREAL);
  EXPECT_EQ(value.resval.rreal, 3.5);
  const auto upright = [&](const KvRxClass* type) {
    EXPECT_EQ(getDimensionStyleVariable(L"DIMTIH", &value, const_cast<KvRxClass*>(type), nullptr), 1);
    EXPECT_EQ(value.restype, RTSHORT);
    return value.resval.rint != 0;
  };
  EXPECT_FALSE(upright(KvDbAlignedDimension::desc()));
  EXPECT_TRUE(upright(KvDb3PointAngularDimension::desc()));
  value.restype = 77;
  EXPECT_EQ(getDimensionStyleVariable(L"DIMNONE", &value, nullptr, nullptr), 0);
  EXPECT_EQ(getDimensionStyleVariable(L"DIMTXT", &value, const_cast<KvRxClass*>(KvDbLine::desc()), nullptr),
            0);
  EXPECT_EQ(value.restype, 77);
  EXPECT_EQ(getDimensionStyleVariable(L"DIMTXT", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(getDimensionStyleVariable(nullptr, &value, nullptr, nullptr), 0);
}

TEST_F(Symbols, InchDrawingsGetInches) {
  drawing().header().setWhole(L"$MEASUREMENT", 0);
  const KvDbDimVars variables = KvDbDimVars::ofStyle(ensureDimStyle(drawing(), Standard::Ansi));
  EXPECT_NEAR(variables.real(KvDbDimVar::Txt), 3 / 25.4, 1e-12);
  EXPECT_EQ(variables.real(KvDbDimVar::Lfac), 1);
}

TEST_F(Symbols, DimensionsTakeStyleScaleAndClass) {
  ASSERT_TRUE(setSystemScale(drawing(), {2, 0.5}));
  auto* aligned = new KvDbAlignedDimension({0, 0, 0}, {10, 0, 0}, {5, 5, 0});
  auto* angular = new KvDb3PointAngularDimension;
  angular->setCenterPoint({0, 0, 0});
  angular->setXLine1Point({5, 0, 0});
  angular->setXLine2Point({0, 5, 0});
  angular->setArcPoint({4, 4, 0});
  const KvDbObjectId ids[] = {add(aligned), add(angular)};
  for (KvDbObjectId id : ids) {
    auto* dimension = open<KvDbDimension>(id);
    EXPECT_EQ(setDimensionProperty(dimension), 0) << "it is open for read only";
    dimension->close();
    dimension = open<KvDbDimension>(id, KvDb::kForWrite);
    EXPECT_EQ(setDimensionProperty(dimension), 1);
    EXPECT_EQ(kvdbRecordName(dimension->dimensionStyle()), L"AM_GB");
    EXPECT_EQ(dimension->layer(), layerNameOf(23));
    EXPECT_EQ(dimension->dimscale(), 2);
    EXPECT_EQ(dimension->dimlfac(), dimension->isAngular() ? 1 : 0.5);
    EXPECT_EQ(dimension->dimVars().on(KvDbDimVar::Tih), dimension->isAngular());
    dimension->close();
  }
  EXPECT_EQ(setDimensionProperty(nullptr), 0);
}

TEST_F(Symbols, TheScaleIsKeptInTheFileAndBadOnesAreRefused) {
  double paper = 7, measure = 7;
  EXPECT_EQ(getSystemScale(paper, measure, nullptr), RTNORM);
  EXPECT_EQ(paper, 1);
  for (double bad : {0.0, -1.0, kNan, HUGE_VAL}) EXPECT_FALSE(setSystemScale(drawing(), {bad, 1}));
  ASSERT_TRUE(setSystemScale(drawing(), {5, 0.25}));
  KvDbDatabase copy(false, true);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(copy, kvdbFormatDrawing(drawing()), report), Kvad::eOk);
  EXPECT_EQ(getSystemScale(paper, measure, &copy), RTNORM);
  EXPECT_EQ(paper, 5);
  EXPECT_EQ(measure, 0.25);
}

TEST_F(Symbols, WithoutADrawingCallsFail) {
  auto* services = kvdbHostApplicationServices();
  KvDbDatabase* working = services->workingDatabase();
  services->setWorkingDatabase(nullptr);
  double paper = 7, measure = 7;
  resbuf value{};
  KvDbObjectIdArray list;
  EXPECT_EQ(getSystemScale(paper, measure, nullptr), RTERROR);
  EXPECT_EQ(paper, 7);
  EXPECT_EQ(kvmGetScalingList(list, 1, nullptr), 0);
  EXPECT_TRUE(kvmExGetLayerId(45, nullptr, 0).isNull());
  EXPECT_TRUE(getDimensionStyle(nullptr, nullptr).isNull());
  EXPECT_EQ(getDimensionStyleVariable(L"DIMTXT", &value, nullptr, nullptr), 0);
  EXPECT_EQ(taken(getStandardName()), L"GB");
  services->setWorkingDatabase(working);
}

TEST_F(Symbols, PointsAreRecordedOnceSavedAndUndone) {
  const KvDbObjectId a = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  const KvDbObjectId b = add(new KvDbLine({0, 0, 0}, {2, 0, 0}));
  kvmRecordGeniusPoint(b);
  kvmRecordGeniusPoint(a);
  kvmRecordGeniusPoint(b);
  kvmRecordGeniusPoint({});
  ASSERT_EQ(recordedPoints(drawing()).length(), 2);
  EXPECT_EQ(recordedPoints(drawing()).at(0), b);
  drawing().undoRecorder().beginGroup();
  kvmUnrecordGeniusPoint(b);
  kvmUnrecordGeniusPoint(b);
  drawing().undoRecorder().endGroup();
  EXPECT_FALSE(recordedPoints(drawing()).contains(b));
  ASSERT_TRUE(drawing().undoRecorder().undo());
  EXPECT_EQ(recordedPoints(drawing()).length(), 2);

  KvDbDatabase copy(false, true);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(copy, kvdbFormatDrawing(drawing()), report), Kvad::eOk);
  EXPECT_EQ(recordedPoints(copy).length(), 2);
  EXPECT_EQ(recordedPoints(copy).at(1).handle(), a.handle());

  auto* line = open<KvDbLine>(a, KvDb::kForWrite);
  line->erase();
  line->close();
  EXPECT_EQ(recordedPoints(drawing()).length(), 1);
}

TEST_F(Symbols, ScaleAreasAreClosedAndMarked) {
  kvdbRegApp(L"GENIUS_GENSCREG_15");
  kvdbRegApp(L"GENIUS_GENOREF_13");
  const KvDbObjectId point = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  const auto mark = [&](KvDbObjectId id, const wchar_t* handle) {
    auto* entity = open<KvDbEntity>(id, KvDb::kForWrite);
    resbuf* chain = kvutBuildList(1001, L"GENIUS_GENSCREG_15", 1040, 2.0, 0);
    EXPECT_EQ(entity->setXData(chain), Kvad::eOk);
    kvutRelRb(chain);
    if (handle) {
      chain =
          kvutBuildList(1001, L"GENIUS_GENOREF_13", 1002, L"{", 1000, L"ENT", 1005, handle, 1002, L"}", 0);
      EXPECT_EQ(entity->setXData(chain), Kvad::eOk);
      kvutRelRb(chain);
    }
    entity->close();
    return id;
  };
  auto* table = open<KvDbBlockTable>(drawing().blockTableId(), KvDb::kForWrite);
  auto* block = new KvDbBlockTableRecord;
  block->setName(L"FRAME");
  ASSERT_EQ(table->add(block), Kvad::eOk);
  const KvDbObjectId frame = block->objectId();
  block->close();
  table->close();
  const auto reference = [&] { return add(new KvDbBlockReference({0, 0, 0}, frame)); };
  add(new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 5));
  mark(add(new KvDbLine({0, 0, 0}, {1, 0, 0})), nullptr);
  const KvDbObjectId circle = mark(add(new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 5)), nullptr);
  const KvDbObjectId loose = mark(reference(), L"0"), bound = mark(reference(), point.handle().toText());
  KvDbObjectIdArray list;
  list.append(point);
  EXPECT_EQ(kvmGetScalingList(list, 0, nullptr), 1);
  EXPECT_EQ(list.at(0), bound);
  EXPECT_EQ(kvmGetScalingList(list, 1, &drawing()), 3);
  EXPECT_TRUE(list.contains(circle) && list.contains(loose) && list.contains(bound));
}

TEST_F(Symbols, CentreLinesReachTwoToFiveMillimetresOfPaper) {
  struct Row {
    double size, scale, extension;
  };
  for (const Row& row : {Row{0, 1, 2}, Row{8, 1, 2}, Row{12, 1, 3}, Row{-12, 1, 3}, Row{20, 1, 5},
                         Row{1e300, 1, 5}, Row{24, 2, 6}, Row{6, 0.5, 1.5}, Row{10, 0, 0}, Row{10, -1, 0},
                         Row{kNan, 1, 0}, Row{10, kNan, 0}, Row{HUGE_VAL, 1, 0}})
    EXPECT_EQ(I_Centerline_GetCenterExt(row.size, row.scale), row.extension) << row.size << " " << row.scale;
}

TEST_F(Symbols, CommandsChooseStandardAndScale) {
  CString error;
  ASSERT_TRUE(host->loadModule(L"KmSymbb.kvx", error)) << platform::utf8From(error);
  const auto type = [&](const wchar_t* script) {
    host->editor().pushSource(std::make_unique<KvEdScriptSource>(CString(script)));
    host->run();
  };
  type(L"KMSTANDARD\niso\n");
  EXPECT_EQ(standardInForce(), Standard::Iso);
  EXPECT_EQ(kvdbRecordName(drawing().dimstyle()), L"AM_ISO");
  EXPECT_EQ(kvdbRecordName(drawing().textstyle()), L"ACISOTS");
  type(L"KMSCALE\n10\n\n");
  EXPECT_EQ(systemScaleOf(drawing()).paper, 10);
  EXPECT_EQ(systemScaleOf(drawing()).measure, 1);
  ASSERT_TRUE(drawing().undoRecorder().undo());
  EXPECT_EQ(systemScaleOf(drawing()).paper, 1);
  ASSERT_TRUE(drawing().undoRecorder().undo());
  EXPECT_EQ(standardInForce(), Standard::Gb);
  EXPECT_EQ(kvdbRecordName(drawing().dimstyle()), L"Standard");
  EXPECT_TRUE(host->unloadModule(L"KmSymbb.kvx"));
  type(L"KMSTANDARD\nDIN\n");
  EXPECT_EQ(standardInForce(), Standard::Gb);
}

}  // namespace
