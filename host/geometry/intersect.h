#pragma once
// Where two curves meet.
#include "host/geometry/line.h"

namespace KvGe {
/// Which curves are continued beyond their ends: lines straight on, arcs round their circle (ellipse);
/// splines and closed curves not.
enum Extension { kOnBothOperands = 0, kExtendThis = 1, kExtendArg = 2, kExtendBoth = 3 };
}  // namespace KvGe

/// One meeting of two curves.
struct KvGeCurveHit {
  KvGePoint3d point, otherPoint;  ///< on the first and on the second curve
  double param = 0, otherParam = 0;
};

namespace kvge {

/// Points that lie on both curves within the tolerance, ordered by the first curve's parameter; `hits` is
/// emptied first. Lines and circles come out in closed form (1e-11 on the curve at drafting sizes), ellipses
/// and splines to 1e-12 of their size. A touch counts once. Where curves run along one another, the ends of
/// the common stretch are the hits; two equal closed curves meet at the first's start. At a vertex of a
/// polyline there is one hit.
void intersect(const KvGeCurve3d& a, const KvGeCurve3d& b, std::vector<KvGeCurveHit>& hits,
               KvGe::Extension extension = KvGe::kOnBothOperands, const KvGeTol& tol = KvGeContext::gTol);

/// The same for the curves' projections along a plane's normal; the points lie on the curves themselves, one
/// over the other.
void intersectProjected(const KvGeCurve3d& a, const KvGeCurve3d& b, const KvGePlane& plane,
                        std::vector<KvGeCurveHit>& hits, KvGe::Extension extension = KvGe::kOnBothOperands,
                        const KvGeTol& tol = KvGeContext::gTol);

}  // namespace kvge
