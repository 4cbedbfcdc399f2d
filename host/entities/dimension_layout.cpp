// The parts of a dimension's block.
#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/entities/internal/dimlayout.h"

namespace {

using V = KvDbDimVar;

KvGeVector2d direction(double angle) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return {cosine, sine};
}

}  // namespace

KvDbDimLayout::KvDbDimLayout(const KvDbDimension& dimension)
    : dimension_(dimension), vars_(dimension.dimVars()) {
  scale_ = vars_.real(V::Scale);
  if (!(scale_ > 0)) scale_ = 1;
  planeToWorld_ = KvGeMatrix3d::planeToWorld(dimension.normal());
  worldToPlane_ = KvGeMatrix3d::worldToPlane(dimension.normal());
  height_ = (worldToPlane_ * dimension.definition_).z;
  // The texts, measured before anything is placed.
  CString text = dimension.contentsOf(dimension.dimensionText());
  if (text.IsEmpty()) return;
  CString below;
  if (const int parted = text.Find(L"\\X"); parted >= 0) {
    below = text.Mid(parted + 2);
    text = text.Left(parted);
  }
  const auto make = [&](const CString& contents) {
    auto made = std::make_unique<KvDbMText>();
    KvDbObjectId style = vars_.id(V::TxSty);
    const KvDbDatabase* drawing = kvdbDatabaseOrWorking(dimension.database());
    if (style.isNull() && drawing) style = drawing->recordId(KvDbTable::TextStyle, L"Standard");
    double height = size(V::Txt);
    if (const auto* record = style.stub() ? KvDbTextStyleTableRecord::cast(style.stub()->object) : nullptr;
        record && record->textSize() > 0)
      height = record->textSize();
    if (!style.isNull()) made->setTextStyle(style);
    made->setTextHeight(height > 0 ? height : 1);
    made->setContents(contents);
    made->setNormal(dimension.normal());
    made->setAttachment(KvDbMText::kMiddleCenter);
    fillBehind(*made);
    return made;
  };
  upper_ = make(text);
  textWidth_ = upper_->actualWidth();
  textHeight_ = std::max(upper_->actualHeight(), upper_->textHeight());
  if (below.IsEmpty()) return;
  lower_ = make(below);
  textWidth_ = std::max(textWidth_, lower_->actualWidth());
}

void KvDbDimLayout::fillBehind(KvDbMText& text) const {
  enum { kNothing = 0, kBackground = 1, kColor = 2 };
  const int fill = vars_.whole(V::Tfill);
  if (fill != kBackground && fill != kColor) return;
  // As far beyond the text as the gap.
  const double border = 1 + std::fabs(size(V::Gap)) / text.textHeight();
  if (fill == kBackground)
    text.setBackgroundFillAsGround(border);
  else
    text.setBackgroundFill(KvCmEntityColor::ofIndex(std::clamp(vars_.whole(V::TfillClr), 0, kKvColorByLayer)),
                           border);
}

KvGePoint2d KvDbDimLayout::inPlane(const KvGePoint3d& world) const {
  return kvge::planar(worldToPlane_ * world);
}

KvGePoint3d KvDbDimLayout::toWorld(KvGePoint2d p) const {
  return planeToWorld_ * KvGePoint3d(p.x, p.y, height_);
}

template <class T>
T& KvDbDimLayout::add(std::unique_ptr<T> part, KvDbDimVar color) {
  T& own = *part;
  part->setLayer(dimension_.layerId());
  if (dimension_.database()) part->setLayer(dimension_.database()->layerZero());
  const int index = vars_.whole(color);
  part->setColorIndex(index >= 0 && index <= kKvColorByLayer ? index : kKvColorByBlock);
  if (color != V::ClrT)
    part->setLineWeight(static_cast<KvDb::LineWeight>(vars_.whole(color == V::ClrE ? V::Lwe : V::Lwd)));
  parts_.push_back(std::move(part));
  return own;
}

void KvDbDimLayout::line(KvGePoint2d from, KvGePoint2d to, bool isExtension, int which) {
  if (from.isEqualTo(to)) return;
  KvDbLine& made =
      add(std::make_unique<KvDbLine>(toWorld(from), toWorld(to)), isExtension ? V::ClrE : V::ClrD);
  const KvDbObjectId linetype = vars_.id(!isExtension ? V::Ltype : which == 2 ? V::LtEx2 : V::LtEx1);
  if (!linetype.isNull()) made.setLinetype(linetype);
}

void KvDbDimLayout::arc(KvGePoint2d center, double radius, double start, double sweep) {
  if (!(radius > 0) || !(sweep > 0)) return;
  add(std::make_unique<KvDbArc>(toWorld(center), dimension_.normal(), radius, kvge::normalizedAngle(start),
                                kvge::normalizedAngle(start + sweep)),
      V::ClrD);
}

