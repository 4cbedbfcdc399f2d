// Plots: where a known coordinate comes to lie on the page, what is left out, what the files hold.
#include "host/graphics/plot.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <pugixml.hpp>
#include <set>

#include "host/database/block.h"
#include "host/entities/blockreference.h"
#include "host/entities/curves.h"
#include "host/entities/polyline.h"
#include "host/entities/text.h"
#include "host/graphics/colors.h"
#include "host/graphics/dashes.h"
#include "host/io/drawing_file.h"
#include "host/io/linetype_file.h"
#include "tests/support/print.h"

namespace {

/// A canvas that keeps what it is given.
class Paper : public KvGrCanvas {
 public:
  struct Stroke {
    std::vector<KvGePoint2d> points;
    KvGrPen pen;
    int clips;
  };
  std::vector<Stroke> strokes;
  std::vector<std::vector<KvGePoint2d>> clips;
  std::vector<KvGrMatrix> glyphs, pictures;
  int fills = 0, open = 0, pages = 0;

  void beginPage(double, double, std::uint32_t) override { ++pages; }
  void endPage() override {}
  void stroke(const KvGePoint2d* points, int count, const KvGrPen& pen) override {
    strokes.push_back({{points, points + count}, pen, open});
  }
  void strokeCurves(const KvGePoint2d* poles, const unsigned char* degrees, int count, const KvGrPen& pen,
                    bool) override {
    int total = 1;
    for (int i = 0; i < count; ++i) total += degrees[i];
    strokes.push_back({{poles, poles + total}, pen, open});
  }
  void fill(const KvGePoint2d*, const int*, int, std::uint32_t) override { ++fills; }
  void picture(const std::shared_ptr<const KvGrPicture>&, const KvGrMatrix& place) override {
    pictures.push_back(place);
  }
  void glyph(const KvLtGlyph&, const KvGrMatrix& place, std::uint32_t, double) override {
    glyphs.push_back(place);
  }
  void pushClip(const std::vector<KvGePoint2d>& outline, bool) override {
    clips.push_back(outline);
    ++open;
  }
  void popClip() override { --open; }
  std::string finish(std::string&) override { return "x"; }
};

class PlotTest : public testing::Test {
 protected:
  ~PlotTest() override { EXPECT_EQ(drawing.openCount(), 0); }
  KvDbObjectId add(KvDbEntity* entity, const wchar_t* layer = L"0") {
    KvDbBlockTableRecord* space = nullptr;
    EXPECT_EQ(kvdbOpenObject(space, drawing.modelSpaceId(), KvDb::kForWrite), Kvad::eOk);
    KvDbObjectId id;
    space->appendKvDbEntity(id, entity);
    EXPECT_EQ(entity->setLayer(layer), Kvad::eOk);
    entity->close();
    space->close();
    return id;
  }
  void addLayer(const wchar_t* name, bool isPlottable = true) {
    KvDbLayerTable* table = nullptr;
    ASSERT_EQ(kvdbOpenObject(table, drawing.layerTableId(), KvDb::kForWrite), Kvad::eOk);
    auto* record = new KvDbLayerTableRecord;
    record->setName(name);
    record->setIsPlottable(isPlottable);
    EXPECT_EQ(table->add(record), Kvad::eOk);
    record->close();
    table->close();
  }
  KvDbDatabase drawing;
  Paper paper;
  KvPlotOptions options;
};

TEST_F(PlotTest, FitsTheDrawingIntoTheSheet) {
  add(new KvDbLine({0, 0, 0}, {1000, 100, 0}));
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  ASSERT_TRUE(result.isPlotted) << result.error;
  EXPECT_EQ(result.width, 297) << "a wide drawing turns the sheet";
  EXPECT_NEAR(result.scale, 0.277, 1e-12);
  ASSERT_EQ(paper.strokes.size(), 1u);
  EXPECT_NEAR(paper.strokes[0].points[0].x, 10, 1e-9);
  EXPECT_NEAR(paper.strokes[0].points[1].x, 287, 1e-9);
  EXPECT_NEAR(paper.strokes[0].points[0].y + paper.strokes[0].points[1].y, 210, 1e-9) << "in the middle";
  options.turn = KvPlotOptions::Turn::Portrait;
  EXPECT_EQ(kvgrPlot(drawing, options, paper).width, 210);
}

TEST_F(PlotTest, ScaleAndWindow) {
  add(new KvDbLine({100, 50, 0}, {110, 50, 0}));
  add(new KvDbLine({-5000, 0, 0}, {5000, 0, 0}));
  options.window = {{120, 60}, {100, 40}};
  options.scale = 2;
  options.paper = kvgrPaperNamed("a3");
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  ASSERT_TRUE(result.isPlotted) << result.error;
  // The window's middle, (110, 50), lies in the middle of the sheet.
  EXPECT_NEAR(paper.strokes.at(0).points[1].x, 297 / 2.0, 1e-9);
  EXPECT_NEAR(paper.strokes[0].points[1].y, 420 / 2.0, 1e-9);
  EXPECT_NEAR(paper.strokes[0].points[1].x - paper.strokes[0].points[0].x, 20, 1e-9);
  EXPECT_EQ(paper.strokes[0].clips, 1);
  EXPECT_EQ(paper.open, 0);
}

TEST_F(PlotTest, LineWeightsDontGrowWithTheScale) {
  auto* heavy = new KvDbLine({0, 0, 0}, {1, 0, 0});
  heavy->setLineWeight(static_cast<KvDb::LineWeight>(70));
  add(heavy);
  add(new KvDbLine({0, 1, 0}, {1, 1, 0}));
  for (double scale : {0.01, 1.0, 50.0}) {
    paper.strokes.clear();
    options.scale = scale;
    kvgrPlot(drawing, options, paper);
    ASSERT_EQ(paper.strokes.size(), 2u);
    EXPECT_EQ(paper.strokes[0].pen.width, 0.7);
    EXPECT_EQ(paper.strokes[1].pen.width, 0.25);
  }
}

TEST_F(PlotTest, LayersThatDontPlot) {
  addLayer(L"NOPLOT", false);
  addLayer(L"Contour");
  add(new KvDbLine({0, 0, 0}, {1, 0, 0}), L"NOPLOT");
  add(new KvDbLine({0, 0, 0}, {2, 0, 0}), L"Contour");
  add(new KvDbLine({0, 0, 0}, {3, 0, 0}));
  kvgrPlot(drawing, options, paper);
  EXPECT_EQ(paper.strokes.size(), 2u);
  paper.strokes.clear();
  options.layers = {L"CONT*"};
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  EXPECT_EQ(paper.strokes.size(), 1u);
  EXPECT_NEAR(result.scale, 277 / 2.0, 1e-9) << "what isn't plotted takes no room";
  options.layers = {L"NOPLOT"};
  EXPECT_EQ(kvgrPlot(drawing, options, paper).error, "there is nothing to plot");
}

TEST_F(PlotTest, FailuresBeginNoPage) {
  EXPECT_EQ(kvgrPlot(drawing, options, paper).error, "there is nothing to plot");
  add(new KvDbLine({0, 0, 0}, {1, 0, 0}));
  options.layout = L"Nowhere";
  EXPECT_NE(kvgrPlot(drawing, options, paper).error.find("\"Nowhere\""), std::string::npos);
  options.layout.Empty();
  options.window = {{1, 1}, {1, 5}};
  EXPECT_EQ(kvgrPlot(drawing, options, paper).error, "the window has no extent");
  options.window.reset();
  options.margin = 200;
  EXPECT_EQ(kvgrPlot(drawing, options, paper).error, "the margins leave nothing of the sheet");
  EXPECT_EQ(paper.pages, 0);
}

TEST_F(PlotTest, DotsAndPointsHaveAScale) {
  add(new KvDbLine({5, 5, 0}, {5, 5, 0}));
  EXPECT_TRUE(kvgrPlot(drawing, options, paper).isPlotted);
  EXPECT_EQ(kvgrPlot(drawing, options, paper).scale, 1);
}

TEST_F(PlotTest, TextStandsWhereItsPointIs) {
  auto* text = new KvDbText({10, 20, 0}, L"H", {}, 5);
  add(text);
  options.scale = 3;
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  ASSERT_EQ(paper.glyphs.size(), 1u);
  EXPECT_NEAR(paper.glyphs[0].e, result.origin.x + 30, 1e-9);
  EXPECT_NEAR(paper.glyphs[0].f, result.origin.y + 60, 1e-9);
  EXPECT_NEAR(paper.glyphs[0].d, 15, 1e-9);
}

TEST(Sheets, OfLayoutsWithViewports) {
  KvDbDatabase drawing(false);
  KvIoReport report;
  const auto file = std::filesystem::path(KORVANE_EXAMPLES) / "drawings/viewport_frozen_layers_r2013.dxf";
  ASSERT_EQ(kvdbReadDrawing(drawing, file, report), Kvad::eOk);
  ASSERT_EQ(kvgrLayoutNames(drawing).size(), 1u);
  Paper paper;
  KvPlotOptions options;
  options.layout = L"*";
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  ASSERT_TRUE(result.isPlotted) << result.error;
  EXPECT_EQ(paper.clips.size(), 3u) << "three viewports, and the sheet's own view isn't one";
  EXPECT_EQ(paper.open, 0);
  // "Layer 1", "Layer 2" and "Layer 3 is frozen": whole in the first view, without one of them in the others;
  // and the three titles on the sheet.
  const auto letters = [](const char* text) {
    return std::count_if(text, text + std::char_traits<char>::length(text), [](char c) { return c != ' '; });
  };
  const auto whole = 2 * letters("Layer 1") + letters("Layer 3 is frozen");
  EXPECT_EQ(static_cast<long>(paper.glyphs.size()),
            3 * whole - 2 * letters("Layer 1") + letters("no overrides") + 2 * letters("Layer 1 frozen"));
}

TEST(Names, OfPapersAndScales) {
  const struct {
    const char* name;
    double width, height;
  } papers[] = {{"A4", 210, 297},         {"a0", 841, 1189},       {"Ansi_B", 279.4, 431.8},
                {"ansi-a", 215.9, 279.4}, {"100x50.5", 100, 50.5}, {"1X1", 1, 1}};
  for (const auto& p : papers) {
    const auto found = kvgrPaperNamed(p.name);
    ASSERT_TRUE(found) << p.name;
    EXPECT_EQ(found->width, p.width);
    EXPECT_EQ(found->height, p.height);
  }
  for (const char* bad : {"", "A9", "x", "10x", "0x5", "-1x5", "1e9x5", "nanx5", "5x5x5", "A4 "})
    EXPECT_FALSE(kvgrPaperNamed(bad)) << bad;
  EXPECT_EQ(kvgrScaleNamed("1:5"), 0.2);
  EXPECT_EQ(kvgrScaleNamed("2:1"), 2);
  EXPECT_EQ(kvgrScaleNamed("0.5"), 0.5);
  for (const char* bad : {"", ":", "1:", ":2", "0:1", "1:0", "-1:2", "inf", "1:2:3", "1e308:1e-308", "two"})
    EXPECT_FALSE(kvgrScaleNamed(bad)) << bad;
}

TEST(Colors, OfTheTable) {
  const struct {
    int index;
    std::uint32_t rgb;
  } cases[] = {{1, 0xFF0000},   {3, 0x00FF00},   {5, 0x0000FF},   {8, 0x808080},
               {10, 0xFF0000},  {11, 0xFF7F7F},  {12, 0xA50000},  {30, 0xFF7F00},
               {50, 0xFFFF00},  {90, 0x00FF00},  {92, 0x00A500},  {130, 0x00FFFF},
               {170, 0x0000FF}, {210, 0xFF00FF}, {250, 0x333333}, {255, 0xFFFFFF}};
  for (const auto& c : cases) EXPECT_NEAR(kvgrTableColor(c.index), c.rgb, 0) << c.index;
  // A quarter of the way from red to yellow, give or take the rounding of other programs.
  EXPECT_NEAR(static_cast<int>((kvgrTableColor(20) >> 8) & 255), 63, 1);
  const auto white = KvCmEntityColor::ofIndex(7), red = KvCmEntityColor::ofIndex(1);
  EXPECT_EQ(kvgrPaperColor(white, 0xFFFFFF, false), 0x000000u);
  EXPECT_EQ(kvgrPaperColor(white, 0x000000, false), 0xFFFFFFu);
  EXPECT_EQ(kvgrPaperColor(KvCmEntityColor::ofRgb(0xFFFFFF), 0xFFFFFF, false), 0x000000u);
  EXPECT_EQ(kvgrPaperColor(red, 0xFFFFFF, false), 0xFF0000u);
  EXPECT_EQ(kvgrPaperColor(red, 0xFFFFFF, true), 0x000000u);
}

// --- Dashes

struct Dashed {
  std::vector<std::pair<double, double>> dashes;  // along the path
  int dots = 0;
};

Dashed dash(std::vector<KvGePoint2d> points, std::vector<double> lengths, bool isContinuous = true) {
  Dashed result;
  KvGrDashes pattern{std::move(lengths)};
  kvgrDash(points, pattern, isContinuous, [&](const KvGePoint2d* at, int count) {
    if (count == 1)
      ++result.dots;
    else
      result.dashes.push_back({at[0].x + at[0].y, at[count - 1].x + at[count - 1].y});
  });
  return result;
}

TEST(Dashes, BeginAndEndAlike) {
  const Dashed cut = dash({{0, 0}, {10, 0}}, {3, -1});
  ASSERT_EQ(cut.dashes.size(), 3u);
  EXPECT_NEAR(cut.dashes[0].second, 2.5, 1e-12);
  EXPECT_NEAR(cut.dashes[1].first, 3.5, 1e-12);
  EXPECT_NEAR(cut.dashes[1].second, 6.5, 1e-12);
  EXPECT_NEAR(cut.dashes[2].first, 7.5, 1e-12);
  EXPECT_NEAR(cut.dashes[2].second, 10, 1e-12);
  double length = 0;
  for (const auto& [from, to] : cut.dashes) length += to - from;
  EXPECT_NEAR(length, 10 - 2, 1e-12) << "two whole gaps";
}

TEST(Dashes, RunOnOverCornersOnlyWhenTold) {
  const std::vector<KvGePoint2d> corner{{0, 0}, {5, 0}, {5, 5}};
  const Dashed along = dash(corner, {3, -1}), each = dash(corner, {3, -1}, false);
  EXPECT_EQ(along.dashes.size(), 3u);
  EXPECT_NEAR(along.dashes[1].first, 3.5, 1e-12);
  EXPECT_NEAR(along.dashes[1].second, 6.5, 1e-12);
  EXPECT_EQ(each.dashes.size(), 4u);
  EXPECT_NEAR(each.dashes[1].second, 5, 1e-12);
  EXPECT_NEAR(each.dashes[2].first, 5, 1e-12);
}

TEST(Dashes, DotsAndOddPatterns) {
  EXPECT_EQ(dash({{0, 0}, {100, 0}}, {6, -2, 0, -2}).dots, 10);
  EXPECT_EQ(dash({{0, 0}, {2, 0}}, {3, -1}).dashes.size(), 1u) << "too short: drawn through";
  EXPECT_EQ(dash({{0, 0}, {10, 0}}, {0, 0}).dashes.size(), 1u);
  EXPECT_EQ(dash({{0, 0}, {10, 0}}, {5}).dashes.size(), 1u) << "no gap";
  EXPECT_EQ(dash({{0, 0}, {10, 0}}, {NAN, -1}).dashes.size(), 1u);
  EXPECT_EQ(dash({{0, 0}, {1e9, 0}}, {1e-9, -1e-9}).dashes.size(), 1u) << "finer than anything shows";
  EXPECT_EQ(dash({{3, 3}}, {3, -1}).dots, 1);
  EXPECT_EQ(dash({}, {3, -1}).dashes.size(), 0u);
  EXPECT_EQ(dash({{4, 4}, {4, 4}}, {3, -1}).dashes.size(), 1u);
}

// --- Files

std::string plotted(const char* name, std::unique_ptr<KvGrCanvas> canvas, KvPlotOptions options = {},
                    int pages = 1) {
  KvDbDatabase drawing(false);
  KvIoReport report;
  EXPECT_EQ(kvdbReadDrawing(drawing, std::filesystem::path(KORVANE_EXAMPLES) / "drawings" / name, report),
            Kvad::eOk);
  for (int i = 0; i < pages; ++i) EXPECT_TRUE(kvgrPlot(drawing, options, *canvas).isPlotted);
  std::string error;
  return canvas->finish(error);
}

TEST(Svg, IsSoundXmlWithEveryGlyphDefined) {
  const std::string svg = plotted("chinese_mtext_blocks_r2013.dxf", kvgrSvgCanvas());
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(svg.c_str()));
  const pugi::xml_node root = document.child("svg");
  EXPECT_STREQ(root.attribute("width").value(), "297mm");
  EXPECT_STREQ(root.attribute("viewBox").value(), "0 0 297000 210000");
  std::set<std::string> defined;
  for (const auto& glyph : root.child("defs").children("path"))
    defined.insert(std::string("#") + glyph.attribute("id").value());
  const auto uses = root.child("g").children("use");
  EXPECT_GT(std::distance(uses.begin(), uses.end()), 50);
  for (const auto& use : uses) EXPECT_TRUE(defined.contains(use.attribute("href").value()));
  EXPECT_EQ(svg, plotted("chinese_mtext_blocks_r2013.dxf", kvgrSvgCanvas())) << "the same at every run";
}

