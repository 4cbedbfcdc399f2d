// Frames of a drawing: KMNEST moves the entities themselves, `korvane nest` reads outlines and draws its
// plan.
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "host/editor/commandstack.h"
#include "host/entities/blockreference.h"
#include "host/entities/text.h"
#include "host/io/drawing_file.h"
#include "siblings/tools/cli/nest_command.h"
#include "siblings/tools/nest_frames.h"
#include "tests/toolkit/support.h"

namespace {

constexpr double kClose = 1e-5;

struct Rect {
  double x0, y0, x1, y1;
};

std::ostream& operator<<(std::ostream& out, const Rect& r) {
  return out << r.x0 << "," << r.y0 << " " << r.x1 << "," << r.y1;
}

class NestFrames : public test::ToolkitTest {
 protected:
  NestFrames() { host->editor().commands().addCommand(L"TEST", L"KMNEST", L"KMNEST", 0, nestCommand); }

  void run(const CString& script) {
    shown.Empty();
    host->editor().pushSource(std::make_unique<KvEdScriptSource>(script));
    host->run();
    host->editor().dropInput();
  }
  KvDbObjectId addRectangle(double x, double y, double width, double height) {
    auto* outline = new KvDbPolyline;
    for (const KvGePoint2d& corner : {KvGePoint2d(x, y), KvGePoint2d(x + width, y),
                                      KvGePoint2d(x + width, y + height), KvGePoint2d(x, y + height)})
      outline->addVertexAt(outline->numVerts(), corner);
    outline->setClosed(true);
    return add(outline);
  }
  KvDbObjectId addLine(double x0, double y0, double x1, double y1) {
    return add(new KvDbLine(KvGePoint3d(x0, y0, 0), KvGePoint3d(x1, y1, 0)));
  }
  /// A block of a slanted line and a circle, its base point off its corner.
  KvDbObjectId addBlock() {
    auto* table = open<KvDbBlockTable>(drawing().tableId(KvDbTable::Block), KvDb::kForWrite);
    auto* block = new KvDbBlockTableRecord;
    block->setName(L"FRAME");
    KvDbObjectId id;
    EXPECT_EQ(table->add(id, block), Kvad::eOk);
    table->close();
    for (KvDbEntity* part :
         {static_cast<KvDbEntity*>(new KvDbLine(KvGePoint3d(-20, 3, 0), KvGePoint3d(150, 40, 0))),
          static_cast<KvDbEntity*>(new KvDbCircle(KvGePoint3d(60, 60, 0), KvGeVector3d::kZAxis, 25))}) {
      EXPECT_EQ(block->appendKvDbEntity(part), Kvad::eOk);
      part->close();
    }
    block->close();
    return id;
  }
  Rect extents(KvDbObjectId id) {
    auto* entity = open<KvDbEntity>(id);
    KvDbExtents box;
    EXPECT_EQ(entity->getGeomExtents(box), Kvad::eOk);
    entity->close();
    return {box.minPoint().x, box.minPoint().y, box.maxPoint().x, box.maxPoint().y};
  }
  std::string bytes() { return kvdbFormatDrawing(drawing()); }
  std::string path(const char* name) const { return (folder.path() / name).string(); }
  struct Outcome {
    int code;
    std::string out, err;
  };
  static Outcome nest(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"korvane"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    std::ostringstream out, err;
    const int code = runNestCommand(static_cast<int>(argv.size()), argv.data(), out, err);
    return {code, out.str(), err.str()};
  }
  std::string save(const char* name) {
    KvIoReport report;
    EXPECT_EQ(kvdbSaveDrawing(drawing(), path(name), report), Kvad::eOk);
    return path(name);
  }
};

/// Empty when each rectangle lies in one sheet of the row and keeps the gap from the others, half of it where
/// one lies under the other.
std::string faultOf(const std::vector<Rect>& rects, const SheetRow& row, double x, double y) {
  std::ostringstream fault;
  for (std::size_t i = 0; i < rects.size(); ++i) {
    const Rect& a = rects[i];
    const double sheet = x + std::floor((a.x0 - x + kClose) / row.pitch()) * row.pitch();
    if (a.x0 < x - kClose || a.x0 < sheet - kClose || a.x1 > sheet + row.length + kClose ||
        a.y0 < y - kClose || a.y1 > y + row.height + kClose)
      fault << a << " leaves its sheet; ";
    for (std::size_t k = 0; k < i; ++k) {
      const Rect& b = rects[k];
      const double besides = std::max(a.x0 - b.x1, b.x0 - a.x1), above = std::max(a.y0 - b.y1, b.y0 - a.y1);
      if (besides < row.gap - kClose && above < row.gap / 2 - kClose)
        fault << a << " too near to " << b << "; ";
    }
  }
  return fault.str();
}

TEST_F(NestFrames, RandomFramesStandClearOnTheirSheetsAndUndoBringsAllBack) {
  const KvDbObjectId block = addBlock();
  std::mt19937 random(7);
  const auto any = [&random](double least, double greatest) {
    return std::uniform_real_distribution<double>(least, greatest)(random);
  };
  int turned = 0;
  for (int round = 0; round < 12; ++round) {
    KvDbObjectIdArray ids;
    std::vector<std::pair<double, double>> sizes;
    for (int i = 0; i < 25; ++i) {
      const double x = any(-3000, 3000), y = any(-3000, 3000);
      if (i % 4 == 0) {
        auto* reference = new KvDbBlockReference(KvGePoint3d(x, y, 5), block);
        reference->setRotation(any(0, 6));
        const double scale = any(0.5, 2);
        reference->setScaleFactors({scale, scale, scale});
        ids.append(add(reference));
      } else if (i % 4 == 1) {
        ids.append(add(new KvDbCircle(KvGePoint3d(x, y, 0), KvGeVector3d::kZAxis, any(1, 150))));
      } else if (i % 4 == 2) {
        ids.append(addLine(x, y, x + any(-200, 200), y + any(-200, 200)));
      } else {
        ids.append(addRectangle(x, y, any(1, 400), any(1, 400)));
      }
    }
    const std::string before = bytes();
    // A block's extents are those of its parts as they are turned: the size may differ where a frame was
    // turned.
    const SheetRow row{841, 594, any(0, 20), any(0, 20), any(0, 50)};
    CString script;
    script.Format(L"KMNEST\nALL\n\n841\n594\n%.17g\n%.17g\n%.17g\n-4000,77\n", row.gap, row.edge,
                  row.between);
    run(script);
    std::vector<Rect> rects;
    for (KvDbObjectId id : ids) rects.push_back(extents(id));
    ASSERT_EQ(faultOf(rects, row, -4000, 77), "") << "round " << round << " " << platform::utf8From(shown);
    ASSERT_GE(shown.Find(L"25 of 25 frames placed on "), 0) << platform::utf8From(shown);
    if (shown.Find(L", 0 turned") < 0) ++turned;
    ASSERT_NE(bytes(), before);
    run(L"U\n");
    ASSERT_EQ(bytes(), before) << "round " << round;
    run(L"ERASE\nALL\n\n");
  }
  EXPECT_GT(turned, 6) << "plans without a turned frame show little";
}

TEST_F(NestFrames, TurnedFramesKeepTheirShapeAndHeight) {
  auto* reference = new KvDbBlockReference(KvGePoint3d(500, 500, 12), addBlock());
  const KvDbObjectId id = add(reference);
  const Rect before = extents(id);  // 170 by 82
  KvDbObjectIdArray one;
  one.append(id);
  const NestOutcome outcome = nestFrames(one, {100, 200}, KvGePoint3d(10, 20, 99));
  EXPECT_EQ(outcome.turned, 1);
  const Rect after = extents(id);
  EXPECT_NEAR(after.x0, 10, kClose);
  EXPECT_NEAR(after.y0, 20, kClose);
  EXPECT_NEAR(after.x1 - after.x0, before.y1 - before.y0, kClose);
  EXPECT_NEAR(after.y1 - after.y0, before.x1 - before.x0, kClose);
  EXPECT_NEAR(outcome.used, 170 * 82 / (100.0 * 200), 1e-9);
  auto* moved = open<KvDbBlockReference>(id);
  EXPECT_NEAR(moved->rotation(), kvge::kPi / 2, 1e-12);
  EXPECT_NEAR(moved->position().z, 12, 1e-12);
  EXPECT_EQ(moved->scaleFactors(), KvGeScale3d());
  moved->close();
}

TEST_F(NestFrames, WhatCantBePlacedStaysAndIsNamed) {
  const KvDbObjectId fits = addRectangle(2000, 0, 100, 50), large = addRectangle(0, 900, 900, 601);
  auto* line = new KvDbXline;
  line->setUnitDir(KvGeVector3d(1, 1, 0));
  const KvDbObjectId endless = add(line);
  const KvDbObjectId held = addRectangle(3000, 0, 10, 10), closed = addLayer(L"CLOSED");
  auto* entity = open<KvDbEntity>(held, KvDb::kForWrite);
  entity->setLayer(closed);
  entity->close();
  auto* record = open<KvDbLayerTableRecord>(closed, KvDb::kForWrite);
  record->setIsLocked(true);
  record->close();
  run(L"KMNEST\nALL\n3005,0\n\n\n\n\n\n\n\n");
  const std::string words = platform::utf8From(shown);
  for (const std::string& text :
       {std::string("1 on a locked layer, left out."),
        std::string("1 of 3 frames placed on 1 sheet, 1 turned, 1.0 % used."),
        "1 that no sheet takes, left where they were: " + platform::utf8From(large.handle().toText()) +
            " (900 x 601)",
        "1 without extents, left out: " + platform::utf8From(endless.handle().toText())})
    EXPECT_NE(words.find(text), std::string::npos) << text << "\n" << words;
  EXPECT_NEAR(extents(fits).x0, 0, kClose);
  EXPECT_EQ(extents(large).y0, 900);
  EXPECT_EQ(extents(held).x0, 3000);

  run(L"KMNEST\n3005,0\n\n");
  EXPECT_GE(shown.Find(L"Nothing is left to be laid out."), 0) << platform::utf8From(shown);
}

TEST_F(NestFrames, WrongValuesAreAskedForAgainAndNothingIsDoneWithoutThem) {
  const KvDbObjectId id = addRectangle(50, 60, 30, 20);
  const std::string before = bytes();
  // The script ends before the answers do.
  for (const wchar_t* script :
       {L"KMNEST\n", L"KMNEST\nALL\n", L"KMNEST\nALL\n\n100\n", L"KMNEST\nALL\n\n0\n-1\nx\n",
        L"KMNEST\nALL\n\n100\n100\n-5\n", L"KMNEST\nALL\n\n1e10\n2e9\n"}) {
    run(script);
    EXPECT_EQ(bytes(), before) << platform::utf8From(CString(script));
  }
  run(L"KMNEST\nALL\n\n1e10\n0\n100\nnan\n50\n-1\n0\n0\n0\n7,8\n");
  EXPECT_GE(shown.Find(L"At most 1e+09 expected."), 0) << platform::utf8From(shown);
  EXPECT_GE(shown.Find(L"12.0 % used"), 0) << platform::utf8From(shown);
  EXPECT_NEAR(extents(id).x0, 7, kClose);
  EXPECT_NEAR(extents(id).y0, 8, kClose);
}

TEST_F(NestFrames, ItemsAreTheOuterClosedOutlinesOfADrawing) {
  addRectangle(0, 0, 100, 50);
  add(new KvDbCircle(KvGePoint3d(50, 25, 0), KvGeVector3d::kZAxis, 10));  // a hole
  addRectangle(0, 0, 100, 50);                                            // drawn twice
  addLine(200, 0, 260, 0);                                                // a triangle of lines
  addLine(260, 0, 230, 40);
  addLine(200, 0, 230, 40);
  addLine(500, 0, 600, 0);       // open
  addRectangle(90, 40, 30, 30);  // reaches out of the first
  add(new KvDbText(KvGePoint3d(900, 0, 0), L"no outline"));
  const Outcome outcome = nest({save("parts.dxf"), "--sheet", "400x400", "--json"});
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  std::vector<std::string> sizes;
  for (std::size_t at = 0; (at = outcome.out.find("\"width\":", at)) != std::string::npos; ++at)
    sizes.push_back(outcome.out.substr(at, outcome.out.find(",\"sheet\"", at) - at));
  EXPECT_EQ(sizes, (std::vector<std::string>{"\"width\":100,\"height\":50", "\"width\":30,\"height\":30",
                                             "\"width\":60,\"height\":40"}));
  EXPECT_NE(outcome.out.find("{\"outline\":3,\"name\":\""), std::string::npos) << outcome.out;
  EXPECT_NE(nest({path("parts.dxf"), "--sheet", "70x70"}).out.find("not placed: outline 1 "),
            std::string::npos);
}

TEST_F(NestFrames, DrawingsThatGiveNoItemsAreRefused) {
  const std::string open = [&] {
    addLine(0, 0, 10, 0);
    addRectangle(0, 5, 10, 0);  // without an area
    return save("open.dxf");
  }();
  std::ofstream(path("cut.dxf")) << std::ifstream(open).rdbuf();
  std::filesystem::resize_file(path("cut.dxf"), std::filesystem::file_size(open) / 2);
  const struct {
    std::string file, words;
  } cases[] = {{open, "open.dxf: no closed outline in model space"},
               {path("cut.dxf"), "cut.dxf: "},
               {path("none.DXF"), "none.DXF"}};
  for (const auto& [file, words] : cases) {
    const Outcome outcome = nest({file, "--sheet", "100x100", "-o", path("never.dxf")});
    EXPECT_EQ(outcome.code, 1) << words;
    EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_FALSE(std::filesystem::exists(path("never.dxf")));
  }
}

TEST_F(NestFrames, ThePlanIsADrawingOfSheetsItemsAndLabels) {
  std::ofstream(path("items.csv"))
      << "name,width,height,count\nA4,210,297,4\n\xe5\x9b\xbe,100,420,1\n,500,500,1\n,90,40,1\n";
  for (const char* form : {"plan.dxf", "plan.dwg"}) {
    const Outcome outcome =
        nest({path("items.csv"), "--sheet", "594x420", "--gap", "5", "--between", "30", "-o", path(form)});
    EXPECT_EQ(outcome.code, 1) << "one item is larger than a sheet";
    KvDbDatabase plan(false, true);
    KvIoReport report;
    ASSERT_EQ(kvdbReadDrawing(plan, path(form), report), Kvad::eOk)
        << platform::utf8From(report.error.describe());
    KvDbBlockTableRecord* space = open<KvDbBlockTableRecord>(plan.modelSpaceId());
    const KvDbObjectIdArray ids = space->entities();
    space->close();
    std::vector<Rect> items, sheets;
    CString labels;
    for (KvDbObjectId id : ids) {
      auto* entity = open<KvDbEntity>(id);
      const CString layer = entity->layer();
      if (const auto* text = KvDbText::cast(entity)) {
        EXPECT_EQ(layer, L"LABELS");
        labels += text->textString() + L"|";
        const KvGePoint3d middle = text->alignmentPoint();
        const Rect& own = items.back();
        EXPECT_NEAR(middle.x, (own.x0 + own.x1) / 2, kClose);
        EXPECT_NEAR(middle.y, (own.y0 + own.y1) / 2, kClose);
        EXPECT_LE(text->textWidth(), own.x1 - own.x0);
      } else {
        const auto* outline = KvDbPolyline::cast(entity);
        EXPECT_TRUE(outline && outline->isClosed());
        (layer == L"SHEETS" ? sheets : items).push_back(extents(id));
      }
      entity->close();
    }
    EXPECT_EQ(labels, L"A4|A4|A4|A4|\u56fe|90 x 40|");
    EXPECT_EQ(faultOf(items, {594, 420, 5, 0, 30}, 0, 0), "");
    ASSERT_EQ(sheets.size(), 3u);
    for (std::size_t i = 0; i < sheets.size(); ++i) {
      EXPECT_NEAR(sheets[i].x0, 624.0 * static_cast<double>(i), kClose);
      EXPECT_NEAR(sheets[i].x1 - sheets[i].x0, 594, kClose);
      EXPECT_NEAR(sheets[i].y1, 420, kClose);
    }
    EXPECT_EQ(plan.openCount(), 0);
  }
  EXPECT_EQ(nest({path("items.csv"), "--sheet", "594x420", "-o", path("no/plan.dxf")}).out, "")
      << "not written";
}

}  // namespace
