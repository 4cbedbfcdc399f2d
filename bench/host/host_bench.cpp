// Undo of a large move beside the move itself, and areas of hatches.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>

#include "host/database/block.h"
#include "host/database/database.h"
#include "host/entities/curves.h"
#include "host/entities/hatch.h"

namespace {

constexpr int kEntities = 100'000;
constexpr int kOutlines = 5'000;
constexpr int kManyVertices = 40;

struct Sheet {
  Sheet() {
    KvDbBlockTableRecord* space = nullptr;
    kvdbOpenObject(space, database.modelSpaceId(), KvDb::kForWrite);
    for (int i = 0; i < kEntities; ++i) {
      const double x = i % 300, y = i / 300.0;
      KvDbEntity* entity = nullptr;
      if (i % 2)
        entity = new KvDbCircle({x, y, 0}, KvGeVector3d::kZAxis, 0.4);
      else
        entity = new KvDbLine({x, y, 0}, {x + 1, y + 1, 0});
      space->appendKvDbEntity(entity);
      entity->setDatabaseDefaults(&database);
      ids.append(entity->objectId());
      entity->close();
    }
    space->close();
  }
  void move() {
    const KvGeMatrix3d by = KvGeMatrix3d::translation({1, 2, 0});
    for (KvDbObjectId id : ids) {
      KvDbEntity* entity = nullptr;
      kvdbOpenObject(entity, id, KvDb::kForWrite);
      entity->transformBy(by);
      entity->close();
    }
  }
  KvDbDatabase database{true, true};
  KvDbObjectIdArray ids;
};

void moveWithoutUndo(benchmark::State& state) {
  Sheet sheet;
  sheet.database.disableUndoRecording(true);
  for (auto _ : state) sheet.move();
}

void moveAsStep(benchmark::State& state) {
  Sheet sheet;
  KvDbUndoRecorder& undo = sheet.database.undoRecorder();
  for (auto _ : state) {
    undo.beginGroup();
    sheet.move();
    undo.endGroup();
    state.PauseTiming();
    state.counters["bytes/entity"] = static_cast<double>(undo.memory()) / kEntities;
    undo.clear();
    state.ResumeTiming();
  }
}

void undoAndRedo(benchmark::State& state) {
  Sheet sheet;
  KvDbUndoRecorder& undo = sheet.database.undoRecorder();
  undo.beginGroup();
  sheet.move();
  undo.endGroup();
  bool isUndone = false;
  for (auto _ : state) {
    if (!(isUndone ? undo.redo() : undo.undo())) return state.SkipWithError("nothing to take back");
    isUndone = !isUndone;
  }
}

/// A round outline whose vertices lie on a circle; its edges bulge. `area` is exact by segments of circles.
std::unique_ptr<KvDbHatch> makeOutline(int vertices, double radius, std::mt19937& random, double& area) {
  const double step = 2 * M_PI / vertices, chord = 2 * radius * std::sin(step / 2);
  KvGePoint2dArray points;
  KvArray<double> bulges;
  area = vertices * radius * radius * std::sin(step) / 2;
  for (int i = 0; i < vertices; ++i) {
    const double bulge = std::uniform_real_distribution<double>(0.05, 0.3)(random);
    points.append(KvGePoint2d(radius * std::cos(i * step), radius * std::sin(i * step)));
    bulges.append(bulge);
    const double angle = 4 * std::atan(bulge), r = chord / 2 / std::sin(angle / 2);
    area += r * r * (angle - std::sin(angle)) / 2;
  }
  auto hatch = std::make_unique<KvDbHatch>();
  hatch->appendLoop(KvDbHatch::kExternal, points, bulges);
  return hatch;
}

bool isExact(double found, double wanted) {
  return std::fabs(found - wanted) <= 1e-9 * std::max(1.0, wanted);
}

template <bool AsRegion>
void hatchAreas(benchmark::State& state) {
  std::mt19937 random(7);
  const int count = state.range(0) == kManyVertices ? 1 : kOutlines;
  std::vector<std::unique_ptr<KvDbHatch>> hatches;
  std::vector<double> areas(static_cast<std::size_t>(count));
  for (double& area : areas)
    hatches.push_back(makeOutline(static_cast<int>(state.range(0)),
                                  10 + static_cast<double>(hatches.size() % 50), random, area));
  for (auto _ : state) {
    for (std::size_t i = 0; i < areas.size(); ++i) {
      double area = 0;
      if constexpr (AsRegion) {
        const std::unique_ptr<KvDbRegion> region(hatches[i]->getRegionArea());
        if (!region || region->getArea(area) != Kvad::eOk) return state.SkipWithError("no region");
      } else if (hatches[i]->getArea(area) != Kvad::eOk) {
        return state.SkipWithError("no area");
      }
      if (!isExact(area, areas[i])) return state.SkipWithError("the area isn't exact");
    }
  }
  state.counters["each"] =
      benchmark::Counter(static_cast<double>(count),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(moveWithoutUndo)->Unit(benchmark::kMillisecond);
BENCHMARK(moveAsStep)->Unit(benchmark::kMillisecond);
BENCHMARK(undoAndRedo)->Unit(benchmark::kMillisecond);
BENCHMARK(hatchAreas<false>)->Arg(4)->Arg(8)->Arg(kManyVertices)->Unit(benchmark::kMicrosecond);
BENCHMARK(hatchAreas<true>)->Arg(4)->Arg(8)->Arg(kManyVertices)->Unit(benchmark::kMicrosecond);

}  // namespace
