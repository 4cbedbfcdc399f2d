#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "module/nest/debug_sink.h"
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
  const auto draw = [&](double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random);
  };
  for (int i = 0; i < kRandomPlans; ++i) {
    NestParams params{};
    params.sheetHeight = draw(100, 1000);
    params.sheetLength = i % 10 == 0 ? -1 : draw(100, 1500);
    params.partGap = i % 3 == 0 ? 0 : draw(0, 12);
    params.edgeGap = draw(0, 40);
    params.sheetGap = draw(0, 100);
    if (i % 4 == 0) params.partGap = params.edgeGap = params.sheetGap = 0;
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
    if (whole && params.sheetLength > 0) params.sheetLength = std::round(params.sheetLength / 10) * 10;
    const Plan plan = nest(params, frames);
    ASSERT_EQ(plan.answer, 1);
    ASSERT_EQ(planFault(plan), "") << "plan " << i << " part gap " << params.partGap << " height "
                                   << params.sheetHeight;
    for (std::size_t k = 0; k < frames.size(); ++k) {
      const double low = std::min(frames[k].width, frames[k].height),
                   high = std::max(frames[k].width, frames[k].height);
      const double length = params.sheetLength < 0 ? 1e7 : params.sheetLength;
      const double least = high <= params.sheetHeight ? low : low <= params.sheetHeight ? high : length + 1;
      if (isPlaced(plan, k))
        ASSERT_LE(least, length) << "plan " << i << " item " << k;
      else
        ASSERT_GT(least + params.partGap, length) << "plan " << i << " item " << k;
    }
  }
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// "x,y" of each item, with t when turned and - when it stays where it was given.
std::string places(const Plan& plan) {
  std::string text;
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    const NestItem& item = plan.items[i];
    std::ostringstream place;
    if (isPlaced(plan, i))
      place << item.x0 << "," << item.y0 << (item.rotated ? "t" : "");
    else
      place << "-";
    text += (i == 0 ? "" : " ") + place.str();
  }
  return text;
}

TEST(NesterFrame, SmallPlans) {
  const struct {
    const char* name;
    NestParams params;  ///< height, length, -, part gap, edge gap, sheet gap
    std::vector<Frame> frames;
    int sheets;
    const char* places;
  } cases[] = {
      {"nothing", {100, 100, 0, 0, 0, 0}, {}, 1, ""},
      {"a strip without end", {100, -1, 0, 0, 0, 0}, {{5e6, 100}, {4e6, 100}}, 1, "0,0 5e+06,0"},
      {"a strip has an end", {100, -1, 0, 0, 0, 0}, {{6e6, 100}, {6e6, 100}}, 2, "0,0 1e+07,0"},
      {"two that fill the height", {100, 50, 0, 0, 0, 0}, {{40, 60}, {40, 40}}, 1, "0,0 0,60"},
      {"and with their gap", {105, 50, 0, 5, 0, 0}, {{40, 60}, {40, 40}}, 1, "0,0 0,65"},
      {"a hair too high for both", {104.999, 50, 0, 5, 0, 9}, {{40, 60}, {40, 40}}, 2, "0,0 59,0"},
      {"fits only turned", {50, 200, 0, 0, 0, 0}, {{40, 120}}, 1, "0,0t"},
      {"the gap is wanted beside it", {50, 100, 0, 10, 0, 0}, {{91, 50}}, 1, "-"},
      {"and found", {50, 100, 0, 10, 0, 0}, {{90, 50}}, 1, "0,0"},
      {"the others go on", {50, 100, 0, 0, 0, 0}, {{10, 10}, {101, 60}, {10, 10}}, 1, "0,0 - 0,10"},
      {"largest side first, equal ones as given",
       {100, 100, 0, 0, 0, 0},
       {{10, 30}, {20, 90}, {30, 10}},
       1,
       "0,90t 0,0 20,0"},
      {"a good fit goes before a larger part",
       {200, 400, 0, 0, 0, 0},
       {{120, 119}, {100, 121}},
       1,
       "100,0 0,0"},
      {"later sheets lie beyond the sheet gap",
       {100, 100, 0, 0, 0, 7},
       {{100, 100}, {100, 100}, {100, 100}},
       3,
       "0,0 107,0 214,0"},
      {"half the edge gap counts beyond the first sheet",
       {50, 100, 0, 10, 20, 0},
       {{90, 50}, {95, 50}},
       2,
       "0,0 100,0"},
      {"sizes that aren't numbers",
       {100, 100, 0, 0, 0, 0},
       {{kNaN, 10}, {10, kInfinity}, {10, 10}},
       1,
       "- - 0,0"},
      {"parts without a size", {100, 100, 0, 0, 0, 0}, {{0, 0}, {0, 10}, {10, 0}, {10, 10}}, 1, nullptr},
      {"a sheet without height", {0, 100, 0, 0, 0, 0}, {{1, 1}}, 1, "-"},
      {"a sheet that is no number", {kNaN, kNaN, 0, 0, 0, 0}, {{1, 1}}, 1, "-"},
      {"gaps that aren't numbers", {100, 100, 0, kNaN, -5, kNaN}, {{100, 100}, {100, 100}}, 2, "0,0 100,0"},
      {"a gap without end", {100, 100, 0, kInfinity, 0, 0}, {{1, 1}}, 1, "-"},
      {"sheets between which nothing is",
       {100, 100, 0, 0, 0, kInfinity},
       {{100, 100}, {100, 100}},
       2,
       "0,0 1e+12,0"},
      {"a sheet without end", {kInfinity, kInfinity, 0, 0, 0, 0}, {{100, 100}}, 1, "0,0"},
      {"huge parts", {1e300, 1e300, 0, 0, 0, 0}, {{1e299, 1e299}, {5, 6}}, 1, nullptr},
  };
  for (const auto& c : cases) {
    const Plan plan = nest(c.params, c.frames);
    EXPECT_EQ(plan.answer, 1) << c.name;
    EXPECT_EQ(plan.sheets, c.sheets) << c.name;
    if (c.places) {
      EXPECT_EQ(places(plan), c.places) << c.name;
    } else {
      EXPECT_EQ(planFault(plan), "") << c.name;
    }
  }
}

