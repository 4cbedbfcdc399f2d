#include "siblings/tools/cli/nest_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>

#include "module/nest/nester_frame.h"
#include "platform/files/files.h"
#include "platform/text/number.h"
#include "siblings/tools/cli/command_output.h"
#include "siblings/tools/cli/items_csv.h"

namespace {

using namespace korvane;

constexpr double kAside = -1;  // left of every sheet: where frames wait
constexpr std::uint64_t kMostBytes = 64 << 20;

struct Options {
  std::string table, sheet, plan;
  double strip = 0, gap = 0, edge = 0, between = 0;
  bool json = false;
};

struct Placement {
  bool placed = false, turned = false;
  int sheet = 0;  ///< from 1
  double x = 0, y = 0, width = 0, height = 0;
};

struct Plan {
  std::vector<CsvItem> items;
  std::vector<Placement> places;
  double length = 0, height = 0;  ///< of a sheet; the length of a strip is what it takes up
  int sheets = 0;
  bool strip = false;

  double used(int sheet) const {  ///< share of one sheet, or of all for 0
    double area = 0;
    for (const Placement& place : places)
      if (place.placed && (sheet == 0 || place.sheet == sheet)) area += place.width * place.height;
    const double whole = length * height * (sheet == 0 ? sheets : 1);
    return whole > 0 ? area / whole : 0;
  }
  std::ptrdiff_t unplaced() const {
    return std::count_if(places.begin(), places.end(), [](const Placement& place) { return !place.placed; });
  }
};

/// "594x841": length along x, height.
bool parseSheet(const std::string& text, double& length, double& height) {
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, length);
  if (first.ec != std::errc() || first.ptr == end || (*first.ptr != 'x' && *first.ptr != 'X')) return false;
  const auto second = std::from_chars(first.ptr + 1, end, height);
  return second.ec == std::errc() && second.ptr == end && std::isfinite(length) && std::isfinite(height) &&
         length > 0 && height > 0;
}

void layOut(const Options& options, Plan& plan) {
  std::vector<NestItem> frames;
  for (const CsvItem& item : plan.items)
    frames.push_back({kAside - item.width, kAside - item.height, kAside, kAside, 0, 0, nullptr});
  const NestParams params = {plan.height,    plan.strip ? -1 : plan.length, 0, options.gap, options.edge,
                             options.between};
  NesterFrame(frames.data(), static_cast<int>(frames.size()), &params, &plan.sheets);
  double end = 0;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const NestItem& frame = frames[i];
    Placement place;
    place.placed = frame.x0 >= 0;
    place.turned = frame.rotated == 1;
    place.width = place.turned ? plan.items[i].height : plan.items[i].width;
    place.height = place.turned ? plan.items[i].width : plan.items[i].height;
    place.x = frame.x0;
    place.y = frame.y0;
    if (place.placed && !plan.strip) {
      const double pitch = plan.length + options.between;
      const int sheet = static_cast<int>((frame.x0 + 1e-6) / pitch);
      place.sheet = sheet + 1;
      place.x = std::max(0.0, frame.x0 - sheet * pitch);
    } else if (place.placed) {
      place.sheet = 1;
      end = std::max(end, place.x + place.width);
    }
    plan.places.push_back(place);
  }
  if (plan.strip) plan.length = end;
}

std::string percent(double share) {
  return platform::formatText<char>("%.1f %%", {100 * share});
}

void printText(const Plan& plan, std::ostream& out) {
  const std::ptrdiff_t unplaced = plan.unplaced();
  out << plan.sheets << (plan.sheets == 1 ? " sheet of " : " sheets of ") << platform::shortest(plan.length)
      << " x " << platform::shortest(plan.height) << ", "
      << plan.items.size() - static_cast<std::size_t>(unplaced) << " of " << plan.items.size()
      << " items placed, " << percent(plan.used(0)) << " used\n";
  for (int sheet = 1; sheet <= plan.sheets; ++sheet) {
    const auto count = std::count_if(plan.places.begin(), plan.places.end(), [sheet](const Placement& place) {
      return place.placed && place.sheet == sheet;
    });
    out << "  sheet " << sheet << ": " << count << " items, " << percent(plan.used(sheet)) << "\n";
  }
  for (std::size_t i = 0; i < plan.items.size(); ++i)
    if (!plan.places[i].placed)
      out << "  not placed: line " << plan.items[i].line << (plan.items[i].name.empty() ? "" : " ")
          << plan.items[i].name << " " << platform::shortest(plan.items[i].width) << " x "
          << platform::shortest(plan.items[i].height) << "\n";
}

