#include "host/database/entity.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/oldsections.h"
#include "host/database/primitives.h"

KVRX_DEFINE_ABSTRACT(KvDbEntity, KvDbObject)
KVRX_DEFINE_ABSTRACT(KvDbProxyEntity, KvDbEntity)
KVRX_DEFINE_ABSTRACT(KvDbSequenceEntity, KvDbProxyEntity)

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;
constexpr std::int16_t kForeground =
    7;  // stands beside a colour of red, green, blue for readers that know none

}  // namespace

void KvDbExtents::addPoint(const KvGePoint3d& p) {
  min_ = {std::min(min_.x, p.x), std::min(min_.y, p.y), std::min(min_.z, p.z)};
  max_ = {std::max(max_.x, p.x), std::max(max_.y, p.y), std::max(max_.z, p.z)};
}

void KvDbExtents::addExt(const KvDbExtents& other) {
  if (other.isEmpty()) return;
  addPoint(other.min_);
  addPoint(other.max_);
}

const KvDbField KvDbEntity::kFields[] = {
    kvdbMarker(L"AcDbEntity"),
    kvdbField<&KvDbEntity::layer_>(Type::LayerName, 8, kAlways),
    kvdbField<&KvDbEntity::linetype_>(Type::LinetypeName, 6, kUnlessDefault),
    kvdbField<&KvDbEntity::color_>(Type::Int16, 62, kUnlessDefault, kKvColorByLayer, -256, 257),
    kvdbField<&KvDbEntity::lineWeight_>(Type::Int16, 370, kUnlessDefault, KvDb::kLnWtByLayer, -3, 211),
    kvdbField<&KvDbEntity::linetypeScale_>(Type::Real, 48, kUnlessDefault, 1),
    kvdbField<&KvDbEntity::invisible_>(Type::Int16, 60, kUnlessDefault, 0),
    kvdbField<&KvDbEntity::rgb_>(Type::Int32, 420, kUnlessDefault, -1),
};
KVDB_FIELDS_DEFINE(KvDbEntity, KvDbObject)

namespace {

/// Does the same to every owned entity that can be opened.
template <class Change>
void alsoSubEntities(KvDbEntity& entity, bool wanted, Change change) {
  KvDbSequence* row = wanted ? entity.sequence() : nullptr;
  if (row) row->changeMembers(change);
}

Kvad::ErrorStatus recordNamed(const KvDbEntity& entity, KvDbTable table, const wchar_t* name,
                              KvDbObjectId& id) {
  KvDbDatabase* drawing = kvdbDatabaseOrWorking(entity.database());
  if (!drawing) return Kvad::eNoDatabase;
  if (!name) return Kvad::eInvalidInput;
  id = drawing->recordId(table, name);
  return id.isValid() ? Kvad::eOk : Kvad::eKeyNotFound;
}

}  // namespace

Kvad::ErrorStatus KvDbEntity::setLayer(const wchar_t* name, bool doSubents) {
  KvDbObjectId id;
  const auto status = recordNamed(*this, KvDbTable::Layer, name, id);
  return status == Kvad::eOk ? setLayer(id, doSubents) : status;
}

Kvad::ErrorStatus KvDbEntity::setLayer(KvDbObjectId id, bool doSubents) {
  if (id.isNull()) return Kvad::eNullObjectId;
  assertWriteEnabled();
  layer_ = id;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setLayer(id); });
  return Kvad::eOk;
}

CString KvDbEntity::linetype() const {
  return linetype_.isNull() ? CString(L"ByLayer") : kvdbRecordName(linetype_);
}

Kvad::ErrorStatus KvDbEntity::setLinetype(const wchar_t* name, bool doSubents) {
  KvDbObjectId id;
  const auto status = recordNamed(*this, KvDbTable::Linetype, name, id);
  return status == Kvad::eOk ? setLinetype(id, doSubents) : status;
}

