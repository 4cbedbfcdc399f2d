// Dimensions: what they measure, how the value is written, what stands in their blocks.
#include "host/entities/dimension.h"

#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/internal/dimlayout.h"
#include "tests/entities/support.h"

namespace {

using V = KvDbDimVar;

struct Content {
  explicit Content(const KvDbDimension& dimension) {
    if (!dimension.dimBlockId().isValid()) return;
    const auto* block = KvDbBlockTableRecord::cast(dimension.dimBlockId().stub()->object);
    name = block->getName();
    for (KvDbObjectId id : block->entities()) {
      const auto* entity = KvDbEntity::cast(id.stub()->object);
      if (entity->isKindOf(KvDbLine::desc())) ++lines;
      if (entity->isKindOf(KvDbArc::desc())) ++arcs;
      if (entity->isKindOf(KvDbSolid::desc())) ++arrows;
      if (const auto* text = KvDbMText::cast(entity)) {
        texts.push_back(text->plainText());
        places.push_back(text->location());
      }
    }
  }
  CString name;
  int lines = 0, arcs = 0, arrows = 0;
  std::vector<CString> texts;
  std::vector<KvGePoint3d> places;
};

template <class D>
D* compute(TestDrawing& drawing, D* dimension) {
  drawing.add(dimension);
  KvDbDimension* open = nullptr;
  EXPECT_EQ(kvdbOpenObject(open, dimension->objectId(), KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(open->recomputeDimBlock(), Kvad::eOk);
  open->close();
  return dimension;
}

TEST(Dimension, ValuesAreWrittenAsTheVariablesWant) {
  struct Case {
    std::vector<std::pair<V, double>> numbers;
    const wchar_t* post;
    double value;
    bool isAngle;
    const wchar_t* text;
  };
  const double right = kvge::kPi / 2;
  const Case cases[] = {
      {{}, nullptr, 12.5, false, L"12,5"},
      {{{V::Dsep, '.'}}, nullptr, 12.0, false, L"12"},
      {{{V::Dsep, '.'}, {V::Zin, 0}}, nullptr, 12.0, false, L"12.00"},
      {{{V::Dsep, '.'}, {V::Zin, 12}}, nullptr, 0.5, false, L".5"},
      {{{V::Dsep, '.'}, {V::Lfac, 2}, {V::Dec, 3}}, nullptr, 1.0625, false, L"2.125"},
      {{{V::Rnd, 0.25}, {V::Dsep, '.'}}, nullptr, 1.3, false, L"1.25"},
      {{{V::Dec, 0}}, nullptr, 9.6, false, L"10"},
      {{}, L"M<>x1", 8, false, L"M8x1"},
      {{}, L" mm", 8, false, L"8 mm"},
      {{{V::Tol, 1}, {V::Tp, 0.1}, {V::Tm, 0.1}, {V::Dsep, '.'}},
       nullptr,
       8,
       false,
       L"8\x00B1"
       L"0.1"},
      {{{V::Tol, 1}, {V::Tp, 0.1}, {V::Tm, 0.2}, {V::Dsep, '.'}}, nullptr, 8, false, L"8{\\S+0.1^-0.2;}"},
      {{{V::Lim, 1}, {V::Tp, 0.1}, {V::Tm, 0.2}, {V::Dsep, '.'}}, nullptr, 8, false, L"{\\S8.1^ 7.8;}"},
      {{{V::Lunit, 4}, {V::Dec, 2}, {V::Frac, 2}}, nullptr, 15.5, false, L"1'-3 1/2\""},
      {{{V::Lunit, 5}, {V::Dec, 3}, {V::Frac, 2}}, nullptr, 2.25, false, L"2 1/4"},
      {{}, nullptr, right, true, L"90\x00B0"},
      {{{V::Adec, 2}, {V::Azin, 0}, {V::Dsep, '.'}}, nullptr, right / 4, true, L"22.50\x00B0"},
      {{{V::Aunit, 1}, {V::Adec, 2}},
       nullptr,
       right / 4,
       true,
       L"22\x00B0"
       L"30'"},
      {{{V::Aunit, 2}}, nullptr, right, true, L"100g"},
  };
  for (const Case& c : cases) {
    KvDbDimVars vars(true);
    for (const auto& [variable, value] : c.numbers) EXPECT_EQ(vars.set(variable, value), Kvad::eOk);
    if (c.post) vars.set(V::Post, c.post);
    EXPECT_EQ(kvdbDimensionText(vars, c.value, c.isAngle, L""), c.text)
        << platform::utf8From(CString(c.text));
  }
}

TEST(Dimension, EachKindMeasuresItsOwn) {
  double value = 0;
  EXPECT_EQ(KvDbAlignedDimension({0, 0, 0}, {30, 40, 0}, {0, 10, 0}).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 50);
  EXPECT_EQ(KvDbRotatedDimension(0, {0, 0, 0}, {30, 40, 0}, {0, 50, 0}).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 30);
  EXPECT_EQ(KvDbRadialDimension({1, 1, 0}, {4, 5, 0}, 0).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 5);
  EXPECT_EQ(KvDbDiametricDimension({4, 5, 0}, {-2, -3, 0}, 0).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 10);
  EXPECT_EQ(KvDbOrdinateDimension(true, {7, 3, 0}, {7, 20, 0}).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 7);
  EXPECT_EQ(KvDbOrdinateDimension(false, {7, 3, 0}, {20, 3, 0}).getMeasurement(value), Kvad::eOk);
  EXPECT_DOUBLE_EQ(value, 3);
  // Two crossing lines: which of the four angles, the arc's point tells.
  KvDb2LineAngularDimension two;
  two.setXLine1Start({-10, 0, 0});
  two.setXLine1End({10, 0, 0});
  two.setXLine2Start({-10, -10, 0});
  two.setXLine2End({10, 10, 0});
  const struct {
    KvGePoint3d arc;
    double degrees;
  } sides[] = {{{10, 4, 0}, 45}, {{0, 8, 0}, 135}, {{-10, -4, 0}, 45}, {{0, -8, 0}, 135}};
  for (const auto& side : sides) {
    two.setArcPoint(side.arc);
    ASSERT_EQ(two.getMeasurement(value), Kvad::eOk);
    EXPECT_NEAR(kvdxfDegrees(value), side.degrees, 1e-9);
  }
  two.setXLine2Start({0, 5, 0});
  two.setXLine2End({10, 5, 0});  // parallel
  EXPECT_EQ(two.getMeasurement(value), Kvad::eDegenerateGeometry);
  KvDb3PointAngularDimension three;
  three.setCenterPoint({0, 0, 0});
  three.setXLine1Point({5, 0, 0});
  three.setXLine2Point({0, 5, 0});
  three.setArcPoint({3, 3, 0});
  three.getMeasurement(value);
  EXPECT_NEAR(kvdxfDegrees(value), 90, 1e-9);
  three.setArcPoint({-3, 3, 0});
  three.getMeasurement(value);
  EXPECT_NEAR(kvdxfDegrees(value), 270, 1e-9);
}

TEST(Dimension, TheBlockHoldsLinesArrowsAndText) {
  TestDrawing drawing;
  auto* dimension = new KvDbRotatedDimension(0, {0, 0, 0}, {100, 0, 0}, {0, 20, 0});
  EXPECT_LE(dimension->measurement(), 0);
  compute(drawing, dimension);
  EXPECT_DOUBLE_EQ(dimension->measurement(), 100);
  const Content content(*dimension);
  EXPECT_EQ(content.name, L"*D1");
  EXPECT_EQ(content.lines, 3);  // two extension lines and the dimension line below the text
  EXPECT_EQ(content.arrows, 2);
  ASSERT_EQ(content.texts.size(), 1u);
  EXPECT_EQ(content.texts[0], L"100");
  EXPECT_NEAR(content.places[0].x, 50, 1e-9);
  EXPECT_GT(content.places[0].y, 20);  // above the line
  EXPECT_LT(dimension->textPosition().distanceTo(content.places[0]), 1e-9);
  KvDbExtents extents;
  ASSERT_EQ(dimension->getGeomExtents(extents), Kvad::eOk);
  EXPECT_NEAR(extents.maxPoint().y, 20 + 2.5 + 0.625, 0.7);
  // Another has a block of its own; computing again keeps it.
  auto* second =
      compute(drawing, new KvDbAlignedDimension({0, 0, 0}, {0, 50, 0}, {-10, 0, 0}, L"a<>b\\Xlow"));
  const Content other(*second);
  EXPECT_EQ(other.name, L"*D2");
  ASSERT_EQ(other.texts.size(), 2u);
  KvDbDimension* open = nullptr;
  kvdbOpenObject(open, second->objectId(), KvDb::kForWrite);
  open->setDimensionText(L" ");
  EXPECT_EQ(open->recomputeDimBlock(false), Kvad::eOk);
  EXPECT_EQ(Content(*open).texts.size(), 2u);
  EXPECT_EQ(open->recomputeDimBlock(true), Kvad::eOk);
  EXPECT_EQ(Content(*open).name, L"*D2");
  EXPECT_TRUE(Content(*open).texts.empty());
  open->close();
  EXPECT_EQ(drawing.database().openCount(), 0);
}

TEST(Dimension, WhatDoesNotFitGoesOutside) {
  TestDrawing drawing;
  const struct {
    double length;
    bool isTextInside;
    double arrowSide;  ///< where the arrows' backs lie: 1 inside, -1 outside
  } cases[] = {{100, true, 1}, {7.5, true, -1}, {3, false, -1}};
  for (const auto& c : cases) {
    auto* dimension = compute(drawing, new KvDbRotatedDimension(0, {0, 0, 0}, {c.length, 0, 0}, {0, 20, 0}));
    const Content content(*dimension);
    ASSERT_EQ(content.places.size(), 1u);
    EXPECT_EQ(content.places[0].x < c.length, c.isTextInside) << c.length;
    EXPECT_EQ(content.arrows, 2);
    const auto* block = KvDbBlockTableRecord::cast(dimension->dimBlockId().stub()->object);
    for (KvDbObjectId id : block->entities()) {
      const auto* arrow = KvDbSolid::cast(KvDbEntity::cast(id.stub()->object));
      KvGePoint3d back, tip;
      if (!arrow || arrow->getPointAt(0, back) != Kvad::eOk || arrow->getPointAt(2, tip) != Kvad::eOk)
        continue;
      const bool isFirst = std::fabs(tip.x) < 1e-9;
      EXPECT_NEAR(back.x - tip.x, (isFirst ? 2.5 : -2.5) * c.arrowSide, 1e-9) << c.length;
    }
  }
}

TEST(Dimension, OverridesChangeTheOneDimensionOnly) {
  TestDrawing drawing;
  kvdbHostApplicationServices();
  auto* dimension = drawing.add(new KvDbRotatedDimension(0, {0, 0, 0}, {100.125, 0, 0}, {0, 20, 0}));
  KvDbDimension* open = nullptr;
  ASSERT_EQ(kvdbOpenObject(open, dimension->objectId(), KvDb::kForWrite), Kvad::eOk);
  const KvDbDimVars before = open->dimVars();
  ASSERT_EQ(open->setDimdec(3), Kvad::eOk);
  ASSERT_EQ(open->setDimlfac(10), Kvad::eOk);
  EXPECT_EQ(open->dimdec(), 3);
  EXPECT_EQ(open->dimlfac(), 10);
  EXPECT_FALSE(open->dimVars() == before);
  EXPECT_EQ(open->formattedMeasurement(), L"1001,25");
  open->close();
  drawing.throughFile();
  const auto* again = KvDbDimension::cast(drawing.entities().at(0));
  EXPECT_EQ(again->dimdec(), 3);
  EXPECT_EQ(again->formattedMeasurement(), L"1001,25");
}

TEST(Dimension, StylesAreReadAndWrittenWhole) {
  TestDrawing drawing;
  const KvDbObjectId style = drawing.database().recordId(KvDbTable::DimStyle, L"Standard");
  KvDbDimVars vars = KvDbDimVars::ofStyle(style);
  vars.set(V::Txt, 7);
  vars.set(V::Post, L"<> mm");
  vars.set(V::TxSty, drawing.database().recordId(KvDbTable::TextStyle, L"Standard"));
  EXPECT_EQ(vars.set(V::Txt, L"x"), Kvad::eInvalidInput);
  EXPECT_EQ(vars.set(V::Txt, std::nan("")), Kvad::eInvalidInput);
  KvDbDimStyleTableRecord* record = nullptr;
  ASSERT_EQ(kvdbOpenObject(record, style, KvDb::kForWrite), Kvad::eOk);
  vars.writeTo(*record);
  record->close();
  EXPECT_TRUE(KvDbDimVars::ofStyle(style) == vars);
  EXPECT_EQ(kvdbDimVarNamed(L"dimtxt")->variable, V::Txt);
  EXPECT_EQ(kvdbDimVarNamed(L"DIMNONE"), nullptr);
  for (const KvDbDimVarRow& row : kvdbDimVarTable()) EXPECT_EQ(kvdbDimVarNamed(row.name), &row);
}

TEST(Dimension, MovedOnesMeasureTheSame) {
  TestDrawing drawing;
  auto* dimension = compute(drawing, new KvDbRotatedDimension(0.3, {0, 0, 0}, {30, 40, 0}, {0, 50, 0}));
  const double before = dimension->measurement();
  KvDbDimension* open = nullptr;
  kvdbOpenObject(open, dimension->objectId(), KvDb::kForWrite);
  ASSERT_EQ(open->transformBy(KvGeMatrix3d::translation({5, 6, 7}) *
                              KvGeMatrix3d::rotation(1, KvGeVector3d::kZAxis)),
            Kvad::eOk);
  EXPECT_NEAR(open->measurement(), before, 1e-12);
  KvDbVoidPtrArray parts;
  ASSERT_EQ(open->explode(parts), Kvad::eOk);
  EXPECT_GE(parts.length(), 6);
  for (void* part : parts) delete static_cast<KvDbEntity*>(part);
  open->close();
}

TEST(Dimension, EveryKindComesBackFromAFile) {
  TestDrawing drawing;
  auto* two = new KvDb2LineAngularDimension;
  two->setXLine1Start({0, 0, 0});
  two->setXLine1End({50, 0, 0});
  two->setXLine2Start({0, 0, 0});
  two->setXLine2End({50, 50, 0});
  two->setArcPoint({40, 10, 0});
  auto* three = new KvDb3PointAngularDimension;
  three->setXLine1Point({50, 0, 0});
  three->setXLine2Point({0, 50, 0});
  three->setArcPoint({30, 30, 0});
  const std::vector<KvDbDimension*> all = {
      new KvDbAlignedDimension({0, 0, 0}, {30, 40, 0}, {0, 10, 0}),
      new KvDbRotatedDimension(kvge::kPi / 2, {0, 0, 0}, {30, 40, 0}, {0, 10, 0}),
      two,
      three,
      new KvDbRadialDimension({0, 0, 0}, {30, 0, 0}, 10),
      new KvDbDiametricDimension({30, 0, 0}, {-30, 0, 0}, 0),
      new KvDbOrdinateDimension(true, {7, 3, 0}, {9, 40, 0})};
  std::vector<const KvRxClass*> kinds;
  std::vector<double> values;
  for (KvDbDimension* dimension : all) {
    compute(drawing, dimension);
    kinds.push_back(dimension->isA());
    values.push_back(dimension->measurement());
    EXPECT_EQ(Content(*dimension).texts.size(), 1u) << dimension->isA()->name();
  }
  drawing.throughFile();
  const auto again = drawing.entities();
  ASSERT_EQ(again.size(), all.size());
  for (std::size_t i = 0; i < again.size(); ++i) {
    EXPECT_EQ(again[i]->isA(), kinds[i]);
    const auto* dimension = KvDbDimension::cast(again[i]);
    ASSERT_TRUE(dimension);
    EXPECT_DOUBLE_EQ(dimension->measurement(), values[i]);
    double value = 0;
    dimension->getMeasurement(value);
    EXPECT_NEAR(value, values[i], 1e-12);
    EXPECT_TRUE(dimension->dimBlockId().isValid());
  }
}

TEST(Dimension, ThoseOfRealDrawingsMeasureWhatTheFileSays) {
  int seen = 0;
  for (const char* name : {"allkinds_r2004_ascii", "dimension_nested_blocks_r2013", "allkinds_r12_ascii"}) {
    TestDrawing drawing;
    drawing.read((std::string(KORVANE_EXAMPLES "/drawings/") + name + ".dxf").c_str());
    for (const KvDbEntity* entity : drawing.entities()) {
      const auto* dimension = KvDbDimension::cast(entity);
      if (!dimension || !(dimension->measurement() > 0)) continue;
      ++seen;
      double value = 0;
      ASSERT_EQ(dimension->getMeasurement(value), Kvad::eOk) << name;
      EXPECT_NEAR(value, dimension->measurement(), 1e-6 * (1 + value))
          << name << " " << dimension->isA()->name();
    }
  }
  EXPECT_GT(seen, 8);
}

}  // namespace
