// Prompts in world coordinates, sets and ids, extents, and selecting at a point and on the screen.
#include <cmath>
#include <functional>
#include <numbers>

#include "host/app/longtransaction.h"
#include "host/base/context.h"
#include "host/database/dictionary.h"
#include "host/editor/prompts.h"
#include "host/editor/selection.h"
#include "host/editor/ucs.h"
#include "host/editor/views.h"
#include "host/entities/viewport.h"
#include "host/io/drawing_file.h"
#include "module/select/internal/screen_view.h"
#include "module/select/picking.h"
#include "module/select/prompts.h"
#include "module/select/sets.h"
#include "module/toolkit/guards.h"
#include "tests/toolkit/support.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180;

class SelectTest : public test::ToolkitTest {
 protected:
  SelectTest() {
    host->editor().commands().addCommand(L"TEST", L"BODY", L"BODY", 0, [] { body()(); });
  }

  /// Runs the function inside a command that has the script as its input.
  void during(const wchar_t* script, std::function<void()> work) {
    body() = std::move(work);
    host->editor().pushSource(std::make_unique<KvEdScriptSource>(CString(script)));
    host->editor().runCommand(L"BODY");
    host->editor().dropInput();
  }
  KvDbObjectId line(double x1, double y1, double x2, double y2) {
    return add(new KvDbLine({x1, y1, 0}, {x2, y2, 0}));
  }
  /// A set of these entities; freed by the test.
  void fill(std::initializer_list<KvDbObjectId> ids, kvds_name set) {
    KvArray<KvDbObjectId> array;
    for (KvDbObjectId id : ids) array.append(id);
    EXPECT_EQ(IM_ObjectIdArrayToAdsSet(array, set), array.length());
  }
  int setCount() { return host->editor().selections().count(); }
  int variable(const wchar_t* name) {
    KvEdVarValue value;
    host->editor().variables().get(name, value);
    return std::get<int>(value);
  }
  /// Shows the square from (0,0) to (100,100).
  void lookAtSquare() {
    host->editor().screen().size = {1000, 1000};
    KvEdView view;
    view.center = {50, 50};
    view.height = 100;
    EXPECT_EQ(kvedSetViewOf(drawing(), view), Kvad::eOk);
  }

 private:
  static std::function<void()>& body() {
    static std::function<void()> work;
    return work;
  }
};

/// In a user system at (100,50,0) turned by 90 degrees: user (x,y) is world (100-y, 50+x).
class TurnedTest : public SelectTest {
 protected:
  TurnedTest() : system_(KvGePoint3d(100, 50, 0), 90 * kDegree) {}

 private:
  ImUcsSet system_;
};

void expectPoint(const double* p, double x, double y, double z = 0) {
  EXPECT_NEAR(p[0], x, 1e-9);
  EXPECT_NEAR(p[1], y, 1e-9);
  EXPECT_NEAR(p[2], z, 1e-9);
}

TEST_F(TurnedTest, PointsComeInTheWorld) {
  during(L"3,4\n3,4\n10,0\n5,5\n6,6\n", [&] {
    kvds_point p = {0, 0, 0};
    const double user[3] = {-10, 70, 0}, world[3] = {30, 40, 0};
    EXPECT_EQ(IM_ADS_GETPOINT(nullptr, L"", p), RTNORM);
    expectPoint(p, 96, 53);
    EXPECT_EQ(IM_ADS_GETPOINT(user, L"", p), RTNORM);
    expectPoint(p, 96, 53);
    EXPECT_EQ(IM_ADS_GETPOINT_WCS(world, L"", p), RTNORM);
    expectPoint(p, 100, 60);
    EXPECT_EQ(IM_ADS_GETCORNER(user, L"", p), RTNORM);
    expectPoint(p, 95, 55);
    EXPECT_EQ(IM_ADS_GETCORNER_WCS(world, L"", p), RTNORM);
    expectPoint(p, 94, 56);
  });
}

TEST_F(TurnedTest, BasesAreReadAsTold) {
  const double point[3] = {100, 60, 0};  // in the world; user (10,0)
  during(L"10,3\n10,3\n10,3\n", [&] {
    double value = 0;
    EXPECT_EQ(IM_ADS_GETDIST(point, L"", &value), RTNORM);
    EXPECT_NEAR(value, 3, 1e-9);
    EXPECT_EQ(IM_ADS_GETANGLE(point, L"", &value), RTNORM);  // 90 in the user system
    EXPECT_NEAR(value, 180 * kDegree, 1e-9);
  });
  EXPECT_EQ(point[0], 100);
}

