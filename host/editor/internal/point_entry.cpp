// What may be given in place of a point's coordinates.
#include <algorithm>
#include <cmath>

#include "host/database/header.h"
#include "host/editor/internal/asking.h"
#include "host/editor/internal/object_snap.h"
#include "host/editor/osnap.h"
#include "host/editor/prompts.h"
#include "platform/text/casemap.h"

namespace kved {

namespace {

using Kind = KvEdToken::Kind;
constexpr int kDeepest = 16;  // of points within points: `from mtp .x ...`

int wholeVariable(const KvEdEditor& editor, const wchar_t* name, int standard) {
  KvEdVarValue value;
  const bool isHeld = editor.variables().get(name, value) == Kvad::eOk && std::holds_alternative<int>(value);
  return isHeld ? std::get<int>(value) : standard;
}
double realVariable(const KvEdEditor& editor, const wchar_t* name) {
  KvEdVarValue value;
  const bool isHeld =
      editor.variables().get(name, value) == Kvad::eOk && std::holds_alternative<double>(value);
  return isHeld ? std::get<double>(value) : 0;
}
KvEdVarPoint pointVariable(const KvEdEditor& editor, const wchar_t* name) {
  KvEdVarValue value;
  const bool isHeld =
      editor.variables().get(name, value) == Kvad::eOk && std::holds_alternative<KvEdVarPoint>(value);
  return isHeld ? std::get<KvEdVarPoint>(value) : KvEdVarPoint{};
}

bool is(const CString& text, const wchar_t* word) {
  CString plain = text;
  if (!plain.IsEmpty() && plain.GetAt(0) == L'_') plain = plain.Mid(1);
  return plain.CompareNoCase(word) == 0;
}

/// One point on its way from what was given to what it comes to.
class PointEntry {
 public:
  PointEntry(KvEdEditor& editor, const PointWish& wish, int depth)
      : editor_(editor), wish_(wish), depth_(depth) {}

  Verdict judge(const KvEdToken& token, const CString& prompt, KvGePoint3d& point);
  /// As it was given, before snaps and the like.
  KvGePoint3d raw;
  bool isComputed = false;

 private:
  Verdict judgeText(const CString& text, const CString& prompt, KvGePoint3d& point);
  /// Another point, asked for in between.
  int askPoint(const CString& prompt, KvGePoint3d& point, bool takesBase = false);
  void settle(const KvEdToken& token, KvGePoint3d& point);
  Verdict bySnaps(int snaps, const CString& prompt, KvGePoint3d& point);
  Verdict byFilter(const CString& text, KvGePoint3d& point);
  Verdict byOffset(KvGePoint3d& point);
  Verdict byMiddle(KvGePoint3d& point);
  Verdict byTracking(const CString& prompt, KvGePoint3d& point);
  Verdict byAngle(double angle, const CString& prompt, KvGePoint3d& point);
  KvGePoint3d along(double angle, double distance) const {
    return *wish_.base + KvGeVector3d(std::cos(angle), std::sin(angle), 0) * distance;
  }
  double toAxis(double angle) const;
  KvGePoint3d orthogonal(const KvGePoint3d& point) const;
  KvGePoint3d onGrid(const KvGePoint3d& point) const;

