#include "siblings/symbols/styles.h"

#include <memory>

#include "host/database/header.h"
#include "host/database/tables.h"
#include "host/entities/leader.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"

namespace kmsymb {
namespace {

using V = KvDbDimVar;
constexpr int kDimensionKind = 23;
constexpr double kMillimetresPerInch = 25.4;

/// Millimetres in units of the drawing.
double unitOf(const KvDbDatabase& drawing) {
  return drawing.header().whole(L"$MEASUREMENT") == 1 ? 1 : 1 / kMillimetresPerInch;
}

/// Adds a record of a class, made by the host, so that it outlives this library. Open for write, or null.
template <class Record, class Table>
Record* addRecord(KvDbObjectId tableId, const wchar_t* name) {
  Table* table = nullptr;
  if (kvdbOpenObject(table, tableId, KvDb::kForWrite) != Kvad::eOk) return nullptr;
  std::unique_ptr<KvRxObject> made(Record::desc()->create());
  auto* record = static_cast<Record*>(made.get());
  record->setName(name);
  const bool isAdded = table->add(record) == Kvad::eOk;
  table->close();
  if (!isAdded) return nullptr;
  made.release();
  return record;
}

KvDbDimVars variablesOf(const StandardRow& row, const KvDbDatabase& drawing, KvDbObjectId textStyle) {
  const bool isMetric = drawing.header().whole(L"$MEASUREMENT") == 1;
  const double unit = unitOf(drawing);
  const DimensionLook& look = row.dimensions;
  KvDbDimVars variables(isMetric);
  const auto set = [&](V variable, double value) { variables.set(variable, value); };
  set(V::Txt, look.textHeight * unit);
  set(V::Asz, look.arrow * unit);
  set(V::Gap, look.gap * unit);
  set(V::Exe, look.beyondLine * unit);
  set(V::Exo, look.fromOutline * unit);
  set(V::Dli, look.spacing * unit);
  set(V::Cen, look.textHeight * unit);
  set(V::Tfac, look.toleranceFactor);
  set(V::TolJ, look.toleranceAlign);
  set(V::Tad, look.textPlace);
  set(V::Tih, look.isHorizontal);
  set(V::Toh, look.isHorizontal);
  set(V::Tofl, 1);
  set(V::Dsep, look.separator);
  set(V::Lwd, row.lines.thin);
  set(V::Lwe, row.lines.thin);
  variables.set(V::TxSty, textStyle);
  return variables;
}

CString recordName(KvDbObjectId id) {
  return id.isValid() ? kvdbRecordName(id) : CString();
}

}  // namespace

KvDbObjectId ensureTextStyle(KvDbDatabase& drawing, Standard standard) {
  const StandardRow& row = rowOf(standard);
  const KvDbObjectId id = drawing.recordId(KvDbTable::TextStyle, row.textStyle);
  if (!id.isNull()) return id;
  auto* record =
      addRecord<KvDbTextStyleTableRecord, KvDbTextStyleTable>(drawing.textStyleTableId(), row.textStyle);
  if (!record) return {};
  record->setFileName(row.font);
  if (*row.bigFont) record->setBigFontFileName(row.bigFont);
  record->setXScale(row.widthFactor);
  const KvDbObjectId made = record->objectId();
  record->close();
  return made;
}

KvDbObjectId ensureDimStyle(KvDbDatabase& drawing, Standard standard) {
  const StandardRow& row = rowOf(standard);
  const KvDbObjectId id = drawing.recordId(KvDbTable::DimStyle, row.dimStyle);
  if (!id.isNull()) return id;
  const KvDbObjectId textStyle = ensureTextStyle(drawing, standard);
  auto* record =
      addRecord<KvDbDimStyleTableRecord, KvDbDimStyleTable>(drawing.dimStyleTableId(), row.dimStyle);
  if (!record) return {};
  variablesOf(row, drawing, textStyle).writeTo(*record);
  const KvDbObjectId made = record->objectId();
  record->close();
  return made;
}

void applyClass(KvDbDimVars& variables, const KvRxClass* type) {
  if (!type || !(type->isDerivedFrom(KvDb2LineAngularDimension::desc()) ||
                 type->isDerivedFrom(KvDb3PointAngularDimension::desc())))
    return;
  variables.set(V::Tih, 1);
  variables.set(V::Toh, 1);
}

bool isDimensionClass(const KvRxClass* type) {
  return !type || type->isDerivedFrom(KvDbDimension::desc()) || type->isDerivedFrom(KvDbLeader::desc());
}

bool setDimensionProperties(KvDbDimension* dimension) {
  if (!dimension || !dimension->isWriteEnabled()) return false;
  KvDbDatabase* drawing = kvdbDatabaseOrWorking(dimension->database());
  if (!drawing || !setPropertiesByKind(dimension, kDimensionKind)) return false;
  const KvDbObjectId style = ensureDimStyle(*drawing, standardInForce());
  if (style.isNull() || dimension->setDimensionStyle(style) != Kvad::eOk) return false;
  KvDbDimVars variables = KvDbDimVars::ofStyle(style);
  applyClass(variables, dimension->isA());
  const SystemScale scale = systemScaleOf(*drawing);
  if (scale.paper != 1) variables.set(V::Scale, scale.paper);
  if (scale.measure != 1 && !dimension->isAngular()) variables.set(V::Lfac, scale.measure);
  constexpr const wchar_t* kApplication = L"ACAD";
  if (!drawing->isApplicationKnown(kApplication) && drawing == kvdbDatabaseOrWorking(nullptr))
    kvdbRegApp(kApplication);
  return dimension->setDimVars(variables) == Kvad::eOk;
}

bool dimensionVariable(const wchar_t* name, resbuf* value, const KvRxClass* type, KvDbDatabase* drawing) {
  drawing = kvdbDatabaseOrWorking(drawing);
  const KvDbDimVarRow* row = name ? kvdbDimVarNamed(name) : nullptr;
  if (!drawing || !row || !value || !isDimensionClass(type)) return false;
  // Asking changes no drawing: a style that isn't there yet is answered from the tables.
  const StandardRow& standard = rowOf(standardInForce());
  const KvDbObjectId style = drawing->recordId(KvDbTable::DimStyle, standard.dimStyle);
  KvDbDimVars variables = style.isNull() ? variablesOf(standard, *drawing, {}) : KvDbDimVars::ofStyle(style);
  applyClass(variables, type);
  // A fresh value: what the node held before isn't looked at.
  value->resval = {};
  switch (row->kind) {
    case KvDbDimVarRow::Real:
      value->restype = RTREAL;
      value->resval.rreal = variables.real(row->variable);
      return true;
    case KvDbDimVarRow::Int:
      value->restype = RTSHORT;
      value->resval.rint = static_cast<std::int16_t>(variables.whole(row->variable));
      return true;
    case KvDbDimVarRow::Text:
    case KvDbDimVarRow::Reference:
      value->restype = RTSTR;
      kvutSetText(value, row->kind == KvDbDimVarRow::Text ? variables.text(row->variable)
                         : row->variable == V::TxSty && style.isNull()
                             ? CString(standard.textStyle)
                             : recordName(variables.id(row->variable)));
      return true;
  }
  return false;
}

}  // namespace kmsymb
