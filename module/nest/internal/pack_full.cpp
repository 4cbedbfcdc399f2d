#include "module/nest/internal/pack_full.h"

#include <algorithm>

#include "module/nest/internal/pack_check.h"

namespace mek::pack {
namespace {

constexpr std::array<std::array<int, 3>, 6> kTurns = {
    {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {1, 0, 2}, {2, 1, 0}}};
constexpr int kOrders = 4;
/// Nodes of a try; it doubles once all turns and orders have had theirs.
constexpr std::int64_t kFirstLimit = 5000;
constexpr int kMostDoublings = 20;

}  // namespace

bool FullBins::isFull() const {
  if (a_.n > kMemoBoxes || std::max({a_.W, a_.H, a_.D}) > kMostCells) return false;
  std::int64_t volume = 0;
  for (const Box3D& box : a_.boxes) volume += box.vol;
  return volume == std::int64_t{a_.proven} * a_.BVOL;
}

void FullBins::run(std::int64_t nodes) {
  if (!isFull()) return;
  while (nodes > 0 && !a_.stopped && a_.z > a_.proven) {
    order(attempt_);
    const int round = attempt_ / static_cast<int>(kTurns.size() * kOrders);
    limit_ = kFirstLimit << std::min(round, kMostDoublings);
    ++attempt_;
    nodes_ = 0;
    left_ = a_.n;
    bin_ = 1;
    clearFloor();
    fill();
    nodes -= nodes_;
  }
}

/// The boxes with their axes turned, in one of the orders: by volume, by the third or the first side, by the
/// longest one.
void FullBins::order(int attempt) {
  turn_ = kTurns[at(attempt) % kTurns.size()];
  const std::array<int, 3> bin = {a_.W, a_.H, a_.D};
  for (std::size_t axis = 0; axis < 3; ++axis) cells_[axis] = bin[at(turn_[axis])];
  for (int i = 0; i < a_.n; ++i) {
    const Box3D& box = a_.boxes[at(i)];
    const std::array<int, 3> side = {box.w, box.h, box.d};
    pieces_[at(i)] = {{side[at(turn_[0])], side[at(turn_[1])], side[at(turn_[2])]}, {}, i, 0, false};
  }
  const int by = attempt / static_cast<int>(kTurns.size()) % kOrders;
  const auto rank = [by](const Piece& piece) {
    if (by == 1) return piece.side[2];
    if (by == 2) return piece.side[0];
    return by == 3 ? std::max({piece.side[0], piece.side[1], piece.side[2]}) : 0;
  };
  std::sort(pieces_.begin(), pieces_.begin() + a_.n, [&](const Piece& p, const Piece& q) {
    if (rank(p) != rank(q)) return rank(p) > rank(q);
    const int volume = a_.boxes[at(p.index)].vol, other = a_.boxes[at(q.index)].vol;
    return volume != other ? volume > other : p.index < q.index;
  });
}

void FullBins::clearFloor() {
  for (int y = 0; y < cells_[1]; ++y) std::fill_n(floor_[y], cells_[0], std::int16_t{0});
}

FullBins::Place FullBins::nextPlace() const {
  Place place = {0, 0, floor_[0][0], 0, 0};
  for (int y = 0; y < cells_[1]; ++y) {
    const std::int16_t* lowest = std::min_element(floor_[y], floor_[y] + cells_[0]);
    if (*lowest < place.z) place = {static_cast<int>(lowest - floor_[y]), y, *lowest, 0, 0};
  }
  while (place.x + place.width < cells_[0] && floor_[place.y][place.x + place.width] == place.z)
    ++place.width;
  while (place.y + place.depth < cells_[1] && floor_[place.y + place.depth][place.x] == place.z)
    ++place.depth;
  return place;
}

/// What the boxes left can add up to along an axis.
FullBins::Lengths FullBins::lengths(int axis) const {
  Lengths sums;
  sums[0] = true;
  for (int i = 0; i < a_.n; ++i)
    if (!pieces_[at(i)].isPlaced) sums |= sums << at(pieces_[at(i)].side[at(axis)]);
  return sums;
}

bool FullBins::isFlat(const Place& place, const Piece& piece) const {
  for (int y = place.y; y < place.y + piece.side[1]; ++y)
    for (int x = place.x; x < place.x + piece.side[0]; ++x)
      if (floor_[y][x] != place.z) return false;
  return true;
}

void FullBins::raise(const Place& place, const Piece& piece, int height) {
  for (int y = place.y; y < place.y + piece.side[1]; ++y)
    std::fill_n(floor_[y] + place.x, piece.side[0], toShort(height));
}

bool FullBins::nextBin() {
  if (bin_ == a_.proven) return false;
  ++bin_;
  clearFloor();
  if (fill()) return true;
  --bin_;
  for (int y = 0; y < cells_[1]; ++y) std::fill_n(floor_[y], cells_[0], toShort(cells_[2]));
  return false;
}

bool FullBins::fill() {
  if (left_ == 0) return store();
  ++nodes_;
  countIteration(a_);
  if (nodes_ > limit_ || a_.stopped) return false;
  const Place place = nextPlace();
  if (place.z == cells_[2]) return nextBin();
  const std::array<int, 3> room = {place.width, place.depth, cells_[2] - place.z};
  const std::array<Lengths, 3> sums = {lengths(0), lengths(1), lengths(2)};
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (!sums[axis][at(room[axis])]) return false;
  const Piece* last = nullptr;
  for (int i = 0; i < a_.n; ++i) {
    Piece& piece = pieces_[at(i)];
    if (piece.isPlaced) continue;
    bool fits = !last || last->side != piece.side;  // equal boxes stand beside each other in the order
    for (std::size_t axis = 0; axis < 3 && fits; ++axis)
      fits = piece.side[axis] <= room[axis] && sums[axis][at(room[axis] - piece.side[axis])];
    if (!fits || !isFlat(place, piece)) continue;
    last = &piece;
    piece.isPlaced = true;
    piece.corner = {place.x, place.y, place.z};
    piece.bin = bin_;
    --left_;
    raise(place, piece, place.z + piece.side[2]);
    if (fill()) return true;
    raise(place, piece, place.z);
    ++left_;
    piece.isPlaced = false;
    if (nodes_ > limit_ || a_.stopped) return false;
  }
  return false;
}

/// False for a packing that a robot can't make, when it has to be one.
bool FullBins::store() {
  std::copy(a_.boxes.begin(), a_.boxes.end(), a_.incumbent.begin());
  for (int i = 0; i < a_.n; ++i) {
    const Piece& piece = pieces_[at(i)];
    Box3D& box = a_.incumbent[at(piece.index)];
    std::array<std::int16_t, 3> corner;
    for (std::size_t axis = 0; axis < 3; ++axis) corner[at(turn_[axis])] = toShort(piece.corner[axis]);
    box.x = corner[0], box.y = corner[1], box.z = corner[2];
    box.bno = toShort(piece.bin);
  }
  if (a_.packtype == kRobotPacking && barredBoxes(a_.incumbent) > 0) return false;
  storeSolution(a_, a_.incumbent, bin_);
  return true;
}

}  // namespace mek::pack
