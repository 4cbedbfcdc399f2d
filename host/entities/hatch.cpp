#include "host/entities/hatch.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/entities/curve.h"
#include "host/entities/polyline.h"
#include "host/geometry/polyline.h"

KVRX_DEFINE(KvDbHatch, KvDbEntity, L"HATCH")

namespace {

constexpr double kClosing = 1e-6;  // between the ends of a loop's edges
constexpr int kGradientCode = 450;

bool isFinite(KvGePoint2d p) {
  return std::isfinite(p.x) && std::isfinite(p.y);
}

KvGeVector2d turned(KvGeVector2d v, double angle) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return {v.x * cosine - v.y * sine, v.x * sine + v.y * cosine};
}

KvDbHatch::Edge splineEdge(const KvGeNurbCurve3d& spline) {
  KvDbHatch::Edge edge;
  edge.kind = KvDbHatch::kSpline;
  edge.degree = spline.degree();
  edge.isRational = spline.isRational();
  edge.knots = spline.knots();
  edge.weights = spline.weights();
  for (const KvGePoint3d& pole : spline.poles()) edge.poles.push_back(kvge::planar(pole));
  return edge;
}

double bearingOf(double parameter, double ratio) {
  // The bearing of an ellipse's point, on the same turn as its parameter.
  const double turns = std::floor(parameter / kvge::kTwoPi + 0.5) * kvge::kTwoPi;
  const double rest = parameter - turns;
  return turns + std::atan2(ratio * std::sin(rest), std::cos(rest));
}
double parameterOf(double bearing, double ratio) {
  return ratio > 0 ? bearingOf(bearing, 1 / ratio) : bearing;
}

KvDbHatch::Edge edgeOf(const KvGeCurve2d& curve) {
  KvDbHatch::Edge edge;
  switch (curve.kind()) {
    case KvGeCurve2d::kLineSeg:
      edge.first = curve.startPoint();
      edge.second = curve.endPoint();
      break;
    case KvGeCurve2d::kCircArc: {
      // Angles from the X axis in the direction of the run.
      const auto& arc = static_cast<const KvGeCircArc2d&>(curve);
      const bool isClockwise = arc.isClockWise();
      const double bearing = arc.majorAxis().angle(), turn = isClockwise ? -bearing : bearing;
      double start = kvge::normalizedAngle(arc.startAng() + turn);
      const double sweep = arc.endAng() - arc.startAng();
      if (sweep >= kvge::kTwoPi * (1 - 1e-15)) start = 0;
      edge.kind = KvDbHatch::kCirArc;
      edge.first = arc.center();
      edge.radius = arc.radius();
      edge.start = kvdxfDegrees(start);
      edge.end = kvdxfDegrees(start + sweep);
      edge.isCounterClockwise = !isClockwise;
      break;
    }
    case KvGeCurve2d::kEllipArc: {
      const auto& arc = static_cast<const KvGeEllipArc2d&>(curve);
      const KvGeVector2d major = arc.majorAxis() * arc.majorRadius();
      const double ratio = arc.minorRadius() / arc.majorRadius();
      edge.kind = KvDbHatch::kEllArc;
      edge.first = arc.center();
      edge.second = {major.x, major.y};
      edge.radius = ratio;
      edge.start = kvdxfDegrees(bearingOf(arc.startAng(), ratio));
      edge.end = kvdxfDegrees(bearingOf(arc.endAng(), ratio));
      edge.isCounterClockwise = !arc.isClockWise();
      break;
    }
    case KvGeCurve2d::kNurb:
      return splineEdge(static_cast<const KvGeNurbCurve2d&>(curve).data());
  }
  return edge;
}

