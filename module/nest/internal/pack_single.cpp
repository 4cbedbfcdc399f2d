#include "module/nest/internal/pack_single.h"

#include <array>

#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_check.h"
#include "module/nest/internal/pack_general.h"
#include "module/nest/internal/pack_robot.h"

namespace mek::pack {
namespace {

constexpr int kHeuristicNodes = 1000;
// Nodes of a decision before the other test is asked, and how many times that it gets.
constexpr int kFirstShare = 1000;
constexpr int kLastShare = 16000;
constexpr int kShareGrowth = 16;
constexpr int kHelpShare = 4;

void moveTo(Box3D& box, int x, int y, int z) {
  box.x = toShort(x);
  box.y = toShort(y);
  box.z = toShort(z);
}

/// `across` at the far end of one axis, the other two in the rest of the bin.
bool besidePair(const AllInfo3D& a, Box3D& first, Box3D& second, Box3D& across) {
  if (pairTest(a.W - across.w, a.H, a.D, first, second)) {
    moveTo(across, a.W - across.w, 0, 0);
    return true;
  }
  if (pairTest(a.W, a.H - across.h, a.D, first, second)) {
    moveTo(across, 0, a.H - across.h, 0);
    return true;
  }
  if (pairTest(a.W, a.H, a.D - across.d, first, second)) {
    moveTo(across, 0, 0, a.D - across.d);
    return true;
  }
  return false;
}

/// p beside q on x, q under r on y, p before r on z. The order p, q, r is one of a robot.
bool mixed(const AllInfo3D& a, Box3D& p, Box3D& q, Box3D& r) {
  if (p.w + q.w > a.W || q.h + r.h > a.H || p.d + r.d > a.D) return false;
  moveTo(p, 0, 0, 0);
  moveTo(q, p.w, 0, 0);
  moveTo(r, 0, q.h, p.d);
  return true;
}

bool volumeFits(const AllInfo3D& a, std::span<const Box3D> boxes) {
  std::int64_t volume = 0;
  for (const Box3D& box : boxes) volume += box.vol;
  return volume <= a.BVOL;
}

/// A general packing that happens to be one of a robot too.
bool isRobotPacking(std::span<Box3D> boxes) {
  for (Box3D& box : boxes) box.bno = 1;
  return barredBoxes(boxes) == 0;
}

/// The test of the packing type; when it takes long, the other one has a try: what fits in no way doesn't fit
/// a robot's way, and what fits a robot's way fits. Either may know much sooner.
Answer decide(AllInfo3D& a, std::span<Box3D> boxes) {
  const bool robot = a.packtype == kRobotPacking;
  const auto own = [&](int nodes) {
    return robot ? robotTest(a, boxes, nodes) : generalTest(a, boxes, nodes);
  };
  const auto other = [&](int nodes) {
    return robot ? generalTest(a, boxes, nodes) : robotTest(a, boxes, nodes);
  };
  for (int nodes = kFirstShare; nodes <= kLastShare; nodes *= kShareGrowth) {
    const Answer answer = own(nodes);
    if (answer != Answer::Cut || a.stopped) return answer;
    const Answer help = other(nodes * kHelpShare);
    if (a.stopped) return Answer::Cut;
    if (help == (robot ? Answer::No : Answer::Yes)) return help;
    if (robot && help == Answer::Yes && isRobotPacking(boxes)) return Answer::Yes;
    if (help != Answer::Cut) break;
  }
  return own(0);
}

bool exactTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit) {
  if (!volumeFits(a, boxes) || boundByBoth(a, boxes) > 1) return false;
  ++a.exactCalls;
  a.maxTried = std::max(a.maxTried, count(boxes.size()));
  if (nodeLimit == 0) return decide(a, boxes) == Answer::Yes;
  const bool robot = a.packtype == kRobotPacking;
  return (robot ? robotTest(a, boxes, nodeLimit) : generalTest(a, boxes, nodeLimit)) == Answer::Yes;
}

bool fitCopies(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit) {
  if (boxes.size() < 4) {
    countIteration(a);
    if (a.stopped) return false;
  }
  switch (boxes.size()) {
    case 0:
      report("no boxes in onebin_decision");
      return false;
    case 1:
      return true;
    case 2:
      return pairTest(a.W, a.H, a.D, boxes[0], boxes[1]);
    case 3:
      return tripleTest(a, boxes[0], boxes[1], boxes[2]);
    default:
      return exactTest(a, boxes, nodeLimit);
  }
}

void addCopy(std::span<Box3D> copies, int& size, Box3D& box) {
  Box3D& copy = copies[at(size++)];
  copy = box;
  moveTo(copy, 0, 0, 0);
  copy.k = 0;
  copy.ref = &box;
}

void giveBack(std::span<const Box3D> copies) {
  for (const Box3D& copy : copies) moveTo(*copy.ref, copy.x, copy.y, copy.z);
}

struct Candidates {
  std::span<Box3D> copies;
  std::uint64_t key;  ///< 0 when the set isn't worth or not able to be remembered
};

/// Copies of the boxes of `bin`, and of `box` behind them.
Candidates gather(AllInfo3D& a, Box3D& box, int bin) {
  const std::span<Box3D> copies = scratchBoxes();
  int size = 0;
  std::uint64_t key = 0;
  const auto take = [&](Box3D& next) {
    addCopy(copies, size, next);
    key |= std::uint64_t{1} << ((next.no - 1) % kMemoBoxes);
  };
  for (Box3D& other : a.boxes)
    if (other.bno == bin && &other != &box) take(other);
  take(box);
  return {copies.first(at(size)), a.n <= kMemoBoxes && size > 2 ? key : 0};
}

}  // namespace

