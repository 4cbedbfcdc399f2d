// Objects, ids, the open protocol, tables, dictionaries, extended data, copies through the filer.
#include "host/database/database.h"

#include <gtest/gtest.h>

#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/dictionary.h"
#include "host/database/tables.h"
#include "tests/support/print.h"

namespace {

class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() {
    services.setWorkingDatabase(&drawing);
    KvHostContext::current().services = &services;
  }
  ~DatabaseTest() override {
    EXPECT_EQ(drawing.openCount(), 0);
    KvHostContext::current() = {};
  }
  template <class T>
  T* open(KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead) {
    T* object = nullptr;
    EXPECT_EQ(kvdbOpenObject(object, id, mode), Kvad::eOk);
    return object;
  }
  KvDbObjectId addLayer(const wchar_t* name) {
    auto* table = open<KvDbLayerTable>(drawing.layerTableId(), KvDb::kForWrite);
    auto* layer = new KvDbLayerTableRecord;
    layer->setName(name);
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, layer), Kvad::eOk);
    layer->close();
    table->close();
    return id;
  }
  KvDbObjectId addEntity(KvDbEntity* entity) {
    auto* space = open<KvDbBlockTableRecord>(drawing.modelSpaceId(), KvDb::kForWrite);
    KvDbObjectId id;
    EXPECT_EQ(space->appendKvDbEntity(id, entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing);
    entity->close();
    space->close();
    return id;
  }
  /// The codes and texts of a chain, which is freed.
  static CString shown(resbuf* chain) {
    CString text;
    for (resbuf* node = chain; node; node = node->rbnext) {
      const KvRbKind kind = kvutRbKind(node->restype);
      if (kind == KvRbKind::Text)
        text.AppendFormat(L"%d:%s ", node->restype, node->resval.rstring);
      else if (kind == KvRbKind::Short)
        text.AppendFormat(L"%d:%d ", node->restype, node->resval.rint);
      else
        text.AppendFormat(L"%d ", node->restype);
    }
    kvutRelRb(chain);
    return text;
  }

  KvDbDatabase drawing;
  KvDbHostApplicationServices services;
};

TEST_F(DatabaseTest, OpenProtocol) {
  const KvDbObjectId id = addLayer(L"A");
  auto* first = open<KvDbLayerTableRecord>(id);
  auto* second = open<KvDbLayerTableRecord>(id);
  EXPECT_EQ(first, second);
  KvDbObject* any = nullptr;
  EXPECT_EQ(kvdbOpenAny(any, id, KvDb::kForWrite), Kvad::eWasOpenForRead);
  EXPECT_EQ(first->upgradeOpen(), Kvad::eHasOpenReaders);
  EXPECT_EQ(second->close(), Kvad::eOk);
  EXPECT_EQ(first->upgradeOpen(), Kvad::eOk);
  EXPECT_EQ(kvdbOpenAny(any, id, KvDb::kForRead), Kvad::eWasOpenForWrite);
  EXPECT_EQ(first->downgradeOpen(), Kvad::eOk);
  EXPECT_EQ(first->close(), Kvad::eOk);
  EXPECT_EQ(first->close(), Kvad::eNotOpenForRead);
  KvDbBlockTableRecord* wrong = nullptr;
  EXPECT_EQ(kvdbOpenObject(wrong, id), Kvad::eNotThatKindOfClass);
  EXPECT_EQ(kvdbOpenAny(any, KvDbObjectId(), KvDb::kForRead), Kvad::eNullObjectId);
  EXPECT_EQ(kvdbOpenAny(any, drawing.referenceTo(KvDbHandle(0xFFFF)), KvDb::kForRead), Kvad::eUnknownHandle);
  EXPECT_EQ(first->getName(), L"A");  // readable after close
}

TEST_F(DatabaseTest, EraseAndBack) {
  const KvDbObjectId id = addLayer(L"A");
  auto* layer = open<KvDbLayerTableRecord>(id, KvDb::kForWrite);
  EXPECT_EQ(layer->erase(), Kvad::eOk);
  EXPECT_EQ(layer->erase(), Kvad::eWasErased);
  layer->close();
  EXPECT_TRUE(drawing.recordId(KvDbTable::Layer, L"A").isNull());
  KvDbObject* any = nullptr;
  EXPECT_EQ(kvdbOpenAny(any, id, KvDb::kForRead), Kvad::eWasErased);
  EXPECT_EQ(kvdbOpenAny(any, id, KvDb::kForWrite, true), Kvad::eOk);
  EXPECT_EQ(any->erase(false), Kvad::eOk);
  any->close();
  EXPECT_EQ(drawing.recordId(KvDbTable::Layer, L"a"), id);
  EXPECT_EQ(layer->erase(), Kvad::eNotOpenForWrite);
}

