#pragma once
// Flat areas bounded by lines, arcs, ellipses and splines. Edges keep their kind through every operation:
// nothing is approximated.
#include "host/geometry/line.h"

namespace kvge {
struct RegionData;
}

class KvGeRegion {
 public:
  enum Status {
    kOk = 0,
    kNoLoop,      ///< the curves don't close
    kNotPlanar,   ///< a curve isn't flat, or they don't lie in one plane
    kUnbounded,   ///< a ray or an endless line
    kUnresolved,  ///< the edges don't form outlines at any tolerance tried; nothing was changed
  };
  enum Operation { kUnite = 0, kIntersect = 1, kSubtract = 2 };
  enum FillRule { kEvenOdd, kNonZero };
  using Curves = std::vector<const KvGeCurve3d*>;

  /// Points nearer than this (and 1e-13 of the largest coordinate) are one vertex.
  static constexpr double kVertexTolerance = 1e-9;
  /// Ends of open curves nearer than this are joined, by a line where they are farther than a vertex's
  /// tolerance.
  static constexpr double kChainTolerance = 1e-6;

  /// The empty region in the XY plane.
  KvGeRegion() = default;

  /// One region for each loop that the curves form, in the order of the loops' first curves; open curves are
  /// chained end to end. An outline that crosses itself encloses what it winds round. Curves that close
  /// nothing make the answer kNoLoop; loops found are given all the same.
  static Status createFromCurves(const Curves& curves, std::vector<KvGeRegion>& regions);
  /// One region from all loops together, such as a hatch's: by default what lies within an odd number of
  /// them.
  static Status createFromLoops(const Curves& curves, KvGeRegion& region, FillRule rule = kEvenOdd);

  bool isNull() const { return !data_; }
  /// The plane: its normal points to the side from which outer loops run counter-clockwise.
  KvGePlane plane() const;
  /// This region becomes the union, the common part, or itself less the other. On failure it stays as it is.
  Status booleanOper(Operation operation, const KvGeRegion& other);

  /// Exact for lines, circles and ellipses and for splines without weights up to degree 5; others to 1e-12 of
  /// it.
  double area() const;
  double perimeter() const;
  /// Centre of gravity; the origin for an empty region.
  KvGePoint3d centroid() const;
  KvGeBox3d boundBox() const;
  /// On the boundary within the tolerance, else by the number of windings. A point is judged where it falls
  /// along the plane's normal.
  KvGe::PointContainment contains(const KvGePoint3d& point, const KvGeTol& tol = KvGeContext::gTol) const;

  /// Outer loops come before their holes.
  int loopCount() const;
  /// -1 for an outer loop, else the index of its outer loop.
  int outerLoopOf(int loop) const;
  /// The edges in the loop's order, which has the area on its left: segments, arcs (whole circles too),
  /// elliptical arcs, splines. Segments and splines run along the loop; arcs always counter-clockwise about
  /// the plane's normal, as entities do.
  void explodeLoop(int loop, std::vector<KvGeCurve3d::Ptr>& edges) const;
  void explode(std::vector<KvGeCurve3d::Ptr>& edges) const;
  /// Each outer loop with its holes as a region of its own.
  void separate(std::vector<KvGeRegion>& parts) const;
  /// Moved by any affine map that isn't singular; kNotPlanar for a singular one.
  Status transformBy(const KvGeMatrix3d& matrix);

 private:
  std::shared_ptr<const kvge::RegionData> data_;  ///< shared between copies, never changed
};
