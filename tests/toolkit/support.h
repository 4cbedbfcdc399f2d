#pragma once
// A host with one drawing, and the ways to put things into it.
#include <gtest/gtest.h>

#include "host/app/hostapp.h"
#include "host/database/block.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/database/tables.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "tests/support/print.h"
#include "tests/support/temporary_tree.h"

namespace test {

class ToolkitTest : public testing::Test {
 protected:
  ToolkitTest() {
    KvHostOptions options;
    options.root = KORVANE_TREE_DIR;
    options.output = [this](const CString& text) { shown += text; };
    options.environment = environmentIn(folder.path());
    host = std::make_unique<KvHostApp>(std::move(options));
    host->newDocument();
    shown.Empty();
  }
  ~ToolkitTest() override {
    EXPECT_EQ(drawing().openCount(), 0);
    host.reset();
  }

  KvDbDatabase& drawing() { return *kvdbHostApplicationServices()->workingDatabase(); }
  template <class T>
  T* open(KvDbObjectId id, KvDb::OpenMode mode = KvDb::kForRead) {
    T* object = nullptr;
    EXPECT_EQ(kvdbOpenObject(object, id, mode), Kvad::eOk);
    return object;
  }
  KvDbObjectId add(KvDbEntity* entity) {
    auto* space = open<KvDbBlockTableRecord>(drawing().currentSpaceId(), KvDb::kForWrite);
    KvDbObjectId id;
    EXPECT_EQ(space->appendKvDbEntity(id, entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing());
    entity->close();
    space->close();
    return id;
  }
  KvDbObjectId addLayer(const wchar_t* name) {
    auto* table = open<KvDbLayerTable>(drawing().layerTableId(), KvDb::kForWrite);
    auto* layer = new KvDbLayerTableRecord;
    layer->setName(name);
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, layer), Kvad::eOk);
    layer->close();
    table->close();
    return id;
  }
  const KvDbLayerTableRecord& layer(KvDbObjectId id) {
    return *static_cast<const KvDbLayerTableRecord*>(id.stub()->object);
  }

  TemporaryFolder folder;
  CString shown;
  std::unique_ptr<KvHostApp> host;
};

}  // namespace test
