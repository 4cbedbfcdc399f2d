#pragma once
// Loading of modules (`.kvx`), and the messages that they get.
#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/rxdictionary.h"
#include "platform/system/dynamic_library.h"

namespace kvapp {

class ModuleLoader : public KvRxDynamicLinker {
 public:
  bool unlockApplication(void* applicationHandle) override;
  bool registerAppMDIAware(void* applicationHandle) override;

  /// See KvHostApp::loadModule; `isNew` is false for a module that was loaded already.
  bool load(const CString& name, bool& isNew, CString& error);
  bool unload(const CString& name);
  void unloadAll();
  std::vector<CString> names() const;
  void tellDrawingLoaded();
  void tellNewestDrawingLoaded();

 private:
  using EntryPoint = std::int64_t(unsigned int message, void* applicationHandle);
  using ApiVersion = int();
  struct Module {
    CString name;
    platform::DynamicLibrary library;
    EntryPoint* entryPoint = nullptr;
    bool mayBeUnloaded = false;
    bool worksWithSeveralDrawings = false;
  };
  Module* find(const CString& name);
  Module* fromHandle(void* applicationHandle);

  std::vector<std::unique_ptr<Module>> modules_;
};

}  // namespace kvapp
