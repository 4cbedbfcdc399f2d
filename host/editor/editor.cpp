#include "host/editor/editor.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <exception>
#include <utility>

#include "host/base/context.h"
#include "host/database/database.h"
#include "host/editor/selection.h"
#include "host/editor/ucs.h"

/// One command between its start and its end.
struct KvEdEditor::Frame {
  const KvEdCommand* command = nullptr;
  CString name;
  KvRxFunctionPtr function = nullptr;
  std::unique_ptr<KvEdFiber> fiber;  // null for a command that the stream itself started
  std::deque<KvEdToken> arguments;   // what kvedCommandS handed over and no prompt has taken yet
  bool isFedByCaller = false;
  bool wantsFromBelow = false;  // waits for one answer of the caller's stream
  KvEdReadMode wantedMode = KvEdReadMode::Word;
  CString wantedPrompt;
  KvEdToken delivered;
  bool isCancelled = false;
  bool isBrokenOff = false;  // a cancel has answered one of its prompts
  bool hasFailed = false;
  std::size_t outerRunning = 0;
};

namespace {

constexpr std::size_t kDeepestNesting = 32;

/// Letters left out, put in, changed or exchanged with their neighbour.
int slipsBetween(const CString& a, const CString& b) {
  const int n = a.GetLength(), m = b.GetLength();
  std::vector<std::vector<int>> cost(static_cast<std::size_t>(n) + 1,
                                     std::vector<int>(static_cast<std::size_t>(m) + 1));
  const auto at = [&](int i, int k) -> int& {
    return cost[static_cast<std::size_t>(i)][static_cast<std::size_t>(k)];
  };
  for (int i = 0; i <= n; ++i) at(i, 0) = i;
  for (int k = 0; k <= m; ++k) at(0, k) = k;
  for (int i = 1; i <= n; ++i)
    for (int k = 1; k <= m; ++k) {
      const int change = a.GetAt(i - 1) == b.GetAt(k - 1) ? 0 : 1;
      at(i, k) = std::min({at(i - 1, k) + 1, at(i, k - 1) + 1, at(i - 1, k - 1) + change});
      if (i > 1 && k > 1 && a.GetAt(i - 1) == b.GetAt(k - 2) && a.GetAt(i - 2) == b.GetAt(k - 1))
        at(i, k) = std::min(at(i, k), at(i - 2, k - 2) + 1);
    }
  return at(n, m);
}

class OwnedCommandStack : public KvEdCommandStack {};

KvEdToken tokenOf(const resbuf& node) {
  using Kind = KvEdToken::Kind;
  KvEdToken token;
  switch (node.restype) {
    case RTSTR: {
      const CString text(node.resval.rstring);
      return text == L"\\" ? KvEdToken::of(Kind::Pause) : KvEdToken::ofText(text);
    }
    case RTSHORT:
      token.kind = Kind::Whole;
      token.whole = node.resval.rint;
      break;
    case RTLONG:
      token.kind = Kind::Whole;
      token.whole = node.resval.rlong;
      break;
    case RTREAL:
      token.kind = Kind::Real;
      token.numbers[0] = node.resval.rreal;
      break;
    case RTANG:
    case RTORINT:
      token.kind = Kind::Angle;
      token.numbers[0] = node.resval.rreal;
      break;
    case RTPOINT:
    case RT3DPOINT:
      token.kind = Kind::Point;
      token.dimensions = node.restype == RTPOINT ? 2 : 3;
      for (int i = 0; i < token.dimensions; ++i) token.numbers[i] = node.resval.rpoint[i];
      break;
    case RTENAME:
    case RTPICKS:
      token.kind = node.restype == RTENAME ? Kind::Name : Kind::PickSet;
      token.name[0] = node.resval.rlname[0];
      token.name[1] = node.resval.rlname[1];
      break;
    case RTLB:
      token.kind = Kind::ListBegin;
      break;
    case RTLE:
      token.kind = Kind::ListEnd;
      break;
    default:
      token.kind = Kind::Text;
      break;
  }
  return token;
}

}  // namespace

KvEdEditor::KvEdEditor(Output output)
    : output_(std::move(output)),
      selections_(std::make_unique<KvEdSelections>()),
      commands_(std::make_unique<OwnedCommandStack>()) {
  kvedDefineEditorVariables(variables_, *this);
}

KvEdEditor::~KvEdEditor() {
  for (auto& frame : frames_) frame->isCancelled = true;
  finishInner(running_);
}

void KvEdEditor::print(const CString& text) {
  if (text.IsEmpty()) return;
  atLineStart_ = text.GetAt(text.GetLength() - 1) == L'\n';
  if (output_) output_(text);
}

