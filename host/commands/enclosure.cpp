// Areas from curves that cross: all curves are cut where they meet, ends that lead nowhere are left out, and
// from what remains the ways round the areas are followed, each keeping its area on the left.
#include "host/commands/internal/enclosure.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "host/database/block.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/entities/region.h"

namespace kvcmd {

KvDbObjectIdArray EnclosureLoop::wholeSources() const {
  KvDbObjectIdArray ids;
  for (const Piece& piece : pieces) {
    if (!piece.isWhole) return KvDbObjectIdArray();
    ids.append(piece.source);
  }
  return ids;
}

std::vector<std::unique_ptr<KvDbCurve>> EnclosureLoop::curves() const {
  std::vector<std::unique_ptr<KvDbCurve>> copies;
  for (const Piece& piece : pieces)
    copies.emplace_back(static_cast<KvDbCurve*>(kvdbCopyOf(*piece.curve).release()));
  return copies;
}

namespace {

constexpr std::size_t kMostCurves = 20'000, kMostPieces = 200'000;
constexpr int kDeepestBlock = 16, kSamples = 48;
/// Ends that lie so close together, in parts of the drawing's size, are one.
constexpr double kMeeting = 1e-9;

struct Source {
  std::shared_ptr<const KvDbCurve> curve;
  KvDbObjectId id;
  bool isEntity = false;  // all of an entity of the space
  KvGePoint2d low, high;  // user coordinates
  KvGePoint3dArray cuts;  // world coordinates
};

/// A piece between two nodes; its half-edges are 2i and 2i + 1, there and back.
struct Edge {
  std::shared_ptr<const KvDbCurve> curve;
  std::size_t source = 0;
  bool isWhole = false, isUsed = true;
  std::size_t nodes[2] = {0, 0};
  double length = 0;
  std::vector<KvGePoint2d> points;  // along it, user coordinates
};

class Arrangement {
 public:
  /// False when there are too many curves.
  bool build();
  std::optional<Enclosure> around(const KvGePoint2d& point) const;

 private:
  void gather(const KvDbEntity& entity, KvDbObjectId id, bool isEntity, int depth);
  void addCurve(std::unique_ptr<KvDbEntity> entity, KvDbObjectId id, bool isEntity);
  void findCuts();
  void addPieces(std::size_t source);
  void addEdge(std::shared_ptr<const KvDbCurve> curve, std::size_t source, bool isWhole);
  std::size_t nodeAt(const KvGePoint2d& point);
  void prune();
  void connect();
  void followWays();
  KvGePoint2d flat(const KvGePoint3d& world) const { return kvge::planar(toUser_ * world); }
  EnclosureLoop loopOf(const std::vector<std::size_t>& way, double area) const;

