// MOVE, COPY, ROTATE, SCALE, MIRROR, ARRAY: what a map does to whole objects.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/geometry/line.h"

namespace kvcmd {
namespace {

/// More copies than that are a slip of the keyboard.
constexpr int kMostCopies = 100'000;

/// A map of the user system as one of the world.
KvGeMatrix3d inWorld(const KvGeMatrix3d& user) {
  const KvGeMatrix3d map = userToWorld();
  return map * user * map.inverse();
}

/// Base point and displacement, as MOVE and COPY ask; false when the command ends.
bool askBase(KvGePoint3d& base, std::optional<KvGeVector3d>& displacement) {
  Ask ask(L"\nSpecify base point or [Displacement] <Displacement>: ");
  const Got got = ask.keywords(L"Displacement").point(base);
  if (got == Got::Value) return true;
  if (got == Got::Cancelled) return false;
  KvGePoint3d by;
  if (Ask(L"\nSpecify displacement <0,0,0>: ").point(by) != Got::Value) return false;
  displacement = by.asVector();
  return true;
}

void runMove() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select();
  KvGePoint3d base, to;
  std::optional<KvGeVector3d> by;
  if (ids.isEmpty() || !askBase(base, by)) return;
  if (!by) {
    const Got got =
        Ask(L"\nSpecify second point or <use first point as displacement>: ").base(base).point(to);
    if (got == Got::Cancelled) return;
    by = got == Got::Value ? to - base : base.asVector();
  }
  moveAll(ids, inWorld(KvGeMatrix3d::translation(*by)));
}

KvDbObjectIdArray copyBy(const KvDbObjectIdArray& ids, const KvGeMatrix3d& user) {
  KvDbObjectIdArray copies = copyAll(ids);
  if (copies.isEmpty()) fail(L"The objects could not be copied.");
  moveAll(copies, inWorld(user));
  return copies;
}

/// A row of copies: the displacement is that of the first, or with Fit of the last.
KvDbObjectIdArray copyRow(const KvDbObjectIdArray& ids, const KvGePoint3d& base) {
  KvDbObjectIdArray made;
  int items = 0;
  KvGePoint3d to;
  if (Ask(L"\nEnter number of items to array: ").flags(KVED_NOZERO | KVED_NONEG).whole(items) != Got::Value)
    return made;
  if (items < 2 || items > kMostCopies) {
    fail(L"A number from 2 to 100000 expected.");
    return made;
  }
  Ask ask(L"\nSpecify second point or [Fit]: ");
  Got got = ask.keywords(L"Fit").base(base).point(to);
  const bool fits = got == Got::Keyword;
  if (fits) got = Ask(L"\nSpecify second point: ").base(base).point(to);
  if (got != Got::Value) return made;
  for (int i = 1; i < items; ++i)
    for (KvDbObjectId id : copyBy(
             ids, KvGeMatrix3d::translation((to - base) * (fits ? static_cast<double>(i) / (items - 1) : i))))
      made.append(id);
  return made;
}

void runCopy() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select(nullptr, true);
  KvGePoint3d base, to;
  std::optional<KvGeVector3d> by;
  if (ids.isEmpty() || !askBase(base, by)) return;
  if (by) {
    copyBy(ids, KvGeMatrix3d::translation(*by));
    return;
  }
  std::vector<KvDbObjectIdArray> made;
  for (bool isFirst = true;; isFirst = false) {
    Ask ask(isFirst ? L"\nSpecify second point or [Array] <use first point as displacement>: "
                    : L"\nSpecify second point or [Array/Exit/Undo] <Exit>: ");
    ask.keywords(isFirst ? L"Array" : L"Array Exit Undo").base(base);
    const Got got = ask.point(to);
    if (got == Got::Value) {
      made.push_back(copyBy(ids, KvGeMatrix3d::translation(to - base)));
    } else if (got == Got::Keyword && ask.keyword == L"Array") {
      made.push_back(copyRow(ids, base));
    } else if (got == Got::Keyword && ask.keyword == L"Undo") {
      if (made.empty()) {
        say(L"Nothing to undo.");
      } else {
        erase(made.back());
        made.pop_back();
      }
    } else {
      if (got == Got::Nothing && isFirst) copyBy(ids, KvGeMatrix3d::translation(base.asVector()));
      return;
    }
  }
}

