#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "platform/system/services.h"
#include "platform/text/utf.h"
#include "platform/ui/display_width.h"
#include "platform/ui/render.h"
#include "platform/ui/scripted_ui.h"
#include "platform/ui/terminal_ui.h"
#include "tests/platform/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using platform::Control;
using platform::ControlKind;
using platform::Dialog;
using platform::DialogTemplate;
using platform::ScriptedUi;
using platform::UserAction;
using Kind = ControlKind;

DialogTemplate backupTemplate() {
  return {
      6000,
      L"自动增量备份设置",
      {
          {.kind = Kind::Button, .id = 1, .text = L"启动(&S)", .rect = {{7, 130, 50, 14}}, .isDefault = true},
          {.kind = Kind::Button, .id = 6001, .text = L"停止", .rect = {{60, 130, 50, 14}}, .enabled = false},
          {.kind = Kind::Button, .id = 2, .text = L"关闭", .rect = {{113, 130, 50, 14}}},
          {.kind = Kind::Static, .text = L"备份路径:", .rect = {{7, 9, 40, 8}}},
          {.kind = Kind::Edit,
           .id = 6003,
           .text = L"C:\\backup",
           .rect = {{50, 7, 100, 12}},
           .readOnly = true},
          {.kind = Kind::Button, .id = 6004, .text = L"...", .rect = {{155, 7, 20, 12}}},
          {.kind = Kind::Static, .text = L"时间间隔:", .rect = {{7, 26, 40, 8}}},
          {.kind = Kind::Edit, .id = 6005, .text = L"30", .rect = {{50, 24, 30, 12}}, .digitsOnly = true},
          {.kind = Kind::Spin,
           .id = 6006,
           .rect = {{80, 24, 10, 12}},
           .buddy = 6005,
           .minimum = 1,
           .maximum = 30},
          {.kind = Kind::Static, .text = L"分钟", .rect = {{95, 26, 20, 8}}},
          {.kind = Kind::Check, .id = 6007, .text = L"备份打开的所有文件", .rect = {{7, 45, 150, 10}}},
      },
      214,
      153};
}

/// Records its events as text.
class Recording : public Dialog {
 public:
  explicit Recording(DialogTemplate from) : Dialog(std::move(from)) {}
  std::string log;
  bool closes = true;
  bool busy = false;

  bool isBusy() const override { return busy; }

 protected:
  void onInit() override { log += "init "; }
  void onCommand(int id) override {
    log += std::to_string(id) + (isChecked(id) ? "+ " : " ");
    if (id == 6004) {
      const auto folder = platform::userInterface().chooseFolder(nullptr, L"", L"");
      setItemText(6003, folder.value_or(L"Wrong Path"));
      return;
    }
    Dialog::onCommand(id);
  }
  void onChanged(int id) override { log += "~" + std::to_string(id) + " "; }
  void onClose() override {
    log += "close ";
    if (closes) Dialog::onClose();
  }
  void onTimer(int id) override { log += "t" + std::to_string(id) + " "; }
  void onMessage(unsigned message, std::uintptr_t first, std::intptr_t second) override {
    log += "m" + std::to_string(message) + "," + std::to_string(first) + "," + std::to_string(second) + " ";
    busy = false;
  }
};

TEST(DisplayWidth, WideNarrowAndNone) {
  EXPECT_EQ(platform::displayWidth(L"ab图层ｱＡ─é"), 2 + 4 + 1 + 2 + 1 + 1);
  EXPECT_EQ(platform::displayWidth(L"e\u0301\u200B📐한"), 1 + 2 + 2);
  EXPECT_EQ(platform::printable(L"a\x1b[31m\n\u202Eb"), L"a [31m  b");
  EXPECT_EQ(platform::wrapped(L"ab cd图层e\r\n\nx", 5),
            (std::vector<std::wstring>{L"ab", L"cd图", L"层e", L"", L"x"}));
  EXPECT_EQ(platform::wrapped(L"图", 1), (std::vector<std::wstring>{L"图"}));
}

