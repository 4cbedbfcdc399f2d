#pragma once
// Dialogs, messages and menus as text boxes.
//
//   ┌─ Backup ────────────────────────────┐
//   │ Interval:  6005= 30 (1-30)          │   a number in front can be asked for: text of 6005
//   │ 6007 [x] All drawings               │   check box; (o) and ( ) are radio buttons
//   │ 1 <Start>  (Stop)  2 [Close]        │   <default>, (not available), [button]
//   └─────────────────────────────────────┘
#include <string>

#include "platform/ui/user_interface.h"

namespace platform {

inline constexpr int kTextBoxWidth = 96;  ///< columns; long texts are wrapped to it
inline constexpr int kShownRows = 20;     ///< of a list or grid; the rest is counted

/// Each ends with a line end.
std::wstring renderBox(std::wstring_view title, const std::vector<std::wstring>& lines);
std::wstring renderDialog(const DialogTemplate& dialog);
std::wstring renderMenu(const std::vector<MenuItem>& items);
/// One line without an end: the bar of the first progress control that is shown, or "".
std::wstring renderProgress(const DialogTemplate& dialog);

/// A label without its mnemonic sign, dots and colon at the end: what a user types to name it.
CString plainLabel(const CString& label);

}  // namespace platform
