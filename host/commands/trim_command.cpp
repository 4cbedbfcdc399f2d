// TRIM: cuts away the part of a curve that was picked, up to the nearest cutting edges.
#include <algorithm>
#include <cmath>

#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/commands/internal/trimming.h"
#include "host/database/block.h"
#include "host/database/names.h"
#include "host/entities/curve.h"
#include "host/geometry/line.h"

namespace kvcmd {

std::vector<double> crossingParams(const KvDbCurve& curve, const KvDbObjectIdArray& edges,
                                   KvDb::Intersect type) {
  std::vector<double> params;
  const KvGePlane plane(KvGePoint3d::kOrigin, userToWorld().column(2));
  for (KvDbObjectId id : edges) {
    const auto* edge = look<KvDbEntity>(id);
    if (!edge || id == curve.objectId()) continue;
    KvGePoint3dArray points;
    curve.intersectWith(edge, type, plane, points);
    for (const KvGePoint3d& point : points) {
      KvGePoint3d on;
      double param = 0;
      const bool isOn = curve.getClosestPointTo(point, on, type == KvDb::kExtendThis) == Kvad::eOk;
      if (isOn && curve.getParamAtPoint(on, param) == Kvad::eOk) params.push_back(param);
    }
  }
  std::sort(params.begin(), params.end());
  constexpr double kSame = 1e-9;
  params.erase(std::unique(params.begin(), params.end(), [](double a, double b) { return b - a < kSame; }),
               params.end());
  return params;
}

namespace {

/// The parameters between which the picked part lies; a missing one is the curve's end. None when nothing
/// cuts.
struct Part {
  std::optional<double> from, to;
};

std::optional<Part> partAround(double picked, const std::vector<double>& cuts, const KvDbCurve& curve) {
  Part part;
  for (double cut : cuts) {
    if (cut <= picked) part.from = cut;
    if (cut > picked && !part.to) part.to = cut;
  }
  if (curve.isClosed()) {
    constexpr std::size_t kEnough = 2;
    if (cuts.size() < kEnough) return std::nullopt;
    // Around the seam: from the last cut to the first.
    if (!part.from) part.from = cuts.back();
    if (!part.to) part.to = cuts.front();
    return part;
  }
  // A cut at the very end takes nothing away.
  double start = 0, end = 0;
  constexpr double kSame = 1e-9;
  if (part.from && curve.getStartParam(start) == Kvad::eOk && *part.from - start < kSame) part.from.reset();
  if (part.to && curve.getEndParam(end) == Kvad::eOk && end - *part.to < kSame) part.to.reset();
  if (!part.from && !part.to) return std::nullopt;
  return part;
}

/// A point inside the part, so that the piece that goes can be told from those that stay.
KvGePoint3d insidePart(const KvDbCurve& curve, double picked) {
  KvGePoint3d point;
  curve.getPointAtParam(picked, point);
  return point;
}

}  // namespace

bool liesOn(const KvDbCurve& piece, const KvGePoint3d& point) {
  constexpr double kOn = 1e-6;
  KvGePoint3d nearest;
  return piece.getClosestPointTo(point, nearest) == Kvad::eOk && nearest.distanceTo(point) < kOn;
}

void replaceByPieces(KvDbObjectId id, std::vector<std::unique_ptr<KvDbCurve>>& pieces) {
  bool isTaken = false;
  for (auto& piece : pieces) {
    if (!isTaken && piece->isA() == id.objectClass()) {
      change<KvDbEntity>(id,
                         [&](KvDbEntity& entity) { isTaken = entity.copyFrom(piece.get()) == Kvad::eOk; });
      if (isTaken) continue;
    }
    addBeside(id, std::move(piece));
  }
  if (!isTaken) change<KvDbEntity>(id, [](KvDbEntity& entity) { entity.erase(); });
}

KvDbObjectId addBeside(KvDbObjectId original, std::unique_ptr<KvDbEntity> entity) {
  const auto* like = look<KvDbEntity>(original);
  KvDbBlockTableRecord* space = nullptr;
  if (!like || kvdbOpenObject(space, like->ownerId(), KvDb::kForWrite) != Kvad::eOk) return {};
  entity->setPropertiesFrom(like);
  KvDbEntity* raw = entity.release();
  KvDbObjectId id;
  if (space->appendKvDbEntity(id, raw) == Kvad::eOk)
    raw->close();
  else
    delete raw;
  space->close();
  return id;
}

bool trimAt(KvDbObjectId id, const KvGePoint3d& picked, const KvDbObjectIdArray& edges) {
  const auto* curve = look<KvDbCurve>(id);
  KvGePoint3d on;
  double param = 0;
  if (!curve || curve->getClosestPointTo(picked, userToWorld().column(2), on) != Kvad::eOk ||
      curve->getParamAtPoint(on, param) != Kvad::eOk)
    return false;
  const auto part = partAround(param, crossingParams(*curve, edges, edgeType(false)), *curve);
  if (!part) return false;
  KvArray<double> cuts;
  for (const auto& cut : {part->from, part->to})
    if (cut) cuts.append(*cut);
  if (cuts.length() == 2 && cuts[0] > cuts[1]) std::swap(cuts[0], cuts[1]);
  KvDbVoidPtrArray found;
  if (curve->getSplitCurves(cuts, found) != Kvad::eOk) return false;
  const KvGePoint3d inside = insidePart(*curve, param);
  std::vector<std::unique_ptr<KvDbCurve>> stay;
  bool isRemoved = false;
  for (void* pointer : found) {
    std::unique_ptr<KvDbCurve> piece(static_cast<KvDbCurve*>(pointer));
    if (!isRemoved && liesOn(*piece, inside))
      isRemoved = true;
    else
      stay.push_back(std::move(piece));
  }
  if (!isRemoved) return false;
  replaceByPieces(id, stay);
  return true;
}

namespace {

void runTrim() {
  if (!drawing()) return;
  const auto edges = askEdges(L"Select cutting edges ...");
  if (edges)
    cutRepeatedly(L"trim", L"Object does not intersect an edge.",
                  [&](KvDbObjectId id, const KvGePoint3d& at) { return trimAt(id, at, *edges); });
}

constexpr KvCommandRow kRows[] = {
    {L"TRIM", L"TR", KVRX_CMD_MODAL, runTrim, L"Cuts parts of curves away at other objects.",
     L"Select cutting edges: (empty: every object is one)\nSelect object to trim or "
     L"[Fence/Crossing/Edge/eRase/Undo]: (on the part that goes; empty: ends)\nEnter an implied edge "
     L"extension "
     L"mode [Extend/No extend] <No extend>: (after Edge)"},
};

}  // namespace

std::span<const KvCommandRow> trimRows() {
  return kRows;
}

}  // namespace kvcmd