TEST(Svg, ClipsAreBalanced) {
  const std::string svg = plotted("xclip_r2013.dxf", kvgrSvgCanvas());
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(svg.c_str()));
  const auto clips = document.select_nodes("//clipPath"), groups = document.select_nodes("//g[@clip-path]");
  EXPECT_GT(clips.size(), 3u);
  EXPECT_EQ(clips.size(), groups.size());
}

TEST(Pdf, TablesPointAtObjectsAndStreamsUnpack) {
  const std::string pdf = plotted("sheet_parts_chute_r2000.dxf", kvgrPdfCanvas(), {}, 2);
  ASSERT_TRUE(pdf.starts_with("%PDF-1.5"));
  ASSERT_TRUE(pdf.ends_with("%%EOF\n"));
  const std::size_t table = std::stoul(pdf.substr(pdf.rfind("startxref\n") + 10));
  ASSERT_EQ(pdf.substr(table, 5), "xref\n");
  std::size_t at = pdf.find('\n', table + 5);
  const int count = std::stoi(pdf.substr(table + 7));
  for (int i = 1; i < count; ++i) {
    const std::size_t offset = std::stoul(pdf.substr(at + 1 + static_cast<std::size_t>(i) * 20, 10));
    EXPECT_EQ(pdf.substr(offset, std::to_string(i).size() + 6), std::to_string(i) + " 0 obj") << i;
  }
  EXPECT_NE(pdf.find("/Count 2"), std::string::npos);
  int streams = 0;
  for (std::size_t from = 0; (from = pdf.find("/Length ", from)) != pdf.npos; ++streams) {
    const std::size_t size = std::stoul(pdf.substr(from + 8));
    from = pdf.find("stream\n", from) + 7;
    std::string plain(1 << 22, '\0');
    uLongf length = static_cast<uLongf>(plain.size());
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(plain.data()), &length,
                         reinterpret_cast<const Bytef*>(pdf.data()) + from, static_cast<uLong>(size)),
              Z_OK);
    plain.resize(length);
    // What is opened is closed: states, and paths by a stroke or a fill.
    EXPECT_EQ(std::count(plain.begin(), plain.end(), 'q'), std::count(plain.begin(), plain.end(), 'Q'));
    EXPECT_EQ(pdf.substr(from + size, 10), "\nendstream");
  }
  EXPECT_GE(streams, 2);
}

