// Entities as records: made, read back, changed; sequences and blocks made piece by piece.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/transaction.h"
#include "host/entities/curves.h"
#include "host/io/drawing_file.h"
#include "tests/support/print.h"

namespace {

/// What the last input would be.
class TestServices : public KvDbHostApplicationServices {
 public:
  void setLastInput(const CString& text) override { lastInput = text; }
  CString lastInput;
};

class RecordsTest : public testing::Test {
 protected:
  RecordsTest() { use(drawing); }
  ~RecordsTest() override {
    EXPECT_EQ(drawing.openCount(), 0);
    KvHostContext::current() = {};
  }
  void use(KvDbDatabase& database) {
    services.setWorkingDatabase(&database);
    KvHostContext::current().services = &services;
  }
  template <class... Args>
  int make(const Args&... args) {
    resbuf* chain = kvutBuildList(args..., 0);
    const int status = kvdbEntMake(chain);
    kvutRelRb(chain);
    return status;
  }
  template <class T>
  T* open(const kvds_name name, KvDb::OpenMode mode = KvDb::kForRead) {
    KvDbObjectId id;
    T* object = nullptr;
    kvdbGetObjectId(id, name);
    EXPECT_EQ(kvdbOpenObject(object, id, mode), Kvad::eOk);
    return object;
  }
  static int count(const KvDbDatabase& database) {
    return static_cast<const KvDbBlockTableRecord*>(database.modelSpaceId().stub()->object)->entityCount();
  }
  CString typeOf(const kvds_name name) {
    auto* entity = open<KvDbEntity>(name);
    if (!entity) return {};
    const CString type = entity->fileType();
    entity->close();
    return type;
  }
  /// Types behind `name` (or from the first on) by kvdbEntNext.
  CString walk(const long long* from) {
    kvds_name at = {0, 0}, next;
    if (from) kvds_copy(from, at);
    CString types;
    const long long* name = from ? at : nullptr;
    for (int guard = 0; guard < 100 && kvdbEntNext(name, next) == RTNORM; ++guard) {
      types += typeOf(next) + L" ";
      kvds_copy(next, at);
      name = at;
    }
    return types;
  }

  KvDbDatabase drawing;
  TestServices services;
  const double a[3] = {1, 2, 0}, b[3] = {3, 4, 0}, c[3] = {5, 1, 0}, d[3] = {7, 7, 0};
};

TEST_F(RecordsTest, MakesWithAndWithoutMarkers) {
  EXPECT_EQ(make(RTDXF0, L"LINE", 100, L"AcDbEntity", 100, L"AcDbLine", 10, a, 11, b), RTNORM);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a, 11, b, 12, c, 13, d, 62, 1), RTNORM);
  kvds_name last;
  ASSERT_EQ(kvdbEntLast(last), RTNORM);
  auto* line = open<KvDbLine>(last);
  EXPECT_EQ(line->endPoint(), KvGePoint3d(3, 4, 0));
  EXPECT_EQ(line->colorIndex(), 1);
  EXPECT_TRUE(line->unknownSections().empty());  // what a line has no use for isn't saved
  line->close();
  EXPECT_EQ(make(RTDXF0, L"ARC", 10, a, 40, 2.0, 50, 0.0, 51, 90.0, 8, L"Fresh"), RTNORM);
  ASSERT_EQ(kvdbEntLast(last), RTNORM);
  auto* arc = open<KvDbArc>(last);
  EXPECT_NEAR(arc->endAngle(), kvge::kTwoPi / 4, 1e-15);
  EXPECT_EQ(arc->layer(), L"Fresh");
  arc->close();
}

TEST_F(RecordsTest, RefusesWhatIsNoEntityAndLeavesNothing) {
  const int before = count(drawing);
  EXPECT_EQ(kvdbEntMake(nullptr), RTERROR);
  EXPECT_EQ(make(10, a, 11, b), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"NOSUCH", 10, a), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"CIRCLE", 10, a, 40, 0.0), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"CIRCLE", 10, a, 40, -1.0), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"LINE", 6, L"NoSuchLinetype", 10, a, 11, b), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"SEQEND"), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"VERTEX", 10, a), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"ENDBLK"), RTERROR);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a, 11, b, -3, 1001, L"UNREGISTERED", 1070, 1), RTERROR);
  EXPECT_EQ(count(drawing), before);
}

