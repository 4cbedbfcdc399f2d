// LAYOUT: which sheet is drawn on.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/layout.h"

namespace kvcmd {
namespace {

void listLayouts(const KvDbLayoutManager& manager) {
  for (KvDbObjectId id : manager.layouts())
    if (const auto* layout = look<KvDbLayout>(id))
      say(layout->getLayoutName() + (id == manager.currentLayoutId() ? L"  current" : L""));
}

void runLayout() {
  if (!drawing()) return;
  KvDbLayoutManager& manager = drawing()->layoutManager();
  Ask ask(L"\nEnter layout option [Copy/Delete/New/Rename/Set/?] <Set>: ");
  const Got got = ask.keywords(L"Copy Delete New Rename Set ?").word();
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword && ask.keyword == L"?") return listLayouts(manager);
  CString name = manager.currentLayoutName(), other;
  auto status = Kvad::eOk;
  if (got == Got::Nothing || ask.keyword == L"Set") {
    if (Ask(L"\nEnter layout to make current <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    status = manager.setCurrentLayout(name);
  } else if (ask.keyword == L"New") {
    KvDbObjectId id;
    if (Ask(L"\nEnter new Layout name: ").text(name, true) != Got::Value) return;
    status = manager.createLayout(name, id);
  } else if (ask.keyword == L"Copy") {
    KvDbObjectId id;
    if (Ask(L"\nEnter name of layout to copy <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    if (Ask(L"\nEnter layout name for copy: ").text(other, true) != Got::Value) return;
    status = manager.copyLayout(name, other, id);
  } else if (ask.keyword == L"Delete") {
    if (Ask(L"\nEnter name of layout to delete <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    status = manager.deleteLayout(name);
  } else {
    if (Ask(L"\nEnter layout to rename <" + name + L">: ").text(name, true) == Got::Cancelled) return;
    if (Ask(L"\nEnter new layout name: ").text(other, true) != Got::Value) return;
    status = manager.renameLayout(name, other);
  }
  switch (status) {
    case Kvad::eOk:
      return;
    case Kvad::eKeyNotFound:
      return fail(L"There is no layout \"" + name + L"\".");
    case Kvad::eDuplicateKey:
      return fail(L"There is a layout of that name already.");
    case Kvad::eNotApplicable:
      return fail(L"Model, and the last layout, stay as they are.");
    default:
      return fail(L"That is no name for a layout.");
  }
}

constexpr KvCommandRow kRows[] = {
    {L"LAYOUT", L"LO -LAYOUT", KVRX_CMD_MODAL, runLayout,
     L"Makes and changes sheets, and goes from one to another.",
     L"Enter layout option [Copy/Delete/New/Rename/Set/?] <Set>:\nEnter layout to make current <>: (Model: "
     L"model "
     L"space)\nEnter new Layout name: (after New)\nEnter name of layout to copy <>: (after Copy: with all "
     L"that is "
     L"on it)\nEnter layout name for copy:"},
};

}  // namespace

std::span<const KvCommandRow> spaceRows() {
  return kRows;
}

}  // namespace kvcmd
