// Copies inside a drawing and from one drawing into another: what goes along, what is shared, what follows.
#include <gtest/gtest.h>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/deepclone.h"
#include "host/database/dictionary.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/tables.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/hatch.h"
#include "host/entities/text.h"
#include "host/io/drawing_file.h"
#include "tests/support/print.h"

namespace {

class CloneTest : public testing::Test {
 protected:
  CloneTest() {
    services.setWorkingDatabase(&source);
    KvHostContext::current().services = &services;
  }
  ~CloneTest() override {
    EXPECT_EQ(source.openCount(), 0);
    EXPECT_EQ(target.openCount(), 0);
    KvHostContext::current() = {};
  }

  template <class T>
  static T* open(KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead) {
    T* object = nullptr;
    EXPECT_EQ(kvdbOpenObject(object, id, mode), Kvad::eOk);
    return object;
  }
  /// Looks at an object without opening it.
  template <class T>
  static const T& at(KvDbObjectId id) {
    return *T::cast(id.stub()->object);
  }
  static KvDbObjectId add(KvDbDatabase& drawing, KvDbEntity* entity, KvDbObjectId block = {}) {
    auto* space =
        open<KvDbBlockTableRecord>(block.isNull() ? drawing.modelSpaceId() : block, KvDb::kForWrite);
    KvDbObjectId id;
    EXPECT_EQ(space->appendKvDbEntity(id, entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing);
    entity->close();
    space->close();
    return id;
  }
  template <class Table, class Record>
  static KvDbObjectId addRecord(KvDbObjectId tableId, const wchar_t* name,
                                const std::function<void(Record&)>& set = {}) {
    auto* table = open<Table>(tableId, KvDb::kForWrite);
    auto* record = new Record;
    record->setName(name);
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, record), Kvad::eOk);
    if (set) set(*record);
    record->close();
    table->close();
    return id;
  }
  static KvDbObjectId addLayer(KvDbDatabase& drawing, const wchar_t* name, int color) {
    return addRecord<KvDbLayerTable, KvDbLayerTableRecord>(
        drawing.layerTableId(), name, [&](KvDbLayerTableRecord& layer) { layer.setColorIndex(color); });
  }
  static KvDbObjectId addBlock(KvDbDatabase& drawing, const wchar_t* name) {
    return addRecord<KvDbBlockTable, KvDbBlockTableRecord>(drawing.blockTableId(), name);
  }
  template <class T, class Edit>
  static void edit(KvDbObjectId id, Edit&& change) {
    T* object = open<T>(id, KvDb::kForWrite);
    change(*object);
    object->close();
  }
  static KvDbObjectIdArray ids(std::initializer_list<KvDbObjectId> all) {
    KvDbObjectIdArray array;
    for (KvDbObjectId id : all) array.append(id);
    return array;
  }
  static KvDbObjectIdArray modelSpace(const KvDbDatabase& drawing) {
    return at<KvDbBlockTableRecord>(drawing.modelSpaceId()).entities();
  }
  /// Nothing in the drawing points out of it.
  static void isClosedInItself(const KvDbDatabase& drawing) {
    KvDbDatabase again(false);
    KvIoReport report;
    EXPECT_EQ(kvdbParseDrawing(again, kvdbFormatDrawing(drawing), report), Kvad::eOk)
        << platform::utf8From(report.error.text);
    for (KvDbObjectId id : drawing.allObjects())
      if (const auto* entity = KvDbEntity::cast(id.stub()->object)) {
        EXPECT_EQ(entity->layerId().database(), &drawing);
      }
  }

  KvDbDatabase source, target;
  KvDbHostApplicationServices services;
};

