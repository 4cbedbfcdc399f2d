#include "siblings/symbols/layers.h"

#include <memory>

#include "host/database/header.h"
#include "host/database/tables.h"
#include "host/io/linetype_file.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/settings.h"

namespace kmsymb {
namespace {

constexpr int kMetric = 1;

std::optional<LayerId> layerOf(int kind) {
  const auto& kinds = currentSettings().layerOfKind;
  const auto found = kinds.find(kind);
  return found == kinds.end() ? std::nullopt : std::optional(found->second);
}

/// The setting's linetype; where it can't be had the built-in one, and that is told.
KvDbObjectId linetypeOf(const LayerSetting& setting, Standard standard, int row, KvDbDatabase& drawing) {
  const KvDbObjectId wanted = ensureLinetype(setting.look.linetype, drawing);
  if (!wanted.isNull()) return wanted;
  if (setting.line > 0)
    tellFault(currentSettingsFile(), {setting.line, L"unknown linetype \"" + setting.look.linetype + L"\""});
  const KvDbObjectId builtIn = ensureLinetype(builtInLook(standard, row).linetype, drawing);
  return builtIn.isNull() ? drawing.continuousLinetype() : builtIn;
}

KvDbObjectId makeLayer(LayerId id, const CString& name, Standard standard, KvDbDatabase& drawing) {
  const LayerSetting& setting = currentSettings().layer(standard, id.row);
  const KvDbObjectId linetype = linetypeOf(setting, standard, id.row, drawing);
  KvDbLayerTable* table = nullptr;
  if (kvdbOpenObject(table, drawing.layerTableId(), KvDb::kForWrite) != Kvad::eOk) return {};
  KvDbObjectId made;
  auto layer = std::make_unique<KvDbLayerTableRecord>();
  layer->setName(name);
  layer->setColorIndex(setting.look.color);
  layer->setLineWeight(static_cast<KvDb::LineWeight>(setting.look.lineWeight));
  layer->setIsPlottable(setting.look.isPlotted);
  layer->setLinetypeObjectId(linetype);
  if (table->add(made, layer.get()) == Kvad::eOk)
    layer.release()->close();
  else
    made.setNull();
  table->close();
  return made;
}

}  // namespace

CString layerNameOf(int kind) {
  const auto layer = layerOf(kind);
  return layer ? currentSettings().nameOf(standardInForce(), *layer) : CString();
}

KvDbObjectId ensureLayer(int kind, KvDbDatabase* drawing) {
  drawing = kvdbDatabaseOrWorking(drawing);
  return drawing ? ensureLayer(kind, *drawing, standardInForce()) : KvDbObjectId();
}

KvDbObjectId ensureLayer(int kind, KvDbDatabase& drawing, Standard standard) {
  const auto layer = layerOf(kind);
  if (!layer) return {};
  const CString name = currentSettings().nameOf(standard, *layer);
  const KvDbObjectId id = drawing.recordId(KvDbTable::Layer, name);
  return id.isNull() ? makeLayer(*layer, name, standard, drawing) : id;
}

KvDbObjectId ensureLinetype(const CString& name, KvDbDatabase& drawing) {
  const KvDbObjectId id = drawing.recordId(KvDbTable::Linetype, name);
  if (!id.isNull()) return id;
  const bool isMetric = drawing.header().whole(L"$MEASUREMENT") == kMetric;
  kvdbLoadLineTypeFile(name, isMetric ? L"kvadiso.lin" : L"kvad.lin", &drawing);
  return drawing.recordId(KvDbTable::Linetype, name);
}

bool setPropertiesByKind(KvDbEntity* entity, int kind) {
  if (!entity || !entity->isWriteEnabled()) return false;
  const KvDbObjectId layer = ensureLayer(kind, entity->database());
  if (layer.isNull() || entity->setLayer(layer) != Kvad::eOk) return false;
  entity->setColorIndex(kKvColorByLayer);
  entity->setLinetype(layer.database()->byLayerLinetype());
  entity->setLineWeight(KvDb::kLnWtByLayer);
  return true;
}

}  // namespace kmsymb
