#include "host/database/entcalls.h"

#include <algorithm>
#include <map>

#include "host/database/block.h"
#include "host/database/chainreader.h"
#include "host/database/chainwriter.h"
#include "host/database/names.h"

namespace {

constexpr int kEntityName = -1, kXDataMark = -3;

/// Opens by name for reading.
KvDbObject* openForRead(const kvds_name name) {
  KvDbObjectId id;
  KvDbObject* object = nullptr;
  if (kvdbGetObjectId(id, name) != Kvad::eOk) return nullptr;
  return kvdbOpenAny(object, id, KvDb::kForRead) == Kvad::eOk ? object : nullptr;
}

resbuf* tailOf(resbuf* chain) {
  while (chain && chain->rbnext) chain = chain->rbnext;
  return chain;
}

resbuf* recordOf(const KvDbObject& object) {
  KvDbChainWriter writer(*object.database());
  object.dxfOut(writer);
  resbuf* record = writer.takeChain();
  // Extended data have a call of their own.
  for (resbuf* node = record; node && node->rbnext; node = node->rbnext)
    if (node->rbnext->restype == 1001) {
      kvutRelRb(node->rbnext);
      node->rbnext = nullptr;
    }
  kvds_name name;
  kvdbGetKvdsName(name, object.objectId());
  resbuf* head = kvutBuildList(kEntityName, static_cast<const long long*>(name), 0);
  head->rbnext = record;
  return head;
}

void appendXData(resbuf* record, const KvDbObject& object, const wchar_t* application) {
  resbuf* data = object.xData(application);
  if (!data) return;
  resbuf* tail = tailOf(record);
  const bool isFirst = [&] {
    for (const resbuf* node = record; node; node = node->rbnext)
      if (node->restype == kXDataMark) return false;
    return true;
  }();
  if (isFirst) {
    tail->rbnext = kvutNewRb(kXDataMark);
    tail = tail->rbnext;
  }
  tail->rbnext = data;
}

/// An object's groups as they are, points with two or three coordinates.
class Collector : public KvDxfWriter {
 public:
  void text(int code, std::wstring_view value) override { add(code, KvDxfKind::Text).text = CString(value); }
  void real(int code, double value) override { add(code, KvDxfKind::Real).point.x = value; }
  void integer(int code, std::int64_t value) override { add(code, kvdxfKind(code)).integer = value; }
  void handleValue(int code, std::uint64_t handle) override {
    add(code, KvDxfKind::Handle).integer = static_cast<std::int64_t>(handle);
  }
  void point(int code, const KvGePoint3d& value) override { add(code, KvDxfKind::Point).point = value; }
  void point2d(int code, const KvGePoint2d& value) override {
    KvDbStoredGroup& group = add(code, KvDxfKind::Point);
    group.point = kvge::spatial(value);
    group.dimensions = 2;
  }
  void binary(int code, std::span<const std::uint8_t> bytes) override {
    std::wstring text(bytes.begin(), bytes.end());
    add(code, KvDxfKind::Binary).text = CString(std::move(text));
  }
  /// The content without extended data.
  std::vector<KvDxfGroup> content() const {
    std::vector<KvDxfGroup> groups;
    for (const KvDbStoredGroup& group : groups_) {
      if (group.code == 1001) break;
      groups.push_back(group.view());
    }
    return kvdbContentOf(groups);
  }

