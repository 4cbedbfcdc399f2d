// Layouts: what new and old drawings have, switching, making, renaming, deleting.
#include "host/database/layout.h"

#include <gtest/gtest.h>

#include "host/database/database.h"
#include "host/entities/curves.h"
#include "host/io/drawing_file.h"
#include "tests/support/print.h"

namespace {

CString blockName(const KvDbDatabase& drawing, const wchar_t* layout) {
  const auto* found = static_cast<const KvDbLayout*>(
      const_cast<KvDbDatabase&>(drawing).layoutManager().layoutId(layout).stub()->object);
  return kvdbRecordName(found->blockTableRecordId());
}

TEST(Layout, NewDrawingsHaveModelAndOneSheet) {
  KvDbDatabase drawing;
  KvDbLayoutManager& manager = drawing.layoutManager();
  ASSERT_EQ(manager.layouts().size(), 2u);
  EXPECT_EQ(manager.currentLayoutName(), L"Model");
  EXPECT_EQ(manager.layouts().front(), manager.modelLayoutId());
  EXPECT_EQ(blockName(drawing, L"layout1"), L"*Paper_Space");
  const auto* sheet = static_cast<const KvDbLayout*>(manager.layoutId(L"Layout1").stub()->object);
  EXPECT_EQ(sheet->paperWidth(), 420);
  EXPECT_EQ(sheet->scale(), 1);
  EXPECT_FALSE(sheet->isModelLayout());
  EXPECT_EQ(manager.deleteLayout(L"Layout1"), Kvad::eNotApplicable);  // the last sheet
}

TEST(Layout, SwitchingMovesTheCurrentSpaceAndTheNameOfTheShownSheet) {
  KvDbDatabase drawing;
  KvDbLayoutManager& manager = drawing.layoutManager();
  KvDbObjectId second;
  ASSERT_EQ(manager.createLayout(L"Sheet 2", second), Kvad::eOk);
  KvDbObjectId again;
  EXPECT_EQ(manager.createLayout(L"SHEET 2", again), Kvad::eDuplicateKey);
  EXPECT_EQ(manager.createLayout(L"a/b", again), Kvad::eInvalidName);
  EXPECT_EQ(manager.setCurrentLayout(L"nosuch"), Kvad::eKeyNotFound);
  EXPECT_EQ(blockName(drawing, L"Sheet 2"), L"*Paper_Space0");
  ASSERT_EQ(manager.setCurrentLayout(L"sheet 2"), Kvad::eOk);
  EXPECT_EQ(manager.currentLayoutName(), L"Sheet 2");
  EXPECT_FALSE(drawing.tilemode());
  EXPECT_EQ(blockName(drawing, L"Sheet 2"), L"*Paper_Space");
  EXPECT_EQ(blockName(drawing, L"Layout1"), L"*Paper_Space0");
  EXPECT_EQ(drawing.currentSpaceId(), drawing.paperSpaceId());
  // A saved and read drawing shows the same sheet.
  KvDbDatabase read(false);
  KvIoReport report;
  ASSERT_EQ(kvdbParseDrawing(read, kvdbFormatDrawing(drawing), report), Kvad::eOk);
  EXPECT_EQ(read.layoutManager().currentLayoutName(), L"Sheet 2");
  ASSERT_EQ(manager.setCurrentLayout(L"Model"), Kvad::eOk);
  EXPECT_EQ(drawing.currentSpaceId(), drawing.modelSpaceId());
  EXPECT_EQ(drawing.openCount(), 0);
}

TEST(Layout, DeletingTheShownSheetLeavesAWholeDrawing) {
  KvDbDatabase drawing;
  KvDbLayoutManager& manager = drawing.layoutManager();
  KvDbObjectId second;
  manager.createLayout(L"Two", second);
  manager.setCurrentLayout(L"Layout1");
  EXPECT_EQ(manager.renameLayout(L"Layout1", L"TWO"), Kvad::eDuplicateKey);
  EXPECT_EQ(manager.renameLayout(L"Model", L"X"), Kvad::eNotApplicable);
  EXPECT_EQ(manager.renameLayout(L"layout1", L"One"), Kvad::eOk);
  EXPECT_EQ(manager.currentLayoutName(), L"One");
  EXPECT_EQ(manager.deleteLayout(L"one"), Kvad::eOk);
  EXPECT_EQ(manager.currentLayoutName(), L"Model");
  EXPECT_EQ(blockName(drawing, L"Two"), L"*Paper_Space");
  EXPECT_EQ(manager.layouts().size(), 2u);
  KvDbDatabase read(false);
  KvIoReport report;
  EXPECT_EQ(kvdbParseDrawing(read, kvdbFormatDrawing(drawing), report), Kvad::eOk);
  EXPECT_EQ(drawing.openCount(), 0);
}

TEST(Layout, DrawingsOfTheOldestFormatGetThem) {
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbReadDrawing(drawing, KORVANE_EXAMPLES "/drawings/old_polylines_r12.dxf", report), Kvad::eOk);
  EXPECT_EQ(drawing.layoutManager().layouts().size(), 2u);
}

}  // namespace
