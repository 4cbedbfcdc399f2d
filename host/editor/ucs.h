#pragma once
// The current user coordinate system of the working drawing, and passing points between systems. Each space
// has a system of its own: model space, and the layouts together.
#include "host/base/kvad.h"
#include "host/base/kvds.h"
#include "host/base/resbuf.h"
#include "host/geometry/matrix.h"

class KvDbDatabase;

/// From user to world coordinates; the identity for a drawing whose header says nothing sensible.
KvGeMatrix3d kvedUserToWorld(const KvDbDatabase* database);

/// From user to world coordinates, of the working drawing. eNoDatabase.
Kvad::ErrorStatus kvedGetCurrentUCS(KvGeMatrix3d& matrix);
/// eNoDatabase; eInvalidInput unless the axes have length 1, stand at right angles and are right-handed.
Kvad::ErrorStatus kvedSetCurrentUCS(const KvGeMatrix3d& matrix);

/// Points, or with `asVector` displacements; both may be the same array. False for null or without a drawing:
/// `out` is untouched.
bool kvdbUcs2Wcs(const double* in, double* out, bool asVector);
bool kvdbWcs2Ucs(const double* in, double* out, bool asVector);

/// From one system into another: an RTSHORT node of 0 for the world, 1 for the user system, 2 for the current
/// view; an RTENAME node for the system of an entity's plane; an RT3DPOINT node for the plane with that
/// normal. RTERROR for anything else or not finite: `result` is untouched.
int kvedTrans(const double* point, const resbuf* from, const resbuf* to, int isDisplacement, double* result);
