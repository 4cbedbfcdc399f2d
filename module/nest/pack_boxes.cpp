#include "module/nest/pack_boxes.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_layers.h"
#include "module/nest/internal/pack_search.h"
#include "module/nest/internal/pack_state.h"

namespace {

using mek::pack::AllInfo3D;
using mek::pack::at;
using mek::pack::Box3D;
using mek::pack::kMaxSide;
using mek::pack::report;
using mek::pack::toShort;

bool goodBin(int W, int H, int D) {
  if (std::min({W, H, D}) < 1 || std::max({W, H, D}) > kMaxSide) return false;
  return static_cast<std::int64_t>(W) * H * D <= std::numeric_limits<std::int32_t>::max();
}

const char* refusal(int n, int W, int H, int D, int packingtype) {
  if (packingtype != mek::pack::kGeneralPacking && packingtype != mek::pack::kRobotPacking)
    return "bad packtype";
  if (n > kPackMaxBoxes) return "too big instance";
  if (n < 0) return "bad n";
  return goodBin(W, H, D) ? nullptr : "bad bin";
}

std::int16_t checkedSide(int side, int limit, const char* message) {
  if (side < 1 || side > limit) report(message);
  return toShort(std::clamp(side, 1, limit));
}

void copyIn(AllInfo3D& a, const int* w, const int* h, const int* d) {
  for (int i = 0; i < a.n; ++i) {
    Box3D& box = a.boxes[at(i)];
    box.no = toShort(i + 1);
    box.w = checkedSide(w[i], a.W, "bad w\n");
    box.h = checkedSide(h[i], a.H, "bad h\n");
    box.d = checkedSide(d[i], a.D, "bad d\n");
    box.vol = box.w * box.h * box.d;
  }
}

void sortByVolume(AllInfo3D& a) {
  std::sort(a.boxes.begin(), a.boxes.end(),
            [](const Box3D& x, const Box3D& y) { return x.vol != y.vol ? x.vol > y.vol : x.no < y.no; });
  for (Box3D& box : a.boxes) box.x = box.y = box.z = box.bno = box.k = 0;
}

void findBounds(AllInfo3D& a) {
  a.bound0 = toShort(mek::pack::boundByVolume(a, a.boxes));
  a.bound1 = toShort(mek::pack::boundBySides(a, a.boxes));
  a.bound2 = toShort(mek::pack::boundByBoth(a, a.boxes));
  a.lb = a.proven = std::max({a.bound0, a.bound1, a.bound2});
  a.boundTime = mek::pack::secondsSince(a.start);
}

}  // namespace

void PackBoxes3D(int n, int W, int H, int D, const int* w, const int* h, const int* d, int* x, int* y, int* z,
                 int* bno, int* lb, int* ub, int nodelimit, int iterlimit, int timelimit, int* nodeused,
                 int* iterused, int* timeused, int packingtype) {
  *lb = *ub = *nodeused = *iterused = *timeused = 0;
  if (const char* message = refusal(n, W, H, D, packingtype)) {
    report(message);
    return;
  }
  if (n == 0) return;
  AllInfo3D& a = mek::pack::resetPackState(n);
  a.W = toShort(W);
  a.H = toShort(H);
  a.D = toShort(D);
  a.BVOL = W * H * D;
  a.packtype = toShort(packingtype);
  copyIn(a, w, h, d);
  sortByVolume(a);
  findBounds(a);
  mek::pack::packLayers(a);
  a.layerTime = mek::pack::secondsSince(a.start) - a.boundTime;

  // Only now, so that the heuristic is never cut short.
  a.nodelimit = nodelimit;
  a.iterlimit = iterlimit;
  a.timelimit = timelimit;
  sortByVolume(a);
  mek::pack::searchPacking(a);
  a.totalTime = mek::pack::secondsSince(a.start);
  a.searchTime = a.totalTime - a.boundTime - a.layerTime;

  for (const Box3D& box : a.best) {
    const int i = box.no - 1;
    x[i] = box.x;
    y[i] = box.y;
    z[i] = box.z;
    bno[i] = box.bno;
  }
  *ub = a.z;
  *lb = a.stopped ? a.lb : a.z;
  *nodeused = a.nodes;
  *iterused = a.iterations;
  *timeused = static_cast<int>(a.totalTime * 1000);
}
