// Sizes of letters and lines, codes, layout of paragraphs. Numbers that stand here are the same on every
// machine: a drawing's tables and frames rest on them.
#include "host/lettering/line.h"
#include "host/lettering/paragraph.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/print.h"

namespace {

KvGiTextLook standard(double height = 1) {
  KvGiTextLook look;
  look.height = height;
  return look;
}

TEST(Metrics, AreTheSameEverywhere) {
  // Advances in the fonts' own units over the height of their capital H: 1510 and 1462 units.
  const struct {
    const wchar_t* file;
    const wchar_t* text;
    double advance;
  } cases[] = {
      {L"", L"H", (1462 - (402 - 151)) / 1510.0},
      {L"", L" ", 890 / 1510.0},
      {L"", L"i", (615 - (318 - 151)) / 1510.0},
      {L"", L"\u00D8", 1211 / 1510.0},  // nothing to take away at the left
      {L"arial.ttf", L"H", 0.98 * 1436 / 1462},
      {L"txt", L"H", 1.25 * (1462 - (402 - 151)) / 1510.0},
      {L"C:\\Fonts\\TXT.SHX", L"H", 1.25 * (1462 - (402 - 151)) / 1510.0},
      {L"gbenor.shx", L"中", 0.82 * 2048 / 1462},
      {L"simsun.ttc", L"中", 1.0 * 2048 / 1462},
  };
  for (const auto& c : cases) {
    KvGiTextLook look = standard(3.5);
    look.fontFile = c.file;
    EXPECT_NEAR(kvltMeasureLine(look, c.text).advance, 3.5 * c.advance, 1e-12) << c.file << " " << c.text;
  }
}

TEST(Metrics, CapitalsAreAsHighAsTheText) {
  for (const wchar_t* file : {L"", L"arial.ttf", L"isocp"}) {
    KvGiTextLook look = standard(2.5);
    look.fontFile = file;
    const KvLtLine line = kvltLayLine(look, L"H");
    EXPECT_NEAR(line.box.low.y, 0, 1e-12) << file;
    EXPECT_NEAR(line.box.high.y, 2.5, 1e-12) << file;
  }
}

TEST(Metrics, FactorsOfTheLook) {
  const double plain = kvltMeasureLine(standard(), L"Form 7").advance;
  KvGiTextLook look = standard(2);
  look.widthFactor = 0.7;
  EXPECT_NEAR(kvltMeasureLine(look, L"Form 7").advance, plain * 1.4, 1e-12);
  look.trackingFactor = 2;
  EXPECT_NEAR(kvltMeasureLine(look, L"Form 7").advance, plain * 2.8, 1e-12);
  look = standard();
  look.oblique = std::atan(0.5);
  EXPECT_NEAR(kvltMeasureLine(look, L"H").box.high.x, kvltMeasureLine(standard(), L"H").box.high.x + 0.5,
              1e-12);
  EXPECT_NEAR(kvltMeasureLine(look, L"H").advance, kvltMeasureLine(standard(), L"H").advance, 1e-12);
  look = standard();
  look.isBackward = look.isUpsideDown = true;
  const KvLtLine turned = kvltLayLine(look, L"Hg"), upright = kvltLayLine(standard(), L"Hg");
  EXPECT_NEAR(turned.box.low.x, -upright.box.high.x, 1e-12);
  EXPECT_NEAR(turned.box.high.y, -upright.box.low.y, 1e-12);
}

TEST(Metrics, DamagedLooksCountAsPlain) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  for (double bad : {0.0, kNan, std::numeric_limits<double>::infinity()}) {
    KvGiTextLook look = standard(bad);
    look.widthFactor = look.trackingFactor = bad;
    look.oblique = bad;
    EXPECT_NEAR(kvltMeasureLine(look, L"H").advance, kvltMeasureLine(standard(), L"H").advance, 1e-12);
  }
  EXPECT_EQ(kvltMeasureLine(standard(), L"").width(), 0);
  EXPECT_TRUE(kvltMeasureLine(standard(), L"   ").box.isEmpty());
  EXPECT_GT(kvltMeasureLine(standard(), L"   ").width(), 0);
}

