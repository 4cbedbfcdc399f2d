#pragma once
// A dialog: the state of its controls and the handlers of its events. Which front end shows it, it never
// knows.
//
// A handler runs on the main thread, one at a time. A worker thread reaches the dialog by post() and invoke()
// only.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

#include "platform/system/timers.h"
#include "platform/ui/control.h"

namespace platform {

inline constexpr int kIdOk = 1;
inline constexpr int kIdCancel = 2;

/// What became of something the user did.
enum class UserAction {
  Done,
  NoControl,  ///< no control of that id is shown
  Disabled,
  WrongKind,  ///< the control has no such action
  Refused,    ///< the control takes no such text or index
};

class Dialog {
 public:
  explicit Dialog(DialogTemplate from);
  virtual ~Dialog();
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  int id() const { return template_.id; }
  const CString& title() const { return template_.title; }
  void setTitle(const CString& title) { template_.title = title; }
  const DialogTemplate& state() const { return template_; }
  const Control* control(int id) const;  ///< null when there is none

  // Setters answer false, and getters an empty value, when no control has the id.
  bool setItemText(int id, const CString& text);
  CString getItemText(int id) const;
  int getItemInt(int id) const;  ///< the number that the text begins with
  bool setEnabled(int id, bool enabled);
  bool isEnabled(int id) const;
  bool setVisible(int id, bool visible);
  bool setChecked(int id, bool checked);  ///< checking a radio button clears the others of its group
  bool isChecked(int id) const;
  bool setPicture(int id, const std::filesystem::path& file, const CString& inWords);
  bool setRange(int id, int minimum, int maximum);    ///< brings the position into the range
  bool setPosition(int id, int position);             ///< within the range; a spin writes it into its buddy
  int position(int id) const;                         ///< a spin reads its buddy
  bool setItems(int id, std::vector<CString> items);  ///< nothing is selected afterwards
  int addItem(int id, const CString& text);           ///< the new item's index; -1 when no control has the id
  bool removeItem(int id, int index);
  std::vector<CString> items(int id) const;
  bool setSelected(int id, std::vector<int> indices);
  std::vector<int> selected(int id) const;
  bool setGrid(int id, std::vector<CString> columns, std::vector<std::vector<CString>> rows);
  bool setCell(int id, int row, int column, const CString& text);  ///< false outside the grid
  CString cell(int id, int row, int column) const;

  /// Closes the dialog once the running handler has returned.
  void endDialog(int result);
  bool ended() const { return ended_; }
  int result() const { return result_; }

  /// A timer that calls onTimer on the environment's timer queue while the dialog is open; false when there
  /// is no queue.
  bool setTimer(int id, std::chrono::milliseconds period);
  void killTimer(int id);

  /// Any thread: onMessage is called, or `action` run, on the main thread as soon as the dialog is attended
  /// to.
  void post(unsigned message, std::uintptr_t first, std::intptr_t second);
  void invoke(std::function<void()> action);

  // What a user does; the front ends' side. Enabled, visible controls only.
  UserAction userPress(int id);  ///< a button, a check box (toggles first), a radio button (set first)
  UserAction userType(int id, const CString& text);         ///< an edit, a combo
  UserAction userSelect(int id, std::vector<int> indices);  ///< a list, a grid, a combo
  UserAction userStep(int id, int steps);                   ///< a spin
  UserAction userEditCell(int id, int row, int column, const CString& text);
  void userClose();  ///< the cross of the window, the escape key, the end of the input

  // The life of a modal run; the front ends' side.
  void begin();   ///< forgets the last run's end and calls onInit
  void finish();  ///< ends the timers, drops what is still posted
  /// Fires due timers, then handles what is posted; waits at most `wait` for the first of it. True when
  /// anything was done.
  bool pump(std::chrono::milliseconds wait);
  /// True while work goes on that the user can only watch or cancel: front ends then don't wait for input
  /// without end.
  virtual bool isBusy() const { return false; }

 protected:
  virtual void onInit() {}
  /// A button, check box or radio button was pressed, or a menu command chosen. By default OK and Cancel end
  /// the dialog.
  virtual void onCommand(int id);
  virtual void onChanged(int /*id*/) {}  ///< text, selection, position or cell, by the user
  virtual void onTimer(int /*id*/) {}
  virtual void onClose() { endDialog(kIdCancel); }
  virtual void onMessage(unsigned /*message*/, std::uintptr_t /*first*/, std::intptr_t /*second*/) {}

 private:
  Control* find(int id);
  Control* forUser(int id, UserAction& answer);
  void check(Control& control, bool checked);

  DialogTemplate template_;
  bool ended_ = false;
  int result_ = 0;
  std::map<int, TimerQueue::Id> timers_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::function<void()>> posted_;
};

}  // namespace platform
