#include "host/editor/internal/selecting.h"

#include <algorithm>
#include <unordered_set>

#include "host/database/dictionary.h"
#include "host/database/entity.h"
#include "host/editor/editor.h"
#include "host/editor/internal/space.h"
#include "host/editor/internal/spatial_index.h"
#include "host/editor/ucs.h"

namespace kved {

LayerState layerStateOf(KvDbObjectId id) {
  const auto* entity = id.isNull() ? nullptr : KvDbEntity::cast(id.stub()->object);
  const KvDbObjectId layer = entity ? entity->layerId() : KvDbObjectId();
  const auto* record = layer.isNull() ? nullptr : KvDbLayerTableRecord::cast(layer.stub()->object);
  if (!record) return LayerState::Usable;
  return record->isFrozen()   ? LayerState::Frozen
         : record->isOff()    ? LayerState::Off
         : record->isLocked() ? LayerState::Locked
                              : LayerState::Usable;
}

bool canBeSeen(KvDbObjectId id) {
  const auto* entity = id.isValid() ? KvDbEntity::cast(id.stub()->object) : nullptr;
  if (!entity || entity->visibility() == KvDb::kInvisible) return false;
  const LayerState state = layerStateOf(id);
  return state != LayerState::Frozen && state != LayerState::Off;
}

KvEdPick pickOf(const PickHit& hit, const KvGePoint3d& world, bool nested) {
  KvEdPick pick;
  pick.id = hit.id;
  pick.method = KvEdPickMethod::Point;
  pick.marker = hit.marker != 0 ? hit.marker : -1;
  pick.points = {world};
  if (!nested || hit.path.empty()) return pick;
  pick.id = hit.path.back();
  // What an entity owns itself, as a reference its attributes, isn't nested in it.
  for (std::size_t i = hit.path.size() - 1; i-- > 0;) {
    const KvDbObject* inner = hit.path[i + 1].stub()->object;
    if (inner && inner->ownerId() != hit.path[i]) pick.containers.push_back(hit.path[i]);
  }
  pick.isNested = !pick.containers.empty();
  if (pick.isNested) pick.transform = hit.transform;
  return pick;
}

KvDbObjectId lastSeen(KvDbDatabase& database) {
  return indexOf(database, currentSpace(database)).last(canBeSeen);
}

void widenByGroups(KvEdPicks& picks) {
  std::unordered_set<KvDbObjectId> present, groups;
  for (const KvEdPick& pick : picks) present.insert(pick.id);
  const std::size_t given = picks.size();
  for (std::size_t i = 0; i < given; ++i) {
    const KvDbObject* object = picks[i].id.isValid() ? picks[i].id.stub()->object : nullptr;
    if (!object || picks[i].isNested) continue;
    for (const KvDbObjectId reactor : object->persistentReactors()) {
      const auto* group = reactor.isValid() ? KvDbGroup::cast(reactor.stub()->object) : nullptr;
      if (!group || !group->isSelectable() || !groups.insert(reactor).second) continue;
      for (const KvDbObjectId member : group->allEntityIds()) {
        const auto* entity = member.isValid() ? KvDbEntity::cast(member.stub()->object) : nullptr;
        if (!entity || entity->ownerId() != object->ownerId() || !canBeSeen(member)) continue;
        if (!present.insert(member).second) continue;
        KvEdPick brought = picks[i];
        brought.id = member;
        brought.marker = -1;
        picks.push_back(std::move(brought));
      }
    }
  }
}

void setErrno(KvEdEditor& editor, int number) {
  editor.variables().setInternally(L"ERRNO", number);
}

int shortVariable(KvEdEditor& editor, const wchar_t* name, int standard) {
  KvEdVarValue value;
  if (editor.variables().get(name, value) != Kvad::eOk) return standard;
  const int* whole = std::get_if<int>(&value);
  return whole ? *whole : standard;
}

KvGePoint3d userToWorld(const KvGePoint3d& p) {
  return kvedUserToWorld(kvdbDatabaseOrWorking(nullptr)) * p;
}

KvGePoint3d worldToUser(const KvGePoint3d& p) {
  return kvedUserToWorld(kvdbDatabaseOrWorking(nullptr)).inverse() * p;
}

}  // namespace kved
