// What is seen of entities that the host doesn't model.
#include "host/database/block.h"
#include "host/database/database.h"
#include "host/database/internal/flatten.h"
#include "host/database/modelertext.h"
#include "host/database/storedgraphics.h"
#include "host/geometry/arc.h"
#include "host/geometry/matrix.h"

namespace {

const KvDbGroupList* sectionOf(const KvDbEntity& entity, std::wstring_view marker) {
  for (const KvDbUnknownSection& section : entity.unknownSections())
    if (section.marker.view() == marker) return &section.groups;
  return nullptr;
}

const KvDbBlockTableRecord* blockNamed(const KvDbDatabase* drawing, const CString& name) {
  const KvDbObjectId id = drawing ? drawing->recordId(KvDbTable::Block, name) : KvDbObjectId();
  return id.isValid() ? KvDbBlockTableRecord::cast(id.stub()->object) : nullptr;
}

/// A table shows the block that its groups name, at its place.
bool drawTable(const KvDbEntity& table, KvGiGeometry& geometry) {
  constexpr int kMostNested = 8;  // a table in its own block would never end
  thread_local int nested = 0;
  const KvDbGroupList* place = sectionOf(table, L"AcDbBlockReference");
  if (!place || nested >= kMostNested) return false;
  CString name;
  KvGePoint3d position;
  for (const KvDxfGroup& group : *place) {
    if (group.code == 2) name = CString(group.text);
    if (group.code == 10) position = group.point;
  }
  KvGeVector3d along = KvGeVector3d::kXAxis;
  if (const KvDbGroupList* own = sectionOf(table, L"AcDbTable"))
    for (const KvDxfGroup& group : *own)
      if (group.code == 11 && !group.point.asVector().isZeroLength()) along = group.point.asVector().normal();
  const KvDbBlockTableRecord* block = blockNamed(table.database(), name);
  if (!block) return false;
  ++nested;
  KvGeMatrix3d transform;
  transform.setCoordSystem(position, along, KvGeVector3d::kZAxis.crossProduct(along).normal(),
                           KvGeVector3d::kZAxis);
  geometry.pushModelTransform(transform * KvGeMatrix3d::translation(-block->origin().asVector()));
  for (KvDbObjectId id : block->entities())
    if (KvDbEntity* entity = KvDbEntity::cast(id.stub()->object)) geometry.draw(entity);
  geometry.popModelTransform();
  --nested;
  return true;
}

/// Dimensions of other kinds show their block, which stands in its place already.
bool drawDimension(const KvDbEntity& entity, KvGiGeometry& geometry) {
  const KvDbGroupList* groups = sectionOf(entity, L"AcDbDimension");
  if (!groups) return false;
  for (const KvDxfGroup& group : *groups) {
    if (group.code != 2) continue;
    const KvDbBlockTableRecord* block = blockNamed(entity.database(), CString(group.text));
    if (!block) return false;
    for (KvDbObjectId id : block->entities())
      if (KvDbEntity* part = KvDbEntity::cast(id.stub()->object)) geometry.draw(part);
    return true;
  }
  return false;
}

/// Regions and solids show the edges of their model, as far as they can be read.
bool drawModel(const KvDbEntity& entity, KvGiWorldDraw& draw) {
  const std::wstring text = kvdbModelerTextOf(entity);
  const auto model = text.empty() ? std::nullopt : kvdbReadModelerText(text);
  if (!model) return false;
  for (const KvGeCurve3d::Ptr& edge : model->edges) {
    const double deviation = draw.deviation(edge->startPoint()), start = edge->startParam();
    const double sweep = edge->endParam() - start;
    std::vector<KvGePoint3d> points;
    if (edge->kind() == KvGeCurve3d::kCircArc) {
      const auto& arc = static_cast<const KvGeCircArc3d&>(*edge);
      const KvGeVector3d u = arc.refVec() * arc.radius();
      kvdb::flattenConic(arc.center(), u, arc.normal().crossProduct(u), start, sweep, deviation, true,
                         points);
    } else if (edge->kind() == KvGeCurve3d::kEllipArc) {
      const auto& arc = static_cast<const KvGeEllipArc3d&>(*edge);
      kvdb::flattenConic(arc.center(), arc.majorAxis(), arc.minorAxis(), start, sweep, deviation, true,
                         points);
    } else {
      points = {edge->startPoint(), edge->endPoint()};
    }
    draw.geometry().polyline(static_cast<int>(points.size()), points.data());
  }
  return !model->edges.empty();
}

}  // namespace

bool KvDbProxyEntity::subWorldDraw(KvGiWorldDraw* draw) {
  const std::wstring_view type = fileTypeView();
  if (type == L"ACAD_TABLE" && drawTable(*this, draw->geometry())) return true;
  if (drawDimension(*this, draw->geometry())) return true;
  return kvdbDrawStoredGraphics(kvdbStoredGraphicsOf(*this), database(), *draw) || drawModel(*this, *draw);
}
