#pragma once
// Exact tests of straight and elliptic strokes and of areas against a region. One plane, its coordinates.
#include <vector>

#include "host/editor/internal/picker.h"

namespace kved {

/// c + u cos t + v sin t, t from `start` over `sweep`.
struct FlatConic {
  KvGePoint2d c;
  KvGeVector2d u, v;
  double start = 0, sweep = 0;
  KvGePoint2d at(double t) const;
};

class RegionTest {
 public:
  explicit RegionTest(const PickRegion& region);

  /// In the polygon or on its edge. Never of a fence.
  bool contains(const KvGePoint2d& p) const;
  bool meets(const KvGePoint2d& a, const KvGePoint2d& b) const;
  bool meets(const FlatConic& conic) const;
  bool meetsArea(const std::vector<std::vector<KvGePoint2d>>& outlines) const;
  bool encloses(const KvGePoint2d& a, const KvGePoint2d& b) const;
  bool encloses(const FlatConic& conic) const;

 private:
  /// Where along a stroke it crosses the region's edges, as its parameters.
  std::vector<double> crossings(const KvGePoint2d& a, const KvGePoint2d& b) const;
  std::vector<double> crossings(const FlatConic& conic) const;
  template <class Visit>
  bool anyEdge(Visit&& visit) const;

  const PickRegion& region_;
  bool isClosed_;
  double epsilon_;
};

double distanceTo(const KvGePoint2d& p, const KvGePoint2d& a, const KvGePoint2d& b);
double distanceTo(const KvGePoint2d& p, const FlatConic& conic);
bool isInArea(const KvGePoint2d& p, const std::vector<std::vector<KvGePoint2d>>& outlines);

}  // namespace kved
