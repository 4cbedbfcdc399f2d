#include "siblings/tools/nest_frames.h"

#include <cmath>
#include <numbers>

#include "host/base/context.h"
#include "host/database/names.h"
#include "host/database/tables.h"
#include "host/editor/editor.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "module/select/prompts.h"
#include "module/toolkit/guards.h"
#include "platform/text/number.h"

namespace {

constexpr double kRounding = 1e-6;
constexpr double kGreatest = 1e9;  ///< sheet sides, gaps
constexpr int kMostNamed = 10;     ///< frames that a message names

bool extentsOf(const KvDbEntity& entity, KvDbExtents& extents) {
  if (entity.getGeomExtents(extents) != Kvad::eOk || extents.isEmpty()) return false;
  const KvGePoint3d &least = extents.minPoint(), &greatest = extents.maxPoint();
  return std::isfinite(least.x) && std::isfinite(least.y) && std::isfinite(greatest.x - least.x) &&
         std::isfinite(greatest.y - least.y);
}

bool extentsOf(KvDbObjectId id, KvDbExtents& extents) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return false;
  const bool has = extentsOf(*entity, extents);
  entity->close();
  return has;
}

bool isOnLockedLayer(KvDbObjectId id) {
  KvDbEntity* entity = nullptr;
  KvDbLayerTableRecord* layer = nullptr;
  if (kvdbOpenObject(entity, id, KvDb::kForRead) != Kvad::eOk) return false;
  const KvDbObjectId layerId = entity->layerId();
  entity->close();
  if (kvdbOpenObject(layer, layerId, KvDb::kForRead) != Kvad::eOk) return false;
  const bool isLocked = layer->isLocked();
  layer->close();
  return isLocked;
}

struct Frame {
  KvDbObjectId id;
  KvDbExtents extents;
};

KvGeMatrix3d moveTo(const KvDbExtents& extents, const FramePlace& place, double x, double y) {
  const KvGePoint3d corner = extents.minPoint();
  const KvGeMatrix3d move = KvGeMatrix3d::translation(KvGeVector3d(x - corner.x, y - corner.y, 0));
  if (!place.turned) return move;
  // The turn takes the frame to the left of its corner.
  return move * KvGeMatrix3d::translation(KvGeVector3d(place.width, 0, 0)) *
         KvGeMatrix3d::rotation(std::numbers::pi / 2, KvGeVector3d::kZAxis, corner);
}

/// Moves one frame. Extents of turned texts and the like aren't always the turned extents: what fits its
/// place is set into the corner.
bool moveFrame(const Frame& frame, const FramePlace& place, double x, double y, bool& fits) {
  KvDbEntity* entity = nullptr;
  if (kvdbOpenObject(entity, frame.id, KvDb::kForWrite) != Kvad::eOk) return false;
  const bool moved = entity->transformBy(moveTo(frame.extents, place, x, y)) == Kvad::eOk;
  KvDbExtents now;
  fits = true;
  if (moved && place.turned && extentsOf(*entity, now)) {
    const KvGePoint3d &least = now.minPoint(), &greatest = now.maxPoint();
    const double rounding = kRounding * std::max(1.0, std::fabs(x) + std::fabs(y)) / 2;
    fits = greatest.x - least.x <= place.width + rounding && greatest.y - least.y <= place.height + rounding;
    const KvGeVector3d off(x - least.x, y - least.y, 0);
    if (off.length() > rounding) entity->transformBy(KvGeMatrix3d::translation(off));
  }
  entity->close();
  return moved;
}

// --- The command

/// What the user picks, without what stands on locked layers; false after a cancel.
bool pickFrames(KvDbObjectIdArray& frames) {
  const wchar_t* prompts[2] = {L"\nSelect frames: ", L"\nRemove frames: "};
  kvds_name set;
  if (kvedSSGet(L":$", prompts, nullptr, nullptr, set) != RTNORM) return false;
  long length = 0;
  kvedSSLength(set, &length);
  int locked = 0;
  for (long i = 0; i < length; ++i) {
    kvds_name name;
    KvDbObjectId id;
    if (kvedSSName(set, i, name) != RTNORM || kvdbGetObjectId(id, name) != Kvad::eOk || !id.isValid())
      continue;
    if (isOnLockedLayer(id))
      ++locked;
    else
      frames.append(id);
  }
  kvedSSFree(set);
  if (locked > 0) kvutPrintf(L"\n%d on a locked layer, left out.", locked);
  return true;
}

