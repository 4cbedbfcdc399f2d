#pragma once
// The product's paths and the machine's.
//
// The product writes `\` between the parts of a path and may begin it with a drive or a share:
//
//   C:\jobs\a.dwg        <drives>/C/jobs/a.dwg         <drives> is Environment::drivesRoot
//   \\server\share\a     <drives>/UNC/server/share/a
//   \home\x              /home/x                       a root without a drive is the machine's own
//   work\a.dwg           work/a.dwg                    relative stays relative
//
// `/` is accepted for `\`. A drive is always rooted (`C:a` is `C:\a`); `\\?\` in front is dropped. `.` and
// `..` are resolved in the text; `..` stops at the root of a drive, a share or the machine. Native names are
// UTF-8; a byte that isn't valid there, or a `\` in a native name, becomes a code of its own and comes back
// as it was.
#include <filesystem>

#include "platform/text/cstring.h"

namespace platform {

/// The native path. A part that doesn't exist as spelled is looked up in its folder without regard to case,
/// the first name in sorted order wins; a part that doesn't exist at all, and what follows it, stays as
/// spelled. Text behind a null character is dropped. Empty stays empty.
std::filesystem::path toNative(const CString& path);

/// The product's spelling, the reverse of toNative; a separator at the end is dropped unless it is all there
/// is.
CString fromNative(const std::filesystem::path& path);

/// One native name without folder, as the product spells it.
CString nameFromNative(std::string_view name);

/// A path given either way: native, or as the product spells it. Converts without ado, so that each file call
/// exists once.
class AnyPath {
 public:
  AnyPath(std::filesystem::path path) : native_(std::move(path)) {}
  AnyPath(const char* path) : native_(path ? path : "") {}
  AnyPath(const std::string& path) : native_(path) {}
  AnyPath(const CString& path) : native_(toNative(path)) {}
  AnyPath(const wchar_t* path) : native_(toNative(CString(path))) {}
  const std::filesystem::path& native() const { return native_; }

 private:
  std::filesystem::path native_;
};

}  // namespace platform