void KvDbDimLayout::extension(KvGePoint2d measured, KvGePoint2d foot, int which) {
  if (vars_.on(which == 2 ? V::Se2 : V::Se1)) return;
  const KvGeVector2d way = foot - measured;
  const double length = way.length();
  if (length <= 1e-9) return;
  const KvGeVector2d along = way / length;
  double begin = size(V::Exo);
  if (vars_.on(V::FxlOn)) begin = std::max(begin, length - size(V::Fxl));
  if (begin >= length + size(V::Exe)) return;
  line(measured + along * begin, foot + along * size(V::Exe), true, which);
}

bool KvDbDimLayout::isTick() const {
  return vars_.real(V::Tsz) > 0;
}

KvDbObjectId KvDbDimLayout::arrowBlock(int which) const {
  return vars_.on(V::Sah) ? vars_.id(which == 2 ? V::Blk2 : V::Blk1) : vars_.id(V::Blk);
}

double KvDbDimLayout::arrowLength() const {
  return isTick() ? size(V::Tsz) : size(V::Asz);
}

KvDbArrowHead KvDbDimLayout::head(int which) const {
  return isTick() ? KvDbArrowHead::tick(arrowLength()) : KvDbArrowHead(arrowBlock(which), arrowLength());
}

bool KvDbDimLayout::isStroke(int which) const {
  return head(which).isStroke();
}

double KvDbDimLayout::arrowCut(int which) const {
  const KvDbArrowHead arrow = head(which);
  return arrow.isTick() ? -size(V::Dle) : arrow.cut();
}

void KvDbDimLayout::arrow(KvGePoint2d tip, KvGeVector2d point, int which) {
  const KvGeVector3d way = planeToWorld_ * KvGeVector3d(point.x, point.y, 0);
  for (auto& part : head(which).parts(toWorld(tip), way, dimension_.normal())) add(std::move(part), V::ClrD);
}

double KvDbDimLayout::readable(double angle) const {
  // Seen with the dimension's horizontal direction level: from below, or from the right.
  constexpr double kSlack = 1e-9;
  double turned = kvge::normalizedAngle(angle - level());
  if (turned > kvge::kPi / 2 + kSlack && turned <= 3 * kvge::kPi / 2 + kSlack) turned -= kvge::kPi;
  // Read from right to left, a text stands on its head.
  return turned + level() + (vars_.on(V::TxtDirection) ? kvge::kPi : 0);
}

KvGeVector2d KvDbDimLayout::above(double angle) const {
  return direction(readable(angle)).perpVector();
}

void KvDbDimLayout::text(KvGePoint2d middle, double angle) {
  middle_ = {middle.x, middle.y, height_};
  if (!upper_) return;
  if (const double own = dimension_.textRotation(); own != 0) angle = own + level();
  angle = readable(angle);
  const KvGeVector2d up = direction(angle).perpVector();
  const double gap = std::fabs(size(V::Gap));
  const auto place = [&](std::unique_ptr<KvDbMText> part, KvGePoint2d at) {
    part->setLocation(toWorld(at));
    part->setDirection(planeToWorld_ * KvGeVector3d(std::cos(angle), std::sin(angle), 0));
    add(std::move(part), V::ClrT);
  };
  if (lower_) {
    // What stands below the line is as far from it as what stands above.
    const double drop = textHeight_ / 2 + lower_->textHeight() / 2 + 2 * gap;
    place(std::move(lower_), middle - up * drop);
  }
  place(std::move(upper_), middle);
  if (size(V::Gap) >= 0) return;
  // A gap below 0 asks for a frame.
  const KvGeVector2d x = direction(angle) * (textWidth_ / 2 + gap), y = up * (textHeight_ / 2 + gap);
  const KvGePoint2d corners[] = {middle - x - y, middle + x - y, middle + x + y, middle - x + y};
  for (int i = 0; i < 4; ++i) line(corners[i], corners[(i + 1) % 4]);
}

void KvDbDimLayout::definitionPoint(KvGePoint2d at) {
  const KvDbDatabase* drawing = dimension_.database();
  const KvDbObjectId layer = drawing ? drawing->recordId(KvDbTable::Layer, L"Defpoints") : KvDbObjectId();
  if (drawing && layer.isNull()) return;
  KvDbPoint& made = add(std::make_unique<KvDbPoint>(toWorld(at)), V::ClrD);
  if (!layer.isNull()) made.setLayer(layer);
}

void KvDbDimLayout::centerMark(KvGePoint2d center, double radius) {
  const double mark = std::fabs(size(V::Cen));
  if (!(mark > 0)) return;
  for (const KvGeVector2d way : {KvGeVector2d::kXAxis, KvGeVector2d::kYAxis}) {
    line(center - way * mark, center + way * mark);
    // Below 0: centre lines beyond the circle as well.
    if (vars_.real(V::Cen) >= 0 || radius <= 2 * mark) continue;
    line(center + way * (2 * mark), center + way * (radius + mark));
    line(center - way * (2 * mark), center - way * (radius + mark));
  }
}
