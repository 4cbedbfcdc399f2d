#pragma once
// Transactions: changes that are taken back as a whole, or stay.
//
// A transaction holds the objects that were opened through it and closes them when it ends; of nested ones
// the newest ends first. Outside a command, the outermost transaction is one step of undo.
#include <memory>
#include <vector>

#include "host/database/database.h"

class KvDbTransaction {
 public:
  explicit KvDbTransaction(KvDbDatabase& database) : database_(database) {}

  /// Opens an object and holds it; one that this or an outer transaction holds already is handed out again
  /// (raised from read to write where that is asked). Statuses of kvdbOpenObject.
  Kvad::ErrorStatus getObject(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead,
                              bool openErased = false);
  /// Takes over an object that the caller has open for write, a new one above all.
  Kvad::ErrorStatus addNewlyCreatedObject(KvDbObject* object);
  /// The objects it holds, in the order in which they came.
  const std::vector<KvDbObject*>& allObjects() const { return objects_; }
  bool holds(const KvDbObject* object) const;

 private:
  friend class KvDbTransactionManager;
  void closeAll();

  KvDbDatabase& database_;
  std::vector<KvDbObject*> objects_;
};

class KvDbTransactionManager {
 public:
  explicit KvDbTransactionManager(KvDbDatabase& database) : database_(database) {}

  /// Never null; owned by the manager.
  KvDbTransaction* startTransaction();
  /// eNothingHappened when none is open. What it changed stays.
  Kvad::ErrorStatus endTransaction();
  /// The same; what it changed is taken back, what it made is erased.
  Kvad::ErrorStatus abortTransaction();
  int numActiveTransactions() const { return static_cast<int>(stack_.size()); }
  /// The newest; null when none is open.
  KvDbTransaction* topTransaction() const { return stack_.empty() ? nullptr : stack_.back().get(); }
  /// Opens without a transaction: the caller closes.
  Kvad::ErrorStatus openObject(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode) const;

  bool isHeld(const KvDbObject* object) const;

  /// What was changed is to be shown: the first call notes it, the second tells the front end once.
  void queueForGraphicsFlush();
  void flushGraphics();

 private:
  Kvad::ErrorStatus end(bool keep);

  KvDbDatabase& database_;
  bool isFlushWanted_ = false;
  std::vector<std::unique_ptr<KvDbTransaction>> stack_;
};

/// The working drawing's manager; null without one.
KvDbTransactionManager* kvTransactionManagerPtr();
