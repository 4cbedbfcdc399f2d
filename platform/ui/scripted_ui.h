#pragma once
// A user for tests: answers what was foreseen, in that order, and reports everything else.
#include <deque>
#include <functional>
#include <string>

#include "platform/ui/user_interface.h"

namespace platform {

/// Something that was shown.
struct Shown {
  enum class Kind { Dialog, Message, Files, Folder, Menu, Open } kind;
  CString text;  ///< message; dialog and menu as renderDialog and its kin print them; title of a choice; what
                 ///< is opened
  CString caption;  ///< title of a message box or dialog
  UINT flags = 0;   ///< of a message box
  int id = 0;       ///< of a dialog
};

/// Requests that come out of turn, messages that read otherwise than foreseen, and expectations that are left
/// over when it goes are failures; so is a dialog that doesn't close. They are reported at once, and answered
/// as if nobody were there.
class ScriptedUi : public UserInterface {
 public:
  using Failure = std::function<void(const std::string&)>;
  using Actions = std::function<void(Dialog&)>;

  /// By default a failure is printed and ends the program.
  explicit ScriptedUi(Failure onFailure = {});
  ~ScriptedUi() override;

  ScriptedUi& expectMessage(const CString& containing, int answer = IDOK);
  /// `actions` are what the user does, through Dialog's user... calls. A dialog that is still open behind
  /// them, and not busy, is closed by its cross.
  ScriptedUi& expectDialog(int id, Actions actions);
  ScriptedUi& expectFiles(std::vector<CString> answer);
  ScriptedUi& expectFolder(std::optional<CString> answer);
  ScriptedUi& expectMenu(int command);  ///< 0 cancels; any other command must be among the enabled items
  ScriptedUi& expectOpen(const CString& target, int answer = kShellDone);

  const std::vector<Shown>& shown() const { return shown_; }
  std::size_t pending() const { return expected_.size(); }

  int messageBox(HWND owner, const CString& text, const CString& caption, UINT flags) override;
  std::vector<CString> chooseFiles(HWND owner, const FileChoice& choice) override;
  std::optional<CString> chooseFolder(HWND owner, const CString& title, const CString& start) override;
  int popupMenu(const std::vector<MenuItem>& items, const Dialog* dialog, int controlId) override;
  int open(const ShellRequest& request) override;

  static constexpr std::chrono::seconds kBusyLimit{60};  ///< how long a busy dialog may take

 protected:
  void show(Dialog& dialog, HWND owner) override;

 private:
  struct Expected {
    Shown::Kind kind;
    CString text;
    int number = 0;
    Actions actions;
    std::vector<CString> names;
  };
  /// Records what is shown and takes the next expectation if it is of that kind.
  std::optional<Expected> take(Shown shown);
  void fail(const std::string& what);

  Failure onFailure_;
  std::deque<Expected> expected_;
  std::vector<Shown> shown_;
};

}  // namespace platform
