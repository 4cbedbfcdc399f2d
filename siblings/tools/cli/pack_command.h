#pragma once
// `korvane pack`: packs boxes into bins, from a problem file or at random.
#include <iosfwd>

/// `argv[0]` is the program's name. With the driver's own arguments it is the driver: FILE and four numbers,
/// seven numbers, or none at all (it asks on `out` and reads the standard input). Otherwise the options by
/// name hold. Results go to `out`, messages to `err`. Gives the exit code: 0 success, 1 when a file can't be
/// read or written or the input is wrong, 2 on wrong use.
int runPackCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
