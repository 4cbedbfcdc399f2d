#include "host/entities/patterns.h"

#include <algorithm>

#include "platform/text/cstring.h"

namespace {

enum class Unit : unsigned char { Inch, Millimetre };
constexpr double kMillimetresPerInch = 25.4;

struct Pattern {
  const wchar_t* name;
  Unit unit;
  std::vector<KvDbPatternLine> lines;
};

// Source: the line figures that have been published with drafting programs for decades; angle, point, offset,
// dashes.
const std::vector<Pattern>& patterns() {
  static const std::vector<Pattern> all = {
      {L"ANGLE", Unit::Inch, {{0, 0, 0, 0, 0.275, {0.2, -0.075}}, {90, 0, 0, 0, 0.275, {0.2, -0.075}}}},
      {L"ANSI31", Unit::Inch, {{45, 0, 0, 0, 0.125, {}}}},
      {L"ANSI32", Unit::Inch, {{45, 0, 0, 0, 0.375, {}}, {45, 0.176776695, 0, 0, 0.375, {}}}},
      {L"ANSI33", Unit::Inch, {{45, 0, 0, 0, 0.25, {}}, {45, 0.176776695, 0, 0, 0.25, {0.125, -0.0625}}}},
      {L"ANSI34",
       Unit::Inch,
       {{45, 0, 0, 0, 0.75, {}},
        {45, 0.176776695, 0, 0, 0.75, {}},
        {45, 0.353553391, 0, 0, 0.75, {}},
        {45, 0.530330086, 0, 0, 0.75, {}}}},
      {L"ANSI35",
       Unit::Inch,
       {{45, 0, 0, 0, 0.25, {}}, {45, 0.176776695, 0, 0, 0.25, {0.3125, -0.0625, 0, -0.0625}}}},
      {L"ANSI36", Unit::Inch, {{45, 0, 0, 0.21875, 0.125, {0.3125, -0.0625, 0, -0.0625}}}},
      {L"ANSI37", Unit::Inch, {{45, 0, 0, 0, 0.125, {}}, {135, 0, 0, 0, 0.125, {}}}},
      {L"ANSI38", Unit::Inch, {{45, 0, 0, 0, 0.125, {}}, {135, 0, 0, 0.25, 0.125, {0.3125, -0.1875}}}},
      {L"BRASS", Unit::Inch, {{0, 0, 0, 0, 0.25, {}}, {0, 0, 0.125, 0, 0.25, {0.125, -0.0625}}}},
      {L"BRICK",
       Unit::Inch,
       {{0, 0, 0, 0, 0.25, {}}, {90, 0, 0, 0, 0.5, {0.25, -0.25}}, {90, 0.25, 0, 0, 0.5, {-0.25, 0.25}}}},
      {L"CLAY",
       Unit::Inch,
       {{0, 0, 0, 0, 0.1875, {}},
        {0, 0, 0.03125, 0, 0.1875, {}},
        {0, 0, 0.0625, 0, 0.1875, {}},
        {0, 0, 0.125, 0, 0.1875, {0.1875, -0.125}}}},
      {L"CORK",
       Unit::Inch,
       {{0, 0, 0, 0, 0.125, {}},
        {135, 0.0625, -0.0625, 0, 0.35355339, {0.176776695, -0.176776695}},
        {135, 0.09375, -0.0625, 0, 0.35355339, {0.176776695, -0.176776695}},
        {135, 0.125, -0.0625, 0, 0.35355339, {0.176776695, -0.176776695}}}},
      {L"CROSS",
       Unit::Inch,
       {{0, 0, 0, 0.25, 0.25, {0.125, -0.375}}, {90, 0.0625, -0.0625, 0.25, 0.25, {0.125, -0.375}}}},
      {L"DASH", Unit::Inch, {{0, 0, 0, 0.125, 0.125, {0.125, -0.125}}}},
      {L"DOTS", Unit::Inch, {{0, 0, 0, 0.03125, 0.0625, {0, -0.0625}}}},
      {L"EARTH",
       Unit::Inch,
       {{0, 0, 0, 0.25, 0.25, {0.25, -0.25}},
        {0, 0, 0.09375, 0.25, 0.25, {0.25, -0.25}},
        {0, 0, 0.1875, 0.25, 0.25, {0.25, -0.25}},
        {90, 0.03125, 0.21875, 0.25, 0.25, {0.25, -0.25}},
        {90, 0.125, 0.21875, 0.25, 0.25, {0.25, -0.25}},
        {90, 0.21875, 0.21875, 0.25, 0.25, {0.25, -0.25}}}},
      {L"GRATE", Unit::Inch, {{0, 0, 0, 0, 0.03125, {}}, {90, 0, 0, 0, 0.125, {}}}},
      {L"HEX",
       Unit::Inch,
       {{0, 0, 0, 0, 0.216506351, {0.125, -0.25}},
        {120, 0, 0, 0, 0.216506351, {0.125, -0.25}},
        {60, 0.125, 0, 0, 0.216506351, {0.125, -0.25}}}},
      {L"HONEY",
       Unit::Inch,
       {{0, 0, 0, 0.1875, 0.108253175, {0.125, -0.25}},
        {120, 0, 0, 0.1875, 0.108253175, {0.125, -0.25}},
        {60, 0, 0, 0.1875, 0.108253175, {-0.25, 0.125}}}},
      {L"INSUL",
       Unit::Inch,
       {{0, 0, 0, 0, 0.375, {}},
        {0, 0, 0.125, 0, 0.375, {0.125, -0.125}},
        {0, 0, 0.25, 0, 0.375, {0.125, -0.125}}}},
      {L"ISO02W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {12, -3}}}},
      {L"ISO03W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {12, -18}}}},
      {L"ISO04W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {24, -3, 0.5, -3}}}},
      {L"ISO05W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {24, -3, 0.5, -3, 0.5, -3}}}},
      {L"ISO06W100",
       Unit::Millimetre,
       {{0, 0, 0, 0, 5, {24, -3, 0.5, -3, 0.5, -6.5}}, {0, 0, 0, 0, 5, {-34, 0.5, -3}}}},
      {L"ISO07W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {0.5, -3}}}},
      {L"ISO08W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {24, -3, 6, -3}}}},
      {L"ISO09W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {24, -3, 6, -3, 6, -3}}}},
      {L"ISO10W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {12, -3, 0.5, -3}}}},
      {L"ISO11W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {12, -3, 12, -3, 0.5, -3}}}},
      {L"ISO12W100", Unit::Millimetre, {{0, 0, 0, 0, 5, {12, -3, 0.5, -3, 0.5, -3}}}},
      {L"ISO13W100",
       Unit::Millimetre,
       {{0, 0, 0, 0, 5, {12, -3, 12, -3, 0.5, -6.5}}, {0, 0, 0, 0, 5, {-33.5, 0.5, -3}}}},
      {L"ISO14W100",
       Unit::Millimetre,
       {{0, 0, 0, 0, 5, {12, -3, 0.5, -3, 0.5, -6.5}}, {0, 0, 0, 0, 5, {-22, 0.5, -3}}}},
      {L"ISO15W100",
       Unit::Millimetre,
       {{0, 0, 0, 0, 5, {12, -3, 12, -3, 0.5, -10}}, {0, 0, 0, 0, 5, {-33.5, 0.5, -3, 0.5, -3}}}},
      {L"LINE", Unit::Inch, {{0, 0, 0, 0, 0.125, {}}}},
      {L"MUDST", Unit::Inch, {{0, 0, 0, 0.5, 0.25, {0.25, -0.25, 0, -0.25, 0, -0.25}}}},
      {L"NET", Unit::Inch, {{0, 0, 0, 0, 0.125, {}}, {90, 0, 0, 0, 0.125, {}}}},
      {L"NET3", Unit::Inch, {{0, 0, 0, 0, 0.125, {}}, {60, 0, 0, 0, 0.125, {}}, {120, 0, 0, 0, 0.125, {}}}},
      {L"PLAST",
       Unit::Inch,
       {{0, 0, 0, 0, 0.25, {}}, {0, 0, 0.03125, 0, 0.25, {}}, {0, 0, 0.0625, 0, 0.25, {}}}},
      {L"SACNCR", Unit::Inch, {{45, 0, 0, 0, 0.09375, {}}, {45, 0.06629126, 0, 0, 0.09375, {0, -0.09375}}}},
      {L"SOLID", Unit::Inch, {}},
      {L"SQUARE", Unit::Inch, {{0, 0, 0, 0, 0.125, {0.125, -0.125}}, {90, 0, 0, 0, 0.125, {0.125, -0.125}}}},
      {L"STARS",
       Unit::Inch,
       {{0, 0, 0, 0, 0.216506351, {0.125, -0.125}},
        {60, 0, 0, 0, 0.216506351, {0.125, -0.125}},
        {120, 0.0625, 0.108253175, 0, 0.216506351, {0.125, -0.125}}}},
      {L"STEEL", Unit::Inch, {{45, 0, 0, 0, 0.125, {}}, {45, 0, 0.0625, 0, 0.125, {}}}},
      {L"TRANS", Unit::Inch, {{0, 0, 0, 0, 0.25, {}}, {0, 0, 0.125, 0, 0.25, {0.125, -0.125}}}},
      {L"TRIANG",
       Unit::Inch,
       {{60, 0, 0, 0.1875, 0.324759526, {0.1875, -0.1875}},
        {120, 0, 0, 0.1875, 0.324759526, {0.1875, -0.1875}},
        {0, -0.09375, 0.162379763, 0.1875, 0.324759526, {0.1875, -0.1875}}}},
      {L"ZIGZAG",
       Unit::Inch,
       {{0, 0, 0, 0.125, 0.125, {0.125, -0.125}}, {90, 0.125, 0, 0.125, 0.125, {0.125, -0.125}}}},
  };
  return all;
}

}  // namespace

bool kvdbHatchPattern(std::wstring_view name, bool isMetric, std::vector<KvDbPatternLine>& lines) {
  const CString wanted(name);
  for (const Pattern& pattern : patterns()) {
    if (wanted.CompareNoCase(pattern.name) != 0) continue;
    lines = pattern.lines;
    if (!isMetric || pattern.unit == Unit::Millimetre) return true;
    for (KvDbPatternLine& line : lines) {
      for (double* size : {&line.x, &line.y, &line.dx, &line.dy}) *size *= kMillimetresPerInch;
      for (double& dash : line.dashes) dash *= kMillimetresPerInch;
    }
    return true;
  }
  return false;
}

std::vector<std::wstring_view> kvdbHatchPatternNames() {
  std::vector<std::wstring_view> names;
  for (const Pattern& pattern : patterns()) names.emplace_back(pattern.name);
  return names;
}