TEST_F(TurnedTest, AnglesCountInTheWorld) {
  const struct {
    const wchar_t* typed;
    double degrees;
  } cases[] = {{L"0\n", 90}, {L"270\n", 360}, {L"300\n", 30}, {L"350\n", 80}};
  for (const auto& one : cases) {
    double angle = -1;
    during(one.typed, [&] { EXPECT_EQ(IM_ADS_GETANGLE(nullptr, L"", &angle), RTNORM); });
    EXPECT_NEAR(std::remainder(angle - one.degrees * kDegree, 360 * kDegree), 0, 1e-9) << one.degrees;
    EXPECT_LE(angle, 6.2831853073);
  }
  double kept = 5;
  during(L"\n", [&] { EXPECT_EQ(IM_ADS_GETANGLE(nullptr, L"", &kept), RTNONE); });
  EXPECT_EQ(kept, 5);
}

TEST_F(TurnedTest, PicksTellWherePicked) {
  lookAtSquare();
  const KvDbObjectId id = line(10, 10, 90, 10);
  kvds_name name = {0, 0};
  during(L"-40,50\n-40,50\n-40,50\n-20,50\n-20,50\n", [&] {  // world (50,10), twice beside it
    kvds_point p = {0, 0, 0};
    kvds_matrix matrix;
    double axes[4][3];
    resbuf* containers = nullptr;
    KvDbObjectId picked;
    EXPECT_EQ(IM_ADS_ENTSEL(L"", name, p), RTNORM);
    kvdbGetObjectId(picked, name);
    EXPECT_EQ(picked, id);
    expectPoint(p, 50, 10);
    EXPECT_EQ(IM_ADS_NENTSEL(L"", name, p, axes, &containers), RTNORM);
    expectPoint(p, 50, 10);
    EXPECT_EQ(containers, nullptr);
    EXPECT_EQ(IM_ADS_NENTSELP(L"", name, p, 0, matrix, &containers), RTNORM);
    expectPoint(p, 50, 10);
    // Nothing there: the point of one stays in user coordinates, that of the other comes back.
    p[0] = 1, p[1] = 2;
    EXPECT_EQ(IM_ADS_ENTSEL(L"", name, p), RTERROR);
    expectPoint(p, -48, 99);
    p[0] = 1, p[1] = 2;
    EXPECT_EQ(IM_ADS_NENTSELP(L"", name, p, 0, matrix, &containers), RTERROR);
    expectPoint(p, 1, 2);
    p[0] = 50, p[1] = 10;
    EXPECT_EQ(IM_ADS_NENTSELP(L"", name, p, 1, matrix, nullptr), RTNORM);  // at the point, without asking
    kvdbGetObjectId(picked, name);
    EXPECT_EQ(picked, id);
  });
}

TEST_F(TurnedTest, DrawsAndReadsInTheWorld) {
  const double from[3] = {1, 2, 0}, to[3] = {3, 4, 0};
  EXPECT_EQ(IM_ADS_GRDRAW(from, to, 3, 0), RTNORM);
  ASSERT_EQ(host->editor().screen().lines.size(), 1u);
  EXPECT_NEAR(host->editor().screen().lines[0].from.x, 1, 1e-9);
  EXPECT_NEAR(host->editor().screen().lines[0].to.y, 4, 1e-9);
  EXPECT_EQ(IM_ADS_GRDRAW(nullptr, to, 3, 0), RTERROR);
  during(L"3,4\n", [&] {
    int type = 0;
    resbuf result{};
    EXPECT_EQ(IM_ADS_GRREAD(0, &type, &result), RTNORM);
    EXPECT_EQ(type, 3);
    expectPoint(result.resval.rpoint, 96, 53);
  });
}

TEST_F(SelectTest, NullsAndCancelsComeBackAsStatuses) {
  double value = 7;
  kvds_point p = {7, 7, 7};
  EXPECT_NE(IM_ADS_GETPOINT(nullptr, L"", nullptr), RTNORM);
  EXPECT_NE(IM_ADS_GETCORNER(nullptr, L"", p), RTNORM);
  EXPECT_NE(IM_ADS_GETANGLE(nullptr, L"", nullptr), RTNORM);
  EXPECT_NE(IM_ADS_GETDIST(nullptr, L"", nullptr), RTNORM);
  EXPECT_NE(IM_ADS_ENTSEL(L"", nullptr, nullptr), RTNORM);
  EXPECT_NE(IM_ADS_NENTSELP(L"", nullptr, nullptr, 1, nullptr, nullptr), RTNORM);
  EXPECT_NE(IM_ADS_NENTSEL(L"", nullptr, nullptr, nullptr, nullptr), RTNORM);
  EXPECT_NE(IM_ADS_GRREAD(0, nullptr, nullptr), RTNORM);
  EXPECT_NE(IM_ADS_GRDRAW(nullptr, p, 1, 0), RTNORM);
  EXPECT_NE(IM_ADS_GRDRAW(p, nullptr, 1, 0), RTNORM);
  kvds_name set = {0, 0};
  EXPECT_NE(IM_ADS_SSADD(set, nullptr, nullptr), RTNORM);
  EXPECT_EQ(IM_ssAdd(nullptr, set), 0);
  EXPECT_EQ(IM_ssDeleteEntity(static_cast<long long*>(nullptr)), 0);
  EXPECT_EQ(IM_IsEntityInWorkSet(nullptr), 0);
  EXPECT_EQ(IM_SSExtent(nullptr, p, p), RTNONE);
  EXPECT_EQ(IM_SSExtent(set, nullptr, p), RTERROR);
  EXPECT_EQ(IM_EntExtent(set, p, nullptr), RTERROR);
  EXPECT_TRUE(IM_handent(nullptr, L"no handle").isNull());
  EXPECT_TRUE(IM_handent(nullptr, L"FFFFFFFFFFFFFFFFFFFFFFFF").isNull());
  during(L"", [&] {
    EXPECT_EQ(IM_ADS_GETPOINT(nullptr, L"", p), RTCAN);
    EXPECT_EQ(IM_ADS_GETDIST(nullptr, L"", &value), RTCAN);
  });
  expectPoint(p, 7, 7, 7);
  EXPECT_EQ(value, 7);
}

