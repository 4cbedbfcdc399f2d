#include "siblings/symbols/standards.h"

namespace kmsymb {
namespace {

constexpr LineGroup kMetricLines{50, 35, 25}, kAmericanLines{60, 40, 30};

constexpr StandardRow kRows[] = {
    // Letters: GB/T 14691 and ISO 3098 type B, upright; heights 3.5 on sheets up to A2.
    {Standard::Gb,
     L"GB",
     L"ACGBTS",
     L"AM_GB",
     L"gbenor.shx",
     L"gbcbig.shx",
     1,
     kMetricLines,
     {3.5, 3.5, 0.875, 2, 0, 7, 0.7, 1, false, L'.', 1}},
    {Standard::Iso,
     L"ISO",
     L"ACISOTS",
     L"AM_ISO",
     L"isocp.shx",
     L"",
     1,
     kMetricLines,
     {3.5, 3.5, 0.875, 2, 0, 7, 0.7, 1, false, L',', 1}},
    {Standard::Din,
     L"DIN",
     L"ACDINTS",
     L"AM_DIN",
     L"isocp.shx",
     L"",
     1,
     kMetricLines,
     {3.5, 3.5, 0.875, 2, 1, 7, 0.7, 1, false, L',', 1}},
    {Standard::Ansi,
     L"ANSI",
     L"ACANSTS",
     L"AM_ANSI",
     L"romans.shx",
     L"",
     1,
     kAmericanLines,
     {3, 3, 1.5, 3, 1.5, 6, 1, 0, true, L'.', 1}},
    {Standard::Jis,
     L"JIS",
     L"ACJISTS",
     L"AM_JIS",
     L"isocp.shx",
     L"msgothic.shx",
     1,
     kMetricLines,
     {3.5, 3, 1, 2, 1, 8, 0.7, 1, false, L'.', 1}},
    // The letters are those of ISO.
    {Standard::Csn,
     L"CSN",
     L"ACISOTS",
     L"AM_CSN",
     L"isocp.shx",
     L"",
     1,
     kMetricLines,
     {3.5, 3.5, 1, 2, 0, 8, 0.7, 1, false, L',', 1}},
};
static_assert(std::size(kRows) == kStandardCount);

}  // namespace

const StandardRow& rowOf(Standard standard) {
  return kRows[static_cast<std::size_t>(standard)];
}

std::optional<Standard> standardNamed(std::wstring_view name) {
  const CString wanted = CString(name).Trim();
  for (const StandardRow& row : kRows)
    if (wanted.CompareNoCase(row.name) == 0) return row.standard;
  return std::nullopt;
}

}  // namespace kmsymb
