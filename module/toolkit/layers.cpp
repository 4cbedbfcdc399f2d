#include "module/toolkit/layers.h"

#include <algorithm>
#include <map>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/tables.h"
#include "module/toolkit/sibling.h"

namespace {

struct Key {
  const wchar_t* key;
  ImProPropertyConfig config;
};

/// Keys of the sub-layers. STDPSYM shares the number of BHNV; the N_ keys are the twins for standard parts.
constexpr Key kSubLayers[] = {
    {L"BHNV", 87},    {L"BHNVS", 88},   {L"BOR2", 79},    {L"BOR3", 80},    {L"BOR5", 81},
    {L"CAL2", 67},    {L"CAL3", 68},    {L"CAL5", 69},    {L"CAL7", 70},    {L"CENN", 50},
    {L"CENW", 49},    {L"CLIN", 53},    {L"CON1", 45},    {L"CON2", 46},    {L"CON3", 47},
    {L"CON4", 48},    {L"DETA", 33},    {L"DIAG", 58},    {L"DILI", 23},    {L"FEMN", 72},
    {L"FEMPN", 73},   {L"FEMSP", 77},   {L"FEMST", 74},   {L"FEMVN", 75},   {L"FEMVT", 76},
    {L"HATC", 59},    {L"HIDN", 86},    {L"HIDW", 85},    {L"HLIN", 54},    {L"HOCN", 52},
    {L"HOCW", 51},    {L"INFO", 2},     {L"LEAD", 41},    {L"N_BHNV", 92},  {L"N_CON1", 95},
    {L"N_CON2", 96},  {L"N_CON3", 97},  {L"N_CON4", 98},  {L"N_CENN", 94},  {L"N_CENW", 93},
    {L"N_DILI", 101}, {L"N_HATC", 99},  {L"N_HIDN", 91},  {L"N_HIDW", 90},  {L"N_LEAD", 103},
    {L"N_NGIP", 102}, {L"N_PHAN", 104}, {L"N_TCON", 106}, {L"N_THLI", 100}, {L"N_TLEN", 107},
    {L"N_VPLI", 105}, {L"NGIP", 4},     {L"PAL2", 19},    {L"PAL3", 20},    {L"PAL5", 18},
    {L"PHAN", 66},    {L"POSN", 36},    {L"RCGN", 61},    {L"RCGW", 60},    {L"SBRK", 56},
    {L"SECT", 57},    {L"SYB3", 71},    {L"MSYM", 42},    {L"TCON", 62},    {L"THLI", 64},
    {L"TIT2", 82},    {L"TIT3", 83},    {L"TIT5", 84},    {L"TLEN", 63},    {L"TRLI", 65},
    {L"TXT1", 14},    {L"TXT2", 13},    {L"TXT3", 12},    {L"TXT5", 11},    {L"TXT7", 10},
    {L"VIEW", 3},     {L"VPLI", 5},     {L"ZIZA", 55},    {L"SPLI", 7},     {L"STDPSYM", 87},
};

/// Keys of the spring and frame code.
constexpr Key kDrawingKeys[] = {
    {L"THICK", 45},  {L"THIN", 46},      {L"THREAD", 64}, {L"OUTLINE", 47},   {L"PHANTOM", 47},
    {L"DASH", 48},   {L"DIM", 23},       {L"TEXT", 12},   {L"CENTER", 49},    {L"HATCH", 59},
    {L"HIDE", 87},   {L"UNPLOTABLE", 4}, {L"FRAME", 78},  {L"CONSTRUCT", 53}, {L"PARTREF", 1},
    {L"SECTION", 5}, {L"VIEWS", 3},      {L"SYMBOL", 40},
};

/// Names that earlier editions wrote into drawings.
constexpr Key kLegacyLayers[] = {
    {L"1轮廓实线层", 45}, {L"2细线层", 64}, {L"3中心线层", 49},   {L"4虚线层", 86},     {L"5剖面线层", 59},
    {L"6文字层", 12},     {L"7标注层", 23}, {L"8符号标注层", 40}, {L"9双点划线层", 66}, {L"轮廓虚线层", 85},
    {L"图框层", 78},      {L"消隐层", 87},  {L"QX_CL", 53},       {L"不可打印", 4},     {L"零件参照", 1},
    {L"剖面线", 5},       {L"视口", 3},
};

/// Indices of older data from -1 on; from 8 on there are two rows.
constexpr int kFirstIndex = -1, kFirstFlaggedIndex = 8, kLastIndex = 15;
constexpr ImProPropertyConfig kCommonIndices[] = {0, 45, 45, 64, 49, 86, 59, 12, 23};
constexpr ImProPropertyConfig kFlaggedIndices[2][8] = {{85, 78, 87, 53, 4, 1, 5, 3},
                                                       {40, 66, 85, 78, 87, 53, 0, 0}};

struct Twin {
  ImProPropertyConfig plain, standardPart;
};
constexpr Twin kTwins[] = {{3, 105},  {4, 102},  {5, 105},  {23, 101}, {38, 103}, {41, 103}, {45, 95},
                           {46, 96},  {47, 97},  {48, 98},  {49, 93},  {50, 94},  {59, 99},  {62, 106},
                           {63, 107}, {64, 100}, {66, 104}, {85, 90},  {86, 91},  {87, 92},  {88, 92}};

constexpr ImProPropertyConfig kCenter = 49;
constexpr ImProPropertyConfig kCenterFamily[] = {50, 49, 52, 51};

template <std::size_t N>
const Key* findKey(const Key (&keys)[N], std::wstring_view key) {
  const Key* found = std::find_if(keys, keys + N, [&](const Key& row) { return key == row.key; });
  return found == keys + N ? nullptr : found;
}

KvDbLayerTableRecord* openLayer(KvDbObjectId id) {
  KvDbLayerTableRecord* layer = nullptr;
  return kvdbOpenObject(layer, id, KvDb::kForRead) == Kvad::eOk ? layer : nullptr;
}

/// Entities of model space go from one layer to another.
void moveEntities(KvDbDatabase& database, KvDbObjectId from, KvDbObjectId to) {
  KvDbBlockTableRecord* space = nullptr;
  if (kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForRead) != Kvad::eOk) return;
  const KvDbObjectIdArray ids = space->entities();
  space->close();
  for (KvDbObjectId id : ids) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, id, KvDb::kForWrite) != Kvad::eOk) continue;
    if (entity->layerId() == from) entity->setLayer(to);
    entity->close();
  }
}

