#include "siblings/tools/frame_plan.h"

#include <algorithm>

#include "module/nest/nester_frame.h"

namespace {

constexpr double kAside = -1;         // left of every sheet: where frames wait
constexpr double kPlacedFrom = -0.5;  // rounding stays above, waiting frames below
constexpr double kRounding = 1e-6;

}  // namespace

std::vector<FramePlace> layFramesOut(const std::vector<FrameSize>& frames, const SheetRow& row, int& sheets) {
  std::vector<NestItem> items;
  for (const FrameSize& frame : frames)
    items.push_back({kAside - frame.width, kAside - frame.height, kAside, kAside, 0, 0, nullptr});
  const bool isEndless = !(row.length > 0);
  const NestParams params = {row.height, isEndless ? -1 : row.length, 0, row.gap, row.edge, row.between};
  NesterFrame(items.data(), static_cast<int>(items.size()), &params, &sheets);
  std::vector<FramePlace> places;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const NestItem& item = items[i];
    FramePlace place;
    place.placed = item.x0 > kPlacedFrom;
    place.turned = place.placed && item.rotated == 1;
    place.width = place.turned ? frames[i].height : frames[i].width;
    place.height = place.turned ? frames[i].width : frames[i].height;
    if (place.placed) {
      const int before = isEndless ? 0 : static_cast<int>((item.x0 + kRounding) / row.pitch());
      place.sheet = before + 1;
      place.x = std::max(0.0, item.x0 - before * row.pitch());
      place.y = std::max(0.0, item.y0);
    }
    places.push_back(place);
  }
  return places;
}

double usedShare(const std::vector<FramePlace>& places, double length, double height, int sheets) {
  double area = 0;
  for (const FramePlace& place : places)
    if (place.placed) area += place.width * place.height;
  const double whole = length * height * sheets;
  return whole > 0 ? area / whole : 0;
}
