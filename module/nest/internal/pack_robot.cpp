#include "module/nest/internal/pack_robot.h"

#include <algorithm>
#include <array>

namespace mek::pack {
namespace {

struct Point2D {
  std::int16_t x, y;
  friend bool operator==(const Point2D&, const Point2D&) = default;
};

/// The corners of the staircase that the boxes reaching beyond `level` build in the plane, by ascending x.
int staircase(std::span<const Box3D> boxes, std::span<const std::int16_t> order, int level,
              Point2D* corners) {
  int size = 0, x = 0;
  for (const std::int16_t index : order) {
    const Box3D& box = boxes[at(index)];
    if (box.z + box.d <= level || box.x + box.w <= x) continue;
    corners[size++] = {toShort(x), toShort(box.y + box.h)};
    x = box.x + box.w;
  }
  corners[size++] = {toShort(x), 0};
  return size;
}

/// Drops the corners beside which a box of the size `least` has no place; gives the new count.
int dropTight(const AllInfo3D& a, const Corner3D& least, Point2D* corners, int size) {
  const auto tight = [&](const Point2D& corner) {
    return corner.x + least.x > a.W || corner.y + least.y > a.H;
  };
  return static_cast<int>(std::remove_if(corners, corners + size, tight) - corners);
}

std::int64_t freeFace(const AllInfo3D& a, const Point2D* corners, int size) {
  std::int64_t face = 0;
  for (int i = 0; i < size; ++i) {
    const int end = i + 1 < size ? corners[i + 1].x : a.W;
    face += static_cast<std::int64_t>(end - corners[i].x) * (a.H - corners[i].y);
  }
  return face;
}

/// Distinct depths at which a slice begins, from 0, ascending.
int sliceLevels(std::span<const Box3D> boxes, std::span<const std::int16_t> order, int D,
                std::int16_t* levels) {
  int size = 0;
  levels[size++] = 0;
  for (const std::int16_t index : order) {
    const int level = boxes[at(index)].z + boxes[at(index)].d;
    if (level < D) levels[size++] = toShort(level);
  }
  std::sort(levels + 1, levels + size);
  return static_cast<int>(std::unique(levels, levels + size) - levels);
}

/// True when a box standing at `from` of the given size takes the place `point` or cuts it off.
bool covers(const Box3D& size, const Corner3D& from, const Corner3D& point) {
  return point.x < from.x + size.w && point.y < from.y + size.h && point.z < from.z + size.d;
}

class RobotSearch {
 public:
  /// Looks for a filling of more than `volume`.
  RobotSearch(AllInfo3D& a, std::span<Box3D> boxes, std::int64_t volume) : a_(a), boxes_(boxes) {
    a_.fillNodes = 0;
    a_.fillBest = volume;
    for (Box3D& box : boxes_) {
      box.x = box.y = box.z = box.k = 0;
      freeVolume_ += box.vol;
    }
  }

  void run() { descend(0, 0); }
  /// Boxes of the best filling found; their corners are in best().
  bool found() const { return found_; }
  bool inBest(int index) const { return bestPlaced_[at(index)]; }
  Corner3D best(int index) const { return best_[at(index)]; }

 private:
  /// One level; the steps in [sleepFirst, sleepLast) are known to lead nowhere. True ends the search.
  bool descend(int sleepFirst, int sleepLast);
  bool tryCorner(const Corner3D& corner, int sleepFirst, int& sleepLast);
  bool asleep(int box, const Corner3D& corner, int first, int last) const;
  int wake(int box, const Corner3D& corner, int first, int last);
  bool sameSizeBefore(int box) const;
  void keepBest();
  void place(int box, const Corner3D& corner);
  void takeOut(int box);
  Corner3D leastFree() const;
  std::span<const std::int16_t> order() const { return std::span(order_).first(at(placed_)); }

