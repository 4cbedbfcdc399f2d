// Plots of real drawings against accepted pictures: an entity that isn't drawn any more, or is drawn
// elsewhere, shows here. After a change that is meant, look at the pictures that the failures name, then run
// with KORVANE_ACCEPT_PICTURES=1.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "tests/support/picture.h"

namespace {

namespace fs = std::filesystem;

struct Picture {
  const char* drawing;
  const char* accepted;
  std::optional<KvPlotOptions::Window> window = {};
  const wchar_t* layout = L"";
};

// Twins share their picture.
const Picture kPictures[] = {
    {"ae_r12_ascii", "ae_r12"},
    {"ae_r2000_ascii", "ae"},
    {"ae_r2007_binary", "ae"},
    {"ae_r2013_ascii", "ae"},
    {"allkinds_r12_ascii", "allkinds_r12"},
    {"allkinds_r12_binary", "allkinds_r12"},
    {"allkinds_r2004_ascii", "allkinds"},
    {"allkinds_r2004_binary", "allkinds"},
    {"allkinds_r2004_ascii", "allkinds_curves", {{{-20, -20}, {120, 60}}}},
    {"allkinds_r2004_ascii", "allkinds_dimensions", {{{120, -20}, {520, 60}}}},
    {"allkinds_r2004_ascii", "allkinds_texts", {{{-20, -180}, {140, -10}}}},
    {"allkinds_r12_ascii", "allkinds_r12_dimensions", {{{120, -20}, {520, 60}}}},
    {"arc_sjis_r2000", "arc_sjis"},
    {"chinese_mtext_blocks_r2013", "chinese_mtext"},
    {"derived_chinese_gbk_r2000", "chinese_gbk"},
    {"dimension_linear_r2010", "dimension_linear"},
    {"dimension_nested_blocks_r2013", "dimension_nested"},
    {"groups_r2013", "groups"},
    {"hatch_circles_r2018", "hatch_circles"},
    {"hatches_islands_r2018", "hatches_islands"},
    {"minsert_attribs_r2013", "minsert"},
    {"mtext_inline_codes_r2013", "mtext_codes"},
    {"old_polylines_r12", "old_polylines"},
    {"sheet_parts_aluminum_r2007", "parts_aluminum"},
    {"sheet_parts_chute_r2000", "parts_chute"},
    {"table_entity_r2013", "table"},
    {"viewport_frozen_layers_r2013", "viewports", {}, L"*"},
    {"viewport_frozen_layers_r2013", "viewports_model"},
    {"xclip_r2013", "xclip"},
    {"xdata_lines_r2013", "xdata_lines"},
};

TEST(Pictures, OfRealDrawingsAreTheAcceptedOnes) {
  constexpr double kPointsPerMillimetre = 4;
  const fs::path made = fs::path(KORVANE_TREE_DIR).parent_path() / "pictures";
  fs::create_directories(made);
  std::string open;
  std::unique_ptr<KvDbDatabase> drawing;
  for (const Picture& picture : kPictures) {
    if (open != picture.drawing) {
      open = picture.drawing;
      drawing = std::make_unique<KvDbDatabase>(false);
      KvIoReport report;
      const std::string file = KORVANE_EXAMPLES "/drawings/" + open + ".dxf";
      ASSERT_EQ(kvdbReadDrawing(*drawing, file, report, KvIoMode::Recover), Kvad::eOk) << open;
    }
    KvPlotOptions options;
    options.window = picture.window;
    options.layout = picture.layout;
    const auto canvas = kvgrPngCanvas(25.4 * kPointsPerMillimetre);
    const KvPlotResult result = kvgrPlot(*drawing, options, *canvas);
    ASSERT_TRUE(result.isPlotted) << open << ": " << result.error;
    std::string error;
    const fs::path png = made / (open + "_" + picture.accepted + ".png");
    std::ofstream(png, std::ios::binary) << canvas->finish(error);
    EXPECT_TRUE(test::comparePicture(
        png, fs::path(KORVANE_TEST_DATA) / "pictures" / (picture.accepted + std::string(".txt"))));
  }
}

TEST(Pictures, EveryDrawingHasOne) {
  std::set<std::string> drawn;
  for (const Picture& picture : kPictures) drawn.insert(picture.drawing);
  for (const auto& file : fs::directory_iterator(KORVANE_EXAMPLES "/drawings"))
    EXPECT_TRUE(drawn.contains(file.path().stem().string())) << file.path();
}

}  // namespace