TEST(NesterFrame, NullPointersAreNoItems) {
  const NestParams params{100, 100, 0, 0, 0, 0};
  NestItem item{5, 5, 15, 15, 3, 0, nullptr};
  int sheets = 0;
  EXPECT_EQ(NesterFrame(nullptr, 3, &params, &sheets), 1);
  EXPECT_EQ(sheets, 1);
  EXPECT_EQ(NesterFrame(&item, 1, nullptr, &sheets), 1);
  EXPECT_EQ(item.x0, 5);
  EXPECT_EQ(NesterFrame(&item, -1, &params, &sheets), 1);
  EXPECT_EQ(NesterFrame(&item, 1, &params, nullptr), 1);
  EXPECT_EQ(item.x0, 0);
  EXPECT_EQ(item.rotated, 0);
}

// Strips cut up without waste: every part has its place, so the length taken tells what the heuristic loses.
TEST(NesterFrame, CutUpStripsDontGrowWithoutMeasure) {
  std::mt19937 random(3);
  double worst = 1;
  for (int i = 0; i < 200; ++i) {
    std::vector<Frame> frames = {{1000, 600}};
    while (frames.size() < 40) {
      const auto largest = std::max_element(frames.begin(), frames.end(), [](const Frame& a, const Frame& b) {
        return a.width * a.height < b.width * b.height;
      });
      const bool across = largest->width > largest->height;
      double& side = across ? largest->width : largest->height;
      const double cut = std::round(side * std::uniform_real_distribution<double>(0.3, 0.7)(random));
      Frame rest = *largest;
      (across ? rest.width : rest.height) -= cut;
      side = cut;
      frames.push_back(rest);
    }
    const Plan plan = nest({600, -1, 0, 0, 0, 0}, frames);
    ASSERT_EQ(planFault(plan), "");
    double end = 0;
    for (const NestItem& item : plan.items) end = std::max(end, item.x1);
    worst = std::min(worst, 1000 / end);
  }
  EXPECT_GT(worst, 0.35);
}

TEST(NesterFrame, GapsAndPartsGoToTheDebugOutput) {
  std::string text;
  const mek::ScopedDebugSink sink([&](std::string_view part) { text += part; });
  nest({100, 200, 0, 0, 0, 0}, {{30, 60}});
  EXPECT_EQ(text, "1 gaps\n0,0 200x100\nPC255,0,255;PU0,0,PD30,0,30,60,0,60,0,0;\n");
}

}  // namespace
