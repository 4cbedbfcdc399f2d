// A script of more than a hundred different commands: each step taken back gives the drawing before it, to
// the byte, and brought again the one behind it.
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "host/commands/command_table.h"
#include "host/io/drawing_file.h"
#include "tests/editor/editor_host.h"
#include "tests/support/notation.h"

namespace {

class EveryStepTest : public test::EditorHost {
 protected:
  void run(const CString& script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(script));
    app.run();
  }
  KvDbUndoRecorder& undo() { return database().undoRecorder(); }
  std::string present() { return kvdbFormatDrawing(database()); }
  std::string saved(const wchar_t* name) {
    run(L"SAVEAS " + platform::wideFromUtf8((folder.path() / "").string()) + name + L"\n");
    std::ifstream file(folder.path() / platform::utf8From(CString(name)), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

/// Each line of input ends with its own line feed; the first word is the command's name. What follows on one
/// another stands far from everything else, so that picks hit what they mean.
constexpr const wchar_t* kScript[] = {
    // Settings that the rest is drawn with.
    L"UNITS 2 3 1 1 0 N\n",
    L"LIMITS 0,0 594,420\n",
    L"BASE 1,2\n",
    L"SNAP 5\n",
    L"GRID 20\n",
    L"ORTHO OFF\n",
    L"COLOR 3\n",
    L"LWEIGHT 0.5\n",
    L"LTSCALE 0.8\n",
    L"ELEV 0 0\n",
    L"FILL OFF\n",
    L"QTEXT OFF\n",
    L"ATTDISP ON\n",
    L"SETVAR PDSIZE 2\n",
    L"STYLE NOTES txt\n0 0.8 10 N N\n",
    L"LINETYPE S Continuous\n\n",
    L"LAYER M OUTLINE C 1\n\n\n",
    // Drawing.
    L"LINE 0,0 10,0 10,10 C\n",
    L"PLINE 20,0 30,0 A 30,10 W 1 2 L 20,10 C\n",
    L"RECTANG 40,0 50,5\n",
    L"POLYGON 5 70,5 I 5\n",
    L"CIRCLE 90,5 5\n",
    L"ARC 100,0 105,5 110,0\n",
    L"ELLIPSE 120,0 130,0 3\n",
    L"POINT 140,0\n",
    L"RAY 0,-500 1,-500\n\n",
    L"XLINE H 0,-510\n\n",
    L"SPLINE 150,0 155,5 160,0\n\n\n\n",
    L"SOLID 170,0 175,0 170,5 175,5\n\n",
    L"DONUT 1 2 180,0\n\n",
    L"TRACE 1 190,0 200,0 200,10\n\n",
    L"3DFACE 210,0 220,0,5 220,10 210,10\n\n",
    L"3DPOLY 230,0 240,0,5 240,10,9\n\n",
    L"REVCLOUD A 3 250,0 270,20\n",
    L"TEXT 0,30 3 0 words\nmore\n\n",
    L"MTEXT 40,40 80,30 one\ntwo\n\n",
    L"ATTDEF\n\nTAG\nWhat?\nvalue\n140,30 2 0\n",
    L"BLOCK PLATE 140,30 140,30\n\n",
    L"OOPS\n",
    L"INSERT PLATE 160,30 1 1 0\nx\n",
    L"MINSERT PLATE 200,30 1 1 0 2 2 10 10\ny\n",
    // Dimensions.
    L"DIMLINEAR 0,100 10,105 5,95\n",
    L"DIMCONTINUE 25,105\n\n^C\n",
    L"DIMBASELINE 40,105\n\n^C\n",
    L"DIMALIGNED 0,120 10,125 5,130\n",
    L"DIMRADIUS 95,5 99,12\n",
    L"DIMDIAMETER 85,5 80,12\n",
    L"DIMANGULAR\n\n50,100 60,100 50,110 55,105\n",
    L"DIMORDINATE 80,100 80,120\n",
    L"DIMCENTER 90,10\n",
    L"DIMEDIT N about <>\n80,118\n\n",
    L"DIMTEDIT 80,118 A 30\n",
    L"DIMOVERRIDE DIMTXT 4\n\n80,118\n\n",
    L"DIMSTYLE S LARGE\n",
    L"LEADER 100,100 105,105 110,105\n\nnote\n\n",
    L"QLEADER 130,100 135,105\n\n0 note\n\n",
    L"TOLERANCE P %%c0.1\n\nA\n\n\n160,100\n",
    L"OSNAP NONE\n",
    // Changing.
    L"MOVE L\n\n0,0 1,1\n",
    L"COPY 90,10\n\n0,0 0,200\n\n",
    L"ROTATE L\n\n90,200 30\n",
    L"SCALE L\n\n0,200 2\n",
    L"MIRROR L\n\n0,300 1,300 N\n",
    L"ARRAY L\n\nR 2 2 50 50\n",
    L"LINE 300,0 310,0\n\n",
    L"LINE 300,0 300,10\n\n",
    L"FILLET R 2\n",
    L"FILLET 308,0 300,8\n",
    L"LINE 400,0 410,0\n\n",
    L"LINE 400,0 400,10\n\n",
    L"CHAMFER D 1 2\n^C\n",
    L"CHAMFER 408,0 400,8\n",
    L"LINE 500,0 510,0\n\n",
    L"OFFSET 2 505,0 505,5\n\n",
    L"BREAK 504,0 506,0\n",
    L"LINE 520,-5 520,5\n\n",
    L"EXTEND\n\n509,0\n\n",
    L"TRIM\n\n520,4\n\n",
    L"JOIN 502,0 508,0\n\n",
    L"STRETCH C 521,9 518,-9\n\n0,0 3,0\n",
    L"LENGTHEN DE 5 508,2\n\n",
    L"DIVIDE 505,2 4\n",
    L"MEASURE 502,2 3\n",
    L"REVERSE 505,2\n\n",
    L"ALIGN 505,2\n\n500,2 500,12 510,2 500,22\n\nN\n",
    L"PEDIT 300,8 Y W 1\n\n",
    L"CHPROP 5,0\n\nC 3 LA 0\n\n",
    L"CHANGE 5,0\n\nP LT ByBlock\n\n",
    L"MATCHPROP 5,0 10,5\n\n",
    L"EXPLODE 45,0\n\n",
    L"TEXTEDIT 2,31 other\n\n",
    L"ATTEDIT G\n\n\n\nx\nz\n",
    L"JUSTIFYTEXT 2,31\n\nMC\n",
    L"FIND more\nY\nless\nN\n",
    // Areas.
    L"CIRCLE 600,0 10\n",
    L"CIRCLE 608,0 10\n",
    L"REGION 590,0 618,0\n\n",
    L"UNION 590,0 618,0\n\n",
    L"CIRCLE 600,0 4\n",
    L"REGION 604,0\n\n",
    L"SUBTRACT 590,0\n\n604,0\n\n",
    L"CIRCLE 612,0 8\n",
    L"REGION 612,8\n\n",
    L"INTERSECT 590,0 620,0\n\n",
    L"CIRCLE 650,0 10\n",
    L"HATCH ANSI31 1 0 660,0\n\n",
    L"BHATCH 30,5\n\n",
    L"BOUNDARY 650,5\n\n",
    // Records, groups, systems, sheets, views.
    L"GROUP C PARTS 90,10\n\n",
    L"RENAME LA OUTLINE CONTOUR\n",
    L"LAYMCUR 5,0\n",
    L"LAYLCK 90,10\n\n",
    L"LAYULK 90,10\n\n",
    L"LAYFRZ 90,10\n\n",
    L"LAYTHW\n",
    L"LAYOFF 90,10\n\n",
    L"LAYON\n",
    L"LAYISO 90,10\n\n",
    L"LAYUNISO\n",
    L"UCS 5,5\n\n",
    L"UCS S BENCH\n",
    L"UCS W\n",
    L"LAYOUT N Sheet\n",
    L"LAYOUT S Sheet\n",
    L"CIRCLE 50,50 20\n",
    L"MVIEW 100,100 200,180 1:2\n",
    L"LAYOUT S Model\n",
    L"ERASE L\n\n",
    L"SELECT ALL\n\n",
    L"LAYER N SPARE\n\n",
    L"PURGE A * N\n",
    L"ZOOM E\n",
    L"PAN 0,0 10,10\n",
    L"VIEW S DETAIL\n",
    L"VPOINT 1,1,1\n",
    L"PLAN\n\n",
    // What only tells.
    L"DIST 0,0 1,1\n",
    L"ID 1,1\n",
    L"AREA 0,0 1,0 1,1\n\n",
    L"LIST ALL\n\n",
    L"MASSPROP ALL\n\n",
    L"STATUS\n",
    L"TIME\n",
    L"HELP LINE\n",
    L"REGEN\n",
    L"REDRAW\n",
    L"AUDIT N\n",
    L"DELAY 1\n",
};

CString nameIn(const CString& line) {
  int end = 0;
  while (end < line.GetLength() && line.GetAt(end) != L' ' && line.GetAt(end) != L'\n') ++end;
  return line.Left(end);
}

TEST_F(EveryStepTest, AHundredCommandsAreTakenBackAndBroughtAgainToTheByte) {
  const std::string first = saved(L"first.dxf");
  std::map<int, std::string> states = {{0, present()}};  // by the number of steps
  std::map<int, CString> lines;
  std::set<CString> names, withoutStep;
  ASSERT_EQ(undo().undoCount(), 0);
  for (const wchar_t* line : kScript) {
    const CString name = nameIn(line);
    ASSERT_NE(kvcmdFind(name), nullptr) << line;
    const int before = undo().undoCount();
    shown.Empty();
    run(line);
    names.insert(name);
    EXPECT_EQ(shown.Find(L"Unknown command"), -1) << platform::utf8From(CString(line) + L": " + shown);
    EXPECT_EQ(database().openCount(), 0) << platform::utf8From(line);
    if (undo().undoCount() == before) withoutStep.insert(name);
    const bool isOneStep = undo().undoCount() <= before + 1;
    ASSERT_TRUE(isOneStep) << platform::utf8From(line);
    const std::string now = present();
    EXPECT_EQ(now == states[before], undo().undoCount() == before) << platform::utf8From(line);
    states[undo().undoCount()] = now;
    lines[undo().undoCount()] = line;
  }
  EXPECT_GE(names.size(), 100U);
  // Those that tell and set nothing that is saved; every other one has done something.
  const std::set<CString> expected = {L"AREA",  L"AUDIT",  L"DELAY",    L"DIST",  L"HELP",
                                      L"ID",    L"LIST",   L"MASSPROP", L"OSNAP", L"REDRAW",
                                      L"REGEN", L"SELECT", L"STATUS",   L"TIME"};
  EXPECT_EQ(withoutStep, expected);
  const int last = undo().undoCount();
  const std::string lastSaved = saved(L"last.dxf");
  for (int left = last; left > 0; --left) {
    run(L"U\n");
    ASSERT_EQ(undo().undoCount(), left - 1);
    ASSERT_TRUE(present() == states[left - 1]) << "taken back: " << platform::utf8From(lines[left]);
  }
  EXPECT_TRUE(saved(L"back.dxf") == first);
  for (int count = 1; count <= last; ++count) {
    run(L"REDO\n");
    ASSERT_TRUE(present() == states[count]) << "brought again: " << platform::utf8From(lines[count]);
  }
  EXPECT_TRUE(saved(L"again.dxf") == lastSaved);
  run(L"UNDO 1000\n");
  EXPECT_TRUE(saved(L"at once.dxf") == first);
  run(L"MREDO A\n");
  EXPECT_TRUE(saved(L"all again.dxf") == lastSaved);
}

TEST_F(EveryStepTest, GroupsMarksAndLimitsOfUndo) {
  run(L"POINT 1,1\nUNDO BE\nPOINT 2,2\nPOINT 3,3\nMOVE ALL\n\n0,0 5,0\nUNDO E\nPOINT 4,4\n");
  EXPECT_EQ(undo().undoCount(), 3);
  run(L"U\nU\n");
  EXPECT_EQ(test::notationOf(database()), "point 1,1\n");
  run(L"REDO\n");  // the group comes back whole
  EXPECT_EQ(test::notationOf(database()), "point 6,1\npoint 7,2\npoint 8,3\n");
  run(L"UNDO M\nPOINT 9,9\nPOINT 10,10\nUNDO B\n");
  EXPECT_EQ(test::notationOf(database()), "point 6,1\npoint 7,2\npoint 8,3\n");
  // Undoing out of a group that is open ends it; without a mark Back asks.
  run(L"UNDO BE\nPOINT 1,0\nUNDO 2\nUNDO E\nUNDO B N\n");
  EXPECT_GE(shown.Find(L"No group has been begun"), 0);
  EXPECT_EQ(test::notationOf(database()), "point 1,1\n");
  run(L"UNDO B Y\n");
  EXPECT_EQ(test::notationOf(database()), "");
  run(L"UNDO C O\nPOINT 1,1\nPOINT 2,2\nU\nU\n");
  EXPECT_EQ(test::notationOf(database()), "point 1,1\n");
  run(L"UNDO C N\nPOINT 3,3\nU\nUNDO C A\nPOINT 4,4\nU\n");
  EXPECT_EQ(test::notationOf(database()), "point 1,1\npoint 3,3\n");
  run(L"POINT 5,5\nPOINT 6,6\nUNDO 0\n2\nMREDO 1\n");
  EXPECT_EQ(test::notationOf(database()), "point 1,1\npoint 3,3\npoint 5,5\n");
}

}  // namespace
