#pragma once
// The frame that all prompts share: asking, null replies, keywords, asking again.
#include <functional>
#include <optional>

#include "host/editor/editor.h"
#include "host/editor/point_input.h"

namespace kved {

/// What a prompt made of one answer.
struct Verdict {
  bool isTaken = false;
  int status = RTNORM;  ///< of the prompt, when taken
  CString complaint;    ///< shown before asking again

  static Verdict taken(int status = RTNORM) { return {true, status, {}}; }
  static Verdict refused(const wchar_t* why) { return {false, RTERROR, CString(why)}; }
};

using Judge = std::function<Verdict(const KvEdToken&)>;

/// Asks until an answer is taken: RTCAN for a cancel (and after a hundred bad answers), RTNONE for an empty
/// one unless KVED_NONULL stands, RTKWORD for a keyword or, with KVED_ARBITRARY, for a text that `judge`
/// refuses; else what `judge` says.
int ask(KvEdEditor& editor, const CString& prompt, const KvEdEditor::GetOptions& options, const Judge& judge,
        KvEdReadMode mode = KvEdReadMode::Word);

/// The point that an answer stands for, in user coordinates; object snaps aren't looked at.
std::optional<KvGePoint3d> pointOf(const KvEdToken& token);
std::optional<double> numberOf(const KvEdToken& token);
/// The text of an answer: typed, or a number as it is written.
CString textOf(const KvEdToken& token);

/// What a prompt wants of a point.
struct PointWish {
  std::optional<KvGePoint3d>
      base;             ///< where a rubber line starts: distances and angles may stand for a point
  bool isPick = false;  ///< it points at something: taken as it is
  bool mayLeaveLimits = true;
};
/// Judges an answer as a point in all ways that prompts.h tells of, telling the monitors and keeping it as
/// the last point.
Verdict judgePoint(KvEdEditor& editor, const KvEdToken& token, const CString& prompt, KvGePoint3d& point,
                   const PointWish& wish = {});
/// Keeps a point as the last one and tells the monitors. User coordinates.
void notePoint(KvEdEditor& editor, const KvGePoint3d& raw, const KvGePoint3d& computed, bool isComputed);

}  // namespace kved
