#pragma once
// KMNEST: entities of the drawing laid out on sheets.
#include "host/database/entity.h"
#include "siblings/tools/frame_plan.h"

struct NestOutcome {
  int placed = 0, turned = 0, sheets = 0;
  double used = 0;               ///< share of the sheets that frames cover
  KvDbObjectIdArray notPlaced;   ///< no sheet takes them
  KvDbObjectIdArray notMovable;  ///< they refused; like those without extents they stayed where they were
  KvDbObjectIdArray noExtents;
  KvDbObjectIdArray changedSize;  ///< turned, their extents are larger than their place
};

/// Lays the extents of entities out on sheets and moves each entity to its place, turned by 90 degrees about
/// the lower left corner of its extents where the plan says so. The sheets stand along the world's X axis,
/// the first one's lower left corner at `start` (world); heights (z) are kept. Entities that find no place
/// stay where they are, whatever they lie on.
NestOutcome nestFrames(const KvDbObjectIdArray& frames, const SheetRow& row, const KvGePoint3d& start);

void nestCommand();
