#pragma once
// One run of the program: a host, its modules, and what the command line asked for.
#include <iosfwd>
#include <string>
#include <vector>

namespace korvane {

/// A script file or a line of input, in the order of the command line.
struct SessionInput {
  enum class Kind { ScriptFile, Text } kind;
  std::string value;
};

struct SessionOptions {
  std::vector<SessionInput> inputs;  ///< none: the terminal, or standard input
  std::vector<std::string> modules;  ///< loaded after the product's own
  bool keepGoing = false;            ///< scripts go on after a failed command
  std::string drawing;               ///< opened before anything runs; empty: a new one
  std::string save;                  ///< where the drawing is saved at the end; empty: nowhere
  std::string version;               ///< of the saved file ("R2018"); empty: the drawing's own
  std::string plot;                  ///< where the drawing is plotted when all is done; empty: nowhere
};

/// 0 when all commands did their work, 1 when something failed. Results go to standard output, messages to
/// standard error.
int runSession(const SessionOptions& options);

}  // namespace korvane
