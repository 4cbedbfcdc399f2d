#include "host/database/tracer.h"

#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/draworder.h"
#include "host/database/internal/outline_clip.h"

namespace {

/// Deeper nesting, and more drawables in one run, than any drawing has; beyond them nothing is drawn, so that
/// blocks that multiply each other end in bounded time.
constexpr std::size_t kMostNested = 64;
constexpr std::uint64_t kMostDrawn = 50'000'000;

bool isFinite(const KvGeMatrix3d& m) {
  for (const auto& row : m.entry)
    for (double v : row)
      if (!std::isfinite(v)) return false;
  return true;
}

/// A kept number of a class's section; nothing when there is none.
std::optional<std::int64_t> keptInteger(const KvDbObject& object, int code) {
  for (const KvDbUnknownSection& section : object.unknownSections())
    for (const KvDxfGroup& group : section.groups)
      if (group.code == code) return group.integer;
  return std::nullopt;
}

constexpr int kTrueColorCode = 420;

}  // namespace

struct KvGiTracer::Clip {
  std::unique_ptr<kvdb::OutlineClip> outline;  // null: the sink clips
  bool isSinks = false;
};

KvGiTracer::KvGiTracer(KvDbDatabase* database) : database_(database), transforms_(1) {
  if (database) layerZero_ = database->layerZero();
}
KvGiTracer::~KvGiTracer() = default;

void KvGiTracer::setBaseTransform(const KvGeMatrix3d& transform) {
  transforms_.assign(1, transform);
  isIdentity_ = transform.isEqualTo(KvGeMatrix3d::kIdentity);
}

bool KvGiTracer::traceBlock(KvDbObjectId block) {
  const KvDbBlockTableRecord* record =
      block.stub() ? KvDbBlockTableRecord::cast(block.stub()->object) : nullptr;
  if (!record) return isStopped_;
  for (KvDbObjectId id : kvdbDrawOrder(*record))
    if (id.stub() && trace(id.stub()->object)) break;
  return isStopped_;
}

double KvGiTracer::deviation(const KvGePoint3d&) const {
  const double scale = isIdentity_ ? 1 : transforms_.back().scale();
  return scale > 0 && std::isfinite(scale) ? deviation_ / scale : deviation_;
}

bool KvGiTracer::strokeConic(const KvGePoint3d&, const KvGeVector3d&, const KvGeVector3d&, double, double) {
  return false;
}
bool KvGiTracer::strokeSegments(const KvGePoint3d*, const unsigned char*, int) {
  return false;
}
bool KvGiTracer::takeText(const KvGeMatrix3d&, const KvGiTextLook&, const CString&) {
  return false;
}
bool KvGiTracer::beginClip(const std::vector<KvGePoint2d>&, bool) {
  return false;
}
bool KvGiTracer::beginDrawable(const KvGiDrawable&) {
  return true;
}

// --- Traits

void KvGiTracer::setColor(std::uint16_t color) {
  setTrueColor(KvCmEntityColor::ofIndex(std::min<int>(color, kKvColorByLayer)));
}
void KvGiTracer::setTrueColor(const KvCmEntityColor& color) {
  isStyleValid_ = isStyleValid_ && traits_.color == color;
  traits_.color = color;
}
void KvGiTracer::setLayer(KvDbObjectId layer) {
  isStyleValid_ = isStyleValid_ && traits_.layer == layer;
  traits_.layer = layer;
}
void KvGiTracer::setLineType(KvDbObjectId linetype) {
  isStyleValid_ = isStyleValid_ && traits_.linetype == linetype;
  traits_.linetype = linetype;
}
void KvGiTracer::setLineWeight(int weight) {
  isStyleValid_ = isStyleValid_ && traits_.lineWeight == weight;
  traits_.lineWeight = weight;
}
void KvGiTracer::setLineTypeScale(double scale) {
  isStyleValid_ = isStyleValid_ && traits_.linetypeScale == scale;
  traits_.linetypeScale = scale;
}
std::uint16_t KvGiTracer::color() const {
  return traits_.color.colorMethod() == KvCmEntityColor::kByColor
             ? std::uint16_t{7}
             : static_cast<std::uint16_t>(traits_.color.colorIndex());
}

// --- Resolving

bool KvGiTracer::isLayerZero(KvDbObjectId layer) {
  return layer.isNull() || layer == layerZero_ || (layerZero_.isNull() && kvdbRecordNameView(layer) == L"0");
}

KvDbObjectId KvGiTracer::effectiveLayer(KvDbObjectId layer) {
  return !block_.owner.isNull() && isLayerZero(layer) ? block_.style.layer : layer;
}

