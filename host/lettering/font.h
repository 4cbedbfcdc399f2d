#pragma once
// The fonts that drawings are lettered with, and the outlines of their glyphs.
//
// Two faces serve all drawings, so that a text has the same size on every machine: a technical lettering by
// ISO 3098 (osifont), and a face with the signs of Chinese, Japanese and Korean (WenQuanYi Micro Hei), which
// also stands in for what the first one lacks. Names of other fonts are mapped to them with a width factor.
// Outlines are unhinted, in units of the height of a capital letter, base line at y = 0. Main thread only.
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/geometry/point.h"
#include "host/lettering/textlook.h"

/// A piece of a glyph's outline. Outlines are closed, and filled by the even-odd or the winding rule alike.
struct KvLtSegment {
  enum Kind : unsigned char { kMove, kLine, kQuadratic, kCubic };
  Kind kind = kMove;
  KvGePoint2d points[3];  ///< the last one of those that the kind needs is the end
  KvGePoint2d end() const { return points[kind == kCubic ? 2 : kind == kQuadratic ? 1 : 0]; }
};

struct KvLtGlyph {
  double advance = 0;
  KvGePoint2d low, high;  ///< box of the outline; both 0 for a blank
  std::vector<KvLtSegment> outline;
  std::uint32_t serial = 0;  ///< tells glyphs of the process apart
  bool isStroked = false;    ///< the outline is a row of open strokes for a pen
  bool isBlank() const { return outline.empty(); }
};

class KvLtShapeFile;

enum class KvLtFaceKind : unsigned char { Technical, Sans };

/// One font file and the glyphs read from it so far.
class KvLtFace {
 public:
  ~KvLtFace();
  KvLtFace(const KvLtFace&) = delete;
  KvLtFace& operator=(const KvLtFace&) = delete;

  /// The face of a kind; read at its first use. Never fails: without its file every glyph is a box.
  static KvLtFace& of(KvLtFaceKind kind);
  /// False when the font file wasn't found or can't be read.
  bool isThere() const { return library_ != nullptr; }
  bool has(char32_t character);
  /// A box for a character that the face lacks. The glyph stays as long as the program runs.
  const KvLtGlyph& glyph(char32_t character);
  /// What is to be said once about font files that weren't found; empty when all is well or it was said.
  static std::string takeWarning();

 private:
  struct Library;
  explicit KvLtFace(KvLtFaceKind kind);
  void readGlyph(char32_t character, KvLtGlyph& glyph);

  std::unique_ptr<Library> library_;
  KvLtFaceKind kind_;
  double capital_ = 1;                   // height of a capital in the file's units
  std::vector<const KvLtGlyph*> early_;  // by character, the first few hundred
  std::unordered_map<char32_t, std::unique_ptr<KvLtGlyph>> glyphs_;
};

/// What a style's fonts stand for here.
struct KvLtFont {
  KvLtFaceKind face = KvLtFaceKind::Technical;
  double widthFactor = 1;
  double slant = 0;           ///< tangent
  double ideographScale = 1;  ///< of the signs of Chinese, Japanese and Korean against the face's own size
  /// The fonts themselves, where their files are there: what they have is taken from them.
  const KvLtShapeFile *strokes = nullptr, *bigStrokes = nullptr;
};
/// Names are compared without folder, extension and case; unknown ones get the standard lettering, and those
/// of outline fonts (.ttf, .ttc, .otf, or a typeface) the sans-serif face. A stroke font whose file is found
/// (kvltFindShapes) is itself.
KvLtFont kvltFontOf(const KvGiTextLook& look);

/// Whether a line may be broken before and behind the character as between Chinese signs.
bool kvltIsIdeographic(char32_t character);

/// Every place where font files are searched, in order: `KORVANE_FONT_PATH`, the product's own
/// share/korvane/fonts, the system's font folders.
std::vector<std::string> kvltFontFolders();
/// The first two kinds of them.
std::vector<std::string> kvltOwnFontFolders();
