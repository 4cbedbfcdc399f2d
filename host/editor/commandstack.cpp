#include "host/editor/commandstack.h"

#include <algorithm>

KVRX_DEFINE_ABSTRACT(KvEdCommand, KvRxObject)
KVRX_DEFINE_ABSTRACT(KvEdCommandStack, KvRxObject)

namespace {

bool isCommandName(const CString& name) {
  return !name.IsEmpty() && name.FindOneOf(L" \t\r\n") < 0;
}

}  // namespace

Kvad::ErrorStatus KvEdCommandStack::addCommand(const wchar_t* group, const wchar_t* globalName,
                                               const wchar_t* localName, int flags, KvRxFunctionPtr function,
                                               void*, int, const KvRxResourceInstance&,
                                               KvEdCommand** returned) {
  auto command = std::make_unique<KvEdCommand>();
  command->groupName_ = group;
  command->globalName_ = globalName;
  command->localName_ = localName;
  command->flags_ = flags;
  command->function_ = function;
  if (!isCommandName(command->globalName_) || !isCommandName(command->localName_) || !function)
    return Kvad::eInvalidName;

  Group* target = findGroup(group);
  if (!target) {
    groups_.push_back({CString(group), {}});
    target = &groups_.back();
  }
  for (const auto& existing : target->commands)
    if (existing->globalName_.CompareNoCase(globalName) == 0) return Kvad::eDuplicateKey;
  if (returned) *returned = command.get();
  target->commands.push_back(std::move(command));
  return Kvad::eOk;
}

Kvad::ErrorStatus KvEdCommandStack::removeGroup(const wchar_t* group) {
  const auto removed =
      std::erase_if(groups_, [&](const Group& g) { return g.name.CompareNoCase(group) == 0; });
  return removed ? Kvad::eOk : Kvad::eKeyNotFound;
}

Kvad::ErrorStatus KvEdCommandStack::removeCmd(const wchar_t* group, const wchar_t* globalName) {
  Group* target = findGroup(group);
  if (!target) return Kvad::eKeyNotFound;
  const auto removed = std::erase_if(target->commands, [&](const std::unique_ptr<KvEdCommand>& command) {
    return command->globalName_.CompareNoCase(globalName) == 0;
  });
  return removed ? Kvad::eOk : Kvad::eKeyNotFound;
}

KvEdCommand* KvEdCommandStack::lookupCmd(const wchar_t* name) const {
  bool globalOnly = false;
  for (; name && (*name == L'_' || *name == L'.'); ++name) globalOnly = globalOnly || *name == L'_';
  return find(name, true, !globalOnly);
}

KvEdCommand* KvEdCommandStack::lookupGlobalCmd(const wchar_t* name) const {
  return find(name, true, false);
}
KvEdCommand* KvEdCommandStack::lookupLocalCmd(const wchar_t* name) const {
  return find(name, false, true);
}

std::vector<const KvEdCommand*> KvEdCommandStack::commands() const {
  std::vector<const KvEdCommand*> all;
  for (const Group& group : groups_)
    for (const auto& command : group.commands) all.push_back(command.get());
  return all;
}

KvEdCommandStack::Group* KvEdCommandStack::findGroup(const wchar_t* name) {
  auto found = std::find_if(groups_.begin(), groups_.end(),
                            [&](const Group& g) { return g.name.CompareNoCase(name) == 0; });
  return found == groups_.end() ? nullptr : &*found;
}

KvEdCommand* KvEdCommandStack::find(const wchar_t* name, bool byGlobal, bool byLocal) const {
  for (auto group = groups_.rbegin(); group != groups_.rend(); ++group)
    for (const auto& command : group->commands)
      if ((byGlobal && command->globalName_.CompareNoCase(name) == 0) ||
          (byLocal && command->localName_.CompareNoCase(name) == 0))
        return command.get();
  return nullptr;
}
