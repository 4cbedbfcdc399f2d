#pragma once
// The inline codes of paragraph text, resolved to a row of tokens.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/lettering/textlook.h"

namespace kvlt {

enum class Align : unsigned char { Default, Left, Center, Right };

/// What `\p` sets; lengths in multiples of the text's beginning height are resolved by the layout.
struct ParagraphFormat {
  double firstIndent = 0, leftIndent = 0, rightIndent = 0;
  Align align = Align::Default;
  std::vector<double> tabs;
  friend bool operator==(const ParagraphFormat&, const ParagraphFormat&) = default;
};

/// How letters look from some place on.
struct CharFormat {
  KvGiTextLook look;
  int colorIndex = -1;
  std::int64_t rgb = -1;
  int lineAlign = 0;  // 0 base line, 1 centre, 2 top
};

struct Token {
  enum Kind : unsigned char { kText, kBlank, kTab, kParagraph, kColumn, kStack };
  Kind kind = kText;
  std::wstring text;          // kText, kBlank; the upper part of a stack
  std::wstring lower;         // of a stack
  wchar_t divider = 0;        // of a stack: `/` bar, `#` slope, `^` none
  std::size_t format = 0;     // index of the CharFormat
  std::size_t paragraph = 0;  // index of the ParagraphFormat
};

struct Tokens {
  std::vector<Token> tokens;
  std::vector<CharFormat> formats;
  std::vector<ParagraphFormat> paragraphs;
};

Tokens readCodes(const KvGiTextLook& look, std::wstring_view contents);

}  // namespace kvlt
