#pragma once
// What of the current space lies under a pick box, in a window or polygon, across a fence, as it is seen in
// the current view. Tests are made on the strokes and areas that entities draw; circles and ellipses exactly.
#include <functional>
#include <optional>
#include <vector>

#include "host/database/database.h"
#include "host/editor/views.h"
#include "host/geometry/box.h"

namespace kved {

/// Where to look, in view coordinates.
struct PickRegion {
  enum class Kind { Crossing, Window, Fence };
  Kind kind = Kind::Crossing;
  std::vector<KvGePoint2d> points;  ///< a polygon, or of a fence its corners

  static PickRegion rectangle(Kind kind, const KvGePoint2d& a, const KvGePoint2d& b);
  KvGeBox3d bounds() const;
};

struct PickHit {
  KvDbObjectId id;                 ///< the entity of the space
  double rank = 0;                 ///< distance from the middle of the pick box; areas come last
  long marker = 0;                 ///< 0: none
  std::vector<KvDbObjectId> path;  ///< from the entity of the space down to the one that was hit
  KvGeMatrix3d transform;          ///< from the innermost one to the world
};

class Picker {
 public:
  using Accept = std::function<bool(KvDbObjectId)>;

  /// The current space and view of a drawing. Empty `accept` takes all.
  explicit Picker(KvDbDatabase& database);

  KvGePoint2d toView(const KvGePoint3d& world) const;
  /// Half the side of the pick box, in drawing units.
  double halfBox() const;
  const KvEdView& view() const { return view_; }

  /// The nearest under the pick box; of several equally near ones the one drawn last.
  std::optional<PickHit> nearest(const KvGePoint3d& world, const Accept& accept = {}) const;
  /// All under the pick box, the nearest first.
  std::vector<PickHit> allAt(const KvGePoint3d& world, const Accept& accept = {}) const;
  /// In drawing order.
  std::vector<PickHit> in(const PickRegion& region, const Accept& accept = {}) const;

 private:
  std::vector<KvDbObjectId> candidates(const PickRegion& region) const;

  KvDbDatabase& database_;
  KvEdView view_;
  KvGeMatrix3d worldToView_, viewToWorld_;
  bool isPlan_;
};

}  // namespace kved
