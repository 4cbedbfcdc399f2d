// DRAWORDER and WIPEOUT: what covers what.
#include "host/commands/internal/rows.h"
#include "host/commands/internal/support.h"
#include "host/database/draworder.h"
#include "host/entities/polyline.h"
#include "host/entities/rasterimage.h"

namespace kvcmd {
namespace {

void runDrawOrder() {
  if (!drawing()) return;
  const KvDbObjectIdArray moved = select();
  if (moved.isEmpty()) return;
  Ask ask(L"\nEnter object ordering option [Above objects/Under objects/Front/Back] <Back>: ");
  const Got got = ask.keywords(L"Above Under Front Back").word();
  if (got == Got::Cancelled) return;
  KvDbDrawPlace place = KvDbDrawPlace::Back;
  KvDbObjectIdArray others;
  if (got == Got::Keyword && ask.keyword == L"Front") place = KvDbDrawPlace::Front;
  if (got == Got::Keyword && (ask.keyword == L"Above" || ask.keyword == L"Under")) {
    place = ask.keyword == L"Above" ? KvDbDrawPlace::Above : KvDbDrawPlace::Under;
    others = select(L"\nSelect reference objects: ", true);
    if (others.isEmpty()) return;
  }
  if (kvdbMoveInDrawOrder(drawing()->currentSpaceId(), moved, place, others) != Kvad::eOk)
    fail(L"Other objects of the same space expected.");
}

void addWipeout(const std::vector<KvGePoint3d>& world) {
  auto made = KvDbWipeout::make(world);
  if (!made) return fail(L"The points enclose no area.");
  if (add(std::move(made)).isNull()) fail(L"The wipeout could not be made.");
}

void setFrames() {
  Ask ask(L"\nEnter mode [ON/OFF/Display but not plot] <ON>: ");
  const Got got = ask.keywords(L"ON OFF Display").word();
  if (got == Got::Cancelled) return;
  const auto mode = got == Got::Nothing || ask.keyword == L"ON" ? KvDbFrameMode::Always
                    : ask.keyword == L"OFF"                     ? KvDbFrameMode::Never
                                                                : KvDbFrameMode::ScreenOnly;
  if (kvdbSetWipeoutFrames(*drawing(), mode) != Kvad::eOk) fail(L"The frames stay as they are.");
}

void wipeoutOfPolyline() {
  KvDbObjectId id;
  const auto isPolyline = [](KvDbObjectId one) { return look<KvDbPolyline>(one) != nullptr; };
  if (Ask(L"\nSelect a closed polyline: ").prefer(isPolyline).entity(id) != Got::Value) return;
  const auto* polyline = look<KvDbPolyline>(id);
  if (!polyline || !polyline->isClosed() || !polyline->isOnlyLines())
    return fail(L"A closed polyline of straight segments expected.");
  std::vector<KvGePoint3d> corners;
  for (int i = 0; i < polyline->numVerts(); ++i) {
    KvGePoint3d corner;
    polyline->getPointAt(i, corner);
    corners.push_back(corner);
  }
  const auto erases = askYes(L"\nErase polyline?", false);
  if (!erases) return;
  if (*erases && isLocked(id)) return fail(L"The object is on a locked layer.");
  addWipeout(corners);
  if (*erases) change<KvDbEntity>(id, [](KvDbEntity& entity) { entity.erase(); });
}

void runWipeout() {
  if (!drawing()) return;
  std::vector<KvGePoint3d> points(1);
  Ask first(L"\nSpecify first point or [Frames/Polyline] <Polyline>: ");
  const Got begun = first.keywords(L"Frames Polyline").point(points[0]);
  if (begun == Got::Cancelled) return;
  if (begun == Got::Keyword && first.keyword == L"Frames") return setFrames();
  if (begun != Got::Value) return wipeoutOfPolyline();
  for (;;) {
    const bool mayClose = points.size() > 2;
    Ask ask(mayClose             ? L"\nSpecify next point or [Close/Undo]: "
            : points.size() == 2 ? L"\nSpecify next point or [Undo]: "
                                 : L"\nSpecify next point: ");
    KvGePoint3d point;
    const Got got = ask.keywords(mayClose             ? L"Close Undo"
                                 : points.size() == 2 ? L"Undo"
                                                      : L"")
                        .base(points.back())
                        .point(point);
    if (got == Got::Cancelled) return;
    if (got == Got::Value)
      points.push_back({point.x, point.y, points[0].z});
    else if (got == Got::Keyword && ask.keyword == L"Undo")
      points.pop_back();
    else
      break;
  }
  for (KvGePoint3d& point : points) point = toWorld(point);
  addWipeout(points);
}

constexpr KvCommandRow kRows[] = {
    {L"DRAWORDER", L"DR", KVRX_CMD_USEPICKSET, runDrawOrder,
     L"Puts objects in front of others, or behind them.",
     L"Select objects:\nEnter object ordering option [Above objects/Under objects/Front/Back] "
     L"<Back>:\nSelect reference objects: (after Above, Under)"},
    {L"WIPEOUT", L"", KVRX_CMD_MODAL, runWipeout, L"Covers an area, so that what lies under it isn't seen.",
     L"Specify first point or [Frames/Polyline] <Polyline>:\nSpecify next point or [Close/Undo]: (empty: "
     L"closes)\nSelect a closed polyline: (after Polyline)\nErase polyline? [Yes/No] <No>:\nEnter mode "
     L"[ON/OFF/Display but not plot] <ON>: (after Frames)"},
};

}  // namespace

std::span<const KvCommandRow> orderRows() {
  return kRows;
}

}  // namespace kvcmd
