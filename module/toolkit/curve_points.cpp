// Vertices of curves, and whether a point lies inside one.
#include <cmath>

#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "module/toolkit/geometry.h"

namespace {

constexpr double kOnCurve = 1e-10;
/// Six rays, unevenly turned, so that one of them misses every vertex.
constexpr double kRayStep = 0.14959965017142857, kLastRay = 0.7853981634;
enum { kInside = 0, kOutside = 1, kOnBoundary = 2 };

void addVertices(const KvDbPolyline& polyline, std::vector<KvGePoint3d>& out) {
  for (int i = 0; i < polyline.numVerts(); ++i) {
    KvGePoint3d point;
    polyline.getPointAt(i, point);
    out.push_back(point);
  }
}

int addEnds(const KvDbCurve& curve, std::vector<KvGePoint3d>& out) {
  KvGePoint3d start, end;
  if (curve.getStartPoint(start) != Kvad::eOk || curve.getEndPoint(end) != Kvad::eOk) return 0;
  out.push_back(start);
  out.push_back(end);
  return 1;
}

bool isVertex(const KvGePoint3d& point, const std::vector<KvGePoint3d>& vertices) {
  for (const KvGePoint3d& vertex : vertices)
    if (point.isEqualTo(vertex)) return true;
  return false;
}

}  // namespace

int IM_GetVertexPoints(KvDbCurve const* curve, std::vector<KvGePoint3d>& out) {
  if (!curve) return 0;
  if (KvDbCircle::cast(curve)) return 1;
  if (const auto* polyline = KvDbPolyline::cast(curve)) {
    addVertices(*polyline, out);
    return 1;
  }
  if (KvDb2dPolyline::cast(curve)) {
    KvDbPolyline temporary;
    KvDbEntity* copy = KvDbEntity::cast(curve->clone());
    const bool isConverted = copy && temporary.convertFrom(copy, false) == Kvad::eOk;
    delete copy;
    if (isConverted) addVertices(temporary, out);
    return isConverted;
  }
  if (const auto* polyline = KvDb3dPolyline::cast(curve)) {
    for (const KvDbEntity* member : polyline->members())
      if (const auto* vertex = KvDb3dPolylineVertex::cast(member)) out.push_back(vertex->position());
    return 1;
  }
  if (KvDbEllipse::cast(curve) && curve->isClosed()) return 1;
  return addEnds(*curve, out);
}

int IM_IsPointInsideCurve(KvDbCurve const* curve, KvGePoint3d point) {
  if (!curve || !curve->isClosed()) return kOutside;
  KvGePoint3d nearest;
  if (curve->getClosestPointTo(point, nearest) == Kvad::eOk && nearest.distanceTo(point) < kOnCurve)
    return kOnBoundary;
  std::vector<KvGePoint3d> vertices;
  if (!IM_GetVertexPoints(curve, vertices)) return kOutside;
  KvDbRay ray;
  ray.setBasePoint(point);
  for (double angle = 0; angle < kLastRay; angle += kRayStep) {
    ray.setUnitDir({std::cos(angle), std::sin(angle), 0});
    KvGePoint3dArray hits;
    ray.intersectWith(curve, KvDb::kOnBothOperands, hits);
    bool isAmbiguous = false;
    for (int i = 0; i < hits.length() && !isAmbiguous; ++i) isAmbiguous = isVertex(hits[i], vertices);
    if (!isAmbiguous) return hits.length() % 2 == 1 ? kInside : kOutside;
  }
  return kOutside;
}