TEST_F(DatabaseTest, TablesNameAndRename) {
  const KvDbObjectId a = addLayer(L"Größe");
  EXPECT_EQ(drawing.recordId(KvDbTable::Layer, L"GRÖßE"), a);
  auto* table = open<KvDbLayerTable>(drawing.layerTableId(), KvDb::kForWrite);
  for (const wchar_t* wrong : {L"", L"a/b", L" a", L"a|b", L"größe", L"0"}) {
    KvDbLayerTableRecord record;
    record.setNameAsMade(wrong);
    KvDbObjectId id;
    EXPECT_NE(table->add(id, &record), Kvad::eOk) << platform::utf8From(wrong);
  }
  KvDbRegAppTableRecord application;
  application.setName(L"X");
  KvDbObjectId id;
  EXPECT_EQ(table->add(id, &application), Kvad::eNotThatKindOfClass);
  table->close();
  auto* record = open<KvDbLayerTableRecord>(a, KvDb::kForWrite);
  EXPECT_EQ(record->setName(L"0"), Kvad::eDuplicateRecordName);
  EXPECT_EQ(record->setName(L"GRÖSSE"), Kvad::eOk);
  EXPECT_EQ(record->setName(L"größe2"), Kvad::eOk);
  record->close();
  EXPECT_TRUE(drawing.recordId(KvDbTable::Layer, L"Größe").isNull());
  EXPECT_EQ(drawing.recordId(KvDbTable::Layer, L"GRÖßE2"), a);
}

TEST_F(DatabaseTest, TableSearchGivesTheRecordAsAChain) {
  addLayer(L"A");
  EXPECT_EQ(shown(kvdbTblSearch(L"layer", L"a", 0)),
            L"0:LAYER 100:AcDbSymbolTableRecord 100:AcDbLayerTableRecord 2:A 70:0 62:7 6: 370:-3 ");
  EXPECT_EQ(kvdbTblSearch(L"LAYER", L"none", 0), nullptr);
  EXPECT_EQ(kvdbTblSearch(L"NOTABLE", L"A", 0), nullptr);
  EXPECT_EQ(kvdbRegApp(L"a?b"), RTERROR);
  EXPECT_EQ(kvdbRegApp(L"MINE"), RTNORM);
  EXPECT_EQ(kvdbRegApp(L"mine"), RTNORM);
}

TEST_F(DatabaseTest, ExtendedDataAreReplacedByApplication) {
  kvdbRegApp(L"ONE");
  kvdbRegApp(L"TWO");
  auto* layer = open<KvDbLayerTableRecord>(addLayer(L"A"), KvDb::kForWrite);
  const auto set = [&](resbuf* chain) {
    const auto status = layer->setXData(chain);
    kvutRelRb(chain);
    return status;
  };
  EXPECT_EQ(layer->xData(), nullptr);
  EXPECT_EQ(set(kvutBuildList(-3, 1001, L"ONE", 1000, L"a", 1070, 5, 1001, L"TWO", 1000, L"b", 0)),
            Kvad::eOk);
  EXPECT_EQ(set(kvutBuildList(1001, L"one", 1000, L"c", -3, 1001, L"ONE", 1000, L"later", 0)), Kvad::eOk);
  EXPECT_EQ(shown(layer->xData(L"ONE")), L"1001:ONE 1000:later ");
  EXPECT_EQ(shown(layer->xData(L"two")), L"1001:TWO 1000:b ");
  EXPECT_EQ(shown(layer->xData()), L"1001:ONE 1000:later 1001:TWO 1000:b ");
  EXPECT_EQ(set(kvutBuildList(1001, L"UNKNOWN", 1000, L"x", 0)), Kvad::eRegappNotFound);
  EXPECT_EQ(set(kvutBuildList(1000, L"x", 0)), Kvad::eInvalidInput);
  EXPECT_EQ(set(kvutBuildList(1001, L"ONE", 0)), Kvad::eOk);
  EXPECT_EQ(layer->xData(L"ONE"), nullptr);
  EXPECT_EQ(shown(layer->xData()), L"1001:TWO 1000:b ");
  layer->close();
}

