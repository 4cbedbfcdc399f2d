// Styles and layers through the symbol module: the real one, none, one that can't be loaded, one with holes.
#include "module/toolkit/styles.h"

#include <cmath>

#include "host/base/context.h"
#include "host/database/dictionary.h"
#include "host/database/header.h"
#include "host/editor/sysvars.h"
#include "host/entities/annotation.h"
#include "host/entities/blockreference.h"
#include "host/entities/dimcurrent.h"
#include "host/entities/dimension.h"
#include "host/entities/text.h"
#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "module/toolkit/annotation.h"
#include "module/toolkit/layers.h"
#include "siblings/resources/mekres.h"
#include "tests/toolkit/symbol_support.h"

namespace {

class Styles : public test::SymbolHost {};

/// All kinds that have a key or are told apart elsewhere.
constexpr int kUnkeyed[] = {1, 38, 40, 78};
constexpr const wchar_t* kKeys[] = {
    L"BHNV",   L"BHNVS",  L"BOR2",   L"BOR3",   L"BOR5",   L"CAL2",   L"CAL3",   L"CAL5",   L"CAL7",
    L"CENN",   L"CENW",   L"CLIN",   L"CON1",   L"CON2",   L"CON3",   L"CON4",   L"DETA",   L"DIAG",
    L"DILI",   L"FEMN",   L"FEMPN",  L"FEMSP",  L"FEMST",  L"FEMVN",  L"FEMVT",  L"HATC",   L"HIDN",
    L"HIDW",   L"HLIN",   L"HOCN",   L"HOCW",   L"INFO",   L"LEAD",   L"N_BHNV", L"N_CON1", L"N_CON2",
    L"N_CON3", L"N_CON4", L"N_CENN", L"N_CENW", L"N_DILI", L"N_HATC", L"N_HIDN", L"N_HIDW", L"N_LEAD",
    L"N_NGIP", L"N_PHAN", L"N_TCON", L"N_THLI", L"N_TLEN", L"N_VPLI", L"NGIP",   L"PAL2",   L"PAL3",
    L"PAL5",   L"PHAN",   L"POSN",   L"RCGN",   L"RCGW",   L"SBRK",   L"SECT",   L"SYB3",   L"MSYM",
    L"TCON",   L"THLI",   L"TIT2",   L"TIT3",   L"TIT5",   L"TLEN",   L"TRLI",   L"TXT1",   L"TXT2",
    L"TXT3",   L"TXT5",   L"TXT7",   L"VIEW",   L"VPLI",   L"ZIZA",   L"SPLI",   L"STDPSYM"};
static_assert(std::size(kKeys) == 80);

std::vector<int> allKinds() {
  std::vector<int> kinds(std::begin(kUnkeyed), std::end(kUnkeyed));
  for (const wchar_t* key : kKeys) {
    kinds.push_back(IM_GetPropertyConfigFromSubLayer(key));
    EXPECT_NE(kinds.back(), 0) << platform::utf8From(CString(key));
  }
  return kinds;
}

TEST_F(Styles, EveryKindResolvesWithTheModuleAndFallsBackWithoutIt) {
  const std::vector<int> kinds = allKinds();
  use(Module::Real);
  for (int kind : kinds) {
    const KvDbObjectId id = IM_GetLayerId(kind, &drawing(), 0);
    ASSERT_FALSE(id.isNull()) << kind;
    EXPECT_EQ(IM_GetLayerName(kind, 0), layer(id).getName());
    EXPECT_EQ(IM_GetLayerName(kind, 1), layer(id).getName());
    EXPECT_EQ(IM_IsLayerKindOf(id, 49), kind >= 49 && kind <= 52) << kind;
  }
  EXPECT_EQ(GetSysLayer(L"hatch", L"A", false), IM_GetLayerName(59, 0));
  EXPECT_EQ(IM_GetLayerName(6, 0), L"0");
  for (Module module : {Module::None, Module::Broken}) {
    use(module);
    for (int kind : kinds) {
      EXPECT_EQ(IM_GetLayerName(kind, 0), L"0");
      EXPECT_TRUE(IM_GetLayerId(kind, nullptr, 0).isNull());
    }
    KvDbLine line({0, 0, 0}, {1, 0, 0});
    EXPECT_FALSE(IM_SetPropertyFromConfig(&line, 45));
    EXPECT_EQ(IM_GetStandardName(), L"");
    EXPECT_EQ(IM_GetStandardDimStyleName(), L"Standard");
    EXPECT_EQ(IM_GetStandardTextStyleName(), L"Standard");
    EXPECT_EQ(IM_ImportStyleFromTemplate(1, 0, L""), RTERROR);
    EXPECT_EQ(IM_Centerline_GetCenterExt(10, 1), 0.0);
    EXPECT_TRUE(IM_GetDimensionStyle(nullptr, nullptr).isNull());
    EXPECT_EQ(IM_GetTextStyleName(2, 0), L"");
    EXPECT_EQ(IM_GetTextStyleName(2, 1), L"Standard");
    EXPECT_EQ(IM_GetDimStyleName(1, 2), L"Standard");
    IM_RecordGeniusPoint({});
  }
}

TEST_F(Styles, AModuleWithHoles) {
  use(Module::Fake);
  EXPECT_EQ(IM_GetStandardName(), L"ANSI");
  EXPECT_EQ(IM_GetTextStyleName(2, 2), L"ACANSTS");
  EXPECT_EQ(IM_GetStandardDimStyleName(), L"Standard");   // a null buffer
  EXPECT_EQ(IM_GetStandardTextStyleName(), L"Standard");  // no such export
  EXPECT_EQ(IM_GetLayerName(45, 0), L"0");
  EXPECT_EQ(IM_IsLayerKindOf(CString(L"FAKE CENTER"), 49), 1);
  EXPECT_EQ(IM_IsLayerKindOf(CString(L"FAKE CENTER"), 50), 0);
  EXPECT_TRUE(IM_GetLayerId(45, nullptr, 0).isNull());
  EXPECT_FALSE(IM_SetPropertyFromConfig(nullptr, 45));
  EXPECT_TRUE(IM_SetDimensionProperty(nullptr));
  EXPECT_EQ(IM_ImportStyleFromTemplate(1, 0, L""), RTERROR);
  CString name = L"ACANSTS";
  EXPECT_EQ(IM_EnsureStyleExist(name, 0), 0);
  EXPECT_EQ(name, L"Standard");
}

TEST_F(Styles, AreImportedFromTheTemplate) {
  use(Module::Real);
  EXPECT_TRUE(IM_GetTextStyleId(L"ACGBTS", 0, nullptr).isNull());
  EXPECT_EQ(IM_GetTextStyleName(2, 0), L"ACGBTS");
  const KvDbObjectId text = IM_GetTextStyleId(L"acgbts", 0, nullptr);
  ASSERT_FALSE(text.isNull());
  EXPECT_EQ(static_cast<const KvDbTextStyleTableRecord*>(text.stub()->object)->fileName(), L"gbenor.shx");

  // After the import of a dimension style the text styles are looked through.
  CString name = L"AM_GB";
  EXPECT_EQ(IM_EnsureStyleExist(name, 1), 0);
  EXPECT_EQ(name, L"Standard");
  name = L"AM_GB";
  EXPECT_EQ(IM_EnsureStyleExist(name, 1), 1);
  const KvDbObjectId style = IM_GetDimStyleId(L"AM_GB", 0, nullptr);
  ASSERT_FALSE(style.isNull());
  const KvDbDimVars variables = KvDbDimVars::ofStyle(style);
  EXPECT_EQ(variables.real(KvDbDimVar::Txt), 3.5);
  EXPECT_EQ(variables.id(KvDbDimVar::TxSty), text) << "the style's letters came along";
  EXPECT_EQ(IM_GetDimensionStyle(nullptr, nullptr), style);
}

TEST_F(Styles, ImportKeepsWhatIsThereAndAnEmptyNameTakesAll) {
  use(Module::Real);
  auto* table = open<KvDbTextStyleTable>(drawing().textStyleTableId(), KvDb::kForWrite);
  auto* own = new KvDbTextStyleTableRecord;
  own->setName(L"ACGBTS");
  own->setFileName(L"own.shx");
  ASSERT_EQ(table->add(own), Kvad::eOk);
  own->close();
  table->close();
  EXPECT_EQ(IM_ImportStyleFromTemplate(1, 0, L""), RTNORM);
  EXPECT_EQ(own->fileName(), L"own.shx");
  EXPECT_EQ(IM_ImportStyleFromTemplate(0, 0, L"no such style"), RTNORM);
  EXPECT_TRUE(IM_GetDimStyleId(L"AM_GB", 0, nullptr).isNull());
  EXPECT_EQ(IM_ImportStyleFromTemplate(0, 0, L""), RTNORM);
  EXPECT_FALSE(IM_GetDimStyleId(L"AM_GB", 0, nullptr).isNull());
}

TEST_F(Styles, NamesAndIdsOfStylesThatAreMissing) {
  CString name;
  EXPECT_EQ(IM_EnsureStyleExist(name, 0), 0);
  EXPECT_EQ(name, L"Standard");
  EXPECT_EQ(IM_GetTextStyleId(L"none", 1, nullptr), IM_GetTextStyleStandardId(nullptr));
  EXPECT_TRUE(IM_GetTextStyleId(L"none", 0, nullptr).isNull());
  EXPECT_TRUE(IM_GetDimStyleId(L"", 0, nullptr).isNull());
  EXPECT_EQ(IM_GetDimStyleId(L"", 1, nullptr), IM_GetDimStyleStandardId(nullptr));
  EXPECT_EQ(IM_GetLineTypeId(L"none", nullptr, 0), IM_GetLinetypeContinuousId(nullptr));
  EXPECT_TRUE(IM_GetLineTypeId(L"none", nullptr, 1).isNull());
  EXPECT_EQ(IM_EnsureLineTypeExist(L"NO_SUCH_LINE", 0), L"ByLayer");
  EXPECT_EQ(IM_EnsureLineTypeExist(L"HIDDEN", 0), L"HIDDEN");
}

TEST_F(Styles, ALinetypeThatIsThereNeedsNoFile) {
  auto* table = open<KvDbLinetypeTable>(drawing().linetypeTableId(), KvDb::kForWrite);
  auto* own = new KvDbLinetypeTableRecord;
  own->setName(L"X");
  ASSERT_EQ(table->add(own), Kvad::eOk);
  own->close();
  table->close();
  EXPECT_EQ(IM_EnsureLineTypeExist(L"x", 0), L"x");
  EXPECT_EQ(IM_EnsureLineTypeExist(L"X", 16), L"ByLayer") << "no file has it";
  EXPECT_TRUE(own->objectId().isValid()) << "what can't be loaded anew stays";
}

TEST_F(Styles, AReloadedLinetypeKeepsItsUsers) {
  ASSERT_EQ(IM_EnsureLineTypeExist(L"HIDDEN", 0), L"HIDDEN");
  const KvDbObjectId old = IM_GetLineTypeId(L"HIDDEN", nullptr, 1);
  const KvDbObjectId line = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  auto* entity = open<KvDbEntity>(line, KvDb::kForWrite);
  entity->setLinetype(old);
  entity->close();
  const KvDbObjectId layerId = addLayer(L"A");
  auto* record = open<KvDbLayerTableRecord>(layerId, KvDb::kForWrite);
  record->setLinetypeObjectId(old);
  record->close();
  drawing().setCeltype(old);
  EXPECT_EQ(IM_EnsureLineTypeExist(L"HIDDEN", 16), L"HIDDEN");
  const KvDbObjectId fresh = IM_GetLineTypeId(L"HIDDEN", nullptr, 1);
  EXPECT_NE(fresh, old);
  EXPECT_TRUE(old.isErased());
  entity = open<KvDbEntity>(line);
  EXPECT_EQ(entity->linetypeId(), fresh);
  entity->close();
  EXPECT_EQ(layer(layerId).linetypeObjectId(), fresh);
  EXPECT_EQ(drawing().celtype(), fresh);
}

TEST_F(Styles, ALinetypeThatNoFileHasOutlivesTheReload) {
  auto* table = open<KvDbLinetypeTable>(drawing().linetypeTableId(), KvDb::kForWrite);
  auto* own = new KvDbLinetypeTableRecord;
  own->setName(L"OWN_DASHES");
  KvDbObjectId id;
  ASSERT_EQ(table->add(id, own), Kvad::eOk);
  own->close();
  table->close();
  EXPECT_EQ(IM_EnsureLineTypeExist(L"OWN_DASHES", 16), L"ByLayer");
  EXPECT_EQ(IM_GetLineTypeId(L"OWN_DASHES", nullptr, 1), id);
  EXPECT_EQ(IM_EnsureLineTypeExist(L"Continuous", 16), L"ByLayer");
  EXPECT_TRUE(IM_GetLinetypeContinuousId(nullptr).isValid());
}

TEST_F(Styles, ArrowsByNameAndBack) {
  const auto message = [](int id) { return IM_GetStringFromRc(id, 256); };
  EXPECT_EQ(IM_GetArrowNameFromBlock(L"_DOT"), message(1154));
  EXPECT_EQ(IM_GetArrowNameFromBlock(L"_open30"), message(1163));
  EXPECT_EQ(IM_GetArrowNameFromBlock(L"XYZ"), message(1175));
  EXPECT_EQ(IM_GetArrowHeadBlockName(message(1155)), L"_DOT");
  EXPECT_EQ(IM_GetArrowHeadBlockName(message(1246)), L"_ORIGIN2");
  EXPECT_EQ(IM_GetArrowHeadBlockName(L"no such arrow"), L"");
}

TEST_F(Styles, GenDotIsAFilledDotWithATail) {
  ASSERT_EQ(IM_EnsureGenDotArrow(), 1);
  EXPECT_EQ(IM_EnsureGenDotArrow(), 1);
  const KvDbObjectId block = drawing().recordId(KvDbTable::Block, L"GENDOT");
  auto* record = open<KvDbBlockTableRecord>(block);
  ASSERT_EQ(record->entities().length(), 2);
  for (KvDbObjectId id : record->entities()) {
    auto* entity = open<KvDbEntity>(id);
    if (const auto* dot = KvDbPolyline::cast(entity)) {
      double width = 0;
      EXPECT_EQ(dot->getConstantWidth(width), Kvad::eOk);
      EXPECT_EQ(width, 2.5);
      EXPECT_TRUE(dot->isClosed());
    }
    entity->close();
  }
  record->close();
}

/// Tells which points are filled.
class FillCanvas : public KvGrCanvas {
 public:
  void beginPage(double, double, std::uint32_t) override {}
  void endPage() override {}
  void stroke(const KvGePoint2d*, int, const KvGrPen&) override {}
  void strokeCurves(const KvGePoint2d*, const unsigned char*, int, const KvGrPen&, bool) override {}
  void fill(const KvGePoint2d* points, const int* counts, int outlines, std::uint32_t) override {
    fills_.emplace_back();
    for (int i = 0; i < outlines; points += counts[i++])
      fills_.back().emplace_back(points, points + counts[i]);
  }
  void picture(const std::shared_ptr<const KvGrPicture>&, const KvGrMatrix&) override {}
  void glyph(const KvLtGlyph&, const KvGrMatrix&, std::uint32_t, double) override {}
  void pushClip(const std::vector<KvGePoint2d>&, bool) override {}
  void popClip() override {}
  std::string finish(std::string&) override { return {}; }

