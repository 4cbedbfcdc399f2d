#include "host/entities/curves.h"

#include <cmath>

KVRX_DEFINE(KvDbPoint, KvDbEntity, L"POINT")
KVRX_DEFINE(KvDbLine, KvDbCurve, L"LINE")
KVRX_DEFINE(KvDbCircle, KvDbCurve, L"CIRCLE")
KVRX_DEFINE(KvDbArc, KvDbCurve, L"ARC")
KVRX_DEFINE_ABSTRACT(KvDbEndlessLine, KvDbCurve)
KVRX_DEFINE(KvDbRay, KvDbEndlessLine, L"RAY")
KVRX_DEFINE(KvDbXline, KvDbEndlessLine, L"XLINE")
KVRX_DEFINE(KvDbEllipse, KvDbCurve, L"ELLIPSE")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;

/// Adds the parts of a full or partial turn that reach farthest along each axis. `at` gives the point of an
/// angle.
template <class PointAt>
void addTurn(KvDbExtents& extents, const KvGeVector3d& cosineAxis, const KvGeVector3d& sineAxis, double start,
             double sweep, PointAt at) {
  extents.addPoint(at(start));
  extents.addPoint(at(start + sweep));
  const double axes[3][2] = {
      {cosineAxis.x, sineAxis.x}, {cosineAxis.y, sineAxis.y}, {cosineAxis.z, sineAxis.z}};
  for (const auto& [cosine, sine] : axes) {
    const double top = std::atan2(sine, cosine);
    for (double angle : {top, top + kvge::kPi})
      if (kvge::normalizedAngle(angle - start) <= sweep) extents.addPoint(at(angle));
  }
}

/// A plane figure of one radius under an affine map: its centre, normal and radius in the new place.
struct PlaneFigure {
  KvGePoint3d center;  // world
  KvGeVector3d normal;
  double radius;
};

Kvad::ErrorStatus transformPlane(PlaneFigure& figure, const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  figure.center = matrix * figure.center;
  figure.normal = (matrix * figure.normal).normal();
  figure.radius *= matrix.scale();
  return Kvad::eOk;
}

KvGePoint3d toWorld(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::planeToWorld(normal) * point;
}
KvGePoint3d toPlane(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::worldToPlane(normal) * point;
}

}  // namespace

// --- Point
// ---------------------------------------------------------------------------------------------------------------------

const KvDbField KvDbPoint::kFields[] = {
    kvdbMarker(L"AcDbPoint"),
    kvdbField<&KvDbPoint::position_>(Type::Point, 10),
    kvdbField<&KvDbPoint::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbPoint::normal_>(Type::Vector, 210, kUnlessDefault, 1),
    kvdbField<&KvDbPoint::rotation_>(Type::Angle, 50, kUnlessDefault),
};
KVDB_FIELDS_DEFINE(KvDbPoint, KvDbEntity)

