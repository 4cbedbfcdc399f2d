// LAYER.
#include "host/base/wcmatch.h"
#include "host/commands/internal/choices.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/tables.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

/// A layer of that name, made when missing; null for a name that no table takes.
KvDbObjectId ensureLayer(const CString& name) {
  const KvDbObjectId present = drawing()->recordId(KvDbTable::Layer, name);
  if (!present.isNull()) return present;
  KvDbLayerTable* table = nullptr;
  if (kvdbOpenObject(table, drawing()->layerTableId(), KvDb::kForWrite) != Kvad::eOk) return {};
  auto layer = std::make_unique<KvDbLayerTableRecord>();
  KvDbObjectId id;
  if (layer->setName(name) == Kvad::eOk) {
    layer->setLinetypeObjectId(drawing()->continuousLinetype());
    if (table->add(id, layer.get()) == Kvad::eOk) layer.release()->close();
  }
  table->close();
  if (id.isNull()) fail(L"\"" + name + L"\" is no name for a layer.");
  return id;
}

/// The layers of a list of names and patterns, separated by commas.
KvDbObjectIdArray layersOf(const CString& list) {
  KvDbObjectIdArray ids;
  KvDbLayerTable* table = nullptr;
  if (kvdbOpenObject(table, drawing()->layerTableId(), KvDb::kForRead) != Kvad::eOk) return ids;
  for (KvDbObjectId id : table->records()) {
    CString name = kvdbRecordName(id), pattern = list;
    if (kvutWcMatch(name.MakeUpper(), pattern.MakeUpper()) == RTNORM) ids.append(id);
  }
  table->close();
  return ids;
}

template <class Work>
void changeLayers(const wchar_t* prompt, const Work& work) {
  CString list;
  const Got got = Ask(prompt).text(list);
  if (got == Got::Cancelled) return;
  const KvDbObjectIdArray ids =
      got == Got::Nothing ? layersOf(kvdbRecordName(drawing()->clayer())) : layersOf(list);
  if (ids.isEmpty()) say(L"No layer of the name \"" + list + L"\".");
  for (KvDbObjectId id : ids) change<KvDbLayerTableRecord>(id, work);
}

void makeLayer(bool makeCurrent) {
  CString names;
  if (Ask(makeCurrent ? L"\nEnter name for new layer (becomes the current layer): "
                      : L"\nEnter name list for new layer(s): ")
          .text(names) != Got::Value)
    return;
  if (makeCurrent) {
    const KvDbObjectId id = ensureLayer(names);
    if (id.isNull()) return;
    change<KvDbLayerTableRecord>(id, [](KvDbLayerTableRecord& layer) {
      if (layer.isFrozen()) layer.setIsFrozen(false);
    });
    drawing()->setClayer(id);
    return;
  }
  for (int from = 0; from <= names.GetLength();) {
    int comma = names.Find(L",", from);
    if (comma < 0) comma = names.GetLength();
    CString name = names.Mid(from, comma - from);
    if (!name.Trim().IsEmpty()) ensureLayer(name);
    from = comma + 1;
  }
}

void setCurrent() {
  CString name;
  if (Ask(L"\nEnter layer name to make current: ").text(name) != Got::Value) return;
  const KvDbObjectId id = drawing()->recordId(KvDbTable::Layer, name);
  const auto* layer = look<KvDbLayerTableRecord>(id);
  if (!layer)
    fail(L"There is no layer \"" + name + L"\".");
  else if (layer->isFrozen())
    fail(L"Layer \"" + name + L"\" is frozen and can't be the current one.");
  else
    drawing()->setClayer(id);
}

void rename() {
  CString from, to;
  if (Ask(L"\nEnter old layer name: ").text(from) != Got::Value) return;
  if (Ask(L"\nEnter new layer name: ").text(to) != Got::Value) return;
  const KvDbObjectId id = drawing()->recordId(KvDbTable::Layer, from);
  auto status = Kvad::eKeyNotFound;
  if (id != drawing()->layerZero())
    change<KvDbLayerTableRecord>(id, [&](KvDbLayerTableRecord& layer) { status = layer.setName(to); });
  if (status != Kvad::eOk) fail(L"Layer \"" + from + L"\" can't be called \"" + to + L"\".");
}

void setColor() {
  CString text;
  if (Ask(L"\nNew color (1 to 255 or its name): ").text(text) != Got::Value) return;
  const auto color = colorNamed(text, false);
  if (!color) {
    fail(L"\"" + text + L"\" is no colour.");
    return;
  }
  changeLayers(L"\nEnter name list of layer(s) for the color <current>: ",
               [&](KvDbLayerTableRecord& layer) { layer.setColorIndex(*color); });
}

