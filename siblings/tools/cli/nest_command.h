#pragma once
// `korvane nest`: lays the frames of a table out on sheets.
#include <iosfwd>

/// `argv[0]` is the program's name. Results go to `out`, messages to `err`. Gives the exit code: 0 when every
/// frame has its place, 1 when one has not or a file can't be read or written, 2 on wrong use.
int runNestCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