TEST_F(SelectTest, InputKnowsItsBuffers) {
  wchar_t buffer[4] = L"xyz";
  during(L"abc\nabcd\nsecond\n", [&] {
    EXPECT_EQ(IM_EdGetString(0, L"", buffer, 4), RTNORM);
    EXPECT_EQ(CString(buffer), L"abc");
    EXPECT_EQ(IM_EdGetString(0, L"", buffer, 4), RTERROR);
    EXPECT_EQ(buffer[0], 0);
    kvedInitGet(0, L"First Second");
    wchar_t word[8] = L"";
    EXPECT_EQ(IM_EdGetKword(L"", word, 8), RTNORM);
    EXPECT_EQ(CString(word), L"Second");
  });
  EXPECT_EQ(IM_EdGetInput(nullptr, 4), RTERROR);
}

// --- Sets

TEST_F(SelectTest, AddingMakesASetWhereThereIsNone) {
  kvds_name set = {0, 0}, name;
  EXPECT_EQ(IM_ADS_SSADD(nullptr, nullptr, set), RTNORM);
  EXPECT_TRUE(kvds_isNull(set));
  EXPECT_EQ(IM_ADS_SSADD(nullptr, nullptr, nullptr), RTNORM);
  kvdbGetKvdsName(name, line(0, 0, 1, 0));
  EXPECT_EQ(IM_ADS_SSADD(name, set, set), RTNORM);
  EXPECT_EQ(IM_ssLength(set), 1);
  EXPECT_EQ(IM_ADS_SSADD(name, set, set), RTNORM);
  EXPECT_EQ(IM_ssLength(set), 1);
  kvds_name other = {0, 0};
  EXPECT_EQ(IM_ADS_SSADD(name, nullptr, other), RTNORM);
  EXPECT_EQ(IM_ssLength(other), 1);
  EXPECT_EQ(setCount(), 2);  // no empty one was left behind
  kvedSSFree(other);
  const kvds_name strange = {0x7FFFFFFF, 3};
  EXPECT_EQ(IM_ADS_SSADD(strange, set, set), RTERROR);
  EXPECT_EQ(IM_ADS_SSADD(name, set, nullptr), RTERROR);
  kvedSSFree(set);
  EXPECT_EQ(setCount(), 0);
}

TEST_F(SelectTest, LengthsOfWhatIsNoSet) {
  const kvds_name none = {0, 0}, strange = {4711, 3};
  long length = 9;
  EXPECT_EQ(IM_ssLength(nullptr), 0);
  EXPECT_EQ(IM_ssLength(none), 0);
  EXPECT_EQ(IM_ssLength(strange), 0);
  EXPECT_EQ(IM_EdSSLength(strange, &length), RTERROR);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(IM_EdSSLength(nullptr, nullptr), RTERROR);
}

TEST_F(SelectTest, MovingOneSetIntoAnother) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 1, 1, 1), c = line(0, 2, 1, 2);
  kvds_name source = {0, 0}, target = {0, 0};
  fill({a, b}, source);
  fill({b, c}, target);
  EXPECT_EQ(IM_ssAdd(source, target), 1);
  EXPECT_TRUE(kvds_isNull(source));
  KvArray<KvDbObjectId> ids;
  EXPECT_EQ(IM_AdsSetToObjectIdArray(target, ids), 3);
  EXPECT_EQ(ids[0], b);
  EXPECT_EQ(ids[2], a);
  EXPECT_EQ(setCount(), 1);
  EXPECT_EQ(IM_ssAdd(source, target), 1);  // nothing to move
  EXPECT_EQ(IM_ssAdd(nullptr, target), 0);
  EXPECT_EQ(IM_ssAdd(target, nullptr), 0);
  EXPECT_EQ(IM_ssAdd(target, target), 1);
  EXPECT_EQ(IM_ssLength(target), 3);
  kvds_name empty = {0, 0};
  EXPECT_EQ(IM_ssAdd(target, empty), 1);  // into none yet
  EXPECT_EQ(IM_ssLength(empty), 3);
  kvedSSFree(empty);
}

