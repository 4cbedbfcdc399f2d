#pragma once
// Scoped guards: each takes a state of the host on construction and gives it back on destruction, so that any
// way out of a command leaves the drawing as it was. They stand on the stack, end in the reverse order of
// their making, never throw and print nothing. One that can't take its state does nothing, nor does its
// destructor.
#include <map>
#include <vector>

#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "host/database/database.h"
#include "host/database/layout.h"
#include "host/database/transaction.h"
#include "module/core/export.h"
#include "platform/system/windows_names.h"

/// Sets a system variable, when the host keeps it in the type that the value has; with `restore` the old
/// value comes back at the end. Without it this is a plain setter.
class MEK_API ImSetSysVar {
 public:
  ImSetSysVar(LPCWSTR name, int value, int restore);
  ImSetSysVar(LPCWSTR name, double value, int restore);
  /// A point; null does nothing.
  ImSetSysVar(LPCWSTR name, double* const value, int restore);
  /// A text; null does nothing.
  ImSetSysVar(LPCWSTR name, LPCWSTR value, int restore);
  ~ImSetSysVar();
  ImSetSysVar(const ImSetSysVar&) = delete;
  ImSetSysVar& operator=(const ImSetSysVar&) = delete;
  /// Writes the old value back, once: 0 when nothing was set or it was done before.
  int Restore();

 private:
  /// Keeps the old value; true when it is of one of the types.
  bool Keep(LPCWSTR name, int type, int otherType);
  void Set(const resbuf& value);

  CString m_strName;
  resbuf m_rbSaved{};
  bool m_bRestore = false, m_bValid = false, m_bRestored = false, m_bOwnsText = false;
};

/// A group of changes that is taken back at the end, unless accept() was called.
class MEK_API ImUndoRecord {
 public:
  ImUndoRecord();
  ~ImUndoRecord();
  ImUndoRecord(const ImUndoRecord&) = delete;
  ImUndoRecord& operator=(const ImUndoRecord&) = delete;
  void accept() { m_bAccepted = 1; }

  static int m_nRefCount;

 private:
  int m_nLevel;
  int m_bAccepted = 0;
};

/// Leaves an unchanged drawing marked as unchanged.
class MEK_API ImDbModKeeper {
 public:
  ImDbModKeeper();
  ~ImDbModKeeper();
  ImDbModKeeper(const ImDbModKeeper&) = delete;
  ImDbModKeeper& operator=(const ImDbModKeeper&) = delete;

 private:
  int m_nDbMod = 0;
  bool m_bRead = false;
};

/// What the two layer guards share: a state of layers of the working drawing by their ids. Of a list, the
/// layers before the first one that can't be opened are changed; of all layers, those that can be opened.
class MEK_API ImLayerStateGuard {
 public:
  ImLayerStateGuard(const ImLayerStateGuard&) = delete;
  ImLayerStateGuard& operator=(const ImLayerStateGuard&) = delete;

 protected:
  using Get = bool (*)(const class KvDbLayerTableRecord&);
  using Set = void (*)(class KvDbLayerTableRecord&, bool);
  ImLayerStateGuard(Get get, Set set) : m_get(get), m_set(set) {}
  ~ImLayerStateGuard();
  void Change(KvDbObjectIdArray const& layers, bool state);
  void ChangeAll(bool state);

 private:
  /// False when it can't be opened.
  bool ChangeOne(KvDbObjectId id, bool state);

  Get m_get;
  Set m_set;
  std::map<KvDbObjectId, bool> m_mapSaved;
};

class MEK_API ImLayerLocker : public ImLayerStateGuard {
 public:
  explicit ImLayerLocker(bool state);
  ImLayerLocker(KvDbObjectId layer, bool state);
  ImLayerLocker(KvDbObjectIdArray layers, bool state);
};

class MEK_API ImLayerOffer : public ImLayerStateGuard {
 public:
  explicit ImLayerOffer(bool state);
  ImLayerOffer(KvDbObjectId layer, bool state);
  ImLayerOffer(KvDbObjectIdArray layers, bool state);
};

/// Unlocks the layer of an entity, when it is locked.
class MEK_API ImEntityLayerUnlocker {
 public:
  explicit ImEntityLayerUnlocker(KvDbObjectId entity);
  ~ImEntityLayerUnlocker();
  ImEntityLayerUnlocker(const ImEntityLayerUnlocker&) = delete;
  ImEntityLayerUnlocker& operator=(const ImEntityLayerUnlocker&) = delete;

 private:
  KvDbObjectId m_idLayer;
};

