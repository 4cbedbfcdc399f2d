#include "host/editor/jig.h"

#include <cmath>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/editor/editor.h"
#include "host/editor/internal/asking.h"
#include "host/editor/internal/selecting.h"
#include "host/editor/internal/space.h"
#include "host/editor/prompts.h"

KVRX_DEFINE_ABSTRACT(KvEdJig, KvRxObject)

namespace {

using Kind = KvEdToken::Kind;

constexpr double kSamePoint = 1e-10, kSameAngle = 1e-12;

KvEdEditor* currentEditor() {
  return KvHostContext::current().editor;
}

/// Number of the keyword that a reply stands for, from 1; 0 for none.
int keywordNumber(const CString& keywords, const CString& reply) {
  const CString found = kvedMatchKeyword(keywords, reply);
  if (found.IsEmpty()) return 0;
  int position = 0, number = 1;
  for (CString word = keywords.Tokenize(L" ", position); position != -1;
       word = keywords.Tokenize(L" ", position), ++number)
    if (word == found) return number;
  return 0;
}

}  // namespace

KvEdJig::KvEdJig() = default;
KvEdJig::~KvEdJig() = default;

KvEdJig::DragStatus KvEdJig::sampler() {
  return kNormal;
}
bool KvEdJig::update() {
  return false;
}
KvDbEntity* KvEdJig::entity() const {
  return nullptr;
}

KvEdJig::DragStatus KvEdJig::show() {
  if (KvEdEditor* editor = currentEditor(); editor && update()) {
    editor->screen().dragged = entity();
    ++editor->screen().dragUpdates;
  }
  return kNormal;
}

KvEdJig::DragStatus KvEdJig::drag() {
  KvEdEditor* editor = currentEditor();
  if (!editor) return kCancel;
  KvDbEntity* const outer = editor->screen().dragged;
  DragStatus status = kNormal;
  do {
    isTracking_ = hasAcquired_ = false;
    status = sampler();
    if (status == kNormal) show();
    // An answer that changed nothing is an answer all the same.
    if (status == kNoChange && !isTracking_) status = kNormal;
  } while (isTracking_ && hasAcquired_ && (status == kNormal || status == kNoChange));
  editor->screen().dragged = outer;
  return status;
}

template <class Convert>
KvEdJig::DragStatus KvEdJig::acquire(Convert&& convert) {
  KvEdEditor* editor = currentEditor();
  if (!editor) return kCancel;
  hasAcquired_ = true;
  constexpr int kMostRetries = 100;
  for (int attempt = 0; attempt < kMostRetries; ++attempt) {
    const KvEdToken token = editor->readToken(KvEdReadMode::Word, prompt_, KvEdTracking::Wanted);
    isTracking_ = token.isTracking;
    if (token.kind == Kind::Cancel || token.kind == Kind::End) return kCancel;
    if (token.kind == Kind::Text && token.text.IsEmpty()) {
      if (controls_ & kNullResponseAccepted) return kNull;
      editor->printLine(L"A value is needed.");
      continue;
    }
    if (token.kind == Kind::Text)
      if (const int number = keywordNumber(keywords_, token.text)) {
        editor->lastInput = kvedMatchKeyword(keywords_, token.text);
        return static_cast<DragStatus>(number);
      }
    DragStatus status = kNormal;
    CString complaint;
    if (convert(*editor, token, status, complaint)) return status;
    if (!isTracking_) editor->printLine(complaint);
  }
  return kCancel;
}

KvEdJig::DragStatus KvEdJig::acquirePoint(KvGePoint3d& value) {
  return acquirePointFrom(value, nullptr);
}

KvEdJig::DragStatus KvEdJig::acquirePointFrom(KvGePoint3d& value, const KvGePoint3d* base) {
  return acquire([&](KvEdEditor& editor, const KvEdToken& token, DragStatus& status, CString& complaint) {
    const KvGePoint3d before = editor.lastPoint;
    KvGePoint3d user;
    kved::PointWish wish;
    if (base && std::isfinite(base->x) && std::isfinite(base->y) && std::isfinite(base->z))
      wish.base = kved::worldToUser(*base);
    const kved::Verdict verdict = kved::judgePoint(editor, token, prompt_, user, wish);
    complaint = verdict.complaint;
    if (!verdict.isTaken) return false;
    if (verdict.status != RTNORM) {
      status = kCancel;
      return true;
    }
    if ((controls_ & kDontUpdateLastPoint) || isTracking_) editor.lastPoint = before;
    const KvGePoint3d world = kved::userToWorld(user);
    status = world.distanceTo(value) <= kSamePoint ? kNoChange : kNormal;
    value = world;
    return true;
  });
}

KvEdJig::DragStatus KvEdJig::acquirePoint(KvGePoint3d& value, const KvGePoint3d& base) {
  // Relative points count from the base, which is where the rubber line starts.
  KvEdEditor* editor = currentEditor();
  if (!editor) return kCancel;
  if (std::isfinite(base.x) && std::isfinite(base.y) && std::isfinite(base.z))
    editor->lastPoint = kved::worldToUser(base);
  return acquirePointFrom(value, &base);
}

