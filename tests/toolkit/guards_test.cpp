// Guards: what they change, what they give back, nested, refused and ended early.
#include "module/toolkit/guards.h"

#include "host/editor/selection.h"
#include "host/editor/sysvars.h"
#include "host/editor/ucs.h"
#include "module/core/host_values.h"
#include "module/toolkit/test_time.h"
#include "platform/files/files.h"
#include "platform/system/services.h"
#include "platform/text/utf.h"
#include "platform/ui/user_interface.h"
#include "tests/toolkit/support.h"

namespace {

/// Answers message boxes.
class Answering : public platform::UserInterface {
 public:
  int messageBox(HWND, const CString& text, const CString& caption, UINT flags) override {
    asked = text + L"|" + caption;
    EXPECT_EQ(flags, MB_YESNO);
    return answer;
  }
  CString asked;
  int answer = IDNO;
};

class GuardsTest : public test::ToolkitTest {
 protected:
  int variable(const wchar_t* name) {
    int value = -1;
    mek::readIntVariable(name, value);
    return value;
  }
  void defineText() {
    KvEdVariable own;
    own.name = L"X";
    own.type = RTSTR;
    own.value = CString(L"text");
    host->editor().variables().define(own);
  }
  CString textX() {
    CString text;
    mek::readTextVariable(L"X", text);
    return text;
  }
};

TEST_F(GuardsTest, VariablesByTheirType) {
  defineText();
  {
    ImSetSysVar wrong(L"X", 5, 1);
    EXPECT_EQ(wrong.Restore(), 0);
    EXPECT_EQ(textX(), L"text");
    ImSetSysVar text(L"X", L"other", 1);
    EXPECT_EQ(textX(), L"other");
    ImSetSysVar null(L"X", static_cast<LPCWSTR>(nullptr), 1);
    EXPECT_EQ(null.Restore(), 0);
  }
  EXPECT_EQ(textX(), L"text");
  const int echo = variable(L"CMDECHO");
  ImSetSysVar guard(L"CMDECHO", 1 - echo, 1);
  EXPECT_EQ(variable(L"CMDECHO"), 1 - echo);
  EXPECT_EQ(guard.Restore(), 1);
  EXPECT_EQ(variable(L"CMDECHO"), echo);
  EXPECT_EQ(guard.Restore(), 0);
  { ImSetSysVar setter(L"CMDECHO", 0, 0); }
  EXPECT_EQ(variable(L"CMDECHO"), 0);
  ImSetSysVar unknown(L"NOSUCH", 1, 1);
  EXPECT_EQ(unknown.Restore(), 0);
  {
    ImSetSysVar readOnly(L"DBMOD", 1, 1);
    EXPECT_EQ(readOnly.Restore(), 0);
  }
}

TEST_F(GuardsTest, ModifiedWordIsHiddenOnlyWhenTheDrawingWasUnchanged) {
  kvdbSetDbmod(&drawing(), 0);
  {
    const ImDbModKeeper keeper;
    add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
    EXPECT_NE(variable(L"DBMOD"), 0);
  }
  EXPECT_EQ(variable(L"DBMOD"), 0);
  kvdbSetDbmod(&drawing(), 1);
  {
    const ImDbModKeeper keeper;
    kvdbSetDbmod(&drawing(), 5);
  }
  EXPECT_EQ(variable(L"DBMOD"), 5);
}

TEST_F(GuardsTest, UndoGroupsNest) {
  const int echo = variable(L"CMDECHO");
  const KvDbObjectId kept = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  KvDbObjectId outer, inner, accepted;
  {
    ImUndoRecord first;
    outer = add(new KvDbLine({0, 0, 0}, {2, 0, 0}));
    {
      ImUndoRecord second;
      inner = add(new KvDbLine({0, 0, 0}, {3, 0, 0}));
      EXPECT_EQ(ImUndoRecord::m_nRefCount, 2);
    }
    EXPECT_TRUE(outer.isValid());
    EXPECT_FALSE(inner.isValid());
    ImUndoRecord third;
    accepted = add(new KvDbLine({0, 0, 0}, {4, 0, 0}));
    third.accept();
  }
  EXPECT_FALSE(outer.isValid());
  EXPECT_FALSE(accepted.isValid());  // accepted inside what was not
  EXPECT_TRUE(kept.isValid());
  EXPECT_EQ(ImUndoRecord::m_nRefCount, 0);
  EXPECT_EQ(variable(L"CMDECHO"), echo);
  {
    ImUndoRecord work;
    outer = add(new KvDbLine({0, 0, 0}, {5, 0, 0}));
    work.accept();
  }
  EXPECT_TRUE(outer.isValid());
  EXPECT_EQ(ImUndoRecord::m_nRefCount, 0);
  // The host closes what was accepted, so that it is one step.
  host->documents().closeUndoGroups(host->documents().curDocument());
  EXPECT_FALSE(drawing().undoRecorder().isInGroup());
  EXPECT_TRUE(drawing().undoRecorder().undo());
  EXPECT_FALSE(outer.isValid());
}

TEST_F(GuardsTest, LayerStatesComeBack) {
  const KvDbObjectId a = addLayer(L"A"), b = addLayer(L"B"), c = addLayer(L"C");
  {
    const ImLayerLocker all(true);
    EXPECT_TRUE(layer(a).isLocked() && layer(b).isLocked() && layer(drawing().layerZero()).isLocked());
    const ImLayerLocker one(b, false);
    EXPECT_FALSE(layer(b).isLocked());
  }
  EXPECT_FALSE(layer(a).isLocked() || layer(b).isLocked());
  {
    auto* held = open<KvDbLayerTableRecord>(a);  // all others are reached although one can't be
    const ImLayerLocker all(true);
    held->close();
    EXPECT_FALSE(layer(a).isLocked());
    EXPECT_TRUE(layer(b).isLocked() && layer(c).isLocked());
  }
  EXPECT_FALSE(layer(b).isLocked() || layer(c).isLocked());
  KvDbObjectIdArray list;
  list.append(a);
  list.append(KvDbObjectId());  // can't be opened: here the list ends
  list.append(c);
  {
    const ImLayerOffer off(list, true);
    EXPECT_TRUE(layer(a).isOff());
    EXPECT_FALSE(layer(c).isOff());
  }
  EXPECT_FALSE(layer(a).isOff());
  const KvDbObjectId line = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  auto* entity = open<KvDbEntity>(line, KvDb::kForWrite);
  entity->setLayer(a);
  entity->close();
  const ImLayerLocker locked(a, true);
  {
    const ImEntityLayerUnlocker unlocker(line);
    EXPECT_FALSE(layer(a).isLocked());
    const ImEntityLayerUnlocker again(line);  // has nothing to give back
  }
  EXPECT_TRUE(layer(a).isLocked());
  const ImEntityLayerUnlocker none{KvDbObjectId()};
}

TEST_F(GuardsTest, LayoutsAreSwitchedMadeOrRefused) {
  auto user = std::make_unique<Answering>();
  Answering& answering = *user;
  host->environment().userInterface = &answering;
  KvDbLayoutManager& manager = drawing().layoutManager();
  {
    const ImPaperSpaceSwitcher sheet(L"Layout1", 1);
    EXPECT_EQ(sheet.status(), 0);
    EXPECT_EQ(manager.currentLayoutName(), L"Layout1");
    {
      const ImModelSpaceSwitcher model(1);
      EXPECT_EQ(manager.currentLayoutName(), L"Model");
    }
    EXPECT_EQ(manager.currentLayoutName(), L"Layout1");
    const ImPaperSpaceSwitcher same(L"Layout1", 1);
    EXPECT_EQ(same.status(), 0);
  }
  EXPECT_EQ(manager.currentLayoutName(), L"Model");
  EXPECT_EQ(answering.asked, L"");
  {
    const ImPaperSpaceSwitcher refused(L"新", 1);
    EXPECT_EQ(refused.status(), 1);
    EXPECT_EQ(answering.asked, L"没有发现布局 \"新\", 要创建它吗?|创建布局");
  }
  answering.answer = IDYES;
  { EXPECT_EQ(ImPaperSpaceSwitcher(L"新", 0).status(), 0); }
  EXPECT_EQ(manager.currentLayoutName(), L"新");  // without the flag it stays
  EXPECT_EQ(ImPaperSpaceSwitcher(L"a/b", 0).status(), 3);
  EXPECT_FALSE(IM_GetLayoutIdByName(L"新").isNull());
  host->environment().userInterface = nullptr;
}

TEST_F(GuardsTest, UserSystemsAndDisplay) {
  KvGeMatrix3d before, after;
  kvedGetCurrentUCS(before);
  {
    const ImUcsSet turned({5, 6, 0}, 0.5);
    KvGeMatrix3d now;
    kvedGetCurrentUCS(now);
    EXPECT_TRUE(now.translation().isEqualTo({5, 6, 0}));
    EXPECT_NEAR(now.column(0).y, std::sin(0.5), 1e-15);
  }
  kvedGetCurrentUCS(after);
  EXPECT_TRUE(before.isEqualTo(after));
  int& updates = host->editor().screen().updates;
  const int start = updates;
  {
    const ImAutoUpdateDisplay outer(1);
    { const ImAutoUpdateDisplay inner(1); }
    EXPECT_EQ(updates, start);
  }
  EXPECT_EQ(updates, start + 1);
  {
    ImAutoUpdateDisplay only(1);
    only.updateNow(0);
    EXPECT_EQ(updates, start + 2);
  }
  EXPECT_EQ(updates, start + 2);  // the flag was replaced
  EXPECT_EQ(ImAutoUpdateDisplay::g_nLevel, 0);
}

TEST_F(GuardsTest, NewEntitiesGetTheDefaults) {
  const KvDbObjectId old = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  const KvDbObjectId layerA = addLayer(L"A");
  KvDbObjectId line, xline;
  {
    const ImLastEntDefault defaults;
    drawing().setThickness(2.5);
    drawing().setClayer(drawing().layerZero());
    line = add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
    xline = add(new KvDbXline);
    drawing().setClayer(layerA);
  }
  EXPECT_EQ(static_cast<KvDbLine*>(line.stub()->object)->thickness(), 2.5);
  EXPECT_EQ(static_cast<KvDbEntity*>(line.stub()->object)->layer(), L"A");
  EXPECT_EQ(static_cast<KvDbEntity*>(xline.stub()->object)->layer(), L"A");
  EXPECT_EQ(static_cast<KvDbLine*>(old.stub()->object)->thickness(), 0);
}

TEST_F(GuardsTest, PreviousSelectionComesBack) {
  add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  add(new KvDbLine({0, 5, 0}, {1, 5, 0}));
  kvds_name all, one, previous;
  ASSERT_EQ(kvedSSGet(L"X", nullptr, nullptr, nullptr, all), RTNORM);
  kvedSetPreviousSelection(nullptr, all);
  {
    const ImSSPreviousKeeper keeper;
    const double a[3] = {-1, -1, 0}, b[3] = {2, 2, 0};
    ASSERT_EQ(kvedSSGet(L"C", a, b, nullptr, one), RTNORM);
    kvedSetPreviousSelection(nullptr, one);
  }
  ASSERT_EQ(kvedSSGet(L"P", nullptr, nullptr, nullptr, previous), RTNORM);
  long length = 0;
  kvedSSLength(previous, &length);
  EXPECT_EQ(length, 2);
  for (const auto* set : {&all, &one, &previous}) kvedSSFree(*set);
}

TEST_F(GuardsTest, TransactionsCommitUnlessAborted) {
  const KvDbObjectId id = add(new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 1));
  const auto radius = [&] { return static_cast<KvDbCircle*>(id.stub()->object)->radius(); };
  KvDbObject* object = nullptr;
  {
    const ImTransact work(0);
    ASSERT_EQ(ImTransact::openObject(object, id, KvDb::kForWrite), Kvad::eOk);
    static_cast<KvDbCircle*>(object)->setRadius(2);
    EXPECT_EQ(ImTransact::closeObject(object), Kvad::eOk);
    EXPECT_TRUE(object->isWriteEnabled());  // held by the transaction
    KvDbObject* again = nullptr;
    EXPECT_EQ(ImTransact::openObject(again, id, KvDb::kForRead), Kvad::eOk);
    EXPECT_EQ(again, object);
  }
  EXPECT_EQ(radius(), 1);
  ASSERT_EQ(ImTransact::openObject(object, id, KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(ImTransact::closeObject(object), Kvad::eOk);
  EXPECT_EQ(drawing().openCount(), 0);
  {
    ImTransactionStack stack(true);
    stack.start();
    ImTransact::openObject(object, id, KvDb::kForWrite);
    static_cast<KvDbCircle*>(object)->setRadius(3);
    EXPECT_TRUE(stack.abort());
    EXPECT_EQ(radius(), 1);
    stack.start();
    ImTransact::openObject(object, id, KvDb::kForWrite);
    static_cast<KvDbCircle*>(object)->setRadius(4);
  }
  EXPECT_EQ(radius(), 4);
  EXPECT_EQ(drawing().transactionManager().numActiveTransactions(), 0);
  ImTransactionStack empty(false);
  EXPECT_FALSE(empty.accept() || empty.abort());
}

TEST_F(GuardsTest, TimesAreWrittenWithTheirIndent) {
  platform::SystemServices services;
  std::int64_t now = 0;
  services.counter = [&now] { return now += 1'000'000; };  // a millisecond at each look
  const platform::ScopedSystemServices scope(services);
  {
    ImTestTime outer(L"Outer");
    outer.step(L"", true);
    outer.step(L"name", true);
    {
      ImTestTime inner(L"Inner");
      inner.last(L"L");
    }
    const ImTestTimeDisabler silent;
    ImTestTime unheard(L"Unheard");
    unheard.step(L"x", true);
  }
  std::string bytes;
  ASSERT_TRUE(platform::readFile(CString(L"D:\\ImTestTime.txt"), bytes));
  EXPECT_EQ(CString(platform::fromUtf16Bytes(bytes)),
            L"Outer Begin\r\nStep 1: 1.00\r\nStep 2(name): 1.00\r\n    Inner Begin\r\n    Step 1(L): 1.00\r\n"
            L"    Inner End: 2.00\r\nStep 3: 4.00\r\nOuter End: 6.00\r\n");
  EXPECT_EQ(ImTestTime::g_nLevel, 0);
  EXPECT_EQ(ImTestTime::s_file, nullptr);
  { ImTestTime second(L"Second"); }
  platform::readFile(CString(L"D:\\ImTestTime.txt"), bytes);
  EXPECT_EQ(bytes.find("O"), 0u);  // appended, without a mark
}

}  // namespace
