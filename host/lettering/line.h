#pragma once
// One line of text: control codes, glyphs in their places, its size.
//
// Coordinates: the base line's start at 0, x along the line, lengths in the units of the look's height.
#include <string>
#include <vector>

#include "host/geometry/box.h"
#include "host/lettering/font.h"

struct KvLtPlacedGlyph {
  const KvLtGlyph* glyph = nullptr;
  KvGePoint2d at;
  double xScale = 1, yScale = 1;
  double slant = 0;  ///< x grows by slant times y
  double bold = 0;   ///< width of a pen that thickens the outline, in the glyph's own unit
  KvGePoint2d map(KvGePoint2d p) const {
    return {at.x + p.x * xScale + p.y * yScale * slant, at.y + p.y * yScale};
  }
};

/// A stroke under, over or through letters.
struct KvLtBar {
  KvGePoint2d from, to;
  double thickness = 0;
};

struct KvLtLine {
  std::vector<KvLtPlacedGlyph> glyphs;  ///< blanks left out
  std::vector<KvLtBar> bars;
  double advance = 0;  ///< from the start to where a next letter would stand
  KvGeBox3d box;       ///< of the outlines; empty when there are none
  /// From the start to the right edge, trailing blanks counted. 0 for an empty text.
  double width() const;
};

/// A text with its codes resolved: `%%c %%d %%p %%nnn %%%`, `\U+XXXX`, `\M+nXXXX`; and the stretches that
/// `%%u`, `%%o`, `%%k` mark. A code that isn't one stays as letters.
struct KvLtDecoded {
  enum Mark : unsigned char { kUnder = 1, kOver = 2, kStruck = 4 };
  std::wstring text;
  std::vector<unsigned char> marks;  ///< one for each character; empty when none is marked
};
KvLtDecoded kvltDecode(std::wstring_view text);

/// Width factor, slope, tracking, backward and upside down are in it. Damaged numbers of a look (not finite,
/// a height or factor of 0) count as 1 or 0.
KvLtLine kvltLayLine(const KvGiTextLook& look, std::wstring_view text);
/// The same without the glyphs: only advance, box and bars.
KvLtLine kvltMeasureLine(const KvGiTextLook& look, std::wstring_view text);

/// The glyph of a character in a font, with the scale that makes it fit: the face's own, else the other
/// face's, else a box.
struct KvLtChoice {
  const KvLtGlyph* glyph;
  double scale, widthFactor;
};
KvLtChoice kvltChoose(const KvLtFont& font, char32_t character);

/// The outlines of a placed glyph as closed polygons (its strokes as open ones), none farther than
/// `deviation` from the curves. Appends.
void kvltFlatten(const KvLtPlacedGlyph& placed, double deviation, std::vector<KvGePoint2d>& points,
                 std::vector<int>& counts);
