#pragma once
// The terminal as a source of input: a line editor with history when a person sits there, plain lines
// otherwise.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/editor/input.h"

namespace korvane {

/// The words that the tabulator key offers at a prompt for what stands before the cursor.
using Completer = std::function<std::vector<CString>(const CString& prompt, const CString& start)>;

class TerminalSource : public KvEdInputSource {
 public:
  /// A tabulator completes the word before the cursor, or lists what there is. `whileWaiting` is called about
  /// ten times a second while no key is pressed; history is kept in `historyFile`.
  TerminalSource(std::function<void()> whileWaiting, std::string historyFile, Completer completer);
  ~TerminalSource() override;

  KvEdToken read(KvEdReadMode mode, const CString& prompt) override;
  bool isInteractive() const override { return true; }
  void dropLine() override { reader_.drop(); }

 private:
  struct LineEditor;
  /// One more line from the person; false at the end of input.
  bool readLine(const CString& prompt);

  KvEdLineReader reader_;
  bool hasEnded_ = false;  // the last line was the end of input
  std::unique_ptr<LineEditor> editor_;
};

/// True when input and output are both a terminal.
bool isTerminal();

}  // namespace korvane
