// What holds for every command of the table: nonsense ends well, steps are taken back to the byte, help and
// completion know them, the documents are current.
#include <filesystem>
#include <fstream>

#include "host/commands/command_table.h"
#include "host/commands/completion.h"
#include "host/entities/dimension.h"
#include "host/entities/hatch.h"
#include "host/entities/leader.h"
#include "host/entities/tolerance.h"
#include "host/entities/viewport.h"
#include "host/io/drawing_file.h"
#include "tests/editor/editor_host.h"
#include "tests/support/notation.h"

namespace {

class AllCommandsTest : public test::EditorHost {
 protected:
  void run(const CString& script) {
    editor().pushSource(std::make_unique<KvEdScriptSource>(script));
    app.run();
  }
  void fill() {
    ASSERT_EQ(test::addNotation(database(), R"(line 0,0 10,0
                                               line 0,0 0,10
                                               circle 5,5 r3
                                               arc 20,0 r5 0..90
                                               pline 30,0 40,0 b1 40,10 closed
                                               text 0,20 h2.5 "words"
                                               point 7,7 layer=LOCKED)"),
              "");
    run(L"LAYER LO LOCKED\n\nBLOCK B 0,0 L\n\n");
  }
};

/// Keywords of a prompt's brackets in a row of the table.
std::vector<CString> keywordsOf(const KvCommandRow& row, const KvEdEditor& editor) {
  std::vector<CString> words;
  const CString prompts(row.prompts);
  for (int from = 0; from >= 0 && from < prompts.GetLength();) {
    int end = prompts.Find(L"\n", from);
    if (end < 0) end = prompts.GetLength();
    for (const CString& word : kvcmdCompletions(editor, prompts.Mid(from, end - from), L""))
      words.push_back(word);
    from = end + 1;
  }
  return words;
}

constexpr const wchar_t* kNonsense[] = {
    L"\n1e300,1e300\nnan,nan\n@1e99<1e99\n-1\n0\n\n2147483648\nxyzzy\n*\n?\n\n\n\n\n\n",
    L"0,0\n0,0\n0,0\n0,0\n\n0,0\n\n0\n0,0\n\n\n\n\n",
    L"ALL\n\n0,0\n1,1\n2\n3\nY\n\n\n\n\n\n\n",
    L"5,2\n8,8\n1e99\n-1e99\n1e-300\n\n\n\n\n\n",
    L"L\n\nL\nL\n\nP\n\n(\n)\n\"\n'\n;\n\\\n\n\n\n\n",
    L"B\n0,0\n\n\n\n\n\n\n",
};

TEST_F(AllCommandsTest, NonsenseAtEveryPromptEndsWell) {
  const auto home = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  std::size_t runs = 0;
  for (const KvCommandRow* row : kvcmdRows()) {
    std::vector<CString> beginnings = {L""};
    for (const CString& word : keywordsOf(*row, editor())) beginnings.push_back(word + L"\n");
    for (const CString& beginning : beginnings)
      for (const wchar_t* nonsense : kNonsense) {
        while (app.documents().curDocument()) app.documents().close(app.documents().curDocument());
        app.newDocument();
        fill();
        shown.Empty();
        editor().pushSource(std::make_unique<KvEdScriptSource>(beginning + nonsense));
        editor().runCommand(row->name);
        editor().dropInput();
        ++runs;
        EXPECT_FALSE(editor().isCommandRunning());
        if (!app.documents().curDocument()) app.newDocument();
        EXPECT_EQ(database().openCount(), 0)
            << platform::utf8From(CString(row->name) + L" " + beginning + nonsense);
        EXPECT_EQ(shown.Find(L"unexpectedly"), -1) << platform::utf8From(shown);
      }
  }
  std::filesystem::current_path(home);
  EXPECT_GT(runs, 2 * kvcmdRows().size() * std::size(kNonsense));
}

TEST_F(AllCommandsTest, DocumentsAreCurrent) {
  std::ifstream file(KORVANE_DOCS "/commands.md");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(page == platform::utf8From(kvcmdDocument()))
      << "docs/commands.md: korvane help --markdown makes it";
}

TEST_F(AllCommandsTest, CompletionKnowsNamesAndKeywords) {
  const auto words = [&](const wchar_t* prompt, const wchar_t* start) {
    return kvcmdCompletions(editor(), prompt, start);
  };
  using Words = std::vector<CString>;
  EXPECT_EQ(words(L"Command: ", L"rect"), (Words{L"RECTANG", L"RECTANGLE"}));
  EXPECT_EQ(words(L"Command: ", L"LTSC"), (Words{L"LTSCALE"}));
  EXPECT_EQ(words(L"Command: ", L"pli"), (Words{L"PLINE"}));  // variables begin so too
  const wchar_t* prompt = L"\nSpecify endpoint of arc or [Angle/CEnter/CLose/Second pt/Undo]: ";
  EXPECT_EQ(words(prompt, L"c"), (Words{L"CEnter", L"CLose"}));
  EXPECT_EQ(words(prompt, L"S"), (Words{L"Second"}));
  EXPECT_EQ(words(prompt, L"").size(), 5U);
  EXPECT_TRUE(words(L"\nSpecify next point: ", L"").empty());
  EXPECT_EQ(kvcmdCommonStart(words(L"Command: ", L"rect")), L"RECTANG");
  EXPECT_EQ(kvcmdCommonStart({}), L"");
}

TEST_F(AllCommandsTest, VariablesByTheirNames) {
  run(L"LTSCALE 2.5\nSETVAR LUPREC 3\nFILLETRAD\n\nORTHOMODE ON\nUSERS1 some words\n");
  EXPECT_EQ(database().ltscale(), 2.5);
  KvEdVarValue value;
  editor().variables().get(L"USERS1", value);
  EXPECT_EQ(std::get<CString>(value), L"some words");
  editor().variables().get(L"ORTHOMODE", value);
  EXPECT_EQ(std::get<int>(value), 1);
  shown.Empty();
  run(L"LUPREC 99\n");
  EXPECT_GE(shown.Find(L"from 0 to 8"), 0) << platform::utf8From(shown);
  shown.Empty();
  run(L"CDATE\nNOSUCH\n");
  EXPECT_GE(shown.Find(L"read only"), 0);
  EXPECT_GE(shown.Find(L"Unknown command \"NOSUCH\""), 0);
}

TEST_F(AllCommandsTest, NewDimensionsFollowStyleAndVariables) {
  const auto height = [&] {
    run(L"DIMALIGNED 0,0 30,40 0,50\n");
    const auto* space = KvDbBlockTableRecord::cast(database().modelSpaceId().stub()->object);
    const KvDbObjectIdArray ids = space->entities();
    const auto* made = KvDbDimension::cast(ids[ids.length() - 1].stub()->object);
    return std::pair(made->dimVars().real(KvDbDimVar::Txt), kvdbRecordName(made->dimensionStyle()));
  };
  const double standard = height().first;
  run(L"DIMTXT 7\n");
  EXPECT_EQ(height(), std::pair(7.0, CString(L"Standard")));
  run(L"DIMSTYLE S LARGE\nDIMSTYLE R Standard\n");
  EXPECT_EQ(height(), std::pair(standard, CString(L"Standard")));
  run(L"DIMSTYLE R LARGE\n");
  EXPECT_EQ(height(), std::pair(7.0, CString(L"LARGE")));
}

TEST_F(AllCommandsTest, DrawingsAreSavedOpenedAndLeft) {
  const CString file = platform::wideFromUtf8((folder.path() / "a b.dxf").string());
  fill();
  const std::string content = test::notationOf(database());
  run(L"SAVEAS " + file + L"\n");
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "a b.dxf"));
  EXPECT_EQ(database().modifiedWord(), 0);
  run(L"ERASE ALL\n\nSAVEAS " + file + L"\n");  // its own name: no question
  run(L"U\nU\nSAVE\n");
  run(L"NEW\n");
  EXPECT_EQ(app.documents().documentCount(), 2);
  EXPECT_EQ(test::notationOf(database()), "");
  run(L"CLOSE\nLINE 0,0 1,1\n\nCLOSE N\nCLOSE Y\n");
  EXPECT_EQ(app.documents().documentCount(), 0);
  shown.Empty();
  run(L"OPEN nowhere.dxf\nPOINT\nSAVE\n");  // without a drawing nothing is done, and said so
  EXPECT_GE(shown.Find(L"nowhere.dxf"), 0);
  EXPECT_GE(shown.Find(L"There is no drawing"), 0) << platform::utf8From(shown);
  run(L"OPEN " + file + L"\n");
  EXPECT_EQ(test::notationOf(database()), content);
  run(L"LINE 0,0 1,1\n\nQUIT N\nPOINT 1,1\nQUIT Y\nPOINT 2,2\n");
  EXPECT_EQ(test::notationOf(database()), content + "line 0,0 1,1\npoint 1,1\n");
}

