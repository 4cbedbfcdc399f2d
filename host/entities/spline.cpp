#include "host/entities/spline.h"

#include <algorithm>

#include "host/geometry/line.h"

KVRX_DEFINE(KvDbSpline, KvDbCurve, L"SPLINE")

namespace {

constexpr const wchar_t* kMarker = L"AcDbSpline";

void writeNumbers(KvDbDwgFiler& filer, const std::vector<double>& numbers) {
  filer.writeUInt32(static_cast<std::uint32_t>(numbers.size()));
  for (double number : numbers) filer.writeDouble(number);
}
void readNumbers(KvDbDwgFiler& filer, std::vector<double>& numbers) {
  numbers.assign(filer.readUInt32(), 0);
  for (double& number : numbers) number = filer.readDouble();
}
void writePoints(KvDbDwgFiler& filer, const std::vector<KvGePoint3d>& points) {
  filer.writeUInt32(static_cast<std::uint32_t>(points.size()));
  for (const KvGePoint3d& point : points) filer.writePoint3d(point);
}
void readPoints(KvDbDwgFiler& filer, std::vector<KvGePoint3d>& points) {
  points.assign(filer.readUInt32(), {});
  for (KvGePoint3d& point : points) point = filer.readPoint3d();
}

template <class T>
std::vector<T> toVector(const KvArray<T>& array) {
  return {array.begin(), array.end()};
}

}  // namespace

KvDbSpline::KvDbSpline(const KvGePoint3dArray& fitPoints, const KvGeVector3d& startTangent,
                       const KvGeVector3d& endTangent, double fitTolerance)
    : fitPoints_(toVector(fitPoints)),
      startTangent_(startTangent),
      endTangent_(endTangent),
      fitTolerance_(fitTolerance) {
  if (const auto curve = KvGeNurbCurve3d::interpolate(fitPoints_, startTangent, endTangent)) {
    const auto keptPoints = std::move(fitPoints_);
    setNurb(*curve);
    fitPoints_ = keptPoints;
    startTangent_ = startTangent;
    endTangent_ = endTangent;
  }
}

Kvad::ErrorStatus KvDbSpline::setNurb(const KvGeNurbCurve3d& curve) {
  assertWriteEnabled();
  degree_ = static_cast<std::int16_t>(curve.degree());
  knots_ = curve.knots();
  weights_ = curve.weights();
  poles_ = curve.poles();
  fitPoints_.clear();
  startTangent_ = endTangent_ = {};
  flags_ = 0;
  noteShape();
  return Kvad::eOk;
}

void KvDbSpline::noteShape() {
  const auto curve = geCurve();
  if (!curve) return;
  KvGePlane plane;
  const auto planarity = curve->planarity(plane);
  const bool isPlanar = planarity == KvGeCurve3d::kPlanar;
  flags_ = static_cast<std::int16_t>((flags_ & kPeriodic) | (curve->isClosed() ? kClosed : 0) |
                                     (isRational() ? kRational : 0) |
                                     (planarity != KvGeCurve3d::kNotPlanar ? kPlanar : 0));
  if (isPlanar) normal_ = plane.normal().z < 0 ? -plane.normal() : plane.normal();
}

