// Setters that simple curves share, their geometry and how they are drawn.
#include <algorithm>
#include <cmath>

#include "host/entities/curves.h"
#include "host/geometry/arc.h"

namespace {

Kvad::ErrorStatus setNumber(KvDbEntity& entity, double& place, double value) {
  if (!std::isfinite(value)) return Kvad::eInvalidInput;
  entity.assertWriteEnabled();
  place = value;
  return Kvad::eOk;
}

/// For figures whose centre is kept in the coordinates of their plane.
Kvad::ErrorStatus setPlane(KvDbEntity& entity, KvGeVector3d& normal, KvGePoint3d& center,
                           const KvGeVector3d& wanted) {
  if (wanted.isZeroLength()) return Kvad::eInvalidInput;
  entity.assertWriteEnabled();
  const KvGePoint3d world = KvGeMatrix3d::planeToWorld(normal) * center;
  normal = wanted.normal();
  center = KvGeMatrix3d::worldToPlane(normal) * world;
  return Kvad::eOk;
}

Kvad::ErrorStatus setUnit(KvDbEntity& entity, KvGeVector3d& normal, const KvGeVector3d& wanted) {
  if (wanted.isZeroLength()) return Kvad::eInvalidInput;
  entity.assertWriteEnabled();
  normal = wanted.normal();
  return Kvad::eOk;
}

bool drawsNothing(double radius) {
  return !(radius > 0) || !std::isfinite(radius);
}

}  // namespace

// --- Point
// ---------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbPoint::setThickness(double thickness) {
  return setNumber(*this, thickness_, thickness);
}
Kvad::ErrorStatus KvDbPoint::setNormal(const KvGeVector3d& normal) {
  return setUnit(*this, normal_, normal);
}
bool KvDbPoint::subWorldDraw(KvGiWorldDraw* draw) {
  draw->geometry().polypoint(1, &position_);
  return true;
}

// --- Line
// ----------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbLine::setNormal(const KvGeVector3d& normal) {
  return setUnit(*this, normal_, normal);
}
Kvad::ErrorStatus KvDbLine::reverseCurve() {
  assertWriteEnabled();
  std::swap(start_, end_);
  return Kvad::eOk;
}
std::unique_ptr<KvGeCurve3d> KvDbLine::geCurve() const {
  return std::make_unique<KvGeLineSeg3d>(start_, end_);
}
bool KvDbLine::subWorldDraw(KvGiWorldDraw* draw) {
  const KvGePoint3d points[] = {start_, end_};
  draw->geometry().polyline(2, points, &normal_);
  return true;
}

// --- Circle
// --------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbCircle::setNormal(const KvGeVector3d& normal) {
  return setPlane(*this, normal_, center_, normal);
}
Kvad::ErrorStatus KvDbCircle::setThickness(double thickness) {
  return setNumber(*this, thickness_, thickness);
}
Kvad::ErrorStatus KvDbCircle::getArea(double& area) const {
  area = kvge::kPi * radius_ * radius_;
  return Kvad::eOk;
}
std::unique_ptr<KvGeCurve3d> KvDbCircle::geCurve() const {
  if (drawsNothing(radius_)) return nullptr;
  return std::make_unique<KvGeCircArc3d>(center(), normal_, radius_);
}
bool KvDbCircle::subWorldDraw(KvGiWorldDraw* draw) {
  if (drawsNothing(radius_)) return false;
  draw->geometry().circle(center(), radius_, normal_);
  return true;
}

// --- Arc
// -----------------------------------------------------------------------------------------------------------------------

