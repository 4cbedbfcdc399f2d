#include "module/core/entry.h"

#include <cstdlib>
#include <ctime>

#include "host/base/resbuf.h"
#include "host/base/rxdictionary.h"
#include "host/database/database.h"
#include "host/editor/commandstack.h"
#include "host/editor/editor.h"
#include "host/editor/sysvars.h"
#include "module/core/app_names.h"
#include "module/core/commands.h"
#include "module/core/module_resources.h"
#include "module/core/paths.h"
#include "module/core/translate.h"
#include "platform/system/dynamic_library.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr unsigned int kInitMessage = 1;
constexpr unsigned int kUnloadMessage = 2;
constexpr unsigned int kDrawingLoadedMessage = 3;
constexpr int kMessageLength = 256;
constexpr unsigned int kBannerMessage = 1000;
constexpr std::int16_t kQuietExpert = 5;

/// EXPERT stays at this value until the host ends, on purpose.
void quietPrompts() {
  resbuf value{};
  if (kvedGetVar(L"EXPERT", &value) != RTNORM || value.restype != RTSHORT) return;
  value.resval.rint = kQuietExpert;
  kvedSetVar(L"EXPERT", &value);
}

void startModule(void* applicationHandle) {
  if (auto* linker = KvRxDynamicLinker::cast(kvrxSysRegistry()->at(L"DynamicLinker"))) {
    linker->unlockApplication(applicationHandle);
    linker->registerAppMDIAware(applicationHandle);
  }
  mek::registerCommands();
  IM_TranslateGenMsg();
  mek::prepareUserFolder();
  quietPrompts();
  std::srand(static_cast<unsigned int>(std::time(nullptr)));
}

void stopModule() {
  mek::unregisterCommands();
  mek::releaseTranslations();
}

/// No undo recording for its own lifetime, whatever ends it. A null drawing is allowed.
class WithoutUndo {
 public:
  explicit WithoutUndo(KvDbDatabase* database) : database_(database) {
    if (database_) database_->disableUndoRecording(true);
  }
  ~WithoutUndo() {
    if (database_) database_->disableUndoRecording(false);
  }
  WithoutUndo(const WithoutUndo&) = delete;
  WithoutUndo& operator=(const WithoutUndo&) = delete;

 private:
  KvDbDatabase* database_;
};

/// Loading a drawing leaves neither an undo step nor a changed mark behind, although names are added to it.
/// Undo recording is on again before the mark is cleared.
void prepareDrawing() {
  {
    const WithoutUndo guard(kvdbHostApplicationServices()->workingDatabase());
    kvutPrintf(L"%s", IM_GetStringFromRc(kBannerMessage, kMessageLength));
    for (IM_APPLICATION app = 0; app <= kApplicationCount; ++app) IM_GetAppName(app, 0);
  }
  IM_SetDbModZero();
}

}  // namespace

std::int64_t kvrxEntryPoint(unsigned int message, void* applicationHandle) {
  try {
    switch (message) {
      case kInitMessage:
        startModule(applicationHandle);
        break;
      case kUnloadMessage:
        stopModule();
        break;
      case kDrawingLoadedMessage:
        prepareDrawing();
        break;
      default:
        break;
    }
  } catch (...) {
    // The host never learns of a failure, by contract.
  }
  return 0;
}

int kvrxGetApiVersion() {
  const auto host = platform::DynamicLibrary::load(L"kvbr.kdx");
  if (!host) return 0;
  auto* function = host.function<int()>("kvrxGetApiVersion");
  return function ? function() : 0;
}

int MekCoreLibraryMain(void* instance, unsigned int reason) {
  constexpr unsigned int kDetach = 0, kAttach = 1;
  if (reason == kAttach) mek::attachResources(instance);
  if (reason == kDetach) mek::detachResources();
  return 1;
}

namespace {

/// The loader's own attach and detach.
struct LibraryLife {
  LibraryLife() { MekCoreLibraryMain(reinterpret_cast<void*>(&kvrxEntryPoint), 1); }
  ~LibraryLife() { MekCoreLibraryMain(reinterpret_cast<void*>(&kvrxEntryPoint), 0); }
};
const LibraryLife kLibraryLife;

}  // namespace