bool pairTest(int W, int H, int D, Box3D& first, Box3D& second) {
  const bool inside =
      first.w <= W && second.w <= W && first.h <= H && second.h <= H && first.d <= D && second.d <= D;
  if (!inside) return false;
  moveTo(first, 0, 0, 0);
  if (first.w + second.w <= W)
    moveTo(second, first.w, 0, 0);
  else if (first.h + second.h <= H)
    moveTo(second, 0, first.h, 0);
  else if (first.d + second.d <= D)
    moveTo(second, 0, 0, first.d);
  else
    return false;
  return true;
}

bool tripleTest(const AllInfo3D& a, Box3D& first, Box3D& second, Box3D& third) {
  if (a.packtype != kGeneralPacking && a.packtype != kRobotPacking) return false;
  const std::array<Box3D*, 3> box = {&first, &second, &third};
  for (std::size_t turn = 0; turn < 3; ++turn)
    if (besidePair(a, *box[turn], *box[(turn + 1) % 3], *box[(turn + 2) % 3])) return true;
  static constexpr std::array<std::array<std::size_t, 3>, 6> kOrders = {
      {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}};
  for (const auto& order : kOrders)
    if (mixed(a, *box[order[0]], *box[order[1]], *box[order[2]])) return true;
  return false;
}

bool onebin_decision(AllInfo3D& a, Box3D& box, int bin) {
  const Candidates set = gather(a, box, bin);
  FitMemo& memo = fitMemo();
  if (memo.knows(set.key) && !memo.answer(set.key)) return false;
  const bool fits = fitCopies(a, set.copies, 0);
  if (!a.stopped && set.key != 0) memo.keep(set.key, fits);
  if (fits) giveBack(set.copies);
  return fits;
}

bool couldJoin(AllInfo3D& a, Box3D& box, int bin) {
  const Candidates set = gather(a, box, bin);
  FitMemo& memo = fitMemo();
  if (memo.knows(set.key)) return memo.answer(set.key);
  const bool fits = fitCopies(a, set.copies, 0);
  if (!a.stopped && set.key != 0) memo.keep(set.key, fits);
  return fits;
}

bool onebin_heuristic(AllInfo3D& a, std::span<Box3D* const> boxes) {
  const std::span<Box3D> copies = scratchBoxes();
  int size = 0;
  for (Box3D* box : boxes) addCopy(copies, size, *box);
  if (!fitCopies(a, copies.first(at(size)), kHeuristicNodes)) return false;
  giveBack(copies.first(at(size)));
  return true;
}

}  // namespace mek::pack
