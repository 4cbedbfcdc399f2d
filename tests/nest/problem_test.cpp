#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "module/nest/pack_boxes.h"
#include "module/nest/pack_problem.h"
#include "siblings/tools/cli/items_csv.h"
#include "siblings/tools/cli/nest_command.h"
#include "siblings/tools/cli/pack_command.h"

namespace {

/// A folder of its own for each test, removed afterwards.
class Files : public testing::Test {
 protected:
  Files() : folder_(std::filesystem::temp_directory_path() / ("korvane_nest_" + std::to_string(getpid()))) {
    std::filesystem::create_directories(folder_);
  }
  ~Files() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  std::string read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(path(name), std::ios::binary).rdbuf();
    return text.str();
  }

  struct Outcome {
    int code;
    std::string out, err;
  };
  static Outcome run(int (*command)(int, const char* const*, std::ostream&, std::ostream&),
                     const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"korvane"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    std::ostringstream out, err;
    const int code = command(static_cast<int>(argv.size()), argv.data(), out, err);
    return {code, out.str(), err.str()};
  }
  static Outcome drive(const std::vector<std::string>& arguments, const std::string& input = "") {
    std::vector<const char*> argv = {"pack"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    std::istringstream in(input);
    std::ostringstream out;
    const int code = mek::packProblemDriver(static_cast<int>(argv.size()), argv.data(), in, out);
    return {code, out.str(), ""};
  }

 private:
  std::filesystem::path folder_;
};

using PackProblem = Files;
using PackDriver = Files;
using NestCommand = Files;
using PackCommand = Files;

TEST(PackRandomNumbers, AreThoseOfThePosixGenerator) {
  for (const long seed : {0L, 1L, 12345L, 2147483647L}) {
    mek::PackRandom random(static_cast<std::uint32_t>(seed));
    srand48(seed);
    for (int i = 0; i < 50; ++i) ASSERT_EQ(random.draw(10, 1009), 10 + lrand48() % 1000);
  }
  mek::PackRandom random(3);
  EXPECT_EQ(random.draw(5, 5), 5);
  EXPECT_EQ(random.draw(5, 2), 5);
}

TEST(PackInstances, ClassesKeepTheirRanges) {
  struct Range {
    int low, high;
  };
  constexpr Range kSmall{1, 50}, kLarge{67, 100}, kBig{50, 100};
  const std::vector<std::array<Range, 3>> classes = {{kSmall, kLarge, kLarge},
                                                     {kLarge, kSmall, kLarge},
                                                     {kLarge, kLarge, kSmall},
                                                     {kBig, kBig, kBig},
                                                     {kSmall, kSmall, kSmall}};
  for (int type = 0; type <= 12; ++type) {
    std::array<int, 5> drawn{};
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
      mek::PackInstance instance;
      ASSERT_TRUE(mek::randomPackInstance(100, 100, type, seed, instance));
      ASSERT_EQ(instance.n(), 100);
      for (std::size_t i = 0; i < 100; ++i) {
        const int sides[3] = {instance.w[i], instance.h[i], instance.d[i]};
        const auto inside = [&](const std::array<Range, 3>& ranges) {
          for (std::size_t axis = 0; axis < 3; ++axis)
            if (sides[axis] < ranges[axis].low || sides[axis] > ranges[axis].high) return false;
          return true;
        };
        bool some = false;
        for (std::size_t k = 0; k < classes.size(); ++k) {
          drawn[k] += inside(classes[k]);
          some = some || inside(classes[k]);
        }
        const int most = type == 6 ? 10 : type == 7 ? 35 : 100;
        ASSERT_TRUE(type <= 5 ? some : std::max({sides[0], sides[1], sides[2]}) <= most) << "type " << type;
      }
    }
    // A type's own class takes a half and a fifth of that again; each other one a tenth.
    for (int k = 1; k <= 5 && type <= 5; ++k) {
      const int expected = type == 0 ? 200 : type == k ? 600 : 100;
      EXPECT_NEAR(drawn[static_cast<std::size_t>(k - 1)], expected, 90) << "type " << type << " class " << k;
    }
  }
}

