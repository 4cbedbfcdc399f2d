#include "host/entities/mtext.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/database/embedded.h"
#include "host/entities/curves.h"
#include "host/entities/text.h"
#include "host/entities/textstyle.h"

KVRX_DEFINE(KvDbMText, KvDbEntity, L"MTEXT")

namespace {

enum ColumnType { kNoColumns, kStaticColumns, kDynamicColumns };

constexpr std::wstring_view kMarker = L"AcDbMText";
/// Files hold the contents in pieces of this many characters.
constexpr std::size_t kPiece = 250;
constexpr double kLeastSpacing = 0.25, kGreatestSpacing = 4;
constexpr int kFillColor = 1, kFillBackground = 2;

bool isLength(double value) {
  return value > 0 && std::isfinite(value);
}

/// The part of a vector that lies in a plane, of length 1; the plane's X axis when nothing lies in it.
KvGeVector3d inPlane(const KvGeVector3d& v, const KvGeVector3d& normal) {
  const KvGeVector3d flat = v - normal * v.dotProduct(normal);
  const double length = flat.length();
  return length > 1e-12 * v.length() && std::isfinite(length) ? flat / length : normal.perpVector();
}

}  // namespace

// --- Setters

Kvad::ErrorStatus KvDbMText::setContents(const wchar_t* contents) {
  assertWriteEnabled();
  contents_ = contents;
  return Kvad::eOk;
}

CString KvDbMText::plainText() const {
  return kvltPlainText(contents_.view());
}

