// Wipeouts, pictures in drawings, and the order in which entities cover each other.
#include "host/entities/rasterimage.h"

#include <gtest/gtest.h>
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>

#include "host/database/draworder.h"
#include "host/graphics/plot.h"
#include "host/io/drawing_file.h"
#include "tests/support/picture.h"
#include "tests/support/temporary_tree.h"

namespace {

/// Entities and objects as a drawing file's text, in pairs of code and value.
std::string drawingText(const std::string& entities, const std::string& objects = "") {
  return "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n" + entities +
         "0\nENDSEC\n0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n5\nC\n100\nAcDbDictionary\n" + objects +
         "0\nENDSEC\n0\nEOF\n";
}
std::string line(const char* layer, double y) {
  return std::string("0\nLINE\n8\n") + layer + "\n100\nAcDbLine\n10\n0\n20\n" + std::to_string(y) +
         "\n11\n100\n21\n" + std::to_string(y) + "\n";
}
/// The square from 20, 20 to 60, 60; `more` may give other groups.
std::string wipeout(const std::string& more =
                        "280\n1\n71\n2\n91\n5\n14\n-0.5\n24\n-0.5\n14\n0.5\n24\n-0.5\n14\n"
                        "0.5\n24\n0.5\n14\n-0.5\n24\n0.5\n14\n-0.5\n24\n-0.5\n") {
  return "0\nWIPEOUT\n5\n40\n8\n0\n100\nAcDbWipeout\n90\n0\n10\n20\n20\n20\n30\n0\n11\n40\n21\n0\n31\n0\n12\n"
         "0\n"
         "22\n40\n32\n0\n13\n1\n23\n1\n340\n0\n70\n7\n" +
         more;
}
/// From 10, 10, each of its 64 by 32 points 0.5 units wide and 1 high, turned by a right angle.
std::string image(const std::string& more = "") {
  return "0\nIMAGE\n5\n50\n8\n0\n100\nAcDbRasterImage\n90\n0\n10\n10\n20\n10\n30\n0\n11\n0\n21\n0."
         "5\n31\n0\n12\n"
         "-1\n22\n0\n32\n0\n13\n64\n23\n32\n340\n51\n70\n7\n" +
         more;
}
std::string imageFile(const std::string& name) {
  return "0\nIMAGEDEF\n5\n51\n330\nC\n100\nAcDbRasterImageDef\n90\n0\n1\n" + name +
         "\n10\n64\n20\n32\n280\n1\n";
}

/// Tells what came, in order.
class Log : public KvGrCanvas {
 public:
  std::vector<std::string> calls;
  std::vector<KvGrMatrix> places;
  std::vector<std::vector<KvGePoint2d>> areas, clips;
  std::vector<bool> inverted;
  void beginPage(double, double, std::uint32_t) override {}
  void endPage() override {}
  void stroke(const KvGePoint2d*, int count, const KvGrPen&) override {
    calls.push_back("stroke " + std::to_string(count));
  }
  void strokeCurves(const KvGePoint2d*, const unsigned char*, int, const KvGrPen&, bool) override {
    calls.push_back("curves");
  }
  void fill(const KvGePoint2d* points, const int* counts, int, std::uint32_t rgb) override {
    calls.push_back(rgb == 0xFFFFFF ? "cover" : "fill");
    areas.emplace_back(points, points + counts[0]);
  }
  void picture(const std::shared_ptr<const KvGrPicture>&, const KvGrMatrix& place) override {
    calls.push_back("picture");
    places.push_back(place);
  }
  void glyph(const KvLtGlyph&, const KvGrMatrix&, std::uint32_t, double) override {
    calls.push_back("glyph");
  }
  void pushClip(const std::vector<KvGePoint2d>& outline, bool isInverted) override {
    clips.push_back(outline);
    inverted.push_back(isInverted);
    calls.push_back("clip");
  }
  void popClip() override { calls.push_back("unclip"); }
  std::string finish(std::string&) override { return "x"; }
  std::string told() const {
    std::string all;
    for (const std::string& call : calls) all += (all.empty() ? "" : ", ") + call;
    return all;
  }
};

class RasterTest : public testing::Test {
 protected:
  void read(const std::string& text) {
    drawing = std::make_unique<KvDbDatabase>(false);
    KvIoReport report;
    ASSERT_EQ(kvdbParseDrawing(*drawing, text, report, KvIoMode::Recover), Kvad::eOk)
        << platform::utf8From(report.error.describe());
    drawing->setFolder(folder.path());
  }
  KvPlotResult plot() {
    log = Log();
    KvPlotOptions options;
    options.window = {{0, 0}, {100, 100}};
    options.paper = KvPlotPaper{100, 100};
    options.margin = 0;
    return kvgrPlot(*drawing, options, log);
  }
  const KvDbEntity* entity(int index) const {
    const auto* space = KvDbBlockTableRecord::cast(drawing->modelSpaceId().stub()->object);
    const KvDbObjectIdArray all = space->entities();
    return index < all.length() ? KvDbEntity::cast(all[index].stub()->object) : nullptr;
  }
  void writePng(const char* name) {
    const auto canvas = kvgrPngCanvas(25.4);
    canvas->beginPage(64, 32, 0x3060C0);
    canvas->endPage();
    std::string error;
    std::ofstream(folder.path() / name, std::ios::binary) << canvas->finish(error);
  }
  test::TemporaryFolder folder;
  std::unique_ptr<KvDbDatabase> drawing;
  Log log;
};

TEST_F(RasterTest, AWipeoutCoversWhatCameBeforeAndHasAFrame) {
  read(drawingText(line("0", 40) + wipeout() + line("0", 50)));
  ASSERT_TRUE(plot().isPlotted);
  EXPECT_EQ(log.told(), "clip, stroke 2, cover, stroke 5, stroke 2, unclip");
  ASSERT_EQ(log.areas.size(), 1u);
  for (const KvGePoint2d p : log.areas[0]) {
    EXPECT_NEAR(std::fabs(p.x - 40), 20, 1e-9);
    EXPECT_NEAR(std::fabs(p.y - 40), 20, 1e-9);
  }
  const auto* masked = KvDbWipeout::cast(entity(1));
  ASSERT_TRUE(masked);
  KvDbExtents extents;
  ASSERT_EQ(masked->getGeomExtents(extents), Kvad::eOk);
  EXPECT_EQ(extents.minPoint(), KvGePoint3d(20, 20, 0));
  EXPECT_EQ(extents.maxPoint(), KvGePoint3d(60, 60, 0));
}

TEST_F(RasterTest, FramesFollowTheirVariables) {
  const auto variables = [](int mode) {
    return "3\nACAD_WIPEOUT_"
           "VARS\n350\n44\n0\nWIPEOUTVARIABLES\n5\n44\n330\nC\n100\nAcDbWipeoutVariables\n70\n" +
           std::to_string(mode) + "\n";
  };
  const std::pair<int, KvDbFrameMode> cases[] = {
      {0, KvDbFrameMode::Never}, {1, KvDbFrameMode::Always}, {2, KvDbFrameMode::ScreenOnly}};
  for (const auto& [mode, meant] : cases) {
    read(drawingText(wipeout(), variables(mode)));
    plot();
    EXPECT_EQ(log.told(),
              meant == KvDbFrameMode::Always ? "clip, cover, stroke 5, unclip" : "clip, cover, unclip")
        << mode;
    EXPECT_EQ(KvDbWipeout::cast(entity(0))->frameMode(), meant);
  }
}

TEST_F(RasterTest, BoundariesMayBePolygonsRectanglesInvertedOrMissing) {
  read(drawingText(wipeout("280\n0\n")));
  EXPECT_EQ(KvDbWipeout::cast(entity(0))->boundary().size(), 4u) << "the whole";
  read(drawingText(wipeout("280\n1\n71\n1\n91\n2\n14\n-0.5\n24\n-0.5\n14\n0\n24\n0\n")));
  const auto corners = KvDbWipeout::cast(entity(0))->boundary();
  ASSERT_EQ(corners.size(), 4u);
  EXPECT_EQ(corners[0], KvGePoint3d(20, 60, 0)) << "rows run downwards";
  EXPECT_EQ(corners[2], KvGePoint3d(40, 40, 0));
  read(drawingText(wipeout("280\n1\n71\n2\n91\n3\n14\n0\n24\n0\n14\n0.2\n24\n0\n14\n0\n24\n0.2\n290\n1\n")));
  plot();
  EXPECT_EQ(log.told(), "clip, clip, cover, unclip, stroke 4, unclip");
  EXPECT_TRUE(log.inverted.at(1));
  EXPECT_EQ(log.areas.at(0).size(), 4u) << "all but the triangle";
}

TEST_F(RasterTest, TurnedAndScaledWithItsGroupsKept) {
  read(drawingText(wipeout()));
  auto* masked = KvDbWipeout::cast(const_cast<KvDbEntity*>(entity(0)));
  KvDbObject* open = nullptr;
  ASSERT_EQ(kvdbOpenAny(open, masked->objectId(), KvDb::kForWrite), Kvad::eOk);
  EXPECT_EQ(masked->transformBy(KvGeMatrix3d::rotation(kvge::kPi / 2, KvGeVector3d::kZAxis) *
                                KvGeMatrix3d::scaling(2)),
            Kvad::eOk);
  EXPECT_EQ(masked->setOrientation({}, {1, 0, 0}, {2, 0, 0}), Kvad::eInvalidInput);
  open->close();
  KvDbExtents extents;
  masked->getGeomExtents(extents);
  EXPECT_TRUE(extents.minPoint().isEqualTo({-120, 40, 0}));
  EXPECT_TRUE(extents.maxPoint().isEqualTo({-40, 120, 0}));
  const std::string saved = kvdbFormatDrawing(*drawing);
  EXPECT_NE(saved.find("AcDbWipeout"), saved.npos);
  EXPECT_NE(saved.find(" 91\r\n        5\r\n"), saved.npos) << "the boundary's count";
}

TEST_F(RasterTest, APictureBesideTheDrawingComesToItsPlace) {
  writePng("photo.png");
  for (const char* name : {"photo.png", ".\\PHOTO.PNG", "C:\\elsewhere\\photo.png"}) {
    read(drawingText(image(), imageFile(name)));
    const KvPlotResult result = plot();
    ASSERT_TRUE(result.warnings.empty()) << name << ": " << result.warnings[0];
    EXPECT_EQ(log.told(), "clip, picture, stroke 5, unclip");
    const KvGrMatrix m = log.places.at(0);
    // Its lower edge runs upwards, 32 units; its left edge to the left, 32 units.
    for (const auto& [is, wanted] :
         {std::pair{m.a, 0.0}, {m.b, 32.0}, {m.c, -32.0}, {m.d, 0.0}, {m.e, 10.0}, {m.f, 10.0}})
      EXPECT_NEAR(is, wanted, 1e-9);
  }
}

TEST_F(RasterTest, AClippedPictureShowsItsPart) {
  writePng("photo.png");
  read(drawingText(image("280\n1\n71\n1\n91\n2\n14\n-0.5\n24\n-0.5\n14\n31.5\n24\n15.5\n"),
                   imageFile("photo.png")));
  plot();
  EXPECT_EQ(log.told(), "clip, clip, picture, unclip, stroke 5, unclip");
  // The upper left quarter of the picture is its lower left one on the page, since it is turned.
  for (const KvGePoint2d p : log.clips.at(1)) {
    EXPECT_TRUE(std::fabs(p.x + 22) < 1e-9 || std::fabs(p.x + 6) < 1e-9) << p.x;
    EXPECT_TRUE(std::fabs(p.y - 10) < 1e-9 || std::fabs(p.y - 26) < 1e-9) << p.y;
  }
}

TEST_F(RasterTest, AMissingOrForeignPictureShowsItsNameAndIsTold) {
  std::ofstream(folder.path() / "notes.tif") << "II*";
  std::ofstream(folder.path() / "cut.png", std::ios::binary) << "\x89PNG\r\n\x1A\n";
  for (const char* name : {"gone.png", "notes.tif", "cut.png", ""}) {
    read(drawingText(image(), imageFile(name)));
    const KvPlotResult result = plot();
    ASSERT_TRUE(result.isPlotted);
    ASSERT_EQ(result.warnings.size(), 1u) << name;
    EXPECT_NE(result.warnings[0].find(std::string("\"") + name + "\""), std::string::npos);
    EXPECT_EQ(std::count(log.calls.begin(), log.calls.end(), "stroke 5"), 2) << "its frame, and the entity's";
    EXPECT_EQ(std::count(log.calls.begin(), log.calls.end(), "glyph"), static_cast<long>(strlen(name)))
        << name;
  }
}

std::string jpegOf(int width, int height, int components) {
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = static_cast<JDIMENSION>(width);
  jpeg.image_height = static_cast<JDIMENSION>(height);
  jpeg.input_components = components;
  jpeg.in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  std::vector<unsigned char> row(static_cast<std::size_t>(width * components), 0);
  for (std::size_t i = 0; i < row.size(); i += static_cast<std::size_t>(components)) row[i] = 200;
  for (int y = 0; y < height; ++y) {
    unsigned char* rows[] = {row.data()};
    jpeg_write_scanlines(&jpeg, rows, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string out(reinterpret_cast<char*>(bytes), size);
  free(bytes);
  return out;
}

TEST(Pictures, JpegAndDamage) {
  std::string error;
  const std::string colors = jpegOf(40, 24, 3), grey = jpegOf(40, 24, 1);
  const auto picture = kvgrParsePicture(colors, error);
  ASSERT_TRUE(picture) << error;
  EXPECT_EQ(picture->width, 40);
  EXPECT_EQ(picture->height, 24);
  EXPECT_NEAR((picture->pixels.at(500) >> 16) & 0xFFu, 200, 4) << "red";
  EXPECT_LT(picture->pixels.at(500) & 0xFFFFu, 0x0404u);
  EXPECT_EQ(kvgrParsePicture(grey, error)->components, 1);
  // Cut anywhere: words, or what could be read; never more.
  for (std::size_t length = 0; length < colors.size(); length += 7) {
    const auto part = kvgrParsePicture(colors.substr(0, length), error);
    EXPECT_TRUE(part || !error.empty()) << length;
  }
  // A PNG that says it has 65,535 by 65,535 points.
  std::string huge("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\xFF\xFF\0\0\xFF\xFF\x08\2\0\0\0", 29);
  EXPECT_FALSE(kvgrParsePicture(huge, error));
  EXPECT_NE(error.find("64 million"), std::string::npos);
}

TEST(Pictures, FilesHoldThem) {
  std::string error;
  const auto picture = kvgrParsePicture(jpegOf(40, 24, 3), error);
  ASSERT_TRUE(picture);
  const auto written = [&](std::unique_ptr<KvGrCanvas> canvas) {
    canvas->beginPage(100, 100, 0xFFFFFF);
    canvas->picture(picture, {50, 0, 0, 25, 10, 20});
    canvas->picture(picture, {50, 0, 0, 25, 10, 60});
    canvas->picture(picture, {0, 0, 0, 0, 10, 60});
    canvas->endPage();
    return canvas->finish(error);
  };
  const std::string pdf = written(kvgrPdfCanvas());
  EXPECT_NE(pdf.find("/Filter/DCTDecode"), pdf.npos);
  EXPECT_EQ(pdf.find("/Subtype/Image"), pdf.rfind("/Subtype/Image")) << "once";
  EXPECT_NE(pdf.find(picture->file), pdf.npos);
  const std::string svg = written(kvgrSvgCanvas());
  EXPECT_NE(svg.find("transform=\"matrix(50000 0 0 25000 10000 55000)\" href=\"data:image/jpeg;base64,/9j/"),
            svg.npos);
  test::TemporaryFolder folder;
  std::ofstream(folder.path() / "p.png", std::ios::binary) << written(kvgrPngCanvas(64 * 25.4 / 10));
  test::InkGrid ink;
  ASSERT_TRUE(test::readInk(folder.path() / "p.png", ink));
  // Millimetres from the top: 15 to 40 and 55 to 80; from the left: 10 to 60.
  EXPECT_GT(ink.at(64 * 30 / 100, 64 * 30 / 100), 200);
  EXPECT_GT(ink.at(64 * 60 / 100, 64 * 55 / 100), 200);
  EXPECT_EQ(ink.at(64 * 47 / 100, 64 * 30 / 100), 0);
  EXPECT_EQ(ink.at(64 * 30 / 100, 64 * 70 / 100), 0);
}

TEST(DrawOrder, FollowsTheTableOfARealDrawing) {
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbReadDrawing(drawing, KORVANE_EXAMPLES "/drawings/allkinds_r2004_ascii.dxf", report),
            Kvad::eOk);
  const auto* space = KvDbBlockTableRecord::cast(drawing.modelSpaceId().stub()->object);
  const KvDbObjectIdArray sorted = kvdbDrawOrder(*space);
  EXPECT_EQ(sorted.length(), space->entities().length());
  std::map<std::uint64_t, int> at;
  for (int i = 0; i < sorted.length(); ++i) at[sorted[i].handle().value()] = i;
  // The table gives 353 the place of 35A, 35A that of 354, 36C that of 36E and so on.
  EXPECT_LT(at.at(0x35A), at.at(0x353));
  EXPECT_LT(at.at(0x36E), at.at(0x36C));
  EXPECT_LT(at.at(0x36F), at.at(0x372));
  EXPECT_EQ(at.size(), static_cast<std::size_t>(sorted.length()));
}

TEST(Clips, InvertedBoundariesOfReferencesLeaveOutTheirInside) {
  KvDbDatabase drawing(false);
  KvIoReport report;
  ASSERT_EQ(kvdbReadDrawing(drawing, KORVANE_EXAMPLES "/drawings/xclip_r2013.dxf", report), Kvad::eOk);
  Log log;
  ASSERT_TRUE(kvgrPlot(drawing, {}, log).isPlotted);
  std::vector<std::size_t> corners;
  for (std::size_t i = 0; i < log.clips.size(); ++i)
    if (log.inverted[i]) corners.push_back(log.clips[i].size());
  std::sort(corners.begin(), corners.end());
  EXPECT_EQ(corners, (std::vector<std::size_t>{4, 8})) << "a rectangle, and a concave outline";
}

}  // namespace