TEST_F(RecordsTest, PolylineStaysOpenUntilItsEnd) {
  kvds_name line, last;
  make(RTDXF0, L"LINE", 10, a, 11, b);
  kvdbEntLast(line);
  EXPECT_EQ(make(RTDXF0, L"POLYLINE", 40, 0.5, 41, 0.5, 66, 1), RTNORM);
  EXPECT_EQ(make(RTDXF0, L"VERTEX", 10, a), RTNORM);
  kvdbEntLast(last);
  EXPECT_TRUE(kvds_equal(last, line));
  EXPECT_EQ(make(RTDXF0, L"VERTEX", 10, b), RTNORM);
  EXPECT_EQ(make(RTDXF0, L"SEQEND"), RTNORM);
  EXPECT_EQ(kvdbEntLast(last), RTNORM);
  EXPECT_EQ(typeOf(last), L"POLYLINE");
  make(RTDXF0, L"CIRCLE", 10, a, 40, 1.0);
  EXPECT_EQ(walk(line), L"POLYLINE VERTEX VERTEX SEQEND CIRCLE ");
  EXPECT_EQ(walk(nullptr), L"LINE POLYLINE VERTEX VERTEX SEQEND CIRCLE ");
}

TEST_F(RecordsTest, StrangerInASequenceDropsIt) {
  make(RTDXF0, L"POLYLINE", 66, 1);
  make(RTDXF0, L"VERTEX", 10, a);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a, 11, b), RTERROR);
  EXPECT_EQ(count(drawing), 0);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a, 11, b), RTNORM);  // and the way is free again
}

TEST_F(RecordsTest, BlocksAreMadePieceByPiece) {
  EXPECT_EQ(make(RTDXF0, L"BLOCK", 2, L"PART", 10, a, 70, 0), RTNORM);
  EXPECT_EQ(make(RTDXF0, L"LINE", 10, a, 11, b), RTNORM);
  EXPECT_TRUE(drawing.recordId(KvDbTable::Block, L"PART").isNull());  // not before its end
  EXPECT_EQ(make(RTDXF0, L"ENDBLK"), RTKWORD);
  EXPECT_EQ(services.lastInput, L"PART");
  EXPECT_EQ(count(drawing), 0);
  auto block = [&](const wchar_t* name) {
    return static_cast<KvDbBlockTableRecord*>(drawing.recordId(KvDbTable::Block, name).stub()->object);
  };
  EXPECT_EQ(block(L"PART")->entityCount(), 1);
  EXPECT_EQ(block(L"PART")->origin(), KvGePoint3d(1, 2, 0));
  // The same name again: the record stays, its content is new.
  const KvDbObjectId first = drawing.recordId(KvDbTable::Block, L"PART");
  make(RTDXF0, L"BLOCK", 2, L"part", 10, b);
  make(RTDXF0, L"CIRCLE", 10, a, 40, 1.0);
  make(RTDXF0, L"CIRCLE", 10, b, 40, 1.0);
  EXPECT_EQ(make(RTDXF0, L"ENDBLK"), RTKWORD);
  EXPECT_EQ(drawing.recordId(KvDbTable::Block, L"PART"), first);
  EXPECT_EQ(block(L"PART")->entityCount(), 2);
  for (KvDbObjectId id : block(L"PART")->entities()) EXPECT_EQ(id.stub()->object->ownerId(), first);
  // Anonymous ones get numbers.
  for (const wchar_t* expected : {L"*U1", L"*U2"}) {
    make(RTDXF0, L"BLOCK", 2, L"*U", 70, 1, 10, a);
    EXPECT_EQ(make(RTDXF0, L"ENDBLK"), RTKWORD);
    EXPECT_EQ(services.lastInput, expected);
  }
}

TEST_F(RecordsTest, ChangesByRecordKeepWhatTheRecordLacks) {
  kvdbRegApp(L"APP");
  make(RTDXF0, L"CIRCLE", 10, a, 40, 2.0, 62, 3, -3, 1001, L"APP", 1070, 7);
  kvds_name name;
  kvdbEntLast(name);
  resbuf* record = kvdbEntGet(name);
  ASSERT_EQ(record->restype, -1);
  resbuf* change = kvutBuildList(-1, static_cast<const long long*>(name), 40, 5.0, 0);
  EXPECT_EQ(kvdbEntMod(change), RTNORM);
  kvutRelRb(change);
  auto* circle = open<KvDbCircle>(name);
  EXPECT_EQ(circle->radius(), 5);
  EXPECT_EQ(circle->center(), KvGePoint3d(1, 2, 0));
  EXPECT_EQ(circle->colorIndex(), 3);
  resbuf* data = circle->xData(L"APP");
  EXPECT_NE(data, nullptr);
  kvutRelRb(data);
  circle->close();
  // The whole record as it was takes everything back.
  EXPECT_EQ(kvdbEntMod(record), RTNORM);
  circle = open<KvDbCircle>(name);
  EXPECT_EQ(circle->radius(), 2);
  circle->close();
  kvutRelRb(record);
  resbuf* wrong = kvutBuildList(-1, static_cast<const long long*>(name), RTDXF0, L"LINE", 10, a, 0);
  EXPECT_EQ(kvdbEntMod(wrong), RTERROR);
  kvutRelRb(wrong);
}

