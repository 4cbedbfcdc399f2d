// What takes steps back and brings them again: U, UNDO, REDO, MREDO.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/undo.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

/// A command's own changes are a step of their own; while steps are walked it has to be closed.
class OutsideTheStep {
 public:
  explicit OutsideTheStep(KvDbUndoRecorder& undo) : undo_(undo) { undo_.endGroup(); }
  ~OutsideTheStep() { undo_.beginGroup(); }
  OutsideTheStep(const OutsideTheStep&) = delete;
  OutsideTheStep& operator=(const OutsideTheStep&) = delete;

 private:
  KvDbUndoRecorder& undo_;
};

bool isNested() {
  return editor() && editor()->runningCommands() > 1;
}

KvDbUndoRecorder& recorder() {
  return drawing()->undoRecorder();
}

void stepBack(int count) {
  const OutsideTheStep outside(recorder());
  int done = 0;
  while (done < count && recorder().undo()) ++done;
  if (done < count) say(done == 0 ? L"Nothing to undo." : L"Everything has been undone.");
}

void mark() {
  if (isNested()) return recorder().setSavePoint();
  const OutsideTheStep outside(recorder());
  recorder().mark();
}

void back() {
  if (isNested()) return recorder().hasSavePoint() ? recorder().rollBack() : say(L"There is no mark.");
  if (recorder().markCount() == 0) {
    const auto all = askYes(L"\nThis will undo everything. OK?", true);
    if (!all.value_or(false)) return;
  }
  const OutsideTheStep outside(recorder());
  if (recorder().undoToMark() == 0) say(L"Nothing to undo.");
}

void begin() {
  if (isNested()) return recorder().setSavePoint();
  const OutsideTheStep outside(recorder());
  // A group that was left open ends where the next one begins.
  recorder().endGathering();
  recorder().beginGathering();
}

void end() {
  if (isNested()) return recorder().releaseSavePoint();
  const OutsideTheStep outside(recorder());
  if (!recorder().endGathering()) say(L"No group has been begun.");
}

void control() {
  if (isNested()) return fail(L"Steps can't be given up while another command runs.");
  Ask ask(L"\nEnter an UNDO control option [All/None/One] <All>: ");
  const Got got = ask.keywords(L"All None One").word();
  if (got == Got::Cancelled) return;
  const OutsideTheStep outside(recorder());
  recorder().setLimit(got == Got::Nothing || ask.keyword == L"All" ? -1 : ask.keyword == L"One" ? 1 : 0);
}

struct Option {
  const wchar_t* keyword;
  void (*run)();
};
constexpr Option kOptions[] = {
    {L"Control", control}, {L"BEgin", begin}, {L"End", end}, {L"Mark", mark}, {L"Back", back}};

/// Inside another command a mark, and a group's beginning, is a place in that command's own step.
void runUndo() {
  if (!drawing()) return;
  int count = 1;
  Ask ask(L"\nEnter the number of operations to undo or [Control/BEgin/End/Mark/Back] <1>: ");
  const Got got = ask.keywords(L"Control BEgin End Mark Back").flags(KVED_NOZERO | KVED_NONEG).whole(count);
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword) {
    for (const Option& option : kOptions)
      if (ask.keyword == option.keyword) option.run();
    return;
  }
  if (isNested()) return fail(L"Steps can't be undone while another command runs.");
  stepBack(got == Got::Value ? count : 1);
}

void runU() {
  if (drawing() && !isNested()) stepBack(1);
}

void stepForth(int count) {
  const OutsideTheStep outside(recorder());
  int done = 0;
  while (done < count && recorder().redo()) ++done;
  if (done < count) say(done == 0 ? L"Nothing to redo." : L"Everything has been redone.");
}

void runRedo() {
  if (drawing() && !isNested()) stepForth(1);
}

void runMredo() {
  if (!drawing() || isNested()) return;
  int count = 1;
  Ask ask(L"\nEnter number of actions or [All/Last]: ");
  const Got got = ask.keywords(L"All Last").flags(KVED_NOZERO | KVED_NONEG).whole(count);
  if (got == Got::Cancelled || got == Got::Nothing) return;
  const bool isAll = got == Got::Keyword && ask.keyword == L"All";
  stepForth(isAll ? std::max(1, recorder().redoCount()) : count);
}

constexpr KvCommandRow kRows[] = {
    {L"MREDO", L"", KVRX_CMD_MODAL, runMredo, L"Brings back several of the steps that were undone last.",
     L"Enter number of actions or [All/Last]:"},
    {L"REDO", L"", KVRX_CMD_MODAL, runRedo, L"Brings back what was undone last.", L""},
    {L"U", L"", KVRX_CMD_MODAL, runU, L"Takes the last command back.", L""},
    {L"UNDO", L"", KVRX_CMD_MODAL, runUndo, L"Takes commands back, by number or to a mark.",
     L"Enter the number of operations to undo or [Control/BEgin/End/Mark/Back] <1>: (what runs between "
     L"BEgin and End is one operation)\nEnter an UNDO control option [All/None/One] <All>: (after Control: "
     L"how many are kept)\nThis will undo everything. OK? [Yes/No] <Yes>: (Back without a mark)"},
};

}  // namespace

std::span<const KvCommandRow> undoRows() {
  return kRows;
}

}  // namespace kvcmd