TEST(PackInstances, FullBinsAreFullAndEndWithTheFixedCut) {
  for (const int n : {3, 6, 7, 10, 25, 50, 90, 400}) {
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
      mek::PackInstance instance, again;
      ASSERT_TRUE(mek::randomPackInstance(n, 100, 9, seed, instance)) << n;
      ASSERT_TRUE(mek::randomPackInstance(n, 100, 9, seed, again));
      EXPECT_EQ(instance.w, again.w);
      ASSERT_EQ(instance.n(), n);
      long volume = 0;
      for (std::size_t i = 0; i < instance.w.size(); ++i)
        volume += 1L * instance.w[i] * instance.h[i] * instance.d[i];
      EXPECT_EQ(volume, 3000000);
      if (n < 7) continue;
      const std::size_t last = instance.w.size() - 5;
      EXPECT_EQ(instance.w[last], instance.w[last + 2]);
      EXPECT_EQ(instance.w[last] - instance.w[last + 1], instance.w[last + 4]);
      EXPECT_EQ(instance.d[last], instance.d[last + 4]);
      if (n > 10) continue;
      EXPECT_EQ(mek::solvePackInstance(instance, {0, 0, 5}, 0).ub, 3) << "n " << n << " seed " << seed;
    }
  }
  mek::PackInstance untouched;
  for (const auto& [n, side, type] :
       {std::array{2, 100, 9}, {401, 100, 1}, {-1, 100, 1}, {5, 0, 1}, {5, 1291, 1}, {400, 2, 9}})
    EXPECT_FALSE(mek::randomPackInstance(n, side, type, 1, untouched)) << n << " " << side << " " << type;
  EXPECT_EQ(untouched.n(), 0);
  EXPECT_TRUE(mek::randomPackInstance(400, 1, 4, 1, untouched));
}

TEST_F(PackProblem, ErrorsTellTheLine) {
  const struct {
    const char *text, *error;
  } cases[] = {
      {"", "line 1: expected the number of boxes, found the end of the file"},
      {"2 10 10 10\n1 2 3\n4 5", "line 3: expected the depth of box 2, found the end of the file"},
      {"1 10 10 10\n\n1 2x 3", "line 3: expected the height of box 1, found \"2x\""},
      {"1 10 1e1 10\n1 2 3", "line 1: expected the height of the bin, found \"1e1\""},
      {"1 10 10 99999999999\n", "line 1: expected the depth of the bin, found \"99999999999\""},
      {"401 10 10 10\n", "line 1: too big instance: expected 0 to 400 boxes, found 401"},
      {"-1 10 10 10\n", "line 1: too big instance: expected 0 to 400 boxes, found -1"},
  };
  for (const auto& [text, expected] : cases) {
    mek::PackInstance instance;
    instance.W = 7;
    std::string error;
    EXPECT_FALSE(mek::readPackProblem(text, instance, error));
    EXPECT_EQ(error, expected);
    EXPECT_EQ(instance.W, 7);
  }
  mek::PackInstance instance;
  std::string error;
  EXPECT_TRUE(mek::readPackProblem("2 3 4 5\r\n1 2 3\r\n-4 5 6\nand so on", instance, error)) << error;
  EXPECT_EQ(instance.h, (std::vector<int>{2, 5}));
  EXPECT_EQ(instance.w, (std::vector<int>{1, -4}));
}

/// The times differ from run to run.
std::string withoutTimes(std::string text) {
  for (std::size_t at = text.find("time "); at != std::string::npos; at = text.find("time ", at + 1)) {
    const std::size_t digit = text.find_first_of("0123456789", at), end = text.find('\n', at);
    if (digit < end && text.compare(at, 9, "timelimit") != 0) text.replace(digit, end - digit, "T");
  }
  return text;
}