TEST_F(SelectTest, DeletingMembers) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 1, 1, 1), c = line(0, 2, 1, 2);
  kvds_name set = {0, 0};
  EXPECT_EQ(IM_ssDeleteEntity(static_cast<long long*>(nullptr)), 0);
  EXPECT_EQ(IM_ssDeleteEntity(set), 1);
  fill({a, b}, set);
  EXPECT_EQ(IM_entDel(a), RTNORM);
  EXPECT_EQ(IM_ssDeleteEntity(set), 1);  // the first is gone already, and stays so
  EXPECT_FALSE(a.isValid());
  EXPECT_FALSE(b.isValid());
  EXPECT_TRUE(kvds_isNull(set));
  EXPECT_EQ(setCount(), 0);
  EXPECT_EQ(IM_entDel(KvDbObjectId()), RTNONE);
  EXPECT_EQ(IM_entDel(a), RTNONE);
  KvArray<KvDbObjectId> ids;
  ids.append(KvDbObjectId());
  ids.append(c);
  auto* held = open<KvDbEntity>(c);
  EXPECT_EQ(IM_ssDeleteEntity(ids), 1);
  EXPECT_TRUE(c.isValid());  // held open
  held->close();
  EXPECT_EQ(IM_ssDeleteEntity(ids), 1);
  EXPECT_FALSE(c.isValid());
}

TEST_F(SelectTest, SetsAndArraysBothWays) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 1, 1, 1);
  kvds_name set = {0, 0};
  KvArray<KvDbObjectId> ids;
  ids.append(a);
  EXPECT_EQ(IM_AdsSetToObjectIdArray(nullptr, ids), 0);
  EXPECT_TRUE(ids.isEmpty());
  EXPECT_EQ(IM_AdsSetToObjectIdArray(set, ids), 0);
  ids.append(b);
  ids.append(KvDbObjectId());
  ids.append(a);
  ids.append(b);
  EXPECT_EQ(IM_ObjectIdArrayToAdsSet(ids, set), 2);
  EXPECT_EQ(IM_ObjectIdArrayToAdsSet(ids, set), 2);  // in place of the first
  EXPECT_EQ(setCount(), 1);
  EXPECT_EQ(IM_AdsSetToObjectIdArray(set, ids), 2);
  EXPECT_EQ(ids[0], b);
  EXPECT_EQ(IM_ObjectIdArrayToAdsSet(ids, nullptr), 0);
  ids.removeAll();
  EXPECT_EQ(IM_ObjectIdArrayToAdsSet(ids, set), 0);
  EXPECT_TRUE(kvds_isNull(set));
  EXPECT_EQ(setCount(), 0);
}

TEST_F(SelectTest, OrderOfHandlesIsThatOfNumbers) {
  KvDbDatabase other(false);
  const auto at = [&](const wchar_t* handle) { return other.addAsRead(new KvDbXrecord, KvDbHandle(handle)); };
  const KvDbObjectId ff = at(L"FF"), hundred = at(L"100"), last = at(L"1FF"), big = at(L"FFFFFFFFFFFFFFF0");
  EXPECT_TRUE(IM_pfnCompareObjectId(ff, hundred));
  EXPECT_FALSE(IM_pfnCompareObjectId(hundred, ff));
  EXPECT_TRUE(IM_pfnCompareObjectId(hundred, last));
  EXPECT_TRUE(IM_pfnCompareObjectId(last, big));
  EXPECT_FALSE(IM_pfnCompareObjectId(ff, ff));
  EXPECT_TRUE(IM_pfnCompareObjectId(KvDbObjectId(), ff));
  EXPECT_EQ(IM_handent(&other, L"1ff"), last);
  EXPECT_TRUE(IM_handent(&other, L"DEAD").isNull());
  EXPECT_TRUE(IM_handent(&other, L"no handle").isNull());
  const KvDbObjectId own = line(0, 0, 1, 0);
  EXPECT_EQ(IM_handent(nullptr, own.handle().toText()), own);
}

