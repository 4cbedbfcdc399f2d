#pragma once
// Profile (INI) files.
//
//   ; comment                sections and keys compare without regard to case
//   [Section]                the first section of a name counts, and in it the first entry of a key
//   key = "value"            white space around names and values, and one pair of quotes around a value,
//   don't count
//
// A file is UTF-16 or UTF-8 where a byte-order mark says so, otherwise 8-bit text in the system's code page.
// A change touches the lines it is about and nothing else: comments, order, blank lines, line ends,
// unreadable lines and the encoding stay. One exception: a value that the 8-bit page can't hold turns the
// file into UTF-16, so that it isn't lost. Nothing is cached; every call of the Windows-style functions reads
// the file.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/files.h"
#include "platform/files/last_error.h"
#include "platform/text/cstring.h"

namespace platform {

inline constexpr std::uint64_t kProfileLimit = 16 << 20;  ///< bytes; a larger file isn't read

/// The content of one profile file.
class Profile {
 public:
  Profile() = default;
  explicit Profile(std::string bytes);
  /// Reads a file; on failure the profile is empty.
  FileStatus load(const AnyPath& path);
  const std::string& bytes() const { return bytes_; }  ///< what a file with this content holds

  bool hasSection(std::wstring_view section) const;
  std::vector<CString> sections() const;                       ///< in order, repetitions included
  std::vector<CString> keys(std::wstring_view section) const;  ///< in order, repetitions included
  /// Lines of the section as `key=value` with white space trimmed and quotes kept; comments and blank lines
  /// left out.
  std::vector<CString> entries(std::wstring_view section) const;
  std::optional<CString> value(std::wstring_view section, std::wstring_view key) const;

  /// Each answers 0, or the Windows number of what is wrong, with nothing changed: names and values hold no
  /// line ends, a section no `]`, a key no `=` and neither `[` nor `;` in front, and none is empty where it
  /// names something. A new key goes behind the last line of its section that isn't blank, a new section to
  /// the end.
  DWORD set(std::wstring_view section, std::wstring_view key, std::wstring_view value);
  DWORD removeKey(std::wstring_view section,
                  std::wstring_view key);          ///< every entry of the key; none is no failure
  DWORD removeSection(std::wstring_view section);  ///< the first of that name; none is no failure

 private:
  enum class Encoding { CodePage, Utf8, Utf16Le, Utf16Be };
  struct Line {
    std::size_t begin, end, next;  ///< end: without line end; next: behind it
    std::wstring_view in(std::wstring_view text) const { return text.substr(begin, end - begin); }
  };
  struct Range {
    std::size_t first, last;  ///< lines of a section's body, from first up to but without last
  };

  void decode();
  std::size_t markLength() const;
  std::optional<std::string> encode(std::wstring_view text) const;
  bool becomeUtf16();
  std::vector<Line> lines() const;
  std::vector<std::size_t> byteStarts() const;
  std::optional<Range> find(const std::vector<Line>& lines, std::wstring_view section) const;
  DWORD splice(const std::vector<std::size_t>& removed, std::size_t before, const std::wstring& inserted);
  std::wstring lineEnd() const;

  std::string bytes_;
  std::wstring text_;  ///< bytes_ without the mark, decoded
  Encoding encoding_ = Encoding::CodePage;
  bool damaged_ = false;  ///< some bytes have no meaning in the encoding
};

/// Where a profile lies: a name without a folder is in the settings folder, everything else is an ordinary
/// path.
std::filesystem::path profilePath(LPCWSTR file);

}  // namespace platform

/// The value's characters without the terminator, at most `size` - 1; a missing file, section or key gives
/// `defaultValue` (blanks at its end dropped) and error 2; a text that had to be cut gives `size` - 1 and
/// error 234. A null key lists the keys, a null section the sections: each followed by a null, the last by
/// two; cut: `size` - 2.
DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer, DWORD size,
                               LPCWSTR file);

/// The entries of a section, each followed by a null, the last by two; answers the characters without the
/// last null. What doesn't fit is cut: `size` - 2, two nulls and error 234. No such file or section: 0 and
/// error 2.
DWORD GetPrivateProfileSectionW(LPCWSTR section, LPWSTR buffer, DWORD size, LPCWSTR file);

/// The decimal or `0x` number that the value begins with, 0 when it begins with none; no value:
/// `defaultValue`.
UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue, LPCWSTR file);

/// Sets a value; a null value removes the key, a null key the section. A missing file is made (8-bit);
/// nothing is made for a removal. 1, or 0 with the last error set and the file as it was.
BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file);
