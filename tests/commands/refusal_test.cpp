// What commands must leave alone: entities on locked and frozen layers; and answers that make no sense, which
// are asked for again or refused.
#include "host/io/drawing_file.h"
#include "tests/editor/editor_host.h"
#include "tests/support/notation.h"

namespace {

constexpr const char* kGiven = R"(line 0,0 10,0 layer=A
                                  line 0,0 0,10 layer=A
                                  line 5,-5 5,5 layer=A
                                  circle 30,0 r5 layer=A
                                  arc 50,0 r5 0..90 layer=A
                                  pline 60,0 70,0 b1 70,10 layer=A
                                  pline 80,0 90,0 90,10 80,10 closed layer=A
                                  text 100,0 h2.5 "words" layer=A
                                  point 110,0 layer=A)";

class RefusalTest : public test::EditorHost, public testing::WithParamInterface<const char*> {
 protected:
  void run(std::string script) {
    for (char& c : script)
      if (c == '|') c = '\n';
    editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
    app.run();
  }
  /// All of `kGiven` are as they were.
  void expectUntouched() {
    const std::string now = test::notationOf(database());
    const std::string before = test::tidied(kGiven);
    for (std::size_t from = 0; from < before.size();) {
      const std::size_t end = before.find('\n', from);
      const std::string one = before.substr(from, end - from);
      EXPECT_NE(now.find(one + "\n"), std::string::npos) << GetParam() << ": " << one << "\n" << now;
      from = end + 1;
    }
  }
};

TEST_P(RefusalTest, LockedLayers) {
  ASSERT_EQ(test::addNotation(database(), kGiven), "");
  run("LAYER LO A||");
  run(GetParam());
  expectUntouched();
  EXPECT_EQ(database().openCount(), 0);
}