TEST_F(AllCommandsTest, NotesAndFramesFollowTheDimensionVariables) {
  run(L"DIMTXT 7\nDIMASZ 4\nQLEADER 0,0 20,20\n\n0 note\n\nTOLERANCE P %%c0.1\n\nA\n\n\n50,50\n");
  const auto* space = KvDbBlockTableRecord::cast(database().modelSpaceId().stub()->object);
  const KvDbObjectIdArray ids = space->entities();
  ASSERT_EQ(ids.length(), 3);
  const auto* leader = KvDbLeader::cast(ids[0].stub()->object);
  const auto* frame = KvDbFcf::cast(ids[2].stub()->object);
  ASSERT_TRUE(leader && frame);
  EXPECT_EQ(kvdbRecordName(leader->dimensionStyle()), L"Standard");
  EXPECT_EQ(leader->dimVars().real(KvDbDimVar::Asz), 4);
  EXPECT_EQ(frame->dimVars().real(KvDbDimVar::Txt), 7);
  ASSERT_EQ(frame->cells().size(), 1U);
  EXPECT_EQ(frame->cells()[0].size(), 3U);  // symbol, tolerance, datum
}

TEST_F(AllCommandsTest, HatchesRoundPointsFollowWholeOutlines) {
  run(L"CIRCLE 0,0 10\nRECTANG -2,-2 2,2\nLINE 30,-50 30,50\n\nBHATCH 5,0\n\n");
  const auto last = [&] {
    const auto* space = KvDbBlockTableRecord::cast(database().modelSpaceId().stub()->object);
    const KvDbObjectIdArray ids = space->entities();
    return KvDbHatch::cast(ids[ids.length() - 1].stub()->object);
  };
  const KvDbHatch* hatch = last();
  ASSERT_TRUE(hatch);
  double area = 0;
  EXPECT_EQ(hatch->numLoops(), 2);
  EXPECT_EQ(hatch->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 100 * M_PI - 16, 1e-9);
  // Cut by a line it is half, and an ellipse bounds as well as an arc.
  run(L"ERASE L\n\nLINE -20,0 20,0\n\nBHATCH 0,5\n\n");
  ASSERT_TRUE(last());
  EXPECT_EQ(last()->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 50 * M_PI - 8, 1e-9);
  EXPECT_FALSE(last()->associative());
  run(L"ELLIPSE C 100,0 120,0 10\nBHATCH 100,5\n\n");
  EXPECT_EQ(last()->getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 200 * M_PI, 1e-6);
}

