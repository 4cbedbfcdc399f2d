// OFFSET, JOIN, STRETCH.
#include "host/commands/internal/flatcurve.h"
#include "host/commands/internal/offsetting.h"
#include "host/commands/internal/polychain.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/trimming.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/mtext.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"
#include "host/geometry/polyline.h"

namespace kvcmd {
namespace {

using Vertex = PolyChainVertex;

/// A segment of a polyline moved sideways, to the left when positive; its bulge keeps its sign.
struct Moved {
  KvGePoint2d from, to;
  double bulge = 0;
  FlatBase base;
};

std::optional<Moved> moveSegment(const Vertex& a, KvGePoint2d b, double distance) {
  Moved moved;
  moved.bulge = a.bulge;
  if (a.bulge == 0) {
    const KvGeVector2d direction = (b - a.point).normal(), aside = direction.perpVector() * distance;
    moved.from = a.point + aside;
    moved.to = b + aside;
    moved.base = {false, moved.from, direction, 0};
    return moved;
  }
  const kvge::BulgeArc arc = kvge::arcOfBulge(a.point, b, a.bulge);
  // To the left of a counter-clockwise arc lies its centre.
  const double radius = arc.radius - (a.bulge > 0 ? distance : -distance);
  if (!(radius > 0)) return std::nullopt;
  moved.from = arc.center + (a.point - arc.center).normal() * radius;
  moved.to = arc.center + (b - arc.center).normal() * radius;
  moved.base = {true, arc.center, {}, radius};
  return moved;
}

/// Where two neighbours meet, nearest to their old corner; none when they miss one another.
std::optional<KvGePoint2d> cornerOf(const Moved& a, const Moved& b, KvGePoint2d old) {
  constexpr double kTouch = 1e-9;
  if (a.to.distanceTo(b.from) < kTouch) return b.from;
  std::optional<KvGePoint2d> best;
  for (KvGePoint2d point : meetings(a.base, b.base))
    if (!best || point.distanceTo(old) < best->distanceTo(old)) best = point;
  return best;
}

/// The bulge of a moved segment between its new ends; none when it would run backwards.
std::optional<double> bulgeBetween(const Moved& segment, KvGePoint2d from, KvGePoint2d to) {
  if (!segment.base.isRound) {
    if ((to - from).dotProduct(segment.base.direction) <= 0) return std::nullopt;
    return 0;
  }
  const double a = (from - segment.base.point).angle(), b = (to - segment.base.point).angle();
  const double sweep = kvge::normalizedAngle(segment.bulge > 0 ? b - a : a - b);
  const double old = 4 * std::atan(std::fabs(segment.bulge));
  if (sweep > old + kvge::kPi) return std::nullopt;
  return (segment.bulge > 0 ? 1 : -1) * std::tan(sweep / 4);
}

/// A polyline beside another one; none when a segment would vanish or turn over.
std::optional<std::vector<Vertex>> offsetVertices(std::vector<Vertex> old, bool isClosed, double distance) {
  std::vector<Moved> moved;
  const std::size_t count = old.size(), segments = isClosed ? count : count - 1;
  for (std::size_t i = 0; i < segments; ++i) {
    const auto one = moveSegment(old[i], old[(i + 1) % count].point, distance);
    if (!one) return std::nullopt;
    moved.push_back(*one);
  }
  std::vector<Vertex> made(count);
  for (std::size_t i = 0; i < count; ++i) {
    made[i] = old[i];
    if (!isClosed && i == 0) {
      made[i].point = moved.front().from;
    } else if (!isClosed && i == count - 1) {
      made[i].point = moved.back().to;
    } else {
      const auto corner = cornerOf(moved[(i + segments - 1) % segments], moved[i], old[i].point);
      if (!corner) return std::nullopt;
      made[i].point = *corner;
    }
  }
  for (std::size_t i = 0; i < segments; ++i) {
    const auto bulge = bulgeBetween(moved[i], made[i].point, made[(i + 1) % count].point);
    if (!bulge) return std::nullopt;
    made[i].bulge = *bulge;
  }
  return made;
}

/// On which side of a curve a world point lies, seen along the user system's Z axis: 1 for the left, -1.
double sideOf(const KvDbCurve& curve, const KvGePoint3d& world) {
  KvGePoint3d on;
  double param = 0;
  KvGeVector3d tangent;
  if (curve.getClosestPointTo(world, userNormal(), on) != Kvad::eOk ||
      curve.getParamAtPoint(on, param) != Kvad::eOk || curve.getFirstDeriv(param, tangent) != Kvad::eOk)
    return 0;
  return userNormal().dotProduct(tangent.crossProduct(world - on)) < 0 ? -1 : 1;
}

/// A copy of a curve at a distance (above 0) on the side of a point (world); null when there is none.
std::unique_ptr<KvDbEntity> offsetOf(const KvDbCurve& curve, double distance, const KvGePoint3d& side) {
  std::unique_ptr<KvDbEntity> copy = kvdbCopyOf(curve);
  if (auto* circle = KvDbCircle::cast(copy.get())) {
    const bool isOutside = side.distanceTo(circle->center()) > circle->radius();
    if (circle->setRadius(circle->radius() + (isOutside ? distance : -distance)) != Kvad::eOk) return nullptr;
    return copy;
  }
  if (auto* arc = KvDbArc::cast(copy.get())) {
    const bool isOutside = side.distanceTo(arc->center()) > arc->radius();
    if (arc->setRadius(arc->radius() + (isOutside ? distance : -distance)) != Kvad::eOk) return nullptr;
    return copy;
  }
  const double sign = sideOf(curve, side);
  if (auto* polyline = KvDbPolyline::cast(copy.get())) {
    if (polyline->numVerts() < 2 || sign == 0) return nullptr;
    const double leftwards = polyline->normal().dotProduct(userNormal()) < 0 ? -sign : sign;
    const auto made = offsetVertices(verticesOf(*polyline), polyline->isClosed(), leftwards * distance);
    if (!made) return nullptr;
    setVertices(*polyline, *made);
    return copy;
  }
  if (KvDbEllipse::cast(copy.get()) || KvDbSpline::cast(copy.get())) {
    constexpr double kDeviation = 1e-6;  // in parts of the curve's size
    KvDbExtents box;
    if (sign == 0 || curve.getGeomExtents(box) != Kvad::eOk) return nullptr;
    double tolerance = box.minPoint().distanceTo(box.maxPoint()) * kDeviation;
    auto spline = offsetAsSpline(curve, sign * distance, tolerance);
    if (!spline) return nullptr;
    CString told;
    told.Format(L"Drawn as a spline that deviates by %.1e at most.", tolerance);
    say(told);
    spline->setPropertiesFrom(&curve);
    return spline;
  }
  KvGeVector3d direction;
  if (const auto* line = KvDbLine::cast(copy.get())) direction = line->endPoint() - line->startPoint();
  if (const auto* line = KvDbEndlessLine::cast(copy.get())) direction = line->unitDir();
  const KvGeVector3d aside = userNormal().crossProduct(direction).normal() * (sign * distance);
  if (aside.length() == 0 || copy->transformBy(KvGeMatrix3d::translation(aside)) != Kvad::eOk) return nullptr;
  return copy;
}

void runOffset() {
  if (!drawing()) return;
  double distance = std::fabs(variable(L"OFFSETDIST", -1.0));
  bool isThrough = variable(L"OFFSETDIST", -1.0) < 0, erases = false, onCurrentLayer = false;
  for (;;) {
    Ask ask(L"\nSpecify offset distance or [Through/Erase/Layer] <" +
            (isThrough ? CString(L"Through") : numberText(distance)) + L">: ");
    const Got got = ask.keywords(L"Through Erase Layer").flags(KVED_NOZERO | KVED_NONEG).distance(distance);
    if (got == Got::Cancelled) return;
    if (got == Got::Value) isThrough = false;
    if (got == Got::Keyword && ask.keyword == L"Erase") {
      const auto answer = askYes(L"\nErase source object after offsetting?", erases);
      if (!answer) return;
      erases = *answer;
      continue;
    }
    if (got == Got::Keyword && ask.keyword == L"Layer") {
      Ask layer(L"\nEnter layer option for offset objects [Current/Source] <Source>: ");
      if (layer.keywords(L"Current Source").word() == Got::Keyword)
        onCurrentLayer = layer.keyword == L"Current";
      continue;
    }
    if (got == Got::Keyword) isThrough = true;
    break;
  }
  setVariable(L"OFFSETDIST", isThrough ? -1.0 : distance);
  KvDbObjectIdArray made;
  const auto takeBack = [&] {
    if (made.isEmpty()) return say(L"Nothing to undo.");
    change<KvDbEntity>(made[made.length() - 1], [](KvDbEntity& entity) { entity.erase(); });
    made.removeAt(made.length() - 1);
  };
  for (;;) {
    KvDbObjectId id;
    Ask ask(L"\nSelect object to offset or [Exit/Undo] <Exit>: ");
    const auto isCurve = [](KvDbObjectId one) { return look<KvDbCurve>(one) != nullptr; };
    const Got picked = ask.keywords(L"Exit Undo").prefer(isCurve).entity(id);
    if (picked == Got::Keyword && ask.keyword == L"Undo") {
      takeBack();
      continue;
    }
    if (picked != Got::Value) return;
    const auto* curve = look<KvDbCurve>(id);
    if (!curve || isLocked(id)) {
      say(curve ? L"The object is on a locked layer." : L"Curves can be offset only.");
      continue;
    }
    // One copy, or with Multiple one beside the other until an empty answer.
    bool isMultiple = false;
    std::vector<KvDbObjectId> row{id};
    for (;;) {
      KvGePoint3d side;
      const CString what = isThrough ? L"\nSpecify through point" : L"\nSpecify point on side to offset";
      Ask where(what +
                (isMultiple ? L" or [Exit/Undo] <next object>: " : L" or [Exit/Multiple/Undo] <Exit>: "));
      const Got got = where.keywords(isMultiple ? L"Exit Undo" : L"Exit Multiple Undo").point(side);
      if (got == Got::Keyword && where.keyword == L"Multiple") {
        isMultiple = true;
        continue;
      }
      if (got == Got::Keyword && where.keyword == L"Undo") {
        takeBack();
        if (row.size() > 1) row.pop_back();
        continue;
      }
      if (got == Got::Nothing && isMultiple) break;
      if (got != Got::Value) return;
      const KvGePoint3d world = toWorld(side);
      const auto* from = look<KvDbCurve>(row.back());
      KvGePoint3d on;
      double away = distance;
      if (isThrough && from && from->getClosestPointTo(world, userNormal(), on, true) == Kvad::eOk)
        away = flatDistance(toUser(on), side);
      auto copy = from && away > 0 ? offsetOf(*from, away, world) : nullptr;
      if (!copy) {
        say(L"The object can't be offset there.");
        if (!isMultiple) break;
        continue;
      }
      const KvDbObjectId next =
          onCurrentLayer ? add(std::move(copy)) : addBeside(row.back(), std::move(copy));
      made.append(next);
      if (erases) change<KvDbEntity>(row.back(), [](KvDbEntity& entity) { entity.erase(); });
      if (!isMultiple) break;
      row.push_back(next);
    }
  }
}

/// Lines on one line become one from the farthest end to the farthest.
bool joinLines(KvDbObjectId source, const KvDbObjectIdArray& others, KvDbObjectIdArray& used) {
  const auto* first = look<KvDbLine>(source);
  constexpr double kOn = 1e-6;
  if (!first) return false;
  const KvGePoint3d base = first->startPoint();
  const KvGeVector3d direction = (first->endPoint() - base).normal();
  double low = 0, high = base.distanceTo(first->endPoint());
  for (KvDbObjectId id : others) {
    const auto* line = look<KvDbLine>(id);
    if (!line || id == source) continue;
    bool isOn = true;
    double from = INFINITY, to = -INFINITY;
    for (const KvGePoint3d& end : {line->startPoint(), line->endPoint()}) {
      const double along = (end - base).dotProduct(direction);
      isOn = isOn && (base + direction * along).distanceTo(end) < kOn;
      from = std::min(from, along);
      to = std::max(to, along);
    }
    if (!isOn) continue;
    low = std::min(low, from);
    high = std::max(high, to);
    used.append(id);
  }
  if (used.isEmpty()) return false;
  change<KvDbLine>(source, [&](KvDbLine& line) {
    line.setStartPoint(base + direction * low);
    line.setEndPoint(base + direction * high);
  });
  return true;
}

void runJoin() {
  if (!drawing()) return;
  KvDbObjectId source;
  if (Ask(L"\nSelect source object: ").entity(source) != Got::Value) return;
  if (isLocked(source)) return fail(L"The object is on a locked layer.");
  const KvDbObjectIdArray others = select(L"\nSelect objects to join to source: ");
  if (others.isEmpty()) return;
  KvDbObjectIdArray used;
  if (!joinLines(source, others, used)) {
    std::vector<Vertex> chain = chainOf(source);
    if (chain.size() < 2) return fail(L"An open line, arc or polyline expected.");
    for (bool grows = true; grows;) {
      grows = false;
      for (KvDbObjectId id : others) {
        if (id == source || used.contains(id)) continue;
        const std::vector<Vertex> more = chainOf(id);
        if (more.size() < 2 || !attach(chain, more)) continue;
        used.append(id);
        grows = true;
      }
    }
    if (used.isEmpty()) return fail(L"No object touches the source.");
    auto made = std::make_unique<KvDbPolyline>();
    const bool isClosed = chain.front().point.distanceTo(chain.back().point) < 1e-6;
    if (isClosed) chain.pop_back();
    setVertices(*made, chain);
    made->setClosed(isClosed);
    KvGePoint3d start;
    if (const auto* curve = look<KvDbCurve>(source); curve && curve->getStartPoint(start) == Kvad::eOk)
      made->setElevation(toUser(start).z);
    made->transformBy(userToWorld());
    if (look<KvDbPolyline>(source)) {
      std::vector<std::unique_ptr<KvDbCurve>> one;
      made->setPropertiesFrom(look<KvDbEntity>(source));
      one.push_back(std::move(made));
      replaceByPieces(source, one);
    } else {
      addBeside(source, std::move(made));
      used.append(source);
    }
  }
  erase(used);
  say(countOf(used.length(), L"joined"));
}

/// The areas of the crossings by which entities were selected; what lies in one of them moves.
class StretchArea {
 public:
  /// World coordinates.
  explicit StretchArea(const KvEdPickWindow* window) {
    if (!window) return;
    for (const KvGePoint3d& point : *window) corners_.push_back(kvge::planar(toUser(point)));
  }
  bool isEmpty() const { return corners_.empty(); }
  bool holds(const KvGePoint3d& world) const {
    const KvGePoint3d p = toUser(world);
    bool isInside = false;
    for (std::size_t i = 0, j = corners_.size() - 1; i < corners_.size(); j = i++) {
      const KvGePoint2d &a = corners_[i], &b = corners_[j];
      if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
        isInside = !isInside;
    }
    return isInside;
  }

