// Variables of drawings, and those that are worked out.
#include <chrono>
#include <cmath>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/header.h"
#include "host/editor/editor.h"
#include "host/editor/internal/space.h"
#include "host/editor/ucs.h"
#include "platform/system/clock.h"
#include "platform/text/number.h"

namespace {

struct Limits {
  const wchar_t* name;
  double lowest, highest;
};

constexpr double kTiny = 1e-99, kHuge = 1e99;

/// Limits of header variables that have some.
constexpr Limits kLimits[] = {
    {L"ANGDIR", 0, 1},
    {L"ATTMODE", 0, 2},
    {L"AUNITS", 0, 4},
    {L"AUPREC", 0, 8},
    {L"CELTSCALE", kTiny, kHuge},
    {L"CELWEIGHT", -3, 211},
    {L"CMLJUST", 0, 2},
    {L"DIMADEC", -1, 8},
    {L"DIMALT", 0, 1},
    {L"DIMALTD", 0, 8},
    {L"DIMASZ", 0, kHuge},
    {L"DIMATFIT", 0, 3},
    {L"DIMAUNIT", 0, 4},
    {L"DIMAZIN", 0, 3},
    {L"DIMCLRD", 0, 256},
    {L"DIMCLRE", 0, 256},
    {L"DIMCLRT", 0, 256},
    {L"DIMDEC", 0, 8},
    {L"DIMFRAC", 0, 2},
    {L"DIMJUST", 0, 4},
    {L"DIMLIM", 0, 1},
    {L"DIMLUNIT", 1, 6},
    {L"DIMSAH", 0, 1},
    {L"DIMSCALE", 0, kHuge},
    {L"DIMSD1", 0, 1},
    {L"DIMSD2", 0, 1},
    {L"DIMSE1", 0, 1},
    {L"DIMSE2", 0, 1},
    {L"DIMSOXD", 0, 1},
    {L"DIMTAD", 0, 4},
    {L"DIMTDEC", 0, 8},
    {L"DIMTFAC", kTiny, kHuge},
    {L"DIMTIH", 0, 1},
    {L"DIMTIX", 0, 1},
    {L"DIMTMOVE", 0, 2},
    {L"DIMTOFL", 0, 1},
    {L"DIMTOH", 0, 1},
    {L"DIMTOL", 0, 1},
    {L"DIMTOLJ", 0, 2},
    {L"DIMTSZ", 0, kHuge},
    {L"DIMTXT", kTiny, kHuge},
    {L"DIMUPT", 0, 1},
    {L"DIMZIN", 0, 15},
    {L"FILLETRAD", 0, kHuge},
    {L"FILLMODE", 0, 1},
    {L"INSUNITS", 0, 24},
    {L"LIMCHECK", 0, 1},
    {L"LTSCALE", kTiny, kHuge},
    {L"LUNITS", 1, 5},
    {L"LUPREC", 0, 8},
    {L"LWDISPLAY", 0, 1},
    {L"MEASUREMENT", 0, 1},
    {L"MIRRTEXT", 0, 1},
    {L"ORTHOMODE", 0, 1},
    {L"PLINEWID", 0, kHuge},
    {L"PSLTSCALE", 0, 1},
    {L"QTEXTMODE", 0, 1},
    {L"SKPOLY", 0, 2},
    {L"SPLFRAME", 0, 1},
    {L"TEXTSIZE", kTiny, kHuge},
    {L"TILEMODE", 0, 1},
    {L"UNITMODE", 0, 1},
    {L"VISRETAIN", 0, 1},
    {L"XCLIPFRAME", 0, 2},
};

/// Header variables that name a record; it must be there.
struct RecordRow {
  const wchar_t* name;
  KvDbTable table;
};
constexpr RecordRow kRecords[] = {
    {L"CLAYER", KvDbTable::Layer},        {L"CELTYPE", KvDbTable::Linetype},
    {L"TEXTSTYLE", KvDbTable::TextStyle}, {L"DIMTXSTY", KvDbTable::TextStyle},
    {L"DIMSTYLE", KvDbTable::DimStyle},
};

constexpr const wchar_t* kReadOnly[] = {L"EXTMIN",  L"EXTMAX",    L"UCSORG",    L"UCSXDIR",
                                        L"UCSYDIR", L"UCSNAME",   L"TDCREATE",  L"TDUPDATE",
                                        L"TDINDWG", L"TDUCREATE", L"TDUUPDATE", L"TDUSRTIMER"};

KvDbDatabase* drawing() {
  return kvdbDatabaseOrWorking(nullptr);
}

KvEdVarPoint asPoint(const KvGePoint3d& p) {
  return {p.x, p.y, p.z};
}

/// The header of the working drawing, or of a fresh one when there is none.
template <class Read>
KvEdVarValue readHeader(Read&& read, const KvDbHeaderVariable& row) {
  if (const KvDbDatabase* database = drawing()) return read(database->header());
  if (row.code == 10) return KvEdVarPoint{row.x, row.y, row.z};
  const KvDxfKind kind = kvdxfKind(row.code);
  if (kind == KvDxfKind::Text) return CString(row.text);
  if (kind == KvDxfKind::Real) return row.x;
  return static_cast<int>(row.x);
}

KvEdVariable headerVariable(const KvDbHeaderVariable& row) {
  KvEdVariable variable;
  variable.name = CString(row.name).Mid(1);
  variable.scope = KvEdVarScope::Drawing;
  constexpr int kPointCode = 10, kAngleCode = 50;
  const wchar_t* name = row.name;
  const auto set = [](auto&& store) {
    KvDbDatabase* database = drawing();
    return database && store(database->header()) == Kvad::eOk;
  };
  if (row.code == kPointCode) {
    variable.type = row.dimensions == 2 ? RTPOINT : RT3DPOINT;
    variable.read = [name, row] {
      return readHeader([&](KvDbHeader& h) -> KvEdVarValue { return asPoint(h.point(name)); }, row);
    };
    variable.write = [name, set](const KvEdVarValue& value) {
      const auto& p = std::get<KvEdVarPoint>(value);
      return set([&](KvDbHeader& h) { return h.setPoint(name, {p.x, p.y, p.z}); });
    };
  } else if (row.code == kAngleCode) {
    variable.type = RTREAL;
    variable.read = [name, row] {
      return readHeader([&](KvDbHeader& h) -> KvEdVarValue { return h.angle(name); }, row);
    };
    variable.write = [name, set](const KvEdVarValue& value) {
      return set([&](KvDbHeader& h) { return h.setAngle(name, std::get<double>(value)); });
    };
  } else if (const KvDxfKind kind = kvdxfKind(row.code); kind == KvDxfKind::Real) {
    variable.type = RTREAL;
    variable.read = [name, row] {
      return readHeader([&](KvDbHeader& h) -> KvEdVarValue { return h.real(name); }, row);
    };
    variable.write = [name, set](const KvEdVarValue& value) {
      return set([&](KvDbHeader& h) { return h.setReal(name, std::get<double>(value)); });
    };
  } else if (kind == KvDxfKind::Text) {
    variable.type = RTSTR;
    variable.read = [name, row] {
      return readHeader([&](KvDbHeader& h) -> KvEdVarValue { return h.text(name); }, row);
    };
    variable.write = [name, set](const KvEdVarValue& value) {
      return set([&](KvDbHeader& h) { return h.setText(name, std::get<CString>(value)); });
    };
  } else {
    variable.type = RTSHORT;
    variable.read = [name, row] {
      return readHeader([&](KvDbHeader& h) -> KvEdVarValue { return h.whole(name); }, row);
    };
    variable.write = [name, set](const KvEdVarValue& value) {
      return set([&](KvDbHeader& h) { return h.setWhole(name, std::get<int>(value)); });
    };
  }
  return variable;
}

KvEdVariable computed(const wchar_t* name, KvEdVarType type, std::function<KvEdVarValue()> read) {
  KvEdVariable variable;
  variable.name = name;
  variable.scope = KvEdVarScope::Computed;
  variable.type = type;
  variable.readOnly = true;
  variable.read = std::move(read);
  return variable;
}

/// A colour as people write it.
CString colorText(int index) {
  if (index == kKvColorByLayer) return L"BYLAYER";
  if (index == kKvColorByBlock) return L"BYBLOCK";
  CString text;
  text.Format(L"%d", index);
  return text;
}

bool setColor(const CString& given) {
  static constexpr const wchar_t* kNames[] = {L"BYBLOCK", L"RED",  L"YELLOW",  L"GREEN",
                                              L"CYAN",    L"BLUE", L"MAGENTA", L"WHITE"};
  KvDbDatabase* database = drawing();
  int index = -1;
  for (std::size_t i = 0; i < std::size(kNames); ++i)
    if (given.CompareNoCase(kNames[i]) == 0) index = static_cast<int>(i);
  if (given.CompareNoCase(L"BYLAYER") == 0) index = kKvColorByLayer;
  if (index < 0 && !platform::parseWhole(given.view(), index)) return false;
  if (!database || index < kKvColorByBlock || index > kKvColorByLayer) return false;
  return database->setCecolor(KvCmEntityColor::ofIndex(index)) == Kvad::eOk;
}

/// The corners of all that stands in the current space; those of nothing when it is empty.
KvDbExtents spaceExtents() {
  KvDbExtents all;
  const KvDbDatabase* database = drawing();
  KvDbBlockTableRecord* space = nullptr;
  if (!database || kvdbOpenObject(space, kved::currentSpace(*database)) != Kvad::eOk) return all;
  for (const KvDbObjectId id : space->entities()) {
    KvDbExtents one;
    const auto* entity = KvDbEntity::cast(id.stub()->object);
    if (entity && entity->getGeomExtents(one) == Kvad::eOk) all.addExt(one);
  }
  space->close();
  return all;
}

KvEdVarPoint extent(bool isLeast) {
  constexpr double kNothing = 1e20;
  const KvDbExtents all = spaceExtents();
  if (all.isEmpty()) {
    const double far = isLeast ? kNothing : -kNothing;
    return {far, far, far};
  }
  return asPoint(isLeast ? all.minPoint() : all.maxPoint());
}

void defineSpecial(KvEdSysVars& variables) {
  KvEdVariable color;
  color.name = L"CECOLOR";
  color.scope = KvEdVarScope::Drawing;
  color.type = RTSTR;
  color.read = [] { return colorText(drawing() ? drawing()->cecolor().colorIndex() : kKvColorByLayer); };
  color.write = [](const KvEdVarValue& value) { return setColor(std::get<CString>(value)); };
  variables.define(std::move(color));

  KvEdVariable separator;
  separator.name = L"DIMDSEP";
  separator.scope = KvEdVarScope::Drawing;
  separator.type = RTSTR;
  separator.read = [] {
    const int code = drawing() ? drawing()->header().whole(L"$DIMDSEP") : L',';
    return CString(std::wstring(1, code > 0 ? static_cast<wchar_t>(code) : L'.').c_str());
  };
  separator.write = [](const KvEdVarValue& value) {
    const auto& text = std::get<CString>(value);
    return drawing() && text.GetLength() == 1 &&
           drawing()->header().setWhole(L"$DIMDSEP", text.GetAt(0)) == Kvad::eOk;
  };
  variables.define(std::move(separator));

  for (const RecordRow& row : kRecords) {
    KvEdVariable variable = *variables.find(row.name);
    variable.write = [row](const KvEdVarValue& value) {
      KvDbDatabase* database = drawing();
      if (!database) return false;
      const KvDbObjectId id = database->recordId(row.table, std::get<CString>(value));
      if (row.table == KvDbTable::DimStyle) return database->setDimstyle(id) == Kvad::eOk;
      return id.isValid() &&
             database->header().setRecord(L"$" + CString(row.name), row.table, id) == Kvad::eOk;
    };
    variables.define(std::move(variable));
  }
  variables.define(computed(L"EXTMIN", RT3DPOINT, [] { return extent(true); }));
  variables.define(computed(L"EXTMAX", RT3DPOINT, [] { return extent(false); }));
}

KvEdView currentView() {
  const KvDbDatabase* database = drawing();
  return database ? kvedViewOf(*database) : KvEdView();
}

KvGeMatrix3d worldToUser() {
  return kvedUserToWorld(drawing()).inverse();
}

/// Days since the beginning of the Julian calendar count, noon-based ones shifted to midnight.
double julianDate() {
  const platform::UtcTime now = platform::utcNow();
  const int a = (14 - now.month) / 12, y = now.year + 4800 - a, m = now.month + 12 * a - 3;
  const int day = now.day + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
  return day + (now.hour * 3600 + now.minute * 60 + now.second + now.millisecond / 1000.0) / 86400.0;
}

double calendarDate() {
  const platform::UtcTime now = platform::utcNow();
  return now.year * 10000.0 + now.month * 100.0 + now.day + now.hour / 1e2 + now.minute / 1e4 +
         (now.second + now.millisecond / 1000.0) / 1e6;
}

// Groups of a viewport's record that are variables.
enum VportCode {
  kSnapBase = 13,
  kSnapUnit = 14,
  kGridUnit = 15,
  kSnapAngle = 50,
  kSnapOn = 75,
  kGridOn = 76
};

/// The active viewport's record; null when the drawing has none.
KvDbObjectId activeViewport() {
  return drawing() ? drawing()->recordId(KvDbTable::Viewport, L"*Active") : KvDbObjectId();
}
const KvDbViewportTableRecord* viewportRecord() {
  const KvDbObjectId id = activeViewport();
  return id.isValid() ? KvDbViewportTableRecord::cast(const_cast<const KvDbObject*>(id.stub()->object))
                      : nullptr;
}
template <class Work>
bool changeViewport(const Work& work) {
  KvDbViewportTableRecord* record = nullptr;
  if (kvdbOpenObject(record, activeViewport(), KvDb::kForWrite) != Kvad::eOk) return false;
  work(*record);
  record->close();
  return true;
}

/// Variables that stand in the record of the active viewport.
void defineDrawingAids(KvEdSysVars& variables) {
  const auto define = [&](const wchar_t* name, KvEdVarType type, std::function<KvEdVarValue()> read,
                          std::function<bool(const KvEdVarValue&)> write) {
    KvEdVariable variable = computed(name, type, std::move(read));
    variable.readOnly = false;
    variable.scope = KvEdVarScope::Drawing;
    variable.write = std::move(write);
    if (type == RTSHORT) variable.highest = 1;
    variables.define(std::move(variable));
  };
  const auto pair = [&](const wchar_t* name, int code, double standard, bool isSize) {
    define(
        name, RTPOINT,
        [=] {
          const KvGePoint3d plain(standard, standard, 0);
          const KvDbViewportTableRecord* record = viewportRecord();
          const KvGePoint3d held = record ? record->storedPoint(code, plain) : plain;
          return KvEdVarPoint{held.x, held.y, 0};
        },
        [=](const KvEdVarValue& value) {
          const auto& p = std::get<KvEdVarPoint>(value);
          if (isSize && !(p.x >= 0 && p.y >= 0)) return false;
          return changeViewport([&](KvDbViewportTableRecord& record) {
            record.setStoredPoint(code, {p.x, p.y, 0}, 2);
          });
        });
  };
  const auto flag = [&](const wchar_t* name, int code) {
    define(
        name, RTSHORT,
        [=] {
          const KvDbViewportTableRecord* record = viewportRecord();
          return record ? record->storedWhole(code, 0) : 0;
        },
        [=](const KvEdVarValue& value) {
          return changeViewport(
              [&](KvDbViewportTableRecord& record) { record.setStoredWhole(code, std::get<int>(value)); });
        });
  };
  constexpr double kPlainSpacing = 10;
  pair(L"SNAPBASE", kSnapBase, 0, false);
  pair(L"SNAPUNIT", kSnapUnit, kPlainSpacing, true);
  pair(L"GRIDUNIT", kGridUnit, kPlainSpacing, true);
  flag(L"SNAPMODE", kSnapOn);
  flag(L"GRIDMODE", kGridOn);
  define(
      L"SNAPANG", RTREAL,
      [] {
        const KvDbViewportTableRecord* record = viewportRecord();
        return record ? kvdxfRadians(record->storedReal(kSnapAngle, 0)) : 0.0;
      },
      [](const KvEdVarValue& value) {
        return changeViewport([&](KvDbViewportTableRecord& record) {
          record.setStoredReal(kSnapAngle, kvdxfDegrees(std::get<double>(value)));
        });
      });
}

void defineViews(KvEdSysVars& variables) {
  variables.define(computed(L"VIEWCTR", RT3DPOINT, [] {
    const KvEdView view = currentView();
    return asPoint(worldToUser() * (view.viewToWorld() * KvGePoint3d(view.center.x, view.center.y, 0)));
  }));
  variables.define(computed(L"VIEWSIZE", RTREAL, [] { return currentView().height; }));
  variables.define(computed(L"VIEWTWIST", RTREAL, [] { return currentView().twist; }));
  variables.define(computed(L"VIEWDIR", RT3DPOINT, [] {
    return asPoint(KvGePoint3d::kOrigin + worldToUser() * currentView().direction);
  }));
  variables.define(
      computed(L"TARGET", RT3DPOINT, [] { return asPoint(worldToUser() * currentView().target); }));
  variables.define(
      computed(L"CVPORT", RTSHORT, [] { return drawing() ? kvedCurrentViewport(*drawing()) : 2; }));
  variables.define(computed(L"WORLDUCS", RTSHORT, [] {
    return kvedUserToWorld(drawing()).isEqualTo(KvGeMatrix3d::kIdentity) ? 1 : 0;
  }));
  const auto axis = [](int column) {
    return [column] { return asPoint(KvGePoint3d::kOrigin + kvedUserToWorld(drawing()).column(column)); };
  };
  variables.define(computed(L"UCSXDIR", RT3DPOINT, axis(0)));
  variables.define(computed(L"UCSYDIR", RT3DPOINT, axis(1)));
  variables.define(computed(L"UCSORG", RT3DPOINT, axis(3)));
  variables.define(
      computed(L"UNDOMARKS", RTSHORT, [] { return drawing() ? drawing()->undoRecorder().markCount() : 0; }));
  variables.define(computed(L"UNDOCTL", RTSHORT, [] {
    if (!drawing()) return 0;
    enum { kOn = 1, kOneOnly = 2, kGathering = 8 };
    const KvDbUndoRecorder& undo = drawing()->undoRecorder();
    return (undo.limit() != 0 ? kOn : 0) | (undo.limit() == 1 ? kOneOnly : 0) |
           (undo.isGathering() ? kGathering : 0);
  }));
  variables.define(computed(L"DBMOD", RTSHORT, [] { return drawing() ? drawing()->modifiedWord() : 0; }));
  variables.define(computed(L"DATE", RTREAL, [] { return julianDate(); }));
  variables.define(computed(L"CDATE", RTREAL, [] { return calendarDate(); }));
}

}  // namespace

