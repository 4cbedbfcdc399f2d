#pragma once
// The module's five commands: their registration from the language table, and the handlers that have no
// folder of their own.
#include "platform/text/cstring.h"

namespace mek {

/// Registers the commands that the language table names in group `INIT`; without that group none, in silence.
void registerCommands();
void unregisterCommands();

/// A primary name without its transparent prefix, `'_` or `&APOS;_` (no regard to case), which only counts
/// when something follows it. `flags` gets 1 when it was there, else 0.
CString withoutTransparentPrefix(const CString& primaryName, int& flags);

/// Opens the parts portal in the user's browser.
void partOnlineCommand();
/// Shows the About box.
void aboutCommand();

}  // namespace mek