TEST_F(CloneTest, RecordsOfBothDrawingsAreKeptOrReplacedAsAskedFor) {
  const KvDbObjectId red = addLayer(source, L"Parts", 1), blue = addLayer(target, L"PARTS", 5);
  addLayer(source, L"Unused", 3);
  const KvDbObjectId line = add(source, new KvDbLine({0, 0, 0}, {1, 0, 0}));
  edit<KvDbLine>(line, [&](KvDbLine& own) { own.setLayer(red); });
  KvDbIdMapping kept;
  ASSERT_EQ(target.wblockCloneObjects(ids({line}), target.modelSpaceId(), kept, KvDb::kDrcIgnore), Kvad::eOk);
  const KvDbObjectId copy = kept.lookup(line);
  EXPECT_EQ(at<KvDbLine>(copy).layerId(), blue);
  EXPECT_EQ(at<KvDbLayerTableRecord>(blue).colorIndex(), 5);
  EXPECT_EQ(kept.lookup(red), blue);
  EXPECT_TRUE(target.recordId(KvDbTable::Layer, L"Unused").isNull()) << "what nobody needs stays behind";
  KvDbIdMapping replaced;
  ASSERT_EQ(target.wblockCloneObjects(ids({line}), target.modelSpaceId(), replaced, KvDb::kDrcReplace),
            Kvad::eOk);
  EXPECT_EQ(at<KvDbLayerTableRecord>(blue).colorIndex(), 1) << "the same record with the other's content";
  EXPECT_EQ(at<KvDbLine>(copy).layerId(), blue);
  isClosedInItself(target);
  // A layer by itself goes to the table.
  KvDbIdMapping alone;
  const KvDbObjectId unused = source.recordId(KvDbTable::Layer, L"UNUSED");
  ASSERT_EQ(target.wblockCloneObjects(ids({unused}), target.layerTableId(), alone, KvDb::kDrcIgnore),
            Kvad::eOk);
  EXPECT_EQ(target.recordId(KvDbTable::Layer, L"Unused"), alone.lookup(unused));
}

TEST_F(CloneTest, NestedBlocksGoAlongOnceWithAllTheyNeed) {
  const KvDbObjectId inner = addBlock(source, L"Inner"), outer = addBlock(source, L"Outer");
  const KvDbObjectId layer = addLayer(source, L"Deep", 2);
  const KvDbObjectId circle = add(source, new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 2), inner);
  edit<KvDbCircle>(circle, [&](KvDbCircle& own) { own.setLayer(layer); });
  for (double x : {0.0, 5.0}) add(source, new KvDbBlockReference({x, 0, 0}, inner), outer);
  const KvDbObjectId first = add(source, new KvDbBlockReference({1, 1, 0}, outer)),
                     second = add(source, new KvDbBlockReference({2, 2, 0}, inner));
  KvDbIdMapping mapping;
  ASSERT_EQ(target.wblockCloneObjects(ids({first, second}), target.modelSpaceId(), mapping, KvDb::kDrcIgnore),
            Kvad::eOk);
  const KvDbObjectId newOuter = target.recordId(KvDbTable::Block, L"Outer"),
                     newInner = target.recordId(KvDbTable::Block, L"Inner");
  ASSERT_FALSE(newOuter.isNull());
  EXPECT_EQ(at<KvDbBlockReference>(mapping.lookup(first)).blockTableRecord(), newOuter);
  EXPECT_EQ(at<KvDbBlockReference>(mapping.lookup(second)).blockTableRecord(), newInner);
  EXPECT_EQ(at<KvDbBlockTableRecord>(newOuter).entityCount(), 2);
  EXPECT_EQ(at<KvDbBlockTableRecord>(newInner).entityCount(), 1);
  EXPECT_FALSE(target.recordId(KvDbTable::Layer, L"Deep").isNull());
  // With the same mapping it is known; with another one references come, and blocks don't grow.
  ASSERT_EQ(target.wblockCloneObjects(ids({first}), target.modelSpaceId(), mapping, KvDb::kDrcIgnore),
            Kvad::eOk);
  EXPECT_EQ(modelSpace(target).length(), 2);
  KvDbIdMapping fresh;
  ASSERT_EQ(target.wblockCloneObjects(ids({first}), target.modelSpaceId(), fresh, KvDb::kDrcIgnore),
            Kvad::eOk);
  EXPECT_EQ(modelSpace(target).length(), 3);
  EXPECT_EQ(at<KvDbBlockTableRecord>(newInner).entityCount(), 1);
  isClosedInItself(target);
}

TEST_F(CloneTest, AnonymousBlocksGetNamesOfTheirOwn) {
  const KvDbObjectId mine = addBlock(source, L"*U"), theirs = addBlock(target, L"*U");
  EXPECT_EQ(kvdbRecordName(mine), kvdbRecordName(theirs));
  add(source, new KvDbPoint({1, 2, 3}), mine);
  const KvDbObjectId reference = add(source, new KvDbBlockReference({0, 0, 0}, mine));
  KvDbIdMapping mapping;
  ASSERT_EQ(target.wblockCloneObjects(ids({reference}), target.modelSpaceId(), mapping, KvDb::kDrcIgnore),
            Kvad::eOk);
  const KvDbObjectId block = at<KvDbBlockReference>(mapping.lookup(reference)).blockTableRecord();
  EXPECT_NE(block, theirs) << "anonymous blocks of one name have nothing in common";
  EXPECT_NE(kvdbRecordName(block), kvdbRecordName(theirs));
  EXPECT_EQ(at<KvDbBlockTableRecord>(block).entityCount(), 1);
  EXPECT_EQ(at<KvDbBlockTableRecord>(theirs).entityCount(), 0);
}

