#include "host/base/wcmatch.h"

#include <cwchar>
#include <string_view>
#include <vector>

#include "host/base/resbuf.h"
#include "platform/text/casemap.h"

namespace {

bool isDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

bool isLetter(wchar_t c) {
  if (c < 0x80) return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
  // Letters without case (ideographs, kana, ...) are letters too; the ranges before them are signs.
  return platform::toUpper(c) != c || platform::toLower(c) != c || c >= 0x3040;
}

/// One element of a pattern: what a single character must be, or a run of any.
struct Element {
  enum class Kind { Literal, Any, Run, Digit, Letter, Sign, Set } kind;
  wchar_t literal = 0;
  bool negated = false;
  std::wstring_view set;

  bool accepts(wchar_t c) const {
    switch (kind) {
      case Kind::Literal:
        return c == literal;
      case Kind::Any:
        return true;
      case Kind::Digit:
        return isDigit(c);
      case Kind::Letter:
        return isLetter(c);
      case Kind::Sign:
        return !isDigit(c) && !isLetter(c);
      case Kind::Set:
        return inSet(c) != negated;
      case Kind::Run:
        return false;
    }
    return false;
  }

  bool inSet(wchar_t c) const {
    for (std::size_t i = 0; i < set.size(); ++i) {
      if (set[i] == L'`' && i + 1 < set.size()) {
        if (set[++i] == c) return true;
      } else if (i + 2 < set.size() && set[i + 1] == L'-') {
        if (c >= set[i] && c <= set[i + 2]) return true;
        i += 2;
      } else if (set[i] == c) {
        return true;
      }
    }
    return false;
  }
};

std::vector<Element> compile(std::wstring_view pattern) {
  using Kind = Element::Kind;
  std::vector<Element> elements;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t c = pattern[i];
    const auto closing = c == L'[' ? pattern.find(L']', i + 1) : std::wstring_view::npos;
    if (c == L'`' && i + 1 < pattern.size()) {
      elements.push_back({Kind::Literal, pattern[++i], false, {}});
    } else if (closing != std::wstring_view::npos) {
      auto set = pattern.substr(i + 1, closing - i - 1);
      const bool negated = !set.empty() && set.front() == L'~';
      if (negated) set.remove_prefix(1);
      elements.push_back({Kind::Set, 0, negated, set});
      i = closing;
    } else {
      const Kind kind = c == L'*'   ? Kind::Run
                        : c == L'?' ? Kind::Any
                        : c == L'#' ? Kind::Digit
                        : c == L'@' ? Kind::Letter
                        : c == L'.' ? Kind::Sign
                                    : Kind::Literal;
      elements.push_back({kind, c, false, {}});
    }
  }
  return elements;
}

/// Linear in text times runs: a failed match goes back to the last run only.
bool matches(std::wstring_view text, const std::vector<Element>& elements) {
  std::size_t at = 0, element = 0;
  std::size_t runElement = elements.size(), runStart = 0;
  while (at < text.size()) {
    if (element < elements.size() && elements[element].kind == Element::Kind::Run) {
      runElement = element++;
      runStart = at;
    } else if (element < elements.size() && elements[element].accepts(text[at])) {
      ++at;
      ++element;
    } else if (runElement < elements.size()) {
      element = runElement + 1;
      at = ++runStart;
    } else {
      return false;
    }
  }
  while (element < elements.size() && elements[element].kind == Element::Kind::Run) ++element;
  return element == elements.size();
}

/// The end of the alternative that starts at `from`: the next comma that is neither escaped nor in a set.
std::size_t alternativeEnd(std::wstring_view pattern, std::size_t from) {
  for (std::size_t i = from; i < pattern.size(); ++i) {
    if (pattern[i] == L'`') {
      ++i;
    } else if (pattern[i] == L'[') {
      const auto closing = pattern.find(L']', i + 1);
      if (closing != std::wstring_view::npos) i = closing;
    } else if (pattern[i] == L',') {
      return i;
    }
  }
  return pattern.size();
}

}  // namespace

int kvutWcMatch(const wchar_t* text, const wchar_t* pattern) {
  if (!text || !pattern) return RTERROR;
  const std::wstring_view all(pattern);
  for (std::size_t from = 0; from <= all.size();) {
    const std::size_t end = alternativeEnd(all, from);
    auto alternative = all.substr(from, end - from);
    const bool negated = !alternative.empty() && alternative.front() == L'~';
    if (negated) alternative.remove_prefix(1);
    if (matches(text, compile(alternative)) != negated) return RTNORM;
    from = end + 1;
  }
  return RTERROR;
}
