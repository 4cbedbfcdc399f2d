// The module's start, per-drawing and stop sequences, its command table, the running commands, and the About
// box.
#include <gtest/gtest.h>

#include "host/app/hostapp.h"
#include "host/base/wcmatch.h"
#include "host/database/symboltable.h"
#include "host/editor/prompts.h"
#include "module/core/app_names.h"
#include "module/core/cmd_names.h"
#include "module/core/commands.h"
#include "module/core/entry.h"
#include "module/core/module_resources.h"
#include "module/core/paths.h"
#include "platform/files/files.h"
#include "platform/ui/scripted_ui.h"
#include "siblings/resources/mekres.h"
#include "tests/support/print.h"
#include "tests/support/temporary_tree.h"

namespace {

CString& seen() {
  static CString text;
  return text;
}

class LifecycleTest : public testing::Test {
 protected:
  LifecycleTest() : ui([](const std::string& what) { ADD_FAILURE() << what; }), app(options()) {
    app.environment().userInterface = &ui;
    app.newDocument();
    seen().Empty();
  }
  ~LifecycleTest() override { kvrxEntryPoint(2, nullptr); }

  KvHostOptions options() {
    KvHostOptions result;
    result.environment = test::environmentIn(folder.path());
    result.output = [this](const CString& text) { shown += text; };
    return result;
  }
  KvDbDatabase& drawing() { return *app.documents().curDocument()->database(); }
  int applicationCount() {
    KvDbRegAppTable* table = nullptr;
    EXPECT_EQ(drawing().getRegAppTable(table, KvDb::kForRead), Kvad::eOk);
    const int count = table->records().length();
    table->close();
    return count;
  }
  const KvEdCommand* command(const wchar_t* name) { return app.editor().commands().lookupCmd(name); }
  KvEdOutcome run(const wchar_t* name, const wchar_t* answers = L"") {
    app.editor().pushSource(std::make_unique<KvEdScriptSource>(CString(answers)));
    return app.editor().runCommand(name);
  }

  test::TemporaryFolder folder;
  CString shown;
  platform::ScriptedUi ui;
  KvHostApp app;
};

TEST_F(LifecycleTest, TransparentPrefixes) {
  struct Case {
    const wchar_t *primary, *name;
    int flags;
  };
  const Case cases[] = {{L"'_X", L"X", 1},
                        {L"'_", L"'_", 0},
                        {L"&apos;_Line", L"Line", 1},
                        {L"&APOS;_", L"&APOS;_", 0},
                        {L"'X", L"'X", 0},
                        {L"X", L"X", 0},
                        {L"", L"", 0},
                        {L"'_'_X", L"'_X", 1}};
  for (const Case& c : cases) {
    int flags = -1;
    EXPECT_EQ(mek::withoutTransparentPrefix(c.primary, flags), c.name);
    EXPECT_EQ(flags, c.flags) << platform::utf8From(c.primary);
  }
}

TEST_F(LifecycleTest, CommandsComeFromTheLanguageTable) {
  ImCommandTable& table = *g_pIAecLangSwitch->m_mapGroups[L"init"];
  ImCommandRecord* const about = table[L"QX_ABOUT"];
  ImCommandRecord* const parts = table[L"PARTONLINE"];
  ImCommandRecord changed{L"&APOS;_MyAbout", L"'_Second"};
  table[L"QX_ABOUT"] = &changed;
  table[L"PARTONLINE"] = nullptr;
  EXPECT_EQ(kvrxEntryPoint(1, nullptr), 0);
  table[L"QX_ABOUT"] = about;
  table[L"PARTONLINE"] = parts;

  ASSERT_NE(command(L"MYABOUT"), nullptr);
  EXPECT_EQ(command(L"MYABOUT")->commandFlags(), 1);
  EXPECT_EQ(command(L"MYABOUT")->groupName(), L"INIT");
  ASSERT_NE(command(L"'_Second"), nullptr);  // the secondary name is taken as it stands
  EXPECT_EQ(command(L"'_Second")->commandFlags(), 1);
  EXPECT_EQ(command(L"PARTONLINE"), nullptr);
  ASSERT_NE(command(L"IMINCREASEBACKUP"), nullptr);
  EXPECT_EQ(IM_CmdNamesFlag(L"myabout"), 1);
  EXPECT_EQ(IM_CmdNamesFlag(L"IM_RESXML"), 0);
  EXPECT_EQ(IM_CmdNamesFlag(L"NOSUCH"), 0);
  kvrxEntryPoint(2, nullptr);
  EXPECT_EQ(command(L"MYABOUT"), nullptr);
}

TEST_F(LifecycleTest, NoTableNoCommands) {
  ImLangSwitchManager* const manager = g_pIAecLangSwitch;
  g_pIAecLangSwitch = nullptr;
  EXPECT_EQ(kvrxEntryPoint(1, nullptr), 0);
  g_pIAecLangSwitch = manager;
  EXPECT_EQ(command(L"QX_ABOUT"), nullptr);
  EXPECT_EQ(shown, L"");
}

TEST_F(LifecycleTest, StartQuietsPromptsOnlyWhereTheTypeFits) {
  kvrxEntryPoint(1, nullptr);
  KvEdVarValue value;
  app.editor().variables().get(L"EXPERT", value);
  EXPECT_EQ(std::get<int>(value), 5);
  kvrxEntryPoint(2, nullptr);
  app.editor().variables().get(L"EXPERT", value);
  EXPECT_EQ(std::get<int>(value), 5);  // stays until the host ends

  KvEdVariable real;
  real.name = L"EXPERT";
  real.type = RTREAL;
  real.value = 0.0;
  app.editor().variables().define(real);
  kvrxEntryPoint(1, nullptr);
  app.editor().variables().get(L"EXPERT", value);
  EXPECT_EQ(std::get<double>(value), 0.0);
  EXPECT_TRUE(platform::isFolder(app.environment().settingsRoot / "Korvm" / "MCADSetting" / "pro"));
}

TEST_F(LifecycleTest, DrawingGetsTheNamesWithoutATrace) {
  const int before = applicationCount();
  ASSERT_EQ(kvdbRegApp(L"qx_superpart"), RTNORM);  // there already, in another case
  drawing().noteModified();
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(kvrxEntryPoint(3, nullptr), 0);
    EXPECT_EQ(applicationCount(), before + 50);
    EXPECT_EQ(drawing().modifiedWord(), 0);
    EXPECT_TRUE(drawing().undoRecording());
    EXPECT_EQ(drawing().openCount(), 0);
  }
  EXPECT_EQ(shown.Find(IM_GetStringFromRc(1000, 256)), 0);
  for (unsigned int message : {0u, 4u, 99u}) EXPECT_EQ(kvrxEntryPoint(message, nullptr), 0);
  EXPECT_EQ(command(L"QX_ABOUT"), nullptr);
}

