#include "host/editor/internal/object_snap.h"

#include <algorithm>
#include <cmath>

#include "host/database/chainwriter.h"
#include "host/database/entity.h"
#include "host/editor/internal/selecting.h"
#include "host/editor/osnap.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/geometry/intersect.h"
#include "platform/text/casemap.h"

namespace kved {

namespace {

using Curves = std::vector<std::unique_ptr<KvGeCurve3d>>;

enum class SnapMode {
  None = 0,
  End = 1,
  Middle = 2,
  Center = 4,
  Node = 8,
  Quadrant = 16,
  Intersection = 32,
  Insertion = 64,
  Perpendicular = 128,
  Tangent = 256,
  Nearest = 512
};

struct SnapWord {
  const wchar_t* word;
  SnapMode mode;
};
constexpr SnapWord kWords[] = {
    {L"endpoint", SnapMode::End},        {L"midpoint", SnapMode::Middle},
    {L"center", SnapMode::Center},       {L"node", SnapMode::Node},
    {L"quadrant", SnapMode::Quadrant},   {L"intersection", SnapMode::Intersection},
    {L"insertion", SnapMode::Insertion}, {L"perpendicular", SnapMode::Perpendicular},
    {L"tangent", SnapMode::Tangent},     {L"nearest", SnapMode::Nearest},
    {L"none", SnapMode::None},           {L"off", SnapMode::None},
};
constexpr std::size_t kShortest = 3;
constexpr std::size_t kMostEntities = 16;  // under one pick box, for meetings of any two

/// The curves of what was hit, in world coordinates.
Curves curvesOf(const PickHit& hit) {
  Curves own, moved;
  const KvDbObjectId id = hit.path.empty() ? hit.id : hit.path.back();
  if (const auto* entity = KvDbEntity::cast(id.stub()->object)) entity->getGeCurves(own);
  for (auto& curve : own)
    if (curve) moved.push_back(curve->transformed(hit.transform));
  return moved;
}

/// The nearest of the points that are offered.
class Nearest {
 public:
  explicit Nearest(const KvGePoint3d& near) : near_(near) {}
  void offer(const KvGePoint3d& p) {
    const double distance = p.distanceTo(near_);
    if (!(distance < least_)) return;
    least_ = distance;
    best_ = p;
  }
  std::optional<KvGePoint3d> best() const { return best_; }

