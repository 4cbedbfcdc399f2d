#include "host/editor/sysvars.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "host/base/context.h"
#include "host/editor/editor.h"
#include "platform/system/registry.h"
#include "platform/text/number.h"

namespace {

constexpr auto kSession = KvEdVarScope::Session;
constexpr auto kUser = KvEdVarScope::User;

struct NumberRow {
  const wchar_t* name;
  KvEdVarScope scope;
  KvEdVarType type;
  double initial, lowest, highest;  // equal limits: none
};
struct TextRow {
  const wchar_t* name;
  KvEdVarScope scope;
  const wchar_t* initial;
};

/// Variables that hold a number.
constexpr NumberRow kNumbers[] = {
    {L"ATTDIA", kUser, RTSHORT, 0, 0, 1},           {L"ATTREQ", kUser, RTSHORT, 1, 0, 1},
    {L"BLIPMODE", kUser, RTSHORT, 0, 0, 1},         {L"CMDDIA", kUser, RTSHORT, 0, 0, 1},
    {L"CMDECHO", kSession, RTSHORT, 1, 0, 1},       {L"COORDS", kUser, RTSHORT, 1, 0, 3},
    {L"DELOBJ", kUser, RTSHORT, 1, -3, 3},          {L"DRAGMODE", kUser, RTSHORT, 2, 0, 2},
    {L"EDGEMODE", kUser, RTSHORT, 0, 0, 1},         {L"ERRNO", kSession, RTSHORT, 0, 0, 0},
    {L"EXPERT", kSession, RTSHORT, 0, 0, 5},        {L"FILEDIA", kUser, RTSHORT, 1, 0, 1},
    {L"OSNAPCOORD", kUser, RTSHORT, 1, 0, 2},       {L"GRIPS", kUser, RTSHORT, 1, 0, 2},
    {L"HIGHLIGHT", kSession, RTSHORT, 1, 0, 1},     {L"HPANG", kSession, RTREAL, 0, 0, 0},
    {L"HPASSOC", kUser, RTSHORT, 1, 0, 1},          {L"HPDOUBLE", kSession, RTSHORT, 0, 0, 1},
    {L"HPSCALE", kSession, RTREAL, 1, 1e-99, 1e99}, {L"HPSPACE", kSession, RTREAL, 1, 1e-99, 1e99},
    {L"ISAVEBAK", kUser, RTSHORT, 1, 0, 1},         {L"LWDEFAULT", kUser, RTSHORT, 25, 0, 211},
    {L"MENUECHO", kSession, RTSHORT, 0, 0, 15},     {L"MTEXTFIXED", kUser, RTSHORT, 2, 0, 2},
    {L"NOMUTT", kSession, RTSHORT, 0, 0, 1},        {L"OFFSETDIST", kSession, RTREAL, -1, 0, 0},
    {L"OFFSETGAPTYPE", kUser, RTSHORT, 0, 0, 2},    {L"OSMODE", kUser, RTSHORT, 4133, 0, 32767},
    {L"PEDITACCEPT", kUser, RTSHORT, 0, 0, 1},      {L"PICKADD", kUser, RTSHORT, 2, 0, 2},
    {L"PICKAUTO", kUser, RTSHORT, 1, 0, 2},         {L"PICKBOX", kUser, RTSHORT, 3, 0, 50},
    {L"PICKDRAG", kUser, RTSHORT, 0, 0, 2},         {L"PICKFIRST", kUser, RTSHORT, 1, 0, 1},
    {L"PICKSTYLE", kUser, RTSHORT, 1, 0, 3},        {L"PLINETYPE", kUser, RTSHORT, 2, 0, 2},
    {L"POLYSIDES", kSession, RTSHORT, 4, 3, 1024},  {L"PROJMODE", kUser, RTSHORT, 1, 0, 2},
    {L"DONUTID", kSession, RTREAL, 0.5, 0, 1e99},   {L"DONUTOD", kSession, RTREAL, 1, 1e-99, 1e99},
    {L"TEXTFILL", kUser, RTSHORT, 1, 0, 1},         {L"TRIMMODE", kUser, RTSHORT, 1, 0, 1},
    {L"UCSFOLLOW", kSession, RTSHORT, 0, 0, 1},     {L"UCSICON", kSession, RTSHORT, 3, 0, 3},
    {L"ZOOMFACTOR", kUser, RTSHORT, 60, 3, 100},
};

constexpr TextRow kTexts[] = {
    {L"HPNAME", kSession, L"ANSI31"}, {L"INSNAME", kSession, L""}, {L"MENUNAME", kUser, L""},
    {L"USERS1", kSession, L""},       {L"USERS2", kSession, L""},  {L"USERS3", kSession, L""},
    {L"USERS4", kSession, L""},       {L"USERS5", kSession, L""},  {L"REFEDITNAME", kSession, L""},
};

/// Variables that only the host sets.
constexpr const wchar_t* kReadOnlyTexts[] = {L"REFEDITNAME", L"MENUNAME"};

constexpr const wchar_t* kSettingsKey = L"SOFTWARE\\Korvasoft\\Korvane\\Variables";

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

bool isWithin(const KvEdVariable& variable, const KvEdVarValue& value) {
  if (!(variable.lowest < variable.highest)) return true;
  const double number = std::holds_alternative<int>(value) ? std::get<int>(value) : std::get<double>(value);
  return number >= variable.lowest && number <= variable.highest;
}

bool isFinite(const KvEdVarValue& value) {
  if (const double* real = std::get_if<double>(&value)) return std::isfinite(*real);
  const auto* point = std::get_if<KvEdVarPoint>(&value);
  return !point || (std::isfinite(point->x) && std::isfinite(point->y) && std::isfinite(point->z));
}

CString settingsText(const KvEdVarValue& value) {
  if (const auto* text = std::get_if<CString>(&value)) return *text;
  if (const double* real = std::get_if<double>(&value))
    return platform::wideFromUtf8(platform::shortest(*real));
  CString text;
  if (const int* whole = std::get_if<int>(&value)) text.Format(L"%d", *whole);
  return text;
}

/// What was written by settingsText, as a value of the type.
bool valueOf(const CString& text, KvEdVarType type, KvEdVarValue& value) {
  double number = 0;
  if (type == RTSTR) {
    value = text;
    return true;
  }
  if (!platform::parseWhole(text.view(), number) || !std::isfinite(number)) return false;
  if (!isWhole(type)) {
    value = number;
    return true;
  }
  if (number != std::floor(number) || std::fabs(number) > INT16_MAX) return false;
  value = static_cast<int>(number);
  return true;
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
    variable.scope = row.scope;
    variable.type = row.type;
    if (isWhole(row.type))
      variable.value = static_cast<int>(row.initial);
    else
      variable.value = row.initial;
    variable.lowest = row.lowest;
    variable.highest = row.highest;
    define(std::move(variable));
  }
  for (const TextRow& row : kTexts) {
    KvEdVariable variable;
    variable.name = row.name;
    variable.scope = row.scope;
    variable.type = RTSTR;
    variable.value = CString(row.initial);
    variable.readOnly = std::any_of(std::begin(kReadOnlyTexts), std::end(kReadOnlyTexts),
                                    [&](const wchar_t* name) { return variable.name == name; });
    define(std::move(variable));
  }
  kvedDefineDrawingVariables(*this);
}

