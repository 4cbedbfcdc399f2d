#include "siblings/tools/drawing_commands.h"

#include <map>

#include "host/base/context.h"
#include "host/database/database.h"
#include "host/database/names.h"
#include "host/editor/editor.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "module/select/prompts.h"
#include "module/toolkit/layers.h"
#include "siblings/tools/xdata_listing.h"

namespace {

int errorNumber() {
  resbuf value{};
  return kvedGetVar(L"ERRNO", &value) == RTNORM ? value.resval.rint : 0;
}

/// False when the user wants none; a pick that hits nothing is asked for again.
bool pickEntity(KvDbObjectId& id) {
  for (;;) {
    kvds_name name = {0, 0};
    kvds_point point = {0, 0, 0};
    const int status = IM_ADS_ENTSEL(L"\nSelect object: ", name, point);
    if (status == RTNORM) return kvdbGetObjectId(id, name) == Kvad::eOk;
    if (status != RTERROR || errorNumber() != kKvedErrnoMiss) return false;
    kvutPrintf(L"\nNothing was found there.");
  }
}

/// The layers of the standard by name, with the first kind of each. Empty without the symbol module.
std::map<CString, ImProPropertyConfig> standardLayers() {
  std::map<CString, ImProPropertyConfig> layers;
  for (const ImProPropertyConfig kind : mek::subLayerKinds()) {
    const CString name = IM_GetLayerName(kind, 1);
    if (name != L"0") layers.emplace(name, kind);
  }
  return layers;
}

void makeLayers(const std::map<CString, ImProPropertyConfig>& layers) {
  int made = 0, failed = 0;
  for (const auto& [name, kind] : layers) {
    const bool isThere = !IM_GetLayerId(name, nullptr).isNull();
    if (IM_GetLayerId(kind, nullptr, 1).isNull())
      ++failed;
    else if (!isThere)
      ++made;
  }
  kvutPrintf(L"\n%d layers made, %d were there.\n", made, static_cast<int>(layers.size()) - made - failed);
  if (failed > 0) {
    CString text;
    text.Format(L"%d layers could not be made.", failed);
    KvHostContext::current().editor->fail(text);
  }
}

void listLayers(const std::map<CString, ImProPropertyConfig>& layers) {
  int count = 0;
  for (const auto& [name, kind] : layers) {
    const KvDbObjectId id = IM_GetLayerId(name, nullptr);
    if (id.isNull()) continue;
    const KvCmEntityColor color = IM_GetLayerColor(id);
    CString line;
    line.Format(L"%-16s  %3d  %s\n", name, color.colorIndex(), kvdbRecordName(IM_GetLayerLineType(id)));
    if (count++ == 0) kvutPrintf(L"\n%-16s  %3s  %s\n", L"Layer", L"Col", L"Linetype");
    kvedPrintText(line);
  }
  kvutPrintf(L"%d of the standard's %d layers are in the drawing.\n", count, static_cast<int>(layers.size()));
}

}  // namespace

void xdataCommand() {
  KvDbObjectId id;
  KvDbObject* object = nullptr;
  if (!pickEntity(id) || kvdbOpenObject(object, id) != Kvad::eOk) return;
  resbuf* chain = object->xData(nullptr);
  object->close();
  kvedPrintText(chain ? L"\n" + formatXData(chain) : CString(L"\nThe object has no extended data.\n"));
  kvutRelRb(chain);
}

void layersCommand() {
  CString option;
  kvedInitGet(0, L"Make List");
  const int status = kvedGetKword(L"\nLayers of the standard [Make/List] <List>: ", option);
  if (status != RTNORM && status != RTNONE) return;
  const auto layers = standardLayers();
  if (layers.empty()) {
    KvHostContext::current().editor->fail(
        L"The symbol module (KmSymbb.kvx), which knows the standard's layers, can't be loaded.");
    return;
  }
  if (option == L"Make")
    makeLayers(layers);
  else
    listLayers(layers);
}
