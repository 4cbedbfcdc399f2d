#include <gtest/gtest.h>

#include "tests/nest/packings.h"

namespace {

using namespace nesttest;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kSmallProblems = 2000;
#else
constexpr int kSmallProblems = 100000;
#endif

TEST(PackBoxes, SmallProblemsNeedAsManyBinsAsTryingEverything) {
  std::mt19937 random(8);
  for (int i = 0; i < kSmallProblems; ++i) {
    const Problem problem = randomProblem(random, 5);
    for (const int type : {0, 1}) {
      const Packed packed = pack(problem, type);
      ASSERT_EQ(packingFault(problem, packed, type), "") << describe(problem) << " type " << type;
      ASSERT_EQ(packed.reports, "");
      ASSERT_EQ(packed.lb, packed.ub);
      ASSERT_EQ(packed.ub, fewestBins(problem, type)) << describe(problem) << " type " << type;
    }
  }
}

}  // namespace
