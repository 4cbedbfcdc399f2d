#include "module/nest/internal/pack_scales.h"

#include <algorithm>
#include <array>

namespace mek::pack {
namespace {

/// Functions of one axis that are tried at most; of more cuts every so many is taken.
constexpr int kMostScales = 192;
constexpr int kMostSteps = 6;

/// The sides of all boxes along one axis under one function, as shares of `whole`.
struct Scale {
  std::array<std::int64_t, kPackMaxBoxes> share;
  std::int64_t whole;
};

struct AxisScales {
  std::array<Scale, kMostScales> scales;
  int size = 0;
};
std::array<AxisScales, 3> axes;

class ScaleMaker {
 public:
  ScaleMaker(AxisScales& axis, const AllInfo3D& a, std::int16_t Box3D::*side, int limit)
      : axis_(axis), a_(a), side_(side), limit_(limit) {}

  void make() {
    axis_.size = 0;
    add(limit_, [&](int x) { return x; });
    for (int k = 1; k <= kMostSteps; ++k) addSteps(k);
    const int cuts = findCuts(), room = (kMostScales - axis_.size) / 3;
    const int stride = std::max(1, (cuts + room - 1) / room);
    for (int i = 0; i < cuts; i += stride) addCuts(cuts_[at(i)]);
  }

 private:
  /// x where (k + 1) x is whole, else whole steps of 1/k.
  void addSteps(int k) {
    add(static_cast<std::int64_t>(k) * limit_, [&](int x) {
      const int steps = (k + 1) * x;
      return steps % limit_ == 0 ? std::int64_t{k} * x : std::int64_t{steps / limit_} * limit_;
    });
  }

  void addCuts(int cut) {
    const std::int64_t fitting = limit_ / cut;
    // What is larger than all but the cut fills the axis, what is smaller than the cut is nothing.
    add(limit_, [&](int x) { return x > limit_ - cut ? limit_ : x < cut ? 0 : x; });
    add(fitting, [&](int x) {
      return 2 * x > limit_ ? fitting - (limit_ - x) / cut : std::int64_t{x >= cut ? 1 : 0};
    });
    add(2 * fitting, [&](int x) {
      if (2 * x == limit_) return fitting;
      return 2 * (2 * x > limit_ ? fitting - (limit_ - x) / cut : std::int64_t{x / cut});
    });
  }

  /// Cuts at which some side changes its part; at most half the axis.
  int findCuts() {
    int size = 0;
    const auto take = [&](int cut) {
      if (cut > 0 && 2 * cut <= limit_) cuts_[at(size++)] = toShort(cut);
    };
    for (const Box3D& box : a_.boxes) {
      const int x = box.*side_;
      take(x);
      take(limit_ - x);
      take((limit_ - x) / 2);
    }
    std::sort(cuts_.begin(), cuts_.begin() + size);
    return static_cast<int>(std::unique(cuts_.begin(), cuts_.begin() + size) - cuts_.begin());
  }

  template <class Function>
  void add(std::int64_t whole, Function function) {
    Scale& scale = axis_.scales[at(axis_.size)];
    scale.whole = whole;
    for (int i = 0; i < a_.n; ++i) scale.share[at(i)] = function(a_.boxes[at(i)].*side_);
    const auto end = scale.share.begin() + a_.n;
    for (int other = 0; other < axis_.size; ++other) {
      const Scale& known = axis_.scales[at(other)];
      if (known.whole == whole && std::equal(scale.share.begin(), end, known.share.begin())) return;
    }
    ++axis_.size;
  }

  AxisScales& axis_;
  const AllInfo3D& a_;
  std::int16_t Box3D::*side_;
  int limit_;
  std::array<std::int16_t, 3 * kPackMaxBoxes> cuts_;
};

}  // namespace

int boundByScales(const AllInfo3D& a) {
  ScaleMaker(axes[0], a, &Box3D::w, a.W).make();
  ScaleMaker(axes[1], a, &Box3D::h, a.H).make();
  ScaleMaker(axes[2], a, &Box3D::d, a.D).make();
  std::int64_t bins = 0;
  std::array<std::int64_t, kPackMaxBoxes> face;
  for (int i = 0; i < axes[0].size; ++i) {
    const Scale& first = axes[0].scales[at(i)];
    for (int j = 0; j < axes[1].size; ++j) {
      const Scale& second = axes[1].scales[at(j)];
      for (int box = 0; box < a.n; ++box) face[at(box)] = first.share[at(box)] * second.share[at(box)];
      for (int k = 0; k < axes[2].size; ++k) {
        const Scale& third = axes[2].scales[at(k)];
        std::int64_t sum = 0;
        for (int box = 0; box < a.n; ++box) sum += face[at(box)] * third.share[at(box)];
        const std::int64_t whole = first.whole * second.whole * third.whole;
        bins = std::max(bins, (sum + whole - 1) / whole);
      }
    }
  }
  return static_cast<int>(bins);
}

}  // namespace mek::pack