  bool isFilled(const KvGePoint2d& p) const {
    for (const auto& outlines : fills_) {
      bool isInside = false;
      for (const auto& outline : outlines)
        for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
          const KvGePoint2d &a = outline[i], &b = outline[j];
          if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            isInside = !isInside;
        }
      if (isInside) return true;
    }
    return false;
  }

 private:
  std::vector<std::vector<std::vector<KvGePoint2d>>> fills_;
};

TEST_F(Styles, GenDotIsFilledOnAPlot) {
  ASSERT_EQ(IM_EnsureGenDotArrow(), 1);
  add(new KvDbBlockReference({0, 0, 0}, drawing().recordId(KvDbTable::Block, L"GENDOT")));
  KvPlotOptions options;
  options.window = {{-3, -3}, {3, 3}};
  options.scale = 20;
  FillCanvas canvas;
  const KvPlotResult result = kvgrPlot(drawing(), options, canvas);
  ASSERT_TRUE(result.isPlotted) << result.error;
  // The middle line is a circle of 0.125, the width 2.5.
  constexpr double kRadius = 0.125 + 2.5 / 2;
  const auto isFilled = [&](double x, double y) {
    return canvas.isFilled({result.origin.x + x * result.scale, result.origin.y + y * result.scale});
  };
  for (double share : {0.0, 0.05, 0.1, 0.5, 0.98})
    for (double turn : {0.1, 1.7, 3.3, 4.9})
      EXPECT_TRUE(isFilled(share * kRadius * std::cos(turn), share * kRadius * std::sin(turn)))
          << share << " " << turn;
  EXPECT_FALSE(isFilled(1.02 * kRadius, 0.1));
}