const KvGiLayerLook& KvGiTracer::layerLook(KvDbObjectId layer) {
  if (lastLook_ && lastLayer_ == layer) return *lastLook_;
  lastLayer_ = layer;
  const auto [place, isNew] = layers_.try_emplace(layer);
  lastLook_ = &place->second;
  if (!isNew) return *lastLook_;
  KvGiLayerLook& look = place->second;
  const KvDbLayerTableRecord* record =
      layer.stub() ? KvDbLayerTableRecord::cast(layer.stub()->object) : nullptr;
  if (record) {
    const auto rgb = keptInteger(*record, kTrueColorCode);
    look.color = rgb ? KvCmEntityColor::ofRgb(static_cast<std::uint32_t>(*rgb))
                     : KvCmEntityColor::ofIndex(std::clamp(record->colorIndex(), 1, 255));
    const KvDbObjectId linetype = record->linetypeObjectId();
    look.linetype = linetypeKind(linetype) == LinetypeKind::Own ? linetype : KvDbObjectId();
    look.lineWeight = record->lineWeight() < 0 ? int{KvDb::kLnWtByLwDefault} : int{record->lineWeight()};
    look.isHidden = record->isOff();
    look.isFrozen = record->isFrozen();
  }
  adjustLayer(layer, look);
  return look;
}

void KvGiTracer::forgetLooks() {
  layers_.clear();
  linetypes_.clear();
  lastLook_ = nullptr;
  isStyleValid_ = false;
}

KvGiTracer::LinetypeKind KvGiTracer::linetypeKind(KvDbObjectId linetype) {
  if (linetype.isNull()) return LinetypeKind::ByLayer;
  const auto [place, isNew] = linetypes_.try_emplace(linetype, LinetypeKind::Own);
  if (!isNew) return place->second;
  const std::wstring_view name = kvdbRecordNameView(linetype);
  const KvDbLinetypeTableRecord* record =
      linetype.stub() ? KvDbLinetypeTableRecord::cast(linetype.stub()->object) : nullptr;
  if (platform::equalNoCase(name, L"ByLayer"))
    place->second = LinetypeKind::ByLayer;
  else if (platform::equalNoCase(name, L"ByBlock"))
    place->second = LinetypeKind::ByBlock;
  else if (!record || record->dashes().empty())
    place->second = LinetypeKind::Continuous;
  return place->second;
}

void KvGiTracer::resolveStyle() {
  const KvDbObjectId layer = effectiveLayer(traits_.layer);
  const KvGiLayerLook& look = layerLook(layer);
  style_.layer = layer;
  style_.color = traits_.color.colorMethod() == KvCmEntityColor::kByLayer   ? look.color
                 : traits_.color.colorMethod() == KvCmEntityColor::kByBlock ? block_.style.color
                                                                            : traits_.color;
  switch (linetypeKind(traits_.linetype)) {
    case LinetypeKind::ByLayer:
      style_.linetype = look.linetype;
      break;
    case LinetypeKind::ByBlock:
      style_.linetype = block_.style.linetype;
      break;
    case LinetypeKind::Continuous:
      style_.linetype.setNull();
      break;
    case LinetypeKind::Own:
      style_.linetype = traits_.linetype;
      break;
  }
  style_.linetypeScale =
      traits_.linetypeScale > 0 && std::isfinite(traits_.linetypeScale) ? traits_.linetypeScale : 1;
  style_.lineWeight = traits_.lineWeight == KvDb::kLnWtByLayer   ? look.lineWeight
                      : traits_.lineWeight == KvDb::kLnWtByBlock ? block_.style.lineWeight
                      : traits_.lineWeight < 0                   ? int{KvDb::kLnWtByLwDefault}
                                                                 : traits_.lineWeight;
  isStyleHidden_ = look.isHidden || look.isFrozen;
  isStyleValid_ = true;
}

const KvGiStyle& KvGiTracer::style() {
  if (!isStyleValid_) resolveStyle();
  return style_;
}

bool KvGiTracer::isShown() {
  if (isStopped_) return false;
  if (!isStyleValid_) resolveStyle();
  return !isStyleHidden_;
}

// --- Drawables, transforms, clips