TEST_F(SelectTest, MadeEntitiesHaveNames) {
  const double from[3] = {0, 0, 0}, to[3] = {1, 0, 0};
  kvds_name name = {5, 5};
  EXPECT_EQ(IM_entmakex(nullptr, name), RTERROR);
  resbuf* record = kvutBuildList(RTDXF0, L"LINE", 10, from, 11, to, 0);
  EXPECT_EQ(IM_entmakex(record, nullptr), RTERROR);
  EXPECT_EQ(IM_entmakex(record, name), RTNORM);
  KvDbObjectId id;
  EXPECT_EQ(kvdbGetObjectId(id, name), Kvad::eOk);
  EXPECT_EQ(id.objectClass(), KvDbLine::desc());
  kvutRelRb(record);
  record = kvutBuildList(RTDXF0, L"POLYLINE", 66, 1, 0);
  EXPECT_EQ(IM_entmakex(record, name), RTERROR);
  EXPECT_TRUE(kvds_isNull(name));
  kvutRelRb(record);
  record = kvutBuildList(RTDXF0, L"VERTEX", 10, from, 0);
  EXPECT_EQ(IM_entmakex(record, name), RTERROR);
  kvutRelRb(record);
  record = kvutBuildList(RTDXF0, L"SEQEND", 0);
  EXPECT_EQ(IM_entmakex(record, name), RTNORM);
  EXPECT_FALSE(kvds_isNull(name));
  kvutRelRb(record);
  record = kvutBuildList(RTDXF0, L"NONSENSE", 0);
  EXPECT_EQ(IM_entmakex(record, name), RTERROR);
  EXPECT_TRUE(kvds_isNull(name));
  kvutRelRb(record);
}

/// Tells of one edit, or of none.
class OneEdit : public KvApLongTransactionManager {
 public:
  Kvad::ErrorStatus currentLongTransactionFor(const KvApDocument*, KvDbObjectId& id) override {
    id = edit;
    return edit.isNull() ? Kvad::eKeyNotFound : Kvad::eOk;
  }
  KvDbObjectId edit;
};

TEST_F(SelectTest, WorkSetOfAnEditInPlace) {
  const KvDbObjectId inside = line(0, 0, 1, 0), outside = line(0, 1, 1, 1);
  kvds_name in, out, none = {0, 0};
  kvdbGetKvdsName(in, inside);
  kvdbGetKvdsName(out, outside);
  EXPECT_EQ(IM_IsEntityInWorkSet(nullptr), 0);
  EXPECT_EQ(IM_IsEntityInWorkSet(none), 0);
  EXPECT_EQ(IM_IsEntityInWorkSet(out), 1);  // nobody edits in place
  OneEdit manager;
  kvapInstallLongTransactionManager(&manager);
  EXPECT_EQ(IM_IsEntityInWorkSet(out), 1);
  auto* edit = new KvDbLongTransaction;
  manager.edit = drawing().addObject(edit, drawing().namedObjectsDictionaryId());
  edit->addToWorkSet(inside);
  edit->close();
  EXPECT_EQ(IM_IsEntityInWorkSet(in), 1);
  EXPECT_EQ(IM_IsEntityInWorkSet(out), 0);
  EXPECT_EQ(IM_IsEntityInWorkSet(none), 0);
  IM_entDel(inside);
  EXPECT_EQ(IM_IsEntityInWorkSet(in), 0);
  kvapInstallLongTransactionManager(nullptr);
}

// --- Extents

TEST_F(SelectTest, ExtentsOfArraysAndSets) {
  const KvDbObjectId a = add(new KvDbLine({0, 0, 1}, {1, 5, 2})),
                     b = add(new KvDbLine({-3, 2, 7}, {4, 3, 9}));
  KvArray<KvDbObjectId> ids;
  KvDbExtents extents({1, 1, 1}, {2, 2, 2});
  EXPECT_EQ(IM_GetSelectSetExtents(ids, extents), 0);
  EXPECT_EQ(extents.minPoint(), KvGePoint3d());
  EXPECT_EQ(extents.maxPoint(), KvGePoint3d());
  ids.append(KvDbObjectId());
  ids.append(a);
  ids.append(b);
  EXPECT_EQ(IM_GetSelectSetExtents(ids, extents), 1);
  EXPECT_EQ(extents.minPoint(), KvGePoint3d(-3, 0, 1));
  EXPECT_EQ(extents.maxPoint(), KvGePoint3d(4, 5, 9));
  kvds_name set = {0, 0}, name;
  kvds_point least = {9, 9, 9}, greatest = {9, 9, 9};
  EXPECT_EQ(IM_GetSelectSetExtents(set, nullptr, greatest), 0);
  EXPECT_EQ(IM_GetSelectSetExtents(set, least, greatest), 1);
  expectPoint(greatest, 0, 0, 0);
  EXPECT_EQ(IM_SSExtent(set, least, greatest), RTNONE);
  EXPECT_EQ(IM_SSExtent(nullptr, least, greatest), RTNONE);
  fill({a, b}, set);
  EXPECT_EQ(IM_GetSelectSetExtents(set, least, greatest), 1);
  expectPoint(least, -3, 0, 1);
  EXPECT_EQ(IM_SSExtent(set, least, greatest), RTNORM);
  expectPoint(least, -3, 0, 1);
  expectPoint(greatest, 4, 5, 2);  // Z of the first
  EXPECT_EQ(IM_SSExtent(set, least, nullptr), RTERROR);
  kvdbGetKvdsName(name, b);
  EXPECT_EQ(IM_EntExtent(name, least, greatest), RTNORM);
  expectPoint(greatest, 4, 3, 9);
  EXPECT_EQ(IM_EntExtent(name, nullptr, greatest), RTERROR);
  IM_entDel(b);
  EXPECT_EQ(IM_SSExtent(set, least, greatest), RTERROR);
  kvedSSFree(set);
}

