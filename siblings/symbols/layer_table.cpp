#include "siblings/symbols/layer_table.h"

#include <algorithm>

namespace kmsymb {
namespace {

constexpr LayerRow kLayers[] = {
    {L"Outline", LayerRow::Thick, L"Continuous", 7, 7, true, L"粗实线", L"Outline", L"Körperkante", L"外形線",
     L"Obrys"},
    {L"OutlineMedium", LayerRow::Medium, L"Continuous", 7, 4, true, L"中实线", L"Outline Medium",
     L"Mittlere Kante", L"中太線", L"Obrys střední"},
    {L"Thin", LayerRow::Thin, L"Continuous", 3, 4, true, L"细实线", L"Thin", L"Schmale Linie", L"細線",
     L"Tenká čára"},
    {L"HiddenWide", LayerRow::Thick, L"HIDDEN", 2, 2, true, L"粗虚线", L"Hidden Wide", L"Verdeckt breit",
     L"太い破線", L"Skrytá tlustá"},
    {L"HiddenNarrow", LayerRow::Thin, L"HIDDEN2", 2, 3, true, L"细虚线", L"Hidden", L"Verdeckt schmal",
     L"細い破線", L"Skrytá tenká"},
    {L"CenterWide", LayerRow::Thin, L"CENTER", 1, 1, true, L"点画线", L"Center", L"Mittellinie", L"中心線",
     L"Osa"},
    {L"CenterNarrow", LayerRow::Thin, L"CENTER2", 1, 1, true, L"短点画线", L"Center Short",
     L"Mittellinie kurz", L"短い中心線", L"Osa krátká"},
    {L"HoleCenterWide", LayerRow::Thin, L"CENTER", 1, 1, true, L"孔中心线", L"Hole Center", L"Lochmitte",
     L"穴中心線", L"Osa díry"},
    {L"HoleCenterNarrow", LayerRow::Thin, L"CENTER2", 1, 1, true, L"孔短中心线", L"Hole Center Short",
     L"Lochmitte kurz", L"短い穴中心線", L"Osa díry krátká"},
    {L"ReferenceCircle", LayerRow::Thin, L"CENTER2", 1, 1, true, L"参考圆", L"Reference Circle", L"Teilkreis",
     L"基準円", L"Roztečná kružnice"},
    {L"Phantom", LayerRow::Thin, L"PHANTOM2", 6, 6, true, L"双点画线", L"Phantom", L"Strich-Zweipunkt",
     L"想像線", L"Čerchovaná se dvěma tečkami"},
    {L"Hatch", LayerRow::Thin, L"Continuous", 3, 8, true, L"剖面符号", L"Hatch", L"Schraffur", L"ハッチング",
     L"Šrafy"},
    {L"Dimension", LayerRow::Thin, L"Continuous", 3, 2, true, L"尺寸线", L"Dimension", L"Bemaßung", L"寸法",
     L"Kóty"},
    {L"Leader", LayerRow::Thin, L"Continuous", 3, 2, true, L"引出线", L"Leader", L"Hinweislinie", L"引出線",
     L"Odkazová čára"},
    {L"Symbol", LayerRow::Medium, L"Continuous", 4, 2, true, L"图形符号", L"Symbol", L"Symbole", L"記号",
     L"Značky"},
    {L"Position", LayerRow::Medium, L"Continuous", 4, 2, true, L"零件序号", L"Position", L"Positionsnummer",
     L"照合番号", L"Pozice"},
    {L"Text7", LayerRow::Text70, L"Continuous", 7, 7, true, L"文字7", L"Text 7", L"Schrift 7", L"文字7",
     L"Písmo 7"},
    {L"Text5", LayerRow::Text50, L"Continuous", 7, 7, true, L"文字5", L"Text 5", L"Schrift 5", L"文字5",
     L"Písmo 5"},
    {L"Text", LayerRow::Text35, L"Continuous", 4, 2, true, L"文字", L"Text", L"Schrift", L"文字", L"Písmo"},
    {L"Text2", LayerRow::Text25, L"Continuous", 3, 2, true, L"文字2.5", L"Text 2.5", L"Schrift 2.5",
     L"文字2.5", L"Písmo 2.5"},
    {L"Text1", LayerRow::Text18, L"Continuous", 3, 2, true, L"文字1.8", L"Text 1.8", L"Schrift 1.8",
     L"文字1.8", L"Písmo 1.8"},
    {L"Calculation", LayerRow::Medium, L"Continuous", 5, 5, true, L"计算", L"Calculation", L"Berechnung",
     L"計算", L"Výpočet"},
    {L"PartsListThick", LayerRow::Thick, L"Continuous", 7, 7, true, L"明细表粗线", L"Parts List Thick",
     L"Stückliste breit", L"部品表太線", L"Kusovník tlustý"},
    {L"PartsListMedium", LayerRow::Medium, L"Continuous", 4, 2, true, L"明细表中线", L"Parts List Medium",
     L"Stückliste mittel", L"部品表中線", L"Kusovník střední"},
    {L"PartsListThin", LayerRow::Thin, L"Continuous", 3, 4, true, L"明细表细线", L"Parts List Thin",
     L"Stückliste schmal", L"部品表細線", L"Kusovník tenký"},
    {L"FrameThick", LayerRow::Thick, L"Continuous", 7, 7, true, L"图框粗线", L"Frame", L"Rahmen", L"輪郭線",
     L"Rámeček"},
    {L"FrameMedium", LayerRow::Medium, L"Continuous", 4, 2, true, L"图框中线", L"Frame Medium",
     L"Rahmen mittel", L"輪郭中線", L"Rámeček střední"},
    {L"FrameThin", LayerRow::Thin, L"Continuous", 3, 4, true, L"图框细线", L"Frame Thin", L"Rahmen schmal",
     L"輪郭細線", L"Rámeček tenký"},
    {L"TitleThick", LayerRow::Thick, L"Continuous", 7, 7, true, L"标题栏粗线", L"Title Block", L"Schriftfeld",
     L"表題欄", L"Razítko"},
    {L"TitleMedium", LayerRow::Medium, L"Continuous", 4, 2, true, L"标题栏中线", L"Title Block Medium",
     L"Schriftfeld mittel", L"表題欄中線", L"Razítko střední"},
    {L"TitleThin", LayerRow::Thin, L"Continuous", 3, 4, true, L"标题栏细线", L"Title Block Thin",
     L"Schriftfeld schmal", L"表題欄細線", L"Razítko tenké"},
    {L"Break", LayerRow::Thin, L"Continuous", 3, 4, true, L"波浪线", L"Break", L"Bruchlinie", L"破断線",
     L"Přerušení"},
    {L"CuttingPlane", LayerRow::Thick, L"CENTER2", 32, 7, true, L"剖切线", L"Cutting Plane",
     L"Schnittverlauf", L"切断線", L"Rovina řezu"},
    {L"SectionMark", LayerRow::Thick, L"Continuous", 7, 7, true, L"剖切符号", L"Section Mark",
     L"Schnittkennzeichen", L"切断記号", L"Značka řezu"},
    {L"View", LayerRow::Thin, L"Continuous", 8, 8, false, L"视图边界", L"Viewport", L"Ansichtsfenster",
     L"ビューポート", L"Výřez"},
    {L"NoPlot", LayerRow::Thin, L"Continuous", 8, 8, false, L"非打印", L"No Plot", L"Nicht drucken",
     L"非印刷", L"Netisknout"},
    {L"Info", LayerRow::Thin, L"Continuous", 8, 8, false, L"信息", L"Information", L"Information", L"情報",
     L"Informace"},
    {L"Detail", LayerRow::Thin, L"Continuous", 3, 4, true, L"局部放大", L"Detail", L"Einzelheit", L"詳細",
     L"Detail"},
    {L"Construction", LayerRow::Thin, L"Continuous", 140, 140, false, L"作图线", L"Construction",
     L"Konstruktionslinie", L"補助線", L"Pomocná čára"},
    {L"Fem", LayerRow::Thin, L"Continuous", 5, 5, true, L"有限元", L"FEM", L"FEM", L"有限要素", L"MKP"},
    {L"PartReference", LayerRow::Thin, L"Continuous", 8, 8, false, L"零件信息", L"Part Reference",
     L"Teilereferenz", L"部品参照", L"Odkaz na díl"},
    {L"Blanked", LayerRow::Thin, L"Continuous", 8, 8, false, L"遮挡线", L"Blanked", L"Ausgeblendet",
     L"隠蔽線", L"Potlačeno"},
};

constexpr KindRow kKinds[] = {
    {1, L"1", {40, false}},        // PartReference
    {2, L"INFO", {36, false}},     // Info
    {3, L"VIEW", {34, false}},     // View
    {4, L"NGIP", {35, false}},     // NoPlot
    {5, L"VPLI", {33, false}},     // SectionMark
    {7, L"SPLI", {31, false}},     // Break
    {10, L"TXT7", {16, false}},    // Text7
    {11, L"TXT5", {17, false}},    // Text5
    {12, L"TXT3", {18, false}},    // Text
    {13, L"TXT2", {19, false}},    // Text2
    {14, L"TXT1", {20, false}},    // Text1
    {18, L"PAL5", {22, false}},    // PartsListThick
    {19, L"PAL2", {24, false}},    // PartsListThin
    {20, L"PAL3", {23, false}},    // PartsListMedium
    {23, L"DILI", {12, false}},    // Dimension
    {33, L"DETA", {37, false}},    // Detail
    {36, L"POSN", {15, false}},    // Position
    {38, L"38", {13, false}},      // Leader
    {40, L"40", {14, false}},      // Symbol
    {41, L"LEAD", {13, false}},    // Leader
    {42, L"MSYM", {14, false}},    // Symbol
    {45, L"CON1", {0, false}},     // Outline
    {46, L"CON2", {2, false}},     // Thin
    {47, L"CON3", {1, false}},     // OutlineMedium
    {48, L"CON4", {4, false}},     // HiddenNarrow
    {49, L"CENW", {5, false}},     // CenterWide
    {50, L"CENN", {6, false}},     // CenterNarrow
    {51, L"HOCW", {7, false}},     // HoleCenterWide
    {52, L"HOCN", {8, false}},     // HoleCenterNarrow
    {53, L"CLIN", {38, false}},    // Construction
    {54, L"HLIN", {38, false}},    // Construction
    {55, L"ZIZA", {31, false}},    // Break
    {56, L"SBRK", {31, false}},    // Break
    {57, L"SECT", {32, false}},    // CuttingPlane
    {58, L"DIAG", {2, false}},     // Thin
    {59, L"HATC", {11, false}},    // Hatch
    {60, L"RCGW", {9, false}},     // ReferenceCircle
    {61, L"RCGN", {9, false}},     // ReferenceCircle
    {62, L"TCON", {0, false}},     // Outline
    {63, L"TLEN", {0, false}},     // Outline
    {64, L"THLI", {2, false}},     // Thin
    {65, L"TRLI", {2, false}},     // Thin
    {66, L"PHAN", {10, false}},    // Phantom
    {67, L"CAL2", {21, false}},    // Calculation
    {68, L"CAL3", {21, false}},    // Calculation
    {69, L"CAL5", {21, false}},    // Calculation
    {70, L"CAL7", {21, false}},    // Calculation
    {71, L"SYB3", {14, false}},    // Symbol
    {72, L"FEMN", {39, false}},    // Fem
    {73, L"FEMPN", {39, false}},   // Fem
    {74, L"FEMST", {39, false}},   // Fem
    {75, L"FEMVN", {39, false}},   // Fem
    {76, L"FEMVT", {39, false}},   // Fem
    {77, L"FEMSP", {39, false}},   // Fem
    {78, L"78", {25, false}},      // FrameThick
    {79, L"BOR2", {27, false}},    // FrameThin
    {80, L"BOR3", {26, false}},    // FrameMedium
    {81, L"BOR5", {25, false}},    // FrameThick
    {82, L"TIT2", {30, false}},    // TitleThin
    {83, L"TIT3", {29, false}},    // TitleMedium
    {84, L"TIT5", {28, false}},    // TitleThick
    {85, L"HIDW", {3, false}},     // HiddenWide
    {86, L"HIDN", {4, false}},     // HiddenNarrow
    {87, L"BHNV", {41, false}},    // Blanked
    {88, L"BHNVS", {41, true}},    // Blanked
    {90, L"N_HIDW", {3, true}},    // HiddenWide
    {91, L"N_HIDN", {4, true}},    // HiddenNarrow
    {92, L"N_BHNV", {41, true}},   // Blanked
    {93, L"N_CENW", {5, true}},    // CenterWide
    {94, L"N_CENN", {6, true}},    // CenterNarrow
    {95, L"N_CON1", {0, true}},    // Outline
    {96, L"N_CON2", {2, true}},    // Thin
    {97, L"N_CON3", {1, true}},    // OutlineMedium
    {98, L"N_CON4", {4, true}},    // HiddenNarrow
    {99, L"N_HATC", {11, true}},   // Hatch
    {100, L"N_THLI", {2, true}},   // Thin
    {101, L"N_DILI", {12, true}},  // Dimension
    {102, L"N_NGIP", {35, true}},  // NoPlot
    {103, L"N_LEAD", {13, true}},  // Leader
    {104, L"N_PHAN", {10, true}},  // Phantom
    {105, L"N_VPLI", {33, true}},  // SectionMark
    {106, L"N_TCON", {0, true}},   // Outline
    {107, L"N_TLEN", {0, true}},   // Outline
};

/// A second key for a kind.
constexpr const wchar_t* kSymbolPartKey = L"STDPSYM";
constexpr int kSymbolPartKind = 87;

constexpr const wchar_t* kPartSuffixes[kStandardCount] = {L"-标准件", L"-SP",     L"-NT",
                                                          L"-SP",     L"-規格品", L"-ND"};

// Source: the widths of ISO 128-2 and those that drawing files allow beside them.
constexpr int kLineWeights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

const wchar_t* nameOf(const LayerRow& row, Standard standard) {
  switch (standard) {
    case Standard::Gb:
      return row.chinese;
    case Standard::Din:
      return row.german;
    case Standard::Jis:
      return row.japanese;
    case Standard::Csn:
      return row.czech;
    default:
      return row.english;
  }
}

/// Letters are a tenth of their height thick (ISO 3098-1, type B).
int widthOf(LayerRow::Width width, const LineGroup& lines) {
  switch (width) {
    case LayerRow::Thick:
      return lines.thick;
    case LayerRow::Medium:
      return lines.medium;
    case LayerRow::Thin:
      return lines.thin;
    case LayerRow::Text70:
      return 70;
    case LayerRow::Text50:
      return 50;
    case LayerRow::Text35:
      return 35;
    case LayerRow::Text25:
      return 25;
    case LayerRow::Text18:
      return 18;
  }
  return lines.thin;
}

}  // namespace

std::span<const LayerRow> layerRows() {
  return kLayers;
}

std::span<const KindRow> kindRows() {
  return kKinds;
}

const KindRow* kindRow(int kind) {
  const auto* found = std::lower_bound(std::begin(kKinds), std::end(kKinds), kind,
                                       [](const KindRow& row, int wanted) { return row.kind < wanted; });
  return found != std::end(kKinds) && found->kind == kind ? found : nullptr;
}

const KindRow* kindNamed(std::wstring_view key) {
  const CString wanted(key);
  if (wanted.CompareNoCase(kSymbolPartKey) == 0) return kindRow(kSymbolPartKind);
  for (const KindRow& row : kKinds)
    if (wanted.CompareNoCase(row.key) == 0) return &row;
  return nullptr;
}

std::optional<int> layerNamed(std::wstring_view key) {
  const CString wanted(key);
  for (std::size_t i = 0; i < std::size(kLayers); ++i)
    if (wanted.CompareNoCase(kLayers[i].key) == 0) return static_cast<int>(i);
  return std::nullopt;
}

const wchar_t* partSuffix(Standard standard) {
  return kPartSuffixes[static_cast<std::size_t>(standard)];
}

LayerLook builtInLook(Standard standard, int index) {
  const LayerRow& row = kLayers[static_cast<std::size_t>(index)];
  const StandardRow& own = rowOf(standard);
  LayerLook look;
  look.name = CString(own.name) + L" " + nameOf(row, standard);
  look.color = standard == Standard::Gb ? row.colorGb : row.colorElsewhere;
  look.linetype = row.linetype;
  look.lineWeight = widthOf(row.width, own.lines);
  look.isPlotted = row.isPlotted;
  return look;
}

bool isLineWeight(int hundredths) {
  return std::binary_search(std::begin(kLineWeights), std::end(kLineWeights), hundredths);
}

}  // namespace kmsymb