bool KvGiTracer::draw(KvGiDrawable* drawable) {
  if (!drawable || isStopped_) return isStopped_;
  if (stack_.size() >= kMostNested || ++drawn_ > kMostDrawn) return isStopped_;
  if (std::find(stack_.begin(), stack_.end(), drawable) != stack_.end()) return isStopped_;
  const KvDbEntity* entity = KvDbEntity::cast(drawable);
  if (entity && (entity->isErased() || entity->visibility() == KvDb::kInvisible)) return isStopped_;
  // What a drawable owns itself (attributes of a reference) doesn't stand in the block that it refers to.
  const KvDbEntity* around = stack_.empty() ? nullptr : KvDbEntity::cast(stack_.back());
  const bool isOwn =
      entity && around && !around->objectId().isNull() && entity->ownerId() == around->objectId();

  const Block block = block_;
  const Traits traits = traits_;
  const long marker = marker_;
  const std::size_t transforms = transforms_.size(), clips = clips_.size();
  KvDbObjectId owner = block.owner;
  if (!stack_.empty()) {
    block_.style = style();
    if (!isOwn && around) owner = around->objectId();
  }
  drawInside(drawable, owner);
  while (clips_.size() > clips) popClipBoundary();
  while (transforms_.size() > transforms) popModelTransform();
  block_ = block;
  traits_ = traits;
  marker_ = marker;
  isStyleValid_ = false;
  return isStopped_;
}

void KvGiTracer::drawInside(KvGiDrawable* drawable, KvDbObjectId owner) {
  traits_ = Traits();
  isStyleValid_ = false;
  block_.owner = owner;
  const KvDbEntity* entity = KvDbEntity::cast(drawable);
  if (entity && layerLook(effectiveLayer(entity->layerId())).isFrozen) return;
  stack_.push_back(drawable);
  if (beginDrawable(*drawable)) {
    drawable->worldDraw(this);
    endDrawable(*drawable);
  }
  stack_.pop_back();
}

void KvGiTracer::pushModelTransform(const KvGeMatrix3d& transform) {
  transforms_.push_back(isIdentity_ ? transform : transforms_.back() * transform);
  // What isn't finite would spoil everything behind it.
  if (!isFinite(transforms_.back())) transforms_.back() = KvGeMatrix3d::scaling(0);
  isIdentity_ = false;
}

void KvGiTracer::popModelTransform() {
  if (transforms_.size() > 1) transforms_.pop_back();
  isIdentity_ = transforms_.size() == 1 && transforms_.back().isEqualTo(KvGeMatrix3d::kIdentity);
}

bool KvGiTracer::pushClipBoundary(const KvGiClipBoundary& boundary) {
  std::vector<KvGePoint2d> points;
  const KvGeMatrix3d toModel = boundary.toPlane.inverse();
  const auto add = [&](double x, double y) {
    const KvGePoint3d world = toWorld(toModel * KvGePoint3d(x, y, 0));
    if (std::isfinite(world.x) && std::isfinite(world.y)) points.push_back(kvge::planar(world));
  };
  if (boundary.points && boundary.count == 2) {
    const KvGePoint2d a = boundary.points[0], b = boundary.points[1];
    add(a.x, a.y);
    add(b.x, a.y);
    add(b.x, b.y);
    add(a.x, b.y);
  } else if (boundary.points) {
    for (int i = 0; i < boundary.count; ++i) add(boundary.points[i].x, boundary.points[i].y);
  }
  Clip clip;
  clip.isSinks = beginClip(points, boundary.isInverted);
  if (!clip.isSinks)
    clip.outline = std::make_unique<kvdb::OutlineClip>(std::move(points), boundary.isInverted);
  clips_.push_back(std::move(clip));
  return isStopped_;
}

bool KvGiTracer::popClipBoundary() {
  if (clips_.empty()) return isStopped_;
  if (clips_.back().isSinks) endClip();
  clips_.pop_back();
  return isStopped_;
}

bool KvGiTracer::isCut() const {
  return std::any_of(clips_.begin(), clips_.end(), [](const Clip& clip) { return clip.outline != nullptr; });
}

void KvGiTracer::strokeWorld(const KvGePoint3d* points, int count, std::size_t clip) {
  while (clip < clips_.size() && !clips_[clip].outline) ++clip;
  if (clip >= clips_.size()) {
    stroke(points, count);
    return;
  }
  clips_[clip].outline->clipStroke(points, count,
                                   [&](const KvGePoint3d* part, int n) { strokeWorld(part, n, clip + 1); });
}

void KvGiTracer::cutArea(std::vector<KvGePoint3d>& points, std::vector<int>& counts) const {
  for (const Clip& clip : clips_)
    if (clip.outline) clip.outline->clipArea(points, counts);
}

void KvGiTracer::fillWorld(std::vector<KvGePoint3d>& points, std::vector<int>& counts) {
  cutArea(points, counts);
  if (!counts.empty()) fill({points.data(), counts.data(), static_cast<int>(counts.size())});
}
