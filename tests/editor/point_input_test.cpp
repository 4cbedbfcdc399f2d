// How points, distances and angles are written, and what the prompts make of answers.
#include <cmath>
#include <limits>
#include <numbers>

#include "host/editor/point_input.h"
#include "host/editor/ucs.h"
#include "host/editor/units.h"
#include "tests/editor/editor_host.h"

namespace {

constexpr double kPi = std::numbers::pi;

TEST(PointInput, Points) {
  KvEdPointContext plain;
  plain.lastPoint = {10, 20, 3};
  plain.elevation = 7;
  struct Row {
    const wchar_t* text;
    double x, y, z;
  };
  for (const Row& row : {Row{L"1,2", 1, 2, 7}, Row{L"1,2,0", 1, 2, 0}, Row{L"-.5,1e2,-3", -.5, 100, -3},
                         Row{L"1/2,2-1/4", .5, 2.25, 7}, Row{L"@", 10, 20, 3}, Row{L"@1,2", 11, 22, 3},
                         Row{L"@1,2,4", 11, 22, 7}, Row{L"5<90", 0, 5, 7}, Row{L"@5<180", 5, 20, 3},
                         Row{L"@2<0,1", 12, 20, 4}, Row{L"2<0<90", 0, 0, 2}, Row{L"@0<0", 10, 20, 3},
                         Row{L"*1,2", 1, 2, 0}, Row{L"@*1,1", 11, 21, 3}, Row{L"-5<0", -5, 0, 7}}) {
    const auto point = kvedParsePoint(row.text, plain);
    ASSERT_TRUE(point) << platform::utf8From(CString(row.text));
    EXPECT_NEAR(point->x, row.x, 1e-12) << platform::utf8From(CString(row.text));
    EXPECT_NEAR(point->y, row.y, 1e-12) << platform::utf8From(CString(row.text));
    EXPECT_NEAR(point->z, row.z, 1e-12) << platform::utf8From(CString(row.text));
  }
  for (const wchar_t* text :
       {L"",        L"1",     L"1,",      L",2",    L"1,2,3,4", L"1, 2", L"@@",  L"@@1,2",
        L"**1,2",   L"*",     L"1e300,0", L"nan,0", L"inf,1",   L"1<",   L"<90", L"1<2<3<4",
        L"1<2,3,4", L"1/0,2", L"0x10,2",  L"1;2",   L"1..2,3",  L"5<x"})
    EXPECT_FALSE(kvedParsePoint(text, plain)) << platform::utf8From(CString(text));
}

TEST(PointInput, TurnedAndMovedUserSystem) {
  KvEdPointContext context;
  context.userToWorld =
      KvGeMatrix3d::translation({100, 0, 0}) * KvGeMatrix3d::rotation(kPi / 2, KvGeVector3d::kZAxis);
  context.angleBase = kPi / 2;
  context.isClockwise = true;
  const auto polar = kvedParsePoint(L"10<90", context);  // from north a quarter to the right
  EXPECT_NEAR(polar->x, 10, 1e-12);
  EXPECT_NEAR(polar->y, 0, 1e-12);
  const auto world = kvedParsePoint(L"*100,5", context);
  EXPECT_NEAR(world->x, 5, 1e-12);
  EXPECT_NEAR(world->y, 0, 1e-12);
  const auto worldPolar = kvedParsePoint(L"@*5<90", context);  // the world knows no base angle
  EXPECT_NEAR(worldPolar->x, 5, 1e-12);
}

TEST(PointInput, FeetAndInches) {
  for (const auto& [text, inches] :
       {std::pair(L"5'", 60.0), std::pair(L"5'6", 66.0), std::pair(L"5'6\"", 66.0),
        std::pair(L"5'-6-1/2\"", 66.5), std::pair(L"6.5\"", 6.5), std::pair(L"1/2\"", 0.5),
        std::pair(L"-1'3", -15.0), std::pair(L"0'.5", 0.5)}) {
    const auto value = kvedParseNumber(text);
    ASSERT_TRUE(value) << platform::utf8From(CString(text));
    EXPECT_EQ(*value, inches) << platform::utf8From(CString(text));
  }
  for (const wchar_t* text :
       {L"'", L"\"", L"5''", L"5'6'", L"5\"6", L"5'--6", L"--5'", L"'6", L"5'x", L"1e300'", L"5'6\"\""})
    EXPECT_FALSE(kvedParseNumber(text)) << platform::utf8From(CString(text));
}

TEST(PointInput, LengthsAndAnglesAsTheyAreTold) {
  struct Row {
    double value;
    int unit, places;
    const wchar_t* text;
  };
  for (const Row& row :
       {Row{15.5, 1, 2, L"1.55E+01"}, Row{15.5, 2, 2, L"15.50"}, Row{15.5, 3, 2, L"1'-3.50\""},
        Row{15.5, 4, 4, L"1'-3 1/2\""}, Row{15.5, 5, 4, L"15 1/2"}, Row{-0.001, 2, 2, L"0.00"},
        Row{11.999, 4, 4, L"1'-0\""}, Row{11.999, 3, 1, L"1'-0.0\""}, Row{0.5, 4, 1, L"1/2\""},
        Row{0.5, 5, 3, L"1/2"}, Row{12.5, 4, 3, L"1'-0 1/2\""}, Row{-3.25, 5, 2, L"-3 1/4"},
        Row{-0.01, 5, 2, L"0"}, Row{1e300, 4, 4, nullptr}})
    if (row.text)
      EXPECT_EQ(kvedLengthText(row.value, row.unit, row.places), row.text);
    else
      EXPECT_FALSE(kvedLengthText(row.value, row.unit, row.places).IsEmpty());
  for (const Row& row :
       {Row{45, 0, 1, L"45.0"}, Row{45.5, 1, 0, L"46d"}, Row{45.5, 1, 2, L"45d30'"},
        Row{45.51, 1, 4, L"45d30'36\""}, Row{45.9999999, 1, 4, L"46d0'0\""}, Row{-1.5, 1, 1, L"-1d30'"},
        Row{45, 2, 0, L"50g"}, Row{180, 3, 2, L"3.14r"}, Row{0, 4, 4, L"E"}, Row{90, 4, 4, L"N"},
        Row{360, 4, 0, L"E"}, Row{120, 4, 0, L"N 30d W"}, Row{315, 4, 4, L"S 45d0'0\" E"},
        Row{-135, 4, 0, L"S 45d W"}, Row{10.0001, 1, 6, L"10d0'0.36\""}})
    EXPECT_EQ(kvedAngleText(row.value * kPi / 180, row.unit, row.places), row.text);
}

TEST(PointInput, Angles) {
  struct Row {
    const wchar_t* text;
    int units;
    double degrees;
  };
  for (const Row& row :
       {Row{L"45", 0, 45}, Row{L"-45", 0, -45}, Row{L"50", 2, 45}, Row{L"3.141592653589793", 3, 180},
        Row{L"50g", 0, 45}, Row{L"0.5r", 0, 90 / kPi}, Row{L"45d", 3, 45}, Row{L"45d30'", 0, 45.5},
        Row{L"45D30'36\"", 1, 45.51}, Row{L"-1d30'", 1, -1.5}, Row{L"-0d30'", 1, -0.5}, Row{L"N", 4, 90},
        Row{L"e", 0, 0}, Row{L"N45dE", 4, 45}, Row{L"n30w", 4, 120}, Row{L"S45dE", 4, 315},
        Row{L"S0dE", 4, 270}}) {
    const auto angle = kvedParseAngle(row.text, row.units);
    ASSERT_TRUE(angle) << platform::utf8From(CString(row.text));
    EXPECT_NEAR(*angle * 180 / kPi, row.degrees, 1e-12) << platform::utf8From(CString(row.text));
  }
  for (const wchar_t* text :
       {L"", L"d", L"45d60'", L"45d-3'", L"45d30", L"E45N", L"N91dE", L"N45", L"1e300", L"x"})
    EXPECT_FALSE(kvedParseAngle(text, 0)) << platform::utf8From(CString(text));
}

class Prompts : public test::EditorHost {
 protected:
  static inline std::function<void()> inner;
};

TEST_F(Prompts, PointsAreKeptAndToldOf) {
  struct Monitor : KvEdInputPointMonitor {
    std::vector<KvGePoint3d> seen;
    Kvad::ErrorStatus monitorInputPoint(const KvEdInputPoint& input) override {
      seen.push_back(input.pointComputed() ? input.computedPoint() : input.rawPoint());
      return Kvad::eOk;
    }
  } monitor;
  auto& points = *app.documents().curDocument()->inputPointManager();
  ASSERT_EQ(points.addPointMonitor(&monitor), Kvad::eOk);
  EXPECT_EQ(points.addPointMonitor(&monitor), Kvad::eDuplicateKey);
  during(L"3,4\n@1,0\n1e300,0\nnan,nan\nhello\n\n", [] {
    kvds_point p = {-1, -1, -1};
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
    EXPECT_EQ(p[0], 3);
    EXPECT_EQ(kvedGetCorner(p, L"C: ", p), RTNORM);
    EXPECT_EQ(p[0], 4);
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNONE);  // three slips, then Enter
    EXPECT_EQ(p[0], 4);
    EXPECT_EQ(kvedGetCorner(nullptr, L"C: ", p), RTERROR);
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTCAN);  // nobody is left to answer
  });
  EXPECT_EQ(monitor.seen.size(), 2u);
  EXPECT_EQ(editor().lastPoint, KvGePoint3d(4, 4, 0));
  EXPECT_EQ(points.removePointMonitor(&monitor), Kvad::eOk);
  EXPECT_EQ(points.removePointMonitor(&monitor), Kvad::eKeyNotFound);
}

