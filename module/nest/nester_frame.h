#pragma once
// Lays drawing frames out on sheets: a greedy heuristic on the outline of the free area, corner by corner.
//
// Sheets lie side by side along x, the first one with its lower left corner at 0,0. Lengths are in drawing
// units.
#include <cstdint>

#include "module/core/export.h"

/// A frame, in and out. Its width is |x0 - x1|, its height |y0 - y1|.
struct NestItem {
  double x0, y0;         ///< one corner; the lower left one after placing
  double x1, y1;         ///< the opposite corner
  std::int32_t rotated;  ///< 1 when the nester turned the item by 90 degrees, else 0
  std::int32_t tag;      ///< the caller's own, like `data`; never touched
  void* data;
};

struct NestParams {
  double sheetHeight;
  double sheetLength;  ///< negative: no limit, 1e7 takes its place
  double reserved;     ///< not read
  double partGap;      ///< least distance between parts; kept to half where a part lies under another
  double edgeGap;      ///< half of it widens the gaps that end at the next step of the front
  double sheetGap;     ///< between sheets along x
};

/// Moves the `count` items onto sheets and gives the number of sheets in `*sheetCount`, at least 1. Always
/// answers 1.
///
/// Items that no empty sheet takes, with the part gap beside them, stay where they were given and aren't
/// counted; so do items whose size isn't a finite number. Gaps that are negative or not a number count as 0,
/// gaps and sheet sides above 1e12 are cut to that, and a sheet without height or length takes nothing.
/// Placed items keep the part gap from each other (half of it below another part), never overlap and never
/// leave their sheet; rounding may take 1e-6 of that. Null pointers count as no items, or no answer. The same
/// input gives the same plan. State is local to the call.
extern "C" MEK_API int NesterFrame(NestItem* items, int count, const NestParams* params, int* sheetCount);
