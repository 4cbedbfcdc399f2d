// DIMLINEAR, DIMALIGNED, DIMRADIUS, DIMDIAMETER, DIMANGULAR, DIMORDINATE, LEADER, QLEADER.
#include "host/commands/internal/dimstyle.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/leader.h"
#include "host/entities/mtext.h"
#include "host/entities/polyline.h"
#include "host/geometry/polyline.h"

namespace kvcmd {
namespace {

/// What people may say of the text before they place the line.
struct TextWish {
  CString text;
  double rotation = 0;
};

/// Mtext, Text, Angle; true when the keyword was one of these and was answered.
bool takeTextKeyword(const CString& keyword, TextWish& wish) {
  if (keyword == L"Angle")
    return Ask(L"\nSpecify angle of dimension text: ").angle(wish.rotation) != Got::Cancelled;
  return Ask(L"\nEnter dimension text <>: ").text(wish.text, true) != Got::Cancelled;
}

/// Puts a dimension, made in user coordinates, into the drawing with its block.
void place(std::unique_ptr<KvDbDimension> dimension, const TextWish& wish) {
  dimension->setDimensionStyle(drawing()->dimstyle());
  if (!wish.text.IsEmpty()) dimension->setDimensionText(wish.text);
  if (wish.rotation != 0) dimension->setTextRotation(wish.rotation);
  double value = 0;
  if (dimension->getMeasurement(value) != Kvad::eOk) return fail(L"There is nothing to measure.");
  const KvGeMatrix3d map = userToWorld();
  const KvDbObjectId id = addFromUser(std::move(dimension));
  auto status = Kvad::eDegenerateGeometry;
  change<KvDbDimension>(id, [&](KvDbDimension& made) {
    // Texts and ordinates run along the user system's X axis.
    const KvGeVector3d x = KvGeMatrix3d::worldToPlane(made.normal()) * map.column(0);
    const double turn = KvGeVector2d(x.x, x.y).angle();
    if (turn != 0) made.setHorizontalRotation(turn);
    made.setDimVars(presentDimVars());
    status = made.recomputeDimBlock(true);
    if (status != Kvad::eOk) made.erase();
  });
  if (status != Kvad::eOk) return fail(L"There is nothing to measure.");
  say(L"Dimension text = " + (look<KvDbDimension>(id)->isAngular() ? angleText(value) : lengthText(value)));
}

/// The ends of what a picked object has there: a line, an arc, a segment of a polyline, a circle's width.
bool endsOf(KvDbObjectId id, const KvGePoint3d& pick, KvGePoint3d& from, KvGePoint3d& to) {
  if (const auto* polyline = look<KvDbPolyline>(id)) {
    KvGePoint3d on;
    double param = 0;
    if (polyline->getClosestPointTo(toWorld(pick), userNormal(), on) != Kvad::eOk ||
        polyline->getParamAtPoint(on, param) != Kvad::eOk)
      return false;
    const int index =
        std::min(static_cast<int>(param), polyline->numVerts() - (polyline->isClosed() ? 1 : 2));
    if (polyline->getPointAt(index, from) != Kvad::eOk ||
        polyline->getPointAt((index + 1) % polyline->numVerts(), to) != Kvad::eOk)
      return false;
  } else if (const auto* circle = look<KvDbCircle>(id)) {
    const KvGeVector3d across = KvGeVector3d(userToWorld().column(0)) * circle->radius();
    from = circle->center() - across;
    to = circle->center() + across;
  } else {
    const auto* curve = look<KvDbCurve>(id);
    if (!curve || curve->getStartPoint(from) != Kvad::eOk || curve->getEndPoint(to) != Kvad::eOk)
      return false;
  }
  from = toUser(from);
  to = toUser(to);
  return true;
}

/// The origins of a length's extension lines.
bool askOrigins(KvGePoint3d& from, KvGePoint3d& to) {
  const Got got = Ask(L"\nSpecify first extension line origin or <select object>: ").point(from);
  if (got == Got::Value)
    return Ask(L"\nSpecify second extension line origin: ").base(from).point(to) == Got::Value;
  KvDbObjectId id;
  KvGePoint3d pick;
  if (got != Got::Nothing || Ask(L"\nSelect object to dimension: ").entity(id, &pick) != Got::Value)
    return false;
  if (endsOf(id, pick, from, to)) return true;
  fail(L"The object has no length to measure.");
  return false;
}

void runLinear() {
  if (!drawing()) return;
  KvGePoint3d from, to, line;
  if (!askOrigins(from, to)) return;
  TextWish wish;
  std::optional<double> rotation;
  for (;;) {
    Ask ask(L"\nSpecify dimension line location or [Mtext/Text/Angle/Horizontal/Vertical/Rotated]: ");
    const Got got = ask.keywords(L"Mtext Text Angle Horizontal Vertical Rotated").base(to).point(line);
    if (got == Got::Value) break;
    if (got != Got::Keyword) return;
    double angle = 0;
    if (ask.keyword == L"Horizontal") {
      rotation = 0;
    } else if (ask.keyword == L"Vertical") {
      rotation = kvge::kPi / 2;
    } else if (ask.keyword == L"Rotated") {
      if (Ask(L"\nSpecify angle of dimension line <0>: ").angle(angle) == Got::Cancelled) return;
      rotation = angle;
    } else if (!takeTextKeyword(ask.keyword, wish)) {
      return;
    }
  }
  if (!rotation) {
    // Outside the origins' box the side tells; inside it the longer way.
    const double beyondX = std::max(std::min(from.x, to.x) - line.x, line.x - std::max(from.x, to.x));
    const double beyondY = std::max(std::min(from.y, to.y) - line.y, line.y - std::max(from.y, to.y));
    rotation = beyondX > beyondY ? kvge::kPi / 2 : 0;
  }
  place(std::make_unique<KvDbRotatedDimension>(*rotation, from, to, line), wish);
}

void runAligned() {
  if (!drawing()) return;
  KvGePoint3d from, to, line;
  if (!askOrigins(from, to)) return;
  TextWish wish;
  for (;;) {
    Ask ask(L"\nSpecify dimension line location or [Mtext/Text/Angle]: ");
    const Got got = ask.keywords(L"Mtext Text Angle").base(to).point(line);
    if (got == Got::Value) break;
    if (got != Got::Keyword || !takeTextKeyword(ask.keyword, wish)) return;
  }
  place(std::make_unique<KvDbAlignedDimension>(from, to, line), wish);
}

/// The circle that a picked object has there; user coordinates.
bool roundOf(KvDbObjectId id, const KvGePoint3d& pick, KvGePoint3d& center, double& radius) {
  if (const auto* circle = look<KvDbCircle>(id)) {
    center = circle->center();
    radius = circle->radius();
  } else if (const auto* arc = look<KvDbArc>(id)) {
    center = arc->center();
    radius = arc->radius();
  } else if (const auto* polyline = look<KvDbPolyline>(id)) {
    KvGePoint3d on;
    double param = 0;
    KvGeCircArc3d segment;
    if (polyline->getClosestPointTo(toWorld(pick), userNormal(), on) != Kvad::eOk ||
        polyline->getParamAtPoint(on, param) != Kvad::eOk ||
        polyline->getArcSegAt(static_cast<int>(param), segment) != Kvad::eOk)
      return false;
    center = segment.center();
    radius = segment.radius();
  } else {
    return false;
  }
  center = toUser(center);
  return true;
}

/// What may be round at a pick.
bool mayBeRound(KvDbObjectId id) {
  return look<KvDbCircle>(id) || look<KvDbArc>(id) || look<KvDbPolyline>(id);
}

void roundDimension(bool isDiameter) {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d pick, center, line;
  double radius = 0;
  if (Ask(L"\nSelect arc or circle: ").prefer(mayBeRound).entity(id, &pick) != Got::Value) return;
  if (!roundOf(id, pick, center, radius)) return fail(L"The object is no arc and no circle.");
  TextWish wish;
  for (;;) {
    Ask ask(L"\nSpecify dimension line location or [Mtext/Text/Angle]: ");
    const Got got = ask.keywords(L"Mtext Text Angle").base(center).point(line);
    if (got == Got::Value) break;
    if (got != Got::Keyword || !takeTextKeyword(ask.keyword, wish)) return;
  }
  const double along = bearing(center, line);
  const KvGeVector3d reach(radius * std::cos(along), radius * std::sin(along), 0);
  const double leader = flatDistance(center, line) - radius;
  std::unique_ptr<KvDbDimension> made;
  if (isDiameter)
    made = std::make_unique<KvDbDiametricDimension>(center + reach, center - reach, leader);
  else
    made = std::make_unique<KvDbRadialDimension>(center, center + reach, leader);
  place(std::move(made), wish);
}

void runRadius() {
  roundDimension(false);
}
void runDiameter() {
  roundDimension(true);
}

/// Where the arc of an angular dimension goes; false when the command ends.
bool askArcPlace(const KvGePoint3d& base, KvGePoint3d& at, TextWish& wish) {
  for (;;) {
    Ask ask(L"\nSpecify dimension arc line location or [Mtext/Text/Angle]: ");
    const Got got = ask.keywords(L"Mtext Text Angle").base(base).point(at);
    if (got == Got::Value) return true;
    if (got != Got::Keyword || !takeTextKeyword(ask.keyword, wish)) return false;
  }
}

void angleAt(const KvGePoint3d& vertex, const KvGePoint3d& from, const KvGePoint3d& to) {
  KvGePoint3d at;
  TextWish wish;
  if (!askArcPlace(to, at, wish)) return;
  auto made = std::make_unique<KvDb3PointAngularDimension>();
  made->setCenterPoint(vertex);
  made->setXLine1Point(from);
  made->setXLine2Point(to);
  made->setArcPoint(at);
  place(std::move(made), wish);
}

void angleOfLines(const KvDbLine& first) {
  KvDbObjectId id;
  KvGePoint3d at;
  if (Ask(L"\nSelect second line: ").entity(id) != Got::Value) return;
  const auto* second = look<KvDbLine>(id);
  if (!second) return fail(L"The object is no line.");
  const KvGeVector3d a = first.endPoint() - first.startPoint(), b = second->endPoint() - second->startPoint();
  if (a.normal().crossProduct(b.normal()).length() < kSmallestTurn) return fail(L"The lines are parallel.");
  TextWish wish;
  if (!askArcPlace(toUser(second->endPoint()), at, wish)) return;
  auto made = std::make_unique<KvDb2LineAngularDimension>();
  made->setXLine1Start(toUser(first.startPoint()));
  made->setXLine1End(toUser(first.endPoint()));
  made->setXLine2Start(toUser(second->startPoint()));
  made->setXLine2End(toUser(second->endPoint()));
  made->setArcPoint(at);
  place(std::move(made), wish);
}

void runAngular() {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d pick, from, to;
  const Got got = Ask(L"\nSelect arc, circle, line, or <specify vertex>: ").entity(id, &pick);
  if (got == Got::Nothing) {
    KvGePoint3d vertex;
    if (Ask(L"\nSpecify angle vertex: ").point(vertex) != Got::Value) return;
    if (Ask(L"\nSpecify first angle endpoint: ").base(vertex).point(from) != Got::Value) return;
    if (Ask(L"\nSpecify second angle endpoint: ").base(vertex).point(to) == Got::Value)
      angleAt(vertex, from, to);
    return;
  }
  if (got != Got::Value) return;
  if (const auto* arc = look<KvDbArc>(id))
    return angleAt(toUser(arc->center()), toUser(arc->startPoint()), toUser(arc->endPoint()));
  if (const auto* circle = look<KvDbCircle>(id)) {
    const KvGePoint3d center = toUser(circle->center());
    if (Ask(L"\nSpecify second angle endpoint: ").base(center).point(to) == Got::Value)
      angleAt(center, pick, to);
    return;
  }
  if (const auto* line = look<KvDbLine>(id)) return angleOfLines(*line);
  fail(L"An arc, a circle or a line expected.");
}

void runOrdinate() {
  if (!drawing()) return;
  KvGePoint3d feature, end;
  if (Ask(L"\nSpecify feature location: ").point(feature) != Got::Value) return;
  TextWish wish;
  std::optional<bool> isX;
  for (;;) {
    Ask ask(L"\nSpecify leader endpoint or [Xdatum/Ydatum/Mtext/Text/Angle]: ");
    const Got got = ask.keywords(L"Xdatum Ydatum Mtext Text Angle").base(feature).point(end);
    if (got == Got::Value) break;
    if (got != Got::Keyword) return;
    if (ask.keyword == L"Xdatum" || ask.keyword == L"Ydatum")
      isX = ask.keyword == L"Xdatum";
    else if (!takeTextKeyword(ask.keyword, wish))
      return;
  }
  // A leader that goes up or down tells the X distance.
  if (!isX) isX = std::fabs(end.y - feature.y) > std::fabs(end.x - feature.x);
  auto made = std::make_unique<KvDbOrdinateDimension>(*isX, feature, end);
  made->setOrigin(KvGePoint3d::kOrigin);
  place(std::move(made), wish);
}

/// The lines of a note, as paragraphs, empty when there are none; nothing after a cancel.
std::optional<CString> askNote() {
  CString text, line;
  for (;;) {
    const Got got = Ask(text.IsEmpty() ? L"\nEnter first line of annotation text: "
                                       : L"\nEnter next line of annotation text: ")
                        .text(line, true);
    if (got == Got::Cancelled) return std::nullopt;
    if (got != Got::Value) return text;
    text += text.IsEmpty() ? line : L"\\P" + line;
  }
}

/// A leader through points and the note at its end, where there is one; `width` 0 breaks no lines.
void drawLeader(const std::vector<KvGePoint3d>& points, bool hasArrow, const CString& text,
                double width = 0) {
  auto leader = std::make_unique<KvDbLeader>();
  for (const KvGePoint3d& point : points) leader->appendVertex(point);
  leader->setHasArrowHead(hasArrow);
  leader->setDimensionStyle(drawing()->dimstyle());
  const KvDbDimVars vars = presentDimVars();
  const KvDbObjectId id = addFromUser(std::move(leader));
  if (id.isNull()) return fail(L"The leader could not be drawn.");
  change<KvDbLeader>(
      id, [&](KvDbLeader& made) { vars.writeOverrides(made, KvDbDimVars::ofStyle(drawing()->dimstyle())); });
  if (text.IsEmpty()) return;
  const double scale = vars.real(KvDbDimVar::Scale) > 0 ? vars.real(KvDbDimVar::Scale) : 1;
  const double gap = vars.real(KvDbDimVar::Gap) * scale, height = vars.real(KvDbDimVar::Txt) * scale;
  const bool goesLeft = points.back().x < points[points.size() - 2].x;
  auto note = std::make_unique<KvDbMText>();
  note->setTextStyle(drawing()->textstyle());
  note->setContents(text);
  note->setTextHeight(height);
  note->setWidth(width);
  note->setAttachment(goesLeft ? KvDbMText::kMiddleRight : KvDbMText::kMiddleLeft);
  note->setLocation(points.back() + KvGeVector3d(goesLeft ? -gap : gap, 0, 0));
  const KvDbObjectId noteId = addFromUser(std::move(note));
  if (noteId.isNull()) return fail(L"The text could not be placed.");
  change<KvDbLeader>(id, [&](KvDbLeader& made) { made.attachAnnotation(noteId); });
}

void runLeader() {
  if (!drawing()) return;
  std::vector<KvGePoint3d> points(2);
  if (Ask(L"\nSpecify leader start point: ").point(points[0]) != Got::Value) return;
  if (Ask(L"\nSpecify next point: ").base(points[0]).point(points[1]) != Got::Value) return;
  bool hasArrow = true;
  for (bool goesOn = true; goesOn;) {
    KvGePoint3d point;
    Ask ask(L"\nSpecify next point or [Annotation/Format/Undo] <Annotation>: ");
    const Got got = ask.keywords(L"Annotation Format Undo").base(points.back()).point(point);
    if (got == Got::Cancelled) return;
    if (got == Got::Value) {
      points.push_back(point);
    } else if (got == Got::Keyword && ask.keyword == L"Undo") {
      if (points.size() > 2) points.pop_back();
    } else if (got == Got::Keyword && ask.keyword == L"Format") {
      Ask look(L"\nEnter leader format option [Arrow/None] <exit>: ");
      const Got which = look.keywords(L"Arrow None").word();
      if (which == Got::Cancelled) return;
      if (which == Got::Keyword) hasArrow = look.keyword == L"Arrow";
    } else {
      goesOn = false;
    }
  }
  if (const auto note = askNote()) drawLeader(points, hasArrow, *note);
}

void runQleader() {
  if (!drawing()) return;
  constexpr std::size_t kMostPoints = 3;
  std::vector<KvGePoint3d> points(1);
  if (Ask(L"\nSpecify first leader point: ").point(points[0]) != Got::Value) return;
  while (points.size() < kMostPoints) {
    KvGePoint3d next;
    const Got got = Ask(L"\nSpecify next point: ").base(points.back()).point(next);
    if (got == Got::Cancelled) return;
    if (got == Got::Nothing) break;
    points.push_back(next);
  }
  if (points.size() < 2) return;
  double width = 0;
  if (Ask(L"\nSpecify text width <0>: ").flags(KVED_NONEG).distance(width) == Got::Cancelled) return;
  if (const auto note = askNote()) drawLeader(points, true, *note, width);
}

constexpr KvCommandRow kRows[] = {
    {L"DIMALIGNED", L"DAL DIMALI", KVRX_CMD_MODAL, runAligned, L"Dimensions the distance of two points.",
     L"Specify first extension line origin or <select object>:\nSpecify second extension line "
     L"origin:\nSpecify dimension line location or [Mtext/Text/Angle]:"},
    {L"DIMANGULAR", L"DAN DIMANG", KVRX_CMD_MODAL, runAngular, L"Dimensions an angle.",
     L"Select arc, circle, line, or <specify vertex>:\nSelect second line: (after a line)\nSpecify second "
     L"angle endpoint: (after a circle)\nSpecify dimension arc line location or [Mtext/Text/Angle]:"},
    {L"DIMDIAMETER", L"DDI DIMDIA", KVRX_CMD_MODAL, runDiameter, L"Dimensions a circle's diameter.",
     L"Select arc or circle:\nSpecify dimension line location or [Mtext/Text/Angle]:"},
    {L"DIMLINEAR", L"DLI DIMLIN", KVRX_CMD_MODAL, runLinear,
     L"Dimensions a horizontal, vertical or turned distance.",
     L"Specify first extension line origin or <select object>:\nSpecify second extension line "
     L"origin:\nSpecify dimension line location or [Mtext/Text/Angle/Horizontal/Vertical/Rotated]:"},
    {L"DIMORDINATE", L"DOR DIMORD", KVRX_CMD_MODAL, runOrdinate,
     L"Dimensions the X or Y distance of a point from the origin.",
     L"Specify feature location:\nSpecify leader endpoint or [Xdatum/Ydatum/Mtext/Text/Angle]:"},
    {L"DIMRADIUS", L"DRA DIMRAD", KVRX_CMD_MODAL, runRadius, L"Dimensions a radius.",
     L"Select arc or circle:\nSpecify dimension line location or [Mtext/Text/Angle]:"},
    {L"LEADER", L"LEAD", KVRX_CMD_MODAL, runLeader, L"Draws a line with an arrow that leads to a note.",
     L"Specify leader start point:\nSpecify next point:\nSpecify next point or [Annotation/Format/Undo] "
     L"<Annotation>:\nEnter first line of annotation text: (empty: ends)"},
    {L"QLEADER", L"LE", KVRX_CMD_MODAL, runQleader, L"Draws a leader of up to three points and its note.",
     L"Specify first leader point:\nSpecify next point: (empty: the note)\nSpecify text width <0>:\nEnter "
     L"first "
     L"line of annotation text: (empty: ends)"},
};

}  // namespace

std::span<const KvCommandRow> dimensionRows() {
  return kRows;
}

}  // namespace kvcmd
