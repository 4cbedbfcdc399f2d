#pragma once
// Editing a part of a drawing in its place: while that lasts, the part's entities are a work set. This host
// starts no such edit itself; who does (a front end, a module) installs a manager that tells of it.
#include "host/app/document.h"
#include "host/database/dbobject.h"

/// One edit that lasts.
class KvDbLongTransaction : public KvDbObject {
  KVRX_DECLARE(KvDbLongTransaction)
 public:
  void addToWorkSet(KvDbObjectId id) { workSet_.append(id); }
  /// With `includeErased` also of those that were erased meanwhile.
  bool workSetHas(KvDbObjectId id, bool includeErased) const;

 private:
  KvDbObjectIdArray workSet_;
};

class KvApLongTransactionManager {
 public:
  virtual ~KvApLongTransactionManager() = default;
  /// The edit that lasts in a document; a null id when there is none.
  virtual Kvad::ErrorStatus currentLongTransactionFor(const KvApDocument* document, KvDbObjectId& id) = 0;
};

/// The installed manager; null when there is none.
KvApLongTransactionManager* kvapLongTransactionManagerPtr();
/// Not owned; null takes it away again.
void kvapInstallLongTransactionManager(KvApLongTransactionManager* manager);
