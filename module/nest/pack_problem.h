#pragma once
// Packing problems as data: the problem file, random instances, and the driver that solves and reports them.
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "module/core/export.h"

namespace mek {

/// n boxes and the bin; the three vectors have one length.
struct PackInstance {
  int W = 0, H = 0, D = 0;
  std::vector<int> w, h, d;
  int n() const { return static_cast<int>(w.size()); }
};

struct PackLimits {
  int nodes = 0, iterations = 0;  ///< in thousands, 0 for none
  int seconds = 0;                ///< 0 for none
};

/// What PackBoxes3D gives; see module/nest/pack_boxes.h.
struct PackResult {
  std::vector<int> x, y, z, bno;
  int lb = 0, ub = 0;
  int nodes = 0, iterations = 0, milliseconds = 0;
};

/// Runs PackBoxes3D. Instances of more than kPackMaxBoxes come back with empty vectors and `ub` 0.
MEK_API PackResult solvePackInstance(const PackInstance& instance, const PackLimits& limits, int packingType);

/// Reads a problem file: a line with n, W, H, D and for each box a line with w, h, d. Numbers are separated
/// by white space and what follows the last box is ignored. Sides may be wrong for the solver, which says so
/// itself. False with a message ("line 3: expected the height of box 2, found \"x\"") when a number is
/// missing, isn't one, doesn't fit 32 bits, or n lies outside 0 to kPackMaxBoxes; `instance` is untouched
/// then.
MEK_API bool readPackProblem(std::string_view text, PackInstance& instance, std::string& error);

/// A 48-bit linear congruential generator, so that a seed gives the same instance on every machine. The
/// multiplier and increment are those that POSIX documents for its own 48-bit generator.
class MEK_API PackRandom {
 public:
  explicit PackRandom(std::uint32_t seed) : state_(std::uint64_t{seed} << 16 | kSeedTail) {}
  /// Evenly from `from` to `to`; `from` when the range is empty.
  int draw(int from, int to);

 private:
  static constexpr std::uint64_t kSeedTail = 0x330e;
  std::uint64_t state_;
};

/// A random instance with a cube of side `bindim` as the bin.
///
/// Types 1 to 5 draw each box from one of five classes: a number from 1 to 10 is drawn, and above 5 the
/// type's own class is taken. Class 1: w from 1 to half the side, h and d from two thirds of it to the whole.
/// Classes 2 and 3: the small side is h, or d. Class 4: all from half to the whole. Class 5: all from 1 to
/// half. Types below 1 have no class of their own and draw from the five. Type 6: all sides from 1 to 10,
/// type 7: to 35, type 8 and those above 9: to 100, never beyond the bin. Type 9: three bins cut up, the last
/// five boxes by a fixed cut at the thirds of two axes, so that three bins suffice and none has room left.
///
/// The same arguments give the same instance. False when `n` lies outside 0 to kPackMaxBoxes, `bindim`
/// outside 1 to 1290 (whose cube fits 32 bits), or a type 9 instance can't be cut (too many boxes or too few:
/// 3 at least).
MEK_API bool randomPackInstance(int n, int bindim, int type, std::uint32_t seed, PackInstance& instance);

/// The problem driver; `arguments[0]` is the program's name.
///   6 arguments: file name, nodelimit, iterlimit, timelimit, packingtype: reads the file, 1 run.
///   8 arguments: n, bindim, type, nodelimit, iterlimit, timelimit, packingtype: random instances, 10 runs.
///   otherwise it prompts for those seven on `out` and reads them from `in`.
/// Prints a head line, a line for each run, the solution when the type is 0 (as with a file), and averages;
/// the solver's reports go to `out` too. A limit met is printed as "NODELIMIT\n" and so on. `gap` is the mean
/// of ub - lb, `dev` the mean of (ub - lb) / lb. Gives 0, or -1 after "wrong filename" or a message about
/// what is wrong with the input.
MEK_API int packProblemDriver(int count, const char* const* arguments, std::istream& in, std::ostream& out);

}  // namespace mek
