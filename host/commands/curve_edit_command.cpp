// LENGTHEN, DIVIDE, MEASURE, REVERSE, ALIGN.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/trimming.h"
#include "host/database/block.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/geometry/polyline.h"

namespace kvcmd {
namespace {

/// From the start to the end; none for endless curves and what is no curve.
std::optional<double> lengthOf(const KvDbCurve* curve) {
  double end = 0, length = 0;
  if (!curve || curve->getEndParam(end) != Kvad::eOk || curve->getDistAtParam(end, length) != Kvad::eOk)
    return std::nullopt;
  return length;
}

// ---- LENGTHEN

/// By how much curves get longer.
struct Lengthening {
  enum class Way { Delta, Percent, Total } way = Way::Delta;
  bool isAngle = false;  // of arcs; radians
  double value = 0;
  /// The change of a length, or of an arc's angle.
  double changeOf(double present) const {
    switch (way) {
      case Way::Percent:
        return present * (value / 100 - 1);
      case Way::Total:
        return value - present;
      default:
        return value;
    }
  }
};

bool isNearEnd(const KvDbCurve& curve, const KvGePoint3d& world) {
  KvGePoint3d on, start, end;
  curve.getStartPoint(start);
  curve.getEndPoint(end);
  if (curve.getClosestPointTo(world, userNormal(), on) != Kvad::eOk) on = world;
  return on.distanceTo(end) < on.distanceTo(start);
}

/// What is left of a curve that loses a length at one end.
bool shorten(KvDbObjectId id, double by, bool atEnd) {
  const auto* curve = look<KvDbCurve>(id);
  const auto whole = lengthOf(curve);
  double param = 0;
  if (!whole || by >= *whole || curve->getParamAtDist(atEnd ? *whole - by : by, param) != Kvad::eOk)
    return false;
  KvArray<double> cut;
  cut.append(param);
  KvDbVoidPtrArray found;
  if (curve->getSplitCurves(cut, found) != Kvad::eOk || found.length() != 2) {
    for (void* piece : found) delete static_cast<KvDbCurve*>(piece);
    return false;
  }
  std::vector<std::unique_ptr<KvDbCurve>> kept;
  kept.emplace_back(static_cast<KvDbCurve*>(found[atEnd ? 0 : 1]));
  delete static_cast<KvDbCurve*>(found[atEnd ? 1 : 0]);
  replaceByPieces(id, kept);
  return true;
}

bool lengthenArc(KvDbObjectId id, const Lengthening& by, bool atEnd) {
  const auto* arc = look<KvDbArc>(id);
  const double sweep = arc->totalAngle();
  const double more = by.isAngle ? by.changeOf(sweep) : by.changeOf(sweep * arc->radius()) / arc->radius();
  if (!(sweep + more > kSmallestTurn) || !(sweep + more < kvge::kTwoPi)) return false;
  change<KvDbArc>(id, [&](KvDbArc& made) {
    if (atEnd)
      made.setEndAngle(kvge::normalizedAngle(made.endAngle() + more));
    else
      made.setStartAngle(kvge::normalizedAngle(made.startAngle() - more));
  });
  return true;
}

bool lengthenPolyline(KvDbObjectId id, double by, bool atEnd) {
  const auto* polyline = look<KvDbPolyline>(id);
  const int segment = atEnd ? polyline->numVerts() - 2 : 0;
  KvGePoint3d start, end, to;
  KvGeCircArc3d arc;
  if (polyline->getLineSegAt(segment, start, end) == Kvad::eOk) {
    const KvGeVector3d along = (end - start).normal();
    to = atEnd ? end + along * by : start - along * by;
  } else if (polyline->getArcSegAt(segment, arc) == Kvad::eOk) {
    double bulge = 0;
    polyline->getBulgeAt(segment, bulge);
    const double sweep = 4 * std::atan(std::fabs(bulge)), more = by / arc.radius();
    if (!(sweep + more < kvge::kTwoPi - kSmallestTurn)) return false;
    polyline->getPointAt(atEnd ? segment + 1 : segment, end);
    const double turn = (bulge > 0) == atEnd ? more : -more;
    to = KvGeMatrix3d::rotation(turn, polyline->normal(), arc.center()) * end;
  } else {
    return false;
  }
  change<KvDbPolyline>(id, [&](KvDbPolyline& made) { extendPolyline(made, to, atEnd); });
  return true;
}

/// False when the object can't be given that length.
bool lengthen(KvDbObjectId id, const Lengthening& by, const KvGePoint3d& picked) {
  const auto* curve = look<KvDbCurve>(id);
  const auto whole = lengthOf(curve);
  if (!whole || curve->isClosed() || (by.isAngle && !KvDbArc::cast(curve))) return false;
  const bool atEnd = isNearEnd(*curve, picked);
  if (KvDbArc::cast(curve)) return lengthenArc(id, by, atEnd);
  const double change = by.changeOf(*whole);
  if (!(*whole + change > 0)) return false;
  if (const auto* line = KvDbLine::cast(curve)) {
    const KvGeVector3d along = (line->endPoint() - line->startPoint()).normal();
    kvcmd::change<KvDbLine>(id, [&](KvDbLine& made) {
      atEnd ? made.setEndPoint(made.startPoint() + along * (*whole + change))
            : made.setStartPoint(made.endPoint() - along * (*whole + change));
    });
    return true;
  }
  if (change < 0) return shorten(id, -change, atEnd);
  return change == 0 || (KvDbPolyline::cast(curve) && lengthenPolyline(id, change, atEnd));
}

/// False when the command ends.
bool askLengthening(const CString& keyword, Lengthening& by) {
  if (keyword == L"Percent") {
    by = {Lengthening::Way::Percent, false, 100};
    return Ask(L"\nEnter percentage length <100>: ").flags(KVED_NOZERO | KVED_NONEG).real(by.value) !=
           Got::Cancelled;
  }
  const bool isTotal = keyword == L"Total";
  by = {isTotal ? Lengthening::Way::Total : Lengthening::Way::Delta, false, isTotal ? 1.0 : 0.0};
  Ask ask(isTotal ? L"\nSpecify total length or [Angle] <1>: " : L"\nEnter delta length or [Angle] <0>: ");
  if (isTotal) ask.flags(KVED_NOZERO | KVED_NONEG);
  const Got got = ask.keywords(L"Angle").distance(by.value);
  if (got != Got::Keyword) return got != Got::Cancelled;
  by.isAngle = true;
  constexpr double kRadians = kvge::kPi / 180;
  double degrees = isTotal ? 57 : 0;
  Ask angle(isTotal ? L"\nSpecify total angle <57>: " : L"\nEnter delta angle <0>: ");
  if (angle.real(degrees) == Got::Cancelled) return false;
  by.value = degrees * kRadians;
  return true;
}

void runLengthen() {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d pick;
  Lengthening by;
  for (;;) {
    Ask ask(L"\nSelect an object or [DElta/Percent/Total]: ");
    const Got got = ask.keywords(L"DElta Percent Total").entity(id, &pick);
    if (got == Got::Keyword) {
      if (!askLengthening(ask.keyword, by)) return;
      break;
    }
    if (got != Got::Value) return;
    if (const auto length = lengthOf(look<KvDbCurve>(id))) {
      const auto* arc = look<KvDbArc>(id);
      say(L"Current length: " + lengthText(*length) +
          (arc ? L", included angle: " + angleText(arc->totalAngle()) : CString()));
    } else {
      say(L"The object has no length.");
    }
  }
  while (Ask(L"\nSelect an object to change: ").entity(id, &pick) == Got::Value)
    if (isLocked(id))
      say(L"The object is on a locked layer.");
    else if (!lengthen(id, by, toWorld(pick)))
      say(L"The object can't be given that length.");
}

// ---- DIVIDE, MEASURE

/// What marks the places: points, or references to a block.
struct Marker {
  KvDbObjectId block;
  bool isAligned = true;
};

/// Asks for the block; false when the command ends.
bool askBlock(Marker& marker) {
  CString name;
  if (Ask(L"\nEnter name of block to insert: ").text(name) != Got::Value) return false;
  marker.block = drawing()->recordId(KvDbTable::Block, name);
  if (marker.block.isNull()) return fail(L"There is no block \"" + name + L"\"."), false;
  const auto answer = askYes(L"\nAlign block with object?", true);
  marker.isAligned = answer.value_or(true);
  return answer.has_value();
}

void placeMarks(const KvDbCurve& curve, const std::vector<double>& distances, const Marker& marker) {
  KvEdPicks picks;
  for (double distance : distances) {
    KvGePoint3d at;
    double param = 0;
    KvGeVector3d tangent = KvGeVector3d::kXAxis;
    if (curve.getPointAtDist(distance, at) != Kvad::eOk) continue;
    if (marker.block.isNull()) {
      auto point = std::make_unique<KvDbPoint>(at);
      picks.push_back(KvEdPick::of(add(std::move(point))));
      continue;
    }
    if (curve.getParamAtDist(distance, param) == Kvad::eOk) curve.getFirstDeriv(param, tangent);
    auto reference = std::make_unique<KvDbBlockReference>(KvGePoint3d::kOrigin, marker.block);
    const KvGeVector3d along = userToWorld().inverse() * tangent;
    reference->setPosition(toUser(at));
    if (marker.isAligned) reference->setRotation(std::atan2(along.y, along.x));
    picks.push_back(KvEdPick::of(addFromUser(std::move(reference))));
  }
  editor()->selections().previous(drawing()->serial()) = picks;
}

constexpr int kMostMarks = 32767;

/// The curve, its length, and how many or how far; runs the common prompts of both commands.
void markCurve(const wchar_t* selectPrompt, const CString& what, bool isCount) {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d pick;
  if (Ask(selectPrompt).entity(id, &pick) != Got::Value) return;
  const auto* curve = look<KvDbCurve>(id);
  const auto whole = lengthOf(curve);
  if (!whole || !(*whole > 0)) return fail(L"The object has no length.");
  Marker marker;
  int count = 0;
  double step = 0;
  const auto ask = [&](Ask& prompt) {
    prompt.flags(KVED_NOZERO | KVED_NONEG);
    return isCount ? prompt.whole(count) : prompt.distance(step);
  };
  Ask first(what + L" or [Block]: ");
  Got got = ask(first.keywords(L"Block"));
  if (got == Got::Keyword) {
    if (!askBlock(marker)) return;
    Ask again(what + L": ");
    got = ask(again);
  }
  if (got != Got::Value) return;
  std::vector<double> distances;
  if (isCount) {
    if (count < 2 || count > kMostMarks) return fail(L"A number from 2 to 32767 expected.");
    for (int i = curve->isClosed() ? 0 : 1; i < count; ++i) distances.push_back(*whole * i / count);
    return placeMarks(*curve, distances, marker);
  }
  if (*whole / step > kMostMarks) return fail(L"That would be more than 32767 marks.");
  // Measured from the end that is nearer to the pick.
  const bool fromEnd = !curve->isClosed() && isNearEnd(*curve, toWorld(pick));
  constexpr double kReached = 1e-9;
  for (int i = curve->isClosed() ? 0 : 1; i * step <= *whole * (1 + kReached); ++i) {
    const double along = std::min(i * step, *whole);
    if (curve->isClosed() && i > 0 && along >= *whole * (1 - kReached)) break;
    distances.push_back(fromEnd ? *whole - along : along);
  }
  if (distances.empty()) return fail(L"The object is shorter than that.");
  placeMarks(*curve, distances, marker);
}

void runDivide() {
  markCurve(L"\nSelect object to divide: ", L"\nEnter the number of segments", true);
}
void runMeasure() {
  markCurve(L"\nSelect object to measure: ", L"\nSpecify length of segment", false);
}

// ---- REVERSE, ALIGN

void runReverse() {
  if (!drawing()) return;
  int refused = 0;
  for (KvDbObjectId id : select(L"\nSelect lines, polylines or splines to reverse: ")) {
    auto status = Kvad::eNotApplicable;
    change<KvDbCurve>(id, [&](KvDbCurve& curve) { status = curve.reverseCurve(); });
    if (status != Kvad::eOk) ++refused;
  }
  if (refused > 0) say(countOf(refused, L"can't run the other way"));
}

/// The system with its origin at the first point, X to the second, the third on Y's side; none for points on
/// one line.
std::optional<KvGeMatrix3d> frameOf(const KvGePoint3d (&points)[3]) {
  const KvGeVector3d x = points[1] - points[0], aside = points[2] - points[0];
  const KvGeVector3d z = x.normal().crossProduct(aside.normal());
  if (!(z.length() > kSmallestTurn)) return std::nullopt;
  KvGeMatrix3d frame;
  frame.setCoordSystem(points[0], x.normal(), z.normal().crossProduct(x.normal()), z.normal());
  return frame;
}

void runAlign() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  constexpr const wchar_t* kPrompts[3][2] = {
      {L"\nSpecify first source point: ", L"\nSpecify first destination point: "},
      {L"\nSpecify second source point: ", L"\nSpecify second destination point: "},
      {L"\nSpecify third source point or <continue>: ", L"\nSpecify third destination point: "}};
  KvGePoint3d from[3], to[3];
  int pairs = 0;
  for (; pairs < 3; ++pairs) {
    const Got got = Ask(kPrompts[pairs][0]).point(from[pairs]);
    if (got == Got::Cancelled || (got != Got::Value && pairs == 0)) return;
    if (got != Got::Value) break;
    if (Ask(kPrompts[pairs][1]).base(from[pairs]).point(to[pairs]) != Got::Value) return;
  }
  const KvGeMatrix3d world = userToWorld();
  const auto apply = [&](const KvGeMatrix3d& user) { moveAll(ids, world * user * world.inverse()); };
  if (pairs == 1) return apply(KvGeMatrix3d::translation(to[0] - from[0]));
  if (pairs == 3) {
    const auto source = frameOf(from), target = frameOf(to);
    if (!source || !target) return fail(L"The points lie on one line.");
    return apply(*target * source->inverse());
  }
  const double reach = flatDistance(from[0], from[1]), wanted = flatDistance(to[0], to[1]);
  if (reach == 0 || wanted == 0) return fail(L"Two different points expected.");
  const auto scales = askYes(L"\nScale objects based on alignment points?", false);
  if (!scales) return;
  const double turn = bearing(to[0], to[1]) - bearing(from[0], from[1]);
  apply(KvGeMatrix3d::translation(to[0] - KvGePoint3d::kOrigin) *
        KvGeMatrix3d::rotation(turn, KvGeVector3d::kZAxis) *
        KvGeMatrix3d::scaling(*scales ? wanted / reach : 1) *
        KvGeMatrix3d::translation(KvGePoint3d::kOrigin - from[0]));
}

constexpr KvCommandRow kRows[] = {
    {L"ALIGN", L"AL", KVRX_CMD_USEPICKSET, runAlign,
     L"Moves and turns objects so that points come to lie on others.",
     L"Select objects:\nSpecify first source point:\nSpecify first destination point:\nSpecify second source "
     L"point: (empty: moves only)\nSpecify second destination point:\nSpecify third source point or "
     L"<continue>:\nScale objects based on alignment points? [Yes/No] <No>: (after two pairs)"},
    {L"DIVIDE", L"DIV", KVRX_CMD_MODAL, runDivide, L"Marks a curve at equal parts.",
     L"Select object to divide:\nEnter the number of segments or [Block]:\nEnter name of block to insert: "
     L"(after Block)\nAlign block with object? [Yes/No] <Yes>: (after Block)"},
    {L"LENGTHEN", L"LEN", KVRX_CMD_MODAL, runLengthen,
     L"Changes the length of curves, and the angle of arcs.",
     L"Select an object or [DElta/Percent/Total]: (an object: its length is told)\nEnter delta length or "
     L"[Angle] <0>: (after DElta)\nEnter percentage length <100>: (after Percent)\nSpecify total length or "
     L"[Angle] <1>: (after Total)\nSelect an object to change: (near the end; empty: ends)"},
    {L"MEASURE", L"ME", KVRX_CMD_MODAL, runMeasure, L"Marks a curve at equal distances.",
     L"Select object to measure: (from the nearer end)\nSpecify length of segment or [Block]:\nEnter name of "
     L"block to insert: (after Block)\nAlign block with object? [Yes/No] <Yes>: (after Block)"},
    {L"REVERSE", L"", KVRX_CMD_USEPICKSET, runReverse, L"Lets curves run the other way.",
     L"Select lines, polylines or splines to reverse:"},
};

}  // namespace

std::span<const KvCommandRow> curveEditRows() {
  return kRows;
}

}  // namespace kvcmd