void KvEdEditor::printLine(const CString& text) {
  print((atLineStart_ ? CString() : CString(L"\n")) + text + L"\n");
}

void KvEdEditor::pushSource(std::unique_ptr<KvEdInputSource> source) {
  sources_.push_back(std::move(source));
}

bool KvEdEditor::runNext(KvEdOutcome& outcome) {
  const KvEdToken token = readFromSources(KvEdReadMode::Word, L"Command: ");
  outcome = KvEdOutcome::Done;
  if (token.kind == KvEdToken::Kind::End) return false;
  if (token.kind == KvEdToken::Kind::Cancel) return true;
  const CString name = token.text.IsEmpty() ? lastCommand_ : token.text;
  if (!name.IsEmpty()) outcome = runCommand(name);
  if (outcome != KvEdOutcome::Done && !sources_.empty()) sources_.back()->dropLine();
  return true;
}

KvEdOutcome KvEdEditor::runCommand(const CString& typed) {
  CString name = typed;
  // The apostrophe asks for a transparent run; at the top there is nothing to be inside of.
  if (!name.IsEmpty() && name.GetAt(0) == L'\'') name = name.Mid(1);
  finishInner(running_);
  const KvEdCommand* command = commandFor(name);
  if (!command) {
    const CString meant = likelyCommand(CString(typed).MakeUpper());
    printLine(L"Unknown command \"" + CString(typed).MakeUpper() + L"\"." +
              (meant.IsEmpty() ? CString() : L" Did you mean " + meant + L"?"));
    return KvEdOutcome::Unknown;
  }
  lastCommand_ = typedVariable.IsEmpty() ? command->globalName() : typedVariable;
  if (frames_.empty()) {
    wayPoint_.reset();
    wayDirection_.reset();
    cursor_.reset();
    if (onCommandStarted) onCommandStarted();
  }
  auto frame = std::make_unique<Frame>();
  frame->command = command;
  frame->name = CString(command->globalName()).MakeUpper();
  frame->function = command->functionAddr();
  frame->outerRunning = running_;
  frames_.push_back(std::move(frame));
  const std::size_t own = frames_.size() - 1;
  running_ = frames_.size();
  runBody(*frames_[own]);
  finishInner(own + 1);
  KvEdOutcome outcome;
  closeFrame(own, outcome);
  if (frames_.empty() && onCommandEnded) onCommandEnded(outcome);
  return outcome;
}

CString KvEdEditor::likelyCommand(const CString& typed) const {
  constexpr int kShortest = 4, kLongest = 32, kMostSlips = 2;
  const int length = typed.GetLength();
  CString best;
  int least = kMostSlips + 1;
  if (length < kShortest || length > kLongest) return best;
  for (const KvEdCommand* command : commands_->commands()) {
    const CString name = CString(command->globalName()).MakeUpper();
    if (name.GetLength() < kShortest || name.GetLength() > kLongest) continue;
    if (const int slips = slipsBetween(typed, name); slips < least) {
      least = slips;
      best = name;
    }
  }
  return best;
}

bool KvEdEditor::runTransparent(const CString& typed) {
  if (typed.GetLength() < 2 || typed.GetAt(0) != L'\'') return false;
  const CString name = typed.Mid(1);
  const KvEdCommand* command = commandFor(name);
  if (!command) return false;
  if (!(command->commandFlags() & KVRX_CMD_TRANSPARENT) || frames_.size() >= kDeepestNesting) {
    typedVariable.Empty();
    printLine(L"** That command may not be invoked transparently **");
    return true;
  }
  const CString last = lastCommand_;
  const auto wayPoint = wayPoint_;
  const auto wayDirection = wayDirection_;
  const KvGePoint3d point = lastPoint;
  printLine(L">>" + CString(command->globalName()).MakeUpper());
  runCommand(name);
  lastCommand_ = last;
  wayPoint_ = wayPoint;
  wayDirection_ = wayDirection;
  lastPoint = point;
  printLine(L"Resuming " + (frames_.empty() ? CString() : frames_.back()->name) + L" command.");
  return true;
}

std::optional<double> KvEdEditor::shownDirection(const KvGePoint3d& base) const {
  if (cursor_ && (cursor_->x != base.x || cursor_->y != base.y))
    return std::atan2(cursor_->y - base.y, cursor_->x - base.x);
  return wayDirection_;
}

void KvEdEditor::noteWay(const KvGePoint3d& point) {
  if (wayPoint_ && (wayPoint_->x != point.x || wayPoint_->y != point.y))
    wayDirection_ = std::atan2(point.y - wayPoint_->y, point.x - wayPoint_->x);
  wayPoint_ = point;
  cursor_.reset();
}

