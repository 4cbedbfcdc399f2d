#include "platform/system/folders.h"

#include "platform/env/environment.h"
#include "platform/files/paths.h"

namespace platform {

CString temporaryFolder() {
  return fromNative(Environment::current().temporaryFolder);
}

CString sharedDocuments() {
  const Environment& environment = Environment::current();
  return fromNative(environment.sharedDocuments.empty() ? environment.dataRoot : environment.sharedDocuments);
}

CString userDataFolder() {
  return fromNative(Environment::current().dataRoot);
}

CString userSettingsFolder() {
  return fromNative(Environment::current().settingsRoot);
}

}  // namespace platform
