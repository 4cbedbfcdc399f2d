#include "host/entities/dimension.h"

#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/blockreference.h"
#include "host/entities/internal/dimlayout.h"

KVRX_DEFINE_ABSTRACT(KvDbDimension, KvDbEntity)
KVRX_DEFINE(KvDbAlignedDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDbRotatedDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDb2LineAngularDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDb3PointAngularDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDbDiametricDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDbRadialDimension, KvDbDimension, L"DIMENSION")
KVRX_DEFINE(KvDbOrdinateDimension, KvDbDimension, L"DIMENSION")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;
constexpr const wchar_t* kMarker = L"AcDbDimension";

/// Files tell the kind by the second marker, the oldest ones by the low bits of group 70.
const KvRxClass* dimensionClass(std::span<const KvDxfGroup> groups) {
  constexpr int kMarkerCode = 100, kTypeCode = 70, kTypeMask = 15;
  const struct {
    const wchar_t* marker;
    int type;
    const KvRxClass* known;
  } kinds[] = {
      {L"AcDbRotatedDimension", 0, KvDbRotatedDimension::desc()},
      {L"AcDb2LineAngularDimension", 2, KvDb2LineAngularDimension::desc()},
      {L"AcDbDiametricDimension", 3, KvDbDiametricDimension::desc()},
      {L"AcDbRadialDimension", 4, KvDbRadialDimension::desc()},
      {L"AcDb3PointAngularDimension", 5, KvDb3PointAngularDimension::desc()},
      {L"AcDbOrdinateDimension", 6, KvDbOrdinateDimension::desc()},
      // Behind the rotated one, which bears this marker too.
      {L"AcDbAlignedDimension", 1, KvDbAlignedDimension::desc()},
  };
  bool hasMarkers = false;
  int type = 0;
  for (const KvDxfGroup& group : groups) {
    if (group.code == kTypeCode) type = group.asInt() & kTypeMask;
    hasMarkers = hasMarkers || (group.code == kMarkerCode && group.text == kMarker);
  }
  for (const auto& kind : kinds) {
    const bool isOfMarker = std::any_of(groups.begin(), groups.end(), [&](const KvDxfGroup& group) {
      return group.code == kMarkerCode && group.text == kind.marker;
    });
    if (hasMarkers ? isOfMarker : type == kind.type) return kind.known;
  }
  return nullptr;
}

[[maybe_unused]] const bool kRegistered = kvdbRegisterKinds(L"DIMENSION", dimensionClass);

}  // namespace

const KvDbField KvDbDimension::kFields[] = {
    kvdbSection(kMarker),
    kvdbField<&KvDbDimension::definition_>(Type::Point, 10),
    kvdbField<&KvDbDimension::textMiddle_>(Type::Point, 11),
    kvdbField<&KvDbDimension::type_>(Type::Int16, 70, kAlways),
    kvdbField<&KvDbDimension::text_>(Type::Text, 1, kUnlessDefault),
    kvdbField<&KvDbDimension::attachment_>(Type::Int16, 71, kUnlessDefault),
    kvdbField<&KvDbDimension::spacingStyle_>(Type::Int16, 72, kUnlessDefault, 1),
    kvdbField<&KvDbDimension::spacing_>(Type::Real, 41, kUnlessDefault, 1),
    kvdbField<&KvDbDimension::measurement_>(Type::Real, 42, kUnlessDefault),
    kvdbField<&KvDbDimension::textRotation_>(Type::Angle, 53, kUnlessDefault),
    kvdbField<&KvDbDimension::horizontal_>(Type::Angle, 51, kUnlessDefault),
    kvdbField<&KvDbDimension::normal_>(Type::Vector, 210, kUnlessDefault, 1),
    kvdbField<&KvDbDimension::style_>(Type::DimStyleName, 3, kUnlessDefault),
};

