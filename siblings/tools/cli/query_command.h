#pragma once
// `korvane query`: asks a folder of exported tables with SQL text, for people and for shell scripts.
#include <iosfwd>
#include <memory>

#include "module/data/connection.h"

/// The sub-command. `argv[0]` is its own name. Answers go to `out` (a table at a terminal, CSV otherwise,
/// unless an option says), messages to `err`. 0 success; 1 no answer, the reason in a message; 2 wrong use.
int runQueryCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

/// An answer as lines of columns under their names, wide characters counted as two columns; numbers stand at
/// the right. Null is shown as a middle dot. Ends with the number of rows. "no answer" for a null recordset.
CString formatAsTable(const std::shared_ptr<_Recordset>& answer);
