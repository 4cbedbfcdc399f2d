#pragma once
// `korvane spring`: one spring into a drawing or a picture of its own.
#include <iosfwd>

/// `argv[0]` is the program's name; a host must be running. Results go to `out`, messages to `err`. Gives the
/// exit code: 0 when it was drawn and written, 1 when not, 2 on wrong use.
int runSpringCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