void kvedDefineDrawingVariables(KvEdSysVars& variables) {
  for (const KvDbHeaderVariable& row : kvdbHeaderVariables()) variables.define(headerVariable(row));
  for (const Limits& row : kLimits) {
    KvEdVariable variable = *variables.find(row.name);
    variable.lowest = row.lowest;
    variable.highest = row.highest;
    variables.define(std::move(variable));
  }
  for (const wchar_t* name : kReadOnly) {
    KvEdVariable variable = *variables.find(name);
    variable.readOnly = true;
    variables.define(std::move(variable));
  }
  defineSpecial(variables);
  defineViews(variables);
  defineDrawingAids(variables);
}

void kvedDefineEditorVariables(KvEdSysVars& variables, KvEdEditor& editor) {
  variables.define(computed(L"CMDNAMES", RTSTR, [&editor] { return editor.commandNames(); }));
  variables.define(computed(L"CMDACTIVE", RTSHORT, [&editor] { return editor.isCommandRunning() ? 1 : 0; }));
  variables.define(computed(L"LASTANGLE", RTREAL, [&editor] { return editor.lastAngle; }));
  variables.define(computed(L"SCREENSIZE", RTPOINT, [&editor] {
    const KvEdScreenSize size = editor.screen().size;
    return KvEdVarPoint{static_cast<double>(size.width), static_cast<double>(size.height), 0};
  }));
  KvEdVariable last;
  last.name = L"LASTPOINT";
  last.type = RT3DPOINT;
  last.read = [&editor] { return asPoint(editor.lastPoint); };
  last.write = [&editor](const KvEdVarValue& value) {
    const auto& p = std::get<KvEdVarPoint>(value);
    editor.lastPoint = {p.x, p.y, p.z};
    return true;
  };
  variables.define(std::move(last));
}
