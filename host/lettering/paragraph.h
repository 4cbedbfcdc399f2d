#pragma once
// Paragraph text: inline codes, lines broken to a width, stacked fractions, its size.
//
// Codes (case counts): `\P` new paragraph, `\N` new column (a new paragraph where there are none), `\X` new
// paragraph as well,
// `\~` blank that doesn't break, `\\ \{ \}`, braces that keep changes inside, `\A0;` to `\A2;` alignment to
// the line, `\C` colour of the table, `\c` colour as blue-green-red number, `\F` and `\f` font, `\H` height
// (`x` behind it: times the present one), `\W` width factor, `\Q` slope in degrees, `\T` tracking, `\L \l`
// underline on and off, `\O \o` overline, `\K \k` strike, `\S` stack (`/`, `#` or `^` between the parts),
// `\p` indents, alignment and tabs, `^I` tab, `^J` new line, `^M` nothing, `%%` and `\U+` codes as in a line.
// A code that isn't one, or isn't finished, stays as letters.
#include <string_view>
#include <vector>

#include "host/lettering/line.h"

/// Side by side, filled from the left (reversed: from the right).
struct KvLtColumns {
  int most = 0;          ///< no more than these, the last one takes the rest; 0: as many as are needed
  bool isFixed = false;  ///< there are `most` of them, filled or not
  double width = 0, gutter = 0;
  std::vector<double> heights;  ///< of one after the other, the last one's for all behind it; 0: no limit
  bool isReversed = false;
  bool isOn() const { return width > 0; }
};

/// How paragraph text is laid.
struct KvLtParagraphLook {
  KvGiTextLook look;   ///< height, width factor and slope are the beginning's
  double width = 0;    ///< where lines are broken; 0 or below: nowhere
  int attachment = 1;  ///< 1 to 9: top left, top centre, ... bottom right
  double lineSpacing = 1;
  bool isSpacingExact = false;
  KvLtColumns columns;  ///< when on, lines are broken at a column's width
};

/// A stretch of one look in one line.
struct KvLtRun {
  KvGiTextLook look;  ///< with the text raw: its codes are resolved
  std::wstring text;
  KvGePoint2d at;  ///< the base line's start, from the attachment point
  double width = 0;
  int colorIndex = -1;    ///< 0 to 256, or -1 as the text itself
  std::int64_t rgb = -1;  ///< 0xRRGGBB; before the index
  int line = 0;           ///< from 0
};

struct KvLtParagraphs {
  std::vector<KvLtRun> runs;
  struct Bar {
    KvLtBar bar;  ///< of a fraction
    int colorIndex = -1;
    std::int64_t rgb = -1;
  };
  std::vector<Bar> bars;
  /// The longest line, trailing blanks left out; from the top of the first line's capitals to the last base
  /// line (or what reaches lower than it, of fractions).
  double actualWidth = 0, actualHeight = 0;
  /// The box of that size, from the attachment point.
  KvGePoint2d low, high;
  int lines = 0;
  int columns = 1;
};

KvLtParagraphs kvltLayParagraphs(const KvLtParagraphLook& look, std::wstring_view contents);

/// The text without its codes; paragraphs end in line feeds, stacks read `upper/lower`.
std::wstring kvltPlainText(std::wstring_view contents);
