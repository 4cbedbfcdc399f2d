// 3DFACE, 3DPOLY, TRACE, REGION, UNION, SUBTRACT, INTERSECT, REVCLOUD.
#include <algorithm>

#include "host/commands/internal/polybuild.h"
#include "host/commands/internal/polychain.h"
#include "host/commands/internal/rows.h"
#include "host/entities/curves.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/region.h"

namespace kvcmd {
namespace {

/// A corner of a face; `isHidden` tells of the edge that begins there.
Got askCorner(const CString& prompt, const KvGePoint3d* base, KvGePoint3d& corner, bool& isHidden) {
  isHidden = false;
  for (;;) {
    Ask ask(prompt);
    if (base) ask.base(*base);
    const Got got = ask.keywords(L"Invisible").point(corner);
    if (got != Got::Keyword) return got;
    isHidden = true;
  }
}

void runFace() {
  if (!drawing()) return;
  KvGePoint3d corners[4];
  bool hidden[4] = {};
  if (askCorner(L"\nSpecify first point or [Invisible]: ", nullptr, corners[0], hidden[0]) != Got::Value ||
      askCorner(L"\nSpecify second point or [Invisible]: ", &corners[0], corners[1], hidden[1]) != Got::Value)
    return;
  // Each further pair goes on from the one before.
  for (;;) {
    if (askCorner(L"\nSpecify third point or [Invisible] <exit>: ", &corners[1], corners[2], hidden[2]) !=
        Got::Value)
      return;
    const Got got = askCorner(L"\nSpecify fourth point or [Invisible] <create three-sided face>: ",
                              &corners[2], corners[3], hidden[3]);
    if (got == Got::Cancelled) return;
    if (got == Got::Nothing) corners[3] = corners[2];
    auto face = std::make_unique<KvDbFace>(corners[0], corners[1], corners[2], corners[3]);
    for (int i = 0; i < 4; ++i)
      if (hidden[i]) face->setEdgeVisibleAt(i, false);
    if (addFromUser(std::move(face)).isNull()) return fail(L"The face could not be made.");
    corners[0] = corners[2];
    corners[1] = corners[3];
    hidden[0] = hidden[2];
    hidden[1] = false;
  }
}

void runSpacePolyline() {
  if (!drawing()) return;
  std::vector<KvGePoint3d> points(1);
  if (Ask(L"\nSpecify start point of polyline: ").point(points[0]) != Got::Value) return;
  bool isClosed = false;
  for (;;) {
    const bool mayClose = points.size() > 2;
    KvGePoint3d next;
    Ask ask(mayClose ? L"\nSpecify endpoint of line or [Close/Undo]: "
                     : L"\nSpecify endpoint of line or [Undo]: ");
    const Got got = ask.keywords(mayClose ? L"Close Undo" : L"Undo").base(points.back()).point(next);
    if (got == Got::Value) {
      points.push_back(next);
    } else if (got == Got::Keyword && ask.keyword == L"Undo") {
      if (points.size() > 1)
        points.pop_back();
      else
        say(L"All segments already undone.");
    } else {
      isClosed = got == Got::Keyword;
      break;
    }
  }
  if (points.size() < 2) return;
  if (addFromUser(std::make_unique<KvDb3dPolyline>(points, isClosed)).isNull())
    fail(L"The polyline could not be made.");
}

/// Where two lines beside the way meet at a corner: the mitre; upright on the way where it goes straight on.
KvGeVector3d mitre(const KvGeVector3d& before, const KvGeVector3d& behind, double half) {
  const KvGeVector3d a(-before.y, before.x, 0), b(-behind.y, behind.x, 0);
  const KvGeVector3d sum = a + b;
  const double shared = sum.dotProduct(a);
  // A way that turns back has no mitre.
  return shared > 1e-6 ? sum * (half / shared) : a * half;
}

void runTrace() {
  if (!drawing()) return;
  double width = variable(L"TRACEWID", 1.0);
  if (Ask(L"\nSpecify trace width <" + numberText(width) + L">: ")
          .flags(KVED_NONEG | KVED_NOZERO)
          .distance(width) == Got::Cancelled)
    return;
  std::vector<KvGePoint3d> points(1);
  if (Ask(L"\nSpecify start point: ").point(points[0]) != Got::Value) return;
  KvGePoint3d next;
  while (Ask(L"\nSpecify next point: ").base(points.back()).point(next) == Got::Value)
    if (flatDistance(points.back(), next) > 0) points.push_back({next.x, next.y, points[0].z});
  const auto direction = [&](std::size_t i) { return (points[i + 1] - points[i]).normal(); };
  const std::size_t segments = points.size() - 1;
  if (segments > 0) setVariable(L"TRACEWID", width);
  for (std::size_t i = 0; i < segments; ++i) {
    const KvGeVector3d before = i > 0 ? direction(i - 1) : direction(i);
    const KvGeVector3d behind = i + 1 < segments ? direction(i + 1) : direction(i);
    const KvGeVector3d from = mitre(before, direction(i), width / 2);
    const KvGeVector3d to = mitre(direction(i), behind, width / 2);
    auto trace = std::make_unique<KvDbTrace>();
    const KvGePoint3d corners[4] = {points[i] + from, points[i] - from, points[i + 1] + to,
                                    points[i + 1] - to};
    for (int k = 0; k < 4; ++k) trace->setPointAt(k, corners[k]);
    if (const double thickness = drawing()->thickness(); thickness != 0) trace->setThickness(thickness);
    if (addFromUser(std::move(trace)).isNull()) return fail(L"The trace could not be made.");
  }
}

// ---- Regions

void runRegion() {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  KvDbVoidPtrArray curves, regions;
  KvDbObjectIdArray used;
  for (KvDbObjectId id : ids)
    if (const auto* curve = look<KvDbCurve>(id)) {
      curves.append(const_cast<KvDbCurve*>(curve));
      used.append(id);
    }
  const auto status = curves.isEmpty() ? Kvad::eInvalidLoop : KvDbRegion::createFromCurves(curves, regions);
  if (regions.isEmpty())
    return fail(status == Kvad::eNonPlanarEntity ? L"The curves don't lie in one plane."
                                                 : L"The objects form no closed loop.");
  const int made = regions.length();
  for (void* region : regions) add(std::unique_ptr<KvDbEntity>(static_cast<KvDbEntity*>(region)));
  constexpr int kKeepSources = 0;
  if (status == Kvad::eOk && variable(L"DELOBJ", 1) != kKeepSources) erase(used);
  say(countOf(made, made == 1 ? L"region created." : L"regions created."));
}

/// The regions with a known shape among what is selected.
KvDbObjectIdArray selectRegions(const wchar_t* prompt) {
  KvDbObjectIdArray regions;
  for (KvDbObjectId id : select(prompt))
    if (const auto* region = look<KvDbRegion>(id); region && !region->isNull()) regions.append(id);
  return regions;
}

/// Combines regions with the first one, which stays; those in other planes stay out.
void combine(KvDbRegion::BoolOperType operation, const KvDbObjectIdArray& ids, int from) {
  int left = 0;
  for (int i = from; i < ids.length(); ++i) {
    auto status = Kvad::eOk;
    change<KvDbRegion>(ids[i], [&](KvDbRegion& other) {
      change<KvDbRegion>(ids[0], [&](KvDbRegion& region) { status = region.booleanOper(operation, &other); });
      if (status == Kvad::eOk) other.erase();
    });
    if (status != Kvad::eOk) ++left;
  }
  if (left > 0) say(countOf(left, L"left out: they lie in another plane"));
  const auto* region = look<KvDbRegion>(ids[0]);
  if (!region || !region->isNull()) return;
  say(L"Nothing is left of the region.");
  change<KvDbRegion>(ids[0], [](KvDbRegion& empty) { empty.erase(); });
}

void combineSelected(KvDbRegion::BoolOperType operation) {
  if (!drawing()) return;
  const KvDbObjectIdArray ids = selectRegions(nullptr);
  if (ids.length() < 2) return fail(L"At least 2 regions must be selected.");
  combine(operation, ids, 1);
}

void runUnion() {
  combineSelected(KvDbRegion::kBoolUnite);
}
void runIntersect() {
  combineSelected(KvDbRegion::kBoolIntersect);
}

void runSubtract() {
  if (!drawing()) return;
  say(L"Select regions to subtract from ...");
  KvDbObjectIdArray ids = selectRegions(nullptr);
  if (ids.isEmpty()) return fail(L"No region selected.");
  combine(KvDbRegion::kBoolUnite, ids, 1);
  say(L"Select regions to subtract ...");
  KvDbObjectIdArray all;
  all.append(ids[0]);
  for (KvDbObjectId id : selectRegions(nullptr))
    if (!ids.contains(id)) all.append(id);
  if (all.length() < 2) return fail(L"No region selected.");
  combine(KvDbRegion::kBoolSubtract, all, 1);
}

// ---- REVCLOUD

constexpr int kMostArcs = 100'000;

/// The way along closed edges in arcs of about a length each, which bulge outwards; empty when there would be
/// too many.
std::vector<PolyVertex> cloudOf(const std::vector<KvGePoint3d>& outline, double length) {
  constexpr double kSweep = 110.0 * kvge::kPi / 180;
  double area = 0;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const KvGePoint3d &a = outline[i], &b = outline[(i + 1) % outline.size()];
    area += a.x * b.y - b.x * a.y;
  }
  const double bulge = std::tan(kSweep / 4) * (area < 0 ? -1 : 1);
  std::vector<PolyVertex> cloud;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const KvGePoint3d &a = outline[i], &b = outline[(i + 1) % outline.size()];
    const double count = std::max(1.0, std::round(a.distanceTo(b) / length));
    if (count + static_cast<double>(cloud.size()) > kMostArcs) return {};
    for (int k = 0; k < static_cast<int>(count); ++k) cloud.push_back({a + (b - a) * (k / count), bulge});
  }
  return cloud;
}

