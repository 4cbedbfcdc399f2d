#pragma once
// What the host is doing: the running commands, and running another one inside them.
#include "module/core/export.h"
#include "platform/text/cstring.h"

/// The host's CMDNAMES; empty when it refuses the read.
MEK_API CString IM_CmdNamesGet();
/// 1 when any command runs.
MEK_API int IM_CmdNamesRunning();
/// 1 when text is left of CMDNAMES after `name` was removed from its end (no regard to case): the command
/// `name` runs inside another, or another one runs.
MEK_API int IM_CmdNamesEmbedded(LPCWSTR name);
/// With `whole` 0: does `names` begin with `name`? Otherwise: are they equal? No regard to case. Empty
/// `names` are the running ones.
MEK_API int IM_CmdNamesMatch(LPCWSTR name, int whole, CString names);
/// The flag word of a command, 0 when the host doesn't know it.
MEK_API int IM_CmdNamesFlag(LPCWSTR name);
/// Runs a host command inside the current one, the user answering its prompts, and waits until it has ended.
/// 0 when the host refuses it.
MEK_API int IM_EmbeddedInteractionCommand(LPCWSTR name);