class DimStyles : public Styles {
 protected:
  KvDbObjectId styleWith(const wchar_t* name, double textHeight) {
    auto* table = open<KvDbDimStyleTable>(drawing().dimStyleTableId(), KvDb::kForWrite);
    auto* record = new KvDbDimStyleTableRecord;
    record->setName(name);
    EXPECT_EQ(table->add(record), Kvad::eOk);
    KvDbDimVars variables;
    variables.set(KvDbDimVar::Txt, textHeight);
    variables.writeTo(*record);
    const KvDbObjectId id = record->objectId();
    record->close();
    table->close();
    return id;
  }
  CString current() { return kvdbRecordName(drawing().dimstyle()); }
};

TEST_F(DimStyles, OverridesAreSeenAndKept) {
  EXPECT_EQ(IM_IsDimStyleOverrided(nullptr), 0) << "a new drawing";
  const KvDbObjectId big = styleWith(L"BIG", 10);
  EXPECT_EQ(IM_SetCurrentDimStyle(big, 0), 1);
  EXPECT_EQ(drawing().header().real(L"$DIMTXT"), 10);
  EXPECT_EQ(IM_IsDimStyleOverrided(&drawing()), 0);
  drawing().header().setReal(L"$DIMTXT", 11);
  EXPECT_EQ(IM_IsDimStyleOverrided(nullptr), 1);
  EXPECT_EQ(IM_SetCurrentDimStyle(L"Standard", 0), 0);
  EXPECT_EQ(current(), L"BIG");
  EXPECT_EQ(drawing().header().real(L"$DIMTXT"), 11);
  EXPECT_EQ(IM_SetCurrentDimStyle(L"standard", 1), 1);
  EXPECT_EQ(current(), L"Standard");
  EXPECT_EQ(drawing().header().real(L"$DIMTXT"), 2.5);
  EXPECT_EQ(IM_SetCurrentDimStyle(L"no such style", 1), 0);
  EXPECT_EQ(IM_SetCurrentDimStyle(KvDbObjectId(), 1), 0);
  EXPECT_EQ(IM_SetCurrentDimStyle(drawing().layerZero(), 1), 0);
  EXPECT_EQ(current(), L"Standard");
}

