// The pen of shape files.
#include <cmath>

#include "host/geometry/tolerance.h"
#include "host/lettering/internal/shape_strokes.h"

namespace {

/// Shapes inside shapes, kept places and orders beyond these end a shape: no real one has as many.
constexpr int kMostNested = 16;
constexpr std::size_t kMostKept = 64;
constexpr int kMostOrders = 200'000;
constexpr double kOctant = kvge::kPi / 4;

enum Order : std::uint8_t {
  kEnd,
  kPenDown,
  kPenUp,
  kDivide,
  kMultiply,
  kKeep,
  kBack,
  kShape,
  kStep,
  kSteps,
  kArc,
  kPartArc,
  kBulge,
  kBulges,
  kVerticalOnly
};

class Pen {
 public:
  Pen(const KvLtShapeFile& file, KvLtGlyph& glyph, double unit, double cellWidth, double cellHeight)
      : file_(file), glyph_(glyph), unit_(unit), cellWidth_(cellWidth), cellHeight_(cellHeight) {}

  void run(int number, int depth = 0) {
    const KvLtShape* shape = file_.find(number);
    if (!shape || depth > kMostNested) return;
    const Code outer = code_;
    code_ = {&shape->code, 0};
    while (!isDone() && ++orders_ <= kMostOrders) {
      const std::uint8_t order = next();
      if (order == kEnd) break;
      obey(order, depth, true);
    }
    code_ = outer;
  }
  KvGePoint2d place() const { return at_; }

 private:
  struct Code {
    const std::vector<std::uint8_t>* bytes = nullptr;
    std::size_t at = 0;
  };
  bool isDone() const { return code_.at >= code_.bytes->size(); }
  std::uint8_t next() { return isDone() ? std::uint8_t{0} : (*code_.bytes)[code_.at++]; }
  int nextSigned() { return static_cast<std::int8_t>(next()); }

  /// One order with its bytes; without `does` it is only stepped over.
  void obey(std::uint8_t order, int depth, bool does) {
    switch (order) {
      case kPenDown:
      case kPenUp:
        if (does) isDown_ = order == kPenDown;
        break;
      case kDivide:
      case kMultiply:
        rescale(order, next(), does);
        break;
      case kKeep:
        if (does && kept_.size() < kMostKept) kept_.push_back(at_);
        break;
      case kBack:
        if (does && !kept_.empty()) {
          at_ = kept_.back();
          kept_.pop_back();
          isNew_ = true;
        }
        break;
      case kShape:
        another(depth, does);
        break;
      case kStep: {
        const int x = nextSigned(), y = nextSigned();
        if (does) step(x, y);
        break;
      }
      case kSteps:
        steps(does);
        break;
      case kArc: {
        const int radius = next(), octants = nextSigned();
        if (does) arc(radius, octants, 0, 0);
        break;
      }
      case kPartArc: {
        const int first = next(), last = next(), high = next(), low = next(), octants = nextSigned();
        if (does) arc(high * 256 + low, octants, first, last);
        break;
      }
      case kBulge: {
        const int x = nextSigned(), y = nextSigned(), b = nextSigned();
        if (does) bulge(x, y, b);
        break;
      }
      case kBulges:
        bulges(does);
        break;
      case kVerticalOnly:
        // Lines are laid horizontally.
        if (!isDone()) obey(next(), depth, false);
        break;
      default:
        if (order > kVerticalOnly && does) vector(order);
    }
  }

  void rescale(std::uint8_t order, int factor, bool does) {
    if (!does || factor == 0) return;
    constexpr double kLeast = 1e-9, kGreatest = 1e9;
    const double wanted = order == kDivide ? scale_ / factor : scale_ * factor;
    if (wanted > kLeast && wanted < kGreatest) scale_ = wanted;
  }

  void another(int depth, bool does) {
    int number = next();
    bool isPart = false;
    if (file_.kind() == KvLtShapeFile::Kind::Unicode) {
      number = number * 256 + next();
    } else if (file_.kind() == KvLtShapeFile::Kind::BigFont && number == 0) {
      // A part of a sign: its number, its place from the sign's own, the cell that it fills.
      number = next() * 256;
      number += next();
      isPart = true;
    }
    if (!isPart) {
      if (does) run(number, depth + 1);
      return;
    }
    const int x = nextSigned(), y = nextSigned(), width = next(), height = next();
    if (!does || !(cellWidth_ > 0) || !(cellHeight_ > 0)) return;
    const KvGePoint2d outer = at_;
    const double outerX = stretchX_, outerY = stretchY_;
    at_ = {x * unit_ * scale_ * stretchX_, y * unit_ * scale_ * stretchY_};
    stretchX_ *= width / cellWidth_;
    stretchY_ *= height / cellHeight_;
    isNew_ = true;
    run(number, depth + 1);
    at_ = outer;
    stretchX_ = outerX;
    stretchY_ = outerY;
    isNew_ = true;
  }