/// A curve of space as an edge; `toPlane` brings it into the hatch's plane.
bool edgesOf(const KvGeCurve3d& curve, std::vector<KvDbHatch::Edge>& edges) {
  for (int i = 0; i < curve.spanCount(); ++i) {
    const kvge::Span span = curve.span(i);
    if (span.isPoint()) continue;
    if (span.kind == kvge::SpanKind::kLine) {
      KvDbHatch::Edge& edge = edges.emplace_back();
      edge.first = kvge::planar(kvge::startOf(span));
      edge.second = kvge::planar(kvge::endOf(span));
    } else if (span.kind == kvge::SpanKind::kConic) {
      const KvGeVector2d u(span.u.x, span.u.y), v(span.v.x, span.v.y);
      const bool isClockwise = u.crossProduct(v) < 0;
      const KvGePoint2d center = kvge::planar(span.origin);
      if (span.radius > 0)
        edges.push_back(edgeOf(KvGeCircArc2d(center, span.radius, span.low, span.high, u, isClockwise)));
      else
        edges.push_back(edgeOf(KvGeEllipArc2d(center, u, v, u.length(), v.length(), span.low, span.high)));
    } else {
      if (curve.kind() != KvGeCurve3d::kNurb) return false;
      edges.push_back(splineEdge(static_cast<const KvGeNurbCurve3d&>(curve)));
      return true;  // all spans at once
    }
  }
  return true;
}

}  // namespace

namespace {

/// A whole turn as files have it, give or take the rounding of both angles.
bool isWholeTurn(const KvDbHatch::Edge& edge) {
  constexpr double kTurn = 360, kSlack = 1e-9;
  return std::fabs(edge.end - edge.start) >= kTurn - kSlack;
}
/// The parameters of an arc's ends, in radians, in the direction of its run.
std::pair<double, double> paramsOf(const KvDbHatch::Edge& edge) {
  double start = kvdxfRadians(edge.start), end = kvdxfRadians(edge.end);
  if (edge.kind == KvDbHatch::kEllArc) {
    start = parameterOf(start, edge.radius);
    end = parameterOf(end, edge.radius);
  }
  return {start, isWholeTurn(edge) ? start + kvge::kTwoPi : end};
}
KvGeCircArc2d circleOf(const KvDbHatch::Edge& edge) {
  const auto [start, end] = paramsOf(edge);
  return {edge.first, edge.radius, start, end, KvGeVector2d::kXAxis, !edge.isCounterClockwise};
}
KvGeEllipArc2d ellipseOf(const KvDbHatch::Edge& edge) {
  const KvGeVector2d major = edge.second.asVector();
  const KvGeVector2d minor = edge.isCounterClockwise ? major.perpVector() : -major.perpVector();
  const auto [start, end] = paramsOf(edge);
  return {edge.first, major, minor, major.length(), major.length() * edge.radius, start, end};
}

}  // namespace

std::unique_ptr<KvGeCurve3d> KvDbHatch::Edge::curve() const {
  switch (kind) {
    case kLine:
      return KvGeLineSeg2d(first, second).spatial();
    case kCirArc: {
      if (!(radius > 0) || !std::isfinite(radius)) return nullptr;
      return circleOf(*this).spatial();
    }
    case kEllArc: {
      const double length = second.asVector().length();
      if (!(length > 0) || !(radius > 0) || !std::isfinite(length * radius)) return nullptr;
      return ellipseOf(*this).spatial();
    }
    case kSpline: {
      std::vector<KvGePoint3d> points;
      for (const KvGePoint2d& pole : poles) points.push_back(kvge::spatial(pole));
      return KvGeNurbCurve3d::create(degree, knots, std::move(points),
                                     weights.size() == poles.size() ? weights : std::vector<double>());
    }
    default:
      return nullptr;
  }
}

// --- Pattern
// -------------------------------------------------------------------------------------------------------------------

bool KvDbHatch::isGradient() const {
  for (const KvDbUnknownSection& section : unknownSections())
    for (const KvDxfGroup& group : section.groups)
      if (group.code == kGradientCode) return group.integer != 0;
  return false;
}

Kvad::ErrorStatus KvDbHatch::setHatchObjectType(HatchObjectType type) {
  return type == hatchObjectType() ? Kvad::eOk : Kvad::eNotApplicable;
}

bool KvDbHatch::isMetric() const {
  const KvDbDatabase* drawing = kvdbDatabaseOrWorking(database());
  const auto* variable = drawing ? drawing->extras().find(L"$MEASUREMENT") : nullptr;
  return !variable || variable->groups.empty() || variable->groups.front().integer != 0;
}