TEST(Render, DialogByPlace) {
  Dialog dialog(backupTemplate());
  EXPECT_EQ(platform::toUtf8(platform::renderDialog(dialog.state())),
            "┌─ 自动增量备份设置 ─────────────────────┐\n"
            "│ 备份路径:  6003: C:\\backup  6004 [...] │\n"
            "│ 时间间隔:  6005= 30 (1-30)  分钟       │\n"
            "│ 6007 [ ] 备份打开的所有文件            │\n"
            "│ 1 <启动(S)>  (停止)  2 [关闭]          │\n"
            "└────────────────────────────────────────┘\n");
}

TEST(Render, EveryKind) {
  const DialogTemplate all{1,
                           L"",
                           {
                               {.kind = Kind::Picture, .id = 5523, .text = L"logo", .picture = "a/about.png"},
                               {.kind = Kind::Picture, .id = 5524},
                               {.kind = Kind::Static, .id = 5510, .text = L""},
                               {.kind = Kind::Static, .text = L"hidden", .visible = false},
                               {.kind = Kind::Group, .text = L"Files"},
                               {.kind = Kind::List, .id = 10, .selected = {}},
                               {.kind = Kind::Radio, .id = 11, .text = L"a", .checked = true},
                               {.kind = Kind::Radio, .id = 12, .text = L"b", .enabled = false},
                               {.kind = Kind::Static, .text = L"Mode:"},
                               {.kind = Kind::Combo, .id = 13, .text = L"x", .items = {L"x", L"y"}},
                               {.kind = Kind::Spin, .id = 14, .position = 3},
                               {.kind = Kind::Progress, .id = 15, .maximum = 3, .position = 1},
                               {.kind = Kind::Grid,
                                .id = 16,
                                .columns = {L"键", L"v"},
                                .rows = {{L"a", L"图"}, {L"b", L""}},
                                .selected = {1}},
                           }};
  Dialog dialog(all);
  for (int i = 0; i < 22; ++i) dialog.addItem(10, L"f");
  dialog.setSelected(10, {1, 0, 1, 99});
  std::string expected =
      "┌───────────────────────────────────────┐\n"
      "│ {logo: about.png}                     │\n"
      "│                                       │\n"
      "│ ── Files ──                           │\n"
      "│ 10: 22                                │\n"
      "│  *  1  f                              │\n"
      "│  *  2  f                              │\n";
  for (int i = 3; i <= 20; ++i)
    expected += (i < 10 ? "│     " : "│    ") + std::to_string(i) + "  f                              │\n";
  expected +=
      "│        … +2                           │\n"
      "│ 11 (o) a                              │\n"
      "│ ( ) b                                 │\n"
      "│ Mode:  13= x  {x | y}                 │\n"
      "│ 14 3 (0-100)                          │\n"
      "│ [##########--------------------] 33 % │\n"
      "│ 16: 2                                 │\n"
      "│        键 │ v                         │\n"
      "│     1  a  │ 图                        │\n"
      "│  *  2  b  │                           │\n"
      "└───────────────────────────────────────┘\n";
  EXPECT_EQ(platform::toUtf8(platform::renderDialog(dialog.state())), expected);
}

