// Each fault has its code, is found once, is mended where it can be, and nothing else goes.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "host/base/context.h"
#include "host/database/audit.h"
#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/io/drawing_file.h"

namespace {

using Codes = std::vector<int>;

class AuditTest : public testing::Test {
 protected:
  KvDbBlockTableRecord* space() {
    KvDbBlockTableRecord* block = nullptr;
    EXPECT_EQ(kvdbOpenObject(block, drawing.modelSpaceId(), KvDb::kForWrite), Kvad::eOk);
    return block;
  }
  KvDbObjectId add(KvDbEntity* entity, KvDbBlockTableRecord* block = nullptr) {
    KvDbBlockTableRecord* into = block ? block : space();
    KvDbObjectId id;
    EXPECT_EQ(into->appendKvDbEntity(id, entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing);
    entity->close();
    if (!block) into->close();
    return id;
  }
  /// A block, open for write.
  KvDbBlockTableRecord* makeBlock(const wchar_t* name) {
    KvDbBlockTable* table = nullptr;
    EXPECT_EQ(drawing.getBlockTable(table, KvDb::kForWrite), Kvad::eOk);
    auto* block = new KvDbBlockTableRecord;
    block->setName(name);
    EXPECT_EQ(table->add(block), Kvad::eOk);
    table->close();
    block->ensureMarks();
    return block;
  }
  KvDbObjectId makeLayer(const wchar_t* name, const wchar_t* afterwards) {
    KvDbSymbolTable* table = nullptr;
    EXPECT_EQ(kvdbOpenObject(table, drawing.layerTableId(), KvDb::kForWrite), Kvad::eOk);
    auto* layer = new KvDbLayerTableRecord;
    layer->setName(name);
    EXPECT_EQ(table->add(layer), Kvad::eOk);
    const KvDbObjectId id = layer->objectId();
    layer->setNameAsMade(afterwards);
    layer->close();
    table->forgetIndex();
    table->close();
    return id;
  }
  static Codes codesOf(const KvDbAudit& audit) {
    Codes codes;
    for (const KvDbFinding& finding : audit.findings()) codes.push_back(static_cast<int>(finding.fault));
    return codes;
  }
  /// Found alike in both kinds of audit; only the fixing one changes the drawing, and then all is well.
  void expectMended(const Codes& wanted) {
    const std::string before = kvdbFormatDrawing(drawing);
    KvDbAudit look(drawing, false), mend(drawing, true), again(drawing, false);
    look.run();
    EXPECT_EQ(codesOf(look), wanted);
    EXPECT_EQ(look.errorCount(), wanted.size());
    EXPECT_EQ(look.fixCount(), 0u);
    EXPECT_EQ(kvdbFormatDrawing(drawing), before);
    mend.run();
    EXPECT_EQ(codesOf(mend), wanted);
    EXPECT_EQ(mend.fixCount(), wanted.size());
    EXPECT_EQ(mend.errorCount(), 0u);
    again.run();
    EXPECT_EQ(codesOf(again), Codes());
    EXPECT_EQ(drawing.openCount(), 0);
  }
  int entityCount() {
    KvDbBlockTableRecord* block = space();
    const int count = block->entityCount();
    block->close();
    return count;
  }

  KvDbDatabase drawing{true, true};
};

TEST_F(AuditTest, AFreshDrawingIsSound) {
  add(new KvDbLine({0, 0, 0}, {kKvDbLargestNumber, 1, 1}));
  expectMended({});
}

TEST_F(AuditTest, NumbersOutOfAllBounds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double huge = std::numeric_limits<double>::infinity();
  for (double bad : {nan, huge, -huge, 1e300, -1e101}) {
    add(new KvDbLine({0, 0, 0}, {1, bad, 1}));
    add(new KvDbLine({0, 0, 0}, {1, 1, 0}));
  }
  expectMended({302, 302, 302, 302, 302});
  EXPECT_EQ(entityCount(), 5);
}

TEST_F(AuditTest, EntitiesWithoutALayerComeToLayerZero) {
  KvDbBlockTableRecord* block = space();
  auto* line = new KvDbLine({0, 0, 0}, {1, 1, 0});
  ASSERT_EQ(block->appendKvDbEntity(line), Kvad::eOk);
  line->close();
  block->close();
  ASSERT_TRUE(line->layerId().isNull());
  KvDbAudit mend(drawing, true);
  mend.run();
  EXPECT_EQ(codesOf(mend), Codes{300});
  EXPECT_EQ(mend.fixCount(), 1u);
  EXPECT_EQ(line->layer(), L"0");
}

TEST_F(AuditTest, ABlockInsideItselfAtAnyDepth) {
  auto* outer = makeBlock(L"OUTER");
  auto* inner = makeBlock(L"INNER");
  auto* sound = makeBlock(L"SOUND");
  add(new KvDbLine({0, 0, 0}, {1, 1, 0}), sound);
  // Twice the same block side by side is no nesting.
  for (KvDbBlockTableRecord* at : {outer, outer, inner})
    add(new KvDbBlockReference({0, 0, 0}, sound->objectId()), at);
  add(new KvDbBlockReference({0, 0, 0}, inner->objectId()), outer);
  add(new KvDbBlockReference({0, 0, 0}, outer->objectId()), inner);
  add(new KvDbBlockReference({0, 0, 0}, inner->objectId()), inner);
  for (KvDbBlockTableRecord* block : {outer, inner, sound}) block->close();
  expectMended({305, 305});
  EXPECT_EQ(outer->entityCount(), 3);
  EXPECT_EQ(inner->entityCount(), 1);
}

TEST_F(AuditTest, NestingOfAThousandBlocksNeedsNoStack) {
  std::vector<KvDbBlockTableRecord*> blocks;
  CString name;
  for (int i = 0; i < 1000; ++i) {
    name.Format(L"B%d", i);
    blocks.push_back(makeBlock(name));
  }
  for (std::size_t i = 0; i < blocks.size(); ++i)
    add(new KvDbBlockReference({0, 0, 0}, blocks[(i + 1) % blocks.size()]->objectId()), blocks[i]);
  for (KvDbBlockTableRecord* block : blocks) block->close();
  expectMended({305});
}

TEST_F(AuditTest, NamesThatNoTableTakesAndNamesThatStandTwice) {
  const KvDbObjectId taken = makeLayer(L"A_B", L"A_B");
  const KvDbObjectId bad = makeLayer(L"FREE1", L"A<B");
  const KvDbObjectId twice = makeLayer(L"FREE2", L"a_b");
  const KvDbObjectId empty = makeLayer(L"FREE3", L"");
  expectMended({303, 304, 303});
  EXPECT_EQ(kvdbRecordName(taken), L"A_B");
  EXPECT_EQ(kvdbRecordName(bad), L"A_B_1");
  EXPECT_EQ(kvdbRecordName(twice), L"a_b_2");
  EXPECT_EQ(kvdbRecordName(empty), L"AUDIT");
}

TEST_F(AuditTest, LinksToWhatIsNotThere) {
  const KvDbObjectId nothing = drawing.referenceTo(KvDbHandle(0xABCDEF));
  const KvDbObjectId id = add(new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 1));
  KvDbEntity* circle = nullptr;
  ASSERT_EQ(kvdbOpenObject(circle, id, KvDb::kForWrite), Kvad::eOk);
  circle->addPersistentReactor(nothing);
  circle->setExtensionDictionary(nothing);
  circle->close();
  KvDbDictionary* root = nullptr;
  ASSERT_EQ(drawing.getNamedObjectsDictionary(root, KvDb::kForWrite), Kvad::eOk);
  auto* record = new KvDbXrecord;
  KvDbObjectId recordId;
  ASSERT_EQ(root->setAt(L"AUDITED", record, recordId), Kvad::eOk);
  record->setOwnerId(nothing);
  record->close();
  root->close();
  KvDbAudit mend(drawing, true), again(drawing, false);
  mend.run();
  Codes codes = codesOf(mend);
  std::sort(codes.begin(), codes.end());
  EXPECT_EQ(codes, (Codes{202, 203, 204}));
  again.run();
  EXPECT_EQ(codesOf(again), Codes());
  EXPECT_EQ(record->ownerId(), drawing.namedObjectsDictionaryId());
  EXPECT_TRUE(circle->persistentReactors().isEmpty());
  EXPECT_TRUE(id.isValid());
}

TEST_F(AuditTest, AFixIsOneStepOfUndo) {
  add(new KvDbLine({0, 0, 0}, {1, 1e300, 1}));
  const std::string before = kvdbFormatDrawing(drawing);
  drawing.undoRecorder().beginGroup();
  KvDbAudit mend(drawing, true);
  mend.run();
  drawing.undoRecorder().endGroup();
  EXPECT_EQ(entityCount(), 0);
  ASSERT_TRUE(drawing.undoRecorder().undo());
  EXPECT_EQ(kvdbFormatDrawing(drawing), before);
}

TEST_F(AuditTest, ALongRowOfFaultsIsCountedWhole) {
  const int count = static_cast<int>(KvDbAudit::kMostListed) + 7;
  for (int i = 0; i < count; ++i) add(new KvDbLine({0, 0, 0}, {1, 1e300, 1}));
  KvDbAudit look(drawing, false);
  look.run();
  EXPECT_EQ(look.findings().size(), KvDbAudit::kMostListed);
  EXPECT_EQ(look.errorCount(), static_cast<std::uint64_t>(count));
}

/// Text put in place of other text in a saved drawing that holds one circle, one group and one reference.
struct FileCase {
  const char* name;
  const char *from, *to;
  std::vector<KvDbFault> faults;
};

class AuditFileTest : public AuditTest, public testing::WithParamInterface<FileCase> {};

TEST_P(AuditFileTest, IsFoundByItsCodeAndMended) {
  auto* block = makeBlock(L"PART");
  const KvDbObjectId circle = add(new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 0.625));
  add(new KvDbBlockReference({4, 4, 0}, block->objectId()));
  block->close();
  std::string text = kvdbFormatDrawing(drawing);
  const auto replace = [](std::string value, const std::string& handle) {
    if (const auto at = value.find('@'); at != std::string::npos) value.replace(at, 1, handle);
    return value;
  };
  const std::string handle = platform::utf8From(circle.handle().toText());
  const std::string from = replace(GetParam().from, handle), to = replace(GetParam().to, handle);
  const auto at = text.rfind(from);
  ASSERT_NE(at, std::string::npos) << from;
  text.replace(at, from.size(), to);