/// Another user system: the origin in world coordinates, the world's X and Y axes turned by the angle.
class MEK_API ImUcsSet {
 public:
  ImUcsSet(KvGePoint3d origin, double angle);
  ~ImUcsSet();
  ImUcsSet(const ImUcsSet&) = delete;
  ImUcsSet& operator=(const ImUcsSet&) = delete;

 private:
  KvGeMatrix3d m_matSaved;
  bool m_bSaved = false;
};

/// Another layout, made after a question when it is missing.
class MEK_API ImLayoutSwitcher {
 public:
  ImLayoutSwitcher(int modelSpace, CString layout, int restore);
  ~ImLayoutSwitcher();
  ImLayoutSwitcher(const ImLayoutSwitcher&) = delete;
  ImLayoutSwitcher& operator=(const ImLayoutSwitcher&) = delete;
  /// 0 switched or nothing to do; 1 the user did not want the layout made; 2 the current layout was not
  /// found; 3 failed.
  int status() const { return m_nStatus; }

 private:
  /// False when the way ends here, with the status set.
  bool FindSaved();
  bool FindTarget(int modelSpace, const CString& layout);

  KvDbLayoutManager* m_pManager = nullptr;
  KvDbObjectId m_idSaved, m_idTarget;
  int m_nStatus = 3;
  bool m_bRestore = false;
};

class MEK_API ImModelSpaceSwitcher : public ImLayoutSwitcher {
 public:
  explicit ImModelSpaceSwitcher(int restore) : ImLayoutSwitcher(1, L"", restore) {}
};

class MEK_API ImPaperSpaceSwitcher : public ImLayoutSwitcher {
 public:
  ImPaperSpaceSwitcher(CString layout, int restore) : ImLayoutSwitcher(0, layout, restore) {}
};

/// The layout of a name in the working drawing, without regard to case; null when there is none.
MEK_API KvDbObjectId IM_GetLayoutIdByName(CString name);

/// Counts levels of work; the outermost one has the display flushed, when its flag says so.
class MEK_API ImAutoUpdateDisplay {
 public:
  explicit ImAutoUpdateDisplay(int flag);
  ~ImAutoUpdateDisplay();
  ImAutoUpdateDisplay(const ImAutoUpdateDisplay&) = delete;
  ImAutoUpdateDisplay& operator=(const ImAutoUpdateDisplay&) = delete;
  /// Flushes at once when this is the only level; the flag is replaced in any case.
  void updateNow(int newFlag);

  static int g_nLevel;

 private:
  int m_bFlag;
};

/// Gives entities that came into being during its life the drawing's defaults.
class MEK_API ImLastEntDefault {
 public:
  ImLastEntDefault();
  ~ImLastEntDefault();
  ImLastEntDefault(const ImLastEntDefault&) = delete;
  ImLastEntDefault& operator=(const ImLastEntDefault&) = delete;

 private:
  Kvad::ErrorStatus Apply();
  kvds_name m_name;
};

/// Keeps the previous selection set.
class MEK_API ImSSPreviousKeeper {
 public:
  ImSSPreviousKeeper();
  ~ImSSPreviousKeeper();
  ImSSPreviousKeeper(const ImSSPreviousKeeper&) = delete;
  ImSSPreviousKeeper& operator=(const ImSSPreviousKeeper&) = delete;

 private:
  kvds_name m_set;
  bool m_bKept;
};

/// A transaction: committed at the end or, without `commit`, aborted.
class MEK_API ImTransact {
 public:
  explicit ImTransact(int commit);
  ~ImTransact();
  ImTransact(const ImTransact&) = delete;
  ImTransact& operator=(const ImTransact&) = delete;

  /// Through the top transaction where there is one: an object that it holds is handed out as it is. In the
  /// plain way otherwise.
  static Kvad::ErrorStatus openObject(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode);
  /// Leaves an object open that the top transaction holds.
  static Kvad::ErrorStatus closeObject(KvDbObject*& object);

 private:
  KvDbTransactionManager* m_pManager;
  int m_bCommit;
};

/// Transactions in a row; those that are open at the end are committed, the newest first.
class MEK_API ImTransactionStack {
 public:
  explicit ImTransactionStack(bool start);
  ~ImTransactionStack();
  ImTransactionStack(const ImTransactionStack&) = delete;
  ImTransactionStack& operator=(const ImTransactionStack&) = delete;
  /// False without a manager.
  bool start();
  /// False when none is open.
  bool accept();
  bool abort();
  bool empty() const { return m_aryTransactions.empty(); }

 private:
  KvDbTransactionManager* m_pManager;
  std::vector<KvDbTransaction*> m_aryTransactions;
};
