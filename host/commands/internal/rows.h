#pragma once
// The rows of the command table, by the files that hold the commands.
#include <span>
#include <vector>

#include "host/commands/command_table.h"

namespace kvcmd {

std::span<const KvCommandRow> lineRows();
std::span<const KvCommandRow> arcRows();
std::span<const KvCommandRow> layerRows();
std::span<const KvCommandRow> eraseRows();
std::span<const KvCommandRow> undoRows();
std::span<const KvCommandRow> trimRows();
std::span<const KvCommandRow> hatchRows();
std::span<const KvCommandRow> blockRows();
std::span<const KvCommandRow> insertRows();

/// All of them.
inline std::vector<std::span<const KvCommandRow>> allRows() {
  return {lineRows(), arcRows(),   layerRows(), eraseRows(), undoRows(),
          trimRows(), hatchRows(), blockRows(), insertRows()};
}

}  // namespace kvcmd
