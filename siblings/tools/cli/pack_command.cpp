#include "siblings/tools/cli/pack_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "module/nest/debug_sink.h"
#include "module/nest/pack_boxes.h"
#include "module/nest/pack_problem.h"
#include "platform/files/files.h"
#include "siblings/tools/cli/command_output.h"

namespace {

using namespace korvane;

constexpr int kFileForm = 6, kRandomForm = 8, kAskingForm = 1;
constexpr std::uint64_t kMostBytes = 64 << 20;

struct Options {
  std::string file, picture;
  int n = 0, bindim = 100, type = 1, seed = 1;
  mek::PackLimits limits;
  bool robot = false, json = false;
};

bool isDriverForm(int argc, const char* const* argv) {
  if (argc != kFileForm && argc != kRandomForm && argc != kAskingForm) return false;
  return std::none_of(argv + 1, argv + argc,
                      [](const char* text) { return text[0] == '-' && text[1] == '-'; });
}

bool readInstance(const Options& options, mek::PackInstance& instance, std::ostream& err) {
  if (options.file.empty()) {
    if (mek::randomPackInstance(options.n, options.bindim, options.type,
                                static_cast<std::uint32_t>(options.seed), instance))
      return true;
    err << "pack: no instance of type " << options.type << " with " << options.n
        << " boxes and a bin of side " << options.bindim << "\n";
    return false;
  }
  std::string text, error;
  if (const auto status = platform::readFile(options.file, text, kMostBytes); !status) {
    err << "pack: " << status.message() << "\n";
    return false;
  }
  if (mek::readPackProblem(text, instance, error)) return true;
  err << options.file << ": " << error << "\n";
  return false;
}

void printText(const mek::PackInstance& instance, const mek::PackResult& result, std::ostream& out) {
  out << instance.n() << " boxes in " << result.ub << (result.ub == 1 ? " bin of " : " bins of ")
      << instance.W << " x " << instance.H << " x " << instance.D << ", at least " << result.lb << " needed"
      << (result.lb == result.ub ? "" : " (a limit was met)") << "\n";
  for (std::size_t i = 0; i < result.bno.size(); ++i)
    out << platform::formatText<char>("%4d (%d %d %d) : bin %d (%d, %d, %d)\n",
                                      {i + 1, instance.w[i], instance.h[i], instance.d[i], result.bno[i],
                                       result.x[i], result.y[i], result.z[i]});
}

void printJson(const mek::PackInstance& instance, const mek::PackResult& result, std::ostream& out) {
  out << "{\"bins\":" << result.ub << ",\"bound\":" << result.lb << ",\"bin\":[" << instance.W << ","
      << instance.H << "," << instance.D << "],\"nodes\":" << result.nodes
      << ",\"iterations\":" << result.iterations << ",\"milliseconds\":" << result.milliseconds
      << ",\"boxes\":[";
  for (std::size_t i = 0; i < result.bno.size(); ++i)
    out << (i == 0 ? "\n" : ",\n") << "{\"size\":[" << instance.w[i] << "," << instance.h[i] << ","
        << instance.d[i] << "],\"bin\":" << result.bno[i] << ",\"at\":[" << result.x[i] << "," << result.y[i]
        << "," << result.z[i] << "]}";
  out << "\n]}\n";
}

/// The depths at which the boxes of a bin begin.
std::vector<int> layersOf(const mek::PackResult& result, int bin) {
  std::vector<int> layers;
  for (std::size_t i = 0; i < result.bno.size(); ++i)
    if (result.bno[i] == bin) layers.push_back(result.z[i]);
  std::sort(layers.begin(), layers.end());
  layers.erase(std::unique(layers.begin(), layers.end()), layers.end());
  return layers;
}

/// A row for each bin, and in it the cuts through it at each depth where a box begins.
std::string drawBins(const mek::PackInstance& instance, const mek::PackResult& result) {
  std::size_t columns = 1;
  for (int bin = 1; bin <= result.ub; ++bin) columns = std::max(columns, layersOf(result, bin).size());
  const double space = 0.15 * std::max(instance.W, instance.H);
  const double pitchX = instance.W + space, pitchY = instance.H + space;
  SvgPage page(static_cast<double>(columns) * pitchX - space, result.ub * pitchY);
  for (int bin = 1; bin <= result.ub; ++bin) {
    const double y0 = (result.ub - bin) * pitchY;
    double x0 = 0;
    for (const int layer : layersOf(result, bin)) {
      page.caption(x0, y0 + instance.H + 0.3 * space, 0.4 * space,
                   "bin " + std::to_string(bin) + ", z " + std::to_string(layer));
      for (std::size_t i = 0; i < result.bno.size(); ++i) {
        if (result.bno[i] != bin || result.z[i] > layer || result.z[i] + instance.d[i] <= layer) continue;
        const double x = x0 + result.x[i], y = y0 + result.y[i];
        page.rectangle(x, y, instance.w[i], instance.h[i], fillColour(static_cast<int>(i)));
        page.label(x + instance.w[i] / 2.0, y + instance.h[i] / 2.0, instance.w[i], instance.h[i],
                   std::to_string(i + 1));
      }
      page.frame(x0, y0, instance.W, instance.H);
      x0 += pitchX;
    }
  }
  return page.text();
}

int work(const Options& options, std::ostream& out, std::ostream& err) {
  mek::PackInstance instance;
  if (!readInstance(options, instance, err)) return kWorkFailed;
  mek::PackResult result;
  bool irregular = false;
  {
    const mek::ScopedDebugSink sink([&](std::string_view text) {
      err << text;
      irregular = irregular || text.find("IRREGULAR") != std::string_view::npos;
    });
    result = mek::solvePackInstance(instance, options.limits, options.robot ? 1 : 0);
  }
  if (options.json)
    printJson(instance, result, out);
  else
    printText(instance, result, out);
  if (!options.picture.empty()) {
    if (const auto status = platform::writeFile(options.picture, drawBins(instance, result)); !status) {
      err << "pack: " << status.message() << "\n";
      return kWorkFailed;
    }
  }
  return irregular ? kWorkFailed : kSuccess;
}

}  // namespace

int runPackCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  if (isDriverForm(argc, argv))
    return mek::packProblemDriver(argc, argv, std::cin, out) == 0 ? kSuccess : kWorkFailed;
  Options options;
  CLI::App app("Packs boxes without turning them into the fewest equal bins.", "korvane pack");
  app.footer(
      "Also: korvane pack FILE NODELIMIT ITERLIMIT TIMELIMIT PACKINGTYPE,\n"
      "      korvane pack N BINDIM TYPE NODELIMIT ITERLIMIT TIMELIMIT PACKINGTYPE (10 runs),\n"
      "      korvane pack (asks for the seven numbers).\n"
      "Exit code: 0 success, 1 wrong input or a file failed, 2 wrong use.");
  const auto whole = [&](const char* name, int& value, int least, const char* help) {
    return app.add_option(name, value, help)->check(CLI::Range(least, 2147483647));
  };
  CLI::Option* file = app.add_option("--file", options.file, "Problem file: n W H D, then w h d of each box");
  CLI::Option* boxes = whole("--boxes", options.n, 1, "Random instance with so many boxes")->excludes(file);
  whole("--bindim", options.bindim, 1, "Side of its bin")->needs(boxes);
  whole("--type", options.type, 0, "Its type, 1 to 9")->needs(boxes);
  whole("--seed", options.seed, 0, "Its seed")->needs(boxes);
  whole("--nodelimit", options.limits.nodes, 0, "Search nodes in thousands, 0 for no limit");
  whole("--iterlimit", options.limits.iterations, 0, "Single-bin iterations in thousands, 0 for no limit");
  whole("--timelimit", options.limits.seconds, 0, "Seconds, 0 for no limit");
  app.add_flag("--robot", options.robot,
               "Only packings that can be filled box by box from right, above and front");
  app.add_option("--svg", options.picture, "Draw each bin's layers")->type_name("BINS.svg");
  app.add_flag("--json", options.json, "Print the result as JSON");
  try {
    app.parse(argc, argv);
    if (!*file && !*boxes) throw CLI::RequiredError("--file or --boxes");
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kSuccess : kWrongUse;
  }
  return work(options, out, err);
}
