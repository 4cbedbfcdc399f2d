#include "host/editor/internal/picker.h"

#include <algorithm>
#include <cmath>

#include "host/base/context.h"
#include "host/database/tracer.h"
#include "host/editor/editor.h"
#include "host/editor/internal/region_test.h"
#include "host/editor/internal/space.h"
#include "host/editor/internal/spatial_index.h"

namespace kved {

namespace {

/// Tests what one entity draws.
class PickTracer : public KvGiTracer {
 public:
  PickTracer(KvDbDatabase& database, const PickRegion& region, const KvGeMatrix3d& worldToView,
             const KvGeMatrix3d& viewToWorld, bool ranks)
      : KvGiTracer(&database), region_(region), test_(region), viewToWorld_(viewToWorld), ranks_(ranks) {
    setBaseTransform(worldToView);
    const KvGeBox3d bounds = region.bounds();
    const double size = bounds.high.x - bounds.low.x + bounds.high.y - bounds.low.y;
    setDeviation(std::max(size / 400, 1e-12));
    setEndlessBox(bounds.grown(size + 1));
    middle_ = {(bounds.low.x + bounds.high.x) / 2, (bounds.low.y + bounds.high.y) / 2};
    areaRank_ = size / 4;
  }

  bool hits(KvDbObjectId id, PickHit& hit) {
    hit_ = &hit;
    hit = PickHit();
    hit.id = id;
    hit.rank = HUGE_VAL;
    hasDrawn_ = isOutside_ = isHit_ = false;
    auto* entity = KvDbEntity::cast(id.stub()->object);
    if (!entity) return false;
    trace(entity);
    if (region_.kind == PickRegion::Kind::Window) return hasDrawn_ && !isOutside_;
    return isHit_;
  }

 protected:
  bool isOutlineOnly() const override { return false; }

  void stroke(const KvGePoint3d* points, int count) override {
    if (isDecided() || count < 1) return;
    hasDrawn_ = true;
    const auto flat = [&](int i) { return KvGePoint2d(points[i].x, points[i].y); };
    for (int i = 0; i < std::max(count - 1, 1); ++i) {
      const KvGePoint2d a = flat(i), b = flat(std::min(i + 1, count - 1));
      if (region_.kind == PickRegion::Kind::Window) {
        if (!test_.encloses(a, b)) isOutside_ = true;
      } else if (test_.meets(a, b)) {
        note(ranks_ ? distanceTo(middle_, a, b) : 0);
      }
      if (isDecided()) return;
    }
  }

  bool strokeConic(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double start,
                   double sweep) override {
    if (isDecided()) return true;
    hasDrawn_ = true;
    const FlatConic conic{{center.x, center.y}, {u.x, u.y}, {v.x, v.y}, start, sweep};
    if (region_.kind == PickRegion::Kind::Window) {
      if (!test_.encloses(conic)) isOutside_ = true;
    } else if (test_.meets(conic)) {
      note(ranks_ ? distanceTo(middle_, conic) : 0);
    }
    return true;
  }

  void fill(const KvGiArea& area) override {
    if (isDecided()) return;
    hasDrawn_ = true;
    std::vector<std::vector<KvGePoint2d>> outlines(static_cast<std::size_t>(std::max(area.outlines, 0)));
    const KvGePoint3d* at = area.points;
    for (std::size_t i = 0; i < outlines.size(); ++i)
      for (int k = 0; k < area.counts[i]; ++k, ++at) outlines[i].emplace_back(at->x, at->y);
    if (region_.kind == PickRegion::Kind::Window) {
      for (const auto& outline : outlines)
        for (std::size_t i = 0; i < outline.size(); ++i)
          if (!test_.encloses(outline[i], outline[(i + 1) % outline.size()])) isOutside_ = true;
    } else if (test_.meetsArea(outlines)) {
      note(areaRank_);
    }
  }

 private:
  bool isDecided() const { return isOutside_ || (isHit_ && !ranks_); }

  void note(double rank) {
    isHit_ = true;
    if (!(rank < hit_->rank)) return;
    hit_->rank = rank;
    hit_->marker = marker();
    hit_->path.clear();
    for (const KvGiDrawable* drawable : drawables()) {
      const auto* object = KvDbObject::cast(drawable);
      if (object && !object->objectId().isNull()) hit_->path.push_back(object->objectId());
    }
    hit_->transform = viewToWorld_ * modelToWorld();
  }

