// What goes on from dimensions and changes them: DIMBASELINE, DIMCONTINUE, DIMCENTER, DIMEDIT, DIMTEDIT,
// DIMOVERRIDE.
#include "host/commands/internal/dimstyle.h"
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/block.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/polyline.h"
#include "host/geometry/polyline.h"
#include "platform/text/number.h"

namespace kvcmd {
namespace {

/// From where chains of dimensions go on: the origin that the next one shares and the other one; world
/// coordinates.
struct Chain {
  KvDbObjectId base;
  KvGePoint3d shared, other;
};

/// Where the lines of an angular dimension meet.
std::optional<KvGePoint3d> vertexOf(const KvDb2LineAngularDimension& dimension) {
  const KvGeVector3d a = dimension.xLine1End() - dimension.xLine1Start(),
                     b = dimension.xLine2End() - dimension.xLine2Start();
  const KvGeVector3d across = dimension.xLine2Start() - dimension.xLine1Start();
  const double turn = dimension.normal().dotProduct(a.crossProduct(b));
  if (std::fabs(turn) < kSmallestTurn * a.length() * b.length()) return std::nullopt;
  return dimension.xLine1Start() + a * (dimension.normal().dotProduct(across.crossProduct(b)) / turn);
}

/// The two origins of a dimension that may be gone on from; false for other kinds.
bool originsOf(KvDbObjectId id, KvGePoint3d& first, KvGePoint3d& second) {
  if (const auto* rotated = look<KvDbRotatedDimension>(id)) {
    first = rotated->xLine1Point();
    second = rotated->xLine2Point();
  } else if (const auto* aligned = look<KvDbAlignedDimension>(id)) {
    first = aligned->xLine1Point();
    second = aligned->xLine2Point();
  } else if (const auto* angle = look<KvDb3PointAngularDimension>(id)) {
    first = angle->xLine1Point();
    second = angle->xLine2Point();
  } else if (const auto* lines = look<KvDb2LineAngularDimension>(id)) {
    first = lines->xLine1End();
    second = lines->xLine2End();
  } else if (const auto* ordinate = look<KvDbOrdinateDimension>(id)) {
    first = second = ordinate->definingPoint();
  } else {
    return false;
  }
  return true;
}

/// The newest dimension of the current space, when there is one that may be gone on from.
KvDbObjectId newestDimension() {
  const auto* space = look<KvDbBlockTableRecord>(drawing()->currentSpaceId());
  if (!space) return {};
  const KvDbObjectIdArray ids = space->entities();
  for (int i = ids.length() - 1; i >= 0; --i)
    if (look<KvDbDimension>(ids[i])) {
      KvGePoint3d first, second;
      return originsOf(ids[i], first, second) ? ids[i] : KvDbObjectId();
    }
  return {};
}

Chain chainFrom(KvDbObjectId id, bool sharesFirst) {
  Chain chain{id, {}, {}};
  originsOf(id, chain.shared, chain.other);
  if (!sharesFirst) std::swap(chain.shared, chain.other);
  return chain;
}

/// The dimension that the user points at; the nearer origin is shared. False after a cancel.
bool selectChain(bool isBaseline, Chain& chain) {
  KvDbObjectId id;
  KvGePoint3d pick, first, second;
  for (;;) {
    if (Ask(isBaseline ? L"\nSelect base dimension: " : L"\nSelect continued dimension: ")
            .entity(id, &pick) != Got::Value)
      return false;
    if (originsOf(id, first, second)) break;
    say(L"A linear, ordinate or angular dimension expected.");
  }
  const KvGePoint3d at = toWorld(pick);
  chain = chainFrom(id, first.distanceTo(at) <= second.distanceTo(at));
  return true;
}

/// How far the next line of a baseline chain lies from the one before.
double lineDistance(const KvDbDimension& base) {
  const KvDbDimVars vars = base.dimVars();
  const double scale = vars.real(KvDbDimVar::Scale);
  return vars.real(KvDbDimVar::Dli) * (scale > 0 ? scale : 1);
}

/// The place of a dimension line beside another one, on the side that leads away from the origins.
KvGePoint3d besideLine(const KvDbDimension& base, const KvGePoint3d& line, const KvGePoint3d& origin,
                       const KvGeVector3d& along, bool isBaseline) {
  if (!isBaseline) return line;
  const KvGeVector3d aside = base.normal().crossProduct(along).normal();
  const double side = aside.dotProduct(line - origin) < 0 ? -1 : 1;
  return line + aside * (side * lineDistance(base));
}

std::unique_ptr<KvDbDimension> nextLinear(const Chain& chain, const KvGePoint3d& to, bool isBaseline) {
  if (const auto* rotated = look<KvDbRotatedDimension>(chain.base)) {
    const KvGeVector3d along = KvGeMatrix3d::planeToWorld(rotated->normal()) *
                               KvGeVector3d(std::cos(rotated->rotation()), std::sin(rotated->rotation()), 0);
    return std::make_unique<KvDbRotatedDimension>(
        rotated->rotation(), chain.shared, to,
        besideLine(*rotated, rotated->dimLinePoint(), chain.shared, along, isBaseline));
  }
  const auto* aligned = look<KvDbAlignedDimension>(chain.base);
  const KvGeVector3d along = aligned->xLine2Point() - aligned->xLine1Point();
  const KvGeVector3d flat = KvGeMatrix3d::worldToPlane(aligned->normal()) * along;
  // In a row the lines keep one direction, whatever the next point is.
  return std::make_unique<KvDbRotatedDimension>(
      std::atan2(flat.y, flat.x), chain.shared, to,
      besideLine(*aligned, aligned->dimLinePoint(), chain.shared, along, isBaseline));
}

std::unique_ptr<KvDbDimension> nextAngular(const Chain& chain, const KvGePoint3d& to, bool isBaseline) {
  KvGePoint3d vertex, arc;
  if (const auto* angle = look<KvDb3PointAngularDimension>(chain.base)) {
    vertex = angle->centerPoint();
    arc = angle->arcPoint();
  } else {
    const auto* lines = look<KvDb2LineAngularDimension>(chain.base);
    const auto meeting = vertexOf(*lines);
    if (!meeting) return nullptr;
    vertex = *meeting;
    arc = lines->arcPoint();
  }
  const double radius =
      vertex.distanceTo(arc) + (isBaseline ? lineDistance(*look<KvDbDimension>(chain.base)) : 0);
  const KvGeVector3d middle = (chain.shared - vertex).normal() + (to - vertex).normal();
  if (middle.length() < kSmallestTurn) return nullptr;
  auto made = std::make_unique<KvDb3PointAngularDimension>();
  made->setCenterPoint(vertex);
  made->setXLine1Point(chain.shared);
  made->setXLine2Point(to);
  made->setArcPoint(vertex + middle.normal() * radius);
  return made;
}

std::unique_ptr<KvDbDimension> nextOrdinate(const Chain& chain, const KvGePoint3d& to) {
  const auto* base = look<KvDbOrdinateDimension>(chain.base);
  // Leaders end on one line.
  const KvGeMatrix3d user = userToWorld();
  const KvGePoint3d end = toUser(base->leaderEndPoint()), at = toUser(to);
  const KvGePoint3d aligned =
      base->isUsingXAxis() ? KvGePoint3d(at.x, end.y, at.z) : KvGePoint3d(end.x, at.y, at.z);
  auto made = std::make_unique<KvDbOrdinateDimension>(base->isUsingXAxis(), to, user * aligned);
  made->setOrigin(base->origin());
  return made;
}

/// Puts the next dimension into the drawing with the look of its base; null, with a word, when nothing can be
/// measured.
KvDbObjectId addNext(const Chain& chain, const KvGePoint3d& to, bool isBaseline) {
  const auto* base = look<KvDbDimension>(chain.base);
  std::unique_ptr<KvDbDimension> made;
  if (look<KvDbOrdinateDimension>(chain.base))
    made = nextOrdinate(chain, to);
  else
    made = base->isAngular() ? nextAngular(chain, to, isBaseline) : nextLinear(chain, to, isBaseline);
  double value = 0;
  if (made) {
    made->setNormal(base->normal());
    made->setDimensionStyle(base->dimensionStyle());
  }
  if (!made || made->getMeasurement(value) != Kvad::eOk) {
    say(L"There is nothing to measure.");
    return {};
  }
  const double turn = base->horizontalRotation();
  const KvDbDimVars vars = base->dimVars();
  const KvDbObjectId id = add(std::move(made));
  auto status = Kvad::eDegenerateGeometry;
  change<KvDbDimension>(id, [&](KvDbDimension& next) {
    if (turn != 0) next.setHorizontalRotation(turn);
    next.setDimVars(vars);
    status = next.recomputeDimBlock(true);
    if (status != Kvad::eOk) next.erase();
  });
  if (status != Kvad::eOk) return say(L"There is nothing to measure."), KvDbObjectId();
  say(L"Dimension text = " + (look<KvDbDimension>(id)->isAngular() ? angleText(value) : lengthText(value)));
  return id;
}

void chainDimensions(bool isBaseline) {
  if (!drawing()) return;
  Chain chain;
  const KvDbObjectId newest = newestDimension();
  if (!newest.isNull())
    chain = chainFrom(newest, isBaseline);
  else if (!selectChain(isBaseline, chain))
    return;
  std::vector<Chain> before;
  for (;;) {
    KvGePoint3d to;
    const bool isOrdinate = look<KvDbOrdinateDimension>(chain.base) != nullptr;
    Ask ask(isOrdinate ? L"\nSpecify feature location or [Select/Undo] <Select>: "
                       : L"\nSpecify second extension line origin or [Select/Undo] <Select>: ");
    const Got got = ask.keywords(L"Select Undo").base(toUser(chain.shared)).point(to);
    if (got == Got::Cancelled) return;
    if (got == Got::Keyword && ask.keyword == L"Undo") {
      if (before.empty()) {
        say(L"Nothing to undo.");
        continue;
      }
      change<KvDbEntity>(chain.base, [](KvDbEntity& entity) { entity.erase(); });
      chain = before.back();
      before.pop_back();
      continue;
    }
    if (got != Got::Value) {
      if (!selectChain(isBaseline, chain)) return;
      before.clear();
      continue;
    }
    const KvDbObjectId made = addNext(chain, toWorld(to), isBaseline);
    if (made.isNull()) continue;
    before.push_back(chain);
    chain = chainFrom(made, isBaseline);
  }
}

void runBaseline() {
  chainDimensions(true);
}
void runContinue() {
  chainDimensions(false);
}

void runCenter() {
  if (!drawing()) return;
  KvDbObjectId id;
  KvGePoint3d pick, center;
  double radius = 0;
  const auto isRound = [](KvDbObjectId one) { return look<KvDbCircle>(one) || look<KvDbArc>(one); };
  if (Ask(L"\nSelect arc or circle: ").prefer(isRound).entity(id, &pick) != Got::Value) return;
  if (const auto* circle = look<KvDbCircle>(id)) {
    center = circle->center();
    radius = circle->radius();
  } else if (const auto* arc = look<KvDbArc>(id)) {
    center = arc->center();
    radius = arc->radius();
  } else {
    return fail(L"The object is no arc and no circle.");
  }
  const KvDbDimVars vars = presentDimVars();
  const double scale = vars.real(KvDbDimVar::Scale) > 0 ? vars.real(KvDbDimVar::Scale) : 1;
  const double mark = vars.real(KvDbDimVar::Cen) * scale, size = std::fabs(mark);
  if (size == 0) return fail(L"DIMCEN is 0: there is no mark to draw.");
  const KvGePoint3d at = toUser(center);
  const auto line = [&](const KvGeVector3d& from, const KvGeVector3d& to) {
    addFromUser(std::make_unique<KvDbLine>(at + from, at + to));
  };
  for (const KvGeVector3d& axis : {KvGeVector3d::kXAxis, KvGeVector3d::kYAxis}) {
    line(axis * -size, axis * size);
    // Below 0 the variable asks for lines beyond the circle as well.
    if (mark > 0 || radius <= 2 * size) continue;
    line(axis * (2 * size), axis * (radius + size));
    line(axis * (-2 * size), axis * (-radius - size));
  }
}

template <class Work>
void changeDimensions(const KvDbObjectIdArray& ids, const Work& work) {
  int refused = 0;
  for (KvDbObjectId id : ids) {
    if (!look<KvDbDimension>(id)) {
      ++refused;
      continue;
    }
    change<KvDbDimension>(id, [&](KvDbDimension& dimension) {
      work(dimension);
      dimension.recomputeDimBlock(true);
    });
  }
  if (refused > 0) say(countOf(refused, L"not dimensions, left out"));
}

void toHome(KvDbDimension& dimension) {
  dimension.useDefaultTextPosition();
  dimension.setTextRotation(0);
}

void runDimedit() {
  if (!drawing()) return;
  Ask ask(L"\nEnter type of dimension editing [Home/New/Rotate/Oblique] <Home>: ");
  const Got got = ask.keywords(L"Home New Rotate Oblique").word();
  if (got == Got::Cancelled) return;
  const CString what = got == Got::Nothing ? CString(L"Home") : ask.keyword;
  CString text;
  double angle = 0;
  if (what == L"New" && Ask(L"\nEnter dimension text <<>>: ").text(text, true) == Got::Cancelled) return;
  if (what == L"Rotate" && Ask(L"\nSpecify angle for dimension text <0>: ").angle(angle) == Got::Cancelled)
    return;
  const KvDbObjectIdArray ids = select();
  if (ids.isEmpty()) return;
  if (what == L"Oblique" &&
      Ask(L"\nEnter obliquing angle (press ENTER for none): ").angle(angle) == Got::Cancelled)
    return;
  changeDimensions(ids, [&](KvDbDimension& dimension) {
    if (what == L"Home") toHome(dimension);
    if (what == L"New") dimension.setDimensionText(text);
    if (what == L"Rotate") dimension.setTextRotation(angle);
    if (what != L"Oblique") return;
    if (auto* rotated = KvDbRotatedDimension::cast(&dimension)) rotated->setOblique(angle);
    if (auto* aligned = KvDbAlignedDimension::cast(&dimension)) aligned->setOblique(angle);
  });
}

void runDimtedit() {
  if (!drawing()) return;
  KvDbObjectId id;
  const auto isDimension = [](KvDbObjectId one) { return look<KvDbDimension>(one) != nullptr; };
  if (Ask(L"\nSelect dimension: ").prefer(isDimension).entity(id) != Got::Value) return;
  if (!look<KvDbDimension>(id)) return fail(L"The object is no dimension.");
  if (isLocked(id)) return fail(L"The object is on a locked layer.");
  KvGePoint3d at;
  double angle = 0;
  Ask ask(L"\nSpecify new location for dimension text or [Left/Right/Center/Home/Angle]: ");
  const Got got = ask.keywords(L"Left Right Center Home Angle").point(at);
  if (got != Got::Value && got != Got::Keyword) return;
  if (got == Got::Keyword && ask.keyword == L"Angle" &&
      Ask(L"\nSpecify angle for dimension text <0>: ").angle(angle) == Got::Cancelled)
    return;
  enum Just { kCentered = 0, kFirst = 1, kSecond = 2 };
  change<KvDbDimension>(id, [&](KvDbDimension& dimension) {
    const auto justify = [&](Just just) {
      dimension.useDefaultTextPosition();
      dimension.setVariable(KvDbDimVar::Just, just);
    };
    if (got == Got::Value)
      dimension.setTextPosition(toWorld(at));
    else if (ask.keyword == L"Home")
      toHome(dimension);
    else if (ask.keyword == L"Angle")
      dimension.setTextRotation(angle);
    else
      justify(ask.keyword == L"Left" ? kFirst : ask.keyword == L"Right" ? kSecond : kCentered);
    dimension.recomputeDimBlock(true);
  });
}

void runDimoverride() {
  if (!drawing()) return;
  std::vector<std::pair<const KvDbDimVarRow*, CString>> wanted;
  bool clears = false;
  for (;;) {
    CString name, value;
    const Got got = Ask(wanted.empty() ? L"\nEnter dimension variable name to override or [Clear overrides]: "
                                       : L"\nEnter dimension variable name to override: ")
                        .text(name);
    if (got == Got::Cancelled || (got == Got::Nothing && wanted.empty())) return;
    if (got == Got::Nothing) break;
    if (wanted.empty() && (name.CompareNoCase(L"C") == 0 || name.CompareNoCase(L"Clear") == 0)) {
      clears = true;
      break;
    }
    const KvDbDimVarRow* row = kvdbDimVarNamed(name.view());
    if (!row) row = kvdbDimVarNamed((L"DIM" + name).view());
    if (!row || row->kind == KvDbDimVarRow::Reference) {
      say(L"\"" + name + L"\" is no dimension variable that can be overridden here.");
      continue;
    }
    const KvDbDimVars now = presentDimVars();
    const CString shown =
        row->kind == KvDbDimVarRow::Text ? now.text(row->variable) : numberText(now.real(row->variable));
    double number = 0;
    if (Ask(L"\nEnter new value for dimension variable <" + shown + L">: ")
            .text(value, row->kind == KvDbDimVarRow::Text) == Got::Cancelled)
      return;
    if (value.IsEmpty()) value = shown;
    if (value.CompareNoCase(L"ON") == 0) value = L"1";
    if (value.CompareNoCase(L"OFF") == 0) value = L"0";
    if (row->kind != KvDbDimVarRow::Text && !platform::parseWhole(value.view(), number))
      say(L"A number expected.");
    else
      wanted.emplace_back(row, value);
  }
  changeDimensions(select(), [&](KvDbDimension& dimension) {
    KvDbDimVars vars = clears ? KvDbDimVars::ofStyle(dimension.dimensionStyle()) : dimension.dimVars();
    for (const auto& [row, value] : wanted) {
      double number = 0;
      if (row->kind == KvDbDimVarRow::Text)
        vars.set(row->variable, value.GetString());
      else if (platform::parseWhole(value.view(), number))
        vars.set(row->variable, number);
    }
    dimension.setDimVars(vars);
  });
}

constexpr KvCommandRow kRows[] = {
    {L"DIMBASELINE", L"DBA DIMBASE", KVRX_CMD_MODAL, runBaseline,
     L"Dimensions from the first origin of the dimension before, each line beside the last.",
     L"Select base dimension: (when the last one made doesn't do)\nSpecify second extension line origin or "
     L"[Select/Undo] <Select>:"},
    {L"DIMCENTER", L"DCE", KVRX_CMD_MODAL, runCenter, L"Marks the centre of a circle or arc by DIMCEN.",
     L"Select arc or circle:"},
    {L"DIMCONTINUE", L"DCO DIMCONT", KVRX_CMD_MODAL, runContinue,
     L"Dimensions on from the second origin of the dimension before.",
     L"Select continued dimension: (when the last one made doesn't do)\nSpecify second extension line origin "
     L"or [Select/Undo] <Select>:"},
    {L"DIMEDIT", L"DED DIMED", KVRX_CMD_MODAL, runDimedit,
     L"Changes the texts of dimensions, and the slope of their extension lines.",
     L"Enter type of dimension editing [Home/New/Rotate/Oblique] <Home>:\nEnter dimension text <<>>: (after "
     L"New)\nSpecify angle for dimension text <0>: (after Rotate)\nSelect objects:\nEnter obliquing angle "
     L"(press ENTER for none): (after Oblique)"},
    {L"DIMOVERRIDE", L"DOV DIMOVER", KVRX_CMD_MODAL, runDimoverride,
     L"Gives single dimensions values of variables that differ from their style.",
     L"Enter dimension variable name to override or [Clear overrides]:\nEnter new value for dimension "
     L"variable <>:\nSelect objects:"},
    {L"DIMTEDIT", L"DIMTED", KVRX_CMD_MODAL, runDimtedit, L"Moves and turns the text of a dimension.",
     L"Select dimension:\nSpecify new location for dimension text or "
     L"[Left/Right/Center/Home/Angle]:\nSpecify "
     L"angle for dimension text <0>: (after Angle)"},
};

}  // namespace

std::span<const KvCommandRow> dimensionEditRows() {
  return kRows;
}

}  // namespace kvcmd