TEST(Metrics, FlattenedGlyphsFillTheirArea) {
  // The letter O: the outer outline less the inner one, whatever the way round they run.
  const auto areaOf = [](double deviation) {
    const KvLtLine line = kvltLayLine(standard(), L"O");
    std::vector<KvGePoint2d> points;
    std::vector<int> counts;
    kvltFlatten(line.glyphs.at(0), deviation, points, counts);
    double sum = 0;
    std::size_t at = 0;
    for (int count : counts) {
      for (int i = 0; i < count; ++i) {
        const KvGePoint2d a = points[at + static_cast<std::size_t>(i)];
        const KvGePoint2d b = points[at + static_cast<std::size_t>((i + 1) % count)];
        sum += (a.x * b.y - b.x * a.y) / 2;
      }
      at += static_cast<std::size_t>(count);
    }
    EXPECT_EQ(counts.size(), 2u);
    return std::fabs(sum);
  };
  const double fine = areaOf(1e-6);
  EXPECT_GT(fine, 0.1);
  EXPECT_LT(fine, 0.6);
  EXPECT_NEAR(areaOf(0.01), fine, 0.05);
}

TEST(Codes, OfALine) {
  const struct {
    const wchar_t* text;
    const wchar_t* letters;
    const char* marks;  // one digit for each letter; empty: none
  } cases[] = {
      {L"%%c20%%p0.1 45%%D", L"\u230020\u00B10.1 45\u00B0", ""},
      {L"100%%%", L"100%", ""},
      {L"50% %%", L"50% %%", ""},
      {L"%%065%%66 %%1%%129", L"AB %%1\u2300", ""},
      {L"%%uab%%uc", L"abc", "110"},
      {L"%%Ua%%ob%%uc%%o", L"abc", "132"},
      {L"%%k", L"", ""},
      {L"\\U+4E2D\\u+0041\\U+12", L"中A\\U+12", ""},
      {L"\\M+5D6D0\\M+9D6D0\\M+5XY00", L"中\\M+9D6D0\\M+5XY00", ""},
      {L"%%z", L"%%z", ""},
  };
  for (const auto& c : cases) {
    const KvLtDecoded decoded = kvltDecode(c.text);
    EXPECT_EQ(CString(decoded.text), CString(c.letters)) << c.text;
    std::string marks;
    for (unsigned char mark : decoded.marks) marks += static_cast<char>('0' + mark);
    EXPECT_EQ(marks, c.marks) << c.text;
  }
}

TEST(Codes, RawTextsHaveNone) {
  KvGiTextLook raw = standard();
  raw.isRaw = true;
  EXPECT_EQ(kvltLayLine(raw, L"%%c").glyphs.size(), 3u);
  EXPECT_EQ(kvltLayLine(standard(), L"%%c").glyphs.size(), 1u);
}

TEST(Codes, BarsJoin) {
  const KvLtLine line = kvltLayLine(standard(), L"%%uab c%%u d%%ue");
  ASSERT_EQ(line.bars.size(), 2u);
  EXPECT_EQ(line.bars[0].from.x, 0);
  EXPECT_NEAR(line.bars[0].to.x, kvltMeasureLine(standard(), L"ab c").advance, 1e-12);
  EXPECT_LT(line.bars[0].from.y, 0);
}

// --- Paragraphs

KvLtParagraphs lay(const wchar_t* contents, double width = 0, int attachment = 1, double height = 1) {
  KvLtParagraphLook look;
  look.look = standard(height);
  look.width = width;
  look.attachment = attachment;
  return kvltLayParagraphs(look, contents);
}

/// The lines as they stand, each run in order (blanks between runs are room, not letters), `|` between lines.
CString shown(const KvLtParagraphs& laid) {
  CString text;
  int line = 0;
  for (const KvLtRun& run : laid.runs) {
    for (; line < run.line; ++line) text += L'|';
    text += CString(run.text);
  }
  return text;
}

