#include "host/lettering/paragraph.h"

#include <algorithm>
#include <cmath>

#include "host/lettering/internal/mtext_codes.h"

namespace {

using kvlt::Align;
using kvlt::CharFormat;
using kvlt::ParagraphFormat;
using kvlt::Token;

constexpr double kLinePitch = 5.0 / 3;  // of the greatest height in a line
constexpr double kStackHeight = 0.7;    // of the text around
constexpr double kStackGap = 0.15;      // between the parts and the bar, of the text around
constexpr double kStackBar = 0.06;      // thickness
constexpr double kTabStop = 4;          // of the text's height, where no tabs are set

/// Signs that may not begin a line, and those that may not end one.
constexpr std::wstring_view kNeverFirst = L"、。，．・：；？！）］｝〕〉》」』】”’…—ー々,.;:!?)]}";
constexpr std::wstring_view kNeverLast = L"（［｛〔〈《「『【“‘([{";

/// A token in its line.
struct Piece {
  const Token* token;
  double width = 0, height = 0;  // capitals' height of its look
  double x = 0;
};

struct Line {
  std::vector<Piece> pieces;
  double width = 0;  // without trailing blanks
  double ascent = 0, descent = 0;
  double greatest = 0;  // height of letters
  const ParagraphFormat* format = nullptr;
  double indent = 0;
  bool beginsColumn = false;
  int column = 0;
};

class Layout {
 public:
  Layout(const KvLtParagraphLook& look, const kvlt::Tokens& tokens) : look_(look), tokens_(tokens) {
    baseHeight_ = std::isfinite(look.look.height) && look.look.height > 0 ? look.look.height : 1;
    const double width = hasColumns() ? look.columns.width : look.width;
    limit_ = std::isfinite(width) && width > 0 ? width : 0;
    const bool isSpacingGood = std::isfinite(look.lineSpacing) && look.lineSpacing > 0;
    spacing_ = isSpacingGood ? look.lineSpacing : 1;
  }

  KvLtParagraphs run() {
    breakLines();
    placeLines();
    return std::move(out_);
  }

 private:
  const CharFormat& formatOf(const Token& token) const { return tokens_.formats[token.format]; }
  const ParagraphFormat& paragraphOf(const Token& token) const { return tokens_.paragraphs[token.paragraph]; }

  double measure(const KvGiTextLook& look, const std::wstring& text) const {
    const KvLtLine line = kvltMeasureLine(look, text);
    return line.advance;
  }
  KvGiTextLook stackLook(const Token& token) const {
    KvGiTextLook look = formatOf(token).look;
    look.height *= kStackHeight;
    return look;
  }
  Piece pieceOf(const Token& token) const {
    Piece piece{&token};
    const KvGiTextLook& look = formatOf(token).look;
    piece.height = std::fabs(look.height);
    if (token.kind == Token::kStack) {
      const KvGiTextLook part = stackLook(token);
      const double upper = measure(part, token.text), lower = measure(part, token.lower);
      piece.width =
          token.divider == L'#' ? upper + lower + part.height * kStackHeight : std::max(upper, lower);
    } else if (token.kind != Token::kTab) {
      piece.width = measure(look, token.text);
    }
    return piece;
  }

  // --- Breaking

  void breakLines() {
    startLine(tokens_.tokens.empty() ? nullptr : &tokens_.tokens.front(), true);
    for (std::size_t i = 0; i < tokens_.tokens.size(); ++i) {
      const Token& token = tokens_.tokens[i];
      if (token.kind == Token::kParagraph || token.kind == Token::kColumn) {
        noteHeight(lines_.back(), std::fabs(formatOf(token).look.height));
        startLine(i + 1 < tokens_.tokens.size() ? &tokens_.tokens[i + 1] : &token, true);
        lines_.back().beginsColumn = token.kind == Token::kColumn;
        continue;
      }
      if (token.kind == Token::kBlank || token.kind == Token::kTab) {
        append(pieceOf(token));
        continue;
      }
      i = appendUnit(i);
    }
  }

  /// What can't be torn apart: neighbouring texts without a blank between, up to a place where a line may
  /// break. The index of its last token.
  std::size_t appendUnit(std::size_t first) {
    std::vector<Piece> unit;
    double width = 0;
    std::size_t i = first;
    for (;; ++i) {
      unit.push_back(pieceOf(tokens_.tokens[i]));
      width += unit.back().width;
      if (i + 1 >= tokens_.tokens.size() || mayBreakBetween(tokens_.tokens[i], tokens_.tokens[i + 1])) break;
    }
    const bool isTooLong = limit_ > 0 && x_ + width > lineLimit() * (1 + 1e-9);
    if (isTooLong && !lines_.back().pieces.empty()) startLine(&tokens_.tokens[first], false);
    for (const Piece& piece : unit) append(piece);
    return i;
  }
  static bool mayBreakBetween(const Token& before, const Token& after) {
    const auto isText = [](const Token& t) { return t.kind == Token::kText || t.kind == Token::kStack; };
    if (!isText(after)) return true;
    if (before.kind != Token::kText || after.kind != Token::kText || before.text.empty() ||
        after.text.empty())
      return false;
    const wchar_t last = before.text.back(), first = after.text.front();
    if (kNeverLast.find(last) != kNeverLast.npos || kNeverFirst.find(first) != kNeverFirst.npos) return false;
    return kvltIsIdeographic(static_cast<char32_t>(last)) || kvltIsIdeographic(static_cast<char32_t>(first));
  }