TEST_F(DimStyles, TheVariableDimstyleLoadsTheStyle) {
  styleWith(L"BIG", 10);
  resbuf value{};
  value.restype = RTSTR;
  std::wstring name = L"big";
  value.resval.rstring = name.data();
  EXPECT_EQ(kvedSetVar(L"DIMSTYLE", &value), RTNORM);
  EXPECT_EQ(current(), L"BIG");
  EXPECT_EQ(drawing().header().real(L"$DIMTXT"), 10);
  name = L"no such style";
  value.resval.rstring = name.data();
  EXPECT_NE(kvedSetVar(L"DIMSTYLE", &value), RTNORM);
  EXPECT_EQ(current(), L"BIG");
  EXPECT_EQ(drawing().setDimstyleData({}), Kvad::eNullObjectId);
  EXPECT_EQ(drawing().setDimstyleData(drawing().layerZero()), Kvad::eWrongObjectType);
}

TEST_F(DimStyles, EveryVariableOfAStyleCountsAndOneUndoTakesAllBack) {
  const KvDbObjectId style = styleWith(L"BIG", 10);
  IM_SetCurrentDimStyle(style, 1);
  const KvDbDimVars plain = kvdbCurrentDimVars(drawing());
  int changed = 0;
  for (const KvDbDimVarRow& row : kvdbDimVarTable()) {
    if (row.variable == KvDbDimVar::TfillClr) continue;
    KvDbDimVars other = plain;
    if (row.kind == KvDbDimVarRow::Text) other.set(row.variable, L"<>x");
    if (row.kind == KvDbDimVarRow::Real || row.kind == KvDbDimVarRow::Int)
      other.set(row.variable, plain.real(row.variable) + 1);
    if (other == plain) continue;
    drawing().undoRecorder().beginGroup();
    kvdbSetCurrentDimVars(drawing(), other);
    drawing().undoRecorder().endGroup();
    EXPECT_EQ(IM_IsDimStyleOverrided(nullptr), 1) << platform::utf8From(CString(row.name));
    ASSERT_TRUE(drawing().undoRecorder().undo());
    EXPECT_EQ(IM_IsDimStyleOverrided(nullptr), 0) << platform::utf8From(CString(row.name));
    ++changed;
  }
  EXPECT_GT(changed, 60);
}

