#include "host/entities/text.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/database/header.h"
#include "host/entities/textstyle.h"
#include "host/lettering/line.h"

KVRX_DEFINE(KvDbText, KvDbEntity, L"TEXT")

namespace {

using Type = KvDbField::Type;
constexpr auto kUnlessDefault = KvDbField::Write::UnlessDefault;
constexpr auto kAlways = KvDbField::Write::Always;
constexpr double kSteepest = 1.4835298641951802;  // 85 degrees
/// How far letters may reach below the base line, in heights: for texts placed by their bottom.
constexpr double kDescent = 1.0 / 3;

KvGePoint3d toWorld(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::planeToWorld(normal) * point;
}
KvGePoint3d toPlane(const KvGePoint3d& point, const KvGeVector3d& normal) {
  return KvGeMatrix3d::worldToPlane(normal) * point;
}
KvGeVector3d direction(double angle) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return {cosine, sine, 0};
}

/// Share of the width that lies before the point a text is placed by.
double shareBefore(int mode) {
  if (mode == KvDb::kTextCenter || mode == KvDb::kTextMid) return 0.5;
  return mode == KvDb::kTextRight ? 1 : 0;
}
/// Height above the base line, in text heights.
double heightAbove(int horizontal, int vertical) {
  if (horizontal == KvDb::kTextMid || vertical == KvDb::kTextVertMid) return 0.5;
  if (vertical == KvDb::kTextTop) return 1;
  return vertical == KvDb::kTextBottom ? -kDescent : 0;
}

}  // namespace

bool kvdbMirrText(const KvDbDatabase* database) {
  const KvDbDatabase* drawing = kvdbDatabaseOrWorking(const_cast<KvDbDatabase*>(database));
  return drawing && drawing->header().whole(L"$MIRRTEXT") != 0;
}

const KvDbField KvDbText::kFields[] = {
    kvdbMarker(L"AcDbText"),
    kvdbField<&KvDbText::thickness_>(Type::Real, 39, kUnlessDefault),
    kvdbField<&KvDbText::position_>(Type::Point, 10),
    kvdbField<&KvDbText::height_>(Type::Real, 40, kAlways, 0.2),
    kvdbField<&KvDbText::text_>(Type::Text, 1),
    kvdbField<&KvDbText::rotation_>(Type::Angle, 50, kUnlessDefault),
    kvdbField<&KvDbText::widthFactor_>(Type::Real, 41, kUnlessDefault, 1),
    kvdbField<&KvDbText::oblique_>(Type::Angle, 51, kUnlessDefault),
    kvdbField<&KvDbText::style_>(Type::TextStyleName, 7, kUnlessDefault),
    kvdbField<&KvDbText::generation_>(Type::Int16, 71, kUnlessDefault),
    kvdbField<&KvDbText::horizontalMode_>(Type::Int16, 72, kUnlessDefault, 0, 0, 5),
    kvdbField<&KvDbText::alignment_>(Type::Point, 11, kUnlessDefault),
    kvdbField<&KvDbText::normal_>(Type::Vector, 210, kUnlessDefault, 1),
};
const KvDbField KvDbText::kFieldsWithMode[] = {
    kFields[0],
    kFields[1],
    kFields[2],
    kFields[3],
    kFields[4],
    kFields[5],
    kFields[6],
    kFields[7],
    kFields[8],
    kFields[9],
    kFields[10],
    kFields[11],
    kFields[12],
    kvdbMarker(L"AcDbText"),
    kvdbField<&KvDbText::verticalMode_>(Type::Int16, 73, kUnlessDefault, 0, 0, 3),
};

void KvDbText::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  kvdbDwgOut(*this, kFieldsWithMode, filer);
}
void KvDbText::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  kvdbDwgIn(*this, kFieldsWithMode, filer);
}
void KvDbText::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  kvdbDxfOut(*this, hasOwnVerticalMode() ? KvDbFields(kFieldsWithMode) : KvDbFields(kFields), writer);
}
bool KvDbText::knowsMarker(std::wstring_view marker) const {
  return kvdbHasMarker(kFields, marker) || KvDbEntity::knowsMarker(marker);
}
bool KvDbText::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  const KvDbFields fields = hasOwnVerticalMode() ? KvDbFields(kFieldsWithMode) : KvDbFields(kFields);
  return kvdbDxfIn(*this, fields, group, marker, resolver) || KvDbEntity::dxfInGroup(group, marker, resolver);
}

KvDbText::KvDbText(const KvGePoint3d& position, const wchar_t* text, KvDbObjectId style, double height,
                   double rotation)
    : position_(position),
      height_(height > 0 && std::isfinite(height) ? height : 0.2),
      text_(text),
      rotation_(KvDbAngle::ofRadians(rotation)),
      style_(style) {}

