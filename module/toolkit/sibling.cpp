#include "module/toolkit/sibling.h"

#include "module/core/paths.h"

namespace mek {
namespace {

constexpr const wchar_t* kFile = L"KmSymbb.kvx";
constexpr const wchar_t* kFolder = L"\\Professional\\KVX8x64\\";

CString nameOf(SiblingLoad load) {
  if (load == SiblingLoad::Bare) return kFile;
  CString root;
  IM_GetSysPath(root);
  return root + kFolder + kFile;
}

}  // namespace

SymbolModule::SymbolModule(SiblingLoad load) : module_(LoadLibraryW(nameOf(load))) {}

SymbolModule::~SymbolModule() {
  if (module_) FreeLibrary(module_);
}

void* SymbolModule::find(const char* name) const {
  return module_ ? GetProcAddress(module_, name) : nullptr;
}

}  // namespace mek
