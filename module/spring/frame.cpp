#include "module/spring/frame.h"

#include <algorithm>

#include "host/database/database.h"
#include "host/database/entcalls.h"
#include "host/database/entity.h"
#include "host/database/names.h"
#include "host/database/symboltable.h"
#include "host/editor/editor.h"
#include "host/editor/selection.h"
#include "module/entity/drawing_values.h"
#include "module/entity/entity_makers.h"
#include "module/select/sets.h"
#include "module/spring/springs.h"
#include "module/toolkit/geometry.h"
#include "module/toolkit/layers.h"
#include "siblings/resources/mekres.h"

wchar_t SpringBlockName[kSpringBlockNameSize] = L"KM_SPRING";

namespace mek {
namespace {

constexpr double kRadiusSlack = 1e-5;
constexpr double kParallel = 1e-10, kOnSegment = 1e-7;
constexpr double kCenterLineShare = 0.025;
constexpr int kInsertionPrompt = 1138, kRotationPrompt = 1139, kLongestMessage = 256;

struct Crossing {
  double along, across;  ///< in lengths of the two segments
};

std::optional<Crossing> cross(const Segment& a, const Segment& b) {
  const double ax = a.to.x - a.from.x, ay = a.to.y - a.from.y, bx = b.to.x - b.from.x, by = b.to.y - b.from.y;
  const double determinant = ax * by - ay * bx;
  if (std::fabs(determinant) < kParallel) return std::nullopt;
  const double dx = b.from.x - a.from.x, dy = b.from.y - a.from.y;
  return Crossing{(dx * by - dy * bx) / determinant, (dx * ay - dy * ax) / determinant};
}

KvGePoint2d on(const Segment& segment, double share) {
  return {segment.from.x + share * (segment.to.x - segment.from.x),
          segment.from.y + share * (segment.to.y - segment.from.y)};
}

bool isOn(double share) {
  return share > -kOnSegment && share < 1 + kOnSegment;
}

/// A point as commands take it.
struct Doubles {
  explicit Doubles(const KvGePoint3d& p) : values{p.x, p.y, p.z} {}
  operator const double*() const { return values; }
  double values[3];
};

/// Records stand in the world's XY plane; the newest one is turned about its centre into the user system's.
void layInUserPlane(const KvGePoint3d& center) {
  const KvGeVector3d normal = IM_GetNormalVector();
  kvds_name last;
  KvDbObjectId id;
  KvDbEntity* circle = nullptr;
  if (normal.isEqualTo(KvGeVector3d::kZAxis) || kvdbEntLast(last) != RTNORM ||
      kvdbGetObjectId(id, last) != Kvad::eOk || kvdbOpenObject(circle, id, KvDb::kForWrite) != Kvad::eOk)
    return;
  const KvGeVector3d fromOrigin = center - KvGePoint3d::kOrigin;
  circle->transformBy(KvGeMatrix3d::translation(fromOrigin) * KvGeMatrix3d::planeToWorld(normal) *
                      KvGeMatrix3d::translation(-fromOrigin));
  circle->close();
}

}  // namespace

std::optional<KvGePoint2d> crossing(const Segment& a, const Segment& b) {
  const auto found = cross(a, b);
  if (!found || !isOn(found->along) || !isOn(found->across)) return std::nullopt;
  return on(a, found->along);
}

std::optional<KvGePoint2d> lineCrossing(const Segment& a, const Segment& b) {
  const auto found = cross(a, b);
  if (!found) return std::nullopt;
  return on(a, found->along);
}

// --- Sets

EntitySet::~EntitySet() {
  if (!kvds_isNull(name_)) kvedSSFree(name_);
}

EntitySet::EntitySet(EntitySet&& other) noexcept {
  kvds_copy(other.name_, name_);
  kvds_setNull(other.name_);
}

EntitySet& EntitySet::operator=(EntitySet&& other) noexcept {
  std::swap(name_[0], other.name_[0]);
  std::swap(name_[1], other.name_[1]);
  return *this;
}

void EntitySet::add(const EntityName& entity) {
  kvds_name set;
  kvds_copy(name_, set);
  IM_ADS_SSADD(entity.name, set, name_);
}

// --- Commands

SpringFrame::SpringFrame(const double* point) : point_{point[0], point[1], point[2]} {
  kvdbEntLast(before_.name);
}

KvGePoint3d SpringFrame::at(const KvGePoint2d& local) const {
  if (turn_) return {point_.x + 2 * *turn_ - local.x, point_.y - local.y, point_.z};
  return {point_.x + local.x, point_.y + local.y, point_.z};
}

void SpringFrame::layer(const wchar_t* kind) {
  const CString name = GetSysLayer(kind, L"", true);
  kvedCommandS(RTSTR, L"LAYER", RTSTR, L"M", RTSTR, name, RTSTR, L"", RTNONE);
}

void SpringFrame::thick() {
  layer(L"THICK");
}
void SpringFrame::center() {
  layer(L"CENTER");
}
void SpringFrame::hatchLayer() {
  layer(L"HATCH");
}

void SpringFrame::line(const KvGePoint2d& from, const KvGePoint2d& to) {
  const Doubles a(at(from)), b(at(to));
  kvedCommandS(RTSTR, L"LINE", RTPOINT, a.values, RTPOINT, b.values, RTSTR, L"", RTNONE);
  drawn();
}

void SpringFrame::arc(const KvGePoint2d& start, const KvGePoint2d& end, double radius) {
  const Doubles a(at(start)), b(at(end));
  const double half = std::hypot(b.values[0] - a.values[0], b.values[1] - a.values[1]) / 2;
  if (half > radius && half - radius < kRadiusSlack) radius = half;
  kvedCommandS(RTSTR, L"ARC", RT3DPOINT, a.values, RTSTR, L"E", RT3DPOINT, b.values, RTSTR, L"R", RTREAL,
               radius, RTNONE);
  drawn();
}

void SpringFrame::arcAbout(const KvGePoint2d& center, const KvGePoint2d& start, const KvGePoint2d& end) {
  const Doubles c(at(center)), a(at(start)), b(at(end));
  kvedCommandS(RTSTR, L"ARC", RTPOINT, a.values, RTSTR, L"C", RTPOINT, c.values, RTPOINT, b.values, RTNONE);
  drawn();
}

void SpringFrame::circle(const KvGePoint2d& center, double radius) {
  const Doubles c(at(center));
  kvedCommandS(RTSTR, L"CIRCLE", RT3DPOINT, c.values, RTREAL, radius, RTNONE);
  drawn();
}

void SpringFrame::recordCircle(const KvGePoint2d& center, double radius) {
  KvGePoint3d world = at(center);
  IM_UcsToWcs(world);
  Doubles c(world);
  if (md_circle(c.values, radius) == RTNORM) layInUserPlane(world);
  drawn();
}

void SpringFrame::trim(const EntitySet& edges, const EntityName& entity, const KvGePoint2d& removed) {
  const Doubles picked(at(removed));
  kvedCommandS(RTSTR, L"trim", RTPICKS, edges.name(), RTSTR, L"", RTLB, RTENAME, entity.name, RTPOINT,
               picked.values, RTLE, RTSTR, L"", RTNONE);
}

void SpringFrame::hatch(const EntitySet& outlines) {
  kvedCommandS(RTSTR, L"HATCH", RTSTR, L"ANSI31", RTREAL, IM_GetHatchScale(1.0), RTANG, 0.0, RTPICKS,
               outlines.name(), RTSTR, L"", RTNONE);
}

void SpringFrame::eraseLast() {
  kvedCommandS(RTSTR, L"ERASE", RTSTR, L"L", RTSTR, L"", RTNONE);
}

EntityName SpringFrame::last() {
  EntityName entity;
  if (hasFailed_) return entity;
  if (kvdbEntLast(entity.name) == RTERROR || kvds_equal(entity.name, before_.name)) {
    kvdbFail(L"entity is not found!");
    hasFailed_ = true;
  }
  return entity;
}

void SpringFrame::drawn() {
  if (!isCollecting_) return;
  isCollecting_ = false;
  marker_ = last();
}

EntitySet SpringFrame::collected() {
  return hasFailed_ ? EntitySet() : from(marker_);
}

EntitySet SpringFrame::from(const EntityName& marker) {
  EntitySet set;
  IM_ADS_SSADD(nullptr, nullptr, set.edit());
  long length = 0;
  if (!kvds_isNull(set.name())) IM_EdSSLength(set.name(), &length);
  // An empty set of the host may be none at all: it is made with its first member.
  if (length <= 0) IM_ADS_SSADD(nullptr, nullptr, set.edit());
  EntityName next = marker;
  for (EntityName at = marker; kvdbEntNext(at.name, next.name) == RTNORM; at = next) set.add(next);
  set.add(marker);
  return set;
}

EntitySet SpringFrame::of(const EntityName& entity) {
  EntitySet set;
  set.add(entity);
  return set;
}

void SpringFrame::centerLines(double length, std::optional<double> row) {
  center();
  const double reach = kCenterLineShare * length;
  line({-reach, 0}, {length + reach, 0});
  if (row)
    for (double y : {*row, -*row}) line({-reach, y}, {length + reach, y});
  thick();
}

bool SpringFrame::makeBlock(const EntityName& marker, double* point) {
  const EntitySet set = from(marker);
  IM_WcsToUcs(point);
  const double* base = point;
  resbuf* present = kvdbTblSearch(L"BLOCK", SpringBlockName, 0);
  const int status = present ? kvedCommandS(RTSTR, L"BLOCK", RTSTR, SpringBlockName, RTSTR, L"Y", RTPOINT,
                                            base, RTPICKS, set.name(), RTSTR, L"", RTNONE)
                             : kvedCommandS(RTSTR, L"BLOCK", RTSTR, SpringBlockName, RTPOINT, base, RTPICKS,
                                            set.name(), RTSTR, L"", RTNONE);
  kvutRelRb(present);
  if (status != RTNORM) return false;
  kvutPrintf(L"%s", IM_GetStringFromRc(kInsertionPrompt, kLongestMessage));
  if (kvedCommandS(RTSTR, L"INSERT", RTSTR, SpringBlockName, RTSTR, L"\\", RTSTR, L"", RTSTR, L"", RTSTR, L"",
                   RTNONE) != RTNORM)
    return false;
  eraseLast();
  kvutPrintf(L"%s", IM_GetStringFromRc(kRotationPrompt, kLongestMessage));
  return kvedCommandS(RTSTR, L"INSERT", RTSTR, SpringBlockName, RTSTR, L"@0<0", RTSTR, L"", RTSTR, L"", RTSTR,
                      L"\\", RTNONE) == RTNORM;
}

bool isBlockNameGood() {
  const wchar_t* end = std::find(SpringBlockName, SpringBlockName + kSpringBlockNameSize, L'\0');
  if (end == SpringBlockName + kSpringBlockNameSize) return false;
  return kvdbIsSymbolName({SpringBlockName, static_cast<std::size_t>(end - SpringBlockName)});
}

bool areSizesFinite(std::initializer_list<double> sizes) {
  return std::all_of(sizes.begin(), sizes.end(), [](double size) { return std::isfinite(size); });
}

}  // namespace mek
