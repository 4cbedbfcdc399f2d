#pragma once
// Shape files: signs, and letters, of strokes.
//
// A file is compiled (`.shx`: plain shapes, a font by character code, or a "big font" of two-byte codes) or a
// text (`.shp`); which one it is its content tells. A shape is a row of bytes that move a pen: a byte of two
// digits is a stroke (length, one of 16 directions), 0 to 14 are orders with bytes behind them:
//
//   0 end   1 pen down   2 pen up   3 n divide lengths   4 n multiply them   5 keep the place   6 back to it
//   7 another shape   8 x y step   9 x y ... 0 0 steps   10 r s octants of an arc
//   11 a b R r s arc with ends between octants   12 x y b step with a bulge   13 ... the same till 0 0
//   14 the next order counts in vertical writing only
//
// A font's number 0 tells how far its capitals reach above the base line. Main thread only.
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/lettering/font.h"

struct KvLtShape {
  int number = 0;  ///< 1 to 65535
  std::string name;
  std::vector<std::uint8_t> code;
};

/// Where a file can't be read, and why.
struct KvLtShapeError {
  int line = 0;            ///< of a text, from 1; 0 in compiled files
  std::size_t offset = 0;  ///< in compiled files, bytes from the beginning
  std::string text;
  std::string describe() const;
};

class KvLtShapeFile {
 public:
  enum class Kind { Shapes, Unicode, BigFont };

  Kind kind() const { return kind_; }
  /// Holds letters; else signs that are drawn in their own unit.
  bool isFont() const { return above_ > 0; }
  double above() const { return above_; }
  double below() const { return below_; }
  const std::string& name() const { return name_; }  ///< of a font
  /// By number.
  const std::map<int, KvLtShape>& shapes() const { return shapes_; }
  const KvLtShape* find(int number) const;
  /// Without regard to case.
  const KvLtShape* find(std::string_view name) const;
  /// The strokes of a shape: of fonts in units of a capital's height, else in the file's own. The advance is
  /// where the pen ends. Blank for a number that isn't there. It stays as long as the file.
  const KvLtGlyph& glyph(int number) const;
  /// Of a big font: the first bytes of two-byte codes, as ranges.
  const std::vector<std::pair<int, int>>& leadBytes() const { return leadBytes_; }

 private:
  friend class KvLtShapeReader;
  friend class KvLtShapeSource;
  Kind kind_ = Kind::Shapes;
  std::string name_;
  double above_ = 0, below_ = 0;
  int modes_ = 0;
  double cellWidth_ = 0;  // of big fonts whose signs are made of parts
  std::vector<std::pair<int, int>> leadBytes_;
  std::map<int, KvLtShape> shapes_;
  mutable std::map<int, std::unique_ptr<KvLtGlyph>> glyphs_;

  friend std::string kvltCompileShapes(const KvLtShapeFile&);
  friend void kvltTraceShape(const KvLtShapeFile&, int, KvLtGlyph&);
};

/// A file's bytes. Null, with the reason, for what is no shape file or is damaged.
std::unique_ptr<KvLtShapeFile> kvltParseShapes(std::string_view bytes, KvLtShapeError& error);
/// As a compiled file of the same kind. Empty for big fonts, which aren't written, and for shapes of more
/// than 65,535 bytes.
std::string kvltCompileShapes(const KvLtShapeFile& file);

/// The shape file of a name as drawings give it, with or without an ending: beside the drawing (`folder`, may
/// be null), in the folders of `KORVANE_FONT_PATH`, in the product's own fonts; a compiled file first, then
/// its text. Each file is read once in a process. Null when there is none, or it can't be read.
const KvLtShapeFile* kvltFindShapes(std::wstring_view name, const std::filesystem::path* folder);

/// What is to be said once about shape files that can't be read; empty when all is well or it was said.
std::string kvltTakeShapeWarning();
