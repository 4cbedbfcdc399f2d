#include "apps/korvane/module_commands.h"

#include <algorithm>
#include <iostream>

#include "host/app/hostapp.h"
#include "platform/system/dynamic_library.h"

namespace korvane {
namespace {

constexpr std::string_view kCommands[] = {"nest", "pack", "query", "spring"};

}  // namespace

bool isModuleCommand(std::string_view name) {
  return std::find(std::begin(kCommands), std::end(kCommands), name) != std::end(kCommands);
}

int runModuleCommand(int argc, const char* const* argv) {
  using Run = int(int, const char* const*);
  // The host says where modules lie; no drawing is opened.
  const KvHostApp host({});
  std::string error;
  const auto tools = platform::DynamicLibrary::load(L"KmTools.kvx", &error);
  Run* run = tools ? tools.function<Run>("kmToolsRun") : nullptr;
  if (run) return run(argc, argv);
  std::cerr << "korvane: " << (tools ? "KmTools.kvx has no sub-commands" : error) << "\n";
  return 1;
}

}  // namespace korvane
