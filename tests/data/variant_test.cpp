#include "platform/text/variant.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(Variant, KindsAndTheirTexts) {
  struct Case {
    _variant_t value;
    VARTYPE kind;
    const wchar_t* text;
  };
  const Case cases[] = {
      {{}, VT_EMPTY, L""},
      {_variant_t::null(), VT_NULL, L""},
      {_variant_t(short{-3}), VT_I2, L"-3"},
      {_variant_t(7), VT_INT, L"7"},
      {_variant_t(2147483647L), VT_I4, L"2147483647"},
      {_variant_t(true), VT_BOOL, L"-1"},
      {_variant_t(0.1), VT_R8, L"0.1"},
      {_variant_t(0.1, VT_R4), VT_R4, L"0.1"},
      {_variant_t(12.34567, VT_CY), VT_CY, L"12.3457"},
      {_variant_t(1e300, VT_CY), VT_CY, L"9.2e+14"},
      {_variant_t(45000.5, VT_DATE), VT_DATE, L"45000.5"},
      {_variant_t(1.5, VT_BSTR), VT_R8, L"1.5"},
      {_variant_t(L"螺栓"), VT_BSTR, L"螺栓"},
      {_variant_t(CString()), VT_BSTR, L""},
  };
  for (const Case& item : cases) {
    EXPECT_EQ(item.value.vt, item.kind);
    EXPECT_EQ(platform::utf8From(item.value.text()), platform::utf8From(item.text)) << item.kind;
    const _variant_t copy = item.value;
    EXPECT_TRUE(copy == item.value);
  }
  EXPECT_FALSE(_variant_t(1) == _variant_t(1L)) << "the kind belongs to the value";
  EXPECT_FALSE(_variant_t() == _variant_t::null());
  EXPECT_FALSE(_variant_t(L"1") == _variant_t(1));
}

TEST(Bstr, CopiesShareOneText) {
  _bstr_t text(L"shared");
  const _bstr_t copy = text;
  EXPECT_EQ(static_cast<const wchar_t*>(text), static_cast<const wchar_t*>(copy));
  _bstr_t& same = text;
  text = same;
  EXPECT_TRUE(text == copy);
  text = L"other";
  EXPECT_EQ(copy.text(), CString(L"shared"));
  _bstr_t moved = std::move(text);
  EXPECT_EQ(moved.length(), 5u);
  EXPECT_EQ(_bstr_t(static_cast<const wchar_t*>(nullptr)).view(), L"");
  EXPECT_EQ(static_cast<const wchar_t*>(_bstr_t())[0], L'\0');
  EXPECT_EQ(_bstr_t(std::wstring_view(L"a\0b", 3)).length(), 3u);
}

TEST(Bstr, IsCountedAcrossThreads) {
  const _bstr_t text(L"counted");
  const auto copyOften = [&text] {
    for (int i = 0; i < 20000; ++i) {
      const _bstr_t copy = text;
      ASSERT_EQ(copy.length(), 7u);
    }
  };
  std::thread other(copyOften);
  copyOften();
  other.join();
  EXPECT_EQ(text.view(), L"counted");
}

}  // namespace
