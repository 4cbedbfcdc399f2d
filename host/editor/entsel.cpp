#include <cmath>

#include "host/base/context.h"
#include "host/database/entity.h"
#include "host/database/names.h"
#include "host/editor/editor.h"
#include "host/editor/internal/asking.h"
#include "host/editor/internal/selecting.h"
#include "host/editor/selection.h"

namespace {

using kved::Verdict;
using Kind = KvEdToken::Kind;

struct Picked {
  KvEdPick pick;
  KvGePoint3d point;  // user coordinates
};

/// What lies under a point; ERRNO tells of a miss.
bool pickAt(KvEdEditor& editor, KvDbDatabase& database, const KvGePoint3d& point, bool nested, Picked& picked,
            const kved::Picker::Accept& accept = {}) {
  const KvGePoint3d world = kved::userToWorld(point);
  const kved::Picker picker(database);
  auto hit = picker.nearest(world, accept);
  if (!hit && accept) hit = picker.nearest(world);
  if (!hit) {
    kved::setErrno(editor, kKvedErrnoMiss);
    return false;
  }
  picked = {kved::pickOf(*hit, world, nested), point};
  return true;
}

Verdict takeId(KvEdEditor& editor, KvDbObjectId id, const KvGePoint3d& point, Picked& picked) {
  if (!id.isValid() || !KvDbEntity::cast(id.stub()->object)) {
    kved::setErrno(editor, kKvedErrnoMiss);
    return Verdict::taken(RTERROR);
  }
  picked = {KvEdPick::of(id), point};
  return Verdict::taken();
}

Verdict takeList(KvEdEditor& editor, Picked& picked) {
  KvDbObjectId id;
  KvGePoint3d at = editor.lastPoint;
  for (;;) {
    const KvEdToken token = editor.readToken(KvEdReadMode::Word, CString());
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return Verdict::taken(RTCAN);
    if (token.kind == Kind::ListEnd) return takeId(editor, id, at, picked);
    if (token.kind == Kind::Name) kvdbGetObjectId(id, token.name);
    if (const auto point = kved::pointOf(token)) at = *point;
  }
}

int select(const wchar_t* prompt, bool nested, Picked& picked) {
  KvEdEditor* editor = KvHostContext::current().editor;
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!editor || !database) return RTERROR;
  const auto options = editor->takeGetOptions();
  kved::setErrno(*editor, 0);
  const CString question(prompt && prompt[0] ? prompt : L"\nSelect object: ");
  const int status = kved::ask(*editor, question, options, [&](const KvEdToken& token) {
    if (token.kind == Kind::ListBegin) return takeList(*editor, picked);
    if (token.kind == Kind::Name) {
      KvDbObjectId id;
      kvdbGetObjectId(id, token.name);
      return takeId(*editor, id, editor->lastPoint, picked);
    }
    if (token.kind == Kind::Text &&
        (token.text.CompareNoCase(L"L") == 0 || token.text.CompareNoCase(L"LAST") == 0))
      return takeId(*editor, kved::lastSeen(*database), editor->lastPoint, picked);
    KvGePoint3d point;
    kved::PointWish wish;
    wish.isPick = true;
    Verdict verdict = kved::judgePoint(*editor, token, question, point, wish);
    if (verdict.isTaken && verdict.status == RTNORM &&
        !pickAt(*editor, *database, point, nested, picked, options.accept))
      verdict.status = RTERROR;
    return verdict;
  });
  if (status != RTNONE) return status;
  kved::setErrno(*editor, kKvedErrnoEmpty);
  return RTERROR;
}

void give(const Picked& picked, long long* name, double* point) {
  kvdbGetKvdsName(name, picked.pick.id);
  if (!point) return;
  point[0] = picked.point.x;
  point[1] = picked.point.y;
  point[2] = picked.point.z;
}

resbuf* chainOf(const std::vector<KvDbObjectId>& ids) {
  resbuf* head = nullptr;
  for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
    resbuf* node = kvutNewRb(RTENAME);
    kvdbGetKvdsName(node->resval.rlname, *id);
    node->rbnext = head;
    head = node;
  }
  return head;
}

}  // namespace

int kvedEntSel(const wchar_t* prompt, long long* name, double* point) {
  if (!name) return RTERROR;
  kvds_setNull(name);
  Picked picked;
  const int status = select(prompt, false, picked);
  if (status == RTNORM) give(picked, name, point);
  return status;
}

int kvedNEntSelP(const wchar_t* prompt, long long* name, double* point, int pickFlag, double (*matrix)[4],
                 resbuf** containers) {
  if (containers) *containers = nullptr;
  if (!name) return RTERROR;
  kvds_setNull(name);
  Picked picked;
  int status = RTNORM;
  if (pickFlag) {
    KvEdEditor* editor = KvHostContext::current().editor;
    KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
    if (!editor || !database || !point) return RTERROR;
    if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) return RTERROR;
    kved::setErrno(*editor, 0);
    if (!pickAt(*editor, *database, {point[0], point[1], point[2]}, true, picked)) status = RTERROR;
  } else {
    status = select(prompt, true, picked);
  }
  if (status != RTNORM) return status;
  give(picked, name, point);
  for (int row = 0; matrix && row < 4; ++row)
    for (int column = 0; column < 4; ++column) matrix[row][column] = picked.pick.transform.entry[row][column];
  if (containers) *containers = chainOf(picked.pick.containers);
  return RTNORM;
}

int kvedNEntSel(const wchar_t* prompt, long long* name, double* point, double (*matrix)[3],
                resbuf** containers) {
  double columns[4][4] = {};
  const int status = kvedNEntSelP(prompt, name, point, 0, columns, containers);
  if (status != RTNORM || !matrix) return status;
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 3; ++column) matrix[row][column] = columns[column][row];
  return status;
}