void setLinetype() {
  CString name;
  if (Ask(L"\nEnter loaded linetype name <Continuous>: ").text(name) == Got::Cancelled) return;
  const KvDbObjectId id =
      name.IsEmpty() ? drawing()->continuousLinetype() : drawing()->recordId(KvDbTable::Linetype, name);
  if (id.isNull()) {
    fail(L"Linetype \"" + name + L"\" is not loaded.");
    return;
  }
  changeLayers(L"\nEnter name list of layer(s) for the linetype <current>: ",
               [&](KvDbLayerTableRecord& layer) { layer.setLinetypeObjectId(id); });
}

void setWeight() {
  double weight = 0;
  if (Ask(L"\nEnter lineweight (0.0mm - 2.11mm): ").flags(KVED_NONEG).real(weight) != Got::Value) return;
  constexpr double kWidest = 2.11;
  if (weight > kWidest) {
    fail(L"A line weight of at most 2.11 mm expected.");
    return;
  }
  changeLayers(L"\nEnter name list of layer(s) for the lineweight <current>: ",
               [&](KvDbLayerTableRecord& layer) { layer.setLineWeight(lineWeightOf(weight)); });
}

void setPlot() {
  Ask ask(L"\nEnter plotting preference [Plot/No plot] <Plot>: ");
  const Got got = ask.keywords(L"Plot No").word();
  if (got == Got::Cancelled) return;
  const bool plots = got == Got::Nothing || ask.keyword == L"Plot";
  changeLayers(L"\nEnter layer name(s) for this plot preference <current>: ",
               [&](KvDbLayerTableRecord& layer) { layer.setIsPlottable(plots); });
}

void listLayers() {
  CString pattern = L"*";
  if (Ask(L"\nEnter layer name(s) to list <*>: ").text(pattern) == Got::Cancelled) return;
  for (KvDbObjectId id : layersOf(pattern)) {
    const auto& layer = *look<KvDbLayerTableRecord>(id);
    CString line;
    line.Format(L"%s  color %d  %s%s%s%s%s", layer.getName(), layer.colorIndex(),
                kvdbRecordName(layer.linetypeObjectId()), layer.isOff() ? L"  off" : L"",
                layer.isFrozen() ? L"  frozen" : L"", layer.isLocked() ? L"  locked" : L"",
                id == drawing()->clayer() ? L"  current" : L"");
    say(line);
  }
}

void freeze(bool isFrozen) {
  changeLayers(
      isFrozen ? L"\nEnter name list of layer(s) to freeze: " : L"\nEnter name list of layer(s) to thaw: ",
      [&](KvDbLayerTableRecord& layer) {
        if (isFrozen && layer.objectId() == drawing()->clayer())
          say(L"The current layer can't be frozen.");
        else
          layer.setIsFrozen(isFrozen);
      });
}

struct Option {
  const wchar_t* keyword;
  void (*run)();
};

constexpr Option kOptions[] = {
    {L"?", listLayers},
    {L"Make", [] { makeLayer(true); }},
    {L"Set", setCurrent},
    {L"New", [] { makeLayer(false); }},
    {L"Rename", rename},
    {L"ON",
     [] { changeLayers(L"\nEnter name list of layer(s) to turn on: ", [](auto& l) { l.setIsOff(false); }); }},
    {L"OFF",
     [] { changeLayers(L"\nEnter name list of layer(s) to turn off: ", [](auto& l) { l.setIsOff(true); }); }},
    {L"Color", setColor},
    {L"Ltype", setLinetype},
    {L"LWeight", setWeight},
    {L"Plot", setPlot},
    {L"Freeze", [] { freeze(true); }},
    {L"Thaw", [] { freeze(false); }},
    {L"LOck",
     [] { changeLayers(L"\nEnter name list of layer(s) to lock: ", [](auto& l) { l.setIsLocked(true); }); }},
    {L"Unlock",
     [] {
       changeLayers(L"\nEnter name list of layer(s) to unlock: ", [](auto& l) { l.setIsLocked(false); });
     }},
};

void runLayer() {
  if (!drawing()) return;
  const AllOrNothing together;
  for (;;) {
    Ask ask(
        L"\nEnter an option "
        L"[?/Make/Set/New/Rename/ON/OFF/Color/Ltype/LWeight/Plot/Freeze/Thaw/LOck/Unlock]: ");
    if (ask.keywords(L"? Make Set New Rename ON OFF Color Ltype LWeight Plot Freeze Thaw LOck Unlock")
            .word() != Got::Keyword)
      return;
    for (const Option& option : kOptions)
      if (ask.keyword == option.keyword) option.run();
  }
}

constexpr KvCommandRow kRows[] = {
    {L"LAYER", L"LA -LAYER", KVRX_CMD_MODAL, runLayer, L"Makes, lists and changes layers.",
     L"Enter an option [?/Make/Set/New/Rename/ON/OFF/Color/Ltype/LWeight/Plot/Freeze/Thaw/LOck/Unlock]: "
     L"(empty: "
     L"ends)\nMake: name of the layer that becomes the current one\nNames may be lists with commas and `*`."},
};

}  // namespace

std::span<const KvCommandRow> layerRows() {
  return kRows;
}

}  // namespace kvcmd
