#pragma once
// printf-style formatting for wide and 8-bit text.
//
// The rules are those by which the product's message tables are written: in a wide format `%s` and `%c` mean
// wide text, `%S`, `%hs`, `%hc` bytes; in an 8-bit format `%s` means bytes and `%S`, `%ls`, `%ws` wide text.
// Arguments carry their own type, so a format that disagrees with them never reads wild memory:
//   - a conversion without an argument gives nothing;
//   - a number where text is wanted, or the other way round, is shown by its own nature;
//   - arguments left over are ignored; an unknown conversion stands in the result as written.
// Width and precision are held to 10,000. `%n` writes nowhere. Numbers use the invariant locale.
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace platform {

/// One argument of a format: a number, a text of either width, or a pointer. Refers to the caller's text.
class FormatArg {
 public:
  enum class Kind : std::uint8_t { Signed, Unsigned, Real, Wide, Narrow, Pointer };

  template <class T>
  requires std::is_integral_v<T> || std::is_enum_v<T> FormatArg(T value)
      : kind_(isSigned<T>() ? Kind::Signed : Kind::Unsigned),
        size_(sizeof(T)),
        integer_(static_cast<std::int64_t>(value)) {}
  FormatArg(double value) : kind_(Kind::Real), size_(sizeof value), real_(value) {}
  FormatArg(const wchar_t* text) : kind_(Kind::Wide), wide_(text ? std::wstring_view(text) : L"(null)") {}
  FormatArg(const char* text) : kind_(Kind::Narrow), narrow_(text ? std::string_view(text) : "(null)") {}
  FormatArg(const void* pointer)
      : kind_(Kind::Pointer), size_(8), integer_(reinterpret_cast<std::intptr_t>(pointer)) {}
  /// Anything that gives a view of its text: CString, std::wstring, std::string.
  template <class T>
  requires requires(const T& text) { text.view(); }
  FormatArg(const T& text) : FormatArg(text.view()) {}
  FormatArg(std::wstring_view text) : kind_(Kind::Wide), wide_(text) {}
  FormatArg(std::string_view text) : kind_(Kind::Narrow), narrow_(text) {}
  FormatArg(const std::wstring& text) : FormatArg(std::wstring_view(text)) {}
  FormatArg(const std::string& text) : FormatArg(std::string_view(text)) {}

  Kind kind() const { return kind_; }
  bool isText() const { return kind_ == Kind::Wide || kind_ == Kind::Narrow; }
  std::int64_t integer() const;  ///< reals are cut toward zero and held to the type's range
  std::uint64_t bits(
      int bytes) const;  ///< the integer cut to its own size, or to `bytes` when that is smaller
  double real() const;
  std::wstring_view wide() const { return wide_; }
  std::string_view narrow() const { return narrow_; }

 private:
  template <class T>
  static constexpr bool isSigned() {
    if constexpr (std::is_enum_v<T>)
      return std::is_signed_v<std::underlying_type_t<T>>;
    else
      return std::is_signed_v<T>;
  }

  Kind kind_;
  std::uint8_t size_ = 0;
  std::int64_t integer_ = 0;
  double real_ = 0;
  std::wstring_view wide_;
  std::string_view narrow_;
};

/// The format with its conversions replaced. A null format gives an empty text.
template <class Ch>
std::basic_string<Ch> formatText(const Ch* format, std::initializer_list<FormatArg> args);

extern template std::wstring formatText<wchar_t>(const wchar_t*, std::initializer_list<FormatArg>);
extern template std::string formatText<char>(const char*, std::initializer_list<FormatArg>);

}  // namespace platform
