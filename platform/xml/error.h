#pragma once
// What went wrong with an XML file, as data, and how much of it is read at all.
#include <cstddef>
#include <filesystem>
#include <string>

namespace platform {

/// The place is that of the decoded text when `decoded` is set (the file was in another encoding than UTF-8).
struct XmlError {
  std::filesystem::path path;  ///< empty for a text in memory
  std::size_t offset = 0;      ///< bytes from the start
  std::size_t line = 0;        ///< 1-based; 0 when no line is meant (a file that can't be opened)
  bool decoded = false;
  std::string what;  ///< empty: no error

  explicit operator bool() const { return !what.empty(); }
  /// "path:line (byte offset): what".
  std::string message() const;
};

/// Bounds of what a document may cost. A node costs 64 bytes of memory, an attribute 40.
struct XmlLimits {
  std::size_t bytes = std::size_t{256} << 20;  ///< size of the file
  std::size_t items = 16'000'000;              ///< nodes and attributes together, counted by `<` and `=`
  std::size_t depth = 512;                     ///< elements inside one another
};

}  // namespace platform
