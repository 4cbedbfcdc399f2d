// Selection sets: ways of selecting against brute force, filters, groups, layers, what is told of picks.
#include "host/editor/selection.h"

#include <cmath>
#include <random>
#include <set>

#include "host/base/context.h"
#include "host/database/dictionary.h"
#include "host/editor/ss_filter.h"
#include "host/editor/ucs.h"
#include "host/entities/blockreference.h"
#include "tests/editor/editor_host.h"

namespace {

using Ids = std::set<KvDbObjectId>;

class Selection : public test::EditorHost {
 protected:
  ~Selection() override { EXPECT_EQ(editor().selections().count(), 0) << "sets that nobody freed"; }

  /// The set's members; the set is freed.
  static Ids take(int status, kvds_name set) {
    Ids ids;
    if (status != RTNORM) return ids;
    kvds_name name;
    for (long i = 0; kvedSSName(set, i, name) == RTNORM; ++i) {
      KvDbObjectId id;
      EXPECT_EQ(kvdbGetObjectId(id, name), Kvad::eOk);
      EXPECT_TRUE(ids.insert(id).second) << "twice in the set";
    }
    EXPECT_EQ(kvedSSFree(set), RTNORM);
    EXPECT_EQ(kvedSSFree(set), RTERROR);
    return ids;
  }
  Ids get(const wchar_t* mode, const void* first = nullptr, const void* second = nullptr,
          const resbuf* filter = nullptr) {
    kvds_name set;
    return take(kvedSSGet(mode, first, second, filter, set), set);
  }
  Ids within(const wchar_t* mode, double x1, double y1, double x2, double y2) {
    const kvds_point a = {x1, y1, 0}, b = {x2, y2, 0};
    return get(mode, a, b);
  }
  Ids along(const wchar_t* mode, const std::vector<KvGePoint2d>& points) {
    resbuf* chain = nullptr;
    for (auto p = points.rbegin(); p != points.rend(); ++p) {
      const double both[2] = {p->x, p->y};
      resbuf* node = kvutBuildList(RTPOINT, both, 0);
      node->rbnext = chain;
      chain = node;
    }
    const Ids ids = get(mode, chain);
    kvutRelRb(chain);
    return ids;
  }
  /// The members that a user selects by the script.
  Ids byScript(const wchar_t* script, int status = RTNORM, const wchar_t* mode = nullptr) {
    Ids ids;
    during(script, [&] {
      kvds_name set;
      const int got = kvedSSGet(mode, nullptr, nullptr, nullptr, set);
      EXPECT_EQ(got, status) << platform::utf8From(CString(script));
      ids = take(got, set);
    });
    return ids;
  }
  Ids filtered(resbuf* filter) {
    const Ids ids = get(L"X", nullptr, nullptr, filter);
    kvutRelRb(filter);
    return ids;
  }
  /// A chain as text, names as their numbers in `known` from a.
  CString told(const resbuf* chain, const std::vector<KvDbObjectId>& known) {
    CString text;
    for (; chain; chain = chain->rbnext) {
      CString part;
      const double* p = chain->resval.rpoint;
      KvDbObjectId id;
      switch (chain->restype) {
        case RTLB:
          part = L"(";
          break;
        case RTLE:
          part = L")";
          break;
        case RTSHORT:
          part.Format(L"%d ", chain->resval.rint);
          break;
        case RT3DPOINT:
          part.Format(L"[%g,%g,%g]", p[0], p[1], p[2]);
          break;
        case RTENAME:
          kvdbGetObjectId(id, chain->resval.rlname);
          part = L"?";
          for (std::size_t i = 0; i < known.size(); ++i)
            if (known[i] == id) part.Format(L"%c ", static_cast<wchar_t>(L'a' + i));
          break;
        default:
          part.Format(L"!%d", chain->restype);
      }
      text += part;
    }
    return text;
  }
};

TEST_F(Selection, ModesAreReadOrRefused) {
  const KvDbObjectId a = line(0, 0, 1, 1);
  const kvds_point p = {0, 0, 0}, q = {2, 2, 0};
  for (const wchar_t* mode :
       {L"A", L"_A", L"a", L"X", L"_x", L"L", L"A:N", L"C", L"_C", L"C:N", L"W:N", L"w:l"})
    EXPECT_EQ(get(mode, p, q), Ids{a}) << platform::utf8From(CString(mode));
  for (const wchar_t* mode :
       {L"Q", L"AA", L"__A", L":", L"A:", L"A:Q", L"C:S:Z", L"+..", L"CPP", L" A", L"I"})
    EXPECT_EQ(get(mode, p, q), Ids{}) << platform::utf8From(CString(mode));
  kvds_name set;
  EXPECT_EQ(kvedSSGet(L"C", p, nullptr, nullptr, set), RTERROR);
  EXPECT_EQ(kvedSSGet(L"CP", nullptr, nullptr, nullptr, set), RTERROR);
  EXPECT_EQ(kvedSSGet(L"A", nullptr, nullptr, nullptr, nullptr), RTERROR);
  const kvds_point nowhere = {NAN, 0, 0};
  EXPECT_EQ(kvedSSGet(L"C", p, nowhere, nullptr, set), RTERROR);
  EXPECT_TRUE(kvds_isNull(set));
}

TEST_F(Selection, AgreesWithBruteForce) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(0, 100), size(0, 6);
  struct Segment {
    KvDbObjectId id;
    KvGePoint2d a, b;
  };
  struct Round {
    KvDbObjectId id;
    KvGePoint2d c;
    double r;
  };
  std::vector<Segment> segments;
  std::vector<Round> rounds;
  for (int i = 0; i < 1000; ++i) {
    const KvGePoint2d a(place(random), place(random)), b(a.x + size(random) - 3, a.y + size(random) - 3);
    segments.push_back({line(a.x, a.y, b.x, b.y), a, b});
    const KvGePoint2d c(place(random), place(random));
    const double r = 0.1 + size(random) / 2;
    rounds.push_back({circle(c.x, c.y, r), c, r});
  }
  // Points along the entities, as close together as the doubt that is left near an edge.
  const auto samples = [](const auto& at) {
    std::vector<KvGePoint2d> points;
    constexpr int kSamples = 2000;
    for (int i = 0; i <= kSamples; ++i) points.push_back(at(static_cast<double>(i) / kSamples));
    return points;
  };
  std::map<KvDbObjectId, std::vector<KvGePoint2d>> sampled;
  for (const Segment& s : segments) sampled[s.id] = samples([&](double t) { return s.a + (s.b - s.a) * t; });
  for (const Round& c : rounds)
    sampled[c.id] = samples([&](double t) {
      return KvGePoint2d(c.c.x + c.r * std::cos(t * 2 * M_PI), c.c.y + c.r * std::sin(t * 2 * M_PI));
    });
  constexpr double kDoubt = 0.02;
  const auto check = [&](const Ids& crossing, const Ids& window, const auto& depth) {
    int found = 0;
    for (const auto& [id, points] : sampled) {
      // Above 0 inside; by how much for the sample farthest in and farthest out.
      double most = -HUGE_VAL, least = HUGE_VAL;
      for (const KvGePoint2d& p : points) {
        most = std::max(most, depth(p));
        least = std::min(least, depth(p));
      }
      if (std::fabs(most) > kDoubt) {
        EXPECT_EQ(crossing.count(id) > 0, most > 0);
      }
      if (std::fabs(least) > kDoubt) {
        EXPECT_EQ(window.count(id) > 0, least > 0);
      }
      found += most > 0;
    }
    return found;
  };
  int found = 0;
  for (int round = 0; round < 12; ++round) {
    const double x = place(random), y = place(random), w = 1 + 4 * size(random), h = 1 + 4 * size(random);
    found +=
        check(within(L"C", x, y, x + w, y + h), within(L"W", x + w, y, x, y + h), [&](const KvGePoint2d& p) {
          return std::min({p.x - x, x + w - p.x, p.y - y, y + h - p.y});
        });
    // The same tilted: a square on its corner.
    const double r = 1 + w;
    found += check(along(L"CP", {{x - r, y}, {x, y - r}, {x + r, y}, {x, y + r}}),
                   along(L"WP", {{x, y + r}, {x + r, y}, {x, y - r}, {x - r, y}}), [&](const KvGePoint2d& p) {
                     return (r - std::fabs(p.x - x) - std::fabs(p.y - y)) / std::sqrt(2);
                   });
  }
  EXPECT_GT(found, 500);
}

