#pragma once
// Packs boxes without turning them into the fewest equal bins, by branch and bound within given limits.
//
// Axes: x, y, z run along w, h, d; corners are the lower ones, measured in the bin. A robot packing can be
// filled box by box so that each box lies right of (greater x), above (greater y) or in front of (greater z)
// every box that stands already; taken backwards, it can be emptied from those three sides.
#include "module/core/export.h"

/// Most boxes of one instance.
inline constexpr int kPackMaxBoxes = 400;

/// Packs `n` boxes of `w[i]` by `h[i]` by `d[i]` into bins of `W` by `H` by `D`.
///
/// Gives the corner `x[i], y[i], z[i]` and the bin `bno[i]` (from 1) of each box, in the order of the input;
/// `*ub` bins were used, and no packing needs fewer than `*lb`. A complete run ends with `*lb == *ub`; one
/// that met a limit gives the bound of the root and the best packing found.
///
/// `nodelimit` and `iterlimit` are in thousands, `timelimit` in seconds; 0 means none. `*nodeused` and
/// `*iterused` are in thousands, `*timeused` in milliseconds. `packingtype` is 0 for general, 1 for robot
/// packings.
///
/// Same input, same packing, unless the time limit strikes. Not reentrant: it works in the module's fixed
/// tables.
///
/// Wrong input is reported to the debug sink (module/nest/debug_sink.h), followed by
/// "IRREGULAR PROGRAM TERMINATION\n":
///   - "bad packtype", "too big instance" (more than kPackMaxBoxes), "bad n" (negative), "bad bin" (a side
///   below 1 or
///     above 32767, or a volume beyond 32 bits): `*lb`, `*ub` and the effort are 0, the arrays stay
///     untouched;
///   - "bad w\n", "bad h\n", "bad d\n": the run goes on with that side cut to the bin.
/// The arrays belong to the caller and hold `n` numbers each.
MEK_API void PackBoxes3D(int n, int W, int H, int D, const int* w, const int* h, const int* d, int* x, int* y,
                         int* z, int* bno, int* lb, int* ub, int nodelimit, int iterlimit, int timelimit,
                         int* nodeused, int* iterused, int* timeused, int packingtype);