Kvad::ErrorStatus KvDbHatch::setPattern(HatchPatternType kind, const wchar_t* name) {
  if (!name || !*name) return Kvad::eInvalidInput;
  std::vector<KvDbPatternLine> lines;
  if (kind == kPreDefined && !kvdbHatchPattern(name, isMetric(), lines)) return Kvad::eKeyNotFound;
  assertWriteEnabled();
  name_ = name;
  patternType_ = static_cast<std::int16_t>(kind);
  isSolid_ = name_.CompareNoCase(L"SOLID") == 0;
  hasPattern_ = false;
  if (isSolid_)
    lines_.clear();
  else
    makeLines();
  return Kvad::eOk;
}

void KvDbHatch::makeLines() {
  if (isSolid_) return;
  std::vector<KvDbPatternLine> figures;
  double scale = scale_;
  if (patternType_ == kUserDefined) {
    figures.push_back({0, 0, 0, 0, space_, {}});
    if (isDouble_) figures.push_back({90, 0, 0, 0, space_, {}});
    scale = 1;
  } else if (!kvdbHatchPattern(name_.view(), isMetric(), figures)) {
    return;
  }
  lines_.clear();
  const double turn = angle_.radians();
  for (const KvDbPatternLine& figure : figures) {
    PatternLine& line = lines_.emplace_back();
    line.angle = figure.angle + angle_.degrees();
    const KvGeVector2d base = turned({figure.x * scale, figure.y * scale}, turn);
    line.base = {base.x, base.y};
    line.offset = turned({figure.dx * scale, figure.dy * scale}, kvdxfRadians(line.angle));
    for (double dash : figure.dashes) line.dashes.push_back(dash * scale);
  }
}