Kvad::ErrorStatus KvDbPoint::setPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  position_ = position;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPoint::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents(position_, position_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbPoint::transformBy(const KvGeMatrix3d& matrix) {
  assertWriteEnabled();
  position_ = matrix * position_;
  normal_ = (matrix * normal_).normal();
  return Kvad::eOk;
}

// --- Line
// ----------------------------------------------------------------------------------------------------------------------

const KvDbField KvDbLine::kFields[] = {
    kvdbMarker(L"AcDbLine"),
    kvdbField<&KvDbLine::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbLine::start_>(Type::Point, 10),
    kvdbField<&KvDbLine::end_>(Type::Point, 11),
    kvdbField<&KvDbLine::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};
KVDB_FIELDS_DEFINE(KvDbLine, KvDbCurve)

Kvad::ErrorStatus KvDbLine::setStartPoint(const KvGePoint3d& point) {
  assertWriteEnabled();
  start_ = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLine::setEndPoint(const KvGePoint3d& point) {
  assertWriteEnabled();
  end_ = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLine::setThickness(double thickness) {
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLine::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  for (const KvGePoint3d& point : {start_, end_, start_ + normal_ * thickness_, end_ + normal_ * thickness_})
    extents.addPoint(point);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLine::transformBy(const KvGeMatrix3d& matrix) {
  assertWriteEnabled();
  start_ = matrix * start_;
  end_ = matrix * end_;
  const KvGeVector3d up = matrix * normal_;
  thickness_ *= up.length();
  normal_ = up.normal();
  return Kvad::eOk;
}

// --- Circle and arc
// ------------------------------------------------------------------------------------------------------------

const KvDbField KvDbCircle::kFields[] = {
    kvdbMarker(L"AcDbCircle"),
    kvdbField<&KvDbCircle::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbCircle::center_>(Type::Point, 10),
    kvdbField<&KvDbCircle::radius_>(Type::Real, 40),
    kvdbField<&KvDbCircle::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};
KVDB_FIELDS_DEFINE(KvDbCircle, KvDbCurve)

KvDbCircle::KvDbCircle(const KvGePoint3d& center, const KvGeVector3d& normal, double radius)
    : center_(toPlane(center, normal)), radius_(radius), normal_(normal.normal()) {}

KvGePoint3d KvDbCircle::center() const {
  return toWorld(center_, normal_);
}

Kvad::ErrorStatus KvDbCircle::setCenter(const KvGePoint3d& center) {
  assertWriteEnabled();
  center_ = toPlane(center, normal_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCircle::setRadius(double radius) {
  if (!(radius > 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  radius_ = radius;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCircle::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  const KvGeVector3d x = normal_.perpVector() * radius_, y = normal_.crossProduct(x);
  const KvGePoint3d middle = center();
  addTurn(extents, x, y, 0, kvge::kTwoPi,
          [&](double angle) { return middle + x * std::cos(angle) + y * std::sin(angle); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbCircle::transformBy(const KvGeMatrix3d& matrix) {
  PlaneFigure figure{center(), normal_, radius_};
  if (auto status = transformPlane(figure, matrix); status != Kvad::eOk) return status;
  assertWriteEnabled();
  normal_ = figure.normal;
  center_ = toPlane(figure.center, normal_);
  radius_ = figure.radius;
  thickness_ *= matrix.scale();
  return Kvad::eOk;
}

const KvDbField KvDbArc::kFields[] = {
    kvdbMarker(L"AcDbCircle"),
    kvdbField<&KvDbArc::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbArc::center_>(Type::Point, 10),
    kvdbField<&KvDbArc::radius_>(Type::Real, 40),
    kvdbField<&KvDbArc::normal_>(Type::Vector, 210, kUnlessDefault, 1),
    kvdbMarker(L"AcDbArc"),
    kvdbField<&KvDbArc::startAngle_>(Type::Angle, 50),
    kvdbField<&KvDbArc::endAngle_>(Type::Angle, 51),
};
KVDB_FIELDS_DEFINE(KvDbArc, KvDbCurve)

KvDbArc::KvDbArc(const KvGePoint3d& center, const KvGeVector3d& normal, double radius, double startAngle,
                 double endAngle)
    : center_(toPlane(center, normal)),
      radius_(radius),
      normal_(normal.normal()),
      startAngle_(KvDbAngle::ofRadians(startAngle)),
      endAngle_(KvDbAngle::ofRadians(endAngle)) {}

KvGePoint3d KvDbArc::center() const {
  return toWorld(center_, normal_);
}

double KvDbArc::totalAngle() const {
  const double sweep = kvge::normalizedAngle(endAngle() - startAngle());
  return sweep == 0 ? kvge::kTwoPi : sweep;
}

KvGePoint3d KvDbArc::pointAtAngle(double angle) const {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return toWorld({center_.x + radius_ * cosine, center_.y + radius_ * sine, center_.z}, normal_);
}

Kvad::ErrorStatus KvDbArc::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  const KvGeVector3d x = normal_.perpVector(), y = normal_.crossProduct(x);
  addTurn(extents, x, y, kvge::normalizedAngle(startAngle()), totalAngle(),
          [this](double angle) { return pointAtAngle(angle); });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbArc::transformBy(const KvGeMatrix3d& matrix) {
  PlaneFigure figure{center(), normal_, radius_};
  if (auto status = transformPlane(figure, matrix); status != Kvad::eOk) return status;
  const double sweep = totalAngle();
  // A mirrored arc runs the other way: its end comes first.
  const bool isMirrored = matrix.det() < 0;
  if (isMirrored) figure.normal = KvGeVector3d(matrix * normal_).normal();
  const KvGePoint3d first = matrix * (isMirrored ? endPoint() : startPoint());
  assertWriteEnabled();
  normal_ = figure.normal;
  center_ = toPlane(figure.center, normal_);
  radius_ = figure.radius;
  thickness_ *= matrix.scale();
  const KvGePoint3d local = toPlane(first, normal_);
  const double start = KvGeVector2d(local.x - center_.x, local.y - center_.y).angle();
  startAngle_ = KvDbAngle::ofRadians(start);
  endAngle_ = KvDbAngle::ofRadians(kvge::normalizedAngle(start + sweep));
  return Kvad::eOk;
}

// --- Endless lines
// -------------------------------------------------------------------------------------------------------------

const KvDbField KvDbRay::kFields[] = {
    kvdbMarker(L"AcDbRay"),
    kvdbField<&KvDbRay::base_, KvDbRay>(Type::Point, 10),
    kvdbField<&KvDbRay::direction_, KvDbRay>(Type::Vector, 11, kAlways, 0),
};
KVDB_FIELDS_DEFINE(KvDbRay, KvDbEndlessLine)

const KvDbField KvDbXline::kFields[] = {
    kvdbMarker(L"AcDbXline"),
    kvdbField<&KvDbXline::base_, KvDbXline>(Type::Point, 10),
    kvdbField<&KvDbXline::direction_, KvDbXline>(Type::Vector, 11, kAlways, 0),
};
KVDB_FIELDS_DEFINE(KvDbXline, KvDbEndlessLine)

Kvad::ErrorStatus KvDbEndlessLine::setBasePoint(const KvGePoint3d& point) {
  assertWriteEnabled();
  base_ = point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEndlessLine::setUnitDir(const KvGeVector3d& direction) {
  if (direction.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  direction_ = direction.normal();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbEndlessLine::transformBy(const KvGeMatrix3d& matrix) {
  setBasePoint(matrix * base_);
  return setUnitDir(matrix * direction_);
}

// --- Ellipse
// -------------------------------------------------------------------------------------------------------------------

const KvDbField KvDbEllipse::kFields[] = {
    kvdbMarker(L"AcDbEllipse"),
    kvdbField<&KvDbEllipse::center_>(Type::Point, 10),
    kvdbField<&KvDbEllipse::major_>(Type::Vector, 11),
    kvdbField<&KvDbEllipse::normal_>(Type::Vector, 210, kAlways, 1),
    kvdbField<&KvDbEllipse::ratio_>(Type::Real, 40, kAlways, 1),
    kvdbField<&KvDbEllipse::start_>(Type::Real, 41),
    kvdbField<&KvDbEllipse::end_>(Type::Real, 42),
};
KVDB_FIELDS_DEFINE(KvDbEllipse, KvDbCurve)

Kvad::ErrorStatus KvDbEllipse::setCenter(const KvGePoint3d& center) {
  assertWriteEnabled();
  center_ = center;
  return Kvad::eOk;
}

KvGePoint3d KvDbEllipse::pointAtParam(double parameter) const {
  const auto [sine, cosine] = kvge::sinCos(parameter);
  return center_ + major_ * cosine + minorAxis() * sine;
}

Kvad::ErrorStatus KvDbEllipse::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  const double sweep = kvge::normalizedAngle(end_ - start_);
  addTurn(extents, major_, minorAxis(), kvge::normalizedAngle(start_), sweep == 0 ? kvge::kTwoPi : sweep,
          [this](double parameter) { return pointAtParam(parameter); });
  return Kvad::eOk;
}
