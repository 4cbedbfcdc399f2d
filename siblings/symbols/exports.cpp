#include "siblings/symbols/exports.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <string_view>

#include "host/database/block.h"
#include "host/database/names.h"
#include "host/entities/blockreference.h"
#include "host/entities/curve.h"
#include "platform/files/files.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/settings.h"
#include "siblings/symbols/styles.h"
#include "siblings/symbols/template.h"

namespace {

using namespace kmsymb;

/// A copy for the caller; null for an empty text.
wchar_t* newText(const CString& text) {
  if (text.IsEmpty()) return nullptr;
  const auto size = static_cast<std::size_t>(text.GetLength()) + 1;
  auto* buffer = new wchar_t[size];
  std::wmemcpy(buffer, text.GetString(), size);
  return buffer;
}

constexpr const wchar_t *kScaleArea = L"GENIUS_GENSCREG_15", *kPointReference = L"GENIUS_GENOREF_13",
                        *kNoPoint = L"0";

/// The symbol point that an entity belongs to: the handle in the first record behind the names and braces.
bool belongsToPoint(const KvDbEntity& entity) {
  resbuf* chain = entity.xData(kPointReference);
  constexpr int kText = 1000, kBrace = 1002, kHandle = 1005;
  const resbuf* node = chain ? chain->rbnext : nullptr;
  if (node && node->restype == kBrace && node->rbnext && node->rbnext->restype == kText)
    node = node->rbnext->rbnext;
  CString handle;
  if (node && (node->restype == kText || node->restype == kHandle) && node->resval.rstring)
    handle = node->resval.rstring;
  kvutRelRb(chain);
  if (handle.IsEmpty() || handle == kNoPoint) return false;
  return entity.database()->idFromHandle(KvDbHandle(handle)).isValid();
}

bool carriesScale(const KvDbEntity& entity, bool isAnyEntity) {
  resbuf* area = entity.xData(kScaleArea);
  kvutRelRb(area);
  if (!area) return false;
  if (const auto* curve = KvDbCurve::cast(&entity); curve && !curve->isClosed()) return false;
  return isAnyEntity || (KvDbBlockReference::cast(&entity) && belongsToPoint(entity));
}

}  // namespace

wchar_t* getStandardName() {
  return newText(rowOf(standardInForce()).name);
}

wchar_t* getCurrentDimStyleName() {
  return newText(rowOf(standardInForce()).dimStyle);
}

wchar_t* getCurrentTextStyleName() {
  return newText(rowOf(standardInForce()).textStyle);
}

wchar_t* getTemplateFileName() {
  const CString root = productRoot();
  const CString file = root.IsEmpty() ? root : root + templatePlace(standardInForce());
  return platform::isFile(file) ? newText(file) : nullptr;
}

wchar_t* kvmExGetLayerName(int kind, int) {
  return newText(layerNameOf(kind));
}

KvDbObjectId kvmExGetLayerId(int kind, KvDbDatabase* database, int) {
  return ensureLayer(kind, database);
}

int setPropertyFromConfig(KvDbEntity* entity, int kind) {
  return setPropertiesByKind(entity, kind);
}

int setDimensionProperty(KvDbDimension* dimension) {
  return setDimensionProperties(dimension);
}

KvDbObjectId getDimensionStyle(KvRxClass* type, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  return database && isDimensionClass(type) ? ensureDimStyle(*database, standardInForce()) : KvDbObjectId();
}

int getDimensionStyleVariable(const wchar_t* name, resbuf* value, KvRxClass* type, KvDbDatabase* database) {
  return dimensionVariable(name, value, type, database);
}

void kvmRecordGeniusPoint(KvDbObjectId id) {
  recordPoint(id);
}

void kvmUnrecordGeniusPoint(KvDbObjectId id) {
  unrecordPoint(id);
}

int kvmGetScalingList(KvArray<KvDbObjectId>& list, int mode, KvDbDatabase* database) {
  list.removeAll();
  database = kvdbDatabaseOrWorking(database);
  KvDbBlockTableRecord* space = nullptr;
  if (!database || kvdbOpenObject(space, database->modelSpaceId(), KvDb::kForRead) != Kvad::eOk) return 0;
  for (KvDbObjectId id : space->entities()) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) continue;
    if (carriesScale(*entity, mode != 0)) list.append(id);
    entity->close();
  }
  space->close();
  return list.length();
}

double I_Centerline_GetCenterExt(double size, double scale) {
  if (!std::isfinite(size) || !std::isfinite(scale) || scale <= 0) return 0;
  constexpr double kShortest = 2, kLongest = 5, kShare = 0.25;
  return std::clamp(std::fabs(size) / scale * kShare, kShortest, kLongest) * scale;
}

int getSystemScale(double& paper, double& measure, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  if (!database) return RTERROR;
  const SystemScale scale = systemScaleOf(*database);
  paper = scale.paper;
  measure = scale.measure;
  return RTNORM;
}