TEST_F(DimStyles, TheCurrentSetSurvivesTheFile) {
  IM_SetCurrentDimStyle(styleWith(L"BIG", 10), 1);
  IM_EnsureGenDotArrow();
  KvDbDimVars variables = kvdbCurrentDimVars(drawing());
  variables.set(KvDbDimVar::LdrBlk, drawing().recordId(KvDbTable::Block, L"GENDOT"));
  kvdbSetCurrentDimVars(drawing(), variables);
  EXPECT_EQ(kvdbCurrentDimVars(drawing()), variables);
  KvDbDatabase copy(false, true);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(copy, kvdbFormatDrawing(drawing()), report), Kvad::eOk);
  EXPECT_TRUE(kvdbIsDimStyleOverridden(copy));
  const KvDbDimVars read = kvdbCurrentDimVars(copy);
  EXPECT_EQ(kvdbRecordName(read.id(KvDbDimVar::LdrBlk)), L"GENDOT");
  EXPECT_EQ(read.real(KvDbDimVar::Txt), 10);
}

TEST_F(DimStyles, RealDrawingsTellTheirOverrides) {
  struct Row {
    const wchar_t* file;
    int isOverridden;
  };
  // Files leave out what is as in inches, give the angle of jogs in degrees, and name ByBlock or nothing.
  for (const Row& row :
       {Row{L"ae_r2000_ascii.dxf", 0}, Row{L"ae_r12_ascii.dxf", 0}, Row{L"allkinds_r2004_ascii.dxf", 0},
        Row{L"groups_r2013.dxf", 0}, Row{L"table_entity_r2013.dxf", 0},
        Row{L"sheet_parts_chute_r2000.dxf", 1}, Row{L"sheet_parts_aluminum_r2007.dxf", 1}}) {
    KvDbDatabase side(false, true);
    KvIoReport report;
    ASSERT_EQ(kvdbReadDrawing(side, std::filesystem::path(KORVANE_EXAMPLES) / "drawings" / row.file, report),
              Kvad::eOk);
    EXPECT_EQ(IM_IsDimStyleOverrided(&side), row.isOverridden) << platform::utf8From(CString(row.file));
  }
}

