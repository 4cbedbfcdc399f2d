// The variables of dimensions, one by one: units, places of the text, fills.
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/internal/dimlayout.h"
#include "tests/entities/support.h"

namespace {

using V = KvDbDimVar;
using Numbers = std::vector<std::pair<V, double>>;

KvDbDimVars varsWith(const Numbers& numbers) {
  KvDbDimVars vars(true);
  vars.set(V::Dsep, '.');
  for (const auto& [variable, value] : numbers) EXPECT_EQ(vars.set(variable, value), Kvad::eOk);
  return vars;
}

TEST(DimensionVariables, AlternateUnits) {
  const struct {
    Numbers numbers;
    const wchar_t *post, *alternatePost, *text, *shown;
  } cases[] = {
      {{}, L"", L"", L"", L"25.4"},
      {{{V::Alt, 1}}, L"", L"", L"", L"25.4 [1.000]"},
      {{{V::Alt, 1}, {V::AltZ, 8}, {V::AltF, 2}, {V::AltD, 1}}, L"", L" in", L"<>", L"25.4 [50.8 in]"},
      {{{V::Alt, 1}, {V::AltF, 1}, {V::AltD, 1}, {V::AltRnd, 10}}, L"", L"~[]~", L"", L"25.4 [~30.0~]"},
      // The text asks for both itself.
      {{{V::AltD, 2}}, L"", L"", L"A<>B[]C", L"A25.4B[1.00]C"},
      {{{V::Alt, 1}, {V::AltD, 2}}, L"", L"", L"A<>B", L"A25.4 [1.00]B"},
      {{{V::Alt, 1}, {V::AltD, 2}}, L"<> mm\\X", L"", L"", L"25.4 mm\\X[1.00]"},
      {{{V::Alt, 1}, {V::AltD, 1}, {V::Tol, 1}, {V::Tp, 2.54}, {V::Tm, 2.54}, {V::AltTd, 2}},
       L"",
       L"",
       L"",
       L"25.4\x00B1"
       L"2.54 [1.0\x00B1"
       L"0.10]"},
      {{{V::Alt, 1}, {V::AltU, 4}, {V::AltF, 1}, {V::AltD, 1}}, L"", L"", L"", L"25.4 [2'-1{\\S1/2;}\"]"},
      {{{V::Alt, 1}, {V::AltU, 6}, {V::AltF, 1}, {V::AltD, 1}}, L"", L"", L"", L"25.4 [2'-1 1/2\"]"},
      {{{V::Alt, 1}, {V::Lfac, 2}, {V::AltF, 1}, {V::AltD, 1}}, L"", L"", L"", L"50.8 [50.8]"},
      {{{V::Alt, 1}}, L"", L"", L" ", L""},
  };
  for (const auto& c : cases) {
    KvDbDimVars vars = varsWith(c.numbers);
    vars.set(V::Post, c.post);
    vars.set(V::APost, c.alternatePost);
    EXPECT_EQ(kvdbDimensionContents(vars, c.text, 25.4, false, L""), c.shown)
        << platform::utf8From(CString(c.shown));
  }
  // Angles have no other units.
  EXPECT_EQ(kvdbDimensionContents(varsWith({{V::Alt, 1}}), L"", kvge::kPi, true, L""), L"180\x00B0");
}

TEST(DimensionVariables, FeetInchesAndFractions) {
  const struct {
    Numbers numbers;
    double value;
    const wchar_t* text;
  } cases[] = {
      // What DIMZIN leaves out, as its table has it.
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 0}}, 0.5, L"1/2\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 0}}, 12, L"1'"},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 0}}, 12.75, L"1'-0 3/4\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 1}}, 0.5, L"0'-0 1/2\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 1}}, 12, L"1'-0\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 2}}, 6, L"0'-6\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 2}}, 12, L"1'"},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 3}}, 6, L"6\""},
      {{{V::Lunit, 4}, {V::Frac, 2}, {V::Zin, 3}}, 12, L"1'-0\""},
      {{{V::Lunit, 4}, {V::Frac, 1}, {V::Tfac, 0.5}}, 0.5, L"{\\H0.5x;\\S1#2;}\""},
      {{{V::Lunit, 5}, {V::Frac, 0}}, 3.75, L"3{\\S3/4;}"},
      {{{V::Lunit, 5}, {V::Frac, 2}}, -0.25, L"-1/4"},
      {{{V::Lunit, 3}, {V::Zin, 0}}, 11.996, L"1'"},
      {{{V::Lunit, 3}, {V::Zin, 3}}, 18.5, L"1'-6.50\""},
      // Stacks can't stand in one another.
      {{{V::Lunit, 5}, {V::Lim, 1}, {V::Tp, 0.5}, {V::Tm, 0.5}}, 2, L"{\\S2 1/2^ 1 1/2;}"},
      {{{V::Tol, 1}, {V::Tp, 1}, {V::Tm, 2}, {V::TolJ, 1}, {V::Tfac, 0.7}}, 9, L"9{\\A1;\\H0.7x;\\S+1^-2;}"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(kvdbDimensionText(varsWith(c.numbers), c.value, false, L""), c.text)
        << platform::utf8From(CString(c.text));
}

