#pragma once
// Cutting many curves at one closed outline: the outline is prepared once, each curve is then told inside
// from outside.
#include "host/geometry/region.h"

/// A stretch of a curve between two of its parameters.
struct KvGeParamRange {
  double from = 0, to = 0;
  friend bool operator==(const KvGeParamRange&, const KvGeParamRange&) = default;
};

/// Closed outlines in the world's XY plane, ready for cutting. Heights are left out of account: the outline
/// stands as a wall. A grid over the outline knows for every cell whether it lies inside, outside, or holds
/// edges. Copies share it; it is never changed.
class KvGeClipper {
 public:
  /// Outlines by the even-odd rule: a loop in a loop is a hole. An edge may be a line, an arc, or any other
  /// span of a curve. Null for curves that aren't closed or have no extent.
  static std::unique_ptr<KvGeClipper> create(const std::vector<const KvGeCurve3d*>& outlines,
                                             const KvGeTol& tol = KvGeContext::gTol);
  ~KvGeClipper();

  /// The stretches inside and outside, each in order; stretches on the outline go to neither. What was in the
  /// lists is replaced. Neighbours on one side are one stretch, so that a mere touch doesn't cut.
  void clip(const KvGeCurve3d& curve, std::vector<KvGeParamRange>& inside,
            std::vector<KvGeParamRange>& outside) const;
  KvGe::PointContainment contains(KvGePoint2d point) const;

 private:
  KvGeClipper();
  struct Data;
  std::unique_ptr<Data> data_;
};
