#include "host/commands/internal/polychain.h"

#include "host/commands/internal/flatcurve.h"

namespace kvcmd {

using Vertex = PolyChainVertex;

std::vector<Vertex> verticesOf(const KvDbPolyline& polyline) {
  std::vector<Vertex> vertices(static_cast<std::size_t>(polyline.numVerts()));
  for (int i = 0; i < polyline.numVerts(); ++i) {
    Vertex& v = vertices[static_cast<std::size_t>(i)];
    polyline.getPointAt(i, v.point);
    polyline.getBulgeAt(i, v.bulge);
    polyline.getWidthsAt(i, v.startWidth, v.endWidth);
  }
  return vertices;
}

void setVertices(KvDbPolyline& polyline, const std::vector<Vertex>& vertices) {
  while (polyline.numVerts() > 0) polyline.removeVertexAt(polyline.numVerts() - 1);
  for (const Vertex& v : vertices)
    polyline.addVertexAt(polyline.numVerts(), v.point, v.bulge, v.startWidth, v.endWidth);
}

std::vector<Vertex> chainOf(KvDbObjectId id) {
  const KvGeMatrix3d toFlat = userToWorld().inverse();
  if (const auto* polyline = look<KvDbPolyline>(id)) {
    if (polyline->isClosed() || std::fabs(std::fabs(polyline->normal().dotProduct(userNormal())) - 1) > 1e-9)
      return {};
    std::vector<Vertex> vertices = verticesOf(*polyline);
    const bool isTurned = polyline->normal().dotProduct(userNormal()) < 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
      KvGePoint3d world;
      polyline->getPointAt(static_cast<int>(i), world);
      vertices[i].point = kvge::planar(toFlat * world);
      if (isTurned) vertices[i].bulge = -vertices[i].bulge;
    }
    return vertices;
  }
  const auto flat = flatCurveOf(id);
  if (!flat || flat->kind == FlatCurve::Kind::Circle) return {};
  Vertex first{flat->start}, last{flat->end};
  if (flat->isRound())
    first.bulge = std::tan(
        kvge::normalizedAngle((flat->end - flat->center).angle() - (flat->start - flat->center).angle()) / 4);
  return {first, last};
}

void reverseChain(std::vector<Vertex>& chain) {
  std::vector<Vertex> turned(chain.rbegin(), chain.rend());
  for (std::size_t i = 0; i + 1 < turned.size(); ++i) {
    const Vertex& segment = chain[chain.size() - 2 - i];
    turned[i].bulge = -segment.bulge;
    turned[i].startWidth = segment.endWidth;
    turned[i].endWidth = segment.startWidth;
  }
  turned.back().bulge = 0;
  chain.swap(turned);
}

bool attach(std::vector<Vertex>& chain, std::vector<Vertex> more, double tolerance) {
  const auto meets = [&](KvGePoint2d a, KvGePoint2d b) { return a.distanceTo(b) <= tolerance; };
  if (meets(chain.front().point, more.front().point) || meets(chain.front().point, more.back().point)) {
    if (meets(chain.front().point, more.front().point)) reverseChain(more);
    more.pop_back();
    chain.insert(chain.begin(), more.begin(), more.end());
    return true;
  }
  if (meets(chain.back().point, more.back().point)) reverseChain(more);
  if (!meets(chain.back().point, more.front().point)) return false;
  chain.pop_back();
  chain.insert(chain.end(), more.begin(), more.end());
  return true;
}

}  // namespace kvcmd
