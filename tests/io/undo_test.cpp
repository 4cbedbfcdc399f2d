// Ten thousand edits, undone step by step, give the first drawing back byte for byte; redone, the last.
#include <gtest/gtest.h>

#include <random>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/database/dictionary.h"
#include "host/database/transaction.h"
#include "host/entities/curves.h"
#include "host/io/drawing_file.h"
#include "tests/support/print.h"

namespace {

class UndoTest : public testing::Test {
 protected:
  UndoTest() : drawing(false) {
    services.setWorkingDatabase(&drawing);
    KvHostContext::current().services = &services;
    KvIoReport report;
    EXPECT_EQ(kvdbReadDrawing(drawing, kExample, report), Kvad::eOk);
    kvdbRegApp(L"UNDOTEST");
  }
  ~UndoTest() override {
    EXPECT_EQ(drawing.openCount(), 0);
    KvHostContext::current() = {};
  }
  static constexpr const char* kExample = KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf";

  template <class T>
  T* open(KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForWrite) {
    T* object = nullptr;
    kvdbOpenObject(object, id, mode);
    return object;
  }
  KvDbObjectId anyEntity() {
    auto* space = open<KvDbBlockTableRecord>(drawing.modelSpaceId(), KvDb::kForRead);
    const KvDbObjectIdArray ids = space->entities();
    space->close();
    return ids.at(static_cast<int>(random() % static_cast<unsigned>(ids.length())));
  }
  CString anyName(const wchar_t* prefix) {
    CString name;
    name.Format(L"%s%d", prefix, random() % 100000);
    return name;
  }
  double number() { return std::uniform_real_distribution<double>(-100, 100)(random); }