 private:
  KvGePoint3d near_;
  double least_ = HUGE_VAL;
  std::optional<KvGePoint3d> best_;
};

bool isBounded(const kvge::Span& span) {
  return std::isfinite(span.low) && std::isfinite(span.high);
}

void offerOfSpan(SnapMode mode, const kvge::Span& span, const KvGePoint3d& from, Nearest& nearest) {
  const bool isConic = span.kind == kvge::SpanKind::kConic;
  switch (mode) {
    case SnapMode::End:
      if (span.isWhole()) break;
      if (std::isfinite(span.low)) nearest.offer(kvge::startOf(span));
      if (std::isfinite(span.high)) nearest.offer(kvge::endOf(span));
      break;
    case SnapMode::Middle:
      if (isBounded(span) && !span.isWhole()) nearest.offer(kvge::pointAt(span, (span.low + span.high) / 2));
      break;
    case SnapMode::Center:
      if (isConic) nearest.offer(span.origin);
      break;
    case SnapMode::Quadrant:
      for (int i = 0; isConic && i < 4; ++i) {
        double t = i * kvge::kTwoPi / 4;
        if (span.isWhole() || kvge::intoRange(span, 1e-12, t)) nearest.offer(kvge::pointAt(span, t));
      }
      break;
    case SnapMode::Tangent: {
      // From a point at distance d from the centre the tangents touch at acos(r / d) on either side.
      const KvGeVector3d out = from - span.origin;
      const double distance = std::hypot(out.dotProduct(span.u), out.dotProduct(span.v)) / span.radius;
      if (!isConic || !(span.radius > 0) || !(distance >= span.radius)) break;
      const double middle = std::atan2(out.dotProduct(span.v), out.dotProduct(span.u));
      for (const double side : {-1.0, 1.0}) {
        double t = middle + side * std::acos(span.radius / distance);
        if (span.isWhole() || kvge::intoRange(span, 1e-12, t)) nearest.offer(kvge::pointAt(span, t));
      }
      break;
    }
    default:
      break;
  }
}

/// Where a reference or a text stands: its first point, from the coordinates of its plane.
std::optional<KvGePoint3d> insertionOf(const KvDbEntity& entity) {
  if (const auto* reference = KvDbBlockReference::cast(&entity)) return reference->position();
  const CString type = entity.fileType();
  if (type != L"TEXT" && type != L"MTEXT" && type != L"ATTRIB" && type != L"ATTDEF") return std::nullopt;
  constexpr int kPointCode = 10, kNormalCode = 210;
  KvDbChainWriter writer(*entity.database());
  entity.dxfOutFields(writer);
  resbuf* chain = writer.takeChain();
  std::optional<KvGePoint3d> point;
  KvGeVector3d normal = KvGeVector3d::kZAxis;
  for (const resbuf* node = chain; node; node = node->rbnext) {
    const double* p = node->resval.rpoint;
    if (node->restype == kPointCode && !point) point = KvGePoint3d(p[0], p[1], p[2]);
    if (node->restype == kNormalCode) normal = {p[0], p[1], p[2]};
  }
  kvutRelRb(chain);
  if (point && type != L"MTEXT") point = KvGeMatrix3d::planeToWorld(normal) * *point;
  return point;
}

void offerOfHit(SnapMode mode, const PickHit& hit, const KvGePoint3d& near, const KvGePoint3d& from,
                Nearest& nearest) {
  const KvDbObjectId id = hit.path.empty() ? hit.id : hit.path.back();
  const auto* entity = KvDbEntity::cast(id.stub()->object);
  if (!entity) return;
  if (mode == SnapMode::Node) {
    if (const auto* point = KvDbPoint::cast(entity)) nearest.offer(hit.transform * point->position());
    return;
  }
  if (mode == SnapMode::Insertion) {
    if (const auto at = insertionOf(*entity)) nearest.offer(hit.transform * *at);
    if (const auto* top = KvDbEntity::cast(hit.id.stub()->object); top && top != entity)
      if (const auto at = insertionOf(*top)) nearest.offer(*at);
    return;
  }
  for (const auto& curve : curvesOf(hit)) {
    if (mode == SnapMode::Nearest) nearest.offer(curve->closestPointTo(near));
    if (mode == SnapMode::Perpendicular) nearest.offer(curve->closestPointTo(from, true));
    for (int i = 0; i < curve->spanCount(); ++i) offerOfSpan(mode, curve->span(i), from, nearest);
  }
}

void offerMeetings(const std::vector<PickHit>& hits, Nearest& nearest) {
  Curves all;
  for (std::size_t i = 0; i < std::min(hits.size(), kMostEntities); ++i)
    for (auto& curve : curvesOf(hits[i])) all.push_back(std::move(curve));
  constexpr std::size_t kMostCurves = 64;
  std::vector<KvGeCurveHit> meetings;
  for (std::size_t i = 0; i < std::min(all.size(), kMostCurves); ++i)
    for (std::size_t k = i + 1; k < std::min(all.size(), kMostCurves); ++k) {
      kvge::intersect(*all[i], *all[k], meetings);
      for (const KvGeCurveHit& meeting : meetings) nearest.offer(meeting.point);
    }
}

}  // namespace

std::optional<KvGePoint3d> snapTo(int snaps, const KvGePoint3d& nearUser, const KvGePoint3d& fromUser) {
  KvDbDatabase* database = kvdbDatabaseOrWorking(nullptr);
  if (!database || snaps == 0) return std::nullopt;
  const KvGePoint3d near = userToWorld(nearUser), from = userToWorld(fromUser);
  const std::vector<PickHit> hits = Picker(*database).allAt(near);
  Nearest nearest(near);
  const auto offer = [&](SnapMode mode) {
    if (!(snaps & static_cast<int>(mode))) return;
    if (mode == SnapMode::Intersection) return offerMeetings(hits, nearest);
    for (const PickHit& hit : hits) offerOfHit(mode, hit, near, from, nearest);
  };
  for (const SnapWord& row : kWords)
    if (row.mode != SnapMode::Nearest) offer(row.mode);
  if (!nearest.best()) offer(SnapMode::Nearest);
  const auto found = nearest.best();
  if (!found) return std::nullopt;
  return worldToUser(*found);
}

namespace {

std::optional<SnapMode> snapOf(std::wstring_view word) {
  if (!word.empty() && word.front() == L'_') word.remove_prefix(1);
  if (word.size() < kShortest) return std::nullopt;
  for (const SnapWord& row : kWords) {
    const std::wstring_view whole(row.word);
    if (word.size() <= whole.size() &&
        std::equal(word.begin(), word.end(), whole.begin(),
                   [](wchar_t a, wchar_t b) { return platform::toLower(a) == b; }))
      return row.mode;
  }
  return std::nullopt;
}

}  // namespace
}  // namespace kved

std::optional<int> kvedSnapsOf(std::wstring_view list) {
  int snaps = 0;
  for (;;) {
    const std::size_t comma = list.find(L',');
    const auto mode = kved::snapOf(list.substr(0, comma));
    if (!mode) return std::nullopt;
    snaps |= static_cast<int>(*mode);
    if (comma == std::wstring_view::npos) return snaps;
    list.remove_prefix(comma + 1);
  }
}

CString kvedSnapNames(int snaps) {
  CString names;
  for (const kved::SnapWord& row : kved::kWords)
    if (snaps & static_cast<int>(row.mode)) names += (names.IsEmpty() ? L"" : L",") + CString(row.word);
  return names;
}
