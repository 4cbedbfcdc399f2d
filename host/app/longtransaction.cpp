#include "host/app/longtransaction.h"

#include "host/base/context.h"

KVRX_DEFINE_ABSTRACT(KvDbLongTransaction, KvDbObject)

bool KvDbLongTransaction::workSetHas(KvDbObjectId id, bool includeErased) const {
  return !id.isNull() && workSet_.contains(id) && (includeErased || !id.isErased());
}

KvApLongTransactionManager* kvapLongTransactionManagerPtr() {
  return KvHostContext::current().longTransactions;
}

void kvapInstallLongTransactionManager(KvApLongTransactionManager* manager) {
  KvHostContext::current().longTransactions = manager;
}
