// What may be given in place of a point: snaps, filters, offsets, distances, angles, points of a cursor.
#include <cmath>
#include <deque>

#include "host/editor/osnap.h"
#include "host/editor/selection.h"
#include "host/editor/ucs.h"
#include "tests/editor/editor_host.h"

namespace {

/// A front end: points of its cursor, and what is typed beside it.
class HandSource : public KvEdInputSource {
 public:
  explicit HandSource(std::deque<KvEdToken> tokens) : tokens_(std::move(tokens)) {}
  KvEdToken read(KvEdReadMode, const CString&) override {
    if (tokens_.empty()) return KvEdToken::of(KvEdToken::Kind::End);
    KvEdToken token = tokens_.front();
    tokens_.pop_front();
    return token;
  }
  bool isInteractive() const override { return true; }

 private:
  std::deque<KvEdToken> tokens_;
};

KvEdToken cursor(double x, double y, bool moves = false) {
  KvEdToken token = KvEdToken::of(KvEdToken::Kind::Point);
  token.numbers[0] = x;
  token.numbers[1] = y;
  token.dimensions = 3;
  token.origin = KvEdToken::Origin::Cursor;
  token.isTracking = moves;
  return token;
}

class PointEntryTest : public test::EditorHost {
 protected:
  static inline std::function<void()> reader;
  /// The point that a prompt with a base at 100,50 takes from a script.
  void expect(const wchar_t* script, double x, double y, double z = 0) {
    const kvds_point base = {100, 50, 0};
    during(script, [&] {
      kvds_point p = {-1, -1, -1};
      EXPECT_EQ(kvedGetPoint(base, L"P: ", p), RTNORM) << platform::utf8From(CString(script) + shown);
      EXPECT_NEAR(p[0], x, 1e-9) << platform::utf8From(script);
      EXPECT_NEAR(p[1], y, 1e-9) << platform::utf8From(script);
      EXPECT_NEAR(p[2], z, 1e-9) << platform::utf8From(script);
      EXPECT_NEAR(editor().lastPoint.x, x, 1e-9);
    });
  }
  KvGePoint3d byHand(std::deque<KvEdToken> tokens, const double* base = nullptr) {
    KvGePoint3d point(-1, -1, -1);
    handOver(std::move(tokens), [&] {
      kvds_point p = {-1, -1, -1};
      EXPECT_EQ(kvedGetPoint(base, L"P: ", p), RTNORM);
      point = {p[0], p[1], p[2]};
    });
    return point;
  }
  void handOver(std::deque<KvEdToken> tokens, std::function<void()> work) {
    during(L"", [&] {
      editor().pushSource(std::make_unique<HandSource>(std::move(tokens)));
      work();
    });
  }
};

TEST_F(PointEntryTest, FiltersOffsetsAndMiddles) {
  line(0, 0, 10, 0);
  circle(30, 20, 5);
  expect(L".x 3,4\n5,6,7\n", 3, 6, 7);
  expect(L".XY 3,4\n5,6,7\n", 3, 4, 7);
  expect(L".yz 3,4,9\n5,6,7\n", 5, 4, 9);
  expect(L".x end 9,0.1\n.y 1,8\n0,0,2\n", 10, 8, 2);  // filters and snaps within filters
  expect(L"from end 9.5,0.1\n@5<90\n", 10, 5);
  expect(L"FRO 1,1\n7,7\n", 7, 7);  // an absolute answer is where it says
  expect(L"_from 1,1\n4\n", 5, 1);  // as a distance, along X
  expect(L"mtp 0,0\n@10,4\n", 5, 2);
  expect(L"m2p cen 25,20\nmid 5,0.1\n", 17.5, 10);
  expect(L"tt 20,20\n@1,2\n", 21, 22);
  expect(L"end,mid 4.8,0.1\n", 5, 0);
  expect(L"end,mid 9.8,0.1\n", 10, 0);
  expect(L"nea,end 9.4,0.2\n", 10, 0);  // the nearest point counts only where there is no other
  expect(L".w\n.xx\nend,nonsense\n8,8\n", 8, 8);
}

TEST_F(PointEntryTest, EndlessNestingAndCancelsEnd) {
  CString deep;
  for (int i = 0; i < 2000; ++i) deep += L"mtp\n";
  during(deep, [] {
    kvds_point p;
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTCAN);
  });
  for (const wchar_t* script : {L"from 1,1\n^C\n", L".x ^C\n", L"mtp 1,1\n^C\n", L"<45\n^C\n", L"end ^C\n"})
    during(script, [&] {
      const kvds_point base = {0, 0, 0};
      kvds_point p;
      EXPECT_EQ(kvedGetPoint(base, L"P: ", p), RTCAN) << platform::utf8From(script);
    });
}

