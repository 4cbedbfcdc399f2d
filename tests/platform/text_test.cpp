#include <gtest/gtest.h>

#include <limits>

#include "platform/text/containers.h"
#include "platform/text/cstring.h"
#include "platform/text/number.h"
#include "platform/text/utf.h"

namespace {

CString formatted(const wchar_t* format, auto... args) {
  CString out;
  out.Format(format, args...);
  return out;
}

TEST(Format, WideTextNumbersAndPadding) {
  const CString name(L"图层");
  EXPECT_EQ(formatted(L"%s|%5s|%-5s|%.1s", name, name, name, name), CString(L"图层|   图层|图层   |图"));
  EXPECT_EQ(formatted(L"%S %hs", "ab", "cd"), CString(L"ab cd"));
  EXPECT_EQ(formatted(L"%d %05d %-4d| %+d % d %x %#X %o", 42, 42, 42, 42, 42, 255, 255, 8),
            CString(L"42 00042 42  | +42  42 ff 0XFF 10"));
  EXPECT_EQ(formatted(L"%.3f %8.2f %-8.1f| %g %e %G", 1.5, -2.345, 2.25, 1e-5, 12345.678, 1e20),
            CString(L"1.500    -2.35 2.2     | 1e-05 1.234568e+04 1E+20"));
  EXPECT_EQ(formatted(L"%*d|%-*d|%.*f", 5, 7, 4, 7, 2, 3.14159), CString(L"    7|7   |3.14"));
  EXPECT_EQ(formatted(L"%c%c %%", L'深', 65), CString(L"深A %"));
  EXPECT_EQ(formatted(L"%I64d %lld %hd %u", std::int64_t{1} << 40, -1LL, 70000, -1),
            CString(L"1099511627776 -1 4464 4294967295"));
  EXPECT_EQ(formatted(L"%#g %#.0f", 1.5, 2.0), CString(L"1.50000 2."));
}

TEST(Format, DisagreeingArgumentsAreShownNotFollowed) {
  EXPECT_EQ(formatted(L"%s", 12), CString(L"12"));
  EXPECT_EQ(formatted(L"%s", 0.25), CString(L"0.25"));
  EXPECT_EQ(formatted(L"%d", L"text"), CString(L"text"));
  EXPECT_EQ(formatted(L"%d", 2.9), CString(L"2"));
  EXPECT_EQ(formatted(L"%f", 2), CString(L"2.000000"));
  EXPECT_EQ(formatted(L"[%s][%d]", L"a"), CString(L"[a][]"));
  EXPECT_EQ(formatted(L"100% 5%"), CString(L"100% 5%"));
  EXPECT_EQ(formatted(L"%s", static_cast<const wchar_t*>(nullptr)), CString(L"(null)"));
  EXPECT_EQ(formatted(L"%n%y", 1), CString(L"%n%y"));
  EXPECT_EQ(formatted(L"%99999999999d", 1).GetLength(), 10000);
  EXPECT_EQ(formatted(L"%.9999999f", 0.5).GetLength(), 10002);
}

TEST(Number, ReadsLikeTheProductExpects) {
  EXPECT_EQ(_wtoi(L"  -12abc"), -12);
  EXPECT_EQ(_wtoi(L"abc"), 0);
  EXPECT_EQ(_wtoi(nullptr), 0);
  EXPECT_EQ(_wtoi(L"99999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(_wtoi(L"-99999999999"), std::numeric_limits<int>::min());
  EXPECT_EQ(_wtoi(L"-2147483648"), std::numeric_limits<int>::min());
  EXPECT_DOUBLE_EQ(_wtof(L" 1.5e2x"), 150);
  EXPECT_DOUBLE_EQ(_wtof(L"1d3"), 1000);
  EXPECT_DOUBLE_EQ(_wtof(L"-.5"), -0.5);
  EXPECT_DOUBLE_EQ(_wtof(L"3e"), 3);
  EXPECT_EQ(_wtof(L"."), 0);
  EXPECT_EQ(_wtof(L"inf"), 0);
  EXPECT_EQ(_wtof(L"1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(_wtof(L"-1e-999"), 0);
  const std::wstring zeros(400, L'0');
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<std::wstring, double> beyond[] = {{L"0.5e400", kInfinity},
                                                    {L"-0.5e+400", -kInfinity},
                                                    {L"1" + zeros + L"e-10", kInfinity},
                                                    {L"." + zeros + L"1", 0},
                                                    {L"00." + zeros + L"1", 0},
                                                    {L"0." + zeros + L"1e800", kInfinity},
                                                    {L"1e" + std::wstring(30, L'9'), kInfinity},
                                                    {L"1e-" + std::wstring(30, L'9'), 0}};
  for (const auto& [text, value] : beyond)
    EXPECT_EQ(_wtof(text.c_str()), value) << platform::toUtf8(text).substr(0, 12);
  double value = 0;
  EXPECT_TRUE(platform::parseWhole(L" 2.5 ", value));
  EXPECT_FALSE(platform::parseWhole(L"2.5x", value));
  int whole = 0;
  EXPECT_FALSE(platform::parseWhole(L"3000000000", whole));
}

TEST(Case, FoldsBeyondAscii) {
  EXPECT_TRUE(platform::equalNoCase(L"Größe ÉTÉ ЖУК ＡＢ", L"gRÖßE été жук ａｂ"));
  EXPECT_TRUE(platform::equalNoCase(L"σς", L"ΣΣ"));
  EXPECT_FALSE(platform::equalNoCase(L"a", L"á"));
  EXPECT_LT(CString(L"abc").CompareNoCase(L"ABCD"), 0);
  EXPECT_EQ(CString(L"ăΔж").MakeUpper(), CString(L"ĂΔЖ"));
}

TEST(Utf, RoundTripsAndRefusesBrokenSequences) {
  const std::wstring text = L"a é 中 𝄞 \x10FFFF";
  EXPECT_EQ(platform::fromUtf8(platform::toUtf8(text)), text);
  EXPECT_EQ(platform::fromUtf16(platform::toUtf16(text)), text);
  EXPECT_EQ(platform::fromUtf16Bytes(platform::toUtf16Bytes(text)), text);
  EXPECT_FALSE(platform::isUtf8("\xC0\x80"));
  EXPECT_FALSE(platform::isUtf8("\xED\xA0\x80"));
  EXPECT_EQ(platform::fromUtf8("a\xE4\xB8"), L"a��");
  const std::u16string loneHigh = {0xD834, u'x'};
  EXPECT_EQ(platform::toUtf16(platform::fromUtf16(loneHigh)), loneHigh);
}

TEST(CStringValue, PartsSearchAndEdit) {
  CString text(L"one,two,,three");
  EXPECT_EQ(text.Left(99), text);
  EXPECT_EQ(text.Mid(4, 3), CString(L"two"));
  EXPECT_EQ(text.Mid(99), CString());
  EXPECT_EQ(text.Right(-1), CString());
  EXPECT_EQ(text.Find(L",", 4), 7);
  EXPECT_EQ(text.Find(L"x"), -1);
  EXPECT_EQ(text.ReverseFind(L','), 8);
  int position = 0;
  CStringArray parts;
  for (CString part = text.Tokenize(L",", position); position != -1; part = text.Tokenize(L",", position))
    parts.Add(part);
  ASSERT_EQ(parts.GetSize(), 3);
  EXPECT_EQ(parts[2], CString(L"three"));
  EXPECT_EQ(text.Replace(L",", L"; "), 3);
  EXPECT_EQ(text, CString(L"one; two; ; three"));
  EXPECT_EQ(CString(L" \t x \n").Trim(), CString(L"x"));
  EXPECT_EQ(CString(L"\\\\a\\").TrimRight(L'\\'), CString(L"\\\\a"));
  wchar_t* buffer = text.GetBuffer(3);
  buffer[1] = 0;
  text.ReleaseBuffer();
  EXPECT_EQ(text, CString(L"o"));
  CString empty = static_cast<const wchar_t*>(nullptr);
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(empty.GetAt(0), 0);
}

TEST(Containers, IndicesOutsideAreHarmless) {
  CArray<int> numbers;
  numbers.SetAtGrow(2, 7);
  EXPECT_EQ(numbers.GetSize(), 3);
  numbers[10] = 5;
  EXPECT_EQ(numbers.GetAt(10), 0);
  numbers.RemoveAt(1, 99);
  EXPECT_EQ(numbers.GetSize(), 1);
  numbers.InsertAt(3, 4);
  EXPECT_EQ(numbers.GetSize(), 4);
  EXPECT_EQ(numbers.GetAt(3), 4);
}

}  // namespace