  double lineLimit() const {
    const double right = lines_.back().format ? lines_.back().format->rightIndent * baseHeight_ : 0;
    return std::max(limit_ - right, 0.0);
  }
  void startLine(const Token* next, bool isFirstOfParagraph) {
    Line line;
    line.format = next ? &paragraphOf(*next) : &tokens_.paragraphs.front();
    const double indent = line.format->leftIndent + (isFirstOfParagraph ? line.format->firstIndent : 0);
    line.indent = std::max(indent * baseHeight_, 0.0);
    x_ = line.indent;
    lines_.push_back(std::move(line));
  }
  static void noteHeight(Line& line, double height) {
    line.greatest = std::max(line.greatest, height);
    line.ascent = std::max(line.ascent, height);
  }
  void append(Piece piece) {
    Line& line = lines_.back();
    if (piece.token->kind == Token::kTab) piece.width = nextTab() - x_;
    piece.x = x_;
    x_ += piece.width;
    noteHeight(line, piece.height);
    if (piece.token->kind == Token::kStack) {
      const double part = piece.height * kStackHeight, middle = piece.height / 2;
      const double gap = piece.height * kStackGap;
      line.ascent = std::max(line.ascent, middle + gap + part);
      line.descent = std::max(line.descent, part + gap - middle);
    }
    if (piece.token->kind != Token::kBlank && piece.token->kind != Token::kTab) line.width = x_;
    line.pieces.push_back(piece);
  }
  double nextTab() const {
    if (lines_.back().format)
      for (double tab : lines_.back().format->tabs)
        if (tab * baseHeight_ > x_ * (1 + 1e-9)) return tab * baseHeight_;
    const double stop = kTabStop * baseHeight_;
    return (std::floor(x_ / stop * (1 + 1e-12)) + 1) * stop;
  }

  // --- Placing

  bool hasColumns() const { return look_.columns.isOn() && std::isfinite(look_.columns.width); }
  double columnHeight(int column) const {
    const std::vector<double>& heights = look_.columns.heights;
    if (heights.empty()) return 0;
    const double height = heights[std::min(static_cast<std::size_t>(column), heights.size() - 1)];
    return std::isfinite(height) && height > 0 ? height : 0;
  }
  /// Whether a line whose base line would lie at `y` goes to the top of the next column.
  bool startsColumn(const Line& line, double y, int column) const {
    if (!hasColumns() || (look_.columns.most > 0 && column + 1 >= look_.columns.most)) return false;
    const double height = columnHeight(column);
    return line.beginsColumn || (height > 0 && line.descent - y > height * (1 + 1e-9));
  }
  double columnStep() const {
    return limit_ + (std::isfinite(look_.columns.gutter) ? std::max(look_.columns.gutter, 0.0) : 0);
  }

