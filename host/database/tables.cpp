#include "host/database/tables.h"

#include <algorithm>

#include "host/database/database.h"

KVRX_DEFINE(KvDbLayerTableRecord, KvDbSymbolTableRecord, L"LAYER")
KVRX_DEFINE(KvDbLayerTable, KvDbSymbolTable, L"")
KVRX_DEFINE(KvDbLinetypeTableRecord, KvDbSymbolTableRecord, L"LTYPE")
KVRX_DEFINE(KvDbLinetypeTable, KvDbSymbolTable, L"")
KVRX_DEFINE(KvDbTextStyleTableRecord, KvDbSymbolTableRecord, L"STYLE")
KVRX_DEFINE(KvDbTextStyleTable, KvDbSymbolTable, L"")
KVRX_DEFINE(KvDbDimStyleTableRecord, KvDbSymbolTableRecord, L"DIMSTYLE")
KVRX_DEFINE(KvDbDimStyleTable, KvDbSymbolTable, L"")
KVRX_DEFINE_ABSTRACT(KvDbStoredTableRecord, KvDbSymbolTableRecord)
KVRX_DEFINE(KvDbViewTableRecord, KvDbStoredTableRecord, L"VIEW")
KVRX_DEFINE(KvDbViewTable, KvDbSymbolTable, L"")
KVRX_DEFINE(KvDbUCSTableRecord, KvDbStoredTableRecord, L"UCS")
KVRX_DEFINE(KvDbUCSTable, KvDbSymbolTable, L"")
KVRX_DEFINE(KvDbViewportTableRecord, KvDbStoredTableRecord, L"VPORT")
KVRX_DEFINE(KvDbViewportTable, KvDbSymbolTable, L"")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;

}  // namespace

bool KvDbTextStyleTable::acceptsName(KvDbSymbolTableRecord& record) const {
  const auto* style = KvDbTextStyleTableRecord::cast(&record);
  const bool isOfShapes = style && style->isShapeFile() && record.getName().IsEmpty();
  return isOfShapes || KvDbSymbolTable::acceptsName(record);
}

KvDbObjectId KvDbTextStyleTable::shapeFileRecord(const CString& file) const {
  const auto base = [](std::wstring_view name) {
    if (const std::size_t slash = name.find_last_of(L"\\/"); slash != name.npos)
      name.remove_prefix(slash + 1);
    return name.substr(0, name.rfind(L'.'));
  };
  for (KvDbObjectId id : records()) {
    const auto* record = KvDbTextStyleTableRecord::cast(id.stub()->object);
    if (record && record->isShapeFile() &&
        platform::equalNoCase(base(record->fileName().view()), base(file.view())))
      return id;
  }
  return {};
}

// The marker, name and flags are the base's; these rows stand behind them in the same section.
const KvDbField KvDbLayerTableRecord::kFields[] = {
    kvdbSection(L"AcDbLayerTableRecord"),
    kvdbField<&KvDbLayerTableRecord::color_>(Type::Int16, 62, kAlways, 7, -255, 255),
    kvdbField<&KvDbLayerTableRecord::linetype_>(Type::LinetypeName, 6),
    kvdbField<&KvDbLayerTableRecord::isPlottable_>(Type::Bool, 290, kUnlessDefault, 1),
    kvdbField<&KvDbLayerTableRecord::lineWeight_>(Type::Int16, 370, kAlways, KvDb::kLnWtByLwDefault, -3, 211),
    kvdbField<&KvDbLayerTableRecord::plotStyle_>(Type::HardPointer, 390, kUnlessDefault),
    kvdbField<&KvDbLayerTableRecord::material_>(Type::HardPointer, 347, kUnlessDefault),
};
KVDB_FIELDS_DEFINE(KvDbLayerTableRecord, KvDbSymbolTableRecord)

Kvad::ErrorStatus KvDbLayerTableRecord::setColorIndex(int color) {
  if (color < 1 || color > 255) return Kvad::eInvalidInput;
  assertWriteEnabled();
  color_ = static_cast<std::int16_t>(isOff() ? -color : color);
  return Kvad::eOk;
}

void KvDbLayerTableRecord::setLinetypeObjectId(KvDbObjectId id) {
  assertWriteEnabled();
  linetype_ = id;
}

void KvDbLayerTableRecord::setLineWeight(KvDb::LineWeight weight) {
  assertWriteEnabled();
  lineWeight_ = weight;
}

