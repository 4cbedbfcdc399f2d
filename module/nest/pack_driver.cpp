#include <array>
#include <charconv>
#include <cstring>
#include <istream>
#include <ostream>

#include "module/nest/debug_sink.h"
#include "module/nest/pack_boxes.h"
#include "module/nest/pack_problem.h"
#include "platform/files/files.h"
#include "platform/text/format.h"

namespace mek {
namespace {

constexpr int kFileArguments = 6;
constexpr int kRandomArguments = 8;
constexpr int kRandomRuns = 10;
constexpr int kFailed = -1;
constexpr std::uint64_t kMostBytes = 64 << 20;

template <class... Args>
void print(std::ostream& out, const char* format, const Args&... args) {
  out << platform::formatText<char>(format, {platform::FormatArg(args)...});
}

/// The seven numbers of a random problem; a file uses the last four.
enum Parameter { kN, kBindim, kType, kNodes, kIterations, kTime, kPacking, kParameters };
constexpr std::array<const char*, kParameters> kNames = {"n",         "bindim",    "type",       "nodelimit",
                                                         "iterlimit", "timelimit", "packingtype"};
using Parameters = std::array<int, kParameters>;

bool readParameters(const char* const* texts, int first, Parameters& values, std::ostream& out) {
  for (int i = first; i < kParameters; ++i) {
    const char* text = texts[i - first];
    const char* end = text + std::strlen(text);
    const auto result = std::from_chars(text, end, values[static_cast<std::size_t>(i)]);
    if (result.ec == std::errc() && result.ptr == end && text != end) continue;
    print(out, "%s: expected a whole number, found \"%s\"\n", kNames[static_cast<std::size_t>(i)], text);
    return false;
  }
  return true;
}

bool askParameters(Parameters& values, std::istream& in, std::ostream& out) {
  for (std::size_t i = 0; i < kParameters; ++i) {
    print(out, "%s = ", kNames[i]);
    out.flush();
    if (in >> values[i]) continue;
    print(out, "%s: expected a whole number\n", kNames[i]);
    return false;
  }
  return true;
}

void printSolution(const PackInstance& instance, const PackResult& result, std::ostream& out) {
  print(out, "%d (%d,%d,%d)\n", instance.n(), instance.W, instance.H, instance.D);
  for (std::size_t i = 0; i < result.bno.size(); ++i)
    print(out, "%2d (%2d %2d %2d) : Bin %2d (%2d, %2d, %2d)\n", static_cast<int>(i) + 1, instance.w[i],
          instance.h[i], instance.d[i], result.bno[i], result.x[i], result.y[i], result.z[i]);
}

struct Totals {
  int runs = 0, solved = 0;
  double ub = 0, lb = 0, gap = 0, deviation = 0, nodes = 0, iterations = 0, seconds = 0;

  void add(const PackResult& result) {
    ++runs;
    solved += result.lb == result.ub;
    ub += result.ub;
    lb += result.lb;
    gap += result.ub - result.lb;
    if (result.lb > 0) deviation += static_cast<double>(result.ub - result.lb) / result.lb;
    nodes += result.nodes;
    iterations += result.iterations;
    seconds += result.milliseconds / 1000.0;
  }
};

void printTotals(const Parameters& p, const Totals& totals, std::ostream& out) {
  const double runs = totals.runs;
  print(out, "n           = %d\n", p[kN]);
  print(out, "bdim        = %d\n", p[kBindim]);
  print(out, "type        = %d\n", p[kType]);
  print(out, "nodelimit   = %d\n", p[kNodes]);
  print(out, "iterlimit   = %d\n", p[kIterations]);
  print(out, "timelimit   = %d\n", p[kTime]);
  print(out, "packingtype = %d\n", p[kPacking]);
  print(out, "solved      = %d\n", totals.solved);
  print(out, "ub          = %.1f\n", totals.ub / runs);
  print(out, "lb          = %.1f\n", totals.lb / runs);
  print(out, "gap         = %.1f\n", totals.gap / runs);
  print(out, "dev         = %.2f\n", totals.deviation / runs);
  print(out, "nodes       = %.0f\n", totals.nodes / runs);
  print(out, "iterations  = %.0f\n", totals.iterations / runs);
  print(out, "time        = %.2f\n", totals.seconds / runs);
}

void solveRun(const PackInstance& instance, const Parameters& p, int run, Totals& totals, std::ostream& out) {
  const PackResult result = solvePackInstance(instance, {p[kNodes], p[kIterations], p[kTime]}, p[kPacking]);
  print(out, "%2d : lb %2d z %2d node %9d iter %9d time %6.2f\n", run, result.lb, result.ub, result.nodes,
        result.iterations, result.milliseconds / 1000.0);
  if (p[kType] == 0) printSolution(instance, result, out);
  out.flush();
  totals.add(result);
}

int runFile(const char* name, Parameters p, std::ostream& out) {
  std::string text, error;
  PackInstance instance;
  if (!platform::readFile(name, text, kMostBytes)) {
    out << "wrong filename";
    return kFailed;
  }
  if (!readPackProblem(text, instance, error)) {
    print(out, "%s: %s\n", name, error);
    return kFailed;
  }
  p[kN] = instance.n();
  p[kBindim] = instance.W;
  p[kType] = 0;
  print(out, "3DBPP PROBLEM %s %d %d %d %d\n", name, p[kNodes], p[kIterations], p[kTime], p[kPacking]);
  Totals totals;
  solveRun(instance, p, 1, totals, out);
  printTotals(p, totals, out);
  return 0;
}

int runRandom(const Parameters& p, std::ostream& out) {
  print(out, "3DBPP PROBLEM %d %d %d %d %d %d %d\n", p[kN], p[kBindim], p[kType], p[kNodes], p[kIterations],
        p[kTime], p[kPacking]);
  Totals totals;
  for (int run = 1; run <= kRandomRuns; ++run) {
    PackInstance instance;
    if (!randomPackInstance(p[kN], p[kBindim], p[kType], static_cast<std::uint32_t>(run + p[kN]), instance)) {
      if (p[kN] > kPackMaxBoxes) out << "too big instance\n";
      print(out, "no instance of type %d with %d boxes and a bin of side %d\n", p[kType], p[kN], p[kBindim]);
      return kFailed;
    }
    solveRun(instance, p, run, totals, out);
  }
  printTotals(p, totals, out);
  return 0;
}

}  // namespace

int packProblemDriver(int count, const char* const* arguments, std::istream& in, std::ostream& out) {
  const ScopedDebugSink reports([&out](std::string_view text) { out << text; });
  Parameters p{};
  if (count == kFileArguments) {
    if (!readParameters(arguments + 2, kNodes, p, out)) return kFailed;
    return runFile(arguments[1], p, out);
  }
  const bool given = count == kRandomArguments;
  if (!(given ? readParameters(arguments + 1, kN, p, out) : askParameters(p, in, out))) return kFailed;
  return runRandom(p, out);
}

}  // namespace mek
