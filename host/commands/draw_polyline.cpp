// PLINE.
#include "host/commands/internal/polybuild.h"
#include "host/commands/internal/rows.h"

namespace kvcmd {

std::unique_ptr<KvDbPolyline> makePolyline(const std::vector<PolyVertex>& vertices, bool isClosed) {
  auto polyline = std::make_unique<KvDbPolyline>();
  for (const PolyVertex& v : vertices)
    polyline->addVertexAt(polyline->numVerts(), {v.point.x, v.point.y}, v.bulge, v.startWidth, v.endWidth);
  polyline->setClosed(isClosed);
  if (!vertices.empty()) polyline->setElevation(vertices.front().point.z);
  if (const double thickness = drawing()->thickness(); thickness != 0) polyline->setThickness(thickness);
  return polyline;
}

KvDbObjectId addPolyline(const std::vector<PolyVertex>& vertices, bool isClosed) {
  constexpr std::size_t kFewest = 2;
  return vertices.size() < kFewest ? KvDbObjectId() : addFromUser(makePolyline(vertices, isClosed));
}

namespace {

/// A polyline that is being drawn. Lengths and points in user coordinates.
class Pline {
 public:
  explicit Pline(const KvGePoint3d& start) {
    vertices_.push_back({start});
    startWidth_ = endWidth_ = variable(L"PLINEWID", 0.0);
  }
  void run();

 private:
  enum class Next { Goes, Ends };
  Next straight();
  Next curved();
  Next takeKeyword(const CString& keyword);
  void askWidth(bool isHalf);
  void undo();
  void addLine(const KvGePoint3d& to) { addSegment(to, 0); }
  void addSegment(const KvGePoint3d& to, double bulge);
  /// The bulge that leaves the last segment's end smoothly.
  double smoothBulge(const KvGePoint3d& to) const { return bulgeFor(direction(), to); }
  /// The bulge of the arc that sets out in a direction.
  double bulgeFor(double direction, const KvGePoint3d& to) const;
  double direction() const;
  void arcByAngle();
  void arcByCenter();
  void arcByRadius();
  void arcByDirection();
  void arcBySecond();
  const KvGePoint3d& last() const { return vertices_.back().point; }

