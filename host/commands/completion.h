#pragma once
// What the tabulator key offers at a prompt.
#include <vector>

#include "host/editor/editor.h"

/// The prompt that asks for a command.
inline constexpr const wchar_t* kKvCommandPrompt = L"Command: ";

/// Whole words, in order and each once, that begin with `start` (without regard to case): at the command
/// prompt names of commands, where none begins so of variables; elsewhere the keywords that stand in the
/// prompt's brackets.
std::vector<CString> kvcmdCompletions(const KvEdEditor& editor, const CString& prompt, const CString& start);
/// The longest text with which all of them begin, without regard to case; empty for none.
CString kvcmdCommonStart(const std::vector<CString>& words);
