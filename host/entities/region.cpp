#include "host/entities/region.h"

#include "host/database/modelertext.h"
#include "host/entities/curve.h"
#include "host/geometry/arc.h"
#include "host/geometry/nurb.h"

KVRX_DEFINE(KvDbRegion, KvDbProxyEntity, L"REGION")

namespace {

/// The section in which a region that was made here keeps its edges: for each the kind (90) and its numbers
/// (40).
constexpr const wchar_t* kEdgesMarker = L"KvDbRegionEdges";
constexpr const wchar_t* kModelerMarker = L"AcDbModelerGeometry";
constexpr int kKindCode = 90, kNumberCode = 40;

Kvad::ErrorStatus statusOf(KvGeRegion::Status status) {
  switch (status) {
    case KvGeRegion::kOk:
      return Kvad::eOk;
    case KvGeRegion::kNoLoop:
      return Kvad::eInvalidLoop;
    case KvGeRegion::kNotPlanar:
      return Kvad::eNonPlanarEntity;
    case KvGeRegion::kUnbounded:
      return Kvad::eInvalidInput;
    default:
      return Kvad::eSelfIntersecting;
  }
}

void put(std::vector<double>& to, const KvGePoint3d& p) {
  to.insert(to.end(), {p.x, p.y, p.z});
}
void put(std::vector<double>& to, const KvGeVector3d& v) {
  to.insert(to.end(), {v.x, v.y, v.z});
}

/// An edge as numbers; the four kinds that regions explode to.
std::vector<double> numbersOf(const KvGeCurve3d& edge) {
  std::vector<double> n;
  switch (edge.kind()) {
    case KvGeCurve3d::kCircArc: {
      const auto& arc = static_cast<const KvGeCircArc3d&>(edge);
      put(n, arc.center());
      put(n, arc.normal());
      put(n, arc.refVec());
      n.insert(n.end(), {arc.radius(), arc.startAngle(), arc.endAngle()});
      break;
    }
    case KvGeCurve3d::kEllipArc: {
      const auto& arc = static_cast<const KvGeEllipArc3d&>(edge);
      put(n, arc.center());
      put(n, arc.majorAxis());
      put(n, arc.minorAxis());
      n.insert(n.end(), {arc.startParam(), arc.endParam()});
      break;
    }
    case KvGeCurve3d::kNurb: {
      const auto& spline = static_cast<const KvGeNurbCurve3d&>(edge);
      n.insert(n.end(), {static_cast<double>(spline.degree()), static_cast<double>(spline.poles().size()),
                         spline.isRational() ? 1.0 : 0.0});
      n.insert(n.end(), spline.knots().begin(), spline.knots().end());
      n.insert(n.end(), spline.weights().begin(), spline.weights().end());
      for (const KvGePoint3d& pole : spline.poles()) put(n, pole);
      break;
    }
    default:
      put(n, edge.startPoint());
      put(n, edge.endPoint());
  }
  return n;
}

std::unique_ptr<KvGeCurve3d> splineOf(const std::vector<double>& n) {
  if (n.size() < 3 || !(n[0] >= 1 && n[0] <= 25) || !(n[1] >= 2 && n[1] <= static_cast<double>(n.size())))
    return nullptr;
  const auto degree = static_cast<std::size_t>(n[0]), poles = static_cast<std::size_t>(n[1]);
  const std::size_t knots = poles + degree + 1, weights = n[2] != 0 ? poles : 0;
  if (n.size() != 3 + knots + weights + 3 * poles) return nullptr;
  const auto at = [&](std::size_t i) { return n.begin() + static_cast<std::ptrdiff_t>(i); };
  std::vector<KvGePoint3d> points;
  for (std::size_t i = 3 + knots + weights; i < n.size(); i += 3)
    points.emplace_back(n[i], n[i + 1], n[i + 2]);
  return KvGeNurbCurve3d::create(static_cast<int>(degree), {at(3), at(3 + knots)}, std::move(points),
                                 {at(3 + knots), at(3 + knots + weights)});
}

std::unique_ptr<KvGeCurve3d> edgeOf(int kind, const std::vector<double>& n) {
  const auto point = [&](std::size_t i) { return KvGePoint3d(n[i], n[i + 1], n[i + 2]); };
  const auto vector = [&](std::size_t i) { return KvGeVector3d(n[i], n[i + 1], n[i + 2]); };
  if (kind == KvGeCurve3d::kCircArc && n.size() == 12)
    return std::make_unique<KvGeCircArc3d>(point(0), vector(3), vector(6), n[9], n[10], n[11]);
  if (kind == KvGeCurve3d::kEllipArc && n.size() == 11)
    return std::make_unique<KvGeEllipArc3d>(point(0), vector(3), vector(6), n[9], n[10]);
  if (kind == KvGeCurve3d::kNurb) return splineOf(n);
  if (kind == KvGeCurve3d::kLineSeg && n.size() == 6)
    return std::make_unique<KvGeLineSeg3d>(point(0), point(3));
  return nullptr;
}

KvGeRegion regionOf(const std::vector<std::unique_ptr<KvGeCurve3d>>& edges) {
  KvGeRegion::Curves curves;
  for (const auto& edge : edges)
    if (edge) curves.push_back(edge.get());
  KvGeRegion region;
  if (!curves.empty()) KvGeRegion::createFromLoops(curves, region);
  return region;
}

/// The groups of a modeller's text; false for a shape that it can't hold.
bool writeModel(const KvGeRegion& shape, KvDxfWriter& writer) {
  constexpr int kLineCode = 1, kRestCode = 3;
  constexpr std::size_t kLongest = 255;
  const std::vector<std::wstring> lines = kvdbWriteModelerText(shape);
  for (const std::wstring& line : lines) {
    const std::wstring letters = kvdbModelerEncoded(line);
    for (std::size_t at = 0; at < letters.size();) {
      // A sign and the blank that belongs to it stay together.
      std::size_t size = std::min(kLongest, letters.size() - at);
      if (letters[at + size - 1] == L'^' && at + size < letters.size()) --size;
      writer.text(at == 0 ? kLineCode : kRestCode, std::wstring_view(letters).substr(at, size));
      at += size;
    }
  }
  return !lines.empty();
}

}  // namespace

