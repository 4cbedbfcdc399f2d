#include "host/editor/internal/spatial_index.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/database/block.h"

namespace kved {

namespace {

constexpr std::size_t kMostLoose = 512;

/// Types whose extents follow from their own state alone.
constexpr const wchar_t* kPlainTypes[] = {L"LINE",       L"CIRCLE",  L"ARC",    L"POINT",
                                          L"LWPOLYLINE", L"ELLIPSE", L"SPLINE", L"SOLID",
                                          L"TRACE",      L"3DFACE",  L"HATCH"};

float below(double v) {
  const auto f = static_cast<float>(v);
  return static_cast<double>(f) > v ? std::nextafterf(f, -INFINITY) : f;
}
float above(double v) {
  const auto f = static_cast<float>(v);
  return static_cast<double>(f) < v ? std::nextafterf(f, INFINITY) : f;
}

/// Distance along the Hilbert curve of order 16 through the unit square's 65536 by 65536 cells.
std::uint32_t hilbert(std::uint32_t x, std::uint32_t y) {
  std::uint32_t d = 0;
  for (std::uint32_t s = 1u << 15; s > 0; s >>= 1) {
    const bool rx = (x & s) != 0, ry = (y & s) != 0;
    d += s * s * ((3u * rx) ^ static_cast<std::uint32_t>(ry));
    if (!ry) {
      if (rx) {
        x = 65535u - x;
        y = 65535u - y;
      }
      std::swap(x, y);
    }
  }
  return d;
}

/// Whether what references and texts show may depend on the object: entities of blocks, blocks, styles.
bool changesOthers(const KvDbObject& object) {
  return object.isKindOf(KvDbEntity::desc()) || object.isKindOf(KvDbBlockTableRecord::desc()) ||
         object.isKindOf(KvDbTextStyleTableRecord::desc()) ||
         object.isKindOf(KvDbDimStyleTableRecord::desc());
}

PackedTree::Box joined(const PackedTree::Box& a, const PackedTree::Box& b) {
  return {std::min(a.x0, b.x0), std::min(a.y0, b.y0), std::max(a.x1, b.x1), std::max(a.y1, b.y1)};
}

}  // namespace

PackedTree::Box PackedTree::boxOf(const KvGeBox3d& box) {
  return {below(box.low.x), below(box.low.y), above(box.high.x), above(box.high.y)};
}

void PackedTree::build(std::vector<Box> boxes) {
  count_ = boxes.size();
  boxes_.clear();
  items_.clear();
  levelEnds_.clear();
  if (count_ == 0) return;

  Box total = boxes.front();
  for (const Box& box : boxes) total = joined(total, box);
  const double width = std::max(1e-30, static_cast<double>(total.x1) - total.x0);
  const double height = std::max(1e-30, static_cast<double>(total.y1) - total.y0);
  std::vector<std::pair<std::uint32_t, std::uint32_t>> order(count_);
  for (std::size_t i = 0; i < count_; ++i) {
    const double cx = (static_cast<double>(boxes[i].x0) + boxes[i].x1) / 2 - total.x0;
    const double cy = (static_cast<double>(boxes[i].y0) + boxes[i].y1) / 2 - total.y0;
    const auto cell = [](double at, double whole) {
      return static_cast<std::uint32_t>(std::clamp(at / whole * 65535.0, 0.0, 65535.0));
    };
    order[i] = {hilbert(cell(cx, width), cell(cy, height)), static_cast<std::uint32_t>(i)};
  }
  std::sort(order.begin(), order.end());
  for (const auto& [key, item] : order) {
    boxes_.push_back(boxes[item]);
    items_.push_back(item);
  }
  levelEnds_.push_back(boxes_.size());
  std::size_t begin = 0;
  while (boxes_.size() - begin > 1) {
    const std::size_t end = boxes_.size();
    for (std::size_t at = begin; at < end; at += kNodeSize) {
      Box node = boxes_[at];
      for (std::size_t i = at; i < std::min(at + kNodeSize, end); ++i) node = joined(node, boxes_[i]);
      boxes_.push_back(node);
      items_.push_back(static_cast<std::uint32_t>(at));
    }
    begin = end;
    levelEnds_.push_back(boxes_.size());
  }
}

void PackedTree::query(const Box& box, std::vector<std::uint32_t>& found) const {
  if (count_ == 0) return;
  struct Node {
    std::size_t at, level;
  };
  std::vector<Node> waiting{{boxes_.size() - 1, levelEnds_.size() - 1}};
  while (!waiting.empty()) {
    const Node node = waiting.back();
    waiting.pop_back();
    if (!boxes_[node.at].meets(box)) continue;
    if (node.level == 0) {
      found.push_back(items_[node.at]);
      continue;
    }
    const std::size_t first = items_[node.at];
    const std::size_t end = std::min(first + kNodeSize, levelEnds_[node.level - 1]);
    for (std::size_t child = first; child < end; ++child) waiting.push_back({child, node.level - 1});
  }
}

SpatialIndex::SpatialIndex(KvDbDatabase& database, KvDbObjectId block) : database_(database), block_(block) {
  database_.addChangeObserver(this);
}

SpatialIndex::~SpatialIndex() {
  database_.removeChangeObserver(this);
}

void SpatialIndex::objectChanges(KvDbStub& stub) {
  if (!isBuilt_) return;
  if (changed_.empty() || changed_.back() != &stub) changed_.push_back(&stub);
  // So many changes at once are dearer to follow than to begin anew.
  if (changed_.size() > kMostLoose + items_.size() / 8) isBuilt_ = false;
}

bool SpatialIndex::boxOf(const Item& item, KvGeBox3d& box) const {
  const auto* entity = KvDbEntity::cast(item.stub->object);
  KvDbExtents extents;
  if (!entity || entity->getGeomExtents(extents) != Kvad::eOk || extents.isEmpty()) return false;
  box = {extents.minPoint(), extents.maxPoint()};
  return std::isfinite(box.low.x) && std::isfinite(box.low.y) && std::isfinite(box.high.x) &&
         std::isfinite(box.high.y);
}

void SpatialIndex::build() {
  items_.clear();
  byStub_.clear();
  treeItems_.clear();
  endless_.clear();
  loose_.clear();
  changed_.clear();
  haveCompositesChanged_ = false;
  isBuilt_ = true;
  KvDbBlockTableRecord* record = nullptr;
  if (kvdbOpenObject(record, block_) != Kvad::eOk) return;
  const KvDbObjectIdArray ids = record->entities(true);
  record->close();
  std::vector<PackedTree::Box> boxes;
  for (const KvDbObjectId id : ids) {
    if (id.isNull() || !id.stub()->object) continue;
    Item item{id.stub()};
    const std::wstring_view type = item.stub->object->fileTypeView();
    item.isComposite = std::none_of(std::begin(kPlainTypes), std::end(kPlainTypes),
                                    [&](const wchar_t* plain) { return type == plain; });
    const auto number = static_cast<std::uint32_t>(items_.size());
    byStub_.emplace(item.stub, number);
    items_.push_back(item);
    KvGeBox3d box;
    if (boxOf(item, box)) {
      boxes.push_back(PackedTree::boxOf(box));
      treeItems_.push_back(number);
    } else {
      endless_.push_back(number);
    }
  }
  tree_.build(std::move(boxes));
}

void SpatialIndex::loosen(std::uint32_t number) {
  Item& item = items_[number];
  if (item.loose < 0) {
    item.loose = static_cast<std::int32_t>(loose_.size());
    loose_.push_back({number, true, {}});
  }
  Loose& loose = loose_[static_cast<std::size_t>(item.loose)];
  KvGeBox3d box;
  loose.isEndless = !boxOf(item, box);
  if (!loose.isEndless) loose.box = PackedTree::boxOf(box);
}

void SpatialIndex::takeChanges() {
  if (isBuilt_ && loose_.size() > kMostLoose + items_.size() / 32) isBuilt_ = false;
  if (!isBuilt_) {
    build();
    return;
  }
  std::vector<KvDbStub*> changed;
  changed.swap(changed_);
  for (KvDbStub* stub : changed) {
    if (!stub->object) continue;
    auto found = byStub_.find(stub);
    if (found != byStub_.end()) {
      loosen(found->second);
      continue;
    }
    const KvDbObjectId owner = stub->object->ownerId();
    if (owner == block_ && KvDbEntity::cast(stub->object)) {
      byStub_.emplace(stub, static_cast<std::uint32_t>(items_.size()));
      items_.push_back({stub, -1, true});
      loosen(static_cast<std::uint32_t>(items_.size() - 1));
      continue;
    }
    found = owner.isNull() ? byStub_.end() : byStub_.find(owner.stub());
    if (found != byStub_.end())
      loosen(found->second);  // a vertex, an attribute
    else if (changesOthers(*stub->object))
      haveCompositesChanged_ = true;
  }
  if (!haveCompositesChanged_) return;
  haveCompositesChanged_ = false;
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (items_[i].isComposite) loosen(static_cast<std::uint32_t>(i));
}

std::vector<KvDbObjectId> SpatialIndex::query(const KvGeBox3d& box) {
  takeChanges();
  const PackedTree::Box wanted = PackedTree::boxOf(box);
  std::vector<std::uint32_t> found;
  tree_.query(wanted, found);
  for (std::uint32_t& number : found) number = treeItems_[number];
  std::erase_if(found, [&](std::uint32_t number) { return items_[number].loose >= 0; });
  for (const Loose& loose : loose_)
    if (loose.isEndless || loose.box.meets(wanted)) found.push_back(loose.item);
  for (const std::uint32_t number : endless_)
    if (items_[number].loose < 0) found.push_back(number);
  std::sort(found.begin(), found.end());
  std::vector<KvDbObjectId> ids;
  ids.reserve(found.size());
  for (const std::uint32_t number : found)
    if (!items_[number].stub->isErased) ids.emplace_back(items_[number].stub);
  return ids;
}

std::vector<KvDbObjectId> SpatialIndex::all() {
  takeChanges();
  std::vector<KvDbObjectId> ids;
  ids.reserve(items_.size());
  for (const Item& item : items_)
    if (!item.stub->isErased) ids.emplace_back(item.stub);
  return ids;
}

KvDbObjectId SpatialIndex::last(const std::function<bool(KvDbObjectId)>& accept) {
  takeChanges();
  for (auto item = items_.rbegin(); item != items_.rend(); ++item)
    if (!item->stub->isErased && accept(KvDbObjectId(item->stub))) return KvDbObjectId(item->stub);
  return {};
}

namespace {

/// The indices of one drawing, kept with it.
class Indices : public KvDbAttachment {
 public:
  std::unordered_map<KvDbObjectId, std::unique_ptr<SpatialIndex>> byBlock;
};

}  // namespace

SpatialIndex& indexOf(KvDbDatabase& database, KvDbObjectId block) {
  auto& indices = database.attachment<Indices>();
  auto& index = indices.byBlock[block];
  if (!index) index = std::make_unique<SpatialIndex>(database, block);
  return *index;
}

}  // namespace kved
