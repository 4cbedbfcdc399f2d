#include "host/entities/dimvars.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/database/tables.h"

namespace {

using V = KvDbDimVar;
using Row = KvDbDimVarRow;

// Source: the published list of dimension variables; in the order of the enumeration.
constexpr Row kTable[] = {
    {V::Post, L"DIMPOST", 3, Row::Text, 0, 0},
    {V::APost, L"DIMAPOST", 4, Row::Text, 0, 0},
    {V::Scale, L"DIMSCALE", 40, Row::Real, 1, 1},
    {V::Asz, L"DIMASZ", 41, Row::Real, 2.5, 0.18},
    {V::Exo, L"DIMEXO", 42, Row::Real, 0.625, 0.0625},
    {V::Dli, L"DIMDLI", 43, Row::Real, 3.75, 0.38},
    {V::Exe, L"DIMEXE", 44, Row::Real, 1.25, 0.18},
    {V::Rnd, L"DIMRND", 45, Row::Real, 0, 0},
    {V::Dle, L"DIMDLE", 46, Row::Real, 0, 0},
    {V::Tp, L"DIMTP", 47, Row::Real, 0, 0},
    {V::Tm, L"DIMTM", 48, Row::Real, 0, 0},
    {V::Fxl, L"DIMFXL", 49, Row::Real, 1, 1},
    {V::JogAng, L"DIMJOGANG", 50, Row::Real, 0.785398163397448, 0.785398163397448},
    {V::Tfill, L"DIMTFILL", 69, Row::Int, 0, 0},
    {V::TfillClr, L"DIMTFILLCLR", 70, Row::Int, 0, 0},
    {V::Txt, L"DIMTXT", 140, Row::Real, 2.5, 0.18},
    {V::Cen, L"DIMCEN", 141, Row::Real, 2.5, 0.09},
    {V::Tsz, L"DIMTSZ", 142, Row::Real, 0, 0},
    {V::AltF, L"DIMALTF", 143, Row::Real, 0.03937007874016, 25.4},
    {V::Lfac, L"DIMLFAC", 144, Row::Real, 1, 1},
    {V::Tvp, L"DIMTVP", 145, Row::Real, 0, 0},
    {V::Tfac, L"DIMTFAC", 146, Row::Real, 1, 1},
    {V::Gap, L"DIMGAP", 147, Row::Real, 0.625, 0.09},
    {V::AltRnd, L"DIMALTRND", 148, Row::Real, 0, 0},
    {V::Tol, L"DIMTOL", 71, Row::Int, 0, 0},
    {V::Lim, L"DIMLIM", 72, Row::Int, 0, 0},
    {V::Tih, L"DIMTIH", 73, Row::Int, 0, 1},
    {V::Toh, L"DIMTOH", 74, Row::Int, 0, 1},
    {V::Se1, L"DIMSE1", 75, Row::Int, 0, 0},
    {V::Se2, L"DIMSE2", 76, Row::Int, 0, 0},
    {V::Tad, L"DIMTAD", 77, Row::Int, 1, 0},
    {V::Zin, L"DIMZIN", 78, Row::Int, 8, 0},
    {V::Azin, L"DIMAZIN", 79, Row::Int, 0, 0},
    {V::ArcSym, L"DIMARCSYM", 90, Row::Int, 0, 0},
    {V::Alt, L"DIMALT", 170, Row::Int, 0, 0},
    {V::AltD, L"DIMALTD", 171, Row::Int, 3, 2},
    {V::Tofl, L"DIMTOFL", 172, Row::Int, 1, 0},
    {V::Sah, L"DIMSAH", 173, Row::Int, 0, 0},
    {V::Tix, L"DIMTIX", 174, Row::Int, 0, 0},
    {V::Soxd, L"DIMSOXD", 175, Row::Int, 0, 0},
    {V::ClrD, L"DIMCLRD", 176, Row::Int, 0, 0},
    {V::ClrE, L"DIMCLRE", 177, Row::Int, 0, 0},
    {V::ClrT, L"DIMCLRT", 178, Row::Int, 0, 0},
    {V::Adec, L"DIMADEC", 179, Row::Int, 0, 0},
    {V::Dec, L"DIMDEC", 271, Row::Int, 2, 4},
    {V::Tdec, L"DIMTDEC", 272, Row::Int, 2, 4},
    {V::AltU, L"DIMALTU", 273, Row::Int, 2, 2},
    {V::AltTd, L"DIMALTTD", 274, Row::Int, 3, 2},
    {V::Aunit, L"DIMAUNIT", 275, Row::Int, 0, 0},
    {V::Frac, L"DIMFRAC", 276, Row::Int, 0, 0},
    {V::Lunit, L"DIMLUNIT", 277, Row::Int, 2, 2},
    {V::Dsep, L"DIMDSEP", 278, Row::Int, 44, 46},
    {V::Tmove, L"DIMTMOVE", 279, Row::Int, 0, 0},
    {V::Just, L"DIMJUST", 280, Row::Int, 0, 0},
    {V::Sd1, L"DIMSD1", 281, Row::Int, 0, 0},
    {V::Sd2, L"DIMSD2", 282, Row::Int, 0, 0},
    {V::TolJ, L"DIMTOLJ", 283, Row::Int, 0, 1},
    {V::Tzin, L"DIMTZIN", 284, Row::Int, 8, 0},
    {V::AltZ, L"DIMALTZ", 285, Row::Int, 0, 0},
    {V::AltTz, L"DIMALTTZ", 286, Row::Int, 0, 0},
    {V::Upt, L"DIMUPT", 288, Row::Int, 0, 0},
    {V::Atfit, L"DIMATFIT", 289, Row::Int, 3, 3},
    {V::FxlOn, L"DIMFXLON", 290, Row::Int, 0, 0},
    {V::TxtDirection, L"DIMTXTDIRECTION", 294, Row::Int, 0, 0},
    {V::TxSty, L"DIMTXSTY", 340, Row::Reference, 0, 0},
    {V::LdrBlk, L"DIMLDRBLK", 341, Row::Reference, 0, 0},
    {V::Blk, L"DIMBLK", 342, Row::Reference, 0, 0},
    {V::Blk1, L"DIMBLK1", 343, Row::Reference, 0, 0},
    {V::Blk2, L"DIMBLK2", 344, Row::Reference, 0, 0},
    {V::Ltype, L"DIMLTYPE", 345, Row::Reference, 0, 0},
    {V::LtEx1, L"DIMLTEX1", 346, Row::Reference, 0, 0},
    {V::LtEx2, L"DIMLTEX2", 347, Row::Reference, 0, 0},
    {V::Lwd, L"DIMLWD", 371, Row::Int, -2, -2},
    {V::Lwe, L"DIMLWE", 372, Row::Int, -2, -2},
};
static_assert(std::size(kTable) == KvDbDimVars::kCount);

const Row* rowOf(int code) {
  const auto* found =
      std::find_if(std::begin(kTable), std::end(kTable), [&](const Row& row) { return row.code == code; });
  return found == std::end(kTable) ? nullptr : found;
}

bool isMetricDrawing(const KvDbDatabase* drawing) {
  const auto* variable = drawing ? drawing->extras().find(L"$MEASUREMENT") : nullptr;
  return !variable || variable->groups.empty() || variable->groups.front().integer != 0;
}

struct ChainCloser {
  void operator()(resbuf* chain) const { kvutRelRb(chain); }
};
using Chain = std::unique_ptr<resbuf, ChainCloser>;

constexpr int kTextData = 1000, kBraceData = 1002, kHandleData = 1005, kRealData = 1040, kIntData = 1070;
constexpr const wchar_t* kApplication = L"ACAD";
constexpr int kFillOfColor = 2;  // of DIMTFILL

}  // namespace

