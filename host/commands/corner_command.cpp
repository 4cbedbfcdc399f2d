// FILLET and CHAMFER.
#include "host/commands/internal/flatcurve.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/trimming.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"

namespace kvcmd {
namespace {

/// A curve as it was picked; points in user coordinates.
struct Side {
  KvDbObjectId id;
  FlatCurve curve;
  KvGePoint2d pick;
};

std::optional<Side> askSide(const wchar_t* prompt, const wchar_t* keywords, CString& keyword, Got& got) {
  Side side;
  KvGePoint3d pick;
  Ask ask(prompt);
  got = ask.keywords(keywords).entity(side.id, &pick);
  keyword = ask.keyword;
  if (got != Got::Value) return std::nullopt;
  side.pick = kvge::planar(pick);
  const auto curve = flatCurveOf(side.id);
  if (!curve || isLocked(side.id)) {
    fail(curve ? L"The object is on a locked layer."
               : L"Lines, arcs and circles in the user system's plane can be joined that way.");
    return std::nullopt;
  }
  side.curve = *curve;
  return side;
}

/// A new entity between the sides, looking like the first; made in user coordinates.
void addBetween(const Side& side, std::unique_ptr<KvDbEntity> entity) {
  entity->transformBy(userToWorld());
  addBeside(side.id, std::move(entity));
}

void addRounding(const Side& a, const Rounding& corner, double radius) {
  // The arc on the corner's side is the one of less than half a turn.
  double from = (corner.first - corner.center).angle(), to = (corner.second - corner.center).angle();
  if (kvge::normalizedAngle(to - from) > kvge::kPi + kSmallestTurn) std::swap(from, to);
  addBetween(a, std::make_unique<KvDbArc>(kvge::spatial(corner.center, a.curve.height), KvGeVector3d::kZAxis,
                                          radius, from, to));
}

/// Parallel lines are joined by half a circle at the end of the first that is nearer to its pick.
bool filletParallel(const Side& a, const Side& b, bool trims) {
  const KvGePoint2d end =
      a.pick.distanceTo(a.curve.start) < a.pick.distanceTo(a.curve.end) ? a.curve.start : a.curve.end;
  const KvGePoint2d opposite = b.curve.project(end);
  const double radius = end.distanceTo(opposite) / 2;
  if (radius == 0) return false;
  const KvGePoint2d center = end + (opposite - end) * 0.5;
  const KvGeVector2d outwards = end - a.curve.project(a.pick);
  double from = (end - center).angle(), to = (opposite - center).angle();
  const KvGeVector2d middle(std::cos(from + kvge::kPi / 2), std::sin(from + kvge::kPi / 2));
  if (middle.dotProduct(outwards) < 0) std::swap(from, to);
  if (trims) cutBack(b.id, b.curve, opposite, b.pick);
  addBetween(a, std::make_unique<KvDbArc>(kvge::spatial(center, a.curve.height), KvGeVector3d::kZAxis, radius,
                                          from, to));
  return true;
}

/// Whether a line that is picked on that side of the corner holds a point, or would have to be drawn out past
/// its far end.
bool reaches(const Side& side, KvGePoint2d corner, KvGePoint2d touch) {
  constexpr double kOn = 1e-9;
  KvGeVector2d way = side.pick - corner;
  if (way.length() == 0) return true;
  way = way.normal();
  const double far =
      std::max((side.curve.start - corner).dotProduct(way), (side.curve.end - corner).dotProduct(way));
  return (touch - corner).dotProduct(way) <= far + kOn;
}

bool fillet(const Side& a, const Side& b, double radius, bool trims) {
  if (a.id == b.id || std::fabs(a.curve.height - b.curve.height) > 1e-9) return false;
  const bool isParallel = !a.curve.isRound() && !b.curve.isRound() &&
                          std::fabs(a.curve.direction().crossProduct(b.curve.direction())) < kSmallestTurn;
  if (isParallel) return filletParallel(a, b, trims);
  const auto corner = touchingBoth(a.curve, a.pick, b.curve, b.pick, radius);
  if (!corner) return false;
  if (!a.curve.isRound() && !b.curve.isRound())
    for (KvGePoint2d meeting : meetings(baseOf(a.curve), baseOf(b.curve)))
      if (!reaches(a, meeting, corner->first) || !reaches(b, meeting, corner->second)) return false;
  if (trims) {
    cutBack(a.id, a.curve, corner->first, a.pick);
    cutBack(b.id, b.curve, corner->second, b.pick);
  }
  if (radius > 0) addRounding(a, *corner, radius);
  return true;
}

/// How a corner of a polyline is cut: how far the cut begins before and ends behind it, and its bulge.
struct Cut {
  double before = 0, behind = 0, bulge = 0;
};

/// Cuts all corners between straight segments; the number of those that were cut and of those too short.
template <class CutOf>
void cutPolyline(KvDbObjectId id, const CutOf& cutOf) {
  const auto* polyline = look<KvDbPolyline>(id);
  if (!polyline || isLocked(id)) return fail(L"A polyline on a layer that isn't locked expected.");
  const int count = polyline->numVerts();
  std::vector<KvDbPolyline::Vertex> vertices;
  int done = 0, tooShort = 0;
  double room = INFINITY;  // what the cut before leaves of the segment
  for (int i = 0; i < count; ++i) {
    KvDbPolyline::Vertex vertex;
    polyline->getPointAt(i, vertex.point);
    polyline->getBulgeAt(i, vertex.bulge);
    polyline->getWidthsAt(i, vertex.startWidth, vertex.endWidth);
    const bool isEnd = !polyline->isClosed() && (i == 0 || i == count - 1);
    KvGePoint2d before, behind;
    double bulgeBefore = 0;
    polyline->getPointAt((i + count - 1) % count, before);
    polyline->getPointAt((i + 1) % count, behind);
    polyline->getBulgeAt((i + count - 1) % count, bulgeBefore);
    const KvGeVector2d back = before - vertex.point, forth = behind - vertex.point;
    const bool isCorner = !isEnd && bulgeBefore == 0 && vertex.bulge == 0 &&
                          std::fabs(back.normal().crossProduct(forth.normal())) > kSmallestTurn;
    const Cut cut = isCorner ? cutOf(back, forth) : Cut();
    const double had = i == 0 ? back.length() : std::min(room, back.length());
    room = forth.length();
    if (!isCorner || cut.before + cut.behind == 0) {
      vertices.push_back(vertex);
    } else if (cut.before > had || cut.behind > forth.length()) {
      ++tooShort;
      vertices.push_back(vertex);
    } else {
      ++done;
      room -= cut.behind;
      vertices.push_back(
          {vertex.point + back.normal() * cut.before, cut.bulge, vertex.startWidth, vertex.startWidth});
      vertices.push_back(vertex);
      vertices.back().point = vertex.point + forth.normal() * cut.behind;
    }
  }
  change<KvDbPolyline>(id, [&](KvDbPolyline& made) {
    while (made.numVerts() > 0) made.removeVertexAt(0);
    for (const auto& v : vertices)
      made.addVertexAt(made.numVerts(), v.point, v.bulge, v.startWidth, v.endWidth);
  });
  say(countOf(done, L"corners were cut"));
  if (tooShort > 0) say(countOf(tooShort, L"were too short"));
}

Cut filletCut(KvGeVector2d back, KvGeVector2d forth, double radius) {
  const double turn = kvge::kPi - back.angleTo(forth);
  const double length = radius * std::tan(turn / 2);
  return {length, length, (back.crossProduct(forth) > 0 ? -1 : 1) * std::tan(turn / 4)};
}

void runFillet() {
  if (!drawing()) return;
  double radius = variable(L"FILLETRAD", 0.0);
  bool trims = variable(L"TRIMMODE", 1) != 0, isMultiple = false;
  for (;;) {
    CString keyword;
    Got got;
    const auto first = askSide(L"\nSelect first object or [Polyline/Radius/Trim/Multiple]: ",
                               L"Polyline Radius Trim Multiple", keyword, got);
    if (got == Got::Keyword && keyword == L"Radius") {
      if (Ask(L"\nSpecify fillet radius <" + numberText(radius) + L">: ")
              .flags(KVED_NONEG)
              .distance(radius) == Got::Cancelled)
        return;
      setVariable(L"FILLETRAD", radius);
    } else if (got == Got::Keyword && keyword == L"Trim") {
      Ask ask(L"\nEnter Trim mode option [Trim/No trim]: ");
      if (ask.keywords(L"Trim No").word() == Got::Keyword) trims = ask.keyword == L"Trim";
      setVariable(L"TRIMMODE", trims ? 1 : 0);
    } else if (got == Got::Keyword && keyword == L"Multiple") {
      isMultiple = true;
    } else if (got == Got::Keyword) {
      KvDbObjectId id;
      if (Ask(L"\nSelect 2D polyline: ").entity(id) == Got::Value)
        cutPolyline(id,
                    [&](KvGeVector2d back, KvGeVector2d forth) { return filletCut(back, forth, radius); });
      return;
    } else {
      if (!first) return;
      const auto second = askSide(L"\nSelect second object: ", L"", keyword, got);
      if (!second) return;
      if (!fillet(*first, *second, radius, trims)) return fail(L"There is no such fillet.");
      if (!isMultiple) return;
    }
  }
}

/// What CHAMFER cuts off: two distances, or a distance and an angle.
struct Chamfer {
  double first = 0, second = 0;
};

bool chamfer(const Side& a, const Side& b, const Chamfer& cut, bool trims) {
  if (a.id == b.id || a.curve.isRound() || b.curve.isRound()) return false;
  const auto corners = meetings(baseOf(a.curve), baseOf(b.curve));
  if (corners.empty()) return false;
  const auto along = [&](const Side& side, double distance) {
    const KvGeVector2d towards = side.curve.project(side.pick) - corners[0];
    return corners[0] + towards.normal() * distance;
  };
  const KvGePoint2d from = along(a, cut.first), to = along(b, cut.second);
  if (trims) {
    cutBack(a.id, a.curve, from, a.pick);
    cutBack(b.id, b.curve, to, b.pick);
  }
  if (cut.first + cut.second > 0)
    addBetween(a, std::make_unique<KvDbLine>(kvge::spatial(from, a.curve.height),
                                             kvge::spatial(to, a.curve.height)));
  return true;
}

bool askChamfer(const CString& keyword, Chamfer& cut) {
  if (Ask(keyword == L"Angle" ? L"\nSpecify chamfer length on the first line <0>: "
                              : L"\nSpecify first chamfer distance <0>: ")
          .flags(KVED_NONEG)
          .distance(cut.first) == Got::Cancelled)
    return false;
  if (keyword == L"Distance") {
    cut.second = cut.first;
    if (Ask(L"\nSpecify second chamfer distance <" + numberText(cut.first) + L">: ")
            .flags(KVED_NONEG)
            .distance(cut.second) == Got::Cancelled)
      return false;
  } else {
    double angle = kvge::kPi / 4;
    if (Ask(L"\nSpecify chamfer angle from the first line <45>: ").flags(KVED_NOZERO).angle(angle) ==
        Got::Cancelled)
      return false;
    const double length = cut.first * std::tan(angle);
    if (!(length >= 0) || length > 1e12 * (1 + cut.first)) {
      fail(L"An angle between 0 and 90 degrees expected.");
      return false;
    }
    cut.second = length;
  }
  setVariable(L"CHAMFERA", cut.first);
  setVariable(L"CHAMFERB", cut.second);
  return true;
}

void runChamfer() {
  if (!drawing()) return;
  Chamfer cut{variable(L"CHAMFERA", 0.0), variable(L"CHAMFERB", 0.0)};
  bool trims = variable(L"TRIMMODE", 1) != 0;
  for (;;) {
    CString keyword;
    Got got;
    const auto first = askSide(L"\nSelect first line or [Polyline/Distance/Angle/Trim]: ",
                               L"Polyline Distance Angle Trim", keyword, got);
    if (got == Got::Keyword && keyword == L"Trim") {
      Ask ask(L"\nEnter Trim mode option [Trim/No trim]: ");
      if (ask.keywords(L"Trim No").word() == Got::Keyword) trims = ask.keyword == L"Trim";
      setVariable(L"TRIMMODE", trims ? 1 : 0);
    } else if (got == Got::Keyword && keyword == L"Polyline") {
      KvDbObjectId id;
      if (Ask(L"\nSelect 2D polyline: ").entity(id) == Got::Value)
        cutPolyline(id, [&](KvGeVector2d, KvGeVector2d) { return Cut{cut.first, cut.second, 0}; });
      return;
    } else if (got == Got::Keyword) {
      if (!askChamfer(keyword, cut)) return;
    } else {
      if (!first) return;
      const auto second = askSide(L"\nSelect second line: ", L"", keyword, got);
      if (second && !chamfer(*first, *second, cut, trims)) fail(L"There is no such chamfer.");
      return;
    }
  }
}

constexpr KvCommandRow kRows[] = {
    {L"CHAMFER", L"CHA", KVRX_CMD_MODAL, runChamfer, L"Cuts the corner of two lines off.",
     L"Select first line or [Polyline/Distance/Angle/Trim]:\nSelect second line:\nSpecify first chamfer "
     L"distance <0>: (after Distance)\nSpecify second chamfer distance <>: (after Distance)"},
    {L"FILLET", L"F", KVRX_CMD_MODAL, runFillet, L"Rounds the corner of two curves.",
     L"Select first object or [Polyline/Radius/Trim/Multiple]:\nSelect second object:\nSpecify fillet radius "
     L"<>: (after Radius)"},
};

}  // namespace

std::span<const KvCommandRow> cornerRows() {
  return kRows;
}

}  // namespace kvcmd