class Annotations : public Styles {
 protected:
  KvDbObjectId scale(const wchar_t* name, double paper, double units) {
    KvDbObjectContextManager manager(drawing());
    KvDbObjectId id;
    EXPECT_EQ(
        manager.contextCollection(kvdbAnnotationScaleCollectionName)->addContext({name, paper, units}, id),
        Kvad::eOk);
    return id;
  }
};

TEST_F(Annotations, OfObjectsThatCanAndThatCannot) {
  const KvDbObjectId line = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  const KvDbObjectId text = add(new KvDbText);
  EXPECT_EQ(IM_EnableObjectAnnotation(line, 1), 0);
  EXPECT_EQ(IM_IsObjectAnnotative(line), 0);
  EXPECT_EQ(IM_IsObjectAnnotative(static_cast<KvDbObject*>(nullptr)), 0);
  EXPECT_EQ(IM_EnableObjectAnnotation(KvDbObjectId(), 1), 0);
  EXPECT_EQ(IM_EnableObjectAnnotation(text, 0), 1) << "it isn't annotative";
  EXPECT_EQ(IM_EnableObjectAnnotation(text, 7), 1);
  EXPECT_EQ(IM_IsObjectAnnotative(text), 1);
  KvDbObject* open = this->open<KvDbObject>(text);
  EXPECT_EQ(IM_EnableObjectAnnotation(open, 0), 0) << "it is open for read only";
  open->close();
  EXPECT_EQ(IM_EnableObjectAnnotation(text, 0), 1);
  EXPECT_EQ(IM_IsObjectAnnotative(text), 0);
}

