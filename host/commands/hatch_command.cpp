// HATCH: fills the closed outlines among the selected objects.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/commands/outlines.h"
#include "host/editor/sysvars.h"
#include "host/entities/curve.h"
#include "host/entities/hatch.h"

namespace kvcmd {
namespace {

/// Ends of an outline's curves meet within this, in drawing units: what programs round.
constexpr double kMeeting = 1e-6;

struct Wish {
  CString pattern = L"ANSI31";
  double scale = 1, angle = 0;
  double space = 1;  // of a user-defined pattern
  bool isCrossed = false;
  bool isUserDefined() const { return pattern.CompareNoCase(L"U") == 0; }
  bool isSolid() const { return pattern.CompareNoCase(L"SOLID") == 0; }
};

template <class T>
void read(const wchar_t* name, T& value) {
  KvEdVarValue held;
  if (editor() && editor()->variables().get(name, held) == Kvad::eOk)
    if (const T* found = std::get_if<T>(&held)) value = *found;
}

void remember(const Wish& wish) {
  KvEdSysVars& variables = editor()->variables();
  variables.set(L"HPNAME", wish.pattern);
  variables.set(L"HPSCALE", wish.scale);
  variables.set(L"HPANG", wish.angle);
}

void listPatterns() {
  for (std::wstring_view name : kvdbHatchPatternNames()) say(CString(name));
}

/// False when the command is to end.
bool askPattern(Wish& wish) {
  read(L"HPNAME", wish.pattern);
  read(L"HPSCALE", wish.scale);
  read(L"HPANG", wish.angle);
  for (;;) {
    CString name;
    const Got got =
        Ask((L"\nEnter a pattern name or [?/Solid/User defined] <" + wish.pattern + L">: ").GetString())
            .text(name);
    if (got == Got::Cancelled) return false;
    if (got == Got::Nothing) break;
    if (name == L"?") {
      listPatterns();
      continue;
    }
    if (name.CompareNoCase(L"S") == 0 || name.CompareNoCase(L"SOLID") == 0) name = L"SOLID";
    std::vector<KvDbPatternLine> lines;
    if (name.CompareNoCase(L"U") != 0 && name != L"SOLID" && !kvdbHatchPattern(name.view(), true, lines)) {
      fail(L"There is no pattern \"" + name + L"\".");
      return false;
    }
    wish.pattern = name.MakeUpper();
    break;
  }
  if (wish.isSolid()) return true;
  CString prompt;
  if (wish.isUserDefined()) {
    if (Ask(L"\nSpecify angle for crosshatch lines <0>: ").angle(wish.angle) == Got::Cancelled) return false;
    if (Ask(L"\nSpecify spacing between the lines <1>: ")
            .flags(KVED_NOZERO | KVED_NONEG)
            .distance(wish.space) == Got::Cancelled)
      return false;
    Ask ask(L"\nDouble hatch area? [Yes/No] <No>: ");
    if (ask.keywords(L"Yes No").word() == Got::Cancelled) return false;
    wish.isCrossed = ask.keyword == L"Yes";
    return true;
  }
  prompt.Format(L"\nSpecify a scale for the pattern <%.4g>: ", wish.scale);
  if (Ask(prompt).flags(KVED_NOZERO | KVED_NONEG).real(wish.scale) == Got::Cancelled) return false;
  prompt.Format(L"\nSpecify an angle for the pattern <%.4g>: ", wish.angle * 360 / kvge::kTwoPi);
  return Ask(prompt).angle(wish.angle) != Got::Cancelled;
}

void setPattern(KvDbHatch& hatch, const Wish& wish) {
  // Whoever sets scale and angle first has the pattern's lines made once.
  if (!wish.isSolid() && !wish.isUserDefined()) hatch.setPatternScale(wish.scale);
  hatch.setPatternAngle(wish.angle);
  if (wish.isUserDefined()) {
    hatch.setPatternSpace(wish.space);
    hatch.setPatternDouble(wish.isCrossed);
    hatch.setPattern(KvDbHatch::kUserDefined, L"_USER");
  } else {
    hatch.setPattern(KvDbHatch::kPreDefined, wish.pattern);
  }
}

void runHatch() {
  Wish wish;
  if (!drawing() || !askPattern(wish)) return;
  bool isCancelled = false;
  const KvDbObjectIdArray ids = select(nullptr, true, &isCancelled);
  if (isCancelled) return;
  const auto outlines = kvcmdClosedOutlines(ids, kMeeting);
  if (outlines.empty()) {
    fail(L"The objects form no closed outline.");
    return;
  }
  auto hatch = std::make_unique<KvDbHatch>();
  const KvGeVector3d normal = userToWorld().column(2);
  hatch->setNormal(normal);
  KvGePoint3d start;
  if (const auto* curve = look<KvDbCurve>(outlines.front()[0]);
      curve && curve->getStartPoint(start) == Kvad::eOk)
    hatch->setElevation((KvGeMatrix3d::worldToPlane(normal) * start).z);
  setPattern(*hatch, wish);
  hatch->setAssociative(true);
  int loops = 0;
  for (const KvDbObjectIdArray& outline : outlines)
    if (hatch->appendLoop(KvDbHatch::kExternal, outline) == Kvad::eOk) ++loops;
  if (loops == 0) {
    fail(L"The outlines can't bound a hatch.");
    return;
  }
  if (!wish.isSolid() && !hatch->patternStretches([](KvGePoint2d, KvGePoint2d) {})) {
    fail(L"The pattern is too fine for the area: a greater scale would do.");
    return;
  }
  const KvDbHatch* made = hatch.get();
  const KvDbObjectIdArray sources = made->assocObjIds();
  const KvDbObjectId id = add(std::move(hatch));
  for (KvDbObjectId source : sources)
    change<KvDbEntity>(source, [&](KvDbEntity& entity) { entity.addPersistentReactor(id); });
  remember(wish);
}

constexpr KvCommandRow kRows[] = {
    {L"HATCH", L"H -HATCH BHATCH", KVRX_CMD_MODAL, runHatch,
     L"Fills closed outlines with a pattern of lines or a colour.",
     L"Enter a pattern name or [?/Solid/User defined]: (ANSI31, ISO02W100, ...)\nSpecify a scale for the "
     L"pattern "
     L"<1>:\nSpecify an angle for the pattern <0>:\nSelect objects: (closed curves, or curves that close "
     L"together; inner "
     L"outlines are islands)"},
};

}  // namespace

std::span<const KvCommandRow> hatchRows() {
  return kRows;
}

}  // namespace kvcmd
