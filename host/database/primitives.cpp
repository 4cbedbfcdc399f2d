#include "host/database/primitives.h"

#include <algorithm>

#include "host/geometry/arc.h"
#include "host/geometry/intersect.h"
#include "host/geometry/polyline.h"
#include "host/lettering/line.h"

namespace {

constexpr std::size_t kDeepest = 64;  // of drawables in drawables

std::unique_ptr<KvGeCurve3d> chain(int count, const KvGePoint3d* points, bool isClosed) {
  return std::make_unique<KvGeSpacePolyline3d>(std::vector<KvGePoint3d>(points, points + count), isClosed);
}

bool isFinite(const KvGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

class ExtentsSink : public KvDbCurveSink {
 public:
  void takeCurve(Curve curve) override {
    if (curve->spanCount() == 0) return;
    const KvGeBox3d box = curve->boundBox();
    if (box.isEmpty() || !isFinite(box.low) || !isFinite(box.high)) return;
    extents.addPoint(box.low);
    extents.addPoint(box.high);
  }
  void takePoint(const KvGePoint3d& point) override {
    if (isFinite(point)) extents.addPoint(point);
  }
  void takeTextBox(const KvGePoint3d (&corners)[4]) override {
    for (const KvGePoint3d& corner : corners) extents.addPoint(corner);
  }
  KvDbExtents extents;
};

class CurvesSink : public KvDbCurveSink {
 public:
  explicit CurvesSink(std::vector<Curve>& curves) : curves_(curves) {}
  void takeCurve(Curve curve) override { curves_.push_back(std::move(curve)); }
  void takeTextBox(const KvGePoint3d (&)[4]) override {}

 private:
  std::vector<Curve>& curves_;
};

}  // namespace

void KvDbCurveSink::put(Curve curve) {
  if (!curve) return;
  if (hasMap_) curve = curve->transformed(map_);
  if (curve) takeCurve(std::move(curve));
}

bool KvDbCurveSink::circle(const KvGePoint3d& center, double radius, const KvGeVector3d& normal) {
  put(std::make_unique<KvGeCircArc3d>(center, normal, radius));
  return false;
}

bool KvDbCurveSink::circle(const KvGePoint3d& first, const KvGePoint3d& second, const KvGePoint3d& third) {
  const KvGeCircArc3d arc(first, second, third);
  return arc.radius() > 0 && circle(arc.center(), arc.radius(), arc.normal());
}

bool KvDbCurveSink::circularArc(const KvGePoint3d& center, double radius, const KvGeVector3d& normal,
                                const KvGeVector3d& startVector, double sweepAngle, KvGiArcType type) {
  // A negative sweep is a positive one about the other side.
  const KvGeVector3d up = sweepAngle < 0 ? -normal : normal;
  auto arc =
      std::make_unique<KvGeCircArc3d>(center, up, startVector.normal(), radius, 0, std::fabs(sweepAngle));
  if (type != kKvGiArcSimple) {
    const KvGePoint3d ends[] = {arc->endPoint(), type == kKvGiArcSector ? center : arc->startPoint(),
                                arc->startPoint()};
    put(chain(3, ends, false));
  }
  put(std::move(arc));
  return false;
}

bool KvDbCurveSink::circularArc(const KvGePoint3d& start, const KvGePoint3d& point, const KvGePoint3d& end,
                                KvGiArcType type) {
  const KvGeCircArc3d arc(start, point, end);
  if (arc.radius() == 0) {
    const KvGePoint3d points[] = {start, end};
    return polyline(2, points, nullptr, -1);
  }
  return circularArc(arc.center(), arc.radius(), arc.normal(), start - arc.center(),
                     arc.endAngle() - arc.startAngle(), type);
}

bool KvDbCurveSink::ellipticalArc(const KvGePoint3d& center, const KvGeVector3d& normal, double majorLength,
                                  double minorLength, double startAngle, double endAngle, double tilt,
                                  KvGiArcType) {
  const KvGeVector3d x = normal.perpVector().rotateBy(tilt, normal);
  put(std::make_unique<KvGeEllipArc3d>(center, x * majorLength, normal.crossProduct(x) * minorLength,
                                       startAngle, endAngle));
  return false;
}

bool KvDbCurveSink::polyline(int count, const KvGePoint3d* points, const KvGeVector3d*, long) {
  if (count > 0) put(chain(count, points, false));
  return false;
}

bool KvDbCurveSink::polygon(int count, const KvGePoint3d* points) {
  if (count > 0) put(chain(count, points, true));
  return false;
}

bool KvDbCurveSink::polyPolygon(int outlines, const int* counts, const KvGePoint3d* points) {
  for (int i = 0; i < outlines; points += counts[i], ++i) polygon(counts[i], points);
  return false;
}

bool KvDbCurveSink::text(const KvGePoint3d& position, const KvGeVector3d& normal,
                         const KvGeVector3d& direction, const KvGiTextLook& look, const CString& text) {
  const KvLtLine line = kvltMeasureLine(look, text.view());
  const KvGeBox3d& box = line.box;
  if (box.isEmpty()) return false;
  const KvGeVector3d along = direction.normal(), up = normal.crossProduct(along).normal();
  const auto at = [&](double x, double y) { return position + along * x + up * y; };
  KvGePoint3d corners[4] = {at(box.low.x, box.low.y), at(box.high.x, box.low.y), at(box.high.x, box.high.y),
                            at(box.low.x, box.high.y)};
  if (hasMap_)
    for (KvGePoint3d& corner : corners) corner = map_ * corner;
  takeTextBox(corners);
  return false;
}

bool KvDbCurveSink::pline(const KvDbPolyline& polyline, int from, int count) {
  KvGiPath whole;
  const std::vector<KvGiPathVertex> vertices = kvgiVerticesOf(polyline, from, count, whole);
  whole.vertices = vertices.data();
  whole.count = static_cast<int>(vertices.size());
  return path(whole);
}

bool KvDbCurveSink::path(const KvGiPath& path) {
  std::vector<KvGePolyline3d::Vertex> vertices;
  for (int i = 0; i < path.count; ++i) vertices.push_back({path.vertices[i].point, path.vertices[i].bulge});
  if (path.count > 0)
    put(std::make_unique<KvGePolyline3d>(std::move(vertices), path.isClosed, path.elevation, path.normal));
  return false;
}

bool KvDbCurveSink::polypoint(int count, const KvGePoint3d* points) {
  for (int i = 0; i < count; ++i) takePoint(hasMap_ ? map_ * points[i] : points[i]);
  return false;
}

bool KvDbCurveSink::shell(int points, const KvGePoint3d* vertices, int faceListSize,
                          const std::int32_t* faces) {
  std::vector<KvGePoint3d> outline;
  for (int at = 0; at < faceListSize;) {
    const int corners = std::abs(faces[at++]);
    outline.clear();
    for (int i = 0; i < corners && at < faceListSize; ++i, ++at)
      if (faces[at] >= 0 && faces[at] < points) outline.push_back(vertices[faces[at]]);
    polygon(static_cast<int>(outline.size()), outline.data());
  }
  return false;
}

bool KvDbCurveSink::mesh(int rows, int columns, const KvGePoint3d* vertices) {
  std::vector<KvGePoint3d> line;
  for (int row = 0; row < rows; ++row) polyline(columns, vertices + row * columns, nullptr, -1);
  for (int column = 0; column < columns; ++column) {
    line.clear();
    for (int row = 0; row < rows; ++row) line.push_back(vertices[row * columns + column]);
    polyline(rows, line.data(), nullptr, -1);
  }
  return false;
}

bool KvDbCurveSink::ray(const KvGePoint3d& base, const KvGePoint3d& through) {
  put(std::make_unique<KvGeRay3d>(base, through - base));
  return false;
}

bool KvDbCurveSink::xline(const KvGePoint3d& first, const KvGePoint3d& second) {
  put(std::make_unique<KvGeLine3d>(first, second));
  return false;
}

bool KvDbCurveSink::draw(KvGiDrawable* drawable) {
  if (!drawable || open_.size() >= kDeepest) return false;
  if (std::find(open_.begin(), open_.end(), drawable) != open_.end()) return false;
  if (const auto* entity = KvDbEntity::cast(drawable); entity && entity->visibility() == KvDb::kInvisible)
    return false;
  open_.push_back(drawable);
  drawable->worldDraw(this);
  open_.pop_back();
  return false;
}

void KvDbCurveSink::pushModelTransform(const KvGeMatrix3d& transform) {
  outer_.push_back(map_);
  map_ = map_ * transform;
  hasMap_ = true;
}

void KvDbCurveSink::popModelTransform() {
  if (outer_.empty()) return;
  map_ = outer_.back();
  outer_.pop_back();
  hasMap_ = !outer_.empty();
}

Kvad::ErrorStatus kvdbDrawnExtents(const KvDbEntity& entity, KvDbExtents& extents) {
  extents = KvDbExtents();
  ExtentsSink sink;
  const_cast<KvDbEntity&>(entity).worldDraw(&sink);
  if (sink.extents.isEmpty()) return Kvad::eInvalidExtents;
  extents = sink.extents;
  return Kvad::eOk;
}

void kvdbDrawnCurves(const KvDbEntity& entity, std::vector<std::unique_ptr<KvGeCurve3d>>& curves) {
  CurvesSink sink(curves);
  const_cast<KvDbEntity&>(entity).worldDraw(&sink);
}

// --- Crossings
// -----------------------------------------------------------------------------------------------------------------

namespace {

void addHits(const KvDbEntity& a, const KvDbEntity* b, KvDb::Intersect type, const KvGePlane* plane,
             KvGePoint3dArray& points) {
  std::vector<std::unique_ptr<KvGeCurve3d>> own, others;
  a.getGeCurves(own);
  b->getGeCurves(others);
  const auto extension = static_cast<KvGe::Extension>(type);
  const bool isLimited = extension == KvGe::kOnBothOperands && !plane;
  std::vector<KvGeBox3d> boxes;
  if (isLimited)
    for (const auto& curve : others) boxes.push_back(curve->boundBox());
  const int before = points.length();
  std::vector<KvGeCurveHit> hits;
  for (const auto& curve : own) {
    const KvGeBox3d box = isLimited ? curve->boundBox().grown(KvGeContext::gTol.equalPoint()) : KvGeBox3d();
    for (std::size_t i = 0; i < others.size(); ++i) {
      if (isLimited && !box.meets(boxes[i])) continue;
      if (plane)
        kvge::intersectProjected(*curve, *others[i], *plane, hits, extension);
      else
        kvge::intersect(*curve, *others[i], hits, extension);
      for (const KvGeCurveHit& hit : hits) {
        bool isNew = true;
        for (int k = before; k < points.length() && isNew; ++k) isNew = !points[k].isEqualTo(hit.point);
        if (isNew) points.append(hit.point);
      }
    }
  }
}

}  // namespace

Kvad::ErrorStatus KvDbEntity::intersectWith(const KvDbEntity* other, KvDb::Intersect type,
                                            KvGePoint3dArray& points, long, long) const {
  if (!other) return Kvad::eNullEntityPointer;
  addHits(*this, other, type, nullptr, points);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::intersectWith(const KvDbEntity* other, KvDb::Intersect type,
                                            const KvGePlane& plane, KvGePoint3dArray& points, long,
                                            long) const {
  if (!other) return Kvad::eNullEntityPointer;
  addHits(*this, other, type, &plane, points);
  return Kvad::eOk;
}