  KvDbDatabase read(false, true);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(read, text, report, KvIoMode::Recover), Kvad::eOk);
  KvDbAudit mend(read, true);
  for (const KvIoMessage& repair : report.repairs) mend.add(repair.fault, repair.text, true);
  mend.run();
  std::vector<KvDbFault> faults;
  for (const KvDbFinding& finding : mend.findings()) faults.push_back(finding.fault);
  EXPECT_EQ(faults, GetParam().faults);
  EXPECT_EQ(mend.errorCount(), 0u);

  KvDbDatabase sound(false, true);
  ASSERT_EQ(kvdbParseDrawing(sound, kvdbFormatDrawing(read), report, KvIoMode::Strict), Kvad::eOk);
  KvDbAudit again(sound, false);
  again.run();
  EXPECT_EQ(codesOf(again), Codes());
  EXPECT_EQ(KvDbBlockTableRecord::cast(sound.modelSpaceId().stub()->object)->entityCount(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Files, AuditFileTest,
    testing::Values(FileCase{"Block",
                             "\r\n  2\r\nPART\r\n 10\r\n4.0",
                             "\r\n  2\r\nGONE\r\n 10\r\n4.0",
                             {KvDbFault::DanglingBlock}},
                    FileCase{"Layer",
                             "AcDbEntity\r\n  8\r\n0\r\n100\r\nAcDbCircle",
                             "AcDbEntity\r\n  8\r\nGONE\r\n100\r\nAcDbCircle",
                             {KvDbFault::UnknownLayer}},
                    FileCase{"Linetype",
                             "AcDbEntity\r\n  8\r\n0\r\n100\r\nAcDbCircle",
                             "AcDbEntity\r\n  8\r\n0\r\n  6\r\nGONE\r\n100\r\nAcDbCircle",
                             {KvDbFault::UnknownLinetype}},
                    FileCase{"End", "  0\r\nEOF\r\n", "", {KvDbFault::FileCut}},
                    FileCase{"Number", " 40\r\n0.625", " 40\r\nwide", {KvDbFault::FileValue}},
                    FileCase{"Handle",
                             "  0\r\nCIRCLE\r\n  5\r\n@\r\n",
                             "  0\r\nCIRCLE\r\n  5\r\n2\r\n",
                             {KvDbFault::DuplicateHandle}}),
    [](const auto& one) { return one.param.name; });

TEST(AuditCodes, EachHasANameOfItsOwn) {
  std::set<std::string> names;
  int count = 0;
  for (int code = 0; code < 1000; ++code)
    if (const std::string name = kvdbFaultName(static_cast<KvDbFault>(code)); !name.empty()) {
      ++count;
      names.insert(name);
    }
  EXPECT_EQ(names.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(count, 23);
  EXPECT_STREQ(kvdbFaultName(KvDbFault::RecursiveBlock), "recursive-block");
}

}  // namespace
