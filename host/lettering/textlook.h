#pragma once
// What a text looks like, by value.
#include <filesystem>
#include <memory>

#include "platform/text/cstring.h"

/// Fonts as a text style names them, and what is done to their letters. Lengths are in the units of the text.
struct KvGiTextLook {
  CString fontFile, bigFontFile, typeface;  ///< all empty: the standard lettering
  /// Where stroke fonts are looked for first; may be null.
  std::shared_ptr<const std::filesystem::path> fontFolder;
  double height = 1;  ///< of capitals
  double widthFactor = 1;
  double oblique = 0;  ///< radians, clockwise from upright
  double trackingFactor = 1;
  bool isBackward = false, isUpsideDown = false, isVertical = false;
  bool isBold = false, isItalic = false;
  bool isUnderlined = false, isOverlined = false, isStruck = false;
  bool isRaw = false;  ///< percent signs and backslashes are letters like others
};