TEST_F(Prompts, KeywordsFlagsAndCancel) {
  during(L"up\n_DO\nfree\n0\n-1\n\n5\n^C\n", [] {
    kvds_point p;
    CString word;
    double value = 0;
    kvedInitGet(0, L"Up DOwn");
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTKWORD);
    kvedGetInput(word);
    EXPECT_EQ(word, L"Up");
    kvedInitGet(0, L"Up DOwn");
    EXPECT_EQ(kvedGetKword(L"W: ", word), RTNORM);
    EXPECT_EQ(word, L"DOwn");
    kvedInitGet(KVED_ARBITRARY, L"Up");
    EXPECT_EQ(kvedGetDist(nullptr, L"D: ", &value), RTKWORD);
    kvedGetInput(word);
    EXPECT_EQ(word, L"free");
    kvedInitGet(KVED_NONULL | KVED_NOZERO | KVED_NONEG, L"");
    EXPECT_EQ(kvedGetDist(nullptr, L"D: ", &value), RTNORM);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(kvedGetDist(nullptr, L"D: ", &value), RTCAN);
    EXPECT_EQ(value, 5);
  });
}

TEST_F(Prompts, DistancesAndAnglesByPoints) {
  struct Row {
    const wchar_t* script;
    bool hasBase;
    double distance, angle, orient;
  };
  setVariable(L"ANGBASE", kPi / 2);
  for (const Row& row :
       {Row{L"3,4\n", true, 5, std::atan2(4, 3) - kPi / 2 + 2 * kPi, std::atan2(4, 3)},
        Row{L"1,1\n@0,2\n", false, 2, 0, kPi / 2}, Row{L"1,1\n1,1\n", false, 0, 2 * kPi - kPi / 2, 0}}) {
    const kvds_point origin = {0, 0, 0};
    const double* base = row.hasBase ? origin : nullptr;
    const auto expect = [&](int (*get)(const double*, const wchar_t*, double*), double wanted) {
      during(row.script, [&] {
        double value = -1;
        EXPECT_EQ(get(base, L"? ", &value), RTNORM);
        EXPECT_NEAR(value, wanted, 1e-12);
      });
    };
    expect(kvedGetDist, row.distance);
    expect(kvedGetAngle, row.angle);
    expect(kvedGetOrient, row.orient);
  }
}

