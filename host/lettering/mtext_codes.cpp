#include "host/lettering/internal/mtext_codes.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

#include "host/geometry/tolerance.h"
#include "host/lettering/line.h"
#include "host/lettering/paragraph.h"

namespace kvlt {
namespace {

/// More braces than this inside each other are letters.
constexpr std::size_t kDeepest = 256;
/// Codes may multiply heights; beyond these bounds they don't.
constexpr double kLeastHeight = 1e-9, kGreatestHeight = 1e9;
constexpr double kLeastWidth = 0.1, kGreatestWidth = 10;
constexpr double kSteepest = 85;  // degrees
constexpr std::size_t kLongestArgument = 4096;

/// A number at the beginning of a text: digits, one point, a sign; nothing else of what the C library takes.
bool readNumber(std::wstring_view text, double& value, std::size_t* length = nullptr) {
  std::string digits;
  std::size_t at = 0;
  for (; at < text.size() && at < 64; ++at) {
    const wchar_t c = text[at];
    const bool isNumeric = (c >= L'0' && c <= L'9') || c == L'.' || ((c == L'-' || c == L'+') && at == 0);
    if (!isNumeric) break;
    digits += static_cast<char>(c);
  }
  // The C library's own reading depends on the locale's decimal sign; this one doesn't.
  double number = 0, share = 1;
  bool hasDigit = false, isFraction = false;
  for (char c : digits) {
    if (c == '.') {
      if (isFraction) return false;
      isFraction = true;
    } else if (c >= '0' && c <= '9') {
      hasDigit = true;
      number = number * 10 + (c - '0');
      if (isFraction) share *= 10;
    }
  }
  if (!hasDigit) return false;
  value = (digits[0] == '-' ? -number : number) / share;
  if (length) *length = at;
  return std::isfinite(value);
}

class Reader {
 public:
  Reader(const KvGiTextLook& look, std::wstring_view text) : text_(text) {
    now_.look = look;
    now_.look.isRaw = true;
    out_.formats.push_back(now_);
    out_.paragraphs.emplace_back();
  }

  Tokens run() {
    while (at_ < text_.size()) step();
    flush();
    return std::move(out_);
  }

 private:
  void step() {
    const wchar_t c = text_[at_];
    switch (c) {
      case L'\\':
        if (!code()) letter(text_[at_++]);
        return;
      case L'{':
        if (saved_.size() >= kDeepest) break;
        saved_.push_back(now_);
        ++at_;
        return;
      case L'}':
        ++at_;
        if (saved_.empty()) return;
        now_ = saved_.back();
        saved_.pop_back();
        isChanged_ = true;
        return;
      case L'^':
        if (caret()) return;
        break;
      case L'%':
        if (percent()) return;
        break;
      case L'\n':
        end(Token::kParagraph);
        ++at_;
        return;
      case L'\r':
        ++at_;
        return;
      case L'\t':
        end(Token::kTab);
        ++at_;
        return;
      default:
        break;
    }
    letter(c);
    ++at_;
  }

  void letter(wchar_t c) {
    if (c == L' ') {
      if (kind_ != Token::kBlank) flush();
      kind_ = Token::kBlank;
    } else {
      if (kind_ != Token::kText) flush();
      kind_ = Token::kText;
      // A word of one look; Chinese signs stand for themselves, as lines may break between them.
      if (kvltIsIdeographic(static_cast<char32_t>(c)) ||
          (!word_.empty() && kvltIsIdeographic(static_cast<char32_t>(word_.back()))))
        flush();
    }
    if (isChanged_) flush();
    word_ += c;
  }

  void flush() {
    if (!word_.empty()) {
      Token token;
      token.kind = kind_;
      token.text = std::move(word_);
      word_.clear();
      put(std::move(token));
    }
    kind_ = Token::kText;
    if (isChanged_) {
      out_.formats.push_back(now_);
      isChanged_ = false;
    }
  }
  void put(Token token) {
    token.format = out_.formats.size() - 1;
    token.paragraph = out_.paragraphs.size() - 1;
    out_.tokens.push_back(std::move(token));
  }
  void end(Token::Kind kind) {
    flush();
    Token token;
    token.kind = kind;
    put(std::move(token));
  }

  bool caret() {
    if (at_ + 1 >= text_.size()) return false;
    switch (text_[at_ + 1]) {
      case L'I':
        end(Token::kTab);
        break;
      case L'J':
        end(Token::kParagraph);
        break;
      case L'M':
        break;
      case L' ':
        letter(L'^');
        break;
      default:
        return false;
    }
    at_ += 2;
    return true;
  }

