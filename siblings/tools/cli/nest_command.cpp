#include "siblings/tools/cli/nest_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>

#include "platform/files/files.h"
#include "platform/text/number.h"
#include "siblings/tools/cli/command_output.h"
#include "siblings/tools/cli/nest_plan.h"

namespace {

using namespace korvane;

constexpr std::uint64_t kMostBytes = 64 << 20;

struct Options {
  std::string table, sheet, plan;
  double strip = 0, gap = 0, edge = 0, between = 0;
  bool json = false;
};

/// Share of one sheet that is used, or of all for 0.
double usedOf(const NestPlan& plan, int sheet) {
  if (sheet == 0) return usedShare(plan.places, plan.length, plan.height, plan.sheets);
  std::vector<FramePlace> own;
  for (const FramePlace& place : plan.places)
    if (place.sheet == sheet) own.push_back(place);
  return usedShare(own, plan.length, plan.height, 1);
}

std::ptrdiff_t unplacedOf(const NestPlan& plan) {
  return std::count_if(plan.places.begin(), plan.places.end(), [](const FramePlace& p) { return !p.placed; });
}

/// "594x841": length along x, height.
bool parseSheet(const std::string& text, double& length, double& height) {
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, length);
  if (first.ec != std::errc() || first.ptr == end || (*first.ptr != 'x' && *first.ptr != 'X')) return false;
  const auto second = std::from_chars(first.ptr + 1, end, height);
  return second.ec == std::errc() && second.ptr == end && std::isfinite(length) && std::isfinite(height) &&
         length > 0 && height > 0;
}

void layOut(const Options& options, NestPlan& plan) {
  std::vector<FrameSize> frames;
  for (const CsvItem& item : plan.items) frames.push_back({item.width, item.height});
  plan.between = options.between;
  const SheetRow row = {plan.strip ? 0 : plan.length, plan.height, options.gap, options.edge,
                        options.between};
  plan.places = layFramesOut(frames, row, plan.sheets);
  if (!plan.strip) return;
  plan.length = 0;
  for (const FramePlace& place : plan.places)
    if (place.placed) plan.length = std::max(plan.length, place.x + place.width);
}

std::string percent(double share) {
  return platform::formatText<char>("%.1f %%", {100 * share});
}

void printText(const NestPlan& plan, std::ostream& out) {
  const std::ptrdiff_t unplaced = unplacedOf(plan);
  out << plan.sheets << (plan.sheets == 1 ? " sheet of " : " sheets of ") << platform::shortest(plan.length)
      << " x " << platform::shortest(plan.height) << ", "
      << plan.items.size() - static_cast<std::size_t>(unplaced) << " of " << plan.items.size()
      << " items placed, " << percent(usedOf(plan, 0)) << " used\n";
  for (int sheet = 1; sheet <= plan.sheets; ++sheet) {
    const auto count =
        std::count_if(plan.places.begin(), plan.places.end(),
                      [sheet](const FramePlace& place) { return place.placed && place.sheet == sheet; });
    out << "  sheet " << sheet << ": " << count << " items, " << percent(usedOf(plan, sheet)) << "\n";
  }
  for (std::size_t i = 0; i < plan.items.size(); ++i)
    if (!plan.places[i].placed)
      out << "  not placed: " << (plan.fromDrawing ? "outline " : "line ") << plan.items[i].line
          << (plan.items[i].name.empty() ? "" : " ") << plan.items[i].name << " "
          << platform::shortest(plan.items[i].width) << " x " << platform::shortest(plan.items[i].height)
          << "\n";
}

void printJson(const NestPlan& plan, std::ostream& out) {
  out << "{\"sheets\":" << plan.sheets << ",\"sheet\":{\"length\":" << platform::shortest(plan.length)
      << ",\"height\":" << platform::shortest(plan.height)
      << "},\"used\":" << platform::shortest(usedOf(plan, 0)) << ",\"notPlaced\":" << unplacedOf(plan)
      << ",\"items\":[";
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    const CsvItem& item = plan.items[i];
    const FramePlace& place = plan.places[i];
    out << (i == 0 ? "\n" : ",\n") << (plan.fromDrawing ? "{\"outline\":" : "{\"line\":") << item.line
        << ",\"name\":" << jsonText(item.name) << ",\"width\":" << platform::shortest(item.width)
        << ",\"height\":" << platform::shortest(item.height);
    if (place.placed)
      out << ",\"sheet\":" << place.sheet << ",\"x\":" << platform::shortest(place.x)
          << ",\"y\":" << platform::shortest(place.y) << ",\"turned\":" << (place.turned ? "true" : "false");
    else
      out << ",\"sheet\":null";
    out << "}";
  }
  out << "\n]}\n";
}

