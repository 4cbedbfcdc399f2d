// 20,000 curves against a circle and a 200-vertex star, and areas of hatch outlines, beside peers on chords.
#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/multi_linestring.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <memory>
#include <polyclipping/clipper.hpp>
#include <random>

#include "host/geometry/arc.h"
#include "host/geometry/clip.h"
#include "host/geometry/nurb.h"
#include "host/geometry/polyline.h"
#include "host/geometry/region.h"

namespace {

namespace bg = boost::geometry;
using BoostPoint = bg::model::d2::point_xy<double>;
using BoostLine = bg::model::linestring<BoostPoint>;
using BoostPolygon = bg::model::polygon<BoostPoint, false>;

constexpr int kCurves = 20000;
constexpr double kReach = 1000, kSize = 400;

std::vector<std::unique_ptr<KvGeCurve3d>> makeCurves() {
  std::mt19937 dice(20000);
  const auto real = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(dice);
  };
  const auto point = [&] { return KvGePoint3d(real(-kReach, kReach), real(-kReach, kReach), 0); };
  std::vector<std::unique_ptr<KvGeCurve3d>> curves;
  for (int i = 0; i < kCurves; ++i) {
    const KvGePoint3d p = point();
    if (i % 4 == 0) {
      curves.push_back(std::make_unique<KvGeLineSeg3d>(p, p + KvGeVector3d(real(-90, 90), real(-90, 90), 0)));
    } else if (i % 4 == 1) {
      const double a = real(0, 6);
      curves.push_back(
          std::make_unique<KvGeCircArc3d>(p, KvGeVector3d::kZAxis, real(5, 80), a, a + real(0.5, 6)));
    } else if (i % 4 == 2) {
      std::vector<KvGePolyline3d::Vertex> row;
      KvGePoint2d at = kvge::planar(p);
      for (int k = 0; k < 10; ++k, at = at + KvGeVector2d(real(-20, 30), real(-25, 25)))
        row.push_back({at, k % 3 == 0 ? real(-0.8, 0.8) : 0});
      curves.push_back(std::make_unique<KvGePolyline3d>(row));
    } else {
      std::vector<KvGePoint3d> poles;
      for (int k = 0; k < 4; ++k) poles.push_back(p + KvGeVector3d(real(-60, 60), real(-60, 60), 0));
      curves.push_back(KvGeNurbCurve3d::create(3, {0, 0, 0, 0, 1, 1, 1, 1}, poles));
    }
  }
  return curves;
}

const std::vector<std::unique_ptr<KvGeCurve3d>>& curves() {
  static const auto all = makeCurves();
  return all;
}

/// 0: a circle, 1: a star of 200 vertices.
std::unique_ptr<KvGeCurve3d> outline(int which) {
  if (which == 0) return std::make_unique<KvGeCircArc3d>(KvGePoint3d(), KvGeVector3d::kZAxis, kSize);
  std::vector<KvGePolyline3d::Vertex> row;
  for (int i = 0; i < 200; ++i) {
    const double a = kvge::kTwoPi * i / 200, r = i % 2 ? kSize / 2 : kSize;
    row.push_back({{r * std::cos(a), r * std::sin(a)}, 0});
  }
  return std::make_unique<KvGePolyline3d>(row, true);
}

/// Chords within 0.01 for the peers: arcs and splines by 20 a curve, the circle by 720.
std::vector<KvGePoint2d> chordsOf(const KvGeCurve3d& c, int each) {
  std::vector<KvGePoint2d> points;
  for (int i = 0; i < c.spanCount(); ++i) {
    const kvge::Span s = c.span(i);
    const int n = s.kind == kvge::SpanKind::kLine ? 1 : each;
    for (int k = 0; k < n; ++k)
      points.push_back(kvge::planar(kvge::pointAt(s, s.low + (s.high - s.low) * k / n)));
  }
  points.push_back(kvge::planar(c.pointAtParam(c.endParam())));
  return points;
}

const std::vector<std::vector<KvGePoint2d>>& chords() {
  static const auto all = [] {
    std::vector<std::vector<KvGePoint2d>> rows;
    for (const auto& c : curves()) rows.push_back(chordsOf(*c, 20));
    return rows;
  }();
  return all;
}

void clipOurs(benchmark::State& state) {
  const auto rim = outline(static_cast<int>(state.range(0)));
  const auto clipper = KvGeClipper::create({rim.get()});
  std::vector<KvGeParamRange> inside, outside;
  double sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const auto& c : curves()) {
      clipper->clip(*c, inside, outside);
      for (const KvGeParamRange& r : inside) sum += r.to - r.from;
      benchmark::DoNotOptimize(sum);
    }
  }
}

/// The same chords as the peers, one segment at a time.
void clipOursOnChords(benchmark::State& state) {
  const auto rim = outline(static_cast<int>(state.range(0)));
  const auto clipper = KvGeClipper::create({rim.get()});
  std::vector<KvGeParamRange> inside, outside;
  for (auto _ : state) {
    double sum = 0;
    for (const auto& row : chords())
      for (size_t i = 0; i + 1 < row.size(); ++i) {
        clipper->clip(KvGeLineSeg3d(kvge::spatial(row[i]), kvge::spatial(row[i + 1])), inside, outside);
        for (const KvGeParamRange& r : inside) sum += r.to - r.from;
      }
    benchmark::DoNotOptimize(sum);
    state.counters["inside"] = sum;
  }
}

