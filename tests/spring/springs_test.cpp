// Springs: the commands they send, held against golden files; what their views must look like, checked by
// geometry.
#include "module/spring/springs.h"

#include <cmath>
#include <cwchar>
#include <fstream>
#include <limits>
#include <sstream>

#include "host/editor/selection.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "host/entities/hatch.h"
#include "module/spring/coils.h"
#include "tests/spring/support.h"

namespace {

using namespace test;

/// One argument as text; names and sets by what they are, since their numbers are of no account.
std::string argumentText(const resbuf& node) {
  std::ostringstream text;
  text.precision(9);
  switch (node.restype) {
    case RTSTR:
      text << '"' << platform::utf8From(CString(node.resval.rstring)) << '"';
      break;
    case RTREAL:
    case RTANG:
      text << node.restype << ' ' << node.resval.rreal;
      break;
    case RTPOINT:
    case RT3DPOINT:
      // What rounding leaves of 0 differs in its sign alone.
      text << node.restype;
      for (int i = 0; i < (node.restype == RTPOINT ? 2 : 3); ++i)
        text << ' ' << (std::fabs(node.resval.rpoint[i]) < 5e-10 ? 0 : node.resval.rpoint[i]);
      break;
    case RTPICKS: {
      long length = 0;
      kvedSSLength(node.resval.rlname, &length);
      text << "set of " << length;
      break;
    }
    default:
      text << node.restype;
  }
  return text.str();
}

class SpringTest : public SpringHost {
 protected:
  SpringTest() {
    host->editor().onCommandList = [this](const resbuf* list) {
      std::string line;
      for (const resbuf* node = list; node && node->restype != RTNONE; node = node->rbnext)
        line += (line.empty() ? "" : ", ") + argumentText(*node);
      commands.push_back(line);
    };
  }
  template <class T>
  std::vector<const T*> all(KvDbObjectId block = {}) {
    std::vector<const T*> found;
    if (block.isNull()) block = drawing().modelSpaceId();
    for (KvDbObjectId id : static_cast<const KvDbBlockTableRecord*>(block.stub()->object)->entities())
      if (const T* one = T::cast(const_cast<const KvDbObject*>(id.stub()->object))) found.push_back(one);
    return found;
  }
  int count(const char* beginning) const {
    return static_cast<int>(std::count_if(commands.begin(), commands.end(), [&](const std::string& line) {
      return line.starts_with(std::string("\"") + beginning + "\"");
    }));
  }
  KvDbExtents extents(KvDbObjectId block = {}) {
    KvDbExtents whole, one;
    for (const KvDbEntity* entity : all<KvDbEntity>(block))
      if (entity->getGeomExtents(one) == Kvad::eOk) whole.addExt(one);
    return whole;
  }
  /// Every circle sits on a row, between its strands.
  void circlesTouchTheirStrands(KvDbObjectId block) {
    EXPECT_EQ(all<KvDbCircle>(block).size(), 2u);
    for (const KvDbCircle* circle : all<KvDbCircle>(block)) {
      int touching = 0;
      for (const KvDbLine* line : all<KvDbLine>(block)) {
        KvGePoint3d nearest;
        line->getClosestPointTo(circle->center(), nearest);
        const bool isTangent = std::fabs(nearest.distanceTo(circle->center()) - circle->radius()) < 1e-9;
        const KvGeVector3d along = line->endPoint() - line->startPoint();
        touching += isTangent && std::fabs(along.dotProduct(circle->normal())) < 1e-9;
      }
      EXPECT_GE(touching, 1);
    }
  }
  void compareWithGolden(const std::string& name) {
    std::string text;
    for (const std::string& line : commands) text += line + "\n";
    const std::string path = KORVANE_TEST_DATA "/golden/" + name + ".txt";
    if (std::getenv("KORVANE_ACCEPT")) std::ofstream(path) << text;
    std::ifstream file(path);
    ASSERT_TRUE(file) << path;
    std::ostringstream golden;
    golden << file.rdbuf();
    EXPECT_EQ(text == golden.str(), true)
        << name << ": other commands than accepted; KORVANE_ACCEPT=1 takes them";
  }