TEST(Png, HasTheSizeOfItsSheet) {
  const std::string png = plotted("ae_r2000_ascii.dxf", kvgrPngCanvas(50.8));
  ASSERT_EQ(png.substr(1, 3), "PNG");
  const auto whole = [&](std::size_t at) {
    return (static_cast<unsigned char>(png[at + 2]) << 8) | static_cast<unsigned char>(png[at + 3]);
  };
  EXPECT_EQ(whole(16), 420);
  EXPECT_EQ(whole(20), 594);
  const auto canvas = kvgrPngCanvas(100000);
  canvas->beginPage(841, 1189, 0xFFFFFF);
  const KvGePoint2d ends[] = {{0, 0}, {1, 1}};
  canvas->stroke(ends, 2, {});
  canvas->endPage();
  std::string error;
  EXPECT_EQ(canvas->finish(error), "");
  EXPECT_NE(error.find("32767"), std::string::npos);
}

TEST_F(PlotTest, ShapesOfLinetypesStandAtTheirPlaces) {
  const CString file =
      platform::wideFromUtf8(std::string(KORVANE_TREE_DIR "/share/korvane/linetypes/kvadiso.lin"));
  for (const auto& [name, marks] : {std::pair{L"TRACKS", 3}, {L"FENCELINE2", 3}}) {
    KvDbDatabase fresh;
    ASSERT_EQ(kvdbLoadLineTypeFile(name, file, &fresh), Kvad::eOk);
    KvDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(kvdbOpenObject(space, fresh.modelSpaceId(), KvDb::kForWrite), Kvad::eOk);
    const double pattern = marks == 3 && name[0] == L'T' ? 7.62 : 36.83;
    auto* line = new KvDbLine({0, 0, 0}, {0, 3 * pattern, 0});
    space->appendKvDbEntity(line);
    line->setDatabaseDefaults(&fresh);
    EXPECT_EQ(line->setLinetype(name), Kvad::eOk);
    line->close();
    space->close();
    paper = Paper();
    options.scale = 1;
    ASSERT_TRUE(kvgrPlot(fresh, options, paper).isPlotted);
    int seen = 0;
    for (const Paper::Stroke& stroke : paper.strokes) {
      const auto [left, right] = std::minmax_element(stroke.points.begin(), stroke.points.end(),
                                                     [](KvGePoint2d a, KvGePoint2d b) { return a.x < b.x; });
      // The marks reach to both sides of the upright line by their size.
      if (right->x - left->x < 1) continue;
      EXPECT_NEAR(right->x - left->x, name[0] == L'T' ? 2 * 6.35 : 2 * 2.54, 1e-6);
      ++seen;
    }
    EXPECT_EQ(seen, marks) << platform::utf8From(CString(name));
  }
}

