// The settings file: what it may say, what is a fault, and what stands in its place.
#include "siblings/symbols/settings.h"

#include <set>

#include "host/editor/sysvars.h"
#include "platform/files/files.h"
#include "platform/text/utf.h"
#include "siblings/symbols/layers.h"
#include "siblings/symbols/records.h"
#include "siblings/symbols/template.h"
#include "tests/toolkit/support.h"

using namespace kmsymb;

namespace {

/// Layer names that earlier editions wrote.
constexpr const wchar_t* kLegacy[] = {
    L"1轮廓实线层", L"2细线层",     L"3中心线层",   L"4虚线层",    L"5剖面线层", L"6文字层",
    L"7标注层",     L"8符号标注层", L"9双点划线层", L"轮廓虚线层", L"图框层",    L"消隐层",
    L"QX_CL",       L"不可打印",    L"零件参照",    L"剖面线",     L"视口"};

TEST(SymbolTables, EveryStandardNamesEveryLayerOnceAndNoneAsBefore) {
  const SymbolSettings settings;
  for (Standard standard : kStandards) {
    std::map<CString, LayerId> names;
    for (const KindRow& kind : kindRows()) {
      const CString name = CString(settings.nameOf(standard, kind.layer)).MakeLower();
      EXPECT_TRUE(kvdbIsSymbolName(name.view())) << platform::utf8From(name);
      const auto [place, isNew] = names.emplace(name, kind.layer);
      EXPECT_TRUE(isNew || place->second == kind.layer) << platform::utf8From(name);
      for (const wchar_t* old : kLegacy) EXPECT_NE(name.CompareNoCase(old), 0);
      const LayerLook& look = settings.layer(standard, kind.layer.row).look;
      EXPECT_TRUE(isLineWeight(look.lineWeight));
    }
  }
  for (int kind : {1, 38, 40, 78, 87, 107}) EXPECT_TRUE(kindRow(kind)) << kind;
  for (int kind : {-1, 0, 6, 89, 108, 1 << 30}) EXPECT_FALSE(kindRow(kind)) << kind;
  EXPECT_EQ(kindNamed(L"stdpsym"), kindRow(87));
}

TEST(SymbolSettings, WhatIsWrittenIsWhatIsBuiltIn) {
  std::vector<SettingsFault> faults;
  const SymbolSettings read = parseSettings(formatBuiltInSettings(), faults), builtIn;
  EXPECT_TRUE(faults.empty());
  EXPECT_EQ(read.layerOfKind, builtIn.layerOfKind);
  EXPECT_EQ(read.partSuffixes, builtIn.partSuffixes);
  for (Standard standard : kStandards)
    for (int row = 0; row < static_cast<int>(layerRows().size()); ++row) {
      EXPECT_EQ(read.layer(standard, row).look, builtIn.layer(standard, row).look);
      EXPECT_GT(read.layer(standard, row).line, 0);
    }
}

struct Case {
  const char* text;
  int line;  ///< of the one fault; 0: none
  const wchar_t* fault;
};

class SettingsFaults : public testing::TestWithParam<Case> {};

TEST_P(SettingsFaults, AreToldByLineAndChangeNothing) {
  std::vector<SettingsFault> faults;
  const SymbolSettings read = parseSettings(GetParam().text, faults), builtIn;
  if (GetParam().line == 0) {
    EXPECT_TRUE(faults.empty());
    return;
  }
  ASSERT_EQ(faults.size(), 1u);
  EXPECT_EQ(faults[0].line, GetParam().line);
  EXPECT_GE(faults[0].text.Find(GetParam().fault), 0) << platform::utf8From(faults[0].text);
  EXPECT_EQ(read.standard, builtIn.standard);
  EXPECT_EQ(read.layerOfKind, builtIn.layerOfKind);
  EXPECT_EQ(read.partSuffixes, builtIn.partSuffixes);
  EXPECT_EQ(read.layer(Standard::Gb, 0).look, builtIn.layer(Standard::Gb, 0).look);
}

INSTANTIATE_TEST_SUITE_P(
    All, SettingsFaults,
    testing::Values(
        Case{"", 0, L""}, Case{"; [nothing\n\r\n[GB]\nOutline=\n", 0, L""},
        Case{"[gb]\nOUTLINE=,,,,", 0, L""}, Case{"[General]\nStandard=BS\n", 2, L"BS"},
        Case{"[General]\nColour=GB\n", 2, L"unknown key"}, Case{"[Colours]\n", 1, L"unknown section"},
        Case{"[GB\n", 1, L"unknown section"}, Case{"[GB]\nOutline\n", 2, L"a key and a value"},
        Case{"[GB]\n\n;\nNoSuch=a\n", 4, L"NoSuch"}, Case{"[GB]\nOutline=a|b", 2, L"a|b"},
        Case{"[GB]\nOutline=,0", 2, L"unknown colour"}, Case{"[GB]\nOutline=,256", 2, L"256"},
        Case{"[GB]\nOutline=,7.5", 2, L"7.5"}, Case{"[GB]\nOutline=,red", 2, L"red"},
        Case{"[GB]\nOutline=,1e300", 2, L"1e300"}, Case{"[GB]\nOutline=,,a*b|", 2, L"unknown linetype"},
        Case{"[GB]\nOutline=,,,0.51", 2, L"line width"}, Case{"[GB]\nOutline=,,,nan", 2, L"nan"},
        Case{"[GB]\nOutline=,,,-1", 2, L"-1"}, Case{"[GB]\nOutline=,,,,maybe", 2, L"maybe"},
        Case{"[GB]\nOutline=,,,,,more", 2, L"more"}, Case{"[GB]\nPartSuffix=", 2, L"end with"},
        Case{"[GB]\nPartSuffix=<", 2, L"<"}, Case{"[Kinds]\nXYZ=Outline", 2, L"XYZ"},
        Case{"[Kinds]\nCON1=Nothing", 2, L"Nothing"}, Case{"[Kinds]\nCON1=Outline/Twin", 2, L"Twin"}));

TEST(SymbolSettings, SaysWhatItSays) {
  std::vector<SettingsFault> faults;
  const SymbolSettings read = parseSettings(
      "[General]\nStandard = din\n[Kinds]\ncon1 = Thin/Part\n78=Fem\n[DIN]\nThin= Meine Linie , 12 ,Dashed, "
      "0.7,noplot\n"
      "PartSuffix=!\n",
      faults);
  EXPECT_TRUE(faults.empty());
  EXPECT_EQ(read.standard, Standard::Din);
  const LayerId thin = read.layerOfKind.at(45);
  EXPECT_EQ(read.nameOf(Standard::Din, thin), L"Meine Linie!");
  const LayerLook& look = read.layer(Standard::Din, thin.row).look;
  EXPECT_EQ(look, (LayerLook{L"Meine Linie", 12, L"Dashed", 70, false}));
  EXPECT_EQ(read.layerOfKind.at(78), (LayerId{*layerNamed(L"fem"), false}));
}

TEST(SymbolSettings, InUtf16AndCutAfterAHundredFaults) {
  std::vector<SettingsFault> faults;
  std::string text = "\xFF\xFE";
  for (wchar_t c : std::wstring(L"[GB]\nOutline=轮廓,5")) {
    text += static_cast<char>(c & 0xFF);
    text += static_cast<char>(c >> 8);
  }
  EXPECT_EQ(parseSettings(text, faults).layer(Standard::Gb, 0).look.name, L"轮廓");
  std::string noise;
  for (int i = 0; i < 1000; ++i) noise += "x\n";
  parseSettings(noise, faults);
  EXPECT_EQ(faults.size(), 100u);
}

class SymbolFiles : public test::ToolkitTest {};

TEST_F(SymbolFiles, AreThoseOfTheTables) {
  const std::filesystem::path tree = KORVANE_SHARE_TREE;
  std::string bytes;
  ASSERT_TRUE(platform::readFile(tree / "MCADSetting" / "pro" / "Symbols.ini", bytes));
  EXPECT_EQ(bytes, formatBuiltInSettings());
  for (Standard standard : kStandards) {
    const std::filesystem::path place = platform::toNative(templatePlace(standard));
    ASSERT_TRUE(platform::readFile(tree / place.relative_path(), bytes)) << place;
    EXPECT_TRUE(bytes == formatTemplate(standard)) << place << ": run make_symbol_files";
  }
}

/// A file in the user's folder, as the start of the product makes it.
class UserFile : public test::ToolkitTest {
 protected:
  UserFile() {
    resbuf value{};
    kvedGetVar(L"ROAMABLEROOTPREFIX", &value);
    CString prefix(value.resval.rstring);
    std::free(value.resval.rstring);
    folder_ = prefix.TrimRight(L'\\') + L"\\Korvm\\MCADSetting\\pro";
    platform::createFolders(folder_);
  }
  CString file() const { return folder_ + L"\\Symbols.ini"; }
  void write(const char* text) { ASSERT_TRUE(platform::writeFile(file(), text)); }
  CString folder_;
};

TEST_F(UserFile, WinsAndIsReadAnew) {
  EXPECT_EQ(standardInForce(), Standard::Gb);
  write("[General]\nStandard=JIS\n");
  EXPECT_EQ(standardInForce(), Standard::Jis);
  EXPECT_EQ(currentSettingsFile(), file());
  write("[General]\nStandard=CSN\n");
  EXPECT_EQ(standardInForce(), Standard::Csn);
  EXPECT_TRUE(setStandard(drawing(), Standard::Ansi));
  EXPECT_EQ(standardInForce(), Standard::Ansi);
}

TEST_F(UserFile, FaultsAreToldOnceWithFileAndLine) {
  write("[GB]\nOutline=,999\nThin=Own,5,NO_SUCH_LINE\n");
  currentSettings();
  const KvDbObjectId thin = ensureLayer(46, nullptr);
  EXPECT_EQ(layer(thin).getName(), L"Own");
  EXPECT_EQ(layer(thin).colorIndex(), 5);
  EXPECT_EQ(layer(thin).linetypeObjectId(), drawing().continuousLinetype());
  write("[GB]\nOutline=,999\nThin=Other,5,NO_SUCH_LINE\n");
  ensureLayer(46, nullptr);
  for (const wchar_t* text :
       {L"Symbols.ini(2): unknown colour \"999\"", L"Symbols.ini(3): unknown linetype"}) {
    const int first = shown.Find(text);
    EXPECT_GE(first, 0) << platform::utf8From(shown);
    EXPECT_LT(shown.Find(text, first + 1), 0) << platform::utf8From(shown);
  }
}

}  // namespace