TEST(Paragraphs, CodesBecomeTextAndLines) {
  const struct {
    const wchar_t* contents;
    const wchar_t* lines;
  } cases[] = {
      {L"one\\Ptwo", L"one|two"},
      {L"a\\~b\\\\c\\{d\\}", L"a\u00A0b\\c{d}"},
      {L"{\\fArial|b1|i0|c0|p34;bold} plain", L"boldplain"},
      {L"\\A1;\\H2.5x;\\W0.8;\\Q15;\\T1.2;\\C1;x", L"x"},
      {L"50%%d ^J next^Iend^M", L"50\u00B0 |nextend"},
      {L"\\Lunder\\l \\Oover\\o \\Kstruck\\k", L"underoverstruck"},
      {L"\\S1/2;", L"12"},
      {L"\\S+0.1^ -0.2;", L"+0.1-0.2"},
      {L"\\Snothing;", L"nothing"},
      {L"\\S1\\/2#3;", L"1/23"},
      {L"unfinished \\H2.5", L"unfinished \\H2.5"},
      {L"wrong \\Hxyz; \\z \\", L"wrong \\Hxyz; \\z \\"},
      {L"}}x{{y", L"xy"},
      {L"\\pxqc,i2,l1;centred\\Pnext", L"centred|next"},
      {L"a\\Nb\\Xc", L"a|b|c"},
      {L"\\U+4E2D\\M+5B9FA", L"中国"},
      {L"", L""},
      {L"\\P\\P", L""},
  };
  for (const auto& c : cases) EXPECT_EQ(shown(lay(c.contents)), CString(c.lines)) << c.contents;
}

TEST(Paragraphs, BracesKeepChangesInside) {
  const KvLtParagraphs laid = lay(L"a{\\H3;\\C1;\\Lb{\\c255;c}}d");
  ASSERT_EQ(laid.runs.size(), 4u);
  EXPECT_EQ(laid.runs[1].look.height, 3);
  EXPECT_EQ(laid.runs[1].colorIndex, 1);
  EXPECT_TRUE(laid.runs[1].look.isUnderlined);
  EXPECT_EQ(laid.runs[2].rgb, 0xFF0000) << "files hold blue, green, red";
  EXPECT_EQ(laid.runs[2].look.height, 3);
  EXPECT_EQ(laid.runs[3].look.height, 1);
  EXPECT_EQ(laid.runs[3].colorIndex, -1);
  EXPECT_FALSE(laid.runs[3].look.isUnderlined);
}

TEST(Paragraphs, SizeFollowsTheLines) {
  const double h = lay(L"H").actualWidth;
  EXPECT_NEAR(h, kvltMeasureLine(standard(), L"H").advance, 1e-12);
  EXPECT_NEAR(lay(L"H").actualHeight, 1, 1e-12);
  EXPECT_NEAR(lay(L"H\\PH").actualHeight, 1 + 5.0 / 3, 1e-12);
  EXPECT_NEAR(lay(L"H\\P\\PH").actualHeight, 1 + 10.0 / 3, 1e-12) << "an empty line counts";
  EXPECT_NEAR(lay(L"H\\P{\\H2;H}").actualHeight, 1 + 10.0 / 3, 1e-12);
  EXPECT_NEAR(lay(L"{\\H2;H}\\PH").actualHeight, 2 + 5.0 / 3, 1e-12);
  EXPECT_NEAR(lay(L"HH  ").actualWidth, 2 * h, 1e-12) << "trailing blanks don't";
  EXPECT_NEAR(lay(L"\\W0.500000;H", 0, 1, 3.5).actualWidth, 3.5 * h / 2, 1e-12);
  EXPECT_EQ(lay(L"").actualWidth, 0);
  KvLtParagraphLook exact;
  exact.look = standard(2);
  exact.lineSpacing = 1.5;
  exact.isSpacingExact = true;
  EXPECT_NEAR(kvltLayParagraphs(exact, L"H\\P{\\H9;H}").actualHeight, 2 + 1.5 * 2 * 5 / 3, 1e-12);
}

TEST(Paragraphs, LinesBreakAtTheWidth) {
  const auto widthOf = [](const wchar_t* text) { return kvltMeasureLine(standard(), text).advance; };
  const double twoWords = widthOf(L"one two");
  EXPECT_EQ(shown(lay(L"one two three", twoWords)), CString(L"one two |three"));
  EXPECT_EQ(shown(lay(L"one two three", twoWords * 0.999)), CString(L"one |two |three"));
  EXPECT_EQ(shown(lay(L"unbreakable word", 1)), CString(L"unbreakable |word")) << "a long word stays whole";
  EXPECT_EQ(shown(lay(L"a{\\C1;b}c d", widthOf(L"abc"))), CString(L"abc |d")) << "a look ends no word";
  EXPECT_EQ(shown(lay(L"o\\~o o", widthOf(L"o"))), CString(L"o\u00A0o |o"));
}

