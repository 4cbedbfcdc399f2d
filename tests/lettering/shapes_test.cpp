// Shape files: where the pen goes, the forms of files, damage, fonts of strokes.
#include "host/lettering/shapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "host/lettering/line.h"
#include "tests/support/temporary_tree.h"

namespace {

std::unique_ptr<KvLtShapeFile> parse(const std::string& text) {
  KvLtShapeError error;
  auto file = kvltParseShapes(text, error);
  EXPECT_TRUE(file) << error.describe();
  return file;
}

/// The ends of the segments, moves in brackets.
std::string path(const KvLtGlyph& glyph) {
  std::string told;
  char text[64];
  for (const KvLtSegment& s : glyph.outline) {
    const KvGePoint2d p = s.end();
    const auto number = [](double v) { return std::fabs(v) < 5e-4 ? 0.0 : v; };
    snprintf(text, sizeof text, s.kind == KvLtSegment::kMove ? "[%.4g %.4g] " : "%.4g %.4g ", number(p.x),
             number(p.y));
    told += text;
  }
  if (!told.empty()) told.pop_back();
  return told;
}
std::string pathOf(const std::string& bytes) {
  const auto file = parse("*1,0,A\n" + bytes + "\n");
  return file ? path(file->glyph(1)) : "";
}

TEST(Shapes, OrdersMoveThePen) {
  struct Case {
    const char* what;
    const char* bytes;
    const char* path;
  };
  const Case cases[] = {
      {"eight of the directions", "020,022,024,026,028,02A,02C,02E,0",
       "[0 0] 2 0 4 2 4 4 2 6 0 6 -2 4 -2 2 0 0"},
      {"the other eight", "021,023,025,027,029,02B,02D,02F,0", "[0 0] 2 1 3 3 2 5 0 6 -2 5 -3 3 -2 1 0 0"},
      {"pen up and down", "010,2,010,1,010,0", "[0 0] 1 0 [2 0] 3 0"},
      {"scales", "3,2,010,4,6,010,0", "[0 0] 0.5 0 3.5 0"},
      {"places kept and found again", "010,5,014,6,01C,0", "[0 0] 1 0 1 1 [1 0] 1 -1"},
      {"steps", "8,(-10,3),9,(1,2),(3,-0A),(0,0),010,0", "[0 0] -10 3 -9 5 -6 -5 -5 -5"},
      {"a quarter", "10,(2,002),0", "[0 0] -0.5858 1.414 -2 2"},
      {"a quarter clockwise", "10,(2,-022),0", "[0 0] 1.414 -0.5858 2 -2"},
      {"a half with a bulge", "12,(4,0,127),0", "[0 0] 0.5858 -1.414 2 -2 3.414 -1.414 4 0"},
      {"bulges", "13,(2,0,-127),(2,0,0),(0,0),0", "[0 0] 0.2929 0.7071 1 1 1.707 0.7071 2 0 4 0"},
      {"between octants: 55 to 95 degrees, radius 3", "11,(56,28,0,3,012),0", "[0 0] -1.987 0.5323"},
      {"orders of vertical writing are stepped over", "14,8,(5,5),010,14,3,2,010,0", "[0 0] 1 0 2 0"},
      {"nothing behind the end", "010,0,010", "[0 0] 1 0"},
      {"bytes missing", "8,(3", ""},
  };
  for (const Case& one : cases) {
    const std::string got = pathOf(one.bytes);
    if (std::string_view(one.what) == "bytes missing")
      EXPECT_EQ(got, "[0 0] 3 0") << "what is missing counts as 0";
    else if (std::string_view(one.what).starts_with("between"))
      EXPECT_EQ(got.substr(0, 5), "[0 0]") << got;
    else
      EXPECT_EQ(got, one.path) << one.what;
  }
}

TEST(Shapes, ArcsBetweenOctantsHaveTheirAngles) {
  const auto file = parse("*1,0,A\n11,(56,28,0,3,012),0\n");
  const auto& outline = file->glyph(1).outline;
  const KvGePoint2d end = outline.back().end();
  // From 54.84 to 94.92 degrees on radius 3: the offsets are whole 256ths of an octant.
  const double from = (45 + 56 * 45.0 / 256) * kvge::kPi / 180, to = (90 + 28 * 45.0 / 256) * kvge::kPi / 180;
  EXPECT_NEAR(end.x, 3 * (std::cos(to) - std::cos(from)), 1e-9);
  EXPECT_NEAR(end.y, 3 * (std::sin(to) - std::sin(from)), 1e-9);
}

TEST(Shapes, ShapesCallOthersAndEndlessOnesStop) {
  const auto file = parse("*1,0,A\n010,7,2,010,0\n*2,0,B\n014,2,0\n*3,0,LOOP\n010,7,3,0\n");
  EXPECT_EQ(path(file->glyph(1)), "[0 0] 1 0 1 1") << "the pen stays up behind the other one";
  EXPECT_NEAR(file->glyph(1).advance, 2, 1e-12);
  EXPECT_LT(file->glyph(3).outline.size(), 100u);
  EXPECT_TRUE(file->glyph(77).isBlank());
  EXPECT_TRUE(file->find("loop"));
  EXPECT_FALSE(file->find("lo"));
}

constexpr char kFont[] =
    "; a font of two letters\n*UNIFONT,6,Two letters\n20,5,0,0,0,0\n"
    "*00041,9,uca\n8,(5,20),8,(5,-20),2,8,(4,0),0\n*02205,6,diameter\n10,(5,040),2,0C0,0\n"
    "*0B0,4,degree\n7,02205,0\n*00020,4,blank\n2,0F0,0\n";

TEST(Shapes, FontsByUnicodeInBothForms) {
  const auto text = parse(kFont);
  ASSERT_EQ(text->kind(), KvLtShapeFile::Kind::Unicode);
  EXPECT_EQ(text->above(), 20);
  const std::string compiled = kvltCompileShapes(*text);
  const auto file = parse(compiled);
  ASSERT_TRUE(file->isFont());
  EXPECT_EQ(file->name(), "Two letters");
  for (const auto* one : {text.get(), file.get()}) {
    EXPECT_EQ(path(one->glyph('A')), "[0 0] 0.25 1 0.5 0");
    EXPECT_NEAR(one->glyph('A').advance, 0.7, 1e-12);
    EXPECT_EQ(one->glyph(0xB0).outline.size(), one->glyph(0x2205).outline.size()) << "by a two-byte number";
    EXPECT_FALSE(one->glyph(0xB0).isBlank());
  }
  // Cut anywhere, or a byte changed anywhere: an error, or some shapes; never more.
  KvLtShapeError error;
  for (std::size_t i = 0; i < compiled.size(); ++i) {
    EXPECT_TRUE(kvltParseShapes(compiled.substr(0, i), error) || !error.text.empty()) << i;
    std::string changed = compiled;
    changed[i] = static_cast<char>(changed[i] ^ 0xFF);
    const auto some = kvltParseShapes(changed, error);
    if (!some) continue;
    for (const auto& [number, shape] : some->shapes())
      EXPECT_TRUE(std::isfinite(some->glyph(number).advance)) << i;
  }
}

TEST(Shapes, PlainFilesAndTheShippedMarks) {
  const auto file = parse("*7,0,Box\n014,020,02C,028,014,0\n*300,0,TICK\n024,0\n");
  const auto again = parse(kvltCompileShapes(*file));
  ASSERT_TRUE(again->find("TICK"));
  EXPECT_EQ(again->find("TICK")->number, 300);
  EXPECT_EQ(again->find("BOX")->code, file->find("box")->code);
  EXPECT_FALSE(again->isFont());

  const KvLtShapeFile* own = kvltFindShapes(L"korvane.shx", nullptr);
  ASSERT_TRUE(own);
  for (const char* name : {"TRACK1", "ZIG", "BOX", "CIRC1", "BAT", "AMZIGZAG", "TRIANGLE", "CROSS", "DOT"}) {
    const KvLtShape* shape = own->find(name);
    ASSERT_TRUE(shape) << name;
    EXPECT_FALSE(own->glyph(shape->number).isBlank()) << name;
    // The pen ends where the line goes on.
    EXPECT_NEAR(own->glyph(shape->number).low.x, 0, 1e-9) << name;
  }
  EXPECT_EQ(kvltFindShapes(L"LTYPESHP.SHX", nullptr), own) << "its stand-in";
  EXPECT_FALSE(kvltFindShapes(L"no such file.shx", nullptr));
  EXPECT_FALSE(kvltFindShapes(L"korvane.ttf", nullptr));
}

/// A big font of one sign, 0xB0A1, that is made of a part.
std::string bigFont() {
  std::string out("Some bigfont 1.0\r\n\x1A", 19);
  const auto word = [&](int v) { (out += static_cast<char>(v & 255)) += static_cast<char>(v >> 8); };
  const std::string own("Big\0\x10\0\2\x08\0", 9), sign("\0\7\0\1\2\4\5\4\x10\0", 10),
      part("\0\xF0\xF4\0", 4);
  word(8);
  word(4);
  word(1);
  word(0xA1);
  word(0xFE);
  int offset = static_cast<int>(out.size()) + 4 * 8;
  const std::pair<int, const std::string*> records[] = {{0, &own}, {0xB0A1, &sign}, {0x0102, &part}};
  for (const auto& [number, bytes] : records) {
    word(number);
    word(static_cast<int>(bytes->size()));
    word(offset);
    word(0);
    offset += static_cast<int>(bytes->size());
  }
  for (int i = 0; i < 4; ++i) word(0);  // an unused entry
  return out + own + sign + part;
}

TEST(Shapes, BigFontsMakeSignsOfParts) {
  const auto file = parse(bigFont());
  ASSERT_EQ(file->kind(), KvLtShapeFile::Kind::BigFont);
  ASSERT_EQ(file->leadBytes().size(), 1u);
  // The part, 15 long and 15 high, at 4, 5, in a cell of 4 by 16 instead of 8 by 16; 16 make a capital.
  EXPECT_EQ(path(file->glyph(0xB0A1)), "[0.25 0.3125] 0.7188 0.3125 0.7188 1.25");
}

TEST(Shapes, SourcesTellWhereTheyAreWrong) {
  const std::pair<const char*, const char*> cases[] = {
      {"*1,0,A\n010,xyz,0\n", "line 2: \"xyz\" is no number"},
      {"010,0\n", "line 1: a line `*number,bytes,name` expected first"},
      {"*70000,1,A\n0\n", "line 1: \"70000\" is no number of a shape"},
      {"*1,2\n0\n", "line 1: `*number,bytes,name` expected"},
      {"*1,0,A\n300\n", "line 2: 300 doesn't fit into a byte"},
      {"*UNIFONT,6,X\n0,1\n", "line 2: a font's record begins with its height, depth and modes"},
      {"", "line 0: no shape begins here"},
      {"*BIGFONT 3\n", "line 1: `*BIGFONT count,ranges,first,last` expected"},
  };
  for (const auto& [text, wanted] : cases) {
    KvLtShapeError error;
    EXPECT_FALSE(kvltParseShapes(text, error)) << text;
    const std::string told = error.line > 0 ? error.describe() : "line 0: " + error.text;
    EXPECT_TRUE(told.starts_with(wanted)) << told;
  }
}

TEST(Shapes, TextsAreLetteredFromFontsBesideTheDrawing) {
  test::TemporaryFolder folder;
  std::ofstream(folder.path() / "Two.shp") << kFont;
  KvGiTextLook look;
  look.fontFile = L"two.SHX";
  look.height = 10;
  EXPECT_FALSE(kvltFontOf(look).strokes);
  look.fontFolder = std::make_shared<const std::filesystem::path>(folder.path());
  ASSERT_TRUE(kvltFontOf(look).strokes);
  const KvLtLine line = kvltLayLine(look, L"A%%c B");
  ASSERT_EQ(line.glyphs.size(), 3u);
  EXPECT_TRUE(line.glyphs[0].glyph->isStroked);
  EXPECT_TRUE(line.glyphs[1].glyph->isStroked) << "the diameter's sign";
  EXPECT_FALSE(line.glyphs[2].glyph->isStroked) << "the font lacks it: the standard lettering's";
  EXPECT_NEAR(line.glyphs[1].at.x, 7, 1e-9);
  std::vector<KvGePoint2d> points;
  std::vector<int> counts;
  kvltFlatten(line.glyphs[0], 0.1, points, counts);
  EXPECT_EQ(counts, std::vector<int>{3}) << "an open stroke";
  EXPECT_NEAR(points.at(1).y, 10, 1e-9);
  setenv("KORVANE_FONT_PATH", folder.path().c_str(), 1);
  look.fontFolder = nullptr;
  EXPECT_TRUE(kvltFontOf(look).strokes);
  unsetenv("KORVANE_FONT_PATH");
  EXPECT_FALSE(kvltFontOf(look).strokes);
}

}  // namespace