TEST(DialogState, WhatUsersMayDo) {
  DialogTemplate from = backupTemplate();
  from.controls.push_back({.kind = Kind::Radio, .id = 20, .text = L"a", .checked = true, .group = 1});
  from.controls.push_back({.kind = Kind::Radio, .id = 21, .text = L"b", .group = 1});
  from.controls.push_back({.kind = Kind::Radio, .id = 22, .text = L"c", .checked = true, .group = 2});
  from.controls.push_back({.kind = Kind::List, .id = 23, .items = {L"a", L"b", L"c"}});
  from.controls.push_back({.kind = Kind::Combo, .id = 24, .items = {L"x", L"y"}});
  from.controls.push_back({.kind = Kind::Grid, .id = 25, .columns = {L"k", L"v"}, .rows = {{L"a", L""}}});
  Recording dialog(from);
  EXPECT_EQ(dialog.userPress(6007), UserAction::Done);
  EXPECT_EQ(dialog.userPress(6001), UserAction::Disabled);
  EXPECT_EQ(dialog.userPress(99), UserAction::NoControl);
  EXPECT_EQ(dialog.userPress(-1), UserAction::NoControl);
  EXPECT_EQ(dialog.userPress(6003), UserAction::WrongKind);
  EXPECT_EQ(dialog.userType(6003, L"x"), UserAction::Refused) << "read-only";
  EXPECT_EQ(dialog.userType(6005, L"1x"), UserAction::Refused) << "digits only";
  EXPECT_EQ(dialog.userType(6005, L"12"), UserAction::Done);
  EXPECT_EQ(dialog.position(6006), 12) << "the spin reads its buddy";
  EXPECT_EQ(dialog.userStep(6006, 100), UserAction::Done);
  EXPECT_EQ(dialog.getItemText(6005), CString(L"30")) << "and writes it, within its range";
  EXPECT_EQ(dialog.userStep(6006, -2147483647 - 1), UserAction::Done);
  EXPECT_EQ(dialog.getItemText(6005), CString(L"1"));
  EXPECT_EQ(dialog.userPress(21), UserAction::Done);
  EXPECT_FALSE(dialog.isChecked(20));
  EXPECT_TRUE(dialog.isChecked(22)) << "another group";
  EXPECT_EQ(dialog.userSelect(23, {0, 1}), UserAction::Refused) << "one at a time";
  EXPECT_EQ(dialog.userSelect(23, {3}), UserAction::Refused);
  EXPECT_EQ(dialog.userSelect(23, {2}), UserAction::Done);
  EXPECT_TRUE(dialog.removeItem(23, 0));
  EXPECT_EQ(dialog.selected(23), std::vector<int>{1}) << "the selection moves with its item";
  EXPECT_EQ(dialog.userType(24, L"z"), UserAction::Refused);
  EXPECT_EQ(dialog.userType(24, L"y"), UserAction::Done);
  EXPECT_EQ(dialog.selected(24), std::vector<int>{1});
  EXPECT_EQ(dialog.userSelect(24, {0}), UserAction::Done);
  EXPECT_EQ(dialog.getItemText(24), CString(L"x"));
  EXPECT_EQ(dialog.userEditCell(25, 0, 1, L"v"), UserAction::Done);
  EXPECT_EQ(dialog.cell(25, 0, 1), CString(L"v"));
  EXPECT_EQ(dialog.userEditCell(25, 1, 0, L"v"), UserAction::Refused);
  EXPECT_EQ(dialog.log, "6007+ ~6005 ~6006 ~6006 21+ ~23 ~24 ~24 ~25 ");
  EXPECT_FALSE(dialog.setItemText(99, L"x"));
  EXPECT_EQ(dialog.addItem(99, L"x"), -1);
}

TEST(UserInterfaces, NobodyDoesNoHarm) {
  TemporaryFolder folder;
  struct Case {
    UINT flags;
    int first, harmless;
  };
  for (const Case& test :
       {Case{MB_OK, IDOK, IDOK}, Case{MB_OKCANCEL, IDOK, IDCANCEL}, Case{MB_YESNO, IDYES, IDNO},
        Case{MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON2, IDNO, IDCANCEL},
        Case{MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, IDIGNORE, IDABORT},
        Case{MB_RETRYCANCEL, IDRETRY, IDCANCEL}}) {
    EXPECT_EQ(platform::defaultButton(test.flags), test.first);
    EXPECT_EQ(MessageBoxW(nullptr, L"text", nullptr, test.flags), test.harmless);
  }
  Recording dialog(backupTemplate());
  dialog.closes = false;
  EXPECT_EQ(platform::userInterface().runModal(dialog), platform::kIdCancel);
  EXPECT_EQ(dialog.log, "init close ");
  EXPECT_LT(
      reinterpret_cast<std::intptr_t>(ShellExecuteW(nullptr, L"open", L"http://x/", nullptr, nullptr, 1)),
      33);
}

class Scripted : public ::testing::Test {
 protected:
  Scripted() { folder_.environment().userInterface = &ui_; }
  TemporaryFolder folder_;
  std::vector<std::string> failures_;
  ScriptedUi ui_{[this](const std::string& what) { failures_.push_back(what); }};
};