  std::vector<std::string> commands;
};

TEST_F(SpringTest, CommandsAreThoseThatWereAccepted) {
  use(Module::Real);  // the standard's own layers
  for (const NamedView& view : kViews) {
    commands.clear();
    for (const Sizes& s : kSizes) {
      double point[3] = {100, 50, 0};
      EXPECT_EQ(view.draw(point, s.d, s.D, s.H0, s.n), 5100) << view.name;
    }
    compareWithGolden(view.name);
  }
  for (const NamedForm& form : kForms) {
    commands.clear();
    for (const Sizes& s : kSizes) {
      double point[3] = {100, 50, 0};
      answer(L"10,20\n30\n");
      EXPECT_EQ(form.draw(point, s.d, s.D, s.H0), 5100) << form.name;
    }
    compareWithGolden(form.name);
  }
  commands.clear();
  double point[3] = {0, 0, 0};
  EXPECT_EQ(DrawLeftTorSpring(point, 20, 2, 1.2, 30, 25), 5100);
  EXPECT_EQ(DrawLeftTorSpring(point, 20, 3, 0, 40, 40), 5100);
  EXPECT_EQ(DrawLeftTorSpring(point, 8, 0.8, 4, 10, 12), 5100);
  compareWithGolden("DrawLeftTorSpring");
}

TEST_F(SpringTest, TwinsSendTheSame) {
  const auto commandsOf = [&](const NamedView& view) {
    commands.clear();
    double point[3] = {0, 0, 0};
    view.draw(point, 2, 20, 60, 6);
    return commands;
  };
  EXPECT_EQ(commandsOf(kViews[0]), commandsOf(kViews[1]));
  EXPECT_EQ(commandsOf(kViews[2]), commandsOf(kViews[3]));
  EXPECT_EQ(commandsOf(kViews[5]), commandsOf(kViews[6]));
  EXPECT_EQ(commandsOf(kViews[12]), commandsOf(kViews[13]));
}

TEST_F(SpringTest, TooFewCoilsAndWrongNumbersDrawNothing) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  double point[3] = {0, 0, 0};
  for (const NamedView& view : kViews) {
    EXPECT_EQ(view.draw(point, 2, 20, 50, view.fewest - 0.1), -5001) << view.name;
    EXPECT_EQ(view.draw(point, 2, 20, 50, kNan), -5001) << view.name;
    EXPECT_EQ(view.draw(point, kNan, 20, 50, 5), -5001) << view.name;
    EXPECT_EQ(view.draw(point, 2, 20, 50, 1e9), -5001) << view.name;
    EXPECT_EQ(view.draw(nullptr, 2, 20, 50, 5), -5001) << view.name;
  }
  EXPECT_EQ(GB1239_YI_1(point, 2, kNan, 50), -5001);
  for (const wchar_t* name : {L"", L"a/b", L"*U"}) {
    std::wcscpy(SpringBlockName, name);
    EXPECT_EQ(GB1239_YI_1(point, 2, 20, 50), -5001);
  }
  EXPECT_TRUE(commands.empty());
  EXPECT_EQ(DrawTorSpring3(point, 2, 20, 50, 2), 5100);
}

TEST_F(SpringTest, ImpossibleSizesEndWithAStatus) {
  constexpr Sizes kImpossible[] = {{0, 20, 50, 4},
                                   {2, 0, 50, 4},
                                   {2, 20, 0, 4},
                                   {-2, -20, -50, 4},
                                   {9, 3, 50, 4},
                                   {2, 20, 1e300, 4},
                                   {1e300, 1e300, 1e300, 4},
                                   {1e-300, 1e-300, 1e-300, 4}};
  for (const Sizes& s : kImpossible) {
    double point[3] = {0, 0, 0};
    SCOPED_TRACE(testing::Message() << s.d << " " << s.D << " " << s.H0);
    for (const NamedView& view : kViews) {
      const int status = view.draw(point, s.d, s.D, s.H0, s.n);
      EXPECT_TRUE(status == 5100 || status == -5001) << view.name << " " << status;
    }
    for (const NamedForm& form : kForms) {
      answer(L"10,20\n30\n");
      const int status = form.draw(point, s.d, s.D, s.H0);
      EXPECT_TRUE(status == 5100 || status == -5001) << form.name << " " << status;
    }
    EXPECT_EQ(DrawLeftTorSpring(point, s.D, s.d, 1, s.H0, s.H0), 5100);
    for (const KvDbEntity* entity : all<KvDbEntity>()) {
      KvDbExtents box;
      if (entity->getGeomExtents(box) != Kvad::eOk) continue;
      EXPECT_TRUE(std::isfinite(box.minPoint().x) && std::isfinite(box.maxPoint().y));
    }
  }
}