  /// `%%` codes that are a letter; the marks of a line have codes of their own here.
  bool percent() {
    if (at_ + 2 >= text_.size() || text_[at_ + 1] != L'%') return false;
    std::size_t length = 3;
    const auto isDigit = [&](std::size_t i) {
      return i < text_.size() && text_[i] >= L'0' && text_[i] <= L'9';
    };
    if (isDigit(at_ + 2))
      while (length < 5 && isDigit(at_ + length)) ++length;
    const KvLtDecoded decoded = kvltDecode(text_.substr(at_, length));
    if (decoded.text.size() != 1 || !decoded.marks.empty()) return false;
    letter(decoded.text[0]);
    at_ += length;
    return true;
  }

  /// The code behind a backslash; false when it is none, with nothing taken.
  bool code() {
    if (at_ + 1 >= text_.size()) return false;
    const wchar_t c = text_[at_ + 1];
    switch (c) {
      case L'P':
      case L'N':
      case L'X':
        end(c == L'N' ? Token::kColumn : Token::kParagraph);
        at_ += 2;
        return true;
      case L'~':
        return plain(0xA0);
      case L'\\':
      case L'{':
      case L'}':
        return plain(c);
      case L'L':
      case L'l':
        return mark(now_.look.isUnderlined, c == L'L');
      case L'O':
      case L'o':
        return mark(now_.look.isOverlined, c == L'O');
      case L'K':
      case L'k':
        return mark(now_.look.isStruck, c == L'K');
      case L'U':
      case L'M':
        return escaped();
      default:
        return withArgument(c);
    }
  }
  bool plain(wchar_t c) {
    if (kind_ != Token::kText || isChanged_) flush();
    kind_ = Token::kText;
    word_ += c;
    at_ += 2;
    return true;
  }
  bool mark(bool& flag, bool on) {
    flag = on;
    isChanged_ = true;
    at_ += 2;
    return true;
  }
  bool escaped() {
    const std::size_t length = text_[at_ + 1] == L'U' ? 7 : 8;
    if (at_ + length > text_.size()) return false;
    const KvLtDecoded decoded = kvltDecode(text_.substr(at_, length));
    if (decoded.text.size() != 1) return false;
    letter(decoded.text[0]);
    at_ += length;
    return true;
  }

  /// Codes that end in a semicolon.
  bool withArgument(wchar_t c) {
    if (std::wstring_view(L"ACcFfHWQTSp").find(c) == std::wstring_view::npos) return false;
    // The next semicolon is looked for once, however many codes wait for it.
    const std::size_t start = at_ + 2;
    if (semicolon_ < start) semicolon_ = text_.find(L';', start);
    std::size_t end = semicolon_;
    if (end == text_.npos || end - start > kLongestArgument) return false;
    if (c == L'S') {
      // A stack may hold an escaped semicolon.
      for (end = start; end < text_.size() && text_[end] != L';';) end += text_[end] == L'\\' ? 2u : 1u;
      if (end >= text_.size() || end - start > kLongestArgument) return false;
    }
    const std::wstring_view argument = text_.substr(at_ + 2, end - at_ - 2);
    if (!apply(c, argument)) return false;
    at_ = end + 1;
    return true;
  }

  bool apply(wchar_t c, std::wstring_view argument) {
    double value = 0;
    std::size_t length = 0;
    const bool isNumber = readNumber(argument, value, &length);
    CharFormat fresh = now_;
    switch (c) {
      case L'A':
        if (!isNumber) return false;
        fresh.lineAlign = static_cast<int>(std::clamp(value, 0.0, 2.0));
        break;
      case L'C':
        if (!isNumber || value < 0 || value > 256) return false;
        fresh.colorIndex = static_cast<int>(value);
        fresh.rgb = -1;
        break;
      case L'c': {
        if (!isNumber || value < 0 || value > 0xFFFFFF) return false;
        const auto bgr = static_cast<std::int64_t>(value);
        fresh.rgb = ((bgr & 0xFF) << 16) | (bgr & 0xFF00) | ((bgr >> 16) & 0xFF);
        break;
      }
      case L'F':
      case L'f':
        font(fresh.look, argument);
        break;
      case L'H': {
        if (!isNumber || !(value > 0)) return false;
        const bool isFactor =
            length < argument.size() && (argument[length] == L'x' || argument[length] == L'X');
        fresh.look.height =
            std::clamp(isFactor ? fresh.look.height * value : value, kLeastHeight, kGreatestHeight);
        break;
      }
      case L'W':
        if (!isNumber || !(value > 0)) return false;
        fresh.look.widthFactor = value;
        break;
      case L'Q':
        if (!isNumber) return false;
        fresh.look.oblique = std::clamp(value, -kSteepest, kSteepest) * kvge::kPi / 180;
        break;
      case L'T':
        if (!isNumber || !(value > 0)) return false;
        fresh.look.trackingFactor = std::clamp(value, kLeastWidth, kGreatestWidth);
        break;
      case L'p':
        paragraph(argument);
        return true;
      default:
        stack(argument);
        return true;
    }
    now_ = std::move(fresh);
    isChanged_ = true;
    return true;
  }