TEST_F(LifecycleTest, OneCommandIsOneStep) {
  app.editor().commands().addCommand(L"T", L"REGISTER", L"REGISTER", 0, [] {
    kvdbRegApp(L"STEP ONE");
    kvedCommandS(RTSTR, L"INNER", RTNONE);
  });
  app.editor().commands().addCommand(L"T", L"INNER", L"INNER", 0, [] { kvdbRegApp(L"STEP TWO"); });
  kvrxEntryPoint(3, nullptr);
  KvDbUndoRecorder& undo = drawing().undoRecorder();
  EXPECT_EQ(undo.undoCount(), 0);  // the names of the product left no step
  const int before = applicationCount();
  run(L"REGISTER");
  EXPECT_EQ(undo.undoCount(), 1);
  EXPECT_EQ(applicationCount(), before + 2);
  EXPECT_TRUE(undo.undo());
  EXPECT_EQ(applicationCount(), before);
  EXPECT_TRUE(undo.redo());
  EXPECT_EQ(applicationCount(), before + 2);
  EXPECT_EQ(drawing().openCount(), 0);
}

TEST_F(LifecycleTest, ApplicationNames) {
  EXPECT_EQ(IM_GetAppName(0, 2), L"");
  EXPECT_EQ(IM_GetAppName(51, 2), L"");
  EXPECT_EQ(IM_GetAppName(-1, 2), L"");
  EXPECT_EQ(IM_GetAppName(19, 2), L"HRA");
  EXPECT_EQ(IM_GetAppName(50, 3), L"GENIUS_GENBHRL_14");
  const int before = applicationCount();
  EXPECT_EQ(IM_GetAppName(46, 1), L"GENLAYCOLOR");
  EXPECT_EQ(applicationCount(), before + 1);
  app.documents().close(app.documents().curDocument());
  EXPECT_EQ(IM_GetAppName(46, 0), L"");
  IM_SetDbModZero();  // no drawing: nothing happens
  app.newDocument();
}