TEST_F(DatabaseTest, DictionariesRecordsAndGroups) {
  auto* root = open<KvDbDictionary>(drawing.namedObjectsDictionaryId(), KvDb::kForWrite);
  KvDbObjectId recordId, groupId;
  auto* record = new KvDbXrecord;
  ASSERT_EQ(root->setAt(L"MyRecord", record, recordId), Kvad::eOk);
  const double point[] = {1, 2, 3};
  resbuf* chain = kvutBuildList(280, 7, 1, L"text", 10, point, 90, 70000, 0);
  EXPECT_EQ(record->setFromRbChain(*chain), Kvad::eOk);
  kvutRelRb(chain);
  resbuf* back = nullptr;
  EXPECT_EQ(record->rbChain(&back), Kvad::eOk);
  EXPECT_EQ(shown(back), L"280:7 1:text 10 90 ");
  resbuf* wrong = kvutBuildList(RTREAL, 1.0, 0);
  EXPECT_EQ(record->setFromRbChain(*wrong), Kvad::eInvalidInput);
  kvutRelRb(wrong);
  record->close();
  EXPECT_TRUE(root->has(L"MYRECORD"));
  EXPECT_EQ(root->nameAt(recordId), L"MyRecord");

  auto* group = new KvDbGroup;
  ASSERT_EQ(root->setAt(L"G", group, groupId), Kvad::eOk);
  const KvDbObjectId member = addEntity(new KvDbProxyEntity(L"LINE"));
  EXPECT_EQ(group->append(member), Kvad::eOk);
  EXPECT_EQ(group->getName(), L"G");
  auto* entity = open<KvDbEntity>(member, KvDb::kForWrite);
  EXPECT_TRUE(entity->persistentReactors().contains(groupId));
  entity->erase();
  entity->close();
  EXPECT_EQ(group->allEntityIds().length(), 0);  // erased members don't count
  EXPECT_EQ(group->remove(member), Kvad::eOk);
  EXPECT_EQ(group->remove(member), Kvad::eKeyNotFound);
  EXPECT_FALSE(entity->persistentReactors().contains(groupId));
  group->close();

  EXPECT_EQ(root->remove(L"myrecord"), Kvad::eOk);
  EXPECT_EQ(root->remove(L"myrecord"), Kvad::eKeyNotFound);
  EXPECT_TRUE(recordId.isValid());  // only the name went
  root->close();
}

TEST_F(DatabaseTest, StateGoesThroughTheFilerWhole) {
  kvdbRegApp(L"ONE");
  const KvDbObjectId a = addLayer(L"A"), b = addLayer(L"B");
  const KvDbObjectId original = addEntity(new KvDbProxyEntity(L"WIDGET"));
  auto* entity = open<KvDbProxyEntity>(original, KvDb::kForWrite);
  entity->setLayer(a);
  entity->setColorIndex(3);
  entity->setLinetypeScale(0.5);
  resbuf* data = kvutBuildList(1001, L"ONE", 1040, 2.5, 1005, L"1A", 0);
  entity->setXData(data);
  kvutRelRb(data);
  KvDbIdMap map{{a, b}};
  KvDbTranslatingFiler filer(map, &drawing);
  entity->dwgOutFields(filer);
  filer.rewind();
  KvDbProxyEntity copy;
  copy.dwgInFields(filer);
  entity->close();
  EXPECT_EQ(copy.fileType(), L"WIDGET");
  EXPECT_EQ(copy.layer(), L"B");  // translated
  EXPECT_EQ(copy.colorIndex(), 3);
  EXPECT_EQ(copy.linetypeScale(), 0.5);
  EXPECT_EQ(shown(copy.xData()), L"1001:ONE 1040 1005:1A ");
  EXPECT_EQ(entity->setColorIndex(300), Kvad::eInvalidInput);
}

TEST_F(DatabaseTest, HandlesAreReadAndWritten) {
  EXPECT_EQ(KvDbHandle(L"1aF").value(), 0x1AFu);
  EXPECT_TRUE(KvDbHandle(L"xyz").isNull());
  EXPECT_TRUE(KvDbHandle(L"12345678123456781").isNull());
  EXPECT_EQ(KvDbHandle(UINT64_MAX).toText(), L"FFFFFFFFFFFFFFFF");
  EXPECT_EQ(drawing.idFromHandle(drawing.layerZero().handle()), drawing.layerZero());
  EXPECT_TRUE(drawing.idFromHandle(KvDbHandle(0xABCDEF)).isNull());
  EXPECT_GT(drawing.handleSeed(), drawing.layerZero().handle().value());
}

}  // namespace
