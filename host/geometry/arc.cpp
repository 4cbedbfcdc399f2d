#include "host/geometry/arc.h"

#include "host/geometry/line.h"

namespace {

/// Normals of any length count; only a zero one falls back to the Z axis.
KvGeVector3d unit(const KvGeVector3d& v) {
  const double l = v.length();
  return l > 0 ? v / l : KvGeVector3d::kZAxis;
}

}  // namespace

double kvge::endAfter(double start, double end) {
  if (end > start && end - start <= kTwoPi) return end;
  const double sweep = normalizedAngle(end - start);
  return start + (sweep <= 1e-15 ? kTwoPi : sweep);
}

KvGeCurve3d::Ptr KvGeLineSeg3d::piece(double from, double to) const {
  if (!(from < to)) return nullptr;
  const kvge::Span s = span(0);
  // The ends themselves are kept bit for bit.
  return std::make_unique<KvGeLineSeg3d>(from <= 0 ? start_ : kvge::pointAt(s, from),
                                         to >= s.high ? end_ : kvge::pointAt(s, to));
}

kvge::Span KvGeRay3d::span(int) const {
  kvge::Span s;
  s.origin = start_;
  s.u = direction_;
  s.high = KvGeBox3d::kFar;
  return s;
}

KvGeCurve3d::Ptr KvGeRay3d::piece(double from, double to) const {
  if (!(from < to)) return nullptr;
  const KvGePoint3d a = start_ + direction_ * std::max(0.0, from);
  if (std::isinf(to)) return std::make_unique<KvGeRay3d>(a, direction_);
  return std::make_unique<KvGeLineSeg3d>(a, start_ + direction_ * to);
}

kvge::Span KvGeLine3d::span(int) const {
  kvge::Span s;
  s.origin = point_;
  s.u = direction_;
  s.low = -KvGeBox3d::kFar;
  s.high = KvGeBox3d::kFar;
  return s;
}

KvGeCurve3d::Ptr KvGeLine3d::piece(double from, double to) const {
  if (!(from < to)) return nullptr;
  if (std::isinf(from) && std::isinf(to)) return clone();
  if (std::isinf(from)) return std::make_unique<KvGeRay3d>(point_ + direction_ * to, -direction_);
  if (std::isinf(to)) return std::make_unique<KvGeRay3d>(point_ + direction_ * from, direction_);
  return std::make_unique<KvGeLineSeg3d>(point_ + direction_ * from, point_ + direction_ * to);
}

KvGeCircArc3d::KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal, double radius)
    : KvGeCircArc3d(center, normal, radius, 0, kvge::kTwoPi) {}

KvGeCircArc3d::KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal, double radius,
                             double startAngle, double endAngle)
    : KvGeCircArc3d(center, normal, unit(normal).perpVector(), radius, startAngle, endAngle) {}

KvGeCircArc3d::KvGeCircArc3d(const KvGePoint3d& center, const KvGeVector3d& normal,
                             const KvGeVector3d& refVec, double radius, double startAngle, double endAngle)
    : center_(center),
      x_(unit(refVec)),
      y_(unit(unit(normal).crossProduct(x_))),
      radius_(std::fabs(radius)),
      start_(startAngle),
      end_(kvge::endAfter(startAngle, endAngle)) {}

KvGeCircArc3d::KvGeCircArc3d(const KvGePoint3d& start, const KvGePoint3d& through, const KvGePoint3d& end)
    : center_(start), radius_(0) {
  const KvGeVector3d a = through - start, b = end - start, across = a.crossProduct(b);
  const double area = across.lengthSqrd();
  if (area <= 1e-28 * a.lengthSqrd() * b.lengthSqrd()) return;
  const KvGeVector3d out =
      (across.crossProduct(a) * b.lengthSqrd() + b.crossProduct(across) * a.lengthSqrd()) / (2 * area);
  radius_ = out.length();
  center_ = start + out;
  const KvGeVector3d normal = across / std::sqrt(area);
  x_ = -out / radius_;
  y_ = normal.crossProduct(x_);
  start_ = 0;
  end_ = kvge::endAfter(
      0, kvge::normalizedAngle(std::atan2((end - center_).dotProduct(y_), (end - center_).dotProduct(x_))));
}

