// What commands make of a drawing: given entities, a script, and the entities that are expected then.
#include "host/editor/ucs.h"
#include "tests/editor/editor_host.h"
#include "tests/support/notation.h"

namespace {

struct Case {
  const char* name;
  const char* given;
  const char* script;  ///< `|` ends a line
  const char* expected;
};

/// So that a failing case is told by its name.
void PrintTo(const Case& one, std::ostream* out) {
  *out << one.name;
}

class DrawingCommandsTest : public test::EditorHost, public testing::WithParamInterface<Case> {
 protected:
  void runScript(std::string script) {
    for (char& c : script)
      if (c == '|') c = '\n';
    editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
    app.run();
  }
};

TEST_P(DrawingCommandsTest, GivenDoExpect) {
  const Case& one = GetParam();
  ASSERT_EQ(test::addNotation(database(), one.given), "");
  runScript(one.script);
  EXPECT_EQ(test::notationOf(database()), test::tidied(one.expected)) << platform::utf8From(shown);
  EXPECT_EQ(database().openCount(), 0);
}

constexpr Case kDrawing[] = {
    {"PlineLines", "", "PLINE 0,0 10,0 10,10 C|", "pline 0,0 10,0 10,10 closed"},
    {"PlineSmoothArc", "", "PLINE 0,0 10,0 A 10,10 L 0,10||", "pline 0,0 10,0 b1 10,10 0,10"},
    {"PlineArcWays", "", "PLINE 1,0 A S 0,1 -1,0 CE 0,0 A 180 U||", "pline 1,0 b1 -1,0"},
    {"PlineClockwiseSecond", "", "PLINE 1,0 A S 0,-1 -1,0||", "pline 1,0 b-1 -1,0"},
    {"PlineRadiusAndAngle", "", "PLINE 0,0 A R 5 10,0 A -180 20,0||", "pline 0,0 b1 10,0 b-1 20,0"},
    {"PlineWidthsAndLength", "", "PLINE 0,0 W 1 2 10,0 L 5||", "pline 0,0 w1/2 10,0 w2/2 15,0"},
    {"PlineUndoToTheStart", "", "PLINE 0,0 1,0 2,0 U U U 5,5||", "pline 0,0 5,5"},
    {"PlineOfOnePoint", "", "PLINE 0,0||", ""},
    {"Rectangle", "", "RECTANG 0,0 4,3|", "pline 0,0 4,0 4,3 0,3 closed"},
    {"RectangleTurned", "", "RECTANG 0,0 R 90 D 4 3|", "pline 0,0 0,4 -3,4 -3,0 closed"},
    {"RectangleByArea", "", "RECTANG 0,0 A 12 4|", "pline 0,0 4,0 4,3 0,3 closed"},
    {"RectangleChamfered", "", "RECTANG C 1 1 0,0 4,3|", "pline 0,1 1,0 3,0 4,1 4,2 3,3 1,3 0,2 closed"},
    {"RectangleFilletedBackwards", "", "RECTANG F 1 0,0 -4,3|",
     "pline 0,1 b-0.414214 -1,0 -3,0 b-0.414214 -4,1 -4,2 b-0.414214 -3,3 -1,3 b-0.414214 0,2 closed"},
    {"RectangleFlat", "", "RECTANG 0,0 4,0|", ""},
    {"PolygonByEdge", "", "POLYGON 4 E 0,0 2,0|", "pline 0,0 2,0 2,2 0,2 closed"},
    {"PolygonAbout", "", "POLYGON 4 0,0 C 1|", "pline -1,-1 1,-1 1,1 -1,1 closed"},
    {"PolygonOfTwoSides", "", "POLYGON 2 3 0,0 I 0,1|", "pline 0,1 -0.866025,-0.5 0.866025,-0.5 closed"},
    {"Donut", "", "DONUT 2 4 0,0||", "pline -1.5,0 b1 w1/1 1.5,0 b1 w1/1 closed"},
    {"SolidGoesOn", "", "SOLID 0,0 2,0 0,2 2,2 0,4||", "solid 0,0 2,0 0,2 2,2\nsolid 0,2 2,2 0,4 0,4"},
    {"Ellipse", "", "ELLIPSE -10,0 10,0 5|", "ellipse 0,0 10,0 q0.5"},
    {"EllipseSecondAxisLonger", "", "ELLIPSE C 0,0 5,0 10|", "ellipse 0,0 0,10 q0.5"},
    {"EllipseArc", "", "ELLIPSE A C 0,0 10,0 5 0 90|", "ellipse 0,0 10,0 q0.5 0..90"},
    {"EllipseEdgeOn", "", "ELLIPSE C 0,0 10,0 R 90|", ""},
    {"PointsRaysLines", "", "POINT 1,2|RAY 0,0 5,0 0,5||XLINE V 3,0||XLINE 0,0 3,4||",
     "point 1,2\nray 0,0 1,0\nray 0,0 0,1\nxline 3,0 0,1\nxline 0,0 0.6,0.8"},
    {"XlineBisector", "", "XLINE B 0,0 5,0 0,5 -5,0||", "xline 0,0 0.707107,0.707107\nxline 0,0 0,-1"},
    {"Spline", "", "SPLINE 0,0 5,5 10,0||||", "spline 0,0 5,5 10,0"},
    {"TextLines", "", "TEXT 0,0 3 0 first line|second||",
     "text 0,0 h3 \"first line\"\ntext 0,-5 h3 \"second\""},
    {"TextTurned", "", "TEXT 10,0 3 90 a|b||", "text 10,0 h3 \"a\" turn=90\ntext 15,0 h3 \"b\" turn=90"},
    {"Mtext", "", "MTEXT 0,10 H 2 J MC 20,0 one two|three||", "mtext 10,5 h2 \"one two\\Pthree\""},
};
INSTANTIATE_TEST_SUITE_P(Draw, DrawingCommandsTest, testing::ValuesIn(kDrawing),
                         [](const auto& one) { return one.param.name; });

constexpr Case kSystems[] = {
    {"SystemByName", "", "UCS 10,5||UCS Z 90|UCS S BENCH|UCS W|POINT 1,0|UCS R bench|POINT 1,0|",
     "point 1,0\npoint 10,6"},
    {"SystemReplacedAndDeleted", "",
     "UCS 10,5||UCS S B|UCS W|UCS S B Y|UCS 3,3||UCS NA R B|POINT 1,0|UCS D B|UCS R B|", "point 1,0"},
    {"SystemPrevious", "", "UCS 10,5||UCS 1,1||UCS P|POINT 0,0|UCS P|POINT 0,0|", "point 10,5\npoint 0,0"},
    {"SystemOfLine", "line 10,10 10,20", "UCS OB 10,19|POINT 1,0|", "line 10,10 10,20\npoint 10,19"},
    {"SystemByThreePoints", "", "UCS 3 5,5 5,6 4,5|POINT 2,1|", "point 4,7"},
    {"SystemMoved", "", "UCS Z 90|UCS M 2,0|POINT 1,0|", "point 0,3"},
    {"SystemRenamed", "", "UCS 10,5||UCS S B|RENAME U B BENCH|UCS W|UCS R BENCH|POINT 0,0|", "point 10,5"},
    {"SystemOnItsZAxis", "", "UCS ZA 0,0 1,0,0|POINT 0,0,4|", "point 4,0"},
};
INSTANTIATE_TEST_SUITE_P(Systems, DrawingCommandsTest, testing::ValuesIn(kSystems),
                         [](const auto& one) { return one.param.name; });

constexpr Case kChanging[] = {
    {"Move", "line 0,0 1,0\ncircle 0,0 r1", "MOVE L||0,0 5,5|", "line 0,0 1,0\ncircle 5,5 r1"},
    {"MoveByFirstPoint", "point 1,1", "MOVE L||2,3||", "point 3,4"},
    {"MoveByDisplacement", "point 1,1", "MOVE L||D 2,3|", "point 3,4"},
    {"CopyManyAndUndo", "point 0,0", "COPY L||0,0 1,0 2,0 U 3,0||", "point 0,0\npoint 1,0\npoint 3,0"},
    {"CopyRowToFit", "point 0,0", "COPY L||0,0 A 3 F 4,0||", "point 0,0\npoint 2,0\npoint 4,0"},
    {"Rotate", "line 0,0 10,0", "ROTATE L||0,0 90|", "line 0,0 0,10"},
    {"RotateCopyByReference", "line 0,0 10,0", "ROTATE L||0,0 C R 30 120|", "line 0,0 10,0\nline 0,0 0,10"},
    {"ScaleByReference", "circle 2,0 r1", "SCALE L||0,0 R 2 5|", "circle 5,0 r2.5"},
    {"ScaleCopy", "circle 2,0 r1", "SCALE L||0,0 C 2|", "circle 2,0 r1\ncircle 4,0 r2"},
    {"Mirror", "line 1,0 2,1", "MIRROR L||0,0 0,1 N|", "line 1,0 2,1\nline -1,0 -2,1"},
    {"MirrorInPlace", "arc 5,0 r2 0..90", "MIRROR L||0,0 0,5 Y|", "arc -5,0 r2 90..180"},
    {"ArrayOfRows", "point 0,0", "ARRAY L||R 2 2 10 5|", "point 0,0\npoint 5,0\npoint 0,10\npoint 5,10"},
    {"ArrayOfRing", "line 1,0 2,0", "ARRAY L||P 0,0 4 360 Y|",
     "line 1,0 2,0\nline 0,1 0,2\nline -1,0 -2,0\nline 0,-1 0,-2"},
    {"ArrayOfPartUnturned", "point 1,0", "ARRAY L||P 0,0 3 90 N|",
     "point 1,0\npoint 0.707107,0.707107\npoint 0,1"},
    {"ArrayTooLarge", "point 0,0", "ARRAY L||R 10000 10000 1 1|", "point 0,0"},
    {"StretchOneEnd", "line 0,0 10,0\npline 0,5 10,5 12,6", "STRETCH C 20,-5 9,9||0,0 5,0|",
     "line 0,0 15,0\npline 0,5 15,5 17,6"},
    {"StretchArcKeepsHeight", "arc 0,0 r5 0..180", "STRETCH C 4,-1 6,1||0,0 2,0|",
     "arc 1,-1.1 r6.1 10.388858..169.611142"},
    {"Extend", "line 0,0 5,0\nline 10,-5 10,5", "EXTEND||5,0||", "line 0,0 10,0\nline 10,-5 10,5"},
    {"ExtendNearestEdge", "line 0,0 5,0\nline 10,-5 10,5\nline 8,-5 8,5", "EXTEND||4,0||",
     "line 0,0 8,0\nline 10,-5 10,5\nline 8,-5 8,5"},
    {"ExtendTheOtherEnd", "line 0,0 5,0\nline -10,-5 -10,5", "EXTEND||1,0||",
     "line -10,0 5,0\nline -10,-5 -10,5"},
    {"ExtendArc", "arc 0,0 r5 0..45\nline 0,0 0,10", "EXTEND||3.535534,3.535534||",
     "arc 0,0 r5 0..90\nline 0,0 0,10"},
    {"ExtendPolyline", "pline 0,5 0,0 5,0\nline 10,-5 10,5", "EXTEND||5,0||",
     "pline 0,5 0,0 10,0\nline 10,-5 10,5"},
    {"BreakLine", "line 0,0 10,0", "BREAK 3,0 7,0|", "line 0,0 3,0\nline 7,0 10,0"},
    {"BreakAtOnePoint", "line 0,0 10,0", "BREAK 1,0 F 4,0 @|", "line 0,0 4,0\nline 4,0 10,0"},
    {"BreakCircleForwards", "circle 0,0 r5", "BREAK 5,0 0,5|", "arc 0,0 r5 90..0"},
    {"BreakCircleOverTheStart", "circle 0,0 r5", "BREAK 0,-5 0,5|", "arc 0,0 r5 90..270"},
    {"FilletLines", "line 0,0 10,0\nline 0,0 0,10", "FILLET R 2|FILLET 8,0 0,8|",
     "line 2,0 10,0\nline 0,2 0,10\narc 2,2 r2 180..270"},
    {"FilletCrossingKeepsThePicks", "line -5,0 10,0\nline 0,-5 0,10", "FILLET R 0|FILLET 8,0 0,8|",
     "line 0,0 10,0\nline 0,0 0,10"},
    {"FilletParallel", "line 0,0 10,0\nline 0,4 8,4", "FILLET 9,0 7,4|",
     "line 0,0 10,0\nline 0,4 10,4\narc 10,2 r2 270..90"},
    {"FilletWithoutTrim", "line 0,0 10,0\nline 0,0 0,10", "FILLET R 2|FILLET T N 8,0 0,8|",
     "line 0,0 10,0\nline 0,0 0,10\narc 2,2 r2 180..270"},
    {"FilletPolyline", "pline 0,0 10,0 10,10", "FILLET R 2|FILLET P 5,0|",
     "pline 0,0 8,0 b0.414214 10,2 10,10"},
    {"ChamferLines", "line 0,0 10,0\nline 0,0 0,10", "CHAMFER D 2 3 8,0 0,8|",
     "line 2,0 10,0\nline 0,3 0,10\nline 2,0 0,3"},
    {"ChamferTooLongForPolyline", "pline 0,0 10,0 10,10", "CHAMFER D 20 20 P 5,0|", "pline 0,0 10,0 10,10"},
    {"OffsetLine", "line 0,0 10,0", "OFFSET 2 5,0 5,1||", "line 0,0 10,0\nline 0,2 10,2"},
    {"OffsetCircleBothWays", "circle 0,0 r5", "OFFSET 2 5,0 9,0 5,0 0,0||",
     "circle 0,0 r5\ncircle 0,0 r7\ncircle 0,0 r3"},
    {"OffsetTooFarInside", "circle 0,0 r5", "OFFSET 6 5,0 0,0||", "circle 0,0 r5"},
    {"OffsetPolylineInwards", "pline 0,0 10,0 10,10 0,10 closed", "OFFSET 1 5,0 5,5||",
     "pline 0,0 10,0 10,10 0,10 closed\npline 1,1 9,1 9,9 1,9 closed"},
    {"OffsetSlot", "pline 0,0 10,0 b1 10,4 0,4 b1 closed", "OFFSET 1 5,0 5,-5||",
     "pline 0,0 10,0 b1 10,4 0,4 b1 closed\npline 0,-1 10,-1 b1 10,5 0,5 b1 closed"},
    {"OffsetThrough", "line 0,0 10,0", "OFFSET T 5,0 5,3||", "line 0,0 10,0\nline 0,3 10,3"},
    {"JoinLines", "line 0,0 4,0\nline 10,0 6,0\nline 0,1 5,1", "JOIN 1,0 ALL||",
     "line 0,0 10,0\nline 0,1 5,1"},
    {"JoinToPolyline", "line 0,0 10,0\narc 10,5 r5 270..90\nline 0,10 10,10\nline 0,10 0,0", "JOIN 5,0 ALL||",
     "pline 0,10 0,0 10,0 b1 10,10 closed"},
    {"ExplodePolyline", "pline 0,0 10,0 b1 10,10 layer=A", "EXPLODE L||",
     "line 0,0 10,0 layer=A\narc 10,5 r5 270..90 layer=A"},
    {"Properties", "line 0,0 1,0", "LAYER M A||CHPROP L||C 1 LA A||", "line 0,0 1,0 layer=A color=1"},
    {"ChangePoint", "line 0,0 10,0\ncircle 0,0 r1", "CHANGE ALL||9,3|", "line 0,0 9,3\ncircle 0,0 r9.486833"},
    {"MatchProperties", "line 0,0 1,0 layer=A color=3\ncircle 0,9 r1", "MATCHPROP 0.5,0 L||",
     "line 0,0 1,0 layer=A color=3\ncircle 0,9 r1 layer=A color=3"},
    {"LockedLayersStay", "line 0,0 1,0 layer=A\npoint 5,5", "LAYER LO A||MOVE ALL||0,0 1,1|ERASE ALL||",
     "line 0,0 1,0 layer=A"},
    {"Linear", "", "DIMLINEAR 0,0 10,5 5,-3|DIMLINEAR 0,0 10,5 -3,2|DIMALIGNED 0,0 3,4 9,9|",
     "dimension 10\ndimension 5\ndimension 5"},
    {"RoundAndAngular", "circle 0,0 r4", "DIMRADIUS 4,0 9,9|DIMDIAMETER 4,0 9,9|DIMANGULAR||0,0 9,0 0,9 5,5|",
     "circle 0,0 r4\ndimension 4\ndimension 8\ndimension 90"},
    {"LinearTurned", "", "UCS 5,5||UCS Z 30|DIMLINEAR 0,0 10,5 5,-3|DIMORDINATE 7,3 7,20|",
     "dimension 10\ndimension 7"},
    {"Ordinate", "", "DIMORDINATE 7,3 7,20|DIMORDINATE 7,3 20,3|", "dimension 7\ndimension 3"},
    {"DimensionsInARow", "", "DIMLINEAR 0,0 10,0 5,-5|DIMCONTINUE 25,0 40,0 U 30,0||^C|",
     "dimension 10\ndimension 15\ndimension 5"},
    {"DimensionsFromOneOrigin", "", "DIMLINEAR 0,0 10,0 5,-5|DIMBASELINE 25,0 40,0||^C|",
     "dimension 10\ndimension 25\ndimension 40"},
    {"DimensionsGoOnFromThePickedEnd", "", "DIMLINEAR 0,0 10,0 5,-5|POINT 0,50|DIMCONTINUE||0,-3 -7,0||^C|",
     "dimension 10\npoint 0,50\ndimension 7"},
    {"AnglesInARow", "", "DIMANGULAR||0,0 10,0 10,10 9,4|DIMCONTINUE 0,10||^C|",
     "dimension 45\ndimension 45"},
    {"OrdinatesInARow", "", "DIMORDINATE 7,3 7,20|DIMCONTINUE 12,3||^C|", "dimension 7\ndimension 12"},
    {"CenterMark", "circle 5,5 r10", "DIMCEN 2|DIMCENTER 15,5|",
     "circle 5,5 r10\nline 3,5 7,5\nline 5,3 5,7"},
    {"CenterLines", "circle 0,0 r10", "DIMCEN -2|DIMCENTER 10,0|",
     "circle 0,0 r10\nline -2,0 2,0\nline 4,0 12,0\nline -4,0 -12,0\nline 0,-2 0,2\nline 0,4 0,12\nline "
     "0,-4 0,-12"},
    {"TrimUndone", "line 0,0 10,0\nline 5,-5 5,5", "TRIM||9,0 U 1,0||", "line 5,0 10,0\nline 5,-5 5,5"},
    {"TrimByFence", "line 0,0 10,0\nline 0,2 10,2\nline 5,-5 5,5", "TRIM 5,4||F 8,-1 8,3|||",
     "line 0,0 5,0\nline 0,2 5,2\nline 5,-5 5,5"},
    {"TrimByCrossing", "line 0,0 10,0\nline 0,2 10,2\nline 5,-5 5,5", "TRIM 5,4||C 8,-1 9,3||",
     "line 0,0 5,0\nline 0,2 5,2\nline 5,-5 5,5"},
    {"TrimMissGoesOn", "line 0,0 10,0\nline 5,-5 5,5", "TRIM||90,90 9,0||", "line 0,0 5,0\nline 5,-5 5,5"},
    {"TrimAtTheEdgeDrawnOut", "line 0,0 10,0\nline 5,2 5,5", "TRIM 5,4||9,0 E E 9,0||",
     "line 0,0 5,0\nline 5,2 5,5"},
    {"TrimErases", "line 0,0 10,0\nline 5,2 5,5", "TRIM 5,4||R 2,0||||", "line 5,2 5,5"},
    {"ExtendToTheEdgeDrawnOut", "line 0,0 5,0\nline 10,2 10,5", "EXTEND 10,4||E E 4,0||",
     "line 0,0 10,0\nline 10,2 10,5"},
    {"ExtendUndone", "line 0,0 5,0\nline 10,-5 10,5", "EXTEND||4,0 U U||", "line 0,0 5,0\nline 10,-5 10,5"},
    {"OffsetManyAndUndo", "line 0,0 10,0", "OFFSET 2 5,0 M 5,1 5,9 U 5,9 |||",
     "line 0,0 10,0\nline 0,2 10,2\nline 0,4 10,4"},
    {"CircleTouchingTwoLines", "line 0,0 20,0\nline 0,0 0,20", "CIRCLE T 9,0 0,9 3|",
     "line 0,0 20,0\nline 0,0 0,20\ncircle 3,3 r3"},
    {"CircleTouchingCircleAndLine", "circle 0,0 r5\nline -20,-5 20,-5", "CIRCLE T 5,0 9,-5 2|",
     "circle 0,0 r5\nline -20,-5 20,-5\ncircle 6.324555,-3 r2"},
    {"CircleThatDoesNotExist", "circle 0,0 r5\ncircle 100,0 r5", "CIRCLE T 5,0 95,0 2|",
     "circle 0,0 r5\ncircle 100,0 r5"},
    {"BoundaryOfCrossingLines",
     "line -5,0 15,0\nline -5,10 15,10\nline 0,-5 0,15\nline 10,-5 10,15\nline 20,20 30,30",
     "BOUNDARY 5,5||ERASE F -1,-2 -1,12 16,12 16,-2||25,25||", "pline 0,0 10,0 10,10 0,10 closed"},
    {"BoundaryOfAnArcAndALine", "circle 0,0 r5\nline -9,0 9,0", "BOUNDARY 0,2||ERASE 9,0 0,-5||",
     "pline 5,0 b1 -5,0 closed"},
    {"BoundaryWithAnIsland",
     "pline 0,0 20,0 20,20 0,20 closed\ncircle 10,10 r2\ncircle 10,10 r1\ncircle 50,50 r1", "BOUNDARY 3,3||",
     "pline 0,0 20,0 20,20 0,20 closed\ncircle 10,10 r2\ncircle 10,10 r1\ncircle 50,50 r1\npline 0,0 "
     "20,0 20,20 0,20 closed\npline 12,10 b-1 8,10 b-1 closed"},
    {"BoundaryOfNothing", "line 0,0 10,0\nline 0,0 0,10", "BOUNDARY 3,3||", "line 0,0 10,0\nline 0,0 0,10"},
    {"LengthenLineByDelta", "line 0,0 10,0", "LENGTHEN DE 5 9,0 1,0||", "line -5,0 15,0"},
    {"LengthenToTotalAndPercent", "line 0,0 10,0\nline 0,5 10,5", "LENGTHEN T 4 9,0||LENGTHEN P 150 9,5||",
     "line 0,0 4,0\nline 0,5 15,5"},
    {"LengthenArcByAngle", "arc 0,0 r5 0..90", "LENGTHEN DE A 30 0,5 5,0||", "arc 0,0 r5 330..120"},
    {"LengthenArcToAWholeTurnIsRefused", "arc 0,0 r5 0..90", "LENGTHEN T A 360 0,5||", "arc 0,0 r5 0..90"},
    {"LengthenPolylineEnds", "pline 0,0 10,0 b1 10,10", "LENGTHEN DE 5 1,0||LENGTHEN DE -7.853982 10,10||",
     "pline -5,0 10,0 b0.414214 15,5"},
    {"LengthenAwayIsRefused", "line 0,0 10,0", "LENGTHEN DE -10 9,0||", "line 0,0 10,0"},
    {"DivideOpenAndClosed", "line 0,0 9,0\ncircle 0,50 r5", "DIVIDE 1,0 3|DIVIDE 5,50 2|",
     "line 0,0 9,0\ncircle 0,50 r5\npoint 3,0\npoint 6,0\npoint 5,50\npoint -5,50"},
    {"MeasureFromTheNearerEnd", "line 0,0 10,0", "MEASURE 9,0 4|", "line 0,0 10,0\npoint 6,0\npoint 2,0"},
    {"MarksAreThePreviousSet", "line 0,0 9,0", "DIVIDE 1,0 3|MOVE P||0,0 0,5|",
     "line 0,0 9,0\npoint 3,5\npoint 6,5"},
    {"ReverseTurnsThePickedEnd", "pline 0,0 10,0 b1 10,10", "REVERSE L||", "pline 10,10 b-1 10,0 0,0"},
    {"AlignByTwoPairsScaled", "line 0,0 10,0", "ALIGN L||0,0 5,5 10,0 5,25||Y|", "line 5,5 5,25"},
    {"AlignByTwoPairs", "line 0,0 10,0", "ALIGN L||0,0 5,5 10,0 5,25||N|", "line 5,5 5,15"},
    {"AlignByOnePair", "point 1,1", "ALIGN L||1,1 4,5||", "point 4,5"},
    {"AlignByThreePairsIsATurn", "line 0,0 10,0", "ALIGN L||0,0 5,5 1,0 5,6 0,1 4,5|", "line 5,5 5,15"},
    {"PeditMakesJoinsAndCloses", "line 0,0 10,0\nline 10,0 10,10\nline 5,20 10,10",
     "PEDIT 5,0 Y J ALL||C W 2||", "pline 0,0 w2/2 10,0 w2/2 10,10 w2/2 5,20 w2/2 closed"},
    {"PeditOpensAndUndoes", "pline 0,0 10,0 b1 10,10 closed", "PEDIT 5,0 O D U||", "pline 0,0 10,0 b1 10,10"},
    {"PeditEditsVertices", "pline 0,0 10,0 10,10", "PEDIT 5,0 E N M 12,0 I 14,5 N D X||",
     "pline 0,0 12,0 10,10"},
    {"PeditRefusesACircle", "circle 0,0 r5", "PEDIT 5,0|", "circle 0,0 r5"},
    {"TraceMitresItsCorner", "", "TRACE 2 0,0 10,0 10,10||",
     "solid 0,1 0,-1 9,1 11,-1\nsolid 9,1 11,-1 9,10 11,10"},
    {"FacesGoOn", "", "3DFACE 0,0 I 10,0 10,10 0,10 0,20 10,20||",
     "face 0,0 10,0 hidden 10,10 0,10\nface 10,10 0,10 0,20 10,20"},
    {"OopsAfterOtherWork", "point 1,1\npoint 2,2", "ERASE 1,1||POINT 3,3|OOPS|OOPS|",
     "point 1,1\npoint 2,2\npoint 3,3"},
    {"OopsAfterBlock", "point 1,1", "BLOCK B 0,0 L||OOPS|", "point 1,1"},
    {"CloudRoundACorner", "", "REVCLOUD A 10 0,0 10,10|",
     "pline 0,0 b0.520567 10,0 b0.520567 10,10 b0.520567 0,10 b0.520567 closed"},
    {"CloudTakesAnObjectsPlace", "pline 0,0 0,10 10,10 10,0 closed", "REVCLOUD A 10 O 5,0|",
     "pline 0,0 b-0.520567 0,10 b-0.520567 10,10 b-0.520567 10,0 b-0.520567 closed"},
    {"JustifiedTextStays", "text 10,5 h2 \"word\"", "JUSTIFYTEXT L||MR|JUSTIFYTEXT L||L|",
     "text 10,5 h2 \"word\""},
    {"TextsAreEditedAndFound", "text 0,0 h2 \"a word\"\ntext 0,9 h2 \"Word word\"",
     "TEXTEDIT 0.5,0.5 one WORD||FIND word|Y|pin|N|", "text 0,0 h2 \"one pin\"\ntext 0,9 h2 \"pin pin\""},
};
INSTANTIATE_TEST_SUITE_P(Change, DrawingCommandsTest, testing::ValuesIn(kChanging),
                         [](const auto& one) { return one.param.name; });

/// In a turned user system the same script gives the same figure, turned.
class TurnedTest : public test::EditorHost, public testing::WithParamInterface<const char*> {};

TEST_P(TurnedTest, TheFigureTurnsWithTheSystem) {
  const auto run = [&](const std::string& script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
    app.run();
  };
  run(GetParam());
  const std::string plain = test::notationOf(database());
  ASSERT_NE(plain, "");
  run("ERASE ALL\n\nUCS 100,50\n\nUCS Z 90\n");
  run(GetParam());
  EXPECT_NE(test::notationOf(database()), plain);
  // Brought back, everything lies where it lay.
  run("UCS W\nROTATE ALL\n\n100,50 -90\nMOVE ALL\n\n100,50 0,0\n");
  EXPECT_EQ(test::notationOf(database()), plain) << platform::utf8From(shown);
}

TEST_P(TurnedTest, TheFigureTiltsWithTheSystem) {
  const auto run = [&](const std::string& script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(platform::wideFromUtf8(script)));
    app.run();
  };
  run(GetParam());
  const std::string plain = test::notationOf(database());
  ASSERT_NE(plain, "");
  run("ERASE ALL\n\nUCS 3 100,50,20 104,53,20 98,52,21\nPLAN\n\n");
  const KvGeMatrix3d back = kvedUserToWorld(&database()).inverse();
  run(GetParam());
  EXPECT_NE(test::notationOf(database()), plain);
  run("UCS W\n");
  const auto* space = KvDbBlockTableRecord::cast(database().modelSpaceId().stub()->object);
  for (KvDbObjectId id : space->entities()) change(id, [&](KvDbEntity& entity) { entity.transformBy(back); });
  std::string brought = test::notationOf(database());
  // Rounding may leave an angle just below a whole turn.
  if (const auto at = brought.find(" 360.."); at != std::string::npos) brought.replace(at, 6, " 0..");
  EXPECT_EQ(brought, plain) << platform::utf8From(shown);
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, TurnedTest,
    testing::Values(
        "PLINE 0,0 10,0 A 10,10 C\n", "RECTANG 1,1 4,3\n", "ELLIPSE 0,0 10,0 2\n",
        "SPLINE 0,0 5,5 9,1\n\n\n\n", "SOLID 0,0 1,0 0,1 1,1\n\n", "TEXT 1,1 2 30 words\n\n",
        "LINE 0,0 10,0\n\nLINE 0,0 0,10\n\nFILLET R 2\nFILLET 8,0 0,8\n",
        "LINE 0,0 10,0\n\nOFFSET 2 5,0 5,1\n\n", "CIRCLE 5,5 2\nARRAY L\n\nP 0,0 4 360 Y\n",
        "LINE 0,0 4,0\n\nMIRROR L\n\n5,0 5,1 N\n",
        "ARC 0,0 5,5 10,0\nARC C 20,0 25,0 A 90\nARC 30,0 E 40,0 R 6\n",
        "CIRCLE 2P 0,0 10,0\nCIRCLE 3P 20,0 25,5 30,0\n",
        "POLYGON 5 0,0 C 4\nDONUT 1 3 20,0\n\nTRACE 1 0,30 9,30 9,40\n\n",
        "RAY 0,0 3,1\n\nXLINE H 0,5\n\nXLINE A 30 0,9\n\n", "POINT 3,4\nCOPY L\n\nD 2,7\nMOVE L\n\nD 1,1\n",
        "LINE 0,0 4,0\n\nROTATE L\n\n1,0 30\nSCALE L\n\n1,0 3\n", "LINE 0,0 4,0\n\nROTATE L\n\n0,0 R 0 60\n",
        "POINT 0,0\nARRAY L\n\nR 2 3 10 5\n",
        "LINE 0,0 10,0\n\nPLINE 0,5 10,5 12,6\n\nSTRETCH C 20,-5 9,9\n\n0,0 5,0\n",
        "ARC 5,0 0,5 -5,0\nSTRETCH C 4,-1 6,1\n\n0,0 2,0\n",
        "LINE 0,0 10,0\n\nLINE 5,-5 5,5\n\nTRIM\n\n9,0\n\n",
        "LINE 0,0 10,0\n\nLINE 5,-5 5,5\n\nTRIM 5,4\n\nF 8,-1 8,3\n\n\n",
        "LINE 0,0 5,0\n\nLINE 10,-5 10,5\n\nEXTEND\n\n4,0\n\n",
        "LINE 0,0 10,0\n\nBREAK 3,0 7,0\nCIRCLE 30,0 5\nBREAK 35,0 30,5\n",
        "LINE 0,0 9,0\n\nLINE 0,0 0,9\n\nCHAMFER D 2 3 8,0 0,8\n",
        "CIRCLE 0,0 5\nOFFSET 2 5,0 9,0\n\nPLINE 20,0 30,0 A 30,9\n\nOFFSET 1 25,0 25,3\n\n",
        "LINE 0,0 9,0\n\nLENGTHEN DE 5 8,0\n\nDIVIDE 4,0 3\nMEASURE 1,0 4\n",
        "LINE 0,0 9,0\n\nALIGN L\n\n0,0 5,5 9,0 5,25\n\nY\n", "LINE 0,0 9,0\n\nCHANGE L\n\n12,3\n",
        "LINE 0,0 4,0\n\nARC 4,0 6,2 8,0\nJOIN 1,0 6,2\n\n",
        "LINE 0,0 4,0\n\nPEDIT 1,0 Y E M 1,1 I 2,3 X W 1\n\n", "RECTANG 0,0 9,5\nPEDIT 4,0 E N M 12,1 X\n\n",
        "LINE -5,0 15,0\n\nLINE -5,9 15,9\n\nLINE 0,-5 0,15\n\nLINE 9,-5 9,15\n\nBOUNDARY 4,4\n\n",
        "LINE 0,0 20,0\n\nLINE 0,0 0,20\n\nCIRCLE T 9,0 0,9 3\n", "REVCLOUD A 10 0,0 10,10\n",
        "3DFACE 0,0 10,0 10,10 0,10,3\n\n", "MTEXT 0,10 H 2 J MC 20,0 one\n\n",
        "TEXT J F 0,0 10,0 2 words\n\nTEXT J MC 0,9 2 10 mid\n\n",
        "CIRCLE 0,0 2\nBLOCK B 0,0 L\n\nINSERT B 5,5 2 2 30\nEXPLODE L\n\nPURGE B B N\n",
        "MLINE J T S 2 0,0 10,0 10,9\n\nEXPLODE L\n\n", "DIMCEN 2\nCIRCLE 5,5 9\nDIMCENTER 14,5\n"));

}  // namespace