TEST_F(SpringTest, WhatCannotBeFoundIsReported) {
  // In an empty drawing nothing comes of a first line whose ends the host refuses.
  double point[3] = {0, 0, 0};
  shown.Empty();
  EXPECT_EQ(GB1239_YI_1(point, 2, 20, 1e300), -5001);
  EXPECT_GE(shown.Find(L"entity is not found!"), 0) << platform::utf8From(shown);
  EXPECT_TRUE(all<KvDbEntity>().empty());
  // Nor does an entity of the user's go into the block in its place.
  const KvDbObjectId own = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  answer(L"10,20\n30\n");
  shown.Empty();
  EXPECT_EQ(GB1239_YI_1(point, 2, 20, 1e300), -5001);
  EXPECT_GE(shown.Find(L"entity is not found!"), 0);
  EXPECT_TRUE(own.isValid());
  EXPECT_EQ(all<KvDbEntity>().size(), 1u);
}

TEST_F(SpringTest, SimplifiedCompressionStandsOnItsRows) {
  double point[3] = {7, 0, 0};
  ASSERT_EQ(DrawCompSpring5(point, 2, 20, 50, 5.7), 5100);
  // Five whole pitches of a pitch reckoned with 5.7: eight upper points, two lines at each but the last.
  const auto lines = all<KvDbLine>();
  ASSERT_EQ(lines.size(), 15u + 3u);
  const double pitch = (50 - 3) / 6.2, half = std::sqrt(3.0) / 2;
  EXPECT_TRUE(lines[0]->startPoint().isEqualTo({7, 10 + half, 0}));
  EXPECT_TRUE(lines[0]->endPoint().isEqualTo({7, -10 - half, 0}));
  EXPECT_TRUE(lines[2]->startPoint().isEqualTo({7 + 1.5, 11, 0}));  // three quarters of the wire from the end
  EXPECT_TRUE(lines[4]->startPoint().isEqualTo({8.5 + pitch, 11, 0}));
  EXPECT_TRUE(lines[4]->endPoint().isEqualTo({7 + 0.5 + (pitch + 2) / 2 + pitch, -10 - half, 0}));
  EXPECT_EQ(kvdbRecordName(drawing().clayer()), lines[0]->layer());  // THICK stays current
  EXPECT_NE(lines.back()->layer(), L"");
  EXPECT_TRUE(lines[15]->startPoint().isEqualTo({7 - 1.25, 0, 0}));
  EXPECT_TRUE(lines[15]->endPoint().isEqualTo({7 + 51.25, 0, 0}));
}

TEST_F(SpringTest, FullCompressionIsClosedTangentAndSymmetric) {
  double point[3] = {0, 0, 0};
  const Sizes s = {2, 20, 50, 5};
  ASSERT_EQ(DrawCompSpring1(point, s.d, s.D, s.H0, s.n), 5100);
  const auto arcs = all<KvDbArc>();
  ASSERT_EQ(arcs.size(), 16u);  // a cap on each row for each of eight coils
  for (const KvDbArc* arc : arcs) {
    EXPECT_NEAR(arc->radius(), 1, 1e-9);
    EXPECT_NEAR(std::fabs(arc->center().y), 10, 1e-9);
    // Each end has a line that goes on: in the arc's tangent, but for the end planes.
    for (const KvGePoint3d& end : {arc->startPoint(), arc->endPoint()}) {
      const bool isPlane = std::fabs(end.x) < 1e-9 || std::fabs(end.x - s.H0) < 1e-9;
      bool goesOn = false;
      for (const KvDbLine* line : all<KvDbLine>()) {
        const bool isFrom = line->startPoint().distanceTo(end) < 1e-9,
                   isTo = line->endPoint().distanceTo(end) < 1e-9;
        if (!isFrom && !isTo) continue;
        const KvGeVector3d along = line->endPoint() - line->startPoint(), radius = end - arc->center();
        goesOn = goesOn || isPlane || std::fabs(along.normal().dotProduct(radius.normal())) < 1e-9;
      }
      EXPECT_TRUE(goesOn) << end.x << "," << end.y;
    }
  }
  // Half a turn about the middle brings the spring onto itself.
  for (const KvDbLine* line : all<KvDbLine>()) {
    bool hasTwin = false;
    for (const KvDbLine* other : all<KvDbLine>()) {
      const auto turned = [&](const KvGePoint3d& p) { return KvGePoint3d(s.H0 - p.x, -p.y, 0); };
      const KvGePoint3d a = turned(line->startPoint()), b = turned(line->endPoint());
      hasTwin = hasTwin ||
                (a.distanceTo(other->startPoint()) < 1e-9 && b.distanceTo(other->endPoint()) < 1e-9) ||
                (a.distanceTo(other->endPoint()) < 1e-9 && b.distanceTo(other->startPoint()) < 1e-9);
    }
    EXPECT_TRUE(hasTwin);
  }
  // No line doubled.
  const auto lines = all<KvDbLine>();
  for (std::size_t i = 0; i < lines.size(); ++i)
    for (std::size_t k = i + 1; k < lines.size(); ++k)
      EXPECT_FALSE(lines[i]->startPoint().distanceTo(lines[k]->startPoint()) < 1e-9 &&
                   lines[i]->endPoint().distanceTo(lines[k]->endPoint()) < 1e-9);
}

