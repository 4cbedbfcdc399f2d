#pragma once
// Shared libraries, loaded by name.
#include <optional>
#include <string>
#include <utility>

#include "platform/files/last_error.h"
#include "platform/text/cstring.h"

using HMODULE = struct HINSTANCE__*;
using HINSTANCE = HMODULE;

namespace platform {

/// The file that a library's name stands for. An alias of the environment stands for its file. A bare name is
/// looked up in the folders of Environment::modulePath, in order and without regard to case, and nowhere
/// else; a rooted path is taken as it is; a relative path names nothing, since the current folder must not
/// decide what is loaded. No extension is added. None when there is no such file.
std::optional<std::filesystem::path> findLibrary(const CString& name);

/// A loaded library. Loading the same file again gives the same library; it leaves memory when the last one
/// lets go.
class DynamicLibrary {
 public:
  DynamicLibrary() = default;
  ~DynamicLibrary() { unload(); }
  DynamicLibrary(DynamicLibrary&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;

  /// Empty on failure; `error` then says which file and why.
  static DynamicLibrary load(const CString& name, std::string* error = nullptr);
  explicit operator bool() const { return handle_ != nullptr; }
  /// Null when the library has no such symbol.
  void* symbol(const char* name) const;
  template <class Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(symbol(name));
  }
  std::filesystem::path path() const;
  void unload();
  void* release() { return std::exchange(handle_, nullptr); }  ///< the caller calls dlclose

 private:
  void* handle_ = nullptr;
};

/// The file of the library or program that `address` lies in, as the product spells it; empty when it lies in
/// none.
CString moduleFileOf(const void* address);

}  // namespace platform

/// Null on failure, with last error 126 (not found) or 193 (found, but it can't be loaded).
HMODULE LoadLibraryW(LPCWSTR name);
/// Null with last error 127 when the library has no such symbol.
void* GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
/// The file of a loaded library, of the program for null. Answers the characters without the terminator; a
/// name that doesn't fit is cut, with the answer `size` and last error 122.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