TEST_F(Selection, FencesHollowPolygonsAndEdges) {
  const KvDbObjectId low = line(0, 1, 10, 1), high = line(0, 9, 10, 9), ring = circle(5, 5, 1),
                     middle = line(4.9, 5, 5.1, 5);
  EXPECT_EQ(along(L"F", {{2, 0}, {2, 5}}), Ids{low});
  EXPECT_EQ(along(L"F:N", {{2, 0}, {2, 10}}), (Ids{low, high}));
  EXPECT_EQ(along(L"F", {{5, 4.5}, {5, 4.2}}), Ids{});   // inside the circle
  EXPECT_EQ(along(L"F", {{0, 6}, {10, 6}}), Ids{ring});  // just touches
  // A horseshoe around the circle: the lines run out of it between its arms.
  const std::vector<KvGePoint2d> horseshoe = {{-1, 0}, {11, 0}, {11, 10}, {7, 10},
                                              {7, 2},  {3, 2},  {3, 10},  {-1, 10}};
  EXPECT_EQ(along(L"CP", horseshoe), (Ids{low, high}));
  EXPECT_EQ(along(L"WP", horseshoe), Ids{low});
  EXPECT_EQ(within(L"C", 4.5, 4.5, 5.5, 5.5), Ids{middle});  // the circle lies around it
  EXPECT_EQ(within(L"W", 4, 4, 6, 6), (Ids{ring, middle}));  // touching from inside
  EXPECT_EQ(within(L"C", 6, 5, 7, 5.5), Ids{ring});          // touching from outside
  EXPECT_EQ(within(L"C", 6.001, 5, 7, 5.5), Ids{});
  EXPECT_EQ(within(L"C", 4, 1, 4, 1), Ids{low});  // a window without size
  EXPECT_EQ(along(L"F", {{2, 0}}), Ids{});
  EXPECT_EQ(along(L"CP", {{0, 0}, {10, 10}}), Ids{});
}

