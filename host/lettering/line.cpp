#include "host/lettering/line.h"

#include <algorithm>
#include <cmath>

#include "host/lettering/shapes.h"
#include "platform/text/codepage.h"

namespace {

constexpr double kBarThickness = 0.08;  // all in capitals' heights
/// No bold faces are at hand: letters are thickened by a stroke of this width.
constexpr double kBold = 0.07;
constexpr double kUnderline = -0.2, kOverline = 1.2, kStrike = 0.5;
/// Beyond this slope letters lie down.
constexpr double kSteepest = 1.4835298641951802;  // 85 degrees

double orElse(double value, double other) {
  return std::isfinite(value) && value != 0 ? value : other;
}

int hexDigits(std::wstring_view text, std::size_t at, std::size_t count) {
  if (at + count > text.size()) return -1;
  int value = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    const wchar_t c = text[i];
    const int digit = c >= L'0' && c <= L'9'   ? c - L'0'
                      : c >= L'A' && c <= L'F' ? c - L'A' + 10
                      : c >= L'a' && c <= L'f' ? c - L'a' + 10
                                               : -1;
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

/// `\U+XXXX` or `\M+nXXXX` at a place: the character and the code's length, or a length of 0.
std::size_t escapedCharacter(std::wstring_view text, std::size_t at, std::wstring& to) {
  constexpr std::uint32_t kPages[] = {932, 950, 949, 1361, 936};
  if (at + 2 >= text.size() || text[at + 2] != L'+') return 0;
  if (text[at + 1] == L'U' || text[at + 1] == L'u') {
    const int code = hexDigits(text, at + 3, 4);
    if (code <= 0) return 0;
    to += static_cast<wchar_t>(code);
    return 7;
  }
  if (text[at + 1] != L'M' || at + 3 >= text.size()) return 0;
  const int page = text[at + 3] - L'1', code = hexDigits(text, at + 4, 4);
  if (page < 0 || page >= static_cast<int>(std::size(kPages)) || code < 0) return 0;
  std::string bytes;
  if (code > 0xFF) bytes += static_cast<char>(code >> 8);
  bytes += static_cast<char>(code & 0xFF);
  to += platform::fromCodePage(bytes, kPages[page]);
  return 8;
}

class Decoder {
 public:
  explicit Decoder(std::wstring_view text) : text_(text) {}
  KvLtDecoded run() {
    while (at_ < text_.size()) {
      const std::size_t before = out_.text.size();
      if (!percentCode() && !backslashCode()) out_.text += text_[at_++];
      if (mark_ != 0 || !out_.marks.empty()) {
        out_.marks.resize(before, 0);
        out_.marks.resize(out_.text.size(), mark_);
      }
    }
    if (!out_.marks.empty()) out_.marks.resize(out_.text.size(), 0);
    return std::move(out_);
  }

 private:
  bool toggle(unsigned char mark) {
    mark_ = static_cast<unsigned char>(mark_ ^ mark);
    at_ += 3;
    return true;
  }
  bool put(wchar_t character) {
    out_.text += character;
    at_ += 3;
    return true;
  }
  bool percentCode() {
    if (text_[at_] != L'%' || at_ + 2 >= text_.size() || text_[at_ + 1] != L'%') return false;
    switch (text_[at_ + 2]) {
      case L'c':
      case L'C':
        return put(0x2300);
      case L'd':
      case L'D':
        return put(0xB0);
      case L'p':
      case L'P':
        return put(0xB1);
      case L'%':
        return put(L'%');
      case L'u':
      case L'U':
        return toggle(KvLtDecoded::kUnder);
      case L'o':
      case L'O':
        return toggle(KvLtDecoded::kOver);
      case L'k':
      case L'K':
        return toggle(KvLtDecoded::kStruck);
      default:
        return numbered();
    }
  }
  bool numbered() {
    // At most three digits: the number of a character.
    std::size_t end = at_ + 2;
    int code = 0;
    while (end < text_.size() && end < at_ + 5 && text_[end] >= L'0' && text_[end] <= L'9')
      code = code * 10 + (text_[end++] - L'0');
    if (end == at_ + 2 || code < ' ') return false;
    // The oldest fonts had their three special signs here.
    constexpr struct {
      int code;
      wchar_t sign;
    } kSpecial[] = {{127, 0xB0}, {128, 0xB1}, {129, 0x2300}};
    wchar_t sign = static_cast<wchar_t>(code);
    for (const auto& special : kSpecial)
      if (special.code == code) sign = special.sign;
    out_.text += sign;
    at_ = end;
    return true;
  }
  bool backslashCode() {
    if (text_[at_] != L'\\') return false;
    const std::size_t length = escapedCharacter(text_, at_, out_.text);
    at_ += length;
    return length > 0;
  }

  std::wstring_view text_;
  std::size_t at_ = 0;
  unsigned char mark_ = 0;
  KvLtDecoded out_;
};

/// Lays glyphs one behind the other.
class LineMaker {
 public:
  LineMaker(const KvGiTextLook& look, bool withGlyphs)
      : look_(look), font_(kvltFontOf(look)), withGlyphs_(withGlyphs) {
    height_ = std::fabs(orElse(look.height, 1));
    width_ = height_ * std::fabs(orElse(look.widthFactor, 1));
    const double oblique = std::isfinite(look.oblique) ? std::clamp(look.oblique, -kSteepest, kSteepest) : 0;
    slant_ = std::tan(oblique) + font_.slant;
    tracking_ = std::fabs(orElse(look.trackingFactor, 1));
  }

  void add(char32_t character, unsigned char marks) {
    if (character < ' ') return;
    const KvLtChoice choice = kvltChoose(font_, character);
    const double xScale = width_ * choice.scale * choice.widthFactor, yScale = height_ * choice.scale;
    const KvLtGlyph& glyph = *choice.glyph;
    if (look_.isVertical) {
      addVertical(glyph, xScale, yScale);
      return;
    }
    const double bold = look_.isBold && !glyph.isStroked ? kBold : 0;
    if (!glyph.isBlank())
      place({&glyph, {line_.advance + bold * xScale / 2, 0}, xScale, yScale, slant_, bold});
    const double step = (glyph.advance + bold) * xScale * tracking_;
    mark(marks, step);
    line_.advance += step;
  }

  KvLtLine finish() {
    if (look_.isBackward || look_.isUpsideDown) mirror();
    return std::move(line_);
  }

 private:
  void place(const KvLtPlacedGlyph& placed) {
    const KvGeVector2d pen(placed.bold / 2, placed.bold / 2);
    const KvGePoint2d low = placed.glyph->low - pen, high = placed.glyph->high + pen;
    for (KvGePoint2d corner : {low, high, KvGePoint2d(low.x, high.y), KvGePoint2d(high.x, low.y)}) {
      const KvGePoint2d p = placed.map(corner);
      line_.box.add({p.x, p.y, 0});
    }
    if (withGlyphs_) line_.glyphs.push_back(placed);
  }
  void addVertical(const KvLtGlyph& glyph, double xScale, double yScale) {
    constexpr double kLinePitch = 4.0 / 3;  // of the height
    if (!glyph.isBlank())
      place({&glyph, {-glyph.advance * xScale / 2, -down_ - height_}, xScale, yScale, slant_});
    down_ += height_ * kLinePitch;
    line_.advance = down_;
  }
  void mark(unsigned char marks, double step) {
    if (look_.isUnderlined) marks |= KvLtDecoded::kUnder;
    if (look_.isOverlined) marks |= KvLtDecoded::kOver;
    if (look_.isStruck) marks |= KvLtDecoded::kStruck;
    constexpr struct {
      unsigned char mark;
      double height;
    } kBars[] = {
        {KvLtDecoded::kUnder, kUnderline}, {KvLtDecoded::kOver, kOverline}, {KvLtDecoded::kStruck, kStrike}};
    for (const auto& bar : kBars) {
      if (!(marks & bar.mark)) continue;
      const double y = bar.height * height_;
      const KvGePoint2d from{line_.advance + y * slant_, y}, to{from.x + step, y};
      line_.box.add({from.x, from.y, 0});
      line_.box.add({to.x, to.y, 0});
      const auto before = std::find_if(line_.bars.rbegin(), line_.bars.rend(),
                                       [&](const KvLtBar& b) { return b.from.y == y; });
      if (before != line_.bars.rend() && std::fabs(before->to.x - from.x) <= 1e-9 * height_)
        before->to = to;
      else
        line_.bars.push_back({from, to, kBarThickness * height_});
    }
  }
  void mirror() {
    const double x = look_.isBackward ? -1 : 1, y = look_.isUpsideDown ? -1 : 1;
    const auto turned = [&](KvGePoint2d p) { return KvGePoint2d(p.x * x, p.y * y); };
    for (KvLtPlacedGlyph& g : line_.glyphs) {
      g.at = turned(g.at);
      g.xScale *= x;
      g.yScale *= y;
      g.slant *= x * y;
    }
    for (KvLtBar& bar : line_.bars) bar = {turned(bar.from), turned(bar.to), bar.thickness};
    if (line_.box.isEmpty()) return;
    const KvGePoint2d a = turned(kvge::planar(line_.box.low)), b = turned(kvge::planar(line_.box.high));
    line_.box = {};
    line_.box.add({a.x, a.y, 0});
    line_.box.add({b.x, b.y, 0});
  }

  const KvGiTextLook& look_;
  KvLtFont font_;
  bool withGlyphs_;
  double height_, width_, slant_, tracking_;
  double down_ = 0;
  KvLtLine line_;
};

KvLtLine makeLine(const KvGiTextLook& look, std::wstring_view text, bool withGlyphs) {
  LineMaker maker(look, withGlyphs);
  const bool isPlain = look.isRaw || (text.find(L'%') == text.npos && text.find(L'\\') == text.npos);
  if (isPlain) {
    for (wchar_t c : text) maker.add(static_cast<char32_t>(c), 0);
    return maker.finish();
  }
  const KvLtDecoded decoded = kvltDecode(text);
  for (std::size_t i = 0; i < decoded.text.size(); ++i)
    maker.add(static_cast<char32_t>(decoded.text[i]), decoded.marks.empty() ? 0 : decoded.marks[i]);
  return maker.finish();
}

void flattenCurve(const KvGePoint2d (&poles)[4], int degree, double deviation,
                  std::vector<KvGePoint2d>& points) {
  // The second differences bound how far the curve leaves a chord: |d2| degree (degree - 1) / 8 / n^2.
  double bend = 0;
  for (int i = 0; i + 2 <= degree; ++i) {
    const KvGeVector2d d = (poles[i + 2] - poles[i + 1]) - (poles[i + 1] - poles[i]);
    bend = std::max(bend, d.length());
  }
  const double wanted = std::sqrt(bend * degree * (degree - 1) / 8 / std::max(deviation, 1e-12));
  const int chords = static_cast<int>(std::clamp(std::ceil(wanted), 1.0, 32.0));
  for (int k = 1; k <= chords; ++k) {
    const double t = static_cast<double>(k) / chords, s = 1 - t;
    KvGePoint2d p;
    if (degree == 2) {
      p = {s * s * poles[0].x + 2 * s * t * poles[1].x + t * t * poles[2].x,
           s * s * poles[0].y + 2 * s * t * poles[1].y + t * t * poles[2].y};
    } else {
      const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
      p = {a * poles[0].x + b * poles[1].x + c * poles[2].x + d * poles[3].x,
           a * poles[0].y + b * poles[1].y + c * poles[2].y + d * poles[3].y};
    }
    points.push_back(p);
  }
}

}  // namespace

double KvLtLine::width() const {
  return box.isEmpty() ? std::fabs(advance) : std::max(advance, box.high.x);
}

KvLtDecoded kvltDecode(std::wstring_view text) {
  return Decoder(text).run();
}

KvLtLine kvltLayLine(const KvGiTextLook& look, std::wstring_view text) {
  return makeLine(look, text, true);
}
KvLtLine kvltMeasureLine(const KvGiTextLook& look, std::wstring_view text) {
  return makeLine(look, text, false);
}

namespace {

/// The number of a character in a stroke font; 0 where it has none.
int strokeNumber(const KvLtShapeFile& font, char32_t character) {
  constexpr char32_t kDiameter = 0x2300, kEmptySet = 0x2205, kDegree = 0xB0, kPlusMinus = 0xB1;
  if (character > 0xFFFF) return 0;
  if (font.kind() == KvLtShapeFile::Kind::Unicode) {
    // Fonts have the diameter under one of two signs.
    const bool isDiameter = character == kDiameter || character == kEmptySet;
    if (isDiameter && !font.find(static_cast<int>(character)))
      character = character == kDiameter ? kEmptySet : kDiameter;
    return static_cast<int>(character);
  }
  if (font.kind() == KvLtShapeFile::Kind::Shapes) {
    // Fonts of one byte have their special signs behind the letters.
    if (character == kDegree && font.find(127)) return 127;
    if (character == kPlusMinus && font.find(128)) return 128;
    if ((character == kDiameter || character == kEmptySet) && font.find(129)) return 129;
    if (character < 0x80) return static_cast<int>(character);
    constexpr std::uint32_t kWestern = 1252;
    bool isLossy = false;
    const std::string bytes =
        platform::toCodePage(std::wstring(1, static_cast<wchar_t>(character)), kWestern, &isLossy);
    return !isLossy && bytes.size() == 1 ? static_cast<unsigned char>(bytes[0]) : 0;
  }
  // Japanese fonts begin two-byte codes from 81 to 9F and from E0 on, Chinese ones in one range.
  constexpr std::uint32_t kChinese = 936, kJapanese = 932;
  constexpr int kJapaneseEnd = 0x9F;
  const auto& leads = font.leadBytes();
  const bool isJapanese = !leads.empty() && leads.front().second == kJapaneseEnd;
  bool isLossy = false;
  const std::string bytes = platform::toCodePage(std::wstring(1, static_cast<wchar_t>(character)),
                                                 isJapanese ? kJapanese : kChinese, &isLossy);
  if (isLossy || bytes.size() != 2) return 0;
  return static_cast<unsigned char>(bytes[0]) * 256 + static_cast<unsigned char>(bytes[1]);
}

const KvLtGlyph* strokedGlyph(const KvLtFont& font, char32_t character) {
  for (const KvLtShapeFile* file : {font.strokes, font.bigStrokes}) {
    const int number = file ? strokeNumber(*file, character) : 0;
    if (number > 0 && file->find(number)) return &file->glyph(number);
  }
  return nullptr;
}

}  // namespace

KvLtChoice kvltChoose(const KvLtFont& font, char32_t character) {
  if (font.strokes || font.bigStrokes)
    if (const KvLtGlyph* stroked = strokedGlyph(font, character)) return {stroked, 1, 1};
  KvLtFace& own = KvLtFace::of(font.face);
  const double ownWidth = font.widthFactor;
  constexpr char32_t kAlwaysOwn = 0x250;  // Latin, which both faces have
  if (!kvltIsIdeographic(character)) {
    if (character < kAlwaysOwn || own.has(character)) return {&own.glyph(character), 1, ownWidth};
    const auto otherKind =
        font.face == KvLtFaceKind::Technical ? KvLtFaceKind::Sans : KvLtFaceKind::Technical;
    KvLtFace& other = KvLtFace::of(otherKind);
    return {&(other.has(character) ? other : own).glyph(character), 1, ownWidth};
  }
  // Chinese signs have their own width in every style.
  return {&KvLtFace::of(KvLtFaceKind::Sans).glyph(character), font.ideographScale, 1};
}

void kvltFlatten(const KvLtPlacedGlyph& placed, double deviation, std::vector<KvGePoint2d>& points,
                 std::vector<int>& counts) {
  std::size_t start = points.size();
  const auto closeOutline = [&] {
    if (points.size() > start) counts.push_back(static_cast<int>(points.size() - start));
    start = points.size();
  };
  for (const KvLtSegment& segment : placed.glyph->outline) {
    switch (segment.kind) {
      case KvLtSegment::kMove:
        closeOutline();
        points.push_back(placed.map(segment.points[0]));
        break;
      case KvLtSegment::kLine:
        points.push_back(placed.map(segment.points[0]));
        break;
      default: {
        const int degree = segment.kind == KvLtSegment::kQuadratic ? 2 : 3;
        KvGePoint2d poles[4] = {points.back()};
        for (int i = 0; i < degree; ++i) poles[i + 1] = placed.map(segment.points[i]);
        flattenCurve(poles, degree, deviation, points);
      }
    }
  }
  closeOutline();
}
