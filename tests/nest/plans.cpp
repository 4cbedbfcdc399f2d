#include "tests/nest/plans.h"

#include <algorithm>
#include <cmath>

namespace nesttest {
namespace {

constexpr double kElsewhere = -5e8;
constexpr double kNoLimit = 1e7;

double lengthOf(const NestParams& params) {
  return params.sheetLength < 0 ? kNoLimit : params.sheetLength;
}

double sheetOf(const Plan& plan, const NestItem& item) {
  return std::floor((item.x0 + 1e-6) / (lengthOf(plan.params) + plan.params.sheetGap));
}

std::string itemFault(const Plan& plan, std::size_t i, double tolerance) {
  const NestItem& item = plan.items[i];
  const Frame& frame = plan.frames[i];
  const std::string name = "item " + std::to_string(i);
  if (item.tag != static_cast<int>(i)) return name + " lost its caller's data";
  if (!isPlaced(plan, i)) return item.x0 == kElsewhere && item.rotated == 0 ? "" : name + " was moved aside";
  const bool turned = item.rotated == 1;
  if (std::abs(item.x1 - item.x0 - (turned ? frame.height : frame.width)) > tolerance ||
      std::abs(item.y1 - item.y0 - (turned ? frame.width : frame.height)) > tolerance)
    return name + " changed its size";
  const double sheet = sheetOf(plan, item), start = sheet * (lengthOf(plan.params) + plan.params.sheetGap);
  if (sheet < 0 || sheet >= plan.sheets) return name + " is on no sheet";
  if (item.x1 > start + lengthOf(plan.params) + tolerance || item.y0 < -tolerance ||
      item.y1 > plan.params.sheetHeight + tolerance)
    return name + " leaves its sheet";
  return "";
}

}  // namespace

Plan nest(const NestParams& params, const std::vector<Frame>& frames) {
  Plan plan;
  plan.params = params;
  plan.frames = frames;
  for (const Frame& frame : frames)
    plan.items.push_back({kElsewhere, kElsewhere, kElsewhere + frame.width, kElsewhere + frame.height, 7,
                          static_cast<int>(plan.items.size()), nullptr});
  plan.answer = NesterFrame(plan.items.data(), static_cast<int>(frames.size()), &params, &plan.sheets);
  return plan;
}

bool isPlaced(const Plan& plan, std::size_t i) {
  return plan.items[i].y0 != kElsewhere;
}

std::string planFault(const Plan& plan) {
  const double tolerance = 2e-6 + 1e-12 * plan.params.sheetHeight;
  std::vector<std::size_t> placed;
  for (std::size_t i = 0; i < plan.items.size(); ++i) {
    if (const std::string fault = itemFault(plan, i, tolerance); !fault.empty()) return fault;
    if (isPlaced(plan, i)) placed.push_back(i);
  }
  std::sort(placed.begin(), placed.end(),
            [&](auto a, auto b) { return plan.items[a].x0 < plan.items[b].x0; });
  const double gap = plan.params.partGap;
  for (std::size_t i = 0; i < placed.size(); ++i) {
    const NestItem& a = plan.items[placed[i]];
    for (std::size_t j = i + 1; j < placed.size() && plan.items[placed[j]].x0 < a.x1 + gap - tolerance; ++j) {
      const NestItem& b = plan.items[placed[j]];
      if (sheetOf(plan, a) != sheetOf(plan, b)) continue;
      const double apartX = b.x0 - a.x1, apartY = std::max(b.y0 - a.y1, a.y0 - b.y1);
      if (apartX < gap - tolerance && apartY < gap / 2 - tolerance)
        return "items " + std::to_string(placed[i]) + " and " + std::to_string(placed[j]) + " are " +
               std::to_string(apartX) + " and " + std::to_string(apartY) + " apart at " +
               std::to_string(b.x0) + "," + std::to_string(b.y0);
    }
  }
  return "";
}

double utilisation(const Plan& plan) {
  double area = 0;
  for (std::size_t i = 0; i < plan.items.size(); ++i)
    if (isPlaced(plan, i)) area += plan.frames[i].width * plan.frames[i].height;
  return area / (plan.sheets * plan.params.sheetHeight * lengthOf(plan.params));
}

}  // namespace nesttest
