// Layers by pointing at what lies on them: LAYMCUR, LAYOFF, LAYON, LAYFRZ, LAYTHW, LAYLCK, LAYULK, LAYISO,
// LAYUNISO.
#include <map>

#include "host/commands/internal/records.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/tables.h"

namespace kvcmd {
namespace {

using Layer = KvDbLayerTableRecord;

/// What LAYISO switched off, in each drawing.
class Isolation : public KvDbAttachment {
 public:
  KvDbObjectIdArray layers;
};

bool isCurrent(KvDbObjectId layer) {
  return layer == drawing()->clayer();
}

/// Asks for objects one by one and does something to the layer of each.
template <class Work>
void forPicked(const wchar_t* prompt, const Work& work) {
  if (!drawing()) return;
  KvDbObjectId id;
  while (Ask(prompt).entity(id) == Got::Value) {
    const KvDbObjectId layer = look<KvDbEntity>(id)->layerId();
    if (work(layer)) say(L"Layer \"" + kvdbRecordName(layer) + L"\".");
  }
}

void runCurrent() {
  if (!drawing()) return;
  KvDbObjectId id;
  if (Ask(L"\nSelect object whose layer will become current: ").entity(id) != Got::Value) return;
  const KvDbObjectId layer = look<KvDbEntity>(id)->layerId();
  if (drawing()->setClayer(layer) == Kvad::eOk) say(kvdbRecordName(layer) + L" is now the current layer.");
}

void runOff() {
  forPicked(L"\nSelect an object on the layer to be turned off: ", [](KvDbObjectId layer) {
    if (isCurrent(layer) && !askYes(L"\nThat is the current layer. Turn it off?", false).value_or(false))
      return false;
    return change<Layer>(layer, [](Layer& record) { record.setIsOff(true); });
  });
}

void runFreeze() {
  forPicked(L"\nSelect an object on the layer to be frozen: ", [](KvDbObjectId layer) {
    if (isCurrent(layer)) return say(L"The current layer can't be frozen."), false;
    return change<Layer>(layer, [](Layer& record) { record.setIsFrozen(true); });
  });
}

void runLock() {
  forPicked(L"\nSelect an object on the layer to be locked: ", [](KvDbObjectId layer) {
    return change<Layer>(layer, [](Layer& record) { record.setIsLocked(true); });
  });
}

void runUnlock() {
  forPicked(L"\nSelect an object on the layer to be unlocked: ", [](KvDbObjectId layer) {
    return change<Layer>(layer, [](Layer& record) { record.setIsLocked(false); });
  });
}

template <class Test, class Work>
void forAll(const Test& test, const Work& work) {
  if (!drawing()) return;
  int changed = 0;
  for (KvDbObjectId id : recordsMatching(KvDbTable::Layer, L"*"))
    if (test(*look<Layer>(id)) && change<Layer>(id, work)) ++changed;
  say(countOf(changed, L"layers changed"));
}

void runOn() {
  forAll([](const Layer& layer) { return layer.isOff(); }, [](Layer& layer) { layer.setIsOff(false); });
}
void runThaw() {
  forAll([](const Layer& layer) { return layer.isFrozen(); }, [](Layer& layer) { layer.setIsFrozen(false); });
}

void runIsolate() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select(L"\nSelect objects on the layer(s) to be isolated: ", true);
  if (ids.isEmpty()) return;
  KvDbObjectIdArray kept, off;
  for (KvDbObjectId id : ids)
    if (const KvDbObjectId layer = look<KvDbEntity>(id)->layerId(); !kept.contains(layer)) kept.append(layer);
  for (KvDbObjectId id : recordsMatching(KvDbTable::Layer, L"*"))
    if (!kept.contains(id) && !look<Layer>(id)->isOff()) {
      change<Layer>(id, [](Layer& layer) { layer.setIsOff(true); });
      off.append(id);
    }
  if (!kept.contains(drawing()->clayer())) drawing()->setClayer(kept[0]);
  drawing()->attachment<Isolation>().layers = off;
  say(countOf(kept.length(), L"layers isolated"));
}

void runUnisolate() {
  if (!drawing()) return;
  KvDbObjectIdArray& layers = drawing()->attachment<Isolation>().layers;
  if (layers.isEmpty()) return say(L"No layers are isolated.");
  for (KvDbObjectId id : layers) change<Layer>(id, [](Layer& layer) { layer.setIsOff(false); });
  layers.removeAll();
}

constexpr KvCommandRow kRows[] = {
    {L"LAYFRZ", L"", KVRX_CMD_MODAL, runFreeze, L"Freezes the layers of objects that are pointed at.",
     L"Select an object on the layer to be frozen: (empty: ends)"},
    {L"LAYISO", L"", KVRX_CMD_USEPICKSET, runIsolate, L"Turns all layers off but those of selected objects.",
     L"Select objects on the layer(s) to be isolated:"},
    {L"LAYLCK", L"", KVRX_CMD_MODAL, runLock, L"Locks the layers of objects that are pointed at.",
     L"Select an object on the layer to be locked: (empty: ends)"},
    {L"LAYMCUR", L"", KVRX_CMD_MODAL, runCurrent, L"Makes an object's layer the current one.",
     L"Select object whose layer will become current:"},
    {L"LAYOFF", L"", KVRX_CMD_MODAL, runOff, L"Turns the layers of objects off that are pointed at.",
     L"Select an object on the layer to be turned off: (empty: ends)\nThat is the current layer. Turn it "
     L"off? "
     L"[Yes/No] <No>: (when it is)"},
    {L"LAYON", L"", KVRX_CMD_MODAL, runOn, L"Turns all layers on.", L""},
    {L"LAYTHW", L"", KVRX_CMD_MODAL, runThaw, L"Thaws all layers.", L""},
    {L"LAYULK", L"", KVRX_CMD_MODAL, runUnlock, L"Unlocks the layers of objects that are pointed at.",
     L"Select an object on the layer to be unlocked: (empty: ends)"},
    {L"LAYUNISO", L"", KVRX_CMD_MODAL, runUnisolate, L"Turns the layers on again that LAYISO turned off.",
     L""},
};

}  // namespace

std::span<const KvCommandRow> layerToolRows() {
  return kRows;
}

}  // namespace kvcmd
