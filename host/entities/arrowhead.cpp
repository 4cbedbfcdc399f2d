#include "host/entities/arrowhead.h"

#include <cmath>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"

/// A standard arrow: an outline in units of the arrow's size, its tip at the origin, pointing along X.
struct KvDbArrowHead::Shape {
  enum Form : std::uint8_t {
    Filled,
    Outline,
    Lines,
    Disc,
    Circle,
    Tick,
    Box,
    BoxOutline,
    Datum,
    DatumOutline,
    Nothing
  };
  const wchar_t* name;
  Form form;
  double width;    ///< half the width at one unit of length; of discs and circles the radius
  double shorten;  ///< how much of the line the arrow takes
};

const KvDbArrowHead::Shape* KvDbArrowHead::shapeNamed(const CString& name) {
  using S = Shape;
  constexpr double kNarrow = 1.0 / 6, kTan15 = 0.26794919243112270, kTan30 = 0.57735026918962576;
  // Sizes as the standard arrows are usually drawn. Files name them with an underscore, variables without.
  static constexpr S kShapes[] = {
      {L"", S::Filled, kNarrow, 1},           {L"_CLOSEDFILLED", S::Filled, kNarrow, 1},
      {L"_CLOSED", S::Outline, kNarrow, 0},   {L"_CLOSEDBLANK", S::Outline, kNarrow, 1},
      {L"_OPEN", S::Lines, kNarrow, 0},       {L"_OPEN30", S::Lines, kTan15, 0},
      {L"_OPEN90", S::Lines, 1, 0},           {L"_DOT", S::Disc, 0.5, 0.5},
      {L"_DOTSMALL", S::Disc, 0.25, 0},       {L"_DOTBLANK", S::Circle, 0.5, 0.5},
      {L"_SMALL", S::Circle, 0.25, 0},        {L"_ORIGIN", S::Circle, 0.5, 0},
      {L"_ORIGIN2", S::Circle, 0.5, 0.5},     {L"_OBLIQUE", S::Tick, 0, 0},
      {L"_ARCHTICK", S::Tick, 0.075, 0},      {L"_NONE", S::Nothing, 0, 0},
      {L"_BOXFILLED", S::Box, 0.5, 0.5},      {L"_BOXBLANK", S::BoxOutline, 0.5, 0.5},
      {L"_DATUMFILLED", S::Datum, kTan30, 1}, {L"_DATUMBLANK", S::DatumOutline, kTan30, 1},
  };
  for (const S& each : kShapes)
    if (name.CompareNoCase(each.name) == 0 ||
        (!name.IsEmpty() && *each.name && name.CompareNoCase(each.name + 1) == 0))
      return &each;
  return nullptr;
}

KvDbArrowHead::KvDbArrowHead(KvDbObjectId block, double size)
    : block_(block), size_(size), shape_(shapeNamed(kvdbRecordName(block))) {}

KvDbArrowHead KvDbArrowHead::tick(double size) {
  return KvDbArrowHead(shapeNamed(L"_OBLIQUE"), size);
}

bool KvDbArrowHead::isTick() const {
  return shape_ && shape_->form == Shape::Tick;
}

bool KvDbArrowHead::isStroke() const {
  return shape_ && (shape_->form == Shape::Tick || shape_->form == Shape::Nothing);
}

double KvDbArrowHead::cut() const {
  return (shape_ ? shape_->shorten : block_.isValid() ? 1 : 0) * size_;
}

std::vector<std::unique_ptr<KvDbEntity>> KvDbArrowHead::parts(const KvGePoint3d& tip,
                                                              const KvGeVector3d& direction,
                                                              const KvGeVector3d& normal) const {
  using S = Shape;
  std::vector<std::unique_ptr<KvDbEntity>> made;
  if (!(size_ > 0) || direction.isZeroLength() || normal.isZeroLength()) return made;
  const KvGeVector3d x = direction * size_, y = normal.normal().crossProduct(x);
  const auto at = [&](double along, double across) { return tip + x * along + y * across; };
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(normal);
  const auto line = [&](const KvGePoint3d& a, const KvGePoint3d& b) {
    made.push_back(std::make_unique<KvDbLine>(a, b));
  };
  const auto outline = [&](std::initializer_list<KvGePoint3d> corners) {
    const KvGePoint3d* last = corners.end() - 1;
    for (const KvGePoint3d& corner : corners) {
      line(*last, corner);
      last = &corner;
    }
  };
  const auto solid = [&](const KvGePoint3d& a, const KvGePoint3d& b, const KvGePoint3d& c,
                         const KvGePoint3d& d) {
    auto filled = std::make_unique<KvDbSolid>();
    filled->setNormal(normal);
    const KvGePoint3d corners[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i) filled->setPointAt(i, corners[i]);
    made.push_back(std::move(filled));
  };
  const auto band = [&](const KvGePoint3d& a, const KvGePoint3d& b, double width, double bulge) {
    auto path = std::make_unique<KvDbPolyline>();
    path->addVertexAt(0, kvge::planar(toPlane * a), bulge);
    path->addVertexAt(1, kvge::planar(toPlane * b), bulge);
    path->setClosed(bulge != 0);
    path->setConstantWidth(width * size_);
    path->setNormal(normal);
    path->setElevation((toPlane * tip).z);
    made.push_back(std::move(path));
  };
  if (!shape_) {
    if (!block_.isValid() || !KvDbBlockTableRecord::cast(block_.stub()->object)) return made;
    auto reference = std::make_unique<KvDbBlockReference>(KvGePoint3d(), block_);
    reference->setNormal(normal);
    reference->setPosition(tip);
    reference->setScaleFactors({size_, size_, size_});
    const KvGeVector3d flat = toPlane * direction;
    reference->setRotation(KvGeVector2d(flat.x, flat.y).angle());
    made.push_back(std::move(reference));
    return made;
  }
  const double w = shape_->width;
  switch (shape_->form) {
    case S::Filled:
      solid(at(-1, w), at(-1, -w), tip, tip);
      break;
    case S::Outline:
      outline({tip, at(-1, w), at(-1, -w)});
      break;
    case S::Lines:
      line(tip, at(-1, w));
      line(tip, at(-1, -w));
      break;
    case S::Disc:
      // A closed path of two half circles as wide as the radius: its middle line runs at half of it.
      band(at(-w / 2, 0), at(w / 2, 0), w, 1);
      break;
    case S::Circle:
      made.push_back(std::make_unique<KvDbCircle>(tip, normal, w * size_));
      break;
    case S::Tick: {
      const KvGePoint3d low = at(-0.5, -0.5), high = at(0.5, 0.5);
      if (w == 0)
        line(low, high);
      else
        band(low, high, 2 * w, 0);
      break;
    }
    case S::Box:
      solid(at(-w, -w), at(w, -w), at(-w, w), at(w, w));
      break;
    case S::BoxOutline:
      outline({at(-w, -w), at(w, -w), at(w, w), at(-w, w)});
      break;
    case S::Datum:
      solid(at(0, w), at(0, -w), at(-1, 0), at(-1, 0));
      break;
    case S::DatumOutline:
      outline({at(0, w), at(0, -w), at(-1, 0)});
      break;
    case S::Nothing:
      break;
  }
  return made;
}