/// What a dimension of 100 (or another length) at y = 20 is drawn of.
struct Parts {
  Parts(const Numbers& numbers, double length, const KvGePoint3d* place = nullptr) {
    auto* made = new KvDbRotatedDimension(0, {0, 0, 0}, {length, 0, 0}, {0, 20, 0});
    drawing.add(made);
    KvDbDimension* open = nullptr;
    EXPECT_EQ(kvdbOpenObject(open, made->objectId(), KvDb::kForWrite), Kvad::eOk);
    KvDbDimVars vars = open->dimVars();
    for (const auto& [variable, value] : numbers) vars.set(variable, value);
    EXPECT_EQ(open->setDimVars(vars), Kvad::eOk);
    if (place) open->setTextPosition(*place);
    EXPECT_EQ(open->recomputeDimBlock(), Kvad::eOk);
    open->close();
    for (const KvDbEntity* entity : drawing.entities(open->dimBlockId())) {
      if (const auto* line = KvDbLine::cast(entity)) lines.push_back({line->startPoint(), line->endPoint()});
      if (const auto* solid = KvDbSolid::cast(entity)) arrows.push_back(solid);
      if (const auto* found = KvDbMText::cast(entity)) text = found;
    }
  }
  /// How much of the dimension line's height is covered by lines.
  double covered(double from, double to) const {
    double sum = 0;
    for (const auto& [a, b] : lines)
      if (std::fabs(a.y - 20) < 1e-9 && std::fabs(b.y - 20) < 1e-9)
        sum += std::max(0.0, std::min(to, std::max(a.x, b.x)) - std::max(from, std::min(a.x, b.x)));
    return sum;
  }
  bool endsAt(const KvGePoint3d& p) const {
    return std::any_of(lines.begin(), lines.end(), [&](const auto& line) {
      return line.first.distanceTo(p) < 1e-6 || line.second.distanceTo(p) < 1e-6;
    });
  }
  TestDrawing drawing;
  std::vector<std::pair<KvGePoint3d, KvGePoint3d>> lines;
  std::vector<const KvDbSolid*> arrows;
  const KvDbMText* text = nullptr;
};

TEST(DimensionVariables, TextsThatWereMoved) {
  const KvGePoint3d onLine(30, 20, 0), aside(130, 20, 0), away(50, 60, 0);
  // In the line: the line is broken round it, wherever it is.
  const Parts broken({}, 100, &onLine);
  EXPECT_NEAR(broken.text->location().distanceTo(onLine), 0, 1e-9);
  EXPECT_EQ(broken.covered(29, 31), 0);
  EXPECT_NEAR(broken.covered(45, 55), 10, 1e-9);
  // Beyond its end: the line follows, as far as the text begins.
  for (const double move : {0.0, 1.0, 2.0}) {
    const Parts beyond({{V::Tmove, move}}, 100, &aside);
    EXPECT_NEAR(beyond.covered(101, 120), move == 0 ? 19 : 0, 1e-9) << move;
  }
  // Away from it: a leader from the line's middle, nothing, or nothing.
  for (const double move : {0.0, 1.0, 2.0}) {
    const Parts led({{V::Tmove, move}}, 100, &away);
    EXPECT_EQ(led.endsAt({50, 20, 0}), move == 1) << move;
    EXPECT_NEAR(led.covered(0, 100), 95, 1e-9);
    EXPECT_EQ(led.arrows.size(), 2u);
  }
}

