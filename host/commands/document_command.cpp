// NEW, OPEN, SAVE, SAVEAS, CLOSE, QUIT, WBLOCK.
#include "host/commands/documents.h"
#include "host/commands/internal/erased.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/io/drawing_file.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

/// Null, with a word, when the host has no drawings to hand out.
KvCmdDocuments* documents() {
  KvCmdDocuments* all = KvHostContext::current().commandDocuments;
  if (!all) fail(L"Drawings can't be opened or saved here.");
  return all;
}

void report(const CString& problem) {
  if (!problem.IsEmpty()) fail(problem);
}

/// A drawing's name, with an ending where it has none.
CString withEnding(const CString& name) {
  const int separator = std::max(name.ReverseFind(L'\\'), name.ReverseFind(L'/'));
  return name.ReverseFind(L'.') > separator ? name : name + L".dxf";
}

/// Asks for a file to write, and whether one that is there may be replaced. Empty when the command ends.
CString askTarget(const CString& prompt, const CString& standard) {
  CString name = standard;
  if (Ask(prompt).text(name, true) == Got::Cancelled || name.IsEmpty()) return {};
  name = withEnding(name);
  if (name == standard || !platform::isFile(name)) return name;
  const auto replaces = askYes(L"\n\"" + name + L"\" already exists. Replace it?", false);
  return replaces.value_or(false) ? name : CString();
}

void runNew() {
  if (KvCmdDocuments* all = documents()) report(all->makeNew());
}

void runOpen() {
  KvCmdDocuments* all = documents();
  CString name;
  if (all && Ask(L"\nEnter name of drawing to open: ").text(name, true) == Got::Value)
    report(all->open(name));
}

void saveAs(KvCmdDocuments& all, bool isOwnName) {
  if (!all.hasDrawing()) return fail(L"There is no drawing.");
  const CString own = all.currentFile();
  const CString target =
      askTarget(L"\nSave drawing as" + (own.IsEmpty() ? CString(L": ") : L" <" + own + L">: "), own);
  if (!target.IsEmpty()) report(all.save(target, isOwnName));
}

void runSave() {
  KvCmdDocuments* all = documents();
  if (!all) return;
  const CString own = all->currentFile();
  own.IsEmpty() ? saveAs(*all, true) : report(all->save(own, true));
}

void runSaveAs() {
  if (KvCmdDocuments* all = documents()) saveAs(*all, true);
}

/// True when what isn't saved may go.
bool mayDiscard(const KvCmdDocuments& all) {
  return !all.hasUnsaved() ||
         askYes(L"\nReally want to discard all changes to drawing?", false).value_or(false);
}

void runClose() {
  KvCmdDocuments* all = documents();
  if (!all) return;
  if (!all->hasDrawing()) return fail(L"There is no drawing.");
  const bool isModified = drawing() && drawing()->modifiedWord() != 0;
  if (!isModified || askYes(L"\nReally want to discard all changes to drawing?", false).value_or(false))
    report(all->close());
}

void runQuit() {
  const KvCmdDocuments* all = KvHostContext::current().commandDocuments;
  if (!editor() || (all && !mayDiscard(*all))) return;
  editor()->dropInput();
}

void runEnd() {
  KvCmdDocuments* all = documents();
  if (!all) return;
  const CString own = all->currentFile();
  const CString target = own.IsEmpty() ? askTarget(L"\nSave drawing as: ", L"") : own;
  if (target.IsEmpty()) return;
  const CString problem = all->save(target, true);
  problem.IsEmpty() ? editor()->dropInput() : report(problem);
}

/// The part of a path behind its folders.
CString bareName(const CString& path) {
  return path.Mid(std::max(path.ReverseFind(L'\\'), path.ReverseFind(L'/')) + 1);
}

void runDrawings() {
  KvCmdDocuments* all = documents();
  if (!all) return;
  int current = -1;
  const std::vector<CString> names = all->names(current);
  if (names.empty()) return fail(L"There is no drawing.");
  for (std::size_t i = 0; i < names.size(); ++i) {
    CString line;
    line.Format(L"%d  %s%s", static_cast<int>(i) + 1, names[i],
                static_cast<int>(i) == current ? L"  current" : L"");
    say(line);
  }
  CString reply;
  if (Ask(L"\nEnter number or name of drawing to go to <stay>: ").text(reply, true) != Got::Value) return;
  int number = 0;
  if (!platform::parseWhole(reply.view(), number))
    for (std::size_t i = 0; i < names.size(); ++i)
      if (names[i].CompareNoCase(reply) == 0 || bareName(names[i]).CompareNoCase(reply) == 0)
        number = static_cast<int>(i) + 1;
  report(number > 0 ? all->activate(number - 1) : L"There is no drawing \"" + reply + L"\".");
}

