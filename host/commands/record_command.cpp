// LINETYPE, STYLE, DIMSTYLE, RENAME, PURGE.
#include "host/base/wcmatch.h"
#include "host/commands/internal/dimstyle.h"
#include "host/commands/internal/records.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/header.h"
#include "host/database/layout.h"
#include "host/entities/dimension.h"
#include "host/io/linetype_file.h"

namespace kvcmd {

KvDbDimVars presentDimVars() {
  KvDbDimVars vars = KvDbDimVars::ofStyle(drawing()->dimstyle());
  for (const KvDbDimVarRow& row : kvdbDimVarTable()) {
    const CString name = L"$" + CString(row.name);
    if (!drawing()->extras().find(name)) continue;
    if (row.kind == KvDbDimVarRow::Real) vars.set(row.variable, drawing()->header().real(name));
    if (row.kind == KvDbDimVarRow::Int) vars.set(row.variable, drawing()->header().whole(name));
    if (row.kind == KvDbDimVarRow::Text) vars.set(row.variable, drawing()->header().text(name));
  }
  return vars;
}

KvDbObjectIdArray recordsMatching(KvDbTable table, CString patterns) {
  KvDbObjectIdArray ids;
  patterns.MakeUpper();
  if (const auto* all = look<KvDbSymbolTable>(drawing()->tableId(table)))
    for (KvDbObjectId id : all->records())
      if (kvutWcMatch(kvdbRecordName(id).MakeUpper(), patterns) == RTNORM) ids.append(id);
  return ids;
}

KvDbObjectId addRecord(KvDbTable where, std::unique_ptr<KvDbSymbolTableRecord> record, const CString& name) {
  KvDbSymbolTable* table = nullptr;
  KvDbObjectId id;
  if (kvdbOpenObject(table, drawing()->tableId(where), KvDb::kForWrite) != Kvad::eOk) return id;
  if (record->setName(name) == Kvad::eOk && table->add(id, record.get()) == Kvad::eOk)
    record.release()->close();
  table->close();
  if (id.isNull()) fail(L"\"" + name + L"\" is no name for that.");
  return id;
}

namespace {

void listRecords(KvDbTable table, const wchar_t* prompt) {
  CString pattern = L"*";
  if (Ask(prompt).text(pattern) == Got::Cancelled) return;
  for (KvDbObjectId id : recordsMatching(table, pattern)) say(kvdbRecordName(id));
}

void loadLinetypes() {
  CString names, file;
  const CString standard = variable(L"MEASUREMENT", 1) != 0 ? L"kvadiso.lin" : L"kvad.lin";
  if (Ask(L"\nEnter linetype(s) to load: ").text(names) != Got::Value) return;
  if (Ask(L"\nEnter name of linetype file to search <" + standard + L">: ").text(file, true) ==
      Got::Cancelled)
    return;
  if (file.IsEmpty()) file = standard;
  for (int from = 0; from <= names.GetLength();) {
    int comma = names.Find(L",", from);
    if (comma < 0) comma = names.GetLength();
    CString name = names.Mid(from, comma - from);
    from = comma + 1;
    if (name.Trim().IsEmpty()) continue;
    switch (kvdbLoadLineTypeFile(name, file, drawing())) {
      case Kvad::eOk:
        say(L"Linetype \"" + name + L"\" loaded.");
        break;
      case Kvad::eLinetypeAlreadyPresent:
        say(L"Linetype \"" + name + L"\" is loaded already.");
        break;
      case Kvad::eUndefinedLineType:
        fail(L"The file has no linetype \"" + name + L"\".");
        break;
      case Kvad::eBadLinetypeDefinition:
        fail(L"A definition in the file can't be read.");
        break;
      default:
        return fail(L"The file \"" + file + L"\" can't be read.");
    }
  }
}

void setLinetype() {
  CString name;
  if (Ask(L"\nSpecify linetype name or [?] <" + kvdbRecordName(drawing()->celtype()) + L">: ").text(name) !=
      Got::Value)
    return;
  const KvDbObjectId id = drawing()->recordId(KvDbTable::Linetype, name);
  if (id.isNull() || drawing()->setCeltype(id) != Kvad::eOk)
    fail(L"Linetype \"" + name + L"\" is not loaded.");
}

void runLinetype() {
  while (drawing()) {
    Ask ask(L"\nEnter an option [?/Load/Set]: ");
    if (ask.keywords(L"? Load Set").word() != Got::Keyword) return;
    if (ask.keyword == L"?")
      listRecords(KvDbTable::Linetype, L"\nEnter linetype name(s) to list <*>: ");
    else
      ask.keyword == L"Load" ? loadLinetypes() : setLinetype();
  }
}

void runStyle() {
  if (!drawing()) return;
  CString name = kvdbRecordName(drawing()->textstyle());
  if (Ask(L"\nEnter name of text style or [?] <" + name + L">: ").text(name) == Got::Cancelled) return;
  if (name == L"?") return listRecords(KvDbTable::TextStyle, L"\nEnter text style(s) to list <*>: ");
  if (!kvdbIsSymbolName(name.view())) return fail(L"\"" + name + L"\" is no name for a text style.");
  const KvDbObjectId present = drawing()->recordId(KvDbTable::TextStyle, name);
  const KvDbTextStyleTableRecord plain;
  const auto* like = present.isNull() ? &plain : look<KvDbTextStyleTableRecord>(present);
  CString font = like->fileName();
  double height = like->textSize(), factor = like->xScale(), oblique = like->obliquingAngle();
  constexpr double kDegrees = 180 / kvge::kPi, kSteepest = 85;
  if (Ask(L"\nSpecify full font name or font filename <" + font + L">: ").text(font, true) == Got::Cancelled)
    return;
  if (Ask(L"\nSpecify height of text <" + numberText(height) + L">: ").flags(KVED_NONEG).distance(height) ==
      Got::Cancelled)
    return;
  if (Ask(L"\nSpecify width factor <" + numberText(factor) + L">: ")
          .flags(KVED_NONEG | KVED_NOZERO)
          .real(factor) == Got::Cancelled)
    return;
  double degrees = oblique * kDegrees;
  if (Ask(L"\nSpecify obliquing angle <" + numberText(degrees) + L">: ").real(degrees) == Got::Cancelled)
    return;
  if (std::fabs(degrees) > kSteepest) return fail(L"An obliquing angle of at most 85 degrees expected.");
  const auto backwards = askYes(L"\nDisplay text backwards?", like->isBackward());
  if (!backwards) return;
  const auto upsideDown = askYes(L"\nDisplay text upside-down?", like->isUpsideDown());
  if (!upsideDown) return;
  const KvDbObjectId id =
      present.isNull() ? makeRecord<KvDbTextStyleTableRecord>(KvDbTable::TextStyle, name) : present;
  change<KvDbTextStyleTableRecord>(id, [&](KvDbTextStyleTableRecord& style) {
    style.setFileName(font);
    style.setTextSize(height);
    style.setXScale(factor);
    style.setObliquingAngle(degrees / kDegrees);
    style.setIsBackward(*backwards);
    style.setIsUpsideDown(*upsideDown);
  });
  if (drawing()->setTextstyle(id) == Kvad::eOk) say(L"\"" + name + L"\" is now the current text style.");
}

/// The drawing's variables follow the style.
void takeStyle(KvDbObjectId style) {
  drawing()->setDimstyle(style);
  const KvDbDimVars vars = KvDbDimVars::ofStyle(style);
  for (const KvDbDimVarRow& row : kvdbDimVarTable()) {
    const CString name = L"$" + CString(row.name);
    if (!drawing()->extras().find(name)) continue;
    if (row.kind == KvDbDimVarRow::Real) drawing()->header().setReal(name, vars.real(row.variable));
    if (row.kind == KvDbDimVarRow::Int) drawing()->header().setWhole(name, vars.whole(row.variable));
    if (row.kind == KvDbDimVarRow::Text) drawing()->header().setText(name, vars.text(row.variable));
  }
}

void saveDimStyle() {
  CString name;
  if (Ask(L"\nEnter name for new dimension style or [?]: ").text(name) != Got::Value) return;
  if (name == L"?") return listRecords(KvDbTable::DimStyle, L"\nEnter dimension style(s) to list <*>: ");
  KvDbObjectId id = drawing()->recordId(KvDbTable::DimStyle, name);
  if (!id.isNull()) {
    if (!askYes(L"\nThat name is already in use, redefine it?", false).value_or(false)) return;
  } else {
    id = makeRecord<KvDbDimStyleTableRecord>(KvDbTable::DimStyle, name);
  }
  const KvDbDimVars vars = presentDimVars();
  if (change<KvDbDimStyleTableRecord>(id, [&](KvDbDimStyleTableRecord& style) { vars.writeTo(style); }))
    takeStyle(id);
}

/// Dimensions that are there already get the current style and variables.
void applyDimStyle() {
  const KvDbDimVars vars = presentDimVars();
  for (KvDbObjectId id : select())
    change<KvDbDimension>(id, [&](KvDbDimension& dimension) {
      dimension.setDimensionStyle(drawing()->dimstyle());
      dimension.setDimVars(vars);
      dimension.recomputeDimBlock(true);
    });
}

void runDimStyle() {
  if (!drawing()) return;
  say(L"Current dimension style: " + kvdbRecordName(drawing()->dimstyle()));
  Ask ask(L"\nEnter a dimension style option [Save/Restore/Variables/Apply/?] <Restore>: ");
  const Got got = ask.keywords(L"Save Restore Variables Apply ?").word();
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword && ask.keyword == L"Apply") return applyDimStyle();
  if (got == Got::Keyword && ask.keyword == L"Save") return saveDimStyle();
  if (got == Got::Keyword && ask.keyword == L"?")
    return listRecords(KvDbTable::DimStyle, L"\nEnter dimension style(s) to list <*>: ");
  const bool lists = got == Got::Keyword && ask.keyword == L"Variables";
  CString name;
  if (Ask(L"\nEnter a dimension style name: ").text(name) != Got::Value) return;
  const KvDbObjectId id = drawing()->recordId(KvDbTable::DimStyle, name);
  if (id.isNull()) return fail(L"There is no dimension style \"" + name + L"\".");
  if (!lists) return takeStyle(id);
  const KvDbDimVars vars = KvDbDimVars::ofStyle(id);
  for (const KvDbDimVarRow& row : kvdbDimVarTable())
    if (row.kind != KvDbDimVarRow::Reference)
      say(CString(row.name) + L" " +
          (row.kind == KvDbDimVarRow::Text ? vars.text(row.variable) : numberText(vars.real(row.variable))));
}

struct Kind {
  const wchar_t* keyword;
  KvDbTable table;
};

constexpr Kind kRenamed[] = {{L"Block", KvDbTable::Block},     {L"Dimstyle", KvDbTable::DimStyle},
                             {L"LAyer", KvDbTable::Layer},     {L"LType", KvDbTable::Linetype},
                             {L"Style", KvDbTable::TextStyle}, {L"Ucs", KvDbTable::UCS},
                             {L"VIew", KvDbTable::View}};

/// Records whose names files and commands rely on.
bool isFixed(KvDbTable table, const CString& name) {
  const auto is = [&](const wchar_t* fixed) { return name.CompareNoCase(fixed) == 0; };
  switch (table) {
    case KvDbTable::Layer:
      return is(L"0");
    case KvDbTable::Linetype:
      return is(L"ByLayer") || is(L"ByBlock") || is(L"Continuous");
    case KvDbTable::TextStyle:
    case KvDbTable::DimStyle:
      return is(L"Standard");
    case KvDbTable::RegApp:
      return is(L"ACAD");
    default:
      return false;
  }
}

void runRename() {
  if (!drawing()) return;
  Ask ask(L"\nEnter object type to rename [Block/Dimstyle/LAyer/LType/Style/Ucs/VIew]: ");
  if (ask.keywords(L"Block Dimstyle LAyer LType Style Ucs VIew").word() != Got::Keyword) return;
  CString from, to;
  if (Ask(L"\nEnter old name: ").text(from) != Got::Value ||
      Ask(L"\nEnter new name: ").text(to) != Got::Value)
    return;
  for (const Kind& kind : kRenamed) {
    if (ask.keyword != kind.keyword) continue;
    const KvDbObjectId id = drawing()->recordId(kind.table, from);
    const auto* block = look<KvDbBlockTableRecord>(id);
    const bool isOpenToAll = !id.isNull() &&
                             !(kind.table != KvDbTable::DimStyle && kind.table != KvDbTable::TextStyle &&
                               isFixed(kind.table, from)) &&
                             !(block && (block->isSpace() || block->isAnonymous()));
    if (id.isNull()) return fail(L"There is no \"" + from + L"\".");
    auto status = Kvad::eNotApplicable;
    if (isOpenToAll)
      change<KvDbSymbolTableRecord>(id, [&](KvDbSymbolTableRecord& record) { status = record.setName(to); });
    if (status != Kvad::eOk) fail(L"\"" + from + L"\" can't be called \"" + to + L"\".");
  }
}

/// Blocks come first: what they use may go then too.
constexpr Kind kPurged[] = {{L"Blocks", KvDbTable::Block},    {L"Dimstyles", KvDbTable::DimStyle},
                            {L"LAyers", KvDbTable::Layer},    {L"STyles", KvDbTable::TextStyle},
                            {L"LTypes", KvDbTable::Linetype}, {L"Regapps", KvDbTable::RegApp}};

bool isCurrent(KvDbObjectId id) {
  const KvDbDatabase& d = *drawing();
  return id == d.clayer() || id == d.celtype() || id == d.textstyle() || id == d.dimstyle();
}

/// False when the user breaks off.
bool purgeKind(KvDbTable table, const CString& names, bool verifies, int& purged) {
  KvDbObjectIdArray ids;
  for (KvDbObjectId id : recordsMatching(table, names)) {
    const auto* block = look<KvDbBlockTableRecord>(id);
    if (!isFixed(table, kvdbRecordName(id)) && !isCurrent(id) &&
        !(block && (block->isSpace() || block->isLayout())))
      ids.append(id);
  }
  drawing()->purge(ids);
  for (KvDbObjectId id : ids) {
    if (verifies) {
      const auto answer = askYes(L"\nPurge \"" + kvdbRecordName(id) + L"\"?", false);
      if (!answer) return false;
      if (!*answer) continue;
    }
    auto status = Kvad::eCannotBeErased;
    change<KvDbBlockTableRecord>(id, [](KvDbBlockTableRecord& block) { block.eraseContent(); });
    change<KvDbObject>(id, [&](KvDbObject& record) { status = record.erase(); });
    if (status == Kvad::eOk) ++purged;
  }
  return true;
}

void runPurge() {
  if (!drawing()) return;
  Ask ask(L"\nEnter type of unused objects to purge [Blocks/Dimstyles/LAyers/LTypes/STyles/Regapps/All]: ");
  if (ask.keywords(L"Blocks Dimstyles LAyers LTypes STyles Regapps All").word() != Got::Keyword) return;
  CString names = L"*";
  if (Ask(L"\nEnter name(s) to purge <*>: ").text(names) == Got::Cancelled) return;
  const auto verifies = askYes(L"\nVerify each name to be purged?", true);
  if (!verifies) return;
  int purged = 0;
  for (const Kind& kind : kPurged)
    if ((ask.keyword == L"All" || ask.keyword == kind.keyword) &&
        !purgeKind(kind.table, names, *verifies, purged))
      break;
  say(countOf(purged, L"purged"));
}

constexpr KvCommandRow kRows[] = {
    {L"DIMSTYLE", L"D DST -DIMSTYLE", KVRX_CMD_MODAL, runDimStyle, L"Saves, lists and sets dimension styles.",
     L"Enter a dimension style option [Save/Restore/Variables/Apply/?] <Restore>: (Save takes the DIM "
     L"variables, Apply gives them to dimensions)\nEnter name for new dimension style or [?]: (after "
     L"Save)\nEnter a dimension style name:"},
    {L"LINETYPE", L"LT -LINETYPE", KVRX_CMD_MODAL, runLinetype, L"Loads and sets linetypes.",
     L"Enter an option [?/Load/Set]: (empty: ends)\nEnter linetype(s) to load: (with commas; `*`: "
     L"all)\nEnter "
     L"name of linetype file to search <kvadiso.lin>:"},
    {L"PURGE", L"PU -PURGE", KVRX_CMD_MODAL, runPurge, L"Takes away what nothing uses.",
     L"Enter type of unused objects to purge [Blocks/Dimstyles/LAyers/LTypes/STyles/Regapps/All]:\nEnter "
     L"name(s) "
     L"to purge <*>:\nVerify each name to be purged? [Yes/No] <Yes>:"},
    {L"RENAME", L"REN -RENAME", KVRX_CMD_MODAL, runRename,
     L"Gives layers, styles, blocks and the like other names.",
     L"Enter object type to rename [Block/Dimstyle/LAyer/LType/Style/Ucs/VIew]:\nEnter old name:\nEnter new "
     L"name:"},
    {L"STYLE", L"ST -STYLE", KVRX_CMD_MODAL, runStyle, L"Makes, changes and sets text styles.",
     L"Enter name of text style or [?] <>:\nSpecify full font name or font filename <>:\nSpecify height of "
     L"text "
     L"<0>: (0: each text has its own)\nSpecify width factor <1>:\nSpecify obliquing angle <0>:\nDisplay "
     L"text "
     L"backwards? [Yes/No] <No>:\nDisplay text upside-down? [Yes/No] <No>:"},
};

}  // namespace

std::span<const KvCommandRow> recordRows() {
  return kRows;
}

}  // namespace kvcmd
