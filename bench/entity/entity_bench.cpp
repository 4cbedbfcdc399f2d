// Extended data attached and read by the toolkit's class, beside the host's own calls; entities made from
// records, beside entities made as objects.
#include <benchmark/benchmark.h>

#include "host/app/hostapp.h"
#include "host/database/block.h"
#include "host/database/entcalls.h"
#include "host/database/names.h"
#include "host/entities/curves.h"
#include "module/entity/entity_makers.h"
#include "module/entity/xdata.h"

namespace {

constexpr IM_APPLICATION kApp = 1, kOtherApp = 2;
constexpr int kValues = 10;

struct Sheet {
  Sheet() : app(KvHostOptions{}) {
    app.newDocument();
    database = app.documents().curDocument()->database();
    database->disableUndoRecording(true);
  }
  KvDbObjectId line() {
    KvDbBlockTableRecord* space = nullptr;
    kvdbOpenObject(space, database->modelSpaceId(), KvDb::kForWrite);
    auto* entity = new KvDbLine({0, 0, 0}, {1, 0, 0});
    entity->setLayer(database->layerZero());
    KvDbObjectId id;
    space->appendKvDbEntity(id, entity);
    entity->close();
    space->close();
    return id;
  }
  KvHostApp app;
  KvDbDatabase* database = nullptr;
};

void attachByClass(long long* name, IM_APPLICATION app) {
  ImEntityXData data(name, app, IM_XDATA_WRITE);
  for (int i = 0; i < kValues; ++i) data.AppendXData(i, i * 0.5);
  data.AttachToEntity();
}

void attachKeyedReals(benchmark::State& state) {
  Sheet sheet;
  kvds_name name;
  kvdbGetKvdsName(name, sheet.line());
  attachByClass(name, kOtherApp);
  for (auto _ : state) attachByClass(name, kApp);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(attachKeyedReals);

void attachByHost(benchmark::State& state) {
  Sheet sheet;
  const KvDbObjectId id = sheet.line();
  const CString app = IM_GetAppName(kApp, 0);
  for (auto _ : state) {
    resbuf* chain = kvutBuildList(1001, app, 0);
    resbuf* tail = chain;
    for (int i = 0; i < kValues; ++i) {
      tail->rbnext = kvutBuildList(1070, i, 1040, i * 0.5, 0);
      tail = tail->rbnext->rbnext;
    }
    KvDbObject* object = nullptr;
    kvdbOpenObject(object, id, KvDb::kForWrite);
    object->setXData(chain);
    object->close();
    kvutRelRb(chain);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(attachByHost);

void readKeyedReals(benchmark::State& state) {
  Sheet sheet;
  kvds_name name;
  kvdbGetKvdsName(name, sheet.line());
  attachByClass(name, kApp);
  ImXDataItemPtrArray items;
  for (auto _ : state) {
    ImEntityXData data(name, kApp, IM_XDATA_READ);
    data.ReadXData(items, 1, 0);
    if (items.GetSize() != kValues) state.SkipWithError("values are missing");
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readKeyedReals);

void readByHost(benchmark::State& state) {
  Sheet sheet;
  const KvDbObjectId id = sheet.line();
  kvds_name name;
  kvdbGetKvdsName(name, id);
  attachByClass(name, kApp);
  const CString app = IM_GetAppName(kApp, 0);
  for (auto _ : state) {
    KvDbObject* object = nullptr;
    kvdbOpenObject(object, id);
    resbuf* chain = object->xData(app);
    object->close();
    benchmark::DoNotOptimize(chain);
    kvutRelRb(chain);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readByHost);

void makeFromRecord(benchmark::State& state) {
  Sheet sheet;
  const double from[3] = {0, 0, 0}, to[3] = {1, 0, 0};
  for (auto _ : state) md_line_color(from, to, 3);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(makeFromRecord)->Iterations(100000);

void makeAsObject(benchmark::State& state) {
  Sheet sheet;
  for (auto _ : state) sheet.line();
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(makeAsObject)->Iterations(100000);

}  // namespace
