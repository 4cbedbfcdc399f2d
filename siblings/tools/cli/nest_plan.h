#pragma once
// What `korvane nest` lays out: items from a table or a drawing, and the plan as a drawing.
#include <filesystem>
#include <string>
#include <vector>

#include "siblings/tools/cli/items_csv.h"
#include "siblings/tools/frame_plan.h"

namespace korvane {

struct NestPlan {
  std::vector<CsvItem> items;  ///< of a drawing: `line` counts the outlines from 1
  std::vector<FramePlace> places;
  double length = 0, height = 0;  ///< of a sheet; the length of a strip is what it takes up
  double between = 0;
  int sheets = 0;
  bool strip = false;
  bool fromDrawing = false;

  /// The name, or the size where there is none.
  std::string labelOf(std::size_t item) const;
};

/// `.dxf` or `.dwg`, in any case.
bool isDrawingName(const std::filesystem::path& file);

/// The extents of the closed outlines in a drawing's model space, in its order, named by the handle of their
/// first entity: closed curves, and open ones that meet at their ends (1e-6). An outline within the extents
/// of another one (a hole, an inner frame) belongs to that; one without an area is none. False with the
/// reason in `error`: the file can't be read, or it has no closed outline, or more than kMostCsvItems.
bool readItemsDrawing(const std::filesystem::path& file, std::vector<CsvItem>& items, std::string& error);

/// Writes the plan as a drawing in model space, the first sheet at 0,0: sheets and items as closed light
/// polylines on layers SHEETS and ITEMS, the items' names as texts on LABELS. False with the reason in
/// `error`.
bool savePlanDrawing(const NestPlan& plan, const std::filesystem::path& file, std::string& error);

}  // namespace korvane