void clipBoost(benchmark::State& state) {
  BoostPolygon polygon;
  for (const KvGePoint2d p : chordsOf(*outline(static_cast<int>(state.range(0))), 720))
    bg::append(polygon.outer(), BoostPoint(p.x, p.y));
  bg::correct(polygon);
  std::vector<BoostLine> lines;
  for (const auto& row : chords()) {
    BoostLine line;
    for (const KvGePoint2d p : row) bg::append(line, BoostPoint(p.x, p.y));
    lines.push_back(line);
  }
  for (auto _ : state) {
    double sum = 0;
    for (const BoostLine& line : lines) {
      bg::model::multi_linestring<BoostLine> result;
      bg::intersection(line, polygon, result);
      sum += static_cast<double>(bg::length(result));
    }
    benchmark::DoNotOptimize(sum);
    state.counters["inside"] = sum;
  }
}

GEOSGeometry* geosLine(GEOSContextHandle_t geos, const std::vector<KvGePoint2d>& row) {
  GEOSCoordSequence* points = GEOSCoordSeq_create_r(geos, static_cast<unsigned>(row.size()), 2);
  for (unsigned i = 0; i < row.size(); ++i) GEOSCoordSeq_setXY_r(geos, points, i, row[i].x, row[i].y);
  return GEOSGeom_createLineString_r(geos, points);
}

void clipGeos(benchmark::State& state) {
  GEOSContextHandle_t geos = GEOS_init_r();
  auto row = chordsOf(*outline(static_cast<int>(state.range(0))), 720);
  row.back() = row.front();
  GEOSCoordSequence* points = GEOSCoordSeq_create_r(geos, static_cast<unsigned>(row.size()), 2);
  for (unsigned i = 0; i < row.size(); ++i) GEOSCoordSeq_setXY_r(geos, points, i, row[i].x, row[i].y);
  GEOSGeometry* polygon =
      GEOSGeom_createPolygon_r(geos, GEOSGeom_createLinearRing_r(geos, points), nullptr, 0);
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(geos, polygon);
  std::vector<GEOSGeometry*> lines;
  for (const auto& one : chords()) lines.push_back(geosLine(geos, one));
  for (auto _ : state) {
    double sum = 0;
    for (GEOSGeometry* line : lines) {
      double length = 0;
      if (GEOSPreparedContains_r(geos, prepared, line)) {
        GEOSLength_r(geos, line, &length);
      } else if (GEOSPreparedIntersects_r(geos, prepared, line)) {
        GEOSGeometry* result = GEOSIntersection_r(geos, line, polygon);
        GEOSLength_r(geos, result, &length);
        GEOSGeom_destroy_r(geos, result);
      }
      sum += length;
    }
    benchmark::DoNotOptimize(sum);
    state.counters["inside"] = sum;
  }
  for (GEOSGeometry* line : lines) GEOSGeom_destroy_r(geos, line);
  GEOSPreparedGeom_destroy_r(geos, prepared);
  GEOSGeom_destroy_r(geos, polygon);
  GEOS_finish_r(geos);
}

/// An outline of 40 vertices, every segment an arc.
KvGePolyline3d arcOutline() {
  std::vector<KvGePolyline3d::Vertex> row;
  for (int i = 0; i < 40; ++i) {
    const double a = kvge::kTwoPi * i / 40, r = i % 2 ? 70 : 100;
    row.push_back({{r * std::cos(a), r * std::sin(a)}, i % 2 ? 0.2 : -0.15});
  }
  return KvGePolyline3d(row, true);
}

void hatchOurs(benchmark::State& state) {
  const KvGePolyline3d rim = arcOutline(),
                       window({{{-60, -120}}, {{60, -120}}, {{60, 40}}, {{-60, 40}}}, true);
  std::vector<KvGeRegion> a, b;
  KvGeRegion::createFromCurves({&rim}, a);
  KvGeRegion::createFromCurves({&window}, b);
  for (auto _ : state) {
    KvGeRegion common = a[0];
    common.booleanOper(KvGeRegion::kIntersect, b[0]);
    benchmark::DoNotOptimize(state.counters["area"] = common.area());
  }
}

void hatchClipper(benchmark::State& state) {
  constexpr double kScale = 1e7;
  const auto pathOf = [&](const KvGeCurve3d& c) {
    ClipperLib::Path path;
    for (const KvGePoint2d p : chordsOf(c, 13))
      path.emplace_back(static_cast<ClipperLib::cInt>(p.x * kScale),
                        static_cast<ClipperLib::cInt>(p.y * kScale));
    return path;
  };
  const ClipperLib::Path a = pathOf(arcOutline()),
                         b = pathOf(
                             KvGePolyline3d({{{-60, -120}}, {{60, -120}}, {{60, 40}}, {{-60, 40}}}, true));
  for (auto _ : state) {
    ClipperLib::Clipper clipper;
    clipper.AddPath(a, ClipperLib::ptSubject, true);
    clipper.AddPath(b, ClipperLib::ptClip, true);
    ClipperLib::Paths result;
    clipper.Execute(ClipperLib::ctIntersection, result);
    double area = 0;
    for (const auto& path : result) area += ClipperLib::Area(path);
    benchmark::DoNotOptimize(state.counters["area"] = area / kScale / kScale);
  }
}

BENCHMARK(clipOurs)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(clipOursOnChords)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(clipGeos)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(clipBoost)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(hatchOurs)->Unit(benchmark::kMicrosecond);
BENCHMARK(hatchClipper)->Unit(benchmark::kMicrosecond);

}  // namespace
