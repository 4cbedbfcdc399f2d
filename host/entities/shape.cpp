#include "host/entities/shape.h"

#include <cmath>

#include "host/database/database.h"
#include "host/database/primitives.h"
#include "host/lettering/shapes.h"

KVRX_DEFINE(KvDbShape, KvDbEntity, L"SHAPE")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr double kSteepest = 85 * kvge::kPi / 180;

bool isLength(double v) {
  return v > 0 && std::isfinite(v);
}

struct Found {
  KvDbObjectId style;
  const KvLtShapeFile* file = nullptr;
  const KvLtShape* shape = nullptr;
};

Found findShape(const KvDbDatabase* database, const CString& name) {
  if (!database || name.IsEmpty()) return {};
  const KvDbObjectId tableId = database->textStyleTableId();
  const auto* table = tableId.isValid() ? KvDbTextStyleTable::cast(tableId.stub()->object) : nullptr;
  if (!table) return {};
  const std::string wanted = platform::utf8From(name);
  for (KvDbObjectId id : table->records()) {
    const auto* record = KvDbTextStyleTableRecord::cast(id.stub()->object);
    if (!record || !record->isShapeFile()) continue;
    const KvLtShapeFile* file = kvltFindShapes(record->fileName().view(), &database->folder());
    if (const KvLtShape* shape = file ? file->find(wanted) : nullptr) return {id, file, shape};
  }
  return {};
}

}  // namespace

const KvDbField KvDbShape::kFields[] = {
    kvdbMarker(L"AcDbShape"),
    kvdbField<&KvDbShape::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbShape::position_>(Type::Point, 10),
    kvdbField<&KvDbShape::size_>(Type::Real, 40, KvDbField::Write::Always, 1),
    kvdbField<&KvDbShape::name_>(Type::Text, 2),
    kvdbField<&KvDbShape::rotation_>(Type::Angle, 50, kUnlessDefault),
    kvdbField<&KvDbShape::widthFactor_>(Type::Real, 41, kUnlessDefault, 1),
    kvdbField<&KvDbShape::oblique_>(Type::Angle, 51, kUnlessDefault),
    kvdbField<&KvDbShape::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};
KVDB_FIELDS_DEFINE(KvDbShape, KvDbEntity)

KvDbShape::KvDbShape(const KvGePoint3d& position, double size, const wchar_t* name, double rotation,
                     double widthFactor)
    : position_(position),
      size_(isLength(size) ? size : 1),
      name_(name),
      rotation_(KvDbAngle::ofRadians(rotation)),
      widthFactor_(isLength(widthFactor) ? widthFactor : 1) {}

Kvad::ErrorStatus KvDbShape::setPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  position_ = position;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setSize(double size) {
  if (!isLength(size)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  size_ = size;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setName(const wchar_t* name) {
  assertWriteEnabled();
  name_ = name;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setRotation(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  rotation_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setWidthFactor(double factor) {
  if (!isLength(factor)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  widthFactor_ = factor;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setOblique(double angle) {
  if (!(std::fabs(angle) <= kSteepest)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  oblique_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setThickness(double thickness) {
  if (!std::isfinite(thickness)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}
Kvad::ErrorStatus KvDbShape::setNormal(const KvGeVector3d& normal) {
  if (normal.isZeroLength()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  normal_ = normal.normal();
  return Kvad::eOk;
}

KvDbObjectId KvDbShape::styleId() const {
  return findShape(database(), name_).style;
}
int KvDbShape::shapeNumber() const {
  const Found found = findShape(database(), name_);
  return found.shape ? found.shape->number : 0;
}

Kvad::ErrorStatus KvDbShape::setShape(KvDbObjectId style, int number) {
  const auto* record = style.isValid() ? KvDbTextStyleTableRecord::cast(style.stub()->object) : nullptr;
  if (!record || !record->isShapeFile()) return Kvad::eInvalidInput;
  const KvLtShapeFile* file = kvltFindShapes(record->fileName().view(), &record->database()->folder());
  const KvLtShape* shape = file ? file->find(number) : nullptr;
  if (!shape) return Kvad::eKeyNotFound;
  return setName(platform::wideFromUtf8(shape->name));
}

/// From the shape's own unit.
KvGeMatrix3d KvDbShape::toWorld() const {
  const KvGeMatrix3d plane = KvGeMatrix3d::planeToWorld(normal_);
  const auto [sine, cosine] = kvge::sinCos(rotation_.radians());
  const KvGeVector3d along = plane * KvGeVector3d(cosine, sine, 0),
                     up = plane * KvGeVector3d(-sine, cosine, 0);
  const KvGeVector3d leaning = up + along * (std::tan(oblique_.radians()) * widthFactor_);
  return KvGeMatrix3d().setCoordSystem(position_, along * (size_ * widthFactor_), leaning * size_,
                                       plane * KvGeVector3d::kZAxis);
}

Kvad::ErrorStatus KvDbShape::getGeomExtents(KvDbExtents& extents) const {
  return kvdbDrawnExtents(*this, extents);
}

Kvad::ErrorStatus KvDbShape::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeMatrix3d moved = matrix * toWorld();
  const KvGeVector3d along = moved.column(0), up = moved.column(1);
  KvGeVector3d normal = along.crossProduct(up);
  if (!(normal.length() > 0) || !std::isfinite(normal.length())) return Kvad::eDegenerateGeometry;
  assertWriteEnabled();
  normal = normal.normal();
  const KvGeVector3d across = normal.crossProduct(along).normal();
  const double height = up.dotProduct(across), lean = up.dotProduct(along.normal());
  position_ = matrix * position_;
  thickness_ *= (matrix * normal_).length();
  normal_ = normal;
  size_ = height;
  widthFactor_ = along.length() / height;
  rotation_ = KvDbAngle::ofRadians(kvge::normalizedAngle(normal.perpVector().angleTo(along, normal)));
  oblique_ = KvDbAngle::ofRadians(std::clamp(std::atan2(lean / widthFactor_, height), -kSteepest, kSteepest));
  return Kvad::eOk;
}

bool KvDbShape::subWorldDraw(KvGiWorldDraw* draw) {
  const Found found = findShape(database(), name_);
  if (!found.shape) return false;
  const KvGeMatrix3d place = toWorld();
  std::vector<KvGePoint3d> poles;
  std::vector<unsigned char> degrees;
  const auto flush = [&] {
    if (!degrees.empty())
      draw->geometry().segments(poles.data(), degrees.data(), static_cast<int>(degrees.size()));
    poles.clear();
    degrees.clear();
  };
  for (const KvLtSegment& segment : found.file->glyph(found.shape->number).outline) {
    if (segment.kind == KvLtSegment::kMove) flush();
    const int count = segment.kind == KvLtSegment::kCubic ? 3 : 1;
    for (int i = 0; i < count; ++i)
      poles.push_back(place * KvGePoint3d(segment.points[i].x, segment.points[i].y, 0));
    if (segment.kind != KvLtSegment::kMove) degrees.push_back(static_cast<unsigned char>(count));
  }
  flush();
  return true;
}
