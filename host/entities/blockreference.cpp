#include "host/entities/blockreference.h"

#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/dictionary.h"
#include "host/database/draworder.h"
#include "host/entities/attribute.h"
#include "host/entities/curve.h"
#include "host/entities/internal/spatialfilter.h"

KVRX_DEFINE(KvDbBlockReference, KvDbEntity, L"INSERT")

namespace {

constexpr const wchar_t* kMarker = L"AcDbBlockReference";
constexpr const wchar_t* kArrayMarker = L"AcDbMInsertBlock";
/// More cells than this are drawn along the edges of the array only.
constexpr int kMostCells = 1 << 16;

const KvDbBlockTableRecord* recordOf(KvDbObjectId id) {
  return id.isValid() ? KvDbBlockTableRecord::cast(id.stub()->object) : nullptr;
}

/// Blocks that are being walked through by this thread: a block inside itself ends here.
class OpenBlock {
 public:
  explicit OpenBlock(const void* block)
      : isFirst_(std::find(open().begin(), open().end(), block) == open().end()) {
    open().push_back(block);
  }
  ~OpenBlock() { open().pop_back(); }
  OpenBlock(const OpenBlock&) = delete;
  OpenBlock& operator=(const OpenBlock&) = delete;
  bool isFirst() const { return isFirst_; }

 private:
  static std::vector<const void*>& open() {
    thread_local std::vector<const void*> blocks;
    return blocks;
  }
  bool isFirst_;
};

/// The definition of an attribute shows in a reference only when every reference has the same text.
bool isSeenInReference(const KvDbEntity& entity) {
  const auto* definition = KvDbAttributeDefinition::cast(&entity);
  return !definition || definition->isConstant();
}

}  // namespace

KvDbEntity* KvDbObjectIterator::entity() const {
  return objectId().stub() ? KvDbEntity::cast(objectId().stub()->object) : nullptr;
}

KvDbBlockReference::KvDbBlockReference(const KvGePoint3d& position, KvDbObjectId block)
    : block_(block), position_(position) {}

KvDbObjectId KvDbBlockReference::blockTableRecord() const {
  if (block_.isNull() && !name_.IsEmpty() && database())
    block_ = database()->recordId(KvDbTable::Block, name_);
  return block_;
}

CString KvDbBlockReference::blockName() const {
  const CString own = kvdbRecordName(blockTableRecord());
  return own.IsEmpty() ? name_ : own;
}

Kvad::ErrorStatus KvDbBlockReference::setBlockTableRecord(KvDbObjectId block) {
  if (block.isNull()) return Kvad::eNullObjectId;
  if (!recordOf(block)) return Kvad::eWrongObjectType;
  assertWriteEnabled();
  block_ = block;
  return Kvad::eOk;
}

KvGePoint3d KvDbBlockReference::position() const {
  return KvGeMatrix3d::planeToWorld(normal_) * position_;
}

