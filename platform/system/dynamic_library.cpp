#include "platform/system/dynamic_library.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <system_error>

#include "platform/env/environment.h"

namespace platform {
namespace {

constexpr DWORD kErrorInsufficientBuffer = 122;
constexpr DWORD kErrorBadFormat = 193;

std::filesystem::path pathOfHandle(void* handle) {
  const link_map* map = nullptr;
  if (!handle || ::dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0 || !map) return {};
  return map->l_name;
}

std::filesystem::path pathOfProgram() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

}  // namespace

std::optional<std::filesystem::path> findLibrary(const CString& name) {
  const bool bare = name.FindOneOf(L"\\/:") < 0;
  if (name.IsEmpty()) return std::nullopt;
  if (!bare) {
    const std::filesystem::path native = toNative(name);
    if (native.is_absolute() && isFile(native)) return native;
    return std::nullopt;
  }
  const Environment& environment = Environment::current();
  if (auto alias = environment.libraryAliases.find(CString(name).MakeLower().str());
      alias != environment.libraryAliases.end())
    return alias->second;
  for (const std::filesystem::path& folder : environment.modulePath) {
    const std::filesystem::path native = toNative(fromNative(folder) + L"\\" + name);
    if (native.is_absolute() && isFile(native)) return native;
  }
  return std::nullopt;
}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept {
  if (this != &other) {
    unload();
    handle_ = std::exchange(other.handle_, nullptr);
  }
  return *this;
}

DynamicLibrary DynamicLibrary::load(const CString& name, std::string* error) {
  DynamicLibrary library;
  const auto path = findLibrary(name);
  if (!path) {
    SetLastError(kErrorModuleNotFound);
    if (error) *error = "cannot load " + utf8From(name) + ": not found in the folders of modules";
    return library;
  }
  library.handle_ = ::dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL);
  SetLastError(library ? kErrorSuccess : kErrorBadFormat);
  if (!library && error) {
    const char* reason = ::dlerror();
    *error = "cannot load " + path->string() + ": " + (reason ? reason : "unknown reason");
  }
  return library;
}

void* DynamicLibrary::symbol(const char* name) const {
  return handle_ && name ? ::dlsym(handle_, name) : nullptr;
}

std::filesystem::path DynamicLibrary::path() const {
  return pathOfHandle(handle_);
}

void DynamicLibrary::unload() {
  if (handle_) ::dlclose(std::exchange(handle_, nullptr));
}

CString moduleFileOf(const void* address) {
  Dl_info info{};
  if (::dladdr(address, &info) == 0 || !info.dli_fname) return {};
  std::filesystem::path file = info.dli_fname;
  // The program itself is known to the loader by whatever it was called with.
  if (file.is_absolute()) return fromNative(file);
  void* handle = ::dlopen(nullptr, RTLD_NOW);
  const link_map* program = nullptr;
  const bool known = handle && ::dlinfo(handle, RTLD_DI_LINKMAP, &program) == 0 && program;
  const bool own = known && reinterpret_cast<const void*>(program->l_addr) == info.dli_fbase;
  if (handle) ::dlclose(handle);
  std::error_code error;
  return fromNative(own ? pathOfProgram() : std::filesystem::absolute(file, error));
}

}  // namespace platform

HMODULE LoadLibraryW(LPCWSTR name) {
  return static_cast<HMODULE>(platform::DynamicLibrary::load(CString(name)).release());
}

void* GetProcAddress(HMODULE module, LPCSTR name) {
  void* found = module && name ? ::dlsym(module, name) : nullptr;
  SetLastError(found ? platform::kErrorSuccess : platform::kErrorProcedureNotFound);
  return found;
}

BOOL FreeLibrary(HMODULE module) {
  const bool done = module && ::dlclose(module) == 0;
  SetLastError(done ? platform::kErrorSuccess : platform::kErrorInvalidHandle);
  return done ? 1 : 0;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
  if (!buffer || size == 0) return 0;
  const auto path = module ? platform::pathOfHandle(module) : platform::pathOfProgram();
  const CString name = platform::fromNative(path);
  const std::wstring_view part = name.view().substr(0, size - 1);
  buffer[std::copy(part.begin(), part.end(), buffer) - buffer] = L'\0';
  const bool cut = part.size() < name.view().size();
  SetLastError(cut              ? platform::kErrorInsufficientBuffer
               : name.IsEmpty() ? platform::kErrorModuleNotFound
                                : platform::kErrorSuccess);
  return cut ? size : part.size();
}
