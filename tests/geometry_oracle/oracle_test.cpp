// Curves and regions against Open CASCADE. KORVANE_ORACLE_PAIRS sets the number of pairs (default 100,000
// curves, 3,000 regions).
#include <gtest/gtest.h>

#include <BRepAlgoAPI_Common.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepGProp.hxx>
#include <GC_MakeArcOfCircle.hxx>
#include <GProp_GProps.hxx>
#include <Geom2dAPI_InterCurveCurve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_Ellipse.hxx>
#include <Geom2d_Line.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips2d.hxx>
#include <gp_Pln.hxx>

#include "tests/geometry/region_text.h"

using test::Curve;
using test::Dice;

namespace {

int pairsOr(int byDefault) {
  const char* asked = std::getenv("KORVANE_ORACLE_PAIRS");
  return asked ? std::atoi(asked) : byDefault;
}

gp_Pnt2d flat(const KvGePoint3d& p) {
  return {p.x, p.y};
}

Handle(Geom2d_Curve) theirs(const KvGeCurve3d& c) {
  if (c.kind() == KvGeCurve3d::kLineSeg) {
    const gp_Pnt2d a = flat(c.startPoint()), b = flat(c.endPoint());
    return new Geom2d_TrimmedCurve(new Geom2d_Line(a, gp_Dir2d(gp_Vec2d(a, b))), 0, a.Distance(b));
  }
  if (c.kind() == KvGeCurve3d::kCircArc || c.kind() == KvGeCurve3d::kEllipArc) {
    const kvge::Span s = c.span(0);
    const gp_Ax22d axes(flat(s.origin), gp_Dir2d(s.u.x, s.u.y), gp_Dir2d(s.v.x, s.v.y));
    Handle(Geom2d_Curve) whole;
    if (s.radius > 0)
      whole = new Geom2d_Circle(axes, s.radius);
    else
      whole = new Geom2d_Ellipse(axes, s.u.length(), s.v.length());
    return s.isWhole() ? whole : new Geom2d_TrimmedCurve(whole, s.low, s.high);
  }
  const auto& n = static_cast<const KvGeNurbCurve3d&>(c);
  std::vector<double> breaks;
  std::vector<int> counts;
  for (const double k : n.knots()) {
    if (breaks.empty() || breaks.back() != k) breaks.push_back(k), counts.push_back(0);
    ++counts.back();
  }
  TColgp_Array1OfPnt2d poles(1, static_cast<int>(n.poles().size()));
  TColStd_Array1OfReal weights(1, poles.Upper()), knots(1, static_cast<int>(breaks.size()));
  TColStd_Array1OfInteger multiplicities(1, knots.Upper());
  for (int i = 1; i <= poles.Upper(); ++i) {
    const size_t k = static_cast<size_t>(i) - 1;
    poles(i) = flat(n.poles()[k]);
    weights(i) = n.isRational() ? n.weights()[k] : 1;
  }
  for (int i = 1; i <= knots.Upper(); ++i) {
    knots(i) = breaks[static_cast<size_t>(i) - 1];
    multiplicities(i) = counts[static_cast<size_t>(i) - 1];
  }
  return new Geom2d_BSplineCurve(poles, weights, knots, multiplicities, n.degree());
}

/// Every point of the kernel that is a true meeting has to be among ours, and ours have to lie on both
/// curves.
TEST(Oracle, MeetingsOfCurves) {
  Dice d(1);
  int disagreements = 0, looked = 0, met = 0;
  std::vector<KvGeCurveHit> hits;
  for (int run = 0, count = pairsOr(100000); run < count; ++run) {
    const bool onGrid = run % 3 == 0;
    const Curve a = test::randomCurve(d, run % 6, onGrid), b = test::randomCurve(d, run / 6 % 6, onGrid);
    if (a->length() < 0.1 || b->length() < 0.1) continue;
    kvge::intersect(*a, *b, hits);
    for (const KvGeCurveHit& hit : hits) {
      ASSERT_LE(a->distanceTo(hit.point), 1e-9) << run;
      ASSERT_LE(b->distanceTo(hit.otherPoint), 1e-9) << run;
    }
    ++looked;
    try {
      Geom2dAPI_InterCurveCurve kernel(theirs(*a), theirs(*b), 1e-9);
      for (int i = 1; i <= kernel.NbPoints(); ++i) {
        const KvGePoint3d p(kernel.Point(i).X(), kernel.Point(i).Y(), 0);
        // The kernel also gives places of a near touch; only what lies on both counts.
        if (a->distanceTo(p) > 1e-10 || b->distanceTo(p) > 1e-10) continue;
        ++met;
        const auto isOurs = [&](const KvGeCurveHit& hit) { return hit.point.distanceTo(p) < 1e-4; };
        const bool isShared =
            kernel.NbSegments() > 0 || (onGrid && hits.size() > 1 && run % 6 == run / 6 % 6);
        if (!isShared && std::none_of(hits.begin(), hits.end(), isOurs)) {
          ++disagreements;
          ADD_FAILURE() << "pair " << run << " of kinds " << run % 6 << " and " << run / 6 % 6 << ": " << p.x
                        << "," << p.y << " isn't found";
        }
      }
    } catch (const Standard_Failure&) {
      --looked;  // the kernel gave up
    }
  }
  EXPECT_GT(looked, 0);
  EXPECT_GT(met, looked / 10);
  std::printf("%d pairs, %d meetings of the kernel, %d not found\n", looked, met, disagreements);
}

TopoDS_Face faceOf(const KvGeRegion& r) {
  std::vector<KvGeCurve3d::Ptr> edges;
  r.explodeLoop(0, edges);
  BRepBuilderAPI_MakeWire wire;
  for (const auto& e : edges) {
    const auto at = [](const KvGePoint3d& p) { return gp_Pnt(p.x, p.y, p.z); };
    const double a = e->startParam(), b = e->endParam();
    if (e->kind() == KvGeCurve3d::kLineSeg) {
      wire.Add(BRepBuilderAPI_MakeEdge(at(e->startPoint()), at(e->endPoint())));
    } else if (e->isPeriodic()) {
      const auto& c = static_cast<const KvGeCircArc3d&>(*e);
      wire.Add(BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(at(c.center()), gp_Dir(0, 0, 1)), c.radius())));
    } else {
      wire.Add(BRepBuilderAPI_MakeEdge(
          GC_MakeArcOfCircle(at(e->startPoint()), at(e->pointAtParam((a + b) / 2)), at(e->endPoint()))
              .Value()));
    }
  }
  return wire.IsDone() ? BRepBuilderAPI_MakeFace(gp_Pln(gp::XOY()), wire.Wire(), true).Face() : TopoDS_Face();
}

