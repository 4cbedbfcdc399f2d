#include "host/base/rxclass.h"

#include <map>

namespace {

using Index = std::map<std::wstring_view, const KvRxClass*>;

// Filled while the library is loaded and never changed afterwards by anything but the loading of a module.
Index& byDxfName() {
  static Index index;
  return index;
}

Index& byName() {
  static Index index;
  return index;
}

const KvRxClass* find(const Index& index, std::wstring_view name) {
  auto found = index.find(name);
  return found == index.end() ? nullptr : found->second;
}

}  // namespace

KvRxClass::KvRxClass(const wchar_t* name, const KvRxClass* base, const wchar_t* dxfName, Factory factory)
    : name_(name), base_(base), dxfName_(dxfName), create_(factory) {
  byName().emplace(name, this);
  if (*dxfName) byDxfName().emplace(dxfName, this);
}

bool KvRxClass::isDerivedFrom(const KvRxClass* other) const {
  for (const KvRxClass* at = this; at; at = at->base_)
    if (at == other) return true;
  return false;
}

const KvRxClass* KvRxClass::findByDxfName(std::wstring_view dxfName) {
  return find(byDxfName(), dxfName);
}
const KvRxClass* KvRxClass::findByName(std::wstring_view name) {
  return find(byName(), name);
}

const KvRxClass* KvRxObject::desc() {
  static const KvRxClass own(L"KvRxObject", nullptr);
  return &own;
}
