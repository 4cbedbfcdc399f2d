// A command that is broken off at any of its prompts leaves the drawing as it was, to the byte; those that
// draw or change one thing after another keep what was done, as one step.
#include <set>

#include "host/commands/command_table.h"
#include "host/io/drawing_file.h"
#include "tests/commands/known_script.h"
#include "tests/editor/editor_host.h"

namespace {

class CancelTest : public test::EditorHost {
 protected:
  CancelTest() {
    editor().commands().addCommand(L"TEST", L"BEHIND", L"BEHIND", 0, [] { ++behind(); });
  }
  /// How often the command ran that stands behind a broken one.
  static int& behind() {
    static int count;
    return count;
  }
  void run(const CString& script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(script));
    app.run();
  }
  std::string present() { return kvdbFormatDrawing(database()); }
};

/// Ends of the beginnings of a line, behind each answer but the last.
std::vector<int> breaksOf(const CString& line) {
  std::vector<int> ends;
  for (int i = 0; i + 1 < line.GetLength(); ++i)
    if (line.GetAt(i) == L' ' || line.GetAt(i) == L'\n') ends.push_back(i + 1);
  return ends;
}

TEST_F(CancelTest, AtEveryPromptOfEveryCommand) {
  std::set<CString> keeping;
  int broken = 0;
  for (const wchar_t* text : test::kKnownScript) {
    const CString line(text), name = test::nameIn(line);
    for (int end : breaksOf(line)) {
      const std::string before = present();
      const int steps = database().undoRecorder().undoCount();
      const std::string told = "[" + platform::utf8From(line.Left(end)) + "]";
      editor().pushSource(std::make_unique<KvEdScriptSource>(line.Left(end - 1) + L"\n^C\nBEHIND\n"));
      behind() = 0;
      app.run();
      EXPECT_EQ(behind(), 1) << told << ": goes on behind a cancel";
      ASSERT_FALSE(editor().isCommandRunning()) << told;
      ASSERT_EQ(database().openCount(), 0) << told;
      ++broken;
      if (present() == before) {
        EXPECT_EQ(database().undoRecorder().undoCount(), steps) << told;
        continue;
      }
      keeping.insert(name);
      EXPECT_EQ(database().undoRecorder().undoCount(), steps + 1) << told;
      run(L"U\n");
      ASSERT_TRUE(present() == before) << told;
    }
    run(line);
  }
  EXPECT_GT(broken, 400);
  // Those that draw or change one thing after another, and those whose setting was made already.
  const std::set<CString> expected = {
      L"3DFACE",   L"3DPOLY",   L"CHAMFER", L"COPY",   L"DIMBASELINE", L"DIMCONTINUE", L"DONUT",
      L"EXTEND",   L"LAYFRZ",   L"LAYLCK",  L"LAYOFF", L"LAYULK",      L"LENGTHEN",    L"LINE",
      L"LINETYPE", L"MLINE",    L"OFFSET",  L"PEDIT",  L"PLINE",       L"RAY",         L"SOLID",
      L"TEXT",     L"TEXTEDIT", L"TRACE",   L"TRIM",   L"XLINE"};
  EXPECT_EQ(keeping, expected);
}

}  // namespace
