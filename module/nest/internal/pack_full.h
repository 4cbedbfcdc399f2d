#pragma once
// Packings without waste: when the boxes fill the bins to the last cell, each place has one next corner, and
// the box that stands there must be found. Bins are filled one by one, always at the lowest, then foremost,
// then leftmost free place of the face; sides that the boxes left can't fill exactly close a branch. Short
// tries with other orders and other turns of the axes find more than a long one.
#include <array>
#include <bitset>

#include "module/nest/internal/pack_state.h"

namespace mek::pack {

class FullBins {
 public:
  explicit FullBins(AllInfo3D& a) : a_(a) {}
  /// About so many nodes more. A packing with `a.proven` bins is stored. Nothing is done for boxes that leave
  /// room, for more than 64 of them, and for bins of more than 256 cells a side.
  void run(std::int64_t nodes);

 private:
  static constexpr int kMostCells = 256;
  using Lengths = std::bitset<kMostCells + 1>;
  struct Piece {
    std::array<int, 3> side, corner;
    int index, bin;
    bool isPlaced;
  };
  struct Place {
    int x, y, z;       ///< the next corner
    int width, depth;  ///< of the free floor along its two edges
  };

  bool isFull() const;
  void order(int attempt);
  void clearFloor();
  bool fill();
  bool nextBin();
  Place nextPlace() const;
  Lengths lengths(int axis) const;
  bool isFlat(const Place& place, const Piece& piece) const;
  void raise(const Place& place, const Piece& piece, int height);
  bool store();

  AllInfo3D& a_;
  std::array<Piece, kMemoBoxes> pieces_;
  std::array<int, 3> turn_, cells_;
  std::int16_t floor_[kMostCells][kMostCells];  ///< by y and x: how high the bin is filled
  int bin_ = 0, left_ = 0, attempt_ = 0;
  std::int64_t nodes_ = 0, limit_ = 0;
};

}  // namespace mek::pack
