#pragma once
// Services that modules ask for by number.
#include "host/database/dbobject.h"

inline constexpr int kKvReactorService = 101;

/// Who is told of an object's changes.
class KvDbReactorService {
 public:
  virtual ~KvDbReactorService() = default;
  /// Fills `ids` with the object's persistent reactors, in order; none for null.
  virtual void persistentReactors(const KvDbObject* object, KvDbObjectIdArray& ids) const = 0;
};

/// The interface of a service, which lives as long as the program (kKvReactorService: a KvDbReactorService);
/// null for an unknown number.
void* kvrxGetService(int number);