Kvad::ErrorStatus KvDbEntity::setLinetype(KvDbObjectId id, bool doSubents) {
  assertWriteEnabled();
  linetype_ = id;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setLinetype(id); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setLinetypeScale(double scale, bool doSubents) {
  if (!(scale > 0) || !std::isfinite(scale)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  linetypeScale_ = scale;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setLinetypeScale(scale); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setColorIndex(int color, bool doSubents) {
  if (color < kKvColorByBlock || color > kKvColorByLayer) return Kvad::eInvalidInput;
  assertWriteEnabled();
  color_ = static_cast<std::int16_t>(color);
  rgb_ = -1;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setColorIndex(color); });
  return Kvad::eOk;
}

KvCmEntityColor KvDbEntity::color() const {
  return rgb_ >= 0 ? KvCmEntityColor::ofRgb(static_cast<std::uint32_t>(rgb_))
                   : KvCmEntityColor::ofIndex(color_);
}

Kvad::ErrorStatus KvDbEntity::setColor(const KvCmEntityColor& color, bool doSubents) {
  if (color.colorMethod() != KvCmEntityColor::kByColor) return setColorIndex(color.colorIndex(), doSubents);
  assertWriteEnabled();
  rgb_ = static_cast<std::int32_t>(color.rgb());
  if (color_ == kKvColorByLayer || color_ == kKvColorByBlock) color_ = kForeground;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setColor(color); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setLineWeight(KvDb::LineWeight weight, bool doSubents) {
  assertWriteEnabled();
  lineWeight_ = weight;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setLineWeight(weight); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setVisibility(KvDb::Visibility visibility, bool doSubents) {
  assertWriteEnabled();
  invisible_ = visibility;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setVisibility(visibility); });
  return Kvad::eOk;
}

void KvDbEntity::setDatabaseDefaults(KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return;
  assertWriteEnabled();
  layer_ = database->clayer();
  linetype_ = database->celtype();
  if (linetype_ == database->byLayerLinetype()) linetype_.setNull();
  linetypeScale_ = database->celtscale();
  const KvCmEntityColor current = database->cecolor();
  const bool isRgb = current.colorMethod() == KvCmEntityColor::kByColor;
  color_ = isRgb ? kForeground : static_cast<std::int16_t>(current.colorIndex());
  rgb_ = isRgb ? static_cast<std::int32_t>(current.rgb()) : -1;
  lineWeight_ = database->celweight();
}

Kvad::ErrorStatus KvDbEntity::setPropertiesFrom(const KvDbEntity* other, bool doSubents) {
  if (!other) return Kvad::eNullEntityPointer;
  assertWriteEnabled();
  layer_ = other->layer_;
  linetype_ = other->linetype_;
  linetypeScale_ = other->linetypeScale_;
  color_ = other->color_;
  rgb_ = other->rgb_;
  lineWeight_ = other->lineWeight_;
  invisible_ = other->invisible_;
  alsoSubEntities(*this, doSubents, [&](KvDbEntity& sub) { sub.setPropertiesFrom(other); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::getGeomExtents(KvDbExtents& extents) const {
  return kvdbDrawnExtents(*this, extents);
}
Kvad::ErrorStatus KvDbEntity::transformBy(const KvGeMatrix3d&) {
  return Kvad::eNotApplicable;
}
Kvad::ErrorStatus KvDbEntity::explode(KvDbVoidPtrArray&) const {
  return Kvad::eCannotExplodeEntity;
}
void KvDbEntity::getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const {
  kvdbDrawnCurves(*this, curves);
}

void KvDbProxyEntity::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writeString(CString(type_.view()));
}

void KvDbProxyEntity::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  type_ = KvDbSharedText(filer.readString().view());
}

void KvDbProxyEntity::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                                   KvDxfResolver& resolver) {
  if (marker.empty() || knowsMarker(marker))
    KvDbEntity::dxfInSection(marker, groups, resolver);
  else
    keepSection(groups);
}

void KvDbProxyEntity::dxfInEnd(KvDxfResolver& resolver) {
  KvDbEntity::dxfInEnd(resolver);
  // Groups without any marker come from the oldest files; later ones want them divided.
  if (unknownSections().size() != 1 || !unknownSections().front().marker.isEmpty()) return;
  editUnknownSections() = kvdbDivideOldGroups(type_.view(), unknownSections().front().groups);
}

std::unique_ptr<KvDbObject> KvDbProxyEntity::makeSame() const {
  if (isA() != desc())
    if (auto known = KvDbEntity::makeSame()) return known;
  return std::make_unique<KvDbProxyEntity>(type_);
}

std::unique_ptr<KvDbObject> KvDbSequenceEntity::makeSame() const {
  return std::make_unique<KvDbSequenceEntity>(KvDbSharedText(fileTypeView()));
}

void KvDbEntity::keepOwnedOf(const KvDbObject& other) {
  const auto* entity = cast(&other);
  if (sequence() && entity && entity->sequence()) sequence()->shareRowOf(*entity->sequence());
}

void KvDbEntity::copyOwnedOf(const KvDbObject& other) {
  const auto* entity = cast(&other);
  if (sequence() && entity && entity->sequence()) sequence()->copyRowOf(*entity->sequence());
}

void KvDbSequence::shareRowOf(const KvDbSequence& other) {
  subEntities_ = other.subEntities_;
  end_ = other.end_;
}

void KvDbSequence::copyRowOf(const KvDbSequence& other) {
  subEntities_.removeAll();
  end_.setNull();
  waiting_.clear();
  for (const KvDbEntity* member : other.members())
    if (KvDbEntity* copy = KvDbEntity::cast(member->clone())) waiting_.emplace_back(copy);
  if (sequenceOwner().database()) settle();
}

KvDbObjectIdArray KvDbSequence::subEntities() const {
  KvDbObjectIdArray ids;
  for (KvDbObjectId id : subEntities_)
    if (id.isValid()) ids.append(id);
  return ids;
}

void KvDbSequence::appendSubEntity(KvDbObjectId id) {
  sequenceOwner().assertWriteEnabled();
  subEntities_.append(id);
}

void KvDbSequence::insertSubEntity(int index, KvDbObjectId id) {
  sequenceOwner().assertWriteEnabled();
  subEntities_.insertAt(std::clamp(index, 0, subEntities_.length()), id);
}

void KvDbSequence::setEndMark(KvDbObjectId id) {
  sequenceOwner().assertWriteEnabled();
  end_ = id;
}

Kvad::ErrorStatus KvDbSequence::takeSubEntity(KvDbEntity* entity, KvDbObjectId& id) {
  id.setNull();
  if (!entity) return Kvad::eNullEntityPointer;
  KvDbEntity& owner = sequenceOwner();
  KvDbDatabase* drawing = owner.database();
  owner.assertWriteEnabled();
  if (!drawing) {
    waiting_.emplace_back(entity);
    return Kvad::eOk;
  }
  if (entity->layerId().isNull()) entity->setPropertiesFrom(&owner);
  id = drawing->addObject(entity, owner.objectId());
  subEntities_.append(id);
  if (end_.isNull()) {
    auto* mark = new KvDbSequenceEnd;
    mark->setPropertiesFrom(&owner);
    end_ = drawing->addObject(mark, owner.objectId());
    mark->close();
  }
  return Kvad::eOk;
}

void KvDbSequence::settle() {
  for (auto& entity : std::exchange(waiting_, {})) {
    KvDbEntity* taken = entity.release();
    KvDbObjectId id;
    takeSubEntity(taken, id);
    taken->close();
  }
}

std::vector<const KvDbEntity*> KvDbSequence::members() const {
  std::vector<const KvDbEntity*> all;
  for (KvDbObjectId id : subEntities_)
    if (id.isValid())
      if (const KvDbEntity* entity = KvDbEntity::cast(id.stub()->object)) all.push_back(entity);
  for (const auto& entity : waiting_) all.push_back(entity.get());
  return all;
}

void KvDbSequence::changeMembers(const std::function<void(KvDbEntity&)>& change) {
  for (KvDbObjectId id : subEntities()) {
    KvDbEntity* sub = nullptr;
    if (kvdbOpenObject(sub, id, KvDb::kForWrite) != Kvad::eOk) continue;
    change(*sub);
    sub->close();
  }
  for (const auto& entity : waiting_) change(*entity);
}

void KvDbEntity::addedToDatabase() {
  if (KvDbSequence* row = sequence()) row->settle();
}

void KvDbSequence::sequenceOut(KvDbDwgFiler& filer) const {
  filer.writeUInt32(static_cast<std::uint32_t>(subEntities_.length()));
  for (KvDbObjectId id : subEntities_) filer.writeId(id, KvDbReference::HardOwnership);
  filer.writeId(end_, KvDbReference::HardOwnership);
}

void KvDbSequence::sequenceIn(KvDbDwgFiler& filer) {
  const std::uint32_t count = filer.readUInt32();
  subEntities_.removeAll();
  for (std::uint32_t i = 0; i < count; ++i) subEntities_.append(filer.readId(KvDbReference::HardOwnership));
  end_ = filer.readId(KvDbReference::HardOwnership);
}

void KvDbSequenceEntity::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbProxyEntity::dwgOutFields(filer);
  sequenceOut(filer);
}

