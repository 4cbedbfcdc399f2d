#include "platform/ui/user_interface.h"

#include <algorithm>

#include "platform/env/environment.h"

namespace platform {
namespace {

constexpr UINT kButtonMask = 0xF, kDefaultShift = 8, kDefaultMask = 0xF;

const std::vector<int>& buttonsOf(UINT flags) {
  static const std::vector<int> kSets[] = {
      {IDOK},        {IDOK, IDCANCEL},   {IDABORT, IDRETRY, IDIGNORE}, {IDYES, IDNO, IDCANCEL},
      {IDYES, IDNO}, {IDRETRY, IDCANCEL}};
  const UINT set = flags & kButtonMask;
  return kSets[set < std::size(kSets) ? set : 0];
}

}  // namespace

std::vector<int> messageButtons(UINT flags) {
  return buttonsOf(flags);
}

int defaultButton(UINT flags) {
  const auto& buttons = buttonsOf(flags);
  const std::size_t index = flags >> kDefaultShift & kDefaultMask;
  return buttons[index < buttons.size() ? index : 0];
}

int harmlessButton(UINT flags) {
  const auto& buttons = buttonsOf(flags);
  for (const int button : {IDCANCEL, IDNO, IDABORT})
    if (std::find(buttons.begin(), buttons.end(), button) != buttons.end()) return button;
  return buttons.front();
}

int UserInterface::runModal(Dialog& dialog, HWND owner) {
  dialog.begin();
  if (!dialog.ended()) show(dialog, owner);
  dialog.finish();
  return dialog.result();
}

void UserInterface::show(Dialog& dialog, HWND) {
  dialog.userClose();
  // A dialog that refuses to be closed would otherwise wait for a user who isn't there.
  if (!dialog.ended()) dialog.endDialog(kIdCancel);
}

int UserInterface::messageBox(HWND, const CString&, const CString&, UINT flags) {
  return harmlessButton(flags);
}

std::vector<CString> UserInterface::chooseFiles(HWND, const FileChoice&) {
  return {};
}

std::optional<CString> UserInterface::chooseFolder(HWND, const CString&, const CString&) {
  return std::nullopt;
}

int UserInterface::popupMenu(const std::vector<MenuItem>&, const Dialog*, int) {
  return 0;
}

int UserInterface::open(const ShellRequest&) {
  return kShellNoProgram;
}

UserInterface& userInterface() {
  static UserInterface nobody;
  UserInterface* current = Environment::current().userInterface;
  return current ? *current : nobody;
}

}  // namespace platform

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT flags) {
  return platform::userInterface().messageBox(owner, text, caption, flags);
}

HINSTANCE ShellExecuteW(HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR, int) {
  const int answer = platform::userInterface().open(platform::shellRequest(verb, file, parameters));
  return reinterpret_cast<HINSTANCE>(static_cast<std::intptr_t>(answer));
}