TEST(Paragraphs, ChineseBreaksBetweenSigns) {
  const double sign = kvltMeasureLine(standard(), L"国").advance;
  EXPECT_EQ(shown(lay(L"中国中国", 2 * sign)), CString(L"中国|中国"));
  EXPECT_EQ(shown(lay(L"中国。中国", 2 * sign)), CString(L"中|国。|中国")) << "no line begins with a stop";
  EXPECT_EQ(shown(lay(L"中国（中国", 3 * sign)), CString(L"中国|（中国")) << "or ends with a bracket";
}

TEST(Paragraphs, AttachmentPlacesTheBox) {
  const double w = lay(L"HHH").actualWidth, h = 1 + 5.0 / 3;
  for (int attachment = 1; attachment <= 9; ++attachment) {
    const KvLtParagraphs laid = lay(L"HHH\\PH", 0, attachment);
    const int column = (attachment - 1) % 3, row = (attachment - 1) / 3;
    EXPECT_NEAR(laid.low.x, -w * column / 2, 1e-12) << attachment;
    EXPECT_NEAR(laid.high.x, w - w * column / 2, 1e-12) << attachment;
    EXPECT_NEAR(laid.high.y, h * row / 2, 1e-12) << attachment;
    EXPECT_NEAR(laid.low.y, h * row / 2 - h, 1e-12) << attachment;
    EXPECT_NEAR(laid.runs[0].at.y, laid.high.y - 1, 1e-12) << attachment;
    EXPECT_NEAR(laid.runs[1].at.x, -w * column / 2 + w / 3 * column, 1e-12) << attachment;
  }
  // A given width is the box that lines are centred in.
  EXPECT_NEAR(lay(L"H", 20, 2).runs[0].at.x, -w / 6, 1e-12);
  EXPECT_NEAR(lay(L"H", 20, 3).runs[0].at.x, -w / 3, 1e-12);
  EXPECT_NEAR(lay(L"\\pqr;H", 20, 1).runs[0].at.x, 20 - w / 3, 1e-12);
}

TEST(Paragraphs, IndentsAndTabs) {
  const KvLtParagraphs laid = lay(L"\\pi2,l1,t6;a^Ib\\Pc", 0, 1, 2.0);
  ASSERT_EQ(laid.runs.size(), 3u);
  EXPECT_NEAR(laid.runs[0].at.x, 6, 1e-12);
  EXPECT_NEAR(laid.runs[1].at.x, 12, 1e-12);
  EXPECT_NEAR(laid.runs[2].at.x, 6, 1e-12);
}

TEST(Paragraphs, StacksStandAboutTheMiddle) {
  const KvLtParagraphs laid = lay(L"x\\S1/22;");
  ASSERT_EQ(laid.runs.size(), 3u);
  ASSERT_EQ(laid.bars.size(), 1u);
  EXPECT_NEAR(laid.bars[0].bar.from.y - laid.runs[0].at.y, 0.5, 1e-12);
  EXPECT_GT(laid.runs[1].at.y, laid.bars[0].bar.from.y);
  EXPECT_LT(laid.runs[2].at.y + laid.runs[2].look.height, laid.bars[0].bar.from.y);
  EXPECT_NEAR(laid.runs[1].at.x + laid.runs[1].width / 2, laid.runs[2].at.x + laid.runs[2].width / 2, 1e-12);
  EXPECT_GT(laid.actualHeight, 1.4) << "both parts lie inside";
  EXPECT_TRUE(lay(L"\\S1^2;").bars.empty());
  EXPECT_EQ(lay(L"\\S1#2;").bars.size(), 1u);
}