Kvad::ErrorStatus KvDbMText::setLocation(const KvGePoint3d& location) {
  assertWriteEnabled();
  location_ = location;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setNormal(const KvGeVector3d& normal) {
  if (!isLength(normal.length())) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const double angle = rotation();
  normal_ = normal / normal.length();
  direction_ = normal_.perpVector();
  direction_.rotateBy(angle, normal_);
  hasDirectionAsRead_ = true;
  return Kvad::eOk;
}

KvGeVector3d KvDbMText::direction() const {
  return inPlane(direction_, normal_);
}

Kvad::ErrorStatus KvDbMText::setDirection(const KvGeVector3d& direction) {
  if (!isLength(direction.length())) return Kvad::eInvalidInput;
  assertWriteEnabled();
  direction_ = inPlane(direction, normal_);
  hasDirectionAsRead_ = true;
  return Kvad::eOk;
}

double KvDbMText::rotation() const {
  return normal_.perpVector().angleTo(direction(), normal_);
}

Kvad::ErrorStatus KvDbMText::setRotation(double angle) {
  if (!std::isfinite(angle)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  const auto [sine, cosine] = kvge::sinCos(angle);
  const KvGeVector3d x = normal_.perpVector();
  direction_ = x * cosine + normal_.crossProduct(x) * sine;
  hasDirectionAsRead_ = true;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setWidth(double width) {
  if (!(width >= 0) || !std::isfinite(width)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  width_ = width;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setTextHeight(double height) {
  if (!isLength(height)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  height_ = height;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setAttachment(AttachmentPoint attachment) {
  if (attachment < kTopLeft || attachment > kBottomRight) return Kvad::eInvalidInput;
  assertWriteEnabled();
  attachment_ = static_cast<std::int16_t>(attachment);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setTextStyle(KvDbObjectId style) {
  assertWriteEnabled();
  style_ = style;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setLineSpacingStyle(LineSpacingStyle style) {
  if (style != kAtLeast && style != kExactly) return Kvad::eInvalidInput;
  assertWriteEnabled();
  spacingStyle_ = static_cast<std::int16_t>(style);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setLineSpacingFactor(double factor) {
  if (!(factor >= kLeastSpacing && factor <= kGreatestSpacing)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  spacing_ = factor;
  return Kvad::eOk;
}

// --- Layout and drawing

KvGiTextLook KvDbMText::look() const {
  KvGiTextLook look = kvdbLookOfStyle(style_);
  look.height = height_;
  look.isBackward = look.isUpsideDown = look.isVertical = false;
  return look;
}

KvLtParagraphs KvDbMText::layout() const {
  KvLtParagraphLook paragraphs;
  paragraphs.look = look();
  paragraphs.width = width_;
  paragraphs.attachment = attachment_;
  paragraphs.lineSpacing = spacing_;
  paragraphs.isSpacingExact = spacingStyle_ == kExactly;
  paragraphs.columns = columns();
  return kvltLayParagraphs(paragraphs, contents_.view());
}

KvLtColumns KvDbMText::columns() const {
  constexpr int kType = 71, kCount = 72, kAutomatic = 73, kReversed = 74;
  KvLtColumns columns;
  ColumnType type = kNoColumns;
  bool isEmbedded = false, isAutomatic = false;
  double definedHeight = 0;
  for (const KvDbUnknownSection& section : unknownSections()) {
    if (section.marker.view() != kMarker) continue;
    for (const KvDxfGroup& group : section.groups) {
      isEmbedded = isEmbedded || group.code == kvdxfEmbedded;
      if (!isEmbedded) continue;
      if (group.code == 41) definedHeight = group.real();
      if (group.code == 44) columns.width = group.real();
      if (group.code == 45) columns.gutter = group.real();
      if (group.code == 46) columns.heights.push_back(group.real());
      if (group.code == kType) type = static_cast<ColumnType>(group.integer);
      if (group.code == kCount)
        columns.most = static_cast<int>(std::clamp<std::int64_t>(group.integer, 0, 1000));
      if (group.code == kAutomatic) isAutomatic = group.integer != 0;
      if (group.code == kReversed) columns.isReversed = group.integer != 0;
    }
  }
  if (type != kStaticColumns && type != kDynamicColumns) return {};
  columns.isFixed = type == kStaticColumns;
  // Columns whose heights aren't given one by one are as high as the text is told to be.
  if (columns.isFixed || isAutomatic || columns.heights.empty()) columns.heights.assign(1, definedHeight);
  if (!columns.isFixed && isAutomatic) columns.most = 0;
  return columns;
}

void KvDbMText::scaleColumns(double along, double across) {
  if (unknownSections().empty()) return;
  for (KvDbUnknownSection& section : editUnknownSections()) {
    if (section.marker.view() != kMarker) continue;
    std::vector<KvDxfGroup> groups;
    bool isEmbedded = false;
    for (KvDxfGroup group : section.groups) {
      isEmbedded = isEmbedded || group.code == kvdxfEmbedded;
      const bool isAlong = group.code == 40 || group.code == 42 || group.code == 44 || group.code == 45;
      const bool isAcross = group.code == 41 || group.code == 43 || group.code == 46;
      if (isEmbedded && isAlong) group.point.x *= along;
      if (isEmbedded && isAcross) group.point.x *= across;
      groups.push_back(group);
    }
    section.groups = KvDbGroupList(groups);
  }
}

KvGePoint3d KvDbMText::toWorld(KvGePoint2d p) const {
  const KvGeVector3d x = direction();
  return location_ + x * p.x + normal_.crossProduct(x) * p.y;
}

void KvDbMText::explodeFragments(const std::function<bool(const KvDbMTextFragment&)>& take) const {
  if (!take) return;
  const KvGeVector3d x = direction();
  for (const KvLtRun& run : layout().runs)
    if (!take({toWorld(run.at), normal_, x, CString(run.text), run.look, run.width, run.colorIndex, run.rgb}))
      return;
}

Kvad::ErrorStatus KvDbMText::explode(KvDbVoidPtrArray& entities) const {
  const KvLtParagraphs laid = layout();
  if (laid.runs.empty() && laid.bars.empty()) return Kvad::eNoContent;
  const double angle = rotation();
  const auto add = [&](KvDbEntity* entity, int colorIndex) {
    entity->setPropertiesFrom(this);
    if (colorIndex >= 0) entity->setColorIndex(colorIndex);
    entities.append(entity);
  };
  for (const KvLtRun& run : laid.runs) {
    auto* text = new KvDbText;
    text->setNormal(normal_);
    text->setPosition(toWorld(run.at));
    text->setTextString(CString(run.text));
    text->setTextStyle(style_);
    text->setHeight(run.look.height);
    text->setWidthFactor(run.look.widthFactor);
    text->setOblique(run.look.oblique);
    text->setRotation(angle);
    add(text, run.colorIndex);
  }
  for (const KvLtParagraphs::Bar& bar : laid.bars)
    add(new KvDbLine(toWorld(bar.bar.from), toWorld(bar.bar.to)), bar.colorIndex);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::getGeomExtents(KvDbExtents& extents) const {
  extents = KvDbExtents();
  const KvLtParagraphs laid = layout();
  for (KvGePoint2d corner :
       {laid.low, laid.high, KvGePoint2d(laid.low.x, laid.high.y), KvGePoint2d(laid.high.x, laid.low.y)})
    extents.addPoint(toWorld(corner));
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::transformBy(const KvGeMatrix3d& matrix) {
  const KvGeVector3d along = direction(), up = normal_.crossProduct(along);
  const KvGeVector3d x = matrix * along, y = matrix * up;
  const KvGeVector3d across = x.crossProduct(y);
  const double area = across.length(), length = x.length();
  if (!isLength(area) || !isLength(length)) return Kvad::eDegenerateGeometry;
  assertWriteEnabled();
  const double scale = area / length;
  KvGeVector3d moved = matrix * normal_;
  // A half turn about a line in the plane is a mirror for those who look from above.
  const bool isHalfTurn = across.dotProduct(normal_) < 0 && moved.isParallelTo(normal_);
  if (isHalfTurn && !kvdbMirrText(database())) moved = normal_ * moved.length();
  const bool isMirrored = across.dotProduct(moved) < 0;
  location_ = matrix * location_;
  normal_ = across / (isMirrored ? -area : area);
  direction_ = x / length;
  if (isMirrored) {
    // Paragraph text is never mirror writing: it takes the place of its image.
    const int column = (attachment_ - 1) % 3, row = (attachment_ - 1) / 3;
    const bool isTurned = x.dotProduct(along) < 0;
    if (isTurned) direction_ = -direction_;
    attachment_ =
        static_cast<std::int16_t>(isTurned ? row * 3 + (2 - column) + 1 : (2 - row) * 3 + column + 1);
  }
  hasDirectionAsRead_ = true;
  height_ *= scale;
  width_ *= length;
  scaleColumns(length, scale);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setBackgroundFill(const KvCmEntityColor& color, double border) {
  constexpr double kWidest = 5;
  constexpr int kForeground = 7;  // stands beside red, green, blue
  const bool isRgb = color.colorMethod() == KvCmEntityColor::kByColor;
  if (!(border > 0)) return Kvad::eInvalidInput;
  assertWriteEnabled();
  fill_ = kFillColor;
  fillColor_ = isRgb ? kForeground : color.colorIndex();
  fillRgb_ = isRgb ? static_cast<std::int32_t>(color.rgb()) : -1;
  fillScale_ = std::clamp(border, 1.0, kWidest);
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbMText::setBackgroundFillAsGround(double border) {
  constexpr int kForeground = 7;
  if (const auto status = setBackgroundFill(KvCmEntityColor::ofIndex(kForeground), border);
      status != Kvad::eOk)
    return status;
  fill_ = kFillColor | kFillBackground;
  return Kvad::eOk;
}

void KvDbMText::drawBackground(KvGiWorldDraw& draw, const KvLtParagraphs& laid) const {
  constexpr int kFrame = 16;
  const bool isGround = (fill_ & kFillBackground) != 0, hasFrame = (fill_ & kFrame) != 0;
  const bool isColor = (fill_ & kFillColor) != 0 && !isGround && fillColor_ >= 0;
  if (!isColor && !isGround && !hasFrame) return;
  const double margin = height_ * std::max((fillScale_ > 0 ? fillScale_ : 1.5) - 1, 0.0);
  const KvGePoint2d low{laid.low.x - margin, laid.low.y - margin},
      high{laid.high.x + margin, laid.high.y + margin};
  const KvGePoint3d corners[] = {toWorld(low), toWorld({high.x, low.y}), toWorld(high),
                                 toWorld({low.x, high.y}), toWorld(low)};
  if (isGround) draw.geometry().mask(4, corners);
  if (hasFrame) draw.geometry().polyline(5, corners);
  if (!isColor) return;
  KvGiSubEntityTraits& traits = draw.subEntityTraits();
  const KvCmEntityColor before = traits.trueColor();
  traits.setTrueColor(fillRgb_ >= 0 ? KvCmEntityColor::ofRgb(static_cast<std::uint32_t>(fillRgb_))
                                    : KvCmEntityColor::ofIndex(std::min(fillColor_, kKvColorByLayer)));
  const int count = 4;
  draw.geometry().polyPolygon(1, &count, corners);
  traits.setTrueColor(before);
}

bool KvDbMText::subWorldDraw(KvGiWorldDraw* draw) {
  if (!draw || contents_.IsEmpty()) return false;
  const KvLtParagraphs laid = layout();
  drawBackground(*draw, laid);
  KvGiSubEntityTraits& traits = draw->subEntityTraits();
  const KvCmEntityColor own = traits.trueColor();
  const auto setColor = [&](int index, std::int64_t rgb) {
    traits.setTrueColor(rgb >= 0     ? KvCmEntityColor::ofRgb(static_cast<std::uint32_t>(rgb))
                        : index >= 0 ? KvCmEntityColor::ofIndex(index)
                                     : own);
  };
  const KvGeVector3d x = direction();
  for (const KvLtRun& run : laid.runs) {
    setColor(run.colorIndex, run.rgb);
    if (draw->geometry().text(toWorld(run.at), normal_, x, run.look, CString(run.text))) return true;
  }
  for (const KvLtParagraphs::Bar& bar : laid.bars) {
    setColor(bar.colorIndex, bar.rgb);
    const KvGePoint3d ends[] = {toWorld(bar.bar.from), toWorld(bar.bar.to)};
    draw->geometry().polyline(2, ends);
  }
  traits.setTrueColor(own);
  return true;
}

// --- Filing

void KvDbMText::dwgOutFields(KvDbDwgFiler& filer) const {
  KvDbEntity::dwgOutFields(filer);
  filer.writePoint3d(location_);
  for (double v : {height_, width_, spacing_, fillScale_, rotationAsRead_}) filer.writeDouble(v);
  for (std::int16_t v : {attachment_, drawingDirection_, spacingStyle_}) filer.writeInt16(v);
  filer.writeString(contents_);
  filer.writeId(style_, KvDbReference::HardPointer);
  filer.writeVector3d(normal_);
  filer.writeVector3d(direction_);
  for (std::int32_t v : {fill_, fillColor_, fillRgb_}) filer.writeInt32(v);
  for (bool v : {hasRotationAsRead_, hasSpacingAsRead_, hasDirectionAsRead_}) filer.writeBool(v);
}

void KvDbMText::dwgInFields(KvDbDwgFiler& filer) {
  KvDbEntity::dwgInFields(filer);
  location_ = filer.readPoint3d();
  for (double* v : {&height_, &width_, &spacing_, &fillScale_, &rotationAsRead_}) *v = filer.readDouble();
  for (std::int16_t* v : {&attachment_, &drawingDirection_, &spacingStyle_}) *v = filer.readInt16();
  contents_ = filer.readString();
  style_ = filer.readId(KvDbReference::HardPointer);
  normal_ = filer.readVector3d();
  direction_ = filer.readVector3d();
  for (std::int32_t* v : {&fill_, &fillColor_, &fillRgb_}) *v = filer.readInt32();
  for (bool* v : {&hasRotationAsRead_, &hasSpacingAsRead_, &hasDirectionAsRead_}) *v = filer.readBool();
}

bool KvDbMText::knowsMarker(std::wstring_view marker) const {
  return marker == kMarker || KvDbEntity::knowsMarker(marker);
}

void KvDbMText::dxfOutFields(KvDxfWriter& writer) const {
  KvDbEntity::dxfOutFields(writer);
  writer.marker(kMarker);
  writer.point(10, location_);
  writer.real(40, height_);
  writer.real(41, width_);
  writer.integer(71, attachment_);
  writer.integer(72, drawingDirection_);
  std::wstring_view rest = contents_.view();
  while (rest.size() > kPiece) {
    writer.text(3, rest.substr(0, kPiece));
    rest.remove_prefix(kPiece);
  }
  writer.text(1, rest);
  if (!style_.isNull()) writer.text(7, kvdbRecordNameView(style_));
  if (!(normal_ == KvGeVector3d::kZAxis)) writer.vector(210, normal_);
  const bool isTurned = !(direction_ == KvGeVector3d::kXAxis);
  if (hasRotationAsRead_ && !hasDirectionAsRead_)
    writer.real(50, rotationAsRead_);
  else if (isTurned || hasDirectionAsRead_)
    writer.vector(11, direction_);
  if (hasSpacingAsRead_ || spacingStyle_ != kAtLeast || spacing_ != 1) {
    writer.integer(73, spacingStyle_);
    writer.real(44, spacing_);
  }
  if (fill_ != 0) writer.integer(90, fill_);
  if (fillColor_ >= 0) writer.integer(63, fillColor_);
  if (fillRgb_ >= 0) writer.integer(421, fillRgb_);
  if (fillScale_ != 0) writer.real(45, fillScale_);
  writer.noteFlushed(kMarker);
  bool isEmbedded = false;
  for (const KvDbUnknownSection& section : unknownSections()) {
    if (section.marker.view() != kMarker) continue;
    for (KvDxfGroup group : section.groups) {
      isEmbedded = isEmbedded || group.code == kvdxfEmbedded;
      // The record of columns tells place and direction once more.
      if (isEmbedded && group.code == 10) group.point = KvGePoint3d() + direction();
      if (isEmbedded && group.code == 11) group.point = location_;
      writer.group(group);
    }
  }
}

bool KvDbMText::dxfInGroup(const KvDxfGroup& group, std::wstring_view marker, KvDxfResolver& resolver) {
  if (!marker.empty() && marker != kMarker) return KvDbEntity::dxfInGroup(group, marker, resolver);
  const auto whole = [&](std::int16_t& to, int low, int high) {
    if (group.integer >= low && group.integer <= high) to = static_cast<std::int16_t>(group.integer);
    return true;
  };
  const auto number = [&](double& to, bool mayBeZero) {
    if (std::isfinite(group.real()) && (group.real() > 0 || mayBeZero)) to = group.real();
    return true;
  };
  switch (group.code) {
    case 10:
      location_ = group.point;
      return true;
    case 40:
      return number(height_, false);
    case 41:
      return number(width_, true);
    case 71:
      return whole(attachment_, kTopLeft, kBottomRight);
    case 72:
      return whole(drawingDirection_, 0, 10);
    case 3:
    case 1:
      contents_.Append(group.text);
      return true;
    case 7:
      style_ = resolver.textStyle(group.text);
      return true;
    case 210:
      normal_ = group.point.asVector();
      return true;
    case 11:
      direction_ = group.point.asVector();
      hasDirectionAsRead_ = true;
      hasRotationAsRead_ = false;
      return true;
    case 50:
      rotationAsRead_ = group.real();
      hasRotationAsRead_ = std::isfinite(rotationAsRead_);
      hasDirectionAsRead_ = false;
      return true;
    case 73:
      hasSpacingAsRead_ = true;
      return whole(spacingStyle_, kAtLeast, kExactly);
    case 44:
      hasSpacingAsRead_ = true;
      return number(spacing_, false);
    case 90:
      fill_ = static_cast<std::int32_t>(group.integer);
      return true;
    case 63:
      fillColor_ = static_cast<std::int32_t>(group.integer);
      return fillColor_ >= 0;
    case 421:
      fillRgb_ = static_cast<std::int32_t>(group.integer);
      return fillRgb_ >= 0;
    case 45:
      return number(fillScale_, false);
    default:
      return KvDbEntity::dxfInGroup(group, marker, resolver);
  }
}

void KvDbMText::dxfInEnd(KvDxfResolver& resolver) {
  KvDbEntity::dxfInEnd(resolver);
  if (!isLength(normal_.length())) normal_ = KvGeVector3d::kZAxis;
  if (!isLength(direction_.length())) direction_ = KvGeVector3d::kXAxis;
  if (!hasRotationAsRead_) return;
  const auto [sine, cosine] = kvge::sinCos(kvdxfRadians(rotationAsRead_));
  const KvGeVector3d x = normal_.perpVector();
  direction_ = x * cosine + normal_.crossProduct(x) * sine;
}
