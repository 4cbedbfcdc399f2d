#pragma once
// What selecting and picking share: which entities may be selected, hits as members of sets, groups.
#include "host/editor/internal/picker.h"
#include "host/editor/selection.h"

class KvEdEditor;

namespace kved {

enum class LayerState { Usable, Locked, Off, Frozen };
LayerState layerStateOf(KvDbObjectId entity);
/// Not erased, not hidden, on a layer that is shown.
bool canBeSeen(KvDbObjectId entity);

/// A hit as a member of a set: of the entity of the space, or with `nested` of the innermost one.
KvEdPick pickOf(const PickHit& hit, const KvGePoint3d& world, bool nested);
/// The last entity of the current space that can be seen; null when there is none.
KvDbObjectId lastSeen(KvDbDatabase& database);
/// The other members of the selectable groups that the picks belong to, behind them, each once.
void widenByGroups(KvEdPicks& picks);

void setErrno(KvEdEditor& editor, int number);
int shortVariable(KvEdEditor& editor, const wchar_t* name, int standard);

/// User coordinates into the world and back, in the working drawing.
KvGePoint3d userToWorld(const KvGePoint3d& p);
KvGePoint3d worldToUser(const KvGePoint3d& p);

}  // namespace kved