/// The text of every packed stream.
std::string unpacked(const std::string& pdf) {
  std::string all;
  for (std::size_t from = 0; (from = pdf.find("/FlateDecode/Length ", from)) != pdf.npos;) {
    const std::size_t size = std::stoul(pdf.substr(from + 20));
    from = pdf.find("stream\n", from) + 7;
    std::string part(1 << 20, '\0');
    uLongf length = part.size();
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(part.data()), &length,
                         reinterpret_cast<const Bytef*>(pdf.data()) + from, static_cast<uLong>(size)),
              Z_OK);
    all += part.substr(0, length);
    from += size;
  }
  return all;
}

TEST_F(PlotTest, PdfLayersCanBeSwitched) {
  addLayer(L"Contour");
  addLayer(L"Mass\u7ebf");
  addLayer(L"Off");
  KvDbObjectId off = drawing.recordId(KvDbTable::Layer, L"Off");
  KvDbLayerTableRecord* record = nullptr;
  ASSERT_EQ(kvdbOpenObject(record, off, KvDb::kForWrite), Kvad::eOk);
  record->setIsOff(true);
  record->close();
  add(new KvDbLine({0, 0, 0}, {9, 0, 0}), L"Contour");
  add(new KvDbLine({0, 1, 0}, {9, 1, 0}), L"Mass\u7ebf");
  add(new KvDbLine({0, 2, 0}, {9, 2, 0}), L"Contour");
  add(new KvDbLine({0, 3, 0}, {9, 3, 0}), L"Off");
  options.window = {{0, 0}, {9, 4}};  // with a clip
  options.title = L"Plan & \u7ebf";
  for (bool withHidden : {false, true}) {
    options.withHiddenLayers = withHidden;
    const auto canvas = kvgrPdfCanvas();
    ASSERT_TRUE(kvgrPlot(drawing, options, *canvas).isPlotted);
    ASSERT_TRUE(kvgrPlot(drawing, options, *canvas).isPlotted) << "a second page with the same layers";
    std::string error;
    const std::string pdf = canvas->finish(error), content = unpacked(pdf);
    std::size_t groups = 0;
    for (std::size_t at = 0; (at = pdf.find("/Type/OCG/Name", at)) != pdf.npos; ++at) ++groups;
    EXPECT_EQ(groups, withHidden ? 3u : 2u);
    EXPECT_NE(pdf.find("/Name<FEFF004D0061007300737EBF>"), pdf.npos);
    EXPECT_NE(pdf.find("/Title<FEFF0050006C0061006E0020002600207EBF>"), pdf.npos);
    EXPECT_EQ(pdf.find("/OFF[]") != pdf.npos, !withHidden);
    // Marked content and clips nest: no end without its beginning, none open at a clip's border.
    int open = 0, marks = 0;
    for (std::size_t at = 0; at < content.size();) {
      const std::size_t end = std::min(content.find('\n', at), content.size());
      const std::string_view line(content.data() + at, end - at);
      at = end + 1;
      if (line.ends_with("BDC")) ++open, ++marks;
      if (line == "EMC") --open;
      EXPECT_TRUE(open == 0 || open == 1);
      if (line == "Q" || line.ends_with("W* n")) {
        EXPECT_EQ(open, 0);
      }
    }
    EXPECT_EQ(open, 0);
    EXPECT_EQ(marks, 2 * (withHidden ? 4 : 3));
  }
}