TEST_F(Selection, IndexFollowsChangesUndoAndErasure) {
  const KvDbObjectId a = line(0, 0, 1, 0);
  EXPECT_EQ(within(L"C", -1, -1, 2, 1), Ids{a});
  database().undoRecorder().beginGroup();
  change<KvDbLine>(a, [](KvDbLine& l) { l.transformBy(KvGeMatrix3d::translation({100, 0, 0})); });
  const KvDbObjectId b = line(100, 0, 101, 0);
  database().undoRecorder().endGroup();
  EXPECT_EQ(within(L"C", -1, -1, 2, 1), Ids{});
  EXPECT_EQ(within(L"C", 99, -1, 102, 1), (Ids{a, b}));
  ASSERT_TRUE(database().undoRecorder().undo());
  EXPECT_EQ(within(L"C", -1, -1, 2, 1), Ids{a});
  EXPECT_EQ(within(L"C", 99, -1, 102, 1), Ids{});
  ASSERT_TRUE(database().undoRecorder().redo());
  EXPECT_EQ(within(L"C", 99, -1, 102, 1), (Ids{a, b}));
  change(a, [](KvDbEntity& e) { e.erase(); });
  EXPECT_EQ(get(L"A"), Ids{b});
  // More changes than are followed one by one.
  Ids all{b};
  for (int i = 0; i < 2000; ++i) all.insert(line(i, 10, i + 0.5, 10));
  EXPECT_EQ(within(L"C", -1, -1, 3000, 20), all);
  for (const KvDbObjectId id : all)
    change<KvDbLine>(id, [](KvDbLine& l) { l.transformBy(KvGeMatrix3d::translation({0, 50, 0})); });
  EXPECT_EQ(within(L"C", -1, -1, 3000, 20), Ids{});
  EXPECT_EQ(within(L"C", -1, 40, 3000, 70), all);
}

TEST_F(Selection, BlocksAreSeenThroughTheirReferences) {
  const KvDbObjectId inner = block(L"INNER");
  const KvDbObjectId part = add(new KvDbLine({0, 0, 0}, {1, 0, 0}), inner);
  const KvDbObjectId reference = add(new KvDbBlockReference({10, 10, 0}, inner));
  EXPECT_EQ(within(L"W", 9, 9, 12, 11), Ids{reference});
  // What changes inside the block moves its references.
  change<KvDbLine>(part, [](KvDbLine& l) { l.transformBy(KvGeMatrix3d::translation({0, 30, 0})); });
  EXPECT_EQ(within(L"C", 9, 9, 12, 11), Ids{});
  EXPECT_EQ(within(L"W", 9, 39, 12, 41), Ids{reference});
}

TEST_F(Selection, LayersAndVisibility) {
  const KvDbObjectId plain = line(0, 0, 1, 0), off = line(0, 1, 1, 1), frozen = line(0, 2, 1, 2),
                     locked = line(0, 3, 1, 3), hidden = line(0, 4, 1, 4);
  const auto put = [&](KvDbObjectId id, const wchar_t* name, auto&& set) {
    const KvDbObjectId record = layer(name);
    change(id, [&](KvDbEntity& e) { e.setLayer(record); });
    change<KvDbLayerTableRecord>(record, set);
  };
  put(off, L"OFF", [](KvDbLayerTableRecord& r) { r.setIsOff(true); });
  put(frozen, L"FROZEN", [](KvDbLayerTableRecord& r) { r.setIsFrozen(true); });
  put(locked, L"LOCKED", [](KvDbLayerTableRecord& r) { r.setIsLocked(true); });
  change(hidden, [](KvDbEntity& e) { e.setVisibility(KvDb::kInvisible); });
  EXPECT_EQ(within(L"C", -1, -1, 2, 5), (Ids{plain, locked}));
  EXPECT_EQ(within(L"C:L", -1, -1, 2, 5), Ids{plain});
  EXPECT_EQ(get(L"A"), (Ids{plain, off, locked, hidden}));
  EXPECT_EQ(get(L"X"), (Ids{plain, off, frozen, locked, hidden}));
  EXPECT_EQ(get(L"L"), Ids{locked});
  EXPECT_EQ(byScript(L"ALL\n\n"), (Ids{plain, off, hidden}));
}

