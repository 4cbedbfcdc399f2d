#pragma once
// A better packing than the best one known: one bin is emptied and its boxes are brought into the others,
// each insertion pushing out boxes that were easier to place (guided ejection; Y. Nagata, O. Bräysy: A
// powerful route minimization heuristic, Operations Research Letters 37, 2009). It proves nothing and never
// changes a number that is proven: it only lets the search end sooner.
#include <array>

#include "module/nest/internal/pack_state.h"

namespace mek::pack {

class Improver {
 public:
  explicit Improver(AllInfo3D& a);
  /// Takes bins away from the best packing for about `effort` single-bin tests, until it has `a.lb` bins or a
  /// limit strikes; better packings are stored. Runs of more than 64 boxes are left alone. The same calls in
  /// the same order give the same packings.
  void run(std::int64_t effort);

 private:
  using Boxes = std::uint64_t;  ///< a set by index into the working array

  bool removeBin(std::int64_t until);
  void load();
  bool insert(int box);
  bool eject(int box);
  void shake();
  void store();
  bool fits(Boxes set);
  Answer test(Boxes set);
  std::span<Box3D> copies(Boxes set);
  int draw(int count);

  AllInfo3D& a_;
  std::array<Boxes, kMemoBoxes + 1> bins_;
  std::array<std::int64_t, kMemoBoxes + 1> volumes_;
  int binCount_ = 0;
  std::array<int, kMemoBoxes> pool_;  ///< boxes without a bin, the last one next
  int poolSize_ = 0;
  std::array<int, kMemoBoxes> refusals_;  ///< how often a box found no place
  std::int64_t spent_ = 0;
  int rounds_ = 0;  ///< which bin is emptied next
  std::uint64_t random_;
};

}  // namespace mek::pack
