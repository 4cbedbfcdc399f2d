// The parts of a dimension's block.
#include <algorithm>
#include <cmath>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/blockreference.h"
#include "host/entities/internal/dimlayout.h"
#include "host/entities/polyline.h"
#include "host/geometry/polyline.h"

namespace {

using V = KvDbDimVar;

KvGeVector2d direction(double angle) {
  const auto [sine, cosine] = kvge::sinCos(angle);
  return {cosine, sine};
}

const KvDbBlockTableRecord* blockOf(KvDbObjectId id) {
  return id.isValid() ? KvDbBlockTableRecord::cast(id.stub()->object) : nullptr;
}

}  // namespace

/// A standard arrow: an outline in units of the arrow's size, its tip at the origin, pointing along X.
struct KvDbDimLayout::ArrowShape {
  enum Form : std::uint8_t { Filled, Outline, Lines, Disc, Circle, Tick, Nothing };
  const wchar_t* name;
  Form form;
  double width;    ///< half the width at one unit of length; of discs and circles the radius
  double center;   ///< of discs and circles, along X
  double shorten;  ///< how much of the dimension line the arrow takes
};

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
    text.setBackgroundFill(std::clamp(vars_.whole(V::TfillClr), 0, kKvColorByLayer), border);
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

const KvDbDimLayout::ArrowShape* KvDbDimLayout::shapeOf(int which) const {
  using S = ArrowShape;
  // Sizes as the standard arrows are usually drawn.
  static constexpr S kShapes[] = {
      {L"", S::Filled, 1.0 / 6, 0, 1},         {L"_CLOSEDFILLED", S::Filled, 1.0 / 6, 0, 1},
      {L"_CLOSED", S::Outline, 1.0 / 6, 0, 0}, {L"_CLOSEDBLANK", S::Outline, 1.0 / 6, 0, 1},
      {L"_OPEN", S::Lines, 1.0 / 6, 0, 0},     {L"_OPEN30", S::Lines, 0.26794919, 0, 0},
      {L"_OPEN90", S::Lines, 1, 0, 0},         {L"_DOT", S::Disc, 0.5, 0, 0.5},
      {L"_DOTSMALL", S::Disc, 0.25, 0, 0},     {L"_DOTBLANK", S::Circle, 0.5, 0, 0.5},
      {L"_SMALL", S::Circle, 0.25, 0, 0},      {L"_ORIGIN", S::Circle, 0.5, 0, 0},
      {L"_ORIGIN2", S::Circle, 0.5, 0, 0.5},   {L"_OBLIQUE", S::Tick, 0, 0, 0},
      {L"_ARCHTICK", S::Tick, 0.075, 0, 0},    {L"_NONE", S::Nothing, 0, 0, 0},
      {L"_BOXFILLED", S::Filled, 0.5, 1, 1},   {L"_BOXBLANK", S::Outline, 0.5, 1, 1},
  };
  const CString name = isTick() ? CString(L"_OBLIQUE") : kvdbRecordName(arrowBlock(which));
  for (const S& each : kShapes)
    if (name.CompareNoCase(each.name) == 0 ||
        (name.GetLength() > 0 && name.CompareNoCase(each.name + (*each.name ? 1 : 0)) == 0))
      return &each;
  return nullptr;
}

bool KvDbDimLayout::isStroke(int which) const {
  const ArrowShape* shape = shapeOf(which);
  return shape && (shape->form == ArrowShape::Tick || shape->form == ArrowShape::Nothing);
}

double KvDbDimLayout::arrowCut(int which) const {
  const ArrowShape* shape = shapeOf(which);
  if (shape && shape->form == ArrowShape::Tick) return -size(V::Dle);
  if (!shape && !blockOf(arrowBlock(which))) return 0;
  return (shape ? shape->shorten : 1) * arrowLength();
}

void KvDbDimLayout::arrow(KvGePoint2d tip, KvGeVector2d point, int which) {
  using S = ArrowShape;
  const double unit = arrowLength();
  if (!(unit > 0)) return;
  const KvGeVector2d x = point * unit, y = x.perpVector();
  const auto at = [&](double along, double across) { return tip + x * along + y * across; };
  const S* shape = shapeOf(which);
  const KvDbObjectId block = arrowBlock(which);
  if (!shape) {
    // An arrow of the user's own: a block one unit long, pointing along X.
    if (!blockOf(block)) return;
    auto reference = std::make_unique<KvDbBlockReference>(KvGePoint3d(), block);
    reference->setNormal(dimension_.normal());
    reference->setPosition(toWorld(tip));
    reference->setScaleFactors({unit, unit, unit});
    reference->setRotation(point.angle());
    add(std::move(reference), V::ClrD);
    return;
  }
  const double w = shape->width;
  const auto solid = [&](KvGePoint2d a, KvGePoint2d b, KvGePoint2d c, KvGePoint2d d) {
    auto made = std::make_unique<KvDbSolid>();
    made->setNormal(dimension_.normal());
    const KvGePoint2d corners[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i) made->setPointAt(i, toWorld(corners[i]));
    add(std::move(made), V::ClrD);
  };
  switch (shape->form) {
    case S::Filled:
      if (shape->center > 0)
        solid(at(-1, -w), at(0, -w), at(-1, w), at(0, w));
      else
        solid(at(-1, w), at(-1, -w), tip, tip);
      break;
    case S::Outline:
      if (shape->center > 0) {
        line(at(0, -w), at(0, w));
        line(at(-1, -w), at(0, -w));
        line(at(-1, w), at(0, w));
        line(at(-1, -w), at(-1, w));
      } else {
        line(tip, at(-1, w));
        line(tip, at(-1, -w));
        line(at(-1, w), at(-1, -w));
      }
      break;
    case S::Lines:
      line(tip, at(-1, w));
      line(tip, at(-1, -w));
      break;
    case S::Disc: {
      // A closed path of two half circles as wide as the radius: its middle line runs at half of it.
      auto disc = std::make_unique<KvDbPolyline>();
      const KvGePoint2d left = at(-w / 2, 0), right = at(w / 2, 0);
      disc->addVertexAt(0, left, 1);
      disc->addVertexAt(1, right, 1);
      disc->setClosed(true);
      disc->setConstantWidth(w * unit);
      disc->setNormal(dimension_.normal());
      disc->setElevation(height_);
      add(std::move(disc), V::ClrD);
      break;
    }
    case S::Circle:
      add(std::make_unique<KvDbCircle>(toWorld(tip), dimension_.normal(), w * unit), V::ClrD);
      break;
    case S::Tick: {
      const KvGeVector2d slope = (x + y) * 0.5;
      if (w == 0) {
        line(tip - slope, tip + slope);
      } else {
        auto thick = std::make_unique<KvDbPolyline>();
        thick->addVertexAt(0, tip - slope);
        thick->addVertexAt(1, tip + slope);
        thick->setConstantWidth(2 * w * unit);
        thick->setNormal(dimension_.normal());
        thick->setElevation(height_);
        add(std::move(thick), V::ClrD);
      }
      break;
    }
    case S::Nothing:
      break;
  }
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
