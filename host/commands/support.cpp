#include "host/commands/internal/support.h"

#include <algorithm>

#include "host/database/block.h"
#include "host/database/names.h"
#include "host/editor/ucs.h"

namespace kvcmd {

void fail(const CString& text) {
  if (KvEdEditor* now = editor()) now->fail(text);
}
void say(const CString& text) {
  if (KvEdEditor* now = editor()) now->printLine(text);
}

KvGeMatrix3d userToWorld() {
  return kvedUserToWorld(drawing());
}
KvGePoint3d toWorld(const KvGePoint3d& user) {
  return userToWorld() * user;
}
KvGePoint3d toUser(const KvGePoint3d& world) {
  return userToWorld().inverse() * world;
}

void Ask::init() const {
  kvedInitGet(flags_, keywords_);
}

Got Ask::outcome(int status) {
  keyword.Empty();
  switch (status) {
    case RTNORM:
      return Got::Value;
    case RTNONE:
      return Got::Nothing;
    case RTKWORD:
      kvedGetInput(keyword);
      return Got::Keyword;
    default:
      return Got::Cancelled;
  }
}

Got Ask::point(KvGePoint3d& value) {
  init();
  double result[3] = {0, 0, 0}, from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  const Got got = outcome(kvedGetPoint(base_ ? from : nullptr, prompt_, result));
  if (got == Got::Value) value = {result[0], result[1], result[2]};
  return got;
}

Got Ask::corner(const KvGePoint3d& opposite, KvGePoint3d& value) {
  init();
  const double from[3] = {opposite.x, opposite.y, opposite.z};
  double result[3] = {0, 0, 0};
  const Got got = outcome(kvedGetCorner(from, prompt_, result));
  if (got == Got::Value) value = {result[0], result[1], result[2]};
  return got;
}

Got Ask::distance(double& value) {
  init();
  double from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  return outcome(kvedGetDist(base_ ? from : nullptr, prompt_, &value));
}

Got Ask::angle(double& value) {
  init();
  double from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  return outcome(kvedGetOrient(base_ ? from : nullptr, prompt_, &value));
}

Got Ask::real(double& value) {
  init();
  return outcome(kvedGetReal(prompt_, &value));
}

Got Ask::whole(int& value) {
  init();
  return outcome(kvedGetInt(prompt_, &value));
}

Got Ask::text(CString& value, bool blanks) {
  init();
  CString reply;
  const int status = kvedGetString(blanks, prompt_, reply);
  if (status != RTNORM) return Got::Cancelled;
  if (reply.IsEmpty()) return Got::Nothing;
  value = reply;
  return Got::Value;
}

Got Ask::word() {
  init();
  CString reply;
  const int status = kvedGetKword(prompt_, reply);
  if (status == RTNORM) {
    keyword = reply;
    return Got::Keyword;
  }
  return status == RTNONE ? Got::Nothing : Got::Cancelled;
}

KvDbObjectId add(std::unique_ptr<KvDbEntity> entity, bool keepLook) {
  KvDbDatabase* database = drawing();
  KvDbBlockTableRecord* space = nullptr;
  if (!entity || !database || kvdbOpenObject(space, database->currentSpaceId(), KvDb::kForWrite) != Kvad::eOk)
    return {};
  if (!keepLook) entity->setDatabaseDefaults(database);
  KvDbEntity* raw = entity.release();
  KvDbObjectId id;
  if (space->appendKvDbEntity(id, raw) != Kvad::eOk) {
    delete raw;
    id.setNull();
  } else {
    raw->close();
  }
  space->close();
  return id;
}

KvDbObjectIdArray select(const wchar_t* prompt, bool withLocked, bool* isCancelled) {
  KvDbObjectIdArray ids;
  kvds_name set;
  const wchar_t* prompts[2] = {prompt, L"\nRemove objects: "};
  const int status = prompt ? kvedSSGet(L":$", prompts, nullptr, nullptr, set)
                            : kvedSSGet(nullptr, nullptr, nullptr, nullptr, set);
  if (isCancelled) *isCancelled = status == RTCAN;
  if (status != RTNORM) return ids;
  long length = 0;
  kvedSSLength(set, &length);
  int locked = 0;
  for (long i = 0; i < length; ++i) {
    kvds_name name;
    KvDbObjectId id;
    if (kvedSSName(set, i, name) != RTNORM || kvdbGetObjectId(id, name) != Kvad::eOk || !id.isValid())
      continue;
    const auto* entity = look<KvDbEntity>(id);
    const auto* layer = entity ? look<KvDbLayerTableRecord>(entity->layerId()) : nullptr;
    if (!withLocked && layer && layer->isLocked())
      ++locked;
    else
      ids.append(id);
  }
  kvedSSFree(set);
  if (locked > 0) say(countOf(locked, L"on a locked layer, left out"));
  return ids;
}

void erase(const KvDbObjectIdArray& ids) {
  for (KvDbObjectId id : ids) change<KvDbEntity>(id, [](KvDbEntity& entity) { entity.erase(); });
}

CString countOf(int number, const wchar_t* what) {
  CString text;
  text.Format(L"%d %s", number, what);
  return text;
}

}  // namespace kvcmd