const KvDbField KvDbAlignedDimension::kOwnFields[] = {
    kvdbMarker(L"AcDbAlignedDimension"),
    kvdbField<&KvDbAlignedDimension::third_, KvDbAlignedDimension>(Type::Point, 13),
    kvdbField<&KvDbAlignedDimension::fourth_, KvDbAlignedDimension>(Type::Point, 14),
    kvdbField<&KvDbAlignedDimension::oblique_>(Type::Angle, 52, kUnlessDefault),
};
const KvDbField KvDbRotatedDimension::kOwnFields[] = {
    kvdbMarker(L"AcDbAlignedDimension"),
    kvdbField<&KvDbRotatedDimension::third_, KvDbRotatedDimension>(Type::Point, 13),
    kvdbField<&KvDbRotatedDimension::fourth_, KvDbRotatedDimension>(Type::Point, 14),
    kvdbField<&KvDbRotatedDimension::rotation_>(Type::Angle, 50),
    kvdbField<&KvDbRotatedDimension::oblique_>(Type::Angle, 52, kUnlessDefault),
    kvdbMarker(L"AcDbRotatedDimension"),
};
const KvDbField KvDb2LineAngularDimension::kOwnFields[] = {
    kvdbMarker(L"AcDb2LineAngularDimension"),
    kvdbField<&KvDb2LineAngularDimension::third_, KvDb2LineAngularDimension>(Type::Point, 13),
    kvdbField<&KvDb2LineAngularDimension::fourth_, KvDb2LineAngularDimension>(Type::Point, 14),
    kvdbField<&KvDb2LineAngularDimension::fifth_, KvDb2LineAngularDimension>(Type::Point, 15),
    kvdbField<&KvDb2LineAngularDimension::sixth_, KvDb2LineAngularDimension>(Type::Point, 16),
};
const KvDbField KvDb3PointAngularDimension::kOwnFields[] = {
    kvdbMarker(L"AcDb3PointAngularDimension"),
    kvdbField<&KvDb3PointAngularDimension::third_, KvDb3PointAngularDimension>(Type::Point, 13),
    kvdbField<&KvDb3PointAngularDimension::fourth_, KvDb3PointAngularDimension>(Type::Point, 14),
    kvdbField<&KvDb3PointAngularDimension::fifth_, KvDb3PointAngularDimension>(Type::Point, 15),
};
const KvDbField KvDbDiametricDimension::kOwnFields[] = {
    kvdbMarker(L"AcDbDiametricDimension"),
    kvdbField<&KvDbDiametricDimension::fifth_, KvDbDiametricDimension>(Type::Point, 15),
    kvdbField<&KvDbDiametricDimension::leader_, KvDbDiametricDimension>(Type::Real, 40),
};
const KvDbField KvDbRadialDimension::kOwnFields[] = {
    kvdbMarker(L"AcDbRadialDimension"),
    kvdbField<&KvDbRadialDimension::fifth_, KvDbRadialDimension>(Type::Point, 15),
    kvdbField<&KvDbRadialDimension::leader_, KvDbRadialDimension>(Type::Real, 40),
};
const KvDbField KvDbOrdinateDimension::kOwnFields[] = {
    kvdbMarker(L"AcDbOrdinateDimension"),
    kvdbField<&KvDbOrdinateDimension::third_, KvDbOrdinateDimension>(Type::Point, 13),
    kvdbField<&KvDbOrdinateDimension::fourth_, KvDbOrdinateDimension>(Type::Point, 14),
};

// clang-format off
KvDbFields KvDbAlignedDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDbRotatedDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDb2LineAngularDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDb3PointAngularDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDbDiametricDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDbRadialDimension::ownFields() const { return kOwnFields; }
KvDbFields KvDbOrdinateDimension::ownFields() const { return kOwnFields; }
std::vector<KvGePoint3d*> KvDbAlignedDimension::points() { return {&definition_, &third_, &fourth_}; }
std::vector<KvGePoint3d*> KvDbRotatedDimension::points() { return {&definition_, &third_, &fourth_}; }
std::vector<KvGePoint3d*> KvDb2LineAngularDimension::points() { return {&definition_, &third_, &fourth_, &fifth_}; }
std::vector<KvGePoint3d*> KvDb3PointAngularDimension::points() { return {&definition_, &third_, &fourth_, &fifth_}; }
std::vector<KvGePoint3d*> KvDbDiametricDimension::points() { return {&definition_, &fifth_}; }
std::vector<KvGePoint3d*> KvDbRadialDimension::points() { return {&definition_, &fifth_}; }
std::vector<KvGePoint3d*> KvDbOrdinateDimension::points() { return {&definition_, &third_, &fourth_}; }
// clang-format on

