#pragma once
// What the sub-commands share: exit codes, texts for JSON, and pages of rectangles as SVG.
#include <string>
#include <string_view>

namespace korvane {

inline constexpr int kSuccess = 0;
inline constexpr int kWorkFailed = 1;
inline constexpr int kWrongUse = 2;

/// Quoted and escaped; bytes that are no UTF-8 become U+FFFD.
std::string jsonText(std::string_view text);

/// A picture in millimetre-like units, y upwards. Elements are appended in drawing order.
class SvgPage {
 public:
  /// The picture covers 0,0 to `width`,`height` and a margin.
  SvgPage(double width, double height);

  void rectangle(double x, double y, double width, double height, std::string_view fill);
  /// Only the frame, dashed.
  void frame(double x, double y, double width, double height);
  /// Centred on x,y; what doesn't fit `width` by `height` is made smaller, and left out under a legible size.
  void label(double x, double y, double width, double height, std::string_view text);
  /// Left-aligned, from x,y on.
  void caption(double x, double y, double size, std::string_view text);

  /// The whole document.
  std::string text() const;

 private:
  double up(double y) const { return height_ - y; }
  double width_, height_;
  std::string body_;
};

/// A fill from a fixed round of light colours.
std::string_view fillColour(int index);

}  // namespace korvane