  std::vector<PolyVertex> vertices_;
  double startWidth_ = 0, endWidth_ = 0;
  bool isArc_ = false, isClosed_ = false;
};

void Pline::addSegment(const KvGePoint3d& to, double bulge) {
  constexpr double kLargestBulge = 1e12;
  if (!(std::fabs(bulge) < kLargestBulge)) {
    say(L"There is no arc to that point.");
    return;
  }
  PolyVertex& from = vertices_.back();
  from.bulge = bulge;
  from.startWidth = startWidth_;
  from.endWidth = endWidth_;
  vertices_.push_back({to});
  startWidth_ = endWidth_;
}

double Pline::direction() const {
  constexpr std::size_t kFewest = 2;
  if (vertices_.size() < kFewest) return editor()->lastAngle;
  const PolyVertex& from = vertices_[vertices_.size() - kFewest];
  return bearing(from.point, last()) + 2 * std::atan(from.bulge);
}

double Pline::bulgeFor(double direction, const KvGePoint3d& to) const {
  // The tangent makes half the sweep with the chord.
  const double half = std::remainder(bearing(last(), to) - direction, kvge::kTwoPi);
  return kvge::kPi - std::fabs(half) < kSmallestTurn ? INFINITY : std::tan(half / 2);
}

void Pline::askWidth(bool isHalf) {
  const double factor = isHalf ? 2 : 1;
  const CString what = isHalf ? L"half-width" : L"width";
  double start = startWidth_ / factor;
  Ask first(L"\nSpecify starting " + what + L" <" + numberText(start) + L">: ");
  if (first.flags(KVED_NONEG).base(last()).distance(start) == Got::Cancelled) return;
  double end = start;
  Ask second(L"\nSpecify ending " + what + L" <" + numberText(end) + L">: ");
  if (second.flags(KVED_NONEG).base(last()).distance(end) == Got::Cancelled) return;
  startWidth_ = start * factor;
  endWidth_ = end * factor;
  setVariable(L"PLINEWID", endWidth_);
}

void Pline::undo() {
  if (vertices_.size() < 2) {
    say(L"All segments already undone.");
    return;
  }
  vertices_.pop_back();
  PolyVertex& end = vertices_.back();
  startWidth_ = end.startWidth;
  end = {end.point};
}

void Pline::arcByAngle() {
  double angle = 0;
  KvGePoint3d end;
  if (Ask(L"\nSpecify included angle: ").flags(KVED_NOZERO).real(angle) != Got::Value) return;
  if (Ask(L"\nSpecify endpoint of arc: ").base(last()).point(end) != Got::Value) return;
  constexpr double kRadians = kvge::kPi / 180, kWhole = 360;
  if (std::fabs(angle) >= kWhole)
    say(L"An angle of less than a whole turn expected.");
  else
    addSegment(end, std::tan(angle * kRadians / 4));
}

void Pline::arcByCenter() {
  KvGePoint3d center, end;
  if (Ask(L"\nSpecify center point of arc: ").base(last()).point(center) != Got::Value) return;
  Ask ask(L"\nSpecify endpoint of arc or [Angle/Length]: ");
  const Got got = ask.keywords(L"Angle Length").base(center).point(end);
  const double radius = flatDistance(center, last()), from = bearing(center, last());
  double sweep = 0, value = 0;
  if (got == Got::Value) {
    sweep = kvge::normalizedAngle(bearing(center, end) - from);
  } else if (got != Got::Keyword) {
    return;
  } else if (ask.keyword == L"Angle") {
    if (Ask(L"\nSpecify included angle: ").flags(KVED_NOZERO).angle(value) != Got::Value) return;
    sweep = value;
  } else {
    if (Ask(L"\nSpecify length of chord: ").flags(KVED_NOZERO).base(last()).distance(value) != Got::Value)
      return;
    if (std::fabs(value) > 2 * radius) return say(L"The chord is longer than the circle is wide.");
    sweep = 2 * std::asin(std::fabs(value) / (2 * radius));
    if (value < 0) sweep = kvge::kTwoPi - sweep;
  }
  if (!(radius > 0)) return say(L"There is no arc to that point.");
  const double to = from + sweep;
  addSegment({center.x + radius * std::cos(to), center.y + radius * std::sin(to), last().z},
             std::tan(sweep / 4));
}

void Pline::arcByRadius() {
  double radius = 0;
  KvGePoint3d end;
  if (Ask(L"\nSpecify radius of arc: ").flags(KVED_NOZERO).base(last()).distance(radius) != Got::Value)
    return;
  if (Ask(L"\nSpecify endpoint of arc: ").base(last()).point(end) != Got::Value) return;
  const double half = flatDistance(last(), end) / 2, size = std::fabs(radius);
  if (half == 0 || size < half * (1 - kSmallestTurn))
    return say(L"The radius is smaller than half the distance of the points.");
  // A negative radius gives the greater arc.
  double sweep = 2 * std::asin(std::min(1.0, half / size));
  if (radius < 0) sweep = kvge::kTwoPi - sweep;
  addSegment(end, std::tan(sweep / 4));
}

void Pline::arcByDirection() {
  double angle = 0;
  KvGePoint3d end;
  if (Ask(L"\nSpecify the tangent direction for the start point of arc: ").base(last()).angle(angle) !=
      Got::Value)
    return;
  if (Ask(L"\nSpecify endpoint of the arc: ").base(last()).point(end) == Got::Value)
    addSegment(end, bulgeFor(angle, end));
}

void Pline::arcBySecond() {
  KvGePoint3d second, end;
  if (Ask(L"\nSpecify second point on arc: ").base(last()).point(second) != Got::Value) return;
  if (Ask(L"\nSpecify end point of arc: ").base(second).point(end) != Got::Value) return;
  // The angle at the second point stands over the arc: half of what is left of the turn.
  const double at = std::remainder(bearing(second, last()) - bearing(second, end), kvge::kTwoPi);
  const double turn = at > 0 ? kvge::kPi - at : -kvge::kPi - at;
  addSegment(end, std::tan(turn / 2));
}

Pline::Next Pline::takeKeyword(const CString& keyword) {
  if (keyword == L"Halfwidth" || keyword == L"Width") {
    askWidth(keyword == L"Halfwidth");
  } else if (keyword == L"Undo") {
    undo();
  } else if (keyword == L"Arc" || keyword == L"Line") {
    isArc_ = keyword == L"Arc";
  } else {
    if (vertices_.size() < 2) {
      say(L"A polyline of at least one segment can be closed.");
      return Next::Goes;
    }
    isClosed_ = true;
    vertices_.back().startWidth = startWidth_;
    vertices_.back().endWidth = endWidth_;
    if (isArc_) vertices_.back().bulge = smoothBulge(vertices_.front().point);
    return Next::Ends;
  }
  return Next::Goes;
}

Pline::Next Pline::straight() {
  const bool mayClose = vertices_.size() > 2;
  Ask ask(mayClose ? L"\nSpecify next point or [Arc/Close/Halfwidth/Length/Undo/Width]: "
                   : L"\nSpecify next point or [Arc/Halfwidth/Length/Undo/Width]: ");
  ask.keywords(mayClose ? L"Arc Close Halfwidth Length Undo Width" : L"Arc Halfwidth Length Undo Width");
  KvGePoint3d point;
  const Got got = ask.base(last()).point(point);
  if (got == Got::Value) {
    addLine(point);
    return Next::Goes;
  }
  if (got != Got::Keyword) return Next::Ends;
  if (ask.keyword != L"Length") return takeKeyword(ask.keyword);
  double length = 0;
  if (Ask(L"\nSpecify length of line: ").base(last()).distance(length) == Got::Value) {
    const double along = direction();
    addLine({last().x + length * std::cos(along), last().y + length * std::sin(along), last().z});
  }
  return Next::Goes;
}

Pline::Next Pline::curved() {
  const bool mayClose = vertices_.size() > 1;
  Ask ask(mayClose
              ? L"\nSpecify endpoint of arc or [Angle/CEnter/CLose/Direction/Halfwidth/Line/Radius/Second "
                L"pt/Undo/Width]: "
              : L"\nSpecify endpoint of arc or [Angle/CEnter/Direction/Halfwidth/Line/Radius/Second "
                L"pt/Undo/Width]: ");
  ask.keywords(mayClose ? L"Angle CEnter CLose Direction Halfwidth Line Radius Second Undo Width"
                        : L"Angle CEnter Direction Halfwidth Line Radius Second Undo Width");
  KvGePoint3d point;
  const Got got = ask.base(last()).point(point);
  if (got == Got::Value) {
    addSegment(point, smoothBulge(point));
    return Next::Goes;
  }
  if (got != Got::Keyword) return Next::Ends;
  struct Way {
    const wchar_t* keyword;
    void (Pline::*run)();
  };
  constexpr Way kWays[] = {{L"Angle", &Pline::arcByAngle},
                           {L"CEnter", &Pline::arcByCenter},
                           {L"Direction", &Pline::arcByDirection},
                           {L"Radius", &Pline::arcByRadius},
                           {L"Second", &Pline::arcBySecond}};
  for (const Way& way : kWays)
    if (ask.keyword == way.keyword) {
      (this->*way.run)();
      return Next::Goes;
    }
  return takeKeyword(ask.keyword);
}

void Pline::run() {
  while ((isArc_ ? curved() : straight()) == Next::Goes) {
  }
  if (!std::isfinite(vertices_.back().bulge)) vertices_.back().bulge = 0;
  if (addPolyline(vertices_, isClosed_).isNull() && vertices_.size() > 1)
    fail(L"The polyline could not be made.");
}

void runPline() {
  KvGePoint3d start;
  if (!drawing()) return;
  const Got got = Ask(L"\nSpecify start point: ").point(start);
  if (got == Got::Nothing) start = editor()->lastPoint;
  if (got == Got::Value || got == Got::Nothing) Pline(start).run();
}

constexpr KvCommandRow kRows[] = {
    {L"PLINE", L"PL", KVRX_CMD_MODAL, runPline,
     L"Draws one line of straight and curved segments with widths.",
     L"Specify start point: (empty: the last point)\nSpecify next point or "
     L"[Arc/Close/Halfwidth/Length/Undo/Width]: (empty: ends)\nSpecify endpoint of arc or "
     L"[Angle/CEnter/CLose/Direction/Halfwidth/Line/Radius/Second pt/Undo/Width]: (after Arc; goes on "
     L"smoothly)"},
};

}  // namespace

std::span<const KvCommandRow> plineRows() {
  return kRows;
}

}  // namespace kvcmd
