#include "module/entity/dim_override.h"

#include "host/entities/dimension.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr const wchar_t* kApplication = L"ACAD";
constexpr const wchar_t* kOpening = L"{";
constexpr const wchar_t* kClosing = L"}";
constexpr int kSentinel = -3, kTextCode = 1000, kApplicationCode = 1001, kBraceCode = 1002,
              kHandleCode = 1005, kRealCode = 1040, kNumberCode = 1070;

/// Builds records and hangs them on the chain's end.
template <class... Args>
int link(resbuf* rb, const Args&... codesAndValues) {
  resbuf* tail = GetLinkTail(rb);
  if (!tail) return RTERROR;
  tail->rbnext = kvutBuildList(codesAndValues..., 0);
  return tail->rbnext ? RTNORM : RTERROR;
}

bool isBrace(const resbuf& record, const wchar_t* brace) {
  return record.restype == kBraceCode && CString(record.resval.rstring).CompareNoCase(brace) == 0;
}

resbuf* openingOf(resbuf* chain) {
  for (; chain; chain = chain->rbnext)
    if (isBrace(*chain, kOpening)) return chain;
  return nullptr;
}

/// Cuts the variable and its value out. False when the block doesn't have it.
bool cutVariable(resbuf* chain, int var) {
  resbuf* previous = openingOf(chain);
  while (previous && previous->rbnext && previous->rbnext->rbnext) {
    resbuf* at = previous->rbnext;
    resbuf* value = at->rbnext;
    if (at->restype == kNumberCode && at->resval.rint == var) {
      previous->rbnext = value->rbnext;
      value->rbnext = nullptr;
      kvutRelRb(at);
      return true;
    }
    if (isBrace(*at, kClosing)) return false;
    previous = value;
  }
  return false;
}

}  // namespace

int CreateXdataHead(resbuf* rb) {
  return link(rb, kSentinel, kApplicationCode, kApplication, kTextCode, L"DSTYLE", kBraceCode, kOpening);
}
int CreateXdataHead(resbuf* rb, CString app) {
  return link(rb, kSentinel, kApplicationCode, app);
}
int CreateXdata(resbuf* rb, int var, int value) {
  return link(rb, kNumberCode, var, kNumberCode, value);
}
int CreateXdata(resbuf* rb, int var, double value) {
  return link(rb, kNumberCode, var, kRealCode, value);
}
int CreateXdata(resbuf* rb, int var, const wchar_t* value) {
  return link(rb, kNumberCode, var, kTextCode, value);
}
int CreateXdata(resbuf* rb, int var, CString value) {
  return link(rb, kNumberCode, var, kTextCode, value);
}
int CreateXdata_handle(resbuf* rb, int var, CString handle) {
  return link(rb, kNumberCode, var, kHandleCode, handle);
}
int CreateXdataTail(resbuf* rb) {
  return link(rb, kBraceCode, kClosing);
}

bool IM_RemoveDimVar(KvDbDimension* dim, int var) {
  resbuf* chain = dim && dim->isWriteEnabled() ? dim->xData(kApplication) : nullptr;
  if (!chain) return false;
  const bool isCut = cutVariable(chain, var);
  if (isCut) dim->setXData(chain);
  kvutRelRb(chain);
  return isCut;
}
