#include "module/nest/internal/pack_bounds.h"

#include <algorithm>
#include <array>

namespace mek::pack {
namespace {

using Sides = std::array<std::int16_t, kTableSide>;

std::int64_t ceilDivide(std::int64_t a, std::int64_t b) {
  return a <= 0 ? 0 : (a + b - 1) / b;
}

/// Sorts the first `size` values and drops repeats; the new count.
int makeDistinct(Sides& values, int size) {
  const auto end = values.begin() + size;
  std::sort(values.begin(), end);
  return static_cast<int>(std::unique(values.begin(), end) - values.begin());
}

/// Bins needed by the boxes of height `sides` that can only stand on each other, for boxes cut at height `p`.
int boundAtHeight(std::span<const std::int16_t> sides, int H, int p) {
  int above = 0, middle = 0, low = 0;
  std::int64_t middleSum = 0, lowSum = 0, fitting = 0;
  for (const int h : sides) {
    if (h > H - p) {
      ++above;
    } else if (2 * h > H) {
      ++middle;
      middleSum += h;
      fitting += (H - h) / p;
    } else if (h >= p) {
      ++low;
      lowSum += h;
    }
  }
  const std::int64_t alpha = ceilDivide(lowSum + middleSum - static_cast<std::int64_t>(middle) * H, H);
  const std::int64_t beta = ceilDivide(low - fitting, H / p);
  return above + middle + static_cast<int>(std::max(alpha, beta));
}

int sidesBoundUpright(const AllInfo3D& a, std::span<const Box3D> boxes) {
  if (boxes.empty()) return 0;
  Sides kept, cuts;
  int keptCount = 0, cutCount = 0;
  for (const Box3D& box : boxes) {
    if (2 * box.w <= a.W || 2 * box.d <= a.D) continue;
    kept[at(keptCount++)] = box.h;
    if (2 * box.h <= a.H) cuts[at(cutCount++)] = box.h;
  }
  int bound = 1;
  cutCount = makeDistinct(cuts, cutCount);
  for (int i = 0; i < cutCount; ++i)
    bound = std::max(bound, boundAtHeight(std::span(kept).first(at(keptCount)), a.H, cuts[at(i)]));
  return bound;
}

/// Boxes by ascending depth, with sums over the boxes from an index on for one choice of the width cut.
struct DepthSums {
  std::array<const Box3D*, kTableSide> byDepth;
  std::array<std::int64_t, kTableSide + 1> volume, tallHeight, tallVolume;
  int size = 0;

  explicit DepthSums(std::span<const Box3D> boxes) : size(count(boxes.size())) {
    for (int i = 0; i < size; ++i) byDepth[at(i)] = &boxes[at(i)];
    std::sort(byDepth.begin(), byDepth.begin() + size,
              [](const Box3D* a, const Box3D* b) { return a->d < b->d; });
  }

  void cutAtWidth(int W, int p) {
    volume[at(size)] = tallHeight[at(size)] = tallVolume[at(size)] = 0;
    for (int i = size - 1; i >= 0; --i) {
      const Box3D& box = *byDepth[at(i)];
      const bool wide = box.w > W - p;
      volume[at(i)] = volume[at(i + 1)] + (box.w >= p ? box.vol : 0);
      tallHeight[at(i)] = tallHeight[at(i + 1)] + (wide ? box.h : 0);
      tallVolume[at(i)] = tallVolume[at(i + 1)] + (wide ? box.vol : 0);
    }
  }

  /// Index of the first box at least `depth` deep.
  int firstFrom(int depth) const {
    const auto end = byDepth.begin() + size;
    return static_cast<int>(std::lower_bound(byDepth.begin(), end, depth,
                                             [](const Box3D* box, int value) { return box->d < value; }) -
                            byDepth.begin());
  }
};

int bothBoundUpright(const AllInfo3D& a, std::span<const Box3D> boxes) {
  const int start = sidesBoundUpright(a, boxes);
  Sides widths, depths;
  int widthCount = 0, depthCount = 0;
  for (const Box3D& box : boxes) {
    if (2 * box.w <= a.W) widths[at(widthCount++)] = box.w;
    if (2 * box.d <= a.D) depths[at(depthCount++)] = box.d;
  }
  if (widthCount == 0 || depthCount == 0) return start;
  widthCount = makeDistinct(widths, widthCount);
  depthCount = makeDistinct(depths, depthCount);

  DepthSums sums(boxes);
  const std::int64_t face = static_cast<std::int64_t>(a.W) * a.D;
  std::int64_t extra = 0;
  for (int i = 0; i < widthCount; ++i) {
    sums.cutAtWidth(a.W, widths[at(i)]);
    for (int j = 0; j < depthCount; ++j) {
      const int q = depths[at(j)];
      const std::size_t deep = at(sums.firstFrom(a.D - q + 1));
      const std::int64_t others = sums.volume[at(sums.firstFrom(q))] - sums.tallVolume[deep];
      const std::int64_t room = (static_cast<std::int64_t>(a.H) * start - sums.tallHeight[deep]) * face;
      extra = std::max(extra, ceilDivide(others - room, a.BVOL));
    }
  }
  return start + static_cast<int>(extra);
}

template <class Bound>
int largestOverTurns(AllInfo3D& a, std::span<Box3D> boxes, Bound bound) {
  int largest = 0;
  for (int turn = 0; turn < 3; ++turn) {
    largest = std::max(largest, bound(a, boxes));
    turnBin(a);
    turnBoxes(boxes);
  }
  return largest;
}

}  // namespace

void turnBin(AllInfo3D& a) {
  const std::int16_t w = a.W;
  a.W = a.H;
  a.H = a.D;
  a.D = w;
}

void turnBoxes(std::span<Box3D> boxes) {
  for (Box3D& box : boxes) {
    const std::int16_t w = box.w, x = box.x;
    box.w = box.h;
    box.h = box.d;
    box.d = w;
    box.x = box.y;
    box.y = box.z;
    box.z = x;
  }
}

int boundByVolume(const AllInfo3D& a, std::span<const Box3D> boxes) {
  std::int64_t sum = 0;
  for (const Box3D& box : boxes) sum += box.vol;
  return static_cast<int>(ceilDivide(sum, a.BVOL));
}

int boundBySides(AllInfo3D& a, std::span<Box3D> boxes) {
  return largestOverTurns(a, boxes, sidesBoundUpright);
}
int boundByBoth(AllInfo3D& a, std::span<Box3D> boxes) {
  return largestOverTurns(a, boxes, bothBoundUpright);
}

}  // namespace mek::pack
