#include "module/nest/internal/pack_check.h"

#include <algorithm>
#include <array>

namespace mek::pack {
namespace {

bool overlap(const Box3D& a, const Box3D& b) {
  return a.x + a.w > b.x && b.x + b.w > a.x && a.y + a.h > b.y && b.y + b.h > a.y && a.z + a.d > b.z &&
         b.z + b.d > a.z;
}

bool checkPairs(std::span<const Box3D> boxes) {
  bool good = true;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    for (std::size_t j = i + 1; j < boxes.size(); ++j) {
      const Box3D &a = boxes[i], &b = boxes[j];
      if (a.bno != b.bno || a.bno == 0) continue;
      if (a.no == b.no) {
        report("duplicated box %d\n", a.no);
        good = false;
      } else if (overlap(a, b)) {
        report("overlap box %d,%d: [%d,%d,%d] [%d,%d,%d]", a.no, b.no, a.x, a.y, a.z, b.x, b.y, b.z);
        good = false;
      }
    }
  }
  return good;
}

/// True when `box` lies right of, above or in front of `other`.
bool liesBeyond(const Box3D& box, const Box3D& other) {
  return box.x >= other.x + other.w || box.y >= other.y + other.h || box.z >= other.z + other.d;
}

}  // namespace

int barredBoxes(std::span<const Box3D> boxes) {
  std::array<const Box3D*, kTableSide> left;
  int size = 0;
  for (const Box3D& box : boxes)
    if (box.bno != 0) left[at(size++)] = &box;
  for (bool taken = true; taken;) {
    taken = false;
    for (int i = 0; i < size; ++i) {
      const Box3D* box = left[at(i)];
      const auto bars = [box](const Box3D* other) {
        return other != box && other->bno == box->bno && !liesBeyond(*box, *other);
      };
      if (std::any_of(left.begin(), left.begin() + size, bars)) continue;
      left[at(i--)] = left[at(--size)];
      taken = true;
    }
  }
  return size;
}

bool checkPacking(const AllInfo3D& a, std::span<const Box3D> boxes) {
  const bool apart = checkPairs(boxes);
  const int barred = a.packtype == kRobotPacking ? barredBoxes(boxes) : 0;
  for (int i = 0; i < barred; ++i) report("not robot packable");
  return apart && barred == 0;
}

void storeSolution(AllInfo3D& a, std::span<const Box3D> solution, int bins) {
  if (bins >= a.z) {
    report("not improved");
    return;
  }
  for (const Box3D& box : solution)
    if (box.bno < 1 || box.bno > bins) report("illegal bin %d, box %d", box.bno, box.no);
  if (solution.size() != at(a.n)) report("not correct amount of boxes");
  std::copy_n(solution.begin(), std::min(solution.size(), a.best.size()), a.best.begin());
  a.z = toShort(bins);
  checkPacking(a, a.best);
}

}  // namespace mek::pack
