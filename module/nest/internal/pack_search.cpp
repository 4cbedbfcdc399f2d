#include "module/nest/internal/pack_search.h"

#include <algorithm>
#include <array>

#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_check.h"
#include "module/nest/internal/pack_full.h"
#include "module/nest/internal/pack_improve.h"
#include "module/nest/internal/pack_scales.h"
#include "module/nest/internal/pack_single.h"

namespace mek::pack {
namespace {

constexpr int kDeepestClosing = 160;
/// Thousands of iterations and nodes before the best packing is improved for the first time; the waits then
/// double, and improving gets as many tests.
constexpr int kFirstWait = 4;
/// A try for a packing without waste costs little of what a test of one bin does.
constexpr int kFullShare = 4;

/// What closing bins has changed at one node.
struct ClosedHere {
  std::array<std::int16_t, kTableSide> bins, boxes;  ///< bin numbers; indices of boxes added to them
  int binCount = 0, boxCount = 0;
};

class Search {
 public:
  explicit Search(AllInfo3D& a) : a_(a), improver_(a), full_(a) {}
  void node(int first, int bins, int bound, int level);

 private:
  void closeAndBranch(int first, int bins, int bound, int level);
  void branch(int first, int bins, int bound, int level);
  void closeBins(int bins, ClosedHere& here);
  bool closeBin(int bin, ClosedHere& here);
  void reopen(const ClosedHere& here);
  int boundOfRest();
  int nextFree(int index) const;
  bool over(int bins, int bound) const {
    return a_.stopped || a_.z == a_.proven || bins >= a_.z || bound >= a_.z;
  }

  void improveNowAndThen();

  AllInfo3D& a_;
  Improver improver_;
  FullBins full_;
  int wait_ = kFirstWait, next_ = kFirstWait;
};

void Search::improveNowAndThen() {
  if (a_.nodes + a_.iterations < next_) return;
  if (wait_ == kFirstWait) a_.proven = toShort(std::max<int>(a_.proven, boundByScales(a_)));
  full_.run(std::int64_t{wait_} * kThousand * kFullShare);
  improver_.run(std::int64_t{wait_} * kThousand / 2);
  wait_ *= 2;
  next_ = a_.nodes + a_.iterations + wait_;
}

int Search::nextFree(int index) const {
  while (index < a_.n && a_.boxes[at(index)].bno != 0) ++index;
  return index;
}

void Search::node(int first, int bins, int bound, int level) {
  if (bins >= a_.z || a_.z == a_.proven) return;
  countNode(a_);
  improveNowAndThen();
  if (a_.stopped || a_.z == a_.proven || bins >= a_.z) return;
  first = nextFree(first);
  if (first == a_.n) {
    storeSolution(a_, a_.boxes, bins);
  } else if (level > kDeepestClosing) {
    if (bound < a_.z) branch(first, bins, bound, level);
  } else {
    closeAndBranch(first, bins, bound, level);
  }
}

void Search::closeAndBranch(int first, int bins, int bound, int level) {
  ClosedHere here;
  closeBins(bins, here);
  if (here.binCount > 0) bound = std::max(bound, a_.noc + boundOfRest());
  if (!over(bins, bound)) {
    first = nextFree(first);
    if (first == a_.n)
      storeSolution(a_, a_.boxes, bins);
    else
      branch(first, bins, bound, level);
  }
  reopen(here);
}

void Search::branch(int first, int bins, int bound, int level) {
  Box3D& box = a_.boxes[at(first)];
  for (int bin = 1; bin <= bins && !over(bins, bound); ++bin) {
    if (a_.closed[bin] || !onebin_decision(a_, box, bin)) continue;
    box.bno = toShort(bin);
    node(first + 1, bins, bound, level + 1);
    box.bno = 0;
  }
  if (!over(bins + 1, bound)) {
    box.bno = toShort(bins + 1);
    box.x = box.y = box.z = 0;
    a_.closed[bins + 1] = false;
    node(first + 1, bins + 1, bound, level + 1);
  }
  box.bno = 0;
}

void Search::closeBins(int bins, ClosedHere& here) {
  for (int bin = 1; bin <= bins && !a_.stopped; ++bin) {
    if (a_.closed[bin] || !closeBin(bin, here)) continue;
    a_.closed[bin] = true;
    ++a_.noc;
    a_.maxclose = std::max(a_.maxclose, a_.noc);
    here.bins[at(here.binCount++)] = toShort(bin);
  }
}

/// A bin is full in effect when every free box that could still go in goes in together with all the others.
bool Search::closeBin(int bin, ClosedHere& here) {
  int size = 0;
  std::int64_t volume = 0;
  const auto gather = [&](Box3D& box) {
    a_.closing[at(size++)] = &box;
    volume += box.vol;
  };
  for (Box3D& box : a_.boxes) {
    if (box.no < 1 || box.no > a_.n) report("bad no");
    if (box.bno == bin) gather(box);
  }
  const int own = size;
  if (own == 0) report("bin with no boxes");
  if (own == 0 || 2 * volume < a_.BVOL) return false;
  for (Box3D& box : a_.boxes) {
    if (box.bno != 0 || !couldJoin(a_, box, bin)) continue;
    gather(box);
    if (volume > a_.BVOL) return false;
  }
  if (a_.stopped || !onebin_heuristic(a_, a_.closing.first(at(size)))) return false;
  for (int i = own; i < size; ++i) {
    Box3D* box = a_.closing[at(i)];
    box->bno = toShort(bin);
    here.boxes[at(here.boxCount++)] = toShort(static_cast<int>(box - a_.boxes.data()));
  }
  return true;
}

void Search::reopen(const ClosedHere& here) {
  for (int i = 0; i < here.binCount; ++i) a_.closed[here.bins[at(i)]] = false;
  for (int i = 0; i < here.boxCount; ++i) a_.boxes[at(here.boxes[at(i)])].bno = 0;
  a_.noc = toShort(a_.noc - here.binCount);
}

/// Both bounds over the boxes that lie in no closed bin.
int Search::boundOfRest() {
  const std::span<Box3D> copies = scratchBoxes();
  int size = 0;
  for (const Box3D& box : a_.boxes)
    if (box.bno == 0 || !a_.closed[box.bno]) copies[at(size++)] = box;
  return boundByBoth(a_, copies.first(at(size)));
}

}  // namespace

void searchPacking(AllInfo3D& a) {
  Search(a).node(0, 0, a.lb, 1);
}

}  // namespace mek::pack
