// Texts: where justified ones begin, what transforms make of them, attributes from definitions, paragraph
// text in files and in pieces.
#include "host/entities/text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/base/context.h"
#include "host/database/database.h"
#include "host/database/header.h"
#include "host/entities/attribute.h"
#include "host/entities/mtext.h"
#include "host/entities/textstyle.h"
#include "host/geometry/line.h"
#include "host/io/drawing_file.h"
#include "tests/support/print.h"

namespace {

KvDbExtents boxOf(const KvDbEntity& entity) {
  KvDbExtents box;
  EXPECT_EQ(entity.getGeomExtents(box), Kvad::eOk);
  return box;
}

/// About a line in the XY plane: by the wall that stands on it, or by a half turn about it.
KvGeMatrix3d mirrorAbout(const KvGePoint3d& a, const KvGePoint3d& b, bool byWall = true) {
  if (!byWall) return KvGeMatrix3d().setToMirroring(KvGeLine3d(a, b));
  return KvGeMatrix3d().setToMirroring(KvGePlane(a, (b - a).crossProduct(KvGeVector3d::kZAxis)));
}

TEST(Text, JustifiedTextsStandByTheirPoint) {
  const double width = KvDbText({}, L"HEM", {}, 2).textWidth();
  const struct {
    KvDb::TextHorzMode horizontal;
    KvDb::TextVertMode vertical;
    double x, y;  // of the start, from the point
  } cases[] = {
      {KvDb::kTextCenter, KvDb::kTextBase, -width / 2, 0},
      {KvDb::kTextRight, KvDb::kTextBase, -width, 0},
      {KvDb::kTextMid, KvDb::kTextBase, -width / 2, -1},
      {KvDb::kTextLeft, KvDb::kTextTop, 0, -2},
      {KvDb::kTextCenter, KvDb::kTextVertMid, -width / 2, -1},
      {KvDb::kTextRight, KvDb::kTextBottom, -width, 2.0 / 3},
  };
  for (const auto& c : cases) {
    KvDbText text({77, 77, 0}, L"HEM", {}, 2);
    text.setHorizontalMode(c.horizontal);
    text.setVerticalMode(c.vertical);
    text.setAlignmentPoint({10, 20, 0});
    EXPECT_EQ(text.adjustAlignment(), Kvad::eOk);
    EXPECT_NEAR(text.position().x, 10 + c.x, 1e-12);
    EXPECT_NEAR(text.position().y, 20 + c.y, 1e-12);
    // Turned by a right angle, the same turned.
    text.setRotation(kvge::kPi / 2);
    text.adjustAlignment();
    EXPECT_NEAR(text.position().x, 10 - c.y, 1e-12);
    EXPECT_NEAR(text.position().y, 20 + c.x, 1e-12);
  }
  EXPECT_EQ(KvDbText({}, L"HEM").adjustAlignment(), Kvad::eInvalidInput);
}

TEST(Text, FittedTextsSpanTheirPoints) {
  for (auto mode : {KvDb::kTextFit, KvDb::kTextAlign}) {
    KvDbText text({1, 1, 0}, L"HEM", {}, 2);
    text.setHorizontalMode(mode);
    text.setAlignmentPoint({1, 31, 0});
    text.adjustAlignment();
    EXPECT_NEAR(text.textWidth(), 30, 1e-9);
    EXPECT_NEAR(text.rotation(), kvge::kPi / 2, 1e-12);
    EXPECT_EQ(text.height() == 2, mode == KvDb::kTextFit);
    EXPECT_EQ(text.widthFactor() == 1, mode == KvDb::kTextAlign);
  }
}

TEST(Text, SettersRefuseNonsense) {
  KvDbText text({}, L"x", {}, 2);
  for (double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) {
    EXPECT_EQ(text.setHeight(bad), Kvad::eInvalidInput);
    EXPECT_EQ(text.setWidthFactor(bad), Kvad::eInvalidInput);
  }
  EXPECT_EQ(text.setOblique(1.5), Kvad::eInvalidInput);
  EXPECT_EQ(text.setNormal({0, 0, 0}), Kvad::eInvalidInput);
  EXPECT_EQ(text.setRotation(std::nan("")), Kvad::eInvalidInput);
  EXPECT_EQ(text.transformBy(KvGeMatrix3d::scaling(0)), Kvad::eDegenerateGeometry);
  EXPECT_EQ(text.height(), 2);
}

TEST(Text, TransformsMoveTheBoxWithThem) {
  KvGeMatrix3d stretched;
  stretched.entry[0][0] = 3;
  const KvGeMatrix3d cases[] = {
      KvGeMatrix3d::translation({5, -3, 2}),
      KvGeMatrix3d::rotation(kvge::kPi / 2, KvGeVector3d::kZAxis, {4, 4, 0}),
      KvGeMatrix3d::scaling(2.5, {1, 1, 0}),
      stretched,
      KvGeMatrix3d::rotation(kvge::kPi / 2, KvGeVector3d::kXAxis),
  };
  for (const KvGeMatrix3d& matrix : cases) {
    KvDbText text({10, 20, 0}, L"HEM", {}, 2);
    KvDbExtents expected;
    const KvDbExtents before = boxOf(text);
    for (double x : {before.minPoint().x, before.maxPoint().x})
      for (double y : {before.minPoint().y, before.maxPoint().y})
        expected.addPoint(matrix * KvGePoint3d(x, y, 0));
    ASSERT_EQ(text.transformBy(matrix), Kvad::eOk);
    const KvDbExtents after = boxOf(text);
    EXPECT_TRUE(after.minPoint().isEqualTo(expected.minPoint(), KvGeTol(1e-9, 1e-9)));
    EXPECT_TRUE(after.maxPoint().isEqualTo(expected.maxPoint(), KvGeTol(1e-9, 1e-9)));
  }
}

class MirrorTest : public testing::TestWithParam<bool> {
 protected:
  MirrorTest() {
    services.setWorkingDatabase(&drawing);
    KvHostContext::current().services = &services;
    drawing.header().setWhole(L"$MIRRTEXT", GetParam() ? 1 : 0);
  }
  ~MirrorTest() override { KvHostContext::current() = {}; }
  KvDbDatabase drawing;
  KvDbHostApplicationServices services;
};

TEST_P(MirrorTest, TextTakesTheMirroredBox) {
  const std::pair<KvGePoint3d, KvGePoint3d> axes[] = {{{50, 0, 0}, {50, 1, 0}}, {{0, -7, 0}, {1, -7, 0}}};
  for (const auto& [a, b] : axes)
    for (bool byWall : {true, false})
      for (auto mode : {KvDb::kTextLeft, KvDb::kTextCenter, KvDb::kTextRight, KvDb::kTextMid}) {
        SCOPED_TRACE(testing::Message() << a.x << " mode " << mode << (byWall ? " wall" : " half turn"));
        KvDbText text({10, 20, 0}, L"HEM", {}, 2);
        text.setHorizontalMode(mode);
        text.setAlignmentPoint({10, 20, 0});
        const KvGeMatrix3d mirror = mirrorAbout(a, b, byWall);
        const KvDbExtents before = boxOf(text);
        KvDbExtents expected;
        expected.addPoint(mirror * before.minPoint());
        expected.addPoint(mirror * before.maxPoint());
        ASSERT_EQ(text.transformBy(mirror), Kvad::eOk);
        const KvDbExtents after = boxOf(text);
        // Readable letters have their clear space, and what round ones reach beyond the lines, at the other
        // side.
        const double slack = GetParam() ? 1e-9 : 0.25;
        EXPECT_NEAR(after.minPoint().x, expected.minPoint().x, slack);
        EXPECT_NEAR(after.maxPoint().x, expected.maxPoint().x, slack);
        EXPECT_NEAR(after.minPoint().y, expected.minPoint().y, GetParam() ? 1e-9 : 0.02);
        EXPECT_NEAR(after.maxPoint().y, expected.maxPoint().y, GetParam() ? 1e-9 : 0.02);
        EXPECT_EQ(text.normal().z < 0, GetParam() && !byWall);
        if (GetParam() && !byWall) continue;  // seen from behind
        EXPECT_EQ(text.isMirroredInX() || text.isMirroredInY(), GetParam());
        EXPECT_NEAR(std::sin(text.rotation()), 0, 1e-12);
        EXPECT_NEAR(std::cos(text.rotation()), 1, 1e-12) << "never on its head";
        if (!GetParam()) continue;
        text.transformBy(mirror);
        EXPECT_FALSE(text.isMirroredInX() || text.isMirroredInY()) << "twice mirrored is not mirrored";
        EXPECT_NEAR(boxOf(text).minPoint().x, before.minPoint().x, 1e-9);
      }
}
INSTANTIATE_TEST_SUITE_P(Text, MirrorTest, testing::Bool());

TEST(Attributes, FollowTheirDefinition) {
  KvDbAttributeDefinition definition({1, 2, 0}, L"default", L"PART_NO", L"Number?");
  definition.setHeight(3);
  definition.setHorizontalMode(KvDb::kTextCenter);
  definition.setAlignmentPoint({4, 2, 0});
  definition.setInvisible(true);
  definition.setPreset(true);
  definition.setFieldLength(12);
  definition.setColorIndex(3);
  KvDbAttribute attribute;
  const KvGeMatrix3d place = KvGeMatrix3d::translation({100, 0, 0}) * KvGeMatrix3d::scaling(2);
  ASSERT_EQ(attribute.setAttributeFromBlock(&definition, place), Kvad::eOk);
  EXPECT_EQ(attribute.tag(), CString(L"PART_NO"));
  EXPECT_EQ(attribute.textString(), CString(L"default"));
  EXPECT_EQ(attribute.height(), 6);
  EXPECT_TRUE(attribute.alignmentPoint().isEqualTo({108, 4, 0}));
  EXPECT_TRUE(attribute.isInvisible() && attribute.isPreset() && !attribute.isConstant());
  EXPECT_EQ(attribute.fieldLength(), 12);
  EXPECT_EQ(attribute.colorIndex(), 3);
  EXPECT_EQ(attribute.setAttributeFromBlock(nullptr, place), Kvad::eNullObjectPointer);
  EXPECT_EQ(attribute.setAttributeFromBlock(&definition, KvGeMatrix3d::scaling(0)),
            Kvad::eDegenerateGeometry);
  EXPECT_EQ(attribute.height(), 6) << "a failure changes nothing";
  EXPECT_EQ(attribute.setTag(L"two words"), Kvad::eInvalidInput);
  EXPECT_EQ(attribute.setTag(L""), Kvad::eInvalidInput);
}

TEST(ParagraphText, WorksOutsideADrawing) {
  KvDbMText text;
  text.setDatabaseDefaults();
  EXPECT_EQ(text.setContents(L"HEM\\PHE"), Kvad::eOk);
  text.setTextHeight(3.5);
  const double plain = text.actualWidth();
  EXPECT_NEAR(text.actualHeight(), 3.5 * (1 + 5.0 / 3), 1e-12);
  CString narrow;
  narrow.Format(L"\\W%.6f;%s", 0.5, L"HEM");
  text.setContents(narrow);
  EXPECT_NEAR(text.actualWidth(), plain / 2, 1e-12);
  EXPECT_EQ(text.setWidth(-1), Kvad::eInvalidInput);
  EXPECT_EQ(text.setTextHeight(0), Kvad::eInvalidInput);
  EXPECT_EQ(text.setLineSpacingFactor(5), Kvad::eInvalidInput);
  EXPECT_EQ(text.setDirection({}), Kvad::eInvalidInput);
}

TEST(ParagraphText, MirroredStaysReadableInItsBox) {
  for (int attachment = 1; attachment <= 9; ++attachment) {
    KvDbMText text;
    text.setContents(L"HEM\\PHE");
    text.setTextHeight(2);
    text.setLocation({10, 20, 0});
    text.setAttachment(static_cast<KvDbMText::AttachmentPoint>(attachment));
    const KvGeMatrix3d mirror = mirrorAbout({50, 0, 0}, {50, 1, 0});
    const KvDbExtents before = boxOf(text);
    ASSERT_EQ(text.transformBy(mirror), Kvad::eOk);
    EXPECT_NEAR(text.rotation(), 0, 1e-12);
    EXPECT_NEAR(boxOf(text).minPoint().x, (mirror * before.maxPoint()).x, 1e-9) << attachment;
    EXPECT_NEAR(boxOf(text).minPoint().y, before.minPoint().y, 1e-9) << attachment;
  }
}

TEST(ParagraphText, ExplodesIntoTextsInPlace) {
  KvDbMText text;
  text.setContents(L"{\\C1;HE} {\\H2x;M}\\P\\S1/2;");
  text.setTextHeight(2);
  text.setRotation(kvge::kPi / 2);
  text.setLocation({10, 20, 0});
  KvDbVoidPtrArray parts;
  ASSERT_EQ(text.explode(parts), Kvad::eOk);
  std::vector<std::unique_ptr<KvDbEntity>> owned;
  for (void* part : parts) owned.emplace_back(static_cast<KvDbEntity*>(part));
  ASSERT_EQ(owned.size(), 5u);
  const auto* first = KvDbText::cast(owned[0].get());
  ASSERT_TRUE(first);
  EXPECT_EQ(first->textString(), CString(L"HE"));
  EXPECT_EQ(first->colorIndex(), 1);
  EXPECT_TRUE(first->position().isEqualTo({14, 20, 0})) << "below the capitals of the largest letter";
  EXPECT_NEAR(first->rotation(), kvge::kPi / 2, 1e-12);
  EXPECT_EQ(KvDbText::cast(owned[1].get())->height(), 4);
  KvDbVoidPtrArray none;
  EXPECT_EQ(KvDbMText().explode(none), Kvad::eNoContent);
  int count = 0;
  text.explodeFragments([&](const KvDbMTextFragment&) { return ++count < 2; });
  EXPECT_EQ(count, 2) << "until it answers false";
}

TEST(TextStyles, MeasureByTheirSize) {
  KvDbDatabase drawing;
  KvGiTextStyle style;
  EXPECT_EQ(style.fromKvDbTextStyle(KvDbObjectId()), Kvad::eNullObjectId);
  EXPECT_EQ(style.loadStyleRec(), Kvad::eNullObjectId);
  EXPECT_EQ(style.fromKvDbTextStyle(drawing.layerZero()), Kvad::eNotThatKindOfClass);
  EXPECT_EQ(style.fromKvDbTextStyle(L"nosuch", &drawing), Kvad::eKeyNotFound);
  ASSERT_EQ(style.fromKvDbTextStyle(L"standard", &drawing), Kvad::eOk);
  ASSERT_EQ(style.loadStyleRec(), Kvad::eOk);
  style.setTextSize(3.5);
  KvGePoint2d low, high;
  style.extentsBox(L"HEM", true, -1, low, high);
  const double width = high.x - low.x;
  EXPECT_GT(width, 3.5);
  EXPECT_NEAR(high.y, 3.5, 0.02);
  style.extentsBox(L"HEM rest", true, 3, low, high);
  EXPECT_NEAR(high.x - low.x, width, 1e-12);
  style.extentsBox(L"", true, -1, low, high);
  EXPECT_EQ(high.x - low.x, 0);
  style.extentsBox(nullptr, true, -1, low, high);
  EXPECT_EQ(high.x - low.x, 0);
  style.extentsBox(L"%%c", false, -1, low, high);
  const double sign = high.x;
  style.extentsBox(L"%%c", true, -1, low, high);
  EXPECT_GT(high.x, 2 * sign);
}

/// A drawing with one entity, as files tell it.
std::string fileWith(const char* entity) {
  return std::string("0\nSECTION\n2\nENTITIES\n") + entity + "0\nENDSEC\n0\nEOF\n";
}

TEST(TextFiles, NothingIsLost) {
  const std::string longText(600, 'x');
  const std::string mtext =
      "0\nMTEXT\n5\nA1\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n1.\n20\n2.\n30\n3.\n40\n2.5\n41\n"
      "50.\n71\n5\n72\n5\n3\n" +
      longText.substr(0, 250) + "\n3\n" + longText.substr(250, 250) + "\n1\n" + longText.substr(500) +
      "\n11\n0.\n21\n1.\n31\n0.\n42\n33.\n43\n4.\n73\n2\n44\n1.5\n90\n1\n63\n5\n45\n1.2\n441\n7\n";
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(drawing, fileWith(mtext.c_str()), report, KvIoMode::Recover), Kvad::eOk);
  const KvDbMText* text = nullptr;
  for (KvDbObjectId id : drawing.allObjects())
    if (const auto* found = KvDbMText::cast(id.stub()->object)) text = found;
  ASSERT_TRUE(text);
  EXPECT_EQ(text->contents().GetLength(), 600);
  EXPECT_EQ(text->attachment(), KvDbMText::kMiddleCenter);
  EXPECT_NEAR(text->rotation(), kvge::kPi / 2, 1e-12);
  EXPECT_EQ(text->lineSpacingStyle(), KvDbMText::kExactly);
  EXPECT_TRUE(text->hasBackgroundFill());
  const std::string saved = kvdbFormatDrawing(drawing);
  for (const char* kept : {"\n 42\r\n33.0", "\n441\r\n", "\n 45\r\n1.2", "\n 63\r\n", "\n 44\r\n1.5"})
    EXPECT_NE(saved.find(kept), std::string::npos) << kept;
  EXPECT_NE(saved.find("\r\n  3\r\n" + longText.substr(0, 250) + "\r\n"), std::string::npos);
}

