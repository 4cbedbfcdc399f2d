#include "module/core/host_values.h"

#include <cstdlib>

#include "host/base/resbuf.h"
#include "host/editor/sysvars.h"

namespace mek {
namespace {

/// Reads into a node of its own and frees a text that came with it.
class Variable {
 public:
  explicit Variable(const wchar_t* name) : isRead_(kvedGetVar(name, &node_) == RTNORM) {}
  ~Variable() {
    if (isRead_ && node_.restype == RTSTR) std::free(node_.resval.rstring);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  bool is(int type) const { return isRead_ && node_.restype == type; }
  const KvUnionValue& value() const { return node_.resval; }

 private:
  resbuf node_{};
  bool isRead_;
};

}  // namespace

bool readTextVariable(const wchar_t* name, CString& value) {
  const Variable variable(name);
  if (!variable.is(RTSTR)) return false;
  value = CString(variable.value().rstring);
  return true;
}

bool readIntVariable(const wchar_t* name, int& value) {
  const Variable variable(name);
  if (variable.is(RTSHORT)) return value = variable.value().rint, true;
  if (variable.is(RTLONG)) return value = variable.value().rlong, true;
  return false;
}

bool readRealVariable(const wchar_t* name, double& value) {
  const Variable variable(name);
  if (!variable.is(RTREAL)) return false;
  value = variable.value().rreal;
  return true;
}

bool readPointVariable(const wchar_t* name, double value[3]) {
  const Variable variable(name);
  const bool isFlat = variable.is(RTPOINT);
  if (!isFlat && !variable.is(RT3DPOINT)) return false;
  for (int i = 0; i < 3; ++i) value[i] = variable.value().rpoint[i];
  if (isFlat) value[2] = 0;
  return true;
}

}  // namespace mek
