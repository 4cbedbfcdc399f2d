#include "module/toolkit/geometry.h"

#include <algorithm>
#include <cmath>

#include "host/editor/sysvars.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "host/entities/polyline.h"
#include "host/geometry/line.h"
#include "module/core/host_values.h"

namespace {

constexpr double kSameReal = 1e-10;
constexpr double kSamePoint = 0.01, kViewShare = 10000;
constexpr double kAxis = 1e-5, kParallel = 1e-5;
constexpr double kTwoPiTenDigits = 6.2831853072, kQuarterTenDigits = 1.5707963268;
constexpr double kTwoPiFull = 6.283185307179586;
constexpr double kDiagonal = 1.414;

enum class System : short { World = 0, User = 1 };

void convert(const double* in, double* out, System from, System to, bool isVector) {
  if (!in || !out) return;
  resbuf fromNode{}, toNode{};
  fromNode.restype = toNode.restype = RTSHORT;
  fromNode.resval.rint = static_cast<short>(from);
  toNode.resval.rint = static_cast<short>(to);
  double result[3];
  const bool isDone = kvedTrans(in, &fromNode, &toNode, isVector, result) == RTNORM;
  const double kept[3] = {in[0], in[1], in[2]};
  std::copy_n(isDone ? result : kept, 3, out);
}

template <class T>
T converted(const T& value, System from, System to, bool isVector) {
  double numbers[3] = {value.x, value.y, value.z};
  convert(numbers, numbers, from, to, isVector);
  return T(numbers[0], numbers[1], numbers[2]);
}

double bearing(const KvGePoint3d& from, const KvGePoint3d& to) {
  const double a[3] = {from.x, from.y, from.z}, b[3] = {to.x, to.y, to.z};
  return kvutAngle(a, b);
}

KvGePoint3d polar(const KvGePoint3d& from, double angle, double distance) {
  const double point[3] = {from.x, from.y, from.z};
  double result[3];
  kvutPolar(point, angle, distance, result);
  return {result[0], result[1], result[2]};
}

bool isOne(double value, double sign) {
  return std::fabs(value - sign) < kAxis;
}

double pointTolerance() {
  double viewSize = 0;
  if (!mek::readRealVariable(L"VIEWSIZE", viewSize)) return kSamePoint;
  return std::min(kSamePoint, viewSize / kViewShare);
}

}  // namespace

void IM_UcsToWcs(double const* in, double* out) {
  convert(in, out, System::User, System::World, false);
}
void IM_UcsToWcs(double* point) {
  IM_UcsToWcs(point, point);
}
void IM_UcsToWcs(KvGePoint3d const& in, KvGePoint3d& out) {
  out = converted(in, System::User, System::World, false);
}
void IM_UcsToWcs(KvGePoint3d& point) {
  IM_UcsToWcs(KvGePoint3d(point), point);
}
void IM_UcsToWcs(KvGeVector3d const& in, KvGeVector3d& out) {
  out = converted(in, System::User, System::World, true);
}
void IM_UcsToWcs(KvGeVector3d& vector) {
  IM_UcsToWcs(KvGeVector3d(vector), vector);
}
void IM_WcsToUcs(double const* in, double* out) {
  convert(in, out, System::World, System::User, false);
}
void IM_WcsToUcs(double* point) {
  IM_WcsToUcs(point, point);
}
void IM_WcsToUcs(KvGePoint3d const& in, KvGePoint3d& out) {
  out = converted(in, System::World, System::User, false);
}
void IM_WcsToUcs(KvGePoint3d& point) {
  IM_WcsToUcs(KvGePoint3d(point), point);
}
void IM_WcsToUcs(KvGeVector3d const& in, KvGeVector3d& out) {
  out = converted(in, System::World, System::User, true);
}
void IM_WcsToUcs(KvGeVector3d& vector) {
  IM_WcsToUcs(KvGeVector3d(vector), vector);
}

KvGePoint3d Local_WcsToUcs_RetAcGePoint(KvGePoint3d point) {
  IM_WcsToUcs(point);
  return point;
}

KvGePoint3d Local_UcsToWcs_RetAcGePoint(KvGePoint3d point) {
  IM_UcsToWcs(point);
  return point;
}

void IM_ZCoordinateToZero(double* point) {
  if (point) point[2] = 0;
}
void IM_ZCoordinateToZero(KvGePoint3d& point) {
  point.z = 0;
}
void IM_ZCoordinateToZero(KvGePoint3dArray& points) {
  for (int i = 0; i < points.length(); ++i) points[i].z = 0;
}
void IM_ZCoordinateToZero(std::vector<KvGePoint3d>& points) {
  for (KvGePoint3d& point : points) point.z = 0;
}

