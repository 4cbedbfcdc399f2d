// What new objects are like and how drawing goes: COLOR, LWEIGHT, LTSCALE, ELEV, LIMITS, UNITS, BASE, ORTHO,
// SNAP, GRID, FILL, ATTDISP, QTEXT.
#include <algorithm>

#include "host/commands/internal/choices.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/header.h"
#include "host/editor/osnap.h"

namespace kvcmd {

KvDb::LineWeight lineWeightOf(double millimetres) {
  // The widths that drawing files know, in hundredths.
  constexpr int kWeights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                              53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
  const double wanted = millimetres * 100;
  const int* best = std::min_element(std::begin(kWeights), std::end(kWeights), [&](int a, int b) {
    return std::fabs(a - wanted) < std::fabs(b - wanted);
  });
  return static_cast<KvDb::LineWeight>(*best);
}

CString lineWeightText(int weight) {
  switch (weight) {
    case KvDb::kLnWtByLayer:
      return L"ByLayer";
    case KvDb::kLnWtByBlock:
      return L"ByBlock";
    case KvDb::kLnWtByLwDefault:
      return L"Default";
    default:
      return numberText(weight / 100.0) + L" mm";
  }
}

std::optional<KvDb::LineWeight> askLineWeight(const CString& prompt, KvDb::LineWeight standard) {
  constexpr double kWidest = 2.11;
  double weight = 0;
  for (;;) {
    Ask ask(prompt);
    const Got got = ask.keywords(L"ByLayer ByBlock DEFAULT").flags(KVED_NONEG).real(weight);
    if (got == Got::Cancelled) return std::nullopt;
    if (got == Got::Nothing) return standard;
    if (got == Got::Keyword)
      return ask.keyword == L"ByLayer"   ? KvDb::kLnWtByLayer
             : ask.keyword == L"ByBlock" ? KvDb::kLnWtByBlock
                                         : KvDb::kLnWtByLwDefault;
    if (weight <= kWidest) return lineWeightOf(weight);
    say(L"A line weight of at most 2.11 mm expected.");
  }
}

namespace {

/// ON and OFF for a variable of 0 and 1.
void askSwitch(const wchar_t* prompt, const wchar_t* name, const wchar_t* on = L"ON",
               const wchar_t* off = L"OFF") {
  const bool isOn = variable(name, 0) != 0;
  const CString words = CString(on) + L" " + off;
  Ask ask(CString(prompt) + L" [" + on + L"/" + off + L"] <" + (isOn ? on : off) + L">: ");
  if (ask.keywords(words).word() == Got::Keyword) setVariable(name, ask.keyword == on ? 1 : 0);
}

void runColor() {
  if (!drawing()) return;
  CString text;
  const CString now = variable(L"CECOLOR", CString(L"BYLAYER"));
  const Got got =
      Ask(L"\nEnter default object color (1 to 255, its name, BYLAYER, BYBLOCK) <" + now + L">: ").text(text);
  if (got != Got::Value) return;
  const auto color = colorNamed(text, true);
  if (!color) return fail(L"\"" + text + L"\" is no colour.");
  drawing()->setCecolor(KvCmEntityColor::ofIndex(*color));
}

void runLweight() {
  if (!drawing()) return;
  const KvDb::LineWeight now = drawing()->celweight();
  const auto weight =
      askLineWeight(L"\nEnter default lineweight for new objects in mm or [ByLayer/ByBlock/DEFAULT] <" +
                        lineWeightText(now) + L">: ",
                    now);
  if (weight && *weight != now) drawing()->setCelweight(*weight);
}

void runLtscale() {
  if (!drawing()) return;
  double scale = 1;
  if (Ask(L"\nEnter new linetype scale factor <" + numberText(drawing()->ltscale()) + L">: ")
          .flags(KVED_NOZERO | KVED_NONEG)
          .real(scale) == Got::Value)
    drawing()->setLtscale(scale);
}

void runElev() {
  if (!drawing()) return;
  const AllOrNothing together;
  double elevation = drawing()->elevation(), thickness = drawing()->thickness();
  Got got = Ask(L"\nSpecify new default elevation <" + numberText(elevation) + L">: ").distance(elevation);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) drawing()->setElevation(elevation);
  got = Ask(L"\nSpecify new default thickness <" + numberText(thickness) + L">: ").distance(thickness);
  if (got == Got::Value) drawing()->setThickness(thickness);
}

void runLimits() {
  if (!drawing()) return;
  const bool isModel = drawing()->tilemode();
  const wchar_t* const lowName = isModel ? L"$LIMMIN" : L"$PLIMMIN";
  const wchar_t* const highName = isModel ? L"$LIMMAX" : L"$PLIMMAX";
  KvDbHeader& header = drawing()->header();
  KvGePoint3d low = header.point(lowName), high = header.point(highName);
  const auto flat = [](const KvGePoint3d& p) { return lengthText(p.x) + L"," + lengthText(p.y); };
  Ask ask(L"\nSpecify lower left corner or [ON/OFF] <" + flat(low) + L">: ");
  const Got got = ask.keywords(L"ON OFF").point(low);
  if (got == Got::Cancelled) return;
  if (got == Got::Keyword) {
    header.setWhole(isModel ? L"$LIMCHECK" : L"$PLIMCHECK", ask.keyword == L"ON");
    return;
  }
  if (Ask(L"\nSpecify upper right corner <" + flat(high) + L">: ").corner(low, high) == Got::Cancelled)
    return;
  if (!(high.x > low.x && high.y > low.y))
    return fail(L"The upper right corner lies above and to the right of the lower left one.");
  header.setPoint(lowName, {low.x, low.y, 0});
  header.setPoint(highName, {high.x, high.y, 0});
}

/// A whole number within limits; empty keeps the variable. False when the command ends.
bool askWhole(const CString& prompt, const wchar_t* name, int lowest, int highest, int offset = 0) {
  for (;;) {
    int value = variable(name, 0) + offset;
    CString shown;
    shown.Format(L" <%d>: ", value);
    const Got got = Ask(prompt + shown).whole(value);
    if (got == Got::Cancelled) return false;
    if (got == Got::Nothing) return true;
    if (value >= lowest && value <= highest) {
      setVariable(name, value - offset);
      return true;
    }
    CString limits;
    limits.Format(L"A number from %d to %d expected.", lowest, highest);
    say(limits);
  }
}

void runUnits() {
  if (!drawing()) return;
  const AllOrNothing together;
  say(L"Report formats:\n  1. Scientific     1.55E+01\n  2. Decimal        15.50\n  3. Engineering    "
      L"1'-3.50\"\n  4. Architectural  1'-3 1/2\"\n  5. Fractional     15 1/2");
  if (!askWhole(L"\nEnter choice, 1 to 5", L"LUNITS", 1, 5)) return;
  const bool isFraction = variable(L"LUNITS", 2) > 3;
  if (!askWhole(isFraction ? L"\nEnter smallest fraction to display, as power of 2 (0 to 8)"
                           : L"\nEnter number of digits to right of decimal point (0 to 8)",
                L"LUPREC", 0, 8))
    return;
  say(L"Systems of angle measure:\n  1. Decimal degrees         45.0000\n  2. Degrees/minutes/seconds "
      L"45d0'0\"\n  3. Grads                   50.0000g\n  4. Radians                 0.7854r\n  5. "
      L"Surveyor's "
      L"units        N 45d0'0\" E");
  if (!askWhole(L"\nEnter choice, 1 to 5", L"AUNITS", 1, 5, 1)) return;
  if (!askWhole(L"\nEnter number of fractional places for display of angles (0 to 8)", L"AUPREC", 0, 8))
    return;
  double base = variable(L"ANGBASE", 0.0);
  if (Ask(L"\nEnter direction for angle 0 (East 0, North 90) <" + angleText(base) + L">: ").angle(base) ==
      Got::Cancelled)
    return;
  setVariable(L"ANGBASE", base);
  const auto isClockwise = askYes(L"\nMeasure angles clockwise?", variable(L"ANGDIR", 0) != 0);
  if (isClockwise) setVariable(L"ANGDIR", *isClockwise ? 1 : 0);
}

void runBase() {
  if (!drawing()) return;
  const wchar_t* const name = drawing()->tilemode() ? L"$INSBASE" : L"$PINSBASE";
  KvGePoint3d base = toUser(drawing()->header().point(name));
  if (Ask(L"\nEnter base point <" + pointText(base) + L">: ").point(base) == Got::Value)
    drawing()->header().setPoint(name, toWorld(base));
}

void runOrtho() {
  if (drawing()) askSwitch(L"\nEnter mode", L"ORTHOMODE");
}
void runFill() {
  if (drawing()) askSwitch(L"\nEnter mode", L"FILLMODE");
}
void runQtext() {
  if (drawing()) askSwitch(L"\nEnter mode", L"QTEXTMODE");
}

void runAttdisp() {
  if (!drawing()) return;
  constexpr const wchar_t* kModes[] = {L"OFF", L"Normal", L"ON"};
  const int now = std::clamp(variable(L"ATTMODE", 1), 0, 2);
  Ask ask(L"\nEnter attribute visibility setting [Normal/ON/OFF] <" + CString(kModes[now]) + L">: ");
  if (ask.keywords(L"Normal ON OFF").word() != Got::Keyword) return;
  for (int i = 0; i < 3; ++i)
    if (ask.keyword == kModes[i]) setVariable(L"ATTMODE", i);
}

/// Spacings of the snap or of the grid: one for both axes, or each its own.
void askSpacing(const CString& prompt, const wchar_t* keywords, const wchar_t* unit, const wchar_t* mode,
                bool hasRotation) {
  const auto now = variable(unit, KvEdVarPoint{10, 10, 0});
  double x = now.x, y = now.y;
  Ask ask(prompt + L" <" + lengthText(now.x) + L">: ");
  const Got got = ask.keywords(keywords).flags(KVED_NONEG).distance(x);
  if (got == Got::Cancelled || got == Got::Nothing) return;
  if (got == Got::Value) {
    if (x > 0) setVariable(unit, KvEdVarPoint{x, x, 0});
    return setVariable(mode, 1);
  }
  if (ask.keyword == L"ON" || ask.keyword == L"OFF") return setVariable(mode, ask.keyword == L"ON" ? 1 : 0);
  if (ask.keyword == L"Snap") return setVariable(unit, variable(L"SNAPUNIT", now));
  if (ask.keyword == L"Aspect") {
    if (Ask(L"\nSpecify horizontal spacing <" + lengthText(x) + L">: ").flags(KVED_NONEG).distance(x) ==
            Got::Cancelled ||
        Ask(L"\nSpecify vertical spacing <" + lengthText(y) + L">: ").flags(KVED_NONEG).distance(y) ==
            Got::Cancelled)
      return;
    return setVariable(unit, KvEdVarPoint{x, y, 0});
  }
  if (!hasRotation) return;
  const auto held = variable(L"SNAPBASE", KvEdVarPoint{});
  KvGePoint3d base(held.x, held.y, 0);
  double angle = variable(L"SNAPANG", 0.0);
  if (Ask(L"\nSpecify base point <" + lengthText(base.x) + L"," + lengthText(base.y) + L">: ").point(base) ==
      Got::Cancelled)
    return;
  if (Ask(L"\nSpecify rotation angle <" + angleText(angle) + L">: ").base(base).angle(angle) ==
      Got::Cancelled)
    return;
  setVariable(L"SNAPBASE", KvEdVarPoint{base.x, base.y, 0});
  setVariable(L"SNAPANG", angle);
}

void runSnap() {
  if (drawing())
    askSpacing(L"\nSpecify snap spacing or [ON/OFF/Aspect/Rotate]", L"ON OFF Aspect Rotate", L"SNAPUNIT",
               L"SNAPMODE", true);
}
void runGrid() {
  if (drawing())
    askSpacing(L"\nSpecify grid spacing or [ON/OFF/Snap/Aspect]", L"ON OFF Snap Aspect", L"GRIDUNIT",
               L"GRIDMODE", false);
}

void runOsnap() {
  if (!editor()) return;
  const int old = variable(L"OSMODE", 0);
  const CString now = kvedSnapNames(old);
  CString list;
  for (;;) {
    const Got got =
        Ask(L"\nEnter list of object snap modes or [?] <" + (now.IsEmpty() ? CString(L"none") : now) + L">: ")
            .text(list);
    if (got != Got::Value) return;
    const auto snaps = kvedSnapsOf(list.view());
    if (list == L"?") {
      say(kvedSnapNames(kKvedAllSnaps) + L", none");
    } else if (snaps) {
      // Bits that stand for what this host doesn't know stay.
      setVariable(L"OSMODE", (old & ~(kKvedAllSnaps | kKvedSnapSuspended)) | *snaps);
      break;
    } else {
      say(L"\"" + list + L"\" is no list of object snaps: words with commas, as END,MID.");
    }
  }
  if (variable(L"OSMODE", 0) != 0 && variable(L"OSNAPCOORD", 1) == 1)
    say(L"Typed points stay as they are typed; OSNAPCOORD 0 lets the snaps act on them too.");
}

constexpr KvCommandRow kRows[] = {
    {L"ATTDISP", L"", KVRX_CMD_TRANSPARENT, runAttdisp,
     L"Shows attributes as they were defined, all, or none.",
     L"Enter attribute visibility setting [Normal/ON/OFF] <Normal>:"},
    {L"BASE", L"", KVRX_CMD_TRANSPARENT, runBase,
     L"Sets the point by which the drawing is inserted into others.", L"Enter base point <0,0,0>:"},
    {L"COLOR", L"COL COLOUR -COLOR", KVRX_CMD_TRANSPARENT, runColor, L"Sets the colour of new objects.",
     L"Enter default object color (1 to 255, its name, BYLAYER, BYBLOCK) <BYLAYER>:"},
    {L"ELEV", L"", KVRX_CMD_TRANSPARENT, runElev,
     L"Sets the height at which new objects lie, and their thickness.",
     L"Specify new default elevation <0>:\nSpecify new default thickness <0>:"},
    {L"FILL", L"", KVRX_CMD_TRANSPARENT, runFill,
     L"Fills wide polylines, solids and hatches, or leaves them open.", L"Enter mode [ON/OFF] <ON>:"},
    {L"GRID", L"", KVRX_CMD_TRANSPARENT, runGrid, L"Sets the grid's spacing; a front end shows it.",
     L"Specify grid spacing or [ON/OFF/Snap/Aspect] <10>:\nSpecify horizontal spacing <>: (after "
     L"Aspect)\nSpecify "
     L"vertical spacing <>: (after Aspect)"},
    {L"LIMITS", L"", KVRX_CMD_TRANSPARENT, runLimits, L"Sets the corners of the area that is drawn on.",
     L"Specify lower left corner or [ON/OFF] <0,0>: (ON: points outside are refused)\nSpecify upper right "
     L"corner "
     L"<420,297>:"},
    {L"LTSCALE", L"LTS", KVRX_CMD_TRANSPARENT, runLtscale, L"Sets the scale of all linetypes.",
     L"Enter new linetype scale factor <1>:"},
    {L"LWEIGHT", L"LW LINEWEIGHT -LWEIGHT", KVRX_CMD_TRANSPARENT, runLweight,
     L"Sets the line weight of new objects.",
     L"Enter default lineweight for new objects in mm or [ByLayer/ByBlock/DEFAULT] <ByLayer>:"},
    {L"ORTHO", L"", KVRX_CMD_TRANSPARENT, runOrtho,
     L"Keeps directions that are shown or typed before a distance along the axes.",
     L"Enter mode [ON/OFF] <OFF>:"},
    {L"OSNAP", L"OS -OSNAP DDOSNAP", KVRX_CMD_TRANSPARENT, runOsnap,
     L"Sets the object snaps that act on the points of a cursor, and by OSNAPCOORD on typed ones.",
     L"Enter list of object snap modes or [?] <END,CEN,INT>: (END, MID, CEN, NOD, QUA, INT, INS, PER, TAN, "
     L"NEA with "
     L"commas; NONE: no snaps)"},
    {L"QTEXT", L"", KVRX_CMD_TRANSPARENT, runQtext, L"Shows texts as frames, or whole.",
     L"Enter mode [ON/OFF] <OFF>:"},
    {L"SNAP", L"SN", KVRX_CMD_TRANSPARENT, runSnap, L"Sets the spacing to which a cursor jumps.",
     L"Specify snap spacing or [ON/OFF/Aspect/Rotate] <10>:\nSpecify horizontal spacing <>: (after "
     L"Aspect)\nSpecify "
     L"vertical spacing <>: (after Aspect)\nSpecify base point <0,0>: (after Rotate)\nSpecify rotation angle "
     L"<0>: "
     L"(after Rotate)"},
    {L"UNITS", L"UN -UNITS", KVRX_CMD_MODAL, runUnits, L"Sets how lengths and angles are written.",
     L"Enter choice, 1 to 5 <2>: (of lengths)\nEnter number of digits to right of decimal point (0 to 8) "
     L"<4>:\nEnter "
     L"choice, 1 to 5 <1>: (of angles)\nEnter number of fractional places for display of angles (0 to 8) "
     L"<0>:\nEnter "
     L"direction for angle 0 (East 0, North 90) <0>:\nMeasure angles clockwise? [Yes/No] <No>:"},
};

}  // namespace

std::span<const KvCommandRow> settingRows() {
  return kRows;
}

}  // namespace kvcmd