TEST_F(Selection, Filters) {
  const KvDbObjectId a = line(0, 0, 10, 0), b = line(0, 5, 10, 5), c = circle(0, 0, 1), d = circle(9, 9, 4);
  change(b, [&](KvDbEntity& e) { e.setLayer(layer(L"Outline")); });
  change(c, [](KvDbEntity& e) { e.setColorIndex(1); });
  kvdbRegApp(L"MINE");
  change(d, [](KvDbEntity& e) {
    resbuf* data = kvutBuildList(1001, L"MINE", 1070, 1, 0);
    EXPECT_EQ(e.setXData(data), Kvad::eOk);
    kvutRelRb(data);
  });
  const double origin[3] = {0, 0, 0}, five[3] = {0, 5, 0};
  const Ids all{a, b, c, d}, none;
  EXPECT_EQ(filtered(kvutBuildList(RTDXF0, L"LINE", 0)), (Ids{a, b}));
  EXPECT_EQ(filtered(kvutBuildList(RTDXF0, L"li*,c?rcle", 0)), all);
  EXPECT_EQ(filtered(kvutBuildList(RTDXF0, L"~LINE", 8, L"0", 0)), (Ids{c, d}));
  EXPECT_EQ(filtered(kvutBuildList(8, L"outline", 0)), Ids{b});
  EXPECT_EQ(filtered(kvutBuildList(62, 256, 0)), (Ids{a, b, d}));
  EXPECT_EQ(filtered(kvutBuildList(-4, L"!=", 62, 256, 0)), Ids{c});
  EXPECT_EQ(filtered(kvutBuildList(6, L"bylayer", RTDXF0, L"CIRCLE", 0)), (Ids{c, d}));
  EXPECT_EQ(filtered(kvutBuildList(-4, L">=", 40, 4.0, 0)), Ids{d});
  EXPECT_EQ(filtered(kvutBuildList(-4, L">", 40, 4.0, 0)), none);
  EXPECT_EQ(filtered(kvutBuildList(-4, L"<>", 40, 4.0, 0)), Ids{c});
  EXPECT_EQ(filtered(kvutBuildList(10, origin, 0)), (Ids{a, c}));
  EXPECT_EQ(filtered(kvutBuildList(-4, L"*,>=,*", 10, five, 0)), (Ids{b, d}));
  EXPECT_EQ(filtered(kvutBuildList(-3, 1001, L"mi*", 0)), Ids{d});
  EXPECT_EQ(filtered(kvutBuildList(-4, L"<OR", 62, 1, 8, L"Outline", -4, L"OR>", 0)), (Ids{b, c}));
  EXPECT_EQ(filtered(kvutBuildList(-4, L"<not", RTDXF0, L"LINE", -4, L"not>", 0)), (Ids{c, d}));
  EXPECT_EQ(filtered(kvutBuildList(-4, L"<XOR", RTDXF0, L"LINE", 8, L"Outline", -4, L"XOR>", 0)), Ids{a});
  EXPECT_EQ(filtered(kvutBuildList(-4, L"<OR", -4, L"<AND", RTDXF0, L"LINE", 8, L"0", -4, L"AND>", 40, 4.0,
                                   -4, L"OR>", 0)),
            (Ids{a, d}));
  for (resbuf* bad : {kvutBuildList(-4, L"<OR", 62, 1, 0), kvutBuildList(-4, L"OR>", 0),
                      kvutBuildList(-4, L"<XOR", 62, 1, -4, L"XOR>", 0), kvutBuildList(-4, L"=>", 40, 1.0, 0),
                      kvutBuildList(-4, L"=", 0), kvutBuildList(-4, L"<OR", 62, 1, -4, L"AND>", 0)})
    EXPECT_EQ(filtered(bad), none);
}

