#include "module/core/host_values.h"

#include <cstdlib>

#include "host/base/resbuf.h"
#include "host/editor/sysvars.h"

bool mek::readTextVariable(const wchar_t* name, CString& value) {
  resbuf result{};
  if (kvedGetVar(name, &result) != RTNORM || result.restype != RTSTR) return false;
  value = CString(result.resval.rstring);
  std::free(result.resval.rstring);
  return true;
}
