#pragma once
// What kvdbEntMake has begun and not ended: a polyline that waits for vertices, a reference that waits for
// attributes, a block that waits for entities. The call itself stands in entcalls.h.
#include <vector>

#include "host/database/block.h"

class KvDbPendingEntities {
 public:
  explicit KvDbPendingEntities(KvDbDatabase& database) : database_(database) {}

  /// The open polyline or reference; null when there is none.
  KvDbObjectId sequenceId() const { return sequence_; }
  void beginSequence(KvDbObjectId id) { sequence_ = id; }
  void endSequence() { sequence_.setNull(); }

  bool hasBlock() const { return !block_.isNull(); }
  /// The block's record, in no table yet.
  KvDbObjectId blockId() const { return block_; }
  /// eInvalidName.
  Kvad::ErrorStatus beginBlock(const CString& name, const KvGePoint3d& origin);
  /// Enters the block under its name, which it answers; one of that name gets the new content.
  CString endBlock();

  bool isEmpty() const { return sequence_.isNull() && block_.isNull(); }
  /// Erases what was begun.
  void drop();

 private:
  KvDbDatabase& database_;
  KvDbObjectId sequence_, block_;
  CString name_;
};
