// Picks, windows, crossings, polygons, fences and nested picks in a drawing of 200,000 entities, against a
// walk through all of them with closed forms.
#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "host/editor/selection.h"
#include "host/entities/blockreference.h"
#include "tests/editor/editor_host.h"

namespace {

constexpr int kEntities = 200'000;
constexpr double kSide = 4500;  // one entity on about 100 square units
/// Nearer than this to a limit, rounding may decide either way.
constexpr double kDoubt = 1e-7;

struct Stroke {
  KvGePoint2d a, b;
  double r = -1;  // at least 0: a circle about `a`
};

/// What the whole of an entity, or of what a reference shows, has to do with a region.
struct Finding {
  bool meets = false, isInside = true, isDoubtful = false;
};

double distanceTo(const KvGePoint2d& p, const KvGePoint2d& a, const KvGePoint2d& b) {
  const KvGeVector2d along = b - a, out = p - a;
  const double length = along.dotProduct(along);
  const double t = length > 0 ? std::clamp(out.dotProduct(along) / length, 0.0, 1.0) : 0;
  return (p - (a + along * t)).length();
}

double turn(const KvGePoint2d& a, const KvGePoint2d& b, const KvGePoint2d& p) {
  return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

/// A convex polygon, counter-clockwise.
class Polygon {
 public:
  explicit Polygon(std::vector<KvGePoint2d> corners) : corners_(std::move(corners)) {
    for (std::size_t i = 0; i < corners_.size(); ++i) {
      const KvGePoint2d &a = corners_[i], &b = corners_[(i + 1) % corners_.size()];
      const KvGeVector2d along = (b - a).normal();
      normals_.emplace_back(-along.y, along.x);
      offsets_.push_back(normals_.back().x * a.x + normals_.back().y * a.y);
    }
  }
  /// Above 0 inside: how far the nearest edge's line lies.
  double depth(const KvGePoint2d& p) const {
    double least = HUGE_VAL;
    for (std::size_t i = 0; i < normals_.size(); ++i)
      least = std::min(least, normals_[i].x * p.x + normals_[i].y * p.y - offsets_[i]);
    return least;
  }
  void test(const Stroke& s, Finding& finding) const {
    const double depthA = depth(s.a);
    if (s.r >= 0) {
      double near = depthA >= 0 ? 0 : HUGE_VAL, far = 0;
      for (std::size_t i = 0; i < corners_.size(); ++i) {
        near = std::min(near,
                        depthA >= 0 ? 0 : distanceTo(s.a, corners_[i], corners_[(i + 1) % corners_.size()]));
        far = std::max(far, (corners_[i] - s.a).length());
      }
      finding.meets = finding.meets || (near <= s.r && far >= s.r);
      finding.isInside = finding.isInside && depthA >= s.r;
      finding.isDoubtful = finding.isDoubtful || std::fabs(near - s.r) < kDoubt ||
                           std::fabs(far - s.r) < kDoubt || std::fabs(depthA - s.r) < kDoubt;
      return;
    }
    // The part of the stroke on the inner side of every edge.
    double from = 0, to = 1;
    for (std::size_t i = 0; i < normals_.size(); ++i) {
      const double da = normals_[i].x * s.a.x + normals_[i].y * s.a.y - offsets_[i];
      const double db = normals_[i].x * s.b.x + normals_[i].y * s.b.y - offsets_[i];
      if (da < 0 && db < 0) from = 2;
      if (da < 0 && db >= 0) from = std::max(from, da / (da - db));
      if (da >= 0 && db < 0) to = std::min(to, da / (da - db));
    }
    const double length = (s.b - s.a).length(), depthB = depth(s.b);
    finding.meets = finding.meets || from <= to;
    finding.isInside = finding.isInside && depthA >= 0 && depthB >= 0;
    finding.isDoubtful = finding.isDoubtful || std::fabs(from - to) * length < kDoubt ||
                         std::fabs(depthA) < kDoubt || std::fabs(depthB) < kDoubt;
  }

 private:
  std::vector<KvGePoint2d> corners_;
  std::vector<KvGeVector2d> normals_;
  std::vector<double> offsets_;
};

/// One straight piece of a fence.
void testFence(const KvGePoint2d& a, const KvGePoint2d& b, const Stroke& s, Finding& finding) {
  if (s.r >= 0) {
    const double near = distanceTo(s.a, a, b), far = std::max((a - s.a).length(), (b - s.a).length());
    finding.meets = finding.meets || (near <= s.r && far >= s.r);
    finding.isDoubtful =
        finding.isDoubtful || std::fabs(near - s.r) < kDoubt || std::fabs(far - s.r) < kDoubt;
    return;
  }
  const double t1 = turn(a, b, s.a), t2 = turn(a, b, s.b), t3 = turn(s.a, s.b, a), t4 = turn(s.a, s.b, b);
  finding.meets = finding.meets || (t1 * t2 <= 0 && t3 * t4 <= 0);
  for (const double t : {t1, t2, t3, t4}) finding.isDoubtful = finding.isDoubtful || std::fabs(t) < kDoubt;
}

class LargeDrawing : public test::EditorHost {
 protected:
  struct Item {
    KvDbObjectId id;
    std::vector<Stroke> strokes;
    KvGePoint2d middle;
    double reach = 0;  // of all strokes from the middle
  };

  LargeDrawing() {
    const KvDbObjectId partBlock = block(L"PART");
    inner_[0] = EditorHost::add(new KvDbLine({-2, 0, 0}, {3, 1, 0}), partBlock);
    inner_[1] = EditorHost::add(new KvDbCircle({0, 2, 0}, KvGeVector3d::kZAxis, 1.5), partBlock);
    KvDbBlockTableRecord* space = nullptr;
    if (kvdbOpenObject(space, database().modelSpaceId(), KvDb::kForWrite) != Kvad::eOk) return;
    const auto append = [&](KvDbEntity* entity) {
      KvDbObjectId id;
      entity->setLayer(database().layerZero());
      space->appendKvDbEntity(id, entity);
      entity->close();
      return id;
    };
    for (int i = 0; i < kEntities; ++i) {
      const KvGePoint2d at(place_(random_), place_(random_));
      Item item;
      item.middle = at;
      if (i % 10 == 0) {
        auto* reference = new KvDbBlockReference({at.x, at.y, 0}, partBlock);
        const double angle = place_(random_), scale = 0.5 + place_(random_) / kSide;
        reference->setRotation(angle);
        reference->setScaleFactors({scale, scale, scale});
        const auto put = [&](double x, double y) {
          return KvGePoint2d(at.x + scale * (x * std::cos(angle) - y * std::sin(angle)),
                             at.y + scale * (x * std::sin(angle) + y * std::cos(angle)));
        };
        item.strokes = {{put(-2, 0), put(3, 1)}, {put(0, 2), {}, 1.5 * scale}};
        item.reach = 4 * scale;
        item.id = append(reference);
      } else if (i % 10 < 4) {
        const double r = 0.1 + place_(random_) * 8 / kSide;
        item.strokes = {{at, {}, r}};
        item.reach = r;
        item.id = append(new KvDbCircle({at.x, at.y, 0}, KvGeVector3d::kZAxis, r));
      } else {
        const KvGePoint2d b(at.x + (place_(random_) / kSide - 0.5) * 40,
                            at.y + (place_(random_) / kSide - 0.5) * 40);
        item.strokes = {{at, b}};
        item.reach = (b - at).length();
        item.id = append(new KvDbLine({at.x, at.y, 0}, {b.x, b.y, 0}));
      }
      items_.push_back(std::move(item));
    }
    space->close();
  }

  /// Asks in both ways and compares entity by entity; the number that was found.
  template <class Test>
  int compare(const wchar_t* mode, const std::vector<KvGePoint2d>& points, bool wantsInside,
              const Test& test) {
    resbuf* chain = nullptr;
    for (auto p = points.rbegin(); p != points.rend(); ++p) {
      const double both[2] = {p->x, p->y};
      resbuf* node = kvutBuildList(RTPOINT, both, 0);
      node->rbnext = chain;
      chain = node;
    }
    const kvds_point first = {points[0].x, points[0].y, 0}, second = {points[1].x, points[1].y, 0};
    const bool isRectangle = mode[1] == L'\0' && mode[0] != L'F';
    kvds_name set;
    const int status = isRectangle ? kvedSSGet(mode, first, second, nullptr, set)
                                   : kvedSSGet(mode, chain, nullptr, nullptr, set);
    kvutRelRb(chain);
    std::set<KvDbObjectId> found;
    if (status == RTNORM) {
      for (const KvEdPick& pick : *editor().selections().find(set)) found.insert(pick.id);
      kvedSSFree(set);
    }
    int count = 0;
    for (const Item& item : items_) {
      Finding finding;
      for (const Stroke& stroke : item.strokes) test(stroke, finding);
      if (finding.isDoubtful) continue;
      const bool wanted = wantsInside ? finding.isInside : finding.meets;
      count += wanted;
      EXPECT_EQ(found.count(item.id) > 0, wanted)
          << platform::utf8From(CString(mode)) << " at " << points[0].x << "," << points[0].y;
    }
    return count;
  }

  std::mt19937 random_{20};
  std::uniform_real_distribution<double> place_{0, kSide};
  std::vector<Item> items_;
  KvDbObjectId inner_[2];
};

TEST_F(LargeDrawing, RegionsAgreeWithAWalkThroughAll) {
  ASSERT_EQ(items_.size(), static_cast<std::size_t>(kEntities));
  int found = 0;
  for (int round = 0; round < 10; ++round) {
    const double x = place_(random_), y = place_(random_), w = 5 + place_(random_) / 20,
                 h = 5 + place_(random_) / 20;
    const std::vector<KvGePoint2d> box = {{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}};
    const std::vector<KvGePoint2d> kite = {{x, y - h}, {x + w, y}, {x, y + h}, {x - w, y}};
    const Polygon rectangle(box), tilted(kite);
    const auto in = [](const Polygon& polygon) {
      return [&](const Stroke& stroke, Finding& finding) { polygon.test(stroke, finding); };
    };
    const std::vector<KvGePoint2d> opposite = {{x, y}, {x + w, y + h}};
    found += compare(L"C", opposite, false, in(rectangle));
    found += compare(L"W", opposite, true, in(rectangle));
    found += compare(L"CP", kite, false, in(tilted));
    found += compare(L"WP", kite, true, in(tilted));
    const std::vector<KvGePoint2d> fence = {{x, y}, {x + w, y + h / 3}, {x - w, y + h}, {x, y + 3 * h}};
    found += compare(L"F", fence, false, [&](const Stroke& stroke, Finding& finding) {
      for (std::size_t i = 0; i + 1 < fence.size(); ++i) testFence(fence[i], fence[i + 1], stroke, finding);
    });
  }
  EXPECT_GT(found, 5000);
}

TEST_F(LargeDrawing, PicksAgreeWithAWalkThroughAll) {
  const double half = 3 * kvedViewOf(database()).height / editor().screen().size.height;
  int hits = 0, nested = 0, misses = 0;
  for (int round = 0; round < 400; ++round) {
    // Every other one near an entity.
    KvGePoint2d at(place_(random_), place_(random_));
    if (round % 2 == 0) {
      const Stroke& near =
          items_[static_cast<std::size_t>(place_(random_) / kSide * (kEntities - 1))].strokes[0];
      at = {near.a.x + (near.r > 0 ? near.r : 0) + 0.3 * half, near.a.y};
    }
    const Polygon box({{at.x - half, at.y - half},
                       {at.x + half, at.y - half},
                       {at.x + half, at.y + half},
                       {at.x - half, at.y + half}});
    const Item* best = nullptr;
    std::size_t part = 0;
    double least = HUGE_VAL;
    bool isDoubtful = false;
    for (const Item& item : items_) {
      if ((item.middle - at).length() > item.reach + 4 * half) continue;
      for (std::size_t i = 0; i < item.strokes.size(); ++i) {
        const Stroke& s = item.strokes[i];
        Finding finding;
        box.test(s, finding);
        isDoubtful = isDoubtful || finding.isDoubtful;
        if (!finding.meets) continue;
        const double distance = s.r >= 0 ? std::fabs((at - s.a).length() - s.r) : distanceTo(at, s.a, s.b);
        isDoubtful = isDoubtful || std::fabs(distance - least) < half * 1e-5;
        if (distance >= least) continue;
        least = distance;
        best = &item;
        part = i;
      }
    }
    if (isDoubtful) continue;
    const kvds_point point = {at.x, at.y, 0};
    kvds_name set;
    KvDbObjectId found;
    if (kvedSSGet(L"", point, nullptr, nullptr, set) == RTNORM) {
      found = (*editor().selections().find(set))[0].id;
      kvedSSFree(set);
    }
    ASSERT_EQ(found, best ? best->id : KvDbObjectId()) << at.x << "," << at.y;
    // The innermost one, and what it stands in.
    kvds_name name;
    kvds_point where = {at.x, at.y, 0};
    double matrix[4][4];
    resbuf* containers = nullptr;
    const int status = kvedNEntSelP(L"", name, where, 1, matrix, &containers);
    ASSERT_EQ(status, best ? RTNORM : RTERROR);
    if (!best) {
      ++misses;
      continue;
    }
    ++hits;
    KvDbObjectId innermost, container;
    kvdbGetObjectId(innermost, name);
    const bool isNested = best->strokes.size() > 1;
    ASSERT_EQ(innermost, isNested ? inner_[part] : best->id);
    ASSERT_EQ(containers != nullptr, isNested);
    if (isNested) {
      ++nested;
      kvdbGetObjectId(container, containers->resval.rlname);
      EXPECT_EQ(container, best->id);
      // The map takes the block's own point to where it is seen.
      const KvGePoint3d own = part == 0 ? KvGePoint3d(-2, 0, 0) : KvGePoint3d(0, 2, 0);
      const Stroke& seen = best->strokes[part];
      EXPECT_NEAR(matrix[0][0] * own.x + matrix[0][1] * own.y + matrix[0][3], seen.a.x, 1e-6);
      EXPECT_NEAR(matrix[1][0] * own.x + matrix[1][1] * own.y + matrix[1][3], seen.a.y, 1e-6);
    }
    kvutRelRb(containers);
  }
  EXPECT_GT(hits, 150);
  EXPECT_GT(nested, 15);
  EXPECT_GT(misses, 100);
}

}  // namespace
