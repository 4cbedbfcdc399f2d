#include "module/core/module_resources.h"

#include "module/core/paths.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr const wchar_t* kModuleName = L"MEKCORE";

struct ModuleRecord {
  void* instance = nullptr;
  void* selected = nullptr;
  ImLangModule* language = nullptr;
};

ModuleRecord& record() {
  static ModuleRecord own;
  return own;
}

}  // namespace

void mek::attachResources(void* instance) {
  if (!record().instance) record().instance = instance;
}

void mek::detachResources() {
  record() = ModuleRecord();
}

void* mek::moduleInstance() {
  return record().instance;
}

CString mek::pictureFile(int resource) {
  CString root, name;
  IM_GetSysPath(root);
  name.Format(L"share\\korvane\\resources\\MekCore\\%d.png", resource);
  return joinPath(root, name);
}

IcUtPushResource::IcUtPushResource()
    : previousInstance_(record().selected), previousLanguage_(g_pCurModuleLang) {
  record().selected = record().instance;
  if (!record().language && g_pIAecLangSwitch) record().language = g_pIAecLangSwitch->FindModule(kModuleName);
  g_pCurModuleLang = record().language;
}

IcUtPushResource::~IcUtPushResource() {
  record().selected = previousInstance_;
  g_pCurModuleLang = previousLanguage_;
}

void* IcUtPushResource::current() {
  return record().selected;
}
