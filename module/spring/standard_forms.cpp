// Compression springs by GB/T 1239: longitudinal half-sections with the middle left out, and end views.
//
// A half-section shows the two outer coils of each end from the side, and the third cut: its section is
// hatched. Between the ends only the centre lines go on, as the rules for drawing springs allow. The right
// end is the left one turned by half a turn about the spring's middle.
#include "module/spring/coils.h"
#include "module/spring/springs.h"

namespace mek {
namespace {

enum class Form {
  Ground,  ///< YI, RYI: closed and ground
  Closed,  ///< YII, RYII: closed, not ground
  Open,    ///< YIII
};

/// The pitch is the wire and this much more, in drawing units.
constexpr double kGap = 5.0;
/// The slant of a coil on its way across: 10 degrees.
constexpr double kSlant = 0.17453292519943295;
/// Beyond the spring, centre lines reach this much farther than the wire's radius; in end views than the
/// coil's.
constexpr double kReach = 3.0;
/// Of the pitch: a coil that leans farther than this would hide the next one.
constexpr double kFarthestLean = 0.75;

struct Sizes {
  Sizes(double wire, double outside, double length)
      : d(wire),
        mean(outside - wire),
        outer(outside / 2),
        inner((outside - wire - wire) / 2),
        H0(length),
        pitch(wire + kGap) {
    lean = mean * std::tan(kSlant);
    if (lean > kFarthestLean * pitch) lean = pitch / 2;
  }
  double d, mean, outer, inner, H0, pitch, lean;
};

/// The two coils that are seen, and where the third is cut.
struct EndCoils {
  std::vector<Coil> coils;
  double section;
};

EndCoils endCoils(Form form, const Sizes& s) {
  const double first = form == Form::Ground ? -s.d / 4 : s.d / 2;
  // The points of closed end coils stand half a wire apart along the rows.
  const double second = form == Form::Open ? first + s.pitch : first + s.d;
  const double firstLower = form == Form::Open ? first + s.lean : first + s.d / 2;
  return {{{first, firstLower}, {second, second + s.lean}}, second + s.pitch};
}

class HalfSection {
 public:
  HalfSection(SpringFrame& frame, Form form, const Sizes& sizes)
      : frame_(frame),
        form_(form),
        sizes_(sizes),
        end_(endCoils(form, sizes)),
        coils_(frame, sizes.mean / 2, sizes.d, end_.coils) {}

  /// One end with its section; false when an entity can't be found.
  bool draw(bool isFirst, EntitySet& section) {
    drawFirstCoil(isFirst);
    drawSecondCoil();
    drawRear();
    frame_.collect();
    frame_.recordCircle({end_.section, coils_.row()}, coils_.radius());
    section = frame_.collected();
    return !frame_.hasFailed();
  }

 private:
  double groundHalf() const { return std::sqrt(3.0) / 2 * coils_.radius(); }

  EntityName lineOf(const Segment& segment) {
    frame_.line(segment.from, segment.to);
    return frame_.last();
  }

  void drawFirstCoil(bool isFirst) {
    Segment left = coils_.leftFlank(0), right = coils_.rightFlank(0);
    if (form_ == Form::Ground) {
      const KvGePoint2d above(0, coils_.row() + groundHalf()), below(0, -coils_.row() - groundHalf());
      coils_.arc(right.from, above);
      frame_.line(above, below);
      coils_.arc(below, right.to);
    } else if (form_ == Form::Closed) {
      // The wire ends square on the upper row: its left edge is laid longer and cut there.
      const Segment cut = {right.from, left.from};
      const EntityName cutLine = lineOf(cut);
      coils_.arc(left.to, right.to);
      if (isFirst) {
        const double along = kPi / 2 + std::atan2(left.to.x - left.from.x, left.from.y - left.to.y);
        const KvGePoint2d beyond = polar(left.from, along, coils_.radius());
        const EntityName edge = lineOf({beyond, left.to});
        frame_.trim(SpringFrame::of(cutLine), edge,
                    {(beyond.x + left.from.x) / 2, (beyond.y + left.from.y) / 2});
      } else {
        frame_.line(left.from, left.to);
      }
    } else {
      coils_.arc(right.from, left.from);
      frame_.line(left.from, left.to);
      coils_.arc(left.to, right.to);
    }
    firstRight_ = lineOf(right);
  }

  void drawSecondCoil() {
    const Segment left = coils_.leftFlank(1), right = coils_.rightFlank(1);
    secondLeft_ = lineOf(left);
    coils_.arc(right.from, left.from);
    coils_.arc(left.to, right.to);
    secondRight_ = lineOf(right);
  }

  /// Lays an edge and trims away what lies behind the front strand: the part at its `hidden` end.
  void layAndTrim(const Segment& edge, bool hidesEnd, const Segment& flank, const EntityName& flankLine) {
    const auto cut = crossing(edge, flank);
    if (!cut) return;  // wholly hidden
    const EntityName line = lineOf(edge);
    const KvGePoint2d& gone = hidesEnd ? edge.to : edge.from;
    frame_.trim(SpringFrame::of(flankLine), line, {(cut->x + gone.x) / 2, (cut->y + gone.y) / 2});
  }

