// A small add-on: one command that greets, and says which names the product keeps data under.
#include <korvane/kvhost.h>
#include <korvane/mekcore.h>

static void hello() {
  CString name;
  if (kvedGetString(1, L"\nYour name: ", name) != RTNORM) return;
  kvutPrintf(L"\nHello, %s. The first application is %s.\n", name, IM_GetAppName(1, 2));
}

extern "C" MEK_API std::int64_t kvrxEntryPoint(unsigned int message, void*) {
  auto* commands = KvEdCommandStack::cast(kvrxSysRegistry()->at(L"ACRX_REGISTERED_COMMANDS"));
  if (message == 1) commands->addCommand(L"HELLO", L"HELLO", L"HELLO", 0, hello);
  if (message == 2) commands->removeGroup(L"HELLO");
  return 0;
}

extern "C" MEK_API int kvrxGetApiVersion() {
  return kKvHostApiVersion;
}
