#pragma once
// Base of the module's dialogs: a template in the language of the product, shown by whichever front end is
// there.
#include "module/core/export.h"
#include "platform/ui/user_interface.h"

class MEK_API CImUiDialog : public platform::Dialog {
 public:
  /// The template's texts are translated as the controls are made.
  explicit CImUiDialog(platform::DialogTemplate from);
  /// Runs until it ends, owned by the host's main window; the number of the button that ended it.
  int DoModal();
};
