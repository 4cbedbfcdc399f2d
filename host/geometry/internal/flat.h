#pragma once
// Crossings of two spans in a plane. The spans' Z is taken for 0.
#include "host/geometry/span.h"

namespace kvge {

/// Own parameters of both spans, and the crossing in the plane.
struct FlatHit {
  double ta, tb;
  KvGePoint2d point;
};

/// A plane's axes. The world's XY plane is the identity, bit for bit.
struct Frame {
  KvGePoint3d origin;
  KvGeVector3d x = KvGeVector3d::kXAxis, y = KvGeVector3d::kYAxis, normal = KvGeVector3d::kZAxis;
  bool isWorld = true;

  static Frame of(const KvGePoint3d& on, const KvGeVector3d& normal);
  KvGePoint3d toWorld(KvGePoint2d p, double height) const;
  double heightOf(const KvGePoint3d& p) const { return isWorld ? p.z : (p - origin).dotProduct(normal); }
};

/// The span projected along the frame's normal, in the frame's coordinates with Z 0. Poles go to `store`,
/// which is emptied first.
Span flattened(const Span& s, const Frame& frame, std::vector<double>& store);

/// Adds every crossing and touch of two flat spans within their ranges, in no order. Lines and circles in
/// closed form. A touch counts once: curves nearer than `tol` without crossing touch at their nearest place,
/// and a crossing shallower than 1e-12 of the radius is a touch. Where they run along one another, the ends
/// of the common stretch are the hits.
void crossFlat(const Span& a, const Span& b, double tol, std::vector<FlatHit>& hits);

}  // namespace kvge