  KvEdEditor& editor_;
  const PointWish& wish_;
  int depth_;
};

int PointEntry::askPoint(const CString& prompt, KvGePoint3d& point, bool takesBase) {
  PointWish wish;
  if (takesBase) wish.base = editor_.lastPoint;
  return ask(editor_, prompt, {KVED_NONULL, {}}, [&](const KvEdToken& token) {
    PointEntry inner(editor_, wish, depth_ + 1);
    return inner.judge(token, prompt, point);
  });
}

/// The nearest of the directions along the snap's axes.
double PointEntry::toAxis(double angle) const {
  constexpr double kQuarter = kvge::kPi / 2;
  const double turn = realVariable(editor_, L"SNAPANG");
  return turn + std::round((angle - turn) / kQuarter) * kQuarter;
}

KvGePoint3d PointEntry::orthogonal(const KvGePoint3d& point) const {
  const KvGeVector3d by = point - *wish_.base;
  if (by.x == 0 && by.y == 0) return point;
  const double axis = toAxis(std::atan2(by.y, by.x));
  const KvGePoint3d flat = along(axis, by.x * std::cos(axis) + by.y * std::sin(axis));
  return {flat.x, flat.y, point.z};
}

KvGePoint3d PointEntry::onGrid(const KvGePoint3d& point) const {
  const KvEdVarPoint base = pointVariable(editor_, L"SNAPBASE"), unit = pointVariable(editor_, L"SNAPUNIT");
  const double turn = realVariable(editor_, L"SNAPANG"), c = std::cos(turn), s = std::sin(turn);
  const double x = point.x - base.x, y = point.y - base.y;
  const auto rounded = [](double value, double step) {
    return step > 0 && std::fabs(value) < step * 1e15 ? std::round(value / step) * step : value;
  };
  const double u = rounded(x * c + y * s, unit.x), v = rounded(y * c - x * s, unit.y);
  return {base.x + u * c - v * s, base.y + u * s + v * c, point.z};
}

/// What running settings make of a point that was given roughly.
void PointEntry::settle(const KvEdToken& token, KvGePoint3d& point) {
  using Origin = KvEdToken::Origin;
  enum { kSnapsAlways = 0, kSnapsInScripts = 2 };
  const bool isCursor = token.origin == Origin::Cursor;
  const int typed = wholeVariable(editor_, L"OSNAPCOORD", 1);
  const bool isTyped =
      token.kind == Kind::Text && (token.origin == Origin::Keyboard || token.origin == Origin::Script);
  const bool snaps =
      isCursor ||
      (isTyped && (typed == kSnapsAlways || (typed == kSnapsInScripts && token.origin == Origin::Script)));
  if (snaps) {
    const int running = wholeVariable(editor_, L"OSMODE", 0);
    const KvGePoint3d from = wish_.base.value_or(editor_.lastPoint);
    if (const auto found = running & kKvedSnapSuspended ? std::nullopt : snapTo(running, point, from)) {
      point = *found;
      isComputed = true;
      return;
    }
  }
  if (!isCursor) return;
  const KvGePoint3d before = point;
  if (wholeVariable(editor_, L"SNAPMODE", 0) != 0) point = onGrid(point);
  if (wish_.base && wholeVariable(editor_, L"ORTHOMODE", 0) != 0) point = orthogonal(point);
  isComputed = isComputed || !(point == before);
}

Verdict PointEntry::bySnaps(int snaps, const CString& prompt, KvGePoint3d& point) {
  const CString names = kvedSnapNames(snaps);
  const KvEdToken near =
      editor_.readToken(KvEdReadMode::Word, prompt + (snaps ? L" " + names + L" of " : L" none "));
  if (near.kind == Kind::Cancel || near.kind == Kind::End) return Verdict::taken(RTCAN);
  const auto given = pointOf(near);
  if (!given) return Verdict::refused(L"A point is needed.");
  raw = *given;
  isComputed = snaps != 0;
  const auto found = snaps ? snapTo(snaps, *given, wish_.base.value_or(editor_.lastPoint)) : given;
  if (!found) return Verdict::refused(L"Nothing to snap to there.");
  point = *found;
  return Verdict::taken();
}

/// `.x` and the like: these coordinates from one point, the others from the next.
Verdict PointEntry::byFilter(const CString& text, KvGePoint3d& point) {
  bool taken[3] = {false, false, false};
  CString rest;
  for (int i = 1; i < text.GetLength(); ++i) taken[platform::toLower(text.GetAt(i)) - L'x'] = true;
  for (int i = 0; i < 3; ++i)
    if (!taken[i]) rest += static_cast<wchar_t>(L'X' + i);
  KvGePoint3d first, second;
  int status = askPoint(text + L" of ", first);
  if (status == RTNORM) status = askPoint(L"(need " + rest + L"): ", second);
  if (status != RTNORM) return Verdict::taken(status);
  point = {taken[0] ? first.x : second.x, taken[1] ? first.y : second.y, taken[2] ? first.z : second.z};
  return Verdict::taken();
}

bool isFilter(const CString& text) {
  constexpr int kLongest = 3;
  if (text.GetLength() < 2 || text.GetLength() > kLongest || text.GetAt(0) != L'.') return false;
  const wchar_t a = platform::toLower(text.GetAt(1));
  const wchar_t b = text.GetLength() == kLongest ? platform::toLower(text.GetAt(2)) : L'\0';
  const auto isAxis = [](wchar_t c) { return c >= L'x' && c <= L'z'; };
  return isAxis(a) && (b == L'\0' || (isAxis(b) && a != b));
}

Verdict PointEntry::byOffset(KvGePoint3d& point) {
  KvGePoint3d base;
  int status = askPoint(L"Base point: ", base);
  if (status != RTNORM) return Verdict::taken(status);
  editor_.lastPoint = base;
  status = askPoint(L"<Offset>: ", point, true);
  return Verdict::taken(status);
}

Verdict PointEntry::byMiddle(KvGePoint3d& point) {
  KvGePoint3d first, second;
  int status = askPoint(L"First point of mid: ", first);
  if (status == RTNORM) {
    editor_.lastPoint = first;
    status = askPoint(L"Second point of mid: ", second);
  }
  if (status == RTNORM) point = kvge::midpoint(first, second);
  return Verdict::taken(status);
}

/// A point to count from, then the point itself.
Verdict PointEntry::byTracking(const CString& prompt, KvGePoint3d& point) {
  KvGePoint3d through;
  int status = askPoint(L"Specify temporary tracking point: ", through);
  if (status != RTNORM) return Verdict::taken(status);
  editor_.lastPoint = through;
  status = askPoint(prompt, point, true);
  return Verdict::taken(status);
}

/// The direction is fixed; what follows tells how far.
Verdict PointEntry::byAngle(double angle, const CString& prompt, KvGePoint3d& point) {
  int status = ask(editor_, prompt, {KVED_NONULL, {}}, [&](const KvEdToken& token) {
    if (const auto distance = numberOf(token)) {
      point = along(angle, *distance);
      return Verdict::taken();
    }
    PointEntry inner(editor_, wish_, depth_ + 1);
    const Verdict verdict = inner.judge(token, prompt, point);
    if (!verdict.isTaken) return Verdict::refused(L"A distance or a point is needed.");
    if (verdict.status != RTNORM) return verdict;
    const KvGeVector3d by = point - *wish_.base;
    point = along(angle, by.x * std::cos(angle) + by.y * std::sin(angle));
    return verdict;
  });
  return Verdict::taken(status);
}

Verdict PointEntry::judgeText(const CString& text, const CString& prompt, KvGePoint3d& point) {
  isComputed = true;
  if (const auto snaps = kvedSnapsOf(text.view())) return bySnaps(*snaps, prompt, point);
  if (isFilter(text)) return byFilter(text, point);
  if (is(text, L"FROM") || is(text, L"FRO")) return byOffset(point);
  if (is(text, L"MTP") || is(text, L"M2P")) return byMiddle(point);
  if (is(text, L"TT")) return byTracking(prompt, point);
  isComputed = false;
  if (!wish_.base) return Verdict::refused(L"A point is needed.");
  if (text.GetAt(0) == L'<') {
    const KvEdPointContext context = kvedPointContext();
    const auto written = kvedParseAngle(text.view().substr(1), context.angleUnits);
    if (written)
      return byAngle(context.angleBase + (context.isClockwise ? -*written : *written), prompt, point);
  }
  if (const auto distance = kvedParseNumber(text.view())) {
    const double way = editor_.shownDirection(*wish_.base).value_or(realVariable(editor_, L"SNAPANG"));
    point = along(wholeVariable(editor_, L"ORTHOMODE", 0) != 0 ? toAxis(way) : way, *distance);
    return Verdict::taken();
  }
  return Verdict::refused(L"A point is needed.");
}

Verdict PointEntry::judge(const KvEdToken& token, const CString& prompt, KvGePoint3d& point) {
  if (depth_ > kDeepest) return Verdict::refused(L"Points are nested too deeply.");
  if (const auto given = pointOf(token)) {
    point = raw = *given;
    if (!wish_.isPick) settle(token, point);
    return Verdict::taken();
  }
  if (token.kind != Kind::Text || token.text.IsEmpty()) return Verdict::refused(L"A point is needed.");
  const Verdict verdict = judgeText(token.text, prompt, point);
  if (verdict.isTaken && verdict.status == RTNORM) {
    for (const double coordinate : {point.x, point.y, point.z})
      if (!(std::fabs(coordinate) <= kKvedFarthest)) return Verdict::refused(L"The point lies too far off.");
    if (!isComputed) raw = point;
  }
  return verdict;
}

bool isOutsideLimits(const KvGePoint3d& user) {
  const KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database) return false;
  const KvDbHeader& header = database->header();
  const bool isModel = database->tilemode();
  if (header.whole(isModel ? L"$LIMCHECK" : L"$PLIMCHECK") == 0) return false;
  const KvGePoint3d low = header.point(isModel ? L"$LIMMIN" : L"$PLIMMIN"),
                    high = header.point(isModel ? L"$LIMMAX" : L"$PLIMMAX");
  const KvGePoint3d world = kvedPointContext().userToWorld * user;
  return world.x < low.x || world.y < low.y || world.x > high.x || world.y > high.y;
}

}  // namespace

Verdict judgePoint(KvEdEditor& editor, const KvEdToken& token, const CString& prompt, KvGePoint3d& point,
                   const PointWish& wish) {
  PointEntry entry(editor, wish, 0);
  KvGePoint3d found;
  Verdict verdict = entry.judge(token, prompt, found);
  if (!verdict.isTaken || verdict.status != RTNORM) return verdict;
  if (!wish.mayLeaveLimits && isOutsideLimits(found)) return Verdict::refused(L"**Outside limits");
  point = found;
  if (!token.isTracking) editor.noteWay(found);
  notePoint(editor, entry.isComputed ? entry.raw : found, found, entry.isComputed);
  return verdict;
}

}  // namespace kved
