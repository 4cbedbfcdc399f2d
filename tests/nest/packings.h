#pragma once
// Small packing problems for tests: running the solver, an independent check of its answers, and a packer
// that tries everything.
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "module/nest/internal/pack_state.h"
#include "module/nest/pack_problem.h"

namespace nesttest {

struct Size {
  int w, h, d;
};

struct Problem {
  Size bin;
  std::vector<Size> boxes;
};

struct Packed {
  std::vector<int> x, y, z, bno;
  int lb = -1, ub = -1, nodes = -1, iterations = -1, milliseconds = -1;
  std::string reports;  ///< what went to the debug sink
};

struct Limits {
  int nodes = 0, iterations = 0, seconds = 0;
};

Packed pack(const Problem& problem, int packingType, Limits limits = {});

/// Empty when every box lies in exactly one of `bins` bins, inside it, apart from the others, and (for robot
/// packings) there is an order to put them in; else what is wrong.
std::string packingFault(const Problem& problem, const Packed& packed, int packingType);

/// The fewest bins, by trying every place of every box. For up to 6 boxes and bins of up to 128 unit cells.
int fewestBins(const Problem& problem, int packingType);

/// A problem of up to `most` boxes in a bin of up to 128 cells.
Problem randomProblem(std::mt19937& random, int most);

std::string describe(const Problem& problem);

Problem problemOf(const mek::PackInstance& instance);
/// The solver's tables, loaded with a problem.
mek::pack::AllInfo3D& load(const Problem& problem, int packingType);
/// A packing that stands in the solver's tables.
Packed packedFrom(std::span<const mek::pack::Box3D> boxes, int bins);

}  // namespace nesttest
