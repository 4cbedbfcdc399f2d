#include "siblings/tools/springs.h"

#include <cmath>
#include <numbers>

#include "host/base/context.h"
#include "host/database/database.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/tables.h"
#include "host/editor/prompts.h"
#include "host/entities/blockreference.h"
#include "module/spring/springs.h"
#include "module/toolkit/guards.h"
#include "module/toolkit/layers.h"

namespace {

using View = int (*)(double*, double, double, double, double);
using Form = int (*)(double*, double, double, double);

constexpr View kCompression[] = {DrawCompSpring1, DrawCompSpring2, DrawCompSpring3, DrawCompSpring4,
                                 DrawCompSpring5};
constexpr View kExtension[] = {DrawExteSpring1, DrawExteSpring2, DrawExteSpring3, DrawExteSpring4,
                               DrawExteSpring5};
constexpr View kTorsion[] = {DrawTorSpring1, DrawTorSpring2, DrawTorSpring3, DrawTorSpring4, DrawTorSpring5};

struct StandardForm {
  const wchar_t* name;
  Form views[2];
};
constexpr StandardForm kStandard[] = {
    {L"YI", {GB1239_YI_1, GB1239_YI_2}},       {L"YII", {GB1239_YII_1, GB1239_YII_2}},
    {L"YIII", {GB1239_YIII_1, GB1239_YIII_2}}, {L"RYI", {GB1239_RYI_1, GB1239_RYI_2}},
    {L"RYII", {GB1239_RYII_1, GB1239_RYII_2}},
};
constexpr int kLastForm = 5, kLastView = 2;
constexpr int kMostCoils = 1000;

const StandardForm* standardForm(const CString& name) {
  for (const StandardForm& form : kStandard)
    if (name.CompareNoCase(form.name) == 0) return &form;
  return nullptr;
}

struct FamilyName {
  const wchar_t* word;
  SpringFamily family;
};
constexpr FamilyName kFamilies[] = {
    {L"Compression", SpringFamily::Compression}, {L"Extension", SpringFamily::Extension},
    {L"Torsion", SpringFamily::Torsion},         {L"End", SpringFamily::TorsionEnd},
    {L"Standard", SpringFamily::Standard},
};

CString whyNoCoils(const SpringRequest& r, int fewest) {
  CString text;
  if (!(r.n >= fewest)) text.Format(L"At least %d coils are wanted.", fewest);
  if (r.n > kMostCoils) text.Format(L"At most %d coils can be drawn.", kMostCoils);
  return text;
}

CString whyTooShort(double least) {
  CString text;
  text.Format(L"The length is too short for the coils: at least %.4g is wanted.", least);
  return text;
}

int run(const SpringRequest& r, double* point) {
  const auto view = static_cast<std::size_t>(r.form - 1);
  switch (r.family) {
    case SpringFamily::Compression:
      return kCompression[view](point, r.d, r.D, r.H0, r.n);
    case SpringFamily::Extension:
      return kExtension[view](point, r.d, r.D, r.H0, r.n);
    case SpringFamily::Torsion:
      return kTorsion[view](point, r.d, r.D, r.H0, r.n);
    case SpringFamily::TorsionEnd:
      return DrawLeftTorSpring(point, r.D, r.d, r.angle * std::numbers::pi / 180, r.H0, r.n);
    case SpringFamily::Standard:
      return standardForm(r.standard)->views[view](point, r.d, r.D, r.H0);
  }
  return -1;
}

/// The layers come with the standard's colours, linetypes and weights only when the symbol module makes them:
/// the commands alone would make plain ones. Keys as in the drawing code.
void makeLayers() {
  constexpr ImProPropertyConfig kThick = 45, kCenter = 49, kHatch = 59;
  for (ImProPropertyConfig config : {kThick, kCenter, kHatch}) IM_GetLayerId(config, nullptr, 1);
}

/// A layer that is needed and can't be drawn on, in words.
CString whyNoLayer() {
  for (const wchar_t* kind : {L"THICK", L"CENTER", L"HATCH"}) {
    const CString name = GetSysLayer(kind, L"", true);
    const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
    const KvDbObjectId id = database ? database->recordId(KvDbTable::Layer, name) : KvDbObjectId();
    KvDbLayerTableRecord* layer = nullptr;
    if (kvdbOpenObject(layer, id, KvDb::kForRead) != Kvad::eOk) continue;
    const bool isClosed = layer->isLocked() || layer->isFrozen();
    layer->close();
    if (isClosed) return L"Layer \"" + name + L"\" is locked or frozen.";
  }
  return {};
}

/// Whether the newest entity is a reference to the springs' block that was not there before.
bool isPlaced(const kvds_name before) {
  kvds_name last;
  KvDbObjectId id;
  KvDbBlockReference* reference = nullptr;
  if (kvdbEntLast(last) != RTNORM || kvds_equal(last, before) || kvdbGetObjectId(id, last) != Kvad::eOk)
    return false;
  if (kvdbOpenObject(reference, id, KvDb::kForRead) != Kvad::eOk) return false;
  const bool isOurs = kvdbRecordName(reference->blockTableRecord()).CompareNoCase(SpringBlockName) == 0;
  reference->close();
  return isOurs;
}

// --- Prompts

/// Asks again until the value is one; false after a cancel.
bool askSize(const wchar_t* what, double& value) {
  CString prompt;
  prompt.Format(L"\n%s <%.4g>: ", what, value);
  kvedInitGet(KVED_NOZERO | KVED_NONEG, L"");
  const int status = kvedGetDist(nullptr, prompt, &value);
  return status == RTNORM || status == RTNONE;
}

bool askWord(const wchar_t* what, const wchar_t* keywords, CString& value) {
  kvedInitGet(0, keywords);
  CString prompt, reply;
  CString list = keywords;
  list.Replace(L" ", L"/");
  prompt.Format(L"\n%s [%s] <%s>: ", what, list, value);
  const int status = kvedGetKword(prompt, reply);
  if (status == RTNORM) value = reply;
  return status == RTNORM || status == RTNONE;
}

bool askForm(int last, int& form) {
  for (;;) {
    CString prompt;
    prompt.Format(L"\nForm, 1 to %d <%d>: ", last, form);
    int value = form;
    kvedInitGet(KVED_NOZERO | KVED_NONEG, L"");
    const int status = kvedGetInt(prompt, &value);
    if (status != RTNORM && status != RTNONE) return false;
    if (value <= last) {
      form = value;
      return true;
    }
    kvutPrintf(L"\nA number from 1 to %d expected.", last);
  }
}

bool askSizes(SpringRequest& r) {
  const bool isEnd = r.family == SpringFamily::TorsionEnd, isStandard = r.family == SpringFamily::Standard;
  if (!askSize(L"Wire diameter d", r.d)) return false;
  if (!askSize(isStandard ? L"Outside diameter D" : L"Coil diameter D, to the wire's centre", r.D))
    return false;
  if (!askSize(isEnd ? L"Length of the first arm" : L"Length H0", r.H0)) return false;
  if (isStandard) return true;
  if (!askSize(isEnd ? L"Length of the second arm" : L"Number of active coils n", r.n)) return false;
  return !isEnd || askSize(L"Angle between the arms, in degrees", r.angle);
}

}  // namespace