KvEdJig::DragStatus KvEdJig::acquireAngle(double& value, const KvGePoint3d& base) {
  return acquire([&](KvEdEditor& editor, const KvEdToken& token, DragStatus& status, CString& complaint) {
    const KvEdPointContext context = kvedPointContext();
    double angle = 0;
    if (token.kind == Kind::Angle && std::isfinite(token.numbers[0])) {
      angle = token.numbers[0];
    } else if (const auto written = token.kind == Kind::Point
                                        ? std::nullopt
                                        : kvedParseAngle(kved::textOf(token).view(), context.angleUnits)) {
      angle = context.isClockwise ? -*written : *written;
    } else {
      KvGePoint3d point;
      const KvGePoint3d start = kved::worldToUser(base), before = editor.lastPoint;
      const kved::Verdict verdict = kved::judgePoint(editor, token, prompt_, point);
      complaint = L"An angle or a point is needed.";
      if (!verdict.isTaken) return false;
      if (verdict.status != RTNORM) {
        status = kCancel;
        return true;
      }
      if ((controls_ & kDontUpdateLastPoint) || isTracking_) editor.lastPoint = before;
      angle = kvge::normalizedAngle(KvGeVector2d(point.x - start.x, point.y - start.y).angle() -
                                    context.angleBase);
    }
    complaint = L"The value must not be zero.";
    if ((controls_ & kNoZeroResponseAccepted) && angle == 0) return false;
    status = std::fabs(angle - value) <= kSameAngle ? kNoChange : kNormal;
    value = angle;
    return true;
  });
}

KvEdJig::DragStatus KvEdJig::acquireAngle(double& value) {
  KvEdEditor* editor = currentEditor();
  return editor ? acquireAngle(value, kved::userToWorld(editor->lastPoint)) : kCancel;
}

KvEdJig::DragStatus KvEdJig::acquireDist(double& value, const KvGePoint3d& base) {
  return acquire([&](KvEdEditor& editor, const KvEdToken& token, DragStatus& status, CString& complaint) {
    double distance = 0;
    if (const auto number = kved::numberOf(token)) {
      distance = *number;
    } else {
      KvGePoint3d point;
      const KvGePoint3d start = kved::worldToUser(base), before = editor.lastPoint;
      const kved::Verdict verdict = kved::judgePoint(editor, token, prompt_, point);
      complaint = L"A distance or a point is needed.";
      if (!verdict.isTaken) return false;
      if (verdict.status != RTNORM) {
        status = kCancel;
        return true;
      }
      if ((controls_ & kDontUpdateLastPoint) || isTracking_) editor.lastPoint = before;
      distance = start.distanceTo(point);
    }
    complaint = L"The value must not be zero.";
    if ((controls_ & kNoZeroResponseAccepted) && distance == 0) return false;
    complaint = L"The value must not be negative.";
    if ((controls_ & kNoNegativeResponseAccepted) && distance < 0) return false;
    status = distance == value ? kNoChange : kNormal;
    value = distance;
    return true;
  });
}

KvEdJig::DragStatus KvEdJig::acquireDist(double& value) {
  KvEdEditor* editor = currentEditor();
  return editor ? acquireDist(value, kved::userToWorld(editor->lastPoint)) : kCancel;
}

KvEdJig::DragStatus KvEdJig::acquireString(CString& value) {
  return acquire([&](KvEdEditor&, const KvEdToken& token, DragStatus& status, CString&) {
    const CString text = kved::textOf(token);
    status = text == value ? kNoChange : kNormal;
    value = text;
    return true;
  });
}

KvDbObjectId KvEdJig::append() {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  KvDbEntity* dragged = entity();
  KvDbBlockTableRecord* space = nullptr;
  if (!database || !dragged || dragged->database()) return {};
  if (kvdbOpenObject(space, kved::currentSpace(*database), KvDb::kForWrite) != Kvad::eOk) return {};
  KvDbObjectId id;
  const auto status = space->appendKvDbEntity(id, dragged);
  space->close();
  if (status != Kvad::eOk) return {};
  dragged->close();
  return id;
}

KvDbEntity* kvedDraggedEntity() {
  KvEdEditor* editor = currentEditor();
  return editor ? editor->screen().dragged : nullptr;
}

int kvedGrRead(int track, int* type, resbuf* result) {
  enum { kKey = 2, kPoint = 3, kTracking = 5 };
  KvEdEditor* editor = currentEditor();
  if (!editor || !type || !result) return RTERROR;
  const KvEdToken token =
      editor->readToken(KvEdReadMode::Word, CString(), track ? KvEdTracking::Wanted : KvEdTracking::Skipped);
  if (token.kind == Kind::Cancel || token.kind == Kind::End) return RTCAN;
  result->rbnext = nullptr;
  if (const auto point = kved::pointOf(token)) {
    *type = token.isTracking ? kTracking : kPoint;
    result->restype = RT3DPOINT;
    result->resval.rpoint[0] = point->x;
    result->resval.rpoint[1] = point->y;
    result->resval.rpoint[2] = point->z;
    kved::notePoint(*editor, *point, *point, false);
    return RTNORM;
  }
  // The key that ends a line stands for an empty answer.
  constexpr wchar_t kEnter = 13;
  *type = kKey;
  result->restype = RTSHORT;
  result->resval = {};
  result->resval.rint = static_cast<std::int16_t>(token.text.IsEmpty() ? kEnter : token.text.GetAt(0));
  return RTNORM;
}
