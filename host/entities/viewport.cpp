#include "host/entities/viewport.h"

#include <cmath>

#include "host/database/database.h"

KVRX_DEFINE(KvDbViewport, KvDbKeptEntity, L"VIEWPORT")

KvDbViewport::KvDbViewport(const KvGePoint3d& center, double width, double height) : KvDbViewport() {
  constexpr int kFirstFree = 2;
  setCenterPoint(center);
  setWidth(width);
  setHeight(height);
  putWhole(68, 1);
  putWhole(69, kFirstFree);
  setViewCenter({});
  putPoint(16, {0, 0, 1});
  putPoint(17, {});
  setViewHeight(height);
  putReal(51, 0);
  putWhole(90, 0);
}

Kvad::ErrorStatus KvDbViewport::setOn(bool on) {
  if (on && whole(68) == 0) putWhole(68, 1);
  return putWhole(90, on ? whole(90) & ~kOffFlag : whole(90) | kOffFlag);
}

KvDbObjectIdArray KvDbViewport::frozenLayers() const {
  KvDbObjectIdArray ids;
  if (!database()) return ids;
  for (const int code : {331, 341})
    for (const KvDxfGroup& group : all(code))
      if (const KvDbObjectId id =
              database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(group.integer)));
          !id.isNull())
        ids.append(id);
  return ids;
}

KvDbObjectId KvDbViewport::nonRectClipEntityId() const {
  return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(whole(340))))
                    : KvDbObjectId();
}

Kvad::ErrorStatus KvDbViewport::getGeomExtents(KvDbExtents& extents) const {
  if (!(width() > 0) || !(height() > 0)) return Kvad::eInvalidExtents;
  const KvGeVector3d half(width() / 2, height() / 2, 0);
  extents = KvDbExtents(centerPoint() - half, centerPoint() + half);
  return Kvad::eOk;
}

bool KvDbViewport::subWorldDraw(KvGiWorldDraw* draw) {
  KvDbExtents box;
  // The sheet's own has no frame; that of a clipped one is its outline, an entity of its own.
  if (number() == 1 || isNonRectClipOn() || getGeomExtents(box) != Kvad::eOk) return false;
  const KvGePoint3d a = box.minPoint(), b = box.maxPoint();
  const KvGePoint3d frame[] = {a, {b.x, a.y, a.z}, b, {a.x, b.y, b.z}, a};
  draw->geometry().polyline(5, frame);
  return true;
}
