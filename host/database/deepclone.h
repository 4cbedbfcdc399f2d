#pragma once
// Copies of objects with all that they own, inside one drawing or from one to another.
//
// What is owned is copied with its owner; what is only pointed at stays as it is inside one drawing. Into
// another drawing, what an object needs (layers, styles, blocks) goes along: a record of the same name that
// the target has is used in its place, or replaced, as the call says.
#include "host/database/database.h"

namespace KvDb {
/// What becomes of a record whose name the target has already.
enum DuplicateRecordCloning : int { kDrcIgnore = 1, kDrcReplace = 2 };
}  // namespace KvDb

/// Old ids to new ones, with the call's own objects told from what came along. What a mapping knows from a
/// call before is not copied again, so that several calls may share one: links between their copies then
/// hold.
class KvDbIdMapping {
 public:
  /// Null when the object was not copied (and has no counterpart).
  KvDbObjectId lookup(KvDbObjectId old) const;
  const KvDbIdMap& map() const { return map_; }
  /// The copies in the order of the ids that the call was given; null ids for what could not be copied.
  const KvDbObjectIdArray& primaries() const { return primaries_; }

 private:
  friend class KvDbCloner;
  KvDbIdMap map_;
  KvDbObjectIdArray primaries_;
};

/// Copies entities into a block, other objects under an owner (a dictionary's entries keep their names),
/// within one drawing. The copies are closed. eNullObjectId for an owner that isn't there, eWrongDatabase for
/// ids of another drawing; nothing is copied then. Erased ids are passed over.
Kvad::ErrorStatus kvdbDeepCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                       KvDbIdMapping& mapping);

/// The same from one drawing into another; records go to the table given as owner. eWrongDatabase when the
/// ids are of several drawings.
Kvad::ErrorStatus kvdbWblockCloneObjects(const KvDbObjectIdArray& ids, KvDbObjectId owner,
                                         KvDbIdMapping& mapping,
                                         KvDb::DuplicateRecordCloning cloning = KvDb::kDrcIgnore);