  AllInfo3D& a_;
  std::span<Box3D> boxes_;
  std::array<std::int16_t, kTableSide> order_;
  int placed_ = 0;
  std::int64_t placedVolume_ = 0, freeVolume_ = 0;
  int cornerTop_ = 0;
  bool found_ = false;
  std::array<bool, kTableSide> bestPlaced_{};
  std::array<Corner3D, kTableSide> best_;
};

Corner3D RobotSearch::leastFree() const {
  Corner3D least{kMaxSide, kMaxSide, kMaxSide};
  for (const Box3D& box : boxes_) {
    if (box.k) continue;
    least.x = std::min(least.x, box.w);
    least.y = std::min(least.y, box.h);
    least.z = std::min(least.z, box.d);
  }
  return least;
}

void RobotSearch::keepBest() {
  a_.fillBest = placedVolume_;
  found_ = true;
  for (std::size_t i = 0; i < boxes_.size(); ++i) {
    bestPlaced_[i] = boxes_[i].k == 1;
    best_[i] = {boxes_[i].x, boxes_[i].y, boxes_[i].z};
  }
}

void RobotSearch::place(int index, const Corner3D& corner) {
  Box3D& box = boxes_[at(index)];
  box.x = corner.x;
  box.y = corner.y;
  box.z = corner.z;
  box.k = 1;
  const auto before = [&](std::int16_t left, std::int16_t right) {
    const Box3D &a = boxes_[at(left)], &b = boxes_[at(right)];
    return a.y + a.h != b.y + b.h ? a.y + a.h > b.y + b.h : a.x + a.w > b.x + b.w;
  };
  const auto end = order_.begin() + placed_;
  const auto where = std::upper_bound(order_.begin(), end, toShort(index), before);
  std::copy_backward(where, end, end + 1);
  *where = toShort(index);
  ++placed_;
  placedVolume_ += box.vol;
  freeVolume_ -= box.vol;
}

void RobotSearch::takeOut(int index) {
  Box3D& box = boxes_[at(index)];
  box.k = 0;
  const auto end = order_.begin() + placed_;
  const auto where = std::find(order_.begin(), end, toShort(index));
  std::copy(where + 1, end, where);
  --placed_;
  placedVolume_ -= box.vol;
  freeVolume_ += box.vol;
}

bool RobotSearch::asleep(int box, const Corner3D& corner, int first, int last) const {
  const Step3D* steps = robotTables().steps;
  return std::any_of(steps + first, steps + last, [&](const Step3D& step) {
    return step.box == box && step.at.x == corner.x && step.at.y == corner.y && step.at.z == corner.z;
  });
}

/// Copies to `last` on the sleeping steps that commute with placing `box`: either order gives the same
/// packing, and that one has been searched. Gives the new end.
int RobotSearch::wake(int box, const Corner3D& corner, int first, int last) {
  Step3D* steps = robotTables().steps;
  int end = last;
  for (int i = first; i < last && end < kStepCapacity; ++i) {
    const Step3D step = steps[i];
    if (step.box == box || covers(boxes_[at(box)], corner, step.at) ||
        covers(boxes_[at(step.box)], step.at, corner))
      continue;
    steps[end++] = step;
  }
  return end;
}

/// A free box of the same size earlier in the list makes this one's tries mirror images of its own.
bool RobotSearch::sameSizeBefore(int index) const {
  const Box3D& box = boxes_[at(index)];
  return std::any_of(boxes_.begin(), boxes_.begin() + index, [&](const Box3D& other) {
    return !other.k && other.w == box.w && other.h == box.h && other.d == box.d;
  });
}

bool RobotSearch::tryCorner(const Corner3D& corner, int sleepFirst, int& sleepLast) {
  int tried = 0;
  for (int i = 0; i < count(boxes_.size()); ++i) {
    const Box3D& box = boxes_[at(i)];
    if (box.k || corner.x + box.w > a_.W || corner.y + box.h > a_.H || corner.z + box.d > a_.D) continue;
    const bool limited = a_.fillLimit != 0;
    if (limited && tried++ == a_.fillLimit) break;
    if (!limited && (sameSizeBefore(i) || asleep(i, corner, sleepFirst, sleepLast))) continue;
    const int sleepEnd = limited ? sleepLast : wake(i, corner, sleepFirst, sleepLast);
    place(i, corner);
    const bool over = descend(sleepLast, sleepEnd);
    takeOut(i);
    if (over) return true;
    if (!limited && sleepLast < kStepCapacity) robotTables().steps[sleepLast++] = {toShort(i), corner};
  }
  return false;
}

bool RobotSearch::descend(int sleepFirst, int sleepLast) {
  ++a_.fillNodes;
  countIteration(a_);
  if (a_.stopped) return true;
  if (placedVolume_ > a_.fillBest) {
    keepBest();
    if (placed_ == count(boxes_.size())) return true;
  }
  if (a_.fillNodeLimit != 0 && a_.fillNodes >= a_.fillNodeLimit) return true;

  std::int64_t room = 0;
  const std::span<Corner3D> rest = std::span(robotTables().corners).subspan(at(cornerTop_));
  const int corners = cornerPoints(a_, boxes_, order(), leastFree(), rest, room);
  if (corners < 0) {
    report("stack filled\n");
    a_.stopped = true;
    return true;
  }
  if (placedVolume_ + std::min(room, freeVolume_) <= a_.fillBest) return false;
  cornerTop_ += corners;
  bool over = false;
  for (int i = 0; i < corners && !over; ++i) over = tryCorner(rest[at(i)], sleepFirst, sleepLast);
  cornerTop_ -= corners;
  return over;
}

}  // namespace

int cornerPoints(const AllInfo3D& a, std::span<const Box3D> boxes, std::span<const std::int16_t> order,
                 const Corner3D& least, std::span<Corner3D> corners, std::int64_t& room) {
  std::array<std::int16_t, kTableSide + 1> levels;
  std::array<Point2D, kTableSide + 1> first, second;
  Point2D *now = first.data(), *earlier = second.data();
  int earlierSize = 0, size = 0;
  const int levelCount = sliceLevels(boxes, order, a.D, levels.data());
  room = 0;
  for (int i = 0; i < levelCount; ++i) {
    const int level = levels[at(i)], next = i + 1 < levelCount ? levels[at(i + 1)] : a.D;
    const int nowSize = dropTight(a, least, now, staircase(boxes, order, level, now));
    room += freeFace(a, now, nowSize) * (next - level);
    if (level + least.z <= a.D) {
      for (int j = 0, k = 0; j < nowSize; ++j) {
        while (k < earlierSize && earlier[k].x < now[j].x) ++k;
        if (k < earlierSize && earlier[k] == now[j]) continue;
        if (size == count(corners.size())) return -1;
        corners[at(size++)] = {now[j].x, now[j].y, toShort(level)};
      }
    }
    std::swap(now, earlier);
    earlierSize = nowSize;
  }
  return size;
}

Answer robotTest(AllInfo3D& a, std::span<Box3D> boxes, int nodeLimit) {
  std::int64_t volume = 0;
  for (const Box3D& box : boxes) volume += box.vol;
  a.fillLimit = 0;
  a.fillNodeLimit = nodeLimit;
  RobotSearch search(a, boxes, volume - 1);
  search.run();
  const bool cut = a.stopped || (nodeLimit != 0 && a.fillNodes >= nodeLimit);
  if (!search.found()) return cut ? Answer::Cut : Answer::No;
  for (int i = 0; i < count(boxes.size()); ++i) {
    const Corner3D corner = search.best(i);
    boxes[at(i)].x = corner.x;
    boxes[at(i)].y = corner.y;
    boxes[at(i)].z = corner.z;
  }
  return Answer::Yes;
}

int fillBin(AllInfo3D& a, std::span<Box3D> boxes, int bin) {
  RobotSearch search(a, boxes, 0);
  search.run();
  int placed = 0;
  for (int i = 0; i < count(boxes.size()); ++i) {
    if (!search.inBest(i)) continue;
    Box3D& box = *boxes[at(i)].ref;
    const Corner3D corner = search.best(i);
    box.x = corner.x;
    box.y = corner.y;
    box.z = corner.z;
    box.bno = toShort(bin);
    ++placed;
  }
  return placed;
}

}  // namespace mek::pack
