#pragma once
// What the product asks of whoever sits before it. A front end answers: scripted (tests), terminal, desktop.
#include <optional>
#include <vector>

#include "platform/system/dynamic_library.h"
#include "platform/system/shell.h"
#include "platform/system/windows_names.h"
#include "platform/ui/dialog.h"

// Flags and answers of message boxes.
inline constexpr UINT MB_OK = 0, MB_OKCANCEL = 1, MB_ABORTRETRYIGNORE = 2, MB_YESNOCANCEL = 3, MB_YESNO = 4,
                      MB_RETRYCANCEL = 5;
inline constexpr UINT MB_ICONERROR = 0x10, MB_ICONQUESTION = 0x20, MB_ICONWARNING = 0x30,
                      MB_ICONINFORMATION = 0x40;
inline constexpr UINT MB_DEFBUTTON2 = 0x100, MB_DEFBUTTON3 = 0x200;
inline constexpr int IDOK = 1, IDCANCEL = 2, IDABORT = 3, IDRETRY = 4, IDIGNORE = 5, IDYES = 6, IDNO = 7;

namespace platform {

/// A wish for the name of a file, or of several.
struct FileChoice {
  bool save = false;
  bool multiple = false;  ///< open only
  CString title = {};
  CString pattern = {};      ///< "*.dwg"; several are separated by `;`
  CString defaultName = {};  ///< what an empty answer means; empty: it cancels
  CString folder = {};       ///< what relative names hang on; empty: the current folder
};

struct MenuItem {
  int command = 0;  ///< 0: a line between items
  CString text = {};
  bool enabled = true;
};

/// The buttons of a message box, in order.
std::vector<int> messageButtons(UINT flags);
/// The button that an empty answer presses.
int defaultButton(UINT flags);
/// The button that does no harm, for when nobody answers: Cancel, else No, else Abort, else OK.
int harmlessButton(UINT flags);

/// The base answers as if nobody were there: dialogs are cancelled right after their start, message boxes get
/// the harmless answer, choices are cancelled, and nothing is opened.
class UserInterface {
 public:
  virtual ~UserInterface() = default;

  /// Runs a dialog until it ends; answers its result. Handlers run inside this call.
  int runModal(Dialog& dialog, HWND owner = nullptr);
  virtual int messageBox(HWND owner, const CString& text, const CString& caption, UINT flags);
  /// Full paths as the product spells them; none when cancelled.
  virtual std::vector<CString> chooseFiles(HWND owner, const FileChoice& choice);
  virtual std::optional<CString> chooseFolder(HWND owner, const CString& title, const CString& start);
  /// The command of the chosen item, 0 when none is. Shown at a control of the dialog where both are given.
  virtual int popupMenu(const std::vector<MenuItem>& items, const Dialog* dialog = nullptr,
                        int controlId = 0);
  /// Above 32 when it was handed on.
  virtual int open(const ShellRequest& request);

 protected:
  /// Shows a dialog that has begun, until it has ended.
  virtual void show(Dialog& dialog, HWND owner);
};

/// The front end of the current environment; one where nobody answers, when it has none.
UserInterface& userInterface();

}  // namespace platform

/// On the current front end.
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT flags);
/// On the current front end; above 32 is success. `folder` and `showCommand` are ignored.
HINSTANCE ShellExecuteW(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                        int showCommand);