TEST_F(PlotTest, BoldLettersAreFilledAndStroked) {
  const KvLtGlyph& glyph = KvLtFace::of(KvLtFaceKind::Sans).glyph('B');
  std::string error;
  const auto drawn = [&](std::unique_ptr<KvGrCanvas> canvas, double bold) {
    canvas->beginPage(100, 100, 0xFFFFFF);
    canvas->glyph(glyph, {50, 0, 0, 50, 20, 20}, 0xFF0000, bold);
    canvas->endPage();
    return canvas->finish(error);
  };
  EXPECT_NE(unpacked(drawn(kvgrPdfCanvas(), 0.07)).find("70 w 1 j"), std::string::npos);
  EXPECT_EQ(unpacked(drawn(kvgrPdfCanvas(), 0)).find(" w 1 j"), std::string::npos);
  EXPECT_NE(drawn(kvgrSvgCanvas(), 0.07).find("stroke=\"#ff0000\" stroke-width=\"70\""), std::string::npos);
}

TEST_F(PlotTest, WidthsOfPolylinesHaveRoomOnTheSheet) {
  auto* wide = new KvDbPolyline;
  wide->addVertexAt(0, {0, 0}, 0, 40, 40);
  wide->addVertexAt(1, {100, 0}, 0, 40, 40);
  add(wide);
  const KvPlotResult result = kvgrPlot(drawing, options, paper);
  ASSERT_TRUE(result.isPlotted);
  EXPECT_NEAR(result.scale, 277 / 100.0, 1e-9);
  options.paper = KvPlotPaper{1000, 100};
  options.turn = KvPlotOptions::Turn::Landscape;
  EXPECT_NEAR(kvgrPlot(drawing, options, paper).scale, 80 / 40.0, 1e-9)
      << "by its width, not its middle line";
}

}  // namespace
