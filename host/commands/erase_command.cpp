// ERASE and what takes steps back: UNDO, U, REDO.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/undo.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

void runErase() {
  const KvDbObjectIdArray ids = select();
  erase(ids);
}

constexpr KvCommandRow kEraseRows[] = {
    {L"ERASE", L"E DELETE", KVRX_CMD_USEPICKSET, runErase, L"Erases objects.",
     L"Select objects: (empty: ends)"},
};

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

void stepBack(int count) {
  KvDbUndoRecorder& undo = drawing()->undoRecorder();
  const OutsideTheStep outside(undo);
  int done = 0;
  while (done < count && undo.undo()) ++done;
  if (done < count) say(done == 0 ? L"Nothing to undo." : L"Everything has been undone.");
}

/// Inside another command a mark is a place in that command's own step.
void runUndo() {
  if (!drawing()) return;
  KvDbUndoRecorder& undo = drawing()->undoRecorder();
  CString reply;
  Ask ask(L"\nEnter the number of operations to undo or [Mark/Back/BEgin/End] <1>: ");
  if (ask.text(reply) == Got::Cancelled) return;
  const CString keyword = kvedMatchKeyword(L"Mark Back BEgin End", reply);
  if (keyword == L"Mark" || keyword == L"BEgin") {
    if (isNested()) {
      undo.setSavePoint();
    } else {
      const OutsideTheStep outside(undo);
      undo.mark();
    }
  } else if (keyword == L"Back") {
    if (isNested()) {
      if (undo.hasSavePoint())
        undo.rollBack();
      else
        say(L"There is no mark.");
    } else {
      const OutsideTheStep outside(undo);
      undo.undoToMark();
    }
  } else if (keyword == L"End") {
    if (isNested()) undo.releaseSavePoint();
  } else {
    const int count = reply.IsEmpty() ? 1 : _wtoi(reply);
    if (count < 1)
      fail(L"A number of operations expected.");
    else if (isNested())
      fail(L"Steps can't be undone while another command runs.");
    else
      stepBack(count);
  }
}

void runU() {
  if (drawing() && !isNested()) stepBack(1);
}

void runRedo() {
  if (!drawing() || isNested()) return;
  KvDbUndoRecorder& undo = drawing()->undoRecorder();
  const OutsideTheStep outside(undo);
  if (!undo.redo()) say(L"Nothing to redo.");
}

constexpr KvCommandRow kUndoRows[] = {
    {L"U", L"", KVRX_CMD_MODAL, runU, L"Takes the last command back.", L""},
    {L"UNDO", L"", KVRX_CMD_MODAL, runUndo, L"Takes commands back, by number or to a mark.",
     L"Enter the number of operations to undo or [Mark/Back/BEgin/End] <1>:"},
    {L"REDO", L"MREDO", KVRX_CMD_MODAL, runRedo, L"Brings back what was undone last.", L""},
};

}  // namespace

std::span<const KvCommandRow> eraseRows() {
  return kEraseRows;
}
std::span<const KvCommandRow> undoRows() {
  return kUndoRows;
}

}  // namespace kvcmd
