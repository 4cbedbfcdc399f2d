#include "platform/ui/terminal_ui.h"

#include <algorithm>
#include <cstdlib>

#include "platform/files/files.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"
#include "platform/ui/display_width.h"
#include "platform/ui/render.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPollInterval = 100ms;

/// "1,3,7" as indices from 0; none when it is anything else. An empty text selects nothing.
std::optional<std::vector<int>> rowsIn(const CString& text) {
  std::vector<int> rows;
  int position = 0;
  for (CString part = text.Tokenize(L",", position); position >= 0; part = text.Tokenize(L",", position)) {
    int row = 0;
    if (!parseWhole(part.view(), row)) return std::nullopt;
    rows.push_back(row - 1);
  }
  return rows;
}

/// Takes `text` apart at the first `separator`; false when there is none.
bool cutAt(const CString& text, wchar_t separator, CString& left, CString& right) {
  const int at = text.Find(separator);
  if (at < 0) return false;
  left = text.Left(at);
  right = text.Mid(at + 1);
  left.Trim();
  return true;
}

UserAction assign(Dialog& dialog, int id, const CString& text) {
  const Control* control = dialog.control(id);
  if (!control) return UserAction::NoControl;
  if (control->kind == ControlKind::List || control->kind == ControlKind::Grid) {
    auto rows = rowsIn(text);
    return rows ? dialog.userSelect(id, std::move(*rows)) : UserAction::Refused;
  }
  if (control->kind == ControlKind::Spin) {
    int wanted = 0;
    if (!parseWhole(text.view(), wanted)) return UserAction::Refused;
    return dialog.userStep(id, wanted - dialog.position(id));
  }
  return dialog.userType(id, text);
}

/// A path as typed, whole and as the product spells it; relative ones hang on `folder`.
CString fullPath(CString typed, const CString& folder) {
  const char* home = std::getenv("HOME");
  if (home && (typed == CString(L"~") || typed.Left(2) == CString(L"~/")))
    typed = fromNative(home) + L"\\" + typed.Mid(2);
  std::filesystem::path native = toNative(typed);
  if (native.is_relative() && !folder.IsEmpty()) native = toNative(folder + L"\\" + typed);
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(native, error);
  return fromNative(error ? native : whole);
}

}  // namespace

TerminalUi::TerminalUi(LineInput& input, std::ostream& output, TerminalTexts texts)
    : input_(input), output_(output), texts_(std::move(texts)) {}

void TerminalUi::print(std::wstring_view text) {
  output_ << toUtf8(text) << std::flush;
}

void TerminalUi::say(const CString& format, const CString& about) {
  CString text;
  text.Format(format.GetString(), CString(printable(about.view())));
  print((text + L"\n").view());
}

std::optional<CString> TerminalUi::ask(const CString& prompt) {
  print(prompt.view());
  std::string line;
  if (input_.next(line, std::nullopt) != LineInput::Result::Line) {
    print(L"\n");
    return std::nullopt;
  }
  CString text = wideFromUtf8(line);
  return text.Trim();
}

int TerminalUi::messageBox(HWND, const CString& text, const CString& caption, UINT flags) {
  print(renderBox(caption.view(), wrapped(text.view(), kTextBoxWidth)));
  const auto buttons = messageButtons(flags);
  if (buttons.size() == 1) return buttons.front();
  const auto nameOf = [&](int button) { return texts_.buttons[static_cast<std::size_t>(button)]; };
  CString names;
  for (const int button : buttons) names += (names.IsEmpty() ? L"" : L" / ") + nameOf(button);
  while (const auto answer = ask(names + L" <" + nameOf(defaultButton(flags)) + L"> ")) {
    if (answer->IsEmpty()) return defaultButton(flags);
    for (const int button : buttons)
      if (answer->CompareNoCase(nameOf(button)) == 0 || *answer == CString(std::to_wstring(button)))
        return button;
    // One letter is enough where it tells the buttons apart.
    int match = 0, matches = 0;
    for (const int button : buttons)
      if (startsWithNoCase(nameOf(button).view(), answer->view())) {
        match = button;
        ++matches;
      }
    if (matches == 1) return match;
    say(texts_.notUnderstood, names);
  }
  return harmlessButton(flags);
}

