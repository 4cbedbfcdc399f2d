#include "platform/ui/display_width.h"

#include <algorithm>

namespace platform {
namespace {

struct Range {
  wchar_t first, last;
};

constexpr Range kWide[] = {{0x1100, 0x115F},   {0x231A, 0x231B},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                           {0x3400, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},
                           {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},
                           {0xFFE0, 0xFFE6},   {0x16FE0, 0x18AFF}, {0x1B000, 0x1B2FF}, {0x1F300, 0x1F64F},
                           {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Range kNone[] = {{0x0300, 0x036F}, {0x0483, 0x0489},  {0x0591, 0x05BD}, {0x064B, 0x065F},
                           {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},  {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
                           {0x200B, 0x200F}, {0x20D0, 0x20FF},  {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
                           {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};
constexpr Range kUnsafe[] = {{0x0000, 0x001F}, {0x007F, 0x009F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], wchar_t c) {
  const auto* found = std::upper_bound(std::begin(ranges), std::end(ranges), c,
                                       [](wchar_t value, const Range& range) { return value < range.first; });
  return found != std::begin(ranges) && c <= std::prev(found)->last;
}

void wrapLine(std::wstring_view line, int width, std::vector<std::wstring>& lines) {
  while (displayWidth(line) > width && line.size() > 1) {
    std::size_t end = 0, blank = 0;
    for (int used = 0; end < line.size(); ++end) {
      used += displayWidth(line[end]);
      if (used > width) break;
      if (line[end] == L' ') blank = end;
    }
    // A single character wider than the line has to stand somewhere.
    const std::size_t cut = blank > 0 ? blank : std::max<std::size_t>(end, 1);
    lines.emplace_back(line.substr(0, cut));
    line.remove_prefix(blank > 0 ? cut + 1 : cut);
  }
  lines.emplace_back(line);
}

}  // namespace

int displayWidth(wchar_t c) {
  return isIn(kNone, c) ? 0 : isIn(kWide, c) ? 2 : 1;
}

int displayWidth(std::wstring_view text) {
  int width = 0;
  for (const wchar_t c : text) width += displayWidth(c);
  return width;
}

std::wstring printable(std::wstring_view text) {
  std::wstring result(text);
  std::replace_if(
      result.begin(), result.end(), [](wchar_t c) { return isIn(kUnsafe, c); }, L' ');
  return result;
}

std::wstring padded(std::wstring_view text, int width) {
  const int missing = width - displayWidth(text);
  return std::wstring(text) + std::wstring(static_cast<std::size_t>(std::max(missing, 0)), L' ');
}

std::vector<std::wstring> wrapped(std::wstring_view text, int width) {
  std::vector<std::wstring> lines;
  while (true) {
    const std::size_t end = text.find(L'\n');
    std::wstring_view line = text.substr(0, end);
    if (line.ends_with(L'\r')) line.remove_suffix(1);
    wrapLine(printable(line), std::max(width, 1), lines);
    if (end == text.npos) return lines;
    text.remove_prefix(end + 1);
  }
}

}  // namespace platform
