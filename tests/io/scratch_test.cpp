// A drawing with every entity class, made by the classes themselves, is taken by an independent reader: no
// finding of its audit, every entity there.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>

#include "host/database/audit.h"
#include "host/database/block.h"
#include "host/entities/annotation.h"
#include "host/entities/attribute.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/dimension.h"
#include "host/entities/hatch.h"
#include "host/entities/leader.h"
#include "host/entities/mtext.h"
#include "host/entities/oldpolyline.h"
#include "host/entities/polyline.h"
#include "host/entities/spline.h"
#include "host/entities/text.h"
#include "host/entities/viewport.h"
#include "host/io/drawing_file.h"

namespace {

class Scratch {
 public:
  explicit Scratch(KvDbFileVersion version) { drawing.extras().version = version; }
  KvDbObjectId add(KvDbEntity* entity, KvDbObjectId block = {}) {
    KvDbBlockTableRecord* space = nullptr;
    kvdbOpenObject(space, block.isNull() ? drawing.modelSpaceId() : block, KvDb::kForWrite);
    KvDbObjectId id;
    EXPECT_EQ(space->appendKvDbEntity(id, entity), Kvad::eOk);
    entity->setDatabaseDefaults(&drawing);
    if (auto* dimension = KvDbDimension::cast(entity)) {
      EXPECT_EQ(dimension->recomputeDimBlock(), Kvad::eOk);
    }
    ++made[entity->fileType()];
    entity->close();
    space->close();
    return id;
  }
  void curves() {
    add(new KvDbPoint({1, 2, 3}));
    add(new KvDbLine({0, 0, 0}, {10, 5, 1}));
    add(new KvDbCircle({5, 5, 0}, {0, 1, 1}, 3));
    add(new KvDbArc({5, 5, 0}, KvGeVector3d::kZAxis, 3, 0.5, 2));
    add(new KvDbEllipse({0, 0, 0}, KvGeVector3d::kZAxis, {4, 1, 0}, 0.5, 1, 3));
    endless(new KvDbRay);
    endless(new KvDbXline);
    auto* light = new KvDbPolyline;
    light->addVertexAt(0, {0, 0}, 0.5);
    light->addVertexAt(1, {10, 0}, 0, 1, 2);
    light->addVertexAt(2, {10, 10});
    add(light);
    KvGePoint3dArray fit;
    for (const KvGePoint3d& point : {KvGePoint3d(0, 0, 0), KvGePoint3d(5, 5, 0), KvGePoint3d(9, 0, 0)})
      fit.append(point);
    add(new KvDbSpline(fit));
    add(new KvDb3dPolyline({{0, 0, 0}, {1, 1, 1}, {2, 0, 3}}, true));
    auto* old = new KvDb2dPolyline;
    for (double x : {0.0, 4.0, 8.0}) old->appendVertex(new KvDb2dVertex({x, x * x, 0}, 0.25));
    add(old);
  }
  void areas() {
    add(new KvDbFace({0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 2}));
    for (KvDbTrace* quad : {new KvDbTrace, static_cast<KvDbTrace*>(new KvDbSolid)}) {
      for (int i = 0; i < 4; ++i) quad->setPointAt(i, {static_cast<double>(i % 2), i / 2 + 0.0, 0});
      add(quad);
    }
    auto* hatch = new KvDbHatch;
    KvGePoint2dArray corners;
    for (const auto& [x, y] : {std::pair(0.0, 0.0), std::pair(10.0, 0.0), std::pair(10.0, 10.0)})
      corners.append(KvGePoint2d(x, y));
    hatch->setPattern(KvDbHatch::kPreDefined, L"ANSI31");
    EXPECT_EQ(hatch->appendLoop(KvDbHatch::kExternal, corners), Kvad::eOk);
    add(hatch);
    const auto outline = std::make_unique<KvDbCircle>(KvGePoint3d(3, 3, 0), KvGeVector3d::kZAxis, 2);
    KvDbVoidPtrArray outlines, regions;
    outlines.append(static_cast<KvDbCurve*>(outline.get()));
    ASSERT_EQ(KvDbRegion::createFromCurves(outlines, regions), Kvad::eOk);
    ASSERT_EQ(regions.length(), 1);
    add(static_cast<KvDbRegion*>(regions[0]));
  }
  void texts() {
    add(new KvDbText({1, 1, 0}, L"Text \u4e2d %%c", {}, 2.5, 0.3));
    auto* paragraph = new KvDbMText;
    paragraph->setContents(L"One\\PTwo {\\H2x;large}");
    paragraph->setLocation({3, 3, 0});
    add(paragraph);
    auto* leader = new KvDbLeader;
    leader->appendVertex({0, 0, 0});
    leader->appendVertex({5, 5, 0});
    add(leader);
  }
  void dimensions() {
    add(new KvDbAlignedDimension({0, 0, 0}, {10, 5, 0}, {5, 8, 0}));
    add(new KvDbRotatedDimension(0, {0, 0, 0}, {10, 5, 0}, {5, 8, 0}));
    add(new KvDbDiametricDimension({0, 0, 0}, {10, 0, 0}, 3));
    add(new KvDbRadialDimension({0, 0, 0}, {10, 0, 0}, 3));
    add(new KvDbOrdinateDimension(true, {3, 4, 0}, {3, 9, 0}));
    auto* three = new KvDb3PointAngularDimension;
    three->setXLine1Point({10, 0, 0});
    three->setXLine2Point({0, 10, 0});
    three->setArcPoint({5, 5, 0});
    add(three);
    auto* lines = new KvDb2LineAngularDimension;
    lines->setXLine1Start({0, 0, 0});
    lines->setXLine1End({10, 0, 0});
    lines->setXLine2Start({0, 0, 0});
    lines->setXLine2End({0, 10, 0});
    lines->setArcPoint({5, 5, 0});
    add(lines);
  }
  void blocks() {
    KvDbBlockTable* table = nullptr;
    ASSERT_EQ(drawing.getBlockTable(table, KvDb::kForWrite), Kvad::eOk);
    auto* block = new KvDbBlockTableRecord;
    block->setName(L"PART");
    ASSERT_EQ(table->add(block), Kvad::eOk);
    table->close();
    block->ensureMarks();
    const KvDbObjectId id = block->objectId();
    block->close();
    add(new KvDbAttributeDefinition({0, 0, 0}, L"value", L"TAG", L"Prompt?"), id);
    auto* reference = new KvDbBlockReference({7, 7, 0}, id);
    EXPECT_EQ(reference->appendAttribute(new KvDbAttribute({7, 7, 0}, L"value", L"TAG")), Kvad::eOk);
    add(reference);
    add(new KvDbViewport({100, 100, 0}, 80, 60), drawing.paperSpaceId());
  }

