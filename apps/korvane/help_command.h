#pragma once
// `korvane help`: the commands' own table on the terminal.
#include <string>

namespace korvane {

struct HelpOptions {
  std::string name;  ///< empty: all commands
  bool markdown = false;
};

/// 1 when there is no command of that name.
int runHelp(const HelpOptions& options);

}  // namespace korvane
