#pragma once
// The registry of named services, and the one service that stands in it for modules: the dynamic linker.
#include <map>

#include "host/base/rxclass.h"
#include "platform/text/cstring.h"

/// Named objects, not owned. Names compare exactly.
class KvRxDictionary : public KvRxObject {
  KVRX_DECLARE(KvRxDictionary)
 public:
  /// Null when there is none.
  KvRxObject* at(const wchar_t* name) const;
  /// Replaces an object of the same name; null removes it.
  void atPut(const wchar_t* name, KvRxObject* object);

 private:
  std::map<CString, KvRxObject*> objects_;
};

/// What a module may tell of itself while it answers the initialisation message.
class KvRxDynamicLinker : public KvRxObject {
  KVRX_DECLARE(KvRxDynamicLinker)
 public:
  /// The module may be unloaded whenever the user asks. `applicationHandle` is the one of the message.
  virtual bool unlockApplication(void* applicationHandle) = 0;
  /// The module works with several open drawings; without this call the host keeps to one.
  virtual bool registerAppMDIAware(void* applicationHandle) = 0;
};

/// The current host's registry. It holds "DynamicLinker" and "ACRX_REGISTERED_COMMANDS". Never null: without
/// a host it is empty.
KvRxDictionary* kvrxSysRegistry();

/// Names the resources of a module. An empty value is enough for this host.
class KvRxResourceInstance {};
