#pragma once
// A front end of lines: prints dialogs as text boxes, reads answers line by line.
//
//   6001            presses, ticks or sets the control of that number; so does its label
//   6005=30         types into an edit, chooses in a combo, sets a spin; into a list or grid: the rows to
//   select (1,3,7) 6005:2,1=x      types into the cell in row 2, column 1 of a grid (empty)         presses
//   the default button ?               prints the dialog again, .  closes it, as does the end of the input
#include <ostream>

#include "platform/ui/line_input.h"
#include "platform/ui/user_interface.h"

namespace platform {

/// What a TerminalUi says of its own; a host may put them in the user's language. In `%s` stands what it is
/// about.
struct TerminalTexts {
  CString prompt = L"> ";
  CString buttons[8] = {L"", L"OK", L"Cancel", L"Abort", L"Retry", L"Ignore", L"Yes", L"No"};  ///< by answer
  CString openFile = L"File to open";
  CString saveFile = L"File to write";
  CString folder = L"Folder";
  CString replace = L"%s exists. Replace it?";
  CString noControl = L"There is no control %s.";
  CString disabled = L"%s is not available now.";
  CString wrongKind = L"%s takes no such command.";
  CString refused = L"%s doesn't take that.";
  CString severalLabels = L"Several controls are called %s; use a number.";
  CString notFound = L"%s is not there.";
  CString notUnderstood = L"Please answer with one of: %s";
};

class TerminalUi : public UserInterface {
 public:
  /// `input` and `output` must outlive it.
  TerminalUi(LineInput& input, std::ostream& output, TerminalTexts texts = {});

  int messageBox(HWND owner, const CString& text, const CString& caption, UINT flags) override;
  std::vector<CString> chooseFiles(HWND owner, const FileChoice& choice) override;
  std::optional<CString> chooseFolder(HWND owner, const CString& title, const CString& start) override;
  int popupMenu(const std::vector<MenuItem>& items, const Dialog* dialog, int controlId) override;
  int open(const ShellRequest& request) override;

 protected:
  void show(Dialog& dialog, HWND owner) override;

 private:
  void print(std::wstring_view text);
  void say(const CString& format, const CString& about);
  /// The next line, trimmed; none at the end of the input.
  std::optional<CString> ask(const CString& prompt);
  std::optional<CString> nextFor(Dialog& dialog, std::wstring& printed);
  void watchBusy(Dialog& dialog);
  void perform(Dialog& dialog, const CString& line);
  void report(UserAction action, const CString& about);
  int controlByLabel(const Dialog& dialog, const CString& label);
  void pressDefault(Dialog& dialog);
  std::vector<CString> named(const CString& answer, const FileChoice& choice);

  LineInput& input_;
  std::ostream& output_;
  TerminalTexts texts_;
};

}  // namespace platform
