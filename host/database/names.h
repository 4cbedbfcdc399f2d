#pragma once
// Objects by the names that function-style calls use: two words, both 0 for none. The first is the handle,
// the second tells the drawing.
#include "host/base/kvds.h"
#include "host/database/database.h"

/// eInvalidInput for (0,0) or null, eUnknownHandle for a name that no object of an open drawing bears. Erased
/// objects have their names too.
Kvad::ErrorStatus kvdbGetObjectId(KvDbObjectId& id, const long long* name);
/// (0,0) and eNullObjectId for a null id.
Kvad::ErrorStatus kvdbGetKvdsName(long long* name, KvDbObjectId id);
inline Kvad::ErrorStatus kvdbGetKdsName(long long* name, KvDbObjectId id) {
  return kvdbGetKvdsName(name, id);
}
/// The name of an object by the text of its handle, in the working drawing. RTNORM or RTERROR.
int kvdbHandEnt(const wchar_t* handle, long long* name);