  /// `name|b0|i0|c134|p2` of an outline font, or `file[,bigfont]`.
  void font(KvGiTextLook& look, std::wstring_view argument) {
    const std::size_t bar = argument.find(L'|');
    std::wstring_view name = argument.substr(0, bar);
    look.isBold = argument.find(L"|b1") != argument.npos;
    look.isItalic = argument.find(L"|i1") != argument.npos;
    look.bigFontFile.Empty();
    if (const std::size_t comma = name.find(L','); comma != name.npos) {
      look.bigFontFile = CString(name.substr(comma + 1));
      name = name.substr(0, comma);
    }
    const bool isFile = name.find(L'.') != name.npos || bar == argument.npos;
    look.fontFile = isFile ? CString(name) : CString();
    look.typeface = isFile ? CString() : CString(name);
  }

  /// `xqc,i1.5,l2,r0,t4,8`: alignment, indents, tabs.
  void paragraph(std::wstring_view argument) {
    flush();
    ParagraphFormat format = out_.paragraphs.back();
    bool isInTabs = false;
    while (!argument.empty()) {
      const std::size_t comma = std::min(argument.find(L','), argument.size());
      std::wstring_view part = argument.substr(0, comma);
      argument.remove_prefix(std::min(comma + 1, argument.size()));
      if (!part.empty() && part[0] == L'x') part.remove_prefix(1);
      if (part.empty()) continue;
      double value = 0;
      const bool hasValue = readNumber(part.substr(1), value);
      if (isInTabs && readNumber(part, value)) {
        addTab(format, value);
        continue;
      }
      isInTabs = false;
      switch (part[0]) {
        case L'q':
          format.align = part.size() < 2   ? Align::Default
                         : part[1] == L'c' ? Align::Center
                         : part[1] == L'r' ? Align::Right
                         : part[1] == L'*' ? Align::Default
                                           : Align::Left;
          break;
        case L'i':
          if (hasValue) format.firstIndent = value;
          break;
        case L'l':
          if (hasValue) format.leftIndent = value;
          break;
        case L'r':
          if (hasValue) format.rightIndent = value;
          break;
        case L't':
          format.tabs.clear();
          isInTabs = true;
          if (hasValue) addTab(format, value);
          break;
        default:
          break;
      }
    }
    if (!(format == out_.paragraphs.back())) out_.paragraphs.push_back(std::move(format));
  }
  static void addTab(ParagraphFormat& format, double value) {
    if (value > 0 && (format.tabs.empty() || value > format.tabs.back())) format.tabs.push_back(value);
  }

  void stack(std::wstring_view argument) {
    flush();
    Token token;
    token.kind = Token::kStack;
    std::wstring* part = &token.text;
    for (std::size_t i = 0; i < argument.size(); ++i) {
      const wchar_t c = argument[i];
      const bool isDivider = c == L'/' || c == L'#' || c == L'^';
      if (c == L'\\' && i + 1 < argument.size()) {
        *part += argument[++i];
      } else if (isDivider && token.divider == 0) {
        token.divider = c;
        part = &token.lower;
        if (c == L'^' && i + 1 < argument.size() && argument[i + 1] == L' ') ++i;
      } else {
        *part += c;
      }
    }
    token.text = kvltDecode(token.text).text;
    token.lower = kvltDecode(token.lower).text;
    // Without a divider it is a text like any other.
    if (token.divider == 0) token.kind = Token::kText;
    if (token.kind == Token::kStack || !token.text.empty()) put(std::move(token));
  }

  std::wstring_view text_;
  std::size_t at_ = 0;
  CharFormat now_;
  std::vector<CharFormat> saved_;
  bool isChanged_ = false;
  std::size_t semicolon_ = 0;
  std::wstring word_;
  Token::Kind kind_ = Token::kText;
  Tokens out_;
};

}  // namespace

Tokens readCodes(const KvGiTextLook& look, std::wstring_view contents) {
  return Reader(look, contents).run();
}

}  // namespace kvlt

std::wstring kvltPlainText(std::wstring_view contents) {
  std::wstring plain;
  for (const kvlt::Token& token : kvlt::readCodes({}, contents).tokens) {
    switch (token.kind) {
      case kvlt::Token::kTab:
        plain += L'\t';
        break;
      case kvlt::Token::kParagraph:
      case kvlt::Token::kColumn:
        plain += L'\n';
        break;
      case kvlt::Token::kStack:
        plain += token.text + L"/" + token.lower;
        break;
      default:
        plain += token.text;
    }
  }
  std::replace(plain.begin(), plain.end(), wchar_t{0xA0}, L' ');
  return plain;
}
