// Null pointers and ids, and no drawing at all: the stated failure values, with the symbol module and
// without.
#include <limits>

#include "host/entities/dimension.h"
#include "module/core/host_values.h"
#include "module/toolkit/annotation.h"
#include "module/toolkit/geometry.h"
#include "module/toolkit/guards.h"
#include "module/toolkit/layers.h"
#include "module/toolkit/rbchains.h"
#include "module/toolkit/styles.h"
#include "tests/toolkit/symbol_support.h"

namespace {

class Nulls : public test::SymbolHost {
 protected:
  void withoutDrawing() { host->documents().close(host->documents().curDocument()); }
  /// The fixture looks at the drawing in the end.
  void TearDown() override {
    if (!kvdbHostApplicationServices()->workingDatabase()) host->newDocument();
  }
};

TEST_F(Nulls, LayersAndStyles) {
  const KvDbObjectId none;
  for (const Module module : {Module::Real, Module::None}) {
    use(module);
    EXPECT_FALSE(IM_SetPropertyFromConfig(nullptr, 45));
    EXPECT_FALSE(IM_SetDimensionProperty(nullptr));
    EXPECT_FALSE(IM_GetDimensionStyleVariable(nullptr, nullptr, nullptr, nullptr));
    resbuf value{};
    auto* dimension = const_cast<KvRxClass*>(KvDbDimension::desc());
    EXPECT_FALSE(IM_GetDimensionStyleVariable(L"NOSUCH", &value, dimension, nullptr));
    IM_RecordGeniusPoint(none);
    IM_UnrecordGeniusPoint(none);
    EXPECT_TRUE(IM_GetLayerId(9999, nullptr, 0).isNull());
    EXPECT_EQ(IM_SetCurrentDimStyle(none, 1), 0);
    EXPECT_EQ(IM_SetCurrentDimStyle(L"no such style", 1), 0);
    EXPECT_EQ(IM_EnableObjectAnnotation(nullptr, 1), 0);
    EXPECT_EQ(IM_EnableObjectAnnotation(none, 1), 0);
    EXPECT_EQ(IM_IsObjectAnnotative(nullptr), 0);
    EXPECT_EQ(IM_SetObjectAnnotation(nullptr, L"1:1"), 0);
    EXPECT_EQ(IM_AutoAnnotationDimension(nullptr), 0);
  }
}

TEST_F(Nulls, WithoutADrawing) {
  withoutDrawing();
  for (const Module module : {Module::Real, Module::None}) {
    use(module);
    EXPECT_TRUE(IM_GetLayerId(45, nullptr, 0).isNull());
    EXPECT_TRUE(IM_GetLayerId(CString(L"0"), nullptr).isNull());
    EXPECT_TRUE(IM_GetLayerZeroId(nullptr).isNull());
    EXPECT_TRUE(IM_GetTextStyleId(1, 1, nullptr).isNull());
    EXPECT_TRUE(IM_GetDimStyleId(1, 1, nullptr).isNull());
    EXPECT_TRUE(IM_GetTextStyleStandardId(nullptr).isNull());
    EXPECT_TRUE(IM_GetDimStyleStandardId(nullptr).isNull());
    EXPECT_TRUE(IM_GetLineTypeId(1, 0).isNull());
    CString name = L"A";
    EXPECT_EQ(IM_EnsureStyleExist(name, 1), 0);
    EXPECT_EQ(name, L"Standard");
    EXPECT_EQ(IM_ImportStyleFromTemplate(1, 0, L""), RTERROR);
    EXPECT_EQ(IM_EnsureLineTypeExist(L"HIDDEN", 16), L"ByLayer");
    EXPECT_EQ(IM_EnsureGenDotArrow(), 0);
    EXPECT_EQ(IM_IsDimStyleOverrided(nullptr), 0);
    EXPECT_EQ(IM_SetCurrentDimStyle(L"Standard", 1), 0);
  }
  EXPECT_EQ(IM_GetNormalVector(), KvGeVector3d::kZAxis);
  EXPECT_EQ(IM_GetUcsAngle(), 0);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(0, 0, 0), KvGePoint3d(0.009, 0, 0), 0), 1);  // 0.01 without VIEWSIZE
  EXPECT_EQ(IM_GetPickBoxSize(), 1);
}