TEST_F(Selection, DialogueWithTheUser) {
  const KvDbObjectId a = line(0, 0, 10, 0), b = line(0, 5, 10, 5), c = circle(30, 30, 2);
  struct Row {
    const wchar_t* script;
    Ids wanted;
  };
  for (const Row& row : {
           Row{L"5,0\n\n", {a}},
           Row{L"5,0.2 5,5\n\n", {a, b}},
           Row{L"W -1,-1 11,6\n\n", {a, b}},
           Row{L"c 5,-1 6,1\n\n", {a}},
           Row{L"_Crossing 5,-1 6,1\n\n", {a}},
           Row{L"-1,-1 11,6\n\n", {a, b}},  // rightwards from an empty place: a window
           Row{L"5,2 20,7\n\n", {}},        // which b isn't wholly in
           Row{L"20,7 5,2\n\n", {b}},       // leftwards: a crossing
           Row{L"all\n\n", {a, b, c}},
           Row{L"ALL R 5,0\n\n", {b, c}},
           Row{L"ALL R 5,0 A 5,0\n\n", {a, b, c}},
           Row{L"5,0 ALL U\n\n", {a}},
           Row{L"5,0 U U\n5,5\n\n", {b}},
           Row{L"L\n\n", {c}},
           Row{L"si 5,0\n", {a}},
           Row{L"F 1,-1 1,6\n\n\n", {a, b}},
           Row{L"WP -1,-1 11,-1 11,1 -1,1\n\n\n", {a}},
           Row{L"cp 28,28 32,28 32,30\n\n\n", {c}},
           Row{L"nonsense 5,0\n\n", {a}},
           Row{L"BOX 20,7 5,2\n\n", {b}},
       })
    EXPECT_EQ(byScript(row.script, row.wanted.empty() ? RTERROR : RTNORM), row.wanted)
        << platform::utf8From(CString(row.script));
  byScript(L"5,0 5,5\n\n");
  EXPECT_EQ(byScript(L"P\n\n"), (Ids{a, b}));
  EXPECT_EQ(get(L"P"), (Ids{a, b}));
  EXPECT_EQ(byScript(L"5,0 ^C\n", RTCAN), Ids{});
  EXPECT_EQ(get(L"P"), (Ids{a, b}));
}

TEST_F(Selection, EmptyRepliesAndMissesHaveTheirNumbers) {
  line(0, 0, 10, 0);
  byScript(L"\n", RTERROR);
  EXPECT_EQ(errnoNow(), 52);
  byScript(L"5,0\n\n");
  EXPECT_EQ(errnoNow(), 0);
  byScript(L"50,50\n", RTERROR, L"+.:S");
  EXPECT_EQ(errnoNow(), 7);
  byScript(L"\n", RTERROR, L"+.:N:S:E:D:");
  during(L"\n50,50\n5,0\nL\n^C\n", [&] {
    kvds_name name;
    kvds_point point = {0, 0, 0};
    EXPECT_EQ(kvedEntSel(L"E: ", name, point), RTERROR);
    EXPECT_EQ(errnoNow(), 52);
    EXPECT_EQ(kvedEntSel(L"E: ", name, point), RTERROR);
    EXPECT_EQ(errnoNow(), 7);
    EXPECT_TRUE(kvds_isNull(name));
    EXPECT_EQ(kvedEntSel(L"E: ", name, point), RTNORM);
    EXPECT_EQ(point[0], 5);
    EXPECT_EQ(errnoNow(), 0);
    EXPECT_EQ(kvedEntSel(L"E: ", name, point), RTNORM);
    EXPECT_EQ(kvedEntSel(L"E: ", name, point), RTCAN);
  });
}

TEST_F(Selection, PromptPairsAndSinglePicks) {
  const KvDbObjectId a = line(0, 0, 10, 0), b = line(5, -5, 5, 5);
  const wchar_t* prompts[2] = {L"\nPick some:", L"\nTake out:"};
  during(L"2,0 5,3 R 5,3\n\n", [&] {
    kvds_name set;
    EXPECT_EQ(take(kvedSSGet(L":$", prompts, nullptr, nullptr, set), set), Ids{a});
  });
  EXPECT_GE(shown.Find(L"Pick some:"), 0);
  EXPECT_GE(shown.Find(L"Take out:"), 0);
  EXPECT_EQ(byScript(L"2,0\n", RTNORM, L":S:N:E"), Ids{a});
  EXPECT_EQ(byScript(L"5,0\n", RTNORM, L":S"), Ids{b});         // drawn last
  EXPECT_EQ(byScript(L"5,0\n\n", RTNORM, L":E"), (Ids{a, b}));  // all under the box
  const kvds_point at = {2, 0, 0};
  EXPECT_EQ(get(nullptr, at), Ids{a});
}

TEST_F(Selection, GroupsComeAlongUnlessPickstyleSaysNo) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 5, 1, 5), c = line(0, 9, 1, 9);
  KvDbDictionary *root = nullptr, *groups = nullptr;
  KvDbObjectId id;
  ASSERT_EQ(database().getNamedObjectsDictionary(root, KvDb::kForRead), Kvad::eOk);
  root->getAt(L"ACAD_GROUP", id);
  root->close();
  ASSERT_EQ(kvdbOpenObject(groups, id, KvDb::kForWrite), Kvad::eOk);
  auto* group = new KvDbGroup;
  ASSERT_EQ(groups->setAt(L"PAIR", group, id), Kvad::eOk);
  group->append(a);
  group->append(b);
  group->close();
  groups->close();
  EXPECT_EQ(within(L"C", -1, -1, 2, 1), (Ids{a, b}));
  EXPECT_EQ(byScript(L"0.5,5\n\n"), (Ids{a, b}));
  EXPECT_EQ(byScript(L"0.5,9 G PAIR\n\n"), (Ids{a, b, c}));
  setVariable(L"PICKSTYLE", 0);
  EXPECT_EQ(within(L"C", -1, -1, 2, 1), Ids{a});
  EXPECT_EQ(byScript(L"0.5,5\n\n"), Ids{b});
  EXPECT_EQ(byScript(L"G PAIR\n\n"), (Ids{a, b}));
}

