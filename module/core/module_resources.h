#pragma once
// The module's own resources (pictures, dialog texts), and their selection for the time of a command.
#include "module/core/export.h"
#include "platform/text/cstring.h"

struct ImLangModule;

namespace mek {

/// Remembers the module's instance; a second call does nothing.
void attachResources(void* instance);
void detachResources();
/// The instance, or null while the library is detached.
void* moduleInstance();
/// The path of a "PNG" resource by number, in the product's path form.
CString pictureFile(int resource);

}  // namespace mek

/// Selects the module's resources and its language table for its own lifetime, and gives the old ones back.
class MEK_API IcUtPushResource {
 public:
  IcUtPushResource();
  ~IcUtPushResource();
  IcUtPushResource(const IcUtPushResource&) = delete;
  IcUtPushResource& operator=(const IcUtPushResource&) = delete;

  /// The instance whose resources are selected now.
  static void* current();

 private:
  void* previousInstance_;
  ImLangModule* previousLanguage_;
};