TEST(DimensionVariables, PlacesOfTextAndArrows) {
  // Above the first extension line, along it.
  const Parts over({{V::Just, 3}}, 100);
  EXPECT_NEAR(std::fabs(over.text->direction().y), 1, 1e-9);
  EXPECT_LT(over.text->location().x, 0);
  EXPECT_GT(over.text->location().y, 20);
  // In the middle, moved by heights of the text: the line is whole when the text is clear of it.
  EXPECT_LT(Parts({{V::Tad, 0}, {V::Tvp, 0.5}}, 100).covered(0, 100), 94);
  const Parts below({{V::Tad, 0}, {V::Tvp, -1}}, 100);
  EXPECT_NEAR(below.covered(0, 100), 95, 1e-9);
  EXPECT_LT(below.text->location().y, 20);
  // Read from right to left.
  EXPECT_NEAR(Parts({{V::TxtDirection, 1}}, 100).text->direction().x, -1, 1e-9);
  // Arrows that find no room are left out only where the text is forced inside.
  EXPECT_EQ(Parts({{V::Soxd, 1}}, 3).arrows.size(), 2u);
  EXPECT_TRUE(Parts({{V::Soxd, 1}, {V::Tix, 1}}, 3).arrows.empty());
  // Ticks let the line run on.
  EXPECT_NEAR(Parts({{V::Tsz, 2}, {V::Dle, 3}}, 100).covered(-5, 105), 106, 1e-9);
}

TEST(DimensionVariables, FillsBehindTheText) {
  EXPECT_FALSE(Parts({}, 100).text->hasBackgroundFill());
  EXPECT_TRUE(Parts({{V::Tfill, 1}}, 100).text->hasBackgroundFill());
  const Parts colored({{V::Tfill, 2}, {V::TfillClr, 3}}, 100);
  EXPECT_GT(TestSink(*colored.text).filledOutlines, 0);
  // In a style's record the colour has the code of the record's flags, and comes behind them.
  TestDrawing drawing;
  const KvDbObjectId style = drawing.database().recordId(KvDbTable::DimStyle, L"Standard");
  KvDbDimVars vars = KvDbDimVars::ofStyle(style);
  vars.set(V::Tfill, 2);
  vars.set(V::TfillClr, 64);
  KvDbDimStyleTableRecord* record = nullptr;
  ASSERT_EQ(kvdbOpenObject(record, style, KvDb::kForWrite), Kvad::eOk);
  vars.writeTo(*record);
  record->close();
  drawing.throughFile();
  EXPECT_TRUE(KvDbDimVars::ofStyle(drawing.database().recordId(KvDbTable::DimStyle, L"Standard")) == vars);
}

TEST(DimensionVariables, TheLevelDirectionOfOrdinates) {
  // An axis turned by 30 degrees: (10, 0) along it lies at 10 cos 30 and has 10 sin 30 beside it.
  KvDbOrdinateDimension along(true, {10, 0, 0}, {12, 0, 0}), across(false, {10, 0, 0}, {12, 0, 0});
  for (KvDbOrdinateDimension* dimension : {&along, &across}) dimension->setHorizontalRotation(kvge::kPi / 6);
  double value = 0;
  along.getMeasurement(value);
  EXPECT_NEAR(value, 10 * std::cos(kvge::kPi / 6), 1e-12);
  across.getMeasurement(value);
  EXPECT_NEAR(value, 5, 1e-12);
  // Turned as a whole they measure the same.
  along.transformBy(KvGeMatrix3d::rotation(1, KvGeVector3d::kZAxis));
  along.getMeasurement(value);
  EXPECT_NEAR(value, 10 * std::cos(kvge::kPi / 6), 1e-12);
  EXPECT_NEAR(along.horizontalRotation(), kvge::kPi / 6 + 1, 1e-12);
  // Files have the angle clockwise.
  TestDrawing drawing;
  auto* filed = new KvDbOrdinateDimension(false, {10, 0, 0}, {12, 0, 0});
  filed->setHorizontalRotation(kvge::kPi / 6);
  drawing.add(filed);
  KvIoSaveOptions options;
  const std::string bytes = kvdbFormatDrawing(drawing.database(), options);
  EXPECT_NE(bytes.find(" 51\r\n-30.0\r\n"), std::string::npos);
}

}  // namespace