TEST_F(Selection, ImpliedSelectionServesCommandsThatTakeIt) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 5, 1, 5);
  kvds_name set;
  resbuf* chain = nullptr;
  EXPECT_EQ(kvedSSGetFirst(nullptr, &chain), RTERROR);
  EXPECT_EQ(chain, nullptr);
  const kvds_point p = {-1, -1, 0}, q = {2, 1, 0};
  ASSERT_EQ(kvedSSGet(L"C", p, q, nullptr, set), RTNORM);
  ASSERT_EQ(kvedSSSetFirst(set, set), RTNORM);
  kvedSSFree(set);
  ASSERT_EQ(kvedSSGetFirst(nullptr, &chain), RTNORM);
  EXPECT_EQ(take(RTNORM, chain->resval.rlname), Ids{a});
  kvutRelRb(chain);
  EXPECT_EQ(get(L"I"), Ids{a});
  EXPECT_EQ(byScript(L"0.5,5\n\n"), Ids{b});  // this command asks in any case
  during(
      L"0.5,5\n\n", [&] { EXPECT_EQ(get(nullptr), Ids{a}); }, L"PICKY");
  during(
      L"0.5,5\n\n", [&] { EXPECT_EQ(get(nullptr), Ids{b}); }, L"PICKY");  // it serves once
  EXPECT_EQ(kvedSSSetFirst(nullptr, nullptr), RTNORM);
}

TEST_F(Selection, SetsByHand) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 5, 1, 5);
  kvds_name nameA, nameB, set = {0, 0}, other = {0, 0};
  kvdbGetKvdsName(nameA, a);
  kvdbGetKvdsName(nameB, b);
  ASSERT_EQ(kvedSSAdd(nullptr, nullptr, set), RTNORM);
  long length = -1;
  EXPECT_EQ(kvedSSLength(set, &length), RTNORM);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(kvedSSAdd(nameA, set, set), RTNORM);
  EXPECT_EQ(kvedSSAdd(nameA, set, other), RTNORM);
  EXPECT_TRUE(kvds_equal(set, other));
  kvedSSLength(set, &length);
  EXPECT_EQ(length, 1);
  EXPECT_EQ(kvedSSMemb(nameA, set), RTNORM);
  EXPECT_EQ(kvedSSMemb(nameB, set), RTERROR);
  EXPECT_EQ(kvedSSDel(nameB, set), RTERROR);
  change(a, [](KvDbEntity& e) { e.erase(); });
  EXPECT_EQ(kvedSSMemb(nameA, set), RTNORM);  // erased members stay
  EXPECT_EQ(kvedSSDel(nameA, set), RTNORM);
  EXPECT_EQ(kvedSSName(set, 0, nameA), RTERROR);
  EXPECT_EQ(kvedSSFree(set), RTNORM);
  EXPECT_EQ(kvedSSLength(set, &length), RTERROR);
  EXPECT_EQ(kvedSSAdd(nameB, set, other), RTERROR);  // a set that was freed
  EXPECT_EQ(kvedSSFree(nullptr), RTERROR);
  std::vector<std::array<long long, 2>> many(300);
  for (auto& one : many) EXPECT_EQ(kvedSSAdd(nameB, nullptr, one.data()), RTNORM);
  EXPECT_EQ(editor().selections().count(), 300);
  for (auto& one : many) EXPECT_EQ(kvedSSFree(one.data()), RTNORM);
}

