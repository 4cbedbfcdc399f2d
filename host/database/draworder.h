#pragma once
// In which order the entities of a block are drawn.
#include "host/database/block.h"

/// The entities that aren't erased: later ones cover earlier ones. Without a table of orders as they stand in
/// the block. A block's table (the record SORTENTSTABLE, under ACAD_SORTENTS in its extension dictionary)
/// gives some entities the handle of another one to be sorted by; then all follow by their handles.
KvDbObjectIdArray kvdbDrawOrder(const KvDbBlockTableRecord& block);

/// Where entities go among the others of their block.
enum class KvDbDrawPlace {
  Front,  ///< over all others
  Back,   ///< under all others
  Above,  ///< right over the uppermost of some others
  Under   ///< right under the lowest of some others
};

/// Moves entities in the order of their block, and keeps their order among themselves; the block's table
/// tells the new order from then on. Entities that are added later lie over all others. eInvalidInput when
/// none of `moved` is in the block, or for Above and Under none of `others` that isn't moved itself; nothing
/// changes then.
Kvad::ErrorStatus kvdbMoveInDrawOrder(KvDbObjectId block, const KvDbObjectIdArray& moved, KvDbDrawPlace place,
                                      const KvDbObjectIdArray& others = KvDbObjectIdArray());
/// Gives a block's entities that order, the lowest first; entities that it leaves out lie over them.
Kvad::ErrorStatus kvdbSetDrawOrder(KvDbObjectId block, const KvDbObjectIdArray& order);