 private:
  KvDbStoredGroup& add(int code, KvDxfKind kind) {
    KvDbStoredGroup& group = groups_.emplace_back();
    group.code = static_cast<std::int16_t>(code);
    group.kind = kind;
    return group;
  }
  std::vector<KvDbStoredGroup> groups_;
};

/// A node has room for three coordinates; where the object has two, so have the record's points.
void shapeLike(std::vector<KvDxfGroup>& record, const std::vector<KvDxfGroup>& present) {
  std::map<int, std::size_t> from;  // by code: where to look for the next one of the present groups
  for (KvDxfGroup& group : record) {
    if (group.kind != KvDxfKind::Point) continue;
    std::size_t& at = from[group.code];
    std::size_t found = at;
    while (found < present.size() && present[found].code != group.code) ++found;
    if (found == present.size() && at > 0) found = at - 1;  // more points than before: like the last one
    if (found >= present.size()) continue;
    at = found + 1;
    if (group.point.z == 0) group.dimensions = present[found].dimensions;
  }
}

/// A position in a record for comparing: the marker behind which a group stands, and its code.
struct Place {
  std::wstring_view marker;
  int code;
};

std::vector<Place> placesOf(const std::vector<KvDxfGroup>& groups) {
  std::vector<Place> places;
  std::wstring_view marker;
  for (const KvDxfGroup& group : groups) {
    if (group.code == 100) marker = group.text;
    places.push_back({marker, group.code});
  }
  return places;
}

/// The groups of `record`, and those of `present` that the record has nothing for, in the present order of
/// the sections. A record without markers speaks for all sections.
std::vector<KvDxfGroup> merge(const std::vector<KvDxfGroup>& record, const std::vector<KvDxfGroup>& present) {
  const auto fresh = placesOf(record), old = placesOf(present);
  const bool hasMarkers =
      std::any_of(record.begin(), record.end(), [](const KvDxfGroup& g) { return g.code == 100; });
  const auto isGiven = [&](const Place& place) {
    return std::any_of(fresh.begin(), fresh.end(), [&](const Place& f) {
      return f.code == place.code && (!hasMarkers || f.marker == place.marker || f.marker.empty());
    });
  };
  const auto isPresent = [&](int code) {
    return std::any_of(old.begin(), old.end(), [&](const Place& o) { return o.code == code; });
  };
  std::vector<KvDxfGroup> merged;
  std::vector<bool> taken(record.size(), false);
  const auto take = [&](std::wstring_view marker, int code) {
    for (std::size_t i = 0; i < record.size(); ++i)
      if (!taken[i] && fresh[i].code == code &&
          (!hasMarkers || fresh[i].marker == marker || fresh[i].marker.empty())) {
        taken[i] = true;
        merged.push_back(record[i]);
      }
  };
  // A section's groups stay together: the record's own order counts where it speaks for a whole section.
  std::wstring_view marker;
  std::vector<std::wstring_view> whole;
  for (std::size_t i = 0; i < present.size(); ++i) {
    if (present[i].code == 100) {
      marker = present[i].text;
      merged.push_back(present[i]);
      for (std::size_t k = 0; k < record.size(); ++k)
        if (record[k].code == 100 && record[k].text == marker && !taken[k]) {
          taken[k] = true;
          for (std::size_t n = k + 1; n < record.size() && record[n].code != 100; ++n) {
            taken[n] = true;
            merged.push_back(record[n]);
          }
          break;
        }
      continue;
    }
    if (!isGiven(old[i]))
      merged.push_back(present[i]);
    else
      take(marker, present[i].code);
  }
  // What no present group has a place for goes to the end: the class finds it by its code.
  for (std::size_t i = 0; i < record.size(); ++i)
    if (!taken[i] && record[i].code != 100 && !isPresent(record[i].code)) merged.push_back(record[i]);
  return merged;
}

Kvad::ErrorStatus writeBack(KvDbObject& object, const KvDbChainReader& given) {
  Collector collector;
  object.dxfOut(collector);
  const auto present = collector.content();
  auto record = given.content();
  shapeLike(record, present);
  KvDbChainReader names(*object.database());
  return object.replaceContent(merge(record, present), names);
}

bool namesAreKnown(const KvDbChainReader& record, KvDbDatabase& database) {
  const auto isKnown = [&](int code, KvDbTable table) {
    const KvDxfGroup* group = record.find(code);
    return !group || group->kind != KvDxfKind::Text ||
           !database.recordId(table, CString(group->text)).isNull();
  };
  return isKnown(6, KvDbTable::Linetype);
}

bool isInLayout(const KvDbEntity& entity) {
  const KvDbStub* owner = entity.ownerId().stub();
  const auto* block = owner ? KvDbBlockTableRecord::cast(owner->object) : nullptr;
  return block && block->isSpace();
}

/// The entity in whose row it stands.
const KvDbEntity* sequenceOf(const KvDbObject& object) {
  const KvDbStub* owner = object.ownerId().stub();
  const KvDbEntity* entity = owner ? KvDbEntity::cast(owner->object) : nullptr;
  return entity && entity->sequence() ? entity : nullptr;
}

KvDbObjectId behindInBlock(const KvDbEntity& entity) {
  const KvDbStub* owner = entity.ownerId().stub();
  const auto* block = owner ? KvDbBlockTableRecord::cast(owner->object) : nullptr;
  return block ? block->entityBehind(entity.objectId()) : KvDbObjectId();
}

KvDbObjectId behind(const KvDbEntity& entity) {
  if (const KvDbSequence* sequence = entity.sequence()) {
    const KvDbObjectIdArray owned = sequence->subEntities();
    if (!owned.isEmpty()) return owned[0];
    if (sequence->endMark().isValid()) return sequence->endMark();
  }
  if (const KvDbEntity* owner = sequenceOf(entity)) {
    const KvDbSequence& row = *owner->sequence();
    if (entity.objectId() != row.endMark()) {
      const KvDbObjectIdArray owned = row.subEntities();
      for (int i = 0; i + 1 < owned.length(); ++i)
        if (owned[i] == entity.objectId()) return owned[i + 1];
      if (row.endMark().isValid()) return row.endMark();
    }
    return behindInBlock(*owner);
  }
  return behindInBlock(entity);
}

}  // namespace

