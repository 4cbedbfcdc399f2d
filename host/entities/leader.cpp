#include "host/entities/leader.h"

#include <algorithm>
#include <cmath>

#include "host/database/database.h"
#include "host/entities/arrowhead.h"
#include "host/entities/curves.h"
#include "host/entities/spline.h"
#include "host/geometry/nurb.h"

KVRX_DEFINE(KvDbLeader, KvDbPartsEntity, L"LEADER")

namespace {

using V = KvDbDimVar;

/// Points without those that repeat the one before.
std::vector<KvGePoint3d> distinct(const std::vector<KvGePoint3d>& points) {
  std::vector<KvGePoint3d> kept;
  for (const KvGePoint3d& p : points)
    if (kept.empty() || !kept.back().isEqualTo(p)) kept.push_back(p);
  return kept;
}

}  // namespace

Kvad::ErrorStatus KvDbLeader::getVertexAt(int index, KvGePoint3d& vertex) const {
  const auto found = all(10);
  if (index < 0 || index >= static_cast<int>(found.size())) return Kvad::eInvalidIndex;
  vertex = found[static_cast<std::size_t>(index)].point;
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::setVertexAt(int index, const KvGePoint3d& vertex) {
  if (index < 0 || index >= numVertices()) return Kvad::eInvalidIndex;
  int at = 0;
  rewrite([&](KvDxfGroup& group) {
    if (group.code == 10 && at++ == index) group.point = vertex;
    return true;
  });
  return Kvad::eOk;
}

Kvad::ErrorStatus KvDbLeader::appendVertex(const KvGePoint3d& vertex) {
  if (!std::isfinite(vertex.x + vertex.y + vertex.z)) return Kvad::eInvalidInput;
  if (numVertices() == 0) {
    // What files want in front of the first one.
    putWhole(71, whole(71, 1));
    putWhole(72, whole(72, 0));
    putWhole(73, whole(73, 3));
    putWhole(74, whole(74, 0));
    putWhole(75, whole(75, 0));
    putReal(40, real(40, 0));
    putReal(41, real(41, 0));
  }
  putWhole(76, numVertices() + 1);
  KvDxfGroup group;
  group.code = 10;
  group.kind = KvDxfKind::Point;
  group.point = vertex;
  rewrite([](KvDxfGroup&) { return true; }, {group});
  return Kvad::eOk;
}

KvDbObjectId KvDbLeader::annotationId() const {
  return database() ? database()->idFromHandle(KvDbHandle(static_cast<std::uint64_t>(whole(340))))
                    : KvDbObjectId();
}

KvDbObjectId KvDbLeader::dimensionStyle() const {
  const auto name = all(3);
  return name.empty() || !database() ? KvDbObjectId()
                                     : database()->recordId(KvDbTable::DimStyle, CString(name.front().text));
}

Kvad::ErrorStatus KvDbLeader::setDimensionStyle(KvDbObjectId style) {
  if (style.objectClass() != KvDbDimStyleTableRecord::desc()) return Kvad::eInvalidInput;
  return putText(3, kvdbRecordNameView(style));
}

Kvad::ErrorStatus KvDbLeader::transformBy(const KvGeMatrix3d& matrix) {
  if (!matrix.isUniScaledOrtho()) return Kvad::eCannotScaleNonUniformly;
  const double scale = matrix.scale();
  rewrite([&](KvDxfGroup& group) {
    if (group.code == 10) group.point = matrix * group.point;
    if (group.code == 40 || group.code == 41) group.point.x *= scale;
    // Directions keep their length, offsets don't.
    if (group.code >= 210 && group.code <= 213) {
      KvGeVector3d moved = matrix * group.point.asVector();
      if (group.code <= 211) moved = moved / scale;
      group.point = {moved.x, moved.y, moved.z};
    }
    return true;
  });
  return Kvad::eOk;
}

std::vector<KvGePoint3d> KvDbLeader::path(const KvDbDimVars& vars, double scale) const {
  std::vector<KvGePoint3d> points;
  for (const KvDxfGroup& group : all(10)) points.push_back(group.point);
  points = distinct(points);
  // Where texts stand above their lines, the line runs on below this one.
  constexpr int kText = 0;
  const double width = real(41);
  if (points.empty() || whole(73, 3) != kText || !hasHookLine() || vars.whole(V::Tad) == 0 || !(width > 0))
    return points;
  KvGeVector3d level = point(211, {1, 0, 0}).asVector();
  if (level.isZeroLength()) level = KvGeVector3d::kXAxis;
  const double length = width + std::fabs(vars.real(V::Gap)) * scale;
  points.push_back(points.back() + level.normal() * (whole(74) != 0 ? -length : length));
  return points;
}

KvDbPartsEntity::Parts KvDbLeader::makeParts() const {
  Parts parts;
  const KvDbDimVars vars = dimVars();
  const double scale = vars.real(V::Scale) > 0 ? vars.real(V::Scale) : 1;
  std::vector<KvGePoint3d> points = path(vars, scale);
  if (points.size() < 2) return parts;
  const KvDbArrowHead head(vars.id(V::LdrBlk), vars.real(V::Asz) * scale);
  const KvGeVector3d out = (points[0] - points[1]).normal();
  // An arrow that finds no room in the first segment is left out.
  const bool hasHead =
      hasArrowHead() && head.size() > 0 && points[0].distanceTo(points[1]) >= 2 * head.size();
  const int color = vars.whole(V::ClrD) != kKvColorByBlock ? vars.whole(V::ClrD)
                                                           : static_cast<int>(whole(77, kKvColorByBlock));
  const auto weight = static_cast<KvDb::LineWeight>(vars.whole(V::Lwd));
  const auto add = [&](std::unique_ptr<KvDbEntity> part) { addPart(parts, std::move(part), color, weight); };
  const double cut = hasHead ? std::max(head.cut(), 0.0) : 0;
  if (isSplined()) {
    const auto curve = KvGeNurbCurve3d::interpolate(points, points[1] - points[0],
                                                    points.back() - points[points.size() - 2]);
    double from = curve ? curve->startParam() : 0;
    if (curve && cut > 0) curve->paramAtLength(from, cut, from);
    const auto piece = curve ? curve->piece(from, curve->endParam()) : nullptr;
    if (auto spline = piece ? kvdbCurveOf(*piece) : nullptr) add(std::move(spline));
  } else {
    KvGePoint3d from = points[0] - out * cut;
    for (std::size_t i = 1; i < points.size(); from = points[i++])
      add(std::make_unique<KvDbLine>(from, points[i]));
  }
  if (hasHead) {
    KvGeVector3d normal = point(210, {0, 0, 1}).asVector();
    if (normal.isZeroLength() || normal.isParallelTo(out)) normal = out.perpVector();
    for (auto& part : head.parts(points[0], out, normal.normal())) add(std::move(part));
  }
  return parts;
}
