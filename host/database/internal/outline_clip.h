#pragma once
// Cutting strokes and filled areas at closed outlines in the XY plane.
#include <vector>

#include "host/geometry/box.h"
#include "host/geometry/point.h"

namespace kvdb {

/// One closed outline; what lies inside (or, inverted, outside) stays. Heights are kept, not looked at.
class OutlineClip {
 public:
  /// With fewer than three points nothing lies inside.
  OutlineClip(std::vector<KvGePoint2d> points, bool isInverted);

  const std::vector<KvGePoint2d>& points() const { return points_; }
  bool isInverted() const { return isInverted_; }
  bool keeps(KvGePoint2d point) const { return contains(point) != isInverted_; }
  /// The parts of a polyline that stay, each handed to `emit(points, count)`.
  template <class Emit>
  void clipStroke(const KvGePoint3d* points, int count, Emit emit) const {
    std::vector<KvGePoint3d> kept;
    std::vector<int> starts;
    cut(points, count, kept, starts);
    starts.push_back(static_cast<int>(kept.size()));
    for (std::size_t i = 0; i + 1 < starts.size(); ++i)
      if (starts[i + 1] > starts[i]) emit(kept.data() + starts[i], starts[i + 1] - starts[i]);
  }
  /// The part of an even-odd area that stays, as another even-odd area, in place.
  void clipArea(std::vector<KvGePoint3d>& points, std::vector<int>& counts) const;

 private:
  bool contains(KvGePoint2d point) const;
  void cut(const KvGePoint3d* points, int count, std::vector<KvGePoint3d>& kept,
           std::vector<int>& starts) const;
  void triangulate();

  std::vector<KvGePoint2d> points_;
  KvGeBox3d box_;
  bool isInverted_;
  std::vector<std::vector<KvGePoint2d>> convexParts_;  // together they make up the inside
};

}  // namespace kvdb