TEST_F(Prompts, WrittenAnglesFollowDirectionAndBase) {
  struct Row {
    const wchar_t* text;
    int isClockwise;
    double angle, orient;  // degrees
  };
  setVariable(L"ANGBASE", kPi / 2);
  for (const Row& row :
       {Row{L"0", 0, 0, 90}, Row{L"-90", 0, 270, 0}, Row{L"180", 0, 180, 270}, Row{L"90", 1, 270, 0},
        Row{L"<30", 0, 30, 120}, Row{L"300", 0, 300, 30}, Row{L"360", 0, 360, 90}, Row{L"N", 0, 90, 180}}) {
    setVariable(L"ANGDIR", row.isClockwise);
    during(CString(row.text) + L"\n" + row.text + L"\n", [&] {
      double angle = 0, orient = 0;
      EXPECT_EQ(kvedGetAngle(nullptr, L"A: ", &angle), RTNORM);
      EXPECT_EQ(kvedGetOrient(nullptr, L"A: ", &orient), RTNORM);
      EXPECT_NEAR(angle * 180 / kPi, row.angle, 1e-9) << platform::utf8From(CString(row.text));
      EXPECT_NEAR(orient * 180 / kPi, row.orient, 1e-9) << platform::utf8From(CString(row.text));
    });
  }
}

TEST_F(Prompts, BuffersTakeWhatFitsOrNothing) {
  during(L"abc\nabc\n", [] {
    wchar_t buffer[8] = L"xxx";
    EXPECT_EQ(kvedGetString(0, L"S: ", buffer, 4), RTNORM);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(kvedGetString(0, L"S: ", buffer, 3), RTERROR);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(kvedGetInput(buffer, 0), RTERROR);
  });
}

