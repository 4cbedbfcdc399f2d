#include "module/toolkit/styles.h"

#include <memory>

#include "host/database/deepclone.h"
#include "host/database/tables.h"
#include "host/io/drawing_file.h"
#include "module/toolkit/sibling.h"
#include "platform/files/paths.h"

namespace {

using mek::SiblingLoad;

constexpr const wchar_t* kStandard = L"Standard";
constexpr unsigned int kStandardIfMissing = 1, kNameOnly = 2;
constexpr int kFromStandardName = 2;

CString standardTextStyle() {
  CString standard = IM_GetStandardName();
  if (standard.IsEmpty()) return standard;
  if (standard.CompareNoCase(L"ANSI") == 0) standard = L"ANS";
  if (standard.CompareNoCase(L"CSN") == 0) standard = L"ISO";
  return IM_GetProTextStylePrefix() + standard + L"TS";
}

/// What the name calls share: the style is made sure of, and "Standard" stands in where it is asked for.
CString ensured(CString name, bool isDimStyle, unsigned int flags) {
  if (flags & kNameOnly) return name;
  if (!IM_EnsureStyleExist(name, isDimStyle)) name.Empty();
  if (!name.IsEmpty()) return name;
  return flags & kStandardIfMissing ? kStandard : L"";
}

KvDbObjectId recordOr(KvDbTable table, const CString& name, unsigned int flags, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return {};
  const KvDbObjectId fallBack =
      flags & kStandardIfMissing ? database->recordId(table, L"standard") : KvDbObjectId();
  const KvDbObjectId id = name.IsEmpty() ? KvDbObjectId() : database->recordId(table, name);
  return id.isNull() ? fallBack : id;
}

KvDbObjectId fixedRecord(KvDbTable table, const wchar_t* name, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  return database ? database->recordId(table, name) : KvDbObjectId();
}

bool isInTable(const wchar_t* table, const CString& name) {
  resbuf* record = kvdbTblSearch(table, name, 0);
  kvutRelRb(record);
  return record != nullptr;
}

KvDbObjectIdArray recordsNamed(const KvDbDatabase& side, KvDbTable kind, const CString& name) {
  KvDbObjectIdArray ids;
  KvDbSymbolTable* table = nullptr;
  if (kvdbOpenObject(table, side.tableId(kind), KvDb::kForRead) != Kvad::eOk) return ids;
  for (KvDbObjectId id : table->records())
    if (name.IsEmpty() || kvdbRecordName(id).CompareNoCase(name) == 0) ids.append(id);
  table->close();
  return ids;
}

}  // namespace

CString IM_GetProDimStylePrefix() {
  return L"AM_";
}
CString IM_GetProTextStylePrefix() {
  return L"AC";
}

CString IM_GetStandardName() {
  return mek::siblingText(SiblingLoad::Bare, "getStandardName", L"").MakeUpper();
}
CString IM_GetStandardDimStyleName() {
  return mek::siblingText(SiblingLoad::Bare, "getCurrentDimStyleName", kStandard);
}
CString IM_GetStandardTextStyleName() {
  return mek::siblingText(SiblingLoad::Bare, "getCurrentTextStyleName", kStandard);
}

CString IM_GetTextStyleName(IM_TEXT_STYLE style, unsigned int flags) {
  const CString name = style == 0                   ? CString(kStandard)
                       : style == kFromStandardName ? standardTextStyle()
                                                    : IM_GetStandardTextStyleName();
  return ensured(name, false, flags);
}

CString IM_GetDimStyleName(IM_DIM_STYLE style, unsigned int flags) {
  return ensured(style == 0 ? CString(kStandard) : IM_GetStandardDimStyleName(), true, flags);
}