void KvDbSequenceEntity::dwgInFields(KvDbDwgFiler& filer) {
  KvDbProxyEntity::dwgInFields(filer);
  sequenceIn(filer);
}

namespace {

std::map<std::wstring, KvDbKindChooser, std::less<>>& choosers() {
  static std::map<std::wstring, KvDbKindChooser, std::less<>> all;
  return all;
}

}  // namespace

bool kvdbRegisterKinds(const wchar_t* type, KvDbKindChooser chooser) {
  choosers()[type] = chooser;
  return true;
}

std::unique_ptr<KvDbEntity> kvdbMakeEntity(KvDbSharedText type, const KvRxClass* known,
                                           std::span<const KvDxfGroup> groups) {
  const auto chooser = choosers().find(type.view());
  if (chooser != choosers().end()) known = chooser->second(groups);
  if (known && known->isDerivedFrom(KvDbEntity::desc()))
    if (auto* entity = KvDbEntity::cast(known->create())) return std::unique_ptr<KvDbEntity>(entity);
  if (type.view() == L"POLYLINE" || type.view() == L"INSERT")
    return std::make_unique<KvDbSequenceEntity>(type);
  return std::make_unique<KvDbProxyEntity>(type);
}

bool KvDbEntity::worldDraw(KvGiWorldDraw* draw) {
  if (!draw) return false;
  KvGiSubEntityTraits& traits = draw->subEntityTraits();
  traits.setLayer(layer_);
  traits.setTrueColor(color());
  traits.setLineType(linetype_);
  traits.setLineTypeScale(linetypeScale_);
  traits.setLineWeight(lineWeight_);
  traits.setFillType(kKvGiFillNever);
  return subWorldDraw(draw);
}

Kvad::ErrorStatus KvDbEntity::highlight(const KvDbFullSubentPath& path) const {
  if (!database()) return Kvad::eNotInDatabase;
  kvdbHostApplicationServices()->setHighlighted(objectId(), path, true);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::unhighlight(const KvDbFullSubentPath& path) const {
  if (!database()) return Kvad::eNotInDatabase;
  kvdbHostApplicationServices()->setHighlighted(objectId(), path, false);
  return Kvad::eOk;
}

bool KvDbEntity::subWorldDraw(KvGiWorldDraw*) {
  return false;
}
