#include "host/app/internal/module_loader.h"

#include <algorithm>

#include "host/app/hostapp.h"

namespace kvapp {
namespace {

constexpr unsigned int kInitMessage = 1;
constexpr unsigned int kUnloadMessage = 2;
constexpr unsigned int kDrawingLoadedMessage = 3;

/// The name by which a module is known, whatever path it came from.
CString baseName(const CString& path) {
  const int separator = std::max(path.ReverseFind(L'\\'), path.ReverseFind(L'/'));
  return path.Mid(separator + 1);
}

}  // namespace

bool ModuleLoader::unlockApplication(void* applicationHandle) {
  Module* module = fromHandle(applicationHandle);
  if (module) module->mayBeUnloaded = true;
  return module != nullptr;
}

bool ModuleLoader::registerAppMDIAware(void* applicationHandle) {
  Module* module = fromHandle(applicationHandle);
  if (module) module->worksWithSeveralDrawings = true;
  return module != nullptr;
}

bool ModuleLoader::load(const CString& name, bool& isNew, CString& error) {
  isNew = false;
  if (find(name)) return true;
  auto module = std::make_unique<Module>();
  module->name = baseName(name);
  std::string reason;
  module->library = platform::DynamicLibrary::load(name, &reason);
  if (!module->library) {
    error.Format(L"module %s: %S", name, reason);
    return false;
  }
  module->entryPoint = module->library.function<EntryPoint>("kvrxEntryPoint");
  auto* apiVersion = module->library.function<ApiVersion>("kvrxGetApiVersion");
  if (!module->entryPoint || !apiVersion) {
    error.Format(L"Module %s cannot be loaded: it has no %S.", name,
                 module->entryPoint ? "kvrxGetApiVersion" : "kvrxEntryPoint");
    return false;
  }
  if (const int version = apiVersion(); version != kKvHostApiVersion) {
    error.Format(
        L"Module %s cannot be loaded: it was made for version %d of the host's interface, this is version "
        L"%d.",
        name, version, kKvHostApiVersion);
    return false;
  }
  modules_.push_back(std::move(module));
  isNew = true;
  Module* loaded = modules_.back().get();
  loaded->entryPoint(kInitMessage, loaded);
  return true;
}

bool ModuleLoader::unload(const CString& name) {
  Module* module = find(name);
  if (!module) return false;
  module->entryPoint(kUnloadMessage, module);
  std::erase_if(modules_, [&](const auto& one) { return one.get() == module; });
  return true;
}

void ModuleLoader::unloadAll() {
  // In reverse, so that a module outlives those that were loaded on top of it.
  while (!modules_.empty()) unload(modules_.back()->name);
}

std::vector<CString> ModuleLoader::names() const {
  std::vector<CString> list;
  for (const auto& module : modules_) list.push_back(module->name);
  return list;
}

void ModuleLoader::tellDrawingLoaded() {
  for (const auto& module : modules_) module->entryPoint(kDrawingLoadedMessage, nullptr);
}

void ModuleLoader::tellNewestDrawingLoaded() {
  modules_.back()->entryPoint(kDrawingLoadedMessage, nullptr);
}

ModuleLoader::Module* ModuleLoader::find(const CString& name) {
  const CString wanted = baseName(name);
  for (const auto& module : modules_)
    if (module->name.CompareNoCase(wanted) == 0) return module.get();
  return nullptr;
}

ModuleLoader::Module* ModuleLoader::fromHandle(void* applicationHandle) {
  for (const auto& module : modules_)
    if (module.get() == applicationHandle) return module.get();
  return nullptr;
}

}  // namespace kvapp
