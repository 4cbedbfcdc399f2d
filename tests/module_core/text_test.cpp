// Text, numbers, names and encodings.
#include "module/core/text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "module/core/encoding.h"
#include "module/core/names.h"
#include "module/core/numbers.h"
#include "platform/env/environment.h"
#include "tests/support/print.h"

namespace {

CString joined(const CStringArray& parts) {
  CString out;
  for (const CString& part : parts) out += L"[" + part + L"]";
  return out;
}

TEST(Split, AtEachSeparator) {
  struct Case {
    const wchar_t *text, *separator, *parts;
    int count;
  };
  const Case cases[] = {
      {L"a,,b", L",", L"[a][][b]", 3},   {L"", L",", L"", 0},      {L"a", L"", L"", 0},
      {L"a,", L",", L"[a][]", 2},        {L",", L",", L"[][]", 2}, {L"aXYb", L"XY", L"[a][b]", 2},
      {L"xaaay", L"aa", L"[x][][y]", 3},  // the overlapping hit gives an empty part; the rest begins behind
                                          // it
  };
  for (const Case& c : cases) {
    CStringArray parts;
    parts.Add(L"old");
    EXPECT_EQ(IM_SplitString(c.text, c.separator, parts), c.count) << platform::utf8From(c.text);
    EXPECT_EQ(joined(parts), CString(c.parts));
  }
  std::vector<CString> list;
  EXPECT_EQ(IM_SplitString(L"1;2", L";", list), 2);
  EXPECT_EQ(list.back(), L"2");
}

TEST(Split, WordsAndBytes) {
  CStringArray words;
  EXPECT_EQ(IM_SplitString(L"a \t  b c", words), 3);
  EXPECT_EQ(joined(words), L"[a][b][c]");
  EXPECT_EQ(IM_SplitString(L" a", words), 2);
  CStringArrayA bytes;
  EXPECT_EQ(IM_SplitStringA(CStringA("x|y|"), '|', bytes), 3);
  EXPECT_EQ(IM_SplitStringA(CStringA("x|y"), '\0', bytes), 0);
  EXPECT_EQ(IM_SplitStringA(CStringA("one\ttwo"), bytes), 2);
}

TEST(Split, EscapedSeparatorsStay) {
  struct Case {
    const wchar_t *text, *parts;
  };
  const Case cases[] = {
      {L"a,b", L"[a][b]"},        {L"a\\,b,c", L"[a\\,b][c]"},
      {L"a\\\\,b", L"[a\\\\,b]"},  // no parity here
      {L",a,b", L"[,a][b]"},      {L"", L""},
      {L"a,", L"[a][]"},
  };
  for (const Case& c : cases) {
    CStringArray parts;
    IM_SplitStringESC(c.text, L",", parts);
    EXPECT_EQ(joined(parts), CString(c.parts));
  }
}

TEST(Find, StepsOverEscapedHits) {
  EXPECT_EQ(IM_FindString(L"a\\,b,c", L",", 0, 0), 4);
  EXPECT_EQ(IM_FindString(L"a\\\\,b", L",", 0, 0), 3);
  EXPECT_EQ(IM_FindString(L",a", L",", 0, 0), 0);
  EXPECT_EQ(IM_FindString(L"xAb", L"aB", 0, 1), 1);
  EXPECT_EQ(IM_FindString(L"xAb", L"aB", 0, 0), -1);
  EXPECT_EQ(IM_FindString(L"a,b", L",", 9, 0), -1);
  EXPECT_EQ(IM_ReverseFindString(L"a,b,c", L",", -1, 0), 3);
  EXPECT_EQ(IM_ReverseFindString(L"a,b,c", L",", 3, 0), 1);  // the hit has to end there
  EXPECT_EQ(IM_ReverseFindString(L"a,b\\,c", L",", -1, 0), 1);
  EXPECT_EQ(IM_ReverseFindString(L"abc", L",", -1, 0), -1);
  EXPECT_EQ(IM_IsStringEscapedAt(L"\\\\\\x", 3), 1);
  EXPECT_EQ(IM_IsStringEscapedAt(L"\\\\x", 2), 0);
}

TEST(Trim, RemovesOneTextOnce) {
  EXPECT_EQ(IM_TrimRight(L"abcabc", L"abc", 0), L"abc");
  EXPECT_EQ(IM_TrimRight(L"abc", L"abc", 0), L"");
  EXPECT_EQ(IM_TrimRight(L"bc", L"abc", 0), L"bc");
  EXPECT_EQ(IM_TrimRight(L"xABC", L"abc", 1), L"x");
  EXPECT_EQ(IM_TrimRight(L"xABC", L"abc", 0), L"xABC");
  EXPECT_EQ(IM_TrimLeft(L"LINEzoom", L"line", 1), L"zoom");
  EXPECT_EQ(IM_TrimLeft(L"aab", L"a", 0), L"ab");
}

TEST(Numbers, Recognised) {
  struct Case {
    const wchar_t* text;
    int plus, wide, real, integer;
  };
  const Case cases[] = {
      {L"1.5", 0, 0, 1, 0},   {L"-", 0, 0, 0, 0},     {L".", 0, 0, 0, 0},      {L"1-2", 0, 0, 0, 0},
      {L"-12", 0, 0, 1, 1},   {L"+1", 0, 0, 0, 0},    {L"+1", 1, 0, 1, 1},     {L"1+", 1, 0, 0, 0},
      {L"1.2.3", 0, 0, 0, 0}, {L"", 0, 0, 0, 0},      {L"１．５", 0, 0, 0, 0}, {L"１．５", 0, 1, 1, 0},
      {L"－２", 0, 1, 1, 1},  {L"＋２", 1, 1, 1, 1},  {L"＋２", 1, 0, 0, 0},   {L"－", 0, 1, 0, 0},
      {L"．", 0, 1, 0, 0},    {L"1．2.", 0, 1, 0, 0}, {L"1e5", 0, 0, 0, 0},    {L"1 ", 0, 0, 0, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IM_IsStringReal(c.text, 0, c.plus, c.wide), c.real) << platform::utf8From(c.text);
    EXPECT_EQ(IM_IsStringInteger(c.text, 0, c.plus, c.wide), c.integer) << platform::utf8From(c.text);
  }
}

TEST(Numbers, Fractions) {
  double value = -7;
  EXPECT_EQ(IM_IsStringFraction(L"3/4", &value, 0, 0, 0), 1);
  EXPECT_DOUBLE_EQ(value, 0.75);
  EXPECT_EQ(IM_IsStringFraction(L"-１/２", &value, 0, 0, 1), 1);
  EXPECT_DOUBLE_EQ(value, -0.5);
  EXPECT_EQ(IM_IsStringFraction(L"＋１/４", &value, 0, 1, 1), 1);
  EXPECT_DOUBLE_EQ(value, 0.25);
  EXPECT_DOUBLE_EQ(IM_StringToDouble(L"＋1/4"), 0.25);
  for (const wchar_t* wrong : {L"3/-4", L"3/+4", L"1/2/3", L"1.5/2", L"/2", L"3/", L"3"})
    EXPECT_EQ(IM_IsStringFraction(wrong, nullptr, 0, 1, 1), 0) << platform::utf8From(wrong);
}

TEST(Numbers, Converted) {
  EXPECT_EQ(Im_StringFullToHalf(L"１２．３－"), L"12．3－");
  EXPECT_DOUBLE_EQ(IM_tstof(L"－１．５"), -1.5);
  EXPECT_EQ(IM_StringToInt(L"４２x"), 42);
  EXPECT_DOUBLE_EQ(IM_StringToDouble(L"1/4"), 0.25);
  EXPECT_DOUBLE_EQ(IM_StringToDouble(L"2.5mm"), 2.5);
  EXPECT_EQ(IM_DoubleToString(1.5, 3, 0), L"1.5");
  EXPECT_EQ(IM_DoubleToString(1.5, 3, 1), L"1.500");
  EXPECT_EQ(IM_DoubleToString(2.0, 12, 0), L"2");
  EXPECT_EQ(IM_DoubleToString(2.0, 12, 1), L"2.000000000");
  EXPECT_EQ(IM_DoubleToString(100, 0, 0), L"100");  // no point, so its zeros stay
  EXPECT_DOUBLE_EQ(IM_TrimDouble(-1.25, 1), -1.2);
  EXPECT_DOUBLE_EQ(IM_TrimDouble(1.25, 1), 1.3);
}

TEST(Numbers, ItemClasses) {
  EXPECT_DOUBLE_EQ(CDoubleStringFormater(L"－１２．０５", 9).calculate(), -12.05);
  EXPECT_DOUBLE_EQ(CDoubleStringFormater(L"x", 9).calculate(), 9);
  const CItemStringFormater list({L"I", L"II", L"III"}, 10, 5);
  EXPECT_EQ(list.formatFromList(15), L"II");
  EXPECT_EQ(list.formatFromList(16), L"");
  EXPECT_EQ(list.formatFromList(25), L"");
  CSBCCaseMatch match;
  EXPECT_TRUE(match.SplitStringAtDot(L"１２．5"));
  EXPECT_FALSE(match.IsSBCCaseMatch());
  EXPECT_TRUE(match.SplitStringAtDot(L"12.5"));
  EXPECT_TRUE(match.IsSBCCaseMatch());
}

TEST(Names, AlphabetLabelsContinueWithoutGap) {
  EXPECT_EQ(IM_FormatNumberToAlphabet(27, L"", 1), L"AA");
  EXPECT_EQ(IM_FormatNumberToAlphabet(9, L"IO", 1), L"J");
  EXPECT_EQ(IM_FormatNumberToAlphabet(677, L"", 1), L"ZA");
  EXPECT_EQ(IM_FormatNumberToAlphabet(702, L"", 1), L"ZZ");
  EXPECT_EQ(IM_FormatNumberToAlphabet(703, L"", 0), L"aaa");
  EXPECT_EQ(IM_FormatNumberToAlphabet(0, L"", 1), L"");
  EXPECT_EQ(IM_FormatNumberToAlphabet(5, L"ABCDEFGHIJKLMNOPQRSTUVWXY", 1), L"");
  // Each label is the next code of the one before it.
  for (int number = 1; number < 20000; ++number)
    ASSERT_EQ(IM_FormatNumberToAlphabet(number + 1, L"", 1),
              IM_GetNextCode(IM_FormatNumberToAlphabet(number, L"", 1)))
        << number;
}

TEST(Names, NextCodesCarry) {
  const wchar_t* pairs[][2] = {{L"A9", L"B0"}, {L"Z", L"AA"},     {L"zz", L"aaa"}, {L"a-", L"a-"},
                               {L"", L""},     {L"9", L"10"},     {L"Az", L"Ba"},  {L"99", L"100"},
                               {L"-9", L"-0"}, {L"Z9z", L"AA0a"}, {L"中", L"中"}};
  for (const auto& pair : pairs) EXPECT_EQ(IM_GetNextCode(pair[0]), CString(pair[1]));
  EXPECT_EQ(IM_GetNextCode(L"A8", 3), L"B1");
}

TEST(Names, FreeItemName) {
  EXPECT_EQ(IM_GetNewItemName({L"p1", L"P2", L"P4", L"Px", L"P", L"Q3"}, L"P", 1), L"P3");
  EXPECT_EQ(IM_GetNewItemName({}, L"P", 7), L"P7");
}

TEST(Names, PathParts) {
  EXPECT_EQ(ImFileName::GetFileName(L"C:\\a\\b.dwg"), L"b.dwg");
  EXPECT_EQ(ImFileName::GetFileName(L"C:\\a\\"), L"");
  EXPECT_EQ(ImFileName::GetFileName(L"b.dwg"), L"b.dwg");
  EXPECT_EQ(ImFileName::GetFileNameWithoutExt(L"x\\a.b.c"), L"a.b");
  EXPECT_EQ(ImFileName::GetFileNameWithoutExt(L"x\\.c"), L"");
  EXPECT_EQ(ImFileName::GetFileExtName(L"x.y\\a"), L"");
  EXPECT_EQ(ImFileName::GetFileExtName(L"a."), L"");
  EXPECT_EQ(ImFileName::GetFilePath(L"C:\\a\\b", 0), L"C:\\a");
  EXPECT_EQ(ImFileName::GetFilePath(L"C:\\a\\b", 1), L"C:\\a\\");
  EXPECT_EQ(ImFileName::GetFilePath(L"\\a", 1), L"");
  EXPECT_EQ(IM_IsFilePathNameAbsolute(L"C:\\a"), 1);
  EXPECT_EQ(IM_IsFilePathNameAbsolute(L":a"), 0);
  EXPECT_EQ(IM_IsFilePathNameAbsolute(L"\\\\s"), 1);
  EXPECT_EQ(IM_IsFilePathNameAbsolute(L"\\\\"), 0);
}

TEST(Encoding, RoundTripsAndEscapes) {
  const CString text = L"直径 20 ±0.5";
  for (unsigned page : {936u, 65001u})
    EXPECT_EQ(IM_CStringA2W(IM_CStringW2A(text, page), page), text) << page;
  EXPECT_EQ(IM_CStringW2A(L"中", 936), CStringA("\xD6\xD0"));
  EXPECT_EQ(IM_CStringW2A(L"中", 950), CStringA("\xA4\xA4"));
  EXPECT_EQ(IM_IsStringChinese(L"abc中"), 1);
  EXPECT_EQ(IM_IsStringChinese(L"abc"), 0);

  EXPECT_EQ(IM_WriteString(L"A中é", 1252), L"A\\U+4E2Dé");
  EXPECT_EQ(IM_WriteString(L"𝄞", 936), L"\\U+D834\\U+DD1E");
  for (const wchar_t* original : {L"A中é𝄞", L"\\U+12", L"plain"})
    EXPECT_EQ(IM_ReadString(IM_WriteString(original, 936), 936), CString(original));
  EXPECT_EQ(IM_ReadString(L"\xD6\xD0\\U+4E2D文", 936, 1), L"中中文");
}

}  // namespace