TEST_F(Selection, ChainsTellHowMembersWerePicked) {
  const KvDbObjectId a = line(0, 0, 10, 0), b = line(0, 5, 10, 5), c = line(0, 9, 10, 9);
  const std::vector<KvDbObjectId> known{a, b, c};
  kvds_name set;
  resbuf* chain = nullptr;
  during(L"5,0 W -1,4 11,6 F 2,8 2,10\n\n\n",
         [&] { ASSERT_EQ(kvedSSGet(nullptr, nullptr, nullptr, nullptr, set), RTNORM); });
  ASSERT_EQ(kvedSSNameX(&chain, set, -1), RTNORM);
  EXPECT_EQ(told(chain, known), CString(L"(1 a -1 (0 [5,0,0]))"
                                        L"(2 b -1 -1 )"
                                        L"(4 c -1 (0 [2,8,0])(0 [2,10,0]))"
                                        L"(-1 (0 [-1,4,0])(0 [11,4,0])(0 [11,6,0])(0 [-1,6,0]))"));
  kvutRelRb(chain);
  ASSERT_EQ(kvedSSNameX(&chain, set, 0), RTNORM);
  EXPECT_EQ(told(chain, known), CString(L"(1 a -1 (0 [5,0,0]))"));
  kvutRelRb(chain);
  EXPECT_EQ(kvedSSNameX(&chain, set, 3), RTERROR);
  EXPECT_EQ(chain, nullptr);
  EXPECT_EQ(kvedSSNameX(&chain, set, -2), RTERROR);
  kvedSSFree(set);

  const kvds_point p = {-1, -1, 0}, q = {11, 6, 0};
  ASSERT_EQ(kvedSSGet(L"C:N", p, q, nullptr, set), RTNORM);
  kvds_name third;
  kvdbGetKvdsName(third, c);
  kvedSSAdd(third, set, set);
  ASSERT_EQ(kvedSSNameX(&chain, set, -1), RTNORM);
  EXPECT_EQ(told(chain, known), CString(L"(3 a -1 -1 )(3 b -1 -1 )(0 c -1 )"
                                        L"(-1 (0 [-1,-1,0])(0 [11,-1,0])(0 [11,6,0])(0 [-1,6,0]))"));
  kvutRelRb(chain);
  kvedSSFree(set);
  ASSERT_EQ(kvedSSAdd(nullptr, nullptr, set), RTNORM);
  EXPECT_EQ(kvedSSNameX(&chain, set, -1), RTERROR);
  EXPECT_EQ(chain, nullptr);
  kvedSSFree(set);
}

TEST_F(Selection, NestedPicksTellTheWayAndTheTransform) {
  const KvDbObjectId inner = block(L"INNER"), outer = block(L"OUTER");
  const KvDbObjectId part = add(new KvDbLine({0, 0, 0}, {1, 0, 0}), inner);
  const KvDbObjectId innerReference = add(new KvDbBlockReference({5, 0, 0}, inner), outer);
  const KvDbObjectId outerReference = add(new KvDbBlockReference({100, 0, 0}, outer));
  change<KvDbBlockReference>(outerReference, [](KvDbBlockReference& r) { r.setRotation(M_PI / 2); });
  const std::vector<KvDbObjectId> known{part, innerReference, outerReference};
  // The part stands from (100,5) to (100,6).
  during(L"100,5.5\n100,5.5\n", [&] {
    kvds_name set;
    resbuf* chain = nullptr;
    resbuf* filter = kvutBuildList(RTDXF0, L"INSERT", 0);
    const wchar_t* prompts[2] = {L"\nBlock:", L""};
    ASSERT_EQ(kvedSSGet(L"+.:N:S:E:D:$", prompts, nullptr, filter, set), RTNORM);
    kvutRelRb(filter);
    ASSERT_EQ(kvedSSNameX(&chain, set, 0), RTNORM);
    for (resbuf* node = chain; node; node = node->rbnext)  // a turn leaves the dust of its cosine
      if (node->restype == RT3DPOINT)
        for (double& x : node->resval.rpoint) x = std::round(x * 1e9) / 1e9 + 0.0;
    EXPECT_EQ(told(chain, known), CString(L"(1 a -1 (0 [100,5.5,0])[0,1,0][-1,0,0][0,0,1][100,5,0]b c )"));
    kvutRelRb(chain);
    kvedSSFree(set);

    kvds_name name;
    kvds_point point;
    double rows[4][3];
    resbuf* containers = nullptr;
    ASSERT_EQ(kvedNEntSel(L"N: ", name, point, rows, &containers), RTNORM);
    EXPECT_EQ(told(containers, known), CString(L"b c "));
    EXPECT_NEAR(rows[0][1], 1, 1e-12);
    EXPECT_NEAR(rows[3][0], 100, 1e-12);
    EXPECT_NEAR(rows[3][1], 5, 1e-12);
    kvutRelRb(containers);
    double columns[4][4];
    ASSERT_EQ(kvedNEntSelP(nullptr, name, point, 1, columns, &containers), RTNORM);
    EXPECT_NEAR(columns[1][0], 1, 1e-12);
    EXPECT_NEAR(columns[0][3], 100, 1e-12);
    KvDbObjectId id;
    kvdbGetObjectId(id, name);
    EXPECT_EQ(id, part);
    kvutRelRb(containers);
    kvds_point off = {0, 0, 0};
    EXPECT_EQ(kvedNEntSelP(nullptr, name, off, 1, columns, &containers), RTERROR);
    EXPECT_EQ(containers, nullptr);
    EXPECT_EQ(errnoNow(), 7);
  });
  // A block inside itself ends somewhere.
  add(new KvDbBlockReference({0, 1, 0}, outer), outer);
  EXPECT_EQ(within(L"C", 99, 4, 101, 6), Ids{outerReference});
}