TEST_P(RefusalTest, FrozenLayers) {
  ASSERT_EQ(test::addNotation(database(), kGiven), "");
  run("LAYER F A||");
  run(GetParam());
  expectUntouched();
  EXPECT_EQ(database().openCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, RefusalTest,
    testing::Values("ERASE ALL||", "MOVE ALL||0,0 5,5|", "ROTATE ALL||0,0 30|", "SCALE ALL||0,0 2|",
                    "MIRROR ALL||0,0 1,1 Y|", "ALIGN ALL||0,0 5,5||", "STRETCH C 11,11 -1,-1||0,0 5,5|",
                    "TRIM||9,0 30,5 51,5|||", "EXTEND||9,0 54,3|||", "BREAK 3,0 4,0|", "BREAK 35,0 30,5|",
                    "FILLET R 1|FILLET 8,0 0,8|", "FILLET P 85,0|", "CHAMFER D 1 1|CHAMFER 8,0 0,8|",
                    "CHAMFER P 85,0|", "LENGTHEN DE 5 9,0 54,3||", "JOIN 1,0 5,3 65,0||", "REVERSE ALL||",
                    "PEDIT 1,0 Y W 2||", "PEDIT 65,0 C W 2||", "EXPLODE ALL||", "CHPROP ALL||C 1||",
                    "CHANGE ALL||9,9|", "CHANGE ALL||P C 1||", "LINE 200,0 201,0||MATCHPROP L ALL||",
                    "TEXTEDIT 101,1 other||", "JUSTIFYTEXT 101,1||MC|", "FIND words|Y|less|N|",
                    "REGION ALL||", "BLOCK B 0,0 ALL||", "REVCLOUD O 85,0|", "WIPEOUT P 85,0 Y|",
                    "OFFSET E Y 1 85,0 85,5||", "WBLOCK out.dxf||0,0 ALL||", "LINE 0,5 9,5||JOIN L 1,0||"));

struct Wrong {
  const char* name;
  const char* given;
  const char* script;
  const char* told;      ///< part of what is shown
  const char* expected;  ///< the drawing behind it
};
void PrintTo(const Wrong& one, std::ostream* out) {
  *out << one.name;
}

class WrongAnswersTest : public test::EditorHost, public testing::WithParamInterface<Wrong> {};

TEST_P(WrongAnswersTest, AreAskedForAgainOrRefused) {
  const Wrong& one = GetParam();
  ASSERT_EQ(test::addNotation(database(), one.given), "");
  std::string script = one.script;
  for (char& c : script)
    if (c == '|') c = '\n';
  editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
  app.run();
  EXPECT_NE(platform::utf8From(shown).find(one.told), std::string::npos) << platform::utf8From(shown);
  EXPECT_EQ(test::notationOf(database()), test::tidied(one.expected)) << platform::utf8From(shown);
  EXPECT_EQ(database().openCount(), 0);
}

constexpr Wrong kWrong[] = {
    {"RadiusBelowZero", "", "CIRCLE 0,0 -3|2|", "", "circle 0,0 r2"},
    {"WordForAPoint", "", "LINE 0,0 nowhere 5,5||", "", "line 0,0 5,5"},
    {"SidesOutOfRange", "", "POLYGON 1025|4 0,0 I 0,1|", "A number from 3 to 1024",
     "pline 0,1 -1,0 0,-1 1,0 closed"},
    {"FilletOfOneLineTwice", "line 0,0 10,0\nline 0,0 0,10", "FILLET R 2|FILLET 8,0 8,0|", "",
     "line 0,0 10,0\nline 0,0 0,10"},
    {"FilletTooLarge", "line 0,0 10,0\nline 0,0 0,10", "FILLET R 50|8,0 0,8|", "",
     "line 0,0 10,0\nline 0,0 0,10"},
    {"ScaleByZero", "circle 0,0 r1", "SCALE L||0,0 0|2|", "", "circle 0,0 r2"},
    {"MirrorOverAPoint", "line 1,0 2,1", "MIRROR L||0,0 0,0 Y|", "", "line 1,0 2,1"},
    {"ArrayOfNothing", "point 0,0", "ARRAY L||R 0|2 1 5|", "", "point 0,0\npoint 0,5"},
    {"OffsetOfAText", "text 0,0 h2 \"a\"", "OFFSET 1 0.5,0.5||", "Curves can be offset only",
     "text 0,0 h2 \"a\""},
    {"UnknownBlock", "", "INSERT NOSUCH|", "NOSUCH", ""},
    {"BlockOfABadName", "point 1,1", "BLOCK a|b|", "a", "point 1,1"},
    {"UnknownLayer", "", "LAYER S NOSUCH||POINT 1,1|", "NOSUCH", "point 1,1"},
    {"ColourOutOfRange", "line 0,0 1,0", "CHPROP L||C 300||", "", "line 0,0 1,0"},
    {"UnknownLinetype", "line 0,0 1,0", "CHPROP L||LT NOSUCH||", "NOSUCH", "line 0,0 1,0"},
    {"UnknownStyle", "", "TEXT S NOSUCH||0,0 2 0 a||", "NOSUCH", "text 0,0 h2 \"a\""},
    {"SystemThatIsNone", "", "UCS R NOSUCH|POINT 1,1|", "NOSUCH", "point 1,1"},
    {"SystemOfPointsOnALine", "", "UCS 3 0,0 1,0 2,0|POINT 1,1|", "", "point 1,1"},
    {"TrimWithoutAnEdge", "line 0,0 10,0", "TRIM||5,0||", "", "line 0,0 10,0"},
    {"DivideIntoOne", "line 0,0 9,0", "DIVIDE 1,0 1|", "A number from 2", "line 0,0 9,0"},
    {"MeasureByMoreThanThereIs", "line 0,0 9,0", "MEASURE 1,0 10|", "", "line 0,0 9,0"},
    {"ArcThroughPointsOnALine", "", "ARC 0,0 5,0 10,0|", "", ""},
    {"HatchOfAnOpenLine", "line 0,0 9,0", "HATCH ANSI31 1 0 5,0||", "", "line 0,0 9,0"},
    {"UnknownPattern", "circle 0,0 r5", "HATCH NOSUCH|^C|", "", "circle 0,0 r5"},
    {"JoinOfLinesApart", "line 0,0 1,0\nline 5,5 6,6", "JOIN 0.5,0 5.5,5.5||", "No object touches",
     "line 0,0 1,0\nline 5,5 6,6"},
    {"DimensionOfOnePoint", "", "DIMALIGNED 5,5 5,5 9,9|", "", ""},
    {"RadiusOfALine", "line 0,0 9,0", "DIMRADIUS 1,0|", "", "line 0,0 9,0"},
    {"ExplodeOfALine", "line 0,0 9,0", "EXPLODE L||", "", "line 0,0 9,0"},
    {"RectangleChamferedTooFar", "", "RECTANG C 5 5 0,0 4,3|", "", "pline 0,0 4,0 4,3 0,3 closed"},
};
INSTANTIATE_TEST_SUITE_P(Commands, WrongAnswersTest, testing::ValuesIn(kWrong),
                         [](const auto& one) { return one.param.name; });

}  // namespace
