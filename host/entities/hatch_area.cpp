// The area that a hatch fills: its outlines as curves, as a region, and as a number.
#include <cmath>

#include "host/entities/hatch.h"
#include "host/entities/region.h"
#include "host/geometry/outline.h"
#include "host/geometry/region.h"

std::vector<std::unique_ptr<KvGeCurve3d>> KvDbHatch::curvesOf(const Loop& loop) {
  std::vector<std::unique_ptr<KvGeCurve3d>> curves;
  if (loop.isPolyline()) {
    std::vector<KvGePolyline3d::Vertex> vertices;
    for (const Vertex& vertex : loop.vertices) vertices.push_back({vertex.point, vertex.bulge});
    if (vertices.size() > 1) curves.push_back(std::make_unique<KvGePolyline3d>(std::move(vertices), true));
    return curves;
  }
  for (const Edge& edge : loop.edges)
    if (auto curve = edge.curve()) curves.push_back(std::move(curve));
  return curves;
}

bool KvDbHatch::regionInPlane(KvGeRegion& region) const {
  std::vector<std::unique_ptr<KvGeCurve3d>> own;
  KvGeRegion::Curves curves;
  for (const Loop* loop : filledLoops())
    for (auto& curve : curvesOf(*loop)) {
      curves.push_back(curve.get());
      own.push_back(std::move(curve));
    }
  return !curves.empty() && KvGeRegion::createFromLoops(curves, region) == KvGeRegion::kOk &&
         !region.isNull();
}

KvDbRegion* KvDbHatch::getRegionArea() const {
  KvGeRegion region;
  if (!regionInPlane(region) || region.transformBy(planeToWorld()) != KvGeRegion::kOk) return nullptr;
  auto made = std::make_unique<KvDbRegion>(region);
  made->setPropertiesFrom(this);
  return made.release();
}

/// Segments and arcs that follow one another, as a polyline has them; empty for anything else.
std::vector<KvGePolyline3d::Vertex> KvDbHatch::bulgesOf(const Loop& loop) {
  std::vector<KvGePolyline3d::Vertex> vertices;
  if (loop.isPolyline()) {
    for (const Vertex& vertex : loop.vertices) vertices.push_back({vertex.point, vertex.bulge});
    return vertices;
  }
  KvGePoint2d end;
  for (const Edge& edge : loop.edges) {
    KvGePoint2d from = edge.first, to = edge.second;
    double bulge = 0;
    if (edge.kind == kCirArc) {
      const double sign = edge.isCounterClockwise ? 1 : -1, start = kvdxfRadians(edge.start);
      double sweep = kvdxfRadians(edge.end) - start;
      if (sweep <= 0) sweep += kvge::kTwoPi;
      const auto at = [&](double angle) {
        return edge.first + KvGeVector2d(std::cos(angle), std::sin(angle)) * edge.radius;
      };
      from = at(sign * start);
      to = at(sign * (start + sweep));
      bulge = sign * kvge::bulgeOfSweep(sweep);
    } else if (edge.kind != kLine) {
      return {};
    }
    if (!vertices.empty() && from.distanceTo(end) > KvGeRegion::kVertexTolerance) return {};
    vertices.push_back({from, bulge});
    end = to;
  }
  if (!vertices.empty() && vertices.front().point.distanceTo(end) > KvGeRegion::kVertexTolerance) return {};
  return vertices;
}

Kvad::ErrorStatus KvDbHatch::getArea(double& area) const {
  if (loops_.empty()) return Kvad::eNoContent;
  if (loops_.size() == 1) {
    if (const auto plain = kvge::areaOfPlainOutline(bulgesOf(loops_.front()))) {
      area = *plain;
      return Kvad::eOk;
    }
  }
  KvGeRegion region;
  if (!regionInPlane(region)) return Kvad::eInvalidLoop;
  area = region.area();
  return Kvad::eOk;
}