void printJson(const Plan& plan, std::ostream& out) {
  out << "{\"sheets\":" << plan.sheets << ",\"sheet\":{\"length\":" << platform::shortest(plan.length)
      << ",\"height\":" << platform::shortest(plan.height)
      << "},\"used\":" << platform::shortest(plan.used(0)) << ",\"notPlaced\":" << plan.unplaced()
      << ",\"items\":[";
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    const CsvItem& item = plan.items[i];
    const Placement& place = plan.places[i];
    out << (i == 0 ? "\n" : ",\n") << "{\"line\":" << item.line << ",\"name\":" << jsonText(item.name)
        << ",\"width\":" << platform::shortest(item.width)
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

std::string drawPlan(const Plan& plan) {
  const double space = std::max(plan.length, plan.height) * 0.05, pitch = plan.length + space;
  SvgPage page(std::max(pitch * plan.sheets - space, 1e-3), plan.height);
  for (int sheet = 0; sheet < plan.sheets; ++sheet) page.frame(sheet * pitch, 0, plan.length, plan.height);
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    const Placement& place = plan.places[i];
    if (!place.placed) continue;
    const double x = (place.sheet - 1) * pitch + place.x;
    page.rectangle(x, place.y, place.width, place.height, fillColour(plan.items[i].line));
    const std::string size =
        platform::shortest(plan.items[i].width) + " x " + platform::shortest(plan.items[i].height);
    page.label(x + place.width / 2, place.y + place.height / 2, place.width, place.height,
               plan.items[i].name.empty() ? size : plan.items[i].name);
  }
  return page.text();
}

bool checkOptions(const Options& options, Plan& plan, std::ostream& err) {
  plan.strip = options.strip > 0;
  if (plan.strip == !options.sheet.empty()) {
    err << "nest: give either --sheet or --strip\n";
  } else if (!plan.strip && !parseSheet(options.sheet, plan.length, plan.height)) {
    err << "nest: --sheet: expected a size such as 594x841, found \"" << options.sheet << "\"\n";
  } else if (!options.plan.empty() && !options.plan.ends_with(".svg")) {
    err << "nest: -o: expected a file that ends in .svg, found \"" << options.plan << "\"\n";
  } else {
    if (plan.strip) plan.height = options.strip;
    return true;
  }
  return false;
}

int work(const Options& options, Plan& plan, std::ostream& out, std::ostream& err) {
  std::string text, error;
  if (const auto status = platform::readFile(options.table, text, kMostBytes); !status) {
    err << "nest: " << status.message() << "\n";
    return kWorkFailed;
  }
  if (!readItemsCsv(text, plan.items, error)) {
    err << options.table << ": " << error << "\n";
    return kWorkFailed;
  }
  layOut(options, plan);
  if (!options.plan.empty()) {
    if (const auto status = platform::writeFile(options.plan, drawPlan(plan)); !status) {
      err << "nest: " << status.message() << "\n";
      return kWorkFailed;
    }
  }
  if (options.json)
    printJson(plan, out);
  else
    printText(plan, out);
  return plan.unplaced() == 0 ? kSuccess : kWorkFailed;
}

}  // namespace

int runNestCommand(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  Options options;
  CLI::App app("Lays frames out on sheets.", "korvane nest");
  app.footer(
      "ITEMS.csv has columns width, height, and if wanted count and name, named in its first row or in this "
      "order.\n"
      "Exit code: 0 every frame placed, 1 some not placed or a file failed, 2 wrong use.");
  app.add_option("items", options.table, "Table of frames")->required()->type_name("ITEMS.csv");
  app.add_option("--sheet", options.sheet, "Sheet: length along x, height")->type_name("594x841");
  app.add_option("--strip", options.strip, "One sheet of this height without end")
      ->check(CLI::Range(1e-6, 1e12));
  const auto distance = [&](const char* name, double& value, const char* help) {
    app.add_option(name, value, help)->check(CLI::Range(0.0, 1e9));
  };
  distance("--gap", options.gap, "Distance between frames");
  distance("--edge", options.edge, "Half of it may be used beyond an inner gap's width");
  distance("--between", options.between, "Distance between sheets");
  app.add_option("-o,--output", options.plan, "Draw the plan")->type_name("PLAN.svg");
  app.add_flag("--json", options.json, "Print the result as JSON");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kSuccess : kWrongUse;
  }
  Plan plan;
  if (!checkOptions(options, plan, err)) return kWrongUse;
  return work(options, plan, out, err);
}
