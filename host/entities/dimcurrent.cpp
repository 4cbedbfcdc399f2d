#include "host/entities/dimcurrent.h"

#include <algorithm>
#include <cmath>

#include "host/database/header.h"
#include "host/database/tables.h"

namespace {

using V = KvDbDimVar;
using Row = KvDbDimVarRow;

KvDbTable tableOf(V variable) {
  if (variable == V::TxSty) return KvDbTable::TextStyle;
  if (variable == V::Ltype || variable == V::LtEx1 || variable == V::LtEx2) return KvDbTable::Linetype;
  return KvDbTable::Block;
}

/// Group 70 of a style's record holds the record's flags, so no style can say this one.
bool isInStyles(const Row& row) {
  return row.variable != V::TfillClr;
}

CString headerName(const Row& row) {
  return L"$" + CString(row.name);
}

bool isInHeader(const KvDbDatabase& drawing, const CString& name) {
  const auto* stored = drawing.extras().find(name);
  return stored && !stored->groups.empty();
}

/// Headers spell the blocks of the standard arrows with their underscore or without it.
KvDbObjectId namedRecord(const KvDbDatabase& drawing, const Row& row, const CString& name) {
  if (name.IsEmpty()) return {};
  const KvDbTable table = tableOf(row.variable);
  const KvDbObjectId id = drawing.recordId(table, name);
  return id.isNull() && table == KvDbTable::Block ? drawing.recordId(table, L"_" + name) : id;
}

bool areEqual(double a, double b) {
  constexpr double kDigits = 1e-8;
  return std::fabs(a - b) <= kDigits * std::max(std::fabs(a), std::fabs(b));
}

/// Styles of files give the angle of jogs in degrees or in radians.
bool isSameNumber(V variable, double current, double style) {
  return areEqual(current, style) || (variable == V::JogAng && areEqual(kvdxfDegrees(current), style));
}

}  // namespace

KvDbDimVars kvdbCurrentDimVars(const KvDbDatabase& drawing) {
  const KvDbHeader& header = drawing.header();
  KvDbDimVars variables = KvDbDimVars::ofStyle(drawing.dimstyle());
  for (const Row& row : kvdbDimVarTable()) {
    const CString name = headerName(row);
    if (!isInHeader(drawing, name)) continue;
    if (row.kind == Row::Real) variables.set(row.variable, header.real(name));
    if (row.kind == Row::Int) variables.set(row.variable, header.whole(name));
    if (row.kind == Row::Text) variables.set(row.variable, header.text(name).GetString());
    if (row.kind == Row::Reference) variables.set(row.variable, namedRecord(drawing, row, header.text(name)));
  }
  return variables;
}

void kvdbSetCurrentDimVars(KvDbDatabase& drawing, const KvDbDimVars& variables) {
  KvDbHeader& header = drawing.header();
  for (const Row& row : kvdbDimVarTable()) {
    const CString name = headerName(row);
    const V variable = row.variable;
    // What stands there already isn't a change.
    const bool isStored = isInHeader(drawing, name);
    if (row.kind == Row::Real && !(isStored && header.real(name) == variables.real(variable)))
      header.setReal(name, variables.real(variable));
    if (row.kind == Row::Int && !(isStored && header.whole(name) == variables.whole(variable)))
      header.setWhole(name, variables.whole(variable));
    CString text = row.kind == Row::Text        ? variables.text(variable)
                   : row.kind == Row::Reference ? kvdbRecordName(variables.id(variable))
                                                : CString();
    if (variable == V::TxSty && text.IsEmpty()) text = L"Standard";
    const bool isText = row.kind == Row::Text || row.kind == Row::Reference;
    if (isText && !(isStored && header.text(name) == text)) header.setText(name, text);
  }
}

bool kvdbIsDimStyleOverridden(const KvDbDatabase& drawing) {
  const KvDbDimVars current = kvdbCurrentDimVars(drawing), style = KvDbDimVars::ofStyle(drawing.dimstyle());
  const KvDbObjectId standard = drawing.recordId(KvDbTable::TextStyle, L"Standard");
  const auto idOf = [&](const KvDbDimVars& variables, V variable) {
    const KvDbObjectId id = variables.id(variable);
    if (!id.isNull() || tableOf(variable) == KvDbTable::Block) return id;
    return variable == V::TxSty ? standard : drawing.byBlockLinetype();
  };
  for (const Row& row : kvdbDimVarTable()) {
    const V variable = row.variable;
    const bool isSame = !isInStyles(row)        ? true
                        : row.kind == Row::Text ? current.text(variable) == style.text(variable)
                        : row.kind == Row::Reference
                            ? idOf(current, variable) == idOf(style, variable)
                            : isSameNumber(variable, current.real(variable), style.real(variable));
    if (!isSame) return true;
  }
  return false;
}

Kvad::ErrorStatus KvDbDatabase::setDimstyleData(KvDbObjectId id) {
  if (id.isNull()) return Kvad::eNullObjectId;
  if (id.database() != this) return Kvad::eWrongDatabase;
  if (id.isErased()) return Kvad::eWasErased;
  if (id.objectClass() != KvDbDimStyleTableRecord::desc()) return Kvad::eWrongObjectType;
  kvdbSetCurrentDimVars(*this, KvDbDimVars::ofStyle(id));
  return Kvad::eOk;
}
