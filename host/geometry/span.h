#pragma once
// One smooth stretch of a curve. Every curve is a row of these, and the geometry's algorithms know only these
// three forms.
#include <vector>

#include "host/geometry/bernstein.h"
#include "host/geometry/box.h"
#include "host/geometry/matrix.h"

namespace kvge {

enum class SpanKind : unsigned char {
  kLine,    ///< origin + u * t; u has length 1, or 0 for a point
  kConic,   ///< origin + u * cos t + v * sin t
  kBezier,  ///< rational, poles (x w, y w, z w, w) on [knotLow, knotHigh]
};

struct Span {
  SpanKind kind = SpanKind::kLine;
  int degree = 0;
  KvGePoint3d origin;
  KvGeVector3d u, v;
  double radius = 0;         ///< of a conic that is a circle, else 0
  double low = 0, high = 0;  ///< own range, low <= high; may be infinite for lines
  const double* poles = nullptr;
  double knotLow = 0, knotHigh = 1;
  double base = 0, scale = 1;  ///< the curve's parameter is base + scale * own parameter

  double toCurve(double own) const { return base + scale * own; }
  double toOwn(double param) const { return (param - base) / scale; }
  bool isPoint() const { return kind == SpanKind::kLine && u == KvGeVector3d::kIdentity; }
  bool isWhole() const { return kind == SpanKind::kConic && high - low >= kTwoPi * (1 - 1e-15); }
};

/// Point and first two derivatives by the own parameter.
struct Jet {
  KvGePoint3d point;
  KvGeVector3d first, second;
};

Span lineSpan(const KvGePoint3d& from, const KvGePoint3d& to);
/// Circular when both radii have one length and stand at right angles.
Span conicSpan(const KvGePoint3d& center, const KvGeVector3d& u, const KvGeVector3d& v, double low,
               double high);

KvGePoint3d pointAt(const Span& s, double t);
Jet jetAt(const Span& s, double t);
inline KvGePoint3d startOf(const Span& s) {
  return pointAt(s, s.low);
}
inline KvGePoint3d endOf(const Span& s) {
  return pointAt(s, s.high);
}

/// Own parameter of the nearest point, within the range.
double nearestOn(const Span& s, const KvGePoint3d& p);
/// Between two own parameters; lines and circles in closed form, the others to 1e-13 of it.
double lengthOf(const Span& s, double from, double to);
/// Tight.
KvGeBox3d boxOf(const Span& s);
/// Where the coordinate along `axis`, seen as a function of the parameter, has its inner extremes. Adds own
/// parameters.
void extremesOf(const Span& s, const KvGeVector3d& axis, std::vector<double>& params);
/// Where the curve crosses or touches a plane. True when a stretch lies in it.
bool cutByPlane(const Span& s, const KvGePoint3d& on, const KvGeVector3d& normal, double tolerance,
                std::vector<double>& params);

/// An angle brought into a conic's range; within `slack` beyond an end it becomes the end. False outside.
bool intoRange(const Span& s, double slack, double& t);
/// The angle of a point on (or seen from the centre beside) a conic, as a parameter near the range.
double angleOn(const Span& s, const KvGePoint3d& p);

/// The Bernstein form of a linear function of the homogeneous poles: a x + b y + c z + d w.
Bernstein linearForm(const Span& s, const KvGeVector3d& abc, double d);
/// At most four rational quadratic spans that make up a conic; `store` keeps their poles (4 * 3 * 4 numbers).
int conicAsBeziers(const Span& s, Span (&parts)[4], double (&store)[48]);

/// Moved; poles go to `store`, which has to outlive the result. Conics stay conics, lines are brought to unit
/// direction again.
Span transformed(const Span& s, const KvGeMatrix3d& m, std::vector<double>& store);

}  // namespace kvge
