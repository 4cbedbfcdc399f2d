#include "host/editor/ucs.h"

#include <cmath>
#include <optional>

#include "host/database/chainwriter.h"
#include "host/database/entity.h"
#include "host/database/header.h"
#include "host/database/names.h"
#include "host/editor/views.h"

namespace {

constexpr double kUnitTolerance = 1e-6;

struct Names {
  const wchar_t *origin, *xAxis, *yAxis, *name;
};
constexpr Names kModel{L"$UCSORG", L"$UCSXDIR", L"$UCSYDIR", L"$UCSNAME"};
constexpr Names kPaper{L"$PUCSORG", L"$PUCSXDIR", L"$PUCSYDIR", L"$PUCSNAME"};

const Names& namesOf(const KvDbDatabase& database) {
  return database.tilemode() ? kModel : kPaper;
}

bool isFrame(const KvGeVector3d& x, const KvGeVector3d& y) {
  return std::fabs(x.length() - 1) < kUnitTolerance && std::fabs(y.length() - 1) < kUnitTolerance &&
         std::fabs(x.dotProduct(y)) < kUnitTolerance;
}

bool isFinite(const double* p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

void apply(const KvGeMatrix3d& matrix, const double* in, double* out, bool asVector) {
  const KvGePoint3d point(in[0], in[1], in[2]);
  const KvGePoint3d image = asVector ? KvGePoint3d::kOrigin + matrix * point.asVector() : matrix * point;
  out[0] = image.x;
  out[1] = image.y;
  out[2] = image.z;
}

/// The normal of the plane in whose coordinates the entity's record stands; the Z axis for entities whose
/// points are in world coordinates.
std::optional<KvGeVector3d> planeNormal(const long long* name) {
  KvDbObjectId id;
  KvDbEntity* entity = nullptr;
  if (kvdbGetObjectId(id, name) != Kvad::eOk || kvdbOpenObject(entity, id) != Kvad::eOk) return std::nullopt;
  KvDbChainWriter writer(*id.database());
  entity->dxfOutFields(writer);
  const CString type = entity->fileType();
  entity->close();
  KvGeVector3d normal = KvGeVector3d::kZAxis;
  resbuf* chain = writer.takeChain();
  constexpr int kNormalCode = 210;
  for (const resbuf* node = chain; node; node = node->rbnext)
    if (node->restype == kNormalCode && type != L"LINE" && type != L"POINT")
      normal = {node->resval.rpoint[0], node->resval.rpoint[1], node->resval.rpoint[2]};
  kvutRelRb(chain);
  return normal;
}

/// From the system of a node into the world.
std::optional<KvGeMatrix3d> toWorld(const resbuf* system, const KvDbDatabase& database) {
  enum { kWorld = 0, kUser = 1, kView = 2 };
  if (!system) return std::nullopt;
  switch (system->restype) {
    case RTSHORT:
      if (system->resval.rint == kWorld) return KvGeMatrix3d();
      if (system->resval.rint == kUser) return kvedUserToWorld(&database);
      if (system->resval.rint == kView) return kvedViewOf(database).viewToWorld();
      return std::nullopt;
    case RTENAME:
      if (const auto normal = planeNormal(system->resval.rlname)) return KvGeMatrix3d::planeToWorld(*normal);
      return std::nullopt;
    case RT3DPOINT: {
      const KvGeVector3d normal(system->resval.rpoint[0], system->resval.rpoint[1], system->resval.rpoint[2]);
      if (!isFinite(system->resval.rpoint) || normal.isZeroLength()) return std::nullopt;
      return KvGeMatrix3d::planeToWorld(normal.normal());
    }
    default:
      return std::nullopt;
  }
}

}  // namespace

KvGeMatrix3d kvedUserToWorld(const KvDbDatabase* database) {
  if (!database) return {};
  const Names& names = namesOf(*database);
  const KvDbHeader& header = database->header();
  const KvGeVector3d x = header.point(names.xAxis).asVector(), y = header.point(names.yAxis).asVector();
  if (!isFrame(x, y)) return {};
  return KvGeMatrix3d().setCoordSystem(header.point(names.origin), x, y, x.crossProduct(y));
}

Kvad::ErrorStatus kvedGetCurrentUCS(KvGeMatrix3d& matrix) {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database) return Kvad::eNoDatabase;
  matrix = kvedUserToWorld(database);
  return Kvad::eOk;
}

Kvad::ErrorStatus kvedSetCurrentUCS(const KvGeMatrix3d& matrix) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database) return Kvad::eNoDatabase;
  KvGePoint3d origin;
  KvGeVector3d x, y, z;
  matrix.getCoordSystem(origin, x, y, z);
  const double all[] = {origin.x, origin.y, origin.z};
  // Written so that numbers that aren't finite fail.
  const bool isRight = isFinite(all) && isFrame(x, y) && (x.crossProduct(y) - z).length() < kUnitTolerance;
  if (!isRight) return Kvad::eInvalidInput;
  const Names& names = namesOf(*database);
  KvDbHeader& header = database->header();
  header.setPoint(names.origin, origin);
  header.setPoint(names.xAxis, {x.x, x.y, x.z});
  header.setPoint(names.yAxis, {y.x, y.y, y.z});
  if (!header.text(names.name).IsEmpty()) header.setText(names.name, L"");
  return Kvad::eOk;
}

bool kvdbUcs2Wcs(const double* in, double* out, bool asVector) {
  KvGeMatrix3d matrix;
  if (!in || !out || kvedGetCurrentUCS(matrix) != Kvad::eOk) return false;
  apply(matrix, in, out, asVector);
  return true;
}

bool kvdbWcs2Ucs(const double* in, double* out, bool asVector) {
  KvGeMatrix3d matrix;
  if (!in || !out || kvedGetCurrentUCS(matrix) != Kvad::eOk) return false;
  apply(matrix.inverse(), in, out, asVector);
  return true;
}

int kvedTrans(const double* point, const resbuf* from, const resbuf* to, int isDisplacement, double* result) {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || !point || !result || !isFinite(point)) return RTERROR;
  const auto source = toWorld(from, *database), target = toWorld(to, *database);
  if (!source || !target) return RTERROR;
  apply(target->inverse() * *source, point, result, isDisplacement != 0);
  return RTNORM;
}