std::string drawPlan(const NestPlan& plan) {
  const double space = std::max(plan.length, plan.height) * 0.05, pitch = plan.length + space;
  SvgPage page(std::max(pitch * plan.sheets - space, 1e-3), plan.height);
  for (int sheet = 0; sheet < plan.sheets; ++sheet) page.frame(sheet * pitch, 0, plan.length, plan.height);
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    const FramePlace& place = plan.places[i];
    if (!place.placed) continue;
    const double x = (place.sheet - 1) * pitch + place.x;
    page.rectangle(x, place.y, place.width, place.height, fillColour(plan.items[i].line));
    page.label(x + place.width / 2, place.y + place.height / 2, place.width, place.height, plan.labelOf(i));
  }
  return page.text();
}

bool checkOptions(const Options& options, NestPlan& plan, std::ostream& err) {
  plan.strip = options.strip > 0;
  if (plan.strip == !options.sheet.empty()) {
    err << "nest: give either --sheet or --strip\n";
  } else if (!plan.strip && !parseSheet(options.sheet, plan.length, plan.height)) {
    err << "nest: --sheet: expected a size such as 594x841, found \"" << options.sheet << "\"\n";
  } else if (!options.plan.empty() && !options.plan.ends_with(".svg") && !isDrawingName(options.plan)) {
    err << "nest: -o: expected a file that ends in .svg, .dxf or .dwg, found \"" << options.plan << "\"\n";
  } else {
    if (plan.strip) plan.height = options.strip;
    return true;
  }
  return false;
}

bool readItems(const Options& options, NestPlan& plan, std::ostream& err) {
  std::string text, error;
  plan.fromDrawing = isDrawingName(options.table);
  if (plan.fromDrawing) {
    if (readItemsDrawing(options.table, plan.items, error)) return true;
  } else if (const auto status = platform::readFile(options.table, text, kMostBytes); !status) {
    err << "nest: " << status.message() << "\n";
    return false;
  } else if (readItemsCsv(text, plan.items, error)) {
    return true;
  }
  err << options.table << ": " << error << "\n";
  return false;
}

bool writePlan(const std::string& file, const NestPlan& plan, std::ostream& err) {
  std::string error;
  if (isDrawingName(file)) {
    if (savePlanDrawing(plan, file, error)) return true;
  } else if (const auto status = platform::writeFile(file, drawPlan(plan)); status) {
    return true;
  } else {
    error = status.message();
  }
  err << "nest: " << error << "\n";
  return false;
}

int work(const Options& options, NestPlan& plan, std::ostream& out, std::ostream& err) {
  if (!readItems(options, plan, err)) return kWorkFailed;
  layOut(options, plan);
  if (!options.plan.empty() && !writePlan(options.plan, plan, err)) return kWorkFailed;
  if (options.json)
    printJson(plan, out);
  else
    printText(plan, out);
  return unplacedOf(plan) == 0 ? kSuccess : kWorkFailed;
}

}  // namespace

int runNestCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  Options options;
  CLI::App app("Lays frames out on sheets.", "korvane nest");
  app.footer(
      "ITEMS.csv has columns width, height, and if wanted count and name, named in its first row or in this "
      "order. Of a drawing (.dxf, .dwg) the extents of the closed outlines in model space are the frames; "
      "what "
      "lies within another one belongs to it.\n"
      "Exit code: 0 every frame placed, 1 some not placed or a file failed, 2 wrong use.");
  app.add_option("items", options.table, "Table of frames, or a drawing")->required()->type_name("ITEMS");
  app.add_option("--sheet", options.sheet, "Sheet: length along x, height")->type_name("594x841");
  app.add_option("--strip", options.strip, "One sheet of this height without end")
      ->check(CLI::Range(1e-6, 1e12));
  const auto distance = [&](const char* name, double& value, const char* help) {
    app.add_option(name, value, help)->check(CLI::Range(0.0, 1e9));
  };
  distance("--gap", options.gap, "Distance between frames");
  distance("--edge", options.edge, "Half of it may be used beyond an inner gap's width");
  distance("--between", options.between, "Distance between sheets");
  app.add_option("-o,--output", options.plan, "Draw the plan")->type_name("PLAN.svg|.dxf");
  app.add_flag("--json", options.json, "Print the result as JSON");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kSuccess : kWrongUse;
  }
  NestPlan plan;
  if (!checkOptions(options, plan, err)) return kWrongUse;
  return work(options, plan, out, err);
}