TEST_F(CloneTest, LinksBetweenCopiesFollowThem) {
  // A hatch that follows its circle, and extended data that name another entity.
  const KvDbObjectId circle = add(source, new KvDbCircle({0, 0, 0}, KvGeVector3d::kZAxis, 2));
  auto* made = new KvDbHatch;
  const KvDbObjectId hatch = add(source, made);
  edit<KvDbHatch>(hatch, [&](KvDbHatch& own) {
    own.setAssociative(true);
    EXPECT_EQ(own.appendLoop(KvDbHatch::kExternal, ids({circle})), Kvad::eOk);
  });
  kvdbRegApp(L"LINKS");
  wchar_t handle[17];
  circle.handle().getIntoAsciiBuffer(handle);
  resbuf* data = kvutBuildList(1001, L"LINKS", 1005, handle, 0);
  edit<KvDbHatch>(hatch, [&](KvDbHatch& own) { EXPECT_EQ(own.setXData(data), Kvad::eOk); });
  kvutRelRb(data);
  const auto linkOf = [](KvDbObjectId id) {
    resbuf* chain = at<KvDbHatch>(id).xData(L"LINKS");
    const CString text = chain && chain->rbnext ? CString(chain->rbnext->resval.rstring) : CString();
    kvutRelRb(chain);
    return text;
  };
  KvDbIdMapping both, alone;
  ASSERT_EQ(source.deepCloneObjects(ids({circle, hatch}), source.modelSpaceId(), both), Kvad::eOk);
  const KvDbObjectId newCircle = both.lookup(circle), newHatch = both.lookup(hatch);
  ASSERT_EQ(at<KvDbHatch>(newHatch).loops()[0].sources.length(), 1);
  EXPECT_EQ(at<KvDbHatch>(newHatch).loops()[0].sources[0], newCircle);
  EXPECT_EQ(linkOf(newHatch), newCircle.handle().toText());
  EXPECT_EQ(at<KvDbHatch>(hatch).loops()[0].sources[0], circle) << "the old one keeps its own";
  EXPECT_EQ(linkOf(hatch), circle.handle().toText());
  // Into another drawing without its circle it follows nothing, and is still whole.
  ASSERT_EQ(target.wblockCloneObjects(ids({hatch}), target.modelSpaceId(), alone, KvDb::kDrcIgnore),
            Kvad::eOk);
  double area = 0;
  EXPECT_EQ(at<KvDbHatch>(alone.lookup(hatch)).getArea(area), Kvad::eOk);
  EXPECT_NEAR(area, 4 * kvge::kPi, 1e-9);
  EXPECT_TRUE(alone.lookup(circle).isNull());
  EXPECT_EQ(linkOf(alone.lookup(hatch)), L"0") << "not the handle of something else there";
  EXPECT_TRUE(target.isApplicationKnown(L"LINKS"));
  isClosedInItself(target);
}