TEST_F(SelectTest, ExtentsOfWhatHasNone) {
  const KvDbObjectId empty = add(new KvDbProxyEntity(CString(L"NOTHING")));
  KvArray<KvDbObjectId> ids;
  ids.append(empty);
  KvDbExtents extents;
  EXPECT_EQ(IM_GetSelectSetExtents(ids, extents), 1);
  EXPECT_EQ(extents.maxPoint(), KvGePoint3d());
  ids.append(line(2, 3, 4, 5));
  EXPECT_EQ(IM_GetSelectSetExtents(ids, extents), 1);
  EXPECT_EQ(extents.minPoint(), KvGePoint3d(2, 3, 0));
  kvds_name name;
  kvds_point least = {7, 7, 7}, greatest = {7, 7, 7};
  kvdbGetKvdsName(name, empty);
  EXPECT_EQ(IM_EntExtent(name, least, greatest), RTERROR);
  expectPoint(least, 7, 7, 7);
}

TEST_F(SelectTest, ExtentsOfARecord) {
  const double from[3] = {1, 2, 3}, to[3] = {4, 6, 8};
  const KvDbObjectId own = add(new KvDbLine({0, 0, 5}, {10, 10, 5}));
  resbuf* record = kvutBuildList(RTDXF0, L"LINE", 60, 0, 10, from, 11, to, 0);
  kvds_point least, greatest;
  EXPECT_EQ(IM_EntExtent(record, least, greatest), RTNORM);
  expectPoint(least, 1, 2, 0);
  expectPoint(greatest, 4, 6, 0);
  EXPECT_EQ(record->rbnext->resval.rint, 0);
  kvds_name name;
  EXPECT_EQ(kvdbEntLast(name), RTNORM);
  KvDbObjectId last;
  kvdbGetObjectId(last, name);
  EXPECT_EQ(last, own);
  kvutRelRb(record);
  record = kvutBuildList(RTDXF0, L"LINE", 5, own.handle().toText(), 0);
  EXPECT_EQ(IM_EntExtent(record, least, greatest), RTNORM);
  expectPoint(greatest, 10, 10, 0);
  kvutRelRb(record);
  EXPECT_EQ(IM_EntExtent(static_cast<resbuf*>(nullptr), least, greatest), RTERROR);
}

// --- At a point and on the screen

TEST_F(SelectTest, PickBoxTakesNoGroupsAlong) {
  lookAtSquare();
  const KvDbObjectId hit = line(10, 10, 90, 10), other = line(10, 80, 90, 80);
  auto* named = open<KvDbDictionary>(drawing().namedObjectsDictionaryId());
  KvDbObjectId groupsId;
  ASSERT_EQ(named->getAt(L"ACAD_GROUP", groupsId), Kvad::eOk);
  named->close();
  auto* groups = open<KvDbDictionary>(groupsId, KvDb::kForWrite);
  auto* group = new KvDbGroup;
  KvDbObjectId groupId;
  ASSERT_EQ(groups->setAt(L"G", group, groupId), Kvad::eOk);
  group->append(hit);
  group->append(other);
  group->close();
  groups->close();
  ASSERT_EQ(host->editor().variables().set(L"PICKSTYLE", 1), Kvad::eOk);
  KvArray<KvDbObjectId> ids;
  EXPECT_EQ(IM_GetSelectSetAtPoint(KvGePoint3d(50, 10, 0), ids), 1);
  ASSERT_EQ(ids.length(), 1);
  EXPECT_EQ(ids[0], hit);
  EXPECT_EQ(variable(L"PICKSTYLE"), 1);
  EXPECT_EQ(IM_GetSelectSetAtPoint(KvGePoint3d(50, 50, 0), ids), 0);
  EXPECT_TRUE(ids.isEmpty());
  EXPECT_EQ(IM_GetSelectSetAtPoint(KvGePoint3d(NAN, 50, 0), ids), 0);
  kvds_point p = {50, 10, 0};
  EXPECT_EQ(IM_GetSelectSetAtPoint(p, nullptr), 0);
  kvds_name set = {0, 0};
  EXPECT_EQ(IM_GetSelectSetAtPoint(static_cast<double*>(nullptr), set), 0);
  EXPECT_EQ(setCount(), 0);
}

