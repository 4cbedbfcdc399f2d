#pragma once
// In which order the entities of a block are drawn.
#include "host/database/block.h"

/// The entities that aren't erased: later ones cover earlier ones. Without a table of orders as they stand in
/// the block. A block's table (the record SORTENTSTABLE, under ACAD_SORTENTS in its extension dictionary)
/// gives some entities the handle of another one to be sorted by; then all follow by their handles.
KvDbObjectIdArray kvdbDrawOrder(const KvDbBlockTableRecord& block);
