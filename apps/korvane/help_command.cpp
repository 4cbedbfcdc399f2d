#include "apps/korvane/help_command.h"

#include <iostream>

#include "host/commands/command_table.h"

namespace korvane {

int runHelp(const HelpOptions& options) {
  if (options.markdown) {
    std::cout << platform::utf8From(kvcmdDocument());
    return 0;
  }
  if (options.name.empty()) {
    for (const KvCommandRow* row : kvcmdRows())
      std::cout << platform::utf8From(CString(row->name) + L": " + row->purpose) << "\n";
    return 0;
  }
  const KvCommandRow* row = kvcmdFind(platform::wideFromUtf8(options.name));
  if (row) {
    std::cout << platform::utf8From(kvcmdHelp(*row)) << "\n";
    return 0;
  }
  std::cerr << "korvane: there is no command \"" << options.name << "\"\n";
  return 1;
}

}  // namespace korvane
