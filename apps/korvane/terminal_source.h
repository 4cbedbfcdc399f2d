#pragma once
// The terminal as a source of input: a line editor with history when a person sits there, plain lines
// otherwise.
#include <functional>
#include <memory>

#include "host/editor/input.h"

namespace korvane {

class TerminalSource : public KvEdInputSource {
 public:
  /// `whileWaiting` is called about ten times a second while no key is pressed; history is kept in
  /// `historyFile`.
  TerminalSource(std::function<void()> whileWaiting, std::string historyFile);
  ~TerminalSource() override;

  KvEdToken read(KvEdReadMode mode, const CString& prompt) override;
  bool isInteractive() const override { return true; }

 private:
  struct LineEditor;
  /// One more line from the person; false at the end of input.
  bool readLine(const CString& prompt);

  KvEdLineReader reader_;
  std::unique_ptr<LineEditor> editor_;
};

/// True when input and output are both a terminal.
bool isTerminal();

}  // namespace korvane
