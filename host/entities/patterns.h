#pragma once
// Hatch patterns by name: families of parallel lines with their dashes.
#include <string_view>
#include <vector>

/// One family of parallel lines of a pattern, as pattern files give it.
struct KvDbPatternLine {
  double angle = 0;            ///< degrees
  double x = 0, y = 0;         ///< a point of the first line
  double dx = 0, dy = 0;       ///< from a line to the next: along it and across it
  std::vector<double> dashes;  ///< above 0 a dash, below 0 a gap, 0 a dot; none: a whole line
};

/// The families of a pattern at scale 1, without regard to case. False for an unknown name; "SOLID" is known
/// and has none. With `isMetric` patterns that are drawn in inches come in millimetres.
bool kvdbHatchPattern(std::wstring_view name, bool isMetric, std::vector<KvDbPatternLine>& lines);
/// The names, in alphabetical order.
std::vector<std::wstring_view> kvdbHatchPatternNames();
