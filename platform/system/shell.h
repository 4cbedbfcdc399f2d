#pragma once
// Handing an address or a file to whatever the user's desktop opens it with.
#include <string>

#include "platform/text/cstring.h"

namespace platform {

// Answers as Windows gives them: above 32 is success.
inline constexpr int kShellDone = 42;
inline constexpr int kShellNotFound = 2;
inline constexpr int kShellFailed = 5;
inline constexpr int kShellNoProgram = 31;  ///< no desktop, or nothing that opens this

/// What is to be opened.
struct ShellRequest {
  enum class Kind { None, Address, File } kind = Kind::None;
  CString target;  ///< an address, or a path as the product spells it
};

/// What a Windows-style call means: `notepad.exe FILE` and `rundll32.exe url.dll,FileProtocolHandler ADDRESS`
/// name what they open; with other programs the request is the program's own name. Only the verb "open" (or
/// none) is known.
ShellRequest shellRequest(LPCWSTR verb, LPCWSTR file, LPCWSTR parameters);

/// Starts `program` with the target as its only argument, without a shell between, apart from this process
/// and with its own streams closed; doesn't wait. An address must be http, https or mailto; a file must
/// exist. Without a desktop
/// ($DISPLAY, $WAYLAND_DISPLAY) nothing is started.
int openOnDesktop(const ShellRequest& request, const std::string& program = "xdg-open");

}  // namespace platform