TEST_F(PointEntryTest, DistancesAndAnglesNeedABase) {
  expect(L"<90\n5\n", 100, 55);
  expect(L"<30\n110,50\n", 100 + 10 * std::cos(M_PI / 6) * std::cos(M_PI / 6),
         50 + 10 * std::cos(M_PI / 6) / 2);
  expect(L"7\n", 107, 50);  // nobody has shown a direction
  during(L"5\n<30\n1,2\n", [] {
    kvds_point p;
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
    EXPECT_EQ(p[0], 1);
  });
  // A corner, and a prompt that takes any text, are no rubber lines.
  during(L"5\n5\n1,2\n", [] {
    const kvds_point base = {100, 50, 0};
    kvds_point p;
    CString text;
    kvedInitGet(KVED_ARBITRARY, L"");
    EXPECT_EQ(kvedGetPoint(base, L"P: ", p), RTKWORD);
    kvedGetInput(text);
    EXPECT_EQ(text, L"5");
    EXPECT_EQ(kvedGetCorner(base, L"P: ", p), RTNORM);
    EXPECT_EQ(p[0], 1);
  });
}

TEST_F(PointEntryTest, ADistanceGoesOnTheWayOfTheCommand) {
  const auto walk = [&](const wchar_t* script, double x, double y) {
    during(script, [&] {
      kvds_point p = {0, 0, 0};
      EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
      int status = RTNORM;
      while ((status = kvedGetPoint(p, L"P: ", p)) == RTNORM) {
      }
      EXPECT_EQ(status, RTNONE);
      EXPECT_NEAR(p[0], x, 1e-9) << platform::utf8From(script);
      EXPECT_NEAR(p[1], y, 1e-9) << platform::utf8From(script);
    });
  };
  walk(L"0,0\n3,4\n5\n\n", 6, 8);
  walk(L"1,1\n5\n\n", 6, 1);  // the way of the command before isn't followed
  walk(L"0,0\n0,3\n-1\n\n", 0, 2);
  setVariable(L"ORTHOMODE", 1);
  walk(L"0,0\n3,4\n5\n\n", 3, 9);
  setVariable(L"SNAPANG", 30 * M_PI / 180);
  walk(L"0,0\n3,4\n5\n\n", 3 + 5 * std::cos(M_PI / 6), 4 + 2.5);
}

TEST_F(PointEntryTest, PointsOfACursorFollowTheSettings) {
  line(0, 0, 10, 0);
  const kvds_point base = {50, 50, 0};
  setVariable(L"OSMODE", *kvedSnapsOf(L"end,mid"));
  EXPECT_EQ(byHand({cursor(9.8, 0.1)}), KvGePoint3d(10, 0, 0));
  EXPECT_EQ(byHand({cursor(8, 0.1)}), KvGePoint3d(10, 0, 0));  // of the object under the cursor
  EXPECT_EQ(byHand({cursor(8, 3)}), KvGePoint3d(8, 3, 0));
  setVariable(L"SNAPUNIT", KvEdVarPoint{5, 2, 0});
  setVariable(L"SNAPMODE", 1);
  EXPECT_EQ(byHand({cursor(23, 21.2)}), KvGePoint3d(25, 22, 0));
  EXPECT_EQ(byHand({cursor(9.8, 0.1)}), KvGePoint3d(10, 0, 0));  // a snap goes before the grid
  setVariable(L"SNAPMODE", 0);
  setVariable(L"ORTHOMODE", 1);
  EXPECT_EQ(byHand({cursor(60, 53)}, base), KvGePoint3d(60, 50, 0));
  EXPECT_EQ(byHand({cursor(9.8, 0.1)}, base), KvGePoint3d(10, 0, 0));
  EXPECT_EQ(byHand({cursor(60, 53)}), KvGePoint3d(60, 53, 0));
  // A cursor that moves shows the direction of a distance.
  EXPECT_EQ(byHand({cursor(51, 90, true), KvEdToken::ofText(L"7")}, base), KvGePoint3d(50, 57, 0));
  setVariable(L"OSMODE", *kvedSnapsOf(L"end,mid") | kKvedSnapSuspended);
  EXPECT_EQ(byHand({cursor(9.8, 0.1)}), KvGePoint3d(9.8, 0.1, 0));
}