TEST_F(SpringTest, SectionsAreHatchedOnceAndWhole) {
  const struct {
    View draw;
    int hatches, sections;
    double cut;  ///< of all sections' area, what ground ends lack
  } cases[] = {{DrawCompSpring3, 2, 16, 2},
               {DrawExteSpring3, 1, 10, 0},
               {DrawTorSpring2, 1, 2, 0},
               {DrawTorSpring3, 1, 10, 0}};
  double y = 0;
  for (const auto& c : cases) {
    commands.clear();
    double point[3] = {0, y += 100, 0};
    ASSERT_EQ(c.draw(point, 2, 20, 70, 5), 5100);
    EXPECT_EQ(count("HATCH"), c.hatches);
    int loops = 0;
    double area = 0;
    KvDbExtents box;
    for (const KvDbHatch* hatch : all<KvDbHatch>()) {
      hatch->getGeomExtents(box);
      if (std::fabs((box.minPoint().y + box.maxPoint().y) / 2 - y) > 40) continue;
      double one = 0;
      EXPECT_EQ(hatch->getArea(one), Kvad::eOk);
      area += one;
      loops += hatch->numLoops();
    }
    EXPECT_EQ(loops, c.sections);
    // Two ground sections make one whole: of each pair one is cut by what the other keeps.
    EXPECT_NEAR(area, (c.sections - c.cut) * kvge::kPi, 1e-9);
  }
}

TEST_F(SpringTest, ExtensionHooksReachTheLength) {
  double point[3] = {0, 0, 0};
  ASSERT_EQ(DrawExteSpring1(point, 2, 20, 80, 8), 5100);
  // Measured to the middle of the hooks' wire: half a wire beyond on both sides.
  double least = 1e9, greatest = -1e9;
  for (const KvDbArc* arc : all<KvDbArc>()) {
    KvDbExtents box;
    arc->getGeomExtents(box);
    least = std::min(least, box.minPoint().x);
    greatest = std::max(greatest, box.maxPoint().x);
  }
  EXPECT_NEAR(least, -1, 1e-9);
  EXPECT_NEAR(greatest, 81, 1e-9);
  // A length at which the coils lie on one another draws all the same.
  EXPECT_EQ(DrawExteSpring5(point, 2, 20, 2 * 20 - 2, 4), 5100);
}

TEST_F(SpringTest, RadiusOfHalfCirclesIsGuarded) {
  const double point[3] = {0, 0, 0};
  mek::SpringFrame frame(point);
  frame.arc({1 + 5e-8, 0}, {-1 - 5e-8, 0}, 1);
  ASSERT_EQ(all<KvDbArc>().size(), 1u);
  EXPECT_NEAR(all<KvDbArc>()[0]->radius(), 1 + 5e-8, 1e-12);
  frame.arc({1.1, 0}, {-1.1, 0}, 1);  // too much to be rounding: the host refuses
  EXPECT_EQ(all<KvDbArc>().size(), 1u);
  EXPECT_FALSE(mek::crossing({{0, 0}, {1, 0}}, {{0, 1}, {1, 1}}));
  EXPECT_FALSE(mek::crossing({{0, 0}, {1, 0}}, {{2, -1}, {2, 1}}));
  ASSERT_TRUE(mek::crossing({{0, 0}, {1, 0}}, {{1 + 5e-8, -1}, {1 + 5e-8, 1}}));
}

TEST_F(SpringTest, EndViewOfATorsionSpring) {
  double point[3] = {0, 0, 0};
  ASSERT_EQ(DrawLeftTorSpring(point, 20, 2, 0, 30, 25), 5100);
  ASSERT_EQ(all<KvDbCircle>().size(), 1u);
  EXPECT_EQ(all<KvDbCircle>()[0]->radius(), 9);
  // With no angle between them both arms lie to the left.
  for (const KvDbLine* line : all<KvDbLine>()) EXPECT_LE(line->endPoint().x, 13.2 + 1e-9);
  const auto* arc = all<KvDbArc>()[0];
  EXPECT_TRUE(arc->startPoint().isEqualTo({0, -11, 0}));
  EXPECT_TRUE(arc->endPoint().isEqualTo({0, 11, 0}));
}

