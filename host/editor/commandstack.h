#pragma once
// The commands that the host knows: in groups, each under a global name (the same in every language) and a
// local one.
#include <memory>
#include <vector>

#include "host/base/kvad.h"
#include "host/base/rxdictionary.h"

using KvRxFunctionPtr = void (*)();

/// Flags of a command.
inline constexpr int KVRX_CMD_MODAL = 0;
inline constexpr int KVRX_CMD_TRANSPARENT =
    1;  ///< may run inside another command when typed with an apostrophe
inline constexpr int KVRX_CMD_USEPICKSET = 2;
inline constexpr int KVRX_CMD_REDRAW = 4;

/// One command. Owned by the stack.
class KvEdCommand : public KvRxObject {
  KVRX_DECLARE(KvEdCommand)
 public:
  const CString& globalName() const { return globalName_; }
  const CString& localName() const { return localName_; }
  const CString& groupName() const { return groupName_; }
  int commandFlags() const { return flags_; }
  KvRxFunctionPtr functionAddr() const { return function_; }

 private:
  friend class KvEdCommandStack;
  CString groupName_, globalName_, localName_;
  int flags_ = 0;
  KvRxFunctionPtr function_ = nullptr;
};

/// Groups are searched from the last one made to the first; names compare without regard to case.
class KvEdCommandStack : public KvRxObject {
  KVRX_DECLARE(KvEdCommandStack)
 public:
  /// eInvalidName for an empty name or one with blanks, eDuplicateKey when the group has the global name
  /// already. `uiContext`, `functionCode` and `resources` are kept for the signature; `returned`, if given,
  /// gets the command.
  Kvad::ErrorStatus addCommand(const wchar_t* group, const wchar_t* globalName, const wchar_t* localName,
                               int flags, KvRxFunctionPtr function, void* uiContext = nullptr,
                               int functionCode = -1, const KvRxResourceInstance& resources = {},
                               KvEdCommand** returned = nullptr);
  /// eKeyNotFound when there is no such group.
  Kvad::ErrorStatus removeGroup(const wchar_t* group);
  Kvad::ErrorStatus removeCmd(const wchar_t* group, const wchar_t* globalName);

  /// By local or global name; a name that begins with `_` is looked up among the global names only, without
  /// it. A `.` is stepped over. Null when there is none.
  KvEdCommand* lookupCmd(const wchar_t* name) const;
  KvEdCommand* lookupGlobalCmd(const wchar_t* name) const;
  KvEdCommand* lookupLocalCmd(const wchar_t* name) const;
  /// All commands, groups in the order of their making.
  std::vector<const KvEdCommand*> commands() const;

 private:
  struct Group {
    CString name;
    std::vector<std::unique_ptr<KvEdCommand>> commands;
  };
  Group* findGroup(const wchar_t* name);
  KvEdCommand* find(const wchar_t* name, bool byGlobal, bool byLocal) const;

  std::vector<Group> groups_;
};
