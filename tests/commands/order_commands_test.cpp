// What covers what, groups, copies of sheets, multilines, and leaders that follow their notes.
#include "host/database/dictionary.h"
#include "host/database/draworder.h"
#include "host/database/layout.h"
#include "host/entities/leader.h"
#include "host/entities/mline.h"
#include "host/entities/mtext.h"
#include "host/entities/rasterimage.h"
#include "host/entities/spline.h"
#include "host/entities/viewport.h"
#include "host/io/drawing_file.h"
#include "tests/editor/editor_host.h"
#include "tests/support/notation.h"

namespace {

class OrderCommandsTest : public test::EditorHost {
 protected:
  void run(const char* script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
    app.run();
  }
  const KvDbBlockTableRecord& space() {
    return *KvDbBlockTableRecord::cast(database().currentSpaceId().stub()->object);
  }
  /// The radii of the circles of the current space, as they are drawn one over another.
  std::string order() {
    std::string row;
    for (KvDbObjectId id : kvdbDrawOrder(space()))
      if (const auto* circle = KvDbCircle::cast(id.stub()->object))
        row += std::to_string(static_cast<int>(circle->radius()));
    return row;
  }
  template <class T>
  const T* last() {
    const T* found = nullptr;
    for (KvDbObjectId id : space().entities())
      if (const T* one = T::cast(id.stub()->object)) found = one;
    return found;
  }
};

TEST_F(OrderCommandsTest, ObjectsGoInFrontBehindAndBesideOthers) {
  run("CIRCLE 10,0 1\nCIRCLE 20,0 2\nCIRCLE 30,0 3\nCIRCLE 40,0 4\n");
  EXPECT_EQ(order(), "1234");
  run("DRAWORDER 11,0\n\nF\n");
  EXPECT_EQ(order(), "2341");
  run("DRAWORDER 11,0 33,0\n\n\n");  // behind all, in the order they had
  EXPECT_EQ(order(), "3124");
  run("DRAWORDER 33,0 44,0\n\nA 11,0 22,0\n\n");
  EXPECT_EQ(order(), "1234");
  run("DRAWORDER 44,0 11,0\n\nU 22,0 33,0\n\n");
  EXPECT_EQ(order(), "1423");
  run("DRAWORDER 44,0\n\nA 44,0\n\n");  // beside itself
  EXPECT_EQ(order(), "1423");
  run("CIRCLE 50,0 5\n");  // what is new lies over all
  EXPECT_EQ(order(), "14235");
  run("ERASE 22,0\n\nU\nU\nU\n");
  EXPECT_EQ(order(), "1234");
}

TEST_F(OrderCommandsTest, TheOrderIsSavedAndFollowsACopyOfTheSheet) {
  run("LAYOUT N A\nLAYOUT S A\nCIRCLE 10,0 1\nCIRCLE 20,0 2\nCIRCLE 30,0 3\nDRAWORDER 33,0\n\n\n"
      "MVIEW 100,100 200,180 1:2\nLAYOUT C A\nB\nLAYOUT S B\n");
  EXPECT_EQ(order(), "312");
  ASSERT_TRUE(last<KvDbViewport>());
  EXPECT_EQ(last<KvDbViewport>()->customScale(), 0.5);
  // Each sheet has its own from then on.
  run("ERASE 11,0\n\n");
  EXPECT_EQ(order(), "32");
  run("LAYOUT S A\n");
  EXPECT_EQ(order(), "312");
  shown.Empty();
  run("LAYOUT C A\nB\nLAYOUT C Model\nC\nLAYOUT C Nowhere\nC\nLAYOUT C A\nb*d\n");
  EXPECT_GE(shown.Find(L"of that name already"), 0);
  EXPECT_GE(shown.Find(L"Model, and the last layout"), 0);
  EXPECT_GE(shown.Find(L"no layout \"Nowhere\""), 0);
  EXPECT_EQ(database().layoutManager().layouts().size(), 4U);
  const CString file = platform::wideFromUtf8((folder.path() / "order.dxf").string());
  run("WIPEOUT 0,0 5,0 5,5\n\n");
  run(("SAVEAS " + platform::utf8From(file) + "\nOPEN " + platform::utf8From(file) + "\n").c_str());
  EXPECT_EQ(order(), "312");
  const std::string text = kvdbFormatDrawing(database());
  EXPECT_NE(text.find("AcDbSortentsTable"), std::string::npos);
  EXPECT_NE(text.find("AcDbWipeout"), std::string::npos);
  EXPECT_EQ(text.find("SORTENTSTABLE"),
            text.find("SORTENTSTABLE", text.find("CLASSES")));  // among the classes
}

TEST_F(OrderCommandsTest, WipeoutsCoverPolygons) {
  run("UCS 100,0\n\nUCS Z 90\nWIPEOUT 0,0 10,0 10,4 U 10,5 0,5 C\n");
  const auto* wipeout = last<KvDbWipeout>();
  ASSERT_TRUE(wipeout);
  const std::vector<KvGePoint3d> corners = wipeout->boundary();
  const std::vector<KvGePoint3d> expected = {{100, 0, 0}, {100, 10, 0}, {95, 10, 0}, {95, 0, 0}};
  ASSERT_EQ(corners.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_LT(corners[i].distanceTo(expected[i]), 1e-9) << i;
  EXPECT_EQ(wipeout->frameMode(), KvDbFrameMode::Always);
  run("WIPEOUT F OFF\n");
  EXPECT_EQ(wipeout->frameMode(), KvDbFrameMode::Never);
  run("UCS W\nPLINE 0,0 20,0 20,20 C\nWIPEOUT P 10,0 Y\nPLINE 50,0 60,0 A 60,10 CL\nWIPEOUT P 55,0\n"
      "WIPEOUT 0,0 5,0\n\n");
  EXPECT_GE(shown.Find(L"straight segments expected"), 0);
  EXPECT_GE(shown.Find(L"enclose no area"), 0);
  EXPECT_EQ(test::notationOf(database()).find("pline 0,0"), std::string::npos);  // erased as asked for
  EXPECT_EQ(space().entities().length(), 3);
}

TEST_F(OrderCommandsTest, GroupsAreRenamedOrderedAndLeftOutOfPicks) {
  run("POINT 1,0\nPOINT 2,0\nPOINT 3,0\nGROUP C G ALL\n\nGROUP C OTHER L\n\n");
  const auto group = [&](const wchar_t* name) -> const KvDbGroup* {
    const auto* root = KvDbDictionary::cast(database().namedObjectsDictionaryId().stub()->object);
    KvDbObjectId id;
    if (root->getAt(L"ACAD_GROUP", id) != Kvad::eOk) return nullptr;
    const auto* groups = KvDbDictionary::cast(id.stub()->object);
    return groups->getAt(name, id) == Kvad::eOk ? KvDbGroup::cast(id.stub()->object) : nullptr;
  };
  const auto members = [&](const wchar_t* name) {
    std::string row;
    if (const KvDbGroup* one = group(name))
      for (KvDbObjectId id : one->allEntityIds())
        row += std::to_string(static_cast<int>(KvDbPoint::cast(id.stub()->object)->position().x));
    return row;
  };
  EXPECT_EQ(members(L"G"), "123");
  run("GROUP O G 2 0\n\n");
  EXPECT_EQ(members(L"G"), "312");
  run("GROUP O G 0 1 2\n");
  EXPECT_EQ(members(L"G"), "231");
  run("GROUP O G 2 2 2\nGROUP O G 9\n\n\n");  // no such places
  EXPECT_EQ(members(L"G"), "231");
  run("GROUP O G R\nGROUP REN G H\nGROUP REN H OTHER\nGROUP REN H a|b\nGROUP S H N\n");
  EXPECT_FALSE(group(L"G"));
  EXPECT_EQ(members(L"H"), "132");
  EXPECT_FALSE(group(L"H")->isSelectable());
  EXPECT_EQ(members(L"OTHER"), "3");
  run("U\nU\n");
  EXPECT_EQ(members(L"G"), "132");
}

TEST_F(OrderCommandsTest, MultilinesLieBesideTheirPoints) {
  struct Case {
    const char *script, *lines;
  };
  constexpr Case kCases[] = {
      {"MLINE J T S 2 0,0 10,0\n\n", "line 0,0 10,0\nline 0,-2 10,-2\n"},
      {"MLINE J Z S 2 0,0 10,0\n\n", "line 0,1 10,1\nline 0,-1 10,-1\n"},
      {"MLINE J B S 2 0,0 10,0\n\n", "line 0,2 10,2\nline 0,0 10,0\n"},
      {"MLINE J Z S 2 0,0 10,0 10,10\n\n",
       "line 0,1 9,1\nline 0,-1 11,-1\nline 9,1 9,10\nline 11,-1 11,10\n"},
      {"MLINE J T S 1 0,0 0,8 8,8 U 6,8 6,0 C\n",
       "line 0,0 0,8\nline 1,1 1,7\nline 0,8 6,8\nline 1,7 5,7\nline 6,8 6,0\nline 5,7 5,1\nline 6,0 "
       "0,0\nline 5,1 1,1\n"},
      {"MLINE ST NOSUCH\n\n0,0\n\n", ""},
      {"MLINE 5,5 5,5\n\n", ""},
  };
  for (const Case& one : kCases) {
    run("ERASE ALL\n\n");
    run(one.script);
    if (last<KvDbMline>()) run("EXPLODE L\n\n");
    EXPECT_EQ(test::notationOf(database()), one.lines) << one.script << platform::utf8From(shown);
  }
}

TEST_F(OrderCommandsTest, LeadersFollowTheirNotes) {
  run("QLEADER 0,0 20,20\n\n0 note\n\n");
  const auto* leader = last<KvDbLeader>();
  const auto* note = last<KvDbMText>();
  ASSERT_TRUE(leader && note);
  EXPECT_EQ(leader->annotationId(), note->objectId());
  const auto end = [&] {
    KvGePoint3d point;
    leader->getVertexAt(1, point);
    return point;
  };
  const std::string before = kvdbFormatDrawing(database());
  const KvGeVector3d apart = note->location() - end();
  run("MOVE L\n\n0,0 10,5\n");
  EXPECT_EQ(end(), KvGePoint3d(30, 25, 0));
  EXPECT_LT(((note->location() - end()) - apart).length(), 1e-12);
  run("U\n");
  EXPECT_TRUE(kvdbFormatDrawing(database()) == before);
  EXPECT_EQ(database().undoRecorder().redoCount(), 1);
  run("REDO\n");
  EXPECT_EQ(end(), KvGePoint3d(30, 25, 0));
  // Moved together they go once; the arrow stays when the note goes alone.
  run("MOVE ALL\n\n0,0 1,1\n");
  EXPECT_EQ(end(), KvGePoint3d(31, 26, 0));
  // A copy has its own note.
  run("COPY ALL\n\n0,0 100,0\n\nMOVE L\n\n0,0 0,7\n");
  EXPECT_EQ(end(), KvGePoint3d(31, 26, 0));
  KvGePoint3d copied;
  last<KvDbLeader>()->getVertexAt(1, copied);
  EXPECT_EQ(copied, KvGePoint3d(131, 33, 0));
  // A note that is gone holds nothing up.
  run("ERASE L\n\nMOVE ALL\n\n0,0 1,0\n");
  EXPECT_EQ(end(), KvGePoint3d(32, 26, 0));
}

TEST_F(OrderCommandsTest, CurvesBesideEllipsesAndSplines) {
  run("ELLIPSE C 0,0 20,0 10\nOFFSET 3 20,0 30,0 20,0 0,0\n\n");
  const auto count = [&] { return space().entities().length(); };
  ASSERT_EQ(count(), 3);
  EXPECT_GE(shown.Find(L"Drawn as a spline"), 0);
  const auto* base = KvDbCurve::cast(space().entities()[0].stub()->object);
  for (int i = 1; i < 3; ++i) {
    const auto* spline = KvDbSpline::cast(space().entities()[i].stub()->object);
    ASSERT_TRUE(spline);
    EXPECT_TRUE(spline->isClosed());
    double from = 0, to = 0;
    spline->getStartParam(from);
    spline->getEndParam(to);
    for (int k = 0; k < 97; ++k) {
      KvGePoint3d at, on;
      spline->getPointAtParam(from + (to - from) * k / 97, at);
      base->getClosestPointTo(at, on);
      EXPECT_NEAR(at.distanceTo(on), 3, 5e-5);
      EXPECT_EQ(at.distanceTo({}) > on.distanceTo({}), i == 1);
    }
  }
  // Inside, beyond the radius at the narrow ends (5), it would turn back on itself.
  run("OFFSET 6 20,0 0,0\n\n");
  EXPECT_EQ(count(), 3);
  EXPECT_GE(shown.Find(L"can't be offset there"), 0);
  run("SPLINE 100,0 110,10 120,0\n\n\n\nOFFSET 1 110,10 110,20\n\n");
  EXPECT_EQ(count(), 5);
}

}  // namespace
