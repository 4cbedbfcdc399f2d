#include "module/core/commands.h"

#include <map>
#include <vector>

#include "host/base/rxdictionary.h"
#include "host/editor/commandstack.h"
#include "host/editor/editor.h"
#include "platform/ui/user_interface.h"
#include "siblings/resources/mekres.h"

namespace {

constexpr const wchar_t* kGroup = L"INIT";
constexpr int kMessageLength = 256;
constexpr unsigned int kPortalMessage = 1270;
constexpr unsigned int kNotInThisBuildMessage = 9001;
constexpr const wchar_t* kPortalAddress = L"https://parts.korvane.example/";
constexpr int kFirstShellSuccess = 33;
constexpr int kShowNormal = 1;

/// For commands whose work is not part of this build: they say so.
void notInThisBuild() {
  kvedPrompt(L"%s", IM_GetStringFromRc(kNotInThisBuildMessage, kMessageLength));
}

KvEdCommandStack* commandStack() {
  return KvEdCommandStack::cast(kvrxSysRegistry()->at(L"ACRX_REGISTERED_COMMANDS"));
}

bool contains(const std::vector<CString>& names, const CString& name) {
  for (const CString& one : names)
    if (one == name) return true;
  return false;
}

ImCommandTable* commandTable() {
  if (!g_pIAecLangSwitch) return nullptr;
  return g_pIAecLangSwitch->m_mapGroups[kGroup];
}

}  // namespace

CString mek::withoutTransparentPrefix(const CString& primaryName, int& flags) {
  constexpr int kShort = 2, kLong = 7;
  flags = 0;
  int prefix = 0;
  if (primaryName.GetLength() > kShort && primaryName.Left(kShort) == L"'_")
    prefix = kShort;
  else if (primaryName.GetLength() > kLong && primaryName.Left(kLong).CompareNoCase(L"&APOS;_") == 0)
    prefix = kLong;
  if (prefix > 0) flags = KVRX_CMD_TRANSPARENT;
  return primaryName.Mid(prefix);
}

void mek::registerCommands() {
  const std::map<ImMapKeyString, KvRxFunctionPtr> handlers = {
      {L"PARTONLINE", partOnlineCommand},    {L"IM_RESXML", notInThisBuild}, {L"IM_CUITRANS", notInThisBuild},
      {L"IMINCREASEBACKUP", notInThisBuild}, {L"QX_ABOUT", aboutCommand},
  };
  // A future command that works on the present selection, or redraws, is named in one of these.
  const std::vector<CString> pickSetCommands, redrawCommands;

  ImCommandTable* table = commandTable();
  KvEdCommandStack* stack = commandStack();
  if (!table || !stack) return;
  for (const auto& [key, handler] : handlers) {
    const ImCommandRecord* record = (*table)[key];
    if (!record) continue;
    int flags = 0;
    const CString name = withoutTransparentPrefix(record->m_strPrimary, flags);
    if (contains(pickSetCommands, name)) flags += KVRX_CMD_USEPICKSET;
    if (contains(redrawCommands, name)) flags += KVRX_CMD_REDRAW;
    stack->addCommand(kGroup, name, name, flags, handler, nullptr, -1, KvRxResourceInstance(), nullptr);
    const CString& second = record->m_strSecondary;
    if (!second.IsEmpty())
      stack->addCommand(kGroup, second, second, flags, handler, nullptr, -1, KvRxResourceInstance(), nullptr);
  }
}

void mek::unregisterCommands() {
  if (KvEdCommandStack* stack = commandStack()) stack->removeGroup(kGroup);
}

void mek::partOnlineCommand() {
  CString argument;
  argument.Format(L"url.dll,FileProtocolHandler %s", kPortalAddress);
  const HINSTANCE answer = ShellExecuteW(nullptr, L"open", L"rundll32.exe", argument, nullptr, kShowNormal);
  if (reinterpret_cast<std::intptr_t>(answer) < kFirstShellSuccess)
    kvedPrompt(L"%s", IM_GetStringFromRc(kPortalMessage, kMessageLength));
}
