#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/nest/plans.h"

namespace {

using namespace nesttest;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kRandomPlans = 1000;
#else
constexpr int kRandomPlans = 10000;
#endif

TEST(NesterFrame, RandomPlansKeepTheirDistancesAndTheirSheets) {
  std::mt19937 random(81);
  const auto draw = [&](double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); };
  for (int i = 0; i < kRandomPlans; ++i) {
    NestParams params{};
    params.sheetHeight = draw(100, 1000);
    params.sheetLength = i % 10 == 0 ? -1 : draw(100, 1500);
    params.partGap = i % 3 == 0 ? 0 : draw(0, 12);
    params.edgeGap = draw(0, 40);
    params.sheetGap = draw(0, 100);
    const double largest = draw(20, 600);
    // Whole sizes make exact meetings of edges, broken ones none.
    const bool whole = i % 2 == 0;
    std::vector<Frame> frames;
    for (int n = static_cast<int>(draw(0, 60)); n > 0; --n) {
      Frame frame = {draw(1, largest), draw(1, largest)};
      if (whole) frame = {std::ceil(frame.width / 10) * 10, std::ceil(frame.height / 10) * 10};
      frames.push_back(frame);
    }
    if (whole) params.sheetHeight = std::round(params.sheetHeight / 10) * 10;
    const Plan plan = nest(params, frames);
    ASSERT_EQ(plan.answer, 1);
    ASSERT_EQ(planFault(plan), "") << "plan " << i << " part gap " << params.partGap << " height " << params.sheetHeight;
    for (std::size_t k = 0; k < frames.size(); ++k) {
      const double low = std::min(frames[k].width, frames[k].height), high = std::max(frames[k].width, frames[k].height);
      const double length = params.sheetLength < 0 ? 1e7 : params.sheetLength;
      const double least = high <= params.sheetHeight ? low : low <= params.sheetHeight ? high : length + 1;
      if (isPlaced(plan, k))
        ASSERT_LE(least, length) << "plan " << i << " item " << k;
      else
        ASSERT_GT(least + params.partGap, length) << "plan " << i << " item " << k;
    }
  }
}

}  // namespace
