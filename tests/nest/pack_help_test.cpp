// What helps the search along: the bound by scales, improved packings, packings without waste.
#include <gtest/gtest.h>

#include "bench/nest/instances.h"
#include "module/nest/internal/pack_full.h"
#include "module/nest/internal/pack_improve.h"
#include "module/nest/internal/pack_layers.h"
#include "module/nest/internal/pack_scales.h"
#include "tests/nest/packings.h"

namespace {

using namespace nesttest;
using mek::pack::AllInfo3D;

TEST(PackScales, NeverProveMoreBinsThanAreNeeded) {
  std::mt19937 random(21);
  int beyondVolume = 0;
  for (int i = 0; i < 5000; ++i) {
    const Problem problem = randomProblem(random, 6);
    AllInfo3D& a = load(problem, 0);
    const int bound = mek::pack::boundByScales(a), needed = fewestBins(problem, 0);
    ASSERT_LE(bound, needed) << describe(problem);
    int volume = 0;
    for (const Size& box : problem.boxes) volume += box.w * box.h * box.d;
    beyondVolume += bound > (volume + a.BVOL - 1) / a.BVOL;
  }
  EXPECT_GT(beyondVolume, 500) << "the volume alone decides nearly all";
}

TEST(PackScales, CountWhatCannotLieTogether) {
  // Five boxes of more than half a bin along every axis, and a sixth that is as flat as what they leave.
  EXPECT_EQ(mek::pack::boundByScales(load({{10, 10, 10}, std::vector<Size>(5, {6, 6, 6})}, 0)), 5);
  // Seven cubes of more than a third: eight corners, three of which are taken by a long box each.
  Problem problem{{12, 12, 12}, std::vector<Size>(9, {5, 5, 5})};
  EXPECT_EQ(mek::pack::boundByScales(load(problem, 0)), 2) << "a bin has eight corners";
  // The largest sides and the most boxes stay within whole numbers.
  problem = {{1290, 1290, 1290}, std::vector<Size>(kPackMaxBoxes, {1289, 1289, 1289})};
  EXPECT_EQ(mek::pack::boundByScales(load(problem, 0)), kPackMaxBoxes);
  problem = {{32767, 1, 65535 / 2}, {}};
  for (int i = 1; i <= kPackMaxBoxes; ++i) problem.boxes.push_back({i * 81, 1, 32767 - i});
  const int bound = mek::pack::boundByScales(load(problem, 0));
  EXPECT_GE(bound, 199);
  EXPECT_LE(bound, kPackMaxBoxes);
}

/// The layers' packing, then the improver's and the full bins'.
Packed improved(const Problem& problem, int type, std::int64_t effort, int proven) {
  AllInfo3D& a = load(problem, type);
  mek::pack::packLayers(a);
  a.lb = a.proven = mek::pack::toShort(proven);
  mek::pack::Improver(a).run(effort);
  mek::pack::FullBins(a).run(effort);
  return packedFrom(a.best, a.z);
}

TEST(PackImprover, TakesBinsAwayAndKeepsEveryPackingSound) {
  for (const int type : {0, 1}) {
    int before = 0, after = 0;
    for (int boxClass = 1; boxClass <= 8; ++boxClass) {
      const mek::PackInstance made = nestbench::boxSet(boxClass, 40, 3);
      const Problem problem = problemOf(made);
      AllInfo3D& a = load(problem, type);
      mek::pack::packLayers(a);
      before += a.z;
      const Packed packed = improved(problem, type, 3000, 1), again = improved(problem, type, 3000, 1);
      ASSERT_EQ(packingFault(problem, packed, type), "") << "class " << boxClass << " type " << type;
      EXPECT_EQ(std::tie(packed.x, packed.bno), std::tie(again.x, again.bno));
      after += packed.ub;
    }
    EXPECT_LE(after, before - 8) << "type " << type;
  }
}

TEST(PackImprover, LeavesAloneWhatIsTooManyOrDone) {
  const Problem many = problemOf(nestbench::boxSet(5, 65, 0));
  AllInfo3D& a = load(many, 0);
  mek::pack::packLayers(a);
  const int bins = a.z;
  a.proven = 1;
  mek::pack::Improver(a).run(100000);
  EXPECT_EQ(a.z, bins);
  const Problem two{{5, 5, 5}, {{5, 5, 5}, {5, 5, 5}}};
  EXPECT_EQ(improved(two, 0, 1000, 2).ub, 2);
}

TEST(FullBins, AreFoundWhereNothingIsWasted) {
  int found = 0;
  for (const int type : {0, 1}) {
    for (int number = 0; number < 6; ++number) {
      const Problem problem = problemOf(nestbench::boxSet(9, 30, number));
      AllInfo3D& a = load(problem, type);
      mek::pack::packLayers(a);
      a.lb = a.proven = 3;
      mek::pack::FullBins(a).run(40000);
      ASSERT_EQ(packingFault(problem, packedFrom(a.best, a.z), type), "") << number << " type " << type;
      found += a.z == 3;
    }
  }
  EXPECT_GE(found, 8) << "of twelve";
  // Seven of eight cubes leave room: nothing is tried.
  AllInfo3D& loose = load({{4, 4, 4}, std::vector<Size>(7, {2, 2, 2})}, 0);
  mek::pack::packLayers(loose);
  const int bins = loose.z;
  loose.proven = 1;
  mek::pack::FullBins(loose).run(1000);
  EXPECT_EQ(loose.z, bins);
}

TEST(PackBoxes, FullBinsOfFiftyBoxesAreProvenWithinLimits) {
  for (const int number : {0, 3, 7}) {
    const Problem problem = problemOf(nestbench::boxSet(9, 50, number));
    const Packed packed = pack(problem, 0, {0, 400, 0});
    EXPECT_EQ(packed.ub, 3) << number;
    EXPECT_EQ(packed.lb, 3) << number;
    EXPECT_EQ(packingFault(problem, packed, 0), "") << number;
  }
}

}  // namespace
