#pragma once
// What every pair of regions has to keep, and small text files of the outlines that didn't.
#include <filesystem>
#include <iomanip>
#include <sstream>

#include "host/geometry/intersect.h"
#include "host/geometry/region.h"
#include "tests/geometry/shapes.h"

namespace test {

/// Writes closed curves as polylines ("pline x,y,bulge ... "; circles as two half circles, ellipses as 64
/// chords); gives the file's name.
inline std::string dumped(const std::string& name, const std::vector<const KvGeCurve3d*>& curves) {
  static int number = 0;
  const std::string file =
      (std::filesystem::temp_directory_path() / (name + "-" + std::to_string(++number) + ".txt")).string();
  std::ofstream out(file);
  out << std::setprecision(17);
  for (const KvGeCurve3d* c : curves) {
    out << "pline";
    if (c->kind() == KvGeCurve3d::kPolyline) {
      for (const auto& v : static_cast<const KvGePolyline3d*>(c)->vertices())
        out << ' ' << v.point.x << ',' << v.point.y << ',' << v.bulge;
    } else {
      const int steps = c->kind() == KvGeCurve3d::kCircArc ? 2 : 64;
      for (int i = 0; i < steps; ++i) {
        const KvGePoint3d p =
            c->pointAtParam(c->startParam() + (c->endParam() - c->startParam()) * i / steps);
        out << ' ' << p.x << ',' << p.y << ',' << (steps == 2 ? 1 : 0);
      }
    }
    out << '\n';
  }
  return file;
}

inline std::vector<Curve> readDump(const std::string& file) {
  std::vector<Curve> curves;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    std::vector<KvGePolyline3d::Vertex> row;
    char comma;
    KvGePolyline3d::Vertex v;
    while (words >> v.point.x >> comma >> v.point.y >> comma >> v.bulge) row.push_back(v);
    curves.push_back(std::make_unique<KvGePolyline3d>(row, true));
  }
  return curves;
}

/// Empty when area(A) = area(A and B) + area(A less B), the union fits, and operands may be exchanged; else
/// what failed.
inline std::string checkAreas(const KvGeRegion& a, const KvGeRegion& b) {
  KvGeRegion common = a, rest = a, either = a, other = b, back = b;
  const bool isDone = common.booleanOper(KvGeRegion::kIntersect, b) == KvGeRegion::kOk &&
                      rest.booleanOper(KvGeRegion::kSubtract, b) == KvGeRegion::kOk &&
                      either.booleanOper(KvGeRegion::kUnite, b) == KvGeRegion::kOk &&
                      other.booleanOper(KvGeRegion::kIntersect, a) == KvGeRegion::kOk &&
                      back.booleanOper(KvGeRegion::kUnite, a) == KvGeRegion::kOk;
  if (!isDone) return "an operation failed";
  const double slack = 1e-7 * (1 + a.area() + b.area());
  std::ostringstream text;
  if (std::fabs(common.area() + rest.area() - a.area()) > slack)
    text << "A " << a.area() << " is not its common part " << common.area() << " and its rest "
         << rest.area();
  else if (std::fabs(either.area() + common.area() - a.area() - b.area()) > slack)
    text << "union " << either.area() << " and common part " << common.area() << " don't make "
         << a.area() + b.area();
  else if (std::fabs(other.area() - common.area()) > slack || std::fabs(back.area() - either.area()) > slack)
    text << "exchanged operands differ";
  return text.str();
}

}  // namespace test