/// Renames the layer, or merges it into the one that bears the name. False when it can't be erased then.
bool bringUnderName(KvDbDatabase& database, KvDbLayerTable& table, KvDbLayerTableRecord& layer,
                    const CString& name) {
  if (name.IsEmpty()) return true;
  KvDbObjectId present;
  if (table.getAt(name, present) != Kvad::eOk) {
    layer.setName(name);
    return true;
  }
  moveEntities(database, layer.objectId(), present);
  return layer.erase() == Kvad::eOk;
}

}  // namespace

ImProPropertyConfig IM_GetPropertyConfigFromSubLayer(CString subLayer) {
  static const std::map<CString, ImProPropertyConfig> table = [] {
    std::map<CString, ImProPropertyConfig> rows;
    for (const Key& row : kSubLayers) rows[row.key] = row.config;
    return rows;
  }();
  const auto found = table.find(subLayer.MakeUpper());
  return found == table.end() ? 0 : found->second;
}

std::vector<ImProPropertyConfig> mek::subLayerKinds() {
  std::vector<ImProPropertyConfig> kinds;
  for (const Key& row : kSubLayers) kinds.push_back(row.config);
  std::sort(kinds.begin(), kinds.end());
  kinds.erase(std::unique(kinds.begin(), kinds.end()), kinds.end());
  return kinds;
}

CString GetSysLayer(CString key, CString defaultName, bool flag) {
  const Key* row = findKey(kDrawingKeys, key.MakeUpper().view());
  return row ? IM_GetLayerName(row->config, flag) : defaultName;
}

