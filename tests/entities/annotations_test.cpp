// Multilines, frames of tolerances, leaders with several lines: what they are drawn of.
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/hatch.h"
#include "host/entities/mline.h"
#include "host/entities/mtext.h"
#include "host/entities/multileader.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"
#include "host/entities/tolerance.h"
#include "tests/entities/support.h"

namespace {

template <class T>
std::vector<const T*> allOf(const TestDrawing& drawing) {
  std::vector<const T*> found;
  for (const KvDbEntity* entity : drawing.entities())
    if (const T* own = T::cast(entity)) found.push_back(own);
  return found;
}

struct Parts {
  explicit Parts(const KvDbEntity& entity) {
    KvDbVoidPtrArray made;
    EXPECT_EQ(entity.explode(made), Kvad::eOk);
    for (void* part : made) all.emplace_back(static_cast<KvDbEntity*>(part));
  }
  template <class T>
  std::vector<const T*> of() const {
    std::vector<const T*> found;
    for (const auto& part : all)
      if (const T* own = T::cast(part.get())) found.push_back(own);
    return found;
  }
  std::vector<std::unique_ptr<KvDbEntity>> all;
};

TEST(Mline, LinesJointsCapsAndFill) {
  TestDrawing drawing;
  drawing.read(KORVANE_TEST_DATA "/annotations_r2000.dxf");
  const auto mlines = allOf<KvDbMline>(drawing);
  ASSERT_EQ(mlines.size(), 2u);
  ASSERT_TRUE(KvDbMlineStyle::of(mlines[0]->styleId()));
  const Parts open(*mlines[0]), closed(*mlines[1]);
  // Three segments of four lines, two joints of two halves, a square end, and a round begin of two arcs, each
  // in two halves.
  EXPECT_EQ(open.of<KvDbLine>().size(), 12u + 4u + 2u);
  ASSERT_EQ(open.of<KvDbArc>().size(), 4u);
  // Closed: four segments, four joints, no caps.
  EXPECT_EQ(closed.of<KvDbLine>().size(), 16u + 8u);
  EXPECT_TRUE(closed.of<KvDbArc>().empty());
  // The fill: the first segment is 4 wide; the round cap is a half circle of radius 2.
  const auto fills = open.of<KvDbHatch>();
  ASSERT_EQ(fills.size(), 1u);
  EXPECT_EQ(fills[0]->colorIndex(), 254);
  double area = 0;
  ASSERT_EQ(fills[0]->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 4 * (20 + 10 + std::hypot(10, 5)) + 2 * kvge::kPi, 1e-6);
  double radii = 0;
  for (const KvDbArc* arc : open.of<KvDbArc>()) {
    radii += arc->radius();
    EXPECT_LT(arc->pointAtAngle((arc->startAngle() + arc->totalAngle() / 2)).x, 0);
  }
  EXPECT_NEAR(radii, 2 * (2 + 1), 1e-9);
}

TEST(Mline, BreaksAndTransforms) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  std::vector<std::size_t> lineCounts;
  for (const KvDbMline* mline : allOf<KvDbMline>(drawing)) {
    lineCounts.push_back(Parts(*mline).of<KvDbLine>().size());
    KvDbExtents before, after;
    ASSERT_EQ(mline->getGeomExtents(before), Kvad::eOk);
    KvDbEntity* open = nullptr;
    ASSERT_EQ(kvdbOpenObject(open, mline->objectId(), KvDb::kForWrite), Kvad::eOk);
    const KvGeMatrix3d map = KvGeMatrix3d::scaling(2) * KvGeMatrix3d::translation({1, 2, 3});
    EXPECT_EQ(open->transformBy(map), Kvad::eOk);
    open->close();
    ASSERT_EQ(mline->getGeomExtents(after), Kvad::eOk);
    EXPECT_LT(after.minPoint().distanceTo(map * before.minPoint()), 1e-9);
    EXPECT_LT(after.maxPoint().distanceTo(map * before.maxPoint()), 1e-9);
  }
  // The second is crossed by the third, which makes way for it in one of its lines.
  EXPECT_EQ(lineCounts, (std::vector<std::size_t>{14, 3, 2}));
  // A line that begins late and is broken between 3 and 5 from its begin.
  std::string bytes =
      "0\nSECTION\n2\nENTITIES\n0\nMLINE\n5\n100\n100\nAcDbEntity\n8\n0\n100\nAcDbMline\n2\nNONE\n"
      "40\n1\n70\n0\n71\n1\n72\n2\n73\n1\n10\n0\n20\n0\n30\n0\n";
  for (const char* x : {"0", "10"})
    bytes += "11\n" + std::string(x) +
             "\n21\n0\n31\n0\n12\n1\n22\n0\n32\n0\n13\n0\n23\n1\n33\n0\n"
             "74\n4\n41\n2\n41\n1\n41\n3\n41\n5\n75\n0\n";
  bytes += "0\nENDSEC\n0\nEOF\n";
  KvDbDatabase fresh(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(fresh, bytes, report), Kvad::eOk) << platform::utf8From(report.error.describe());
  const auto* space = KvDbBlockTableRecord::cast(fresh.modelSpaceId().stub()->object);
  ASSERT_EQ(space->entities().length(), 1);
  const Parts parts(*KvDbEntity::cast(space->entities()[0].stub()->object));
  const auto lines = parts.of<KvDbLine>();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]->startPoint(), KvGePoint3d(1, 2, 0));
  EXPECT_EQ(lines[0]->endPoint(), KvGePoint3d(4, 2, 0));
  EXPECT_EQ(lines[1]->startPoint(), KvGePoint3d(6, 2, 0));
  EXPECT_EQ(lines[1]->endPoint(), KvGePoint3d(10, 2, 0));
}

