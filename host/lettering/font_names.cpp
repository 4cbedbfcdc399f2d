// What the fonts of other programs stand for.
#include <algorithm>

#include "host/lettering/shapes.h"

namespace {

struct FontName {
  const wchar_t* name;
  KvLtFaceKind face;
  double widthFactor, slant;
};

constexpr double kUpright = 0;
constexpr double kSlope15 = 0.2679491924311227;  // tangent of 15 degrees
constexpr double kItalic = 0.2125565616700221;   // tangent of 12 degrees

// Widths: advance of a capital H of the named font over that of the standing-in face.
constexpr FontName kNames[] = {
    {L"arial", KvLtFaceKind::Sans, 0.98, kUpright},
    {L"calibri", KvLtFaceKind::Sans, 0.94, kUpright},
    {L"complex", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"courier", KvLtFaceKind::Sans, 1.02, kUpright},
    {L"fangsong", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"gbcbig", KvLtFaceKind::Technical, 1, kUpright},
    {L"gbeitc", KvLtFaceKind::Technical, 0.95, kSlope15},
    {L"gbenor", KvLtFaceKind::Technical, 0.95, kUpright},
    {L"gdt", KvLtFaceKind::Technical, 1, kUpright},
    {L"hztxt", KvLtFaceKind::Technical, 1, kUpright},
    {L"iso", KvLtFaceKind::Technical, 1, kUpright},
    {L"iso3098", KvLtFaceKind::Technical, 1, kUpright},
    {L"isocp", KvLtFaceKind::Technical, 1, kUpright},
    {L"isocp2", KvLtFaceKind::Technical, 1, kUpright},
    {L"isocpeur", KvLtFaceKind::Technical, 1, kUpright},
    {L"isocteur", KvLtFaceKind::Technical, 1, kUpright},
    {L"italic", KvLtFaceKind::Technical, 1.3, kSlope15},
    {L"italicc", KvLtFaceKind::Technical, 1.3, kSlope15},
    {L"italict", KvLtFaceKind::Technical, 1.3, kSlope15},
    {L"kaiti", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"microsoft yahei", KvLtFaceKind::Sans, 1, kUpright},
    {L"monotxt", KvLtFaceKind::Technical, 1.25, kUpright},
    {L"msgothic", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"osifont", KvLtFaceKind::Technical, 1, kUpright},
    {L"romanc", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"romand", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"romans", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"romant", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"simhei", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"simplex", KvLtFaceKind::Technical, 1.3, kUpright},
    {L"simsun", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"standard", KvLtFaceKind::Technical, 1, kUpright},
    {L"tahoma", KvLtFaceKind::Sans, 1, kUpright},
    {L"times", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"times new roman", KvLtFaceKind::Sans, 0.95, kUpright},
    {L"txt", KvLtFaceKind::Technical, 1.25, kUpright},
    {L"verdana", KvLtFaceKind::Sans, 1.1, kUpright},
    {L"wqy-microhei", KvLtFaceKind::Sans, 1, kUpright},
};

struct Name {
  std::wstring base;
  bool isOutlineFont = false;
};

Name nameOf(std::wstring_view file) {
  if (const std::size_t slash = file.find_last_of(L"\\/"); slash != file.npos) file.remove_prefix(slash + 1);
  if (!file.empty() && file.front() == L'@') file.remove_prefix(1);  // turned signs of vertical writing
  Name name;
  if (const std::size_t dot = file.rfind(L'.'); dot != file.npos) {
    for (const wchar_t* extension : {L".ttf", L".ttc", L".otf"})
      name.isOutlineFont = name.isOutlineFont || platform::equalNoCase(file.substr(dot), extension);
    file = file.substr(0, dot);
  }
  name.base = CString(file).MakeLower().str();
  return name;
}

/// Only files that hold letters.
const KvLtShapeFile* fontFileOf(const CString& name, const KvGiTextLook& look) {
  if (name.IsEmpty()) return nullptr;
  const KvLtShapeFile* file = kvltFindShapes(name.view(), look.fontFolder.get());
  return file && file->isFont() ? file : nullptr;
}

}  // namespace

KvLtFont kvltFontOf(const KvGiTextLook& look) {
  const bool isTypeface = !look.typeface.IsEmpty();
  Name name = nameOf(isTypeface ? look.typeface.view() : look.fontFile.view());
  const bool isOutlineFont = name.isOutlineFont || isTypeface;
  KvLtFont font;
  font.face = isOutlineFont ? KvLtFaceKind::Sans : KvLtFaceKind::Technical;
  const auto* found = std::lower_bound(std::begin(kNames), std::end(kNames), name.base,
                                       [](const FontName& a, const std::wstring& b) { return a.name < b; });
  if (found != std::end(kNames) && name.base == found->name) {
    font.face = found->face;
    font.widthFactor = found->widthFactor;
    font.slant = found->slant;
  }
  if (!isOutlineFont) {
    font.strokes = fontFileOf(look.fontFile, look);
    font.bigStrokes = fontFileOf(look.bigFontFile, look);
    if (font.strokes) font.slant = kUpright;
  }
  if (look.isItalic) font.slant += kItalic;
  // Stroke fonts draw their Chinese signs as high as their capitals; in outline fonts they are higher.
  constexpr double kStrokeFontIdeograph = 0.82;
  if (font.face == KvLtFaceKind::Technical) font.ideographScale = kStrokeFontIdeograph;
  return font;
}

bool kvltIsIdeographic(char32_t c) {
  return (c >= 0x1100 && c <= 0x11FF) || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
         (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFFEF) ||
         (c >= 0x20000 && c <= 0x3FFFF);
}