void IM_GetMidPoint(KvGePoint3d const& a, KvGePoint3d const& b, KvGePoint3d& middle) {
  middle = IM_GetMidPoint(a, b);
}
KvGePoint3d IM_GetMidPoint(KvGePoint3d const& a, KvGePoint3d const& b) {
  return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2};
}
void IM_GetMidPoint(double const* a, double const* b, double* middle) {
  if (!a || !b || !middle) return;
  for (int i = 0; i < 3; ++i) middle[i] = (a[i] + b[i]) / 2;
}

// --- Comparing

bool IM_RealEqual(double a, double b) {
  return std::fabs(a - b) < kSameReal;
}

int IM_AngleEqual(double a, double b, int wrap) {
  if (IM_RealEqual(a, b)) return 1;
  if (wrap) return IM_RealEqual(a - kTwoPiFull, b) || IM_RealEqual(a + kTwoPiFull, b);
  // What the comparison a turn below would say doesn't count.
  return std::max(a, b) > std::min(a, b);
}

int IM_PointEqual(double const* a, double const* b, int ignoreZ) {
  if (!a || !b) return 0;
  const double tolerance = pointTolerance();
  const auto isNear = [&](int i) { return std::fabs(a[i] - b[i]) < tolerance; };
  return isNear(0) && isNear(1) && (ignoreZ || isNear(2));
}

int IM_PointEqual(KvGePoint3d a, KvGePoint3d b, int ignoreZ) {
  const double first[3] = {a.x, a.y, a.z}, second[3] = {b.x, b.y, b.z};
  return IM_PointEqual(first, second, ignoreZ);
}

int IM_PointEqual(KvGePoint2d a, KvGePoint2d b) {
  return IM_PointEqual(KvGePoint3d(a.x, a.y, 0), KvGePoint3d(b.x, b.y, 0), 1);
}

int IM_ExtentContains(KvDbExtents const& box, KvGePoint3d const& point, int includeBorder) {
  const KvGePoint3d least = box.minPoint(), greatest = box.maxPoint();
  if (includeBorder)
    return least.x <= point.x && point.x <= greatest.x && least.y <= point.y && point.y <= greatest.y;
  return least.x < point.x && point.x < greatest.x && least.y < point.y && point.y < greatest.y;
}

int IM_ExtentContains(KvDbExtents const& box, KvDbExtents const& inner, int includeBorder) {
  return IM_ExtentContains(box, inner.minPoint(), includeBorder) &&
         IM_ExtentContains(box, inner.maxPoint(), includeBorder);
}

int IM_IsPointsBeRect(KvGePoint3d a, KvGePoint3d b, KvGePoint3d c, KvGePoint3d d) {
  const double ab = bearing(a, b), bc = bearing(b, c), cd = bearing(c, d), da = bearing(d, a);
  const auto isParallel = [](double first, double second) {
    return std::fabs(std::sin(first - second)) < kSameReal;
  };
  const bool isAcross = std::fabs(std::cos(ab - bc)) < kSameReal;
  const bool isAlongAxis = std::fabs(std::sin(ab)) < kSameReal || std::fabs(std::cos(ab)) < kSameReal;
  return isParallel(ab, cd) && isParallel(bc, da) && isAcross && isAlongAxis;
}

// --- Vectors and angles

KvGeVector3d IM_GetNormalVector() {
  KvGeMatrix3d system;
  if (kvedGetCurrentUCS(system) != Kvad::eOk) return KvGeVector3d::kZAxis;
  const KvGeVector3d normal = system.column(2).normal(KvGeContext::gTol);
  return normal.isZeroLength() ? KvGeVector3d::kZAxis : normal;
}

KvGeVector3d IM_GetNormalRefVector() {
  const KvGeVector3d n = IM_GetNormalVector();
  KvGeVector3d reference = KvGeVector3d::kXAxis;
  if (isOne(n.z, 1))
    reference = {1, 0, 0};
  else if (isOne(n.z, -1))
    reference = {-1, 0, 0};
  else if (isOne(n.x, 1))
    reference = {0, 1, 0};
  else if (isOne(n.x, -1))
    reference = {0, -1, 0};
  else if (isOne(n.y, 1))
    reference = {-1, 0, 0};
  else if (isOne(n.y, -1))
    reference = {1, 0, 0};
  IM_UcsToWcs(reference);
  return reference;
}

double IM_GetUcsAngle() {
  double x[3] = {0, 0, 0};
  if (!mek::readPointVariable(L"UCSXDIR", x)) return 0;
  KvGeVector3d direction(x[0], x[1], x[2]);
  if (direction.isZeroLength()) return 0;
  // The reference vector comes turned by the user system; so must what is measured against it, and its axis.
  KvGeVector3d normal = IM_GetNormalVector();
  IM_UcsToWcs(direction);
  IM_UcsToWcs(normal);
  const double angle = IM_GetNormalRefVector().angleTo(direction, normal);
  return angle < 0 ? angle + kTwoPiTenDigits : angle;
}

