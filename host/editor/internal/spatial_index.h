#pragma once
// Where the entities of a block lie in the XY plane of the world, for asking which ones may meet a rectangle.
//
// The index is built when it is first asked and follows the drawing's changes: entities that changed since
// lie in a list beside the tree until the tree is built anew.
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "host/database/database.h"
#include "host/geometry/box.h"

namespace kved {

/// Boxes in a packed tree, sorted along a Hilbert curve (after the well-known bulk loading of R-trees).
class PackedTree {
 public:
  struct Box {
    float x0, y0, x1, y1;
    bool meets(const Box& o) const { return x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1; }
  };
  /// Rounded outwards, so that nothing falls out.
  static Box boxOf(const KvGeBox3d& box);

  void build(std::vector<Box> boxes);
  /// Numbers of the boxes that meet the given one, in no order.
  void query(const Box& box, std::vector<std::uint32_t>& found) const;
  std::size_t size() const { return count_; }

 private:
  static constexpr std::size_t kNodeSize = 16;
  std::vector<Box> boxes_;            // leaves, then the levels above them
  std::vector<std::uint32_t> items_;  // of a leaf: number of the box; of a node: its first child
  std::vector<std::size_t> levelEnds_;
  std::size_t count_ = 0;
};

class SpatialIndex : public KvDbChangeObserver {
 public:
  explicit SpatialIndex(KvDbDatabase& database, KvDbObjectId block);
  ~SpatialIndex() override;
  SpatialIndex(const SpatialIndex&) = delete;
  SpatialIndex& operator=(const SpatialIndex&) = delete;

  /// Entities of the block that aren't erased and may meet the rectangle, in the order in which they are
  /// drawn. Entities without extents (endless ones and the like) always may.
  std::vector<KvDbObjectId> query(const KvGeBox3d& box);
  /// All that aren't erased, in that order.
  std::vector<KvDbObjectId> all();
  /// The last of them that `accept` takes; null when there is none.
  KvDbObjectId last(const std::function<bool(KvDbObjectId)>& accept);

  void objectChanges(KvDbStub& stub) override;

 private:
  struct Item {
    KvDbStub* stub;
    std::int32_t loose = -1;   // its place beside the tree, when its box there isn't good any more
    bool isComposite = false;  // what it shows comes from elsewhere: a block, a style
  };
  struct Loose {
    std::uint32_t item;
    bool isEndless;
    PackedTree::Box box;
  };
  void build();
  void takeChanges();
  /// Puts an item beside the tree, with its box as it is now.
  void loosen(std::uint32_t number);
  bool boxOf(const Item& item, KvGeBox3d& box) const;

  KvDbDatabase& database_;
  KvDbObjectId block_;
  bool isBuilt_ = false;
  bool haveCompositesChanged_ = false;
  std::vector<Item> items_;  // in drawing order
  std::unordered_map<const KvDbStub*, std::uint32_t> byStub_;
  std::vector<std::uint32_t> treeItems_, endless_;
  std::vector<Loose> loose_;
  std::vector<KvDbStub*> changed_;
  PackedTree tree_;
};

/// The index of a block of a drawing; it lives as long as the drawing.
SpatialIndex& indexOf(KvDbDatabase& database, KvDbObjectId block);

}  // namespace kved
