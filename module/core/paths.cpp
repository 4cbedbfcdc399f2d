#include "module/core/paths.h"

#include "host/base/resbuf.h"
#include "host/editor/sysvars.h"
#include "module/core/files.h"
#include "module/core/host_values.h"
#include "module/core/names.h"
#include "module/core/settings.h"
#include "module/core/text.h"
#include "platform/files/files.h"
#include "platform/system/dynamic_library.h"
#include "platform/system/folders.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kLongestModuleName = 260;
constexpr const wchar_t* kFallbackRoot = L"D:\\Korvane";
constexpr const wchar_t* kUserTail = L"\\Korvm\\MCADSetting";
constexpr const wchar_t* kTemplates[] = {L"PowerdimPredefine.dat", L"PublicSymbol.ini"};

/// Where an edition keeps its public documents.
struct Brand {
  IM_PDTID type;
  const wchar_t *vendorFolder, *productName, *shortFolder;
};

constexpr Brand kBrands[] = {
    {IM_PDT_KORVANE, L"Korvane", L"Korvane", L"KORVM"},
    {IM_PDT_OEM1, L"Edition1", L"Edition 1", L"EDITION1"},
    {IM_PDT_OEM2, L"Edition2", L"Edition 2", L"EDITION2"},
    {IM_PDT_OEM3, L"Edition3", L"Edition 3", L"EDITION3"},
    {IM_PDT_OEM4, L"Edition4", L"Edition 4", L"EDITION4"},
    {IM_PDT_OEM5, L"Edition5", L"Edition 5", L"EDITION5"},
};

/// The user's settings root without one trailing `\`; false when the host refuses it.
bool userRoot(CString& root) {
  if (!mek::readTextVariable(L"ROAMABLEROOTPREFIX", root)) return false;
  root = IM_TrimRight(root, L"\\", 0);
  return true;
}

}  // namespace

int IM_GetSysPath(CString& out) {
  out.Empty();
  const CString fileName = platform::moduleFileOf(reinterpret_cast<const void*>(&IM_GetSysPath));
  if (fileName.IsEmpty() || fileName.GetLength() > kLongestModuleName) return 0;
  out = mek::rootOfModuleFile(fileName);
  return 1;
}

CString mek::rootOfModuleFile(CString fileName) {
  for (int part = 0; part < 3; ++part) fileName = ImFileName::GetFilePath(fileName, 0);
  return fileName;
}

CString IM_GetSysSettingPath() {
  CString root;
  return IM_GetSysPath(root) ? root + L"\\MCADSetting" : CString(kFallbackRoot);
}

CString IM_GetLocalSettingPath() {
  CString root;
  return (userRoot(root) ? root : CString(kFallbackRoot)) + kUserTail;
}

CString IM_GetPublicDocumentPath() {
  const CString version = IM_GetSystemSettingString(L"About", L"Version", L"");
  CString folder = platform::sharedDocuments();
  if (folder.IsEmpty())
    folder = L"C:\\Users\\Public\\Documents";
  else
    folder.TrimRight(L'\\');
  for (const Brand& brand : kBrands) {
    if (brand.type != g_eProductType) continue;
    CString tail;
    tail.Format(L"\\%s\\%s Mechanical %s\\%s", brand.vendorFolder, brand.productName, version,
                brand.shortFolder);
    return folder + tail;
  }
  return CString();
}

CString IM_GetRegSysPath() {
  CString path = L"SOFTWARE\\Korvasoft";
  for (const wchar_t* key : {L"PRODUCT", L"VERSION", L"LANGUAGE"})
    path += L"\\" + IM_GetSystemSettingString(L"Config", key, L"");
  return path;
}

CString IM_GetSystemSettingXML() {
  CString root;
  IM_GetSysPath(root);
  return mek::joinPath(root, L"StartupConfig.xml");
}

CString mek::joinPath(CString first, CString second) {
  return first.TrimRight(L'\\') + L"\\" + second.TrimLeft(L'\\');
}

CString mek::IM_GetProSettingPath() {
  return IM_GetLocalSettingPath() + L"\\pro\\";
}

CString mek::IM_GetTranslatorPath() {
  CString root;
  IM_GetSysPath(root);
  return root + L"\\Translator\\";
}

void mek::prepareUserFolder() {
  CString folder;
  if (!userRoot(folder)) return;
  for (const wchar_t* level : {L"\\Korvm", L"\\MCADSetting", L"\\pro"}) {
    folder += level;
    if (!platform::isFolder(folder)) platform::createFolder(folder);
  }
  for (const wchar_t* name : kTemplates) {
    const CString target = folder + L"\\" + name;
    if (!IM_IsFileExist(target))
      platform::copyFile(IM_GetSysSettingPath() + L"\\pro\\" + name, target, false);
  }
}
