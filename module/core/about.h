#pragma once
// The About box.
#include "module/core/im_ui_dialog.h"

namespace mek {

/// Dialog 5500: a picture by edition (5523), six lines (5510 to 5515), the build number among them.
class CAboutMekDlg : public CImUiDialog {
 public:
  CAboutMekDlg();

 protected:
  void onInit() override;
};

}  // namespace mek