TEST_F(LifecycleTest, RunningCommands) {
  EXPECT_EQ(IM_CmdNamesMatch(L"LINE", 0, L"LINEX"), 1);
  EXPECT_EQ(IM_CmdNamesMatch(L"LINE", 1, L"LINEX"), 0);
  EXPECT_EQ(IM_CmdNamesMatch(L"LINEX", 0, L"LINE"), 0);
  EXPECT_EQ(IM_CmdNamesMatch(L"line", 1, L"LINE"), 1);
  EXPECT_EQ(IM_CmdNamesRunning(), 0);
  EXPECT_EQ(IM_CmdNamesEmbedded(L"X"), 0);

  auto& commands = app.editor().commands();
  commands.addCommand(L"T", L"INNER", L"INNER", 0, [] {
    seen() += IM_CmdNamesEmbedded(L"inner") ? L"embedded;" : L"alone;";
    CString text;
    for (const wchar_t* prompt : {L"first", L"second"})
      if (kvedGetString(0, prompt, text) == RTNORM) seen() += text + L";";
  });
  commands.addCommand(L"T", L"OUTER", L"OUTER", 0, [] {
    seen() += IM_CmdNamesEmbedded(L"OUTER") ? L"embedded;" : L"alone;";
    seen() += IM_EmbeddedInteractionCommand(L"inner") ? L"done;" : L"refused;";
    seen() += IM_CmdNamesGet() + L";";
    seen() += IM_EmbeddedInteractionCommand(L"nosuch") ? L"done;" : L"refused;";
  });
  run(L"OUTER", L"one\ntwo\n");
  EXPECT_EQ(seen(), L"alone;embedded;one;two;done;OUTER;refused;");
  seen().Empty();
  run(L"INNER", L"a\nb\n");
  EXPECT_EQ(seen(), L"alone;a;b;");
  seen().Empty();
  run(L"OUTER", L"one\n");  // the input ends inside the inner command
  EXPECT_EQ(seen(), L"alone;embedded;one;refused;OUTER;refused;");
}

TEST_F(LifecycleTest, PartsPortalAndCommandsOfOtherBuilds) {
  kvrxEntryPoint(1, nullptr);
  ui.expectOpen(L"https://parts.korvane.example/");
  EXPECT_EQ(run(L"PARTONLINE"), KvEdOutcome::Done);
  EXPECT_EQ(shown.Find(IM_GetStringFromRc(1270, 256)), -1);
  ui.expectOpen(L"https://parts.korvane.example/", 32);
  run(L"PARTONLINE");
  EXPECT_GE(shown.Find(IM_GetStringFromRc(1270, 256)), 0);
  for (const wchar_t* name : {L"IM_RESXML", L"IM_CUITRANS", L"IMINCREASEBACKUP"}) {
    shown.Empty();
    run(name);
    EXPECT_GE(shown.Find(IM_GetStringFromRc(9001, 256)), 0);
  }
}

class AboutTest : public LifecycleTest {
 protected:
  ~AboutTest() override {
    CString root;
    IM_GetSysPath(root);
    platform::deleteFile(IM_GetSystemSettingXML());
    platform::deleteTree(root + L"\\Common");
  }
  /// The texts of the six lines, the title and the picture of an About box made with these files.
  CString aboutBox(const char* startup, const char* ini) {
    CString root, text;
    IM_GetSysPath(root);
    platform::writeFile(IM_GetSystemSettingXML(), startup);
    platform::createFolder(root + L"\\Common");
    platform::writeFile(root + L"\\Common\\IAec.ini", ini);
    ui.expectDialog(5500, [&](platform::Dialog& dialog) {
      text = dialog.title();
      for (int id = 5510; id <= 5515; ++id) text += L"|" + dialog.getItemText(id);
      text += L"|" + platform::wideFromUtf8(dialog.control(5523)->picture.filename().string());
      EXPECT_EQ(IcUtPushResource::current(), mek::moduleInstance());
      dialog.userPress(1);
    });
    mek::aboutCommand();
    EXPECT_EQ(IcUtPushResource::current(), nullptr);
    return text;
  }
};

TEST_F(AboutTest, LinesTitleAndPicture) {
  EXPECT_EQ(
      aboutBox("<StartupInfor><About><Title>T</Title></About></StartupInfor>", "[Product]\r\nSubVer=7\r\n"),
      L"T||BUILD 7|||||5530.png");
  EXPECT_EQ(aboutBox("<StartupInfor><About><Product>P</Product><Line1>1</Line1><Line2>2</Line2><Line4>4</"
                     "Line4></About></StartupInfor>",
                     ""),
            L"|P|1|2||||5530.png");
  EXPECT_EQ(aboutBox("<StartupInfor><About><Line1>1</Line1><Line2>2</Line2><Line3>3</Line3><Line4>4</Line4></"
                     "About></StartupInfor>",
                     "[Product]\r\nSubVer=9\r\n"),
            L"||1|2|3|4|BUILD 9|5530.png");
  g_eProductType = IM_PDT_OEM1;
  EXPECT_EQ(aboutBox("", "").Right(8), L"5529.png");
  g_eProductType = static_cast<IM_PDTID>(9);
  EXPECT_EQ(aboutBox("", "").Right(2), L"||");
  g_eProductType = IM_PDT_KORVANE;
}

}  // namespace
