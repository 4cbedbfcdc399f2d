#include "platform/system/shell.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>

#include "platform/files/files.h"

namespace platform {
namespace {

bool isAddress(std::wstring_view text) {
  for (const std::wstring_view scheme : {L"http://", L"https://", L"mailto:"})
    if (startsWithNoCase(text, scheme)) return text.size() > scheme.size();
  return false;
}

CString unquoted(std::wstring_view text) {
  CString result(text);
  result.Trim();
  if (result.GetLength() >= 2 && result[0] == L'"' && result[result.GetLength() - 1] == L'"')
    result = result.Mid(1, result.GetLength() - 2);
  return result;
}

ShellRequest requestFor(const CString& target) {
  const auto kind = isAddress(target.view()) ? ShellRequest::Kind::Address : ShellRequest::Kind::File;
  return {target.IsEmpty() ? ShellRequest::Kind::None : kind, target};
}

bool hasVariable(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

/// In the child: a session of its own, no streams, a grandchild that init inherits. Reports errno through
/// `report`.
[[noreturn]] void runDetached(const char* program, const char* target, int report) {
  ::setsid();
  const pid_t grandchild = ::fork();
  if (grandchild > 0) ::_exit(0);
  if (grandchild == 0) {
    const int null = ::open("/dev/null", O_RDWR);
    for (int stream = 0; stream <= 2; ++stream) ::dup2(null, stream);
    char* const arguments[] = {const_cast<char*>(program), const_cast<char*>(target), nullptr};
    ::execvp(program, arguments);
  }
  const int error = errno;
  if (::write(report, &error, sizeof error) < 0) ::_exit(2);
  ::_exit(1);
}

/// 0, or the errno of what kept the program from starting.
int startDetached(const std::string& program, const std::string& target) {
  int report[2];
  if (::pipe2(report, O_CLOEXEC) != 0) return errno;
  const pid_t child = ::fork();
  if (child == 0) runDetached(program.c_str(), target.c_str(), report[1]);
  const int forkError = child < 0 ? errno : 0;
  ::close(report[1]);
  int error = 0;
  ssize_t count = 0;
  if (child > 0) {
    while ((count = ::read(report[0], &error, sizeof error)) < 0 && errno == EINTR) {
    }
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  ::close(report[0]);
  if (forkError != 0) return forkError;
  return count == static_cast<ssize_t>(sizeof error) ? error : 0;
}

}  // namespace

ShellRequest shellRequest(LPCWSTR verb, LPCWSTR file, LPCWSTR parameters) {
  const CString wanted(verb), arguments(parameters);
  if (!wanted.IsEmpty() && wanted.CompareNoCase(L"open") != 0) return {};
  const CString program = unquoted(CString(file).view());
  if (program.CompareNoCase(L"notepad.exe") == 0) return requestFor(unquoted(arguments.view()));
  if (program.CompareNoCase(L"rundll32.exe") == 0) {
    constexpr std::wstring_view kHandler = L"url.dll,FileProtocolHandler";
    if (!startsWithNoCase(arguments.view(), kHandler)) return {};
    return requestFor(unquoted(arguments.view().substr(kHandler.size())));
  }
  return requestFor(program);
}

int openOnDesktop(const ShellRequest& request, const std::string& program) {
  std::string target;
  if (request.kind == ShellRequest::Kind::Address) {
    if (!isAddress(request.target.view())) return kShellNoProgram;
    target = utf8From(request.target);
  } else {
    const std::filesystem::path native = toNative(request.target);
    if (request.kind == ShellRequest::Kind::None || !exists(native)) return kShellNotFound;
    std::error_code error;
    // An absolute path can't be taken for an option.
    target = std::filesystem::absolute(native, error).string();
    if (error) return kShellNotFound;
  }
  if (!hasVariable("DISPLAY") && !hasVariable("WAYLAND_DISPLAY")) return kShellNoProgram;
  const int error = startDetached(program, target);
  if (error == 0) return kShellDone;
  return error == ENOENT ? kShellNoProgram : kShellFailed;
}

}  // namespace platform
