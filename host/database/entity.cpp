#include "host/database/entity.h"

#include <algorithm>

#include "host/database/database.h"
#include "host/database/oldsections.h"

KVRX_DEFINE_ABSTRACT(KvDbEntity, KvDbObject)
KVRX_DEFINE_ABSTRACT(KvDbProxyEntity, KvDbEntity)
KVRX_DEFINE_ABSTRACT(KvDbSequenceEntity, KvDbProxyEntity)

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;

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
};
KVDB_FIELDS_DEFINE(KvDbEntity, KvDbObject)

Kvad::ErrorStatus KvDbEntity::setLayer(const wchar_t* name) {
  KvDbDatabase* drawing = kvdbDatabaseOrWorking(database());
  KvDbLayerTable* table = nullptr;
  if (!drawing) return Kvad::eNoDatabase;
  if (auto status = kvdbOpenObject(table, drawing->layerTableId()); status != Kvad::eOk) return status;
  KvDbObjectId id;
  const auto status = table->getAt(name, id);
  table->close();
  return status == Kvad::eOk ? setLayer(id) : status;
}

Kvad::ErrorStatus KvDbEntity::setLayer(KvDbObjectId id) {
  if (id.isNull()) return Kvad::eNullObjectId;
  assertWriteEnabled();
  layer_ = id;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setLinetype(KvDbObjectId id) {
  assertWriteEnabled();
  linetype_ = id;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setLinetypeScale(double scale) {
  if (!(scale > 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  linetypeScale_ = scale;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setColorIndex(int color) {
  if (color < kKvColorByBlock || color > kKvColorByLayer) return Kvad::eInvalidInput;
  assertWriteEnabled();
  color_ = static_cast<std::int16_t>(color);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setLineWeight(KvDb::LineWeight weight) {
  assertWriteEnabled();
  lineWeight_ = weight;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEntity::setVisibility(KvDb::Visibility visibility) {
  assertWriteEnabled();
  invisible_ = visibility;
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
  color_ = static_cast<std::int16_t>(database->cecolor().colorIndex());
  lineWeight_ = database->celweight();
}

void KvDbEntity::setPropertiesFrom(const KvDbEntity* other) {
  if (!other) return;
  assertWriteEnabled();
  layer_ = other->layer_;
  linetype_ = other->linetype_;
  linetypeScale_ = other->linetypeScale_;
  color_ = other->color_;
  lineWeight_ = other->lineWeight_;
  invisible_ = other->invisible_;
}

Kvad::ErrorStatus KvDbEntity::getGeomExtents(KvDbExtents&) const {
  return Kvad::eInvalidExtents;
}
Kvad::ErrorStatus KvDbEntity::transformBy(const KvGeMatrix3d&) {
  return Kvad::eNotApplicable;
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

KvDbObjectIdArray KvDbSequenceEntity::subEntities() const {
  KvDbObjectIdArray ids;
  for (KvDbObjectId id : subEntities_)
    if (id.isValid()) ids.append(id);
  return ids;
}

void KvDbSequenceEntity::appendSubEntity(KvDbObjectId id) {
  assertWriteEnabled();
  subEntities_.append(id);
}

void KvDbSequenceEntity::setEndMark(KvDbObjectId id) {
  assertWriteEnabled();
  end_ = id;
}

void KvDbSequenceEntity::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbProxyEntity::dwgOutFields(filer);
  filer.writeUInt32(static_cast<std::uint32_t>(subEntities_.length()));
  for (KvDbObjectId id : subEntities_) filer.writeId(id, KvDbReference::HardOwnership);
  filer.writeId(end_, KvDbReference::HardOwnership);
}

void KvDbSequenceEntity::dwgInFields(KvDbDwgFiler& filer) {
  KvDbProxyEntity::dwgInFields(filer);
  const std::uint32_t count = filer.readUInt32();
  subEntities_.removeAll();
  for (std::uint32_t i = 0; i < count; ++i) subEntities_.append(filer.readId(KvDbReference::HardOwnership));
  end_ = filer.readId(KvDbReference::HardOwnership);
}

bool KvDbEntity::worldDraw(KvGiWorldDraw* draw) {
  if (!draw) return false;
  KvGiSubEntityTraits& traits = draw->subEntityTraits();
  traits.setLayer(layer_);
  traits.setTrueColor(KvCmEntityColor::ofIndex(color_));
  traits.setLineType(linetype_);
  traits.setLineTypeScale(linetypeScale_);
  traits.setLineWeight(lineWeight_);
  traits.setFillType(kKvGiFillNever);
  return subWorldDraw(draw);
}

bool KvDbEntity::subWorldDraw(KvGiWorldDraw*) {
  return false;
}
