// Chains that are whole records of entities, and copies of extended data.
#include <cmath>

#include "host/database/entcalls.h"
#include "host/database/entity.h"
#include "host/database/entmake.h"
#include "host/database/names.h"
#include "module/toolkit/rbchains.h"

namespace {

constexpr int kVisibilityCode = 60, kHandleCode = 5, kLengthCode = 40;
constexpr int kFirstPointCode = 10, kLastPointCode = 18;

/// Puts the value of group 60 back, whatever way the function is left.
class VisibilityKeeper {
 public:
  explicit VisibilityKeeper(resbuf* record) : record_(record) {
    IM_GetRbValueOf(record, value_, kVisibilityCode, 1);
  }
  ~VisibilityKeeper() {
    if (FindResbufByType(record_, kVisibilityCode)) IM_SetRbValueOf(record_, value_, kVisibilityCode, 1);
  }
  VisibilityKeeper(const VisibilityKeeper&) = delete;
  VisibilityKeeper& operator=(const VisibilityKeeper&) = delete;

 private:
  resbuf* record_;
  int value_ = 0;
};

bool findByHandle(resbuf* record, kvds_name name) {
  CString handle;
  if (!IM_GetRbValueOf(record, handle, kHandleCode, 1) || handle.IsEmpty()) return false;
  return kvdbHandEnt(handle, name) == RTNORM;
}

/// A block, polyline or reference that was begun and not ended; null for none.
KvDbPendingEntities* begun() {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  KvDbPendingEntities* pending = database ? database->pendingEntities() : nullptr;
  return pending && !pending->isEmpty() ? pending : nullptr;
}

bool makeInvisible(resbuf* record, kvds_name name) {
  // What the caller has begun would take the entity in.
  if (begun()) return false;
  kvds_name before = {0, 0};
  kvdbEntLast(before);
  IM_SetRbValueOf(record, 1, kVisibilityCode, 1);
  if (kvdbEntMake(record) != RTNORM) return false;
  const bool isMade = kvdbEntLast(name) == RTNORM && !kvds_isNull(name) && !kvds_equal(name, before);
  // A record that only begins something has no extents, and the newest entity is somebody else's.
  if (KvDbPendingEntities* pending = isMade ? nullptr : begun()) pending->drop();
  return isMade;
}

bool extentsOf(const kvds_name name, double* minPoint, double* maxPoint) {
  KvDbObjectId id;
  KvDbEntity* entity = nullptr;
  if (kvdbGetObjectId(id, name) != Kvad::eOk || kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk)
    return false;
  KvDbExtents extents;
  const bool isKnown = entity->getGeomExtents(extents) == Kvad::eOk;
  entity->close();
  if (!isKnown) return false;
  const KvGePoint3d least = extents.minPoint(), greatest = extents.maxPoint();
  minPoint[0] = least.x, minPoint[1] = least.y, minPoint[2] = 0;
  maxPoint[0] = greatest.x, maxPoint[1] = greatest.y, maxPoint[2] = 0;
  return true;
}

/// One node of the codes that a copy keeps, under the host's value type at first; null for others.
resbuf* copyOf(const resbuf& node) {
  switch (node.restype) {
    case 1000:
    case 1001:
    case 1005:
      return kvutBuildList(RTSTR, node.resval.rstring ? node.resval.rstring : L"", 0);
    case -3:
      return kvutBuildList(RTSHORT, node.resval.rint, 0);
    case 1040:
      return kvutBuildList(RTREAL, node.resval.rreal, 0);
    case 1070:
      return kvutBuildList(RTSHORT, node.resval.rint, 0);
    case 1071:
      return kvutBuildList(RTLONG, node.resval.rlong, 0);
    default:
      return nullptr;
  }
}

}  // namespace

int IM_getRbextentWCS(resbuf* head, double* minPoint, double* maxPoint) {
  if (!head || !minPoint || !maxPoint) return RTERROR;
  const VisibilityKeeper keeper(head);
  kvds_name name;
  kvds_setNull(name);
  const bool isTemporary = !findByHandle(head, name);
  if (isTemporary && !makeInvisible(head, name)) return RTERROR;
  const bool isKnown = extentsOf(name, minPoint, maxPoint);
  if (isTemporary) kvdbEntDel(name);
  return isKnown ? RTNORM : RTERROR;
}

int IM_xformrb(resbuf* head, double matrix[4][4]) {
  if (!matrix) return 1;
  KvGeMatrix3d map;
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column) map.entry[row][column] = matrix[row][column];
  const double scale = map.scale();
  for (; head; head = head->rbnext) {
    if (head->restype >= kFirstPointCode && head->restype <= kLastPointCode) {
      double* p = head->resval.rpoint;
      const KvGePoint3d moved = map * KvGePoint3d(p[0], p[1], p[2]);
      p[0] = moved.x, p[1] = moved.y, p[2] = moved.z;
    } else if (head->restype == kLengthCode) {
      head->resval.rreal *= scale;
    }
  }
  return 1;
}

int IM_XDataResbufCopy(resbuf** out, resbuf const* source) {
  if (!out) return RTERROR;
  *out = nullptr;
  if (!source) return RTNONE;
  resbuf** link = out;
  for (; source; source = source->rbnext) {
    resbuf* node = copyOf(*source);
    if (!node) continue;
    node->restype = source->restype;
    *link = node;
    link = &node->rbnext;
  }
  return RTNORM;
}

int IM_AddXDataToResbuf(resbuf** head, resbuf const* source) {
  if (!head || !*head) return RTERROR;
  if (!source) return RTNONE;
  resbuf* copy = nullptr;
  const int status = IM_XDataResbufCopy(&copy, source);
  if (copy) IM_AddRbToTail(*head, copy);
  return status;
}

int Use_set_point(resbuf* head, double const* value, int code, int n) {
  resbuf* node = value ? Use_get_resbuf(head, code, n) : nullptr;
  if (!node) return RTERROR;
  for (int i = 0; i < 3; ++i) node->resval.rpoint[i] = value[i];
  return kvdbEntMod(head);
}
