// The module's globals, in the order in which they need one another, and the calls that read them.
#include "platform/files/paths.h"
#include "siblings/resources/internal/tree.h"
#include "siblings/resources/mekres.h"

namespace {

std::unique_ptr<ImLangSwitchManager> madeTables() {
  return std::make_unique<ImLangSwitchManager>();
}

}  // namespace

IM_PDTID g_eProductType = IM_PDT_KORVANE;
int g_eSoftLanguage = mekres::chosenLanguage();
static const std::unique_ptr<ImLangSwitchManager> kTables = madeTables();
ImLangSwitchManager* g_pIAecLangSwitch = kTables.get();
ImLangModule* g_pCurModuleLang = nullptr;

CString IM_GetStringFromRc(unsigned int id, int maximumLength) {
  if (!g_pIAecLangSwitch || maximumLength <= 0) return CString();
  return g_pIAecLangSwitch->ImLangString(id).Left(maximumLength - 1);
}

std::shared_ptr<IXMLDOMDocument> IM_LoadXmlFromFile(CString path) {
  return path.IsEmpty() ? nullptr : platform::loadXml(platform::toNative(path));
}
