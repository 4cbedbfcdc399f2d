#include "host/database/services.h"

namespace {

class ReactorService : public KvDbReactorService {
 public:
  void persistentReactors(const KvDbObject* object, KvDbObjectIdArray& ids) const override {
    ids = object ? object->persistentReactors() : KvDbObjectIdArray();
  }
};

}  // namespace

void* kvrxGetService(int number) {
  static ReactorService reactors;
  return number == kKvReactorService ? static_cast<KvDbReactorService*>(&reactors) : nullptr;
}
