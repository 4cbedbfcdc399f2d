#pragma once
// The command line: what is shown, what is asked, and the commands that run.
//
// Input is one stream. A prompt takes its answer from the arguments of a running kvedCommandS, where there
// are any, else from whoever started the command: the script, then the terminal. A command that another one
// started with kvedCommandS stops inside its prompt when the arguments are used up; the outer command goes
// on, may hand over more, and when the outer one ends, the inner one goes on with the outer one's own stream.
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/base/resbuf.h"
#include "host/editor/commandstack.h"
#include "host/editor/fiber.h"
#include "host/editor/input.h"
#include "host/editor/input_points.h"
#include "host/editor/sysvars.h"
#include "host/editor/views.h"

class KvEdSelections;

/// How a command ended.
enum class KvEdOutcome { Done, Failed, Cancelled, Unknown };

class KvEdEditor {
 public:
  using Output = std::function<void(const CString&)>;

  explicit KvEdEditor(Output output);
  ~KvEdEditor();
  KvEdEditor(const KvEdEditor&) = delete;
  KvEdEditor& operator=(const KvEdEditor&) = delete;

  KvEdSysVars& variables() { return variables_; }
  const KvEdSysVars& variables() const { return variables_; }
  KvEdCommandStack& commands() { return *commands_; }
  const KvEdCommandStack& commands() const { return *commands_; }
  KvEdScreen& screen() { return screen_; }
  KvEdInputPointManager& inputPoints() { return inputPoints_; }
  KvEdSelections& selections() { return *selections_; }

  /// Writes to the command line. Nothing is added; texts of the product begin with their own line feeds.
  void print(const CString& text);
  /// Print with a line end on both sides as needed.
  void printLine(const CString& text);

  /// The stream's sources; the one pushed last is asked first and dropped when it is used up.
  void pushSource(std::unique_ptr<KvEdInputSource> source);
  bool hasInput() const { return !sources_.empty(); }
  int sourceCount() const { return static_cast<int>(sources_.size()); }
  /// Line of the answer read last from a script, 0 where there are no lines.
  int currentLine() const { return currentLine_; }
  /// Drops every source: the rest of the input is not wanted any more.
  void dropInput() { sources_.clear(); }

  /// Reads one command name and runs it; false when the input is used up. An empty answer repeats the last
  /// command.
  bool runNext(KvEdOutcome& outcome);
  /// Runs a command by name with the present stream.
  KvEdOutcome runCommand(const CString& name);
  /// kvedCommandS on a chain: RTNORM, RTERROR for an unknown or failed command, RTCAN after a cancel. Null
  /// cancels the inner command that waits for more.
  int commandS(const resbuf* arguments);

  /// Called by a running command: it could not do its work. Prints the text.
  void fail(const CString& text);
  /// The running commands' names, the outermost first, put together.
  CString commandNames() const;
  bool isCommandRunning() const { return !frames_.empty(); }
  /// How many commands run inside one another.
  int runningCommands() const { return static_cast<int>(frames_.size()); }
  /// True for a command that another one runs while CMDECHO is 0: what it tells of its own course isn't
  /// shown. Failures are.
  bool isQuiet() const;
  /// Whether the user has broken off one of the running command's prompts.
  bool isBrokenOff() const;
  /// Flags of the command that is running now; 0 when there is none.
  int runningFlags() const;

  /// The next answer for the command that is running now. Points of a moving cursor go to the input-point
  /// monitors, and to the caller only when it wants them.
  KvEdToken readToken(KvEdReadMode mode, const CString& prompt,
                      KvEdTracking tracking = KvEdTracking::Skipped);

  /// A line for a dialog that a front end shows on the command line: from the script or the terminal, past
  /// the arguments of a running kvedCommandS. None at the end of the input or after a cancel, which is the
  /// dialog's, not the command's.
  std::optional<CString> readLine(const CString& prompt);

