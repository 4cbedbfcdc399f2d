#include "host/base/rxdictionary.h"

#include "host/base/context.h"

KVRX_DEFINE_ABSTRACT(KvRxDictionary, KvRxObject)
KVRX_DEFINE_ABSTRACT(KvRxDynamicLinker, KvRxObject)

KvRxObject* KvRxDictionary::at(const wchar_t* name) const {
  auto found = objects_.find(CString(name));
  return found == objects_.end() ? nullptr : found->second;
}

void KvRxDictionary::atPut(const wchar_t* name, KvRxObject* object) {
  if (object)
    objects_[CString(name)] = object;
  else
    objects_.erase(CString(name));
}

KvRxDictionary* kvrxSysRegistry() {
  static KvRxDictionary empty;
  KvRxDictionary* registry = KvHostContext::current().registry;
  return registry ? registry : &empty;
}
