#include "module/nest/internal/pack_improve.h"

#include <algorithm>
#include <bit>

#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_check.h"
#include "module/nest/internal/pack_general.h"
#include "module/nest/internal/pack_robot.h"
#include "module/nest/internal/pack_single.h"

namespace mek::pack {
namespace {

/// Nodes of a single-bin test: what isn't found soon counts as not fitting.
constexpr int kTestNodes = 400;
/// Boxes that one insertion may push out.
constexpr int kMostEjected = 3;
/// Random moves and exchanges after an ejection.
constexpr int kShakes = 40;

std::uint64_t bit(int box) {
  return std::uint64_t{1} << box;
}

}  // namespace

Improver::Improver(AllInfo3D& a) : a_(a), random_(at(a.n)) {}

int Improver::draw(int count) {
  random_ = random_ * 6364136223846793005u + 1442695040888963407u;
  return static_cast<int>((random_ >> 33) % static_cast<std::uint64_t>(count));
}

void Improver::run(std::int64_t effort) {
  if (a_.n > kMemoBoxes) return;
  const std::int64_t until = spent_ + effort;
  while (!a_.stopped && a_.z > a_.proven && spent_ < until)
    if (removeBin(until)) store();
}

/// The best packing without the bin that is emptied this time: in turn from the emptiest on.
void Improver::load() {
  binCount_ = a_.z;
  bins_.fill(0);
  volumes_.fill(0);
  for (const Box3D& box : a_.best) {
    const auto place =
        std::find_if(a_.boxes.begin(), a_.boxes.end(), [&](const Box3D& own) { return own.no == box.no; });
    const int index = static_cast<int>(place - a_.boxes.begin());
    bins_[at(box.bno - 1)] |= bit(index);
    volumes_[at(box.bno - 1)] += box.vol;
  }
  std::array<int, kMemoBoxes + 1> order;
  for (int i = 0; i < binCount_; ++i) order[at(i)] = i;
  std::stable_sort(order.begin(), order.begin() + binCount_,
                   [&](int x, int y) { return volumes_[at(x)] < volumes_[at(y)]; });
  const int emptied = order[at(rounds_++ % binCount_)];
  poolSize_ = 0;
  for (Boxes left = bins_[at(emptied)]; left != 0; left &= left - 1)
    pool_[at(poolSize_++)] = std::countr_zero(left);
  std::swap(bins_[at(emptied)], bins_[at(binCount_ - 1)]);
  std::swap(volumes_[at(emptied)], volumes_[at(binCount_ - 1)]);
  --binCount_;
  refusals_.fill(1);
}

bool Improver::removeBin(std::int64_t until) {
  load();
  const std::int64_t mine = std::min(until, spent_ + 200000);
  while (poolSize_ > 0) {
    if (a_.stopped || spent_ >= mine) return false;
    ++spent_;
    countIteration(a_);
    const int box = pool_[at(--poolSize_)];
    if (insert(box)) continue;
    ++refusals_[at(box)];
    if (!eject(box)) {
      // Another one first.
      pool_[at(poolSize_)] = pool_[0];
      pool_[0] = box;
      ++poolSize_;
    }
    shake();
  }
  return true;
}

bool Improver::insert(int box) {
  const int start = draw(binCount_);
  for (int i = 0; i < binCount_; ++i) {
    const int bin = (start + i) % binCount_;
    if (!fits(bins_[at(bin)] | bit(box))) continue;
    bins_[at(bin)] |= bit(box);
    return true;
  }
  return false;
}

/// Puts the box where what it pushes out was refused least often, less often than itself.
bool Improver::eject(int box) {
  int least = refusals_[at(box)], ties = 0, chosenBin = -1;
  Boxes chosen = 0;
  const auto consider = [&](int bin, Boxes out, int refused) {
    if (refused > least || (refused == least && chosenBin < 0)) return;
    if (refused == least && draw(++ties + 1) != 0) return;
    if (!fits((bins_[at(bin)] & ~out) | bit(box))) return;
    if (refused < least) ties = 0;
    least = refused;
    chosenBin = bin;
    chosen = out;
  };
  const int start = draw(binCount_);
  for (int i = 0; i < binCount_; ++i) {
    const int bin = (start + i) % binCount_;
    for (Boxes first = bins_[at(bin)]; first != 0; first &= first - 1) {
      const int one = std::countr_zero(first), refusedOne = refusals_[at(one)];
      consider(bin, bit(one), refusedOne);
      for (Boxes second = first & (first - 1); second != 0; second &= second - 1) {
        const int two = std::countr_zero(second), refusedTwo = refusedOne + refusals_[at(two)];
        if (refusedTwo > least) continue;
        consider(bin, bit(one) | bit(two), refusedTwo);
        for (Boxes third = second & (second - 1); third != 0; third &= third - 1) {
          const int three = std::countr_zero(third);
          consider(bin, bit(one) | bit(two) | bit(three), refusedTwo + refusals_[at(three)]);
        }
      }
    }
  }
  if (chosenBin < 0) return false;
  bins_[at(chosenBin)] = (bins_[at(chosenBin)] & ~chosen) | bit(box);
  for (; chosen != 0; chosen &= chosen - 1) pool_[at(poolSize_++)] = std::countr_zero(chosen);
  return true;
}

void Improver::shake() {
  if (binCount_ < 2) return;
  for (int i = 0; i < kShakes && !a_.stopped; ++i) {
    const int from = draw(binCount_), to = (from + 1 + draw(binCount_ - 1)) % binCount_;
    Boxes &source = bins_[at(from)], &target = bins_[at(to)];
    const auto anyOf = [&](Boxes set) {
      for (int skip = draw(std::popcount(set)); skip > 0; --skip) set &= set - 1;
      return set & (~set + 1);
    };
    if (source == 0) continue;
    const Boxes moved = anyOf(source);
    if (fits(target | moved)) {
      source &= ~moved;
      target |= moved;
      continue;
    }
    if (target == 0) continue;
    const Boxes back = anyOf(target);
    if (!fits((target & ~back) | moved) || !fits((source & ~moved) | back)) continue;
    source = (source & ~moved) | back;
    target = (target & ~back) | moved;
  }
}

std::span<Box3D> Improver::copies(Boxes set) {
  const std::span<Box3D> room = scratchBoxes();
  int size = 0;
  for (; set != 0; set &= set - 1) {
    Box3D& copy = room[at(size++)];
    Box3D& own = a_.boxes[at(std::countr_zero(set))];
    copy = own;
    copy.x = copy.y = copy.z = copy.k = 0;
    copy.ref = &own;
  }
  return room.first(at(size));
}

Answer Improver::test(Boxes set) {
  const std::span<Box3D> boxes = copies(set);
  ++spent_;
  switch (boxes.size()) {
    case 0:
    case 1:
      return Answer::Yes;
    case 2:
      return pairTest(a_.W, a_.H, a_.D, boxes[0], boxes[1]) ? Answer::Yes : Answer::No;
    case 3:
      return tripleTest(a_, boxes[0], boxes[1], boxes[2]) ? Answer::Yes : Answer::No;
    default:
      break;
  }
  if (boundByBoth(a_, boxes) > 1) return Answer::No;
  if (a_.packtype == kRobotPacking) return robotTest(a_, boxes, kTestNodes);
  return generalTest(a_, boxes, kTestNodes);
}

bool Improver::fits(Boxes set) {
  std::int64_t volume = 0;
  std::uint64_t key = 0;
  for (Boxes left = set; left != 0; left &= left - 1) {
    const Box3D& box = a_.boxes[at(std::countr_zero(left))];
    volume += box.vol;
    key |= bit(box.no - 1);
  }
  if (volume > a_.BVOL) return false;
  FitMemo &exact = fitMemo(), &cut = cutMemo();
  if (exact.knows(key)) return exact.answer(key);
  if (cut.knows(key)) return false;
  const Answer answer = test(set);
  if (a_.stopped) return false;
  if (answer == Answer::Cut)
    cut.keep(key, false);
  else
    exact.keep(key, answer == Answer::Yes);
  return answer == Answer::Yes;
}

/// Tests every bin once more for the corners of its boxes.
void Improver::store() {
  std::copy(a_.boxes.begin(), a_.boxes.end(), a_.incumbent.begin());
  int used = 0;
  for (int bin = 0; bin < binCount_; ++bin) {
    if (bins_[at(bin)] == 0) continue;
    if (test(bins_[at(bin)]) != Answer::Yes) return;  // a limit struck
    ++used;
    for (const Box3D& copy : scratchBoxes().first(at(std::popcount(bins_[at(bin)])))) {
      Box3D& box = a_.incumbent[at(static_cast<int>(copy.ref - a_.boxes.data()))];
      box.x = copy.x, box.y = copy.y, box.z = copy.z;
      box.bno = toShort(used);
    }
  }
  storeSolution(a_, a_.incumbent, used);
}

}  // namespace mek::pack