std::span<const KvDbDimVarRow> kvdbDimVarTable() {
  return kTable;
}

const KvDbDimVarRow* kvdbDimVarNamed(std::wstring_view name) {
  const CString wanted(name);
  for (const Row& row : kTable)
    if (wanted.CompareNoCase(row.name) == 0) return &row;
  return nullptr;
}

KvDbDimVars::KvDbDimVars(bool isMetric) {
  for (const Row& row : kTable) numbers_[at(row.variable)] = isMetric ? row.metric : row.imperial;
}

void KvDbDimVars::take(int code, const KvDxfGroup& group, const KvDbDatabase* database) {
  const Row* row = rowOf(code);
  if (!row) return;
  if (row->kind == Row::Text) {
    set(row->variable, CString(group.text));
  } else if (row->kind == Row::Reference) {
    if (database)
      ids_[at(row->variable) - at(V::TxSty)] =
          database->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(group.integer)));
  } else {
    const bool isReal = group.kind == KvDxfKind::Real || group.kind == KvDxfKind::Point;
    set(row->variable, isReal ? group.real() : static_cast<double>(group.integer));
  }
}

KvDbDimVars KvDbDimVars::ofStyle(KvDbObjectId style) {
  KvDbDimVars vars(isMetricDrawing(kvdbDatabaseOrWorking(style.database())));
  const auto* record = style.stub() ? KvDbDimStyleTableRecord::cast(style.stub()->object) : nullptr;
  if (!record) return vars;
  for (const KvDbUnknownSection& section : record->unknownSections()) {
    if (section.marker.view() == L"AcDbSymbolTableRecord") continue;
    // A record that says anything leaves out what has the value in inches, whatever the drawing's system.
    if (!section.groups.isEmpty()) vars = KvDbDimVars(false);
    for (const KvDxfGroup& group : section.groups) vars.take(group.code, group, style.database());
  }
  return vars;
}

KvDbDimVars KvDbDimVars::ofEntity(const KvDbEntity& entity, KvDbObjectId style) {
  KvDbDimVars vars = ofStyle(style);
  if (style.isNull()) vars = KvDbDimVars(isMetricDrawing(kvdbDatabaseOrWorking(entity.database())));
  vars.applyOverrides(entity);
  return vars;
}

