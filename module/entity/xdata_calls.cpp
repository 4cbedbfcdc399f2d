// Applications, and extended data of all of them at once.
#include "host/database/database.h"
#include "host/database/services.h"
#include "host/editor/editor.h"
#include "module/entity/xdata.h"
#include "module/toolkit/rbchains.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr int kApplicationCode = 1001;
constexpr unsigned int kNotRegisteredMessage = 1031;
constexpr int kMessageLength = 256;

/// The applications that have data on an object, in order.
std::vector<CString> applicationsOf(const KvDbObject& object) {
  std::vector<CString> names;
  resbuf* all = object.xData(nullptr);
  for (const resbuf* node = all; node; node = node->rbnext)
    if (node->restype == kApplicationCode) names.emplace_back(node->resval.rstring);
  kvutRelRb(all);
  return names;
}

/// Writes back the data of the applications that stay, and empty entries for the others.
template <class Goes>
int rewrite(KvDbObjectId id, Goes goes) {
  KvDbObject* object = nullptr;
  if (kvdbOpenObject(object, id, KvDb::kForWrite) != Kvad::eOk) return 0;
  resbuf *head = nullptr, *tail = nullptr;
  for (const CString& name : applicationsOf(*object)) {
    resbuf* part = goes(name) ? kvutBuildList(kApplicationCode, name, 0) : object->xData(name);
    resbuf* end = IM_AddRbToTail(tail ? tail : part, tail ? part : nullptr);
    if (!head) head = part;
    tail = end;
  }
  const Kvad::ErrorStatus status = object->setXData(head);
  kvutRelRb(head);
  object->close();
  return status == Kvad::eOk;
}

}  // namespace

int RegisterApp(CString name) {
  if (resbuf* record = kvdbTblSearch(L"APPID", name, 0)) {
    kvutRelRb(record);
    return 1;
  }
  if (kvdbRegApp(name) == RTNORM) return 1;
  kvutPrintf(IM_GetStringFromRc(kNotRegisteredMessage, kMessageLength), name);
  return 0;
}

int IM_DeleteXData(KvDbObjectId id, CString appName) {
  return rewrite(id, [&](const CString& name) { return name.CompareNoCase(appName) == 0; });
}

int IM_DeleteAllXDatas(KvDbObjectId id) {
  return rewrite(id, [](const CString&) { return true; });
}

void IM_GetPersistentReactors(KvDbObject* obj, KvArray<KvDbObjectId>& ids) {
  auto* service = static_cast<KvDbReactorService*>(kvrxGetService(kKvReactorService));
  if (service) service->persistentReactors(obj, ids);
}
