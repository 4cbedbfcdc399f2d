// Picks and windows in large drawings: through the index, and beside it the plain way, all entities' extents
// in turn.
#include <benchmark/benchmark.h>

#include <random>

#include "host/app/hostapp.h"
#include "host/database/block.h"
#include "host/editor/internal/picker.h"
#include "host/editor/internal/spatial_index.h"
#include "host/entities/curves.h"

namespace {

/// A host whose drawing holds `count` lines and circles, one on each square of 10 by 10.
struct Sheet {
  explicit Sheet(int count) : app(KvHostOptions{}) {
    app.newDocument();
    database = app.documents().curDocument()->database();
    database->disableUndoRecording(true);
    side = std::sqrt(static_cast<double>(count)) * 10;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> place(0, side), size(1, 5);
    KvDbBlockTableRecord* space = nullptr;
    kvdbOpenObject(space, database->modelSpaceId(), KvDb::kForWrite);
    for (int i = 0; i < count; ++i) {
      const KvGePoint3d at(place(random), place(random), 0);
      KvDbEntity* entity = nullptr;
      if (i % 2)
        entity = new KvDbCircle(at, KvGeVector3d::kZAxis, size(random));
      else
        entity = new KvDbLine(at, at + KvGeVector3d(size(random), size(random), 0));
      entity->setLayer(database->layerZero());
      space->appendKvDbEntity(entity);
      entity->close();
    }
    space->close();
    KvEdView view;
    view.center = {side / 2, side / 2};
    view.height = 200;
    kvedSetViewOf(*database, view);
  }
  KvHostApp app;
  KvDbDatabase* database = nullptr;
  double side = 0;
};

Sheet& sheet(int count) {
  static std::unique_ptr<Sheet> made;
  static int madeCount = 0;
  if (madeCount != count) {
    made.reset();
    made = std::make_unique<Sheet>(count);
    madeCount = count;
  }
  return *made;
}

std::vector<KvGePoint3d> places(const Sheet& sheet) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> place(0, sheet.side);
  std::vector<KvGePoint3d> points(1024);
  for (KvGePoint3d& p : points) p = {place(random), place(random), 0};
  return points;
}

void build(benchmark::State& state) {
  Sheet& s = sheet(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    kved::SpatialIndex index(*s.database, s.database->modelSpaceId());
    benchmark::DoNotOptimize(index.query({{0, 0, 0}, {1, 1, 0}}));
  }
}

void pick(benchmark::State& state) {
  Sheet& s = sheet(static_cast<int>(state.range(0)));
  const auto points = places(s);
  kved::Picker(*s.database).nearest(points[0]);
  std::size_t i = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(kved::Picker(*s.database).nearest(points[++i % points.size()]));
}

void pickAfterChange(benchmark::State& state) {
  Sheet& s = sheet(static_cast<int>(state.range(0)));
  const auto points = places(s);
  const auto ids = kved::indexOf(*s.database, s.database->modelSpaceId()).all();
  std::size_t i = 0;
  for (auto _ : state) {
    KvDbEntity* entity = nullptr;
    if (kvdbOpenObject(entity, ids[(i * 7919) % ids.size()], KvDb::kForWrite) == Kvad::eOk) {
      entity->transformBy(KvGeMatrix3d::translation({0.01, 0, 0}));
      entity->close();
    }
    benchmark::DoNotOptimize(kved::Picker(*s.database).nearest(points[++i % points.size()]));
  }
}

void window(benchmark::State& state) {
  Sheet& s = sheet(static_cast<int>(state.range(0)));
  const auto points = places(s);
  std::size_t i = 0, found = 0;
  for (auto _ : state) {
    const KvGePoint3d& p = points[++i % points.size()];
    found += kved::Picker(*s.database)
                 .in(kved::PickRegion::rectangle(kved::PickRegion::Kind::Crossing, {p.x, p.y},
                                                 {p.x + 300, p.y + 300}))
                 .size();
  }
  state.counters["found"] =
      benchmark::Counter(static_cast<double>(found), benchmark::Counter::kAvgIterations);
}

void pickPlainly(benchmark::State& state) {
  Sheet& s = sheet(static_cast<int>(state.range(0)));
  const auto points = places(s);
  const auto ids = kved::indexOf(*s.database, s.database->modelSpaceId()).all();
  std::size_t i = 0;
  for (auto _ : state) {
    const KvGePoint3d& p = points[++i % points.size()];
    int found = 0;
    for (const KvDbObjectId id : ids) {
      KvDbExtents extents;
      const auto* entity = static_cast<const KvDbEntity*>(id.stub()->object);
      if (entity->getGeomExtents(extents) != Kvad::eOk) continue;
      found += extents.minPoint().x <= p.x && p.x <= extents.maxPoint().x && extents.minPoint().y <= p.y &&
               p.y <= extents.maxPoint().y;
    }
    benchmark::DoNotOptimize(found);
  }
}

BENCHMARK(build)->Arg(200'000)->Unit(benchmark::kMillisecond);
BENCHMARK(pick)->Arg(200'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(pickAfterChange)->Arg(200'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(window)->Arg(200'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(pickPlainly)->Arg(200'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(build)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(pick)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(window)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

}  // namespace
