#pragma once
// The one interface of all curves in space. Curves are values: copy one, or clone it through the interface.
// Lengths are in drawing units, angles in radians. A curve is a row of smooth spans; whoever adds a class
// gives its spans, and everything else follows.
#include <memory>
#include <vector>

#include "host/geometry/span.h"

class KvGePlane;

class KvGeCurve3d {
 public:
  enum Kind { kLineSeg, kRay, kLine, kCircArc, kEllipArc, kNurb, kPolyline, kSpacePolyline };
  enum Planarity { kNotPlanar, kPlanar, kLinear };
  using Ptr = std::unique_ptr<KvGeCurve3d>;

  virtual ~KvGeCurve3d() = default;
  virtual Kind kind() const = 0;
  virtual Ptr clone() const = 0;

  /// The range of the parameter. Lines: distance from the start (0 to length), rays 0 to infinity. Arcs:
  /// angle; ellipses: eccentric angle. Splines: their knots. Polylines: number of the vertex, with the share
  /// of the length (of the sweep) between two.
  virtual double startParam() const = 0;
  virtual double endParam() const = 0;
  KvGePoint3d startPoint() const;
  KvGePoint3d endPoint() const;
  /// Start and end are one point, within the tolerance.
  virtual bool isClosed(const KvGeTol& tol = KvGeContext::gTol) const;
  /// A closed curve without a seam (whole circle, whole ellipse).
  virtual bool isPeriodic() const { return false; }

  /// A parameter out of range continues the first or last span: along its line, round its circle or ellipse;
  /// a spline stops at its end.
  KvGePoint3d pointAtParam(double param) const;
  KvGeVector3d firstDerivAtParam(double param) const;
  KvGeVector3d secondDerivAtParam(double param) const;
  /// False when the point is farther from the curve than the tolerance. Near an end the answer is the end's
  /// parameter exactly.
  bool paramAtPoint(const KvGePoint3d& point, double& param, const KvGeTol& tol = KvGeContext::gTol) const;
  /// Nearest point of the curve; with `extend`, of the curve with its end spans continued as above.
  KvGePoint3d closestPointTo(const KvGePoint3d& point, bool extend = false) const;
  double closestParamTo(const KvGePoint3d& point, bool extend = false) const;
  double distanceTo(const KvGePoint3d& point) const { return closestPointTo(point).distanceTo(point); }
  bool isOn(const KvGePoint3d& point, const KvGeTol& tol = KvGeContext::gTol) const {
    return distanceTo(point) <= tol.equalPoint();
  }

  /// Between two parameters of the range, whichever comes first; infinite for rays and endless lines taken
  /// whole.
  double length(double from, double to) const;
  double length() const { return length(startParam(), endParam()); }
  /// The parameter at a distance along the curve from `from`, forwards when positive. False beyond an end.
  bool paramAtLength(double from, double distance, double& param) const;

  /// Tight box; infinite where the curve is.
  KvGeBox3d boundBox() const;
  /// A straight curve gets one of its planes and answers kLinear.
  Planarity planarity(KvGePlane& plane, const KvGeTol& tol = KvGeContext::gTol) const;

  /// The stretch between two parameters (from < to) as a curve of its own; null when it is empty. On a
  /// periodic curve `to` may lie up to one turn beyond `from`, wherever that is. An endless line's stretch
  /// from minus infinity is a ray that runs backwards.
  virtual Ptr piece(double from, double to) const = 0;
  /// Cuts the curve. Parameters may come in any order; those at an end, or at one point with another, are
  /// left out. An open curve (or a closed one with a seam) cut n times gives n + 1 pieces in order; a
  /// periodic one n, the first from the smallest parameter. Without a cut nothing is added and the answer is
  /// false.
  bool splitAtParams(std::vector<double> params, std::vector<Ptr>& pieces,
                     const KvGeTol& tol = KvGeContext::gTol) const;
  /// The same at points. A point off the curve by more than the tolerance is left out.
  bool splitAtPoints(const std::vector<KvGePoint3d>& points, std::vector<Ptr>& pieces,
                     const KvGeTol& tol = KvGeContext::gTol) const;

  /// The same points run through backwards; the range of the parameter is kept where the class allows it (not
  /// for rays and lines).
  virtual Ptr reversed() const = 0;
  /// Moved by any affine map: a circle becomes an ellipse where it has to; a polyline with bulges under a map
  /// that isn't a similarity becomes a rational spline of degree 2, exactly.
  virtual Ptr transformed(const KvGeMatrix3d& matrix) const = 0;

  // For the algorithms of this folder.
  virtual int spanCount() const = 0;
  virtual kvge::Span span(int index) const = 0;
  /// The span that a parameter belongs to, 0 or the last one beyond the ends.
  virtual int spanIndexAt(double param) const;
  /// A span continued beyond the curve's ends: lines without end, conics whole.
  kvge::Span extendedSpan(int index) const;

 protected:
  KvGeCurve3d() = default;
  KvGeCurve3d(const KvGeCurve3d&) = default;
  KvGeCurve3d& operator=(const KvGeCurve3d&) = default;
  KvGeCurve3d(KvGeCurve3d&&) = default;
  KvGeCurve3d& operator=(KvGeCurve3d&&) = default;

 private:
  double endSnapped(double param, const KvGePoint3d& point, const KvGeTol& tol) const;
};
