#pragma once
// Frame plans for tests: inputs, and an independent check of what the nester answers.
#include <random>
#include <string>
#include <vector>

#include "module/nest/nester_frame.h"

namespace nesttest {

struct Frame {
  double width, height;
};

struct Plan {
  NestParams params{};
  std::vector<Frame> frames;
  std::vector<NestItem> items;
  int sheets = -1;
  int answer = -1;
};

/// Lays frames out; each is given far off the sheets, with its tag set.
Plan nest(const NestParams& params, const std::vector<Frame>& frames);

/// True when the item was moved onto a sheet.
bool isPlaced(const Plan& plan, std::size_t i);

/// Empty when each frame has kept its size (turned or not) and caller's data, lies within one of the sheets
/// or where it was given, and is clear of every other by the part gap, or half of it where one lies under the
/// other.
std::string planFault(const Plan& plan);

/// Area of the placed frames over the area of the sheets.
double utilisation(const Plan& plan);

}  // namespace nesttest