TEST_F(PackDriver, PrintsHeadRunSolutionAndAverages) {
  const std::string file = write("p.txt", "3 10 10 10\n10 10 10\n5 6 7\n 5 11 3\n");
  const Outcome outcome = drive({file, "1", "2", "3", "1"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(withoutTimes(outcome.out),
            "3DBPP PROBLEM " + file +
                " 1 2 3 1\nbad h\n\nIRREGULAR PROGRAM TERMINATION\n"
                " 1 : lb  2 z  2 node         0 iter         0 time   T\n"
                "3 (10,10,10)\n"
                " 1 (10 10 10) : Bin  1 ( 0,  0,  0)\n"
                " 2 ( 5  6  7) : Bin  2 ( 5,  0,  0)\n"
                " 3 ( 5 11  3) : Bin  2 ( 0,  0,  0)\n"
                "n           = 3\nbdim        = 10\ntype        = 0\nnodelimit   = 1\niterlimit   = 2\n"
                "timelimit   = 3\npackingtype = 1\nsolved      = 1\nub          = 2.0\nlb          = 2.0\n"
                "gap         = 0.0\ndev         = 0.00\nnodes       = 0\niterations  = 0\ntime        = T\n");
}

TEST_F(PackDriver, FormsAndFailures) {
  const Outcome random = drive({"8", "20", "6", "0", "0", "5", "0"});
  EXPECT_EQ(random.code, 0);
  EXPECT_TRUE(random.out.starts_with("3DBPP PROBLEM 8 20 6 0 0 5 0\n 1 : lb"));
  EXPECT_NE(random.out.find("\n10 : lb"), std::string::npos);
  EXPECT_EQ(random.out.find("Bin"), std::string::npos);
  const Outcome asked = drive({}, "8 20 6 0 0 5 0");
  EXPECT_EQ(
      withoutTimes(asked.out),
      "n = bindim = type = nodelimit = iterlimit = timelimit = packingtype = " + withoutTimes(random.out));
  EXPECT_NE(drive({"8", "20", "0", "0", "0", "5", "0"}).out.find("Bin"), std::string::npos)
      << "type 0 lists solutions";

  const struct {
    std::vector<std::string> arguments;
    const char *input, *out;
  } failures[] = {
      {{path("none"), "0", "0", "0", "0"}, "", "wrong filename"},
      {{path("none"), "0", "zero", "0", "0"}, "", "iterlimit: expected a whole number, found \"zero\"\n"},
      {{"401", "20", "6", "0", "0", "5", "0"}, "", "too big instance\n"},
      {{}, "8 20 x", "type = type: expected a whole number\n"},
  };
  for (const auto& [arguments, input, out] : failures) {
    const Outcome failed = drive(arguments, input);
    EXPECT_EQ(failed.code, -1);
    EXPECT_NE(failed.out.find(out), std::string::npos) << failed.out;
  }
}

TEST(ItemsCsv, LayoutsAndFaults) {
  const struct {
    const char *text, *read;
  } cases[] = {
      {"", ""},
      {"10,20\n30,40,2\n", "10x20@1 30x40@2 30x40@2 "},
      {"\xef\xbb\xbfName;Height;x;WIDTH;count\r\nA0;1189;;841;\r\n\r\n# none\r\n\"a \"\"b\";5;;6;1",
       "A0 841x1189@2 a \"b 6x5@5 "},
      {"first,10,20\nsecond,1.5,2e1,1\n", "first 10x20@1 second 1.5x20@2 "},
      {"\"two\nlines\",10,20\n,3,4\n", "two\nlines 10x20@1 3x4@3 "},
      {"10,20\n30\n", "line 2: expected a height above 0, found nothing"},
      {"10,20\n0,5\n", "line 2: expected a width above 0, found \"0\""},
      {"10,nan\n", "line 1: expected a height above 0, found \"nan\""},
      {"10,1e999\n", "line 1: expected a height above 0, found \"1e999\""},
      {"10,20,1.5\n", "line 1: expected a whole count of at least 1, found \"1.5\""},
      {"10,20,0\n", "line 1: expected a whole count of at least 1, found \"0\""},
      {"10,20,100001\n", "line 1: expected at most 100000 items in all, found \"100001\""},
      {"width,size\n", "line 1: expected a column named height"},
      {"10,\"20\n", "line 1: expected a closing quote, found the end of the file"},
      {"\"10\"x,20\n", "line 1: expected a separator behind the closing quote, found \"x\""},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<korvane::CsvItem> items;
    std::string result;
    if (korvane::readItemsCsv(text, items, result))
      for (const korvane::CsvItem& item : items) {
        std::ostringstream line;
        line << item.name << (item.name.empty() ? "" : " ") << item.width << "x" << item.height << "@"
             << item.line << " ";
        result += line.str();
      }
    EXPECT_EQ(result, expected) << text;
  }
}

TEST_F(NestCommand, PlansReportsAndExitCodes) {
  const std::string table = write("items.csv", "name,width,height,count\nA4 <&>,210,297,4\nlong,100,420,1\n");
  const Outcome plain = run(runNestCommand, {table, "--sheet", "594x420", "-o", path("plan.svg")});
  EXPECT_EQ(plain.code, 0) << plain.err;
  EXPECT_EQ(plain.out.substr(0, plain.out.find('\n')),
            "2 sheets of 594 x 420, 5 of 5 items placed, 58.4 % used");
  const std::string svg = read("plan.svg");
  EXPECT_NE(svg.find(">A4 &lt;&amp;&gt;</text>"), std::string::npos) << svg;
  std::size_t rectangles = 0;
  for (std::size_t at = svg.find("<rect"); at != std::string::npos; at = svg.find("<rect", at + 1))
    ++rectangles;
  EXPECT_EQ(rectangles, 7u) << "two sheets and five frames";

  const Outcome tooBig = run(runNestCommand, {table, "--sheet", "594x400", "--json"});
  EXPECT_EQ(tooBig.code, 0) << tooBig.out;
  EXPECT_NE(tooBig.out.find("\"name\":\"long\",\"width\":100,\"height\":420,\"sheet\":"), std::string::npos)
      << tooBig.out;
  const Outcome unplaced = run(runNestCommand, {table, "--sheet", "400x400"});
  EXPECT_EQ(unplaced.code, 1);
  EXPECT_NE(unplaced.out.find("not placed: line 3 long 100 x 420"), std::string::npos) << unplaced.out;
  const Outcome strip = run(runNestCommand, {table, "--strip", "420", "--gap", "5"});
  EXPECT_EQ(strip.out.substr(0, 9), "1 sheet o") << strip.out;

  const struct {
    std::vector<std::string> arguments;
    int code;
    const char* err;
  } faults[] = {
      {{table}, 2, "give either --sheet or --strip"},
      {{table, "--sheet", "1x1", "--strip", "5"}, 2, "give either --sheet or --strip"},
      {{table, "--sheet", "594"}, 2, "expected a size such as 594x841, found \"594\""},
      {{table, "--sheet", "594x-1"}, 2, "expected a size"},
      {{table, "--sheet", "5x5", "-o", "plan.pdf"}, 2, "ends in .svg, .dxf or .dwg, found \"plan.pdf\""},
      {{table, "--sheet", "5x5", "--gap", "-1"}, 2, "--gap"},
      {{"--sheet", "5x5"}, 2, "items"},
      {{path("none.csv"), "--sheet", "5x5"}, 1, "none.csv"},
      {{write("bad.csv", "1,2\n3,x\n"), "--sheet", "5x5"},
       1,
       "bad.csv: line 2: expected a height above 0, found \"x\""},
      {{table, "--sheet", "594x420", "-o", path("no/such/plan.svg")}, 1, "plan.svg"},
  };
  for (const auto& [arguments, code, err] : faults) {
    const Outcome outcome = run(runNestCommand, arguments);
    EXPECT_EQ(outcome.code, code) << err;
    EXPECT_NE(outcome.err.find(err), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out, "");
  }
  EXPECT_EQ(run(runNestCommand, {"--help"}).code, 0);
}

TEST_F(PackCommand, OptionsByNameAndDriverForms) {
  const std::string file = write("p.txt", "3 10 10 10\n10 10 10\n5 6 7\n5 4 3\n");
  const Outcome plain = run(runPackCommand, {"--file", file, "--svg", path("bins.svg")});
  EXPECT_EQ(plain.code, 0) << plain.err;
  EXPECT_TRUE(plain.out.starts_with("3 boxes in 2 bins of 10 x 10 x 10, at least 2 needed\n")) << plain.out;
  EXPECT_NE(read("bins.svg").find(">bin 2, z 0</text>"), std::string::npos);
  const Outcome json =
      run(runPackCommand, {"--boxes", "6", "--bindim", "20", "--type", "6", "--robot", "--json"});
  EXPECT_EQ(json.code, 0);
  EXPECT_TRUE(json.out.starts_with("{\"bins\":1,\"bound\":1,\"bin\":[20,20,20]")) << json.out;
  EXPECT_TRUE(run(runPackCommand, {file, "0", "0", "0", "1"}).out.starts_with("3DBPP PROBLEM"));

  const struct {
    std::vector<std::string> arguments;
    int code;
  } faults[] = {
      {{"--robot"}, 2},
      {{"--file", file, "--boxes", "3"}, 2},
      {{"--boxes", "-3"}, 2},
      {{"one", "two"}, 2},
      {{"--file", path("none")}, 1},
      {{"--boxes", "401"}, 1},
      {{"--file", write("cut.txt", "3 10 10 10\n10 10")}, 1},
      {{"--file", write("wrong.txt", "1 10 10 10\n10 10 11")}, 1},
      {{path("none"), "0", "0", "0", "1"}, 1},
  };
  for (const auto& [arguments, code] : faults)
    EXPECT_EQ(run(runPackCommand, arguments).code, code) << arguments[0];
}

}  // namespace
