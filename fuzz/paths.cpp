// Any text as a path: one with a drive stays below it, and native names come back.
#include "platform/files/paths.h"

#include <cstdint>
#include <cstdlib>

#include "platform/env/environment.h"
#include "platform/text/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  platform::Environment environment;
  environment.drivesRoot = "/none/drives";
  const platform::ScopedEnvironment scope(environment);
  const std::string bytes(reinterpret_cast<const char*>(data), size);

  const CString text(platform::fromUtf8(bytes));
  for (const wchar_t* front : {L"C:\\", L"q:", L"\\\\?\\D:\\"}) {
    const std::string native = platform::toNative(front + text).lexically_normal().string();
    if (!native.starts_with("/none/drives/")) std::abort();
    if (native.size() > 14 && native[14] != '/') std::abort();
  }
  platform::fromNative(platform::toNative(text));

  if (bytes.find('\0') != std::string::npos) return 0;
  const std::filesystem::path native = std::filesystem::path("/none/" + bytes).lexically_normal();
  const std::filesystem::path back = platform::toNative(platform::fromNative(native));
  const bool slash = native.string().ends_with('/');
  if (back != (slash && native != "/" ? native.parent_path() : native)) std::abort();
  return 0;
}
