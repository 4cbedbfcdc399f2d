// GROUP.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/dictionary.h"

namespace kvcmd {
namespace {

constexpr const wchar_t* kGroups = L"ACAD_GROUP";

/// The dictionary of groups, made when missing and wanted.
KvDbObjectId groupsId(bool makes) {
  KvDbDictionary* root = nullptr;
  KvDbObjectId id;
  if (drawing()->getNamedObjectsDictionary(root, makes ? KvDb::kForWrite : KvDb::kForRead) != Kvad::eOk)
    return id;
  if (root->getAt(kGroups, id) != Kvad::eOk && makes) {
    auto groups = std::make_unique<KvDbDictionary>();
    if (root->setAt(kGroups, groups.get(), id) == Kvad::eOk) groups.release()->close();
  }
  root->close();
  return id;
}

/// Asks for a group that there is; null, with a word, else.
KvDbObjectId askGroup(CString& name) {
  KvDbObjectId id;
  if (Ask(L"\nEnter group name: ").text(name) != Got::Value) return id;
  const auto* groups = look<KvDbDictionary>(groupsId(false));
  if (!groups || groups->getAt(name, id) != Kvad::eOk) fail(L"There is no group \"" + name + L"\".");
  return id;
}

void createGroup() {
  CString name;
  if (Ask(L"\nEnter a group name or [?]: ").text(name) != Got::Value) return;
  if (!kvdbIsSymbolName(name.view())) return fail(L"\"" + name + L"\" is no name for a group.");
  if (const auto* groups = look<KvDbDictionary>(groupsId(false)); groups && groups->has(name))
    return fail(L"There is a group \"" + name + L"\" already.");
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  change<KvDbDictionary>(groupsId(true), [&](KvDbDictionary& groups) {
    auto group = std::make_unique<KvDbGroup>();
    KvDbObjectId id;
    if (groups.setAt(name, group.get(), id) != Kvad::eOk) return fail(L"The group could not be made.");
    KvDbGroup* made = group.release();
    for (KvDbObjectId member : ids) made->append(member);
    made->close();
  });
}

void changeGroup(bool adds) {
  CString name;
  const KvDbObjectId id = askGroup(name);
  if (id.isNull()) return;
  const KvDbObjectIdArray ids =
      select(adds ? L"\nSelect objects to add to group: " : L"\nSelect objects to remove from group: ");
  change<KvDbGroup>(id, [&](KvDbGroup& group) {
    for (KvDbObjectId member : ids)
      if (adds && group.allEntityIds().contains(member))
        say(L"An object is in the group already.");
      else
        adds ? (void)group.append(member) : (void)group.remove(member);
  });
}

void explodeGroup() {
  CString name;
  const KvDbObjectId id = askGroup(name);
  if (id.isNull()) return;
  change<KvDbDictionary>(groupsId(false), [&](KvDbDictionary& groups) { groups.remove(name); });
  change<KvDbGroup>(id, [](KvDbGroup& group) {
    group.clear();
    group.erase();
  });
}

void renameGroup() {
  CString name, to;
  const KvDbObjectId id = askGroup(name);
  if (id.isNull() || Ask(L"\nEnter a new name for group <" + name + L">: ").text(to) != Got::Value) return;
  if (!kvdbIsSymbolName(to.view())) return fail(L"\"" + to + L"\" is no name for a group.");
  const auto* groups = look<KvDbDictionary>(groupsId(false));
  KvDbObjectId holder;
  if (groups && groups->getAt(to, holder) == Kvad::eOk && holder != id)
    return fail(L"There is a group \"" + to + L"\" already.");
  change<KvDbDictionary>(groupsId(false), [&](KvDbDictionary& all) {
    all.remove(id);
    all.addCopied(to, id);
  });
}

void setSelectable() {
  CString name;
  const KvDbObjectId id = askGroup(name);
  if (id.isNull()) return;
  const auto answer = askYes(L"\nSelect the whole group when one of its objects is picked?",
                             look<KvDbGroup>(id)->isSelectable());
  if (answer && *answer != look<KvDbGroup>(id)->isSelectable())
    change<KvDbGroup>(id, [&](KvDbGroup& group) { group.setSelectable(*answer); });
}

void orderGroup() {
  CString name;
  const KvDbObjectId id = askGroup(name);
  if (id.isNull()) return;
  const int count = look<KvDbGroup>(id)->allEntityIds().length();
  if (count < 2) return fail(L"The group has no order to change.");
  const CString places = L" (0 - " + numberText(count - 1) + L")";
  int from = 0, to = 0, number = 1;
  Ask ask(L"\nEnter position number of the object to reorder" + places + L" or [Reverse order]: ");
  const Got got = ask.keywords(L"Reverse").flags(KVED_NONEG).whole(from);
  if (got == Got::Keyword) {
    change<KvDbGroup>(id, [](KvDbGroup& group) { group.reverse(); });
    return;
  }
  if (got != Got::Value) return;
  if (Ask(L"\nEnter new position number for the object" + places + L" <0>: ").flags(KVED_NONEG).whole(to) ==
          Got::Cancelled ||
      Ask(L"\nEnter number of objects to reorder <1>: ").flags(KVED_NONEG | KVED_NOZERO).whole(number) ==
          Got::Cancelled)
    return;
  auto status = Kvad::eOk;
  change<KvDbGroup>(id, [&](KvDbGroup& group) { status = group.move(from, to, number); });
  if (status != Kvad::eOk) fail(L"The group has no such places.");
}

void listGroups() {
  const auto* groups = look<KvDbDictionary>(groupsId(false));
  if (!groups) return;
  for (const auto& entry : groups->entries())
    if (const auto* group = look<KvDbGroup>(entry.id))
      say(entry.name + L"  " + countOf(group->allEntityIds().length(), L"objects") +
          (group->isSelectable() ? L"" : L", not selectable"));
}

void runGroup() {
  if (!drawing()) return;
  Ask ask(L"\nEnter a group option [?/Order/Add/Remove/Explode/REName/Selectable/Create] <Create>: ");
  const Got got = ask.keywords(L"? Order Add Remove Explode REName Selectable Create").word();
  if (got == Got::Cancelled) return;
  if (got == Got::Nothing || ask.keyword == L"Create") return createGroup();
  if (ask.keyword == L"Add" || ask.keyword == L"Remove") return changeGroup(ask.keyword == L"Add");
  struct Option {
    const wchar_t* keyword;
    void (*run)();
  };
  constexpr Option kOptions[] = {{L"?", listGroups},
                                 {L"Order", orderGroup},
                                 {L"Explode", explodeGroup},
                                 {L"REName", renameGroup},
                                 {L"Selectable", setSelectable}};
  for (const Option& option : kOptions)
    if (ask.keyword == option.keyword) return option.run();
}

constexpr KvCommandRow kRows[] = {
    {L"GROUP", L"G -GROUP", KVRX_CMD_MODAL, runGroup, L"Makes and changes groups, which are selected as one.",
     L"Enter a group option [?/Order/Add/Remove/Explode/REName/Selectable/Create] <Create>:\nEnter a group "
     L"name or [?]:\nSelect objects:\nEnter position number of the object to reorder or [Reverse order]: "
     L"(after Order)\nEnter new position number for the object <0>:\nEnter number of objects to reorder "
     L"<1>:\nEnter a new name for group <>: (after REName)\nSelect the whole group when one of its objects "
     L"is "
     L"picked? [Yes/No] <Yes>: (after Selectable)"},
};

}  // namespace

std::span<const KvCommandRow> groupRows() {
  return kRows;
}

}  // namespace kvcmd