  struct Way {
    std::vector<std::size_t> halves;
    std::vector<KvGePoint2d> outline;
    double area = 0;
  };
  KvGeMatrix3d toUser_ = userToWorld().inverse();
  std::vector<Source> sources_;
  std::vector<Edge> edges_;
  std::vector<KvGePoint2d> nodes_;
  std::multimap<std::pair<long long, long long>, std::size_t> cells_;
  double tolerance_ = kMeeting;
  std::vector<std::size_t> next_;  // of each half-edge the one that goes on round the same area
  std::vector<Way> ways_;
};

bool isInside(const KvGePoint2d& p, const std::vector<KvGePoint2d>& outline) {
  bool inside = false;
  for (std::size_t i = 0, k = outline.size() - 1; i < outline.size(); k = i++) {
    const KvGePoint2d &a = outline[i], &b = outline[k];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

void Arrangement::addCurve(std::unique_ptr<KvDbEntity> entity, KvDbObjectId id, bool isEntity) {
  auto* curve = KvDbCurve::cast(entity.get());
  if (!curve) return;
  Source source;
  KvDbExtents box;
  if (curve->getGeomExtents(box) == Kvad::eOk) {
    source.low = {INFINITY, INFINITY};
    source.high = {-INFINITY, -INFINITY};
    const KvGePoint3d ends[2] = {box.minPoint(), box.maxPoint()};
    for (int i = 0; i < 8; ++i) {
      const KvGePoint2d at = flat({ends[i & 1].x, ends[i >> 1 & 1].y, ends[i >> 2].z});
      source.low = {std::min(source.low.x, at.x), std::min(source.low.y, at.y)};
      source.high = {std::max(source.high.x, at.x), std::max(source.high.y, at.y)};
    }
  } else if (KvDbEndlessLine::cast(curve)) {
    source.low = {-INFINITY, -INFINITY};
    source.high = {INFINITY, INFINITY};
  } else {
    return;
  }
  entity.release();
  source.curve.reset(curve);
  source.id = id;
  source.isEntity = isEntity;
  sources_.push_back(std::move(source));
}

void Arrangement::gather(const KvDbEntity& entity, KvDbObjectId id, bool isEntity, int depth) {
  const bool isTaken =
      KvDbPolyline::cast(&entity) || KvDbBlockReference::cast(&entity) || KvDbRegion::cast(&entity);
  if (!isTaken) {
    if (KvDbCurve::cast(&entity)) addCurve(kvdbCopyOf(entity), id, isEntity);
    return;
  }
  // Segment by segment, so that a polyline that crosses itself is cut there too.
  KvDbVoidPtrArray parts;
  if (depth >= kDeepestBlock || sources_.size() > kMostCurves) return;
  if (entity.explode(parts) != Kvad::eOk) {
    if (KvDbCurve::cast(&entity)) addCurve(kvdbCopyOf(entity), id, isEntity);
    return;
  }
  for (void* pointer : parts) {
    const std::unique_ptr<KvDbEntity> part(static_cast<KvDbEntity*>(pointer));
    gather(*part, id, false, depth + 1);
  }
}

void Arrangement::findCuts() {
  std::vector<std::size_t> order(sources_.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return sources_[a].low.x < sources_[b].low.x; });
  const KvGePlane plane(KvGePoint3d::kOrigin, userNormal());
  const double t = tolerance_;
  for (std::size_t i = 0; i < order.size(); ++i)
    for (std::size_t k = i + 1; k < order.size(); ++k) {
      Source &a = sources_[order[i]], &b = sources_[order[k]];
      if (b.low.x > a.high.x + t) break;
      if (b.low.y > a.high.y + t || a.low.y > b.high.y + t) continue;
      a.curve->intersectWith(b.curve.get(), KvDb::kOnBothOperands, plane, a.cuts);
      b.curve->intersectWith(a.curve.get(), KvDb::kOnBothOperands, plane, b.cuts);
    }
}

std::size_t Arrangement::nodeAt(const KvGePoint2d& point) {
  const double cell = 4 * tolerance_;
  const long long x = std::llround(point.x / cell), y = std::llround(point.y / cell);
  for (long long dx = -1; dx <= 1; ++dx)
    for (long long dy = -1; dy <= 1; ++dy) {
      const auto [first, last] = cells_.equal_range({x + dx, y + dy});
      for (auto at = first; at != last; ++at)
        if (nodes_[at->second].distanceTo(point) <= tolerance_) return at->second;
    }
  nodes_.push_back(point);
  cells_.emplace(std::pair(x, y), nodes_.size() - 1);
  return nodes_.size() - 1;
}

void Arrangement::addEdge(std::shared_ptr<const KvDbCurve> curve, std::size_t source, bool isWhole) {
  KvGePoint3d start, end;
  double last = 0;
  Edge edge;
  if (curve->getStartPoint(start) != Kvad::eOk || curve->getEndPoint(end) != Kvad::eOk ||
      curve->getEndParam(last) != Kvad::eOk || curve->getDistAtParam(last, edge.length) != Kvad::eOk ||
      !(edge.length > tolerance_))
    return;
  edge.nodes[0] = nodeAt(flat(start));
  edge.nodes[1] = curve->isClosed() ? edge.nodes[0] : nodeAt(flat(end));
  const int samples = KvDbLine::cast(curve.get()) ? 1 : kSamples;
  for (int i = 0; i <= samples; ++i) {
    KvGePoint3d at;
    const double along = edge.length * i / samples;
    if (curve->getPointAtDist(std::min(along, edge.length), at) != Kvad::eOk) at = i == 0 ? start : end;
    edge.points.push_back(flat(at));
  }
  // The same piece twice (one line over another) counts once.
  const KvGePoint2d middle = edge.points[edge.points.size() / 2];
  for (auto old = edges_.rbegin(); old != edges_.rend() && edges_.rend() - old < 256; ++old) {
    const bool isSame = (old->nodes[0] == edge.nodes[0] && old->nodes[1] == edge.nodes[1]) ||
                        (old->nodes[0] == edge.nodes[1] && old->nodes[1] == edge.nodes[0]);
    const bool areLines = samples == 1 && old->points.size() == 2;
    if (isSame && (areLines || (old->points.size() == edge.points.size() &&
                                old->points[old->points.size() / 2].distanceTo(middle) <= 10 * tolerance_)))
      return;
  }
  edge.curve = std::move(curve);
  edge.source = source;
  edge.isWhole = isWhole;
  edges_.push_back(std::move(edge));
}

void Arrangement::addPieces(std::size_t number) {
  const Source& source = sources_[number];
  KvDbVoidPtrArray found;
  if (!source.cuts.isEmpty()) source.curve->getSplitCurves(source.cuts, found);
  if (found.isEmpty()) return addEdge(source.curve, number, source.isEntity);
  for (void* piece : found)
    addEdge(std::shared_ptr<const KvDbCurve>(static_cast<KvDbCurve*>(piece)), number, false);
}

/// Leaves out what ends somewhere without going on.
void Arrangement::prune() {
  std::vector<int> degree(nodes_.size(), 0);
  std::vector<std::vector<std::size_t>> at(nodes_.size());
  for (std::size_t i = 0; i < edges_.size(); ++i)
    for (const std::size_t node : edges_[i].nodes) {
      ++degree[node];
      at[node].push_back(i);
    }
  std::vector<std::size_t> loose;
  for (std::size_t node = 0; node < nodes_.size(); ++node)
    if (degree[node] == 1) loose.push_back(node);
  while (!loose.empty()) {
    const std::size_t node = loose.back();
    loose.pop_back();
    for (const std::size_t edge : at[node]) {
      if (!edges_[edge].isUsed) continue;
      edges_[edge].isUsed = false;
      for (const std::size_t end : edges_[edge].nodes)
        if (--degree[end] == 1) loose.push_back(end);
    }
  }
}

/// Round each node the half-edges that leave it, by their bearing a little way off: that tells curves with
/// one tangent apart.
void Arrangement::connect() {
  constexpr double kWay = 0.01;
  std::vector<std::vector<std::size_t>> leaving(nodes_.size());
  std::vector<double> reach(nodes_.size(), INFINITY);
  for (std::size_t i = 0; i < edges_.size(); ++i) {
    if (!edges_[i].isUsed) continue;
    for (std::size_t end = 0; end < 2; ++end) {
      leaving[edges_[i].nodes[end]].push_back(2 * i + end);
      reach[edges_[i].nodes[end]] = std::min(reach[edges_[i].nodes[end]], edges_[i].length * kWay);
    }
  }
  next_.assign(2 * edges_.size(), 0);
  for (std::size_t node = 0; node < nodes_.size(); ++node) {
    std::vector<std::pair<double, std::size_t>> round;
    for (const std::size_t half : leaving[node]) {
      const Edge& edge = edges_[half / 2];
      KvGePoint3d at;
      const double along = half % 2 == 0 ? reach[node] : edge.length - reach[node];
      if (edge.curve->getPointAtDist(along, at) != Kvad::eOk) continue;
      round.emplace_back((flat(at) - nodes_[node]).angle(), half);
    }
    std::sort(round.begin(), round.end());
    // What arrives along one goes on along its neighbour to the right: the area stays on the left.
    for (std::size_t i = 0; i < round.size(); ++i)
      next_[round[i].second ^ 1] = round[(i + round.size() - 1) % round.size()].second;
  }
}

void Arrangement::followWays() {
  std::vector<bool> isSeen(next_.size(), false);
  for (std::size_t i = 0; i < edges_.size(); ++i)
    for (std::size_t first = 2 * i; first < 2 * i + 2; ++first) {
      if (!edges_[i].isUsed || isSeen[first]) continue;
      Way way;
      for (std::size_t half = first; !isSeen[half]; half = next_[half]) {
        isSeen[half] = true;
        way.halves.push_back(half);
        const auto& points = edges_[half / 2].points;
        if (half % 2 == 0)
          way.outline.insert(way.outline.end(), points.begin(), points.end() - 1);
        else
          way.outline.insert(way.outline.end(), points.rbegin(), points.rend() - 1);
      }
      const KvGePoint2d base = way.outline.front();
      for (std::size_t k = 0; k < way.outline.size(); ++k) {
        const KvGeVector2d a = way.outline[k] - base, b = way.outline[(k + 1) % way.outline.size()] - base;
        way.area += (a.x * b.y - b.x * a.y) / 2;
      }
      ways_.push_back(std::move(way));
    }
}

bool Arrangement::build() {
  const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId());
  if (!space) return true;
  for (KvDbObjectId id : space->entities()) {
    const auto* entity = look<KvDbEntity>(id);
    const auto* layer = entity ? look<KvDbLayerTableRecord>(entity->layerId()) : nullptr;
    if (!entity || (layer && (layer->isOff() || layer->isFrozen())) ||
        entity->visibility() == KvDb::kInvisible)
      continue;
    gather(*entity, id, true, 0);
    if (sources_.size() > kMostCurves) return false;
  }
  double size = 1;
  for (const Source& source : sources_)
    for (const double far : {source.low.x, source.low.y, source.high.x, source.high.y})
      if (std::isfinite(far)) size = std::max(size, std::fabs(far));
  tolerance_ = std::max(kMeeting * size, 1e-7);
  findCuts();
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    addPieces(i);
    if (edges_.size() > kMostPieces) return false;
  }
  prune();
  connect();
  followWays();
  return true;
}

EnclosureLoop Arrangement::loopOf(const std::vector<std::size_t>& way, double area) const {
  EnclosureLoop loop;
  loop.area = std::fabs(area);
  for (const std::size_t half : way) {
    const Edge& edge = edges_[half / 2];
    loop.pieces.push_back({edge.curve, half % 2 == 1, sources_[edge.source].id, edge.isWhole});
  }
  return loop;
}

std::optional<Enclosure> Arrangement::around(const KvGePoint2d& point) const {
  const Way* outer = nullptr;
  for (const Way& way : ways_)
    if (way.area > 0 && (!outer || way.area < outer->area) && isInside(point, way.outline)) outer = &way;
  if (!outer) return std::nullopt;
  // The outermost ways of what lies in it run the other way round, on edges of their own.
  std::vector<std::size_t> own;
  for (const std::size_t half : outer->halves) own.push_back(edges_[half / 2].nodes[0]);
  std::vector<const Way*> islands;
  for (const Way& way : ways_) {
    if (!(way.area < 0) || -way.area >= outer->area || !isInside(way.outline.front(), outer->outline))
      continue;
    const bool touches = std::any_of(way.halves.begin(), way.halves.end(), [&](std::size_t half) {
      const auto& nodes = edges_[half / 2].nodes;
      return std::find(own.begin(), own.end(), nodes[0]) != own.end() ||
             std::find(own.begin(), own.end(), nodes[1]) != own.end();
    });
    if (!touches) islands.push_back(&way);
  }
  Enclosure result;
  result.outer = loopOf(outer->halves, outer->area);
  for (const Way* island : islands) {
    const bool isDeeper = std::any_of(islands.begin(), islands.end(), [&](const Way* other) {
      return other != island && isInside(island->outline.front(), other->outline);
    });
    if (!isDeeper) result.islands.push_back(loopOf(island->halves, island->area));
  }
  return result;
}

}  // namespace

std::optional<Enclosure> enclosureAt(const KvGePoint3d& user, CString& reason) {
  Arrangement arrangement;
  if (!arrangement.build()) {
    reason = L"There are too many curves: layers that are off would be left out.";
    return std::nullopt;
  }
  auto found = arrangement.around(kvge::planar(user));
  if (!found) reason = L"Nothing encloses the point.";
  return found;
}

}  // namespace kvcmd