const KvEdCommand* KvEdEditor::commandFor(const CString& name) {
  typedVariable.Empty();
  if (const KvEdCommand* command = commands_->lookupCmd(name)) return command;
  const KvEdVariable* variable = variables_.find(name);
  const KvEdCommand* setter = variable ? commands_->lookupGlobalCmd(L"SETVAR") : nullptr;
  if (setter) typedVariable = variable->name;
  return setter;
}

void KvEdEditor::runBody(Frame& frame) {
  // Nothing a command throws may cross into the host's loop; what it did so far stays undoable as one step.
  try {
    frame.function();
  } catch (const std::exception& error) {
    fail(L"The command ended unexpectedly: " + platform::wideFromUtf8(error.what()));
  } catch (...) {
    fail(L"The command ended unexpectedly.");
  }
}

void KvEdEditor::closeFrame(std::size_t frame, KvEdOutcome& outcome) {
  const Frame& ended = *frames_[frame];
  outcome = ended.isCancelled ? KvEdOutcome::Cancelled
            : ended.hasFailed ? KvEdOutcome::Failed
                              : KvEdOutcome::Done;
  running_ = ended.outerRunning;
  frames_.resize(frame);
}

bool KvEdEditor::startInner(const CString& name) {
  const KvEdCommand* command = commandFor(name);
  if (!command || frames_.size() >= kDeepestNesting) {
    printLine(command ? CString(L"Commands are nested too deeply.") : L"Unknown command \"" + name + L"\".");
    return false;
  }
  auto frame = std::make_unique<Frame>();
  Frame* inner = frame.get();
  inner->command = command;
  inner->name = CString(command->globalName()).MakeUpper();
  inner->function = command->functionAddr();
  inner->isFedByCaller = true;
  inner->outerRunning = running_;
  inner->fiber = std::make_unique<KvEdFiber>([this, inner] {
    runBody(*inner);
    finishInner(running_);
  });
  frames_.push_back(std::move(frame));
  return true;
}

void KvEdEditor::resumeInner(std::size_t innerIndex) {
  Frame& inner = *frames_[innerIndex];
  const std::size_t caller = inner.outerRunning;
  for (;;) {
    running_ = innerIndex + 1;
    inner.fiber->resume();
    running_ = caller;
    if (inner.fiber->hasEnded() || !inner.wantsFromBelow) return;
    inner.wantsFromBelow = false;
    inner.delivered = caller == 0 ? readFromSources(inner.wantedMode, inner.wantedPrompt)
                                  : readFor(caller - 1, inner.wantedMode, inner.wantedPrompt);
  }
}

void KvEdEditor::finishInner(std::size_t firstInner) {
  while (frames_.size() > firstInner) {
    frames_[firstInner]->isFedByCaller = false;
    resumeInner(firstInner);
    KvEdOutcome outcome;
    closeFrame(firstInner, outcome);
  }
}

int KvEdEditor::commandS(const resbuf* arguments) {
  if (onCommandList) onCommandList(arguments);
  std::deque<KvEdToken> tokens;
  for (const resbuf* node = arguments; node && node->restype != RTNONE; node = node->rbnext)
    tokens.push_back(tokenOf(*node));

  const std::size_t innerIndex = running_;
  if (tokens.empty() && frames_.size() <= innerIndex) return RTNORM;
  int status = RTNORM;
  bool isCancelling = tokens.empty();
  while (!tokens.empty() || isCancelling) {
    const bool isWaiting = frames_.size() > innerIndex;
    if (!isWaiting) {
      const KvEdToken name = tokens.front();
      tokens.pop_front();
      if (name.kind != KvEdToken::Kind::Text || name.text.IsEmpty()) continue;
      if (!startInner(name.text)) return RTERROR;
    }
    Frame& inner = *frames_[innerIndex];
    inner.isCancelled = inner.isCancelled || isCancelling;
    isCancelling = false;
    inner.arguments.swap(tokens);
    resumeInner(innerIndex);
    if (!inner.fiber->hasEnded()) break;
    tokens.swap(inner.arguments);
    KvEdOutcome outcome;
    closeFrame(innerIndex, outcome);
    if (outcome == KvEdOutcome::Failed) status = RTERROR;
    if (outcome == KvEdOutcome::Cancelled) status = RTCAN;
    if (status != RTNORM) break;
  }
  return status;
}

void KvEdEditor::fail(const CString& text) {
  printLine(text);
  if (running_ > 0) frames_[running_ - 1]->hasFailed = true;
}

CString KvEdEditor::commandNames() const {
  CString names;
  for (const auto& frame : frames_) names += frame->name;
  return names;
}