TEST_F(PointEntryTest, TypedPointsSnapWhereTheVariableSaysSo) {
  line(0, 0, 10, 0);
  setVariable(L"OSMODE", *kvedSnapsOf(L"end"));
  const auto script = [&] {
    double x = 0;
    during(L"9.8,0.1\n", [&] {
      kvds_point p;
      EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
      x = p[0];
    });
    return x;
  };
  const auto keyboard = [&] { return byHand({KvEdToken::ofText(L"9.8,0.1")}).x; };
  EXPECT_EQ(script(), 9.8);
  EXPECT_EQ(keyboard(), 9.8);
  setVariable(L"OSNAPCOORD", 2);
  EXPECT_EQ(script(), 10);
  EXPECT_EQ(keyboard(), 9.8);
  setVariable(L"OSNAPCOORD", 0);
  EXPECT_EQ(keyboard(), 10);
  during(L"9.8,0.1\n", [&] {  // a pick stays where it is
    kvds_name name;
    kvds_point p = {0, 0, 0};
    EXPECT_EQ(kvedEntSel(L"S: ", name, p), RTNORM);
    EXPECT_EQ(p[0], 9.8);
  });
  // Values that a program hands over are exact.
  const double exact[3] = {9.8, 0.1, 0};
  double got = 0;
  app.editor().commands().addCommand(L"TEST", L"INNER", L"INNER", 0, [] { reader(); });
  reader = [&] {
    kvds_point p;
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
    got = p[0];
  };
  during(L"", [&] { EXPECT_EQ(kvedCommandS(RTSTR, L"INNER", RT3DPOINT, exact, RTNONE), RTNORM); });
  EXPECT_EQ(got, 9.8);
}

TEST_F(PointEntryTest, LimitsRefuseWhatLiesOutside) {
  setVariable(L"LIMCHECK", 1);
  expect(L"-1,5\n500,5\n5,5\n", 5, 5);
  EXPECT_GE(shown.Find(L"Outside limits"), 0);
  during(L"500,5\n", [] {
    kvds_point p;
    kvedInitGet(KVED_NOLIMITS, L"");
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
  });
}

TEST_F(PointEntryTest, TransparentCommandsRunInBetween) {
  line(0, 0, 10, 0);
  editor().pushSource(std::make_unique<KvEdScriptSource>(
      L"LINE 0,50\n'LTSCALE 2\n'ZOOM E\n10,50\n'CIRCLE\n\n\n^C\nERASE '_PAN 0,0 1,1\n5,0\n\n"));
  app.run();
  EXPECT_EQ(database().ltscale(), 2);
  const auto* space = KvDbBlockTableRecord::cast(database().modelSpaceId().stub()->object);
  // The line was drawn, nothing repeated ZOOM, and the empty line behind the end repeated LINE without a
  // point.
  ASSERT_EQ(space->entities().length(), 1);
  EXPECT_EQ(KvDbLine::cast(space->entities()[0].stub()->object)->endPoint(), KvGePoint3d(10, 50, 0));
  EXPECT_GE(shown.Find(L"may not be invoked transparently"), 0);
  EXPECT_FALSE(editor().isCommandRunning());
}

}  // namespace