TEST_F(Selection, FiltersOfOthersTakeCandidatesOut) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 5, 1, 5);
  struct Refuses : KvEdSSGetFilter {
    KvDbObjectId refused;
    int asked = 0;
    void ssgetAddFilter(KvEdSelectionSetService& service) override {
      ++asked;
      for (const KvDbObjectId id : service.candidates())
        if (id == refused) {
          EXPECT_EQ(service.remove(id), Kvad::eOk);
        }
      EXPECT_EQ(service.remove(refused), Kvad::eKeyNotFound);
    }
  } filter;
  filter.refused = a;
  KvApDocument* document = app.documents().curDocument();
  ASSERT_EQ(addSSgetFilterInputContextReactor(document, &filter, 15), Kvad::eOk);
  EXPECT_EQ(addSSgetFilterInputContextReactor(document, &filter, 15), Kvad::eDuplicateKey);
  EXPECT_EQ(within(L"C", -1, -1, 2, 6), Ids{b});
  EXPECT_EQ(byScript(L"0.5,0 0.5,5\n\n"), Ids{b});
  EXPECT_EQ(filter.asked, 3);
  app.newDocument();
  EXPECT_EQ(get(L"A"), Ids{});
  EXPECT_EQ(filter.asked, 3);
  app.documents().setCurDocument(document);
  EXPECT_EQ(removeSSgetFilterInputContextReactor(document, &filter), Kvad::eOk);
  EXPECT_EQ(removeSSgetFilterInputContextReactor(document, &filter), Kvad::eKeyNotFound);
  EXPECT_EQ(within(L"C", -1, -1, 2, 6), (Ids{a, b}));
}

TEST_F(Selection, ProgramsAnswerWithNamesSetsAndPicks) {
  static Selection* self;
  static Ids got;
  static CString chainText;
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 5, 1, 5), c = line(0, 9, 1, 9);
  self = this;
  editor().commands().addCommand(L"TEST", L"TAKE", L"TAKE", 0, [] {
    kvds_name set;
    resbuf* chain = nullptr;
    const int status = kvedSSGet(nullptr, nullptr, nullptr, nullptr, set);
    kvedSSNameX(&chain, set, 2);
    for (resbuf* node = chain; node; node = node->rbnext)
      if (node->restype == RT3DPOINT)
        chainText.Format(L"%g,%g", node->resval.rpoint[0], node->resval.rpoint[1]);
    kvutRelRb(chain);
    got = self->take(status, set);
  });
  kvds_name nameA, nameC, set;
  kvdbGetKvdsName(nameA, a);
  kvdbGetKvdsName(nameC, c);
  const kvds_point p = {-1, 4, 0}, q = {2, 6, 0};
  const double at[2] = {0.5, 9};
  ASSERT_EQ(kvedSSGet(L"C", p, q, nullptr, set), RTNORM);
  during(L"", [&] {
    EXPECT_EQ(kvedCommandS(RTSTR, L"TAKE", RTENAME, nameA, RTPICKS, set, RTLB, RTENAME, nameC, RTPOINT, at,
                           RTLE, RTSTR, L"", RTNONE),
              RTNORM);
  });
  EXPECT_EQ(got, (Ids{a, b, c}));
  EXPECT_EQ(chainText, L"0.5,9");
  kvedSSFree(set);
}

TEST_F(Selection, TurnedViewsAndUserSystems) {
  const KvDbObjectId a = line(0, 0, 10, 0), up = add(new KvDbLine({50, 0, 0}, {50, 0, 10}));
  kvedSetCurrentUCS(KvGeMatrix3d::translation({100, 0, 0}) *
                    KvGeMatrix3d::rotation(M_PI / 2, KvGeVector3d::kZAxis));
  EXPECT_EQ(within(L"C", -1, 89, 1, 101), Ids{a});  // world 0..11 by -1..1
  EXPECT_EQ(within(L"W", -1, 89, 1, 101), Ids{a});
  kvedSetCurrentUCS({});
  KvEdView view = kvedViewOf(database());
  view.twist = M_PI / 2;
  ASSERT_EQ(kvedSetViewOf(database(), view), Kvad::eOk);
  EXPECT_EQ(within(L"W", 11, -1, -1, 1), Ids{a});
  view.twist = 0;
  view.direction = {0, -1, 0};  // from the front
  ASSERT_EQ(kvedSetViewOf(database(), view), Kvad::eOk);
  const kvds_point p = {49, 0, 4}, q = {51, 0, 6};
  EXPECT_EQ(get(L"C", p, q), Ids{up});
}

}  // namespace