void KvEdSysVars::loadSettings() {
  platform::RegistryText settings;
  if (!platform::Registry().load(settings)) return;
  for (auto& [name, variable] : variables_) {
    if (variable.scope != KvEdVarScope::User) continue;
    const platform::RegistryValue* stored = settings.find(HKEY_CURRENT_USER, kSettingsKey, name.str());
    KvEdVarValue value;
    if (stored && valueOf(stored->text(), variable.type, value) && isWithin(variable, value))
      variable.value = value;
    if (stored) variable.saved = settingsText(variable.value);
  }
}

void KvEdSysVars::saveSettings() {
  for (auto& [name, variable] : variables_) {
    const CString text = settingsText(variable.value);
    if (variable.scope != KvEdVarScope::User || text == variable.saved) continue;
    platform::Registry().set(HKEY_CURRENT_USER, kSettingsKey, name.str(),
                             platform::RegistryValue::ofText(text.view()));
    variable.saved = text;
  }
}

void KvEdSysVars::define(KvEdVariable variable) {
  const CString name = key(variable.name);
  variable.saved = settingsText(variable.value);
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
  if (!fits(variable.type, value) || !isFinite(value)) return Kvad::eInvalidInput;
  if (!isWithin(variable, value)) return Kvad::eOutOfRange;
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
