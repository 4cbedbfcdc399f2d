#pragma once
// The rows of the command table, by the files that hold the commands.
#include <span>
#include <vector>

#include "host/commands/command_table.h"

namespace kvcmd {

#define KVCMD_ROWS(name) std::span<const KvCommandRow> name();
#include "host/commands/internal/row_list.h"
#undef KVCMD_ROWS

/// All of them.
inline std::vector<std::span<const KvCommandRow>> allRows() {
  return {
#define KVCMD_ROWS(name) name(),
#include "host/commands/internal/row_list.h"
#undef KVCMD_ROWS
  };
}

}  // namespace kvcmd
