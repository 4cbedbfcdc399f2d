#pragma once
// Where frames stand on a row of sheets: what the nester answers, sheet by sheet.
#include <vector>

struct FrameSize {
  double width = 0, height = 0;
};

/// Sheets side by side along x, the first one's lower left corner at 0,0.
struct SheetRow {
  double length = 0;  ///< along x; 0: one sheet without end
  double height = 0;
  double gap = 0;      ///< between frames
  double edge = 0;     ///< half of it may be used beyond an inner gap's width
  double between = 0;  ///< between sheets
  double pitch() const { return length + between; }
};

struct FramePlace {
  bool placed = false, turned = false;
  int sheet = 0;                 ///< from 1
  double x = 0, y = 0;           ///< from the sheet's lower left corner
  double width = 0, height = 0;  ///< as it lies there
};

/// One place for each frame; `sheets` gets their number, at least 1. Frames that no sheet takes aren't
/// placed.
std::vector<FramePlace> layFramesOut(const std::vector<FrameSize>& frames, const SheetRow& row, int& sheets);

/// Share of `sheets` sheets of that length and height that frames cover; 0 for sheets without an area.
double usedShare(const std::vector<FramePlace>& places, double length, double height, int sheets);
