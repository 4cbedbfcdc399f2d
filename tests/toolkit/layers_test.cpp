// The layer system: keys, indices, and drawings with the layers of earlier editions.
#include "module/toolkit/layers.h"

#include "host/database/layout.h"
#include "host/io/drawing_file.h"
#include "tests/toolkit/symbol_support.h"

namespace {

class Layers : public test::SymbolHost {
 protected:
  KvDbObjectId lineOn(KvDbObjectId layerId, KvDbObjectId block = {}) {
    auto* space =
        open<KvDbBlockTableRecord>(block.isNull() ? drawing().modelSpaceId() : block, KvDb::kForWrite);
    auto* line = new KvDbLine({0, 0, 0}, {1, 0, 0});
    KvDbObjectId id;
    EXPECT_EQ(space->appendKvDbEntity(id, line), Kvad::eOk);
    line->setLayer(layerId);
    line->close();
    space->close();
    return id;
  }
  CString layerOf(KvDbObjectId id) { return static_cast<KvDbEntity*>(id.stub()->object)->layer(); }
};

TEST_F(Layers, KeysAndIndices) {
  struct Row {
    const wchar_t* key;
    int kind;
  };
  for (const Row& row :
       {Row{L"con1", 45}, Row{L"N_CON1", 95}, Row{L"XYZ", 0}, Row{L"", 0}, Row{L"stdpsym", 87}})
    EXPECT_EQ(IM_GetPropertyConfigFromSubLayer(row.key), row.kind);
  EXPECT_EQ(GetSysLayer(L"NOPE", L"A", false), L"A");
  struct Index {
    int index, flag, plain, part;
  };
  for (const Index& row :
       {Index{-2, 0, 0, 0}, Index{-1, 0, 0, 0}, Index{0, 0, 45, 95}, Index{7, 1, 23, 101},
        Index{8, 0, 85, 90}, Index{8, 1, 40, 40}, Index{9, 1, 66, 104}, Index{9, 0, 78, 78},
        Index{12, 0, 4, 102}, Index{14, 1, 0, 0}, Index{14, 0, 5, 105}, Index{15, 0, 3, 105},
        Index{16, 0, 0, 0}, Index{1 << 30, 1, 0, 0}}) {
    EXPECT_EQ(IM_IntToImLayer(row.index, row.flag), row.plain) << row.index << " " << row.flag;
    EXPECT_EQ(IM_IntToStdPartLayer(row.index, row.flag), row.part) << row.index << " " << row.flag;
  }
}

TEST_F(Layers, OfNothing) {
  EXPECT_TRUE(IM_GetLayerId(CString(L"no such layer"), nullptr).isNull());
  EXPECT_EQ(IM_GetLayerColor({}).colorIndex(), kKvColorByLayer);
  EXPECT_TRUE(IM_GetLayerLineType({}).isNull());
  EXPECT_EQ(IM_GetLayerZeroId(nullptr), drawing().layerZero());
  EXPECT_EQ(IM_IsLayerKindOf(KvDbObjectId(), 49), 0);
  EXPECT_EQ(IM_IsLayerKindOf(CString(L"0"), 45), 0);
  EXPECT_EQ(IM_GetLayerColor(addLayer(L"A")).colorIndex(), 7);
}

TEST_F(Layers, OldNamesBecomeThoseOfTheStandard) {
  use(Module::Real);
  const KvDbObjectId other = addLayer(L"OTHER"), outline = addLayer(L"1轮廓实线层"),
                     text = addLayer(L"6文字层"), old = addLayer(L"QX_CL"),
                     construction = addLayer(L"QX_CL_2");
  const KvDbObjectId present = IM_GetLayerId(53, nullptr, 0);
  const KvDbObjectId line = lineOn(old), bystander = lineOn(other);
  std::vector<ImProPropertyConfig> used;
  ASSERT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 1);
  EXPECT_EQ(used, (std::vector<ImProPropertyConfig>{45, 12, 53}));
  EXPECT_EQ(layer(outline).getName(), IM_GetLayerName(45, 0));
  EXPECT_EQ(layer(text).getName(), IM_GetLayerName(12, 0));
  EXPECT_TRUE(old.isErased());
  EXPECT_EQ(layerOf(line), layer(present).getName());
  EXPECT_EQ(layerOf(bystander), L"OTHER");
  EXPECT_EQ(layer(construction).getName(), L"QX_CL_2");
  used.clear();
  EXPECT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 1);
  EXPECT_TRUE(used.empty()) << "nothing is left to do";
}