KvGeVector3d KvGeCircArc3d::normal() const {
  return x_.crossProduct(y_);
}

kvge::Span KvGeCircArc3d::span(int) const {
  kvge::Span s;
  s.kind = kvge::SpanKind::kConic;
  s.origin = center_;
  s.u = x_ * radius_;
  s.v = y_ * radius_;
  s.radius = radius_;
  s.low = start_;
  s.high = end_;
  return s;
}

KvGeCurve3d::Ptr KvGeCircArc3d::piece(double from, double to) const {
  if (!(from < to)) return nullptr;
  auto one = std::make_unique<KvGeCircArc3d>(*this);
  one->start_ = from;
  one->end_ = std::min(to, from + kvge::kTwoPi);
  return one;
}

KvGeCurve3d::Ptr KvGeCircArc3d::reversed() const {
  // Mirrored in the reference axis, the angles change their sign; turned by both ends they keep their range.
  auto one = std::make_unique<KvGeCircArc3d>(*this);
  const auto [sine, cosine] = kvge::sinCos(start_ + end_);
  one->x_ = x_ * cosine + y_ * sine;
  one->y_ = x_ * sine - y_ * cosine;
  return one;
}

KvGeCurve3d::Ptr KvGeCircArc3d::transformed(const KvGeMatrix3d& m) const {
  const KvGeVector3d u = m * x_, v = m * y_;
  const double a = u.length(), b = v.length();
  constexpr double kRound = 1e-12;
  if (a > 0 && std::fabs(a - b) <= kRound * a && std::fabs(u.dotProduct(v)) <= kRound * a * b) {
    auto one = std::make_unique<KvGeCircArc3d>(*this);
    one->center_ = m * center_;
    one->x_ = u / a;
    one->y_ = v / b;
    one->radius_ = radius_ * a;
    return one;
  }
  return std::make_unique<KvGeEllipArc3d>(
      KvGeEllipArc3d::fromConjugate(m * center_, u * radius_, v * radius_, start_, end_));
}

KvGeEllipArc3d::KvGeEllipArc3d(const KvGePoint3d& center, const KvGeVector3d& major,
                               const KvGeVector3d& minor, double start, double end)
    : center_(center), major_(major), minor_(minor), start_(start), end_(kvge::endAfter(start, end)) {}

KvGeEllipArc3d KvGeEllipArc3d::fromConjugate(const KvGePoint3d& center, const KvGeVector3d& u,
                                             const KvGeVector3d& v, double start, double end) {
  // Turning the parameter by the angle at which both radii stand at right angles.
  const double turn = std::atan2(2 * u.dotProduct(v), u.lengthSqrd() - v.lengthSqrd()) / 2;
  const auto [sine, cosine] = kvge::sinCos(turn);
  const KvGeVector3d major = u * cosine + v * sine, minor = v * cosine - u * sine;
  KvGeEllipArc3d e(center, major, minor, start - turn, end - turn);
  const double shift = std::floor(e.start_ / kvge::kTwoPi) * kvge::kTwoPi;
  if (start >= 0) e.start_ -= shift, e.end_ -= shift;
  return e;
}

KvGeVector3d KvGeEllipArc3d::normal() const {
  return unit(major_.crossProduct(minor_));
}

KvGeCurve3d::Ptr KvGeEllipArc3d::piece(double from, double to) const {
  if (!(from < to)) return nullptr;
  auto one = std::make_unique<KvGeEllipArc3d>(*this);
  one->start_ = from;
  one->end_ = std::min(to, from + kvge::kTwoPi);
  return one;
}

KvGeCurve3d::Ptr KvGeEllipArc3d::reversed() const {
  auto one = std::make_unique<KvGeEllipArc3d>(*this);
  one->minor_ = -minor_;
  one->start_ = -end_;
  one->end_ = -start_;
  return one;
}

KvGeCurve3d::Ptr KvGeEllipArc3d::transformed(const KvGeMatrix3d& m) const {
  return std::make_unique<KvGeEllipArc3d>(fromConjugate(m * center_, m * major_, m * minor_, start_, end_));
}
