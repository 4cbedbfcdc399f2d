#include "apps/korvane/plot_command.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>

#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "host/lettering/font.h"
#include "platform/files/files.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;
constexpr int kFailed = 1, kWrongUse = 2;
constexpr double kLeastResolution = 1, kGreatestResolution = 10000;

void complain(const std::string& text) {
  std::cerr << "korvane: " << text << "\n";
}

/// The plot's own options from those of the command; words for the first one that makes no sense.
std::string translate(const PlotCommandOptions& from, KvPlotOptions& to) {
  if (!from.paper.empty()) {
    to.paper = kvgrPaperNamed(from.paper);
    if (!to.paper)
      return "\"" + from.paper +
             "\" is no paper: A5 to A0, ANSI_A to ANSI_E, letter, legal, or WIDTHxHEIGHT in mm";
  }
  if (!from.scale.empty()) {
    if (from.fit) return "--fit and --scale exclude each other";
    const auto scale = kvgrScaleNamed(from.scale);
    if (!scale) return "\"" + from.scale + "\" is no scale: 1:5, 2:1, or millimetres for one drawing unit";
    to.scale = *scale;
  }
  if (from.landscape && from.portrait) return "--landscape and --portrait exclude each other";
  if (from.landscape) to.turn = KvPlotOptions::Turn::Landscape;
  if (from.portrait) to.turn = KvPlotOptions::Turn::Portrait;
  if (!from.window.empty()) to.window = {{from.window[0], from.window[1]}, {from.window[2], from.window[3]}};
  if (!(from.resolution >= kLeastResolution && from.resolution <= kGreatestResolution))
    return "a resolution lies between 1 and 10000 points per inch";
  if (!(from.margin >= 0)) return "a margin is 0 mm or more";
  if (from.background == "black")
    to.background = 0;
  else if (from.background != "white") {
    std::uint32_t rgb = 0;
    const std::string& text = from.background;
    const auto result = std::from_chars(text.data() + 1, text.data() + text.size(), rgb, 16);
    if (text.size() != 7 || text[0] != '#' || result.ec != std::errc() ||
        result.ptr != text.data() + text.size())
      return "\"" + text + "\" is no background: white, black, or #RRGGBB";
    to.background = rgb;
  }
  to.margin = from.margin;
  to.isMonochrome = from.monochrome;
  to.withHiddenLayers = from.hiddenLayers;
  to.layout = platform::wideFromUtf8(from.layout);
  for (const std::string& layer : from.layers) to.layers.push_back(platform::wideFromUtf8(layer));
  return {};
}

bool readInput(KvDbDatabase& database, const std::string& input) {
  KvIoReport report;
  if (kvdbReadDrawing(database, input, report, KvIoMode::Recover) == Kvad::eOk) {
    const auto repairs = report.repairs.size() + report.repairsLeftOut;
    if (repairs > 0)
      complain(input + ": " + std::to_string(repairs) + " faults mended while reading (see korvane audit)");
    return true;
  }
  complain(input + ": " + platform::utf8From(report.error.describe()));
  return false;
}

bool plotOnto(KvDbDatabase& database, const std::string& name, const KvPlotOptions& options,
              KvGrCanvas& canvas) {
  const KvPlotResult result = kvgrPlot(database, options, canvas);
  if (const std::string warning = KvLtFace::takeWarning(); !warning.empty()) complain(warning);
  for (const std::string& warning : result.warnings) complain(name + ": " + warning);
  if (!result.isPlotted) complain(name + ": " + result.error);
  return result.isPlotted;
}

bool finish(KvGrCanvas& canvas, const std::string& output) {
  std::string error;
  const std::string bytes = canvas.finish(error);
  if (bytes.empty()) {
    complain(output + ": " + error);
    return false;
  }
  if (const auto status = platform::writeFile(fs::path(output), bytes); !status) {
    complain(status.message());
    return false;
  }
  return true;
}

bool plotOne(const std::string& input, const std::string& output, const PlotCommandOptions& command,
             const KvPlotOptions& options) {
  KvDbDatabase database(false);
  if (!readInput(database, input)) return false;
  const auto canvas = kvgrCanvasFor(output, command.resolution);
  KvPlotOptions titled = options;
  titled.title = platform::wideFromUtf8(fs::path(input).stem().string());
  return plotOnto(database, input, titled, *canvas) && finish(*canvas, output);
}

/// All inputs as pages of one file. A drawing that can't be plotted is left out, and the rest still made.
int plotPages(const PlotCommandOptions& command, const KvPlotOptions& options) {
  const auto canvas = kvgrPdfCanvas();
  std::size_t plotted = 0;
  KvPlotOptions titled = options;
  titled.title = platform::wideFromUtf8(
      fs::path(command.inputs.size() == 1 ? command.inputs[0] : command.output).stem().string());
  for (const std::string& input : command.inputs) {
    KvDbDatabase database(false);
    if (readInput(database, input) && plotOnto(database, input, titled, *canvas)) ++plotted;
  }
  if (plotted == 0 || !finish(*canvas, command.output)) return kFailed;
  return plotted == command.inputs.size() ? 0 : kFailed;
}

std::string outputFor(const std::string& input, const std::string& pattern) {
  const std::string stem = fs::path(input).stem().string();
  if (pattern.ends_with('/')) return pattern + stem + ".pdf";
  std::string output = pattern;
  output.replace(output.find("{}"), 2, stem);
  return output;
}

}  // namespace

int runPlot(const PlotCommandOptions& command) {
  KvPlotOptions options;
  if (const std::string fault = translate(command, options); !fault.empty()) {
    complain(fault);
    return kWrongUse;
  }
  const bool isPattern = command.output.ends_with('/') || command.output.find("{}") != std::string::npos;
  if (!command.output.ends_with('/') && !kvgrCanvasFor(command.output)) {
    complain("\"" + command.output + "\": the output's name ends in .svg, .pdf or .png");
    return kWrongUse;
  }
  if (!isPattern && command.inputs.size() > 1) {
    if (fs::path(command.output).extension() == ".pdf") return plotPages(command, options);
    complain("one picture shows one drawing: name a folder (DIR/) or a pattern ({}.svg), or a PDF");
    return kWrongUse;
  }
  bool allWell = true;
  std::set<std::string> used;
  for (const std::string& input : command.inputs) {
    const std::string output = isPattern ? outputFor(input, command.output) : command.output;
    if (!used.insert(output).second) {
      complain(input + ": its plot would take the place of another one, " + output);
      allWell = false;
      continue;
    }
    std::error_code ignored;
    if (isPattern && fs::path(output).has_parent_path())
      fs::create_directories(fs::path(output).parent_path(), ignored);
    allWell = plotOne(input, output, command, options) && allWell;
  }
  return allWell ? 0 : kFailed;
}

bool plotDrawing(KvDbDatabase& database, const std::string& output) {
  std::string error;
  std::vector<std::string> warnings;
  const bool isPlotted = kvgrPlotToFile(database, KvPlotOptions(), output, error, &warnings);
  for (const std::string& warning : warnings) complain(warning);
  if (const std::string warning = KvLtFace::takeWarning(); !warning.empty()) complain(warning);
  if (!isPlotted) complain(error);
  return isPlotted;
}

}  // namespace korvane
