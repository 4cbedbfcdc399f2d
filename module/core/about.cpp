#include "module/core/about.h"

#include <vector>

#include "module/core/commands.h"
#include "module/core/module_resources.h"
#include "module/core/paths.h"
#include "module/core/settings.h"
#include "platform/files/paths.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kDialog = 5500;
constexpr int kFirstLine = 5510, kLastLine = 5515;
constexpr int kPicture = 5523;
constexpr int kConfiguredLines = 4;
constexpr unsigned long kBuildNumberSize = 256;

/// The picture of each edition; those of 0 and 1 are crossed on purpose.
constexpr int kPictures[] = {5530, 5529, 5531, 5532, 5533, 5534};

platform::DialogTemplate aboutTemplate() {
  using platform::ControlKind;
  constexpr int kWidth = 260, kLineHeight = 11, kTop = 92, kPictureHeight = 80;
  platform::DialogTemplate dialog;
  dialog.id = kDialog;
  dialog.width = kWidth;
  dialog.height = kTop + kLineHeight * 8;
  dialog.controls.push_back({.kind = ControlKind::Picture,
                             .id = kPicture,
                             .text = {},
                             .rect = platform::DialogRect{10, 6, kWidth - 20, kPictureHeight}});
  for (int id = kFirstLine; id <= kLastLine; ++id)
    dialog.controls.push_back(
        {.kind = ControlKind::Static,
         .id = id,
         .text = {},
         .rect = platform::DialogRect{10, kTop + kLineHeight * (id - kFirstLine), kWidth - 20, kLineHeight}});
  dialog.controls.push_back({.kind = ControlKind::Button,
                             .id = platform::kIdOk,
                             .text = L"确定",
                             .rect = platform::DialogRect{kWidth - 60, kTop + kLineHeight * 6 + 4, 50, 14},
                             .isDefault = true});
  return dialog;
}

CString buildText() {
  CString root;
  IM_GetSysPath(root);
  const CString number =
      IM_GetPrivateProfileString(L"Product", L"SubVer", L"", root + L"\\Common\\IAec.ini", kBuildNumberSize);
  return number.IsEmpty() ? CString() : L"BUILD " + number;
}

}  // namespace

mek::CAboutMekDlg::CAboutMekDlg() : CImUiDialog(aboutTemplate()) {}

void mek::CAboutMekDlg::onInit() {
  CImUiDialog::onInit();
  if (g_eProductType >= 0 && g_eProductType < static_cast<int>(std::size(kPictures)))
    setPicture(kPicture, platform::toNative(pictureFile(kPictures[g_eProductType])), L"Korvane Mechanical");

  // An empty product line doesn't end the list, an empty one of the four does.
  std::vector<CString> lines{IM_GetSystemSettingString(L"About", L"Product", L"")};
  for (int number = 1; number <= kConfiguredLines; ++number) {
    CString key;
    key.Format(L"Line%d", number);
    const CString line = IM_GetSystemSettingString(L"About", key, L"");
    if (line.IsEmpty()) break;
    lines.push_back(line);
  }
  lines.push_back(buildText());
  int id = kFirstLine;
  for (const CString& line : lines)
    if (id <= kLastLine) setItemText(id++, line);
  setTitle(IM_GetSystemSettingString(L"About", L"Title", L""));
}

void mek::aboutCommand() {
  const IcUtPushResource resources;
  CAboutMekDlg().DoModal();
}