  void drawRear() {
    // From the first coil to the second.
    if (form_ == Form::Open) layAndTrim(coils_.rearLeft(1), false, coils_.rightFlank(0), firstRight_);
    layAndTrim(coils_.rearRight(1), true, coils_.leftFlank(1), secondLeft_);
    // From the second to the one that is cut: nothing lies before its right edge.
    CoilRow further(frame_, coils_.row(), sizes_.d, {end_.coils[1], {end_.section, end_.section}});
    layAndTrim(further.rearLeft(1), false, coils_.rightFlank(1), secondRight_);
    frame_.line(further.rearRight(1));
  }

  SpringFrame& frame_;
  Form form_;
  Sizes sizes_;
  EndCoils end_;
  CoilRow coils_;
  EntityName firstRight_, secondLeft_, secondRight_;
};

bool isDrawable(const double* point, double d, double D, double H0) {
  return point && areSizesFinite({point[0], point[1], point[2], d, D, H0}) && isBlockNameGood();
}

int drawHalfSection(double* point, double d, double D, double H0, Form form) {
  if (!isDrawable(point, d, D, H0)) return kRefused;
  const Sizes sizes(d, D, H0);
  SpringFrame frame(point);
  frame.thick();
  frame.center();
  const double reach = d / 2 + kReach;
  frame.line({-reach, 0}, {H0 + reach, 0});
  const EntityName marker = frame.last();
  if (frame.hasFailed()) return kRefused;
  for (double y : {sizes.mean / 2, -sizes.mean / 2}) frame.line({-reach, y}, {H0 + reach, y});
  frame.thick();
  EntitySet sections[2];
  for (const bool isFirst : {true, false}) {
    if (!isFirst) frame.turnAbout(H0 / 2);
    HalfSection end(frame, form, sizes);
    if (!end.draw(isFirst, sections[isFirst ? 0 : 1])) return kRefused;
  }
  frame.turnBack();
  frame.hatchLayer();
  for (const EntitySet& section : sections) frame.hatch(section);
  frame.thick();
  return frame.makeBlock(marker, point) ? kDone : kRefused;
}

/// Where the thin tip of a ground end lies: from 20 to 70 degrees.
constexpr double kTipFrom = 0.3490658503988659, kTipTo = 1.2217304763960306;

/// Seen along the axis: the wire's ring and, of a ground end, its tip, which is half a wire wide.
int drawEndView(double* point, double d, double D, double H0, Form form) {
  if (!isDrawable(point, d, D, H0)) return kRefused;
  const Sizes sizes(d, D, H0);
  SpringFrame frame(point);
  const KvGePoint2d middle(0, 0);
  const double reach = sizes.outer + kReach;
  frame.thick();
  frame.center();
  frame.line({-reach, 0}, {reach, 0});
  const EntityName marker = frame.last();
  if (frame.hasFailed()) return kRefused;
  frame.line({0, -reach}, {0, reach});
  frame.thick();
  if (form == Form::Ground) {
    for (double radius : {sizes.outer, sizes.inner}) {
      frame.arcAbout(middle, polar(middle, kTipFrom, radius), polar(middle, kTipTo, radius));
      frame.arcAbout(middle, polar(middle, kTipTo, radius), polar(middle, kTipFrom, radius));
    }
    const double above = sizes.mean / 2 + d / 4, below = sizes.mean / 2 - d / 4;
    for (double radius : {above, below})
      frame.arcAbout(middle, polar(middle, kTipFrom, radius), polar(middle, kTipTo, radius));
    for (double bearing : {kTipFrom, kTipTo})
      frame.line(polar(middle, bearing, below), polar(middle, bearing, above));
  } else {
    frame.circle(middle, sizes.outer);
    frame.circle(middle, sizes.inner);
    // The wire's end.
    frame.line(polar(middle, kTipTo, sizes.inner), polar(middle, kTipTo, sizes.outer));
  }
  return frame.makeBlock(marker, point) ? kDone : kRefused;
}

}  // namespace
}  // namespace mek

using mek::Form;

int GB1239_YI_1(double* const point, double d, double D, double H0) {
  return mek::drawHalfSection(point, d, D, H0, Form::Ground);
}
int GB1239_YI_2(double* const point, double d, double D, double H0) {
  return mek::drawEndView(point, d, D, H0, Form::Ground);
}
int GB1239_YII_1(double* const point, double d, double D, double H0) {
  return mek::drawHalfSection(point, d, D, H0, Form::Closed);
}
int GB1239_YII_2(double* const point, double d, double D, double H0) {
  return mek::drawEndView(point, d, D, H0, Form::Closed);
}
int GB1239_YIII_1(double* const point, double d, double D, double H0) {
  return mek::drawHalfSection(point, d, D, H0, Form::Open);
}
int GB1239_YIII_2(double* const point, double d, double D, double H0) {
  return mek::drawEndView(point, d, D, H0, Form::Open);
}
int GB1239_RYI_1(double* const point, double d, double D, double H0) {
  return mek::drawHalfSection(point, d, D, H0, Form::Ground);
}
int GB1239_RYI_2(double* const point, double d, double D, double H0) {
  return mek::drawEndView(point, d, D, H0, Form::Ground);
}
int GB1239_RYII_1(double* const point, double d, double D, double H0) {
  return mek::drawHalfSection(point, d, D, H0, Form::Closed);
}
int GB1239_RYII_2(double* const point, double d, double D, double H0) {
  return mek::drawEndView(point, d, D, H0, Form::Closed);
}
