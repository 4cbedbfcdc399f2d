#include <gtest/gtest.h>

#include <thread>

#include "platform/env/environment.h"
#include "platform/text/codepage.h"

namespace {

using platform::fromCodePage;
using platform::toCodePage;

struct Pair {
  std::uint32_t page;
  std::string bytes;
  std::wstring text;
};

// Values from the published tables of each page, one from each region that the C library and the page's home
// treat apart.
const Pair kPairs[] = {
    {936, "\xCD\xBC\xB2\xE3", L"图层"},
    {936, "\x80", L"€"},
    {936, "\xA1\xAA\xA1\xA4", L"—·"},
    {936, "\xFD\x9B\xFE\x4F", L"\u9FA5\uFA29"},
    {936, "\xAA\xA1\xF8\xA1\xA1\x40\xA7\xA0", L"\uE000\uE234\uE4C6\uE765"},
    {936,
     "a\xD5\x5C"
     "b",
     L"a誠b"},
    {950, "\xB9\xCF\xBC\x68", L"圖層"},
    {950, "\xA3\xE1", L"€"},
    {950, "\xFA\x40\xC6\xA1\xC8\xFE\x81\x40", L"\uE000\uF6B1\uF848\uEEB8"},
    {932, "\x90\x7D\x96\xCA\x5C\xB1", L"図面\\ｱ"},
    {932, "\x81\x60\x81\x5C\xF0\x40\xF9\xFC\xA0\xFD", L"～―\uE000\uE757\uF8F0\uF8F1"},
    {932, "\x87\x8A\x81\xCA", L"㈱￢"},
    {949, "\xB5\xB5\xB8\xE9", L"도면"},
    {949, "\x8C\x63\xC9\xA1\xFE\xFE", L"똠\uE000\uE0BB"},
    {1250, "\xA3\xF3\x64\x9F", L"Łódź"},
    {1251, "\xD7\xE5\xF0\xF2\xB8\xE6\x88", L"Чертёж€"},
    {1252, "\x80\xD8\x81\x9F", L"€Ø\x81Ÿ"},
    {1253, "\xD3\xF7\xE5\xAA", L"Σχε\uF8F9"},
    {1255, "\xF9\xD9", L"ש\uF88D"},
    {1258, "\xC3\xE2\xEC", L"Ăâ\u0301"},
    {874, "\xE0\xBA\x80\xFF", L"เบ€\uF8C8"},
    {437, "\x9B\xE8\xF8", L"¢Φ°"},
    {850, "\x9B\xF8", L"ø°"},
    {10000, "\x80\xC8", L"Ä»"},
    {28591, "\xD8\x85", L"Ø\x85"},
    {28605, "\xA4", L"€"},
    {54936, "\xA2\xE3\x81\x30\x81\x30\x94\x39\xDA\x33", L"€\u0080\U0001F4A9"},
    {65001, "\xE5\x9B\xBE\xF0\x9F\x93\x90", L"图📐"},
    {51932, "\xBF\xDE\x8F\xB0\xA1", L"図丂"},
};

TEST(CodePage, KnownValuesBothWays) {
  for (const Pair& pair : kPairs) {
    bool lossy = true;
    EXPECT_EQ(fromCodePage(pair.bytes, pair.page, &lossy), pair.text) << pair.page;
    EXPECT_FALSE(lossy) << pair.page;
    lossy = true;
    EXPECT_EQ(toCodePage(pair.text, pair.page, &lossy), pair.bytes) << pair.page;
    EXPECT_FALSE(lossy) << pair.page;
  }
}

TEST(CodePage, EveryByteOfTheWesternPagesReturns) {
  for (const std::uint32_t page :
       {1250u,  1251u,  1252u,  1253u,  1254u,  1255u,  1256u,  1257u,  1258u,  874u,  437u, 737u,
        775u,   850u,   852u,   855u,   858u,   860u,   861u,   862u,   863u,   865u,  866u, 869u,
        10000u, 20866u, 21866u, 28591u, 28592u, 28594u, 28595u, 28599u, 28603u, 28605u}) {
    ASSERT_TRUE(platform::isCodePage(page)) << page;
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
    bool lossy = false;
    const std::wstring text = fromCodePage(all, page, &lossy);
    ASSERT_EQ(text.size(), 256u) << page;
    for (std::size_t byte = 0; byte < 256; ++byte) {
      ASSERT_NE(text[byte], platform::kReplacement) << page << " byte " << std::hex << byte;
      EXPECT_EQ(toCodePage(text.substr(byte, 1), page), all.substr(byte, 1))
          << page << " byte " << std::hex << byte;
    }
  }
}

TEST(CodePage, EveryPairThatMeansSomethingReturnsUnlessItIsADouble) {
  struct Case {
    std::uint32_t page;
    std::size_t pairs;    // all pairs with a meaning
    std::size_t doubles;  // pairs that stand beside another one for the same character
  };
  // 932: 398 doubles are the extensions of two makers, of which the page writes one.
  for (const Case& test : {Case{936, 23685, 0}, Case{949, 17236, 0}, Case{932, 9604, 398}}) {
    std::size_t pairs = 0, doubles = 0;
    for (int lead = 0x81; lead < 0xFF; ++lead)
      for (int trail = 0x40; trail < 0xFF; ++trail) {
        const std::string bytes{static_cast<char>(lead), static_cast<char>(trail)};
        bool lossy = false;
        const std::wstring text = fromCodePage(bytes, test.page, &lossy);
        if (lossy || text.size() != 1) continue;
        ++pairs;
        if (toCodePage(text, test.page) != bytes) ++doubles;
      }
    EXPECT_EQ(pairs, test.pairs) << test.page;
    EXPECT_EQ(doubles, test.doubles) << test.page;
  }
}

TEST(CodePage, DamageIsFlaggedAndSwallowsNothing) {
  bool lossy = false;
  EXPECT_EQ(fromCodePage("\xCD\"x", 936, &lossy), L"\uFFFD\"x") << "a quote behind half a character";
  EXPECT_TRUE(lossy);
  EXPECT_EQ(fromCodePage("a\xCD\n", 936), L"a\uFFFD\n");
  EXPECT_EQ(fromCodePage("a\xCD", 936), L"a\uFFFD");
  EXPECT_EQ(fromCodePage("\xA2\xABz", 936), L"\uFFFDz") << "a pair without meaning is one unit";
  EXPECT_EQ(fromCodePage("\xE5\x9B", 65001, &lossy), L"\uFFFD\uFFFD");
  EXPECT_TRUE(lossy);
  EXPECT_EQ(fromCodePage("\xFFz", 54936, &lossy).back(), L'z');
  EXPECT_TRUE(lossy);

  EXPECT_EQ(toCodePage(L"a한é📐z", 936, &lossy), "a?\xA8\xA6?z");
  EXPECT_TRUE(lossy);
  EXPECT_EQ(toCodePage(L"a图z", 51949, &lossy), "a?z") << "only the traditional form is in that set";
  EXPECT_TRUE(lossy);
  EXPECT_EQ(toCodePage(std::wstring{L'a', wchar_t(0xD800), wchar_t(0x7FFFFFFF)}, 936, &lossy), "a??");
  EXPECT_EQ(toCodePage(L"plain", 936, &lossy), "plain");
  EXPECT_FALSE(lossy);
  EXPECT_EQ(toCodePage(L"ä1", 12345, &lossy), "?1") << "an unknown page has ASCII only";
  EXPECT_TRUE(lossy);
  EXPECT_FALSE(platform::isCodePage(12345));
  EXPECT_EQ(fromCodePage(std::string("a\0b\xCD\xBC", 5), 936), std::wstring(L"a\0b图", 4));
}

TEST(CodePage, ZeroFollowsTheEnvironment) {
  platform::Environment environment;
  const platform::ScopedEnvironment scope(environment);
  EXPECT_EQ(toCodePage(L"图", 0), "\xCD\xBC");
  EXPECT_TRUE(IsDBCSLeadByte(0x81));
  environment.systemCodePage = 1252;
  EXPECT_EQ(fromCodePage("\x80", 0), L"€");
  EXPECT_FALSE(IsDBCSLeadByte(0x81));
  environment.systemCodePage = 65001;
  EXPECT_EQ(toCodePage(L"é", 0), "\xC3\xA9");
  EXPECT_FALSE(IsDBCSLeadByte(0xE5));
}

TEST(CodePage, LeadBytes) {
  struct Case {
    std::uint32_t page;
    int count;
    int first, last;
  };
  for (const Case& test : {Case{936, 126, 0x81, 0xFE}, Case{932, 60, 0x81, 0xFC}, Case{949, 126, 0x81, 0xFE},
                           Case{950, 126, 0x81, 0xFE}, Case{1361, 113, 0x84, 0xF9}}) {
    int count = 0, first = 0, last = 0;
    for (int byte = 0; byte < 256; ++byte) {
      if (!platform::isLeadByte(static_cast<unsigned char>(byte), test.page)) continue;
      if (count++ == 0) first = byte;
      last = byte;
    }
    EXPECT_EQ(count, test.count) << test.page;
    EXPECT_EQ(first, test.first) << test.page;
    EXPECT_EQ(last, test.last) << test.page;
  }
  EXPECT_FALSE(platform::isLeadByte(0xB1, 932)) << "half-width kana";
  EXPECT_FALSE(platform::isLeadByte(0x90, 1252));
  EXPECT_FALSE(platform::isLeadByte(0x90, 54936));
}

TEST(CodePage, NamesInDrawingFiles) {
  for (const auto& [name, number] :
       std::initializer_list<std::pair<const char*, std::uint32_t>>{{"ANSI_936", 936},
                                                                    {"ansi_1252", 1252},
                                                                    {"DOS437", 437},
                                                                    {"dos932", 932},
                                                                    {"ISO8859-15", 28605},
                                                                    {"BIG5", 950},
                                                                    {"gb2312", 936},
                                                                    {"KSC5601", 949},
                                                                    {"ASCII", 20127},
                                                                    {"ANSI_1200", 65001}}) {
    EXPECT_EQ(platform::codePageFromDrawingName(name), number) << name;
  }
  for (const char* name : {"", "ANSI_", "ANSI_0", "ANSI_99", "ANSI_936x", "1252", "ISO8859-99999999999"})
    EXPECT_FALSE(platform::codePageFromDrawingName(name)) << name;
  EXPECT_EQ(platform::drawingNameOfCodePage(936), "ANSI_936");
  EXPECT_EQ(platform::drawingNameOfCodePage(437), "DOS437");
  EXPECT_EQ(platform::drawingNameOfCodePage(28595), "ISO8859-5");
  EXPECT_EQ(platform::drawingNameOfCodePage(20866), "ANSI_1252");
}

TEST(CodePage, CharsetsByName) {
  EXPECT_EQ(platform::fromCharset("\xE9", "ISO-8859-1"), L"é");
  EXPECT_FALSE(platform::fromCharset("x", "no-such-set"));
}

TEST(CodePage, TablesAreBuiltOnceUnderManyThreads) {
  std::vector<std::thread> threads;
  std::vector<std::wstring> results(8);
  for (std::size_t i = 0; i < results.size(); ++i)
    threads.emplace_back([&, i] { results[i] = fromCodePage("\xB9\xCF\xE0\x61", 1361); });
  for (auto& thread : threads) thread.join();
  for (const auto& result : results) EXPECT_EQ(result, results[0]);
}

}  // namespace