Kvad::ErrorStatus KvDbDimVars::set(KvDbDimVar variable, double value) {
  const Row& row = kTable[at(variable)];
  if ((row.kind != Row::Real && row.kind != Row::Int) || !std::isfinite(value)) return Kvad::eInvalidInput;
  numbers_[at(variable)] =
      row.kind == Row::Int ? std::trunc(std::clamp(value, -2147483648.0, 2147483647.0)) : value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimVars::set(KvDbDimVar variable, const wchar_t* value) {
  if (kTable[at(variable)].kind != Row::Text || !value) return Kvad::eInvalidInput;
  texts_[variable == V::APost ? 1 : 0] = value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbDimVars::set(KvDbDimVar variable, KvDbObjectId value) {
  if (kTable[at(variable)].kind != Row::Reference) return Kvad::eInvalidInput;
  ids_[at(variable) - at(V::TxSty)] = value;
  return Kvad::eOk;
}

void KvDbDimVars::applyOverrides(const KvDbEntity& entity) {
  const Chain chain(entity.xData(kApplication));
  const resbuf* node = chain.get();
  while (node &&
         !(node->restype == kTextData && node->resval.rstring && CString(node->resval.rstring) == L"DSTYLE"))
    node = node->rbnext;
  if (!node || !(node = node->rbnext) || node->restype != kBraceData) return;
  for (node = node->rbnext; node && node->restype == kIntData && node->rbnext; node = node->rbnext) {
    const int code = node->resval.rint;
    node = node->rbnext;
    KvDbStoredGroup value;
    if (kvdbStoredGroupOf(*node, value)) take(code, value.view(), entity.database());
  }
}

Kvad::ErrorStatus KvDbDimVars::writeOverrides(KvDbEntity& entity, const KvDbDimVars& style) const {
  // Whatever else the application keeps there stays.
  Chain chain(kvutBuildList(1001, kApplication, 0));
  resbuf* tail = chain.get();
  const auto add = [&](resbuf* node) {
    tail->rbnext = node;
    while (tail->rbnext) tail = tail->rbnext;
  };
  const Chain old(entity.xData(kApplication));
  int depth = -1;  // within the old overrides
  for (const resbuf* node = old ? old->rbnext : nullptr; node; node = node->rbnext) {
    const bool isText = (node->restype == kTextData || node->restype == kBraceData) && node->resval.rstring;
    const CString text = isText ? CString(node->resval.rstring) : CString();
    if (depth < 0 && node->restype == kTextData && text == L"DSTYLE") depth = 0;
    if (depth < 0) {
      KvDbStoredGroup group;
      if (kvdbStoredGroupOf(*node, group)) add(kvdbChainOf({&group, 1}, entity.database()));
    } else if (node->restype == kBraceData) {
      depth += text == L"{" ? 1 : -1;
      if (depth == 0) depth = -1;
    }
  }
  bool hasAny = false;
  const auto begin = [&] {
    if (!hasAny) add(kvutBuildList(kTextData, L"DSTYLE", kBraceData, L"{", 0));
    hasAny = true;
  };
  for (const Row& row : kTable) {
    if (row.kind == Row::Text && text(row.variable) != style.text(row.variable)) {
      begin();
      add(kvutBuildList(kIntData, row.code, kTextData, static_cast<const wchar_t*>(text(row.variable)), 0));
    } else if (row.kind == Row::Reference && id(row.variable) != style.id(row.variable)) {
      begin();
      KvDbStoredGroup handle;
      handle.code = kHandleData;
      handle.kind = KvDxfKind::Handle;
      handle.integer = static_cast<std::int64_t>(id(row.variable).handle().value());
      add(kvutBuildList(kIntData, row.code, 0));
      add(kvdbChainOf({&handle, 1}, entity.database()));
    } else if (row.kind == Row::Real && real(row.variable) != style.real(row.variable)) {
      begin();
      add(kvutBuildList(kIntData, row.code, kRealData, real(row.variable), 0));
    } else if (row.kind == Row::Int && real(row.variable) != style.real(row.variable)) {
      begin();
      add(kvutBuildList(kIntData, row.code, kIntData, whole(row.variable), 0));
    }
  }
  if (hasAny) add(kvutBuildList(kBraceData, L"}", 0));
  return entity.setXData(chain.get());
}

void KvDbDimVars::writeTo(KvDbDimStyleTableRecord& record) const {
  std::vector<KvDbStoredGroup> groups;
  for (const Row& row : kTable) {
    // The record's flags have the code of this one: it is written only where it means something.
    if (row.variable == V::TfillClr && whole(V::Tfill) != kFillOfColor) continue;
    KvDbStoredGroup group;
    group.code = row.code;
    group.kind = kvdxfKind(row.code);
    if (row.kind == Row::Text)
      group.text = text(row.variable);
    else if (row.kind == Row::Reference)
      group.integer = static_cast<std::int64_t>(id(row.variable).handle().value());
    else if (group.kind == KvDxfKind::Real)
      group.point.x = real(row.variable);
    else
      group.integer = whole(row.variable);
    if (row.kind == Row::Reference && id(row.variable).isNull()) continue;
    if (row.kind == Row::Text && group.text.IsEmpty()) continue;
    groups.push_back(group);
  }
  record.setVariables(groups);
}
