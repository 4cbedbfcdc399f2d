// A script of more than a hundred different commands: each step taken back gives the drawing before it, to
// the byte, and brought again the one behind it.
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "host/commands/command_table.h"
#include "host/io/drawing_file.h"
#include "tests/commands/known_script.h"
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

TEST_F(EveryStepTest, AHundredCommandsAreTakenBackAndBroughtAgainToTheByte) {
  const std::string first = saved(L"first.dxf");
  std::map<int, std::string> states = {{0, present()}};  // by the number of steps
  std::map<int, CString> lines;
  std::set<CString> names, withoutStep;
  ASSERT_EQ(undo().undoCount(), 0);
  for (const wchar_t* line : test::kKnownScript) {
    const CString name = test::nameIn(line);
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
