// EXTEND, BREAK, EXPLODE.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/trimming.h"
#include "host/database/block.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/geometry/line.h"

namespace kvcmd {

void extendPolyline(KvDbPolyline& polyline, const KvGePoint3d& to, bool atEnd) {
  const int last = polyline.numVerts() - 1, segment = atEnd ? last - 1 : 0;
  const KvGePoint3d local = KvGeMatrix3d::worldToPlane(polyline.normal()) * to;
  double bulge = 0;
  polyline.getBulgeAt(segment, bulge);
  if (bulge != 0) {
    KvGePoint2d from, end;
    KvGeCircArc3d arc;
    polyline.getArcSegAt(segment, arc);
    polyline.getPointAt(segment, from);
    polyline.getPointAt(segment + 1, end);
    const KvGePoint3d middle = KvGeMatrix3d::worldToPlane(polyline.normal()) * arc.center();
    const KvGePoint2d center(middle.x, middle.y), target(local.x, local.y);
    const double a = ((atEnd ? from : target) - center).angle(),
                 b = ((atEnd ? target : end) - center).angle();
    const double sweep = kvge::normalizedAngle(bulge > 0 ? b - a : a - b);
    polyline.setBulgeAt(segment, (bulge > 0 ? 1 : -1) * std::tan(sweep / 4));
  }
  polyline.setPointAt(atEnd ? last : 0, {local.x, local.y});
}

namespace {

/// The bearing of a world point in an arc's plane.
double angleOn(const KvDbArc& arc, const KvGePoint3d& world) {
  const KvGeVector3d out = KvGeMatrix3d::worldToPlane(arc.normal()) * (world - arc.center());
  return KvGeVector2d(out.x, out.y).angle();
}

/// Where a line or an arc, drawn out beyond one end, meets an edge first; none when it doesn't.
std::optional<KvGePoint3d> firstBeyond(const KvDbCurve& curve, bool atEnd, const KvDbObjectIdArray& edges,
                                       KvDbObjectId self) {
  std::optional<KvGePoint3d> best;
  double least = INFINITY;
  constexpr double kBeyond = 1e-9;
  const KvGePlane plane(KvGePoint3d::kOrigin, userNormal());
  const auto* line = KvDbLine::cast(&curve);
  const auto* arc = KvDbArc::cast(&curve);
  for (KvDbObjectId id : edges) {
    const auto* edge = look<KvDbEntity>(id);
    if (!edge || id == self) continue;
    KvGePoint3dArray points;
    curve.intersectWith(edge, edgeType(true), plane, points);
    for (const KvGePoint3d& point : points) {
      double beyond = -1;
      if (line) {
        const KvGePoint3d& end = atEnd ? line->endPoint() : line->startPoint();
        const KvGePoint3d& other = atEnd ? line->startPoint() : line->endPoint();
        beyond = (point - end).dotProduct((end - other).normal());
      } else if (arc) {
        const double at = angleOn(*arc, point);
        beyond = kvge::normalizedAngle(atEnd ? at - arc->endAngle() : arc->startAngle() - at);
        // Points on the arc itself lie more than the open part away.
        if (beyond > kvge::kTwoPi - arc->totalAngle() - kBeyond) beyond = -1;
      }
      if (beyond > kBeyond && beyond < least) {
        least = beyond;
        best = point;
      }
    }
  }
  return best;
}

/// Draws the end that is nearer to a point (world) out to the first edge.
bool extendAt(KvDbObjectId id, const KvGePoint3d& picked, const KvDbObjectIdArray& edges) {
  const auto* curve = look<KvDbCurve>(id);
  KvGePoint3d start, end, on;
  if (!curve || curve->isClosed() || curve->getStartPoint(start) != Kvad::eOk ||
      curve->getEndPoint(end) != Kvad::eOk || curve->getClosestPointTo(picked, userNormal(), on) != Kvad::eOk)
    return false;
  const bool atEnd = on.distanceTo(end) < on.distanceTo(start);
  if (const auto* polyline = KvDbPolyline::cast(curve)) {
    const int segment = atEnd ? polyline->numVerts() - 2 : 0;
    KvGeCircArc3d arc;
    KvGeLineSeg3d line;
    std::unique_ptr<KvDbCurve> piece;
    bool pieceAtEnd = atEnd;
    if (polyline->getLineSegAt(segment, line) == Kvad::eOk) {
      piece = kvdbCurveOf(line);
    } else if (polyline->getArcSegAt(segment, arc) == Kvad::eOk) {
      piece = kvdbCurveOf(arc);
      if (const auto* round = KvDbArc::cast(piece.get()))
        pieceAtEnd = round->endPoint().distanceTo(atEnd ? end : start) <
                     round->startPoint().distanceTo(atEnd ? end : start);
    }
    const auto to = piece ? firstBeyond(*piece, pieceAtEnd, edges, id) : std::nullopt;
    if (to) change<KvDbPolyline>(id, [&](KvDbPolyline& made) { extendPolyline(made, *to, atEnd); });
    return to.has_value();
  }
  const auto to = firstBeyond(*curve, atEnd, edges, id);
  if (!to) return false;
  change<KvDbCurve>(id, [&](KvDbCurve& made) {
    if (auto* line = KvDbLine::cast(&made)) atEnd ? line->setEndPoint(*to) : line->setStartPoint(*to);
    if (auto* arc = KvDbArc::cast(&made))
      atEnd ? arc->setEndAngle(angleOn(*arc, *to)) : arc->setStartAngle(angleOn(*arc, *to));
  });
  return true;
}

void runExtend() {
  if (!drawing()) return;
  const auto edges = askEdges(L"Select boundary edges ...");
  if (edges)
    cutRepeatedly(L"extend", L"No edge in this direction, or the object can't be extended.",
                  [&](KvDbObjectId id, const KvGePoint3d& at) { return extendAt(id, at, *edges); });
}

/// The parameter of the point of a curve nearest to a user point.
std::optional<double> paramNear(const KvDbCurve& curve, const KvGePoint3d& user) {
  KvGePoint3d on;
  double param = 0;
  if (curve.getClosestPointTo(toWorld(user), userNormal(), on) != Kvad::eOk ||
      curve.getParamAtPoint(on, param) != Kvad::eOk)
    return std::nullopt;
  return param;
}

void breakCurve(KvDbObjectId id, const KvGePoint3d& first, const KvGePoint3d& second) {
  const auto* curve = look<KvDbCurve>(id);
  const auto from = curve ? paramNear(*curve, first) : std::nullopt;
  const auto to = curve ? paramNear(*curve, second) : std::nullopt;
  if (!from || !to) return fail(L"The object can't be broken.");
  constexpr double kSame = 1e-9;
  const bool atOnePoint = std::fabs(*from - *to) < kSame;
  if (atOnePoint && curve->isClosed()) return fail(L"A closed curve can't be broken at one point.");
  KvArray<double> cuts;
  cuts.append(std::min(*from, *to));
  if (!atOnePoint) cuts.append(std::max(*from, *to));
  KvDbVoidPtrArray found;
  if (curve->getSplitCurves(cuts, found) != Kvad::eOk) return fail(L"The object can't be broken there.");
  std::vector<std::unique_ptr<KvDbCurve>> pieces;
  for (void* piece : found) pieces.emplace_back(static_cast<KvDbCurve*>(piece));
  if (!atOnePoint) {
    // A closed curve loses what runs on from the first point to the second.
    const bool losesMiddle = !curve->isClosed() || *from < *to;
    KvGePoint3d middle;
    curve->getPointAtParam((*from + *to) / 2, middle);
    std::erase_if(pieces, [&](const auto& piece) { return liesOn(*piece, middle) == losesMiddle; });
  }
  replaceByPieces(id, pieces);
}

void runBreak() {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d first, second;
  if (Ask(L"\nSelect object: ").entity(id, &first) != Got::Value) return;
  if (isLocked(id)) return fail(L"The object is on a locked layer.");
  Ask ask(L"\nSpecify second break point or [First point]: ");
  Got got = ask.keywords(L"First").base(first).point(second);
  if (got == Got::Keyword) {
    if (Ask(L"\nSpecify first break point: ").point(first) != Got::Value) return;
    got = Ask(L"\nSpecify second break point: ").base(first).point(second);
  }
  if (got == Got::Value) breakCurve(id, first, second);
}

bool explodeOne(KvDbObjectId id) {
  const auto* entity = look<KvDbEntity>(id);
  KvDbVoidPtrArray parts;
  if (!entity || entity->explode(parts) != Kvad::eOk || parts.isEmpty()) return false;
  KvDbBlockTableRecord* space = nullptr;
  const bool isOpen = kvdbOpenObject(space, entity->ownerId(), KvDb::kForWrite) == Kvad::eOk;
  for (void* pointer : parts) {
    std::unique_ptr<KvDbEntity> part(static_cast<KvDbEntity*>(pointer));
    if (!isOpen) continue;
    if (part->layerId().isNull()) part->setPropertiesFrom(entity);
    KvDbObjectId made;
    KvDbEntity* raw = part.get();
    if (space->appendKvDbEntity(made, raw) == Kvad::eOk) part.release()->close();
  }
  if (isOpen) space->close();
  if (isOpen) change<KvDbEntity>(id, [](KvDbEntity& whole) { whole.erase(); });
  return isOpen;
}

void runExplode() {
  if (!drawing()) return;
  int refused = 0;
  for (KvDbObjectId id : select())
    if (!explodeOne(id)) ++refused;
  if (refused > 0) say(countOf(refused, L"could not be exploded"));
}

constexpr KvCommandRow kRows[] = {
    {L"BREAK", L"BR", KVRX_CMD_MODAL, runBreak, L"Takes a part out of a curve, or parts it at a point.",
     L"Select object: (the pick is the first point)\nSpecify second break point or [First point]: (@ parts "
     L"it)\nSpecify first break point: (after First point)\nSpecify second break point:"},
    {L"EXPLODE", L"X", KVRX_CMD_USEPICKSET, runExplode,
     L"Takes blocks, polylines, dimensions and texts apart.", L"Select objects:"},
    {L"EXTEND", L"EX", KVRX_CMD_MODAL, runExtend, L"Draws lines and arcs out to other objects.",
     L"Select boundary edges: (empty: every object is one)\nSelect object to extend or "
     L"[Fence/Crossing/Edge/eRase/Undo]: (near the end; empty: ends)\nEnter an implied edge extension mode "
     L"[Extend/No extend] <No extend>: (after Edge)"},
};

}  // namespace

std::span<const KvCommandRow> extendRows() {
  return kRows;
}

}  // namespace kvcmd