KvGeVector3d IM_WcsAngleToVector(double angle) {
  KvGeVector3d vector = KvGeVector3d::kXAxis;
  vector.rotateBy(angle - IM_GetUcsAngle(), KvGeVector3d::kZAxis);
  IM_UcsToWcs(vector);
  return vector;
}

double IM_WcsVectorToAngle(KvGeVector3d vector) {
  IM_WcsToUcs(vector);
  return KvGeVector3d::kXAxis.angleTo(vector, KvGeVector3d::kZAxis) + IM_GetUcsAngle();
}

int IM_GetAngleFromTd(double* start, double bulge, double* end, double* center, double& radius) {
  if (!start || !end || !center || bulge == 0 || !std::isfinite(bulge)) return 0;
  const KvGePoint3d from(start[0], start[1], start[2]), to(end[0], end[1], end[2]);
  const double chord = std::hypot(to.x - from.x, to.y - from.y);
  constexpr double kQuarter = 0.25, kHalf = 0.5;
  radius = kQuarter * chord * (1 + bulge * bulge) / bulge;
  const double direction = bearing(from, to) + kQuarterTenDigits;
  const KvGePoint3d middle = IM_GetMidPoint(from, to);
  const KvGePoint3d found = polar(middle, direction, radius - kHalf * bulge * chord);
  center[0] = found.x, center[1] = found.y, center[2] = found.z;
  return 1;
}

int IM_GetTdFromAngle(double const* start, double const* center, double const* end, double& bulge) {
  bulge = 0;
  if (!start || !center || !end) return 0;
  const KvGeVector2d from(start[0] - center[0], start[1] - center[1]),
      to(end[0] - center[0], end[1] - center[1]);
  if (!(from.length() > 0) || !(to.length() > 0)) return 0;
  constexpr double kQuarterOfSweep = 4;
  bulge = std::tan(kvge::normalizedAngle(to.angle() - from.angle()) / kQuarterOfSweep);
  return 1;
}

int IM_GetTdFromAngle(KvGePoint3d start, KvGePoint3d middle, KvGePoint3d end, double& bulge) {
  bulge = 0;
  // The angle under which the middle point sees the chord is half of what the rest of the circle sweeps.
  const KvGeVector2d a(start.x - middle.x, start.y - middle.y), b(end.x - middle.x, end.y - middle.y);
  const double turn = a.crossProduct(b), seen = std::atan2(std::fabs(turn), a.dotProduct(b));
  if (!(std::fabs(std::sin(seen)) >= kParallel)) return 0;
  const double sweep = kTwoPiFull - 2 * seen;
  constexpr double kQuarterOfSweep = 4;
  bulge = std::copysign(std::tan(sweep / kQuarterOfSweep), -turn);
  return 1;
}

int IM_GetCenterFromTangentAndPoint(KvGeVector3d tangent, KvGePoint3d on, KvGePoint3d through,
                                    KvGePoint3d& center) {
  const KvGeVector3d chord = through - on;
  const double length = std::hypot(chord.x, chord.y);
  const double sine = std::sin(std::atan2(chord.y, chord.x) - std::atan2(tangent.y, tangent.x));
  const bool hasDirection = std::hypot(tangent.x, tangent.y) > 0;
  if (length == 0 || !hasDirection || !(std::fabs(sine) >= kParallel)) return 0;
  KvGeVector3d across(-tangent.y, tangent.x, 0);
  const double cosine = std::cos(std::atan2(chord.y, chord.x) - std::atan2(across.y, across.x));
  if (cosine < 0) across = -across;
  // The chord is twice the radius times its cosine against the perpendicular.
  const double radius = length / (2 * std::fabs(cosine));
  center = on + across.normal() * radius;
  return 1;
}

// --- Pick box

double IM_GetPickBoxSize() {
  int pixels = 0;
  if (!mek::readIntVariable(L"PICKBOX", pixels)) return 1;
  KvGePoint3d from, to;
  if (!kvedCoordFromPixelToWorld(KvGsPixel{0, 0}, from) ||
      !kvedCoordFromPixelToWorld(KvGsPixel{pixels, 0}, to))
    return 1;
  const double size = pixels > 0 ? from.distanceTo(to) : 0;
  return size > 0 ? size : 1;
}

double IM_GetPickBoxDist() {
  return IM_GetPickBoxSize() * kDiagonal;
}

KvGeTol IM_GetPickBoxTol() {
  KvGeTol tolerance;
  tolerance.setEqualPoint(IM_GetPickBoxDist());
  tolerance.setEqualVector(IM_GetPickBoxDist());
  return tolerance;
}
