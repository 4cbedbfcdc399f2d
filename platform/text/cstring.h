#pragma once
// CString (wide characters, one code point each) and CStringA (bytes): the product's text values.
//
// Positions and lengths are int and count characters. Positions beyond the ends are brought to the ends;
// null pointers count as empty texts. Case rules are Unicode's simple mappings (bytes: ASCII only). White
// space means blank, tab, line feed, vertical tab, form feed and carriage return.
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/text/format.h"
#include "platform/text/wintypes.h"

template <class Ch>
class CStringT {
 public:
  using View = std::basic_string_view<Ch>;
  using Std = std::basic_string<Ch>;

  CStringT() = default;
  CStringT(const Ch* text) : text_(text ? text : kEmpty) {}
  CStringT(const Ch* text, int length)
      : text_(text ? View(text, static_cast<std::size_t>(length < 0 ? 0 : length)) : View()) {}
  explicit CStringT(Ch character, int count = 1)
      : text_(static_cast<std::size_t>(count < 0 ? 0 : count), character) {}
  CStringT(const Std& text) : text_(text) {}
  CStringT(Std&& text) noexcept : text_(std::move(text)) {}
  explicit CStringT(View text) : text_(text) {}
  CStringT& operator=(const Ch* text) {
    text_ = text ? text : kEmpty;
    return *this;
  }

  int GetLength() const { return static_cast<int>(text_.size()); }
  bool IsEmpty() const { return text_.empty(); }
  void Empty() { text_.clear(); }
  const Ch* GetString() const { return text_.c_str(); }
  operator const Ch*() const { return text_.c_str(); }
  View view() const { return text_; }
  const Std& str() const { return text_; }

  /// 0 when `index` lies outside.
  Ch GetAt(int index) const {
    return index < 0 || index >= GetLength() ? Ch{} : text_[static_cast<std::size_t>(index)];
  }
  Ch operator[](int index) const { return GetAt(index); }
  /// Does nothing when `index` lies outside.
  void SetAt(int index, Ch character);
  /// A writable buffer of at least `length` characters and a terminator; ReleaseBuffer ends its use.
  Ch* GetBuffer(int length = 0);
  void ReleaseBuffer(int length = -1);

  CStringT Left(int count) const;
  CStringT Right(int count) const;
  CStringT Mid(int first) const;
  CStringT Mid(int first, int count) const;

  /// -1 when there is none. An empty `what` is found at `start`.
  int Find(const Ch* what, int start = 0) const;
  int Find(Ch character, int start = 0) const;
  int ReverseFind(Ch character) const;
  int FindOneOf(const Ch* characters) const;
  CStringT SpanIncluding(const Ch* characters) const;
  CStringT SpanExcluding(const Ch* characters) const;
  /// The next part between `separators` from `position` on, which moves behind it; -1 in `position` at the
  /// end.
  CStringT Tokenize(const Ch* separators, int& position) const;

  CStringT& Trim() { return TrimRight().TrimLeft(); }
  CStringT& Trim(Ch character) { return TrimRight(character).TrimLeft(character); }
  CStringT& Trim(const Ch* characters) { return TrimRight(characters).TrimLeft(characters); }
  CStringT& TrimLeft();
  CStringT& TrimLeft(Ch character);
  CStringT& TrimLeft(const Ch* characters);
  CStringT& TrimRight();
  CStringT& TrimRight(Ch character);
  CStringT& TrimRight(const Ch* characters);

  CStringT& MakeUpper();
  CStringT& MakeLower();
  CStringT& MakeReverse();
  /// Below, at or above 0, by code point.
  int Compare(const Ch* other) const;
  int CompareNoCase(const Ch* other) const;

  /// The number of places changed.
  int Replace(const Ch* from, const Ch* to);
  int Replace(Ch from, Ch to);
  int Remove(Ch character);
  /// The new length.
  int Insert(int index, const Ch* text);
  int Insert(int index, Ch character);
  int Delete(int index, int count = 1);

  void Append(const Ch* text) { text_ += text ? text : kEmpty; }
  void Append(View text) { text_ += text; }
  void AppendChar(Ch character) { text_ += character; }
  /// printf's forms; see platform/text/format.h. `%s` is text of this class's own width.
  template <class... Args>
  void Format(const Ch* format, const Args&... args) {
    text_ = platform::formatText<Ch>(format, {platform::FormatArg(args)...});
  }
  template <class... Args>
  void AppendFormat(const Ch* format, const Args&... args) {
    text_ += platform::formatText<Ch>(format, {platform::FormatArg(args)...});
  }

  CStringT& operator+=(const Ch* text) {
    Append(text);
    return *this;
  }
  CStringT& operator+=(const CStringT& text) {
    text_ += text.text_;
    return *this;
  }
  CStringT& operator+=(Ch character) {
    text_ += character;
    return *this;
  }

  friend CStringT operator+(CStringT a, const CStringT& b) { return a += b; }
  friend CStringT operator+(CStringT a, const Ch* b) { return a += b; }
  friend CStringT operator+(const Ch* a, const CStringT& b) { return CStringT(a) += b; }
  friend CStringT operator+(CStringT a, Ch b) { return a += b; }
  friend CStringT operator+(Ch a, const CStringT& b) { return CStringT(a) += b; }

  friend bool operator==(const CStringT& a, const CStringT& b) { return a.text_ == b.text_; }
  friend bool operator==(const CStringT& a, const Ch* b) { return a.Compare(b) == 0; }
  friend auto operator<=>(const CStringT& a, const CStringT& b) { return a.text_ <=> b.text_; }
  friend auto operator<=>(const CStringT& a, const Ch* b) { return a.Compare(b) <=> 0; }

 private:
  static constexpr Ch kEmpty[1] = {};
  Std text_;
};

extern template class CStringT<wchar_t>;
extern template class CStringT<char>;

using CString = CStringT<wchar_t>;
using CStringA = CStringT<char>;

namespace platform {

/// Below, at or above 0 after case folding; the length decides between a text and its beginning.
int compareNoCase(std::wstring_view a, std::wstring_view b);
bool equalNoCase(std::wstring_view a, std::wstring_view b);
bool equalNoCase(std::string_view a, std::string_view b);  ///< ASCII case only
bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix);

/// Order for maps whose keys compare without regard to case.
struct LessNoCase {
  using is_transparent = void;
  bool operator()(std::wstring_view a, std::wstring_view b) const { return compareNoCase(a, b) < 0; }
};

CString wideFromUtf8(std::string_view bytes);
std::string utf8From(const CString& text);

}  // namespace platform

template <class Ch>
struct std::hash<CStringT<Ch>> {
  std::size_t operator()(const CStringT<Ch>& text) const {
    return std::hash<std::basic_string_view<Ch>>()(text.view());
  }
};