/// Points along a closed curve, near enough to one another for arcs of a length.
std::vector<KvGePoint3d> pointsAlong(const KvDbCurve& curve, double length) {
  std::vector<KvGePoint3d> points;
  double end = 0, whole = 0;
  if (curve.getEndParam(end) != Kvad::eOk || curve.getDistAtParam(end, whole) != Kvad::eOk) return points;
  if (const auto* polyline = KvDbPolyline::cast(&curve); polyline && polyline->isOnlyLines()) {
    for (int i = 0; i < polyline->numVerts(); ++i) {
      KvGePoint3d at;
      polyline->getPointAt(i, at);
      points.push_back(toUser(at));
    }
    return points;
  }
  const double count = std::max(3.0, std::round(whole / length));
  for (int i = 0; count <= kMostArcs && i < static_cast<int>(count); ++i) {
    KvGePoint3d at;
    if (curve.getPointAtDist(whole * i / count, at) == Kvad::eOk) points.push_back(toUser(at));
  }
  return points;
}

void runRevcloud() {
  if (!drawing()) return;
  double length = drawing()->textsize() * 2;
  std::vector<KvGePoint3d> outline(1);
  KvDbObjectId source;
  for (;;) {
    Ask ask(L"\nSpecify first corner point or [Arc length/Object/Polygonal] <Object>: ");
    const Got got = ask.keywords(L"Arc Object Polygonal").point(outline[0]);
    if (got == Got::Cancelled) return;
    if (got == Got::Keyword && ask.keyword == L"Arc") {
      if (Ask(L"\nSpecify length of arc <" + numberText(length) + L">: ")
              .flags(KVED_NOZERO | KVED_NONEG)
              .distance(length) == Got::Cancelled)
        return;
      continue;
    }
    if (got == Got::Value) {
      KvGePoint3d opposite;
      if (Ask(L"\nSpecify opposite corner: ").corner(outline[0], opposite) != Got::Value) return;
      const KvGePoint3d first = outline[0];
      outline = {first,
                 {opposite.x, first.y, first.z},
                 {opposite.x, opposite.y, first.z},
                 {first.x, opposite.y, first.z}};
      break;
    }
    if (got == Got::Keyword && ask.keyword == L"Polygonal") {
      KvGePoint3d next;
      if (Ask(L"\nSpecify start point: ").point(outline[0]) != Got::Value) return;
      while (Ask(L"\nSpecify next point: ").base(outline.back()).point(next) == Got::Value)
        outline.push_back(next);
      break;
    }
    if (Ask(L"\nSelect object: ").entity(source) != Got::Value) return;
    const auto* curve = look<KvDbCurve>(source);
    if (!curve || !curve->isClosed() || isLocked(source)) return fail(L"A closed curve expected.");
    outline = pointsAlong(*curve, length);
    break;
  }
  if (outline.size() < 3) return fail(L"An outline of at least three points expected.");
  const std::vector<PolyVertex> cloud = cloudOf(outline, length);
  if (cloud.empty()) return fail(L"The arcs are too short for that outline.");
  if (addPolyline(cloud, true).isNull()) return fail(L"The cloud could not be made.");
  if (!source.isNull() && variable(L"DELOBJ", 1) != 0)
    change<KvDbEntity>(source, [](KvDbEntity& e) { e.erase(); });
}