Kvad::ErrorStatus KvDbRegion::createFromCurves(const KvDbVoidPtrArray& curves, KvDbVoidPtrArray& regions) {
  std::vector<std::unique_ptr<KvGeCurve3d>> own;
  KvGeRegion::Curves shapes;
  for (void* pointer : curves) {
    const KvDbCurve* curve = KvDbCurve::cast(static_cast<KvDbEntity*>(pointer));
    auto shape = curve ? curve->geCurve() : nullptr;
    if (!shape) return Kvad::eInvalidInput;
    shapes.push_back(shape.get());
    own.push_back(std::move(shape));
  }
  if (shapes.empty()) return Kvad::eInvalidInput;
  std::vector<KvGeRegion> made;
  const auto status = KvGeRegion::createFromCurves(shapes, made);
  const auto* first = static_cast<KvDbEntity*>(curves[0]);
  for (const KvGeRegion& shape : made) {
    auto region = std::make_unique<KvDbRegion>(shape);
    region->setPropertiesFrom(first);
    regions.append(static_cast<KvDbEntity*>(region.release()));
  }
  return made.empty() ? statusOf(status == KvGeRegion::kOk ? KvGeRegion::kNoLoop : status) : Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::booleanOper(BoolOperType operation, KvDbRegion* other) {
  if (!other) return Kvad::eNullEntityPointer;
  KvGeRegion result = shape_;
  if (const auto status = result.booleanOper(static_cast<KvGeRegion::Operation>(operation), other->shape_);
      status != KvGeRegion::kOk)
    return statusOf(status);
  assertWriteEnabled();
  setShape(result);
  if (other != this) {
    other->assertWriteEnabled();
    other->setShape(KvGeRegion());
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::getArea(double& area) const {
  if (isNull()) return Kvad::eNoContent;
  area = shape_.area();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::getPerimeter(double& length) const {
  if (isNull()) return Kvad::eNoContent;
  length = shape_.perimeter();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::getNormal(KvGeVector3d& normal) const {
  if (isNull()) return Kvad::eNoContent;
  normal = shape_.plane().normal();
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::explode(KvDbVoidPtrArray& parts) const {
  if (isNull()) return Kvad::eCannotExplodeEntity;
  std::vector<KvGeRegion> areas;
  shape_.separate(areas);
  const auto take = [&](std::unique_ptr<KvDbEntity> entity) {
    if (!entity) return;
    entity->setPropertiesFrom(this);
    parts.append(entity.release());
  };
  if (areas.size() > 1) {
    for (const KvGeRegion& area : areas) take(std::make_unique<KvDbRegion>(area));
    return Kvad::eOk;
  }
  std::vector<KvGeCurve3d::Ptr> edges;
  shape_.explode(edges);
  for (const KvGeCurve3d::Ptr& edge : edges) take(kvdbCurveOf(*edge));
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbRegion::transformBy(const KvGeMatrix3d& matrix) {
  if (isNull()) return Kvad::eNotApplicable;
  KvGeRegion moved = shape_;
  if (const auto status = moved.transformBy(matrix); status != KvGeRegion::kOk) return statusOf(status);
  assertWriteEnabled();
  setShape(moved);
  return Kvad::eOk;
}

void KvDbRegion::getGeCurves(std::vector<std::unique_ptr<KvGeCurve3d>>& curves) const {
  shape_.explode(curves);
}

bool KvDbRegion::subWorldDraw(KvGiWorldDraw* draw) {
  if (isNull()) return KvDbProxyEntity::subWorldDraw(draw);
  std::vector<KvGeCurve3d::Ptr> edges;
  shape_.explode(edges);
  for (const KvGeCurve3d::Ptr& edge : edges) kvdbDrawCurve(*edge, *draw);
  return !edges.empty();
}

// --- Filing
// --------------------------------------------------------------------------------------------------------------------

void KvDbRegion::setShape(const KvGeRegion& shape) {
  shape_ = shape;
  filed_.reset();
  if (!isOfModel_) return;
  isOfModel_ = false;
  std::erase_if(editUnknownSections(),
                [](const KvDbUnknownSection& s) { return s.marker.view() == kModelerMarker; });
}

void KvDbRegion::readModel() {
  if (!isNull()) return;
  const std::wstring text = kvdbModelerTextOf(*this);
  const auto model = text.empty() ? std::nullopt : kvdbReadModelerText(text);
  if (!model || !model->isComplete || !model->isFlat) return;
  shape_ = regionOf(model->edges);
  isOfModel_ = !isNull();
}

const KvDbRegion::Edges& KvDbRegion::filedEdges() const {
  // A shape that follows from kept data is taken from them again.
  static const Edges kNone;
  if (isOfModel_) return kNone;
  if (!filed_) {
    std::vector<KvGeCurve3d::Ptr> edges;
    shape_.explode(edges);
    Edges numbers;
    for (const KvGeCurve3d::Ptr& edge : edges) numbers.push_back({edge->kind(), numbersOf(*edge)});
    filed_ = std::make_shared<const Edges>(std::move(numbers));
  }
  return *filed_;
}

void KvDbRegion::readEdges(Edges numbers) {
  std::vector<KvGeCurve3d::Ptr> edges;
  for (const EdgeNumbers& edge : numbers) edges.push_back(edgeOf(edge.kind, edge.numbers));
  setShape(regionOf(edges));
  if (!isNull()) filed_ = std::make_shared<const Edges>(std::move(numbers));
}

void KvDbRegion::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbProxyEntity::dwgOutFields(filer);
  const Edges& edges = filedEdges();
  filer.writeUInt32(static_cast<std::uint32_t>(edges.size()));
  for (const EdgeNumbers& edge : edges) {
    filer.writeInt32(edge.kind);
    filer.writeUInt32(static_cast<std::uint32_t>(edge.numbers.size()));
    for (double number : edge.numbers) filer.writeDouble(number);
  }
}

void KvDbRegion::dwgInFields(KvDbDwgFiler& filer) {
  KvDbProxyEntity::dwgInFields(filer);
  Edges edges(filer.readUInt32());
  for (EdgeNumbers& edge : edges) {
    edge.kind = filer.readInt32();
    edge.numbers.resize(filer.readUInt32());
    for (double& number : edge.numbers) number = filer.readDouble();
  }
  isOfModel_ = false;
  readEdges(std::move(edges));
  readModel();
}

bool KvDbRegion::knowsMarker(std::wstring_view marker) const {
  return marker == kEdgesMarker || KvDbProxyEntity::knowsMarker(marker);
}

void KvDbRegion::dxfOutFields(KvDxfWriter& writer) const {
  KvDbProxyEntity::dxfOutFields(writer);
  if (isNull() || isOfModel_) return;
  writer.marker(kModelerMarker);
  writer.integer(70, 1);
  if (writer.hasModelerText() && writeModel(shape_, writer)) return;
  writer.marker(kEdgesMarker);
  for (const EdgeNumbers& edge : filedEdges()) {
    writer.integer(kKindCode, edge.kind);
    for (double number : edge.numbers) writer.real(kNumberCode, number);
  }
}

void KvDbRegion::dxfInSection(std::wstring_view marker, std::span<const KvDxfGroup> groups,
                              KvDxfResolver& resolver) {
  if (marker != kEdgesMarker) {
    KvDbProxyEntity::dxfInSection(marker, groups, resolver);
    return;
  }
  // The bare head of a modeller's section is written anew.
  std::erase_if(editUnknownSections(),
                [](const KvDbUnknownSection& s) { return s.marker.view() == kModelerMarker; });
  Edges edges;
  for (std::size_t at = 0; at < groups.size();) {
    EdgeNumbers edge{groups[at++].asInt(), {}};
    while (at < groups.size() && groups[at].code == kNumberCode) edge.numbers.push_back(groups[at++].real());
    edges.push_back(std::move(edge));
  }
  readEdges(std::move(edges));
}

void KvDbRegion::dxfInEnd(KvDxfResolver& resolver) {
  KvDbProxyEntity::dxfInEnd(resolver);
  readModel();
}