bool springFamilyOf(CString word, SpringFamily& family) {
  for (const FamilyName& name : kFamilies) {
    if (word.IsEmpty() || CString(name.word).Left(word.GetLength()).CompareNoCase(word) != 0) continue;
    family = name.family;
    return true;
  }
  return false;
}

CString whyNoSpring(const SpringRequest& r) {
  const bool isEnd = r.family == SpringFamily::TorsionEnd, isStandard = r.family == SpringFamily::Standard;
  for (double size : {r.d, r.D, r.H0})
    if (!std::isfinite(size) || !(size > 0)) return L"Sizes above 0 are wanted.";
  if (!std::isfinite(r.n) || !std::isfinite(r.angle)) return L"Numbers are wanted.";
  if (!(r.D > (isStandard ? 2 * r.d : r.d))) return L"The wire is thicker than the coil is wide.";
  if (isStandard) {
    if (!standardForm(r.standard)) return L"There is no standard form \"" + r.standard + L"\".";
    if (r.form < 1 || r.form > kLastView) return L"The standard forms have two views: 1 and 2.";
    // Two coils, the cut one, and the same at the other end.
    constexpr double kGap = 5, kCoilsOfOneEnd = 3;
    const double least = 2 * (kCoilsOfOneEnd * r.d + 2 * (r.d + kGap));
    return r.form == 1 && r.H0 < least ? whyTooShort(least) : CString();
  }
  if (isEnd) return r.n > 0 ? CString() : CString(L"Sizes above 0 are wanted.");
  if (r.form < 1 || r.form > kLastForm) return L"The forms are numbered from 1 to 5.";
  constexpr int kFewest = 3, kFewestOfTorsion = 2, kFourth = 4;
  const bool isTorsion = r.family == SpringFamily::Torsion;
  if (const CString why = whyNoCoils(r, isTorsion && r.form != kFourth ? kFewestOfTorsion : kFewest);
      !why.IsEmpty())
    return why;
  if (isTorsion) return {};
  const double least = r.family == SpringFamily::Compression ? r.d * (r.n + 2) : r.n * r.d + 2 * r.D - r.d;
  return r.H0 < least ? whyTooShort(least) : CString();
}

CString drawSpring(const SpringRequest& request, const double* point) {
  if (const CString why = whyNoSpring(request); !why.IsEmpty()) return why;
  if (const CString why = whyNoLayer(); !why.IsEmpty()) return why;
  kvds_name before;
  kvds_setNull(before);
  kvdbEntLast(before);
  const ImSetSysVar quiet(L"CMDECHO", 0, 1);
  ImUndoRecord step;
  makeLayers();
  double at[3] = {point[0], point[1], point[2]};
  const bool isDrawn = run(request, at) == RTNORM;
  if (request.family == SpringFamily::Standard && !isPlaced(before)) return L"The spring was not placed.";
  if (!isDrawn) return L"The spring could not be drawn.";
  step.accept();
  return {};
}

void springCommand() {
  SpringRequest request;
  CString word = L"Compression";
  if (!askWord(L"Spring", L"Compression Extension Torsion End Standard", word)) return;
  springFamilyOf(word, request.family);
  const bool isStandard = request.family == SpringFamily::Standard;
  if (isStandard && !askWord(L"Form", L"YI YII YIII RYI RYII", request.standard)) return;
  if (request.family != SpringFamily::TorsionEnd &&
      !askForm(isStandard ? kLastView : kLastForm, request.form))
    return;
  for (;;) {
    if (!askSizes(request)) return;
    const CString why = whyNoSpring(request);
    if (why.IsEmpty()) break;
    kvutPrintf(L"\n%s", why);
  }
  double point[3] = {0, 0, 0};
  if (!isStandard && kvedGetPoint(nullptr, L"\nPlacement point: ", point) != RTNORM) return;
  const CString why = drawSpring(request, point);
  if (!why.IsEmpty()) KvHostContext::current().editor->fail(why);
}
