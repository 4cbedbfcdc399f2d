#include "host/graphics/colors.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::uint32_t rgb(int r, int g, int b) {
  return static_cast<std::uint32_t>(r) << 16 | static_cast<std::uint32_t>(g) << 8 |
         static_cast<std::uint32_t>(b);
}

constexpr std::uint32_t hueColor(int index) {
  constexpr int kBrightness[] = {255, 165, 127, 76, 38};
  const int bright = kBrightness[index % 10 / 2];
  const int dark = index % 2 == 0 ? 0 : bright / 2;
  // Six sixths of the circle, four hues in each: one channel rises or falls in quarters.
  const int hue = index / 10 - 1, sixth = hue / 4, quarter = hue % 4;
  const int rising = dark + (bright - dark) * quarter / 4, falling = bright - (bright - dark) * quarter / 4;
  switch (sixth) {
    case 0:
      return rgb(bright, rising, dark);
    case 1:
      return rgb(falling, bright, dark);
    case 2:
      return rgb(dark, bright, rising);
    case 3:
      return rgb(dark, falling, bright);
    case 4:
      return rgb(rising, dark, bright);
    default:
      return rgb(bright, dark, falling);
  }
}

constexpr std::array<std::uint32_t, 256> makeTable() {
  constexpr std::uint32_t kFirst[] = {0xFFFFFF, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                      0x0000FF, 0xFF00FF, 0xFFFFFF, 0x808080, 0xC0C0C0};
  constexpr int kGreys[] = {51, 91, 132, 173, 214, 255};
  std::array<std::uint32_t, 256> table{};
  for (int i = 0; i < 10; ++i) table[static_cast<std::size_t>(i)] = kFirst[i];
  for (int i = 10; i < 250; ++i) table[static_cast<std::size_t>(i)] = hueColor(i);
  for (int i = 0; i < 6; ++i) table[static_cast<std::size_t>(250 + i)] = rgb(kGreys[i], kGreys[i], kGreys[i]);
  return table;
}

constexpr auto kTable = makeTable();
constexpr int kForeground = 7;

bool isDark(std::uint32_t color) {
  // Weights of the three channels in brightness, by ITU-R BT.601, in thousandths.
  return 299 * ((color >> 16) & 255) + 587 * ((color >> 8) & 255) + 114 * (color & 255) < 127500;
}

}  // namespace

std::uint32_t kvgrTableColor(int index) {
  return kTable[static_cast<std::size_t>(index >= 1 && index <= 255 ? index : kForeground)];
}

std::uint32_t kvgrPaperColor(const KvCmEntityColor& color, std::uint32_t background, bool isMonochrome) {
  const std::uint32_t foreground = isDark(background) ? 0xFFFFFF : 0x000000;
  if (isMonochrome) return foreground;
  // White that was drawn on black would be lost on paper.
  if (color.colorMethod() == KvCmEntityColor::kByColor)
    return color.rgb() == background ? foreground : color.rgb();
  const int index = color.colorIndex();
  return index == kForeground || index < 1 || index > 255 ? foreground : kvgrTableColor(index);
}