/// Asks again until the value is one; false after a cancel.
bool askLength(const wchar_t* what, bool mayBeZero, double& value) {
  for (;;) {
    CString prompt;
    prompt.Format(L"\n%s <%.6g>: ", what, value);
    double answer = value;
    kvedInitGet(mayBeZero ? KVED_NONEG : KVED_NOZERO | KVED_NONEG, L"");
    const int status = kvedGetDist(nullptr, prompt, &answer);
    if (status == RTNONE) return true;
    if (status != RTNORM) return false;
    if (answer <= kGreatest) {
      value = answer;
      return true;
    }
    kvutPrintf(L"\nAt most %.6g expected.", kGreatest);
  }
}

/// "3 without extents, left out: 2F, 30, 31"; behind a handle stands the size, if any.
void tell(const KvDbObjectIdArray& ids, const wchar_t* what) {
  if (ids.isEmpty()) return;
  CString text;
  text.Format(L"\n%d %s: ", ids.length(), what);
  for (int i = 0; i < ids.length() && i < kMostNamed; ++i) {
    text += (i > 0 ? L", " : L"") + ids[i].handle().toText();
    KvDbExtents extents;
    if (!extentsOf(ids[i], extents)) continue;
    CString size;
    size.Format(L" (%.6g x %.6g)", extents.maxPoint().x - extents.minPoint().x,
                extents.maxPoint().y - extents.minPoint().y);
    text += size;
  }
  if (ids.length() > kMostNamed) text += L", ...";
  kvedPrintText(text);
}

void report(const NestOutcome& outcome, int frames) {
  constexpr double kPercent = 100;
  CString text;
  const int sheets = outcome.placed > 0 ? outcome.sheets : 0;
  text.Format(L"\n%d of %d frames placed on %d %s, %d turned, %.1f %% used.", outcome.placed, frames, sheets,
              sheets == 1 ? L"sheet" : L"sheets", outcome.turned, kPercent * outcome.used);
  kvedPrintText(text);
  tell(outcome.notPlaced, L"that no sheet takes, left where they were");
  tell(outcome.noExtents, L"without extents, left out");
  tell(outcome.notMovable, L"could not be moved");
  tell(outcome.changedSize, L"larger than their place since they were turned");
  kvedPrintText(L"\n");
}

}  // namespace

NestOutcome nestFrames(const KvDbObjectIdArray& ids, const SheetRow& row, const KvGePoint3d& start) {
  NestOutcome outcome;
  std::vector<Frame> frames;
  std::vector<FrameSize> sizes;
  for (KvDbObjectId id : ids) {
    Frame frame{id, {}};
    if (!extentsOf(id, frame.extents)) {
      outcome.noExtents.append(id);
      continue;
    }
    const KvGeVector3d size = frame.extents.maxPoint() - frame.extents.minPoint();
    sizes.push_back({size.x, size.y});
    frames.push_back(frame);
  }
  std::vector<FramePlace> places = layFramesOut(sizes, row, outcome.sheets);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    FramePlace& place = places[i];
    if (!place.placed) {
      outcome.notPlaced.append(frames[i].id);
      continue;
    }
    bool fits = true;
    const double x = start.x + (place.sheet - 1) * row.pitch() + place.x, y = start.y + place.y;
    if (!moveFrame(frames[i], place, x, y, fits)) {
      outcome.notMovable.append(frames[i].id);
      place.placed = false;
      continue;
    }
    ++outcome.placed;
    if (place.turned) ++outcome.turned;
    if (!fits) outcome.changedSize.append(frames[i].id);
  }
  outcome.used = usedShare(places, row.length, row.height, outcome.sheets);
  return outcome;
}

void nestCommand() {
  if (!kvdbDatabaseOrWorking(nullptr)) return;
  KvDbObjectIdArray frames;
  if (!pickFrames(frames)) return;
  if (frames.isEmpty()) {
    KvHostContext::current().editor->fail(L"Nothing is left to be laid out.");
    return;
  }
  constexpr double kLength = 841, kHeight = 594;
  SheetRow row{kLength, kHeight};
  if (!askLength(L"Length of a sheet, along X", false, row.length) ||
      !askLength(L"Height of a sheet", false, row.height) ||
      !askLength(L"Distance between frames", true, row.gap) ||
      !askLength(L"Edge distance, half of it usable beyond an inner gap", true, row.edge) ||
      !askLength(L"Distance between sheets", true, row.between))
    return;
  double point[3] = {0, 0, 0};
  kvedInitGet(0, L"");
  const int status = IM_ADS_GETPOINT(nullptr, L"\nLower left corner of the first sheet <0,0>: ", point);
  if (status != RTNORM && status != RTNONE) return;
  ImUndoRecord step;
  const NestOutcome outcome = nestFrames(frames, row, KvGePoint3d(point[0], point[1], point[2]));
  step.accept();
  report(outcome, frames.length());
}
