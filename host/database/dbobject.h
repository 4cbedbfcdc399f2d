#pragma once
// Objects that live in a drawing, and the open protocol by which they are reached.
//
// An object is owned by its drawing from the moment it is added, by the caller before that. It is reached by
// kvdbOpenObject and given back by close(); opening for read may nest, for write it is exclusive. A pointer stays
// readable after close() for as long as the drawing is open, erased or not.
#include "host/base/kvad.h"
#include "host/database/objectid.h"

/// What a drawing keeps for each object: one for each id, owned by the drawing, never moved.
struct KvDbStub {
  KvDbObject* object = nullptr;
  KvDbDatabase* database = nullptr;
  std::uint64_t handle = 0;
  std::uint16_t readers = 0;
  bool isOpenForWrite = false;
  bool isErased = false;
};

class KvDbObject : public KvRxObject {
  KVRX_DECLARE(KvDbObject)
 public:
  ~KvDbObject() override;

  KvDbObjectId objectId() const { return KvDbObjectId(stub_); }
  KvDbHandle handle() const { return objectId().handle(); }
  KvDbDatabase* database() const { return stub_ ? stub_->database : nullptr; }
  KvDbObjectId ownerId() const { return owner_; }
  void setOwnerId(KvDbObjectId owner) { owner_ = owner; }

  /// Ends one opening. eWasNotOpenForWrite... never: eNotInDatabase outside a drawing, eNotOpenForRead when not open.
  Kvad::ErrorStatus close();
  /// From read, held by nobody else, to write.
  Kvad::ErrorStatus upgradeOpen();
  /// From write to read.
  Kvad::ErrorStatus downgradeOpen();
  /// Erases, or takes the erasure back. The object must be open for write.
  Kvad::ErrorStatus erase(bool erasing = true);

  bool isReadEnabled() const { return !stub_ || stub_->isOpenForWrite || stub_->readers > 0; }
  bool isWriteEnabled() const { return !stub_ || stub_->isOpenForWrite; }
  bool isErased() const { return stub_ && stub_->isErased; }

 protected:
  /// Called at the beginning of every change: marks the drawing as changed. An assertion guards objects that are
  /// not open for write.
  void assertWriteEnabled();
  /// Whether the object may be erased now; a record in use answers eCannotBeErased.
  virtual Kvad::ErrorStatus subErase(bool erasing);

 private:
  friend class KvDbDatabase;
  KvDbStub* stub_ = nullptr;
  KvDbObjectId owner_;
};

/// Opens the object of an id. Failures: eNullObjectId, eWasErased (unless `openErased`), eWasOpenForWrite,
/// eWasOpenForRead (when write is asked), eHandleInUse for an id without an object.
Kvad::ErrorStatus kvdbOpenAny(KvDbObject*& object, KvDbObjectId id, KvDb::OpenMode mode, bool openErased = false);

/// The same with a class: eNotThatKindOfClass, and the object stays closed, when it is of another one.
template <class T>
Kvad::ErrorStatus kvdbOpenObject(T*& object, KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead,
                                 bool openErased = false) {
  object = nullptr;
  KvDbObject* any = nullptr;
  if (auto status = kvdbOpenAny(any, id, mode, openErased); status != Kvad::eOk) return status;
  object = T::cast(any);
  if (object) return Kvad::eOk;
  any->close();
  return Kvad::eNotThatKindOfClass;
}