TEST_F(SpringTest, StandardFormsBecomeABlockThatIsPlacedAndTurned) {
  double point[3] = {500, 0, 0};
  answer(L"10,20\n90\n");
  ASSERT_EQ(GB1239_YI_1(point, 3, 23, 120), 5100);
  ASSERT_EQ(all<KvDbEntity>().size(), 1u);
  const auto references = all<KvDbBlockReference>();
  ASSERT_EQ(references.size(), 1u);
  EXPECT_TRUE(references[0]->position().isEqualTo({10, 20, 0}));
  EXPECT_NEAR(references[0]->rotation(), kvge::kPi / 2, 1e-12);
  const KvDbObjectId block = references[0]->blockTableRecord();
  EXPECT_EQ(kvdbRecordName(block), L"KM_SPRING");
  EXPECT_EQ(all<KvDbHatch>(block).size(), 2u);
  // The base point is the left end on the axis; the end planes stand at 0 and H0.
  int planes = 0;
  for (const KvDbLine* line : all<KvDbLine>(block))
    if (std::fabs(line->startPoint().x - line->endPoint().x) < 1e-9 &&
        (std::fabs(line->startPoint().x) < 1e-9 || std::fabs(line->startPoint().x - 120) < 1e-9))
      ++planes;
  EXPECT_EQ(planes, 2);
  EXPECT_EQ(count("trim"), 4);
  // The second time the question of making it anew is answered.
  commands.clear();
  answer(L"50,20\n0\n");
  ASSERT_EQ(GB1239_YII_1(point, 3, 23, 120), 5100);
  EXPECT_EQ(count("trim"), 5);
  EXPECT_EQ(all<KvDbBlockReference>().size(), 2u);
  bool isAnswered = false;
  for (const std::string& line : commands)
    isAnswered = isAnswered || line.starts_with("\"BLOCK\", \"KM_SPRING\", \"Y\", ");
  EXPECT_TRUE(isAnswered);
  commands.clear();
  answer(L"50,90\n0\n");
  ASSERT_EQ(GB1239_YIII_1(point, 3, 23, 120), 5100);
  EXPECT_EQ(count("trim"), 6);
  commands.clear();
  answer(L"50,90\n0\n");
  ASSERT_EQ(GB1239_YI_2(point, 3, 23, 120), 5100);
  EXPECT_EQ(count("ARC"), 6);
}

TEST_F(SpringTest, ViewsAreWholeInATurnedUserSystem) {
  double point[3] = {0, 0, 0};
  answer(L"0,0\n0\n");
  ASSERT_EQ(GB1239_YI_1(point, 3, 23, 120), 5100);
  const KvDbObjectId block = all<KvDbBlockReference>()[0]->blockTableRecord();
  const std::size_t before = all<KvDbEntity>(block).size();
  KvGeMatrix3d system;
  system.setCoordSystem({40, 7, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1});
  kvedSetCurrentUCS(system);
  answer(L"0,0\n0\n");
  ASSERT_EQ(GB1239_YI_1(point, 3, 23, 120), 5100);
  EXPECT_EQ(all<KvDbEntity>(block).size(), before);
  circlesTouchTheirStrands(block);
  // The base was read as a point of the world, and so the caller gets it back.
  EXPECT_NEAR(point[0], -7, 1e-9);
  EXPECT_NEAR(point[1], 40, 1e-9);
}

TEST_F(SpringTest, ViewsAreWholeInAnUprightUserSystem) {
  double point[3] = {0, 0, 0};
  KvGeMatrix3d system;
  system.setCoordSystem({0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0});
  kvedSetCurrentUCS(system);
  answer(L"0,0\n0\n");
  ASSERT_EQ(GB1239_YI_1(point, 3, 23, 120), 5100);
  const KvDbObjectId block = all<KvDbBlockReference>()[0]->blockTableRecord();
  circlesTouchTheirStrands(block);
  EXPECT_EQ(all<KvDbHatch>(block).size(), 2u);
}

TEST_F(SpringTest, WithoutAPlaceNothingOfTheUsersGoes) {
  const KvDbObjectId own = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  double point[3] = {0, 0, 0};
  answer(L"");
  EXPECT_EQ(GB1239_YI_2(point, 3, 23, 120), -5001);
  EXPECT_TRUE(own.isValid());
  EXPECT_EQ(all<KvDbEntity>().size(), 1u);
  EXPECT_EQ(count("ERASE"), 0);
  EXPECT_EQ(count("INSERT"), 1);
}

}  // namespace