std::vector<CString> TerminalUi::named(const CString& answer, const FileChoice& choice) {
  std::vector<CString> names;
  int position = 0;
  const wchar_t* separator = choice.multiple ? L";" : L"";
  for (CString part = answer.Tokenize(separator, position); position >= 0;
       part = answer.Tokenize(separator, position)) {
    part.Trim();
    if (part.IsEmpty()) continue;
    if (choice.multiple && part.FindOneOf(L"*?") >= 0) {
      const auto found = findFiles(fullPath(part, choice.folder));
      for (const FoundFile& file : found)
        if (!file.isFolder) names.push_back(fromNative(file.path));
    } else {
      names.push_back(fullPath(part, choice.folder));
    }
  }
  return names;
}

std::vector<CString> TerminalUi::chooseFiles(HWND owner, const FileChoice& choice) {
  CString prompt = choice.title.IsEmpty() ? (choice.save ? texts_.saveFile : texts_.openFile) : choice.title;
  if (!choice.pattern.IsEmpty()) prompt += L" (" + choice.pattern + L")";
  if (!choice.defaultName.IsEmpty()) prompt += L" <" + choice.defaultName + L">";
  prompt += L": ";
  while (auto answer = ask(CString(printable(prompt.view())))) {
    if (answer->IsEmpty()) answer = choice.defaultName;
    if (answer->IsEmpty()) break;
    const auto names = named(*answer, choice);
    const auto missing =
        std::find_if(names.begin(), names.end(), [](const CString& name) { return !isFile(name); });
    if (choice.save) {
      if (missing != names.end()) {
        const auto folder = toNative(names.front()).parent_path();
        if (isFolder(folder)) return names;
        say(texts_.notFound, fromNative(folder));
        continue;
      }
      CString question;
      question.Format(texts_.replace.GetString(), names.front());
      if (messageBox(owner, question, {}, MB_YESNO | MB_DEFBUTTON2) == IDYES) return names;
    } else if (names.empty() || missing != names.end()) {
      say(texts_.notFound, names.empty() ? *answer : *missing);
    } else {
      return names;
    }
  }
  return {};
}

std::optional<CString> TerminalUi::chooseFolder(HWND, const CString& title, const CString& start) {
  CString prompt = title.IsEmpty() ? texts_.folder : title;
  if (!start.IsEmpty()) prompt += L" <" + start + L">";
  while (auto answer = ask(CString(printable((prompt + L": ").view())))) {
    if (answer->IsEmpty()) answer = start;
    if (answer->IsEmpty()) break;
    const CString folder = fullPath(*answer, {});
    if (isFolder(folder)) return folder;
    say(texts_.notFound, folder);
  }
  return std::nullopt;
}

int TerminalUi::popupMenu(const std::vector<MenuItem>& items, const Dialog*, int) {
  print(renderMenu(items));
  const bool any =
      std::any_of(items.begin(), items.end(), [](const MenuItem& i) { return i.command != 0 && i.enabled; });
  if (!any) return 0;
  while (const auto answer = ask(texts_.prompt)) {
    if (answer->IsEmpty() || *answer == CString(L".")) return 0;
    for (const MenuItem& item : items) {
      const bool named = *answer == CString(std::to_wstring(item.command)) ||
                         answer->CompareNoCase(plainLabel(item.text)) == 0;
      if (item.command != 0 && item.enabled && named) return item.command;
    }
    say(texts_.noControl, *answer);
  }
  return 0;
}

int TerminalUi::open(const ShellRequest& request) {
  return openOnDesktop(request);
}

void TerminalUi::show(Dialog& dialog, HWND) {
  std::wstring printed;
  while (!dialog.ended()) {
    const auto line = nextFor(dialog, printed);
    if (dialog.ended()) return;
    if (line && *line != CString(L".")) {
      if (*line == CString(L"?")) printed.clear();
      perform(dialog, *line);
      continue;
    }
    dialog.userClose();
    // At the end of the input nothing could ever close a dialog that refuses.
    if (!line && !dialog.ended()) dialog.endDialog(kIdCancel);
  }
}