  void make() {
    auto* space = open<KvDbBlockTableRecord>(drawing.modelSpaceId());
    KvDbEntity* entity = nullptr;
    if (random() % 2)
      entity = new KvDbLine({number(), number(), 0}, {number(), number(), 1});
    else
      entity = new KvDbCircle({number(), number(), 0}, KvGeVector3d::kZAxis, 1 + std::fabs(number()));
    EXPECT_EQ(space->appendKvDbEntity(entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing);
    entity->close();
    space->close();
  }
  void change() {
    auto* entity = open<KvDbEntity>(anyEntity());
    if (!entity) return;
    entity->setColorIndex(1 + static_cast<int>(random() % 255));
    entity->transformBy(KvGeMatrix3d::translation({number(), number(), 0}));
    entity->close();
  }
  void erase() {
    if (auto* entity = open<KvDbEntity>(anyEntity())) {
      entity->erase();
      entity->close();
    }
  }
  void layer() {
    auto* table = open<KvDbLayerTable>(drawing.layerTableId());
    const KvDbObjectIdArray ids = table->records();
    auto* fresh = new KvDbLayerTableRecord;
    fresh->setName(anyName(L"Layer "));
    if (random() % 2 && table->add(fresh) == Kvad::eOk) {
      fresh->close();
    } else {
      delete fresh;
      auto* old = open<KvDbLayerTableRecord>(
          ids.at(static_cast<int>(random() % static_cast<unsigned>(ids.length()))));
      if (old->getName() != L"0") old->setName(anyName(L"Renamed "));
      old->setIsOff(random() % 2);
      old->close();
    }
    table->close();
  }
  void data() {
    if (auto* entity = open<KvDbEntity>(anyEntity())) {
      resbuf* chain = kvutBuildList(1001, L"UNDOTEST", 1000, anyName(L"data "), 1040, number(), 0);
      EXPECT_EQ(entity->setXData(chain), Kvad::eOk);
      kvutRelRb(chain);
      entity->close();
    }
  }
  void record() {
    auto* root = open<KvDbDictionary>(drawing.namedObjectsDictionaryId());
    KvDbObjectId id;
    auto* fresh = new KvDbXrecord;
    EXPECT_EQ(root->setAt(anyName(L"Record "), fresh, id), Kvad::eOk);
    resbuf* chain = kvutBuildList(40, number(), 1, L"x", 0);
    fresh->setFromRbChain(*chain);
    kvutRelRb(chain);
    fresh->close();
    root->close();
  }
  /// Some entities once more, in their own space.
  void copy() {
    KvDbObjectIdArray ids;
    for (int i = 0; i < 3; ++i) ids.append(anyEntity());
    KvDbIdMapping mapping;
    EXPECT_EQ(drawing.deepCloneObjects(ids, drawing.modelSpaceId(), mapping), Kvad::eOk);
  }
  /// Work that is begun, partly committed inside, and given up.
  void aborted() {
    KvDbTransactionManager& manager = drawing.transactionManager();
    manager.startTransaction();
    change();
    manager.startTransaction();
    make();
    copy();
    manager.endTransaction();
    data();
    erase();
    manager.abortTransaction();
  }
  void edit() {
    switch (random() % 10) {
      case 8:
        copy();
        break;
      case 9:
        aborted();
        break;
      case 0:
      case 1:
      case 2:
        make();
        break;
      case 3:
      case 4:
        change();
        break;
      case 5:
        erase();
        break;
      case 6:
        random() % 4 ? data() : layer();
        break;
      default:
        record();
        break;
    }
  }

  KvDbDatabase drawing;
  KvDbHostApplicationServices services;
  std::mt19937 random{42};
};

TEST_F(UndoTest, RandomEditsThereAndBack) {
  constexpr int kEdits = 10'000, kPerStep = 7;
  KvDbUndoRecorder& undo = drawing.undoRecorder();
  const std::string first = kvdbFormatDrawing(drawing);
  std::vector<std::string> some;
  for (int done = 0; done < kEdits; done += kPerStep) {
    undo.beginGroup();
    for (int i = 0; i < kPerStep; ++i) edit();
    undo.endGroup();
  }
  const std::string last = kvdbFormatDrawing(drawing);
  const int steps = undo.undoCount();
  EXPECT_GT(steps, kEdits / kPerStep - 10);
  EXPECT_NE(first, last);
  while (undo.undo()) {
  }
  EXPECT_TRUE(kvdbFormatDrawing(drawing) == first);
  while (undo.redo()) {
  }
  EXPECT_EQ(undo.undoCount(), steps);
  EXPECT_TRUE(kvdbFormatDrawing(drawing) == last);
  for (int i = 0; i < steps / 2; ++i) undo.undo();
  const std::string middle = kvdbFormatDrawing(drawing);
  for (int i = 0; i < 100; ++i) undo.redo();
  for (int i = 0; i < 100; ++i) undo.undo();
  EXPECT_TRUE(kvdbFormatDrawing(drawing) == middle);
}

TEST_F(UndoTest, GroupsNestMarksAndNewStepsEndRedo) {
  KvDbUndoRecorder& undo = drawing.undoRecorder();
  const std::string first = kvdbFormatDrawing(drawing);
  undo.beginGroup();
  undo.beginGroup();
  make();
  undo.endGroup();
  EXPECT_FALSE(undo.undo());  // not inside a group
  make();
  undo.endGroup();
  EXPECT_EQ(undo.undoCount(), 1);
  undo.beginGroup();
  undo.endGroup();
  EXPECT_EQ(undo.undoCount(), 1);  // nothing was changed

  undo.mark();
  const std::string atMark = kvdbFormatDrawing(drawing);
  for (int i = 0; i < 3; ++i) {
    undo.beginGroup();
    make();
    undo.endGroup();
  }
  undo.undoToMark();
  EXPECT_TRUE(kvdbFormatDrawing(drawing) == atMark);
  EXPECT_EQ(undo.redoCount(), 3);
  undo.beginGroup();
  record();
  undo.endGroup();
  EXPECT_EQ(undo.redoCount(), 0);

  make();  // outside a group: no step
  EXPECT_EQ(undo.undoCount(), 2);
  drawing.disableUndoRecording(true);
  undo.beginGroup();
  make();
  undo.endGroup();
  drawing.disableUndoRecording(false);
  EXPECT_EQ(undo.undoCount(), 2);
  undo.undoToMark();
  EXPECT_EQ(undo.undoCount(), 0);
}

}  // namespace