TEST(Tolerance, RowsAndCells) {
  const struct {
    const wchar_t* text;
    std::vector<std::vector<CString>> cells;
  } cases[] = {
      {L"", {}},
      {L"%%v%%v^J", {}},
      {L"{\\Fgdt;j}%%v{\\Fgdt;n}0.5{\\fgdt;m}%%v%%vA%%v",
       {{L"{\\Fgdt;\x2316}", L"{\\Fgdt;\x2300}0.5{\\Fgdt;\x24C2}", L"A"}}},
      {L"a%%vj^Jb", {{L"a", L"j"}, {L"b"}}},
  };
  for (const auto& c : cases) EXPECT_EQ(KvDbFcf(c.text, {}).cells(), c.cells);
}

TEST(Tolerance, FramesFollowTheStyle) {
  TestDrawing drawing;
  drawing.read(KORVANE_TEST_DATA "/annotations_r2000.dxf");
  const auto frames = allOf<KvDbFcf>(drawing);
  ASSERT_EQ(frames.size(), 4u);
  constexpr double kRow = 2.5 + 2 * 0.625;
  KvDbExtents box;
  ASSERT_EQ(frames[0]->getGeomExtents(box), Kvad::eOk);
  EXPECT_NEAR(box.minPoint().x, 0, 1e-9);
  EXPECT_NEAR(box.minPoint().y, 30 - kRow / 2, 1e-9);
  EXPECT_NEAR(box.maxPoint().y, 30 + kRow / 2, 1e-9);
  // One symbol for two rows.
  const Parts two(*frames[1]);
  EXPECT_EQ(two.of<KvDbMText>().size(), 1u + 2u + 3u + 2u);
  EXPECT_NEAR(two.of<KvDbMText>()[0]->location().y, 30 - kRow / 2, 1e-9);
  EXPECT_EQ(two.of<KvDbMText>()[0]->colorIndex(), 3);
  EXPECT_EQ(two.of<KvDbLine>()[0]->colorIndex(), 1);
  ASSERT_EQ(frames[1]->getGeomExtents(box), Kvad::eOk);
  EXPECT_NEAR(box.minPoint().y, 30 + kRow / 2 - 4 * kRow, 1e-9);
  // The last one runs upwards.
  ASSERT_EQ(frames[3]->getGeomExtents(box), Kvad::eOk);
  EXPECT_NEAR(box.minPoint().y, 20, 1e-9);
  EXPECT_GT(box.maxPoint().y - box.minPoint().y, 2 * (box.maxPoint().x - box.minPoint().x));
  KvDbEntity* open = nullptr;
  ASSERT_EQ(kvdbOpenObject(open, frames[3]->objectId(), KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(open->transformBy(KvGeMatrix3d::rotation(-kvge::kPi / 2, KvGeVector3d::kZAxis)), Kvad::eOk);
  EXPECT_EQ(open->transformBy(KvGeMatrix3d::worldToPlane({1, 0, 0}) * KvGeMatrix3d::scaling(0)),
            Kvad::eCannotScaleNonUniformly);
  open->close();
  EXPECT_LT(frames[3]->location().distanceTo({20, -90, 0}), 1e-9);
  EXPECT_NEAR(frames[3]->direction().x, 1, 1e-9);
  drawing.throughFile(KvDbFileVersion::R2000);
}

TEST(MultiLeader, LinesArrowsAndContents) {
  TestDrawing drawing;
  drawing.read(KORVANE_TEST_DATA "/multileaders_r2010.dxf");
  const auto all = allOf<KvDbMLeader>(drawing);
  ASSERT_EQ(all.size(), 5u);
  const Parts plain(*all[0]), smooth(*all[1]), framed(*all[2]), under(*all[3]), tag(*all[4]);
  // Two lines to the left side, one of them with a corner, one to the right; each goes on to the text.
  EXPECT_EQ(all[0]->leaders().size(), 2u);
  EXPECT_EQ(plain.of<KvDbLine>().size(), 2u + 3u + 2u);
  ASSERT_EQ(plain.of<KvDbSolid>().size(), 3u);
  EXPECT_EQ(plain.of<KvDbSolid>()[0]->colorIndex(), 1);
  KvGePoint3d tip;
  plain.of<KvDbSolid>()[1]->getPointAt(2, tip);
  EXPECT_EQ(tip, KvGePoint3d(0, 10, 0));
  ASSERT_EQ(plain.of<KvDbMText>().size(), 1u);
  EXPECT_EQ(plain.of<KvDbMText>()[0]->contents(), L"PLAIN");
  EXPECT_EQ(plain.of<KvDbMText>()[0]->textHeight(), 2.5);
  // The landing ends the gap in front of the text.
  const KvGePoint3d landing = all[0]->leaders()[0].landing();
  EXPECT_NEAR(landing.x + 2, plain.of<KvDbMText>()[0]->location().x, 1e-6);
  EXPECT_EQ(smooth.of<KvDbSpline>().size(), 1u);
  EXPECT_TRUE(smooth.of<KvDbLine>().empty());
  EXPECT_EQ(framed.of<KvDbLine>().size(), 2u + 4u);
  EXPECT_EQ(under.of<KvDbLine>().size(), 2u + 1u);
  // A block with its attribute's value, and a dot.
  const auto references = tag.of<KvDbBlockReference>();
  ASSERT_EQ(references.size(), 1u);
  EXPECT_EQ(tag.of<KvDbPolyline>().size(), 1u);
  EXPECT_EQ(TestSink(*all[4]).texts, std::vector<CString>{L"42"});
}

TEST(MultiLeader, MovedWithEverythingTheyHave) {
  TestDrawing drawing;
  drawing.read(KORVANE_TEST_DATA "/multileaders_r2010.dxf");
  const KvGeMatrix3d map = KvGeMatrix3d::translation({3, 4, 5}) * KvGeMatrix3d::scaling(2) *
                           KvGeMatrix3d::rotation(kvge::kPi / 2, KvGeVector3d::kZAxis);
  for (const KvDbMLeader* leader : allOf<KvDbMLeader>(drawing)) {
    KvDbExtents before, after, expected;
    ASSERT_EQ(leader->getGeomExtents(before), Kvad::eOk);
    KvDbEntity* open = nullptr;
    ASSERT_EQ(kvdbOpenObject(open, leader->objectId(), KvDb::kForWrite), Kvad::eOk);
    EXPECT_EQ(open->transformBy(map), Kvad::eOk);
    open->close();
    ASSERT_EQ(leader->getGeomExtents(after), Kvad::eOk);
    expected.addPoint(map * before.minPoint());
    expected.addPoint(map * before.maxPoint());
    EXPECT_LT(after.minPoint().distanceTo(expected.minPoint()), 1e-6);
    EXPECT_LT(after.maxPoint().distanceTo(expected.maxPoint()), 1e-6);
  }
  drawing.throughFile(KvDbFileVersion::R2010);
  // A mirror turns the leader, not the letters.
  const KvDbMLeader* leader = allOf<KvDbMLeader>(drawing)[0];
  KvDbEntity* open = nullptr;
  ASSERT_EQ(kvdbOpenObject(open, leader->objectId(), KvDb::kForWrite), Kvad::eOk);
  KvGeMatrix3d mirror;
  mirror.entry[1][1] = -1;
  EXPECT_EQ(open->transformBy(mirror), Kvad::eOk);
  open->close();
  const auto text = leader->mtext();
  ASSERT_TRUE(text);
  EXPECT_NEAR(std::fabs(text->direction().y), 1, 1e-9);
  KvDbExtents letters;
  ASSERT_EQ(text->getGeomExtents(letters), Kvad::eOk);
  EXPECT_LT(letters.maxPoint().y, 0);
}

TEST(MultiLeader, ThoseOfRealDrawingsReachTheirTexts) {
  TestDrawing drawing;
  drawing.read(KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf");
  int seen = 0;
  for (const KvDbMLeader* leader : allOf<KvDbMLeader>(drawing)) {
    const auto text = leader->mtext();
    if (!text || text->attachment() != KvDbMText::kTopLeft) continue;
    for (const KvDbMLeader::Leader& side : leader->leaders()) {
      if (side.isVertical || side.doglegLength == 0 || side.dogleg.dotProduct(text->direction()) < 0)
        continue;
      ++seen;
      // The landing ends in front of the letters, a gap away, which is half a letter's height here or less.
      const double gap = (text->location() - side.landing()).dotProduct(text->direction());
      EXPECT_GE(gap, 0);
      EXPECT_LE(gap, text->textHeight() / 2 + 1e-6) << platform::utf8From(text->contents());
    }
  }
  EXPECT_GE(seen, 4);
}

}  // namespace
