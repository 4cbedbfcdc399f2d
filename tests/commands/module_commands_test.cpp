// The commands that add-ons run, with their exact argument lists; trimming, hatching and blocks by hand.
#include <cmath>

#include "host/commands/command_table.h"
#include "host/database/entcalls.h"
#include "host/editor/selection.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "host/entities/hatch.h"
#include "tests/editor/editor_host.h"

namespace {

class ModuleCommandsTest : public test::EditorHost {
 protected:
  template <class... Args>
  int run(const Args&... args) {
    return kvedCommandS(args..., RTNONE);
  }
  KvDbObjectIdArray entities() {
    return static_cast<KvDbBlockTableRecord*>(database().modelSpaceId().stub()->object)->entities();
  }
  template <class T>
  const T* last() {
    kvds_name name;
    KvDbObjectId id;
    if (kvdbEntLast(name) != RTNORM || kvdbGetObjectId(id, name) != Kvad::eOk) return nullptr;
    return T::cast(const_cast<const KvDbObject*>(id.stub()->object));
  }
  /// A set of entities, to be freed by the caller.
  void setOf(std::initializer_list<KvDbObjectId> ids, kvds_name set) {
    kvedSSAdd(nullptr, nullptr, set);
    for (KvDbObjectId id : ids) {
      kvds_name name;
      kvdbGetKvdsName(name, id);
      kvedSSAdd(name, set, set);
    }
  }
  static constexpr double kA[3] = {0, 0, 0}, kB[3] = {10, 0, 0}, kC[3] = {0, 5, 0};
};

TEST_F(ModuleCommandsTest, LayersLinesArcsCircles) {
  EXPECT_EQ(run(RTSTR, L"LAYER", RTSTR, L"M", RTSTR, L"轮廓", RTSTR, L""), RTNORM);
  EXPECT_EQ(kvdbRecordName(database().clayer()), L"轮廓");
  EXPECT_EQ(run(RTSTR, L"LAYER", RTSTR, L"M", RTSTR, L"轮廓", RTSTR, L""), RTNORM);  // there already
  EXPECT_EQ(run(RTSTR, L"LINE", RTPOINT, kA, RTPOINT, kB, RTSTR, L""), RTNORM);
  EXPECT_EQ(last<KvDbLine>()->endPoint(), KvGePoint3d(10, 0, 0));
  EXPECT_EQ(last<KvDbLine>()->layer(), L"轮廓");
  EXPECT_EQ(run(RTSTR, L"ARC", RT3DPOINT, kA, RTSTR, L"E", RT3DPOINT, kB, RTSTR, L"R", RTREAL, 5.0), RTNORM);
  const auto* arc = last<KvDbArc>();
  EXPECT_TRUE(arc->startPoint().isEqualTo({0, 0, 0}));
  EXPECT_TRUE(arc->pointAtAngle(arc->startAngle() + arc->totalAngle() / 2).isEqualTo({5, -5, 0}));
  const int before = entities().length();
  EXPECT_EQ(run(RTSTR, L"ARC", RT3DPOINT, kA, RTSTR, L"E", RT3DPOINT, kB, RTSTR, L"R", RTREAL, 4.9), RTERROR);
  EXPECT_EQ(entities().length(), before);
  EXPECT_EQ(run(RTSTR, L"ARC", RT3DPOINT, kA, RTSTR, L"E", RT3DPOINT, kB, RTSTR, L"R", RTREAL, -6.0), RTNORM);
  EXPECT_GT(last<KvDbArc>()->totalAngle(), kvge::kPi);  // a negative radius: the greater arc
  EXPECT_EQ(run(RTSTR, L"ARC", RTPOINT, kB, RTSTR, L"C", RTPOINT, kA, RTPOINT, kC), RTNORM);
  EXPECT_NEAR(last<KvDbArc>()->totalAngle(), kvge::kPi / 2, 1e-12);
  EXPECT_TRUE(last<KvDbArc>()->endPoint().isEqualTo({0, 10, 0}));
  EXPECT_EQ(run(RTSTR, L"CIRCLE", RT3DPOINT, kC, RTREAL, 2.5), RTNORM);
  EXPECT_EQ(last<KvDbCircle>()->radius(), 2.5);
  const auto* circle = last<KvDbCircle>();
  EXPECT_EQ(run(RTSTR, L"ERASE", RTSTR, L"L", RTSTR, L""), RTNORM);
  EXPECT_TRUE(circle->isErased());
}

TEST_F(ModuleCommandsTest, PointsAreOfTheUserSystem) {
  KvGeMatrix3d system;
  system.setCoordSystem({100, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1});
  kvedSetCurrentUCS(system);
  run(RTSTR, L"LINE", RTPOINT, kA, RTPOINT, kB, RTSTR, L"");
  EXPECT_TRUE(last<KvDbLine>()->endPoint().isEqualTo({100, 10, 0}));
  run(RTSTR, L"CIRCLE", RT3DPOINT, kC, RTREAL, 1.0);
  EXPECT_TRUE(last<KvDbCircle>()->center().isEqualTo({95, 0, 0}));
  run(RTSTR, L"ARC", RTPOINT, kB, RTSTR, L"C", RTPOINT, kA, RTPOINT, kC);
  EXPECT_TRUE(last<KvDbArc>()->startPoint().isEqualTo({100, 10, 0}));
  EXPECT_TRUE(last<KvDbArc>()->endPoint().isEqualTo({90, 0, 0}));
}

TEST_F(ModuleCommandsTest, TrimTakesThePickedPart) {
  const auto trim = [&](KvDbObjectId target, double x, double y, std::initializer_list<KvDbObjectId> edges) {
    kvds_name set, name;
    setOf(edges, set);
    kvdbGetKvdsName(name, target);
    const double point[3] = {x, y, 0};
    EXPECT_EQ(
        run(RTSTR, L"trim", RTPICKS, set, RTSTR, L"", RTLB, RTENAME, name, RTPOINT, point, RTLE, RTSTR, L""),
        RTNORM);
    kvedSSFree(set);
  };
  const KvDbObjectId target = line(0, 0, 30, 0), left = line(10, -5, 10, 5), right = line(20, -5, 20, 5);
  trim(target, 15, 0, {left, right});
  // The first part keeps the name, the other one is new.
  EXPECT_TRUE(static_cast<KvDbLine*>(target.stub()->object)->endPoint().isEqualTo({10, 0, 0}));
  EXPECT_TRUE(last<KvDbLine>()->startPoint().isEqualTo({20, 0, 0}));
  EXPECT_EQ(entities().length(), 4);
  trim(target, 4, 0, {right});  // nothing cuts there
  EXPECT_EQ(entities().length(), 4);
  const KvDbObjectId round = circle(10, 0, 3);
  trim(round, 13, 0, {left});
  EXPECT_TRUE(round.isErased());
  ASSERT_NE(last<KvDbArc>(), nullptr);
  EXPECT_NEAR(last<KvDbArc>()->totalAngle(), kvge::kPi, 1e-9);
  EXPECT_TRUE(
      last<KvDbArc>()->pointAtAngle(last<KvDbArc>()->startAngle() + kvge::kPi / 2).isEqualTo({7, 0, 0}));
}

TEST_F(ModuleCommandsTest, HatchesFillOutlinesOfManyCurves) {
  kvds_name set;
  const double start[3] = {10, 0, 0}, center[3] = {10, 5, 0}, end[3] = {10, 10, 0};
  const KvDbObjectId bottom = line(0, 0, 10, 0), top = line(10, 10, 0, 10), side = line(0, 10, 0, 0);
  run(RTSTR, L"ARC", RTPOINT, start, RTSTR, L"C", RTPOINT, center, RTPOINT, end);
  const KvDbObjectId arc = last<KvDbArc>()->objectId();
  setOf({bottom, top, side, arc, circle(5, 5, 2), line(50, 0, 60, 0)}, set);
  EXPECT_EQ(run(RTSTR, L"HATCH", RTSTR, L"ANSI31", RTREAL, 0.5, RTANG, 0.0, RTPICKS, set, RTSTR, L""),
            RTNORM);
  const auto* hatch = last<KvDbHatch>();
  ASSERT_NE(hatch, nullptr);
  EXPECT_EQ(hatch->numLoops(), 2);
  double area = 0;
  EXPECT_EQ(hatch->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 100 + kvge::kPi * 12.5 - kvge::kPi * 4, 1e-9);
  EXPECT_EQ(hatch->patternScale(), 0.5);
  kvedSSFree(set);
  setOf({bottom, top}, set);
  EXPECT_EQ(run(RTSTR, L"HATCH", RTSTR, L"ANSI31", RTREAL, 1.0, RTANG, 0.0, RTPICKS, set, RTSTR, L""),
            RTERROR);
  EXPECT_EQ(run(RTSTR, L"HATCH", RTSTR, L"NOSUCH", RTREAL, 1.0, RTANG, 0.0, RTPICKS, set, RTSTR, L""),
            RTERROR);
  kvedSSFree(set);
  const int before = entities().length();
  setOf({bottom, top, side, arc}, set);
  EXPECT_EQ(run(RTSTR, L"HATCH", RTSTR, L"ANSI31", RTREAL, 1e-9, RTANG, 0.0, RTPICKS, set, RTSTR, L""),
            RTERROR);
  EXPECT_EQ(entities().length(), before);  // a billion lines are refused
  kvedSSFree(set);
}

TEST_F(ModuleCommandsTest, BlocksAreMadeAndPlacedWithPauses) {
  kvds_name set;
  const double base[3] = {10, 0, 0};
  setOf({line(10, 0, 20, 0), circle(15, 0, 2)}, set);
  EXPECT_EQ(run(RTSTR, L"BLOCK", RTSTR, L"SPRING", RTPOINT, base, RTPICKS, set, RTSTR, L""), RTNORM);
  kvedSSFree(set);
  EXPECT_EQ(entities().length(), 0);  // what is in the block has left the drawing
  // The person gives the point, everything else is taken as it stands.
  during(L"50,60\n", [&] {
    EXPECT_EQ(run(RTSTR, L"INSERT", RTSTR, L"SPRING", RTSTR, L"\\", RTSTR, L"", RTSTR, L"", RTSTR, L""),
              RTNORM);
  });
  ASSERT_NE(last<KvDbBlockReference>(), nullptr);
  EXPECT_TRUE(last<KvDbBlockReference>()->position().isEqualTo({50, 60, 0}));
  KvDbExtents extents;
  last<KvDbBlockReference>()->getGeomExtents(extents);
  EXPECT_TRUE(extents.maxPoint().isEqualTo({60, 62, 0}));
  // The last point, and the person turns it.
  during(L"90\n", [&] {
    EXPECT_EQ(run(RTSTR, L"INSERT", RTSTR, L"SPRING", RTSTR, L"@0<0", RTSTR, L"", RTSTR, L"", RTSTR, L"\\"),
              RTNORM);
  });
  EXPECT_TRUE(last<KvDbBlockReference>()->position().isEqualTo({50, 60, 0}));
  EXPECT_NEAR(last<KvDbBlockReference>()->rotation(), kvge::kPi / 2, 1e-12);
  // Made anew, the references show the new content; the block can't hold itself.
  setOf({circle(10, 0, 1)}, set);
  EXPECT_EQ(run(RTSTR, L"BLOCK", RTSTR, L"spring", RTSTR, L"Y", RTPOINT, base, RTPICKS, set, RTSTR, L""),
            RTNORM);
  kvedSSFree(set);
  last<KvDbBlockReference>()->getGeomExtents(extents);
  EXPECT_TRUE(extents.maxPoint().isEqualTo({51, 61, 0}));
  setOf({last<KvDbBlockReference>()->objectId()}, set);
  EXPECT_EQ(run(RTSTR, L"BLOCK", RTSTR, L"SPRING", RTSTR, L"Y", RTPOINT, base, RTPICKS, set, RTSTR, L""),
            RTERROR);
  kvedSSFree(set);
  EXPECT_EQ(run(RTSTR, L"INSERT", RTSTR, L"NOSUCH", RTPOINT, base, RTSTR, L"", RTSTR, L"", RTSTR, L""),
            RTERROR);
}

TEST_F(ModuleCommandsTest, StepsBackAndForth) {
  during(L"", [] {});
  editor().pushSource(std::make_unique<KvEdScriptSource>(CString(
      L"LINE 0,0 1,0\n\nUNDO M\nCIRCLE 0,0 1\nCIRCLE 0,0 2\nUNDO B\nCIRCLE 0,0 3\nU\nREDO\nUNDO 5\n")));
  KvEdOutcome outcome;
  const int expected[] = {1, 1, 2, 3, 1, 2, 1, 2, 0};
  for (int count : expected) {
    ASSERT_TRUE(editor().runNext(outcome));
    EXPECT_EQ(entities().length(), count);
  }
  // Inside another command a mark is one of that command's step.
  during(L"", [&] {
    line(0, 0, 1, 0);
    EXPECT_EQ(run(RTSTR, L"_UNDO", RTSTR, L"M"), RTNORM);
    line(0, 0, 2, 0);
    EXPECT_EQ(run(RTSTR, L"_UNDO", RTSTR, L"B"), RTNORM);
    EXPECT_EQ(entities().length(), 1);
  });
  EXPECT_EQ(entities().length(), 1);
}

TEST(CommandTable, NamesAndAliasesAreEachOnce) {
  std::map<CString, int> names;
  KvEdCommandStack stack;
  kvcmdRegister(stack);
  for (const KvEdCommand* command : stack.commands()) ++names[command->globalName()];
  for (const auto& [name, count] : names) EXPECT_EQ(count, 1) << platform::utf8From(name);
  for (const KvCommandRow* row : kvcmdRows()) {
    EXPECT_EQ(kvcmdFind(row->name), row);
    EXPECT_NE(*row->purpose, L'\0');
    EXPECT_NE(kvcmdDocument().Find(L"\n## " + CString(row->name) + L"\n"), -1);
  }
  EXPECT_EQ(kvcmdFind(L"l"), kvcmdFind(L"LINE"));
  EXPECT_EQ(kvcmdFind(L"NOSUCH"), nullptr);
}

}  // namespace