KvDbObjectId IM_GetTextStyleId(IM_TEXT_STYLE style, unsigned int flags, KvDbDatabase* database) {
  return IM_GetTextStyleId(IM_GetTextStyleName(style, flags), kStandardIfMissing, database);
}
KvDbObjectId IM_GetDimStyleId(IM_DIM_STYLE style, unsigned int flags, KvDbDatabase* database) {
  return IM_GetDimStyleId(IM_GetDimStyleName(style, flags), kStandardIfMissing, database);
}
KvDbObjectId IM_GetTextStyleId(CString name, unsigned int flags, KvDbDatabase* database) {
  return recordOr(KvDbTable::TextStyle, name, flags, database);
}
KvDbObjectId IM_GetDimStyleId(CString name, unsigned int flags, KvDbDatabase* database) {
  return recordOr(KvDbTable::DimStyle, name, flags, database);
}
KvDbObjectId IM_GetTextStyleStandardId(KvDbDatabase* database) {
  return fixedRecord(KvDbTable::TextStyle, kStandard, database);
}
KvDbObjectId IM_GetDimStyleStandardId(KvDbDatabase* database) {
  return fixedRecord(KvDbTable::DimStyle, kStandard, database);
}
KvDbObjectId IM_GetLinetypeContinuousId(KvDbDatabase* database) {
  return fixedRecord(KvDbTable::Linetype, L"CONTINUOUS", database);
}

int IM_EnsureStyleExist(CString& name, int isDimStyle) {
  if (name.IsEmpty()) {
    name = kStandard;
    return 0;
  }
  if (isInTable(isDimStyle ? L"DIMSTYLE" : L"STYLE", name)) return 1;
  IM_ImportStyleFromTemplate(isDimStyle ? 0 : 1, 0, name);
  // The second look is at the text styles in both cases.
  if (isInTable(L"STYLE", name)) return 1;
  name = kStandard;
  return 0;
}

int IM_ImportStyleFromTemplate(int textStyle, int, CString name) {
  KvDbDatabase* working = kvdbDatabaseOrWorking(nullptr);
  const CString file = mek::siblingText(SiblingLoad::Bare, "getTemplateFileName", L"");
  if (!working || file.IsEmpty()) return RTERROR;
  const auto side = std::make_unique<KvDbDatabase>(false, true);
  if (side->readDwgFile(file) != Kvad::eOk) return RTERROR;
  const KvDbTable kind = textStyle ? KvDbTable::TextStyle : KvDbTable::DimStyle;
  KvDbIdMapping mapping;
  const auto status = working->wblockCloneObjects(recordsNamed(*side, kind, name), working->tableId(kind),
                                                  mapping, KvDb::kDrcIgnore);
  return status == Kvad::eOk ? RTNORM : RTERROR;
}

// --- Handed on

bool IM_SetDimensionProperty(KvDbDimension* dimension) {
  return mek::siblingFlag(SiblingLoad::Full, "setDimensionProperty", dimension);
}

KvDbObjectId IM_GetDimensionStyle(KvRxClass* type, KvDbDatabase* database) {
  const mek::SiblingExport<KvDbObjectId(KvRxClass*, KvDbDatabase*)> style(SiblingLoad::Full,
                                                                          "getDimensionStyle");
  return style ? style(type, database) : KvDbObjectId();
}

bool IM_GetDimensionStyleVariable(LPCWSTR name, resbuf* value, KvRxClass* type, KvDbDatabase* database) {
  return mek::siblingFlag(SiblingLoad::Full, "getDimensionStyleVariable", name, value, type, database);
}

void IM_RecordGeniusPoint(KvDbObjectId id) {
  const mek::SiblingExport<void(KvDbObjectId)> record(SiblingLoad::Full, "kvmRecordGeniusPoint");
  if (record) record(id);
}

void IM_UnrecordGeniusPoint(KvDbObjectId id) {
  const mek::SiblingExport<void(KvDbObjectId)> unrecord(SiblingLoad::Full, "kvmUnrecordGeniusPoint");
  if (unrecord) unrecord(id);
}

double IM_Centerline_GetCenterExt(double size, double scale) {
  const mek::SiblingExport<double(double, double)> extension(SiblingLoad::Full, "I_Centerline_GetCenterExt");
  return extension ? extension(size, scale) : 0.0;
}