TEST_F(TurnedTest, PickBoxStandsInTheWorld) {
  lookAtSquare();
  const KvDbObjectId hit = line(10, 10, 90, 10);
  KvArray<KvDbObjectId> ids;
  EXPECT_EQ(IM_GetSelectSetAtPoint(KvGePoint3d(50, 10, 0), ids), 1);
  ASSERT_EQ(ids.length(), 1);
  EXPECT_EQ(ids[0], hit);
}

class CycleTest : public SelectTest {
 protected:
  CycleTest() {
    lookAtSquare();
    for (KvDbObjectId& id : candidates) id = line(10, 50, 90, 50);
    KvArray<KvDbObjectId> ids;
    EXPECT_EQ(IM_GetSelectSetAtPoint(center, ids), 1);
    for (int i = 0; i < 3 && i < ids.length(); ++i) candidates[i] = ids[i];
  }
  KvDbObjectId choose(const wchar_t* script) {
    KvDbObjectId chosen;
    during(script, [&] { chosen = IM_SelectEntityAtPoint(center, cancelled); });
    EXPECT_TRUE(host->editor().screen().highlighted().empty());
    EXPECT_EQ(setCount(), 0);
    return chosen;
  }
  const KvGePoint3d center{50, 50, 0};
  KvDbObjectId candidates[3];
  int cancelled = 9;
};

TEST_F(CycleTest, NextComesRoundToTheFirst) {
  EXPECT_EQ(choose(L"\n"), candidates[0]);
  EXPECT_EQ(cancelled, 0);
  EXPECT_EQ(choose(L"Accept\n"), candidates[0]);
  EXPECT_EQ(choose(L"n\nA\n"), candidates[1]);
  EXPECT_EQ(choose(L"next\nNEXT\n\n"), candidates[2]);
  EXPECT_EQ(choose(L"n\nn\nn\na\n"), candidates[0]);
  EXPECT_GE(shown.Find(L"输入选项 [下一个(N)/接受(A)] <接受(A)>: "), 0);
  EXPECT_TRUE(choose(L"").isNull());  // the end of the input is a cancel
  EXPECT_EQ(cancelled, 1);
}

TEST_F(CycleTest, OneCandidateIsNotAskedFor) {
  IM_entDel(candidates[0]);
  IM_entDel(candidates[2]);
  EXPECT_EQ(choose(L""), candidates[1]);
  EXPECT_EQ(cancelled, 0);
  IM_entDel(candidates[1]);
  EXPECT_TRUE(choose(L"").isNull());
  EXPECT_EQ(cancelled, 0);
}

TEST_F(SelectTest, ScreenShowsWhatIsSeen) {
  lookAtSquare();
  const KvDbObjectId inside = line(10, 10, 90, 10), across = line(90, 50, 200, 50);
  line(150, 150, 160, 160);
  const KvDbObjectId circle = add(new KvDbCircle({50, 50, 0}, KvGeVector3d::kZAxis, 5));
  KvArray<KvDbObjectId> ids;
  EXPECT_EQ(IM_GetSelectSetOnScreen(ids, nullptr), 1);
  EXPECT_EQ(ids.length(), 3);
  EXPECT_TRUE(ids.contains(inside) && ids.contains(across) && ids.contains(circle));
  resbuf* filter = kvutBuildList(RTDXF0, L"CIRCLE", 0);
  EXPECT_EQ(IM_GetSelectSetOnScreen(ids, filter), 1);
  ASSERT_EQ(ids.length(), 1);
  EXPECT_EQ(ids[0], circle);
  kvutRelRb(filter);
  {
    const ImUcsSet turned(KvGePoint3d(100, 50, 0), 90 * kDegree);
    EXPECT_EQ(IM_GetSelectSetOnScreen(ids, nullptr), 1);
    EXPECT_EQ(ids.length(), 3);
  }
  filter = kvutBuildList(RTDXF0, L"ARC", 0);
  EXPECT_EQ(IM_GetSelectSetOnScreen(ids, filter), 0);
  EXPECT_TRUE(ids.isEmpty());
  kvutRelRb(filter);
  EXPECT_EQ(setCount(), 0);
}

TEST_F(SelectTest, VariablesTellTheViewAsTheViewDoes) {
  const ImUcsSet turned(KvGePoint3d(10, 20, 0), 30 * kDegree);
  const struct {
    KvGeVector3d direction;
    double twist;
  } cases[] = {{{0, 0, 1}, 0}, {{0, 0, 1}, 0.7}, {{1, 1, 1}, 0}, {{-1, 2, 3}, 1.2}};
  for (const auto& one : cases) {
    KvEdView view;
    view.center = {30, -20};
    view.height = 80;
    view.direction = one.direction;
    view.target = {5, 6, 7};
    view.twist = one.twist;
    ASSERT_EQ(kvedSetViewOf(drawing(), view), Kvad::eOk);
    const KvEdScreenSize& size = host->editor().screen().size;
    const KvGePoint3d point(3, 4, 5), want = kvedViewOf(drawing()).worldToDevice(size) * point;
    const KvGePoint3d got = mek::worldToDeviceByVariables(size.width, size.height) * point;
    EXPECT_NEAR(got.x, want.x, 1e-6);
    EXPECT_NEAR(got.y, want.y, 1e-6);
  }
}

