#pragma once
// Records of symbol tables, by name and as new ones.
#include <memory>
#include <optional>

#include "host/commands/internal/support.h"

namespace kvcmd {

/// Records of a table whose names match a list of names and patterns, without regard to case.
KvDbObjectIdArray recordsMatching(KvDbTable table, CString patterns);

/// Puts a new record under a name into a table; null, with a word, for a name that no table takes.
KvDbObjectId addRecord(KvDbTable where, std::unique_ptr<KvDbSymbolTableRecord> record, const CString& name);
template <class Record>
KvDbObjectId makeRecord(KvDbTable where, const CString& name) {
  return addRecord(where, std::make_unique<Record>(), name);
}

/// The named coordinate system, from it to the world; none when there is no such record or it makes no sense.
std::optional<KvGeMatrix3d> namedSystem(const CString& name);

}  // namespace kvcmd