TEST_F(Nulls, GuardsWithoutADrawing) {
  withoutDrawing();
  const ImLayerLocker locked(true);
  const ImLayerOffer off(KvDbObjectId(), true);
  const ImUcsSet turned({1, 2, 3}, 1);
  const ImUcsSet wrong({1, 2, 3}, std::numeric_limits<double>::quiet_NaN());
  const ImModelSpaceSwitcher model(1);
  EXPECT_NE(model.status(), 0);
  EXPECT_NE(ImPaperSpaceSwitcher(L"Layout1", 1).status(), 0);
  const ImLastEntDefault defaults;
  const ImSSPreviousKeeper previous;
  const ImDbModKeeper modified;
  const ImTransact transaction(0);
  ImTransactionStack stack(true);
  EXPECT_TRUE(stack.empty());
  EXPECT_FALSE(stack.start() || stack.accept() || stack.abort());
  KvDbObject* object = nullptr;
  EXPECT_NE(ImTransact::openObject(object, KvDbObjectId(), KvDb::kForRead), Kvad::eOk);
  EXPECT_NE(ImTransact::closeObject(object), Kvad::eOk);
  const ImSetSysVar nameless(static_cast<LPCWSTR>(nullptr), 1, 1);
  ImSetSysVar pointless(L"VIEWCTR", static_cast<double*>(nullptr), 1);
  EXPECT_EQ(pointless.Restore(), 0);
  const int before = ImUndoRecord::m_nRefCount;
  { const ImUndoRecord undo; }
  EXPECT_EQ(ImUndoRecord::m_nRefCount, before);
}

TEST_F(Nulls, NumbersThatAreNone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const KvDbCircle circle({0, 0, 0}, KvGeVector3d::kZAxis, 5);
  for (const KvGePoint3d& point :
       {KvGePoint3d(nan, 0, 0), KvGePoint3d(0, nan, nan), KvGePoint3d(1e300, 1e300, 0)})
    EXPECT_EQ(IM_IsPointInsideCurve(&circle, point), 1);
  EXPECT_EQ(IM_PointEqual(KvGePoint3d(nan, 0, 0), KvGePoint3d(nan, 0, 0), 1), 0);
  EXPECT_EQ(IM_RealEqual(nan, nan), false);
  EXPECT_EQ(IM_AngleEqual(nan, 1, 0), 0);
  EXPECT_EQ(IM_ExtentContains(KvDbExtents({0, 0, 0}, {1, 1, 0}), KvGePoint3d(nan, 0, 0), 1), 0);
  EXPECT_EQ(IM_IsPointsBeRect({nan, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}), 0);
  KvGePoint3d center;
  EXPECT_EQ(IM_GetCenterFromTangentAndPoint({1, 0, 0}, {0, 0, 0}, {nan, 1, 0}, center), 0);
  double bulge = 1;
  EXPECT_EQ(IM_GetTdFromAngle({0, 0, 0}, {nan, 1, 0}, {2, 0, 0}, bulge), 0);
  EXPECT_EQ(bulge, 0);
  double start[3] = {0, 0, 0}, end[3] = {2, 0, 0}, middle[3] = {nan, 0, 0}, radius = 7;
  EXPECT_EQ(IM_GetTdFromAngle(start, middle, end, bulge), 0);
  EXPECT_EQ(IM_GetAngleFromTd(start, nan, end, middle, radius), 0);
  EXPECT_EQ(radius, 7);
  double before = 0, after = 0;
  mek::readRealVariable(L"TEXTSIZE", before);
  for (const double wrong : {nan, std::numeric_limits<double>::infinity()}) {
    ImSetSysVar size(L"TEXTSIZE", wrong, 1);
    EXPECT_EQ(size.Restore(), 0);
    mek::readRealVariable(L"TEXTSIZE", after);
    EXPECT_EQ(after, before);
  }
}

TEST(NullChains, GiveTheirFailureValue) {
  int whole = 7;
  double real = 7, point[3] = {7, 7, 7}, matrix[4][4] = {};
  CString text = L"kept";
  EXPECT_EQ(IM_GetNextValueOf(nullptr, 1000, L"A", 1070, whole), 0);
  EXPECT_EQ(IM_GetNextValueOf(nullptr, 1070, 1, 1010, static_cast<double*>(nullptr)), 0);
  EXPECT_EQ(IM_SetNextValueOf(nullptr, 1000, L"A", 1000, CString(L"B")), 0);
  EXPECT_EQ(IM_RstringAssign(nullptr, L"A"), 0);
  EXPECT_EQ(IM_GetRbEntType(nullptr), L"");
  EXPECT_EQ(IM_xformrb(nullptr, matrix), 1);
  EXPECT_EQ(IM_xformrb(nullptr, nullptr), 1);
  EXPECT_EQ(IM_AddXDataToResbuf(nullptr, nullptr), RTERROR);
  EXPECT_EQ(Use_get_int(nullptr, whole, 70), RTERROR);
  EXPECT_EQ(Use_get_int(nullptr, nullptr, 70), RTERROR);
  EXPECT_EQ(Use_get_string(nullptr, text, 1), RTERROR);
  EXPECT_EQ(Use_get_string(nullptr, static_cast<wchar_t*>(nullptr), 1), RTERROR);
  EXPECT_EQ(Use_get_point(nullptr, point, 10), RTERROR);
  EXPECT_EQ(Use_get_real(nullptr, real, 40, 1), RTERROR);
  EXPECT_EQ(Use_set_point(nullptr, point, 10, 1), RTERROR);
  EXPECT_EQ(whole, 7);
  EXPECT_EQ(real, 7);
  EXPECT_EQ(text, L"kept");
}

}  // namespace