// --- Setters

KvGePoint3d KvDbText::position() const {
  return toWorld(position_, normal_);
}
KvGePoint3d KvDbText::alignmentPoint() const {
  return toWorld(alignment_, normal_);
}

Kvad::ErrorStatus KvDbText::setPosition(const KvGePoint3d& position) {
  assertWriteEnabled();
  position_ = toPlane(position, normal_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setAlignmentPoint(const KvGePoint3d& point) {
  assertWriteEnabled();
  alignment_ = toPlane(point, normal_);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setTextString(const wchar_t* text) {
  assertWriteEnabled();
  text_ = text;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setTextStyle(KvDbObjectId style) {
  assertWriteEnabled();
  style_ = style;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setHeight(double height) {
  if (!(height > 0) || !std::isfinite(height)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  height_ = height;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setWidthFactor(double factor) {
  if (!(factor > 0) || !std::isfinite(factor)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  widthFactor_ = factor;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setOblique(double angle) {
  if (!(std::fabs(angle) <= kSteepest)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  oblique_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setRotation(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  rotation_ = KvDbAngle::ofRadians(angle);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setHorizontalMode(KvDb::TextHorzMode mode) {
  if (mode < KvDb::kTextLeft || mode > KvDb::kTextFit) return Kvad::eInvalidInput;
  assertWriteEnabled();
  horizontalMode_ = static_cast<std::int16_t>(mode);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setVerticalMode(KvDb::TextVertMode mode) {
  if (mode < KvDb::kTextBase || mode > KvDb::kTextTop) return Kvad::eInvalidInput;
  assertWriteEnabled();
  verticalMode_ = static_cast<std::int16_t>(mode);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::mirrorInX(bool mirrored) {
  assertWriteEnabled();
  generation_ = static_cast<std::int16_t>(mirrored ? generation_ | kBackward : generation_ & ~kBackward);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::mirrorInY(bool mirrored) {
  assertWriteEnabled();
  generation_ = static_cast<std::int16_t>(mirrored ? generation_ | kUpsideDown : generation_ & ~kUpsideDown);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setNormal(const KvGeVector3d& normal) {
  if (!(normal.length() > 0) || !std::isfinite(normal.length())) return Kvad::eInvalidInput;
  assertWriteEnabled();
  moveTo(position(), alignmentPoint(), normal.normal());
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::setThickness(double thickness) {
  assertWriteEnabled();
  thickness_ = thickness;
  return Kvad::eOk;
}

// --- Placing

KvGiTextLook KvDbText::look() const {
  KvGiTextLook look = kvdbLookOfStyle(style_);
  look.height = height_;
  look.widthFactor = widthFactor_;
  look.oblique = oblique();
  look.isBackward = isMirroredInX();
  look.isUpsideDown = isMirroredInY();
  return look;
}

double KvDbText::textWidth() const {
  KvGiTextLook upright = look();
  upright.isBackward = upright.isUpsideDown = false;
  return kvltMeasureLine(upright, shownText().view()).width();
}

KvDbText::Placing KvDbText::placing() const {
  Placing placing{position_, rotation(), look()};
  if (isDefaultAlignment()) return placing;
  const double width = textWidth();
  if (horizontalMode_ == KvDb::kTextAlign || horizontalMode_ == KvDb::kTextFit) {
    const KvGeVector3d span = alignment_ - position_;
    const double length = std::hypot(span.x, span.y);
    if (!(length > 0) || !(width > 0)) return placing;
    placing.angle = std::atan2(span.y, span.x);
    if (horizontalMode_ == KvDb::kTextFit)
      placing.look.widthFactor *= length / width;
    else
      placing.look.height *= length / width;
    return placing;
  }
  const double sideways = shareBefore(horizontalMode_) * width * (isMirroredInX() ? -1 : 1);
  const double up = heightAbove(horizontalMode_, verticalMode_) * height_ * (isMirroredInY() ? -1 : 1);
  const KvGeVector3d x = direction(placing.angle), y = {-x.y, x.x, 0};
  placing.start = alignment_ - x * sideways - y * up;
  return placing;
}

Kvad::ErrorStatus KvDbText::adjustAlignment(const KvDbDatabase*) {
  if (isDefaultAlignment()) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const Placing now = placing();
  position_ = now.start;
  rotation_ = KvDbAngle::ofRadians(now.angle);
  widthFactor_ = now.look.widthFactor;
  height_ = now.look.height;
  return Kvad::eOk;
}

void KvDbText::moveTo(const KvGePoint3d& start, const KvGePoint3d& alignment, const KvGeVector3d& normal) {
  normal_ = normal;
  position_ = toPlane(start, normal);
  alignment_ = toPlane(alignment, normal);
}

Kvad::ErrorStatus KvDbText::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  const Placing placed = placing();
  const KvLtLine line = kvltMeasureLine(placed.look, shownText().view());
  const KvGeVector3d x = direction(placed.angle), y = {-x.y, x.x, 0};
  KvGeBox3d box = line.box;
  if (box.isEmpty()) box.add({0, 0, 0});
  for (const KvGePoint2d corner : {KvGePoint2d(box.low.x, box.low.y), KvGePoint2d(box.high.x, box.low.y),
                                   KvGePoint2d(box.high.x, box.high.y), KvGePoint2d(box.low.x, box.high.y)}) {
    const KvGePoint3d world = toWorld(placed.start + x * corner.x + y * corner.y, normal_);
    extents.addPoint(world);
    extents.addPoint(world + normal_ * thickness_);
  }
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbText::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeMatrix3d plane = KvGeMatrix3d::planeToWorld(normal_);
  const KvGeVector3d along = direction(rotation());
  const KvGeVector3d x = matrix * (plane * along);
  const KvGeVector3d upright = KvGeVector3d(-along.y, along.x, 0) + along * std::tan(oblique());
  KvGeVector3d y = matrix * (plane * upright);
  const KvGeVector3d across = x.crossProduct(y);
  const double area = across.length();
  if (!(area > 0) || !std::isfinite(area)) return Kvad::eDegenerateGeometry;
  assertWriteEnabled();
  const bool mirrorWriting = kvdbMirrText(database());
  // Seen from the side to which the old normal goes, a mirrored text runs the wrong way round. A half turn
  // about a line in the plane is a mirror too for those who look from above.
  KvGeVector3d moved = matrix * normal_;
  const bool isHalfTurn = across.dotProduct(normal_) < 0 && moved.isParallelTo(normal_);
  if (isHalfTurn && !mirrorWriting) moved = normal_ * moved.length();
  const bool isMirrored = across.dotProduct(moved) < 0;
  const KvGeVector3d normal = across / (isMirrored ? -area : area);
  KvGeVector3d newAlong = x;
  KvGePoint3d start = matrix * position();
  KvGePoint3d alignment = matrix * alignmentPoint();
  if (isMirrored) {
    // Backwards from a turned direction, or upside down along the image of the old one: whichever is nearer
    // to how the text stood.
    const bool isTurned = x.dotProduct(plane * along) < 0;
    if (isTurned) newAlong = -x;
    if (mirrorWriting) {
      generation_ = static_cast<std::int16_t>(generation_ ^ (isTurned ? kBackward : kUpsideDown));
    } else {
      // The readable text takes the place of the mirrored one.
      const double width = textWidth();
      if (isTurned)
        start += x * width;
      else
        start += y * height_;
      const bool spansPoints = horizontalMode_ == KvDb::kTextAlign || horizontalMode_ == KvDb::kTextFit;
      if (!spansPoints && isTurned && horizontalMode_ != KvDb::kTextMid)
        alignment += x * (width * (1 - 2 * (1 - shareBefore(horizontalMode_))) * -1);
      if (!spansPoints && !isTurned)
        alignment += y * (height_ * (1 - 2 * heightAbove(horizontalMode_, verticalMode_)));
      if (spansPoints && isTurned) {
        start = matrix * alignmentPoint();
        alignment = matrix * position();
      }
    }
    if (!isTurned) y = -y;
  }
  const double length = x.length(), height = area / length;
  moveTo(start, alignment, normal);
  const KvGeMatrix3d toNewPlane = KvGeMatrix3d::worldToPlane(normal);
  const KvGeVector3d flat = toNewPlane * newAlong;
  rotation_ = KvDbAngle::ofRadians(kvge::normalizedAngle(std::atan2(flat.y, flat.x)));
  height_ *= height;
  widthFactor_ *= length / height;
  thickness_ *= moved.length();
  const KvGeVector3d unit = newAlong / length;
  const double lean = y.dotProduct(unit);
  oblique_ = KvDbAngle::ofRadians(std::clamp(std::atan2(lean, height), -kSteepest, kSteepest));
  return Kvad::eOk;
}

bool KvDbText::subWorldDraw(KvGiWorldDraw* draw) {
  if (!draw || shownText().IsEmpty()) return false;
  const Placing placed = placing();
  const KvGeMatrix3d plane = KvGeMatrix3d::planeToWorld(normal_);
  draw->geometry().text(plane * placed.start, normal_, plane * direction(placed.angle), placed.look,
                        shownText());
  return true;
}