// --- Before a command

TEST_F(SelectTest, PickFirstIsReadAndSet) {
  KvArray<KvDbObjectId> ids;
  EXPECT_TRUE(IM_GetPickFirstEntity().isNull());
  EXPECT_EQ(IM_GetPickFirstSelection(ids), 0);
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 1, 1, 1);
  ids.append(b);
  ids.append(a);
  EXPECT_EQ(IM_SetPickFirstSelection(ids), 1);
  EXPECT_EQ(setCount(), 0);
  ids.removeAll();
  EXPECT_EQ(IM_GetPickFirstSelection(ids), 1);
  ASSERT_EQ(ids.length(), 2);
  EXPECT_EQ(ids[0], b);
  EXPECT_EQ(IM_GetPickFirstEntity(), b);
  ids.removeAll();
  EXPECT_EQ(IM_SetPickFirstSelection(ids), 0);
  EXPECT_TRUE(IM_GetPickFirstEntity().isNull());
  EXPECT_EQ(setCount(), 0);
}

TEST_F(SelectTest, ClippedViewportsAreNoCandidates) {
  const KvDbObjectId plain = line(0, 0, 1, 0), erased = line(0, 0, 1, 0);
  IM_entDel(erased);
  const double center[3] = {0, 0, 0};
  KvDbObjectId ports[2];
  const int flags[] = {0x8000, 0x10000 | 0x8000};
  kvds_name outlineName;
  kvdbGetKvdsName(outlineName, plain);
  const long long* outline = outlineName;
  for (int i = 0; i < 2; ++i) {
    resbuf* record = kvutBuildList(RTDXF0, L"VIEWPORT", 100, L"AcDbEntity", 100, L"AcDbViewport", 10, center,
                                   40, 10.0, 41, 10.0, 90, flags[i], 340, outline, 0);
    kvds_name name = {0, 0};
    EXPECT_EQ(IM_entmakex(record, name), RTNORM);
    kvutRelRb(record);
    kvdbGetObjectId(ports[i], name);
  }
  KvArray<KvDbObjectId> ids;
  for (const KvDbObjectId id : {erased, plain, ports[0], ports[1], KvDbObjectId()}) ids.append(id);
  EXPECT_EQ(IM_ValidateSelectEntityFilter(ids), 1);
  ASSERT_EQ(ids.length(), 2);
  EXPECT_EQ(ids[0], plain);
  EXPECT_EQ(ids[1], ports[0]);
  // A file keeps the mark.
  KvDbDatabase again(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(again, kvdbFormatDrawing(drawing()), report), Kvad::eOk);
  KvDbViewport* read = nullptr;
  ASSERT_EQ(kvdbOpenObject(read, again.idFromHandle(ports[1].handle())), Kvad::eOk);
  EXPECT_TRUE(read->isNonRectClipOn());
  read->close();
}

TEST_F(SelectTest, HighlighterLeavesNothingLit) {
  const KvDbObjectId a = line(0, 0, 1, 0), b = line(0, 1, 1, 1), c = line(0, 2, 1, 2);
  const KvEdScreen& screen = host->editor().screen();
  {
    KvArray<KvDbObjectId> ids;
    ids.append(a);
    ids.append(KvDbObjectId());
    ids.append(b);
    CEntityHighlighter shownOnes(ids);
    EXPECT_TRUE(screen.isHighlighted(a) && screen.isHighlighted(b));
    shownOnes.AddEntity(c, KvDbFullSubentPath(c, KvDb::kEdgeSubentType, 1));
    EXPECT_EQ(screen.highlighted().size(), 3u);
    shownOnes.GetObjectIds(ids);
    EXPECT_EQ(ids.length(), 3);
    shownOnes.RemoveEntity(b);
    shownOnes.RemoveEntity(b);
    EXPECT_FALSE(screen.isHighlighted(b));
    shownOnes.Highlight();
    shownOnes.Highlight();
    shownOnes.Unhighlight();
    EXPECT_TRUE(screen.highlighted().empty());
    shownOnes.Highlight();
    EXPECT_EQ(screen.highlighted().size(), 2u);
    IM_entDel(a);
  }
  EXPECT_TRUE(screen.highlighted().empty());
  const CEntityHighlighter none, strange{KvDbObjectId()};
  EXPECT_TRUE(screen.highlighted().empty());
}

}  // namespace