TEST_F(RecordsTest, EraseAndBack) {
  make(RTDXF0, L"CIRCLE", 10, a, 40, 2.0);
  make(RTDXF0, L"LINE", 10, a, 11, b);
  kvds_name line, last;
  kvdbEntLast(line);
  EXPECT_EQ(kvdbEntDel(line), RTNORM);
  EXPECT_EQ(kvdbEntGet(line), nullptr);
  kvdbEntLast(last);
  EXPECT_EQ(typeOf(last), L"CIRCLE");
  EXPECT_EQ(kvdbEntDel(line), RTNORM);
  kvdbEntLast(last);
  EXPECT_TRUE(kvds_equal(line, last));
  const kvds_name none = {0, 0};
  EXPECT_EQ(kvdbEntDel(none), RTERROR);
  kvds_name loose;
  resbuf* chain = kvutBuildList(RTDXF0, L"LINE", 10, a, 11, b, 0);
  EXPECT_EQ(kvdbEntMakeX(chain, loose), RTNORM);
  kvutRelRb(chain);
  EXPECT_EQ(count(drawing), 2);
  EXPECT_EQ(typeOf(loose), L"LINE");
}

// --- On real drawings
// ---------------------------------------------------------------------------------------------------------------

class RealRecordsTest : public RecordsTest, public testing::WithParamInterface<std::filesystem::path> {
 protected:
  /// Empty when both are the same, else where they differ first: whole drawings are too long to be shown.
  static std::string difference(const std::string& a, const std::string& b) {
    const auto [at, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (at == a.end() && other == b.end()) return "";
    constexpr std::ptrdiff_t kAround = 200;
    const auto from = std::max<std::ptrdiff_t>(0, at - a.begin() - kAround);
    return a.substr(static_cast<std::size_t>(from), 2 * kAround) + "\n--- instead of ---\n" +
           b.substr(static_cast<std::size_t>(from), 2 * kAround);
  }
  static std::string saved(KvDbDatabase& database) { return kvdbFormatDrawing(database); }
  void read(KvDbDatabase& database) {
    KvIoReport report;
    ASSERT_EQ(kvdbReadDrawing(database, GetParam(), report), Kvad::eOk);
    use(database);
  }
  static KvDbObjectIdArray modelSpace(const KvDbDatabase& database) {
    return static_cast<const KvDbBlockTableRecord*>(database.modelSpaceId().stub()->object)->entities();
  }
};

TEST_P(RealRecordsTest, WritingAllRecordsBackChangesNothing) {
  KvDbDatabase database(false);
  read(database);
  const std::string before = saved(database);
  for (KvDbObjectId id : database.allObjects()) {
    if (!id.stub()->object->isKindOf(KvDbEntity::desc())) continue;
    kvds_name name;
    kvdbGetKvdsName(name, id);
    resbuf* record = kvdbEntGet(name);
    ASSERT_EQ(kvdbEntMod(record), RTNORM) << platform::utf8From(id.stub()->object->fileType());
    kvutRelRb(record);
  }
  EXPECT_EQ(difference(saved(database), before), "");
  EXPECT_EQ(database.openCount(), 0);
}

TEST_P(RealRecordsTest, WholeDrawingGoesOverByteForByte) {
  KvDbDatabase database(false), copy;
  read(database);
  ASSERT_EQ(database.wblock(copy), Kvad::eOk);
  EXPECT_EQ(difference(saved(copy), saved(database)), "");
  EXPECT_EQ(copy.openCount(), 0);
}

TEST_P(RealRecordsTest, CopiesInsideTheDrawingAreTakenBackByAnAbort) {
  KvDbDatabase database(false);
  read(database);
  const std::string before = saved(database);
  const int count = modelSpace(database).length();
  KvDbTransactionManager& manager = database.transactionManager();
  manager.startTransaction();
  KvDbIdMapping mapping;
  ASSERT_EQ(database.deepCloneObjects(modelSpace(database), database.modelSpaceId(), mapping), Kvad::eOk);
  EXPECT_EQ(modelSpace(database).length(), 2 * count);
  manager.abortTransaction();
  EXPECT_EQ(difference(saved(database), before), "");
  EXPECT_EQ(database.openCount(), 0);
  EXPECT_EQ(database.undoRecorder().undoCount(), 0);
}

TEST_P(RealRecordsTest, PartsGoIntoANewDrawingThatReadsStrictly) {
  KvDbDatabase database(false);
  read(database);
  KvDbDatabase* part = nullptr;
  ASSERT_EQ(database.wblock(part, modelSpace(database), KvGePoint3d::kOrigin), Kvad::eOk);
  const std::unique_ptr<KvDbDatabase> owner(part);
  EXPECT_EQ(modelSpace(*part).length(), modelSpace(database).length());
  const std::string bytes = kvdbFormatDrawing(*part);
  KvDbDatabase again(false);
  KvIoReport report;
  EXPECT_EQ(kvdbParseDrawing(again, bytes, report), Kvad::eOk) << platform::utf8From(report.error.text);
  // As a block of another drawing, twice under the same name.
  KvDbDatabase target;
  KvDbObjectId block, sameBlock;
  ASSERT_EQ(target.insert(block, L"Part", part), Kvad::eOk);
  ASSERT_EQ(target.insert(sameBlock, L"PART", part), Kvad::eOk);
  EXPECT_EQ(block, sameBlock);
  EXPECT_EQ(static_cast<KvDbBlockTableRecord*>(block.stub()->object)->entityCount(),
            modelSpace(*part).length());
  for (KvDbObjectId id : target.allObjects())
    if (const auto* entity = KvDbEntity::cast(id.stub()->object); entity && !id.isErased()) {
      EXPECT_EQ(entity->layerId().database(), &target);
    }
  EXPECT_EQ(target.openCount(), 0);
}

std::vector<std::filesystem::path> examples() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KORVANE_EXAMPLES "/drawings"))
    if (entry.path().extension() == ".dxf") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