TEST(TextFiles, ColumnsStandInARecordOfTheirOwn) {
  // Codes inside the record mean other things than in front of it.
  const std::string mtext =
      "0\nMTEXT\n5\nA1\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n1.\n20\n2.\n30\n0.\n40\n2.5\n41\n"
      "95.\n71\n1\n72\n5\n1\none\\Ptwo\\Pthree\n73\n1\n44\n1.\n101\nEmbedded Object\n70\n1\n10\n1.\n20\n0.\n"
      "30\n0.\n11\n1.\n21\n2.\n31\n0.\n40\n95.\n41\n7.\n42\n95.\n43\n7.\n71\n2\n72\n2\n44\n40.\n45\n15.\n73\n"
      "0\n74\n0\n46\n7.\n46\n20.\n";
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(drawing, fileWith(mtext.c_str()), report, KvIoMode::Recover), Kvad::eOk);
  KvDbMText* text = nullptr;
  for (KvDbObjectId id : drawing.allObjects())
    if (auto* found = KvDbMText::cast(id.stub()->object)) text = found;
  ASSERT_TRUE(text);
  EXPECT_EQ(text->location(), KvGePoint3d(1, 2, 0));
  EXPECT_EQ(text->attachment(), KvDbMText::kTopLeft);
  EXPECT_EQ(text->textHeight(), 2.5);
  const KvLtColumns columns = text->columns();
  EXPECT_EQ(columns.most, 2);
  EXPECT_EQ(columns.width, 40);
  EXPECT_EQ(columns.heights, (std::vector<double>{7, 20}));
  const KvLtParagraphs laid = text->layout();
  ASSERT_EQ(laid.runs.size(), 3u);
  EXPECT_NEAR(laid.runs[2].at.x, 55, 1e-9);
  EXPECT_NEAR(laid.runs[2].at.y, -2.5, 1e-9);
  // Moved and enlarged, the record says so too.
  KvDbObject* open = nullptr;
  ASSERT_EQ(kvdbOpenAny(open, text->objectId(), KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(text->transformBy(KvGeMatrix3d::scaling(2)), Kvad::eOk);
  open->close();
  EXPECT_EQ(text->columns().width, 80);
  EXPECT_EQ(text->columns().heights, (std::vector<double>{14, 40}));
  const std::string saved = kvdbFormatDrawing(drawing);
  const std::string record = saved.substr(saved.find("Embedded Object"));
  EXPECT_NE(record.find(" 11\r\n2.0\r\n 21\r\n4.0"), std::string::npos) << record.substr(0, 400);
  EXPECT_NE(record.find(" 44\r\n80.0"), std::string::npos);
}

}  // namespace
