#include "host/entities/mline.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/database/database.h"
#include "host/entities/curves.h"
#include "host/entities/hatch.h"

KVRX_DEFINE(KvDbMline, KvDbPartsEntity, L"MLINE")

namespace {

using Style = KvDbMlineStyle;

/// A multiline taken apart: where each element crosses each joint.
class MlineDrawing {
 public:
  MlineDrawing(const KvDbMline& mline, Style style) : mline_(mline), style_(std::move(style)) {
    vertices_ = mline.vertices();
    isClosed_ = mline.isClosed() && vertices_.size() > 2;
    const std::size_t elements = style_.elements.size();
    for (KvDbMline::Vertex& vertex : vertices_) {
      vertex.lines.resize(elements);
      vertex.fills.resize(elements);
      std::vector<KvGePoint3d>& row = joints_.emplace_back();
      for (std::size_t e = 0; e < elements; ++e)
        row.push_back(vertex.at + vertex.joint * vertex.lines[e].offset);
    }
    normal_ = mline.normal().isZeroLength() ? KvGeVector3d::kZAxis : mline.normal().normal();
    order_ = style_.byOffset();
  }

  /// How many segments there are.
  std::size_t segments() const { return isClosed_ ? vertices_.size() : vertices_.size() - 1; }
  bool isEmpty() const { return vertices_.size() < 2 || order_.empty(); }
  bool isClosed() const { return isClosed_; }
  const Style& style() const { return style_; }
  const std::vector<std::size_t>& order() const { return order_; }
  const KvGeVector3d& normal() const { return normal_; }
  const KvGePoint3d& joint(std::size_t vertex, std::size_t element) const {
    return joints_[vertex % joints_.size()][element];
  }
  std::size_t vertexCount() const { return vertices_.size(); }

  using Stretches = std::vector<std::pair<KvGePoint3d, KvGePoint3d>>;
  Stretches lines(std::size_t segment, std::size_t element) const {
    return stretches(segment, element, vertices_[segment].lines[element].places);
  }
  Stretches fills(std::size_t segment, std::size_t element) const {
    std::vector<double> places = vertices_[segment].fills[element];
    if (places.empty()) places.push_back(0);
    return stretches(segment, element, places);
  }

 private:
  Stretches stretches(std::size_t segment, std::size_t element, const std::vector<double>& places) const {
    Stretches found;
    const KvGePoint3d from = joint(segment, element), to = joint(segment + 1, element);
    const double length = from.distanceTo(to);
    if (!(length > 0)) return found;
    const KvGeVector3d along = (to - from) / length;
    const double first = places.empty() ? 0 : places.front();
    double begin = first;
    bool isDrawn = true;
    for (std::size_t i = 1; i <= std::max(places.size(), std::size_t{1}); ++i) {
      // The breaks are counted from where the line begins.
      const double end = i < places.size() ? std::min(first + places[i], length) : length;
      if (isDrawn && end > begin) found.emplace_back(from + along * begin, from + along * end);
      begin = end;
      isDrawn = !isDrawn;
    }
    return found;
  }

  const KvDbMline& mline_;
  Style style_;
  std::vector<KvDbMline::Vertex> vertices_;
  std::vector<std::vector<KvGePoint3d>> joints_;
  std::vector<std::size_t> order_;
  KvGeVector3d normal_;
  bool isClosed_ = false;
};

void setLook(KvDbEntity& part, int color, std::int32_t rgb) {
  if (rgb >= 0)
    part.setColor(KvCmEntityColor::ofRgb(static_cast<std::uint32_t>(rgb)));
  else if (color > kKvColorByBlock && color < kKvColorByLayer)
    part.setColorIndex(color);
}

/// One hatch behind the lines: a loop for each stretch of a segment, half circles for round caps.
std::unique_ptr<KvDbHatch> fillOf(const MlineDrawing& drawing, bool hasRoundStart, bool hasRoundEnd) {
  auto hatch = std::make_unique<KvDbHatch>();
  const KvGeMatrix3d toPlane = KvGeMatrix3d::worldToPlane(drawing.normal());
  hatch->setNormal(drawing.normal());
  hatch->setPattern(KvDbHatch::kPreDefined, L"SOLID");
  const std::size_t low = drawing.order().front(), high = drawing.order().back();
  hatch->setElevation((toPlane * drawing.joint(0, low)).z);
  const auto add = [&](std::initializer_list<KvGePoint3d> corners, double bulge) {
    KvGePoint2dArray points;
    KvArray<double> bulges;
    for (const KvGePoint3d& corner : corners) {
      points.append(kvge::planar(toPlane * corner));
      bulges.append(bulges.length() == 0 ? bulge : 0);
    }
    hatch->appendLoop(KvDbHatch::kExternal | KvDbHatch::kPolyline, points, bulges);
  };
  for (std::size_t segment = 0; segment < drawing.segments(); ++segment) {
    const auto below = drawing.fills(segment, low), above = drawing.fills(segment, high);
    for (std::size_t i = 0; i < std::min(below.size(), above.size()); ++i)
      add({below[i].first, below[i].second, above[i].second, above[i].first}, 0);
  }
  const std::size_t last = drawing.vertexCount() - 1;
  if (hasRoundStart) add({drawing.joint(0, high), drawing.joint(0, low)}, 1);
  if (hasRoundEnd) add({drawing.joint(last, low), drawing.joint(last, high)}, 1);
  return hatch;
}

}  // namespace