void KvDbDimension::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  kvdbDwgOut(*this, kFields, filer);
  kvdbDwgOut(*this, ownFields(), filer);
  filer.writeId(dimBlockId(), KvDbReference::HardPointer);
  filer.writeString(blockName_);
}

void KvDbDimension::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  kvdbDwgIn(*this, kFields, filer);
  kvdbDwgIn(*this, ownFields(), filer);
  block_ = filer.readId(KvDbReference::HardPointer);
  blockName_ = filer.readString();
}

void KvDbDimension::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  writer.marker(kMarker);
  const KvDbObjectId block = dimBlockId();
  const std::wstring_view name = block.isNull() ? blockName_.view() : kvdbRecordNameView(block);
  if (!name.empty()) writer.text(2, name);
  kvdbDxfOut(*this, kFields, writer);
  kvdbDxfOut(*this, ownFields(), writer);
}

bool KvDbDimension::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (group.code == 2 && (marker.empty() || marker == kMarker)) {
    blockName_ = CString(group.text);
    block_ = resolver.block(group.text);
    return true;
  }
  return kvdbDxfIn(*this, kFields, group, marker, resolver) ||
         kvdbDxfIn(*this, ownFields(), group, marker, resolver) ||
         KvDbEntity::dxfInGroup(group, marker, resolver);
}

bool KvDbDimension::knowsMarker(std::wstring_view marker) const {
  return kvdbHasMarker(kFields, marker) || kvdbHasMarker(ownFields(), marker) ||
         KvDbEntity::knowsMarker(marker);
}

// --- What all share
// ------------------------------------------------------------------------------------------------------------

KvDbObjectId KvDbDimension::dimBlockId() const {
  if (block_.isNull() && !blockName_.IsEmpty() && database())
    block_ = database()->recordId(KvDbTable::Block, blockName_);
  return block_;
}

Kvad::ErrorStatus KvDbDimension::setDimensionText(const wchar_t* text) {
  return setPoint(text_, CString(text ? text : L""));
}

Kvad::ErrorStatus KvDbDimension::setDimensionStyle(KvDbObjectId style) {
  if (style.isNull()) return Kvad::eNullObjectId;
  if (style.objectClass() != KvDbDimStyleTableRecord::desc()) return Kvad::eWrongObjectType;
  return setPoint(style_, style);
}

Kvad::ErrorStatus KvDbDimension::setDimVars(const KvDbDimVars& vars) {
  if (database() && !database()->isApplicationKnown(L"ACAD")) return Kvad::eRegappNotFound;
  return vars.writeOverrides(*this, KvDbDimVars::ofStyle(style_));
}

Kvad::ErrorStatus KvDbDimension::setVariable(KvDbDimVar variable, double value) {
  KvDbDimVars vars = dimVars();
  if (auto status = vars.set(variable, value); status != Kvad::eOk) return status;
  return setDimVars(vars);
}

KvGePoint3d KvDbDimension::textPosition() const {
  return KvGeMatrix3d::planeToWorld(normal_) * textMiddle_;
}