/// Waits for the user's next line while timers fire and posted work is done; prints the dialog whenever it
/// looks different.
std::optional<CString> TerminalUi::nextFor(Dialog& dialog, std::wstring& printed) {
  std::string line;
  bool asked = false;
  while (!dialog.ended()) {
    dialog.pump(0ms);
    if (dialog.isBusy()) watchBusy(dialog);
    if (dialog.ended()) break;
    if (const std::wstring now = renderDialog(dialog.state()); now != printed && !dialog.isBusy()) {
      print((asked ? L"\n" : L"") + now);
      printed = now;
      asked = false;
    }
    if (!asked) print(texts_.prompt.view());
    asked = true;
    const auto result = input_.next(line, input_.isLive() ? std::optional(kPollInterval) : std::nullopt);
    if (result == LineInput::Result::TimedOut) continue;
    if (result == LineInput::Result::End) {
      print(L"\n");
      return std::nullopt;
    }
    CString text = wideFromUtf8(line);
    return text.Trim();
  }
  return std::nullopt;
}

void TerminalUi::watchBusy(Dialog& dialog) {
  // Lines that were written beforehand are answers to what comes when the work is done; only a person can
  // interrupt it.
  std::wstring last;
  std::string line;
  while (dialog.isBusy() && !dialog.ended()) {
    dialog.pump(kPollInterval);
    if (!input_.isLive()) continue;
    if (const std::wstring bar = renderProgress(dialog.state()); bar != last) print(L"\r" + bar), last = bar;
    const auto result = input_.next(line, 0ms);
    if (result == LineInput::Result::Line) perform(dialog, wideFromUtf8(line).Trim());
    if (result == LineInput::Result::End) break;
  }
  while (dialog.isBusy() && !dialog.ended()) dialog.pump(kPollInterval);
  while (!dialog.ended() && dialog.pump(0ms)) {
  }
  if (!last.empty()) print(L"\n");
}

void TerminalUi::perform(Dialog& dialog, const CString& line) {
  if (line == CString(L"?")) return;
  if (line.IsEmpty()) return pressDefault(dialog);
  CString left, text, place;
  int id = 0;
  if (parseWhole(line.view(), id)) return report(dialog.userPress(id), line);
  if (cutAt(line, L'=', left, text)) {
    text.TrimLeft();
    if (parseWhole(left.view(), id)) return report(assign(dialog, id, text), left);
    CString number;
    if (cutAt(left, L':', number, place) && parseWhole(number.view(), id)) {
      const auto cell = rowsIn(place);
      if (!cell || cell->size() != 2) return report(UserAction::Refused, left);
      return report(dialog.userEditCell(id, (*cell)[0], (*cell)[1], text), left);
    }
  }
  if (id = controlByLabel(dialog, line); id >= 0) report(dialog.userPress(id), line);
}

/// -1, with a word to the user, when no control or several go by that label.
int TerminalUi::controlByLabel(const Dialog& dialog, const CString& label) {
  int found = -1, matches = 0;
  for (const Control& control : dialog.state().controls) {
    const bool pressed = control.kind == ControlKind::Button || control.kind == ControlKind::Check ||
                         control.kind == ControlKind::Radio;
    if (!pressed || !control.visible || plainLabel(control.text).CompareNoCase(plainLabel(label)) != 0)
      continue;
    found = control.id;
    ++matches;
  }
  if (matches == 0) say(texts_.noControl, label);
  if (matches > 1) say(texts_.severalLabels, label);
  return matches == 1 ? found : -1;
}

void TerminalUi::pressDefault(Dialog& dialog) {
  for (const Control& control : dialog.state().controls)
    if (control.kind == ControlKind::Button && control.isDefault && control.enabled && control.visible) {
      dialog.userPress(control.id);
      return;
    }
}

void TerminalUi::report(UserAction action, const CString& about) {
  switch (action) {
    case UserAction::Done:
      return;
    case UserAction::NoControl:
      return say(texts_.noControl, about);
    case UserAction::Disabled:
      return say(texts_.disabled, about);
    case UserAction::WrongKind:
      return say(texts_.wrongKind, about);
    case UserAction::Refused:
      return say(texts_.refused, about);
  }
}

}  // namespace platform
