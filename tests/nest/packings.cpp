#include "tests/nest/packings.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <numeric>

#include "module/nest/debug_sink.h"
#include "module/nest/pack_boxes.h"

namespace nesttest {
namespace {

struct Placed {
  Size at, size;
};

bool apart(const Placed& a, const Placed& b) {
  const auto clear = [](int p, int pSize, int q, int qSize) { return p + pSize <= q || q + qSize <= p; };
  return clear(a.at.w, a.size.w, b.at.w, b.size.w) || clear(a.at.h, a.size.h, b.at.h, b.size.h) ||
         clear(a.at.d, a.size.d, b.at.d, b.size.d);
}

/// True when a robot may put `later` after `earlier`.
bool follows(const Placed& later, const Placed& earlier) {
  return earlier.at.w + earlier.size.w <= later.at.w || earlier.at.h + earlier.size.h <= later.at.h ||
         earlier.at.d + earlier.size.d <= later.at.d;
}

bool hasRobotOrder(std::vector<Placed> boxes) {
  while (!boxes.empty()) {
    const auto first = std::find_if(boxes.begin(), boxes.end(), [&](const Placed& box) {
      return std::all_of(boxes.begin(), boxes.end(),
                         [&](const Placed& other) { return &other == &box || follows(other, box); });
    });
    if (first == boxes.end()) return false;
    boxes.erase(first);
  }
  return true;
}

using Cells = std::bitset<128>;

/// Every place of every box, and the searches over them.
class BruteForce {
 public:
  explicit BruteForce(const Problem& problem) : problem_(problem), places_(problem.boxes.size()) {
    const Size& bin = problem.bin;
    for (std::size_t i = 0; i < places_.size(); ++i) {
      const Size& box = problem.boxes[i];
      for (int x = 0; x + box.w <= bin.w; ++x)
        for (int y = 0; y + box.h <= bin.h; ++y)
          for (int z = 0; z + box.d <= bin.d; ++z) places_[i].push_back(place(box, {x, y, z}));
    }
  }

  bool fits(unsigned set, bool robot) {
    auto& known = known_[robot][set];
    if (known == 0) known = (tryAll(set, Cells()) && (!robot || tryOrders(set))) ? 1 : 2;
    return known == 1;
  }

 private:
  struct Place {
    Placed box;
    Cells cells;
  };

  Place place(const Size& box, const Size& corner) const {
    Place result{{corner, box}, {}};
    for (int x = 0; x < box.w; ++x)
      for (int y = 0; y < box.h; ++y)
        for (int z = 0; z < box.d; ++z)
          result.cells.set(static_cast<std::size_t>(
              ((corner.w + x) * problem_.bin.h + corner.h + y) * problem_.bin.d + corner.d + z));
    return result;
  }

  bool tryAll(unsigned left, const Cells& taken) const {
    if (left == 0) return true;
    const auto box = static_cast<std::size_t>(std::countr_zero(left));
    for (const Place& option : places_[box])
      if ((option.cells & taken).none() && tryAll(left & (left - 1), taken | option.cells)) return true;
    return false;
  }

  bool tryOrders(unsigned left) {
    if (left == 0) return true;
    for (unsigned rest = left; rest; rest &= rest - 1) {
      const auto box = static_cast<std::size_t>(std::countr_zero(rest));
      for (const Place& option : places_[box]) {
        const bool allowed = std::all_of(standing_.begin(), standing_.end(),
                                         [&](const Placed& other) { return follows(option.box, other); });
        if (!allowed) continue;
        standing_.push_back(option.box);
        const bool found = tryOrders(left & ~(1u << box));
        standing_.pop_back();
        if (found) return true;
      }
    }
    return false;
  }