TEST_F(Scripted, ForeseenRequestsAreAnsweredInOrder) {
  ui_.expectDialog(6000,
                   [](Dialog& dialog) {
                     dialog.userPress(6004);
                     dialog.userPress(6004);
                     dialog.userPress(1);
                   })
      .expectFolder(L"D:\\bk")
      .expectFolder(std::nullopt)
      .expectMessage(L"D:\\bk", IDYES)
      .expectMenu(51001)
      .expectFiles({L"C:\\a.dwg"})
      .expectOpen(L"http://x/");
  Recording dialog(backupTemplate());
  EXPECT_EQ(ui_.runModal(dialog), 1);
  EXPECT_EQ(dialog.log, "init 6004 6004 1 ");
  EXPECT_EQ(dialog.getItemText(6003), CString(L"Wrong Path"));
  EXPECT_EQ(MessageBoxW(nullptr, L"delete D:\\bk?", L"t", MB_YESNO), IDYES);
  EXPECT_EQ(ui_.popupMenu({{51000, L"a"}, {51001, L"b"}}, &dialog, 6004), 51001);
  EXPECT_EQ(ui_.chooseFiles(nullptr, {}).size(), 1u);
  EXPECT_EQ(
      reinterpret_cast<std::intptr_t>(ShellExecuteW(nullptr, L"open", L"http://x/", nullptr, nullptr, 1)),
      42);
  EXPECT_TRUE(failures_.empty());
  ASSERT_EQ(ui_.shown().size(), 7u);
  EXPECT_GE(ui_.shown()[0].text.Find(L"6003: C:\\backup"), 0) << "as it was when it appeared";
  EXPECT_EQ(ui_.shown()[3].flags, MB_YESNO);
}

TEST_F(Scripted, SurprisesAreFailures) {
  Recording dialog(backupTemplate());
  EXPECT_EQ(ui_.runModal(dialog), 2);
  EXPECT_EQ(ui_.messageBox(nullptr, L"boo", L"", MB_YESNO), IDNO);
  ASSERT_EQ(failures_.size(), 2u);
  EXPECT_NE(failures_[1].find("not foreseen: a message box \"\": boo; next should come nothing"),
            std::string::npos);
  failures_.clear();
  ui_.expectMessage(L"abc", IDCANCEL);
  EXPECT_EQ(ui_.messageBox(nullptr, L"xyz", L"", MB_YESNO), IDNO);
  EXPECT_EQ(failures_.size(), 2u) << "other words, and a button that isn't there";
  failures_.clear();
  ui_.expectDialog(7, [](Dialog& other) { other.userPress(1); });
  EXPECT_EQ(ui_.runModal(dialog), 2);
  EXPECT_EQ(failures_.size(), 1u);
  failures_.clear();
  dialog.closes = false;
  ui_.expectDialog(6000, {}).expectMenu(5);
  EXPECT_EQ(ui_.runModal(dialog), 2);
  EXPECT_EQ(ui_.popupMenu({{5, L"off", false}}, nullptr, 0), 0);
  EXPECT_EQ(failures_.size(), 2u);
  failures_.clear();
  {
    ScriptedUi other([this](const std::string& what) { failures_.push_back(what); });
    other.expectMenu(1);
  }
  EXPECT_EQ(failures_.size(), 1u) << "left over";
}

TEST_F(Scripted, WorkerThreadsReachABusyDialogByPosting) {
  platform::TimerQueue timers;
  folder_.environment().timers = &timers;
  Recording dialog(backupTemplate());
  std::thread worker;
  ui_.expectDialog(6000, [&](Dialog&) {
    dialog.busy = true;
    EXPECT_TRUE(dialog.setTimer(3, 10ms));
    worker = std::thread([&] {
      std::this_thread::sleep_for(50ms);
      dialog.invoke([&] { dialog.setItemText(6003, L"done"); });
      dialog.post(1524, 1000, 3 << 16 | 10);
    });
  });
  EXPECT_EQ(ui_.runModal(dialog), 2);
  worker.join();
  EXPECT_EQ(dialog.getItemText(6003), CString(L"done"));
  EXPECT_NE(dialog.log.find("t3 "), std::string::npos);
  EXPECT_NE(dialog.log.find("m1524,1000,196618 "), std::string::npos);
  EXPECT_FALSE(timers.nextDue()) << "the dialog's timers end with it";
}

class Terminal : public ::testing::Test {
 protected:
  platform::TerminalUi& with(const std::string& lines) {
    in_ = std::istringstream(lines);
    out_.str("");
    input_.emplace(in_);
    ui_.emplace(*input_, out_);
    folder_.environment().userInterface = &*ui_;
    return *ui_;
  }
  bool says(const std::string& text) const { return out_.str().find(text) != std::string::npos; }
  TemporaryFolder folder_;
  std::istringstream in_;
  std::ostringstream out_;
  std::optional<platform::StreamInput> input_;
  std::optional<platform::TerminalUi> ui_;
};

