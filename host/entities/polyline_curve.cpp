// The light polyline as a curve: segments, widths, area, splitting, taking over an old one.
#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "host/geometry/arc.h"
#include "host/geometry/polyline.h"

Kvad::ErrorStatus KvDbPolyline::getLineSegAt(int index, KvGePoint3d& start, KvGePoint3d& end) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  if (segType(index) != kLine) return Kvad::eInvalidInput;
  getPointAt(index, start);
  return getPointAt((index + 1) % numVerts(), end);
}

Kvad::ErrorStatus KvDbPolyline::getLineSegAt(int index, KvGeLineSeg3d& line) const {
  KvGePoint3d start, end;
  const auto status = getLineSegAt(index, start, end);
  if (status == Kvad::eOk) line = KvGeLineSeg3d(start, end);
  return status;
}

Kvad::ErrorStatus KvDbPolyline::getArcSegAt(int index, KvGeCircArc3d& arc) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  if (segType(index) != kArc) return Kvad::eInvalidInput;
  const auto curve = geCurve();
  const kvge::Span span = curve->span(index);
  arc = KvGeCircArc3d(span.origin, span.u.crossProduct(span.v).normal(), span.u.normal(), span.radius,
                      span.low, span.high);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::getWidthsAt(int index, double& startWidth, double& endWidth) const {
  if (!has(index)) return Kvad::eInvalidIndex;
  const bool own = hasOwnWidths();
  startWidth = own ? extra(index).startWidth : constantWidth_;
  endWidth = own ? extra(index).endWidth : constantWidth_;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setWidthsAt(int index, double startWidth, double endWidth) {
  if (!has(index)) return Kvad::eInvalidIndex;
  if (!(startWidth >= 0) || !(endWidth >= 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  // From now on each vertex has its own.
  const bool spreads = !hasOwnWidths() && constantWidth_ != 0;
  extras_.resize(corners_.size());
  if (spreads)
    for (Extra& each : extras_) each.startWidth = each.endWidth = constantWidth_;
  constantWidth_ = 0;
  hasConstantWidth_ = false;
  Extra& own = extras_[static_cast<std::size_t>(index)];
  own.startWidth = startWidth;
  own.endWidth = endWidth;
  return Kvad::eOk;
}

bool KvDbPolyline::hasBulges() const {
  return std::any_of(corners_.begin(), corners_.end(), [](const Corner& c) { return c.bulge != 0; });
}

Kvad::ErrorStatus KvDbPolyline::setThickness(double thickness) {
  if (!std::isfinite(thickness)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setNormal(const KvGeVector3d& normal) {
  if (normal.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  normal_ = normal.normal();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::setPlinegen(bool on) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(on ? flags_ | kPlinegenFlag : flags_ & ~kPlinegenFlag);
  return Kvad::eOk;
}

std::unique_ptr<KvGeCurve3d> KvDbPolyline::geCurve() const {
  if (corners_.empty()) return nullptr;
  std::vector<KvGePolyline3d::Vertex> row;
  row.reserve(corners_.size());
  for (const Corner& own : corners_) row.push_back({own.point, own.bulge});
  return std::make_unique<KvGePolyline3d>(std::move(row), isClosed(), elevation_, normal_);
}

Kvad::ErrorStatus KvDbPolyline::getArea(double& area) const {
  if (corners_.empty()) return Kvad::eDegenerateGeometry;
  double twice = 0;
  const KvGePoint2d base = corners_.front().point;
  const bool closed = isClosed();
  for (int i = 0; i < numVerts(); ++i) {
    const Corner& from = corner(i);
    const Corner& to = corner((i + 1) % numVerts());
    twice += (from.point - base).crossProduct(to.point - base);
    if (from.bulge == 0 || (i == numVerts() - 1 && !closed)) continue;
    // The segment between chord and arc: r^2 (sweep - sin sweep) / 2, on the side of the bulge.
    const kvge::BulgeArc arc = kvge::arcOfBulge(from.point, to.point, from.bulge);
    twice += arc.radius * arc.radius * (arc.sweep - std::sin(arc.sweep));
  }
  area = std::fabs(twice) / 2;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPolyline::reverseCurve() {
  assertWriteEnabled();
  const int count = numVerts();
  std::vector<Vertex> reversed;
  for (int i = 0; i < count; ++i) {
    Vertex own = vertex(count - 1 - i);
    // What belongs to a segment moves to its other end.
    const Vertex segment = vertex(count - 1 - i > 0 ? count - 2 - i : count - 1);
    own.bulge = -segment.bulge;
    own.startWidth = segment.endWidth;
    own.endWidth = segment.startWidth;
    reversed.push_back(own);
  }
  for (int i = 0; i < count; ++i) setVertex(i, reversed[static_cast<std::size_t>(i)]);
  return Kvad::eOk;
}

std::unique_ptr<KvDbCurve> KvDbPolyline::pieceEntity(std::unique_ptr<KvGeCurve3d> piece, double from,
                                                     double to) const {
  auto entity = kvdbCurveOf(*piece, true);
  KvDbPolyline* own = KvDbPolyline::cast(entity.get());
  if (!own) return entity;
  own->thickness_ = thickness_;
  own->flags_ = static_cast<std::int16_t>(flags_ & ~kClosedFlag);
  own->constantWidth_ = constantWidth_;
  own->hasConstantWidth_ = hasConstantWidth_;
  if (!hasOwnWidths()) return entity;
  const auto widthAt = [&](int segment, double share) {
    const Extra whole = extra(segment % numVerts());
    return whole.startWidth + (whole.endWidth - whole.startWidth) * share;
  };
  const int first = static_cast<int>(std::floor(from));
  for (int i = 0; i < own->numVerts(); ++i) {
    const int segment = first + i;
    Vertex target = own->vertex(i);
    target.startWidth = widthAt(segment, std::clamp(from - segment, 0.0, 1.0));
    target.endWidth = widthAt(segment, std::clamp(to - segment, 0.0, 1.0));
    own->setVertex(i, target);
  }
  return entity;
}

Kvad::ErrorStatus KvDbPolyline::convertFrom(KvDbEntity*& entity, bool transferId) {
  if (!entity) return Kvad::eNullEntityPointer;
  KvDb2dPolyline* old = KvDb2dPolyline::cast(entity);
  if (!old) return Kvad::eNotThatKindOfClass;
  if (old->polyType() != KvDb2dPolyline::kSimplePoly && old->polyType() != KvDb2dPolyline::kFitCurvePoly)
    return Kvad::eInvalidInput;
  assertWriteEnabled();
  setPropertiesFrom(old);
  corners_.clear();
  extras_.clear();
  for (const KvDb2dVertex* vertex : old->vertices()) {
    const auto width = [](double own, double standard) { return own < 0 ? standard : own; };
    insertVertex(numVerts(), {kvge::planar(vertex->position()), vertex->bulge(),
                              width(vertex->startWidth(), old->defaultStartWidth()),
                              width(vertex->endWidth(), old->defaultEndWidth()), 0});
  }
  elevation_ = old->elevation();
  thickness_ = old->thickness();
  normal_ = old->normal();
  flags_ = static_cast<std::int16_t>((old->isClosed() ? kClosedFlag : 0) |
                                     (old->isLinetypeGenerationOn() ? kPlinegenFlag : 0));
  // One width for all is better kept as one.
  double width = 0;
  if (hasOwnWidths() && getConstantWidth(width) == Kvad::eOk) setConstantWidth(width);
  if (resbuf* data = old->xData()) {
    setXData(data);
    kvutRelRb(data);
  }
  if (!transferId) return Kvad::eOk;
  if (old->database()) {
    KvDbBlockTableRecord* block = nullptr;
    if (auto status = kvdbOpenObject(block, old->blockId(), KvDb::kForWrite); status != Kvad::eOk)
      return status;
    KvDbObjectId id;
    auto status = block->appendKvDbEntity(id, this);
    block->close();
    if (status == Kvad::eOk) status = old->erase();
    if (status != Kvad::eOk) return status;
    old->close();
  } else {
    delete old;
  }
  entity = this;
  return Kvad::eOk;
}

bool KvDbPolyline::subWorldDraw(KvGiWorldDraw* draw) {
  if (corners_.empty()) return false;
  draw->geometry().pline(*this);
  return true;
}

bool KvDb2dPolyline::subWorldDraw(KvGiWorldDraw* draw) {
  std::vector<KvGiPathVertex> row;
  for (const KvDb2dVertex* vertex : vertices()) {
    const double start = vertex->startWidth() < 0 ? startWidth_ : vertex->startWidth();
    const double end = vertex->endWidth() < 0 ? endWidth_ : vertex->endWidth();
    row.push_back({kvge::planar(vertex->position()), vertex->bulge(), start, end});
  }
  if (row.empty()) return false;
  draw->geometry().path({row.data(), static_cast<int>(row.size()), isClosed(), elevation_.z, normal_,
                         isLinetypeGenerationOn()});
  return true;
}
