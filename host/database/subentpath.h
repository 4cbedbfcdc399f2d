#pragma once
// A part of an entity: a row of objects from the outermost container down to the entity itself, and the kind
// and number of the part within it.
#include "host/database/objectid.h"

namespace KvDb {
enum SubentType { kNullSubentType = 0, kFaceSubentType = 1, kEdgeSubentType = 2, kVertexSubentType = 3 };
}

struct KvDbSubentId {
  KvDb::SubentType type = KvDb::kNullSubentType;
  long long index = 0;
  friend bool operator==(const KvDbSubentId&, const KvDbSubentId&) = default;
};

class KvDbFullSubentPath {
 public:
  KvDbFullSubentPath() = default;
  KvDbFullSubentPath(KvDbObjectId entity, KvDb::SubentType type, long long index = 0) : subent_{type, index} {
    objects_.append(entity);
  }
  KvDbFullSubentPath(KvDbObjectId entity, const KvDbSubentId& subent) : subent_(subent) {
    objects_.append(entity);
  }
  KvDbFullSubentPath(const KvDbObjectIdArray& objects, const KvDbSubentId& subent)
      : objects_(objects), subent_(subent) {}
  const KvDbObjectIdArray& objectIds() const { return objects_; }
  const KvDbSubentId& subentId() const { return subent_; }

 private:
  KvDbObjectIdArray objects_;
  KvDbSubentId subent_;
};