Kvad::ErrorStatus KvDbSpline::setNurbsData(int degree, const KvGePoint3dArray& controlPoints,
                                           const KvArray<double>& knots, const KvArray<double>& weights,
                                           bool isPeriodic) {
  const auto curve =
      KvGeNurbCurve3d::create(degree, toVector(knots), toVector(controlPoints), toVector(weights));
  if (!curve) return Kvad::eInvalidInput;
  setNurb(*curve);
  if (isPeriodic) flags_ |= kPeriodic | kClosed;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbSpline::getControlPointAt(int index, KvGePoint3d& point) const {
  if (index < 0 || index >= numControlPoints()) return Kvad::eInvalidIndex;
  point = poles_[static_cast<std::size_t>(index)];
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbSpline::getFitPointAt(int index, KvGePoint3d& point) const {
  if (index < 0 || index >= numFitPoints()) return Kvad::eInvalidIndex;
  point = fitPoints_[static_cast<std::size_t>(index)];
  return Kvad::eOk;
}

std::unique_ptr<KvGeCurve3d> KvDbSpline::geCurve() const {
  if (auto curve = KvGeNurbCurve3d::create(degree_, knots_, poles_, weights_)) return curve;
  return KvGeNurbCurve3d::interpolate(fitPoints_, startTangent_, endTangent_);
}

bool KvDbSpline::isClosed() const {
  return (flags_ & kClosed) != 0 || KvDbCurve::isClosed();
}

Kvad::ErrorStatus KvDbSpline::reverseCurve() {
  assertWriteEnabled();
  std::reverse(poles_.begin(), poles_.end());
  std::reverse(weights_.begin(), weights_.end());
  std::reverse(fitPoints_.begin(), fitPoints_.end());
  if (!knots_.empty()) {
    const double sum = knots_.front() + knots_.back();
    std::reverse(knots_.begin(), knots_.end());
    for (double& knot : knots_) knot = sum - knot;
  }
  std::swap(startTangent_, endTangent_);
  startTangent_ = -startTangent_;
  endTangent_ = -endTangent_;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbSpline::transformBy(const KvGeMatrix3d& matrix) {
  if (matrix.isSingular()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  for (KvGePoint3d& point : poles_) point = matrix * point;
  for (KvGePoint3d& point : fitPoints_) point = matrix * point;
  startTangent_ = matrix * startTangent_;
  endTangent_ = matrix * endTangent_;
  // The plane's normal goes with two directions in the plane.
  const KvGeVector3d x = normal_.perpVector(), y = normal_.crossProduct(x);
  const KvGeVector3d up = (matrix * x).crossProduct(matrix * y);
  if (up.length() > 0) normal_ = up / up.length();
  return Kvad::eOk;
}

bool KvDbSpline::subWorldDraw(KvGiWorldDraw* draw) {
  const auto curve = geCurve();
  if (!curve) return false;
  kvdbDrawCurve(*curve, *draw);
  return true;
}

// --- Filing
// --------------------------------------------------------------------------------------------------------------------

void KvDbSpline::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbCurve::dwgOutFields(filer);
  filer.writeInt16(flags_);
  filer.writeInt16(degree_);
  writeNumbers(filer, knots_);
  writeNumbers(filer, weights_);
  writePoints(filer, poles_);
  writePoints(filer, fitPoints_);
  for (const KvGeVector3d& vector : {normal_, startTangent_, endTangent_}) filer.writeVector3d(vector);
  for (double number : {knotTolerance_, poleTolerance_, fitTolerance_}) filer.writeDouble(number);
}

void KvDbSpline::dwgInFields(KvDbDwgFiler& filer) {
  KvDbCurve::dwgInFields(filer);
  flags_ = filer.readInt16();
  degree_ = filer.readInt16();
  readNumbers(filer, knots_);
  readNumbers(filer, weights_);
  readPoints(filer, poles_);
  readPoints(filer, fitPoints_);
  for (KvGeVector3d* vector : {&normal_, &startTangent_, &endTangent_}) *vector = filer.readVector3d();
  for (double* number : {&knotTolerance_, &poleTolerance_, &fitTolerance_}) *number = filer.readDouble();
}

bool KvDbSpline::knowsMarker(std::wstring_view marker) const {
  return marker == kMarker || KvDbCurve::knowsMarker(marker);
}

void KvDbSpline::dxfOutFields(KvDxfWriter& writer) const {
  KvDbCurve::dxfOutFields(writer);
  writer.marker(kMarker);
  writer.vector(210, normal_);
  writer.integer(70, flags_);
  writer.integer(71, degree_);
  writer.integer(72, static_cast<std::int64_t>(knots_.size()));
  writer.integer(73, static_cast<std::int64_t>(poles_.size()));
  writer.integer(74, static_cast<std::int64_t>(fitPoints_.size()));
  writer.real(42, knotTolerance_);
  writer.real(43, poleTolerance_);
  writer.real(44, fitTolerance_);
  const KvGeVector3d none;
  if (!(startTangent_ == none)) writer.vector(12, startTangent_);
  if (!(endTangent_ == none)) writer.vector(13, endTangent_);
  for (double knot : knots_) writer.real(40, knot);
  for (double weight : weights_) writer.real(41, weight);
  for (const KvGePoint3d& point : poles_) writer.point(10, point);
  for (const KvGePoint3d& point : fitPoints_) writer.point(11, point);
  writeUnknown(writer, kMarker);
}

bool KvDbSpline::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (marker != kMarker) return KvDbCurve::dxfInGroup(group, marker, resolver);
  switch (group.code) {
    case 210:
      normal_ = group.point.asVector();
      return true;
    case 70:
      flags_ = static_cast<std::int16_t>(group.integer);
      return true;
    case 71:
      degree_ = static_cast<std::int16_t>(group.integer);
      return true;
    case 72:
    case 73:
    case 74:  // numbers of what follows: the rows themselves tell
      return true;
    case 42:
      knotTolerance_ = group.real();
      return true;
    case 43:
      poleTolerance_ = group.real();
      return true;
    case 44:
      fitTolerance_ = group.real();
      return true;
    case 12:
      startTangent_ = group.point.asVector();
      return true;
    case 13:
      endTangent_ = group.point.asVector();
      return true;
    case 40:
      knots_.push_back(group.real());
      return true;
    case 41:
      weights_.push_back(group.real());
      return true;
    case 10:
      poles_.push_back(group.point);
      return true;
    case 11:
      fitPoints_.push_back(group.point);
      return true;
    default:
      return KvDbCurve::dxfInGroup(group, marker, resolver);
  }
}
