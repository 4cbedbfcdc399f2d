#include "module/toolkit/guards.h"

#include <cstdlib>

#include "host/app/document.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/editor/editor.h"
#include "host/editor/selection.h"
#include "host/editor/sysvars.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "module/core/app_names.h"
#include "module/core/host_values.h"

// --- Variables

ImSetSysVar::ImSetSysVar(LPCWSTR name, int value, int restore) : m_bRestore(restore != 0) {
  resbuf node{};
  node.restype = RTSHORT;
  node.resval.rint = static_cast<short>(value);
  if (Keep(name, RTSHORT, RTSHORT)) Set(node);
}

ImSetSysVar::ImSetSysVar(LPCWSTR name, double value, int restore) : m_bRestore(restore != 0) {
  resbuf node{};
  node.restype = RTREAL;
  node.resval.rreal = value;
  if (Keep(name, RTREAL, RTREAL)) Set(node);
}

ImSetSysVar::ImSetSysVar(LPCWSTR name, double* const value, int restore) : m_bRestore(restore != 0) {
  if (!value || !Keep(name, RTPOINT, RT3DPOINT)) return;
  resbuf node{};
  node.restype = m_rbSaved.restype;
  const int count = node.restype == RTPOINT ? 2 : 3;
  for (int i = 0; i < count; ++i) node.resval.rpoint[i] = value[i];
  Set(node);
}

ImSetSysVar::ImSetSysVar(LPCWSTR name, LPCWSTR value, int restore) : m_bRestore(restore != 0) {
  if (!value || !Keep(name, RTSTR, RTSTR)) return;
  resbuf node{};
  node.restype = RTSTR;
  node.resval.rstring = const_cast<wchar_t*>(value);
  Set(node);
}

bool ImSetSysVar::Keep(LPCWSTR name, int type, int otherType) {
  if (!name || kvedGetVar(name, &m_rbSaved) != RTNORM) return false;
  m_strName = name;
  m_bOwnsText = m_rbSaved.restype == RTSTR;
  return m_rbSaved.restype == type || m_rbSaved.restype == otherType;
}

void ImSetSysVar::Set(const resbuf& value) {
  m_bValid = kvedSetVar(m_strName, &value) == RTNORM;
}

int ImSetSysVar::Restore() {
  if (!m_bValid || m_bRestored) return 0;
  m_bRestored = true;
  kvedSetVar(m_strName, &m_rbSaved);
  return 1;
}

ImSetSysVar::~ImSetSysVar() {
  if (m_bRestore) Restore();
  if (m_bOwnsText) std::free(m_rbSaved.resval.rstring);
}

ImDbModKeeper::ImDbModKeeper() : m_bRead(mek::readIntVariable(L"DBMOD", m_nDbMod)) {}

ImDbModKeeper::~ImDbModKeeper() {
  if (m_bRead && m_nDbMod == 0) IM_SetDbModZero();
}

// --- Undo

int ImUndoRecord::m_nRefCount = 0;

namespace {

constexpr const wchar_t* kEcho = L"CMDECHO";

void markUndo() {
  KvApDocManager* documents = kvDocManagerPtr();
  if (!kvdbDatabaseOrWorking(nullptr) || !documents) {
    kvedCommandS(RTSTR, L"_UNDO", RTSTR, L"M", RTNONE);
    return;
  }
  documents->setUndoMark(L"");
  documents->beginUndoGroup();
}

void stepBack() {
  KvApDocManager* documents = kvDocManagerPtr();
  if (!kvdbDatabaseOrWorking(nullptr) || !documents)
    kvedCommandS(RTSTR, L"_UNDO", RTSTR, L"B", RTNONE);
  else
    documents->undoGroup();
}

}  // namespace

ImUndoRecord::ImUndoRecord() {
  const ImSetSysVar quiet(kEcho, 0, 1);
  markUndo();
  m_nLevel = m_nRefCount++;
}

ImUndoRecord::~ImUndoRecord() {
  const ImSetSysVar quiet(kEcho, 0, 1);
  for (; !m_bAccepted && m_nRefCount > m_nLevel; --m_nRefCount) stepBack();
  if (m_nLevel == 0) m_nRefCount = 0;
}

// --- View

