#include <gtest/gtest.h>

#include <fstream>

#include "platform/env/environment.h"
#include "tests/data/table_files.h"

namespace {

_adoFields row(const std::vector<std::pair<const wchar_t*, _variant_t>>& items) {
  _adoFields out;
  for (const auto& [name, value] : items) out.append(_adoFields(name, value));
  return out;
}

TEST(Fields, ItemsAreFoundWithoutCaseAndCopiedWithoutChildren) {
  _adoFields fields = row({{L"Länge", L"a"}, {L"d", L"b"}, {L"D", L"c"}});
  fields.children[1].append(_adoFields(L"inner", L"x"));
  const auto item = fields.GetItem(L"LÄNGE");
  ASSERT_TRUE(item);
  EXPECT_EQ(item->name.text(), CString(L"Länge"));
  EXPECT_EQ(fields.GetItem(L"D")->value.text(), CString(L"b"));
  EXPECT_EQ(fields.GetItem(L"d")->children.size(), 0u);
  item->value = L"changed";
  EXPECT_EQ(fields.children[0].value.text(), CString(L"a"));
  EXPECT_FALSE(fields.GetItem(L"nothing"));
  fields.count = 1;
  EXPECT_FALSE(fields.GetItem(L"d"));
  fields.count = 99;
  EXPECT_TRUE(fields.GetItem(L"d"));
  fields.count = -1;
  EXPECT_FALSE(fields.GetItem(L"d"));
}

TEST(Fields, TableProperty) {
  _adoFields table;
  table.name = L"GB 70";
  EXPECT_EQ(table.GetTableProperty(L"table_Name")->value.text(), CString(L"GB 70"));
  EXPECT_EQ(table.GetTableProperty(L"TABLE_TYPE")->value.text(), CString(L"TABLE"));
  EXPECT_EQ(table.GetTableProperty(L"other")->value.vt, VT_EMPTY);
  EXPECT_EQ(_adoFields().GetTableProperty(L"TABLE_TYPE")->value.vt, VT_EMPTY);
}

TEST(Cursor, MovesAsTheContractSays) {
  _Recordset set(nullptr, L"T");
  EXPECT_EQ(set.GetadoEOF(), -1);
  EXPECT_EQ(set.MoveFirst(), 0);
  EXPECT_EQ(set.GetadoEOF(), -1);
  set.PushBack(row({{L"A", L"1"}}));
  EXPECT_EQ(set.GetadoEOF(), -1) << "PushBack leaves the flag";
  EXPECT_EQ(set.GetCollect(0).vt, VT_EMPTY);
  set.MoveFirst();
  EXPECT_EQ(set.GetadoEOF(), 0);
  set.MoveNext();
  EXPECT_EQ(set.GetadoEOF(), -1);
  set.PushBack(row({{L"A", L"2"}}));
  set.PushBack(row({{L"A", L"3"}}));
  set.MoveFirst();
  EXPECT_EQ(set.MoveLast(), 0);
  EXPECT_EQ(set.GetadoEOF(), -1);
  EXPECT_EQ(set.GetCollect(0).vt, VT_EMPTY);
  EXPECT_EQ(set.GetRecordCount(), 3);
  set.MoveNext();
  set.MoveNext();
  EXPECT_EQ(set.GetadoEOF(), -1);

  set.MoveFirst();
  set.MoveNext();
  set.Erase();
  EXPECT_EQ(set.GetCollect(L"a").text(), CString(L"3"));
  set.Erase();
  EXPECT_EQ(set.GetadoEOF(), 0) << "the flag stays behind the last row";
  EXPECT_EQ(set.GetCollect(0).vt, VT_EMPTY);
  set.Erase();
  EXPECT_EQ(set.GetRecordCount(), 1);
  set.MoveFirst();
  const _Recordset copy = set;
  set.EraseAll();
  EXPECT_EQ(set.GetadoEOF(), -1);
  _Recordset other = copy;
  EXPECT_EQ(other.GetCollect(0).text(), CString(L"1")) << "a copy has a cursor of its own";
  set.Erase();
  EXPECT_EQ(set.GetRecordCount(), 0);
}

TEST(Cursor, CollectTakesPositionsAndNames) {
  _Recordset set(nullptr, L"T");
  set.PushBack(row({{L"A", L"1"}, {L"B", _variant_t::null()}, {L"C", 7}, {L"a", L"2"}}));
  set.MoveFirst();
  struct Case {
    _variant_t index;
    _variant_t value;
  };
  const Case cases[] = {
      {_variant_t(short{0}), L"1"},
      {_variant_t(1), _variant_t::null()},
      {_variant_t(2L), 7},
      {_variant_t(3), L"2"},
      {_variant_t(4), {}},
      {_variant_t(-1), {}},
      {L"a", L"1"},
      {L"c", 7},
      {L"", {}},
      {L"x", {}},
      {_variant_t(0.0), {}},
      {_variant_t(0.0, VT_R4), {}},
      {_variant_t(0.0, VT_CY), {}},
      {_variant_t(0.0, VT_DATE), {}},
      {_variant_t(false), {}},
      {_variant_t(), {}},
      {_variant_t::null(), {}},
  };
  for (const Case& item : cases)
    EXPECT_TRUE(set.GetCollect(item.index) == item.value)
        << "kind " << item.index.vt << " " << platform::utf8From(item.index.text());
}

TEST(Cursor, FieldNamesAreTheUnionInOrderOfAppearance) {
  _Recordset set(nullptr, L"T");
  set.PushBack(row({{L"A", L"1"}, {L"B", L"2"}}));
  set.PushBack(row({{L"b", L"1"}, {L"A", L"2"}, {L"C", L"3"}}));
  std::vector<_adoFields> fields(1);
  set.GetadoFields(fields);
  CString names;
  for (const _adoFields& field : fields) names += field.name.text() + L";";
  EXPECT_EQ(names, CString(L";A;B;b;C;"));
  EXPECT_EQ(fields[1].value.vt, VT_EMPTY);
}

class Sorting : public ::testing::Test {
 protected:
  Sorting() {
    folder_.schema("T", "T", {"I:int", "N:long", "R:real", "F:float", "S:nvarchar", "U", "X:REAL"});
    connection_.Open(folder_.text(), L"", L"", 0);
  }
  /// The values of `field` after sorting by `keys`; "-" leaves the field out.
  CString sorted(const wchar_t* field, const std::vector<const wchar_t*>& values, const wchar_t* keys) {
    _Recordset set(&connection_, L"T");
    for (const wchar_t* value : values)
      set.PushBack(std::wstring_view(value) == L"-" ? row({{L"other", L"x"}}) : row({{field, value}}));
    set.PutSort(keys);
    CString out;
    for (set.MoveFirst(); set.GetadoEOF() == 0; set.MoveNext()) {
      const _variant_t value = set.GetCollect(field);
      out += (value.vt == VT_EMPTY ? CString(L"-") : value.text()) + L" ";
    }
    return out.TrimRight();
  }
  TableFolder folder_;
  OpenConnection connection_;
};

TEST_F(Sorting, TypesDecideHowValuesCompare) {
  struct Case {
    const wchar_t* field;
    std::vector<const wchar_t*> values;
    const wchar_t* keys;
    const wchar_t* wanted;
  };
  const Case cases[] = {
      {L"R", {L"10", L"9.5", L"-3", L"1e1"}, L"R", L"-3 9.5 10 1e1"},
      {L"X", {L"10", L"9.5"}, L"x", L"9.5 10"},
      {L"I", {L"10", L"9", L"08"}, L"I", L"08 9 10"},
      {L"N", {L"10", L"9"}, L"N", L"9 10"},
      {L"S", {L"10", L"9.5"}, L"S", L"10 9.5"},
      {L"F", {L"10", L"9.5"}, L"F", L"10 9.5"},
      {L"U", {L"b", L"B", L"a", L"中", L"é"}, L"U", L"B a b é 中"},
      {L"R", {L"2", L"-", L"1", L"-"}, L"R", L"- - 1 2"},
      {L"R", {L"2", L"x", L"-1", L""}, L"R", L"-1 x  2"},
      {L"R", {L"3", L"1", L"2"}, L"R desc", L"1 2 3"},
      {L"R", {L"3", L"1", L"2"}, L"R DESC", L"1 2 3"},
      {L"R", {L"3", L"1", L"2"}, L" R ", L"1 2 3"},
      {L"R", {L"3", L"1", L"2"}, L"", L"3 1 2"},
      {L"R", {L"3", L"1", L"2"}, L"unknown", L"3 1 2"},
      {L"R", {L"3", L"1", L"2"}, L"R desc, x", L"3 1 2"},
      {L"R", {L"3", L"1", L"2"}, L"unknown,R", L"1 2 3"},
      {L"R", {L"3", L"1", L"2"}, L" desc", L"3 1 2"},
      {L"R", {L"1.00000000005", L"1", L"1.0000000002"}, L"R", L"1.00000000005 1 1.0000000002"},
      {L"R", {L"1e400", L"1", L"-1e400", L"1e400"}, L"R", L"-1e400 1 1e400 1e400"},
  };
  for (const Case& item : cases)
    EXPECT_EQ(platform::utf8From(sorted(item.field, item.values, item.keys)), platform::utf8From(item.wanted))
        << platform::utf8From(item.keys);
}

TEST_F(Sorting, SeveralKeysAndTheCursor) {
  _Recordset set(&connection_, L"T");
  set.PushBack(row({{L"S", L"b"}, {L"R", L"1"}}));
  set.PushBack(row({{L"S", L"a"}, {L"R", L"10"}}));
  set.PushBack(row({{L"S", L"a"}, {L"R", L"9"}}));
  set.PutSort(L"S,r");
  EXPECT_EQ(set.GetadoEOF(), -1);
  EXPECT_EQ(printed(std::make_shared<_Recordset>(set)), "a|9\na|10\nb|1\n");
}

TEST_F(Sorting, ToleranceMakesNoWildAccess) {
  // Each neighbour is within the tolerance and the ends are not: no order is consistent with that.
  std::vector<const wchar_t*> values;
  std::vector<CString> texts(2000);
  for (int i = 0; i < 2000; ++i)
    texts[static_cast<std::size_t>(i)].Format(L"%.11f", (i * 7919 % 2000) * 6e-11);
  for (const CString& text : texts) values.push_back(text);
  int blanks = 0;
  const CString result = sorted(L"R", values, L"R");
  for (wchar_t c : result.view()) blanks += c == L' ';
  EXPECT_EQ(blanks, 1999);
}

TEST(Image, HexTextBecomesAFileInTheTemporaryFolder) {
  TableFolder folder;
  platform::Environment environment = platform::Environment::current();
  environment.temporaryFolder = folder.path();
  const platform::ScopedEnvironment scoped(environment);
  const auto content = [&](const char* name) {
    std::ifstream in(folder.path() / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const auto field = [](const wchar_t* text) {
    auto out = std::make_shared<_adoFields>();
    out->value = text;
    return out;
  };
  const CString path = GetImageFromADO(L"a.bmp", field(L"42 4d  0 fF 1FF zz"), nullptr);
  EXPECT_EQ(platform::toNative(path), folder.path() / "a.bmp");
  EXPECT_EQ(content("a.bmp"), std::string("BM\0\xFF\xFF\0", 6));
  GetImageFromADO(L"a.bmp", field(L"41 42 43"), [](char** data, long length) {
    for (long i = 0; i < length; ++i) (*data)[i] = static_cast<char>((*data)[i] + 1);
    return 1;
  });
  EXPECT_EQ(content("a.bmp"), "BCD");
  EXPECT_EQ(GetImageFromADO(L"a.bmp", field(L""), nullptr), CString());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "a.bmp"));
  for (const wchar_t* name : {L"", L"..", L".", L"..\\b", L"x/b", L"C:b", L"\\tmp\\b", L"sub\\b"})
    EXPECT_EQ(GetImageFromADO(name, field(L"41"), nullptr), CString()) << platform::utf8From(name);
  EXPECT_EQ(GetImageFromADO(L"b", nullptr, nullptr), CString());
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_EQ(PutImageInADO(L"a", field(L"41")), 0);
}

}  // namespace
