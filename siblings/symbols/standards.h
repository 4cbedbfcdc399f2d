#pragma once
// The drafting standards, and what each says of letters and dimensions. Lengths are millimetres on paper.
#include <array>
#include <optional>
#include <string_view>

#include "platform/text/cstring.h"

namespace kmsymb {

enum class Standard { Gb, Iso, Din, Ansi, Jis, Csn };
inline constexpr int kStandardCount = 6;
inline constexpr std::array<Standard, kStandardCount> kStandards = {
    Standard::Gb, Standard::Iso, Standard::Din, Standard::Ansi, Standard::Jis, Standard::Csn};

/// Line widths of one group: thick is twice thin, lettering stands between (ISO 128-2, ASME Y14.2).
/// Hundredths of a millimetre.
struct LineGroup {
  int thick, medium, thin;
};

/// What a standard says of dimensions: ISO 129-1, GB/T 4458.4, DIN 406-11, ASME Y14.5, JIS B 0001 and CSN
/// 01 3130.
struct DimensionLook {
  double textHeight, arrow, gap, beyondLine, fromOutline, spacing, toleranceFactor;
  int textPlace;       ///< DIMTAD: 0 in the line, 1 above it
  bool isHorizontal;   ///< all values read from below
  wchar_t separator;   ///< of decimals
  int toleranceAlign;  ///< DIMTOLJ: 0 bottom, 1 middle
};

struct StandardRow {
  Standard standard;
  const wchar_t* name;       ///< "GB"
  const wchar_t* textStyle;  ///< "ACGBTS"
  const wchar_t* dimStyle;   ///< "AM_GB"
  const wchar_t *font, *bigFont;
  double widthFactor;
  LineGroup lines;
  DimensionLook dimensions;
};

const StandardRow& rowOf(Standard standard);
/// Without regard to case or blanks around; nothing for a name that is none.
std::optional<Standard> standardNamed(std::wstring_view name);

}  // namespace kmsymb