constexpr KvCommandRow kRows[] = {
    {L"3DFACE", L"3F", KVRX_CMD_MODAL, runFace, L"Draws plane faces of three or four corners in space.",
     L"Specify first point or [Invisible]: (Invisible: the edge that begins there)\nSpecify second point or "
     L"[Invisible]:\nSpecify third point or [Invisible] <exit>:\nSpecify fourth point or [Invisible] <create "
     L"three-sided face>: (the next face goes on from there)"},
    {L"3DPOLY", L"3P", KVRX_CMD_MODAL, runSpacePolyline, L"Draws one line of straight segments in space.",
     L"Specify start point of polyline:\nSpecify endpoint of line or [Close/Undo]: (empty: ends)"},
    {L"INTERSECT", L"IN", KVRX_CMD_USEPICKSET, runIntersect, L"Leaves what regions have in common.",
     L"Select objects:"},
    {L"REGION", L"REG", KVRX_CMD_USEPICKSET, runRegion, L"Makes areas of curves that close.",
     L"Select objects: (they go unless DELOBJ is 0)"},
    {L"REVCLOUD", L"", KVRX_CMD_MODAL, runRevcloud, L"Draws a cloud round what was revised.",
     L"Specify first corner point or [Arc length/Object/Polygonal] <Object>:\nSpecify opposite "
     L"corner:\nSpecify length of arc <>: (after Arc length)\nSelect object: (after Object)\nSpecify start "
     L"point: (after Polygonal)\nSpecify next point: (empty: closes)"},
    {L"SUBTRACT", L"SU", KVRX_CMD_MODAL, runSubtract, L"Takes regions away from others.",
     L"Select objects: (to subtract from)\nSelect objects: (to subtract)"},
    {L"TRACE", L"", KVRX_CMD_MODAL, runTrace, L"Draws broad lines with mitred corners.",
     L"Specify trace width <1>:\nSpecify start point:\nSpecify next point: (empty: ends)"},
    {L"UNION", L"UNI", KVRX_CMD_USEPICKSET, runUnion, L"Makes one region of several.", L"Select objects:"},
};

}  // namespace

std::span<const KvCommandRow> areaRows() {
  return kRows;
}

}  // namespace kvcmd
