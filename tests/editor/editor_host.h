#pragma once
// A host with one drawing, and a command that runs any function with a script as its input.
#include <gtest/gtest.h>

#include <functional>

#include "host/app/hostapp.h"
#include "host/base/context.h"
#include "host/database/block.h"
#include "host/database/header.h"
#include "host/database/names.h"
#include "host/editor/prompts.h"
#include "host/entities/curves.h"
#include "host/geometry/matrix.h"
#include "tests/support/print.h"
#include "tests/support/temporary_tree.h"

namespace test {

class EditorHost : public testing::Test {
 protected:
  EditorHost() : app(options()) {
    app.newDocument();
    app.editor().commands().addCommand(L"TEST", L"BODY", L"BODY", 0, [] { body()(); });
    app.editor().commands().addCommand(L"TEST", L"PICKY", L"PICKY", KVRX_CMD_USEPICKSET, [] { body()(); });
  }
  ~EditorHost() override { EXPECT_EQ(database().openCount(), 0); }

  /// Runs the function inside a command that has the script as its input; what the input holds beyond what is
  /// asked for is dropped.
  void during(const wchar_t* script, std::function<void()> work, const wchar_t* command = L"BODY") {
    body() = std::move(work);
    app.editor().pushSource(std::make_unique<KvEdScriptSource>(CString(script)));
    app.editor().runCommand(command);
    app.editor().dropInput();
  }

  KvDbDatabase& database() { return *app.documents().curDocument()->database(); }
  KvEdEditor& editor() { return app.editor(); }

  KvDbObjectId add(KvDbEntity* entity, KvDbObjectId block = {}) {
    KvDbBlockTableRecord* record = nullptr;
    if (block.isNull()) block = database().modelSpaceId();
    if (kvdbOpenObject(record, block, KvDb::kForWrite) != Kvad::eOk) return {};
    if (entity->layerId().isNull()) entity->setLayer(database().layerZero());
    KvDbObjectId id;
    record->appendKvDbEntity(id, entity);
    entity->close();
    record->close();
    return id;
  }
  KvDbObjectId line(double x1, double y1, double x2, double y2) {
    return add(new KvDbLine({x1, y1, 0}, {x2, y2, 0}));
  }
  KvDbObjectId circle(double x, double y, double r) {
    return add(new KvDbCircle({x, y, 0}, KvGeVector3d::kZAxis, r));
  }
  template <class T = KvDbEntity, class Work>
  void change(KvDbObjectId id, Work&& work) {
    T* object = nullptr;
    ASSERT_EQ(kvdbOpenObject(object, id, KvDb::kForWrite), Kvad::eOk);
    work(*object);
    object->close();
  }
  KvDbObjectId layer(const wchar_t* name) { return database().makeRecordAsRead(KvDbTable::Layer, name); }
  KvDbObjectId block(const wchar_t* name) {
    const KvDbObjectId id = database().makeRecordAsRead(KvDbTable::Block, name);
    change<KvDbBlockTableRecord>(id, [](KvDbBlockTableRecord& record) { record.ensureMarks(); });
    return id;
  }

  int setVariable(const wchar_t* name, KvEdVarValue value) {
    return editor().variables().set(name, value) == Kvad::eOk ? RTNORM : RTERROR;
  }
  int errnoNow() {
    KvEdVarValue value;
    editor().variables().get(L"ERRNO", value);
    return std::get<int>(value);
  }

  CString shown;
  TemporaryFolder folder;

 private:
  KvHostOptions options() {
    KvHostOptions made;
    made.environment = environmentIn(folder.path());
    made.output = [this](const CString& text) { shown += text; };
    return made;
  }
  static std::function<void()>& body() {
    static std::function<void()> work;
    return work;
  }

 protected:
  KvHostApp app;
};

}  // namespace test
