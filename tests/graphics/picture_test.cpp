// The measure by which pictures are compared: what it passes, and what it doesn't.
#include "tests/support/picture.h"

#include <cstdlib>
#include <fstream>
#include <functional>

#include "host/graphics/canvas.h"
#include "tests/support/temporary_tree.h"

namespace {

using test::InkGrid;

class PictureTest : public testing::Test {
 protected:
  /// A picture of 512 points a side, one point to a millimetre: rows of lines, and what `more` draws.
  std::filesystem::path draw(const char* name, const std::function<void(KvGrCanvas&)>& more, double shift = 0,
                             std::uint32_t ground = 0xFFFFFF) {
    const auto canvas = kvgrPngCanvas(25.4);
    canvas->beginPage(512, 512, ground);
    for (int i = 0; i < 20; ++i) line(*canvas, {20, 20.0 + 10 * i + shift}, {300, 25.0 + 10 * i + shift});
    if (more) more(*canvas);
    canvas->endPage();
    std::string error;
    const std::filesystem::path path = folder.path() / name;
    std::ofstream(path, std::ios::binary) << canvas->finish(error);
    return path;
  }
  static void line(KvGrCanvas& canvas, KvGePoint2d from, KvGePoint2d to) {
    const KvGePoint2d ends[] = {from, to};
    canvas.stroke(ends, 2, {0x000000, 1});
  }
  test::TemporaryFolder folder;
};

TEST_F(PictureTest, PassesSmallShiftsAndFailsWhatIsMissingAddedOrMoved) {
  const auto ticks = [](KvGePoint2d at) {
    return [at](KvGrCanvas& canvas) { line(canvas, at, {at.x + 40, at.y + 12}); };
  };
  const auto both = draw("both.png", ticks({100, 400}));
  const auto held = folder.path() / "held.txt";
  EXPECT_FALSE(test::comparePicture(both, held)) << "nothing is accepted yet";
  setenv("KORVANE_ACCEPT_PICTURES", "1", 1);
  EXPECT_TRUE(test::comparePicture(both, held));
  unsetenv("KORVANE_ACCEPT_PICTURES");
  EXPECT_TRUE(test::comparePicture(both, held));
  EXPECT_TRUE(test::comparePicture(draw("shifted.png", ticks({100.4, 400.4}), 0.3), held));
  EXPECT_FALSE(test::comparePicture(draw("missing.png", nullptr), held));
  EXPECT_FALSE(test::comparePicture(draw("moved.png", ticks({100, 420})), held));
  // A line among many others, which each cell alone would not tell.
  EXPECT_FALSE(test::comparePicture(draw("added.png",
                                         [&](KvGrCanvas& canvas) {
                                           ticks({100, 400})(canvas);
                                           line(canvas, {20, 64}, {300, 69});
                                         }),
                                    held));
}

TEST_F(PictureTest, InkIsTheDistanceFromTheGround) {
  InkGrid onWhite, onBlack;
  ASSERT_TRUE(test::readInk(draw("white.png", nullptr), onWhite));
  ASSERT_TRUE(test::readInk(draw("black.png", nullptr, 0, 0x000000), onBlack));
  EXPECT_GT(onWhite.sum(), 1000);
  EXPECT_EQ(onBlack.sum(), 0) << "black on black";
  InkGrid again;
  ASSERT_TRUE(test::parseInk(test::formatInk(onWhite), again));
  EXPECT_EQ(again.cells, onWhite.cells);
  EXPECT_FALSE(test::parseInk(test::formatInk(onWhite) + "0", again));
  EXPECT_FALSE(test::parseInk("no picture", again));
  EXPECT_FALSE(test::readInk(folder.path() / "none.png", again));
}

}  // namespace