  void placeLines() {
    // Lines behind the last paragraph mark that hold nothing still count: they were asked for.
    double y = 0, before = 0, lowest = 0;
    int column = 0;
    std::vector<double> baseLines;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      Line& line = lines_[i];
      if (line.greatest == 0) noteHeight(line, heightAround(i));
      const double below = y - pitch(line, before);
      const bool isNext = i > 0 && startsColumn(line, below, column);
      if (isNext) ++column;
      y = i == 0 || isNext ? -line.ascent : below;
      line.column = column;
      before = line.descent;
      baseLines.push_back(y);
      lowest = std::min(lowest, y - before);
      out_.actualWidth = std::max(out_.actualWidth, line.width);
    }
    out_.lines = static_cast<int>(lines_.size());
    out_.actualHeight = hasColumns() ? -lowest : -(y - before);
    out_.columns = look_.columns.isFixed ? std::max(column + 1, look_.columns.most) : column + 1;
    // With a paragraph aligned otherwise, or indents, the lines' box is the given width.
    const int across = (std::clamp(look_.attachment, 1, 9) - 1) % 3,
              row = (std::clamp(look_.attachment, 1, 9) - 1) / 3;
    const double boxWidth = std::max(limit_, out_.actualWidth);
    const double wholeWidth = hasColumns() ? columnStep() * (out_.columns - 1) + limit_ : boxWidth;
    const double left = -wholeWidth * across / 2, top = out_.actualHeight * row / 2;
    if (hasColumns()) out_.actualWidth = wholeWidth;
    double low = 1e300, high = -1e300;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const int place = look_.columns.isReversed ? out_.columns - 1 - lines_[i].column : lines_[i].column;
      const double start = left + shift(lines_[i], across, boxWidth) + (place > 0 ? place * columnStep() : 0);
      placePieces(lines_[i], static_cast<int>(i), start, top + baseLines[i]);
      if (lines_[i].pieces.empty()) continue;
      low = std::min(low, start + lines_[i].indent);
      high = std::max(high, start + lines_[i].width);
    }
    if (low > high) low = high = left;
    out_.low = {low, top - out_.actualHeight};
    out_.high = {high, top};
  }
  double heightAround(std::size_t line) const { return line > 0 ? lines_[line - 1].greatest : baseHeight_; }
  double pitch(const Line& line, double descentBefore) const {
    if (look_.isSpacingExact) return kLinePitch * spacing_ * baseHeight_;
    const double plain = kLinePitch * spacing_ * line.greatest;
    // Fractions need room, whatever the spacing.
    const double overhang = line.ascent - line.greatest + descentBefore;
    return plain + overhang;
  }
  double shift(const Line& line, int column, double boxWidth) const {
    Align align = line.format ? line.format->align : Align::Default;
    if (align == Align::Default)
      align = column == 0 ? Align::Left : column == 1 ? Align::Center : Align::Right;
    const double right = line.format ? line.format->rightIndent * baseHeight_ : 0;
    const double room = boxWidth - right - line.width;
    if (align == Align::Left) return 0;
    return align == Align::Center ? room / 2 - line.indent / 2 : room;
  }

  void placePieces(const Line& line, int index, double start, double baseLine) {
    for (const Piece& piece : line.pieces) {
      const Token& token = *piece.token;
      const CharFormat& format = formatOf(token);
      if (token.kind == Token::kTab) continue;
      // Smaller letters may stand at the middle or the top of the line.
      const double y = baseLine + (line.greatest - piece.height) * format.lineAlign / 2;
      if (token.kind == Token::kStack)
        placeStack(piece, index, {start + piece.x, y});
      else
        addRun(format.look, token.text, {start + piece.x, y}, piece.width, format, index, &token);
    }
  }
  void addRun(const KvGiTextLook& look, const std::wstring& text, KvGePoint2d at, double width,
              const CharFormat& format, int line, const Token* token) {
    if (text.empty()) return;
    const bool isMarked = look.isUnderlined || look.isOverlined || look.isStruck;
    const bool isBlank = token && token->kind == Token::kBlank;
    // Neighbours of one look make one run.
    if (token && !out_.runs.empty() && lastFormat_ == token->format && out_.runs.back().line == line &&
        std::fabs(out_.runs.back().at.x + out_.runs.back().width - at.x) <= 1e-9 * (1 + std::fabs(at.x))) {
      out_.runs.back().text += text;
      out_.runs.back().width += width;
      return;
    }
    if (isBlank && !isMarked) return;
    out_.runs.push_back({look, text, at, width, format.colorIndex, format.rgb, line});
    lastFormat_ = token ? token->format : static_cast<std::size_t>(-1);
  }
  void placeStack(const Piece& piece, int line, KvGePoint2d at) {
    const Token& token = *piece.token;
    const CharFormat& format = formatOf(token);
    const KvGiTextLook look = stackLook(token);
    const double upper = measure(look, token.text), lower = measure(look, token.lower);
    const double h = piece.height, part = look.height, gap = h * kStackGap;
    const auto addBar = [&](KvGePoint2d from, KvGePoint2d to) {
      out_.bars.push_back({{from, to, h * kStackBar}, format.colorIndex, format.rgb});
    };
    const auto put = [&](const std::wstring& text, KvGePoint2d place, double width) {
      addRun(look, text, place, width, format, line, nullptr);
    };
    if (token.divider == L'#') {
      put(token.text, {at.x, at.y + h - part}, upper);
      put(token.lower, {at.x + piece.width - lower, at.y - h * (1 - kStackHeight) / 2}, lower);
      addBar({at.x + upper, at.y - h * 0.1}, {at.x + piece.width - lower, at.y + h * 1.1});
      return;
    }
    // Tolerances stand at the left, fractions in the middle.
    const double share = token.divider == L'^' ? 0 : 0.5;
    put(token.text, {at.x + (piece.width - upper) * share, at.y + h / 2 + gap}, upper);
    put(token.lower, {at.x + (piece.width - lower) * share, at.y + h / 2 - gap - part}, lower);
    if (token.divider == L'/') addBar({at.x, at.y + h / 2}, {at.x + piece.width, at.y + h / 2});
  }

  const KvLtParagraphLook& look_;
  const kvlt::Tokens& tokens_;
  double baseHeight_, limit_, spacing_;
  std::vector<Line> lines_;
  double x_ = 0;
  std::size_t lastFormat_ = static_cast<std::size_t>(-1);
  KvLtParagraphs out_;
};

}  // namespace

KvLtParagraphs kvltLayParagraphs(const KvLtParagraphLook& look, std::wstring_view contents) {
  const kvlt::Tokens tokens = kvlt::readCodes(look.look, contents);
  return Layout(look, tokens).run();
}