ImProPropertyConfig IM_IntToImLayer(int index, int flag) {
  if (index < kFirstIndex || index > kLastIndex) return 0;
  if (index < kFirstFlaggedIndex) return kCommonIndices[index - kFirstIndex];
  return kFlaggedIndices[flag != 0][index - kFirstFlaggedIndex];
}

ImProPropertyConfig IM_IntToStdPartLayer(int index, int flag) {
  const ImProPropertyConfig plain = IM_IntToImLayer(index, flag);
  for (const Twin& twin : kTwins)
    if (twin.plain == plain) return twin.standardPart;
  return plain;
}

CString IM_GetLayerName(ImProPropertyConfig config, int flag) {
  return mek::siblingText(mek::SiblingLoad::Full, "kvmExGetLayerName", L"0", config, flag);
}

KvDbObjectId IM_GetLayerId(ImProPropertyConfig config, KvDbDatabase* database, int flag) {
  const mek::SiblingExport<KvDbObjectId(ImProPropertyConfig, KvDbDatabase*, int)> layerId(
      mek::SiblingLoad::Full, "kvmExGetLayerId");
  return layerId ? layerId(config, database, flag) : KvDbObjectId();
}

KvDbObjectId IM_GetLayerId(CString name, KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  return database ? database->recordId(KvDbTable::Layer, name) : KvDbObjectId();
}

bool IM_SetPropertyFromConfig(KvDbEntity* entity, ImProPropertyConfig config) {
  return mek::siblingFlag(mek::SiblingLoad::Full, "setPropertyFromConfig", entity, config);
}

int IM_IsLayerKindOf(CString layerName, ImProPropertyConfig kind) {
  if (kind != kCenter) return 0;
  return std::any_of(std::begin(kCenterFamily), std::end(kCenterFamily), [&](ImProPropertyConfig config) {
    return layerName.CompareNoCase(IM_GetLayerName(config, 0)) == 0;
  });
}

int IM_IsLayerKindOf(KvDbObjectId layerId, ImProPropertyConfig kind) {
  KvDbLayerTableRecord* layer = openLayer(layerId);
  if (!layer) return 0;
  const CString name = layer->getName();
  layer->close();
  return IM_IsLayerKindOf(name, kind);
}

KvCmEntityColor IM_GetLayerColor(KvDbObjectId layerId) {
  KvDbLayerTableRecord* layer = openLayer(layerId);
  if (!layer) return KvCmEntityColor::ofIndex(kKvColorByLayer);
  const auto color = KvCmEntityColor::ofIndex(layer->colorIndex());
  layer->close();
  return color;
}

KvDbObjectId IM_GetLayerLineType(KvDbObjectId layerId) {
  KvDbLayerTableRecord* layer = openLayer(layerId);
  if (!layer) return {};
  const KvDbObjectId linetype = layer->linetypeObjectId();
  layer->close();
  return linetype;
}

KvDbObjectId IM_GetLayerZeroId(KvDbDatabase* database) {
  database = kvdbDatabaseOrWorking(database);
  return database ? database->layerZero() : KvDbObjectId();
}

int IM_DwgInsertLayerConvert(KvDbDatabase* database, std::vector<ImProPropertyConfig>& used) {
  KvDbLayerTable* table = nullptr;
  if (!database || kvdbOpenObject(table, database->layerTableId(), KvDb::kForRead) != Kvad::eOk) return 0;
  bool isDone = true;
  for (KvDbObjectId id : table->records()) {
    KvDbLayerTableRecord* layer = nullptr;
    if (kvdbOpenObject(layer, id, KvDb::kForWrite) != Kvad::eOk) continue;
    if (const Key* legacy = findKey(kLegacyLayers, layer->getName().view())) {
      const CString newName = IM_GetLayerName(legacy->config, 1);
      if (newName != layer->getName()) {
        used.push_back(legacy->config);
        isDone = bringUnderName(*database, *table, *layer, newName);
      }
    }
    layer->close();
    if (!isDone) break;
  }
  table->close();
  return isDone;
}