std::optional<KvDbMlineStyle> KvDbMlineStyle::of(KvDbObjectId style) {
  const auto* object = style.isValid() ? KvDbProxyObject::cast(style.stub()->object) : nullptr;
  if (!object || object->fileTypeView() != L"MLINESTYLE") return std::nullopt;
  constexpr std::size_t kMostElements = 64;
  KvDbMlineStyle found;
  for (const KvDbUnknownSection& section : object->unknownSections())
    for (const KvDxfGroup& group : section.groups) {
      Element* element = found.elements.empty() ? nullptr : &found.elements.back();
      switch (group.code) {
        case 70:
          found.flags = group.asInt();
          break;
        case 49:
          if (found.elements.size() < kMostElements)
            found.elements.push_back({group.real(), kKvColorByLayer, -1, {}});
          break;
        case 62:
          (element ? element->color : found.fillColor) = group.asInt();
          break;
        case 420:
          (element ? element->rgb : found.fillRgb) = static_cast<std::int32_t>(group.integer);
          break;
        case 6:
          if (element) element->linetype = CString(group.text);
          break;
        default:
          break;
      }
    }
  return found.elements.empty() ? std::nullopt : std::optional(found);
}

std::vector<std::size_t> KvDbMlineStyle::byOffset() const {
  std::vector<std::size_t> order(elements.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return elements[a].offset < elements[b].offset; });
  return order;
}

std::vector<KvDbMline::Vertex> KvDbMline::vertices() const {
  std::vector<Vertex> found;
  const KvDbGroupList* groups = section();
  if (!groups) return found;
  for (const KvDxfGroup& group : *groups) {
    if (group.code == 11) found.push_back({group.point, {}, {}, {}, {}});
    if (found.empty()) continue;
    Vertex& vertex = found.back();
    switch (group.code) {
      case 12:
        vertex.along = group.point.asVector();
        break;
      case 13:
        vertex.joint = group.point.asVector();
        break;
      case 74:
        vertex.lines.emplace_back();
        break;
      case 75:
        vertex.fills.emplace_back();
        break;
      case 41:
        if (!vertex.lines.empty()) vertex.lines.back().places.push_back(group.real());
        break;
      case 42:
        if (!vertex.fills.empty()) vertex.fills.back().push_back(group.real());
        break;
      default:
        break;
    }
  }
  // The first number is the element's place on the joint.
  for (Vertex& vertex : found)
    for (Breaks& line : vertex.lines) {
      if (line.places.empty()) continue;
      line.offset = line.places.front();
      line.places.erase(line.places.begin());
    }
  return found;
}

KvDbObjectId KvDbMline::styleId() const {
  return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(whole(340))))
                    : KvDbObjectId();
}

Kvad::ErrorStatus KvDbMline::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  const double factor = matrix.scale();
  rewrite([&](KvDxfGroup& group) {
    if (group.code == 10 || group.code == 11) group.point = matrix * group.point;
    if (group.code == 40 || group.code == 41 || group.code == 42) group.point.x *= factor;
    if (group.code == 12 || group.code == 13 || group.code == 210) {
      const KvGeVector3d moved = KvGeVector3d(matrix * group.point.asVector()) / factor;
      group.point = {moved.x, moved.y, moved.z};
    }
    return true;
  });
  return Kvad::eOk;
}