TEST_F(Layers, AMergedLayerThatBlocksOrSheetsUseEndsTheConversion) {
  use(Module::Real);
  const KvDbObjectId old = addLayer(L"QX_CL");
  IM_GetLayerId(53, nullptr, 0);
  const KvDbObjectId inModel = lineOn(old), onSheet = lineOn(old, drawing().paperSpaceId());
  std::vector<ImProPropertyConfig> used;
  EXPECT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 0);
  EXPECT_TRUE(old.isValid());
  EXPECT_EQ(layerOf(inModel), IM_GetLayerName(53, 0));
  EXPECT_EQ(layerOf(onSheet), L"QX_CL");
  // A layer that is only renamed may be used anywhere.
  auto* entity = open<KvDbEntity>(onSheet, KvDb::kForWrite);
  entity->erase();
  entity->close();
  const KvDbObjectId renamed = addLayer(L"视口");
  const KvDbObjectId kept = lineOn(renamed, drawing().paperSpaceId());
  EXPECT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 1);
  EXPECT_EQ(layerOf(kept), IM_GetLayerName(3, 0));
}

TEST_F(Layers, ABlockThatUsesAMergedLayerEndsTheConversionToo) {
  use(Module::Real);
  const KvDbObjectId old = addLayer(L"图框层");
  IM_GetLayerId(78, nullptr, 0);
  auto* table = open<KvDbBlockTable>(drawing().blockTableId(), KvDb::kForWrite);
  auto* block = new KvDbBlockTableRecord;
  block->setName(L"FRAME");
  ASSERT_EQ(table->add(block), Kvad::eOk);
  const KvDbObjectId frame = block->objectId();
  block->close();
  table->close();
  const KvDbObjectId inBlock = lineOn(old, frame);
  std::vector<ImProPropertyConfig> used;
  EXPECT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 0);
  EXPECT_EQ(used, std::vector<ImProPropertyConfig>{78});
  EXPECT_EQ(layerOf(inBlock), L"图框层");
}

TEST_F(Layers, ARealDrawingWithTheOldLayers) {
  use(Module::Real);
  KvDbDatabase side(false, true);
  KvIoReport report;
  ASSERT_EQ(
      kvdbReadDrawing(side, std::filesystem::path(KORVANE_EXAMPLES) / "drawings" / "allkinds_r2004_ascii.dxf",
                      report),
      Kvad::eOk);
  // Its layers become some of the old ones, its entities stay on them.
  constexpr const wchar_t* kOld[] = {L"1轮廓实线层", L"2细线层", L"3中心线层", L"7标注层"};
  auto* table = open<KvDbLayerTable>(side.layerTableId());
  int renamed = 0;
  for (KvDbObjectId id : table->records()) {
    if (id == side.layerZero() || renamed == static_cast<int>(std::size(kOld))) continue;
    auto* record = open<KvDbLayerTableRecord>(id, KvDb::kForWrite);
    renamed += record->setName(kOld[renamed]) == Kvad::eOk;
    record->close();
  }
  table->close();
  ASSERT_GT(renamed, 0);
  std::vector<ImProPropertyConfig> used;
  EXPECT_EQ(IM_DwgInsertLayerConvert(&side, used), 1);
  EXPECT_EQ(static_cast<int>(used.size()), renamed);
  for (const wchar_t* name : kOld) EXPECT_TRUE(side.recordId(KvDbTable::Layer, name).isNull());
  EXPECT_FALSE(side.recordId(KvDbTable::Layer, IM_GetLayerName(used.front(), 0)).isNull());
  EXPECT_EQ(side.openCount(), 0);
}

TEST_F(Layers, WithoutTheModuleOldLayersMergeIntoLayerZero) {
  const KvDbObjectId old = addLayer(L"6文字层"), line = lineOn(old);
  std::vector<ImProPropertyConfig> used;
  EXPECT_EQ(IM_DwgInsertLayerConvert(&drawing(), used), 1);
  EXPECT_TRUE(old.isErased());
  EXPECT_EQ(layerOf(line), L"0");
  // A drawing must be named: the one that is being worked on isn't converted by chance.
  const KvDbObjectId kept = addLayer(L"7标注层");
  EXPECT_EQ(IM_DwgInsertLayerConvert(nullptr, used), 0);
  EXPECT_EQ(layer(kept).getName(), L"7标注层");
}

}  // namespace