 private:
  std::vector<KvGePoint2d> corners_;
};

/// An arc keeps its height over the chord when an end moves.
void stretchArc(KvDbArc& arc, const StretchArea& area, const KvGeVector3d& by) {
  KvGePoint3d start = arc.startPoint(), end = arc.endPoint();
  const double bulge = std::tan(arc.totalAngle() / 4), height = bulge * start.distanceTo(end) / 2;
  if (area.holds(start)) start += by;
  if (area.holds(end)) end += by;
  const double chord = start.distanceTo(end);
  if (chord == 0) return;
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(arc.normal());
  const KvGePoint3d a = toPlane * start, b = toPlane * end;
  const kvge::BulgeArc made = kvge::arcOfBulge({a.x, a.y}, {b.x, b.y}, 2 * height / chord);
  const KvGePoint3d center = KvGeMatrix3d::planeToWorld(arc.normal()) * kvge::spatial(made.center, a.z);
  arc.setCenter(center);
  arc.setRadius(made.radius);
  arc.setStartAngle(made.startAngle);
  arc.setEndAngle(made.startAngle + made.sweep);
}

/// The point that decides whether something is moved as a whole.
std::optional<KvGePoint3d> anchorOf(const KvDbEntity& entity) {
  if (const auto* circle = KvDbCircle::cast(&entity)) return circle->center();
  if (const auto* text = KvDbText::cast(&entity)) return text->position();
  if (const auto* text = KvDbMText::cast(&entity)) return text->location();
  if (const auto* reference = KvDbBlockReference::cast(&entity)) return reference->position();
  if (const auto* point = KvDbPoint::cast(&entity)) return point->position();
  return std::nullopt;
}

void stretchOne(KvDbEntity& entity, const StretchArea& area, const KvGeVector3d& by) {
  const auto moved = [&](const KvGePoint3d& p) { return area.holds(p) ? p + by : p; };
  if (auto* line = KvDbLine::cast(&entity)) {
    line->setStartPoint(moved(line->startPoint()));
    line->setEndPoint(moved(line->endPoint()));
  } else if (auto* arc = KvDbArc::cast(&entity)) {
    const bool whole = area.holds(arc->startPoint()) && area.holds(arc->endPoint());
    whole ? (void)arc->transformBy(KvGeMatrix3d::translation(by)) : stretchArc(*arc, area, by);
  } else if (auto* polyline = KvDbPolyline::cast(&entity)) {
    const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(polyline->normal());
    for (int i = 0; i < polyline->numVerts(); ++i) {
      KvGePoint3d world;
      polyline->getPointAt(i, world);
      if (area.holds(world)) polyline->setPointAt(i, kvge::planar(toPlane * (world + by)));
    }
  } else if (auto* trace = KvDbTrace::cast(&entity)) {
    for (int i = 0; i < 4; ++i) {
      KvGePoint3d world;
      if (trace->getPointAt(i, world) == Kvad::eOk) trace->setPointAt(i, moved(world));
    }
  } else if (auto* aligned = KvDbAlignedDimension::cast(&entity)) {
    aligned->setXLine1Point(moved(aligned->xLine1Point()));
    aligned->setXLine2Point(moved(aligned->xLine2Point()));
    aligned->setDimLinePoint(moved(aligned->dimLinePoint()));
    aligned->recomputeDimBlock(true);
  } else if (auto* rotated = KvDbRotatedDimension::cast(&entity)) {
    rotated->setXLine1Point(moved(rotated->xLine1Point()));
    rotated->setXLine2Point(moved(rotated->xLine2Point()));
    rotated->setDimLinePoint(moved(rotated->dimLinePoint()));
    rotated->recomputeDimBlock(true);
  } else if (const auto anchor = anchorOf(entity)) {
    if (area.holds(*anchor)) entity.transformBy(KvGeMatrix3d::translation(by));
  } else {
    KvDbExtents extents;
    if (entity.getGeomExtents(extents) == Kvad::eOk && area.holds(extents.minPoint()) &&
        area.holds(extents.maxPoint()))
      entity.transformBy(KvGeMatrix3d::translation(by));
  }
}

void runStretch() {
  if (!drawing()) return;
  say(L"Select objects to stretch by crossing-window or crossing-polygon...");
  kvds_name set;
  if (kvedSSGet(nullptr, nullptr, nullptr, nullptr, set) != RTNORM) return;
  const KvEdPicks picks = *editor()->selections().find(set);
  kvedSSFree(set);
  KvGePoint3d base, to;
  Ask ask(L"\nSpecify base point or [Displacement] <Displacement>: ");
  Got got = ask.keywords(L"Displacement").point(base);
  KvGeVector3d by;
  if (got == Got::Value) {
    got = Ask(L"\nSpecify second point or <use first point as displacement>: ").base(base).point(to);
    by = got == Got::Value ? to - base : base.asVector();
  } else if (got != Got::Cancelled) {
    got = Ask(L"\nSpecify displacement <0,0,0>: ").point(to);
    by = to.asVector();
    if (got == Got::Nothing) return;
  }
  if (got == Got::Cancelled) return;
  by = userToWorld() * by;
  int locked = 0;
  for (const KvEdPick& pick : picks) {
    if (isLocked(pick.id)) {
      ++locked;
      continue;
    }
    const StretchArea area(pick.method == KvEdPickMethod::Crossing ? pick.window.get() : nullptr);
    change<KvDbEntity>(pick.id, [&](KvDbEntity& entity) {
      area.isEmpty() ? (void)entity.transformBy(KvGeMatrix3d::translation(by)) : stretchOne(entity, area, by);
    });
  }
  if (locked > 0) say(countOf(locked, L"on a locked layer, left out"));
}

constexpr KvCommandRow kRows[] = {
    {L"JOIN", L"J", KVRX_CMD_MODAL, runJoin, L"Joins lines on one line, or curves that meet, to one.",
     L"Select source object:\nSelect objects to join to source:"},
    {L"OFFSET", L"O", KVRX_CMD_MODAL, runOffset, L"Draws a curve beside another one.",
     L"Specify offset distance or [Through/Erase/Layer] <>:\nSelect object to offset or [Exit/Undo] <Exit>: "
     L"(empty: ends)\nSpecify point on side to offset or [Exit/Multiple/Undo] <Exit>: (Multiple: one beside "
     L"the "
     L"other)\nSpecify through point or [Exit/Multiple/Undo] <Exit>: (after Through)"},
    {L"STRETCH", L"S", KVRX_CMD_MODAL, runStretch,
     L"Moves what lies in a crossing window and draws the rest along.",
     L"Select objects: (by C or CP; what is picked otherwise moves whole)\nSpecify base point or "
     L"[Displacement] <Displacement>:\nSpecify second point or <use first point as displacement>:"},
};

}  // namespace

std::span<const KvCommandRow> offsetRows() {
  return kRows;
}

}  // namespace kvcmd