KvDbPartsEntity::Parts KvDbMline::makeParts() const {
  Parts parts;
  auto style = KvDbMlineStyle::of(styleId());
  if (!style) {
    // Without its style, the multiline still has its lines.
    const auto own = vertices();
    if (own.empty() || own.front().lines.empty()) return parts;
    style.emplace();
    for (const Breaks& line : own.front().lines)
      style->elements.push_back({line.offset, kKvColorByLayer, -1, {}});
  }
  const MlineDrawing drawing(*this, *style);
  if (drawing.isEmpty()) return parts;
  const std::int64_t flags = whole(71);
  const int startCaps = drawing.isClosed() || (flags & kNoStartCaps) != 0 ? 0 : style->flags;
  const int endCaps = drawing.isClosed() || (flags & kNoEndCaps) != 0 ? 0 : style->flags;
  const std::size_t last = drawing.vertexCount() - 1;
  if ((style->flags & Style::kFill) != 0) {
    auto fill = fillOf(drawing, (startCaps & Style::kStartRound) != 0, (endCaps & Style::kEndRound) != 0);
    setLook(addPart(parts, std::move(fill)), style->fillColor, style->fillRgb);
  }
  const auto addLine = [&](const KvGePoint3d& a, const KvGePoint3d& b, std::size_t element,
                           bool hasLinetype) {
    if (a.isEqualTo(b)) return;
    KvDbLine& line = addPart(parts, std::make_unique<KvDbLine>(a, b));
    const KvDbMlineStyle::Element& look = style->elements[element];
    setLook(line, look.color, look.rgb);
    if (hasLinetype && !look.linetype.IsEmpty() && look.linetype.CompareNoCase(L"BYLAYER") != 0 && database())
      if (const KvDbObjectId id = database()->recordId(KvDbTable::Linetype, look.linetype); id.isValid())
        line.setLinetype(id);
  };
  for (std::size_t segment = 0; segment < drawing.segments(); ++segment)
    for (std::size_t element = 0; element < style->elements.size(); ++element)
      for (const auto& [a, b] : drawing.lines(segment, element)) addLine(a, b, element, true);
  // Lines across: half in the look of one border, half in that of the other.
  const std::size_t low = drawing.order().front(), high = drawing.order().back();
  const auto addAcross = [&](std::size_t vertex) {
    const KvGePoint3d a = drawing.joint(vertex, low), b = drawing.joint(vertex, high),
                      middle = a + (b - a) * 0.5;
    addLine(a, middle, low, false);
    addLine(b, middle, high, false);
  };
  if ((style->flags & Style::kJoints) != 0)
    for (std::size_t vertex = drawing.isClosed() ? 0 : 1; vertex < last + (drawing.isClosed() ? 1 : 0);
         ++vertex)
      addAcross(vertex);
  if ((startCaps & Style::kStartSquare) != 0) addAcross(0);
  if ((endCaps & Style::kEndSquare) != 0) addAcross(last);
  const auto addRound = [&](std::size_t vertex, std::size_t one, std::size_t other) {
    // Counter-clockwise from one element to the other, the colours meeting in the middle.
    const KvGePoint3d a = drawing.joint(vertex, one), b = drawing.joint(vertex, other);
    const KvGePoint3d center = a + (b - a) * 0.5;
    const double radius = a.distanceTo(b) / 2;
    if (!(radius > 0)) return;
    const KvGeVector3d way = KvGeMatrix3d::worldToPlane(drawing.normal()) * (a - center);
    const double start = KvGeVector2d(way.x, way.y).angle();
    for (const std::size_t half : {0, 1}) {
      const double from = start + static_cast<double>(half) * kvge::kPi / 2;
      const KvDbMlineStyle::Element& look = style->elements[half == 0 ? one : other];
      setLook(addPart(parts,
                      std::make_unique<KvDbArc>(center, drawing.normal(), radius, kvge::normalizedAngle(from),
                                                kvge::normalizedAngle(from + kvge::kPi / 2))),
              look.color, look.rgb);
    }
  };
  const auto addRounds = [&](std::size_t vertex, bool isRound, bool hasInner, bool isEnd) {
    const auto& order = drawing.order();
    if (isRound) isEnd ? addRound(vertex, low, high) : addRound(vertex, high, low);
    if (!hasInner) return;
    for (std::size_t i = 1; i < order.size() / 2; ++i) {
      const std::size_t inner = order[i], outer = order[order.size() - 1 - i];
      isEnd ? addRound(vertex, inner, outer) : addRound(vertex, outer, inner);
    }
  };
  addRounds(0, (startCaps & Style::kStartRound) != 0, (startCaps & Style::kStartInnerArcs) != 0, false);
  addRounds(last, (endCaps & Style::kEndRound) != 0, (endCaps & Style::kEndInnerArcs) != 0, true);
  return parts;
}