  void steps(bool does) {
    while (!isDone() && ++orders_ <= kMostOrders) {
      const int x = nextSigned(), y = nextSigned();
      if (x == 0 && y == 0) return;
      if (does) step(x, y);
    }
  }
  void bulges(bool does) {
    while (!isDone() && ++orders_ <= kMostOrders) {
      const int x = nextSigned(), y = nextSigned();
      if (x == 0 && y == 0) return;
      const int b = nextSigned();
      if (does) bulge(x, y, b);
    }
  }

  /// 16 directions, counted from the right; those between the axes and the diagonals reach the same square.
  void vector(std::uint8_t order) {
    constexpr double kReach[16] = {1, 1, 1, 0.5, 0, -0.5, -1, -1, -1, -1, -1, -0.5, 0, 0.5, 1, 1};
    const int length = order >> 4, way = order & 15;
    step(length * kReach[way], length * kReach[(way + 12) % 16]);
  }

  KvGeVector2d scaled(double x, double y) const {
    return {x * unit_ * scale_ * stretchX_, y * unit_ * scale_ * stretchY_};
  }
  void step(double x, double y) {
    const KvGePoint2d to = at_ + scaled(x, y);
    if (isDown_) add({KvLtSegment::kLine, {to, {}, {}}});
    at_ = to;
    if (!isDown_) isNew_ = true;
  }
  void add(const KvLtSegment& segment) {
    if (isNew_ || glyph_.outline.empty()) {
      glyph_.outline.push_back({KvLtSegment::kMove, {at_, {}, {}}});
      reach(at_);
    }
    isNew_ = false;
    glyph_.outline.push_back(segment);
    reach(segment.end());
  }
  void reach(KvGePoint2d p) {
    if (!hasBox_) glyph_.low = glyph_.high = p;
    hasBox_ = true;
    glyph_.low = {std::min(glyph_.low.x, p.x), std::min(glyph_.low.y, p.y)};
    glyph_.high = {std::max(glyph_.high.x, p.x), std::max(glyph_.high.y, p.y)};
  }

  /// `octants`: the first one times 16 and their number (0: all eight), negative clockwise. `first` and
  /// `last`: how far into the octants at its ends the arc begins and ends, in 256ths.
  void arc(int radius, int octants, int first, int last) {
    constexpr int kWhole = 8;
    constexpr double kPart = kOctant / 256;
    const double turn = octants < 0 ? -1 : 1;
    const int code = std::abs(octants), begin = (code >> 4) & 7, count = (code & 7) == 0 ? kWhole : code & 7;
    const double start = begin * kOctant + turn * first * kPart;
    const double end = (last == 0 ? count * kOctant : (count - 1) * kOctant + last * kPart) - first * kPart;
    sweep(radius, start, turn * end);
  }
  void bulge(int x, int y, int b) {
    constexpr double kHighest = 127;
    const double chord = std::hypot(x, y);
    if (b == 0 || chord == 0) {
      step(x, y);
      return;
    }
    const double quarter = std::atan(std::max<double>(b, -kHighest) / kHighest), angle = 4 * quarter;
    const double radius = chord / (2 * std::fabs(std::sin(angle / 2)));
    // The radius to the start lies a right angle and half the sweep behind the chord.
    const double start = std::atan2(y, x) - angle / 2 - (angle < 0 ? -kvge::kPi / 2 : kvge::kPi / 2);
    sweep(radius, start, angle);
  }
  /// An arc from the present place, whose radius there points towards `start`.
  void sweep(double radius, double start, double angle) {
    const auto on = [&](double t) { return scaled(radius * std::cos(t), radius * std::sin(t)); };
    const auto along = [&](double t, double length) {
      return scaled(-radius * std::sin(t) * length, radius * std::cos(t) * length);
    };
    const KvGePoint2d center = at_ - on(start);
    const int parts = std::max(1, static_cast<int>(std::ceil(std::fabs(angle) / kOctant - 1e-9)));
    const double part = angle / parts, handle = 4.0 / 3 * std::tan(part / 4);
    for (int i = 0; i < parts; ++i) {
      const double from = start + part * i, to = from + part;
      const KvGePoint2d end = center + on(to);
      if (isDown_)
        add({KvLtSegment::kCubic, {at_ + along(from, handle), end - along(to, handle), end}});
      else
        isNew_ = true;
      at_ = end;
    }
  }

  const KvLtShapeFile& file_;
  KvLtGlyph& glyph_;
  double unit_, cellWidth_, cellHeight_;
  Code code_;
  KvGePoint2d at_;
  double scale_ = 1, stretchX_ = 1, stretchY_ = 1;
  bool isDown_ = true, isNew_ = true, hasBox_ = false;
  int orders_ = 0;
  std::vector<KvGePoint2d> kept_;
};

}  // namespace

void kvltTraceShape(const KvLtShapeFile& file, int number, KvLtGlyph& glyph) {
  const double unit = file.isFont() ? 1 / file.above() : 1;
  Pen pen(file, glyph, unit, file.cellWidth_ > 0 ? file.cellWidth_ : file.above(), file.above());
  pen.run(number);
  glyph.isStroked = true;
  glyph.advance = pen.place().x;
}