TEST_F(AllCommandsTest, PlotsViewportsAndOpenDrawings) {
  const CString picture = platform::wideFromUtf8((folder.path() / "out.svg").string());
  run(L"CIRCLE 0,0 10\nLAYOUT N Sheet\nLAYOUT S Sheet\nMVIEW 10,10 110,90 1:2\n");
  const auto* sheet = KvDbBlockTableRecord::cast(database().currentSpaceId().stub()->object);
  const KvDbObjectIdArray ids = sheet->entities();
  const auto* viewport = KvDbViewport::cast(ids[ids.length() - 1].stub()->object);
  ASSERT_TRUE(viewport);
  EXPECT_EQ(viewport->customScale(), 0.5);
  EXPECT_EQ(viewport->centerPoint(), KvGePoint3d(60, 50, 0));
  run(L"PLOT\n\n\n\n\n\n" + picture + L"\n");
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "out.svg")) << platform::utf8From(shown);
  run(L"PLOT Model\nnonsense A4 L W -20,-20 20,20 1:0\n1:1 Y " + picture + L"\n\n");
  EXPECT_GE(shown.Find(L"That is no paper"), 0);
  EXPECT_GE(shown.Find(L"That is no scale"), 0);
  run(L"NEW\nPOINT 1,1\nDRAWINGS 1\nDRAWINGS 9\n");
  EXPECT_GE(shown.Find(L"There is no such drawing"), 0);
  run(L"LAYOUT S Model\n");
  EXPECT_EQ(test::notationOf(database()), "circle 0,0 r10\n");
}

TEST_F(AllCommandsTest, ScriptsRunOneAnotherToAnEnd) {
  std::ofstream(folder.path() / "in.scr") << "POINT 2,2\n";
  std::ofstream(folder.path() / "self.scr")
      << "POINT 5,5\nSCRIPT " << (folder.path() / "self.scr").string() << "\n";
  const CString inner = platform::wideFromUtf8((folder.path() / "in").string());
  const CString self = platform::wideFromUtf8((folder.path() / "self.scr").string());
  run(L"POINT 1,1\nSCRIPT " + inner + L"\nPOINT 3,3\n");
  EXPECT_EQ(test::notationOf(database()), "point 1,1\npoint 2,2\npoint 3,3\n");
  run(L"SCRIPT " + self + L"\n");
  EXPECT_GE(shown.Find(L"nested too deeply"), 0);
}

}  // namespace
