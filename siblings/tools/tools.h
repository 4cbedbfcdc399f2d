#pragma once
// What KmTools.kvx exports beside its commands.
#include "module/core/export.h"

/// Runs a sub-command of the program (`query`, ...) with its own arguments, `argv[0]` being its name. Results
/// go to standard output, messages to standard error. The exit code; -1 when there is no such sub-command.
extern "C" MEK_API int kmToolsRun(int argc, const char* const* argv);
