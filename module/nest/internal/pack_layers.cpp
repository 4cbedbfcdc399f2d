#include "module/nest/internal/pack_layers.h"

#include <algorithm>
#include <array>

#include "module/nest/internal/pack_bounds.h"
#include "module/nest/internal/pack_check.h"
#include "module/nest/internal/pack_robot.h"

namespace mek::pack {
namespace {

constexpr int kAssignmentCalls = 1000000;
constexpr int kFillNodeLimit = 5000;

/// Descending by one side, ties by descending number.
template <std::int16_t Box3D::*Side>
bool descending(const Box3D& a, const Box3D& b) {
  return a.*Side != b.*Side ? a.*Side > b.*Side : a.no > b.no;
}

struct Shelf {
  int x, width, height;
};

/// Places what fits of `prefix` on the face, in shelves side by side along x; sets k and the corners.
void fillShelves(const AllInfo3D& a, std::span<Box3D> prefix) {
  std::array<Shelf, kTableSide> shelves;
  std::sort(prefix.begin(), prefix.end(), descending<&Box3D::h>);
  int opened = 0, left = a.W, x = 0;
  const auto open = [&](int width) {
    width = std::min(width, left);
    shelves[at(opened++)] = {x, width, 0};
    x += width;
    left -= width;
  };
  const auto place = [&](Box3D& box) {
    for (int i = opened - 1; i >= 0; --i) {
      Shelf& shelf = shelves[at(i)];
      if (box.w > shelf.width || shelf.height + box.h > a.H) continue;
      box.x = toShort(shelf.x);
      box.y = toShort(shelf.height);
      box.z = 0;
      box.k = 1;
      shelf.height += box.h;
      return true;
    }
    return false;
  };
  open(prefix.front().w);
  for (Box3D& box : prefix) {
    if (place(box) || left == 0 || opened == kTableSide) continue;
    open(box.w);
    place(box);
  }
}

/// Takes one layer from the front of `rest`; the boxes placed are moved to the front. Gives their count.
int takeLayer(const AllInfo3D& a, std::span<Box3D> rest, Layer3D& layer) {
  std::sort(rest.begin(), rest.end(), descending<&Box3D::d>);
  const std::int64_t enough = 2 * static_cast<std::int64_t>(a.W) * a.H;
  std::int64_t face = 0;
  std::size_t length = 0;
  while (length < rest.size() && face <= enough) {
    face += static_cast<std::int64_t>(rest[length].w) * rest[length].h;
    ++length;
  }
  const std::span<Box3D> prefix = rest.first(length);
  fillShelves(a, prefix);
  const auto placedEnd =
      std::partition(prefix.begin(), prefix.end(), [](const Box3D& box) { return box.k == 1; });
  layer.d = 0;
  for (auto box = prefix.begin(); box != placedEnd; ++box) layer.d = std::max<std::int32_t>(layer.d, box->d);
  return static_cast<int>(placedEnd - prefix.begin());
}

/// Assigns layers to bins so that the depths in a bin add up to at most D: every way, within a number of
/// calls.
class LayerAssignment {
 public:
  LayerAssignment(std::span<Layer3D> layers, int depth) : layers_(layers), depth_(depth) {
    std::sort(layers_.begin(), layers_.end(),
              [](const Layer3D& a, const Layer3D& b) { return a.d != b.d ? a.d > b.d : a.no > b.no; });
    std::int64_t sum = 0;
    for (const Layer3D& layer : layers_) sum += layer.d;
    least_ = static_cast<int>((sum + depth - 1) / depth);
    best_ = count(layers_.size()) + 1;
  }

  /// The fewest bins found; each layer's `bno` and `z` are set.
  int run() {
    assign(0, 0);
    used_.fill(0);
    for (Layer3D& layer : layers_) {
      layer.bno = layer.best;
      layer.z = used_[at(layer.bno)];
      used_[at(layer.bno)] += layer.d;
    }
    return best_;
  }

 private:
  void assign(std::size_t index, int bins) {
    if (calls_ >= kAssignmentCalls || bins >= best_ || best_ == least_) return;
    ++calls_;
    if (index == layers_.size()) {
      best_ = bins;
      for (Layer3D& layer : layers_) layer.best = layer.bno;
      return;
    }
    Layer3D& layer = layers_[index];
    for (int bin = 1; bin <= bins + 1; ++bin) {
      if (bin <= bins && used_[at(bin)] + layer.d > depth_) continue;
      used_[at(bin)] += layer.d;
      layer.bno = bin;
      assign(index + 1, std::max(bins, bin));
      used_[at(bin)] -= layer.d;
    }
  }

  std::span<Layer3D> layers_;
  int depth_, least_, best_;
  int calls_ = 0;
  std::array<int, kTableSide + 1> used_{};
};

void packLayersUpright(AllInfo3D& a) {
  for (Box3D& box : a.boxes) box.x = box.y = box.z = box.bno = box.k = 0;
  const std::span<Layer3D> table = layerTable();
  std::array<std::int16_t, kTableSide> layerOf;
  int layers = 0;
  for (int done = 0; done < a.n;) {
    Layer3D& layer = table[at(layers)];
    layer = Layer3D{layers + 1, 0, 0, 0, 0};
    const int placed = takeLayer(a, a.boxes.subspan(at(done)), layer);
    std::fill_n(layerOf.begin() + done, placed, toShort(layers + 1));
    done += placed;
    ++layers;
  }
  LayerAssignment assignment(table.first(at(layers)), a.D);
  const int bins = assignment.run();
  if (bins >= a.z) return;

  std::array<const Layer3D*, kTableSide + 1> byNumber{};
  for (const Layer3D& layer : table.first(at(layers))) byNumber[at(layer.no)] = &layer;
  for (std::size_t i = 0; i < a.boxes.size(); ++i) {
    const Layer3D& layer = *byNumber[at(layerOf[i])];
    a.incumbent[i] = a.boxes[i];
    a.incumbent[i].z = toShort(layer.z);
    a.incumbent[i].bno = toShort(layer.bno);
  }
  storeSolution(a, a.incumbent, bins);
}

int fillLimitFor(int remaining) {
  return remaining < 10 ? 4 : remaining < 15 ? 3 : 2;
}

void packBinByBinUpright(AllInfo3D& a) {
  std::copy(a.boxes.begin(), a.boxes.end(), a.incumbent.begin());
  for (Box3D& box : a.incumbent) box.x = box.y = box.z = box.bno = box.k = 0;
  const std::span<Box3D> scratch = scratchBoxes();
  int bins = 0;
  for (int remaining = a.n; remaining > 0;) {
    if (++bins >= a.z) return;
    int size = 0;
    for (Box3D& box : a.incumbent) {
      if (box.bno != 0) continue;
      scratch[at(size)] = box;
      scratch[at(size++)].ref = &box;
    }
    a.fillLimit = fillLimitFor(remaining);
    a.fillNodeLimit = kFillNodeLimit;
    remaining -= fillBin(a, scratch.first(at(size)), bins);
  }
  storeSolution(a, a.incumbent, bins);
}

template <class Heuristic>
void overTurns(AllInfo3D& a, Heuristic heuristic) {
  for (int turn = 0; turn < 3; ++turn) {
    heuristic(a);
    turnBin(a);
    turnBoxes(a.boxes);
    turnBoxes(a.best);
  }
}

}  // namespace

void packLayers(AllInfo3D& a) {
  overTurns(a, packLayersUpright);
}
void packBinByBin(AllInfo3D& a) {
  overTurns(a, packBinByBinUpright);
}

}  // namespace mek::pack
