#include <algorithm>
#include <array>

#include "module/nest/pack_boxes.h"
#include "module/nest/pack_problem.h"

namespace mek {
namespace {

constexpr std::uint64_t kMultiplier = 0x5deece66d;
constexpr std::uint64_t kIncrement = 0xb;
constexpr std::uint64_t kStateMask = (std::uint64_t{1} << 48) - 1;
constexpr int kResultShift = 17;  // the upper 31 bits are the good ones

constexpr int kLargestBin = 1290;
constexpr int kClasses = 5;
constexpr int kClassDraws = 10;
constexpr int kFullBinsType = 9;
constexpr int kFullBins = 3;
constexpr int kLastBoxes = 5;
constexpr int kCutAttempts = 1000;
constexpr int kCutDraws = 20;

using Sides = std::array<int, 3>;

void addBox(PackInstance& instance, const Sides& box) {
  instance.w.push_back(box[0]);
  instance.h.push_back(box[1]);
  instance.d.push_back(box[2]);
}

Sides drawFromClass(PackRandom& random, int boxClass, int side) {
  const int half = std::max(1, side / 2);
  const auto small = [&] { return random.draw(1, half); };
  const auto large = [&] { return random.draw((2 * side + 2) / 3, side); };
  if (boxClass == 4) {
    Sides box;
    for (int& value : box) value = random.draw((side + 1) / 2, side);
    return box;
  }
  Sides box;
  for (int axis = 0; axis < 3; ++axis)
    box[static_cast<std::size_t>(axis)] = boxClass == 5 || boxClass == axis + 1 ? small() : large();
  return box;
}

Sides drawMixed(PackRandom& random, int type, int side) {
  const int drawn = type >= 1 ? random.draw(1, kClassDraws) : random.draw(1, kClasses);
  return drawFromClass(random, drawn > kClasses ? type : drawn, side);
}

Sides drawEven(PackRandom& random, int type, int side) {
  const int most = std::min(side, type == 6 ? 10 : type == 7 ? 35 : 100);
  Sides box;
  for (int& value : box) value = random.draw(1, most);
  return box;
}

/// Four boxes around a fifth, cut at a third from each wall.
bool cutInThirds(PackInstance& instance, const Sides& piece) {
  const auto [w, h, d] = piece;
  const int a = w / 3, b = h / 3;
  if (a == 0 || b == 0) return false;
  addBox(instance, {w - a, b, d});
  addBox(instance, {a, h - b, d});
  addBox(instance, {w - a, b, d});
  addBox(instance, {a, h - b, d});
  addBox(instance, {w - 2 * a, h - 2 * b, d});
  return true;
}

std::int64_t volumeOf(const Sides& piece) {
  return std::int64_t{piece[0]} * piece[1] * piece[2];
}

/// Cuts `piece` at random so that its parts can hold so many boxes; false when no draw did.
bool cutAtRandom(PackRandom& random, const Sides& piece, Sides& first, int firstCount, Sides& second,
                 int secondCount) {
  for (int draw = 0; draw < kCutDraws; ++draw) {
    const auto axis = static_cast<std::size_t>(random.draw(1, 3) - 1);
    if (piece[axis] < 2) continue;
    first = second = piece;
    first[axis] = random.draw(1, piece[axis] - 1);
    second[axis] = piece[axis] - first[axis];
    if (volumeOf(first) >= firstCount && volumeOf(second) >= secondCount) return true;
  }
  return false;
}

bool cutUp(PackRandom& random, PackInstance& instance, const Sides& piece, int count) {
  if (count <= 1) {
    if (count == 1) addBox(instance, piece);
    return count == 1;
  }
  Sides first, second;
  const int half = count / 2;
  return cutAtRandom(random, piece, first, half, second, count - half) &&
         cutUp(random, instance, first, half) && cutUp(random, instance, second, count - half);
}

/// The last bin: some boxes at random, the last five in thirds.
bool cutLast(PackRandom& random, PackInstance& instance, const Sides& bin, int count) {
  if (count < kLastBoxes) return cutUp(random, instance, bin, count);
  if (count == kLastBoxes) return cutInThirds(instance, bin);
  Sides first, second;
  return cutAtRandom(random, bin, first, count - kLastBoxes, second, kLastBoxes) &&
         cutUp(random, instance, first, count - kLastBoxes) && cutInThirds(instance, second);
}

bool cutFullBins(PackRandom& random, PackInstance& instance, int n) {
  const Sides bin = {instance.W, instance.H, instance.D};
  const int last =
      n >= kLastBoxes + 2 ? std::max(kLastBoxes, n - 2 * (n / kFullBins)) : n - 2 * (n / kFullBins);
  const int first = (n - last) / 2;
  for (int attempt = 0; attempt < kCutAttempts; ++attempt) {
    instance.w.clear();
    instance.h.clear();
    instance.d.clear();
    if (cutUp(random, instance, bin, first) && cutUp(random, instance, bin, n - last - first) &&
        cutLast(random, instance, bin, last))
      return true;
  }
  return false;
}

}  // namespace

int PackRandom::draw(int from, int to) {
  state_ = (state_ * kMultiplier + kIncrement) & kStateMask;
  if (to <= from) return from;
  const std::uint64_t range = static_cast<std::uint64_t>(static_cast<std::int64_t>(to) - from + 1);
  return static_cast<int>(from + static_cast<std::int64_t>((state_ >> kResultShift) % range));
}

bool randomPackInstance(int n, int bindim, int type, std::uint32_t seed, PackInstance& instance) {
  if (n < 0 || n > kPackMaxBoxes || bindim < 1 || bindim > kLargestBin) return false;
  PackRandom random(seed);
  PackInstance made;
  made.W = made.H = made.D = bindim;
  if (type == kFullBinsType) {
    if (n < kFullBins || !cutFullBins(random, made, n)) return false;
  } else {
    for (int i = 0; i < n; ++i)
      addBox(made, type <= kClasses ? drawMixed(random, type, bindim) : drawEven(random, type, bindim));
  }
  instance = std::move(made);
  return true;
}

}  // namespace mek
