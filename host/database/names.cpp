#include "host/database/names.h"

Kvad::ErrorStatus kvdbGetObjectId(KvDbObjectId& id, const long long* name) {
  id.setNull();
  if (!name || kvds_isNull(name)) return Kvad::eInvalidInput;
  const KvDbDatabase* database = KvDbDatabase::ofSerial(static_cast<std::uint32_t>(name[1]));
  if (!database || name[1] != static_cast<long long>(database->serial())) return Kvad::eUnknownHandle;
  id = database->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(name[0])));
  return id.isNull() ? Kvad::eUnknownHandle : Kvad::eOk;
}

Kvad::ErrorStatus kvdbGetKvdsName(long long* name, KvDbObjectId id) {
  if (!name) return Kvad::eInvalidInput;
  kvds_setNull(name);
  if (id.isNull() || !id.database()) return Kvad::eNullObjectId;
  name[0] = static_cast<long long>(id.handle().value());
  name[1] = id.database()->serial();
  return Kvad::eOk;
}

int kvdbHandEnt(const wchar_t* handle, long long* name) {
  if (!name) return RTERROR;
  kvds_setNull(name);
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !handle) return RTERROR;
  const KvDbObjectId id = database->idFromHandle(KvDbHandle(handle));
  return !id.isNull() && kvdbGetKvdsName(name, id) == Kvad::eOk ? RTNORM : RTERROR;
}
