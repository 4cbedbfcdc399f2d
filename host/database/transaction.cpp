#include "host/database/transaction.h"

#include <algorithm>

Kvad::ErrorStatus KvDbTransaction::getObject(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode,
                                             bool openErased) {
  object = nullptr;
  KvDbStub* stub = id.stub();
  KvDbObject* held = stub ? stub->object : nullptr;
  if (held && database_.transactionManager().isHeld(held)) {
    if (mode == KvDb::kForWrite)
      if (auto status = held->upgradeOpen(); status != Kvad::eOk) return status;
    object = held;
    return Kvad::eOk;
  }
  if (auto status = kvdbOpenAny(object, id, mode, openErased); status != Kvad::eOk) return status;
  objects_.push_back(object);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTransaction::addNewlyCreatedObject(KvDbObject* object) {
  if (!object) return Kvad::eNullObjectPointer;
  if (object->database() != &database_) return Kvad::eWrongDatabase;
  if (!object->isWriteEnabled()) return Kvad::eNotOpenForWrite;
  if (!database_.transactionManager().isHeld(object)) objects_.push_back(object);
  return Kvad::eOk;
}

bool KvDbTransaction::holds(const KvDbObject* object) const {
  return std::find(objects_.begin(), objects_.end(), object) != objects_.end();
}

void KvDbTransaction::closeAll() {
  for (auto at = objects_.rbegin(); at != objects_.rend(); ++at) (*at)->close();
  objects_.clear();
}

KvDbTransaction* KvDbTransactionManager::startTransaction() {
  database_.undoRecorder().beginGroup();
  database_.undoRecorder().setSavePoint();
  return stack_.emplace_back(std::make_unique<KvDbTransaction>(database_)).get();
}

bool KvDbTransactionManager::isHeld(const KvDbObject* object) const {
  return std::any_of(stack_.begin(), stack_.end(), [&](const auto& t) { return t->holds(object); });
}

Kvad::ErrorStatus KvDbTransactionManager::end(bool keep) {
  if (stack_.empty()) return Kvad::eNothingHappened;
  stack_.back()->closeAll();
  stack_.pop_back();
  KvDbUndoRecorder& undo = database_.undoRecorder();
  if (keep)
    undo.releaseSavePoint();
  else
    undo.rollBack();
  undo.endGroup(database_.undoRecording());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbTransactionManager::endTransaction() {
  return end(true);
}
Kvad::ErrorStatus KvDbTransactionManager::abortTransaction() {
  return end(false);
}

Kvad::ErrorStatus KvDbTransactionManager::openObject(KvDbObject*& object, KvDbObjectId id,
                                                     KvDb::OpenMode mode) const {
  return kvdbOpenAny(object, id, mode);
}

void KvDbTransactionManager::queueForGraphicsFlush() {
  isFlushWanted_ = true;
}

void KvDbTransactionManager::flushGraphics() {
  if (!isFlushWanted_) return;
  isFlushWanted_ = false;
  kvdbHostApplicationServices()->graphicsChanged(&database_);
}

KvDbTransactionManager* kvTransactionManagerPtr() {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  return database ? &database->transactionManager() : nullptr;
}
