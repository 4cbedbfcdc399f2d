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

}  // namespace

KvDbDimVars kvdbCurrentDimVars(const KvDbDatabase& drawing) {
  const KvDbHeader& header = drawing.header();
  KvDbDimVars variables(header.whole(L"$MEASUREMENT") != 0);
  for (const Row& row : kvdbDimVarTable()) {
    const CString name = headerName(row);
    const auto* stored = drawing.extras().find(name);
    if (!stored || stored->groups.empty()) continue;
    if (row.kind == Row::Real) variables.set(row.variable, header.real(name));
    if (row.kind == Row::Int) variables.set(row.variable, header.whole(name));
    if (row.kind == Row::Text) variables.set(row.variable, header.text(name).GetString());
    if (row.kind == Row::Reference) variables.set(row.variable, namedRecord(drawing, row, header.text(name)));
  }
  return variables;
}

void kvdbSetCurrentDimVars(KvDbDatabase& drawing, const KvDbDimVars& variables) {
  KvDbHeader& header = drawing.header();
  const KvDbDimVars before = kvdbCurrentDimVars(drawing);
  for (const Row& row : kvdbDimVarTable()) {
    const CString name = headerName(row);
    const V variable = row.variable;
    // What is so already isn't written, so that headers of older files don't grow.
    if (row.kind == Row::Real && before.real(variable) != variables.real(variable))
      header.setReal(name, variables.real(variable));
    if (row.kind == Row::Int && before.whole(variable) != variables.whole(variable))
      header.setWhole(name, variables.whole(variable));
    if (row.kind == Row::Text && before.text(variable) != variables.text(variable))
      header.setText(name, variables.text(variable));
    if (row.kind == Row::Reference && before.id(variable) != variables.id(variable)) {
      CString record = kvdbRecordName(variables.id(variable));
      if (variable == V::TxSty && record.IsEmpty()) record = L"Standard";
      header.setText(name, record);
    }
  }
}

bool kvdbIsDimStyleOverridden(const KvDbDatabase& drawing) {
  const KvDbDimVars current = kvdbCurrentDimVars(drawing), style = KvDbDimVars::ofStyle(drawing.dimstyle());
  const KvDbObjectId standard = drawing.recordId(KvDbTable::TextStyle, L"Standard");
  const auto idOf = [&](const KvDbDimVars& variables, V variable) {
    const KvDbObjectId id = variables.id(variable);
    return variable == V::TxSty && id.isNull() ? standard : id;
  };
  for (const Row& row : kvdbDimVarTable()) {
    const V variable = row.variable;
    const bool isSame = !isInStyles(row)             ? true
                        : row.kind == Row::Text      ? current.text(variable) == style.text(variable)
                        : row.kind == Row::Reference ? idOf(current, variable) == idOf(style, variable)
                                                     : areEqual(current.real(variable), style.real(variable));
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