/// Saves a drawing that commands made for a file.
void writeOut(const KvDbDatabase& made, const CString& target) {
  KvIoReport problem;
  const auto path = platform::toNative(target);
  if (kvdbSaveDrawing(made, path, problem, kvdbSaveOptionsFor(path)) != Kvad::eOk) fail(problem.error.text);
}

void runWblock() {
  if (!drawing()) return;
  const CString target = askTarget(L"\nEnter name of output file: ", L"");
  if (target.IsEmpty()) return;
  CString name;
  const Got got =
      Ask(L"\nEnter name of existing block or [= (block=output file)/* (whole drawing)] <define new "
          L"drawing>: ")
          .text(name);
  if (got == Got::Cancelled) return;
  if (name == L"*") return writeOut(*drawing(), target);
  KvDbDatabase* raw = nullptr;
  if (got == Got::Value) {
    if (name == L"=") name = platform::fromNative(platform::toNative(target).stem());
    const KvDbObjectId block = drawing()->recordId(KvDbTable::Block, name);
    if (block.isNull()) return fail(L"There is no block \"" + name + L"\".");
    const auto status = drawing()->wblock(raw, block);
    const std::unique_ptr<KvDbDatabase> made(raw);
    return status == Kvad::eOk ? writeOut(*made, target) : fail(L"The block could not be written.");
  }
  KvGePoint3d base;
  if (Ask(L"\nSpecify insertion base point: ").point(base) != Got::Value) return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  const auto status = drawing()->wblock(raw, ids, toWorld(base));
  const std::unique_ptr<KvDbDatabase> made(raw);
  if (status != Kvad::eOk) return fail(L"The objects could not be written.");
  KvIoReport problem;
  const auto path = platform::toNative(target);
  if (kvdbSaveDrawing(*made, path, problem, kvdbSaveOptionsFor(path)) != Kvad::eOk)
    return fail(problem.error.text);
  eraseForOops(ids);
}

constexpr KvCommandRow kRows[] = {
    {L"CLOSE", L"", KVRX_CMD_MODAL, runClose, L"Closes the current drawing.",
     L"Really want to discard all changes to drawing? [Yes/No] <No>: (when there are any)"},
    {L"DRAWINGS", L"DOCS WINDOW", KVRX_CMD_MODAL, runDrawings,
     L"Lists the open drawings and goes from one to another.",
     L"Enter number or name of drawing to go to <stay>:"},
    {L"END", L"", KVRX_CMD_MODAL, runEnd, L"Saves the current drawing and ends the program.",
     L"Save drawing as: (when it has no name yet)"},
    {L"NEW", L"", KVRX_CMD_MODAL, runNew, L"Begins a new drawing.", L""},
    {L"OPEN", L"", KVRX_CMD_MODAL, runOpen, L"Opens a drawing file.", L"Enter name of drawing to open:"},
    {L"QUIT", L"EXIT", KVRX_CMD_MODAL, runQuit, L"Ends the program.",
     L"Really want to discard all changes to drawing? [Yes/No] <No>: (when there are any)"},
    {L"SAVE", L"QSAVE", KVRX_CMD_MODAL, runSave, L"Saves the current drawing under its name.",
     L"Save drawing as: (when it has no name yet)"},
    {L"SAVEAS", L"", KVRX_CMD_MODAL, runSaveAs, L"Saves the current drawing under another name.",
     L"Save drawing as <>: (.dxf is text, .dwg binary)\nalready exists. Replace it? [Yes/No] <No>: (when it "
     L"does)"},
    {L"WBLOCK", L"W -WBLOCK", KVRX_CMD_MODAL, runWblock, L"Writes objects, a block or all into another file.",
     L"Enter name of output file:\nEnter name of existing block or [= (block=output file)/* (whole drawing)] "
     L"<define new drawing>:\nSpecify insertion base point:\nSelect objects: (they leave the drawing)"},
};

}  // namespace

std::span<const KvCommandRow> documentRows() {
  return kRows;
}

}  // namespace kvcmd
