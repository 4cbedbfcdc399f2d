#include "module/core/im_ui_dialog.h"

#include "host/app/hostapp.h"
#include "siblings/resources/mekres.h"

namespace {

platform::DialogTemplate inProductLanguage(platform::DialogTemplate from) {
  if (g_pIAecLangSwitch) g_pIAecLangSwitch->ImLangDialog(&from);
  return from;
}

}  // namespace

CImUiDialog::CImUiDialog(platform::DialogTemplate from)
    : platform::Dialog(inProductLanguage(std::move(from))) {}

int CImUiDialog::DoModal() {
  return platform::userInterface().runModal(*this, static_cast<HWND>(kdsw_kvadMainWnd()));
}
