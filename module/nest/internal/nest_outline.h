#pragma once
// The outline of the free area: a chain of points per sheet from the lower right corner over the front of the
// parts to the upper right corner, with the free area on its right-hand side. It never turns downwards: the
// front has one x for each y. Chains of earlier sheets stay in the list.
#include <cstddef>
#include <string>
#include <vector>

namespace mek::nest {

inline constexpr double kTolerance = 1e-6;  ///< levels, gaps and cross products; a contract
inline constexpr double kRightAngle = 0.1;  ///< largest dot product of two edges at a right angle; a contract
inline constexpr std::size_t kLastOpenCorner =
    4;  ///< corners of the first sheet up to here are measured to its end

struct OutlinePoint {
  double x, y;
};

/// An empty rectangle at a corner of the outline.
struct NestGap {
  double x, y;   ///< lower left corner
  double width;  ///< as measured for the fit: to the sheet's end, or to the next step and half the edge gap
  double freeWidth;   ///< up to the sheet's end
  double height;      ///< up to the next step
  std::size_t index;  ///< of the outline point that it hangs on
};

struct OutlineSpacing {
  double part, edge, sheet;
};

class NestOutline {
 public:
  NestOutline(double height, double length, const OutlineSpacing& spacing);

  /// Opens the next sheet behind the last one.
  void openSheet();
  int sheets() const { return sheets_; }
  double sheetStart() const;

  /// The gaps of the present sheet by ascending x. Slits as high as the part gap that end before the sheet
  /// does are left out.
  std::vector<NestGap> gaps() const;

  /// Makes the front straight while the outline is a plain rectangle.
  void levelFront(const std::vector<NestGap>& gaps);

  /// Where an item in `gap` stands relative to the gap's corner: clear of the parts on its left and below.
  double offsetX(const NestGap& gap) const;
  double offsetY(const NestGap& gap) const;

  /// Takes a part of `width` by `height`, standing at the offsets, out of the free area.
  void place(const NestGap& gap, double width, double height);

  /// Gives up the narrowest notch of the front. False when the front is straight.
  bool fillNarrowestNotch();

  double height() const { return height_; }
  const std::vector<OutlinePoint>& points() const { return points_; }

 private:
  bool isCorner(std::size_t i) const;
  void simplify(std::size_t around);

  double height_, length_;
  OutlineSpacing spacing_;
  std::vector<OutlinePoint> points_;
  std::size_t first_ = 0;  ///< of the present sheet
  int sheets_ = 0;
};

/// A rectangle as HP-GL text in the debug colour, corner by corner.
std::string hpglRectangle(double x0, double y0, double x1, double y1);

}  // namespace mek::nest