void runRotate() {
  if (!drawing()) return;
  KvDbObjectIdArray ids = select();
  KvGePoint3d base, from, to;
  if (ids.isEmpty() || Ask(L"\nSpecify base point: ").point(base) != Got::Value) return;
  double angle = 0;
  bool wantsCopy = false;
  for (;;) {
    Ask ask(L"\nSpecify rotation angle or [Copy/Reference] <0>: ");
    const Got got = ask.keywords(L"Copy Reference").base(base).angle(angle);
    if (got == Got::Value || got == Got::Nothing) break;
    if (got != Got::Keyword) return;
    if (ask.keyword == L"Copy") {
      wantsCopy = true;
      continue;
    }
    double reference = 0;
    if (Ask(L"\nSpecify the reference angle <0>: ").angle(reference) == Got::Cancelled) return;
    Ask wanted(L"\nSpecify the new angle or [Points] <0>: ");
    Got answer = wanted.keywords(L"Points").base(base).angle(angle);
    if (answer == Got::Keyword) {
      if (Ask(L"\nSpecify first point: ").point(from) != Got::Value) return;
      if (Ask(L"\nSpecify second point: ").base(from).point(to) != Got::Value) return;
      angle = bearing(from, to);
    } else if (answer == Got::Cancelled) {
      return;
    }
    angle -= reference;
    break;
  }
  if (wantsCopy) ids = copyAll(ids);
  moveAll(ids, inWorld(KvGeMatrix3d::rotation(angle, KvGeVector3d::kZAxis, base)));
}

void runScale() {
  if (!drawing()) return;
  KvDbObjectIdArray ids = select();
  KvGePoint3d base;
  if (ids.isEmpty() || Ask(L"\nSpecify base point: ").point(base) != Got::Value) return;
  double factor = 1;
  bool wantsCopy = false;
  for (;;) {
    Ask ask(L"\nSpecify scale factor or [Copy/Reference]: ");
    const Got got =
        ask.keywords(L"Copy Reference").flags(KVED_NOZERO | KVED_NONEG).base(base).distance(factor);
    if (got == Got::Value) break;
    if (got != Got::Keyword) return;
    if (ask.keyword == L"Copy") {
      wantsCopy = true;
      continue;
    }
    double reference = 1, wanted = 1;
    if (Ask(L"\nSpecify reference length <1>: ").flags(KVED_NOZERO | KVED_NONEG).distance(reference) ==
        Got::Cancelled)
      return;
    if (Ask(L"\nSpecify new length <1>: ").flags(KVED_NOZERO | KVED_NONEG).base(base).distance(wanted) ==
        Got::Cancelled)
      return;
    factor = wanted / reference;
    break;
  }
  constexpr double kSmallest = 1e-99, kGreatest = 1e99;
  if (!(factor > kSmallest && factor < kGreatest)) return fail(L"There is no scaling by that factor.");
  if (wantsCopy) ids = copyAll(ids);
  moveAll(ids, inWorld(KvGeMatrix3d::scaling(factor, base)));
}

void runMirror() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select(nullptr, true);
  KvGePoint3d from, to;
  if (ids.isEmpty() || Ask(L"\nSpecify first point of mirror line: ").point(from) != Got::Value) return;
  if (Ask(L"\nSpecify second point of mirror line: ").base(from).point(to) != Got::Value) return;
  to.z = from.z;
  const KvGeVector3d across = KvGeVector3d(from.y - to.y, to.x - from.x, 0);
  if (across.length() == 0) return fail(L"Two different points expected.");
  const auto wantsErase = askYes(L"\nErase source objects?", false);
  if (!wantsErase) return;
  const KvGeMatrix3d map = inWorld(KvGeMatrix3d().setToMirroring(KvGePlane(from, across)));
  if (!*wantsErase) return moveAll(copyAll(ids), map);
  KvDbObjectIdArray free;
  for (KvDbObjectId id : ids)
    if (!isLocked(id)) free.append(id);
  moveAll(free, map);
}

void rectangularArray(const KvDbObjectIdArray& ids) {
  int rows = 1, columns = 1;
  if (Ask(L"\nEnter the number of rows (---) <1>: ").flags(KVED_NOZERO | KVED_NONEG).whole(rows) ==
      Got::Cancelled)
    return;
  if (Ask(L"\nEnter the number of columns (|||) <1>: ").flags(KVED_NOZERO | KVED_NONEG).whole(columns) ==
      Got::Cancelled)
    return;
  if (static_cast<long long>(rows) * columns * ids.length() > kMostCopies)
    return fail(L"That would be more than 100000 objects.");
  if (rows * columns == 1) return say(L"An array of one element is what there is.");
  double rowDistance = 0, columnDistance = 0;
  if (rows > 1) {
    if (Ask(L"\nEnter the distance between rows (---): ").distance(rowDistance) != Got::Value) return;
  }
  if (columns > 1 &&
      Ask(L"\nSpecify the distance between columns (|||): ").distance(columnDistance) != Got::Value)
    return;
  const double turn = variable(L"SNAPANG", 0.0);
  const KvGeVector3d x(std::cos(turn), std::sin(turn), 0), y(-x.y, x.x, 0);
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; ++column)
      if (row + column > 0)
        copyBy(ids, KvGeMatrix3d::translation(x * (column * columnDistance) + y * (row * rowDistance)));
}

/// The middle of all extents, user coordinates: what an array turns on when its objects keep their bearing.
std::optional<KvGePoint3d> middleOf(const KvDbObjectIdArray& ids) {
  KvDbExtents all;
  for (KvDbObjectId id : ids) {
    KvDbExtents own;
    if (const auto* entity = look<KvDbEntity>(id); entity && entity->getGeomExtents(own) == Kvad::eOk)
      all.addExt(own);
  }
  if (all.isEmpty()) return std::nullopt;
  return toUser(kvge::midpoint(all.minPoint(), all.maxPoint()));
}

