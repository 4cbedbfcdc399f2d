#include "host/base/context.h"

KvHostContext& KvHostContext::current() {
  static KvHostContext context;
  return context;
}
