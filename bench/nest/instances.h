#pragma once
// Public instance classes, generated from their definitions with the product's own random numbers.
#include <array>
#include <vector>

#include "module/nest/pack_problem.h"

namespace nestbench {

/// Sheet side and rectangles.
struct RectangleSet {
  int side;
  std::vector<std::array<int, 2>> sizes;
};

/// Ten classes: 1 to 6 by J. O. Berkey, P. Y. Wang: Two-dimensional finite bin-packing algorithms, J. Oper.
/// Res. Soc. 38, 1987; 7 to 10 by S. Martello, D. Vigo: Exact solution of the two-dimensional finite bin
/// packing problem, Management Science 44, 1998.
inline RectangleSet rectangleSet(int setClass, int n, int number) {
  static constexpr std::array<std::array<int, 2>, 6> kEven = {
      {{10, 10}, {30, 10}, {40, 35}, {100, 35}, {100, 100}, {300, 100}}};
  mek::PackRandom random(static_cast<std::uint32_t>(setClass * 100000 + n * 100 + number));
  RectangleSet set;
  if (setClass <= 6) {
    const auto [side, most] = kEven[static_cast<std::size_t>(setClass - 1)];
    set.side = side;
    for (int i = 0; i < n; ++i) {
      const int w = random.draw(1, most);
      set.sizes.push_back({w, random.draw(1, most)});
    }
    return set;
  }
  set.side = 100;
  for (int i = 0; i < n; ++i) {
    const int own = setClass - 6, drawn = random.draw(1, 10);
    const int type = drawn <= 7 ? own : (own + drawn - 8) % 4 + 1;
    const auto wide = [&] { return random.draw(67, 100); };
    const auto half = [&] { return random.draw(1, 50); };
    const auto big = [&] { return random.draw(50, 100); };
    int w = 0, h = 0;
    if (type == 1) w = wide(), h = half();
    if (type == 2) w = half(), h = wide();
    if (type == 3) w = big(), h = big();
    if (type == 4) w = half(), h = half();
    set.sizes.push_back({w, h});
  }
  return set;
}

/// Nine classes of boxes by S. Martello, D. Pisinger, D. Vigo: The three-dimensional bin packing problem,
/// Operations Research 48, 2000. Class 9 (three full bins) is the module's own cut.
inline mek::PackInstance boxSet(int boxClass, int n, int number) {
  const std::uint32_t seed = static_cast<std::uint32_t>(boxClass * 100000 + n * 100 + number);
  mek::PackInstance set;
  if (boxClass == 9) {
    mek::randomPackInstance(n, 100, 9, seed, set);
    return set;
  }
  mek::PackRandom random(seed);
  set.W = set.H = set.D = boxClass == 6 ? 10 : boxClass == 7 ? 40 : 100;
  const int most = boxClass == 6 ? 10 : boxClass == 7 ? 35 : 100;
  for (int i = 0; i < n; ++i) {
    std::array<int, 3> box;
    const int drawn = boxClass <= 5 ? random.draw(1, 10) : 0;
    const int type = drawn > 5 ? boxClass : drawn;
    for (int axis = 0; axis < 3; ++axis) {
      int& side = box[static_cast<std::size_t>(axis)];
      if (type == 0)
        side = random.draw(1, most);
      else if (type == 4)
        side = random.draw(50, 100);
      else
        side = type == 5 || type == axis + 1 ? random.draw(1, 50) : random.draw(67, 100);
    }
    set.w.push_back(box[0]);
    set.h.push_back(box[1]);
    set.d.push_back(box[2]);
  }
  return set;
}

}  // namespace nestbench