  KvDbDatabase drawing{true, true};
  std::map<CString, int> made;

 private:
  template <class T>
  void endless(T* line) {
    line->setBasePoint({1, 1, 0});
    line->setUnitDir({0.6, 0.8, 0});
    add(line);
  }
};

class ScratchTest : public testing::TestWithParam<KvDbFileVersion> {};

TEST_P(ScratchTest, EveryClassIsTakenByAnIndependentReader) {
  Scratch scratch(GetParam());
  scratch.curves();
  scratch.areas();
  scratch.texts();
  scratch.dimensions();
  scratch.blocks();
  KvDbAudit own(scratch.drawing, false);
  own.run();
  for (const KvDbFinding& finding : own.findings()) ADD_FAILURE() << platform::utf8From(finding.text);

  const auto folder = std::filesystem::temp_directory_path();
  std::string name = std::string("kv_scratch_") + kvdbVersionCode(GetParam());
  const auto file = folder / (name + "_" + std::to_string(::getpid()) + ".dxf");
  KvIoReport report;
  ASSERT_EQ(kvdbSaveDrawing(scratch.drawing, file, report), Kvad::eOk);
  std::string command = "/usr/bin/python3 '" KORVANE_TEST_DATA "/audit_scratch.py' '" + file.string() + "'";
  for (const auto& [type, count] : scratch.made)
    command += " " + platform::utf8From(type) + "=" + std::to_string(count);
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  std::filesystem::remove(file);
}

INSTANTIATE_TEST_SUITE_P(Versions, ScratchTest,
                         testing::Values(KvDbFileVersion::R2000, KvDbFileVersion::R2007,
                                         KvDbFileVersion::R2018));

}  // namespace
