#pragma once
// Files and folders. Every call takes a native path or one that the product spells (platform/files/paths.h)
// and answers with a status that can be shown; nothing throws.
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/paths.h"
#include "platform/text/cstring.h"

namespace platform {

/// What a file call failed at.
enum class FileStep { None, Open, Read, Write, Flush, Rename, Create, Delete, List, TooLarge };

/// The outcome of a file call. True when it succeeded.
struct FileStatus {
  FileStep step = FileStep::None;
  int systemError = 0;  ///< errno of the failing step
  std::filesystem::path path;

  explicit operator bool() const { return step == FileStep::None; }
  /// "cannot write /x/y: No space left on device", UTF-8; empty on success.
  std::string message() const;
};

bool exists(const AnyPath& path);  ///< a folder counts; a link to nothing doesn't
bool isFolder(const AnyPath& path);
bool isFile(const AnyPath& path);                            ///< anything but a folder
std::optional<std::uint64_t> fileSize(const AnyPath& path);  ///< bytes; none for a folder or a missing file

inline constexpr std::uint64_t kDefaultReadLimit = std::uint64_t{1} << 31;

/// Replaces `content` by all bytes of the file. On failure, and for more than `limit` bytes (TooLarge), it is
/// left empty.
FileStatus readFile(const AnyPath& path, std::string& content, std::uint64_t limit = kDefaultReadLimit);

/// Writes a file so that other readers see the old content or the new one, never a part: a temporary file
/// beside the target, flushed to disk, then renamed. The target keeps its mode and, where allowed, its owner;
/// a link is followed. A read-only target is refused. A target that is no regular file (a pipe, a terminal)
/// is written directly.
class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();  ///< without commit: the temporary file is removed, the target stays
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  FileStatus open(const AnyPath& target);
  /// Buffered. After a failure every further call answers the same failure.
  FileStatus write(std::string_view bytes);
  /// Flushes and renames. The file is closed whatever the answer.
  FileStatus commit();
  void discard();

 private:
  FileStatus drain();
  FileStatus fail(FileStep step);
  FileStatus openTemporary();

  std::filesystem::path target_, temporary_;
  std::string buffer_;
  FileStatus status_{FileStep::Open, EBADF, {}};
  int file_ = -1;
};

FileStatus writeFile(const AnyPath& path, std::string_view content);   ///< whole and atomic
FileStatus appendFile(const AnyPath& path, std::string_view content);  ///< creates a missing file

/// Copies content, and the mode to a new target, the target whole or not at all. Without `overwrite`, an
/// existing target is a failure (EEXIST). A file copied onto itself stays as it is.
FileStatus copyFile(const AnyPath& from, const AnyPath& to, bool overwrite);
FileStatus moveFile(const AnyPath& from,
                    const AnyPath& to);         ///< replaces an existing file; same file system only
FileStatus deleteFile(const AnyPath& path);     ///< not a folder
FileStatus createFolder(const AnyPath& path);   ///< one level; an existing one is a failure (EEXIST)
FileStatus createFolders(const AnyPath& path);  ///< all levels; an existing folder is a success
/// A file, or a folder with all that is in it; links are removed, not followed. Goes on behind what can't be
/// deleted and answers the first failure. The machine's root is refused.
FileStatus deleteTree(const AnyPath& path);

/// One entry that a search found.
struct FoundFile {
  CString name;
  std::filesystem::path path;
  bool isFolder = false;
  bool isDots = false;  ///< "." or ".."
};

/// True when `name` fits `pattern` without regard to case: `*` any run, `?` one character, `*.*` any name.
bool matchesPattern(std::wstring_view name, std::wstring_view pattern);

enum class Dots { Skip, Include };

/// The entries of one folder that fit, sorted by name (no regard to case, then by code). Empty when the
/// folder can't be read.
/// "." and ".." come first, where they are wanted and fit.
std::vector<FoundFile> findFiles(const AnyPath& folder, std::wstring_view pattern, Dots dots = Dots::Skip);
/// The same for a folder and pattern in one text (`C:\bk\*.dwg`); without `*` and `?` the one thing it names.
std::vector<FoundFile> findFiles(const CString& pathPattern, Dots dots = Dots::Skip);
/// True when a search would find anything, dots included: so `<folder>\*` tells whether a folder is there,
/// empty or not.
bool findsAny(const CString& pathPattern);

}  // namespace platform