resbuf* kvdbEntGet(const kvds_name name) {
  KvDbObject* object = openForRead(name);
  if (!object) return nullptr;
  resbuf* record = recordOf(*object);
  object->close();
  return record;
}

resbuf* kvdbEntGetX(const kvds_name name, const resbuf* applications) {
  KvDbObject* object = openForRead(name);
  if (!object) return nullptr;
  resbuf* record = recordOf(*object);
  for (; applications; applications = applications->rbnext) {
    if (kvutRbKind(applications->restype) != KvRbKind::Text || !applications->resval.rstring) continue;
    const CString application = applications->resval.rstring;
    appendXData(record, *object, application == L"*" ? nullptr : application.GetString());
  }
  object->close();
  return record;
}

int kvdbEntMod(const resbuf* record) {
  KvDbObjectId id;
  for (const resbuf* node = record; node; node = node->rbnext)
    if (node->restype == kEntityName) {
      kvdbGetObjectId(id, node->resval.rlname);
      break;
    }
  KvDbDatabase* database = id.isNull() ? kvdbDatabaseOrWorking(nullptr) : id.database();
  if (!record || !database) return RTERROR;
  KvDbChainReader given(*database);
  if (!given.read(record)) return RTERROR;
  if (const KvDxfGroup* handle = given.find(5); id.isNull() && handle)
    id = database->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(handle->integer)));
  KvDbObject* object = nullptr;
  if (!namesAreKnown(given, *database) || kvdbOpenAny(object, id, KvDb::kForWrite) != Kvad::eOk)
    return RTERROR;
  const CString type(given.type());
  auto status =
      type.IsEmpty() || type == object->fileType() ? writeBack(*object, given) : Kvad::eWrongObjectType;
  if (status == Kvad::eOk && given.xData()) status = object->setXData(given.xData());
  object->close();
  return status == Kvad::eOk ? RTNORM : RTERROR;
}

int kvdbEntDel(const kvds_name name) {
  KvDbObjectId id;
  if (kvdbGetObjectId(id, name) != Kvad::eOk) return RTERROR;
  KvDbObject* object = nullptr;
  if (kvdbOpenAny(object, id, KvDb::kForWrite, true) != Kvad::eOk) return RTERROR;
  const bool mayGo = object->isKindOf(KvDbEntity::desc()) && !sequenceOf(*object) &&
                     !object->isKindOf(KvDbBlockBegin::desc()) && !object->isKindOf(KvDbBlockEnd::desc());
  const auto status = mayGo ? object->erase(!object->isErased()) : Kvad::eNotApplicable;
  object->close();
  return status == Kvad::eOk ? RTNORM : RTERROR;
}

int kvdbEntLast(kvds_name name) {
  kvds_setNull(name);
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database) return RTERROR;
  const KvDbObjectId last = database->newest([&](const KvDbStub& stub) {
    const auto* entity = KvDbEntity::cast(stub.object);
    return entity && !stub.isErased && isInLayout(*entity) && !database->isBeingMade(entity->objectId()) &&
           !entity->isKindOf(KvDbBlockBegin::desc()) && !entity->isKindOf(KvDbBlockEnd::desc());
  });
  return kvdbGetKvdsName(name, last) == Kvad::eOk ? RTNORM : RTERROR;
}

int kvdbEntNext(const kvds_name name, kvds_name next) {
  KvDbObjectId id, found;
  if (!name || kvds_isNull(name)) {
    kvds_setNull(next);
    const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
    const KvDbStub* space = database ? database->currentSpaceId().stub() : nullptr;
    if (const auto* block = space ? KvDbBlockTableRecord::cast(space->object) : nullptr)
      found = block->entityBehind({});
  } else {
    const auto status = kvdbGetObjectId(id, name);
    kvds_setNull(next);
    if (status != Kvad::eOk || !id.stub()->object) return RTERROR;
    if (const auto* entity = KvDbEntity::cast(id.stub()->object)) found = behind(*entity);
  }
  return kvdbGetKvdsName(next, found) == Kvad::eOk ? RTNORM : RTERROR;
}

int kvdbFail(const wchar_t* text) {
  kvdbHostApplicationServices()->reportFailure(text ? text : L"");
  return RTNORM;
}