INSTANTIATE_TEST_SUITE_P(Examples, RealRecordsTest, testing::ValuesIn(examples()),
                         [](const auto& example) { return example.param.stem().string(); });

// --- Transactions
// -------------------------------------------------------------------------------------------------------------------

class TransactionTest : public RecordsTest {
 protected:
  double radius(const kvds_name name) {
    auto* circle = open<KvDbCircle>(name);
    const double value = circle->radius();
    circle->close();
    return value;
  }
  void setRadius(const kvds_name name, double value) {
    KvDbObjectId id;
    KvDbObject* object = nullptr;
    kvdbGetObjectId(id, name);
    ASSERT_EQ(drawing.transactionManager().topTransaction()->getObject(object, id, KvDb::kForWrite),
              Kvad::eOk);
    static_cast<KvDbCircle*>(object)->setRadius(value);
  }
};

TEST_F(TransactionTest, InnerAbortLeavesTheOuterWork) {
  make(RTDXF0, L"CIRCLE", 10, a, 40, 1.0);
  kvds_name circle;
  kvdbEntLast(circle);
  KvDbTransactionManager& manager = drawing.transactionManager();
  EXPECT_EQ(manager.endTransaction(), Kvad::eNothingHappened);
  manager.startTransaction();
  setRadius(circle, 2);
  manager.startTransaction();
  setRadius(circle, 3);  // held by the outer one: handed out again
  EXPECT_TRUE(manager.topTransaction()->allObjects().empty());
  manager.startTransaction();
  setRadius(circle, 4);
  make(RTDXF0, L"LINE", 10, a, 11, b);
  EXPECT_EQ(manager.endTransaction(), Kvad::eOk);
  EXPECT_EQ(manager.abortTransaction(), Kvad::eOk);  // the committed inner one goes with it
  EXPECT_EQ(manager.numActiveTransactions(), 1);
  EXPECT_EQ(manager.endTransaction(), Kvad::eOk);
  EXPECT_EQ(radius(circle), 2);
  EXPECT_EQ(count(drawing), 1);
  // One step of undo, there and back, though the state was kept three times.
  EXPECT_EQ(drawing.undoRecorder().undoCount(), 1);
  drawing.undoRecorder().undo();
  EXPECT_EQ(radius(circle), 1);
  drawing.undoRecorder().redo();
  EXPECT_EQ(radius(circle), 2);
}

TEST_F(TransactionTest, AbortWorksWithoutUndoRecording) {
  make(RTDXF0, L"CIRCLE", 10, a, 40, 1.0);
  kvds_name circle;
  kvdbEntLast(circle);
  drawing.disableUndoRecording(true);
  KvDbTransactionManager& manager = drawing.transactionManager();
  manager.startTransaction();
  setRadius(circle, 2);
  manager.abortTransaction();
  EXPECT_EQ(radius(circle), 1);
  manager.startTransaction();
  setRadius(circle, 5);
  manager.endTransaction();
  EXPECT_EQ(drawing.undoRecorder().undoCount(), 0);
  EXPECT_EQ(radius(circle), 5);
}

}  // namespace