TEST_F(Terminal, CommandsOfADialog) {
  struct Case {
    const char *lines, *log;
    int result;
    const char* says;
  };
  for (const Case& test : {
           Case{"", "init close ", 2, "6007 [ ]"},
           Case{".\n", "init close ", 2, ""},
           Case{"\n", "init 1 ", 1, ""},
           Case{"6007\n2\n", "init 6007+ 2 close ", 2, "6007 [x]"},
           Case{"关闭\n", "init 2 close ", 2, ""},
           Case{"启动(S)\r\n", "init 1 ", 1, ""},
           Case{"6005=15\n 6006 = 99 \n", "init ~6005 ~6006 close ", 2, "6005= 30 (1-30)  分钟"},
           Case{"6005=x\n", "init close ", 2, "6005 doesn't take that."},
           Case{"6001\n停止\n", "init close ", 2, "停止 is not available now."},
           Case{"77\n", "init close ", 2, "There is no control 77."},
           Case{"nonsense\n", "init close ", 2, "There is no control nonsense."},
           Case{"6003\n", "init close ", 2, "6003 takes no such command."},
           Case{"6007:1,1=x\n", "init close ", 2, "6007:1,1 takes no such command."},
       }) {
    Recording dialog(backupTemplate());
    EXPECT_EQ(with(test.lines).runModal(dialog), test.result) << test.lines;
    EXPECT_EQ(dialog.log, test.log) << test.lines;
    EXPECT_TRUE(says(test.says)) << test.lines << out_.str();
  }
  Recording stubborn(backupTemplate());
  stubborn.closes = false;
  EXPECT_EQ(with("").runModal(stubborn), 2) << "the end of the input ends even this";
}

TEST_F(Terminal, ADialogIsPrintedAgainOnlyWhenItChanged) {
  Recording dialog(backupTemplate());
  with("6005=30\n6005=29\n?\n").runModal(dialog);
  std::size_t count = 0;
  for (std::size_t at = out_.str().find("┌"); at != std::string::npos; at = out_.str().find("┌", at + 1))
    ++count;
  EXPECT_EQ(count, 3u) << out_.str();
}

TEST_F(Terminal, ListsAndGrids) {
  Recording dialog({1,
                    L"t",
                    {{.kind = Kind::List, .id = 10, .multiple = true, .items = {L"a", L"b", L"c"}},
                     {.kind = Kind::Grid, .id = 11, .columns = {L"k", L"v"}, .rows = {{L"a", L"b"}}}}});
  with("10=3,1\n10=1,x\n11=1\n11:1,2= new\n11:2,1=x\n10=4\n").runModal(dialog);
  EXPECT_EQ(dialog.selected(10), (std::vector<int>{0, 2}));
  EXPECT_EQ(dialog.selected(11), std::vector<int>{0});
  EXPECT_EQ(dialog.cell(11, 0, 1), CString(L"new"));
  EXPECT_EQ(dialog.log, "init ~10 ~11 ~11 close ");
}

TEST_F(Terminal, MessageBoxes) {
  struct Case {
    const char* lines;
    UINT flags;
    int answer;
  };
  for (const Case& test : {Case{"", MB_OK, IDOK}, Case{"", MB_YESNO, IDNO}, Case{"\n", MB_YESNO, IDYES},
                           Case{"\n", MB_YESNO | MB_DEFBUTTON2, IDNO}, Case{"maybe\ny\n", MB_YESNO, IDYES},
                           Case{"NO\n", MB_YESNOCANCEL, IDNO}, Case{"2\n", MB_YESNOCANCEL, IDCANCEL},
                           Case{"x", MB_OKCANCEL, IDCANCEL}})
    EXPECT_EQ(with(test.lines).messageBox(nullptr, L"是否删除?", L"删除", test.flags), test.answer)
        << test.lines;
  EXPECT_TRUE(says("┌─ 删除 ────┐\n│ 是否删除? │\n└───────────┘\n")) << out_.str();
  with("y\n").messageBox(nullptr, L"", L"", MB_OK);
  std::string rest;
  std::getline(in_, rest);
  EXPECT_EQ(rest, "y") << "a message with one button takes no line";
}

