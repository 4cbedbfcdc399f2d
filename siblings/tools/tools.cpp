#include "siblings/tools/tools.h"

#include <iostream>
#include <string_view>

#include "host/app/hostapp.h"
#include "host/base/context.h"
#include "host/editor/prompts.h"
#include "module/core/paths.h"
#include "siblings/tools/cli/nest_command.h"
#include "siblings/tools/cli/pack_command.h"
#include "siblings/tools/cli/query_command.h"
#include "siblings/tools/cli/spring_command.h"
#include "siblings/tools/drawing_commands.h"
#include "siblings/tools/nest_frames.h"
#include "siblings/tools/springs.h"

namespace {

constexpr const wchar_t* kGroup = L"KMTOOLS";
constexpr unsigned int kInitMessage = 1, kUnloadMessage = 2;

struct SubCommand {
  std::string_view name;
  int (*run)(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
};

constexpr SubCommand kSubCommands[] = {
    {"nest", runNestCommand},
    {"pack", runPackCommand},
    {"query", runQueryCommand},
    {"spring", runSpringCommand},
};

/// The folder of the tables that come with the product.
CString ownTables() {
  CString root;
  IM_GetSysPath(root);
  return root + L"\\share\\korvane\\tables";
}

/// KMQUERY: asks a folder of tables with SQL text and shows the answer.
void queryCommand() {
  CString folder, sql;
  if (kvedGetString(1, L"\nFolder of the tables <the product's own>: ", folder) != RTNORM) return;
  if (folder.Trim().IsEmpty()) folder = ownTables();
  if (kvedGetString(1, L"\nSQL text: ", sql) != RTNORM || sql.Trim().IsEmpty()) return;
  _Connection connection;
  if (connection.Open(_bstr_t(folder), _bstr_t(), _bstr_t(), 0) != 0) {
    KvHostContext::current().editor->fail(L"The folder " + folder + L" holds no tables that can be opened.");
    return;
  }
  const auto answer = connection.Execute(_bstr_t(sql), nullptr, 0);
  if (!answer) {
    KvHostContext::current().editor->fail(L"The text could not be answered. \"korvane query\" tells why.");
    return;
  }
  kvedPrintText(L"\n" + formatAsTable(answer));
}

struct Command {
  const wchar_t* name;
  KvRxFunctionPtr function;
};

constexpr Command kCommands[] = {
    {L"KMLAYERS", layersCommand}, {L"KMNEST", nestCommand},     {L"KMQUERY", queryCommand},
    {L"KMXDATA", xdataCommand},   {L"KMSPRING", springCommand},
};

}  // namespace

int kmToolsRun(int argc, const char* const* argv) {
  for (const SubCommand& command : kSubCommands)
    if (argc > 0 && argv[0] == command.name) return command.run(argc, argv, std::cout, std::cerr);
  return -1;
}

extern "C" MEK_API std::int64_t kvrxEntryPoint(unsigned int message, void* applicationHandle) {
  auto* commands = KvEdCommandStack::cast(kvrxSysRegistry()->at(L"ACRX_REGISTERED_COMMANDS"));
  if (message == kInitMessage && commands) {
    if (auto* linker = KvRxDynamicLinker::cast(kvrxSysRegistry()->at(L"DynamicLinker"))) {
      linker->unlockApplication(applicationHandle);
      linker->registerAppMDIAware(applicationHandle);
    }
    for (const Command& command : kCommands)
      commands->addCommand(kGroup, command.name, command.name, KVRX_CMD_MODAL, command.function);
  }
  if (message == kUnloadMessage && commands) commands->removeGroup(kGroup);
  return 0;
}

extern "C" MEK_API int kvrxGetApiVersion() {
  return kKvHostApiVersion;
}
