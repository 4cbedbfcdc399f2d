// LIST, DIST, ID, AREA.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/hatch.h"
#include "host/entities/mtext.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"

namespace kvcmd {
namespace {

void point(const wchar_t* what, const KvGePoint3d& world) {
  say(L"    " + CString(what) + L" " + pointText(toUser(world)));
}
void length(const wchar_t* what, double value) {
  say(L"    " + CString(what) + L" " + lengthText(value));
}
void angle(const wchar_t* what, double value) {
  say(L"    " + CString(what) + L" " + angleText(value));
}

void listPolyline(const KvDbPolyline& polyline) {
  say(polyline.isClosed() ? L"    closed" : L"    open");
  for (int i = 0; i < polyline.numVerts(); ++i) {
    KvGePoint3d at;
    double bulge = 0;
    polyline.getPointAt(i, at);
    polyline.getBulgeAt(i, bulge);
    point(L"at point", at);
    if (bulge != 0) say(L"    bulge " + numberText(bulge));
  }
}

void listGeometry(const KvDbEntity& entity) {
  if (const auto* line = KvDbLine::cast(&entity)) {
    point(L"from point", line->startPoint());
    point(L"to point", line->endPoint());
    const KvGePoint3d from = toUser(line->startPoint()), to = toUser(line->endPoint());
    angle(L"angle in XY plane", kvge::normalizedAngle(bearing(from, to)));
  } else if (const auto* circle = KvDbCircle::cast(&entity)) {
    point(L"center point", circle->center());
    length(L"radius", circle->radius());
  } else if (const auto* arc = KvDbArc::cast(&entity)) {
    point(L"center point", arc->center());
    length(L"radius", arc->radius());
    angle(L"start angle", arc->startAngle());
    angle(L"end angle", arc->endAngle());
  } else if (const auto* ellipse = KvDbEllipse::cast(&entity)) {
    point(L"center point", ellipse->center());
    length(L"major radius", ellipse->majorAxis().length());
    length(L"minor radius", ellipse->minorAxis().length());
  } else if (const auto* polyline = KvDbPolyline::cast(&entity)) {
    listPolyline(*polyline);
  } else if (const auto* at = KvDbPoint::cast(&entity)) {
    point(L"at point", at->position());
  } else if (const auto* text = KvDbText::cast(&entity)) {
    if (const auto* tagged = KvDbTaggedText::cast(&entity)) say(L"    tag " + tagged->tag());
    say(L"    text \"" + text->textString() + L"\"");
    point(L"at point", text->position());
    length(L"height", text->height());
    angle(L"rotation angle", text->rotation());
  } else if (const auto* paragraphs = KvDbMText::cast(&entity)) {
    say(L"    text \"" + paragraphs->contents() + L"\"");
    point(L"location", paragraphs->location());
    length(L"text height", paragraphs->textHeight());
    length(L"width", paragraphs->width());
  } else if (const auto* reference = KvDbBlockReference::cast(&entity)) {
    say(L"    block name \"" + kvdbRecordName(reference->blockTableRecord()) + L"\"");
    point(L"at point", reference->position());
    angle(L"rotation angle", reference->rotation());
    const KvGeScale3d scale = reference->scaleFactors();
    say(L"    scale factors " + numberText(scale.sx) + L"," + numberText(scale.sy) + L"," +
        numberText(scale.sz));
  } else if (const auto* hatch = KvDbHatch::cast(&entity)) {
    say(L"    pattern " + hatch->patternName() + L", scale " + numberText(hatch->patternScale()));
  } else if (const auto* dimension = KvDbDimension::cast(&entity)) {
    say(L"    measured " + (dimension->isAngular() ? angleText(dimension->measurement())
                                                   : lengthText(dimension->measurement())));
  } else if (const auto* endless = KvDbEndlessLine::cast(&entity)) {
    point(L"base point", endless->basePoint());
  } else if (const auto* spline = KvDbSpline::cast(&entity)) {
    CString counts;
    counts.Format(L"    degree %d, %d control points, %d fit points", spline->degree(),
                  spline->numControlPoints(), spline->numFitPoints());
    say(counts);
  }
}

void listMeasures(const KvDbEntity& entity) {
  const auto* curve = KvDbCurve::cast(&entity);
  if (!curve || KvDbEndlessLine::cast(&entity)) return;
  double start = 0, end = 0, from = 0, to = 0, area = 0;
  if (curve->getStartParam(start) == Kvad::eOk && curve->getEndParam(end) == Kvad::eOk &&
      curve->getDistAtParam(start, from) == Kvad::eOk && curve->getDistAtParam(end, to) == Kvad::eOk)
    length(L"length", to - from);
  if (curve->isClosed() && curve->getArea(area) == Kvad::eOk) length(L"area", area);
}

void runList() {
  if (!drawing()) return;
  for (KvDbObjectId id : select(nullptr, true)) {
    const auto* entity = look<KvDbEntity>(id);
    if (!entity) continue;
    CString head;
    head.Format(L"%s  Layer: \"%s\"", entity->fileType(), entity->layer());
    say(head);
    CString handle;
    handle.Format(L"    handle %X", entity->objectId().stub()->handle);
    say(handle);
    if (entity->colorIndex() != kKvColorByLayer) {
      CString color;
      color.Format(L"    color %d", entity->colorIndex());
      say(color);
    }
    if (!entity->linetypeId().isNull() && entity->linetypeId() != drawing()->byLayerLinetype())
      say(L"    linetype " + entity->linetype());
    listGeometry(*entity);
    listMeasures(*entity);
  }
}

void runDist() {
  KvGePoint3d from, to;
  if (!drawing() || Ask(L"\nSpecify first point: ").point(from) != Got::Value) return;
  if (Ask(L"\nSpecify second point: ").base(from).point(to) != Got::Value) return;
  const KvGeVector3d by = to - from;
  say(L"Distance = " + lengthText(by.length()) + L",  Angle in XY Plane = " +
      angleText(kvge::normalizedAngle(bearing(from, to))) + L",  Angle from XY Plane = " +
      angleText(std::atan2(by.z, std::hypot(by.x, by.y))));
  say(L"Delta X = " + lengthText(by.x) + L",  Delta Y = " + lengthText(by.y) + L",  Delta Z = " +
      lengthText(by.z));
}

void runId() {
  KvGePoint3d at;
  if (drawing() && Ask(L"\nSpecify point: ").point(at) == Got::Value)
    say(L"X = " + lengthText(at.x) + L"     Y = " + lengthText(at.y) + L"     Z = " + lengthText(at.z));
}

/// Area and length around; none when the command ends or the object has no area.
struct Measure {
  double area = 0, around = 0;
};

std::optional<Measure> measureObject(KvDbObjectId id) {
  const auto* curve = look<KvDbCurve>(id);
  Measure measure;
  double start = 0, end = 0, from = 0, to = 0;
  if (!curve || curve->getArea(measure.area) != Kvad::eOk || curve->getStartParam(start) != Kvad::eOk ||
      curve->getEndParam(end) != Kvad::eOk || curve->getDistAtParam(start, from) != Kvad::eOk ||
      curve->getDistAtParam(end, to) != Kvad::eOk) {
    say(L"The object has no area.");
    return std::nullopt;
  }
  measure.around = to - from;
  return measure;
}

std::optional<Measure> measurePoints(const KvGePoint3d& first) {
  std::vector<KvGePoint3d> points{first};
  KvGePoint3d next;
  Got got;
  while (
      (got =
           Ask(L"\nSpecify next corner point or press ENTER for total: ").base(points.back()).point(next)) ==
      Got::Value)
    points.push_back(next);
  if (got == Got::Cancelled || points.size() < 3) return std::nullopt;
  Measure measure;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const KvGePoint3d &a = points[i], &b = points[(i + 1) % points.size()];
    measure.area += ((a.x - first.x) * (b.y - first.y) - (b.x - first.x) * (a.y - first.y)) / 2;
    measure.around += a.distanceTo(b);
  }
  measure.area = std::fabs(measure.area);
  return measure;
}

void runArea() {
  if (!drawing()) return;
  double total = 0;
  int sign = 0;  // 0: one area and no total
  for (;;) {
    KvGePoint3d first;
    Ask ask(sign == 0   ? L"\nSpecify first corner point or [Object/Add/Subtract]: "
            : sign == 1 ? L"\nSpecify first corner point or [Object/Subtract]: "
                        : L"\nSpecify first corner point or [Object/Add]: ");
    const Got got = ask.keywords(L"Object Add Subtract").point(first);
    if (got == Got::Keyword && ask.keyword != L"Object") {
      sign = ask.keyword == L"Add" ? 1 : -1;
      continue;
    }
    std::optional<Measure> measure;
    if (got == Got::Keyword) {
      KvDbObjectId id;
      if (Ask(L"\nSelect object: ").entity(id) == Got::Value) measure = measureObject(id);
    } else if (got == Got::Value) {
      measure = measurePoints(first);
    } else {
      return;
    }
    if (!measure) {
      if (sign == 0) return;
      continue;
    }
    say(L"Area = " + lengthText(measure->area) + L", Perimeter = " + lengthText(measure->around));
    editor()->variables().setInternally(L"AREA", measure->area);
    editor()->variables().setInternally(L"PERIMETER", measure->around);
    if (sign == 0) return;
    total += sign * measure->area;
    say(L"Total area = " + lengthText(total));
  }
}

constexpr KvCommandRow kRows[] = {
    {L"AREA", L"AA", KVRX_CMD_MODAL, runArea, L"Tells areas and their perimeters, and adds them up.",
     L"Specify first corner point or [Object/Add/Subtract]:\nSpecify next corner point or press ENTER for "
     L"total:\nSelect object: (after Object)"},
    {L"DIST", L"DI", KVRX_CMD_TRANSPARENT, runDist, L"Tells the distance of two points.",
     L"Specify first point:\nSpecify second point:"},
    {L"ID", L"", KVRX_CMD_TRANSPARENT, runId, L"Tells the coordinates of a point.", L"Specify point:"},
    {L"LIST", L"LI LS", KVRX_CMD_USEPICKSET, runList, L"Tells all of objects.", L"Select objects:"},
};

}  // namespace

std::span<const KvCommandRow> inquiryRows() {
  return kRows;
}

}  // namespace kvcmd