TEST_F(Terminal, FilesFoldersAndMenus) {
  const auto c = folder_.environment().drivesRoot / "C";
  std::filesystem::create_directories(c / "work");
  for (const char* name : {"b.dwg", "a.dwg", "c.txt"})
    ASSERT_TRUE(platform::writeFile(c / "work" / name, ""));
  using Names = std::vector<CString>;
  EXPECT_EQ(with("C:\\work\\none.dwg\nc:/WORK/A.dwg\n").chooseFiles(nullptr, {}),
            (Names{L"C:\\work\\a.dwg"}));
  EXPECT_TRUE(says("C:\\work\\none.dwg is not there.")) << out_.str();
  EXPECT_EQ(with("*.dwg; c.txt\n").chooseFiles(nullptr, {.multiple = true, .folder = L"C:\\work"}),
            (Names{L"C:\\work\\a.dwg", L"C:\\work\\b.dwg", L"C:\\work\\c.txt"}));
  EXPECT_EQ(with("\n").chooseFiles(nullptr, {.defaultName = L"b.dwg", .folder = L"C:\\work"}),
            (Names{L"C:\\work\\b.dwg"}));
  EXPECT_TRUE(with("\n").chooseFiles(nullptr, {}).empty());
  const platform::FileChoice save{.save = true, .folder = L"C:\\work"};
  EXPECT_EQ(with("new.dwg\n").chooseFiles(nullptr, save), (Names{L"C:\\work\\new.dwg"}));
  EXPECT_EQ(with("a.dwg\n\nnone\\x\nb.dwg\nyes\n").chooseFiles(nullptr, save), (Names{L"C:\\work\\b.dwg"}));
  EXPECT_TRUE(says("C:\\work\\none is not there."));
  EXPECT_EQ(with("C:\\work\\a.dwg\nC:\\WORK\n").chooseFolder(nullptr, L"", L""), CString(L"C:\\work"));
  EXPECT_FALSE(with("").chooseFolder(nullptr, L"", L"C:\\work"));
  const std::vector<platform::MenuItem> items{{5, L"&Five"}, {}, {6, L"Six", false}};
  EXPECT_EQ(with("6\n0\nfive\n").popupMenu(items, nullptr, 0), 5);
  EXPECT_EQ(with("\n").popupMenu(items, nullptr, 0), 0);
  EXPECT_EQ(with("5\n").popupMenu({}, nullptr, 0), 0) << "an empty menu takes no line";
}

TEST(LineInputs, DescriptorWaitsCutsAndEnds) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  platform::DescriptorInput input(ends[0]);
  using Result = platform::LineInput::Result;
  std::string line;
  EXPECT_EQ(input.next(line, 1ms), Result::TimedOut);
  ASSERT_EQ(::write(ends[1], "one\r\ntw", 7), 7);
  EXPECT_EQ(input.next(line, std::nullopt), Result::Line);
  EXPECT_EQ(line, "one");
  EXPECT_EQ(input.next(line, 1ms), Result::TimedOut);
  ASSERT_EQ(::write(ends[1], "o\nlast", 6), 6);
  EXPECT_EQ(input.next(line, 1000ms), Result::Line);
  EXPECT_EQ(line, "two");
  ::close(ends[1]);
  EXPECT_EQ(input.next(line, std::nullopt), Result::Line);
  EXPECT_EQ(line, "last");
  EXPECT_EQ(input.next(line, std::nullopt), Result::End);
  ::close(ends[0]);
}

TEST_F(Terminal, WorkIsFinishedBeforeFurtherLinesAreRead) {
  Recording dialog(backupTemplate());
  std::thread worker;
  class Working : public Recording {
   public:
    using Recording::Recording;
    std::thread worker;

   protected:
    void onCommand(int id) override {
      Recording::onCommand(id);
      if (id != 6007) return;
      busy = true;
      worker = std::thread([this] {
        std::this_thread::sleep_for(30ms);
        post(1524, 0, 0);
      });
    }
  } working(backupTemplate());
  EXPECT_EQ(with("6007\n1\n").runModal(working), 1);
  working.worker.join();
  EXPECT_EQ(working.log, "init 6007+ m1524,0,0 1 ");
}

}  // namespace