double areaOf(const TopoDS_Shape& shape) {
  GProp_GProps properties;
  BRepGProp::SurfaceProperties(shape, properties);
  return std::fabs(properties.Mass());
}

/// A simple outline: rays from a centre, with bulges that keep it from crossing itself.
Curve simpleOutline(Dice& d, bool onGrid) {
  if (d.whole(0, 4) == 0) return test::randomCurve(d, 2, onGrid);
  const KvGePoint3d c = test::randomPoint(d, onGrid, true);
  if (onGrid) {
    const double w = d.whole(2, 12) / 2.0, h = d.whole(2, 12) / 2.0;
    const double bulge = d.whole(0, 1);  // half a circle on one side, tangent to its neighbours
    return std::make_unique<KvGePolyline3d>(
        std::vector<KvGePolyline3d::Vertex>{
            {{c.x, c.y}}, {{c.x + w, c.y}, bulge}, {{c.x + w, c.y + h}}, {{c.x, c.y + h}}},
        true);
  }
  std::vector<KvGePolyline3d::Vertex> row;
  const int n = d.whole(3, 12);
  for (int i = 0; i < n; ++i) {
    const double r = d.real(3, 7), angle = kvge::kTwoPi * i / n;
    row.push_back(
        {{c.x + r * std::cos(angle), c.y + r * std::sin(angle)}, d.whole(0, 1) ? d.real(0, 0.15) : 0});
  }
  return std::make_unique<KvGePolyline3d>(row, true);
}

TEST(Oracle, CommonPartsOfRegions) {
  Dice d(2);
  int looked = 0, differing = 0;
  for (int run = 0, count = std::min(pairsOr(3000), 100000); run < count; ++run) {
    const Curve ca = simpleOutline(d, run % 2), cb = simpleOutline(d, run % 2);
    std::vector<KvGeRegion> a, b;
    ASSERT_EQ(KvGeRegion::createFromCurves({ca.get()}, a), KvGeRegion::kOk);
    ASSERT_EQ(KvGeRegion::createFromCurves({cb.get()}, b), KvGeRegion::kOk);
    KvGeRegion common = a[0];
    ASSERT_EQ(common.booleanOper(KvGeRegion::kIntersect, b[0]), KvGeRegion::kOk);
    EXPECT_EQ(test::checkAreas(a[0], b[0]), "") << test::dumped("oracle", {ca.get(), cb.get()});
    try {
      const TopoDS_Face fa = faceOf(a[0]), fb = faceOf(b[0]);
      if (fa.IsNull() || fb.IsNull()) continue;
      BRepAlgoAPI_Common kernel(fa, fb);
      if (!kernel.IsDone()) continue;
      ++looked;
      const double wanted = areaOf(kernel.Shape());
      if (std::fabs(common.area() - wanted) <= 1e-6 * (1 + wanted)) continue;
      ++differing;
      ADD_FAILURE() << "pair " << run << ": " << common.area() << " against " << wanted << "; "
                    << test::dumped("oracle", {ca.get(), cb.get()});
    } catch (const Standard_Failure&) {
    }
  }
  EXPECT_GT(looked, 0);
  std::printf("%d pairs, %d differ\n", looked, differing);
}

}  // namespace
