// CHPROP, CHANGE, MATCHPROP.
#include "host/commands/internal/choices.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/curves.h"
#include "host/entities/text.h"

namespace kvcmd {

std::optional<int> colorNamed(CString text, bool withLogical) {
  constexpr const wchar_t* kNames[] = {L"RED", L"YELLOW", L"GREEN", L"CYAN", L"BLUE", L"MAGENTA", L"WHITE"};
  constexpr int kLastColor = 255;
  text.Trim().MakeUpper();
  for (int i = 0; i < static_cast<int>(std::size(kNames)); ++i)
    if (text == kNames[i]) return i + 1;
  if (withLogical && text == L"BYLAYER") return kKvColorByLayer;
  if (withLogical && text == L"BYBLOCK") return kKvColorByBlock;
  const int number = _wtoi(text);
  const bool isLogical = withLogical && (number == kKvColorByLayer || text == L"0");
  if (!isLogical && (number < 1 || number > kLastColor)) return std::nullopt;
  return number;
}

namespace {

template <class Work>
void changeEach(const KvDbObjectIdArray& ids, const Work& work) {
  for (KvDbObjectId id : ids) change<KvDbEntity>(id, work);
}

void changeColor(const KvDbObjectIdArray& ids) {
  CString text;
  if (Ask(L"\nEnter new color <BYLAYER>: ").text(text) == Got::Cancelled) return;
  const auto color = text.IsEmpty() ? kKvColorByLayer : colorNamed(text, true);
  if (!color) return say(L"\"" + text + L"\" is no colour.");
  changeEach(ids, [&](KvDbEntity& entity) { entity.setColorIndex(*color); });
}

void changeLayer(const KvDbObjectIdArray& ids) {
  CString name;
  if (Ask(L"\nEnter new layer name <" + kvdbRecordName(drawing()->clayer()) + L">: ").text(name) ==
      Got::Cancelled)
    return;
  if (name.IsEmpty()) name = kvdbRecordName(drawing()->clayer());
  if (drawing()->recordId(KvDbTable::Layer, name).isNull())
    return say(L"There is no layer \"" + name + L"\".");
  changeEach(ids, [&](KvDbEntity& entity) { entity.setLayer(name); });
}

void changeLinetype(const KvDbObjectIdArray& ids) {
  CString name;
  if (Ask(L"\nEnter new linetype name <ByLayer>: ").text(name) == Got::Cancelled) return;
  if (name.IsEmpty()) name = L"ByLayer";
  if (drawing()->recordId(KvDbTable::Linetype, name).isNull())
    return say(L"Linetype \"" + name + L"\" is not loaded.");
  changeEach(ids, [&](KvDbEntity& entity) { entity.setLinetype(name); });
}

void changeScale(const KvDbObjectIdArray& ids) {
  double scale = 1;
  if (Ask(L"\nSpecify new linetype scale <1>: ").flags(KVED_NOZERO | KVED_NONEG).real(scale) ==
      Got::Cancelled)
    return;
  changeEach(ids, [&](KvDbEntity& entity) { entity.setLinetypeScale(scale); });
}

void changeWeight(const KvDbObjectIdArray& ids) {
  const auto weight = askLineWeight(L"\nEnter new lineweight in mm or [ByLayer/ByBlock/DEFAULT] <ByLayer>: ",
                                    KvDb::kLnWtByLayer);
  if (weight) changeEach(ids, [&](KvDbEntity& entity) { entity.setLineWeight(*weight); });
}

void changeThickness(const KvDbObjectIdArray& ids) {
  double thickness = 0;
  if (Ask(L"\nSpecify new thickness <0>: ").distance(thickness) == Got::Cancelled) return;
  changeEach(ids, [&](KvDbEntity& entity) {
    if (auto* line = KvDbLine::cast(&entity)) line->setThickness(thickness);
    if (auto* circle = KvDbCircle::cast(&entity)) circle->setThickness(thickness);
    if (auto* arc = KvDbArc::cast(&entity)) arc->setThickness(thickness);
    if (auto* text = KvDbText::cast(&entity)) text->setThickness(thickness);
    if (auto* trace = KvDbTrace::cast(&entity)) trace->setThickness(thickness);
  });
}

struct Property {
  const wchar_t* keyword;
  void (*run)(const KvDbObjectIdArray& ids);
};
constexpr Property kProperties[] = {{L"Color", changeColor},    {L"LAyer", changeLayer},
                                    {L"LType", changeLinetype}, {L"ltScale", changeScale},
                                    {L"LWeight", changeWeight}, {L"Thickness", changeThickness}};

void changeProperties(const KvDbObjectIdArray& ids) {
  for (;;) {
    Ask ask(L"\nEnter property to change [Color/LAyer/LType/ltScale/LWeight/Thickness]: ");
    if (ask.keywords(L"Color LAyer LType ltScale LWeight Thickness").word() != Got::Keyword) return;
    for (const Property& one : kProperties)
      if (ask.keyword == one.keyword) one.run(ids);
  }
}

void runChprop() {
  if (!drawing()) return;
  const AllOrNothing together;
  const KvDbObjectIdArray ids = select();
  if (!ids.isEmpty()) changeProperties(ids);
}

/// The end of a line that is nearer to a point moves there; a circle gets its radius through it.
void changeByPoint(const KvDbObjectIdArray& ids, const KvGePoint3d& world) {
  changeEach(ids, [&](KvDbEntity& entity) {
    if (auto* line = KvDbLine::cast(&entity)) {
      const bool isStart = line->startPoint().distanceTo(world) < line->endPoint().distanceTo(world);
      isStart ? line->setStartPoint(world) : line->setEndPoint(world);
    }
    if (auto* circle = KvDbCircle::cast(&entity)) circle->setRadius(circle->center().distanceTo(world));
    if (auto* text = KvDbText::cast(&entity)) {
      const KvGePoint3d at = text->isDefaultAlignment() ? text->position() : text->alignmentPoint();
      text->transformBy(KvGeMatrix3d::translation(world - at));
    }
  });
}

void runChange() {
  if (!drawing()) return;
  const AllOrNothing together;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  KvGePoint3d point;
  Ask ask(L"\nSpecify change point or [Properties]: ");
  const Got got = ask.keywords(L"Properties").point(point);
  if (got == Got::Keyword) changeProperties(ids);
  if (got == Got::Value) changeByPoint(ids, toWorld(point));
}

void runMatchprop() {
  if (!drawing()) return;
  KvDbObjectId source;
  if (Ask(L"\nSelect source object: ").entity(source) != Got::Value) return;
  for (KvDbObjectId id : select(L"\nSelect destination object(s): ")) {
    if (id == source) continue;
    change<KvDbEntity>(id, [&](KvDbEntity& entity) { entity.setPropertiesFrom(look<KvDbEntity>(source)); });
    const auto* like = look<KvDbText>(source);
    if (like)
      change<KvDbText>(id, [&](KvDbText& text) {
        text.setTextStyle(like->textStyle());
        text.setHeight(like->height());
        text.setWidthFactor(like->widthFactor());
        text.setOblique(like->oblique());
      });
  }
}

constexpr KvCommandRow kRows[] = {
    {L"CHANGE", L"-CH", KVRX_CMD_USEPICKSET, runChange, L"Changes objects by a point, or their properties.",
     L"Select objects:\nSpecify change point or [Properties]: (lines end there, circles go through it, texts "
     L"move there)\nEnter property to change [Color/LAyer/LType/ltScale/LWeight/Thickness]: (empty: ends)"},
    {L"CHPROP", L"CH", KVRX_CMD_USEPICKSET, runChprop, L"Changes colour, layer, linetype and the like.",
     L"Select objects:\nEnter property to change [Color/LAyer/LType/ltScale/LWeight/Thickness]: (empty: "
     L"ends)"},
    {L"MATCHPROP", L"MA PAINTER", KVRX_CMD_MODAL, runMatchprop,
     L"Gives objects the properties of another one.",
     L"Select source object:\nSelect destination object(s):"},
};

}  // namespace

std::span<const KvCommandRow> propertyRows() {
  return kRows;
}

}  // namespace kvcmd
