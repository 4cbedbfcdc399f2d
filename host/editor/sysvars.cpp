#include "host/editor/sysvars.h"

#include "host/base/context.h"
#include "host/editor/editor.h"

namespace {

struct NumberRow {
  const wchar_t* name;
  KvEdVarType type;
  double initial, lowest, highest;
  bool readOnly;
};

/// Variables of the session that hold a number. The others are defined by whoever computes them.
constexpr NumberRow kNumbers[] = {
    {L"CMDECHO", RTSHORT, 1, 0, 1, false},  {L"ERRNO", RTSHORT, 0, 0, 0, false},
    {L"EXPERT", RTSHORT, 0, 0, 5, false},   {L"FILEDIA", RTSHORT, 1, 0, 1, false},
    {L"PICKBOX", RTSHORT, 3, 0, 50, false}, {L"PICKSTYLE", RTSHORT, 1, 0, 3, false},
};

bool isWhole(KvEdVarType type) {
  return type == RTSHORT || type == RTLONG;
}

CString key(const wchar_t* name) {
  return CString(name).MakeUpper();
}

bool fits(KvEdVarType type, const KvEdVarValue& value) {
  switch (type) {
    case RTSHORT:
    case RTLONG:
      return std::holds_alternative<int>(value);
    case RTREAL:
      return std::holds_alternative<double>(value);
    case RTPOINT:
    case RT3DPOINT:
      return std::holds_alternative<KvEdVarPoint>(value);
    case RTSTR:
      return std::holds_alternative<CString>(value);
    default:
      return false;
  }
}

void toResbuf(const KvEdVariable& variable, const KvEdVarValue& value, resbuf* result) {
  result->restype = static_cast<std::int16_t>(variable.type);
  if (const int* whole = std::get_if<int>(&value)) {
    result->resval = {};
    if (variable.type == RTSHORT)
      result->resval.rint = static_cast<std::int16_t>(*whole);
    else
      result->resval.rlong = *whole;
  } else if (const double* real = std::get_if<double>(&value)) {
    result->resval.rreal = *real;
  } else if (const auto* point = std::get_if<KvEdVarPoint>(&value)) {
    result->resval.rpoint[0] = point->x;
    result->resval.rpoint[1] = point->y;
    result->resval.rpoint[2] = variable.type == RT3DPOINT ? point->z : 0.0;
  } else if (const auto* text = std::get_if<CString>(&value)) {
    result->resval.rstring = nullptr;
    kvutSetText(result, *text);
  }
}

bool fromResbuf(const resbuf& node, KvEdVarValue& value) {
  switch (node.restype) {
    case RTSHORT:
      value = static_cast<int>(node.resval.rint);
      return true;
    case RTLONG:
      value = static_cast<int>(node.resval.rlong);
      return true;
    case RTREAL:
    case RTANG:
      value = node.resval.rreal;
      return true;
    case RTPOINT:
      value = KvEdVarPoint{node.resval.rpoint[0], node.resval.rpoint[1], 0};
      return true;
    case RT3DPOINT:
      value = KvEdVarPoint{node.resval.rpoint[0], node.resval.rpoint[1], node.resval.rpoint[2]};
      return true;
    case RTSTR:
      value = CString(node.resval.rstring);
      return true;
    default:
      return false;
  }
}

}  // namespace

KvEdSysVars::KvEdSysVars() {
  for (const NumberRow& row : kNumbers) {
    KvEdVariable variable;
    variable.name = row.name;
    variable.type = row.type;
    if (isWhole(row.type))
      variable.value = static_cast<int>(row.initial);
    else
      variable.value = row.initial;
    variable.lowest = row.lowest;
    variable.highest = row.highest;
    variable.readOnly = row.readOnly;
    define(std::move(variable));
  }
}

void KvEdSysVars::define(KvEdVariable variable) {
  const CString name = key(variable.name);
  variables_[name] = std::move(variable);
}

const KvEdVariable* KvEdSysVars::find(const wchar_t* name) const {
  auto found = variables_.find(key(name));
  return found == variables_.end() ? nullptr : &found->second;
}

std::vector<const KvEdVariable*> KvEdSysVars::all() const {
  std::vector<const KvEdVariable*> list;
  for (const auto& [name, variable] : variables_) list.push_back(&variable);
  return list;
}

Kvad::ErrorStatus KvEdSysVars::get(const wchar_t* name, KvEdVarValue& value) const {
  const KvEdVariable* variable = find(name);
  if (!variable) return Kvad::eKeyNotFound;
  value = variable->read ? variable->read() : variable->value;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvEdSysVars::set(const wchar_t* name, const KvEdVarValue& given) {
  auto found = variables_.find(key(name));
  if (found == variables_.end()) return Kvad::eKeyNotFound;
  KvEdVariable& variable = found->second;
  if (variable.readOnly || (variable.read && !variable.write)) return Kvad::eNotApplicable;

  KvEdVarValue value = given;
  if (variable.type == RTREAL && std::holds_alternative<int>(value))
    value = static_cast<double>(std::get<int>(value));
  if (!fits(variable.type, value)) return Kvad::eInvalidInput;
  if (variable.lowest < variable.highest) {
    const double number = std::holds_alternative<int>(value) ? std::get<int>(value) : std::get<double>(value);
    if (!(number >= variable.lowest && number <= variable.highest)) return Kvad::eOutOfRange;
  }
  if (variable.write) return variable.write(value) ? Kvad::eOk : Kvad::eOutOfRange;
  variable.value = std::move(value);
  return Kvad::eOk;
}

bool KvEdSysVars::setInternally(const wchar_t* name, const KvEdVarValue& value) {
  auto found = variables_.find(key(name));
  if (found == variables_.end() || !fits(found->second.type, value)) return false;
  found->second.value = value;
  return true;
}

int kvedGetVar(const wchar_t* name, resbuf* result) {
  KvEdEditor* editor = KvHostContext::current().editor;
  if (!editor || !name || !result) return RTERROR;
  const KvEdVariable* variable = editor->variables().find(name);
  KvEdVarValue value;
  if (!variable || editor->variables().get(name, value) != Kvad::eOk) return RTERROR;
  toResbuf(*variable, value, result);
  return RTNORM;
}

int kvedSetVar(const wchar_t* name, const resbuf* value) {
  KvEdEditor* editor = KvHostContext::current().editor;
  KvEdVarValue converted;
  if (!editor || !name || !value || !fromResbuf(*value, converted)) return RTERROR;
  return editor->variables().set(name, converted) == Kvad::eOk ? RTNORM : RTERROR;
}