Kvad::ErrorStatus KvDbHatch::setPatternScale(double scale) {
  if (!(scale > 0) || !std::isfinite(scale)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const double factor = scale / (scale_ > 0 ? scale_ : 1);
  scale_ = scale;
  if (patternType_ == kUserDefined) return Kvad::eOk;
  for (PatternLine& line : lines_) {
    line.base = {line.base.x * factor, line.base.y * factor};
    line.offset = line.offset * factor;
    for (double& dash : line.dashes) dash *= factor;
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setPatternAngle(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const double by = angle - angle_.radians();
  const double old = angle_.degrees();
  angle_ = KvDbAngle::ofRadians(angle);
  for (PatternLine& line : lines_) {
    const KvGeVector2d base = turned(line.base.asVector(), by);
    line.base = {base.x, base.y};
    line.offset = turned(line.offset, by);
    line.angle += angle_.degrees() - old;
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setPatternSpace(double space) {
  if (!(space > 0) || !std::isfinite(space)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  space_ = space;
  if (patternType_ == kUserDefined) makeLines();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setPatternDouble(bool isDouble) {
  assertWriteEnabled();
  isDouble_ = isDouble;
  if (patternType_ == kUserDefined) makeLines();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setHatchStyle(HatchStyle style) {
  if (style < kNormal || style > kIgnore) return Kvad::eInvalidInput;
  assertWriteEnabled();
  style_ = static_cast<std::int16_t>(style);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setElevation(double elevation) {
  if (!std::isfinite(elevation)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  elevation_.z = elevation;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::setNormal(const KvGeVector3d& normal) {
  if (normal.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  normal_ = normal.normal();
  return Kvad::eOk;
}

KvGeMatrix3d KvDbHatch::planeToWorld() const {
  return KvGeMatrix3d::planeToWorld(normal_) * KvGeMatrix3d::translation({0, 0, elevation_.z});
}

// --- Boundaries
// ----------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbHatch::appendLoop(int type, const KvGePoint2dArray& vertices,
                                        const KvArray<double>& bulges) {
  if (!bulges.isEmpty() && bulges.length() != vertices.length()) return Kvad::eInvalidInput;
  Loop loop;
  loop.type = type | kPolyline;
  for (int i = 0; i < vertices.length(); ++i) {
    const double bulge = bulges.isEmpty() ? 0 : bulges[i];
    if (!isFinite(vertices[i]) || !std::isfinite(bulge)) return Kvad::eInvalidInput;
    loop.vertices.push_back({vertices[i], bulge});
    loop.hasBulges = loop.hasBulges || bulge != 0;
  }
  // An outline that ends where it began is given once.
  if (loop.vertices.size() > 2 && loop.vertices.front().point.isEqualTo(loop.vertices.back().point))
    loop.vertices.pop_back();
  if (loop.vertices.size() < 2 || (loop.vertices.size() == 2 && !loop.hasBulges)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  loops_.push_back(std::move(loop));
  return Kvad::eOk;
}

namespace {

bool isClosedRow(const std::vector<KvDbHatch::Edge>& edges) {
  std::vector<std::unique_ptr<KvGeCurve3d>> curves;
  for (const auto& edge : edges) {
    curves.push_back(edge.curve());
    if (!curves.back()) return false;
  }
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const auto& next = curves[(i + 1) % curves.size()];
    if (!(curves[i]->endPoint().distanceTo(next->startPoint()) <= kClosing)) return false;
  }
  return !curves.empty();
}

}  // namespace

Kvad::ErrorStatus KvDbHatch::appendLoop(int type, const KvArray<void*>& edges,
                                        const KvArray<int>& edgeTypes) {
  if (edges.isEmpty() || (!edgeTypes.isEmpty() && edgeTypes.length() != edges.length()))
    return Kvad::eInvalidInput;
  Loop loop;
  loop.type = type & ~kPolyline;
  for (void* pointer : edges) {
    const auto* curve = static_cast<const KvGeCurve2d*>(pointer);
    if (!curve || !isFinite(curve->startPoint()) || !isFinite(curve->endPoint())) return Kvad::eInvalidInput;
    loop.edges.push_back(edgeOf(*curve));
  }
  if (!isClosedRow(loop.edges)) return Kvad::eInvalidLoop;
  assertWriteEnabled();
  loops_.push_back(std::move(loop));
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::loopOf(const KvDbObjectIdArray& ids, Loop& loop) const {
  const KvGeMatrix3d toPlane = planeToWorld().inverse();
  std::vector<std::vector<Edge>> rows;
  for (KvDbObjectId id : ids) {
    KvDbEntity* entity = nullptr;
    if (auto status = kvdbOpenObject(entity, id); status != Kvad::eOk) return status;
    const KvDbCurve* curve = KvDbCurve::cast(entity);
    auto shape = curve ? curve->geCurve() : nullptr;
    if (shape) shape = shape->transformed(toPlane);
    entity->close();
    if (!shape || !std::isfinite(shape->endParam()) || !std::isfinite(shape->startParam()))
      return Kvad::eInvalidInput;
    if (ids.length() == 1 && shape->kind() == KvGeCurve3d::kPolyline && shape->isClosed()) {
      // In the plane's own coordinates: a polyline there has the Z axis or its opposite.
      const auto& outline = static_cast<const KvGePolyline3d&>(*shape);
      loop.type |= kPolyline;
      for (int i = 0; i < outline.spanCount(); ++i) {
        const double bulge = outline.vertices()[static_cast<std::size_t>(i)].bulge;
        loop.vertices.push_back(
            {kvge::planar(kvge::startOf(outline.span(i))), outline.normal().z < 0 ? -bulge : bulge});
        loop.hasBulges = loop.hasBulges || bulge != 0;
      }
      return Kvad::eOk;
    }
    if (!edgesOf(*shape, rows.emplace_back())) return Kvad::eInvalidInput;
  }
  // Rows may come in any order and direction: the next one begins or ends where the last one ended.
  const auto endOf = [](const std::vector<Edge>& row) { return row.back().curve()->endPoint(); };
  const auto startOf = [](const std::vector<Edge>& row) { return row.front().curve()->startPoint(); };
  const auto reversed = [](std::vector<Edge> row) {
    std::vector<Edge> back;
    for (auto edge = row.rbegin(); edge != row.rend(); ++edge)
      if (const auto curve = edge->curve()) edgesOf(*curve->reversed(), back);
    return back;
  };
  std::erase_if(rows, [](const std::vector<Edge>& row) {
    return row.empty() || std::any_of(row.begin(), row.end(), [](const Edge& edge) { return !edge.curve(); });
  });
  if (rows.empty()) return Kvad::eInvalidLoop;
  loop.edges = rows.front();
  rows.erase(rows.begin());
  while (!rows.empty()) {
    const KvGePoint3d end = endOf(loop.edges);
    auto next = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
      return startOf(row).distanceTo(end) <= kClosing || endOf(row).distanceTo(end) <= kClosing;
    });
    if (next == rows.end()) return Kvad::eInvalidLoop;
    std::vector<Edge> row = startOf(*next).distanceTo(end) <= kClosing ? *next : reversed(*next);
    loop.edges.insert(loop.edges.end(), row.begin(), row.end());
    rows.erase(next);
  }
  return isClosedRow(loop.edges) ? Kvad::eOk : Kvad::eInvalidLoop;
}

Kvad::ErrorStatus KvDbHatch::appendLoop(int type, const KvDbObjectIdArray& ids) {
  if (ids.isEmpty()) return Kvad::eInvalidInput;
  Loop loop;
  loop.type = type & ~kPolyline;
  if (auto status = loopOf(ids, loop); status != Kvad::eOk) return status;
  assertWriteEnabled();
  if (associative()) loop.sources = ids;
  loops_.push_back(std::move(loop));
  if (!associative() || objectId().isNull()) return Kvad::eOk;
  for (KvDbObjectId id : ids) {
    KvDbEntity* source = nullptr;
    if (kvdbOpenObject(source, id, KvDb::kForWrite) != Kvad::eOk) continue;
    source->addPersistentReactor(objectId());
    source->close();
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::getLoopAt(int index, std::int32_t& type, KvGePoint2dArray& vertices,
                                       KvArray<double>& bulges) const {
  if (index < 0 || index >= numLoops()) return Kvad::eInvalidIndex;
  const Loop& loop = loops_[static_cast<std::size_t>(index)];
  if (!loop.isPolyline()) return Kvad::eInvalidInput;
  type = loop.type;
  for (const Vertex& vertex : loop.vertices) {
    vertices.append(vertex.point);
    bulges.append(vertex.bulge);
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::getLoopAt(int index, std::int32_t& type, KvArray<void*>& edges,
                                       KvArray<int>& edgeTypes) const {
  if (index < 0 || index >= numLoops()) return Kvad::eInvalidIndex;
  const Loop& loop = loops_[static_cast<std::size_t>(index)];
  if (loop.isPolyline()) return Kvad::eInvalidInput;
  type = loop.type;
  for (const Edge& edge : loop.edges) {
    KvGeCurve2d* curve = nullptr;
    if (edge.kind == kLine) {
      curve = new KvGeLineSeg2d(edge.first, edge.second);
    } else if (edge.kind == kCirArc) {
      curve = new KvGeCircArc2d(circleOf(edge));
    } else if (edge.kind == kEllArc) {
      curve = new KvGeEllipArc2d(ellipseOf(edge));
    } else if (auto spline = KvGeNurbCurve2d::create(edge.degree, edge.knots, edge.poles, edge.weights)) {
      curve = spline.release();
    }
    if (!curve) continue;
    edges.append(curve);
    edgeTypes.append(edge.kind);
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::removeLoopAt(int index) {
  if (index < 0 || index >= numLoops()) return Kvad::eInvalidIndex;
  assertWriteEnabled();
  loops_.erase(loops_.begin() + index);
  return Kvad::eOk;
}

std::int32_t KvDbHatch::loopTypeAt(int index) const {
  return index < 0 || index >= numLoops() ? 0 : loops_[static_cast<std::size_t>(index)].type;
}

Kvad::ErrorStatus KvDbHatch::setAssociative(bool associative) {
  assertWriteEnabled();
  isAssociative_ = associative;
  if (!associative)
    for (Loop& loop : loops_) loop.sources.removeAll();
  return Kvad::eOk;
}

KvDbObjectIdArray KvDbHatch::assocObjIds() const {
  KvDbObjectIdArray ids;
  for (const Loop& loop : loops_) ids.append(loop.sources);
  return ids;
}

Kvad::ErrorStatus KvDbHatch::evaluateHatch(bool) {
  if (loops_.empty()) return Kvad::eNoContent;
  if (!associative()) return Kvad::eOk;
  std::vector<Loop> fresh = loops_;
  for (Loop& loop : fresh) {
    if (loop.sources.isEmpty()) continue;
    Loop now;
    now.type = loop.type & ~kPolyline;
    now.sources = loop.sources;
    if (auto status = loopOf(loop.sources, now); status != Kvad::eOk) return status;
    loop = std::move(now);
  }
  assertWriteEnabled();
  loops_ = std::move(fresh);
  return Kvad::eOk;
}

// --- Transforms
// ---------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbHatch::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  assertWriteEnabled();
  const KvGeVector3d normal = KvGeVector3d(matrix * normal_).normal();
  const KvGeMatrix3d map = KvGeMatrix3d::worldToPlane(normal) * matrix * KvGeMatrix3d::planeToWorld(normal_);
  const double height = elevation_.z;
  const auto point = [&](KvGePoint2d& p) { p = kvge::planar(map * kvge::spatial(p, height)); };
  const auto vector = [&](KvGeVector2d v) {
    const KvGeVector3d moved = map * KvGeVector3d(v.x, v.y, 0);
    return KvGeVector2d(moved.x, moved.y);
  };
  const KvGeVector2d along = vector(KvGeVector2d::kXAxis), across = vector(KvGeVector2d::kYAxis);
  const bool isTurned = along.crossProduct(across) < 0;
  const double scale = matrix.scale(), turn = kvdxfDegrees(along.angle());
  for (Loop& loop : loops_) {
    for (Vertex& vertex : loop.vertices) {
      point(vertex.point);
      if (isTurned) vertex.bulge = -vertex.bulge;
    }
    for (Edge& edge : loop.edges) {
      point(edge.first);
      if (edge.kind == kEllArc) {
        const KvGeVector2d major = vector(edge.second.asVector());
        edge.second = {major.x, major.y};
      } else {
        point(edge.second);
      }
      for (KvGePoint2d& pole : edge.poles) point(pole);
      for (KvGePoint2d& fit : edge.fitPoints) point(fit);
      if (edge.kind == kCirArc) {
        edge.radius *= scale;
        // Angles run in the arc's own direction, which a mirror turns over.
        const double sign = edge.isCounterClockwise != isTurned ? 1 : -1;
        edge.start += sign * turn;
        edge.end += sign * turn;
      }
      if (isTurned) edge.isCounterClockwise = !edge.isCounterClockwise;
    }
  }
  for (PatternLine& line : lines_) {
    const auto [sine, cosine] = kvge::sinCos(kvdxfRadians(line.angle));
    line.angle = kvdxfDegrees(vector({cosine, sine}).angle());
    point(line.base);
    line.offset = vector(line.offset);
    for (double& dash : line.dashes) dash *= scale;
  }
  scale_ *= scale;
  space_ *= scale;
  angle_.setDegrees(isTurned ? turn - angle_.degrees() : turn + angle_.degrees());
  for (KvGePoint2d& seed : seeds_) point(seed);
  elevation_.z = (map * KvGePoint3d(0, 0, height)).z;
  normal_ = normal;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbHatch::explode(KvDbVoidPtrArray& parts) const {
  const int before = parts.length();
  if (isSolidFill()) {
    if (KvDbRegion* region = getRegionArea()) parts.append(static_cast<KvDbEntity*>(region));
    return parts.length() > before ? Kvad::eOk : Kvad::eCannotExplodeEntity;
  }
  const KvGeMatrix3d toWorld = planeToWorld();
  patternStretches([&](KvGePoint2d from, KvGePoint2d to) {
    auto line = kvdbCurveOf(KvGeLineSeg3d(toWorld * kvge::spatial(from), toWorld * kvge::spatial(to)));
    line->setPropertiesFrom(this);
    parts.append(static_cast<KvDbEntity*>(line.release()));
  });
  return parts.length() > before ? Kvad::eOk : Kvad::eCannotExplodeEntity;
}