Kvad::ErrorStatus KvDbArc::setCenter(const KvGePoint3d& center) {
  assertWriteEnabled();
  center_ = KvGeMatrix3d::worldToPlane(normal_) * center;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbArc::setRadius(double radius) {
  return radius > 0 ? setNumber(*this, radius_, radius) : Kvad::eInvalidInput;
}
Kvad::ErrorStatus KvDbArc::setStartAngle(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  startAngle_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbArc::setEndAngle(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  endAngle_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbArc::setNormal(const KvGeVector3d& normal) {
  return setPlane(*this, normal_, center_, normal);
}
Kvad::ErrorStatus KvDbArc::setThickness(double thickness) {
  return setNumber(*this, thickness_, thickness);
}
std::unique_ptr<KvGeCurve3d> KvDbArc::geCurve() const {
  if (drawsNothing(radius_)) return nullptr;
  return std::make_unique<KvGeCircArc3d>(center(), normal_, radius_, startAngle(),
                                         startAngle() + totalAngle());
}
bool KvDbArc::subWorldDraw(KvGiWorldDraw* draw) {
  if (drawsNothing(radius_)) return false;
  draw->geometry().circularArc(center(), radius_, normal_, startPoint() - center(), totalAngle());
  return true;
}

// --- Endless lines
// -------------------------------------------------------------------------------------------------------------

std::unique_ptr<KvGeCurve3d> KvDbRay::geCurve() const {
  if (direction_.isZeroLength()) return nullptr;
  return std::make_unique<KvGeRay3d>(base_, direction_);
}
bool KvDbRay::subWorldDraw(KvGiWorldDraw* draw) {
  draw->geometry().ray(base_, base_ + direction_);
  return true;
}
std::unique_ptr<KvGeCurve3d> KvDbXline::geCurve() const {
  if (direction_.isZeroLength()) return nullptr;
  return std::make_unique<KvGeLine3d>(base_, direction_);
}
bool KvDbXline::subWorldDraw(KvGiWorldDraw* draw) {
  draw->geometry().xline(base_, base_ + direction_);
  return true;
}

// --- Ellipse
// -------------------------------------------------------------------------------------------------------------------

KvDbEllipse::KvDbEllipse(const KvGePoint3d& center, const KvGeVector3d& normal, const KvGeVector3d& majorAxis,
                         double ratio, double start, double end) {
  set(center, normal, majorAxis, ratio, start, end);
}

Kvad::ErrorStatus KvDbEllipse::set(const KvGePoint3d& center, const KvGeVector3d& normal,
                                   const KvGeVector3d& majorAxis, double ratio, double start, double end) {
  constexpr double kSlack = 1e-9;
  const bool isGood = ratio > 0 && ratio <= 1 + kSlack && std::isfinite(start) && std::isfinite(end) &&
                      majorAxis.length() > 0 && std::isfinite(majorAxis.length()) && !normal.isZeroLength() &&
                      std::fabs(normal.normal().dotProduct(majorAxis)) <= kSlack * majorAxis.length();
  if (!isGood) return Kvad::eInvalidInput;
  assertWriteEnabled();
  center_ = center;
  normal_ = normal.normal();
  major_ = majorAxis;
  ratio_ = std::min(ratio, 1.0);
  start_ = start;
  end_ = end;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEllipse::setStartParam(double start) {
  return setNumber(*this, start_, start);
}
Kvad::ErrorStatus KvDbEllipse::setEndParam(double end) {
  return setNumber(*this, end_, end);
}

double KvDbEllipse::startAngle() const {
  return kvge::normalizedAngle(std::atan2(ratio_ * std::sin(start_), std::cos(start_)));
}
double KvDbEllipse::endAngle() const {
  const double angle = kvge::normalizedAngle(std::atan2(ratio_ * std::sin(end_), std::cos(end_)));
  return angle == 0 && end_ > start_ ? kvge::kTwoPi : angle;
}
Kvad::ErrorStatus KvDbEllipse::setStartAngle(double angle) {
  return setStartParam(kvge::normalizedAngle(std::atan2(std::sin(angle) / ratio_, std::cos(angle))));
}
Kvad::ErrorStatus KvDbEllipse::setEndAngle(double angle) {
  return setEndParam(kvge::normalizedAngle(std::atan2(std::sin(angle) / ratio_, std::cos(angle))));
}

std::unique_ptr<KvGeCurve3d> KvDbEllipse::geCurve() const {
  if (drawsNothing(major_.length()) || drawsNothing(ratio_)) return nullptr;
  return std::make_unique<KvGeEllipArc3d>(center_, major_, minorAxis(), start_, end_);
}

Kvad::ErrorStatus KvDbEllipse::transformBy(const KvGeMatrix3d& matrix) {
  const auto curve = geCurve();
  if (!curve) return Kvad::eDegenerateGeometry;
  const KvGeVector3d u = matrix * major_, v = matrix * minorAxis();
  if (u.crossProduct(v).length() <= 1e-14 * u.length() * v.length()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  if (matrix.isUniScaledOrtho()) {
    center_ = matrix * center_;
    major_ = u;
    normal_ = (u.crossProduct(v)).normal();
    return Kvad::eOk;
  }
  const auto arc =
      KvGeEllipArc3d::fromConjugate(matrix * center_, u, v, curve->startParam(), curve->endParam());
  const bool isWhole = arc.isPeriodic();
  const double long_ = arc.majorAxis().length(), short_ = arc.minorAxis().length();
  center_ = arc.center();
  normal_ = arc.normal();
  const bool isSwapped = short_ > long_;
  const double turn = isSwapped ? kvge::kPi / 2 : 0;
  major_ = isSwapped ? arc.minorAxis() : arc.majorAxis();
  ratio_ = isSwapped ? long_ / short_ : short_ / long_;
  start_ = isWhole ? 0 : arc.startParam() - turn;
  end_ = isWhole ? kvge::kTwoPi : arc.endParam() - turn;
  return Kvad::eOk;
}

bool KvDbEllipse::subWorldDraw(KvGiWorldDraw* draw) {
  const auto curve = geCurve();
  if (!curve) return false;
  const double tilt = normal_.perpVector().angleTo(major_, normal_);
  draw->geometry().ellipticalArc(center_, normal_, major_.length(), major_.length() * ratio_,
                                 curve->startParam(), curve->endParam(), tilt);
  return true;
}