void KvDbLayerTableRecord::setIsOff(bool off) {
  assertWriteEnabled();
  color_ = static_cast<std::int16_t>(off ? -colorIndex() : colorIndex());
}

void KvDbLayerTableRecord::setIsPlottable(bool plottable) {
  assertWriteEnabled();
  isPlottable_ = plottable;
}

Kvad::ErrorStatus KvDbLayerTableRecord::subErase(bool erasing) {
  if (!erasing || !database()) return Kvad::eOk;
  const KvDbDatabase& drawing = *database();
  const bool isNeeded = objectId() == drawing.layerZero();
  return isNeeded || drawing.isReferenced(objectId()) ? Kvad::eCannotBeErased : Kvad::eOk;
}

void KvDbLayerTableRecord::setFlag(int flag, bool on) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(on ? flags_ | flag : flags_ & ~flag);
}

const KvDbField KvDbTextStyleTableRecord::kFields[] = {
    kvdbSection(L"AcDbTextStyleTableRecord"),
    kvdbField<&KvDbTextStyleTableRecord::height_>(Type::Real, 40, kAlways, 0, 0, 1e300),
    kvdbField<&KvDbTextStyleTableRecord::widthFactor_>(Type::Real, 41, kAlways, 1),
    kvdbField<&KvDbTextStyleTableRecord::oblique_>(Type::Angle, 50),
    kvdbField<&KvDbTextStyleTableRecord::generation_>(Type::Int16, 71),
    kvdbField<&KvDbTextStyleTableRecord::lastHeight_>(Type::Real, 42, kAlways, 2.5),
    kvdbField<&KvDbTextStyleTableRecord::fontFile_>(Type::Text, 3),
    kvdbField<&KvDbTextStyleTableRecord::bigFontFile_>(Type::Text, 4),
};
KVDB_FIELDS_DEFINE(KvDbTextStyleTableRecord, KvDbSymbolTableRecord)

void KvDbTextStyleTableRecord::setTextSize(double height) {
  assertWriteEnabled();
  height_ = height;
}

void KvDbTextStyleTableRecord::setXScale(double factor) {
  assertWriteEnabled();
  widthFactor_ = factor;
}

void KvDbTextStyleTableRecord::setObliquingAngle(double angle) {
  assertWriteEnabled();
  oblique_ = KvDbAngle::ofRadians(angle);
}

void KvDbTextStyleTableRecord::setGeneration(int flag, bool on) {
  assertWriteEnabled();
  generation_ = static_cast<std::int16_t>(on ? generation_ | flag : generation_ & ~flag);
}

void KvDbTextStyleTableRecord::setFileName(const CString& file) {
  assertWriteEnabled();
  fontFile_ = file;
}
void KvDbTextStyleTableRecord::setIsShapeFile(bool isShapeFile) {
  assertWriteEnabled();
  flags_ = static_cast<std::int16_t>(isShapeFile ? flags_ | kShapeFile : flags_ & ~kShapeFile);
}
void KvDbTextStyleTableRecord::setBigFontFileName(const CString& file) {
  assertWriteEnabled();
  bigFontFile_ = file;
}

void KvDbLinetypeTableRecord::setAsciiDescription(const CString& text) {
  assertWriteEnabled();
  description_ = text;
}

void KvDbLinetypeTableRecord::setDashes(std::vector<KvDbLinetypeDash> dashes) {
  assertWriteEnabled();
  dashes_ = std::move(dashes);
  patternLength_ = 0;
  for (const KvDbLinetypeDash& dash : dashes_) patternLength_ += std::fabs(dash.length);
}

void KvDbLinetypeTableRecord::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbSymbolTableRecord::dwgOutFields(filer);
  filer.writeString(description_);
  filer.writeDouble(patternLength_);
  filer.writeUInt32(static_cast<std::uint32_t>(dashes_.size()));
  for (const KvDbLinetypeDash& dash : dashes_) {
    filer.writeDouble(dash.length);
    filer.writeInt16(dash.flags);
    filer.writeInt16(dash.shapeNumber);
    filer.writeId(dash.style, KvDbReference::HardPointer);
    filer.writeDouble(dash.scale);
    filer.writeDouble(dash.rotation);
    filer.writePoint2d({dash.offset.x, dash.offset.y});
    filer.writeString(dash.text);
  }
}