TEST_F(Annotations, ScalesAreFoundAttachedSavedAndUndone) {
  const KvDbObjectId half = scale(L"1:2", 1, 2);
  KvDbObjectContextManager manager(drawing());
  EXPECT_EQ(manager.contextCollection(L"other"), nullptr);
  auto* scales = manager.contextCollection(kvdbAnnotationScaleCollectionName);
  KvDbObjectId again;
  EXPECT_EQ(scales->addContext({L"1:2", 1, 2}, again), Kvad::eDuplicateKey);
  EXPECT_EQ(scales->addContext({L"1:0", 1, 0}, again), Kvad::eInvalidInput);
  const KvDbObjectId text = add(new KvDbText);
  const auto attached = [](KvDbObjectId id) {
    return kvdbObjectContextInterface(id.stub()->object)->contexts(id.stub()->object);
  };
  EXPECT_EQ(IM_SetObjectAnnotation(text, L"1:3"), 0);
  drawing().undoRecorder().beginGroup();
  EXPECT_EQ(IM_SetObjectAnnotation(text, L"1:2"), 1);
  EXPECT_EQ(IM_SetObjectAnnotation(text, L"1:2"), 1);
  drawing().undoRecorder().endGroup();
  ASSERT_EQ(attached(text).length(), 1);
  EXPECT_EQ(attached(text).at(0), half);

  KvDbDatabase copy(false, true);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(copy, kvdbFormatDrawing(drawing()), report), Kvad::eOk);
  const KvDbObjectId read = copy.idFromHandle(text.handle());
  EXPECT_EQ(IM_IsObjectAnnotative(read), 1);
  ASSERT_EQ(attached(read).length(), 1);
  EXPECT_EQ(kvdbAnnotationScaleOf(attached(read).at(0))->drawingUnits, 2);

  ASSERT_TRUE(drawing().undoRecorder().undo());
  EXPECT_EQ(attached(text).length(), 0);
}

TEST_F(Annotations, DimensionsAreDrawnAnewAtTheirScale) {
  const KvDbObjectId id = add(new KvDbAlignedDimension({0, 0, 0}, {10, 0, 0}, {5, 5, 0}));
  auto* dimension = open<KvDbDimension>(id);
  EXPECT_EQ(IM_AutoAnnotationDimension(dimension), 0);
  dimension->close();
  dimension = open<KvDbDimension>(id, KvDb::kForWrite);
  EXPECT_EQ(IM_AutoAnnotationDimension(dimension), 1);
  EXPECT_EQ(dimension->dimscale(), 1);
  scale(L"1:5", 1, 5);
  EXPECT_EQ(IM_SetObjectAnnotation(dimension, L"1:5"), 1);
  EXPECT_EQ(IM_AutoAnnotationDimension(dimension), 1);
  EXPECT_EQ(dimension->dimscale(), 5);
  EXPECT_TRUE(dimension->dimBlockId().isValid());
  dimension->close();
  EXPECT_EQ(IM_AutoAnnotationDimension(nullptr), 0);
}

/// What another program keeps for an object and a scale.
struct ContextData : KvDbProxyObject {
  explicit ContextData(KvDbObjectId scale) : KvDbProxyObject(CString(L"OTHER_CONTEXT_DATA")) {
    KvDxfGroup group;
    group.code = 340;
    group.kind = KvDxfKind::Handle;
    group.integer = static_cast<std::int64_t>(scale.handle().value());
    editUnknownSections().push_back(
        {KvDbSharedText(L"OtherContextData"), KvDbGroupList(std::vector<KvDxfGroup>{group})});
  }
};

TEST_F(Annotations, OtherProgramsScalesAreReadAndLeft) {
  const KvDbObjectId half = scale(L"1:2", 1, 2), text = add(new KvDbText);
  auto* object = open<KvDbText>(text, KvDb::kForWrite);
  auto* extension = new KvDbDictionary;
  object->setExtensionDictionary(drawing().addObject(extension, text));
  auto *manager = new KvDbDictionary, *scales = new KvDbDictionary;
  KvDbObjectId id;
  ASSERT_EQ(extension->setAt(L"AcDbContextDataManager", manager, id), Kvad::eOk);
  ASSERT_EQ(manager->setAt(kvdbAnnotationScaleCollectionName, scales, id), Kvad::eOk);
  auto* data = new ContextData(half);
  ASSERT_EQ(scales->setAt(L"*A1", data, id), Kvad::eOk);
  for (KvDbObject* one : std::initializer_list<KvDbObject*>{data, scales, manager, extension}) one->close();
  const auto* contexts = kvdbObjectContextInterface(object);
  EXPECT_TRUE(contexts->hasContext(object, half));
  EXPECT_EQ(contexts->removeContext(object, half), Kvad::eKeyNotFound);
  EXPECT_EQ(contexts->addContext(object, half), Kvad::eOk);
  EXPECT_EQ(extension->numEntries(), 1) << "nothing was to be added";
  EXPECT_EQ(contexts->addContext(object, text), Kvad::eWrongObjectType);
  object->close();
}

}  // namespace
