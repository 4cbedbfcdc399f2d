// What links leaders to their notes.
#include <optional>

#include "host/entities/blockreference.h"
#include "host/entities/leader.h"
#include "host/entities/mtext.h"
#include "host/entities/tolerance.h"

namespace {

// What a leader's record says of its note.
constexpr int kText = 0, kFrame = 1, kBlock = 2, kNothing = 3;

int kindOf(const KvDbObject* object) {
  if (KvDbMText::cast(object)) return kText;
  if (KvDbFcf::cast(object)) return kFrame;
  return KvDbBlockReference::cast(object) ? kBlock : kNothing;
}

std::optional<KvGePoint3d> placeOf(const KvDbObject* object) {
  if (const auto* text = KvDbMText::cast(object)) return text->location();
  if (const auto* frame = KvDbFcf::cast(object)) return frame->location();
  if (const auto* reference = KvDbBlockReference::cast(object)) return reference->position();
  return std::nullopt;
}

const KvDbLeader* leaderOf(KvDbObjectId id) {
  return id.isValid() ? KvDbLeader::cast(id.stub()->object) : nullptr;
}

}  // namespace

void KvDbLeader::noteSize(const KvDbEntity& note) {
  if (const auto* text = KvDbMText::cast(&note)) {
    putReal(40, text->actualHeight());
    putReal(41, text->actualWidth());
  } else if (KvDbExtents box; KvDbFcf::cast(&note) && note.getGeomExtents(box) == Kvad::eOk) {
    putReal(40, box.maxPoint().y - box.minPoint().y);
    putReal(41, box.maxPoint().x - box.minPoint().x);
  }
}

Kvad::ErrorStatus KvDbLeader::attachAnnotation(KvDbObjectId id) {
  if (!database() || numVertices() == 0) return Kvad::eNotInDatabase;
  const int kind = id.isValid() ? kindOf(id.stub()->object) : kNothing;
  if (!id.isNull() && (kind == kNothing || id.database() != database())) return Kvad::eInvalidInput;
  KvDbEntity* note = nullptr;
  if (!id.isNull())
    if (auto status = kvdbOpenObject(note, id, KvDb::kForWrite); status != Kvad::eOk) return status;
  if (const KvDbObjectId old = annotationId(); old.isValid() && old != id) {
    KvDbObject* before = nullptr;
    if (kvdbOpenAny(before, old, KvDb::kForWrite) == Kvad::eOk) {
      before->removePersistentReactor(objectId());
      before->close();
    }
  }
  putWhole(73, kind);
  putWhole(340, static_cast<std::int64_t>(id.handle().value()));
  if (!note) return Kvad::eOk;
  noteSize(*note);
  const KvGeVector3d offset = all(10).back().point - *placeOf(note);
  putPoint(211, point(211, {1, 0, 0}));
  putPoint(210, point(210, {0, 0, 1}));
  putPoint(212, point(212));
  putPoint(213, KvGePoint3d() + offset);
  note->addPersistentReactor(objectId());
  note->close();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::followAnnotation(const KvGeVector3d& by) {
  const KvDbObjectId id = annotationId();
  const auto* note = id.isValid() ? KvDbEntity::cast(id.stub()->object) : nullptr;
  if (!note) return Kvad::eNullObjectId;
  // The first vertex, at which the arrow points, stays.
  const int last = numVertices() - 1;
  for (int i = std::max(last - (hasHookLine() ? 1 : 0), 1); i <= last && by.length() > 0; ++i) {
    KvGePoint3d vertex;
    if (getVertexAt(i, vertex) == Kvad::eOk) setVertexAt(i, vertex + by);
  }
  noteSize(*note);
  return Kvad::eOk;
}

KvDbLeaderFollower::KvDbLeaderFollower(KvDbDatabase& database) : database_(&database) {
  database.addChangeObserver(this);
}

KvDbLeaderFollower::~KvDbLeaderFollower() {
  if (database_) database_->removeChangeObserver(this);
}

void KvDbLeaderFollower::objectChanges(KvDbStub& stub) {
  // Steps are taken back and brought again outside any group; their leaders come along by themselves.
  if (!stub.object || !database_->undoRecorder().isInGroup()) return;
  if (KvDbLeader::cast(stub.object)) {
    leaders_.insert(&stub);
    return;
  }
  const auto place = placeOf(stub.object);
  if (!place || notes_.contains(&stub)) return;
  for (KvDbObjectId id : stub.object->persistentReactors())
    if (leaderOf(id)) {
      notes_.emplace(&stub, *place);
      return;
    }
}

void KvDbLeaderFollower::settle() {
  const auto notes = std::move(notes_);
  const auto changed = std::move(leaders_);
  notes_.clear();
  leaders_.clear();
  for (const auto& [stub, before] : notes) {
    const auto place = stub->isErased ? std::nullopt : placeOf(stub->object);
    if (!place) continue;
    for (KvDbObjectId id : stub->object->persistentReactors()) {
      const KvDbLeader* leader = leaderOf(id);
      if (!leader || changed.contains(id.stub()) || leader->annotationId() != KvDbObjectId(stub)) continue;
      KvDbLeader* open = nullptr;
      if (kvdbOpenObject(open, id, KvDb::kForWrite) != Kvad::eOk) continue;
      open->followAnnotation(*place - before);
      open->close();
    }
  }
}