TEST_F(CloneTest, OwnedDictionariesGoAlong) {
  const KvDbObjectId line = add(source, new KvDbLine({0, 0, 0}, {1, 0, 0}));
  auto* dictionary = new KvDbDictionary;
  KvDbObjectId recordId;
  const KvDbObjectId dictionaryId = source.addObject(dictionary, line);
  auto* record = new KvDbXrecord;
  resbuf* content = kvutBuildList(1, L"kept", 40, 2.5, 0);
  EXPECT_EQ(record->setFromRbChain(*content), Kvad::eOk);
  kvutRelRb(content);
  EXPECT_EQ(dictionary->setAt(L"OWN", record, recordId), Kvad::eOk);
  record->close();
  dictionary->close();
  edit<KvDbLine>(line, [&](KvDbLine& own) { own.setExtensionDictionary(dictionaryId); });
  const auto contentOf = [](KvDbObjectId entity) {
    const KvDbObjectId extension = at<KvDbLine>(entity).extensionDictionary();
    KvDbObjectId own;
    if (extension.isNull() || at<KvDbDictionary>(extension).getAt(L"OWN", own) != Kvad::eOk)
      return CString(L"none");
    resbuf* chain = nullptr;
    at<KvDbXrecord>(own).rbChain(&chain);
    const CString text = chain ? CString(chain->resval.rstring) : CString();
    kvutRelRb(chain);
    return text;
  };
  KvDbIdMapping inside, outside;
  ASSERT_EQ(source.deepCloneObjects(ids({line}), source.modelSpaceId(), inside), Kvad::eOk);
  ASSERT_EQ(target.wblockCloneObjects(ids({line}), target.modelSpaceId(), outside, KvDb::kDrcIgnore),
            Kvad::eOk);
  EXPECT_EQ(contentOf(inside.lookup(line)), L"kept");
  EXPECT_EQ(contentOf(outside.lookup(line)), L"kept");
  EXPECT_NE(at<KvDbLine>(inside.lookup(line)).extensionDictionary(), dictionaryId);
  EXPECT_NE(inside.lookup(recordId), recordId);
  isClosedInItself(target);
}

TEST_F(CloneTest, WrongCallsCopyNothing) {
  const KvDbObjectId line = add(source, new KvDbLine({0, 0, 0}, {1, 0, 0})),
                     foreign = add(target, new KvDbPoint({0, 0, 0}));
  KvDbIdMapping mapping;
  EXPECT_EQ(source.deepCloneObjects(ids({line}), KvDbObjectId(), mapping), Kvad::eNullObjectId);
  EXPECT_EQ(source.deepCloneObjects(ids({line, foreign}), source.modelSpaceId(), mapping),
            Kvad::eWrongDatabase);
  EXPECT_EQ(target.wblockCloneObjects(ids({line, foreign}), target.modelSpaceId(), mapping, KvDb::kDrcIgnore),
            Kvad::eWrongDatabase);
  EXPECT_EQ(modelSpace(source).length(), 1);
  EXPECT_EQ(modelSpace(target).length(), 1);
  edit<KvDbLine>(line, [](KvDbLine& own) { own.erase(); });
  EXPECT_EQ(source.deepCloneObjects(ids({line}), source.modelSpaceId(), mapping), Kvad::eOk);
  EXPECT_EQ(modelSpace(source).length(), 0) << "erased ones are passed over";
  EXPECT_EQ(source.wblock(source), Kvad::eWrongDatabase);
  EXPECT_EQ(source.wblock(target), Kvad::eNotApplicable) << "it holds a point";
}

TEST_F(CloneTest, APartComesToTheOriginAndBackAsABlock) {
  const KvDbObjectId line = add(source, new KvDbLine({10, 10, 0}, {20, 10, 0}));
  KvDbDatabase* part = nullptr;
  ASSERT_EQ(source.wblock(part, ids({line}), {10, 10, 0}), Kvad::eOk);
  const std::unique_ptr<KvDbDatabase> owner(part);
  EXPECT_TRUE(at<KvDbLine>(modelSpace(*part)[0]).startPoint().isEqualTo({0, 0, 0}));
  EXPECT_TRUE(at<KvDbLine>(line).startPoint().isEqualTo({10, 10, 0})) << "the source stays";
  KvDbObjectId block;
  EXPECT_EQ(source.insert(block, L"bad|name?", part), Kvad::eInvalidName);
  ASSERT_EQ(source.insert(block, L"Part", part), Kvad::eOk);
  EXPECT_EQ(at<KvDbBlockTableRecord>(block).entityCount(), 1);
  // New content under the old name; references follow.
  const KvDbObjectId reference = add(source, new KvDbBlockReference({0, 0, 0}, block));
  add(*part, new KvDbPoint({5, 5, 0}));
  KvDbObjectId again;
  ASSERT_EQ(source.insert(again, L"PART", part), Kvad::eOk);
  EXPECT_EQ(again, block);
  EXPECT_EQ(at<KvDbBlockTableRecord>(block).entityCount(), 2);
  EXPECT_EQ(at<KvDbBlockReference>(reference).blockTableRecord(), block);
  // Through a transform into model space.
  const int before = modelSpace(source).length();
  ASSERT_EQ(source.insert(KvGeMatrix3d::translation({100, 0, 0}), part), Kvad::eOk);
  EXPECT_EQ(modelSpace(source).length(), before + 2);
  isClosedInItself(source);
}

}  // namespace