void KvDbLinetypeTableRecord::dwgInFields(KvDbDwgFiler& filer) {
  KvDbSymbolTableRecord::dwgInFields(filer);
  description_ = filer.readString();
  patternLength_ = filer.readDouble();
  dashes_.assign(filer.readUInt32(), {});
  for (KvDbLinetypeDash& dash : dashes_) {
    dash.length = filer.readDouble();
    dash.flags = filer.readInt16();
    dash.shapeNumber = filer.readInt16();
    dash.style = filer.readId(KvDbReference::HardPointer);
    dash.scale = filer.readDouble();
    dash.rotation = filer.readDouble();
    dash.offset = filer.readPoint2d().asVector();
    dash.text = filer.readString();
  }
}

void KvDbLinetypeTableRecord::dxfOutFields(KvDxfWriter& writer) const {
  constexpr int kAlignment = 65;  // the one that files know
  constexpr std::int16_t kHasTextOrShape = 6;
  KvDbSymbolTableRecord::dxfOutFields(writer);
  writer.text(3, description_.view());
  writer.integer(72, kAlignment);
  writer.integer(73, static_cast<std::int64_t>(dashes_.size()));
  writer.real(40, patternLength_);
  for (const KvDbLinetypeDash& dash : dashes_) {
    writer.real(49, dash.length);
    if (!writer.hasMarkers()) continue;
    writer.integer(74, dash.flags);
    if (!(dash.flags & kHasTextOrShape)) continue;
    writer.integer(75, dash.shapeNumber);
    writer.handle(340, dash.style);
    writer.real(46, dash.scale);
    writer.angle(50, dash.rotation);
    writer.real(44, dash.offset.x);
    writer.real(45, dash.offset.y);
    if (!dash.text.IsEmpty()) writer.text(9, dash.text.view());
  }
}

bool KvDbLinetypeTableRecord::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker,
                                         KvDxfResolver& resolver) {
  constexpr std::size_t kMostDashes = 10'000;
  if (KvDbSymbolTableRecord::dxfInGroup(group, marker, resolver)) return true;
  if (!marker.empty() && marker != fileMarker()) return false;
  KvDbLinetypeDash* dash = dashes_.empty() ? nullptr : &dashes_.back();
  switch (group.code) {
    case 3:
      description_ = CString(group.text);
      return true;
    case 72:
    case 73:
      return true;  // both follow from the rest
    case 40:
      patternLength_ = group.real();
      return true;
    case 49:
      if (dashes_.size() >= kMostDashes) return false;
      dashes_.emplace_back().length = group.real();
      return true;
    default:
      break;
  }
  if (!dash) return false;
  switch (group.code) {
    case 74:
      dash->flags = static_cast<std::int16_t>(group.integer);
      return true;
    case 75:
      dash->shapeNumber = static_cast<std::int16_t>(group.integer);
      return true;
    case 340:
      dash->style = resolver.object(group.integer);
      return true;
    case 46:
      dash->scale = group.real();
      return true;
    case 50:
      dash->rotation = kvdxfRadians(group.real());
      return true;
    case 44:
      dash->offset.x = group.real();
      return true;
    case 45:
      dash->offset.y = group.real();
      return true;
    case 9:
      dash->text = CString(group.text);
      return true;
    default:
      return false;
  }
}

void KvDbDimStyleTableRecord::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                                           KvDxfResolver& resolver) {
  constexpr int kFlagsCode = 70;
  bool hasFlags = false;
  for (const KvDxfGroup& group : groups) {
    const bool isVariable = group.code == kFlagsCode && hasFlags;
    hasFlags = hasFlags || group.code == kFlagsCode;
    if (isVariable || !dxfInGroup(group, marker, resolver)) keepUnknown(marker, group);
  }
}

void KvDbDimStyleTableRecord::setVariables(const std::vector<KvDbStoredGroup>& groups) {
  assertWriteEnabled();
  std::vector<KvDxfGroup> views;
  for (const KvDbStoredGroup& group : groups) views.push_back(group.view());
  auto& sections = editUnknownSections();
  const auto own = std::find_if(sections.begin(), sections.end(),
                                [&](const KvDbUnknownSection& s) { return s.marker.view() == fileMarker(); });
  if (own == sections.end())
    sections.push_back({KvDbSharedText(fileMarker()), KvDbGroupList(views)});
  else
    own->groups = KvDbGroupList(views);
}
