#include "module/core/cmd_names.h"

#include "host/base/wcmatch.h"
#include "host/editor/commandstack.h"
#include "host/editor/editor.h"
#include "module/core/host_values.h"
#include "module/core/text.h"

namespace {

constexpr const wchar_t* kPause = L"\\";

}  // namespace

CString IM_CmdNamesGet() {
  CString names;
  return mek::readTextVariable(L"CMDNAMES", names) ? names : CString();
}

int IM_CmdNamesRunning() {
  return !IM_CmdNamesGet().IsEmpty();
}

int IM_CmdNamesEmbedded(LPCWSTR name) {
  return !IM_TrimRight(IM_CmdNamesGet(), name, 1).IsEmpty();
}

int IM_CmdNamesMatch(LPCWSTR name, int whole, CString names) {
  if (names.IsEmpty()) names = IM_CmdNamesGet();
  const CString wanted(name);
  if (whole) return names.CompareNoCase(wanted) == 0;
  return names.GetLength() >= wanted.GetLength() && names.Left(wanted.GetLength()).CompareNoCase(wanted) == 0;
}

int IM_CmdNamesFlag(LPCWSTR name) {
  const auto* stack = KvEdCommandStack::cast(kvrxSysRegistry()->at(L"ACRX_REGISTERED_COMMANDS"));
  const KvEdCommand* command = stack ? stack->lookupCmd(name) : nullptr;
  return command ? command->commandFlags() : 0;
}

int IM_EmbeddedInteractionCommand(LPCWSTR name) {
  const CString before = IM_CmdNamesGet();
  const CString call = (L"_." + CString(name)).MakeUpper();
  const CString pattern = (L"*" + CString(name)).MakeUpper();
  if (kvedCommandS(RTSTR, call, RTSTR, kPause, RTNONE) != RTNORM) return 0;
  while (kvutWcMatch(IM_TrimLeft(IM_CmdNamesGet(), before, 1), pattern) == RTNORM)
    if (kvedCommandS(RTSTR, kPause, RTNONE) != RTNORM) return 0;
  return 1;
}