  const Problem& problem_;
  std::vector<std::vector<Place>> places_;
  std::vector<Placed> standing_;
  std::array<std::array<char, 64>, 2> known_{};
};

int fewestFor(BruteForce& brute, unsigned left, bool robot) {
  if (left == 0) return 0;
  int fewest = 99;
  const unsigned first = left & (~left + 1), rest = left & ~first;
  for (unsigned others = rest;; others = (others - 1) & rest) {
    if (brute.fits(others | first, robot))
      fewest = std::min(fewest, 1 + fewestFor(brute, rest & ~others, robot));
    if (others == 0) return fewest;
  }
}

}  // namespace

Packed pack(const Problem& problem, int packingType, Limits limits) {
  const int n = static_cast<int>(problem.boxes.size());
  std::vector<int> w, h, d;
  for (const Size& box : problem.boxes) {
    w.push_back(box.w);
    h.push_back(box.h);
    d.push_back(box.d);
  }
  Packed packed;
  for (auto* values : {&packed.x, &packed.y, &packed.z, &packed.bno})
    values->assign(problem.boxes.size(), -7);
  const mek::ScopedDebugSink sink([&](std::string_view text) { packed.reports += text; });
  PackBoxes3D(n, problem.bin.w, problem.bin.h, problem.bin.d, w.data(), h.data(), d.data(), packed.x.data(),
              packed.y.data(), packed.z.data(), packed.bno.data(), &packed.lb, &packed.ub, limits.nodes,
              limits.iterations, limits.seconds, &packed.nodes, &packed.iterations, &packed.milliseconds,
              packingType);
  return packed;
}

std::string packingFault(const Problem& problem, const Packed& packed, int packingType) {
  if (packed.lb > packed.ub) return "the bound is above the result";
  std::vector<std::vector<Placed>> bins(static_cast<std::size_t>(std::max(packed.ub, 0)));
  for (std::size_t i = 0; i < problem.boxes.size(); ++i) {
    const Size &size = problem.boxes[i], &bin = problem.bin;
    const Size corner = {packed.x[i], packed.y[i], packed.z[i]};
    const std::string name = "box " + std::to_string(i + 1);
    if (packed.bno[i] < 1 || packed.bno[i] > packed.ub) return name + " is in no bin";
    if (corner.w < 0 || corner.h < 0 || corner.d < 0 || corner.w + size.w > bin.w ||
        corner.h + size.h > bin.h || corner.d + size.d > bin.d)
      return name + " sticks out";
    auto& others = bins[static_cast<std::size_t>(packed.bno[i] - 1)];
    for (const Placed& other : others)
      if (!apart({corner, size}, other)) return name + " overlaps another";
    others.push_back({corner, size});
  }
  for (const auto& bin : bins) {
    if (bin.empty()) return "a bin is empty";
    if (packingType == 1 && !hasRobotOrder(bin)) return "a bin has no robot order";
  }
  return "";
}

int fewestBins(const Problem& problem, int packingType) {
  Problem sorted = problem;
  std::sort(sorted.boxes.begin(), sorted.boxes.end(),
            [](const Size& a, const Size& b) { return a.w * a.h * a.d > b.w * b.h * b.d; });
  BruteForce brute(sorted);
  return fewestFor(brute, (1u << sorted.boxes.size()) - 1, packingType == 1);
}

Problem randomProblem(std::mt19937& random, int most) {
  const auto draw = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
  Problem problem;
  do {
    problem.bin = {draw(1, 6), draw(1, 6), draw(1, 6)};
  } while (problem.bin.w * problem.bin.h * problem.bin.d > 128);
  const int n = draw(1, most);
  // Half of the problems have boxes that nearly fill one bin, where fit and misfit are close.
  const bool tight = draw(0, 1) == 1;
  for (int i = 0; i < n; ++i) {
    const auto side = [&](int limit) {
      return tight ? draw((limit + 2) / 3, (2 * limit + 2) / 3) : draw(1, limit);
    };
    problem.boxes.push_back({side(problem.bin.w), side(problem.bin.h), side(problem.bin.d)});
  }
  return problem;
}

std::string describe(const Problem& problem) {
  std::string text = std::to_string(problem.bin.w) + "x" + std::to_string(problem.bin.h) + "x" +
                     std::to_string(problem.bin.d) + ":";
  for (const Size& box : problem.boxes)
    text += " " + std::to_string(box.w) + "x" + std::to_string(box.h) + "x" + std::to_string(box.d);
  return text;
}

Problem problemOf(const mek::PackInstance& made) {
  Problem problem{{made.W, made.H, made.D}, {}};
  for (std::size_t i = 0; i < made.w.size(); ++i) problem.boxes.push_back({made.w[i], made.h[i], made.d[i]});
  return problem;
}

mek::pack::AllInfo3D& load(const Problem& problem, int packingType) {
  mek::pack::AllInfo3D& a = mek::pack::resetPackState(static_cast<int>(problem.boxes.size()));
  a.W = mek::pack::toShort(problem.bin.w);
  a.H = mek::pack::toShort(problem.bin.h);
  a.D = mek::pack::toShort(problem.bin.d);
  a.BVOL = problem.bin.w * problem.bin.h * problem.bin.d;
  a.packtype = mek::pack::toShort(packingType);
  for (std::size_t i = 0; i < problem.boxes.size(); ++i) {
    mek::pack::Box3D& box = a.boxes[i];
    box.no = static_cast<std::int16_t>(i + 1);
    box.w = mek::pack::toShort(problem.boxes[i].w);
    box.h = mek::pack::toShort(problem.boxes[i].h);
    box.d = mek::pack::toShort(problem.boxes[i].d);
    box.vol = box.w * box.h * box.d;
  }
  return a;
}

Packed packedFrom(std::span<const mek::pack::Box3D> boxes, int bins) {
  Packed packed;
  packed.lb = packed.ub = bins;
  for (auto* values : {&packed.x, &packed.y, &packed.z, &packed.bno}) values->resize(boxes.size());
  for (const mek::pack::Box3D& box : boxes) {
    const auto i = static_cast<std::size_t>(box.no - 1);
    packed.x[i] = box.x;
    packed.y[i] = box.y;
    packed.z[i] = box.z;
    packed.bno[i] = box.bno;
  }
  return packed;
}

}  // namespace nesttest
