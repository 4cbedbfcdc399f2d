// Drags: the sequence of samples, what each answer ends with, what is shown.
#include "host/editor/jig.h"

#include <numbers>

#include "host/editor/ucs.h"
#include "tests/editor/editor_host.h"

namespace {

constexpr double kPi = std::numbers::pi;

/// Points of a moving cursor and answers, as a window would send them.
class CursorSource : public KvEdInputSource {
 public:
  explicit CursorSource(std::vector<KvEdToken> tokens) : tokens_(std::move(tokens)) {}
  KvEdToken read(KvEdReadMode, const CString&) override {
    return at_ < tokens_.size() ? tokens_[at_++] : KvEdToken::of(KvEdToken::Kind::End);
  }
  static KvEdToken at(double x, double y, bool isTracking) {
    KvEdToken token = KvEdToken::of(KvEdToken::Kind::Point);
    token.dimensions = 3;
    token.numbers[0] = x;
    token.numbers[1] = y;
    token.isTracking = isTracking;
    return token;
  }

 private:
  std::vector<KvEdToken> tokens_;
  std::size_t at_ = 0;
};

class MoveJig : public KvEdJig {
 public:
  DragStatus sampler() override {
    ++samples;
    setUserInputControls(controls);
    setKeywordList(L"A Z V B S");
    if (isTurning) return acquireAngle(angle, base);
    return hasBase ? acquirePoint(point, base) : acquirePoint(point);
  }
  bool update() override {
    ++updates;
    line.setEndPoint(point);
    return true;
  }
  KvDbEntity* entity() const override { return &line; }

  mutable KvDbLine line;
  KvGePoint3d point, base;
  double angle = 0;
  bool isTurning = false, hasBase = false;
  int controls = 130, samples = 0, updates = 0;
};

class Jigs : public test::EditorHost {
 protected:
  /// Status, then samples and updates of one drag after the other.
  CString drags(MoveJig& jig, const wchar_t* script) {
    CString text;
    during(script, [&] {
      for (int i = 0; i < 4; ++i) {
        jig.samples = jig.updates = 0;
        const int status = jig.drag();
        text.AppendFormat(L"%d:%d/%d ", status, jig.samples, jig.updates);
        if (status == KvEdJig::kCancel) break;
      }
    });
    return text;
  }
};

TEST_F(Jigs, StatusesOfAnswers) {
  struct Row {
    const wchar_t* script;
    int controls;
    const wchar_t* wanted;
  };
  for (const Row& row : {
           Row{L"1,2\n^C\n", 130, L"0:1/1 -4:1/0 "},
           Row{L"1,2\n1,2\n^C\n", 130,
               L"0:1/1 0:1/0 -4:1/0 "},  // the same again is an answer without an update
           Row{L"a\nZ\n_v\nS\n", 130, L"1:1/0 2:1/0 3:1/0 5:1/0 "},
           Row{L"b\n\n^C\n", 130, L"4:1/0 -1:1/0 -4:1/0 "},
           Row{L"\nx\n3,4\n", 128, L"0:1/1 -4:1/0 "},  // nothing and nonsense are asked for again
           Row{L"", 130, L"-4:1/0 "},
       }) {
    MoveJig jig;
    jig.controls = row.controls;
    EXPECT_EQ(drags(jig, row.script), CString(row.wanted)) << platform::utf8From(CString(row.script));
  }
}

TEST_F(Jigs, CursorMovesAreSampledUntilTheAnswer) {
  MoveJig jig;
  using Source = CursorSource;
  during(L"", [&] {
    editor().pushSource(std::make_unique<CursorSource>(std::vector<KvEdToken>{
        Source::at(1, 0, true), Source::at(2, 0, true), Source::at(2, 0, true), Source::at(3, 0, false)}));
    EXPECT_EQ(jig.drag(), KvEdJig::kNormal);
  });
  EXPECT_EQ(jig.samples, 4);
  EXPECT_EQ(jig.updates, 3);  // the cursor stood still once
  EXPECT_EQ(jig.point, KvGePoint3d(3, 0, 0));
  EXPECT_EQ(editor().screen().dragUpdates, 3);
  EXPECT_EQ(kvedDraggedEntity(), nullptr);
  EXPECT_EQ(editor().lastPoint, KvGePoint3d(3, 0, 0));

  // Plain prompts only tell the monitors of it.
  during(L"", [&] {
    editor().pushSource(std::make_unique<CursorSource>(
        std::vector<KvEdToken>{Source::at(8, 0, true), Source::at(9, 0, false), Source::at(4, 4, true)}));
    kvds_point p;
    EXPECT_EQ(kvedGetPoint(nullptr, L"P: ", p), RTNORM);
    EXPECT_EQ(p[0], 9);
    int type = 0;
    resbuf result{};
    EXPECT_EQ(kvedGrRead(1, &type, &result), RTNORM);
    EXPECT_EQ(type, 5);
    EXPECT_EQ(result.resval.rpoint[1], 4);
    EXPECT_EQ(kvedGrRead(1, &type, &result), RTCAN);
  });
  during(L"7,8\nq\n", [] {
    int type = 0;
    resbuf result{};
    EXPECT_EQ(kvedGrRead(0, &type, &result), RTNORM);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(kvedGrRead(0, &type, &result), RTNORM);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(result.resval.rint, L'q');
    EXPECT_EQ(kvedGrRead(0, nullptr, &result), RTERROR);
  });
}

TEST_F(Jigs, PointsAreInTheWorldAnglesInTheUserSystem) {
  kvedSetCurrentUCS(KvGeMatrix3d::translation({100, 0, 0}) *
                    KvGeMatrix3d::rotation(kPi / 2, KvGeVector3d::kZAxis));
  MoveJig jig;
  drags(jig, L"1,0\n");
  EXPECT_NEAR(jig.point.x, 100, 1e-12);
  EXPECT_NEAR(jig.point.y, 1, 1e-12);
  jig.hasBase = true;
  jig.base = {50, 0, 0};
  drags(jig, L"@2,0\n");  // from the base
  EXPECT_NEAR(jig.point.x, 50, 1e-12);
  EXPECT_NEAR(jig.point.y, 2, 1e-12);
  jig.isTurning = true;
  jig.base = {100, 0, 0};
  drags(jig, L"0,5\n");
  EXPECT_NEAR(jig.angle, kPi / 2, 1e-12);
  drags(jig, L"30\n");
  EXPECT_NEAR(jig.angle, kPi / 6, 1e-12);
}

TEST_F(Jigs, AppendHandsTheEntityOver) {
  struct Owned : KvEdJig {
    KvDbLine* made = new KvDbLine({0, 0, 0}, {1, 1, 0});
    KvDbEntity* entity() const override { return made; }
  } jig;
  const KvDbObjectId id = jig.append();
  EXPECT_TRUE(id.isValid());
  EXPECT_TRUE(jig.append().isNull());  // it stands there already
  MoveJig none;
  EXPECT_EQ(static_cast<KvEdJig&>(none).KvEdJig::entity(), nullptr);
}

}  // namespace
