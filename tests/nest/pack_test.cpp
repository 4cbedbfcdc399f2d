#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

#include "bench/nest/instances.h"
#include "module/nest/debug_sink.h"
#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_check.h"
#include "module/nest/internal/pack_general.h"
#include "module/nest/internal/pack_layers.h"
#include "module/nest/internal/pack_robot.h"
#include "tests/nest/packings.h"

namespace {

using namespace nesttest;
using mek::pack::AllInfo3D;
using mek::pack::Box3D;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kShare = 40;
#else
constexpr int kShare = 1;
#endif

bool fitsOneBin(AllInfo3D& a) {
  return (a.packtype == 1 ? mek::pack::robotTest(a, a.boxes, 0) : mek::pack::generalTest(a, a.boxes, 0)) ==
         mek::pack::Answer::Yes;
}

std::size_t timesIn(const std::string& text, const std::string& part) {
  std::size_t times = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
  return times;
}

TEST(PackBoxes, SmallProblemsNeedAsManyBinsAsTryingEverything) {
  std::mt19937 random(8);
  for (int i = 0; i < 100000 / kShare; ++i) {
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

// Where volume and pairs decide nothing: four to six boxes that nearly fill one bin.
TEST(SingleBin, FullBinsFitExactlyWhenTryingEverythingSaysSo) {
  std::mt19937 random(9);
  std::array<int, 2> answers{};
  for (int i = 0; i < 40000 / kShare;) {
    const auto draw = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
    Problem problem{{draw(2, 5), draw(2, 5), draw(2, 5)}, {}};
    const int n = draw(4, 6), whole = problem.bin.w * problem.bin.h * problem.bin.d;
    int volume = 0;
    for (int k = 0; k < n; ++k) {
      problem.boxes.push_back({draw(1, problem.bin.w), draw(1, problem.bin.h), draw(1, problem.bin.d)});
      volume += problem.boxes.back().w * problem.boxes.back().h * problem.boxes.back().d;
    }
    if (volume > whole || volume * 10 < whole * 6) continue;
    ++i;
    for (const int type : {0, 1}) {
      const bool expected = fewestBins(problem, type) == 1;
      AllInfo3D& a = load(problem, type);
      for (Box3D& box : a.boxes) box.bno = 1;
      const bool fits = fitsOneBin(a);
      ASSERT_EQ(fits, expected) << describe(problem) << " type " << type;
      if (fits) {
        ASSERT_EQ(packingFault(problem, packedFrom(a.boxes, 1), type), "") << describe(problem);
      }
      ++answers[fits];
    }
  }
  EXPECT_GT(std::min(answers[0], answers[1]), 1000 / kShare) << "one answer is hardly tested";
}

TEST(PackBoxes, EveryPackingOfTheClassesIsSound) {
  for (int boxClass = 1; boxClass <= 9; ++boxClass) {
    for (const int n : {10, 20, 50, 90}) {
      for (const int type : {0, 1}) {
        const Problem problem = problemOf(nestbench::boxSet(boxClass, n, 1));
        const Packed first = pack(problem, type, {2, 20, 0}), again = pack(problem, type, {2, 20, 0});
        ASSERT_EQ(packingFault(problem, first, type), "")
            << "class " << boxClass << " n " << n << " type " << type;
        EXPECT_EQ(std::tie(first.x, first.y, first.z, first.bno, first.lb, first.ub),
                  std::tie(again.x, again.y, again.z, again.bno, again.lb, again.ub));
        const std::string& reports = first.reports;
        EXPECT_TRUE(reports.empty() || reports == "NODELIMIT\n" || reports == "ITERLIMIT\n") << reports;
        EXPECT_EQ(reports.empty(), first.lb == first.ub);
      }
    }
  }
}

TEST(PackBoxes, LimitsOfTheTables) {
  Problem problem{{100, 100, 100}, std::vector<Size>(400, Size{34, 33, 50})};
  for (std::size_t i = 0; i < problem.boxes.size(); ++i) problem.boxes[i].w += static_cast<int>(i % 30);
  for (const int type : {0, 1}) {
    const Packed packed = pack(problem, type, {1, 1, 0});
    EXPECT_EQ(packingFault(problem, packed, type), "");
    EXPECT_GE(packed.ub, 30);
  }
  problem.boxes.push_back({1, 1, 1});
  const Packed refused = pack(problem, 0);
  EXPECT_EQ(refused.reports, "too big instance\nIRREGULAR PROGRAM TERMINATION\n");
  EXPECT_EQ(refused.lb, 0);
  EXPECT_EQ(refused.ub, 0);
  EXPECT_EQ(refused.bno[400], -7) << "arrays of a refused instance were written to";
}

// Some hundred boxes in one bin reach the depths of both tests.
TEST(SingleBin, HundredsOfBoxesStayWithinTheTables) {
  for (const int n : {150, 400}) {
    Problem problem{{40, 40, 40}, {}};
    std::mt19937 random(5);
    for (int i = 0; i < n; ++i)
      problem.boxes.push_back({1 + static_cast<int>(random() % 5), 1 + static_cast<int>(random() % 5),
                               1 + static_cast<int>(random() % 5)});
    for (const int type : {0, 1}) {
      std::string reports;
      const mek::ScopedDebugSink sink([&](std::string_view text) { reports += text; });
      AllInfo3D& a = load(problem, type);
      a.iterlimit = kShare == 1 ? 2 : 1;
      for (Box3D& box : a.boxes) box.bno = 1;
      const bool fits = fitsOneBin(a);
      if (fits)
        EXPECT_EQ(packingFault(problem, packedFrom(a.boxes, 1), type), "");
      else
        EXPECT_TRUE(a.stopped) << "n " << n << " type " << type
                               << ": every misfit here is a search cut short";
      EXPECT_LE(reports.size(), 80u) << reports;
    }
  }
}

TEST(PackBoxes, EdgesOfTheInput) {
  constexpr int kHuge = std::numeric_limits<int>::max(), kTiny = std::numeric_limits<int>::min();
  const std::string end = "\nIRREGULAR PROGRAM TERMINATION\n";
  struct Case {
    const char* name;
    Problem problem;
    int type;
    std::string reports;
    int ub;
  };
  const Case cases[] = {
      {"no boxes", {{5, 5, 5}, {}}, 0, "", 0},
      {"two of the bin's size", {{5, 6, 7}, {{5, 6, 7}, {5, 6, 7}}}, 0, "", 2},
      {"type 2", {{5, 5, 5}, {{1, 1, 1}}}, 2, "bad packtype" + end, 0},
      {"type -1", {{5, 5, 5}, {{1, 1, 1}}}, -1, "bad packtype" + end, 0},
      {"too wide", {{5, 5, 5}, {{6, 5, 5}}}, 0, "bad w\n" + end, 1},
      {"too high", {{5, 5, 5}, {{5, kHuge, 5}}}, 1, "bad h\n" + end, 1},
      {"no depth", {{5, 5, 5}, {{5, 5, 0}, {5, 5, kTiny}}}, 0, "bad d\n" + end + "bad d\n" + end, 1},
      {"largest bin", {{1290, 1290, 1290}, {{1290, 1290, 1290}, {645, 1, 1290}}}, 1, "", 2},
      {"volume beyond 32 bits", {{1291, 1291, 1291}, {{1, 1, 1}}}, 0, "bad bin" + end, 0},
      {"side beyond 16 bits", {{32768, 1, 1}, {{1, 1, 1}}}, 0, "bad bin" + end, 0},
      {"longest side", {{32767, 256, 256}, {{32767, 256, 128}, {32767, 256, 128}}}, 0, "", 1},
      {"no bin", {{0, 5, 5}, {{1, 1, 1}}}, 0, "bad bin" + end, 0},
  };
  for (const Case& c : cases) {
    const Packed packed = pack(c.problem, c.type);
    EXPECT_EQ(packed.reports, c.reports) << c.name;
    EXPECT_EQ(packed.ub, c.ub) << c.name;
    EXPECT_EQ(packed.lb, c.ub) << c.name;
    EXPECT_EQ(packed.nodes, 0) << c.name;
  }
}

TEST(PackBoxes, LimitsStopTheSearchAndSayItOnce) {
  const Problem problem = problemOf(nestbench::boxSet(2, 50, 2));
  const struct {
    Limits limits;
    const char* message;
  } cases[] = {{{1, 0, 0}, "NODELIMIT\n"}, {{0, 1, 0}, "ITERLIMIT\n"}, {{0, 0, 1}, "TIMELIMIT\n"}};
  for (const auto& [limits, message] : cases) {
    const Packed packed = pack(problem, 0, limits);
    EXPECT_EQ(packed.reports, message);
    EXPECT_LT(packed.lb, packed.ub);
    EXPECT_EQ(packingFault(problem, packed, 0), "");
  }
  EXPECT_EQ(pack(problem, 0, {3, 0, 0}).nodes, 3) << "counted in thousands";
}

TEST(PackBounds, CountWhatCannotLieTogether) {
  const struct {
    const char* name;
    Problem problem;
    int volume, sides, both;
  } cases[] = {
      {"none", {{10, 10, 10}, {}}, 0, 0, 0},
      {"a low one beside none", {{10, 10, 10}, {{6, 6, 6}, {6, 6, 6}, {6, 5, 6}}}, 1, 3, 3},
      {"all high, so no height to cut at", {{10, 10, 10}, {{6, 6, 6}, {6, 6, 6}, {6, 6, 6}}}, 1, 1, 1},
      {"seen after a turn", {{10, 10, 10}, {{6, 6, 6}, {6, 6, 6}, {5, 6, 6}}}, 1, 3, 3},
      {"odd bin, just above half", {{5, 5, 5}, {{3, 2, 3}, {3, 2, 3}, {3, 2, 3}}}, 1, 2, 2},
      {"volume of the rest",
       {{10, 10, 10}, {{10, 6, 10}, {10, 6, 10}, {5, 10, 5}, {5, 10, 5}, {5, 10, 5}, {5, 10, 5}, {5, 10, 5}}},
       3,
       1,
       3},
      {"equality takes no bin more", {{10, 10, 10}, {{10, 10, 5}, {10, 10, 5}}}, 1, 1, 1},
  };
  for (const auto& c : cases) {
    AllInfo3D& a = load(c.problem, 0);
    EXPECT_EQ(mek::pack::boundByVolume(a, a.boxes), c.volume) << c.name;
    EXPECT_EQ(mek::pack::boundBySides(a, a.boxes), c.sides) << c.name;
    EXPECT_EQ(mek::pack::boundByBoth(a, a.boxes), c.both) << c.name;
    EXPECT_EQ(a.W, c.problem.bin.w) << c.name;
    for (std::size_t i = 0; i < a.boxes.size(); ++i) EXPECT_EQ(a.boxes[i].h, c.problem.boxes[i].h) << c.name;
  }
}

TEST(PackCheck, FindsEachFault) {
  // Three bars, each beyond the next one along another axis: no bar can be the last to be put in.
  const Problem ring{{2, 2, 2}, {{1, 2, 1}, {1, 1, 2}, {2, 1, 1}}};
  AllInfo3D& a = load(ring, 1);
  const int corners[3][3] = {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
  for (std::size_t i = 0; i < 3; ++i) {
    a.boxes[i].x = mek::pack::toShort(corners[i][0]);
    a.boxes[i].y = mek::pack::toShort(corners[i][1]);
    a.boxes[i].z = mek::pack::toShort(corners[i][2]);
    a.boxes[i].bno = 1;
  }
  std::string reports;
  const mek::ScopedDebugSink sink([&](std::string_view text) { reports += text; });
  EXPECT_FALSE(mek::pack::checkPacking(a, a.boxes));
  EXPECT_EQ(timesIn(reports, "not robot packable\n"), 3u);

  a.packtype = 0;
  reports.clear();
  EXPECT_TRUE(mek::pack::checkPacking(a, a.boxes));
  EXPECT_EQ(reports, "");
  a.boxes[1].x = 0;
  EXPECT_FALSE(mek::pack::checkPacking(a, a.boxes));
  EXPECT_EQ(reports, "overlap box 1,2: [0,0,1] [0,0,0]\nIRREGULAR PROGRAM TERMINATION\n");
  a.boxes[1].no = 1;
  reports.clear();
  EXPECT_FALSE(mek::pack::checkPacking(a, a.boxes));
  EXPECT_EQ(timesIn(reports, "duplicated box 1\n\n"), 1u);

  reports.clear();
  a.boxes[1] = a.boxes[0];
  a.boxes[1].no = 2;
  a.boxes[1].bno = 4;
  mek::pack::storeSolution(a, a.boxes, 3);
  EXPECT_EQ(timesIn(reports, "illegal bin 4, box 2\n"), 1u);
  reports.clear();
  mek::pack::storeSolution(a, a.boxes, 3);
  EXPECT_EQ(timesIn(reports, "not improved\n"), 1u);
  reports.clear();
  mek::pack::storeSolution(a, a.boxes.first(2), 2);
  EXPECT_EQ(timesIn(reports, "not correct amount of boxes\n"), 1u);
}

TEST(RobotTest, CornerPointsOfTheEnvelope) {
  AllInfo3D& a = load({{10, 10, 10}, {{2, 3, 4}, {5, 2, 6}, {1, 1, 1}}}, 1);
  const std::array<std::int16_t, 2> order = {0, 1};
  a.boxes[1].x = 2;
  std::array<mek::pack::Corner3D, 16> corners;
  const auto found = [&](std::size_t boxes, mek::pack::Corner3D least, std::int64_t& room) {
    std::vector<std::array<int, 3>> points;
    const int count =
        mek::pack::cornerPoints(a, a.boxes, std::span(order).first(boxes), least, corners, room);
    for (int i = 0; i < count; ++i) {
      const auto& corner = corners[static_cast<std::size_t>(i)];
      points.push_back({corner.x, corner.y, corner.z});
    }
    return points;
  };
  using Points = std::vector<std::array<int, 3>>;
  std::int64_t room = 0;
  EXPECT_EQ(found(0, {1, 1, 1}, room), (Points{{0, 0, 0}}));
  EXPECT_EQ(room, 1000);
  EXPECT_EQ(found(1, {1, 1, 1}, room), (Points{{0, 3, 0}, {2, 0, 0}, {0, 0, 4}}));
  EXPECT_EQ(room, 1000 - 24);
  // Boxes 0 and 1 stand side by side; the envelope of the second goes down to x = 0 beyond the first's end.
  EXPECT_EQ(found(2, {1, 1, 1}, room), (Points{{0, 3, 0}, {2, 2, 0}, {7, 0, 0}, {0, 2, 4}, {0, 0, 6}}));
  EXPECT_EQ(room, 4 * (100 - 6 - 10) + 2 * (100 - 14) + 4 * 100);
  // A box four wide has no place right of x = 7, one seven deep none from z = 4 on.
  EXPECT_EQ(found(2, {4, 1, 7}, room), (Points{{0, 3, 0}, {2, 2, 0}}));
  EXPECT_EQ(mek::pack::cornerPoints(a, a.boxes, order, {1, 1, 1}, std::span(corners).first(4), room), -1);
}

TEST(PackHeuristics, GiveSoundRobotPackings) {
  for (int boxClass = 1; boxClass <= 8; ++boxClass) {
    const mek::PackInstance made = nestbench::boxSet(boxClass, 40, 2);
    Problem problem{{made.W, made.H, made.D}, {}};
    for (std::size_t i = 0; i < made.w.size(); ++i)
      problem.boxes.push_back({made.w[i], made.h[i], made.d[i]});
    AllInfo3D& a = load(problem, 1);
    mek::pack::packLayers(a);
    const int layered = a.z;
    EXPECT_EQ(packingFault(problem, packedFrom(a.best, layered), 1), "") << "class " << boxClass;
    if (kShare > 1 && boxClass > 2) continue;
    mek::pack::packBinByBin(a);
    EXPECT_LE(a.z, layered);
    EXPECT_EQ(packingFault(problem, packedFrom(a.best, a.z), 1), "") << "class " << boxClass;
  }
}

}  // namespace