Kvad::ErrorStatus KvDbBlockReference::setPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  position_ = KvGeMatrix3d::worldToPlane(normal_) * position;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::setRotation(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  rotation_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::setScaleFactors(const KvGeScale3d& scale) {
  for (double factor : {scale.sx, scale.sy, scale.sz})
    if (factor == 0 || !std::isfinite(factor)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  scaleX_ = scale.sx;
  scaleY_ = scale.sy;
  scaleZ_ = scale.sz;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::setNormal(const KvGeVector3d& normal) {
  if (normal.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const KvGePoint3d at = position();
  normal_ = normal.normal();
  position_ = KvGeMatrix3d::worldToPlane(normal_) * at;
  return Kvad::eOk;
}

KvGeMatrix3d KvDbBlockReference::cellTransform(int row, int column) const {
  const auto [sine, cosine] = kvge::sinCos(rotation());
  const double dx = column * columnSpacing_, dy = row * rowSpacing_;
  KvGeMatrix3d place;
  place.setCoordSystem(
      {position_.x + dx * cosine - dy * sine, position_.y + dx * sine + dy * cosine, position_.z},
      {cosine * scaleX_, sine * scaleX_, 0}, {-sine * scaleY_, cosine * scaleY_, 0}, {0, 0, scaleZ_});
  const KvDbBlockTableRecord* record = recordOf(blockTableRecord());
  const KvGePoint3d origin = record ? record->origin() : KvGePoint3d::kOrigin;
  if (!(origin == KvGePoint3d::kOrigin)) place = place * KvGeMatrix3d::translation(-origin.asVector());
  return normal_ == KvGeVector3d::kZAxis ? place : KvGeMatrix3d::planeToWorld(normal_) * place;
}

KvGeMatrix3d KvDbBlockReference::blockTransform() const {
  return cellTransform(0, 0);
}

Kvad::ErrorStatus KvDbBlockReference::setBlockTransform(const KvGeMatrix3d& transform) {
  constexpr double kSquare = 1e-9;
  const KvGeVector3d x = transform.column(0), y = transform.column(1), z = transform.column(2);
  const double sizes[] = {x.length(), y.length(), z.length()};
  for (double size : sizes)
    if (!(size > 0) || !std::isfinite(size)) return Kvad::eInvalidInput;
  const bool isSquare = std::fabs(x.dotProduct(y)) <= kSquare * sizes[0] * sizes[1] &&
                        std::fabs(y.dotProduct(z)) <= kSquare * sizes[1] * sizes[2] &&
                        std::fabs(z.dotProduct(x)) <= kSquare * sizes[2] * sizes[0];
  if (!isSquare) return Kvad::eCannotScaleNonUniformly;
  assertWriteEnabled();
  const KvGeVector3d normal = (scaleZ_ < 0 ? -z : z) / sizes[2];
  const KvDbBlockTableRecord* record = recordOf(blockTableRecord());
  const KvGePoint3d at = transform * (record ? record->origin() : KvGePoint3d::kOrigin);
  normal_ = normal;
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal_);
  position_ = toPlane * at;
  const KvGeVector3d along = toPlane * (scaleX_ < 0 ? -x : x);
  scaleX_ = scaleX_ < 0 ? -sizes[0] : sizes[0];
  const KvGeVector3d across = KvGeVector3d::kZAxis.crossProduct(along);
  scaleY_ = across.dotProduct(toPlane * y) < 0 ? -sizes[1] : sizes[1];
  scaleZ_ = scaleZ_ < 0 ? -sizes[2] : sizes[2];
  rotation_ = KvDbAngle::ofRadians(KvGeVector2d(along.x, along.y).angle());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::setArray(int rows, int columns, double rowSpacing,
                                               double columnSpacing) {
  if (rows < 1 || columns < 1 || rows > INT16_MAX || columns > INT16_MAX || !std::isfinite(rowSpacing) ||
      !std::isfinite(columnSpacing))
    return Kvad::eInvalidInput;
  assertWriteEnabled();
  rows_ = static_cast<std::int16_t>(rows);
  columns_ = static_cast<std::int16_t>(columns);
  rowSpacing_ = rowSpacing;
  columnSpacing_ = columnSpacing;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::appendAttribute(KvDbObjectId& id, KvDbEntity* attribute) {
  id.setNull();
  if (!attribute) return Kvad::eNullEntityPointer;
  if (attribute->fileTypeView() != L"ATTRIB") return Kvad::eWrongObjectType;
  return takeSubEntity(attribute, id);
}

Kvad::ErrorStatus KvDbBlockReference::appendAttribute(KvDbEntity* attribute) {
  KvDbObjectId id;
  return appendAttribute(id, attribute);
}

KvDbObjectIterator* KvDbBlockReference::attributeIterator() const {
  return new KvDbObjectIterator(subEntities());
}

void KvDbBlockReference::forCells(bool onlyCorners,
                                  const std::function<void(const KvGeMatrix3d&)>& visit) const {
  const int rows = std::max<int>(rows_, 1), columns = std::max<int>(columns_, 1);
  const bool onlyEdges = rows * columns > kMostCells;
  for (int row = 0; row < rows; ++row) {
    const bool isEndRow = row == 0 || row == rows - 1;
    for (int column = 0; column < columns; ++column) {
      const bool isEndColumn = column == 0 || column == columns - 1;
      if (onlyCorners && !(isEndRow && isEndColumn)) continue;
      if (onlyEdges && !isEndRow && !isEndColumn) continue;
      visit(cellTransform(row, column));
    }
  }
}

Kvad::ErrorStatus KvDbBlockReference::getGeomExtents(KvDbExtents& extents) const {
  KvDbExtents one;
  if (auto status = KvDbEntity::getGeomExtents(one); status != Kvad::eOk) return status;
  extents = one;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbBlockReference::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeMatrix3d before = blockTransform();
  const double rowSize = (matrix * (before.column(1) / std::max(before.column(1).length(), 1e-300))).length();
  const double columnSize =
      (matrix * (before.column(0) / std::max(before.column(0).length(), 1e-300))).length();
  const double oldX = scaleX_, oldY = scaleY_;
  if (auto status = setBlockTransform(matrix * before); status != Kvad::eOk) return status;
  // The array's axes are the turned ones without the factors' signs: a factor that has changed its sign sends
  // the rows the other way.
  const auto sign = [](double was, double is) { return (was < 0) != (is < 0) ? -1.0 : 1.0; };
  rowSpacing_ *= rowSize * sign(oldY, scaleY_);
  columnSpacing_ *= columnSize * sign(oldX, scaleX_);
  changeMembers([&](KvDbEntity& attribute) { attribute.transformBy(matrix); });
  return Kvad::eOk;
}

bool KvDbBlockReference::subWorldDraw(KvGiWorldDraw* draw) {
  const KvDbBlockTableRecord* record = recordOf(blockTableRecord());
  if (!record) return false;
  OpenBlock open(record);
  if (!open.isFirst()) return false;
  const KvDbSpatialFilter filter = kvdbSpatialFilterOf(*this);
  KvGiGeometry& geometry = draw->geometry();
  const KvDbObjectIdArray entities = kvdbDrawOrder(*record);
  forCells(false, [&](const KvGeMatrix3d& transform) {
    geometry.pushModelTransform(transform);
    if (filter.isOn()) geometry.pushClipBoundary(filter.boundary());
    for (KvDbObjectId id : entities) {
      KvDbEntity* entity = KvDbEntity::cast(id.stub()->object);
      if (entity && isSeenInReference(*entity) && geometry.draw(entity)) break;
    }
    if (filter.isOn()) geometry.popClipBoundary();
    geometry.popModelTransform();
  });
  if (members().empty()) return true;
  // Each cell shows the attributes.
  const KvGeVector3d first = cellTransform(0, 0).translation();
  forCells(false, [&](const KvGeMatrix3d& transform) {
    geometry.pushModelTransform(KvGeMatrix3d::translation(transform.translation() - first));
    for (const KvDbEntity* attribute : members()) geometry.draw(const_cast<KvDbEntity*>(attribute));
    geometry.popModelTransform();
  });
  return true;
}

Kvad::ErrorStatus KvDbBlockReference::explode(KvDbVoidPtrArray& parts) const {
  const KvDbBlockTableRecord* record = recordOf(blockTableRecord());
  if (!record || !record->explodable() || record->isFromExternalReference())
    return Kvad::eCannotExplodeEntity;
  const int before = parts.length();
  const KvDbObjectIdArray entities = record->entities();
  forCells(false, [&](const KvGeMatrix3d& transform) {
    for (KvDbObjectId id : entities)
      if (const KvDbEntity* entity = KvDbEntity::cast(id.stub()->object))
        kvdbAppendTransformed(kvdbCopyOf(*entity), transform, parts);
  });
  return parts.length() > before ? Kvad::eOk : Kvad::eCannotExplodeEntity;
}

// --- Filing
// --------------------------------------------------------------------------------------------------------------------

void KvDbBlockReference::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writeId(blockTableRecord(), KvDbReference::HardPointer);
  filer.writeString(name_);
  filer.writePoint3d(position_);
  for (double number : {scaleX_, scaleY_, scaleZ_, rowSpacing_, columnSpacing_, rotation_.degrees()})
    filer.writeDouble(number);
  filer.writeVector3d(normal_);
  filer.writeInt16(rows_);
  filer.writeInt16(columns_);
  filer.writeBool(isArrayed_);
  filer.writeBool(saysFollows_);
  sequenceOut(filer);
}

void KvDbBlockReference::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  block_ = filer.readId(KvDbReference::HardPointer);
  name_ = filer.readString();
  position_ = filer.readPoint3d();
  for (double* number : {&scaleX_, &scaleY_, &scaleZ_, &rowSpacing_, &columnSpacing_})
    *number = filer.readDouble();
  rotation_.setDegrees(filer.readDouble());
  normal_ = filer.readVector3d();
  rows_ = filer.readInt16();
  columns_ = filer.readInt16();
  isArrayed_ = filer.readBool();
  saysFollows_ = filer.readBool();
  sequenceIn(filer);
}

bool KvDbBlockReference::knowsMarker(std::wstring_view marker) const {
  return marker == kMarker || marker == kArrayMarker || KvDbEntity::knowsMarker(marker);
}

void KvDbBlockReference::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  const bool isArray = isArrayed_ || rows_ > 1 || columns_ > 1;
  const wchar_t* marker = isArray && isArrayed_ ? kArrayMarker : kMarker;
  writer.marker(marker);
  if (saysFollows_ || !members().empty()) writer.integer(66, 1);
  const KvDbObjectId block = blockTableRecord();
  writer.text(2, block.isNull() ? name_.view() : kvdbRecordNameView(block));
  writer.point(10, position_);
  const bool isScaled = scaleX_ != 1 || scaleY_ != 1 || scaleZ_ != 1;
  if (isScaled) {
    writer.real(41, scaleX_);
    writer.real(42, scaleY_);
    writer.real(43, scaleZ_);
  }
  if (rotation_.degrees() != 0) writer.real(50, rotation_.degrees());
  if (isArray) {
    writer.integer(70, columns_);
    writer.integer(71, rows_);
    writer.real(44, columnSpacing_);
    writer.real(45, rowSpacing_);
  }
  if (!(normal_ == KvGeVector3d::kZAxis)) writer.vector(210, normal_);
  writeUnknown(writer, marker);
}

bool KvDbBlockReference::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker,
                                    KvDxfResolver& resolver) {
  if (!marker.empty() && marker != kMarker && marker != kArrayMarker)
    return KvDbEntity::dxfInGroup(group, marker, resolver);
  if (marker == kArrayMarker) isArrayed_ = true;
  const auto factor = [&] { return group.real() == 0 || !std::isfinite(group.real()) ? 1 : group.real(); };
  const auto count = [&] {
    return static_cast<std::int16_t>(std::clamp<std::int64_t>(group.integer, 0, INT16_MAX));
  };
  switch (group.code) {
    case 66:
      saysFollows_ = group.integer != 0;
      return true;
    case 2:
      name_ = CString(group.text);
      block_ = resolver.block(group.text);
      return true;
    case 10:
      position_ = group.point;
      return true;
    case 41:
      scaleX_ = factor();
      return true;
    case 42:
      scaleY_ = factor();
      return true;
    case 43:
      scaleZ_ = factor();
      return true;
    case 50:
      rotation_.setDegrees(group.real());
      return true;
    case 70:
      columns_ = count();
      return true;
    case 71:
      rows_ = count();
      return true;
    case 44:
      columnSpacing_ = group.real();
      return true;
    case 45:
      rowSpacing_ = group.real();
      return true;
    case 210:
      normal_ = group.point.asVector();
      return true;
    default:
      return KvDbEntity::dxfInGroup(group, marker, resolver);
  }
}

// --- Copies
// --------------------------------------------------------------------------------------------------------------------

std::unique_ptr<KvDbEntity> kvdbCopyOf(const KvDbEntity& entity) {
  std::unique_ptr<KvDbEntity> copy(KvDbEntity::cast(entity.isA()->create()));
  if (!copy) {
    if (entity.isKindOf(KvDbSequenceEntity::desc()))
      copy = std::make_unique<KvDbSequenceEntity>(entity.fileType());
    else if (entity.isKindOf(KvDbProxyEntity::desc()))
      copy = std::make_unique<KvDbProxyEntity>(entity.fileType());
    else
      return nullptr;
  }
  KvDbMemoryFiler filer(KvDbDwgFiler::Purpose::Copy);
  entity.dwgOutFields(filer);
  filer.rewind();
  copy->dwgInFields(filer);
  copy->setOwnerId({});
  if (!copy->extensionDictionary().isNull()) copy->setExtensionDictionary({});
  for (KvDbObjectId reactor : copy->persistentReactors()) copy->removePersistentReactor(reactor);
  if (const KvDbSequence* row = entity.sequence()) {
    copy->sequence()->forgetMembers();
    KvDbObjectId id;
    for (const KvDbEntity* member : row->members())
      if (auto own = kvdbCopyOf(*member)) copy->sequence()->takeSubEntity(own.release(), id);
  }
  return copy;
}

void kvdbAppendTransformed(std::unique_ptr<KvDbEntity> entity, const KvGeMatrix3d& matrix,
                           KvDbVoidPtrArray& parts) {
  if (!entity) return;
  if (entity->transformBy(matrix) == Kvad::eOk) {
    parts.append(entity.release());
    return;
  }
  if (const KvDbCurve* curve = KvDbCurve::cast(entity.get())) {
    // Polylines go segment by segment, so that straight ones stay straight.
    KvDbVoidPtrArray segments;
    if (curve->explode(segments) == Kvad::eOk) {
      for (void* segment : segments)
        kvdbAppendTransformed(std::unique_ptr<KvDbEntity>(static_cast<KvDbEntity*>(segment)), matrix, parts);
      return;
    }
    const auto shape = curve->geCurve();
    const auto moved = shape ? shape->transformed(matrix) : nullptr;
    if (auto made = moved ? kvdbCurveOf(*moved) : nullptr) {
      made->setPropertiesFrom(entity.get());
      parts.append(static_cast<KvDbEntity*>(made.release()));
    }
    return;
  }
  // What can't be moved as a whole goes by its parts.
  KvDbVoidPtrArray inner;
  if (entity->explode(inner) != Kvad::eOk) return;
  for (void* part : inner)
    kvdbAppendTransformed(std::unique_ptr<KvDbEntity>(static_cast<KvDbEntity*>(part)), matrix, parts);
}
