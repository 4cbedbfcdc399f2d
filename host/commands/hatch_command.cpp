// HATCH, BHATCH, BOUNDARY: closed outlines among selected objects, and areas round points.
#include <algorithm>
#include <cmath>

#include "host/commands/internal/enclosure.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/commands/outlines.h"
#include "host/editor/sysvars.h"
#include "host/entities/curves.h"
#include "host/entities/hatch.h"
#include "host/entities/polyline.h"
#include "host/entities/region.h"

namespace kvcmd {
namespace {

/// Ends of an outline's curves meet within this, in drawing units: what programs round.
constexpr double kMeeting = 1e-6;

struct Wish {
  CString pattern = L"ANSI31";
  double scale = 1, angle = 0;
  double space = 1;  // of a user-defined pattern
  bool isCrossed = false;
  bool isUserDefined() const { return pattern.CompareNoCase(L"U") == 0; }
  bool isSolid() const { return pattern.CompareNoCase(L"SOLID") == 0; }
};

template <class T>
void read(const wchar_t* name, T& value) {
  KvEdVarValue held;
  if (editor() && editor()->variables().get(name, held) == Kvad::eOk)
    if (const T* found = std::get_if<T>(&held)) value = *found;
}

void remember(const Wish& wish) {
  KvEdSysVars& variables = editor()->variables();
  variables.set(L"HPNAME", wish.pattern);
  variables.set(L"HPSCALE", wish.scale);
  variables.set(L"HPANG", wish.angle);
}

void listPatterns() {
  for (std::wstring_view name : kvdbHatchPatternNames()) say(CString(name));
}

/// False when the command is to end.
bool askPattern(Wish& wish) {
  read(L"HPNAME", wish.pattern);
  read(L"HPSCALE", wish.scale);
  read(L"HPANG", wish.angle);
  for (;;) {
    CString name;
    const Got got =
        Ask((L"\nEnter a pattern name or [?/Solid/User defined] <" + wish.pattern + L">: ").GetString())
            .text(name);
    if (got == Got::Cancelled) return false;
    if (got == Got::Nothing) break;
    if (name == L"?") {
      listPatterns();
      continue;
    }
    if (name.CompareNoCase(L"S") == 0 || name.CompareNoCase(L"SOLID") == 0) name = L"SOLID";
    std::vector<KvDbPatternLine> lines;
    if (name.CompareNoCase(L"U") != 0 && name != L"SOLID" && !kvdbHatchPattern(name.view(), true, lines)) {
      fail(L"There is no pattern \"" + name + L"\".");
      return false;
    }
    wish.pattern = name.MakeUpper();
    break;
  }
  if (wish.isSolid()) return true;
  CString prompt;
  if (wish.isUserDefined()) {
    if (Ask(L"\nSpecify angle for crosshatch lines <0>: ").angle(wish.angle) == Got::Cancelled) return false;
    if (Ask(L"\nSpecify spacing between the lines <1>: ")
            .flags(KVED_NOZERO | KVED_NONEG)
            .distance(wish.space) == Got::Cancelled)
      return false;
    Ask ask(L"\nDouble hatch area? [Yes/No] <No>: ");
    if (ask.keywords(L"Yes No").word() == Got::Cancelled) return false;
    wish.isCrossed = ask.keyword == L"Yes";
    return true;
  }
  prompt.Format(L"\nSpecify a scale for the pattern <%.4g>: ", wish.scale);
  if (Ask(prompt).flags(KVED_NOZERO | KVED_NONEG).real(wish.scale) == Got::Cancelled) return false;
  prompt.Format(L"\nSpecify an angle for the pattern <%.4g>: ", wish.angle * 360 / kvge::kTwoPi);
  return Ask(prompt).angle(wish.angle) != Got::Cancelled;
}

void setPattern(KvDbHatch& hatch, const Wish& wish) {
  // Whoever sets scale and angle first has the pattern's lines made once.
  if (!wish.isSolid() && !wish.isUserDefined()) hatch.setPatternScale(wish.scale);
  hatch.setPatternAngle(wish.angle);
  if (wish.isUserDefined()) {
    hatch.setPatternSpace(wish.space);
    hatch.setPatternDouble(wish.isCrossed);
    hatch.setPattern(KvDbHatch::kUserDefined, L"_USER");
  } else {
    hatch.setPattern(KvDbHatch::kPreDefined, wish.pattern);
  }
}

void hatchSelected(const Wish& wish) {
  bool isCancelled = false;
  const KvDbObjectIdArray ids = select(nullptr, true, &isCancelled);
  if (isCancelled) return;
  const auto outlines = kvcmdClosedOutlines(ids, kMeeting);
  if (outlines.empty()) {
    fail(L"The objects form no closed outline.");
    return;
  }
  auto hatch = std::make_unique<KvDbHatch>();
  const KvGeVector3d normal = userToWorld().column(2);
  hatch->setNormal(normal);
  KvGePoint3d start;
  if (const auto* curve = look<KvDbCurve>(outlines.front()[0]);
      curve && curve->getStartPoint(start) == Kvad::eOk)
    hatch->setElevation((KvGeMatrix3d::worldToPlane(normal) * start).z);
  setPattern(*hatch, wish);
  hatch->setAssociative(true);
  int loops = 0;
  for (const KvDbObjectIdArray& outline : outlines)
    if (hatch->appendLoop(KvDbHatch::kExternal, outline) == Kvad::eOk) ++loops;
  if (loops == 0) {
    fail(L"The outlines can't bound a hatch.");
    return;
  }
  if (!wish.isSolid() && !hatch->patternStretches([](KvGePoint2d, KvGePoint2d) {})) {
    fail(L"The pattern is too fine for the area: a greater scale would do.");
    return;
  }
  const KvDbHatch* made = hatch.get();
  const KvDbObjectIdArray sources = made->assocObjIds();
  const KvDbObjectId id = add(std::move(hatch));
  for (KvDbObjectId source : sources)
    change<KvDbEntity>(source, [&](KvDbEntity& entity) { entity.addPersistentReactor(id); });
  remember(wish);
}

void runHatch() {
  Wish wish;
  if (drawing() && askPattern(wish)) hatchSelected(wish);
}

/// The plane of hatches: the user system's, at the height of its origin.
KvGePoint2d inPlane(const KvGePoint3d& world, const KvGeVector3d& normal) {
  return kvge::planar(KvGeMatrix3d::worldToPlane(normal) * world);
}

/// The loop as a polyline's vertices with bulges; false when it has other edges than lines and arcs in planes
/// parallel to the hatch's.
bool asVertices(const EnclosureLoop& loop, const KvGeVector3d& normal, KvGePoint2dArray& vertices,
                KvArray<double>& bulges) {
  for (const EnclosureLoop::Piece& piece : loop.pieces) {
    KvGePoint3d start, end;
    double bulge = 0;
    piece.curve->getStartPoint(start);
    piece.curve->getEndPoint(end);
    if (const auto* circle = KvDbCircle::cast(piece.curve.get())) {
      // Two halves.
      if (std::fabs(std::fabs(circle->normal().dotProduct(normal)) - 1) > 1e-9) return false;
      const KvGePoint2d middle = inPlane(circle->center(), normal);
      for (const double side : {1.0, -1.0}) {
        vertices.append(KvGePoint2d(middle.x + side * circle->radius(), middle.y));
        bulges.append(piece.isBackwards ? -1 : 1);
      }
      continue;
    }
    if (const auto* arc = KvDbArc::cast(piece.curve.get())) {
      const double along = arc->normal().dotProduct(normal);
      if (std::fabs(std::fabs(along) - 1) > 1e-9) return false;
      bulge = std::tan(arc->totalAngle() / 4) * (along > 0 ? 1 : -1);
    } else if (!KvDbLine::cast(piece.curve.get())) {
      return false;
    }
    vertices.append(inPlane(piece.isBackwards ? end : start, normal));
    bulges.append(piece.isBackwards ? -bulge : bulge);
  }
  return true;
}

/// Adds a loop: by whole entities, which the hatch then follows, else by its edges. False when it can't.
bool addLoop(KvDbHatch& hatch, const EnclosureLoop& loop, int type, bool follows) {
  if (follows) return hatch.appendLoop(type, loop.wholeSources()) == Kvad::eOk;
  KvGePoint2dArray vertices;
  KvArray<double> bulges;
  if (asVertices(loop, hatch.normal(), vertices, bulges))
    return hatch.appendLoop(type, vertices, bulges) == Kvad::eOk;
  // Through entities of its own, which go when their shape has been taken.
  KvDbObjectIdArray ids;
  for (auto& curve : loop.curves()) ids.append(add(std::move(curve), true));
  const bool isAdded = hatch.appendLoop(type, ids) == Kvad::eOk;
  erase(ids);
  return isAdded;
}

/// A hatch in all of the areas; false, with a word, when there can be none.
bool hatchAreas(const std::vector<Enclosure>& areas, const Wish& wish) {
  auto hatch = std::make_unique<KvDbHatch>();
  hatch->setNormal(userNormal());
  hatch->setElevation((KvGeMatrix3d::worldToPlane(userNormal()) * toWorld({0, 0, drawing()->elevation()})).z);
  setPattern(*hatch, wish);
  const auto isWhole = [](const EnclosureLoop& loop) { return !loop.wholeSources().isEmpty(); };
  const bool follows =
      variable(L"HPASSOC", 1) != 0 && std::all_of(areas.begin(), areas.end(), [&](const Enclosure& area) {
        return isWhole(area.outer) && std::all_of(area.islands.begin(), area.islands.end(), isWhole);
      });
  hatch->setAssociative(follows);
  for (const Enclosure& area : areas) {
    bool isAdded = addLoop(*hatch, area.outer, KvDbHatch::kExternal, follows);
    for (const EnclosureLoop& island : area.islands)
      isAdded = addLoop(*hatch, island, KvDbHatch::kDefault, follows) && isAdded;
    if (!isAdded) return fail(L"The outlines can't bound a hatch."), false;
  }
  if (!wish.isSolid() && !hatch->patternStretches([](KvGePoint2d, KvGePoint2d) {}))
    return fail(L"The pattern is too fine for the area: a greater scale would do."), false;
  const KvDbObjectIdArray sources = follows ? hatch->assocObjIds() : KvDbObjectIdArray();
  const KvDbObjectId id = add(std::move(hatch));
  for (KvDbObjectId source : sources)
    change<KvDbEntity>(source, [&](KvDbEntity& entity) { entity.addPersistentReactor(id); });
  return !id.isNull();
}

void runBhatch() {
  if (!drawing()) return;
  Wish wish;
  read(L"HPNAME", wish.pattern);
  read(L"HPSCALE", wish.scale);
  read(L"HPANG", wish.angle);
  std::vector<Enclosure> areas;
  for (;;) {
    KvGePoint3d inside;
    say(L"Current hatch pattern:  " + wish.pattern);
    Ask ask(L"\nSpecify internal point or [Properties/Select objects/Undo]: ");
    const Got got = ask.keywords(L"Properties Select Undo").point(inside);
    if (got == Got::Cancelled) return;
    if (got == Got::Nothing) break;
    if (got == Got::Keyword && ask.keyword == L"Properties") {
      if (!askPattern(wish)) return;
    } else if (got == Got::Keyword && ask.keyword == L"Undo") {
      if (areas.empty())
        say(L"Nothing to undo.");
      else
        areas.pop_back();
    } else if (got == Got::Keyword) {
      if (!areas.empty() && hatchAreas(areas, wish)) remember(wish);
      return hatchSelected(wish);
    } else {
      CString reason;
      auto area = enclosureAt(inside, reason);
      if (area)
        areas.push_back(std::move(*area));
      else
        say(reason);
    }
  }
  if (!areas.empty() && hatchAreas(areas, wish)) remember(wish);
}

/// The areas round points as polylines, or where they have other edges as regions.
void runBoundary() {
  if (!drawing()) return;
  const AllOrNothing together;
  bool wantsRegions = false;
  int polylines = 0, regions = 0;
  const auto addOutline = [&](const EnclosureLoop& loop) {
    KvGePoint2dArray vertices;
    KvArray<double> bulges;
    if (!wantsRegions && asVertices(loop, userNormal(), vertices, bulges) && vertices.length() > 1) {
      auto polyline = std::make_unique<KvDbPolyline>();
      for (int i = 0; i < vertices.length(); ++i) polyline->addVertexAt(i, vertices[i], bulges[i], 0, 0);
      polyline->setClosed(true);
      polyline->setNormal(userNormal());
      polyline->setElevation(
          (KvGeMatrix3d::worldToPlane(userNormal()) * toWorld({0, 0, drawing()->elevation()})).z);
      if (!add(std::move(polyline)).isNull()) ++polylines;
      return;
    }
    KvDbVoidPtrArray curves, made;
    const auto copies = loop.curves();
    for (const auto& copy : copies) curves.append(static_cast<KvDbEntity*>(copy.get()));
    KvDbRegion::createFromCurves(curves, made);
    for (void* region : made)
      if (!add(std::unique_ptr<KvDbEntity>(static_cast<KvDbEntity*>(region))).isNull()) ++regions;
  };
  for (;;) {
    KvGePoint3d inside;
    Ask ask(L"\nSpecify internal point or [Object type]: ");
    const Got got = ask.keywords(L"Object").point(inside);
    if (got == Got::Keyword) {
      Ask type(L"\nEnter type of boundary object [Region/Polyline] <" +
               CString(wantsRegions ? L"Region" : L"Polyline") + L">: ");
      if (type.keywords(L"Region Polyline").word() == Got::Keyword) wantsRegions = type.keyword == L"Region";
      continue;
    }
    if (got != Got::Value) break;
    CString reason;
    const auto area = enclosureAt(inside, reason);
    if (!area) {
      say(reason);
      continue;
    }
    addOutline(area->outer);
    for (const EnclosureLoop& island : area->islands) addOutline(island);
  }
  if (polylines > 0) say(countOf(polylines, polylines == 1 ? L"polyline made" : L"polylines made"));
  if (regions > 0) say(countOf(regions, regions == 1 ? L"region made" : L"regions made"));
}

constexpr KvCommandRow kRows[] = {
    {L"BHATCH", L"BH -BHATCH", KVRX_CMD_MODAL, runBhatch,
     L"Fills the areas round points, as the curves about them cross; what lies in an area is left out.",
     L"Specify internal point or [Properties/Select objects/Undo]: (empty: draws)\nthen, after Properties "
     L"and "
     L"Select objects, the prompts of HATCH"},
    {L"BOUNDARY", L"BO -BOUNDARY BPOLY", KVRX_CMD_MODAL, runBoundary,
     L"Draws the outlines of the areas round points, as the curves about them cross.",
     L"Specify internal point or [Object type]: (empty: ends)\nEnter type of boundary object "
     L"[Region/Polyline] "
     L"<Polyline>: (after Object type; outlines of other than lines and arcs are regions)"},
    {L"HATCH", L"H -HATCH", KVRX_CMD_MODAL, runHatch,
     L"Fills closed outlines with a pattern of lines or a colour.",
     L"Enter a pattern name or [?/Solid/User defined]: (ANSI31, ISO02W100, ...)\nSpecify a scale for the "
     L"pattern "
     L"<1>:\nSpecify an angle for the pattern <0>:\nSelect objects: (closed curves, or curves that close "
     L"together; inner "
     L"outlines are islands)"},
};

}  // namespace

std::span<const KvCommandRow> hatchRows() {
  return kRows;
}

}  // namespace kvcmd
