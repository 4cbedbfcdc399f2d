#include "platform/ui/scripted_ui.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "platform/ui/render.h"

namespace platform {
namespace {

const char* nameOf(Shown::Kind kind) {
  static constexpr const char* kNames[] = {
      "a dialog", "a message box", "a choice of files", "a choice of a folder", "a menu", "an opening"};
  return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace

ScriptedUi::ScriptedUi(Failure onFailure) : onFailure_(std::move(onFailure)) {}

ScriptedUi::~ScriptedUi() {
  for (const Expected& left : expected_)
    fail(std::string("foreseen, but never asked for: ") + nameOf(left.kind) + " " + utf8From(left.text));
}

void ScriptedUi::fail(const std::string& what) {
  if (onFailure_) return onFailure_(what);
  std::fprintf(stderr, "scripted user: %s\n", what.c_str());
  std::abort();
}

ScriptedUi& ScriptedUi::expectMessage(const CString& containing, int answer) {
  expected_.push_back({Shown::Kind::Message, containing, answer, {}, {}});
  return *this;
}

ScriptedUi& ScriptedUi::expectDialog(int id, Actions actions) {
  CString text;
  text.Format(L"%d", id);
  expected_.push_back({Shown::Kind::Dialog, text, id, std::move(actions), {}});
  return *this;
}

ScriptedUi& ScriptedUi::expectFiles(std::vector<CString> answer) {
  expected_.push_back({Shown::Kind::Files, {}, 0, {}, std::move(answer)});
  return *this;
}

ScriptedUi& ScriptedUi::expectFolder(std::optional<CString> answer) {
  expected_.push_back({Shown::Kind::Folder, answer.value_or(CString()), answer.has_value(), {}, {}});
  return *this;
}

ScriptedUi& ScriptedUi::expectMenu(int command) {
  expected_.push_back({Shown::Kind::Menu, {}, command, {}, {}});
  return *this;
}

ScriptedUi& ScriptedUi::expectOpen(const CString& target, int answer) {
  expected_.push_back({Shown::Kind::Open, target, answer, {}, {}});
  return *this;
}

std::optional<ScriptedUi::Expected> ScriptedUi::take(Shown shown) {
  const Shown::Kind kind = shown.kind;
  const std::string what =
      std::string(nameOf(kind)) + " \"" + utf8From(shown.caption) + "\": " + utf8From(shown.text);
  shown_.push_back(std::move(shown));
  if (expected_.empty() || expected_.front().kind != kind) {
    const std::string foreseen = expected_.empty() ? "nothing" : nameOf(expected_.front().kind);
    fail("not foreseen: " + what + "; next should come " + foreseen);
    return std::nullopt;
  }
  Expected next = std::move(expected_.front());
  expected_.pop_front();
  return next;
}

int ScriptedUi::messageBox(HWND, const CString& text, const CString& caption, UINT flags) {
  const auto next = take({Shown::Kind::Message, text, caption, flags, 0});
  if (!next) return harmlessButton(flags);
  if (text.Find(next->text) < 0)
    fail("the message \"" + utf8From(text) + "\" doesn't contain \"" + utf8From(next->text) + "\"");
  const auto buttons = messageButtons(flags);
  if (std::find(buttons.begin(), buttons.end(), next->number) != buttons.end()) return next->number;
  fail("the message \"" + utf8From(text) + "\" has no button " + std::to_string(next->number));
  return harmlessButton(flags);
}

std::vector<CString> ScriptedUi::chooseFiles(HWND, const FileChoice& choice) {
  auto next = take({Shown::Kind::Files, choice.title, {}, 0, 0});
  return next ? std::move(next->names) : std::vector<CString>();
}

std::optional<CString> ScriptedUi::chooseFolder(HWND, const CString& title, const CString&) {
  const auto next = take({Shown::Kind::Folder, title, {}, 0, 0});
  return next && next->number != 0 ? std::optional(next->text) : std::nullopt;
}

int ScriptedUi::popupMenu(const std::vector<MenuItem>& items, const Dialog*, int) {
  const auto next = take({Shown::Kind::Menu, CString(renderMenu(items)), {}, 0, 0});
  if (!next || next->number == 0) return 0;
  for (const MenuItem& item : items)
    if (item.command == next->number && item.enabled) return item.command;
  fail("the menu has no item " + std::to_string(next->number) + " to choose");
  return 0;
}

int ScriptedUi::open(const ShellRequest& request) {
  const auto next = take({Shown::Kind::Open, request.target, {}, 0, 0});
  if (!next) return kShellNoProgram;
  if (next->text != request.target)
    fail("\"" + utf8From(request.target) + "\" is opened, not \"" + utf8From(next->text) + "\"");
  return next->number;
}

void ScriptedUi::show(Dialog& dialog, HWND owner) {
  const auto next =
      take({Shown::Kind::Dialog, CString(renderDialog(dialog.state())), dialog.title(), 0, dialog.id()});
  if (!next) return UserInterface::show(dialog, owner);
  if (next->number != dialog.id())
    fail("dialog " + std::to_string(dialog.id()) + " is shown, not " + std::to_string(next->number));
  else if (next->actions)
    next->actions(dialog);
  const auto limit = std::chrono::steady_clock::now() + kBusyLimit;
  while (!dialog.ended() && dialog.isBusy() && std::chrono::steady_clock::now() < limit)
    dialog.pump(std::chrono::milliseconds(100));
  // What the work posted at its very end is still part of it.
  while (!dialog.ended() && dialog.pump(std::chrono::milliseconds(0))) {
  }
  if (!dialog.ended()) dialog.userClose();
  if (!dialog.ended()) {
    fail("dialog " + std::to_string(dialog.id()) + " doesn't close");
    dialog.endDialog(kIdCancel);
  }
}

}  // namespace platform
