#include "host/commands/internal/support.h"

#include <algorithm>

#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/database/names.h"
#include "host/editor/ucs.h"
#include "host/editor/units.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"

namespace kvcmd {

void fail(const CString& text) {
  if (KvEdEditor* now = editor()) now->fail(text);
}
void say(const CString& text) {
  if (KvEdEditor* now = editor(); now && !now->isQuiet()) now->printLine(text);
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

bool Ask::begin() const {
  if (editor() && editor()->isBrokenOff()) return false;
  kvedInitGet(flags_, keywords_);
  return true;
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
  if (!begin()) return Got::Cancelled;
  double result[3] = {0, 0, 0}, from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  const Got got = outcome(kvedGetPoint(base_ ? from : nullptr, prompt_, result));
  if (got == Got::Value) value = {result[0], result[1], result[2]};
  return got;
}

Got Ask::corner(const KvGePoint3d& opposite, KvGePoint3d& value) {
  if (!begin()) return Got::Cancelled;
  const double from[3] = {opposite.x, opposite.y, opposite.z};
  double result[3] = {0, 0, 0};
  const Got got = outcome(kvedGetCorner(from, prompt_, result));
  if (got == Got::Value) value = {result[0], result[1], result[2]};
  return got;
}

Got Ask::distance(double& value) {
  if (!begin()) return Got::Cancelled;
  double from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  return outcome(kvedGetDist(base_ ? from : nullptr, prompt_, &value));
}

Got Ask::angle(double& value) {
  if (!begin()) return Got::Cancelled;
  double from[3] = {0, 0, 0};
  if (base_) from[0] = base_->x, from[1] = base_->y, from[2] = base_->z;
  return outcome(kvedGetOrient(base_ ? from : nullptr, prompt_, &value));
}

Got Ask::real(double& value) {
  if (!begin()) return Got::Cancelled;
  return outcome(kvedGetReal(prompt_, &value));
}

Got Ask::whole(int& value) {
  if (!begin()) return Got::Cancelled;
  return outcome(kvedGetInt(prompt_, &value));
}

Got Ask::text(CString& value, bool blanks) {
  if (!begin()) return Got::Cancelled;
  CString reply;
  const int status = kvedGetString(blanks, prompt_, reply);
  if (status != RTNORM) return Got::Cancelled;
  if (reply.IsEmpty()) return Got::Nothing;
  value = reply;
  return Got::Value;
}

Got Ask::word() {
  if (!begin()) return Got::Cancelled;
  CString reply;
  const int status = kvedGetKword(prompt_, reply);
  if (status == RTNORM) {
    keyword = reply;
    return Got::Keyword;
  }
  return status == RTNONE ? Got::Nothing : Got::Cancelled;
}

Got Ask::entity(KvDbObjectId& id, KvGePoint3d* point) {
  constexpr int kMostMisses = 100;
  for (int miss = 0; miss < kMostMisses; ++miss) {
    if (!begin()) return Got::Cancelled;
    if (accept_ && editor()) editor()->preferNext(accept_);
    kvds_name name;
    double at[3] = {0, 0, 0};
    const int status = kvedEntSel(prompt_, name, at);
    if (point) *point = {at[0], at[1], at[2]};
    if (status == RTNORM && kvdbGetObjectId(id, name) == Kvad::eOk) return Got::Value;
    if (status == RTKWORD || status == RTCAN) return outcome(status);
    if (variable(L"ERRNO", 0) == kKvedErrnoEmpty) return Got::Nothing;
    say(L"There is no object.");
  }
  return Got::Cancelled;
}

std::optional<bool> askYes(const CString& prompt, bool standard) {
  Ask ask(prompt + (standard ? L" [Yes/No] <Yes>: " : L" [Yes/No] <No>: "));
  const Got got = ask.keywords(L"Yes No").word();
  if (got == Got::Cancelled) return std::nullopt;
  return got == Got::Keyword ? ask.keyword == L"Yes" : standard;
}

KvGeVector3d userNormal() {
  return userToWorld().column(2);
}
double bearing(const KvGePoint3d& from, const KvGePoint3d& to) {
  return std::atan2(to.y - from.y, to.x - from.x);
}
double flatDistance(const KvGePoint3d& a, const KvGePoint3d& b) {
  return std::hypot(b.x - a.x, b.y - a.y);
}

void setVariable(const wchar_t* name, const KvEdVarValue& value) {
  if (editor()) editor()->variables().set(name, value);
}

CString numberText(double value) {
  return platform::wideFromUtf8(platform::shortest(value));
}

CString lengthText(double value) {
  return kvedLengthText(value, variable(L"LUNITS", 2), variable(L"LUPREC", 4));
}

CString angleText(double radians) {
  return kvedAngleText(radians, variable(L"AUNITS", 0), variable(L"AUPREC", 0));
}

CString pointText(const KvGePoint3d& point) {
  return lengthText(point.x) + L"," + lengthText(point.y) + L"," + lengthText(point.z);
}

bool isLocked(KvDbObjectId id) {
  const auto* entity = look<KvDbEntity>(id);
  const auto* layer = entity ? look<KvDbLayerTableRecord>(entity->layerId()) : nullptr;
  return layer && layer->isLocked();
}

void moveAll(const KvDbObjectIdArray& ids, const KvGeMatrix3d& world) {
  int refused = 0;
  for (KvDbObjectId id : ids) {
    auto status = Kvad::eNotOpenForWrite;
    change<KvDbEntity>(id, [&](KvDbEntity& entity) { status = entity.transformBy(world); });
    if (status != Kvad::eOk) ++refused;
  }
  if (refused > 0) fail(countOf(refused, L"could not be changed"));
}

KvDbObjectIdArray copyAll(const KvDbObjectIdArray& ids) {
  KvDbIdMapping mapping;
  KvDbObjectIdArray copies;
  if (ids.isEmpty() || drawing()->deepCloneObjects(ids, drawing()->currentSpaceId(), mapping) != Kvad::eOk)
    return copies;
  for (KvDbObjectId id : mapping.primaries())
    if (id.isValid()) copies.append(id);
  return copies;
}

KvDbObjectId addFromUser(std::unique_ptr<KvDbEntity> entity) {
  if (!entity || entity->transformBy(userToWorld()) != Kvad::eOk) return {};
  return add(std::move(entity));
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
  const bool isOver = editor() && editor()->isBrokenOff();
  if (isCancelled) *isCancelled = isOver;
  if (isOver) return ids;
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
    if (!withLocked && isLocked(id))
      ++locked;
    else
      ids.append(id);
  }
  kvedSSFree(set);
  if (locked > 0) say(countOf(locked, L"on a locked layer, left out"));
  return ids;
}

AllOrNothing::AllOrNothing() : database_(drawing()) {
  if (database_ && !database_->undoRecorder().isInGroup()) database_ = nullptr;
  if (database_) database_->undoRecorder().setSavePoint();
}

AllOrNothing::~AllOrNothing() {
  if (!database_) return;
  KvDbUndoRecorder& undo = database_->undoRecorder();
  editor() && editor()->isBrokenOff() ? undo.rollBack() : undo.releaseSavePoint();
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
