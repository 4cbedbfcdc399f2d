// The current dimension style and what differs from it.
#include "host/database/tables.h"
#include "host/entities/dimcurrent.h"
#include "module/toolkit/styles.h"

int IM_IsDimStyleOverrided(KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  return database && kvdbIsDimStyleOverridden(*database);
}

int IM_SetCurrentDimStyle(KvDbObjectId style, int force) {
  KvDbDatabase* working = kvdbDatabaseOrWorking(nullptr);
  if (!working || (!force && IM_IsDimStyleOverrided(working))) return 0;
  KvDbDimStyleTableRecord* record = nullptr;
  if (kvdbOpenObject(record, style, KvDb::kForRead) != Kvad::eOk) return 0;
  const bool isSet = working->setDimstyle(style) == Kvad::eOk && working->setDimstyleData(style) == Kvad::eOk;
  record->close();
  return isSet;
}

int IM_SetCurrentDimStyle(CString name, int force) {
  const KvDbObjectId style = IM_GetDimStyleId(name, 0, nullptr);
  return style.isNull() ? 0 : IM_SetCurrentDimStyle(style, force);
}