  /// Keywords and flags of the next prompt; the prompt takes them and leaves none.
  void initGet(int flags, const CString& keywords);
  struct GetOptions {
    int flags = 0;
    CString keywords;
    std::function<bool(KvDbObjectId)> accept = {};  ///< empty: anything
  };
  /// What the next prompt for an entity would rather have: it looks past others under the pick box.
  void preferNext(std::function<bool(KvDbObjectId)> accept) { getOptions_.accept = std::move(accept); }
  GetOptions takeGetOptions();
  /// What the last prompt got when it answered RTKWORD, or the text that was typed.
  CString lastInput;
  /// The last point that a prompt received, in user coordinates, and the last direction, in radians.
  KvGePoint3d lastPoint;
  double lastAngle = 0;

  /// A command typed with an apostrophe inside another one's prompt: runs it when it is transparent, and says
  /// so when it isn't. False for any other text, which is the prompt's to judge.
  bool runTransparent(const CString& typed);
  /// The direction, in radians from the user's X axis, in which a distance typed in place of a point goes:
  /// from `base` towards the cursor, where a front end has shown it since the last point; else on from the
  /// last point but one of the running command to the last one. None when neither is known.
  std::optional<double> shownDirection(const KvGePoint3d& base) const;
  /// Takes a point, in user coordinates, as the next one on the running command's way.
  void noteWay(const KvGePoint3d& point);

  /// The variable whose name was typed in place of a command's; SETVAR, which runs then, takes it.
  CString typedVariable;

  /// Sees each list of kvedCommandS before it runs; null for a call without one.
  std::function<void(const resbuf*)> onCommandList;
  /// Run when the outermost command begins, and when it has ended, with its outcome.
  std::function<void()> onCommandStarted;
  std::function<void(KvEdOutcome)> onCommandEnded;

 private:
  struct Frame;

  /// The command whose name differs least from what was typed, in upper case; empty when none is near.
  CString likelyCommand(const CString& typed) const;
  /// By name; for a variable's name SETVAR. Null when there is neither.
  const KvEdCommand* commandFor(const CString& name);
  KvEdToken readFor(std::size_t frame, KvEdReadMode mode, const CString& prompt);
  KvEdToken readFromSources(KvEdReadMode mode, const CString& prompt);
  void resumeInner(std::size_t inner);
  /// Lets the waiting command at that depth go on, with its caller's stream, until it ends.
  void finishInner(std::size_t firstInner);
  void closeFrame(std::size_t frame, KvEdOutcome& outcome);
  bool startInner(const CString& name);
  void runBody(Frame& frame);

  Output output_;
  KvEdSysVars variables_;
  KvEdScreen screen_;
  KvEdInputPointManager inputPoints_;
  std::unique_ptr<KvEdSelections> selections_;
  std::unique_ptr<KvEdCommandStack> commands_;
  std::vector<std::unique_ptr<KvEdInputSource>> sources_;
  std::vector<std::unique_ptr<Frame>> frames_;
  std::size_t running_ = 0;  // number of frames on the running command's side of the stack; 0: none
  GetOptions getOptions_;
  std::optional<KvGePoint3d> wayPoint_, cursor_;  // user coordinates
  std::optional<double> wayDirection_;
  CString lastCommand_;
  int currentLine_ = 0;
  bool atLineStart_ = true;
};

/// printf forms onto the command line, with wide texts. RTNORM, or RTERROR without a host.
int kvedPrintText(const CString& text);
template <class... Args>
int kvutPrintf(const wchar_t* format, const Args&... args) {
  CString text;
  text.Format(format, args...);
  return kvedPrintText(text);
}
template <class... Args>
int kvedPrompt(const wchar_t* format, const Args&... args) {
  return kvutPrintf(format, args...);
}

/// Runs a command inside the current one; see KvEdEditor::commandS. The list is codes and values by turns,
/// ended by RTNONE or 0; a text of one backslash is the pause token.
int kvedCommandList(const resbuf* arguments);
template <class... Args>
int kvedCommandS(int code, const Args&... rest) {
  resbuf* list = kvutBuildListOf({KvRbArg(code), KvRbArg(rest)...});
  const int status = kvedCommandList(list);
  kvutRelRb(list);
  return status;
}