ImUcsSet::ImUcsSet(KvGePoint3d origin, double angle) {
  m_bSaved = kvedGetCurrentUCS(m_matSaved) == Kvad::eOk;
  if (!m_bSaved) return;
  KvGeVector3d x = KvGeVector3d::kXAxis, y = KvGeVector3d::kYAxis;
  x.rotateBy(angle, KvGeVector3d::kZAxis);
  y.rotateBy(angle, KvGeVector3d::kZAxis);
  KvGeMatrix3d system;
  system.setCoordSystem(origin, x, y, KvGeVector3d::kZAxis);
  kvedSetCurrentUCS(system);
}

ImUcsSet::~ImUcsSet() {
  if (m_bSaved) kvedSetCurrentUCS(m_matSaved);
}

int ImAutoUpdateDisplay::g_nLevel = 0;

namespace {

void flushDisplay() {
  if (KvDbTransactionManager* manager = kvTransactionManagerPtr()) {
    manager->queueForGraphicsFlush();
    manager->flushGraphics();
  }
  kvedUpdateDisplay();
}

}  // namespace

ImAutoUpdateDisplay::ImAutoUpdateDisplay(int flag) : m_bFlag(flag) {
  ++g_nLevel;
}

ImAutoUpdateDisplay::~ImAutoUpdateDisplay() {
  --g_nLevel;
  if (g_nLevel < 1 && m_bFlag) flushDisplay();
}

void ImAutoUpdateDisplay::updateNow(int newFlag) {
  constexpr int kTwoLevels = 2;
  if (g_nLevel < kTwoLevels) flushDisplay();
  m_bFlag = newFlag;
}

// --- Selection

ImSSPreviousKeeper::ImSSPreviousKeeper() {
  kvds_setNull(m_set);
  m_bKept = kvedSSGet(L"P", nullptr, nullptr, nullptr, m_set) == RTNORM;
}

ImSSPreviousKeeper::~ImSSPreviousKeeper() {
  if (!m_bKept) return;
  KvApDocManager* documents = kvDocManagerPtr();
  if (KvApDocument* document = documents ? documents->curDocument() : nullptr)
    document->setPreviousSelectionSet(m_set);
  kvedSSFree(m_set);
}

// --- Transactions

ImTransact::ImTransact(int commit) : m_pManager(kvTransactionManagerPtr()), m_bCommit(commit) {
  if (m_pManager) m_pManager->startTransaction();
}

ImTransact::~ImTransact() {
  if (!m_pManager) return;
  if (m_bCommit)
    m_pManager->endTransaction();
  else
    m_pManager->abortTransaction();
}

Kvad::ErrorStatus ImTransact::openObject(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode) {
  object = nullptr;
  KvDbTransactionManager* manager = kvTransactionManagerPtr();
  KvDbTransaction* top = manager ? manager->topTransaction() : nullptr;
  if (!top) return manager ? manager->openObject(object, id, mode) : kvdbOpenAny(object, id, mode);
  for (KvDbObject* held : top->allObjects())
    if (held->objectId() == id) {
      object = held;
      return Kvad::eOk;
    }
  return top->getObject(object, id, mode);
}

Kvad::ErrorStatus ImTransact::closeObject(KvDbObject*& object) {
  if (!object) return Kvad::eNullObjectPointer;
  KvDbTransactionManager* manager = kvTransactionManagerPtr();
  KvDbTransaction* top = manager ? manager->topTransaction() : nullptr;
  return top && top->holds(object) ? Kvad::eOk : object->close();
}

ImTransactionStack::ImTransactionStack(bool start) : m_pManager(kvTransactionManagerPtr()) {
  if (start) this->start();
}

ImTransactionStack::~ImTransactionStack() {
  while (accept()) {
  }
}

bool ImTransactionStack::start() {
  KvDbTransaction* transaction = m_pManager ? m_pManager->startTransaction() : nullptr;
  if (transaction) m_aryTransactions.push_back(transaction);
  return transaction != nullptr;
}

bool ImTransactionStack::accept() {
  if (empty()) return false;
  m_aryTransactions.pop_back();
  m_pManager->endTransaction();
  return true;
}

bool ImTransactionStack::abort() {
  if (empty()) return false;
  m_aryTransactions.pop_back();
  m_pManager->abortTransaction();
  return true;
}