  const PickRegion& region_;
  RegionTest test_;
  KvGeMatrix3d viewToWorld_;
  bool ranks_;
  KvGePoint2d middle_;
  double areaRank_ = 0;
  PickHit* hit_ = nullptr;
  bool hasDrawn_ = false, isOutside_ = false, isHit_ = false;
};

}  // namespace

PickRegion PickRegion::rectangle(Kind kind, const KvGePoint2d& a, const KvGePoint2d& b) {
  return {kind, {a, {b.x, a.y}, b, {a.x, b.y}}};
}

KvGeBox3d PickRegion::bounds() const {
  KvGeBox3d box;
  for (const KvGePoint2d& p : points) box.add({p.x, p.y, 0});
  return box;
}

Picker::Picker(KvDbDatabase& database)
    : database_(database),
      view_(kvedViewOf(database)),
      worldToView_(view_.worldToView()),
      viewToWorld_(view_.viewToWorld()),
      isPlan_(view_.direction.isCodirectionalTo(KvGeVector3d::kZAxis)) {}

KvGePoint2d Picker::toView(const KvGePoint3d& world) const {
  const KvGePoint3d p = worldToView_ * world;
  return {p.x, p.y};
}

double Picker::halfBox() const {
  KvEdEditor* editor = KvHostContext::current().editor;
  KvEdVarValue size = 3;
  if (editor) editor->variables().get(L"PICKBOX", size);
  const int height = editor ? editor->screen().size.height : KvEdScreenSize().height;
  const int* pixels = std::get_if<int>(&size);
  // Without a box a point must lie on the line, as exactly as numbers tell.
  constexpr double kNoBox = 1e-6;
  return (pixels && *pixels > 0 ? *pixels : kNoBox) * view_.height / height;
}

std::vector<KvDbObjectId> Picker::candidates(const PickRegion& region) const {
  SpatialIndex& index = indexOf(database_, currentSpace(database_));
  if (!isPlan_) return index.all();
  KvGeBox3d box;
  for (const KvGePoint2d& p : region.points) box.add(viewToWorld_ * KvGePoint3d(p.x, p.y, 0));
  // What lies on the box's edge must not be lost to rounding.
  const double slack =
      1e-12 * (std::fabs(box.low.x) + std::fabs(box.high.x) + std::fabs(box.low.y) + std::fabs(box.high.y));
  return index.query(box.grown(slack));
}

std::vector<PickHit> Picker::in(const PickRegion& region, const Accept& accept) const {
  std::vector<PickHit> hits;
  if (region.points.empty()) return hits;
  constexpr int kEntitiesForOneTracer = 4096;  // a tracer gives up after very many drawables
  std::unique_ptr<PickTracer> tracer;
  int traced = 0;
  for (const KvDbObjectId id : candidates(region)) {
    if (accept && !accept(id)) continue;
    if (!tracer || ++traced % kEntitiesForOneTracer == 0)
      tracer = std::make_unique<PickTracer>(database_, region, worldToView_, viewToWorld_, false);
    PickHit hit;
    if (tracer->hits(id, hit)) hits.push_back(std::move(hit));
  }
  return hits;
}

std::vector<PickHit> Picker::allAt(const KvGePoint3d& world, const Accept& accept) const {
  const KvGePoint2d at = toView(world);
  const double half = halfBox();
  const PickRegion region = PickRegion::rectangle(PickRegion::Kind::Crossing, {at.x - half, at.y - half},
                                                  {at.x + half, at.y + half});
  std::vector<PickHit> hits;
  PickTracer tracer(database_, region, worldToView_, viewToWorld_, true);
  for (const KvDbObjectId id : candidates(region)) {
    PickHit hit;
    if ((!accept || accept(id)) && tracer.hits(id, hit)) hits.push_back(std::move(hit));
  }
  // Those drawn last come first among equals.
  std::reverse(hits.begin(), hits.end());
  const double same = half * 1e-6;
  std::stable_sort(hits.begin(), hits.end(), [&](const PickHit& a, const PickHit& b) {
    return std::floor(a.rank / same) < std::floor(b.rank / same);
  });
  return hits;
}

std::optional<PickHit> Picker::nearest(const KvGePoint3d& world, const Accept& accept) const {
  auto hits = allAt(world, accept);
  if (hits.empty()) return std::nullopt;
  return std::move(hits.front());
}

}  // namespace kved