bool KvEdEditor::isQuiet() const {
  KvEdVarValue echo;
  const bool isKnown = variables_.get(L"CMDECHO", echo) == Kvad::eOk && std::holds_alternative<int>(echo);
  return running_ > 1 && isKnown && std::get<int>(echo) == 0;
}

bool KvEdEditor::isBrokenOff() const {
  return running_ > 0 && frames_[running_ - 1]->isBrokenOff;
}

int KvEdEditor::runningFlags() const {
  return running_ == 0 ? 0 : frames_[running_ - 1]->command->commandFlags();
}

KvEdToken KvEdEditor::readToken(KvEdReadMode mode, const CString& prompt, KvEdTracking tracking) {
  for (;;) {
    KvEdToken token = running_ == 0 ? readFromSources(mode, prompt) : readFor(running_ - 1, mode, prompt);
    if (running_ > 0 && token.kind == KvEdToken::Kind::Cancel) frames_[running_ - 1]->isBrokenOff = true;
    if (token.isTracking && token.kind == KvEdToken::Kind::Point)
      cursor_ = KvGePoint3d(token.numbers[0], token.numbers[1], token.numbers[2]);
    if (!token.isTracking || tracking == KvEdTracking::Wanted) return token;
    const KvGePoint3d world = kvedUserToWorld(kvdbDatabaseOrWorking(nullptr)) *
                              KvGePoint3d(token.numbers[0], token.numbers[1], token.numbers[2]);
    inputPoints_.tell(KvEdInputPoint(world, world, false));
  }
}

KvEdToken KvEdEditor::readFor(std::size_t index, KvEdReadMode mode, const CString& prompt) {
  using Kind = KvEdToken::Kind;
  Frame& frame = *frames_[index];
  if (!frame.fiber) {
    KvEdToken token = readFromSources(mode, prompt);
    // A prompt without anybody to answer it is a cancelled one.
    if (token.kind == Kind::End) token.kind = Kind::Cancel;
    frame.isCancelled = frame.isCancelled || token.kind == Kind::Cancel;
    return token;
  }
  for (;;) {
    if (frame.isCancelled) return KvEdToken::of(Kind::Cancel);
    bool fallsThrough = !frame.isFedByCaller;
    if (frame.isFedByCaller && !frame.arguments.empty()) {
      const KvEdToken token = frame.arguments.front();
      frame.arguments.pop_front();
      if (token.kind != Kind::Pause) return token;
      fallsThrough = true;
    }
    frame.wantsFromBelow = fallsThrough;
    frame.wantedMode = mode;
    frame.wantedPrompt = prompt;
    frame.fiber->suspend();
    if (!fallsThrough) continue;
    frame.isCancelled =
        frame.isCancelled || frame.delivered.kind == Kind::Cancel || frame.delivered.kind == Kind::End;
    if (!frame.isCancelled) return frame.delivered;
  }
}

KvEdToken KvEdEditor::readFromSources(KvEdReadMode mode, const CString& prompt) {
  while (!sources_.empty()) {
    KvEdInputSource& source = *sources_.back();
    if (!source.isInteractive()) print((atLineStart_ ? L"" : L"\n") + prompt);
    KvEdToken token = source.read(mode, prompt);
    if (token.kind == KvEdToken::Kind::End) {
      sources_.pop_back();
      continue;
    }
    currentLine_ = source.line();
    if (token.origin == KvEdToken::Origin::Program)
      token.origin = source.isInteractive() ? KvEdToken::Origin::Keyboard : KvEdToken::Origin::Script;
    if (!source.isInteractive()) print(token.text + L"\n");
    atLineStart_ = true;
    return token;
  }
  return KvEdToken::of(KvEdToken::Kind::End);
}

std::optional<CString> KvEdEditor::readLine(const CString& prompt) {
  KvEdToken token = readFromSources(KvEdReadMode::Line, prompt);
  if (token.kind != KvEdToken::Kind::Text) return std::nullopt;
  return std::move(token.text);
}

void KvEdEditor::initGet(int flags, const CString& keywords) {
  getOptions_ = {flags, keywords, {}};
}

KvEdEditor::GetOptions KvEdEditor::takeGetOptions() {
  return std::exchange(getOptions_, GetOptions{});
}

int kvedPrintText(const CString& text) {
  KvEdEditor* editor = KvHostContext::current().editor;
  if (!editor) return RTERROR;
  editor->print(text);
  return RTNORM;
}

int kvedCommandList(const resbuf* arguments) {
  KvEdEditor* editor = KvHostContext::current().editor;
  return editor ? editor->commandS(arguments) : RTERROR;
}