TEST_F(Prompts, ProgramsHandOverValues) {
  const kvds_point flat = {1, 2, 0};
  const double far[3] = {1e300, 0, 0};
  double value = 0;
  kvds_point p = {0, 0, 0};
  setVariable(L"ELEVATION", 9.0);
  during(L"5,5\n", [&] {
    inner = [&] {
      EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
      EXPECT_EQ(kvedGetAngle(nullptr, L"A: ", &value), RTNORM);
    };
    app.editor().commands().addCommand(L"TEST", L"INNER", L"INNER", 0, [] { inner(); });
    EXPECT_EQ(kvedCommandS(RTSTR, L"INNER", RT3DPOINT, far, RTPOINT, flat, RTANG, 0.25, RTNONE), RTNORM);
  });
  EXPECT_EQ(p[1], 2);
  EXPECT_EQ(p[2], 9);  // a flat point stands at the elevation; the far one was refused
  EXPECT_EQ(value, 0.25);
}

TEST_F(Prompts, ObjectSnapsMakeExactPoints) {
  line(0, 0, 10, 0);
  line(10, -5, 10, 5);
  circle(0, 20, 5);
  struct Row {
    const wchar_t* script;
    double x, y;
  };
  for (const Row& row :
       {Row{L"end 8.0,0.1\n", 10, 0}, Row{L"_mid 3,0.1\n", 5, 0}, Row{L"MIDPOINT 3,0.1\n", 5, 0},
        Row{L"cen 4.9,20\n", 0, 20}, Row{L"qua 4.9,20.5\n", 5, 20}, Row{L"nea 3,0.3\n", 3, 0},
        Row{L"int 10.1,0.2\n", 10, 0}, Row{L"non 3,0.3\n", 3, 0.3}, Row{L"per 3,0.3\n", 7, 0},
        Row{L"tan 4.8,20.5\n", 5, 20}}) {
    // Perpendiculars and tangents come from the last point: below the middle of the line, beside the circle.
    editor().lastPoint = row.script[0] == L't' ? KvGePoint3d(5, 10, 0) : KvGePoint3d(7, -30, 0);
    during(row.script, [&] {
      kvds_point p = {-1, -1, 0};
      EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
      EXPECT_NEAR(p[0], row.x, 1e-9) << platform::utf8From(CString(row.script));
      EXPECT_NEAR(p[1], row.y, 1e-9) << platform::utf8From(CString(row.script));
    });
  }
  during(L"end 200,200\n1,1\n", [] {
    kvds_point p = {-1, -1, 0};
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);  // nothing there: asked again
    EXPECT_EQ(p[0], 1);
  });
}

TEST_F(Prompts, PassingBetweenSystems) {
  const KvGeMatrix3d turned =
      KvGeMatrix3d::translation({10, 0, 0}) * KvGeMatrix3d::rotation(kPi / 2, KvGeVector3d::kZAxis);
  ASSERT_EQ(kvedSetCurrentUCS(turned), Kvad::eOk);
  EXPECT_EQ(kvedSetCurrentUCS(KvGeMatrix3d::scaling(2)), Kvad::eInvalidInput);
  KvGeMatrix3d mirrored, read;
  mirrored.entry[0][0] = -1;
  EXPECT_EQ(kvedSetCurrentUCS(mirrored), Kvad::eInvalidInput);
  mirrored.entry[0][3] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(kvedSetCurrentUCS(mirrored), Kvad::eInvalidInput);
  ASSERT_EQ(kvedGetCurrentUCS(read), Kvad::eOk);
  EXPECT_TRUE(read.isEqualTo(turned));

  kvds_point p = {1, 2, 3};
  ASSERT_TRUE(kvdbUcs2Wcs(p, p, false));
  EXPECT_NEAR(p[0], 8, 1e-12);
  EXPECT_NEAR(p[1], 1, 1e-12);
  ASSERT_TRUE(kvdbWcs2Ucs(p, p, true));  // as a displacement
  EXPECT_NEAR(p[0], 1, 1e-12);
  EXPECT_NEAR(p[1], -8, 1e-12);
  EXPECT_FALSE(kvdbUcs2Wcs(nullptr, p, false));

  resbuf* world = kvutBuildList(RTSHORT, 0, 0);
  resbuf* user = kvutBuildList(RTSHORT, 1, 0);
  resbuf* bad = kvutBuildList(RTSHORT, 9, 0);
  const double down[3] = {0, 0, -1};
  resbuf* plane = kvutBuildList(RT3DPOINT, down, 0);
  kvds_point from = {1, 2, 3}, to = {0, 0, 0};
  EXPECT_EQ(kvedTrans(from, user, world, 0, to), RTNORM);
  EXPECT_NEAR(to[0], 8, 1e-12);
  EXPECT_EQ(kvedTrans(from, plane, world, 0, to), RTNORM);
  EXPECT_NEAR(to[0], -1, 1e-12);
  EXPECT_NEAR(to[2], -3, 1e-12);
  EXPECT_EQ(kvedTrans(from, bad, world, 0, to), RTERROR);
  EXPECT_EQ(kvedTrans(from, nullptr, world, 0, to), RTERROR);
  for (resbuf* chain : {world, user, bad, plane}) kvutRelRb(chain);
}

}  // namespace