TEST(Paragraphs, HugeTextsEndSoon) {
  const std::wstring letters(1'000'000, L'x'), signs(200'000, L'国'), slashes(1'000'000, L'\\');
  EXPECT_EQ(lay(letters.c_str(), 100).lines, 1);
  EXPECT_GT(lay(signs.c_str(), 100).lines, 1000);
  EXPECT_EQ(lay(slashes.c_str()).lines, 1);
  std::wstring codes, braces(500'000, L'{');
  for (int i = 0; i < 300'000; ++i) codes += L"\\A\\H{";
  EXPECT_EQ(lay(codes.c_str()).lines, 1);
  EXPECT_EQ(lay((braces + L"x").c_str()).runs.empty(), false);
  EXPECT_LE(lay(L"\\H1e300;\\H9999999999x;\\H9999999999x;\\H9999999999x;H").actualHeight, 1e10);
}

TEST(Paragraphs, PlainText) {
  EXPECT_EQ(CString(kvltPlainText(L"{\\H2;a}\\~b\\Pc^Id \\S1/2;")), CString(L"a b\nc\td 1/2"));
}

TEST(Columns, LinesGoOnAtTheTopOfTheNextOne) {
  KvLtParagraphLook look;
  look.look = standard(3);
  look.columns.width = 40;
  look.columns.gutter = 5;
  const std::wstring text = L"one\\Ptwo\\Pthree\\Pfour\\Pfive\\Psix\\Pseven";
  // Lines are 5 apart, the first one's base line 3 below the top: three of them are 13 high.
  struct Case {
    const char* what;
    KvLtColumns columns;
    std::vector<int> linesOf;  // by column
    double width, height;
  };
  const Case cases[] = {
      {"no limit", {0, false, 40, 5, {}, false}, {7}, 40, 33},
      {"as many as needed", {0, false, 40, 5, {13}, false}, {3, 3, 1}, 130, 13},
      {"two, the last takes the rest", {2, false, 40, 5, {13}, false}, {3, 4}, 85, 18},
      {"heights of their own", {0, false, 40, 5, {8, 3, 100}, false}, {2, 1, 4}, 130, 18},
      {"fixed, not all filled", {4, true, 40, 5, {18}, false}, {4, 3}, 175, 18},
      {"too low for a line", {3, false, 40, 5, {1}, false}, {1, 1, 5}, 130, 23},
  };
  for (const Case& one : cases) {
    for (bool isReversed : {false, true}) {
      look.columns = one.columns;
      look.columns.isReversed = isReversed;
      const KvLtParagraphs laid = kvltLayParagraphs(look, text);
      EXPECT_NEAR(laid.actualWidth, one.width, 1e-9) << one.what;
      EXPECT_NEAR(laid.actualHeight, one.height, 1e-9) << one.what;
      std::vector<int> lines(static_cast<std::size_t>(laid.columns), 0);
      for (const KvLtRun& run : laid.runs) {
        const int column = static_cast<int>(std::lround(run.at.x / 45));
        EXPECT_NEAR(run.at.x, column * 45, 1e-9) << one.what;
        ++lines.at(static_cast<std::size_t>(isReversed ? laid.columns - 1 - column : column));
        EXPECT_LE(run.at.y, -3 + 1e-9);
      }
      while (!lines.empty() && lines.back() == 0) lines.pop_back();
      EXPECT_EQ(lines, one.linesOf) << one.what << (isReversed ? ", reversed" : "");
    }
  }
}

TEST(Columns, ACodeEndsThemAndTheWholeIsAttached) {
  KvLtParagraphLook look;
  look.look = standard(2);
  EXPECT_EQ(kvltLayParagraphs(look, L"a\\Nb").columns, 1) << "without columns a new paragraph";
  look.columns.width = 20;
  look.columns.gutter = 2;
  look.columns.heights = {50};
  look.attachment = 9;  // bottom right
  const KvLtParagraphs laid = kvltLayParagraphs(look, L"a\\Nb");
  ASSERT_EQ(laid.columns, 2);
  ASSERT_EQ(laid.runs.size(), 2u);
  EXPECT_NEAR(laid.runs[0].at.y, laid.runs[1].at.y, 1e-9);
  EXPECT_NEAR(laid.runs[1].at.x + laid.runs[1].width, 0, 1e-9);
  EXPECT_NEAR(laid.runs[0].at.x + laid.runs[0].width, -22, 1e-9);
  EXPECT_EQ(kvltPlainText(L"a\\Nb"), L"a\nb");
}

TEST(Bold, LettersOfOutlineFontsGrowThicker) {
  KvGiTextLook look = standard(10);
  look.typeface = L"Arial";
  const KvLtLine plain = kvltLayLine(look, L"HI");
  look.isBold = true;
  const KvLtLine bold = kvltLayLine(look, L"HI");
  ASSERT_EQ(bold.glyphs.size(), 2u);
  EXPECT_EQ(plain.glyphs[0].bold, 0);
  const double pen = bold.glyphs[0].bold * bold.glyphs[0].xScale;
  EXPECT_GT(pen, 0.3);
  EXPECT_NEAR(bold.advance - plain.advance, 2 * pen, 1e-9);
  EXPECT_NEAR(bold.box.high.y - plain.box.high.y, bold.glyphs[0].bold * 10 / 2, 1e-9);
}

}  // namespace
