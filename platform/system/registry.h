#pragma once
// The registry: keys and typed values of the current user and of the machine, kept in one UTF-8 text file,
// `registry.txt` in the settings folder, which a person can read and mend:
//
//   # comment
//   [HKEY_CURRENT_USER\SOFTWARE\Korvasoft\Mechanical]
//   "Language"="CHS"                        type 1, text
//   "Home"=expand:"%USERPROFILE%\\korvane"  type 2, text with variables
//   "Count"=dword:0000001f                  type 4, 32-bit number
//   "Recent"=multi:"a.dwg","b.dwg"          type 7, several texts
//   "Blob"=hex(3):01,02,ff                  any type, as bytes
//   @="value without a name"
//
// In quotes `\\ \" \n \r \0` stand for their characters. Keys and names compare without regard to case; of a
// value that stands twice the first counts. A value's size is that of its UTF-16 bytes as stored: text
// written without a terminator has none ("CHS" is 6 bytes, "CHS\0" is 8). Lines that mean nothing are kept,
// and reported.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/files.h"
#include "platform/files/last_error.h"
#include "platform/text/cstring.h"

inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::uintptr_t{0x80000001});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});

namespace platform {

inline constexpr DWORD kRegistryNone = 0;
inline constexpr DWORD kRegistryText = 1;
inline constexpr DWORD kRegistryExpandText = 2;
inline constexpr DWORD kRegistryBinary = 3;
inline constexpr DWORD kRegistryNumber = 4;
inline constexpr DWORD kRegistryTexts = 7;

inline constexpr std::uint64_t kRegistryLimit = 16 << 20;  ///< bytes; a larger file is refused

/// A typed value. `bytes` are as a program on the original system would see them: texts in UTF-16,
/// little-endian.
struct RegistryValue {
  DWORD type = kRegistryNone;
  std::string bytes;

  static RegistryValue ofText(std::wstring_view text, bool terminated = false);
  static RegistryValue ofNumber(std::uint32_t number);
  static RegistryValue ofTexts(const std::vector<CString>& texts);
  CString text() const;                ///< types 1 and 2, up to the first null; otherwise empty
  std::uint32_t number() const;        ///< type 4; otherwise 0
  std::vector<CString> texts() const;  ///< type 7, up to the first empty one; otherwise none
  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

struct RegistryProblem {
  int line;  ///< from 1
  std::string what;
};

/// The content of a registry file. Key paths are written `A\B`; separators at the ends and doubled ones don't
/// count.
class RegistryText {
 public:
  RegistryText() = default;
  explicit RegistryText(std::string_view content);
  std::string content() const;
  const std::vector<RegistryProblem>& problems() const { return problems_; }

  bool hasKey(HKEY root, std::wstring_view key) const;  ///< a key that only holds other keys counts
  const RegistryValue* find(HKEY root, std::wstring_view key, std::wstring_view name) const;
  std::vector<CString> valueNames(HKEY root, std::wstring_view key) const;  ///< in the file's order
  std::vector<CString> subKeys(HKEY root, std::wstring_view key) const;  ///< one level, in the file's order

  /// Each answers 0 or a Windows error number with nothing changed. A key is made when missing.
  DWORD createKey(HKEY root, std::wstring_view key);
  DWORD set(HKEY root, std::wstring_view key, std::wstring_view name, const RegistryValue& value);
  DWORD removeValue(HKEY root, std::wstring_view key, std::wstring_view name);
  DWORD removeKey(HKEY root, std::wstring_view key);  ///< with all keys below it

 private:
  enum class Kind { Other, Key, Value };
  struct Line {
    std::string raw;  ///< without line end
    Kind kind = Kind::Other;
    std::wstring key;   ///< full path with its branch, on key and value lines
    std::wstring name;  ///< of a value
    RegistryValue value;
  };

  struct Reader;
  void readLine(std::string_view raw, Reader& reader);
  void addHeading(const std::wstring& key);
  std::vector<Line>::iterator findValue(const std::wstring& key, std::wstring_view name);
  std::vector<Line>::iterator endOfKey(const std::wstring& key);

  std::vector<Line> lines_;
  std::vector<RegistryProblem> problems_;
};

/// The registry file of the current environment, read anew by each call. Changes are made under a lock, so
/// several processes may write, and are whole or not at all. Answers are Windows error numbers; 2: no such
/// key or value.
class Registry {
 public:
  Registry();  ///< `registry.txt` in the settings folder
  explicit Registry(const AnyPath& file);

  DWORD query(HKEY root, std::wstring_view key, std::wstring_view name, RegistryValue& value) const;
  DWORD set(HKEY root, std::wstring_view key, std::wstring_view name, const RegistryValue& value);
  DWORD createKey(HKEY root, std::wstring_view key);
  DWORD removeValue(HKEY root, std::wstring_view key, std::wstring_view name);
  DWORD removeKey(HKEY root, std::wstring_view key);
  /// The whole content; a missing file is an empty registry.
  FileStatus load(RegistryText& text) const;

 private:
  template <class Change>
  DWORD change(Change&& change);

  std::filesystem::path file_;
};

}  // namespace platform