void polarArray(const KvDbObjectIdArray& ids) {
  KvGePoint3d center;
  int items = 0;
  double fill = kvge::kTwoPi, between = 0;
  constexpr double kRadians = kvge::kPi / 180;
  if (Ask(L"\nSpecify center point of array: ").point(center) != Got::Value) return;
  Got got = Ask(L"\nEnter the number of items in the array: ").flags(KVED_NOZERO | KVED_NONEG).whole(items);
  if (got == Got::Cancelled) return;
  const bool knowsItems = got == Got::Value;
  got = Ask(L"\nSpecify the angle to fill (+=ccw, -=cw) <360>: ").real(fill);
  if (got == Got::Cancelled) return;
  if (got == Got::Value) fill *= kRadians;
  if (!knowsItems || fill == 0) {
    if (Ask(L"\nAngle between items: ").flags(KVED_NOZERO).real(between) != Got::Value) return;
    between *= kRadians;
  }
  const bool isWhole = std::fabs(std::fabs(fill) - kvge::kTwoPi) < kSmallestTurn;
  if (!knowsItems) {
    const double count = std::floor(std::fabs(fill / between) + 1e-9) + (isWhole ? 0 : 1);
    items = count > kMostCopies ? kMostCopies + 1 : static_cast<int>(count);
    if (fill < 0) between = -std::fabs(between);
  } else if (fill != 0) {
    between = items > 1 ? fill / (isWhole ? items : items - 1) : 0;
  }
  if (static_cast<long long>(items) * ids.length() > kMostCopies)
    return fail(L"That would be more than 100000 objects.");
  const auto turns = askYes(L"\nRotate arrayed objects?", true);
  if (!turns) return;
  const auto middle = middleOf(ids);
  for (int i = 1; i < items; ++i) {
    const KvGeMatrix3d turn = KvGeMatrix3d::rotation(between * i, KvGeVector3d::kZAxis, center);
    copyBy(ids, *turns || !middle ? turn : KvGeMatrix3d::translation(turn * *middle - *middle));
  }
}

void runArray() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select(nullptr, true);
  if (ids.isEmpty()) return;
  Ask ask(L"\nEnter the type of array [Rectangular/Polar] <R>: ");
  const Got got = ask.keywords(L"Rectangular Polar").word();
  if (got == Got::Cancelled) return;
  got == Got::Keyword&& ask.keyword == L"Polar" ? polarArray(ids) : rectangularArray(ids);
}

constexpr KvCommandRow kRows[] = {
    {L"ARRAY", L"AR -ARRAY", KVRX_CMD_USEPICKSET, runArray,
     L"Copies objects in rows and columns or in a ring.",
     L"Select objects:\nEnter the type of array [Rectangular/Polar] <R>:\nEnter the number of rows (---) "
     L"<1>:\nEnter the number of columns (|||) <1>:\nEnter the distance between rows (---):\nSpecify the "
     L"distance between columns (|||):\nSpecify center point of array: (polar)\nEnter the number of items in "
     L"the array: (polar)\nSpecify the angle to fill (+=ccw, -=cw) <360>: (polar)\nRotate arrayed objects? "
     L"[Yes/No] <Yes>: (polar)"},
    {L"COPY", L"CO CP", KVRX_CMD_USEPICKSET, runCopy, L"Copies objects, as often as wanted.",
     L"Select objects:\nSpecify base point or [Displacement] <Displacement>:\nSpecify second point or "
     L"[Array/Exit/Undo] <Exit>: (empty: ends; at first: the base point is the displacement)"},
    {L"MIRROR", L"MI", KVRX_CMD_USEPICKSET, runMirror, L"Mirrors objects.",
     L"Select objects:\nSpecify first point of mirror line:\nSpecify second point of mirror line:\nErase "
     L"source objects? [Yes/No] <No>:"},
    {L"MOVE", L"M", KVRX_CMD_USEPICKSET, runMove, L"Moves objects.",
     L"Select objects:\nSpecify base point or [Displacement] <Displacement>:\nSpecify second point or <use "
     L"first point as displacement>:"},
    {L"ROTATE", L"RO", KVRX_CMD_USEPICKSET, runRotate, L"Turns objects about a point.",
     L"Select objects:\nSpecify base point:\nSpecify rotation angle or [Copy/Reference] <0>:\nSpecify the "
     L"reference angle <0>: (after Reference)\nSpecify the new angle or [Points] <0>: (after Reference)"},
    {L"SCALE", L"SC", KVRX_CMD_USEPICKSET, runScale, L"Makes objects larger or smaller.",
     L"Select objects:\nSpecify base point:\nSpecify scale factor or [Copy/Reference]:\nSpecify reference "
     L"length <1>: (after Reference)\nSpecify new length <1>: (after Reference)"},
};

}  // namespace

std::span<const KvCommandRow> moveRows() {
  return kRows;
}

}  // namespace kvcmd
