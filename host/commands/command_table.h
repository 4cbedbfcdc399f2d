#pragma once
// The host's own commands and what there is to tell of each: from this table come their registration, HELP,
// the completion of the command line and docs/commands.md.
#include <span>
#include <vector>

#include "host/editor/commandstack.h"

/// One command. Prompts are told in the order in which they come, one a line; what stands in brackets are
/// keywords, their capitals the shortest form.
struct KvCommandRow {
  const wchar_t* name;     ///< global, upper-case
  const wchar_t* aliases;  ///< separated by blanks, as draftspeople type them
  int flags;               ///< of KvEdCommand
  KvRxFunctionPtr run;
  const wchar_t* purpose;  ///< one sentence
  const wchar_t* prompts;
};

/// All rows, by name.
std::vector<const KvCommandRow*> kvcmdRows();
/// By name or alias, without regard to case; null when there is none.
const KvCommandRow* kvcmdFind(const wchar_t* name);
/// Adds all commands and their aliases to the stack.
void kvcmdRegister(KvEdCommandStack& stack);
/// The text that HELP shows.
CString kvcmdHelp(const KvCommandRow& row);
/// The page of all commands for the documents, in Markdown.
CString kvcmdDocument();
