#pragma once
// Axis-parallel boxes.
#include <algorithm>
#include <limits>

#include "host/geometry/point.h"

/// An axis-parallel box; empty until something is added.
struct KvGeBox3d {
  static constexpr double kFar = std::numeric_limits<double>::infinity();
  KvGePoint3d low{kFar, kFar, kFar}, high{-kFar, -kFar, -kFar};

  bool isEmpty() const { return low.x > high.x; }
  void add(const KvGePoint3d& p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  void add(const KvGeBox3d& other) {
    if (other.isEmpty()) return;
    add(other.low);
    add(other.high);
  }
  KvGeBox3d grown(double by) const {
    return {{low.x - by, low.y - by, low.z - by}, {high.x + by, high.y + by, high.z + by}};
  }
  bool contains(const KvGePoint3d& p) const {
    return p.x >= low.x && p.x <= high.x && p.y >= low.y && p.y <= high.y && p.z >= low.z && p.z <= high.z;
  }
  /// Touching counts.
  bool meetsXY(const KvGeBox3d& o) const {
    return low.x <= o.high.x && o.low.x <= high.x && low.y <= o.high.y && o.low.y <= high.y;
  }
  bool meets(const KvGeBox3d& o) const { return meetsXY(o) && low.z <= o.high.z && o.low.z <= high.z; }
};