Kvad::ErrorStatus KvDbDimension::setTextPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  textMiddle_ = KvGeMatrix3d::worldToPlane(normal_) * position;
  type_ |= kUserPlace;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimension::useDefaultTextPosition() {
  assertWriteEnabled();
  type_ = static_cast<std::int16_t>(type_ & ~kUserPlace);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimension::setTextRotation(double angle) {
  return std::isfinite(angle) ? setPoint(textRotation_, KvDbAngle::ofRadians(angle)) : Kvad::eInvalidInput;
}
Kvad::ErrorStatus KvDbDimension::setHorizontalRotation(double angle) {
  return std::isfinite(angle) ? setPoint(horizontal_, KvDbAngle::ofRadians(-angle)) : Kvad::eInvalidInput;
}
Kvad::ErrorStatus KvDbDimension::setNormal(const KvGeVector3d& normal) {
  return normal.isZeroLength() ? Kvad::eInvalidInput : setPoint(normal_, normal.normal());
}

Kvad::ErrorStatus KvDbDimension::getMeasurement(double& value) const {
  double found = 0;
  if (!measure(found) || !std::isfinite(found)) return Kvad::eDegenerateGeometry;
  value = found;
  return Kvad::eOk;
}

CString KvDbDimension::contentsOf(const CString& text) const {
  double value = 0;
  if (getMeasurement(value) != Kvad::eOk) return {};
  const wchar_t* prefix = isA() == KvDbDiametricDimension::desc() ? L"\x2205"
                          : isA() == KvDbRadialDimension::desc()  ? L"R"
                                                                  : L"";
  KvDbDimVars vars = dimVars();
  // A factor below 0 is meant for layouts alone.
  const bool isInModel = !database() || blockId() == database()->modelSpaceId();
  if (vars.real(KvDbDimVar::Lfac) < 0 && isInModel) vars.set(KvDbDimVar::Lfac, 1.0);
  return kvdbDimensionContents(vars, text, value, isAngular(), prefix);
}

CString KvDbDimension::formattedMeasurement() const {
  return contentsOf(L"<>");
}

Kvad::ErrorStatus KvDbDimension::recomputeDimBlock(bool force) {
  KvDbDatabase* drawing = database();
  if (!drawing) return Kvad::eNotInDatabase;
  double value = 0;
  if (auto status = getMeasurement(value); status != Kvad::eOk) return status;
  if (!force && dimBlockId().isValid()) return Kvad::eOk;
  KvDbDimLayout layout(*this);
  if (!layOut(layout)) return Kvad::eDegenerateGeometry;
  assertWriteEnabled();
  measurement_ = value;
  if (isUsingDefaultTextPosition()) textMiddle_ = layout.textMiddle();
  KvDbBlockTableRecord* record = nullptr;
  KvDbObjectId block = dimBlockId();
  // A block that others refer to as well stays as it is.
  const bool isOwn = (type_ & kOwnBlock) != 0 && block.isValid();
  if (isOwn) {
    if (auto status = kvdbOpenObject(record, block, KvDb::kForWrite); status != Kvad::eOk) return status;
    for (KvDbObjectId id : record->entities()) {
      KvDbEntity* old = nullptr;
      if (kvdbOpenObject(old, id, KvDb::kForWrite) != Kvad::eOk) continue;
      old->erase();
      old->close();
    }
  } else {
    KvDbBlockTable* table = nullptr;
    if (auto status = drawing->getBlockTable(table, KvDb::kForWrite); status != Kvad::eOk) return status;
    record = new KvDbBlockTableRecord;
    record->setNameAsMade(kvdbFreeAnonymousName(*table, L'D'));
    block = drawing->addObject(record, table->objectId());
    table->addCopied(*record);
    table->close();
    record->ensureMarks();
  }
  for (auto& part : layout.takeParts()) {
    if (part->layerId().isNull()) part->setLayer(drawing->layerZero());
    KvDbEntity* own = part.release();
    record->appendKvDbEntity(own);
    own->close();
  }
  record->close();
  block_ = block;
  blockName_ = kvdbRecordName(block);
  type_ |= kOwnBlock;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimension::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  assertWriteEnabled();
  const KvGePoint3d middle = matrix * textPosition();
  const KvGeVector3d normal = KvGeVector3d(matrix * normal_).normal();
  const KvGeMatrix3d map = KvGeMatrix3d::worldToPlane(normal) * matrix * KvGeMatrix3d::planeToWorld(normal_);
  const KvGeVector3d along = map * KvGeVector3d::kXAxis;
  for (KvGePoint3d* point : points()) *point = matrix * *point;
  sixth_ = map * sixth_;
  normal_ = normal;
  textMiddle_ = KvGeMatrix3d::worldToPlane(normal_) * middle;
  leader_ *= matrix.scale();
  turnBy(KvGeVector2d(along.x, along.y).angle());
  // The block shows the old place: a new one is made for this dimension.
  if (database() && !block_.isNull()) {
    recomputeDimBlock(true);
  } else {
    block_.setNull();
    blockName_.Empty();
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimension::explode(KvDbVoidPtrArray& parts) const {
  const int before = parts.length();
  const auto* record =
      dimBlockId().isValid() ? KvDbBlockTableRecord::cast(dimBlockId().stub()->object) : nullptr;
  if (record) {
    for (KvDbObjectId id : record->entities()) {
      const KvDbEntity* entity = KvDbEntity::cast(id.stub()->object);
      // Points that only mark what was measured stay behind.
      if (!entity || kvdbRecordName(entity->layerId()).CompareNoCase(L"Defpoints") == 0) continue;
      if (auto copy = kvdbCopyOf(*entity)) parts.append(copy.release());
    }
  } else {
    KvDbDimLayout layout(*this);
    if (layOut(layout))
      for (auto& part : layout.takeParts())
        if (!part->isKindOf(KvDbPoint::desc())) parts.append(part.release());
  }
  return parts.length() > before ? Kvad::eOk : Kvad::eCannotExplodeEntity;
}

bool KvDbDimension::subWorldDraw(KvGiWorldDraw* draw) {
  const auto* record =
      dimBlockId().isValid() ? KvDbBlockTableRecord::cast(dimBlockId().stub()->object) : nullptr;
  if (record) {
    for (KvDbObjectId id : record->entities())
      if (KvDbEntity* entity = KvDbEntity::cast(id.stub()->object)) draw->geometry().draw(entity);
    return true;
  }
  // Not yet in a block: drawn as the block would be.
  KvDbDimLayout layout(*this);
  if (!layOut(layout)) return false;
  for (const auto& part : layout.takeParts()) draw->geometry().draw(part.get());
  return true;
}

// --- Kinds
// ---------------------------------------------------------------------------------------------------------------------

KvDbAlignedDimension::KvDbAlignedDimension(const KvGePoint3d& xLine1, const KvGePoint3d& xLine2,
                                           const KvGePoint3d& dimLine, const wchar_t* text,
                                           KvDbObjectId style)
    : KvDbAlignedDimension() {
  third_ = xLine1;
  fourth_ = xLine2;
  definition_ = dimLine;
  setDimensionText(text);
  if (!style.isNull()) setDimensionStyle(style);
}

KvDbRotatedDimension::KvDbRotatedDimension(double rotation, const KvGePoint3d& xLine1,
                                           const KvGePoint3d& xLine2, const KvGePoint3d& dimLine,
                                           const wchar_t* text, KvDbObjectId style)
    : KvDbRotatedDimension() {
  third_ = xLine1;
  fourth_ = xLine2;
  definition_ = dimLine;
  rotation_ = KvDbAngle::ofRadians(rotation);
  setDimensionText(text);
  if (!style.isNull()) setDimensionStyle(style);
}

KvDbDiametricDimension::KvDbDiametricDimension(const KvGePoint3d& chord, const KvGePoint3d& farChord,
                                               double leaderLength, const wchar_t* text, KvDbObjectId style)
    : KvDbDiametricDimension() {
  fifth_ = chord;
  definition_ = farChord;
  leader_ = leaderLength;
  setDimensionText(text);
  if (!style.isNull()) setDimensionStyle(style);
}

KvDbRadialDimension::KvDbRadialDimension(const KvGePoint3d& center, const KvGePoint3d& chord,
                                         double leaderLength, const wchar_t* text, KvDbObjectId style)
    : KvDbRadialDimension() {
  definition_ = center;
  fifth_ = chord;
  leader_ = leaderLength;
  setDimensionText(text);
  if (!style.isNull()) setDimensionStyle(style);
}

KvDbOrdinateDimension::KvDbOrdinateDimension(bool usesXAxis, const KvGePoint3d& definingPoint,
                                             const KvGePoint3d& leaderEndPoint, const wchar_t* text,
                                             KvDbObjectId style)
    : KvDbOrdinateDimension() {
  useXAxis(usesXAxis);
  third_ = definingPoint;
  fourth_ = leaderEndPoint;
  setDimensionText(text);
  if (!style.isNull()) setDimensionStyle(style);
}

KvGePoint3d KvDb2LineAngularDimension::arcPoint() const {
  return KvGeMatrix3d::planeToWorld(normal()) * sixth_;
}
Kvad::ErrorStatus KvDb2LineAngularDimension::setArcPoint(const KvGePoint3d& point) {
  return setPoint(sixth_, KvGeMatrix3d::worldToPlane(normal()) * point);
}

Kvad::ErrorStatus KvDbOrdinateDimension::useXAxis(bool on) {
  return setPoint(type_, static_cast<std::int16_t>(on ? type_ | kOrdinateX : type_ & ~kOrdinateX));
}
